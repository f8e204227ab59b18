#include "snippet.h"

/* shown */
TevStatus edges(const Tev8u* src, int step, Tev16s* dx, Tev16s* dy, Tev8u* dst, TevSize roi) {
  const int wide = roi.width * (int)sizeof(Tev16s);
  int across = 0, down = 0, canny = 0;
  teviFilterSobelNegVertGetBufferSize_8u16s_C1R(roi, tevMskSize3x3, &across);
  teviFilterSobelHorizGetBufferSize_8u16s_C1R(roi, tevMskSize3x3, &down);
  teviCannyGetSize(roi, &canny);
  Tev8u* buffer = tevsMalloc_8u(across + down + canny); /* the largest would do */
  teviFilterSobelNegVertBorder_8u16s_C1R(src, step, dx, wide, roi, tevMskSize3x3, tevBorderRepl, 0, buffer);
  teviFilterSobelHorizBorder_8u16s_C1R(src, step, dy, wide, roi, tevMskSize3x3, tevBorderRepl, 0, buffer);
  TevStatus status = teviCanny_16s8u_C1R(dx, wide, dy, wide, dst, roi.width, roi, 60, 140, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(edges(grey, STEP, second.words, third.words, room.bytes, size))
