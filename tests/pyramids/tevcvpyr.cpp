#include "pyramids/gauss5x5.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

template <class T, int channels>
Image<T, channels> naiveDown(const Image<T, channels>& src) {
  Image<T, channels> dst((src.width() + 1) / 2, (src.height() + 1) / 2);
  for (int y = 0; y < dst.height(); ++y)
    for (int x = 0; x < dst.width(); ++x)
      for (int c = 0; c < channels; ++c) {
        int sum = 0;
        for (int i = -2; i <= 2; ++i)
          for (int j = -2; j <= 2; ++j)
            sum += gauss::kernel[i + 2] * gauss::kernel[j + 2] *
                   src.at(gauss::reflected(2 * x + j, src.width()), gauss::reflected(2 * y + i, src.height()), c);
        dst.set(x * channels + c, y, static_cast<T>((sum + 128) >> 8));
      }
  return dst;
}

// Weights of the three neighbours for an even and for an odd sample.
constexpr int phases[2][3] = {{1, 6, 1}, {0, 4, 4}};

template <class T, int channels>
Image<T, channels> naiveUp(const Image<T, channels>& src) {
  Image<T, channels> dst(2 * src.width(), 2 * src.height());
  for (int y = 0; y < dst.height(); ++y)
    for (int x = 0; x < dst.width(); ++x)
      for (int c = 0; c < channels; ++c) {
        int sum = 0;
        for (int i = -1; i <= 1; ++i)
          for (int j = -1; j <= 1; ++j)
            sum += phases[y % 2][i + 1] * phases[x % 2][j + 1] *
                   src.at(gauss::oneSided(x / 2 + j, src.width()), gauss::oneSided(y / 2 + i, src.height()), c);
        dst.set(x * channels + c, y, static_cast<T>((sum + 32) >> 6));
      }
  return dst;
}

template <class Member>
class GaussianPyramid : public testing::Test {};
using AllMembers = testing::Types<gauss::Members<Tev8u, 1>, gauss::Members<Tev8u, 3>, gauss::Members<Tev8s, 1>,
                                  gauss::Members<Tev8s, 3>>;
TYPED_TEST_SUITE(GaussianPyramid, AllMembers);

}  // namespace

TEST(GaussianPyramidExample, HalvesAPointIntoTheKernelsCentre) {
  Random random;
  const auto src = grid<Tev8u>({{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 255, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}});
  // The corners see the point twice in each direction: 2 * 2 * 255 / 256; the edges 2 * 6, the middle 6 * 6.
  EXPECT_SAME_IMAGE(gauss::down(src, random), grid<Tev8u>({{4, 12, 4}, {12, 36, 12}, {4, 12, 4}}));
}

TEST(GaussianPyramidExample, RepeatsNoPixelAtTheEvenEndButCountsItsCentreTwice) {
  Random random;
  const auto src = grid<Tev8u>({{0, 0, 64, 0}, {0, 0, 64, 0}, {0, 0, 64, 0}, {0, 0, 64, 0}});
  // The last column is s[c - 2] + 4 * (s[c - 1] + s[c + 1]) + 7 * s[c] = 7 * 64, times 16 for the column: / 256 is 28.
  EXPECT_SAME_IMAGE(gauss::down(src, random), grid<Tev8u>({{8, 28}, {8, 28}}));
}

TEST(GaussianPyramidExample, DoublesAPointIntoThePhasesOfTheKernel) {
  Random random;
  const auto src = grid<Tev8u>({{0, 0, 0}, {0, 64, 0}, {0, 0, 0}});
  EXPECT_SAME_IMAGE(gauss::up(src, random), grid<Tev8u>({{4, 8, 12, 8, 2, 0},
                                                         {8, 16, 24, 16, 4, 0},
                                                         {12, 24, 36, 24, 6, 0},
                                                         {8, 16, 24, 16, 4, 0},
                                                         {2, 4, 6, 4, 1, 0},
                                                         {0, 0, 0, 0, 0, 0}}));
}

TEST(GaussianPyramidExample, ExpandsASingleRowIntoTwoEqualRows) {
  Random random;
  // (s[1] + 3 * s[0]) * 16 is 8 * (6 * s[0] + 2 * s[1]).
  const auto src = grid<Tev8u>({{10, 30}});
  EXPECT_SAME_IMAGE(gauss::up(src, random), grid<Tev8u>({{15, 20, 28, 30}, {15, 20, 28, 30}}));
}

TEST(GaussianPyramidExample, KeepsAConstantImageOfMinusOne) {
  Random random;
  Image<Tev8s> src(7, 6);
  src.fill(-1);
  EXPECT_SAME_IMAGE(gauss::down(src, random), Image<Tev8s>(4, 3).fill(-1));
  EXPECT_SAME_IMAGE(gauss::up(src, random), Image<Tev8s>(14, 12).fill(-1));
}

TEST(GaussianPyramidExample, KeepsEveryConstantOf8u) {
  Random random;
  for (int value = 0; value < 256; ++value) {
    Image<Tev8u> src(5, 4);
    src.fill(static_cast<Tev8u>(value));
    ASSERT_SAME_IMAGE(gauss::down(src, random), Image<Tev8u>(3, 2).fill(static_cast<Tev8u>(value)));
    ASSERT_SAME_IMAGE(gauss::up(src, random), Image<Tev8u>(10, 8).fill(static_cast<Tev8u>(value)));
  }
}

TEST(GaussianPyramidExample, KeepsASinglePixel) {
  Random random;
  const auto one = grid<Tev8u, 3>({{9, 200, 255}});
  EXPECT_SAME_IMAGE(gauss::down(one, random), one);
  EXPECT_SAME_IMAGE(gauss::up(one, random), (grid<Tev8u, 3>({{9, 200, 255, 9, 200, 255}, {9, 200, 255, 9, 200, 255}})));
}

TYPED_TEST(GaussianPyramid, EqualsTheDefinitionOnEverySmallSize) {
  using T = typename TypeParam::Element;
  Random random;
  for (int height = 1; height <= 9; ++height)
    for (int width = 1; width <= 9; ++width) {
      const auto src = random.image<T, TypeParam::channelCount>(width, height);
      ASSERT_SAME_IMAGE(gauss::down(src, random), naiveDown(src)) << width << " x " << height;
      ASSERT_SAME_IMAGE(gauss::up(src, random), naiveUp(src)) << width << " x " << height;
    }
}

TYPED_TEST(GaussianPyramid, EqualsTheDefinitionOnRandomRegions) {
  using T = typename TypeParam::Element;
  Random random;
  // Widths on both sides of the row kernels' blocks.
  for (int width : {40, 63, 255, 511, 512, 513, 514, 515, 516, 1030}) {
    const auto src = random.image<T, TypeParam::channelCount>(width, random.between(1, 12));
    ASSERT_SAME_IMAGE(gauss::down(src, random), naiveDown(src)) << width;
    ASSERT_SAME_IMAGE(gauss::up(src, random), naiveUp(src)) << width;
  }
}

TYPED_TEST(GaussianPyramid, HoldsTheExtremesOfTheElementsRange) {
  using T = typename TypeParam::Element;
  Random random;
  const auto extreme = [&] {
    return random.oneIn(2) ? std::numeric_limits<T>::lowest() : std::numeric_limits<T>::max();
  };
  for (int trial = 0; trial < 10; ++trial) {
    const auto src = random.image<T, TypeParam::channelCount>(random.between(3, 50), random.between(3, 9), extreme);
    ASSERT_SAME_IMAGE(gauss::down(src, random), naiveDown(src));
    ASSERT_SAME_IMAGE(gauss::up(src, random), naiveUp(src));
  }
}

TYPED_TEST(GaussianPyramid, DownChecksPointersThenSizeThenSteps) { gauss::checksOfDown<TypeParam>(); }
TYPED_TEST(GaussianPyramid, UpChecksPointersThenSizeThenSteps) { gauss::checksOfUp<TypeParam>(); }

TEST(GaussianPyramidBuffer, SizesAreSixRowsDownAndThreeDoubledRowsUp) {
  for (const TevDataType type : {tevDataType8u, tevDataType8s, tevDataType32f})
    for (int width = 1; width < 40; ++width)
      for (int channels : {1, 3}) {
        int size = -1;
        EXPECT_EQ(teviPyrDownGetBufSize_Gauss5x5(width, type, channels, &size), tevStatusOk);
        EXPECT_EQ(size, (width * channels * 4 + 15) / 16 * 16 * 6 + 32);
        EXPECT_EQ(teviPyrUpGetBufSize_Gauss5x5(width, type, channels, &size), tevStatusOk);
        EXPECT_EQ(size, (width * 2 * channels * 4 + 15) / 16 * 16 * 3 + 32);
      }
}

TEST(GaussianPyramidBuffer, QueriesCheckPointerThenWidthThenChannelsThenType) {
  for (const auto query : {teviPyrDownGetBufSize_Gauss5x5, teviPyrUpGetBufSize_Gauss5x5}) {
    int size = -7;
    EXPECT_FAILS(tevStatusNullPtr, query(0, 0, 0, nullptr), size);
    EXPECT_FAILS(tevStatusBadSize, query(0, 0, 0, &size), size);
    for (int channels : {0, 2, 4, -1}) EXPECT_FAILS(tevStatusBadChannels, query(1, 0, channels, &size), size);
    for (int type : {0, 2, 5, 12, 14}) EXPECT_FAILS(tevStatusBadKernel, query(1, type, 3, &size), size);
  }
}

TEST(GaussianPyramidWorkers, HandleNarrowAndLowImagesAlone) {
  Random random;
  for (int length = 1; length <= 9; ++length)
    for (int thin = 1; thin <= 2; ++thin) {
      const auto low = random.image<Tev8u, 3>(length, thin);
      auto d = random.image<Tev8u, 3>((length + 1) / 2, 1);
      ownPyrDownG5x5_H2_8u(low.data(), low.step(), d.data(), d.step(), low.size(), 3);
      EXPECT_SAME_IMAGE(d, naiveDown(low));
      const auto narrow = random.image<Tev8s>(thin, length);
      auto e = random.image<Tev8s>(1, (length + 1) / 2);
      ownPyrDownG5x5_W2_8s(narrow.data(), narrow.step(), e.data(), e.step(), narrow.size(), 1);
      EXPECT_SAME_IMAGE(e, naiveDown(narrow));
    }
  const auto row = random.image<Tev8s>(5, 1);
  auto rows = random.image<Tev8s>(10, 2);
  ownPyrUpG5x5_H1_8s(row.data(), row.step(), rows.data(), rows.step(), row.size(), 1);
  EXPECT_SAME_IMAGE(rows, naiveUp(row));
  const auto column = random.image<Tev8u, 3>(1, 5);
  auto columns = random.image<Tev8u, 3>(2, 10);
  ownPyrUpG5x5_W1_8u(column.data(), column.step(), columns.data(), columns.step(), column.size(), 3);
  EXPECT_SAME_IMAGE(columns, naiveUp(column));
}
