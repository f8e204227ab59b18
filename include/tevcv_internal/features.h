// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/features.h"
#include "tevcv_internal/export.h"
