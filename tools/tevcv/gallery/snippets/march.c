#include "snippet.h"

/* shown */
/* The time at which a front that starts at the edge of the mask reaches each pixel of it. */
TevStatus arrivals(const Tev8u* mask, int step, Tev32f* times, TevSize roi, Tev32f radius) {
  int size = 0;
  teviFastMarchingGetBufferSize_8u32f_C1R(roi, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status =
      teviFastMarching_8u32f_C1R(mask, step, times, roi.width * (int)sizeof(Tev32f), roi, radius, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(arrivals(grey, STEP, room.floats, size, 4))
