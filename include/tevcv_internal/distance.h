// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/distance.h"
#include "tevcv_internal/export.h"
#include "tevcv_internal/morphology.h"

// --- Chamfer distances ----------------------------------------------------------------------------------------------

// The transforms by two threads, from both ends of the image. The weights of the 3x3 mask grow (a <= b), those of the
// 5x5 mask need no moves but the three: b > a, c > 2a, 2c > 3b, b being no more than 2a.
TEV_WORKER TevStatus teviDistanceTransform_3x3_8u_C1R_omp(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                          TevSize roiSize, const Tev32s* metrics);
TEV_WORKER TevStatus teviDistanceTransform_5x5_8u_C1R_omp(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                          TevSize roiSize, const Tev32s* metrics);
TEV_WORKER TevStatus teviDistanceTransform_3x3_8u16u_C1R_omp(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep,
                                                             TevSize roiSize, const Tev32s* metrics);
TEV_WORKER TevStatus teviDistanceTransform_5x5_8u16u_C1R_omp(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep,
                                                             TevSize roiSize, const Tev32s* metrics);
TEV_WORKER TevStatus teviDistanceTransform_3x3_8u32f_C1R_omp(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep,
                                                             TevSize roiSize, const Tev32f* metrics);
TEV_WORKER TevStatus teviDistanceTransform_5x5_8u32f_C1R_omp(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep,
                                                             TevSize roiSize, const Tev32f* metrics);

// --- Fast marching --------------------------------------------------------------------------------------------------

// Sweeps over the rows from startRow to stopRow (exclusive; upwards where startRow is the greater). `flags` addresses
// row 0 of the pixel flags, which has a row before it and one behind the last; `activity` addresses the byte of row 0,
// likewise. The result is not 0 if something changed. With `keep` a row that was active stays so.
TEV_WORKER int ownFMMFirst(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags,
                           int flagsStep, Tev8u* activity, int startRow, int stopRow);
TEV_WORKER int ownFMMSecond(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags,
                            int flagsStep, Tev8u* activity, int startRow, int stopRow, int keep);
TEV_WORKER int ownFMMThird(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags,
                           int flagsStep, Tev8u* activity, int startRow, int stopRow, int keep);
// The same with a band of times below 0 on the zero side, out to `radius`.
TEV_WORKER int ownFMMFirstExt(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags,
                              int flagsStep, Tev8u* activity, int startRow, int stopRow, Tev32f radius);
TEV_WORKER int ownFMMSecondExt(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags,
                               int flagsStep, Tev8u* activity, int startRow, int stopRow, int keep, Tev32f radius);
TEV_WORKER int ownFMMThirdExt(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags,
                              int flagsStep, Tev8u* activity, int startRow, int stopRow, int keep, Tev32f radius);

// The whole marching by two threads, from both ends of an image of at least 13 rows. Flags and activity are zero,
// `counters` has one word a row.
TEV_WORKER void ownFastMarching_0_omp(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                                      Tev8u* flags, int flagsStep, Tev8u* activity, Tev32s* counters);
TEV_WORKER void ownFastMarching_r_omp(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                                      Tev8u* flags, int flagsStep, Tev8u* activity, Tev32s* counters, Tev32f radius);

// --- Inpainting -----------------------------------------------------------------------------------------------------

// One pixel of the neighbourhood, at offset (dx, dy), with its distance from the centre in each image's elements.
struct TevInpaintOffset {
  Tev32s minusDx;
  Tev32s minusDy;
  Tev32f weight;  // falls with the distance from the centre, by method
  Tev32s inMask;
  Tev32s inDistance;
  Tev32s inGradient;
  Tev32s inImage;  // depends on the image's step: each call writes it anew
};
static_assert(sizeof(TevInpaintOffset) == 28);

// One block: this header, the two morphology states, the neighbourhood, the order of filling, the images. All images
// show the crop: the box of the mask with a margin as wide as the radius reaches, as far as that lies in the region.
struct TevInpaintState {
  Tev8u* mask;               // 255 on pixels to fill, 0 elsewhere
  Tev8u* workMask;           // bands of the mask, then the pixels that are still unknown
  Tev16s* imageGradient;     // (x, y) for each channel of each pixel
  Tev16s* distanceGradient;  // (x, y) for each pixel; tevInpaintGradient only
  Tev32f* distance;
  Tev64f* order;  // ascending distances; the low 28 bits of each hold the pixel's index in the crop
  TevInpaintOffset* offsets;
  TevMorphState* dilateWide;   // by the square that the radius spans
  TevMorphState* dilateCross;  // by the pixel and its four neighbours
  Tev32s width;                // the region that the state serves
  Tev32s height;
  Tev32s cropWidth;
  Tev32s cropHeight;
  Tev32s channels;
  Tev32s flags;
  Tev32s count;  // pixels to fill, the length of `order`
  Tev32s cropX;
  Tev32s cropY;
  TevSize crop;  // cropWidth and cropHeight once more
  Tev32f radius;
  Tev32s numOffsets;
  Tev32s maskStride;  // bytes a row, of both masks
  Tev32s distStride;
  Tev32s gradStride;
  Tev32s distGradStride;
};
static_assert(sizeof(void*) != 4 || sizeof(TevInpaintState) == 104);

// The builder behind both members. It does check: the status is that of the exported function.
TEV_WORKER TevStatus ownInpaintInitAlloc_8u(TevInpaintState** state, const Tev32f* distances, int distStep,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, Tev32f radius, int flags,
                                            int channels);

// Counts the pixels that are not 0 and finds their box; with none the box is -1, -1, 0, 0.
TEV_WORKER void owncvNoZero_8u(const Tev8u* mask, int step, int width, int height, int* count, TevRect* bounds);
// Lists the strictly positive distances in raster order, at most `count` of them, with their indexes y * width + x in
// the low 28 bits. The result is how many entries were written.
TEV_WORKER int owncvFillNoZero_32f(const Tev32f* distance, int step, int width, int height, Tev64f* list, int count);

// Gradients as pairs (x, y), stored where `mask` is not 0. Plain ones are twice the central difference inside, one
// difference on the edge (in 32f: the central difference inside, both scaled by 2^-scaleFactor and truncated).
// Magnitudes (Abs) are the sums of both differences' magnitudes inside, twice the one on the edge.
TEV_WORKER void owncvGradient_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev16s* dst,
                                         int dstStep, int width, int height);
TEV_WORKER void owncvGradient_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev16s* dst,
                                         int dstStep, int width, int height);
TEV_WORKER void owncvGradient_32f16s_C1MR_Sfs(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                              Tev16s* dst, int dstStep, int width, int height, int scaleFactor);
TEV_WORKER void owncvAbsGradient_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev16s* dst,
                                            int dstStep, int width, int height);
TEV_WORKER void owncvAbsGradient_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev16s* dst,
                                            int dstStep, int width, int height);

// Corrects the gradients of the pixels in `mask` by the differences to their known neighbours alone: along an axis with
// one neighbour in `unknown` or outside the image, that of the other (twice its magnitude for Abs), with two 0; with
// none the gradient stays. The Point forms do so for the pixel (x, y) and its four neighbours.
TEV_WORKER void owncvModGradient_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                            const Tev8u* unknown, int unknownStep, Tev16s* dst, int dstStep, int width,
                                            int height);
TEV_WORKER void owncvModGradient_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                            const Tev8u* unknown, int unknownStep, Tev16s* dst, int dstStep, int width,
                                            int height);
TEV_WORKER void owncvModAbsGradient_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                               const Tev8u* unknown, int unknownStep, Tev16s* dst, int dstStep,
                                               int width, int height);
TEV_WORKER void owncvModAbsGradient_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                               const Tev8u* unknown, int unknownStep, Tev16s* dst, int dstStep,
                                               int width, int height);
TEV_WORKER void owncvModGradientPoint_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* unknown, int unknownStep,
                                                 Tev16s* dst, int dstStep, int width, int height, int x, int y);
TEV_WORKER void owncvModGradientPoint_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* unknown, int unknownStep,
                                                 Tev16s* dst, int dstStep, int width, int height, int x, int y);
TEV_WORKER void owncvModAbsGradientPoint_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* unknown,
                                                    int unknownStep, Tev16s* dst, int dstStep, int width, int height,
                                                    int x, int y);
TEV_WORKER void owncvModAbsGradientPoint_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* unknown,
                                                    int unknownStep, Tev16s* dst, int dstStep, int width, int height,
                                                    int x, int y);
