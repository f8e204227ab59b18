/* Distance transforms, fast marching and inpainting. */
#ifndef TEVCV_DISTANCE_H
#define TEVCV_DISTANCE_H

#include "tevcv/types.h"

/**
 * @defgroup distance Distance transforms, fast marching and inpainting.
 * @{
 */

/** @} */

#endif
