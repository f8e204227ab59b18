#include "bench.h"
#include "tevcv/distance.h"

namespace {

using bench::hd;

// What an edge or segment map looks like to a distance transform: blobs and scattered points of zero in the open.
std::shared_ptr<std::vector<Tev8u>> zerosIn(TevSize roi) {
  auto image = bench::noise<Tev8u>(roi, 1, 5);
  std::uint32_t state = 12345;
  for (Tev8u& pixel : *image) {
    state = state * 1664525U + 1013904223U;
    pixel = (state >> 8) % 2000 == 0 ? 0 : 255;
  }
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      const int dx = x % 480 - 240, dy = y % 360 - 180;
      if (dx * dx + dy * dy < 60 * 60) (*image)[static_cast<size_t>(y) * roi.width + x] = 0;
    }
  return image;
}

template <class T, class W>
bool addChamfer(const char* name, double target, std::vector<W> weights, int threads,
                TevStatus (*call)(const Tev8u*, int, T*, int, TevSize, const W*)) {
  return bench::add({.name = name, .target = target, .threads = threads, .prepare = [=] {
                       auto src = zerosIn(hd);
                       auto dst = bench::noise<T>();
                       return [=] {
                         call(src->data(), hd.width, dst->data(), hd.width * int{sizeof(T)}, hd, weights.data());
                       };
                     }});
}

const std::vector<Tev32f> euclid3 = {0.955F, 1.3693F}, euclid5 = {1.0F, 1.4F, 2.1969F};
const std::vector<Tev32s> whole3 = {2, 3}, whole5 = {5, 7, 11};

const bool chamfer[] = {
    addChamfer("Chamfer 3x3 32f", 240, euclid3, 1, teviDistanceTransform_3x3_8u32f_C1R),
    addChamfer("Chamfer 3x3 32f, two threads", 0, euclid3, 2, teviDistanceTransform_3x3_8u32f_C1R),
    addChamfer("Chamfer 5x5 32f", 400, euclid5, 1, teviDistanceTransform_5x5_8u32f_C1R),
    addChamfer("Chamfer 5x5 32f, two threads", 0, euclid5, 2, teviDistanceTransform_5x5_8u32f_C1R),
    addChamfer("Chamfer 5x5 32f, extended", 0, std::vector<Tev32f>{1.0F, 1.0F, 1.2F}, 1,
               teviDistanceTransform_5x5_8u32f_C1R),
    addChamfer("Chamfer 3x3 8u", 0, whole3, 1, teviDistanceTransform_3x3_8u_C1R),
    addChamfer("Chamfer 5x5 8u", 0, whole5, 1, teviDistanceTransform_5x5_8u_C1R),
    addChamfer("Chamfer 3x3 8u16u", 0, whole3, 1, teviDistanceTransform_3x3_8u16u_C1R),
    addChamfer("Chamfer 5x5 8u16u", 0, whole5, 1, teviDistanceTransform_5x5_8u16u_C1R),
};

bool addTrue32f(const char* name, double target, int threads) {
  return bench::add({.name = name, .target = target, .threads = threads, .prepare = [] {
                       auto src = zerosIn(hd);
                       auto dst = bench::noise<Tev32f>();
                       int size = 0;
                       teviTrueDistanceTransformGetBufferSize_8u32f_C1R(hd, &size);
                       auto buffer = std::make_shared<std::vector<Tev8u>>(size);
                       return [=] {
                         teviTrueDistanceTransform_8u32f_C1R(src->data(), hd.width, dst->data(), hd.width * 4, hd,
                                                             buffer->data());
                       };
                     }});
}

bool addTrue16u(const char* name, int scaleFactor) {
  return bench::add({.name = name, .prepare = [=] {
                       auto src = zerosIn(hd);
                       auto dst = bench::noise<Tev16u>();
                       int size = 0;
                       teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(hd, &size);
                       auto buffer = std::make_shared<std::vector<Tev8u>>(size);
                       return [=] {
                         teviTrueDistanceTransform_8u16u_C1RSfs(src->data(), hd.width, dst->data(), hd.width * 2, hd,
                                                                scaleFactor, buffer->data());
                       };
                     }});
}

const bool exact[] = {
    addTrue32f("True distance 32f", 350, 1),
    addTrue32f("True distance 32f, two threads", 0, 2),
    addTrue16u("True distance 16u", 0),
    addTrue16u("True distance 16u, scaled", -4),
};

}  // namespace
