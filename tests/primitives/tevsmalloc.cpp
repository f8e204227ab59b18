#include "tevcv/memory.h"

#include <cstdint>

#include "kit/kit.h"

namespace {

size_t requested = 0;
int calls = 0;
void* given = nullptr;
void* freed = nullptr;
alignas(64) unsigned char arena[512];

// Lets the hooks hand out a given address, whatever its alignment.
class ArenaHooks {
 public:
  explicit ArenaHooks(void* raw) {
    given = raw;
    freed = nullptr;
    calls = 0;
    i_malloc = [](size_t size) -> void* {
      requested = size;
      ++calls;
      return given;
    };
    i_free = [](void* block) { freed = block; };
  }
  ~ArenaHooks() {
    i_malloc = std::malloc;
    i_free = std::free;
  }
};

constexpr size_t overhead = sizeof(void*) == 4 ? 36 : 40;
constexpr size_t shortestGap = sizeof(void*), longestGap = overhead - 1;

}  // namespace

TEST(Allocator, HooksStartAtTheSystemsAllocator) {
  EXPECT_EQ(i_malloc, &std::malloc);
  EXPECT_EQ(i_calloc, &std::calloc);
  EXPECT_EQ(i_realloc, &std::realloc);
  EXPECT_EQ(i_free, &std::free);
}

TEST(Allocator, BlocksAreAlignedWithTheRawAddressInFrontWhateverItWas) {
  for (int offset = 0; offset < 64; ++offset) {
    ArenaHooks hooks(arena + offset);
    Tev8u* const block = tevsMalloc_8u(100);
    ASSERT_EQ(requested, 100 + overhead);
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % 32, 0U);
    const auto gap = static_cast<size_t>(block - (arena + offset));
    ASSERT_GE(gap, shortestGap);
    ASSERT_LE(gap, longestGap);
    ASSERT_LE(block + 100, arena + offset + requested);
    void* raw;
    std::memcpy(&raw, block - sizeof raw, sizeof raw);
    ASSERT_EQ(raw, static_cast<void*>(arena + offset));
    tevsFree(block);
    ASSERT_EQ(freed, static_cast<void*>(arena + offset));
  }
}

TEST(Allocator, CountsElementsOfEachType) {
  ArenaHooks hooks(arena);
  EXPECT_NE(tevsMalloc_8s(7), nullptr);
  EXPECT_EQ(requested, 7 + overhead);
  EXPECT_NE(tevsMalloc_16u(7), nullptr);
  EXPECT_EQ(requested, 14 + overhead);
  EXPECT_NE(tevsMalloc_32s(7), nullptr);
  EXPECT_EQ(requested, 28 + overhead);
  EXPECT_NE(tevsMalloc_32f(7), nullptr);
  EXPECT_EQ(requested, 28 + overhead);
  EXPECT_NE(tevsMalloc_64f(7), nullptr);
  EXPECT_EQ(requested, 56 + overhead);
  EXPECT_EQ(calls, 5);
}

TEST(Allocator, ALengthBelowOneGivesNullAndDoesNotCallTheHook) {
  ArenaHooks hooks(arena);
  for (int len : {0, -1, -2147483647 - 1}) {
    EXPECT_EQ(tevsMalloc_8u(len), nullptr);
    EXPECT_EQ(tevsMalloc_8s(len), nullptr);
    EXPECT_EQ(tevsMalloc_16u(len), nullptr);
    EXPECT_EQ(tevsMalloc_32s(len), nullptr);
    EXPECT_EQ(tevsMalloc_32f(len), nullptr);
    EXPECT_EQ(tevsMalloc_64f(len), nullptr);
  }
  EXPECT_EQ(calls, 0);
}

TEST(Allocator, TheByteCountWrapsIn32Bits) {
  ArenaHooks hooks(arena);
  EXPECT_NE(tevsMalloc_64f(0x20000001), nullptr);
  EXPECT_EQ(requested, 8 + overhead);
}

TEST(Allocator, ANullFromTheHookIsPassedOn) {
  ArenaHooks hooks(nullptr);
  EXPECT_EQ(tevsMalloc_32f(10), nullptr);
  EXPECT_EQ(calls, 1);
}

TEST(Allocator, FreeingNullDoesNothing) {
  ArenaHooks hooks(arena);
  tevsFree(nullptr);
  EXPECT_EQ(freed, nullptr);
}
