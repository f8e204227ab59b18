#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "tevcv/memory.h"

TEST(Version, NamesTheBuildThatOldProgramsCompareWith) {
  const TevLibraryVersion* const v = tevcvGetLibVersion();
  EXPECT_EQ(v->majorVersion, 5);
  EXPECT_EQ(v->minorVersion, 2);
  EXPECT_EQ(v->buildMajor, 108);
  EXPECT_EQ(v->buildNumber, 398);
  EXPECT_EQ(std::memcmp(v->cpuTag, "px\0\0", 4), 0);
  EXPECT_EQ(std::string(v->libraryName), "libtevcvpx.so.5.2");
  EXPECT_EQ(std::string(v->versionText), "5.2");
  EXPECT_EQ(std::string(v->buildDate), "Jul 11 2007");
}

TEST(Version, IsTheSameRecordAtEachCall) { EXPECT_EQ(tevcvGetLibVersion(), tevcvGetLibVersion()); }

TEST(Version, RecordLayout) {
  EXPECT_EQ(offsetof(TevLibraryVersion, cpuTag), 16U);
  EXPECT_EQ(offsetof(TevLibraryVersion, libraryName), sizeof(void*) == 4 ? 20U : 24U);
  EXPECT_EQ(sizeof(TevLibraryVersion), sizeof(void*) == 4 ? 32U : 48U);
}

TEST(SharedRecords, AreRunsOf32BitWords) {
  EXPECT_EQ(sizeof(TevSize), 8U);
  EXPECT_EQ(sizeof(TevPoint), 8U);
  EXPECT_EQ(sizeof(TevRect), 16U);
  EXPECT_EQ(sizeof(TevStatus), 4U);
}
