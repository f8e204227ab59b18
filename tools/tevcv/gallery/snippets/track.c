#include "snippet.h"

/* shown */
/* before and after are pyramids of both frames; to starts as a copy of from, x and y of each point. */
TevStatus follow(const TevPyramid* before, const TevPyramid* after, TevSize roi, const Tev32f* from, Tev32f* to,
                 Tev8s* lost, Tev32f* error, int count) {
  TevOptFlowPyrLKState* state = 0;
  TevStatus status = teviOpticalFlowPyrLKInitAlloc_8u_C1R(&state, roi, 15, 0);
  if (status != tevStatusOk) return status;
  status = teviOpticalFlowPyrLK_8u_C1R(before, after, from, to, lost, error, count, 15, 3, 20, 0.02f, state);
  teviOpticalFlowPyrLKFree_8u_C1R(state);
  return status;
}
/* end */

/* A picture against itself: a point stays where it is. */
static TevStatus tryFollow(void) {
  const Tev32f from[2] = {30, 20};
  Tev32f error = 0;
  Tev8s lost = 0;
  void* images[4];
  TevSize sizes[4] = {size};
  Tev64f scales[4] = {1, 0.5, 0.25, 0.125};
  Tev32s steps[4];
  TevPyramid pyramid = {images, sizes, scales, steps, 0, 3};
  for (int i = 0; i < 4; ++i) {
    if (i > 0) sizes[i].width = sizes[i - 1].width / 2, sizes[i].height = sizes[i - 1].height / 2;
    images[i] = (void*)grey;
    steps[i] = STEP;
  }
  room.floats[0] = from[0], room.floats[1] = from[1];
  return follow(&pyramid, &pyramid, size, from, room.floats, &lost, &error, 1);
}
TRY(tryFollow())
