#include "statistics/norm_members.h"

using kit::grid;
using namespace norms;

namespace {

const auto members = std::make_tuple(
    TwoImages<Tev8u>{"teviNormRel_L1_8u", teviNormRel_L1_8u_C1MR, teviNormRel_L1_8u_C3CMR, {0}, {32768, true}},
    TwoImages<Tev8s>{
        "teviNormRel_L1_8s", teviNormRel_L1_8s_C1MR, teviNormRel_L1_8s_C3CMR, {131072, true}, {32768, true}},
    TwoImages<Tev16u>{"teviNormRel_L1_16u", teviNormRel_L1_16u_C1MR, teviNormRel_L1_16u_C3CMR, {32768, true}, {32768}},
    TwoImages<Tev32f>{"teviNormRel_L1_32f", teviNormRel_L1_32f_C1MR, teviNormRel_L1_32f_C3CMR, {0}, {0}});

constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), quietNan = std::numeric_limits<Tev32f>::quiet_NaN();

template <class T>
T* elementOf(const TwoImages<T>&);

constexpr Norm norm = {Kind::L1, true};

}  // namespace

TEST(NormRelL1Example, DividesTheSums) {
  const auto a = grid<Tev8u>({{1, 9, 200}}), b = grid<Tev8u>({{4, 1, 0}});
  EXPECT_TRUE(same(call(std::get<0>(members), a, b, grid<Tev8u>({{1, 1, 0}}), 0), {tevStatusOk, 11.0 / 5}));
}

TEST(NormRelL18u, GivesMinusInfinityWhereItsWrappedNumeratorIsNegative) {
  const auto a = constant<Tev8u>(8421505, 1, 255), b = constant<Tev8u>(8421505, 1, 0);
  EXPECT_TRUE(same(call(std::get<0>(members), a, b, a, 0), {tevStatusDivByZeroWarning, -inf}));
}

TEST(NormRelL18u, WrapsItsDenominatorToo) {
  const auto a = constant<Tev8u>(8421505, 1, 254), b = constant<Tev8u>(8421505, 1, 255);
  EXPECT_TRUE(same(call(std::get<0>(members), a, b, a, 0), {tevStatusOk, 8421505.0 / -2147483521.0}));
}

TEST(NormRelL132f, DividesExtendedSumsThatADoubleWouldRound) {
  const auto a = grid<Tev32f>({{1, 0}}), b = grid<Tev32f>({{3, 0x1p-60F}});
  const auto all = grid<Tev8u>({{1, 1}});
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, all, 0), pairByDefinition(true, Kind::L1, a, b, all, 0, 1)));
}

TEST(NormRelL1Denominator, OfZeroGivesAnInfinityOrNanAndAWarning) {
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

TEST(NormRelL132f, OfALargeRegionEqualsTheChainOfAdditions) {
  longSumsEqualTheChain(std::get<3>(members), true, Kind::L1);
}

TEST_NORM_FAMILY(NormRelL1, members, norm)
