#include "statistics/norm_members.h"

using kit::grid;
using namespace norms;

namespace {

const auto members = std::make_tuple(
    TwoImages<Tev8u>{"teviNormDiff_L1_8u", teviNormDiff_L1_8u_C1MR, teviNormDiff_L1_8u_C3CMR, {131072, true}, {131072}},
    TwoImages<Tev8s>{
        "teviNormDiff_L1_8s", teviNormDiff_L1_8s_C1MR, teviNormDiff_L1_8s_C3CMR, {131072, true}, {32768, true}},
    TwoImages<Tev16u>{
        "teviNormDiff_L1_16u", teviNormDiff_L1_16u_C1MR, teviNormDiff_L1_16u_C3CMR, {131072}, {32768, true}},
    TwoImages<Tev32f>{"teviNormDiff_L1_32f", teviNormDiff_L1_32f_C1MR, teviNormDiff_L1_32f_C3CMR, {0}, {0}});

constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), quietNan = std::numeric_limits<Tev32f>::quiet_NaN();

constexpr Norm norm = {Kind::L1};

}  // namespace

TEST(NormDiffL1Example, AddsDistancesUnderTheMask) {
  const auto a = grid<Tev8u>({{1, 9, 200}, {7, 8, 5}});
  const auto b = grid<Tev8u>({{4, 1, 0}, {7, 18, 5}});
  const auto mask = grid<Tev8u>({{1, 255, 0}, {1, 1, 1}});
  EXPECT_TRUE(same(call(std::get<0>(members), a, b, mask, 0), {tevStatusOk, 21.0}));
}

TEST(NormDiffL18s, WrapsPastTwoToThe31InASerialCall) {
  const kit::Threads manyThreadsKeepTheGateShut(100);
  const auto a = constant<Tev8s>(8421505, 1, 127), b = constant<Tev8s>(8421505, 1, -128);
  const auto mask = constant<Tev8u>(8421505, 1, 1);
  EXPECT_TRUE(same(call(std::get<1>(members), a, b, mask, 0), {tevStatusOk, -2147483521.0}));
}

TEST(NormDiffL132f, ALeftOutNanCountsForNothing) {
  const auto a = grid<Tev32f>({{quietNan, 1, inf, 2}}), b = grid<Tev32f>({{0, -1, 0, quietNan}});
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, grid<Tev8u>({{0, 1, 0, 0}}), 0), {tevStatusOk, 2.0}));
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, grid<Tev8u>({{0, 1, 1, 0}}), 0), {tevStatusOk, inf}));
}

TEST(NormDiffL132f, OfALargeRegionEqualsTheChainOfAdditions) {
  longSumsEqualTheChain(std::get<3>(members), false, Kind::L1);
}

TEST_NORM_FAMILY(NormDiffL1, members, norm)
