#include "tevcv/arithmetic.h"

#include <cmath>
#include <limits>

#include "kit/kit.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

// One overload set over the three element types, for tests that run over all of them.
TevStatus absDiff(const Tev8u* a, int as, const Tev8u* b, int bs, Tev8u* d, int ds, TevSize roi) {
  return teviAbsDiff_8u_C1R(a, as, b, bs, d, ds, roi);
}
TevStatus absDiff(const Tev16u* a, int as, const Tev16u* b, int bs, Tev16u* d, int ds, TevSize roi) {
  return teviAbsDiff_16u_C1R(a, as, b, bs, d, ds, roi);
}
TevStatus absDiff(const Tev32f* a, int as, const Tev32f* b, int bs, Tev32f* d, int ds, TevSize roi) {
  return teviAbsDiff_32f_C1R(a, as, b, bs, d, ds, roi);
}
TevStatus absDiffC(const Tev8u* a, int as, Tev8u* d, int ds, TevSize roi, int value) {
  return teviAbsDiffC_8u_C1R(a, as, d, ds, roi, value);
}
TevStatus absDiffC(const Tev16u* a, int as, Tev16u* d, int ds, TevSize roi, int value) {
  return teviAbsDiffC_16u_C1R(a, as, d, ds, roi, value);
}
TevStatus absDiffC(const Tev32f* a, int as, Tev32f* d, int ds, TevSize roi, Tev32f value) {
  return teviAbsDiffC_32f_C1R(a, as, d, ds, roi, value);
}

template <class T>
T distance(T a, T b) {
  return static_cast<T>(std::fabs(static_cast<long double>(a) - static_cast<long double>(b)));
}

template <class T>
class AbsDiff : public testing::Test {};
using Types = testing::Types<Tev8u, Tev16u, Tev32f>;
TYPED_TEST_SUITE(AbsDiff, Types);

}  // namespace

TEST(AbsDiffExample, TakesTheDistanceOfEachPairOfPixels) {
  const auto a = grid<Tev8u>({{0, 10, 255}, {7, 8, 9}});
  const auto b = grid<Tev8u>({{255, 4, 255}, {8, 8, 0}});
  Image<Tev8u> d(3, 2);
  EXPECT_EQ(teviAbsDiff_8u_C1R(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), d.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev8u>({{255, 6, 0}, {1, 0, 9}}));
}

TEST(AbsDiffExample, ClampsTheConstantOf8uToTheElementsRange) {
  const auto a = grid<Tev8u>({{10, 0, 255}});
  Image<Tev8u> d(3, 1);
  EXPECT_EQ(teviAbsDiffC_8u_C1R(a.data(), a.step(), d.data(), d.step(), d.size(), 300), tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev8u>({{245, 255, 0}}));
  EXPECT_EQ(teviAbsDiffC_8u_C1R(a.data(), a.step(), d.data(), d.step(), d.size(), -5), tevStatusOk);
  EXPECT_SAME_IMAGE(d, a);
}

TEST(AbsDiffExample, ClampsTheConstantOf16uToTheElementsRange) {
  const auto a = grid<Tev16u>({{10, 0, 65535}});
  Image<Tev16u> d(3, 1);
  EXPECT_EQ(teviAbsDiffC_16u_C1R(a.data(), a.step(), d.data(), d.step(), d.size(), -1), tevStatusOk);
  EXPECT_SAME_IMAGE(d, a);
  EXPECT_EQ(teviAbsDiffC_16u_C1R(a.data(), a.step(), d.data(), d.step(), d.size(), 70000), tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev16u>({{65525, 65535, 0}}));
}

TEST(AbsDiffExample, CarriesNanAndInfinitiesOfFloats) {
  constexpr float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const auto a = grid<Tev32f>({{nan, inf, inf, -inf, -0.0F, 1.5F}});
  const auto b = grid<Tev32f>({{1.0F, inf, 1.0F, inf, 0.0F, -1.5F}});
  Image<Tev32f> d(6, 1);
  EXPECT_EQ(teviAbsDiff_32f_C1R(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), d.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev32f>({{nan, nan, inf, inf, 0.0F, 3.0F}}));
  EXPECT_EQ(teviAbsDiffC_32f_C1R(a.data(), a.step(), d.data(), d.step(), d.size(), inf), tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev32f>({{nan, nan, nan, inf, inf, inf}}));
}

TYPED_TEST(AbsDiff, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 200; ++trial) {
    const int width = random.between(1, 70), height = random.between(1, 6);
    const auto a = random.image<TypeParam>(width, height), b = random.image<TypeParam>(width, height);
    auto d = random.image<TypeParam>(width, height), c = random.image<TypeParam>(width, height);
    const auto value = static_cast<TypeParam>(random.value<Tev8u>());
    ASSERT_EQ(absDiff(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), d.size()), tevStatusOk);
    ASSERT_EQ(absDiffC(a.data(), a.step(), c.data(), c.step(), c.size(), value), tevStatusOk);
    Image<TypeParam> expected(width, height), expectedC(width, height);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        expected.set(x, y, distance(a.at(x, y), b.at(x, y)));
        expectedC.set(x, y, distance(a.at(x, y), value));
      }
    ASSERT_SAME_IMAGE(d, expected);
    ASSERT_SAME_IMAGE(c, expectedC);
  }
}

TYPED_TEST(AbsDiff, OfAnImageWithItselfIsZeroAndWorksInPlace) {
  Random random;
  auto a = random.image<TypeParam>(33, 5);
  const auto original = a.clone();
  const auto b = random.image<TypeParam>(33, 5);
  Image<TypeParam> apart(33, 5);
  ASSERT_EQ(absDiff(a.data(), a.step(), b.data(), b.step(), apart.data(), apart.step(), a.size()), tevStatusOk);
  ASSERT_EQ(absDiff(a.data(), a.step(), b.data(), b.step(), a.data(), a.step(), a.size()), tevStatusOk);
  EXPECT_SAME_IMAGE(a, apart);
  ASSERT_EQ(absDiff(original.data(), original.step(), original.data(), original.step(), a.data(), a.step(), a.size()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(a, Image<TypeParam>(33, 5).fill(0));
}

TYPED_TEST(AbsDiff, ChecksPointersThenSizeThenStepsThenAlignment) {
  using T = TypeParam;
  constexpr int size = sizeof(T);
  Image<T> a(8, 4, 2 * size), b(8, 4, 2 * size), d(8, 4, 2 * size);
  const int s = a.step(), full = 8 * size;
  const TevSize roi = {8, 4};
  EXPECT_FAILS(tevStatusNullPtr, absDiff(static_cast<T*>(nullptr), 0, b.data(), s, d.data(), s, {0, 4}), d);
  EXPECT_FAILS(tevStatusNullPtr, absDiff(a.data(), s, static_cast<T*>(nullptr), s, d.data(), s, roi), d);
  EXPECT_FAILS(tevStatusNullPtr, absDiff(a.data(), s, b.data(), s, static_cast<T*>(nullptr), s, roi), d);
  EXPECT_FAILS(tevStatusBadSize, absDiff(a.data(), 1, b.data(), s, d.data(), s, {0, 4}), d);
  EXPECT_FAILS(tevStatusBadSize, absDiff(a.data(), s, b.data(), s, d.data(), s, {8, 0}), d);
  EXPECT_FAILS(tevStatusBadSize, absDiff(a.data(), s, b.data(), s, d.data(), s, {-1, -1}), d);
  EXPECT_FAILS(tevStatusBadStep, absDiff(a.data(), full - 1, b.data(), s, d.data(), s, roi), d);
  EXPECT_FAILS(tevStatusBadStep, absDiff(a.data(), s, b.data(), full - 1, d.data(), s, roi), d);
  EXPECT_FAILS(tevStatusBadStep, absDiff(a.data(), s, b.data(), s, d.data(), full - 1, roi), d);
  EXPECT_FAILS(tevStatusBadStep, absDiff(a.data(), s, b.data(), s, d.data(), s, {1 << 30, 4}), d);
  EXPECT_EQ(absDiff(a.data(), full, b.data(), full, d.data(), full, roi), tevStatusOk);
  EXPECT_FAILS(tevStatusNullPtr, absDiffC(static_cast<T*>(nullptr), s, d.data(), s, roi, 1), d);
  EXPECT_FAILS(tevStatusNullPtr, absDiffC(a.data(), s, static_cast<T*>(nullptr), s, roi, 1), d);
  EXPECT_FAILS(tevStatusBadSize, absDiffC(a.data(), s, d.data(), s, {8, -4}, 1), d);
  EXPECT_FAILS(tevStatusBadStep, absDiffC(a.data(), full - 1, d.data(), s, roi, 1), d);
  EXPECT_FAILS(tevStatusBadStep, absDiffC(a.data(), s, d.data(), full - 1, roi, 1), d);
  if (size == 1) {
    EXPECT_EQ(absDiff(a.data(), 9, b.data(), 9, d.data(), 9, roi), tevStatusOk);
  } else {
    // A short step anywhere is found before a step of broken elements anywhere.
    EXPECT_FAILS(tevStatusBadStep, absDiff(a.data(), full + 1, b.data(), s, d.data(), full - 1, roi), d);
    EXPECT_FAILS(tevStatusStepNotAligned, absDiff(a.data(), full + 1, b.data(), s, d.data(), s, roi), d);
    EXPECT_FAILS(tevStatusStepNotAligned, absDiff(a.data(), s, b.data(), full + 1, d.data(), s, roi), d);
    EXPECT_FAILS(tevStatusStepNotAligned, absDiff(a.data(), s, b.data(), s, d.data(), full + 1, roi), d);
    EXPECT_FAILS(tevStatusStepNotAligned, absDiffC(a.data(), full + 1, d.data(), s, roi, 1), d);
    EXPECT_FAILS(tevStatusStepNotAligned, absDiffC(a.data(), s, d.data(), full + 1, roi, 1), d);
  }
}
