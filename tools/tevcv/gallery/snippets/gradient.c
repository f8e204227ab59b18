#include "snippet.h"

/* shown */
/* src has three channels, dst one. */
TevStatus strength(const Tev8u* src, int step, Tev8u* dst, int dstStep, TevSize roi) {
  return teviGradientColorToGray_8u_C3C1R(src, step, dst, dstStep, roi, tevNormL2);
}
/* end */

TRY(strength(colour, 3 * STEP, room.bytes, STEP, size))
