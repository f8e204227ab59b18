// Sliding extrema along a row: dst[x] is the extremum of src over the window [x - offset, x - offset + length), as far
// as that lies in the row. The 144 workers share one plan:
//
//   1. The window is capped at what the worker is built for; 63 for the workers that take any.
//   2. At both ends, where the window overruns the row, a running extremum from the row's end gives the outputs.
//   3. Between them the window is whole. A worker for one length folds that many shifted loads. The others double: the
//      extrema of w neighbours and of the s <= w next ones give those of w + s, so that a window of 63 takes six passes
//      over a block that stays in the cache. Van Herk's method needs fewer comparisons but takes them one after the
//      other; doubling takes a whole vector of them at once.
//   4. If the window was capped, dst is widened in place, again by doubling: a window of any length costs a logarithmic
//      number of passes. (M. van Herk, "A fast algorithm for local minimum and maximum filters on rectangular and
//      octagonal kernels", 1992; the doubling is the decomposition of flat structuring elements by Pecht, "Speeding-up
//      successive Minkowski operations with bit-plane computers", 1985.)
//
// Extrema are idempotent: windows may overlap, and all that matters is their union.
#include <algorithm>
#include <cstring>
#include <utility>

#include "morphology/extremum.h"
#include "tevcv_internal/morphology.h"

using namespace tevcv;

namespace {

// The outputs whose window overruns an end of the row: forward from the first element, backward from the last.
template <class Best, int channels, class T>
void rowEnds(const T* src, T* dst, int width, int length, int offset) {
  const int headEnd = std::min(offset, width), tailBegin = std::max(offset, width - length + offset + 1);
  for (int c = 0; c < channels; ++c) {
    const auto s = [&](int x) { return src[x * channels + c]; };
    T best = s(0);
    for (int x = 0, read = 1; x < headEnd; ++x) {
      for (const int end = std::min(width, x - offset + length); read < end; ++read) best = Best::of(best, s(read));
      dst[x * channels + c] = best;
    }
    best = s(width - 1);
    for (int x = width - 1, read = width - 1; x >= tailBegin; --x) {
      while (read > x - offset) best = Best::of(s(--read), best);
      dst[x * channels + c] = best;
    }
  }
}

// dst[i] = the extremum of src[i], src[i + channels], ..., `length` of them.
template <class Best, int channels, int length, class T>
void foldShiftedLoads(const T* src, T* dst, int len) {
  [&]<int... k>(std::integer_sequence<int, k...>) {
#pragma GCC ivdep
    for (int i = 0; i < len; ++i) {
      T best = src[i];
      ((best = Best::of(best, src[i + (k + 1) * channels])), ...);
      dst[i] = best;
    }
  }
  (std::make_integer_sequence<int, length - 1>());
}

constexpr int longestWindow = 63;

// The same for any length from 2 to longestWindow, by doubling within blocks of a row.
template <class Best, class T>
void doubleUp(const T* src, T* dst, int len, int channels, int length) {
  constexpr int blockLength = 2048 / sizeof(T);
  T stack[blockLength + (longestWindow - 1) * 4];
  for (int begin = 0; begin < len; begin += blockLength) {
    const int outputs = std::min(blockLength, len - begin);
    const T* from = src + begin;
    for (int reach = 1; reach < length;) {
      const int step = std::min(reach, length - reach);
      const T* const ahead = from + step * channels;
      T* const to = reach + step == length ? dst + begin : stack;
      const int count = outputs + (length - reach - step) * channels;
#pragma GCC ivdep  // in place too: what is read lies ahead of what is written
      for (int i = 0; i < count; ++i) to[i] = Best::of(from[i], ahead[i]);
      from = stack;
      reach += step;
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
    constexpr int blockLength = 256 / sizeof(T);
    const int shift = std::min(step, width) * channels;
    for (int end = len; end > shift;) {
      const int begin = std::max(end - blockLength, shift), count = end - begin;
      T block[blockLength];
      std::memcpy(block, dst + begin - shift, static_cast<size_t>(count) * sizeof(T));
      for (int i = 0; i < count; ++i) dst[begin + i] = Best::of(block[i], dst[begin + i]);
      end = begin;
    }
    for (int i = shift - 1; i >= channels; --i) dst[i] = Best::of(dst[i % channels], dst[i]);
  }
  for (int step; length > reach; reach += step) {
    step = std::min(length - reach, reach);
    const int whole = len - std::min(step, width) * channels;
    const T* const ahead = dst + (len - whole);
#pragma GCC ivdep
    for (int i = 0; i < whole; ++i) dst[i] = Best::of(dst[i], ahead[i]);
    const T* const last = dst + len - channels;
    for (int i = whole; i < len - channels; ++i) dst[i] = Best::of(dst[i], last[i % channels]);
  }
}

// `builtFor` is the window of a worker for one length, 0 for a worker that takes any.
template <class Best, int channels, int builtFor, class T>
void slide(const T* src, T* dst, int width, int length, int offset) {
  const int reach = std::min(length, builtFor == 0 ? longestWindow : builtFor), anchor = std::min(offset, reach - 1);
  if (reach == 1) {
    std::memcpy(dst, src, static_cast<size_t>(width) * channels * sizeof(T));
  } else {
    rowEnds<Best, channels>(src, dst, width, reach, anchor);
    if (const int whole = (width - reach + 1) * channels; whole > 0) {
      T* const first = dst + anchor * channels;
      if (builtFor > 1 && reach == builtFor)
        foldShiftedLoads<Best, channels, std::max(builtFor, 1)>(src, first, whole);
      else
        doubleUp<Best>(src, first, whole, channels, reach);
    }
  }
  widen<Best, channels>(dst, width, reach, length, offset);
}

}  // namespace

#define ROW_WORKER(name, Best, T, channels, builtFor)                  \
  void name(const T* src, T* dst, int width, int length, int offset) { \
    slide<Best, channels, builtFor>(src, dst, width, length, offset);  \
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
ROW_WORKER(ownFilterMinRowVH_8u_C1R, Least, Tev8u, 1, 0)

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
ROW_WORKER(ownFilterMinRowVH_8u_C3R, Least, Tev8u, 3, 0)

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
ROW_WORKER(ownFilterMinRowVH_8u_C4R, Least, Tev8u, 4, 0)

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
ROW_WORKER(ownFilterMinRowVH_32f_C1R, Least, Tev32f, 1, 0)

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
ROW_WORKER(ownFilterMinRowVH_32f_C3R, Least, Tev32f, 3, 0)

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
ROW_WORKER(ownFilterMinRowVH_32f_C4R, Least, Tev32f, 4, 0)

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
ROW_WORKER(ownFilterMaxRowVH_8u_C1R, Greatest, Tev8u, 1, 0)

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
ROW_WORKER(ownFilterMaxRowVH_8u_C3R, Greatest, Tev8u, 3, 0)

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
ROW_WORKER(ownFilterMaxRowVH_8u_C4R, Greatest, Tev8u, 4, 0)

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
ROW_WORKER(ownFilterMaxRowVH_32f_C1R, Greatest, Tev32f, 1, 0)

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
ROW_WORKER(ownFilterMaxRowVH_32f_C3R, Greatest, Tev32f, 3, 0)

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
ROW_WORKER(ownFilterMaxRowVH_32f_C4R, Greatest, Tev32f, 4, 0)

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
