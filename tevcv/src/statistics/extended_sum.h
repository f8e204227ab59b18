// A long sum in extended precision, faster than its chain of additions and the same to the last bit.
//
// While the sum stays between two powers of two, its last place u does not change, the sum is a whole number of u, and
// adding a term to it rounds that term to whole u. Terms then round apart from each other and their rounded values are
// integers, whose order does not matter: they are added in vectors. Only a term that lies half way between two whole u
// asks for the sum so far, of which it makes an even number; a block with such terms is added in order, as integers
// still. Blocks in which the sum passes a power of two, or in which a term is large beside it, take the chain itself.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "frame/arithmetic.h"

namespace tevcv {

class ExtendedSum {
 public:
  // Adds n terms in their order. None may be negative, nor -0.0.
  void add(const Tev64f* terms, int n) {
    if (!addAsIntegers(terms, n)) addEach(n, [=](int i) { return Extended{terms[i]}; });
  }

  // The definition: a chain of extended additions.
  template <class Term>
  void addEach(int n, Term term) {
    Extended sum = sum_;
    for (int i = 0; i < n; ++i) sum += term(i);
    sum_ = sum;
  }

  void storeAsDouble() { sum_ = static_cast<Tev64f>(sum_); }
  Extended value() const { return sum_; }

 private:
  // A term in units of the sum's last place u: the nearest whole number, the even one of two, and how much the term
  // exceeds it. Adding 2^52 leaves a double no place for a fraction.
  struct Units {
    std::uint64_t whole;
    Tev64f rest;
  };
  static constexpr Tev64f wholeOnly = 0x1p52;
  static Units unitsOf(Tev64f scaled) {
    const Tev64f shifted = scaled + wholeOnly;
    return {std::bit_cast<std::uint64_t>(shifted) - std::bit_cast<std::uint64_t>(wholeOnly),
            scaled - (shifted - wholeOnly)};
  }

  // False, with nothing done, where the terms cannot be added as integers.
  bool addAsIntegers(const Tev64f* terms, int n) {
    // The 80 bits of the sum: 64 of the significand, whose unit is u, and the biased exponent.
    std::uint64_t significand;
    std::uint16_t biased;
    const auto bytes = reinterpret_cast<unsigned char*>(&sum_);
    std::memcpy(&significand, bytes, sizeof significand);
    std::memcpy(&biased, bytes + sizeof significand, sizeof biased);
    const int exponent = 16383 + 63 - biased;  // 1 / u = 2^exponent
    if (exponent < -1000 || exponent > 1000) return false;
    const auto unitsPerOne = std::bit_cast<Tev64f>(std::uint64_t(1023 + exponent) << 52);

    std::uint64_t whole = 0, seen = 0, belowHalf = ~std::uint64_t{0};
    for (int i = 0; i < n; ++i) {
      const Units units = unitsOf(terms[i] * unitsPerOne);
      whole += units.whole;
      seen |= units.whole;
      belowHalf &= std::bit_cast<std::uint64_t>(std::fabs(units.rest) - 0.5);  // negative: no tie
    }
    const std::uint64_t room = std::numeric_limits<std::uint64_t>::max() - significand;
    // A term of 2^52 units or more, and one that is no number, shows in the upper bits.
    if (seen >> 52 != 0 || whole + static_cast<std::uint64_t>(n) > room) return false;

    if (belowHalf >> 63 != 0) {
      significand += whole;
    } else {
      for (int i = 0; i < n; ++i) {
        const Units units = unitsOf(terms[i] * unitsPerOne);
        const std::uint64_t isTie = std::fabs(units.rest) == 0.5, wasRaised = units.rest == -0.5;
        significand += units.whole - wasRaised;
        significand += significand & isTie;
      }
    }
    std::memcpy(bytes, &significand, sizeof significand);
    return true;
  }

  Extended sum_ = 0;
};

}  // namespace tevcv
