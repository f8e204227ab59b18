// Element-wise extrema. The first operand stays unless the second is strictly better.
#include "frame/checks.h"
#include "tevcv/primitives.h"

using namespace tevcv;

namespace {

template <class T>
void maxEvery(const T* src1, const T* src2, T* dst, int len) {
#pragma GCC ivdep
  for (int i = 0; i < len; ++i) dst[i] = src2[i] > src1[i] ? src2[i] : src1[i];
}

template <class T>
void minEvery(const T* src1, const T* src2, T* dst, int len) {
#pragma GCC ivdep
  for (int i = 0; i < len; ++i) dst[i] = src2[i] < src1[i] ? src2[i] : src1[i];
}

// In place it is srcDst that stays on a tie.
template <class T>
TevStatus maxEveryInPlace(const T* src, T* srcDst, int len) {
  if (TevStatus s = firstFailure(notNull(src, srcDst), length(len))) return s;
  maxEvery(static_cast<const T*>(srcDst), src, srcDst, len);
  return tevStatusOk;
}

template <class T>
TevStatus minEveryInPlace(const T* src, T* srcDst, int len) {
  if (TevStatus s = firstFailure(notNull(src, srcDst), length(len))) return s;
  minEvery(static_cast<const T*>(srcDst), src, srcDst, len);
  return tevStatusOk;
}

}  // namespace

void tevsMaxEvery_8u(const Tev8u* src1, const Tev8u* src2, Tev8u* dst, int len) { maxEvery(src1, src2, dst, len); }
void tevsMaxEvery_32f(const Tev32f* src1, const Tev32f* src2, Tev32f* dst, int len) { maxEvery(src1, src2, dst, len); }
void tevsMinEvery_8u(const Tev8u* src1, const Tev8u* src2, Tev8u* dst, int len) { minEvery(src1, src2, dst, len); }
void tevsMinEvery_32f(const Tev32f* src1, const Tev32f* src2, Tev32f* dst, int len) { minEvery(src1, src2, dst, len); }

TevStatus tevsMaxEvery_8u_I(const Tev8u* src, Tev8u* srcDst, int len) { return maxEveryInPlace(src, srcDst, len); }
TevStatus tevsMaxEvery_32f_I(const Tev32f* src, Tev32f* srcDst, int len) { return maxEveryInPlace(src, srcDst, len); }
TevStatus tevsMinEvery_8u_I(const Tev8u* src, Tev8u* srcDst, int len) { return minEveryInPlace(src, srcDst, len); }
TevStatus tevsMinEvery_32f_I(const Tev32f* src, Tev32f* srcDst, int len) { return minEveryInPlace(src, srcDst, len); }
