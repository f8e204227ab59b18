// Samples along a straight line, by an integer walk of one step a point (after J. E. Bresenham, "Algorithm for computer
// control of a digital plotter", 1965).
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using namespace tevcv;

#if defined(__i386__)
static_assert(sizeof(TevLineIterator) == 24);
#endif

int _tevcvInitLineIterator(const Tev8u* image, int imageStep, int elementBytes, int x1, int y1, int x2, int y2,
                           TevLineIterator* iterator) {
  const int dx = x2 - x1, dy = y2 - y1;
  const int columns = std::abs(dx), lines = std::abs(dy);
  const int xStep = dx < 0 ? -elementBytes : elementBytes, yStep = dy < 0 ? -imageStep : imageStep;
  const bool steep = columns <= lines;
  const int major = steep ? lines : columns, minor = steep ? columns : lines;
  iterator->pointer = rows(image, imageStep)[y1] + std::ptrdiff_t{x1} * elementBytes;
  iterator->error = major;
  iterator->plusDelta = static_cast<int>(2U * static_cast<unsigned>(major));
  iterator->minusDelta = static_cast<int>(2U * static_cast<unsigned>(minor));
  iterator->plusStep = steep ? xStep : yStep;
  iterator->minusStep = steep ? yStep : xStep;
  return major + 1;
}

namespace {

bool inside(TevPoint p, TevSize roi) { return p.x >= 0 && p.y >= 0 && p.x < roi.width && p.y < roi.height; }

template <class T, int channels>
TevStatus sampleLine(const T* src, int srcStep, TevSize roi, T* dst, TevPoint from, TevPoint to) {
  if (TevStatus s =
          firstFailure(notNull(src, dst), region(roi), rowFits<T>(srcStep, roi.width, channels),
                       wholeElements<T>(srcStep), failUnless(inside(from, roi) && inside(to, roi), tevStatusBadPoint)))
    return s;
  constexpr int pixelBytes = channels * int{sizeof(T)};
  TevLineIterator walk;
  const int points = _tevcvInitLineIterator(reinterpret_cast<const Tev8u*>(src), srcStep, pixelBytes, from.x, from.y,
                                            to.x, to.y, &walk);
  if (points < 0) return tevStatusRangeFail;
  // 64 bits hold every error term of a line as long as an int can count.
  std::int64_t error = walk.error;
  const auto plusDelta = std::int64_t{static_cast<std::uint32_t>(walk.plusDelta)};
  const auto minusDelta = std::int64_t{static_cast<std::uint32_t>(walk.minusDelta)};
  for (int i = 0; i < points; ++i) {
    std::memcpy(dst + std::ptrdiff_t{i} * channels, walk.pointer, pixelBytes);
    error -= minusDelta;
    const std::int64_t below = error >> 63;  // all ones where the error is negative; exactly 0 does not step
    error += plusDelta & below;
    walk.pointer += walk.minusStep + (walk.plusStep & below);
  }
  return tevStatusOk;
}

}  // namespace

TevStatus teviSampleLine_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* dst, TevPoint pt1,
                                TevPoint pt2) {
  return sampleLine<Tev8u, 1>(src, srcStep, roiSize, dst, pt1, pt2);
}

TevStatus teviSampleLine_8u_C3R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* dst, TevPoint pt1,
                                TevPoint pt2) {
  return sampleLine<Tev8u, 3>(src, srcStep, roiSize, dst, pt1, pt2);
}

TevStatus teviSampleLine_16u_C1R(const Tev16u* src, int srcStep, TevSize roiSize, Tev16u* dst, TevPoint pt1,
                                 TevPoint pt2) {
  return sampleLine<Tev16u, 1>(src, srcStep, roiSize, dst, pt1, pt2);
}

TevStatus teviSampleLine_16u_C3R(const Tev16u* src, int srcStep, TevSize roiSize, Tev16u* dst, TevPoint pt1,
                                 TevPoint pt2) {
  return sampleLine<Tev16u, 3>(src, srcStep, roiSize, dst, pt1, pt2);
}

TevStatus teviSampleLine_32f_C1R(const Tev32f* src, int srcStep, TevSize roiSize, Tev32f* dst, TevPoint pt1,
                                 TevPoint pt2) {
  return sampleLine<Tev32f, 1>(src, srcStep, roiSize, dst, pt1, pt2);
}

TevStatus teviSampleLine_32f_C3R(const Tev32f* src, int srcStep, TevSize roiSize, Tev32f* dst, TevPoint pt1,
                                 TevPoint pt2) {
  return sampleLine<Tev32f, 3>(src, srcStep, roiSize, dst, pt1, pt2);
}
