// Sliding extrema along a row: dst[x] is the extremum of src over the window [x - offset, x - offset + length), as far
// as that lies in the row. The 144 workers share one plan:
//
//   1. The window is capped at what the worker is built for; 64 for the workers that take any.
//   2. Shifted loads give the extrema of windows of up to 4. Longer ones grow from those of 4: the extrema of w
//      neighbours, taken at up to four places, give those of up to 4 * w, so that 64 takes three passes over a block
//      that stays in the cache. Van Herk's method needs fewer comparisons but takes them one after the other; growing
//      takes a whole vector of them at once.
//   3. If the window was capped, dst is widened in place by doubling: a window of any length costs a logarithmic number
//      of passes. (M. van Herk, "A fast algorithm for local minimum and maximum filters on rectangular and octagonal
//      kernels", 1992; for the growing J. Pecht, "Speeding-up successive Minkowski operations with bit-plane
//      computers", 1985.)
//
// Extrema are idempotent: windows may overlap, and all that matters is their union. For the same reason the edge pixel
// may stand outside the row, since a window that overruns an end of the row holds that pixel anyway.
#include <algorithm>
#include <cstring>

#include "morphology/extremum.h"
#include "tevcv_internal/morphology.h"

using namespace tevcv;

namespace {

constexpr int longestWindow = 64;

template <int channels, class T>
void fillPixels(const T* pixel, T* dst, int count) {
  for (int x = 0; x < count; ++x)
    for (int c = 0; c < channels; ++c) dst[x * channels + c] = pixel[c];
}

// dst[i] = the extremum of src[i], src[i + channels], ..., `length` of them.
template <class Best, int channels, int length, class T>
void foldShiftedLoads(const T* src, T* dst, int len) {
#pragma GCC ivdep
  for (int i = 0; i < len; ++i) {
    T best = src[i];
#pragma GCC unroll 4
    for (int k = 1; k < length; ++k) best = Best::of(best, src[i + k * channels]);
    dst[i] = best;
  }
}

// The extrema over the `length` pixels from x on, for `count` positions x from `first` on; the edge pixels stand
// outside the row. Positions near an end of the row are few: they take their pixels one by one.
template <class Best, int channels, int length, class T>
void shortWindows(const T* src, int width, int first, T* dst, int count) {
  const auto until = [=](int x, int from) { return std::clamp(x - first, from, count); };
  const int before = until(2 - length, 0), headEnd = until(0, before), wholeEnd = until(width - length + 1, headEnd),
            tailEnd = until(width - 1, wholeEnd);
  const auto clamped = [=](int begin, int end) {
    for (int i = begin; i < end; ++i)
      for (int c = 0; c < channels; ++c) {
        const auto at = [=](int k) { return src[std::clamp(first + i + k, 0, width - 1) * channels + c]; };
        T best = at(0);
        for (int k = 1; k < length; ++k) best = Best::of(best, at(k));
        dst[i * channels + c] = best;
      }
  };
  fillPixels<channels>(src, dst, before);
  clamped(before, headEnd);
  foldShiftedLoads<Best, channels, length>(src + (first + headEnd) * channels, dst + headEnd * channels,
                                           (wholeEnd - headEnd) * channels);
  clamped(wholeEnd, tailEnd);
  fillPixels<channels>(src + (width - 1) * channels, dst + tailEnd * channels, count - tailEnd);
}

// Windows of 5 to longestWindow pixels.
template <class Best, int channels, class T>
void longWindows(const T* src, T* dst, int width, int length, int offset) {
  constexpr int shortest = 4, blockWidth = 4096 / (sizeof(T) * channels);
  T stack[(blockWidth + longestWindow - shortest) * channels];
  for (int begin = 0; begin < width; begin += blockWidth) {
    const int outputs = std::min(blockWidth, width - begin);
    shortWindows<Best, channels, shortest>(src, width, begin - offset, stack, outputs + length - shortest);
    for (int reach = shortest; reach < length;) {
      const int grown = std::min(4 * reach, length), count = (outputs + length - grown) * channels;
      const auto place = [&](int k) { return stack + std::min(k * reach, grown - reach) * channels; };
      const T *const a = place(1), *const b = place(2), *const c = place(3);
      T* const to = grown == length ? dst + begin * channels : stack;
      // In place too: what is read lies ahead of what is written.
      if (grown <= 2 * reach) {
#pragma GCC ivdep
        for (int i = 0; i < count; ++i) to[i] = Best::of(stack[i], a[i]);
      } else {
#pragma GCC ivdep
        for (int i = 0; i < count; ++i) to[i] = Best::of(Best::of(stack[i], a[i]), Best::of(b[i], c[i]));
      }
      reach = grown;
    }
  }
}

// dst holds the extrema of windows [x - min(offset, reach - 1), ...) of `reach` elements; makes them those of the
// window asked for.
template <class Best, int channels, class T>
void widen(T* dst, int width, int reach, int length, int offset) {
  const int len = width * channels;
  for (int step; offset >= reach; reach += step) {
    step = std::min(offset - reach + 1, reach);
    // From the right, so that what is read is still the old row: block by block, the block's sources first.
    constexpr int blockLength = 1024 / sizeof(T);
    const int shift = std::min(step, width) * channels;
    for (int end = len; end > shift;) {
      const int begin = std::max(end - blockLength, shift), count = end - begin;
      T block[blockLength];
      std::memcpy(block, dst + begin - shift, static_cast<size_t>(count) * sizeof(T));
      Best::ofEach(block, dst + begin, dst + begin, count);
      end = begin;
    }
    T edge[channels];
    std::copy_n(dst, channels, edge);
    for (int i = channels; i < shift; i += channels)
      for (int c = 0; c < channels; ++c) dst[i + c] = Best::of(edge[c], dst[i + c]);
  }
  for (int step; length > reach; reach += step) {
    step = std::min(length - reach, reach);
    const int shift = std::min(step, width) * channels;
    Best::ofEach(dst, dst + shift, dst, len - shift);
    T edge[channels];
    std::copy_n(dst + len - channels, channels, edge);
    for (int i = len - shift; i < len - channels; i += channels)
      for (int c = 0; c < channels; ++c) dst[i + c] = Best::of(dst[i + c], edge[c]);
  }
}

// `builtFor` is the longest window that the worker takes in one go.
template <class Best, int channels, class T>
void slide(const T* src, T* dst, int width, int length, int offset, int builtFor) {
  const int reach = std::min(length, builtFor), anchor = std::min(offset, reach - 1);
  switch (reach) {
    case 1:
      std::memcpy(dst, src, static_cast<size_t>(width) * channels * sizeof(T));
      break;
    case 2:
      shortWindows<Best, channels, 2>(src, width, -anchor, dst, width);
      break;
    case 3:
      shortWindows<Best, channels, 3>(src, width, -anchor, dst, width);
      break;
    case 4:
      shortWindows<Best, channels, 4>(src, width, -anchor, dst, width);
      break;
    default:
      longWindows<Best, channels>(src, dst, width, reach, anchor);
  }
  widen<Best, channels>(dst, width, reach, length, offset);
}

}  // namespace

#define ROW_WORKER(name, Best, T, channels, builtFor)                  \
  void name(const T* src, T* dst, int width, int length, int offset) { \
    slide<Best, channels>(src, dst, width, length, offset, builtFor);  \
  }

ROW_WORKER(ownFilterMinRow01_8u_C1R, Least, Tev8u, 1, 1)
ROW_WORKER(ownFilterMinRow02_8u_C1R, Least, Tev8u, 1, 2)
ROW_WORKER(ownFilterMinRow03_8u_C1R, Least, Tev8u, 1, 3)
ROW_WORKER(ownFilterMinRow04_8u_C1R, Least, Tev8u, 1, 4)
ROW_WORKER(ownFilterMinRow05_8u_C1R, Least, Tev8u, 1, 5)
ROW_WORKER(ownFilterMinRow06_8u_C1R, Least, Tev8u, 1, 6)
ROW_WORKER(ownFilterMinRow07_8u_C1R, Least, Tev8u, 1, 7)
ROW_WORKER(ownFilterMinRow09_8u_C1R, Least, Tev8u, 1, 9)
ROW_WORKER(ownFilterMinRow11_8u_C1R, Least, Tev8u, 1, 11)
ROW_WORKER(ownFilterMinRow13_8u_C1R, Least, Tev8u, 1, 13)
ROW_WORKER(ownFilterMinRow15_8u_C1R, Least, Tev8u, 1, 15)
ROW_WORKER(ownFilterMinRowVH_8u_C1R, Least, Tev8u, 1, longestWindow)

ROW_WORKER(ownFilterMinRow01_8u_C3R, Least, Tev8u, 3, 1)
ROW_WORKER(ownFilterMinRow02_8u_C3R, Least, Tev8u, 3, 2)
ROW_WORKER(ownFilterMinRow03_8u_C3R, Least, Tev8u, 3, 3)
ROW_WORKER(ownFilterMinRow04_8u_C3R, Least, Tev8u, 3, 4)
ROW_WORKER(ownFilterMinRow05_8u_C3R, Least, Tev8u, 3, 5)
ROW_WORKER(ownFilterMinRow06_8u_C3R, Least, Tev8u, 3, 6)
ROW_WORKER(ownFilterMinRow07_8u_C3R, Least, Tev8u, 3, 7)
ROW_WORKER(ownFilterMinRow09_8u_C3R, Least, Tev8u, 3, 9)
ROW_WORKER(ownFilterMinRow11_8u_C3R, Least, Tev8u, 3, 11)
ROW_WORKER(ownFilterMinRow13_8u_C3R, Least, Tev8u, 3, 13)
ROW_WORKER(ownFilterMinRow15_8u_C3R, Least, Tev8u, 3, 15)
ROW_WORKER(ownFilterMinRowVH_8u_C3R, Least, Tev8u, 3, longestWindow)

ROW_WORKER(ownFilterMinRow01_8u_C4R, Least, Tev8u, 4, 1)
ROW_WORKER(ownFilterMinRow02_8u_C4R, Least, Tev8u, 4, 2)
ROW_WORKER(ownFilterMinRow03_8u_C4R, Least, Tev8u, 4, 3)
ROW_WORKER(ownFilterMinRow04_8u_C4R, Least, Tev8u, 4, 4)
ROW_WORKER(ownFilterMinRow05_8u_C4R, Least, Tev8u, 4, 5)
ROW_WORKER(ownFilterMinRow06_8u_C4R, Least, Tev8u, 4, 6)
ROW_WORKER(ownFilterMinRow07_8u_C4R, Least, Tev8u, 4, 7)
ROW_WORKER(ownFilterMinRow09_8u_C4R, Least, Tev8u, 4, 9)
ROW_WORKER(ownFilterMinRow11_8u_C4R, Least, Tev8u, 4, 11)
ROW_WORKER(ownFilterMinRow13_8u_C4R, Least, Tev8u, 4, 13)
ROW_WORKER(ownFilterMinRow15_8u_C4R, Least, Tev8u, 4, 15)
ROW_WORKER(ownFilterMinRowVH_8u_C4R, Least, Tev8u, 4, longestWindow)

ROW_WORKER(ownFilterMinRow01_32f_C1R, Least, Tev32f, 1, 1)
ROW_WORKER(ownFilterMinRow02_32f_C1R, Least, Tev32f, 1, 2)
ROW_WORKER(ownFilterMinRow03_32f_C1R, Least, Tev32f, 1, 3)
ROW_WORKER(ownFilterMinRow04_32f_C1R, Least, Tev32f, 1, 4)
ROW_WORKER(ownFilterMinRow05_32f_C1R, Least, Tev32f, 1, 5)
ROW_WORKER(ownFilterMinRow06_32f_C1R, Least, Tev32f, 1, 6)
ROW_WORKER(ownFilterMinRow07_32f_C1R, Least, Tev32f, 1, 7)
ROW_WORKER(ownFilterMinRow09_32f_C1R, Least, Tev32f, 1, 9)
ROW_WORKER(ownFilterMinRow11_32f_C1R, Least, Tev32f, 1, 11)
ROW_WORKER(ownFilterMinRow13_32f_C1R, Least, Tev32f, 1, 13)
ROW_WORKER(ownFilterMinRow15_32f_C1R, Least, Tev32f, 1, 15)
ROW_WORKER(ownFilterMinRowVH_32f_C1R, Least, Tev32f, 1, longestWindow)

ROW_WORKER(ownFilterMinRow01_32f_C3R, Least, Tev32f, 3, 1)
ROW_WORKER(ownFilterMinRow02_32f_C3R, Least, Tev32f, 3, 2)
ROW_WORKER(ownFilterMinRow03_32f_C3R, Least, Tev32f, 3, 3)
ROW_WORKER(ownFilterMinRow04_32f_C3R, Least, Tev32f, 3, 4)
ROW_WORKER(ownFilterMinRow05_32f_C3R, Least, Tev32f, 3, 5)
ROW_WORKER(ownFilterMinRow06_32f_C3R, Least, Tev32f, 3, 6)
ROW_WORKER(ownFilterMinRow07_32f_C3R, Least, Tev32f, 3, 7)
ROW_WORKER(ownFilterMinRow09_32f_C3R, Least, Tev32f, 3, 9)
ROW_WORKER(ownFilterMinRow11_32f_C3R, Least, Tev32f, 3, 11)
ROW_WORKER(ownFilterMinRow13_32f_C3R, Least, Tev32f, 3, 13)
ROW_WORKER(ownFilterMinRow15_32f_C3R, Least, Tev32f, 3, 15)
ROW_WORKER(ownFilterMinRowVH_32f_C3R, Least, Tev32f, 3, longestWindow)

ROW_WORKER(ownFilterMinRow01_32f_C4R, Least, Tev32f, 4, 1)
ROW_WORKER(ownFilterMinRow02_32f_C4R, Least, Tev32f, 4, 2)
ROW_WORKER(ownFilterMinRow03_32f_C4R, Least, Tev32f, 4, 3)
ROW_WORKER(ownFilterMinRow04_32f_C4R, Least, Tev32f, 4, 4)
ROW_WORKER(ownFilterMinRow05_32f_C4R, Least, Tev32f, 4, 5)
ROW_WORKER(ownFilterMinRow06_32f_C4R, Least, Tev32f, 4, 6)
ROW_WORKER(ownFilterMinRow07_32f_C4R, Least, Tev32f, 4, 7)
ROW_WORKER(ownFilterMinRow09_32f_C4R, Least, Tev32f, 4, 9)
ROW_WORKER(ownFilterMinRow11_32f_C4R, Least, Tev32f, 4, 11)
ROW_WORKER(ownFilterMinRow13_32f_C4R, Least, Tev32f, 4, 13)
ROW_WORKER(ownFilterMinRow15_32f_C4R, Least, Tev32f, 4, 15)
ROW_WORKER(ownFilterMinRowVH_32f_C4R, Least, Tev32f, 4, longestWindow)

ROW_WORKER(ownFilterMaxRow01_8u_C1R, Greatest, Tev8u, 1, 1)
ROW_WORKER(ownFilterMaxRow02_8u_C1R, Greatest, Tev8u, 1, 2)
ROW_WORKER(ownFilterMaxRow03_8u_C1R, Greatest, Tev8u, 1, 3)
ROW_WORKER(ownFilterMaxRow04_8u_C1R, Greatest, Tev8u, 1, 4)
ROW_WORKER(ownFilterMaxRow05_8u_C1R, Greatest, Tev8u, 1, 5)
ROW_WORKER(ownFilterMaxRow06_8u_C1R, Greatest, Tev8u, 1, 6)
ROW_WORKER(ownFilterMaxRow07_8u_C1R, Greatest, Tev8u, 1, 7)
ROW_WORKER(ownFilterMaxRow09_8u_C1R, Greatest, Tev8u, 1, 9)
ROW_WORKER(ownFilterMaxRow11_8u_C1R, Greatest, Tev8u, 1, 11)
ROW_WORKER(ownFilterMaxRow13_8u_C1R, Greatest, Tev8u, 1, 13)
ROW_WORKER(ownFilterMaxRow15_8u_C1R, Greatest, Tev8u, 1, 15)
ROW_WORKER(ownFilterMaxRowVH_8u_C1R, Greatest, Tev8u, 1, longestWindow)

ROW_WORKER(ownFilterMaxRow01_8u_C3R, Greatest, Tev8u, 3, 1)
ROW_WORKER(ownFilterMaxRow02_8u_C3R, Greatest, Tev8u, 3, 2)
ROW_WORKER(ownFilterMaxRow03_8u_C3R, Greatest, Tev8u, 3, 3)
ROW_WORKER(ownFilterMaxRow04_8u_C3R, Greatest, Tev8u, 3, 4)
ROW_WORKER(ownFilterMaxRow05_8u_C3R, Greatest, Tev8u, 3, 5)
ROW_WORKER(ownFilterMaxRow06_8u_C3R, Greatest, Tev8u, 3, 6)
ROW_WORKER(ownFilterMaxRow07_8u_C3R, Greatest, Tev8u, 3, 7)
ROW_WORKER(ownFilterMaxRow09_8u_C3R, Greatest, Tev8u, 3, 9)
ROW_WORKER(ownFilterMaxRow11_8u_C3R, Greatest, Tev8u, 3, 11)
ROW_WORKER(ownFilterMaxRow13_8u_C3R, Greatest, Tev8u, 3, 13)
ROW_WORKER(ownFilterMaxRow15_8u_C3R, Greatest, Tev8u, 3, 15)
ROW_WORKER(ownFilterMaxRowVH_8u_C3R, Greatest, Tev8u, 3, longestWindow)

ROW_WORKER(ownFilterMaxRow01_8u_C4R, Greatest, Tev8u, 4, 1)
ROW_WORKER(ownFilterMaxRow02_8u_C4R, Greatest, Tev8u, 4, 2)
ROW_WORKER(ownFilterMaxRow03_8u_C4R, Greatest, Tev8u, 4, 3)
ROW_WORKER(ownFilterMaxRow04_8u_C4R, Greatest, Tev8u, 4, 4)
ROW_WORKER(ownFilterMaxRow05_8u_C4R, Greatest, Tev8u, 4, 5)
ROW_WORKER(ownFilterMaxRow06_8u_C4R, Greatest, Tev8u, 4, 6)
ROW_WORKER(ownFilterMaxRow07_8u_C4R, Greatest, Tev8u, 4, 7)
ROW_WORKER(ownFilterMaxRow09_8u_C4R, Greatest, Tev8u, 4, 9)
ROW_WORKER(ownFilterMaxRow11_8u_C4R, Greatest, Tev8u, 4, 11)
ROW_WORKER(ownFilterMaxRow13_8u_C4R, Greatest, Tev8u, 4, 13)
ROW_WORKER(ownFilterMaxRow15_8u_C4R, Greatest, Tev8u, 4, 15)
ROW_WORKER(ownFilterMaxRowVH_8u_C4R, Greatest, Tev8u, 4, longestWindow)

ROW_WORKER(ownFilterMaxRow01_32f_C1R, Greatest, Tev32f, 1, 1)
ROW_WORKER(ownFilterMaxRow02_32f_C1R, Greatest, Tev32f, 1, 2)
ROW_WORKER(ownFilterMaxRow03_32f_C1R, Greatest, Tev32f, 1, 3)
ROW_WORKER(ownFilterMaxRow04_32f_C1R, Greatest, Tev32f, 1, 4)
ROW_WORKER(ownFilterMaxRow05_32f_C1R, Greatest, Tev32f, 1, 5)
ROW_WORKER(ownFilterMaxRow06_32f_C1R, Greatest, Tev32f, 1, 6)
ROW_WORKER(ownFilterMaxRow07_32f_C1R, Greatest, Tev32f, 1, 7)
ROW_WORKER(ownFilterMaxRow09_32f_C1R, Greatest, Tev32f, 1, 9)
ROW_WORKER(ownFilterMaxRow11_32f_C1R, Greatest, Tev32f, 1, 11)
ROW_WORKER(ownFilterMaxRow13_32f_C1R, Greatest, Tev32f, 1, 13)
ROW_WORKER(ownFilterMaxRow15_32f_C1R, Greatest, Tev32f, 1, 15)
ROW_WORKER(ownFilterMaxRowVH_32f_C1R, Greatest, Tev32f, 1, longestWindow)

ROW_WORKER(ownFilterMaxRow01_32f_C3R, Greatest, Tev32f, 3, 1)
ROW_WORKER(ownFilterMaxRow02_32f_C3R, Greatest, Tev32f, 3, 2)
ROW_WORKER(ownFilterMaxRow03_32f_C3R, Greatest, Tev32f, 3, 3)
ROW_WORKER(ownFilterMaxRow04_32f_C3R, Greatest, Tev32f, 3, 4)
ROW_WORKER(ownFilterMaxRow05_32f_C3R, Greatest, Tev32f, 3, 5)
ROW_WORKER(ownFilterMaxRow06_32f_C3R, Greatest, Tev32f, 3, 6)
ROW_WORKER(ownFilterMaxRow07_32f_C3R, Greatest, Tev32f, 3, 7)
ROW_WORKER(ownFilterMaxRow09_32f_C3R, Greatest, Tev32f, 3, 9)
ROW_WORKER(ownFilterMaxRow11_32f_C3R, Greatest, Tev32f, 3, 11)
ROW_WORKER(ownFilterMaxRow13_32f_C3R, Greatest, Tev32f, 3, 13)
ROW_WORKER(ownFilterMaxRow15_32f_C3R, Greatest, Tev32f, 3, 15)
ROW_WORKER(ownFilterMaxRowVH_32f_C3R, Greatest, Tev32f, 3, longestWindow)

ROW_WORKER(ownFilterMaxRow01_32f_C4R, Greatest, Tev32f, 4, 1)
ROW_WORKER(ownFilterMaxRow02_32f_C4R, Greatest, Tev32f, 4, 2)
ROW_WORKER(ownFilterMaxRow03_32f_C4R, Greatest, Tev32f, 4, 3)
ROW_WORKER(ownFilterMaxRow04_32f_C4R, Greatest, Tev32f, 4, 4)
ROW_WORKER(ownFilterMaxRow05_32f_C4R, Greatest, Tev32f, 4, 5)
ROW_WORKER(ownFilterMaxRow06_32f_C4R, Greatest, Tev32f, 4, 6)
ROW_WORKER(ownFilterMaxRow07_32f_C4R, Greatest, Tev32f, 4, 7)
ROW_WORKER(ownFilterMaxRow09_32f_C4R, Greatest, Tev32f, 4, 9)
ROW_WORKER(ownFilterMaxRow11_32f_C4R, Greatest, Tev32f, 4, 11)
ROW_WORKER(ownFilterMaxRow13_32f_C4R, Greatest, Tev32f, 4, 13)
ROW_WORKER(ownFilterMaxRow15_32f_C4R, Greatest, Tev32f, 4, 15)
ROW_WORKER(ownFilterMaxRowVH_32f_C4R, Greatest, Tev32f, 4, longestWindow)

const TevFilterRow_8u owntablFilterMinRow_8u_C1[16] = {
    ownFilterMinRowVH_8u_C1R, ownFilterMinRow01_8u_C1R, ownFilterMinRow02_8u_C1R, ownFilterMinRow03_8u_C1R,
    ownFilterMinRow04_8u_C1R, ownFilterMinRow05_8u_C1R, ownFilterMinRow06_8u_C1R, ownFilterMinRow07_8u_C1R,
    ownFilterMinRowVH_8u_C1R, ownFilterMinRow09_8u_C1R, ownFilterMinRowVH_8u_C1R, ownFilterMinRow11_8u_C1R,
    ownFilterMinRowVH_8u_C1R, ownFilterMinRow13_8u_C1R, ownFilterMinRowVH_8u_C1R, ownFilterMinRow15_8u_C1R};

const TevFilterRow_8u owntablFilterMinRow_8u_C3[16] = {
    ownFilterMinRowVH_8u_C3R, ownFilterMinRow01_8u_C3R, ownFilterMinRow02_8u_C3R, ownFilterMinRow03_8u_C3R,
    ownFilterMinRow04_8u_C3R, ownFilterMinRow05_8u_C3R, ownFilterMinRow06_8u_C3R, ownFilterMinRow07_8u_C3R,
    ownFilterMinRowVH_8u_C3R, ownFilterMinRow09_8u_C3R, ownFilterMinRowVH_8u_C3R, ownFilterMinRow11_8u_C3R,
    ownFilterMinRowVH_8u_C3R, ownFilterMinRow13_8u_C3R, ownFilterMinRowVH_8u_C3R, ownFilterMinRow15_8u_C3R};

const TevFilterRow_8u owntablFilterMinRow_8u_C4[16] = {
    ownFilterMinRowVH_8u_C4R, ownFilterMinRow01_8u_C4R, ownFilterMinRow02_8u_C4R, ownFilterMinRow03_8u_C4R,
    ownFilterMinRow04_8u_C4R, ownFilterMinRow05_8u_C4R, ownFilterMinRow06_8u_C4R, ownFilterMinRow07_8u_C4R,
    ownFilterMinRowVH_8u_C4R, ownFilterMinRow09_8u_C4R, ownFilterMinRowVH_8u_C4R, ownFilterMinRow11_8u_C4R,
    ownFilterMinRowVH_8u_C4R, ownFilterMinRow13_8u_C4R, ownFilterMinRowVH_8u_C4R, ownFilterMinRow15_8u_C4R};

const TevFilterRow_8u owntablFilterMinRow_8u_C4_Small[16] = {
    ownFilterMinRowVH_8u_C4R, ownFilterMinRow01_8u_C4R, ownFilterMinRow02_8u_C4R, ownFilterMinRow03_8u_C4R,
    ownFilterMinRow04_8u_C4R, ownFilterMinRow05_8u_C4R, ownFilterMinRow06_8u_C4R, ownFilterMinRow07_8u_C4R,
    ownFilterMinRow07_8u_C4R, ownFilterMinRow09_8u_C4R, ownFilterMinRow09_8u_C4R, ownFilterMinRow11_8u_C4R,
    ownFilterMinRow11_8u_C4R, ownFilterMinRow13_8u_C4R, ownFilterMinRow13_8u_C4R, ownFilterMinRow15_8u_C4R};

const TevFilterRow_32f owntablFilterMinRow_32f_C1[16] = {
    ownFilterMinRowVH_32f_C1R, ownFilterMinRow01_32f_C1R, ownFilterMinRow02_32f_C1R, ownFilterMinRow03_32f_C1R,
    ownFilterMinRow04_32f_C1R, ownFilterMinRow05_32f_C1R, ownFilterMinRow06_32f_C1R, ownFilterMinRow07_32f_C1R,
    ownFilterMinRowVH_32f_C1R, ownFilterMinRow09_32f_C1R, ownFilterMinRowVH_32f_C1R, ownFilterMinRow11_32f_C1R,
    ownFilterMinRowVH_32f_C1R, ownFilterMinRow13_32f_C1R, ownFilterMinRowVH_32f_C1R, ownFilterMinRow15_32f_C1R};

const TevFilterRow_32f owntablFilterMinRow_32f_C1_Small[16] = {
    ownFilterMinRowVH_32f_C1R, ownFilterMinRow01_32f_C1R, ownFilterMinRow02_32f_C1R, ownFilterMinRow03_32f_C1R,
    ownFilterMinRow04_32f_C1R, ownFilterMinRow05_32f_C1R, ownFilterMinRow06_32f_C1R, ownFilterMinRow07_32f_C1R,
    ownFilterMinRow07_32f_C1R, ownFilterMinRow09_32f_C1R, ownFilterMinRow09_32f_C1R, ownFilterMinRow11_32f_C1R,
    ownFilterMinRow11_32f_C1R, ownFilterMinRow13_32f_C1R, ownFilterMinRow13_32f_C1R, ownFilterMinRow15_32f_C1R};

const TevFilterRow_32f owntablFilterMinRow_32f_C3[16] = {
    ownFilterMinRowVH_32f_C3R, ownFilterMinRow01_32f_C3R, ownFilterMinRow02_32f_C3R, ownFilterMinRow03_32f_C3R,
    ownFilterMinRow04_32f_C3R, ownFilterMinRow05_32f_C3R, ownFilterMinRow06_32f_C3R, ownFilterMinRow07_32f_C3R,
    ownFilterMinRowVH_32f_C3R, ownFilterMinRow09_32f_C3R, ownFilterMinRowVH_32f_C3R, ownFilterMinRow11_32f_C3R,
    ownFilterMinRowVH_32f_C3R, ownFilterMinRow13_32f_C3R, ownFilterMinRowVH_32f_C3R, ownFilterMinRow15_32f_C3R};

const TevFilterRow_32f owntablFilterMinRow_32f_C4[16] = {
    ownFilterMinRowVH_32f_C4R, ownFilterMinRow01_32f_C4R, ownFilterMinRow02_32f_C4R, ownFilterMinRow03_32f_C4R,
    ownFilterMinRow04_32f_C4R, ownFilterMinRow05_32f_C4R, ownFilterMinRow06_32f_C4R, ownFilterMinRow07_32f_C4R,
    ownFilterMinRowVH_32f_C4R, ownFilterMinRow09_32f_C4R, ownFilterMinRowVH_32f_C4R, ownFilterMinRow11_32f_C4R,
    ownFilterMinRowVH_32f_C4R, ownFilterMinRow13_32f_C4R, ownFilterMinRowVH_32f_C4R, ownFilterMinRow15_32f_C4R};

const TevFilterRow_8u owntablFilterMaxRow_8u_C1[16] = {
    ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow01_8u_C1R, ownFilterMaxRow02_8u_C1R, ownFilterMaxRow03_8u_C1R,
    ownFilterMaxRow04_8u_C1R, ownFilterMaxRow05_8u_C1R, ownFilterMaxRow06_8u_C1R, ownFilterMaxRow07_8u_C1R,
    ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow09_8u_C1R, ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow11_8u_C1R,
    ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow13_8u_C1R, ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow15_8u_C1R};

const TevFilterRow_8u owntablFilterMaxRow_8u_C3[16] = {
    ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow01_8u_C3R, ownFilterMaxRow02_8u_C3R, ownFilterMaxRow03_8u_C3R,
    ownFilterMaxRow04_8u_C3R, ownFilterMaxRow05_8u_C3R, ownFilterMaxRow06_8u_C3R, ownFilterMaxRow07_8u_C3R,
    ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow09_8u_C3R, ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow11_8u_C3R,
    ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow13_8u_C3R, ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow15_8u_C3R};

const TevFilterRow_8u owntablFilterMaxRow_8u_C4[16] = {
    ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow01_8u_C4R, ownFilterMaxRow02_8u_C4R, ownFilterMaxRow03_8u_C4R,
    ownFilterMaxRow04_8u_C4R, ownFilterMaxRow05_8u_C4R, ownFilterMaxRow06_8u_C4R, ownFilterMaxRow07_8u_C4R,
    ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow09_8u_C4R, ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow11_8u_C4R,
    ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow13_8u_C4R, ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow15_8u_C4R};

const TevFilterRow_8u owntablFilterMaxRow_8u_C4_Small[16] = {
    ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow01_8u_C4R, ownFilterMaxRow02_8u_C4R, ownFilterMaxRow03_8u_C4R,
    ownFilterMaxRow04_8u_C4R, ownFilterMaxRow05_8u_C4R, ownFilterMaxRow06_8u_C4R, ownFilterMaxRow07_8u_C4R,
    ownFilterMaxRow07_8u_C4R, ownFilterMaxRow09_8u_C4R, ownFilterMaxRow09_8u_C4R, ownFilterMaxRow11_8u_C4R,
    ownFilterMaxRow11_8u_C4R, ownFilterMaxRow13_8u_C4R, ownFilterMaxRow13_8u_C4R, ownFilterMaxRow15_8u_C4R};

const TevFilterRow_32f owntablFilterMaxRow_32f_C1[16] = {
    ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow01_32f_C1R, ownFilterMaxRow02_32f_C1R, ownFilterMaxRow03_32f_C1R,
    ownFilterMaxRow04_32f_C1R, ownFilterMaxRow05_32f_C1R, ownFilterMaxRow06_32f_C1R, ownFilterMaxRow07_32f_C1R,
    ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow09_32f_C1R, ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow11_32f_C1R,
    ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow13_32f_C1R, ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow15_32f_C1R};

const TevFilterRow_32f owntablFilterMaxRow_32f_C1_Small[16] = {
    ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow01_32f_C1R, ownFilterMaxRow02_32f_C1R, ownFilterMaxRow03_32f_C1R,
    ownFilterMaxRow04_32f_C1R, ownFilterMaxRow05_32f_C1R, ownFilterMaxRow06_32f_C1R, ownFilterMaxRow07_32f_C1R,
    ownFilterMaxRow07_32f_C1R, ownFilterMaxRow09_32f_C1R, ownFilterMaxRow09_32f_C1R, ownFilterMaxRow11_32f_C1R,
    ownFilterMaxRow11_32f_C1R, ownFilterMaxRow13_32f_C1R, ownFilterMaxRow13_32f_C1R, ownFilterMaxRow15_32f_C1R};

const TevFilterRow_32f owntablFilterMaxRow_32f_C3[16] = {
    ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow01_32f_C3R, ownFilterMaxRow02_32f_C3R, ownFilterMaxRow03_32f_C3R,
    ownFilterMaxRow04_32f_C3R, ownFilterMaxRow05_32f_C3R, ownFilterMaxRow06_32f_C3R, ownFilterMaxRow07_32f_C3R,
    ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow09_32f_C3R, ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow11_32f_C3R,
    ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow13_32f_C3R, ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow15_32f_C3R};

const TevFilterRow_32f owntablFilterMaxRow_32f_C4[16] = {
    ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow01_32f_C4R, ownFilterMaxRow02_32f_C4R, ownFilterMaxRow03_32f_C4R,
    ownFilterMaxRow04_32f_C4R, ownFilterMaxRow05_32f_C4R, ownFilterMaxRow06_32f_C4R, ownFilterMaxRow07_32f_C4R,
    ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow09_32f_C4R, ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow11_32f_C4R,
    ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow13_32f_C4R, ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow15_32f_C4R};
