/* All public headers, used from C99: types, a call by value, the hooks, the version record. */
#include "tevcore.h"
#include "tevcv.h"

#include <string.h>

int main(void) {
  const Tev8u a[4] = {1, 2, 3, 4}, b[4] = {4, 3, 2, 1};
  Tev8u d[4];
  const TevSize roi = {2, 2};
  if (teviAbsDiff_8u_C1R(a, 2, b, 2, d, 2, roi) != tevStatusOk) return 1;
  if (memcmp(d, "\3\1\1\3", 4) != 0) return 1;
  if (i_malloc == NULL || i_free == NULL) return 1;
  if (tevSetNumThreads(2) != tevStatusOk) return 1;
  return strcmp(tevcvGetLibVersion()->libraryName, "libtevcvpx.so.5.2") == 0 ? 0 : 1;
}
