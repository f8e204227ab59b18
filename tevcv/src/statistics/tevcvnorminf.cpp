// Infinity norm of one image: the largest magnitude under a mask.
#include "statistics/norms.h"
#include "tevcv/statistics.h"

using namespace tevcv;

namespace {

// Floats are compared as unsigned patterns without their sign: a selected NaN is larger than any number and is the
// result. Between the shares of a parallel call doubles are compared, where only the first share's NaN prevails. Both
// are kept, since stored results depend on them.
struct LargestPattern : LargestOfAll {
  void add(const Tev32f* p, const Tev8u* mask, int n) {
    Tev32s top = largest_;
    for (int i = 0; i < n; ++i) {
      const Tev32s pattern = patternWhere(mask[i], p[i], magnitudeBits);
      top = pattern > top ? pattern : top;
    }
    largest_ = top;
  }
  Tev64f value() const { return std::bit_cast<Tev32f>(largest_); }

 private:
  Tev32s largest_ = 0;
};

template <class T>
using InfinityNorm = std::conditional_t<std::floating_point<T>, LargestPattern, OfMagnitudes<T, Largest>>;

}  // namespace

TevStatus teviNorm_Inf_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                               Tev64f* pValue) {
  return norm<InfinityNorm, 1>(src, srcStep, mask, maskStep, roiSize, 1, pValue, anyDie(524288));
}

TevStatus teviNorm_Inf_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                int coi, Tev64f* pValue) {
  return norm<InfinityNorm, 3>(src, srcStep, mask, maskStep, roiSize, coi, pValue, anyDie(131072));
}

TevStatus teviNorm_Inf_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                               Tev64f* pValue) {
  return norm<InfinityNorm, 1>(src, srcStep, mask, maskStep, roiSize, 1, pValue, anyDie(524288));
}

TevStatus teviNorm_Inf_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                int coi, Tev64f* pValue) {
  return norm<InfinityNorm, 3>(src, srcStep, mask, maskStep, roiSize, coi, pValue, anyDie(131072));
}

TevStatus teviNorm_Inf_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                Tev64f* pValue) {
  return norm<InfinityNorm, 1>(src, srcStep, mask, maskStep, roiSize, 1, pValue, anyDie(524288));
}

TevStatus teviNorm_Inf_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                 int coi, Tev64f* pValue) {
  return norm<InfinityNorm, 3>(src, srcStep, mask, maskStep, roiSize, coi, pValue, anyDie(131072));
}

TevStatus teviNorm_Inf_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                Tev64f* pValue) {
  return norm<InfinityNorm, 1>(src, srcStep, mask, maskStep, roiSize, 1, pValue, anyDie(131072));
}

TevStatus teviNorm_Inf_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                 int coi, Tev64f* pValue) {
  return norm<InfinityNorm, 3>(src, srcStep, mask, maskStep, roiSize, coi, pValue, anyDie(32768));
}
