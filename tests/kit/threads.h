// The thread setting of a test, put back at its end.
#pragma once

#include "tevcore.h"

namespace kit {

class Threads {
 public:
  explicit Threads(int count) {
    tevGetNumThreads(&before_);
    tevSetNumThreads(count);
  }
  ~Threads() { tevSetNumThreads(before_); }
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;

 private:
  int before_ = 1;
};

// The counts at which results must agree: serial, even, uneven, many, and past the 32 slots of the stack.
inline constexpr int threadCounts[] = {1, 2, 3, 8, 40};

}  // namespace kit
