/* Statistics of a region: mean and deviation, extrema with index, norms. */
#ifndef TEVCV_STATISTICS_H
#define TEVCV_STATISTICS_H

#include "tevcv/types.h"

/**
 * @defgroup statistics Statistics of a region: mean and deviation, extrema with index, norms.
 * @{
 */

/** @} */

#endif
