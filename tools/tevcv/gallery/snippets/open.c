#include "snippet.h"

/* shown */
/* disc holds 15 x 15 bytes, not 0 where a cell belongs to the element. */
TevStatus open15(const Tev8u* src, int step, Tev8u* dst, int dstStep, TevSize roi, const Tev8u* disc) {
  const TevSize size = {15, 15};
  const TevPoint middle = {7, 7};
  TevMorphAdvState* state = 0;
  TevStatus status = teviMorphAdvInitAlloc_8u_C1R(&state, roi, disc, size, middle);
  if (status != tevStatusOk) return status;
  status = teviMorphOpenBorder_8u_C1R(src, step, dst, dstStep, roi, tevBorderRepl, state);
  teviMorphAdvFree(state);
  return status;
}
/* end */

TRY(open15(grey, STEP, room.bytes, STEP, size, ones))
