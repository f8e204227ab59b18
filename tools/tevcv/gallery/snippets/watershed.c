#include "snippet.h"

/* shown */
/* markers: a number from 1 to 254 at each seed, 0 elsewhere. Basins grow from them and meet in lines of 255. */
TevStatus basins(const Tev8u* relief, int step, Tev8u* markers, int markerStep, TevSize roi) {
  int size = 0;
  teviSegmentWatershedGetBufferSize_8u_C1R(roi, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviSegmentWatershed_8u_C1IR(relief, step, markers, markerStep, roi, tevWatershedNormChess,
                                                  tevWatershedQueue | tevWatershedBound8, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(basins(grey, STEP, seeds(), STEP, size))
