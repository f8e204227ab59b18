// Exact Euclidean distances in two stages: the distance to the nearest zero of the column, d, then along each row the
// least of (x - p)^2 + d(p)^2 over all pixels p. That is the lower envelope of the row's parabolas, which one run
// finds: each new parabola drops those at the end that it undercuts before they begin to count.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "tevcv/distance.h"
#include "tevcv/primitives.h"
#include "tevcv_internal/frame.h"

using namespace tevcv;

namespace {

// What a column without a zero has as its squared distance. Callers know it: 1000 is the farthest that the result says
// where an image has no zero at all.
constexpr Tev32f squareOfNoZero = 1e6F;

Tev32f squared(int i) { return static_cast<Tev32f>(i) * static_cast<Tev32f>(i); }

// --- Columns --------------------------------------------------------------------------------------------------------

// The squared distance of each pixel to the nearest zero of its column. All columns go together, a row at a time; the
// distances are counted as integers in the words of the output.
void squaredColumnDistances(Rows<const Tev8u> src, Rows<Tev32f> dst, TevSize roi) {
  const int width = roi.width, height = roi.height;
  const auto count = [](Tev32f word) { return std::bit_cast<Tev32s>(word); };
  const auto word = [](Tev32s n) { return std::bit_cast<Tev32f>(n); };

  // Upwards: to the nearest zero below. Without one the count begins as high as the image.
  for (int y = height - 1; y >= 0; --y) {
    const Tev8u* const s = src[y];
    Tev32f* const d = dst[y];
    if (y == height - 1) {
#pragma GCC ivdep
      for (int x = 0; x < width; ++x) d[x] = word(s[x] != 0 ? height : 0);
    } else {
      const Tev32f* const below = dst[y + 1];
#pragma GCC ivdep
      for (int x = 0; x < width; ++x) d[x] = word(s[x] != 0 ? count(below[x]) + 1 : 0);
    }
  }
  // Downwards: to the nearest zero on either side, if there is one. The row above is squared once this one is counted.
  const auto square = [&](Tev32f* d) {
#pragma GCC ivdep
    for (int x = 0; x < width; ++x) {
      const Tev32s n = count(d[x]);
      d[x] = n < height ? squared(n) : squareOfNoZero;
    }
  };
  for (int y = 1; y < height; ++y) {
    Tev32f *const above = dst[y - 1], *const d = dst[y];
#pragma GCC ivdep
    for (int x = 0; x < width; ++x) d[x] = word(std::min(count(above[x]) + 1, count(d[x])));
    square(above);
  }
  square(dst[height - 1]);
}

// --- Rows -----------------------------------------------------------------------------------------------------------

// Scratch in the caller's buffer: tables for all threads, then the envelope of each.
struct Tables {
  Tev32f* square;      // i * i
  Tev32f* reciprocal;  // 0.5 / i, and 0 at 0
};

struct Envelope {
  Tev32f* height;    // of each column's parabola at its vertex
  Tev32f* begin;     // where each parabola of the envelope begins to be the lowest
  Tev32s* parabola;  // the columns of the envelope's parabolas, ascending
};

class Scratch {
 public:
  Scratch(Tev8u* buffer, int width) : width_(width) {
    const auto address = reinterpret_cast<std::uintptr_t>(buffer);
    first_ = reinterpret_cast<Tev32f*>(buffer + ((address + 15) / 16 * 16 - address));
  }

  Tables tables() const { return {first_, first_ + width_}; }
  Envelope envelope(int share) const {
    Tev32f* const own = words(share);
    return {own, own + width_, reinterpret_cast<Tev32s*>(own + 2 * std::ptrdiff_t{width_} + 1)};
  }
  // What is free behind the scratch of `shares` threads.
  Tev32f* image(int shares) const { return words(shares); }

 private:
  Tev32f* words(int share) const {
    return first_ + 2 * std::ptrdiff_t{width_} + share * (3 * std::ptrdiff_t{width_} + 2);
  }

  Tev32f* first_;
  int width_;
};

// Lists the parabolas of the envelope of heights 0..width-1 and returns the index of the last. Two parabolas cross at
// s, which is formed in Real and rounded where it is stored. The first one never leaves the list: nothing lies before
// it. The fields of the last one stay at hand.
template <class Real>
int lowerEnvelope(const Tables& table, const Envelope& e, int width) {
  const auto offset = [&](int x) { return Real{e.height[x]} + Real{table.square[x]}; };
  int last = 0, p = 0;
  Real ofLast = offset(0);
  Tev32f begin = 0;
  e.parabola[0] = 0;
  for (int x = 1; x < width; ++x) {
    const Real here = offset(x);
    Real s = (here - ofLast) * Real{table.reciprocal[x - p]};
    while (last > 0 && begin >= s) {
      p = e.parabola[--last];
      ofLast = offset(p);
      begin = e.begin[last];
      s = (here - ofLast) * Real{table.reciprocal[x - p]};
    }
    ++last;
    e.parabola[last] = p = x;
    e.begin[last] = begin = static_cast<Tev32f>(s);
    ofLast = here;
  }
  return last;
}

// Calls store(x, square, height) with the two terms of the squared distance of each pixel of the row.
template <class Real, class Store>
void squaredDistances(const Tables& table, const Envelope& e, const Tev32f* row, int width, Store store) {
  std::copy_n(row, width, e.height);
  const int last = lowerEnvelope<Real>(table, e, width);
  for (int x = 0, k = 0; x < width; ++k) {
    // Parabola k counts up to where the next one begins, that pixel included.
    const int p = e.parabola[k];
    const Tev32f height = e.height[p];
    const int end = k == last || e.begin[k + 1] >= static_cast<Tev32f>(width) ? width
                    : e.begin[k + 1] < static_cast<Tev32f>(x)                 ? x
                                                                              : static_cast<int>(e.begin[k + 1]) + 1;
#pragma GCC ivdep
    for (; x < end; ++x) store(x, squared(x - p), height);
  }
}

// Calls work(row number, envelope scratch) for each row, in parallel where that pays.
template <class Work>
void forEachRow(const Scratch& scratch, TevSize roi, Work work) {
  const int threads = owncvGetNumThreads();
  const auto rowsOf = [&](const Share& share) {
    for (int y = share.firstRow; y < share.endRow(); ++y) work(y, scratch.envelope(share.index));
  };
  if (threads >= 2 && (runomp() != 0 || (std::int64_t{threads} * roi.height >= 256 && roi.width >= 256)))
    forEachShare(roi.height, threads, rowsOf);
  else
    rowsOf(shareOfRows(roi.height, 1, 0));
}

void buildTables(const Tables& table, int width) {
  table.square[0] = table.reciprocal[0] = 0;
  for (int i = 1; i < width; ++i) {
    table.square[i] = squared(i);
    table.reciprocal[i] = 0.5F / static_cast<Tev32f>(i);
  }
}

// Crossings in double are exact while a difference of squares has at most 29 bits: a reciprocal has 24.
bool exactInDouble(TevSize roi) {
  const auto square = [](Tev64f n) { return n * n; };
  return std::max<Tev64f>(squareOfNoZero, square(roi.height)) + square(roi.width) < 1 << 28;
}

// Calls work(row number, envelope scratch, Real{}) for each row, Real being the type for its crossings.
template <class Work>
void forEachRowInExactArithmetic(const Scratch& scratch, TevSize roi, Work work) {
  if (exactInDouble(roi))
    forEachRow(scratch, roi, [&](int y, const Envelope& e) { work(y, e, Tev64f{}); });
  else
    forEachRow(scratch, roi, [&](int y, const Envelope& e) { work(y, e, Extended{}); });
}

template <class T>
TevStatus check(const Tev8u* src, int srcStep, const T* dst, int dstStep, TevSize roi, const Tev8u* buffer) {
  return firstFailure(notNull(src, dst), notNull(buffer), region(roi), rowFits<Tev8u>(srcStep, roi.width),
                      rowFits<T>(dstStep, roi.width), wholeElements<T>(dstStep));
}

// Sizes are words of 32 bits; a product beyond them wraps.
constexpr std::uint32_t roundUp(int n, std::uint32_t multiple) {
  return (static_cast<std::uint32_t>(n) + multiple - 1) & -multiple;
}

}  // namespace

TevStatus teviTrueDistanceTransformGetBufferSize_8u32f_C1R(TevSize roiSize, int* size) {
  if (TevStatus s = firstFailure(notNull(size), region(roiSize))) return s;
  const std::uint32_t longer = std::max(roundUp(roiSize.width, 4), roundUp(roiSize.height, 4));
  *size = static_cast<int>((longer * 24 + 56) * static_cast<std::uint32_t>(owncvGetMaxNumThreads()));
  return tevStatusOk;
}

TevStatus teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(TevSize roiSize, int* size) {
  if (TevStatus s = firstFailure(notNull(size), region(roiSize))) return s;
  const std::uint32_t width = roundUp(roiSize.width, 8), longer = std::max(width, roundUp(roiSize.height, 8));
  *size = static_cast<int>((longer * 6 + 6) * 4 * static_cast<std::uint32_t>(owncvGetMaxNumThreads()) +
                           width * static_cast<std::uint32_t>(roiSize.height) * 4 + 32);
  return tevStatusOk;
}

TevStatus teviTrueDistanceTransform_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              Tev8u* buffer) {
  if (TevStatus s = check(src, srcStep, dst, dstStep, roiSize, buffer)) return s;
  const auto out = rows(dst, dstStep);
  const int width = roiSize.width;
  squaredColumnDistances(rows(src, srcStep), out, roiSize);
  const Scratch scratch(buffer, width);
  const Tables table = scratch.tables();
  buildTables(table, width);
  const auto rootRow = [&]<class Real>(int y, const Envelope& envelope, Real) {
    Tev32f* const row = out[y];
    squaredDistances<Real>(table, envelope, row, width,
                           [row](int x, Tev32f square, Tev32f height) { row[x] = square + height; });
    tevsSqrt_32f_I(row, width);
  };
  forEachRowInExactArithmetic(scratch, roiSize, rootRow);
  return tevStatusOk;
}

TevStatus teviTrueDistanceTransform_8u16u_C1RSfs(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep,
                                                 TevSize roiSize, int scaleFactor, Tev8u* buffer) {
  if (TevStatus s = check(src, srcStep, dst, dstStep, roiSize, buffer)) return s;
  const auto out = rows(dst, dstStep);
  const int width = roiSize.width;
  const Scratch scratch(buffer, width);
  const Rows<Tev32f> image(scratch.image(owncvGetNumThreads()), std::ptrdiff_t{4} * roundUp(width, 8));
  squaredColumnDistances(rows(src, srcStep), image, roiSize);
  const Tables table = scratch.tables();
  buildTables(table, width);
  const auto rootRow = [&]<class Real>(int y, const Envelope& envelope, Real) {
    // The squares take the place of the row, which the envelope has a copy of.
    auto* const squares = reinterpret_cast<Tev32s*>(image[y]);
    squaredDistances<Real>(table, envelope, image[y], width, [squares](int x, Tev32f square, Tev32f height) {
      constexpr Tev64f largest = std::numeric_limits<Tev32s>::max();
      squares[x] = static_cast<Tev32s>(std::min(Tev64f{square} + Tev64f{height}, largest));
    });
    tevsSqrt_32s16s_Sfs(squares, reinterpret_cast<Tev16s*>(out[y]), width, scaleFactor);
  };
  forEachRowInExactArithmetic(scratch, roiSize, rootRow);
  return tevStatusOk;
}
