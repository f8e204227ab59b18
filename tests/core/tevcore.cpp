#include "tevcore.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <cmath>

TEST(CoreLibrary, StartsWithTheProcessorsThatThisProcessMayUse) {
  cpu_set_t set;
  ASSERT_EQ(sched_getaffinity(0, sizeof set, &set), 0);
  int threads = 0;
  EXPECT_EQ(tevGetNumThreads(&threads), tevStatusOk);
  EXPECT_EQ(threads, CPU_COUNT(&set));
  EXPECT_EQ(threads_omp_of_n_tev, threads);
}

TEST(CoreLibrary, SetsThreadsFrom1To1024AndTheRegionsWordWithThem) {
  int before = 0, threads = 0;
  tevGetNumThreads(&before);
  for (int count : {1, 3, 33, 1024}) {
    EXPECT_EQ(tevSetNumThreads(count), tevStatusOk);
    EXPECT_EQ(tevGetNumThreads(&threads), tevStatusOk);
    EXPECT_EQ(threads, count);
    EXPECT_EQ(threads_omp_of_n_tev, count);
  }
  for (int count : {0, -1, 1025}) {
    EXPECT_EQ(tevSetNumThreads(count), tevStatusBadArg);
    EXPECT_EQ(threads_omp_of_n_tev, 1024);
  }
  tevSetNumThreads(before);
}

TEST(CoreLibrary, RefusesNullPointers) {
  EXPECT_EQ(tevGetNumThreads(nullptr), tevStatusNullPtr);
  EXPECT_EQ(tevGetMaxCacheSizeB(nullptr), tevStatusNullPtr);
}

TEST(CoreLibrary, CountsCoresAndCacheBytes) {
  EXPECT_GE(tevGetNumCoresOnDie(), 1);
  EXPECT_LE(tevGetNumCoresOnDie(), sysconf(_SC_NPROCESSORS_CONF));
  int bytes = 0;
  EXPECT_EQ(tevGetMaxCacheSizeB(&bytes), tevStatusOk);
  EXPECT_GE(bytes, 16 * 1024);
  EXPECT_EQ(bytes % 1024, 0);
}

TEST(CoreLibrary, HoldsTheConstants) {
  EXPECT_TRUE(std::isnan(tevConstantOfNAN_32f));
  EXPECT_TRUE(std::isnan(tevConstantOfNAN_64f));
  EXPECT_TRUE(std::isinf(tevConstantOfINF_64f) && tevConstantOfINF_64f > 0);
  EXPECT_TRUE(std::isinf(tevConstantOfINF_NEG_64f) && tevConstantOfINF_NEG_64f < 0);
}
