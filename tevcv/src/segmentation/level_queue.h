// What both floods stand on: one first-in first-out queue for each of the 256 keys, over a pool of list nodes in the
// caller's buffer. A pixel joins a queue at most once, so a node a pixel is enough.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tevcv/types.h"
#include "tevcv_internal/segmentation.h"

namespace tevcv {

class LevelQueue {
 public:
  static constexpr int levels = 256;

  LevelQueue(WSNode* nodes, TevSize roi) : unused_(nodes), end_(nodes + std::ptrdiff_t{roi.width} * roi.height) {}

  void append(int level, std::uint32_t labelIndex, std::uint32_t sourceIndex) {
    if (!free_) linkMore();
    WSNode* const node = free_;
    free_ = node->next;
    *node = {nullptr, labelIndex, sourceIndex};
    List& list = lists_[level];
    (list.head ? list.tail->next : list.head) = node;
    list.tail = node;
  }

  // The pixel that has waited longest on a level that is not empty. Its node is the next one to be used again, warm in
  // the cache; the node behind it may have waited long, so it is called for ahead of its turn.
  WSNode take(int level) {
    WSNode* const node = lists_[level].head;
    const WSNode taken = *node;
    lists_[level].head = taken.next;
    __builtin_prefetch(taken.next);
    node->next = free_;
    free_ = node;
    return taken;
  }

  // The first level from `level` on that holds a pixel, or `levels`.
  int lowest(int level) const {
    while (level < levels && !lists_[level].head) ++level;
    return level;
  }

 private:
  struct List {
    WSNode* head;
    WSNode* tail;  // counts while there is a head
  };

  // Few pixels wait at a time: nodes are linked as they are first needed, and most of the pool is never touched.
  void linkMore() {
    const int count = static_cast<int>(std::min<std::ptrdiff_t>(end_ - unused_, 512));
    free_ = ownAllocWSNodes(unused_, 0, count, 1);
    unused_ += count;
  }

  List lists_[levels] = {};
  WSNode* free_ = nullptr;
  WSNode* unused_;
  WSNode* end_;
};

// The neighbours of a pixel in the order in which the floods visit them: the straight ones first.
struct Neighbour {
  int dx, dy;
};
inline constexpr Neighbour neighbours[8] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, -1}, {-1, 1}, {1, 1}};

constexpr std::ptrdiff_t offsetTo(int k, std::ptrdiff_t pitch) { return neighbours[k].dy * pitch + neighbours[k].dx; }

// The unlabelled ones among the first `count` neighbours, bit k for neighbour k. Most pixels of a flood have none or
// one: going through a set of them branches less often than a look at each.
template <int count>
unsigned unlabelledNeighbours(const Tev8u* label, std::ptrdiff_t pitch) {
  unsigned open = 0;
  for (int k = 0; k < count; ++k) open |= unsigned{label[offsetTo(k, pitch)] == 0} << k;
  return open;
}

// Where the pixels of the nodes lie: in a label image of `pitch` bytes a row with `border` pixels around the region,
// and in the source.
class PixelMap {
 public:
  PixelMap(TevSize roi, int border, int srcStep, int channels)
      : pitch_(roi.width + std::ptrdiff_t{2} * border),
        srcStep_(srcStep),
        channels_(channels),
        border_(border),
        wide_(std::int64_t{srcStep} * roi.height > UINT32_MAX) {
    for (int k = 0; k < 8; ++k) {
      label_[k] = offsetTo(k, pitch_);
      source_[k] = neighbours[k].dy * srcStep_ + neighbours[k].dx * channels;
    }
  }

  std::uint32_t labelIndex(int x, int y) const {
    return static_cast<std::uint32_t>((y + border_) * pitch_ + x + border_);
  }
  std::uint32_t sourceIndex(int x, int y) const { return static_cast<std::uint32_t>(y * srcStep_ + x * channels_); }

  // A node's offset in the source. Its 32 bits do not tell it in an image that spans 4 GiB; the label index does there.
  std::ptrdiff_t sourceOffset(const WSNode& node) const {
    if (!wide_) return static_cast<std::ptrdiff_t>(node.sourceIndex);
    const std::lldiv_t at = std::lldiv(std::int64_t{node.labelIndex}, pitch_);
    return static_cast<std::ptrdiff_t>((at.quot - border_) * srcStep_ + (at.rem - border_) * channels_);
  }

  std::ptrdiff_t pitch() const { return pitch_; }
  // Offset of neighbour k from a pixel, in the label image and in the source.
  std::ptrdiff_t toLabel(int k) const { return label_[k]; }
  std::ptrdiff_t toSource(int k) const { return source_[k]; }

 private:
  std::ptrdiff_t pitch_, srcStep_;
  int channels_, border_;
  bool wide_;
  std::ptrdiff_t label_[8], source_[8];
};

}  // namespace tevcv
