/* Pixel arithmetic: absolute differences and running sums. */
#ifndef TEVCV_ARITHMETIC_H
#define TEVCV_ARITHMETIC_H

#include "tevcv/types.h"

/**
 * @defgroup arithmetic Pixel arithmetic
 * Absolute differences and running sums.
 * @image html arithmetic.png
 * @{
 */

/**
 * @name Absolute difference
 * dst = \f$|src1 - src2|\f$, or \f$|src - value|\f$, element by element. All images are `roiSize` pixels of one
 * channel; `dst` may be a source. The integer forms clamp `value` to the element's range first. Floats are subtracted
 * in extended precision and rounded once; a NaN, or infinity minus infinity, gives NaN.
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

/**
 * @name Accumulators
 * Running sums over images. `srcDst` is an image of floats that the caller keeps between calls; each element a of it
 * becomes, with the sources' elements s, s1, s2 at the same place:
 *
 *   | family           | value                                            |
 *   |------------------|--------------------------------------------------|
 *   | teviAdd_         | a + s                                            |
 *   | teviAddSquare_   | a + s * s                                        |
 *   | teviAddProduct_  | a + s1 * s2                                      |
 *   | teviAddWeighted_ | a + (s - a) * alpha, exponential forgetting      |
 *
 * evaluated in extended precision and rounded once, to the float that is stored. All images and the mask are `roiSize`
 * pixels of one channel; steps are bytes. `alpha` may be any float.
 *
 * In the masked forms (`C1IMR`) an element whose mask element is 0 keeps its value, with these exceptions, since the
 * term is multiplied by 0 and added like any other: -0.0 becomes +0.0 (unless the term is -0.0 too), and a NaN or an
 * infinity at such a pixel makes the accumulator NaN. The latter holds for the source in the `32f` members, and for the
 * source and the accumulator in teviAddWeighted_.
 *
 * A mean is kept by teviAddWeighted_, a variance by teviAddWeighted_ on the image and teviAddSquare_ or
 * teviAddProduct_ (A. Elgammal, D. Harwood, L. Davis, "Non-parametric Model for Background Subtraction", 2000, compares
 * such models).
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a step shorter than the
 *         row), #tevStatusStepNotAligned (the step of an image of floats or of 16-bit elements is no multiple of the
 *         element's size), in that order. The `16u32f` members test the sources' steps for both before they look at the
 *         mask's and the accumulator's.
 * @{
 */
TEV_API TevStatus teviAdd_8u32f_C1IR(const Tev8u* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAdd_8s32f_C1IR(const Tev8s* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAdd_16u32f_C1IR(const Tev16u* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddSquare_8u32f_C1IR(const Tev8u* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                           TevSize roiSize);
TEV_API TevStatus teviAddSquare_8s32f_C1IR(const Tev8s* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                           TevSize roiSize);
TEV_API TevStatus teviAddSquare_16u32f_C1IR(const Tev16u* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                            TevSize roiSize);
TEV_API TevStatus teviAddSquare_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                         TevSize roiSize);
TEV_API TevStatus teviAddProduct_8u32f_C1IR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                            Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddProduct_8s32f_C1IR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                            Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddProduct_16u32f_C1IR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                             Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddProduct_32f_C1IR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                          Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddWeighted_8u32f_C1IR(const Tev8u* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                             TevSize roiSize, Tev32f alpha);
TEV_API TevStatus teviAddWeighted_8s32f_C1IR(const Tev8s* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                             TevSize roiSize, Tev32f alpha);
TEV_API TevStatus teviAddWeighted_16u32f_C1IR(const Tev16u* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                              TevSize roiSize, Tev32f alpha);
TEV_API TevStatus teviAddWeighted_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                           TevSize roiSize, Tev32f alpha);
TEV_API TevStatus teviAdd_8u32f_C1IMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                      int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAdd_8s32f_C1IMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                      int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAdd_16u32f_C1IMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                       int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAdd_32f_C1IMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                    int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddSquare_8u32f_C1IMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                            Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddSquare_8s32f_C1IMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep,
                                            Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddSquare_16u32f_C1IMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                             Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddSquare_32f_C1IMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                          Tev32f* srcDst, int srcDstStep, TevSize roiSize);
TEV_API TevStatus teviAddProduct_8u32f_C1IMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                             const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep,
                                             TevSize roiSize);
TEV_API TevStatus teviAddProduct_8s32f_C1IMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                             const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep,
                                             TevSize roiSize);
TEV_API TevStatus teviAddProduct_16u32f_C1IMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                              const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep,
                                              TevSize roiSize);
TEV_API TevStatus teviAddProduct_32f_C1IMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep,
                                           TevSize roiSize);
TEV_API TevStatus teviAddWeighted_8u32f_C1IMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                              Tev32f* srcDst, int srcDstStep, TevSize roiSize, Tev32f alpha);
TEV_API TevStatus teviAddWeighted_8s32f_C1IMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep,
                                              Tev32f* srcDst, int srcDstStep, TevSize roiSize, Tev32f alpha);
TEV_API TevStatus teviAddWeighted_16u32f_C1IMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                               Tev32f* srcDst, int srcDstStep, TevSize roiSize, Tev32f alpha);
TEV_API TevStatus teviAddWeighted_32f_C1IMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                            Tev32f* srcDst, int srcDstStep, TevSize roiSize, Tev32f alpha);
/** @} */

/** @} */

#endif
