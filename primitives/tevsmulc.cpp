// Multiplication by a constant.
#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "tevcv/primitives.h"

using namespace tevcv;

TevStatus tevsMulC_16s_ISfs(Tev16s value, Tev16s* srcDst, int len, int scaleFactor) {
  if (TevStatus s = firstFailure(notNull(srcDst), length(len))) return s;
  if (value == 0 || scaleFactor > 30) return tevsZero_16s(srcDst, len);
  if (scaleFactor == 0) {
    if (value == 1) return tevStatusOk;
    for (int i = 0; i < len; ++i) srcDst[i] = saturate<Tev16s>(srcDst[i] * value);
  } else if (scaleFactor > 0) {
    // The product is at most 2^30 and the rounding term below 2^29: 32 bits hold the rule of ties to even.
    for (int i = 0; i < len; ++i) srcDst[i] = saturate<Tev16s>(shiftRightTiesToEven(srcDst[i] * value, scaleFactor));
  } else if (scaleFactor >= -15) {
    for (int i = 0; i < len; ++i)
      srcDst[i] = saturate<Tev16s>(int{saturate<Tev16s>(srcDst[i] * value)} * (1 << -scaleFactor));
  } else {
    for (int i = 0; i < len; ++i) {
      const int product = srcDst[i] * value;
      srcDst[i] = static_cast<Tev16s>(product > 0 ? 32767 : product < 0 ? -32768 : 0);
    }
  }
  return tevStatusOk;
}

TevStatus tevsMulC_32f_I(Tev32f value, Tev32f* srcDst, int len) {
  if (TevStatus s = firstFailure(notNull(srcDst), length(len))) return s;
  if (value == 1.0F) return tevStatusOk;
  if (value == 0.0F) return tevsZero_32f(srcDst, len);
  for (int i = 0; i < len; ++i) srcDst[i] *= value;
  return tevStatusOk;
}
