// Doubles in place of extended precision where they provably lead to the same float.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

#include "tevcv/types.h"

namespace tevcv {

// A double, and how far it may be off the value in extended precision.
struct Guarded {
  Tev64f value, bound;
};

// Stores exact(x) for each x by way of approximate(x), a Guarded. Where both ends of its range round to one float,
// extended precision gives it too; a block with any other element is redone by exact(). NaN and infinities never pass.
template <class Approximate, class Exact>
void storeGuarded(Tev32f* __restrict d, int width, Approximate approximate, Exact exact) {
  constexpr int block = 64;
  for (int first = 0; first < width; first += block) {
    const int count = std::min(block, width - first);
    std::uint32_t doubtful = 0;
    for (int i = 0; i < count; ++i) {
      const Guarded g = approximate(first + i);
      const auto low = static_cast<Tev32f>(g.value - g.bound), high = static_cast<Tev32f>(g.value + g.bound);
      d[first + i] = high;
      doubtful |= (std::bit_cast<std::uint32_t>(low) ^ std::bit_cast<std::uint32_t>(high)) |
                  std::uint32_t{!(g.bound <= std::numeric_limits<Tev64f>::max())};
    }
    if (doubtful != 0)
      for (int i = 0; i < count; ++i) d[first + i] = exact(first + i);
  }
}

}  // namespace tevcv
