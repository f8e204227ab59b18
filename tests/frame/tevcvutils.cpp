#include <cmath>
#include <cstring>
#include <limits>

#include "kit/kit.h"
#include "tevcv_internal/frame.h"

TEST(ScaleFactor, FloatIsAPowerOfTwoClampedToItsRange) {
  EXPECT_EQ(owncvGetScale_32s32f(0), 1.0F);
  EXPECT_EQ(owncvGetScale_32s32f(1), 0.5F);
  EXPECT_EQ(owncvGetScale_32s32f(-1), 2.0F);
  for (int s = -127; s <= 149; ++s) ASSERT_EQ(owncvGetScale_32s32f(s), std::ldexp(1.0F, -s)) << s;
  EXPECT_EQ(owncvGetScale_32s32f(-128), std::numeric_limits<float>::infinity());
  EXPECT_EQ(owncvGetScale_32s32f(std::numeric_limits<int>::min()), std::numeric_limits<float>::infinity());
  EXPECT_EQ(owncvGetScale_32s32f(150), 0.0F);
  EXPECT_EQ(owncvGetScale_32s32f(std::numeric_limits<int>::max()), 0.0F);
}

TEST(ScaleFactor, DoubleIsTheProductOfTwoTableEntries) {
  EXPECT_EQ(owncvGetScale_32s64f(0), 1.0);
  EXPECT_EQ(owncvGetScale_32s64f(1), 0.5);
  for (int s = -1023; s <= 1074; ++s) ASSERT_EQ(owncvGetScale_32s64f(s), std::ldexp(1.0, -s)) << s;
  for (int s : {-1024, -5000, std::numeric_limits<int>::min()})
    EXPECT_EQ(owncvGetScale_32s64f(s), std::numeric_limits<double>::infinity()) << s;
  for (int s : {1087, 5000, std::numeric_limits<int>::max()}) EXPECT_EQ(owncvGetScale_32s64f(s), 0.0) << s;
}

TEST(PowersOfTwo, FollowTheirRules) {
  EXPECT_EQ(intfTable[0], std::numeric_limits<float>::infinity());
  for (int k = 1; k < 279; ++k) ASSERT_EQ(intfTable[k], std::ldexp(1.0F, 128 - k)) << k;
  EXPECT_EQ(intfTable[278], 0.0F);
  EXPECT_EQ(intdTable[0], std::numeric_limits<double>::infinity());
  for (int k = 1; k < 34; ++k) ASSERT_EQ(intdTable[k], std::ldexp(1.0, 1087 - 64 * k)) << k;
}

TEST(DerivativeProducts, OfFloatPlanes) {
  Tev32f x[] = {1, 2, 3, -4}, xy[4], y[] = {5, -6, 7, 0.5F};
  owncvMulDBuffers_32f(2, 2, x, xy, y);
  const Tev32f xx[] = {1, 4, 9, 16}, products[] = {5, -12, 21, -2}, yy[] = {25, 36, 49, 0.25F};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(x[i], xx[i]);
    EXPECT_EQ(xy[i], products[i]);
    EXPECT_EQ(y[i], yy[i]);
  }
}

TEST(DerivativeProducts, Of16BitRowsWidenInPlace) {
  kit::Random random;
  for (int width : {1, 2, 3, 7, 64}) {
    constexpr int height = 3;
    std::vector<Tev16s> dx(static_cast<size_t>(width) * height), dy(dx.size());
    std::vector<Tev32f> x(dx.size()), xy(dx.size()), y(dx.size());
    for (auto& v : dx) v = random.value<Tev16s>();
    for (auto& v : dy) v = random.value<Tev16s>();
    dx[0] = dy[0] = -32768;
    for (int row = 0; row < height; ++row) {
      const auto first = static_cast<size_t>(row) * static_cast<size_t>(width);
      std::memcpy(&x[first], &dx[first], static_cast<size_t>(width) * 2);
      std::memcpy(&y[first], &dy[first], static_cast<size_t>(width) * 2);
    }
    owncvMulDBuffers_16s32f(width, height, x.data(), xy.data(), y.data());
    for (size_t i = 0; i < dx.size(); ++i) {
      ASSERT_EQ(x[i], static_cast<Tev32f>(dx[i] * dx[i]));
      ASSERT_EQ(xy[i], static_cast<Tev32f>(dx[i] * dy[i]));
      ASSERT_EQ(y[i], static_cast<Tev32f>(dy[i] * dy[i]));
    }
  }
}
