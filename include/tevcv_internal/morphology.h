// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/morphology.h"
#include "tevcv_internal/export.h"

// --- Separable minimum and maximum ----------------------------------------------------------------------------------

// dst[x], 0 <= x < width, is the extremum of the row `src` over x - offset <= i < x - offset + length, as far as that
// lies in the row, each channel on its own. 0 <= offset < length; the rows do not overlap. The number in a row worker's
// name is the window that it is built for, VH any window; each of them takes every window.
using TevFilterRow_8u = void (*)(const Tev8u* src, Tev8u* dst, int width, int length, int offset);
using TevFilterRow_32f = void (*)(const Tev32f* src, Tev32f* dst, int width, int length, int offset);

// The whole filter over an image: rows by `rowFunction`, columns here. `ring` holds pointers to lines of width *
// channels elements: 2 * maskH of them for VH; for 01, 03 and 05, which are windows of that height, maskH + 1 lines,
// and the same lines once more.
using TevFilterColumn_8u = void (*)(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                                    int channels, int maskW, int maskH, int ax, int ay, TevFilterRow_8u rowFunction,
                                    Tev8u** ring);
using TevFilterColumn_32f = void (*)(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                                     int channels, int maskW, int maskH, int ax, int ay, TevFilterRow_32f rowFunction,
                                     Tev32f** ring);

#define TEV_8U_ROW(name) TEV_WORKER void name(const Tev8u* src, Tev8u* dst, int width, int length, int offset)
#define TEV_32F_ROW(name) TEV_WORKER void name(const Tev32f* src, Tev32f* dst, int width, int length, int offset)
TEV_8U_ROW(ownFilterMinRow01_8u_C1R);
TEV_8U_ROW(ownFilterMinRow02_8u_C1R);
TEV_8U_ROW(ownFilterMinRow03_8u_C1R);
TEV_8U_ROW(ownFilterMinRow04_8u_C1R);
TEV_8U_ROW(ownFilterMinRow05_8u_C1R);
TEV_8U_ROW(ownFilterMinRow06_8u_C1R);
TEV_8U_ROW(ownFilterMinRow07_8u_C1R);
TEV_8U_ROW(ownFilterMinRow09_8u_C1R);
TEV_8U_ROW(ownFilterMinRow11_8u_C1R);
TEV_8U_ROW(ownFilterMinRow13_8u_C1R);
TEV_8U_ROW(ownFilterMinRow15_8u_C1R);
TEV_8U_ROW(ownFilterMinRowVH_8u_C1R);
TEV_8U_ROW(ownFilterMinRow01_8u_C3R);
TEV_8U_ROW(ownFilterMinRow02_8u_C3R);
TEV_8U_ROW(ownFilterMinRow03_8u_C3R);
TEV_8U_ROW(ownFilterMinRow04_8u_C3R);
TEV_8U_ROW(ownFilterMinRow05_8u_C3R);
TEV_8U_ROW(ownFilterMinRow06_8u_C3R);
TEV_8U_ROW(ownFilterMinRow07_8u_C3R);
TEV_8U_ROW(ownFilterMinRow09_8u_C3R);
TEV_8U_ROW(ownFilterMinRow11_8u_C3R);
TEV_8U_ROW(ownFilterMinRow13_8u_C3R);
TEV_8U_ROW(ownFilterMinRow15_8u_C3R);
TEV_8U_ROW(ownFilterMinRowVH_8u_C3R);
TEV_8U_ROW(ownFilterMinRow01_8u_C4R);
TEV_8U_ROW(ownFilterMinRow02_8u_C4R);
TEV_8U_ROW(ownFilterMinRow03_8u_C4R);
TEV_8U_ROW(ownFilterMinRow04_8u_C4R);
TEV_8U_ROW(ownFilterMinRow05_8u_C4R);
TEV_8U_ROW(ownFilterMinRow06_8u_C4R);
TEV_8U_ROW(ownFilterMinRow07_8u_C4R);
TEV_8U_ROW(ownFilterMinRow09_8u_C4R);
TEV_8U_ROW(ownFilterMinRow11_8u_C4R);
TEV_8U_ROW(ownFilterMinRow13_8u_C4R);
TEV_8U_ROW(ownFilterMinRow15_8u_C4R);
TEV_8U_ROW(ownFilterMinRowVH_8u_C4R);
TEV_32F_ROW(ownFilterMinRow01_32f_C1R);
TEV_32F_ROW(ownFilterMinRow02_32f_C1R);
TEV_32F_ROW(ownFilterMinRow03_32f_C1R);
TEV_32F_ROW(ownFilterMinRow04_32f_C1R);
TEV_32F_ROW(ownFilterMinRow05_32f_C1R);
TEV_32F_ROW(ownFilterMinRow06_32f_C1R);
TEV_32F_ROW(ownFilterMinRow07_32f_C1R);
TEV_32F_ROW(ownFilterMinRow09_32f_C1R);
TEV_32F_ROW(ownFilterMinRow11_32f_C1R);
TEV_32F_ROW(ownFilterMinRow13_32f_C1R);
TEV_32F_ROW(ownFilterMinRow15_32f_C1R);
TEV_32F_ROW(ownFilterMinRowVH_32f_C1R);
TEV_32F_ROW(ownFilterMinRow01_32f_C3R);
TEV_32F_ROW(ownFilterMinRow02_32f_C3R);
TEV_32F_ROW(ownFilterMinRow03_32f_C3R);
TEV_32F_ROW(ownFilterMinRow04_32f_C3R);
TEV_32F_ROW(ownFilterMinRow05_32f_C3R);
TEV_32F_ROW(ownFilterMinRow06_32f_C3R);
TEV_32F_ROW(ownFilterMinRow07_32f_C3R);
TEV_32F_ROW(ownFilterMinRow09_32f_C3R);
TEV_32F_ROW(ownFilterMinRow11_32f_C3R);
TEV_32F_ROW(ownFilterMinRow13_32f_C3R);
TEV_32F_ROW(ownFilterMinRow15_32f_C3R);
TEV_32F_ROW(ownFilterMinRowVH_32f_C3R);
TEV_32F_ROW(ownFilterMinRow01_32f_C4R);
TEV_32F_ROW(ownFilterMinRow02_32f_C4R);
TEV_32F_ROW(ownFilterMinRow03_32f_C4R);
TEV_32F_ROW(ownFilterMinRow04_32f_C4R);
TEV_32F_ROW(ownFilterMinRow05_32f_C4R);
TEV_32F_ROW(ownFilterMinRow06_32f_C4R);
TEV_32F_ROW(ownFilterMinRow07_32f_C4R);
TEV_32F_ROW(ownFilterMinRow09_32f_C4R);
TEV_32F_ROW(ownFilterMinRow11_32f_C4R);
TEV_32F_ROW(ownFilterMinRow13_32f_C4R);
TEV_32F_ROW(ownFilterMinRow15_32f_C4R);
TEV_32F_ROW(ownFilterMinRowVH_32f_C4R);
TEV_8U_ROW(ownFilterMaxRow01_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow02_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow03_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow04_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow05_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow06_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow07_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow09_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow11_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow13_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow15_8u_C1R);
TEV_8U_ROW(ownFilterMaxRowVH_8u_C1R);
TEV_8U_ROW(ownFilterMaxRow01_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow02_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow03_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow04_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow05_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow06_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow07_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow09_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow11_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow13_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow15_8u_C3R);
TEV_8U_ROW(ownFilterMaxRowVH_8u_C3R);
TEV_8U_ROW(ownFilterMaxRow01_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow02_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow03_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow04_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow05_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow06_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow07_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow09_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow11_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow13_8u_C4R);
TEV_8U_ROW(ownFilterMaxRow15_8u_C4R);
TEV_8U_ROW(ownFilterMaxRowVH_8u_C4R);
TEV_32F_ROW(ownFilterMaxRow01_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow02_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow03_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow04_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow05_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow06_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow07_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow09_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow11_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow13_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow15_32f_C1R);
TEV_32F_ROW(ownFilterMaxRowVH_32f_C1R);
TEV_32F_ROW(ownFilterMaxRow01_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow02_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow03_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow04_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow05_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow06_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow07_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow09_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow11_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow13_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow15_32f_C3R);
TEV_32F_ROW(ownFilterMaxRowVH_32f_C3R);
TEV_32F_ROW(ownFilterMaxRow01_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow02_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow03_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow04_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow05_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow06_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow07_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow09_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow11_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow13_32f_C4R);
TEV_32F_ROW(ownFilterMaxRow15_32f_C4R);
TEV_32F_ROW(ownFilterMaxRowVH_32f_C4R);
#undef TEV_8U_ROW
#undef TEV_32F_ROW

#define TEV_8U_COLUMN(name)                                                                                         \
  TEV_WORKER void name(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height, int channels, \
                       int maskW, int maskH, int ax, int ay, TevFilterRow_8u rowFunction, Tev8u** ring)
#define TEV_32F_COLUMN(name)                                                                                          \
  TEV_WORKER void name(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height, int channels, \
                       int maskW, int maskH, int ax, int ay, TevFilterRow_32f rowFunction, Tev32f** ring)
TEV_8U_COLUMN(ownFilterMinColumn01_8u_C1R);
TEV_8U_COLUMN(ownFilterMinColumn03_8u_C1R);
TEV_8U_COLUMN(ownFilterMinColumn05_8u_C1R);
TEV_8U_COLUMN(ownFilterMinColumnVH_8u_C1R);
TEV_32F_COLUMN(ownFilterMinColumn01_32f_C1R);
TEV_32F_COLUMN(ownFilterMinColumn03_32f_C1R);
TEV_32F_COLUMN(ownFilterMinColumn05_32f_C1R);
TEV_32F_COLUMN(ownFilterMinColumnVH_32f_C1R);
TEV_8U_COLUMN(ownFilterMaxColumn01_8u_C1R);
TEV_8U_COLUMN(ownFilterMaxColumn03_8u_C1R);
TEV_8U_COLUMN(ownFilterMaxColumn05_8u_C1R);
TEV_8U_COLUMN(ownFilterMaxColumnVH_8u_C1R);
TEV_32F_COLUMN(ownFilterMaxColumn01_32f_C1R);
TEV_32F_COLUMN(ownFilterMaxColumn03_32f_C1R);
TEV_32F_COLUMN(ownFilterMaxColumn05_32f_C1R);
TEV_32F_COLUMN(ownFilterMaxColumnVH_32f_C1R);
#undef TEV_8U_COLUMN
#undef TEV_32F_COLUMN

// Row workers by the window's length, 0 standing for any. The small tables, for images where VH does not pay, have a
// worker for the next shorter window where there is none of that length.
TEV_WORKER const TevFilterRow_8u owntablFilterMinRow_8u_C1[16];
TEV_WORKER const TevFilterRow_8u owntablFilterMinRow_8u_C3[16];
TEV_WORKER const TevFilterRow_8u owntablFilterMinRow_8u_C4[16];
TEV_WORKER const TevFilterRow_32f owntablFilterMinRow_32f_C1[16];
TEV_WORKER const TevFilterRow_32f owntablFilterMinRow_32f_C3[16];
TEV_WORKER const TevFilterRow_32f owntablFilterMinRow_32f_C4[16];
TEV_WORKER const TevFilterRow_8u owntablFilterMinRow_8u_C4_Small[16];
TEV_WORKER const TevFilterRow_32f owntablFilterMinRow_32f_C1_Small[16];
TEV_WORKER const TevFilterRow_8u owntablFilterMaxRow_8u_C1[16];
TEV_WORKER const TevFilterRow_8u owntablFilterMaxRow_8u_C3[16];
TEV_WORKER const TevFilterRow_8u owntablFilterMaxRow_8u_C4[16];
TEV_WORKER const TevFilterRow_32f owntablFilterMaxRow_32f_C1[16];
TEV_WORKER const TevFilterRow_32f owntablFilterMaxRow_32f_C3[16];
TEV_WORKER const TevFilterRow_32f owntablFilterMaxRow_32f_C4[16];
TEV_WORKER const TevFilterRow_8u owntablFilterMaxRow_8u_C4_Small[16];
TEV_WORKER const TevFilterRow_32f owntablFilterMaxRow_32f_C1_Small[16];
// Column workers by the window's height, 0 standing for any.
TEV_WORKER const TevFilterColumn_8u owntablFilterMinColumn_8u_C1[8];
TEV_WORKER const TevFilterColumn_32f owntablFilterMinColumn_32f_C1[8];
TEV_WORKER const TevFilterColumn_8u owntablFilterMaxColumn_8u_C1[8];
TEV_WORKER const TevFilterColumn_32f owntablFilterMaxColumn_32f_C1[8];

// --- Structuring elements -------------------------------------------------------------------------------------------

using TevMorphKernelClass = Tev32s;
enum : TevMorphKernelClass {
  tevMorphKernelGeneral = 0,  // any structuring element that is none of the following
  tevMorphKernelRect = 1,     // one solid rectangle, the anchor on it or off it
  tevMorphKernelEllipse = 2,  // one run a row, each through the anchor's column; equal lengths start alike
  tevMorphKernelEmpty = 3     // no cell is set: the operation is a copy
};

// What is known of a rectangle, or of an element made of runs. The first four fields hold for both, the others for runs
// alone.
struct TevMorphShape {
  Tev32s width;  // the tight box of the set cells
  Tev32s height;
  Tev32s anchorX;  // relative to the box; for a rectangle it may lie outside
  Tev32s anchorY;
  Tev32s numRows;       // rows that are not empty
  Tev32s numLens;       // different lengths among their runs
  Tev32s* rowIndex;     // numRows: row numbers, from the first row that is not empty
  Tev32s* rowLenIndex;  // numRows: where in runLength the row's length stands
  Tev32s* runLength;    // numLens, descending
  Tev32s* runOffset;    // numLens: from the first column of such a run to the anchor's column
};

// One block: this header, then by class
//   general  padding to a 16-byte boundary of the address, kernel (rounded up to 16 bytes), scratch image
//   rect     shape, kernel (rounded up to 16), scratch of the separable filter
//   ellipse  shape, its four arrays, kernel (rounded up to 16), ring of lines
//   empty    kernel, all zero
struct TevMorphState {
  Tev8u* kernel;       // a copy of the caller's mask, row by row, no padding
  Tev8u* kernelErode;  // general class only, as the next: what the operations read
  Tev8u* kernelDilate;
  Tev8u* work;           // scratch of one running operation; null for the empty class
  TevMorphShape* shape;  // null for the general class
  Tev32s width;          // of the tight box for rectangle and ellipse, of the mask for the others
  Tev32s height;
  Tev32s anchorX;  // likewise; 0 for the empty class
  Tev32s anchorY;
  Tev32s rightExtent;  // general class only, as the next two: columns right of the anchor
  Tev32s bottomExtent;
  Tev32s rowStride;  // bytes a row of the scratch image
  Tev32s totalSize;  // bytes of the whole block
  Tev32s dataType;
  Tev32s channels;
  Tev32s maxRoiWidth;
  Tev32s reserved;  // -1
  TevMorphKernelClass kernelClass;
};
static_assert(sizeof(void*) != 4 || (sizeof(TevMorphState) == 72 && sizeof(TevMorphShape) == 40));

// What the builder does: tells the size, builds in caller memory, allocates and builds.
enum { tevMorphBuildSizeOnly = 0, tevMorphBuildInPlace = 1, tevMorphBuildAllocated = 2 };

// Finds the class of a mask. `scratch` holds six arrays of maskHeight words, which a shape of runs points into. An
// `extraIrregular` that is not 0 leaves elements of runs to the general class; rectangles stay rectangles.
TEV_WORKER void ownCheckKernel(const Tev8u* mask, int maskWidth, int maskHeight, int anchorX, int anchorY,
                               TevMorphKernelClass* classOut, TevMorphShape* shapeOut, Tev32s* scratch,
                               int extraIrregular);

// Bytes of the ring of lines for an element made of runs.
TEV_WORKER TevStatus ownMorphEllipseGetBufferSize(int roiWidth, int width, int height, int numLens,
                                                  TevDataType dataType, int channels, int* size);

// The builder behind all members. It does check: the status is that of the exported function.
TEV_WORKER TevStatus ownMorphologyInitAlloc(TevDataType dataType, int channels, int roiWidth, const Tev8u* mask,
                                            int maskWidth, int maskHeight, int anchorX, int anchorY,
                                            TevMorphState** stateHolder, int* sizeOut, int mode, int extraIrregular);

// --- Erosion and dilation -------------------------------------------------------------------------------------------

// Direct evaluation over the set cells of `kernel`, row by row of the kernel: a block of rows (R) and one row (S).
// `src` addresses the top-left pixel of the first output pixel's window; the whole window is read.
TEV_WORKER void Erode_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                             const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_8u_C1S(const Tev8u* src, int srcStep, Tev8u* dst, int width, const Tev8u* kernel, int kernelWidth,
                             int kernelHeight);
TEV_WORKER void Dilate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                              const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Dilate_8u_C1S(const Tev8u* src, int srcStep, Tev8u* dst, int width, const Tev8u* kernel,
                              int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                             const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_8u_C3S(const Tev8u* src, int srcStep, Tev8u* dst, int width, const Tev8u* kernel, int kernelWidth,
                             int kernelHeight);
TEV_WORKER void Dilate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                              const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Dilate_8u_C3S(const Tev8u* src, int srcStep, Tev8u* dst, int width, const Tev8u* kernel,
                              int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                             const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_8u_C4S(const Tev8u* src, int srcStep, Tev8u* dst, int width, const Tev8u* kernel, int kernelWidth,
                             int kernelHeight);
TEV_WORKER void Dilate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                              const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Dilate_8u_C4S(const Tev8u* src, int srcStep, Tev8u* dst, int width, const Tev8u* kernel,
                              int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                              const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_32f_C1S(const Tev32f* src, int srcStep, Tev32f* dst, int width, const Tev8u* kernel,
                              int kernelWidth, int kernelHeight);
TEV_WORKER void Dilate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                               const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Dilate_32f_C1S(const Tev32f* src, int srcStep, Tev32f* dst, int width, const Tev8u* kernel,
                               int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                              const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_32f_C3S(const Tev32f* src, int srcStep, Tev32f* dst, int width, const Tev8u* kernel,
                              int kernelWidth, int kernelHeight);
TEV_WORKER void Dilate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                               const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Dilate_32f_C3S(const Tev32f* src, int srcStep, Tev32f* dst, int width, const Tev8u* kernel,
                               int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                              const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Erode_32f_C4S(const Tev32f* src, int srcStep, Tev32f* dst, int width, const Tev8u* kernel,
                              int kernelWidth, int kernelHeight);
TEV_WORKER void Dilate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                               const Tev8u* kernel, int kernelWidth, int kernelHeight);
TEV_WORKER void Dilate_32f_C4S(const Tev32f* src, int srcStep, Tev32f* dst, int width, const Tev8u* kernel,
                               int kernelWidth, int kernelHeight);

// An element made of runs, with the ring of lines in `work`.
TEV_WORKER void ownErodeEllipseBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                                      int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownDilateEllipseBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                       int width, int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownErodeEllipseBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                                      int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownDilateEllipseBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                       int width, int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownErodeEllipseBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                                      int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownDilateEllipseBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                       int width, int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownErodeEllipseBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       int width, int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownDilateEllipseBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                        int width, int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownErodeEllipseBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       int width, int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownDilateEllipseBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                        int width, int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownErodeEllipseBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       int width, int height, const TevMorphShape* shape, Tev8u* work);
TEV_WORKER void ownDilateEllipseBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                        int width, int height, const TevMorphShape* shape, Tev8u* work);

// The sweep over the rows behind them. `rowFunctions` has one entry for each run length, `ring` 4 * shape->height
// entries that point to blocks of shape->numLens lines, `stride` bytes apart.
TEV_WORKER void ownMinEllipse_8u_C1(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                                    int channels, const TevMorphShape* shape, const TevFilterRow_8u* rowFunctions,
                                    Tev8u** ring, int stride);
TEV_WORKER void ownMaxEllipse_8u_C1(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height,
                                    int channels, const TevMorphShape* shape, const TevFilterRow_8u* rowFunctions,
                                    Tev8u** ring, int stride);
TEV_WORKER void ownMinEllipse_32f_C1(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                                     int channels, const TevMorphShape* shape, const TevFilterRow_32f* rowFunctions,
                                     Tev32f** ring, int stride);
TEV_WORKER void ownMaxEllipse_32f_C1(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                                     int channels, const TevMorphShape* shape, const TevFilterRow_32f* rowFunctions,
                                     Tev32f** ring, int stride);

// --- Composed operations --------------------------------------------------------------------------------------------

// One block: this header, the first state, from the next 32-byte boundary on the second, from the next one the scratch
// image, whose rows are rounded up to 32 bytes.
struct TevMorphAdvState {
  TevMorphState* direct;     // the structuring element as given
  TevMorphState* reflected;  // turned by 180 degrees
  Tev8u* scratch;
  Tev32s scratchSize;  // bytes of the scratch image
  Tev32s zero;
};
static_assert(sizeof(void*) != 4 || sizeof(TevMorphAdvState) == 20);

// --- Grey-scale morphology ------------------------------------------------------------------------------------------

// One block: this header, then the kernel's values, 32-bit integers for byte images and floats for float images.
struct TevMorphGrayState {
  const void* kernel;
  Tev32s width, height;  // of the kernel
  Tev32s anchorX, anchorY;
  Tev32s maxRoiWidth, maxRoiHeight;
};
static_assert(sizeof(TevMorphGrayState) == sizeof(void*) + 24);

// --- Reconstruction -------------------------------------------------------------------------------------------------

// Sweeps of one row against its mask: values run along the row, each limited by the mask. ForwardRev goes from left to
// right and back, Forward and Backward one way. The Check forms tell whether a value changed.
TEV_WORKER void ownDilateForwardRev02_8u_C1R(const Tev8u* mask, Tev8u* row, int width);
TEV_WORKER int ownDilateForwardCheckRev02_8u_C1R(const Tev8u* mask, Tev8u* row, int width);
TEV_WORKER int ownDilateForwardCheck02_8u_C1R(const Tev8u* mask, Tev8u* row, int width);
TEV_WORKER int ownDilateBackwardCheck02_8u_C1R(const Tev8u* mask, Tev8u* row, int width);
TEV_WORKER void ownDilateForwardRev02_32f_C1R(const Tev32f* mask, Tev32f* row, int width);
TEV_WORKER int ownDilateForwardCheckRev02_32f_C1R(const Tev32f* mask, Tev32f* row, int width);
TEV_WORKER int ownDilateForwardCheck02_32f_C1R(const Tev32f* mask, Tev32f* row, int width);
TEV_WORKER int ownDilateBackwardCheck02_32f_C1R(const Tev32f* mask, Tev32f* row, int width);
TEV_WORKER void ownErodeForwardRev02_8u_C1R(const Tev8u* mask, Tev8u* row, int width);
TEV_WORKER int ownErodeForwardCheckRev02_8u_C1R(const Tev8u* mask, Tev8u* row, int width);
TEV_WORKER int ownErodeForwardCheck02_8u_C1R(const Tev8u* mask, Tev8u* row, int width);
TEV_WORKER int ownErodeBackwardCheck02_8u_C1R(const Tev8u* mask, Tev8u* row, int width);
TEV_WORKER void ownErodeForwardRev02_32f_C1R(const Tev32f* mask, Tev32f* row, int width);
TEV_WORKER int ownErodeForwardCheckRev02_32f_C1R(const Tev32f* mask, Tev32f* row, int width);
TEV_WORKER int ownErodeForwardCheck02_32f_C1R(const Tev32f* mask, Tev32f* row, int width);
TEV_WORKER int ownErodeBackwardCheck02_32f_C1R(const Tev32f* mask, Tev32f* row, int width);

// Plain passes over rows `from` to the one before `to` (Up: behind `to`, which is -1 for a pass to the top). `mask` and
// `row` are row 0 of the region. Each row takes in the one that the pass comes from and is swept both ways; with
// `first` the first row is swept alone. `buffer` holds one line. The plain names work with four neighbours, Inf with
// eight.
TEV_WORKER void ownDilateDown_8u_C1R(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                     int to, int first, Tev8u* buffer);
TEV_WORKER void ownDilateDown_8u_C1RInf(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                        int to, int first, Tev8u* buffer);
TEV_WORKER void ownDilateUp_8u_C1R(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                   int to, int first, Tev8u* buffer);
TEV_WORKER void ownDilateUp_8u_C1RInf(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                      int to, int first, Tev8u* buffer);
TEV_WORKER void ownDilateDown_32f_C1R(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                      int to, int first, Tev32f* buffer);
TEV_WORKER void ownDilateDown_32f_C1RInf(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width,
                                         int from, int to, int first, Tev32f* buffer);
TEV_WORKER void ownDilateUp_32f_C1R(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                    int to, int first, Tev32f* buffer);
TEV_WORKER void ownDilateUp_32f_C1RInf(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                       int to, int first, Tev32f* buffer);
TEV_WORKER void ownErodeDown_8u_C1R(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                    int to, int first, Tev8u* buffer);
TEV_WORKER void ownErodeDown_8u_C1RInf(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                       int to, int first, Tev8u* buffer);
TEV_WORKER void ownErodeUp_8u_C1R(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from, int to,
                                  int first, Tev8u* buffer);
TEV_WORKER void ownErodeUp_8u_C1RInf(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                     int to, int first, Tev8u* buffer);
TEV_WORKER void ownErodeDown_32f_C1R(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                     int to, int first, Tev32f* buffer);
TEV_WORKER void ownErodeDown_32f_C1RInf(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                        int to, int first, Tev32f* buffer);
TEV_WORKER void ownErodeUp_32f_C1R(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                   int to, int first, Tev32f* buffer);
TEV_WORKER void ownErodeUp_32f_C1RInf(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                      int to, int first, Tev32f* buffer);

// Check passes: as the plain ones, but a row is processed only if the row before it changed or its flag is set, and the
// count of rows changed is returned. flags[y] is that of row y; a changed row flags itself and the row that the pass
// comes from, which may be -1 or the one below the last. `mode` from 1 up sweeps forward only, below 1 both ways. An
// even mode has no row before the first one: that one is swept forward if flagged (from 2 up), both ways in any case
// (0) or not at all (below 0). In an odd mode it is a row as any other. `buffer` and `scratch` hold one line each.
TEV_WORKER int ownDilateDownCheck_8u_C1R(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                         int to, int mode, Tev8u* flags, Tev8u* buffer, Tev8u* scratch);
TEV_WORKER int ownDilateDownCheck_8u_C1RInf(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width,
                                            int from, int to, int mode, Tev8u* flags, Tev8u* buffer, Tev8u* scratch);
TEV_WORKER int ownDilateUpCheck_8u_C1R(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                       int to, int mode, Tev8u* flags, Tev8u* buffer, Tev8u* scratch);
TEV_WORKER int ownDilateUpCheck_8u_C1RInf(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                          int to, int mode, Tev8u* flags, Tev8u* buffer, Tev8u* scratch);
TEV_WORKER int ownDilateDownCheck_32f_C1R(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width,
                                          int from, int to, int mode, Tev8u* flags, Tev32f* buffer, Tev32f* scratch);
TEV_WORKER int ownDilateDownCheck_32f_C1RInf(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width,
                                             int from, int to, int mode, Tev8u* flags, Tev32f* buffer, Tev32f* scratch);
TEV_WORKER int ownDilateUpCheck_32f_C1R(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                        int to, int mode, Tev8u* flags, Tev32f* buffer, Tev32f* scratch);
TEV_WORKER int ownDilateUpCheck_32f_C1RInf(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width,
                                           int from, int to, int mode, Tev8u* flags, Tev32f* buffer, Tev32f* scratch);
TEV_WORKER int ownErodeDownCheck_8u_C1R(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                        int to, int mode, Tev8u* flags, Tev8u* buffer, Tev8u* scratch);
TEV_WORKER int ownErodeDownCheck_8u_C1RInf(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width,
                                           int from, int to, int mode, Tev8u* flags, Tev8u* buffer, Tev8u* scratch);
TEV_WORKER int ownErodeUpCheck_8u_C1R(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                      int to, int mode, Tev8u* flags, Tev8u* buffer, Tev8u* scratch);
TEV_WORKER int ownErodeUpCheck_8u_C1RInf(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                         int to, int mode, Tev8u* flags, Tev8u* buffer, Tev8u* scratch);
TEV_WORKER int ownErodeDownCheck_32f_C1R(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width,
                                         int from, int to, int mode, Tev8u* flags, Tev32f* buffer, Tev32f* scratch);
TEV_WORKER int ownErodeDownCheck_32f_C1RInf(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width,
                                            int from, int to, int mode, Tev8u* flags, Tev32f* buffer, Tev32f* scratch);
TEV_WORKER int ownErodeUpCheck_32f_C1R(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                       int to, int mode, Tev8u* flags, Tev32f* buffer, Tev32f* scratch);
TEV_WORKER int ownErodeUpCheck_32f_C1RInf(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width,
                                          int from, int to, int mode, Tev8u* flags, Tev32f* buffer, Tev32f* scratch);

// The passes with four neighbours and with eight, in this order.
using TevReconstructPass_8u = void (*)(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                       int to, int first, Tev8u* buffer);
using TevReconstructCheck_8u = int (*)(const Tev8u* mask, int maskStep, Tev8u* row, int rowStep, int width, int from,
                                       int to, int mode, Tev8u* flags, Tev8u* buffer, Tev8u* scratch);
using TevReconstructPass_32f = void (*)(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                        int to, int first, Tev32f* buffer);
using TevReconstructCheck_32f = int (*)(const Tev32f* mask, int maskStep, Tev32f* row, int rowStep, int width, int from,
                                        int to, int mode, Tev8u* flags, Tev32f* buffer, Tev32f* scratch);
TEV_WORKER const TevReconstructPass_8u tabDilateDown_8u_C1R[2];
TEV_WORKER const TevReconstructCheck_8u tabDilateDownCheck_8u_C1R[2];
TEV_WORKER const TevReconstructPass_8u tabDilateUp_8u_C1R[2];
TEV_WORKER const TevReconstructCheck_8u tabDilateUpCheck_8u_C1R[2];
TEV_WORKER const TevReconstructPass_32f tabDilateDown_32f_C1R[2];
TEV_WORKER const TevReconstructCheck_32f tabDilateDownCheck_32f_C1R[2];
TEV_WORKER const TevReconstructPass_32f tabDilateUp_32f_C1R[2];
TEV_WORKER const TevReconstructCheck_32f tabDilateUpCheck_32f_C1R[2];
TEV_WORKER const TevReconstructPass_8u tabErodeDown_8u_C1R[2];
TEV_WORKER const TevReconstructCheck_8u tabErodeDownCheck_8u_C1R[2];
TEV_WORKER const TevReconstructPass_8u tabErodeUp_8u_C1R[2];
TEV_WORKER const TevReconstructCheck_8u tabErodeUpCheck_8u_C1R[2];
TEV_WORKER const TevReconstructPass_32f tabErodeDown_32f_C1R[2];
TEV_WORKER const TevReconstructCheck_32f tabErodeDownCheck_32f_C1R[2];
TEV_WORKER const TevReconstructPass_32f tabErodeUp_32f_C1R[2];
TEV_WORKER const TevReconstructCheck_32f tabErodeUpCheck_32f_C1R[2];
