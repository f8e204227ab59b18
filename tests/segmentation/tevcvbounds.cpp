#include "kit/kit.h"
#include "tevcv/segmentation.h"
#include "tevcv_internal/segmentation.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

void bound(Image<Tev8u>& image, Tev8u boundary, int norm) {
  EXPECT_EQ(teviBoundSegments_8u_C1IR(image.data(), image.step(), image.size(), boundary, norm), tevStatusOk);
}

// Pixel by pixel, with the marks of the row at hand.
void boundByDefinition(Image<Tev8u>& image, Tev8u b, int norm) {
  const int width = image.width();
  for (int x = 0; x + 1 < width; ++x)
    if (image.at(x, 0) != b && image.at(x, 0) != image.at(x + 1, 0)) image.set(x + 1, 0, b);
  for (int y = 1; y < image.height(); ++y) {
    bool leftMarked = false;
    for (int x = 0; x < width; ++x) {
      const auto differs = [&](int nx, int ny) {
        return nx >= 0 && nx < width && image.at(nx, ny) != b && image.at(nx, ny) != image.at(x, y);
      };
      bool marked = differs(x, y - 1);
      if (norm == 0 && width > 1) marked = marked || differs(x - 1, y - 1) || differs(x + 1, y - 1);
      if (!marked && !leftMarked) marked = differs(x - 1, y);
      if (marked) image.set(x, y, b);
      leftMarked = marked;
    }
  }
}

void boundByCost(Image<Tev8u>& image, const Image<Tev32s>& c, Tev8u b, int mode) {
  const int width = image.width();
  if (width == 1) mode = 1;
  const auto label = [&](int x, int y) { return image.at(x, y); };
  for (int x = 0; x < width - 1;) {
    if (label(x, 0) == label(x + 1, 0)) {
      x += 1;
    } else if (c.at(x, 0) <= c.at(x + 1, 0)) {
      image.set(x + 1, 0, b);
      x += 2;
    } else {
      image.set(x, 0, b);
      x += 1;
    }
  }
  for (int y = 1; y < image.height(); ++y) {
    int x = 0;
    while (x < width - 1) {
      if (label(x, y - 1) != b && label(x, y - 1) != label(x, y)) {
        if (c.at(x, y - 1) <= c.at(x, y)) {
          image.set(x, y, b);
          x += 1;
          continue;
        }
        image.set(x, y - 1, b);
      }
      if (label(x, y) == label(x + 1, y)) {
        x += 1;
      } else if (c.at(x, y) <= c.at(x + 1, y)) {
        image.set(x + 1, y, b);
        x += 2;
      } else {
        image.set(x, y, b);
        x += 1;
      }
    }
    if (mode == 1) {
      if (x < width && label(x, y - 1) != b && label(x, y - 1) != label(x, y)) {
        if (c.at(x, y - 1) > c.at(x, y))
          image.set(x, y - 1, b);
        else
          image.set(x, y, b);
      }
      continue;
    }
    for (x = 0; x < width; ++x) {
      if (label(x, y) == b) continue;
      bool done = false;
      for (const int u : {x - 1, x + 1}) {
        if (done || u < 0 || u >= width || label(u, y - 1) == b || label(u, y - 1) == label(x, y)) continue;
        done = c.at(u, y - 1) <= c.at(x, y);
        image.set(done ? x : u, done ? y : y - 1, b);
      }
    }
  }
}

}  // namespace

TEST(BoundSegmentsExample, DrawsTheLaterPixelOfAPair) {
  auto image = grid<Tev8u>({{1, 1, 2, 2}, {1, 1, 2, 2}, {3, 3, 3, 3}, {3, 3, 3, 3}});
  bound(image, 255, 1);
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{1, 1, 255, 2}, {1, 1, 255, 2}, {255, 255, 3, 255}, {3, 3, 3, 3}}));
}

TEST(BoundSegmentsExample, ClosesCornersWithEightNeighbours) {
  auto image = grid<Tev8u>({{1, 1, 2, 2}, {1, 1, 2, 2}, {3, 3, 3, 3}, {3, 3, 3, 3}});
  bound(image, 255, 0);
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{1, 1, 255, 2}, {1, 1, 255, 2}, {255, 255, 255, 255}, {3, 3, 3, 3}}));
}

TEST(BoundSegmentsExample, OfAPairWithCostsTheDearerOneIsMarked) {
  auto image = grid<Tev8u>({{1, 1, 2, 2}, {1, 1, 2, 2}});
  const auto cost = grid<Tev32s>({{0, 9, 5, 0}, {0, 5, 5, 0}});
  ownBoundSegments_8u_C1IR(image.data(), image.step(), cost.data(), cost.step(), 4, 2, 255, 1);
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{1, 255, 2, 2}, {1, 1, 255, 2}}));
}

TEST(BoundSegments, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 600; ++trial) {
    const int width = trial % 9 == 0 ? 1 : random.between(1, trial % 4 == 0 ? 150 : 9), height = random.between(1, 8);
    const int labels = random.between(1, 4);
    auto image = random.image<Tev8u>(width, height, [&] { return random.between(0, labels); });
    const auto boundary = static_cast<Tev8u>(random.oneIn(2) ? 255 : random.between(0, labels));
    auto expected = image.clone();
    bound(image, boundary, trial % 2);
    boundByDefinition(expected, boundary, trial % 2);
    ASSERT_SAME_IMAGE(image, expected);
  }
}

TEST(BoundSegmentsWithCosts, EqualTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 1000; ++trial) {
    const int width = trial % 9 == 0 ? 1 : random.between(1, 12), height = random.between(1, 8);
    const int labels = random.between(1, 4);
    auto image = random.image<Tev8u>(width, height, [&] { return random.between(0, labels); });
    const auto cost = random.image<Tev32s>(width, height, [&] { return random.between(-2, 2); });
    const auto boundary = static_cast<Tev8u>(random.oneIn(2) ? 255 : random.between(0, labels));
    const int mode = random.between(-1, 2);
    auto expected = image.clone();
    ownBoundSegments_8u_C1IR(image.data(), image.step(), cost.data(), cost.step(), width, height, boundary, mode);
    boundByCost(expected, cost, boundary, mode);
    ASSERT_SAME_IMAGE(image, expected);
  }
}

TEST(BoundSegmentsWithCosts, BehindAJumpPastTheEndThereIsNoVerticalPair) {
  // The last pair of row 1 marks its right pixel and the walk jumps past the row's end.
  auto image = grid<Tev8u>({{1, 1}, {1, 2}});
  const auto cost = grid<Tev32s>({{0, 9}, {0, 0}});
  ownBoundSegments_8u_C1IR(image.data(), image.step(), cost.data(), cost.step(), 2, 2, 255, 1);
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{1, 1}, {1, 255}}));
}

TEST(BoundSegmentsWithCosts, TheLastColumnsVerticalPairIsComparedForFourNeighboursOnly) {
  const auto cost = grid<Tev32s>({{9, 9, 0}, {9, 9, 0}});
  for (const int mode : {0, 1}) {
    auto image = grid<Tev8u>({{255, 255, 1}, {255, 255, 2}});
    ownBoundSegments_8u_C1IR(image.data(), image.step(), cost.data(), cost.step(), 3, 2, 255, mode);
    EXPECT_EQ(image.at(2, 0), 1);
    EXPECT_EQ(image.at(2, 1), mode == 1 ? 255 : 2);
  }
}

TEST(BoundSegmentsWithCosts, HorizontalPairsAreNotTestedAgainstTheBoundary) {
  // 255 and 2 differ like any two labels: the dearer one, on the right, is marked.
  auto image = grid<Tev8u>({{255, 2}});
  const auto cost = grid<Tev32s>({{0, 1}});
  ownBoundSegments_8u_C1IR(image.data(), image.step(), cost.data(), cost.step(), 2, 1, 255, 0);
  EXPECT_SAME_IMAGE(image, grid<Tev8u>({{255, 255}}));
}

TEST(BoundSegmentsWithCosts, ReadCostsAtAnyAddress) {
  auto image = grid<Tev8u>({{1, 2, 2}, {1, 1, 2}});
  auto expected = image.clone();
  Random random;
  Image<Tev32s> cost(3, 2, 4, 3);
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 3; ++x) cost.set(x, y, random.between(0, 9));
  ownBoundSegments_8u_C1IR(image.data(), image.step(), cost.data(), cost.step(), 3, 2, 0, 0);
  boundByCost(expected, cost, 0, 0);
  EXPECT_SAME_IMAGE(image, expected);
}

TEST(BoundSegments, ASingleRowComparesLeftNeighboursOnly) {
  for (const int norm : {0, 1}) {
    auto image = grid<Tev8u>({{1, 2, 3, 3, 1}});
    bound(image, 9, norm);
    EXPECT_SAME_IMAGE(image, grid<Tev8u>({{1, 9, 3, 3, 9}}));
  }
}

TEST(BoundSegments, ALabelEqualToTheBoundaryCountsAsBoundary) {
  for (const int norm : {0, 1}) {
    auto image = grid<Tev8u>({{2, 1, 1}, {2, 2, 1}});
    bound(image, 2, norm);
    EXPECT_SAME_IMAGE(image, grid<Tev8u>({{2, 1, 1}, {2, 2, 1}}));
  }
}

TEST(BoundSegments, ChecksPointerThenSizeThenStepThenNorm) {
  Image<Tev8u> image(4, 3);
  image.fill(1);
  const auto call = [&](Tev8u* p, int step, TevSize roi, int norm) {
    return teviBoundSegments_8u_C1IR(p, step, roi, 255, norm);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, {0, 0}, 7), image);
  EXPECT_FAILS(tevStatusBadSize, call(image.data(), 0, {0, 3}, 7), image);
  EXPECT_FAILS(tevStatusBadSize, call(image.data(), 4, {4, 0}, 0), image);
  EXPECT_FAILS(tevStatusBadStep, call(image.data(), 3, {4, 3}, 7), image);
  EXPECT_FAILS(tevStatusBadArg, call(image.data(), 4, {4, 3}, 2), image);
  EXPECT_FAILS(tevStatusBadArg, call(image.data(), 4, {4, 3}, -1), image);
  EXPECT_EQ(call(image.data(), 4, {4, 3}, 1), tevStatusOk);
}
