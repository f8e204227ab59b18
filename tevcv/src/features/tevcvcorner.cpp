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

// Which way a pixel goes, as far as double can tell.
enum Way : std::uint32_t { noCorner, onAxes, turned, unknown };

// A block in double, in stages that each run in vectors.
struct EigenBlock {
  Tev64f a[blockPixels], b[blockPixels], c[blockPixels];
  std::uint32_t way[blockPixels];
  Tev32f result[resultsPerPixel][blockPixels];
  std::uint32_t valueDoubt[blockPixels], vectorDoubt[blockPixels];

  // Products of two floats are exact.
  void load(const Tev32f* aPlane, const Tev32f* bPlane, const Tev32f* cPlane, Tev32f scale, int length) {
    for (int i = 0; i < length; ++i) {
      a[i] = Tev64f{aPlane[i]} * scale;
      b[i] = Tev64f{bPlane[i]} * scale;
      c[i] = Tev64f{cPlane[i]} * scale;
    }
  }

  void choose(int length) {
    for (int i = 0; i < length; ++i) {
      const Tev64f most = a[i] > c[i] ? a[i] : c[i], least = a[i] > c[i] ? c[i] : a[i], magnitude = std::fabs(b[i]);
      const Tev64f t = weak * most, margin = std::fabs(t) * 0x1p-52, low = t - margin, high = t + margin;
      const Tev64f ac = a[i] * c[i], bb = b[i] * b[i], d = ac - bb, dMargin = (std::fabs(ac) + bb) * 0x1p-51;
      const auto dLow = Tev64f{static_cast<Tev32f>(d - dMargin)}, dHigh = Tev64f{static_cast<Tev32f>(d + dMargin)};
      // Each way from the most certain on; a comparison with NaN leaves the way unknown.
      Tev64f chosen = magnitude < low ? Tev64f{onAxes} : Tev64f{unknown};
      chosen = magnitude >= high ? Tev64f{turned} : chosen;
      chosen = least >= high ? chosen : Tev64f{unknown};
      chosen = dLow >= high ? chosen : Tev64f{unknown};
      chosen = least < low ? Tev64f{noCorner} : chosen;
      chosen = dHigh < low ? Tev64f{noCorner} : chosen;
      way[i] = static_cast<std::uint32_t>(static_cast<int>(chosen));
    }
  }

  void solve(int sign, int length) {
    for (int i = 0; i < length; ++i) {
      const Tev64f difference = a[i] - c[i], r = std::sqrt(4.0 * (b[i] * b[i]) + difference * difference);
      // Sum and root are off by less than 2^-50 of themselves, their halves by half of that.
      const Tev64f margin = (std::fabs(a[i]) + std::fabs(c[i]) + r) * 0x1p-51;
      const Tev64f smaller = (a[i] + c[i] - r) * 0.5;
      const Rounded l1 = roundWithin((a[i] + c[i] + r) * 0.5, margin), l2 = roundWithin(smaller, margin);

      const Tev64f vx = b[i] * sign, y1 = l1.value - a[i], y2 = smaller - a[i];
      const Tev64f root1 = std::sqrt(y1 * y1 + vx * vx), root2 = std::sqrt(y2 * y2 + vx * vx);
      const Tev64f inverse1 = 1.0 / (root1 > smallestNorm ? root1 : Tev64f{smallestNorm});
      const Tev64f inverse2 = 1.0 / (root2 > smallestNorm ? root2 : Tev64f{smallestNorm});
      const Tev64f x1 = vx * inverse1, z1 = y1 * inverse1, x2 = vx * inverse2, z2 = y2 * inverse2;
      const Tev64f margin2 = margin * inverse2 * 2.5;
      const Rounded v1 = roundWithin(x1, std::fabs(x1) * 0x1p-49), w1 = roundWithin(z1, std::fabs(z1) * 0x1p-49);
      const Rounded v2 = roundWithin(x2, std::fabs(x2) * (margin2 + 0x1p-49));
      const Rounded w2 = roundWithin(z2, margin2 + std::fabs(z2) * 0x1p-49);
      valueDoubt[i] = l1.doubt | l2.doubt;
      vectorDoubt[i] = v1.doubt | w1.doubt | v2.doubt | w2.doubt;
      result[0][i] = l1.value;
      result[1][i] = l2.value;
      result[2][i] = v1.value;
      result[3][i] = w1.value;
      result[4][i] = v2.value;
      result[5][i] = w2.value;
    }
  }

  // Puts in what the other ways store, and tells whether any pixel is in doubt.
  bool finish(int length) {
    for (int i = 0; i < length; ++i) {
      const std::uint32_t w = way[i];
      const std::uint32_t values = w == noCorner ? 0U : ~0U, vectors = w == turned ? ~0U : 0U;
      valueDoubt[i] = (valueDoubt[i] & values) | (vectorDoubt[i] & vectors) | (w == unknown ? 1U : 0U);
      const Tev32f along = w == onAxes ? 1.0F : 0.0F;
      result[0][i] = w == noCorner ? 0.0F : result[0][i];
      result[1][i] = w == noCorner ? 0.0F : result[1][i];
      result[2][i] = w == turned ? result[2][i] : along;
      result[3][i] = w == turned ? result[3][i] : 0.0F;
      result[4][i] = w == turned ? result[4][i] : 0.0F;
      result[5][i] = w == turned ? result[5][i] : along;
    }
    std::uint32_t doubt = 0;
    for (int i = 0; i < length; ++i) doubt |= valueDoubt[i];
    return doubt != 0;
  }

  // Six results a pixel, side by side. They are paired first: whole pairs interleave in vectors.
  void store(Tev32f* out, int length) const {
    Tev32f pairs[3][2 * blockPixels];
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
    block.load(a + first, b + first, c + first, scale, length);
    block.choose(length);
    block.solve(sign, length);
    if (block.finish(length)) {
      for (int i = 0; i < length; ++i)
        definedPixel(a[first + i], b[first + i], c[first + i], scale, sign, out + i * resultsPerPixel);
    } else {
      block.store(out, length);
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
