/* tevcv: image-analysis and computer-vision primitives. This header takes in all subsystems. */
#ifndef TEVCV_H
#define TEVCV_H

#include "tevcv/types.h"

#include "tevcv/memory.h"
#include "tevcv/primitives.h"

#include "tevcv/arithmetic.h"
#include "tevcv/statistics.h"
#include "tevcv/integral.h"
#include "tevcv/filtering.h"
#include "tevcv/morphology.h"
#include "tevcv/pyramids.h"
#include "tevcv/motion.h"
#include "tevcv/distance.h"
#include "tevcv/segmentation.h"
#include "tevcv/features.h"
#include "tevcv/geometry.h"

#endif
