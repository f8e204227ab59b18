#include "arithmetic/accumulators.h"
#include "tevcv/arithmetic.h"

using namespace accumulators;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

// The members of one source type.
template <class S>
struct Members {
  TevStatus (*add)(const S*, int, Tev32f*, int, TevSize);
  TevStatus (*addSquare)(const S*, int, Tev32f*, int, TevSize);
  TevStatus (*addProduct)(const S*, int, const S*, int, Tev32f*, int, TevSize);
  TevStatus (*addWeighted)(const S*, int, Tev32f*, int, TevSize, Tev32f);
};
template <class S>
constexpr Members<S> members();
template <>
constexpr Members<Tev8u> members() {
  return {teviAdd_8u32f_C1IR, teviAddSquare_8u32f_C1IR, teviAddProduct_8u32f_C1IR, teviAddWeighted_8u32f_C1IR};
}
template <>
constexpr Members<Tev8s> members() {
  return {teviAdd_8s32f_C1IR, teviAddSquare_8s32f_C1IR, teviAddProduct_8s32f_C1IR, teviAddWeighted_8s32f_C1IR};
}
template <>
constexpr Members<Tev16u> members() {
  return {teviAdd_16u32f_C1IR, teviAddSquare_16u32f_C1IR, teviAddProduct_16u32f_C1IR, teviAddWeighted_16u32f_C1IR};
}
template <>
constexpr Members<Tev32f> members() {
  return {nullptr, teviAddSquare_32f_C1IR, teviAddProduct_32f_C1IR, teviAddWeighted_32f_C1IR};
}

template <class S>
class Accumulate : public testing::Test {
 protected:
  // Runs `call(accumulator, src1, src2)` and holds the accumulator against `value(a, s1, s2)`.
  template <class Call, class Value>
  void compare(const Image<Tev32f>& start, const Image<S>& s1, const Image<S>& s2, Call call, Value value) {
    auto a = start.clone();
    ASSERT_EQ(call(a), tevStatusOk);
    Image<Tev32f> expected(a.width(), a.height());
    for (int y = 0; y < a.height(); ++y)
      for (int x = 0; x < a.width(); ++x) expected.set(x, y, value(start.at(x, y), s1.at(x, y), s2.at(x, y)));
    ASSERT_SAME_IMAGE(a, expected);
  }
};
using Types = testing::Types<Tev8u, Tev8s, Tev16u, Tev32f>;
TYPED_TEST_SUITE(Accumulate, Types);

}  // namespace

TEST(AccumulateExample, AddsImagesTheirSquaresProductsAndBlends) {
  const auto s = grid<Tev8u>({{0, 1, 2}, {10, 100, 255}}), t = grid<Tev8u>({{3, 3, 3}, {2, 2, 255}});
  auto a = grid<Tev32f>({{0.5F, 0.5F, 0.5F}, {-1, 0, 1}});
  EXPECT_EQ(teviAdd_8u32f_C1IR(s.data(), s.step(), a.data(), a.step(), a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{0.5F, 1.5F, 2.5F}, {9, 100, 256}}));
  EXPECT_EQ(teviAddSquare_8u32f_C1IR(s.data(), s.step(), a.data(), a.step(), a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{0.5F, 2.5F, 6.5F}, {109, 10100, 65281}}));
  EXPECT_EQ(teviAddProduct_8u32f_C1IR(s.data(), s.step(), t.data(), t.step(), a.data(), a.step(), a.size()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{0.5F, 5.5F, 12.5F}, {129, 10300, 130306}}));
  a = grid<Tev32f>({{0, 5, 2}, {2, 0, 255}});
  EXPECT_EQ(teviAddWeighted_8u32f_C1IR(s.data(), s.step(), a.data(), a.step(), a.size(), 0.25F), tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{0, 4, 2}, {4, 25, 255}}));
}

TEST(AccumulateExample, AddsSignedBytesAsSigned) {
  const auto s = grid<Tev8s>({{-128, 127, -1}});
  auto a = grid<Tev32f>({{0, 0, 0}});
  EXPECT_EQ(teviAdd_8s32f_C1IR(s.data(), s.step(), a.data(), a.step(), a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{-128, 127, -1}}));
}

TEST(AccumulateExample, ZeroTimesANegativeByteIsNegativeZero) {
  const auto s = grid<Tev8s>({{0, 0, -1}}), t = grid<Tev8s>({{-3, 3, 0}});
  auto a = grid<Tev32f>({{-0.0F, -0.0F, -0.0F}});
  EXPECT_EQ(teviAddProduct_8s32f_C1IR(s.data(), s.step(), t.data(), t.step(), a.data(), a.step(), a.size()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{-0.0F, 0.0F, -0.0F}}));
}

TEST(AccumulateExample, SquaresOf16uAreUnsigned) {
  const auto s = grid<Tev16u>({{65535, 46341, 0}});
  auto a = grid<Tev32f>({{0, 0, 0}});
  EXPECT_EQ(teviAddSquare_16u32f_C1IR(s.data(), s.step(), a.data(), a.step(), a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{static_cast<float>(4294836225.0), static_cast<float>(2147488281.0), 0}}));
}

TEST(AccumulateExample, AFullWeightGivesTheSourceAndNoneLeavesTheAccumulator) {
  const auto s = grid<Tev32f>({{1, -2.5F, 1e30F, 0}});
  auto a = grid<Tev32f>({{3, 0.5F, 1e30F, -7}});
  const auto before = a.clone();
  EXPECT_EQ(teviAddWeighted_32f_C1IR(s.data(), s.step(), a.data(), a.step(), a.size(), 0), tevStatusOk);
  EXPECT_SAME_IMAGE(a, before);
  EXPECT_EQ(teviAddWeighted_32f_C1IR(s.data(), s.step(), a.data(), a.step(), a.size(), 1), tevStatusOk);
  EXPECT_SAME_IMAGE(a, s);
}

TEST(AccumulateExample, ABlendOfFarMagnitudesFollowsItsFormula) {
  // (s - a) loses s in 64 bits, so the accumulator ends at 0; weights (1 - alpha) and alpha would give s.
  const auto s = grid<Tev32f>({{1}});
  auto a = grid<Tev32f>({{1e30F}});
  EXPECT_EQ(teviAddWeighted_32f_C1IR(s.data(), s.step(), a.data(), a.step(), a.size(), 1), tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{0}}));
}

TEST(AccumulateExample, ABlendJustBelowTheLeastNormalFloatIsNotRoundedTwice) {
  // A little less than halfway from the largest subnormal to the least normal float: in double it lies on the middle.
  for (const Tev32f sign : {1.0F, -1.0F}) {
    const auto s = grid<Tev32f>({{sign * 0x1.d0c278p-124F}});
    auto a = grid<Tev32f>({{sign * 0x1.ffffdcp-127F}});
    EXPECT_EQ(teviAddWeighted_32f_C1IR(s.data(), s.step(), a.data(), a.step(), a.size(), 0x1.5b8p-23F), tevStatusOk);
    EXPECT_SAME_IMAGE(a, grid<Tev32f>({{sign * 0x1.fffffcp-127F}}));
  }
}

TEST(AccumulateExample, FarApartTermsRoundAsExtendedPrecisionDoes) {
  // 2^24 + 1 lies between two floats. What is added decides if extended precision holds it (2^-30), and is lost
  // otherwise (2^-60); in double both would be lost.
  const auto s = grid<Tev32f>({{4097, 4097}}), t = grid<Tev32f>({{4095, 4095}});  // product 2^24 - 1
  const auto u = grid<Tev16u>({{257, 257}}), v = grid<Tev16u>({{65281, 65281}});  // product 2^24 + 1
  auto a = grid<Tev32f>({{std::ldexp(1.0F, -30), std::ldexp(1.0F, -60)}}), b = a.clone();
  EXPECT_EQ(teviAddProduct_16u32f_C1IR(u.data(), u.step(), v.data(), v.step(), a.data(), a.step(), a.size()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{16777218, 16777216}}));
  EXPECT_EQ(teviAddProduct_32f_C1IR(s.data(), s.step(), t.data(), t.step(), b.data(), b.step(), b.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(b, grid<Tev32f>({{16777215, 16777215}}));
}

TEST(AccumulateExample, ProductsOfFloatsDoNotOverflowBeforeTheSum) {
  const auto s = grid<Tev32f>({{1e30F, 1e-30F, inf}}), t = grid<Tev32f>({{-1e30F, 1e-30F, 0}});
  auto a = grid<Tev32f>({{inf, 1e-45F, 1}});
  EXPECT_EQ(teviAddProduct_32f_C1IR(s.data(), s.step(), t.data(), t.step(), a.data(), a.step(), a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, grid<Tev32f>({{inf, 1e-45F, quietNan}}));
}

TYPED_TEST(Accumulate, EqualsTheDefinitionOnRandomRegions) {
  using S = TypeParam;
  constexpr auto m = members<S>();
  Random random;
  for (int trial = 0; trial < 400; ++trial) {
    const int width = random.oneIn(8) ? 1 : random.between(1, 200), height = random.between(1, 4);
    const auto kind = static_cast<Floats>(trial % 4);
    const auto a = accumulator(random, width, height, kind);
    const auto s = source<S>(random, width, height, kind), t = source<S>(random, width, height, kind);
    const Tev32f alpha = weight(random);
    if constexpr (!std::is_same_v<S, Tev32f>)
      this->compare(
          a, s, t, [&](auto& to) { return m.add(s.data(), s.step(), to.data(), to.step(), to.size()); },
          [](Tev32f old, S p, S) { return add(old, p, Mask::none); });
    this->compare(
        a, s, t, [&](auto& to) { return m.addSquare(s.data(), s.step(), to.data(), to.step(), to.size()); },
        [](Tev32f old, S p, S) { return addProduct(old, p, p, Mask::none); });
    this->compare(
        a, s, t,
        [&](auto& to) { return m.addProduct(s.data(), s.step(), t.data(), t.step(), to.data(), to.step(), to.size()); },
        [](Tev32f old, S p, S q) { return addProduct(old, p, q, Mask::none); });
    this->compare(
        a, s, t, [&](auto& to) { return m.addWeighted(s.data(), s.step(), to.data(), to.step(), to.size(), alpha); },
        [=](Tev32f old, S p, S) { return addWeighted(old, p, alpha, Mask::none); });
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(Accumulate, LongRunsOfSumsThatFallBetweenFloatsEqualTheDefinition) {
  using S = TypeParam;
  constexpr auto m = members<S>();
  Random random;
  // Accumulators on the middle of two products' neighbourhood: a power of two plus a far smaller part.
  for (int trial = 0; trial < 60; ++trial) {
    const auto a = random.image<Tev32f>(
        333, 2, [&] { return std::ldexp(static_cast<Tev32f>(random.between(1, 1 << 24)), random.between(-60, 40)); });
    const auto s = source<S>(random, 333, 2, Floats::whole), t = source<S>(random, 333, 2, Floats::whole);
    const Tev32f alpha = std::ldexp(1.0F, -random.between(0, 30));
    this->compare(
        a, s, t,
        [&](auto& to) { return m.addProduct(s.data(), s.step(), t.data(), t.step(), to.data(), to.step(), to.size()); },
        [](Tev32f old, S p, S q) { return addProduct(old, p, q, Mask::none); });
    this->compare(
        a, s, t, [&](auto& to) { return m.addWeighted(s.data(), s.step(), to.data(), to.step(), to.size(), alpha); },
        [=](Tev32f old, S p, S) { return addWeighted(old, p, alpha, Mask::none); });
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(Accumulate, BlendsNearTheMiddleOfTwoFloatsEqualTheDefinition) {
  using S = TypeParam;
  Random random;
  // Accumulators a few last places from their source, weights near a fraction of small numbers: the blend falls on the
  // middle of two floats or beside it. Others far below the source, 0, or among the smallest floats.
  for (int trial = 0; trial < 80; ++trial) {
    const auto s = random.image<S>(301, 2, [&] {
      return random.oneIn(8) ? S{0} : static_cast<S>(random.between(0, std::is_signed_v<S> ? 127 : 255));
    });
    auto a = random.image<Tev32f>(301, 2, [&] { return std::ldexp(random.real(1.0F), random.between(-148, 9)); });
    const int style = trial % 4;
    for (int y = 0; y < 2; ++y)
      for (int x = 0; x < 301; ++x) {
        const auto near = static_cast<Tev32f>(s.at(x, y));
        if (style == 0) a.set(x, y, near + static_cast<Tev32f>(random.between(-60, 60)) * std::ldexp(near, -23));
        if (style == 1) a.set(x, y, std::fabs(std::ldexp(random.real(1.0F), random.between(-30, 9))));
        if (style == 2) a.set(x, y, static_cast<Tev32f>(random.between(0, 1 << 20)) * 0x1p-12F);
      }
    const Tev32f weights[] = {0.05F, 0.1F, 0.5F, 0.25F, 0.0625F, 0x1p-12F, 0x1.8p-12F, 0.499999F};
    const Tev32f alpha = trial < 64 ? weights[trial / 8] : std::fabs(random.real(0.5F));
    this->compare(
        a, s, s,
        [&](auto& to) { return members<S>().addWeighted(s.data(), s.step(), to.data(), to.step(), to.size(), alpha); },
        [=](Tev32f old, S p, S) { return addWeighted(old, p, alpha, Mask::none); });
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(Accumulate, ManyBlendsInARowStayWithTheDefinition) {
  using S = TypeParam;
  Random random;
  // A run towards its sources passes all distances from them, and towards 0 all floats down to the smallest.
  const auto s = random.image<S>(70, 3, [&] { return static_cast<S>(random.oneIn(4) ? 0 : random.between(0, 127)); });
  auto a = random.image<Tev32f>(70, 3, [&] { return std::fabs(random.real(255.0F)); }), expected = a.clone();
  for (int frame = 0; frame < 700; ++frame) {
    const Tev32f alpha = frame < 300 ? 0.05F : 0.25F;
    ASSERT_EQ(members<S>().addWeighted(s.data(), s.step(), a.data(), a.step(), a.size(), alpha), tevStatusOk);
    for (int y = 0; y < 3; ++y)
      for (int x = 0; x < 70; ++x) expected.set(x, y, addWeighted(expected.at(x, y), s.at(x, y), alpha, Mask::none));
  }
  EXPECT_SAME_IMAGE(a, expected);
}

TEST(AccumulateOfFloats, MayTakeTheAccumulatorAsItsSource) {
  Random random;
  const auto start = random.image<Tev32f>(150, 3);
  auto square = start.clone(), product = start.clone(), blend = start.clone();
  const int step = square.step();
  ASSERT_EQ(teviAddSquare_32f_C1IR(square.data(), step, square.data(), step, start.size()), tevStatusOk);
  ASSERT_EQ(teviAddProduct_32f_C1IR(product.data(), step, product.data(), step, product.data(), step, start.size()),
            tevStatusOk);
  ASSERT_EQ(teviAddWeighted_32f_C1IR(blend.data(), step, blend.data(), step, start.size(), 0.3F), tevStatusOk);
  Image<Tev32f> expected(150, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 150; ++x)
      expected.set(x, y, addProduct(start.at(x, y), start.at(x, y), start.at(x, y), Mask::none));
  EXPECT_SAME_IMAGE(square, expected);
  EXPECT_SAME_IMAGE(product, expected);
  EXPECT_SAME_IMAGE(blend, start);
}

TYPED_TEST(Accumulate, ChecksPointersThenSizeThenStepsThenAlignment) {
  using S = TypeParam;
  constexpr auto m = members<S>();
  constexpr int size = sizeof(S);
  Image<S> s(8, 4, 8), t(8, 4, 8);
  Image<Tev32f> a(8, 4, 8);
  const S* const null = nullptr;
  const int ss = s.step(), as = a.step(), full = 8 * size;
  const TevSize roi = {8, 4}, empty = {0, 4}, flat = {8, 0}, huge = {1 << 30, 4};
  // Every family with one source, as one call.
  const auto each = [&](TevStatus status, const S* src, int srcStep, Tev32f* to, int toStep, TevSize r) {
    if constexpr (!std::is_same_v<S, Tev32f>) {
      EXPECT_FAILS(status, m.add(src, srcStep, to, toStep, r), a);
    }
    EXPECT_FAILS(status, m.addSquare(src, srcStep, to, toStep, r), a);
    EXPECT_FAILS(status, m.addWeighted(src, srcStep, to, toStep, r, 0.5F), a);
    EXPECT_FAILS(status, m.addProduct(src, srcStep, t.data(), ss, to, toStep, r), a);
    EXPECT_FAILS(status, m.addProduct(t.data(), ss, src, srcStep, to, toStep, r), a);
  };
  each(tevStatusNullPtr, null, 0, a.data(), as, empty);
  each(tevStatusNullPtr, s.data(), ss, nullptr, 0, flat);
  each(tevStatusBadSize, s.data(), 0, a.data(), as, empty);
  each(tevStatusBadSize, s.data(), ss, a.data(), 0, flat);
  each(tevStatusBadSize, s.data(), ss, a.data(), as, {-1, -1});
  each(tevStatusBadStep, s.data(), full - 1, a.data(), as, roi);
  each(tevStatusBadStep, s.data(), ss, a.data(), 31, roi);
  each(tevStatusBadStep, s.data(), -ss, a.data(), as, roi);
  each(tevStatusBadStep, s.data(), ss, a.data(), as, huge);
  each(tevStatusStepNotAligned, s.data(), ss, a.data(), 33, roi);
  if (size == 1) {
    EXPECT_EQ(m.addSquare(s.data(), 9, a.data(), as, roi), tevStatusOk);
  } else {
    each(tevStatusStepNotAligned, s.data(), full + 1, a.data(), as, roi);
    each(tevStatusStepNotAligned, s.data(), full + 1, a.data(), 33, roi);
  }
  // A broken source and a short accumulator: 16-bit members finish their sources first.
  if (size == 2) each(tevStatusStepNotAligned, s.data(), full + 1, a.data(), 31, roi);
  if (size == 4) each(tevStatusBadStep, s.data(), full + 1, a.data(), 31, roi);
  // Two bad sources: both floors come before either alignment.
  if (size > 1) {
    EXPECT_FAILS(tevStatusBadStep, m.addProduct(s.data(), full + 1, t.data(), full - 1, a.data(), as, roi), a);
    EXPECT_FAILS(tevStatusBadStep, m.addProduct(s.data(), full - 1, t.data(), full + 1, a.data(), as, roi), a);
  }
  EXPECT_EQ(m.addProduct(s.data(), full, t.data(), full, a.data(), 32, roi), tevStatusOk);
}
