// Thread services: the core library's answers, read anew at each call, and the two gates over them.
#include <omp.h>

#include "frame/core_services.h"
#include "tevcv_internal/frame.h"

int owncvGetNumThreads() {
  int threads = 1;
  tevGetNumThreads(&threads);
  return threads;
}

int owncvGetMaxNumThreads() { return owncvGetNumThreads(); }

int owncvGetIdThreads() { return omp_get_thread_num(); }

int owncvGetCacheSize() {
  int bytes = 0;
  tevGetMaxCacheSizeB(&bytes);
  return bytes;
}

int runomp() {
  const int cores = tevGetNumCoresOnDie();
  return cores == 1 ? 0 : cores;
}

// The filters of length 3 and 5 are too light to be worth a second thread on a die of one core; longer ones always
// fork.
int runsepomp(int maskSize) { return maskSize == 3 || maskSize == 5 ? runomp() : runomp() | 1; }
