/* Calls both libraries and prints the files that the calls ended in: which build of the library the loader picked. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>

#include "tevcore.h"
#include "tevcv.h"

static int print(const char* symbol) {
  Dl_info info;
  void* const address = dlsym(RTLD_DEFAULT, symbol);
  if (!address || !dladdr(address, &info)) return 1;
  printf("%s\n", info.dli_fname);
  return 0;
}

int main(void) {
  Tev8u pixel = 7;
  const TevSize one = {1, 1};
  if (tevSetNumThreads(1) != tevStatusOk) return 1;
  if (teviAbsDiffC_8u_C1R(&pixel, 1, &pixel, 1, one, 9) != tevStatusOk || pixel != 2) return 1;
  return print("teviAbsDiffC_8u_C1R") || print("tevSetNumThreads");
}
