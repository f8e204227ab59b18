// Filters with fixed 3x3 and 5x5 kernels: the kernels, their row and column stages, and the drivers that run a stage
// pair over an image.
//
// A separable filter is a row stage and a column stage. The row stage filters image rows along x into a store of a few
// intermediate rows, the column stage takes the dot product of k neighbouring rows of the store. The store is a ring of
// k + 15 rows, filled and consumed in blocks of 16 so that it stays in the cache whatever the height of the image, and
// k rows beside it for what lies above and below the image. A column stage sees the ring through an array of row
// pointers: the array holds the ring twice, so that any k neighbouring entries name neighbouring rows without wrapping.
//
//         image rows              ring of k + 15 rows            output rows
//     y + 1 .. y + 16  --row-->  x  x  x  .  .  .  x  --column-->  y .. y + 15
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "frame/arithmetic.h"
#include "frame/borders.h"
#include "tevcv_internal/filtering.h"

using namespace tevcv;

const Tev16s kerScharr_3_16s[3] = {3, 10, 3};
const Tev16s kerDx_3_16s[3] = {-1, 0, 1};
const Tev16s kerDx_5_16s[5] = {-1, -2, 0, 2, 1};
const Tev16s kerDxNeg_3_16s[3] = {1, 0, -1};
const Tev16s kerDxNeg_5_16s[5] = {1, 2, 0, -2, -1};
const Tev16s kerD2x_3_16s[3] = {1, -2, 1};
const Tev16s kerD2x_5_16s[5] = {1, 0, -2, 0, 1};
const Tev16s kerSobel_3_16s[3] = {1, 2, 1};
const Tev16s kerSobel_5_16s[5] = {1, 4, 6, 4, 1};
const Tev16s kerAvr_3_16s[3] = {1, 1, 1};
const Tev16s kerAvr_5_16s[5] = {1, 1, 1, 1, 1};
const Tev16s kerLap_3_16s[3] = {1, 0, 1};
const Tev32f kerScharr_3_32f[3] = {3, 10, 3};
const Tev32f kerDx_3_32f[3] = {-1, 0, 1};
const Tev32f kerDx_5_32f[5] = {-1, -2, 0, 2, 1};
const Tev32f kerDxNeg_3_32f[3] = {1, 0, -1};
const Tev32f kerDxNeg_5_32f[5] = {1, 2, 0, -2, -1};
const Tev32f kerD2x_3_32f[3] = {1, -2, 1};
const Tev32f kerD2x_5_32f[5] = {1, 0, -2, 0, 1};
const Tev32f kerSobel_3_32f[3] = {1, 2, 1};
const Tev32f kerSobel_5_32f[5] = {1, 4, 6, 4, 1};
const Tev32f kerAvr_3_32f[3] = {1, 1, 1};
const Tev32f kerAvr_5_32f[5] = {1, 1, 1, 1, 1};
const Tev32f kerLap_3_32f[3] = {1, 0, 1};

namespace {

// ---- Kernels as types, so that each stage is compiled with its taps ----

template <int... tap>
struct Taps {
  static constexpr int size = sizeof...(tap);
  static constexpr int weight = (... + (tap < 0 ? -tap : tap));
};
using Scharr3 = Taps<3, 10, 3>;
using Dx3 = Taps<-1, 0, 1>;
using Dx5 = Taps<-1, -2, 0, 2, 1>;
using DxNeg3 = Taps<1, 0, -1>;
using DxNeg5 = Taps<1, 2, 0, -2, -1>;
using D2x3 = Taps<1, -2, 1>;
using D2x5 = Taps<1, 0, -2, 0, 1>;
using Sobel3 = Taps<1, 2, 1>;
using Sobel5 = Taps<1, 4, 6, 4, 1>;
using SobelNeg3 = Taps<-1, -2, -1>;
using SobelNeg5 = Taps<-1, -4, -6, -4, -1>;
using Avr3 = Taps<1, 1, 1>;
using Avr5 = Taps<1, 1, 1, 1, 1>;

// 0 + tap[0] * at(0) + tap[1] * at(1) + ... in the arithmetic of V, from left to right. A tap of 0 is a term like any
// other: among floats it carries a NaN or an infinity into the sum.
template <class V, int... tap, class At>
V dot(Taps<tap...>, At at) {
  const auto sum = [&]<int... j>(std::integer_sequence<int, j...>) {
    return (V{0} + ... + (static_cast<V>(tap) * static_cast<V>(at(j))));
  };
  return sum(std::make_integer_sequence<int, sizeof...(tap)>());
}

// The sum of |tap[j] * at(j)|.
template <int... tap, class At>
Tev64f absoluteDot(Taps<tap...>, At at) {
  const auto sum = [&]<int... j>(std::integer_sequence<int, j...>) {
    return (... + (std::abs(tap) * std::fabs(static_cast<Tev64f>(at(j)))));
  };
  return sum(std::make_integer_sequence<int, sizeof...(tap)>());
}

// ---- Float sums ----
//
// A float result is a sum in extended precision, rounded once. Three faster ways give the same bits:
//
// 1. Whole numbers of moderate size, as an image has that was made from bytes: every sum is exact in float.
// 2. Values whose exponents lie close together: every sum is exact in double.
// 3. Otherwise the sum in double is off by at most a few times 2^-53 of the sum of all magnitudes. Where it rounds to
//    the same float with that bound taken off as with it added, that is the result; an element where it does not (a
//    tie, or a NaN or an infinity) sends its block through extended precision.

// What is known of the values that go into sums.
class Range {
 public:
  [[gnu::noinline]] void take(const Tev32f* values, int n) {
    std::int32_t largest = largest_, smallest = smallest_, broken = broken_;
    for (int i = 0; i < n; ++i) {
      // Added to 2^23, a number below it loses its fraction.
      constexpr Tev32f fractionless = 1 << 23;
      const Tev32f v = std::fabs(values[i]), whole = (v + fractionless) - fractionless;
      broken |= whole == v ? 0 : 1;
      const auto magnitude = std::bit_cast<std::int32_t>(v);
      largest = largest > magnitude ? largest : magnitude;
      const std::int32_t less = (magnitude - 1) & 0x7FFFFFFF;  // a zero has no smallest bit
      smallest = smallest < less ? smallest : less;
    }
    largest_ = largest;
    smallest_ = smallest;
    broken_ = broken;
  }

  void join(const Range& other) {
    largest_ = std::max(largest_, other.largest_);
    smallest_ = std::min(smallest_, other.smallest_);
    broken_ |= other.broken_;
  }

  // For kernels whose taps together weigh `weight`; one more value may be added.
  template <int weight>
  bool sumsAreExactInFloat() const {
    constexpr auto limit = static_cast<Tev32f>((1 << 24) / (weight + 1));
    return broken_ == 0 && largest_ <= std::bit_cast<std::int32_t>(limit);
  }
  // 24 bits of the smallest value, the distance to the largest, 5 bits for the sum of the taps: 53 in all.
  bool sumsAreExactInDouble() const { return largest_ < 0x7F800000 && (largest_ >> 23) - (smallest_ >> 23) <= 23; }

  // No sum but 0 is so small that a weight of 1 / 32 or more would take it below the normal floats.
  bool sumsStayNormal() const { return (smallest_ >> 23) >= 30; }

 private:
  std::int32_t largest_ = 0;            // bit patterns order as magnitudes do
  std::int32_t smallest_ = 0x7FFFFFFF;  // less one
  std::int32_t broken_ = 0;             // not 0 where a value is no whole number
};

// Far above the error of six additions and a product, and still so small that it decides one element in a million.
constexpr Tev64f relativeBound = 0x1p-49;

// dst[x] = the float that sum(Extended{}, x) rounds to, by way 3; magnitude(x) is that of all its terms together. The
// block's results are kept apart until they stand, since a sum may read dst[x].
template <class Sum, class Magnitude>
void guardedSums(Tev32f* dst, int width, Sum sum, Magnitude magnitude) {
  constexpr int block = 64;
  for (int first = 0; first < width; first += block) {
    const int n = std::min(block, width - first);
    Tev32f result[block];
    std::uint32_t undecided = 0;
    for (int i = 0; i < n; ++i) {
      const Tev64f guess = sum(Tev64f{}, first + i), bound = magnitude(first + i) * relativeBound;
      const auto low = static_cast<Tev32f>(guess - bound), high = static_cast<Tev32f>(guess + bound);
      // Of zeros the sign counts too, and infinities and NaNs are no numbers to compare.
      undecided |= std::bit_cast<std::uint32_t>(low) ^ std::bit_cast<std::uint32_t>(high);
      undecided |= bound < std::numeric_limits<Tev64f>::infinity() ? 0U : 1U;
      result[i] = high;
    }
    if (undecided != 0)
      for (int i = 0; i < n; ++i) result[i] = static_cast<Tev32f>(sum(Extended{}, first + i));
    std::memcpy(dst + first, result, static_cast<std::size_t>(n) * sizeof(Tev32f));
  }
}

// dst[x] = the float that exact(x) rounds to, where product(x) is its double, a product of two exact numbers that has a
// normal float. Rounding keeps order, so the double lies on the same side of every midpoint between floats as the
// number itself, and decides unless it is such a midpoint.
template <class Product, class Exact>
void roundedProducts(Tev32f* dst, int width, Product product, Exact exact) {
  constexpr int block = 64;
  for (int first = 0; first < width; first += block) {
    const int n = std::min(block, width - first);
    Tev64f products[block];
    std::int64_t midpoints = 0;
    for (int i = 0; i < n; ++i) {
      products[i] = product(first + i);
      constexpr std::int64_t fraction = (std::int64_t{1} << 29) - 1, half = std::int64_t{1} << 28;
      midpoints |= (std::bit_cast<std::int64_t>(products[i]) & fraction) == half;
    }
    if (midpoints != 0)
      for (int i = 0; i < n; ++i) dst[first + i] = static_cast<Tev32f>(exact(first + i));
    else
      for (int i = 0; i < n; ++i) dst[first + i] = static_cast<Tev32f>(products[i]);
  }
}

// The same by the fastest of the three ways that the values allow.
template <int weight, class Sum, class Magnitude>
void roundedSums(Tev32f* dst, int width, const Range& range, Sum sum, Magnitude magnitude) {
  if (range.sumsAreExactInFloat<weight>()) {
#pragma GCC ivdep
    for (int x = 0; x < width; ++x) dst[x] = sum(Tev32f{}, x);
  } else if (range.sumsAreExactInDouble()) {
#pragma GCC ivdep
    for (int x = 0; x < width; ++x) dst[x] = static_cast<Tev32f>(sum(Tev64f{}, x));
  } else {
    guardedSums(dst, width, sum, magnitude);
  }
}

// dst[x] = dot product of the taps with at(0, x), at(1, x), ...
template <class Kernel, class At>
void roundedDots(Tev32f* dst, int width, const Range& range, At at) {
  roundedSums<Kernel::weight>(
      dst, width, range, [&]<class V>(V, int x) { return dot<V>(Kernel{}, [&](int j) { return at(j, x); }); },
      [&](int x) { return absoluteDot(Kernel{}, [&](int j) { return at(j, x); }); });
}

// A difference of two floats rounds to the same float from extended precision as directly. What is added to it is what
// the extended sum adds: it starts from +0, which leaves no -0, and has the middle tap of 0.
template <class At>
void roundedDifferences(Tev32f* dst, int width, int plus, int minus, At at) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) dst[x] = (at(plus, x) - at(minus, x) + 0.0F) + 0.0F * at(1, x);
}

// ---- Row stages ----

// The filtered pixels of `width` windows of k contiguous pixels, the first at `e`.
template <class Kernel>
struct Row {
  static constexpr int size = Kernel::size;
  static constexpr bool isDifference = std::is_same_v<Kernel, Dx3> || std::is_same_v<Kernel, DxNeg3>;

  static void run(const Tev8u* e, Tev16s* dst, int width, int, const Range&) {
#pragma GCC ivdep
    for (int x = 0; x < width; ++x) dst[x] = static_cast<Tev16s>(dot<int>(Kernel{}, [&](int j) { return e[x + j]; }));
  }

  static void run(const Tev32f* e, Tev32f* dst, int width, int, const Range& range) {
    const auto at = [e](int j, int x) { return e[x + j]; };
    if constexpr (isDifference) {
      constexpr int plus = std::is_same_v<Kernel, Dx3> ? 2 : 0;
      roundedDifferences(dst, width, plus, 2 - plus, at);
    } else if (!range.sumsAreExactInFloat<Kernel::weight>() && range.sumsAreExactInDouble()) {
      // Each pixel is converted once for the k sums that it goes into.
      constexpr int block = 256;
      for (int first = 0; first < width; first += block) {
        const int n = std::min(block, width - first);
        Tev64f wide[block + size - 1];
        for (int i = 0; i < n + size - 1; ++i) wide[i] = e[first + i];
        for (int i = 0; i < n; ++i)
          dst[first + i] = static_cast<Tev32f>(dot<Tev64f>(Kernel{}, [&](int j) { return wide[i + j]; }));
      }
    } else {
      roundedDots<Kernel>(dst, width, range, at);
    }
  }
};

// The row of the 3x3 Laplacian has two parts: the sum of the outer pixels, and `part` elements behind it eight times
// the middle one. One float operation each, so float arithmetic rounds them as extended precision does.
struct PairedRow {
  static constexpr int size = 3;
  static constexpr bool isDifference = true;

  template <class Src, class Mid>
  static void run(const Src* e, Mid* dst, int width, int part, const Range&) {
#pragma GCC ivdep
    for (int x = 0; x < width; ++x) {
      dst[x] = static_cast<Mid>(e[x] + e[x + 2]);
      dst[part + x] = static_cast<Mid>(e[x + 1] * 8);
    }
  }
};

// Elements of one part of a store row: the width in whole groups of eight 16-bit words or four floats.
template <class Mid>
constexpr int partLength(int width) {
  constexpr int group = static_cast<int>(16 / sizeof(Mid));
  return (width + group - 1) / group * group;
}

template <class Kernel, class Src, class Mid>
[[gnu::noinline]] void runRow(const Src* e, Mid* dst, int width, int part, const Range& range) {
  Kernel::run(e, dst, width, part, range);
}

// Windows that lie in the row are read in place; the few that reach over an end are gathered by the border rule.
template <class Kernel, class Src, class Mid>
TevStatus rowStage(const Src* src, Mid* const* ppDst, int srcStep, int anchor, int width, int rows,
                   TevBorderType borderType, Src borderValue) {
  constexpr int k = Kernel::size;
  const int part = partLength<Mid>(width);
  const int first = std::min(anchor, width), last = std::max(first, width - (k - 1 - anchor));
  for (int y = 0; y < rows; ++y) {
    const Src* const row = src + std::ptrdiff_t{y} * srcStep;
    Mid* const dst = ppDst[y];
    if (!dst) return tevStatusNullPtr;
    Range range;
    if constexpr (std::is_same_v<Src, Tev32f> && !Kernel::isDifference) {
      range.take(row, width);
      range.take(&borderValue, borderType == tevBorderConst);
    }
    const auto gathered = [&](int x) {
      Src e[k];
      for (int j = 0; j < k; ++j) {
        const int i = borderIndex(x - anchor + j, width, borderType);
        e[j] = i < 0 ? borderValue : row[i];
      }
      runRow<Kernel>(e, dst + x, 1, part, range);
    };
    for (int x = 0; x < first; ++x) gathered(x);
    if (first < last) runRow<Kernel>(row + (first - anchor), dst + first, last - first, part, range);
    for (int x = last; x < width; ++x) gathered(x);
  }
  return tevStatusOk;
}

// ---- Column stages ----

// A column kernel gives the sum at x of k rows in 16-bit arithmetic, wrapping (the taps are so small that no sum of
// theirs leaves 32 bits), and runs over float rows.
template <class Kernel>
struct Column {
  static constexpr int size = Kernel::size;
  static constexpr bool isDifference = std::is_same_v<Kernel, Dx3>;

  static Tev16s sum(const Tev16s* const* rows, int x, int) {
    return static_cast<Tev16s>(dot<int>(Kernel{}, [&](int j) { return rows[j][x]; }));
  }

  static void run(const Tev32f* const (&rows)[size], Tev32f* dst, int width, int, const Range& range) {
    const auto at = [&](int j, int x) { return rows[j][x]; };
    if constexpr (isDifference)
      roundedDifferences(dst, width, 2, 0, at);
    else
      roundedDots<Kernel>(dst, width, range, at);
  }
};

// The column of the 3x3 Laplacian over the two parts of its rows: 2 0 2 / 0 -8 0 / 2 0 2.
struct PairedColumn {
  static constexpr int size = 3;
  static constexpr bool isDifference = false;

  static Tev16s sum(const Tev16s* const* rows, int x, int part) {
    return static_cast<Tev16s>((rows[0][x] + rows[2][x]) * 2 - rows[1][part + x]);
  }

  static void run(const Tev32f* const (&rows)[size], Tev32f* dst, int width, int part, const Range& range) {
    const auto sum = [&]<class V>(V, int x) { return (V{rows[0][x]} + V{rows[2][x]}) * 2 - V{rows[1][part + x]}; };
    const auto magnitude = [&](int x) {
      return (std::fabs(Tev64f{rows[0][x]}) + std::fabs(Tev64f{rows[2][x]})) * 2 + std::fabs(Tev64f{rows[1][part + x]});
    };
    roundedSums<5>(dst, width, range, sum, magnitude);
  }
};

// The second pass of the 5x5 Laplacian adds its column to what the first left in the destination.
struct AddedSobel5 : Column<Sobel5> {
  static void run(const Tev32f* const (&rows)[size], Tev32f* dst, int width, int, const Range& rowsRange) {
    Range range = rowsRange;
    range.take(dst, width);
    const auto sum = [&]<class V>(V, int x) { return dot<V>(Sobel5{}, [&](int j) { return rows[j][x]; }) + V{dst[x]}; };
    const auto magnitude = [&](int x) {
      return absoluteDot(Sobel5{}, [&](int j) { return rows[j][x]; }) + std::fabs(Tev64f{dst[x]});
    };
    roundedSums<Sobel5::weight>(dst, width, range, sum, magnitude);
  }
};

// The averages. Both integer ones divide by a 16-bit fraction: the 3x3 one with a rounding term, the 5x5 one without
// and with a fraction just short of 1 / 25, so that a white image comes out as 254. Callers' stored images depend on
// either.
template <class Kernel>
struct Average {
  static constexpr int size = Kernel::size;
  static constexpr bool isDifference = false;
  static constexpr Tev32f fraction = size == 3 ? 0.11111111F : 0.04F;

  // (sum * 7280 + 36400) >> 16 and (sum * 2621) >> 16.
  static constexpr int factor = size == 3 ? 7280 : 2621, addend = size == 3 ? 5 : 0;
  static int mean(int sum) { return ((sum + addend) * factor) >> 16; }

  static void run(const Tev32f* const (&rows)[size], Tev32f* dst, int width, int, const Range& range) {
    const auto sum = [&]<class V>(V, int x) {
      return dot<V>(Kernel{}, [&](int j) { return rows[j][x]; }) * V{fraction};
    };
    const auto magnitude = [&](int x) {
      return absoluteDot(Kernel{}, [&](int j) { return rows[j][x]; }) * Tev64f{fraction};
    };
    const bool exactInFloat = range.sumsAreExactInFloat<Kernel::weight>();
    if (!exactInFloat && range.sumsAreExactInDouble() && range.sumsStayNormal())
      roundedProducts(
          dst, width, [&](int x) { return sum(Tev64f{}, x); }, [&](int x) { return sum(Extended{}, x); });
    else if (exactInFloat)
      roundedSums<Kernel::weight>(dst, width, range, sum, magnitude);
    else
      guardedSums(dst, width, sum, magnitude);
  }
};

// Division of 16-bit results to 8s: v * (1 / divisor), reciprocal and product with a 64-bit significand, clamped,
// truncated.
class Division {
 public:
  explicit Division(int divisor)
      : reciprocal_(Extended{1} / divisor),
        factor_(static_cast<Tev32f>(reciprocal_) * (1 + 0x1p-20F)),
        isWhole_(quotientsAreWhole(divisor)) {}

  // Where every exact quotient stays whole, the result is v / divisor without its fraction. A float reciprocal that is
  // slightly too large finds it: being too large by less than 1 / 32768 of itself it never reaches the next whole
  // number.
  bool isWhole() const { return isWhole_; }
  Tev8s whole(int v) const { return clamped(static_cast<Tev32f>(v) * factor_); }

  Tev8s exact(int v) const { return clamped(v * reciprocal_); }

 private:
  template <class F>
  static Tev8s clamped(F v) {
    const F low = v < F{-128} ? F{-128} : v;
    return static_cast<Tev8s>(static_cast<int>(low > F{127} ? F{127} : low));
  }

  // n * divisor times the rounded reciprocal falls short of n for some n and one divisor in seven, 41 the first of
  // them. Truncation then makes n - 1 of it.
  bool quotientsAreWhole(int divisor) const {
    const std::int64_t step = divisor < 0 ? -std::int64_t{divisor} : divisor;
    bool whole = true;
    for (int n = 1; n <= 128 && n * step <= 32768; ++n) whole &= n * step * std::fabs(reciprocal_) >= n;
    return whole;
  }

  Extended reciprocal_;
  Tev32f factor_;
  bool isWhole_;
};

// All bits that are set in any of the values.
int bitsOf(const Tev16s* values, int n) {
  Tev16s bits = 0;
  for (int i = 0; i < n; ++i) bits = static_cast<Tev16s>(bits | values[i]);
  return bits;
}

// Calls row(rows, dst, part) for each output row, with the k store rows that it comes from.
template <int k, class Mid, class Dst, class Row>
TevStatus forEachRow(const Mid* const* ppSrc, Dst* dst, int dstStep, int width, int rows, Row row) {
  for (int y = 0; y < rows; ++y) {
    const Mid* above[k];
    std::copy_n(ppSrc + y, k, above);
    row(above, dst + std::ptrdiff_t{y} * dstStep, partLength<Mid>(width));
  }
  return tevStatusOk;
}

template <class Kernel>
TevStatus columnStage(const Tev16s* const* ppSrc, Tev16s* dst, int dstStep, int width, int rows) {
  return forEachRow<Kernel::size>(ppSrc, dst, dstStep, width, rows, [=](const auto& above, Tev16s* out, int part) {
#pragma GCC ivdep
    for (int x = 0; x < width; ++x) {
      const int before = std::is_same_v<Kernel, AddedSobel5> ? out[x] : 0;
      out[x] = static_cast<Tev16s>(before + Kernel::sum(above, x, part));
    }
  });
}

template <class Kernel>
TevStatus columnStage(const Tev16s* const* ppSrc, Tev8s* dst, int dstStep, int width, int rows, int divisor) {
  const Division division(divisor);
  return forEachRow<Kernel::size>(ppSrc, dst, dstStep, width, rows, [=](const auto& above, Tev8s* out, int part) {
    if (division.isWhole()) {
#pragma GCC ivdep
      for (int x = 0; x < width; ++x) out[x] = division.whole(Kernel::sum(above, x, part));
    } else {
      for (int x = 0; x < width; ++x) out[x] = division.exact(Kernel::sum(above, x, part));
    }
  });
}

template <class Kernel>
TevStatus columnStage(const Tev16s* const* ppSrc, Tev8u* dst, int dstStep, int width, int rows) {
  constexpr int k = Kernel::size;
  int bits = 0, taken = 0;  // the bits of all values of the first `taken` rows
  return forEachRow<k>(ppSrc, dst, dstStep, width, rows, [&, width](const auto& above, Tev8u* out, int) {
    const auto sum = [&](int x) {
      int total = 0;
      for (const Tev16s* row : above) total += row[x];
      return total;
    };
    for (int j = taken == 0 ? 0 : k - 1; j < k; ++j, ++taken) bits |= bitsOf(above[j], width);
    if ((bits & ~2047) == 0) {
      // Rows of byte sums: their sum and the mean stay in 16 bits.
#pragma GCC ivdep
      for (int x = 0; x < width; ++x) {
        const auto shifted = static_cast<Tev16s>(sum(x) + Kernel::addend);
        const auto mean = static_cast<Tev16s>((shifted * Kernel::factor) >> 16);
        out[x] = static_cast<Tev8u>(mean < 255 ? mean : 255);
      }
    } else {
#pragma GCC ivdep
      for (int x = 0; x < width; ++x) out[x] = saturate<Tev8u>(Kernel::mean(sum(x)));
    }
  });
}

template <class Kernel>
TevStatus columnStage(const Tev32f* const* ppSrc, Tev32f* dst, int dstStep, int width, int rows) {
  constexpr int k = Kernel::size;
  Range ranges[k];  // of the last k rows, so that each row is looked at once
  int taken = 0;
  return forEachRow<k>(ppSrc, dst, dstStep, width, rows, [&](const auto& above, Tev32f* out, int part) {
    Range range;
    if constexpr (!Kernel::isDifference) {
      // The first output row takes k rows, each further one its last.
      for (int j = taken == 0 ? 0 : k - 1; j < k; ++j, ++taken) {
        ranges[taken % k] = {};
        ranges[taken % k].take(above[j], width);
      }
      for (const Range& each : ranges) range.join(each);
      if constexpr (std::is_same_v<Kernel, PairedColumn>) range.take(above[1] + part, width);
    }
    Kernel::run(above, out, width, part, range);
  });
}

}  // namespace

// ---- The stages by name ----

#define TEV_FIXED_ROW_8U16S(name, kernel)                                                                      \
  TevStatus name(const Tev8u* src, Tev16s* const* ppDst, Tev8u*, int srcStep, int anchor, int width, int rows, \
                 TevBorderType borderType, Tev8u borderValue) {                                                \
    return rowStage<kernel>(src, ppDst, srcStep, anchor, width, rows, borderType, borderValue);                \
  }
#define TEV_FIXED_ROW_32F(name, kernel)                                                                         \
  TevStatus name(const Tev32f* src, Tev32f* const* ppDst, Tev8u*, int srcStep, int anchor, int width, int rows, \
                 TevBorderType borderType, Tev32f borderValue) {                                                \
    return rowStage<kernel>(src, ppDst, srcStep, anchor, width, rows, borderType, borderValue);                 \
  }
#define TEV_FIXED_COLUMN_16S(name, kernel)                                                    \
  TevStatus name(const Tev16s* const* ppSrc, Tev16s* dst, int dstStep, int width, int rows) { \
    return columnStage<kernel>(ppSrc, dst, dstStep, width, rows);                             \
  }
#define TEV_FIXED_COLUMN_16S8S(name, kernel)                                                              \
  TevStatus name(const Tev16s* const* ppSrc, Tev8s* dst, int dstStep, int width, int rows, int divisor) { \
    return columnStage<kernel>(ppSrc, dst, dstStep, width, rows, divisor);                                \
  }
#define TEV_FIXED_COLUMN_16S8U(name, kernel)                                                 \
  TevStatus name(const Tev16s* const* ppSrc, Tev8u* dst, int dstStep, int width, int rows) { \
    return columnStage<kernel>(ppSrc, dst, dstStep, width, rows);                            \
  }
#define TEV_FIXED_COLUMN_32F(name, kernel)                                                    \
  TevStatus name(const Tev32f* const* ppSrc, Tev32f* dst, int dstStep, int width, int rows) { \
    return columnStage<kernel>(ppSrc, dst, dstStep, width, rows);                             \
  }

TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx, Row<Dx3>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr, Row<Scharr3>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg, Row<DxNeg3>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg, Row<DxNeg5>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2, Row<D2x3>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2, Row<D2x5>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel, Row<Sobel3>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel, Row<Sobel5>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr, Row<Avr3>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr, Row<Avr5>)
TEV_FIXED_ROW_8U16S(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian, PairedRow)

TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx, Row<Dx3>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr, Row<Scharr3>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg, Row<DxNeg3>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg, Row<DxNeg5>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2, Row<D2x3>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2, Row<D2x5>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel, Row<Sobel3>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel, Row<Sobel5>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr, Row<Avr3>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr, Row<Avr5>)
TEV_FIXED_ROW_32F(ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian, PairedRow)

TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_3x3_kerScharr, Column<Scharr3>)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_3x3_kerDx, Column<Dx3>)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_3x3_kerSobel, Column<Sobel3>)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_5x5_kerSobel, Column<Sobel5>)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_5x5_kerDx, Column<Dx5>)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_3x3_kerDx2, Column<D2x3>)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_5x5_kerDx2, Column<D2x5>)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian, PairedColumn)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian, AddedSobel5)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg, Column<SobelNeg3>)
TEV_FIXED_COLUMN_16S(ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg, Column<SobelNeg5>)

TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr, Column<Scharr3>)
TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx, Column<Dx3>)
TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel, Column<Sobel3>)
TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel, Column<Sobel5>)
TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx, Column<Dx5>)
TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2, Column<D2x3>)
TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2, Column<D2x5>)
TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian, PairedColumn)
TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg, Column<SobelNeg3>)
TEV_FIXED_COLUMN_16S8S(ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg, Column<SobelNeg5>)

TEV_FIXED_COLUMN_16S8U(ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr, Average<Avr3>)
TEV_FIXED_COLUMN_16S8U(ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr, Average<Avr5>)

TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_3x3_kerScharr, Column<Scharr3>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_3x3_kerDx, Column<Dx3>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_3x3_kerSobel, Column<Sobel3>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_5x5_kerSobel, Column<Sobel5>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_5x5_kerDx, Column<Dx5>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_3x3_kerDx2, Column<D2x3>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_5x5_kerDx2, Column<D2x5>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian, PairedColumn)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian, AddedSobel5)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg, Column<SobelNeg3>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg, Column<SobelNeg5>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_3x3_kerAvr, Average<Avr3>)
TEV_FIXED_COLUMN_32F(ownFilterColumnPipeline_32f_C1R_5x5_kerAvr, Average<Avr5>)

// ---- The stages by index ----

OwnFixedRow_8u16s* const owntabRow_8u16s[11] = {
    ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx,       ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr,
    ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg,    ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg,
    ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2,      ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2,
    ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel,    ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel,
    ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr,      ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr,
    ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian};

OwnFixedRow_32f* const owntabRow_32f[11] = {
    ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx,       ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr,
    ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg,    ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg,
    ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2,      ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2,
    ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel,    ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel,
    ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr,      ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr,
    ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian};

OwnFixedColumn_16s* const owntabColumn_8u16s[13] = {
    ownFilterColumnPipeline_16s_C1R_3x3_kerScharr,    ownFilterColumnPipeline_16s_C1R_3x3_kerDx,
    ownFilterColumnPipeline_16s_C1R_3x3_kerSobel,     ownFilterColumnPipeline_16s_C1R_5x5_kerSobel,
    ownFilterColumnPipeline_16s_C1R_5x5_kerDx,        ownFilterColumnPipeline_16s_C1R_3x3_kerDx2,
    ownFilterColumnPipeline_16s_C1R_5x5_kerDx2,       ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian,
    ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian, ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg,
    ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg,  ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg,
    ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg};

OwnFixedColumn_16s8s* const owntabColumn_8u8s[13] = {
    ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr,    ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx,
    ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel,     ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel,
    ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx,        ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2,
    ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2,       ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian,
    ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian, ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg,
    ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg,  ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg,
    ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg};

OwnFixedColumn_32f* const owntabColumn_32f[13] = {
    ownFilterColumnPipeline_32f_C1R_3x3_kerScharr,    ownFilterColumnPipeline_32f_C1R_3x3_kerDx,
    ownFilterColumnPipeline_32f_C1R_3x3_kerSobel,     ownFilterColumnPipeline_32f_C1R_5x5_kerSobel,
    ownFilterColumnPipeline_32f_C1R_5x5_kerDx,        ownFilterColumnPipeline_32f_C1R_3x3_kerDx2,
    ownFilterColumnPipeline_32f_C1R_5x5_kerDx2,       ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian,
    ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian, ownFilterColumnPipeline_32f_C1R_3x3_kerAvr,
    ownFilterColumnPipeline_32f_C1R_5x5_kerAvr,       ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg,
    ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg};

OwnFixedColumn_16s8u* const owntabColumn_8u[2] = {ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr,
                                                  ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr};

namespace {

// ---- Drivers ----

// The strips of an image: the first takes the border rule above it, the last one below it.
constexpr int firstStrip = 1, middleBand = 2, lastStrip = 4, wholeImage = firstStrip | middleBand | lastStrip;

constexpr int blockRows = 16;

// The row stage with its two parts in a row of the store.
constexpr int pairedRowIndex = 10;

// The rows of one call: `height` output rows, `src` and `dst` at the first of them, out of an image of `imageHeight`
// rows from `image`. Steps count bytes.
template <class Src, class Dst>
struct Band {
  const Src* src;
  int srcStep;
  Dst* dst;
  int dstStep;
  int width;
  int height;
  const Src* image;
  int imageHeight;
  int phase;
};

template <class Src>
struct Border {
  TevBorderType type;
  Src value;
};

template <class T>
T* aligned(void* at) {
  return reinterpret_cast<T*>((reinterpret_cast<std::uintptr_t>(at) + 31) & ~std::uintptr_t{31});
}

// The row kernel's answer to an endless row of the border's value.
inline Tev16s filteredConstant(const Tev16s* taps, int size, Tev8u value) {
  int sum = 0;
  for (int j = 0; j < size; ++j) sum += taps[j];
  return saturate<Tev16s>(sum * value);
}
inline Tev32f filteredConstant(const Tev32f* taps, int size, Tev32f value) {
  Extended sum = 0;
  for (int j = 0; j < size; ++j) sum += taps[j];
  return static_cast<Tev32f>(sum * value);
}

// Runs a band through a row stage and column(ppSrc, dst, dstStep, width, rows), with the store in `buffer`. The size
// queries count scratch for both stages too, but these stages need none.
template <class Src, class Mid, class Dst, class RowStage, class ColumnStage>
TevStatus filterBand(const Band<Src, Dst>& band, const Mid* rowKernel, int rowKernelSize, int columnKernelSize,
                     Border<Src> border, Tev8u* buffer, int rowIndex, RowStage* rowStage, ColumnStage column) {
  const int k = columnKernelSize, top = k / 2, ring = k + 15, anchor = rowKernelSize / 2;
  const int srcStep = band.srcStep / int{sizeof(Src)}, dstStep = band.dstStep / int{sizeof(Dst)};
  const bool isFirst = band.phase & firstStrip, isLast = band.phase & lastStrip;

  Mid** const table = aligned<Mid*>(buffer);
  Mid* const store = aligned<Mid>(table + 3 * k + 30);
  const std::ptrdiff_t pitch = partLength<Mid>(band.width) * (rowIndex == pairedRowIndex ? 2 : 1);
  const auto borderRow = [&](int i) { return store + i * pitch; };
  for (int i = 0; i < 2 * ring; ++i) table[k + i] = store + (k + i % ring) * pitch;

  const auto filterRows = [&](const Src* src, Mid* const* ppDst, int rows) {
    rowStage(src, ppDst, nullptr, srcStep, anchor, band.width, rows, border.type, border.value);
  };
  // What stands outside of the image is filtered before anything is written, rows below the image too.
  const auto filterOutside = [&](int y, int i) {
    Mid* const row = borderRow(i);
    filterRows(band.image + std::ptrdiff_t{borderIndex(y, band.imageHeight, border.type)} * srcStep, &row, 1);
  };
  if (border.type == tevBorderConst) {
    if (isFirst || isLast)
      std::fill_n(borderRow(0), band.width, filteredConstant(rowKernel, rowKernelSize, border.value));
  } else if (border.type != tevBorderRepl) {
    for (int j = top - 1; isFirst && j >= 0; --j) filterOutside(j - top, j);
    for (int j = top + 1; isLast && j < k; ++j) filterOutside(band.imageHeight + j - top - 1, j);
  }
  if (isFirst)
    for (int j = 0; j < top; ++j)
      table[k - top + j] = border.type == tevBorderConst  ? borderRow(0)
                           : border.type == tevBorderRepl ? table[k]  // the first image row, once it is there
                                                          : borderRow(j);

  // Without a border above or below, the rows there are rows of the image.
  const int above = isFirst ? 0 : top, below = isLast ? 0 : top;
  const Src* src = band.src - std::ptrdiff_t{above} * srcStep;
  Dst* dst = band.dst;
  Mid **rowCursor = table + k, **columnCursor = table + k - top + above;
  Mid** const end = table + k + ring;
  int need = k + 15 - top + above, out = blockRows, done = 0;
  for (int left = above + band.height + below; left > 0;) {
    if (need > left) out = std::max(0, out + left - need);
    const int rows = std::min(need, left);
    filterRows(src, rowCursor, rows);
    column(columnCursor, dst, dstStep, band.width, out);
    src += std::ptrdiff_t{rows} * srcStep;
    dst += std::ptrdiff_t{out} * dstStep;
    rowCursor += rows;
    columnCursor += out;
    if (rowCursor >= end) rowCursor -= ring;
    if (columnCursor >= end) columnCursor -= ring;
    left -= rows;
    done += out;
    need = out = blockRows;
  }

  const int rest = band.height - done;
  if (rest <= 0) return tevStatusOk;
  Mid* const lastRow = columnCursor[top + rest - 1];
  for (int i = top + 1; i < k; ++i)
    columnCursor[i + rest - 1] = border.type == tevBorderConst  ? borderRow(0)
                                 : border.type == tevBorderRepl ? lastRow
                                                                : borderRow(i);
  column(columnCursor, dst, dstStep, band.width, rest);
  return tevStatusOk;
}

}  // namespace

TevStatus ownFilterConvolution_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, int width, int height,
                                         const Tev16s* rowKernel, int rowKernelSize, const Tev16s*,
                                         int columnKernelSize, TevBorderType borderType, Tev8u borderValue,
                                         Tev8u* buffer, int rowIndex, int columnIndex) {
  return filterBand(Band<Tev8u, Tev16s>{src, srcStep, dst, dstStep, width, height, src, height, wholeImage}, rowKernel,
                    rowKernelSize, columnKernelSize, Border<Tev8u>{borderType, borderValue}, buffer, rowIndex,
                    owntabRow_8u16s[rowIndex], owntabColumn_8u16s[columnIndex]);
}

TevStatus ownFilterConvolution_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep, int width, int height,
                                        const Tev16s* rowKernel, int rowKernelSize, const Tev16s*, int columnKernelSize,
                                        TevBorderType borderType, Tev8u borderValue, Tev8u* buffer, int rowIndex,
                                        int columnIndex, int divisor) {
  return filterBand(Band<Tev8u, Tev8s>{src, srcStep, dst, dstStep, width, height, src, height, wholeImage}, rowKernel,
                    rowKernelSize, columnKernelSize, Border<Tev8u>{borderType, borderValue}, buffer, rowIndex,
                    owntabRow_8u16s[rowIndex],
                    [=](auto... arguments) { owntabColumn_8u8s[columnIndex](arguments..., divisor); });
}

TevStatus ownFilterConvolution_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                                      const Tev16s* rowKernel, int rowKernelSize, const Tev16s*, int columnKernelSize,
                                      TevBorderType borderType, Tev8u borderValue, Tev8u* buffer, int rowIndex,
                                      int columnIndex) {
  return filterBand(Band<Tev8u, Tev8u>{src, srcStep, dst, dstStep, width, height, src, height, wholeImage}, rowKernel,
                    rowKernelSize, columnKernelSize, Border<Tev8u>{borderType, borderValue}, buffer, rowIndex,
                    owntabRow_8u16s[rowIndex], owntabColumn_8u[columnIndex]);
}

TevStatus ownFilterConvolution_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                                       const Tev32f* rowKernel, int rowKernelSize, const Tev32f*, int columnKernelSize,
                                       TevBorderType borderType, Tev32f borderValue, Tev8u* buffer, int rowIndex,
                                       int columnIndex) {
  return filterBand(Band<Tev32f, Tev32f>{src, srcStep, dst, dstStep, width, height, src, height, wholeImage}, rowKernel,
                    rowKernelSize, columnKernelSize, Border<Tev32f>{borderType, borderValue}, buffer, rowIndex,
                    owntabRow_32f[rowIndex], owntabColumn_32f[columnIndex]);
}

TevStatus ownFilterConvolution_8u16s_C1R_omp(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, int width,
                                             int height, const Tev16s* rowKernel, int rowKernelSize, const Tev16s*,
                                             int columnKernelSize, TevBorderType borderType, Tev8u borderValue,
                                             Tev8u* buffer, int rowIndex, int columnIndex, const Tev8u* wholeSrc,
                                             TevSize wholeSize, int phase) {
  return filterBand(Band<Tev8u, Tev16s>{src, srcStep, dst, dstStep, width, height, wholeSrc, wholeSize.height, phase},
                    rowKernel, rowKernelSize, columnKernelSize, Border<Tev8u>{borderType, borderValue}, buffer,
                    rowIndex, owntabRow_8u16s[rowIndex], owntabColumn_8u16s[columnIndex]);
}

TevStatus ownFilterConvolution_8u8s_C1R_omp(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep, int width,
                                            int height, const Tev16s* rowKernel, int rowKernelSize, const Tev16s*,
                                            int columnKernelSize, TevBorderType borderType, Tev8u borderValue,
                                            Tev8u* buffer, int rowIndex, int columnIndex, int divisor,
                                            const Tev8u* wholeSrc, TevSize wholeSize, int phase) {
  return filterBand(Band<Tev8u, Tev8s>{src, srcStep, dst, dstStep, width, height, wholeSrc, wholeSize.height, phase},
                    rowKernel, rowKernelSize, columnKernelSize, Border<Tev8u>{borderType, borderValue}, buffer,
                    rowIndex, owntabRow_8u16s[rowIndex],
                    [=](auto... arguments) { owntabColumn_8u8s[columnIndex](arguments..., divisor); });
}

TevStatus ownFilterConvolution_8u_C1R_omp(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                                          const Tev16s* rowKernel, int rowKernelSize, const Tev16s*,
                                          int columnKernelSize, TevBorderType borderType, Tev8u borderValue,
                                          Tev8u* buffer, int rowIndex, int columnIndex, const Tev8u* wholeSrc,
                                          TevSize wholeSize, int phase) {
  return filterBand(Band<Tev8u, Tev8u>{src, srcStep, dst, dstStep, width, height, wholeSrc, wholeSize.height, phase},
                    rowKernel, rowKernelSize, columnKernelSize, Border<Tev8u>{borderType, borderValue}, buffer,
                    rowIndex, owntabRow_8u16s[rowIndex], owntabColumn_8u[columnIndex]);
}

TevStatus ownFilterConvolution_32f_C1R_omp(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width,
                                           int height, const Tev32f* rowKernel, int rowKernelSize, const Tev32f*,
                                           int columnKernelSize, TevBorderType borderType, Tev32f borderValue,
                                           Tev8u* buffer, int rowIndex, int columnIndex, const Tev32f* wholeSrc,
                                           TevSize wholeSize, int phase) {
  return filterBand(Band<Tev32f, Tev32f>{src, srcStep, dst, dstStep, width, height, wholeSrc, wholeSize.height, phase},
                    rowKernel, rowKernelSize, columnKernelSize, Border<Tev32f>{borderType, borderValue}, buffer,
                    rowIndex, owntabRow_32f[rowIndex], owntabColumn_32f[columnIndex]);
}
