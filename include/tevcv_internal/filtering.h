// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/filtering.h"
#include "tevcv_internal/export.h"

// ---- Fixed-kernel border filters ----

// Kernels in tap order, as integers and as floats.
TEV_WORKER const Tev16s kerScharr_3_16s[3];
TEV_WORKER const Tev16s kerDx_3_16s[3];
TEV_WORKER const Tev16s kerDx_5_16s[5];
TEV_WORKER const Tev16s kerDxNeg_3_16s[3];
TEV_WORKER const Tev16s kerDxNeg_5_16s[5];
TEV_WORKER const Tev16s kerD2x_3_16s[3];
TEV_WORKER const Tev16s kerD2x_5_16s[5];
TEV_WORKER const Tev16s kerSobel_3_16s[3];
TEV_WORKER const Tev16s kerSobel_5_16s[5];
TEV_WORKER const Tev16s kerAvr_3_16s[3];
TEV_WORKER const Tev16s kerAvr_5_16s[5];
TEV_WORKER const Tev16s kerLap_3_16s[3];
TEV_WORKER const Tev32f kerScharr_3_32f[3];
TEV_WORKER const Tev32f kerDx_3_32f[3];
TEV_WORKER const Tev32f kerDx_5_32f[5];
TEV_WORKER const Tev32f kerDxNeg_3_32f[3];
TEV_WORKER const Tev32f kerDxNeg_5_32f[5];
TEV_WORKER const Tev32f kerD2x_3_32f[3];
TEV_WORKER const Tev32f kerD2x_5_32f[5];
TEV_WORKER const Tev32f kerSobel_3_32f[3];
TEV_WORKER const Tev32f kerSobel_5_32f[5];
TEV_WORKER const Tev32f kerAvr_3_32f[3];
TEV_WORKER const Tev32f kerAvr_5_32f[5];
TEV_WORKER const Tev32f kerLap_3_32f[3];

// A row stage with a kernel built in: `rows` rows of `src`, each extended on both sides by the border rule, go filtered
// to ppDst[0], ppDst[1], ... `srcStep` counts elements. The ends of a row need no scratch here: `scratch` is not
// touched and may be null. A null row pointer ends the stage with tevStatusNullPtr.
using OwnFixedRow_8u16s = TevStatus(const Tev8u* src, Tev16s* const* ppDst, Tev8u* scratch, int srcStep, int anchor,
                                    int width, int rows, TevBorderType borderType, Tev8u borderValue);
using OwnFixedRow_32f = TevStatus(const Tev32f* src, Tev32f* const* ppDst, Tev8u* scratch, int srcStep, int anchor,
                                  int width, int rows, TevBorderType borderType, Tev32f borderValue);
// A column stage with a kernel built in: output row y comes from ppSrc[y], ppSrc[y + 1], ... `dstStep` counts elements.
using OwnFixedColumn_16s = TevStatus(const Tev16s* const* ppSrc, Tev16s* dst, int dstStep, int width, int rows);
using OwnFixedColumn_16s8s = TevStatus(const Tev16s* const* ppSrc, Tev8s* dst, int dstStep, int width, int rows,
                                       int divisor);
using OwnFixedColumn_16s8u = TevStatus(const Tev16s* const* ppSrc, Tev8u* dst, int dstStep, int width, int rows);
using OwnFixedColumn_32f = TevStatus(const Tev32f* const* ppSrc, Tev32f* dst, int dstStep, int width, int rows);

TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr;
TEV_WORKER OwnFixedRow_8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr;
TEV_WORKER OwnFixedRow_32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_3x3_kerScharr;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_3x3_kerDx;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_3x3_kerSobel;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_5x5_kerSobel;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_5x5_kerDx;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_3x3_kerDx2;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_5x5_kerDx2;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg;
TEV_WORKER OwnFixedColumn_16s ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg;
TEV_WORKER OwnFixedColumn_16s8s ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg;
TEV_WORKER OwnFixedColumn_16s8u ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr;
TEV_WORKER OwnFixedColumn_16s8u ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_3x3_kerScharr;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_3x3_kerDx;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_3x3_kerSobel;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_5x5_kerSobel;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_5x5_kerDx;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_3x3_kerDx2;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_5x5_kerDx2;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_3x3_kerAvr;
TEV_WORKER OwnFixedColumn_32f ownFilterColumnPipeline_32f_C1R_5x5_kerAvr;

// The stages by index, as the drivers select them. Index 8 of owntabColumn_8u8s repeats the 3x3 Laplacian: the 5x5 one
// to 8s runs through 16s and never asks for it.
TEV_WORKER OwnFixedRow_8u16s* const owntabRow_8u16s[11];
TEV_WORKER OwnFixedRow_32f* const owntabRow_32f[11];
TEV_WORKER OwnFixedColumn_16s* const owntabColumn_8u16s[13];
TEV_WORKER OwnFixedColumn_16s8s* const owntabColumn_8u8s[13];
TEV_WORKER OwnFixedColumn_32f* const owntabColumn_32f[13];
TEV_WORKER OwnFixedColumn_16s8u* const owntabColumn_8u[2];

// The serial drivers: a whole image through a row and a column stage, with the border rule on all four sides. Steps
// count bytes. Of the kernels only the sizes and the row kernel's sum are used, the sum for the constant border row.
TEV_WORKER TevStatus ownFilterConvolution_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, int width,
                                                    int height, const Tev16s* rowKernel, int rowKernelSize,
                                                    const Tev16s* columnKernel, int columnKernelSize,
                                                    TevBorderType borderType, Tev8u borderValue, Tev8u* buffer,
                                                    int rowIndex, int columnIndex);
TEV_WORKER TevStatus ownFilterConvolution_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep, int width,
                                                   int height, const Tev16s* rowKernel, int rowKernelSize,
                                                   const Tev16s* columnKernel, int columnKernelSize,
                                                   TevBorderType borderType, Tev8u borderValue, Tev8u* buffer,
                                                   int rowIndex, int columnIndex, int divisor);
TEV_WORKER TevStatus ownFilterConvolution_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                                 int height, const Tev16s* rowKernel, int rowKernelSize,
                                                 const Tev16s* columnKernel, int columnKernelSize,
                                                 TevBorderType borderType, Tev8u borderValue, Tev8u* buffer,
                                                 int rowIndex, int columnIndex);
TEV_WORKER TevStatus ownFilterConvolution_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width,
                                                  int height, const Tev32f* rowKernel, int rowKernelSize,
                                                  const Tev32f* columnKernel, int columnKernelSize,
                                                  TevBorderType borderType, Tev32f borderValue, Tev8u* buffer,
                                                  int rowIndex, int columnIndex);

// The phase drivers: `height` output rows of an image, `src` and `dst` at the first of them. `phase` is a bit set: 1
// first strip, 2 middle band, 4 last strip. The first strip takes the border rule above, the last one below; every
// other row around the band is read from the image. `wholeSrc` and `wholeSize` give the image that the rows of a
// wrapped or mirrored border come from.
TEV_WORKER TevStatus ownFilterConvolution_8u16s_C1R_omp(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                        int width, int height, const Tev16s* rowKernel,
                                                        int rowKernelSize, const Tev16s* columnKernel,
                                                        int columnKernelSize, TevBorderType borderType,
                                                        Tev8u borderValue, Tev8u* buffer, int rowIndex, int columnIndex,
                                                        const Tev8u* wholeSrc, TevSize wholeSize, int phase);
TEV_WORKER TevStatus ownFilterConvolution_8u8s_C1R_omp(
    const Tev8u* src, int srcStep, Tev8s* dst, int dstStep, int width, int height, const Tev16s* rowKernel,
    int rowKernelSize, const Tev16s* columnKernel, int columnKernelSize, TevBorderType borderType, Tev8u borderValue,
    Tev8u* buffer, int rowIndex, int columnIndex, int divisor, const Tev8u* wholeSrc, TevSize wholeSize, int phase);
TEV_WORKER TevStatus ownFilterConvolution_8u_C1R_omp(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                                     int height, const Tev16s* rowKernel, int rowKernelSize,
                                                     const Tev16s* columnKernel, int columnKernelSize,
                                                     TevBorderType borderType, Tev8u borderValue, Tev8u* buffer,
                                                     int rowIndex, int columnIndex, const Tev8u* wholeSrc,
                                                     TevSize wholeSize, int phase);
TEV_WORKER TevStatus ownFilterConvolution_32f_C1R_omp(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                      int width, int height, const Tev32f* rowKernel, int rowKernelSize,
                                                      const Tev32f* columnKernel, int columnKernelSize,
                                                      TevBorderType borderType, Tev32f borderValue, Tev8u* buffer,
                                                      int rowIndex, int columnIndex, const Tev32f* wholeSrc,
                                                      TevSize wholeSize, int phase);

// ---- Gaussian filter ----

// One pass of a correlation with replicated edges, steps in bytes. The scratch holds the longer side and kernelSize - 1
// floats more. The column pass computes as many rows as the image is wide.
TEV_WORKER void ownRowConvolution(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                                  const Tev32f* taps, int kernelSize, Tev32f* scratch);
TEV_WORKER void ownColConvolution(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                                  const Tev32f* taps, int kernelSize, Tev32f* scratch);

// Row and column pipelines: one function for each member and each kernel length, X being any. Steps count elements.
// Row functions return tevStatusNullPtr at the first null destination row. The scratch of a row function holds what the
// size query grants one thread; a column function does not look at its own.
TEV_WORKER TevStatus ownFilterRowBorderPipeline_8u16s_C1R_3x3(const Tev8u* src, int srcStep, Tev16s** ppDst,
                                                              Tev8u* buffer, int width, int height,
                                                              const Tev16s* kernel, int anchor,
                                                              TevBorderType borderType, Tev8u borderValue, int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_8u16s_C1R_5x5(const Tev8u* src, int srcStep, Tev16s** ppDst,
                                                              Tev8u* buffer, int width, int height,
                                                              const Tev16s* kernel, int anchor,
                                                              TevBorderType borderType, Tev8u borderValue, int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_8u16s_C1R_X(const Tev8u* src, int srcStep, Tev16s** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev16s* kernel,
                                                            int kernelSize, int anchor, TevBorderType borderType,
                                                            Tev8u borderValue, int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_8u16s_C3R_3x3(const Tev8u* src, int srcStep, Tev16s** ppDst,
                                                              Tev8u* buffer, int width, int height,
                                                              const Tev16s* kernel, int anchor,
                                                              TevBorderType borderType, const Tev8u* borderValue,
                                                              int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_8u16s_C3R_5x5(const Tev8u* src, int srcStep, Tev16s** ppDst,
                                                              Tev8u* buffer, int width, int height,
                                                              const Tev16s* kernel, int anchor,
                                                              TevBorderType borderType, const Tev8u* borderValue,
                                                              int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_8u16s_C3R_X(const Tev8u* src, int srcStep, Tev16s** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev16s* kernel,
                                                            int kernelSize, int anchor, TevBorderType borderType,
                                                            const Tev8u* borderValue, int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_16s_C1R_3x3(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev16s* kernel,
                                                            int anchor, TevBorderType borderType, Tev16s borderValue,
                                                            int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_16s_C1R_5x5(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev16s* kernel,
                                                            int anchor, TevBorderType borderType, Tev16s borderValue,
                                                            int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_16s_C1R_X(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                          int width, int height, const Tev16s* kernel, int kernelSize,
                                                          int anchor, TevBorderType borderType, Tev16s borderValue,
                                                          int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_16s_C3R_3x3(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev16s* kernel,
                                                            int anchor, TevBorderType borderType,
                                                            const Tev16s* borderValue, int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_16s_C3R_5x5(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev16s* kernel,
                                                            int anchor, TevBorderType borderType,
                                                            const Tev16s* borderValue, int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_16s_C3R_X(const Tev16s* src, int srcStep, Tev16s** ppDst, Tev8u* buffer,
                                                          int width, int height, const Tev16s* kernel, int kernelSize,
                                                          int anchor, TevBorderType borderType,
                                                          const Tev16s* borderValue, int divisor);
TEV_WORKER TevStatus ownFilterRowBorderLowPipeline_16s_C1R_3x3(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                               Tev8u* buffer, int width, int height,
                                                               const Tev16s* kernel, int anchor,
                                                               TevBorderType borderType, Tev16s borderValue,
                                                               int divisor);
TEV_WORKER TevStatus ownFilterRowBorderLowPipeline_16s_C1R_5x5(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                               Tev8u* buffer, int width, int height,
                                                               const Tev16s* kernel, int anchor,
                                                               TevBorderType borderType, Tev16s borderValue,
                                                               int divisor);
TEV_WORKER TevStatus ownFilterRowBorderLowPipeline_16s_C1R_X(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                             Tev8u* buffer, int width, int height, const Tev16s* kernel,
                                                             int kernelSize, int anchor, TevBorderType borderType,
                                                             Tev16s borderValue, int divisor);
TEV_WORKER TevStatus ownFilterRowBorderLowPipeline_16s_C3R_3x3(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                               Tev8u* buffer, int width, int height,
                                                               const Tev16s* kernel, int anchor,
                                                               TevBorderType borderType, const Tev16s* borderValue,
                                                               int divisor);
TEV_WORKER TevStatus ownFilterRowBorderLowPipeline_16s_C3R_5x5(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                               Tev8u* buffer, int width, int height,
                                                               const Tev16s* kernel, int anchor,
                                                               TevBorderType borderType, const Tev16s* borderValue,
                                                               int divisor);
TEV_WORKER TevStatus ownFilterRowBorderLowPipeline_16s_C3R_X(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                             Tev8u* buffer, int width, int height, const Tev16s* kernel,
                                                             int kernelSize, int anchor, TevBorderType borderType,
                                                             const Tev16s* borderValue, int divisor);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_32f_C1R_3x3(const Tev32f* src, int srcStep, Tev32f** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev32f* kernel,
                                                            int anchor, TevBorderType borderType, Tev32f borderValue);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_32f_C1R_5x5(const Tev32f* src, int srcStep, Tev32f** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev32f* kernel,
                                                            int anchor, TevBorderType borderType, Tev32f borderValue);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_32f_C1R_X(const Tev32f* src, int srcStep, Tev32f** ppDst, Tev8u* buffer,
                                                          int width, int height, const Tev32f* kernel, int kernelSize,
                                                          int anchor, TevBorderType borderType, Tev32f borderValue);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_32f_C3R_3x3(const Tev32f* src, int srcStep, Tev32f** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev32f* kernel,
                                                            int anchor, TevBorderType borderType,
                                                            const Tev32f* borderValue);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_32f_C3R_5x5(const Tev32f* src, int srcStep, Tev32f** ppDst,
                                                            Tev8u* buffer, int width, int height, const Tev32f* kernel,
                                                            int anchor, TevBorderType borderType,
                                                            const Tev32f* borderValue);
TEV_WORKER TevStatus ownFilterRowBorderPipeline_32f_C3R_X(const Tev32f* src, int srcStep, Tev32f** ppDst, Tev8u* buffer,
                                                          int width, int height, const Tev32f* kernel, int kernelSize,
                                                          int anchor, TevBorderType borderType,
                                                          const Tev32f* borderValue);
TEV_WORKER TevStatus ownFilterColumnPipeline_16s_C1R_3x3(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width,
                                                         int height, const Tev16s* kernel, int divisor);
TEV_WORKER TevStatus ownFilterColumnPipeline_16s_C1R_5x5(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width,
                                                         int height, const Tev16s* kernel, int divisor);
TEV_WORKER TevStatus ownFilterColumnPipeline_16s_C1R_X(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width,
                                                       int height, const Tev16s* kernel, int kernelSize, int divisor,
                                                       Tev8u* buffer);
TEV_WORKER TevStatus ownFilterColumnLowPipeline_16s_C1R_3x3(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width,
                                                            int height, const Tev16s* kernel, int divisor);
TEV_WORKER TevStatus ownFilterColumnLowPipeline_16s_C1R_5x5(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width,
                                                            int height, const Tev16s* kernel, int divisor);
TEV_WORKER TevStatus ownFilterColumnLowPipeline_16s_C1R_X(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width,
                                                          int height, const Tev16s* kernel, int kernelSize, int divisor,
                                                          Tev8u* buffer);
TEV_WORKER TevStatus ownFilterColumnPipeline_16s8u_C1R_3x3(const Tev16s** ppSrc, Tev8u* dst, int dstStep, int width,
                                                           int height, const Tev16s* kernel, int divisor);
TEV_WORKER TevStatus ownFilterColumnPipeline_16s8u_C1R_5x5(const Tev16s** ppSrc, Tev8u* dst, int dstStep, int width,
                                                           int height, const Tev16s* kernel, int divisor);
TEV_WORKER TevStatus ownFilterColumnPipeline_16s8u_C1R_X(const Tev16s** ppSrc, Tev8u* dst, int dstStep, int width,
                                                         int height, const Tev16s* kernel, int kernelSize, int divisor,
                                                         Tev8u* buffer);
TEV_WORKER TevStatus ownFilterColumnPipeline_16s8s_C1R_3x3(const Tev16s** ppSrc, Tev8s* dst, int dstStep, int width,
                                                           int height, const Tev16s* kernel, int divisor);
TEV_WORKER TevStatus ownFilterColumnPipeline_16s8s_C1R_5x5(const Tev16s** ppSrc, Tev8s* dst, int dstStep, int width,
                                                           int height, const Tev16s* kernel, int divisor);
TEV_WORKER TevStatus ownFilterColumnPipeline_16s8s_C1R_X(const Tev16s** ppSrc, Tev8s* dst, int dstStep, int width,
                                                         int height, const Tev16s* kernel, int kernelSize, int divisor,
                                                         Tev8u* buffer);
TEV_WORKER TevStatus ownFilterColumnPipeline_32f_C1R_3x3(const Tev32f** ppSrc, Tev32f* dst, int dstStep, int width,
                                                         int height, const Tev32f* kernel);
TEV_WORKER TevStatus ownFilterColumnPipeline_32f_C1R_5x5(const Tev32f** ppSrc, Tev32f* dst, int dstStep, int width,
                                                         int height, const Tev32f* kernel);
TEV_WORKER TevStatus ownFilterColumnPipeline_32f_C1R_X(const Tev32f** ppSrc, Tev32f* dst, int dstStep, int width,
                                                       int height, const Tev32f* kernel, int kernelSize, Tev8u* buffer);
