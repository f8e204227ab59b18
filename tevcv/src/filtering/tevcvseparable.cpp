// The exported stages of the row and column pipelines: checks, the choice between one thread and many, and the choice
// of the function for the kernel's length. The functions themselves stand in tevcvconvolution*.
#include <algorithm>
#include <cstring>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "tevcv_internal/filtering.h"

using namespace tevcv;

namespace {

// Scratch of one thread in bytes: so much for each tap, and so much besides.
struct Scratch {
  int perTap;
  int fixed;

  constexpr std::int64_t bytes(int kernelSize) const { return std::int64_t{perTap} * kernelSize + fixed; }
};

constexpr Scratch row8uC1 = {4, 32}, row8uC3 = {12, 32};
constexpr Scratch row16sC1 = {48, 80}, row16sC3 = {28, 32};
constexpr Scratch rowLowC1 = {24, 64}, rowLowC3 = {208, 64};
constexpr Scratch row32fC1 = {16, 32}, row32fC3 = {192, 32};
constexpr Scratch column16s = {4, 32}, columnLow = {0, 32}, column32f = {0, 0};

// The buffer of one call holds for each thread an array of row pointers with 32 bytes of slack to align it, then for
// each thread its scratch.
std::int64_t pointerBytes(int height, int kernelSize) {
  return 32 + (std::int64_t{height} + kernelSize) * std::int64_t{sizeof(void*)};
}

TevStatus bufferSize(TevSize roi, int kernelSize, int* pSize, Scratch scratch) {
  if (TevStatus s = firstFailure(notNull(pSize), region(roi), length(kernelSize))) return s;
  const std::int64_t threads = owncvGetMaxNumThreads();
  *pSize = static_cast<int>(threads * (pointerBytes(roi.height, kernelSize) + scratch.bytes(kernelSize)));
  return tevStatusOk;
}

Tev8u* alignedUp(Tev8u* p, std::uintptr_t multiple) {
  return p + (-reinterpret_cast<std::uintptr_t>(p) & (multiple - 1));
}

bool largeEnough(TevSize roi) { return wrapMul(roi.height, roi.width) >= wrapMul(owncvGetMaxNumThreads(), 32768); }

// Calls work(share, pointers, scratch) for every share of the rows, with its own slice of the caller's row pointers:
// one for each of its rows and `below` more. The first failure in share order is the call's: each share leaves its
// status where its pointers stood.
template <class T, class Work>
TevStatus inShares(T* const* pp, int below, int height, int kernelSize, Scratch scratch, Tev8u* buffer, Work work) {
  const int threads = owncvGetNumThreads();
  const auto pointersOfOne = static_cast<std::ptrdiff_t>(pointerBytes(height, kernelSize));
  const auto scratchOfOne = static_cast<std::ptrdiff_t>(scratch.bytes(kernelSize));
  Tev8u* const scratchArea = buffer + threads * pointersOfOne;
  forEachShare(height, threads, [&](Share share) {
    Tev8u* const ofShare = buffer + share.index * pointersOfOne;
    TevStatus status = tevStatusOk;
    if (share.rows > 0) {
      const auto own = reinterpret_cast<T**>(alignedUp(ofShare, 16));
      std::copy_n(pp + share.firstRow, share.rows + below, own);
      status = work(share, own, alignedUp(scratchArea + share.index * scratchOfOne, 32));
    }
    std::memcpy(ofShare, &status, sizeof status);
  });
  for (int t = 0; t < threads; ++t) {
    TevStatus status;
    std::memcpy(&status, buffer + t * pointersOfOne, sizeof status);
    if (status != tevStatusOk) return status;
  }
  return tevStatusOk;
}

// borderValue of one channel travels by value, that of three by pointer.
constexpr TevStatus border(TevBorderType type) {
  return failUnless(type >= tevBorderConst && type <= tevBorderMirrorR, tevStatusBadArg);
}
template <class T>
constexpr TevStatus borderOf(TevBorderType type, T) {
  return border(type);
}
template <class T>
constexpr TevStatus borderOf(TevBorderType type, const T* value) {
  return firstFailure(failUnless(type != tevBorderConst || value, tevStatusNullPtr), border(type));
}

// Float stages have no divisor.
struct NoDivisor {};
constexpr TevStatus nonZero(NoDivisor) { return tevStatusOk; }
constexpr TevStatus nonZero(int divisor) { return failUnless(divisor != 0, tevStatusBadArg); }

// The functions of one member for the kernel lengths.
template <class Three, class Five, class Any>
struct ByLength {
  Three three;
  Five five;
  Any any;
};
template <class Three, class Five, class Any>
ByLength(Three, Five, Any) -> ByLength<Three, Five, Any>;

template <int channels, class T, class D, class K, class Value, class Divisor, class Functions>
TevStatus rowStage(const T* src, int srcStep, D** ppDst, TevSize roi, const K* kernel, int kernelSize, int anchor,
                   TevBorderType borderType, Value borderValue, Divisor divisor, Tev8u* buffer, Scratch scratch,
                   bool worthThreads, Functions functions) {
  if (TevStatus s = firstFailure(notNull(src, ppDst, kernel, buffer), region(roi), length(kernelSize),
                                 failUnless(anchor >= 0 && anchor < kernelSize, tevStatusBadAnchor),
                                 rowFits<T>(srcStep, roi.width, channels), wholeElements<T>(srcStep),
                                 borderOf(borderType, borderValue), nonZero(divisor)))
    return s;
  const int step = srcStep / int{sizeof(T)};
  const auto filter = [&](const T* first, D** pp, Tev8u* own, int height) {
    const auto call = [&](auto function, auto... size) {
      if constexpr (std::is_same_v<Divisor, NoDivisor>)
        return function(first, step, pp, own, roi.width, height, kernel, size..., anchor, borderType, borderValue);
      else
        return function(first, step, pp, own, roi.width, height, kernel, size..., anchor, borderType, borderValue,
                        divisor);
    };
    return kernelSize == 3   ? call(functions.three)
           : kernelSize == 5 ? call(functions.five)
                             : call(functions.any, kernelSize);
  };
  if (!worthThreads || !largeEnough(roi))
    return filter(src, ppDst, std::is_same_v<T, Tev32f> ? alignedUp(buffer, 32) : buffer, roi.height);
  return inShares(ppDst, 0, roi.height, kernelSize, scratch, buffer, [&](Share share, D** own, Tev8u* ownScratch) {
    return filter(src + std::ptrdiff_t{step} * share.firstRow, own, ownScratch, share.rows);
  });
}

template <class T>
TevStatus allRowsThere(const T* const* pp, std::int64_t count) {
  for (std::int64_t y = 0; y < count; ++y)
    if (!pp[y]) return tevStatusNullPtr;
  return tevStatusOk;
}

template <int channels, class T, class D, class K, class Divisor, class Functions>
TevStatus columnStage(const T** ppSrc, D* dst, int dstStep, TevSize roi, const K* kernel, int kernelSize,
                      Divisor divisor, Tev8u* buffer, Scratch scratch, bool worthThreads, Functions functions) {
  if (TevStatus s = firstFailure(notNull(ppSrc, dst, kernel), region(roi), length(kernelSize),
                                 rowFits<D>(dstStep, roi.width, channels), wholeElements<D>(dstStep), notNull(buffer),
                                 nonZero(divisor)))
    return s;
  if (TevStatus s = allRowsThere(ppSrc, std::int64_t{roi.height} + kernelSize - 1)) return s;
  // A column does not mix channels: three of them are a row of three times the width.
  const int step = dstStep / int{sizeof(D)}, width = roi.width * channels;
  const auto filter = [&](const T** pp, D* first, Tev8u* own, int height) {
    if constexpr (std::is_same_v<Divisor, NoDivisor>)
      return kernelSize == 3   ? functions.three(pp, first, step, width, height, kernel)
             : kernelSize == 5 ? functions.five(pp, first, step, width, height, kernel)
                               : functions.any(pp, first, step, width, height, kernel, kernelSize, own);
    else
      return kernelSize == 3   ? functions.three(pp, first, step, width, height, kernel, divisor)
             : kernelSize == 5 ? functions.five(pp, first, step, width, height, kernel, divisor)
                               : functions.any(pp, first, step, width, height, kernel, kernelSize, divisor, own);
  };
  if (!worthThreads || !largeEnough(roi)) return filter(ppSrc, dst, buffer, roi.height);
  return inShares(ppSrc, kernelSize - 1, roi.height, kernelSize, scratch, buffer,
                  [&](Share share, const T** own, Tev8u* ownScratch) {
                    return filter(own, dst + std::ptrdiff_t{step} * share.firstRow, ownScratch, share.rows);
                  });
}

}  // namespace

// The gates differ from member to member: short kernels of some stay on one thread, or do so on a die of one core.

TevStatus teviFilterRowBorderPipeline_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                                const Tev16s* kernel, int kernelSize, int anchor,
                                                TevBorderType borderType, Tev8u borderValue, int divisor,
                                                Tev8u* buffer) {
  return rowStage<1>(src, srcStep, ppDst, roiSize, kernel, kernelSize, anchor, borderType, borderValue, divisor, buffer,
                     row8uC1, true,
                     ByLength{ownFilterRowBorderPipeline_8u16s_C1R_3x3, ownFilterRowBorderPipeline_8u16s_C1R_5x5,
                              ownFilterRowBorderPipeline_8u16s_C1R_X});
}

TevStatus teviFilterRowBorderPipeline_8u16s_C3R(const Tev8u* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                                const Tev16s* kernel, int kernelSize, int anchor,
                                                TevBorderType borderType, const Tev8u* borderValue, int divisor,
                                                Tev8u* buffer) {
  return rowStage<3>(src, srcStep, ppDst, roiSize, kernel, kernelSize, anchor, borderType, borderValue, divisor, buffer,
                     row8uC3, true,
                     ByLength{ownFilterRowBorderPipeline_8u16s_C3R_3x3, ownFilterRowBorderPipeline_8u16s_C3R_5x5,
                              ownFilterRowBorderPipeline_8u16s_C3R_X});
}

TevStatus teviFilterRowBorderPipeline_16s_C1R(const Tev16s* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                              const Tev16s* kernel, int kernelSize, int anchor,
                                              TevBorderType borderType, Tev16s borderValue, int divisor,
                                              Tev8u* buffer) {
  return rowStage<1>(src, srcStep, ppDst, roiSize, kernel, kernelSize, anchor, borderType, borderValue, divisor, buffer,
                     row16sC1, kernelSize >= 4,
                     ByLength{ownFilterRowBorderPipeline_16s_C1R_3x3, ownFilterRowBorderPipeline_16s_C1R_5x5,
                              ownFilterRowBorderPipeline_16s_C1R_X});
}

TevStatus teviFilterRowBorderPipeline_16s_C3R(const Tev16s* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                              const Tev16s* kernel, int kernelSize, int anchor,
                                              TevBorderType borderType, const Tev16s* borderValue, int divisor,
                                              Tev8u* buffer) {
  return rowStage<3>(src, srcStep, ppDst, roiSize, kernel, kernelSize, anchor, borderType, borderValue, divisor, buffer,
                     row16sC3, true,
                     ByLength{ownFilterRowBorderPipeline_16s_C3R_3x3, ownFilterRowBorderPipeline_16s_C3R_5x5,
                              ownFilterRowBorderPipeline_16s_C3R_X});
}

TevStatus teviFilterRowBorderPipeline_Low_16s_C1R(const Tev16s* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                                  const Tev16s* kernel, int kernelSize, int anchor,
                                                  TevBorderType borderType, Tev16s borderValue, int divisor,
                                                  Tev8u* buffer) {
  return rowStage<1>(src, srcStep, ppDst, roiSize, kernel, kernelSize, anchor, borderType, borderValue, divisor, buffer,
                     rowLowC1, true,
                     ByLength{ownFilterRowBorderLowPipeline_16s_C1R_3x3, ownFilterRowBorderLowPipeline_16s_C1R_5x5,
                              ownFilterRowBorderLowPipeline_16s_C1R_X});
}

TevStatus teviFilterRowBorderPipeline_Low_16s_C3R(const Tev16s* src, int srcStep, Tev16s** ppDst, TevSize roiSize,
                                                  const Tev16s* kernel, int kernelSize, int anchor,
                                                  TevBorderType borderType, const Tev16s* borderValue, int divisor,
                                                  Tev8u* buffer) {
  return rowStage<3>(src, srcStep, ppDst, roiSize, kernel, kernelSize, anchor, borderType, borderValue, divisor, buffer,
                     rowLowC3, true,
                     ByLength{ownFilterRowBorderLowPipeline_16s_C3R_3x3, ownFilterRowBorderLowPipeline_16s_C3R_5x5,
                              ownFilterRowBorderLowPipeline_16s_C3R_X});
}

TevStatus teviFilterRowBorderPipeline_32f_C1R(const Tev32f* src, int srcStep, Tev32f** ppDst, TevSize roiSize,
                                              const Tev32f* kernel, int kernelSize, int anchor,
                                              TevBorderType borderType, Tev32f borderValue, Tev8u* buffer) {
  return rowStage<1>(src, srcStep, ppDst, roiSize, kernel, kernelSize, anchor, borderType, borderValue, NoDivisor{},
                     buffer, row32fC1, runsepomp(kernelSize) != 0,
                     ByLength{ownFilterRowBorderPipeline_32f_C1R_3x3, ownFilterRowBorderPipeline_32f_C1R_5x5,
                              ownFilterRowBorderPipeline_32f_C1R_X});
}

TevStatus teviFilterRowBorderPipeline_32f_C3R(const Tev32f* src, int srcStep, Tev32f** ppDst, TevSize roiSize,
                                              const Tev32f* kernel, int kernelSize, int anchor,
                                              TevBorderType borderType, const Tev32f* borderValue, Tev8u* buffer) {
  return rowStage<3>(src, srcStep, ppDst, roiSize, kernel, kernelSize, anchor, borderType, borderValue, NoDivisor{},
                     buffer, row32fC3, true,
                     ByLength{ownFilterRowBorderPipeline_32f_C3R_3x3, ownFilterRowBorderPipeline_32f_C3R_5x5,
                              ownFilterRowBorderPipeline_32f_C3R_X});
}

TevStatus teviFilterColumnPipeline_16s_C1R(const Tev16s** ppSrc, Tev16s* dst, int dstStep, TevSize roiSize,
                                           const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer) {
  return columnStage<1>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, divisor, buffer, column16s,
                        runsepomp(kernelSize) != 0,
                        ByLength{ownFilterColumnPipeline_16s_C1R_3x3, ownFilterColumnPipeline_16s_C1R_5x5,
                                 ownFilterColumnPipeline_16s_C1R_X});
}

TevStatus teviFilterColumnPipeline_16s_C3R(const Tev16s** ppSrc, Tev16s* dst, int dstStep, TevSize roiSize,
                                           const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer) {
  return columnStage<3>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, divisor, buffer, column16s,
                        runsepomp(kernelSize) != 0,
                        ByLength{ownFilterColumnPipeline_16s_C1R_3x3, ownFilterColumnPipeline_16s_C1R_5x5,
                                 ownFilterColumnPipeline_16s_C1R_X});
}

TevStatus teviFilterColumnPipeline_Low_16s_C1R(const Tev16s** ppSrc, Tev16s* dst, int dstStep, TevSize roiSize,
                                               const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer) {
  return columnStage<1>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, divisor, buffer, columnLow,
                        runsepomp(kernelSize) != 0,
                        ByLength{ownFilterColumnLowPipeline_16s_C1R_3x3, ownFilterColumnLowPipeline_16s_C1R_5x5,
                                 ownFilterColumnLowPipeline_16s_C1R_X});
}

TevStatus teviFilterColumnPipeline_Low_16s_C3R(const Tev16s** ppSrc, Tev16s* dst, int dstStep, TevSize roiSize,
                                               const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer) {
  return columnStage<3>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, divisor, buffer, columnLow,
                        runsepomp(kernelSize) != 0,
                        ByLength{ownFilterColumnLowPipeline_16s_C1R_3x3, ownFilterColumnLowPipeline_16s_C1R_5x5,
                                 ownFilterColumnLowPipeline_16s_C1R_X});
}

TevStatus teviFilterColumnPipeline_16s8u_C1R(const Tev16s** ppSrc, Tev8u* dst, int dstStep, TevSize roiSize,
                                             const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer) {
  return columnStage<1>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, divisor, buffer, column16s,
                        runsepomp(kernelSize) != 0,
                        ByLength{ownFilterColumnPipeline_16s8u_C1R_3x3, ownFilterColumnPipeline_16s8u_C1R_5x5,
                                 ownFilterColumnPipeline_16s8u_C1R_X});
}

TevStatus teviFilterColumnPipeline_16s8u_C3R(const Tev16s** ppSrc, Tev8u* dst, int dstStep, TevSize roiSize,
                                             const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer) {
  return columnStage<3>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, divisor, buffer, column16s,
                        runsepomp(kernelSize) != 0,
                        ByLength{ownFilterColumnPipeline_16s8u_C1R_3x3, ownFilterColumnPipeline_16s8u_C1R_5x5,
                                 ownFilterColumnPipeline_16s8u_C1R_X});
}

TevStatus teviFilterColumnPipeline_16s8s_C1R(const Tev16s** ppSrc, Tev8s* dst, int dstStep, TevSize roiSize,
                                             const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer) {
  return columnStage<1>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, divisor, buffer, column16s,
                        runsepomp(kernelSize) != 0,
                        ByLength{ownFilterColumnPipeline_16s8s_C1R_3x3, ownFilterColumnPipeline_16s8s_C1R_5x5,
                                 ownFilterColumnPipeline_16s8s_C1R_X});
}

TevStatus teviFilterColumnPipeline_16s8s_C3R(const Tev16s** ppSrc, Tev8s* dst, int dstStep, TevSize roiSize,
                                             const Tev16s* kernel, int kernelSize, int divisor, Tev8u* buffer) {
  return columnStage<3>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, divisor, buffer, column16s,
                        runsepomp(kernelSize) != 0,
                        ByLength{ownFilterColumnPipeline_16s8s_C1R_3x3, ownFilterColumnPipeline_16s8s_C1R_5x5,
                                 ownFilterColumnPipeline_16s8s_C1R_X});
}

TevStatus teviFilterColumnPipeline_32f_C1R(const Tev32f** ppSrc, Tev32f* dst, int dstStep, TevSize roiSize,
                                           const Tev32f* kernel, int kernelSize, Tev8u* buffer) {
  return columnStage<1>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, NoDivisor{}, buffer, column32f, true,
                        ByLength{ownFilterColumnPipeline_32f_C1R_3x3, ownFilterColumnPipeline_32f_C1R_5x5,
                                 ownFilterColumnPipeline_32f_C1R_X});
}

TevStatus teviFilterColumnPipeline_32f_C3R(const Tev32f** ppSrc, Tev32f* dst, int dstStep, TevSize roiSize,
                                           const Tev32f* kernel, int kernelSize, Tev8u* buffer) {
  return columnStage<3>(ppSrc, dst, dstStep, roiSize, kernel, kernelSize, NoDivisor{}, buffer, column32f, true,
                        ByLength{ownFilterColumnPipeline_32f_C1R_3x3, ownFilterColumnPipeline_32f_C1R_5x5,
                                 ownFilterColumnPipeline_32f_C1R_X});
}

TevStatus teviFilterRowBorderPipelineGetBufferSize_8u16s_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, row8uC1);
}

TevStatus teviFilterRowBorderPipelineGetBufferSize_8u16s_C3R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, row8uC3);
}

TevStatus teviFilterRowBorderPipelineGetBufferSize_16s_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, row16sC1);
}

TevStatus teviFilterRowBorderPipelineGetBufferSize_16s_C3R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, row16sC3);
}

TevStatus teviFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, rowLowC1);
}

TevStatus teviFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, rowLowC3);
}

TevStatus teviFilterRowBorderPipelineGetBufferSize_32f_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, row32fC1);
}

TevStatus teviFilterRowBorderPipelineGetBufferSize_32f_C3R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, row32fC3);
}

TevStatus teviFilterColumnPipelineGetBufferSize_16s_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, column16s);
}

TevStatus teviFilterColumnPipelineGetBufferSize_16s_C3R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, column16s);
}

TevStatus teviFilterColumnPipelineGetBufferSize_Low_16s_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, columnLow);
}

TevStatus teviFilterColumnPipelineGetBufferSize_Low_16s_C3R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, columnLow);
}

TevStatus teviFilterColumnPipelineGetBufferSize_16s8u_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, column16s);
}

TevStatus teviFilterColumnPipelineGetBufferSize_16s8u_C3R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, column16s);
}

TevStatus teviFilterColumnPipelineGetBufferSize_16s8s_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, column16s);
}

TevStatus teviFilterColumnPipelineGetBufferSize_16s8s_C3R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, column16s);
}

TevStatus teviFilterColumnPipelineGetBufferSize_32f_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, column32f);
}

TevStatus teviFilterColumnPipelineGetBufferSize_32f_C3R(TevSize roiSize, int kernelSize, int* pSize) {
  return bufferSize(roiSize, kernelSize, pSize, column32f);
}
