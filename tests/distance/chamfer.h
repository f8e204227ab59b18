// Tests of the chamfer transforms, the same for all elements: each family's file instantiates them for its own.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

#include "kit/kit.h"
#include "tevcv/distance.h"
#include "tevcv_internal/distance.h"
#include "tevcv_internal/frame.h"

namespace chamfer_tests {

using kit::Image;
using kit::Random;

template <class T>
using Metric = std::conditional_t<std::is_floating_point_v<T>, Tev32f, Tev32s>;
template <class T>
using Weights = std::vector<Metric<T>>;
// Sums and comparisons of the definition.
template <class T>
using Wide = std::conditional_t<std::is_floating_point_v<T>, long double, std::int64_t>;

template <class T>
using Call = TevStatus (*)(const Tev8u*, int, T*, int, TevSize, const Metric<T>*);
template <class T>
struct Members {
  Call<T> by3x3, by5x5, by3x3InTwo, by5x5InTwo;
};
template <class T>
Members<T> members();
template <>
inline Members<Tev8u> members<Tev8u>() {
  return {teviDistanceTransform_3x3_8u_C1R, teviDistanceTransform_5x5_8u_C1R, teviDistanceTransform_3x3_8u_C1R_omp,
          teviDistanceTransform_5x5_8u_C1R_omp};
}
template <>
inline Members<Tev16u> members<Tev16u>() {
  return {teviDistanceTransform_3x3_8u16u_C1R, teviDistanceTransform_5x5_8u16u_C1R,
          teviDistanceTransform_3x3_8u16u_C1R_omp, teviDistanceTransform_5x5_8u16u_C1R_omp};
}
template <>
inline Members<Tev32f> members<Tev32f>() {
  return {teviDistanceTransform_3x3_8u32f_C1R, teviDistanceTransform_5x5_8u32f_C1R,
          teviDistanceTransform_3x3_8u32f_C1R_omp, teviDistanceTransform_5x5_8u32f_C1R_omp};
}

template <class T>
Image<T> transform(Call<T> call, const Image<Tev8u>& src, const Weights<T>& weights) {
  Image<T> dst(src.width(), src.height(), 3 * int{sizeof(T)}, 1);
  EXPECT_EQ(call(src.data(), src.step(), dst.data(), dst.step(), src.size(), weights.data()), tevStatusOk);
  return dst;
}
// By the 3x3 mask for two weights, by the 5x5 mask for three.
template <class T>
Image<T> transform(const Image<Tev8u>& src, const Weights<T>& weights) {
  return transform<T>(weights.size() == 2 ? members<T>().by3x3 : members<T>().by5x5, src, weights);
}

// --- The definition, pixel by pixel ----------------------------------------------------------------------------------

template <class T>
struct Tap {
  int dx, dy;
  Wide<T> weight;
};

// The passes with their guard: a value at or below it is left alone.
template <class T>
class Definition {
 public:
  Definition(const Image<Tev8u>& src, const Weights<T>& weights)
      : src_(src), dst_(src.width(), src.height()), width_(src.width()), height_(src.height()) {
    weights.size() == 2 ? choose3x3(weights[0], weights[1]) : choose5x5(weights);
  }

  enum class Form { plain, column, full, regular, extended };
  Form form() const { return form_; }
  bool hasTwoAlongLastRow() const { return twoAlongLastRow_ > 0; }

  Image<T> byOneThread() {
    for (int y = 0; y < height_; ++y) row(y, 1, 1, true);
    for (int y = height_ - 1; y >= 0; --y) row(y, -1, -1, false);
    return dst_.clone();
  }

  // Both halves, the seam row, both halves. The row above the seam goes before those below it.
  Image<T> byTwoThreads() {
    const int seam = height_ / 2;
    for (int y = 0; y < seam; ++y) row(y, 1, 1, true);
    for (int y = height_ - 1; y >= seam; --y) row(y, -1, -1, true);
    if (form_ == Form::regular) {
      row(seam, -1, -1, false);
      row(seam, 1, 1, false);
      row(seam, 1, -1, false);
    } else {
      row(seam, 1, 1, false);
      row(seam, -1, -1, false);
    }
    for (int y = seam - 1; y >= 0; --y) row(y, -1, -1, false);
    for (int y = seam + 1; y < height_; ++y) row(y, 1, 1, false);
    return dst_.clone();
  }

  // Every move between any two pixels, until nothing changes.
  Image<T> byAllPaths() {
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < width_; ++x) dst_.set(x, y, src_.at(x, y) ? farthest : T{0});
    for (bool changed = true; changed;) {
      changed = false;
      for (int way : {1, -1})
        for (int i = 0; i < width_ * height_; ++i) {
          const int p = way > 0 ? i : width_ * height_ - 1 - i, x = p % width_, y = p / width_;
          Wide<T> best = dst_.at(x, y);
          for (int side : {1, -1})
            for (const Tap<T>& t : taps_) best = std::min(best, through(x + side * t.dx, y + side * t.dy, t.weight));
          if (static_cast<T>(best) < dst_.at(x, y)) {
            dst_.set(x, y, static_cast<T>(best));
            changed = true;
          }
        }
    }
    return dst_.clone();
  }

 private:
  static constexpr T farthest = std::numeric_limits<T>::max();
  static Wide<T> stored(Wide<T> w) {
    if constexpr (std::is_floating_point_v<T>)
      return static_cast<T>(w);
    else
      return w;
  }

  void choose3x3(Wide<T> a, Wide<T> b) {
    guard_ = a;
    if (b >= 2 * a && width_ >= 2) {
      form_ = Form::plain;
      taps_ = {{-1, 0, a}, {0, -1, a}};
    } else if (width_ == 1) {
      form_ = Form::column;
      taps_ = {{0, -1, a}};
    } else {
      form_ = Form::full;
      taps_ = {{-1, 0, a}, {-1, -1, b}, {0, -1, a}, {1, -1, b}};
      if (a > b && std::min(width_, height_) >= 2) {
        twoAlongLastRow_ = 2 * b;
        guard_ = b;
      }
    }
  }

  void choose5x5(const Weights<T>& weights) {
    const Wide<T> a = weights[0], b1 = std::min<Wide<T>>(weights[1], 2 * a), c = weights[2];
    bool knightNeverWins = c >= a + b1;
    bool regular = b1 > a && c > 2 * a && 2 * c > 3 * b1;
    if constexpr (std::is_floating_point_v<T>) {
      knightNeverWins = c - a - b1 > -1e-7L * std::fabs(a + b1);
      regular = b1 - a >= 1e-7L * std::fabs(b1) && c - 2 * a >= 1e-7L * std::fabs(c) &&
                !(1.5L * b1 - c > -1e-7L * std::fabs(c));
    }
    if (knightNeverWins) return choose3x3(weights[0], weights[1]);
    if (regular) {
      form_ = Form::regular;
      guard_ = a;
      taps_ = {{-1, 0, a}, {-2, -1, c}, {-1, -1, b1}, {0, -1, a}, {1, -1, b1}, {2, -1, c}, {-1, -2, c}, {1, -2, c}};
      return;
    }
    form_ = Form::extended;
    const Wide<T> a2 = stored(std::min(a, 3 * c)), b2 = stored(std::min(b1, 2 * c));
    const Wide<T> e = stored(std::min({2 * a2, 2 * b2, 2 * c})), f = stored(std::min(a2 + c, 2 * b2));
    guard_ = std::min({a, b2, c});
    edgeDiagonal_ = b1;
    taps_ = {{-2, 0, e}, {-1, 0, a2}, {-2, -1, c}, {-1, -1, b2}, {0, -1, a2}, {1, -1, b2},
             {2, -1, c}, {-2, -2, f}, {-1, -2, c}, {0, -2, e},   {1, -2, c},  {2, -2, f}};
  }

  Wide<T> through(int x, int y, Wide<T> weight) const {
    if (x < 0 || x >= width_ || y < 0 || y >= height_) return farthest;
    return static_cast<Wide<T>>(dst_.at(x, y)) + weight;
  }

  // One row, from the rows above (side 1) or below (-1) and from the left (way 1) or the right (-1).
  void row(int y, int side, int way, bool fromSource) {
    for (int i = 0; i < width_; ++i) {
      const int x = way > 0 ? i : width_ - 1 - i, line = side > 0 ? y : height_ - 1 - y;
      if (fromSource && src_.at(x, y) == 0) {
        dst_.set(x, y, 0);
        continue;
      }
      if (!fromSource && dst_.at(x, y) <= guard_) continue;
      Wide<T> best = fromSource ? farthest : dst_.at(x, y);
      for (const Tap<T>& t : taps_) {
        const int dx = t.dy == 0 ? t.dx * way : t.dx * side;
        const bool edge = form_ == Form::extended && t.dy == -1 &&
                          ((line == 1 && t.dx == -1 && i == 1) || (line == 1 && t.dx == 1 && i == width_ - 2) ||
                           (line == height_ - 1 && t.dx == 1 && i == 0));
        best = std::min(best, through(x + dx, y + t.dy * side, edge ? edgeDiagonal_ : t.weight));
      }
      if (twoAlongLastRow_ > 0 && y == height_ - 1) best = std::min(best, through(x - 2 * way, y, twoAlongLastRow_));
      dst_.set(x, y, static_cast<T>(best));
    }
  }

  const Image<Tev8u>& src_;
  Image<T> dst_;
  int width_, height_;
  Form form_{};
  std::vector<Tap<T>> taps_;
  Wide<T> guard_{}, edgeDiagonal_{}, twoAlongLastRow_{};
};

// --- Weights that reach every form -----------------------------------------------------------------------------------

template <class T>
std::vector<Weights<T>> weightsFromNorms() {
  std::vector<Weights<T>> all;
  for (int norm : {0, 1, 2})
    for (int size : {3, 5}) {
      Weights<T> w(size == 3 ? 2 : 3);
      if constexpr (std::is_floating_point_v<T>)
        teviGetDistanceTransformMask_32f(size, norm, w.data());
      else
        teviGetDistanceTransformMask_32s(size, norm, w.data());
      all.push_back(w);
    }
  return all;
}

template <class T>
Weights<T> randomWeights(Random& random, int count) {
  Weights<T> w;
  if (count == 3 && random.oneIn(3)) {
    constexpr int regular[][3] = {{5, 7, 11}, {12, 17, 27}, {8, 12, 19}, {10, 13, 21}, {7, 10, 16}};
    const auto unit = static_cast<Metric<T>>(std::is_floating_point_v<T> ? 0.1 * random.between(1, 40) : 1);
    for (int weight : regular[random.between(0, 4)]) w.push_back(unit * static_cast<Metric<T>>(weight));
    return w;
  }
  for (int i = 0; i < count; ++i)
    if constexpr (std::is_floating_point_v<T>)
      w.push_back(0.01F + std::fabs(random.real(random.oneIn(4) ? 3e38F : 5.0F)));
    else
      w.push_back(random.oneIn(20)  ? random.between(1, std::numeric_limits<int>::max())
                  : random.oneIn(4) ? random.between(1, 300)
                                    : random.between(1, 12));
  return w;
}

inline Image<Tev8u> randomSource(Random& random, int width, int height) {
  const int sparsity = random.oneIn(3) ? 2 : random.between(3, 400);
  return random.mask(width, height, sparsity);
}

template <class T>
Image<T> filled(int width, int height, T value) {
  Image<T> image(width, height);
  image.fill(value);
  return image;
}

template <class T>
class Chamfer : public testing::Test {};
TYPED_TEST_SUITE_P(Chamfer);

TYPED_TEST_P(Chamfer, EqualsTheDefinitionForEveryFormAndSmallSize) {
  using Form = typename Definition<TypeParam>::Form;
  Random random;
  int seen[5] = {}, seenLastRow = 0;
  for (int trial = 0; trial < 1500; ++trial) {
    const auto src = randomSource(random, random.between(1, 9), random.between(1, 9));
    const auto weights = randomWeights<TypeParam>(random, random.between(2, 3));
    Definition<TypeParam> definition(src, weights);
    ++seen[static_cast<int>(definition.form())];
    seenLastRow += definition.hasTwoAlongLastRow();
    ASSERT_SAME_IMAGE(transform<TypeParam>(src, weights), definition.byOneThread())
        << src.width() << " x " << src.height() << ", weights " << testing::PrintToString(weights);
  }
  for (Form form : {Form::plain, Form::column, Form::full, Form::regular, Form::extended})
    EXPECT_GE(seen[static_cast<int>(form)], 10) << "form " << static_cast<int>(form);
  EXPECT_GE(seenLastRow, 50);
}

TYPED_TEST_P(Chamfer, EqualsTheDefinitionOnWideImages) {
  Random random(1);
  const kit::Threads one(1);
  for (int trial = 0; trial < 60; ++trial) {
    const auto src = randomSource(random, random.between(30, 300), random.between(1, 40));
    const auto weights = randomWeights<TypeParam>(random, random.between(2, 3));
    ASSERT_SAME_IMAGE(transform<TypeParam>(src, weights), Definition<TypeParam>(src, weights).byOneThread())
        << src.width() << " x " << src.height() << ", weights " << testing::PrintToString(weights);
  }
}

// Whole weights: float sums are exact, so that the order of a path's moves does not matter.
TYPED_TEST_P(Chamfer, FindsTheCheapestOfAllPathsForGrowingWeights) {
  Random random(2);
  const auto whole = [](int v) { return static_cast<Metric<TypeParam>>(v); };
  for (int trial = 0; trial < 200; ++trial) {
    const auto src = randomSource(random, random.between(1, 24), random.between(1, 24));
    const int a = random.between(1, 20);
    const Weights<TypeParam> of3x3 = {whole(a), whole(random.between(a, 3 * a))};
    ASSERT_SAME_IMAGE(transform<TypeParam>(src, of3x3), Definition<TypeParam>(src, of3x3).byAllPaths());
    Weights<TypeParam> of5x5 = {whole(5), whole(7), whole(11)};
    if (trial % 2 == 1) of5x5 = {whole(12), whole(17), whole(27)};
    ASSERT_SAME_IMAGE(transform<TypeParam>(src, of5x5), Definition<TypeParam>(src, of5x5).byAllPaths());
  }
}

// Each form on both sides of its gate, the last rows and columns of an uneven size among them.
TYPED_TEST_P(Chamfer, IsSharedByTwoThreadsFromItsGateOn) {
  using T = TypeParam;
  const int narrow3x3 = sizeof(T) == 1 ? 257 : 65;
  const bool always = !std::is_floating_point_v<T>;
  Random random(3);
  for (int threads : kit::threadCounts) {
    const kit::Threads setting(threads);
    for (const auto& weights : {Weights<T>{2, 3}, Weights<T>{1, 2}, Weights<T>{3, 2}, Weights<T>{5, 7, 11},
                                Weights<T>{1, 1, 1}, Weights<T>{3, 4, 7}}) {
      Definition<T> probe(random.mask(9, 9), weights);
      const bool regular = probe.form() == Definition<T>::Form::regular;
      const int least = regular ? 65 : narrow3x3;
      for (const TevSize roi :
           {TevSize{least, 64}, TevSize{least - 1, 64}, TevSize{least, 63}, TevSize{least + 6, 69}}) {
        const auto src = random.mask(roi.width, roi.height, 300);
        const bool grows = probe.form() == Definition<T>::Form::extended ? false : regular || weights[0] <= weights[1];
        const bool inTwo = threads >= 2 && roi.width >= least && roi.height >= 64 && grows && (always || runomp() != 0);
        Definition<T> definition(src, weights);
        ASSERT_SAME_IMAGE(transform<T>(src, weights), inTwo ? definition.byTwoThreads() : definition.byOneThread())
            << threads << " threads, " << roi.width << " x " << roi.height << ", weights "
            << testing::PrintToString(weights);
      }
    }
  }
}

TYPED_TEST_P(Chamfer, ByTwoThreadsFindsTheCheapestPathsOfThe3x3Mask) {
  const kit::Threads setting(2);
  Random random(4);
  for (const auto& weights : {Weights<TypeParam>{2, 3}, Weights<TypeParam>{1, 2}, Weights<TypeParam>{1, 1}})
    for (int sparsity : {2, 100, 5000}) {
      const auto src = random.mask(random.between(257, 300), random.between(64, 75), sparsity);
      Image<TypeParam> one(1, 1);
      {
        const kit::Threads alone(1);
        one = transform<TypeParam>(src, weights);
      }
      ASSERT_SAME_IMAGE(transform<TypeParam>(src, weights), one);
    }
}

// Two threads may miss a path of knight's moves that crosses the seam, and never find one that is not there.
TYPED_TEST_P(Chamfer, ByTwoThreadsGivesUpperBoundsOfThe5x5Distances) {
  using T = TypeParam;
  Random random(5);
  const Weights<T> weights = {5, 7, 11};
  for (int trial = 0; trial < 10; ++trial) {
    const auto src = random.mask(random.between(65, 90), random.between(64, 90), random.between(2, 3000));
    const auto shared = transform<T>(members<T>().by5x5InTwo, src, weights);
    const auto exact = Definition<T>(src, weights).byOneThread();
    for (int y = 0; y < src.height(); ++y)
      for (int x = 0; x < src.width(); ++x) {
        ASSERT_GE(shared.at(x, y), exact.at(x, y));
        ASSERT_EQ(shared.at(x, y) == 0, src.at(x, y) == 0);
      }
  }
}

TYPED_TEST_P(Chamfer, WorkersOfTwoThreadsDoImagesOfAnySize) {
  Random random(6);
  for (int trial = 0; trial < 60; ++trial) {
    const kit::Threads setting(random.between(1, 3));
    const auto src = random.mask(random.between(1, 12), random.between(1, 12), random.between(2, 50));
    for (const auto& weights : {Weights<TypeParam>{2, 3}, Weights<TypeParam>{1, 2}, Weights<TypeParam>{5, 7, 11}}) {
      const auto call = weights.size() == 2 ? members<TypeParam>().by3x3InTwo : members<TypeParam>().by5x5InTwo;
      ASSERT_SAME_IMAGE(transform<TypeParam>(call, src, weights), Definition<TypeParam>(src, weights).byTwoThreads());
    }
  }
}

TYPED_TEST_P(Chamfer, InsideACallersParallelRegionDoesAllRows) {
  using T = TypeParam;
  const kit::Threads setting(2);
  Random random(7);
  const auto src = random.mask(300, 80, 500);
  const auto expected3 = transform<T>(src, Weights<T>{2, 3}), expected5 = transform<T>(src, Weights<T>{5, 7, 11});
  Image<T> inner3[2] = {Image<T>(300, 80), Image<T>(300, 80)}, inner5[2] = {Image<T>(300, 80), Image<T>(300, 80)};
  const Weights<T> of3x3 = {2, 3}, of5x5 = {5, 7, 11};
#pragma omp parallel for num_threads(2)
  for (int i = 0; i < 2; ++i) {
    members<T>().by3x3(src.data(), src.step(), inner3[i].data(), inner3[i].step(), src.size(), of3x3.data());
    members<T>().by5x5(src.data(), src.step(), inner5[i].data(), inner5[i].step(), src.size(), of5x5.data());
  }
  for (int i = 0; i < 2; ++i) {
    EXPECT_SAME_IMAGE(inner3[i], expected3);
    EXPECT_SAME_IMAGE(inner5[i], expected5);
  }
}

TYPED_TEST_P(Chamfer, WithoutAZeroPixelIsTheGreatestValueEverywhere) {
  using T = TypeParam;
  for (int threads : {1, 2}) {
    const kit::Threads setting(threads);
    for (const TevSize roi : {TevSize{1, 1}, TevSize{1, 5}, TevSize{7, 1}, TevSize{3, 3}, TevSize{260, 64}}) {
      const auto src = filled<Tev8u>(roi.width, roi.height, 1);
      const auto none = filled<T>(roi.width, roi.height, std::numeric_limits<T>::max());
      auto all = weightsFromNorms<T>();
      all.push_back({3, 2});
      all.push_back({1, 1, 1});
      for (const auto& weights : all) ASSERT_SAME_IMAGE(transform<T>(src, weights), none);
    }
  }
}

TYPED_TEST_P(Chamfer, OfASingleColumnUsesTheVerticalNeighbourAlone) {
  using T = TypeParam;
  const auto src = kit::grid<Tev8u>({{1}, {1}, {0}, {1}, {1}});
  const auto expected = kit::grid<T>({{6}, {3}, {0}, {3}, {6}});
  for (const auto& weights : {Weights<T>{3, 4}, Weights<T>{3, 6}, Weights<T>{3, 2}})
    EXPECT_SAME_IMAGE(transform<T>(src, weights), expected);
}

TYPED_TEST_P(Chamfer, OfASingleRowUsesTheHorizontalNeighbourAlone) {
  using T = TypeParam;
  const auto src = kit::grid<Tev8u>({{1, 1, 0, 1, 1, 1}});
  const auto expected = kit::grid<T>({{6, 3, 0, 3, 6, 9}});
  for (const auto& weights : {Weights<T>{3, 4}, Weights<T>{3, 6}, Weights<T>{3, 2}})
    EXPECT_SAME_IMAGE(transform<T>(src, weights), expected);
}

TYPED_TEST_P(Chamfer, WithCheapDiagonalsTakesTwoStepsAtOnceInTheLastRow) {
  using T = TypeParam;
  const auto src = kit::grid<Tev8u>({{1, 1, 1, 1, 1, 1}, {1, 1, 1, 0, 1, 1}});
  EXPECT_SAME_IMAGE(transform<T>(src, Weights<T>{3, 2}), kit::grid<T>({{6, 5, 2, 3, 2, 5}, {7, 4, 3, 0, 3, 4}}));
}

TYPED_TEST_P(Chamfer, Of5x5IsA3x3TransformWhereTheKnightNeverWins) {
  using T = TypeParam;
  Random random(8);
  for (const auto& weights : {Weights<T>{1, 1, 2}, Weights<T>{1, 2, 3}, Weights<T>{3, 2, 5}, Weights<T>{3, 9, 9}}) {
    const auto src = random.mask(30, 20, 60);
    EXPECT_SAME_IMAGE(transform<T>(src, weights), transform<T>(src, Weights<T>{weights[0], weights[1]}));
  }
}

TYPED_TEST_P(Chamfer, ChecksPointersThenSizeThenStepsThenAlignmentThenWeights) {
  using T = TypeParam;
  constexpr int size = sizeof(T);
  Image<Tev8u> src(8, 4, 3);
  src.fill(1);
  Image<T> dst(8, 4, 2 * size);
  const int s = src.step(), d = dst.step(), full = 8 * size;
  const TevSize roi = {8, 4};
  const Weights<T> good = {1, 1, 1};
  const auto [by3x3, by5x5, in2a, in2b] = members<T>();
  for (Call<T> call : {by3x3, by5x5}) {
    const auto w = good.data();
    EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, dst.data(), 0, {0, 4}, w), dst);
    EXPECT_FAILS(tevStatusNullPtr, call(src.data(), s, static_cast<T*>(nullptr), d, {0, 4}, w), dst);
    EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 0, dst.data(), 0, {0, 4}, nullptr), dst);
    for (const TevSize bad : {TevSize{0, 4}, TevSize{8, 0}, TevSize{-8, -4}})
      EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, dst.data(), 0, bad, w), dst);
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), 7, dst.data(), d, roi, w), dst);
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), s, dst.data(), full - 1, roi, w), dst);
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), s, dst.data(), d, {1 << 30, 4}, w), dst);
    EXPECT_EQ(call(src.data(), 8, dst.data(), full, roi, w), tevStatusOk);
    std::vector<Metric<T>> refused = {0, -1};
    if (std::is_floating_point_v<T>) refused.push_back(static_cast<Metric<T>>(std::nanf("")));
    const int count = call == by3x3 ? 2 : 3;
    for (int i = 0; i < count; ++i)
      for (const auto value : refused) {
        Weights<T> bad = good;
        bad[i] = value;
        EXPECT_FAILS(tevStatusBadMetric, call(src.data(), s, dst.data(), d, roi, bad.data()), dst);
        EXPECT_FAILS(tevStatusBadStep, call(src.data(), 7, dst.data(), d, roi, bad.data()), dst);
        if (size > 1) {
          EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), s, dst.data(), full + 1, roi, bad.data()), dst);
        }
      }
    if (size == 1) {
      EXPECT_EQ(call(src.data(), s, dst.data(), full + 1, roi, w), tevStatusOk);
    } else {
      EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), s, dst.data(), full + 1, roi, w), dst);
      EXPECT_FAILS(tevStatusBadStep, call(src.data(), 7, dst.data(), full + 1, roi, w), dst);
    }
  }
  // The 3x3 mask reads two weights and no third.
  const Weights<T> two = {1, 1};
  kit::Buffer end(2 * int{sizeof(Metric<T>)});
  std::copy(two.begin(), two.end(), end.as<Metric<T>>());
  EXPECT_EQ(by3x3(src.data(), s, dst.data(), d, roi, end.as<Metric<T>>()), tevStatusOk);
}

REGISTER_TYPED_TEST_SUITE_P(Chamfer, EqualsTheDefinitionForEveryFormAndSmallSize, EqualsTheDefinitionOnWideImages,
                            FindsTheCheapestOfAllPathsForGrowingWeights, IsSharedByTwoThreadsFromItsGateOn,
                            ByTwoThreadsFindsTheCheapestPathsOfThe3x3Mask,
                            ByTwoThreadsGivesUpperBoundsOfThe5x5Distances, WorkersOfTwoThreadsDoImagesOfAnySize,
                            InsideACallersParallelRegionDoesAllRows, WithoutAZeroPixelIsTheGreatestValueEverywhere,
                            OfASingleColumnUsesTheVerticalNeighbourAlone, OfASingleRowUsesTheHorizontalNeighbourAlone,
                            WithCheapDiagonalsTakesTwoStepsAtOnceInTheLastRow,
                            Of5x5IsA3x3TransformWhereTheKnightNeverWins,
                            ChecksPointersThenSizeThenStepsThenAlignmentThenWeights);

}  // namespace chamfer_tests
