/* Integral images, deviation in a window, and the stages of a Haar cascade. */
#ifndef TEVCV_INTEGRAL_H
#define TEVCV_INTEGRAL_H

#include "tevcv/types.h"

/**
 * @defgroup integral Integral images, deviation in a window, and the stages of a Haar cascade.
 * @{
 */

/** @} */

#endif
