// Finds the few non-zero bytes of a row.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "tevcv/types.h"

namespace tevcv {

// Calls visit(x) for each non-zero byte of the row, from left to right, passing over eight zeros at a time.
template <class Visit>
void forEachNonZero(const Tev8u* row, int width, Visit visit) {
  constexpr std::uint64_t low = 0x7F7F7F7F7F7F7F7F;
  for (int x = 0; x < width; x += 8) {
    std::uint64_t bytes = 0;
    if (width - x >= 8)
      std::memcpy(&bytes, row + x, 8);
    else
      std::memcpy(&bytes, row + x, static_cast<std::size_t>(width - x));
    // The top bit of each byte that is not zero; adding `low` carries nothing from byte to byte.
    for (std::uint64_t set = (((bytes & low) + low) | bytes) & ~low; set != 0; set &= set - 1)
      visit(x + std::countr_zero(set) / 8);
  }
}

}  // namespace tevcv
