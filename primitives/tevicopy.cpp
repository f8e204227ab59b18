// Image copies and the fill. Steps are the caller's affair: rows may overlap, run backwards or be one and the same.
#include <cstring>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/primitives.h"

using namespace tevcv;

namespace {

template <class T, int channels>
TevStatus copy(const T* src, int srcStep, T* dst, int dstStep, TevSize roi) {
  if (TevStatus s = firstFailure(notNull(src, dst), region(roi))) return s;
  const size_t rowBytes = static_cast<size_t>(roi.width) * channels * sizeof(T);
  const auto from = wholeElementRows(src, srcStep);
  const auto to = wholeElementRows(dst, dstStep);
  for (int y = 0; y < roi.height; ++y) std::memmove(to[y], from[y], rowBytes);
  return tevStatusOk;
}

}  // namespace

TevStatus teviCopy_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize) {
  return copy<Tev8u, 1>(src, srcStep, dst, dstStep, roiSize);
}

TevStatus teviCopy_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize) {
  return copy<Tev8u, 3>(src, srcStep, dst, dstStep, roiSize);
}

TevStatus teviCopy_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize) {
  return copy<Tev8u, 4>(src, srcStep, dst, dstStep, roiSize);
}

TevStatus teviCopy_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize) {
  return copy<Tev32f, 1>(src, srcStep, dst, dstStep, roiSize);
}

TevStatus teviCopy_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize) {
  return copy<Tev32f, 3>(src, srcStep, dst, dstStep, roiSize);
}

TevStatus teviCopy_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize) {
  return copy<Tev32f, 4>(src, srcStep, dst, dstStep, roiSize);
}

TevStatus teviSet_8u_C1R(Tev8u value, Tev8u* dst, int dstStep, TevSize roiSize) {
  if (TevStatus s = firstFailure(notNull(dst), region(roiSize))) return s;
  for (int y = 0; y < roiSize.height; ++y)
    std::memset(rows(dst, dstStep)[y], value, static_cast<size_t>(roiSize.width));
  return tevStatusOk;
}
