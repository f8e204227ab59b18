// A program's own core library: the eight names that the library imports, and words to steer them.
#include "frame/core_services.h"

#include <limits>

extern "C" {
int fakeThreads = 7;
int fakeCores = 3;
int fakeCacheBytes = 12345;
int fakeStatus = 0;

TevStatus tevGetNumThreads(int* pNumThreads) {
  *pNumThreads = fakeThreads;
  return fakeStatus;
}
int tevGetNumCoresOnDie(void) { return fakeCores; }
TevStatus tevGetMaxCacheSizeB(int* pSizeBytes) {
  *pSizeBytes = fakeCacheBytes;
  return fakeStatus;
}

Tev32s threads_omp_of_n_tev = 7;
// Not the usual NaN: the library must store this one.
const Tev32f tevConstantOfNAN_32f = -std::numeric_limits<Tev32f>::quiet_NaN();
const Tev64f tevConstantOfNAN_64f = -std::numeric_limits<Tev64f>::quiet_NaN();
const Tev64f tevConstantOfINF_64f = std::numeric_limits<Tev64f>::infinity();
const Tev64f tevConstantOfINF_NEG_64f = -std::numeric_limits<Tev64f>::infinity();
}
