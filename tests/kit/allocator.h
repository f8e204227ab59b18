// Watches the library's memory through its allocator hooks, and makes allocations fail.
#pragma once

#include <cstdlib>
#include <map>

#include "tevcv/memory.h"

namespace kit {

// While one lives, all allocations of the library pass through it: it counts requests and bytes, knows what is still
// held, and refuses the request with index `failAt` (from 0) where one is given. One at a time, for serial tests.
class AllocatorWatch {
 public:
  explicit AllocatorWatch(int failAt = -1) {
    state() = {};
    state().failAt = failAt;
    malloc_ = i_malloc;
    free_ = i_free;
    i_malloc = [](size_t size) -> void* {
      if (state().requests++ == state().failAt) return nullptr;
      void* const block = std::malloc(size);
      state().held[block] = size;
      state().bytes += size;
      return block;
    };
    i_free = [](void* block) {
      if (state().held.erase(block) == 0) ++state().strangers;
      std::free(block);
    };
  }
  ~AllocatorWatch() {
    i_malloc = malloc_;
    i_free = free_;
  }
  AllocatorWatch(const AllocatorWatch&) = delete;
  AllocatorWatch& operator=(const AllocatorWatch&) = delete;

  int requests() const { return state().requests; }                         // calls of i_malloc, refused ones too
  size_t bytes() const { return state().bytes; }                            // sum of all granted requests
  int blocksHeld() const { return static_cast<int>(state().held.size()); }  // granted and not freed
  int strangersFreed() const { return state().strangers; }                  // freed, but never granted
  size_t bytesHeld() const {
    size_t sum = 0;
    for (const auto& [block, size] : state().held) sum += size;
    return sum;
  }

 private:
  struct State {
    int failAt = -1;
    int requests = 0;
    int strangers = 0;
    size_t bytes = 0;
    std::map<void*, size_t> held;
  };
  static State& state() {
    static State instance;
    return instance;
  }
  void* (*malloc_)(size_t);
  void (*free_)(void*);
};

}  // namespace kit
