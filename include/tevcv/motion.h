/* Motion and background: optical flow, foreground models, motion history. */
#ifndef TEVCV_MOTION_H
#define TEVCV_MOTION_H

#include "tevcv/pyramids.h"
#include "tevcv/types.h"

/**
 * @defgroup motion Motion and background: optical flow, foreground models, motion history.
 * @{
 */

/** The scratch memory of a tracker. Serves one call at a time. */
typedef struct TevOptFlowPyrLKState TevOptFlowPyrLKState;

/**
 * @name Pyramidal optical flow
 * Tracks points from one image to the next: on each level of two pyramids, from the coarsest to the finest, the
 * position of a square window of `windowSize` pixels is moved by Newton steps until the second image matches the first.
 * With the gradient (Ix, Iy) of the first image and d = I - J, one step solves
 *
 *     | sum Ix^2   sum Ix Iy | | dx |   | sum Ix d |
 *     | sum Ix Iy  sum Iy^2  | | dy | = | sum Iy d |
 *
 * over the part of the window that lies in both images.
 *
 * `...InitAlloc` makes a state for pyramids of one element type and one `windowSize`. On levels smaller than `roiSize`
 * in both dimensions gradients are computed once for the whole level and shared by all points; on larger levels they
 * are computed for each window alone. The two ways agree in scale, but not in the last bits. `hint` has no effect.
 *
 * Tracking reads `images`, `steps`, `roi` and `scale` of `pyramid1` and `images` and `steps` of `pyramid2`, levels 0 to
 * `maxLevel`, which are the caller's to fill in (see teviPyramidInitAlloc, teviPyrDown_Gauss5x5_8u_C1R). Points are
 * pairs x, y in pixels of level 0, `pointCount` of them in each array. `nextPoints` holds first guesses on entry,
 * commonly `prevPoints`, and the tracked points on return. Each level ends when a step is shorter than `threshold`
 * pixels of that level, when a step undoes the one before (half of it is taken then), or after `maxIterations` steps.
 *
 * `status` becomes 0 for a tracked point and k > 0 for one given up on level k - 1: its window left the image (its next
 * point is the guess it left with), or holds no structure in one direction (its next point is that of the level before,
 * or of the first level of those larger than `roiSize`). `error` is the root mean square of the difference of the
 * windows at the last step's start, in pixel values. With a `maxLevel` of 1 a guess that goes from level 1 to level 0
 * between levels larger than `roiSize` is not scaled up.
 *
 * A call allocates nothing, and gives the same result whatever the number of threads.
 *
 * Literature: B. D. Lucas, T. Kanade, "An Iterative Image Registration Technique with an Application to Stereo Vision",
 * 1981.
 * @return `...InitAlloc`: #tevStatusNullPtr, #tevStatusBadSize (`windowSize`, width or height below 1),
 *         #tevStatusNoMemory, in that order, with `*ppState` as it was. `...Free`: #tevStatusNullPtr. Tracking:
 *         #tevStatusNullPtr, #tevStatusBadSize (`pointCount` or `windowSize` below 1, `windowSize` not the state's),
 *         #tevStatusBadArg (`maxLevel` below 0, `maxIterations` below 1, `threshold` below 0), in that order.
 * @{
 */
TEV_API TevStatus teviOpticalFlowPyrLKInitAlloc_8u_C1R(TevOptFlowPyrLKState** ppState, TevSize roiSize, int windowSize,
                                                       int hint);
TEV_API TevStatus teviOpticalFlowPyrLKInitAlloc_16u_C1R(TevOptFlowPyrLKState** ppState, TevSize roiSize, int windowSize,
                                                        int hint);
TEV_API TevStatus teviOpticalFlowPyrLKInitAlloc_32f_C1R(TevOptFlowPyrLKState** ppState, TevSize roiSize, int windowSize,
                                                        int hint);
TEV_API TevStatus teviOpticalFlowPyrLKFree_8u_C1R(TevOptFlowPyrLKState* pState);
TEV_API TevStatus teviOpticalFlowPyrLKFree_16u_C1R(TevOptFlowPyrLKState* pState);
TEV_API TevStatus teviOpticalFlowPyrLKFree_32f_C1R(TevOptFlowPyrLKState* pState);
TEV_API TevStatus teviOpticalFlowPyrLK_8u_C1R(const TevPyramid* pyramid1, const TevPyramid* pyramid2,
                                              const Tev32f* prevPoints, Tev32f* nextPoints, Tev8s* status,
                                              Tev32f* error, int pointCount, int windowSize, int maxLevel,
                                              int maxIterations, Tev32f threshold, TevOptFlowPyrLKState* pState);
TEV_API TevStatus teviOpticalFlowPyrLK_16u_C1R(const TevPyramid* pyramid1, const TevPyramid* pyramid2,
                                               const Tev32f* prevPoints, Tev32f* nextPoints, Tev8s* status,
                                               Tev32f* error, int pointCount, int windowSize, int maxLevel,
                                               int maxIterations, Tev32f threshold, TevOptFlowPyrLKState* pState);
TEV_API TevStatus teviOpticalFlowPyrLK_32f_C1R(const TevPyramid* pyramid1, const TevPyramid* pyramid2,
                                               const Tev32f* prevPoints, Tev32f* nextPoints, Tev8s* status,
                                               Tev32f* error, int pointCount, int windowSize, int maxLevel,
                                               int maxIterations, Tev32f threshold, TevOptFlowPyrLKState* pState);
/** @} */

/** @} */

#endif
