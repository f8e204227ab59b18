// Relative L2 norm: the root of the sum of squared distances of two images over the sum of squares of the second.
#include "statistics/difference_norms.h"
#include "tevcv/statistics.h"

using namespace tevcv;

namespace {

template <class T>
using RelativeL2 =
    std::conditional_t<std::floating_point<T>,
                       Quotient<FloatDistanceSum<Square, RootOfSum>, FloatMagnitudeSum<Square, RootOfSum>>,
                       Quotient<OfDistances<T, SumOfSquares>, OfMagnitudes<T, SumOfSquares>>>;

}  // namespace

TevStatus teviNormRel_L2_8u_C1MR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, const Tev8u* mask,
                                 int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normRel<RelativeL2, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue, anyDie(131072));
}

TevStatus teviNormRel_L2_8u_C3CMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, const Tev8u* mask,
                                  int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normRel<RelativeL2, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue,
                                multiCoreDie(32768));
}

TevStatus teviNormRel_L2_8s_C1MR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step, const Tev8u* mask,
                                 int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normRel<RelativeL2, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue, anyDie(131072));
}

TevStatus teviNormRel_L2_8s_C3CMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step, const Tev8u* mask,
                                  int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normRel<RelativeL2, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue,
                                multiCoreDie(32768));
}

TevStatus teviNormRel_L2_16u_C1MR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step, const Tev8u* mask,
                                  int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normRel<RelativeL2, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue,
                                multiCoreDie(32768));
}

TevStatus teviNormRel_L2_16u_C3CMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                   const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normRel<RelativeL2, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue, anyDie(32768));
}

TevStatus teviNormRel_L2_32f_C1MR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, const Tev8u* mask,
                                  int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normRel<RelativeL2, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue, neverParallel);
}

TevStatus teviNormRel_L2_32f_C3CMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                   const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normRel<RelativeL2, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue, neverParallel);
}
