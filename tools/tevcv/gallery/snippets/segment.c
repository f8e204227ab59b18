#include "snippet.h"

/* shown */
/* markers as for a watershed; regions grow over the picture itself, along small steps first. */
TevStatus grow(Tev8u* src, int step, Tev8u* markers, int markerStep, TevSize roi) {
  int size = 0;
  teviSegmentGradientGetBufferSize_8u_C1R(roi, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviSegmentGradient_8u_C1IR(src, step, markers, markerStep, roi, 0, tevWatershedBound8, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(grow((Tev8u*)grey, STEP, seeds(), STEP, size))
