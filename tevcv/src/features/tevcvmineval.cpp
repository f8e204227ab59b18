// The smaller eigenvalue of the gradient covariance matrix: large where the image has a corner (J. Shi and C. Tomasi,
// "Good features to track", 1994).
#include <cmath>

#include "corner.h"
#include "frame/arithmetic.h"
#include "frame/guarded.h"

using namespace tevcv;
using namespace tevcv::corner;

namespace {

// ((c + a) - sqrt((a - c)^2 + 4 b^2)) * scale / 2 in extended precision, rounded once.
void smallerEigenvalues(const Tev32f* a, const Tev32f* b, const Tev32f* c, Tev32f* dst, int width, Tev32f scale) {
  const auto fill = [=](GuardedBlock& block, int first, int length) {
    const Tev32f *const pa = a + first, *const pb = b + first, *const pc = c + first;
    for (int i = 0; i < length; ++i) {
      const Tev64f difference = Tev64f{pa[i]} - pc[i], sum = Tev64f{pc[i]} + pa[i];
      const Tev64f root = std::sqrt(difference * difference + 4.0 * pb[i] * pb[i]);
      block.value[i] = (sum - root) * scale * 0.5;
      // Each of sum and root is off by less than 2^-50 of itself.
      block.margin[i] = (std::fabs(Tev64f{pa[i]}) + std::fabs(Tev64f{pc[i]}) + root) * scale * 0x1p-51;
    }
  };
  roundGuarded(dst, width, fill, [=](int x) {
    const Extended difference = Extended{a[x]} - Extended{c[x]};
    const Extended root = std::sqrt(difference * difference + 4.0L * Extended{b[x]} * Extended{b[x]});
    return ((Extended{c[x]} + Extended{a[x]}) - root) * Extended{scale} * 0.5L;
  });
}

template <class T>
TevStatus minEigenVal(const T* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi, int kernelType,
                      int apertureSize, int avgWindow, Tev8u* buffer) {
  if (TevStatus s = firstFailure(notNull(src, dst, buffer), region(roi), rowFits<T>(srcStep, roi.width),
                                 rowFits<Tev32f>(dstStep, roi.width), wholeElements<Tev32f>(dstStep),
                                 wholeElements<T>(srcStep), windows(kernelType, apertureSize, avgWindow)))
    return s;
  const Tev32f scale = scaleOf(kernelType, apertureSize);
  return forEachCovarianceRow(src, srcStep, roi, kernelType, apertureSize, avgWindow, buffer,
                              [=](int y, const Tev32f* a, const Tev32f* b, const Tev32f* c) {
                                smallerEigenvalues(a, b, c, rows(dst, dstStep)[y], roi.width, scale);
                              });
}

}  // namespace

TevStatus teviMinEigenVal_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* minEigen, int minEigenStep, TevSize roiSize,
                                    int kernelType, int apertureSize, int avgWindow, Tev8u* buffer) {
  return minEigenVal(src, srcStep, minEigen, minEigenStep, roiSize, kernelType, apertureSize, avgWindow, buffer);
}

TevStatus teviMinEigenVal_32f_C1R(const Tev32f* src, int srcStep, Tev32f* minEigen, int minEigenStep, TevSize roiSize,
                                  int kernelType, int apertureSize, int avgWindow, Tev8u* buffer) {
  return minEigenVal(src, srcStep, minEigen, minEigenStep, roiSize, kernelType, apertureSize, avgWindow, buffer);
}
