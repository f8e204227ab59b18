// Square roots. Every root is the double-precision one.
#include <cmath>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/core_services.h"
#include "tevcv/primitives.h"

using namespace tevcv;

TevStatus tevsSqrt_32f_I(Tev32f* srcDst, int len) {
  if (TevStatus s = firstFailure(notNull(srcDst), length(len))) return s;
  // The root of a float, rounded to float, is the same from double and from float precision. A zero is its own root,
  // its sign kept.
  const Tev32f notANumber = tevConstantOfNAN_32f;
  int negatives = 0;
  for (int i = 0; i < len; ++i) {
    const Tev32f x = srcDst[i], root = std::sqrt(x);
    srcDst[i] = x >= 0.0F ? root : notANumber;
    negatives |= x >= 0.0F ? 0 : 1;
  }
  return negatives ? tevStatusSqrtNegWarning : tevStatusOk;
}

namespace {

// Applies root(source) to every source that is not negative, 0 to the others, and tells whether there were any.
template <class Root>
TevStatus rootOfEach(const Tev32s* src, Tev16s* dst, int len, Root root) {
  TevStatus status = tevStatusOk;
  for (int i = 0; i < len; ++i) {
    if (src[i] < 0) status = tevStatusSqrtNegWarning;
    dst[i] = src[i] < 0 ? Tev16s{0} : static_cast<Tev16s>(root(src[i]));
  }
  return status;
}

}  // namespace

TevStatus tevsSqrt_32s16s_Sfs(const Tev32s* src, Tev16s* dst, int len, int scaleFactor) {
  if (TevStatus s = firstFailure(notNull(src, dst), length(len))) return s;
  constexpr Tev64f largestSquare = 32767.0 * 32767.0;
  if (scaleFactor > 16) {
    tevsZero_16s(dst, len);
    for (int i = 0; i < len; ++i)
      if (src[i] < 0) return tevStatusSqrtNegWarning;
    return tevStatusOk;
  }
  if (scaleFactor > 0) {
    // The quotient carries its half in extended precision: a tie is a tie of the exact value there, and goes to even.
    const Extended scale = 1.0L / static_cast<Extended>(1 << scaleFactor);
    return rootOfEach(src, dst, len, [scale](int x) {
      const Extended r = static_cast<Extended>(std::sqrt(Tev64f{static_cast<Tev64f>(x)})) * scale + 0.5L;
      const int t = static_cast<int>(r);
      return (t & 1) != 0 && r == static_cast<Extended>(t) ? t - 1 : t;
    });
  }
  if (scaleFactor < -14) return rootOfEach(src, dst, len, [](int x) { return x > 0 ? 32767 : 0; });
  const Tev64f scale = static_cast<Tev64f>(1 << -scaleFactor) * static_cast<Tev64f>(1 << -scaleFactor);
  return rootOfEach(src, dst, len, [scale](int x) {
    const Tev64f product = x * scale;
    return product > largestSquare ? 32767 : static_cast<int>(std::sqrt(product) + 0.5);
  });
}
