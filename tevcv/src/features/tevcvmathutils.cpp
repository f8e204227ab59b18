// A coarse arctangent in degrees, by a polynomial of the second degree in the ratio of the smaller to the larger
// coordinate, with an offset for each eighth of the circle.
//
// The result is defined by groups of four elements that share one division in extended precision. The fast paths divide
// each element by itself, close enough to tell the rounded result in nearly all blocks: in pairs of floats where the
// processor multiplies and adds in one step, else in double.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/guarded.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using namespace tevcv;

// By eighths: sign of y times 4, sign of x times 2, and whether |y| is the larger.
const Tev32s _tevcvAtanSign[8] = {0, INT32_MIN, INT32_MIN, 0, INT32_MIN, 0, 0, INT32_MIN};
const Tev32f _tevcvAtanTab[8] = {-0.14050041139125824F, 90.1405029296875F,  180.1405029296875F, 89.8594970703125F,
                                 360.1405029296875F,    269.8594970703125F, 179.8594970703125F, 270.1405029296875F};

namespace {

constexpr Tev32f quadratic = -15.813189506530762F, linear = 61.09419631958008F;

// One element made ready for its division.
struct Ratio {
  Tev32f numerator;
  Tev32f denominator;
  Tev32f offset;
};

inline Ratio ratioOf(Tev32f y, Tev32f x) {
  const auto py = std::bit_cast<Tev32s>(y), px = std::bit_cast<Tev32s>(x);
  const Tev32s a = px & INT32_MAX, b = py & INT32_MAX;
  const Tev32s larger = b > a ? b : a, smaller = b > a ? a : b;
  // Two zeros count as the first eighth, over 1. The tables are spelled out as selections: a look-up would keep the
  // loop from running in vectors. A ratio is negative where an odd number of the eighth's three bits is set.
  const Tev32s zero = larger == 0 ? 0 : -1;
  const Tev32s yBelow = (py >> 31) & zero, xBelow = (px >> 31) & zero, steep = b > a ? -1 : 0;
  const Tev32f flat = yBelow ? (xBelow ? 179.8594970703125F : 360.1405029296875F)
                             : (xBelow ? 180.1405029296875F : -0.14050041139125824F);
  const Tev32f upright =
      yBelow ? (xBelow ? 270.1405029296875F : 269.8594970703125F) : (xBelow ? 89.8594970703125F : 90.1405029296875F);
  constexpr auto one = std::bit_cast<Tev32s>(1.0F);
  return {std::bit_cast<Tev32f>(smaller | ((yBelow ^ xBelow ^ steep) & INT32_MIN)),
          std::bit_cast<Tev32f>(larger | (one & ~zero)), steep ? upright : flat};
}

// The four elements of a group share the quotient of 1 by the product of their denominators. Places beyond the vector's
// end hold 1.
Extended definedArctan(const Tev32f* srcY, const Tev32f* srcX, int len, int index) {
  std::array<Ratio, 4> group;
  for (int k = 0; k < 4; ++k) {
    const int i = (index & ~3) + k;
    group[k] = i < len ? ratioOf(srcY[i], srcX[i]) : ratioOf(1, 1);
  }
  Extended product = group[0].denominator;
  for (int k = 1; k < 4; ++k) product *= Extended{group[k].denominator};
  const Extended inverse = 1.0L / product;
  Extended t = group[index & 3].numerator;
  for (int k = 0; k < 4; ++k)
    if (k != (index & 3)) t *= Extended{group[k].denominator};
  t *= inverse;
  return t * (std::fabs(t) * Extended{quadratic} + Extended{linear}) + Extended{group[index & 3].offset};
}

// A float reciprocal is good where neither the denominator nor the reciprocal is near the ends of the range; other
// blocks are in doubt.
constexpr Tev32f leastDenominator = 0x1p-100F, mostDenominator = 0x1p100F;

// Each element by itself, in double.
void arctanInDouble(const Tev32f* srcY, const Tev32f* srcX, Tev32f* dst, int len) {
  const auto fill = [=](GuardedBlock& block, int first, int count) {
    const Tev32f *const y = srcY + first, *const x = srcX + first;
    Tev32f estimate[guardedBlock], inverse[guardedBlock], numerator[guardedBlock], denominator[guardedBlock],
        offset[guardedBlock], margin[guardedBlock];
    for (int i = 0; i < count; ++i) {
      const Ratio r = ratioOf(y[i], x[i]);
      numerator[i] = r.numerator;
      denominator[i] = r.denominator;
      offset[i] = r.offset;
      inverse[i] = 1.0F / r.denominator;
      estimate[i] = r.numerator * inverse[i];
      margin[i] = r.denominator > leastDenominator && r.denominator < mostDenominator ? 0x1p-38F : 0x1p100F;
    }
    // One step of the residual, which double holds without rounding, makes the ratio exact to 2^-46.
    for (int i = 0; i < count; ++i) {
      const Tev64f residual = Tev64f{numerator[i]} - Tev64f{estimate[i]} * denominator[i];
      const Tev64f t = estimate[i] + residual * inverse[i];
      block.value[i] = t * (std::fabs(t) * quadratic + linear) + offset[i];
      block.margin[i] = margin[i];
    }
  };
  roundGuarded(dst, len, fill, [=](int i) { return definedArctan(srcY, srcX, len, i); });
}

#ifdef __FMA__
constexpr int blockOfFloats = 256;  // whole groups

// The angles of a block as floats and floats that correct them; stored where all are certain, and else not.
//
// The ratio is q + qRest, off by 2^-44 of itself: q is the product with a rounded reciprocal, and a fused step gives
// what it leaves of the numerator. The slope h + hRest = linear + quadratic |q| and the product p + pRest = q h are
// exact to 2^-43. So the angle is
//
//   offset + p + (pRest + q hRest + qRest (linear + 2 quadratic |q|)),
//
// whose last term is below 2^-16; its roundings, those of qRest and the square of qRest that is left out come to less
// than 2^-37.7. What the first addition loses (exact by two-sum) and the last term make the correction, which rounds
// to 2^-39 once more, and again with the margin. All that lies within 2^-36, and so does extended precision.
bool arctanInFloats(const Tev32f* y, const Tev32f* x, Tev32f* dst, int count) {
  constexpr Tev32f margin = 0x1p-36F;
  Tev32f angle[blockOfFloats], correction[blockOfFloats];
  Tev32s smallest = INT32_MAX, largest = 0;
  std::uint32_t doubt = 0;
  for (int i = 0; i < count; ++i) {
    const Ratio r = ratioOf(y[i], x[i]);
    const Tev32f inverse = 1.0F / r.denominator, q = r.numerator * inverse;
    const Tev32f qRest = std::fma(-q, r.denominator, r.numerator) * inverse, magnitude = std::fabs(q);
    const Tev32f h = std::fma(magnitude, quadratic, linear), hRest = std::fma(magnitude, quadratic, linear - h);
    const Tev32f p = q * h, pRest = std::fma(q, h, -p), slope = std::fma(magnitude, 2 * quadratic, linear);
    const Tev32f rest = std::fma(qRest, slope, std::fma(q, hRest, pRest));
    const Tev32f sum = r.offset + p, part = sum - r.offset, lost = (r.offset - (sum - part)) + (p - part);
    const Tev32f missing = lost + rest;
    doubt |=
        std::bit_cast<std::uint32_t>(sum + (missing - margin)) ^ std::bit_cast<std::uint32_t>(sum + (missing + margin));
    smallest = std::min(smallest, std::bit_cast<Tev32s>(r.denominator));
    largest = std::max(largest, std::bit_cast<Tev32s>(r.denominator));
    angle[i] = sum;
    correction[i] = missing;
  }
  if (doubt != 0 || smallest <= std::bit_cast<Tev32s>(leastDenominator) ||
      largest >= std::bit_cast<Tev32s>(mostDenominator))
    return false;
  for (int i = 0; i < count; ++i) dst[i] = angle[i] + correction[i];
  return true;
}
#endif

}  // namespace

TevStatus tevibFastArctan_32f(const Tev32f* srcY, const Tev32f* srcX, Tev32f* dst, int len) {
  if (TevStatus s = firstFailure(notNull(srcY, srcX, dst), length(len))) return s;
#ifdef __FMA__
  for (int first = 0; first < len; first += std::min(blockOfFloats, len - first)) {
    const int count = std::min(blockOfFloats, len - first);
    if (!arctanInFloats(srcY + first, srcX + first, dst + first, count))
      arctanInDouble(srcY + first, srcX + first, dst + first, count);
  }
#else
  arctanInDouble(srcY, srcX, dst, len);
#endif
  return tevStatusOk;
}
