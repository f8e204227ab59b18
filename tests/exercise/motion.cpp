// Exercises of motion and background: optical flow, foreground models, motion history.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "exercise/exercise.h"

namespace exercise {

namespace {

// ---- Optical flow ----

// A texture without flat parts: waves of triangles, the same on every machine.
int texture(int x, int y, int slant) {
  const auto wave = [](int t) { return std::abs((t % 64 + 64) % 64 - 32); };
  return wave(3 * x + slant * y) * 3 + wave(5 * y - x) * 2 + wave(x + y + slant) * 3;
}

// An image at a scale of 2^-level, `shift` pixels of level 0 to the right and down.
template <class T>
void draw(Image<T> image, int level, TevPoint shift, int slant) {
  for (int y = 0; y < image.size.height; ++y)
    for (int x = 0; x < image.size.width; ++x) {
      const auto value = static_cast<T>(texture((x << level) - shift.x, (y << level) - shift.y, slant));
      std::memcpy(reinterpret_cast<char*>(image.data) + std::ptrdiff_t{y} * image.step + x * int{sizeof(T)}, &value,
                  sizeof value);
    }
}

// The levels of two frames. Half of them show one texture that moves, the others are anything.
template <class T>
void fill(Exercise& e, TevPyramid& first, TevPyramid& second) {
  const bool moving = e.draw.oneIn(2);
  const TevPoint shift = {e.draw.between(-3, 3), e.draw.between(-3, 3)};
  const int slant = e.draw.between(-4, 4);
  for (TevPyramid* pyramid : {&first, &second})
    for (int level = 0; level <= pyramid->level; ++level) {
      const auto image = e.in<T>(pyramid->roi[level]);
      if (moving) draw(image, level, pyramid == &first ? TevPoint{0, 0} : shift, slant);
      pyramid->images[level] = image.data;
      pyramid->steps[level] = image.step;
    }
}

// Mostly inside or just outside of the image, at times anywhere.
float coordinate(Exercise& e, int length) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  if (e.draw.oneIn(40))
    return e.draw.anyOf({-infinity, infinity, std::numeric_limits<float>::quiet_NaN(), 3e9F, -3e9F, 1e30F, -0.0F});
  return e.draw.oneIn(2) ? static_cast<float>(e.draw.between(0, length - 1))
                         : e.draw.real(-5, static_cast<float>(length + 4));
}

template <auto init, auto release, class T>
void track(Exercise& e, const char* name, const char* initName, const char* releaseName, T /*element*/,
           TevStatus (*function)(const TevPyramid*, const TevPyramid*, const Tev32f*, Tev32f*, Tev8s*, Tev32f*, int,
                                 int, int, int, Tev32f, TevOptFlowPyrLKState*)) {
  const TevSize roi = e.size(8000);
  const Tev32f rate = e.draw.oneIn(4) ? e.draw.real(1.5F, 4) : 2;
  Resource<TevPyramid, teviPyramidFree> first, second;
  const int levels = e.draw.between(1, 4);
  CALL(e, teviPyramidInitAlloc, &first.pointer, levels, roi, rate);
  CALL(e, teviPyramidInitAlloc, &second.pointer, levels, roi, rate);
  fill<T>(e, *first.pointer, *second.pointer);
  const int maxLevel = e.draw.between(0, first.pointer->level);

  // Levels smaller than the state's region share one gradient image.
  const int windowSize = e.draw.oneIn(5) ? e.draw.between(1, 25) : e.draw.between(1, 9);
  const TevSize limit =
      e.draw.anyOf<TevSize>({{roi.width + 1, roi.height + 1}, roi, {roi.width / 2 + 1, roi.height / 2 + 1}, {1, 1}});
  Resource<TevOptFlowPyrLKState, release> state;
  e.call(initName, init, &state.pointer, limit, windowSize, e.draw.between(0, 3));

  const int count = e.draw.between(1, e.large() ? 60 : 12);
  auto* const prevPoints = e.inArray<Tev32f>(2 * count);
  const Image<Tev32f> nextPoints = e.inout<Tev32f>({2 * count, 1});
  const bool sameGuess = e.draw.oneIn(2);
  for (int i = 0; i < 2 * count; ++i) {
    const float values[2] = {coordinate(e, i % 2 ? roi.height : roi.width), e.draw.real(-3, 3)};
    const float guess = sameGuess ? values[0] : values[0] + values[1];
    std::memcpy(prevPoints + i, values, sizeof(float));
    std::memcpy(nextPoints.data + i, &guess, sizeof(float));
  }
  auto* const status = e.outArray<Tev8s>(count);
  auto* const error = e.outArray<Tev32f>(count);
  const int maxIterations = e.draw.oneIn(4) ? 1 : e.draw.between(1, 12);
  const Tev32f threshold = e.draw.oneIn(4) ? 0 : e.draw.real(0, 0.5F);
  e.call(name, function, first.pointer, second.pointer, prevPoints, nextPoints.data, status, error, count, windowSize,
         maxLevel, maxIterations, threshold, state.pointer);
  e.call(releaseName, release, state.pointer);
  state.pointer = nullptr;
}

// ---- Foreground models ----

// The next frame: noise over the one before, where something may have come in.
void nextFrame(Exercise& e, Image<Tev8u> frame) {
  Draw noise(e.draw.seed());
  const int amplitude = e.draw.anyOf({0, 1, 3, 60});
  const int elements = frame.size.width * frame.channels;
  const int left = e.draw.between(0, elements - 1), right = left + e.draw.between(0, elements);
  const bool object = e.draw.oneIn(3);
  const auto value = static_cast<Tev8u>(e.draw.between(0, 255));
  for (int y = 0; y < frame.size.height; ++y)
    for (int i = 0; i < elements; ++i) {
      Tev8u& at = frame.data[std::ptrdiff_t{y} * frame.step + i];
      if (object && i >= left && i < right)
        at = value;
      else
        at = static_cast<Tev8u>(std::clamp(at + noise.between(-amplitude, amplitude), 0, 255));
    }
}

// The images that a model shows.
void recordImage(Exercise& e, const Tev8u* image, int step, TevSize roi, int channels) {
  for (int y = 0; y < roi.height; ++y)
    e.record(image + std::ptrdiff_t{y} * step, static_cast<std::size_t>(roi.width * channels));
}

// A part of the model's region, or all of it.
TevSize partOf(Exercise& e, TevSize roi) {
  if (!e.draw.oneIn(4)) return roi;
  return {e.draw.between(1, roi.width), e.draw.between(1, roi.height)};
}

// `...Free` leaves the modes and the record to programs that go on reading them; here they go, too.
struct GaussianModel {
  TevForegroundGaussianState* state = nullptr;
  void release(Exercise& e, const char* name, TevStatus (*free)(TevForegroundGaussianState*)) {
    void* const modes = state->pixels[0];
    e.call(name, free, state);
    tevsFree(modes);
    tevsFree(state);
    state = nullptr;
  }
  GaussianModel() = default;
  GaussianModel(const GaussianModel&) = delete;
  GaussianModel& operator=(const GaussianModel&) = delete;
  ~GaussianModel() {
    if (!state) return;
    void* const modes = state->pixels[0];
    teviForegroundGaussianFree_8u_C1R(state);
    tevsFree(modes);
    tevsFree(state);
  }
};

template <int channels>
void gaussian(Exercise& e, const char* name,
              TevStatus (*detect)(const Tev8u*, int, Tev8u*, int, Tev8u*, int, TevSize, TevForegroundGaussianState*),
              const char* initName, TevStatus (*init)(const Tev8u*, int, TevSize, Tev8u*, TevForegroundGaussianState**),
              const char* freeName, TevStatus (*free)(TevForegroundGaussianState*)) {
  // Now and then a film long enough for the call on which old samples fade.
  const bool film = !e.large() && e.draw.oneIn(12);
  const TevSize roi = film ? TevSize{e.draw.between(1, 3), 1} : e.size(1, 1, 20);
  const auto src = e.in<Tev8u>(roi, channels);
  const auto ref = e.inout<Tev8u>(roi);
  GaussianModel model;
  e.call(initName, init, src.data, src.step, roi, ref.data, &model.state);
  const auto dst = e.out<Tev8u>(roi);
  const int frames = film ? 202 : e.draw.between(1, e.large() ? 3 : 6);
  for (int i = 0; i < frames; ++i) {
    nextFrame(e, src);
    const TevSize part = partOf(e, roi);
    // The mask's step is not tested.
    e.call(name, detect, src.data, src.step, ref.data, ref.step, dst.data, keep(dst.step), part, model.state);
    recordImage(e, model.state->backgroundImage, model.state->backgroundStep, part, channels);
    e.record(model.state->frameCount);
  }
  model.release(e, freeName, free);
}

template <int channels, auto release>
void histogram(
    Exercise& e, const char* name,
    TevStatus (*detect)(const Tev8u*, int, Tev8u*, int, TevSize, TevForegroundHistogramState*), const char* updateName,
    TevStatus (*update)(const Tev8u*, int, const Tev8u*, int, Tev8u*, int, TevSize, TevForegroundHistogramState*),
    const char* initName, TevStatus (*init)(const Tev8u*, int, TevSize, Tev8u*, TevForegroundHistogramState**),
    const char* freeName) {
  // It takes some ten frames until tables are learned.
  const bool film = !e.large() && e.draw.oneIn(6);
  const TevSize roi = film ? e.size(1, 1, 5) : e.size(1, 1, 16);
  const auto src = e.in<Tev8u>(roi, channels);
  const auto ref = e.inout<Tev8u>(roi);
  Resource<TevForegroundHistogramState, release> model;
  e.call(initName, init, src.data, src.step, roi, ref.data, &model.pointer);
  const auto dst = e.inout<Tev8u>(roi);
  const int frames = film ? 40 : e.draw.between(1, 3);
  const bool covered = e.draw.oneIn(3);  // a scene whose background never shows
  for (int i = 0; i < frames; ++i) {
    nextFrame(e, src);
    const TevSize part = partOf(e, roi);
    // Only the frame's step is tested.
    e.call(name, detect, src.data, src.step, dst.data, keep(dst.step), part, model.pointer);
    for (int y = 0; y < roi.height; ++y)
      if (covered || e.draw.oneIn(8))
        std::memset(dst.data + std::ptrdiff_t{y} * dst.step, covered ? 255 : 0, static_cast<std::size_t>(roi.width));
    e.call(updateName, update, src.data, src.step, dst.data, keep(dst.step), ref.data, ref.step, part, model.pointer);
    const TevForegroundHistogramState& state = *model.pointer;
    recordImage(e, state.background, state.backgroundStep, roi, channels);
    recordImage(e, state.previous, state.previousStep, roi, channels);
    recordImage(e, state.changeMask, state.changeStep, roi, 1);
    recordImage(e, state.backgroundDiffMask, state.backgroundDiffStep, roi, 1);
  }
  e.call(freeName, release, model.pointer);
  model.pointer = nullptr;
}

// ---- Motion history ----

template <class T>
void history(Exercise& e, const char* name, TevStatus (*update)(const T*, int, Tev32f*, int, TevSize, Tev32f, Tev32f)) {
  const TevSize roi = e.size(1);
  const auto silhouette = e.in<T>(roi, 1, e.draw.oneIn(2) ? Values::mask : Values::any);
  const auto mhi = e.inout<Tev32f>(roi);
  const Tev32f timestamp =
      e.draw.oneIn(8) ? e.draw.anyOf({-0.0F, 1e30F, std::numeric_limits<float>::infinity()}) : e.draw.real(-1000, 1000);
  const Tev32f duration =
      e.draw.oneIn(8) ? e.draw.anyOf({0.0F, 1e-3F, std::numeric_limits<float>::infinity()}) : e.draw.real(0, 1000);
  e.call(name, update, silhouette.data, silhouette.step, mhi.data, mhi.step, roi, timestamp, duration);
}

}  // namespace

#define ENTRY(function, ...)                                             \
  {                                                                      \
#function, [](Exercise & e) { __VA_ARGS__(e, #function, function); } \
  }
#define FLOW(function, init, free, T)                                                             \
  {                                                                                               \
#function, [](Exercise & e) { track<init, free>(e, #function, #init, #free, T{}, function); } \
  }
#define GAUSSIAN(function, init, free, channels)                                                          \
  {                                                                                                       \
#function, [](Exercise & e) { gaussian<channels>(e, #function, function, #init, init, #free, free); } \
  }
#define HISTOGRAM(function, update, init, free, channels)                                                            \
  {                                                                                                                  \
#function,                                                                                                       \
        [](Exercise & e) { histogram<channels, free>(e, #function, function, #update, update, #init, init, #free); } \
  }

std::vector<Entry> motion() {
  return {
      FLOW(teviOpticalFlowPyrLK_8u_C1R, teviOpticalFlowPyrLKInitAlloc_8u_C1R, teviOpticalFlowPyrLKFree_8u_C1R, Tev8u),
      FLOW(teviOpticalFlowPyrLK_16u_C1R, teviOpticalFlowPyrLKInitAlloc_16u_C1R, teviOpticalFlowPyrLKFree_16u_C1R,
           Tev16u),
      FLOW(teviOpticalFlowPyrLK_32f_C1R, teviOpticalFlowPyrLKInitAlloc_32f_C1R, teviOpticalFlowPyrLKFree_32f_C1R,
           Tev32f),

      GAUSSIAN(teviForegroundGaussian_8u_C1R, teviForegroundGaussianInitAlloc_8u_C1R, teviForegroundGaussianFree_8u_C1R,
               1),
      GAUSSIAN(teviForegroundGaussian_8u_C3R, teviForegroundGaussianInitAlloc_8u_C3R, teviForegroundGaussianFree_8u_C3R,
               3),
      HISTOGRAM(teviForegroundHistogram_8u_C1R, teviForegroundHistogramUpdate_8u_C1R,
                teviForegroundHistogramInitAlloc_8u_C1R, teviForegroundHistogramFree_8u_C1R, 1),
      HISTOGRAM(teviForegroundHistogram_8u_C3R, teviForegroundHistogramUpdate_8u_C3R,
                teviForegroundHistogramInitAlloc_8u_C3R, teviForegroundHistogramFree_8u_C3R, 3),

      ENTRY(teviUpdateMotionHistory_8u32f_C1IR, history),
      ENTRY(teviUpdateMotionHistory_16u32f_C1IR, history),
      ENTRY(teviUpdateMotionHistory_32f_C1IR, history),
  };
}

}  // namespace exercise
