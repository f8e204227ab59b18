// Extended-precision results at the speed of double.
//
// A sum of products of floats is defined in extended precision and rounded once. In double its products are exact, and
// the sum of n terms is off by at most n * 2^-53 * (sum of the terms' magnitudes). Where that margin on either side
// rounds to the same float, this float is the defined result as well. A block with any element in doubt is done again
// by the definition.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "frame/arithmetic.h"

namespace tevcv {

inline constexpr int guardedBlock = 64;

// Values of a block in double, and how far each may lie from the exact one.
struct GuardedBlock {
  Tev64f value[guardedBlock];
  Tev64f margin[guardedBlock];
};

// dst[i] = the block's value rounded to float where that is certain, else defined(i) rounded, for i from 0 to count
// - 1. fill(block, first, length) gives the values and margins of elements first to first + length - 1. NaN and
// infinity are in doubt by themselves. The destination may be a source: a block is written after all of it is read.
template <class Fill, class Definition>
void roundGuarded(Tev32f* dst, int count, Fill fill, Definition defined) {
  for (int first = 0; first < count; first += guardedBlock) {
    const int length = std::min(guardedBlock, count - first);
    GuardedBlock guarded;
    fill(guarded, first, length);
    std::uint32_t doubt = 0;
    for (int i = 0; i < length; ++i) {
      // The patterns are compared, so that a zero of uncertain sign is in doubt too, and the values for NaN.
      const auto low = static_cast<Tev32f>(guarded.value[i] - guarded.margin[i]);
      const auto high = static_cast<Tev32f>(guarded.value[i] + guarded.margin[i]);
      doubt |= std::bit_cast<std::uint32_t>(low) ^ std::bit_cast<std::uint32_t>(high);
      doubt |= low == high ? 0U : 1U;
    }
    if (doubt == 0) {
      // The values round as their bounds do. Rounding them once more is faster than storing floats and copying them.
      for (int i = 0; i < length; ++i) dst[first + i] = static_cast<Tev32f>(guarded.value[i]);
      continue;
    }
    Tev32f rounded[guardedBlock];
    for (int i = 0; i < length; ++i) rounded[i] = static_cast<Tev32f>(defined(first + i));
    std::copy_n(rounded, length, dst + first);
  }
}

}  // namespace tevcv
