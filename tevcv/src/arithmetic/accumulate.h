// Running sums a += term over an image of floats, plain and masked.
//
// The definition: every term and the sum are formed in extended precision and rounded once, to the accumulator's float.
// Nothing is skipped under a mask. A pixel that it leaves out is read, its term becomes 0 (an integer 0, or a product
// with the float 0) and is added all the same. Callers see that in two places: a NaN or an infinity under a mask
// element of 0 still reaches the accumulator through a product with 0, and -0.0 + 0.0 becomes +0.0.
//
// Three ways give the bits of that definition:
//   - a term that is exact in a float needs one float addition, which rounds as extended precision does;
//   - a product that is exact in a double needs one double addition (addProducts);
//   - a blend rounds three times and runs in double with a guard (blend), or in pairs of floats where the processor
//     multiplies and adds in one step (blendInFloats).
// Where a sum cannot tell on which side of the middle of two floats the true one lies, extended precision decides.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv_internal/arithmetic.h"

namespace tevcv::accumulate {

template <class T>
inline constexpr bool exactInFloat = sizeof(T) == 1;  // and its square and product with its like

// An integer term under a mask: all bits of it, or none.
template <bool masked, class Word = std::uint32_t>
Word keep(const Tev8u* mask, int x) {
  if constexpr (masked)
    return static_cast<Word>(-int{mask[x] != 0});
  else
    return static_cast<Word>(-1);
}

// A float factor under a mask: 1.0, or 0.0, which has no bits.
template <bool masked>
Tev32f coefficient(const Tev8u* mask, int x) {
  return std::bit_cast<Tev32f>(std::bit_cast<std::uint32_t>(_tevcvMaskCoeff[1]) & keep<masked>(mask, x));
}

// Rows run in blocks: quick(first, count, sums) gives the sums of a block, or false where one of them is in doubt; then
// definition(x) gives each. Sums are kept apart until then, since the accumulator may be a source.
inline constexpr int blockLength = 64;

template <class Quick, class Definition>
void addInBlocks(Tev32f* a, int width, Quick quick, Definition definition) {
  Tev32f sums[blockLength];
  for (int first = 0; first < width; first += blockLength) {
    const int count = std::min(blockLength, width - first);
    if (!quick(first, count, sums))
      for (int i = 0; i < count; ++i) sums[i] = definition(first + i);
    std::copy_n(sums, count, a + first);
  }
}

// The 29 bits that a double has beyond a float of its exponent, and their value in the middle between two floats.
inline constexpr std::uint64_t bitsBeyondFloat = (1ULL << 29) - 1, middleOfFloats = 1ULL << 28;

// a + product, with the product exact in double. The sum in double and the sum in extended precision lie on the same
// side of every middle of two floats, unless the double stands on it and has been rounded; the error of the addition
// (exact by two-sum) tells. Below the normal floats the middles lie elsewhere, so rounded sums there are in doubt too.
template <class Product>
void addProducts(Tev32f* a, int width, Product product) {
  addInBlocks(
      a, width,
      [&](int first, int count, Tev32f* sums) {
        std::uint64_t doubt = 0;
        for (int i = 0; i < count; ++i) {
          const Tev64f old = a[first + i], p = product(first + i), sum = old + p;
          const Tev64f part = sum - old, error = (old - (sum - part)) + (p - part);
          const bool onMiddle = (std::bit_cast<std::uint64_t>(sum) & bitsBeyondFloat) == middleOfFloats;
          const bool small = std::fabs(sum) < Tev64f{std::numeric_limits<Tev32f>::min()};
          doubt |= static_cast<std::uint64_t>((error != 0) & (onMiddle | small));
          sums[i] = static_cast<Tev32f>(sum);
        }
        return doubt == 0;
      },
      [&](int x) { return static_cast<Tev32f>(Extended{a[x]} + product(x)); });
}

// a + s.
template <bool masked, class S>
void addRow(const S* s, const Tev8u* mask, Tev32f* a, int width) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x)
    if constexpr (std::is_integral_v<S>)
      a[x] += static_cast<Tev32f>(static_cast<Tev32s>(static_cast<std::uint32_t>(s[x]) & keep<masked>(mask, x)));
    else
      a[x] += s[x] * coefficient<masked>(mask, x);
}

// a + s1 * s2. Without a mask integers are factors as floats, so that 0 times a negative one is -0.0; under a mask
// their product is an integer, of 16-bit elements an unsigned 32-bit one. Products of floats are exact in double, and
// so stay finite until they meet the mask.
template <bool masked, class S>
void addProductRow(const S* s1, const S* s2, const Tev8u* mask, Tev32f* a, int width) {
  if constexpr (exactInFloat<S> && !masked) {
#pragma GCC ivdep
    for (int x = 0; x < width; ++x) a[x] += static_cast<Tev32f>(s1[x]) * static_cast<Tev32f>(s2[x]);
  } else if constexpr (exactInFloat<S>) {
    using Product = std::conditional_t<std::is_signed_v<S>, Tev16s, Tev16u>;
    constexpr int length = 8 * blockLength;
    Product products[length];
    for (int first = 0; first < width; first += length) {
      const int count = std::min(length, width - first);
      for (int i = 0; i < count; ++i) {
        const S kept = static_cast<S>(s1[first + i] & keep<masked, S>(mask, first + i));
        products[i] = static_cast<Product>(kept * s2[first + i]);
      }
      for (int i = 0; i < count; ++i) a[first + i] += static_cast<Tev32f>(products[i]);
    }
  } else if constexpr (std::is_integral_v<S>) {
    addProducts(a, width, [=](int x) {
      const std::uint32_t product = (std::uint32_t{s1[x]} * s2[x]) & keep<masked>(mask, x);
      return static_cast<Tev64f>(static_cast<Tev32s>(product ^ 0x80000000U)) + 0x80000000U;
    });
  } else {
    addProducts(a, width, [=](int x) { return Tev64f{s1[x]} * s2[x] * coefficient<masked>(mask, x); });
  }
}

// a + (s - a) * alpha, in this form: the mean of a and s by their weights would round differently. The three roundings
// of the double form leave it within 34 units of the extended form as long as the last addition does not cancel, so the
// float is certain where the double stays 64 units away from the middle of two floats. Sums that cancel, and small ones
// (that become the least normal float or one below), are in doubt; a 0 in the accumulator is not, as the blend with it
// is exact in double.
template <class Weight>
bool blend(const Tev32f* s, const Tev32f* a, Weight weight, int count, Tev32f* sums) {
  constexpr std::uint64_t margin = 64;
  std::uint64_t doubt = 0;  // in the sign bit
  std::uint32_t small = 0;  // likewise
  for (int i = 0; i < count; ++i) {
    const Tev64f old = a[i], change = (Tev64f{s[i]} - old) * weight(i), sum = old + change;
    const std::uint64_t fromMiddle = std::bit_cast<std::uint64_t>(sum) - middleOfFloats + margin;
    doubt |= ((fromMiddle & bitsBeyondFloat & ~(2 * margin - 1)) - 1) |
             std::bit_cast<std::uint64_t>(16 * std::fabs(sum) - std::fabs(change));
    sums[i] = static_cast<Tev32f>(sum);
  }
  for (int i = 0; i < count; ++i)
    small |= ((std::bit_cast<std::uint32_t>(sums[i]) & 0x7FFFFFFF) - 0x00800001) &
             -(std::bit_cast<std::uint32_t>(a[i]) & 0x7FFFFFFF);
  return static_cast<std::int64_t>(doubt) >= 0 && static_cast<std::int32_t>(small) >= 0;
}

#ifdef __FMA__
// The blend as a float and a float that corrects it, for accumulators from 0 to below 2^24, sources from 0 on and
// weights of 0 or from 2^-12 to 1/2, so that nothing overflows.
//
// The exact blend V = a + (s - a) w is never below a / 2 nor below |(s - a) w|. With d + dRest = s - a exactly and
// first = a + d w rounded once, remainder + remainderRest = a - first exactly: `first` is at least half as large as a,
// so that either their difference is a float or `first` is the larger one, and a second difference gives back what the
// first one lost. What `first` lacks, V - first = (remainder + d w) + (remainderRest + dRest w), is the sum of two
// fused terms. Both are below 2^-22 V and rounded to 2^-24 of themselves, so `missing` is off by at most 2^-45 V +
// 2^-24 |missing|, and extended precision departs from V by less than 2^-62 V.
//
// Where the sum of `first` and (1 -+ 2^-18) * missing rounds to one float, it is the defined one: a `missing` of at
// least 2^-26 V is off by less than 2^-18 of itself, and a smaller one lies far from the middle between two floats.
//
// Where dRest is 0, `first` alone is the defined blend, ties and the smallest floats included: s, a and d are multiples
// of 2^-26 of the largest of them, so that V has no more than 61 bits and meets its first rounding there. Such blends
// are frequent, s and a being near each other, and so are near ties among them. All blends below 2^-12 of whole sources
// are of this kind (s = 0); those of floats below 2^-60, whose terms might be subnormal, are in doubt otherwise.
template <class S>
constexpr bool blendsInFloats(Tev32f alpha) {
  return (std::is_unsigned_v<S> || std::is_floating_point_v<S>)&&(alpha == 0 || (alpha >= 0x1p-12F && alpha <= 0.5F));
}

// Stores the blends of a block where all are certain, and else nothing.
inline constexpr int blockOfFloats = 256;

template <class S, class Weight>
bool blendInFloats(const Tev32f* s, Tev32f* a, Weight weight, int count) {
  constexpr Tev32f less = 1 - 0x1p-18F, more = 1 + 0x1p-18F;
  Tev32f blend[blockOfFloats], correction[blockOfFloats];
  std::uint32_t doubt = 0, largest = 0, smallest = ~0U;  // the patterns of floats from 0 on are in their order
  for (int i = 0; i < count; ++i) {
    const Tev32f source = s[i], old = a[i], w = weight(i), d = source - old, part = d - source;
    // Whole numbers are multiples of the last place of any accumulator below 2^24, which saves half of the two-sum.
    const Tev32f dRest = std::is_integral_v<S> ? -part - old : (source - (d - part)) - (old + part);
    const Tev32f first = std::fma(d, w, old), remainder = old - first, remainderRest = old - (remainder + first);
    const Tev32f lacking = std::fma(d, w, remainder) + std::fma(dRest, w, remainderRest);
    const std::uint32_t exact = dRest == 0 ? ~0U : 0U;
    const Tev32f missing = std::bit_cast<Tev32f>(std::bit_cast<std::uint32_t>(lacking) & ~exact);
    const Tev32f below = std::fma(missing, less, first), above = std::fma(missing, more, first);
    doubt |= std::bit_cast<std::uint32_t>(below) ^ std::bit_cast<std::uint32_t>(above);
    if constexpr (std::is_floating_point_v<S>) {
      largest = std::max(largest, std::max(std::bit_cast<std::uint32_t>(old), std::bit_cast<std::uint32_t>(source)));
      smallest = std::min(smallest, std::bit_cast<std::uint32_t>(first) | exact);
    } else {
      largest = std::max(largest, std::bit_cast<std::uint32_t>(old));
    }
    blend[i] = first;
    correction[i] = missing;
  }
  if (doubt != 0 || largest >= std::bit_cast<std::uint32_t>(0x1p24F) ||
      smallest < std::bit_cast<std::uint32_t>(0x1p-60F))
    return false;
  for (int i = 0; i < count; ++i) a[i] = blend[i] + correction[i];
  return true;
}
#endif

// The blends of a run in double.
template <bool masked, class S>
void addWeightedRun(const S* s, const Tev8u* mask, Tev32f* a, int width, Tev32f alpha) {
  const auto weight = [=](int x) {
    return std::bit_cast<Tev32f>(std::bit_cast<std::uint32_t>(alpha) & keep<masked>(mask, x));
  };
  addInBlocks(
      a, width,
      [=](int first, int count, Tev32f* sums) {
        // As floats first: a loop over bytes and doubles at once would need more registers than there are.
        Tev32f source[blockLength];
        for (int i = 0; i < count; ++i) source[i] = static_cast<Tev32f>(s[first + i]);
        if constexpr (masked) {
          Tev32f weights[blockLength];
          for (int i = 0; i < count; ++i) weights[i] = weight(first + i);
          return blend(
              source, a + first, [&](int i) { return weights[i]; }, count, sums);
        } else {
          return blend(
              source, a + first, [=](int) { return alpha; }, count, sums);
        }
      },
      [=](int x) {
        const Extended old = a[x];
        return static_cast<Tev32f>(old + (static_cast<Extended>(s[x]) - old) * weight(x));
      });
}

template <bool masked, class S>
void addWeightedRow(const S* s, const Tev8u* mask, Tev32f* a, int width, Tev32f alpha) {
#ifdef __FMA__
  if (blendsInFloats<S>(alpha)) {
    for (int first = 0; first < width; first += blockOfFloats) {
      const int count = std::min(blockOfFloats, width - first);
      const Tev8u* const selected = masked ? mask + first : nullptr;
      Tev32f source[blockOfFloats], weights[blockOfFloats];
      for (int i = 0; i < count; ++i) source[i] = static_cast<Tev32f>(s[first + i]);
      for (int i = 0; i < (masked ? count : 0); ++i) weights[i] = alpha * coefficient<masked>(selected, i);
      const auto weight = [&](int i) { return masked ? weights[i] : alpha; };
      if (!blendInFloats<S>(source, a + first, weight, count))
        addWeightedRun<masked>(s + first, selected, a + first, count, alpha);
    }
    return;
  }
#endif
  addWeightedRun<masked>(s, mask, a, width, alpha);
}

// The checks' last steps: floors of all images, then the alignment of those wider than a byte. With 16-bit sources both
// tests of the sources come before those of the mask and the accumulator.
template <class S>
TevStatus stepsOf(int width, int src1Step, int src2Step, int maskStep, int srcDstStep) {
  const TevStatus source = firstFailure(rowFits<S>(src1Step, width), rowFits<S>(src2Step, width));
  const TevStatus sourceElements = firstFailure(wholeElements<S>(src1Step), wholeElements<S>(src2Step));
  const TevStatus others = firstFailure(rowFits<Tev8u>(maskStep, width), rowFits<Tev32f>(srcDstStep, width));
  const TevStatus otherElements = wholeElements<Tev32f>(srcDstStep);
  return std::is_same_v<S, Tev16u> ? firstFailure(source, sourceElements, others, otherElements)
                                   : firstFailure(source, others, sourceElements, otherElements);
}

}  // namespace tevcv::accumulate
