// What the corner measures share: the scratch of a call and the way from the image to the averaged products of its
// derivatives, the gradient covariance matrix | a b; b c | of each pixel.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/features.h"
#include "tevcv/filtering.h"
#include "tevcv_internal/frame.h"

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

// A plane of floats inside the scratch.
struct Plane {
  Tev32f* first;
  int step;

  const Tev32f* row(int y) const { return rows<const Tev32f>(first, step)[y]; }
};

// The averaged products.
struct Covariance {
  Plane a, b, c;
};

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
void products(const D* dx, const D* dy, TevSize roi, Plane xx, Plane xy, Plane yy) {
  for (int y = 0; y < roi.height; ++y) {
    const D *const gx = dx + std::ptrdiff_t{y} * roi.width, *const gy = dy + std::ptrdiff_t{y} * roi.width;
    Tev32f *const a = rows(xx.first, xx.step)[y], *const b = rows(xy.first, xy.step)[y],
                  *const c = rows(yy.first, yy.step)[y];
    for (int x = 0; x < roi.width; ++x) {
      const auto u = +gx[x], v = +gy[x];
      a[x] = static_cast<Tev32f>(u * u);
      b[x] = static_cast<Tev32f>(u * v);
      c[x] = static_cast<Tev32f>(v * v);
    }
  }
}

// Derivatives, products, averages. The averages never run in place: the first goes where the derivatives stood, each
// other one to the product plane before it, which has been read by then. So the planes that a size query counts for
// several threads stay free, and the filters' scratch follows the third.
template <class T>
TevStatus covariance(const T* src, int srcStep, TevSize roi, int kernelType, int apertureSize, int avgWindow,
                     Tev8u* buffer, Covariance* result) {
  using D = Derivative<T>;
  const std::ptrdiff_t pixels = std::ptrdiff_t{roi.width} * roi.height;
  const int pitch = ((roi.width + 15) & ~15) * int{sizeof(Tev32f)};
  D* const dx = reinterpret_cast<D*>(aligned(buffer));
  D* const dy = dx + pixels;
  Plane plane[3];
  Tev8u* end = reinterpret_cast<Tev8u*>(dy + pixels);
  for (Plane& p : plane) {
    p = {reinterpret_cast<Tev32f*>(aligned(end)), pitch};
    end = reinterpret_cast<Tev8u*>(p.first) + std::ptrdiff_t{pitch} * roi.height;
  }
  if (TevStatus s = derivatives(src, srcStep, dx, dy, roi, kernelType, apertureSize, end)) return s;
  products(dx, dy, roi, plane[0], plane[1], plane[2]);
  const Plane freed = {reinterpret_cast<Tev32f*>(dx), roi.width * int{sizeof(Tev32f)}};
  const auto average = [&](Plane from, Plane to) {
    return teviFilterLowpassBorder_32f_C1R(from.first, from.step, to.first, to.step, roi, maskOf(avgWindow),
                                           tevBorderRepl, 0, end);
  };
  *result = {freed, plane[0], plane[1]};
  // In this order: each average frees the plane that the next one goes to.
  if (TevStatus s = average(plane[0], freed)) return s;
  if (TevStatus s = average(plane[1], plane[0])) return s;
  return average(plane[2], plane[1]);
}

}  // namespace tevcv::corner
