#include "snippet.h"

/* shown */
/* Deviation in windows of 9 x 9 pixels: sum and squares are tables one column and one row larger than the picture. */
TevStatus texture(const Tev8u* src, int step, Tev32s* sum, Tev64f* squares, Tev32f* dst, TevSize roi) {
  const int sumStep = (roi.width + 1) * (int)sizeof(Tev32s), squareStep = (roi.width + 1) * (int)sizeof(Tev64f);
  const TevRect window = {0, 0, 9, 9};
  const TevSize places = {roi.width - 8, roi.height - 8};
  TevStatus status = teviSqrIntegral_8u32s64f_C1R(src, step, sum, sumStep, squares, squareStep, roi, 0, 0);
  if (status == tevStatusOk)
    status = teviRectStdDev_32s32f_C1R(sum, sumStep, squares, squareStep, dst, places.width * (int)sizeof(Tev32f),
                                       places, window);
  return status;
}
/* end */

TRY(texture(grey, STEP, second.ints, third.doubles, room.floats, size))
