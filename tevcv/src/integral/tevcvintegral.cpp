// Integral images, upright and tilted, of the pixels and of their squares.
//
// Upright, a table row is the row above plus the running sum along the source row. The running sum is found without
// stepping from pixel to pixel: the sum of each sixteen neighbours comes from vector additions of shifted rows, and
// then running[x] = running[x - 16] + window[x], where sixteen neighbours do not depend on each other. Tilted, every
// element of a row comes from the two rows above it and there is nothing to run along.
//
// Tables of floats are defined in extended precision and computed in a narrower type wherever that provably gives the
// same bits (uprightIsDirect, tiltedIsDirect).
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/integral.h"

using namespace tevcv;

namespace {

struct Pixels {
  using Value = Tev8u;
  using WindowSum = Tev16u;  // 16 * 255
  static constexpr int largest = 255;
  static Value of(Tev8u pixel) { return pixel; }
};

struct Squares {
  using Value = Tev16u;
  using WindowSum = Tev32s;
  static constexpr int largest = 255 * 255;
  static Value of(Tev8u pixel) { return static_cast<Value>(pixel * pixel); }
};

// Running sums over a piece of a source row, from its first pixel on.
template <class Terms>
class RunningSums {
 public:
  static constexpr int capacity = 512;

  // The sums of the first pixel, the first two, ... of n <= capacity pixels.
  const Tev32s* over(const Tev8u* pixels, int n) {
    auto* const v = values_ + window;
    auto* const four = fours_ + window;
    auto* const running = running_ + window;
#pragma GCC ivdep
    for (int x = 0; x < n; ++x) v[x] = Terms::of(pixels[x]);
#pragma GCC ivdep
    for (int x = 0; x < n; ++x) four[x] = static_cast<WindowSum>(v[x] + v[x - 1] + v[x - 2] + v[x - 3]);
    for (int x = 0; x < n; ++x)
      running[x] = running[x - window] + static_cast<WindowSum>(four[x] + four[x - 4] + four[x - 8] + four[x - 12]);
    return running;
  }

 private:
  using WindowSum = typename Terms::WindowSum;
  static constexpr int window = 16;
  static_assert(std::int64_t{capacity} * Terms::largest < INT32_MAX);
  // What lies in front of the first pixel stays 0.
  typename Terms::Value values_[window + capacity] = {};
  WindowSum fours_[window + capacity] = {};
  Tev32s running_[window + capacity] = {};
};

// A table under construction.
template <class T>
struct Table {
  Rows<T> rows;
  T value;
  bool direct;  // its sums need no extended precision
};

template <class T>
void fillRow(T* row, int width, T value) {
  for (int x = 0; x < width; ++x) row[x] = value;
}

// A table has `border` columns beyond the source's.
template <class T>
TevStatus tableFits(int step, int width, int border) {
  return failUnless(step >= (std::int64_t{width} + border) * std::int64_t{sizeof(T)}, tevStatusBadStep);
}

// Whether every sum is a whole number that a double holds, whatever the order: the start is whole, and no element is
// further from it than the sum of the whole image, since a tilted table too counts a pixel at most once. Four times
// that covers what stands between the terms of one element. The elements of a float table are rounded to whole numbers;
// each rounding moves what comes after it by no more than itself.
template <class Terms, class T>
bool wholeInDouble(T start, TevSize roi) {
  const Tev64f pixels = static_cast<Tev64f>(roi.width) * roi.height;
  const Tev64f largest = std::fabs(static_cast<Tev64f>(start)) + Terms::largest * pixels;
  const Tev64f roundings = std::is_same_v<T, Tev32f> ? pixels / (1 << 22) : 0.0;
  return start == std::trunc(start) && largest * (4.0 + roundings) < 9007199254740992.0;
}

// ---- Upright ----

// A float plus a whole number that is a float too: one operation, which rounds the same from extended precision.
template <class Terms>
bool uprightIsDirect(Tev32f, TevSize roi) {
  return std::int64_t{roi.width} * Terms::largest <= 1 << 24;
}
template <class Terms>
bool uprightIsDirect(Tev64f start, TevSize roi) {
  return wholeInDouble<Terms>(start, roi);
}
template <class Terms>
bool uprightIsDirect(Tev32s, TevSize) {
  return true;
}

// `before` is the sum of the source row up to this piece.
template <class Sum, class T>
void addRunning(const T* above, const Tev32s* running, Sum before, T* row, int n) {
#pragma GCC ivdep
  for (int x = 0; x < n; ++x)
    row[x] = static_cast<T>(static_cast<Sum>(above[x]) + (before + static_cast<Sum>(running[x])));
}

// One table row: the row above plus the running sums along the source row.
template <class Terms, class T>
void uprightRow(const Tev8u* pixels, int width, RunningSums<Terms>& sums, const Table<T>& table, int y) {
  const T* const above = table.rows[y] + 1;
  T* const row = table.rows[y + 1] + 1;
  row[-1] = table.value;
  std::int64_t before = 0;
  for (int x = 0; x < width; x += sums.capacity) {
    const int n = width - x < sums.capacity ? width - x : sums.capacity;
    const Tev32s* const running = sums.over(pixels + x, n);
    if constexpr (std::is_same_v<T, Tev32s>)
      addRunning(above + x, running, static_cast<std::uint32_t>(before), row + x, n);
    else if (table.direct)
      addRunning(above + x, running, static_cast<T>(before), row + x, n);
    else
      addRunning(above + x, running, static_cast<Extended>(before), row + x, n);
    before += running[n - 1];
  }
}

template <class T>
TevStatus integral(const Tev8u* src, int srcStep, T* dst, int dstStep, TevSize roi, T value) {
  if (TevStatus s = firstFailure(notNull(src, dst), region(roi), rowFits<Tev8u>(srcStep, roi.width),
                                 tableFits<T>(dstStep, roi.width, 1), wholeElements<T>(dstStep)))
    return s;
  const Table<T> table = {rows(dst, dstStep), value, uprightIsDirect<Pixels>(value, roi)};
  RunningSums<Pixels> sums;
  fillRow(dst, roi.width + 1, value);
  for (int y = 0; y < roi.height; ++y) uprightRow(rows(src, srcStep)[y], roi.width, sums, table, y);
  return tevStatusOk;
}

template <class T, class Sqr>
TevStatus sqrIntegral(const Tev8u* src, int srcStep, T* dst, int dstStep, Sqr* sqr, int sqrStep, TevSize roi, T value,
                      Sqr valueSqr) {
  if (TevStatus s = firstFailure(notNull(src, dst, sqr), region(roi), rowFits<Tev8u>(srcStep, roi.width),
                                 tableFits<T>(dstStep, roi.width, 1), tableFits<Sqr>(sqrStep, roi.width, 1),
                                 wholeElements<T>(dstStep), wholeElements<Sqr>(sqrStep)))
    return s;
  const Table<T> table = {rows(dst, dstStep), value, uprightIsDirect<Pixels>(value, roi)};
  const Table<Sqr> sqrTable = {rows(sqr, sqrStep), valueSqr, uprightIsDirect<Squares>(valueSqr, roi)};
  RunningSums<Pixels> sums;
  RunningSums<Squares> sqrSums;
  fillRow(dst, roi.width + 1, value);
  fillRow(sqr, roi.width + 1, valueSqr);
  for (int y = 0; y < roi.height; ++y) {
    const Tev8u* const pixels = rows(src, srcStep)[y];
    uprightRow(pixels, roi.width, sums, table, y);
    uprightRow(pixels, roi.width, sqrSums, sqrTable, y);
  }
  return tevStatusOk;
}

// ---- Tilted ----

template <class Terms>
bool tiltedIsDirect(Tev32s, TevSize) {
  return true;
}
template <class Terms, class T>
bool tiltedIsDirect(T start, TevSize roi) {
  return wholeInDouble<Terms>(start, roi);
}

// Row y + 2 of the table, from source row y and table rows y and y + 1.
template <class Terms, class Sum, class T>
void tiltedRow(const Tev8u* s, const T* r0, const T* r1, T* r2, int width) {
  const auto pixel = [s](int x) { return Tev32s{Terms::of(s[x])}; };
  r2[0] = r1[1];
#pragma GCC ivdep
  for (int x = 1; x < width; ++x)
    r2[x] = static_cast<T>(static_cast<Sum>(pixel(x - 1) + pixel(x)) + static_cast<Sum>(r1[x - 1]) +
                           static_cast<Sum>(r1[x + 1]) - static_cast<Sum>(r0[x]));
  r2[width] = static_cast<T>(static_cast<Sum>(pixel(width - 1)) + static_cast<Sum>(r1[width - 1]) +
                             static_cast<Sum>(r1[width + 1]) - static_cast<Sum>(r0[width]));
  r2[width + 1] = r1[width];
}

template <class Terms, class T>
void tiltedRow(const Tev8u* pixels, int width, const Table<T>& table, int y) {
  using Direct = std::conditional_t<std::is_same_v<T, Tev32s>, std::uint32_t, Tev64f>;
  const T* const r0 = table.rows[y];
  const T* const r1 = table.rows[y + 1];
  T* const r2 = table.rows[y + 2];
  if (table.direct)
    tiltedRow<Terms, Direct>(pixels, r0, r1, r2, width);
  else
    tiltedRow<Terms, Extended>(pixels, r0, r1, r2, width);
}

template <class T>
TevStatus tiltedIntegral(const Tev8u* src, int srcStep, T* dst, int dstStep, TevSize roi, T value) {
  if (TevStatus s = firstFailure(notNull(src, dst), region(roi), rowFits<Tev8u>(srcStep, roi.width),
                                 tableFits<T>(dstStep, roi.width, 2), wholeElements<T>(dstStep)))
    return s;
  const Table<T> table = {rows(dst, dstStep), value, tiltedIsDirect<Pixels>(value, roi)};
  for (int y = 0; y < 2; ++y) fillRow(table.rows[y], roi.width + 2, value);
  for (int y = 0; y < roi.height; ++y) tiltedRow<Pixels>(rows(src, srcStep)[y], roi.width, table, y);
  return tevStatusOk;
}

template <class T, class Sqr>
TevStatus tiltedSqrIntegral(const Tev8u* src, int srcStep, T* dst, int dstStep, Sqr* sqr, int sqrStep, TevSize roi,
                            T value, Sqr valueSqr) {
  if (TevStatus s = firstFailure(notNull(src, dst, sqr), region(roi), rowFits<Tev8u>(srcStep, roi.width),
                                 tableFits<T>(dstStep, roi.width, 2), tableFits<Sqr>(sqrStep, roi.width, 2),
                                 wholeElements<T>(dstStep), wholeElements<Sqr>(sqrStep)))
    return s;
  const Table<T> table = {rows(dst, dstStep), value, tiltedIsDirect<Pixels>(value, roi)};
  const Table<Sqr> sqrTable = {rows(sqr, sqrStep), valueSqr, tiltedIsDirect<Squares>(valueSqr, roi)};
  for (int y = 0; y < 2; ++y) {
    fillRow(table.rows[y], roi.width + 2, value);
    fillRow(sqrTable.rows[y], roi.width + 2, valueSqr);
  }
  for (int y = 0; y < roi.height; ++y) {
    const Tev8u* const pixels = rows(src, srcStep)[y];
    tiltedRow<Pixels>(pixels, roi.width, table, y);
    tiltedRow<Squares>(pixels, roi.width, sqrTable, y);
  }
  return tevStatusOk;
}

}  // namespace

TevStatus teviIntegral_8u32s_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roiSize,
                                 Tev32s value) {
  return integral(src, srcStep, dst, dstStep, roiSize, value);
}

TevStatus teviIntegral_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                 Tev32f value) {
  return integral(src, srcStep, dst, dstStep, roiSize, value);
}

TevStatus teviTiltedIntegral_8u32s_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, TevSize roiSize,
                                       Tev32s value) {
  return tiltedIntegral(src, srcStep, dst, dstStep, roiSize, value);
}

TevStatus teviTiltedIntegral_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                       Tev32f value) {
  return tiltedIntegral(src, srcStep, dst, dstStep, roiSize, value);
}

TevStatus teviSqrIntegral_8u32s_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, Tev32s* sqr, int sqrStep,
                                    TevSize roiSize, Tev32s value, Tev32s valueSqr) {
  return sqrIntegral(src, srcStep, dst, dstStep, sqr, sqrStep, roiSize, value, valueSqr);
}

TevStatus teviSqrIntegral_8u32s64f_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, Tev64f* sqr,
                                       int sqrStep, TevSize roiSize, Tev32s value, Tev64f valueSqr) {
  return sqrIntegral(src, srcStep, dst, dstStep, sqr, sqrStep, roiSize, value, valueSqr);
}

TevStatus teviSqrIntegral_8u32f64f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, Tev64f* sqr,
                                       int sqrStep, TevSize roiSize, Tev32f value, Tev64f valueSqr) {
  return sqrIntegral(src, srcStep, dst, dstStep, sqr, sqrStep, roiSize, value, valueSqr);
}

TevStatus teviTiltedSqrIntegral_8u32s_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, Tev32s* sqr,
                                          int sqrStep, TevSize roiSize, Tev32s value, Tev32s valueSqr) {
  return tiltedSqrIntegral(src, srcStep, dst, dstStep, sqr, sqrStep, roiSize, value, valueSqr);
}

TevStatus teviTiltedSqrIntegral_8u32s64f_C1R(const Tev8u* src, int srcStep, Tev32s* dst, int dstStep, Tev64f* sqr,
                                             int sqrStep, TevSize roiSize, Tev32s value, Tev64f valueSqr) {
  return tiltedSqrIntegral(src, srcStep, dst, dstStep, sqr, sqrStep, roiSize, value, valueSqr);
}

TevStatus teviTiltedSqrIntegral_8u32f64f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, Tev64f* sqr,
                                             int sqrStep, TevSize roiSize, Tev32f value, Tev64f valueSqr) {
  return tiltedSqrIntegral(src, srcStep, dst, dstStep, sqr, sqrStep, roiSize, value, valueSqr);
}
