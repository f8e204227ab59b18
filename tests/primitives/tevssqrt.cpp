#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/primitives.h"

namespace {

constexpr int largestSquare = 32767 * 32767;

// The rounded root by comparing squares of candidates in exact arithmetic: floor(sqrt(x) * 2^-s + 1/2), a tie above 0
// scale going to even.
int oracle(long long x, int s) {
  if (x < 0) return 0;
  if (s < -14) return x > 0 ? 32767 : 0;
  if (s > 16) return 0;
  if (s <= 0) {
    const long double product = std::ldexp(static_cast<long double>(x), -2 * s);
    if (product > largestSquare) return 32767;
    int r = 0;
    while ((static_cast<long double>(r) + 0.5L) * (static_cast<long double>(r) + 0.5L) <= product) ++r;
    return r;
  }
  // r + 1/2 <= sqrt(x) / 2^s  <=>  (2 r + 1)^2 * 4^(s - 1) <= x
  int r = 0;
  for (;; ++r) {
    const long double edge = std::ldexp((2.0L * r + 1) * (2.0L * r + 1), 2 * (s - 1));
    if (edge > static_cast<long double>(x)) return r;
    if (edge == static_cast<long double>(x)) return (r + 1) % 2 == 0 ? r + 1 : r;
  }
}

}  // namespace

TEST(SquareRoot32f, RoundsOnceAndMarksNegatives) {
  Tev32f v[] = {4, -1, 9};
  EXPECT_EQ(tevsSqrt_32f_I(v, 3), tevStatusSqrtNegWarning);
  EXPECT_EQ(v[0], 2.0F);
  EXPECT_TRUE(std::isnan(v[1]));
  EXPECT_EQ(v[2], 3.0F);
}

TEST(SquareRoot32f, KeepsZerosOfEitherSign) {
  Tev32f v[] = {0.0F, -0.0F};
  EXPECT_EQ(tevsSqrt_32f_I(v, 2), tevStatusOk);
  EXPECT_FALSE(std::signbit(v[0]));
  EXPECT_TRUE(std::signbit(v[1]));
}

TEST(SquareRoot32f, NanAndInfinities) {
  constexpr float inf = std::numeric_limits<float>::infinity();
  Tev32f v[] = {inf, std::numeric_limits<float>::quiet_NaN()}, w[] = {inf, 2}, u[] = {-inf};
  EXPECT_EQ(tevsSqrt_32f_I(v, 2), tevStatusSqrtNegWarning);
  EXPECT_TRUE(v[0] == inf && std::isnan(v[1]));
  EXPECT_EQ(tevsSqrt_32f_I(w, 2), tevStatusOk);
  EXPECT_EQ(tevsSqrt_32f_I(u, 1), tevStatusSqrtNegWarning);
  EXPECT_TRUE(std::isnan(u[0]));
}

TEST(SquareRoot32f, EqualsTheDoubleRootNarrowed) {
  kit::Random random;
  for (int len : {1, 2, 7, 16, 33, 1000}) {
    auto v =
        random.image<Tev32f>(len, 1, [&] { return std::ldexp(std::fabs(random.real(1)), random.between(-149, 120)); });
    kit::Image<Tev32f> expected(len, 1);
    for (int i = 0; i < len; ++i) expected.set(i, 0, static_cast<Tev32f>(std::sqrt(static_cast<double>(v.at(i, 0)))));
    ASSERT_EQ(tevsSqrt_32f_I(v.data(), len), tevStatusOk);
    ASSERT_SAME_IMAGE(v, expected);
  }
}

TEST(SquareRoot32s16s, EqualsExactArithmeticAtEveryScaleFactor) {
  kit::Random random;
  for (int s = -16; s <= 18; ++s) {
    std::vector<Tev32s> src = {0,
                               1,
                               2,
                               3,
                               4,
                               largestSquare - 1,
                               largestSquare,
                               largestSquare + 1,
                               2147483647,
                               -1,
                               -5,
                               std::numeric_limits<Tev32s>::min()};
    for (int k = 0; k < 40; ++k)
      src.push_back(static_cast<Tev32s>(random.bits() & 0x7FFFFFFF) >> random.between(0, 30));
    // Exact ties for a positive factor: (2 r + 1)^2 * 4^(s - 1).
    for (int r = 0; s >= 1 && r < 6; ++r) {
      const double tie = std::ldexp((2.0 * r + 1) * (2.0 * r + 1), 2 * (s - 1));
      if (tie < 2147483647.0) src.push_back(static_cast<Tev32s>(tie));
    }
    std::vector<Tev16s> dst(src.size(), 99);
    const int len = static_cast<int>(src.size());
    ASSERT_EQ(tevsSqrt_32s16s_Sfs(src.data(), dst.data(), len, s), tevStatusSqrtNegWarning);
    for (size_t i = 0; i < src.size(); ++i) ASSERT_EQ(dst[i], oracle(src[i], s)) << src[i] << " scale " << s;
  }
}

TEST(SquareRoot32s16s, SaturatesAboveTheLargestSquare) {
  const Tev32s src[] = {1073676290, 1073676289};
  Tev16s dst[2];
  EXPECT_EQ(tevsSqrt_32s16s_Sfs(src, dst, 2, 0), tevStatusOk);
  EXPECT_EQ(dst[0], 32767);
  EXPECT_EQ(dst[1], 32767);
}

TEST(SquareRoot32s16s, AboveScale16ClearsAndStillWarns) {
  const Tev32s mixed[] = {-1, 5}, positive[] = {1, 5};
  Tev16s dst[] = {7, 7};
  EXPECT_EQ(tevsSqrt_32s16s_Sfs(mixed, dst, 2, 17), tevStatusSqrtNegWarning);
  EXPECT_EQ(dst[0] | dst[1], 0);
  dst[0] = dst[1] = 7;
  EXPECT_EQ(tevsSqrt_32s16s_Sfs(positive, dst, 2, 17), tevStatusOk);
  EXPECT_EQ(dst[0] | dst[1], 0);
}

TEST(SquareRoot, ChecksPointersThenLength) {
  Tev32f f[] = {4};
  const Tev32s src[] = {4};
  Tev16s dst[] = {7};
  EXPECT_EQ(tevsSqrt_32f_I(nullptr, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsSqrt_32f_I(f, 0), f);
  EXPECT_EQ(tevsSqrt_32s16s_Sfs(nullptr, dst, 0, 0), tevStatusNullPtr);
  EXPECT_EQ(tevsSqrt_32s16s_Sfs(src, nullptr, 0, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsSqrt_32s16s_Sfs(src, dst, 0, 17), dst);
}
