// Colour gradient to grey: a norm over the three channels of each pixel.
#include <algorithm>
#include <cmath>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/guarded.h"
#include "frame/rows.h"
#include "tevcv/filtering.h"

using namespace tevcv;

namespace {

template <class T>
TevStatus gradientFailure(const T* src, int srcStep, const T* dst, int dstStep, TevSize roi, TevNorm norm) {
  return firstFailure(notNull(src, dst), region(roi), rowFits<T>(srcStep, roi.width, 3), rowFits<T>(dstStep, roi.width),
                      wholeElements<T>(srcStep), wholeElements<T>(dstStep),
                      failUnless(norm == tevNormInf || norm == tevNormL1 || norm == tevNormL2, tevStatusBadArg));
}

template <class T, class Norm>
void gradientRow(const T* src, T* dst, int width, Norm norm) {
  for (int x = 0; x < width; ++x) dst[x] = static_cast<T>(norm(src[3 * x], src[3 * x + 1], src[3 * x + 2]));
}

const auto largest = [](int a, int b, int c) { return std::max(std::max(a, b), c); };

// The means are products with a fixed-point number just below a third.
const auto mean8u = [](int a, int b, int c) { return ((a + b + c) * 1365 + 2048) >> 12; };
const auto mean16u = [](int a, int b, int c) { return ((a + b + c) * 5461 + 8192) >> 14; };

// The rounded root of a third of an integer s. No root lies closer than 1 / (24 r) to a half, r being the result, so
// that float (for bytes) and double (for 16 bits) round it as extended precision does.
const auto rootMeanSquare8u = [](int a, int b, int c) {
  return static_cast<int>(std::sqrt(static_cast<Tev32f>(a * a + b * b + c * c) / 3.0F) + 0.5F);
};

// The squares of the second and third channel are taken modulo 2^32 as signed words, the first one whole: from 46341 on
// a channel lowers the result. Callers compare with images made that way. A negative sum has no root and gives 0.
const auto rootMeanSquare16u = [](int a, int b, int c) {
  const Tev64f sum = static_cast<Tev64f>(a) * a + wrapMul(b, b) + wrapMul(c, c);
  return static_cast<int>(std::sqrt(std::max(sum, 0.0) / 3.0) + 0.5);
};

const auto largestMagnitude = [](Tev32f a, Tev32f b, Tev32f c) {
  return std::max(std::max(std::fabs(a), std::fabs(b)), std::fabs(c));
};

template <class F>
F sumOfMagnitudes(F a, F b, F c) {
  return std::fabs(a) + std::fabs(b) + std::fabs(c);
}

template <class F>
F euclidean(F a, F b, F c) {
  return std::sqrt(a * a + b * b + c * c);
}

// A norm in extended precision, rounded once; in double it is off by less than 2^-50 of itself.
template <class FastNorm, class Norm>
void roundNormRow(const Tev32f* src, Tev32f* dst, int width, FastNorm fastNorm, Norm norm) {
  const auto fill = [=](GuardedBlock& block, int first, int length) {
    // The channels are drawn apart first, which leaves a plain loop over doubles.
    Tev32f a[guardedBlock], b[guardedBlock], c[guardedBlock];
    const Tev32f* const p = src + 3 * first;
    for (int i = 0; i < length; ++i) {
      a[i] = p[3 * i];
      b[i] = p[3 * i + 1];
      c[i] = p[3 * i + 2];
    }
    for (int i = 0; i < length; ++i) {
      block.value[i] = fastNorm(a[i], b[i], c[i]);
      block.margin[i] = block.value[i] * 0x1p-50;
    }
  };
  roundGuarded(dst, width, fill, [=](int x) { return norm(src[3 * x], src[3 * x + 1], src[3 * x + 2]); });
}

}  // namespace

TevStatus teviGradientColorToGray_8u_C3C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                           TevNorm norm) {
  if (TevStatus s = gradientFailure(src, srcStep, dst, dstStep, roiSize, norm)) return s;
  for (int y = 0; y < roiSize.height; ++y) {
    const Tev8u* const from = rows(src, srcStep)[y];
    Tev8u* const to = rows(dst, dstStep)[y];
    if (norm == tevNormInf)
      gradientRow(from, to, roiSize.width, largest);
    else if (norm == tevNormL1)
      gradientRow(from, to, roiSize.width, mean8u);
    else
      gradientRow(from, to, roiSize.width, rootMeanSquare8u);
  }
  return tevStatusOk;
}

TevStatus teviGradientColorToGray_16u_C3C1R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                            TevNorm norm) {
  if (TevStatus s = gradientFailure(src, srcStep, dst, dstStep, roiSize, norm)) return s;
  for (int y = 0; y < roiSize.height; ++y) {
    const Tev16u* const from = rows(src, srcStep)[y];
    Tev16u* const to = rows(dst, dstStep)[y];
    if (norm == tevNormInf)
      gradientRow(from, to, roiSize.width, largest);
    else if (norm == tevNormL1)
      gradientRow(from, to, roiSize.width, mean16u);
    else
      gradientRow(from, to, roiSize.width, rootMeanSquare16u);
  }
  return tevStatusOk;
}

TevStatus teviGradientColorToGray_32f_C3C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                            TevNorm norm) {
  if (TevStatus s = gradientFailure(src, srcStep, dst, dstStep, roiSize, norm)) return s;
  for (int y = 0; y < roiSize.height; ++y) {
    const Tev32f* const from = rows(src, srcStep)[y];
    Tev32f* const to = rows(dst, dstStep)[y];
    if (norm == tevNormInf)
      gradientRow(from, to, roiSize.width, largestMagnitude);
    else if (norm == tevNormL1)
      roundNormRow(from, to, roiSize.width, sumOfMagnitudes<Tev64f>, sumOfMagnitudes<Extended>);
    else
      roundNormRow(from, to, roiSize.width, euclidean<Tev64f>, euclidean<Extended>);
  }
  return tevStatusOk;
}
