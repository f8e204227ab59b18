// The one definition of the arithmetic: extended precision, saturation, scaling, rounding, wrapping words.
#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "tevcv/types.h"

namespace tevcv {

// Float expressions run with a 64-bit significand and are rounded where they are stored to a field, by an explicit
// conversion. Nothing else rounds: the compiler may spill and reload an Extended without changing it.
using Extended = long double;
static_assert(std::numeric_limits<Extended>::digits == 64,
              "the library's arithmetic is defined on a 64-bit significand");

// Clamps an integer to the range of T.
template <std::integral T, std::integral V>
constexpr T saturate(V value) {
  constexpr auto lowest = std::numeric_limits<T>::lowest(), highest = std::numeric_limits<T>::max();
  if constexpr (std::is_same_v<T, Tev8u> && std::is_same_v<V, int>)
    return static_cast<T>(value < 0 ? 0 : value > 255 ? 255 : value);
  else
    return std::cmp_less(value, lowest) ? lowest : std::cmp_greater(value, highest) ? highest : static_cast<T>(value);
}

// value * 2^-shift for shift >= 1, ties to the even neighbour. T must hold value + 2^(shift - 1).
template <std::signed_integral T>
constexpr T shiftRightTiesToEven(T value, int shift) {
  return static_cast<T>((value + (T{1} << (shift - 1)) - 1 + ((value >> shift) & 1)) >> shift);
}

// From float to integer by half up. The value must lie in the range of int: clamp first.
template <std::floating_point F>
constexpr int addHalfAndTruncate(F value) {
  return static_cast<int>(value + F{0.5});
}

// Arithmetic modulo 2^bits, spelled out on unsigned words.
template <std::signed_integral T>
constexpr T wrapAdd(T a, T b) {
  using U = std::make_unsigned_t<T>;
  return static_cast<T>(static_cast<U>(static_cast<U>(a) + static_cast<U>(b)));
}
template <std::signed_integral T>
constexpr T wrapSub(T a, T b) {
  using U = std::make_unsigned_t<T>;
  return static_cast<T>(static_cast<U>(static_cast<U>(a) - static_cast<U>(b)));
}
template <std::signed_integral T>
constexpr T wrapMul(T a, T b) {
  using U = std::common_type_t<std::make_unsigned_t<T>, unsigned>;
  return static_cast<T>(static_cast<U>(a) * static_cast<U>(b));
}

}  // namespace tevcv
