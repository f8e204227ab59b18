#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "kit/kit.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr float inf = std::numeric_limits<float>::infinity(), notANumber = std::numeric_limits<float>::quiet_NaN();

TevStatus canny(const Tev16s* dx, int dxs, const Tev16s* dy, int dys, Tev8u* d, int ds, TevSize roi, Tev32f low,
                Tev32f high, Tev8u* buffer) {
  return teviCanny_16s8u_C1R(dx, dxs, dy, dys, d, ds, roi, low, high, buffer);
}
TevStatus canny(const Tev32f* dx, int dxs, const Tev32f* dy, int dys, Tev8u* d, int ds, TevSize roi, Tev32f low,
                Tev32f high, Tev8u* buffer) {
  return teviCanny_32f8u_C1R(dx, dxs, dy, dys, d, ds, roi, low, high, buffer);
}

int sizeOf(TevSize roi) {
  int size = 0;
  EXPECT_EQ(teviCannyGetSize(roi, &size), tevStatusOk);
  return size;
}

template <class T>
Image<Tev8u> edges(const Image<T>& dx, const Image<T>& dy, Tev32f low, Tev32f high, int misalignment = 0,
                   int padding = 0) {
  // The bytes behind the last row belong to the image: they are cleared.
  Image<Tev8u> d(dx.width() + padding, dx.height());
  const Buffer buffer(sizeOf(dx.size()), misalignment);
  EXPECT_EQ(canny(dx.data(), dx.step(), dy.data(), dy.step(), d.data(), d.step(), dx.size(), low, high, buffer.data()),
            tevStatusOk);
  Image<Tev8u> result(dx.width(), dx.height());
  for (int y = 0; y < dx.height(); ++y) {
    for (int x = 0; x < dx.width(); ++x) result.set(x, y, d.at(x, y));
    for (int x = dx.width(); x < d.width(); ++x) EXPECT_EQ(d.at(x, y), 0) << "behind row " << y;
  }
  return result;
}

// Magnitudes that are compared with both thresholds: whole numbers with a truncated low threshold, or floats.
bool below(Tev16s, long double m, Tev32f low) { return m <= std::trunc(low); }
bool below(Tev32f, long double m, Tev32f low) { return static_cast<Tev32f>(m) <= low; }
long double stored(Tev16s, long double m) { return m; }
long double stored(Tev32f, long double m) { return static_cast<Tev32f>(m); }

// The definition: a whole image of magnitudes, a whole map of candidates, and a flood over it.
template <class T>
Image<Tev8u> definition(const Image<T>& dx, const Image<T>& dy, Tev32f low, Tev32f high) {
  const int width = dx.width(), height = dx.height();
  const auto magnitude = [&](int x, int y) -> long double {
    if (x < 0 || y < 0 || x >= width || y >= height) return 0;
    const T p = dx.at(x, y), q = dy.at(x, y);
    const long double m = std::fabs(static_cast<long double>(p)) + std::fabs(static_cast<long double>(q));
    return below(T{}, m, low) ? 0 : stored(T{}, m);
  };
  Image<Tev8u> map(width, height), result(width, height);
  map.fill(0);
  result.fill(0);
  std::vector<std::pair<int, int>> open;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const long double m = magnitude(x, y);
      if (m == 0) continue;
      const T p = dx.at(x, y), q = dy.at(x, y);
      const long double a = std::fabs(static_cast<long double>(p)), b = std::fabs(static_cast<long double>(q));
      bool maximum = false;
      if (b > 2.414213562373095 * a)
        maximum = m > magnitude(x, y - 1) && m >= magnitude(x, y + 1);
      else if (b >= 0.41421356237309503 * a)
        maximum = std::signbit(static_cast<double>(p)) != std::signbit(static_cast<double>(q))
                      ? m > magnitude(x + 1, y - 1) && m > magnitude(x - 1, y + 1)
                      : m > magnitude(x - 1, y - 1) && m > magnitude(x + 1, y + 1);
      else
        maximum = m > magnitude(x - 1, y) && m >= magnitude(x + 1, y);
      if (!maximum) continue;
      map.set(x, y, 1);
      if (m > static_cast<long double>(high)) {
        result.set(x, y, 255);
        open.emplace_back(x, y);
      }
    }
  while (!open.empty()) {
    const auto [x, y] = open.back();
    open.pop_back();
    for (int ny = std::max(0, y - 1); ny <= std::min(height - 1, y + 1); ++ny)
      for (int nx = std::max(0, x - 1); nx <= std::min(width - 1, x + 1); ++nx)
        if (map.at(nx, ny) != 0 && result.at(nx, ny) == 0) {
          result.set(nx, ny, 255);
          open.emplace_back(nx, ny);
        }
  }
  return result;
}

// Derivatives of few levels (plateaus and ties), of all levels, or with the type's special values.
template <class T>
Image<T> derivative(Random& random, int width, int height, int kind) {
  return random.image<T>(width, height, [&]() -> T {
    if (kind == 0) return static_cast<T>(random.between(-3, 3));
    if (kind == 1) return static_cast<T>(random.between(-300, 300));
    if constexpr (std::is_same_v<T, Tev16s>) {
      if (random.oneIn(3)) return random.oneIn(2) ? Tev16s{-32768} : Tev16s{32767};
    } else {
      constexpr Tev32f special[] = {notANumber, inf, -inf, -0.0F, 0.0F, 3.4e38F, -3.4e38F, 1e-45F, -1e-45F};
      if (random.oneIn(3)) return special[random.between(0, 8)];
    }
    return random.value<T>();
  });
}

template <class T>
class Canny : public testing::Test {};
using Types = testing::Types<Tev16s, Tev32f>;
TYPED_TEST_SUITE(Canny, Types);

}  // namespace

TEST(CannyExample, KeepsTheCrestOfAVerticalEdgeAndFollowsItDownToTheLowThreshold) {
  const auto dx = grid<Tev16s>({{0, 20, 90, 20, 0},  //
                                {0, 20, 60, 20, 0},
                                {0, 20, 50, 20, 0},
                                {0, 20, 40, 20, 0},
                                {0, 20, 30, 20, 0}});
  Image<Tev16s> dy(5, 5);
  dy.fill(0);
  EXPECT_SAME_IMAGE(
      edges(dx, dy, 30, 80),
      grid<Tev8u>({{0, 0, 255, 0, 0}, {0, 0, 255, 0, 0}, {0, 0, 255, 0, 0}, {0, 0, 255, 0, 0}, {0, 0, 0, 0, 0}}));
}

TEST(CannyExample, AWeakEdgeThatTouchesNoStrongPixelIsLeftOut) {
  const auto dx = grid<Tev16s>({{90, 0, 0, 50}, {0, 0, 0, 50}, {0, 50, 0, 50}, {0, 50, 0, 0}});
  Image<Tev16s> dy(4, 4);
  dy.fill(0);
  EXPECT_SAME_IMAGE(edges(dx, dy, 10, 80), grid<Tev8u>({{255, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}));
}

TYPED_TEST(Canny, EqualsAWholeMagnitudeImageAndAFloodOverTheMap) {
  Random random;
  int found = 0, grown = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const int width = random.between(1, trial % 3 ? 24 : 120), height = random.between(1, 14), kind = trial % 4;
    const auto dx = derivative<TypeParam>(random, width, height, kind),
               dy = derivative<TypeParam>(random, width, height, kind);
    const float scale = kind == 0 ? 3 : kind == 1 ? 300 : 30000;
    const float low = std::fabs(random.real(scale)), high = low + std::fabs(random.real(scale));
    const auto expected = definition(dx, dy, low, high);
    ASSERT_SAME_IMAGE(edges(dx, dy, low, high, random.between(0, 40), random.between(0, 5)), expected)
        << "low " << low << " high " << high;
    const auto strict = definition(dx, dy, high, high);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) found += expected.at(x, y) != 0, grown += expected.at(x, y) > strict.at(x, y);
  }
  EXPECT_GT(found, 3000);
  EXPECT_GT(grown, 500);
}

TYPED_TEST(Canny, ImagesOfOneAndTwoRowsTakeZerosAboveAndBelow) {
  Random random;
  for (int height : {1, 2, 3})
    for (int width : {1, 2, 3, 8, 9, 33}) {
      const auto dx = derivative<TypeParam>(random, width, height, 1),
                 dy = derivative<TypeParam>(random, width, height, 1);
      ASSERT_SAME_IMAGE(edges(dx, dy, 5, 20), definition(dx, dy, 5, 20));
    }
}

TYPED_TEST(Canny, AConstantFieldKeepsTheFirstPixelsInStraightDirectionsAndNoneInsideInDiagonalOnes) {
  Image<TypeParam> zero(4, 3), nine(4, 3), minus(4, 3);
  zero.fill(0);
  nine.fill(9);
  minus.fill(static_cast<TypeParam>(-9));
  EXPECT_SAME_IMAGE(edges(nine, zero, 0, 1), grid<Tev8u>({{255, 0, 0, 0}, {255, 0, 0, 0}, {255, 0, 0, 0}}));
  EXPECT_SAME_IMAGE(edges(zero, nine, 0, 1), grid<Tev8u>({{255, 255, 255, 255}, {0, 0, 0, 0}, {0, 0, 0, 0}}));
  // Only corners stand between two zeros.
  EXPECT_SAME_IMAGE(edges(nine, nine, 0, 1), grid<Tev8u>({{0, 0, 0, 255}, {0, 0, 0, 0}, {255, 0, 0, 0}}));
  EXPECT_SAME_IMAGE(edges(nine, minus, 0, 1), grid<Tev8u>({{255, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 255}}));
}

TYPED_TEST(Canny, EqualThresholdsMakeEveryMaximumStrong) {
  Random random;
  const auto dx = derivative<TypeParam>(random, 30, 20, 1), dy = derivative<TypeParam>(random, 30, 20, 1);
  const auto d = edges(dx, dy, 100, 100);
  EXPECT_SAME_IMAGE(d, definition(dx, dy, 100, 100));
  int count = 0;
  for (int y = 0; y < 20; ++y)
    for (int x = 0; x < 30; ++x) count += d.at(x, y) != 0;
  EXPECT_GT(count, 20);
}

TYPED_TEST(Canny, MagnitudesOnTheLowThresholdAreOutAndOnTheHighOneAreWeak) {
  const auto dx = grid<TypeParam>({{0, 10, 0, 0, 11, 0}});
  Image<TypeParam> dy(6, 1);
  dy.fill(0);
  EXPECT_SAME_IMAGE(edges(dx, dy, 10, 10), grid<Tev8u>({{0, 0, 0, 0, 255, 0}}));
  EXPECT_SAME_IMAGE(edges(dx, dy, 10, 11), grid<Tev8u>({{0, 0, 0, 0, 0, 0}}));
  EXPECT_SAME_IMAGE(edges(dx, dy, 11, 11), grid<Tev8u>({{0, 0, 0, 0, 0, 0}}));
  EXPECT_SAME_IMAGE(edges(dx, dy, 0, 0), grid<Tev8u>({{0, 255, 0, 0, 255, 0}}));
}

TEST(CannyThresholds, The16sFormTruncatesTheLowOneAndNotTheHighOne) {
  const auto dx = grid<Tev16s>({{0, 10, 0, 0, 11, 0, 0, 12, 11}});
  const auto dy = grid<Tev16s>({{0, 0, 0, 0, 0, 0, 0, 0, 11}});
  Image<Tev16s> still(9, 1);
  still.fill(0);
  EXPECT_SAME_IMAGE(edges(dx, still, 10.9F, 10.95F), grid<Tev8u>({{0, 0, 0, 0, 255, 0, 0, 255, 0}}));
  EXPECT_SAME_IMAGE(edges(dx, still, 9.9F, 11.5F), grid<Tev8u>({{0, 0, 0, 0, 0, 0, 0, 255, 0}}));
  EXPECT_SAME_IMAGE(edges(dx, dy, 10.9F, 10.95F), definition(dx, dy, 10.9F, 10.95F));
}

TEST(CannyThresholds, HugeAndInfiniteOnesFindNothing) {
  const auto dx = grid<Tev16s>({{-32768, 0, 32767}}), dy = grid<Tev16s>({{-32768, 0, 32767}});
  const auto none = grid<Tev8u>({{0, 0, 0}});
  EXPECT_SAME_IMAGE(edges(dx, dy, 65535, 65535), grid<Tev8u>({{255, 0, 0}}));
  EXPECT_SAME_IMAGE(edges(dx, dy, 65536, 65536), none);
  EXPECT_SAME_IMAGE(edges(dx, dy, 0, inf), none);
  EXPECT_SAME_IMAGE(edges(dx, dy, 1e20F, 1e30F), none);
  EXPECT_SAME_IMAGE(edges(dx, dy, inf, inf), none);
}

TYPED_TEST(Canny, NothingAboveTheLowThresholdGivesAnEmptyMap) {
  Random random;
  const auto dx = derivative<TypeParam>(random, 20, 9, 0), dy = derivative<TypeParam>(random, 20, 9, 0);
  Image<Tev8u> none(20, 9);
  EXPECT_SAME_IMAGE(edges(dx, dy, 6, 6), none.fill(0));
}

TEST(CannyDirections, AFloatMinusZeroCountsAsNegative) {
  // Infinite on both sides of a diagonal test is diagonal; so are equal magnitudes with signs told by their bits.
  const auto dx = grid<Tev32f>({{1, 1, 1}, {1, 5, 1}, {1, 1, 1}}), dy = grid<Tev32f>({{0, 0, 0}, {0, 5, 0}, {9, 0, 0}});
  EXPECT_SAME_IMAGE(edges(dx, dy, 0, 0), definition(dx, dy, 0, 0));
  const auto minus = grid<Tev32f>({{-0.0F, -0.0F}, {-0.0F, -0.0F}}), one = grid<Tev32f>({{1, 1}, {1, 1}});
  EXPECT_SAME_IMAGE(edges(minus, one, 0, 0), grid<Tev8u>({{255, 255}, {0, 0}}));
}

// The pairs nearest to the two limits, for every magnitude, each between neighbours that tell the directions apart.
TEST(CannyDirections, OfAll16sMagnitudesNearTheLimitsAreThoseOfTheFactors) {
  std::vector<std::pair<int, int>> pairs;
  for (int a = 0; a <= 32768; ++a) {
    const int limit = static_cast<int>(2.414213562373095 * a);
    for (int b = limit - 1; b <= limit + 2; ++b)
      if (b >= 0 && b <= 32768) pairs.emplace_back(a, b), pairs.emplace_back(b, a);
  }
  const int width = static_cast<int>(pairs.size());
  Image<Tev16s> dx(width, 2), dy(width, 2);
  for (int x = 0; x < width; ++x) {
    // The pixel below is larger, the ones beside are 0: a maximum in all directions but the one along the column.
    const auto [a, b] = pairs[static_cast<std::size_t>(x)];
    dx.set(x, 0, static_cast<Tev16s>(x % 2 ? 0 : -a));
    dy.set(x, 0, static_cast<Tev16s>(x % 2 ? 0 : -b));
    dx.set(x, 1, static_cast<Tev16s>(x % 2 ? 0 : -32768));
    dy.set(x, 1, static_cast<Tev16s>(x % 2 ? 0 : -32768));
  }
  EXPECT_SAME_IMAGE(edges(dx, dy, 0, 1), definition(dx, dy, 0, 1));
  // Now larger ones stand on the left and right, and zeros in the diagonal directions.
  for (int x = 0; x < width; ++x)
    if (x % 2) dx.set(x, 0, -32768), dy.set(x, 0, -32768), dx.set(x, 1, 0), dy.set(x, 1, 0);
  EXPECT_SAME_IMAGE(edges(dx, dy, 0, 1), definition(dx, dy, 0, 1));
}

TEST(CannyDirections, OfFloatsAtTheLimitsAreThoseOfExtendedPrecision) {
  // Best quotients of two floats for 1 + sqrt 2 are quotients of successive Pell numbers.
  std::vector<float> pell = {1, 2};
  while (pell.back() < 0x1p24F) pell.push_back(2 * pell.back() + pell[pell.size() - 2]);
  Random random;
  const int width = 600;
  Image<Tev32f> dx(width, 2), dy(width, 2);
  for (int x = 0; x < width; ++x) {
    const auto i = static_cast<std::size_t>(random.between(0, static_cast<int>(pell.size()) - 3));
    const float scale = std::ldexp(1.0F, random.between(-140, 90));
    float a = pell[i] * scale, b = pell[i + 1] * scale;
    if (random.oneIn(2)) b = std::nextafter(b, random.oneIn(2) ? 0.0F : inf);
    if (random.oneIn(2)) std::swap(a, b);
    dx.set(x, 0, x % 2 ? 0 : a);
    dy.set(x, 0, x % 2 ? 0 : b);
    dx.set(x, 1, x % 2 ? 0 : 1e38F);
    dy.set(x, 1, 0);
  }
  EXPECT_SAME_IMAGE(edges(dx, dy, 0, 0), definition(dx, dy, 0, 0));
  // Now larger ones stand on the left and right alone.
  for (int x = 0; x < width; ++x) {
    if (x % 2) dx.set(x, 0, 1e38F);
    dx.set(x, 1, 0);
  }
  EXPECT_SAME_IMAGE(edges(dx, dy, 0, 0), definition(dx, dy, 0, 0));
}

TEST(CannyGetSize, CountsTheMapTheMagnitudesAndTheStack) {
  EXPECT_EQ(sizeOf({1, 1}), 15 * 3 + 28 * 4 + 64);
  EXPECT_EQ(sizeOf({640, 480}), (480 * 5 + 10) * 642 + (640 * 4 + 24) * 4 + 64);
  EXPECT_EQ(sizeOf({65532, 3}), 25 * 65534 + (65532 * 4 + 24) * 4 + 64);
  EXPECT_EQ(sizeOf({65533, 3}), 5 * 9 * 65533 + 5 * 18 + (65533 * 4 + 24) * 4 + 64);
  EXPECT_EQ(sizeOf({3, 65532}), (65532 * 5 + 10) * 5 + 36 * 4 + 64);
  EXPECT_EQ(sizeOf({3, 65533}), 65535 * 27 + 65535 * 18 + 36 * 4 + 64);
}

TEST(CannyGetSize, ChecksThePointerThenTheSize) {
  int size = 77;
  EXPECT_FAILS(tevStatusNullPtr, teviCannyGetSize({0, 0}, nullptr));
  EXPECT_FAILS(tevStatusBadSize, teviCannyGetSize({0, 1}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviCannyGetSize({1, 0}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviCannyGetSize({-4, 4}, &size), size);
}

// At the first width or height of 65533 stack entries turn to 32 bits; coordinates up to 65532 need 16.
TYPED_TEST(Canny, WidthsAndHeightsAroundTheChangeOfStackEntries) {
  Random random;
  for (int length : {65532, 65533, 65540, 70000})
    for (int other : {1, 3})
      for (bool wide : {true, false}) {
        const int width = wide ? length : other, height = wide ? other : length;
        Image<TypeParam> dx(width, height), dy(width, height);
        dy.fill(0);
        // One strong pixel at the end of a weak line that runs through the whole image.
        for (int y = 0; y < height; ++y)
          for (int x = 0; x < width; ++x) {
            const bool line = wide ? y == other / 2 : x == other / 2;
            dy.set(x, y, line && wide ? 20 : 0);
            dx.set(x, y, static_cast<TypeParam>(line && !wide ? 20 : 0));
          }
        (wide ? dy : dx).set(wide ? width - 1 : other / 2, wide ? other / 2 : height - 1, 90);
        for (int i = 0; i < 400; ++i) dx.set(random.between(0, width - 1), random.between(0, height - 1), 11);
        ASSERT_SAME_IMAGE(edges(dx, dy, 10, 50, 3), definition(dx, dy, 10, 50)) << width << " x " << height;
      }
}

TYPED_TEST(Canny, ChecksInTheirOrder) {
  using T = TypeParam;
  constexpr int element = sizeof(T);
  Image<T> dx(8, 4, element), dy(8, 4, element);
  dx.fill(1);
  dy.fill(1);
  Image<Tev8u> d(8, 4);
  const Buffer memory(sizeOf({8, 4}));
  Tev8u* const b = memory.data();
  const int s = dx.step(), full = 8 * element;
  const TevSize roi = {8, 4};
  T* const null = nullptr;
  EXPECT_FAILS(tevStatusNullPtr, canny(null, s, dy.data(), s, d.data(), 8, {0, 4}, 1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusNullPtr, canny(dx.data(), s, null, s, d.data(), 8, roi, 1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusNullPtr, canny(dx.data(), s, dy.data(), s, nullptr, 8, roi, 1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusNullPtr, canny(dx.data(), s, dy.data(), s, d.data(), 8, roi, 1, 2, nullptr), d, memory);
  EXPECT_FAILS(tevStatusBadSize, canny(dx.data(), 1, dy.data(), s, d.data(), 8, {0, 4}, 1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusBadSize, canny(dx.data(), s, dy.data(), s, d.data(), 8, {8, 0}, 1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusBadStep, canny(dx.data(), full - 1, dy.data(), s, d.data(), 8, roi, 1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusBadStep, canny(dx.data(), s, dy.data(), full - 1, d.data(), 8, roi, 1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusBadStep, canny(dx.data(), full + 1, dy.data(), s, d.data(), 7, roi, 1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusBadStep, canny(dx.data(), s, dy.data(), s, d.data(), 8, {1 << 30, 4}, 1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusStepNotAligned, canny(dx.data(), full + 1, dy.data(), s, d.data(), 8, roi, 2, 1, b), d, memory);
  EXPECT_FAILS(tevStatusStepNotAligned, canny(dx.data(), s, dy.data(), full + 1, d.data(), 8, roi, 2, 1, b), d, memory);
  EXPECT_FAILS(tevStatusBadArg, canny(dx.data(), s, dy.data(), s, d.data(), 8, roi, -1, 2, b), d, memory);
  EXPECT_FAILS(tevStatusBadArg, canny(dx.data(), s, dy.data(), s, d.data(), 8, roi, notANumber, 2, b), d, memory);
  EXPECT_FAILS(tevStatusBadArg, canny(dx.data(), s, dy.data(), s, d.data(), 8, roi, 2, 1, b), d, memory);
  EXPECT_FAILS(tevStatusBadArg, canny(dx.data(), s, dy.data(), s, d.data(), 8, roi, 2, notANumber, b), d, memory);
  EXPECT_EQ(canny(dx.data(), full, dy.data(), full, d.data(), 8, roi, 2, 2, b), tevStatusOk);
  EXPECT_EQ(canny(dx.data(), full, dy.data(), full, d.data(), 8, roi, -0.0F, 0, b), tevStatusOk);
}

TYPED_TEST(Canny, AsksTheAllocatorForNothing) {
  kit::AllocatorWatch watch(0);
  Random random;
  const auto dx = derivative<TypeParam>(random, 40, 30, 1), dy = derivative<TypeParam>(random, 40, 30, 1);
  edges(dx, dy, 10, 100);
  EXPECT_EQ(watch.requests(), 0);
}

// The workers take a map with a border, 128 and above being candidates, and pixels that `dst` holds already are not
// visited again.
template <class Word>
void expectGrowth(void (*grow)(const Tev8u*, Word*, int, int, int, int, int, int, Tev8u*, int)) {
  const auto map = grid<Tev8u>({{0, 0, 0, 0, 0, 0},
                                {0, 128, 127, 0, 255, 0},
                                {0, 0, 200, 0, 128, 0},
                                {0, 0, 128, 0, 128, 0},
                                {0, 0, 0, 0, 0, 0}});
  auto d = grid<Tev8u>({{255, 0, 0, 0}, {0, 0, 0, 7}, {0, 0, 0, 0}});
  const Buffer memory(30 * 2 * int{sizeof(Word)});
  memory.as<Word>()[0] = 0;
  memory.as<Word>()[1] = 0;
  grow(map.data(), memory.as<Word>(), 2, 0, 4, 3, 0, 0, d.data(), d.step());
  EXPECT_SAME_IMAGE(d, grid<Tev8u>({{255, 0, 0, 0}, {0, 255, 0, 7}, {0, 255, 0, 0}}));
  memory.as<Word>()[0] = 0;
  memory.as<Word>()[1] = 3;
  grow(map.data(), memory.as<Word>(), 2, 0, 4, 3, 0, 0, d.data(), d.step());
  EXPECT_SAME_IMAGE(d, grid<Tev8u>({{255, 0, 0, 0}, {0, 255, 0, 7}, {0, 255, 0, 0}}));
}

TEST(Hysteresis, GrowsOverCandidatesFromTheStack) {
  expectGrowth(ownHysteresisThresholding_16u);
  expectGrowth(ownHysteresisThresholding_32s);
}
