// Watershed from markers, in two complete methods.
//
// Flooding. Water rises from level 0 to 255. Pixels next to a labelled one wait in the queue of the level at which they
// go under, first come first served; each takes its label as it joins the queue, and hands it on as it leaves. The
// level never falls.
//
// Sweeping. Each pixel keeps the cost of its best path to a marker, a pair in one word: the highest pixel on the path
// in the bits from 23 up, below them the length of the path since it reached that height. Sweeps down and up, each row
// from left to right and back, relax the costs until nothing changes; a pixel remembers in which direction its path
// goes and takes the label found there. Flags keep later sweeps to the surroundings of what has changed.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "frame/checks.h"
#include "frame/rows.h"
#include "segmentation/level_queue.h"
#include "tevcv/primitives.h"
#include "tevcv/segmentation.h"
#include "tevcv_internal/segmentation.h"

using namespace tevcv;

namespace {

constexpr std::uint32_t methods = tevWatershedQueue | tevWatershedSweep;
constexpr std::uint32_t boundaries = tevWatershedBound4 | tevWatershedBound8;
constexpr Tev8u boundary = 255;

constexpr TevStatus normOfMethod(int norm, std::uint32_t flags) {
  const int last = flags & tevWatershedQueue ? tevWatershedNormCity : tevWatershedNormEikonal;
  return failUnless(norm >= 0 && norm <= last, tevStatusBadArg);
}

std::ptrdiff_t roundUpTo32(int width) { return (std::ptrdiff_t{width} + 31) & -32; }

// --- Flooding -------------------------------------------------------------------------------------------------------

enum class Bound { none, four, eight };

// The one label that the first `count` neighbours of a pixel carry, boundary and unlabelled ones aside; boundary if
// they carry several or none. The pixel that water comes from is among them. Whether one starts from its label and
// looks at the others in turn, or takes them all together, comes to the same.
template <int count>
Tev8u commonLabel(const Tev8u* pixel, std::ptrdiff_t pitch) {
  Tev8u least = 255, most = 0;
  for (int k = 0; k < count; ++k) {
    const Tev8u label = pixel[offsetTo(k, pitch)];
    least = std::min<Tev8u>(least, label == 0 ? 255 : label);
    most = std::max<Tev8u>(most, label == 255 ? 0 : label);
  }
  return least == most ? least : boundary;
}

bool touchesAnotherLabel(const Tev8u* pixel, const PixelMap& map, int count) {
  for (int k = 0; k < count; ++k) {
    const Tev8u label = pixel[map.toLabel(k)];
    if (label != 0 && label != 255 && label != *pixel) return true;
  }
  return false;
}

// Queues the markers that have somewhere to go, and draws the boundary between markers that touch. A pixel that has
// become boundary no longer counts for those after it.
void queueMarkers(LevelQueue& queue, const PixelMap& map, Rows<const Tev8u> src, Tev8u* labels, TevSize roi, int norm,
                  std::uint32_t flags) {
  const unsigned reach = norm == tevWatershedNormCity ? 0x0F : 0xFF;
  const int sight = flags & tevWatershedBound8 ? 8 : 4;
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      const std::uint32_t index = map.labelIndex(x, y);
      Tev8u* const pixel = labels + index;
      if (*pixel == 0) continue;
      if (unlabelledNeighbours<8>(pixel, map.pitch()) & reach) queue.append(src[y][x], index, map.sourceIndex(x, y));
      if ((flags & boundaries) && *pixel != boundary && touchesAnotherLabel(pixel, map, sight)) *pixel = boundary;
    }
}

template <int reach, Bound bound>
void flood(LevelQueue& queue, const PixelMap& map, const Tev8u* src, Tev8u* labels) {
  constexpr int sight = bound == Bound::four ? 4 : 8;
  for (int level = queue.lowest(0); level < LevelQueue::levels; level = queue.lowest(level)) {
    const WSNode node = queue.take(level);
    Tev8u* const p = labels + node.labelIndex;
    const Tev8u* const height = src + map.sourceOffset(node);
    for (unsigned open = unlabelledNeighbours<reach>(p, map.pitch()); open != 0; open &= open - 1) {
      const int k = std::countr_zero(open);
      Tev8u* const q = p + map.toLabel(k);
      queue.append(std::max<int>(level, height[map.toSource(k)]),
                   node.labelIndex + static_cast<std::uint32_t>(map.toLabel(k)),
                   node.sourceIndex + static_cast<std::uint32_t>(map.toSource(k)));
      *q = bound == Bound::none ? *p : commonLabel<sight>(q, map.pitch());
    }
  }
}

template <int reach>
void flood(LevelQueue& queue, const PixelMap& map, const Tev8u* src, Tev8u* labels, std::uint32_t flags) {
  if (flags & tevWatershedBound4)
    flood<reach, Bound::four>(queue, map, src, labels);
  else if (flags & tevWatershedBound8)
    flood<reach, Bound::eight>(queue, map, src, labels);
  else
    flood<reach, Bound::none>(queue, map, src, labels);
}

// --- Sweeping -------------------------------------------------------------------------------------------------------

// Where a pixel took its label from: a marker from itself, others from a neighbour, counted from the right
// counterclockwise. A pixel not reached counts as its own source.
enum Direction : Tev8u { self, right, aboveRight, above, aboveLeft, left, belowLeft, below, belowRight, unreached };
constexpr int directionX[10] = {0, 1, 1, 0, -1, -1, -1, 0, 1, 0};
constexpr int directionY[10] = {0, 0, -1, -1, -1, 0, 1, 1, 1, 0};

constexpr Tev32s unknownCost = 0x7fc00000;
constexpr int levelShift = 23;
static_assert((255 << levelShift) < unknownCost);

// The eikonal norm measures Euclidean lengths in units of 1/64 pixel. A pixel is reached 64 after the earlier of its
// two neighbours, less FMM_SUB[d] where the other one comes d later and helps: the upwind solution of the eikonal
// equation.
constexpr std::uint32_t FMM_SUB[] = {19, 18, 18, 17, 17, 16, 16, 15, 15, 14, 14, 14, 13, 13, 12, 12, 11,
                                     11, 11, 10, 10, 9,  9,  9,  8,  8,  8,  7,  7,  7,  6,  6,  6,  5,
                                     5,  5,  4,  4,  4,  4,  3,  3,  3,  3,  2,  2,  2,  2,  2,  1,  1,
                                     1,  1,  1,  1,  1,  0,  0,  0,  0,  0,  0,  0,  0,  0};
static_assert(sizeof FMM_SUB == 65 * 4);

// What a step costs beyond the 1 that every step costs.
constexpr std::uint32_t surcharge(int norm, Direction from) {
  if (norm == tevWatershedNormChamfer) return directionX[from] == 0 || directionY[from] == 0 ? 10 : 14;
  return norm == tevWatershedNormEikonal ? 63 : 0;
}

// A pixel's best way among its candidates, if it goes one step to the neighbour at `from`.
struct Way {
  Tev32s cost;
  Direction from;
};

// Neighbours in the order in which they are tried: of equals the first is taken.
template <Direction... from>
struct Candidates {};

template <int norm, Direction... from>
[[gnu::always_inline]] inline Way cheapest(Candidates<from...>, const Tev32s* cost, std::ptrdiff_t pitch, Tev8u level) {
  constexpr Direction tried[] = {from...};
  // Unsigned, so that ways over unreached ground may grow beyond 31 bits; they stay there.
  const std::uint32_t through[] = {static_cast<std::uint32_t>(cost[directionY[from] * pitch + directionX[from]]) +
                                   surcharge(norm, from)...};
  std::uint32_t least = through[0];
  Direction best = tried[0];
  for (std::size_t k = 1; k < sizeof...(from); ++k) {
    best = through[k] < least ? tried[k] : best;
    least = std::min(least, through[k]);
  }
  if constexpr (norm == tevWatershedNormEikonal && sizeof...(from) == 2)
    least -= FMM_SUB[std::min(std::max(through[0], through[1]) - least, 64U)];
  const std::uint32_t sum = std::min<std::uint32_t>(least + 1, INT32_MAX);
  return {std::max(Tev32s{level} << levelShift, static_cast<Tev32s>(sum)), best};
}

enum class Pass { firstDown, firstUp, down, up };

template <int norm>
class Sweeps {
 public:
  Sweeps(const Tev8u* src, int srcStep, Tev8u* labels, int labelStep, TevSize roi, Tev8u* block)
      : roi_(roi), pitch_(roundUpTo32(roi.width)), src_(src, srcStep), labels_(labels, labelStep) {
    const std::ptrdiff_t plane = pitch_ * roi.height;
    cost_ = reinterpret_cast<Tev32s*>(block);
    direction_ = block + 4 * plane;
    active_ = block + 5 * plane + pitch_;  // a row above the image and one below it can be marked
    rowActive_ = block + 6 * plane + 2 * pitch_ + 1;
    for (int k = 0; k < 10; ++k) toLabel_[k] = directionY[k] * std::ptrdiff_t{labelStep} + directionX[k];
    for (int y = -1; y <= roi.height; ++y) {
      tevsZero_8u(active_ + y * pitch_, static_cast<int>(pitch_));
      rowActive_[y] = 0;
    }
  }

  void run() {
    for (int y = 0; y < roi_.height; ++y) startRow(y);
    if (roi_.height < 2) return;
    for (int y = roi_.height - 2; y >= 0; --y) visitRow<Pass::firstUp>(y);
    while (sweepDown() && sweepUp()) {
    }
  }

 private:
  static constexpr bool diagonal = norm == tevWatershedNormChess || norm == tevWatershedNormChamfer;

  bool sweepDown() {
    bool changed = false;
    for (int y = 1; y < roi_.height; ++y)
      if (rowActive_[y]) changed |= visitRow<Pass::down>(y);
    return changed;
  }

  bool sweepUp() {
    bool changed = false;
    for (int y = roi_.height - 2; y >= 0; --y)
      if (rowActive_[y]) changed |= visitRow<Pass::up>(y);
    return changed;
  }

  // The first sweep down: a row of markers and unknown ground, and what comes to it from above and from its sides.
  void startRow(int y) {
    const Tev8u* const level = src_[y];
    const Tev8u* const label = labels_[y];
    Tev32s* const cost = cost_ + y * pitch_;
    Tev8u* const direction = direction_ + y * pitch_;
    for (int x = 0; x < roi_.width; ++x) {
      cost[x] = label[x] ? Tev32s{level[x]} << levelShift : unknownCost;
      direction[x] = label[x] ? self : unreached;
    }
    if (y > 0) {
      visitRow<Pass::firstDown>(y);
      return;
    }
    const Row row(*this, 0);
    for (int x = 1; x < roi_.width; ++x) row.template visitFirst<true>(Candidates<left>{}, x);
    for (int x = roi_.width - 2; x >= 0; --x) row.template visitFirst<false>(Candidates<right>{}, x);
  }

  // There and back along row y. The diagonal lists try their neighbours in an order of their own: of equal ways that
  // order decides the label, so it stands as it is, the last column's order included.
  template <Pass pass>
  bool visitRow(int y) {
    constexpr bool goesDown = pass == Pass::firstDown || pass == Pass::down;
    constexpr Direction behind = goesDown ? above : below;
    Row row(*this, y);
    const int last = roi_.width - 1;
    row.template visit<pass, true>(Candidates<behind>{}, 0);
    if constexpr (!diagonal) {
      for (int x = 1; x <= last; ++x) row.template visit<pass, true>(Candidates<left, behind>{}, x);
    } else if constexpr (goesDown) {
      for (int x = 1; x < last; ++x)
        row.template visit<pass, true>(Candidates<left, aboveLeft, above, aboveRight>{}, x);
      if (last > 0) row.template visit<pass, true>(Candidates<left, aboveLeft, above>{}, last);
    } else {
      for (int x = 1; x < last; ++x)
        row.template visit<pass, true>(Candidates<left, belowRight, below, belowLeft>{}, x);
      if (last > 0) row.template visit<pass, true>(Candidates<left, belowLeft, below>{}, last);
    }
    // On the way back only the right neighbour is new, but for the first sweep down and the eikonal's pairs.
    for (int x = last - 1; x >= 0; --x) {
      if constexpr (norm == tevWatershedNormEikonal || (diagonal && pass == Pass::firstDown))
        row.template visit<pass, false>(Candidates<right, behind>{}, x);
      else
        row.template visit<pass, false>(Candidates<right>{}, x);
    }
    if constexpr (pass == Pass::firstDown) return true;
    rowActive_[y] = row.changed;
    rowActive_[y - 1] |= row.changed;
    rowActive_[y + 1] |= row.changed;
    return row.changed;
  }

  // One row's pointers.
  struct Row {
    Row(const Sweeps& sweeps, int y)
        : level(sweeps.src_[y]),
          label(sweeps.labels_[y]),
          direction(sweeps.direction_ + y * sweeps.pitch_),
          active(sweeps.active_ + y * sweeps.pitch_),
          cost(sweeps.cost_ + y * sweeps.pitch_),
          pitch(sweeps.pitch_),
          last(sweeps.roi_.width - 1),
          toLabel(sweeps.toLabel_) {}

    template <Pass pass, bool outward, class List>
    void visit(List candidates, int x) {
      if constexpr (pass == Pass::firstDown)
        visitFirst<outward>(candidates, x);
      else if (pass == Pass::firstUp ? direction[x] != self : active[x] != 0)
        settle(cheapest<norm>(candidates, cost + x, pitch, level[x]), x);
    }

    // In the first sweep down every pixel but a marker takes the way found on the way out, reached or not, and on the
    // way back a cheaper one.
    template <bool outward, class List>
    void visitFirst(List candidates, int x) const {
      if (direction[x] == self) return;
      const Way way = cheapest<norm>(candidates, cost + x, pitch, level[x]);
      if (outward || way.cost < cost[x]) follow(way, x);
    }

    void follow(Way way, int x) const {
      label[x] = label[x + toLabel[way.from]];
      cost[x] = way.cost;
      direction[x] = way.from;
    }

    // Takes a cheaper way, or the new label of the neighbour that the pixel follows; either may concern the neighbours.
    void settle(Way way, int x) {
      active[x] = 0;
      if (way.cost < cost[x]) {
        follow(way, x);
      } else {
        const Tev8u followed = label[x + toLabel[direction[x]]];
        if (followed == label[x]) return;
        label[x] = followed;
      }
      changed = true;
      activate(x, 0, -1);
      activate(x, 0, 1);
      for (int dx = -1; dx <= 1; dx += 2) {
        if (x == (dx < 0 ? 0 : last)) continue;
        activate(x, dx, 0);
        if constexpr (diagonal) {
          activate(x, dx, -1);
          activate(x, dx, 1);
        }
      }
    }

    void activate(int x, int dx, int dy) const { active[dy * pitch + x + dx] = 1; }

    const Tev8u* level;
    Tev8u* label;
    Tev8u* direction;
    Tev8u* active;
    Tev32s* cost;
    std::ptrdiff_t pitch;
    int last;
    const std::ptrdiff_t* toLabel;
    bool changed = false;
  };

  TevSize roi_;
  std::ptrdiff_t pitch_;
  Rows<const Tev8u> src_;
  Rows<Tev8u> labels_;
  Tev32s* cost_;
  Tev8u* direction_;
  Tev8u* active_;
  Tev8u* rowActive_;  // rows -1 to height
  std::ptrdiff_t toLabel_[10];
};

template <int norm>
void sweep(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep, TevSize roi, Tev8u* block) {
  Sweeps<norm>(src, srcStep, markers, markerStep, roi, block).run();
}

TevStatus watershedBySweeps(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep, TevSize roi, int norm,
                            std::uint32_t flags, Tev8u* buffer) {
  constexpr decltype(&sweep<0>) byNorm[] = {sweep<tevWatershedNormChess>, sweep<tevWatershedNormCity>,
                                            sweep<tevWatershedNormChamfer>, sweep<tevWatershedNormEikonal>};
  Tev8u* const aligned = buffer + (-reinterpret_cast<std::uintptr_t>(buffer) & 31);
  // In a column there is one way only, and it counts in steps of 1 whatever the norm.
  byNorm[roi.width == 1 ? int{tevWatershedNormCity} : norm](src, srcStep, markers, markerStep, roi, aligned);
  // The costs are read from the buffer's start, not from where they begin: callers who want boundaries align the
  // buffer.
  if (flags & boundaries)
    ownBoundSegments_8u_C1IR(markers, markerStep, reinterpret_cast<const Tev32s*>(buffer),
                             static_cast<int>(roundUpTo32(roi.width) * 4), roi.width, roi.height, boundary,
                             flags & tevWatershedBound4 ? 1 : 0);
  return tevStatusOk;
}

}  // namespace

WSNode* ownAllocWSNodes(WSNode* nodes, int first, int width, int height) {
  const std::ptrdiff_t last = std::ptrdiff_t{width} * height - 1;
  for (std::ptrdiff_t i = first; i < last; ++i) nodes[i].next = nodes + i + 1;
  nodes[last].next = nullptr;
  return nodes + first;
}

TevStatus ownSegmentWaterhedPQ_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep, TevSize roiSize,
                                       int norm, uint32_t flags, Tev8u* buffer) {
  const auto nodes = reinterpret_cast<WSNode*>(buffer);
  const auto labels = reinterpret_cast<Tev8u*>(nodes + std::ptrdiff_t{roiSize.width} * roiSize.height);
  const PixelMap map(roiSize, 1, srcStep, 1);
  const auto pitch = static_cast<int>(map.pitch());
  LevelQueue queue(nodes, roiSize);
  teviCopyConstBorder_8u_C1R(markers, markerStep, roiSize, labels, pitch, {pitch, roiSize.height + 2}, 1, 1, boundary);
  queueMarkers(queue, map, rows(src, srcStep), labels, roiSize, norm, flags);
  if (norm == tevWatershedNormCity)
    flood<4>(queue, map, src, labels, flags);
  else
    flood<8>(queue, map, src, labels, flags);
  return teviCopy_8u_C1R(labels + pitch + 1, pitch, markers, markerStep, roiSize);
}

TevStatus teviSegmentWatershedGetBufferSize_8u_C1R(TevSize roiSize, int* bufferSize) {
  if (TevStatus s = firstFailure(notNull(bufferSize), region(roiSize))) return s;
  // Both sizes wrap as 32-bit words; callers compare what they allocate with the same number.
  const auto width = static_cast<std::uint32_t>(roiSize.width), height = static_cast<std::uint32_t>(roiSize.height);
  const std::uint32_t pitch = (width + 31) & ~31U;
  const std::uint32_t sweeping = (2 * height + 2) * pitch + 4 * pitch * height + height + 66;
  const std::uint32_t flooding = std::uint32_t{sizeof(WSNode)} * height * width + 24 + 12 + (width + 2) * (height + 2);
  *bufferSize = std::max(static_cast<Tev32s>(sweeping), static_cast<Tev32s>(flooding));
  return tevStatusOk;
}

TevStatus teviSegmentWatershed_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep, TevSize roiSize,
                                       tevWatershedNorm norm, uint32_t flags, Tev8u* buffer) {
  if (TevStatus s = firstFailure(notNull(src, markers, buffer), region(roiSize), rowFits<Tev8u>(srcStep, roiSize.width),
                                 rowFits<Tev8u>(markerStep, roiSize.width),
                                 failUnless(flags & methods, tevStatusBadArg), normOfMethod(norm, flags)))
    return s;
  if (flags & tevWatershedQueue)
    return ownSegmentWaterhedPQ_8u_C1IR(src, srcStep, markers, markerStep, roiSize, norm, flags, buffer);
  return watershedBySweeps(src, srcStep, markers, markerStep, roiSize, norm, flags, buffer);
}
