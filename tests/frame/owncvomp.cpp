#include <omp.h>

#include <atomic>
#include <numeric>

#include "frame/parallel.h"
#include "kit/kit.h"

using tevcv::forEachShare;
using tevcv::Share;
using tevcv::shareOfRows;
using tevcv::Slots;

TEST(ThreadServices, FollowTheCoreLibrary) {
  for (int count : kit::threadCounts) {
    kit::Threads threads(count);
    EXPECT_EQ(owncvGetNumThreads(), count);
    EXPECT_EQ(owncvGetMaxNumThreads(), count);
  }
  EXPECT_EQ(owncvGetIdThreads(), 0);
  EXPECT_GT(owncvGetCacheSize(), 0);
  EXPECT_EQ(runomp(), tevGetNumCoresOnDie() == 1 ? 0 : tevGetNumCoresOnDie());
}

TEST(ParallelPlan, TheLastShareTakesTheRemainder) {
  EXPECT_EQ(shareOfRows(10, 3, 0).firstRow, 0);
  EXPECT_EQ(shareOfRows(10, 3, 0).rows, 3);
  EXPECT_EQ(shareOfRows(10, 3, 1).firstRow, 3);
  EXPECT_EQ(shareOfRows(10, 3, 2).firstRow, 6);
  EXPECT_EQ(shareOfRows(10, 3, 2).rows, 4);
  EXPECT_TRUE(shareOfRows(10, 3, 2).isLast());
  EXPECT_TRUE(shareOfRows(10, 3, 0).isFirst());
  EXPECT_EQ(shareOfRows(10, 3, 2).endRow(), 10);
}

TEST(ParallelPlan, WithFewerRowsThanSharesTheLastOneHasThemAll) {
  for (int t = 0; t < 39; ++t) EXPECT_EQ(shareOfRows(5, 40, t).rows, 0);
  EXPECT_EQ(shareOfRows(5, 40, 39).rows, 5);
  EXPECT_EQ(shareOfRows(5, 40, 39).firstRow, 0);
}

TEST(ParallelPlan, EveryRowIsDoneOnceAtEveryThreadCount) {
  for (int count : kit::threadCounts)
    for (int height : {1, 2, 7, 39, 40, 41, 1000}) {
      kit::Threads threads(count);
      std::vector<int> done(static_cast<size_t>(height), 0);
      std::vector<int> calls(static_cast<size_t>(count), 0);
      forEachShare(height, count, [&](Share s) {
        ++calls[static_cast<size_t>(s.index)];
        for (int y = s.firstRow; y < s.endRow(); ++y) ++done[static_cast<size_t>(y)];
      });
      ASSERT_EQ(done, std::vector<int>(done.size(), 1));
      ASSERT_EQ(calls, std::vector<int>(calls.size(), 1)) << "each share, empty ones too, is worked once";
    }
}

TEST(ParallelPlan, SharesRunOnSeveralThreads) {
  kit::Threads threads(4);
  std::atomic<int> arrived = 0;
  // Each share waits for all four: this ends only if four threads run.
  forEachShare(4, 4, [&](Share) {
    ++arrived;
    while (arrived < 4) {
    }
  });
  EXPECT_EQ(arrived, 4);
}

TEST(ParallelPlan, ACallInsideTheCallersOwnRegionDoesAllRows) {
  kit::Threads threads(8);
  std::vector<std::vector<int>> done(3, std::vector<int>(100, 0));
#pragma omp parallel for num_threads(3)
  for (int caller = 0; caller < 3; ++caller)
    forEachShare(100, 8, [&](Share s) {
      for (int y = s.firstRow; y < s.endRow(); ++y) ++done[static_cast<size_t>(caller)][static_cast<size_t>(y)];
    });
  for (const auto& rows : done) EXPECT_EQ(rows, std::vector<int>(100, 1));
}

TEST(ParallelPlan, ARuntimeThatGrantsFewerThreadsThanSharesDoesAllRows) {
  kit::Threads threads(8);
  omp_set_dynamic(1);
  const int limit = omp_get_thread_limit();
  std::vector<int> done(100, 0);
  forEachShare(100, 40, [&](Share s) {
    for (int y = s.firstRow; y < s.endRow(); ++y) ++done[static_cast<size_t>(y)];
  });
  omp_set_dynamic(0);
  EXPECT_EQ(done, std::vector<int>(100, 1)) << "thread limit " << limit;
}

TEST(ParallelPlan, SlotsLieOnTheStackUpTo32AndComeFromTheAllocatorAbove) {
  kit::AllocatorWatch watch;
  {
    Slots<Tev64f> few(32);
    ASSERT_TRUE(few);
    for (int i = 0; i < 32; ++i) few[i] = i;
    EXPECT_EQ(watch.requests(), 0);
    Slots<Tev64f> many(33);
    ASSERT_TRUE(many);
    for (int i = 0; i < 33; ++i) many[i] = i;
    EXPECT_EQ(many[32], 32.0);
    EXPECT_EQ(watch.requests(), 1);
    EXPECT_EQ(watch.blocksHeld(), 1);
  }
  EXPECT_EQ(watch.blocksHeld(), 0);
}

TEST(ParallelPlan, SlotsWithoutMemoryTestFalse) {
  kit::AllocatorWatch watch(0);
  Slots<Tev64f> slots(40);
  EXPECT_FALSE(slots);
}
