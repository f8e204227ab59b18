#include "snippet.h"

/* shown */
/* Fills the picture where mask is not 0; times come from teviFastMarching_8u32f_C1R on the mask. */
TevStatus mend(const Tev8u* src, int step, const Tev8u* mask, int maskStep, const Tev32f* times, Tev8u* dst,
               int dstStep, TevSize roi) {
  TevInpaintState* state = 0;
  TevStatus status = teviInpaintInitAlloc_8u_C1R(&state, times, roi.width * (int)sizeof(Tev32f), mask, maskStep, roi, 5,
                                                 tevInpaintIsophote);
  if (status != tevStatusOk) return status;
  status = teviInpaint_8u_C1R(src, step, dst, dstStep, roi, state);
  teviInpaintFree_8u_C1R(state);
  return status;
}
/* end */

TRY(mend(grey, STEP, nothing, STEP, floats, room.bytes, STEP, size))
