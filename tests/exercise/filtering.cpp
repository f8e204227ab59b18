// Exercises of the linear filters: fixed masks, Gaussian, row and column pipelines, colour gradient.
#include <vector>

#include "exercise/exercise.h"

namespace exercise {

namespace {

// A pixel for the outside of an image.
template <class T>
T outside(Exercise& e) {
  if constexpr (std::is_integral_v<T>)
    return static_cast<T>(e.draw.between(std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
  else
    return e.draw.anyOf<T>({0, 1, T(-0.3), T(1e20), std::numeric_limits<T>::infinity()});
}

int divisor(Exercise& e) {
  if (e.draw.oneIn(2)) return e.draw.between(1, 40);
  return e.draw.anyOf({1, -1, -7, 1000, 16384, 16385, 1 << 20, INT32_MAX, INT32_MIN});
}

TevBorderType border(Exercise& e) { return e.draw.between(tevBorderConst, tevBorderMirrorR); }

template <class T>
T* row(const Image<T>& image, int y) {
  return reinterpret_cast<T*>(reinterpret_cast<char*>(image.data) + std::ptrdiff_t{y} * image.step);
}

// ---- Fixed masks ----

// Wide and high enough for two threads, in a large run.
TevSize region(Exercise& e) {
  if (!e.large()) return e.size();
  const int height = e.draw.oneIn(4) ? 512 : 256;
  return {e.draw.between(256, 300), height + e.draw.between(0, 40)};
}

// Some filters take a mask size, and those that store Tev8s a divisor: the arguments where they are taken.
template <class S, class D, class... Query, class... Rest>
void fixed(Exercise& e, const char* queryName, TevStatus (*query)(TevSize, Query...), const char* name,
           TevStatus (*function)(const S*, int, D*, int, TevSize, Rest...)) {
  constexpr bool masked = sizeof...(Query) == 2, divided = std::is_same_v<D, Tev8s>;
  const TevSize roi = region(e);
  const auto src = e.in<S>(roi);
  const auto dst = e.out<D>(roi);
  [[maybe_unused]] const TevMaskSize mask = e.draw.anyOf<TevMaskSize>({tevMskSize3x3, tevMskSize5x5});
  const TevBorderType type = border(e);
  const S value = outside<S>(e);
  [[maybe_unused]] const int by = divisor(e);
  int bytes = 0;
  if constexpr (masked)
    e.call(queryName, query, roi, mask, &bytes);
  else
    e.call(queryName, query, roi, &bytes);
  Tev8u* const buffer = e.buffer(bytes);
  if constexpr (masked && divided)
    e.call(name, function, src.data, src.step, dst.data, dst.step, roi, mask, type, value, by, buffer);
  else if constexpr (masked)
    e.call(name, function, src.data, src.step, dst.data, dst.step, roi, mask, type, value, buffer);
  else if constexpr (divided)
    e.call(name, function, src.data, src.step, dst.data, dst.step, roi, type, value, by, buffer);
  else
    e.call(name, function, src.data, src.step, dst.data, dst.step, roi, type, value, buffer);
}

// ---- Gaussian, Sobel kernels, colour gradient ----

void gauss(Exercise& e) {
  const TevSize roi = e.size(10000);
  const bool inPlace = e.draw.oneIn(4);
  const auto dst = inPlace ? e.inout<Tev32f>(roi) : e.out<Tev32f>(roi);
  const auto src = inPlace ? dst : e.in<Tev32f>(roi);
  const int kernelSize = 3 + 2 * e.draw.between(0, 8);
  const Tev32f sigma = e.draw.oneIn(4) ? e.draw.anyOf<Tev32f>({0, -1, 1e-30F, 1e30F}) : e.draw.real(0.3F, 6);
  const TevBorderType type = border(e);
  const Tev32f value = outside<Tev32f>(e);
  int bytes = 0;
  CALL(e, teviFilterGaussGetBufferSize_32f_C1R, roi, kernelSize, &bytes);
  Tev8u* const buffer = e.buffer(bytes);
  CALL(e, teviFilterGaussBorder_32f_C1R, src.data, src.step, dst.data, dst.step, roi, kernelSize, sigma, type, value,
       buffer);
}

template <class T>
void sobelKernel(Exercise& e, const char* name, TevStatus (*function)(T*, int, int, int)) {
  const int kernelSize = 1 + 2 * e.draw.between(0, 20);
  const int order = e.draw.between(0, kernelSize - 1);
  T* const kernel = e.outArray<T>(kernelSize);
  const int sign = e.draw.anyOf({1, 0, -1, INT32_MAX, INT32_MIN});
  e.call(name, function, kernel, kernelSize, order, sign);
}

template <class T>
void colourToGrey(Exercise& e, const char* name, TevStatus (*function)(const T*, int, T*, int, TevSize, TevNorm)) {
  const TevSize roi = e.size(20000);
  const auto src = e.in<T>(roi, 3);
  const auto dst = e.out<T>(roi);
  const TevNorm norm = e.draw.between(tevNormInf, tevNormL2);
  e.call(name, function, src.data, src.step, dst.data, dst.step, roi, norm);
}

// ---- Pipelines ----

int tapCount(Exercise& e) { return e.draw.oneIn(2) ? e.draw.anyOf({3, 5}) : e.draw.between(1, 17); }

template <class T>
const T* taps(Exercise& e, int count) {
  return e.inArray<T>(count, e.draw.oneIn(2) ? Values::unit : Values::any);
}

// Three-channel members take the pixel outside by pointer, which may be null where the border needs none.
template <class V>
V valueOutside(Exercise& e, [[maybe_unused]] TevBorderType type) {
  if constexpr (std::is_pointer_v<V>)
    return type != tevBorderConst && e.draw.oneIn(2) ? nullptr
                                                     : e.inArray<std::remove_const_t<std::remove_pointer_t<V>>>(3);
  else
    return outside<V>(e);
}

template <class S, class D, class K, class V, class... Rest>
void rowStage(Exercise& e, const char* queryName, TevStatus (*query)(TevSize, int, int*), const char* name,
              TevStatus (*function)(const S*, int, D**, TevSize, const K*, int, int, TevBorderType, V, Rest...)) {
  constexpr int channels = std::is_pointer_v<V> ? 3 : 1;
  const TevSize roi = e.size(65536);
  const auto src = e.in<S>(roi, channels);
  const auto dst = e.out<D>(roi, channels);
  // The rows stand in any order.
  D** const rows = e.hidden<D*>(roi.height);
  const bool upward = e.draw.oneIn(2);
  for (int y = 0; y < roi.height; ++y) rows[y] = row(dst, upward ? roi.height - 1 - y : y);
  const int kernelSize = tapCount(e);
  const K* const kernel = taps<K>(e, kernelSize);
  const int anchor = e.draw.between(0, kernelSize - 1);
  const TevBorderType type = border(e);
  const V value = valueOutside<V>(e, type);
  [[maybe_unused]] const int by = divisor(e);
  int bytes = 0;
  e.call(queryName, query, roi, kernelSize, &bytes);
  Tev8u* const buffer = e.buffer(bytes);
  if constexpr (sizeof...(Rest) == 2)
    e.call(name, function, src.data, src.step, rows, roi, kernel, kernelSize, anchor, type, value, by, buffer);
  else
    e.call(name, function, src.data, src.step, rows, roi, kernel, kernelSize, anchor, type, value, buffer);
}

template <int channels, class S, class D, class... Rest>
void columnStage(Exercise& e, const char* queryName, TevStatus (*query)(TevSize, int, int*), const char* name,
                 TevStatus (*function)(const S**, D*, int, TevSize, const S*, int, Rest...)) {
  const TevSize roi = e.size(65536);
  const int kernelSize = tapCount(e);
  const auto dst = e.out<D>(roi, channels);
  // A store of some rows, which are used again and again.
  const int stored = e.draw.between(1, roi.height + kernelSize - 1);
  const auto store = e.in<S>({roi.width, stored}, channels);
  const S** const rows = e.hidden<const S*>(roi.height + kernelSize - 1);
  for (int y = 0; y < roi.height + kernelSize - 1; ++y) rows[y] = row(store, y % stored);
  const S* const kernel = taps<S>(e, kernelSize);
  [[maybe_unused]] const int by = divisor(e);
  int bytes = 0;
  e.call(queryName, query, roi, kernelSize, &bytes);
  Tev8u* const buffer = e.buffer(bytes);
  if constexpr (sizeof...(Rest) == 2)
    e.call(name, function, rows, dst.data, dst.step, roi, kernel, kernelSize, by, buffer);
  else
    e.call(name, function, rows, dst.data, dst.step, roi, kernel, kernelSize, buffer);
}

}  // namespace

#define ENTRY(function, exercise)                                     \
  {                                                                   \
#function, [](Exercise & e) { exercise(e, #function, function); } \
  }
// A function behind its size query.
#define SIZED(query, function, exercise)                                             \
  {                                                                                  \
#function, [](Exercise & e) { exercise(e, #query, query, #function, function); } \
  }

std::vector<Entry> filtering() {
  return {
      SIZED(teviFilterScharrHorizGetBufferSize_8u8s_C1R, teviFilterScharrHorizBorder_8u8s_C1R, fixed),
      SIZED(teviFilterScharrHorizGetBufferSize_8u16s_C1R, teviFilterScharrHorizBorder_8u16s_C1R, fixed),
      SIZED(teviFilterScharrHorizGetBufferSize_32f_C1R, teviFilterScharrHorizBorder_32f_C1R, fixed),
      SIZED(teviFilterScharrVertGetBufferSize_8u8s_C1R, teviFilterScharrVertBorder_8u8s_C1R, fixed),
      SIZED(teviFilterScharrVertGetBufferSize_8u16s_C1R, teviFilterScharrVertBorder_8u16s_C1R, fixed),
      SIZED(teviFilterScharrVertGetBufferSize_32f_C1R, teviFilterScharrVertBorder_32f_C1R, fixed),
      SIZED(teviFilterSobelHorizGetBufferSize_8u8s_C1R, teviFilterSobelHorizBorder_8u8s_C1R, fixed),
      SIZED(teviFilterSobelHorizGetBufferSize_8u16s_C1R, teviFilterSobelHorizBorder_8u16s_C1R, fixed),
      SIZED(teviFilterSobelHorizGetBufferSize_32f_C1R, teviFilterSobelHorizBorder_32f_C1R, fixed),
      SIZED(teviFilterSobelVertGetBufferSize_8u8s_C1R, teviFilterSobelVertBorder_8u8s_C1R, fixed),
      SIZED(teviFilterSobelVertGetBufferSize_8u16s_C1R, teviFilterSobelVertBorder_8u16s_C1R, fixed),
      SIZED(teviFilterSobelVertGetBufferSize_32f_C1R, teviFilterSobelVertBorder_32f_C1R, fixed),
      SIZED(teviFilterSobelNegVertGetBufferSize_8u8s_C1R, teviFilterSobelNegVertBorder_8u8s_C1R, fixed),
      SIZED(teviFilterSobelNegVertGetBufferSize_8u16s_C1R, teviFilterSobelNegVertBorder_8u16s_C1R, fixed),
      SIZED(teviFilterSobelNegVertGetBufferSize_32f_C1R, teviFilterSobelNegVertBorder_32f_C1R, fixed),
      SIZED(teviFilterSobelHorizSecondGetBufferSize_8u8s_C1R, teviFilterSobelHorizSecondBorder_8u8s_C1R, fixed),
      SIZED(teviFilterSobelHorizSecondGetBufferSize_8u16s_C1R, teviFilterSobelHorizSecondBorder_8u16s_C1R, fixed),
      SIZED(teviFilterSobelHorizSecondGetBufferSize_32f_C1R, teviFilterSobelHorizSecondBorder_32f_C1R, fixed),
      SIZED(teviFilterSobelVertSecondGetBufferSize_8u8s_C1R, teviFilterSobelVertSecondBorder_8u8s_C1R, fixed),
      SIZED(teviFilterSobelVertSecondGetBufferSize_8u16s_C1R, teviFilterSobelVertSecondBorder_8u16s_C1R, fixed),
      SIZED(teviFilterSobelVertSecondGetBufferSize_32f_C1R, teviFilterSobelVertSecondBorder_32f_C1R, fixed),
      SIZED(teviFilterSobelCrossGetBufferSize_8u8s_C1R, teviFilterSobelCrossBorder_8u8s_C1R, fixed),
      SIZED(teviFilterSobelCrossGetBufferSize_8u16s_C1R, teviFilterSobelCrossBorder_8u16s_C1R, fixed),
      SIZED(teviFilterSobelCrossGetBufferSize_32f_C1R, teviFilterSobelCrossBorder_32f_C1R, fixed),
      SIZED(teviFilterLaplacianGetBufferSize_8u8s_C1R, teviFilterLaplacianBorder_8u8s_C1R, fixed),
      SIZED(teviFilterLaplacianGetBufferSize_8u16s_C1R, teviFilterLaplacianBorder_8u16s_C1R, fixed),
      SIZED(teviFilterLaplacianGetBufferSize_32f_C1R, teviFilterLaplacianBorder_32f_C1R, fixed),
      SIZED(teviFilterLowpassGetBufferSize_8u_C1R, teviFilterLowpassBorder_8u_C1R, fixed),
      SIZED(teviFilterLowpassGetBufferSize_32f_C1R, teviFilterLowpassBorder_32f_C1R, fixed),
      ENTRY(teviGenSobelKernel_16s, sobelKernel),
      ENTRY(teviGenSobelKernel_32f, sobelKernel),
      ENTRY(teviGradientColorToGray_8u_C3C1R, colourToGrey),
      ENTRY(teviGradientColorToGray_16u_C3C1R, colourToGrey),
      ENTRY(teviGradientColorToGray_32f_C3C1R, colourToGrey),
      SIZED(teviFilterRowBorderPipelineGetBufferSize_8u16s_C1R, teviFilterRowBorderPipeline_8u16s_C1R, rowStage),
      SIZED(teviFilterRowBorderPipelineGetBufferSize_8u16s_C3R, teviFilterRowBorderPipeline_8u16s_C3R, rowStage),
      SIZED(teviFilterRowBorderPipelineGetBufferSize_16s_C1R, teviFilterRowBorderPipeline_16s_C1R, rowStage),
      SIZED(teviFilterRowBorderPipelineGetBufferSize_16s_C3R, teviFilterRowBorderPipeline_16s_C3R, rowStage),
      SIZED(teviFilterRowBorderPipelineGetBufferSize_Low_16s_C1R, teviFilterRowBorderPipeline_Low_16s_C1R, rowStage),
      SIZED(teviFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, teviFilterRowBorderPipeline_Low_16s_C3R, rowStage),
      SIZED(teviFilterRowBorderPipelineGetBufferSize_32f_C1R, teviFilterRowBorderPipeline_32f_C1R, rowStage),
      SIZED(teviFilterRowBorderPipelineGetBufferSize_32f_C3R, teviFilterRowBorderPipeline_32f_C3R, rowStage),
      SIZED(teviFilterColumnPipelineGetBufferSize_16s_C1R, teviFilterColumnPipeline_16s_C1R, columnStage<1>),
      SIZED(teviFilterColumnPipelineGetBufferSize_16s_C3R, teviFilterColumnPipeline_16s_C3R, columnStage<3>),
      SIZED(teviFilterColumnPipelineGetBufferSize_Low_16s_C1R, teviFilterColumnPipeline_Low_16s_C1R, columnStage<1>),
      SIZED(teviFilterColumnPipelineGetBufferSize_Low_16s_C3R, teviFilterColumnPipeline_Low_16s_C3R, columnStage<3>),
      SIZED(teviFilterColumnPipelineGetBufferSize_16s8u_C1R, teviFilterColumnPipeline_16s8u_C1R, columnStage<1>),
      SIZED(teviFilterColumnPipelineGetBufferSize_16s8u_C3R, teviFilterColumnPipeline_16s8u_C3R, columnStage<3>),
      SIZED(teviFilterColumnPipelineGetBufferSize_16s8s_C1R, teviFilterColumnPipeline_16s8s_C1R, columnStage<1>),
      SIZED(teviFilterColumnPipelineGetBufferSize_16s8s_C3R, teviFilterColumnPipeline_16s8s_C3R, columnStage<3>),
      SIZED(teviFilterColumnPipelineGetBufferSize_32f_C1R, teviFilterColumnPipeline_32f_C1R, columnStage<1>),
      SIZED(teviFilterColumnPipelineGetBufferSize_32f_C3R, teviFilterColumnPipeline_32f_C3R, columnStage<3>),
      {"teviFilterGaussBorder_32f_C1R", gauss},
  };
}

}  // namespace exercise
