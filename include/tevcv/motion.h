/* Motion and background: optical flow, foreground models, motion history. */
#ifndef TEVCV_MOTION_H
#define TEVCV_MOTION_H

#include "tevcv/pyramids.h"
#include "tevcv/types.h"

/**
 * @defgroup motion Motion and background
 * Optical flow, foreground models, motion history.
 * @image html motion.png
 * @{
 */

/** The scratch memory of a tracker. Serves one call at a time. */
typedef struct TevOptFlowPyrLKState TevOptFlowPyrLKState;

/**
 * @name Pyramidal optical flow
 * Tracks points from one image to the next: on each level of two pyramids, from the coarsest to the finest, the
 * position of a square window of `windowSize` pixels is moved by Newton steps until the second image matches the first.
 * With the gradient (Ix, Iy) of the first image I and the difference d = I - J to the second, one step solves
 *
 * \f[ \begin{pmatrix} \sum I_x^2   & \sum I_x I_y \\ \sum I_x I_y & \sum I_y^2   \end{pmatrix}
 *     \begin{pmatrix} dx \\ dy \end{pmatrix} = \begin{pmatrix} \sum I_x d \\ \sum I_y d \end{pmatrix} \f]
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

/**
 * The Gaussian foreground model of a video: at each pixel five Gaussian modes of its value, best first. The fields are
 * the library's to write; the images may be read between calls.
 */
typedef struct TevForegroundGaussianState {
  Tev8u* backgroundImage; /**< the mean of each pixel's best mode, interleaved like the frames */
  Tev32s backgroundStep;
  Tev8u* foregroundImage; /**< the last mask, one byte a pixel */
  Tev32s foregroundStep;
  Tev32s window;          /**< 200: the call on which old samples fade */
  Tev32s numModes;        /**< 5 */
  Tev64f backgroundRatio; /**< 0.7: the share of all weight that the background's modes exceed together */
  Tev64f matchThreshold;  /**< 2.5: standard deviations from a mode's mean within which a value belongs to it */
  Tev64f unused[2];       /**< 15 and 0.05 */
  Tev64f initVariance;    /**< 900: the variance of a new mode */
  void** pixels;          /**< the modes of each pixel, in raster order; `pixels[0]` is the block that holds them all */
  Tev32s frameCount;      /**< calls since creation */
} TevForegroundGaussianState;

/**
 * @name Gaussian foreground model
 * Tells what moves in front of a still background. Each pixel keeps a mixture of Gaussian modes of its value x, with a
 * count of samples, a weight, and for each channel a mean and a variance.
 *
 * `...InitAlloc` makes a model from the first frame: one mode of count 1, weight 1 and variance 12.5 about the pixel,
 * and four of count 0 and weight 0, with mean 0 and variance 12.5. The latter take part in matching like any other.
 *
 * `teviForegroundGaussian` takes one more frame. For each pixel:
 *
 *   1. The first mode with \f$t^2 \sigma^2 > (\mu - x)^2\f$, summed over channels on both sides, matches: t is
 *      `matchThreshold`, \f$\mu\f$ and \f$\sigma^2\f$ the mode's mean and variance.
 *   2. With n the sum of all counts, weights move towards 1 (the mode that matched) or 0 (the others) by 1 / (n + 1) of
 *      the way. The matched mode's count grows by 1, its mean moves by d / count, d = x - mean, and its variance by
 *      (d^2 - variance) / count. On the one call where `frameCount` reaches `window`, weights move by 1 / `window`
 *      instead, mean and variance by 1 / (`window` * weight), and counts stay. From the next call on it is as before.
 *   3. If none matched, the worst mode becomes count 1, variance `initVariance` and mean x, and every weight
 *      count / n; on the one call its weight becomes 1 / n and the others' are multiplied by 1 - 1 / `window`.
 *   4. Modes are ranked by weight / standard deviation, those of count 0 last.
 *   5. The pixel of `backgroundImage` is the best mode's mean, rounded.
 *   6. `dst` is 0, background, if the position where a mode matched (in step 1, before ranking) is among the first
 *      whose weights together exceed `backgroundRatio`, else 255, foreground.
 *
 * Frames are `roiSize` pixels of one channel or three interleaved ones, the size that the model was made with: a call
 * does not compare them. With a region smaller in width or height, the model's top left part is used. `dst` has one
 * byte a pixel in both forms; its step is not tested. `ref` must not be null and is not used otherwise.
 *
 * A model takes 140 bytes a pixel for its modes (300 with three channels) and 17920 (38400) to spare, a pointer a pixel
 * and 1024 bytes to spare, the two images and this record, in five blocks.
 *
 * `...Free` frees the images and the array `pixels`. It does not free the modes, nor the record itself, and programs
 * may go on reading both. Whoever makes many models and wants all memory back keeps `pixels[0]` and `state` before the
 * call, which invalidates `pixels`, and passes each to tevsFree after it:
 *
 *     void* modes = state->pixels[0];
 *     teviForegroundGaussianFree_8u_C1R(state);
 *     tevsFree(modes);
 *     tevsFree(state);
 *
 * One model serves one call at a time.
 *
 * Literature: C. Stauffer, W. E. L. Grimson, "Adaptive Background Mixture Models for Real-Time Tracking", 1999;
 * P. KaewTraKulPong, R. Bowden, "An Improved Adaptive Background Mixture Model for Real-Time Tracking with Shadow
 * Detection", 2001.
 * @return #tevStatusNullPtr (any pointer), #tevStatusBadSize (width or height below 1), #tevStatusBadStep (`srcStep`
 *         shorter than the row), in that order. `...InitAlloc`: also #tevStatusNoMemory, with `*state` as it was.
 *         `...Free`: #tevStatusNullPtr.
 * @{
 */
TEV_API TevStatus teviForegroundGaussianInitAlloc_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* ref,
                                                         TevForegroundGaussianState** state);
TEV_API TevStatus teviForegroundGaussianInitAlloc_8u_C3R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* ref,
                                                         TevForegroundGaussianState** state);
TEV_API TevStatus teviForegroundGaussian_8u_C1R(const Tev8u* src, int srcStep, Tev8u* ref, int refStep, Tev8u* dst,
                                                int dstStep, TevSize roiSize, TevForegroundGaussianState* state);
TEV_API TevStatus teviForegroundGaussian_8u_C3R(const Tev8u* src, int srcStep, Tev8u* ref, int refStep, Tev8u* dst,
                                                int dstStep, TevSize roiSize, TevForegroundGaussianState* state);
TEV_API TevStatus teviForegroundGaussianFree_8u_C1R(TevForegroundGaussianState* state);
TEV_API TevStatus teviForegroundGaussianFree_8u_C3R(TevForegroundGaussianState* state);
/** @} */

/**
 * The histogram foreground model of a video: at each pixel tables of what was seen there. The fields are the library's
 * to write; the images may be read between calls.
 */
typedef struct TevForegroundHistogramState {
  Tev8u* background; /**< the learned background, interleaved like the frames */
  Tev32s backgroundStep;
  Tev8u* changeMask; /**< 255 where the last detected frame differs from `previous` */
  Tev32s changeStep;
  Tev8u* backgroundDiffMask; /**< 255 where the last detected frame differs from `background` */
  Tev32s backgroundDiffStep;
  Tev8u* previous; /**< the last frame learned from */
  Tev32s previousStep;
  Tev32s unusedWords[2];   /**< 0 */
  void* pixels;            /**< a record for each pixel, in raster order */
  Tev32s colorLevels;      /**< 128 */
  Tev32s colorPeek;        /**< 15: entries of a colour table that decisions look at */
  Tev32s colorEntries;     /**< 25 */
  Tev32s pairLevels;       /**< 64 */
  Tev32s pairPeek;         /**< 25: entries of a pair table that decisions look at */
  Tev32s pairEntries;      /**< 40 */
  Tev32s unusedFlags[2];   /**< 1 */
  Tev32f backgroundAlpha;  /**< 0.1: the rate at which `background` follows the frames */
  Tev32f slowAlpha;        /**< 0.005: the rate of a learned table, and what rare means to detection */
  Tev32f fastAlpha;        /**< 0.1: the rate of a table that is not learned yet */
  Tev32f delta;            /**< 2: how many levels a colour may be off */
  Tev32f learnedThreshold; /**< 0.9: the sum of probabilities beyond which a table is learned */
  Tev32f unusedFactor;     /**< 0 */
} TevForegroundHistogramState;

/**
 * @name Histogram foreground model
 * Tells what moves in front of a background that may move itself (leaves, water, flicker). Each pixel keeps two tables
 * of features with their probabilities p, and pb as background: colours, for as long as it does not change, and pairs
 * of colours before and after, where it does.
 *
 * `...InitAlloc` makes a model whose background and previous frame are `src`. Then come, for each frame, a detection,
 * whatever cleaning of the mask the caller likes, and an update with the same frame, in this order: the update reads
 * the change masks of the detection.
 *
 * `teviForegroundHistogram` writes `dst`, 255 for foreground and 0 for background, one byte a pixel:
 *
 *   - A pixel has changed where it differs from the previous frame, in some channel, by more than a threshold: the
 *     greatest standard deviation among the differences t to 255, for all t, and at least 10. Likewise for the
 *     background image.
 *   - Changed since the previous frame: foreground if the pair table is not learned yet, or if
 *     \f$2 P \sum pb \le \sum p\f$ over those of the first `pairPeek` entries with p above `slowAlpha` whose first
 *     three bytes are within 8 of the three bytes at the pixel; P is the pixel's own probability of background. With
 *     one channel the three bytes are the pixel and the two behind it in memory, for which the region's last byte
 *     stands past the region's end, and an entry's are the value before, the value after and 0.
 *   - Else, different from the background: foreground if the colour table is learned and
 *     \f$2 P \sum pb \le \sum p\f$ over those of the first `colorPeek` entries with p above `slowAlpha` that are within
 *     4 of the colour.
 *   - Else background.
 *
 * `teviForegroundHistogramUpdate` learns. `mask` is 0 where the frame shows background. The pair table learns where the
 * pixel changed or the table is not learned yet, the colour table where the pixel did not change; a = `fastAlpha`
 * until the table is learned, `slowAlpha` afterwards:
 *
 *   - P is multiplied by 1 - a, and a added if the pixel is background.
 *   - From the first entry to the first that is not near the feature, p and pb are multiplied by 1 - a; entries that
 *     fall below 1e-10 become 0. An entry with p = pb = a is put in front of the first whose p is not greater; the last
 *     entry is lost. Entries near the feature are not added to.
 *   - If the first entries' p sum up to more than `learnedThreshold`, the table is learned. If that minus P times the
 *     sum of pb is more, too, every pb becomes (p - pb * P) / (1 - P); for colours P becomes 1 - P as well.
 *
 * Where `mask` is 0 the background image takes over the frame, by a tenth if nothing changed, else wholly. At the end
 * the previous frame becomes `src`.
 *
 * Frames are `roiSize` pixels of one channel or three interleaved ones, the size that the model was made with: a call
 * does not compare them. With a region smaller in width or height, the model's top left part is used. Only `srcStep` is
 * tested. `ref` must not be null and is not used otherwise. A model takes 960 bytes a pixel (972 in 64-bit programs)
 * and its images, at most 2147483647 bytes a block. One model serves one call at a time.
 *
 * Literature: L. Li, W. Huang, I. Y. H. Gu, Q. Tian, "Foreground Object Detection from Videos Containing Complex
 * Background", 2003; P. L. Rosin, "Thresholding for Change Detection", 1998.
 * @return #tevStatusNullPtr (any pointer), #tevStatusBadSize (width or height below 1), #tevStatusBadStep (`srcStep`
 *         shorter than the row), in that order. `...InitAlloc`: also #tevStatusNoMemory, with `*state` as it was.
 *         `...Free`: #tevStatusNullPtr.
 * @{
 */
TEV_API TevStatus teviForegroundHistogramInitAlloc_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* ref,
                                                          TevForegroundHistogramState** state);
TEV_API TevStatus teviForegroundHistogramInitAlloc_8u_C3R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* ref,
                                                          TevForegroundHistogramState** state);
TEV_API TevStatus teviForegroundHistogram_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                 TevSize roiSize, TevForegroundHistogramState* state);
TEV_API TevStatus teviForegroundHistogram_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                 TevSize roiSize, TevForegroundHistogramState* state);
TEV_API TevStatus teviForegroundHistogramUpdate_8u_C1R(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                                       Tev8u* ref, int refStep, TevSize roiSize,
                                                       TevForegroundHistogramState* state);
TEV_API TevStatus teviForegroundHistogramUpdate_8u_C3R(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                                       Tev8u* ref, int refStep, TevSize roiSize,
                                                       TevForegroundHistogramState* state);
TEV_API TevStatus teviForegroundHistogramFree_8u_C1R(TevForegroundHistogramState* state);
TEV_API TevStatus teviForegroundHistogramFree_8u_C3R(TevForegroundHistogramState* state);
/** @} */

/**
 * @name Motion history
 * Keeps in `mhi` the time at which motion was last seen at each pixel. Where the silhouette is not 0, the pixel becomes
 * `timestamp`; elsewhere it becomes 0 if it is older than `timestamp` - `mhiDuration`, and stays otherwise (also where
 * it equals that limit). Both images are `roiSize` pixels of one channel.
 *
 * The members with integer silhouettes round the limit to a float and order floats by their bits: -0.0 comes just below
 * 0.0, NaN beyond the infinities of its sign. With a NaN duration all older pixels are cleared. The member with a float
 * silhouette does not round the limit; there a silhouette of NaN is no motion, and a NaN in `mhi` is cleared.
 *
 * Literature: A. F. Bobick, J. W. Davis, "The Recognition of Human Movement Using Temporal Templates", 2001.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a step shorter than the
 *         row), #tevStatusStepNotAligned (a step that is no multiple of the element's size), #tevStatusBadPoint (a
 *         negative `mhiDuration`; in the `32f` member NaN as well), in that order.
 * @{
 */
TEV_API TevStatus teviUpdateMotionHistory_8u32f_C1IR(const Tev8u* silhouette, int silhouetteStep, Tev32f* mhi,
                                                     int mhiStep, TevSize roiSize, Tev32f timestamp,
                                                     Tev32f mhiDuration);
TEV_API TevStatus teviUpdateMotionHistory_16u32f_C1IR(const Tev16u* silhouette, int silhouetteStep, Tev32f* mhi,
                                                      int mhiStep, TevSize roiSize, Tev32f timestamp,
                                                      Tev32f mhiDuration);
TEV_API TevStatus teviUpdateMotionHistory_32f_C1IR(const Tev32f* silhouette, int silhouetteStep, Tev32f* mhi,
                                                   int mhiStep, TevSize roiSize, Tev32f timestamp, Tev32f mhiDuration);
/** @} */

/** @} */

#endif
