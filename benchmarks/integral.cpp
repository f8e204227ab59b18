#include "tevcv/integral.h"

#include <algorithm>
#include <array>

#include "bench.h"

namespace {

using bench::hd;

constexpr int w4 = (hd.width + 2) * 4, w8 = (hd.width + 2) * 8;

template <class T>
std::shared_ptr<std::vector<T>> table() {
  return std::make_shared<std::vector<T>>(static_cast<size_t>(hd.width + 2) * (hd.height + 2));
}

const bool integral = bench::add({.name = "Integral 8u32s", .target = 4.5, .prepare = [] {
                                    auto s = bench::noise<Tev8u>();
                                    auto d = table<Tev32s>();
                                    return [=] { teviIntegral_8u32s_C1R(s->data(), hd.width, d->data(), w4, hd, 0); };
                                  }});

const bool integral32f =
    bench::add({.name = "Integral 8u32f", .prepare = [] {
                  auto s = bench::noise<Tev8u>();
                  auto d = table<Tev32f>();
                  return [=] { teviIntegral_8u32f_C1R(s->data(), hd.width, d->data(), w4, hd, 0); };
                }});

const bool sqrIntegral = bench::add(
    {.name = "SqrIntegral 8u32s64f", .target = 25, .prepare = [] {
       auto s = bench::noise<Tev8u>();
       auto d = table<Tev32s>();
       auto q = table<Tev64f>();
       return [=] { teviSqrIntegral_8u32s64f_C1R(s->data(), hd.width, d->data(), w4, q->data(), w8, hd, 0, 0); };
     }});

const bool tiltedSqrIntegral = bench::add(
    {.name = "TiltedSqrIntegral 8u32s64f", .target = 40, .prepare = [] {
       auto s = bench::noise<Tev8u>();
       auto d = table<Tev32s>();
       auto q = table<Tev64f>();
       return [=] { teviTiltedSqrIntegral_8u32s64f_C1R(s->data(), hd.width, d->data(), w4, q->data(), w8, hd, 0, 0); };
     }});

// Tables of a noisy picture, a norm image of a 24 x 24 window, and the positions where that window fits.
constexpr TevSize positions = {hd.width - 24, hd.height - 24};
constexpr TevRect window = {1, 1, 22, 22};

template <class T>
struct Scene {
  std::vector<T> sum;
  std::vector<Tev64f> sqr;
  std::vector<Tev32f> norm;
  std::vector<Tev8u> mask;

  Scene() : sum(*table<T>()), sqr(*table<Tev64f>()), norm(static_cast<size_t>(hd.width) * hd.height) {
    const auto s = bench::noise<Tev8u>();
    mask.assign(norm.size(), 1);
    if constexpr (std::is_integral_v<T>)
      teviSqrIntegral_8u32s64f_C1R(s->data(), hd.width, sum.data(), w4, sqr.data(), w8, hd, 0, 0);
    else
      teviSqrIntegral_8u32f64f_C1R(s->data(), hd.width, sum.data(), w4, sqr.data(), w8, hd, 0, 0);
    deviation();
  }
  void deviation() {
    if constexpr (std::is_integral_v<T>)
      teviRectStdDev_32s32f_C1R(sum.data(), w4, sqr.data(), w8, norm.data(), hd.width * 4, positions, window);
    else
      teviRectStdDev_32f_C1R(sum.data(), w4, sqr.data(), w8, norm.data(), hd.width * 4, positions, window);
  }
  Tev32s apply(Tev32f threshold, const TevHaarClassifierState* stage) {
    Tev32s positive = 0;
    if constexpr (std::is_integral_v<T>)
      teviApplyHaarClassifier_32s32f_C1R(sum.data(), w4, norm.data(), hd.width * 4, mask.data(), hd.width, positions,
                                         &positive, threshold, stage);
    else
      teviApplyHaarClassifier_32f_C1R(sum.data(), w4, norm.data(), hd.width * 4, mask.data(), hd.width, positions,
                                      &positive, threshold, stage);
    return positive;
  }
};

template <class T>
bool addRectStdDev(const char* name, int threads) {
  return bench::add({.name = name, .threads = threads, .prepare = [] {
                       auto scene = std::make_shared<Scene<T>>();
                       return [=] { scene->deviation(); };
                     }});
}
const bool rectStdDev32s32f = addRectStdDev<Tev32s>("RectStdDev 32s32f", 1);
const bool rectStdDev32f = addRectStdDev<Tev32f>("RectStdDev 32f", 1);
const bool rectStdDev32fTwice = addRectStdDev<Tev32f>("RectStdDev 32f, two threads", 2);

// A stage of classifiers over two rectangles, one inside the other, at pseudo-random places of the window.
TevHaarClassifierState* stage(int length) {
  std::vector<TevRect> rects;
  std::vector<Tev32f> weights, thresholds, below, above;
  std::uint32_t state = 12345;
  const auto draw = [&](int n) { return static_cast<int>(((state = state * 1664525U + 1013904223U) >> 8) % n); };
  for (int k = 0; k < length; ++k) {
    const int half = 1 + draw(5), height = 2 + draw(10), x = draw(23 - 2 * half), y = draw(23 - height);
    rects.insert(rects.end(), {{x, y, 2 * half, height}, {x + half, y, half, height}});
    weights.insert(weights.end(), {-1.0F, 2.0F});
    thresholds.push_back(static_cast<float>(draw(200) - 100) / 10);
    below.push_back(0.0F);
    above.push_back(static_cast<float>(draw(1000)) / 1000 + 0.01F);
  }
  const std::vector<Tev32s> counts(length, 2);
  TevHaarClassifierState* result = nullptr;
  teviHaarClassifierInitAlloc_32f(&result, rects.data(), weights.data(), thresholds.data(), below.data(), above.data(),
                                  counts.data(), length);
  return result;
}

// A cascade in the shape of those that find faces: stages grow, and each leaves half of the positions.
constexpr std::array lengths = {3, 9, 14, 19, 25, 30, 40, 50};

// The rectangles that a scan reads, as the region of its figure a pixel: ns/pixel are ns a rectangle and position.
constexpr TevSize readings(const auto& stages) {
  double sum = 0;
  for (size_t i = 0; i < stages.size(); ++i) sum += 2.0 * stages[i] * positions.width * positions.height / (1 << i);
  return {static_cast<int>(sum / 1000), 1000};
}

// The stages of a cascade and their thresholds, each at the median of the votes where the stages before it left the
// mask.
template <class T>
struct Cascade {
  std::vector<TevHaarClassifierState*> stages;
  std::vector<Tev32f> thresholds;

  Cascade(Scene<T>& scene, const auto& lengthsOfStages) {
    int left = positions.width * positions.height;
    for (const int length : lengthsOfStages) {
      stages.push_back(stage(length));
      const auto before = scene.mask;
      Tev32f low = 0, high = static_cast<Tev32f>(length);
      for (int i = 0; i < 16; ++i) {
        scene.mask = before;
        const Tev32f middle = (low + high) / 2;
        (scene.apply(middle, stages.back()) > left / 2 ? low : high) = middle;
      }
      scene.mask = before;
      left = scene.apply(high, stages.back());
      thresholds.push_back(high);
    }
  }
};

template <class T, class Lengths>
bool addScan(const char* name, const Lengths& stages, int threads) {
  return bench::add({.name = name, .roi = readings(stages), .threads = threads, .prepare = [=] {
                       auto scene = std::make_shared<Scene<T>>();
                       const Cascade<T> cascade(*scene, stages);
                       return [=] {
                         std::fill(scene->mask.begin(), scene->mask.end(), Tev8u{1});
                         for (size_t i = 0; i < cascade.stages.size(); ++i)
                           scene->apply(cascade.thresholds[i], cascade.stages[i]);
                       };
                     }});
}
constexpr std::array one = {20};
const bool stage32s32f = addScan<Tev32s>("Haar stage 32s32f everywhere, ns a rectangle", one, 1);
const bool stage32f = addScan<Tev32f>("Haar stage 32f everywhere, ns a rectangle", one, 1);
const bool scan32s32f = addScan<Tev32s>("Cascade scan 32s32f, ns a rectangle", lengths, 1);
const bool scan32f = addScan<Tev32f>("Cascade scan 32f, ns a rectangle", lengths, 1);
const bool scan32fTwice = addScan<Tev32f>("Cascade scan 32f, two threads", lengths, 2);

}  // namespace
