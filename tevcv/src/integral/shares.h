// How many shares a parallel call of this subsystem has: one for each thread, but no more than one for each 1024
// positions, and 32 at most. Below 2 the call stays serial.
#pragma once

#include <algorithm>
#include <cstdint>

#include "tevcv/types.h"
#include "tevcv_internal/frame.h"

namespace tevcv {

inline int sharesOf(TevSize roi) {
  const std::int64_t thousands = (std::int64_t{roi.height} * roi.width) >> 10;
  return static_cast<int>(std::min({std::int64_t{owncvGetMaxNumThreads()}, thousands, std::int64_t{32}}));
}

}  // namespace tevcv
