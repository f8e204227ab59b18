#include "snippet.h"

/* shown */
/* dst is half as wide and half as high, rounded up. */
TevStatus halve(const Tev8u* src, int step, Tev8u* dst, int dstStep, TevSize roi) {
  int size = 0;
  teviPyrDownGetBufSize_Gauss5x5(roi.width, tevDataType8u, 1, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviPyrDown_Gauss5x5_8u_C1R(src, step, dst, dstStep, roi, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(halve(grey, STEP, room.bytes, STEP, size))
