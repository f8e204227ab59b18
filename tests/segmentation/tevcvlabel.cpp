#include "segmentation/floodfill.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

int label(Image<Tev8u>& markers, int minLabel, int maxLabel, int norm) {
  static int misalignment = 0;
  int size = 0, count = -1;
  EXPECT_EQ(teviLabelMarkersGetBufferSize_8u_C1R(markers.size(), &size), tevStatusOk);
  const Buffer buffer(size, ++misalignment % 8);
  EXPECT_EQ(teviLabelMarkers_8u_C1IR(markers.data(), markers.step(), markers.size(), minLabel, maxLabel, norm, &count,
                                     buffer.data()),
            tevStatusOk);
  return count;
}

// Components in raster order, each found by a breadth-first search.
int labelByDefinition(Image<Tev8u>& markers, int minLabel, int maxLabel, int norm) {
  const auto before = markers.clone();
  std::vector<char> done(static_cast<std::size_t>(markers.width()) * markers.height());
  int count = 0, next = minLabel;
  for (int y = 0, i = 0; y < markers.height(); ++y)
    for (int x = 0; x < markers.width(); ++x, ++i) {
      if (before.at(x, y) == 0 || done[i]) continue;
      const auto marks = fills::reached(before.size(), {x, y}, norm == 0 ? 8 : 4,
                                        [&](int px, int py) { return before.at(px, py) != 0; });
      for (std::size_t k = 0; k < marks.size(); ++k)
        if (marks[k]) {
          done[k] = 1;
          markers.set(static_cast<int>(k) % markers.width(), static_cast<int>(k) / markers.width(),
                      static_cast<Tev8u>(next));
        }
      if (++next > maxLabel) next = minLabel;
      ++count;
    }
  return count;
}

}  // namespace

TEST(LabelMarkersExample, NumbersComponentsInRasterOrder) {
  auto four = grid<Tev8u>({{0, 7, 0, 1}, {9, 0, 0, 1}, {0, 0, 1, 0}});
  auto eight = four.clone();
  EXPECT_EQ(label(four, 1, 254, 1), 4);
  EXPECT_SAME_IMAGE(four, grid<Tev8u>({{0, 1, 0, 2}, {3, 0, 0, 2}, {0, 0, 4, 0}}));
  EXPECT_EQ(label(eight, 10, 20, 0), 2);
  EXPECT_SAME_IMAGE(eight, grid<Tev8u>({{0, 10, 0, 11}, {10, 0, 0, 11}, {0, 0, 11, 0}}));
}

TEST(LabelMarkers, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 200; ++trial) {
    const int width = random.between(1, trial % 4 == 0 ? 90 : 12), height = random.between(1, 12);
    const int density = random.between(0, 100);
    auto markers = random.image<Tev8u>(width, height,
                                       [&] { return random.between(0, 99) < density ? random.between(1, 255) : 0; });
    const int minLabel = random.between(1, 254), maxLabel = random.between(minLabel, std::min(254, minLabel + 5));
    auto expected = markers.clone();
    const int count = labelByDefinition(expected, minLabel, maxLabel, trial % 2);
    ASSERT_EQ(label(markers, minLabel, maxLabel, trial % 2), count);
    ASSERT_SAME_IMAGE(markers, expected);
  }
}

TEST(LabelMarkers, LabelsRepeatAndTheCountIsTrue) {
  auto markers = grid<Tev8u>({{1, 0, 1, 0, 1, 0, 1, 0, 1}});
  EXPECT_EQ(label(markers, 3, 4, 0), 5);
  EXPECT_SAME_IMAGE(markers, grid<Tev8u>({{3, 0, 4, 0, 3, 0, 4, 0, 3}}));
}

TEST(LabelMarkers, OneLabelServesAllComponents) {
  auto markers = grid<Tev8u>({{1, 0, 2, 0, 3}});
  EXPECT_EQ(label(markers, 254, 254, 1), 3);
  EXPECT_SAME_IMAGE(markers, grid<Tev8u>({{254, 0, 254, 0, 254}}));
}

TEST(LabelMarkers, AnImageWithoutMarkersHasNone) {
  Image<Tev8u> markers(5, 4);
  markers.fill(0);
  EXPECT_EQ(label(markers, 1, 2, 0), 0);
  EXPECT_SAME_IMAGE(markers, Image<Tev8u>(5, 4).fill(0));
}

TEST(LabelMarkers, ThreeRowsOfCombsFitTheirBuffer) {
  auto markers = grid<Tev8u>({{0, 0, 1}, {1, 1, 1}, {1, 0, 1}});
  EXPECT_EQ(label(markers, 1, 1, 1), 1);
}

TEST(LabelMarkers, ChecksPointersThenSizeThenStepThenLabelsThenNorm) {
  Image<Tev8u> markers(4, 3);
  markers.fill(1);
  int count = -9, size = -9;
  const Buffer buffer(6 * 12 + 32);
  Tev8u* const b = buffer.data();
  const auto call = [&](Tev8u* p, int step, TevSize roi, int low, int high, int norm, int* n, Tev8u* scratch) {
    return teviLabelMarkers_8u_C1IR(p, step, roi, low, high, norm, n, scratch);
  };
  Tev8u* const p = markers.data();
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, {0, 0}, 0, 0, 5, &count, b), markers, count, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(p, 4, {4, 3}, 1, 2, 0, nullptr, b), markers, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(p, 4, {4, 3}, 1, 2, 0, &count, nullptr), markers, count);
  EXPECT_FAILS(tevStatusBadSize, call(p, 0, {0, 3}, 0, 0, 5, &count, b), markers, count, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(p, 4, {4, -1}, 1, 2, 0, &count, b), markers, count, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(p, 3, {4, 3}, 0, 0, 5, &count, b), markers, count, buffer);
  EXPECT_FAILS(tevStatusBadArg, call(p, 4, {4, 3}, 0, 2, 0, &count, b), markers, count, buffer);
  EXPECT_FAILS(tevStatusBadArg, call(p, 4, {4, 3}, 1, 255, 0, &count, b), markers, count, buffer);
  EXPECT_FAILS(tevStatusBadArg, call(p, 4, {4, 3}, 3, 2, 0, &count, b), markers, count, buffer);
  EXPECT_FAILS(tevStatusBadArg, call(p, 4, {4, 3}, 1, 2, 2, &count, b), markers, count, buffer);
  EXPECT_FAILS(tevStatusBadArg, call(p, 4, {4, 3}, 1, 2, -1, &count, b), markers, count, buffer);
  EXPECT_EQ(call(p, 4, {4, 3}, 254, 254, 1, &count, b), tevStatusOk);
  EXPECT_EQ(count, 1);
  EXPECT_FAILS(tevStatusNullPtr, teviLabelMarkersGetBufferSize_8u_C1R({0, 0}, nullptr));
  EXPECT_FAILS(tevStatusBadSize, teviLabelMarkersGetBufferSize_8u_C1R({0, 1}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviLabelMarkersGetBufferSize_8u_C1R({1, 0}, &size), size);
  EXPECT_EQ(teviLabelMarkersGetBufferSize_8u_C1R({4, 3}, &size), tevStatusOk);
  EXPECT_EQ(size, 104);
}
