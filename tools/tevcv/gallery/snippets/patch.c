#include "snippet.h"

/* shown */
/* 48 x 48 pixels around a point between pixels; beyond the edge its pixels go on. */
TevStatus around(const Tev8u* src, int step, TevSize roi, Tev8u* dst, int dstStep, Tev32f x, Tev32f y) {
  const TevSize size = {48, 48};
  TevPoint least, most; /* what of dst lies inside the picture */
  return teviCopySubpixIntersect_8u_C1R(src, step, roi, dst, dstStep, size, x, y, &least, &most);
}
/* end */

TRY(around(grey, STEP, size, room.bytes, STEP, 20.25f, 11.5f))
