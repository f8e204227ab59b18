#include <sys/mman.h>

#include <algorithm>
#include <deque>

#include "kit/kit.h"
#include "tevcv/segmentation.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr uint32_t bound4 = tevWatershedBound4, bound8 = tevWatershedBound8;
constexpr uint32_t boundFlags[] = {0, bound4, bound8, bound4 | bound8};

int bufferSize(TevSize roi, int channels = 1) {
  int size = 0;
  EXPECT_EQ(channels == 3 ? teviSegmentGradientGetBufferSize_8u_C3R(roi, &size)
                          : teviSegmentGradientGetBufferSize_8u_C1R(roi, &size),
            tevStatusOk);
  return size;
}

template <int channels>
TevStatus segmentGradient(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep, TevSize roi, int norm,
                          uint32_t flags, Tev8u* buffer) {
  if constexpr (channels == 3)
    return teviSegmentGradient_8u_C3IR(src, srcStep, markers, markerStep, roi, norm, flags, buffer);
  else
    return teviSegmentGradient_8u_C1IR(src, srcStep, markers, markerStep, roi, norm, flags, buffer);
}

template <int channels>
Image<Tev8u> segment(const Image<Tev8u, channels>& src, const Image<Tev8u>& markers, int norm, uint32_t flags = 0,
                     int misalignment = 0) {
  Image<Tev8u> labels = markers.clone();
  const Buffer buffer(bufferSize(src.size(), channels), misalignment);
  EXPECT_EQ(segmentGradient<channels>(src.data(), src.step(), labels.data(), labels.step(), src.size(), norm, flags,
                                      buffer.data()),
            tevStatusOk);
  for (int y = 0; y + 1 < labels.height(); ++y)  // row padding is not written
    for (int i = labels.width(); i < labels.step(); ++i)
      EXPECT_EQ(labels.data()[y * labels.step() + i], markers.data()[y * markers.step() + i]);
  return labels;
}

// Growth step by step.
template <int channels>
class Growth {
 public:
  Growth(const Image<Tev8u, channels>& src, const Image<Tev8u>& markers, int norm, uint32_t flags)
      : src_(src), markers_(markers), labels_(markers.clone()), reach_(norm == 0 ? 8 : 4), flags_(flags) {}

  Image<Tev8u> run() {
    const int w = labels_.width(), h = labels_.height();
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        if (x == 0 || y == 0 || x == w - 1 || y == h - 1) labels_.set(x, y, 255);
    for (int y = 1; y < h - 1; ++y)
      for (int x = 1; x < w - 1; ++x) {
        if (labels_.at(x, y) != 0) continue;
        int least = 256;
        for (int k = 0; k < reach_; ++k)
          if (const int n = neighbour(x, y, k); n >= 1 && n <= 254) least = std::min(least, key(x, y, k));
        if (least == 256) continue;
        queues_[least].emplace_back(x, y);
        labels_.set(x, y, 255);
      }
    int level = 0;
    while (level < 256 && queues_[level].empty()) ++level;
    if (level == 256) return markers_.clone();
    for (;;) {
      while (level < 256 && queues_[level].empty()) ++level;
      if (level == 256) return labels_.clone();
      const auto [x, y] = queues_[level].front();
      queues_[level].pop_front();
      level = std::min(level, label(x, y));
    }
  }

 private:
  static constexpr int dx[8] = {-1, 1, 0, 0, -1, 1, -1, 1}, dy[8] = {0, 0, -1, 1, -1, -1, 1, 1};

  int neighbour(int x, int y, int k) const { return labels_.at(x + dx[k], y + dy[k]); }
  int key(int x, int y, int k) const {
    int largest = 0;
    for (int c = 0; c < channels; ++c)
      largest = std::max(largest, std::abs(src_.at(x, y, c) - src_.at(x + dx[k], y + dy[k], c)));
    return largest;
  }

  // Labels a pixel and queues the free ones around it; returns the lowest key among these.
  int label(int x, int y) {
    int best = 256;
    Tev8u taken = 255;
    for (int k = 0; k < reach_; ++k) {
      const int n = neighbour(x, y, k);
      if (n < 1 || n > 254) continue;
      if (key(x, y, k) < best || (key(x, y, k) == best && n < 254)) {
        taken = static_cast<Tev8u>(n);
        best = key(x, y, k);
      }
    }
    labels_.set(x, y, taken);
    if (flags_ & (bound4 | bound8))
      for (int k = 0; k < (flags_ & bound8 ? 8 : 4); ++k)
        if (const int n = neighbour(x, y, k); n >= 1 && n <= 253 && n != taken) labels_.set(x, y, 254);
    int lowest = 256;
    for (int k = 0; k < reach_; ++k) {
      if (neighbour(x, y, k) != 0) continue;
      queues_[key(x, y, k)].emplace_back(x + dx[k], y + dy[k]);
      labels_.set(x + dx[k], y + dy[k], 255);
      lowest = std::min(lowest, key(x, y, k));
    }
    return lowest;
  }

  const Image<Tev8u, channels>& src_;
  const Image<Tev8u>& markers_;
  Image<Tev8u> labels_;
  int reach_;
  uint32_t flags_;
  std::deque<std::pair<int, int>> queues_[256];
};

template <int channels>
void equalsGrowthOnRandomRegions() {
  Random random(channels);
  constexpr Tev8u kinds[] = {1, 2, 3, 253, 254, 255};
  for (int i = 0; i < 400; ++i) {
    const int width = random.between(1, 28), height = random.between(1, 28), levels = random.between(2, 256);
    const int density = random.between(2, 60), most = random.between(1, 6);
    const auto src = random.image<Tev8u, channels>(width, height, [&] { return random.between(0, levels - 1); });
    const auto markers = random.image<Tev8u>(
        width, height, [&] { return random.oneIn(density) ? kinds[random.between(0, most - 1)] : 0; });
    for (int norm : {0, 1})
      for (uint32_t flags : boundFlags)
        ASSERT_SAME_IMAGE(segment(src, markers, norm, flags, i % 32),
                          Growth<channels>(src, markers, norm, flags).run());
  }
}

template <int channels>
void refusesBadArgumentsInOrder() {
  Image<Tev8u, channels> src(4, 3);
  Image<Tev8u> m(4, 3);
  const Buffer b(bufferSize(src.size(), channels));
  const auto call = segmentGradient<channels>;
  const int step = 4 * channels;
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, m.data(), 0, {0, 0}, 5, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 0, nullptr, 0, {0, 0}, 5, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 0, m.data(), 0, {0, 0}, 5, 0, nullptr), m, b);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, m.data(), 0, {0, 3}, 5, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, m.data(), 0, {4, 0}, 5, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, m.data(), 0, {-4, -3}, 5, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), step - 1, m.data(), 4, {4, 3}, 5, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), step, m.data(), 3, {4, 3}, 5, 0, b.data()), m, b);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), INT32_MAX, m.data(), 4, {INT32_MAX, 3}, 0, 0, b.data()), m, b);
  for (int norm : {-1, 2, INT32_MIN, INT32_MAX})
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), step, m.data(), 4, {4, 3}, norm, 0, b.data()), m, b);
}

}  // namespace

TEST(GradientSegmentation, RefusesBadArgumentsInOrder) {
  refusesBadArgumentsInOrder<1>();
  refusesBadArgumentsInOrder<3>();
}

TEST(GradientSegmentation, BufferHoldsANodeAndALabelForEachPixel) {
  int size = -7;
  EXPECT_FAILS(tevStatusNullPtr, teviSegmentGradientGetBufferSize_8u_C1R({0, 0}, nullptr), size);
  EXPECT_FAILS(tevStatusBadSize, teviSegmentGradientGetBufferSize_8u_C1R({0, 1}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviSegmentGradientGetBufferSize_8u_C1R({1, 0}, &size), size);
  EXPECT_FAILS(tevStatusNullPtr, teviSegmentGradientGetBufferSize_8u_C3R({0, 0}, nullptr), size);
  EXPECT_FAILS(tevStatusBadSize, teviSegmentGradientGetBufferSize_8u_C3R({0, 1}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviSegmentGradientGetBufferSize_8u_C3R({1, 0}, &size), size);
  const int perPixel = sizeof(void*) == 8 ? 17 : 13;
  for (int channels : {1, 3}) {
    EXPECT_EQ(bufferSize({1, 1}, channels), perPixel + 103);
    EXPECT_EQ(bufferSize({7, 5}, channels), 35 * perPixel + 103);
    EXPECT_EQ(bufferSize({1920, 1080}, channels), 2073600 * perPixel + 103);
    EXPECT_EQ(bufferSize({20000, 20000}, channels), INT32_MAX);
    EXPECT_EQ(bufferSize({INT32_MAX, INT32_MAX}, channels), INT32_MAX);
  }
}

TEST(GradientSegmentation, RegionsStopAtAnEdge) {
  const auto src = grid<Tev8u>({{0, 0, 0, 0, 0, 0, 0},
                                {0, 10, 11, 12, 60, 61, 0},
                                {0, 10, 12, 13, 62, 61, 0},
                                {0, 11, 12, 14, 61, 60, 0},
                                {0, 0, 0, 0, 0, 0, 0}});
  const auto markers = grid<Tev8u>({{0, 0, 0, 0, 0, 0, 0},
                                    {0, 1, 0, 0, 0, 0, 0},
                                    {0, 0, 0, 0, 0, 0, 0},
                                    {0, 0, 0, 0, 0, 2, 0},
                                    {0, 0, 0, 0, 0, 0, 0}});
  EXPECT_SAME_IMAGE(segment(src, markers, 1), grid<Tev8u>({{255, 255, 255, 255, 255, 255, 255},
                                                           {255, 1, 1, 1, 2, 2, 255},
                                                           {255, 1, 1, 1, 2, 2, 255},
                                                           {255, 1, 1, 1, 2, 2, 255},
                                                           {255, 255, 255, 255, 255, 255, 255}}));
}

TEST(GradientSegmentation, ThreeChannelsDifferByTheLargest) {
  // Blue alone separates the halves.
  Image<Tev8u, 3> src(6, 3);
  src.fill(100);
  for (int y = 0; y < 3; ++y)
    for (int x = 3; x < 6; ++x) src.set(x * 3 + 2, y, 200);
  const auto markers = grid<Tev8u>({{0, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 2, 0}, {0, 0, 0, 0, 0, 0}});
  EXPECT_SAME_IMAGE(
      segment(src, markers, 0),
      grid<Tev8u>({{255, 255, 255, 255, 255, 255}, {255, 1, 1, 2, 2, 255}, {255, 255, 255, 255, 255, 255}}));
}

TEST(GradientSegmentation, EqualsAStepByStepGrowthC1) { equalsGrowthOnRandomRegions<1>(); }
TEST(GradientSegmentation, EqualsAStepByStepGrowthC3) { equalsGrowthOnRandomRegions<3>(); }

TEST(GradientSegmentation, EqualsAStepByStepGrowthOnAPicture) {
  Random random(9);
  const int width = 161, height = 117;
  const auto src = random.image<Tev8u, 3>(width, height, [&, i = 0]() mutable {
    ++i;
    return (random.between(0, 12) + ((i >> 5) * 7 ^ (i / width >> 4) * 9)) & 255;
  });
  Image<Tev8u> markers(width, height);
  markers.fill(0);
  for (int label = 1; label <= 40; ++label)
    markers.set(random.between(1, width - 2), random.between(1, height - 2), static_cast<Tev8u>(label));
  for (int norm : {0, 1})
    for (uint32_t flags : boundFlags)
      EXPECT_SAME_IMAGE(segment(src, markers, norm, flags), Growth<3>(src, markers, norm, flags).run());
}

TEST(GradientSegmentation, LeavesImagesBelowThreePixelsAsTheyWere) {
  Random random(2);
  for (TevSize size : {TevSize{1, 1}, TevSize{2, 2}, TevSize{9, 2}, TevSize{2, 9}, TevSize{1, 9}, TevSize{9, 1}}) {
    const auto src = random.image<Tev8u>(size.width, size.height);
    const auto markers = random.mask(size.width, size.height);
    for (uint32_t flags : boundFlags) EXPECT_SAME_IMAGE(segment(src, markers, 0, flags), markers);
  }
}

TEST(GradientSegmentation, LeavesMarkersWithNothingToGrowAsTheyWere) {
  Random random(3);
  const auto src = random.image<Tev8u>(6, 5);
  Image<Tev8u> none(6, 5), all(6, 5);
  none.fill(0);
  all.fill(7);
  EXPECT_SAME_IMAGE(segment(src, none, 0), none);  // the frame too
  EXPECT_SAME_IMAGE(segment(src, all, 0), all);    // labelled pixels with labelled neighbours add nothing
}

TEST(GradientSegmentation, MarkersOnTheFrameAreLost) {
  const auto src = grid<Tev8u>({{5, 5, 5, 5}, {5, 5, 5, 5}, {5, 5, 5, 5}});
  EXPECT_SAME_IMAGE(segment(src, grid<Tev8u>({{9, 9, 9, 9}, {9, 1, 0, 9}, {9, 9, 9, 9}}), 0),
                    grid<Tev8u>({{255, 255, 255, 255}, {255, 1, 1, 255}, {255, 255, 255, 255}}));
  const auto frameOnly = grid<Tev8u>({{9, 9, 9, 9}, {9, 0, 0, 9}, {9, 9, 9, 9}});
  EXPECT_SAME_IMAGE(segment(src, frameOnly, 0), frameOnly);
}

TEST(GradientSegmentation, OfEqualKeysTheLaterNeighbourWins) {
  const auto flat = grid<Tev8u>({{5, 5, 5, 5, 5}, {5, 5, 5, 5, 5}, {5, 5, 5, 5, 5}});
  const auto markers = grid<Tev8u>({{0, 0, 0, 0, 0}, {0, 1, 0, 2, 0}, {0, 0, 0, 0, 0}});
  EXPECT_EQ(segment(flat, markers, 1).at(2, 1), 2);            // right after left
  EXPECT_EQ(segment(flat, markers, 1, bound4).at(2, 1), 254);  // and it touches both
  // A boundary label does not replace an equal one before it.
  const auto boundary = grid<Tev8u>({{0, 0, 0, 0, 0}, {0, 1, 0, 254, 0}, {0, 0, 0, 0, 0}});
  EXPECT_EQ(segment(flat, boundary, 1).at(2, 1), 1);
}

TEST(GradientSegmentation, EightNeighboursDecideWhereBothBoundaryFlagsAreSet) {
  const auto src = grid<Tev8u>({{5, 5, 5, 5}, {5, 5, 5, 5}, {5, 5, 90, 5}, {5, 5, 5, 5}});
  const auto markers = grid<Tev8u>({{0, 0, 0, 0}, {0, 1, 0, 0}, {0, 1, 2, 0}, {0, 0, 0, 0}});
  EXPECT_SAME_IMAGE(segment(src, markers, 1, bound4 | bound8), segment(src, markers, 1, bound8));
  const auto corner = grid<Tev8u>({{0, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 0, 2, 0}, {0, 0, 0, 0, 0}});
  Image<Tev8u> flat(5, 4);
  flat.fill(5);
  EXPECT_SAME_IMAGE(segment(flat, corner, 1, bound4 | bound8), segment(flat, corner, 1, bound8));
  EXPECT_FALSE(segment(flat, corner, 1, bound4) == segment(flat, corner, 1, bound8));
}

#if UINTPTR_MAX > UINT32_MAX
TEST(GradientSegmentation, ReachesEveryRowOfAnImageThatSpansMoreThan4GiB) {
  constexpr int step = INT32_MAX, width = 5, height = 5;
  constexpr size_t bytes = size_t{step} * (height - 1) + width * 3;
  void* const map = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED) GTEST_SKIP() << "no address space";
  auto* const far = static_cast<Tev8u*>(map);
  Random random(4);
  const auto src = random.image<Tev8u, 3>(width, height);
  for (int y = 0; y < height; ++y)
    for (int i = 0; i < width * 3; ++i) far[ptrdiff_t{step} * y + i] = src.get(i, y);
  const auto markers =
      grid<Tev8u>({{0, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 2, 0}, {0, 0, 0, 0, 0}});
  const Image<Tev8u> labels = markers.clone();
  const Buffer buffer(bufferSize(src.size(), 3));
  EXPECT_EQ(teviSegmentGradient_8u_C3IR(far, step, labels.data(), labels.step(), src.size(), 0, 0, buffer.data()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(labels, segment(src, markers, 0));
  munmap(map, bytes);
}
#endif

TEST(GradientSegmentation, CopiesWideRowsAlike) {
  Random random(5);
  for (int width : {3200, 3201, 4000}) {
    const auto src = random.image<Tev8u>(width, 3, [&] { return random.between(0, 9); });
    Image<Tev8u> markers(width, 3);
    markers.fill(0);
    markers.set(5, 1, 1);
    markers.set(width - 5, 1, 2);
    EXPECT_SAME_IMAGE(segment(src, markers, 0), Growth<1>(src, markers, 0, 0).run());
  }
}

TEST(GradientSegmentation, LeavesTheSourceAndUsesNoAllocation) {
  Random random(6);
  const auto src = random.image<Tev8u>(31, 17);
  const auto markers = random.mask(31, 17, 40);
  const auto before = src.bytes();
  const kit::AllocatorWatch watch;
  segment(src, markers, 0, bound8);
  EXPECT_EQ(watch.requests(), 0);
  EXPECT_EQ(src.bytes(), before);
}
