// Boundaries of labelled regions: of two neighbours with different labels one becomes boundary. Without costs it is
// always the later one, right or below; with costs (the watershed's arrival times) the one of higher cost.
//
// Rows are treated top to bottom, each against the row above as it then stands, so a boundary stays one pixel wide.
#include <algorithm>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/segmentation.h"
#include "tevcv_internal/segmentation.h"

using namespace tevcv;

namespace {

constexpr bool differs(Tev8u neighbour, Tev8u pixel, Tev8u boundary) {
  return (neighbour != boundary) & (neighbour != pixel);
}

// Each pixel against the `reach` pixels beside the one above it, and that one. A pixel depends on the row above alone.
template <int reach>
void boundFromAbove(const Tev8u* up, Tev8u* cur, int width, Tev8u boundary) {
  for (int x = 0; x < std::min(reach, width); ++x) {
    bool marked = differs(up[x], cur[x], boundary);
    if (x + 1 < width) marked |= differs(up[x + 1], cur[x], boundary);
    if (marked) cur[x] = boundary;
  }
#pragma GCC ivdep
  for (int x = reach; x < width - reach; ++x) {
    bool marked = differs(up[x], cur[x], boundary);
    if constexpr (reach == 1) marked |= differs(up[x - 1], cur[x], boundary) | differs(up[x + 1], cur[x], boundary);
    cur[x] = marked ? boundary : cur[x];
  }
  if (const int x = width - 1; reach == 1 && x >= 1)
    if (differs(up[x - 1], cur[x], boundary) | differs(up[x], cur[x], boundary)) cur[x] = boundary;
}

// Each pixel against its left neighbour as it now stands: one that has become boundary marks nobody.
void boundFromLeft(Tev8u* cur, int width, Tev8u boundary) {
  Tev8u left = cur[0];
  for (int x = 1; x < width; ++x) {
    const Tev8u pixel = cur[x];
    left = differs(left, pixel, boundary) ? boundary : pixel;
    cur[x] = left;
  }
}

struct CostRow {
  Tev8u* label;
  const Tev32s* cost;
};

// The loser of two neighbours with different labels: true if the first one has to become boundary.
constexpr bool firstLoses(Tev32s first, Tev32s second) { return first > second; }

// The horizontal pair at x and x + 1: marks one where they differ. Returns the next x: behind a pixel that was just
// marked there is no pair. Boundary pixels take part like any other label.
int boundPair(const CostRow& row, int x, Tev8u boundary) {
  if (row.label[x] == row.label[x + 1]) return x + 1;
  if (firstLoses(row.cost[x], row.cost[x + 1])) {
    row.label[x] = boundary;
    return x + 1;
  }
  row.label[x + 1] = boundary;
  return x + 2;
}

// The pair of the pixel at x and one of the row above, at column u. Returns true if the lower one was marked.
bool boundAgainst(const CostRow& up, int u, const CostRow& cur, int x, Tev8u boundary) {
  if (!differs(up.label[u], cur.label[x], boundary)) return false;
  const bool upper = firstLoses(up.cost[u], cur.cost[x]);
  (upper ? up.label[u] : cur.label[x]) = boundary;
  return !upper;
}

// Pairs across corners. A pixel that is boundary already takes no part. The last column's own vertical pair is compared
// nowhere in this mode; the watershed's boundaries depend on that gap.
void boundDiagonals(const CostRow& up, const CostRow& cur, int width, Tev8u boundary) {
  for (int x = 0; x < width; ++x) {
    if (cur.label[x] == boundary) continue;
    if (x > 0 && boundAgainst(up, x - 1, cur, x, boundary)) continue;
    if (x < width - 1) boundAgainst(up, x + 1, cur, x, boundary);
  }
}

}  // namespace

TevStatus teviBoundSegments_8u_C1IR(Tev8u* markers, int markerStep, TevSize roiSize, Tev8u boundaryValue, int norm) {
  if (TevStatus s = firstFailure(notNull(markers), region(roiSize), rowFits<Tev8u>(markerStep, roiSize.width),
                                 failUnless(norm == 0 || norm == 1, tevStatusBadArg)))
    return s;
  const auto row = rows(markers, markerStep);
  const int width = roiSize.width;
  boundFromLeft(row[0], width, boundaryValue);
  for (int y = 1; y < roiSize.height; ++y) {
    if (norm == 0)
      boundFromAbove<1>(row[y - 1], row[y], width, boundaryValue);
    else
      boundFromAbove<0>(row[y - 1], row[y], width, boundaryValue);
    boundFromLeft(row[y], width, boundaryValue);
  }
  return tevStatusOk;
}

void ownBoundSegments_8u_C1IR(Tev8u* markers, int markerStep, const Tev32s* cost, int costStep, int width, int height,
                              Tev8u boundaryValue, int mode) {
  const auto labels = rows(markers, markerStep);
  const auto costs = rows(cost, costStep);
  const bool crossesCorners = mode != 1 && width > 1;
  CostRow cur = {labels[0], costs[0]};
  for (int x = 0; x < width - 1;) x = boundPair(cur, x, boundaryValue);
  for (int y = 1; y < height; ++y) {
    const CostRow up = cur;
    cur = {labels[y], costs[y]};
    int x = 0;
    while (x < width - 1) x = boundAgainst(up, x, cur, x, boundaryValue) ? x + 1 : boundPair(cur, x, boundaryValue);
    if (crossesCorners)
      boundDiagonals(up, cur, width, boundaryValue);
    else if (x == width - 1)  // not where the last pair's jump led past the end
      boundAgainst(up, x, cur, x, boundaryValue);
  }
}
