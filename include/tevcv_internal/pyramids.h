// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/pyramids.h"
#include "tevcv_internal/export.h"

// A layer state is one block: this record, then on 32-byte boundaries the kernel and the scratch.
struct TevPyramidLayerState {
  void* kernel;  // Tev16s for 8u and 16u layers, Tev32f for 32f ones
  Tev8u* bufferA;
  Tev8u* bufferB;  // set in a down state only
  Tev32s reserved[2];
  Tev32s kernelSize;
  TevDataType dataType;
  Tev32s roiWidth;  // the largest source region
  Tev32s roiHeight;
  Tev32s mode;
  Tev32f rate;
};

// Make a state for any type and channel count. These two do check their arguments: beside the statuses of the typed
// entries, tevStatusBadChannels and tevStatusBadKernel (the data type) come last.
TEV_WORKER TevStatus ownPyramidLayerDownInitAlloc(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                  TevDataType dataType, int channels, const void* kernel,
                                                  int kernelSize, int mode);
TEV_WORKER TevStatus ownPyramidLayerUpInitAlloc(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                TevDataType dataType, int channels, const void* kernel, int kernelSize,
                                                int mode);
