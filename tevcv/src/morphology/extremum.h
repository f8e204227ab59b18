// The two directions of flat morphology: every filter here is written once and takes the direction as a type.
#pragma once

#include "tevcv/primitives.h"
#include "tevcv/types.h"

namespace tevcv {

// of(a, b) keeps `a` unless `b` is strictly better, as the vector primitives do: among equals the first wins, which
// decides the sign of a zero. Taken in the image's order, and over windows that may overlap, the result is the
// row-major first of the window's extrema however the window is put together.
struct Least {
  template <class T>
  static T of(T a, T b) {
    return b < a ? b : a;
  }
  static void ofEach(const Tev8u* a, const Tev8u* b, Tev8u* dst, int len) { tevsMinEvery_8u(a, b, dst, len); }
  static void ofEach(const Tev32f* a, const Tev32f* b, Tev32f* dst, int len) { tevsMinEvery_32f(a, b, dst, len); }
};

struct Greatest {
  template <class T>
  static T of(T a, T b) {
    return b > a ? b : a;
  }
  static void ofEach(const Tev8u* a, const Tev8u* b, Tev8u* dst, int len) { tevsMaxEvery_8u(a, b, dst, len); }
  static void ofEach(const Tev32f* a, const Tev32f* b, Tev32f* dst, int len) { tevsMaxEvery_32f(a, b, dst, len); }
};

// dst[i] = the extremum of line[0][i], line[1][i], ... in this order. `dst` may be the first line.
template <class Best, int lines, class T>
void bestOfLines(const T* const* line, T* dst, int len) {
  const T* p[lines];
  for (int k = 0; k < lines; ++k) p[k] = line[k];
#pragma GCC ivdep
  for (int i = 0; i < len; ++i) {
    T best = p[0][i];
#pragma GCC unroll 8
    for (int k = 1; k < lines; ++k) best = Best::of(best, p[k][i]);
    dst[i] = best;
  }
}

}  // namespace tevcv
