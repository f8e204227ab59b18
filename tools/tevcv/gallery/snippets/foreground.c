#include "snippet.h"

/* shown */
/* Learns from the first frame on. In the end mask is 255 where the last frame does not fit the background. */
TevStatus moving(const Tev8u** frames, int count, int step, Tev8u* mask, int maskStep, TevSize roi) {
  TevForegroundGaussianState* model = 0;
  const Tev8u* first = frames[0];
  Tev8u ref = 0; /* must be there, and is not used */
  TevStatus status = teviForegroundGaussianInitAlloc_8u_C1R(first, step, roi, &ref, &model);
  for (int i = 1; i < count && status == tevStatusOk; ++i)
    status = teviForegroundGaussian_8u_C1R(frames[i], step, &ref, 1, mask, maskStep, roi, model);
  if (model) {
    void* modes = model->pixels[0]; /* freeing a model leaves these two to the caller */
    teviForegroundGaussianFree_8u_C1R(model);
    tevsFree(modes);
    tevsFree(model);
  }
  return status;
}
/* end */

static TevStatus tryMoving(void) {
  const Tev8u* frames[3] = {grey, grey, colour};
  return moving(frames, 3, STEP, room.bytes, STEP, size);
}
TRY(tryMoving())
