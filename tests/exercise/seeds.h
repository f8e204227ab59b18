// What the programs over the exercises share: fixed seeds, and which results belong to a thread count.
#pragma once

#include <cstdint>
#include <cstring>

namespace exercise {

inline std::uint64_t mixed(std::uint64_t digest, std::uint64_t word) {
  digest = (digest ^ word) * 0x9E3779B97F4A7C15ULL;
  return digest ^ digest >> 32;
}

// The seed of run `index` of an exercise, whatever stands before it in the list.
inline std::uint64_t seedOf(const char* name, int index) {
  std::uint64_t seed = 0xCBF29CE484222325ULL;
  for (; *name; ++name) seed = (seed ^ static_cast<unsigned char>(*name)) * 0x100000001B3ULL;
  return mixed(seed, static_cast<std::uint64_t>(index));
}

// Results that are defined over the threads' shares: sums of floats, and the maximum of floats with a NaN; chamfer
// distances by the 5x5 mask or in floats and marched times, whose two threads meet at a seam; fills in the order of
// such times.
inline bool dependsOnThreads(const char* name) {
  const auto begins = [&](const char* text) { return !std::strncmp(name, text, std::strlen(text)); };
  const bool ofFloats = std::strstr(name, "32f") != nullptr;
  return (ofFloats && (begins("teviMean_") || begins("teviNorm") || begins("teviDistanceTransform_3x3"))) ||
         begins("teviDistanceTransform_5x5") || begins("teviFastMarching") || begins("teviInpaint");
}

}  // namespace exercise
