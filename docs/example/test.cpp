#include "example.h"

#include <cmath>
#include <limits>

#include "example_internal.h"
#include "kit/kit.h"
#include "tevcv_internal/frame.h"

using kit::AllocatorWatch;
using kit::grid;
using kit::Image;
using kit::Random;
using kit::Threads;

namespace {

//! [oracle]
TevStatus call(const Image<Tev8u>& a, const Image<Tev8u>& b, Tev64f* mean) {
  return teviMeanAbsDiff_8u_C1R(a.data(), a.step(), b.data(), b.step(), a.size(), mean);
}
TevStatus call(const Image<Tev32f>& a, const Image<Tev32f>& b, Tev64f* mean) {
  return teviMeanAbsDiff_32f_C1R(a.data(), a.step(), b.data(), b.step(), a.size(), mean);
}

template <class T>
Tev64f meanAbsDiff(const Image<T>& a, const Image<T>& b) {
  Tev64f mean = -1;
  EXPECT_EQ(call(a, b, &mean), tevStatusOk);
  return mean;
}

// The definition: shares of whole rows, the last one larger; a sum each; sums added in order.
template <class T>
Tev64f defined(const Image<T>& a, const Image<T>& b, int shares) {
  const int rows = a.height() / shares;
  Tev64f total = 0;
  for (int t = 0; t < shares; ++t) {
    const int end = t == shares - 1 ? a.height() : (t + 1) * rows;
    long double sum = 0;
    for (int y = t * rows; y < end; ++y)
      for (int x = 0; x < a.width(); ++x)
        sum += std::fabs(static_cast<long double>(a.at(x, y)) - static_cast<long double>(b.at(x, y)));
    total += static_cast<Tev64f>(sum);
  }
  return total / (static_cast<Tev64f>(a.width()) * a.height());
}
//! [oracle]

template <class T>
class MeanAbsDiff : public testing::Test {};
using Types = testing::Types<Tev8u, Tev32f>;
TYPED_TEST_SUITE(MeanAbsDiff, Types);

}  // namespace

//! [tests]
TEST(MeanAbsDiffExample, AveragesTheDistancesOfPixels) {
  const auto a = grid<Tev8u>({{0, 10, 255}, {7, 8, 9}});
  const auto b = grid<Tev8u>({{4, 4, 255}, {8, 8, 0}});
  EXPECT_EQ(meanAbsDiff(a, b), 20.0 / 6);
}

TYPED_TEST(MeanAbsDiff, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 200; ++trial) {
    const int width = random.between(1, 70), height = random.between(1, 6);
    const auto a = random.image<TypeParam>(width, height), b = random.image<TypeParam>(width, height);
    ASSERT_EQ(meanAbsDiff(a, b), defined(a, b, 1));
  }
}

TYPED_TEST(MeanAbsDiff, DividesRowsAmongThreadsFromTheGateOn) {
  Random random;
  for (int threads : kit::threadCounts) {
    const Threads setting(threads);
    // Rows of 4096 pixels: 16 of them a thread are the gate; one row less is done in one share.
    for (int height : {16 * threads - 1, 16 * threads, 16 * threads + 5}) {
      const auto a = random.image<TypeParam>(4096, height), b = random.image<TypeParam>(4096, height);
      ASSERT_EQ(meanAbsDiff(a, b), defined(a, b, height < 16 * threads ? 1 : threads)) << threads << " threads";
    }
  }
}

TYPED_TEST(MeanAbsDiff, ChecksPointersThenSizeThenStepsThenAlignment) {
  using T = TypeParam;
  constexpr int size = sizeof(T);
  const Image<T> a(8, 4, 2 * size), b(8, 4, 2 * size);
  const auto fails = [&](const T* src1, int step1, const T* src2, int step2, TevSize roi, bool output = true) {
    Tev64f mean = 42;
    TevStatus status;
    if constexpr (std::is_same_v<T, Tev8u>)
      status = teviMeanAbsDiff_8u_C1R(src1, step1, src2, step2, roi, output ? &mean : nullptr);
    else
      status = teviMeanAbsDiff_32f_C1R(src1, step1, src2, step2, roi, output ? &mean : nullptr);
    EXPECT_TRUE(status == tevStatusOk || mean == 42);  // nothing is written after an error
    return status;
  };
  const int step = a.step(), full = 8 * size;
  EXPECT_EQ(fails(nullptr, 0, b.data(), step, {0, 4}), tevStatusNullPtr);
  EXPECT_EQ(fails(a.data(), step, nullptr, step, {8, 4}), tevStatusNullPtr);
  EXPECT_EQ(fails(a.data(), step, b.data(), step, {8, 4}, false), tevStatusNullPtr);
  EXPECT_EQ(fails(a.data(), 1, b.data(), step, {0, 4}), tevStatusBadSize);
  EXPECT_EQ(fails(a.data(), 1, b.data(), step, {8, -1}), tevStatusBadSize);
  EXPECT_EQ(fails(a.data(), full - 1, b.data(), step, {8, 4}), tevStatusBadStep);
  EXPECT_EQ(fails(a.data(), step + 1, b.data(), full - 1, {8, 4}), tevStatusBadStep);
  EXPECT_EQ(fails(a.data(), full, b.data(), full, {8, 4}), tevStatusOk);
  if (size > 1) {
    EXPECT_EQ(fails(a.data(), step + 1, b.data(), step, {8, 4}), tevStatusStepNotAligned);
    EXPECT_EQ(fails(a.data(), step, b.data(), step + 1, {8, 4}), tevStatusStepNotAligned);
  }
}

TEST(MeanAbsDiff32f, CarriesNanAndInfinities) {
  constexpr float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(meanAbsDiff(grid<Tev32f>({{inf, 1.0F}}), grid<Tev32f>({{1.0F, 1.0F}})), inf);
  EXPECT_TRUE(std::isnan(meanAbsDiff(grid<Tev32f>({{inf, 1.0F}}), grid<Tev32f>({{inf, 1.0F}}))));
  EXPECT_TRUE(std::isnan(meanAbsDiff(grid<Tev32f>({{nan}}), grid<Tev32f>({{1.0F}}))));
}

TEST(MeanAbsDiff8u, SumsARowLongerThanARunExactly) {
  Image<Tev8u> a(70000, 1), b(70000, 1);
  EXPECT_EQ(ownSumAbsDiff_8u(a.fill(255).data(), b.fill(0).data(), 70000), 255U * 70000U);
}

TEST(MeanAbsDiff8u, FortyThreadsWithoutMemoryGiveNoMemoryAndKeepNothing) {
  const Threads setting(40);
  Image<Tev8u> a(4096, 16 * 40), b(4096, 16 * 40);
  {
    const AllocatorWatch watch(0);
    Tev64f mean = 42;
    EXPECT_FAILS(tevStatusNoMemory, call(a, b, &mean), mean);
    EXPECT_EQ(watch.blocksHeld(), 0);
  }
  const AllocatorWatch watch;
  EXPECT_EQ(meanAbsDiff(a.fill(3), b.fill(5)), 2.0);
  EXPECT_EQ(watch.requests(), 1);
  EXPECT_EQ(watch.blocksHeld(), 0);
}
//! [tests]
