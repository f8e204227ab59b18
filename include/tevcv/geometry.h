/* Geometry: lens undistortion and sub-pixel copies. */
#ifndef TEVCV_GEOMETRY_H
#define TEVCV_GEOMETRY_H

#include "tevcv/types.h"

/**
 * @defgroup geometry Geometry: lens undistortion and sub-pixel copies.
 * @{
 */

/** @} */

#endif
