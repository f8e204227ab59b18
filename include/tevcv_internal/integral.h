// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/integral.h"
#include "tevcv_internal/export.h"
