// Relative L1 norm: the sum of the distances of two images over the sum of the magnitudes of the second.
#include "statistics/difference_norms.h"
#include "tevcv/statistics.h"

using namespace tevcv;

namespace {

template <class T>
using RelativeL1 =
    std::conditional_t<std::floating_point<T>,
                       Quotient<FloatDistanceSum<Magnitude, SumOfAll>, FloatMagnitudeSum<Magnitude, SumOfAll>>,
                       Quotient<OfDistances<T, Sum>, OfMagnitudes<T, Sum>>>;

}  // namespace

TevStatus teviNormRel_L1_8u_C1MR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, const Tev8u* mask,
                                 int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normRel<RelativeL1, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue, neverParallel);
}

TevStatus teviNormRel_L1_8u_C3CMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, const Tev8u* mask,
                                  int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normRel<RelativeL1, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue,
                                multiCoreDie(32768));
}

TevStatus teviNormRel_L1_8s_C1MR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step, const Tev8u* mask,
                                 int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normRel<RelativeL1, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue,
                                multiCoreDie(131072));
}

TevStatus teviNormRel_L1_8s_C3CMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step, const Tev8u* mask,
                                  int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normRel<RelativeL1, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue,
                                multiCoreDie(32768));
}

TevStatus teviNormRel_L1_16u_C1MR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step, const Tev8u* mask,
                                  int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normRel<RelativeL1, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue,
                                multiCoreDie(32768));
}

TevStatus teviNormRel_L1_16u_C3CMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                   const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normRel<RelativeL1, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue, anyDie(32768));
}

TevStatus teviNormRel_L1_32f_C1MR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, const Tev8u* mask,
                                  int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normRel<RelativeL1, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue, neverParallel);
}

TevStatus teviNormRel_L1_32f_C3CMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                   const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normRel<RelativeL1, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue, neverParallel);
}
