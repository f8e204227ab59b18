// L1 norm of one image: the sum of the magnitudes under a mask.
#include "statistics/extended_sum.h"
#include "statistics/norms.h"
#include "tevcv/statistics.h"

using namespace tevcv;

namespace {

// Floats are added in extended precision, one chain in scan order; at the end of each row the sum is stored as a
// double.
struct FloatSum : SumOfAll {
  void add(const Tev32f* p, const Tev8u* mask, int n) {
    Tev64f term[shortBlock];
    for (int i = 0; i < n; ++i) term[i] = std::bit_cast<Tev32f>(patternWhere(mask[i], p[i], magnitudeBits));
    sum_.add(term, n);
  }
  void endRow() { sum_.storeAsDouble(); }
  Tev64f value() const { return static_cast<Tev64f>(sum_.value()); }

 private:
  ExtendedSum sum_;
};

template <class T>
using L1Norm = std::conditional_t<std::floating_point<T>, FloatSum, OfMagnitudes<T, Sum>>;

}  // namespace

TevStatus teviNorm_L1_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                              Tev64f* pValue) {
  return norm<L1Norm, 1>(src, srcStep, mask, maskStep, roiSize, 1, pValue, multiCoreDie(131072));
}

TevStatus teviNorm_L1_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize, int coi,
                               Tev64f* pValue) {
  return norm<L1Norm, 3>(src, srcStep, mask, maskStep, roiSize, coi, pValue, anyDie(131072));
}

TevStatus teviNorm_L1_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                              Tev64f* pValue) {
  return norm<L1Norm, 1>(src, srcStep, mask, maskStep, roiSize, 1, pValue, multiCoreDie(131072));
}

TevStatus teviNorm_L1_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize, int coi,
                               Tev64f* pValue) {
  return norm<L1Norm, 3>(src, srcStep, mask, maskStep, roiSize, coi, pValue, anyDie(131072));
}

TevStatus teviNorm_L1_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                               Tev64f* pValue) {
  return norm<L1Norm, 1>(src, srcStep, mask, maskStep, roiSize, 1, pValue, anyDie(131072));
}

TevStatus teviNorm_L1_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                int coi, Tev64f* pValue) {
  return norm<L1Norm, 3>(src, srcStep, mask, maskStep, roiSize, coi, pValue, anyDie(131072));
}

TevStatus teviNorm_L1_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                               Tev64f* pValue) {
  return norm<L1Norm, 1>(src, srcStep, mask, maskStep, roiSize, 1, pValue, anyDie(131072));
}

TevStatus teviNorm_L1_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                int coi, Tev64f* pValue) {
  return norm<L1Norm, 3>(src, srcStep, mask, maskStep, roiSize, coi, pValue, anyDie(131072));
}
