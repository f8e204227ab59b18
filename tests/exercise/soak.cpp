// Eight caller threads at once, each going through all exercises in an order of its own, for some time. Every result is
// the one that a serial run gave; at the end no block of the library's is held and the process has not grown.
//
//   exercise_soak SECONDS
#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "exercise/crash.h"
#include "exercise/input.h"
#include "exercise/seeds.h"
#include "tevcore.h"

using namespace exercise;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int callers = 8;
constexpr int seeds = 8;        // small runs of each exercise; run `seeds` is a large one
constexpr int teamSize = 2;     // of each caller: the setting is the whole process's
constexpr long allowance = 32;  // MiB that the process may grow after the first rounds, for the allocator's own needs

std::atomic<long> bytesHeld{0}, runsDone{0};
std::atomic<int> wrong{0};

void* counted(void* block) {
  if (block) bytesHeld += static_cast<long>(malloc_usable_size(block));
  return block;
}
void uncount(void* block) {
  if (block) bytesHeld -= static_cast<long>(malloc_usable_size(block));
}

void watchMemory() {
  i_malloc = [](std::size_t size) { return counted(std::malloc(size)); };
  i_calloc = [](std::size_t count, std::size_t size) { return counted(std::calloc(count, size)); };
  i_realloc = [](void* block, std::size_t size) {
    uncount(block);
    void* const larger = std::realloc(block, size);
    counted(larger ? larger : block);
    return larger;
  };
  i_free = [](void* block) {
    uncount(block);
    std::free(block);
  };
}

// Of the whole process, in all arenas.
long kilobytesInUse() { return static_cast<long>(mallinfo2().uordblks / 1024); }

long residentKilobytes() {
  malloc_trim(0);
  long pages = 0, resident = 0;
  std::FILE* const file = std::fopen("/proc/self/statm", "r");
  if (!file || std::fscanf(file, "%ld %ld", &pages, &resident) != 2) std::abort();
  std::fclose(file);
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

std::uint64_t digestOf(const Entry& entry, int run) {
  nowRuns(entry.name, "soak run", run);
  Exercise::Settings settings;
  settings.large = run == seeds;
  ++runsDone;
  return perform(entry, Draw(seedOf(entry.name, 600 + run)), settings).digest;
}

using Serial = std::vector<std::uint64_t>;  // of each exercise, its runs in a row

// Rounds over all exercises until `end`, one at least. The caller's number chooses where it begins and with which seed.
void soak(int caller, const Serial& serial, Clock::time_point end) {
  const int count = static_cast<int>(entries().size());
  int round = caller;
  do {
    for (int i = 0; i < count && (round == caller || Clock::now() < end); ++i) {
      const int which = (i + caller * (count / callers)) % count;
      // One exercise in eight takes its large run; over eight rounds each does.
      const int run = (which + round) % callers == 0 ? seeds : round % seeds;
      const auto index = static_cast<std::size_t>(which);
      if (digestOf(entries()[index], run) == serial[index * (seeds + 1) + static_cast<std::size_t>(run)]) continue;
      std::printf("%s, run %d: another result than alone\n", entries()[index].name, run);
      ++wrong;
    }
    ++round;
  } while (Clock::now() < end);
}

void soakAll(const Serial& serial, Clock::time_point end) {
  std::vector<std::thread> threads;
  for (int caller = 0; caller < callers; ++caller)
    threads.emplace_back([&serial, caller, end] { soak(caller, serial, end); });
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc == 2 ? std::atoi(argv[1]) : 0;
  if (seconds < 1) {
    std::fprintf(stderr, "usage: %s SECONDS\n", argv[0]);
    return 2;
  }
  tellCrashes();
  watchMemory();
  tevSetNumThreads(teamSize);
  Serial serial;
  for (const Entry& entry : entries())
    for (int run = 0; run <= seeds; ++run) serial.push_back(digestOf(entry, run));

  soakAll(serial, Clock::now());
  const long before = residentKilobytes(), inUseBefore = kilobytesInUse();
  soakAll(serial, Clock::now() + std::chrono::seconds(seconds));
  const long after = residentKilobytes(), inUse = kilobytesInUse();

  std::printf(
      "%ld runs, %d wrong; %ld bytes held; %ld KiB of the heap in use, "
      "%ld KiB before; resident %ld KiB after the first round, %ld KiB at the end\n",
      runsDone.load(), wrong.load(), bytesHeld.load(), inUse, inUseBefore, before, after);
  const bool grown = (after - before > 1024 * allowance || inUse - inUseBefore > 256) &&
                     !underAddressSanitizer();  // which keeps what was freed
  return wrong == 0 && bytesHeld == 0 && !grown ? 0 : 1;
}
