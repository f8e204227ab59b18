#include "snippet.h"

/* shown */
/* changed is not 0 where two frames differ, history cleared before the first. Motion is forgotten after twelve frames.
 */
TevStatus remember(const Tev8u* changed, int step, Tev32f* history, TevSize roi, int frame) {
  return teviUpdateMotionHistory_8u32f_C1IR(changed, step, history, roi.width * (int)sizeof(Tev32f), roi, (Tev32f)frame,
                                            12);
}
/* end */

TRY(remember(grey, STEP, room.floats, size, 5))
