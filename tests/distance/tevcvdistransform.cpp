#include "distance/chamfer.h"

namespace chamfer_tests {
INSTANTIATE_TYPED_TEST_SUITE_P(Floats, Chamfer, Tev32f);
}

using kit::grid;
using kit::Image;
using kit::Random;

TEST(Chamfer32f, AddsTheEuclideanWeights) {
  const auto src = grid<Tev8u>({{0, 1, 1}, {1, 1, 1}, {1, 1, 1}});
  const auto dst = chamfer_tests::transform<Tev32f>(src, {0.955F, 1.3693F});
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{0, 0.955F, 0.955F + 0.955F},
                                       {0.955F, 1.3693F, 0.955F + 1.3693F},
                                       {0.955F + 0.955F, 0.955F + 1.3693F, 1.3693F + 1.3693F}}));
}

TEST(Chamfer32f, EqualsTheDefinitionForTheNormsOfEveryMask) {
  Random random(20);
  const kit::Threads one(1);
  for (const auto& weights : chamfer_tests::weightsFromNorms<Tev32f>()) {
    const auto src = random.mask(150, 120, 2000);
    ASSERT_SAME_IMAGE(chamfer_tests::transform<Tev32f>(src, weights),
                      chamfer_tests::Definition<Tev32f>(src, weights).byOneThread());
  }
}

// Sums past the greatest float stay at it; an infinite weight leads nowhere.
TEST(Chamfer32f, SaturatesAtTheGreatestFloat) {
  constexpr float most = std::numeric_limits<float>::max(), inf = std::numeric_limits<float>::infinity();
  const auto src = grid<Tev8u>({{0, 1, 1, 1, 1}});
  EXPECT_SAME_IMAGE(chamfer_tests::transform<Tev32f>(src, {2e38F, 2e38F}),
                    grid<Tev32f>({{0, 2e38F, most, most, most}}));
  EXPECT_SAME_IMAGE(chamfer_tests::transform<Tev32f>(src, {inf, inf}), grid<Tev32f>({{0, most, most, most, most}}));
}

// Whether two weights are equal is asked with a tolerance of 1e-7.
TEST(Chamfer32f, ComparesWeightsWithinTheirRounding) {
  const auto form = [](float a, float b, float c) {
    const Image<Tev8u> src(9, 9);
    return chamfer_tests::Definition<Tev32f>(src, {a, b, c}).form();
  };
  using Form = chamfer_tests::Definition<Tev32f>::Form;
  const float below = std::nextafter(2.4F, 0.0F);
  EXPECT_EQ(form(1.0F, 1.4F, below), Form::full);
  Random random(21);
  const auto src = random.mask(40, 40, 300);
  EXPECT_SAME_IMAGE(chamfer_tests::transform<Tev32f>(src, {1.0F, 1.4F, below}),
                    chamfer_tests::transform<Tev32f>(src, {1.0F, 1.4F}));
}
