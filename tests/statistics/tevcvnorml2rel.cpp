#include "statistics/norm_members.h"

using kit::grid;
using namespace norms;

namespace {

const auto members = std::make_tuple(
    TwoImages<Tev8u>{"teviNormRel_L2_8u", teviNormRel_L2_8u_C1MR, teviNormRel_L2_8u_C3CMR, {131072}, {32768, true}},
    TwoImages<Tev8s>{"teviNormRel_L2_8s", teviNormRel_L2_8s_C1MR, teviNormRel_L2_8s_C3CMR, {131072}, {32768, true}},
    TwoImages<Tev16u>{"teviNormRel_L2_16u", teviNormRel_L2_16u_C1MR, teviNormRel_L2_16u_C3CMR, {32768, true}, {32768}},
    TwoImages<Tev32f>{"teviNormRel_L2_32f", teviNormRel_L2_32f_C1MR, teviNormRel_L2_32f_C3CMR, {0}, {0}});

constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), quietNan = std::numeric_limits<Tev32f>::quiet_NaN();

template <class T>
T* elementOf(const TwoImages<T>&);

constexpr Norm norm = {Kind::L2, true};

}  // namespace

TEST(NormRelL2Example, IsTheRootOfTheQuotient) {
  const auto a = grid<Tev32f>({{3}}), b = grid<Tev32f>({{1}});
  EXPECT_TRUE(same(call(std::get<3>(members), a, b, grid<Tev8u>({{1}}), 0), {tevStatusOk, 2.0}));
}

TEST(NormRelL216u, AddsDoublesOneByOnePastTwoToThe53) {
  Random random;
  const auto a = random.image<Tev16u>(1500, 1500, [&] { return random.between(65000, 65535); });
  const auto b = random.image<Tev16u>(1500, 1500, [&] { return random.between(65000, 65535); });
  const auto none = constant<Tev16u>(1500, 1500, 0);
  const auto mask = constant<Tev8u>(1500, 1500, 1);
  for (int threads : {2, 100}) {
    const kit::Threads setting(threads);
    const int shares = std::get<2>(members).gate1.shares(a.size());
    EXPECT_TRUE(
        same(call(std::get<2>(members), a, b, mask, 0), pairByDefinition(true, Kind::L2, a, b, mask, 0, shares)));
    EXPECT_TRUE(
        same(call(std::get<2>(members), none, b, mask, 0), pairByDefinition(true, Kind::L2, none, b, mask, 0, shares)));
  }
}

TEST(NormRelL2Denominator, OfZeroGivesAnInfinityOrNanAndAWarning) {
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

TEST(NormRelL232f, OfALargeRegionEqualsTheChainOfAdditions) {
  longSumsEqualTheChain(std::get<3>(members), true, Kind::L2);
}

TEST_NORM_FAMILY(NormRelL2, members, norm)
