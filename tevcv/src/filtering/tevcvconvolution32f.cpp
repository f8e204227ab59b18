// Row and column stages over floats.
#include "filtering/float_run.h"
#include "filtering/pipeline.h"
#include "tevcv_internal/filtering.h"

using namespace tevcv;
using namespace tevcv::pipeline;

namespace {

template <int fixedLength, int channels>
TevStatus rows32f(const Tev32f* src, int srcStep, Tev32f** ppDst, Tev8u* buffer, int width, int height,
                  const Tev32f* kernel, int length, int anchor, TevBorderType borderType, const Tev32f* borderValue) {
  return filterRows<channels>(src, srcStep, ppDst, reinterpret_cast<Tev32f*>(buffer), width, height, length, anchor,
                              borderType, borderValue, FloatRun<fixedLength>{kernel, length});
}

}  // namespace

TevStatus ownFilterRowBorderPipeline_32f_C1R_3x3(const Tev32f* src, int srcStep, Tev32f** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev32f* kernel, int anchor,
                                                 TevBorderType borderType, Tev32f borderValue) {
  return rows32f<3, 1>(src, srcStep, ppDst, buffer, width, height, kernel, 3, anchor, borderType, &borderValue);
}

TevStatus ownFilterRowBorderPipeline_32f_C1R_5x5(const Tev32f* src, int srcStep, Tev32f** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev32f* kernel, int anchor,
                                                 TevBorderType borderType, Tev32f borderValue) {
  return rows32f<5, 1>(src, srcStep, ppDst, buffer, width, height, kernel, 5, anchor, borderType, &borderValue);
}

TevStatus ownFilterRowBorderPipeline_32f_C1R_X(const Tev32f* src, int srcStep, Tev32f** ppDst, Tev8u* buffer, int width,
                                               int height, const Tev32f* kernel, int kernelSize, int anchor,
                                               TevBorderType borderType, Tev32f borderValue) {
  return rows32f<0, 1>(src, srcStep, ppDst, buffer, width, height, kernel, kernelSize, anchor, borderType,
                       &borderValue);
}

TevStatus ownFilterRowBorderPipeline_32f_C3R_3x3(const Tev32f* src, int srcStep, Tev32f** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev32f* kernel, int anchor,
                                                 TevBorderType borderType, const Tev32f* borderValue) {
  return rows32f<3, 3>(src, srcStep, ppDst, buffer, width, height, kernel, 3, anchor, borderType, borderValue);
}

TevStatus ownFilterRowBorderPipeline_32f_C3R_5x5(const Tev32f* src, int srcStep, Tev32f** ppDst, Tev8u* buffer,
                                                 int width, int height, const Tev32f* kernel, int anchor,
                                                 TevBorderType borderType, const Tev32f* borderValue) {
  return rows32f<5, 3>(src, srcStep, ppDst, buffer, width, height, kernel, 5, anchor, borderType, borderValue);
}

TevStatus ownFilterRowBorderPipeline_32f_C3R_X(const Tev32f* src, int srcStep, Tev32f** ppDst, Tev8u* buffer, int width,
                                               int height, const Tev32f* kernel, int kernelSize, int anchor,
                                               TevBorderType borderType, const Tev32f* borderValue) {
  return rows32f<0, 3>(src, srcStep, ppDst, buffer, width, height, kernel, kernelSize, anchor, borderType, borderValue);
}

TevStatus ownFilterColumnPipeline_32f_C1R_3x3(const Tev32f** ppSrc, Tev32f* dst, int dstStep, int width, int height,
                                              const Tev32f* kernel) {
  return filterColumns(ppSrc, dst, dstStep, width, height, FloatRun<3>{kernel, 3});
}

TevStatus ownFilterColumnPipeline_32f_C1R_5x5(const Tev32f** ppSrc, Tev32f* dst, int dstStep, int width, int height,
                                              const Tev32f* kernel) {
  return filterColumns(ppSrc, dst, dstStep, width, height, FloatRun<5>{kernel, 5});
}

TevStatus ownFilterColumnPipeline_32f_C1R_X(const Tev32f** ppSrc, Tev32f* dst, int dstStep, int width, int height,
                                            const Tev32f* kernel, int kernelSize, Tev8u*) {
  return filterColumns(ppSrc, dst, dstStep, width, height, FloatRun<0>{kernel, kernelSize});
}
