// Exercises of the geometry: lens undistortion and sub-pixel copies.
#include "exercise/exercise.h"

namespace exercise {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

// ---- Undistortion ----

struct Lens {
  explicit Lens(Exercise& e, TevSize roi) {
    const auto width = static_cast<float>(roi.width), height = static_cast<float>(roi.height);
    fx = e.draw.real(width / 2, 2 * width);
    fy = e.draw.oneIn(3) ? fx : e.draw.real(height / 2, 2 * height);
    cx = e.draw.oneIn(3) ? width / 2 : e.draw.real(0, width);
    cy = e.draw.oneIn(3) ? height / 2 : e.draw.real(0, height);
    k1 = e.draw.oneIn(6) ? 0 : e.draw.real(-0.5F, 0.5F);
    k2 = e.draw.oneIn(3) ? 0 : e.draw.real(-0.1F, 0.1F);
    p1 = e.draw.real(-0.01F, 0.01F);
    p2 = e.draw.real(-0.01F, 0.01F);
    // What no lens has is not refused, but for focal lengths of 0 and NaN.
    if (e.draw.oneIn(4)) p1 = p2 = 0;  // a lens without tangential distortion
    if (e.draw.oneIn(8)) fx = e.draw.anyOf({-fx, 1e-30F, 1e30F, infinity});
    if (e.draw.oneIn(8)) cy = e.draw.anyOf({-1e4F, 1e30F, notANumber});
    if (e.draw.oneIn(8)) k1 = e.draw.anyOf({1e3F, -1e30F, infinity, notANumber});
  }
  float fx, fy, cx, cy, k1, k2, p1, p2;
};

// A table of columns may go with the call or not: the last bits differ.
Tev8u* columnTable(Exercise& e, TevSize roi) {
  int size = 0;
  CALL(e, teviUndistortGetSize, roi, &size);
  return e.draw.oneIn(2) ? nullptr : e.buffer(size);
}

template <int channels, class T>
void undistort(Exercise& e, const char* name,
               TevStatus (*warp)(const T*, int, T*, int, TevSize, Tev32f, Tev32f, Tev32f, Tev32f, Tev32f, Tev32f,
                                 Tev8u*)) {
  const TevSize roi = e.size(1);
  const auto src = e.in<T>(roi, channels);
  const auto dst = e.inout<T>(roi, channels);  // what comes from outside stays
  const Lens lens(e, roi);
  Tev8u* const buffer = columnTable(e, roi);
  e.call(name, warp, src.data, src.step, dst.data, dst.step, roi, lens.fx, lens.fy, lens.cx, lens.cy, lens.k1, lens.k2,
         buffer);
}

void undistortMap(Exercise& e) {
  const TevSize roi = e.size(1);
  const auto xMap = e.out<Tev32f>(roi), yMap = e.out<Tev32f>(roi);
  const Lens lens(e, roi);
  Tev8u* const buffer = columnTable(e, roi);
  CALL(e, teviCreateMapCameraUndistort_32f_C1R, xMap.data, xMap.step, yMap.data, yMap.step, roi, lens.fx, lens.fy,
       lens.cx, lens.cy, lens.k1, lens.k2, lens.p1, lens.p2, buffer);
}

// ---- Copy at a fractional offset ----

float offset(Exercise& e) {
  if (e.draw.oneIn(3)) return e.draw.anyOf({0.0F, -0.0F, 1.0F, -0.25F, 0.5F, 1e-7F, 0.99999994F, 1e-40F});
  if (e.draw.oneIn(12)) return e.draw.anyOf({infinity, -infinity, notANumber, 1e30F, 3e9F, -3e9F});
  return e.draw.real(-3, 3);
}

// Shifts are taken modulo 32.
int scale(Exercise& e) { return e.draw.oneIn(4) ? e.draw.between(-70, 70) : e.draw.between(-8, 8); }

template <class S, class D, class... Scale>
void copyAtFraction(Exercise& e, const char* name,
                    TevStatus (*copy)(const S*, int, D*, int, TevSize, Tev32f, Tev32f, Scale...)) {
  const TevSize roi = e.size(1);
  const auto src = e.in<S>({roi.width + 1, roi.height + 1});
  const auto dst = e.out<D>(roi);
  const float dx = offset(e), dy = offset(e);
  if constexpr (sizeof...(Scale) == 0)
    e.call(name, copy, src.data, src.step, dst.data, dst.step, roi, dx, dy);
  else
    e.call(name, copy, src.data, src.step, dst.data, dst.step, roi, dx, dy, scale(e));
}

// ---- Copy of a rectangle around a point ----

// Mostly such that the rectangle meets the image; at times far away.
float centre(Exercise& e, int length) {
  if (e.draw.oneIn(16)) return e.draw.anyOf({infinity, -infinity, notANumber, 1e30F, 2e9F, -3e9F, 5000.5F});
  const auto end = static_cast<float>(length);
  return e.draw.oneIn(3) ? static_cast<float>(e.draw.between(-2, length + 2)) : e.draw.real(-end - 10, 2 * end + 10);
}

template <class S, class D, class... Scale>
void copyAround(Exercise& e, const char* name,
                TevStatus (*copy)(const S*, int, TevSize, D*, int, TevSize, Tev32f, Tev32f, TevPoint*, TevPoint*,
                                  Scale...)) {
  const TevSize srcRoi = e.size(1), dstRoi = e.size(1);
  const auto src = e.in<S>(srcRoi);
  const auto dst = e.out<D>(dstRoi);
  const float x = centre(e, srcRoi.width), y = centre(e, srcRoi.height);
  auto* const first = e.outValue<TevPoint>();
  auto* const last = e.outValue<TevPoint>();
  if constexpr (sizeof...(Scale) == 0)
    e.call(name, copy, src.data, src.step, srcRoi, dst.data, dst.step, dstRoi, x, y, first, last);
  else
    e.call(name, copy, src.data, src.step, srcRoi, dst.data, dst.step, dstRoi, x, y, first, last, scale(e));
}

}  // namespace

#define ENTRY(function, ...)                                             \
  {                                                                      \
#function, [](Exercise & e) { __VA_ARGS__(e, #function, function); } \
  }

std::vector<Entry> geometry() {
  return {
      ENTRY(teviUndistortRadial_8u_C1R, undistort<1>),        ENTRY(teviUndistortRadial_16u_C1R, undistort<1>),
      ENTRY(teviUndistortRadial_32f_C1R, undistort<1>),       ENTRY(teviUndistortRadial_8u_C3R, undistort<3>),
      ENTRY(teviUndistortRadial_16u_C3R, undistort<3>),       ENTRY(teviUndistortRadial_32f_C3R, undistort<3>),
      {"teviCreateMapCameraUndistort_32f_C1R", undistortMap},

      ENTRY(teviCopySubpix_8u_C1R, copyAtFraction),           ENTRY(teviCopySubpix_8u16u_C1R_Sfs, copyAtFraction),
      ENTRY(teviCopySubpix_16u_C1R, copyAtFraction),          ENTRY(teviCopySubpix_8u32f_C1R, copyAtFraction),
      ENTRY(teviCopySubpix_16u32f_C1R, copyAtFraction),       ENTRY(teviCopySubpix_32f_C1R, copyAtFraction),

      ENTRY(teviCopySubpixIntersect_8u_C1R, copyAround),      ENTRY(teviCopySubpixIntersect_8u16u_C1R_Sfs, copyAround),
      ENTRY(teviCopySubpixIntersect_16u_C1R, copyAround),     ENTRY(teviCopySubpixIntersect_8u32f_C1R, copyAround),
      ENTRY(teviCopySubpixIntersect_16u32f_C1R, copyAround),  ENTRY(teviCopySubpixIntersect_32f_C1R, copyAround),
  };
}

}  // namespace exercise
