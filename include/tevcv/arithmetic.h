/* Pixel arithmetic: absolute differences and running sums. */
#ifndef TEVCV_ARITHMETIC_H
#define TEVCV_ARITHMETIC_H

#include "tevcv/types.h"

/**
 * @defgroup arithmetic Pixel arithmetic
 * @{
 */

/**
 * @name Absolute difference
 * dst = |src1 - src2|, or |src - value|, element by element. All images are `roiSize` pixels of one channel; `dst` may
 * be a source. The integer forms clamp `value` to the element's range first. Floats are subtracted in extended
 * precision and rounded once; a NaN, or infinity minus infinity, gives NaN.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a step shorter than the
 *         row), #tevStatusStepNotAligned (a step that is no multiple of the element's size), in that order.
 * @{
 */
TEV_API TevStatus teviAbsDiff_8u_C1R(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev8u* dst,
                                     int dstStep, TevSize roiSize);
TEV_API TevStatus teviAbsDiff_16u_C1R(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step, Tev16u* dst,
                                      int dstStep, TevSize roiSize);
TEV_API TevStatus teviAbsDiff_32f_C1R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* dst,
                                      int dstStep, TevSize roiSize);
TEV_API TevStatus teviAbsDiffC_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                      int value);
TEV_API TevStatus teviAbsDiffC_16u_C1R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                       int value);
TEV_API TevStatus teviAbsDiffC_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                       Tev32f value);
/** @} */

/** @} */

#endif
