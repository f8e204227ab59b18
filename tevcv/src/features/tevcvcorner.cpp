// Eigenvalues and eigenvectors of the gradient covariance matrix (C. Harris and M. Stephens, "A combined corner and
// edge detector", 1988).
//
// The closed form for a symmetric 2 x 2 matrix runs in extended precision. The fast path takes a block of pixels in
// double, with a bound on each result and each comparison, and leaves a block with any doubt to the definition.
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

struct Rounded {
  Tev32f value;
  std::uint32_t doubt;  // 0 where every value within the margin rounds to this float
};

inline Rounded roundWithin(Tev64f value, Tev64f margin) {
  const auto low = static_cast<Tev32f>(value - margin), high = static_cast<Tev32f>(value + margin);
  return {high, (std::bit_cast<std::uint32_t>(low) ^ std::bit_cast<std::uint32_t>(high)) | (low == high ? 0U : 1U)};
}

// A block in double, each result in a line of its own. Tells whether any pixel is in doubt.
bool fastBlock(const Tev32f* aPlane, const Tev32f* bPlane, const Tev32f* cPlane, Tev32f scale, int sign, int length,
               Tev32f (&out)[resultsPerPixel][blockPixels]) {
  std::uint32_t doubt = 0;
  for (int i = 0; i < length; ++i) {
    // Products of two floats are exact.
    const Tev64f a = Tev64f{aPlane[i]} * scale, b = Tev64f{bPlane[i]} * scale, c = Tev64f{cPlane[i]} * scale;
    const Tev64f most = a > c ? a : c, least = a > c ? c : a, magnitude = std::fabs(b);
    const Tev64f t = weak * most, tMargin = std::fabs(t) * 0x1p-52;
    const Tev64f ac = a * c, bb = b * b, d = ac - bb, dMargin = (std::fabs(ac) + bb) * 0x1p-51;
    const Tev32f dLow = static_cast<Tev32f>(d - dMargin), dHigh = static_cast<Tev32f>(d + dMargin);
    const bool none = (least < t - tMargin) | (Tev64f{dHigh} < t - tMargin);
    const bool some = (least >= t + tMargin) & (Tev64f{dLow} >= t + tMargin);
    const bool axes = magnitude < t - tMargin, turned = magnitude >= t + tMargin;

    const Tev64f difference = a - c, r = std::sqrt(4.0 * bb + difference * difference);
    // Sum and root are off by less than 2^-50 of themselves, their halves by half of that.
    const Tev64f margin = (std::fabs(a) + std::fabs(c) + r) * 0x1p-51;
    const Tev64f smaller = (a + c - r) * 0.5;
    const Rounded l1 = roundWithin((a + c + r) * 0.5, margin), l2 = roundWithin(smaller, margin);

    const Tev64f vx = b * sign, y1 = l1.value - a, y2 = smaller - a;
    const Tev64f root1 = std::sqrt(y1 * y1 + vx * vx), root2 = std::sqrt(y2 * y2 + vx * vx);
    const Tev64f n1 = root1 > smallestNorm ? root1 : Tev64f{smallestNorm};
    const Tev64f n2 = root2 > smallestNorm ? root2 : Tev64f{smallestNorm};
    const Tev64f inverse1 = 1.0 / n1, inverse2 = 1.0 / n2;
    const Tev64f x1 = vx * inverse1, z1 = y1 * inverse1, x2 = vx * inverse2, z2 = y2 * inverse2;
    const Tev64f margin2 = margin * inverse2 * 2.5;
    const Rounded v1 = roundWithin(x1, std::fabs(x1) * 0x1p-49), w1 = roundWithin(z1, std::fabs(z1) * 0x1p-49);
    const Rounded v2 = roundWithin(x2, std::fabs(x2) * (margin2 + 0x1p-49));
    const Rounded w2 = roundWithin(z2, margin2 + std::fabs(z2) * 0x1p-49);

    const std::uint32_t values = l1.doubt | l2.doubt, vectors = v1.doubt | w1.doubt | v2.doubt | w2.doubt;
    const std::uint32_t ofThis = none ? 0U : !some ? 1U : axes ? values : turned ? values | vectors : 1U;
    doubt |= ofThis;
    out[0][i] = none ? 0.0F : l1.value;
    out[1][i] = none ? 0.0F : l2.value;
    out[2][i] = none ? 0.0F : axes ? 1.0F : v1.value;
    out[3][i] = none ? 0.0F : axes ? 0.0F : w1.value;
    out[4][i] = none ? 0.0F : axes ? 0.0F : v2.value;
    out[5][i] = none ? 0.0F : axes ? 1.0F : w2.value;
  }
  return doubt != 0;
}

void eigenRow(const Tev32f* a, const Tev32f* b, const Tev32f* c, Tev32f* dst, int width, Tev32f scale, int sign) {
  Tev32f lines[resultsPerPixel][blockPixels];
  for (int first = 0; first < width; first += blockPixels) {
    const int length = std::min(blockPixels, width - first);
    Tev32f* const out = dst + std::ptrdiff_t{first} * resultsPerPixel;
    if (fastBlock(a + first, b + first, c + first, scale, sign, length, lines)) {
      for (int i = 0; i < length; ++i)
        definedPixel(a[first + i], b[first + i], c[first + i], scale, sign, out + i * resultsPerPixel);
    } else {
      for (int i = 0; i < length; ++i)
        for (int k = 0; k < resultsPerPixel; ++k) out[i * resultsPerPixel + k] = lines[k][i];
    }
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
  Covariance m;
  if (TevStatus s = covariance(src, srcStep, roi, kernelType, apertureSize, avgWindow, buffer, &m)) return s;
  const Tev32f scale = scaleOf(kernelType, apertureSize);
  const int sign = kernelType == tevCornerKernelSobel ? -1 : 1;
  for (int y = 0; y < roi.height; ++y)
    eigenRow(m.a.row(y), m.b.row(y), m.c.row(y), rows(eigen, eigenStep)[y], roi.width, scale, sign);
  return tevStatusOk;
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
