/* Features: Canny edges, corner measures, Hough lines, peaks, line sampling. */
#ifndef TEVCV_FEATURES_H
#define TEVCV_FEATURES_H

#include "tevcv/types.h"

/**
 * @defgroup features Features: Canny edges, corner measures, Hough lines, peaks, line sampling.
 * @{
 */

/** @} */

#endif
