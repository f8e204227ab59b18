// What the library imports from the core library, and nothing else: three functions and five data words. A program may
// bring a core library of its own, so they are declared here and not taken from the header of ours.
#pragma once

#include "tevcv/types.h"

extern "C" {
TevStatus tevGetNumThreads(int* pNumThreads);
int tevGetNumCoresOnDie(void);
TevStatus tevGetMaxCacheSizeB(int* pSizeBytes);

extern Tev32s threads_omp_of_n_tev;
extern const Tev32f tevConstantOfNAN_32f;
extern const Tev64f tevConstantOfNAN_64f;
extern const Tev64f tevConstantOfINF_64f;
extern const Tev64f tevConstantOfINF_NEG_64f;
}
