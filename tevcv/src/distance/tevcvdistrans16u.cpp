// Chamfer distances into 16-bit words.
#include "distance/chamfer.h"
#include "tevcv/distance.h"
#include "tevcv_internal/distance.h"

using namespace tevcv;

TevStatus teviDistanceTransform_3x3_8u16u_C1R(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                              const Tev32s* metrics) {
  if (TevStatus s = chamferCheck(src, srcStep, dst, dstStep, roiSize, metrics, 2)) return s;
  const bool inTwo = worthTwoThreads(roiSize, 65) && metrics[0] <= metrics[1];
  return (inTwo ? teviDistanceTransform_3x3_8u16u_C1R_omp : chamfer3x3<Tev16u>)(src, srcStep, dst, dstStep, roiSize,
                                                                                metrics);
}

TevStatus teviDistanceTransform_5x5_8u16u_C1R(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                              const Tev32s* metrics) {
  if (TevStatus s = chamferCheck(src, srcStep, dst, dstStep, roiSize, metrics, 3)) return s;
  const Metric5x5<Tev16u> metric(metrics);
  if (metric.knightNeverWins())
    return teviDistanceTransform_3x3_8u16u_C1R(src, srcStep, dst, dstStep, roiSize, metrics);
  const bool inTwo = worthTwoThreads(roiSize, 65) && metric.isRegular();
  return (inTwo ? teviDistanceTransform_5x5_8u16u_C1R_omp : chamfer5x5<Tev16u>)(src, srcStep, dst, dstStep, roiSize,
                                                                                metrics);
}
