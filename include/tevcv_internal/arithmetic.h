// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/arithmetic.h"
#include "tevcv_internal/export.h"

// {0.0, 1.0}: the factor of a float term, by whether the mask element is not 0.
TEV_WORKER const Tev32f _tevcvMaskCoeff[2];
