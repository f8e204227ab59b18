// Row stages over 8-bit and 16-bit pixels. The members differ in how the divisor reaches the sum: as a reciprocal in
// extended precision, as one rounded to Tev32f, as taps scaled beforehand, or as a 14-bit fraction. Results differ with
// it in the last unit, and callers have stored what each member gives.
#include "filtering/pipeline.h"
#include "tevcv_internal/filtering.h"

using namespace tevcv;
using namespace tevcv::pipeline;

namespace {

// One call of a row stage, without its taps and scaling.
template <int channels, class T>
struct Stage {
  const T* src;
  int srcStep;
  Tev16s** ppDst;
  Tev8u* scratch;
  int width, height, length, anchor;
  TevBorderType borderType;
  const T* borderValue;

  template <int fixedLength, class Sum, class Tap, class Scaled>
  TevStatus run(const Tap* taps, Scaled scaled) const {
    return filterRows<channels>(src, srcStep, ppDst, reinterpret_cast<T*>(scratch), width, height, length, anchor,
                                borderType, borderValue, Run<fixedLength, Sum, Tap, Scaled>{taps, length, scaled});
  }
};

// Sums of 8-bit pixels stand in 32-bit words, and wrap there beyond 256 of the largest taps.
template <int fixedLength>
TevStatus rows8u(const Stage<1, Tev8u>& stage, const Tev16s* kernel, int divisor) {
  const Tev64f bound = std::min(0x1p31, largestSum(kernel, stage.length, 255));
  return scaledByFloat<Clamped<Tev16s>>(divisor, bound,
                                        [&](auto scaled) { return stage.run<fixedLength, unsigned>(kernel, scaled); });
}

template <int fixedLength>
TevStatus rows8u(const Stage<3, Tev8u>& stage, const Tev16s* kernel, int divisor) {
  return scaledByExtended<Clamped<Tev16s>>(
      divisor, [&](auto scaled) { return stage.template run<fixedLength, unsigned>(kernel, scaled); });
}

// Sums of 16-bit pixels are exact at any length: in 32-bit words where they fit, in double where they do not.
template <int fixedLength, int channels, class Scaled>
TevStatus exactSums(const Stage<channels, Tev16s>& stage, const Tev16s* kernel, Tev64f bound, Scaled scaled) {
  if (bound < 0x1p31) return stage.template run<fixedLength, unsigned>(kernel, scaled);
  return stage.template run<fixedLength, Tev64f>(kernel, scaled);
}

template <int fixedLength, int channels>
TevStatus rows16sByFloat(const Stage<channels, Tev16s>& stage, const Tev16s* kernel, int divisor) {
  const Tev64f bound = largestSum(kernel, stage.length, 32768);
  return scaledByFloat<Clamped<Tev16s>>(
      divisor, bound, [&](auto scaled) { return exactSums<fixedLength>(stage, kernel, bound, scaled); });
}

template <int fixedLength, int channels>
TevStatus rows16sByExtended(const Stage<channels, Tev16s>& stage, const Tev16s* kernel, int divisor) {
  const Tev64f bound = largestSum(kernel, stage.length, 32768);
  return scaledByExtended<Clamped<Tev16s>>(
      divisor, [&](auto scaled) { return exactSums<fixedLength>(stage, kernel, bound, scaled); });
}

// Sums of scaled taps are stored as they are.
struct Unscaled {
  template <class Sum>
  int operator()(Sum sum) const {
    return Clamped<Tev16s>{}(sum);
  }
};

// The weight of the lowest digit of a float.
Tev64f lowestDigit(Tev32f value) {
  int exponent;
  const auto digits = static_cast<std::uint32_t>(std::ldexp(std::fabs(std::frexp(value, &exponent)), 24));
  return std::ldexp(1.0, exponent - 24 + std::countr_zero(digits | 1U << 24));
}

// The taps are scaled first, each rounded to Tev32f, and stand in front of the staged pixels in the scratch. Sums that
// are no longer than 53 digits, from the largest that can come to the lowest digit of any tap, are exact in double.
TevStatus rows16sByScaledTaps(Stage<1, Tev16s> stage, const Tev16s* kernel, int divisor) {
  const Extended reciprocal = 1 / static_cast<Extended>(divisor);
  Tev32f* const taps = reinterpret_cast<Tev32f*>(stage.scratch);
  Tev64f lowest = 1;
  for (int j = 0; j < stage.length; ++j) {
    taps[j] = static_cast<Tev32f>(kernel[j] * reciprocal);
    if (kernel[j] != 0) lowest = std::min(lowest, lowestDigit(taps[j]));
  }
  stage.scratch += sizeof(Tev32f) * static_cast<unsigned>(stage.length);
  if (largestSum(taps, stage.length, 32768) < 0x1p53 * lowest) return stage.run<0, Tev64f>(taps, Unscaled{});
  return stage.run<0, Extended>(taps, Unscaled{});
}

// The Low stage takes the reciprocal as a 14-bit fraction, cut off: results fall short, and a divisor above 16384 gives
// zeros. All words wrap.
struct TimesFraction {
  int fraction;

  int operator()(unsigned sum) const { return static_cast<int>(sum * static_cast<unsigned>(fraction)) >> 14; }
};

template <int fixedLength, int channels>
TevStatus lowRows(const Stage<channels, Tev16s>& stage, const Tev16s* kernel, int divisor) {
  return stage.template run<fixedLength, unsigned>(kernel, TimesFraction{static_cast<Tev16s>(16384 / divisor)});
}

// The one Low member that scales by a float: five taps, one channel.
TevStatus lowRowsByFloat(const Stage<1, Tev16s>& stage, const Tev16s* kernel, int divisor) {
  const Tev64f bound = std::min(0x1p31, largestSum(kernel, stage.length, 32768));
  return scaledByFloat<LowHalf>(divisor, bound, [&](auto scaled) { return stage.run<5, unsigned>(kernel, scaled); });
}

}  // namespace

TevStatus ownFilterRowBorderPipeline_8u16s_C1R_3x3(const Tev8u* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                   int width, int height, const Tev16s* kernel, int anchor,
                                                   TevBorderType borderType, Tev8u borderValue, int divisor) {
  const Stage<1, Tev8u> stage = {src, srcStep, ppDst, buffer, width, height, 3, anchor, borderType, &borderValue};
  return rows8u<3>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_8u16s_C1R_5x5(const Tev8u* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                   int width, int height, const Tev16s* kernel, int anchor,
                                                   TevBorderType borderType, Tev8u borderValue, int divisor) {
  const Stage<1, Tev8u> stage = {src, srcStep, ppDst, buffer, width, height, 5, anchor, borderType, &borderValue};
  return rows8u<5>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_8u16s_C1R_X(const Tev8u* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev16s* kernel, int kernelSize,
                                                 int anchor, TevBorderType borderType, Tev8u borderValue, int divisor) {
  const Stage<1, Tev8u> stage = {src,    srcStep,    ppDst,  buffer,     width,
                                 height, kernelSize, anchor, borderType, &borderValue};
  return rows8u<0>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_8u16s_C3R_3x3(const Tev8u* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                   int width, int height, const Tev16s* kernel, int anchor,
                                                   TevBorderType borderType, const Tev8u* borderValue, int divisor) {
  const Stage<3, Tev8u> stage = {src, srcStep, ppDst, buffer, width, height, 3, anchor, borderType, borderValue};
  return rows8u<3>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_8u16s_C3R_5x5(const Tev8u* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                   int width, int height, const Tev16s* kernel, int anchor,
                                                   TevBorderType borderType, const Tev8u* borderValue, int divisor) {
  const Stage<3, Tev8u> stage = {src, srcStep, ppDst, buffer, width, height, 5, anchor, borderType, borderValue};
  return rows8u<5>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_8u16s_C3R_X(const Tev8u* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev16s* kernel, int kernelSize,
                                                 int anchor, TevBorderType borderType, const Tev8u* borderValue,
                                                 int divisor) {
  const Stage<3, Tev8u> stage = {src,    srcStep,    ppDst,  buffer,     width,
                                 height, kernelSize, anchor, borderType, borderValue};
  return rows8u<0>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_16s_C1R_3x3(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev16s* kernel, int anchor,
                                                 TevBorderType borderType, Tev16s borderValue, int divisor) {
  const Stage<1, Tev16s> stage = {src, srcStep, ppDst, buffer, width, height, 3, anchor, borderType, &borderValue};
  return rows16sByFloat<3>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_16s_C1R_5x5(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev16s* kernel, int anchor,
                                                 TevBorderType borderType, Tev16s borderValue, int divisor) {
  const Stage<1, Tev16s> stage = {src, srcStep, ppDst, buffer, width, height, 5, anchor, borderType, &borderValue};
  return rows16sByFloat<5>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_16s_C1R_X(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer, int width,
                                               int height, const Tev16s* kernel, int kernelSize, int anchor,
                                               TevBorderType borderType, Tev16s borderValue, int divisor) {
  const Stage<1, Tev16s> stage = {src,    srcStep,    ppDst,  buffer,     width,
                                  height, kernelSize, anchor, borderType, &borderValue};
  return rows16sByScaledTaps(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_16s_C3R_3x3(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev16s* kernel, int anchor,
                                                 TevBorderType borderType, const Tev16s* borderValue, int divisor) {
  const Stage<3, Tev16s> stage = {src, srcStep, ppDst, buffer, width, height, 3, anchor, borderType, borderValue};
  return rows16sByExtended<3>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_16s_C3R_5x5(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev16s* kernel, int anchor,
                                                 TevBorderType borderType, const Tev16s* borderValue, int divisor) {
  const Stage<3, Tev16s> stage = {src, srcStep, ppDst, buffer, width, height, 5, anchor, borderType, borderValue};
  return rows16sByFloat<5>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderPipeline_16s_C3R_X(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer, int width,
                                               int height, const Tev16s* kernel, int kernelSize, int anchor,
                                               TevBorderType borderType, const Tev16s* borderValue, int divisor) {
  const Stage<3, Tev16s> stage = {src,    srcStep,    ppDst,  buffer,     width,
                                  height, kernelSize, anchor, borderType, borderValue};
  return rows16sByExtended<0>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderLowPipeline_16s_C1R_3x3(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                    int width, int height, const Tev16s* kernel, int anchor,
                                                    TevBorderType borderType, Tev16s borderValue, int divisor) {
  const Stage<1, Tev16s> stage = {src, srcStep, ppDst, buffer, width, height, 3, anchor, borderType, &borderValue};
  return lowRows<3>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderLowPipeline_16s_C1R_5x5(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                    int width, int height, const Tev16s* kernel, int anchor,
                                                    TevBorderType borderType, Tev16s borderValue, int divisor) {
  const Stage<1, Tev16s> stage = {src, srcStep, ppDst, buffer, width, height, 5, anchor, borderType, &borderValue};
  return lowRowsByFloat(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderLowPipeline_16s_C1R_X(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                  int width, int height, const Tev16s* kernel, int kernelSize,
                                                  int anchor, TevBorderType borderType, Tev16s borderValue,
                                                  int divisor) {
  const Stage<1, Tev16s> stage = {src,    srcStep,    ppDst,  buffer,     width,
                                  height, kernelSize, anchor, borderType, &borderValue};
  return lowRows<0>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderLowPipeline_16s_C3R_3x3(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                    int width, int height, const Tev16s* kernel, int anchor,
                                                    TevBorderType borderType, const Tev16s* borderValue, int divisor) {
  const Stage<3, Tev16s> stage = {src, srcStep, ppDst, buffer, width, height, 3, anchor, borderType, borderValue};
  return lowRows<3>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderLowPipeline_16s_C3R_5x5(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                    int width, int height, const Tev16s* kernel, int anchor,
                                                    TevBorderType borderType, const Tev16s* borderValue, int divisor) {
  const Stage<3, Tev16s> stage = {src, srcStep, ppDst, buffer, width, height, 5, anchor, borderType, borderValue};
  return lowRows<5>(stage, kernel, divisor);
}

TevStatus ownFilterRowBorderLowPipeline_16s_C3R_X(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                  int width, int height, const Tev16s* kernel, int kernelSize,
                                                  int anchor, TevBorderType borderType, const Tev16s* borderValue,
                                                  int divisor) {
  const Stage<3, Tev16s> stage = {src,    srcStep,    ppDst,  buffer,     width,
                                  height, kernelSize, anchor, borderType, borderValue};
  return lowRows<0>(stage, kernel, divisor);
}
