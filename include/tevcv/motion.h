/* Motion and background: optical flow, foreground models, motion history. */
#ifndef TEVCV_MOTION_H
#define TEVCV_MOTION_H

#include "tevcv/types.h"

/**
 * @defgroup motion Motion and background: optical flow, foreground models, motion history.
 * @{
 */

/** @} */

#endif
