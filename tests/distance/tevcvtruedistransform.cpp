#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <vector>

#include "kit/kit.h"
#include "tevcv/distance.h"
#include "tevcv/primitives.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;
using kit::Threads;

namespace {

Image<Tev32f> distances(const Image<Tev8u>& src) {
  int size = 0;
  EXPECT_EQ(teviTrueDistanceTransformGetBufferSize_8u32f_C1R(src.size(), &size), tevStatusOk);
  const Buffer buffer(size, (src.width() + src.height()) % 16);
  Image<Tev32f> dst(src.width(), src.height(), 8, 1);
  EXPECT_EQ(
      teviTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), buffer.data()),
      tevStatusOk);
  return dst;
}

Image<Tev16u> scaledDistances(const Image<Tev8u>& src, int scaleFactor) {
  int size = 0;
  EXPECT_EQ(teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(src.size(), &size), tevStatusOk);
  const Buffer buffer(size, (src.width() + src.height()) % 16);
  Image<Tev16u> dst(src.width(), src.height(), 4, 1);
  EXPECT_EQ(teviTrueDistanceTransform_8u16u_C1RSfs(src.data(), src.step(), dst.data(), dst.step(), src.size(),
                                                   scaleFactor, buffer.data()),
            tevStatusOk);
  return dst;
}

// Square of the distance to the nearest zero of the same column, as it is stored: 1e6 where there is none.
std::vector<float> columnSquares(const Image<Tev8u>& src) {
  const int width = src.width(), height = src.height();
  std::vector<float> squares(size_t(width) * height);
  for (int x = 0; x < width; ++x) {
    std::vector<int> up(height), down(height);
    constexpr int none = INT_MAX / 2;
    for (int y = 0; y < height; ++y) up[y] = src.at(x, y) == 0 ? 0 : y > 0 ? up[y - 1] + 1 : none;
    for (int y = height - 1; y >= 0; --y) down[y] = src.at(x, y) == 0 ? 0 : y + 1 < height ? down[y + 1] + 1 : none;
    for (int y = 0; y < height; ++y) {
      const int d = std::min(up[y], down[y]);
      squares[size_t(y) * width + x] = d < height ? float(d) * float(d) : 1e6F;
    }
  }
  return squares;
}

// The least sum over all columns, exact as long as all squares are.
Image<Tev32f> byBruteForce(const Image<Tev8u>& src) {
  const auto column = columnSquares(src);
  Image<Tev32f> result(src.width(), src.height());
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x) {
      double least = 1e300;
      for (int p = 0; p < src.width(); ++p)
        least = std::min(least, double(x - p) * (x - p) + column[size_t(y) * src.width() + p]);
      result.set(x, y, static_cast<float>(std::sqrt(least)));
    }
  return result;
}

// The lower envelope in extended precision, its fields rounded where they are stored. term(x, y, square, height)
// receives both terms of each squared distance.
template <class Term>
void byEnvelope(const Image<Tev8u>& src, Term term) {
  const int width = src.width();
  const auto column = columnSquares(src);
  std::vector<float> square(width), reciprocal(width), z(width + 1);
  std::vector<int> v(width + 1);
  for (int i = 1; i < width; ++i) {
    square[i] = float(i) * float(i);
    reciprocal[i] = 0.5F / float(i);
  }
  for (int y = 0; y < src.height(); ++y) {
    const float* const f = &column[size_t(y) * width];
    int k = 0;
    v[0] = 0;
    z[0] = -INFINITY;
    z[1] = INFINITY;
    for (int q = 1; q < width; ++q) {
      long double s;
      for (;;) {
        s = (static_cast<long double>(f[q]) + square[q] - f[v[k]] - square[v[k]]) * reciprocal[q - v[k]];
        if (!(z[k] >= s)) break;
        --k;
      }
      ++k;
      v[k] = q;
      z[k] = static_cast<float>(s);
      z[k + 1] = INFINITY;
    }
    k = 0;
    for (int q = 0; q < width; ++q) {
      while (static_cast<float>(q) > z[k + 1]) ++k;
      term(q, y, square[std::abs(q - v[k])], f[v[k]]);
    }
  }
}

Image<Tev32f> byEnvelope(const Image<Tev8u>& src) {
  Image<Tev32f> result(src.width(), src.height());
  byEnvelope(src, [&](int x, int y, float square, float height) { result.set(x, y, std::sqrt(square + height)); });
  return result;
}

Image<Tev16u> byEnvelope(const Image<Tev8u>& src, int scaleFactor) {
  Image<Tev16u> result(src.width(), src.height());
  byEnvelope(src, [&](int x, int y, float square, float height) {
    const auto squared = static_cast<Tev32s>(std::min(double(square) + double(height), double(INT_MAX)));
    Tev16s root = -1;
    tevsSqrt_32s16s_Sfs(&squared, &root, 1, scaleFactor);
    result.set(x, y, static_cast<Tev16u>(root));
  });
  return result;
}

Image<Tev8u> filled(int width, int height, Tev8u value) {
  Image<Tev8u> image(width, height);
  image.fill(value);
  return image;
}

// Columns with one zero each, or with none: the rows' parabolas stand at very different heights.
Image<Tev8u> sparseColumns(Random& random, int width, int height) {
  auto src = filled(width, height, 1);
  for (int x = 0; x < width; ++x)
    if (!random.oneIn(3)) src.set(x, random.oneIn(2) ? random.between(0, height - 1) : (height - 1) * (x % 2), 0);
  return src;
}

}  // namespace

TEST(TrueDistance, OfAPointIsEuclidean) {
  auto src = filled(9, 11, 255);
  src.set(2, 3, 0);
  const auto dst = distances(src);
  EXPECT_EQ(dst.at(2, 3), 0.0F);
  EXPECT_EQ(dst.at(5, 7), 5.0F);
  EXPECT_EQ(dst.at(6, 6), 5.0F);
  EXPECT_EQ(dst.at(3, 4), std::sqrt(2.0F));
  EXPECT_EQ(dst.at(8, 10), std::sqrt(85.0F));
  EXPECT_SAME_IMAGE(scaledDistances(grid<Tev8u>({{1, 1, 1, 1}, {1, 0, 1, 1}, {1, 1, 1, 1}}), -2),
                    grid<Tev16u>({{6, 4, 6, 9}, {4, 0, 4, 8}, {6, 4, 6, 9}}));
}

TEST(TrueDistance, Is1000EverywhereWithoutAZeroPixel) {
  for (const TevSize roi : {TevSize{1, 1}, TevSize{1, 7}, TevSize{7, 1}, TevSize{40, 30}, TevSize{3, 1500}}) {
    const auto src = filled(roi.width, roi.height, 1);
    Image<Tev32f> expected(roi.width, roi.height);
    expected.fill(1000.0F);
    ASSERT_SAME_IMAGE(distances(src), expected);
    Image<Tev16u> scaled(roi.width, roi.height);
    scaled.fill(500);
    ASSERT_SAME_IMAGE(scaledDistances(src, 1), scaled);
  }
}

TEST(TrueDistance, IsZeroWhereAllPixelsAreZero) {
  const auto src = filled(21, 13, 0);
  Image<Tev32f> expected(21, 13);
  expected.fill(0);
  EXPECT_SAME_IMAGE(distances(src), expected);
}

TEST(TrueDistance, OfOneColumnIsTheColumnsDistance) {
  EXPECT_SAME_IMAGE(distances(grid<Tev8u>({{1}, {1}, {0}, {1}, {1}, {1}, {0}})),
                    grid<Tev32f>({{2}, {1}, {0}, {1}, {2}, {1}, {0}}));
}

TEST(TrueDistance, OfOneRowIsTheRowsDistance) {
  EXPECT_SAME_IMAGE(distances(grid<Tev8u>({{1, 1, 0, 1, 1, 1, 0}})), grid<Tev32f>({{2, 1, 0, 1, 2, 1, 0}}));
}

TEST(TrueDistance, EqualsTheLeastOfAllDistances) {
  const Threads one(1);
  Random random;
  for (int trial = 0; trial < 250; ++trial) {
    const auto src = random.mask(random.between(1, 60), random.between(1, 40), random.between(2, 3000));
    const auto dst = distances(src);
    ASSERT_SAME_IMAGE(dst, byBruteForce(src));
    ASSERT_SAME_IMAGE(dst, byEnvelope(src));
  }
}

TEST(TrueDistance, RoundsTheScaledRoot) {
  const Threads one(1);
  Random random(1);
  for (int trial = 0; trial < 150; ++trial) {
    const auto src = random.mask(random.between(1, 50), random.between(1, 40), random.between(2, 3000));
    const int scaleFactor = random.between(-16, 18);
    ASSERT_SAME_IMAGE(scaledDistances(src, scaleFactor), byEnvelope(src, scaleFactor)) << "factor " << scaleFactor;
  }
}

// Column distances beyond 1414 make parabolas that undercut the first one before -1e6.
TEST(TrueDistance, OfHighImagesIsTheTrueEnvelope) {
  Random random(2);
  for (int height : {1414, 1415, 1416, 1417, 2000, 4000})
    for (int width : {2, 3, 9}) {
      const auto src = sparseColumns(random, width, height);
      const auto dst = distances(src);
      ASSERT_SAME_IMAGE(dst, byBruteForce(src));
      ASSERT_SAME_IMAGE(dst, byEnvelope(src));
    }
}

TEST(TrueDistance, OfHugeImagesKeepsExtendedCrossings) {
  Random random(3);
  for (const TevSize roi : {TevSize{5, 16383}, TevSize{5, 17000}, TevSize{3, 50000}, TevSize{17001, 2}}) {
    const auto src = sparseColumns(random, roi.width, roi.height);
    ASSERT_SAME_IMAGE(distances(src), byEnvelope(src));
    for (int scaleFactor : {0, 2}) ASSERT_SAME_IMAGE(scaledDistances(src, scaleFactor), byEnvelope(src, scaleFactor));
  }
}

// Squares beyond 2147483647 count as that.
TEST(TrueDistance, SaturatesSquaresOfTheIntegerForm) {
  auto src = filled(1, 60000, 1);
  src.set(0, 0, 0);
  const auto dst = scaledDistances(src, 2);
  EXPECT_EQ(dst.at(0, 40000), 10000);
  EXPECT_EQ(dst.at(0, 46341), 11585);
  EXPECT_EQ(dst.at(0, 59999), 11585);
}

TEST(TrueDistance, IsTheSameForEveryThreadCount) {
  Random random(4);
  for (const TevSize roi : {TevSize{300, 130}, TevSize{255, 20}, TevSize{300, 7}, TevSize{20, 3}}) {
    const auto src = random.mask(roi.width, roi.height, 900);
    const auto expected = byEnvelope(src);
    const auto scaled = byEnvelope(src, -3);
    for (int threads : kit::threadCounts) {
      const Threads setting(threads);
      ASSERT_SAME_IMAGE(distances(src), expected) << threads << " threads";
      ASSERT_SAME_IMAGE(scaledDistances(src, -3), scaled) << threads << " threads";
    }
  }
}

TEST(TrueDistance, InsideACallersParallelRegionDoesAllRows) {
  const Threads setting(2);
  Random random(5);
  const auto src = random.mask(280, 140, 900);
  const auto expected = byEnvelope(src);
  Image<Tev32f> dst[2] = {Image<Tev32f>(280, 140), Image<Tev32f>(280, 140)};
  int size = 0;
  teviTrueDistanceTransformGetBufferSize_8u32f_C1R(src.size(), &size);
  const Buffer buffers[2] = {Buffer(size), Buffer(size, 7)};
#pragma omp parallel for num_threads(2)
  for (int i = 0; i < 2; ++i)
    teviTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), dst[i].data(), dst[i].step(), src.size(),
                                        buffers[i].data());
  for (const auto& image : dst) EXPECT_SAME_IMAGE(image, expected);
}

TEST(TrueDistance, StaysInsideItsBufferAtEveryAddress) {
  Random random(6);
  for (int threads : {1, 2, 5}) {
    const Threads setting(threads);
    for (const TevSize roi : {TevSize{1, 1}, TevSize{1, 40}, TevSize{40, 1}, TevSize{33, 12}, TevSize{8, 8}}) {
      const auto src = random.mask(roi.width, roi.height, 10);
      const auto expected = byEnvelope(src);
      const auto scaled = byEnvelope(src, 0);
      int size = 0, scaledSize = 0;
      teviTrueDistanceTransformGetBufferSize_8u32f_C1R(roi, &size);
      teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(roi, &scaledSize);
      for (int misalignment = 0; misalignment<17; misalignment += threads> 1 ? 5 : 1) {
        const Buffer buffer(size, misalignment), scaledBuffer(scaledSize, misalignment);
        Image<Tev32f> dst(roi.width, roi.height);
        Image<Tev16u> scaledDst(roi.width, roi.height);
        ASSERT_EQ(
            teviTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), roi, buffer.data()),
            tevStatusOk);
        ASSERT_EQ(teviTrueDistanceTransform_8u16u_C1RSfs(src.data(), src.step(), scaledDst.data(), scaledDst.step(),
                                                         roi, 0, scaledBuffer.data()),
                  tevStatusOk);
        ASSERT_SAME_IMAGE(dst, expected);
        ASSERT_SAME_IMAGE(scaledDst, scaled);
      }
    }
  }
}

TEST(TrueDistance, BufferSizesFollowTheRegionAndTheThreads) {
  const auto size32f = [](int width, int height) {
    int size = -1;
    EXPECT_EQ(teviTrueDistanceTransformGetBufferSize_8u32f_C1R({width, height}, &size), tevStatusOk);
    return size;
  };
  const auto size16u = [](int width, int height) {
    int size = -1;
    EXPECT_EQ(teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs({width, height}, &size), tevStatusOk);
    return size;
  };
  for (int threads : kit::threadCounts) {
    const Threads setting(threads);
    EXPECT_EQ(size32f(1, 1), (4 * 24 + 56) * threads);
    EXPECT_EQ(size32f(5, 3), (8 * 24 + 56) * threads);
    EXPECT_EQ(size32f(640, 481), (640 * 24 + 56) * threads);
    EXPECT_EQ(size32f(640, 641), (644 * 24 + 56) * threads);
    EXPECT_EQ(size16u(1, 1), (8 * 6 + 6) * 4 * threads + 8 * 1 * 4 + 32);
    EXPECT_EQ(size16u(9, 5), (16 * 6 + 6) * 4 * threads + 16 * 5 * 4 + 32);
    EXPECT_EQ(size16u(640, 481), (640 * 6 + 6) * 4 * threads + 640 * 481 * 4 + 32);
    EXPECT_EQ(size16u(3, 641), (648 * 6 + 6) * 4 * threads + 8 * 641 * 4 + 32);
  }
  int size = 7;
  EXPECT_FAILS(tevStatusNullPtr, teviTrueDistanceTransformGetBufferSize_8u32f_C1R({0, 0}, nullptr));
  EXPECT_FAILS(tevStatusNullPtr, teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs({0, 0}, nullptr));
  for (const TevSize bad : {TevSize{0, 4}, TevSize{4, 0}, TevSize{-1, -1}}) {
    EXPECT_FAILS(tevStatusBadSize, teviTrueDistanceTransformGetBufferSize_8u32f_C1R(bad, &size), size);
    EXPECT_FAILS(tevStatusBadSize, teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(bad, &size), size);
  }
}

TEST(TrueDistance, ChecksPointersThenSizeThenStepsThenAlignment) {
  const auto src = filled(8, 4, 1);
  Image<Tev32f> f(8, 4, 8);
  Image<Tev16u> u(8, 4, 8);
  const Buffer buffer(4096);
  Tev8u* const b = buffer.data();
  const TevSize roi = {8, 4};
  const auto to32f = teviTrueDistanceTransform_8u32f_C1R;
  const auto to16u = teviTrueDistanceTransform_8u16u_C1RSfs;
  EXPECT_FAILS(tevStatusNullPtr, to32f(nullptr, 0, f.data(), 0, {0, 0}, b), f, buffer);
  EXPECT_FAILS(tevStatusNullPtr, to32f(src.data(), 0, nullptr, 0, {0, 0}, b), f, buffer);
  EXPECT_FAILS(tevStatusNullPtr, to32f(src.data(), 0, f.data(), 0, {0, 0}, nullptr), f, buffer);
  EXPECT_FAILS(tevStatusNullPtr, to16u(nullptr, 0, u.data(), 0, {0, 0}, 0, b), u, buffer);
  EXPECT_FAILS(tevStatusNullPtr, to16u(src.data(), 0, nullptr, 0, {0, 0}, 0, b), u, buffer);
  EXPECT_FAILS(tevStatusNullPtr, to16u(src.data(), 0, u.data(), 0, {0, 0}, 0, nullptr), u, buffer);
  for (const TevSize bad : {TevSize{0, 4}, TevSize{8, 0}, TevSize{-8, 4}}) {
    EXPECT_FAILS(tevStatusBadSize, to32f(src.data(), 0, f.data(), 0, bad, b), f, buffer);
    EXPECT_FAILS(tevStatusBadSize, to16u(src.data(), 0, u.data(), 0, bad, 0, b), u, buffer);
  }
  EXPECT_FAILS(tevStatusBadStep, to32f(src.data(), 7, f.data(), 33, roi, b), f, buffer);
  EXPECT_FAILS(tevStatusBadStep, to32f(src.data(), 8, f.data(), 31, roi, b), f, buffer);
  EXPECT_FAILS(tevStatusBadStep, to16u(src.data(), 7, u.data(), 17, roi, 0, b), u, buffer);
  EXPECT_FAILS(tevStatusBadStep, to16u(src.data(), 8, u.data(), 15, roi, 0, b), u, buffer);
  EXPECT_FAILS(tevStatusBadStep, to32f(src.data(), 8, f.data(), 32, {1 << 30, 4}, b), f, buffer);
  for (int step : {33, 34, 35})
    EXPECT_FAILS(tevStatusStepNotAligned, to32f(src.data(), 8, f.data(), step, roi, b), f, buffer);
  EXPECT_FAILS(tevStatusStepNotAligned, to16u(src.data(), 8, u.data(), 17, roi, 0, b), u, buffer);
  EXPECT_EQ(to32f(src.data(), 8, f.data(), 32, roi, b), tevStatusOk);
  EXPECT_EQ(to16u(src.data(), 8, u.data(), 16, roi, 99, b), tevStatusOk);
}
