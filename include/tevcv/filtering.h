/* Linear filters: row and column pipelines, fixed derivative and smoothing kernels, colour gradient. */
#ifndef TEVCV_FILTERING_H
#define TEVCV_FILTERING_H

#include "tevcv/types.h"

/**
 * @defgroup filtering Linear filters: row and column pipelines, fixed derivative and smoothing kernels, colour
 * gradient.
 * @{
 */

/** @} */

#endif
