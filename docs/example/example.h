/* The worked example of the page for people who add a family. */
#ifndef EXAMPLE_H
#define EXAMPLE_H

#include "tevcv/types.h"

//! [header]
/**
 * @name Mean absolute difference
 * `*pMean` = \f$ \frac{1}{n} \sum |src1 - src2| \f$ over the n pixels of a region: how far two images are apart, in
 * units of their pixels. Both are `roiSize` pixels of one channel; steps are bytes.
 *
 * Sums of bytes are exact. Sums of floats run in scan order in extended precision, over each thread's rows where a
 * large region is shared among threads, and are rounded to double behind each share: their last bits depend on the
 * number of threads and on nothing else. A NaN, or infinity minus infinity, gives NaN.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a step shorter than the
 *         row), #tevStatusStepNotAligned (a step that is no multiple of the element's size), in that order.
 *         #tevStatusNoMemory where more than 32 threads share the region and their sums find no memory. `*pMean` is not
 *         written then.
 * @see D. I. Barnea, H. F. Silverman, "A class of algorithms for fast digital image registration", 1972.
 * @{
 */
TEV_API TevStatus teviMeanAbsDiff_8u_C1R(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                         TevSize roiSize, Tev64f* pMean);
TEV_API TevStatus teviMeanAbsDiff_32f_C1R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                          TevSize roiSize, Tev64f* pMean);
/** @} */
//! [header]

#endif
