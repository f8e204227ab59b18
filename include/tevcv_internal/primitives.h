// Vector workers: no status, no checks; a length below 1 does nothing.
#pragma once

#include "tevcv/primitives.h"
#include "tevcv_internal/export.h"

TEV_WORKER void ownsCopy_8u(const Tev8u* src, Tev8u* dst, int len);
TEV_WORKER void ownsSet_8u(Tev8u value, Tev8u* dst, int len);
TEV_WORKER void ownsSet_32s(Tev32s value, Tev32s* dst, int len);
TEV_WORKER void ownsZero_8u(Tev8u* dst, int len);
