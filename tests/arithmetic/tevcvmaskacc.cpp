#include "arithmetic/accumulators.h"
#include "tevcv/arithmetic.h"
#include "tevcv_internal/arithmetic.h"

using namespace accumulators;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

// The members of one source type.
template <class S>
struct Members {
  TevStatus (*add)(const S*, int, const Tev8u*, int, Tev32f*, int, TevSize);
  TevStatus (*addSquare)(const S*, int, const Tev8u*, int, Tev32f*, int, TevSize);
  TevStatus (*addProduct)(const S*, int, const S*, int, const Tev8u*, int, Tev32f*, int, TevSize);
  TevStatus (*addWeighted)(const S*, int, const Tev8u*, int, Tev32f*, int, TevSize, Tev32f);
};
template <class S>
constexpr Members<S> members();
template <>
constexpr Members<Tev8u> members() {
  return {teviAdd_8u32f_C1IMR, teviAddSquare_8u32f_C1IMR, teviAddProduct_8u32f_C1IMR, teviAddWeighted_8u32f_C1IMR};
}
template <>
constexpr Members<Tev8s> members() {
  return {teviAdd_8s32f_C1IMR, teviAddSquare_8s32f_C1IMR, teviAddProduct_8s32f_C1IMR, teviAddWeighted_8s32f_C1IMR};
}
template <>
constexpr Members<Tev16u> members() {
  return {teviAdd_16u32f_C1IMR, teviAddSquare_16u32f_C1IMR, teviAddProduct_16u32f_C1IMR, teviAddWeighted_16u32f_C1IMR};
}
template <>
constexpr Members<Tev32f> members() {
  return {teviAdd_32f_C1IMR, teviAddSquare_32f_C1IMR, teviAddProduct_32f_C1IMR, teviAddWeighted_32f_C1IMR};
}

template <class S>
class AccumulateMasked : public testing::Test {
 protected:
  // Runs `call(accumulator)` and holds the accumulator against `value(a, s1, s2, keep)`.
  template <class Call, class Value>
  void compare(const Image<Tev32f>& start, const Image<S>& s1, const Image<S>& s2, const Image<Tev8u>& mask, Call call,
               Value value) {
    auto a = start.clone();
    ASSERT_EQ(call(a), tevStatusOk);
    Image<Tev32f> expected(a.width(), a.height());
    for (int y = 0; y < a.height(); ++y)
      for (int x = 0; x < a.width(); ++x)
        expected.set(x, y, value(start.at(x, y), s1.at(x, y), s2.at(x, y), maskOf(mask.at(x, y))));
    ASSERT_SAME_IMAGE(a, expected);
  }
};
using Types = testing::Types<Tev8u, Tev8s, Tev16u, Tev32f>;
TYPED_TEST_SUITE(AccumulateMasked, Types);

}  // namespace

TEST(AccumulateMaskedExample, AddsWhereTheMaskIsNotZero) {
  const auto s = grid<Tev8u>({{1, 2, 3}, {4, 5, 6}}), mask = grid<Tev8u>({{0, 1, 255}, {128, 0, 2}});
  auto a = grid<Tev32f>({{0.5F, 0.5F, 0.5F}, {0, 0, 0}});
  EXPECT_EQ(teviAdd_8u32f_C1IMR(s.data(), s.step(), mask.data(), mask.step(), a.data(), a.step(), a.size()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{0.5F, 2.5F, 3.5F}, {4, 0, 6}}));
  EXPECT_EQ(teviAddSquare_8u32f_C1IMR(s.data(), s.step(), mask.data(), mask.step(), a.data(), a.step(), a.size()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{0.5F, 6.5F, 12.5F}, {20, 0, 42}}));
}

TEST(AccumulateMaskedExample, AnEmptyMaskLeavesFiniteElementsAsTheyAre) {
  Random random;
  const auto s = random.image<Tev8u>(70, 3);
  const auto mask = Image<Tev8u>(70, 3).fill(0).clone();
  auto a = random.image<Tev32f>(70, 3);
  const auto before = a.clone();
  EXPECT_EQ(teviAdd_8u32f_C1IMR(s.data(), s.step(), mask.data(), mask.step(), a.data(), a.step(), a.size()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(a, before);
}

TEST(AccumulateMaskedExample, ANanUnderTheMaskReachesTheAccumulatorOfFloats) {
  const auto s = grid<Tev32f>({{quietNan, inf, -inf, 5, quietNan}});
  const auto left = grid<Tev8u>({{0, 0, 0, 0, 1}});
  auto a = grid<Tev32f>({{1, 2, 3, 4, 5}}), b = a.clone(), c = a.clone(), d = a.clone();
  const auto expected = grid<Tev32f>({{quietNan, quietNan, quietNan, 4, quietNan}});
  const int ss = s.step(), ms = left.step(), as = a.step();
  EXPECT_EQ(teviAdd_32f_C1IMR(s.data(), ss, left.data(), ms, a.data(), as, a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, expected);
  EXPECT_EQ(teviAddSquare_32f_C1IMR(s.data(), ss, left.data(), ms, b.data(), as, a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(b, expected);
  EXPECT_EQ(teviAddProduct_32f_C1IMR(s.data(), ss, s.data(), ss, left.data(), ms, c.data(), as, a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(c, expected);
  EXPECT_EQ(teviAddWeighted_32f_C1IMR(s.data(), ss, left.data(), ms, d.data(), as, a.size(), 0.5F), tevStatusOk);
  EXPECT_SAME_IMAGE(d, expected);
}

TEST(AccumulateMaskedExample, AnInfiniteAccumulatorUnderTheMaskOfABlendBecomesNan) {
  const auto s = grid<Tev8u>({{1, 2, 3}}), mask = grid<Tev8u>({{0, 0, 0}});
  auto a = grid<Tev32f>({{inf, -inf, 7}});
  EXPECT_EQ(
      teviAddWeighted_8u32f_C1IMR(s.data(), s.step(), mask.data(), mask.step(), a.data(), a.step(), a.size(), 0.5F),
      tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{quietNan, quietNan, 7}}));
}

TEST(AccumulateMaskedExample, AHugeSquareUnderTheMaskStaysFinite) {
  const auto s = grid<Tev32f>({{3e38F, -3e38F}});
  const auto mask = grid<Tev8u>({{0, 0}});
  auto a = grid<Tev32f>({{1, 3e38F}});
  const auto before = a.clone();
  EXPECT_EQ(teviAddSquare_32f_C1IMR(s.data(), s.step(), mask.data(), mask.step(), a.data(), a.step(), a.size()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(a, before);
  EXPECT_EQ(teviAddWeighted_32f_C1IMR(s.data(), s.step(), mask.data(), mask.step(), a.data(), a.step(), a.size(), 1),
            tevStatusOk);
  EXPECT_SAME_IMAGE(a, before);
}

TYPED_TEST(AccumulateMasked, NegativeZeroUnderTheMaskBecomesZeroUnlessTheTermIsNegativeZero) {
  using S = TypeParam;
  constexpr auto m = members<S>();
  const auto s = Image<S>(5, 1).fill(3).clone();
  const auto mask = Image<Tev8u>(5, 1).fill(0).clone();
  const auto start = Image<Tev32f>(5, 1).fill(-0.0F).clone(), zero = Image<Tev32f>(5, 1).fill(0.0F).clone();
  const int ss = s.step(), ms = mask.step(), as = start.step();
  auto a = start.clone();
  EXPECT_EQ(m.add(s.data(), ss, mask.data(), ms, a.data(), as, a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, zero);
  a = start.clone();
  EXPECT_EQ(m.addSquare(s.data(), ss, mask.data(), ms, a.data(), as, a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, zero);
  a = start.clone();
  EXPECT_EQ(m.addProduct(s.data(), ss, s.data(), ss, mask.data(), ms, a.data(), as, a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, zero);
  a = start.clone();
  EXPECT_EQ(m.addWeighted(s.data(), ss, mask.data(), ms, a.data(), as, a.size(), 0.5F), tevStatusOk);
  EXPECT_SAME_IMAGE(a, zero);
  if constexpr (std::is_signed_v<S>) {
    // -3 * 0.0 is -0.0 where the mask is a factor; as an integer it is 0.
    const auto negative = Image<S>(5, 1).fill(-3).clone();
    a = start.clone();
    EXPECT_EQ(m.add(negative.data(), ss, mask.data(), ms, a.data(), as, a.size()), tevStatusOk);
    EXPECT_SAME_IMAGE(a, std::is_integral_v<S> ? zero : start);
    a = start.clone();
    EXPECT_EQ(m.addWeighted(negative.data(), ss, mask.data(), ms, a.data(), as, a.size(), 0.5F), tevStatusOk);
    EXPECT_SAME_IMAGE(a, start);
  }
}

TEST(AccumulateMaskedTable, HoldsTheFactorsOfAMask) {
  EXPECT_EQ(_tevcvMaskCoeff[0], 0.0F);
  EXPECT_EQ(_tevcvMaskCoeff[1], 1.0F);
}

TYPED_TEST(AccumulateMasked, EqualsTheDefinitionOnRandomRegions) {
  using S = TypeParam;
  constexpr auto m = members<S>();
  Random random;
  for (int trial = 0; trial < 400; ++trial) {
    const int width = random.oneIn(8) ? 1 : random.between(1, 200), height = random.between(1, 4);
    const auto kind = static_cast<Floats>(trial % 4);
    const auto a = accumulator(random, width, height, kind);
    const auto s = source<S>(random, width, height, kind), t = source<S>(random, width, height, kind);
    const auto mask = random.mask(width, height);
    const Tev32f alpha = weight(random);
    this->compare(
        a, s, t, mask,
        [&](auto& to) { return m.add(s.data(), s.step(), mask.data(), mask.step(), to.data(), to.step(), to.size()); },
        [](Tev32f old, S p, S, Mask keep) { return add(old, p, keep); });
    this->compare(
        a, s, t, mask,
        [&](auto& to) {
          return m.addSquare(s.data(), s.step(), mask.data(), mask.step(), to.data(), to.step(), to.size());
        },
        [](Tev32f old, S p, S, Mask keep) { return addProduct(old, p, p, keep); });
    this->compare(
        a, s, t, mask,
        [&](auto& to) {
          return m.addProduct(s.data(), s.step(), t.data(), t.step(), mask.data(), mask.step(), to.data(), to.step(),
                              to.size());
        },
        [](Tev32f old, S p, S q, Mask keep) { return addProduct(old, p, q, keep); });
    this->compare(
        a, s, t, mask,
        [&](auto& to) {
          return m.addWeighted(s.data(), s.step(), mask.data(), mask.step(), to.data(), to.step(), to.size(), alpha);
        },
        [=](Tev32f old, S p, S, Mask keep) { return addWeighted(old, p, alpha, keep); });
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(AccumulateMasked, ChecksPointersThenSizeThenStepsThenAlignment) {
  using S = TypeParam;
  constexpr auto m = members<S>();
  constexpr int size = sizeof(S);
  Image<S> s(8, 4, 8), t(8, 4, 8);
  Image<Tev8u> mask(8, 4, 8);
  Image<Tev32f> a(8, 4, 8);
  const S* const null = nullptr;
  const int ss = s.step(), ms = mask.step(), as = a.step(), full = 8 * size;
  const TevSize roi = {8, 4}, empty = {0, 4}, flat = {8, 0}, huge = {1 << 30, 4};
  const auto each = [&](TevStatus status, const S* src, int srcStep, const Tev8u* sel, int selStep, Tev32f* to,
                        int toStep, TevSize r) {
    EXPECT_FAILS(status, m.add(src, srcStep, sel, selStep, to, toStep, r), a);
    EXPECT_FAILS(status, m.addSquare(src, srcStep, sel, selStep, to, toStep, r), a);
    EXPECT_FAILS(status, m.addWeighted(src, srcStep, sel, selStep, to, toStep, r, 0.5F), a);
    EXPECT_FAILS(status, m.addProduct(src, srcStep, t.data(), ss, sel, selStep, to, toStep, r), a);
    EXPECT_FAILS(status, m.addProduct(t.data(), ss, src, srcStep, sel, selStep, to, toStep, r), a);
  };
  each(tevStatusNullPtr, null, 0, mask.data(), ms, a.data(), as, empty);
  each(tevStatusNullPtr, s.data(), 0, nullptr, ms, a.data(), as, empty);
  each(tevStatusNullPtr, s.data(), ss, mask.data(), 0, nullptr, as, flat);
  each(tevStatusBadSize, s.data(), 0, mask.data(), 0, a.data(), as, empty);
  each(tevStatusBadSize, s.data(), ss, mask.data(), ms, a.data(), 0, flat);
  each(tevStatusBadStep, s.data(), full - 1, mask.data(), ms, a.data(), as, roi);
  each(tevStatusBadStep, s.data(), ss, mask.data(), 7, a.data(), as, roi);
  each(tevStatusBadStep, s.data(), ss, mask.data(), ms, a.data(), 31, roi);
  each(tevStatusBadStep, s.data(), ss, mask.data(), ms, a.data(), as, huge);
  each(tevStatusBadStep, s.data(), ss, mask.data(), 7, a.data(), 33, roi);
  each(tevStatusStepNotAligned, s.data(), ss, mask.data(), 9, a.data(), 33, roi);
  if (size > 1) each(tevStatusStepNotAligned, s.data(), full + 1, mask.data(), ms, a.data(), as, roi);
  // A broken source and a short mask or accumulator: 16-bit members finish their sources first.
  const TevStatus both = size == 2 ? tevStatusStepNotAligned : tevStatusBadStep;
  each(both, s.data(), full + 1, mask.data(), 7, a.data(), as, roi);
  each(both, s.data(), full + 1, mask.data(), ms, a.data(), 31, roi);
  if (size > 1) {
    EXPECT_FAILS(tevStatusBadStep,
                 m.addProduct(s.data(), full + 1, t.data(), full - 1, mask.data(), ms, a.data(), as, roi), a);
  }
  EXPECT_EQ(m.addProduct(s.data(), full, t.data(), full, mask.data(), 8, a.data(), 32, roi), tevStatusOk);
}
