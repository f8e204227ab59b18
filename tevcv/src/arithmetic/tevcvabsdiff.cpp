// Absolute difference of two images, or of an image and a constant. The smallest family: checks, then a row kernel.
#include <cmath>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/arithmetic.h"

using namespace tevcv;

namespace {

// One subtraction of floats rounds to the same float from extended precision as directly, so the float form is exact.
Tev32f distance(Tev32f a, Tev32f b) { return std::fabs(a - b); }

template <class T>
T distance(T a, T b) {
  return static_cast<T>(a > b ? a - b : b - a);
}

// The destination may be a source: each element is read before it is written.
template <class T>
void absDiffRow(const T* a, const T* b, T* d, int width) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) d[x] = distance(a[x], b[x]);
}

template <class T>
void absDiffRow(const T* a, T value, T* d, int width) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) d[x] = distance(a[x], value);
}

template <class T>
TevStatus absDiff(const T* src1, int src1Step, const T* src2, int src2Step, T* dst, int dstStep, TevSize roi) {
  if (TevStatus s = firstFailure(notNull(src1, src2, dst), region(roi), rowFits<T>(src1Step, roi.width),
                                 rowFits<T>(src2Step, roi.width), rowFits<T>(dstStep, roi.width),
                                 wholeElements<T>(src1Step), wholeElements<T>(src2Step), wholeElements<T>(dstStep)))
    return s;
  const auto a = rows(src1, src1Step), b = rows(src2, src2Step);
  const auto d = rows(dst, dstStep);
  for (int y = 0; y < roi.height; ++y) absDiffRow(a[y], b[y], d[y], roi.width);
  return tevStatusOk;
}

template <class T>
TevStatus absDiffC(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, T value) {
  if (TevStatus s = firstFailure(notNull(src, dst), region(roi), rowFits<T>(srcStep, roi.width),
                                 rowFits<T>(dstStep, roi.width), wholeElements<T>(srcStep), wholeElements<T>(dstStep)))
    return s;
  for (int y = 0; y < roi.height; ++y) absDiffRow(rows(src, srcStep)[y], value, rows(dst, dstStep)[y], roi.width);
  return tevStatusOk;
}

}  // namespace

TevStatus teviAbsDiff_8u_C1R(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev8u* dst, int dstStep,
                             TevSize roiSize) {
  return absDiff(src1, src1Step, src2, src2Step, dst, dstStep, roiSize);
}

TevStatus teviAbsDiff_16u_C1R(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step, Tev16u* dst,
                              int dstStep, TevSize roiSize) {
  return absDiff(src1, src1Step, src2, src2Step, dst, dstStep, roiSize);
}

TevStatus teviAbsDiff_32f_C1R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* dst,
                              int dstStep, TevSize roiSize) {
  return absDiff(src1, src1Step, src2, src2Step, dst, dstStep, roiSize);
}

TevStatus teviAbsDiffC_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize, int value) {
  return absDiffC(src, srcStep, dst, dstStep, roiSize, saturate<Tev8u>(value));
}

TevStatus teviAbsDiffC_16u_C1R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize, int value) {
  return absDiffC(src, srcStep, dst, dstStep, roiSize, saturate<Tev16u>(value));
}

TevStatus teviAbsDiffC_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                               Tev32f value) {
  return absDiffC(src, srcStep, dst, dstStep, roiSize, value);
}
