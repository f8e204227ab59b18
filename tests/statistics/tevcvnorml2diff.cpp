#include "statistics/norm_members.h"

using kit::grid;
using namespace norms;

namespace {

const auto members = std::make_tuple(
    TwoImages<Tev8u>{"teviNormDiff_L2_8u", teviNormDiff_L2_8u_C1MR, teviNormDiff_L2_8u_C3CMR, {131072, true}, {131072}},
    TwoImages<Tev8s>{"teviNormDiff_L2_8s", teviNormDiff_L2_8s_C1MR, teviNormDiff_L2_8s_C3CMR, {131072, true}, {131072}},
    TwoImages<Tev16u>{
        "teviNormDiff_L2_16u", teviNormDiff_L2_16u_C1MR, teviNormDiff_L2_16u_C3CMR, {131072}, {32768, true}},
    TwoImages<Tev32f>{"teviNormDiff_L2_32f", teviNormDiff_L2_32f_C1MR, teviNormDiff_L2_32f_C3CMR, {0}, {0}});

constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), quietNan = std::numeric_limits<Tev32f>::quiet_NaN();

constexpr Norm norm = {Kind::L2};

}  // namespace

TEST(NormDiffL2Example, IsTheEuclideanDistance) {
  const auto a = grid<Tev16u>({{65535, 4, 9}}), b = grid<Tev16u>({{65532, 0, 0}});
  EXPECT_TRUE(same(call(std::get<2>(members), a, b, grid<Tev8u>({{1, 1, 0}}), 0), {tevStatusOk, 5.0}));
}

TEST(NormDiffL28s, HoldsTheLargestSumOfALongRow) {
  const auto a = constant<Tev8s>(70000, 1, 127), b = constant<Tev8s>(70000, 1, -128);
  const auto mask = constant<Tev8u>(70000, 1, 1);
  EXPECT_TRUE(same(call(std::get<1>(members), a, b, mask, 0), {tevStatusOk, std::sqrt(65025.0 * 70000)}));
}

TEST(NormDiffL232f, ALeftOutNanCountsForNothing) {
  const auto a = grid<Tev32f>({{quietNan, 4, inf, 2}}), b = grid<Tev32f>({{0, 1, 0, quietNan}});
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, grid<Tev8u>({{0, 1, 0, 0}}), 0), {tevStatusOk, 3.0}));
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, grid<Tev8u>({{0, 1, 0, 1}}), 0), {tevStatusOk, quietNan}));
}

TEST(NormDiffL232f, OfALargeRegionEqualsTheChainOfAdditions) {
  longSumsEqualTheChain(std::get<3>(members), false, Kind::L2);
}

TEST_NORM_FAMILY(NormDiffL2, members, norm)
