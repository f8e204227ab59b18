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

// Layer resampling. The convolutions smooth a region into one of the same size; the large form takes images above the
// kernel in both dimensions and a buffer of kernelSize rows of 32-bit elements, the small form (_sm) any.
TEV_WORKER void ownPyramidConvolution_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roi,
                                                const Tev16s* kernel, int kernelSize, int scale, Tev8u* buffer);
TEV_WORKER void ownPyramidConvolution_sm_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roi,
                                                   const Tev16s* kernel, int kernelSize, int scale);
TEV_WORKER void ownPyramidConvolution_8u16s_C3R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roi,
                                                const Tev16s* kernel, int kernelSize, int scale, Tev8u* buffer);
TEV_WORKER void ownPyramidConvolution_sm_8u16s_C3R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roi,
                                                   const Tev16s* kernel, int kernelSize, int scale);
TEV_WORKER void ownPyramidConvolution_16u32s_C1R(const Tev16u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roi,
                                                 const Tev16s* kernel, int kernelSize, int scale, Tev8u* buffer);
TEV_WORKER void ownPyramidConvolution_sm_16u32s_C1R(const Tev16u* src, int srcStep, Tev32s* dst, int dstStep,
                                                    TevSize roi, const Tev16s* kernel, int kernelSize, int scale);
TEV_WORKER void ownPyramidConvolution_16u32s_C3R(const Tev16u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roi,
                                                 const Tev16s* kernel, int kernelSize, int scale, Tev8u* buffer);
TEV_WORKER void ownPyramidConvolution_sm_16u32s_C3R(const Tev16u* src, int srcStep, Tev32s* dst, int dstStep,
                                                    TevSize roi, const Tev16s* kernel, int kernelSize, int scale);
TEV_WORKER void ownPyramidConvolution_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi,
                                              const Tev32f* kernel, int kernelSize, int scale, Tev8u* buffer);
TEV_WORKER void ownPyramidConvolution_sm_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi,
                                                 const Tev32f* kernel, int kernelSize, int scale);
TEV_WORKER void ownPyramidConvolution_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi,
                                              const Tev32f* kernel, int kernelSize, int scale, Tev8u* buffer);
TEV_WORKER void ownPyramidConvolution_sm_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi,
                                                 const Tev32f* kernel, int kernelSize, int scale);

// Linear interpolation at multiples of the rate. The source is overwritten; the buffer holds two words for each
// destination column.
TEV_WORKER void ownDownSample_Bilinear_16s8u(Tev16s* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                             TevSize dstRoi, Tev32f rate, int channels, Tev8u* buffer);
TEV_WORKER void ownDownSample_Bilinear_32s16u(Tev32s* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                              TevSize dstRoi, Tev32f rate, int channels, Tev8u* buffer);
TEV_WORKER void ownDownSample_Bilinear_32f(Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                           TevSize dstRoi, Tev32f rate, int channels, Tev8u* buffer);

// A copy of the source with rows and columns more on each side, without row padding; null where there is no memory.
// The caller frees it with tevsFree. The border values count for tevBorderConst only.
TEV_WORKER Tev8u* ownCopyWithBorder_8u_C1R(const Tev8u* src, int srcStep, int width, int height,
                                           TevBorderType borderType, Tev8u borderValue, int top, int bottom, int left,
                                           int right);
TEV_WORKER Tev8u* ownCopyWithBorder_8u_C3R(const Tev8u* src, int srcStep, int width, int height,
                                           TevBorderType borderType, Tev8u borderValue1, Tev8u borderValue2,
                                           Tev8u borderValue3, int top, int bottom, int left, int right);
TEV_WORKER Tev16u* ownCopyWithBorder_16u_C1R(const Tev16u* src, int srcStep, int width, int height,
                                             TevBorderType borderType, Tev16u borderValue, int top, int bottom,
                                             int left, int right);
TEV_WORKER Tev16u* ownCopyWithBorder_16u_C3R(const Tev16u* src, int srcStep, int width, int height,
                                             TevBorderType borderType, Tev16u borderValue1, Tev16u borderValue2,
                                             Tev16u borderValue3, int top, int bottom, int left, int right);
TEV_WORKER Tev32f* ownCopyWithBorder_32f_C1R(const Tev32f* src, int srcStep, int width, int height,
                                             TevBorderType borderType, Tev32f borderValue, int top, int bottom,
                                             int left, int right);
TEV_WORKER Tev32f* ownCopyWithBorder_32f_C3R(const Tev32f* src, int srcStep, int width, int height,
                                             TevBorderType borderType, Tev32f borderValue1, Tev32f borderValue2,
                                             Tev32f borderValue3, int top, int bottom, int left, int right);

// Spreading of a source that is extended by kernelSize / 2 pixels on each side; srcRoi is its size without them. The
// buffer starts on a 32-byte boundary.
TEV_WORKER void ownConvUp_Bilinear_8u(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                      TevSize dstRoi, Tev32f rate, const Tev16s* kernel, int kernelSize, int channels,
                                      Tev8u* buffer);
TEV_WORKER void ownConvUp_Bilinear_16u(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                       TevSize dstRoi, Tev32f rate, const Tev16s* kernel, int kernelSize, int channels,
                                       Tev8u* buffer);
TEV_WORKER void ownConvUp_Bilinear_32f(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                       TevSize dstRoi, Tev32f rate, const Tev32f* kernel, int kernelSize, int channels,
                                       Tev8u* buffer);
