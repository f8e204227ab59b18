#include "statistics/norm_members.h"

using kit::grid;
using namespace norms;

namespace {

const auto members = std::make_tuple(
    OneImage<Tev8u>{"teviNorm_L1_8u", teviNorm_L1_8u_C1MR, teviNorm_L1_8u_C3CMR, {131072, true}, {131072}},
    OneImage<Tev8s>{"teviNorm_L1_8s", teviNorm_L1_8s_C1MR, teviNorm_L1_8s_C3CMR, {131072, true}, {131072}},
    OneImage<Tev16u>{"teviNorm_L1_16u", teviNorm_L1_16u_C1MR, teviNorm_L1_16u_C3CMR, {131072}, {131072}},
    OneImage<Tev32f>{"teviNorm_L1_32f", teviNorm_L1_32f_C1MR, teviNorm_L1_32f_C3CMR, {131072}, {131072}});

constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), quietNan = std::numeric_limits<Tev32f>::quiet_NaN();

constexpr Norm norm = {Kind::L1};

}  // namespace

TEST(NormL1Example, AddsMagnitudesUnderTheMask) {
  const auto src = grid<Tev8s>({{1, -9, 100}, {-128, 8, 5}});
  const auto mask = grid<Tev8u>({{1, 255, 0}, {1, 1, 0}});
  EXPECT_TRUE(same(call(std::get<1>(members), src, mask, 0), {tevStatusOk, 146.0}));
}

TEST(NormL132f, AnInfinityOrANanThatIsLeftOutCountsForNothing) {
  const auto src = grid<Tev32f>({{1, inf, -2.5F, quietNan}});
  EXPECT_TRUE(same(call(std::get<3>(members), src, grid<Tev8u>({{1, 0, 1, 0}}), 0), {tevStatusOk, 3.5}));
  EXPECT_TRUE(same(call(std::get<3>(members), src, grid<Tev8u>({{1, 1, 1, 0}}), 0), {tevStatusOk, inf}));
  EXPECT_TRUE(same(call(std::get<3>(members), src, grid<Tev8u>({{1, 1, 1, 1}}), 0), {tevStatusOk, quietNan}));
}

TEST(NormL18u, ReadsNegativePastTwoToThe31InASerialCall) {
  const kit::Threads manyThreadsKeepTheGateShut(100);
  for (const auto& [width, height, expected] :
       {std::tuple{8421504, 1, 2147483520.0}, std::tuple{2105376, 4, 2147483520.0},
        std::tuple{8421505, 1, -2147483521.0}}) {
    const auto src = constant<Tev8u>(width, height, 255);
    EXPECT_TRUE(same(call(std::get<0>(members), src, src, 0), {tevStatusOk, expected}));
  }
}

TEST(NormL18u, WrapsShareByShareInAParallelCall) {
  const kit::Threads setting(2);
  const auto src = constant<Tev8u>(8421505, 2, 255);
  const bool forks = tevGetNumCoresOnDie() != 1;
  const Tev64f all = 255.0 * 2 * 8421505, twoTo32 = 0x1p32;
  EXPECT_TRUE(same(call(std::get<0>(members), src, src, 0), {tevStatusOk, forks ? all - 2 * twoTo32 : all - twoTo32}));
}

TEST(NormL132f, SharesWithoutRowsAddNothing) {
  const kit::Threads setting(40);
  Random random;
  const auto src = random.image<Tev32f>(750000, 7);
  const auto mask = random.mask(750000, 7);
  const Tev64f expected = normByDefinition(Kind::L1, src, mask, 0, 40);
  EXPECT_TRUE(same(call(std::get<3>(members), src, mask, 0), {tevStatusOk, expected}));
}

TEST(NormL132f, OfALargeRegionEqualsTheChainOfAdditions) { longSumsEqualTheChain(std::get<3>(members), Kind::L1); }

TEST_NORM_FAMILY(NormL1, members, norm)
