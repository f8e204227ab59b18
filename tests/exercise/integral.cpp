// Exercises of integral images, deviation in a window, and the stages of a Haar cascade.
#include <algorithm>
#include <vector>

#include "exercise/exercise.h"

namespace exercise {

namespace {

// ---- Tables ----

// The value that a table starts from.
template <class T>
T start(Exercise& e) {
  if constexpr (std::is_integral_v<T>)
    return e.draw.anyOf<T>({0, 1, -12345, std::numeric_limits<T>::max(), std::numeric_limits<T>::min()});
  else
    return e.draw.anyOf<T>({0, T(0.3), T(-12345.678), T(1e30), std::numeric_limits<T>::infinity()});
}

template <int border, class T>
void table(Exercise& e, const char* name, TevStatus (*function)(const Tev8u*, int, T*, int, TevSize, T)) {
  const TevSize roi = e.size(20000);
  const auto src = e.in<Tev8u>(roi);
  const auto dst = e.out<T>({roi.width + border, roi.height + border});
  const T value = start<T>(e);
  e.call(name, function, src.data, src.step, dst.data, dst.step, roi, value);
}

template <int border, class T, class S>
void table(Exercise& e, const char* name, TevStatus (*function)(const Tev8u*, int, T*, int, S*, int, TevSize, T, S)) {
  const TevSize roi = e.size(20000);
  const TevSize tableSize = {roi.width + border, roi.height + border};
  const auto src = e.in<Tev8u>(roi);
  const auto dst = e.out<T>(tableSize);
  const auto sqr = e.out<S>(tableSize);
  const T value = start<T>(e);
  const S valueSqr = start<S>(e);
  e.call(name, function, src.data, src.step, dst.data, dst.step, sqr.data, sqr.step, roi, value, valueSqr);
}

// ---- Deviation in a window ----

// Tables of a picture in place of what they hold.
void fill(const Image<Tev8u>& src, const Image<Tev32s>& sum, const Image<Tev32s>& sqr, bool tilted) {
  (tilted ? teviTiltedSqrIntegral_8u32s_C1R : teviSqrIntegral_8u32s_C1R)(src.data, src.step, sum.data, sum.step,
                                                                         sqr.data, sqr.step, src.size, 0, 0);
}
void fill(const Image<Tev8u>& src, const Image<Tev32s>& sum, const Image<Tev64f>& sqr, bool tilted) {
  (tilted ? teviTiltedSqrIntegral_8u32s64f_C1R : teviSqrIntegral_8u32s64f_C1R)(src.data, src.step, sum.data, sum.step,
                                                                               sqr.data, sqr.step, src.size, 0, 0);
}
void fill(const Image<Tev8u>& src, const Image<Tev32f>& sum, const Image<Tev64f>& sqr, bool tilted) {
  (tilted ? teviTiltedSqrIntegral_8u32f64f_C1R : teviSqrIntegral_8u32f64f_C1R)(src.data, src.step, sum.data, sum.step,
                                                                               sqr.data, sqr.step, src.size, 0, 0);
}

template <class T>
T* at(const Image<T>& image, int x, int y) {
  return reinterpret_cast<T*>(reinterpret_cast<char*>(image.data) + std::ptrdiff_t{y} * image.step) + x;
}

template <bool tilted, class T, class S, class D, class... Scale>
void deviation(Exercise& e, const char* name,
               TevStatus (*function)(const T*, int, const S*, int, D*, int, TevSize, TevRect, Scale...)) {
  const TevSize roi = e.size(8192);
  const TevRect r = {e.draw.between(0, 4), e.draw.between(0, 4), e.draw.between(1, 9), e.draw.between(1, 9)};
  // A tilted rectangle reaches to the left of the position, and no further than the row that its step must hold.
  const int left = tilted ? std::max(0, r.y + r.height - r.x) : 0;
  const TevSize tableSize = {left + roi.width + r.x + r.width + (tilted ? r.y + r.height - 1 : 0),
                             roi.height + r.y + r.height + (tilted ? r.x + r.width : 0)};
  const auto sum = e.in<T>(tableSize);
  const auto sqr = e.in<S>(tableSize);
  constexpr int border = tilted ? 2 : 1;
  if (!e.draw.oneIn(3) && tableSize.width > border && tableSize.height > border)
    fill(e.in<Tev8u>({tableSize.width - border, tableSize.height - border}), sum, sqr, tilted);
  const auto dst = e.out<D>(roi);
  [[maybe_unused]] const int scale =
      e.draw.oneIn(4) ? e.draw.anyOf({INT32_MIN, -31, 31, INT32_MAX}) : e.draw.between(-10, 3);
  e.call(name, function, at(sum, left, 0), sum.step, at(sqr, left, 0), sqr.step, dst.data, dst.step, roi, r,
         static_cast<Scale>(scale)...);
}

// ---- Stages ----

template <class W>
struct Forms;
template <>
struct Forms<Tev32f> {
  static constexpr auto init = teviHaarClassifierInitAlloc_32f, initTilted = teviTiltedHaarClassifierInitAlloc_32f;
  static constexpr auto size = teviGetHaarClassifierSize_32f;
  static constexpr auto tilt = teviTiltHaarFeatures_32f;
  static constexpr auto release = teviHaarClassifierFree_32f;
  static constexpr const char *initName = "teviHaarClassifierInitAlloc_32f",
                              *initTiltedName = "teviTiltedHaarClassifierInitAlloc_32f",
                              *sizeName = "teviGetHaarClassifierSize_32f", *tiltName = "teviTiltHaarFeatures_32f",
                              *releaseName = "teviHaarClassifierFree_32f";
};
template <>
struct Forms<Tev32s> {
  static constexpr auto init = teviHaarClassifierInitAlloc_32s, initTilted = teviTiltedHaarClassifierInitAlloc_32s;
  static constexpr auto size = teviGetHaarClassifierSize_32s;
  static constexpr auto tilt = teviTiltHaarFeatures_32s;
  static constexpr auto release = teviHaarClassifierFree_32s;
  static constexpr const char *initName = "teviHaarClassifierInitAlloc_32s",
                              *initTiltedName = "teviTiltedHaarClassifierInitAlloc_32s",
                              *sizeName = "teviGetHaarClassifierSize_32s", *tiltName = "teviTiltHaarFeatures_32s",
                              *releaseName = "teviHaarClassifierFree_32s";
};

// Arrays stand at any address.
template <class T>
void put(T* array, int i, const T& value) {
  std::memcpy(reinterpret_cast<char*>(array) + static_cast<std::size_t>(i) * sizeof(T), &value, sizeof value);
}

// Small whole numbers, between which a stage decides now this way, now that; or anything.
template <class W>
W* numbers(Exercise& e, int count, bool wild) {
  W* const array = e.inArray<W>(std::max(1, count));
  if (!wild)
    for (int i = 0; i < count; ++i) put(array, i, static_cast<W>(e.draw.between(-4, 4)));
  return array;
}

template <class W>
struct Stage {
  Resource<TevHaarClassifierState, Forms<W>::release> state;
  int left = 0, top = 0, right = 0, bottom = 0;  // how far from a position its rectangles' corners lie

  void reach(int x, int y) {
    left = std::max(left, -x);
    top = std::max(top, -y);
    right = std::max(right, x);
    bottom = std::max(bottom, y);
  }
};

// Builds a stage: upright, tilted, or upright with some classifiers tilted afterwards.
template <class W>
void build(Exercise& e, Stage<W>& stage) {
  using F = Forms<W>;
  const bool tilted = e.draw.oneIn(4), wild = e.draw.oneIn(4);
  const int length = e.draw.oneIn(10) ? 0 : e.draw.between(1, 9);
  Tev32s* const counts = e.inArray<Tev32s>(std::max(1, length));
  int features = 0;
  for (int k = 0; k < length; ++k) {
    const int count = e.draw.oneIn(4) ? e.draw.between(1, 5) : e.draw.between(2, 3);
    put(counts, k, Tev32s{count});
    features += count;
  }
  std::vector<TevRect> rects;
  for (int i = 0; i < std::max(1, features); ++i) {
    TevRect r = {e.draw.between(0, 5), e.draw.between(0, 5), e.draw.between(1, 6), e.draw.between(1, 6)};
    if (tilted) r.height = std::min(r.height, r.x + 1);
    rects.push_back(r);
  }
  auto* const rectangles = e.inArray<TevRect>(static_cast<int>(rects.size()));
  for (std::size_t i = 0; i < rects.size(); ++i) put(rectangles, static_cast<int>(i), rects[i]);
  const W* const weights = numbers<W>(e, features, wild);
  const W* const thresholds = numbers<W>(e, length, wild);
  const W* const belows = numbers<W>(e, length, wild);
  const W* const aboves = numbers<W>(e, length, wild);
  e.call(tilted ? F::initTiltedName : F::initName, tilted ? F::initTilted : F::init, &stage.state.pointer, rectangles,
         weights, thresholds, belows, aboves, counts, length);
  const bool turned = !tilted && e.draw.oneIn(2);
  if (turned) {
    const Tev8u* const select = e.inArray<Tev8u>(std::max(1, length), Values::mask);
    const int anchor = e.draw.between(-1, 1);
    e.call(F::tiltName, F::tilt, select, anchor, stage.state.pointer);
  }
  if (length == 0) return;
  for (const auto& [x, y, w, h] : rects) {
    if (!tilted) stage.reach(x + w, y + h);
    if (tilted || turned) {
      stage.reach(x + w - h, y + w + h);
      stage.reach(x - h, y + h);
      stage.reach(x + w, y + w);
    }
    if (turned) {
      stage.reach(x - h, y);
      stage.reach(x + w, y + h - w);
      stage.reach(x + w - h, y - w);
    }
  }
}

// A table of numbers around a region of positions, and the element of the first position.
template <class T>
struct Around {
  Image<T> table;
  T* first;

  template <class W>
  Around(Exercise& e, TevSize roi, const Stage<W>& stage, int shift)
      : table(e.in<T>({stage.left + roi.width + stage.right + shift, stage.top + roi.height + stage.bottom + shift}, 1,
                      e.draw.oneIn(4) ? Values::any : Values::unit)),
        first(at(table, stage.left, stage.top)) {}
};

template <class W>
struct Position {
  Image<W> norm;
  Image<Tev8u> mask;
  Tev32s* positive;
  W threshold;

  Position(Exercise& e, TevSize roi)
      : norm(e.in<W>(roi, 1, e.draw.oneIn(4) ? Values::any : Values::labels)),
        mask(e.inout<Tev8u>(roi, 1, Values::mask)),
        positive(e.outValue<Tev32s>()),
        threshold(static_cast<W>(e.draw.between(-8, 8))) {}
};

template <class W>
void finish(Exercise& e, Stage<W>& stage) {
  TevSize* const size = e.outValue<TevSize>();
  e.call(Forms<W>::sizeName, Forms<W>::size, stage.state.pointer, size);
  e.call(Forms<W>::releaseName, Forms<W>::release, stage.state.pointer);
  stage.state.pointer = nullptr;
}

template <class T, class W, class... Scale>
void apply(Exercise& e, const char* name,
           TevStatus (*function)(const T*, int, const W*, int, Tev8u*, int, TevSize, Tev32s*, W,
                                 const TevHaarClassifierState*, Scale...)) {
  Stage<W> stage;
  build(e, stage);
  const TevSize roi = e.size(8192);
  const Around<T> src(e, roi, stage, 0);
  const Position<W> p(e, roi);
  [[maybe_unused]] const int scale = e.draw.between(-40, 40);
  e.call(name, function, src.first, src.table.step, p.norm.data, p.norm.step, p.mask.data, p.mask.step, roi, p.positive,
         p.threshold, stage.state.pointer, static_cast<Scale>(scale)...);
  finish(e, stage);
}

template <class T, class W, class... Scale>
void applyMixed(Exercise& e, const char* name,
                TevStatus (*function)(const T*, int, const T*, int, const W*, int, Tev8u*, int, TevSize, Tev32s*, W,
                                      const TevHaarClassifierState*, Scale...)) {
  Stage<W> stage;
  build(e, stage);
  const TevSize roi = e.size(8192);
  const Around<T> src(e, roi, stage, 0), tilt(e, roi, stage, 1);
  const Position<W> p(e, roi);
  [[maybe_unused]] const int scale = e.draw.oneIn(6) ? e.draw.anyOf({-70, INT32_MIN}) : e.draw.between(-4, 0);
  e.call(name, function, src.first, src.table.step, tilt.first, tilt.table.step, p.norm.data, p.norm.step, p.mask.data,
         p.mask.step, roi, p.positive, p.threshold, stage.state.pointer, static_cast<Scale>(scale)...);
  finish(e, stage);
}

}  // namespace

#define ENTRY(function, exercise)                                     \
  {                                                                   \
#function, [](Exercise & e) { exercise(e, #function, function); } \
  }

std::vector<Entry> integral() {
  return {
      ENTRY(teviIntegral_8u32s_C1R, table<1>),
      ENTRY(teviIntegral_8u32f_C1R, table<1>),
      ENTRY(teviTiltedIntegral_8u32s_C1R, table<2>),
      ENTRY(teviTiltedIntegral_8u32f_C1R, table<2>),
      ENTRY(teviSqrIntegral_8u32s_C1R, table<1>),
      ENTRY(teviSqrIntegral_8u32s64f_C1R, table<1>),
      ENTRY(teviSqrIntegral_8u32f64f_C1R, table<1>),
      ENTRY(teviTiltedSqrIntegral_8u32s_C1R, table<2>),
      ENTRY(teviTiltedSqrIntegral_8u32s64f_C1R, table<2>),
      ENTRY(teviTiltedSqrIntegral_8u32f64f_C1R, table<2>),
      ENTRY(teviRectStdDev_32f_C1R, deviation<false>),
      ENTRY(teviRectStdDev_32s32f_C1R, deviation<false>),
      ENTRY(teviRectStdDev_32s_C1RSfs, deviation<false>),
      ENTRY(teviTiltedRectStdDev_32f_C1R, deviation<true>),
      ENTRY(teviTiltedRectStdDev_32s32f_C1R, deviation<true>),
      ENTRY(teviTiltedRectStdDev_32s_C1RSfs, deviation<true>),
      ENTRY(teviApplyHaarClassifier_32f_C1R, apply),
      ENTRY(teviApplyHaarClassifier_32s32f_C1R, apply),
      ENTRY(teviApplyHaarClassifier_32s_C1RSfs, apply),
      ENTRY(teviApplyMixedHaarClassifier_32f_C1R, applyMixed),
      ENTRY(teviApplyMixedHaarClassifier_32s32f_C1R, applyMixed),
      ENTRY(teviApplyMixedHaarClassifier_32s_C1RSfs, applyMixed),
  };
}

}  // namespace exercise
