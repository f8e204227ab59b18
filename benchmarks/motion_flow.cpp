#include <cmath>

#include "bench.h"
#include "tevcv/motion.h"
#include "tevcv/pyramids.h"

namespace {

using bench::hd;

// A textured picture, seen again after a move by (2.3, -1.7) pixels, in three levels.
template <class T>
struct Scene {
  Scene(float dx, float dy) {
    TevSize roi = hd;
    double scale = 1;
    for (int l = 0; l < 3; ++l) {
      images.emplace_back(static_cast<size_t>(roi.width) * roi.height);
      for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
          const double u = x / scale - dx, v = y / scale - dy;
          images.back()[static_cast<size_t>(y) * roi.width + x] =
              static_cast<T>(128.5 + 50 * std::sin(0.11 * u + 0.05 * v) * std::cos(0.13 * v - 0.02 * u) +
                             40 * std::sin(0.31 * u - 0.23 * v) + 30 * std::cos(0.19 * u + 0.29 * v));
        }
      sizes[l] = roi, scales[l] = scale, steps[l] = roi.width * static_cast<int>(sizeof(T));
      roi = {roi.width / 2, roi.height / 2};
      scale /= 2;
    }
    for (int l = 0; l < 3; ++l) pointers[l] = images[l].data();
  }
  TevPyramid record() { return {pointers, sizes, scales, steps, nullptr, 2}; }

  std::vector<std::vector<T>> images;
  void* pointers[3];
  TevSize sizes[3];
  double scales[3];
  int steps[3];
};

template <class T, class Init, class Track>
std::function<void()> tracking(TevSize precomputed, Init init, Track track) {
  constexpr int count = 1000, window = 21;
  auto first = std::make_shared<Scene<T>>(0.0F, 0.0F), second = std::make_shared<Scene<T>>(2.3F, -1.7F);
  TevOptFlowPyrLKState* state = nullptr;
  init(&state, precomputed, window, 0);
  std::vector<float> points;
  for (int i = 0; i < count; ++i) {
    points.push_back(20 + static_cast<float>(i * 7919 % 1880));
    points.push_back(20 + static_cast<float>(i * 4801 % 1040));
  }
  auto next = std::make_shared<std::vector<float>>(), error = std::make_shared<std::vector<float>>(count);
  auto status = std::make_shared<std::vector<Tev8s>>(count);
  return [=] {
    *next = points;
    const TevPyramid a = first->record(), b = second->record();
    track(&a, &b, points.data(), next->data(), status->data(), error->data(), count, window, 2, 20, 0.03F, state);
  };
}

bool entry(const char* name, double target, TevSize precomputed, int threads) {
  return bench::add({.name = name, .target = target, .threads = threads, .prepare = [=] {
                       return tracking<Tev8u>(precomputed, teviOpticalFlowPyrLKInitAlloc_8u_C1R,
                                              teviOpticalFlowPyrLK_8u_C1R);
                     }});
}

const bool patches = entry("OpticalFlowPyrLK 8u, 1000 points", 200, {1, 1}, 1);
const bool coarse = entry("OpticalFlowPyrLK 8u, coarse levels shared", 200, {1000, 1000}, 1);
const bool shared = entry("OpticalFlowPyrLK 8u, all levels shared", 200, {2000, 2000}, 1);
const bool twoThreads = entry("OpticalFlowPyrLK 8u, two threads", 0, {1, 1}, 2);

const bool floats =
    bench::add({.name = "OpticalFlowPyrLK 32f, 1000 points", .prepare = [] {
                  return tracking<Tev32f>({1, 1}, teviOpticalFlowPyrLKInitAlloc_32f_C1R, teviOpticalFlowPyrLK_32f_C1R);
                }});

}  // namespace
