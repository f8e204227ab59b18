#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using kit::Image;
using kit::Random;

namespace {

// The definition, in groups of four with one division, places beyond the end holding 1.
std::vector<Tev32f> oracle(const std::vector<Tev32f>& y, const std::vector<Tev32f>& x) {
  constexpr Tev32f table[] = {-0.14050041139125824F, 90.1405029296875F,  180.1405029296875F, 89.8594970703125F,
                              360.1405029296875F,    269.8594970703125F, 179.8594970703125F, 270.1405029296875F};
  constexpr bool negative[] = {false, true, true, false, true, false, false, true};
  std::vector<Tev32f> result;
  for (size_t first = 0; first < y.size(); first += 4) {
    long double n[4], d[4];
    int index[4];
    for (size_t k = 0; k < 4; ++k) {
      const Tev32f yk = first + k < y.size() ? y[first + k] : 1.0F, xk = first + k < x.size() ? x[first + k] : 1.0F;
      const Tev32f a = std::fabs(xk), b = std::fabs(yk);
      index[k] = (std::signbit(yk) ? 4 : 0) + (std::signbit(xk) ? 2 : 0) + (b > a ? 1 : 0);
      if (a == 0 && b == 0) index[k] = 0;
      n[k] = negative[index[k]] ? -std::min(a, b) : std::min(a, b);
      d[k] = a == 0 && b == 0 ? 1.0F : std::max(a, b);
    }
    const long double inverse = 1.0L / (d[0] * d[1] * d[2] * d[3]);
    for (size_t k = 0; k < 4 && first + k < y.size(); ++k) {
      long double t = n[k];
      for (size_t j = 0; j < 4; ++j)
        if (j != k) t *= d[j];
      t *= inverse;
      result.push_back(static_cast<Tev32f>(t * (std::fabs(t) * static_cast<long double>(-15.813189506530762F) +
                                                static_cast<long double>(61.09419631958008F)) +
                                           table[index[k]]));
    }
  }
  return result;
}

void expectDefined(Random& random, const std::vector<Tev32f>& y, const std::vector<Tev32f>& x) {
  const int n = static_cast<int>(y.size());
  Image<Tev32f> ys(n, 1, 0, random.between(0, 7)), xs(n, 1, 0, random.between(0, 7)),
      dst(n, 1, 0, random.between(0, 7));
  for (int i = 0; i < n; ++i) {
    ys.set(i, 0, y[static_cast<size_t>(i)]);
    xs.set(i, 0, x[static_cast<size_t>(i)]);
  }
  ASSERT_EQ(tevibFastArctan_32f(ys.data(), xs.data(), dst.data(), n), tevStatusOk);
  const auto expected = oracle(y, x);
  for (int i = 0; i < n; ++i)
    ASSERT_TRUE(kit::sameBits(dst.at(i, 0), expected[static_cast<size_t>(i)]))
        << "element " << i << " of " << n << ": " << y[static_cast<size_t>(i)] << ", " << x[static_cast<size_t>(i)]
        << " gives " << dst.at(i, 0) << ", expected " << expected[static_cast<size_t>(i)];
  ASSERT_EQ(tevibFastArctan_32f(ys.data(), xs.data(), ys.data(), n), tevStatusOk);
  EXPECT_SAME_IMAGE(ys, dst) << "in place";
}

}  // namespace

TEST(FastArctan, EqualsTheDefinitionAtEveryLength) {
  Random random;
  for (int trial = 0; trial < 400; ++trial) {
    const int n = trial < 140 ? 1 + trial : random.between(1, 600);
    const int style = trial % 4;
    std::vector<Tev32f> y, x;
    const auto draw = [&] {
      if (style == 0) return random.real(100);
      if (style == 1) return static_cast<Tev32f>(random.between(-3, 3));
      if (style == 2) return std::ldexp(random.real(1), random.between(-40, 40));
      return std::ldexp(random.real(1), random.between(-149, 127));
    };
    for (int i = 0; i < n; ++i) {
      y.push_back(draw());
      x.push_back(draw());
    }
    expectDefined(random, y, x);
  }
}

TEST(FastArctan, NearTheZeroOfTheResultEqualsTheDefinition) {
  Random random;
  // The first eighth's polynomial crosses its offset at a ratio of 0.0023. Floats are dense there, so that many results
  // lie near the middle of two.
  for (int trial = 0; trial < 40; ++trial) {
    const Tev32f spread = std::ldexp(1.0F, -random.between(6, 24));
    std::vector<Tev32f> y, x;
    for (int i = 0; i < 600; ++i) {
      x.push_back(std::fabs(random.real(100)) + 1);
      y.push_back(x.back() * (0.0023011F + random.real(1) * spread));
    }
    expectDefined(random, y, x);
  }
}

TEST(FastArctan, AxesDiagonalsAndTheEndsOfTheRangeEqualTheDefinition) {
  Random random;
  const Tev32f some[] = {
      0.0F,     -0.0F,     1.0F,        -1.0F,          3.0F,   0.1F,    0x1p-100F,     0x1.000002p-100F,
      0x1p100F, -0x1p100F, 0x1.8p-126F, 1.1754942e-38F, 1e-45F, -1e-45F, 3.4028235e38F, 100.0F};
  for (int trial = 0; trial < 60; ++trial) {
    std::vector<Tev32f> y, x;
    for (int i = 0; i < 520; ++i) {
      const bool ordinary = i >= 256 && trial % 2 == 0;  // a block of its own
      y.push_back(ordinary ? random.real(100) : some[random.between(0, 15)]);
      x.push_back(ordinary ? (random.oneIn(2) ? y.back() : -y.back()) : some[random.between(0, 15)]);
    }
    expectDefined(random, y, x);
  }
}

TEST(FastArctan, LiesWithinAFifthOfADegree) {
  for (int degrees = 1; degrees < 360; ++degrees) {
    const double angle = degrees * 3.14159265358979 / 180;
    const Tev32f y = static_cast<Tev32f>(50 * std::sin(angle)), x = static_cast<Tev32f>(50 * std::cos(angle));
    Tev32f result;
    ASSERT_EQ(tevibFastArctan_32f(&y, &x, &result, 1), tevStatusOk);
    ASSERT_NEAR(result, degrees, 0.2) << degrees;
  }
}

TEST(FastArctan, ZerosOfEitherSignGiveTheFirstOffset) {
  const Tev32f y[] = {0.0F, -0.0F, 0.0F, -0.0F, 0.0F}, x[] = {0.0F, 0.0F, -0.0F, -0.0F, 7.0F};
  Tev32f result[5];
  ASSERT_EQ(tevibFastArctan_32f(y, x, result, 5), tevStatusOk);
  for (Tev32f r : result) EXPECT_EQ(r, -0.14050041139125824F);
}

TEST(FastArctan, OnTheAxes) {
  const Tev32f y[] = {0, 3, 0, -3, -0.0F, -0.0F}, x[] = {3, 0, -3, 0, 3, -3};
  Tev32f result[6];
  ASSERT_EQ(tevibFastArctan_32f(y, x, result, 6), tevStatusOk);
  const Tev32f expected[] = {_tevcvAtanTab[0], _tevcvAtanTab[1], _tevcvAtanTab[2],
                             _tevcvAtanTab[5], _tevcvAtanTab[4], _tevcvAtanTab[6]};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(result[i], expected[i]) << i;
}

TEST(FastArctan, AnInfinityOrANanSpoilsItsGroupAlone) {
  Random random;
  constexpr float inf = std::numeric_limits<float>::infinity();
  std::vector<Tev32f> y(12, 1.0F), x(12, 2.0F);
  y[5] = inf;
  expectDefined(random, y, x);
  y[5] = 1;
  x[9] = std::numeric_limits<float>::quiet_NaN();
  expectDefined(random, y, x);
  const auto result = oracle(y, x);
  EXPECT_FALSE(std::isnan(result[7]));
  EXPECT_TRUE(std::isnan(result[8]));
}

TEST(FastArctan, ChecksPointersThenLength) {
  Tev32f v[4] = {1, 1, 1, 1};
  EXPECT_EQ(tevibFastArctan_32f(nullptr, v, v, 0), tevStatusNullPtr);
  EXPECT_EQ(tevibFastArctan_32f(v, nullptr, v, 0), tevStatusNullPtr);
  EXPECT_EQ(tevibFastArctan_32f(v, v, nullptr, 4), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevibFastArctan_32f(v, v, v, 0), v);
  EXPECT_FAILS(tevStatusBadSize, tevibFastArctan_32f(v, v, v, -1), v);
}

TEST(FastArctan, Tables) {
  const bool set[] = {false, true, true, false, true, false, false, true};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(_tevcvAtanSign[i], set[i] ? std::numeric_limits<Tev32s>::min() : 0) << i;
  EXPECT_EQ(_tevcvAtanTab[0], -0.14050041139125824F);
  EXPECT_EQ(_tevcvAtanTab[4], 360.1405029296875F);
}
