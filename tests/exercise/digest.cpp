// One line for each exercise: a digest of everything that its functions returned and wrote over a fixed run, the same
// on every build, processor and thread count. Where a result is defined over the threads' shares, a digest for each
// count follows. Fails where thread counts differ that should not, or where a refused call wrote something.
//
//   exercise_digest [--heap] [--brief] [--only NAME] [--names FILE]
//
// --heap takes memory from malloc, for sanitizers and memcheck, instead of between unmapped pages; --brief runs fewer
// seeds; --names writes down the public functions that succeeded.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "exercise/crash.h"
#include "exercise/exercise.h"
#include "exercise/seeds.h"
#include "tevcore.h"

// The extrema must keep the blocks of a call that more than 32 threads share: LeakSanitizer lets them.
extern "C" const char* __lsan_default_suppressions() { return "leak:teviMinMaxIndx_\n"; }

using namespace exercise;

namespace {

struct Options {
  bool heap = false;
  bool brief = false;
  const char* only = nullptr;
  const char* names = nullptr;
};

Options parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    if (!std::strcmp(argv[i], "--heap"))
      options.heap = true;
    else if (!std::strcmp(argv[i], "--brief"))
      options.brief = true;
    else if (!std::strcmp(argv[i], "--only") && i + 1 < argc)
      options.only = argv[++i];
    else if (!std::strcmp(argv[i], "--names") && i + 1 < argc)
      options.names = argv[++i];
    else {
      std::fprintf(stderr, "usage: %s [--heap] [--brief] [--only NAME] [--names FILE]\n", argv[0]);
      std::exit(2);
    }
  }
  return options;
}

// Runs of one exercise, their digests in one.
class Runs {
 public:
  explicit Runs(const Options& options) : options_(options) {}

  // What every thread count runs.
  std::uint64_t shared(const Entry& entry) {
    std::uint64_t digest = 0;
    for (int i = 0; i < (options_.brief ? 2 : 8); ++i) add(digest, entry, i, false, false);
    add(digest, entry, 100, true, false);
    return digest;
  }
  // More small calls, and some with a bad argument.
  std::uint64_t further(const Entry& entry) {
    std::uint64_t digest = 0;
    for (int i = 0; i < (options_.brief ? 2 : 16); ++i) add(digest, entry, 200 + i, false, false);
    for (int i = 0; i < (options_.brief ? 2 : 16); ++i) add(digest, entry, 300 + i, false, true);
    return digest;
  }
  int faults() const { return faults_; }
  const Names& names() const { return names_; }

 private:
  void add(std::uint64_t& digest, const Entry& entry, int index, bool large, bool spoil) {
    nowRuns(entry.name, large ? "large run" : spoil ? "spoiled run" : "run", index);
    Exercise::Settings settings;
    settings.memory = options_.heap ? Exercise::Memory::heap : Exercise::Memory::guarded;
    settings.large = large;
    settings.spoil = spoil;
    const Outcome outcome = perform(entry, Draw(seedOf(entry.name, index)), settings, &names_);
    if (!outcome.fault.empty()) {
      std::fprintf(stderr, "%s, run %d: %s\n", entry.name, index, outcome.fault.c_str());
      ++faults_;
    }
    digest = mixed(digest, outcome.digest);
  }

  Options options_;
  Names names_;
  int faults_ = 0;
};

struct Line {
  const Entry* entry;
  std::uint64_t one, three, many;  // at 1, 3 and 40 threads
  std::uint64_t further;
};

}  // namespace

int main(int argc, char** argv) {
  tellCrashes();
  const Options options = parse(argc, argv);
  Runs runs(options);
  std::vector<Line> lines;
  for (const Entry& entry : entries())
    if (!options.only || !std::strcmp(options.only, entry.name)) lines.push_back({&entry, 0, 0, 0, 0});

  tevSetNumThreads(1);
  for (Line& line : lines) {
    line.one = runs.shared(*line.entry);
    line.further = runs.further(*line.entry);
  }
  tevSetNumThreads(3);
  for (Line& line : lines) line.three = runs.shared(*line.entry);
  tevSetNumThreads(40);
  for (Line& line : lines) line.many = runs.shared(*line.entry);

  int wrong = runs.faults();
  std::uint64_t total = 0;
  for (const Line& line : lines) {
    const std::uint64_t digest = mixed(line.one, line.further);
    std::printf("%-44s %016" PRIx64, line.entry->name, digest);
    total = mixed(total, digest);
    for (const auto& [threads, other] : {std::pair{3, line.three}, {40, line.many}}) {
      if (other == line.one) continue;
      std::printf("  %d threads %016" PRIx64, threads, other);
      total = mixed(total, other);
      if (dependsOnThreads(line.entry->name)) continue;
      std::fprintf(stderr, "%s gives another result with %d threads\n", line.entry->name, threads);
      ++wrong;
    }
    std::printf("\n");
  }
  std::printf("%-44s %016" PRIx64 "\n", "all", total);

  if (options.names) {
    std::FILE* const file = std::fopen(options.names, "w");
    if (!file) {
      std::perror(options.names);
      return 2;
    }
    for (const std::string& name : runs.names().succeeded) std::fprintf(file, "%s\n", name.c_str());
    std::fclose(file);
  }
  return wrong == 0 ? 0 : 1;
}
