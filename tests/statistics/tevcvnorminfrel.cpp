#include "statistics/norm_members.h"

using kit::grid;
using namespace norms;

namespace {

const auto members = std::make_tuple(
    TwoImages<Tev8u>{
        "teviNormRel_Inf_8u", teviNormRel_Inf_8u_C1MR, teviNormRel_Inf_8u_C3CMR, {131072, true}, {32768, true}},
    TwoImages<Tev8s>{
        "teviNormRel_Inf_8s", teviNormRel_Inf_8s_C1MR, teviNormRel_Inf_8s_C3CMR, {131072, true}, {32768, true}},
    TwoImages<Tev16u>{
        "teviNormRel_Inf_16u", teviNormRel_Inf_16u_C1MR, teviNormRel_Inf_16u_C3CMR, {131072, true}, {32768}},
    TwoImages<Tev32f>{"teviNormRel_Inf_32f", teviNormRel_Inf_32f_C1MR, teviNormRel_Inf_32f_C3CMR, {32768}, {32768}});

constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), quietNan = std::numeric_limits<Tev32f>::quiet_NaN();

template <class T>
T* elementOf(const TwoImages<T>&);

constexpr Norm norm = {Kind::Inf, true};

}  // namespace

TEST(NormRelInfExample, DividesTheLargestDistanceByTheLargestMagnitude) {
  const auto a = grid<Tev8u>({{1, 9, 200}}), b = grid<Tev8u>({{4, 1, 0}});
  EXPECT_TRUE(same(call(std::get<0>(members), a, b, grid<Tev8u>({{1, 1, 0}}), 0), {tevStatusOk, 2.0}));
}

TEST(NormRelInf32f, ComparesAsFloatsAboveAndBelow) {
  const auto a = grid<Tev32f>({{quietNan, 3, 1}}), b = grid<Tev32f>({{1, quietNan, -4}});
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, grid<Tev8u>({{1, 1, 1}}), 0), {tevStatusOk, 1.25}));
}

TEST(NormRelInfDenominator, OfZeroGivesAnInfinityOrNanAndAWarning) {
  std::apply(
      [](const auto&... member) {
        (
            [](const auto& one) {
              using T = std::remove_const_t<std::remove_pointer_t<decltype(elementOf(one))>>;
              const auto a = grid<T>({{0, 5}}), zeros = grid<T>({{0, 0}});
              const auto all = grid<Tev8u>({{1, 1}});
              EXPECT_TRUE(same(call(one, a, zeros, all, 0), {tevStatusDivByZeroWarning, inf})) << one.name;
              EXPECT_TRUE(same(call(one, zeros, zeros, all, 0), {tevStatusDivByZeroWarning, quietNan})) << one.name;
              EXPECT_TRUE(same(call(one, a, a, all, 0), {tevStatusOk, 0.0})) << one.name;
            }(member),
            ...);
      },
      members);
}

TEST_NORM_FAMILY(NormRelInf, members, norm)
