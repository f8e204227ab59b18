// Gaussian pyramid steps of rate 2 on float images. Sums are defined in extended precision, rounded to float where they
// enter the ring and where they leave for the image.
//
// Every value of an image row is a multiple of the last place of its smallest one. Where the exponents of a few rows
// lie close together, which holds for all but contrived images, every sum over them is exact in double: the vector form
// in double gives the extended form's bits then. Where the values are whole numbers below 2^16, as in images that were
// integers once, every sum is exact in float already. Other rows take the same code in extended precision.
#include <bit>
#include <type_traits>

#include "gauss5x5.h"
#include "frame/arithmetic.h"
#include "tevcv_internal/pyramids.h"

using namespace tevcv;
using namespace tevcv::gauss5x5;

namespace {

// What the values of a row, or of a few rows, have in common.
struct Extent {
  // Magnitudes as the bit patterns of floats, which order like them. The smallest leaves out zeros: it is one too small
  // here, so that a zero wraps to the end of the order.
  std::uint32_t smallestLess1 = ~std::uint32_t{0};
  std::uint32_t largest = 0;
  bool whole = true;  // known for values below 2^22 only

  static constexpr auto limitOfWhole = std::bit_cast<std::uint32_t>(65536.0F);

  Extent with(const Extent& other) const {
    return {std::min(smallestLess1, other.smallestLess1), std::max(largest, other.largest), whole && other.whole};
  }

  // The weights of a sum through both directions add up to 256: 24 bits hold every sum of whole numbers below 2^16.
  bool sumsAreExactInFloat() const { return whole && largest < limitOfWhole; }

  // With the smallest value's exponent e, all values and all sums of them, rounded to float or not, are multiples of
  // 2^(e - 23). Sums stay below 2^(8 + 1) times the largest power of two: 53 bits hold them all while the exponents
  // differ by 21 at most.
  bool sumsAreExactInDouble() const {
    const int low = std::max(static_cast<int>((smallestLess1 + 1) >> 23), 1), high = static_cast<int>(largest >> 23);
    return largest == 0 || (high < 255 && high - low <= 21);
  }
};

constexpr std::uint32_t bitsOf(Tev32f value) { return std::bit_cast<std::uint32_t>(value); }
constexpr std::uint32_t magnitudeOf(Tev32f value) { return bitsOf(value) & 0x7FFFFFFFU; }

Extent extentOf(const Tev32f* s, int n) {
  // Adding this leaves no bits for a fraction.
  constexpr Tev32f shifter = 12582912.0F;
  std::uint32_t largest = 0, fractions = 0;
  for (int i = 0; i < n; ++i) {
    largest = std::max(largest, magnitudeOf(s[i]));
    fractions |= bitsOf((s[i] + shifter) - shifter - s[i]);
  }
  // Differences of whole numbers are zeros of either sign, and none of those numbers is below 1.
  Extent extent = {bitsOf(1.0F) - 1, largest, (fractions & 0x7FFFFFFFU) == 0};
  if (extent.sumsAreExactInFloat()) return extent;
  extent.smallestLess1 = ~std::uint32_t{0};
  for (int i = 0; i < n; ++i) extent.smallestLess1 = std::min(extent.smallestLess1, magnitudeOf(s[i]) - 1);
  return extent;
}

// Calls work with a value of the fastest type in which all sums within the extent are those of extended precision.
template <class Work>
void inExactType(const Extent& extent, Work work) {
  if (extent.sumsAreExactInFloat())
    work(Tev32f{});
  else if (extent.sumsAreExactInDouble())
    work(Tev64f{});
  else
    work(Extended{});
}

// ---- Down -----------------------------------------------------------------------------------------------------------

constexpr Tev32f by256 = 0.00390625F, by64 = 0.015625F;

// Extended terms are added in their order. Where sums are exact the order is free: this one multiplies less.
template <class Real>
Real kernelSum(Real a, Real b, Real c, Real d, Real e) {
  if constexpr (std::is_same_v<Real, Extended>)
    return a + 4 * b + 6 * c + 4 * d + e;
  else
    return (a + e) + 4 * (b + d) + 6 * c;
}

// Horizontal sums around every other pixel of a row of at least three. `Real` is the type of the sums.
template <class Real, int channels>
void reduceRow(const Tev32f* s, int width, Tev32f* r) {
  const int last = halved(width) - 1;
  for (int c = 0; c < channels; ++c) {
    const auto at = [p = s + c](int x) { return Real{p[x * channels]}; };
    const int end = 2 * last;
    r[c] = static_cast<Tev32f>(6 * at(0) + 8 * at(1) + 2 * at(2));
    r[last * channels + c] =
        static_cast<Tev32f>(width % 2 == 1 ? 6 * at(end) + 8 * at(end - 1) + 2 * at(end - 2)
                                           : at(end - 2) + 4 * (at(end - 1) + at(end + 1)) + 7 * at(end));
  }
  Real even[(blockPixels + 2) * channels], odd[(blockPixels + 1) * channels];
  for (int x = 1; x < last; x += blockPixels) {
    const int n = std::min(blockPixels, last - x);
    splitPixels<channels>(s + 2 * (x - 1) * channels, n + 1, even, odd);
    Tev32f* const d = r + x * channels;
    for (int i = 0; i < n * channels; ++i)
      d[i] = static_cast<Tev32f>(
          kernelSum(even[i], odd[i], even[i + channels], odd[i + channels], even[i + 2 * channels]));
  }
}

template <class Real>
void reduceColumns(const Tev32f* a, const Tev32f* b, const Tev32f* c, const Tev32f* d, const Tev32f* e, Tev32f* dst,
                   int n) {
#pragma GCC ivdep
  for (int i = 0; i < n; ++i)
    dst[i] = static_cast<Tev32f>(kernelSum(Real{a[i]}, Real{b[i]}, Real{c[i]}, Real{d[i]}, Real{e[i]}) * by256);
}

template <int channels>
void reduceImage(Rows<const Tev32f> src, Rows<Tev32f> dst, TevSize roi, Tev8u* buffer) {
  const int n = halved(roi.width) * channels;
  const Ring<Tev32f> ring(buffer, halved(roi.width), channels);
  Extent extent[downRingRows];
  reduceRows(
      roi.height,
      [&](int y, int slot) {
        extent[slot] = extentOf(src[y], roi.width * channels);
        inExactType(extent[slot],
                    [&](auto real) { reduceRow<decltype(real), channels>(src[y], roi.width, ring[slot]); });
      },
      [&](int y, int a, int b, int c, int d, int e) {
        inExactType(extent[a].with(extent[b]).with(extent[c]).with(extent[d]).with(extent[e]), [&](auto real) {
          reduceColumns<decltype(real)>(ring[a], ring[b], ring[c], ring[d], ring[e], dst[y], n);
        });
      });
}

// The small forms keep extended precision down to the store, without a rounding between the two directions.
Tev32f reduced(Extended sum) { return static_cast<Tev32f>(sum * by256); }

template <int channels>
TevStatus pyrDown(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi, Tev8u* buffer) {
  if (TevStatus s = checkDown(src, srcStep, dst, dstStep, roi, buffer, channels)) return s;
  if (roi.height < 3)
    ownPyrDownG5x5_H2_32f(src, srcStep, dst, dstStep, roi, channels);
  else if (roi.width < 3)
    ownPyrDownG5x5_W2_32f(src, srcStep, dst, dstStep, roi, channels);
  else
    reduceImage<channels>(rows(src, srcStep), rows(dst, dstStep), roi, buffer);
  return tevStatusOk;
}

// ---- Up -------------------------------------------------------------------------------------------------------------

// The even and odd samples of a row, pixel by pixel in turn. The pixel left of the first is the second, the pixel right
// of the last is the last itself; a single pixel stands for both.
template <class Real, int channels>
void expandRow(const Tev32f* s, int width, Tev32f* r) {
  const auto expandPixel = [=](int left, int x, int right) {
    for (int c = 0; c < channels; ++c) {
      const auto at = [p = s + c](int i) { return Real{p[i * channels]}; };
      Tev32f* const d = r + 2 * x * channels + c;
      d[0] = static_cast<Tev32f>(at(left) + 6 * at(x) + at(right));
      d[channels] = static_cast<Tev32f>(4 * (at(x) + at(right)));
    }
  };
  const int last = width - 1;
  expandPixel(std::min(1, last), 0, std::min(1, last));
#pragma GCC ivdep
  for (int x = 1; x < last; ++x) expandPixel(x - 1, x, x + 1);
  if (last > 0) expandPixel(last - 1, last, last);
}

template <class Real>
void expandColumns(const Tev32f* above, const Tev32f* at, const Tev32f* below, Tev32f* even, Tev32f* odd, int n) {
#pragma GCC ivdep
  for (int i = 0; i < n; ++i) even[i] = static_cast<Tev32f>((Real{above[i]} + 6 * Real{at[i]} + Real{below[i]}) * by64);
#pragma GCC ivdep
  for (int i = 0; i < n; ++i) odd[i] = static_cast<Tev32f>(4 * (Real{at[i]} + Real{below[i]}) * by64);
}

template <int channels>
TevStatus pyrUp(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi, Tev8u* buffer) {
  if (TevStatus s = checkUp(src, srcStep, dst, dstStep, roi, buffer, channels)) return s;
  const auto in = rows(src, srcStep);
  const auto out = rows(dst, dstStep);
  const int n = 2 * roi.width * channels;
  const Ring<Tev32f> ring(buffer, 2 * roi.width, channels);
  Extent extent[upRingRows];
  expandRows(
      roi.height,
      [&](int y, int slot) {
        extent[slot] = extentOf(in[y], roi.width * channels);
        inExactType(extent[slot],
                    [&](auto real) { expandRow<decltype(real), channels>(in[y], roi.width, ring[slot]); });
      },
      [&](int above, int at, int below, int y) {
        Tev32f *const even = out[2 * std::ptrdiff_t{y}], *const odd = out[2 * std::ptrdiff_t{y} + 1];
        inExactType(extent[above].with(extent[at]).with(extent[below]), [&](auto real) {
          expandColumns<decltype(real)>(ring[above], ring[at], ring[below], even, odd, n);
        });
      });
  return tevStatusOk;
}

}  // namespace

void ownPyrDownG5x5_H2_32f(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi, int channels) {
  reduceLowImage<Extended>(rows(src, srcStep), rows(dst, dstStep), srcRoi, channels, reduced);
}

void ownPyrDownG5x5_W2_32f(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi, int channels) {
  reduceNarrowImage<Extended>(rows(src, srcStep), rows(dst, dstStep), srcRoi, channels, reduced);
}

TevStatus teviPyrDown_Gauss5x5_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                       Tev8u* buffer) {
  return pyrDown<1>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrDown_Gauss5x5_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                       Tev8u* buffer) {
  return pyrDown<3>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrUp_Gauss5x5_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                     Tev8u* buffer) {
  return pyrUp<1>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrUp_Gauss5x5_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                     Tev8u* buffer) {
  return pyrUp<3>(src, srcStep, dst, dstStep, srcRoi, buffer);
}
