// Chamfer distances into bytes.
#include "distance/chamfer.h"
#include "tevcv/distance.h"
#include "tevcv_internal/distance.h"

using namespace tevcv;

TevStatus teviDistanceTransform_3x3_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                           const Tev32s* metrics) {
  if (TevStatus s = chamferCheck(src, srcStep, dst, dstStep, roiSize, metrics, 2)) return s;
  const bool inTwo = worthTwoThreads(roiSize, 257) && metrics[0] <= metrics[1];
  return (inTwo ? teviDistanceTransform_3x3_8u_C1R_omp : chamfer3x3<Tev8u>)(src, srcStep, dst, dstStep, roiSize,
                                                                            metrics);
}

TevStatus teviDistanceTransform_5x5_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                           const Tev32s* metrics) {
  if (TevStatus s = chamferCheck(src, srcStep, dst, dstStep, roiSize, metrics, 3)) return s;
  const Metric5x5<Tev8u> metric(metrics);
  if (metric.knightNeverWins()) return teviDistanceTransform_3x3_8u_C1R(src, srcStep, dst, dstStep, roiSize, metrics);
  const bool inTwo = worthTwoThreads(roiSize, 65) && metric.isRegular();
  return (inTwo ? teviDistanceTransform_5x5_8u_C1R_omp : chamfer5x5<Tev8u>)(src, srcStep, dst, dstStep, roiSize,
                                                                            metrics);
}

// Each step reads the source pixel only where it is about to write.
TevStatus teviDistanceTransform_3x3_8u_C1IR(Tev8u* srcDst, int step, TevSize roiSize, const Tev32s* metrics) {
  return teviDistanceTransform_3x3_8u_C1R(srcDst, step, srcDst, step, roiSize, metrics);
}

TevStatus teviDistanceTransform_5x5_8u_C1IR(Tev8u* srcDst, int step, TevSize roiSize, const Tev32s* metrics) {
  return teviDistanceTransform_5x5_8u_C1R(srcDst, step, srcDst, step, roiSize, metrics);
}
