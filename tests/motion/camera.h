// A simulated camera: a picture seen through a window that sways a little, in light that drifts, with the noise of a
// sensor; from some time on a cut-out of another picture passes in front of it. What is foreground is known exactly.
#pragma once

#include <algorithm>
#include <cmath>

#include "kit/kit.h"
#include "tevcv/memory.h"
#include "tevcv/motion.h"

namespace camera {

using kit::Image;

struct Setting {
  TevSize view;         // size of a frame
  int sway = 0;         // the window pans so many pixels to the right and back, a pixel in eight frames
  float light = 0;      // the light goes up and down by so many levels
  float noise = 3;      // standard deviation of a pixel's noise
  int learning = 150;   // frames without foreground
  int passing = 60;     // frames in which the cut-out passes
  float radius = 0.2F;  // of the cut-out, an ellipse, in widths and heights of the frame
};

template <int channels>
class Camera {
 public:
  Camera(const Setting& setting, const Image<Tev8u, channels>& picture, const Image<Tev8u, channels>& passer)
      : setting_(setting), picture_(picture), passer_(passer) {}

  bool isPassing(int number) const { return number >= setting_.learning; }

  // Whether pixel (x, y) of a frame shows the cut-out.
  bool isForeground(int number, int x, int y) const {
    if (!isPassing(number)) return false;
    const float dx = (x - centre(number)) / (setting_.radius * setting_.view.width);
    const float dy = (y - 0.5F * setting_.view.height) / (setting_.radius * setting_.view.height);
    return dx * dx + dy * dy <= 1;
  }

  Image<Tev8u, channels> frame(int number) {
    Image<Tev8u, channels> image(setting_.view.width, setting_.view.height);
    const int beat = setting_.sway > 0 ? number / 8 % (2 * setting_.sway) : 0;
    const int pan = beat <= setting_.sway ? beat : 2 * setting_.sway - beat;
    const float light = setting_.light * std::sin(0.05F * static_cast<float>(number));
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x)
        for (int c = 0; c < channels; ++c) {
          const int far = picture_.at((x + pan) % picture_.width(), y % picture_.height(), c);
          const int u = x - static_cast<int>(centre(number)) + passer_.width() / 2;
          const int v = y - image.height() / 2 + passer_.height() / 2;
          const int near = passer_.at(std::clamp(u, 0, passer_.width() - 1), std::clamp(v, 0, passer_.height() - 1), c);
          const float value = static_cast<float>(isForeground(number, x, y) ? near : far) + light + noise();
          image.set(x * channels + c, y, static_cast<Tev8u>(std::clamp(value + 0.5F, 0.0F, 255.0F)));
        }
    return image;
  }

 private:
  float centre(int number) const {
    const float way = static_cast<float>(number - setting_.learning) / static_cast<float>(setting_.passing);
    return (1.2F * way - 0.1F) * static_cast<float>(setting_.view.width);
  }
  // Nearly normal: twelve even numbers have variance 1.
  float noise() {
    float sum = 0;
    for (int i = 0; i < 12; ++i) sum += static_cast<float>(random_.bits() >> 40) / (1 << 24) - 0.5F;
    return setting_.noise * sum;
  }

  Setting setting_;
  const Image<Tev8u, channels>& picture_;
  const Image<Tev8u, channels>& passer_;
  kit::Random random_;
};

// How well a mask tells the foreground, over all frames in which something passes.
struct Score {
  double hits = 0, falseAlarms = 0, misses = 0;
  double precision() const { return hits / std::max(1.0, hits + falseAlarms); }
  double recall() const { return hits / std::max(1.0, hits + misses); }
};

// Takes each frame through see(frame), which gives a mask, and scores the masks.
template <int channels, class See>
Score watch(const Setting& setting, const Image<Tev8u, channels>& picture, const Image<Tev8u, channels>& passer,
            See see) {
  Camera<channels> source(setting, picture, passer);
  Score score;
  for (int f = 0; f < setting.learning + setting.passing; ++f) {
    const auto mask = see(source.frame(f));
    if (!source.isPassing(f)) continue;
    for (int y = 0; y < mask.height(); ++y)
      for (int x = 0; x < mask.width(); ++x) {
        const bool truth = source.isForeground(f, x, y), found = mask.at(x, y) != 0;
        score.hits += truth && found;
        score.falseAlarms += !truth && found;
        score.misses += truth && !found;
      }
  }
  return score;
}

template <int channels>
Score watchGaussian(const Setting& setting, const Image<Tev8u, channels>& picture,
                    const Image<Tev8u, channels>& passer) {
  constexpr auto init = channels == 1 ? teviForegroundGaussianInitAlloc_8u_C1R : teviForegroundGaussianInitAlloc_8u_C3R;
  constexpr auto update = channels == 1 ? teviForegroundGaussian_8u_C1R : teviForegroundGaussian_8u_C3R;
  TevForegroundGaussianState* model = nullptr;
  Tev8u ref = 0;
  const auto score = watch(setting, picture, passer, [&](const Image<Tev8u, channels>& frame) {
    Image<Tev8u> mask(frame.width(), frame.height());
    if (!model) {
      EXPECT_EQ(init(frame.data(), frame.step(), frame.size(), &ref, &model), tevStatusOk);
    }
    EXPECT_EQ(update(frame.data(), frame.step(), &ref, 0, mask.data(), mask.step(), frame.size(), model), tevStatusOk);
    return mask;
  });
  void* const modes = model->pixels[0];
  teviForegroundGaussianFree_8u_C1R(model);
  tevsFree(modes);
  tevsFree(model);
  return score;
}

template <int channels>
Score watchHistogram(const Setting& setting, const Image<Tev8u, channels>& picture,
                     const Image<Tev8u, channels>& passer) {
  constexpr auto init =
      channels == 1 ? teviForegroundHistogramInitAlloc_8u_C1R : teviForegroundHistogramInitAlloc_8u_C3R;
  constexpr auto detect = channels == 1 ? teviForegroundHistogram_8u_C1R : teviForegroundHistogram_8u_C3R;
  constexpr auto update = channels == 1 ? teviForegroundHistogramUpdate_8u_C1R : teviForegroundHistogramUpdate_8u_C3R;
  TevForegroundHistogramState* model = nullptr;
  Tev8u ref = 0;
  const auto score = watch(setting, picture, passer, [&](const Image<Tev8u, channels>& frame) {
    Image<Tev8u> mask(frame.width(), frame.height());
    if (!model) {
      EXPECT_EQ(init(frame.data(), frame.step(), frame.size(), &ref, &model), tevStatusOk);
    }
    EXPECT_EQ(detect(frame.data(), frame.step(), mask.data(), mask.step(), frame.size(), model), tevStatusOk);
    EXPECT_EQ(update(frame.data(), frame.step(), mask.data(), mask.step(), &ref, 0, frame.size(), model), tevStatusOk);
    return mask;
  });
  teviForegroundHistogramFree_8u_C1R(model);
  return score;
}

}  // namespace camera
