/* Element types, records, status codes and enumerations that every family shares. C99 and C++. */
#ifndef TEVCV_TYPES_H
#define TEVCV_TYPES_H

#include <stdint.h>

/**
 * @defgroup types Types and statuses
 * Element types, records, status codes and enumerations that every family shares.
 * @{
 */

/** C linkage, from either language. */
#if defined(__cplusplus)
#define TEVCV_EXTERN_C extern "C"
#else
#define TEVCV_EXTERN_C extern
#endif

/** Marks a public function: unmangled, visible in the shared library. */
#define TEV_API TEVCV_EXTERN_C __attribute__((visibility("default")))

/**
 * @name Element types
 * As the tokens `8u`, `8s`, `16u`, `16s`, `32s`, `32f`, `64f` in a function's name give them.
 * @{
 */
typedef uint8_t Tev8u;
typedef int8_t Tev8s;
typedef uint16_t Tev16u;
typedef int16_t Tev16s;
typedef int32_t Tev32s;
typedef float Tev32f;
typedef double Tev64f;
/** @} */

/** Size of a region in pixels. */
typedef struct TevSize {
  Tev32s width;
  Tev32s height;
} TevSize;

/** A pixel position, from the top-left pixel of a region. */
typedef struct TevPoint {
  Tev32s x;
  Tev32s y;
} TevPoint;

/** A rectangle of pixels. */
typedef struct TevRect {
  Tev32s x;
  Tev32s y;
  Tev32s width;
  Tev32s height;
} TevRect;

/** What a call returns: 0 success, negative an error with nothing written, positive a warning with the work done. */
typedef Tev32s TevStatus;

/** Every status that the library returns. */
enum {
  tevStatusBadCompareMode = -9999, /**< the comparison of a threshold is neither of its two values */
  tevStatusStepNotAligned = -108,  /**< a row step is not a whole number of elements */
  tevStatusBadMetric = -56,        /**< a metric weight of a distance mask is not positive */
  tevStatusBadChannels = -53,      /**< a channel count other than 1 or 3 */
  tevStatusBadCoi = -52,           /**< a channel of interest outside 1..3 */
  tevStatusBadAnchor = -34,        /**< the anchor lies outside the mask */
  tevStatusBadMaskSize = -33,      /**< a mask code or a mask size that is not accepted */
  tevStatusBadStep = -14,          /**< a row step is shorter than a row, or not positive where only that is tested */
  tevStatusBadKernel = -12,        /**< an interpolation or data type code that is not accepted */
  tevStatusBadPoint = -11,         /**< a seed or an end point outside the region, or a negative bound */
  tevStatusNoMemory = -9,          /**< an allocation failed */
  tevStatusNullPtr = -8,           /**< a required pointer is null */
  tevStatusBadSize = -6,           /**< a width, height or length below 1, or a region too small for its family */
  tevStatusBadArg = -5,            /**< an enumerated or numeric argument outside its domain */
  tevStatusRangeFail = -2,         /**< the line iterator refused the line */
  tevStatusOk = 0,                 /**< done */
  tevStatusSqrtNegWarning = 3,     /**< a negative element met a square root; its result is NaN or 0 */
  tevStatusDivByZeroWarning = 6,   /**< the denominator of a relative norm was 0; a defined value is stored */
  tevStatusSizeWarning = 12,       /**< a size passed 2147483647 */
  tevStatusMoreLinesWarning = 33,  /**< more lines were found than the caller's array holds */
  tevStatusAsymmetricKernel = 38   /**< a pyramid layer's kernel is not symmetric; the layer is made all the same */
};

/** How an image goes on outside its region. */
typedef Tev32s TevBorderType;
enum {
  tevBorderConst = 0,  /**< a given value */
  tevBorderRepl = 1,   /**< the nearest edge pixel: a a a b c d d d */
  tevBorderWrap = 2,   /**< the image repeats: b c d a b c d a b c */
  tevBorderMirror = 3, /**< reflected about the edge pixel: c b a b c d c b */
  tevBorderMirrorR = 4 /**< reflected with the edge pixel repeated: b a a b c d d c */
};

/** Mask size codes of the fixed filters. */
typedef Tev32s TevMaskSize;
enum { tevMskSize3x3 = 33, tevMskSize5x5 = 55 };

/** Comparison of a threshold. */
typedef Tev32s TevCmpOp;
enum { tevCmpLess = 0, tevCmpGreater = 4 };

/** Data type codes of pyramids and state builders. */
typedef Tev32s TevDataType;
enum { tevDataType8u = 1, tevDataType8s = 3, tevDataType16u = 5, tevDataType32f = 13 };

/** Norm codes. */
typedef Tev32s TevNorm;
enum { tevNormInf = 0, tevNormL1 = 1, tevNormL2 = 2 };

/** @} */

#endif
