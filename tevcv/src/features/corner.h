// What the corner measures share: the scratch of a call and the way from the image to the averaged products of its
// derivatives, the gradient covariance matrix | a b; b c | of each pixel.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/features.h"
#include "tevcv/filtering.h"
#include "tevcv_internal/filtering.h"

namespace tevcv::corner {

// Derivatives of bytes are exact in 16 bits.
template <class T>
using Derivative = std::conditional_t<std::is_same_v<T, Tev8u>, Tev16s, Tev32f>;

constexpr TevMaskSize maskOf(int size) { return size * 11; }  // 3 and 5 to 33 and 55

inline TevStatus windows(int kernelType, int apertureSize, int avgWindow) {
  const bool sobel = kernelType == tevCornerKernelSobel, scharr = kernelType == tevCornerKernelScharr;
  return firstFailure(failUnless(sobel || scharr, tevStatusBadArg),
                      failUnless(apertureSize == 3 || (sobel && apertureSize == 5), tevStatusBadSize),
                      failUnless(avgWindow == 3 || avgWindow == 5, tevStatusBadSize));
}

// 1 / (2^(2 * aperture - 2) * 255), the gain of the smoothing taps and of the bytes' range, squared with them in mind;
// a Scharr derivative is weighted to compare with a Sobel one.
inline Tev32f scaleOf(int kernelType, int apertureSize) {
  const Tev32f scale = 1.0F / static_cast<Tev32f>((1 << ((2 * apertureSize + 30) % 32)) * 255);
  return kernelType == tevCornerKernelScharr ? scale * 0.6125F : scale;
}

inline Tev8u* aligned(Tev8u* p) {
  return reinterpret_cast<Tev8u*>((reinterpret_cast<std::uintptr_t>(p) + 31) & ~std::uintptr_t{31});
}

inline TevStatus derivatives(const Tev8u* src, int srcStep, Tev16s* dx, Tev16s* dy, TevSize roi, int kernelType,
                             int apertureSize, Tev8u* scratch) {
  const int step = roi.width * int{sizeof(Tev16s)};
  const TevMaskSize mask = maskOf(apertureSize);
  if (kernelType == tevCornerKernelScharr) {
    if (TevStatus s = teviFilterScharrVertBorder_8u16s_C1R(src, srcStep, dx, step, roi, tevBorderRepl, 0, scratch))
      return s;
    return teviFilterScharrHorizBorder_8u16s_C1R(src, srcStep, dy, step, roi, tevBorderRepl, 0, scratch);
  }
  if (TevStatus s = teviFilterSobelVertBorder_8u16s_C1R(src, srcStep, dx, step, roi, mask, tevBorderRepl, 0, scratch))
    return s;
  return teviFilterSobelHorizBorder_8u16s_C1R(src, srcStep, dy, step, roi, mask, tevBorderRepl, 0, scratch);
}

inline TevStatus derivatives(const Tev32f* src, int srcStep, Tev32f* dx, Tev32f* dy, TevSize roi, int kernelType,
                             int apertureSize, Tev8u* scratch) {
  const int step = roi.width * int{sizeof(Tev32f)};
  const TevMaskSize mask = maskOf(apertureSize);
  if (kernelType == tevCornerKernelScharr) {
    if (TevStatus s = teviFilterScharrVertBorder_32f_C1R(src, srcStep, dx, step, roi, tevBorderRepl, 0, scratch))
      return s;
    return teviFilterScharrHorizBorder_32f_C1R(src, srcStep, dy, step, roi, tevBorderRepl, 0, scratch);
  }
  if (TevStatus s = teviFilterSobelVertBorder_32f_C1R(src, srcStep, dx, step, roi, mask, tevBorderRepl, 0, scratch))
    return s;
  return teviFilterSobelHorizBorder_32f_C1R(src, srcStep, dy, step, roi, mask, tevBorderRepl, 0, scratch);
}

// Products of 16-bit derivatives are exact in 32 bits before they become floats; those of floats round once.
template <class D>
void products(const D* dx, const D* dy, int width, Tev32f* xx, Tev32f* xy, Tev32f* yy) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    const auto u = +dx[x], v = +dy[x];
    xx[x] = static_cast<Tev32f>(u * u);
    xy[x] = static_cast<Tev32f>(u * v);
    yy[x] = static_cast<Tev32f>(v * v);
  }
}

// Rows of floats for one of the products.
constexpr int batchRows = 8, largestWindow = 5, ringRows = batchRows + largestWindow - 1;
struct Lane {
  Tev32f* product;         // a row
  Tev32f* ring[ringRows];  // product rows averaged along x
  Tev32f* average[batchRows];
};

// Derivatives, products, averages over the window. Calls row(y, a, b, c) with the averaged products of each image row.
//
// The averages are the rows of the lowpass filter with replicated borders, made by its stages. A few rows at a time go
// through products, averages and `row`, so that what lies between stays in the cache. For images of few rows there are
// fewer at a time: the queried sizes hold three product planes and the scratch of the filter.
template <class T, class Row>
TevStatus forEachCovarianceRow(const T* src, int srcStep, TevSize roi, int kernelType, int apertureSize, int avgWindow,
                               Tev8u* buffer, Row row) {
  using D = Derivative<T>;
  const std::ptrdiff_t pixels = std::ptrdiff_t{roi.width} * roi.height;
  D* const dx = reinterpret_cast<D*>(aligned(buffer));
  D* const dy = dx + pixels;
  Tev8u* const rest = aligned(reinterpret_cast<Tev8u*>(dy + pixels));
  if (TevStatus s = derivatives(src, srcStep, dx, dy, roi, kernelType, apertureSize, rest)) return s;

  const int k = avgWindow, half = k / 2;
  const int batch = static_cast<int>(
      std::min<std::int64_t>(batchRows, (std::int64_t{3} * roi.height + 15 - k) / 6));  // 3 (k + 2 batch) rows fit
  const int ring = batch + k - 1;
  const std::ptrdiff_t pitch = (std::ptrdiff_t{roi.width} + 3) / 4 * 4;
  auto* next = reinterpret_cast<Tev32f*>(rest);
  const auto takeRow = [&] { return std::exchange(next, next + pitch); };
  Lane lanes[3];
  for (Lane& lane : lanes) {
    lane.product = takeRow();
    for (int i = 0; i < ring; ++i) lane.ring[i] = takeRow();
    for (int i = 0; i < batch; ++i) lane.average[i] = takeRow();
  }

  OwnFixedRow_32f* const alongX =
      k == 3 ? ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr : ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr;
  OwnFixedColumn_32f* const alongY =
      k == 3 ? ownFilterColumnPipeline_32f_C1R_3x3_kerAvr : ownFilterColumnPipeline_32f_C1R_5x5_kerAvr;
  int filtered = 0;
  for (int y = 0; y < roi.height; y += batch) {
    const int count = std::min(batch, roi.height - y);
    for (const int end = static_cast<int>(std::min<std::int64_t>(roi.height, std::int64_t{y} + count + half));
         filtered < end; ++filtered) {
      const std::ptrdiff_t first = std::ptrdiff_t{filtered} * roi.width;
      products(dx + first, dy + first, roi.width, lanes[0].product, lanes[1].product, lanes[2].product);
      for (Lane& lane : lanes)
        alongX(lane.product, &lane.ring[filtered % ring], nullptr, 0, half, roi.width, 1, tevBorderRepl, 0);
    }
    for (Lane& lane : lanes) {
      const Tev32f* window[ringRows];
      for (int i = 0; i < count + k - 1; ++i) window[i] = lane.ring[std::clamp(y - half + i, 0, roi.height - 1) % ring];
      alongY(window, lane.average[0], static_cast<int>(pitch), roi.width, count);
    }
    for (int i = 0; i < count; ++i) row(y + i, lanes[0].average[i], lanes[1].average[i], lanes[2].average[i]);
  }
  return tevStatusOk;
}

}  // namespace tevcv::corner
