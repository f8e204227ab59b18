#include <cstdlib>

#include "kit/kit.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

TevStatus sample(const Image<Tev8u, 1>& s, Tev8u* d, TevPoint a, TevPoint b) {
  return teviSampleLine_8u_C1R(s.data(), s.step(), s.size(), d, a, b);
}
TevStatus sample(const Image<Tev8u, 3>& s, Tev8u* d, TevPoint a, TevPoint b) {
  return teviSampleLine_8u_C3R(s.data(), s.step(), s.size(), d, a, b);
}
TevStatus sample(const Image<Tev16u, 1>& s, Tev16u* d, TevPoint a, TevPoint b) {
  return teviSampleLine_16u_C1R(s.data(), s.step(), s.size(), d, a, b);
}
TevStatus sample(const Image<Tev16u, 3>& s, Tev16u* d, TevPoint a, TevPoint b) {
  return teviSampleLine_16u_C3R(s.data(), s.step(), s.size(), d, a, b);
}
TevStatus sample(const Image<Tev32f, 1>& s, Tev32f* d, TevPoint a, TevPoint b) {
  return teviSampleLine_32f_C1R(s.data(), s.step(), s.size(), d, a, b);
}
TevStatus sample(const Image<Tev32f, 3>& s, Tev32f* d, TevPoint a, TevPoint b) {
  return teviSampleLine_32f_C3R(s.data(), s.step(), s.size(), d, a, b);
}

// The walk in whole coordinates.
std::vector<TevPoint> walk(TevPoint from, TevPoint to) {
  const int dx = std::abs(to.x - from.x), dy = std::abs(to.y - from.y);
  const bool steep = dx <= dy;
  const int major = std::max(dx, dy), minor = std::min(dx, dy);
  std::vector<TevPoint> points;
  TevPoint p = from;
  int error = major;
  for (int i = 0; i <= major; ++i) {
    points.push_back(p);
    error -= 2 * minor;
    const bool both = error < 0;
    if (both) error += 2 * major;
    if (steep || both) p.y += to.y < from.y ? -1 : 1;
    if (!steep || both) p.x += to.x < from.x ? -1 : 1;
  }
  return points;
}

template <class T, int channels>
void expectSamples() {
  Random random;
  for (int trial = 0; trial < 300; ++trial) {
    const auto src = random.image<T, channels>(random.between(1, 30), random.between(1, 30));
    const auto point = [&] {
      return TevPoint{random.between(0, src.width() - 1), random.between(0, src.height() - 1)};
    };
    const TevPoint from = point(), to = random.oneIn(10) ? from : point();
    const auto points = walk(from, to);
    ASSERT_EQ(points.back().x, to.x);
    ASSERT_EQ(points.back().y, to.y);
    Image<T, channels> dst(static_cast<int>(points.size()), 1, 0, random.between(0, 3));
    ASSERT_EQ(sample(src, dst.data(), from, to), tevStatusOk);
    for (size_t i = 0; i < points.size(); ++i)
      for (int c = 0; c < channels; ++c)
        ASSERT_TRUE(kit::sameBits(dst.at(static_cast<int>(i), 0, c), src.at(points[i].x, points[i].y, c)));
  }
}

template <class T, int channels>
void expectChecks() {
  constexpr int size = sizeof(T), row = 4 * channels * size;
  Image<T, channels> src(4, 3), odd(4, 3, 1);
  T dst[64] = {};
  const auto call = [&](const T* s, int step, TevSize roi, T* d, TevPoint a, TevPoint b) {
    if constexpr (size == 1 && channels == 1) return teviSampleLine_8u_C1R(s, step, roi, d, a, b);
    if constexpr (size == 1 && channels == 3) return teviSampleLine_8u_C3R(s, step, roi, d, a, b);
    if constexpr (size == 2 && channels == 1) return teviSampleLine_16u_C1R(s, step, roi, d, a, b);
    if constexpr (size == 2 && channels == 3) return teviSampleLine_16u_C3R(s, step, roi, d, a, b);
    if constexpr (size == 4 && channels == 1) return teviSampleLine_32f_C1R(s, step, roi, d, a, b);
    if constexpr (size == 4 && channels == 3) return teviSampleLine_32f_C3R(s, step, roi, d, a, b);
  };
  const TevPoint in = {0, 0}, last = {3, 2};
  const TevSize roi = {4, 3};
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, {0, 0}, dst, {9, 9}, in), dst);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), row, roi, nullptr, in, in), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, {0, 3}, dst, {9, 9}, in), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, {4, 0}, dst, {9, 9}, in), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row - 1, roi, dst, {9, 9}, in), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row, {1 << 30, 3}, dst, {9, 9}, in), dst);
  if (size > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, call(odd.data(), row + 1, roi, dst, {9, 9}, in), dst);
  }
  for (TevPoint outside : {TevPoint{-1, 0}, TevPoint{0, -1}, TevPoint{4, 0}, TevPoint{0, 3}}) {
    EXPECT_FAILS(tevStatusBadPoint, call(src.data(), row, roi, dst, outside, in), dst);
    EXPECT_FAILS(tevStatusBadPoint, call(src.data(), row, roi, dst, in, outside), dst);
  }
  EXPECT_EQ(call(src.data(), row, roi, dst, in, last), tevStatusOk);
}

}  // namespace

TEST(SampleLine, EqualsTheWalkPointByPoint) {
  expectSamples<Tev8u, 1>();
  expectSamples<Tev8u, 3>();
  expectSamples<Tev16u, 1>();
  expectSamples<Tev16u, 3>();
  expectSamples<Tev32f, 1>();
  expectSamples<Tev32f, 3>();
}

TEST(SampleLine, OfASlopeOfOneHalf) {
  const auto src = grid<Tev8u>({{1, 2, 3, 4, 5}, {11, 12, 13, 14, 15}, {21, 22, 23, 24, 25}});
  Tev8u dst[5];
  ASSERT_EQ(sample(src, dst, {0, 0}, {4, 2}), tevStatusOk);
  // The error meets 0 without a step at the second point.
  EXPECT_EQ(std::vector<int>(dst, dst + 5), (std::vector<int>{1, 2, 13, 14, 25}));
}

TEST(SampleLine, FromAPointToItselfIsOneSample) {
  const auto src = grid<Tev8u>({{1, 2}, {3, 4}});
  Tev8u dst[2] = {9, 9};
  ASSERT_EQ(sample(src, dst, {1, 1}, {1, 1}), tevStatusOk);
  EXPECT_EQ(dst[0], 4);
  EXPECT_EQ(dst[1], 9);
}

TEST(SampleLine, ADiagonalStepsOnBothAxesAtEveryPoint) {
  const auto src = grid<Tev8u>({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
  Tev8u dst[3];
  ASSERT_EQ(sample(src, dst, {2, 0}, {0, 2}), tevStatusOk);
  EXPECT_EQ(std::vector<int>(dst, dst + 3), (std::vector<int>{3, 5, 7}));
}

TEST(SampleLine, TheIteratorHoldsTheWalksSteps) {
  Tev8u image[1000] = {};
  TevLineIterator it;
  EXPECT_EQ(_tevcvInitLineIterator(image, 100, 3, 5, 7, 1, 8, &it), 5);
  EXPECT_EQ(it.pointer, image + 7 * 100 + 5 * 3);
  EXPECT_EQ(it.error, 4);
  EXPECT_EQ(it.plusDelta, 8);
  EXPECT_EQ(it.minusDelta, 2);
  EXPECT_EQ(it.plusStep, 100);
  EXPECT_EQ(it.minusStep, -3);
  // Equal distances make y the major axis.
  EXPECT_EQ(_tevcvInitLineIterator(image, 100, 1, 0, 4, 2, 2, &it), 3);
  EXPECT_EQ(it.minusStep, -100);
  EXPECT_EQ(it.plusStep, 1);
  EXPECT_EQ(sizeof(TevLineIterator), sizeof(void*) == 4 ? 24U : 32U);
}

TEST(SampleLine, ChecksPointersThenSizeThenStepThenAlignmentThenEnds) {
  expectChecks<Tev8u, 1>();
  expectChecks<Tev8u, 3>();
  expectChecks<Tev16u, 1>();
  expectChecks<Tev16u, 3>();
  expectChecks<Tev32f, 1>();
  expectChecks<Tev32f, 3>();
}
