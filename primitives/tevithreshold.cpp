// Thresholds. Bytes compare as numbers, floats as 32-bit patterns: callers rely on what that does to -0.0 and NaN.
#include <bit>
#include <cmath>
#include <cstdint>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/primitives.h"

using namespace tevcv;

namespace {

TevStatus thresholdFailure(const void* src, int srcStep, const void* dst, int dstStep, TevSize roi, TevCmpOp cmpOp) {
  return firstFailure(failUnless(cmpOp == tevCmpLess || cmpOp == tevCmpGreater, tevStatusBadCompareMode),
                      notNull(src, dst), region(roi), positiveStep(srcStep), positiveStep(dstStep));
}

// dst[x] = replaced(src[x]) ? value : src[x]. Merged by a mask: on the oldest processors the compiler would rather
// branch on every pixel, which nobody could predict.
template <class T, class Replaced>
void replaceWhere(Rows<const T> src, Rows<T> dst, TevSize roi, T value, Replaced replaced) {
  for (int y = 0; y < roi.height; ++y) {
    const T* const s = src[y];
    T* const d = dst[y];
#pragma GCC ivdep
    for (int x = 0; x < roi.width; ++x) {
      const auto mask = static_cast<T>(replaced(s[x]) ? -1 : 0);
      d[x] = static_cast<T>(s[x] ^ ((s[x] ^ value) & mask));
    }
  }
}

}  // namespace

TevStatus teviThreshold_Val_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                   Tev8u threshold, Tev8u value, TevCmpOp cmpOp) {
  if (TevStatus s = thresholdFailure(src, srcStep, dst, dstStep, roiSize, cmpOp)) return s;
  const auto from = rows(src, srcStep);
  const auto to = rows(dst, dstStep);
  if (cmpOp == tevCmpGreater)
    replaceWhere(from, to, roiSize, value, [threshold](Tev8u v) { return v > threshold; });
  else
    replaceWhere(from, to, roiSize, value, [threshold](Tev8u v) { return v < threshold; });
  return tevStatusOk;
}

TevStatus teviThreshold_Val_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                    Tev32f threshold, Tev32f value, TevCmpOp cmpOp) {
  if (TevStatus s = thresholdFailure(src, srcStep, dst, dstStep, roiSize, cmpOp)) return s;
  const auto from = wholeElementRows(reinterpret_cast<const Tev32s*>(src), srcStep);
  const auto to = wholeElementRows(reinterpret_cast<Tev32s*>(dst), dstStep);
  const auto replacement = std::bit_cast<Tev32s>(value), level = std::bit_cast<Tev32s>(threshold);
  const auto unsignedLevel = static_cast<std::uint32_t>(level);
  // The patterns of floats at or above 0 order as signed integers, those below it as unsigned ones in reverse.
  const auto below = [level](Tev32s v) { return v < level; };
  const auto above = [level](Tev32s v) { return v > level; };
  const auto belowNegative = [unsignedLevel](Tev32s v) { return static_cast<std::uint32_t>(v) > unsignedLevel; };
  const auto aboveNegative = [unsignedLevel](Tev32s v) { return static_cast<std::uint32_t>(v) < unsignedLevel; };
  const bool negative = std::signbit(threshold) && threshold != 0.0F;
  if (negative && cmpOp == tevCmpLess)
    replaceWhere(from, to, roiSize, replacement, belowNegative);
  else if (negative)
    replaceWhere(from, to, roiSize, replacement, aboveNegative);
  else if (cmpOp == tevCmpLess)
    replaceWhere(from, to, roiSize, replacement, below);
  else
    replaceWhere(from, to, roiSize, replacement, above);
  return tevStatusOk;
}

TevStatus teviThreshold_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                Tev32f threshold, TevCmpOp cmpOp) {
  return teviThreshold_Val_32f_C1R(src, srcStep, dst, dstStep, roiSize, threshold, threshold, cmpOp);
}

TevStatus teviThreshold_GTVal_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                     Tev8u threshold, Tev8u value) {
  return teviThreshold_Val_8u_C1R(src, srcStep, dst, dstStep, roiSize, threshold, value, tevCmpGreater);
}

TevStatus teviThreshold_GTVal_8u_C1IR(Tev8u* srcDst, int srcDstStep, TevSize roiSize, Tev8u threshold, Tev8u value) {
  return teviThreshold_GTVal_8u_C1R(srcDst, srcDstStep, srcDst, srcDstStep, roiSize, threshold, value);
}

TevStatus teviThreshold_LT_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                   Tev32f threshold) {
  return teviThreshold_32f_C1R(src, srcStep, dst, dstStep, roiSize, threshold, tevCmpLess);
}

TevStatus teviThreshold_LT_32f_C1IR(Tev32f* srcDst, int srcDstStep, TevSize roiSize, Tev32f threshold) {
  return teviThreshold_LT_32f_C1R(srcDst, srcDstStep, srcDst, srcDstStep, roiSize, threshold);
}
