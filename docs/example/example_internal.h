#pragma once

#include <cstdint>

#include "example.h"
#include "tevcv_internal/export.h"

//! [internal]
// The sum of |a - b| over a run of pixels.
TEV_WORKER std::uint64_t ownSumAbsDiff_8u(const Tev8u* a, const Tev8u* b, int width);
//! [internal]
