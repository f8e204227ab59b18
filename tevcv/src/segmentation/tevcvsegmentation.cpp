// Gradient segmentation: regions grow from markers, always by the pixel that differs least from a labelled neighbour.
//
// A pixel waits in the queue of its difference to the pixel that found it, marked as waiting so that it is found once,
// and takes its label only as it leaves: that of the labelled neighbour nearest in grey value by then. Unlike a
// flood's, the current level falls wherever a pixel finds a neighbour more like itself.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "segmentation/level_queue.h"
#include "tevcv/primitives.h"
#include "tevcv/segmentation.h"
#include "tevcv_internal/segmentation.h"

using namespace tevcv;

namespace {

constexpr Tev8u boundary = 254;
constexpr Tev8u waiting = 255;  // or outside
constexpr int noKey = 256;

bool isLabelled(Tev8u label) { return (label != 0) & (label != waiting); }
bool isSegment(Tev8u label) { return (label != 0) & (label < boundary); }

// How much two pixels differ: the largest difference of a channel.
template <int channels>
int key(const Tev8u* p, const Tev8u* q) {
  int largest = std::abs(p[0] - q[0]);
  for (int c = 1; c < channels; ++c) largest = std::max(largest, std::abs(p[c] - q[c]));
  return largest;
}

// Queues the unlabelled pixels beside markers, each by its least difference to one.
template <int channels, int reach>
void queueSeeds(LevelQueue& queue, const PixelMap& map, Rows<const Tev8u> src, Tev8u* labels, TevSize roi) {
  for (int y = 1; y < roi.height - 1; ++y)
    for (int x = 1; x < roi.width - 1; ++x) {
      const std::uint32_t index = map.labelIndex(x, y);
      if (labels[index] != 0) continue;
      const Tev8u* const pixel = src[y] + std::ptrdiff_t{x} * channels;
      int least = noKey;
      for (int k = 0; k < reach; ++k)
        if (isLabelled(labels[index + map.toLabel(k)]))
          least = std::min(least, key<channels>(pixel, pixel + map.toSource(k)));
      if (least == noKey) continue;
      queue.append(least, index, map.sourceIndex(x, y));
      labels[index] = waiting;
    }
}

// The label of the labelled neighbour that differs least; of equals the last, but a boundary only where it is alone.
// One word a neighbour puts that order into a minimum: the difference, whether it is boundary, how early it stands, its
// label.
template <int channels, int reach>
Tev8u nearestLabel(const Tev8u* label, const Tev8u* pixel, const PixelMap& map) {
  constexpr unsigned none = unsigned{noKey} << 12 | waiting;
  unsigned nearest = none;
  for (int k = 0; k < reach; ++k) {
    const Tev8u other = label[map.toLabel(k)];
    const auto difference = static_cast<unsigned>(key<channels>(pixel, pixel + map.toSource(k)));
    const unsigned word = difference << 12 | unsigned{other == boundary} << 11 | unsigned(7 - k) << 8 | other;
    nearest = std::min(nearest, isLabelled(other) ? word : none);
  }
  return static_cast<Tev8u>(nearest);
}

bool touchesAnotherSegment(const Tev8u* label, const PixelMap& map, int count) {
  bool touches = false;
  for (int k = 0; k < count; ++k) {
    const Tev8u other = label[map.toLabel(k)];
    touches |= isSegment(other) & (other != *label);
  }
  return touches;
}

template <int channels, int reach>
void grow(LevelQueue& queue, const PixelMap& map, const Tev8u* src, Tev8u* labels, int sight) {
  for (int level = queue.lowest(0); level < LevelQueue::levels; level = queue.lowest(level)) {
    const WSNode node = queue.take(level);
    Tev8u* const p = labels + node.labelIndex;
    const Tev8u* const pixel = src + map.sourceOffset(node);
    *p = nearestLabel<channels, reach>(p, pixel, map);
    if (touchesAnotherSegment(p, map, sight)) *p = boundary;
    for (unsigned open = unlabelledNeighbours<reach>(p, map.pitch()); open != 0; open &= open - 1) {
      const int k = std::countr_zero(open);
      p[map.toLabel(k)] = waiting;
      const int difference = key<channels>(pixel, pixel + map.toSource(k));
      queue.append(difference, node.labelIndex + static_cast<std::uint32_t>(map.toLabel(k)),
                   node.sourceIndex + static_cast<std::uint32_t>(map.toSource(k)));
      level = std::min(level, difference);
    }
  }
}

template <int channels, int reach>
void segment(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep, TevSize roi, int sight, WSNode* nodes) {
  const auto [width, height] = roi;
  const auto labels = reinterpret_cast<Tev8u*>(nodes + std::ptrdiff_t{width} * height);
  const PixelMap map(roi, 0, srcStep, channels);
  LevelQueue queue(nodes, roi);

  // The frame takes no part: nothing grows into it or from it.
  teviCopy_8u_C1R(markers, markerStep, labels, width, roi);
  const auto row = rows(labels, width);
  std::memset(row[0], waiting, static_cast<std::size_t>(width));
  std::memset(row[height - 1], waiting, static_cast<std::size_t>(width));
  for (int y = 0; y < height; ++y) row[y][0] = row[y][width - 1] = waiting;

  queueSeeds<channels, reach>(queue, map, rows(src, srcStep), labels, roi);
  if (queue.lowest(0) == LevelQueue::levels) return;
  grow<channels, reach>(queue, map, src, labels, sight);
  teviCopy_8u_C1R(labels, width, markers, markerStep, roi);
}

template <int channels>
TevStatus segmentGradient(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep, TevSize roi, int norm,
                          std::uint32_t flags, Tev8u* buffer) {
  if (TevStatus s =
          firstFailure(notNull(src, markers, buffer), region(roi), rowFits<Tev8u>(srcStep, roi.width, channels),
                       rowFits<Tev8u>(markerStep, roi.width), failUnless(norm == 0 || norm == 1, tevStatusBadArg)))
    return s;
  const int sight = flags & tevWatershedBound8 ? 8 : flags & tevWatershedBound4 ? 4 : 0;
  // The nodes begin a few bytes on, by a rule that aligns nothing. Callers know the buffer's layout.
  const auto nodes = reinterpret_cast<WSNode*>(buffer + (-(reinterpret_cast<std::uintptr_t>(buffer) & 11) & 11));
  if (norm == 0)
    segment<channels, 8>(src, srcStep, markers, markerStep, roi, sight, nodes);
  else
    segment<channels, 4>(src, srcStep, markers, markerStep, roi, sight, nodes);
  return tevStatusOk;
}

TevStatus bufferSizeOf(TevSize roi, int* bufferSize) {
  if (TevStatus s = firstFailure(notNull(bufferSize), region(roi))) return s;
  const std::int64_t pixels = std::min<std::int64_t>(std::int64_t{roi.width} * roi.height, INT32_MAX);
  *bufferSize = saturate<int>(pixels * 9 + 27 + pixels * std::int64_t{sizeof(void*)} + 76);
  return tevStatusOk;
}

}  // namespace

TevStatus teviSegmentGradientGetBufferSize_8u_C1R(TevSize roiSize, int* bufferSize) {
  return bufferSizeOf(roiSize, bufferSize);
}

TevStatus teviSegmentGradientGetBufferSize_8u_C3R(TevSize roiSize, int* bufferSize) {
  return bufferSizeOf(roiSize, bufferSize);
}

TevStatus teviSegmentGradient_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep, TevSize roiSize,
                                      int norm, uint32_t flags, Tev8u* buffer) {
  return segmentGradient<1>(src, srcStep, markers, markerStep, roiSize, norm, flags, buffer);
}

TevStatus teviSegmentGradient_8u_C3IR(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep, TevSize roiSize,
                                      int norm, uint32_t flags, Tev8u* buffer) {
  return segmentGradient<3>(src, srcStep, markers, markerStep, roiSize, norm, flags, buffer);
}
