#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "frame/parallel.h"
#include "tevcv/primitives.h"
#include "tevcv_internal/frame.h"

extern "C" {
extern int fakeThreads, fakeCores, fakeCacheBytes, fakeStatus;
}

TEST(ForeignCore, AnswersReachTheLibraryAtEveryQuery) {
  EXPECT_EQ(owncvGetNumThreads(), 7);
  EXPECT_EQ(owncvGetMaxNumThreads(), 7);
  fakeThreads = 2;
  EXPECT_EQ(owncvGetNumThreads(), 2);
  EXPECT_EQ(threads_omp_of_n_tev, 7);
  fakeThreads = 0;
  EXPECT_EQ(owncvGetCacheSize(), 12345);
  fakeCacheBytes = 1 << 20;
  EXPECT_EQ(owncvGetCacheSize(), 1 << 20);
}

TEST(ForeignCore, ItsStatusIsIgnored) {
  fakeStatus = -2;
  EXPECT_EQ(owncvGetNumThreads(), 7);
  fakeCacheBytes = 4096;
  EXPECT_EQ(owncvGetCacheSize(), 4096);
  fakeStatus = 0;
}

TEST(ForeignCore, OneCoreOnTheDieClosesTheGateForShortKernelsOnly) {
  fakeCores = 1;
  EXPECT_EQ(runomp(), 0);
  EXPECT_EQ(runsepomp(3), 0);
  EXPECT_EQ(runsepomp(5), 0);
  EXPECT_EQ(runsepomp(7), 1);
  fakeCores = 2;
  EXPECT_EQ(runomp(), 2);
  EXPECT_EQ(runsepomp(3), 2);
  EXPECT_EQ(runsepomp(5), 2);
  EXPECT_EQ(runsepomp(1), 3);
  fakeCores = 3;
  EXPECT_EQ(runsepomp(9), 3);
}

TEST(ForeignCore, ItsNanIsWhatARootOfANegativeNumberStores) {
  Tev32f values[] = {4, -1};
  EXPECT_EQ(tevsSqrt_32f_I(values, 2), tevStatusSqrtNegWarning);
  EXPECT_EQ(values[0], 2.0F);
  EXPECT_TRUE(std::isnan(values[1]));
  EXPECT_TRUE(std::signbit(values[1]));
}

TEST(ForeignCore, ATeamSmallerThanTheThreadCountDoesAllShares) {
  threads_omp_of_n_tev = 2;
  std::vector<int> done(100, 0);
  tevcv::forEachShare(100, 7, [&](tevcv::Share s) {
    for (int y = s.firstRow; y < s.endRow(); ++y) ++done[static_cast<size_t>(y)];
  });
  EXPECT_EQ(done, std::vector<int>(100, 1));
  // A word that nobody has set yet still gives a team of one.
  threads_omp_of_n_tev = 0;
  tevcv::forEachShare(100, 7, [&](tevcv::Share s) {
    for (int y = s.firstRow; y < s.endRow(); ++y) ++done[static_cast<size_t>(y)];
  });
  EXPECT_EQ(done, std::vector<int>(100, 2));
  threads_omp_of_n_tev = 7;
}
