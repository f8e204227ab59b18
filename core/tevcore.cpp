// The stand-in core library. All answers come from the running system: the scheduler's affinity mask for threads, the
// kernel's processor tables for cores and caches. A table that is missing gives the plain answer.
#include "tevcore.h"

#include <sched.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr int maxThreads = 1024;
constexpr int defaultCacheBytes = 256 * 1024;
constexpr char cpu0[] = "/sys/devices/system/cpu/cpu0/";

// Reads the first line of a file in the kernel's table of processors.
bool readTable(const char* path, char* line, int size) {
  std::FILE* file = std::fopen(path, "re");
  if (!file) return false;
  const bool read = std::fgets(line, size, file) != nullptr;
  std::fclose(file);
  return read;
}

// How many processors a list such as "0-3,8" names.
int listLength(const char* list) {
  int count = 0;
  while (*list >= '0' && *list <= '9') {
    char* end;
    const long first = std::strtol(list, &end, 10);
    const long last = *end == '-' ? std::strtol(end + 1, &end, 10) : first;
    count += static_cast<int>(last - first + 1);
    list = *end == ',' ? end + 1 : end;
  }
  return count;
}

int processorsInList(const char* name) {
  char path[128], line[4096];
  std::snprintf(path, sizeof path, "%stopology/%s", cpu0, name);
  return readTable(path, line, sizeof line) ? listLength(line) : 0;
}

// Processors of the die, or of the package where the kernel names no dies, over the threads of one core.
int coresOnDie() {
  int onDie = processorsInList("die_cpus_list");
  if (onDie < 1) onDie = processorsInList("package_cpus_list");
  if (onDie < 1) onDie = processorsInList("core_siblings_list");
  int threadsPerCore = processorsInList("core_cpus_list");
  if (threadsPerCore < 1) threadsPerCore = processorsInList("thread_siblings_list");
  if (threadsPerCore < 1) threadsPerCore = 1;
  return onDie >= threadsPerCore ? onDie / threadsPerCore : 1;
}

int largestCacheBytes() {
  long long largest = 0;
  for (int index = 0; index < 16; ++index) {
    char path[128], line[64];
    std::snprintf(path, sizeof path, "%scache/index%d/size", cpu0, index);
    if (!readTable(path, line, sizeof line)) break;
    char* unit;
    long long bytes = std::strtoll(line, &unit, 10);
    bytes *= *unit == 'K' ? 1024 : *unit == 'M' ? 1024 * 1024 : *unit == 'G' ? 1024 * 1024 * 1024 : 1;
    if (bytes > largest) largest = bytes;
  }
  if (largest < 1) return defaultCacheBytes;
  return largest < INT_MAX ? static_cast<int>(largest) : INT_MAX;
}

int usableProcessors() {
  for (int processors = 1024; processors <= 1024 * 1024; processors *= 4) {
    cpu_set_t* set = CPU_ALLOC(processors);
    if (!set) return 1;
    const std::size_t size = CPU_ALLOC_SIZE(processors);
    const int count = sched_getaffinity(0, size, set) == 0 ? CPU_COUNT_S(size, set) : 0;
    CPU_FREE(set);
    if (count > 0) return count < maxThreads ? count : maxThreads;
  }
  return 1;
}

}  // namespace

const Tev32f tevConstantOfNAN_32f = std::numeric_limits<Tev32f>::quiet_NaN();
const Tev64f tevConstantOfNAN_64f = std::numeric_limits<Tev64f>::quiet_NaN();
const Tev64f tevConstantOfINF_64f = std::numeric_limits<Tev64f>::infinity();
const Tev64f tevConstantOfINF_NEG_64f = -std::numeric_limits<Tev64f>::infinity();

Tev32s threads_omp_of_n_tev = usableProcessors();

TEV_API TevStatus tevGetNumThreads(int* pNumThreads) {
  if (!pNumThreads) return tevStatusNullPtr;
  *pNumThreads = threads_omp_of_n_tev;
  return tevStatusOk;
}

TEV_API TevStatus tevSetNumThreads(int numThreads) {
  if (numThreads < 1 || numThreads > maxThreads) return tevStatusBadArg;
  threads_omp_of_n_tev = numThreads;
  return tevStatusOk;
}

TEV_API int tevGetNumCoresOnDie() {
  static const int cores = coresOnDie();
  return cores;
}

TEV_API TevStatus tevGetMaxCacheSizeB(int* pSizeBytes) {
  if (!pSizeBytes) return tevStatusNullPtr;
  static const int bytes = largestCacheBytes();
  *pSizeBytes = bytes;
  return tevStatusOk;
}
