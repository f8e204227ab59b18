// Chamfer distances into floats.
#include "distance/chamfer.h"
#include "tevcv/distance.h"
#include "tevcv_internal/distance.h"

using namespace tevcv;

TevStatus teviDistanceTransform_3x3_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              const Tev32f* metrics) {
  if (TevStatus s = chamferCheck(src, srcStep, dst, dstStep, roiSize, metrics, 2)) return s;
  const bool inTwo = worthTwoThreads(roiSize, 65) && metrics[0] <= metrics[1] && runomp() != 0;
  return (inTwo ? teviDistanceTransform_3x3_8u32f_C1R_omp : chamfer3x3<Tev32f>)(src, srcStep, dst, dstStep, roiSize,
                                                                                metrics);
}

TevStatus teviDistanceTransform_5x5_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              const Tev32f* metrics) {
  if (TevStatus s = chamferCheck(src, srcStep, dst, dstStep, roiSize, metrics, 3)) return s;
  const Metric5x5<Tev32f> metric(metrics);
  if (metric.knightNeverWins())
    return teviDistanceTransform_3x3_8u32f_C1R(src, srcStep, dst, dstStep, roiSize, metrics);
  const bool inTwo = worthTwoThreads(roiSize, 65) && metric.isRegular() && runomp() != 0;
  return (inTwo ? teviDistanceTransform_5x5_8u32f_C1R_omp : chamfer5x5<Tev32f>)(src, srcStep, dst, dstStep, roiSize,
                                                                                metrics);
}
