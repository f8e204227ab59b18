#include <limits>

#include "segmentation/floodfill.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();

template <class T, int channels>
TevStatus fill(int connectivity, T* image, int step, TevSize size, TevPoint seed, const std::vector<T>& value,
               const std::vector<T>& lower, const std::vector<T>& upper, TevConnectedRegion* region, Tev8u* buffer) {
  const auto four = fills::member<T, channels>(teviFloodFill_Range4Con_8u_C1IR, teviFloodFill_Range4Con_8u_C3IR,
                                               teviFloodFill_Range4Con_32f_C1IR, teviFloodFill_Range4Con_32f_C3IR);
  const auto eight = fills::member<T, channels>(teviFloodFill_Range8Con_8u_C1IR, teviFloodFill_Range8Con_8u_C3IR,
                                                teviFloodFill_Range8Con_32f_C1IR, teviFloodFill_Range8Con_32f_C3IR);
  using fills::passed;
  return (connectivity == 4 ? four : eight)(image, step, size, seed, passed<T, channels>(value),
                                            passed<T, channels>(lower), passed<T, channels>(upper), region, buffer);
}

template <class T, int channels>
TevConnectedRegion filled(int connectivity, Image<T, channels>& image, TevPoint seed, const std::vector<T>& value,
                          const std::vector<T>& lower, const std::vector<T>& upper) {
  static int misalignment = 0;
  int size = 0;
  EXPECT_EQ(teviFloodFillGetSize(image.size(), &size), tevStatusOk);
  const Buffer buffer(size, ++misalignment % 8);
  TevConnectedRegion region = fills::untouchedRegion();
  EXPECT_EQ((fill<T, channels>(connectivity, image.data(), image.step(), image.size(), seed, value, lower, upper,
                               &region, buffer.data())),
            tevStatusOk);
  return region;
}

// The bounds as they are defined: clamped for bytes, in extended precision for floats.
template <class T>
bool inside(T p, T seed, T lower, T upper) {
  using Wide = std::conditional_t<sizeof(T) == 1, int, long double>;
  return Wide{seed} - Wide{lower} <= Wide{p} && Wide{p} <= Wide{seed} + Wide{upper};
}

// Compares with the walk where it ends, and always with a breadth-first search. Returns whether the walk ended.
template <class T, int channels>
bool expectFill(int connectivity, Image<T, channels>& image, TevPoint seed, const std::vector<T>& value,
                const std::vector<T>& lower, const std::vector<T>& upper) {
  const auto before = image.clone();
  const auto s = fills::pixelAt(before, seed.x, seed.y);
  const auto passes = [&](const Image<T, channels>& in, int x, int y) {
    for (int c = 0; c < channels; ++c)
      if (!inside(in.at(x, y, c), s[c], lower[c], upper[c])) return false;
    return true;
  };
  auto expected = image.clone();
  auto walk = fills::walk(
      image.size(), seed, connectivity, [&](int x, int y) { return passes(expected, x, y); },
      [&](int x, int y) { fills::setPixel(expected, x, y, value); });
  fills::describe(walk.region, value);
  const auto region = filled(connectivity, image, seed, value, lower, upper);
  if (walk.ended) {
    EXPECT_TRUE(fills::sameRegions(region, walk.region));
  }
  const auto marks =
      fills::reached(before.size(), seed, connectivity, [&](int x, int y) { return passes(before, x, y); });
  const auto area = static_cast<double>(std::count(marks.begin(), marks.end(), 1));
  // Only a walk that finds again what it has written counts more than the pixels filled, and only where it ends.
  if (!walk.ended || walk.region.area == area) {
    EXPECT_EQ(region.area, area);
  }
  expected = before.clone();
  for (int y = 0, i = 0; y < before.height(); ++y)
    for (int x = 0; x < before.width(); ++x, ++i)
      if (marks[i]) fills::setPixel(expected, x, y, value);
  EXPECT_SAME_IMAGE(image, expected);
  return walk.ended;
}

template <class T, int channels>
void expectRandomFills() {
  Random random(channels * 10 + sizeof(T));
  int endless = 0, insideItsRange = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const int width = trial % 8 == 0 ? 1 : random.between(1, trial % 3 == 0 ? 200 : 14);
    const int height = trial % 8 == 1 ? 1 : random.between(1, 14), spread = random.between(1, 40);
    auto image = random.image<T, channels>(width, height,
                                           [&] { return 100 + random.between(0, spread) / (random.oneIn(4) ? 1 : 3); });
    const TevPoint seed = {random.between(0, width - 1), random.between(0, height - 1)};
    std::vector<T> value, lower, upper;
    for (int c = 0; c < channels; ++c) {
      value.push_back(static_cast<T>(random.oneIn(3) ? random.between(95, 145) : 200));
      lower.push_back(static_cast<T>(random.oneIn(9) ? 255 : random.between(0, 20)));
      upper.push_back(static_cast<T>(random.oneIn(9) ? 255 : random.between(0, 20)));
    }
    const auto s = fills::pixelAt(image, seed.x, seed.y);
    if (s == value) value[0] += T{1};
    bool within = true;
    for (int c = 0; c < channels; ++c) within = within && inside(value[c], s[c], lower[c], upper[c]);
    insideItsRange += within;
    endless += !expectFill(trial % 2 ? 4 : 8, image, seed, value, lower, upper);
    if (testing::Test::HasFailure()) FAIL() << "trial " << trial;
  }
  // Both kinds of walks have come by: those that end with a new value inside its range, and those that never do.
  if (channels == 1) {
    EXPECT_GT(endless, 0);
  }
  EXPECT_GT(insideItsRange, endless);
}

template <class T, int channels>
void expectChecks(int connectivity) {
  constexpr int size = sizeof(T);
  Image<T, channels> image(8, 4, 8);
  image.fill(T{3});
  const Buffer buffer(6 * 32 + 32);
  TevConnectedRegion region = fills::untouchedRegion();
  const std::vector<T> value(channels, T{5}), reach(channels, T{1});
  const auto call = [&](T* p, int step, TevSize roi, TevPoint seed, TevConnectedRegion* r, Tev8u* b) {
    return fill<T, channels>(connectivity, p, step, roi, seed, value, reach, reach, r, b);
  };
  const int step = image.step(), least = 8 * size;
  T* const p = image.data();
  Tev8u* const b = buffer.data();
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, {0, 4}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(p, step, {8, 4}, {0, 0}, nullptr, b), image, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(p, step, {8, 4}, {0, 0}, &region, nullptr), image, region);
  if constexpr (channels == 3) {
    const auto member =
        connectivity == 4
            ? fills::member<T, 3>(0, teviFloodFill_Range4Con_8u_C3IR, 0, teviFloodFill_Range4Con_32f_C3IR)
            : fills::member<T, 3>(0, teviFloodFill_Range8Con_8u_C3IR, 0, teviFloodFill_Range8Con_32f_C3IR);
    const T three[3] = {5, 5, 5};
    EXPECT_FAILS(tevStatusNullPtr, member(p, 0, {0, 0}, {0, 0}, nullptr, three, three, &region, b), image, region);
    EXPECT_FAILS(tevStatusNullPtr, member(p, 0, {0, 0}, {0, 0}, three, nullptr, three, &region, b), image, region);
    EXPECT_FAILS(tevStatusNullPtr, member(p, 0, {0, 0}, {0, 0}, three, three, nullptr, &region, b), image, region);
  }
  EXPECT_FAILS(tevStatusBadSize, call(p, 0, {0, 4}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(p, 0, {8, 0}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(p, least - 1, {8, 4}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(p, step, {(1 << 30) + 1, 4}, {0, 0}, &region, b), image, region, buffer);
  if (size > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, call(p, step + 1, {8, 4}, {9, 9}, &region, b), image, region, buffer);
  }
  for (const TevPoint seed : {TevPoint{-1, 0}, TevPoint{8, 0}, TevPoint{0, -1}, TevPoint{0, 4}})
    EXPECT_FAILS(tevStatusBadPoint, call(p, step, {8, 4}, seed, &region, b), image, region, buffer);
  EXPECT_EQ(call(p, least, {8, 1}, {0, 0}, &region, b), tevStatusOk);
  EXPECT_EQ(region.area, 8.0);
}

}  // namespace

TEST(FloodFillRangeExample, TakesTheRangeAroundTheSeed) {
  auto image = grid<Tev8u>({{10, 12, 13, 9}, {8, 14, 12, 7}, {12, 10, 11, 10}});
  const auto region = filled<Tev8u, 1>(4, image, {0, 0}, {99}, {1}, {3});
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{99, 99, 99, 99}, {8, 14, 99, 7}, {99, 99, 99, 99}}));
  EXPECT_TRUE(fills::sameRegions(region, {9, {99, 0, 0}, {0, 0, 4, 3}}));
}

TEST(FloodFillRange, EqualsTheWalkAndABreadthFirstSearchOnBytes) { expectRandomFills<Tev8u, 1>(); }
TEST(FloodFillRange, EqualsTheWalkAndABreadthFirstSearchOnFloats) { expectRandomFills<Tev32f, 1>(); }

TEST(FloodFillRange, EqualsTheWalkAndABreadthFirstSearchOnThreeChannels) {
  expectRandomFills<Tev8u, 3>();
  expectRandomFills<Tev32f, 3>();
}

TEST(FloodFillRange, ChecksArgumentsInOrder) {
  for (const int connectivity : {4, 8}) {
    expectChecks<Tev8u, 1>(connectivity);
    expectChecks<Tev8u, 3>(connectivity);
    expectChecks<Tev32f, 1>(connectivity);
    expectChecks<Tev32f, 3>(connectivity);
  }
}

TEST(FloodFillRange, BoundsOfBytesAreClamped) {
  auto image = grid<Tev8u>({{3, 0, 10}, {11, 255, 2}});
  EXPECT_EQ((filled<Tev8u, 1>(8, image, {0, 0}, {77}, {200}, {7})).area, 4.0);
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{77, 77, 77}, {11, 255, 77}}));
  auto bright = grid<Tev8u>({{250, 255, 249, 0}});
  EXPECT_EQ((filled<Tev8u, 1>(4, bright, {0, 0}, {5}, {0}, {255})).area, 2.0);
}

TEST(FloodFillRange, BoundsOfFloatsAreNotRounded) {
  // 1 - 2^-25 lies halfway between two floats; as a float it would be 1 and shut the pixel below 1 out or in.
  const float below = 1.0F - 0x1p-24F, above = 1.0F + 0x1p-23F;
  auto image = grid<Tev32f>({{1.0F, below, above}});
  EXPECT_EQ((filled<Tev32f, 1>(4, image, {0, 0}, {5}, {0x1p-25F}, {0x1p-24F})).area, 1.0);
  image = grid<Tev32f>({{1.0F, below, above}});
  EXPECT_EQ((filled<Tev32f, 1>(4, image, {0, 0}, {5}, {0x1p-24F}, {0x1p-23F})).area, 3.0);
}

TEST(FloodFillRange, EqualsTheBoundsInExtendedPrecisionOnHostileFloats) {
  Random random;
  constexpr float greatest = std::numeric_limits<float>::max(), least = std::numeric_limits<float>::denorm_min();
  const float specials[] = {0.0F,     -0.0F,     1.0F,  1.0F + 0x1p-23F, 1.0F - 0x1p-24F, -1.0F,     0x1p-24F, 0x1p-25F,
                            greatest, -greatest, least, -least,          infinity,        -infinity, 1e-20F,   0x1p24F};
  const auto draw = [&] { return specials[random.between(0, 15)]; };
  for (int trial = 0; trial < 4000; ++trial) {
    auto image = random.image<Tev32f>(2, 1, draw);
    const float lower = random.oneIn(4) ? -draw() : draw(), upper = draw(), seed = image.at(0, 0), p = image.at(1, 0);
    if (seed == 7.5F) continue;
    const bool joins = inside(p, seed, lower, upper);
    ASSERT_EQ((filled<Tev32f, 1>(4, image, {0, 0}, {7.5F}, {lower}, {upper})).area, joins ? 2.0 : 1.0)
        << seed << " " << p << " " << lower << " " << upper;
  }
}

TEST(FloodFillRange, NanIsNeverInside) {
  auto image = grid<Tev32f>({{1, notANumber, 1}, {1, 1, 1}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 1>(4, image, {0, 0}, {9}, {infinity}, {infinity}),
                                 {5, {9, 0, 0}, {0, 0, 3, 2}}));
  EXPECT_SAME_IMAGE(image, grid<Tev32f>({{9, notANumber, 9}, {9, 9, 9}}));
  // A difference of NaN gives a range that holds nothing: the seed alone is filled. It is not refused.
  auto other = grid<Tev32f>({{1, 1}});
  EXPECT_EQ((filled<Tev32f, 1>(4, other, {0, 0}, {9}, {notANumber}, {1})).area, 1.0);
}

TEST(FloodFillRange, ANanSeedOrNewValueCountsAsEqual) {
  auto image = grid<Tev32f>({{notANumber, 1}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 1>(4, image, {0, 0}, {5}, {9}, {9}), fills::untouchedRegion()));
  EXPECT_TRUE(
      fills::sameRegions(filled<Tev32f, 1>(8, image, {1, 0}, {notANumber}, {9}, {9}), fills::untouchedRegion()));
  EXPECT_SAME_IMAGE(image, grid<Tev32f>({{notANumber, 1}}));
}

TEST(FloodFillRange, ANewValueEqualToTheSeedLeavesImageAndRegionUntouched) {
  auto image = grid<Tev8u, 3>({{1, 2, 3, 1, 2, 4}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev8u, 3>(4, image, {0, 0}, {1, 2, 3}, {9, 9, 9}, {9, 9, 9}),
                                 fills::untouchedRegion()));
  EXPECT_SAME_IMAGE(image, (grid<Tev8u, 3>({{1, 2, 3, 1, 2, 4}})));
}

TEST(FloodFillRange, ANewValueInsideItsRangeFillsEachPixelOfARingOnce) {
  // The walk would go round the hole for ever, as what it has written passes again.
  auto image = grid<Tev8u>({{10, 11, 10}, {11, 99, 12}, {10, 12, 10}});
  EXPECT_FALSE((expectFill<Tev8u, 1>(4, image, {0, 0}, {12}, {2}, {2})));
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{12, 12, 12}, {12, 99, 12}, {12, 12, 12}}));
  auto open = grid<Tev8u>({{10, 11, 10}, {11, 99, 99}, {10, 12, 10}});
  EXPECT_TRUE((expectFill<Tev8u, 1>(4, open, {0, 0}, {12}, {2}, {2})));
  EXPECT_SAME_IMAGE(open, grid<Tev8u>({{12, 12, 12}, {12, 99, 99}, {12, 12, 12}}));
}

TEST(FloodFillRange, ANewValueInsideItsRangeCountsTheRunBesideTheSeedTwice) {
  // With 8 neighbours the row below the seed is looked at twice where it reaches beyond the seed's run.
  auto image = grid<Tev8u>({{10, 99, 99}, {99, 10, 10}, {10, 99, 99}});
  EXPECT_EQ((filled<Tev8u, 1>(8, image, {0, 0}, {12}, {2}, {2})).area, 4.0);
  auto wide = grid<Tev8u>({{10, 99, 99}, {10, 10, 10}, {10, 99, 99}});
  EXPECT_EQ((filled<Tev8u, 1>(8, wide, {0, 0}, {12}, {2}, {2})).area, 9.0);
  EXPECT_SAME_IMAGE(wide, grid<Tev8u>({{12, 99, 99}, {12, 12, 12}, {12, 99, 99}}));
  Random random;
  for (int trial = 0; trial < 3000; ++trial) {
    auto small = random.image<Tev8u>(random.between(1, 7), random.between(1, 5),
                                     [&] { return random.oneIn(2) ? 99 : random.between(10, 12); });
    const TevPoint seed = {random.between(0, small.width() - 1), random.between(0, small.height() - 1)};
    if (small.at(seed.x, seed.y) == 11) continue;
    expectFill<Tev8u, 1>(trial % 3 ? 8 : 4, small, seed, {11}, {2}, {2});
    if (HasFailure()) FAIL() << "trial " << trial;
  }
}

TEST(FloodFillRange, ANewValueInsideItsRangeFitsTheBufferOfDeepShapes) {
  for (const int width : {1, 2, 3, 4, 5, 33, 400})
    for (const int height : {1, 2, 3, 4, 90, 200})
      for (const int connectivity : {4, 8}) {
        Image<Tev8u> image(width, height);
        for (int y = 0; y < height; ++y)
          for (int x = 0; x < width; ++x) image.set(x, y, y % 2 == 1 || x % 2 == 0 ? 10 : 99);
        expectFill<Tev8u, 1>(connectivity, image, {0, height / 2}, {12}, {2}, {2});
      }
}

TEST(FloodFillRange, OneRowEndsWithTheSeedSpan) {
  auto image = grid<Tev8u>({{1, 2, 9, 1}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev8u, 1>(8, image, {1, 0}, {3}, {1}, {1}), {2, {3, 0, 0}, {0, 0, 2, 1}}));
}
