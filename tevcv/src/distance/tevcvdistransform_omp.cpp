// Chamfer distances into floats by two threads: behind the gates of tevcvdistransform.
#include "distance/chamfer.h"
#include "tevcv_internal/distance.h"

using namespace tevcv;

TevStatus teviDistanceTransform_3x3_8u32f_C1R_omp(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep,
                                                  TevSize roiSize, const Tev32f* metrics) {
  return chamfer3x3InTwo(src, srcStep, dst, dstStep, roiSize, metrics);
}

TevStatus teviDistanceTransform_5x5_8u32f_C1R_omp(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep,
                                                  TevSize roiSize, const Tev32f* metrics) {
  return chamfer5x5InTwo(src, srcStep, dst, dstStep, roiSize, metrics);
}
