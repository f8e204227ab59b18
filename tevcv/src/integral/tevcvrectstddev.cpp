// Standard deviation of the pixels under a rectangle, at every position of it, from a sum table and a square table:
// sqrt(Q / A - (S / A)^2), S and Q being the rectangle's sums and A its area.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "integral/shares.h"
#include "tevcv/integral.h"
#include "tevcv_internal/integral.h"

using namespace tevcv;

namespace {

// A rectangle's sum is that of four cells of the table; these are their places, in the order in which they are added.
struct Cell {
  std::ptrdiff_t row, column;
};

struct Upright {
  static std::int64_t area(TevRect r) { return std::int64_t{r.width} * r.height; }
  // The elements that a table's row must hold.
  static std::int64_t reach(TevSize roi, TevRect r) { return std::int64_t{roi.width} + r.x + r.width; }
  static void corners(TevRect r, Cell (&cells)[4]) {
    const std::ptrdiff_t x = r.x, y = r.y, w = r.width, h = r.height;
    cells[0] = {y + h, x + w};
    cells[1] = {y, x + w};
    cells[2] = {y, x};
    cells[3] = {y + h, x};
  }
  template <class V>
  static V sum(V a, V b, V c, V d) {
    return a - b + c - d;
  }
};

// Tilted, the rectangle hangs from its top corner, and its left corner may lie left of the table's first column.
struct Tilted {
  static std::int64_t area(TevRect r) { return 2 * Upright::area(r); }
  static std::int64_t reach(TevSize roi, TevRect r) { return Upright::reach(roi, r) + r.y + r.height - 1; }
  static void corners(TevRect r, Cell (&cells)[4]) {
    const std::ptrdiff_t x = r.x, y = r.y, w = r.width, h = r.height;
    cells[0] = {x + y + w + h, x - y + w - h};
    cells[1] = {x + y + h, x - y - h};
    cells[2] = {x + y + w, x - y + w};
    cells[3] = {x + y, x - y};
  }
  template <class V>
  static V sum(V a, V b, V c, V d) {
    return a - b - c + d;
  }
};

// The sums of the rectangle along one row of positions. Those of integer tables wrap and are read as signed.
template <class Shape, class T>
class RectangleSums {
 public:
  RectangleSums(Rows<const T> table, const Cell (&cells)[4], int y)
      : a_(table[y + cells[0].row] + cells[0].column),
        b_(table[y + cells[1].row] + cells[1].column),
        c_(table[y + cells[2].row] + cells[2].column),
        d_(table[y + cells[3].row] + cells[3].column) {}

  Extended operator[](int x) const {
    if constexpr (std::is_integral_v<T>)
      return static_cast<T>(sum<std::uint32_t>(x));
    else
      return sum<Extended>(x);
  }

 private:
  template <class V>
  V sum(int x) const {
    return Shape::template sum<V>(static_cast<V>(a_[x]), static_cast<V>(b_[x]), static_cast<V>(c_[x]),
                                  static_cast<V>(d_[x]));
  }
  const T *a_, *b_, *c_, *d_;
};

Extended deviation(Extended sum, Extended squareSum, Extended area) {
  const Extended mean = sum / area, variance = squareSum / area - mean * mean;
  return variance > 0 ? std::sqrt(variance) : 0;  // 0 for a NaN too
}

// What a deviation is stored as.
struct AsFloat {
  using Element = Tev32f;
  Element operator()(Extended d) const { return static_cast<Tev32f>(d); }
};
struct AsScaledInteger {
  using Element = Tev32s;
  // Deviations of integer tables lie far inside 2^-200 .. 2^200, so that a factor beyond these changes nothing.
  explicit AsScaledInteger(int scaleFactor) : factor(std::ldexp(Extended{1}, -std::clamp(scaleFactor, -200, 200))) {}
  // What does not fit is stored as the lowest value, as the processor's own conversion leaves it.
  Element operator()(Extended d) const {
    const Extended scaled = d * factor + Extended{0.5};
    return scaled < Extended{2147483648.0} ? static_cast<Tev32s>(scaled) : INT32_MIN;
  }
  Extended factor;
};

template <class Shape, class T, class Sqr, class Store>
void deviations(Rows<const T> src, Rows<const Sqr> sqr, Rows<typename Store::Element> dst, TevSize roi, TevRect rect,
                Extended area, Store store) {
  Cell cells[4];
  Shape::corners(rect, cells);
  for (int y = 0; y < roi.height; ++y) {
    const RectangleSums<Shape, T> sums(src, cells, y);
    const RectangleSums<Shape, Sqr> squareSums(sqr, cells, y);
    auto* const d = dst[y];
    for (int x = 0; x < roi.width; ++x) d[x] = store(deviation(sums[x], squareSums[x], area));
  }
}

// The area is a float where the table is one.
template <class Shape, class T>
Extended areaOf(TevRect rect) {
  return std::is_same_v<T, Tev32f> ? static_cast<Extended>(static_cast<Tev32f>(Shape::area(rect)))
                                   : static_cast<Extended>(Shape::area(rect));
}

template <class Shape, class T, class Sqr, class D>
TevStatus checked(const T* src, int srcStep, const Sqr* sqr, int sqrStep, const D* dst, int dstStep, TevSize roi,
                  TevRect rect) {
  const std::int64_t reach = Shape::reach(roi, rect);
  const auto reachFits = [reach](int step, int size) { return failUnless(step >= reach * size, tevStatusBadStep); };
  return firstFailure(notNull(src, dst, sqr), region(roi), reachFits(srcStep, sizeof(T)),
                      rowFits<D>(dstStep, roi.width), reachFits(sqrStep, sizeof(Sqr)), wholeElements<T>(srcStep),
                      wholeElements<D>(dstStep), wholeElements<Sqr>(sqrStep),
                      failUnless(rect.x >= 0 && rect.y >= 0 && rect.width >= 1 && rect.height >= 1, tevStatusBadSize));
}

template <class Shape, class T, class Sqr, class Store>
TevStatus rectStdDev(const T* src, int srcStep, const Sqr* sqr, int sqrStep, typename Store::Element* dst, int dstStep,
                     TevSize roi, TevRect rect, Store store) {
  if (TevStatus s = checked<Shape>(src, srcStep, sqr, sqrStep, dst, dstStep, roi, rect)) return s;
  deviations<Shape>(rows(src, srcStep), rows(sqr, sqrStep), rows(dst, dstStep), roi, rect, areaOf<Shape, T>(rect),
                    store);
  return tevStatusOk;
}

}  // namespace

TevStatus ownRectStdDev_32f_C1R_PX(const Tev32f* src, int srcStep, const Tev64f* sqr, int sqrStep, Tev32f* dst,
                                   int dstStep, TevSize roiSize, TevRect rect) {
  deviations<Upright>(rows(src, srcStep), rows(sqr, sqrStep), rows(dst, dstStep), roiSize, rect,
                      areaOf<Upright, Tev32f>(rect), AsFloat{});
  return tevStatusOk;
}

TevStatus teviRectStdDev_32f_C1R(const Tev32f* src, int srcStep, const Tev64f* sqr, int sqrStep, Tev32f* dst,
                                 int dstStep, TevSize roiSize, TevRect rect) {
  if (TevStatus s = checked<Upright>(src, srcStep, sqr, sqrStep, dst, dstStep, roiSize, rect)) return s;
  const auto work = [&](const Share& share) {
    const int y = share.firstRow;
    ownRectStdDev_32f_C1R_PX(rows(src, srcStep)[y], srcStep, rows(sqr, sqrStep)[y], sqrStep, rows(dst, dstStep)[y],
                             dstStep, {roiSize.width, share.rows}, rect);
  };
  const int shares = sharesOf(roiSize);
  if (shares < 2)
    work(shareOfRows(roiSize.height, 1, 0));
  else
    forEachShare(roiSize.height, shares, work);
  return tevStatusOk;
}

TevStatus teviRectStdDev_32s32f_C1R(const Tev32s* src, int srcStep, const Tev64f* sqr, int sqrStep, Tev32f* dst,
                                    int dstStep, TevSize roiSize, TevRect rect) {
  return rectStdDev<Upright>(src, srcStep, sqr, sqrStep, dst, dstStep, roiSize, rect, AsFloat{});
}

TevStatus teviRectStdDev_32s_C1RSfs(const Tev32s* src, int srcStep, const Tev32s* sqr, int sqrStep, Tev32s* dst,
                                    int dstStep, TevSize roiSize, TevRect rect, int scaleFactor) {
  return rectStdDev<Upright>(src, srcStep, sqr, sqrStep, dst, dstStep, roiSize, rect, AsScaledInteger{scaleFactor});
}

TevStatus teviTiltedRectStdDev_32f_C1R(const Tev32f* src, int srcStep, const Tev64f* sqr, int sqrStep, Tev32f* dst,
                                       int dstStep, TevSize roiSize, TevRect rect) {
  return rectStdDev<Tilted>(src, srcStep, sqr, sqrStep, dst, dstStep, roiSize, rect, AsFloat{});
}

TevStatus teviTiltedRectStdDev_32s32f_C1R(const Tev32s* src, int srcStep, const Tev64f* sqr, int sqrStep, Tev32f* dst,
                                          int dstStep, TevSize roiSize, TevRect rect) {
  return rectStdDev<Tilted>(src, srcStep, sqr, sqrStep, dst, dstStep, roiSize, rect, AsFloat{});
}

TevStatus teviTiltedRectStdDev_32s_C1RSfs(const Tev32s* src, int srcStep, const Tev32s* sqr, int sqrStep, Tev32s* dst,
                                          int dstStep, TevSize roiSize, TevRect rect, int scaleFactor) {
  return rectStdDev<Tilted>(src, srcStep, sqr, sqrStep, dst, dstStep, roiSize, rect, AsScaledInteger{scaleFactor});
}
