// Weights of the chamfer moves for the three norms. Integer weights of the Euclidean norm are scaled: divide distances
// by the first of them.
#include <algorithm>

#include "frame/checks.h"
#include "tevcv/distance.h"

using namespace tevcv;

namespace {

// By norm: chessboard, city block, Euclidean.
constexpr Tev32s integers3x3[3][2] = {{1, 1}, {1, 2}, {2, 3}};
constexpr Tev32s integers5x5[3][3] = {{1, 1, 2}, {1, 2, 3}, {5, 7, 11}};
constexpr Tev32f floats3x3[3][2] = {{1.0F, 1.0F}, {1.0F, 2.0F}, {0.955F, 1.3693F}};
constexpr Tev32f floats5x5[3][3] = {{1.0F, 1.0F, 2.0F}, {1.0F, 2.0F, 3.0F}, {1.0F, 1.4F, 2.1969F}};

template <class W>
TevStatus weights(int kernelSize, int norm, W* metrics, const W (&of3x3)[3][2], const W (&of5x5)[3][3]) {
  if (TevStatus s = firstFailure(notNull(metrics), failUnless(kernelSize == 3 || kernelSize == 5, tevStatusBadSize),
                                 failUnless(norm >= tevNormInf && norm <= tevNormL2, tevStatusBadArg)))
    return s;
  if (kernelSize == 3)
    std::copy_n(of3x3[norm], 2, metrics);
  else
    std::copy_n(of5x5[norm], 3, metrics);
  return tevStatusOk;
}

}  // namespace

TevStatus teviGetDistanceTransformMask_32s(int kernelSize, int norm, Tev32s* metrics) {
  return weights(kernelSize, norm, metrics, integers3x3, integers5x5);
}

TevStatus teviGetDistanceTransformMask_32f(int kernelSize, int norm, Tev32f* metrics) {
  return weights(kernelSize, norm, metrics, floats3x3, floats5x5);
}

TevStatus teviGetDistanceTransformMask(int maskType, Tev32f* metrics) {
  const int norm = maskType % 10;
  if (TevStatus s = failUnless(norm >= tevNormInf && norm <= tevNormL2, tevStatusBadArg)) return s;
  return teviGetDistanceTransformMask_32f(maskType / 10, norm, metrics);
}
