// Border copies: an image framed by its nearest pixels, or by a value.
#include <cstdint>
#include <cstring>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/primitives.h"

using namespace tevcv;

namespace {

// Where the image stands in its frame, in pixels.
struct Frame {
  TevSize image;
  TevSize whole;
  int top;
  int left;

  int right() const { return whole.width - left - image.width; }
  int bottom() const { return whole.height - top - image.height; }
};

TevStatus frameFits(const Frame& f) {
  const bool sizes = f.image.width >= 1 && f.image.height >= 1 && f.whole.width >= 1 && f.whole.height >= 1;
  const bool fits = f.top >= 0 && f.left >= 0 && f.whole.width >= std::int64_t{f.left} + f.image.width &&
                    f.whole.height >= std::int64_t{f.top} + f.image.height;
  return failUnless(sizes && fits, tevStatusBadSize);
}

template <class Pixel>
void fillPixels(Pixel* p, int count, Pixel pixel) {
  for (int i = 0; i < count; ++i) p[i] = pixel;
}

void fillPixels(Tev8u* p, int count, Tev8u pixel) { std::memset(p, pixel, static_cast<size_t>(count)); }

// `row` is a row of the frame whose image part stands already.
template <class Pixel>
void fillMargins(Pixel* row, const Frame& f) {
  Pixel* const image = row + f.left;
  fillPixels(row, f.left, image[0]);
  fillPixels(image + f.image.width, f.right(), image[f.image.width - 1]);
}

// Copies frame row `from` to `count` rows from `to` on.
template <class Pixel>
void repeatRow(Rows<Pixel> frame, const Frame& f, int from, int to, int count) {
  for (int y = to; y < to + count; ++y)
    std::memmove(frame[y], frame[from], static_cast<size_t>(f.whole.width) * sizeof(Pixel));
}

template <class T, int channels>
struct Pixel {
  T element[channels];
};
template <class T, int channels>
using PixelOf = std::conditional_t<channels == 1, T, Pixel<T, channels>>;

// Rows of pixels that advance by the step's whole elements, not pixels.
template <class P, class T>
Rows<P> pixelRows(T* first, int step) {
  return {reinterpret_cast<P*>(first), wholeElementRows(first, step).step()};
}

template <class T, int channels>
TevStatus copyReplicateBorder(const T* src, int srcStep, TevSize srcRoi, T* dst, int dstStep, TevSize dstRoi, int top,
                              int left) {
  using P = PixelOf<T, channels>;
  const Frame f = {srcRoi, dstRoi, top, left};
  if (TevStatus s = firstFailure(notNull(src, dst), positiveStep(srcStep), positiveStep(dstStep), frameFits(f)))
    return s;
  const auto image = pixelRows<const P>(src, srcStep);
  const auto frame = pixelRows<P>(dst, dstStep);
  for (int y = 0; y < srcRoi.height; ++y) {
    std::memmove(frame[top + y] + left, image[y], static_cast<size_t>(srcRoi.width) * sizeof(P));
    fillMargins(frame[top + y], f);
  }
  repeatRow(frame, f, top + srcRoi.height - 1, top + srcRoi.height, f.bottom());
  repeatRow(frame, f, top, 0, top);
  return tevStatusOk;
}

template <class T, int channels>
TevStatus replicateBorderInPlace(T* srcDst, int step, TevSize srcRoi, TevSize dstRoi, int top, int left) {
  using P = PixelOf<T, channels>;
  const Frame f = {srcRoi, dstRoi, top, left};
  if (TevStatus s = firstFailure(notNull(srcDst), positiveStep(step), frameFits(f))) return s;
  const Rows<P> interior = pixelRows<P>(srcDst, step), frame = {interior[-std::ptrdiff_t{top}] - left, interior.step()};
  // The order is part of the contract where steps let rows overlap: first row, rows above, other rows, rows below.
  fillMargins(frame[top], f);
  repeatRow(frame, f, top, 0, top);
  for (int y = 1; y < srcRoi.height; ++y) fillMargins(frame[top + y], f);
  repeatRow(frame, f, top + srcRoi.height - 1, top + srcRoi.height, f.bottom());
  return tevStatusOk;
}

}  // namespace

TevStatus teviCopyReplicateBorder_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst, int dstStep,
                                         TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth) {
  return copyReplicateBorder<Tev8u, 1>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, topBorderHeight,
                                       leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_8u_C1IR(Tev8u* srcDst, int srcDstStep, TevSize srcRoiSize, TevSize dstRoiSize,
                                          int topBorderHeight, int leftBorderWidth) {
  return replicateBorderInPlace<Tev8u, 1>(srcDst, srcDstStep, srcRoiSize, dstRoiSize, topBorderHeight, leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_8u_C3R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst, int dstStep,
                                         TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth) {
  return copyReplicateBorder<Tev8u, 3>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, topBorderHeight,
                                       leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_8u_C3IR(Tev8u* srcDst, int srcDstStep, TevSize srcRoiSize, TevSize dstRoiSize,
                                          int topBorderHeight, int leftBorderWidth) {
  return replicateBorderInPlace<Tev8u, 3>(srcDst, srcDstStep, srcRoiSize, dstRoiSize, topBorderHeight, leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_8u_C4R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst, int dstStep,
                                         TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth) {
  return copyReplicateBorder<Tev8u, 4>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, topBorderHeight,
                                       leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_8u_C4IR(Tev8u* srcDst, int srcDstStep, TevSize srcRoiSize, TevSize dstRoiSize,
                                          int topBorderHeight, int leftBorderWidth) {
  return replicateBorderInPlace<Tev8u, 4>(srcDst, srcDstStep, srcRoiSize, dstRoiSize, topBorderHeight, leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_32s_C1R(const Tev32s* src, int srcStep, TevSize srcRoiSize, Tev32s* dst, int dstStep,
                                          TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth) {
  return copyReplicateBorder<Tev32s, 1>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, topBorderHeight,
                                        leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_32s_C1IR(Tev32s* srcDst, int srcDstStep, TevSize srcRoiSize, TevSize dstRoiSize,
                                           int topBorderHeight, int leftBorderWidth) {
  return replicateBorderInPlace<Tev32s, 1>(srcDst, srcDstStep, srcRoiSize, dstRoiSize, topBorderHeight,
                                           leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_32s_C3R(const Tev32s* src, int srcStep, TevSize srcRoiSize, Tev32s* dst, int dstStep,
                                          TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth) {
  return copyReplicateBorder<Tev32s, 3>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, topBorderHeight,
                                        leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_32s_C3IR(Tev32s* srcDst, int srcDstStep, TevSize srcRoiSize, TevSize dstRoiSize,
                                           int topBorderHeight, int leftBorderWidth) {
  return replicateBorderInPlace<Tev32s, 3>(srcDst, srcDstStep, srcRoiSize, dstRoiSize, topBorderHeight,
                                           leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_32s_C4R(const Tev32s* src, int srcStep, TevSize srcRoiSize, Tev32s* dst, int dstStep,
                                          TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth) {
  return copyReplicateBorder<Tev32s, 4>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, topBorderHeight,
                                        leftBorderWidth);
}

TevStatus teviCopyReplicateBorder_32s_C4IR(Tev32s* srcDst, int srcDstStep, TevSize srcRoiSize, TevSize dstRoiSize,
                                           int topBorderHeight, int leftBorderWidth) {
  return replicateBorderInPlace<Tev32s, 4>(srcDst, srcDstStep, srcRoiSize, dstRoiSize, topBorderHeight,
                                           leftBorderWidth);
}

TevStatus teviCopyConstBorder_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst, int dstStep,
                                     TevSize dstRoiSize, int topBorderHeight, int leftBorderWidth, Tev8u value) {
  const Frame f = {srcRoiSize, dstRoiSize, topBorderHeight, leftBorderWidth};
  if (TevStatus s = firstFailure(notNull(src, dst), positiveStep(srcStep), positiveStep(dstStep), frameFits(f)))
    return s;
  for (int y = 0; y < dstRoiSize.height; ++y) {
    Tev8u* const row = rows(dst, dstStep)[y];
    if (y < f.top || y >= f.top + srcRoiSize.height) {
      fillPixels(row, dstRoiSize.width, value);
      continue;
    }
    fillPixels(row, f.left, value);
    std::memmove(row + f.left, rows(src, srcStep)[y - f.top], static_cast<size_t>(srcRoiSize.width));
    fillPixels(row + f.left + srcRoiSize.width, f.right(), value);
  }
  return tevStatusOk;
}
