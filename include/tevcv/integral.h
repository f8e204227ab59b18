/* Integral images, deviation in a window, and the stages of a Haar cascade. */
#ifndef TEVCV_INTEGRAL_H
#define TEVCV_INTEGRAL_H

#include "tevcv/types.h"

/**
 * @defgroup integral Integral images and cascades
 * Integral images, deviation in a window, and the stages of a Haar cascade.
 * @image html integral.png
 * @{
 */

/**
 * @name Integral images
 * Summed tables of an 8-bit image of `roiSize` pixels: any rectangle's sum then costs four reads.
 *
 * Upright: `dst` has `width` + 1 columns and `height` + 1 rows, and
 *
 * \f[ dst[y][x] = value + \sum_{j < y} \sum_{i < x} src[j][i]. \f]
 *
 * Tilted by 45 degrees: `dst` has `width` + 2 columns and `height` + 2 rows. Rows 0 and 1 are `value`, and for each
 * source row j the table row j + 2 is
 *
 *     dst[j+2][0]         = dst[j+1][1]
 *     dst[j+2][x]         = src[j][x-1] + src[j][x] + dst[j+1][x-1] + dst[j+1][x+1] - dst[j][x],  0 < x < width
 *     dst[j+2][width]     = src[j][width-1] + dst[j+1][width-1] + dst[j+1][width+1] - dst[j][width]
 *     dst[j+2][width+1]   = dst[j+1][width].
 *
 * The `Sqr` members also fill `sqr`, a table of the same shape over the squares of the pixels, starting from
 * `valueSqr`. `Tev32s` tables wrap modulo 2^32. `Tev32f` and `Tev64f` elements are summed in extended precision in the
 * order of the formula and rounded once, where they are stored; the sum along a row of the upright tables is exact.
 * Tables do not overlap the source or each other.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (`srcStep` below the width
 *         or a table's step below its row), #tevStatusStepNotAligned (a table's step that is no multiple of its
 *         element's size), in that order.
 *
 * @see F. C. Crow, "Summed-area tables for texture mapping", 1984; R. Lienhart, J. Maydt, "An extended set of Haar-like
 *      features for rapid object detection", 2002.
 * @{
 */
TEV_API TevStatus teviIntegral_8u32s_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roiSize,
                                         Tev32s value);
TEV_API TevStatus teviIntegral_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                         Tev32f value);
TEV_API TevStatus teviTiltedIntegral_8u32s_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roiSize,
                                               Tev32s value);
TEV_API TevStatus teviTiltedIntegral_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                               Tev32f value);
TEV_API TevStatus teviSqrIntegral_8u32s_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, Tev32s* sqr,
                                            int sqrStep, TevSize roiSize, Tev32s value, Tev32s valueSqr);
TEV_API TevStatus teviSqrIntegral_8u32s64f_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, Tev64f* sqr,
                                               int sqrStep, TevSize roiSize, Tev32s value, Tev64f valueSqr);
TEV_API TevStatus teviSqrIntegral_8u32f64f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, Tev64f* sqr,
                                               int sqrStep, TevSize roiSize, Tev32f value, Tev64f valueSqr);
TEV_API TevStatus teviTiltedSqrIntegral_8u32s_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, Tev32s* sqr,
                                                  int sqrStep, TevSize roiSize, Tev32s value, Tev32s valueSqr);
TEV_API TevStatus teviTiltedSqrIntegral_8u32s64f_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep,
                                                     Tev64f* sqr, int sqrStep, TevSize roiSize, Tev32s value,
                                                     Tev64f valueSqr);
TEV_API TevStatus teviTiltedSqrIntegral_8u32f64f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep,
                                                     Tev64f* sqr, int sqrStep, TevSize roiSize, Tev32f value,
                                                     Tev64f valueSqr);
/** @} */

/**
 * @name Standard deviation in a window
 * The standard deviation of the pixels under a fixed rectangle, at every position of it:
 *
 * \f[ dst = \sqrt{\max(0, Q / A - (S / A)^2)}, \f]
 *
 * S and Q being the rectangle's sums in the table `src` and the table of squares `sqr`, A its area. A NaN under the
 * root gives 0. `src` and `sqr` point at the elements where the window of output pixel (0, 0) begins; `roiSize` is the
 * output's size. For output pixel (i, j) the tables are read at row + j and column + i, with T either table:
 *
 *     upright: T[y+h][x+w] - T[y][x+w] + T[y][x] - T[y+h][x],  A = w h
 *     tilted:  T[x+y+w+h][x-y+w-h] - T[x+y+h][x-y-h] - T[x+y+w][x-y+w] + T[x+y][x-y],  A = 2 w h
 *
 * where (x, y) and w x h are the offset and the size of `rect`. Columns of the tilted form may be negative: the caller
 * sees to it that they can be read. Differences of `Tev32s` tables wrap and are read as signed; everything else is
 * computed in extended precision and rounded where it is stored. The members whose tables are floats keep A as
 * `Tev32f`.
 *
 * The `Sfs` members store the deviation times 2^-`scaleFactor`, plus 0.5, truncated. A result that `Tev32s` does not
 * hold is stored as its lowest value; nothing saturates.
 * @return #tevStatusNullPtr, #tevStatusBadSize (`roiSize` below 1 x 1), #tevStatusBadStep (a table's row does not hold
 *         the output's width plus x + w elements, plus x + y + w + h - 1 in the tilted form, or `dstStep` is shorter
 *         than the output's row), #tevStatusStepNotAligned, #tevStatusBadSize again (a `rect` that starts below 0 or
 *         is smaller than 1 x 1), in that order.
 *
 * @see P. Viola, M. Jones, "Rapid object detection using a boosted cascade of simple features", 2001.
 * @{
 */
TEV_API TevStatus teviRectStdDev_32f_C1R(const Tev32f* src, int srcStep, const Tev64f* sqr, int sqrStep, Tev32f* dst,
                                         int dstStep, TevSize roiSize, TevRect rect);
TEV_API TevStatus teviRectStdDev_32s32f_C1R(const Tev32s* src, int srcStep, const Tev64f* sqr, int sqrStep, Tev32f* dst,
                                            int dstStep, TevSize roiSize, TevRect rect);
TEV_API TevStatus teviRectStdDev_32s_C1RSfs(const Tev32s* src, int srcStep, const Tev32s* sqr, int sqrStep, Tev32s* dst,
                                            int dstStep, TevSize roiSize, TevRect rect, int scaleFactor);
TEV_API TevStatus teviTiltedRectStdDev_32f_C1R(const Tev32f* src, int srcStep, const Tev64f* sqr, int sqrStep,
                                               Tev32f* dst, int dstStep, TevSize roiSize, TevRect rect);
TEV_API TevStatus teviTiltedRectStdDev_32s32f_C1R(const Tev32s* src, int srcStep, const Tev64f* sqr, int sqrStep,
                                                  Tev32f* dst, int dstStep, TevSize roiSize, TevRect rect);
TEV_API TevStatus teviTiltedRectStdDev_32s_C1RSfs(const Tev32s* src, int srcStep, const Tev32s* sqr, int sqrStep,
                                                  Tev32s* dst, int dstStep, TevSize roiSize, TevRect rect,
                                                  int scaleFactor);
/** @} */

/** One stage of a cascade: weak classifiers over weighted rectangle sums. Built by `teviHaarClassifierInitAlloc_*`,
 *  read-only while it is applied, and freed by the `teviHaarClassifierFree_*` of its type. */
typedef struct TevHaarClassifierState TevHaarClassifierState;

/**
 * @name Building a stage
 * A stage has `length` weak classifiers. Classifier k adds up `pCount[k]` weighted rectangle sums; `pFeature` and
 * `pWeight` hold the rectangles and weights of all classifiers one behind the other. It votes `pAboveValue[k]` where
 * the sum is at or above `pThreshold[k]` times the norm of the position, `pBelowValue[k]` otherwise.
 *
 * Rectangles (x, y, w, h) lie relative to the position. An upright one has the corners A = (x+w, y+h), B = (x, y+h),
 * C = (x+w, y), D = (x, y); a tilted one A = (x+w-h, y+w+h), B = (x-h, y+h), C = (x+w, y+w), D = (x, y). Its sum is
 * T[A] - T[B] - T[C] + T[D] in the integral image of its kind. The upright forms store the classifiers of two
 * rectangles first, then those of three, then all others, each in the given order; since floats are added in stored
 * order, that order is part of the result. With `length` 0 the stage has no classifiers; one rectangle must be there
 * all the same.
 * @return #tevStatusNullPtr and #tevStatusBadSize (`length` below 0, an element of `pCount` below 1), with `pState`
 *         untouched; #tevStatusNoMemory, likewise; #tevStatusBadArg (a rectangle that starts below 0 or is smaller than
 *         1 x 1, or a tilted one with h above x + 1), with null in `pState`.
 * @{
 */
TEV_API TevStatus teviHaarClassifierInitAlloc_32f(TevHaarClassifierState** pState, const TevRect* pFeature,
                                                  const Tev32f* pWeight, const Tev32f* pThreshold,
                                                  const Tev32f* pBelowValue, const Tev32f* pAboveValue,
                                                  const Tev32s* pCount, int length);
TEV_API TevStatus teviHaarClassifierInitAlloc_32s(TevHaarClassifierState** pState, const TevRect* pFeature,
                                                  const Tev32s* pWeight, const Tev32s* pThreshold,
                                                  const Tev32s* pBelowValue, const Tev32s* pAboveValue,
                                                  const Tev32s* pCount, int length);
TEV_API TevStatus teviTiltedHaarClassifierInitAlloc_32f(TevHaarClassifierState** pState, const TevRect* pFeature,
                                                        const Tev32f* pWeight, const Tev32f* pThreshold,
                                                        const Tev32f* pBelowValue, const Tev32f* pAboveValue,
                                                        const Tev32s* pCount, int length);
TEV_API TevStatus teviTiltedHaarClassifierInitAlloc_32s(TevHaarClassifierState** pState, const TevRect* pFeature,
                                                        const Tev32s* pWeight, const Tev32s* pThreshold,
                                                        const Tev32s* pBelowValue, const Tev32s* pAboveValue,
                                                        const Tev32s* pCount, int length);
/** @} */

/**
 * @name A stage's end, reach and tilting
 * `...Free` frees a stage; #tevStatusNullPtr for null.
 *
 * `teviGetHaarClassifierSize_*` gives the largest column of a corner C and the largest row of a corner A over all
 * rectangles, both from 0 upward: the window of an upright stage. (0, 0) for a stage without classifiers.
 * #tevStatusNullPtr for a null argument.
 *
 * `teviTiltHaarFeatures_*` turns the rectangles of each classifier whose element of `pSelect` (one for each classifier,
 * in the order in which they were given) is not 0 into tilted ones, in place: a stage for `teviApplyMixed...`. With
 * `anchorFlag` not 0 the rectangle hangs from its top-left corner as a tilted one is built; with 0 it stands on its
 * bottom-left corner, with b = y + h: A = (x, b), B = (x-h, y), C = (x+w, b-w), D = (x+w-h, y-w). Once only, and
 * never for a stage that was built tilted. Where `pSelect` selects nothing, nothing changes.
 * @return #tevStatusNullPtr (`state` or `pSelect`); #tevStatusBadArg (the stage has been tilted).
 * @{
 */
TEV_API TevStatus teviHaarClassifierFree_32f(TevHaarClassifierState* state);
TEV_API TevStatus teviHaarClassifierFree_32s(TevHaarClassifierState* state);
TEV_API TevStatus teviGetHaarClassifierSize_32f(const TevHaarClassifierState* state, TevSize* pSize);
TEV_API TevStatus teviGetHaarClassifierSize_32s(const TevHaarClassifierState* state, TevSize* pSize);
TEV_API TevStatus teviTiltHaarFeatures_32f(const Tev8u* pSelect, int anchorFlag, TevHaarClassifierState* state);
TEV_API TevStatus teviTiltHaarFeatures_32s(const Tev8u* pSelect, int anchorFlag, TevHaarClassifierState* state);
/** @} */

/**
 * @name Applying a stage
 * At every position whose element of `mask` is not 0, the votes of the stage's classifiers are added in stored order.
 * Where the sum v is below `threshold` the mask element becomes 0; all others stay and are counted in `pPositive`. A
 * cascade is one call for each stage with the same mask. Rejected positions read nothing from the tables. With s a
 * classifier's weighted sum, t its threshold and n the element of `norm`, the vote is the value above where
 * \f$t n \le s\f$. So a NaN in t n or s votes below, and a position whose v is NaN stays.
 *
 * `src` is the table's element at position (0, 0) of `roiSize`, `norm` as a rule the deviation in the window. The
 * `Mixed` members read tilted classifiers from `tilt`, at one row down and one column right of the position, for the
 * extra border of a tilted table; the others read every classifier from `src`.
 *
 * `32f` and `32s32f` compute in extended precision; differences of `Tev32s` tables wrap at 32 bits. In `32s` all
 * wraps at 32 bits and compares signed. The mixed `32s` member widens weight times difference, wrapped at 32 bits, to
 * 64 bits, adds there, shifts left by -`scaleFactor` and compares with t n in 64 bits. `scaleFactor` means nothing to
 * the other.
 * @return #tevStatusNullPtr, #tevStatusBadSize, #tevStatusBadStep (a step below its row: 4 bytes a position, 1 for the
 *         mask), #tevStatusStepNotAligned (a step of the 32-bit images that is no multiple of 4), and from
 *         `teviApplyMixedHaarClassifier_32s_C1RSfs` #tevStatusBadArg (`scaleFactor` above 0), in that order.
 *
 * @see P. Viola, M. Jones, "Rapid object detection using a boosted cascade of simple features", 2001; R. Lienhart, J.
 *      Maydt, "An extended set of Haar-like features for rapid object detection", 2002.
 * @{
 */
TEV_API TevStatus teviApplyHaarClassifier_32f_C1R(const Tev32f* src, int srcStep, const Tev32f* norm, int normStep,
                                                  Tev8u* mask, int maskStep, TevSize roiSize, Tev32s* pPositive,
                                                  Tev32f threshold, const TevHaarClassifierState* state);
TEV_API TevStatus teviApplyHaarClassifier_32s32f_C1R(const Tev32s* src, int srcStep, const Tev32f* norm, int normStep,
                                                     Tev8u* mask, int maskStep, TevSize roiSize, Tev32s* pPositive,
                                                     Tev32f threshold, const TevHaarClassifierState* state);
TEV_API TevStatus teviApplyHaarClassifier_32s_C1RSfs(const Tev32s* src, int srcStep, const Tev32s* norm, int normStep,
                                                     Tev8u* mask, int maskStep, TevSize roiSize, Tev32s* pPositive,
                                                     Tev32s threshold, const TevHaarClassifierState* state,
                                                     int scaleFactor);
TEV_API TevStatus teviApplyMixedHaarClassifier_32f_C1R(const Tev32f* src, int srcStep, const Tev32f* tilt, int tiltStep,
                                                       const Tev32f* norm, int normStep, Tev8u* mask, int maskStep,
                                                       TevSize roiSize, Tev32s* pPositive, Tev32f threshold,
                                                       const TevHaarClassifierState* state);
TEV_API TevStatus teviApplyMixedHaarClassifier_32s32f_C1R(const Tev32s* src, int srcStep, const Tev32s* tilt,
                                                          int tiltStep, const Tev32f* norm, int normStep, Tev8u* mask,
                                                          int maskStep, TevSize roiSize, Tev32s* pPositive,
                                                          Tev32f threshold, const TevHaarClassifierState* state);
TEV_API TevStatus teviApplyMixedHaarClassifier_32s_C1RSfs(const Tev32s* src, int srcStep, const Tev32s* tilt,
                                                          int tiltStep, const Tev32s* norm, int normStep, Tev8u* mask,
                                                          int maskStep, TevSize roiSize, Tev32s* pPositive,
                                                          Tev32s threshold, const TevHaarClassifierState* state,
                                                          int scaleFactor);
/** @} */

/** @} */

#endif
