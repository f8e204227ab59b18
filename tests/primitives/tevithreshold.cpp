#include <bit>
#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/primitives.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity(), notANumber = std::numeric_limits<float>::quiet_NaN();

// The order of bit patterns in which floats are compared.
bool replaced(float v, float threshold, TevCmpOp op) {
  const auto s = std::bit_cast<Tev32s>(v), t = std::bit_cast<Tev32s>(threshold);
  const auto us = static_cast<std::uint32_t>(s), ut = static_cast<std::uint32_t>(t);
  if (!std::signbit(threshold) || threshold == 0.0F) return op == tevCmpLess ? s < t : s > t;
  return op == tevCmpLess ? us > ut : us < ut;
}

}  // namespace

TEST(Threshold8u, ReplacesAboveOrBelowAndCopiesTheRest) {
  const auto src = grid<Tev8u>({{0, 99, 100, 101, 255}});
  Image<Tev8u> dst(5, 1);
  EXPECT_EQ(teviThreshold_Val_8u_C1R(src.data(), 5, dst.data(), 5, {5, 1}, 100, 7, tevCmpGreater), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{0, 99, 100, 7, 7}}));
  EXPECT_EQ(teviThreshold_Val_8u_C1R(src.data(), 5, dst.data(), 5, {5, 1}, 100, 7, tevCmpLess), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{7, 7, 100, 101, 255}}));
}

TEST(Threshold8u, AtTheEndOfTheRangeCopies) {
  Random random;
  const auto src = random.image<Tev8u>(50, 3);
  auto dst = random.image<Tev8u>(50, 3);
  EXPECT_EQ(teviThreshold_GTVal_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), 255, 3),
            tevStatusOk);
  EXPECT_SAME_IMAGE(dst, src);
  dst.fill(0);
  EXPECT_EQ(teviThreshold_Val_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), 0, 3, tevCmpLess),
            tevStatusOk);
  EXPECT_SAME_IMAGE(dst, src);
}

TEST(Threshold8u, EqualsTheDefinitionOnRandomRegionsAndInPlace) {
  Random random;
  for (int trial = 0; trial < 100; ++trial) {
    const auto src = random.image<Tev8u>(random.between(1, 70), random.between(1, 5));
    auto dst = random.image<Tev8u>(src.width(), src.height()), inPlace = src.clone();
    const Tev8u threshold = random.value<Tev8u>(), value = random.value<Tev8u>();
    for (TevCmpOp op : {tevCmpLess, tevCmpGreater}) {
      Image<Tev8u> expected(src.width(), src.height());
      for (int y = 0; y < src.height(); ++y)
        for (int x = 0; x < src.width(); ++x) {
          const Tev8u v = src.at(x, y);
          expected.set(x, y, (op == tevCmpLess ? v < threshold : v > threshold) ? value : v);
        }
      ASSERT_EQ(
          teviThreshold_Val_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), threshold, value, op),
          tevStatusOk);
      ASSERT_SAME_IMAGE(dst, expected);
      if (op == tevCmpLess) continue;
      ASSERT_EQ(
          teviThreshold_GTVal_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), threshold, value),
          tevStatusOk);
      ASSERT_SAME_IMAGE(dst, expected);
      ASSERT_EQ(teviThreshold_GTVal_8u_C1IR(inPlace.data(), inPlace.step(), src.size(), threshold, value), tevStatusOk);
      ASSERT_SAME_IMAGE(inPlace, expected);
    }
  }
}

TEST(Threshold32f, ComparesBitPatterns) {
  const float values[] = {0.0F,     -0.0F,     1.0F,       -1.0F,       0.5F,   -0.5F,
                          infinity, -infinity, notANumber, -notANumber, 1e-45F, -1e-45F};
  constexpr int n = 12;
  for (float threshold : values)
    for (TevCmpOp op : {tevCmpLess, tevCmpGreater}) {
      Image<Tev32f> src(n, 1, 0, 3), dst(n, 1, 0, 1), clipped(n, 1), expected(n, 1), expectedClip(n, 1);
      for (int i = 0; i < n; ++i) {
        src.set(i, 0, values[i]);
        expected.set(i, 0, replaced(values[i], threshold, op) ? 42.0F : values[i]);
        expectedClip.set(i, 0, replaced(values[i], threshold, op) ? threshold : values[i]);
      }
      ASSERT_EQ(teviThreshold_Val_32f_C1R(src.data(), 4 * n, dst.data(), 4 * n, {n, 1}, threshold, 42.0F, op),
                tevStatusOk);
      ASSERT_SAME_IMAGE(dst, expected) << threshold << " op " << op;
      ASSERT_EQ(teviThreshold_32f_C1R(src.data(), 4 * n, clipped.data(), 4 * n, {n, 1}, threshold, op), tevStatusOk);
      ASSERT_SAME_IMAGE(clipped, expectedClip) << threshold << " op " << op;
      if (op != tevCmpLess) continue;
      clipped.fill(9);
      ASSERT_EQ(teviThreshold_LT_32f_C1R(src.data(), 4 * n, clipped.data(), 4 * n, {n, 1}, threshold), tevStatusOk);
      ASSERT_SAME_IMAGE(clipped, expectedClip);
      ASSERT_EQ(teviThreshold_LT_32f_C1IR(src.data(), 4 * n, {n, 1}, threshold), tevStatusOk);
      ASSERT_SAME_IMAGE(src, expectedClip);
    }
}

TEST(Threshold32f, BelowZeroTurnsMinusZeroAndNegativesIntoPlusZero) {
  const auto src = grid<Tev32f>({{-0.0F, -1.0F, 0.0F, 2.0F}});
  Image<Tev32f> dst(4, 1);
  EXPECT_EQ(teviThreshold_LT_32f_C1R(src.data(), 16, dst.data(), 16, {4, 1}, 0.0F), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{0.0F, 0.0F, 0.0F, 2.0F}}));
}

TEST(Threshold32f, AboveMinusZeroLiesEverythingButMinusZero) {
  const auto src = grid<Tev32f>({{-0.0F, 0.0F, -1.0F, 3.0F, -infinity}});
  Image<Tev32f> dst(5, 1);
  EXPECT_EQ(teviThreshold_Val_32f_C1R(src.data(), 20, dst.data(), 20, {5, 1}, -0.0F, 8.0F, tevCmpGreater), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{-0.0F, 8.0F, 8.0F, 8.0F, 8.0F}}));
}

TEST(Threshold32f, OrdinaryValuesCompareAsFloats) {
  Random random;
  for (int trial = 0; trial < 100; ++trial) {
    const auto src = random.image<Tev32f>(random.between(1, 40), random.between(1, 4));
    auto dst = random.image<Tev32f>(src.width(), src.height());
    const float threshold = random.real(100);
    const TevCmpOp op = random.oneIn(2) ? tevCmpLess : tevCmpGreater;
    ASSERT_EQ(teviThreshold_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), threshold, op),
              tevStatusOk);
    Image<Tev32f> expected(src.width(), src.height());
    for (int y = 0; y < src.height(); ++y)
      for (int x = 0; x < src.width(); ++x)
        expected.set(x, y, op == tevCmpLess ? std::max(src.at(x, y), threshold) : std::min(src.at(x, y), threshold));
    ASSERT_SAME_IMAGE(dst, expected);
  }
}

TEST(Threshold32f, RowsAdvanceByWholeElementsOfAStep) {
  const auto src = grid<Tev32f>({{1, 2}, {3, 4}});
  Image<Tev32f> dst(2, 2);
  EXPECT_EQ(teviThreshold_32f_C1R(src.data(), 11, dst.data(), 9, {2, 2}, 2.5F, tevCmpLess), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{2.5F, 2.5F}, {3, 4}}));
}

TEST(Threshold, ChecksTheComparisonThenPointersThenSizeThenStepsAboveZero) {
  Image<Tev8u> b(3, 3);
  Image<Tev32f> f(3, 3);
  b.fill(1);
  f.fill(1);
  const TevSize roi = {3, 3};
  for (TevCmpOp op : {1, 2, 3, 5, -1}) {
    EXPECT_EQ(teviThreshold_Val_8u_C1R(nullptr, 0, nullptr, 0, {0, 0}, 0, 0, op), tevStatusBadCompareMode);
    EXPECT_EQ(teviThreshold_Val_32f_C1R(nullptr, 0, nullptr, 0, {0, 0}, 0, 0, op), tevStatusBadCompareMode);
    EXPECT_EQ(teviThreshold_32f_C1R(nullptr, 0, nullptr, 0, {0, 0}, 0, op), tevStatusBadCompareMode);
  }
  EXPECT_EQ(teviThreshold_Val_8u_C1R(nullptr, 0, b.data(), 0, {0, 0}, 0, 0, tevCmpLess), tevStatusNullPtr);
  EXPECT_EQ(teviThreshold_Val_8u_C1R(b.data(), 0, nullptr, 0, {0, 0}, 0, 0, tevCmpLess), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, teviThreshold_Val_8u_C1R(b.data(), 0, b.data(), 0, {0, 3}, 0, 0, tevCmpGreater), b);
  EXPECT_FAILS(tevStatusBadStep, teviThreshold_Val_8u_C1R(b.data(), 0, b.data(), 3, roi, 0, 0, tevCmpGreater), b);
  EXPECT_FAILS(tevStatusBadStep, teviThreshold_Val_8u_C1R(b.data(), 3, b.data(), -3, roi, 0, 0, tevCmpGreater), b);
  EXPECT_EQ(teviThreshold_Val_32f_C1R(nullptr, 0, f.data(), 0, {0, 0}, 0, 0, tevCmpLess), tevStatusNullPtr);
  EXPECT_EQ(teviThreshold_Val_32f_C1R(f.data(), 0, nullptr, 0, {0, 0}, 0, 0, tevCmpLess), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, teviThreshold_Val_32f_C1R(f.data(), 0, f.data(), 0, {3, 0}, 0, 0, tevCmpLess), f);
  EXPECT_FAILS(tevStatusBadStep, teviThreshold_Val_32f_C1R(f.data(), 12, f.data(), 0, roi, 0, 0, tevCmpLess), f);
  EXPECT_FAILS(tevStatusBadStep, teviThreshold_Val_32f_C1R(f.data(), 0, f.data(), 12, roi, 0, 0, tevCmpLess), f);
  EXPECT_FAILS(tevStatusBadStep, teviThreshold_LT_32f_C1IR(f.data(), 0, roi, 9), f);
  EXPECT_EQ(teviThreshold_LT_32f_C1IR(nullptr, 12, roi, 9), tevStatusNullPtr);
  EXPECT_EQ(teviThreshold_GTVal_8u_C1IR(nullptr, 3, roi, 9, 9), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, teviThreshold_GTVal_8u_C1IR(b.data(), 3, {-1, 3}, 0, 9), b);
  // A step of 1 is long enough: rows are not measured.
  EXPECT_EQ(teviThreshold_GTVal_8u_C1IR(b.data(), 1, roi, 0, 9), tevStatusOk);
  EXPECT_SAME_IMAGE(b, grid<Tev8u>({{9, 9, 9}, {9, 9, 1}, {1, 1, 1}}));
}
