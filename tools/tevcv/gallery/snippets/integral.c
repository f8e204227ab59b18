#include "snippet.h"

/* shown */
/* The sum over any rectangle of the picture then takes four elements of the table. */
TevStatus sumOf(const Tev8u* src, int step, Tev32s* table, TevSize roi, TevRect r, Tev32s* sum) {
  const int columns = roi.width + 1;
  TevStatus status = teviIntegral_8u32s_C1R(src, step, table, columns * (int)sizeof(Tev32s), roi, 0);
  const Tev32s *top = table + r.y * columns + r.x, *bottom = top + r.height * columns;
  *sum = bottom[r.width] - bottom[0] - top[r.width] + top[0];
  return status;
}
/* end */

TRY(sumOf(grey, STEP, second.ints, size, (TevRect){3, 4, 5, 6}, room.ints))
