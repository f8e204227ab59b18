// Test data and the definition for means and deviations.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "kit/kit.h"

namespace moments {

struct Moments {
  Tev64f mean = -7, deviation = -7;
};
inline bool operator==(const Moments& a, const Moments& b) {
  return kit::sameBits(a.mean, b.mean) && kit::sameBits(a.deviation, b.deviation);
}
inline void PrintTo(const Moments& m, std::ostream* out) {
  *out << std::setprecision(17) << "mean " << m.mean << ", deviation " << m.deviation;
}

// The rows of each thread: equal runs, and the last takes the rest.
struct Run {
  int first, end;
};
inline std::vector<Run> runs(int height, int threads) {
  std::vector<Run> all;
  for (int t = 0; t < threads; ++t)
    all.push_back({t * (height / threads), t == threads - 1 ? height : (t + 1) * (height / threads)});
  return all;
}

// The definition. `threads` is 0 on the serial path, where sums stay in extended precision; each thread of the parallel
// path stores its sums as doubles. The second reading of floats has a path of its own.
template <class T, int channels>
Moments defined(const kit::Image<T, channels>& s, const kit::Image<Tev8u>* mask, int coi, int threads,
                int secondThreads) {
  const auto selected = [&](int x, int y) { return !mask || mask->at(x, y) != 0; };
  const auto sum = [&](int count, auto term) {
    long double total = 0;
    for (const Run run : runs(s.height(), count == 0 ? 1 : count)) {
      long double share = 0;
      for (int y = run.first; y < run.end; ++y)
        for (int x = 0; x < s.width(); ++x)
          if (selected(x, y)) share += term(static_cast<long double>(s.at(x, y, coi - 1)));
      total += count == 0 ? share : static_cast<long double>(static_cast<double>(share));
    }
    return total;
  };
  const long double n = sum(0, [](long double) { return 1.0L; });
  if (n == 0) return {0, 0};
  Moments m;
  const long double unrounded = sum(threads, [](long double v) { return v; }) / n;
  m.mean = static_cast<double>(unrounded);
  const long double mean = m.mean;
  long double squares = 0;
  if constexpr (std::is_same_v<T, Tev16u>)  // exact below 2^64, whatever the route
    squares = sum(0, [](long double v) { return v * v; });
  else
    squares = sum(threads, [](long double v) { return v * v; });
  m.deviation = std::sqrt(static_cast<double>(std::fabs(squares / n - unrounded * unrounded)));
  const long double deviation = m.deviation;
  if (std::is_same_v<T, Tev32f> && deviation * deviation < static_cast<long double>(0.05) * mean * mean)
    m.deviation =
        std::sqrt(static_cast<double>(sum(secondThreads, [&](long double v) { return (v - mean) * (v - mean); }) / n));
  return m;
}

// Elements of some kind: any, the ends of the range, a narrow band far from 0, floats of wide exponents.
template <class T>
T draw(kit::Random& random, int kind) {
  if (kind == 0) return random.value<T>();
  if (kind == 1) return static_cast<T>(std::numeric_limits<T>::max() / 2 + random.between(0, 9) / 4);
  if constexpr (std::is_integral_v<T>)
    return random.oneIn(2) ? std::numeric_limits<T>::max() : std::numeric_limits<T>::lowest();
  else
    return kind == 2 ? 1000 + random.real(1.0F) : std::ldexp(random.real(1.0F), random.between(-100, 60));
}
template <>
inline Tev32f draw<Tev32f>(kit::Random& random, int kind) {
  if (kind == 0) return random.value<Tev32f>();
  if (kind == 1) return static_cast<Tev32f>(random.between(0, 255));
  if (kind == 2) return 1000 + random.real(1.0F);
  return std::ldexp(random.real(1.0F), random.between(-100, 60));
}

}  // namespace moments
