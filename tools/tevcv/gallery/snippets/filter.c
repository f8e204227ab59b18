#include "snippet.h"

/* shown */
TevStatus derive(const Tev8u* src, int step, Tev16s* dst, int dstStep, TevSize roi) {
  int size = 0;
  teviFilterSobelVertGetBufferSize_8u16s_C1R(roi, tevMskSize3x3, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status =
      teviFilterSobelVertBorder_8u16s_C1R(src, step, dst, dstStep, roi, tevMskSize3x3, tevBorderRepl, 0, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(derive(grey, STEP, room.words, 2 * STEP, size))
