// Sliding extrema over an image: rows by a row worker, each source row once, then down the columns. A column pass sees
// flat lines of width * channels elements, so it needs no form for each channel count, and works a whole vector of
// columns at a time.
//
// Any height goes by van Herk's method over lines: the rows are cut into blocks of the window's height; within a block
// the lines become suffix extrema, the lines of the next block are taken into a running extremum as they come, and an
// output row is the extremum of one suffix line and the running one. Three line operations a row, whatever the height.
// (M. van Herk, "A fast algorithm for local minimum and maximum filters on rectangular and octagonal kernels", 1992.)
#include <algorithm>
#include <cstring>
#include <utility>

#include "frame/rows.h"
#include "morphology/extremum.h"
#include "tevcv_internal/morphology.h"

using namespace tevcv;

namespace {

template <class T>
using RowFunction = void (*)(const T* src, T* dst, int width, int length, int offset);

// The arguments of a column worker that stay the same from row to row.
template <class T>
struct Image {
  Rows<const T> src;
  Rows<T> dst;
  int width;
  int height;
  int channels;
  int maskW;
  int ax;
  RowFunction<T> rowFunction;

  int lineLength() const { return width * channels; }
  void filterRow(int y, T* line) const { rowFunction(src[y], line, width, maskW, ax); }
  void filterRowsApart() const {
    for (int y = 0; y < height; ++y) filterRow(y, dst[y]);
  }
  void copyTo(int y, const T* line) const { std::memcpy(dst[y], line, static_cast<size_t>(lineLength()) * sizeof(T)); }
};

// Windows of a small fixed height: the ring holds the lines of one window and one more. Near the top and the bottom the
// edge line stands in for the rows beyond it.
template <class Best, int maskH, class T>
void fixedColumns(const Image<T>& image, int ay, T** ring) {
  if constexpr (maskH == 1) {
    image.filterRowsApart();
  } else {
    constexpr int lines = maskH + 1;
    int filtered = 0;
    for (int y = 0; y < image.height; ++y) {
      for (const int end = std::min(image.height, y - ay + maskH); filtered < end; ++filtered)
        image.filterRow(filtered, ring[filtered % lines]);
      const T* window[maskH];
      for (int k = 0; k < maskH; ++k) window[k] = ring[std::clamp(y - ay + k, 0, image.height - 1) % lines];
      bestOfLines<Best, maskH>(window, image.dst[y], image.lineLength());
    }
  }
}

// running = extremum(before, line), dst = extremum(suffix, running), in one pass over the lines.
template <class Best, class T>
void takeLine(const T* before, const T* line, T* running, const T* suffix, T* dst, int len) {
#pragma GCC ivdep
  for (int i = 0; i < len; ++i) {
    running[i] = Best::of(before[i], line[i]);
    dst[i] = Best::of(suffix[i], running[i]);
  }
}

template <class Best, class T>
void slideDown(const Image<T>& image, int maskH, int ay, T** ring) {
  const int height = image.height, len = image.lineLength();
  const int above = std::min(ay, height - 1), below = std::min(maskH - ay - 1, height - 1);
  const int window = above + 1 + below;
  if (window == 1) return image.filterRowsApart();

  // The windows that begin at the first row or above: prefix extrema.
  T* const first = image.dst[0];
  for (int y = 0; y <= below; ++y) image.filterRow(y, ring[y]);
  if (below == 0) image.copyTo(0, ring[0]);
  for (int y = 1; y <= below; ++y) Best::ofEach(y == 1 ? ring[0] : first, ring[y], first, len);
  for (int y = 1; y <= above; ++y) {
    const int row = y + below;
    if (row < height) {
      image.filterRow(row, ring[row]);
      Best::ofEach(image.dst[y - 1], ring[row], image.dst[y], len);
    } else {
      image.copyTo(y, image.dst[y - 1]);
    }
  }

  // The windows that begin inside the block of rows from `start` on, i lines into it. Its lines stand in `block`; those
  // of the next block come into `next`, as far as there are rows.
  T **block = ring, **next = ring + window;
  for (int start = 0, y = above + 1; y < height; start += window, std::swap(block, next)) {
    const int held = std::min(window, height - start);
    for (int i = held - 2; i > 0; --i) Best::ofEach(block[i], block[i + 1], block[i], len);
    // Nothing asks for the extremum of the whole block again: its first line is free for the running extremum.
    const T* running = nullptr;
    for (int i = 1; i <= window && y < height; ++i, ++y) {
      const T* const suffix = i < held ? block[i] : nullptr;
      if (const int row = start + window - 1 + i; row < height) {
        T* const line = next[i - 1];
        image.filterRow(row, line);
        if (running && suffix) {
          takeLine<Best>(running, line, block[0], suffix, image.dst[y], len);
          running = block[0];
          continue;
        }
        if (running) Best::ofEach(running, line, block[0], len);
        running = running ? block[0] : line;
      }
      if (running && suffix)
        Best::ofEach(suffix, running, image.dst[y], len);
      else
        image.copyTo(y, suffix ? suffix : running);
    }
  }
}

}  // namespace

#define COLUMN_WORKER(name, T, work)                                                                                  \
  void name(const T* src, int srcStep, T* dst, int dstStep, int width, int height, int channels, int maskW,           \
            [[maybe_unused]] int maskH, int ax, [[maybe_unused]] int ay, RowFunction<T> rowFunction, T** ring) {      \
    const Image<T> image = {rows(src, srcStep), rows(dst, dstStep), width, height, channels, maskW, ax, rowFunction}; \
    work;                                                                                                             \
  }

COLUMN_WORKER(ownFilterMinColumn01_8u_C1R, Tev8u, (fixedColumns<Least, 1>(image, ay, ring)))
COLUMN_WORKER(ownFilterMinColumn03_8u_C1R, Tev8u, (fixedColumns<Least, 3>(image, ay, ring)))
COLUMN_WORKER(ownFilterMinColumn05_8u_C1R, Tev8u, (fixedColumns<Least, 5>(image, ay, ring)))
COLUMN_WORKER(ownFilterMinColumnVH_8u_C1R, Tev8u, slideDown<Least>(image, maskH, ay, ring))

COLUMN_WORKER(ownFilterMinColumn01_32f_C1R, Tev32f, (fixedColumns<Least, 1>(image, ay, ring)))
COLUMN_WORKER(ownFilterMinColumn03_32f_C1R, Tev32f, (fixedColumns<Least, 3>(image, ay, ring)))
COLUMN_WORKER(ownFilterMinColumn05_32f_C1R, Tev32f, (fixedColumns<Least, 5>(image, ay, ring)))
COLUMN_WORKER(ownFilterMinColumnVH_32f_C1R, Tev32f, slideDown<Least>(image, maskH, ay, ring))

COLUMN_WORKER(ownFilterMaxColumn01_8u_C1R, Tev8u, (fixedColumns<Greatest, 1>(image, ay, ring)))
COLUMN_WORKER(ownFilterMaxColumn03_8u_C1R, Tev8u, (fixedColumns<Greatest, 3>(image, ay, ring)))
COLUMN_WORKER(ownFilterMaxColumn05_8u_C1R, Tev8u, (fixedColumns<Greatest, 5>(image, ay, ring)))
COLUMN_WORKER(ownFilterMaxColumnVH_8u_C1R, Tev8u, slideDown<Greatest>(image, maskH, ay, ring))

COLUMN_WORKER(ownFilterMaxColumn01_32f_C1R, Tev32f, (fixedColumns<Greatest, 1>(image, ay, ring)))
COLUMN_WORKER(ownFilterMaxColumn03_32f_C1R, Tev32f, (fixedColumns<Greatest, 3>(image, ay, ring)))
COLUMN_WORKER(ownFilterMaxColumn05_32f_C1R, Tev32f, (fixedColumns<Greatest, 5>(image, ay, ring)))
COLUMN_WORKER(ownFilterMaxColumnVH_32f_C1R, Tev32f, slideDown<Greatest>(image, maskH, ay, ring))

const TevFilterColumn_8u owntablFilterMinColumn_8u_C1[8] = {
    ownFilterMinColumnVH_8u_C1R, ownFilterMinColumn01_8u_C1R, ownFilterMinColumnVH_8u_C1R, ownFilterMinColumn03_8u_C1R,
    ownFilterMinColumnVH_8u_C1R, ownFilterMinColumn05_8u_C1R, ownFilterMinColumnVH_8u_C1R, ownFilterMinColumnVH_8u_C1R};

const TevFilterColumn_32f owntablFilterMinColumn_32f_C1[8] = {
    ownFilterMinColumnVH_32f_C1R, ownFilterMinColumn01_32f_C1R, ownFilterMinColumnVH_32f_C1R,
    ownFilterMinColumn03_32f_C1R, ownFilterMinColumnVH_32f_C1R, ownFilterMinColumn05_32f_C1R,
    ownFilterMinColumnVH_32f_C1R, ownFilterMinColumnVH_32f_C1R};

const TevFilterColumn_8u owntablFilterMaxColumn_8u_C1[8] = {
    ownFilterMaxColumnVH_8u_C1R, ownFilterMaxColumn01_8u_C1R, ownFilterMaxColumnVH_8u_C1R, ownFilterMaxColumn03_8u_C1R,
    ownFilterMaxColumnVH_8u_C1R, ownFilterMaxColumn05_8u_C1R, ownFilterMaxColumnVH_8u_C1R, ownFilterMaxColumnVH_8u_C1R};

const TevFilterColumn_32f owntablFilterMaxColumn_32f_C1[8] = {
    ownFilterMaxColumnVH_32f_C1R, ownFilterMaxColumn01_32f_C1R, ownFilterMaxColumnVH_32f_C1R,
    ownFilterMaxColumn03_32f_C1R, ownFilterMaxColumnVH_32f_C1R, ownFilterMaxColumn05_32f_C1R,
    ownFilterMaxColumnVH_32f_C1R, ownFilterMaxColumnVH_32f_C1R};
