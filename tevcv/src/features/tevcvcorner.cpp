// Eigenvalues and eigenvectors of the gradient covariance matrix (C. Harris and M. Stephens, "A combined corner and
// edge detector", 1988).
//
// The closed form for a symmetric 2 x 2 matrix runs in extended precision. The fast path takes a block of pixels in
// double, with a bound on each result and each comparison, and leaves the pixels in doubt to the definition.
#include <bit>
#include <cmath>
#include <cstring>

#include "corner.h"
#include "frame/arithmetic.h"

using namespace tevcv;
using namespace tevcv::corner;

namespace {

constexpr int resultsPerPixel = 6;
constexpr Tev64f weak = 0.01;              // entries and determinant below this share of the larger entry are no corner
constexpr Tev32f smallestNorm = 0x1p-23F;  // a vector's length is raised to this before it divides

// One pixel: larger and smaller eigenvalue, their vectors. `sign` turns the vectors to where callers expect them.
void definedPixel(Tev32f aPlane, Tev32f bPlane, Tev32f cPlane, Tev32f scale, int sign, Tev32f* out) {
  const Extended a = Extended{aPlane} * scale, b = Extended{bPlane} * scale, c = Extended{cPlane} * scale;
  const Extended t = Extended{weak} * std::max(a, c);
  const auto determinant = static_cast<Tev32f>(a * c - b * b);
  const Extended difference = a - c;
  const Extended r = std::sqrt(4.0L * b * b + difference * difference);
  const auto larger = static_cast<Tev32f>((a + c + r) * 0.5L);
  const Extended smaller = (a + c - r) * 0.5L;
  // The determinant is held against a value of the entries' scale, not of its own: weak corners read as none, and
  // callers have set their levels by that.
  if (std::min(a, c) < t || Extended{determinant} < t) {
    std::fill_n(out, resultsPerPixel, 0.0F);
    return;
  }
  out[0] = larger;
  out[1] = static_cast<Tev32f>(smaller);
  if (std::fabs(b) < t) {
    out[2] = out[5] = 1.0F;
    out[3] = out[4] = 0.0F;
    return;
  }
  const Extended vx = b * static_cast<Extended>(sign), y1 = Extended{larger} - a, y2 = smaller - a;
  const Extended n1 = std::max(std::sqrt(y1 * y1 + vx * vx), Extended{smallestNorm});
  const Extended n2 = std::max(std::sqrt(y2 * y2 + vx * vx), Extended{smallestNorm});
  out[2] = static_cast<Tev32f>(vx / n1);
  out[3] = static_cast<Tev32f>(y1 / n1);
  out[4] = static_cast<Tev32f>(vx / n2);
  out[5] = static_cast<Tev32f>(y2 / n2);
}

constexpr int blockPixels = 64;

using Word = std::uint32_t;
constexpr Word signBit = 1U << 31;

inline Word allOrNone(bool condition) { return condition ? ~Word{0} : Word{0}; }
inline Word bitsOf(Tev32f value) { return std::bit_cast<Word>(value); }

// A float with the sign of a number of this computation, 0 for 0: vectors of doubles compare to masks of another width.
inline Tev32f signOf(Tev64f value) { return static_cast<Tev32f>(value * 0x1p100); }

// 1 / sqrt(x), off by less than 2^-44 of itself, from half an x in the range of floats; a finite number for 0. The
// roundings in float leave less than 3 * 2^-24, and Newton's step 1.5 times the square of that.
inline Tev64f inverseRoot(Tev64f halfX) {
  constexpr Tev32f rootOfHalf = 0.70710678F;
  const Tev64f half = halfX > 0x1p-120 ? halfX : 0x1p-120;
  const Tev64f y = rootOfHalf / std::sqrt(static_cast<Tev32f>(half));
  return y * (1.5 - half * (y * y));
}

// Whether a number less than 2^-43 of itself away may round to another float than `value`, by all bits or none. A
// double has 29 bits more than a float, so the midpoints between floats are where those read 2^28, and the number is
// less than 2^10 of the last place away.
inline Word isNearMidpoint(Tev64f value) {
  constexpr Word distance = 1U << 10, midpoint = 1U << 28, places = (1U << 29) - 1;
  const auto low = static_cast<Word>(std::bit_cast<std::uint64_t>(value));
  return allOrNone(((low + (distance - midpoint)) & (places & ~(2 * distance - 1))) == 0);
}

// A block of pixels in double, and which of them are left to the definition. Neither a nor c is negative: they are
// averages of squares.
//
// Which way a pixel goes: entries are compared in float, where 0.01 times an entry is off by less than 2^-22 of it. The
// determinant has the bounds of its two products, and 2^-22 of what it is compared with for its own rounding to float.
// A determinant of 0.01 times an entry means entries and eigenvalues above 0.004, so that no corner but the flat one,
// all zeros, comes near the end of the floats' range or the smallest norm.
//
// The results: with d the difference of a and c without its sign and r the root, the eigenvalues are half of the sum
// plus and minus r, off by less than 2^-51 of the larger. With m = (d + r) / 2 both unit vectors consist of m and |b|,
// each over sqrt(r * m), since m^2 + b^2 = r * m; nothing cancels there. That holds for the vector of the smaller
// value. That of the larger is defined by its value's float, and is computed from it.
struct EigenBlock {
  Word doubt[blockPixels];
  Word result[resultsPerPixel][blockPixels];

  void solve(const Tev32f* a, const Tev32f* b, const Tev32f* c, Tev32f scale, int sign, int length) {
    constexpr auto weakLow = static_cast<Tev32f>(weak * (1 - 0x1p-21));
    constexpr auto weakHigh = static_cast<Tev32f>(weak * (1 + 0x1p-21));
    const Tev64f twiceScale = 2 * Tev64f{scale};
    const Word turn = sign < 0 ? signBit : 0;
    for (int i = 0; i < length; ++i) {
      const Tev32f mostPlane = a[i] > c[i] ? a[i] : c[i], leastPlane = a[i] > c[i] ? c[i] : a[i];
      const Tev32f bPlane = std::fabs(b[i]), tLow = mostPlane * weakLow, tHigh = mostPlane * weakHigh;
      // Products of two floats are exact.
      const Tev64f most = Tev64f{mostPlane} * scale, least = Tev64f{leastPlane} * scale,
                   b2 = Tev64f{bPlane} * twiceScale;
      const Tev64f ac = most * least, bb4 = b2 * b2, bb = 0.25 * bb4, t = weak * most;
      const Tev64f excess = (ac - bb) - t, tolerance = (ac + bb) * 0x1p-51 + t * 0x1p-22;
      // A float determinant of the least numbers may be 0 and pass the comparison with 0.
      const Word none = allOrNone(leastPlane < tLow) | allOrNone(signOf(excess + tolerance + 0x1p-140) < 0);
      const Word corner =
          allOrNone(leastPlane >= tHigh) & allOrNone(signOf(excess - tolerance) >= 0) & allOrNone(mostPlane < 0x1p60F);
      const Word onAxes = corner & allOrNone(bPlane < tLow), turned = corner & allOrNone(bPlane >= tHigh);

      // All of these are twice as large as in the formula.
      const Tev64f difference = most - least, sum = most + least, r = std::sqrt(difference * difference + bb4);
      const Tev64f larger = sum + r, smaller = sum - r, margin = larger * 0x1p-50;
      const auto value = static_cast<Tev32f>(larger);
      const auto low = static_cast<Tev32f>(smaller - margin), high = static_cast<Tev32f>(smaller + margin);

      const Tev64f own = a[i] > c[i] ? most : least;
      const Tev64f y = value - (own + own), inverse = inverseRoot(0.5 * (y * y + bb4));
      const Tev64f x1 = b2 * inverse, y1 = y * inverse;
      const Tev64f m = difference + r, q = inverseRoot(r * m), across = m * q, along = b2 * q;
      const auto acrossFloat = static_cast<Tev32f>(across), alongFloat = static_cast<Tev32f>(along);
      const Tev32f x2 = a[i] > c[i] ? alongFloat : acrossFloat, y2 = 0.0F - (a[i] > c[i] ? acrossFloat : alongFloat);

      const Word values = isNearMidpoint(larger) | ~allOrNone(low == high);
      const Word vectors = isNearMidpoint(x1) | isNearMidpoint(y1) | isNearMidpoint(across) | isNearMidpoint(along);
      doubt[i] = ~(none | onAxes | turned) | (values & corner) | (vectors & turned);
      const Word one = bitsOf(1.0F) & onAxes, side = (bitsOf(b[i]) & signBit) ^ turn;
      result[0][i] = bitsOf(0.5F * value) & corner;
      result[1][i] = bitsOf(0.5F * high) & corner;
      result[2][i] = ((bitsOf(static_cast<Tev32f>(x1)) | side) & turned) | one;
      result[3][i] = bitsOf(static_cast<Tev32f>(y1)) & turned;
      result[4][i] = (bitsOf(x2) | side) & turned;
      result[5][i] = (bitsOf(y2) & turned) | one;
    }
  }

  bool isInDoubt(int length) const {
    Word any = 0;
    for (int i = 0; i < length; ++i) any |= doubt[i];
    return any != 0;
  }

  // Six results a pixel, side by side. They are paired first: whole pairs interleave in vectors.
  void store(Tev32f* out, int length) const {
    Word pairs[3][2 * blockPixels];
    for (int k = 0; k < 3; ++k)
      for (int i = 0; i < length; ++i) {
        pairs[k][2 * i] = result[2 * k][i];
        pairs[k][2 * i + 1] = result[2 * k + 1][i];
      }
    for (int i = 0; i < length; ++i)
      for (int k = 0; k < 3; ++k) std::memcpy(out + 6 * i + 2 * k, pairs[k] + 2 * i, 2 * sizeof(Tev32f));
  }
};

void eigenRow(const Tev32f* a, const Tev32f* b, const Tev32f* c, Tev32f* dst, int width, Tev32f scale, int sign) {
  EigenBlock block;
  for (int first = 0; first < width; first += blockPixels) {
    const int length = std::min(blockPixels, width - first);
    Tev32f* const out = dst + std::ptrdiff_t{first} * resultsPerPixel;
    block.solve(a + first, b + first, c + first, scale, sign, length);
    block.store(out, length);
    if (!block.isInDoubt(length)) continue;
    for (int i = 0; i < length; ++i)
      if (block.doubt[i] != 0)
        definedPixel(a[first + i], b[first + i], c[first + i], scale, sign, out + i * resultsPerPixel);
  }
}

template <class T>
TevStatus eigenValsVecs(const T* src, int srcStep, Tev32f* eigen, int eigenStep, TevSize roi, int kernelType,
                        int apertureSize, int avgWindow, Tev8u* buffer) {
  // The float form asks for four bytes a pixel in its output's step and writes 24: callers that pass the step of a
  // picture as wide as its eigenvalues alone are let through, and answer for their rows themselves.
  constexpr int testedElements = std::is_same_v<T, Tev8u> ? resultsPerPixel : 1;
  if (TevStatus s =
          firstFailure(notNull(src, eigen, buffer), region(roi), rowFits<T>(srcStep, roi.width),
                       rowFits<Tev32f>(eigenStep, roi.width, testedElements), wholeElements<Tev32f>(eigenStep),
                       wholeElements<T>(srcStep), windows(kernelType, apertureSize, avgWindow)))
    return s;
  const Tev32f scale = scaleOf(kernelType, apertureSize);
  const int sign = kernelType == tevCornerKernelSobel ? -1 : 1;
  return forEachCovarianceRow(src, srcStep, roi, kernelType, apertureSize, avgWindow, buffer,
                              [=](int y, const Tev32f* a, const Tev32f* b, const Tev32f* c) {
                                eigenRow(a, b, c, rows(eigen, eigenStep)[y], roi.width, scale, sign);
                              });
}

}  // namespace

TevStatus teviEigenValsVecs_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* eigen, int eigenStep, TevSize roiSize,
                                      int kernelType, int apertureSize, int avgWindow, Tev8u* buffer) {
  return eigenValsVecs(src, srcStep, eigen, eigenStep, roiSize, kernelType, apertureSize, avgWindow, buffer);
}

TevStatus teviEigenValsVecs_32f_C1R(const Tev32f* src, int srcStep, Tev32f* eigen, int eigenStep, TevSize roiSize,
                                    int kernelType, int apertureSize, int avgWindow, Tev8u* buffer) {
  return eigenValsVecs(src, srcStep, eigen, eigenStep, roiSize, kernelType, apertureSize, avgWindow, buffer);
}
