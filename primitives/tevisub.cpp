// Subtraction: the first image is the one taken away. Steps are used as they stand.
#include <algorithm>
#include <climits>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/primitives.h"

using namespace tevcv;

namespace {

TevStatus subtract(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* dst, int dstStep,
                   TevSize roi) {
  if (TevStatus s = firstFailure(notNull(src1, src2, dst), region(roi))) return s;
  for (int y = 0; y < roi.height; ++y) {
    const Tev32f *a = wholeElementRows(src1, src1Step)[y], *b = wholeElementRows(src2, src2Step)[y];
    Tev32f* const d = wholeElementRows(dst, dstStep)[y];
#pragma GCC ivdep
    for (int x = 0; x < roi.width; ++x) d[x] = b[x] - a[x];
  }
  return tevStatusOk;
}

// `scale` takes a difference and forms its multiples in 16 bits, where a vector holds twice as many as of ints.
template <class Scale>
void subtractRows(Rows<const Tev8u> src1, Rows<const Tev8u> src2, Rows<Tev8u> dst, TevSize roi, Scale scale) {
  for (int y = 0; y < roi.height; ++y) {
    const Tev8u *a = src1[y], *b = src2[y];
    Tev8u* const d = dst[y];
#pragma GCC ivdep
    for (int x = 0; x < roi.width; ++x) {
      const auto difference = static_cast<Tev8u>(std::max(a[x], b[x]) - a[x]);
      d[x] = static_cast<Tev8u>(scale(difference));
    }
  }
}

TevStatus subtract(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev8u* dst, int dstStep,
                   TevSize roi, int scaleFactor) {
  if (TevStatus s = firstFailure(notNull(src1, src2, dst), region(roi))) return s;
  if (scaleFactor > 8) return teviSet_8u_C1R(0, dst, dstStep, roi);
  const auto a = rows(src1, src1Step), b = rows(src2, src2Step);
  const auto d = rows(dst, dstStep);
  if (scaleFactor == 0)
    subtractRows(a, b, d, roi, [](Tev8u v) { return v; });
  else if (scaleFactor > 0)
    // v * 2^-scaleFactor as v * power / 256, ties to even: a shift by a constant.
    subtractRows(a, b, d, roi, [power = 1 << (8 - scaleFactor)](Tev8u v) {
      const auto multiple = static_cast<Tev16u>(v * power);
      const auto raised = static_cast<Tev16u>(multiple + 127 + ((multiple >> 8) & 1));
      return raised >> 8;
    });
  else if (scaleFactor >= -7)
    subtractRows(a, b, d, roi, [power = 1 << -scaleFactor](Tev8u v) {
      return std::min(static_cast<Tev16u>(v * power), Tev16u{255});
    });
  else
    subtractRows(a, b, d, roi, [](Tev8u v) { return v > 0 ? 255 : 0; });
  return tevStatusOk;
}

// The forms of several channels look at the width alone and leave the rest to the one-channel form. A width whose
// elements no int can count is no size either; that form says so, pointers first.
TevStatus channelWidth(TevSize* roi, int channels) {
  if (roi->width < 1) return tevStatusBadSize;
  roi->width = roi->width > INT_MAX / channels ? 0 : roi->width * channels;
  return tevStatusOk;
}

}  // namespace

TevStatus teviSub_32f_C1R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* dst, int dstStep,
                          TevSize roiSize) {
  return subtract(src1, src1Step, src2, src2Step, dst, dstStep, roiSize);
}

TevStatus teviSub_32f_C3R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* dst, int dstStep,
                          TevSize roiSize) {
  if (TevStatus s = channelWidth(&roiSize, 3)) return s;
  return teviSub_32f_C1R(src1, src1Step, src2, src2Step, dst, dstStep, roiSize);
}

TevStatus teviSub_32f_C4R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, Tev32f* dst, int dstStep,
                          TevSize roiSize) {
  if (TevStatus s = channelWidth(&roiSize, 4)) return s;
  return teviSub_32f_C1R(src1, src1Step, src2, src2Step, dst, dstStep, roiSize);
}

TevStatus teviSub_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  return subtract(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviSub_32f_C3IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  if (TevStatus s = channelWidth(&roiSize, 3)) return s;
  return teviSub_32f_C1IR(src, srcStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviSub_32f_C4IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep, TevSize roiSize) {
  if (TevStatus s = channelWidth(&roiSize, 4)) return s;
  return teviSub_32f_C1IR(src, srcStep, srcDst, srcDstStep, roiSize);
}

TevStatus teviSub_8u_C1RSfs(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev8u* dst, int dstStep,
                            TevSize roiSize, int scaleFactor) {
  return subtract(src1, src1Step, src2, src2Step, dst, dstStep, roiSize, scaleFactor);
}

TevStatus teviSub_8u_C3RSfs(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev8u* dst, int dstStep,
                            TevSize roiSize, int scaleFactor) {
  if (TevStatus s = channelWidth(&roiSize, 3)) return s;
  return teviSub_8u_C1RSfs(src1, src1Step, src2, src2Step, dst, dstStep, roiSize, scaleFactor);
}

TevStatus teviSub_8u_C4RSfs(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, Tev8u* dst, int dstStep,
                            TevSize roiSize, int scaleFactor) {
  if (TevStatus s = channelWidth(&roiSize, 4)) return s;
  return teviSub_8u_C1RSfs(src1, src1Step, src2, src2Step, dst, dstStep, roiSize, scaleFactor);
}

TevStatus teviSub_8u_C1IRSfs(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep, TevSize roiSize,
                             int scaleFactor) {
  return subtract(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, roiSize, scaleFactor);
}

TevStatus teviSub_8u_C3IRSfs(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep, TevSize roiSize,
                             int scaleFactor) {
  if (TevStatus s = channelWidth(&roiSize, 3)) return s;
  return teviSub_8u_C1IRSfs(src, srcStep, srcDst, srcDstStep, roiSize, scaleFactor);
}

TevStatus teviSub_8u_C4IRSfs(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep, TevSize roiSize,
                             int scaleFactor) {
  if (TevStatus s = channelWidth(&roiSize, 4)) return s;
  return teviSub_8u_C1IRSfs(src, srcStep, srcDst, srcDstStep, roiSize, scaleFactor);
}
