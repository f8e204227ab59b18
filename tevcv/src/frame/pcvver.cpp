// The version record. Old programs compare its fields, so they say what those programs were built against.
#include "tevcv/memory.h"

const TevLibraryVersion* tevcvGetLibVersion() {
  static constexpr TevLibraryVersion version = {
      .majorVersion = 5,
      .minorVersion = 2,
      .buildMajor = 108,
      .buildNumber = 398,
      .cpuTag = {'p', 'x', '\0', '\0'},
      .libraryName = "libtevcvpx.so.5.2",
      .versionText = "5.2",
      .buildDate = "Jul 11 2007",
  };
  return &version;
}

#if defined(__i386__)
static_assert(sizeof(TevLibraryVersion) == 32 && offsetof(TevLibraryVersion, cpuTag) == 16 &&
              offsetof(TevLibraryVersion, libraryName) == 20 && offsetof(TevLibraryVersion, buildDate) == 28);
#endif
static_assert(sizeof(TevSize) == 8 && sizeof(TevPoint) == 8 && sizeof(TevRect) == 16 && sizeof(TevStatus) == 4);
static_assert(offsetof(TevSize, height) == 4 && offsetof(TevPoint, y) == 4 && offsetof(TevRect, height) == 12);
