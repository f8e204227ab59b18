// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/motion.h"
#include "tevcv_internal/export.h"

// A tracker for levels of up to `width` x `height` pixels with shared gradients; `dataType` is one of tevDataType8u,
// 16u and 32f.
TEV_WORKER TevStatus ownOpticalFlowPyrLKInitAlloc(TevOptFlowPyrLKState** ppState, int width, int height, int dataType,
                                                  int windowSize, int hint);
// Scharr gradients of a block of `width` x `height` elements, for its inner `width` - 2 x `height` - 2 elements;
// `workX` and `workY` hold `height` rows of `width` - 2 elements each. Steps count bytes.
TEV_WORKER void ownOptConvolution_16s_C1R(const Tev16s* src, int srcStep, Tev16s* dstX, Tev16s* dstY, int dstStep,
                                          int width, int height, Tev32s* workX, Tev32s* workY);
TEV_WORKER void ownOptConvolution_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dstX, Tev32f* dstY, int dstStep,
                                          int width, int height, Tev32f* workX, Tev32f* workY);
// `width` - 2 x `height` - 2 elements of `src`, interpolated at the fractions of the corner of a patch of `patchWidth`
// x `patchHeight` centred on (x, y). Steps count bytes. The sizes of the valid part are not used.
TEV_WORKER void ownModifiedConvolution_16s_C1R(const Tev16s* src, int srcStep, Tev16s* dst, int dstStep, int width,
                                               int height, int patchWidth, int patchHeight, int validWidth,
                                               int validHeight, Tev32f x, Tev32f y, int scale);
