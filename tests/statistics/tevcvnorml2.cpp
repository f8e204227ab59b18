#include "statistics/norm_members.h"

using kit::grid;
using namespace norms;

namespace {

const auto members = std::make_tuple(
    OneImage<Tev8u>{"teviNorm_L2_8u", teviNorm_L2_8u_C1MR, teviNorm_L2_8u_C3CMR, {131072, true}, {32768, true}},
    OneImage<Tev8s>{"teviNorm_L2_8s", teviNorm_L2_8s_C1MR, teviNorm_L2_8s_C3CMR, {131072, true}, {32768, true}},
    OneImage<Tev16u>{"teviNorm_L2_16u", teviNorm_L2_16u_C1MR, teviNorm_L2_16u_C3CMR, {131072}, {32768, true}},
    OneImage<Tev32f>{"teviNorm_L2_32f", teviNorm_L2_32f_C1MR, teviNorm_L2_32f_C3CMR, {131072}, {32768, true}});

constexpr Tev32f most = std::numeric_limits<Tev32f>::max();

constexpr Norm norm = {Kind::L2};

}  // namespace

TEST(NormL2Example, OfThreeAndFourIsFive) {
  EXPECT_TRUE(same(call(std::get<0>(members), grid<Tev8u>({{3, 4}}), grid<Tev8u>({{1, 1}}), 0), {tevStatusOk, 5.0}));
}

TEST(NormL2Example, OfMinus128Is128) {
  EXPECT_TRUE(same(call(std::get<1>(members), grid<Tev8s>({{-128}}), grid<Tev8u>({{1}}), 0), {tevStatusOk, 128.0}));
}

TEST(NormL28u, HoldsTheLargestSumOfALongRow) {
  const auto src = constant<Tev8u>(70000, 1, 255);
  EXPECT_TRUE(same(call(std::get<0>(members), src, src, 0), {tevStatusOk, std::sqrt(65025.0 * 70000)}));
}

TEST(NormL216u, AddsDoublesOneByOnePastTwoToThe53) {
  Random random;
  const auto src = random.image<Tev16u>(1500, 1500, [&] { return random.between(65000, 65535); });
  const auto mask = constant<Tev8u>(1500, 1500, 1);
  for (int threads : {1, 2, 17, 40}) {
    const kit::Threads setting(threads);
    const int shares = std::get<2>(members).gate1.shares(src.size());
    const Tev64f expected = normByDefinition(Kind::L2, src, mask, 0, shares);
    EXPECT_TRUE(same(call(std::get<2>(members), src, mask, 0), {tevStatusOk, expected})) << threads << " threads";
  }
}

TEST(NormL232f, IsFiniteForTheLargestFloats) {
  const auto src = constant<Tev32f>(3, 1, most);
  EXPECT_TRUE(same(call(std::get<3>(members), src, grid<Tev8u>({{1, 1, 1}}), 0),
                   {tevStatusOk, normByDefinition(Kind::L2, src, grid<Tev8u>({{1, 1, 1}}), 0, 1)}));
}

TEST(NormL232f, OfALargeRegionEqualsTheChainOfAdditions) { longSumsEqualTheChain(std::get<3>(members), Kind::L2); }

TEST_NORM_FAMILY(NormL2, members, norm)
