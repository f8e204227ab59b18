// Chamfer distances into 16-bit words by two threads: behind the gates of tevcvdistrans16u.
#include "distance/chamfer.h"
#include "tevcv_internal/distance.h"

using namespace tevcv;

TevStatus teviDistanceTransform_3x3_8u16u_C1R_omp(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep,
                                                  TevSize roiSize, const Tev32s* metrics) {
  return chamfer3x3InTwo(src, srcStep, dst, dstStep, roiSize, metrics);
}

TevStatus teviDistanceTransform_5x5_8u16u_C1R_omp(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep,
                                                  TevSize roiSize, const Tev32s* metrics) {
  return chamfer5x5InTwo(src, srcStep, dst, dstStep, roiSize, metrics);
}
