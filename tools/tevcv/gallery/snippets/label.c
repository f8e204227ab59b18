#include "snippet.h"

/* shown */
/* Each connected piece that is not 0 takes a number of its own. */
TevStatus number(Tev8u* pieces, int step, TevSize roi, int* count) {
  int size = 0;
  teviLabelMarkersGetBufferSize_8u_C1R(roi, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviLabelMarkers_8u_C1IR(pieces, step, roi, 1, 254, tevNormInf, count, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(number(copyOfGrey(), STEP, size, &(int){0}))
