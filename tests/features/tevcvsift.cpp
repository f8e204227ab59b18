#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "kit/kit.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using Points = std::vector<std::pair<int, int>>;

TevStatus findPeaks(const Tev32f* src, int step, TevSize roi, Tev32f threshold, TevPoint* peaks, int most, int* count,
                    int norm, int border, Tev8u* buffer) {
  return teviFindPeaks3x3_32f_C1R(src, step, roi, threshold, peaks, most, count, norm, border, buffer);
}
TevStatus findPeaks(const Tev32s* src, int step, TevSize roi, Tev32s threshold, TevPoint* peaks, int most, int* count,
                    int norm, int border, Tev8u* buffer) {
  return teviFindPeaks3x3_32s_C1R(src, step, roi, threshold, peaks, most, count, norm, border, buffer);
}

int bufferSize(int width) {
  int size = 0;
  EXPECT_EQ(teviFindPeaks3x3GetBufferSize_32f_C1R(width, &size), tevStatusOk);
  return size;
}

// Images whose step is a multiple of four elements.
template <class T, class Draw>
Image<T> drawn(Random& random, int width, int height, Draw draw) {
  const int padding = (4 - width % 4) % 4 * int{sizeof(T)} + 16 * random.between(0, 1);
  Image<T> image(width, height, padding, random.between(0, 7));
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) image.set(x, y, draw());
  return image;
}

template <class T>
Points peaksOf(const Image<T>& image, T threshold, int most, int norm, int border) {
  std::vector<TevPoint> found(static_cast<size_t>(most));
  int count = -1;
  const Buffer buffer(bufferSize(image.width()), (image.width() * 7) % 64);
  EXPECT_EQ(findPeaks(image.data(), image.step(), image.size(), threshold, found.data(), most, &count, norm, border,
                      buffer.data()),
            tevStatusOk);
  Points result;
  for (int i = 0; i < count; ++i) result.emplace_back(found[static_cast<size_t>(i)].x, found[static_cast<size_t>(i)].y);
  return result;
}

template <class T>
Points oracle(const Image<T>& image, T threshold, int most, int norm, int border) {
  Points result;
  for (int y = border; y < image.height() - border; ++y)
    for (int x = border; x < image.width() - border; ++x) {
      const T p = image.at(x, y);
      if (!(std::fabs(static_cast<long double>(p)) > static_cast<long double>(threshold))) continue;
      T extreme = p;
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
          if (norm == 1 && dx != 0 && dy != 0) continue;
          const T q = image.at(x + dx, y + dy);
          extreme = p <= 0 ? std::min(extreme, q) : std::max(extreme, q);
        }
      if (std::fabs(static_cast<long double>(p) - static_cast<long double>(extreme)) <= 1.1754944e-38L)
        result.emplace_back(x, y);
      if (static_cast<int>(result.size()) == most) return result;
    }
  return result;
}

}  // namespace

TEST(Peaks, AreExtremesBeyondTheThreshold) {
  const auto image = grid<Tev32f>({{0, 0, 0, 0, 0, 0, 0, 0},
                                   {0, 5, 1, 0, 0, -1, 0, 0},
                                   {0, 1, 4, 0, -2, -9, 0, 0},
                                   {0, 0, 0, 0, 0, 0, 2, 0},
                                   {0, 0, 0, 0, 0, 0, 0, 0}});
  EXPECT_EQ(peaksOf(image, 1.5F, 10, 0, 1), (Points{{1, 1}, {5, 2}, {6, 3}}));
  // In the cross the diagonal neighbour does not count.
  EXPECT_EQ(peaksOf(image, 1.5F, 10, 1, 1), (Points{{1, 1}, {2, 2}, {5, 2}, {6, 3}}));
  EXPECT_EQ(peaksOf(image, 2.0F, 10, 0, 1), (Points{{1, 1}, {5, 2}})) << "the threshold itself is not beyond";
}

TEST(Peaks, EqualADirectSearchOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 300; ++trial) {
    const int width = random.between(2, 40), height = random.between(2, 20);
    const int border = random.between(1, std::min(width, height) / 2),
              most = random.oneIn(4) ? random.between(1, 5) : 1000;
    const int norm = random.between(0, 1);
    const auto ints = drawn<Tev32s>(random, width, height, [&] { return random.between(-6, 6); });
    const int threshold = random.between(-1, 4);
    ASSERT_EQ(peaksOf(ints, threshold, most, norm, border), oracle(ints, threshold, most, norm, border));
    const auto floats = drawn<Tev32f>(random, width, height, [&] {
      return random.oneIn(5) ? std::ldexp(random.real(1), -126) : static_cast<Tev32f>(random.between(-6, 6));
    });
    const auto level = static_cast<Tev32f>(threshold);
    ASSERT_EQ(peaksOf(floats, level, most, norm, border), oracle(floats, level, most, norm, border));
  }
}

TEST(Peaks, ExtremeIntegers) {
  constexpr int low = std::numeric_limits<int>::min(), high = std::numeric_limits<int>::max();
  const auto image = grid<Tev32s>({{0, 0, 0, 0}, {0, low, high, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}});
  EXPECT_EQ(peaksOf(image, high - 1, 10, 0, 1), (Points{{1, 1}, {2, 1}}));
  EXPECT_EQ(peaksOf(image, high, 10, 0, 1), (Points{{1, 1}})) << "the lowest integer is larger by one";
}

TEST(Peaks, ABorderOfHalfTheWidthLeavesNone) {
  Image<Tev32f> image(8, 8);
  image.fill(5);
  EXPECT_TRUE(peaksOf(image, 1.0F, 10, 0, 4).empty());
}

TEST(Peaks, OneWantedIsTheFirstInRowOrder) {
  Image<Tev32f> image(8, 8);
  image.fill(5);
  EXPECT_EQ(peaksOf(image, 1.0F, 1, 0, 2), (Points{{2, 2}}));
}

TEST(Peaks, OfAPlateauAreAllItsPixels) {
  Image<Tev32s> image(8, 6);
  image.fill(-5);
  EXPECT_EQ(peaksOf(image, 1, 1000, 0, 1).size(), 6U * 4U);
}

TEST(Peaks, NanIsNoneAndInfinityIsNotEqualToItself) {
  constexpr float inf = std::numeric_limits<float>::infinity(), notANumber = std::numeric_limits<float>::quiet_NaN();
  auto image = grid<Tev32f>({{0, 0, 0, 0}, {0, notANumber, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}});
  EXPECT_TRUE(peaksOf(image, 1.0F, 10, 0, 1).empty());
  image.set(1, 1, inf);
  EXPECT_TRUE(peaksOf(image, 1.0F, 10, 0, 1).empty());
}

TEST(Peaks, AStepOfBrokenElementsCountsWholeOnes) {
  Image<Tev32s> image(8, 3);
  image.fill(0);
  image.set(3, 1, 7);
  std::vector<TevPoint> found(4);
  int count = 0;
  const Buffer buffer(bufferSize(8));
  for (int extra : {0, 1, 3}) {
    ASSERT_EQ(
        teviFindPeaks3x3_32s_C1R(image.data(), 32 + extra, {8, 3}, 1, found.data(), 4, &count, 0, 1, buffer.data()),
        tevStatusOk);
    EXPECT_EQ(count, 1);
  }
}

TEST(Peaks, RowExtremaOfThree) {
  Random random;
  for (int n = 2; n < 40; ++n) {
    const auto f = random.image<Tev32f>(n, 1);
    const auto i = random.image<Tev32s>(n, 1);
    if (n == 2) continue;
    auto fMax = random.image<Tev32f>(n - 2, 1), fMin = random.image<Tev32f>(n - 2, 1);
    auto iMax = random.image<Tev32s>(n - 2, 1), iMin = random.image<Tev32s>(n - 2, 1);
    ownSiftFilterMaxRow03_32f_C1R(f.data(), fMax.data(), n);
    ownSiftFilterMinRow03_32f_C1R(f.data(), fMin.data(), n);
    ownSiftFilterMaxRow03_32s_C1R(i.data(), iMax.data(), n);
    ownSiftFilterMinRow03_32s_C1R(i.data(), iMin.data(), n);
    for (int x = 0; x < n - 2; ++x) {
      ASSERT_EQ(fMax.at(x, 0), std::max({f.at(x, 0), f.at(x + 1, 0), f.at(x + 2, 0)}));
      ASSERT_EQ(fMin.at(x, 0), std::min({f.at(x, 0), f.at(x + 1, 0), f.at(x + 2, 0)}));
      ASSERT_EQ(iMax.at(x, 0), std::max({i.at(x, 0), i.at(x + 1, 0), i.at(x + 2, 0)}));
      ASSERT_EQ(iMin.at(x, 0), std::min({i.at(x, 0), i.at(x + 1, 0), i.at(x + 2, 0)}));
    }
  }
}

TEST(Peaks, BufferSizesToTheByte) {
  for (auto query : {teviFindPeaks3x3GetBufferSize_32f_C1R, teviFindPeaks3x3GetBufferSize_32s_C1R}) {
    int size = 5;
    EXPECT_EQ(query(1, &size), tevStatusOk);
    EXPECT_EQ(size, 128 + 32);
    EXPECT_EQ(query(3, &size), tevStatusOk);
    EXPECT_EQ(size, 256 + 32);
    EXPECT_EQ(query(640, &size), tevStatusOk);
    EXPECT_EQ(size, 161 * 128 + 32);
    EXPECT_EQ(query(0, nullptr), tevStatusNullPtr);
    EXPECT_FAILS(tevStatusBadSize, query(0, &size), size);
    EXPECT_FAILS(tevStatusBadSize, query(-4, &size), size);
  }
}

TEST(Peaks, ChecksInTheirOrder) {
  Image<Tev32f> f(8, 8);
  Image<Tev32s> i(8, 8);
  f.fill(1);
  i.fill(1);
  TevPoint peaks[4] = {};
  int count = 77;
  const Buffer memory(bufferSize(8));
  const auto check = [&](const auto* src, const auto threshold) {
    Tev8u* const b = memory.data();
    const TevSize roi = {8, 8};
    const std::remove_const_t<decltype(src)> none = nullptr;
    EXPECT_FAILS(tevStatusNullPtr, findPeaks(none, 0, {0, 0}, threshold, peaks, 0, &count, 9, 0, b), count);
    EXPECT_FAILS(tevStatusNullPtr, findPeaks(src, 32, roi, threshold, nullptr, 4, &count, 0, 1, b), count);
    EXPECT_FAILS(tevStatusNullPtr, findPeaks(src, 32, roi, threshold, peaks, 4, nullptr, 0, 1, b), count);
    EXPECT_FAILS(tevStatusNullPtr, findPeaks(src, 32, roi, threshold, peaks, 4, &count, 0, 1, nullptr), count);
    EXPECT_FAILS(tevStatusBadSize, findPeaks(src, 0, {0, 8}, threshold, peaks, 4, &count, 9, 1, b), count);
    EXPECT_FAILS(tevStatusBadSize, findPeaks(src, 0, {8, 0}, threshold, peaks, 4, &count, 9, 1, b), count);
    EXPECT_FAILS(tevStatusBadSize, findPeaks(src, 0, roi, threshold, peaks, 0, &count, 9, 1, b), count);
    EXPECT_FAILS(tevStatusBadSize, findPeaks(src, 0, roi, threshold, peaks, 4, &count, 9, 0, b), count);
    EXPECT_FAILS(tevStatusBadSize, findPeaks(src, 0, roi, threshold, peaks, 4, &count, 9, 5, b), count);
    EXPECT_FAILS(tevStatusBadSize, findPeaks(src, 0, {8, 3}, threshold, peaks, 4, &count, 9, 2, b), count);
    EXPECT_FAILS(tevStatusBadStep, findPeaks(src, 31, roi, threshold, peaks, 4, &count, 9, 1, b), count);
    EXPECT_FAILS(tevStatusStepNotAligned, findPeaks(src, 36, roi, threshold, peaks, 4, &count, 9, 1, b), count);
    EXPECT_FAILS(tevStatusBadArg, findPeaks(src, 32, roi, threshold, peaks, 4, &count, 2, 1, b), count);
    EXPECT_FAILS(tevStatusBadArg, findPeaks(src, 32, roi, threshold, peaks, 4, &count, -1, 1, b), count);
  };
  check(f.data(), 1.0F);
  check(i.data(), 1);
}
