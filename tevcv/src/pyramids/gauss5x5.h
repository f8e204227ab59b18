// What the integer and the float form of the Gaussian pyramid steps share: checks, the ring of filtered rows in the
// caller's buffer, the order in which rows enter the ring and leave it.
//
// Each source row is filtered horizontally once, when the first output row needs it, into the ring's next row; output
// rows are then sums over ring rows. The kernel is 1 4 6 4 1 in both directions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/borders.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/types.h"

namespace tevcv::gauss5x5 {

// Half of n, rounded up.
constexpr int halved(int n) { return n / 2 + n % 2; }

constexpr std::int64_t ringStride(int pixels, int channels) {
  return (std::int64_t{pixels} * channels * 4 + 15) & ~std::int64_t{15};
}

inline constexpr int downRingRows = 6, upRingRows = 3;

// Rows of 32 bits an element from the buffer's first multiple of 32 on.
template <class Element>
class Ring {
 public:
  Ring(Tev8u* buffer, int pixels, int channels)
      : first_(buffer + (-reinterpret_cast<std::uintptr_t>(buffer) & 31)),
        stride_(static_cast<std::ptrdiff_t>(ringStride(pixels, channels))) {
    static_assert(sizeof(Element) <= 4);
  }
  Element* operator[](int slot) const { return reinterpret_cast<Element*>(first_ + slot * stride_); }

 private:
  Tev8u* first_;
  std::ptrdiff_t stride_;
};

template <class T>
TevStatus checkDown(const T* src, int srcStep, const T* dst, int dstStep, TevSize roi, const Tev8u* buffer,
                    int channels) {
  return firstFailure(notNull(src, dst, buffer), region(roi), rowFits<T>(srcStep, roi.width, channels),
                      rowFits<T>(dstStep, halved(roi.width), channels), wholeElements<T>(srcStep),
                      wholeElements<T>(dstStep));
}

template <class T>
TevStatus checkUp(const T* src, int srcStep, const T* dst, int dstStep, TevSize roi, const Tev8u* buffer,
                  int channels) {
  return firstFailure(notNull(src, dst, buffer), region(roi), rowFits<T>(srcStep, roi.width, channels),
                      rowFits<T>(dstStep, roi.width, 2 * channels), wholeElements<T>(srcStep),
                      wholeElements<T>(dstStep));
}

// Calls filterRow(y, slot) for every source row once, and combineRows(y, slots of the five rows around 2 * y) for every
// output row. Rows outside the image are reflections about its first and last row.
template <class FilterRow, class CombineRows>
void reduceRows(int height, FilterRow filterRow, CombineRows combineRows) {
  int filtered = 0;
  for (int y = 0; y < halved(height); ++y) {
    const int centre = 2 * y;
    for (; filtered < height && filtered - 2 <= centre; ++filtered) filterRow(filtered, filtered % downRingRows);
    const auto slot = [&](int offset) { return borderIndex(centre + offset, height, tevBorderMirror) % downRingRows; };
    combineRows(y, slot(-2), slot(-1), slot(0), slot(1), slot(2));
  }
}

// Calls filterRow(y, slot) for every source row once, and combineRows(y, slots of the rows y - 1, y, y + 1) for every
// source row. The row above the first is the second; the row below the last is the last itself. Callers depend on this
// one-sided rule.
template <class FilterRow, class CombineRows>
void expandRows(int height, FilterRow filterRow, CombineRows combineRows) {
  int filtered = 0;
  for (int y = 0; y < height; ++y) {
    for (; filtered < height && filtered - 1 <= y; ++filtered) filterRow(filtered, filtered % upRingRows);
    const int above = y > 0 ? y - 1 : std::min(1, height - 1), below = std::min(y + 1, height - 1);
    combineRows(above % upRingRows, y % upRingRows, below % upRingRows, y);
  }
}

// Outputs that one pass over the short local arrays of a row kernel makes.
inline constexpr int blockPixels = 256;

// Splits 2 * pairs pixels into those at even and those at odd places, then adds one more even pixel.
template <int channels, class T, class E>
void splitPixels(const T* s, int pairs, E* even, E* odd) {
  if constexpr (channels == 1) {
    for (int x = 0; x < pairs; ++x) {
      even[x] = s[2 * x];
      odd[x] = s[2 * x + 1];
    }
  } else if constexpr (channels == 3 && sizeof(T) == 1 && sizeof(E) == 1) {
    // Four bytes at a time; the fourth is overwritten by the next pixel. Another pixel follows each of these.
    for (int x = 0; x < pairs; ++x) {
      std::memcpy(even + 3 * x, s + 6 * x, 4);
      std::memcpy(odd + 3 * x, s + 6 * x + 3, 4);
    }
  } else {
    for (int x = 0; x < pairs; ++x)
      for (int c = 0; c < channels; ++c) {
        even[channels * x + c] = s[2 * channels * x + c];
        odd[channels * x + c] = s[2 * channels * x + channels + c];
      }
  }
  for (int c = 0; c < channels; ++c) even[channels * pairs + c] = s[2 * channels * pairs + c];
}

// The sum 1 4 6 4 1 around `centre` of a line of values, reflected about its ends, however short it is. `at` gives the
// value at a place.
template <class Value, class At>
Value fiveTaps(int centre, int length, At at) {
  const auto tap = [&](int offset) { return Value{at(borderIndex(centre + offset, length, tevBorderMirror))}; };
  return tap(-2) + 4 * tap(-1) + 6 * tap(0) + 4 * tap(1) + tap(2);
}

// An image of one or two rows: each row weighs 8, a single one 16. `Value` is the type of all sums; `store` makes an
// element of a sum that is 256 times too large.
template <class Value, class T, class Store>
void reduceLowImage(Rows<const T> src, Rows<T> dst, TevSize roi, int channels, Store store) {
  const T *const a = src[0], *const b = src[roi.height - 1];
  for (int x = 0; x < halved(roi.width); ++x)
    for (int c = 0; c < channels; ++c) {
      const auto column = [&](int at) { return Value{a[at * channels + c]} + Value{b[at * channels + c]}; };
      dst[0][x * channels + c] = store(fiveTaps<Value>(2 * x, roi.width, column) * 8);
    }
}

// An image of one or two columns, likewise.
template <class Value, class T, class Store>
void reduceNarrowImage(Rows<const T> src, Rows<T> dst, TevSize roi, int channels, Store store) {
  const int last = (roi.width - 1) * channels;
  for (int y = 0; y < halved(roi.height); ++y)
    for (int c = 0; c < channels; ++c) {
      const auto row = [&](int at) { return Value{src[at][c]} + Value{src[at][last + c]}; };
      dst[y][c] = store(fiveTaps<Value>(2 * y, roi.height, row) * 8);
    }
}

}  // namespace tevcv::gauss5x5
