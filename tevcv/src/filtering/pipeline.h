// What the row and column stages of the pipelines share: the run of outputs over a run of taps, the walk over the rows,
// and the scaling of integer sums.
//
// Both stages take sum(tap[j] * line_j[x]). Along a row line_j is the row shifted by j pixels, down a column it is the
// j-th of the caller's row pointers. A run goes in blocks: all sums of a block first, then their scaled values, so that
// both loops are contiguous and run in vectors.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/borders.h"
#include "tevcv/types.h"

namespace tevcv::pipeline {
namespace {

// The lines of a run along a row of interleaved pixels: the j-th begins j pixels further on.
template <class T>
struct AlongRow {
  const T* first;
  int channels;

  const T* operator[](int j) const { return first + std::ptrdiff_t{j} * channels; }
  AlongRow from(int x) const { return {first + x, channels}; }
};

// The lines of a run down the columns: one pointer each.
template <class T>
struct DownColumns {
  const T* const* lines;
  int x;

  const T* operator[](int j) const { return lines[j] + x; }
  DownColumns from(int offset) const { return {lines, x + offset}; }
};

inline constexpr int blockLength = 64;

// Whole numbers are summed in unsigned words, which wrap, or in double, which is exact far beyond 32 bits.
template <class Sum, class Tap, class T>
Sum term(Tap tap, T value) {
  if constexpr (std::is_integral_v<Tap>)
    return static_cast<Sum>(int{tap} * int{value});
  else
    return static_cast<Sum>(tap) * static_cast<Sum>(value);
}

// sums[x] = sum over j of taps[j] * lines[j][x], in the order of the taps. A length known to the compiler keeps its
// taps in registers and passes over the block once.
template <int fixedLength, class Sum, class Tap, class Lines>
void sumBlock(Sum* __restrict sums, int n, const Tap* taps, int length, Lines lines) {
  if constexpr (fixedLength > 0) {
    Tap tap[fixedLength];
    decltype(lines[0]) line[fixedLength];
    for (int j = 0; j < fixedLength; ++j) tap[j] = taps[j], line[j] = lines[j];
    for (int x = 0; x < n; ++x) {
      Sum sum = 0;
      for (int j = 0; j < fixedLength; ++j) sum += term<Sum>(tap[j], line[j][x]);
      sums[x] = sum;
    }
  } else {
    for (int x = 0; x < n; ++x) sums[x] = 0;
    for (int j = 0; j < length; ++j) {
      const Tap tap = taps[j];
      const auto* const line = lines[j];
      for (int x = 0; x < n; ++x) sums[x] += term<Sum>(tap, line[x]);
    }
  }
}

// A run of outputs: the sums of each block, each one scaled and stored by `scaled`.
template <int fixedLength, class Sum, class Tap, class Scaled>
struct Run {
  const Tap* taps;
  int length;
  Scaled scaled;

  template <class Lines, class D>
  [[gnu::noinline]] void operator()(Lines lines, D* d, int n) const {
    alignas(64) Sum sums[blockLength];
    for (int x = 0; x < n; x += blockLength) {
      const int m = std::min(blockLength, n - x);
      sumBlock<fixedLength>(sums, m, taps, length, lines.from(x));
      for (int i = 0; i < m; ++i) d[x + i] = static_cast<D>(scaled(sums[i]));
    }
  }
};

// The row stage over all rows. Only the ends of a row are staged: the extension of the left end with the pixels that
// its outputs reach, then the same on the right, each in turn at the start of `scratch`, which holds at most
// 2 * (length - 1) pixels. All other outputs read the source in place. A row that is no longer than length - 1 is
// staged whole.
template <int channels, class T, class D, class Outputs>
TevStatus filterRows(const T* src, int srcStep, D** ppDst, T* scratch, int width, int height, int length, int anchor,
                     TevBorderType borderType, const T* borderValue, const Outputs& outputs) {
  const int reach = length - 1;
  for (int y = 0; y < height; ++y) {
    D* const d = ppDst[y];
    if (!d) return tevStatusNullPtr;
    const T* const row = src + std::ptrdiff_t{srcStep} * y;
    const auto outputsOfStaged = [&](int first, int count) {
      T* e = scratch;
      for (int x = first - anchor; x < first - anchor + count + reach; ++x, e += channels) {
        const int at = borderIndex(x, width, borderType);
        const T* const pixel = at < 0 ? borderValue : row + std::ptrdiff_t{at} * channels;
        for (int c = 0; c < channels; ++c) e[c] = pixel[c];
      }
      outputs(AlongRow<T>{scratch, channels}, d + std::ptrdiff_t{first} * channels, count * channels);
    };
    if (width <= reach) {
      outputsOfStaged(0, width);
      continue;
    }
    if (anchor > 0) outputsOfStaged(0, anchor);
    outputs(AlongRow<T>{row, channels}, d + std::ptrdiff_t{anchor} * channels, (width - reach) * channels);
    if (anchor < reach) outputsOfStaged(width - (reach - anchor), reach - anchor);
  }
  return tevStatusOk;
}

// The column stage over all rows.
template <class T, class D, class Outputs>
TevStatus filterColumns(const T** ppSrc, D* dst, int dstStep, int width, int height, const Outputs& outputs) {
  for (int y = 0; y < height; ++y) outputs(DownColumns<T>{ppSrc + y, 0}, dst + std::ptrdiff_t{dstStep} * y, width);
  return tevStatusOk;
}

// How a scaled value is stored: clamped, then truncated toward zero.
template <class D>
struct Clamped {
  template <class Float>
  int operator()(Float value) const {
    constexpr Float lowest = std::numeric_limits<D>::lowest(), highest = std::numeric_limits<D>::max();
    value = value < lowest ? lowest : value;
    value = value > highest ? highest : value;
    return static_cast<int>(value);
  }
};

// Or truncated to a 32-bit word of which the caller keeps the low half. 2^31, the one value beyond, wraps.
struct LowHalf {
  template <class Float>
  int operator()(Float value) const {
    constexpr Float beyond = 2147483648.0F;
    value = value < beyond ? value : -beyond;
    return static_cast<int>(value);
  }
};

inline Tev64f wholeNumber(unsigned sum) { return static_cast<int>(sum); }
inline Tev64f wholeNumber(Tev64f sum) { return sum; }

// A sum times a factor in a floating format that gives the defined result.
template <class Float, class Stored>
struct Times {
  Float factor;

  template <class Sum>
  auto operator()(Sum sum) const {
    return Stored{}(static_cast<Float>(wholeNumber(sum)) * factor);
  }
};

// A sum times the rounded reciprocal of a divisor whose products fall short of some whole numbers (see below).
template <class Stored>
struct Divided {
  Tev64f divisor;
  Tev64f deficit;

  template <class Sum>
  auto operator()(Sum sum) const {
    const Tev64f quotient = wholeNumber(sum) / divisor;
    return Stored{}(quotient - quotient * deficit);
  }
};

// The significand of a float as an odd whole number.
inline std::uint32_t oddSignificand(Tev32f value) {
  int exponent;
  const auto digits = static_cast<std::uint32_t>(std::ldexp(std::fabs(std::frexp(value, &exponent)), 24));
  return digits >> std::countr_zero(digits | 1U << 24);
}

// Calls use(scaled) with the product by 1 / divisor rounded to Tev32f. Where all products of sums up to `bound` fit the
// 53 bits of a double they are exact, as they are in extended precision.
template <class Stored, class Use>
auto scaledByFloat(int divisor, Tev64f bound, Use use) {
  const auto factor = static_cast<Tev32f>(1 / static_cast<Extended>(divisor));
  if (bound * oddSignificand(factor) < 0x1p53) return use(Times<Tev64f, Stored>{factor});
  return use(Times<Extended, Stored>{factor});
}

// Calls use(scaled) with the product by s, which is 1 / divisor rounded to 64 bits, rounded to 64 bits itself, and then
// truncated.
//
// Off the multiples of the divisor the error of s and of the product cannot reach a whole number: the result is the
// truncated quotient, which any factor just above 1 / divisor gives in double. Of a multiple N * divisor the product is
// N * (1 - r), r = 1 - divisor * s, before it is rounded. With r up to 2^-65 it rounds to N again. With a larger r (at
// most 2^-64) it falls short of N for some significands of N. Both N and r have few digits, so that the same rounding
// happens in double with r scaled to its precision, 2^11 times as large.
template <class Stored, class Use>
auto scaledByExtended(int divisor, Use use) {
  const std::uint64_t magnitude = static_cast<std::uint64_t>(std::abs(std::int64_t{divisor}));
  if (std::has_single_bit(magnitude)) return use(Times<Tev64f, Stored>{1.0 / divisor});
  int exponent;
  const Extended significand = std::frexp(1 / static_cast<Extended>(magnitude), &exponent);
  const auto digits = static_cast<std::uint64_t>(std::ldexp(significand, 64));
  const auto shortfall = static_cast<std::int64_t>(0 - magnitude * digits);  // r * 2^(64 - exponent)
  const Tev64f r = std::ldexp(static_cast<Tev64f>(shortfall), exponent - 64);
  if (r > 0x1p-65) return use(Divided<Stored>{static_cast<Tev64f>(divisor), r * 0x1p11});
  const Tev64f reciprocal = 1.0 / divisor;
  return use(Times<Tev64f, Stored>{std::nextafter(reciprocal, 2 * reciprocal)});
}

// The largest magnitude that a sum of these taps over values up to `largest` can have.
template <class Tap>
Tev64f largestSum(const Tap* taps, int length, Tev64f largest) {
  Tev64f sum = 0;
  for (int j = 0; j < length; ++j) sum += std::fabs(static_cast<Tev64f>(taps[j]));
  return sum * largest;
}

}  // namespace
}  // namespace tevcv::pipeline
