#include "snippet.h"

/* shown */
/* What is left of the detail after a step down and up again: even width and height. */
TevStatus detail(const Tev8u* src, Tev8u* half, Tev8u* back, Tev8u* dst, TevSize roi) {
  const TevSize small = {roi.width / 2, roi.height / 2};
  int down = 0, up = 0;
  teviPyrDownGetBufSize_Gauss5x5(roi.width, tevDataType8u, 1, &down);
  teviPyrUpGetBufSize_Gauss5x5(small.width, tevDataType8u, 1, &up);
  Tev8u* buffer = tevsMalloc_8u(down > up ? down : up);
  teviPyrDown_Gauss5x5_8u_C1R(src, roi.width, half, small.width, roi, buffer);
  teviPyrUp_Gauss5x5_8u_C1R(half, small.width, back, roi.width, small, buffer);
  tevsFree(buffer);
  return teviAbsDiff_8u_C1R(src, roi.width, back, roi.width, dst, roi.width, roi);
}
/* end */

TRY(detail(grey, second.bytes, third.bytes, room.bytes, size))
