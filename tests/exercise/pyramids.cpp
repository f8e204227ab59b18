// Exercises of the pyramids: records, sizes of levels, layers of any rate, Gaussian steps of rate 2.
#include <algorithm>
#include <cmath>

#include "exercise/exercise.h"

namespace exercise {

namespace {

Tev32f anyRate(Exercise& e, Tev32f highest = 10) {
  if (e.draw.oneIn(3)) return e.draw.anyOf<Tev32f>({2, 1.5F, 1.0000001F, 1.99998F, 2.00002F, 2.00003F, highest});
  return e.draw.real(1.01F, e.draw.oneIn(2) ? highest : 2.5F);
}

// ---- Records and sizes ----

void record(Exercise& e) {
  const TevSize roi = e.size(70000);
  const int level = e.draw.oneIn(6) ? 1000 : e.draw.between(1, 12);
  const Tev32f rate = anyRate(e);
  Resource<TevPyramid, teviPyramidFree> pyramid;
  CALL(e, teviPyramidInitAlloc, &pyramid.pointer, level, roi, rate);
  const TevPyramid& made = *pyramid.pointer;
  const auto levels = static_cast<std::size_t>(made.level) + 1;
  e.record(made.level);
  e.record(made.roi, levels);
  e.record(made.scale, levels);
  e.record(made.steps, levels);
  for (std::size_t i = 0; i < levels; ++i) e.record(made.images[i] == nullptr);
  e.record(made.state == nullptr);
  CALL(e, teviPyramidFree, pyramid.pointer);
  pyramid.pointer = nullptr;
}

TevSize anySize(Exercise& e) {
  if (!e.draw.oneIn(4)) return e.size();
  const int width = e.draw.anyOf({1, 2, 16777217, INT32_MAX});
  const int height = e.draw.anyOf({INT32_MAX, INT32_MAX - 1, 1 << 30, 3});
  return {width, height};
}

void sizeBelow(Exercise& e) {
  const TevSize roi = anySize(e);
  const Tev32f rate = anyRate(e);
  auto* const below = e.outValue<TevSize>();
  CALL(e, teviGetPyramidDownROI, roi, below, rate);
}

void sizesAbove(Exercise& e) {
  const TevSize roi = anySize(e);
  const Tev32f rate = anyRate(e);
  auto* const smallest = e.outValue<TevSize>();
  auto* const largest = e.outValue<TevSize>();
  CALL(e, teviGetPyramidUpROI, roi, smallest, largest, rate);
}

// ---- Layers ----

// A layer's kernel: mirrored or not, of any sign.
template <class Tap>
struct Kernel {
  int size;
  Tap* taps;
  bool usable = true;

  explicit Kernel(Exercise& e) : size(e.draw.oneIn(8) ? 15 : 3 + 2 * e.draw.choice(4)) {
    const bool wild = e.draw.oneIn(4);
    taps = e.inArray<Tap>(size, Values::finite);
    const int middle = size / 2;
    if (!wild) {
      for (int i = 0; i <= middle; ++i) set(i, static_cast<Tap>(e.draw.between(i > 0, 20)));
      set(middle, static_cast<Tap>(at(middle) + 1));
      for (int i = 0; i < middle; ++i) set(size - 1 - i, at(i));
      if (e.draw.oneIn(6)) set(size - 1, 21);
    }
    // A kernel that sums to zero makes a state, but not one whose taps are all defined.
    double sum = 0;
    for (int i = 0; i < middle; ++i) sum += 2.0 * at(i);
    if (e.draw.oneIn(12) && std::fabs(sum) < 30000) {
      set(middle, static_cast<Tap>(-sum));
      usable = false;
    } else if (std::fabs(sum + at(middle)) < 0.5) {
      set(middle, static_cast<Tap>(at(middle) < 0 ? at(middle) - 1 : at(middle) + 1));
    }
  }

 private:
  Tap at(int i) const {
    Tap tap;
    std::memcpy(&tap, bytes(i), sizeof tap);
    return tap;
  }
  void set(int i, Tap tap) { std::memcpy(bytes(i), &tap, sizeof tap); }
  char* bytes(int i) const { return reinterpret_cast<char*>(taps) + static_cast<std::size_t>(i) * sizeof(Tap); }
};

using State = TevPyramidLayerState;
constexpr int linear = 2;

// A state of any type can be given back by the function of its type or by that of all types.
void giveBack(Exercise& e, const char* name, TevStatus (*typed)(State*), const char* plainName,
              TevStatus (*plain)(State*), State*& state) {
  if (e.draw.oneIn(3))
    e.call(plainName, plain, state);
  else
    e.call(name, typed, state);
  state = nullptr;
}

// The region that a state is made for holds the one that it is used on.
TevSize roomFor(Exercise& e, TevSize roi) {
  if (!e.draw.oneIn(3)) return roi;
  const int width = roi.width + e.draw.between(0, 9), height = roi.height + e.draw.between(0, 9);
  return {width, height};
}

template <int channels, class T, class Tap>
void down(Exercise& e, const char* initName, TevStatus (*init)(State**, TevSize, Tev32f, const Tap*, int, int),
          const char* name, TevStatus (*layer)(const T*, int, TevSize, T*, int, TevSize, State*), const char* freeName,
          TevStatus (*release)(State*)) {
  const TevSize roi = e.size(8000);
  const Tev32f rate = anyRate(e);
  const Kernel<Tap> kernel(e);
  const TevSize room = roomFor(e, roi);
  Resource<State, teviPyramidLayerDownFree> state;
  e.call(initName, init, &state.pointer, room, rate, kernel.taps, kernel.size, linear);
  if (kernel.usable) {
    auto* const size = e.outValue<TevSize>();
    CALL(e, teviGetPyramidDownROI, roi, size, rate);
    TevSize dstRoi;
    std::memcpy(&dstRoi, size, sizeof dstRoi);
    const auto src = e.in<T>(roi, channels);
    const auto dst = e.out<T>(dstRoi, channels);
    e.call(name, layer, src.data, src.step, roi, dst.data, dst.step, dstRoi, context(state.pointer));
  }
  giveBack(e, freeName, release, "teviPyramidLayerDownFree", teviPyramidLayerDownFree, state.pointer);
}

template <int channels, class T, class Tap>
void up(Exercise& e, const char* initName, TevStatus (*init)(State**, TevSize, Tev32f, const Tap*, int, int),
        const char* name, TevStatus (*layer)(const T*, int, TevSize, T*, int, TevSize, State*), const char* freeName,
        TevStatus (*release)(State*)) {
  const Tev32f rate = anyRate(e, e.large() ? 3 : 10);
  TevSize roi = e.size(1, 1, std::max(3, static_cast<int>(40 / rate)));
  if (e.large()) roi.width -= 60;
  const Kernel<Tap> kernel(e);
  const TevSize room = roomFor(e, roi);
  Resource<State, teviPyramidLayerUpFree> state;
  e.call(initName, init, &state.pointer, room, rate, kernel.taps, kernel.size, linear);
  if (kernel.usable) {
    TevSize smallest, largest;
    CALL(e, teviGetPyramidUpROI, roi, &smallest, &largest, rate);
    const TevSize dstRoi = {e.draw.between(smallest.width, largest.width),
                            e.draw.between(smallest.height, largest.height)};
    const auto src = e.in<T>(roi, channels);
    const auto dst = e.out<T>(dstRoi, channels);
    e.call(name, layer, src.data, src.step, roi, dst.data, dst.step, dstRoi, context(state.pointer));
  }
  giveBack(e, freeName, release, "teviPyramidLayerUpFree", teviPyramidLayerUpFree, state.pointer);
}

// ---- Gaussian steps ----

template <class T>
constexpr TevDataType codeOf = std::is_same_v<T, Tev8u>   ? tevDataType8u
                               : std::is_same_v<T, Tev8s> ? tevDataType8s
                                                          : tevDataType32f;

template <int channels, class T>
void halve(Exercise& e, const char* name, TevStatus (*function)(const T*, int, T*, int, TevSize, Tev8u*)) {
  const TevSize roi = e.size(20000);
  const auto src = e.in<T>(roi, channels);
  const auto dst = e.out<T>({(roi.width + 1) / 2, (roi.height + 1) / 2}, channels);
  int* const bytes = e.outValue<int>();
  CALL(e, teviPyrDownGetBufSize_Gauss5x5, roi.width, codeOf<T>, channels, bytes);
  int size;
  std::memcpy(&size, bytes, sizeof size);
  Tev8u* const buffer = e.buffer(size);
  e.call(name, function, src.data, src.step, dst.data, dst.step, roi, buffer);
}

template <int channels, class T>
void enlarge(Exercise& e, const char* name, TevStatus (*function)(const T*, int, T*, int, TevSize, Tev8u*)) {
  const TevSize roi = e.size(20000, 1, 25);
  const auto src = e.in<T>(roi, channels);
  const auto dst = e.out<T>({2 * roi.width, 2 * roi.height}, channels);
  int* const bytes = e.outValue<int>();
  CALL(e, teviPyrUpGetBufSize_Gauss5x5, roi.width, codeOf<T>, channels, bytes);
  int size;
  std::memcpy(&size, bytes, sizeof size);
  Tev8u* const buffer = e.buffer(size);
  e.call(name, function, src.data, src.step, dst.data, dst.step, roi, buffer);
}

}  // namespace

#define ENTRY(function, exercise)                                     \
  {                                                                   \
#function, [](Exercise & e) { exercise(e, #function, function); } \
  }
// A layer with the functions that make and free its state.
#define LAYER(exercise, init, layer, release)                                                \
  {                                                                                          \
#layer, [](Exercise & e) { exercise(e, #init, init, #layer, layer, #release, release); } \
  }

std::vector<Entry> pyramids() {
  return {
      {"teviPyramidInitAlloc", record},
      {"teviGetPyramidDownROI", sizeBelow},
      {"teviGetPyramidUpROI", sizesAbove},
      LAYER(down<1>, teviPyramidLayerDownInitAlloc_8u_C1R, teviPyramidLayerDown_8u_C1R,
            teviPyramidLayerDownFree_8u_C1R),
      LAYER(down<3>, teviPyramidLayerDownInitAlloc_8u_C3R, teviPyramidLayerDown_8u_C3R,
            teviPyramidLayerDownFree_8u_C3R),
      LAYER(down<1>, teviPyramidLayerDownInitAlloc_16u_C1R, teviPyramidLayerDown_16u_C1R,
            teviPyramidLayerDownFree_16u_C1R),
      LAYER(down<3>, teviPyramidLayerDownInitAlloc_16u_C3R, teviPyramidLayerDown_16u_C3R,
            teviPyramidLayerDownFree_16u_C3R),
      LAYER(down<1>, teviPyramidLayerDownInitAlloc_32f_C1R, teviPyramidLayerDown_32f_C1R,
            teviPyramidLayerDownFree_32f_C1R),
      LAYER(down<3>, teviPyramidLayerDownInitAlloc_32f_C3R, teviPyramidLayerDown_32f_C3R,
            teviPyramidLayerDownFree_32f_C3R),
      LAYER(up<1>, teviPyramidLayerUpInitAlloc_8u_C1R, teviPyramidLayerUp_8u_C1R, teviPyramidLayerUpFree_8u_C1R),
      LAYER(up<3>, teviPyramidLayerUpInitAlloc_8u_C3R, teviPyramidLayerUp_8u_C3R, teviPyramidLayerUpFree_8u_C3R),
      LAYER(up<1>, teviPyramidLayerUpInitAlloc_16u_C1R, teviPyramidLayerUp_16u_C1R, teviPyramidLayerUpFree_16u_C1R),
      LAYER(up<3>, teviPyramidLayerUpInitAlloc_16u_C3R, teviPyramidLayerUp_16u_C3R, teviPyramidLayerUpFree_16u_C3R),
      LAYER(up<1>, teviPyramidLayerUpInitAlloc_32f_C1R, teviPyramidLayerUp_32f_C1R, teviPyramidLayerUpFree_32f_C1R),
      LAYER(up<3>, teviPyramidLayerUpInitAlloc_32f_C3R, teviPyramidLayerUp_32f_C3R, teviPyramidLayerUpFree_32f_C3R),
      ENTRY(teviPyrDown_Gauss5x5_8u_C1R, halve<1>),
      ENTRY(teviPyrDown_Gauss5x5_8u_C3R, halve<3>),
      ENTRY(teviPyrDown_Gauss5x5_8s_C1R, halve<1>),
      ENTRY(teviPyrDown_Gauss5x5_8s_C3R, halve<3>),
      ENTRY(teviPyrDown_Gauss5x5_32f_C1R, halve<1>),
      ENTRY(teviPyrDown_Gauss5x5_32f_C3R, halve<3>),
      ENTRY(teviPyrUp_Gauss5x5_8u_C1R, enlarge<1>),
      ENTRY(teviPyrUp_Gauss5x5_8u_C3R, enlarge<3>),
      ENTRY(teviPyrUp_Gauss5x5_8s_C1R, enlarge<1>),
      ENTRY(teviPyrUp_Gauss5x5_8s_C3R, enlarge<3>),
      ENTRY(teviPyrUp_Gauss5x5_32f_C1R, enlarge<1>),
      ENTRY(teviPyrUp_Gauss5x5_32f_C3R, enlarge<3>),
  };
}

}  // namespace exercise
