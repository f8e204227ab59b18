// Test data and the definition for running sums.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "kit/kit.h"

namespace accumulators {

inline constexpr float inf = std::numeric_limits<float>::infinity(), quietNan = std::numeric_limits<float>::quiet_NaN();

// How the floats of an image are drawn.
enum class Floats { ordinary, whole, wide, hostile };

inline Tev32f draw(kit::Random& random, Floats kind) {
  constexpr Tev32f special[] = {0.0F,          -0.0F,          inf,
                                -inf,          quietNan,       1e-45F,
                                -1e-45F,       1.1754942e-38F, 1.17549435e-38F,
                                3.4028235e38F, -3.4028235e38F, 16777216.0F,
                                16777217.0F,   1.0F,           -1.0F,
                                0.5F};
  switch (kind) {
    case Floats::ordinary:
      return random.value<Tev32f>();
    case Floats::whole:  // whole numbers, whose sums and halves often fall between two floats
      return static_cast<Tev32f>(random.between(-(1 << 25), 1 << 25));
    case Floats::wide:
      return std::ldexp(random.real(1.0F), random.between(-140, 120));
    default:
      return random.oneIn(8) ? special[random.between(0, 15)] : draw(random, static_cast<Floats>(random.between(0, 2)));
  }
}

template <class S>
kit::Image<S> source(kit::Random& random, int width, int height, Floats kind) {
  if constexpr (std::is_integral_v<S>)
    return random.image<S>(width, height, [&]() -> S {
      if (random.oneIn(8)) return 0;
      return random.oneIn(4) ? (random.oneIn(2) ? std::numeric_limits<S>::max() : std::numeric_limits<S>::lowest())
                             : random.value<S>();
    });
  else
    return random.image<S>(width, height, [&] { return draw(random, kind); });
}

inline kit::Image<Tev32f> accumulator(kit::Random& random, int width, int height, Floats kind) {
  return random.image<Tev32f>(width, height, [&] { return draw(random, kind); });
}

// One element of each family by its definition. Under a mask a term of integers is an integer, or 0 where the mask
// leaves the pixel out; a term of floats is multiplied by 1 or 0. Without a mask all factors are floats, and 0 times a
// negative one is -0.0.
enum class Mask { none, in, out };
inline Mask maskOf(Tev8u element) { return element != 0 ? Mask::in : Mask::out; }

template <class S>
Tev32f addTerm(Tev32f a, std::int64_t integer, long double real, Mask mask) {
  const bool integers = std::is_integral_v<S> && mask != Mask::none;
  const long double term =
      integers ? static_cast<long double>(mask == Mask::in ? integer : 0) : real * (mask == Mask::out ? 0.0L : 1.0L);
  return static_cast<Tev32f>(static_cast<long double>(a) + term);
}
template <class S>
std::int64_t asInteger(S s) {
  if constexpr (std::is_integral_v<S>) return s;
  return 0;
}
template <class S>
Tev32f add(Tev32f a, S s, Mask mask) {
  return addTerm<S>(a, asInteger(s), s, mask);
}
template <class S>
Tev32f addProduct(Tev32f a, S s1, S s2, Mask mask) {
  return addTerm<S>(a, asInteger(s1) * asInteger(s2), static_cast<long double>(s1) * static_cast<long double>(s2),
                    mask);
}
template <class S>
Tev32f addWeighted(Tev32f a, S s, Tev32f alpha, Mask mask) {
  const long double weight = mask == Mask::out ? 0.0F : alpha, old = a;
  return static_cast<Tev32f>(old + (static_cast<long double>(s) - old) * weight);
}

inline Tev32f weight(kit::Random& random) {
  constexpr Tev32f some[] = {0.0F,  1.0F, 0.5F,  0.25F,  0.75F, 0.01F,    0.05F,
                             -0.5F, 2.0F, 1e30F, 1e-30F, inf,   quietNan, -1.0F};
  return random.oneIn(2) ? some[random.between(0, 13)] : random.real(1.0F);
}

}  // namespace accumulators
