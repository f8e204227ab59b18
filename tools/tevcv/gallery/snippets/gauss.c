#include "snippet.h"

/* shown */
TevStatus smooth(const Tev32f* src, int step, Tev32f* dst, int dstStep, TevSize roi) {
  const int taps = 25;
  int size = 0;
  teviFilterGaussGetBufferSize_32f_C1R(roi, taps, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviFilterGaussBorder_32f_C1R(src, step, dst, dstStep, roi, taps, 4, tevBorderRepl, 0, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(smooth(floats, 4 * STEP, room.floats, 4 * STEP, size))
