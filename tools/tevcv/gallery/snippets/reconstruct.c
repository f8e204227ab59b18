#include "snippet.h"

/* shown */
/* marker lies nowhere above mask, and grows under it until nothing changes. */
TevStatus reconstruct(const Tev8u* mask, int maskStep, Tev8u* marker, int markerStep, TevSize roi) {
  int size = 0;
  teviMorphReconstructGetBufferSize_8u_C1(roi, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviMorphReconstructDilate_8u_C1IR(mask, maskStep, marker, markerStep, roi, buffer, tevNormInf);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(reconstruct(grey, STEP, seeds(), STEP, size))
