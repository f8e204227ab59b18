#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "bench.h"
#include "tevcore.h"

namespace {

// What the calling thread has used of its processor, so that other work on the machine does not count; the time that
// passes where an entry runs several threads.
double now(int threads) {
  timespec t{};
  clock_gettime(threads == 1 ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &t);
  return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

std::vector<bench::Entry>& entries() {
  static std::vector<bench::Entry> all;
  return all;
}

double median(std::vector<double> times) {
  std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
  return times[times.size() / 2];
}

// The unit. Measured right before and after each entry, since a shared machine's speed drifts.
double secondsOfACopy() {
  constexpr size_t bytes = size_t{1920} * 1080;
  static std::vector<unsigned char> from(bytes, 1), to(bytes, 2);
  std::vector<double> times;
  for (int i = 0; i < 60; ++i) {
    const double start = now(1);
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::ClobberMemory();
    times.push_back(now(1) - start);
  }
  return median(times);
}

void run(benchmark::State& state, const bench::Entry& entry) {
  tevSetNumThreads(entry.threads);
  const auto call = entry.prepare();
  call();
  const double copyBefore = secondsOfACopy();
  std::vector<double> times;
  for (auto _ : state) {
    const double start = now(entry.threads);
    call();
    times.push_back(now(entry.threads) - start);
    state.SetIterationTime(times.back());
  }
  const double copy = (copyBefore + secondsOfACopy()) / 2, time = median(times);
  state.counters["copies"] = time / copy;
  state.counters["target"] = entry.target;
  state.counters["ns_pixel"] = time * 1e9 / (double(entry.roi.width) * entry.roi.height);
}

// One line an entry: name, milliseconds, nanoseconds a pixel, copies, target.
class Table : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override {
    std::printf("%-48s %10s %10s %10s %10s\n", "entry", "ms", "ns/pixel", "copies", "target");
    return true;
  }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      const double copies = run.counters.at("copies"), target = run.counters.at("target");
      std::printf("%-48s %10.3f %10.3f %10.2f ", run.run_name.function_name.c_str(), run.GetAdjustedRealTime(),
                  double(run.counters.at("ns_pixel")), copies);
      if (target > 0)
        std::printf("%10.1f%s\n", target, copies <= target ? "" : copies <= 1.25 * target ? "  (over)" : "  MISSED");
      else
        std::printf("%10s\n", "-");
      std::fflush(stdout);
    }
  }
};

}  // namespace

bool bench::add(Entry entry) {
  entries().push_back(std::move(entry));
  return true;
}

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const auto& entry : entries())
    benchmark::RegisterBenchmark(entry.name.c_str(), run, entry)
        ->UseManualTime()
        ->MinTime(0.15)
        ->Unit(benchmark::kMillisecond);
  Table table;
  benchmark::RunSpecifiedBenchmarks(&table);
  return 0;
}
