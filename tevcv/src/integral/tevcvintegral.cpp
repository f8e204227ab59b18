// Integral images, upright and tilted, of the pixels and of their squares.
//
// Upright, a table row is the row above plus the running sum along the source row (running_sums.h). Tilted, every
// element of a row comes from the two rows above it and there is nothing to run along.
//
// Tables of floats are defined in extended precision and computed in a narrower type wherever that provably gives the
// same bits (uprightIsDirect, tiltedIsDirect).
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "integral/running_sums.h"
#include "tevcv/integral.h"

using namespace tevcv;

namespace {

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

// How the elements of a table are formed: in vectors where every running sum is a whole number of 32 bits and one
// addition in the table's own type gives the defined result, or by the definition.
template <class Terms>
bool uprightIsDirect(Tev32s, TevSize) {
  return true;
}
// A float plus a whole number that is a float too: one operation, which rounds the same from extended precision.
template <class Terms>
bool uprightIsDirect(Tev32f, TevSize roi) {
  return std::int64_t{roi.width} * Terms::largest <= 1 << 24;
}
template <class Terms>
bool uprightIsDirect(Tev64f start, TevSize roi) {
  return std::int64_t{roi.width} * Terms::largest <= INT32_MAX && wholeInDouble<Terms>(start, roi);
}

// The definition: the row above plus the running sum along the source row.
template <class Terms, class T>
void uprightRow(const Tev8u* pixels, const T* above, T* row, int width) {
  std::int64_t sum = 0;
  for (int x = 0; x < width; ++x) {
    sum += Terms::of(pixels[x]);
    row[x] = static_cast<T>(static_cast<Extended>(above[x]) + static_cast<Extended>(sum));
  }
}

// Integer tables wrap, so their elements are added as unsigned words, and so are their running sums.
template <class T>
using Number = std::conditional_t<std::is_same_v<T, Tev32s>, std::uint32_t, T>;
template <class T>
using Word = std::conditional_t<std::is_same_v<T, Tev32s>, std::uint32_t, Tev32s>;

// Columns x to x + 7 of the table rows below the first one, from the running sums along their source rows.
template <class T, class Sums>
void addRunning(Rows<T> table, std::ptrdiff_t x, Sums first, Sums second) {
  constexpr int lanes = sizeof(Sums) / 16, parts = partsOfEight<T, lanes>;
  const auto addPart = [&]<int part, int... row>(std::integral_constant<int, part>,
                                                 std::integer_sequence<int, row...>) {
    const std::ptrdiff_t at = x + 4 * part;
    auto cells = load<Vector<Number<T>, 8 / parts>>(table[0] + at);
    ((cells += asNumbers<Number<T>, row, part>(first, second), store(table[row + 1] + at, cells)), ...);
  };
  // Doubles outgrow the caches near the processor: the same columns of the rows that come next are called for now.
  if constexpr (sizeof(T) == 8)
    for (int r = 1; r <= lanes; ++r) __builtin_prefetch(table[lanes + r] + x, 1);
  addPart(std::integral_constant<int, 0>{}, std::make_integer_sequence<int, lanes>{});
  if constexpr (parts == 2) addPart(std::integral_constant<int, 1>{}, std::make_integer_sequence<int, lanes>{});
}

// `lanes` table rows below table[0] from as many source rows.
template <class Terms, int lanes, class T>
void uprightRows(Rows<const Tev8u> src, Rows<T> table, int width) {
  constexpr int block = 16;
  RunningSums<Terms, Word<T>, lanes> sums;
  int x = 0;
  for (; x <= width - block; x += block)
    sums.next(src[0] + x, src.step(), [&](int i, auto first, auto second) { addRunning(table, x + i, first, second); });
  if (x == width) return;
  // The rest of the rows by way of a block of their own.
  const std::size_t rest = static_cast<std::size_t>(width - x);
  Tev8u pixels[lanes][block] = {};
  T cells[lanes + 1][block] = {};
  std::memcpy(cells[0], table[0] + x, rest * sizeof(T));
  for (int r = 0; r < lanes; ++r) std::memcpy(pixels[r], src[r] + x, rest);
  sums.next(pixels[0], block,
            [&](int i, auto first, auto second) { addRunning(rows(cells[0], sizeof cells[0]), i, first, second); });
  for (int r = 1; r <= lanes; ++r) std::memcpy(table[r] + x, cells[r], rest * sizeof(T));
}

// Table rows y + 1 to y + count from source rows y to y + count - 1, count being 1 or rowsTogether.
template <class Terms, class T>
void uprightRows(Rows<const Tev8u> src, int width, const Table<T>& table, int y, int count) {
  for (int r = 1; r <= count; ++r) table.rows[y + r][0] = table.value;
  const Rows<T> cells(table.rows[y] + 1, table.rows.step());
  if (!table.direct)
    for (int r = 0; r < count; ++r) uprightRow<Terms>(src[y + r], cells[r], cells[r + 1], width);
  else if (count == rowsTogether)
    uprightRows<Terms, rowsTogether>(src.from(y), cells, width);
  else
    uprightRows<Terms, 1>(src.from(y), cells, width);
}

// Calls work(y, count) for all rows, for as many at a time as go together.
template <class Work>
void forRowsTogether(int height, Work work) {
  int y = 0;
  for (; y <= height - rowsTogether; y += rowsTogether) work(y, rowsTogether);
  for (; y < height; ++y) work(y, 1);
}

template <class T>
TevStatus integral(const Tev8u* src, int srcStep, T* dst, int dstStep, TevSize roi, T value) {
  if (TevStatus s = firstFailure(notNull(src, dst), region(roi), rowFits<Tev8u>(srcStep, roi.width),
                                 tableFits<T>(dstStep, roi.width, 1), wholeElements<T>(dstStep)))
    return s;
  const Table<T> table = {rows(dst, dstStep), value, uprightIsDirect<Pixels>(value, roi)};
  fillRow(dst, roi.width + 1, value);
  forRowsTogether(roi.height,
                  [&](int y, int count) { uprightRows<Pixels>(rows(src, srcStep), roi.width, table, y, count); });
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
  fillRow(dst, roi.width + 1, value);
  fillRow(sqr, roi.width + 1, valueSqr);
  forRowsTogether(roi.height, [&](int y, int count) {
    uprightRows<Pixels>(rows(src, srcStep), roi.width, table, y, count);
    uprightRows<Squares>(rows(src, srcStep), roi.width, sqrTable, y, count);
  });
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
