/* Distance transforms, fast marching and inpainting. */
#ifndef TEVCV_DISTANCE_H
#define TEVCV_DISTANCE_H

#include "tevcv/types.h"

/**
 * @defgroup distance Distance and propagation
 * Distance transforms, fast marching and inpainting.
 * @image html distance.png
 * @{
 */

/** @name Weights of chamfer moves by norm
 * Weights for the transforms below that approximate a norm (#tevNormInf, #tevNormL1, #tevNormL2) with a mask of
 * `kernelSize` 3 (two weights) or 5 (three weights). The integer weights of the Euclidean norm are scaled: the straight
 * step costs 2 in the small mask and 5 in the large one.
 *
 *     kernelSize  norm   _32s      _32f
 *         3        0     1 1       1.0   1.0
 *         3        1     1 2       1.0   2.0
 *         3        2     2 3       0.955 1.3693
 *         5        0     1 1 2     1.0   1.0 2.0
 *         5        1     1 2 3     1.0   2.0 3.0
 *         5        2     5 7 11    1.0   1.4 2.1969
 *
 * teviGetDistanceTransformMask() takes both in one number, 10 * kernelSize + norm.
 * @return #tevStatusNullPtr, #tevStatusBadSize (`kernelSize`), #tevStatusBadArg (`norm`), in that order;
 *         teviGetDistanceTransformMask() refuses the norm first.
 * @see G. Borgefors, "Distance transformations in digital images", 1986.
 * @{
 */
TEV_API TevStatus teviGetDistanceTransformMask_32s(int kernelSize, int norm, Tev32s* metrics);
TEV_API TevStatus teviGetDistanceTransformMask_32f(int kernelSize, int norm, Tev32f* metrics);
TEV_API TevStatus teviGetDistanceTransformMask(int maskType, Tev32f* metrics);
/** @} */

/**
 * @name Chamfer distance transforms
 * The distance of each pixel to the nearest zero pixel of `src`, as the length of the cheapest path of weighted moves:
 * a = `metrics`[0] for the straight step (1, 0), b = `metrics`[1] for the diagonal step (1, 1) and, in the 5x5 mask,
 * c = `metrics`[2] for the knight's move (2, 1). Zero pixels have distance 0. Distances stop at the greatest value of
 * the element (255, 65535, 3.4028235e38), which is also what all pixels have where no pixel is zero.
 *
 * Two passes over the image find all paths of the usual weights: those that grow with the length of their moves. In the
 * 3x3 mask a diagonal cheaper than the straight step is provided for as well. In the 5x5 mask a knight's move that
 * costs a + b or more is left to the 3x3 mask, weights with b > a, c > 2a and 2c > 3b use the three moves alone, and
 * any others are completed by steps of (2, 0) and (2, 2); very cheap knight's moves then overestimate near the last
 * rows.
 *
 * `src` and `dst` are `roiSize` pixels; the in-place members read the one and leave the other in `srcDst`. Large images
 * (64 rows or more) are shared by two threads where the library has them. With a 5x5 mask, and in the last bit of
 * floats, that may give other distances than one thread; each is the length of a path.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (shorter than the row),
 *         #tevStatusStepNotAligned (`dstStep` no whole number of elements), #tevStatusBadMetric (a weight that is not
 *         above 0), in that order.
 * @see G. Borgefors, "Distance transformations in digital images", 1986; A. Rosenfeld, J. L. Pfaltz, "Sequential
 *      operations in digital picture processing", 1966.
 * @{
 */
TEV_API TevStatus teviDistanceTransform_3x3_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                   TevSize roiSize, const Tev32s* metrics);
TEV_API TevStatus teviDistanceTransform_5x5_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                   TevSize roiSize, const Tev32s* metrics);
TEV_API TevStatus teviDistanceTransform_3x3_8u_C1IR(Tev8u* srcDst, int step, TevSize roiSize, const Tev32s* metrics);
TEV_API TevStatus teviDistanceTransform_5x5_8u_C1IR(Tev8u* srcDst, int step, TevSize roiSize, const Tev32s* metrics);
TEV_API TevStatus teviDistanceTransform_3x3_8u16u_C1R(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep,
                                                      TevSize roiSize, const Tev32s* metrics);
TEV_API TevStatus teviDistanceTransform_5x5_8u16u_C1R(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep,
                                                      TevSize roiSize, const Tev32s* metrics);
TEV_API TevStatus teviDistanceTransform_3x3_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep,
                                                      TevSize roiSize, const Tev32f* metrics);
TEV_API TevStatus teviDistanceTransform_5x5_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep,
                                                      TevSize roiSize, const Tev32f* metrics);
/** @} */

/**
 * @name True distance transform
 * The exact Euclidean distance of each pixel to the nearest zero pixel of `src`, in time linear in the pixels. A column
 * without a zero counts as one at 1000 pixels: where no pixel is zero every distance is 1000, and distances beyond that
 * depend on it.
 *
 * The 32f member stores the root as a float. The 16u member stores round(sqrt(square) * 2^-`scaleFactor`), at most
 * 32767: halves go up for a `scaleFactor` of 0 and below, to the even neighbour above; beyond 16 everything is 0.
 *
 * `src` and `dst` are `roiSize` pixels. `buffer` is scratch of the length in bytes that the size query gives for this
 * region and thread setting, at any address. The result is the same for any number of threads.
 * @return The transform: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (shorter
 * than the row), #tevStatusStepNotAligned (`dstStep` no whole number of elements), in that order. The queries:
 *         #tevStatusNullPtr, #tevStatusBadSize.
 * @see P. F. Felzenszwalb, D. P. Huttenlocher, "Distance transforms of sampled functions", 2004.
 * @{
 */
TEV_API TevStatus teviTrueDistanceTransformGetBufferSize_8u32f_C1R(TevSize roiSize, int* size);
TEV_API TevStatus teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(TevSize roiSize, int* size);
TEV_API TevStatus teviTrueDistanceTransform_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep,
                                                      TevSize roiSize, Tev8u* buffer);
TEV_API TevStatus teviTrueDistanceTransform_8u16u_C1RSfs(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep,
                                                         TevSize roiSize, int scaleFactor, Tev8u* buffer);
/** @} */

/**
 * @name Fast marching
 * Arrival times of a front that starts on all zero pixels of `src` at time 0 and moves at one pixel a unit of time: the
 * solution T of the eikonal equation \f$|\nabla T| = 1\f$ on the pixel grid. With a and b the smaller vertical and
 * horizontal neighbour of a pixel, T is the upwind solution
 *
 * \f[ T = \frac{a + b + \sqrt{2 - (a - b)^2}}{2} \quad \text{if } |a - b| < 1,
 *     \qquad T = \min(a, b) + 1 \quad \text{otherwise.} \f]
 *
 * Along an axis times rise by exactly 1 a pixel; diagonal to a single zero pixel stands 1.7071068, not sqrt(2).
 * With `radius` above 0 the zero side of the front gets times below 0, falling to -`radius` away from the front: a
 * signed band. A zero pixel next to the inside has -1e-10; 0 on the zero side means beyond the radius.
 *
 * `src` and `dst` are `roiSize` pixels. `buffer` is scratch of the length in bytes that the size query gives, at any
 * address. Without a zero pixel the times count up from 999999 in the first row. More than 12 rows and columns are
 * shared by two threads where the library has them; the last bits of a time may depend on that.
 * @return The transform: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (shorter
 *         than the row), #tevStatusStepNotAligned (`dstStep` no whole number of floats), #tevStatusBadArg (`radius`
 *         below 0 or NaN), in that order. The query: #tevStatusNullPtr, #tevStatusBadSize.
 * @see J. A. Sethian, "A fast marching level set method for monotonically advancing fronts", 1996; H. Zhao, "A fast
 *      sweeping method for Eikonal equations", 2005.
 * @{
 */
TEV_API TevStatus teviFastMarchingGetBufferSize_8u32f_C1R(TevSize roiSize, int* size);
TEV_API TevStatus teviFastMarching_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                             Tev32f radius, Tev8u* buffer);
/** @} */

/** How a known neighbour counts in an inpainted pixel. */
enum {
  tevInpaintGradient = 0, /**< by the direction in which the distance grows, and by the difference in distance */
  tevInpaintIsophote = 1  /**< by the direction of the image's gradient at the neighbour */
};

/** A mask with its distances made ready for inpainting, with the scratch memory of one running call. */
typedef struct TevInpaintState TevInpaintState;

/**
 * @name Inpainting
 * Fills the pixels where a mask is not 0 from the known pixels around them, in the order of their distance from the
 * mask's edge, so that the fill moves inward and every pixel filled is known to the next ones. A pixel p takes a
 * weighted mean of the known pixels n within `radius`, r being the offset from p to n:
 *
 * - #tevInpaintGradient, D being the gradient of the distances T:
 *   \f[ w = \frac{|D(p) \cdot r|}{|r|^3 \, (|T(n) - T(p)| + 1)}; \f]
 *   1 is added along the sign of the summed image gradients, at most sqrt(2) grey levels.
 * - #tevInpaintIsophote, G being the gradient's magnitudes per axis:
 *   \f[ w = \frac{|r \times G(n)|}{|G(n)| \, |r| \, (|r|^4 + 1)}. \f]
 *
 * No gradient looks at an unknown neighbour. One that was taken before its pixel was filled stays, so that with
 * #tevInpaintGradient what stood in the hole may tell by a level or two. Where the weights sum to less than 0.0001 the
 * known ones of the four neighbours are averaged. Channels are filled one by one, with the weights of the first method
 * in common.
 *
 * `...InitAlloc` makes a state from `mask` and `distances`, both `roiSize` pixels; the distances are those of
 * teviFastMarching_8u32f_C1R on the mask, above 0 on every masked pixel (a masked pixel without such a distance stays
 * as it is, a positive distance elsewhere counts as masked as long as the mask's count lasts). `radius` is at least 1
 * pixel; `flags` is #tevInpaintGradient or #tevInpaintIsophote. The state serves any number of images of that size, one
 * call at a time, in the channel count it was made for. `dst` receives `src` with the mask filled and may be `src`.
 * @return `...InitAlloc`: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (shorter
 * than the row), #tevStatusStepNotAligned (`distStep` no whole number of floats), #tevStatusBadArg (`flags`; `radius`
 *         below 1 or NaN), in that order, and #tevStatusNoMemory, `*state` untouched. The fill: #tevStatusNullPtr,
 *         #tevStatusBadSize (width or height below 1, or other than the state's), #tevStatusBadStep. `...Free`:
 *         #tevStatusNullPtr.
 * @see A. Telea, "An image inpainting technique based on the fast marching method", 2004; M. Bertalmio, G. Sapiro,
 *      V. Caselles, C. Ballester, "Image inpainting", 2000.
 * @{
 */
TEV_API TevStatus teviInpaintInitAlloc_8u_C1R(TevInpaintState** state, const Tev32f* distances, int distStep,
                                              const Tev8u* mask, int maskStep, TevSize roiSize, Tev32f radius,
                                              int flags);
TEV_API TevStatus teviInpaintInitAlloc_8u_C3R(TevInpaintState** state, const Tev32f* distances, int distStep,
                                              const Tev8u* mask, int maskStep, TevSize roiSize, Tev32f radius,
                                              int flags);
TEV_API TevStatus teviInpaint_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                     TevInpaintState* state);
TEV_API TevStatus teviInpaint_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                     TevInpaintState* state);
TEV_API TevStatus teviInpaintFree_8u_C1R(TevInpaintState* state);
TEV_API TevStatus teviInpaintFree_8u_C3R(TevInpaintState* state);
/** @} */

/** @} */

#endif
