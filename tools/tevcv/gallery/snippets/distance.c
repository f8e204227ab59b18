#include "snippet.h"

/* shown */
/* From each pixel to the nearest that is 0, exactly. */
TevStatus distances(const Tev8u* src, int step, Tev32f* dst, TevSize roi) {
  int size = 0;
  teviTrueDistanceTransformGetBufferSize_8u32f_C1R(roi, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviTrueDistanceTransform_8u32f_C1R(src, step, dst, roi.width * (int)sizeof(Tev32f), roi, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(distances(grey, STEP, room.floats, size))
