// Every allocation of every function fails once: the call says tevStatusNoMemory, or can do without and gives the same
// result; nothing stays held; and the same exercise gives the same digest right afterwards.
//
//   exercise_failing [--brief] [--only NAME]
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>

#include "exercise/crash.h"
#include "exercise/exercise.h"
#include "exercise/seeds.h"
#include "tevcore.h"

using namespace exercise;

namespace {

// All of the library's memory goes through here, from any thread.
struct Watch {
  std::mutex mutex;
  int requests = 0;
  int failAt = -1;
  int strangers = 0;
  std::map<void*, std::size_t> held;

  void* grant(std::size_t size, void* (*take)(std::size_t)) {
    const std::lock_guard lock(mutex);
    if (requests++ == failAt) return nullptr;
    void* const block = take(size);
    held[block] = size;
    return block;
  }
  void giveBack(void* block) {
    const std::lock_guard lock(mutex);
    if (block && held.erase(block) == 0) ++strangers;
    std::free(block);
  }
  void begin(int fail) {
    requests = 0;
    failAt = fail;
    strangers = 0;
    for (const auto& [block, size] : held) std::free(block);
    held.clear();
  }
} watch;

void installWatch() {
  i_malloc = [](std::size_t size) { return watch.grant(size, std::malloc); };
  i_calloc = [](std::size_t count, std::size_t size) {
    return watch.grant(count * size, [](std::size_t bytes) { return std::calloc(1, bytes); });
  };
  i_realloc = [](void* block, std::size_t size) -> void* {
    void* const larger = watch.grant(size, std::malloc);
    if (!larger) return nullptr;
    std::memcpy(larger, block, watch.held[block] < size ? watch.held[block] : size);
    watch.giveBack(block);
    return larger;
  };
  i_free = [](void* block) { watch.giveBack(block); };
}

// Blocks that a function must not free, as old programs expect it. The extrema keep what their threads used where there
// are more than 32 of them.
bool keepsBlocks(const char* name) { return !std::strncmp(name, "teviMinMaxIndx_", 15); }

// Calls that can do without the memory: a stage indexes its rectangles' corners for speed alone.
bool doesWithout(const char* name) { return !std::strncmp(name, "teviApplyHaarClassifier_", 24); }

int complaints = 0;
long failed = 0;

void complain(const Entry& entry, int threads, int index, int request, const char* what) {
  std::printf("%s, %d threads, run %d, request %d: %s\n", entry.name, threads, index, request, what);
  ++complaints;
}

void failEach(const Entry& entry, int threads, int index, bool large) {
  Exercise::Settings settings;
  settings.large = large;
  const auto once = [&](int failAt) {
    nowRuns(entry.name, "allocations of run", index);
    watch.begin(failAt);
    return perform(entry, Draw(seedOf(entry.name, index)), settings);
  };
  const Outcome proper = once(-1);
  const int requests = watch.requests;
  if (!keepsBlocks(entry.name) && !watch.held.empty()) complain(entry, threads, index, -1, "memory stays held");
  if (watch.strangers) complain(entry, threads, index, -1, "freed what was not its own");
  failed += requests;
  for (int k = 0; k < requests; ++k) {
    const Outcome refused = once(k);
    if (refused.status != tevStatusNoMemory && !(doesWithout(entry.name) && refused.digest == proper.digest))
      complain(entry, threads, index, k, "another status than tevStatusNoMemory");
    if (!keepsBlocks(entry.name) && !watch.held.empty()) complain(entry, threads, index, k, "memory stays held");
    if (watch.strangers) complain(entry, threads, index, k, "freed what was not its own");
    if (once(-1).digest != proper.digest) complain(entry, threads, index, k, "another result afterwards");
  }
}

}  // namespace

int main(int argc, char** argv) {
  bool brief = false;
  const char* only = nullptr;
  for (int i = 1; i < argc; ++i) {
    if (!std::strcmp(argv[i], "--brief")) brief = true;
    if (!std::strcmp(argv[i], "--only") && i + 1 < argc) only = argv[++i];
  }
  tellCrashes();
  installWatch();
  // 40 threads reach the blocks that are on the stack for up to 32.
  for (int threads : {1, 40}) {
    tevSetNumThreads(threads);
    for (const Entry& entry : entries()) {
      if (only && std::strcmp(only, entry.name)) continue;
      for (int i = 0; i < (brief ? 2 : threads == 1 ? 12 : 4); ++i) failEach(entry, threads, 400 + i, false);
      if (threads > 1) failEach(entry, threads, 500, true);
    }
  }
  std::printf("%ld requests failed, %d complaints\n", failed, complaints);
  return complaints == 0 ? 0 : 1;
}
