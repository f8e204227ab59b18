#include "snippet.h"

/* shown */
/* sum is cleared before the first frame. */
TevStatus addFrame(const Tev8u* frame, int step, Tev32f* sum, TevSize roi) {
  return teviAdd_8u32f_C1IR(frame, step, sum, roi.width * (int)sizeof(Tev32f), roi);
}

/* Or a mean that forgets: a new frame counts for a tenth. */
TevStatus blendFrame(const Tev8u* frame, int step, Tev32f* mean, TevSize roi) {
  return teviAddWeighted_8u32f_C1IR(frame, step, mean, roi.width * (int)sizeof(Tev32f), roi, 0.1f);
}
/* end */

TRY(addFrame(grey, STEP, room.floats, size) | blendFrame(grey, STEP, room.floats, size))
