// How an image goes on outside its region.
#pragma once

#include "tevcv/types.h"

namespace tevcv {

// The index inside 0..length-1 that stands for index i of the extended line, for any i: reflection and repetition go on
// for as far as a kernel reaches, however short the line. -1 where the border's constant value stands.
constexpr int borderIndex(int i, int length, TevBorderType type) {
  if (i >= 0 && i < length) return i;
  const auto modulo = [](int a, int period) { return (a % period + period) % period; };  // NOLINT: lengths are above 0
  switch (type) {
    case tevBorderRepl:
      return i < 0 ? 0 : length - 1;
    case tevBorderWrap:
      return modulo(i, length);
    case tevBorderMirror: {
      if (length == 1) return 0;
      const int period = 2 * (length - 1), at = modulo(i, period);
      return at < length ? at : period - at;
    }
    case tevBorderMirrorR: {
      const int period = 2 * length, at = modulo(i, period);
      return at < length ? at : period - 1 - at;
    }
    default:
      return -1;
  }
}

}  // namespace tevcv
