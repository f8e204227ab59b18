// Exercises of the features: peaks, arctangent, line sampling, corner measures, Canny edges, Hough lines.
#include <algorithm>
#include <cstdlib>

#include "exercise/exercise.h"

namespace exercise {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float belowPi = 3.1415925F;  // the greatest float that is not above pi

TevPoint pointIn(Exercise& e, TevSize size) {
  return {e.draw.between(0, size.width - 1), e.draw.between(0, size.height - 1)};
}

// ---- Peaks ----

template <class T>
T peakThreshold(Exercise& e) {
  if constexpr (std::is_same_v<T, Tev32f>)
    return e.draw.oneIn(8) ? e.draw.anyOf({-infinity, infinity, std::numeric_limits<float>::quiet_NaN(), -1.0F, -0.0F})
                           : e.draw.real(0, e.draw.oneIn(2) ? 2 : 500);
  else
    return e.draw.oneIn(4) ? e.draw.between(INT32_MIN, INT32_MAX) : e.draw.between(-1, 200);
}

template <class T>
void findPeaks(Exercise& e, const char* queryName, TevStatus (*query)(int, int*), const char* name,
               TevStatus (*find)(const T*, int, TevSize, T, TevPoint*, int, int*, int, int, Tev8u*)) {
  const TevSize roi = e.size(1, 2);
  // A row is a multiple of four elements, and bytes behind them.
  const int rowElements = (roi.width + 3) / 4 * 4 + (e.draw.oneIn(3) ? 4 : 0);
  const int step = rowElements * int{sizeof(T)} + e.draw.between(0, 3);
  const auto* const src = e.inArray<T>(rowElements * (roi.height - 1) + roi.width);
  const int maxPeakCount = e.draw.oneIn(2) ? roi.width * roi.height : e.draw.between(1, 20);
  auto* const peaks = e.outArray<TevPoint>(maxPeakCount);
  auto* const peakCount = e.outValue<int>();
  const int border = e.draw.oneIn(2) ? 1 : e.draw.between(1, std::min(roi.width, roi.height) / 2);
  int size = 0;
  e.call(queryName, query, roi.width, &size);
  e.call(name, find, src, step, roi, peakThreshold<T>(e), peaks, maxPeakCount, peakCount, e.draw.between(0, 1), border,
         e.buffer(size));
}

// ---- Fast arctangent ----

void arctangent(Exercise& e) {
  const int length = e.size(1).width;
  const auto y = e.inout<Tev32f>({length, 1}), x = e.inout<Tev32f>({length, 1});
  Tev32f* const dst = e.draw.oneIn(2) ? e.outArray<Tev32f>(length) : e.draw.oneIn(2) ? x.data : y.data;
  CALL(e, tevibFastArctan_32f, y.data, x.data, dst, length);
}

// ---- Line sampling ----

template <int channels, class T>
void sampleLine(Exercise& e, const char* name, TevStatus (*sample)(const T*, int, TevSize, T*, TevPoint, TevPoint)) {
  const TevSize roi = e.size(1);
  const auto src = e.in<T>(roi, channels);
  const TevPoint from = pointIn(e, roi), to = e.draw.oneIn(8) ? from : pointIn(e, roi);
  const int length = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y)) + 1;
  e.call(name, sample, src.data, src.step, roi, e.outArray<T>(length * channels), from, to);
}

// ---- Corner measures ----

// What the measures build on runs in parallel from 256 columns and, by member, 32 to 128 rows a thread.
template <int outputs, class T>
void corners(Exercise& e, const char* queryName, TevStatus (*query)(TevSize, int, int, int*), const char* name,
             TevStatus (*measure)(const T*, int, Tev32f*, int, TevSize, TevCornerKernel, int, int, Tev8u*)) {
  TevSize roi = e.size(1);
  if (e.large()) {
    roi.width = 256 + roi.width % 16;
    roi.height = (e.draw.oneIn(8) ? 256 : 64) + roi.height % 8;
  }
  const auto kernel = e.draw.anyOf<TevCornerKernel>({tevCornerKernelSobel, tevCornerKernelScharr});
  const int apertureSize = kernel == tevCornerKernelScharr ? 3 : e.draw.anyOf({3, 5});
  const int avgWindow = e.draw.anyOf({3, 5});
  int size = 0;
  e.call(queryName, query, roi, apertureSize, avgWindow, &size);
  const auto src = e.in<T>(roi, 1, e.draw.anyOf({Values::any, Values::finite, Values::unit}));
  const auto dst = e.out<Tev32f>(roi, outputs);
  e.call(name, measure, src.data, src.step, dst.data, dst.step, roi, kernel, apertureSize, avgWindow, e.buffer(size));
}

// ---- Canny edges ----

template <class T>
void canny(Exercise& e, const char* name,
           TevStatus (*detect)(const T*, int, const T*, int, Tev8u*, int, TevSize, Tev32f, Tev32f, Tev8u*)) {
  const TevSize roi = e.size(1);
  const auto dx = e.in<T>(roi), dy = e.in<T>(roi);
  // Whole rows are cleared, behind the last one too.
  const int dstStep = roi.width + (e.draw.oneIn(2) ? e.draw.between(0, 9) : 0);
  auto* const dst = e.outArray<Tev8u>(dstStep * roi.height);
  const Tev32f reach = e.draw.anyOf({1.0F, 60.0F, 2000.0F, 70000.0F, 1e9F});
  const Tev32f low = e.draw.oneIn(8) ? 0 : e.draw.real(0, reach);
  const Tev32f high = e.draw.oneIn(8) ? low : e.draw.oneIn(12) ? infinity : low + e.draw.real(0, reach);
  int size = 0;
  CALL(e, teviCannyGetSize, roi, &size);
  e.call(name, detect, dx.data, dx.step, dy.data, dy.step, dst, dstStep, roi, low, high, e.buffer(size));
}

// ---- Hough lines ----

void hough(Exercise& e) {
  const TevSize roi = e.size(1);
  const auto src = e.in<Tev8u>(roi, 1, Values::mask);
  // A few lines on an empty ground, or what was drawn.
  if (!e.draw.oneIn(4)) {
    const int slope = e.draw.between(-3, 3), period = e.draw.between(7, 60);
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < roi.width; ++x)
        if ((x + slope * y + 3 * 2520) % period != 0) src.data[std::ptrdiff_t{y} * src.step + x] = 0;
  }
  const auto widest = static_cast<Tev32f>(roi.width + roi.height);
  const Tev32f rhoStep = e.draw.oneIn(8) ? widest : e.draw.real(0.5F, std::min(widest, 4.0F));
  const Tev32f thetaStep = e.draw.oneIn(8) ? belowPi : e.draw.real(0.02F, e.draw.oneIn(2) ? 0.1F : 1);
  const int threshold = e.draw.oneIn(2) ? e.draw.between(1, 8) : e.draw.between(1, 100);
  const int maxLineCount = e.draw.between(1, 40);
  int size = 0;
  if (e.draw.oneIn(10))  // warned of: more than an int tells
    CALL(e, teviHoughLineGetSize_8u_C1R, (TevSize{30000, 30000}), 1e-3F, 1e-4F, maxLineCount, &size);
  CALL(e, teviHoughLineGetSize_8u_C1R, roi, rhoStep, thetaStep, maxLineCount, &size);
  CALL(e, teviHoughLine_8u32f_C1R, src.data, src.step, roi, rhoStep, thetaStep, threshold,
       e.outArray<TevPolarLine>(maxLineCount), maxLineCount, e.outValue<int>(), e.buffer(size));
}

}  // namespace

#define ENTRY(function, ...)                                             \
  {                                                                      \
#function, [](Exercise & e) { __VA_ARGS__(e, #function, function); } \
  }
#define ENTRY_WITH_QUERY(query, function, ...)                                          \
  {                                                                                     \
#function, [](Exercise & e) { __VA_ARGS__(e, #query, query, #function, function); } \
  }

std::vector<Entry> features() {
  return {
      ENTRY_WITH_QUERY(teviFindPeaks3x3GetBufferSize_32f_C1R, teviFindPeaks3x3_32f_C1R, findPeaks),
      ENTRY_WITH_QUERY(teviFindPeaks3x3GetBufferSize_32s_C1R, teviFindPeaks3x3_32s_C1R, findPeaks),

      {"tevibFastArctan_32f", arctangent},

      ENTRY(teviSampleLine_8u_C1R, sampleLine<1>),
      ENTRY(teviSampleLine_8u_C3R, sampleLine<3>),
      ENTRY(teviSampleLine_16u_C1R, sampleLine<1>),
      ENTRY(teviSampleLine_16u_C3R, sampleLine<3>),
      ENTRY(teviSampleLine_32f_C1R, sampleLine<1>),
      ENTRY(teviSampleLine_32f_C3R, sampleLine<3>),

      ENTRY_WITH_QUERY(teviMinEigenValGetBufferSize_8u32f_C1R, teviMinEigenVal_8u32f_C1R, corners<1>),
      ENTRY_WITH_QUERY(teviMinEigenValGetBufferSize_32f_C1R, teviMinEigenVal_32f_C1R, corners<1>),
      ENTRY_WITH_QUERY(teviEigenValsVecsGetBufferSize_8u32f_C1R, teviEigenValsVecs_8u32f_C1R, corners<6>),
      ENTRY_WITH_QUERY(teviEigenValsVecsGetBufferSize_32f_C1R, teviEigenValsVecs_32f_C1R, corners<6>),

      ENTRY(teviCanny_16s8u_C1R, canny),
      ENTRY(teviCanny_32f8u_C1R, canny),

      {"teviHoughLine_8u32f_C1R", hough},
  };
}

}  // namespace exercise
