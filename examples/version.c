/* Says which library this program runs with. */
#include <stdio.h>

#include "tevcore.h"
#include "tevcv.h"

int main(void) {
  const TevLibraryVersion* const version = tevcvGetLibVersion();
  int threads = 0;
  tevGetNumThreads(&threads);
  printf("%s %s build %d.%d \"%s\", %d threads\n", version->libraryName, version->versionText, version->buildMajor,
         version->buildNumber, version->cpuTag, threads);
  return 0;
}
