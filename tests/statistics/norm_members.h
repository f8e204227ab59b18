// What the norm tests share: members as rows of a table, norms by their plain definition, and the tests that every
// member passes, checks of arguments among them.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>
#include <type_traits>

#include "kit/kit.h"
#include "tevcv/statistics.h"

namespace norms {

using kit::Image;
using kit::Random;

enum class Kind { Inf, L1, L2 };

// Pixels a thread from which a member runs in parallel; 0 for a member that never does.
struct Gate {
  int pixelsPerThread;
  bool wantsCores = false;

  // The shares of rows over which sums are taken.
  int shares(TevSize roi) const {
    int threads = 0;
    tevGetNumThreads(&threads);
    const bool parallel = pixelsPerThread > 0 &&
                          std::int64_t{roi.width} * roi.height >= std::int64_t{threads} * pixelsPerThread &&
                          (!wantsCores || tevGetNumCoresOnDie() != 1);
    return parallel ? threads : 1;
  }
};

template <class T>
struct OneImage {
  const char* name;
  TevStatus (*c1)(const T*, int, const Tev8u*, int, TevSize, Tev64f*);
  TevStatus (*c3)(const T*, int, const Tev8u*, int, TevSize, int, Tev64f*);
  Gate gate1, gate3;
};

template <class T>
struct TwoImages {
  const char* name;
  TevStatus (*c1)(const T*, int, const T*, int, const Tev8u*, int, TevSize, Tev64f*);
  TevStatus (*c3)(const T*, int, const T*, int, const Tev8u*, int, TevSize, int, Tev64f*);
  Gate gate1, gate3;
};

// ---- The definition. ----

using Extended = long double;

struct Result {
  TevStatus status;
  Tev64f value;
};

// The sums of one share, in the fields in which they are kept.
struct Sums {
  Tev64f inf = 0;             // of integers and of floats compared as floats
  std::uint32_t pattern = 0;  // of floats compared as patterns
  std::uint32_t wrapping = 0;
  std::uint64_t wide = 0;
  Tev64f rounded = 0;
  Extended extended = 0;
};

// Takes the magnitude of one selected pixel.
template <class T>
void take(Sums& sums, Kind kind, Extended magnitude) {
  if constexpr (std::is_same_v<T, Tev32f>) {
    if (kind == Kind::L1) sums.extended += magnitude;
    if (kind == Kind::L2) sums.extended += magnitude * magnitude;
    if (kind == Kind::Inf && static_cast<Tev64f>(magnitude) > sums.inf) sums.inf = static_cast<Tev64f>(magnitude);
  } else {
    const auto v = static_cast<std::uint64_t>(magnitude);
    if (kind == Kind::Inf && static_cast<Tev64f>(v) > sums.inf) sums.inf = static_cast<Tev64f>(v);
    if (kind == Kind::L1) sums.wrapping += static_cast<std::uint32_t>(v);
    if (kind == Kind::L2) sums.wide += v * v;
    if (sizeof(T) == 2) sums.rounded += static_cast<Tev64f>(kind == Kind::L1 ? v : v * v);
  }
}

template <class T>
Tev64f valueOf(const Sums& sums, Kind kind) {
  if (kind == Kind::Inf) return sums.inf;
  if (std::is_same_v<T, Tev32f>) return static_cast<Tev64f>(sums.extended);
  if (sizeof(T) == 2) return sums.rounded;
  return kind == Kind::L1 ? static_cast<Tev64f>(static_cast<std::int32_t>(sums.wrapping))
                          : static_cast<Tev64f>(sums.wide);
}

// Rows of share t of n: whole rows, the last share takes the rest.
struct Run {
  int first, end;
};
inline Run rowsOf(int height, int n, int t) { return {t * (height / n), t == n - 1 ? height : (t + 1) * (height / n)}; }

inline Tev64f finish(Kind kind, Tev64f total) { return kind == Kind::L2 ? std::sqrt(total) : total; }

// The norm of channel c of one image.
template <class T, int channels>
Tev64f normByDefinition(Kind kind, const Image<T, channels>& src, const Image<Tev8u>& mask, int c, int shares) {
  Tev64f total = 0;
  for (int t = 0; t < shares; ++t) {
    const Run run = rowsOf(src.height(), shares, t);
    Sums sums;
    for (int y = run.first; y < run.end; ++y) {
      for (int x = 0; x < src.width(); ++x) {
        if (mask.at(x, y) == 0) continue;
        const T value = src.at(x, y, c);
        if constexpr (std::is_same_v<T, Tev32f>) {
          const std::uint32_t pattern = std::bit_cast<std::uint32_t>(value) & 0x7FFFFFFFU;
          if (pattern > sums.pattern) sums.pattern = pattern;
        }
        take<T>(sums, kind, std::fabs(static_cast<Extended>(value)));
      }
      sums.extended = static_cast<Tev64f>(sums.extended);  // between rows
    }
    Tev64f part = valueOf<T>(sums, kind);
    if (std::is_same_v<T, Tev32f> && kind == Kind::Inf) part = std::bit_cast<Tev32f>(sums.pattern);
    if (t == 0)
      total = part;
    else if (kind != Kind::Inf)
      total += part;
    else if (part > total)
      total = part;
  }
  return finish(kind, total);
}

// The norm of the difference of two images in channel c, or the relative norm.
template <class T, int channels>
Result pairByDefinition(bool relative, Kind kind, const Image<T, channels>& a, const Image<T, channels>& b,
                        const Image<Tev8u>& mask, int c, int shares) {
  Tev64f numerator = 0, denominator = 0;
  Extended exactNumerator = 0, exactDenominator = 0;
  for (int t = 0; t < shares; ++t) {
    const Run run = rowsOf(a.height(), shares, t);
    Sums differences, magnitudes;
    for (int y = run.first; y < run.end; ++y)
      for (int x = 0; x < a.width(); ++x) {
        if (mask.at(x, y) == 0) continue;
        const Extended p = a.at(x, y, c), q = b.at(x, y, c);
        take<T>(differences, kind, std::fabs(p - q));
        take<T>(magnitudes, kind, std::fabs(q));
      }
    const Tev64f n = valueOf<T>(differences, kind), d = valueOf<T>(magnitudes, kind);
    numerator = kind != Kind::Inf ? numerator + n : n > numerator ? n : numerator;
    denominator = kind != Kind::Inf ? denominator + d : d > denominator ? d : denominator;
    exactNumerator = differences.extended, exactDenominator = magnitudes.extended;
  }
  if (!relative) return {tevStatusOk, finish(kind, numerator)};
  if (denominator == 0) {
    constexpr Tev64f inf = std::numeric_limits<Tev64f>::infinity(), nan = std::numeric_limits<Tev64f>::quiet_NaN();
    return {tevStatusDivByZeroWarning, numerator > 0 ? inf : numerator < 0 ? -inf : nan};
  }
  const bool floatSums = std::is_same_v<T, Tev32f> && kind != Kind::Inf;
  const Extended quotient =
      floatSums ? exactNumerator / exactDenominator : static_cast<Extended>(numerator) / denominator;
  return {tevStatusOk, finish(kind, static_cast<Tev64f>(quotient))};
}

// ---- Calls by image. ----

template <class T>
Result call(const OneImage<T>& member, const Image<T>& src, const Image<Tev8u>& mask, int) {
  Result r = {0, -1};
  r.status = member.c1(src.data(), src.step(), mask.data(), mask.step(), src.size(), &r.value);
  return r;
}
template <class T>
Result call(const OneImage<T>& member, const Image<T, 3>& src, const Image<Tev8u>& mask, int c) {
  Result r = {0, -1};
  r.status = member.c3(src.data(), src.step(), mask.data(), mask.step(), src.size(), c + 1, &r.value);
  return r;
}
template <class T>
Result call(const TwoImages<T>& member, const Image<T>& a, const Image<T>& b, const Image<Tev8u>& mask, int) {
  Result r = {0, -1};
  r.status = member.c1(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), a.size(), &r.value);
  return r;
}
template <class T>
Result call(const TwoImages<T>& member, const Image<T, 3>& a, const Image<T, 3>& b, const Image<Tev8u>& mask, int c) {
  Result r = {0, -1};
  r.status = member.c3(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), a.size(), c + 1, &r.value);
  return r;
}

inline testing::AssertionResult same(Result actual, Result expected) {
  if (actual.status == expected.status && kit::sameBits(actual.value, expected.value))
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << std::setprecision(17) << "status " << actual.status << ", value "
                                     << actual.value << "; expected " << expected.status << ", " << expected.value;
}

// ---- Random elements, of which floats take special values now and then. ----

enum class Floats { Plain, Wild, Special };

template <class T>
T element(Random& random, Floats floats) {
  if constexpr (std::is_same_v<T, Tev32f>) {
    constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), nan = std::numeric_limits<Tev32f>::quiet_NaN();
    constexpr Tev32f most = std::numeric_limits<Tev32f>::max(), least = std::numeric_limits<Tev32f>::denorm_min();
    constexpr Tev32f specials[] = {nan, -nan, inf, -inf, most, -most, least, -least, -0.0F, 0.0F, 1.0F};
    if (floats == Floats::Special && random.oneIn(8)) return specials[random.between(0, 10)];
    if (floats == Floats::Wild) return std::ldexp(random.real(1.0F), random.between(-126, 127));
    return random.value<T>();
  } else {
    if (random.oneIn(4)) return random.oneIn(2) ? std::numeric_limits<T>::max() : std::numeric_limits<T>::min();
    return random.value<T>();
  }
}

template <class T, int channels>
Image<T, channels> randomImage(Random& random, int width, int height, Floats floats = Floats::Plain) {
  return random.image<T, channels>(width, height, [&] { return element<T>(random, floats); });
}

// Widths around the blocks in which a row is taken, heights of a few rows.
inline TevSize randomSize(Random& random, int trial) {
  constexpr int widths[] = {1, 2, 1023, 1024, 1025, 2049};
  if (trial < 6) return {widths[trial], 2};
  return {random.between(1, 90), random.between(1, 6)};
}

inline Floats floatsOf(int trial) { return Floats{trial % 3}; }

template <class T, int channels = 1>
Image<T, channels> constant(int width, int height, T value) {
  Image<T, channels> image(width, height);
  image.fill(value);
  return image;
}

// A large image in little time: rows drawn from a few random ones.
template <class T, int channels>
Image<T, channels> largeImage(Random& random, TevSize size) {
  constexpr int drawn = 11;
  const auto few = random.image<T, channels>(size.width, drawn);
  Image<T, channels> image(size.width, size.height);
  for (int y = 0; y < size.height; ++y)
    std::memcpy(reinterpret_cast<char*>(image.data()) + std::ptrdiff_t{y} * image.step(),
                reinterpret_cast<char*>(few.data()) + std::ptrdiff_t{random.between(0, drawn - 1)} * few.step(),
                static_cast<std::size_t>(image.step()));
  return image;
}

// Long float sums are tried on data of several kinds, since how they round depends on it: whole numbers, fractions of
// 24 bits, mixed magnitudes, a growing picture, few pixels of great weight, and a heavy first pixel whose sum is so
// large that small ones lie half way between two of its neighbours again and again (for sums, and for sums of squares).
constexpr int floatKinds = 7;
inline Tev32f floatOfKind(Random& random, int kind, int drawn) {
  const Tev32f heavy = random.oneIn(2) ? 1.0F : -1.0F;
  switch (kind) {
    case 0:
      return static_cast<Tev32f>(random.between(-255, 255));
    case 1:
      return random.real(1.0F);
    case 2:
      return random.value<Tev32f>();
    case 3:
      return std::ldexp(random.real(1.0F), drawn / 2000);
    case 4:
      return random.oneIn(500) ? random.real(1e6F) : random.real(1e-3F);
    case 5:
      return drawn == 0 ? heavy * 0x1p16F : static_cast<Tev32f>(random.between(0, 63)) * 0x1p-51F;
    default:
      return drawn == 0 ? heavy * 0x1p9F : static_cast<Tev32f>(random.between(0, 63)) * 0x1p-26F;
  }
}
inline Image<Tev32f> floatImage(Random& random, int kind, TevSize size) {
  int drawn = 0;
  return random.image<Tev32f>(size.width, size.height, [&] { return floatOfKind(random, kind, drawn++); });
}

inline void longSumsEqualTheChain(const OneImage<Tev32f>& member, Kind norm) {
  Random random;
  for (int kind = 0; kind < floatKinds; ++kind)
    for (const TevSize size : {TevSize{1500, 60}, TevSize{90000, 1}, TevSize{7, 9000}}) {
      const auto src = floatImage(random, kind, size);
      auto mask = random.mask(size.width, size.height, 8);
      mask.set(0, 0, 1);
      EXPECT_TRUE(same(call(member, src, mask, 0), {tevStatusOk, normByDefinition(norm, src, mask, 0, 1)}))
          << "data of kind " << kind << ", " << size.width << " x " << size.height;
    }
}
inline void longSumsEqualTheChain(const TwoImages<Tev32f>& member, bool relative, Kind norm) {
  Random random;
  for (int kind = 0; kind < floatKinds; ++kind)
    for (const TevSize size : {TevSize{1500, 60}, TevSize{90000, 1}, TevSize{7, 9000}}) {
      const auto a = floatImage(random, kind, size), b = floatImage(random, kind, size);
      auto mask = random.mask(size.width, size.height, 8);
      mask.set(0, 0, 1);
      EXPECT_TRUE(same(call(member, a, b, mask, 0), pairByDefinition(relative, norm, a, b, mask, 0, 1)))
          << "data of kind " << kind << ", " << size.width << " x " << size.height;
    }
}

// ---- Tests that every member passes. `relative` and `kind` say which norm it is. ----

struct Norm {
  Kind kind;
  bool relative = false;
};

template <int channels, class T>
void equalsTheDefinition(const OneImage<T>& member, Norm norm) {
  Random random(channels);
  for (int trial = 0; trial < 60; ++trial) {
    const TevSize size = randomSize(random, trial);
    const auto src = randomImage<T, channels>(random, size.width, size.height, floatsOf(trial));
    const auto mask = random.mask(size.width, size.height, random.between(1, 4));
    const int c = random.between(0, channels - 1);
    EXPECT_TRUE(same(call(member, src, mask, c), {tevStatusOk, normByDefinition(norm.kind, src, mask, c, 1)}))
        << member.name << " C" << channels << ", " << size.width << " x " << size.height << ", trial " << trial;
  }
}

template <int channels, class T>
void equalsTheDefinition(const TwoImages<T>& member, Norm norm) {
  Random random(channels);
  for (int trial = 0; trial < 60; ++trial) {
    const TevSize size = randomSize(random, trial);
    const auto a = randomImage<T, channels>(random, size.width, size.height, floatsOf(trial));
    const auto b = randomImage<T, channels>(random, size.width, size.height, floatsOf(trial));
    const auto mask = random.mask(size.width, size.height, random.between(1, 4));
    const int c = random.between(0, channels - 1);
    EXPECT_TRUE(same(call(member, a, b, mask, c), pairByDefinition(norm.relative, norm.kind, a, b, mask, c, 1)))
        << member.name << " C" << channels << ", " << size.width << " x " << size.height << ", trial " << trial;
  }
}

// Large enough for 40 threads to pass the gate, and for no thread count to divide the rows evenly.
inline TevSize sizeFor40(Gate gate) {
  constexpr int height = 1001;
  return {(40 * gate.pixelsPerThread + height - 1) / height, height};
}

template <int channels, class T>
void equalsTheDefinitionOverShares(const OneImage<T>& member, Norm norm) {
  const Gate gate = channels == 1 ? member.gate1 : member.gate3;
  Random random(channels);
  const TevSize size = sizeFor40(gate);
  const auto src = largeImage<T, channels>(random, size);
  const auto mask = largeImage<Tev8u, 1>(random, size);
  for (int threads : kit::threadCounts) {
    const kit::Threads setting(threads);
    const Tev64f expected = normByDefinition(norm.kind, src, mask, channels / 2, gate.shares(size));
    EXPECT_TRUE(same(call(member, src, mask, channels / 2), {tevStatusOk, expected}))
        << member.name << " C" << channels << ", " << threads << " threads";
  }
}

template <int channels, class T>
void equalsTheDefinitionOverShares(const TwoImages<T>& member, Norm norm) {
  const Gate gate = channels == 1 ? member.gate1 : member.gate3;
  if (gate.pixelsPerThread == 0) return;
  Random random(channels);
  const TevSize size = sizeFor40(gate);
  const auto a = largeImage<T, channels>(random, size), b = largeImage<T, channels>(random, size);
  const auto mask = largeImage<Tev8u, 1>(random, size);
  for (int threads : kit::threadCounts) {
    const kit::Threads setting(threads);
    const Result expected = pairByDefinition(norm.relative, norm.kind, a, b, mask, channels / 2, gate.shares(size));
    EXPECT_TRUE(same(call(member, a, b, mask, channels / 2), expected))
        << member.name << " C" << channels << ", " << threads << " threads";
  }
}

template <int channels, class T>
Result callOnZeros(const OneImage<T>& member, TevSize size) {
  const auto zeros = constant<T, channels>(size.width, size.height, 0);
  return call(member, zeros, Image<Tev8u>(size.width, size.height), 0);
}
template <int channels, class T>
Result callOnZeros(const TwoImages<T>& member, TevSize size) {
  const auto zeros = constant<T, channels>(size.width, size.height, 0);
  return call(member, zeros, zeros, Image<Tev8u>(size.width, size.height), 0);
}

// Past 32 threads a parallel call takes one block for its slots, so the allocator sees on which side of its gate a call
// went. A member without a gate stays serial on a region that opens all others.
template <int channels, class Member>
void forksAtItsGate(const Member& member, Norm norm) {
  const Gate gate = channels == 1 ? member.gate1 : member.gate3;
  const kit::Threads setting(40);
  const int pixels = 40 * (gate.pixelsPerThread ? gate.pixelsPerThread : 131072);
  const int slots = norm.relative ? 80 : 40;
  for (const TevSize size : {TevSize{pixels, 1}, TevSize{pixels - 1, 1}}) {
    const bool forks = gate.shares(size) > 1;
    const kit::AllocatorWatch watch;
    const Result zero = callOnZeros<channels>(member, size);
    EXPECT_EQ(zero.status, norm.relative ? tevStatusDivByZeroWarning : tevStatusOk) << member.name;
    EXPECT_EQ(watch.requests(), forks ? 1 : 0) << member.name << " C" << channels << " on " << size.width << " pixels";
    EXPECT_EQ(watch.blocksHeld(), 0) << member.name;
    if (forks) {
      EXPECT_EQ(watch.bytes(), slots * sizeof(Tev64f) + 32 + sizeof(void*)) << member.name;
    }
  }
}

template <int channels, class Member>
void reportsThatSlotsFoundNoMemory(const Member& member, Norm) {
  const Gate gate = channels == 1 ? member.gate1 : member.gate3;
  const kit::Threads setting(40);
  const TevSize size = {40 * gate.pixelsPerThread, 1};
  if (gate.shares(size) == 1) return;
  const kit::AllocatorWatch watch(0);
  const Result failed = callOnZeros<channels>(member, size);
  EXPECT_EQ(failed.status, tevStatusNoMemory) << member.name;
  EXPECT_EQ(failed.value, -1) << member.name << " wrote its value";
  EXPECT_EQ(watch.blocksHeld(), 0) << member.name;
}

template <int channels, class T>
void givesZeroUnderAnEmptyMask(const OneImage<T>& member, Norm) {
  Random random;
  const auto src = randomImage<T, channels>(random, 37, 3, Floats::Special);
  const auto none = constant<Tev8u>(37, 3, 0);
  EXPECT_TRUE(same(call(member, src, none, channels - 1), {tevStatusOk, 0.0})) << member.name;
}
template <int channels, class T>
void givesZeroUnderAnEmptyMask(const TwoImages<T>& member, Norm norm) {
  Random random;
  const auto a = randomImage<T, channels>(random, 37, 3, Floats::Special);
  const auto none = constant<Tev8u>(37, 3, 0);
  const Result expected = norm.relative ? Result{tevStatusDivByZeroWarning, std::numeric_limits<Tev64f>::quiet_NaN()}
                                        : Result{tevStatusOk, 0.0};
  EXPECT_TRUE(same(call(member, a, a, none, channels - 1), expected)) << member.name;
}

// Each wrong argument gives its status, and an earlier one in the order of checks hides a later one.
template <int channels, class T>
void checksItsArguments(const OneImage<T>& member, Norm) {
  constexpr int size = sizeof(T), full = 8 * channels * size, noAlignment = size == 1;
  Image<T, channels> a(8, 4, 2 * size);
  Image<Tev8u> m(8, 4, 2);
  Tev64f value = -1;
  auto run = [&](const T* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roi, int coi, Tev64f* out) {
    if constexpr (channels == 1)
      return member.c1(src, srcStep, mask, maskStep, roi, out);
    else
      return member.c3(src, srcStep, mask, maskStep, roi, coi, out);
  };
  const TevSize roi = {8, 4};
  const int s = a.step();
  EXPECT_FAILS(tevStatusNullPtr, run(nullptr, s, m.data(), 8, {0, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusNullPtr, run(a.data(), s, nullptr, 8, {0, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusNullPtr, run(a.data(), s, m.data(), 8, {8, 0}, 1, nullptr), value);
  EXPECT_FAILS(tevStatusBadSize, run(a.data(), 1, m.data(), 8, {0, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusBadSize, run(a.data(), s, m.data(), 1, {8, 0}, 1, &value), value);
  EXPECT_FAILS(tevStatusBadSize, run(a.data(), s, m.data(), 8, {-8, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusBadSize, run(a.data(), s, m.data(), 8, {8, -4}, 1, &value), value);
  EXPECT_FAILS(tevStatusBadStep, run(a.data(), full - 1, m.data(), 8, roi, 9, &value), value);
  EXPECT_FAILS(tevStatusBadStep, run(a.data(), s, m.data(), 7, roi, 9, &value), value);
  EXPECT_FAILS(tevStatusBadStep, run(a.data(), s, m.data(), 8, {1 << 30, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusBadStep, run(a.data(), full - 1, m.data(), 7, roi, 1, &value), value);
  if (!noAlignment) {
    // The source's alignment is looked at before the mask's step.
    EXPECT_FAILS(tevStatusStepNotAligned, run(a.data(), full + 1, m.data(), 8, roi, 9, &value), value);
    EXPECT_FAILS(tevStatusStepNotAligned, run(a.data(), full + 1, m.data(), 7, roi, 1, &value), value);
  } else {
    EXPECT_EQ(run(a.data(), full + 1, m.data(), 9, roi, 1, &value), tevStatusOk);
  }
  EXPECT_EQ(run(a.data(), full, m.data(), 8, roi, 1, &value), tevStatusOk);
  if constexpr (channels == 3)
    for (int coi : {-1, 0, 4, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
      EXPECT_FAILS(tevStatusBadCoi, run(a.data(), s, m.data(), 8, roi, coi, &value), value);
    }
}

template <int channels, class T>
void checksItsArguments(const TwoImages<T>& member, Norm) {
  constexpr int size = sizeof(T), full = 8 * channels * size, noAlignment = size == 1;
  Image<T, channels> a(8, 4, 2 * size), b(8, 4, 2 * size);
  b.fill(1);
  Image<Tev8u> m(8, 4, 2);
  Tev64f value = -1;
  auto run = [&](const T* src1, int step1, const T* src2, int step2, const Tev8u* mask, int maskStep, TevSize roi,
                 int coi, Tev64f* out) {
    if constexpr (channels == 1)
      return member.c1(src1, step1, src2, step2, mask, maskStep, roi, out);
    else
      return member.c3(src1, step1, src2, step2, mask, maskStep, roi, coi, out);
  };
  const TevSize roi = {8, 4};
  const int s = a.step();
  const T *p = a.data(), *q = b.data();
  EXPECT_FAILS(tevStatusNullPtr, run(nullptr, s, q, s, m.data(), 8, {0, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusNullPtr, run(p, s, nullptr, s, m.data(), 8, {0, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusNullPtr, run(p, s, q, s, nullptr, 8, {0, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusNullPtr, run(p, s, q, s, m.data(), 8, {8, 0}, 1, nullptr), value);
  EXPECT_FAILS(tevStatusBadSize, run(p, 1, q, s, m.data(), 8, {0, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusBadSize, run(p, s, q, 1, m.data(), 1, {8, 0}, 1, &value), value);
  EXPECT_FAILS(tevStatusBadSize, run(p, s, q, s, m.data(), 8, {-8, 4}, 1, &value), value);
  EXPECT_FAILS(tevStatusBadSize, run(p, s, q, s, m.data(), 8, {8, -4}, 1, &value), value);
  EXPECT_FAILS(tevStatusBadStep, run(p, full - 1, q, s, m.data(), 8, roi, 9, &value), value);
  EXPECT_FAILS(tevStatusBadStep, run(p, s, q, full - 1, m.data(), 8, roi, 9, &value), value);
  EXPECT_FAILS(tevStatusBadStep, run(p, s, q, s, m.data(), 7, roi, 9, &value), value);
  EXPECT_FAILS(tevStatusBadStep, run(p, s, q, s, m.data(), 8, {1 << 30, 4}, 1, &value), value);
  if (!noAlignment) {
    // A short step anywhere is found before a step of broken elements anywhere.
    EXPECT_FAILS(tevStatusBadStep, run(p, full + 1, q, s, m.data(), 7, roi, 1, &value), value);
    EXPECT_FAILS(tevStatusBadStep, run(p, full + 1, q, full - 1, m.data(), 8, roi, 1, &value), value);
    EXPECT_FAILS(tevStatusStepNotAligned, run(p, full + 1, q, s, m.data(), 8, roi, 9, &value), value);
    EXPECT_FAILS(tevStatusStepNotAligned, run(p, s, q, full + 1, m.data(), 8, roi, 9, &value), value);
  } else {
    EXPECT_EQ(run(p, full + 1, q, full + 1, m.data(), 9, roi, 1, &value), tevStatusOk);
  }
  EXPECT_EQ(run(p, full, q, full, m.data(), 8, roi, 1, &value), tevStatusOk);
  if constexpr (channels == 3)
    for (int coi : {-1, 0, 4, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
      EXPECT_FAILS(tevStatusBadCoi, run(p, s, q, s, m.data(), 8, roi, coi, &value), value);
    }
}

}  // namespace norms

// The tests that every member of a family passes. `members` is a tuple of its OneImage or TwoImages, one a type.
#define TEST_NORM_FAMILY(Suite, members, norm)                                                                    \
  TEST(Suite, EqualsTheDefinitionOnRandomRegions) { EACH_MEMBER(members, norm, equalsTheDefinition); }            \
  TEST(Suite, EqualsTheDefinitionOverSharesOfRows) { EACH_MEMBER(members, norm, equalsTheDefinitionOverShares); } \
  TEST(Suite, ForksAtItsGateAndFreesItsSlots) { EACH_MEMBER(members, norm, forksAtItsGate); }                     \
  TEST(Suite, ReportsThatSlotsFoundNoMemory) { EACH_MEMBER(members, norm, reportsThatSlotsFoundNoMemory); }       \
  TEST(Suite, TakesNothingUnderAnEmptyMask) { EACH_MEMBER(members, norm, givesZeroUnderAnEmptyMask); }            \
  TEST(Suite, ChecksItsArgumentsInOrder) { EACH_MEMBER(members, norm, checksItsArguments); }

#define EACH_MEMBER(members, norm, test)                                                                         \
  std::apply([](const auto&... member) { ((norms::test<1>(member, norm), norms::test<3>(member, norm)), ...); }, \
             members)
