// How an image goes on outside its region.
#pragma once

#include <cstdint>

#include "tevcv/types.h"

namespace tevcv {

// The index inside 0..length-1 that stands for index i of the extended line, for any i: reflection and repetition go on
// for as far as a kernel reaches, however short the line. -1 where the border's constant value stands.
constexpr int borderIndex(int i, int length, TevBorderType type) {
  if (i >= 0 && i < length) return i;
  // Periods of up to twice the length do not fit an int for the longest lines.
  const auto modulo = [i](std::int64_t period) { return (i % period + period) % period; };
  switch (type) {
    case tevBorderRepl:
      return i < 0 ? 0 : length - 1;
    case tevBorderWrap:
      return static_cast<int>(modulo(length));
    case tevBorderMirror: {
      if (length == 1) return 0;
      const std::int64_t period = 2 * (std::int64_t{length} - 1), at = modulo(period);
      return static_cast<int>(at < length ? at : period - at);
    }
    case tevBorderMirrorR: {
      const std::int64_t period = 2 * std::int64_t{length}, at = modulo(period);
      return static_cast<int>(at < length ? at : period - 1 - at);
    }
    default:
      return -1;
  }
}

}  // namespace tevcv
