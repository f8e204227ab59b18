#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <queue>
#include <set>

#include "kit/kit.h"
#include "tevcv/segmentation.h"
#include "tevcv_internal/segmentation.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr uint32_t flood = tevWatershedQueue, sweep = tevWatershedSweep, bound4 = tevWatershedBound4,
                   bound8 = tevWatershedBound8;
constexpr uint32_t boundFlags[] = {0, bound4, bound8, bound4 | bound8};

int bufferSize(TevSize roi) {
  int size = 0;
  EXPECT_EQ(teviSegmentWatershedGetBufferSize_8u_C1R(roi, &size), tevStatusOk);
  return size;
}

// A buffer of exactly the promised size, so many bytes beyond a multiple of 64.
Buffer scratch(TevSize roi, int beyond = 0) { return Buffer(bufferSize(roi), beyond); }

// The labels of an image that may lie at any address; the buffer too.
Image<Tev8u> segment(const Image<Tev8u>& src, const Image<Tev8u>& markers, int norm, uint32_t flags, int beyond = 0) {
  Image<Tev8u> labels = markers.clone();
  const auto padding = labels.bytes();
  const Buffer buffer = scratch(src.size(), beyond);
  EXPECT_EQ(teviSegmentWatershed_8u_C1IR(src.data(), src.step(), labels.data(), labels.step(), src.size(), norm, flags,
                                         buffer.data()),
            tevStatusOk);
  const auto after = labels.bytes();
  for (int y = 0; y + 1 < labels.height(); ++y)  // row padding is not written
    for (int i = labels.width(); i < labels.step(); ++i) {
      const auto at = static_cast<size_t>(y * labels.step() + i);
      if (padding[at] != after[at]) ADD_FAILURE() << "wrote between rows";
    }
  return labels;
}

// --- Flooding, step by step -----------------------------------------------------------------------------------------

struct Step {
  int dx, dy;
};
constexpr Step around[8] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, -1}, {-1, 1}, {1, 1}};

class Flood {
 public:
  Flood(const Image<Tev8u>& src, const Image<Tev8u>& markers, int norm, uint32_t flags)
      : src_(src), width_(markers.width()), height_(markers.height()), reach_(norm == 1 ? 4 : 8), flags_(flags) {
    labels_.assign(static_cast<size_t>((width_ + 2) * (height_ + 2)), 255);
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < width_; ++x) at(x, y) = markers.at(x, y);
    seed();
    run();
  }

  Image<Tev8u> labels() {
    Image<Tev8u> result(width_, height_);
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < width_; ++x) result.set(x, y, at(x, y));
    return result;
  }

 private:
  using Pixel = std::pair<int, int>;

  Tev8u& at(int x, int y) { return labels_[static_cast<size_t>((y + 1) * (width_ + 2) + x + 1)]; }

  void seed() {
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < width_; ++x) {
        if (at(x, y) == 0) continue;
        bool open = false;
        for (int k = 0; k < reach_; ++k) open |= at(x + around[k].dx, y + around[k].dy) == 0;
        if (open) queues_[src_.at(x, y)].emplace_back(x, y);
        if (!(flags_ & (bound4 | bound8)) || at(x, y) == 255) continue;
        for (int k = 0; k < (flags_ & bound8 ? 8 : 4); ++k) {
          const int n = at(x + around[k].dx, y + around[k].dy);
          if (n >= 1 && n <= 254 && n != at(x, y)) {
            at(x, y) = 255;
            break;
          }
        }
      }
  }

  static Tev8u resolve(int start, const std::vector<int>& others) {
    int c = start;
    for (int n : others) {
      if (n == 0 || n >= 255 || n == c) continue;
      if (c != 255) return 255;
      c = n;
    }
    return static_cast<Tev8u>(c);
  }

  // The label of q, reached from p.
  Tev8u labelFor(Pixel p, Pixel q) {
    if (!(flags_ & (bound4 | bound8))) return at(p.first, p.second);
    const bool straight = p.first == q.first || p.second == q.second;
    const Pixel start = straight || !(flags_ & bound4) ? p : Pixel{q.first, p.second};
    std::vector<int> others;
    for (int k = 0; k < (flags_ & bound4 ? 4 : 8); ++k) {
      const Pixel n = {q.first + around[k].dx, q.second + around[k].dy};
      if (n != start) others.push_back(at(n.first, n.second));
    }
    return resolve(at(start.first, start.second), others);
  }

  void run() {
    for (int level = 0; level < 256; ++level)
      while (!queues_[level].empty()) {
        const Pixel p = queues_[level].front();
        queues_[level].pop_front();
        for (int k = 0; k < reach_; ++k) {
          const Pixel q = {p.first + around[k].dx, p.second + around[k].dy};
          if (at(q.first, q.second) != 0) continue;
          queues_[std::max<int>(level, src_.at(q.first, q.second))].push_back(q);
          at(q.first, q.second) = labelFor(p, q);
        }
      }
  }

  const Image<Tev8u>& src_;
  int width_, height_, reach_;
  uint32_t flags_;
  std::vector<Tev8u> labels_;
  std::deque<Pixel> queues_[256];
};

// --- Sweeping, step by step -----------------------------------------------------------------------------------------

constexpr Step direction[10] = {{0, 0}, {1, 0}, {1, -1}, {0, -1}, {-1, -1}, {-1, 0}, {-1, 1}, {0, 1}, {1, 1}, {0, 0}};
constexpr int64_t unknown = 0x7fc00000;
constexpr int correction[65] = {19, 18, 18, 17, 17, 16, 16, 15, 15, 14, 14, 14, 13, 13, 12, 12, 11, 11, 11, 10, 10, 9,
                                9,  9,  8,  8,  8,  7,  7,  7,  6,  6,  6,  5,  5,  5,  4,  4,  4,  4,  3,  3,  3,  3,
                                2,  2,  2,  2,  2,  1,  1,  1,  1,  1,  1,  1,  0,  0,  0,  0,  0,  0,  0,  0,  0};

class Sweep {
 public:
  Sweep(const Image<Tev8u>& src, const Image<Tev8u>& markers, int norm)
      : src_(src), labels_(markers.clone()), w_(src.width()), h_(src.height()), norm_(w_ == 1 ? 1 : norm) {
    const auto pixels = static_cast<size_t>(w_ * h_);
    cost_.assign(pixels, unknown);
    from_.assign(pixels, 9);
    active_.assign(pixels, 0);
    rowActive_.assign(static_cast<size_t>(h_) + 2, 0);
    firstDown();
    if (h_ < 2) return;
    for (int y = h_ - 2; y >= 0; --y) row(y, false, true);
    for (;;) {
      bool changed = false;
      for (int y = 1; y < h_; ++y)
        if (rowActive_[static_cast<size_t>(y) + 1]) changed |= row(y, true, false);
      if (!changed) return;
      changed = false;
      for (int y = h_ - 2; y >= 0; --y)
        if (rowActive_[static_cast<size_t>(y) + 1]) changed |= row(y, false, false);
      if (!changed) return;
    }
  }

  const Image<Tev8u>& labels() const { return labels_; }
  int64_t cost(int x, int y) const { return cost_[index(x, y)]; }
  int from(int x, int y) const { return from_[index(x, y)]; }

  struct Way {
    int64_t cost;
    int from;
  };
  Way update(int x, int y, const std::vector<int>& candidates) const {
    const auto step = [&](int code) { return norm_ == 2 ? (code % 2 ? 10 : 14) : norm_ == 3 ? 63 : 0; };
    Way best = {INT64_MAX, 0};
    std::vector<int64_t> tried;
    for (int code : candidates) {
      tried.push_back(cost(x + direction[code].dx, y + direction[code].dy) + step(code));
      if (tried.back() < best.cost) best = {tried.back(), code};
    }
    if (norm_ == 3 && tried.size() == 2) {
      const int64_t d = std::abs(tried[0] - tried[1]);
      if (d < 64) best.cost -= correction[d];
    }
    best.cost = std::max(value(x, y), best.cost + 1);
    return best;
  }
  std::vector<int> outward(int x, bool down) const {
    if (x == 0) return {down ? 3 : 7};
    if (norm_ == 1 || norm_ == 3) return {5, down ? 3 : 7};
    if (x < w_ - 1) return down ? std::vector<int>{5, 4, 3, 2} : std::vector<int>{5, 8, 7, 6};
    return down ? std::vector<int>{5, 4, 3} : std::vector<int>{5, 6, 7};
  }
  std::vector<int> back(bool down, bool first) const {
    if (norm_ == 3) return {1, down ? 3 : 7};
    if (norm_ != 1 && down && first) return {1, 3};
    return {1};
  }

 private:
  size_t index(int x, int y) const { return static_cast<size_t>(y * w_ + x); }
  int64_t value(int x, int y) const { return int64_t{src_.at(x, y)} << 23; }

  void follow(int x, int y, Way way) {
    labels_.set(x, y, labels_.at(x + direction[way.from].dx, y + direction[way.from].dy));
    cost_[index(x, y)] = way.cost;
    from_[index(x, y)] = way.from;
  }

  void firstDown() {
    for (int y = 0; y < h_; ++y) {
      for (int x = 0; x < w_; ++x)
        if (labels_.at(x, y)) {
          cost_[index(x, y)] = value(x, y);
          from_[index(x, y)] = 0;
        }
      for (int x = y == 0 ? 1 : 0; x < w_; ++x)
        if (from(x, y) != 0) follow(x, y, update(x, y, y == 0 ? std::vector<int>{5} : outward(x, true)));
      for (int x = w_ - 2; x >= 0; --x) {
        if (from(x, y) == 0) continue;
        const Way way = update(x, y, y == 0 ? std::vector<int>{1} : back(true, true));
        if (way.cost < cost(x, y)) follow(x, y, way);
      }
    }
  }

  bool visit(int x, int y, const std::vector<int>& candidates) {
    const Way way = update(x, y, candidates);
    if (way.cost < cost(x, y)) {
      follow(x, y, way);
    } else {
      const Step parent = direction[from(x, y)];
      const Tev8u label = labels_.at(x + parent.dx, y + parent.dy);
      if (label == labels_.at(x, y)) {
        active_[index(x, y)] = 0;
        return false;
      }
      labels_.set(x, y, label);
    }
    for (int code = 1; code <= 8; ++code) {
      if ((norm_ == 1 || norm_ == 3) && code % 2 == 0) continue;
      const int nx = x + direction[code].dx, ny = y + direction[code].dy;
      if (nx >= 0 && nx < w_ && ny >= 0 && ny < h_) active_[index(nx, ny)] = 1;
    }
    active_[index(x, y)] = 0;
    return true;
  }

  bool row(int y, bool down, bool all) {
    bool changed = false;
    const auto due = [&](int x) { return all ? from(x, y) != 0 : active_[index(x, y)] != 0; };
    for (int x = 0; x < w_; ++x)
      if (due(x)) changed |= visit(x, y, outward(x, down));
    for (int x = w_ - 2; x >= 0; --x)
      if (due(x)) changed |= visit(x, y, back(down, false));
    const auto at = static_cast<size_t>(y) + 1;
    rowActive_[at] = changed;
    rowActive_[at - 1] |= changed;
    rowActive_[at + 1] |= changed;
    return changed;
  }

  const Image<Tev8u>& src_;
  Image<Tev8u> labels_;
  int w_, h_, norm_;
  std::vector<int64_t> cost_;
  std::vector<int> from_;
  std::vector<char> active_, rowActive_;
};

// What stands in a sweep's buffer after the call.
struct Traces {
  const Tev32s* cost;
  const Tev8u* from;
  int pitch;
};
Traces tracesOf(const Buffer& buffer, TevSize roi) {
  const int pitch = (roi.width + 31) & ~31;
  Tev8u* const start = buffer.data() + (-reinterpret_cast<uintptr_t>(buffer.data()) & 31);
  return {reinterpret_cast<const Tev32s*>(start), start + 4 * pitch * roi.height, pitch};
}

// --- Random landscapes ----------------------------------------------------------------------------------------------

struct Scene {
  Image<Tev8u> src, markers;
};

// Few levels make plateaus and ties; labels 254 and 255 are among the markers.
Scene scene(Random& random, int width, int height) {
  const int levels = random.oneIn(2) ? random.between(1, 4) : 256, density = random.between(2, 60);
  Image<Tev8u> src = random.image<Tev8u>(width, height, [&] { return random.between(0, levels - 1) * (255 / levels); });
  constexpr Tev8u labels[] = {1, 2, 3, 77, 254, 255};
  const int kinds = random.between(1, 6);
  Image<Tev8u> markers = random.image<Tev8u>(
      width, height, [&] { return random.oneIn(density) ? labels[random.between(0, kinds - 1)] : 0; });
  return {std::move(src), std::move(markers)};
}

template <class Check>
void onManyScenes(int count, int largest, Check check) {
  Random random(7);
  for (int i = 0; i < count; ++i) {
    const int width = i % 7 == 0 ? 1 : random.between(1, largest), height = i % 7 == 1 ? 1 : random.between(1, largest);
    const Scene s = scene(random, width, height);
    check(s, i);
    if (testing::Test::HasFailure()) {
      ADD_FAILURE() << "scene " << i << ", " << width << " x " << height;
      return;
    }
  }
}

}  // namespace

// --- Arguments ------------------------------------------------------------------------------------------------------

TEST(Watershed, RefusesBadArgumentsInOrder) {
  const auto src = grid<Tev8u>({{1, 2, 3}, {4, 5, 6}});
  const auto m = grid<Tev8u>({{1, 0, 0}, {0, 0, 2}});
  const Buffer b = scratch(src.size());
  const auto call = [&](const Tev8u* s, int sStep, Tev8u* d, int dStep, TevSize roi, int norm, uint32_t flags,
                        Tev8u* buffer) {
    return teviSegmentWatershed_8u_C1IR(s, sStep, d, dStep, roi, norm, flags, buffer);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 2, m.data(), 2, {0, 0}, 9, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 2, nullptr, 2, {0, 0}, 9, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 2, m.data(), 2, {0, 0}, 9, 0, nullptr), m, b);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 2, m.data(), 2, {0, 2}, 9, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 2, m.data(), 2, {3, 0}, 9, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 2, m.data(), 2, {-3, -1}, 9, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), 2, m.data(), 3, {3, 2}, 9, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), 3, m.data(), 2, {3, 2}, 9, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), -3, m.data(), 3, {3, 2}, 0, flood, b.data()), m, b);
  for (uint32_t flags : {0U, bound4, bound8, 4U, ~3U})
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), 3, m.data(), 3, {3, 2}, 0, flags, b.data()), m, b);
  for (int norm : {-1, 2, 3, 4, INT32_MIN, INT32_MAX})
    for (uint32_t flags : {flood, flood | sweep, flood | bound8})
      EXPECT_FAILS(tevStatusBadArg, call(src.data(), 3, m.data(), 3, {3, 2}, norm, flags, b.data()), m, b);
  for (int norm : {-1, 4, INT32_MIN, INT32_MAX})
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), 3, m.data(), 3, {3, 2}, norm, sweep, b.data()), m, b);
}

TEST(Watershed, BufferSizeIsTheLargerOfBothMethods) {
  int size = -7;
  EXPECT_FAILS(tevStatusNullPtr, teviSegmentWatershedGetBufferSize_8u_C1R({0, 0}, nullptr), size);
  EXPECT_FAILS(tevStatusBadSize, teviSegmentWatershedGetBufferSize_8u_C1R({0, 1}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviSegmentWatershedGetBufferSize_8u_C1R({1, 0}, &size), size);
  const bool wide = sizeof(void*) == 8;
  EXPECT_EQ(bufferSize({1, 1}), 4 * 32 + 4 * 32 + 1 + 66);      // sweeping
  EXPECT_EQ(bufferSize({1, 100}), 202 * 32 + 400 * 32 + 166);   // sweeping: rows are 32 wide
  EXPECT_EQ(bufferSize({32, 10}), wide ? 5564 : 4284);          // flooding: a node a pixel
  EXPECT_EQ(bufferSize({640, 480}), wide ? 5224680 : 3995880);  // flooding
  EXPECT_EQ(bufferSize({33, 3}), 8 * 64 + 12 * 64 + 3 + 66 > (wide ? 16 : 12) * 99 + 36 + 35 * 5
                                     ? 8 * 64 + 12 * 64 + 3 + 66
                                     : (wide ? 16 : 12) * 99 + 36 + 35 * 5);
}

TEST(Watershed, BufferSizeWrapsAsA32BitNumber) {
  // 20000 x 20000: flooding takes 5.2e9 bytes where a node is 12 long, 6.8e9 where it is 16; sweeping 2.4e9.
  const int64_t flooding = int64_t{sizeof(void*) + 8} * 400000000 + 36 + int64_t{20002} * 20002;
  const int64_t sweeping = int64_t{40002} * 20000 + int64_t{80000} * 20000 + 20000 + 66;
  EXPECT_EQ(bufferSize({20000, 20000}), std::max(static_cast<int32_t>(flooding), static_cast<int32_t>(sweeping)));
}

TEST(Watershed, NodesFormAListInOrder) {
  static_assert(sizeof(WSNode) == sizeof(void*) + 8);
  static_assert(offsetof(WSNode, labelIndex) == sizeof(void*) && offsetof(WSNode, sourceIndex) == sizeof(void*) + 4);
  const Buffer block(6 * int{sizeof(WSNode)}, 3);
  auto* const nodes = block.as<WSNode>();
  EXPECT_EQ(ownAllocWSNodes(nodes, 0, 3, 2), nodes);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(static_cast<WSNode*>(nodes[i].next), i == 5 ? nullptr : nodes + i + 1);
}

// --- Flooding -------------------------------------------------------------------------------------------------------

TEST(WatershedFlooding, MeetsOnTheRidge) {
  const auto src = grid<Tev8u>({{1, 3, 9, 3, 1}, {1, 4, 8, 3, 1}, {1, 5, 9, 3, 1}});
  const auto markers = grid<Tev8u>({{0, 0, 0, 0, 0}, {1, 0, 0, 0, 2}, {0, 0, 0, 0, 0}});
  // The ridge is claimed at its lowest pixel, by the side that came to its foot first.
  EXPECT_SAME_IMAGE(segment(src, markers, tevWatershedNormCity, flood),
                    grid<Tev8u>({{1, 1, 1, 2, 2}, {1, 1, 2, 2, 2}, {1, 1, 2, 2, 2}}));
  EXPECT_SAME_IMAGE(segment(src, markers, tevWatershedNormCity, flood | bound4),
                    grid<Tev8u>({{1, 1, 255, 2, 2}, {1, 1, 255, 2, 2}, {1, 1, 255, 2, 2}}));
}

TEST(WatershedFlooding, FirstInTheQueueWinsATie) {
  const auto flat = grid<Tev8u>({{5, 5, 5, 5, 5}});
  EXPECT_SAME_IMAGE(segment(flat, grid<Tev8u>({{1, 0, 0, 0, 2}}), 1, flood), grid<Tev8u>({{1, 1, 1, 2, 2}}));
  EXPECT_SAME_IMAGE(segment(flat, grid<Tev8u>({{2, 0, 0, 0, 1}}), 0, flood), grid<Tev8u>({{2, 2, 2, 1, 1}}));
}

TEST(WatershedFlooding, EqualsAStepByStepFlood) {
  onManyScenes(400, 24, [](const Scene& s, int i) {
    for (int norm : {0, 1})
      for (uint32_t bounds : boundFlags)
        EXPECT_SAME_IMAGE(segment(s.src, s.markers, norm, flood | bounds, i % 32),
                          Flood(s.src, s.markers, norm, bounds).labels());
  });
}

TEST(WatershedFlooding, EqualsAStepByStepFloodOnAPicture) {
  Random random(3);
  const int width = 203, height = 141;
  Image<Tev8u> src = random.image<Tev8u>(width, height, [&] { return random.between(0, 40); });
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      src.set(x, y, static_cast<Tev8u>(src.at(x, y) + (((x >> 3) * 5 ^ (y >> 3) * 3) & 127)));
  Image<Tev8u> markers(width, height);
  markers.fill(0);
  for (int label = 1; label <= 30; ++label)
    markers.set(random.between(0, width - 1), random.between(0, height - 1), static_cast<Tev8u>(label));
  for (int norm : {0, 1})
    for (uint32_t bounds : boundFlags)
      EXPECT_SAME_IMAGE(segment(src, markers, norm, flood | bounds, 5), Flood(src, markers, norm, bounds).labels());
}

TEST(WatershedFlooding, LeavesAnImageWithoutMarkersAsItWas) {
  Random random(1);
  const auto src = random.image<Tev8u>(9, 7);
  Image<Tev8u> none(9, 7);
  none.fill(0);
  for (uint32_t bounds : boundFlags) EXPECT_SAME_IMAGE(segment(src, none, 0, flood | bounds), none);
}

TEST(WatershedFlooding, AllPixelsMarkedOnlyTakeTheirBoundaries) {
  const auto src = grid<Tev8u>({{1, 2, 3, 4}, {4, 3, 2, 1}});
  const auto markers = grid<Tev8u>({{1, 1, 2, 2}, {1, 1, 1, 2}});
  EXPECT_SAME_IMAGE(segment(src, markers, 0, flood), markers);
  // Row by row: a pixel that has become boundary no longer counts for those after it.
  EXPECT_SAME_IMAGE(segment(src, markers, 0, flood | bound4), grid<Tev8u>({{1, 255, 255, 2}, {1, 1, 255, 2}}));
  EXPECT_SAME_IMAGE(segment(src, markers, 0, flood | bound8), grid<Tev8u>({{1, 255, 255, 255}, {1, 1, 255, 2}}));
}

TEST(WatershedFlooding, BothBoundaryFlagsLookAtEightAmongMarkersAndAtFourInTheFlood) {
  const auto flat = grid<Tev8u>({{5, 5, 5, 5}, {5, 5, 5, 5}});
  const auto touching = grid<Tev8u>({{1, 0, 0, 0}, {0, 2, 0, 0}});
  EXPECT_SAME_IMAGE(segment(flat, touching, 1, flood | bound4), Flood(flat, touching, 1, bound4).labels());
  const auto both = segment(flat, touching, 1, flood | bound4 | bound8);
  EXPECT_EQ(both.at(0, 0), 255);  // seen across the corner
  EXPECT_EQ(segment(flat, touching, 1, flood | bound4).at(0, 0), 1);
  EXPECT_SAME_IMAGE(both, Flood(flat, touching, 1, bound4 | bound8).labels());
}

TEST(WatershedFlooding, AMarkerOf255FloodsAndItsNeighboursTakeTheFirstLabelTheySee) {
  const auto flat = grid<Tev8u>({{5, 5, 5, 5, 5}});
  const auto markers = grid<Tev8u>({{255, 0, 0, 0, 3}});
  EXPECT_SAME_IMAGE(segment(flat, markers, 1, flood), grid<Tev8u>({{255, 255, 255, 3, 3}}));
  EXPECT_SAME_IMAGE(segment(flat, markers, 1, flood | bound4), grid<Tev8u>({{255, 255, 3, 3, 3}}));
}

TEST(WatershedFlooding, WinsOverSweeping) {
  onManyScenes(20, 12, [](const Scene& s, int) {
    EXPECT_SAME_IMAGE(segment(s.src, s.markers, 1, flood | sweep | bound8),
                      segment(s.src, s.markers, 1, flood | bound8));
  });
}

TEST(WatershedFlooding, WorkerDoesTheWholeMethod) {
  onManyScenes(20, 12, [](const Scene& s, int) {
    const Image<Tev8u> labels = s.markers.clone();
    const Buffer buffer = scratch(s.src.size(), 1);
    EXPECT_EQ(ownSegmentWaterhedPQ_8u_C1IR(s.src.data(), s.src.step(), labels.data(), labels.step(), s.src.size(), 0,
                                           flood | bound4, buffer.data()),
              tevStatusOk);
    EXPECT_SAME_IMAGE(labels, segment(s.src, s.markers, 0, flood | bound4));
  });
}

#if UINTPTR_MAX > UINT32_MAX
TEST(WatershedFlooding, ReachesEveryRowOfAnImageThatSpansMoreThan4GiB) {
  constexpr int step = INT32_MAX, width = 5, height = 4;
  constexpr size_t bytes = size_t{step} * (height - 1) + width;
  void* const map = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED) GTEST_SKIP() << "no address space";
  auto* const far = static_cast<Tev8u*>(map);
  Random random(4);
  const auto src = random.image<Tev8u>(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) far[ptrdiff_t{step} * y + x] = src.at(x, y);
  const auto markers = grid<Tev8u>({{1, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 2, 0, 0, 3}});
  for (uint32_t method : {flood, sweep}) {
    const Image<Tev8u> labels = markers.clone();
    const Buffer buffer = scratch(src.size());
    EXPECT_EQ(
        teviSegmentWatershed_8u_C1IR(far, step, labels.data(), labels.step(), src.size(), 0, method, buffer.data()),
        tevStatusOk);
    EXPECT_SAME_IMAGE(labels, segment(src, markers, 0, method));
  }
  munmap(map, bytes);
}
#endif

// --- Sweeping -------------------------------------------------------------------------------------------------------

TEST(WatershedSweeping, MeetsOnTheRidge) {
  const auto src = grid<Tev8u>({{1, 3, 9, 3, 1}, {1, 4, 9, 3, 1}, {1, 5, 9, 3, 1}});
  const auto markers = grid<Tev8u>({{0, 0, 0, 0, 0}, {1, 0, 0, 0, 2}, {0, 0, 0, 0, 0}});
  for (int norm = 0; norm < 4; ++norm) {
    const auto labels = segment(src, markers, norm, sweep);
    for (int y = 0; y < 3; ++y)
      for (int x : {0, 1, 3, 4}) EXPECT_EQ(labels.at(x, y), x < 2 ? 1 : 2);
    EXPECT_SAME_IMAGE(labels, Sweep(src, markers, norm).labels());
  }
}

TEST(WatershedSweeping, TiesGoToTheCandidateTriedFirst) {
  const auto flat = grid<Tev8u>({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}});
  // Left before above on the way out, in every norm.
  const auto markers = grid<Tev8u>({{0, 1, 0}, {2, 0, 0}, {0, 0, 0}});
  for (int norm = 0; norm < 4; ++norm) EXPECT_EQ(segment(flat, markers, norm, sweep).at(1, 1), 2);
  // Upward the diagonal norms try the neighbour below right before the one below, and that one before below left.
  const auto below = grid<Tev8u>({{0, 0, 0}, {0, 0, 0}, {3, 0, 4}});
  EXPECT_EQ(segment(flat, below, tevWatershedNormChess, sweep).at(1, 1), 4);
  EXPECT_EQ(segment(flat, below, tevWatershedNormChamfer, sweep).at(1, 1), 4);
  // In the last column below left comes before below.
  const auto corner = grid<Tev8u>({{0, 0}, {5, 6}});
  EXPECT_EQ(segment(grid<Tev8u>({{0, 0}, {0, 0}}), corner, tevWatershedNormChess, sweep).at(1, 0), 5);
}

TEST(WatershedSweeping, EqualsAStepByStepSweepWithItsCostsAndDirections) {
  onManyScenes(400, 40, [](const Scene& s, int i) {
    for (int norm = 0; norm < 4; ++norm) {
      const Sweep expected(s.src, s.markers, norm);
      const Image<Tev8u> labels = s.markers.clone();
      const Buffer buffer = scratch(s.src.size(), i % 32);
      EXPECT_EQ(teviSegmentWatershed_8u_C1IR(s.src.data(), s.src.step(), labels.data(), labels.step(), s.src.size(),
                                             norm, sweep, buffer.data()),
                tevStatusOk);
      EXPECT_SAME_IMAGE(labels, expected.labels());
      const Traces traces = tracesOf(buffer, s.src.size());
      int costs = 0, directions = 0;
      for (int y = 0; y < labels.height(); ++y)
        for (int x = 0; x < labels.width(); ++x) {
          costs += traces.cost[y * traces.pitch + x] != expected.cost(x, y);
          directions += traces.from[y * traces.pitch + x] != expected.from(x, y);
        }
      EXPECT_EQ(costs, 0);
      EXPECT_EQ(directions, 0);
    }
  });
}

// For every pixel that water reaches: no neighbour that it looks at offers less on its own (two of them together may,
// in the eikonal norm: a pixel rests once the pairs of one sweep offer nothing), and the label is that of the neighbour
// which it follows.
TEST(WatershedSweeping, ReachesTheFixedPointOfItsUpdateRule) {
  onManyScenes(120, 40, [](const Scene& s, int) {
    for (int norm = 0; norm < 4; ++norm) {
      const Image<Tev8u> labels = s.markers.clone();
      const Buffer buffer = scratch(s.src.size());
      teviSegmentWatershed_8u_C1IR(s.src.data(), s.src.step(), labels.data(), labels.step(), s.src.size(), norm, sweep,
                                   buffer.data());
      const Sweep rule(s.src, s.markers, norm);
      const Traces traces = tracesOf(buffer, s.src.size());
      for (int y = 0; y < labels.height(); ++y)
        for (int x = 0; x < labels.width(); ++x) {
          const int at = y * traces.pitch + x;
          const Step parent = direction[traces.from[at]];
          EXPECT_EQ(labels.at(x, y), labels.at(x + parent.dx, y + parent.dy));
          EXPECT_EQ(traces.from[at] == 0, s.markers.at(x, y) != 0);
          const Tev32s cost = traces.cost[at];
          if (labels.height() == 1 || cost >= unknown) continue;
          int64_t best = INT64_MAX;
          const auto offers = [&](const std::vector<int>& candidates) {
            for (int code : candidates) best = std::min(best, rule.update(x, y, {code}).cost);
          };
          if (x + 1 < labels.width()) offers({1});
          if (y > 0) offers(rule.outward(x, true));
          if (y + 1 < labels.height()) offers(rule.outward(x, false));
          EXPECT_LE(cost, best);
        }
    }
  });
}

// The costs are those of the best paths, found here in order of cost. The first column looks at its straight neighbours
// alone.
TEST(WatershedSweeping, FindsTheBestPathsOfChessCityAndChamfer) {
  onManyScenes(120, 40, [](const Scene& s, int) {
    const int w = s.src.width(), h = s.src.height();
    if (h == 1) return;
    for (int norm = 0; norm < 3; ++norm) {
      std::vector<int64_t> best(static_cast<size_t>(w * h), INT64_MAX);
      using Entry = std::pair<int64_t, int>;
      std::priority_queue<Entry, std::vector<Entry>, std::greater<>> open;
      const auto offer = [&](int64_t cost, int at) {
        if (cost >= best[static_cast<size_t>(at)]) return;
        best[static_cast<size_t>(at)] = cost;
        open.emplace(cost, at);
      };
      for (int i = 0; i < w * h; ++i)
        if (s.markers.at(i % w, i / w)) offer(int64_t{s.src.at(i % w, i / w)} << 23, i);
      while (!open.empty()) {
        const auto [cost, at] = open.top();
        open.pop();
        if (cost > best[static_cast<size_t>(at)]) continue;
        for (int code = 1; code <= 8; ++code) {
          const int x = at % w + direction[code].dx, y = at / w + direction[code].dy;
          if (x < 0 || y < 0 || x >= w || y >= h || (code % 2 == 0 && (norm == 1 || x == 0))) continue;
          const int length = norm == 2 && w > 1 ? (code % 2 ? 11 : 15) : 1;
          offer(std::max(int64_t{s.src.at(x, y)} << 23, cost + length), y * w + x);
        }
      }
      const Image<Tev8u> labels = s.markers.clone();
      const Buffer buffer = scratch(s.src.size());
      teviSegmentWatershed_8u_C1IR(s.src.data(), s.src.step(), labels.data(), labels.step(), s.src.size(), norm, sweep,
                                   buffer.data());
      const Traces traces = tracesOf(buffer, s.src.size());
      int wrong = 0;
      for (int i = 0; i < w * h; ++i) {
        const int64_t found = traces.cost[i / w * traces.pitch + i % w];
        const int64_t expected = best[static_cast<size_t>(i)];
        wrong += expected == INT64_MAX ? found < unknown : found != expected;
      }
      EXPECT_EQ(wrong, 0);
    }
  });
}

TEST(WatershedSweeping, DrawsBoundariesByCost) {
  onManyScenes(200, 24, [](const Scene& s, int) {
    for (int norm = 0; norm < 4; ++norm)
      for (uint32_t bounds : {bound4, bound8, bound4 | bound8}) {
        const Sweep plain(s.src, s.markers, norm);
        const int w = s.src.width(), h = s.src.height();
        Image<Tev8u> expected = plain.labels().clone();
        std::vector<Tev32s> cost;
        for (int i = 0; i < w * h; ++i) cost.push_back(static_cast<Tev32s>(plain.cost(i % w, i / w)));
        ownBoundSegments_8u_C1IR(expected.data(), expected.step(), cost.data(), w * 4, w, h, 255,
                                 bounds & bound4 ? 1 : 0);
        EXPECT_SAME_IMAGE(segment(s.src, s.markers, norm, sweep | bounds), expected);
      }
  });
}

TEST(WatershedSweeping, ReadsTheCostsOfBoundariesFromTheStartOfTheBuffer) {
  onManyScenes(200, 24, [](const Scene& s, int i) {
    const int w = s.src.width(), h = s.src.height(), beyond = i % 32;
    const Image<Tev8u> expected = s.markers.clone();
    const Buffer buffer = scratch(s.src.size(), beyond);
    teviSegmentWatershed_8u_C1IR(s.src.data(), s.src.step(), expected.data(), expected.step(), s.src.size(), 0, sweep,
                                 buffer.data());
    ownBoundSegments_8u_C1IR(expected.data(), expected.step(), buffer.as<Tev32s>(), ((w + 31) & ~31) * 4, w, h, 255, 1);
    EXPECT_SAME_IMAGE(segment(s.src, s.markers, 0, sweep | bound4, beyond), expected);
  });
}

TEST(WatershedSweeping, KeepsLabel0WithoutMarkers) {
  Random random(2);
  for (TevSize size : {TevSize{1, 1}, TevSize{9, 7}, TevSize{1, 6}, TevSize{40, 1}}) {
    const auto src = random.image<Tev8u>(size.width, size.height);
    Image<Tev8u> none(size.width, size.height);
    none.fill(0);
    for (int norm = 0; norm < 4; ++norm) EXPECT_SAME_IMAGE(segment(src, none, norm, sweep), none);
  }
}

TEST(WatershedSweeping, KeepsMarkersAndFloodsFrom255) {
  const auto flat = grid<Tev8u>({{5, 5, 5}, {5, 5, 5}});
  EXPECT_SAME_IMAGE(segment(flat, grid<Tev8u>({{255, 0, 0}, {0, 0, 0}}), 0, sweep),
                    grid<Tev8u>({{255, 255, 255}, {255, 255, 255}}));
  const auto all = grid<Tev8u>({{1, 2, 3}, {4, 5, 6}});
  EXPECT_SAME_IMAGE(segment(flat, all, 3, sweep), all);
}

TEST(WatershedSweeping, ASingleRowTakesOneSweep) {
  const auto src = grid<Tev8u>({{9, 1, 1, 7, 2, 2}});
  for (int norm = 0; norm < 4; ++norm)
    EXPECT_SAME_IMAGE(segment(src, grid<Tev8u>({{0, 0, 1, 0, 2, 0}}), norm, sweep), grid<Tev8u>({{1, 1, 1, 1, 2, 2}}));
}

TEST(WatershedSweeping, ASingleColumnCountsStepsOfOneInEveryNorm) {
  Random random(5);
  const Scene s = scene(random, 1, 50);
  const auto city = segment(s.src, s.markers, tevWatershedNormCity, sweep);
  for (int norm : {0, 2, 3}) EXPECT_SAME_IMAGE(segment(s.src, s.markers, norm, sweep), city);
  const auto flat = grid<Tev8u>({{0}, {0}, {0}, {0}});
  const Image<Tev8u> labels = grid<Tev8u>({{0}, {0}, {0}, {8}});
  const Buffer buffer = scratch(flat.size());
  teviSegmentWatershed_8u_C1IR(flat.data(), flat.step(), labels.data(), labels.step(), flat.size(), 3, sweep,
                               buffer.data());
  EXPECT_EQ(tracesOf(buffer, flat.size()).cost[0], 3);
}

TEST(WatershedSweeping, CrossesGroundTooWideForTheCountOfSteps) {
  // 70000 eikonal steps of 64 pass 31 bits before the marker at the far end is met.
  constexpr int width = 70000;
  Image<Tev8u> src(width, 2), markers(width, 2), filled(width, 2);
  src.fill(0);
  markers.fill(0);
  filled.fill(3);
  markers.set(width - 1, 1, 3);
  EXPECT_SAME_IMAGE(segment(src, markers, tevWatershedNormEikonal, sweep), filled);
}

TEST(Watershed, LeavesTheSourceAndUsesNoAllocation) {
  Random random(6);
  const Scene s = scene(random, 31, 17);
  const auto before = s.src.bytes();
  const kit::AllocatorWatch watch;
  for (int norm : {0, 1})
    for (uint32_t method : {flood, sweep}) segment(s.src, s.markers, norm, method | bound8);
  EXPECT_EQ(watch.requests(), 0);
  EXPECT_EQ(s.src.bytes(), before);
}
