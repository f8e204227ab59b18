#include <algorithm>
#include <new>

#include "bench.h"
#include "tevcv/motion.h"

namespace {

constexpr TevSize frameSize = {640, 480};

// A still scene with noise: eight frames, taken in turn.
template <int channels>
struct Video {
  std::vector<std::shared_ptr<std::vector<Tev8u>>> frames;
  std::vector<Tev8u> mask = std::vector<Tev8u>(size_t{640} * 480);
  Tev8u ref = 0;
  int next = 0;

  Video() {
    unsigned state = 7;
    const auto still = bench::noise<Tev8u>(frameSize, channels);
    for (int f = 0; f < 8; ++f) {
      frames.push_back(std::make_shared<std::vector<Tev8u>>(*still));
      for (Tev8u& v : *frames.back()) {
        int noise = -6;
        for (int i = 0; i < 4; ++i) noise += static_cast<int>((state = state * 1664525U + 1013904223U) >> 30);
        v = static_cast<Tev8u>(std::clamp(v + noise, 0, 255));
      }
    }
  }
  const Tev8u* frame() { return frames[static_cast<size_t>(next++ % 8)]->data(); }
};

template <int channels, class Init, class Update>
std::function<void()> gaussian(Init init, Update update) {
  auto video = std::make_shared<Video<channels>>();
  TevForegroundGaussianState* model = nullptr;
  init(video->frame(), 640 * channels, frameSize, &video->ref, &model);
  const auto call = [=] {
    update(video->frame(), 640 * channels, &video->ref, 0, video->mask.data(), 640, frameSize, model);
  };
  for (int f = 0; f < 20; ++f) call();
  return call;
}

const bool gaussians[] = {
    bench::add(
        {.name = "ForegroundGaussian 8u C1, 640 x 480",
         .target = 400,
         .roi = frameSize,
         .prepare = [] { return gaussian<1>(teviForegroundGaussianInitAlloc_8u_C1R, teviForegroundGaussian_8u_C1R); }}),
    bench::add(
        {.name = "ForegroundGaussian 8u C3, 640 x 480",
         .roi = frameSize,
         .prepare = [] { return gaussian<3>(teviForegroundGaussianInitAlloc_8u_C3R, teviForegroundGaussian_8u_C3R); }}),
};

template <int channels, class Init, class Detect, class Update, class Free>
std::function<void()> histogram(bool learning, Init init, Detect detect, Update update, Free free) {
  auto video = std::make_shared<Video<channels>>();
  // A model of this size takes a third of what a 32-bit program can address: the one of the entry before is freed.
  static std::shared_ptr<TevForegroundHistogramState> last;  // one for each number of channels
  last.reset();
  TevForegroundHistogramState* model = nullptr;
  if (init(video->frame(), 640 * channels, frameSize, &video->ref, &model) != tevStatusOk) throw std::bad_alloc();
  last.reset(model, free);
  const auto call = [=](bool learns) {
    const Tev8u* const frame = video->frame();
    Tev8u* const mask = video->mask.data();
    detect(frame, 640 * channels, mask, 640, frameSize, model);
    if (learns) update(frame, 640 * channels, mask, 640, &video->ref, 0, frameSize, model);
  };
  for (int f = 0; f < 20; ++f) call(true);
  return [=] { call(learning); };
}

bool histogramC1(const char* name, bool learning) {
  return bench::add({.name = name, .roi = frameSize, .prepare = [=] {
                       return histogram<1>(learning, teviForegroundHistogramInitAlloc_8u_C1R,
                                           teviForegroundHistogram_8u_C1R, teviForegroundHistogramUpdate_8u_C1R,
                                           teviForegroundHistogramFree_8u_C1R);
                     }});
}
bool histogramC3(const char* name, bool learning) {
  return bench::add({.name = name, .roi = frameSize, .prepare = [=] {
                       return histogram<3>(learning, teviForegroundHistogramInitAlloc_8u_C3R,
                                           teviForegroundHistogram_8u_C3R, teviForegroundHistogramUpdate_8u_C3R,
                                           teviForegroundHistogramFree_8u_C3R);
                     }});
}

const bool histograms[] = {
    histogramC1("ForegroundHistogram 8u C1, 640 x 480", false),
    histogramC3("ForegroundHistogram 8u C3, 640 x 480", false),
    histogramC1("ForegroundHistogram and update 8u C1, 640 x 480", true),
    histogramC3("ForegroundHistogram and update 8u C3, 640 x 480", true),
};

template <class T>
bool history(const char* name, Tev32f timestamp,
             TevStatus (*call)(const T*, int, Tev32f*, int, TevSize, Tev32f, Tev32f)) {
  return bench::add({.name = name, .prepare = [=] {
                       using bench::hd;
                       auto silhouette = bench::noise<T>();
                       for (T& s : *silhouette) s = s > 200 ? s : T{0};
                       auto mhi = bench::noise<Tev32f>(hd, 1, 2);
                       return [=] {
                         call(silhouette->data(), hd.width * int{sizeof(T)}, mhi->data(), hd.width * 4, hd, timestamp,
                              100);
                       };
                     }});
}

const bool histories[] = {
    history("UpdateMotionHistory 8u32f", 200, teviUpdateMotionHistory_8u32f_C1IR),
    history("UpdateMotionHistory 8u32f, negative limit", 50, teviUpdateMotionHistory_8u32f_C1IR),
    history("UpdateMotionHistory 16u32f", 200, teviUpdateMotionHistory_16u32f_C1IR),
    history("UpdateMotionHistory 32f", 200, teviUpdateMotionHistory_32f_C1IR),
};

}  // namespace
