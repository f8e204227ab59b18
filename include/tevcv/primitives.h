/* Vector and image primitives: copies, fills, subtraction, thresholds, border copies, small numeric runs. */
#ifndef TEVCV_PRIMITIVES_H
#define TEVCV_PRIMITIVES_H

#include "tevcv/types.h"

/**
 * @defgroup vectors Vector primitives
 * Operations on `len` contiguous elements at any address. Unless told otherwise a function returns
 * #tevStatusNullPtr for a null pointer, then #tevStatusBadSize for a `len` below 1, and writes nothing then.
 * @{
 */

/**
 * @name Copy, fill, clear, convert
 * dst[i] = src[i]; dst[i] = value; dst[i] = 0. A copy runs forward; source and destination must not overlap with `dst`
 * above `src`. The float copy and fill move bit patterns. Conversion is exact.
 * @{
 */
TEV_API TevStatus tevsCopy_8u(const Tev8u* src, Tev8u* dst, int len);
TEV_API TevStatus tevsCopy_32f(const Tev32f* src, Tev32f* dst, int len);
TEV_API TevStatus tevsSet_8u(Tev8u value, Tev8u* dst, int len);
TEV_API TevStatus tevsSet_32f(Tev32f value, Tev32f* dst, int len);
TEV_API TevStatus tevsZero_8u(Tev8u* dst, int len);
TEV_API TevStatus tevsZero_16s(Tev16s* dst, int len);
TEV_API TevStatus tevsZero_32s(Tev32s* dst, int len);
TEV_API TevStatus tevsZero_32f(Tev32f* dst, int len);
TEV_API TevStatus tevsConvert_16u32f(const Tev16u* src, Tev32f* dst, int len);
/** @} */

/**
 * @name Element-wise extrema
 * dst[i] = max(src1[i], src2[i]), or min; dst may be either source. The first operand is kept unless the second is
 * strictly better, which decides ties of zeros and NaN. These forms check nothing and return no status, for inner
 * loops; a `len` below 1 does nothing.
 * @{
 */
TEV_API void tevsMaxEvery_8u(const Tev8u* src1, const Tev8u* src2, Tev8u* dst, int len);
TEV_API void tevsMaxEvery_32f(const Tev32f* src1, const Tev32f* src2, Tev32f* dst, int len);
TEV_API void tevsMinEvery_8u(const Tev8u* src1, const Tev8u* src2, Tev8u* dst, int len);
TEV_API void tevsMinEvery_32f(const Tev32f* src1, const Tev32f* src2, Tev32f* dst, int len);
/** @} */

/**
 * @name Element-wise extrema in place
 * srcDst[i] = max(src[i], srcDst[i]), or min; `srcDst` is kept on a tie and where either operand is NaN.
 * @{
 */
TEV_API TevStatus tevsMaxEvery_8u_I(const Tev8u* src, Tev8u* srcDst, int len);
TEV_API TevStatus tevsMaxEvery_32f_I(const Tev32f* src, Tev32f* srcDst, int len);
TEV_API TevStatus tevsMinEvery_8u_I(const Tev8u* src, Tev8u* srcDst, int len);
TEV_API TevStatus tevsMinEvery_32f_I(const Tev32f* src, Tev32f* srcDst, int len);
/** @} */

/**
 * @name Multiplication by a constant
 * The 16-bit form stores srcDst[i] * value * 2^-scaleFactor, ties to even, saturated. With a negative `scaleFactor` the
 * product is saturated once before the shift as well. Above 30 all is cleared; below -15 every product but 0 goes to
 * the end of the range on its side. The float form leaves the data untouched for 1 and clears it for 0, NaN included.
 * @{
 */
TEV_API TevStatus tevsMulC_16s_ISfs(Tev16s value, Tev16s* srcDst, int len, int scaleFactor);
TEV_API TevStatus tevsMulC_32f_I(Tev32f value, Tev32f* srcDst, int len);
/** @} */

/** Sorts ascending, in place, not stable; NaN and the order of zeros get no treatment. */
TEV_API TevStatus tevsSortAscend_64f_I(Tev64f* srcDst, int len);

/**
 * @name Square roots
 * The float form keeps zeros of either sign, and stores NaN for a negative element or NaN. The integer form stores
 * sqrt(src[i]) * 2^-scaleFactor, at most 32767, and 0 for a negative source: halves are rounded up for a
 * `scaleFactor` of 0 and below, to even above. Above 16 the destination is cleared.
 * @return #tevStatusSqrtNegWarning where an element was negative (in the float form also NaN); the run goes to the end
 *         all the same.
 * @{
 */
TEV_API TevStatus tevsSqrt_32f_I(Tev32f* srcDst, int len);
TEV_API TevStatus tevsSqrt_32s16s_Sfs(const Tev32s* src, Tev16s* dst, int len, int scaleFactor);
/** @} */
/** @} */

/**
 * @defgroup images Image primitives
 * Images are a pointer to the first element of the region, a row step in bytes and a region in pixels.
 * @{
 */

/**
 * @name Copies and fill
 * Row by row from the first one down. Steps are used as they stand, zero and negative ones too; float rows advance by
 * whole elements. Rows may overlap as the caller asks.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), in that order.
 * @{
 */
TEV_API TevStatus teviCopy_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize);
TEV_API TevStatus teviCopy_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize);
TEV_API TevStatus teviCopy_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize);
TEV_API TevStatus teviCopy_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize);
TEV_API TevStatus teviCopy_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize);
TEV_API TevStatus teviCopy_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize);
TEV_API TevStatus teviSet_8u_C1R(Tev8u value, Tev8u* dst, int dstStep, TevSize roiSize);
/** @} */

/**
 * @name Subtraction
 * dst = src2 - src1, or srcDst = srcDst - src: the first image is the one taken away. The 8-bit forms replace a
 * negative difference by 0, then scale it by 2^-scaleFactor with ties to even and saturate; a `scaleFactor` above 8
 * clears the destination, one below -7 gives 255 for every difference but 0. Steps are used as they stand; float rows
 * advance by whole elements.
 * @return #tevStatusNullPtr, #tevStatusBadSize, in that order; the three- and four-channel forms test the width first.
 * @{
 */
TEV_API TevStatus teviSub_32f_C1R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* dst,
                                  int dstStep, TevSize roiSize);
TEV_API TevStatus teviSub_32f_C3R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* dst,
                                  int dstStep, TevSize roiSize);
TEV_API TevStatus teviSub_32f_C4R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* dst,
                                  int dstStep, TevSize roiSize);
TEV_API TevStatus teviSub_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviSub_32f_C3IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviSub_32f_C4IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviSub_8u_C1RSfs(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev8u* dst,
                                    int dstStep, TevSize roiSize, int scaleFactor);
TEV_API TevStatus teviSub_8u_C3RSfs(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev8u* dst,
                                    int dstStep, TevSize roiSize, int scaleFactor);
TEV_API TevStatus teviSub_8u_C4RSfs(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev8u* dst,
                                    int dstStep, TevSize roiSize, int scaleFactor);
TEV_API TevStatus teviSub_8u_C1IRSfs(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep, TevSize roiSize,
                                     int scaleFactor);
TEV_API TevStatus teviSub_8u_C3IRSfs(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep, TevSize roiSize,
                                     int scaleFactor);
TEV_API TevStatus teviSub_8u_C4IRSfs(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep, TevSize roiSize,
                                     int scaleFactor);
/** @} */

/**
 * @name Thresholds
 * Elements above (#tevCmpGreater) or below (#tevCmpLess) `threshold` are replaced by `value`, all others copied; an
 * element equal to it stays. A form without `value` clips at the level. Source and destination may be the same image.
 *
 * Floats are compared by their bit patterns: as signed integers where `threshold` >= 0, as unsigned ones with the order
 * reversed where it is negative. For ordinary values that is the order of floats. -0.0 lies below +0.0 then, every
 * element but -0.0 itself lies above a `threshold` of -0.0, and a NaN lies beyond infinity on the side of its sign bit.
 * @return #tevStatusBadCompareMode, #tevStatusNullPtr, #tevStatusBadSize, #tevStatusBadStep (a step below 1; rows are
 *         not measured), in that order.
 * @{
 */
TEV_API TevStatus teviThreshold_Val_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                           Tev8u threshold, Tev8u value, TevCmpOp cmpOp);
TEV_API TevStatus teviThreshold_Val_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                            Tev32f threshold, Tev32f value, TevCmpOp cmpOp);
TEV_API TevStatus teviThreshold_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                        Tev32f threshold, TevCmpOp cmpOp);
TEV_API TevStatus teviThreshold_GTVal_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                             Tev8u threshold, Tev8u value);
TEV_API TevStatus teviThreshold_GTVal_8u_C1IR(Tev8u* srcDst, int srcDstStep, TevSize roiSize, Tev8u threshold,
                                              Tev8u value);
TEV_API TevStatus teviThreshold_LT_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                           Tev32f threshold);
TEV_API TevStatus teviThreshold_LT_32f_C1IR(Tev32f* srcDst, int srcDstStep, TevSize roiSize, Tev32f threshold);
/** @} */

/**
 * @name Border copies
 * Frames an image of `srcRoiSize` pixels inside one of `dstRoiSize`, `topBorderHeight` rows down and `leftBorderWidth`
 * pixels in; the margins repeat the nearest pixel of the image, or hold `value`. `dst` addresses the frame's first
 * pixel and must not overlap the source. In the in-place forms `srcDst` addresses the image's first pixel inside the
 * frame. Rows of words advance by whole elements of any step.
 * @return #tevStatusNullPtr, #tevStatusBadStep (a step below 1), #tevStatusBadSize (a size below 1, a negative border,
 * a frame too small), in that order.
 * @{
 */
TEV_API TevStatus teviCopyReplicateBorder_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst,
                                                 int dstStep, TevSize dstRoiSize, int topBorderHeight,
                                                 int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_8u_C3R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst,
                                                 int dstStep, TevSize dstRoiSize, int topBorderHeight,
                                                 int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_8u_C4R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst,
                                                 int dstStep, TevSize dstRoiSize, int topBorderHeight,
                                                 int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_32s_C1R(const Tev32s* src, int srcStep, TevSize srcRoiSize, Tev32s* dst,
                                                  int dstStep, TevSize dstRoiSize, int topBorderHeight,
                                                  int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_32s_C3R(const Tev32s* src, int srcStep, TevSize srcRoiSize, Tev32s* dst,
                                                  int dstStep, TevSize dstRoiSize, int topBorderHeight,
                                                  int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_32s_C4R(const Tev32s* src, int srcStep, TevSize srcRoiSize, Tev32s* dst,
                                                  int dstStep, TevSize dstRoiSize, int topBorderHeight,
                                                  int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_8u_C1IR(Tev8u* srcDst, int srcDstStep, TevSize srcRoiSize, TevSize dstRoiSize,
                                                  int topBorderHeight, int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_8u_C3IR(Tev8u* srcDst, int srcDstStep, TevSize srcRoiSize, TevSize dstRoiSize,
                                                  int topBorderHeight, int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_8u_C4IR(Tev8u* srcDst, int srcDstStep, TevSize srcRoiSize, TevSize dstRoiSize,
                                                  int topBorderHeight, int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_32s_C1IR(Tev32s* srcDst, int srcDstStep, TevSize srcRoiSize,
                                                   TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_32s_C3IR(Tev32s* srcDst, int srcDstStep, TevSize srcRoiSize,
                                                   TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth);
TEV_API TevStatus teviCopyReplicateBorder_32s_C4IR(Tev32s* srcDst, int srcDstStep, TevSize srcRoiSize,
                                                   TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth);
TEV_API TevStatus teviCopyConstBorder_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst, int dstStep,
                                             TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth, Tev8u value);
/** @} */
/** @} */

#endif
