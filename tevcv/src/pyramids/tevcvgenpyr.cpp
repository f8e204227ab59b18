// Moves an image one level down or up a pyramid of any rate, with the kernel and the rate of a layer state.
//
// Down: the image is smoothed at full size by the separable kernel, then read at multiples of the rate by linear
// interpolation. The integer layers keep three more bits than the pixel in between.
//
// Up: every source pixel is spread over the destination around its scaled position, by the kernel interpolated at the
// position's fraction. The weights that have come together at a destination pixel are divided out again, first along
// the rows, then along the columns.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/borders.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/memory.h"
#include "tevcv_internal/pyramids.h"

using namespace tevcv;

namespace {

// What the layers of one element type are made of.
template <class T>
struct LayerOf;
template <>
struct LayerOf<Tev8u> {
  using Tap = Tev16s;
  using Middle = Tev16s;  // the smoothed image: eight times the pixel
  using RowSum = Tev32s;  // a row filtered by the 13-bit kernel
  static constexpr int rowShift = 8, scale = 15;
};
template <>
struct LayerOf<Tev16u> {
  using Tap = Tev16s;
  using Middle = Tev32s;
  using RowSum = Tev32s;
  static constexpr int rowShift = 10, scale = 13;
};
template <>
struct LayerOf<Tev32f> {
  using Tap = Tev32f;
  using Middle = Tev32f;
  using RowSum = Tev32f;
  static constexpr int scale = 0;
};

Tev8u* alignedTo32(Tev8u* p) { return p + (-reinterpret_cast<std::uintptr_t>(p) & 31); }

// ---- Weighted sums of lines -----------------------------------------------------------------------------------------

constexpr int block = 128;

// dst[i] = the sum over j of weights[j] * line(j)[i], in extended precision, rounded once.
//
// Products of floats are exact in double, and a double sum of n of them is off by no more than e = n * 2^-53 * the sum
// of their magnitudes (two more units cover the sum s +- e itself). Where both ends of s +- e round to the same float,
// so does the extended sum. A block with an element where they do not is summed again in extended precision.
template <class Line>
void sumLines(const Tev32f* weights, int count, Line line, Tev32f* dst, int n) {
  for (int from = 0; from < n; from += block) {
    const int length = std::min(block, n - from);
    Tev64f sum[block] = {}, magnitude[block] = {};
    for (int j = 0; j < count; ++j) {
      const Tev32f* const p = line(j) + from;
      const Tev64f weight = weights[j];
      for (int i = 0; i < length; ++i) {
        const Tev64f term = weight * p[i];
        sum[i] += term;
        magnitude[i] += std::fabs(term);
      }
    }
    const Tev64f unit = (count + 2) * 0x1p-53;
    Tev32f result[block];
    std::uint32_t differences = 0;
    for (int i = 0; i < length; ++i) {
      const auto low = static_cast<Tev32f>(sum[i] - unit * magnitude[i]);
      const auto high = static_cast<Tev32f>(sum[i] + unit * magnitude[i]);
      differences |= std::bit_cast<std::uint32_t>(low) ^ std::bit_cast<std::uint32_t>(high);
      differences |= std::uint32_t{low != low};
      result[i] = low;
    }
    if (differences != 0)
      for (int i = 0; i < length; ++i) {
        Extended exact = 0;
        for (int j = 0; j < count; ++j) exact += static_cast<Extended>(weights[j]) * line(j)[from + i];
        result[i] = static_cast<Tev32f>(exact);
      }
    std::copy_n(result, length, dst + from);
  }
}

// The same on integers, in sums of type Sum, each handed to finish. Sums are formed modulo the width of Sum.
template <class Sum, class In, class Line, class Out, class Finish>
void sumLines(const Tev16s* weights, int count, Line line, Out* dst, int n, Finish finish) {
  using Word = std::make_unsigned_t<Sum>;
  for (int from = 0; from < n; from += block) {
    const int length = std::min(block, n - from);
    Word sum[block] = {};
    for (int j = 0; j < count; ++j) {
      const In* const p = line(j) + from;
      const Sum weight = weights[j];
      for (int i = 0; i < length; ++i) sum[i] += static_cast<Word>(weight) * static_cast<Word>(Sum{p[i]});
    }
    for (int i = 0; i < length; ++i) dst[from + i] = finish(static_cast<Sum>(sum[i]));
  }
}

// ---- Down: smoothing ------------------------------------------------------------------------------------------------

// 16-bit pixels times 13-bit taps in both directions need more than 32 bits.
template <class T>
using WideSum = std::conditional_t<std::is_same_v<T, Tev8u>, Tev32s, std::int64_t>;

// A sum over the rows of the kernel, shifted back to the scale of the smoothed image.
template <class T>
typename LayerOf<T>::Middle smoothed(WideSum<T> sum, int scale) {
  const std::int64_t half = std::int64_t{1} << (scale - 1);
  return saturate<typename LayerOf<T>::Middle>((std::int64_t{sum} + half) >> scale);
}

// A row through the kernel: the products are summed, then shifted once.
template <class T, int channels>
void smoothRow(const T* s, int width, const typename LayerOf<T>::Tap* kernel, int kernelSize,
               typename LayerOf<T>::RowSum* r) {
  using RowSum = typename LayerOf<T>::RowSum;
  const int m = kernelSize / 2;
  const auto edgePixel = [&](int x, int c) {
    using Sum = std::conditional_t<std::is_same_v<T, Tev32f>, Extended, std::int64_t>;
    Sum sum = 0;
    for (int j = 0; j < kernelSize; ++j)
      sum += static_cast<Sum>(kernel[j]) * s[borderIndex(x + j - m, width, tevBorderMirror) * channels + c];
    if constexpr (std::is_same_v<T, Tev32f>)
      return static_cast<RowSum>(sum);
    else
      return static_cast<RowSum>(static_cast<WideSum<T>>(sum) >> LayerOf<T>::rowShift);
  };
  for (int c = 0; c < channels; ++c)
    for (int x = 0; x < m; ++x) {
      r[x * channels + c] = edgePixel(x, c);
      r[(width - 1 - x) * channels + c] = edgePixel(width - 1 - x, c);
    }
  // The width is above the kernel's, so that pixels remain between the ends.
  const auto line = [&](int j) { return s + j * channels; };
  RowSum* const d = r + m * channels;
  const int n = (width - 2 * m) * channels;
  if constexpr (std::is_same_v<T, Tev32f>) {
    sumLines(kernel, kernelSize, line, d, n);
  } else {
    const auto shifted = [](auto sum) { return static_cast<RowSum>(sum >> LayerOf<T>::rowShift); };
    sumLines<WideSum<T>, T>(kernel, kernelSize, line, d, n, shifted);
  }
}

// The large form. A ring of kernelSize filtered rows in `buffer`; each source row is filtered once.
template <class T, int channels>
void smooth(const T* src, int srcStep, typename LayerOf<T>::Middle* dst, int dstStep, TevSize roi,
            const typename LayerOf<T>::Tap* kernel, int kernelSize, int scale, Tev8u* buffer) {
  using RowSum = typename LayerOf<T>::RowSum;
  const int n = roi.width * channels, m = kernelSize / 2;
  const auto ring = [&](int y) {
    return reinterpret_cast<RowSum*>(buffer) + static_cast<std::ptrdiff_t>(y % kernelSize) * n;
  };
  int filtered = 0;
  for (int y = 0; y < roi.height; ++y) {
    for (; filtered < roi.height && filtered <= y + m; ++filtered)
      smoothRow<T, channels>(rows(src, srcStep)[filtered], roi.width, kernel, kernelSize, ring(filtered));
    const auto line = [&](int j) { return ring(borderIndex(y + j - m, roi.height, tevBorderMirror)); };
    auto* const d = rows(dst, dstStep)[y];
    if constexpr (std::is_same_v<T, Tev32f>)
      sumLines(kernel, kernelSize, line, d, n);
    else
      sumLines<WideSum<T>, RowSum>(kernel, kernelSize, line, d, n,
                                   [=](WideSum<T> sum) { return smoothed<T>(sum, scale); });
  }
}

// The small form, for images that the kernel covers. It differs from the large one in that each product of a row is
// shifted on its own; callers' levels depend on both. Float sums stay extended from the first product on.
template <class T, int channels>
void smoothSmall(const T* src, int srcStep, typename LayerOf<T>::Middle* dst, int dstStep, TevSize roi,
                 const typename LayerOf<T>::Tap* kernel, int kernelSize, int scale) {
  const int m = kernelSize / 2;
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x)
      for (int c = 0; c < channels; ++c) {
        using Sum = std::conditional_t<std::is_same_v<T, Tev32f>, Extended, std::int64_t>;
        Sum sum = 0;
        for (int i = 0; i < kernelSize; ++i) {
          const T* const s = rows(src, srcStep)[borderIndex(y + i - m, roi.height, tevBorderMirror)];
          Sum line = 0;
          for (int j = 0; j < kernelSize; ++j) {
            const T pixel = s[borderIndex(x + j - m, roi.width, tevBorderMirror) * channels + c];
            if constexpr (std::is_same_v<T, Tev32f>)
              line += static_cast<Sum>(kernel[j]) * pixel;
            else
              line += (kernel[j] * int{pixel}) >> LayerOf<T>::rowShift;
          }
          sum += kernel[i] * line;
        }
        auto& d = rows(dst, dstStep)[y][x * channels + c];
        if constexpr (std::is_same_v<T, Tev32f>)
          d = static_cast<Tev32f>(sum);
        else
          d = smoothed<T>(static_cast<WideSum<T>>(sum), scale);
      }
}

// ---- Down: resampling -----------------------------------------------------------------------------------------------

// Where an output falls between its neighbours. Multiples of the rate are rounded to float.
struct Place {
  int index;
  Tev32f fraction;
};

Place placeOf(int x, Tev32f rate) {
  const auto p = static_cast<Tev32f>(static_cast<Extended>(x) * rate);
  const int index = static_cast<int>(p);
  return {index, p - static_cast<Tev32f>(index)};
}

// The sample at a fraction between two others. Fractions are multiples of 2^-23, so all of this is exact before it is
// truncated: in double for 16-bit samples, in 64 bits for 32-bit ones.
Tev16s between(Tev16s a, Tev16s b, Tev32f fraction) {
  const Tev64f f = fraction;
  return static_cast<Tev16s>(static_cast<int>(a * (1 - f) + b * f + 0.5));
}
Tev32s between(Tev32s a, Tev32s b, Tev32f fraction) {
  constexpr std::int64_t one = 1 << 23;
  const auto f = static_cast<std::int64_t>(fraction * Tev32f{one});
  return static_cast<Tev32s>((a * (one - f) + b * f + one / 2) / one);
}
Tev32f between(Tev32f a, Tev32f b, Tev32f fraction) {
  const auto f = static_cast<Extended>(fraction);
  return static_cast<Tev32f>(a * (1 - f) + b * f);
}

// From the smoothed image's scale to the pixel's.
template <class T, class Middle>
T pixelOf(Middle v) {
  if constexpr (std::is_same_v<T, Tev32f>)
    return v;
  else
    return saturate<T>((std::int64_t{v} + 4) >> 3);
}
template <>
Tev8u pixelOf<Tev8u, Tev16s>(Tev16s v) {
  return saturate<Tev8u>((v + 4) >> 3);
}

// Replaces the smoothed image's rows by their resampled forms, then interpolates between them. The buffer holds the
// places of a row's outputs.
template <class T, class Middle>
void resample(Middle* src, int srcStep, TevSize srcRoi, T* dst, int dstStep, TevSize dstRoi, Tev32f rate, int channels,
              Tev8u* buffer) {
  const auto in = rows(src, srcStep);
  const auto out = rows(dst, dstStep);
  // Very close to 2 the nearest pixel is taken. Rates just below can lead to the place behind the last pixel.
  if (rate >= 1.99998F && rate <= 2.00002F) {
    for (int y = 0; y < dstRoi.height; ++y) {
      const Middle* const s = in[std::min(2 * y, srcRoi.height - 1)];
      T* const d = out[y];
      for (int x = 0; x < dstRoi.width; ++x)
        for (int c = 0; c < channels; ++c)
          d[x * channels + c] = pixelOf<T>(s[std::min(2 * x, srcRoi.width - 1) * channels + c]);
    }
    return;
  }
  Place* const places = reinterpret_cast<Place*>(buffer);
  for (int x = 0; x < dstRoi.width; ++x) places[x] = placeOf(x, rate);
  const int last = dstRoi.width - 1;
  const int interpolated = places[last].index + 1 < srcRoi.width ? dstRoi.width : last;
  for (int y = 0; y < srcRoi.height; ++y) {
    // Each output stands at or before the samples that it is made of, so that a row can be replaced in place.
    Middle* const s = in[y];
    for (int x = 0; x < interpolated; ++x) {
      const Middle* const at = s + static_cast<std::ptrdiff_t>(places[x].index) * channels;
      for (int c = 0; c < channels; ++c) s[x * channels + c] = between(at[c], at[channels + c], places[x].fraction);
    }
    for (int x = interpolated; x < dstRoi.width; ++x)
      for (int c = 0; c < channels; ++c) s[x * channels + c] = s[places[x].index * channels + c];
  }
  const int n = dstRoi.width * channels;
  for (int y = 0; y < dstRoi.height; ++y) {
    const Place place = placeOf(y, rate);
    const Middle* const a = in[place.index];
    T* const d = out[y];
    if (y == dstRoi.height - 1 && place.index + 1 >= srcRoi.height) {
      for (int i = 0; i < n; ++i) d[i] = pixelOf<T>(a[i]);
    } else {
      const Middle* const b = in[place.index + 1];
      for (int i = 0; i < n; ++i) d[i] = pixelOf<T>(between(a[i], b[i], place.fraction));
    }
  }
}

TevStatus rateInRange(const TevPyramidLayerState& state) {
  return failUnless(state.rate > 1 && state.rate <= 10, tevStatusBadArg);
}

template <class T, int channels>
TevStatus checkLayerCall(const T* src, int srcStep, TevSize srcRoi, const T* dst, int dstStep, TevSize dstRoi,
                         const TevPyramidLayerState* state) {
  if (TevStatus s = firstFailure(notNull(src, dst, state), region(srcRoi), rowFits<T>(srcStep, srcRoi.width, channels),
                                 rowFits<T>(dstStep, dstRoi.width, channels), wholeElements<T>(srcStep),
                                 wholeElements<T>(dstStep)))
    return s;
  return rateInRange(*state);
}

// The members of one type and layout call their exported workers through these.
template <class T, int channels, class Convolve, class ConvolveSmall, class Resample>
TevStatus layerDown(const T* src, int srcStep, TevSize srcRoi, T* dst, int dstStep, TevSize dstRoi,
                    TevPyramidLayerState* state, Convolve convolve, ConvolveSmall convolveSmall, Resample downSample) {
  if (TevStatus s = checkLayerCall<T, channels>(src, srcStep, srcRoi, dst, dstStep, dstRoi, state)) return s;
  TevSize expected;
  teviGetPyramidDownROI(srcRoi, &expected, state->rate);
  if (dstRoi.width != expected.width || dstRoi.height != expected.height) return tevStatusBadSize;
  using Layer = LayerOf<T>;
  auto* const middle = reinterpret_cast<typename Layer::Middle*>(state->bufferA);
  const auto* const kernel = static_cast<const typename Layer::Tap*>(state->kernel);
  const int middleStep = srcRoi.width * channels * int{sizeof *middle};
  if (state->kernelSize < srcRoi.width && state->kernelSize < srcRoi.height)
    convolve(src, srcStep, middle, middleStep, srcRoi, kernel, state->kernelSize, Layer::scale, state->bufferB);
  else
    convolveSmall(src, srcStep, middle, middleStep, srcRoi, kernel, state->kernelSize, Layer::scale);
  // Behind the smoothed image the state's size leaves room for the places of a row.
  Tev8u* const scratch = alignedTo32(state->bufferA + static_cast<std::ptrdiff_t>(middleStep) * srcRoi.height);
  downSample(middle, middleStep, srcRoi, dst, dstStep, dstRoi, state->rate, channels, scratch);
  return tevStatusOk;
}

// ---- Up: the extended source ----------------------------------------------------------------------------------------

// A copy of the source with `top`, `bottom`, `left`, `right` rows and columns more, without padding, and `extra` bytes
// behind it on a 32-byte boundary; null where there is no memory.
template <class T, int channels>
T* copyWithBorder(const T* src, int srcStep, int width, int height, TevBorderType borderType, const T* borderValue,
                  int top, int bottom, int left, int right, std::int64_t extra = 0) {
  const std::int64_t rowBytes = (std::int64_t{width} + left + right) * channels * std::int64_t{sizeof(T)};
  const std::int64_t rowCount = std::int64_t{height} + top + bottom;
  constexpr std::int64_t limit = std::numeric_limits<Tev32s>::max();
  if (rowBytes > limit / rowCount || rowBytes * rowCount + 31 > limit - extra) return nullptr;
  Tev8u* const blockStart = tevsMalloc_8u(static_cast<int>(rowBytes * rowCount + 31 + extra));
  if (!blockStart) return nullptr;
  const auto out = rows(reinterpret_cast<T*>(blockStart), static_cast<int>(rowBytes));
  for (int y = -top; y < height + bottom; ++y) {
    const int sy = borderIndex(y, height, borderType);
    T* const d = out[y + top] + left * channels;
    const T* const s = sy < 0 ? nullptr : rows(src, srcStep)[sy];
    const auto extend = [&](int x) {
      const int sx = borderIndex(x, width, borderType);
      for (int c = 0; c < channels; ++c) d[x * channels + c] = s && sx >= 0 ? s[sx * channels + c] : borderValue[c];
    };
    for (int x = -left; x < 0; ++x) extend(x);
    if (s)
      std::copy_n(s, width * channels, d);
    else
      for (int x = 0; x < width; ++x) extend(x);
    for (int x = width; x < width + right; ++x) extend(x);
  }
  return reinterpret_cast<T*>(blockStart);
}

// ---- Up: spreading --------------------------------------------------------------------------------------------------

constexpr Tev32f smallestNormal = 1.1754944e-38F;

// Where a source position falls in the destination. Positions in front of the image are negative; the offset of 100
// makes the truncation a floor down to there.
struct Position {
  int index;
  Tev32f fraction;
};

Position positionOf(int i, Tev32f rate) {
  const auto p = static_cast<Tev32f>(static_cast<Extended>(i) * rate);
  const int index = static_cast<int>(static_cast<Extended>(p) + 100) - 100;
  return {index, static_cast<Tev32f>(static_cast<Extended>(p) - index)};
}

// The taps that one source position lays over the destination: tap(j) falls on position.index + j.
template <class Tap, class Real>
struct Footprint {
  Footprint(const Tap* kernel, int kernelSize, Tev32f positionFraction)
      : middle(kernel + kernelSize / 2),
        fraction(positionFraction),
        onGrid(!(std::fabs(positionFraction) > smallestNormal)),
        last(onGrid && kernel[0] == 0 ? kernelSize / 2 - 1 : kernelSize / 2),
        first(onGrid ? -last : 1 - last) {}

  // With 16-bit taps every value is a multiple of 2^-23 and exact in double as in extended precision.
  Real tap(int j) const {
    if (onGrid) return middle[j];
    return middle[j] * (1 - fraction) + middle[j - 1] * fraction;
  }

  const Tap* middle;
  Real fraction;
  bool onGrid;
  int last;
  int first;
};

// How sums are formed. A term of an integer sum is the product of a value and a tap, truncated behind 0.5, or as it
// stands on the grid.
//
// Narrow: terms and scaled sums in double, sums in 32 bits. Exact for as long as no sum passes about 2^28: with the 24
// bits of a reciprocal the scaled sum fits in 53.
struct Narrow {
  using Sum = Tev32s;
  using Real = Tev64f;
  using Tap = Tev64f;
  static Tap tapOf(Real tap) { return tap; }
  static void add(Sum& sum, Tev32s value, Tap tap, bool onGrid) {
    sum += static_cast<Tev32s>(value * tap + (onGrid ? 0.0 : 0.5));
  }
};

// Wide: sums in 64 bits, scaled in extended precision, which hold those of every kernel. Taps count units of 2^-23.
struct Wide {
  using Sum = std::int64_t;
  using Real = Extended;
  using Tap = std::int64_t;
  static constexpr std::int64_t one = 1 << 23;
  static Tap tapOf(Real tap) { return static_cast<Tap>(tap * one); }
  static void add(Sum& sum, Tev32s value, Tap tap, bool onGrid) {
    if (value > -one && value < one)
      sum += (value * tap + (onGrid ? 0 : one / 2)) / one;
    else
      sum += static_cast<Sum>(static_cast<Extended>(value) * tap / one + (onGrid ? Extended{0} : Extended{0.5}));
  }
};

// Float sums are rounded to float at each term.
struct Rounded {
  using Sum = Tev32f;
  using Real = Extended;
  using Tap = Extended;
  static Tap tapOf(Real tap) { return tap; }
  static void add(Sum& sum, Tev32f value, Tap tap, bool) { sum = static_cast<Tev32f>(sum + value * tap); }
};

// A sum times a reciprocal weight, truncated behind a rounding constant. Under kernels with negative taps rows
// overshoot 32 bits before they are shifted; what passes the result's type as well is cut at its ends.
template <class Result, class Form>
Result scaledSum(typename Form::Sum sum, Tev32f reciprocal, int constant) {
  using Real = typename Form::Real;
  constexpr Real end = sizeof(Result) == 4 ? Real(0x7FFFFFFF) : Real(std::int64_t{1} << 62);
  const Real v = static_cast<Real>(sum) * reciprocal + constant;
  return static_cast<Result>(std::min(std::max(v, -end), end));
}

// What the spreading of one element type is made of: a filtered row's element and a pixel, both from sums.
template <class T>
struct SpreadOf;
template <>
struct SpreadOf<Tev8u> {
  using RowValue = Tev32s;  // 128 times the pixel
  static constexpr Tev32f weightUnit = 32768;
  template <class Form>
  static RowValue row(typename Form::Sum sum, Tev32f reciprocal) {
    return saturate<Tev32s>(scaledSum<std::int64_t, Form>(sum, reciprocal, 128) >> 8);
  }
  template <class Form>
  static Tev8u pixel(typename Form::Sum sum, Tev32f reciprocal) {
    return saturate<Tev8u>(scaledSum<Tev32s, Form>(sum, reciprocal, 2097152) >> 22);
  }
};
template <>
struct SpreadOf<Tev16u> {
  using RowValue = Tev32s;  // 32 times the pixel
  static constexpr Tev32f weightUnit = 32768;
  template <class Form>
  static RowValue row(typename Form::Sum sum, Tev32f reciprocal) {
    return saturate<Tev32s>(scaledSum<std::int64_t, Form>(sum, reciprocal, 512) >> 10);
  }
  template <class Form>
  static Tev16u pixel(typename Form::Sum sum, Tev32f reciprocal) {
    return saturate<Tev16u>((scaledSum<std::int64_t, Form>(sum, reciprocal, 0) + 524288) >> 20);
  }
};
template <>
struct SpreadOf<Tev32f> {
  using RowValue = Tev32f;
  static constexpr Tev32f weightUnit = 1;
  template <class Form>
  static Tev32f row(Tev32f sum, Tev32f reciprocal) {
    return sum * reciprocal;
  }
  template <class Form>
  static Tev32f pixel(Tev32f sum, Tev32f reciprocal) {
    return sum * reciprocal;
  }
};

// Source positions in front of the image that still reach it.
int reachOf(int kernelSize, Tev32f rate) {
  return static_cast<int>(Extended{0.5} + static_cast<Extended>(kernelSize / 2) / rate);
}

// The total weight that each destination pixel receives, replaced by its reciprocal; a pixel that no weight reaches
// keeps 0. Both directions share one table, as long as the larger of the two. Gives a bound for the magnitude of the
// taps that come together at a pixel.
template <class Tap>
Extended reciprocalWeights(const Tap* kernel, int kernelSize, Tev32f rate, int n, Tev32f unit, Tev32f* weights) {
  std::fill_n(weights, n, 0.0F);
  for (int i = -reachOf(kernelSize, rate);; ++i) {
    const Position at = positionOf(i, rate);
    if (at.index - kernelSize / 2 >= n) break;
    const Footprint<Tap, Extended> print(kernel, kernelSize, at.fraction);
    for (int j = std::max(print.first, -at.index); j <= std::min(print.last, n - 1 - at.index); ++j)
      weights[at.index + j] = static_cast<Tev32f>(weights[at.index + j] + print.tap(j));
  }
  Extended largest = 0, largestTap = 0;
  bool negative = false;
  for (int j = 0; j < kernelSize; ++j) {
    largestTap = std::max(largestTap, std::fabs(static_cast<Extended>(kernel[j])));
    negative = negative || kernel[j] < 0;
  }
  for (int i = 0; i < n; ++i) {
    largest = std::max(largest, static_cast<Extended>(weights[i]));
    if (std::fabs(weights[i]) > smallestNormal) weights[i] = unit / weights[i];
  }
  return negative ? largestTap * kernelSize : std::max(largest, largestTap);
}

// Spreads one row of the extended source and scales the sums. `s` addresses the position -kernelSize / 2.
template <class Form, class T, class Tap>
void spreadRow(const T* s, const Position* positions, int firstPosition, int positionCount, const Tap* kernel,
               int kernelSize, const Tev32f* reciprocals, typename Form::Sum* sums, typename SpreadOf<T>::RowValue* row,
               int width, int channels) {
  std::fill_n(sums, width * channels, typename Form::Sum{0});
  for (int k = firstPosition; k < positionCount; ++k) {
    const Position at = positions[k];
    const Footprint<Tap, typename Form::Real> print(kernel, kernelSize, at.fraction);
    for (int j = std::max(print.first, -at.index); j <= std::min(print.last, width - 1 - at.index); ++j) {
      const auto tap = Form::tapOf(print.tap(j));
      for (int c = 0; c < channels; ++c)
        Form::add(sums[(at.index + j) * channels + c], s[k * channels + c], tap, print.onGrid);
    }
  }
  for (int x = 0; x < width; ++x)
    for (int c = 0; c < channels; ++c)
      row[x * channels + c] = SpreadOf<T>::template row<Form>(sums[x * channels + c], reciprocals[x]);
}

// Adds a row to the sums of a destination row.
template <class Form, class RowValue>
void addRow(const RowValue* row, typename Form::Tap tap, bool onGrid, typename Form::Sum* sums, int n) {
  if (onGrid)
    for (int i = 0; i < n; ++i) Form::add(sums[i], row[i], tap, true);
  else
    for (int i = 0; i < n; ++i) Form::add(sums[i], row[i], tap, false);
}

// The scratch of one call: reciprocal weights, a position for each column of the extended source, a ring of filtered
// rows as long as the kernel reaches, a row of sums.
struct UpScratch {
  std::int64_t positions, ring, sums, bytes;

  UpScratch(int srcWidth, TevSize dstRoi, int kernelSize, int channels) {
    const std::int64_t n = std::int64_t{dstRoi.width} * channels;
    const auto aligned = [](std::int64_t at) { return (at + 31) & ~std::int64_t{31}; };
    positions = aligned(std::int64_t{std::max(dstRoi.width, dstRoi.height)} * std::int64_t{sizeof(Tev32f)});
    ring = aligned(positions + (std::int64_t{srcWidth} + kernelSize - 1) * std::int64_t{sizeof(Position)});
    sums = aligned(ring + ringRows(kernelSize) * n * std::int64_t{sizeof(Tev32s)});
    bytes = sums + n * std::int64_t{sizeof(std::int64_t)};
  }
  // At most kernelSize source rows reach one destination row: their positions are at least one row apart.
  static std::int64_t ringRows(int kernelSize) { return kernelSize; }
};

// `src` is the extended source, kernelSize / 2 pixels larger than `srcRoi` on each side.
template <class T>
void spread(const T* src, int srcStep, TevSize srcRoi, T* dst, int dstStep, TevSize dstRoi, Tev32f rate,
            const typename LayerOf<T>::Tap* kernel, int kernelSize, int channels, Tev8u* buffer) {
  using RowValue = typename SpreadOf<T>::RowValue;
  constexpr bool isFloat = std::is_same_v<T, Tev32f>;
  const UpScratch layout(srcRoi.width, dstRoi, kernelSize, channels);
  auto* const reciprocals = reinterpret_cast<Tev32f*>(buffer);
  auto* const positions = reinterpret_cast<Position*>(buffer + layout.positions);
  const int m = kernelSize / 2, n = dstRoi.width * channels, reach = reachOf(kernelSize, rate);
  const auto ring = [&](int i) {
    return reinterpret_cast<RowValue*>(buffer + layout.ring) + static_cast<std::ptrdiff_t>((i + m) % kernelSize) * n;
  };
  const Extended totalTap = reciprocalWeights(kernel, kernelSize, rate, std::max(dstRoi.width, dstRoi.height),
                                              SpreadOf<T>::weightUnit, reciprocals);
  for (int k = 0; k < srcRoi.width + 2 * m; ++k) positions[k] = positionOf(k - m, rate);

  const auto filterRow = [&](auto form, int i) {
    using Form = decltype(form);
    spreadRow<Form>(rows(src, srcStep)[i + m], positions, m - reach, srcRoi.width + 2 * m, kernel, kernelSize,
                    reciprocals, reinterpret_cast<typename Form::Sum*>(buffer + layout.sums), ring(i), dstRoi.width,
                    channels);
  };
  // Source rows from `lowest` to below `next` are in the ring and reach row y.
  int lowest = -reach, next = -reach;
  const auto makeRow = [&](auto form, int y) {
    using Form = decltype(form);
    auto* const sums = reinterpret_cast<typename Form::Sum*>(buffer + layout.sums);
    std::fill_n(sums, n, typename Form::Sum{0});
    for (int i = lowest; i < next; ++i) {
      const Position at = positionOf(i, rate);
      const Footprint<typename LayerOf<T>::Tap, typename Form::Real> print(kernel, kernelSize, at.fraction);
      const int j = y - at.index;
      if (j >= print.first && j <= print.last) addRow<Form>(ring(i), Form::tapOf(print.tap(j)), print.onGrid, sums, n);
    }
    T* const d = rows(dst, dstStep)[y];
    for (int k = 0; k < n; ++k) d[k] = SpreadOf<T>::template pixel<Form>(sums[k], reciprocals[y]);
  };
  // No row that enters the ring is above this.
  RowValue largest = 0;
  constexpr Extended pixelEnd = isFloat ? 0 : std::numeric_limits<T>::max();
  const bool narrowRows = pixelEnd * totalTap <= (1 << 29) - (1 << 13);
  for (int y = 0; y < dstRoi.height; ++y) {
    while (positionOf(lowest, rate).index + m < y) ++lowest;
    for (next = std::max(next, lowest); next < srcRoi.height + m && positionOf(next, rate).index - m <= y; ++next) {
      if constexpr (isFloat) {
        filterRow(Rounded{}, next);
      } else {
        if (narrowRows)
          filterRow(Narrow{}, next);
        else
          filterRow(Wide{}, next);
        const RowValue* const row = ring(next);
        for (int k = 0; k < n; ++k) largest = std::max(largest, row[k] < 0 ? ~row[k] : row[k]);
      }
    }
    if constexpr (isFloat) {
      makeRow(Rounded{}, y);
    } else {
      if ((static_cast<Extended>(largest) + 1) * totalTap <= 1 << 28)
        makeRow(Narrow{}, y);
      else
        makeRow(Wide{}, y);
    }
  }
}

template <class T, int channels, class ConvUp>
TevStatus layerUp(const T* src, int srcStep, TevSize srcRoi, T* dst, int dstStep, TevSize dstRoi,
                  TevPyramidLayerState* state, ConvUp convUp) {
  if (TevStatus s = checkLayerCall<T, channels>(src, srcStep, srcRoi, dst, dstStep, dstRoi, state)) return s;
  TevSize min, max;
  teviGetPyramidUpROI(srcRoi, &min, &max, state->rate);
  if (dstRoi.width < min.width || dstRoi.width > max.width || dstRoi.height < min.height || dstRoi.height > max.height)
    return tevStatusBadSize;
  // The one allocation of the call: the extended source, and behind it all scratch.
  const int kernelSize = state->kernelSize, m = kernelSize / 2;
  const T zero[channels] = {};
  const UpScratch scratch(srcRoi.width, dstRoi, kernelSize, channels);
  T* const extended = copyWithBorder<T, channels>(src, srcStep, srcRoi.width, srcRoi.height, tevBorderMirror, zero, m,
                                                  m, m, m, scratch.bytes);
  if (!extended) return tevStatusNoMemory;
  const int step = (srcRoi.width + 2 * m) * channels * int{sizeof(T)};
  Tev8u* const buffer =
      alignedTo32(reinterpret_cast<Tev8u*>(extended) + static_cast<std::ptrdiff_t>(step) * (srcRoi.height + 2 * m));
  convUp(extended, step, srcRoi, dst, dstStep, dstRoi, state->rate,
         static_cast<const typename LayerOf<T>::Tap*>(state->kernel), kernelSize, channels, buffer);
  tevsFree(extended);
  return tevStatusOk;
}

}  // namespace

void ownPyramidConvolution_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roi,
                                     const Tev16s* kernel, int kernelSize, int scale, Tev8u* buffer) {
  smooth<Tev8u, 1>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale, buffer);
}

void ownPyramidConvolution_sm_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roi,
                                        const Tev16s* kernel, int kernelSize, int scale) {
  smoothSmall<Tev8u, 1>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale);
}

void ownPyramidConvolution_8u16s_C3R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roi,
                                     const Tev16s* kernel, int kernelSize, int scale, Tev8u* buffer) {
  smooth<Tev8u, 3>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale, buffer);
}

void ownPyramidConvolution_sm_8u16s_C3R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roi,
                                        const Tev16s* kernel, int kernelSize, int scale) {
  smoothSmall<Tev8u, 3>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale);
}

void ownPyramidConvolution_16u32s_C1R(const Tev16u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roi,
                                      const Tev16s* kernel, int kernelSize, int scale, Tev8u* buffer) {
  smooth<Tev16u, 1>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale, buffer);
}

void ownPyramidConvolution_sm_16u32s_C1R(const Tev16u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roi,
                                         const Tev16s* kernel, int kernelSize, int scale) {
  smoothSmall<Tev16u, 1>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale);
}

void ownPyramidConvolution_16u32s_C3R(const Tev16u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roi,
                                      const Tev16s* kernel, int kernelSize, int scale, Tev8u* buffer) {
  smooth<Tev16u, 3>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale, buffer);
}

void ownPyramidConvolution_sm_16u32s_C3R(const Tev16u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roi,
                                         const Tev16s* kernel, int kernelSize, int scale) {
  smoothSmall<Tev16u, 3>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale);
}

void ownPyramidConvolution_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi,
                                   const Tev32f* kernel, int kernelSize, int scale, Tev8u* buffer) {
  smooth<Tev32f, 1>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale, buffer);
}

void ownPyramidConvolution_sm_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi,
                                      const Tev32f* kernel, int kernelSize, int scale) {
  smoothSmall<Tev32f, 1>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale);
}

void ownPyramidConvolution_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi,
                                   const Tev32f* kernel, int kernelSize, int scale, Tev8u* buffer) {
  smooth<Tev32f, 3>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale, buffer);
}

void ownPyramidConvolution_sm_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi,
                                      const Tev32f* kernel, int kernelSize, int scale) {
  smoothSmall<Tev32f, 3>(src, srcStep, dst, dstStep, roi, kernel, kernelSize, scale);
}

void ownDownSample_Bilinear_16s8u(Tev16s* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep, TevSize dstRoi,
                                  Tev32f rate, int channels, Tev8u* buffer) {
  resample(src, srcStep, srcRoi, dst, dstStep, dstRoi, rate, channels, buffer);
}

void ownDownSample_Bilinear_32s16u(Tev32s* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep, TevSize dstRoi,
                                   Tev32f rate, int channels, Tev8u* buffer) {
  resample(src, srcStep, srcRoi, dst, dstStep, dstRoi, rate, channels, buffer);
}

void ownDownSample_Bilinear_32f(Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep, TevSize dstRoi,
                                Tev32f rate, int channels, Tev8u* buffer) {
  resample(src, srcStep, srcRoi, dst, dstStep, dstRoi, rate, channels, buffer);
}

Tev8u* ownCopyWithBorder_8u_C1R(const Tev8u* src, int srcStep, int width, int height, TevBorderType borderType,
                                Tev8u borderValue, int top, int bottom, int left, int right) {
  return copyWithBorder<Tev8u, 1>(src, srcStep, width, height, borderType, &borderValue, top, bottom, left, right);
}

Tev8u* ownCopyWithBorder_8u_C3R(const Tev8u* src, int srcStep, int width, int height, TevBorderType borderType,
                                Tev8u borderValue1, Tev8u borderValue2, Tev8u borderValue3, int top, int bottom,
                                int left, int right) {
  const Tev8u borderValue[] = {borderValue1, borderValue2, borderValue3};
  return copyWithBorder<Tev8u, 3>(src, srcStep, width, height, borderType, borderValue, top, bottom, left, right);
}

Tev16u* ownCopyWithBorder_16u_C1R(const Tev16u* src, int srcStep, int width, int height, TevBorderType borderType,
                                  Tev16u borderValue, int top, int bottom, int left, int right) {
  return copyWithBorder<Tev16u, 1>(src, srcStep, width, height, borderType, &borderValue, top, bottom, left, right);
}

Tev16u* ownCopyWithBorder_16u_C3R(const Tev16u* src, int srcStep, int width, int height, TevBorderType borderType,
                                  Tev16u borderValue1, Tev16u borderValue2, Tev16u borderValue3, int top, int bottom,
                                  int left, int right) {
  const Tev16u borderValue[] = {borderValue1, borderValue2, borderValue3};
  return copyWithBorder<Tev16u, 3>(src, srcStep, width, height, borderType, borderValue, top, bottom, left, right);
}

Tev32f* ownCopyWithBorder_32f_C1R(const Tev32f* src, int srcStep, int width, int height, TevBorderType borderType,
                                  Tev32f borderValue, int top, int bottom, int left, int right) {
  return copyWithBorder<Tev32f, 1>(src, srcStep, width, height, borderType, &borderValue, top, bottom, left, right);
}

Tev32f* ownCopyWithBorder_32f_C3R(const Tev32f* src, int srcStep, int width, int height, TevBorderType borderType,
                                  Tev32f borderValue1, Tev32f borderValue2, Tev32f borderValue3, int top, int bottom,
                                  int left, int right) {
  const Tev32f borderValue[] = {borderValue1, borderValue2, borderValue3};
  return copyWithBorder<Tev32f, 3>(src, srcStep, width, height, borderType, borderValue, top, bottom, left, right);
}

void ownConvUp_Bilinear_8u(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep, TevSize dstRoi,
                           Tev32f rate, const Tev16s* kernel, int kernelSize, int channels, Tev8u* buffer) {
  spread(src, srcStep, srcRoi, dst, dstStep, dstRoi, rate, kernel, kernelSize, channels, buffer);
}

void ownConvUp_Bilinear_16u(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep, TevSize dstRoi,
                            Tev32f rate, const Tev16s* kernel, int kernelSize, int channels, Tev8u* buffer) {
  spread(src, srcStep, srcRoi, dst, dstStep, dstRoi, rate, kernel, kernelSize, channels, buffer);
}

void ownConvUp_Bilinear_32f(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep, TevSize dstRoi,
                            Tev32f rate, const Tev32f* kernel, int kernelSize, int channels, Tev8u* buffer) {
  spread(src, srcStep, srcRoi, dst, dstStep, dstRoi, rate, kernel, kernelSize, channels, buffer);
}

TevStatus teviPyramidLayerDown_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                      TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerDown<Tev8u, 1>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownPyramidConvolution_8u16s_C1R,
                             ownPyramidConvolution_sm_8u16s_C1R, ownDownSample_Bilinear_16s8u);
}

TevStatus teviPyramidLayerDown_8u_C3R(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                      TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerDown<Tev8u, 3>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownPyramidConvolution_8u16s_C3R,
                             ownPyramidConvolution_sm_8u16s_C3R, ownDownSample_Bilinear_16s8u);
}

TevStatus teviPyramidLayerDown_16u_C1R(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                       TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerDown<Tev16u, 1>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownPyramidConvolution_16u32s_C1R,
                              ownPyramidConvolution_sm_16u32s_C1R, ownDownSample_Bilinear_32s16u);
}

TevStatus teviPyramidLayerDown_16u_C3R(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                       TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerDown<Tev16u, 3>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownPyramidConvolution_16u32s_C3R,
                              ownPyramidConvolution_sm_16u32s_C3R, ownDownSample_Bilinear_32s16u);
}

TevStatus teviPyramidLayerDown_32f_C1R(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                       TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerDown<Tev32f, 1>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownPyramidConvolution_32f_C1R,
                              ownPyramidConvolution_sm_32f_C1R, ownDownSample_Bilinear_32f);
}

TevStatus teviPyramidLayerDown_32f_C3R(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                       TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerDown<Tev32f, 3>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownPyramidConvolution_32f_C3R,
                              ownPyramidConvolution_sm_32f_C3R, ownDownSample_Bilinear_32f);
}

TevStatus teviPyramidLayerUp_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                    TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerUp<Tev8u, 1>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownConvUp_Bilinear_8u);
}

TevStatus teviPyramidLayerUp_8u_C3R(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                    TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerUp<Tev8u, 3>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownConvUp_Bilinear_8u);
}

TevStatus teviPyramidLayerUp_16u_C1R(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                     TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerUp<Tev16u, 1>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownConvUp_Bilinear_16u);
}

TevStatus teviPyramidLayerUp_16u_C3R(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                     TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerUp<Tev16u, 3>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownConvUp_Bilinear_16u);
}

TevStatus teviPyramidLayerUp_32f_C1R(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                     TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerUp<Tev32f, 1>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownConvUp_Bilinear_32f);
}

TevStatus teviPyramidLayerUp_32f_C3R(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                     TevSize dstRoi, TevPyramidLayerState* pState) {
  return layerUp<Tev32f, 3>(src, srcStep, srcRoi, dst, dstStep, dstRoi, pState, ownConvUp_Bilinear_32f);
}
