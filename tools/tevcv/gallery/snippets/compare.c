#include "snippet.h"

/* shown */
/* mask is not 0 where pixels count. The second norm has the length of b as its unit. */
TevStatus apart(const Tev8u* a, int aStep, const Tev8u* b, int bStep, const Tev8u* mask, int maskStep, TevSize roi,
                Tev64f* norm, Tev64f* relative) {
  TevStatus status = teviNormDiff_L2_8u_C1MR(a, aStep, b, bStep, mask, maskStep, roi, norm);
  if (status == tevStatusOk) status = teviNormRel_L2_8u_C1MR(a, aStep, b, bStep, mask, maskStep, roi, relative);
  return status;
}
/* end */

TRY(apart(grey, STEP, ones, STEP, ones, STEP, size, room.doubles, room.doubles + 1))
