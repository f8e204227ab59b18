// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/features.h"
#include "tevcv_internal/export.h"

// ---- Peaks, fast arctangent, line sampling ----

// out[i] = the extreme of in[i], in[i + 1], in[i + 2], for i from 0 to n - 3.
TEV_WORKER void ownSiftFilterMaxRow03_32f_C1R(const Tev32f* in, Tev32f* out, int n);
TEV_WORKER void ownSiftFilterMinRow03_32f_C1R(const Tev32f* in, Tev32f* out, int n);
TEV_WORKER void ownSiftFilterMaxRow03_32s_C1R(const Tev32s* in, Tev32s* out, int n);
TEV_WORKER void ownSiftFilterMinRow03_32s_C1R(const Tev32s* in, Tev32s* out, int n);

// By eighths of the circle: the sign bit of the ratio, and the offset in degrees.
TEV_WORKER const Tev32s _tevcvAtanSign[8];
TEV_WORKER const Tev32f _tevcvAtanTab[8];

// A walk along a line: read at `pointer`, add minusStep to it and take minusDelta from `error`; where that is negative
// then, add plusDelta to it and plusStep to the pointer.
struct TevLineIterator {
  const Tev8u* pointer;
  Tev32s error;
  Tev32s plusDelta;
  Tev32s minusDelta;
  Tev32s plusStep;   // bytes along the minor axis
  Tev32s minusStep;  // bytes along the major axis
};

// The number of points, both ends included.
TEV_WORKER int _tevcvInitLineIterator(const Tev8u* image, int imageStep, int elementBytes, int x1, int y1, int x2,
                                      int y2, TevLineIterator* iterator);
