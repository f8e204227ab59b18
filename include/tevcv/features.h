/* Features: Canny edges, corner measures, Hough lines, peaks, line sampling. */
#ifndef TEVCV_FEATURES_H
#define TEVCV_FEATURES_H

#include "tevcv/types.h"

/**
 * @defgroup features Features: Canny edges, corner measures, Hough lines, peaks, line sampling.
 * @{
 */

/**
 * @name Peaks
 * Finds pixels beyond a threshold that are the extreme of their neighbourhood: the maximum where the pixel is above 0,
 * else the minimum. With `norm` 0 the neighbourhood is 3 x 3, with `norm` 1 the cross of four neighbours. Equality
 * counts, so that each pixel of a plateau is a peak; floats count as equal within 1.1754944e-38.
 *
 * `src` is `roiSize` pixels of one channel; its step holds whole elements, a multiple of four of them (bytes beyond
 * whole elements are ignored). The outermost `border` rows and columns, at least 1, are not searched. |pixel| must be
 * above `threshold`. `peaks` receives at most `maxPeakCount` positions in row-major order, `peakCount` their number;
 * the search ends without a warning where `peaks` is full. `buffer` holds as many bytes as the size query gives for the
 * width, at any address.
 * @return The search: #tevStatusNullPtr (`src`, `peaks`, `peakCount`, `buffer`), #tevStatusBadSize (a size,
 *         `maxPeakCount` or `border` below 1, a border above half the width or height), #tevStatusBadStep (fewer whole
 *         elements than the width), #tevStatusStepNotAligned (no multiple of four elements), #tevStatusBadArg (`norm`).
 *         The query: #tevStatusNullPtr, #tevStatusBadSize.
 * @{
 */
TEV_API TevStatus teviFindPeaks3x3GetBufferSize_32f_C1R(int width, int* pSize);
TEV_API TevStatus teviFindPeaks3x3GetBufferSize_32s_C1R(int width, int* pSize);
TEV_API TevStatus teviFindPeaks3x3_32f_C1R(const Tev32f* src, int srcStep, TevSize roiSize, Tev32f threshold,
                                           TevPoint* peaks, int maxPeakCount, int* peakCount, int norm, int border,
                                           Tev8u* buffer);
TEV_API TevStatus teviFindPeaks3x3_32s_C1R(const Tev32s* src, int srcStep, TevSize roiSize, Tev32s threshold,
                                           TevPoint* peaks, int maxPeakCount, int* peakCount, int norm, int border,
                                           Tev8u* buffer);
/** @} */

/**
 * @name Fast arctangent
 * The angle of (srcX[i], srcY[i]) in degrees, about 0 to 360, within a fifth of a degree. With t the smaller magnitude
 * over the larger, its sign and the offset by eighths of the circle,
 *
 *     dst[i] = t (-15.8131895 |t| + 61.0941963) + offset
 *
 * The offsets make the error alternate: 0 degrees comes out as -0.1405, and so do two zeros. Four elements share one
 * division in extended precision; the result is rounded once. `dst` may be a source.
 * @return #tevStatusNullPtr, #tevStatusBadSize (`len` below 1).
 */
TEV_API TevStatus tevibFastArctan_32f(const Tev32f* srcY, const Tev32f* srcX, Tev32f* dst, int len);

/**
 * @name Line sampling
 * Writes the pixels on the line from `pt1` to `pt2`, both included, to `dst`: max(|dx|, |dy|) + 1 pixels, one a step
 * along the longer axis (J. E. Bresenham, "Algorithm for computer control of a digital plotter", 1965).
 *
 * `src` is `roiSize` pixels, the ends lie inside.
 * @return #tevStatusNullPtr, #tevStatusBadSize, #tevStatusBadStep (a step shorter than the row),
 *         #tevStatusStepNotAligned (`16u`, `32f`), #tevStatusBadPoint (an end outside the region), in that order.
 * @{
 */
TEV_API TevStatus teviSampleLine_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* dst, TevPoint pt1,
                                        TevPoint pt2);
TEV_API TevStatus teviSampleLine_8u_C3R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* dst, TevPoint pt1,
                                        TevPoint pt2);
TEV_API TevStatus teviSampleLine_16u_C1R(const Tev16u* src, int srcStep, TevSize roiSize, Tev16u* dst, TevPoint pt1,
                                         TevPoint pt2);
TEV_API TevStatus teviSampleLine_16u_C3R(const Tev16u* src, int srcStep, TevSize roiSize, Tev16u* dst, TevPoint pt1,
                                         TevPoint pt2);
TEV_API TevStatus teviSampleLine_32f_C1R(const Tev32f* src, int srcStep, TevSize roiSize, Tev32f* dst, TevPoint pt1,
                                         TevPoint pt2);
TEV_API TevStatus teviSampleLine_32f_C3R(const Tev32f* src, int srcStep, TevSize roiSize, Tev32f* dst, TevPoint pt1,
                                         TevPoint pt2);
/** @} */

/** Derivative of the corner measures. */
typedef Tev32s TevCornerKernel;
enum { tevCornerKernelSobel = 0, tevCornerKernelScharr = 1 };

/**
 * @name Corner measures
 * The eigenvalues of the gradient covariance matrix of each pixel. With dx and dy the vertical and horizontal Sobel or
 * Scharr derivatives, the edges replicated, and the products averaged over a window by
 * teviFilterLowpassBorder_32f_C1R(),
 *
 *     | a b |   | mean dx^2   mean dx dy |
 *     | b c | = | mean dx dy  mean dy^2  | * s,   s = 1 / (255 * 2^(2 apertureSize - 2)), times 0.6125 for Scharr
 *
 * teviMinEigenVal_ stores the smaller eigenvalue ((a + c) - sqrt((a - c)^2 + 4 b^2)) / 2, one #Tev32f a pixel (J. Shi
 * and C. Tomasi, "Good features to track", 1994). teviEigenValsVecs_ stores six #Tev32f a pixel: the larger and the
 * smaller eigenvalue, x and y of the larger one's vector, x and y of the smaller one's (C. Harris and M. Stephens, "A
 * combined corner and edge detector", 1988). It stores six zeros where min(a, c) or the determinant lies below
 * t = 0.01 max(a, c), and the axes as vectors where |b| lies below t. Everything after the averages runs in extended
 * precision and is rounded where it is stored.
 *
 * `kernelType` is #tevCornerKernelSobel or #tevCornerKernelScharr, `apertureSize` the derivative's mask size (3 or 5;
 * Scharr has 3 alone), `avgWindow` the averaging window (3 or 5). `src` is `roiSize` pixels of one channel, the output
 * as many pixels of one or six floats. `buffer` holds as many bytes as the size query gives under the same thread
 * setting, at any address.
 * @return The measures: #tevStatusNullPtr (`src`, output, `buffer`), #tevStatusBadSize, #tevStatusBadStep (a step
 *         shorter than the row; for teviEigenValsVecs_32f_C1R() the output's step is held against four bytes a pixel,
 *         although 24 are written), #tevStatusStepNotAligned, #tevStatusBadArg (`kernelType`), #tevStatusBadSize
 *         (`apertureSize`, then `avgWindow`), in that order. The queries: #tevStatusNullPtr, #tevStatusBadSize.
 * @{
 */
TEV_API TevStatus teviMinEigenValGetBufferSize_8u32f_C1R(TevSize roiSize, int apertureSize, int avgWindow, int* pSize);
TEV_API TevStatus teviMinEigenValGetBufferSize_32f_C1R(TevSize roiSize, int apertureSize, int avgWindow, int* pSize);
TEV_API TevStatus teviEigenValsVecsGetBufferSize_8u32f_C1R(TevSize roiSize, int apertureSize, int avgWindow,
                                                           int* pSize);
TEV_API TevStatus teviEigenValsVecsGetBufferSize_32f_C1R(TevSize roiSize, int apertureSize, int avgWindow, int* pSize);
TEV_API TevStatus teviMinEigenVal_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* minEigen, int minEigenStep,
                                            TevSize roiSize, TevCornerKernel kernelType, int apertureSize,
                                            int avgWindow, Tev8u* buffer);
TEV_API TevStatus teviMinEigenVal_32f_C1R(const Tev32f* src, int srcStep, Tev32f* minEigen, int minEigenStep,
                                          TevSize roiSize, TevCornerKernel kernelType, int apertureSize, int avgWindow,
                                          Tev8u* buffer);
TEV_API TevStatus teviEigenValsVecs_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* eigen, int eigenStep,
                                              TevSize roiSize, TevCornerKernel kernelType, int apertureSize,
                                              int avgWindow, Tev8u* buffer);
TEV_API TevStatus teviEigenValsVecs_32f_C1R(const Tev32f* src, int srcStep, Tev32f* eigen, int eigenStep,
                                            TevSize roiSize, TevCornerKernel kernelType, int apertureSize,
                                            int avgWindow, Tev8u* buffer);
/** @} */

/** @} */

#endif
