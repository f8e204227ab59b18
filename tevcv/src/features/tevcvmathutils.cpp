// A coarse arctangent in degrees, by a polynomial of the second degree in the ratio of the smaller to the larger
// coordinate, with an offset for each eighth of the circle.
//
// The result is defined by groups of four elements that share one division in extended precision. The fast path divides
// each element by itself, close enough to tell the rounded result in nearly all blocks.
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

}  // namespace

TevStatus tevibFastArctan_32f(const Tev32f* srcY, const Tev32f* srcX, Tev32f* dst, int len) {
  if (TevStatus s = firstFailure(notNull(srcY, srcX, dst), length(len))) return s;
  const auto fill = [=](GuardedBlock& block, int first, int count) {
    const Tev32f *const y = srcY + first, *const x = srcX + first;
    Tev32f estimate[guardedBlock], inverse[guardedBlock], numerator[guardedBlock], denominator[guardedBlock],
        offset[guardedBlock], margin[guardedBlock];
    // A float reciprocal is good where neither the denominator nor the reciprocal is near the ends of the range; other
    // blocks are in doubt.
    for (int i = 0; i < count; ++i) {
      const Ratio r = ratioOf(y[i], x[i]);
      numerator[i] = r.numerator;
      denominator[i] = r.denominator;
      offset[i] = r.offset;
      inverse[i] = 1.0F / r.denominator;
      estimate[i] = r.numerator * inverse[i];
      margin[i] = r.denominator > 0x1p-100F && r.denominator < 0x1p100F ? 0x1p-38F : 0x1p100F;
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
  return tevStatusOk;
}
