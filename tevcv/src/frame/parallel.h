// The one plan of a parallel call. A family decides at its gate, outside; here rows are divided into shares, the shares
// are dealt to the team that the OpenMP runtime grants, and the caller merges the slots in thread order afterwards.
#pragma once

#include <omp.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "frame/core_services.h"
#include "tevcv/memory.h"
#include "tevcv/types.h"
#include "tevcv_internal/frame.h"

namespace tevcv {

// One thread's run of rows: `rows` of them from `firstRow`.
struct Share {
  int index;
  int count;
  int firstRow;
  int rows;

  constexpr int endRow() const { return firstRow + rows; }
  constexpr bool isFirst() const { return index == 0; }
  constexpr bool isLast() const { return index == count - 1; }
};

// Share `index` of `count`: whole rows, and the last share takes what an uneven division leaves. With fewer rows than
// shares the last one has all of them.
constexpr Share shareOfRows(int height, int count, int index) {
  const int rows = height / count;
  return {index, count, index * rows, index == count - 1 ? rows + height % count : rows};
}

// One value per share: on the stack for up to 32 of them, from the allocator beyond that. Where that fails the object
// tests false, and the family returns tevStatusNoMemory.
template <class T>
class Slots {
  static_assert(std::is_trivially_copyable_v<T>);
  static constexpr int stackSlots = 32;

 public:
  explicit Slots(int count)
      : block_(count > stackSlots ? tevsMalloc_8u(count * int{sizeof(T)}) : nullptr),
        values_(count > stackSlots ? reinterpret_cast<T*>(block_) : stack_) {}
  ~Slots() { tevsFree(block_); }
  Slots(const Slots&) = delete;
  Slots& operator=(const Slots&) = delete;

  explicit operator bool() const { return values_ != nullptr; }
  T& operator[](int index) { return values_[index]; }
  const T& operator[](int index) const { return values_[index]; }

 private:
  T stack_[stackSlots];
  Tev8u* block_;
  T* values_;
};

// Calls work(Share) for each of `count` shares of `height` rows. The team has as many threads as the core library keeps
// for a region, or fewer if the runtime grants fewer (inside a caller's own region, one): the shares are dealt to
// whatever team came, so that all rows are done and the result is that of `count` threads.
template <class Work>
void forEachShare(int height, int count, Work&& work) {
  const int team = std::max(1, std::min(count, threads_omp_of_n_tev));
#pragma omp parallel num_threads(team)
  {
    const int granted = omp_get_num_threads();
    for (int t = owncvGetIdThreads(); t < count; t += granted) work(shareOfRows(height, count, t));
  }
}

}  // namespace tevcv
