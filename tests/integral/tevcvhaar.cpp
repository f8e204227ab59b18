#include <algorithm>
#include <climits>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

#include "kit/kit.h"
#include "tevcv/integral.h"
#include "tevcv_internal/integral.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

// ---- One overload for each member ----

TevStatus init(TevHaarClassifierState** s, const TevRect* f, const Tev32f* w, const Tev32f* t, const Tev32f* b,
               const Tev32f* a, const Tev32s* c, int n, bool tilted) {
  return (tilted ? teviTiltedHaarClassifierInitAlloc_32f : teviHaarClassifierInitAlloc_32f)(s, f, w, t, b, a, c, n);
}
TevStatus init(TevHaarClassifierState** s, const TevRect* f, const Tev32s* w, const Tev32s* t, const Tev32s* b,
               const Tev32s* a, const Tev32s* c, int n, bool tilted) {
  return (tilted ? teviTiltedHaarClassifierInitAlloc_32s : teviHaarClassifierInitAlloc_32s)(s, f, w, t, b, a, c, n);
}
Tev32s valueOf(TevHaarValue v, Tev32s) { return v.s; }
Tev32f valueOf(TevHaarValue v, Tev32f) { return v.f; }

// The six forms: T table, W weights and norm. `scale` reaches the forms that take it.
struct Form32f {
  using T = Tev32f;
  using W = Tev32f;
  static constexpr bool mixed = false;
};
struct Form32s32f {
  using T = Tev32s;
  using W = Tev32f;
  static constexpr bool mixed = false;
};
struct Form32s {
  using T = Tev32s;
  using W = Tev32s;
  static constexpr bool mixed = false;
};
struct Mixed32f : Form32f {
  static constexpr bool mixed = true;
};
struct Mixed32s32f : Form32s32f {
  static constexpr bool mixed = true;
};
struct Mixed32s : Form32s {
  static constexpr bool mixed = true;
};

template <class T, class W>
struct Call {
  const T* src;
  int srcStep;
  const T* tilt;
  int tiltStep;
  const W* norm;
  int normStep;
  Tev8u* mask;
  int maskStep;
  TevSize roi;
  Tev32s* positive;
  W threshold;
  const TevHaarClassifierState* state;
  int scale;
};
template <class F>
using CallOf = Call<typename F::T, typename F::W>;

TevStatus apply(Form32f, const CallOf<Form32f>& c) {
  return teviApplyHaarClassifier_32f_C1R(c.src, c.srcStep, c.norm, c.normStep, c.mask, c.maskStep, c.roi, c.positive,
                                         c.threshold, c.state);
}
TevStatus apply(Form32s32f, const CallOf<Form32s32f>& c) {
  return teviApplyHaarClassifier_32s32f_C1R(c.src, c.srcStep, c.norm, c.normStep, c.mask, c.maskStep, c.roi, c.positive,
                                            c.threshold, c.state);
}
TevStatus apply(Form32s, const CallOf<Form32s>& c) {
  return teviApplyHaarClassifier_32s_C1RSfs(c.src, c.srcStep, c.norm, c.normStep, c.mask, c.maskStep, c.roi, c.positive,
                                            c.threshold, c.state, c.scale);
}
TevStatus apply(Mixed32f, const CallOf<Mixed32f>& c) {
  return teviApplyMixedHaarClassifier_32f_C1R(c.src, c.srcStep, c.tilt, c.tiltStep, c.norm, c.normStep, c.mask,
                                              c.maskStep, c.roi, c.positive, c.threshold, c.state);
}
TevStatus apply(Mixed32s32f, const CallOf<Mixed32s32f>& c) {
  return teviApplyMixedHaarClassifier_32s32f_C1R(c.src, c.srcStep, c.tilt, c.tiltStep, c.norm, c.normStep, c.mask,
                                                 c.maskStep, c.roi, c.positive, c.threshold, c.state);
}
TevStatus apply(Mixed32s, const CallOf<Mixed32s>& c) {
  return teviApplyMixedHaarClassifier_32s_C1RSfs(c.src, c.srcStep, c.tilt, c.tiltStep, c.norm, c.normStep, c.mask,
                                                 c.maskStep, c.roi, c.positive, c.threshold, c.state, c.scale);
}

// ---- Stages ----

struct FreeStage {
  void operator()(TevHaarClassifierState* s) const { EXPECT_EQ(teviHaarClassifierFree_32f(s), tevStatusOk); }
};
using StagePtr = std::unique_ptr<TevHaarClassifierState, FreeStage>;

template <class W>
struct Description {
  std::vector<TevRect> rects;
  std::vector<W> weights, thresholds, belows, aboves;
  std::vector<Tev32s> counts;

  Description& add(std::vector<TevRect> r, std::vector<W> w, W threshold, W below, W above) {
    counts.push_back(static_cast<Tev32s>(r.size()));
    rects.insert(rects.end(), r.begin(), r.end());
    weights.insert(weights.end(), w.begin(), w.end());
    thresholds.push_back(threshold);
    belows.push_back(below);
    aboves.push_back(above);
    return *this;
  }
  TevStatus init(TevHaarClassifierState** state, bool tilted = false) const {
    return ::init(state, rects.data(), weights.data(), thresholds.data(), belows.data(), aboves.data(), counts.data(),
                  static_cast<int>(counts.size()), tilted);
  }
  StagePtr build(bool tilted = false) const {
    TevHaarClassifierState* state = nullptr;
    EXPECT_EQ(init(&state, tilted), tevStatusOk);
    return StagePtr(state);
  }
};

// A pointer that a failed call must leave alone.
TevHaarClassifierState* sentinel() {
  static TevHaarClassifierState state;
  return &state;
}

std::vector<int> cornersOf(const TevHaarFeature& f) {
  return {f.colA, f.rowA, f.colB, f.rowB, f.colC, f.rowC, f.colD, f.rowD};
}
std::vector<int> boundOf(const TevHaarClassifierState& s) { return {s.boundX, s.boundY, s.boundWidth, s.boundHeight}; }

template <class W>
Description<W> randomDescription(Random& random, int length, bool tilted, bool wild) {
  Description<W> d;
  for (int k = 0; k < length; ++k) {
    const int count = random.oneIn(4) ? random.between(1, 5) : random.between(2, 3);
    std::vector<TevRect> rects;
    std::vector<W> weights;
    for (int i = 0; i < count; ++i) {
      TevRect r = {random.between(0, 5), random.between(0, 5), random.between(1, 6), random.between(1, 6)};
      if (tilted) r.height = std::min(r.height, r.x + 1);
      rects.push_back(r);
      weights.push_back(wild ? random.value<W>() : static_cast<W>(random.between(-3, 3)));
    }
    const auto draw = [&] { return wild ? random.value<W>() : static_cast<W>(random.between(-4, 4)); };
    d.add(rects, weights, draw(), draw(), draw());
  }
  return d;
}

// ---- The definition ----

template <class F>
class Oracle {
  using T = typename F::T;
  using W = typename F::W;
  static constexpr bool integers = std::is_same_v<W, Tev32s>;

 public:
  // Whether the position stays; table(tilted, column, row) reads relative to it.
  template <class Table>
  static bool stays(const TevHaarClassifierState& state, W threshold, W n, int scale, Table table) {
    using Votes = std::conditional_t<integers, std::uint32_t, long double>;
    Votes v = 0;
    for (int k = 0; k < state.classifierCount; ++k) {
      const TevHaarClassifier& c = state.classifiers[k];
      const bool tilted = F::mixed && (c.indexAndTilt & 1);
      const W vote = above(c, n, scale, [&](int col, int row) { return table(tilted, col, row); })
                         ? valueOf(c.aboveValue, W{})
                         : valueOf(c.belowValue, W{});
      v += static_cast<Votes>(vote);
    }
    if constexpr (integers)
      return !(static_cast<Tev32s>(v) < threshold);
    else
      return !(v < threshold);
  }

 private:
  template <class Read>
  static bool above(const TevHaarClassifier& c, W n, int scale, Read read) {
    const W t = valueOf(c.threshold, W{});
    using Term = std::conditional_t<std::is_same_v<T, Tev32s>, std::uint32_t, long double>;
    const auto rectangle = [&](const TevHaarFeature& f) {
      const Term sum = static_cast<Term>(read(f.colA, f.rowA)) - static_cast<Term>(read(f.colB, f.rowB)) -
                       static_cast<Term>(read(f.colC, f.rowC)) + static_cast<Term>(read(f.colD, f.rowD));
      if constexpr (std::is_same_v<T, Tev32s>)
        return static_cast<Tev32s>(sum);
      else
        return sum;
    };
    if constexpr (!integers) {
      long double s = 0;
      for (int i = 0; i < c.count; ++i)
        s += static_cast<long double>(c.features[i].weight.f) * static_cast<long double>(rectangle(c.features[i]));
      return static_cast<long double>(t) * n <= s;
    } else {
      const auto product = [](Tev32s a, Tev32s b) {
        return static_cast<Tev32s>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
      };
      std::uint64_t s = 0;
      for (int i = 0; i < c.count; ++i)
        s += static_cast<std::uint64_t>(std::int64_t{product(c.features[i].weight.s, rectangle(c.features[i]))});
      if (!F::mixed) return product(t, n) <= static_cast<Tev32s>(static_cast<std::uint32_t>(s));
      for (int i = 0; i < std::min(64, -scale); ++i) s *= 2;
      return std::int64_t{t} * n <= static_cast<std::int64_t>(s);
    }
  }
};

// Tables, norm and mask around a region of positions. Tilted corners may lie left of the position and above it.
template <class F>
struct Scene {
  using T = typename F::T;
  using W = typename F::W;
  static constexpr int left = 12, top = 8, reach = 26;
  Image<T> src, tilt;
  Image<W> norm;
  Image<Tev8u> mask;
  TevSize roi;
  Tev32s positive = -77;

  Scene(Random& random, TevSize size, int sparsity, bool wild)
      : src(random.image<T>(left + size.width + reach, top + size.height + reach,
                            [&] { return wild ? random.value<T>() : static_cast<T>(random.between(0, 9)); })),
        tilt(random.image<T>(left + size.width + reach, top + size.height + reach,
                             [&] { return wild ? random.value<T>() : static_cast<T>(random.between(0, 9)); })),
        norm(random.image<W>(size.width, size.height,
                             [&] { return wild ? random.value<W>() : static_cast<W>(random.between(0, 3)); })),
        mask(random.mask(size.width, size.height, sparsity)),
        roi(size) {}
  Scene(const Scene& from)
      : src(from.src.clone()),
        tilt(from.tilt.clone()),
        norm(from.norm.clone()),
        mask(from.mask.clone()),
        roi(from.roi) {}

  CallOf<F> call(const TevHaarClassifierState* state, W threshold, int scale = 0) {
    return {at(src),     src.step(), at(tilt),  tilt.step(), norm.data(), norm.step(), mask.data(),
            mask.step(), roi,        &positive, threshold,   state,       scale};
  }

  static const T* at(const Image<T>& table) {
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(table.data() + left) + top * table.step());
  }

  // The mask after the stage, by the definition.
  Image<Tev8u> expected(const TevHaarClassifierState& state, W threshold, int scale = 0) const {
    auto result = mask.clone();
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < roi.width; ++x)
        if (mask.at(x, y) &&
            !Oracle<F>::stays(state, threshold, norm.at(x, y), scale, [&](bool tilted, int col, int row) {
              return tilted ? tilt.at(left + x + 1 + col, top + y + 1 + row) : src.at(left + x + col, top + y + row);
            }))
          result.set(x, y, 0);
    return result;
  }
};

int selected(const Image<Tev8u>& mask) {
  int sum = 0;
  for (int y = 0; y < mask.height(); ++y)
    for (int x = 0; x < mask.width(); ++x) sum += mask.at(x, y) != 0;
  return sum;
}

template <class W>
class HaarStage : public testing::Test {};
using ValueTypes = testing::Types<Tev32f, Tev32s>;
TYPED_TEST_SUITE(HaarStage, ValueTypes);

template <class F>
class HaarApply : public testing::Test {};
using Forms = testing::Types<Form32f, Form32s32f, Form32s, Mixed32f, Mixed32s32f, Mixed32s>;
TYPED_TEST_SUITE(HaarApply, Forms);

}  // namespace

// ---- Building ----

TEST(HaarRecords, HaveTheLayoutOfOldPrograms) {
  EXPECT_EQ(sizeof(TevHaarFeature), 36U);
#if defined(__i386__)
  EXPECT_EQ(sizeof(TevHaarClassifier), 24U);
  EXPECT_EQ(sizeof(TevHaarClassifierState), 48U);
  EXPECT_EQ(offsetof(TevHaarClassifierState, classifiers), 8U);
  EXPECT_EQ(offsetof(TevHaarClassifierState, allFirstWeightsMinusOne), 44U);
#endif
}

TYPED_TEST(HaarStage, StoresPairsThenTriplesThenOthersEachInTheGivenOrder) {
  using W = TypeParam;
  Description<W> d;
  d.add({{1, 2, 3, 4}}, {-1}, 10, 20, 30)
      .add({{0, 0, 1, 1}, {0, 0, 2, 2}, {0, 0, 3, 3}}, {-1, 2, 3}, 11, 21, 31)
      .add({{5, 5, 1, 1}, {5, 5, 2, 2}}, {-1, 4}, 12, 22, 32)
      .add({{1, 1, 1, 1}, {1, 1, 2, 2}, {1, 1, 3, 3}}, {-1, 5, 6}, 13, 23, 33)
      .add({{6, 6, 1, 1}, {6, 6, 2, 2}}, {-1, 7}, 14, 24, 34);
  const auto state = d.build();
  EXPECT_EQ(state->classifierCount, 5);
  EXPECT_EQ(state->featureCount, 11);
  EXPECT_EQ(state->totalFeatures, 11);
  EXPECT_EQ(state->twoFeatureCount, 2);
  EXPECT_EQ(state->twoOrThreeFeatureCount, 4);
  EXPECT_EQ(state->flags, 0);
  EXPECT_EQ(state->allFirstWeightsMinusOne, 1);
  const int order[] = {2, 4, 1, 3, 0};
  const TevHaarFeature* next = state->classifiers->features;
  for (int k = 0; k < 5; ++k) {
    const TevHaarClassifier& c = state->classifiers[k];
    EXPECT_EQ(c.indexAndTilt, order[k] * 256);
    EXPECT_EQ(valueOf(c.threshold, W{}), 10 + order[k]);
    EXPECT_EQ(valueOf(c.belowValue, W{}), 20 + order[k]);
    EXPECT_EQ(valueOf(c.aboveValue, W{}), 30 + order[k]);
    EXPECT_EQ(c.features, next);
    next += c.count;
  }
  EXPECT_EQ(valueOf(state->classifiers[1].features[1].weight, W{}), 7);
  EXPECT_EQ(cornersOf(*state->classifiers[4].features), (std::vector{4, 6, 1, 6, 4, 2, 1, 2}));
  d.weights[0] = 1;
  EXPECT_EQ(d.build()->allFirstWeightsMinusOne, 0);
}

TYPED_TEST(HaarStage, TiltedKeepsTheGivenOrderAndHangsRectanglesFromACorner) {
  Description<TypeParam> d;
  d.add({{3, 2, 5, 4}}, {1}, 0, 0, 0).add({{1, 0, 1, 2}, {0, 0, 1, 1}}, {1, 2}, 0, 0, 0);
  const auto state = d.build(true);
  EXPECT_EQ(state->flags, 1);
  EXPECT_EQ(state->twoFeatureCount, 0);
  EXPECT_EQ(state->twoOrThreeFeatureCount, 0);
  EXPECT_EQ(state->totalFeatures, 3);
  EXPECT_EQ(state->classifiers[0].indexAndTilt, 1);
  EXPECT_EQ(state->classifiers[1].indexAndTilt, 257);
  EXPECT_EQ(cornersOf(state->classifiers[0].features[0]), (std::vector{4, 11, -1, 6, 8, 7, 3, 2}));
}

TYPED_TEST(HaarStage, KeepsTheArithmeticOfItsBound) {
  Description<TypeParam> d;
  d.add({{4, 3, 2, 2}}, {1}, 0, 0, 0);
  // From x 4, right edge 2: 6 is not above 4 + 2, so the edge stays 2 and the width becomes 2 - 4.
  EXPECT_EQ(boundOf(*d.build()), (std::vector{4, 3, -2, -1}));
  d.add({{1, 1, 9, 9}}, {1}, 0, 0, 0);
  EXPECT_EQ(boundOf(*d.build()), (std::vector{1, 1, 9, 9}));
  // Pairs come first, so the order of the passes is part of the numbers.
  d.add({{2, 0, 3, 7}, {0, 2, 6, 1}}, {1, 1}, 0, 0, 0);
  EXPECT_EQ(boundOf(*d.build()), (std::vector{0, 0, 10, 10}));
  Description<TypeParam> tilted;
  tilted.add({{4, 3, 2, 1}}, {1}, 0, 0, 0);
  // Right edge 1 from the start; A = (5, 6): 5 is not above 4 + 1; 6 is not above 3 + 3.
  EXPECT_EQ(boundOf(*tilted.build(true)), (std::vector{4, 3, -3, 0}));
  tilted.add({{2, 5, 8, 3}}, {1}, 0, 0, 0);
  // A = (7, 16), x 2: 7 is above 2 + 1; 16 is above 3 + 3.
  EXPECT_EQ(boundOf(*tilted.build(true)), (std::vector{2, 3, 5, 13}));
}

TYPED_TEST(HaarStage, WithoutClassifiersTakesItsBoundFromTheFirstRectangle) {
  Description<TypeParam> d;
  d.add({{3, 4, 5, 7}}, {1}, 0, 0, 0);
  d.counts.clear();
  const auto state = d.build(), tilted = d.build(true);
  EXPECT_EQ(state->classifierCount, 0);
  EXPECT_EQ(state->featureCount, 0);
  EXPECT_EQ(boundOf(*state), (std::vector{3, 4, 2, 3}));
  EXPECT_EQ(boundOf(*tilted), (std::vector{3, 4, -5, 8}));
  TevSize size = {-1, -1};
  EXPECT_EQ(teviGetHaarClassifierSize_32f(state.get(), &size), tevStatusOk);
  EXPECT_EQ(size.width, 0);
  EXPECT_EQ(size.height, 0);
}

TYPED_TEST(HaarStage, RefusesNullPointersNegativeLengthAndEmptyClassifiersBeforeItAllocates) {
  using W = TypeParam;
  const kit::AllocatorWatch watch;
  const TevRect r[] = {{0, 0, 1, 1}};
  const W v[] = {1};
  const Tev32s one[] = {1}, none[] = {0}, negative[] = {-1};
  for (const bool tilted : {false, true}) {
    TevHaarClassifierState* state = sentinel();
    EXPECT_FAILS(tevStatusNullPtr, (init(nullptr, r, v, v, v, v, one, -1, tilted)));
    EXPECT_FAILS(tevStatusNullPtr, (init(&state, nullptr, v, v, v, v, one, -1, tilted)), state);
    EXPECT_FAILS(tevStatusNullPtr, (init(&state, r, static_cast<W*>(nullptr), v, v, v, one, 1, tilted)), state);
    EXPECT_FAILS(tevStatusNullPtr, (init(&state, r, v, static_cast<W*>(nullptr), v, v, one, 1, tilted)), state);
    EXPECT_FAILS(tevStatusNullPtr, (init(&state, r, v, v, static_cast<W*>(nullptr), v, one, 1, tilted)), state);
    EXPECT_FAILS(tevStatusNullPtr, (init(&state, r, v, v, v, static_cast<W*>(nullptr), one, 1, tilted)), state);
    EXPECT_FAILS(tevStatusNullPtr, (init(&state, r, v, v, v, v, nullptr, 1, tilted)), state);
    EXPECT_FAILS(tevStatusBadSize, (init(&state, r, v, v, v, v, none, -1, tilted)), state);
    EXPECT_FAILS(tevStatusBadSize, (init(&state, r, v, v, v, v, none, 1, tilted)), state);
    EXPECT_FAILS(tevStatusBadSize, (init(&state, r, v, v, v, v, negative, 1, tilted)), state);
  }
  EXPECT_EQ(watch.requests(), 0);
}

TYPED_TEST(HaarStage, RefusesBadRectanglesWithANullStateAndFreesItsBlock) {
  const kit::AllocatorWatch watch;
  const auto statusOf = [&](TevRect bad, bool tilted) {
    Description<TypeParam> d;
    d.add({{2, 2, 1, 1}, {1, 1, 2, 2}}, {1, 1}, 0, 0, 0).add({bad}, {1}, 0, 0, 0);
    TevHaarClassifierState* state = sentinel();
    const TevStatus status = d.init(&state, tilted);
    EXPECT_EQ(state == nullptr, status != tevStatusOk);
    if (state) teviHaarClassifierFree_32s(state);
    return status;
  };
  for (const bool tilted : {false, true}) {
    EXPECT_EQ(statusOf({-1, 0, 1, 1}, tilted), tevStatusBadArg);
    EXPECT_EQ(statusOf({0, -1, 1, 1}, tilted), tevStatusBadArg);
    EXPECT_EQ(statusOf({0, 0, 0, 1}, tilted), tevStatusBadArg);
    EXPECT_EQ(statusOf({0, 0, 1, 0}, tilted), tevStatusBadArg);
    EXPECT_EQ(statusOf({0, 0, 1, 1}, tilted), tevStatusOk);
    EXPECT_EQ(statusOf({INT_MAX, INT_MAX, INT_MAX, INT_MAX}, tilted), tevStatusOk);
  }
  EXPECT_EQ(statusOf({1, 0, 4, 3}, true), tevStatusBadArg);
  EXPECT_EQ(statusOf({1, 0, 4, 2}, true), tevStatusOk);
  EXPECT_EQ(statusOf({1, 0, 4, 3}, false), tevStatusOk);
  EXPECT_EQ(watch.blocksHeld(), 0);
  EXPECT_EQ(watch.strangersFreed(), 0);
}

TYPED_TEST(HaarStage, IsOneBlockAndSaysWhenThereIsNone) {
  Description<TypeParam> d;
  d.add({{2, 2, 1, 1}, {1, 1, 2, 2}}, {1, 1}, 0, 0, 0);
  {
    const kit::AllocatorWatch watch;
    const auto state = d.build();
    EXPECT_EQ(watch.requests(), 1);
    Tev8u select = 1;
    EXPECT_EQ(teviTiltHaarFeatures_32f(&select, 1, state.get()), tevStatusOk);
    EXPECT_EQ(watch.requests(), 1);
  }
  for (const bool tilted : {false, true}) {
    const kit::AllocatorWatch watch(0);
    TevHaarClassifierState* state = sentinel();
    EXPECT_FAILS(tevStatusNoMemory, d.init(&state, tilted), state);
  }
  EXPECT_EQ(teviHaarClassifierFree_32f(nullptr), tevStatusNullPtr);
  EXPECT_EQ(teviHaarClassifierFree_32s(nullptr), tevStatusNullPtr);
}

TEST(HaarStageExample, SizeIsTheLargestColumnOfCAndRowOfA) {
  Description<Tev32f> d;
  d.add({{3, 2, 5, 4}}, {1}, 0, 0, 0).add({{1, 0, 1, 2}, {0, 9, 1, 1}}, {1, 2}, 0, 0, 0);
  TevSize size = {};
  const auto state = d.build();
  EXPECT_EQ(teviGetHaarClassifierSize_32f(state.get(), &size), tevStatusOk);
  EXPECT_EQ(size.width, 8);
  EXPECT_EQ(size.height, 10);
  const auto tilted = d.build(true);
  EXPECT_EQ(teviGetHaarClassifierSize_32s(tilted.get(), &size), tevStatusOk);
  EXPECT_EQ(size.width, 8);
  EXPECT_EQ(size.height, 11);
  EXPECT_FAILS(tevStatusNullPtr, teviGetHaarClassifierSize_32f(nullptr, &size), size);
  EXPECT_EQ(teviGetHaarClassifierSize_32s(state.get(), nullptr), tevStatusNullPtr);
}

// ---- Tilting ----

TYPED_TEST(HaarStage, TiltsTheChosenClassifiersInPlaceAndDropsTheirPosition) {
  Description<TypeParam> d;
  d.add({{3, 2, 5, 4}}, {1}, 0, 0, 0)
      .add({{1, 0, 1, 2}, {0, 0, 1, 1}}, {1, 2}, 0, 0, 0)
      .add({{7, 1, 2, 3}}, {1}, 0, 0, 0);
  for (const int anchor : {0, 1, -9}) {
    const auto state = d.build();
    const auto bound = boundOf(*state);
    const Tev8u select[] = {255, 0, 1};
    ASSERT_EQ(teviTiltHaarFeatures_32f(select, anchor, state.get()), tevStatusOk);
    EXPECT_EQ(state->flags, 1);
    EXPECT_EQ(boundOf(*state), bound);
    // Stored order: the pair, then the two single ones.
    EXPECT_EQ(state->classifiers[0].indexAndTilt, 256);
    EXPECT_EQ(state->classifiers[1].indexAndTilt, 1);
    EXPECT_EQ(state->classifiers[2].indexAndTilt, 1);
    EXPECT_EQ(cornersOf(state->classifiers[0].features[0]), (std::vector{2, 2, 1, 2, 2, 0, 1, 0}));
    EXPECT_EQ(cornersOf(state->classifiers[1].features[0]),
              anchor ? (std::vector{4, 11, -1, 6, 8, 7, 3, 2}) : (std::vector{3, 6, -1, 2, 8, 1, 4, -3}));
    EXPECT_EQ(cornersOf(state->classifiers[2].features[0]),
              anchor ? (std::vector{6, 6, 4, 4, 9, 3, 7, 1}) : (std::vector{7, 4, 4, 1, 9, 2, 6, -1}));
    EXPECT_EQ(teviTiltHaarFeatures_32s(select, anchor, state.get()), tevStatusBadArg);
  }
}

TYPED_TEST(HaarStage, IsNotTiltedTwiceAndNotAtAllWithoutAChoice) {
  Description<TypeParam> d;
  d.add({{1, 1, 1, 1}}, {1}, 0, 0, 0);
  const auto state = d.build(), tilted = d.build(true);
  const Tev8u none = 0, all = 1;
  EXPECT_EQ(teviTiltHaarFeatures_32f(&none, 1, tilted.get()), tevStatusBadArg);
  EXPECT_EQ(teviTiltHaarFeatures_32f(&none, 1, state.get()), tevStatusOk);
  EXPECT_EQ(state->flags, 0);
  EXPECT_EQ(teviTiltHaarFeatures_32f(&none, 1, state.get()), tevStatusOk);
  EXPECT_EQ(teviTiltHaarFeatures_32f(nullptr, 1, state.get()), tevStatusNullPtr);
  EXPECT_EQ(teviTiltHaarFeatures_32f(nullptr, 1, tilted.get()), tevStatusNullPtr);
  EXPECT_EQ(teviTiltHaarFeatures_32f(&all, 1, nullptr), tevStatusNullPtr);
  EXPECT_EQ(teviTiltHaarFeatures_32f(&all, 1, state.get()), tevStatusOk);
  EXPECT_EQ(state->flags, 1);
  d.counts.clear();
  const auto empty = d.build();
  EXPECT_EQ(teviTiltHaarFeatures_32s(&all, 1, empty.get()), tevStatusOk);
  EXPECT_EQ(empty->flags, 0);
}

// ---- Applying ----

TEST(HaarExample, FindsTheEdgeBetweenDarkAndLight) {
  const auto picture = grid<Tev8u>({{0, 0, 0, 9, 9, 9}, {0, 0, 0, 9, 9, 9}});
  Image<Tev32s> sum(7, 3);
  ASSERT_EQ(teviIntegral_8u32s_C1R(picture.data(), picture.step(), sum.data(), sum.step(), picture.size(), 0),
            tevStatusOk);
  // Right half minus left half of a 4 x 2 window is at least 36 norms.
  Description<Tev32f> d;
  d.add({{0, 0, 4, 2}, {2, 0, 2, 2}}, {-1, 2}, 36, 0, 1);
  Image<Tev32f> norm(3, 1);
  norm.fill(1);
  Image<Tev8u> mask(3, 1);
  mask.fill(200);
  Tev32s positive = -1;
  EXPECT_EQ(teviApplyHaarClassifier_32s32f_C1R(sum.data(), sum.step(), norm.data(), norm.step(), mask.data(),
                                               mask.step(), mask.size(), &positive, 1, d.build().get()),
            tevStatusOk);
  EXPECT_EQ(positive, 1);  // 36 is at the threshold exactly, and so is the vote
  EXPECT_SAME_IMAGE(mask, grid<Tev8u>({{0, 200, 0}}));
}

TYPED_TEST(HaarApply, EqualsTheDefinitionOnRandomTables) {
  using W = typename TypeParam::W;
  Random random;
  for (int trial = 0; trial < 120; ++trial) {
    const bool wild = trial % 3 == 0;
    const TevSize roi = {random.between(1, 80), random.between(1, 5)};
    const auto description = randomDescription<W>(random, random.between(0, 9), false, wild);
    if (description.counts.empty()) continue;
    const auto state = description.build(), tilted = randomDescription<W>(random, 4, true, wild).build(true);
    if (trial % 2) {
      std::vector<Tev8u> select;
      for (size_t i = 0; i < description.counts.size(); ++i) select.push_back(random.oneIn(2));
      ASSERT_EQ(teviTiltHaarFeatures_32f(select.data(), trial & 2, state.get()), tevStatusOk);
    }
    for (const auto* stage : {state.get(), tilted.get()}) {
      Scene<TypeParam> scene(random, roi, random.oneIn(3) ? 1000 : random.between(1, 12), wild);
      const W threshold = wild ? random.value<W>() : static_cast<W>(random.between(-8, 8));
      const int scale = TypeParam::mixed ? -random.between(0, 3) : random.between(-40, 40);
      const auto expected = scene.expected(*stage, threshold, scale);
      ASSERT_EQ(apply(TypeParam{}, scene.call(stage, threshold, scale)), tevStatusOk);
      ASSERT_SAME_IMAGE(scene.mask, expected);
      ASSERT_EQ(scene.positive, selected(expected));
    }
  }
}

// Whole weights up to 2^16 over an integer table make exact sums in double precision, up to 31 of them.
TYPED_TEST(HaarApply, EqualsTheDefinitionOnBothSidesOfExactSums) {
  using W = typename TypeParam::W;
  Random random(6);
  for (const int count : {1, 31, 32})
    for (const W weight : {static_cast<W>(65536), static_cast<W>(65537), static_cast<W>(-65536.5)})
      for (const int sparsity : {1000, 2}) {
        Description<W> d;
        for (int k = 0; k < 3; ++k)
          d.add(std::vector<TevRect>(count, {k, 1, 3, 2}), std::vector<W>(count, weight), static_cast<W>(k - 1),
                static_cast<W>(k), static_cast<W>(2 * k + 1));
        const auto state = d.build();
        Scene<TypeParam> scene(random, {70, 3}, sparsity, true);
        const auto expected = scene.expected(*state, 4);
        ASSERT_EQ(apply(TypeParam{}, scene.call(state.get(), 4)), tevStatusOk);
        ASSERT_SAME_IMAGE(scene.mask, expected);
        ASSERT_EQ(scene.positive, selected(expected));
      }
}

TYPED_TEST(HaarApply, IsTheSameWithAnyNumberOfThreads) {
  using W = typename TypeParam::W;
  Random random(1);
  const auto state = randomDescription<W>(random, 12, false, false).build();
  for (const TevSize roi : {TevSize{64, 31}, TevSize{64, 32}, TevSize{67, 95}, TevSize{3000, 2}, TevSize{40000, 1}})
    for (const int sparsity : {20, 2}) {
      const Scene<TypeParam> scene(random, roi, sparsity, false);
      const auto expected = scene.expected(*state, 2);
      for (const int threads : kit::threadCounts) {
        const kit::Threads setting(threads);
        Scene<TypeParam> copy(scene);
        ASSERT_EQ(apply(TypeParam{}, copy.call(state.get(), 2)), tevStatusOk);
        ASSERT_SAME_IMAGE(copy.mask, expected);
        ASSERT_EQ(copy.positive, selected(expected));
      }
    }
}

TYPED_TEST(HaarApply, ReadsNothingAtRejectedPositions) {
  using T = typename TypeParam::T;
  using W = typename TypeParam::W;
  Description<W> d;
  d.add({{0, 0, 3, 3}, {1, 1, 2, 2}}, {1, 1}, 0, 0, 1);
  const auto state = d.build();
  Image<W> norm(40, 1);
  norm.fill(0);
  Image<Tev8u> mask(40, 1);
  mask.fill(0);
  Tev32s positive = -1;
  const auto run = [&](const T* table, int step) {
    return apply(TypeParam{}, {table, step, table, step, norm.data(), norm.step(), mask.data(), mask.step(),
                               mask.size(), &positive, W{1}, state.get(), 0});
  };
  // All rejected: no element is mapped at all.
  EXPECT_EQ(run(reinterpret_cast<const T*>(16), 1 << 20), tevStatusOk);
  EXPECT_EQ(positive, 0);
  // Position 39 of the mask is rejected, and its corners lie behind the table's last mapped element.
  Image<T> tight(43, 4);
  tight.fill(1);
  for (int x = 0; x < 40; ++x) mask.set(x, 0, x < 39);
  EXPECT_EQ(run(tight.data() + 1, tight.step()), tevStatusOk);
  EXPECT_EQ(positive, 39);
}

TYPED_TEST(HaarApply, WithoutClassifiersVotesNothing) {
  using W = typename TypeParam::W;
  Random random(2);
  Description<W> d;
  d.add({{0, 0, 1, 1}}, {1}, 0, 0, 0);
  d.counts.clear();
  const auto state = d.build();
  Scene<TypeParam> scene(random, {37, 3}, 3, false);
  const auto before = scene.mask.clone();
  ASSERT_EQ(apply(TypeParam{}, scene.call(state.get(), 0)), tevStatusOk);
  EXPECT_SAME_IMAGE(scene.mask, before);
  EXPECT_EQ(scene.positive, selected(before));
  ASSERT_EQ(apply(TypeParam{}, scene.call(state.get(), 1)), tevStatusOk);
  EXPECT_EQ(selected(scene.mask), 0);
  EXPECT_EQ(scene.positive, 0);
}

TYPED_TEST(HaarApply, WorksWithoutMemoryAndLeavesNoneBehind) {
  using W = typename TypeParam::W;
  Random random(3);
  const auto state = randomDescription<W>(random, 6, false, false).build();
  for (const int failAt : {-1, 0}) {
    Scene<TypeParam> scene(random, {40, 6}, 2, false);
    const auto expected = scene.expected(*state, 1);
    const kit::AllocatorWatch watch(failAt);
    ASSERT_EQ(apply(TypeParam{}, scene.call(state.get(), 1)), tevStatusOk);
    EXPECT_EQ(watch.requests(), TypeParam::mixed ? 0 : 1);
    EXPECT_EQ(watch.blocksHeld(), 0);
    EXPECT_SAME_IMAGE(scene.mask, expected);
  }
}

TYPED_TEST(HaarApply, ChecksPointersSizeStepsAlignmentAndScale) {
  using F = TypeParam;
  using W = typename F::W;
  Random random(4);
  Description<W> d;
  d.add({{0, 0, 1, 1}}, {1}, 0, 0, 0);
  const auto state = d.build();
  Scene<F> scene(random, {8, 2}, 2, false);
  const auto good = scene.call(state.get(), 1);
  const auto fails = [&](TevStatus status, auto change) {
    auto c = good;
    change(c);
    EXPECT_FAILS(status, apply(F{}, c), scene.mask, scene.positive);
  };
  fails(tevStatusNullPtr, [](auto& c) { c.src = nullptr, c.roi.width = 0; });
  fails(tevStatusNullPtr, [](auto& c) { c.norm = nullptr; });
  fails(tevStatusNullPtr, [](auto& c) { c.mask = nullptr; });
  fails(tevStatusNullPtr, [](auto& c) { c.positive = nullptr; });
  fails(tevStatusNullPtr, [](auto& c) { c.state = nullptr; });
  fails(tevStatusBadSize, [](auto& c) { c.roi.width = 0, c.srcStep = 1; });
  fails(tevStatusBadSize, [](auto& c) { c.roi.height = -1; });
  fails(tevStatusBadStep, [](auto& c) { c.srcStep = 31; });
  fails(tevStatusBadStep, [](auto& c) { c.normStep = 31, c.srcStep = 33; });
  fails(tevStatusBadStep, [](auto& c) { c.maskStep = 7, c.srcStep = 33; });
  fails(tevStatusBadStep, [](auto& c) { c.roi.width = 1 << 30; });
  fails(tevStatusStepNotAligned, [](auto& c) { c.srcStep = 33; });
  fails(tevStatusStepNotAligned, [](auto& c) { c.normStep = 34; });
  if (F::mixed) {
    fails(tevStatusNullPtr, [](auto& c) { c.tilt = nullptr, c.roi.width = 0; });
    fails(tevStatusBadStep, [](auto& c) { c.tiltStep = 31, c.srcStep = 33; });
    fails(tevStatusStepNotAligned, [](auto& c) { c.tiltStep = 33, c.scale = 1; });
  }
  if (std::is_same_v<F, Mixed32s>) fails(tevStatusBadArg, [](auto& c) { c.scale = 1; });
  auto c = good;
  c.srcStep = c.normStep = c.tiltStep = 32;
  c.maskStep = 8;
  EXPECT_EQ(apply(F{}, c), tevStatusOk);
}

TEST(HaarApply32s, IgnoresItsScaleFactorAndWraps) {
  Description<Tev32s> d;
  d.add({{0, 0, 1, 1}}, {1 << 20}, 1 << 20, 3, 5);
  const auto state = d.build();
  const auto src = grid<Tev32s>({{4096, 0}, {0, 0}});  // the product 2^32 wraps to 0
  const auto norm = grid<Tev32s>({{1}});
  for (const int scale : {INT_MIN, -1, 0, 1, INT_MAX}) {
    auto mask = grid<Tev8u>({{1}});
    Tev32s positive = 7;
    ASSERT_EQ(teviApplyHaarClassifier_32s_C1RSfs(src.data(), src.step(), norm.data(), norm.step(), mask.data(), 1,
                                                 {1, 1}, &positive, 4, state.get(), scale),
              tevStatusOk);
    EXPECT_EQ(positive, 0);  // 2^20 is above 0: the vote is 3
  }
}

TEST(HaarApplyMixed32s, ShiftsItsWideSumLeftByTheScaleFactor) {
  Description<Tev32s> d;
  d.add({{0, 0, 1, 1}, {0, 0, 1, 1}}, {1 << 30, 1 << 30}, 1 << 30, 0, 1);
  const auto state = d.build();
  const auto src = grid<Tev32s>({{1, 0}, {0, 0}});  // s = 2^31, and 2^(31 + shift) against 2^30 n
  const auto stays = [&](Tev32s n, int scale) {
    const auto norm = grid<Tev32s>({{n}});
    auto mask = grid<Tev8u>({{1}});
    Tev32s positive = 7;
    EXPECT_EQ(
        teviApplyMixedHaarClassifier_32s_C1RSfs(src.data(), src.step(), src.data(), src.step(), norm.data(),
                                                norm.step(), mask.data(), 1, {1, 1}, &positive, 1, state.get(), scale),
        tevStatusOk);
    return positive == 1;
  };
  EXPECT_TRUE(stays(2, 0));
  EXPECT_FALSE(stays(3, 0));
  EXPECT_TRUE(stays(4, -1));
  EXPECT_FALSE(stays(5, -1));
  EXPECT_FALSE(stays(1, -32));  // 2^63 reads as negative
  EXPECT_TRUE(stays(-3, -32) == false && stays(0, -33));
  EXPECT_FALSE(stays(1, -64));
  EXPECT_TRUE(stays(0, -64));
  EXPECT_FALSE(stays(1, INT_MIN));
}

TEST(HaarApply32f, NanVotesBelowAndASumThatIsNanStays) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
  const auto stays = [](float pixel, float n, float weight, float below, float above, float threshold) {
    Description<Tev32f> d;
    d.add({{0, 0, 1, 1}, {0, 0, 1, 1}}, {weight, 0}, 1, below, above);
    const auto src = grid<Tev32f>({{0, 0}, {0, pixel}});
    const auto norm = grid<Tev32f>({{n}});
    auto mask = grid<Tev8u>({{9}});
    Tev32s positive = 7;
    EXPECT_EQ(teviApplyHaarClassifier_32f_C1R(src.data(), src.step(), norm.data(), norm.step(), mask.data(), 1, {1, 1},
                                              &positive, threshold, d.build().get()),
              tevStatusOk);
    EXPECT_EQ(mask.at(0, 0), positive ? 9 : 0);
    return positive == 1;
  };
  EXPECT_TRUE(stays(5, 5, 1, 0, 1, 1));
  EXPECT_FALSE(stays(5, 5.0000005F, 1, 0, 1, 1));
  EXPECT_FALSE(stays(5, nan, 1, 0, 1, 1));
  EXPECT_FALSE(stays(nan, 5, 1, 0, 1, 1));
  EXPECT_FALSE(stays(inf, 5, 1, 0, 1, 1));    // infinity times the weight 0 is NaN
  EXPECT_TRUE(stays(3e38F, -1, 1, 0, 1, 1));  // no overflow of the terms hides the vote
  EXPECT_FALSE(stays(3e38F, 5, -1, 0, 1, 1));
  EXPECT_TRUE(stays(5, 5, 1, 0, nan, 1));
  EXPECT_TRUE(stays(5, 5, 1, 0, 1, nan));
  EXPECT_FALSE(stays(5, 5, 1, nan, -1, 0));  // a vote that is not cast
  EXPECT_FALSE(stays(5, 9, 1, -1, nan, 0));
  EXPECT_TRUE(stays(5, 9, 1, inf, 0, inf));
  EXPECT_FALSE(stays(5, 9, 1, -inf, 0, 1));
  EXPECT_TRUE(stays(1e-45F, 1e-45F, 1, 0, 1, 1));
}

TEST(HaarApply32f, DecidesByExtendedPrecision) {
  // s = 1 + 2^-60 - ..., told from 1 only by a significand of 64 bits: many positions, so that they run together.
  Description<Tev32f> d;
  d.add({{0, 0, 1, 1}, {2, 0, 1, 1}}, {1, 0x1p-60F}, 1, 0, 1);
  const auto state = d.build();
  Image<Tev32f> src(40, 2), norm(32, 1);
  src.fill(0);
  norm.fill(1);
  for (int x = 0; x < 40; ++x) src.set(x, 1, x % 2 ? 1.0F : 0.0F);
  Image<Tev8u> mask(32, 1);
  mask.fill(1);
  // T[A] - T[B] is +1 at even positions and -1 at odd ones, for both rectangles.
  Tev32s positive = 0;
  ASSERT_EQ(teviApplyHaarClassifier_32f_C1R(src.data(), src.step(), norm.data(), norm.step(), mask.data(), mask.step(),
                                            mask.size(), &positive, 1, state.get()),
            tevStatusOk);
  EXPECT_EQ(positive, 16);
  Description<Tev32f> less;
  less.add({{0, 0, 1, 1}, {2, 0, 1, 1}}, {1, -0x1p-60F}, 1, 0, 1);
  mask.fill(1);
  ASSERT_EQ(teviApplyHaarClassifier_32f_C1R(src.data(), src.step(), norm.data(), norm.step(), mask.data(), mask.step(),
                                            mask.size(), &positive, 1, less.build().get()),
            tevStatusOk);
  EXPECT_EQ(positive, 0);
}

TEST(HaarWorker, CoversItsWholeRegion) {
  Random random(5);
  const auto state = randomDescription<Tev32f>(random, 6, false, true).build();
  Scene<Form32f> scene(random, {70, 40}, 4, true);
  const auto expected = scene.expected(*state, 10);
  const auto c = scene.call(state.get(), 10);
  ASSERT_EQ(ownApplyHaarClassifier_32f_C1R(c.src, c.srcStep, c.norm, c.normStep, c.mask, c.maskStep, c.roi, c.positive,
                                           c.threshold, c.state),
            tevStatusOk);
  EXPECT_SAME_IMAGE(scene.mask, expected);
  EXPECT_EQ(scene.positive, selected(expected));
}
