#include "segmentation/floodfill.h"

#include <cmath>
#include <limits>

using fills::picture;
using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

template <class T, int channels>
TevStatus fill(int connectivity, T* image, int step, TevSize size, TevPoint seed, const std::vector<T>& value,
               TevConnectedRegion* region, Tev8u* buffer) {
  const auto four = fills::member<T, channels>(teviFloodFill_4Con_8u_C1IR, teviFloodFill_4Con_8u_C3IR,
                                               teviFloodFill_4Con_32f_C1IR, teviFloodFill_4Con_32f_C3IR);
  const auto eight = fills::member<T, channels>(teviFloodFill_8Con_8u_C1IR, teviFloodFill_8Con_8u_C3IR,
                                                teviFloodFill_8Con_32f_C1IR, teviFloodFill_8Con_32f_C3IR);
  return (connectivity == 4 ? four : eight)(image, step, size, seed, fills::passed<T, channels>(value), region, buffer);
}

int bufferSize(TevSize size) {
  int bytes = -1;
  EXPECT_EQ(teviFloodFillGetSize(size, &bytes), tevStatusOk);
  return bytes;
}

// Fills with a buffer of exactly the size that the query gives, at an address of its own each time.
template <class T, int channels>
TevConnectedRegion filled(int connectivity, Image<T, channels>& image, TevPoint seed, const std::vector<T>& value) {
  static int misalignment = 0;
  const Buffer buffer(bufferSize(image.size()), ++misalignment % 8);
  TevConnectedRegion region = fills::untouchedRegion();
  EXPECT_EQ(
      (fill<T, channels>(connectivity, image.data(), image.step(), image.size(), seed, value, &region, buffer.data())),
      tevStatusOk);
  return region;
}

// The same by the walk as it is told, on the image itself.
template <class T, int channels>
fills::Result told(int connectivity, Image<T, channels>& image, TevPoint seed, const std::vector<T>& value) {
  const auto s = fills::pixelAt(image, seed.x, seed.y);
  const auto passes = [&](int x, int y) {
    for (int c = 0; c < channels; ++c)
      if (image.at(x, y, c) < s[c] || image.at(x, y, c) > s[c]) return false;
    return true;
  };
  auto result =
      fills::walk(image.size(), seed, connectivity, passes, [&](int x, int y) { fills::setPixel(image, x, y, value); });
  fills::describe(result.region, value);
  return result;
}

// Fills `image` from `seed` and compares with the walk, and the filled pixels with a breadth-first search. Returns how
// deep the stack of the walk was.
template <class T, int channels>
std::size_t expectFill(int connectivity, Image<T, channels>& image, TevPoint seed, const std::vector<T>& value) {
  const auto before = image.clone();
  auto expected = image.clone();
  const auto walk = told(connectivity, expected, seed, value);
  EXPECT_TRUE(fills::sameRegions(filled(connectivity, image, seed, value), walk.region));
  EXPECT_SAME_IMAGE(image, expected);
  const auto s = fills::pixelAt(before, seed.x, seed.y);
  const auto marks = fills::reached(before.size(), seed, connectivity, [&](int x, int y) {
    for (int c = 0; c < channels; ++c)
      if (before.at(x, y, c) < s[c] || before.at(x, y, c) > s[c]) return false;
    return true;
  });
  EXPECT_EQ(walk.region.area, static_cast<double>(std::count(marks.begin(), marks.end(), 1)));
  for (int y = 0, i = 0; y < before.height(); ++y)
    for (int x = 0; x < before.width(); ++x, ++i)
      for (int c = 0; c < channels; ++c)
        if (!kit::sameBits(image.at(x, y, c), marks[i] ? value[c] : before.at(x, y, c))) {
          ADD_FAILURE() << "pixel " << x << ", " << y << " of " << before.width() << " x " << before.height();
          return walk.deepest;
        }
  return walk.deepest;
}

template <class T, int channels>
void expectRandomFills() {
  Random random(channels * 10 + sizeof(T));
  for (int trial = 0; trial < 240; ++trial) {
    const int width = trial % 8 == 0 ? 1 : random.between(1, trial % 3 == 0 ? 300 : 24);
    const int height = trial % 8 == 1 ? 1 : random.between(1, 20), density = random.between(0, 100);
    auto image = random.image<T, channels>(width, height, [] { return 0; });
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        const bool wall = random.between(0, 99) < density;
        for (int c = 0; c < channels; ++c)
          image.set(x * channels + c, y, static_cast<T>(wall ? random.between(0, 2) : 7 + c));
      }
    const TevPoint seed = {random.between(0, width - 1), random.between(0, height - 1)};
    std::vector<T> value(channels, T{100});
    if (random.oneIn(3)) value = fills::pixelAt(image, seed.x, seed.y), value[channels - 1] += T{1};
    expectFill(trial % 2 ? 4 : 8, image, seed, value);
    if (testing::Test::HasFailure()) FAIL() << "trial " << trial;
  }
}

template <class T, int channels>
void expectChecks(int connectivity) {
  constexpr int size = sizeof(T);
  Image<T, channels> image(8, 4, 8);
  image.fill(T{3});
  const Buffer buffer(bufferSize({8, 4}));
  TevConnectedRegion region = fills::untouchedRegion();
  const std::vector<T> value(channels, T{5});
  const auto call = [&](T* p, int step, TevSize roi, TevPoint seed, TevConnectedRegion* r, Tev8u* b) {
    return fill<T, channels>(connectivity, p, step, roi, seed, value, r, b);
  };
  const int step = image.step(), least = 8 * size;
  T* const p = image.data();
  Tev8u* const b = buffer.data();
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, {0, 4}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(p, step, {8, 4}, {0, 0}, nullptr, b), image, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(p, step, {8, 4}, {0, 0}, &region, nullptr), image, region);
  if constexpr (channels == 3) {
    const auto member = fills::member<T, 3>(0, teviFloodFill_4Con_8u_C3IR, 0, teviFloodFill_4Con_32f_C3IR);
    EXPECT_FAILS(tevStatusNullPtr, member(p, 0, {0, 0}, {0, 0}, nullptr, &region, b), image, region, buffer);
    const auto other = fills::member<T, 3>(0, teviFloodFill_8Con_8u_C3IR, 0, teviFloodFill_8Con_32f_C3IR);
    EXPECT_FAILS(tevStatusNullPtr, other(p, 0, {0, 0}, {0, 0}, nullptr, &region, b), image, region, buffer);
  }
  EXPECT_FAILS(tevStatusBadSize, call(p, 0, {0, 4}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(p, 0, {8, 0}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(p, step, {-8, -4}, {0, 0}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(p, least - 1, {8, 4}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(p, step, {(1 << 30) + 1, 4}, {0, 0}, &region, b), image, region, buffer);
  if (size > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, call(p, step + 1, {8, 4}, {9, 9}, &region, b), image, region, buffer);
  }
  for (const TevPoint seed : {TevPoint{-1, 0}, TevPoint{8, 0}, TevPoint{0, -1}, TevPoint{0, 4}})
    EXPECT_FAILS(tevStatusBadPoint, call(p, step, {8, 4}, seed, &region, b), image, region, buffer);
  // One element a pixel is step enough, also for three channels.
  EXPECT_EQ(call(p, least, {8, 1}, {0, 0}, &region, b), tevStatusOk);
  EXPECT_EQ(region.area, 8.0);
}

// Shapes that drive the stack deep.
Image<Tev8u> combs(int width, int height) {
  Image<Tev8u> image(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) image.set(x, y, y % 2 == 1 || x % 2 == 0);
  return image;
}
Image<Tev8u> checkerboard(int width, int height) {
  Image<Tev8u> image(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) image.set(x, y, (x + y) % 2 == 0);
  return image;
}
Image<Tev8u> spiral(int side) {
  Image<Tev8u> image(side, side);
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x) {
      const int ring = std::min({x, y, side - 1 - x, side - 1 - y});
      image.set(x, y, ring % 2 == 0 || (x == ring && y == ring + 1));
      if (x == ring - 1 && y == ring + 1 && ring % 2 == 1) image.set(x, y, 0);
    }
  return image;
}
Image<Tev8u> noise(int width, int height, int percent) {
  Random random(percent);
  return random.image<Tev8u>(width, height, [&] { return random.between(0, 99) < percent; });
}

}  // namespace

TEST(FloodFillExample, FillsTheRegionOfTheSeed) {
  auto image = grid<Tev8u>({{1, 1, 0, 1}, {0, 1, 0, 1}, {1, 0, 1, 1}});
  const auto region = filled<Tev8u, 1>(4, image, {0, 0}, {9});
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{9, 9, 0, 1}, {0, 9, 0, 1}, {1, 0, 1, 1}}));
  EXPECT_TRUE(fills::sameRegions(region, {3, {9, 0, 0}, {0, 0, 2, 2}}));
}

TEST(FloodFillExample, CrossesCornersWithEightNeighbours) {
  auto image = grid<Tev8u>({{1, 1, 0, 1}, {0, 1, 0, 1}, {1, 0, 1, 1}});
  const auto region = filled<Tev8u, 1>(8, image, {0, 0}, {9});
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{9, 9, 0, 9}, {0, 9, 0, 9}, {9, 0, 9, 9}}));
  EXPECT_TRUE(fills::sameRegions(region, {8, {9, 0, 0}, {0, 0, 4, 3}}));
}

TEST(FloodFillExample, ComparesAllThreeChannels) {
  auto image = grid<Tev32f, 3>({{1, 2, 3, 1, 2, 3, 1, 2, 4}, {1, 2, 4, 1, 2, 3, 0, 2, 3}});
  const auto region = filled<Tev32f, 3>(4, image, {0, 0}, {0.5F, -1, 3});
  EXPECT_SAME_IMAGE(image, (grid<Tev32f, 3>({{0.5F, -1, 3, 0.5F, -1, 3, 1, 2, 4}, {1, 2, 4, 0.5F, -1, 3, 0, 2, 3}})));
  EXPECT_TRUE(fills::sameRegions(region, {3, {0.5, -1, 3}, {0, 0, 2, 2}}));
}

TEST(FloodFill, TheRecordKeepsItsLayout) {
  static_assert(sizeof(TevConnectedRegion) == 48);
  static_assert(offsetof(TevConnectedRegion, value) == 8 && offsetof(TevConnectedRegion, rect) == 32);
}

TEST(FloodFill, EqualsTheWalkAndABreadthFirstSearchOnBytes) { expectRandomFills<Tev8u, 1>(); }
TEST(FloodFill, EqualsTheWalkAndABreadthFirstSearchOnColouredBytes) { expectRandomFills<Tev8u, 3>(); }
TEST(FloodFill, EqualsTheWalkAndABreadthFirstSearchOnFloats) { expectRandomFills<Tev32f, 1>(); }
TEST(FloodFill, EqualsTheWalkAndABreadthFirstSearchOnColouredFloats) { expectRandomFills<Tev32f, 3>(); }

TEST(FloodFill, ChecksArgumentsInOrder) {
  for (const int connectivity : {4, 8}) {
    expectChecks<Tev8u, 1>(connectivity);
    expectChecks<Tev8u, 3>(connectivity);
    expectChecks<Tev32f, 1>(connectivity);
    expectChecks<Tev32f, 3>(connectivity);
  }
}

TEST(FloodFill, ANewValueEqualToTheSeedLeavesImageAndRegionUntouched) {
  Image<Tev32f, 3> image(3, 3);
  image.fill(2);
  const auto before = image.clone();
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 3>(4, image, {1, 1}, {2, 2, 2}), fills::untouchedRegion()));
  EXPECT_SAME_IMAGE(image, before);
}

TEST(FloodFill, NanEqualsEverything) {
  // As a pixel it joins; as a seed or a new value it counts as equal to the other, and nothing is done.
  auto image = grid<Tev32f>({{1, notANumber, 1, 2}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 1>(4, image, {0, 0}, {5}), {3, {5, 0, 0}, {0, 0, 3, 1}}));
  EXPECT_SAME_IMAGE(image, grid<Tev32f>({{5, 5, 5, 2}}));
  auto seed = grid<Tev32f>({{notANumber, 1}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 1>(8, seed, {0, 0}, {5}), fills::untouchedRegion()));
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 1>(8, seed, {1, 0}, {notANumber}), fills::untouchedRegion()));
  EXPECT_SAME_IMAGE(seed, grid<Tev32f>({{notANumber, 1}}));
  // With three channels one other channel is enough to tell them apart.
  auto colour = grid<Tev32f, 3>({{notANumber, 1, 1, 7, 1, 1, 7, 2, 1}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 3>(4, colour, {0, 0}, {0, 0, 0}), {2, {0, 0, 0}, {0, 0, 2, 1}}));
}

TEST(FloodFill, ZerosOfBothSignsAreEqual) {
  auto image = grid<Tev32f>({{0.0F, -0.0F, 1.0F}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 1>(4, image, {0, 0}, {-0.0F}), fills::untouchedRegion()));
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 1>(4, image, {1, 0}, {3}), {2, {3, 0, 0}, {0, 0, 2, 1}}));
}

TEST(FloodFill, OneRowEndsWithTheSeedSpan) {
  auto image = grid<Tev8u>({{1, 1, 0, 1}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev8u, 1>(8, image, {1, 0}, {3}), {2, {3, 0, 0}, {0, 0, 2, 1}}));
}

TEST(FloodFill, OnePixelIsARegion) {
  auto image = grid<Tev8u>({{0, 0, 0}, {0, 1, 0}, {0, 0, 0}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev8u, 1>(4, image, {1, 1}, {3}), {1, {3, 0, 0}, {1, 1, 1, 1}}));
  auto alone = grid<Tev8u>({{1}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev8u, 1>(8, alone, {0, 0}, {3}), {1, {3, 0, 0}, {0, 0, 1, 1}}));
}

TEST(FloodFill, StartsFromTheLastRowToo) {
  auto image = picture({".#.", "##.", ".##"});
  EXPECT_TRUE(fills::sameRegions(filled<Tev8u, 1>(8, image, {2, 2}, {3}), {5, {3, 0, 0}, {0, 0, 3, 3}}));
}

TEST(FloodFill, RowsOfFloatsAdvanceByWholeElements) {
  // A step of 14 bytes holds three floats and is taken as 12.
  Image<Tev32f> image(3, 4);
  image.fill(1);
  const Buffer buffer(bufferSize({3, 4}));
  TevConnectedRegion region;
  EXPECT_EQ(teviFloodFill_4Con_32f_C1IR(image.data(), 14, {3, 4}, {0, 0}, 2, &region, buffer.data()), tevStatusOk);
  EXPECT_EQ(region.area, 12.0);
  EXPECT_SAME_IMAGE(image, Image<Tev32f>(3, 4).fill(2));
}

TEST(FloodFill, RowsThatOverlapAreWalkedAsTheyStand) {
  // A step of one element a pixel is accepted for three channels. The rows then share memory, and what the walk writes
  // in one row changes the next.
  Random random;
  for (int trial = 0; trial < 200; ++trial) {
    const int width = random.between(1, 9), height = random.between(1, 5), step = random.between(width, 3 * width - 1);
    const int elements = step * (height - 1) + 3 * width;
    auto memory = random.image<Tev8u>(elements, 1, [&] { return random.oneIn(9) ? 1 : 0; });
    auto expected = memory.clone();
    const TevPoint seed = {random.between(0, width - 1), random.between(0, height - 1)};
    const auto element = [&](int x, int y, int c) { return y * step + 3 * x + c; };
    const Tev8u value[3] = {9, 8, 7};
    Tev8u s[3];
    for (int c = 0; c < 3; ++c) s[c] = expected.get(element(seed.x, seed.y, c), 0);
    const int connectivity = trial % 2 ? 4 : 8;
    auto walk = fills::walk(
        {width, height}, seed, connectivity,
        [&](int x, int y) {
          for (int c = 0; c < 3; ++c)
            if (expected.get(element(x, y, c), 0) != s[c]) return false;
          return true;
        },
        [&](int x, int y) {
          for (int c = 0; c < 3; ++c) expected.set(element(x, y, c), 0, value[c]);
        });
    fills::describe(walk.region, std::vector<Tev8u>(value, value + 3));
    const Buffer buffer(bufferSize({width, height}), trial % 8);
    TevConnectedRegion region;
    const auto member = connectivity == 4 ? teviFloodFill_4Con_8u_C3IR : teviFloodFill_8Con_8u_C3IR;
    ASSERT_EQ(member(memory.data(), step, {width, height}, seed, value, &region, buffer.data()), tevStatusOk);
    ASSERT_TRUE(walk.ended);
    ASSERT_TRUE(fills::sameRegions(region, walk.region)) << trial;
    ASSERT_SAME_IMAGE(memory, expected);
  }
}

TEST(FloodFill, TheQueryGivesSixBytesAPixelAnd32) {
  int bytes = -7;
  EXPECT_FAILS(tevStatusNullPtr, teviFloodFillGetSize({0, 0}, nullptr));
  EXPECT_FAILS(tevStatusBadSize, teviFloodFillGetSize({0, 3}, &bytes), bytes);
  EXPECT_FAILS(tevStatusBadSize, teviFloodFillGetSize({3, -1}, &bytes), bytes);
  EXPECT_EQ(bufferSize({1, 1}), 38);
  EXPECT_EQ(bufferSize({3, 3}), 86);
  EXPECT_EQ(bufferSize({1920, 1080}), 12441632);
  // Modulo 2^32, as the result's 32 bits hold it.
  EXPECT_EQ(bufferSize({32768, 32768}), static_cast<int>(6442450944LL + 32 - 4294967296LL));
  EXPECT_EQ(bufferSize({2147483647, 2147483647}), 38);
}

TEST(FloodFill, AThreeByThreeRegionBetweenTwoCombsFitsItsBuffer) {
  // Four spans wait on the stack at once: records of 24 bytes would need 96 of the 86 bytes.
  auto image = picture({"#.#", "###", "#.#"});
  EXPECT_EQ((expectFill<Tev8u, 1>(4, image, {1, 1}, {5})), 4U);
}

TEST(FloodFill, DeepStacksStayInsideTheBuffer) {
  for (const int connectivity : {4, 8}) {
    for (const int width : {2, 3, 5, 9, 64, 65, 501}) {
      for (const int height : {2, 3, 5, 9, 64, 65}) {
        auto a = combs(width, height), b = checkerboard(width, height);
        expectFill<Tev8u, 1>(connectivity, a, {0, height > 1 ? 1 : 0}, {5});
        expectFill<Tev8u, 1>(connectivity, b, {width / 2 * 2 == width ? 0 : width - 1, 0}, {5});
      }
    }
    // One row filled whole between two combs: a third of all pixels, where records of 24 bytes have room for a quarter.
    auto three = combs(2000, 3);
    EXPECT_EQ((expectFill<Tev8u, 1>(connectivity, three, {1000, 1}, {5})), 2000U);
    auto turns = spiral(201);
    expectFill<Tev8u, 1>(connectivity, turns, {0, 0}, {5});
    for (int percent = 5; percent < 100; percent += 10) {
      auto image = noise(150, 131, percent);
      expectFill<Tev8u, 1>(connectivity, image, {75, 65}, {5});
    }
  }
}

TEST(FloodFill, LargeDeepShapesStayInsideTheBuffer) {
  // Full rows between combs, from one end: records of 24 bytes would take 0.999 of the buffer.
  auto a = combs(2000, 2000);
  EXPECT_EQ((expectFill<Tev8u, 1>(4, a, {1000, 1}, {5})), 999002U);
  auto b = checkerboard(1999, 2000);
  expectFill<Tev8u, 1>(8, b, {1000, 1000}, {5});
  auto c = spiral(1999);
  expectFill<Tev8u, 1>(4, c, {0, 0}, {5});
}

TEST(FloodFill, WideRegionsKeepTheirColumns) {
  // Columns and rows that no 16 bits hold.
  auto wide = combs(70001, 3);
  expectFill<Tev8u, 1>(8, wide, {70000, 1}, {5});
  Image<Tev8u> tall(3, 70001);
  tall.fill(1);
  expectFill<Tev8u, 1>(4, tall, {1, 69999}, {5});
}
