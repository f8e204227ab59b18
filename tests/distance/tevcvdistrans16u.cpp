#include "distance/chamfer.h"

namespace chamfer_tests {
INSTANTIATE_TYPED_TEST_SUITE_P(Words, Chamfer, Tev16u);
}

using kit::Image;

TEST(Chamfer16u, SaturatesFarFromTheOnlyZeroPixel) {
  for (int threads : {1, 2}) {
    const kit::Threads setting(threads);
    auto src = chamfer_tests::filled<Tev8u>(400, 70, 1);
    src.set(0, 35, 0);
    const auto dst = chamfer_tests::transform<Tev16u>(src, {1000, 1500, 2200});
    EXPECT_EQ(dst.at(65, 35), 65000);
    EXPECT_EQ(dst.at(66, 35), 65535);
    EXPECT_EQ(dst.at(399, 0), 65535);
  }
}

TEST(Chamfer16u, GiantWeightsReachNoPixel) {
  auto src = chamfer_tests::filled<Tev8u>(9, 6, 1);
  src.set(4, 3, 0);
  constexpr int most = std::numeric_limits<int>::max();
  auto expected = chamfer_tests::filled<Tev16u>(9, 6, 65535);
  expected.set(4, 3, 0);
  EXPECT_SAME_IMAGE(chamfer_tests::transform<Tev16u>(src, {most, most}), expected);
  EXPECT_SAME_IMAGE(chamfer_tests::transform<Tev16u>(src, {most, most, most}), expected);
}
