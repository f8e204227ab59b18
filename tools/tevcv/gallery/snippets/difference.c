#include "snippet.h"

/* shown */
/* Each pixel against its neighbour above and to the left. */
TevStatus change(const Tev8u* src, int step, Tev8u* dst, int dstStep, TevSize roi) {
  const TevSize common = {roi.width - 1, roi.height - 1};
  return teviAbsDiff_8u_C1R(src + step + 1, step, src, step, dst, dstStep, common);
}
/* end */

TRY(change(grey, STEP, room.bytes, STEP, size))
