// A run of float sums over taps. A sum is defined in extended precision, taps in order, rounded once to Tev32f.
//
// Products of two floats are exact in double. A sum of n of them in double differs from the extended one by less than
// e = n * 2^-53 * sum(|terms|), so where sum - e and sum + e round to the same float, that is the result. A block with
// any element in doubt is done again in extended precision: it holds NaN, infinities, or a value close to the middle
// between two floats.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "filtering/pipeline.h"

namespace tevcv::pipeline {
namespace {

// The bound counts the errors of the extended sum too, and holds up to this many taps.
inline constexpr int longestGuarded = 1024;

// Adds `count` terms and their magnitudes to each element's, or begins with them: several at a time spare passes over
// the block.
template <int count, bool first, class Lines>
void addTerms(Tev64f* __restrict sums, Tev64f* __restrict magnitudes, int n, const Tev32f* taps, Lines lines, int at) {
  Tev64f tap[count];
  const Tev32f* line[count];
  for (int j = 0; j < count; ++j) tap[j] = taps[at + j], line[j] = lines[at + j];
  for (int x = 0; x < n; ++x) {
    Tev64f sum = first ? 0 : sums[x], magnitude = first ? 0 : magnitudes[x];
    for (int j = 0; j < count; ++j) {
      const Tev64f product = tap[j] * line[j][x];
      sum += product;
      magnitude += std::fabs(product);
    }
    sums[x] = sum;
    magnitudes[x] = magnitude;
  }
}

// Stores the sums of one block and tells whether all of them are certain.
template <int fixedLength, class Lines>
bool guardedBlock(Tev32f* d, int n, const Tev32f* taps, int length, Lines lines) {
  const Tev64f unit = length * 0x1p-53;
  alignas(64) Tev64f sums[blockLength];
  alignas(64) Tev64f magnitudes[blockLength];
  if constexpr (fixedLength > 0) {
    addTerms<fixedLength, true>(sums, magnitudes, n, taps, lines, 0);
  } else {
    int j = std::min(length, 4);
    if (j == 4)
      addTerms<4, true>(sums, magnitudes, n, taps, lines, 0);
    else
      addTerms<1, true>(sums, magnitudes, n, taps, lines, 0), j = 1;
    for (; j + 3 <= length; j += 3) addTerms<3, false>(sums, magnitudes, n, taps, lines, j);
    for (; j < length; ++j) addTerms<1, false>(sums, magnitudes, n, taps, lines, j);
  }
  // Compared as bits: zeros of either sign are different results.
  std::uint32_t doubts = 0;
  alignas(64) Tev32f results[blockLength];
  for (int x = 0; x < n; ++x) {
    const auto low = static_cast<Tev32f>(sums[x] - magnitudes[x] * unit),
               high = static_cast<Tev32f>(sums[x] + magnitudes[x] * unit);
    doubts |= std::bit_cast<std::uint32_t>(low) ^ std::bit_cast<std::uint32_t>(high);
    results[x] = high;
  }
  for (int x = 0; x < n; ++x) d[x] = results[x];
  return doubts == 0;
}

template <int fixedLength>
struct FloatRun {
  const Tev32f* taps;
  int length;

  template <class Lines>
  [[gnu::noinline]] void operator()(Lines lines, Tev32f* d, int n) const {
    for (int x = 0; x < n; x += blockLength) {
      const int m = std::min(blockLength, n - x);
      if (length > longestGuarded || !guardedBlock<fixedLength>(d + x, m, taps, length, lines.from(x)))
        extendedBlock(d + x, m, lines.from(x));
    }
  }

 private:
  // The definition.
  template <class Lines>
  void extendedBlock(Tev32f* d, int n, Lines lines) const {
    for (int x = 0; x < n; ++x) {
      Extended sum = 0;
      for (int j = 0; j < length; ++j) sum += static_cast<Extended>(taps[j]) * lines[j][x];
      d[x] = static_cast<Tev32f>(sum);
    }
  }
};

}  // namespace
}  // namespace tevcv::pipeline
