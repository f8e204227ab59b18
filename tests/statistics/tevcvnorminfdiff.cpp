#include "statistics/norm_members.h"

using kit::grid;
using namespace norms;

namespace {

const auto members = std::make_tuple(
    TwoImages<Tev8u>{"teviNormDiff_Inf_8u", teviNormDiff_Inf_8u_C1MR, teviNormDiff_Inf_8u_C3CMR, {0}, {0}},
    TwoImages<Tev8s>{"teviNormDiff_Inf_8s", teviNormDiff_Inf_8s_C1MR, teviNormDiff_Inf_8s_C3CMR, {0}, {0}},
    TwoImages<Tev16u>{"teviNormDiff_Inf_16u", teviNormDiff_Inf_16u_C1MR, teviNormDiff_Inf_16u_C3CMR, {0}, {0}},
    TwoImages<Tev32f>{"teviNormDiff_Inf_32f", teviNormDiff_Inf_32f_C1MR, teviNormDiff_Inf_32f_C3CMR, {0}, {0}});

constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), quietNan = std::numeric_limits<Tev32f>::quiet_NaN();
constexpr Tev32f most = std::numeric_limits<Tev32f>::max();

constexpr Norm norm = {Kind::Inf};

}  // namespace

TEST(NormDiffInfExample, TakesTheLargestDistanceUnderTheMask) {
  const auto a = grid<Tev8u>({{1, 9, 200}, {7, 8, 5}});
  const auto b = grid<Tev8u>({{4, 1, 0}, {7, 18, 5}});
  const auto mask = grid<Tev8u>({{1, 255, 0}, {1, 1, 1}});
  EXPECT_TRUE(same(call(std::get<0>(members), a, b, mask, 0), {tevStatusOk, 10.0}));
}

TEST(NormDiffInf8s, SpansTheWholeRange) {
  EXPECT_TRUE(same(call(std::get<1>(members), grid<Tev8s>({{127}}), grid<Tev8s>({{-128}}), grid<Tev8u>({{1}}), 0),
                   {tevStatusOk, 255.0}));
}

TEST(NormDiffInf32f, ANanIsNeverTheLargestDistance) {
  const auto a = grid<Tev32f>({{quietNan, inf, 3, -1}}), b = grid<Tev32f>({{1, inf, 1, quietNan}});
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, grid<Tev8u>({{1, 1, 1, 1}}), 0), {tevStatusOk, 2.0}));
}

TEST(NormDiffInf32f, IsFiniteBeyondTheLargestFloat) {
  const auto a = grid<Tev32f>({{most, 1}}), b = grid<Tev32f>({{-most, 1}});
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, grid<Tev8u>({{1, 1}}), 0), {tevStatusOk, 2 * double{most}}));
}

// Differences that agree as floats, and differ behind.
TEST(NormDiffInf32f, KeepsWhatAFloatDifferenceDrops) {
  const auto a = grid<Tev32f>({{1, -1, 1, 1}});
  const auto b = grid<Tev32f>({{0x1p-30F, 0x1p-31F, -0x1p-32F, 0x1p-33F}});
  const auto all = grid<Tev8u>({{1, 1, 1, 1}});
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, all, 0), {tevStatusOk, 1 + 0x1p-31}));
}

TEST(NormDiffInf32f, RoundsToExtendedPrecisionAndThenToDouble) {
  const auto one = grid<Tev8u>({{1}});
  const auto a = grid<Tev32f>({{1}}), b = grid<Tev32f>({{-0x1.001p-53F}});
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, one, 0), {tevStatusOk, 1.0}));
}

TEST_NORM_FAMILY(NormDiffInf, members, norm)
