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

// ---- Canny edges ----

// Edges grow from the pixels on the stack over the candidates of the map, 128 and above. The map has a border of one
// pixel of zeros; an entry of the stack is two words, row and column, and `words` counts words. The unnamed arguments
// are 0, and the height is not needed.
TEV_WORKER void ownHysteresisThresholding_16u(const Tev8u* edgeMap, Tev16u* stack, int words, int, int width,
                                              int height, int, int, Tev8u* dst, int dstStep);
TEV_WORKER void ownHysteresisThresholding_32s(const Tev8u* edgeMap, Tev32s* stack, int words, int, int width,
                                              int height, int, int, Tev8u* dst, int dstStep);

// ---- Hough lines ----

// A line found, by its indices in the accumulator.
struct HoughPeak {
  Tev32s rhoIndex;
  Tev32s thetaIndex;
  Tev32s votes;
  Tev32s unused;
};

// Four floats to the nearest integers, halves away from zero.
TEV_WORKER void ownHoughLineRound(const Tev32f* in, Tev32s* out);

// The tangent as a continued fraction of eight terms, in extended precision; sine and cosine from the tangent of half
// the angle.
TEV_WORKER long double ownTan(Tev32f x);
TEV_WORKER void ownSinCos(Tev32f angle, Tev32f* sine, Tev32f* cosine);

// A record for each image row, (width * 4 + 31) & ~15 bytes long: word 0 counts the row's non-zero pixels, their
// columns follow from word 4 on in ascending order.
TEV_WORKER void ownHoughLineImgPack(const Tev8u* src, int srcStep, int width, int height, Tev32s* packed);

// Finds the peaks of one angle's votes between the indices `lowest` and `highest`, and inserts them into the list,
// which is sorted by descending votes. In the three rows index k stands in slot k + 1. `flags` is scratch of one word
// an index, `listMinimum` the votes that a peak needs to enter.
TEV_WORKER void ownHoughLineFindPeak(const Tev32s* previous, const Tev32s* current, const Tev32s* next, int lowest,
                                     int highest, int thetaIndex, int threshold, HoughPeak* peaks, int maxLineCount,
                                     int* count, Tev32s* listMinimum, Tev32s* flags);
