// Column stages over rows of 16-bit sums. A sum of taps is a whole number that extended precision holds exactly; here
// it stands in a 32-bit word where it fits, in a double where it does not.
#include "filtering/pipeline.h"
#include "tevcv_internal/filtering.h"

using namespace tevcv;
using namespace tevcv::pipeline;

namespace {

template <int fixedLength, class D>
TevStatus columns(const Tev16s** ppSrc, D* dst, int dstStep, int width, int height, const Tev16s* kernel, int length,
                  int divisor) {
  return scaledByExtended<Clamped<D>>(divisor, [&]<class Scaled>(Scaled scaled) {
    if (largestSum(kernel, length, 32768) < 0x1p31)
      return filterColumns(ppSrc, dst, dstStep, width, height,
                           Run<fixedLength, unsigned, Tev16s, Scaled>{kernel, length, scaled});
    return filterColumns(ppSrc, dst, dstStep, width, height,
                         Run<fixedLength, Tev64f, Tev16s, Scaled>{kernel, length, scaled});
  });
}

// The Low stage gives up saturation: its sum wraps, and so does what it stores.
template <int fixedLength>
TevStatus lowColumns(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width, int height, const Tev16s* kernel,
                     int length, int divisor) {
  return scaledByExtended<LowHalf>(divisor, [&]<class Scaled>(Scaled scaled) {
    return filterColumns(ppSrc, dst, dstStep, width, height,
                         Run<fixedLength, unsigned, Tev16s, Scaled>{kernel, length, scaled});
  });
}

}  // namespace

TevStatus ownFilterColumnPipeline_16s_C1R_3x3(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width, int height,
                                              const Tev16s* kernel, int divisor) {
  return columns<3>(ppSrc, dst, dstStep, width, height, kernel, 3, divisor);
}

TevStatus ownFilterColumnPipeline_16s_C1R_5x5(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width, int height,
                                              const Tev16s* kernel, int divisor) {
  return columns<5>(ppSrc, dst, dstStep, width, height, kernel, 5, divisor);
}

TevStatus ownFilterColumnPipeline_16s_C1R_X(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width, int height,
                                            const Tev16s* kernel, int kernelSize, int divisor, Tev8u*) {
  return columns<0>(ppSrc, dst, dstStep, width, height, kernel, kernelSize, divisor);
}

TevStatus ownFilterColumnPipeline_16s8u_C1R_3x3(const Tev16s** ppSrc, Tev8u* dst, int dstStep, int width, int height,
                                                const Tev16s* kernel, int divisor) {
  return columns<3>(ppSrc, dst, dstStep, width, height, kernel, 3, divisor);
}

TevStatus ownFilterColumnPipeline_16s8u_C1R_5x5(const Tev16s** ppSrc, Tev8u* dst, int dstStep, int width, int height,
                                                const Tev16s* kernel, int divisor) {
  return columns<5>(ppSrc, dst, dstStep, width, height, kernel, 5, divisor);
}

TevStatus ownFilterColumnPipeline_16s8u_C1R_X(const Tev16s** ppSrc, Tev8u* dst, int dstStep, int width, int height,
                                              const Tev16s* kernel, int kernelSize, int divisor, Tev8u*) {
  return columns<0>(ppSrc, dst, dstStep, width, height, kernel, kernelSize, divisor);
}

TevStatus ownFilterColumnPipeline_16s8s_C1R_3x3(const Tev16s** ppSrc, Tev8s* dst, int dstStep, int width, int height,
                                                const Tev16s* kernel, int divisor) {
  return columns<3>(ppSrc, dst, dstStep, width, height, kernel, 3, divisor);
}

TevStatus ownFilterColumnPipeline_16s8s_C1R_5x5(const Tev16s** ppSrc, Tev8s* dst, int dstStep, int width, int height,
                                                const Tev16s* kernel, int divisor) {
  return columns<5>(ppSrc, dst, dstStep, width, height, kernel, 5, divisor);
}

TevStatus ownFilterColumnPipeline_16s8s_C1R_X(const Tev16s** ppSrc, Tev8s* dst, int dstStep, int width, int height,
                                              const Tev16s* kernel, int kernelSize, int divisor, Tev8u*) {
  return columns<0>(ppSrc, dst, dstStep, width, height, kernel, kernelSize, divisor);
}

TevStatus ownFilterColumnLowPipeline_16s_C1R_3x3(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width, int height,
                                                 const Tev16s* kernel, int divisor) {
  return lowColumns<3>(ppSrc, dst, dstStep, width, height, kernel, 3, divisor);
}

TevStatus ownFilterColumnLowPipeline_16s_C1R_5x5(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width, int height,
                                                 const Tev16s* kernel, int divisor) {
  return lowColumns<5>(ppSrc, dst, dstStep, width, height, kernel, 5, divisor);
}

TevStatus ownFilterColumnLowPipeline_16s_C1R_X(const Tev16s** ppSrc, Tev16s* dst, int dstStep, int width, int height,
                                               const Tev16s* kernel, int kernelSize, int divisor, Tev8u*) {
  return lowColumns<0>(ppSrc, dst, dstStep, width, height, kernel, kernelSize, divisor);
}
