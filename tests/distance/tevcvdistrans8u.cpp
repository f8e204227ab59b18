#include "distance/chamfer.h"

namespace chamfer_tests {
INSTANTIATE_TYPED_TEST_SUITE_P(Bytes, Chamfer, Tev8u);
}

using kit::grid;
using kit::Image;
using kit::Random;

TEST(Chamfer8u, DrawsTheOctagonsOfAPoint) {
  const auto src = grid<Tev8u>({{9, 9, 9, 9, 9}, {9, 9, 9, 9, 9}, {9, 9, 0, 9, 9}, {9, 9, 9, 9, 9}, {9, 9, 9, 9, 9}});
  Image<Tev8u> dst(5, 5);
  const Tev32s of3x3[] = {2, 3}, of5x5[] = {5, 7, 11};
  EXPECT_EQ(teviDistanceTransform_3x3_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), of3x3),
            tevStatusOk);
  EXPECT_SAME_IMAGE(dst,
                    grid<Tev8u>({{6, 5, 4, 5, 6}, {5, 3, 2, 3, 5}, {4, 2, 0, 2, 4}, {5, 3, 2, 3, 5}, {6, 5, 4, 5, 6}}));
  EXPECT_EQ(teviDistanceTransform_5x5_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), of5x5),
            tevStatusOk);
  EXPECT_SAME_IMAGE(
      dst, grid<Tev8u>(
               {{14, 11, 10, 11, 14}, {11, 7, 5, 7, 11}, {10, 5, 0, 5, 10}, {11, 7, 5, 7, 11}, {14, 11, 10, 11, 14}}));
}

TEST(Chamfer8u, SaturatesFarFromTheOnlyZeroPixel) {
  for (int threads : {1, 2}) {
    const kit::Threads setting(threads);
    auto src = chamfer_tests::filled<Tev8u>(400, 70, 1);
    src.set(10, 30, 0);
    const auto dst = chamfer_tests::transform<Tev8u>(src, {2, 3});
    EXPECT_EQ(dst.at(10 + 127, 30), 254);
    EXPECT_EQ(dst.at(10 + 128, 30), 255);
    EXPECT_EQ(dst.at(399, 69), 255);
  }
}

TEST(Chamfer8u, InPlaceEqualsTheTwoBufferForm) {
  Random random;
  for (int threads : {1, 2}) {
    const kit::Threads setting(threads);
    for (int trial = 0; trial < 60; ++trial) {
      const bool large = trial % 10 == 0;
      auto image = random.mask(random.between(1, large ? 300 : 20) + (large ? 256 : 0),
                               random.between(1, 20) + (large ? 63 : 0), random.between(2, 40));
      const auto weights = chamfer_tests::randomWeights<Tev8u>(random, 2 + trial % 2);
      const auto apart = chamfer_tests::transform<Tev8u>(image, weights);
      const auto call = weights.size() == 2 ? teviDistanceTransform_3x3_8u_C1IR : teviDistanceTransform_5x5_8u_C1IR;
      ASSERT_EQ(call(image.data(), image.step(), image.size(), weights.data()), tevStatusOk);
      ASSERT_SAME_IMAGE(image, apart);
    }
  }
}

TEST(Chamfer8u, InPlaceChecksLikeTheTwoBufferForm) {
  Image<Tev8u> image(8, 4, 2);
  image.fill(1);
  const Tev32s good[] = {1, 1, 1}, bad[] = {1, 0, 1};
  for (const auto call : {teviDistanceTransform_3x3_8u_C1IR, teviDistanceTransform_5x5_8u_C1IR}) {
    EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, {0, 0}, bad));
    EXPECT_FAILS(tevStatusNullPtr, call(image.data(), 0, {0, 0}, nullptr), image);
    EXPECT_FAILS(tevStatusBadSize, call(image.data(), 0, {8, 0}, bad), image);
    EXPECT_FAILS(tevStatusBadStep, call(image.data(), 7, {8, 4}, bad), image);
    EXPECT_FAILS(tevStatusBadMetric, call(image.data(), 8, {8, 3}, bad), image);
    EXPECT_EQ(call(image.data(), 8, {8, 3}, good), tevStatusOk);
  }
}
