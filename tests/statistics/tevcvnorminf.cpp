#include "statistics/norm_members.h"

using kit::grid;
using namespace norms;

namespace {

const auto members = std::make_tuple(
    OneImage<Tev8u>{"teviNorm_Inf_8u", teviNorm_Inf_8u_C1MR, teviNorm_Inf_8u_C3CMR, {524288}, {131072}},
    OneImage<Tev8s>{"teviNorm_Inf_8s", teviNorm_Inf_8s_C1MR, teviNorm_Inf_8s_C3CMR, {524288}, {131072}},
    OneImage<Tev16u>{"teviNorm_Inf_16u", teviNorm_Inf_16u_C1MR, teviNorm_Inf_16u_C3CMR, {524288}, {131072}},
    OneImage<Tev32f>{"teviNorm_Inf_32f", teviNorm_Inf_32f_C1MR, teviNorm_Inf_32f_C3CMR, {131072}, {32768}});

constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), quietNan = std::numeric_limits<Tev32f>::quiet_NaN();

constexpr Norm norm = {Kind::Inf};

}  // namespace

TEST(NormInfExample, TakesTheLargestMagnitudeUnderTheMask) {
  const auto src = grid<Tev8s>({{1, -9, 100}, {-7, 8, 5}});
  const auto mask = grid<Tev8u>({{1, 255, 0}, {1, 1, 0}});
  EXPECT_TRUE(same(call(std::get<1>(members), src, mask, 0), {tevStatusOk, 9.0}));
}

TEST(NormInfExample, TheMagnitudeOfMinus128Is128) {
  EXPECT_TRUE(
      same(call(std::get<1>(members), grid<Tev8s>({{-128, 127}}), grid<Tev8u>({{1, 1}}), 0), {tevStatusOk, 128.0}));
}

TEST(NormInfExample, MeasuresTheChannelOfInterestAlone) {
  const auto src = grid<Tev8u, 3>({{1, 20, 3, 4, 5, 60}});
  const auto mask = grid<Tev8u>({{1, 1}});
  EXPECT_TRUE(same(call(std::get<0>(members), src, mask, 0), {tevStatusOk, 4.0}));
  EXPECT_TRUE(same(call(std::get<0>(members), src, mask, 1), {tevStatusOk, 20.0}));
  EXPECT_TRUE(same(call(std::get<0>(members), src, mask, 2), {tevStatusOk, 60.0}));
}

TEST(NormInf32f, ASelectedNanIsTheLargestOfAll) {
  const auto src = grid<Tev32f>({{1, -quietNan, inf, -3}});
  EXPECT_TRUE(same(call(std::get<3>(members), src, grid<Tev8u>({{1, 1, 1, 1}}), 0), {tevStatusOk, quietNan}));
  EXPECT_TRUE(same(call(std::get<3>(members), src, grid<Tev8u>({{1, 0, 1, 1}}), 0), {tevStatusOk, inf}));
  EXPECT_TRUE(same(call(std::get<3>(members), src, grid<Tev8u>({{1, 0, 0, 1}}), 0), {tevStatusOk, 3.0}));
}

TEST(NormInf32f, InAParallelCallOnlyTheFirstSharesNanIsTaken) {
  const kit::Threads setting(2);
  auto src = constant<Tev32f>(512, 512, 2);
  const auto mask = constant<Tev8u>(512, 512, 1);
  src.set(5, 400, quietNan);
  EXPECT_TRUE(same(call(std::get<3>(members), src, mask, 0), {tevStatusOk, 2.0}));
  src.set(5, 100, quietNan);
  EXPECT_TRUE(same(call(std::get<3>(members), src, mask, 0), {tevStatusOk, quietNan}));
}

TEST(NormInf16u, LooksAtTheSourcesAlignmentBeforeTheMasksStep) {
  const Image<Tev16u> src(8, 2, 3);
  const Image<Tev8u> mask(8, 2);
  Tev64f value = -1;
  EXPECT_FAILS(tevStatusStepNotAligned,
               teviNorm_Inf_16u_C1MR(src.data(), src.step(), mask.data(), 7, src.size(), &value), value);
}

TEST_NORM_FAMILY(NormInf, members, norm)
