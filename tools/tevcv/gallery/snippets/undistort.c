#include "snippet.h"

/* shown */
/* The focal length is the picture's width, the centre its middle. */
TevStatus straighten(const Tev8u* src, int step, Tev8u* dst, int dstStep, TevSize roi, Tev32f k1, Tev32f k2) {
  const Tev32f focal = (Tev32f)roi.width, cx = (Tev32f)(roi.width - 1) / 2, cy = (Tev32f)(roi.height - 1) / 2;
  int size = 0;
  teviUndistortGetSize(roi, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviUndistortRadial_8u_C1R(src, step, dst, dstStep, roi, focal, focal, cx, cy, k1, k2, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(straighten(grey, STEP, room.bytes, STEP, size, -0.25f, 0.19f))
