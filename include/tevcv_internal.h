// Workers and tables shared between families, all subsystems. Workers make no checks: they trust the exported
// function that calls them.
#pragma once

#include "tevcv_internal/frame.h"
#include "tevcv_internal/primitives.h"

#include "tevcv_internal/arithmetic.h"
#include "tevcv_internal/distance.h"
#include "tevcv_internal/features.h"
#include "tevcv_internal/filtering.h"
#include "tevcv_internal/geometry.h"
#include "tevcv_internal/integral.h"
#include "tevcv_internal/morphology.h"
#include "tevcv_internal/motion.h"
#include "tevcv_internal/pyramids.h"
#include "tevcv_internal/segmentation.h"
#include "tevcv_internal/statistics.h"
