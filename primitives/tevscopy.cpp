// Copy, fill, clear and convert.
#include <cstring>

#include "frame/checks.h"
#include "tevcv_internal/primitives.h"

using namespace tevcv;

void ownsCopy_8u(const Tev8u* src, Tev8u* dst, int len) {
  if (len < 1) return;
  // Forward, element by element: a destination below the source may overlap it.
  std::memmove(dst, src, static_cast<size_t>(len));
}

void ownsSet_8u(Tev8u value, Tev8u* dst, int len) {
  if (len < 1) return;
  std::memset(dst, value, static_cast<size_t>(len));
}

void ownsSet_32s(Tev32s value, Tev32s* dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = value;
}

void ownsZero_8u(Tev8u* dst, int len) { ownsSet_8u(0, dst, len); }

namespace {

template <class T>
TevStatus copy(const T* src, T* dst, int len) {
  if (TevStatus s = firstFailure(notNull(src, dst), length(len))) return s;
  std::memmove(dst, src, static_cast<size_t>(len) * sizeof(T));
  return tevStatusOk;
}

template <class T>
TevStatus zero(T* dst, int len) {
  if (TevStatus s = firstFailure(notNull(dst), length(len))) return s;
  std::memset(dst, 0, static_cast<size_t>(len) * sizeof(T));
  return tevStatusOk;
}

}  // namespace

TevStatus tevsCopy_8u(const Tev8u* src, Tev8u* dst, int len) { return copy(src, dst, len); }
TevStatus tevsCopy_32f(const Tev32f* src, Tev32f* dst, int len) { return copy(src, dst, len); }

TevStatus tevsSet_8u(Tev8u value, Tev8u* dst, int len) {
  if (TevStatus s = firstFailure(notNull(dst), length(len))) return s;
  ownsSet_8u(value, dst, len);
  return tevStatusOk;
}

TevStatus tevsSet_32f(Tev32f value, Tev32f* dst, int len) {
  if (TevStatus s = firstFailure(notNull(dst), length(len))) return s;
  for (int i = 0; i < len; ++i) dst[i] = value;
  return tevStatusOk;
}

TevStatus tevsZero_8u(Tev8u* dst, int len) { return zero(dst, len); }
TevStatus tevsZero_16s(Tev16s* dst, int len) { return zero(dst, len); }
TevStatus tevsZero_32s(Tev32s* dst, int len) { return zero(dst, len); }
TevStatus tevsZero_32f(Tev32f* dst, int len) { return zero(dst, len); }

TevStatus tevsConvert_16u32f(const Tev16u* src, Tev32f* dst, int len) {
  if (TevStatus s = firstFailure(notNull(src, dst), length(len))) return s;
  for (int i = 0; i < len; ++i) dst[i] = src[i];
  return tevStatusOk;
}
