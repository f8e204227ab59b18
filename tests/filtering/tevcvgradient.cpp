#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/filtering.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr TevNorm norms[] = {tevNormInf, tevNormL1, tevNormL2};

TevStatus gradient(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roi, TevNorm norm) {
  return teviGradientColorToGray_8u_C3C1R(src, srcStep, dst, dstStep, roi, norm);
}
TevStatus gradient(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roi, TevNorm norm) {
  return teviGradientColorToGray_16u_C3C1R(src, srcStep, dst, dstStep, roi, norm);
}
TevStatus gradient(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi, TevNorm norm) {
  return teviGradientColorToGray_32f_C3C1R(src, srcStep, dst, dstStep, roi, norm);
}

Tev8u oracle(Tev8u a, Tev8u b, Tev8u c, TevNorm norm) {
  if (norm == tevNormInf) return std::max({a, b, c});
  if (norm == tevNormL1) return static_cast<Tev8u>(((a + b + c) * 1365 + 2048) >> 12);
  return static_cast<Tev8u>(std::sqrt(static_cast<long double>(a * a + b * b + c * c) / 3.0L) + 0.5L);
}
Tev16u oracle(Tev16u a, Tev16u b, Tev16u c, TevNorm norm) {
  if (norm == tevNormInf) return std::max({a, b, c});
  if (norm == tevNormL1) return static_cast<Tev16u>(((a + b + c) * 5461 + 8192) >> 14);
  const auto p = static_cast<Tev32s>(std::uint32_t{b} * b), q = static_cast<Tev32s>(std::uint32_t{c} * c);
  const long double sum = static_cast<long double>(a) * a + p + q;
  return sum < 0 ? Tev16u{0} : static_cast<Tev16u>(std::sqrt(sum / 3.0L) + 0.5L);
}
Tev32f oracle(Tev32f a, Tev32f b, Tev32f c, TevNorm norm) {
  const long double x = std::fabs(a), y = std::fabs(b), z = std::fabs(c);
  if (norm == tevNormInf) return static_cast<Tev32f>(std::max({x, y, z}));
  if (norm == tevNormL1) return static_cast<Tev32f>(x + y + z);
  return static_cast<Tev32f>(std::sqrt(x * x + y * y + z * z));
}

template <class T>
class ColourGradient : public testing::Test {};
using Types = testing::Types<Tev8u, Tev16u, Tev32f>;
TYPED_TEST_SUITE(ColourGradient, Types);

}  // namespace

TYPED_TEST(ColourGradient, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  const auto draw = [&]() -> TypeParam {
    if constexpr (std::is_same_v<TypeParam, Tev32f>)
      // Mixed magnitudes, so that sums round in every place, underflow and overflow.
      return std::ldexp(random.real(1), random.oneIn(4) ? random.between(-149, 127) : random.between(-30, 30));
    else
      return random.oneIn(4) ? std::numeric_limits<TypeParam>::max() : random.value<TypeParam>();
  };
  for (int trial = 0; trial < 120; ++trial) {
    const int width = random.between(1, 150), height = random.between(1, 4);
    const auto src = random.image<TypeParam, 3>(width, height, draw);
    auto dst = random.image<TypeParam>(width, height);
    for (TevNorm norm : norms) {
      Image<TypeParam> expected(width, height);
      for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
          expected.set(x, y, oracle(src.at(x, y, 0), src.at(x, y, 1), src.at(x, y, 2), norm));
      ASSERT_EQ(gradient(src.data(), src.step(), dst.data(), dst.step(), dst.size(), norm), tevStatusOk);
      ASSERT_SAME_IMAGE(dst, expected) << "norm " << norm;
    }
  }
}

TEST(ColourGradientExample, White) {
  const auto src = grid<Tev8u, 3>({{255, 255, 255}});
  Image<Tev8u> dst(1, 1);
  for (TevNorm norm : norms) {
    EXPECT_EQ(gradient(src.data(), 3, dst.data(), 1, {1, 1}, norm), tevStatusOk);
    EXPECT_EQ(dst.at(0, 0), 255) << norm;
  }
}

TEST(ColourGradientExample, EverySumOfSquaresOfBytesRoundsRight) {
  // All sums that three bytes can make, spread over one long row.
  Image<Tev8u, 3> src(256 * 256, 1);
  Image<Tev8u> dst(256 * 256, 1);
  for (int c : {0, 1, 100, 254, 255}) {
    for (int i = 0; i < 256 * 256; ++i) {
      src.set(3 * i, 0, static_cast<Tev8u>(i >> 8));
      src.set(3 * i + 1, 0, static_cast<Tev8u>(i));
      src.set(3 * i + 2, 0, static_cast<Tev8u>(c));
    }
    ASSERT_EQ(gradient(src.data(), src.step(), dst.data(), dst.step(), dst.size(), tevNormL2), tevStatusOk);
    for (int i = 0; i < 256 * 256; ++i)
      ASSERT_EQ(dst.at(i, 0),
                oracle(static_cast<Tev8u>(i >> 8), static_cast<Tev8u>(i), static_cast<Tev8u>(c), tevNormL2));
  }
}

TEST(ColourGradientExample, FloatSumTakesMagnitudes) {
  const auto src = grid<Tev32f, 3>({{1, -2, 3}});
  Image<Tev32f> dst(1, 1);
  EXPECT_EQ(gradient(src.data(), 12, dst.data(), 4, {1, 1}, tevNormL1), tevStatusOk);
  EXPECT_EQ(dst.at(0, 0), 6.0F);
}

TEST(ColourGradientExample, LargeSecondAndThirdChannelsOf16uLowerTheRoot) {
  const auto src = grid<Tev16u, 3>({{60000, 0, 0, 60000, 60000, 0, 60000, 46340, 0, 0, 60000, 0, 0, 46341, 46341}});
  Image<Tev16u> dst(5, 1);
  EXPECT_EQ(gradient(src.data(), src.step(), dst.data(), 10, {5, 1}, tevNormL2), tevStatusOk);
  EXPECT_EQ(dst.at(0, 0), 34641);
  EXPECT_LT(dst.at(1, 0), dst.at(0, 0));
  EXPECT_GT(dst.at(2, 0), dst.at(0, 0));
  EXPECT_EQ(dst.at(3, 0), 0) << "a negative sum has no root";
  EXPECT_EQ(dst.at(4, 0), 0);
}

TEST(ColourGradientExample, NanAndInfinitiesOfFloats) {
  constexpr float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const auto src = grid<Tev32f, 3>({{inf, 1, -inf, nan, 1, 2, 0, -0.0F, 0}});
  Image<Tev32f> dst(3, 1);
  EXPECT_EQ(gradient(src.data(), src.step(), dst.data(), 12, {3, 1}, tevNormL1), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{inf, nan, 0}}));
  EXPECT_EQ(gradient(src.data(), src.step(), dst.data(), 12, {3, 1}, tevNormL2), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{inf, nan, 0}}));
}

TYPED_TEST(ColourGradient, ChecksPointersThenSizeThenStepsThenAlignmentThenTheNorm) {
  using T = TypeParam;
  constexpr int size = sizeof(T);
  Image<T, 3> src(4, 2, size);
  Image<T> dst(4, 2, size);
  const TevSize roi = {4, 2};
  const int s = src.step(), d = dst.step();
  EXPECT_FAILS(tevStatusNullPtr, gradient(static_cast<T*>(nullptr), 0, dst.data(), 0, {0, 0}, 7), dst);
  EXPECT_FAILS(tevStatusNullPtr, gradient(src.data(), s, static_cast<T*>(nullptr), d, roi, 0), dst);
  EXPECT_FAILS(tevStatusBadSize, gradient(src.data(), 0, dst.data(), 0, {0, 2}, 7), dst);
  EXPECT_FAILS(tevStatusBadSize, gradient(src.data(), 0, dst.data(), 0, {4, 0}, 7), dst);
  EXPECT_FAILS(tevStatusBadStep, gradient(src.data(), 12 * size - 1, dst.data(), d, roi, 3), dst);
  EXPECT_FAILS(tevStatusBadStep, gradient(src.data(), s, dst.data(), 4 * size - 1, roi, 3), dst);
  EXPECT_FAILS(tevStatusBadStep, gradient(src.data(), s, dst.data(), d, {1 << 30, 2}, 3), dst);
  if (size > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, gradient(src.data(), s + 1, dst.data(), d, roi, 3), dst);
    EXPECT_FAILS(tevStatusStepNotAligned, gradient(src.data(), s, dst.data(), d + 1, roi, 3), dst);
  }
  EXPECT_FAILS(tevStatusBadArg, gradient(src.data(), s, dst.data(), d, roi, 3), dst);
  EXPECT_FAILS(tevStatusBadArg, gradient(src.data(), s, dst.data(), d, roi, -1), dst);
  src.fill(1);
  EXPECT_EQ(gradient(src.data(), 12 * size, dst.data(), 4 * size, roi, 0), tevStatusOk);
}
