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

// Gaussian steps of images at most two pixels wide (W2) or high (H2), and doubling of those one pixel wide (W1) or high
// (H1).
TEV_WORKER void ownPyrDownG5x5_W2_8u(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                     int channels);
TEV_WORKER void ownPyrDownG5x5_W2_8s(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                     int channels);
TEV_WORKER void ownPyrDownG5x5_W2_32f(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                      int channels);
TEV_WORKER void ownPyrDownG5x5_H2_8u(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                     int channels);
TEV_WORKER void ownPyrDownG5x5_H2_8s(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                     int channels);
TEV_WORKER void ownPyrDownG5x5_H2_32f(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                      int channels);
TEV_WORKER void ownPyrUpG5x5_W1_8u(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                   int channels);
TEV_WORKER void ownPyrUpG5x5_W1_8s(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                   int channels);
TEV_WORKER void ownPyrUpG5x5_H1_8u(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                   int channels);
TEV_WORKER void ownPyrUpG5x5_H1_8s(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                   int channels);
