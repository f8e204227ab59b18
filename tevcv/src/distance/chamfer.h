// Chamfer distances: the length of the cheapest path to a zero pixel over a few moves, found in two passes over the
// image. The forward pass brings down what paths from above and from the left give, the backward pass, its mirror image
// in a point, the rest.
//
// A row goes in two steps. What the neighbouring rows give is taken for all pixels at once. What runs along the row is
// a scan, each value needing the one before it: d = min(d, previous + straight). Minima commute with the rounding of
// sums, so that float sums are the same to the bit in any order of the neighbours.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "tevcv_internal/frame.h"

namespace tevcv {

// Elements of distances, their greatest value (what no zero pixel reaches), and the weights that callers give.
template <class T>
inline constexpr T farthest = std::numeric_limits<T>::max();
template <class T>
using Metric = std::conditional_t<std::is_floating_point_v<T>, Tev32f, Tev32s>;
// In which weights are compared and combined: integers without overflow, floats in extended precision.
template <class T>
using Wide = std::conditional_t<std::is_floating_point_v<T>, Extended, std::int64_t>;

// Which moves a mask has: the four straight ones; the diagonal ones too; the knight's moves too; and two straight and
// two diagonal steps in one besides, where cheap knights make other compositions dearer than they look.
enum class Form { straight, full, regular, extended };

// The weight of each move. A weight that reaches `farthest` is that: it can win nowhere.
template <class T>
struct Moves {
  T straight{}, diagonal{}, knight{}, twoStraight{}, twoDiagonal{};
  T edgeDiagonal{};              // a diagonal whose cheaper composition would leave the image
  bool twoAlongLastRow = false;  // two straight steps in the last row, at twoStraight
};

template <class T>
T asMove(Wide<T> weight) {
  return static_cast<T>(std::min<Wide<T>>(weight, farthest<T>));
}

template <class T>
struct Field {
  Rows<const Tev8u> src;
  Rows<T> dst;
  TevSize roi;
  Moves<T> moves;
};

template <class T>
TevStatus chamferCheck(const Tev8u* src, int srcStep, const T* dst, int dstStep, TevSize roi, const Metric<T>* metrics,
                       int count) {
  if (TevStatus s = firstFailure(notNull(src, dst), notNull(metrics), region(roi), rowFits<Tev8u>(srcStep, roi.width),
                                 rowFits<T>(dstStep, roi.width), wholeElements<T>(dstStep)))
    return s;
  return failUnless(std::all_of(metrics, metrics + count, [](Metric<T> w) { return w > 0; }), tevStatusBadMetric);
}

// --- A row from its neighbouring rows -------------------------------------------------------------------------------

template <Form form>
inline constexpr int reach = form == Form::straight ? 0
                             : form == Form::full   ? 1
                                                    : 2;

// Integer sums stop at `farthest`; the arithmetic stays in the element's width.
template <class T>
T sum(T distance, T weight) {
  if constexpr (std::is_floating_point_v<T>)
    return distance + weight;
  else
    return static_cast<T>(std::min<T>(distance, static_cast<T>(farthest<T> - weight)) + weight);
}

template <class T>
T least(T a, T b) {
  return b < a ? b : a;
}
template <class T, class... More>
T least(T a, T b, More... more) {
  return least(least(a, b), more...);
}

// A zero pixel is a feature, at distance 0 from itself; any other is as far as can be until a path is found.
template <class T>
T initialDistance(Tev8u pixel) {
  return pixel != 0 ? farthest<T> : T{0};
}

template <class T>
void init_distances_8uC1(const Tev8u* src, T* dst, int width) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) dst[x] = initialDistance<T>(src[x]);
}

// Where the distances of a row come from before its neighbours are looked at. In place the source pixel is read in the
// same step that writes its distance.
enum class From { source, distances };

// Pixels from `begin` to before `end`, all of whose neighbours lie inside the image. `near` is the row next to this
// one, `far` the row behind that.
template <Form form, From from, bool farThere, class T>
void innerPixels(const Tev8u* src, T* d, const T* near, const T* far, int begin, int end, const Moves<T>& moves) {
  const auto [straight, diagonal, knight, twoStraight, twoDiagonal, edgeDiagonal, alongLast] = moves;
#pragma GCC ivdep
  for (int x = begin; x < end; ++x) {
    T best = least(from == From::source ? farthest<T> : d[x], sum(near[x], straight));
    if constexpr (form != Form::straight) best = least(best, sum(least(near[x - 1], near[x + 1]), diagonal));
    if constexpr (form == Form::regular || form == Form::extended) {
      T beyond = least(near[x - 2], near[x + 2]);
      if constexpr (farThere) beyond = least(beyond, far[x - 1], far[x + 1]);
      best = least(best, sum(beyond, knight));
    }
    if constexpr (form == Form::extended && farThere)
      best = least(best, sum(far[x], twoStraight), sum(least(far[x - 2], far[x + 2]), twoDiagonal));
    d[x] = from == From::source && src[x] == 0 ? T{0} : best;
  }
}

// A pixel near the left or right edge: each neighbour is tested. `line` counts the rows of the pass, `way` is 1 for a
// pass from left to right and -1 for its mirror image.
template <Form form, From from, class T>
void edgePixel(const Tev8u* src, T* d, const T* near, const T* far, int x, TevSize roi, int line, int way,
               const Moves<T>& moves) {
  T best = from == From::source ? initialDistance<T>(src[x]) : d[x];
  const int column = way > 0 ? x : roi.width - 1 - x;
  // A cheap diagonal is two knights in truth, by way of a pixel that here would lie outside.
  const auto diagonal = [&](int dx) {
    const bool leaves = line == 1 ? (dx < 0 && column == 1) || (dx > 0 && column == roi.width - 2) : false;
    return leaves || (line == roi.height - 1 && column == 0 && dx > 0) ? moves.edgeDiagonal : moves.diagonal;
  };
  for (int dx = -reach<form>; dx <= reach<form>; ++dx) {
    const int at = x + dx, side = std::abs(dx);
    if (at < 0 || at >= roi.width) continue;
    best = least(best, sum(near[at], side == 0 ? moves.straight : side == 1 ? diagonal(dx * way) : moves.knight));
    if (far == nullptr) continue;
    if (form >= Form::regular && side == 1) best = least(best, sum(far[at], moves.knight));
    if (form == Form::extended && side == 0) best = least(best, sum(far[at], moves.twoStraight));
    if (form == Form::extended && side == 2) best = least(best, sum(far[at], moves.twoDiagonal));
  }
  d[x] = best;
}

// --- Along a row ----------------------------------------------------------------------------------------------------

// `way` is 1 from left to right, -1 from right to left.
template <class T>
void alongRow(T* d, int width, int way, T straight) {
  using Sum = std::conditional_t<std::is_floating_point_v<T>, T, int>;
  Sum previous = farthest<T>;
  T* p = way > 0 ? d : d + width - 1;
  for (int i = 0; i < width; ++i, p += way) {
    previous = least<Sum>(*p, previous + straight);
    *p = static_cast<T>(previous);
  }
}

template <class T>
void alongRow(T* d, int width, int way, T straight, T twoStraight) {
  using Sum = std::conditional_t<std::is_floating_point_v<T>, T, int>;
  Sum previous = farthest<T>, beforeThat = farthest<T>;
  T* p = way > 0 ? d : d + width - 1;
  for (int i = 0; i < width; ++i, p += way) {
    const Sum here = least<Sum>(*p, beforeThat + twoStraight, previous + straight);
    beforeThat = previous;
    previous = here;
    *p = static_cast<T>(here);
  }
}

// --- Passes ---------------------------------------------------------------------------------------------------------

// Row y from the rows on one side of it (1: above, -1: below) and along itself.
template <Form form, From from, class T>
void chamferRow(const Field<T>& f, int y, int side, int way) {
  const int width = f.roi.width, height = f.roi.height;
  const auto there = [&](int row) { return row >= 0 && row < height ? f.dst[row] : nullptr; };
  const T* const near = there(y - side);
  const T* const far = form >= Form::regular ? there(y - 2 * side) : nullptr;
  const Tev8u* const src = from == From::source ? f.src[y] : nullptr;
  T* const d = f.dst[y];
  if (near != nullptr) {
    const int line = side > 0 ? y : height - 1 - y;
    const int begin = std::min(reach<form>, width), end = std::max(begin, width - reach<form>);
    for (int x = 0; x < begin; ++x) edgePixel<form, from>(src, d, near, far, x, f.roi, line, way, f.moves);
    if (far != nullptr)
      innerPixels<form, from, true>(src, d, near, far, begin, end, f.moves);
    else
      innerPixels<form, from, false>(src, d, near, far, begin, end, f.moves);
    for (int x = end; x < width; ++x) edgePixel<form, from>(src, d, near, far, x, f.roi, line, way, f.moves);
  } else if (from == From::source) {
    init_distances_8uC1(src, d, width);
  }
  if (form == Form::extended || (f.moves.twoAlongLastRow && y == height - 1))
    alongRow(d, width, way, f.moves.straight, f.moves.twoStraight);
  else
    alongRow(d, width, way, f.moves.straight);
}

// Rows from `first` to before `stop`, downwards and left to right, or upwards and right to left.
template <Form form, From from, class T>
void chamferRows(const Field<T>& f, int first, int stop) {
  const int way = first < stop ? 1 : -1;
  for (int y = first; y != stop; y += way) chamferRow<form, from>(f, y, way, way);
}

template <Form form, class T>
void chamfer(const Field<T>& f) {
  chamferRows<form, From::source>(f, 0, f.roi.height);
  chamferRows<form, From::distances>(f, f.roi.height - 1, -1);
}

// Two threads begin at both ends of the image, meet at the seam row, the first of the lower half, and go back. The seam
// is settled by one thread. A mask of two rows' reach looks over the seam: the row above it is finished there too, so
// that no thread reads a row which the other is writing.
template <Form form, class T>
void chamferInTwo(const Field<T>& f) {
  const int height = f.roi.height, seam = height / 2;
  const auto inHalves = [&](auto upper, auto lower) {
    forEachShare(height, 2, [&](const Share& half) { half.isFirst() ? upper() : lower(); });
  };
  inHalves([&] { chamferRows<form, From::source>(f, 0, seam); },
           [&] { chamferRows<form, From::source>(f, height - 1, seam - 1); });
  constexpr int above = 1, below = -1, toRight = 1, toLeft = -1;
  int upperRows = seam;
  if constexpr (form == Form::regular) {
    chamferRow<form, From::distances>(f, seam, below, toLeft);
    chamferRow<form, From::distances>(f, seam, above, toRight);
    chamferRow<form, From::distances>(f, seam, above, toLeft);
    if (seam > 0) chamferRow<form, From::distances>(f, --upperRows, below, toLeft);
  } else {
    chamferRow<form, From::distances>(f, seam, above, toRight);
    chamferRow<form, From::distances>(f, seam, below, toLeft);
  }
  inHalves([&] { chamferRows<form, From::distances>(f, upperRows - 1, -1); },
           [&] { chamferRows<form, From::distances>(f, seam + 1, height); });
}

// --- 3 by 3 ---------------------------------------------------------------------------------------------------------

// A diagonal that costs two straight steps is never needed.
template <class T>
Form form3x3(const Metric<T>* metrics) {
  return Wide<T>{metrics[1]} >= 2 * Wide<T>{metrics[0]} ? Form::straight : Form::full;
}

// Where the diagonal is cheaper than the straight step, two pixels of one row are two diagonals apart, by way of the
// next row. The last row has none, and takes the two steps at once.
template <class T>
Moves<T> moves3x3(TevSize roi, const Metric<T>* metrics) {
  const Wide<T> a = metrics[0], b = metrics[1];
  return {.straight = asMove<T>(a),
          .diagonal = asMove<T>(b),
          .twoStraight = asMove<T>(2 * b),
          .edgeDiagonal = asMove<T>(b),
          .twoAlongLastRow = a > b && std::min(roi.width, roi.height) >= 2};
}

template <class T>
TevStatus chamfer3x3(const Tev8u* src, int srcStep, T* dst, int dstStep, TevSize roi, const Metric<T>* metrics) {
  const Field<T> f = {rows(src, srcStep), rows(dst, dstStep), roi, moves3x3<T>(roi, metrics)};
  form3x3<T>(metrics) == Form::straight ? chamfer<Form::straight>(f) : chamfer<Form::full>(f);
  return tevStatusOk;
}

template <class T>
TevStatus chamfer3x3InTwo(const Tev8u* src, int srcStep, T* dst, int dstStep, TevSize roi, const Metric<T>* metrics) {
  const Field<T> f = {rows(src, srcStep), rows(dst, dstStep), roi, moves3x3<T>(roi, metrics)};
  form3x3<T>(metrics) == Form::straight ? chamferInTwo<Form::straight>(f) : chamferInTwo<Form::full>(f);
  return tevStatusOk;
}

// --- 5 by 5 ---------------------------------------------------------------------------------------------------------

// The weights a, b, c as given, with a diagonal that costs no more than two straight steps.
template <class T>
struct Metric5x5 {
  Wide<T> a, b, c;

  explicit Metric5x5(const Metric<T>* metrics)
      : a(metrics[0]), b(std::min<Wide<T>>(metrics[1], 2 * a)), c(metrics[2]) {}

  // Float weights are compared with a tolerance that covers their own rounding.
  static constexpr Extended tolerance = 1e-7;

  // A straight and a diagonal step cost no more than the knight's move.
  bool knightNeverWins() const {
    if constexpr (std::is_floating_point_v<T>)
      return c - a - b > -tolerance * std::fabs(a + b);
    else
      return c >= a + b;
  }

  // No composition of other moves makes up for one of the eight: b > a, c > 2a, 2c > 3b.
  bool isRegular() const {
    if constexpr (std::is_floating_point_v<T>)
      return b - a >= tolerance * std::fabs(b) && c - 2 * a >= tolerance * std::fabs(c) &&
             !(1.5L * b - c > -tolerance * std::fabs(c));
    else
      return b > a && c > 2 * a && 2 * c > 3 * b;
  }

  Moves<T> regularMoves() const {
    return {.straight = asMove<T>(a), .diagonal = asMove<T>(b), .knight = asMove<T>(c), .edgeDiagonal = asMove<T>(b)};
  }

  // Each move at the cost of its cheapest composition.
  Moves<T> extendedMoves() const {
    using Stored = std::conditional_t<std::is_floating_point_v<T>, T, std::int64_t>;
    const Wide<T> a2 = static_cast<Stored>(std::min(a, 3 * c)), b2 = std::min(b, 2 * c);
    return {.straight = asMove<T>(a2),
            .diagonal = asMove<T>(b2),
            .knight = asMove<T>(c),
            .twoStraight = asMove<T>(2 * least(a2, b2, c)),
            .twoDiagonal = asMove<T>(least(a2 + c, 2 * b2)),
            .edgeDiagonal = asMove<T>(b)};
  }
};

template <class T>
TevStatus chamfer5x5(const Tev8u* src, int srcStep, T* dst, int dstStep, TevSize roi, const Metric<T>* metrics) {
  const Metric5x5<T> metric(metrics);
  if (metric.isRegular())
    chamfer<Form::regular>(Field<T>{rows(src, srcStep), rows(dst, dstStep), roi, metric.regularMoves()});
  else
    chamfer<Form::extended>(Field<T>{rows(src, srcStep), rows(dst, dstStep), roi, metric.extendedMoves()});
  return tevStatusOk;
}

template <class T>
TevStatus chamfer5x5InTwo(const Tev8u* src, int srcStep, T* dst, int dstStep, TevSize roi, const Metric<T>* metrics) {
  chamferInTwo<Form::regular>(
      Field<T>{rows(src, srcStep), rows(dst, dstStep), roi, Metric5x5<T>(metrics).regularMoves()});
  return tevStatusOk;
}

// Enough rows of enough pixels for a second thread.
inline bool worthTwoThreads(TevSize roi, int leastWidth) {
  return owncvGetNumThreads() >= 2 && roi.width >= leastWidth && roi.height >= 64;
}

}  // namespace tevcv
