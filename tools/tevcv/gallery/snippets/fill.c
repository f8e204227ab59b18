#include "snippet.h"

/* shown */
/* What is connected to the seed and differs little from pixel to pixel becomes 255. */
TevStatus fill(Tev8u* image, int step, TevSize roi, TevPoint seed, TevConnectedRegion* region) {
  int size = 0;
  teviFloodFillGetSize_Grad(roi, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviFloodFill_Grad8Con_8u_C1IR(image, step, roi, seed, 255, 4, 4, region, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(fill(copyOfGrey(), STEP, size, (TevPoint){5, 5}, &(TevConnectedRegion){0}))
