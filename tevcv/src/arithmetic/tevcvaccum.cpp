// Running sums of whole images: a + s, a + s^2, a + s1 s2 and the blend a + (s - a) alpha.
#include "arithmetic/accumulate.h"

using namespace tevcv;
using namespace tevcv::accumulate;

namespace {

template <class S>
TevStatus check(const S* src, int srcStep, const Tev32f* srcDst, int srcDstStep, TevSize roi) {
  return firstFailure(notNull(src, srcDst), region(roi),
                      stepsOf<S>(roi.width, srcStep, srcStep, roi.width, srcDstStep));
}

template <class S>
TevStatus add(const S* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roi) {
  if (TevStatus s = check(src, srcStep, srcDst, srcDstStep, roi)) return s;
  const auto from = rows(src, srcStep);
  const auto to = rows(srcDst, srcDstStep);
  for (int y = 0; y < roi.height; ++y) addRow<false>(from[y], nullptr, to[y], roi.width);
  return tevStatusOk;
}

template <class S>
TevStatus addSquare(const S* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roi) {
  if (TevStatus s = check(src, srcStep, srcDst, srcDstStep, roi)) return s;
  const auto from = rows(src, srcStep);
  const auto to = rows(srcDst, srcDstStep);
  for (int y = 0; y < roi.height; ++y) addProductRow<false>(from[y], from[y], nullptr, to[y], roi.width);
  return tevStatusOk;
}

template <class S>
TevStatus addProduct(const S* src1, int src1Step, const S* src2, int src2Step, Tev32f* srcDst, int srcDstStep,
                     TevSize roi) {
  if (TevStatus s = firstFailure(notNull(src1, src2, srcDst), region(roi),
                                 stepsOf<S>(roi.width, src1Step, src2Step, roi.width, srcDstStep)))
    return s;
  const auto from1 = rows(src1, src1Step), from2 = rows(src2, src2Step);
  const auto to = rows(srcDst, srcDstStep);
  for (int y = 0; y < roi.height; ++y) addProductRow<false>(from1[y], from2[y], nullptr, to[y], roi.width);
  return tevStatusOk;
}

template <class S>
TevStatus addWeighted(const S* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roi, Tev32f alpha) {
  if (TevStatus s = check(src, srcStep, srcDst, srcDstStep, roi)) return s;
  const auto from = rows(src, srcStep);
  const auto to = rows(srcDst, srcDstStep);
  for (int y = 0; y < roi.height; ++y) addWeightedRow<false>(from[y], nullptr, to[y], roi.width, alpha);
  return tevStatusOk;
}

}  // namespace

TevStatus teviAdd_8u32f_C1IR(const Tev8u* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return add(src, srcStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAdd_8s32f_C1IR(const Tev8s* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return add(src, srcStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAdd_16u32f_C1IR(const Tev16u* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return add(src, srcStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddSquare_8u32f_C1IR(const Tev8u* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return addSquare(src, srcStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddSquare_8s32f_C1IR(const Tev8s* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return addSquare(src, srcStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddSquare_16u32f_C1IR(const Tev16u* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return addSquare(src, srcStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddSquare_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return addSquare(src, srcStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddProduct_8u32f_C1IR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev32f* srcDst,
                                    int srcDstStep, TevSize roiSize) {
  return addProduct(src1, src1Step, src2, src2Step, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddProduct_8s32f_C1IR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step, Tev32f* srcDst,
                                    int srcDstStep, TevSize roiSize) {
  return addProduct(src1, src1Step, src2, src2Step, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddProduct_16u32f_C1IR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step, Tev32f* srcDst,
                                     int srcDstStep, TevSize roiSize) {
  return addProduct(src1, src1Step, src2, src2Step, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddProduct_32f_C1IR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* srcDst,
                                  int srcDstStep, TevSize roiSize) {
  return addProduct(src1, src1Step, src2, src2Step, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddWeighted_8u32f_C1IR(const Tev8u* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize,
                                     Tev32f alpha) {
  return addWeighted(src, srcStep, srcDst, srcDstStep, roiSize, alpha);
}

TevStatus teviAddWeighted_8s32f_C1IR(const Tev8s* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize,
                                     Tev32f alpha) {
  return addWeighted(src, srcStep, srcDst, srcDstStep, roiSize, alpha);
}

TevStatus teviAddWeighted_16u32f_C1IR(const Tev16u* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize,
                                      Tev32f alpha) {
  return addWeighted(src, srcStep, srcDst, srcDstStep, roiSize, alpha);
}

TevStatus teviAddWeighted_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize,
                                   Tev32f alpha) {
  return addWeighted(src, srcStep, srcDst, srcDstStep, roiSize, alpha);
}
