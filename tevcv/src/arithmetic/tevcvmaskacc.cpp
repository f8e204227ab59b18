// Running sums of the pixels that a mask selects: a + s, a + s^2, a + s1 s2 and the blend a + (s - a) alpha.
#include "arithmetic/accumulate.h"

using namespace tevcv;
using namespace tevcv::accumulate;

const Tev32f _tevcvMaskCoeff[2] = {0.0F, 1.0F};

namespace {

template <class S>
TevStatus check(const S* src, int srcStep, const Tev8u* mask, int maskStep, const Tev32f* srcDst, int srcDstStep,
                TevSize roi) {
  return firstFailure(notNull(src, mask, srcDst), region(roi),
                      stepsOf<S>(roi.width, srcStep, srcStep, maskStep, srcDstStep));
}

template <class S>
TevStatus add(const S* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep, TevSize roi) {
  if (TevStatus s = check(src, srcStep, mask, maskStep, srcDst, srcDstStep, roi)) return s;
  const auto from = rows(src, srcStep);
  const auto select = rows(mask, maskStep);
  const auto to = rows(srcDst, srcDstStep);
  for (int y = 0; y < roi.height; ++y) addRow<true>(from[y], select[y], to[y], roi.width);
  return tevStatusOk;
}

template <class S>
TevStatus addSquare(const S* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep,
                    TevSize roi) {
  if (TevStatus s = check(src, srcStep, mask, maskStep, srcDst, srcDstStep, roi)) return s;
  const auto from = rows(src, srcStep);
  const auto select = rows(mask, maskStep);
  const auto to = rows(srcDst, srcDstStep);
  for (int y = 0; y < roi.height; ++y) addProductRow<true>(from[y], from[y], select[y], to[y], roi.width);
  return tevStatusOk;
}

template <class S>
TevStatus addProduct(const S* src1, int src1Step, const S* src2, int src2Step, const Tev8u* mask, int maskStep,
                     Tev32f* srcDst, int srcDstStep, TevSize roi) {
  if (TevStatus s = firstFailure(notNull(src1, src2, mask, srcDst), region(roi),
                                 stepsOf<S>(roi.width, src1Step, src2Step, maskStep, srcDstStep)))
    return s;
  const auto from1 = rows(src1, src1Step), from2 = rows(src2, src2Step);
  const auto select = rows(mask, maskStep);
  const auto to = rows(srcDst, srcDstStep);
  for (int y = 0; y < roi.height; ++y) addProductRow<true>(from1[y], from2[y], select[y], to[y], roi.width);
  return tevStatusOk;
}

template <class S>
TevStatus addWeighted(const S* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep,
                      TevSize roi, Tev32f alpha) {
  if (TevStatus s = check(src, srcStep, mask, maskStep, srcDst, srcDstStep, roi)) return s;
  const auto from = rows(src, srcStep);
  const auto select = rows(mask, maskStep);
  const auto to = rows(srcDst, srcDstStep);
  for (int y = 0; y < roi.height; ++y) addWeightedRow<true>(from[y], select[y], to[y], roi.width, alpha);
  return tevStatusOk;
}

}  // namespace

TevStatus teviAdd_8u32f_C1IMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                              int srcDstStep, TevSize roiSize) {
  return add(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAdd_8s32f_C1IMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                              int srcDstStep, TevSize roiSize) {
  return add(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAdd_16u32f_C1IMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                               int srcDstStep, TevSize roiSize) {
  return add(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAdd_32f_C1IMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                            int srcDstStep, TevSize roiSize) {
  return add(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddSquare_8u32f_C1IMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                    int srcDstStep, TevSize roiSize) {
  return addSquare(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddSquare_8s32f_C1IMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                    int srcDstStep, TevSize roiSize) {
  return addSquare(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddSquare_16u32f_C1IMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                     int srcDstStep, TevSize roiSize) {
  return addSquare(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddSquare_32f_C1IMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                  int srcDstStep, TevSize roiSize) {
  return addSquare(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddProduct_8u32f_C1IMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step,
                                     const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return addProduct(src1, src1Step, src2, src2Step, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddProduct_8s32f_C1IMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step,
                                     const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return addProduct(src1, src1Step, src2, src2Step, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddProduct_16u32f_C1IMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                      const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep,
                                      TevSize roiSize) {
  return addProduct(src1, src1Step, src2, src2Step, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddProduct_32f_C1IMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                   const Tev8u* mask, int maskStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return addProduct(src1, src1Step, src2, src2Step, mask, maskStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviAddWeighted_8u32f_C1IMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                      int srcDstStep, TevSize roiSize, Tev32f alpha) {
  return addWeighted(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize, alpha);
}

TevStatus teviAddWeighted_8s32f_C1IMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                      int srcDstStep, TevSize roiSize, Tev32f alpha) {
  return addWeighted(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize, alpha);
}

TevStatus teviAddWeighted_16u32f_C1IMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                       int srcDstStep, TevSize roiSize, Tev32f alpha) {
  return addWeighted(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize, alpha);
}

TevStatus teviAddWeighted_32f_C1IMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, Tev32f* srcDst,
                                    int srcDstStep, TevSize roiSize, Tev32f alpha) {
  return addWeighted(src, srcStep, mask, maskStep, srcDst, srcDstStep, roiSize, alpha);
}
