#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/primitives.h"

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

// v * 2^-s, ties to even, in exact arithmetic.
long double scaled(long long v, int s) { return std::nearbyint(std::ldexp(static_cast<long double>(v), -s)); }

int clamp16(long double v) { return v < -32768 ? -32768 : v > 32767 ? 32767 : static_cast<int>(v); }

int oracle(int element, int value, int s) {
  const long long p = static_cast<long long>(element) * value;
  if (value == 0 || s > 30) return 0;
  if (s >= 0) return clamp16(scaled(p, s));
  if (s >= -15) return clamp16(scaled(clamp16(static_cast<long double>(p)), s));
  return p > 0 ? 32767 : p < 0 ? -32768 : 0;
}

}  // namespace

TEST(MultiplyByConstant16s, EqualsTheRuleAtEveryScaleFactor) {
  kit::Random random;
  for (int s : {0,
                1,
                2,
                3,
                7,
                14,
                15,
                16,
                29,
                30,
                31,
                100,
                -1,
                -2,
                -7,
                -14,
                -15,
                -16,
                -40,
                std::numeric_limits<int>::min(),
                std::numeric_limits<int>::max()})
    for (int value : {0, 1, -1, 2, 3, 255, -256, 32767, -32768}) {
      auto v = random.image<Tev16s>(61, 1);
      v.set(0, 0, -32768);
      v.set(1, 0, 32767);
      v.set(2, 0, 0);
      kit::Image<Tev16s> expected(61, 1);
      for (int i = 0; i < 61; ++i) expected.set(i, 0, static_cast<Tev16s>(oracle(v.at(i, 0), value, s)));
      ASSERT_EQ(tevsMulC_16s_ISfs(static_cast<Tev16s>(value), v.data(), 61, s), tevStatusOk);
      ASSERT_SAME_IMAGE(v, expected) << value << " scale " << s;
    }
}

TEST(MultiplyByConstant16s, ByOneUnscaledLeavesTheData) {
  Tev16s v[] = {-32768, 0, 32767};
  EXPECT_EQ(tevsMulC_16s_ISfs(1, v, 3, 0), tevStatusOk);
  EXPECT_EQ(v[0], -32768);
  EXPECT_EQ(v[2], 32767);
}

TEST(MultiplyByConstant16s, HalvesGoToEven) {
  Tev16s v[] = {3, 1, 2, -1, -3};
  EXPECT_EQ(tevsMulC_16s_ISfs(1, v, 5, 1), tevStatusOk);
  EXPECT_EQ(v[0], 2);
  EXPECT_EQ(v[1], 0);
  EXPECT_EQ(v[2], 1);
  EXPECT_EQ(v[3], 0);
  EXPECT_EQ(v[4], -2);
}

TEST(MultiplyByConstant32f, RoundsOneProduct) {
  kit::Random random;
  auto v = random.image<Tev32f>(77, 1);
  kit::Image<Tev32f> expected(77, 1);
  for (int i = 0; i < 77; ++i)
    expected.set(i, 0, static_cast<Tev32f>(static_cast<long double>(v.at(i, 0)) * static_cast<long double>(0.1F)));
  ASSERT_EQ(tevsMulC_32f_I(0.1F, v.data(), 77), tevStatusOk);
  EXPECT_SAME_IMAGE(v, expected);
}

TEST(MultiplyByConstant32f, ByZeroClearsNanAndInfinityByOneLeavesThem) {
  Tev32f v[] = {notANumber, std::numeric_limits<float>::infinity(), -2};
  EXPECT_EQ(tevsMulC_32f_I(1.0F, v, 3), tevStatusOk);
  EXPECT_TRUE(std::isnan(v[0]) && std::isinf(v[1]) && v[2] == -2);
  EXPECT_EQ(tevsMulC_32f_I(-0.0F, v, 3), tevStatusOk);
  for (float x : v) EXPECT_TRUE(x == 0.0F && !std::signbit(x));
}

TEST(MultiplyByConstant, ChecksPointerThenLength) {
  Tev16s s[] = {5};
  Tev32f f[] = {5};
  EXPECT_EQ(tevsMulC_16s_ISfs(0, nullptr, 0, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsMulC_16s_ISfs(0, s, 0, 0), s);
  EXPECT_EQ(tevsMulC_32f_I(0, nullptr, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsMulC_32f_I(0, f, -1), f);
  EXPECT_FAILS(tevStatusBadSize, tevsMulC_32f_I(1, f, 0), f);
}
