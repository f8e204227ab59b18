#include <bit>
#include <limits>

#include "kit/kit.h"
#include "tevcv/motion.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr float inf = std::numeric_limits<float>::infinity(), notANumber = std::numeric_limits<float>::quiet_NaN();

TevStatus update(const Tev8u* s, int ss, Tev32f* m, int ms, TevSize roi, float time, float duration) {
  return teviUpdateMotionHistory_8u32f_C1IR(s, ss, m, ms, roi, time, duration);
}
TevStatus update(const Tev16u* s, int ss, Tev32f* m, int ms, TevSize roi, float time, float duration) {
  return teviUpdateMotionHistory_16u32f_C1IR(s, ss, m, ms, roi, time, duration);
}
TevStatus update(const Tev32f* s, int ss, Tev32f* m, int ms, TevSize roi, float time, float duration) {
  return teviUpdateMotionHistory_32f_C1IR(s, ss, m, ms, roi, time, duration);
}

// The definition. Floats are ordered as numbers, with -0.0 below 0.0 and NaN at the ends, in the integer members.
template <class T>
float expectedValue(T silhouette, float mhi, float time, float duration) {
  const auto key = [](float v) {
    const auto bits = std::bit_cast<Tev32s>(v);
    return bits < 0 ? -1 - (bits & 0x7fffffff) : bits;
  };
  if (silhouette != 0) return time;
  const float limit = time - duration;
  return key(mhi) < key(limit) ? 0 : mhi;
}
template <>
float expectedValue(float silhouette, float mhi, float time, float duration) {
  if (silhouette < 0 || silhouette > 0) return time;
  return mhi >= static_cast<long double>(time) - duration ? mhi : 0;
}

// Times as a program has them, and now and then one that is hard to order.
float draw(Random& random) {
  static constexpr float odd[] = {0.0F, -0.0F, inf, -inf, 1e-45F, -1e-45F, 3e38F, -3e38F, notANumber, 2.5F, 1.0F};
  return random.oneIn(4) ? odd[random.between(0, 10)] : static_cast<float>(random.between(-8, 8)) / 2;
}

template <class T>
Image<T> row(int width, T value) {
  Image<T> image(width, 1);
  image.fill(value);
  return image;
}

template <class T>
class MotionHistory : public testing::Test {};
using Types = testing::Types<Tev8u, Tev16u, Tev32f>;
TYPED_TEST_SUITE(MotionHistory, Types);

template <class T>
Image<Tev32f> updated(const Image<Tev32f>& mhi, const Image<T>& silhouette, float time, float duration) {
  Image<Tev32f> result = mhi.clone();
  EXPECT_EQ(update(silhouette.data(), silhouette.step(), result.data(), result.step(), result.size(), time, duration),
            tevStatusOk);
  return result;
}

}  // namespace

TYPED_TEST(MotionHistory, StampsMotionAndForgetsWhatIsTooOld) {
  const auto silhouette = grid<TypeParam>({{0, 1, 0, 0}, {0, 0, 200, 0}});
  const auto mhi = grid<Tev32f>({{9, 3, 5, 6}, {0, 4.5F, 0, 10}});
  EXPECT_SAME_IMAGE(updated(mhi, silhouette, 10, 4), grid<Tev32f>({{9, 10, 0, 6}, {0, 0, 10, 10}}));
}

TYPED_TEST(MotionHistory, WithoutDurationKeepsTheTimeStampAndWhatIsNewer) {
  const auto still = row<TypeParam>(4, 0);
  const auto mhi = grid<Tev32f>({{10, 9.999999F, 11, 0}});
  EXPECT_SAME_IMAGE(updated(mhi, still, 10, 0), grid<Tev32f>({{10, 0, 11, 0}}));
  EXPECT_SAME_IMAGE(updated(mhi, still, 10, -0.0F), grid<Tev32f>({{10, 0, 11, 0}}));
}

TYPED_TEST(MotionHistory, OrdersNegativeTimes) {
  const auto still = row<TypeParam>(6, 0);
  const auto mhi = grid<Tev32f>({{-3, -3.5F, -2.5F, -1e30F, 0, 7}});
  EXPECT_SAME_IMAGE(updated(mhi, still, -1, 2), grid<Tev32f>({{-3, 0, -2.5F, 0, 0, 7}}));
}

TEST(MotionHistoryExample, AtALimitOfZeroNegativeZeroIsOlderInTheIntegerMembersOnly) {
  const auto mhi = grid<Tev32f>({{-0.0F, 0.0F}});
  EXPECT_SAME_IMAGE(updated(mhi, grid<Tev8u>({{0, 0}}), 1, 1), grid<Tev32f>({{0.0F, 0.0F}}));
  EXPECT_SAME_IMAGE(updated(mhi, grid<Tev16u>({{0, 0}}), 1, 1), grid<Tev32f>({{0.0F, 0.0F}}));
  EXPECT_SAME_IMAGE(updated(mhi, grid<Tev32f>({{0, 0}}), 1, 1), grid<Tev32f>({{-0.0F, 0.0F}}));
}

TEST(MotionHistoryExample, ASilhouetteOfNegativeZeroOrNanIsNoMotion) {
  const auto silhouette = grid<Tev32f>({{-0.0F, notANumber, -1e-45F, inf, -inf}});
  EXPECT_SAME_IMAGE(updated(row<Tev32f>(5, 9), silhouette, 10, 4), grid<Tev32f>({{9, 9, 10, 10, 10}}));
}

TEST(MotionHistoryExample, NanInTheHistoryIsClearedByTheFloatMemberOnly) {
  const auto mhi = grid<Tev32f>({{notANumber, 9}});
  EXPECT_SAME_IMAGE(updated(mhi, grid<Tev32f>({{0, 0}}), 10, 4), grid<Tev32f>({{0, 9}}));
  EXPECT_SAME_IMAGE(updated(mhi, grid<Tev8u>({{0, 0}}), 10, 4), grid<Tev32f>({{notANumber, 9}}));
}

TEST(MotionHistoryExample, ANanDurationClearsAllNumbersInTheIntegerMembers) {
  const auto mhi = grid<Tev32f>({{-5, 0, 9, 10, inf}});
  for (const float duration : {notANumber, -notANumber}) {
    EXPECT_SAME_IMAGE(updated(mhi, row<Tev8u>(5, 0), 10, duration), row<Tev32f>(5, 0));
    EXPECT_SAME_IMAGE(updated(mhi, row<Tev16u>(5, 0), 10, duration), row<Tev32f>(5, 0));
  }
}

// The limit 2^24 + 2 - 1 lies between two floats. Rounded, it is the even one below; held wider, it is above that.
TEST(MotionHistoryExample, OnlyTheIntegerMembersRoundTheLimit) {
  const auto mhi = grid<Tev32f>({{16777216.0F}});
  EXPECT_SAME_IMAGE(updated(mhi, grid<Tev8u>({{0}}), 16777218.0F, 1), mhi);
  EXPECT_SAME_IMAGE(updated(mhi, grid<Tev32f>({{0}}), 16777218.0F, 1), grid<Tev32f>({{0}}));
}

TYPED_TEST(MotionHistory, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 600; ++trial) {
    const int width = random.between(1, 60), height = random.between(1, 4);
    const auto silhouette = random.image<TypeParam>(width, height, [&]() -> TypeParam {
      if (!random.oneIn(3)) return 0;
      if constexpr (std::is_same_v<TypeParam, Tev32f>) return draw(random);
      return random.value<TypeParam>();
    });
    const auto mhi = random.image<Tev32f>(width, height, [&] { return draw(random); });
    float time = draw(random), duration = std::fabs(draw(random));
    if (std::isnan(duration) || (std::isinf(time) && std::isinf(duration))) duration = 1;
    Image<Tev32f> expected(width, height);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        expected.set(x, y, expectedValue(silhouette.at(x, y), mhi.at(x, y), time, duration));
    auto actual = mhi.clone();
    ASSERT_EQ(update(silhouette.data(), silhouette.step(), actual.data(), actual.step(), actual.size(), time, duration),
              tevStatusOk);
    ASSERT_SAME_IMAGE(actual, expected) << "time " << time << ", duration " << duration;
  }
}

TYPED_TEST(MotionHistory, ChecksPointersSizeStepsAlignmentAndDurationInThisOrder) {
  using T = TypeParam;
  constexpr int size = sizeof(T);
  const Image<T> s(8, 4, 4 * size);
  Image<Tev32f> m(8, 4, 16);
  const int ss = s.step(), ms = m.step();
  const TevSize roi = {8, 4};
  EXPECT_FAILS(tevStatusNullPtr, update(static_cast<T*>(nullptr), ss, m.data(), ms, {0, 0}, 1, 1), m);
  EXPECT_FAILS(tevStatusNullPtr, update(s.data(), ss, nullptr, ms, {0, 0}, 1, 1), m);
  EXPECT_FAILS(tevStatusBadSize, update(s.data(), 0, m.data(), ms, {0, 4}, 1, 1), m);
  EXPECT_FAILS(tevStatusBadSize, update(s.data(), 0, m.data(), ms, {8, 0}, 1, 1), m);
  EXPECT_FAILS(tevStatusBadStep, update(s.data(), 8 * size - 1, m.data(), ms, roi, 1, -1), m);
  EXPECT_FAILS(tevStatusBadStep, update(s.data(), ss, m.data(), 31, roi, 1, -1), m);
  EXPECT_FAILS(tevStatusBadStep, update(s.data(), ss, m.data(), ms, {1 << 30, 4}, 1, -1), m);
  EXPECT_FAILS(tevStatusStepNotAligned, update(s.data(), ss, m.data(), 33, roi, 1, -1), m);
  if (size > 1) {
    EXPECT_FAILS(tevStatusBadStep, update(s.data(), 8 * size + 1, m.data(), 31, roi, 1, -1), m);
    EXPECT_FAILS(tevStatusStepNotAligned, update(s.data(), 8 * size + 1, m.data(), ms, roi, 1, -1), m);
  } else {
    EXPECT_EQ(update(s.data(), 9, m.data(), ms, roi, 1, 1), tevStatusOk);
  }
  EXPECT_FAILS(tevStatusBadPoint, update(s.data(), ss, m.data(), ms, roi, 1, -1), m);
  EXPECT_FAILS(tevStatusBadPoint, update(s.data(), ss, m.data(), ms, roi, 1, -1e-45F), m);
  EXPECT_FAILS(tevStatusBadPoint, update(s.data(), ss, m.data(), ms, roi, 1, -inf), m);
  if (std::is_same_v<T, Tev32f>)
    EXPECT_FAILS(tevStatusBadPoint, update(s.data(), ss, m.data(), ms, roi, 1, notANumber), m);
  else
    EXPECT_EQ(update(s.data(), ss, m.data(), ms, roi, 1, notANumber), tevStatusOk);
  EXPECT_EQ(update(s.data(), 8 * size, m.data(), 32, roi, 1, -0.0F), tevStatusOk);
}
