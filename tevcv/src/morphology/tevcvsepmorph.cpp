// Minimum and maximum over a rectangle, each pixel of which costs the same for any size: a sliding extremum along the
// rows, then down the columns, in a ring of lines so that no source row is filtered twice. This file checks, trims the
// window to what clamping can reach, and chooses the workers.
#include <cstdint>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "morphology/blocks.h"
#include "tevcv/morphology.h"
#include "tevcv_internal/morphology.h"

using namespace tevcv;

namespace {

template <class T>
struct WorkersOf;
template <>
struct WorkersOf<Tev8u> {
  using Row = TevFilterRow_8u;
  using Column = TevFilterColumn_8u;
};
template <>
struct WorkersOf<Tev32f> {
  using Row = TevFilterRow_32f;
  using Column = TevFilterColumn_32f;
};

// The tables of one direction and layout; `smallRows` is null where small images have none of their own.
template <class T>
struct Tables {
  const typename WorkersOf<T>::Row* rows;
  const typename WorkersOf<T>::Row* smallRows;
  const typename WorkersOf<T>::Column* columns;
};

// The window along one axis: `length` pixels, of which `anchor` lie before the output pixel.
struct Window {
  int length;
  int anchor;
};

// Takes off what lies beyond the edge pixel for every output: there clamping adds nothing new.
Window trimmed(Window w, int imageLength) {
  if (w.anchor >= imageLength) w = {w.length - (w.anchor - imageLength + 1), imageLength - 1};
  if (imageLength < w.length - w.anchor) w.length = imageLength + w.anchor;
  return w;
}

template <class T, int channels>
TevStatus bufferSize(int roiWidth, int maskWidth, int maskHeight, int* size) {
  if (TevStatus s = firstFailure(notNull(size), length(roiWidth),
                                 failUnless(maskWidth >= 1 && maskHeight >= 1, tevStatusBadMaskSize)))
    return s;
  *size = saturate<int>(separableBufferBytes(roiWidth, channels * int{sizeof(T)}, maskHeight));
  return tevStatusOk;
}

// The ring's entries stand at the next 4-byte boundary of the buffer, whatever the size of a pointer, and its lines at
// the next 32-byte boundary behind them.
template <class T>
T** layRing(Tev8u* buffer, int entries, int lines, std::ptrdiff_t stride) {
  T** const ring = reinterpret_cast<T**>(nextBoundary(buffer, 4));
  Tev8u* const line = nextBoundary(ring + entries, 32);
  for (int i = 0; i < entries; ++i) ring[i] = reinterpret_cast<T*>(line + stride * (i % lines));
  return ring;
}

// Images are checked one after the other here, each for both its faults.
template <class T, int channels>
TevStatus stepOf(int step, int width) {
  return firstFailure(rowFits<T>(step, width, channels), wholeElements<T>(step));
}

template <int channels, class T>
TevStatus filter(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevSize mask, TevPoint anchor,
                 Tev8u* buffer, const Tables<T>& tables) {
  if (TevStatus s = firstFailure(
          notNull(src, dst, buffer), region(roi), failUnless(mask.width >= 1 && mask.height >= 1, tevStatusBadMaskSize),
          failUnless(anchor.x >= 0 && anchor.x < mask.width && anchor.y >= 0 && anchor.y < mask.height,
                     tevStatusBadAnchor),
          stepOf<T, channels>(srcStep, roi.width), stepOf<T, channels>(dstStep, roi.width)))
    return s;
  const Window across = trimmed({mask.width, anchor.x}, roi.width), down = trimmed({mask.height, anchor.y}, roi.height);

  // A worker for one length wants rows of two windows at least. On small images it is taken for longer windows as well,
  // and widens.
  const bool small = tables.smallRows && std::int64_t{roi.width} * roi.height * 4 < 16385;
  int rowIndex = across.length < 16 ? across.length : small ? 15 : 0;
  if (across.length > roi.width / 2) rowIndex = 0;
  const auto row = (small ? tables.smallRows : tables.rows)[rowIndex];

  const bool fixedColumn = down.length <= roi.height / 2 && (down.length == 1 || down.length == 3 || down.length == 5);
  T** const ring = layRing<T>(buffer, 4 * down.length, fixedColumn ? down.length + 1 : 2 * down.length,
                              lineStride<T>(roi.width, channels));
  tables.columns[fixedColumn ? down.length : 0](src, srcStep, dst, dstStep, roi.width, roi.height, channels,
                                                across.length, down.length, across.anchor, down.anchor, row, ring);
  return tevStatusOk;
}

}  // namespace

TevStatus teviFilterMinGetBufferSize_8u_C1R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev8u, 1>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMinGetBufferSize_8u_C3R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev8u, 3>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMinGetBufferSize_8u_C4R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev8u, 4>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMinGetBufferSize_32f_C1R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev32f, 1>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMinGetBufferSize_32f_C3R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev32f, 3>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMinGetBufferSize_32f_C4R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev32f, 4>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMaxGetBufferSize_8u_C1R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev8u, 1>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMaxGetBufferSize_8u_C3R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev8u, 3>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMaxGetBufferSize_8u_C4R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev8u, 4>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMaxGetBufferSize_32f_C1R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev32f, 1>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMaxGetBufferSize_32f_C3R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev32f, 3>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMaxGetBufferSize_32f_C4R(int roiWidth, int maskWidth, int maskHeight, int* size) {
  return bufferSize<Tev32f, 4>(roiWidth, maskWidth, maskHeight, size);
}

TevStatus teviFilterMinBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<1, Tev8u>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                          {owntablFilterMinRow_8u_C1, nullptr, owntablFilterMinColumn_8u_C1});
}

TevStatus teviFilterMinBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<3, Tev8u>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                          {owntablFilterMinRow_8u_C3, nullptr, owntablFilterMinColumn_8u_C1});
}

TevStatus teviFilterMinBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<4, Tev8u>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                          {owntablFilterMinRow_8u_C4, owntablFilterMinRow_8u_C4_Small, owntablFilterMinColumn_8u_C1});
}

TevStatus teviFilterMinBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<1, Tev32f>(
      src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
      {owntablFilterMinRow_32f_C1, owntablFilterMinRow_32f_C1_Small, owntablFilterMinColumn_32f_C1});
}

TevStatus teviFilterMinBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<3, Tev32f>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                           {owntablFilterMinRow_32f_C3, nullptr, owntablFilterMinColumn_32f_C1});
}

TevStatus teviFilterMinBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<4, Tev32f>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                           {owntablFilterMinRow_32f_C4, nullptr, owntablFilterMinColumn_32f_C1});
}

TevStatus teviFilterMaxBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<1, Tev8u>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                          {owntablFilterMaxRow_8u_C1, nullptr, owntablFilterMaxColumn_8u_C1});
}

TevStatus teviFilterMaxBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<3, Tev8u>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                          {owntablFilterMaxRow_8u_C3, nullptr, owntablFilterMaxColumn_8u_C1});
}

TevStatus teviFilterMaxBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                              TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<4, Tev8u>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                          {owntablFilterMaxRow_8u_C4, owntablFilterMaxRow_8u_C4_Small, owntablFilterMaxColumn_8u_C1});
}

TevStatus teviFilterMaxBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<1, Tev32f>(
      src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
      {owntablFilterMaxRow_32f_C1, owntablFilterMaxRow_32f_C1_Small, owntablFilterMaxColumn_32f_C1});
}

TevStatus teviFilterMaxBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<3, Tev32f>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                           {owntablFilterMaxRow_32f_C3, nullptr, owntablFilterMaxColumn_32f_C1});
}

TevStatus teviFilterMaxBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep,
                                               TevSize roiSize, TevSize maskSize, TevPoint anchor, Tev8u* buffer) {
  return filter<4, Tev32f>(src, srcStep, dst, dstStep, roiSize, maskSize, anchor, buffer,
                           {owntablFilterMaxRow_32f_C4, nullptr, owntablFilterMaxColumn_32f_C1});
}
