/* Image pyramids. */
#ifndef TEVCV_PYRAMIDS_H
#define TEVCV_PYRAMIDS_H

#include "tevcv/types.h"

/**
 * @defgroup pyramids Image pyramids
 * Sequences of images, each smaller than the one before. The idea: P. J. Burt, E. H. Adelson, "The Laplacian Pyramid as
 * a Compact Image Code", 1983.
 * @image html pyramids.png
 * @{
 */

/**
 * The levels of one image: level 0 is the image itself, each next one is smaller by the rate. One allocation holds the
 * record and its arrays, which have `level` + 1 entries each. The images are the caller's.
 */
typedef struct TevPyramid {
  void** images; /**< the first pixel of each level; null at first, filled in by the caller */
  TevSize* roi;  /**< the size of each level */
  Tev64f* scale; /**< 1 / rate to the power of the level */
  Tev32s* steps; /**< the row step of each level in bytes; 0 at first, filled in by the caller */
  void* state;   /**< null at first; room for a layer state of the caller's */
  Tev32s level;  /**< the highest level's index */
} TevPyramid;

/**
 * What it takes to resample between two neighbouring levels: a normalised kernel, the rate, the largest region, scratch
 * memory. Serves one call at a time.
 */
typedef struct TevPyramidLayerState TevPyramidLayerState;

/**
 * @name Pyramid records
 * `teviPyramidInitAlloc` makes a record for an image of `roiSize` pixels and up to `level` levels above it; a request
 * for more levels than it takes to come down to 1 x 1 pixel is cut, so that the record of a 1 x 1 image has level 0.
 * Sizes follow #teviGetPyramidDownROI, scale[i] = scale[i - 1] / rate. `rate` lies above 1, up to 10 inclusive.
 * `teviPyramidFree` gives the record back; the caller's images stay.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadArg (`rate` outside its range,
 *         `level` below 1), #tevStatusNoMemory, in that order; `*ppPyramid` is written on success only.
 * @{
 */
TEV_API TevStatus teviPyramidInitAlloc(TevPyramid** ppPyramid, int level, TevSize roiSize, Tev32f rate);
TEV_API TevStatus teviPyramidFree(TevPyramid* pyramid);
/** @} */

/**
 * @name Sizes of neighbouring levels
 * The up query gives the smallest and the largest size of a level whose next smaller one has `srcRoi` pixels. In each
 * dimension, n being the source's size: from max(n + 1, trunc((n - 1) * rate) + 1), or 1 where n is 1, to
 * max(n + 1, trunc(n * rate)), products rounded to float. The down query gives the one size whose up range holds
 * `srcRoi`: each size has one next smaller size. Results beyond 2147483647 are cut there.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadArg (`rate` not above 1, or
 *         above 10), in that order.
 * @{
 */
TEV_API TevStatus teviGetPyramidDownROI(TevSize srcRoi, TevSize* pDstRoi, Tev32f rate);
TEV_API TevStatus teviGetPyramidUpROI(TevSize srcRoi, TevSize* pDstRoiMin, TevSize* pDstRoiMax, Tev32f rate);
/** @} */

/**
 * @name Layer states
 * A state moves images of up to `srcRoi` pixels one level down, or up (the source is the smaller image then). `kernel`
 * holds `kernelSize` taps, an odd number from 3 on; only its left half and its middle count, and it is stored mirrored
 * and divided by its sum. `mode` is 2, linear interpolation; `rate` lies above 1, up to 10 inclusive. The kernel of the
 * integer layers becomes a 13-bit fraction, truncated in a down state and rounded in an up state.
 *
 * A kernel whose sum is 0 is no smoothing kernel: it is stored as it is and mirrored one place off (entry i at
 * kernelSize - i; the entry behind the middle is not set; in float layers the middle is not the caller's tap).
 *
 * Each `...Free` releases a state of any element type.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadArg (`mode`, then `rate`, then
 *         `kernelSize`), #tevStatusNoMemory, in that order, with `*ppState` as it was. #tevStatusAsymmetricKernel where
 *         the right half of `kernel` is not the mirror of the left one: the state is made all the same.
 * @{
 */
TEV_API TevStatus teviPyramidLayerDownInitAlloc_8u_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                       const Tev16s* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerDownInitAlloc_8u_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                       const Tev16s* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerDownInitAlloc_16u_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                        const Tev16s* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerDownInitAlloc_16u_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                        const Tev16s* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerDownInitAlloc_32f_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                        const Tev32f* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerDownInitAlloc_32f_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                        const Tev32f* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerUpInitAlloc_8u_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                     const Tev16s* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerUpInitAlloc_8u_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                     const Tev16s* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerUpInitAlloc_16u_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                      const Tev16s* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerUpInitAlloc_16u_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                      const Tev16s* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerUpInitAlloc_32f_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                      const Tev32f* kernel, int kernelSize, int mode);
TEV_API TevStatus teviPyramidLayerUpInitAlloc_32f_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                      const Tev32f* kernel, int kernelSize, int mode);

TEV_API TevStatus teviPyramidLayerDownFree(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUpFree(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDownFree_8u_C1R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDownFree_8u_C3R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDownFree_16u_C1R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDownFree_16u_C3R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDownFree_32f_C1R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDownFree_32f_C3R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUpFree_8u_C1R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUpFree_8u_C3R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUpFree_16u_C1R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUpFree_16u_C3R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUpFree_32f_C1R(TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUpFree_32f_C3R(TevPyramidLayerState* pState);
/** @} */

/**
 * @name Gaussian steps of rate 2
 * Halve or double an image of `srcRoi` pixels with the kernel 1 4 6 4 1 in both directions, channel by channel.
 *
 * Down: dst has (width + 1) / 2 x (height + 1) / 2 pixels, and with the kernel k = 1 4 6 4 1
 * \f[ dst(x, y) = \frac{1}{256} \sum_{j = -2}^{2} \sum_{i = -2}^{2} k_i k_j \; src(2x + i, 2y + j). \f]
 * The image is reflected about its outermost pixels on all sides.
 *
 * Up: dst has 2 width x 2 height pixels. Even samples are weighted 1 6 1, odd ones 4 4, in both directions, divided by
 * 64. On the left and at the top the image is reflected about its outermost pixels; on the right and at the bottom the
 * last pixel is repeated.
 *
 * 8-bit results are rounded with ties upward. Float sums are formed in extended precision and rounded to float behind
 * each of the two directions; images less than three pixels wide or high are reduced with one rounding at the end.
 *
 * `buffer` has the length that the size query gives for the source's width, at any address; each call needs its own.
 * `dataType` is #tevDataType8u, #tevDataType8s or #tevDataType32f, `channels` 1 or 3. Sizes beyond 2147483647 are cut
 * there. The step down is the REDUCE, the step up the EXPAND of the paper above.
 * @return Steps: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a step shorter than
 *         the row of its image), #tevStatusStepNotAligned (32f only), in that order. Size queries: #tevStatusNullPtr,
 *         #tevStatusBadSize (`roiWidth` below 1), #tevStatusBadChannels, #tevStatusBadKernel (`dataType`), in that
 *         order.
 * @{
 */
TEV_API TevStatus teviPyrDownGetBufSize_Gauss5x5(int roiWidth, TevDataType dataType, int channels, int* pBufferSize);
TEV_API TevStatus teviPyrUpGetBufSize_Gauss5x5(int roiWidth, TevDataType dataType, int channels, int* pBufferSize);

TEV_API TevStatus teviPyrDown_Gauss5x5_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                              Tev8u* buffer);
TEV_API TevStatus teviPyrDown_Gauss5x5_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                              Tev8u* buffer);
TEV_API TevStatus teviPyrDown_Gauss5x5_8s_C1R(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                              Tev8u* buffer);
TEV_API TevStatus teviPyrDown_Gauss5x5_8s_C3R(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                              Tev8u* buffer);
TEV_API TevStatus teviPyrDown_Gauss5x5_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                               Tev8u* buffer);
TEV_API TevStatus teviPyrDown_Gauss5x5_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                               Tev8u* buffer);
TEV_API TevStatus teviPyrUp_Gauss5x5_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                            Tev8u* buffer);
TEV_API TevStatus teviPyrUp_Gauss5x5_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                            Tev8u* buffer);
TEV_API TevStatus teviPyrUp_Gauss5x5_8s_C1R(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                            Tev8u* buffer);
TEV_API TevStatus teviPyrUp_Gauss5x5_8s_C3R(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                            Tev8u* buffer);
TEV_API TevStatus teviPyrUp_Gauss5x5_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                             Tev8u* buffer);
TEV_API TevStatus teviPyrUp_Gauss5x5_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize srcRoi,
                                             Tev8u* buffer);
/** @} */

/**
 * @name Layer resampling
 * Move an image of `srcRoi` pixels one level down or up, to `dstRoi` pixels, with a layer state made for that direction
 * and element type and for a region no smaller than `srcRoi`.
 *
 * Down: the image, reflected about its outermost pixels, is smoothed by the state's kernel in both directions, then
 * dst(x, y) is interpolated linearly at (x * rate, y * rate); at rates from 1.99998 to 2.00002 it is the pixel at
 * (2x, 2y). `dstRoi` is what #teviGetPyramidDownROI gives. Images that the kernel's size covers in a dimension are
 * smoothed with another rounding than larger ones (each product of a row is truncated, not their sum).
 *
 * Up: each source pixel is spread around (x * rate, y * rate) by the kernel, interpolated at the position's fraction,
 * and each destination pixel is divided by the weight that it has received; a pixel that no weight reaches becomes 0.
 * `dstRoi` lies in the range of #teviGetPyramidUpROI. A constant image stays constant. The call allocates one block and
 * frees it.
 *
 * Float layers round the smoothed rows, the smoothed image, and each step of the interpolation and of the spreading to
 * float; sums in between are extended.
 * @return #tevStatusNullPtr, #tevStatusBadSize (`srcRoi` below 1), #tevStatusBadStep (a step shorter than the row of
 *         its image), #tevStatusStepNotAligned (16u and 32f), #tevStatusBadArg (the state's rate), #tevStatusBadSize
 *         (`dstRoi`), #tevStatusNoMemory (up only), in that order.
 * @{
 */
TEV_API TevStatus teviPyramidLayerDown_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                              TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDown_8u_C3R(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                              TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDown_16u_C1R(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                               TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDown_16u_C3R(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                               TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDown_32f_C1R(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                               TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerDown_32f_C3R(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                               TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUp_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                            TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUp_8u_C3R(const Tev8u* src, int srcStep, TevSize srcRoi, Tev8u* dst, int dstStep,
                                            TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUp_16u_C1R(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                             TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUp_16u_C3R(const Tev16u* src, int srcStep, TevSize srcRoi, Tev16u* dst, int dstStep,
                                             TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUp_32f_C1R(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                             TevSize dstRoi, TevPyramidLayerState* pState);
TEV_API TevStatus teviPyramidLayerUp_32f_C3R(const Tev32f* src, int srcStep, TevSize srcRoi, Tev32f* dst, int dstStep,
                                             TevSize dstRoi, TevPyramidLayerState* pState);
/** @} */

/** @} */

#endif
