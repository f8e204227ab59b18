#include "frame/guarded.h"

#include <cmath>
#include <limits>

#include "kit/kit.h"

using namespace tevcv;

namespace {

// Rounds `value` with `margin` where `defined` is the truth, and tells whether the definition was asked.
struct Outcome {
  Tev32f result;
  bool asked;
};

Outcome roundOne(Tev64f value, Tev64f margin, Extended defined) {
  Outcome outcome = {0, false};
  roundGuarded(
      &outcome.result, 1,
      [=](GuardedBlock& block, int, int) {
        block.value[0] = value;
        block.margin[0] = margin;
      },
      [&](int) {
        outcome.asked = true;
        return defined;
      });
  return outcome;
}

}  // namespace

TEST(GuardedRounding, TakesTheFastValueWhereBothSidesOfTheMarginAgree) {
  const Outcome outcome = roundOne(1.0 / 3.0, 1e-12, 99);
  EXPECT_FALSE(outcome.asked);
  EXPECT_EQ(outcome.result, static_cast<Tev32f>(1.0 / 3.0));
}

TEST(GuardedRounding, AsksTheDefinitionNearATie) {
  const double tie = 1.0 + std::ldexp(1.0, -24);
  EXPECT_TRUE(roundOne(tie, 1e-15, 2).asked);
  EXPECT_EQ(roundOne(tie, 1e-15, 2).result, 2.0F);
  EXPECT_FALSE(roundOne(tie + 1e-10, 1e-15, 2).asked);
}

TEST(GuardedRounding, AsksTheDefinitionForNanInfinityAndAZeroOfUncertainSign) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(roundOne(std::numeric_limits<double>::quiet_NaN(), 0, 1).asked);
  EXPECT_TRUE(roundOne(1.0, inf, 1).asked);
  EXPECT_TRUE(roundOne(inf, inf, 1).asked);
  EXPECT_TRUE(roundOne(0.0, 1e-300, -0.0L).asked);
  EXPECT_TRUE(std::signbit(roundOne(0.0, 1e-300, -0.0L).result));
  EXPECT_FALSE(roundOne(0.0, 0.0, 1).asked);
}

TEST(GuardedRounding, RedoesWholeBlocksAndWorksInPlaceAtEveryLength) {
  kit::Random random;
  for (int count : {1, 2, 63, 64, 65, 127, 128, 200}) {
    auto data = random.image<Tev32f>(count, 1);
    const auto before = data.clone();
    Tev32f* const p = data.data();
    std::vector<int> asked(static_cast<size_t>(count), 0);
    const int doubtful = count / 2;
    roundGuarded(
        p, count,
        [=](GuardedBlock& block, int first, int length) {
          for (int i = 0; i < length; ++i) {
            block.value[i] = 2.0 * p[first + i];
            block.margin[i] = first + i == doubtful ? 1.0 : 0.0;
          }
        },
        [&](int i) {
          ++asked[static_cast<size_t>(i)];
          return 2.0L * p[i];
        });
    for (int i = 0; i < count; ++i) {
      ASSERT_EQ(data.at(i, 0), 2.0F * before.at(i, 0)) << i;
      ASSERT_EQ(asked[static_cast<size_t>(i)], i / guardedBlock == doubtful / guardedBlock ? 1 : 0) << i;
    }
  }
}
