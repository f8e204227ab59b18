#include "tevcv/geometry.h"

#include "bench.h"

namespace {

using bench::hd;

// A lens of about 75 degrees with the barrel distortion of a cheap camera.
constexpr Tev32f fx = 1400.5F, fy = 1398.25F, cx = 951.3F, cy = 545.7F, k1 = -0.21F, k2 = 0.07F;

const bool undistort8u = bench::add({.name = "UndistortRadial 8u C1 with buffer", .target = 180, .prepare = [] {
                                       auto a = bench::noise<Tev8u>(), d = bench::noise<Tev8u>();
                                       int size = 0;
                                       teviUndistortGetSize(hd, &size);
                                       auto buffer = std::make_shared<std::vector<Tev8u>>(size);
                                       return [=] {
                                         teviUndistortRadial_8u_C1R(a->data(), hd.width, d->data(), hd.width, hd, fx,
                                                                    fy, cx, cy, k1, k2, buffer->data());
                                       };
                                     }});

const bool undistort8uNoBuffer = bench::add({.name = "UndistortRadial 8u C1", .prepare = [] {
                                               auto a = bench::noise<Tev8u>(), d = bench::noise<Tev8u>();
                                               return [=] {
                                                 teviUndistortRadial_8u_C1R(a->data(), hd.width, d->data(), hd.width,
                                                                            hd, fx, fy, cx, cy, k1, k2, nullptr);
                                               };
                                             }});

const bool undistort8uStraight = bench::add({.name = "UndistortRadial 8u C1, no distortion", .prepare = [] {
                                               auto a = bench::noise<Tev8u>(), d = bench::noise<Tev8u>();
                                               return [=] {
                                                 teviUndistortRadial_8u_C1R(a->data(), hd.width, d->data(), hd.width,
                                                                            hd, fx, fy, cx, cy, 0, 0, nullptr);
                                               };
                                             }});

const bool undistort32f =
    bench::add({.name = "UndistortRadial 32f C3", .prepare = [] {
                  auto a = bench::noise<Tev32f>(hd, 3), d = bench::noise<Tev32f>(hd, 3);
                  return [=] {
                    teviUndistortRadial_32f_C3R(a->data(), hd.width * 12, d->data(), hd.width * 12, hd, fx, fy, cx, cy,
                                                k1, k2, nullptr);
                  };
                }});

const bool map =
    bench::add({.name = "CreateMapCameraUndistort 32f, tangential", .prepare = [] {
                  auto x = bench::noise<Tev32f>(), y = bench::noise<Tev32f>();
                  return [=] {
                    teviCreateMapCameraUndistort_32f_C1R(x->data(), hd.width * 4, y->data(), hd.width * 4, hd, fx, fy,
                                                         cx, cy, k1, k2, 0.001F, -0.002F, nullptr);
                  };
                }});

constexpr TevSize inner = {hd.width - 1, hd.height - 1};

const bool copy8u =
    bench::add({.name = "CopySubpix 8u", .prepare = [] {
                  auto a = bench::noise<Tev8u>(), d = bench::noise<Tev8u>();
                  return [=] { teviCopySubpix_8u_C1R(a->data(), hd.width, d->data(), hd.width, inner, 0.3F, 0.7F); };
                }});

const bool copy32f = bench::add(
    {.name = "CopySubpix 32f", .prepare = [] {
       auto a = bench::noise<Tev32f>(), d = bench::noise<Tev32f>();
       return [=] { teviCopySubpix_32f_C1R(a->data(), hd.width * 4, d->data(), hd.width * 4, inner, 0.3F, 0.7F); };
     }});

const bool intersect16u =
    bench::add({.name = "CopySubpixIntersect 16u", .prepare = [] {
                  auto a = bench::noise<Tev16u>(), d = bench::noise<Tev16u>();
                  return [=] {
                    TevPoint low, high;
                    teviCopySubpixIntersect_16u_C1R(a->data(), hd.width * 2, hd, d->data(), hd.width * 2, hd, 941.3F,
                                                    550.9F, &low, &high);
                  };
                }});

}  // namespace
