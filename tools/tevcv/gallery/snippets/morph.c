#include "snippet.h"

/* shown */
TevStatus outlines(const Tev8u* src, int step, Tev8u* dst, int dstStep, TevSize roi) {
  const Tev8u disc[] = {0, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 0};
  const TevSize size = {5, 5};
  const TevPoint middle = {2, 2};
  TevMorphAdvState* state = 0;
  TevStatus status = teviMorphAdvInitAlloc_8u_C1R(&state, roi, disc, size, middle);
  if (status != tevStatusOk) return status;
  status = teviMorphGradientBorder_8u_C1R(src, step, dst, dstStep, roi, tevBorderRepl, state);
  teviMorphAdvFree(state);
  return status;
}
/* end */

TRY(outlines(grey, STEP, room.bytes, STEP, size))
