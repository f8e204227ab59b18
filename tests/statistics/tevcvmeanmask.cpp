#include "statistics/moments.h"
#include "tevcv/statistics.h"

using namespace moments;
using kit::AllocatorWatch;
using kit::grid;
using kit::Image;
using kit::Random;
using kit::threadCounts;
using kit::Threads;

namespace {

constexpr float inf = std::numeric_limits<float>::infinity(), quietNan = std::numeric_limits<float>::quiet_NaN();
constexpr int pixelsPerThread = 131072;

template <class T>
struct Members {
  TevStatus (*c1)(const T*, int, const Tev8u*, int, TevSize, Tev64f*);
  TevStatus (*c3)(const T*, int, const Tev8u*, int, TevSize, int, Tev64f*);
};
template <class T>
constexpr Members<T> members();
template <>
constexpr Members<Tev8u> members() {
  return {teviMean_8u_C1MR, teviMean_8u_C3CMR};
}
template <>
constexpr Members<Tev8s> members() {
  return {teviMean_8s_C1MR, teviMean_8s_C3CMR};
}
template <>
constexpr Members<Tev16u> members() {
  return {teviMean_16u_C1MR, teviMean_16u_C3CMR};
}
template <>
constexpr Members<Tev32f> members() {
  return {teviMean_32f_C1MR, teviMean_32f_C3CMR};
}

template <class T>
Tev64f mean(const Image<T>& s, const Image<Tev8u>& m) {
  Tev64f result = -7;
  EXPECT_EQ(members<T>().c1(s.data(), s.step(), m.data(), m.step(), s.size(), &result), tevStatusOk);
  return result;
}
template <class T>
Tev64f mean(const Image<T, 3>& s, const Image<Tev8u>& m, int coi) {
  Tev64f result = -7;
  EXPECT_EQ(members<T>().c3(s.data(), s.step(), m.data(), m.step(), s.size(), coi, &result), tevStatusOk);
  return result;
}

template <class T>
class Mean : public testing::Test {};
using Types = testing::Types<Tev8u, Tev8s, Tev16u, Tev32f>;
TYPED_TEST_SUITE(Mean, Types);

}  // namespace

TEST(MeanExample, AveragesWhatTheMaskSelects) {
  const auto s = grid<Tev8u>({{1, 2, 3}, {4, 5, 6}}), m = grid<Tev8u>({{0, 1, 255}, {128, 0, 0}});
  EXPECT_EQ(mean(s, m), 3.0);
  EXPECT_EQ(mean(grid<Tev8s>({{-128, 127, -3}}), grid<Tev8u>({{1, 0, 1}})), -65.5);
}

TEST(MeanExample, TakesOneChannelOfThree) {
  const auto s = grid<Tev8u, 3>({{1, 10, 100, 2, 20, 200, 3, 31, 250}});
  const auto m = grid<Tev8u>({{1, 0, 7}});
  EXPECT_EQ(mean(s, m, 1), 2.0);
  EXPECT_EQ(mean(s, m, 2), 20.5);
  EXPECT_EQ(mean(s, m, 3), 175.0);
}

TEST(MeanExample, WhatTheMaskLeavesOutHasNoEffectEvenIfItIsNan) {
  const auto s = grid<Tev32f>({{quietNan, 1.5F, inf, 2.5F, -inf}});
  EXPECT_EQ(mean(s, grid<Tev8u>({{0, 1, 0, 1, 0}})), 2.0);
  EXPECT_EQ(mean(s, grid<Tev8u>({{0, 1, 1, 1, 0}})), inf);
  EXPECT_TRUE(std::isnan(mean(s, grid<Tev8u>({{1, 1, 0, 1, 0}}))));
}

TYPED_TEST(Mean, OfAnEmptyMaskIsZero) {
  const auto m = Image<Tev8u>(17, 5).fill(0).clone();
  EXPECT_TRUE(kit::sameBits(mean(Image<TypeParam>(17, 5).fill(9), m), 0.0));
  EXPECT_TRUE(kit::sameBits(mean(Image<TypeParam, 3>(17, 5).fill(9), m, 3), 0.0));
}

TYPED_TEST(Mean, EqualsTheDefinitionOnRandomRegions) {
  using T = TypeParam;
  Random random;
  for (int trial = 0; trial < 300; ++trial) {
    const int width = random.oneIn(6) ? 1 : random.between(1, 150), height = random.oneIn(6) ? 1 : random.between(1, 9);
    const int kind = trial % 4, coi = random.between(1, 3);
    const auto s1 = random.image<T>(width, height, [&] { return draw<T>(random, kind); });
    const auto s3 = random.image<T, 3>(width, height, [&] { return draw<T>(random, kind); });
    const auto m = random.mask(width, height, trial % 5 == 0 ? 1 : 2);
    ASSERT_TRUE(kit::sameBits(mean(s1, m), defined(s1, &m, 1, 0, 0).mean)) << width << " x " << height;
    ASSERT_TRUE(kit::sameBits(mean(s3, m, coi), defined(s3, &m, coi, 0, 0).mean)) << width << " x " << height;
  }
}

TYPED_TEST(Mean, EqualsTheDefinitionOfEveryThreadCountFromTheGateOn) {
  using T = TypeParam;
  Random random;
  // One pixel below the gate of one thread, at the gates of one and two, and above those of three; for 8 and 40 threads
  // wide regions, of fewer rows than threads. Fractions make the sums' last bits depend on the order.
  const struct {
    TevSize roi;
    int threads;
  } cases[] = {{{131071, 1}, 1}, {{512, 256}, 1}, {{262143, 1}, 2},
               {{512, 512}, 2},  {{601, 701}, 3}, {{1024, 1025}, 8}};
  for (const auto& [roi, threads] : cases) {
    const Threads setting(threads);
    const auto s = random.image<T>(roi.width, roi.height, [&] { return draw<T>(random, sizeof(T) == 4 ? 3 : 0); });
    const auto m = random.mask(roi.width, roi.height);
    const bool parallel = std::int64_t{roi.width} * roi.height >= std::int64_t{threads} * pixelsPerThread;
    ASSERT_TRUE(kit::sameBits(mean(s, m), defined(s, &m, 1, parallel ? threads : 0, 0).mean)) << threads << " threads";
  }
}

TYPED_TEST(Mean, OfOneChannelOfThreeIsSharedToo) {
  using T = TypeParam;
  Random random;
  const Threads setting(2);
  const auto s = random.image<T, 3>(512, 513, [&] { return draw<T>(random, sizeof(T) == 4 ? 3 : 0); });
  const auto m = random.mask(512, 513);
  ASSERT_TRUE(kit::sameBits(mean(s, m, 2), defined(s, &m, 2, 2, 0).mean));
}

TYPED_TEST(Mean, Above32ThreadsTakesOneBlockAndReturnsIt) {
  using T = TypeParam;
  const Threads setting(40);
  constexpr int width = 40 * pixelsPerThread / 32;
  const TevSize roi = {width, 32};
  Image<T> row(width, 1);
  row.fill(3);
  row.set(7, 0, 100);
  Tev64f result = -7;
  Image<T> whole(roi.width, roi.height);
  Image<Tev8u> all(roi.width, roi.height);
  std::memset(all.data(), 1, static_cast<size_t>(all.step()) * 32);
  for (int y = 0; y < 32; ++y) std::memcpy(whole.data() + std::ptrdiff_t{y} * width, row.data(), sizeof(T) * width);
  const AllocatorWatch watch;
  EXPECT_EQ(mean(whole, all), static_cast<double>((3.0L * width + 97) / width));
  EXPECT_EQ(watch.requests(), 1);
  EXPECT_EQ(watch.blocksHeld(), 0);
  EXPECT_EQ(watch.bytes(), 2 * 40 * sizeof(Tev64f) + 32 + sizeof(void*));
  {
    const AllocatorWatch refusing(0);
    EXPECT_FAILS(tevStatusNoMemory, members<T>().c1(whole.data(), whole.step(), all.data(), all.step(), roi, &result),
                 result);
  }
}

TYPED_TEST(Mean, ChecksPointersThenSizeThenStepsThenAlignmentThenChannel) {
  using T = TypeParam;
  constexpr auto call = members<T>();
  constexpr int size = sizeof(T), full = 8 * size;
  const auto s = Image<T>(8, 4, 8).fill(1).clone();
  const auto s3 = Image<T, 3>(8, 4, 8).fill(1).clone();
  const auto m = Image<Tev8u>(8, 4, 8).fill(1).clone();
  const T* const null = nullptr;
  Tev64f r = -7;
  const int ms = m.step();
  const TevSize roi = {8, 4}, empty = {0, 4}, flat = {8, 0}, huge = {1 << 30, 1};
  const auto c1 = [&](TevStatus status, bool src, int step, bool sel, int selStep, TevSize region, bool out = true) {
    EXPECT_FAILS(
        status, call.c1(src ? s.data() : null, step, sel ? m.data() : nullptr, selStep, region, out ? &r : nullptr), r);
  };
  const auto c3 = [&](TevStatus status, bool src, int step, bool sel, int selStep, TevSize region, int coi,
                      bool out = true) {
    EXPECT_FAILS(
        status,
        call.c3(src ? s3.data() : null, step, sel ? m.data() : nullptr, selStep, region, coi, out ? &r : nullptr), r);
  };
  c1(tevStatusNullPtr, false, 0, true, 0, empty);
  c1(tevStatusNullPtr, true, 0, false, 0, empty);
  c1(tevStatusNullPtr, true, 0, true, 0, empty, false);
  c1(tevStatusBadSize, true, 0, true, 0, empty);
  c1(tevStatusBadSize, true, 0, true, 0, flat);
  c1(tevStatusBadStep, true, full - 1, true, ms, roi);
  c1(tevStatusBadStep, true, full, true, 7, roi);
  c1(tevStatusBadStep, true, full, true, ms, huge);
  c3(tevStatusNullPtr, false, 0, true, 0, empty, 0);
  c3(tevStatusNullPtr, true, 0, false, 0, empty, 0);
  c3(tevStatusNullPtr, true, 0, true, 0, empty, 0, false);
  c3(tevStatusBadSize, true, 0, true, 0, empty, 0);
  c3(tevStatusBadStep, true, 3 * full - 1, true, ms, roi, 0);
  c3(tevStatusBadStep, true, 3 * full, true, 7, roi, 0);
  c3(tevStatusBadStep, true, 3 * full, true, ms, huge, 1);
  for (const int coi : {-1, 0, 4}) c3(tevStatusBadCoi, true, 3 * full, true, ms, roi, coi);
  if (size > 1) {
    c1(tevStatusStepNotAligned, true, full + 1, true, ms, roi);
    c3(tevStatusStepNotAligned, true, 3 * full + 1, true, ms, roi, 0);
    c3(tevStatusBadStep, true, 3 * full + 1, true, 7, roi, 0);
    // The 16-bit member of one channel finishes its source first.
    c1(size == 2 ? tevStatusStepNotAligned : tevStatusBadStep, true, full + 1, true, 7, roi);
  }
  EXPECT_EQ(call.c1(s.data(), full, m.data(), 8, roi, &r), tevStatusOk);
}
