// Gaussian pyramid steps of rate 2 on 8-bit images: down by the kernel 1 4 6 4 1, up by its even and odd phases 1 6 1
// and 4 4. All sums of either sign fit in 16 bits, which is what the vector units are fastest at.
#include "gauss5x5.h"
#include "frame/arithmetic.h"
#include "tevcv_internal/pyramids.h"

using namespace tevcv;
using namespace tevcv::gauss5x5;

namespace {

// A sum as it stands in the ring. Sums are formed modulo 2^16, which none of them reaches, and read with T's sign.
template <class T>
using Sum = std::conditional_t<std::is_signed_v<T>, Tev16s, Tev16u>;

template <class T>
Sum<T> sum16(int value) {
  return static_cast<Sum<T>>(static_cast<Tev16u>(value));
}

// Rounded with ties upward; the shift is arithmetic.
template <class T>
T reduced(int sum) {
  return static_cast<T>((sum + 128) >> 8);
}
template <class T>
T expanded(int sum) {
  return static_cast<T>((sum + 32) >> 6);
}

// ---- Down -----------------------------------------------------------------------------------------------------------

// Horizontal sums around every other pixel of a row of at least three.
template <class T, int channels>
void reduceRow(const T* s, int width, Sum<T>* r) {
  const int last = halved(width) - 1;
  for (int c = 0; c < channels; ++c) {
    const T* const p = s + c;
    r[c] = sum16<T>(6 * p[0] + 8 * p[channels] + 2 * p[2 * channels]);
    const T* const q = p + 2 * last * channels;
    r[last * channels + c] = width % 2 == 1 ? sum16<T>(6 * q[0] + 8 * q[-channels] + 2 * q[-2 * channels])
                                            : sum16<T>(q[-2 * channels] + 4 * (q[-channels] + q[channels]) + 7 * q[0]);
  }
  T even[(blockPixels + 2) * channels + 1], odd[(blockPixels + 1) * channels + 1];
  for (int x = 1; x < last; x += blockPixels) {
    const int n = std::min(blockPixels, last - x);
    splitPixels<channels>(s + 2 * (x - 1) * channels, n + 1, even, odd);
    Sum<T>* const d = r + x * channels;
    for (int i = 0; i < n * channels; ++i)
      d[i] = sum16<T>(even[i] + 4 * odd[i] + 6 * even[i + channels] + 4 * odd[i + channels] + even[i + 2 * channels]);
  }
}

template <class T>
void reduceColumns(const Sum<T>* a, const Sum<T>* b, const Sum<T>* c, const Sum<T>* d, const Sum<T>* e, T* dst, int n) {
#pragma GCC ivdep
  for (int i = 0; i < n; ++i) {
    const Sum<T> sum = sum16<T>(a[i] + 4 * b[i] + 6 * c[i] + 4 * d[i] + e[i] + 128);
    dst[i] = static_cast<T>(sum >> 8);
  }
}

template <class T, int channels>
void reduceImage(Rows<const T> src, Rows<T> dst, TevSize roi, Tev8u* buffer) {
  const int n = halved(roi.width) * channels;
  const Ring<Sum<T>> ring(buffer, halved(roi.width), channels);
  reduceRows(
      roi.height, [&](int y, int slot) { reduceRow<T, channels>(src[y], roi.width, ring[slot]); },
      [&](int y, int a, int b, int c, int d, int e) {
        reduceColumns<T>(ring[a], ring[b], ring[c], ring[d], ring[e], dst[y], n);
      });
}

void reduceLow(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roi, int channels) {
  ownPyrDownG5x5_H2_8u(src, srcStep, dst, dstStep, roi, channels);
}
void reduceLow(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize roi, int channels) {
  ownPyrDownG5x5_H2_8s(src, srcStep, dst, dstStep, roi, channels);
}
void reduceNarrow(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roi, int channels) {
  ownPyrDownG5x5_W2_8u(src, srcStep, dst, dstStep, roi, channels);
}
void reduceNarrow(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize roi, int channels) {
  ownPyrDownG5x5_W2_8s(src, srcStep, dst, dstStep, roi, channels);
}

template <int channels, class T>
TevStatus pyrDown(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, Tev8u* buffer) {
  if (TevStatus s = checkDown(src, srcStep, dst, dstStep, roi, buffer, channels)) return s;
  if (roi.height < 3)
    reduceLow(src, srcStep, dst, dstStep, roi, channels);
  else if (roi.width < 3)
    reduceNarrow(src, srcStep, dst, dstStep, roi, channels);
  else
    reduceImage<T, channels>(rows(src, srcStep), rows(dst, dstStep), roi, buffer);
  return tevStatusOk;
}

// ---- Up -------------------------------------------------------------------------------------------------------------

// The even and odd samples of a row of at least two pixels, pixel by pixel in turn. The pixel left of the first is the
// second, the pixel right of the last is the last itself.
template <class T, int channels>
void expandRow(const T* s, int width, Sum<T>* r) {
  const int end = (width - 1) * channels;
  Sum<T> even[blockPixels * channels + 1], odd[blockPixels * channels + 1];
  for (int x = 1; x < width - 1; x += blockPixels) {
    const int n = std::min(blockPixels, width - 1 - x);
    const T* const p = s + x * channels;
    for (int i = 0; i < n * channels; ++i) {
      even[i] = sum16<T>(p[i - channels] + 6 * p[i] + p[i + channels]);
      odd[i] = sum16<T>(4 * (p[i] + p[i + channels]));
    }
    Sum<T>* const d = r + 2 * x * channels;
    if constexpr (channels == 1) {
      for (int i = 0; i < n; ++i) {
        d[2 * i] = even[i];
        d[2 * i + 1] = odd[i];
      }
    } else {
      // Four sums at a time; the fourth is overwritten by the next pixel, the last one by the end of the row.
      static_assert(channels == 3);
      for (int i = 0; i < n; ++i) {
        std::memcpy(d + 6 * i, even + 3 * i, 8);
        std::memcpy(d + 6 * i + 3, odd + 3 * i, 8);
      }
    }
  }
  for (int c = 0; c < channels; ++c) {
    r[c] = sum16<T>(6 * s[c] + 2 * s[channels + c]);
    r[channels + c] = sum16<T>(4 * (s[c] + s[channels + c]));
    r[2 * end + c] = sum16<T>(7 * s[end + c] + s[end - channels + c]);
    r[2 * end + channels + c] = sum16<T>(8 * s[end + c]);
  }
}

template <class T>
void expandColumns(const Sum<T>* above, const Sum<T>* at, const Sum<T>* below, T* even, T* odd, int n) {
#pragma GCC ivdep
  for (int i = 0; i < n; ++i) {
    const Sum<T> sum = sum16<T>(above[i] + 6 * at[i] + below[i] + 32);
    even[i] = static_cast<T>(sum >> 6);
  }
#pragma GCC ivdep
  for (int i = 0; i < n; ++i) {
    const Sum<T> sum = sum16<T>(4 * (at[i] + below[i]) + 32);
    odd[i] = static_cast<T>(sum >> 6);
  }
}

template <class T, int channels>
void expandImage(Rows<const T> src, Rows<T> dst, TevSize roi, Tev8u* buffer) {
  const int n = 2 * roi.width * channels;
  const Ring<Sum<T>> ring(buffer, 2 * roi.width, channels);
  expandRows(
      roi.height, [&](int y, int slot) { expandRow<T, channels>(src[y], roi.width, ring[slot]); },
      [&](int above, int at, int below, int y) {
        expandColumns<T>(ring[above], ring[at], ring[below], dst[2 * std::ptrdiff_t{y}], dst[2 * std::ptrdiff_t{y} + 1],
                         n);
      });
}

// One row: both output rows are the same.
template <class T>
void expandLowImage(const T* s, Rows<T> dst, int width, int channels) {
  for (int x = 0; x < width; ++x)
    for (int c = 0; c < channels; ++c) {
      const int left = s[(x > 0 ? x - 1 : std::min(1, width - 1)) * channels + c];
      const int at = s[x * channels + c], right = s[std::min(x + 1, width - 1) * channels + c];
      for (int y = 0; y < 2; ++y) {
        T* const d = dst[y] + 2 * x * channels + c;
        d[0] = expanded<T>((left + 6 * at + right) * 8);
        d[channels] = expanded<T>((at + right) * 32);
      }
    }
}

// One column: both output columns are the same.
template <class T>
void expandNarrowImage(Rows<const T> src, Rows<T> dst, int height, int channels) {
  for (int y = 0; y < height; ++y)
    for (int c = 0; c < channels; ++c) {
      const int above = src[y > 0 ? y - 1 : std::min(1, height - 1)][c], at = src[y][c];
      const int below = src[std::min(y + 1, height - 1)][c];
      T *const even = dst[2 * std::ptrdiff_t{y}] + c, *const odd = dst[2 * std::ptrdiff_t{y} + 1] + c;
      even[0] = even[channels] = expanded<T>((above + 6 * at + below) * 8);
      odd[0] = odd[channels] = expanded<T>((at + below) * 32);
    }
}

void expandLow(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roi, int channels) {
  ownPyrUpG5x5_H1_8u(src, srcStep, dst, dstStep, roi, channels);
}
void expandLow(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize roi, int channels) {
  ownPyrUpG5x5_H1_8s(src, srcStep, dst, dstStep, roi, channels);
}
void expandNarrow(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roi, int channels) {
  ownPyrUpG5x5_W1_8u(src, srcStep, dst, dstStep, roi, channels);
}
void expandNarrow(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize roi, int channels) {
  ownPyrUpG5x5_W1_8s(src, srcStep, dst, dstStep, roi, channels);
}

template <int channels, class T>
TevStatus pyrUp(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, Tev8u* buffer) {
  if (TevStatus s = checkUp(src, srcStep, dst, dstStep, roi, buffer, channels)) return s;
  if (roi.height == 1)
    expandLow(src, srcStep, dst, dstStep, roi, channels);
  else if (roi.width == 1)
    expandNarrow(src, srcStep, dst, dstStep, roi, channels);
  else
    expandImage<T, channels>(rows(src, srcStep), rows(dst, dstStep), roi, buffer);
  return tevStatusOk;
}

TevStatus checkBufSize(int roiWidth, TevDataType dataType, int channels, const int* pBufferSize) {
  return firstFailure(notNull(pBufferSize), length(roiWidth),
                      failUnless(channels == 1 || channels == 3, tevStatusBadChannels),
                      failUnless(dataType == tevDataType8u || dataType == tevDataType8s || dataType == tevDataType32f,
                                 tevStatusBadKernel));
}

}  // namespace

TevStatus teviPyrDownGetBufSize_Gauss5x5(int roiWidth, TevDataType dataType, int channels, int* pBufferSize) {
  if (TevStatus s = checkBufSize(roiWidth, dataType, channels, pBufferSize)) return s;
  *pBufferSize = saturate<Tev32s>(ringStride(roiWidth, channels) * downRingRows + 32);
  return tevStatusOk;
}

TevStatus teviPyrUpGetBufSize_Gauss5x5(int roiWidth, TevDataType dataType, int channels, int* pBufferSize) {
  if (TevStatus s = checkBufSize(roiWidth, dataType, channels, pBufferSize)) return s;
  *pBufferSize = saturate<Tev32s>(ringStride(roiWidth, 2 * channels) * upRingRows + 32);
  return tevStatusOk;
}

void ownPyrDownG5x5_H2_8u(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi, int channels) {
  reduceLowImage<int>(rows(src, srcStep), rows(dst, dstStep), srcRoi, channels, reduced<Tev8u>);
}

void ownPyrDownG5x5_H2_8s(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi, int channels) {
  reduceLowImage<int>(rows(src, srcStep), rows(dst, dstStep), srcRoi, channels, reduced<Tev8s>);
}

void ownPyrDownG5x5_W2_8u(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi, int channels) {
  reduceNarrowImage<int>(rows(src, srcStep), rows(dst, dstStep), srcRoi, channels, reduced<Tev8u>);
}

void ownPyrDownG5x5_W2_8s(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi, int channels) {
  reduceNarrowImage<int>(rows(src, srcStep), rows(dst, dstStep), srcRoi, channels, reduced<Tev8s>);
}

void ownPyrUpG5x5_H1_8u(const Tev8u* src, int, Tev8u* dst, int dstStep, TevSize srcRoi, int channels) {
  expandLowImage(src, rows(dst, dstStep), srcRoi.width, channels);
}

void ownPyrUpG5x5_H1_8s(const Tev8s* src, int, Tev8s* dst, int dstStep, TevSize srcRoi, int channels) {
  expandLowImage(src, rows(dst, dstStep), srcRoi.width, channels);
}

void ownPyrUpG5x5_W1_8u(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi, int channels) {
  expandNarrowImage(rows(src, srcStep), rows(dst, dstStep), srcRoi.height, channels);
}

void ownPyrUpG5x5_W1_8s(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi, int channels) {
  expandNarrowImage(rows(src, srcStep), rows(dst, dstStep), srcRoi.height, channels);
}

TevStatus teviPyrDown_Gauss5x5_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                      Tev8u* buffer) {
  return pyrDown<1>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrDown_Gauss5x5_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                      Tev8u* buffer) {
  return pyrDown<3>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrDown_Gauss5x5_8s_C1R(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                      Tev8u* buffer) {
  return pyrDown<1>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrDown_Gauss5x5_8s_C3R(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                      Tev8u* buffer) {
  return pyrDown<3>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrUp_Gauss5x5_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                    Tev8u* buffer) {
  return pyrUp<1>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrUp_Gauss5x5_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize srcRoi,
                                    Tev8u* buffer) {
  return pyrUp<3>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrUp_Gauss5x5_8s_C1R(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                    Tev8u* buffer) {
  return pyrUp<1>(src, srcStep, dst, dstStep, srcRoi, buffer);
}

TevStatus teviPyrUp_Gauss5x5_8s_C3R(const Tev8s* src, int srcStep, Tev8s* dst, int dstStep, TevSize srcRoi,
                                    Tev8u* buffer) {
  return pyrUp<3>(src, srcStep, dst, dstStep, srcRoi, buffer);
}
