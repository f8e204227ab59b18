/* Linear filters: row and column pipelines, fixed derivative and smoothing kernels, colour gradient. */
#ifndef TEVCV_FILTERING_H
#define TEVCV_FILTERING_H

#include "tevcv/types.h"

/**
 * @defgroup filtering Linear filters
 * Row and column pipelines, fixed derivative and smoothing kernels, colour gradient.
 * @image html filtering.png
 * @{
 */

/**
 * @name Fixed-kernel border filters
 * Derivatives (Scharr, Sobel), the Laplacian and the lowpass average with fixed 3x3 or 5x5 masks, the border handled on
 * all four sides. Each mask is a product of a row kernel along x and a column kernel along y, taken as a correlation
 * with the centre tap as anchor:
 *
 * \f[ dst(x, y) = \sum_j column_j \sum_i row_i \; src(x + i - \lfloor k/2 \rfloor, y + j - \lfloor k/2 \rfloor) \f]
 *
 * with `k` 3 or 5:
 *
 * | Filter           | 3x3: row, column              | 5x5: row, column                       |
 * |------------------|-------------------------------|----------------------------------------|
 * | ScharrHoriz      | 3 10 3,   -1 0 1              |                                        |
 * | ScharrVert       | -1 0 1,   3 10 3              |                                        |
 * | SobelHoriz       | 1 2 1,    -1 0 1              | 1 4 6 4 1,   -1 -2 0 2 1               |
 * | SobelVert        | 1 0 -1,   1 2 1               | 1 2 0 -2 -1, 1 4 6 4 1                 |
 * | SobelNegVert     | 1 0 -1,   -1 -2 -1            | 1 2 0 -2 -1, -1 -4 -6 -4 -1            |
 * | SobelHorizSecond | 1 2 1,    1 -2 1              | 1 4 6 4 1,   1 0 -2 0 1                |
 * | SobelVertSecond  | 1 -2 1,   1 2 1               | 1 0 -2 0 1,  1 4 6 4 1                 |
 * | SobelCross       | 1 0 -1,   -1 0 1              | 1 2 0 -2 -1, -1 -2 0 2 1               |
 * | Lowpass          | average of 9 pixels           | average of 25 pixels                   |
 * | Laplacian        | 2 0 2 / 0 -8 0 / 2 0 2        | SobelHorizSecond + SobelVertSecond     |
 *
 * Note the signs: SobelVert is the left side minus the right side, SobelNegVert the right minus the left.
 *
 * `src` and `dst` are images of `roiSize` pixels of one channel, their steps in bytes, at any address. `mask` is
 * #tevMskSize3x3 or #tevMskSize5x5; the Scharr filters have one mask and take none. `borderType` is one of the five of
 * #TevBorderType; `borderValue` is the pixel outside of the image for #tevBorderConst and is not read otherwise. Rows
 * outside of the image hold the constant as the row kernel gives it for an endless row of it. `buffer` is the
 * caller's scratch, as many bytes as the filter's size query gives for the same region, mask and thread setting, at any
 * address; it holds nothing of value between calls.
 *
 * - `8u16s`: exact.
 * - `8u8s`: the 16-bit result times 1 / `divisor` in extended precision, clamped to -128..127, truncated toward zero.
 *   `divisor` is any number but 0. Where the rounded reciprocal brings an exact quotient below a whole number, that
 *   result is nearer to zero by one. The 5x5 Laplacian takes the reciprocal rounded to #Tev32f.
 * - `8u`: with t the sum of the pixels, the 3x3 average is (7280 t + 36400) / 65536 and the 5x5 one 2621 t / 65536,
 *   both rounded down, so that the 5x5 average of a white image is 254.
 * - `32f`: both sums in extended precision, each rounded once, the row sums to the #Tev32f that the column sum takes
 * up. The averages multiply their column sum with the #Tev32f constants 0.11111111 and 0.04.
 *
 * Large images are divided among the threads; the result is the same at any thread count.
 *
 * A filter returns, in this order: #tevStatusNullPtr (`src`, `dst` or `buffer`), #tevStatusBadSize (width or height
 * below 1), #tevStatusBadStep (a step shorter than its row), #tevStatusStepNotAligned (a step of a `16s` or `32f` image
 * that is no whole number of elements), #tevStatusBadArg (`borderType` outside 0..4, or `divisor` 0),
 * #tevStatusBadMaskSize. A size query stores the size in bytes to `pSize` and returns #tevStatusNullPtr (`pSize`),
 * #tevStatusBadSize, #tevStatusBadMaskSize. Nothing is written after an error, and nothing else can fail.
 *
 * Literature: I. Sobel, G. Feldman, "A 3x3 isotropic gradient operator for image processing", 1968; H. Scharr, "Optimal
 * operators in digital image processing", 2000.
 * @{
 */
TEV_API TevStatus teviFilterScharrHorizBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep,
                                                       TevSize roiSize, TevBorderType borderType, Tev8u borderValue,
                                                       int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterScharrHorizBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                        TevSize roiSize, TevBorderType borderType, Tev8u borderValue,
                                                        Tev8u* buffer);
TEV_API TevStatus teviFilterScharrHorizBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                      TevSize roiSize, TevBorderType borderType, Tev32f borderValue,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterScharrVertBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep,
                                                      TevSize roiSize, TevBorderType borderType, Tev8u borderValue,
                                                      int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterScharrVertBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                       TevSize roiSize, TevBorderType borderType, Tev8u borderValue,
                                                       Tev8u* buffer);
TEV_API TevStatus teviFilterScharrVertBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                     TevSize roiSize, TevBorderType borderType, Tev32f borderValue,
                                                     Tev8u* buffer);
TEV_API TevStatus teviFilterSobelHorizBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep,
                                                      TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                      Tev8u borderValue, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelHorizBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                       TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                       Tev8u borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelHorizBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                     TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                     Tev32f borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelVertBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep,
                                                     TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                     Tev8u borderValue, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelVertBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                      TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                      Tev8u borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelVertBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                    TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                    Tev32f borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelNegVertBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep,
                                                        TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                        Tev8u borderValue, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelNegVertBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                         TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                         Tev8u borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelNegVertBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                       Tev32f borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelHorizSecondBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep,
                                                            TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                            Tev8u borderValue, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelHorizSecondBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                             TevSize roiSize, TevMaskSize mask,
                                                             TevBorderType borderType, Tev8u borderValue,
                                                             Tev8u* buffer);
TEV_API TevStatus teviFilterSobelHorizSecondBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                           TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                           Tev32f borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelVertSecondBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep,
                                                           TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                           Tev8u borderValue, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelVertSecondBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                            TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                            Tev8u borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelVertSecondBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                          TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                          Tev32f borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelCrossBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep,
                                                      TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                      Tev8u borderValue, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelCrossBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                       TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                       Tev8u borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterSobelCrossBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                     TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                     Tev32f borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterLaplacianBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep,
                                                     TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                     Tev8u borderValue, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterLaplacianBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                      TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                      Tev8u borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterLaplacianBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                    TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                    Tev32f borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterLowpassBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                 TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                 Tev8u borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterLowpassBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                  TevSize roiSize, TevMaskSize mask, TevBorderType borderType,
                                                  Tev32f borderValue, Tev8u* buffer);

TEV_API TevStatus teviFilterScharrHorizGetBufferSize_8u8s_C1R(TevSize roiSize, int* pSize);
TEV_API TevStatus teviFilterScharrHorizGetBufferSize_8u16s_C1R(TevSize roiSize, int* pSize);
TEV_API TevStatus teviFilterScharrHorizGetBufferSize_32f_C1R(TevSize roiSize, int* pSize);
TEV_API TevStatus teviFilterScharrVertGetBufferSize_8u8s_C1R(TevSize roiSize, int* pSize);
TEV_API TevStatus teviFilterScharrVertGetBufferSize_8u16s_C1R(TevSize roiSize, int* pSize);
TEV_API TevStatus teviFilterScharrVertGetBufferSize_32f_C1R(TevSize roiSize, int* pSize);
TEV_API TevStatus teviFilterSobelHorizGetBufferSize_8u8s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelHorizGetBufferSize_8u16s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelHorizGetBufferSize_32f_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelVertGetBufferSize_8u8s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelVertGetBufferSize_8u16s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelVertGetBufferSize_32f_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelNegVertGetBufferSize_8u8s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelNegVertGetBufferSize_8u16s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelNegVertGetBufferSize_32f_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelHorizSecondGetBufferSize_8u8s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelHorizSecondGetBufferSize_8u16s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelHorizSecondGetBufferSize_32f_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelVertSecondGetBufferSize_8u8s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelVertSecondGetBufferSize_8u16s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelVertSecondGetBufferSize_32f_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelCrossGetBufferSize_8u8s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelCrossGetBufferSize_8u16s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterSobelCrossGetBufferSize_32f_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterLaplacianGetBufferSize_8u8s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterLaplacianGetBufferSize_8u16s_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterLaplacianGetBufferSize_32f_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterLowpassGetBufferSize_8u_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
TEV_API TevStatus teviFilterLowpassGetBufferSize_32f_C1R(TevSize roiSize, TevMaskSize mask, int* pSize);
/** @} */

/**
 * @name Gaussian filter
 * Smooths a float image with a Gaussian of any odd length, rows first, columns second, the edges replicated whatever
 * `borderType` and `borderValue` say:
 *
 * \f[ t_i = \frac{1}{sum} \exp\left(-\frac{(i - \lfloor k/2 \rfloor)^2}{2 \sigma^2}\right), \qquad i = 0..k - 1, \f]
 *
 * with k = `kernelSize`. The sum counts i = 0..k, one tap more than there are, so that the taps add up to a little less
 * than 1. The column pass computes as many rows as the image is wide: in an image higher than wide, rows from `width`
 * on hold the row-filtered row `k / 2` above them. Both are kept for callers that compare with older results. Taps and
 * sums run in extended precision; taps, row results and column results are rounded once each.
 *
 * `src` and `dst` are images of `roiSize` pixels; `dst` may be `src`. Steps count bytes and are advanced by whole
 * elements. `sigma` is in pixels and not examined: 0 gives NaN. `buffer` holds as many bytes as the size query gives,
 * at any address.
 * @return The filter: #tevStatusNullPtr (`src`, `dst`, `buffer`), #tevStatusBadSize, #tevStatusBadStep (a step of fewer
 *         bytes than the row has elements), #tevStatusBadArg (`kernelSize` below 3 or even). The query:
 *         #tevStatusNullPtr (`pSize`), #tevStatusBadSize, #tevStatusBadArg.
 * @{
 */
TEV_API TevStatus teviFilterGaussGetBufferSize_32f_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterGaussBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                TevSize roiSize, int kernelSize, Tev32f sigma, TevBorderType borderType,
                                                Tev32f borderValue, Tev8u* buffer);
/** @} */

/**
 * @name Sobel kernels
 * Derivative kernels of any odd length for the row and column stages: `kernelSize` taps, the coefficients of
 *
 * \f[ (1 + z)^{n - 1 - d} \; (z - 1)^d \f]
 *
 * by rising powers of z, n being `kernelSize` and d `derivativeOrder`: for instance 1 2 1, -1 0 1 and 1 -2 1 for length
 * 3 and orders 0, 1, 2 (I. Sobel, G. Feldman, "A 3x3 isotropic gradient operator for image processing", 1968). A
 * negative `sign` negates every tap. 16-bit taps wrap.
 * @return #tevStatusNullPtr, #tevStatusBadSize (`kernelSize` below 1 or even, `derivativeOrder` below 0 or not below
 *         `kernelSize`).
 * @{
 */
TEV_API TevStatus teviGenSobelKernel_16s(Tev16s* kernel, int kernelSize, int derivativeOrder, int sign);
TEV_API TevStatus teviGenSobelKernel_32f(Tev32f* kernel, int kernelSize, int derivativeOrder, int sign);
/** @} */

/**
 * @name Colour gradient to grey
 * Reduces a three-channel gradient image to one channel by a norm of a pixel's channels a, b, c:
 *
 * | `norm`      | `8u`                              | `16u`                             | `32f`                   |
 * |-------------|-----------------------------------|-----------------------------------|-------------------------|
 * | #tevNormInf | max(a, b, c)                      | max(a, b, c)                      | the largest magnitude   |
 * | #tevNormL1  | ((a + b + c) 1365 + 2048) >> 12   | ((a + b + c) 5461 + 8192) >> 14   | the sum of magnitudes   |
 * | #tevNormL2  | round sqrt((a^2 + b^2 + c^2) / 3) | round sqrt((a^2 + b^2 + c^2) / 3) | sqrt(a^2 + b^2 + c^2)   |
 *
 * The integer forms average over the channels, the float form does not. In the `16u` form b^2 and c^2 are taken modulo
 * 2^32 as signed words: channels from 46341 on lower the result, and a negative sum gives 0. Roots round halves up. The
 * float form runs in extended precision and is rounded once.
 *
 * `src` is `roiSize` pixels of three channels, `dst` of one.
 * @return #tevStatusNullPtr, #tevStatusBadSize, #tevStatusBadStep (a step shorter than the row),
 *         #tevStatusStepNotAligned (`16u`, `32f`), #tevStatusBadArg (`norm`), in that order.
 * @{
 */
TEV_API TevStatus teviGradientColorToGray_8u_C3C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                   TevSize roiSize, TevNorm norm);
TEV_API TevStatus teviGradientColorToGray_16u_C3C1R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep,
                                                    TevSize roiSize, TevNorm norm);
TEV_API TevStatus teviGradientColorToGray_32f_C3C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                    TevSize roiSize, TevNorm norm);
/** @} */

/**
 * @name Row and column pipelines
 * A separable filter in two stages that meet in rows owned by the caller. The row stage filters each row of `src` and
 * writes it through an array of row pointers; the column stage reads an array of row pointers and writes an image. With
 * `k` for `kernelSize` and `e` for the row extended on the left and right by `borderType`:
 *
 * \f[ ppDst[y][x] = scaled\Big(\sum_j kernel[j] \; e(x - anchor + j)\Big), \qquad
 *     dst(x, y) = scaled\Big(\sum_j kernel[j] \; ppSrc[y + j][x]\Big) \f]
 *
 * Taps are used in the order in which they stand (correlation). Channels are filtered independently.
 *
 * `ppDst` holds `roiSize.height` pointers and `ppSrc` `roiSize.height + kernelSize - 1`, each to a row of
 * `roiSize.width` pixels. What the extra pointers of the column stage point at is the caller's choice, repeated rows
 * included: that is its vertical border, and a circular store of few rows is enough for an image of any height. The
 * border rules are infinite: a row narrower than the kernel goes on bouncing or repeating. `borderValue` is the pixel
 * outside for #tevBorderConst, in three-channel members a pointer to three elements that may be null for other types.
 * `anchor` is 0 to `kernelSize - 1`.
 *
 * Integer results are `sum / divisor`, truncated toward zero after clamping to the destination's range; `divisor` is
 * any number but 0. How the division is done is part of each member's result:
 *
 * | Member                             | Sum            | Times                                                   |
 * |------------------------------------|----------------|---------------------------------------------------------|
 * | row 8u16s C1                       | 32 bits        | 1 / divisor rounded to Tev32f                           |
 * | row 8u16s C3                       | 32 bits        | 1 / divisor in extended precision                       |
 * | row 16s C1, 3 or 5 taps; C3 5 taps | exact          | 1 / divisor rounded to Tev32f                           |
 * | row 16s C1, other                  | extended       | taps kernel[j] * (1 / divisor), each rounded to Tev32f  |
 * | row 16s C3, other                  | exact          | 1 / divisor in extended precision                       |
 * | row Low_16s                        | 32 bits, wraps | trunc(16384 / divisor) * 2^-14; C1 5 taps: as a Tev32f  |
 * | column 16s, 16s8u, 16s8s           | exact          | 1 / divisor in extended precision                       |
 * | column Low_16s                     | 32 bits, wraps | 1 / divisor in extended precision                       |
 *
 * The Low members do not clamp: they store the low 16 bits of the scaled value, and the 14-bit fraction understates
 * results (a divisor above 16384 gives zeros). The 32f members sum in extended precision, in tap order from zero, and
 * round once.
 *
 * `buffer` is scratch of the size, in bytes, that the matching `GetBufferSize` stores in `*pSize`, at any address; its
 * contents mean nothing between calls. The size depends on the region's height, the kernel's length and the thread
 * setting, which must be the same at the query and at the call. Large regions are divided among threads by whole rows;
 * results do not depend on that.
 *
 * @return Row stages, in this order: #tevStatusNullPtr (`src`, `ppDst`, `kernel`, `buffer`), #tevStatusBadSize (width,
 *         height or `kernelSize` below 1), #tevStatusBadAnchor, #tevStatusBadStep (`srcStep` shorter than the row),
 *         #tevStatusStepNotAligned (16s, 32f), for three channels #tevStatusNullPtr (null `borderValue` with
 *         #tevBorderConst), #tevStatusBadArg (`borderType` outside 0..4), #tevStatusBadArg (`divisor` 0). A null entry
 *         of `ppDst` gives #tevStatusNullPtr when its row is reached: the rows before it are written, and with several
 *         threads those of other threads as well.
 *         Column stages: #tevStatusNullPtr (`ppSrc`, `dst`, `kernel`), #tevStatusBadSize, #tevStatusBadStep,
 *         #tevStatusStepNotAligned (16s, 32f), #tevStatusNullPtr (`buffer`), #tevStatusBadArg (`divisor` 0),
 *         #tevStatusNullPtr (any entry of `ppSrc`; nothing is written).
 *         Size queries: #tevStatusNullPtr (`pSize`), #tevStatusBadSize (width, height or `kernelSize` below 1).
 * @see R. C. Gonzalez, R. E. Woods, "Digital Image Processing", 2nd edition, 2002 (separable convolution).
 * @{
 */
TEV_API TevStatus teviFilterRowBorderPipeline_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                                        const Tev16s* kernel, int kernelSize, int anchor,
                                                        TevBorderType borderType, Tev8u borderValue, int divisor,
                                                        Tev8u* buffer);
TEV_API TevStatus teviFilterRowBorderPipeline_8u16s_C3R(const Tev8u* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                                        const Tev16s* kernel, int kernelSize, int anchor,
                                                        TevBorderType borderType, const Tev8u* borderValue, int divisor,
                                                        Tev8u* buffer);
TEV_API TevStatus teviFilterRowBorderPipeline_16s_C1R(const Tev16s* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                                      const Tev16s* kernel, int kernelSize, int anchor,
                                                      TevBorderType borderType, Tev16s borderValue, int divisor,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterRowBorderPipeline_16s_C3R(const Tev16s* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                                      const Tev16s* kernel, int kernelSize, int anchor,
                                                      TevBorderType borderType, const Tev16s* borderValue, int divisor,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterRowBorderPipeline_Low_16s_C1R(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                          TevSize roiSize, const Tev16s* kernel, int kernelSize,
                                                          int anchor, TevBorderType borderType, Tev16s borderValue,
                                                          int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterRowBorderPipeline_Low_16s_C3R(const Tev16s* src, int srcStep, Tev16s** ppDst,
                                                          TevSize roiSize, const Tev16s* kernel, int kernelSize,
                                                          int anchor, TevBorderType borderType,
                                                          const Tev16s* borderValue, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterRowBorderPipeline_32f_C1R(const Tev32f* src, int srcStep, Tev32f** ppDst, TevSize roiSize,
                                                      const Tev32f* kernel, int kernelSize, int anchor,
                                                      TevBorderType borderType, Tev32f borderValue, Tev8u* buffer);
TEV_API TevStatus teviFilterRowBorderPipeline_32f_C3R(const Tev32f* src, int srcStep, Tev32f** ppDst, TevSize roiSize,
                                                      const Tev32f* kernel, int kernelSize, int anchor,
                                                      TevBorderType borderType, const Tev32f* borderValue,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_16s_C1R(const Tev16s** ppSrc, Tev16s* dst, int dstStep, TevSize roiSize,
                                                   const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_16s_C3R(const Tev16s** ppSrc, Tev16s* dst, int dstStep, TevSize roiSize,
                                                   const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_Low_16s_C1R(const Tev16s** ppSrc, Tev16s* dst, int dstStep, TevSize roiSize,
                                                       const Tev16s* kernel, int kernelSize, int divisor,
                                                       Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_Low_16s_C3R(const Tev16s** ppSrc, Tev16s* dst, int dstStep, TevSize roiSize,
                                                       const Tev16s* kernel, int kernelSize, int divisor,
                                                       Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_16s8u_C1R(const Tev16s** ppSrc, Tev8u* dst, int dstStep, TevSize roiSize,
                                                     const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_16s8u_C3R(const Tev16s** ppSrc, Tev8u* dst, int dstStep, TevSize roiSize,
                                                     const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_16s8s_C1R(const Tev16s** ppSrc, Tev8s* dst, int dstStep, TevSize roiSize,
                                                     const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_16s8s_C3R(const Tev16s** ppSrc, Tev8s* dst, int dstStep, TevSize roiSize,
                                                     const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_32f_C1R(const Tev32f** ppSrc, Tev32f* dst, int dstStep, TevSize roiSize,
                                                   const Tev32f* kernel, int kernelSize, Tev8u* buffer);
TEV_API TevStatus teviFilterColumnPipeline_32f_C3R(const Tev32f** ppSrc, Tev32f* dst, int dstStep, TevSize roiSize,
                                                   const Tev32f* kernel, int kernelSize, Tev8u* buffer);
TEV_API TevStatus teviFilterRowBorderPipelineGetBufferSize_8u16s_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterRowBorderPipelineGetBufferSize_8u16s_C3R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterRowBorderPipelineGetBufferSize_16s_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterRowBorderPipelineGetBufferSize_16s_C3R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterRowBorderPipelineGetBufferSize_32f_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterRowBorderPipelineGetBufferSize_32f_C3R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_16s_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_16s_C3R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_Low_16s_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_Low_16s_C3R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_16s8u_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_16s8u_C3R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_16s8s_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_16s8s_C3R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_32f_C1R(TevSize roiSize, int kernelSize, int* pSize);
TEV_API TevStatus teviFilterColumnPipelineGetBufferSize_32f_C3R(TevSize roiSize, int kernelSize, int* pSize);
/** @} */

/** @} */

#endif
