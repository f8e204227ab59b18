// The aligned allocator. A block is the address from the hook, a gap that ends in a word holding that address, and the
// caller's memory at a multiple of 32 bytes.
#include <cstdint>
#include <cstdlib>

#include "tevcv/memory.h"

// The hooks. Programs overwrite them, so every use reads the word anew.
void* (*i_malloc)(size_t) = std::malloc;
void* (*i_calloc)(size_t, size_t) = std::calloc;
void* (*i_realloc)(void*, size_t) = std::realloc;
void (*i_free)(void*) = std::free;

namespace {

constexpr std::uintptr_t alignment = 32;

// The word and up to 31 bytes in front of it, which is at most 35 bytes on a 32-bit system: the gap is 4 to 35 bytes
// there, 8 to 39 on a 64-bit one. Old programs count on the request of `bytes` plus 36, one more than the longest gap.
constexpr std::uintptr_t longestGap = sizeof(void*) + alignment - 1;
constexpr std::uint32_t overhead = longestGap + 1;
static_assert(sizeof(void*) != 4 || (longestGap == 35 && overhead == 36));

template <class T>
T* alignedBlock(int len) {
  if (len < 1) return nullptr;
  // 32-bit arithmetic without a test, as the callers' own size arithmetic has it.
  const std::uint32_t bytes = static_cast<std::uint32_t>(len) * std::uint32_t{sizeof(T)} + overhead;
  void* const raw = i_malloc(bytes);
  if (!raw) return nullptr;
  const std::uintptr_t block = (reinterpret_cast<std::uintptr_t>(raw) + longestGap) & ~(alignment - 1);
  reinterpret_cast<void**>(block)[-1] = raw;
  return reinterpret_cast<T*>(block);
}

}  // namespace

Tev8u* tevsMalloc_8u(int len) { return alignedBlock<Tev8u>(len); }
Tev8s* tevsMalloc_8s(int len) { return alignedBlock<Tev8s>(len); }
Tev16u* tevsMalloc_16u(int len) { return alignedBlock<Tev16u>(len); }
Tev32s* tevsMalloc_32s(int len) { return alignedBlock<Tev32s>(len); }
Tev32f* tevsMalloc_32f(int len) { return alignedBlock<Tev32f>(len); }
Tev64f* tevsMalloc_64f(int len) { return alignedBlock<Tev64f>(len); }

void tevsFree(void* block) {
  if (block) i_free(static_cast<void**>(block)[-1]);
}
