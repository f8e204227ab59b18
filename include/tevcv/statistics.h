/* Statistics of a region: mean and deviation, extrema with index, norms. */
#ifndef TEVCV_STATISTICS_H
#define TEVCV_STATISTICS_H

#include "tevcv/types.h"

/**
 * @defgroup statistics Statistics
 * Mean and deviation, extrema with index and norms of a region.
 * @image html statistics.png
 * @{
 */

/**
 * @name Mean
 * Mean of the pixels that a mask selects: `*pMean` = \f$S / n\f$, with S the sum of the n elements whose mask element
 * is not 0, in double precision. Where the mask selects nothing it is 0.0, and the call returns #tevStatusOk.
 *
 * `src` is `roiSize` pixels of one channel (`C1`) or of three interleaved ones (`C3C`), of which `coi`, 1 to 3, names
 * the one that counts. `mask` is `roiSize` bytes. Steps are bytes. Integer sums are exact. Sums of floats run in scan
 * order in extended precision, over each thread's rows where a large region is shared among threads, so that their last
 * bits depend on the number of threads and on nothing else. A NaN or an infinity that the mask leaves out has no
 * effect.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a step shorter than the
 *         row), #tevStatusStepNotAligned (`srcStep` is no multiple of the element's size), #tevStatusBadCoi, in that
 *         order; teviMean_16u_C1MR() tests the alignment of `srcStep` before `maskStep`. #tevStatusNoMemory where more
 *         than 32 threads share the region and their sums find no memory.
 * @{
 */
TEV_API TevStatus teviMean_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                   Tev64f* pMean);
TEV_API TevStatus teviMean_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                   Tev64f* pMean);
TEV_API TevStatus teviMean_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                    Tev64f* pMean);
TEV_API TevStatus teviMean_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                    Tev64f* pMean);
TEV_API TevStatus teviMean_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                    int coi, Tev64f* pMean);
TEV_API TevStatus teviMean_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                    int coi, Tev64f* pMean);
TEV_API TevStatus teviMean_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                     int coi, Tev64f* pMean);
TEV_API TevStatus teviMean_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                     int coi, Tev64f* pMean);
/** @} */

/**
 * @name Mean and standard deviation
 * `*pMean` = m and `*pStdDev` = s, the population form, with
 * \f[ m = S_1 / n, \qquad s = \sqrt{|S_2 / n - m^2|}, \f]
 * S1 and S2 being the sums of the n elements and of their squares. All pixels count, or those whose mask element is not
 * 0 (`MR`). Either result may be null and is then not written. Where the mask selects nothing both are 0.0, and the
 * call returns #tevStatusOk.
 *
 * Images, mask, `coi` and sums are those of the mean. Floats with a deviation below sqrt(0.05) of their mean are read a
 * second time, and the deviation becomes \f$\sqrt{\sum (x - m)^2 / n}\f$: the two-pass algorithm, which keeps the
 * digits that the difference of two large squares loses (T. F. Chan, G. H. Golub, R. J. LeVeque, "Algorithms for
 * Computing the Sample Variance: Analysis and Recommendations", 1983).
 * @return #tevStatusNullPtr (the image or the mask), #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a
 *         step shorter than the row), #tevStatusStepNotAligned (`srcStep` is no multiple of the element's size),
 *         #tevStatusBadCoi, in that order. #tevStatusNoMemory as above.
 * @{
 */
TEV_API TevStatus teviMean_StdDev_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev64f* pMean,
                                         Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_8s_C1R(const Tev8s* src, int srcStep, TevSize roiSize, Tev64f* pMean,
                                         Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_16u_C1R(const Tev16u* src, int srcStep, TevSize roiSize, Tev64f* pMean,
                                          Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_32f_C1R(const Tev32f* src, int srcStep, TevSize roiSize, Tev64f* pMean,
                                          Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_8u_C3CR(const Tev8u* src, int srcStep, TevSize roiSize, int coi, Tev64f* pMean,
                                          Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_8s_C3CR(const Tev8s* src, int srcStep, TevSize roiSize, int coi, Tev64f* pMean,
                                          Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_16u_C3CR(const Tev16u* src, int srcStep, TevSize roiSize, int coi, Tev64f* pMean,
                                           Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_32f_C3CR(const Tev32f* src, int srcStep, TevSize roiSize, int coi, Tev64f* pMean,
                                           Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                          TevSize roiSize, Tev64f* pMean, Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep,
                                          TevSize roiSize, Tev64f* pMean, Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                           TevSize roiSize, Tev64f* pMean, Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                           TevSize roiSize, Tev64f* pMean, Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                           TevSize roiSize, int coi, Tev64f* pMean, Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep,
                                           TevSize roiSize, int coi, Tev64f* pMean, Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                            TevSize roiSize, int coi, Tev64f* pMean, Tev64f* pStdDev);
TEV_API TevStatus teviMean_StdDev_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                            TevSize roiSize, int coi, Tev64f* pMean, Tev64f* pStdDev);
/** @} */

/**
 * @name Minimum and maximum with index
 * The smallest and the largest element of a region and the pixel of each, from the top-left pixel at (0, 0). Of equal
 * elements the first in scan order is reported. All pixels count, or those whose mask element is not 0 (`MR`). Images,
 * mask and `coi` are those of the mean; the values are floats for every type. All four outputs are written and none may
 * be null.
 *
 * Where the mask selects nothing the values are 0.0 at (0, 0). Where all selected elements equal the largest value of
 * their type (for the minimum) or the smallest (for the maximum), the row is reported as 0, and the column is that of
 * the first such element in row 0, or 0. A NaN is passed over: a region of nothing else gives 3.4028235e+38 and
 * -3.4028235e+38 at (0, 0). Those are also the values where only infinities of the other side are found. Results do
 * not depend on the number of threads.
 * @return #tevStatusNullPtr (the image or the mask), #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a
 *         step shorter than the row), #tevStatusStepNotAligned (`srcStep` is no multiple of the element's size),
 *         #tevStatusBadCoi, in that order. With more than 32 threads a call on 16384 pixels or more takes a block of 24
 *         bytes for each thread from the allocator and never returns it; #tevStatusNoMemory if there is none.
 * @{
 */
TEV_API TevStatus teviMinMaxIndx_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev32f* pMinVal,
                                        Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_8s_C1R(const Tev8s* src, int srcStep, TevSize roiSize, Tev32f* pMinVal,
                                        Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_16u_C1R(const Tev16u* src, int srcStep, TevSize roiSize, Tev32f* pMinVal,
                                         Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_32f_C1R(const Tev32f* src, int srcStep, TevSize roiSize, Tev32f* pMinVal,
                                         Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_8u_C3CR(const Tev8u* src, int srcStep, TevSize roiSize, int coi, Tev32f* pMinVal,
                                         Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_8s_C3CR(const Tev8s* src, int srcStep, TevSize roiSize, int coi, Tev32f* pMinVal,
                                         Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_16u_C3CR(const Tev16u* src, int srcStep, TevSize roiSize, int coi, Tev32f* pMinVal,
                                          Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_32f_C3CR(const Tev32f* src, int srcStep, TevSize roiSize, int coi, Tev32f* pMinVal,
                                          Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                         TevSize roiSize, Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex,
                                         TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep,
                                         TevSize roiSize, Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex,
                                         TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                          TevSize roiSize, Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex,
                                          TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                          TevSize roiSize, Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex,
                                          TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                          TevSize roiSize, int coi, Tev32f* pMinVal, Tev32f* pMaxVal,
                                          TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep,
                                          TevSize roiSize, int coi, Tev32f* pMinVal, Tev32f* pMaxVal,
                                          TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                           TevSize roiSize, int coi, Tev32f* pMinVal, Tev32f* pMaxVal,
                                           TevPoint* pMinIndex, TevPoint* pMaxIndex);
TEV_API TevStatus teviMinMaxIndx_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                           TevSize roiSize, int coi, Tev32f* pMinVal, Tev32f* pMaxVal,
                                           TevPoint* pMinIndex, TevPoint* pMaxIndex);
/** @} */

/**
 * @name Norms of an image
 * The infinity, L1 or L2 norm of the selected pixels of one image: \f$\max |x|\f$, \f$\sum |x|\f$,
 * \f$\sqrt{\sum x^2}\f$. The definitions are those of Gene H. Golub and Charles F. Van Loan, "Matrix Computations",
 * 1983.
 * @par Arguments
 * `src` is an image of `roiSize` pixels, of one channel (`C1MR`) or of three interleaved ones (`C3CMR`), of which `coi`
 * (1 to 3) names the channel that is measured. `mask` has `roiSize` elements of one byte; a pixel whose element is 0
 * counts for nothing. `srcStep` and `maskStep` are in bytes. `pValue` receives the norm, in units of the image's
 * values; a mask of zeros gives 0.0.
 * @par Range
 * L1 of `8u` and `8s` is one signed 32-bit sum that wraps past 2^31 and can therefore be negative; in a call that runs
 * in parallel each thread's share wraps on its own. All other integer norms are exact: `16u` sums are kept as doubles,
 * exact up to 2^53. Float sums run in extended precision in scan order and are stored as a double after each row; a
 * call in parallel adds the threads' sums in order, so each number of threads has its own last bits. `Inf_32f` takes a
 * selected NaN for the largest value; in a parallel call that holds for the first thread's share alone.
 * @return #tevStatusNullPtr; #tevStatusBadSize (width or height below 1); #tevStatusBadStep (`srcStep` shorter than the
 *         row); #tevStatusStepNotAligned (`srcStep` no multiple of the element's size); #tevStatusBadStep (`maskStep`
 *         shorter than the row); #tevStatusBadCoi; in that order. #tevStatusNoMemory when more than 32 threads find no
 *         memory for their sums. `pValue` is not written then.
 * @{
 */
TEV_API TevStatus teviNorm_Inf_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       Tev64f* pValue);
TEV_API TevStatus teviNorm_Inf_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                        int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_Inf_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       Tev64f* pValue);
TEV_API TevStatus teviNorm_Inf_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                        int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_Inf_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                        TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNorm_Inf_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                         TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_Inf_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                        TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNorm_Inf_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                         TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_L1_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                      Tev64f* pValue);
TEV_API TevStatus teviNorm_L1_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_L1_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                      Tev64f* pValue);
TEV_API TevStatus teviNorm_L1_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_L1_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       Tev64f* pValue);
TEV_API TevStatus teviNorm_L1_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                        TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_L1_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       Tev64f* pValue);
TEV_API TevStatus teviNorm_L1_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                        TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_L2_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                      Tev64f* pValue);
TEV_API TevStatus teviNorm_L2_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_L2_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                      Tev64f* pValue);
TEV_API TevStatus teviNorm_L2_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_L2_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       Tev64f* pValue);
TEV_API TevStatus teviNorm_L2_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep,
                                        TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNorm_L2_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                       Tev64f* pValue);
TEV_API TevStatus teviNorm_L2_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep,
                                        TevSize roiSize, int coi, Tev64f* pValue);
/** @} */

/**
 * @name Norms of a difference
 * The infinity, L1 or L2 norm of the difference of two images: \f$\max |a - b|\f$, \f$\sum |a - b|\f$,
 * \f$\sqrt{\sum (a - b)^2}\f$ over the selected pixels.
 * @par Arguments
 * `src1` and `src2` are images of `roiSize` pixels, of one channel (`C1MR`) or of three interleaved ones (`C3CMR`), of
 * which `coi` (1 to 3) names the channel that is measured. `mask` has `roiSize` elements of one byte; a pixel whose
 * element is 0 counts for nothing. All steps are in bytes. `pValue` receives the norm, in units of the images' values;
 * a mask of zeros gives 0.0.
 * @par Range
 * L1 of `8u` and `8s` is one signed 32-bit sum that wraps past 2^31; in a call that runs in parallel each thread's
 * share wraps on its own. All other integer norms are exact, `16u` sums up to 2^53. Floats are subtracted and added in
 * extended precision, in scan order. `Inf_32f` compares as floats: a NaN is never the largest distance.
 * @return #tevStatusNullPtr; #tevStatusBadSize (width or height below 1); #tevStatusBadStep (a step shorter than its
 *         row); #tevStatusStepNotAligned (`src1Step` or `src2Step` no multiple of the element's size);
 *         #tevStatusBadCoi; in that order. #tevStatusNoMemory when more than 32 threads find no memory for their sums.
 *         `pValue` is not written then.
 * @{
 */
TEV_API TevStatus teviNormDiff_Inf_8u_C1MR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_Inf_8u_C3CMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_Inf_8s_C1MR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_Inf_8s_C3CMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_Inf_16u_C1MR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_Inf_16u_C3CMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                             const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_Inf_32f_C1MR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_Inf_32f_C3CMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                             const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L1_8u_C1MR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L1_8u_C3CMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L1_8s_C1MR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L1_8s_C3CMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L1_16u_C1MR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L1_16u_C3CMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L1_32f_C1MR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L1_32f_C3CMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L2_8u_C1MR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L2_8u_C3CMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L2_8s_C1MR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L2_8s_C3CMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L2_16u_C1MR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L2_16u_C3CMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L2_32f_C1MR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormDiff_L2_32f_C3CMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
/** @} */

/**
 * @name Relative norms
 * The norm of the difference of two images over the same norm of the second:
 * \f[ \frac{\max |a - b|}{\max |b|}, \quad \frac{\sum |a - b|}{\sum |b|}, \quad
 *     \sqrt{\frac{\sum (a - b)^2}{\sum b^2}} \f]
 * over the selected pixels; the relative error of `src1` as an approximation of `src2` (Gene H. Golub and Charles F.
 * Van Loan, "Matrix Computations", 1983).
 * @par Arguments
 * As for the norms of a difference; `pValue` receives a number without a unit.
 * @par Range
 * As for the norms of a difference. The 32-bit sums of `L1_8u` and `L1_8s` wrap in numerator and denominator alike.
 * Both sums run apart through the whole image and are divided once, in extended precision.
 * @return #tevStatusNullPtr, #tevStatusBadSize, #tevStatusBadStep, #tevStatusStepNotAligned, #tevStatusBadCoi and
 *         #tevStatusNoMemory as for the norms of a difference. #tevStatusDivByZeroWarning when the denominator is 0, as
 *         under a mask of zeros: `pValue` then holds NaN where the numerator is 0 too, else an infinity of its sign.
 * @{
 */
TEV_API TevStatus teviNormRel_Inf_8u_C1MR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_Inf_8u_C3CMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_Inf_8s_C1MR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_Inf_8s_C3CMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_Inf_16u_C1MR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_Inf_16u_C3CMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_Inf_32f_C1MR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_Inf_32f_C3CMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                            const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L1_8u_C1MR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                         const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L1_8u_C3CMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L1_8s_C1MR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                         const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L1_8s_C3CMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L1_16u_C1MR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L1_16u_C3CMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L1_32f_C1MR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L1_32f_C3CMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L2_8u_C1MR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                         const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L2_8u_C3CMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L2_8s_C1MR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                         const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L2_8s_C3CMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L2_16u_C1MR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L2_16u_C3CMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L2_32f_C1MR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                          const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue);
TEV_API TevStatus teviNormRel_L2_32f_C3CMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                           const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue);
/** @} */

/** @} */

#endif
