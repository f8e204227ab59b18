/* Segmentation: flood fill, watershed, gradient segmentation, labelling. */
#ifndef TEVCV_SEGMENTATION_H
#define TEVCV_SEGMENTATION_H

#include "tevcv/types.h"

/**
 * @defgroup segmentation Segmentation
 * Flood fill, watershed, gradient segmentation, labelling.
 * @image html segmentation.png
 * @{
 */

/** How a step from pixel to pixel counts in a watershed, and to which neighbours it goes. */
typedef Tev32s tevWatershedNorm;
enum {
  tevWatershedNormChess = 0,   /**< 8 neighbours, every step 1 */
  tevWatershedNormCity = 1,    /**< 4 neighbours, every step 1 */
  tevWatershedNormChamfer = 2, /**< 8 neighbours, straight 11, diagonal 15; sweep method only */
  tevWatershedNormEikonal = 3  /**< 4 neighbours, Euclidean length in steps of 64; sweep method only */
};

/** Method of a watershed, one at least, and boundary of a segmentation, of which there may be none. */
enum {
  tevWatershedQueue = 1,   /**< flooding through queues; wins over the sweep method */
  tevWatershedSweep = 2,   /**< sweeps that relax a cost map */
  tevWatershedBound4 = 64, /**< mark boundaries between segments, seen by 4 neighbours */
  tevWatershedBound8 = 128 /**< mark boundaries between segments, seen by 8 neighbours */
};

/**
 * @name Watershed
 * Segments a grey image from markers: the image is a landscape, and every marker a spring whose water rises evenly
 * everywhere. A pixel belongs to the water that reaches it first, at the lowest level; on a plateau the nearer water
 * comes first.
 *
 * `markers`, `roiSize` pixels like `src`, holds labels 1..254 where springs are and 0 elsewhere, and receives the label
 * of every pixel. Label 255 is boundary: given by the caller it floods like any other, and neighbours of it stay free
 * to take a label.
 *
 * - #tevWatershedQueue floods with one first-in first-out queue for each grey level. `norm` is 0 or 1. With
 *   #tevWatershedBound4 or #tevWatershedBound8 a pixel that touches two labels as it is reached becomes 255; so do
 *   markers that touch each other. The first of them decides during the flood, the second among the markers.
 * - #tevWatershedSweep finds for each pixel the path from a marker with the lowest highest pixel, and among those the
 *   shortest in the steps of `norm`, by sweeps in alternate directions. Boundaries are drawn afterwards: of a pair of
 *   pixels with different labels the one farther from its marker becomes 255. `buffer` shall be a multiple of 32 then.
 *   #tevWatershedBound4 comes before #tevWatershedBound8.
 *
 * `buffer` is scratch of the length in bytes that the size query gives for `roiSize`.
 * @return The segmentation: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (shorter
 *         than the row), #tevStatusBadArg (`flags` without a method; `norm` not one of the method's), in that order.
 *         The query: #tevStatusNullPtr, #tevStatusBadSize; a size beyond 31 bits wraps.
 * @see F. Meyer, "Color image segmentation", 1992; L. Vincent, P. Soille, "Watersheds in digital spaces: an efficient
 *      algorithm based on immersion simulations", 1991; A. X. Falcao, J. Stolfi, R. de Alencar Lotufo, "The image
 *      foresting transform: theory, algorithms, and applications", 2004.
 * @{
 */
TEV_API TevStatus teviSegmentWatershedGetBufferSize_8u_C1R(TevSize roiSize, int* bufferSize);
TEV_API TevStatus teviSegmentWatershed_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep,
                                               TevSize roiSize, tevWatershedNorm norm, uint32_t flags, Tev8u* buffer);
/** @} */

/**
 * @name Gradient segmentation
 * Grows regions from markers: the next pixel to be labelled is always the one that differs least from a labelled
 * neighbour of it, so that regions spread through smooth areas and stop at edges. The difference of two pixels is that
 * of their grey values, with three channels the largest of the three. Pixels of equal difference are labelled in the
 * order in which they were found.
 *
 * `markers`, one channel of `roiSize` pixels, holds labels 1..253 and 0 elsewhere, and receives the labels; 254 is the
 * boundary label. `norm` 0 grows to 8 neighbours, 1 to 4. With #tevWatershedBound4 or #tevWatershedBound8 in `flags` a
 * pixel that touches another label as it is labelled becomes 254; the second wins. The outermost rows and columns take
 * no part and come back as 255, markers on them included; where there is nothing to grow, `markers` stays as it was.
 *
 * `buffer` is scratch, at any address, of the length in bytes that the size query gives for `roiSize`.
 * @return The segmentation: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (shorter
 *         than the row), #tevStatusBadArg (`norm` neither 0 nor 1), in that order. The query: #tevStatusNullPtr,
 *         #tevStatusBadSize; a size beyond 31 bits gives the largest `int`.
 * @see R. Adams, L. Bischof, "Seeded region growing", 1994; F. Meyer, "Color image segmentation", 1992.
 * @{
 */
TEV_API TevStatus teviSegmentGradientGetBufferSize_8u_C1R(TevSize roiSize, int* bufferSize);
TEV_API TevStatus teviSegmentGradientGetBufferSize_8u_C3R(TevSize roiSize, int* bufferSize);
TEV_API TevStatus teviSegmentGradient_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep,
                                              TevSize roiSize, int norm, uint32_t flags, Tev8u* buffer);
TEV_API TevStatus teviSegmentGradient_8u_C3IR(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep,
                                              TevSize roiSize, int norm, uint32_t flags, Tev8u* buffer);
/** @} */

/** What a fill did. */
typedef struct TevConnectedRegion {
  Tev64f area;     /**< number of pixels filled */
  Tev64f value[3]; /**< the new value; 0 for channels that the image does not have */
  TevRect rect;    /**< bounding rectangle of the fill, in pixels of the region */
} TevConnectedRegion;

/**
 * @name Flood fill
 * Fills the connected pixels around `seed` with `newValue`, in place, and describes them in `region`. `4Con` members
 * connect the pixels above, below, left and right, `8Con` members the diagonal ones too. A pixel p joins
 *
 *   | family                   | if, in every channel,                                                    |
 *   |--------------------------|--------------------------------------------------------------------------|
 *   | `4Con`, `8Con`           | p equals the seed pixel                                                  |
 *   | `Range4Con`, `Range8Con` | seed - lowerDiff <= p <= seed + upperDiff                                |
 *   | `Grad4Con`, `Grad8Con`   | q - lowerDiff <= p <= q + upperDiff for a neighbour q that has joined    |
 *
 * `image` is `roiSize` pixels of one or three interleaved channels. Values and differences are passed by value for one
 * channel and as pointers to three elements for three. `region` tells the number of pixels, the new value and the
 * bounding rectangle. `buffer` is scratch of the length in bytes that the size query gives, at any address:
 * teviFloodFillGetSize (6 * width * height + 32) for the first two rows of the table, teviFloodFillGetSize_Grad
 * ((width + 2) * (height + 2) more) for the third; both count modulo 2^32.
 *
 * In the first two rows a seed that equals the new value ends the call at once, with `image` and `region` untouched.
 * Bounds of bytes are clamped to 0 and 255, those of floats are not rounded to float. A NaN equals everything, is never
 * inside a fixed range and always inside a floating one.
 *
 * A new value should lie outside its own fixed range. One inside fills each pixel once; `area` may count pixels twice
 * then in the `Range8Con` members, where the filled runs form no ring and the run below the seed's (above it in the
 * last row) reaches beyond the seed run's right end: that run and what hangs on it.
 *
 * A floating range compares old values only and always runs. Runs of pixels grow along a row: to the left each pixel is
 * compared with its neighbour in the run, to the right with that or with the run that it was found from, in the row
 * above or below; a pixel that only a later neighbour would admit may stay out. Differences of floats, lower - upper
 * and lower + upper, are halved and rounded to float before they are compared.
 *
 * Three rules for arguments are looser than elsewhere, for callers that rely on them: a row's step is measured against
 * one element a pixel, also for three channels; rows of floats advance by `imageStep` / 4 whole elements, with only an
 * odd step refused (in the `Grad` members a step that is no multiple of 4); and teviFloodFill_Grad8Con_8u_C3IR does not
 * test `newValue`, `lowerDiff` and `upperDiff` for null.
 * @return A fill: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep,
 *         #tevStatusStepNotAligned (floats), #tevStatusBadPoint (`seed` outside the region; in the `Grad` members of
 *         floats also a difference below 0 or NaN), in that order. A query: #tevStatusNullPtr, #tevStatusBadSize.
 * @see A. R. Smith, "Tint fill", 1979; P. S. Heckbert, "A seed fill algorithm", in Graphics Gems, 1990.
 * @{
 */
TEV_API TevStatus teviFloodFillGetSize(TevSize roiSize, int* bufferSize);
TEV_API TevStatus teviFloodFillGetSize_Grad(TevSize roiSize, int* bufferSize);
TEV_API TevStatus teviFloodFill_4Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                             Tev8u newValue, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_4Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                             const Tev8u* newValue, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_4Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                              Tev32f newValue, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_4Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                              const Tev32f* newValue, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_8Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                             Tev8u newValue, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_8Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                             const Tev8u* newValue, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_8Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                              Tev32f newValue, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_8Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                              const Tev32f* newValue, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Range4Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                  Tev8u newValue, Tev8u lowerDiff, Tev8u upperDiff,
                                                  TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Range4Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                  const Tev8u* newValue, const Tev8u* lowerDiff, const Tev8u* upperDiff,
                                                  TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Range4Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                   Tev32f newValue, Tev32f lowerDiff, Tev32f upperDiff,
                                                   TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Range4Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                   const Tev32f* newValue, const Tev32f* lowerDiff,
                                                   const Tev32f* upperDiff, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Range8Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                  Tev8u newValue, Tev8u lowerDiff, Tev8u upperDiff,
                                                  TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Range8Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                  const Tev8u* newValue, const Tev8u* lowerDiff, const Tev8u* upperDiff,
                                                  TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Range8Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                   Tev32f newValue, Tev32f lowerDiff, Tev32f upperDiff,
                                                   TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Range8Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                   const Tev32f* newValue, const Tev32f* lowerDiff,
                                                   const Tev32f* upperDiff, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Grad4Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                 Tev8u newValue, Tev8u lowerDiff, Tev8u upperDiff,
                                                 TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Grad4Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                 const Tev8u* newValue, const Tev8u* lowerDiff, const Tev8u* upperDiff,
                                                 TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Grad4Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                  Tev32f newValue, Tev32f lowerDiff, Tev32f upperDiff,
                                                  TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Grad4Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                  const Tev32f* newValue, const Tev32f* lowerDiff,
                                                  const Tev32f* upperDiff, TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Grad8Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                 Tev8u newValue, Tev8u lowerDiff, Tev8u upperDiff,
                                                 TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Grad8Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                 const Tev8u* newValue, const Tev8u* lowerDiff, const Tev8u* upperDiff,
                                                 TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Grad8Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                  Tev32f newValue, Tev32f lowerDiff, Tev32f upperDiff,
                                                  TevConnectedRegion* region, Tev8u* buffer);
TEV_API TevStatus teviFloodFill_Grad8Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                                  const Tev32f* newValue, const Tev32f* lowerDiff,
                                                  const Tev32f* upperDiff, TevConnectedRegion* region, Tev8u* buffer);
/** @} */

/**
 * @name Marker labelling
 * Numbers the connected components of a marker image in place. Every non-zero marker first becomes 255; then, rows top
 * to bottom and columns left to right, each component met is filled with the next label, from `minLabel` to `maxLabel`
 * and round again: with more components than labels, labels repeat. `markersNum` receives the number of components.
 * `norm` 0 connects 8 neighbours, `norm` 1 connects 4. `markers` is `roiSize` pixels, `buffer` scratch of the length in
 * bytes that the query gives (that of teviFloodFillGetSize), at any address.
 * @return The labelling: #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep
 *         (`markerStep` below the width), #tevStatusBadArg (`minLabel` below 1, `maxLabel` above 254 or below
 *         `minLabel`; `norm` other than 0 and 1), in that order. The query: #tevStatusNullPtr, #tevStatusBadSize.
 * @see A. Rosenfeld, J. L. Pfaltz, "Sequential operations in digital picture processing", 1966.
 * @{
 */
TEV_API TevStatus teviLabelMarkersGetBufferSize_8u_C1R(TevSize roiSize, int* bufferSize);
TEV_API TevStatus teviLabelMarkers_8u_C1IR(Tev8u* markers, int markerStep, TevSize roiSize, int minLabel, int maxLabel,
                                           int norm, int* markersNum, Tev8u* buffer);
/** @} */

/**
 * @name Segment bounds
 * Draws boundaries between labelled regions in place: row by row from the top, a pixel becomes `boundaryValue` where a
 * neighbour that came before it, above or to the left, has a label that differs and is not `boundaryValue`. `norm` 0
 * looks at the pixels above left, above, above right and left, `norm` 1 at those above and left. The row above and the
 * pixel to the left are taken as they stand by then, so a boundary is one pixel wide; in the first row only the left
 * neighbour counts. A label equal to `boundaryValue` counts as boundary in every comparison.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (`markerStep` below the
 *         width), #tevStatusBadArg (`norm` other than 0 and 1), in that order.
 * @{
 */
TEV_API TevStatus teviBoundSegments_8u_C1IR(Tev8u* markers, int markerStep, TevSize roiSize, Tev8u boundaryValue,
                                            int norm);
/** @} */

/** @} */

#endif
