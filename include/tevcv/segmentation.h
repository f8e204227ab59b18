/* Segmentation: flood fill, watershed, gradient segmentation, labelling. */
#ifndef TEVCV_SEGMENTATION_H
#define TEVCV_SEGMENTATION_H

#include "tevcv/types.h"

/**
 * @defgroup segmentation Segmentation: flood fill, watershed, gradient segmentation, labelling.
 * @{
 */

/** @} */

#endif
