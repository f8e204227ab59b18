/* Morphology: structuring elements, erosion, dilation and what is composed of them, reconstruction. */
#ifndef TEVCV_MORPHOLOGY_H
#define TEVCV_MORPHOLOGY_H

#include "tevcv/types.h"

/**
 * @defgroup morphology Morphology: structuring elements, erosion, dilation and what is composed of them,
 * reconstruction.
 * @{
 */

/** @} */

#endif
