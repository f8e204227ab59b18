// What the norm families share: the walk over a masked region, the gate and the merge of a parallel call, and the sums
// and extrema of one image. Norms of two images stand in difference_norms.h.
//
// A measure is a small object that takes a share of the region block by block and gives a value; values of several
// shares merge into one, and `result` makes the norm of it. Left-out pixels are read all the same and turned into
// zeros, which keeps the inner loops free of branches.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/core_services.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "tevcv/types.h"
#include "tevcv_internal/frame.h"

namespace tevcv {

// A call forks when its region has `pixelsPerThread` pixels for each thread that the library may use and, in members
// that ask for it, when the die has more than one core.
struct Gate {
  int pixelsPerThread;
  bool wantsCores;

  bool opensFor(TevSize roi) const {
    return pixelsPerThread > 0 &&
           std::int64_t{roi.width} * roi.height >= std::int64_t{owncvGetMaxNumThreads()} * pixelsPerThread &&
           (!wantsCores || runomp() != 0);
  }
};

constexpr Gate anyDie(int pixelsPerThread) { return {pixelsPerThread, false}; }
constexpr Gate multiCoreDie(int pixelsPerThread) { return {pixelsPerThread, true}; }
constexpr Gate neverParallel = {0, false};

// One image or two under a mask. The images stand at the channel of interest; `channels` is their pixels' stride.
template <class T, int channels, int images>
struct MaskedRegion {
  Rows<const T> image[images];
  Rows<const Tev8u> mask;
  TevSize size;
};

// Pixels that a measure takes at once. Sums of one block fit 32 bits: 16384 * 255 * 255 < 2^31, 16384 * 65535 < 2^32.
// A channel of interest is first gathered into a block on the stack, and float terms pass through one: these are
// shorter, to stay in the first cache.
constexpr int longBlock = 16384;
constexpr int shortBlock = 1024;

template <class Measure, class T, int channels, int images>
Measure measureRows(const MaskedRegion<T, channels, images>& region, Share share) {
  constexpr bool contiguous = channels == 1;
  constexpr int block = contiguous && std::integral<T> ? longBlock : shortBlock;
  T gathered[images][contiguous ? 1 : block];
  Measure measure;
  for (int y = share.firstRow; y < share.endRow(); ++y) {
    for (int x = 0; x < region.size.width; x += block) {
      const int n = std::min(block, region.size.width - x);
      const T* elements[images];
      for (int k = 0; k < images; ++k) {
        elements[k] = region.image[k][y] + std::ptrdiff_t{x} * channels;
        if constexpr (!contiguous) {
          for (int i = 0; i < n; ++i) gathered[k][i] = elements[k][i * channels];
          elements[k] = gathered[k];
        }
      }
      const Tev8u* const mask = region.mask[y] + x;
      if constexpr (images == 1)
        measure.add(elements[0], mask, n);
      else
        measure.add(elements[0], elements[1], mask, n);
    }
    measure.endRow();
  }
  return measure;
}

// The measure's value over the whole region, on the calling thread or merged from the shares in thread order.
template <class Measure, class Region>
TevStatus measureRegion(const Region& region, Gate gate, typename Measure::Value& total) {
  if (!gate.opensFor(region.size)) {
    total = measureRows<Measure>(region, shareOfRows(region.size.height, 1, 0)).value();
    return tevStatusOk;
  }
  const int count = owncvGetNumThreads();
  Slots<typename Measure::Value> partial(count);
  if (!partial) return tevStatusNoMemory;
  forEachShare(region.size.height, count,
               [&](Share share) { partial[share.index] = measureRows<Measure>(region, share).value(); });
  total = partial[0];
  for (int t = 1; t < count; ++t) total = Measure::merged(total, partial[t]);
  return tevStatusOk;
}

// ---- Accumulators of integers. `term(i)` is the masked magnitude i of a block, an unsigned U. ----

template <std::integral T>
constexpr auto magnitude(T x) {
  return static_cast<std::make_unsigned_t<T>>(x < 0 ? -x : x);
}

// The distance of two integers always fits the unsigned type of their width.
template <std::integral T>
constexpr auto distance(T a, T b) {
  return static_cast<std::make_unsigned_t<T>>(a > b ? a - b : b - a);
}

template <std::integral U>
constexpr U keptWhere(Tev8u selected, U value) {
  return static_cast<U>(value & -int{selected != 0});
}

// What all measures with one plain number have in common.
struct Scalar {
  using Value = Tev64f;
  void endRow() {}
};

struct LargestOfAll : Scalar {
  // A later share counts only where it is strictly larger, so a NaN of a later share is not taken.
  static Tev64f merged(Tev64f first, Tev64f later) { return later > first ? later : first; }
  static Tev64f result(Tev64f largest) { return largest; }
};

struct SumOfAll : Scalar {
  static Tev64f merged(Tev64f first, Tev64f later) { return first + later; }
  static Tev64f result(Tev64f sum) { return sum; }
};

struct RootOfSum : SumOfAll {
  static Tev64f result(Tev64f sum) { return std::sqrt(sum); }
};

template <class U>
struct Largest : LargestOfAll {
  template <class Term>
  void addTerms(int n, Term term) {
    U top = 0;
    for (int i = 0; i < n; ++i) {
      const U value = term(i);
      top = value > top ? value : top;
    }
    largest_ = std::max(largest_, top);
  }
  Tev64f value() const { return largest_; }

 private:
  U largest_ = 0;
};

// Sums of 16-bit magnitudes are exact. Sums of 8-bit ones are kept in one 32-bit word for the whole share, which wraps
// and is read as signed at the end: callers see negative norms past 2^31 and know them.
template <class U>
struct Sum : SumOfAll {
  template <class Term>
  void addTerms(int n, Term term) {
    std::uint32_t sum = 0;
    for (int i = 0; i < n; ++i) sum += term(i);
    sum_ += sum;
  }
  Tev64f value() const {
    if constexpr (sizeof(U) == 1)
      return static_cast<std::int32_t>(sum_);
    else
      return static_cast<Tev64f>(sum_);
  }

 private:
  std::conditional_t<sizeof(U) == 1, std::uint32_t, std::uint64_t> sum_ = 0;
};

// The primary form is for 8-bit magnitudes: a block's sum fits 32 bits, the total 64.
template <class U>
struct SumOfSquares : RootOfSum {
  static_assert(sizeof(U) == 1);

  template <class Term>
  void addTerms(int n, Term term) {
    int sum = 0;
    for (int i = 0; i < n; ++i) {
      const short value = term(i);
      sum += value * value;
    }
    sum_ += static_cast<std::uint32_t>(sum);
  }
  Tev64f value() const { return static_cast<Tev64f>(sum_); }

 private:
  std::uint64_t sum_ = 0;
};

// Squares of 16-bit magnitudes are added to a double one by one. Up to 2^53 that is the integer sum; only beyond it
// does each addition round, and there the additions are done as they stand.
template <>
struct SumOfSquares<Tev16u> : RootOfSum {
  template <class Term>
  void addTerms(int n, Term term) {
    std::uint64_t sum = 0;
    for (int i = 0; i < n; ++i) {
      const std::uint32_t value = term(i);
      sum += std::uint64_t{value} * value;
    }
    const Tev64f exact = sum_ + static_cast<Tev64f>(sum);
    if (exact < 0x1p53) {
      sum_ = exact;
    } else {
      for (int i = 0; i < n; ++i) {
        const Tev64f value = term(i);
        sum_ += value * value;
      }
    }
  }
  Tev64f value() const { return sum_; }

 private:
  Tev64f sum_ = 0;
};

// An accumulator over the magnitudes of one image's integers.
template <class T, template <class> class Accumulator>
struct OfMagnitudes : Accumulator<std::make_unsigned_t<T>> {
  void add(const T* p, const Tev8u* mask, int n) {
    this->addTerms(n, [=](int i) { return keptWhere(mask[i], magnitude(p[i])); });
  }
};

// ---- Floats: masks and signs go by bit patterns, so that a NaN or an infinity that is left out counts for nothing.
// ----

constexpr Tev32s magnitudeBits = 0x7FFFFFFF;
constexpr Tev32s infinityBits = 0x7F800000;

inline Tev32s patternWhere(Tev8u selected, Tev32f value, Tev32s bits = -1) {
  return std::bit_cast<Tev32s>(value) & bits & -Tev32s{selected != 0};
}

inline Tev32f keptWhere(Tev8u selected, Tev32f value) { return std::bit_cast<Tev32f>(patternWhere(selected, value)); }

// ---- Norms of one image. ----

template <template <class> class Measure, int channels, class T>
TevStatus norm(const T* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roi, int coi, Tev64f* pValue,
               Gate gate) {
  // The source is looked at with its alignment before the mask is.
  if (TevStatus s =
          firstFailure(notNull(src, mask, pValue), region(roi), rowFits<T>(srcStep, roi.width, channels),
                       wholeElements<T>(srcStep), rowFits<Tev8u>(maskStep, roi.width), channelOfInterest(coi)))
    return s;
  const MaskedRegion<T, channels, 1> image = {{rows(src + (coi - 1), srcStep)}, rows(mask, maskStep), roi};
  Tev64f total;
  if (TevStatus s = measureRegion<Measure<T>>(image, gate, total)) return s;
  *pValue = Measure<T>::result(total);
  return tevStatusOk;
}

}  // namespace tevcv
