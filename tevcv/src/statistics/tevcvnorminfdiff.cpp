// Infinity norm of a difference: the largest distance of two images under a mask.
#include "statistics/difference_norms.h"
#include "tevcv/statistics.h"

using namespace tevcv;

namespace {

template <class T>
using InfinityDistance = std::conditional_t<std::floating_point<T>, LargestFloatDistance, OfDistances<T, Largest>>;

}  // namespace

TevStatus teviNormDiff_Inf_8u_C1MR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, const Tev8u* mask,
                                   int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normDiff<InfinityDistance, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue,
                                       neverParallel);
}

TevStatus teviNormDiff_Inf_8u_C3CMR(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, const Tev8u* mask,
                                    int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normDiff<InfinityDistance, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue,
                                       neverParallel);
}

TevStatus teviNormDiff_Inf_8s_C1MR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step, const Tev8u* mask,
                                   int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normDiff<InfinityDistance, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue,
                                       neverParallel);
}

TevStatus teviNormDiff_Inf_8s_C3CMR(const Tev8s* src1, int src1Step, const Tev8s* src2, int src2Step, const Tev8u* mask,
                                    int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normDiff<InfinityDistance, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue,
                                       neverParallel);
}

TevStatus teviNormDiff_Inf_16u_C1MR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                    const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normDiff<InfinityDistance, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue,
                                       neverParallel);
}

TevStatus teviNormDiff_Inf_16u_C3CMR(const Tev16u* src1, int src1Step, const Tev16u* src2, int src2Step,
                                     const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normDiff<InfinityDistance, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue,
                                       neverParallel);
}

TevStatus teviNormDiff_Inf_32f_C1MR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                    const Tev8u* mask, int maskStep, TevSize roiSize, Tev64f* pValue) {
  return normDiff<InfinityDistance, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, 1, pValue,
                                       neverParallel);
}

TevStatus teviNormDiff_Inf_32f_C3CMR(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step,
                                     const Tev8u* mask, int maskStep, TevSize roiSize, int coi, Tev64f* pValue) {
  return normDiff<InfinityDistance, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roiSize, coi, pValue,
                                       neverParallel);
}
