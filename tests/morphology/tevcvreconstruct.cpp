#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "kit/kit.h"
#include "tevcv/morphology.h"
#include "tevcv_internal/morphology.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

enum Kind { dilation, erosion };

// The exported workers of one operation; the second pass of each pair is the one with eight neighbours.
template <class T>
struct Workers {
  using Pass = void (*)(const T*, int, T*, int, int, int, int, int, T*);
  using Check = int (*)(const T*, int, T*, int, int, int, int, int, Tev8u*, T*, T*);
  using Sweep = int (*)(const T*, T*, int);
  Pass down[2], up[2];
  Check downCheck[2], upCheck[2];
  void (*bothWays)(const T*, T*, int);
  Sweep bothWaysCheck, forwardCheck, backwardCheck;
  const Pass *downTable, *upTable;
  const Check *downCheckTable, *upCheckTable;
};

template <class T>
struct Members;
template <>
struct Members<Tev8u> {
  static constexpr auto getBufferSize = teviMorphReconstructGetBufferSize_8u_C1;
  static constexpr auto dilate = teviMorphReconstructDilate_8u_C1IR;
  static constexpr auto erode = teviMorphReconstructErode_8u_C1IR;
  static Workers<Tev8u> workers(Kind kind) {
    if (kind == dilation)
      return {{ownDilateDown_8u_C1R, ownDilateDown_8u_C1RInf},
              {ownDilateUp_8u_C1R, ownDilateUp_8u_C1RInf},
              {ownDilateDownCheck_8u_C1R, ownDilateDownCheck_8u_C1RInf},
              {ownDilateUpCheck_8u_C1R, ownDilateUpCheck_8u_C1RInf},
              ownDilateForwardRev02_8u_C1R,
              ownDilateForwardCheckRev02_8u_C1R,
              ownDilateForwardCheck02_8u_C1R,
              ownDilateBackwardCheck02_8u_C1R,
              tabDilateDown_8u_C1R,
              tabDilateUp_8u_C1R,
              tabDilateDownCheck_8u_C1R,
              tabDilateUpCheck_8u_C1R};
    return {{ownErodeDown_8u_C1R, ownErodeDown_8u_C1RInf},
            {ownErodeUp_8u_C1R, ownErodeUp_8u_C1RInf},
            {ownErodeDownCheck_8u_C1R, ownErodeDownCheck_8u_C1RInf},
            {ownErodeUpCheck_8u_C1R, ownErodeUpCheck_8u_C1RInf},
            ownErodeForwardRev02_8u_C1R,
            ownErodeForwardCheckRev02_8u_C1R,
            ownErodeForwardCheck02_8u_C1R,
            ownErodeBackwardCheck02_8u_C1R,
            tabErodeDown_8u_C1R,
            tabErodeUp_8u_C1R,
            tabErodeDownCheck_8u_C1R,
            tabErodeUpCheck_8u_C1R};
  }
};
template <>
struct Members<Tev32f> {
  static constexpr auto getBufferSize = teviMorphReconstructGetBufferSize_32f_C1;
  static constexpr auto dilate = teviMorphReconstructDilate_32f_C1IR;
  static constexpr auto erode = teviMorphReconstructErode_32f_C1IR;
  static Workers<Tev32f> workers(Kind kind) {
    if (kind == dilation)
      return {{ownDilateDown_32f_C1R, ownDilateDown_32f_C1RInf},
              {ownDilateUp_32f_C1R, ownDilateUp_32f_C1RInf},
              {ownDilateDownCheck_32f_C1R, ownDilateDownCheck_32f_C1RInf},
              {ownDilateUpCheck_32f_C1R, ownDilateUpCheck_32f_C1RInf},
              ownDilateForwardRev02_32f_C1R,
              ownDilateForwardCheckRev02_32f_C1R,
              ownDilateForwardCheck02_32f_C1R,
              ownDilateBackwardCheck02_32f_C1R,
              tabDilateDown_32f_C1R,
              tabDilateUp_32f_C1R,
              tabDilateDownCheck_32f_C1R,
              tabDilateUpCheck_32f_C1R};
    return {{ownErodeDown_32f_C1R, ownErodeDown_32f_C1RInf},
            {ownErodeUp_32f_C1R, ownErodeUp_32f_C1RInf},
            {ownErodeDownCheck_32f_C1R, ownErodeDownCheck_32f_C1RInf},
            {ownErodeUpCheck_32f_C1R, ownErodeUpCheck_32f_C1RInf},
            ownErodeForwardRev02_32f_C1R,
            ownErodeForwardCheckRev02_32f_C1R,
            ownErodeForwardCheck02_32f_C1R,
            ownErodeBackwardCheck02_32f_C1R,
            tabErodeDown_32f_C1R,
            tabErodeUp_32f_C1R,
            tabErodeDownCheck_32f_C1R,
            tabErodeUpCheck_32f_C1R};
  }
};

template <class T>
T grown(Kind kind, T a, T b) {
  return kind == dilation ? std::max(a, b) : std::min(a, b);
}
template <class T>
T held(Kind kind, T mask, T value) {
  return kind == dilation ? std::min(mask, value) : std::max(mask, value);
}

// The fixed point by its definition: dilations of one step, limited by the mask, until none changes a pixel.
template <class T>
Image<T> fixedPoint(Kind kind, const Image<T>& mask, const Image<T>& marker, TevNorm norm) {
  const int width = mask.width(), height = mask.height();
  Image<T> result(width, height);
  std::vector<TevPoint> pending;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      result.set(x, y, held(kind, mask.at(x, y), marker.at(x, y)));
      pending.push_back({x, y});
    }
  while (!pending.empty()) {
    const TevPoint p = pending.back();
    pending.pop_back();
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) {
        const int x = p.x + dx, y = p.y + dy;
        if (x < 0 || y < 0 || x >= width || y >= height || (norm == tevNormL1 && dx != 0 && dy != 0)) continue;
        const T value = held(kind, mask.at(x, y), grown(kind, result.at(x, y), result.at(p.x, p.y)));
        if (value == result.at(x, y)) continue;
        result.set(x, y, value);
        pending.push_back({x, y});
      }
  }
  return result;
}

template <class T>
TevStatus run(Kind kind, const Image<T>& mask, const Image<T>& marker, TevNorm norm, int misalignment = 0) {
  int size = 0;
  EXPECT_EQ(Members<T>::getBufferSize(mask.size(), &size), tevStatusOk);
  const Buffer buffer(size, misalignment);
  return (kind == dilation ? Members<T>::dilate : Members<T>::erode)(mask.data(), mask.step(), marker.data(),
                                                                     marker.step(), mask.size(), buffer.data(), norm);
}

template <class T>
Image<T> reconstructed(Kind kind, const Image<T>& mask, const Image<T>& marker, TevNorm norm) {
  auto result = marker.clone();
  EXPECT_EQ(run(kind, mask, result, norm), tevStatusOk);
  return result;
}

// A corridor that winds from the corner to the middle, walls of one pixel between its turns.
Image<Tev8u> spiral(int side) {
  Image<Tev8u> image(side, side);
  image.fill(0);
  int x = 0, y = 0, dx = 1, dy = 0;
  image.set(0, 0, 200);
  const auto free = [&](int px, int py) {
    return px >= 0 && py >= 0 && px < side && py < side && image.at(px, py) == 0;
  };
  for (int turns = 0; turns < 2;) {
    const int ax = x + dx, ay = y + dy, bx = ax + dx, by = ay + dy;
    const bool inside = ax >= 0 && ay >= 0 && ax < side && ay < side;
    const bool wallAhead = bx >= 0 && by >= 0 && bx < side && by < side && !free(bx, by);
    if (inside && free(ax, ay) && !wallAhead) {
      image.set(x = ax, y = ay, 200);
      turns = 0;
    } else {
      const int turned = dx;
      dx = -dy;
      dy = turned;
      ++turns;
    }
  }
  return image;
}

template <class T>
Image<T> constant(int width, int height, int value) {
  Image<T> image(width, height);
  image.fill(static_cast<T>(value));
  return image;
}

template <class T>
class Reconstruction : public testing::Test {};
using Types = testing::Types<Tev8u, Tev32f>;
TYPED_TEST_SUITE(Reconstruction, Types);

}  // namespace

TEST(ReconstructionExample, AMarkerFillsThePlateauItStandsOn) {
  const auto mask = grid<Tev8u>({{9, 9, 0, 7, 7, 7},  //
                                 {9, 9, 0, 7, 5, 7},
                                 {9, 9, 0, 7, 7, 7}});
  const auto marker = grid<Tev8u>({{0, 0, 0, 0, 0, 0},  //
                                   {0, 0, 0, 0, 0, 6},
                                   {0, 4, 0, 0, 0, 0}});
  EXPECT_SAME_IMAGE(reconstructed(dilation, mask, marker, tevNormL1), grid<Tev8u>({{4, 4, 0, 6, 6, 6},  //
                                                                                   {4, 4, 0, 6, 5, 6},
                                                                                   {4, 4, 0, 6, 6, 6}}));
}

TEST(ReconstructionExample, OnlyEightNeighboursCrossADiagonalBridge) {
  const auto mask = grid<Tev8u>({{9, 9, 0, 0},  //
                                 {9, 9, 0, 0},
                                 {0, 0, 9, 9},
                                 {0, 0, 9, 9}});
  const auto marker = grid<Tev8u>({{9, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}});
  EXPECT_SAME_IMAGE(reconstructed(dilation, mask, marker, tevNormInf), mask);
  EXPECT_SAME_IMAGE(reconstructed(dilation, mask, marker, tevNormL1), grid<Tev8u>({{9, 9, 0, 0},  //
                                                                                   {9, 9, 0, 0},
                                                                                   {0, 0, 0, 0},
                                                                                   {0, 0, 0, 0}}));
}

TEST(ReconstructionExample, ErosionFillsBasinsToTheirRims) {
  const auto mask = grid<Tev8u>({{5, 5, 5, 5, 5},  //
                                 {5, 1, 5, 2, 5},
                                 {5, 5, 5, 3, 5}});
  // The marker is the mask on the border of the image and high inside: holes fill up to where they run over.
  const auto marker = grid<Tev8u>({{5, 5, 5, 5, 5},  //
                                   {5, 255, 255, 255, 5},
                                   {5, 5, 5, 3, 5}});
  EXPECT_SAME_IMAGE(reconstructed(erosion, mask, marker, tevNormL1), grid<Tev8u>({{5, 5, 5, 5, 5},  //
                                                                                  {5, 5, 5, 3, 5},
                                                                                  {5, 5, 5, 3, 5}}));
}

TEST(ReconstructionExample, AMarkerAboveTheMaskIsPulledDown) {
  const auto mask = grid<Tev8u>({{1, 2, 3, 2, 1}});
  const auto marker = grid<Tev8u>({{255, 0, 0, 0, 0}});
  EXPECT_SAME_IMAGE(reconstructed(dilation, mask, marker, tevNormL1), grid<Tev8u>({{1, 1, 1, 1, 1}}));
}

TEST(Reconstruction8u, ForwardSweepsAloneDoNotEndIt) {
  const auto mask = grid<Tev8u>({{200, 0, 0}, {200, 200, 200}, {200, 0, 200}, {0, 200, 200}});
  const auto marker = grid<Tev8u>({{0, 0, 0}, {0, 0, 0}, {255, 0, 0}, {0, 0, 0}});
  EXPECT_SAME_IMAGE(reconstructed(dilation, mask, marker, tevNormL1), mask);
}

TYPED_TEST(Reconstruction, ReachesTheFixedPointOnRandomRegions) {
  using T = TypeParam;
  Random random;
  for (int trial = 0; trial < 300; ++trial) {
    const int width = random.between(1, trial % 3 == 0 ? 150 : 20),
              height = random.between(1, trial % 5 == 0 ? 60 : 16);
    // Few levels make long plateaus, many make ridges; markers are rare or everywhere.
    const int levels = random.oneIn(2) ? 3 : 250, sparsity = random.oneIn(2) ? 60 : 3;
    const auto level = [&] {
      return random.between(0, levels) * (255 / std::max(levels, 1)) / (sizeof(T) == 1 ? 1 : 2.0F);
    };
    const auto mask = random.image<T>(width, height, level);
    for (Kind kind : {dilation, erosion})
      for (TevNorm norm : {tevNormInf, tevNormL1}) {
        const T absent = kind == dilation ? T{0} : T{255};
        const auto marker =
            random.image<T>(width, height, [&] { return random.oneIn(sparsity) ? static_cast<T>(level()) : absent; });
        const auto expected = fixedPoint(kind, mask, marker, norm);
        for (int threads : {1, 2}) {
          const kit::Threads setting(threads);
          auto actual = marker.clone();
          ASSERT_EQ(run(kind, mask, actual, norm, random.between(0, 40)), tevStatusOk);
          ASSERT_SAME_IMAGE(actual, expected);
        }
      }
  }
}

TYPED_TEST(Reconstruction, IsTheSameAtEveryThreadCountAroundTheSizeForTwo) {
  using T = TypeParam;
  Random random;
  for (const TevSize size : {TevSize{10, 10}, TevSize{11, 10}, TevSize{10, 11}, TevSize{11, 11}, TevSize{12, 40},
                             TevSize{300, 11}, TevSize{257, 64}, TevSize{400, 211}}) {
    const auto mask =
        random.image<T>(size.width, size.height, [&] { return random.oneIn(3) ? 0 : random.between(90, 99); });
    auto marker = constant<T>(size.width, size.height, 0);
    marker.set(size.width / 2, size.height / 3, 99);
    marker.set(size.width / 3, size.height - 1, 99);
    for (TevNorm norm : {tevNormInf, tevNormL1}) {
      const auto expected = fixedPoint(dilation, mask, marker, norm);
      for (int threads : kit::threadCounts) {
        const kit::Threads setting(threads);
        EXPECT_SAME_IMAGE(reconstructed(dilation, mask, marker, norm), expected);
      }
    }
  }
}

TYPED_TEST(Reconstruction, DoesAllRowsInsideACallersParallelRegion) {
  using T = TypeParam;
  Random random;
  const kit::Threads setting(2);
  const auto mask = random.image<T>(40, 30, [&] { return random.between(0, 3); });
  auto marker = constant<T>(40, 30, 0);
  marker.set(0, 0, 3);
  marker.set(39, 29, 3);
  const auto expected = fixedPoint(dilation, mask, marker, tevNormInf);
  std::array<Image<T>, 2> results = {marker.clone(), marker.clone()};
#pragma omp parallel for num_threads(2)
  for (int i = 0; i < 2; ++i) run(dilation, mask, results[static_cast<size_t>(i)], tevNormInf);
  for (const auto& result : results) EXPECT_SAME_IMAGE(result, expected);
}

TEST(Reconstruction8u, FollowsASpiralFromEitherEnd) {
  for (int side : {9, 31, 64}) {
    const auto mask = spiral(side);
    int longest = 0;
    TevPoint inner = {0, 0};
    for (int y = 0; y < side; ++y)
      for (int x = 0; x < side; ++x) {
        const int fromBorder = std::min({x, y, side - 1 - x, side - 1 - y});
        if (mask.at(x, y) != 0 && fromBorder > longest) longest = fromBorder, inner = {x, y};
      }
    for (const TevPoint seed : {TevPoint{0, 0}, inner})
      for (int threads : {1, 2}) {
        const kit::Threads setting(threads);
        auto marker = constant<Tev8u>(side, side, 0);
        marker.set(seed.x, seed.y, 255);
        EXPECT_SAME_IMAGE(reconstructed(dilation, mask, marker, tevNormL1), mask);
      }
  }
}

TYPED_TEST(Reconstruction, ASpiralTakesAboutAPairOfPassesATurn) {
  using T = TypeParam;
  constexpr int side = 64;
  const auto drawing = spiral(side);
  Image<T> mask(side, side), marker(side, side);
  marker.fill(0);
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x) mask.set(x, y, drawing.at(x, y));
  marker.set(0, 0, 255);
  const auto w = Members<T>::workers(dilation);
  std::vector<T> line(side), scratch(side);
  std::vector<Tev8u> flags(side + 2, Tev8u{1});
  Tev8u* const flag = flags.data() + 1;
  const auto check = [&](auto pass, int from, int to, int mode) {
    return pass(mask.data(), mask.step(), marker.data(), marker.step(), side, from, to, mode, flag, line.data(),
                scratch.data());
  };
  w.down[0](mask.data(), mask.step(), marker.data(), marker.step(), side, 0, side, 1, line.data());
  w.up[0](mask.data(), mask.step(), marker.data(), marker.step(), side, side - 2, -1, 0, line.data());
  int pairs = 0, processed = 0;
  for (int mode = 0;; mode = -2, ++pairs) {
    ASSERT_LT(pairs, side);
    const int down = check(w.downCheck[0], 0, side, mode), up = check(w.upCheck[0], side - 1, -1, mode);
    processed += down + up;
    if (down + up == 0) break;
  }
  EXPECT_SAME_IMAGE(marker, mask);
  EXPECT_LE(pairs, side / 4 + 1);
  EXPECT_GT(processed, 0);
}

TYPED_TEST(Reconstruction, AMarkerEqualToTheMaskStays) {
  using T = TypeParam;
  Random random;
  const auto mask = random.image<T>(50, 20);
  for (Kind kind : {dilation, erosion})
    for (TevNorm norm : {tevNormInf, tevNormL1}) EXPECT_SAME_IMAGE(reconstructed(kind, mask, mask, norm), mask);
}

TYPED_TEST(Reconstruction, OneRowIsSweptBothWays) {
  using T = TypeParam;
  const auto mask = grid<T>({{5, 5, 5, 4, 5, 5, 0, 5}});
  const auto marker = grid<T>({{0, 0, 0, 0, 5, 0, 0, 0}});
  for (TevNorm norm : {tevNormInf, tevNormL1})
    EXPECT_SAME_IMAGE(reconstructed(dilation, mask, marker, norm), grid<T>({{4, 4, 4, 4, 5, 5, 0, 0}}));
}

TEST(Reconstruction32f, NansEndAndInfinitiesTravel) {
  constexpr float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const auto mask = grid<Tev32f>({{inf, inf, 2, inf, nan, 3, 3}});
  const auto marker = grid<Tev32f>({{-inf, inf, 0, 1, 5, nan, -7}});
  EXPECT_SAME_IMAGE(reconstructed(dilation, mask, marker, tevNormL1), grid<Tev32f>({{inf, inf, 2, 2, nan, 3, 3}}));
  Random random;
  const float odd[] = {nan, inf, -inf, 1, 2, 3, 4, 5};
  for (int trial = 0; trial < 60; ++trial) {
    const auto draw = [&] { return odd[random.between(0, 7)]; };
    const auto wildMask = random.image<Tev32f>(random.between(1, 90), random.between(1, 30), draw);
    auto wild = random.image<Tev32f>(wildMask.width(), wildMask.height(), draw);
    const auto alone = reconstructed(dilation, wildMask, wild, tevNormL1);
    const kit::Threads setting(2);
    EXPECT_SAME_IMAGE(reconstructed(dilation, wildMask, wild, tevNormL1), alone);
  }
}

TYPED_TEST(Reconstruction, SweepsOfLongRowsEqualThePixelByPixelForm) {
  using T = TypeParam;
  Random random;
  // Zeros of both signs and NaN too: the order of comparisons is part of the result.
  const auto draw = [&]() -> T {
    if constexpr (std::is_same_v<T, Tev32f>) {
      const float odd[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity(), 0.0F, -0.0F};
      if (random.oneIn(4)) return odd[random.between(0, 4)];
      return static_cast<T>(random.between(-2, 2));
    } else {
      return static_cast<T>(random.between(0, 255));
    }
  };
  for (Kind kind : {dilation, erosion}) {
    const auto w = Members<T>::workers(kind);
    for (int trial = 0; trial < 400; ++trial) {
      const int width = random.between(1, trial % 4 == 0 ? 800 : 100);
      const auto mask = random.image<T>(width, 1, draw), row = random.image<T>(width, 1, draw);
      const auto swept = [&](const Image<T>& from, int step) {
        auto result = from.clone();
        const int start = step > 0 ? 0 : width - 1;
        T value = from.at(start, 0);
        for (int x = start; x >= 0 && x < width; x += step) {
          value = held(kind, mask.at(x, 0), grown(kind, from.at(x, 0), value));
          result.set(x, 0, value);
        }
        return result;
      };
      const auto differs = [&](const Image<T>& result) {
        for (int x = 0; x < width; ++x) {
          const T a = row.at(x, 0), b = result.at(x, 0);
          if (!kit::sameBits(a, b)) return true;
        }
        return false;
      };
      const auto forward = swept(row, 1), backward = swept(row, -1), both = swept(forward, -1);
      auto actual = row.clone();
      ASSERT_EQ(w.forwardCheck(mask.data(), actual.data(), width) != 0, differs(forward));
      ASSERT_SAME_IMAGE(actual, forward);
      actual = row.clone();
      ASSERT_EQ(w.backwardCheck(mask.data(), actual.data(), width) != 0, differs(backward));
      ASSERT_SAME_IMAGE(actual, backward);
      actual = row.clone();
      ASSERT_EQ(w.bothWaysCheck(mask.data(), actual.data(), width) != 0, differs(forward) || !(forward == both));
      ASSERT_SAME_IMAGE(actual, both);
      actual = row.clone();
      w.bothWays(mask.data(), actual.data(), width);
      ASSERT_SAME_IMAGE(actual, both);
      ASSERT_EQ(w.bothWaysCheck(mask.data(), actual.data(), width), 0);
    }
  }
}

TYPED_TEST(Reconstruction, TablesHoldThePassesWithFourAndWithEightNeighbours) {
  for (Kind kind : {dilation, erosion}) {
    const auto w = Members<TypeParam>::workers(kind);
    for (int i : {0, 1}) {
      EXPECT_EQ(w.downTable[i], w.down[i]);
      EXPECT_EQ(w.upTable[i], w.up[i]);
      EXPECT_EQ(w.downCheckTable[i], w.downCheck[i]);
      EXPECT_EQ(w.upCheckTable[i], w.upCheck[i]);
    }
  }
}

TYPED_TEST(Reconstruction, APlainPassTakesTheRowItComesFromIntoEachRow) {
  using T = TypeParam;
  const auto mask = constant<T>(5, 4, 9);
  const auto w = Members<T>::workers(dilation);
  std::array<T, 5> line;
  const auto start = grid<T>({{1, 0, 0, 0, 0}, {0, 0, 0, 0, 2}, {0, 0, 3, 0, 0}, {0, 0, 0, 0, 0}});
  for (int neighbours : {0, 1}) {
    // Rows 1 and 2 alone, the first one with the row above it and without.
    auto row = start.clone();
    w.down[neighbours](mask.data(), mask.step(), row.data(), row.step(), 5, 1, 3, 0, line.data());
    EXPECT_SAME_IMAGE(row, grid<T>({{1, 0, 0, 0, 0}, {2, 2, 2, 2, 2}, {3, 3, 3, 3, 3}, {0, 0, 0, 0, 0}}));
    row = start.clone();
    row.set(0, 0, 9);
    w.down[neighbours](mask.data(), mask.step(), row.data(), row.step(), 5, 1, 3, 1, line.data());
    EXPECT_SAME_IMAGE(row, grid<T>({{9, 0, 0, 0, 0}, {2, 2, 2, 2, 2}, {3, 3, 3, 3, 3}, {0, 0, 0, 0, 0}}));
    row = start.clone();
    w.up[neighbours](mask.data(), mask.step(), row.data(), row.step(), 5, 1, -1, 0, line.data());
    EXPECT_SAME_IMAGE(row, grid<T>({{3, 3, 3, 3, 3}, {3, 3, 3, 3, 3}, {0, 0, 3, 0, 0}, {0, 0, 0, 0, 0}}));
    row = start.clone();
    w.up[neighbours](mask.data(), mask.step(), row.data(), row.step(), 5, 1, -1, 1, line.data());
    EXPECT_SAME_IMAGE(row, grid<T>({{2, 2, 2, 2, 2}, {2, 2, 2, 2, 2}, {0, 0, 3, 0, 0}, {0, 0, 0, 0, 0}}));
  }
}

TYPED_TEST(Reconstruction, ACheckPassSkipsQuietRowsAndFlagsWhatItChanges) {
  using T = TypeParam;
  const auto mask = constant<T>(3, 4, 9);
  const auto w = Members<T>::workers(dilation);
  std::array<T, 3> line, scratch;
  const auto start = grid<T>({{0, 0, 0}, {0, 4, 0}, {0, 0, 0}, {5, 5, 5}});
  const auto run = [&](int mode, std::array<Tev8u, 6> flags, const Image<T>& row, std::array<Tev8u, 6> expectedFlags) {
    const int count = w.downCheck[0](mask.data(), mask.step(), row.data(), row.step(), 3, 0, 4, mode, flags.data() + 1,
                                     line.data(), scratch.data());
    EXPECT_EQ(flags, expectedFlags);
    return count;
  };
  // flags from row -1 to row 4. Nothing flagged: nothing done.
  auto row = start.clone();
  EXPECT_EQ(run(2, {0, 0, 0, 0, 0, 0}, row, {0, 0, 0, 0, 0, 0}), 0);
  EXPECT_SAME_IMAGE(row, start);
  // Row 1 is flagged: forward only, it changes, and row 2 after it. Row 3 is processed and stays.
  row = start.clone();
  EXPECT_EQ(run(2, {0, 0, 1, 0, 0, 0}, row, {0, 1, 1, 1, 0, 0}), 2);
  EXPECT_SAME_IMAGE(row, grid<T>({{0, 0, 0}, {0, 4, 4}, {0, 4, 4}, {5, 5, 5}}));
  // The same with both sweeps.
  row = start.clone();
  EXPECT_EQ(run(-2, {0, 0, 1, 0, 0, 0}, row, {0, 1, 1, 1, 0, 0}), 2);
  EXPECT_SAME_IMAGE(row, grid<T>({{0, 0, 0}, {4, 4, 4}, {4, 4, 4}, {5, 5, 5}}));
  // The first row: in mode 2 if flagged, in mode 0 in any case, below it never. Rows that
  // are looked at and do not change lose their flags.
  const auto firstRow = grid<T>({{0, 7, 0}, {9, 9, 9}, {9, 9, 9}, {9, 9, 9}});
  row = firstRow.clone();
  EXPECT_EQ(run(2, {0, 1, 1, 1, 1, 0}, row, {1, 1, 0, 0, 0, 0}), 1);
  EXPECT_SAME_IMAGE(row, grid<T>({{0, 7, 7}, {9, 9, 9}, {9, 9, 9}, {9, 9, 9}}));
  row = firstRow.clone();
  EXPECT_EQ(run(0, {0, 0, 0, 0, 0, 0}, row, {1, 1, 0, 0, 0, 0}), 1);
  EXPECT_SAME_IMAGE(row, grid<T>({{7, 7, 7}, {9, 9, 9}, {9, 9, 9}, {9, 9, 9}}));
  row = firstRow.clone();
  EXPECT_EQ(run(-2, {0, 1, 0, 0, 0, 0}, row, {0, 1, 0, 0, 0, 0}), 0);
  EXPECT_SAME_IMAGE(row, firstRow);
}

TYPED_TEST(Reconstruction, ACheckPassInAnOddModeStartsFromTheRowBeforeItsFirst) {
  using T = TypeParam;
  const auto mask = constant<T>(3, 3, 9);
  std::array<T, 3> line, scratch;
  const auto start = grid<T>({{0, 0, 0}, {0, 0, 0}, {0, 6, 0}});
  for (int mode : {1, -1, -3})
    for (bool flagged : {false, true}) {
      auto row = start.clone();
      std::array<Tev8u, 5> flags = {0, 0, 0, flagged, 0};
      const int count =
          Members<T>::workers(dilation).upCheck[0](mask.data(), mask.step(), row.data(), row.step(), 3, 1, -1, mode,
                                                   flags.data() + 1, line.data(), scratch.data());
      EXPECT_EQ(count, flagged ? 2 : 0);
      const T left = mode > 0 ? T{0} : T{6};
      EXPECT_SAME_IMAGE(row, flagged ? grid<T>({{left, 6, 6}, {left, 6, 6}, {0, 6, 0}}) : start.clone());
      EXPECT_EQ(flags, (std::array<Tev8u, 5>{0, flagged, flagged, flagged, 0}));
    }
}

TYPED_TEST(Reconstruction, TellsTheBufferToTheByte) {
  using T = TypeParam;
  int size = 0;
  EXPECT_EQ(Members<T>::getBufferSize({100, 50}, &size), tevStatusOk);
  EXPECT_EQ(size, 50 + 4 * 100 * int{sizeof(T)} + 130);
  EXPECT_EQ(Members<T>::getBufferSize({1, 1}, &size), tevStatusOk);
  EXPECT_EQ(size, 131 + 4 * int{sizeof(T)});
  EXPECT_EQ(Members<T>::getBufferSize({1 << 30, 1}, &size), tevStatusOk);
  EXPECT_EQ(size, std::numeric_limits<int>::max());
  size = -7;
  EXPECT_FAILS(tevStatusNullPtr, Members<T>::getBufferSize({0, 0}, nullptr), size);
  EXPECT_FAILS(tevStatusBadSize, Members<T>::getBufferSize({0, 5}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, Members<T>::getBufferSize({5, 0}, &size), size);
}

TYPED_TEST(Reconstruction, StaysInsideABufferAtAnyAddress) {
  using T = TypeParam;
  Random random;
  for (int misalignment = 0; misalignment < 33; ++misalignment)
    for (int width : {32 / int{sizeof(T)} + 1, 13}) {
      const auto mask = random.image<T>(width, 12, [&] { return random.between(0, 5); });
      const auto marker = random.image<T>(width, 12, [&] { return random.oneIn(20) ? 5 : 0; });
      const auto expected = fixedPoint(dilation, mask, marker, tevNormInf);
      for (int threads : {1, 2}) {
        const kit::Threads setting(threads);
        auto actual = marker.clone();
        ASSERT_EQ(run(dilation, mask, actual, tevNormInf, misalignment), tevStatusOk);
        ASSERT_SAME_IMAGE(actual, expected);
      }
    }
}

TYPED_TEST(Reconstruction, ChecksPointersThenSizeThenStepsThenAlignmentThenTheNorm) {
  using T = TypeParam;
  constexpr int element = sizeof(T), full = 8 * element;
  const Image<T> src(8, 4, 2 * element);
  Image<T> dst(8, 4, 2 * element);
  const Buffer buffer(1000);
  Tev8u* const b = buffer.data();
  const int s = src.step();
  const TevSize roi = {8, 4};
  for (const auto call : {Members<T>::dilate, Members<T>::erode}) {
    EXPECT_FAILS(tevStatusNullPtr, call(nullptr, s, dst.data(), s, {0, 4}, b, 1), dst, buffer);
    EXPECT_FAILS(tevStatusNullPtr, call(src.data(), s, nullptr, s, {0, 4}, b, 1), dst, buffer);
    EXPECT_FAILS(tevStatusNullPtr, call(src.data(), s, dst.data(), s, {0, 4}, nullptr, 1), dst, buffer);
    EXPECT_FAILS(tevStatusBadSize, call(src.data(), 1, dst.data(), s, {0, 4}, b, 1), dst, buffer);
    EXPECT_FAILS(tevStatusBadSize, call(src.data(), s, dst.data(), 1, {8, 0}, b, 1), dst, buffer);
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), full - 1, dst.data(), s, roi, b, 2), dst, buffer);
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), s, dst.data(), full - 1, roi, b, 2), dst, buffer);
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), s, dst.data(), s, roi, b, 2), dst, buffer);
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), s, dst.data(), s, roi, b, -1), dst, buffer);
    if (element == 1) continue;
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), full + 1, dst.data(), full - 1, roi, b, 2), dst, buffer);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), full + 1, dst.data(), s, roi, b, 2), dst, buffer);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), s, dst.data(), full + 1, roi, b, 2), dst, buffer);
  }
}
