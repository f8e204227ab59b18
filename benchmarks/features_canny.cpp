#include <cstdlib>

#include "bench.h"
#include "tevcv/features.h"
#include "tevcv/filtering.h"

namespace {

using bench::hd;

// Derivatives to the right and downward of a picture like a photograph's: tilted rectangles in front of each other,
// shaded, with some noise.
struct Derivatives {
  std::vector<Tev16s> dx, dy;
};

std::shared_ptr<Derivatives> derivatives() {
  std::vector<Tev8u> picture(static_cast<size_t>(hd.width) * hd.height);
  std::uint32_t state = 1;
  const auto random = [&](int n) { return static_cast<int>(((state = state * 1664525U + 1013904223U) >> 8) % n); };
  struct Shape {
    int x, y, ux, uy, length, breadth, grey;
  } shapes[400];
  for (Shape& s : shapes)
    s = {random(hd.width), random(hd.height), random(201) - 100, random(201) - 100,
         8 + random(70),   8 + random(40),    30 + random(180)};
  for (int y = 0; y < hd.height; ++y)
    for (int x = 0; x < hd.width; ++x) picture[static_cast<size_t>(y) * hd.width + x] = 100 + x / 40 + random(5);
  for (const Shape& s : shapes)
    for (int y = std::max(0, s.y - 120); y < std::min(hd.height, s.y + 120); ++y)
      for (int x = std::max(0, s.x - 120); x < std::min(hd.width, s.x + 120); ++x) {
        const int along = (x - s.x) * s.ux + (y - s.y) * s.uy, across = (y - s.y) * s.ux - (x - s.x) * s.uy;
        const int unit = std::max(std::abs(s.ux), std::abs(s.uy));
        if (std::abs(along) <= unit * s.length && std::abs(across) <= unit * s.breadth)
          picture[static_cast<size_t>(y) * hd.width + x] = static_cast<Tev8u>(s.grey + (x - s.x) / 8 + random(5));
      }
  auto d = std::make_shared<Derivatives>();
  d->dx.resize(picture.size());
  d->dy.resize(picture.size());
  int size = 0;
  teviFilterSobelNegVertGetBufferSize_8u16s_C1R(hd, tevMskSize3x3, &size);
  std::vector<Tev8u> buffer(static_cast<size_t>(size));
  teviFilterSobelNegVertBorder_8u16s_C1R(picture.data(), hd.width, d->dx.data(), hd.width * 2, hd, tevMskSize3x3,
                                         tevBorderRepl, 0, buffer.data());
  teviFilterSobelHorizGetBufferSize_8u16s_C1R(hd, tevMskSize3x3, &size);
  buffer.resize(static_cast<size_t>(size));
  teviFilterSobelHorizBorder_8u16s_C1R(picture.data(), hd.width, d->dy.data(), hd.width * 2, hd, tevMskSize3x3,
                                       tevBorderRepl, 0, buffer.data());
  return d;
}

constexpr Tev32f low = 50, high = 120;

std::shared_ptr<std::vector<Tev8u>> cannyBuffer() {
  int size = 0;
  teviCannyGetSize(hd, &size);
  return std::make_shared<std::vector<Tev8u>>(size);
}

const bool canny16s = bench::add({.name = "Canny 16s", .target = 75, .prepare = [] {
                                    const auto d = derivatives();
                                    auto edges = bench::noise<Tev8u>();
                                    auto buffer = cannyBuffer();
                                    return [=] {
                                      teviCanny_16s8u_C1R(d->dx.data(), hd.width * 2, d->dy.data(), hd.width * 2,
                                                          edges->data(), hd.width, hd, low, high, buffer->data());
                                    };
                                  }});

// Every maximum of noise: the densest map there is.
const bool cannyNoise = bench::add({.name = "Canny 16s noise", .prepare = [] {
                                      auto dx = bench::noise<Tev16s>(), dy = bench::noise<Tev16s>(hd, 1, 2);
                                      auto edges = bench::noise<Tev8u>();
                                      auto buffer = cannyBuffer();
                                      return [=] {
                                        teviCanny_16s8u_C1R(dx->data(), hd.width * 2, dy->data(), hd.width * 2,
                                                            edges->data(), hd.width, hd, low, high, buffer->data());
                                      };
                                    }});

const bool canny32f = bench::add({.name = "Canny 32f", .prepare = [] {
                                    const auto d = derivatives();
                                    auto dx = std::make_shared<std::vector<Tev32f>>(d->dx.begin(), d->dx.end()),
                                         dy = std::make_shared<std::vector<Tev32f>>(d->dy.begin(), d->dy.end());
                                    auto edges = bench::noise<Tev8u>();
                                    auto buffer = cannyBuffer();
                                    return [=] {
                                      teviCanny_32f8u_C1R(dx->data(), hd.width * 4, dy->data(), hd.width * 4,
                                                          edges->data(), hd.width, hd, low, high, buffer->data());
                                    };
                                  }});

const bool hough = bench::add({.name = "Hough lines, 1 pixel, 1 degree", .target = 140, .prepare = [] {
                                 const auto d = derivatives();
                                 auto edges = bench::noise<Tev8u>();
                                 teviCanny_16s8u_C1R(d->dx.data(), hd.width * 2, d->dy.data(), hd.width * 2,
                                                     edges->data(), hd.width, hd, low, high, cannyBuffer()->data());
                                 constexpr Tev32f degree = 0.0174532925F;
                                 auto lines = std::make_shared<std::vector<TevPolarLine>>(100);
                                 int size = 0;
                                 teviHoughLineGetSize_8u_C1R(hd, 1, degree, 100, &size);
                                 auto buffer = std::make_shared<std::vector<Tev8u>>(size);
                                 return [=] {
                                   int count = 0;
                                   teviHoughLine_8u32f_C1R(edges->data(), hd.width, hd, 1, degree, 100, lines->data(),
                                                           100, &count, buffer->data());
                                 };
                               }});

}  // namespace
