#include "snippet.h"

/* shown */
/* edges is not 0 on edges. Each line takes its distance from the corner and its angle. */
TevStatus lines(const Tev8u* edges, int step, TevSize roi, TevPolarLine* found, int most, int* count) {
  const Tev32f degree = 3.14159265f / 180;
  int size = 0;
  teviHoughLineGetSize_8u_C1R(roi, 1, degree, most, &size);
  Tev8u* buffer = tevsMalloc_8u(size);
  TevStatus status = teviHoughLine_8u32f_C1R(edges, step, roi, 1, degree, 40, found, most, count, buffer);
  tevsFree(buffer);
  return status;
}
/* end */

TRY(lines(grey, STEP, size, room.lines, 20, &(int){0}))
