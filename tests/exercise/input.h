// A fuzzer's input: the first bytes name an exercise, the rest is what it draws.
#pragma once

#include "exercise/exercise.h"
#include "tevcore.h"

extern "C" void __asan_init() __attribute__((weak));

namespace exercise {

inline bool underAddressSanitizer() { return &__asan_init != nullptr; }

// Runs `entry` on what `draw` holds: threads, size and whether to spoil come first. Memory is malloc's where
// AddressSanitizer watches it, between unmapped pages elsewhere.
inline Outcome runInput(const Entry& entry, Draw draw) {
  tevSetNumThreads(1 + static_cast<int>(draw.choice(3)));
  Exercise::Settings settings;
  if (underAddressSanitizer()) settings.memory = Exercise::Memory::heap;
  settings.large = draw.oneIn(256);
  settings.spoil = draw.oneIn(4);
  return perform(entry, draw, settings);
}

}  // namespace exercise
