// The fuzzer's driver: two bytes choose the exercise, the others are its draws.
#include <cstdio>
#include <cstdlib>

#include "exercise/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace exercise;
  Draw draw(data, size);
  const Entry& entry = entries()[draw.choice(static_cast<std::uint32_t>(entries().size()))];
  const Outcome outcome = runInput(entry, draw);
  if (!outcome.fault.empty()) {
    std::fprintf(stderr, "%s: %s\n", entry.name, outcome.fault.c_str());
    std::abort();
  }
  return 0;
}
