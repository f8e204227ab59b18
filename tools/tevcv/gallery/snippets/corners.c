#include "snippet.h"

/* shown */
/* strength: the smaller eigenvalue of the gradient's moments; corners are its peaks. */
TevStatus corners(const Tev8u* src, int step, Tev32f* strength, TevSize roi, TevPoint* found, int most, int* count) {
  const int wide = roi.width * (int)sizeof(Tev32f);
  int size = 0, peaks = 0;
  teviMinEigenValGetBufferSize_8u32f_C1R(roi, 3, 3, &size);
  teviFindPeaks3x3GetBufferSize_32f_C1R(roi.width, &peaks);
  Tev8u* buffer = tevsMalloc_8u(size > peaks ? size : peaks);
  TevStatus status = teviMinEigenVal_8u32f_C1R(src, step, strength, wide, roi, tevCornerKernelSobel, 3, 3, buffer);
  if (status == tevStatusOk)
    status = teviFindPeaks3x3_32f_C1R(strength, wide, roi, 0.01f, found, most, count, tevNormInf, 2, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(corners(grey, STEP, room.floats, size, second.points, 100, &(int){0}))
