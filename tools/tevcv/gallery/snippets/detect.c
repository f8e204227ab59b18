#include "snippet.h"

/* shown */
/* mask holds 1 at every place to look at. Each stage clears those that it rejects, and the next ones skip them. */
TevStatus scan(const Tev32s* sum, int sumStep, const Tev32f* norm, int normStep, Tev8u* mask, int maskStep,
               TevSize places, TevHaarClassifierState** stages, const Tev32f* thresholds, int count, Tev32s* left) {
  TevStatus status = tevStatusOk;
  for (int i = 0; i < count; ++i) {
    status = teviApplyHaarClassifier_32s32f_C1R(sum, sumStep, norm, normStep, mask, maskStep, places, left,
                                                thresholds[i], stages[i]);
    if (status != tevStatusOk || *left == 0) break;
  }
  return status;
}
/* end */

/* One stage of one feature: the left half of a window of 4 x 4 against all of it. */
static TevStatus tryScan(void) {
  const TevRect rects[2] = {{0, 0, 4, 4}, {0, 0, 2, 4}};
  const Tev32f weights[2] = {-1, 2}, threshold = 0, below = 0, above = 1, stageThreshold = 0.5f;
  const Tev32s rectangles = 2;
  const TevSize places = {size.width - 4, size.height - 4};
  TevHaarClassifierState* stage = 0;
  Tev32s left = 0;
  TevStatus status = teviIntegral_8u32s_C1R(grey, STEP, second.ints, 4 * (size.width + 1), size, 0);
  if (status != tevStatusOk) return status;
  for (int i = 0; i < size.width * size.height; ++i) third.floats[i] = 1, room.bytes[i] = 1;
  status = teviHaarClassifierInitAlloc_32f(&stage, rects, weights, &threshold, &below, &above, &rectangles, 1);
  if (status != tevStatusOk) return status;
  status = scan(second.ints, 4 * (size.width + 1), third.floats, 4 * size.width, room.bytes, STEP, places, &stage,
                &stageThreshold, 1, &left);
  teviHaarClassifierFree_32f(stage);
  return status;
}
TRY(tryScan())
