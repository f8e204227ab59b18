// Stores of a background model: one block from the library's allocator for all pixels of a region.
#pragma once

#include <cstdint>
#include <limits>

#include "tevcv/memory.h"
#include "tevcv/types.h"

namespace tevcv {

// `bytesPerPixel` bytes for each pixel and `more` besides, or null. The allocator counts in 32 bits: a store beyond
// those cannot be had.
inline Tev8u* allocateForPixels(TevSize roi, int bytesPerPixel, int more = 0) {
  const std::int64_t pixels = std::int64_t{roi.width} * roi.height;
  if (pixels > (std::numeric_limits<int>::max() - more) / bytesPerPixel) return nullptr;
  return tevsMalloc_8u(static_cast<int>(pixels) * bytesPerPixel + more);
}

}  // namespace tevcv
