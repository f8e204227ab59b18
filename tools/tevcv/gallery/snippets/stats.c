#include "snippet.h"

/* shown */
TevStatus describe(const Tev8u* src, int step, TevSize roi, Tev64f* mean, Tev64f* deviation) {
  Tev32f darkest, brightest;
  TevPoint whereDark, whereBright;
  TevStatus status = teviMean_StdDev_8u_C1R(src, step, roi, mean, deviation);
  if (status == tevStatusOk)
    status = teviMinMaxIndx_8u_C1R(src, step, roi, &darkest, &brightest, &whereDark, &whereBright);
  return status;
}
/* end */

TRY(describe(grey, STEP, size, room.doubles, room.doubles + 1))
