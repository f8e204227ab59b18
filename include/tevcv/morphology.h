/* Morphology: structuring elements, erosion, dilation and what is composed of them, reconstruction. */
#ifndef TEVCV_MORPHOLOGY_H
#define TEVCV_MORPHOLOGY_H

#include "tevcv/types.h"

/**
 * @defgroup morphology Morphology
 * Structuring elements, erosion, dilation and what is composed of them, reconstruction.
 * @image html morphology.png
 * @{
 */

/** A structuring element made ready for erosion and dilation, with the scratch memory of one running call. */
typedef struct TevMorphState TevMorphState;

/** A structuring element and its reflection made ready for the composed operations, with a scratch image. */
typedef struct TevMorphAdvState TevMorphAdvState;

/** A kernel of values made ready for grey-scale morphology. */
typedef struct TevMorphGrayState TevMorphGrayState;

/**
 * @name Minimum and maximum over a rectangle
 * dst(x, y) = the least (greatest) src(i, j), each channel on its own, over `maskSize` pixels:
 * x - anchor.x <= i < x - anchor.x + maskSize.width, and likewise y, with i and j clamped to the region. A pixel costs
 * about the same for every mask size. Images are `roiSize` pixels and must not overlap. Of equal floats (zeros of
 * either sign) the first in row order is stored; a window with a NaN gives one of its elements.
 *
 * `buffer` is scratch of the length in bytes that `...GetBufferSize` gives for the region's width and the mask's size,
 * at any address (2147483647 for all that is longer). The anchor counts from the mask's top-left pixel.
 * @return `...GetBufferSize`: #tevStatusNullPtr, #tevStatusBadSize (`roiWidth` below 1), #tevStatusBadMaskSize (a mask
 *         size below 1), in that order. The filters: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1),
 *         #tevStatusBadMaskSize, #tevStatusBadAnchor (outside the mask), then for `src` and then for `dst`
 *         #tevStatusBadStep (shorter than the row) and #tevStatusStepNotAligned (no whole number of floats).
 * @see M. van Herk, "A fast algorithm for local minimum and maximum filters on rectangular and octagonal kernels",
 * 1992.
 * @{
 */
TEV_API TevStatus teviFilterMinGetBufferSize_8u_C1R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMinGetBufferSize_8u_C3R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMinGetBufferSize_8u_C4R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMinGetBufferSize_32f_C1R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMinGetBufferSize_32f_C3R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMinGetBufferSize_32f_C4R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMaxGetBufferSize_8u_C1R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMaxGetBufferSize_8u_C3R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMaxGetBufferSize_8u_C4R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMaxGetBufferSize_32f_C1R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMaxGetBufferSize_32f_C3R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMaxGetBufferSize_32f_C4R(int roiWidth, int maskWidth, int maskHeight, int* size);
TEV_API TevStatus teviFilterMinBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                      TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterMinBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                      TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterMinBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                      TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterMinBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                       Tev8u* buffer);
TEV_API TevStatus teviFilterMinBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                       Tev8u* buffer);
TEV_API TevStatus teviFilterMinBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                       Tev8u* buffer);
TEV_API TevStatus teviFilterMaxBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                      TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterMaxBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                      TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterMaxBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                      TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                      Tev8u* buffer);
TEV_API TevStatus teviFilterMaxBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                       Tev8u* buffer);
TEV_API TevStatus teviFilterMaxBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                       Tev8u* buffer);
TEV_API TevStatus teviFilterMaxBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                       TevSize roiSize, TevSize maskSize, TevPoint anchor,
                                                       Tev8u* buffer);
/** @} */

/**
 * @name Structuring elements
 * A state holds a structuring element for erosion and dilation: `mask` is `maskSize` bytes, row by row without padding,
 * of which those that are not 0 belong to the element; `anchor` counts from its top-left byte. The mask is copied. The
 * state serves regions up to `roiWidth` pixels wide and of any height, one running call at a time. Building finds out
 * which of four ways suits the element: one solid rectangle (on the anchor or off it), runs through the anchor's column
 * with one run a row (discs, diamonds), no cell at all (a copy), or anything else. Masks of 256 rows and more always
 * count as the last.
 *
 * `...GetSize` tells the bytes of a state, `...Init` builds it there, `...InitAlloc` allocates it and `Free` gives it
 * back (only what `...InitAlloc` made). `...GetSize` takes the anchor to be the mask's centre (width / 2, height / 2):
 * another anchor may lead to another way and to a size of its own, which `...InitAlloc` takes into account. Sizes past
 * 2147483647 are told as that, and cannot be allocated.
 * @return #tevStatusNullPtr (`mask`), #tevStatusBadSize (`roiWidth` or a mask size below 1), #tevStatusBadAnchor
 *         (outside the mask), #tevStatusNullPtr (`size` or `state`), #tevStatusNoMemory (`...InitAlloc`; `state` is
 * left as it was), in that order. `Free`: #tevStatusNullPtr.
 * @{
 */
TEV_API TevStatus teviMorphologyGetSize_8u_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphologyGetSize_8u_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphologyGetSize_8u_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphologyGetSize_32f_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphologyGetSize_32f_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphologyGetSize_32f_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphologyInit_8u_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                            TevMorphState* state);
TEV_API TevStatus teviMorphologyInit_8u_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                            TevMorphState* state);
TEV_API TevStatus teviMorphologyInit_8u_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                            TevMorphState* state);
TEV_API TevStatus teviMorphologyInit_32f_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                             TevMorphState* state);
TEV_API TevStatus teviMorphologyInit_32f_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                             TevMorphState* state);
TEV_API TevStatus teviMorphologyInit_32f_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                             TevMorphState* state);
TEV_API TevStatus teviMorphologyInitAlloc_8u_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                                 TevMorphState** state);
TEV_API TevStatus teviMorphologyInitAlloc_8u_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                                 TevMorphState** state);
TEV_API TevStatus teviMorphologyInitAlloc_8u_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                                 TevMorphState** state);
TEV_API TevStatus teviMorphologyInitAlloc_32f_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                                  TevMorphState** state);
TEV_API TevStatus teviMorphologyInitAlloc_32f_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                                  TevMorphState** state);
TEV_API TevStatus teviMorphologyInitAlloc_32f_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                                  TevMorphState** state);
TEV_API TevStatus teviMorphologyFree(TevMorphState* state);
/** @} */

/**
 * @name Erosion and dilation
 * The least (erosion) or greatest (dilation) pixel under the cells (i, j) of the structuring element B with anchor a,
 * \f[ dst(x, y) = \min_{(i, j) \in B} src(x + i - a_x, y + j - a_y), \qquad
 *     dst(x, y) = \max_{(i, j) \in B} src(x + i - a_x, y + j - a_y), \f]
 * each channel on its own, positions clamped to the region. An element without cells gives a copy. Images are `roiSize`
 * pixels and must not overlap; `borderType` is #tevBorderRepl. `state` is one built for the same element type and
 * channels.
 *
 * For a general element, floats are folded row by row of the element from +3.4028235e38 (erosion) or -3.4028235e38: in
 * erosion the fold takes over each value unless that is greater, NaN too, and the next value replaces a NaN; in
 * dilation it takes over each value that is greater or equal, so that a NaN is passed over.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a step shorter than the
 *         row), #tevStatusStepNotAligned (no whole number of floats), #tevStatusBadArg (`borderType`),
 * #tevStatusBadSize (the region is wider than the state's), in that order.
 * @see J. Serra, "Image Analysis and Mathematical Morphology", 1982.
 * @{
 */
TEV_API TevStatus teviErodeBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                  TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviErodeBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                  TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviErodeBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                  TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviErodeBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                   TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviErodeBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                   TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviErodeBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                   TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviDilateBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                   TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviDilateBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                   TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviDilateBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                   TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviDilateBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                    TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviDilateBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                    TevSize roiSize, TevBorderType borderType, TevMorphState* state);
TEV_API TevStatus teviDilateBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                    TevSize roiSize, TevBorderType borderType, TevMorphState* state);
/** @} */

/**
 * @name Opening, closing, top-hat, black-hat and gradient
 * Compositions of an erosion and a dilation; the second step takes the structuring element turned by 180 degrees.
 *
 * | Operation | dst                                          |
 * |-----------|----------------------------------------------|
 * | Open      | dilation of the erosion of src               |
 * | Close     | erosion of the dilation of src               |
 * | Tophat    | src - opening, at least 0                    |
 * | Blackhat  | closing - src, at least 0                    |
 * | Gradient  | dilation - erosion of src, both with the element as given, at least 0 |
 *
 * A state holds both elements and a scratch image of `roiSize` pixels; masks, anchors and sizes are as for the plain
 * states, but elements made of runs count as general ones. The operations accept regions no wider than the state's
 * whose height times row bytes (rounded up to 32) is not below the state's: a smaller region is refused. A taller one
 * is served with a scratch image that the call takes and frees. One call at a time may use a state. `dst` may be `src`
 * in Open and Close alone. An error of a step leaves `dst` unwritten or with an intermediate.
 * @return `...GetSize`: #tevStatusBadSize (height below 1), #tevStatusNullPtr (`size`), then the statuses of the plain
 *         states. `...Init`: #tevStatusBadSize (height), #tevStatusNullPtr (`state`), then likewise. `...InitAlloc`:
 *         #tevStatusNullPtr (`state`), then as `...GetSize`, #tevStatusNoMemory, then as `...Init`; `state` is left as
 *         it was on every failure. `Free`: #tevStatusNullPtr. The operations: #tevStatusNullPtr, #tevStatusBadSize
 *         (width or height below 1), #tevStatusBadStep, #tevStatusStepNotAligned, #tevStatusBadArg (`borderType` is not
 *         #tevBorderRepl), #tevStatusBadSize (wider or smaller than the state's region), #tevStatusNoMemory (no scratch
 *         for a taller region), in that order.
 * @see J. Serra, "Image Analysis and Mathematical Morphology", 1982; F. Meyer, "Iterative image transformations for
 * an automatic screening of cervical smears", 1979.
 * @{
 */
TEV_API TevStatus teviMorphAdvGetSize_8u_C1R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphAdvGetSize_8u_C3R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphAdvGetSize_8u_C4R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphAdvGetSize_32f_C1R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphAdvGetSize_32f_C3R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphAdvGetSize_32f_C4R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphAdvInit_8u_C1R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                          TevPoint anchor);
TEV_API TevStatus teviMorphAdvInit_8u_C3R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                          TevPoint anchor);
TEV_API TevStatus teviMorphAdvInit_8u_C4R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                          TevPoint anchor);
TEV_API TevStatus teviMorphAdvInit_32f_C1R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask,
                                           TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphAdvInit_32f_C3R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask,
                                           TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphAdvInit_32f_C4R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask,
                                           TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphAdvInitAlloc_8u_C1R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask,
                                               TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphAdvInitAlloc_8u_C3R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask,
                                               TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphAdvInitAlloc_8u_C4R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask,
                                               TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphAdvInitAlloc_32f_C1R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask,
                                                TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphAdvInitAlloc_32f_C3R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask,
                                                TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphAdvInitAlloc_32f_C4R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask,
                                                TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphAdvFree(TevMorphAdvState* state);
TEV_API TevStatus teviMorphOpenBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                             TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphOpenBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                             TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphOpenBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                             TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphOpenBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphOpenBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphOpenBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphCloseBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphCloseBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphCloseBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphCloseBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphCloseBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphCloseBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphTophatBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                               TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphTophatBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                               TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphTophatBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                               TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphTophatBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphTophatBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphTophatBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphBlackhatBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                 TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphBlackhatBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                 TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphBlackhatBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                 TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphBlackhatBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                  TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphBlackhatBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                  TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphBlackhatBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                  TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphGradientBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                 TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphGradientBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                 TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphGradientBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep,
                                                 TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphGradientBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                  TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphGradientBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                  TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
TEV_API TevStatus teviMorphGradientBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                                  TevSize roiSize, TevBorderType borderType, TevMorphAdvState* state);
/** @} */

/**
 * @name Grey-scale morphology
 * With a kernel of values k, row i and column j, and its anchor a, dilation is
 * \f[ dst(x, y) = \max_{i, j} \; src(x + j - a_x, y + i - a_y) + k(i, j) \f]
 * and erosion the minimum of the same sums, positions clamped to the region. The kernel is not reflected, and erosion
 * adds its values too: negate them to subtract. Byte results are limited to 0..255; sums beyond 32 bits saturate.
 * Floats start from -3.4028235e38 (dilation) or 3.4028235e38, which therefore bound the result from one side, and a sum
 * that is NaN is passed over.
 *
 * `mask` holds the kernel's `maskSize` values row by row without padding, all of which count; it is copied. `anchor`
 * counts from its top-left cell. A state serves regions up to `roiSize`, any number of running calls at a time, and has
 * to be one for the same element type. Images are `roiSize` pixels and must not overlap; `borderType` is
 * #tevBorderRepl. A call costs the region's area times the kernel's.
 *
 * `...GetSize` tells the bytes of a state, `...Init` builds it there, `...InitAlloc` allocates it and `...Free` gives
 * it back (only what `...InitAlloc` made).
 * @return `...GetSize`: #tevStatusNullPtr, #tevStatusBadSize (a size of the region or the mask below 1). `...Init`,
 *         `...InitAlloc`: the same, then #tevStatusBadAnchor (outside the mask), #tevStatusNoMemory (`...InitAlloc`;
 *         `state` is left as it was on every failure). `...Free`: #tevStatusNullPtr. The operations: #tevStatusNullPtr,
 *         #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a step shorter than the row),
 *         #tevStatusStepNotAligned (no whole number of floats), #tevStatusBadArg (`borderType`), #tevStatusBadSize
 *         (wider or taller than the state's region), in that order.
 * @see S. Sternberg, "Grayscale morphology", 1986.
 * @{
 */
TEV_API TevStatus teviMorphGrayGetSize_8u_C1R(TevSize roiSize, const Tev32s* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphGrayGetSize_32f_C1R(TevSize roiSize, const Tev32f* mask, TevSize maskSize, int* size);
TEV_API TevStatus teviMorphGrayInit_8u_C1R(TevMorphGrayState* state, TevSize roiSize, const Tev32s* mask,
                                           TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphGrayInit_32f_C1R(TevMorphGrayState* state, TevSize roiSize, const Tev32f* mask,
                                            TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphGrayInitAlloc_8u_C1R(TevMorphGrayState** state, TevSize roiSize, const Tev32s* mask,
                                                TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphGrayInitAlloc_32f_C1R(TevMorphGrayState** state, TevSize roiSize, const Tev32f* mask,
                                                 TevSize maskSize, TevPoint anchor);
TEV_API TevStatus teviMorphGrayFree_8u_C1R(TevMorphGrayState* state);
TEV_API TevStatus teviMorphGrayFree_32f_C1R(TevMorphGrayState* state);
TEV_API TevStatus teviGrayDilateBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, TevMorphGrayState* state);
TEV_API TevStatus teviGrayErodeBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                             TevBorderType borderType, TevMorphGrayState* state);
TEV_API TevStatus teviGrayDilateBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevBorderType borderType, TevMorphGrayState* state);
TEV_API TevStatus teviGrayErodeBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, TevMorphGrayState* state);
/** @} */

/**
 * @name Reconstruction
 * By dilation: the marker `srcDst` grows into its neighbours, never above the mask `src`, until nothing changes: the
 * largest image under `src` that the dilations of min(marker, mask) reach. By erosion: likewise with min and max
 * exchanged, from max(marker, mask). Neighbours are the four beside a pixel (`norm` #tevNormL1) or all eight
 * (#tevNormInf). A marker on the wrong side of the mask is brought to the mask; that is no error. The result does not
 * depend on the number of threads; regions of at least 11 x 11 pixels are worked on by up to two.
 *
 * Images are `roiSize` pixels and must not overlap. `buffer` is scratch of the length in bytes that
 * `...GetBufferSize` gives for the region, at any address. A float marker that is NaN counts as the mask's value, a
 * mask that is NaN lets nothing through.
 * @return `...GetBufferSize`: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1). The operations:
 *         #tevStatusNullPtr, #tevStatusBadSize, #tevStatusBadStep (a step shorter than the row),
 *         #tevStatusStepNotAligned (no whole number of floats), #tevStatusBadArg (`norm`), in that order.
 * @see L. Vincent, "Morphological grayscale reconstruction in image analysis: applications and efficient algorithms",
 * 1993.
 * @{
 */
TEV_API TevStatus teviMorphReconstructGetBufferSize_8u_C1(TevSize roiSize, int* size);
TEV_API TevStatus teviMorphReconstructGetBufferSize_32f_C1(TevSize roiSize, int* size);
TEV_API TevStatus teviMorphReconstructDilate_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep,
                                                     TevSize roiSize, Tev8u* buffer, TevNorm norm);
TEV_API TevStatus teviMorphReconstructErode_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep,
                                                    TevSize roiSize, Tev8u* buffer, TevNorm norm);
TEV_API TevStatus teviMorphReconstructDilate_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                                      TevSize roiSize, Tev8u* buffer, TevNorm norm);
TEV_API TevStatus teviMorphReconstructErode_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                                     TevSize roiSize, Tev8u* buffer, TevNorm norm);
/** @} */

/** @} */

#endif
