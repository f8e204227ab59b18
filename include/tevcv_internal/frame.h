// Thread services, scale functions and tables of the frame.
#pragma once

#include "tevcv/types.h"
#include "tevcv_internal/export.h"

// The number of threads that the core library grants, read anew at each call.
TEV_WORKER int owncvGetNumThreads();
TEV_WORKER int owncvGetMaxNumThreads();
// The calling thread's number in its team, from 0.
TEV_WORKER int owncvGetIdThreads();
// Size of the largest cache in bytes.
TEV_WORKER int owncvGetCacheSize();
// 0 if the die has one core, else its core count.
TEV_WORKER int runomp();
// runomp() for a mask size of 3 or 5, non-zero for any other.
TEV_WORKER int runsepomp(int maskSize);

// 2^-scaleFactor, clamped to what the type holds.
TEV_WORKER Tev32f owncvGetScale_32s32f(int scaleFactor);
TEV_WORKER Tev64f owncvGetScale_32s64f(int scaleFactor);
// Three contiguous planes of width x height, in place: x, -, y become x * x, x * y, y * y.
TEV_WORKER void owncvMulDBuffers_32f(int width, int height, Tev32f* bufX, Tev32f* bufXY, Tev32f* bufY);
// The same for 16-bit values that stand in the first half of each float row of bufX and bufY.
TEV_WORKER void owncvMulDBuffers_16s32f(int width, int height, Tev32f* bufX, Tev32f* bufXY, Tev32f* bufY);

TEV_WORKER const Tev32f intfTable[279];
TEV_WORKER const Tev64f intdTable[34];
