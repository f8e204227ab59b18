/* Features: Canny edges, corner measures, Hough lines, peaks, line sampling. */
#ifndef TEVCV_FEATURES_H
#define TEVCV_FEATURES_H

#include "tevcv/types.h"

/**
 * @defgroup features Features
 * Canny edges, corner measures, Hough lines, peaks, line sampling.
 * @image html features.png
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
 * \f[ dst_i = t \, (-15.8131895 \, |t| + 61.0941963) + offset. \f]
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
 * \f[ \begin{pmatrix} a & b \\ b & c \end{pmatrix} = s
 *     \begin{pmatrix} \overline{dx^2} & \overline{dx\,dy} \\ \overline{dx\,dy} & \overline{dy^2} \end{pmatrix},
 *     \qquad s = \frac{1}{255 \cdot 2^{2 \, apertureSize - 2}}, \text{ times 0.6125 for Scharr.} \f]
 *
 * teviMinEigenVal_ stores the smaller eigenvalue
 * \f[ \lambda = \frac{(a + c) - \sqrt{(a - c)^2 + 4 b^2}}{2}, \f]
 * one #Tev32f a pixel (J. Shi and C. Tomasi, "Good features to track", 1994). teviEigenValsVecs_ stores six #Tev32f a
 * pixel: the larger and the smaller eigenvalue, x and y of the larger one's vector, x and y of the smaller one's (C.
 * Harris and M. Stephens, "A combined corner and edge detector", 1988). It stores six zeros where min(a, c) or the
 * determinant lies below t = 0.01 max(a, c), and the axes as vectors where |b| lies below t. Everything after the
 * averages runs in extended precision and is rounded where it is stored.
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

/**
 * @name Canny edges
 * Marks edges with 255 and all else with 0, from the horizontal and vertical derivatives `dx` and `dy` (J. Canny, "A
 * computational approach to edge detection", 1986). With the magnitude m = |dx| + |dy|, 0 where it does not pass
 * `lowThreshold`, a pixel is a candidate where m is a maximum along the gradient, taken to the nearest of four
 * directions: above the neighbour on the top or left side, and not below the one on the other (in the diagonal
 * directions above both). An edge is a set of candidates that touch by a side or corner, one of them at least with
 * m > `highThreshold`.
 *
 * All images are `roiSize` pixels of one channel, their values in one unit with the thresholds; 0 <= `lowThreshold` <=
 * `highThreshold`, and for 16-bit derivatives `lowThreshold` loses its fraction. The bytes of `dst` behind a row's
 * pixels are cleared up to its step, behind the last row too. `buffer` holds as many bytes as teviCannyGetSize() gives,
 * at any address.
 * @return The search: #tevStatusNullPtr, #tevStatusBadSize, #tevStatusBadStep (a step shorter than the row),
 *         #tevStatusStepNotAligned (`dxStep`, `dyStep`), #tevStatusBadArg (thresholds out of range or order, or NaN),
 * in that order. The query: #tevStatusNullPtr, #tevStatusBadSize.
 * @{
 */
TEV_API TevStatus teviCannyGetSize(TevSize roiSize, int* bufferSize);
TEV_API TevStatus teviCanny_16s8u_C1R(const Tev16s* dx, int dxStep, const Tev16s* dy, int dyStep, Tev8u* dst,
                                      int dstStep, TevSize roiSize, Tev32f lowThreshold, Tev32f highThreshold,
                                      Tev8u* buffer);
TEV_API TevStatus teviCanny_32f8u_C1R(const Tev32f* dx, int dxStep, const Tev32f* dy, int dyStep, Tev8u* dst,
                                      int dstStep, TevSize roiSize, Tev32f lowThreshold, Tev32f highThreshold,
                                      Tev8u* buffer);
/** @} */

/** The line of all points with x cos(theta) + y sin(theta) = rho, from the top-left pixel of the region. */
typedef struct TevPolarLine {
  Tev32f rho;   /**< distance from the origin in pixels, negative on its far side */
  Tev32f theta; /**< angle in radians, from 0 to pi */
} TevPolarLine;

/**
 * @name Hough lines
 * Finds straight lines in a binary image (R. O. Duda and P. E. Hart, "Use of the Hough transformation to detect lines
 * and curves in pictures", 1972). Each non-zero pixel (x, y) votes, for every angle theta = i * `thetaStep` up to about
 * pi, for the distance \f$\rho = x \cos\theta + y \sin\theta\f$, rounded to a multiple of `rhoStep` with halves away
 * from zero. A line has more than `threshold` votes, more than its neighbours of lower rho and lower theta, and no
 * fewer than those of higher ones. A line near theta 0 may be found at pi too.
 *
 * `src` is `roiSize` pixels of one channel. `rhoStep` is in pixels, at most width + height; `thetaStep` in radians, at
 * most pi; `threshold` is at least 1. `lines` receives the at most `maxLineCount` lines with most votes, by descending
 * votes and among equal ones in the order of theta, then rho; `lineCount` their number. `buffer` holds as many bytes as
 * the query gives for the same arguments, at any address.
 * @return The search: #tevStatusNullPtr, #tevStatusBadStep (`srcStep` below 1; it is not held against the width),
 *         #tevStatusBadSize (a size or `maxLineCount` below 1), #tevStatusBadArg, in that order;
 *         #tevStatusMoreLinesWarning where `lines` holds only the first of the lines found.
 *         The query: #tevStatusNullPtr, #tevStatusBadSize, #tevStatusBadArg (a step not above 0);
 *         #tevStatusSizeWarning where the size passes 2147483647, with the size stored modulo 2^32.
 * @{
 */
TEV_API TevStatus teviHoughLineGetSize_8u_C1R(TevSize roiSize, Tev32f rhoStep, Tev32f thetaStep, int maxLineCount,
                                              int* bufferSize);
TEV_API TevStatus teviHoughLine_8u32f_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev32f rhoStep,
                                          Tev32f thetaStep, int threshold, TevPolarLine* lines, int maxLineCount,
                                          int* lineCount, Tev8u* buffer);
/** @} */

/** @} */

#endif
