#include <cmath>
#include <limits>

#include "segmentation/floodfill.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

template <class T, int channels>
TevStatus fill(int connectivity, T* image, int step, TevSize size, TevPoint seed, const std::vector<T>& value,
               const std::vector<T>& lower, const std::vector<T>& upper, TevConnectedRegion* region, Tev8u* buffer) {
  const auto four = fills::member<T, channels>(teviFloodFill_Grad4Con_8u_C1IR, teviFloodFill_Grad4Con_8u_C3IR,
                                               teviFloodFill_Grad4Con_32f_C1IR, teviFloodFill_Grad4Con_32f_C3IR);
  const auto eight = fills::member<T, channels>(teviFloodFill_Grad8Con_8u_C1IR, teviFloodFill_Grad8Con_8u_C3IR,
                                                teviFloodFill_Grad8Con_32f_C1IR, teviFloodFill_Grad8Con_32f_C3IR);
  using fills::passed;
  return (connectivity == 4 ? four : eight)(image, step, size, seed, passed<T, channels>(value),
                                            passed<T, channels>(lower), passed<T, channels>(upper), region, buffer);
}

int bufferSize(TevSize size) {
  int bytes = -1;
  EXPECT_EQ(teviFloodFillGetSize_Grad(size, &bytes), tevStatusOk);
  return bytes;
}

template <class T, int channels>
TevConnectedRegion filled(int connectivity, Image<T, channels>& image, TevPoint seed, const std::vector<T>& value,
                          const std::vector<T>& lower, const std::vector<T>& upper) {
  static int misalignment = 0;
  const Buffer buffer(bufferSize(image.size()), ++misalignment % 8);
  TevConnectedRegion region = fills::untouchedRegion();
  EXPECT_EQ((fill<T, channels>(connectivity, image.data(), image.step(), image.size(), seed, value, lower, upper,
                               &region, buffer.data())),
            tevStatusOk);
  return region;
}

bool similarValues(Tev8u c, Tev8u b, Tev8u lower, Tev8u upper) { return b - lower <= c && c <= b + upper; }
bool similarValues(Tev32f c, Tev32f b, Tev32f lower, Tev32f upper) {
  const auto h1 = static_cast<float>((static_cast<long double>(lower) - upper) * 0.5L);
  const auto h2 = static_cast<float>((static_cast<long double>(lower) + upper) * 0.5L);
  return !(std::fabs(static_cast<long double>(c) + h1 - b) > static_cast<long double>(h2));
}

// The walk written out step by step: a mask with a border, records with parents, three scans for each span popped.
template <class T, int channels>
fills::Result told(int connectivity, Image<T, channels>& image, TevPoint seed, const std::vector<T>& value,
                   const std::vector<T>& lower, const std::vector<T>& upper) {
  const int width = image.width(), height = image.height();
  const bool eight = connectivity == 8;
  std::vector<char> mask(static_cast<std::size_t>(width + 2) * (height + 2), 1);
  const auto masked = [&](int x, int y) -> char& {
    return mask[static_cast<std::size_t>(y + 1) * (width + 2) + x + 1];
  };
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) masked(x, y) = 0;
  const auto similar = [&](int x, int y, int bx, int by) {
    for (int c = 0; c < channels; ++c)
      if (!similarValues(image.at(x, y, c), image.at(bx, by, c), lower[c], upper[c])) return false;
    return true;
  };
  fills::Result result;
  int left = seed.x, right = seed.x, top = seed.y, bottom = seed.y;
  masked(seed.x, seed.y) = 1;
  while (!masked(right + 1, seed.y) && similar(right + 1, seed.y, right, seed.y)) masked(++right, seed.y) = 1;
  while (!masked(left - 1, seed.y) && similar(left - 1, seed.y, left, seed.y)) masked(--left, seed.y) = 1;
  std::vector<fills::Span> stack;
  if (eight)
    stack.push_back({seed.y, left, right, std::min(right + 2, width), right + 2, 1});
  else
    stack.push_back({seed.y, left, right, right + 1, right, 1});
  result.deepest = 1;
  while (!stack.empty()) {
    const auto s = stack.back();
    stack.pop_back();
    left = std::min(left, s.left);
    right = std::max(right, s.right);
    top = std::min(top, s.row);
    bottom = std::max(bottom, s.row);
    const auto connected = [&](int x, int y) {
      if (!eight) return x <= s.right && similar(x, y, x, s.row);
      for (const int n : {x - 1, x, x + 1})
        if (n >= s.left && n <= s.right && similar(x, y, n, s.row)) return true;
      return false;
    };
    const auto scan = [&](int y, int from, int to, int direction) {
      for (int x = from; x <= to; ++x) {
        if (masked(x, y) || !connected(x, y)) continue;
        masked(x, y) = 1;
        int l = x, r = x;
        while (!masked(l - 1, y) && similar(l - 1, y, l, y)) masked(--l, y) = 1;
        while (!masked(r + 1, y) && (similar(r + 1, y, r, y) || connected(r + 1, y))) masked(++r, y) = 1;
        stack.push_back({y, l, r, s.left, s.right, direction});
        result.deepest = std::max(result.deepest, stack.size());
        x = r + 1;
      }
    };
    const int reach = eight ? 1 : 0;
    scan(s.row - s.direction, s.left - reach, s.right + reach, s.direction);
    scan(s.row + s.direction, s.left - reach, s.parentLeft - 1, -s.direction);
    scan(s.row + s.direction, s.parentRight + 1, s.right + reach, -s.direction);
    for (int x = s.left; x <= s.right; ++x) fills::setPixel(image, x, s.row, value);
    result.region.area += s.right - s.left + 1;
  }
  fills::describe(result.region, value);
  result.region.rect = {left, top, right - left + 1, bottom - top + 1};
  return result;
}

template <class T, int channels>
std::size_t expectFill(int connectivity, Image<T, channels>& image, TevPoint seed, const std::vector<T>& value,
                       const std::vector<T>& lower, const std::vector<T>& upper) {
  auto expected = image.clone();
  const auto walk = told(connectivity, expected, seed, value, lower, upper);
  EXPECT_TRUE(fills::sameRegions(filled(connectivity, image, seed, value, lower, upper), walk.region));
  EXPECT_SAME_IMAGE(image, expected);
  return walk.deepest;
}

template <class T, int channels>
void expectRandomFills() {
  Random random(channels * 10 + sizeof(T));
  for (int trial = 0; trial < 400; ++trial) {
    const int width = trial % 8 == 0 ? 1 : random.between(1, trial % 3 == 0 ? 120 : 14);
    const int height = trial % 8 == 1 ? 1 : random.between(1, 14), spread = random.between(1, 60);
    auto image = random.image<T, channels>(width, height, [&] { return random.between(0, spread); });
    if (sizeof(T) == 4 && trial % 2)
      for (int y = 0; y < height; ++y)
        for (int i = 0; i < width * channels; ++i) image.set(i, y, static_cast<T>(image.get(i, y) * 0.1F));
    const TevPoint seed = {random.between(0, width - 1), random.between(0, height - 1)};
    std::vector<T> value, lower, upper;
    for (int c = 0; c < channels; ++c) {
      value.push_back(static_cast<T>(random.oneIn(2) ? random.between(0, spread) : 200));
      lower.push_back(static_cast<T>(random.oneIn(9) ? 0 : random.between(0, spread / 2)));
      upper.push_back(static_cast<T>(random.oneIn(9) ? 255 : random.between(0, spread / 2)));
      if (sizeof(T) == 4 && trial % 2) lower[c] = static_cast<T>(lower[c] * 0.1F);
      if (sizeof(T) == 4 && trial % 2) upper[c] = static_cast<T>(upper[c] * 0.1F);
    }
    expectFill(trial % 4 < 2 ? 4 : 8, image, seed, value, lower, upper);
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
        connectivity == 4 ? fills::member<T, 3>(0, teviFloodFill_Grad4Con_8u_C3IR, 0, teviFloodFill_Grad4Con_32f_C3IR)
                          : fills::member<T, 3>(0, teviFloodFill_Grad8Con_8u_C3IR, 0, teviFloodFill_Grad8Con_32f_C3IR);
    const T three[3] = {5, 5, 5};
    // One member does not look at these pointers; a bad size is found in their place.
    const TevStatus found = connectivity == 8 && size == 1 ? tevStatusBadSize : tevStatusNullPtr;
    EXPECT_FAILS(found, member(p, 0, {0, 0}, {0, 0}, nullptr, three, three, &region, b), image, region);
    EXPECT_FAILS(found, member(p, 0, {0, 0}, {0, 0}, three, nullptr, three, &region, b), image, region);
    EXPECT_FAILS(found, member(p, 0, {0, 0}, {0, 0}, three, three, nullptr, &region, b), image, region);
  }
  EXPECT_FAILS(tevStatusBadSize, call(p, 0, {0, 4}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(p, 0, {8, 0}, {9, 9}, &region, b), image, region, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(p, least - 1, {8, 4}, {9, 9}, &region, b), image, region, buffer);
  if (size > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, call(p, step + 1, {8, 4}, {9, 9}, &region, b), image, region, buffer);
    EXPECT_FAILS(tevStatusStepNotAligned, call(p, step + 2, {8, 4}, {9, 9}, &region, b), image, region, buffer);
  }
  for (const TevPoint seed : {TevPoint{-1, 0}, TevPoint{8, 0}, TevPoint{0, -1}, TevPoint{0, 4}})
    EXPECT_FAILS(tevStatusBadPoint, call(p, step, {8, 4}, seed, &region, b), image, region, buffer);
  if constexpr (size == 4) {
    for (int c = 0; c < channels; ++c)
      for (const T bad : {T(-1), T(-0x1p-149F), notANumber}) {
        auto negative = reach;
        negative[c] = bad;
        EXPECT_FAILS(tevStatusBadPoint,
                     (fill<T, channels>(connectivity, p, step, {8, 4}, {0, 0}, value, negative, reach, &region, b)),
                     image, region, buffer);
        EXPECT_FAILS(tevStatusBadPoint,
                     (fill<T, channels>(connectivity, p, step, {8, 4}, {0, 0}, value, reach, negative, &region, b)),
                     image, region, buffer);
      }
  }
  EXPECT_EQ(call(p, least, {8, 1}, {0, 0}, &region, b), tevStatusOk);
  EXPECT_EQ(region.area, 8.0);
}

}  // namespace

TEST(FloodFillGradExample, FollowsASlopeThatAFixedRangeWouldLeave) {
  auto image = grid<Tev8u>({{1, 2, 3, 4, 9}, {9, 9, 9, 5, 6}});
  const auto region = filled<Tev8u, 1>(4, image, {0, 0}, {100}, {1}, {1});
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{100, 100, 100, 100, 9}, {9, 9, 9, 100, 100}}));
  EXPECT_TRUE(fills::sameRegions(region, {6, {100, 0, 0}, {0, 0, 5, 2}}));
}

TEST(FloodFillGrad, EqualsTheWalkOnBytes) { expectRandomFills<Tev8u, 1>(); }
TEST(FloodFillGrad, EqualsTheWalkOnColouredBytes) { expectRandomFills<Tev8u, 3>(); }
TEST(FloodFillGrad, EqualsTheWalkOnFloats) { expectRandomFills<Tev32f, 1>(); }
TEST(FloodFillGrad, EqualsTheWalkOnColouredFloats) { expectRandomFills<Tev32f, 3>(); }

TEST(FloodFillGrad, ChecksArgumentsInOrder) {
  for (const int connectivity : {4, 8}) {
    expectChecks<Tev8u, 1>(connectivity);
    expectChecks<Tev8u, 3>(connectivity);
    expectChecks<Tev32f, 1>(connectivity);
    expectChecks<Tev32f, 3>(connectivity);
  }
}

TEST(FloodFillGrad, TheRightWalkMayAskTheSpanAboveAndTheLeftMayNot) {
  // The lower row is found at its third pixel. To its right 4 differs from 1 by too much, but not from the 4 above it;
  // to its left 4 stands under a 4 as well and is left out until the scan comes from elsewhere.
  auto right = grid<Tev8u>({{1, 1, 4, 9}, {9, 1, 4, 9}});
  EXPECT_EQ((filled<Tev8u, 1>(4, right, {2, 0}, {50}, {0}, {3})).area, 2.0);
  EXPECT_SAME_IMAGE(right, grid<Tev8u>({{1, 1, 50, 9}, {9, 1, 50, 9}}));
  auto rising = grid<Tev8u>({{1, 1, 4, 9}, {9, 1, 4, 9}});
  EXPECT_EQ((filled<Tev8u, 1>(4, rising, {0, 0}, {50}, {0}, {3})).area, 5.0);
}

TEST(FloodFillGrad, WithoutDifferencesRunsOfEqualValuesJoin) {
  auto image = grid<Tev8u>({{1, 1, 2}, {2, 1, 1}, {2, 2, 1}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev8u, 1>(4, image, {0, 0}, {9}, {0}, {0}), {5, {9, 0, 0}, {0, 0, 3, 3}}));
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{9, 9, 2}, {2, 9, 9}, {2, 2, 9}}));
}

TEST(FloodFillGrad, ANewValueEqualToTheSeedFillsAllTheSame) {
  auto image = grid<Tev8u>({{5, 6}, {5, 5}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev8u, 1>(4, image, {0, 0}, {5}, {1}, {1}), {4, {5, 0, 0}, {0, 0, 2, 2}}));
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{5, 5}, {5, 5}}));
}

TEST(FloodFillGrad, OnePixelAndOneRowAreFilled) {
  auto alone = grid<Tev32f>({{2}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 1>(8, alone, {0, 0}, {7}, {0}, {0}), {1, {7, 0, 0}, {0, 0, 1, 1}}));
  auto row = grid<Tev32f>({{2, 3, 9, 2}});
  EXPECT_TRUE(fills::sameRegions(filled<Tev32f, 1>(8, row, {1, 0}, {7}, {1}, {1}), {2, {7, 0, 0}, {0, 0, 2, 1}}));
}

TEST(FloodFillGrad, NanIsSimilarToEverything) {
  auto image = grid<Tev32f>({{1, notANumber, 100, 200}});
  EXPECT_EQ((filled<Tev32f, 1>(4, image, {0, 0}, {7}, {0}, {0})).area, 3.0);
  EXPECT_SAME_IMAGE(image, grid<Tev32f>({{7, 7, 7, 200}}));
}

TEST(FloodFillGrad, EqualsTheWalkOnHostileFloats) {
  Random random;
  constexpr float infinity = std::numeric_limits<float>::infinity(), greatest = std::numeric_limits<float>::max();
  const float specials[] = {0.0F,     -0.0F,    1.0F,      1.0F + 0x1p-23F, 1.0F - 0x1p-24F, -1.0F,      0x1p-24F,
                            0x1p-25F, greatest, -greatest, infinity,        -infinity,       notANumber, 0x1p24F,
                            0x1p-64F, 3.0F};
  for (int trial = 0; trial < 2000; ++trial) {
    auto image = random.image<Tev32f>(4, 3, [&] { return specials[random.between(0, 15)]; });
    const auto difference = [&] {
      const float d = std::fabs(specials[random.between(0, 15)]);
      return d >= 0 ? d : 0.5F;
    };
    const float lower = difference(), upper = difference();
    expectFill<Tev32f, 1>(trial % 2 ? 4 : 8, image, {random.between(0, 3), random.between(0, 2)}, {7}, {lower},
                          {upper});
    if (HasFailure()) FAIL() << "trial " << trial;
  }
}

TEST(FloodFillGrad, DeepStacksStayInsideTheBuffer) {
  Random random;
  std::size_t deepest = 0;
  for (const int connectivity : {4, 8})
    for (const int width : {2, 3, 5, 8, 33, 300})
      for (const int height : {2, 3, 5, 8, 33, 100})
        for (int kind = 0; kind < 4; ++kind) {
          // Rows of a middle value between rows whose pixels are far from each other but near to the middle.
          auto image = random.image<Tev8u>(width, height, [] { return 0; });
          for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
              image.set(x, y,
                        static_cast<Tev8u>(kind == 0   ? (y % 2 ? 50 : 45 + 10 * (x % 2))
                                           : kind == 1 ? (y % 3 == 1 ? 50 : 45 + 10 * (x % 2))
                                           : kind == 2 ? 50 + 6 * ((x + y) % 2)
                                                       : 40 + 5 * random.between(0, 4)));
          deepest = std::max(deepest, expectFill<Tev8u, 1>(connectivity, image, {width / 2, 1}, {200}, {5}, {5}));
        }
  EXPECT_GT(deepest, 300U);
}

TEST(FloodFillGrad, LargeNoiseStaysInsideTheBuffer) {
  Random random;
  auto image = random.image<Tev8u>(1000, 997, [&] { return random.between(0, 20); });
  expectFill<Tev8u, 1>(8, image, {500, 500}, {200}, {4}, {4});
}

TEST(FloodFillGrad, TheQueryAddsAMaskWithABorder) {
  int bytes = -7;
  EXPECT_FAILS(tevStatusNullPtr, teviFloodFillGetSize_Grad({0, 0}, nullptr));
  EXPECT_FAILS(tevStatusBadSize, teviFloodFillGetSize_Grad({0, 3}, &bytes), bytes);
  EXPECT_FAILS(tevStatusBadSize, teviFloodFillGetSize_Grad({3, -1}, &bytes), bytes);
  EXPECT_EQ(bufferSize({1, 1}), 9 + 38);
  EXPECT_EQ(bufferSize({1920, 1080}), 1922 * 1082 + 12441632);
  EXPECT_EQ(bufferSize({32768, 32768}), static_cast<int>(32770LL * 32770 + 6442450944LL + 32 - 2 * 4294967296LL));
}
