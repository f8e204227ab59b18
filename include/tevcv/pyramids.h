/* Image pyramids. */
#ifndef TEVCV_PYRAMIDS_H
#define TEVCV_PYRAMIDS_H

#include "tevcv/types.h"

/**
 * @defgroup pyramids Image pyramids.
 * @{
 */

/** @} */

#endif
