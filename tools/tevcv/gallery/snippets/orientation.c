#include "snippet.h"

/* shown */
/* Angles in degrees from 0 to 360, of derivatives without padding. */
TevStatus directions(const Tev32f* dx, const Tev32f* dy, Tev32f* angle, TevSize roi) {
  return tevibFastArctan_32f(dy, dx, angle, roi.width * roi.height);
}
/* end */

TRY(directions(floats, floats, room.floats, size))
