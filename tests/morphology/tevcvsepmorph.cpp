#include <algorithm>
#include <limits>

#include "kit/kit.h"
#include "tevcv/morphology.h"
#include "tevcv_internal/morphology.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

template <class T>
using Filter = TevStatus (*)(const T*, int, T*, int, TevSize, TevSize, TevPoint, Tev8u*);
using SizeQuery = TevStatus (*)(int, int, int, int*);

template <class T, int channels>
struct Members;
#define MEMBERS(T, channels, minFilter, maxFilter, minBuffer, maxBuffer) \
  template <>                                                            \
  struct Members<T, channels> {                                          \
    static constexpr auto min = minFilter;                               \
    static constexpr auto max = maxFilter;                               \
    static constexpr SizeQuery minSize = minBuffer;                      \
    static constexpr SizeQuery maxSize = maxBuffer;                      \
  };
MEMBERS(Tev8u, 1, teviFilterMinBorderReplicate_8u_C1R, teviFilterMaxBorderReplicate_8u_C1R,
        teviFilterMinGetBufferSize_8u_C1R, teviFilterMaxGetBufferSize_8u_C1R)
MEMBERS(Tev8u, 3, teviFilterMinBorderReplicate_8u_C3R, teviFilterMaxBorderReplicate_8u_C3R,
        teviFilterMinGetBufferSize_8u_C3R, teviFilterMaxGetBufferSize_8u_C3R)
MEMBERS(Tev8u, 4, teviFilterMinBorderReplicate_8u_C4R, teviFilterMaxBorderReplicate_8u_C4R,
        teviFilterMinGetBufferSize_8u_C4R, teviFilterMaxGetBufferSize_8u_C4R)
MEMBERS(Tev32f, 1, teviFilterMinBorderReplicate_32f_C1R, teviFilterMaxBorderReplicate_32f_C1R,
        teviFilterMinGetBufferSize_32f_C1R, teviFilterMaxGetBufferSize_32f_C1R)
MEMBERS(Tev32f, 3, teviFilterMinBorderReplicate_32f_C3R, teviFilterMaxBorderReplicate_32f_C3R,
        teviFilterMinGetBufferSize_32f_C3R, teviFilterMaxGetBufferSize_32f_C3R)
MEMBERS(Tev32f, 4, teviFilterMinBorderReplicate_32f_C4R, teviFilterMaxBorderReplicate_32f_C4R,
        teviFilterMinGetBufferSize_32f_C4R, teviFilterMaxGetBufferSize_32f_C4R)

template <class Element, int count>
struct Layout {
  using T = Element;
  static constexpr int channels = count;
};
template <class L>
class Separable : public testing::Test {};
using Layouts = testing::Types<Layout<Tev8u, 1>, Layout<Tev8u, 3>, Layout<Tev8u, 4>, Layout<Tev32f, 1>,
                               Layout<Tev32f, 3>, Layout<Tev32f, 4>>;
TYPED_TEST_SUITE(Separable, Layouts);

// The definition: the extremum over the window, positions clamped, the first in row order among equals.
template <class T, int channels>
Image<T, channels> definition(const Image<T, channels>& src, TevSize mask, TevPoint anchor, bool least) {
  Image<T, channels> result(src.width(), src.height());
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x)
      for (int c = 0; c < channels; ++c) {
        const auto at = [&](int i, int j) {
          return src.at(std::clamp(x - anchor.x + i, 0, src.width() - 1),
                        std::clamp(y - anchor.y + j, 0, src.height() - 1), c);
        };
        T best = at(0, 0);
        // Windows reach far beyond the image in some trials: cells that clamp onto the same pixel count once.
        const int i0 = std::max(0, anchor.x - x), i1 = std::min(mask.width, anchor.x - x + src.width());
        const int j0 = std::max(0, anchor.y - y), j1 = std::min(mask.height, anchor.y - y + src.height());
        for (int j = std::min(j0, mask.height - 1); j < std::max(j1, 1); ++j)
          for (int i = std::min(i0, mask.width - 1); i < std::max(i1, 1); ++i)
            if (least ? at(i, j) < best : at(i, j) > best) best = at(i, j);
        result.set(x * channels + c, y, best);
      }
  return result;
}

template <class T, int channels>
void expectDefinition(const Image<T, channels>& src, TevSize mask, TevPoint anchor, Random& random) {
  SCOPED_TRACE(testing::Message() << src.width() << " x " << src.height() << ", mask " << mask.width << " x "
                                  << mask.height << ", anchor " << anchor.x << ", " << anchor.y);
  for (const bool least : {true, false}) {
    int size = 0;
    ASSERT_EQ((least ? Members<T, channels>::minSize : Members<T, channels>::maxSize)(src.width(), mask.width,
                                                                                      mask.height, &size),
              tevStatusOk);
    const Buffer buffer(size, random.between(0, 40));
    auto dst = random.image<T, channels>(src.width(), src.height());
    ASSERT_EQ((least ? Members<T, channels>::min : Members<T, channels>::max)(
                  src.data(), src.step(), dst.data(), dst.step(), src.size(), mask, anchor, buffer.data()),
              tevStatusOk);
    ASSERT_SAME_IMAGE(dst, definition(src, mask, anchor, least));
  }
}

}  // namespace

TEST(SeparableExample, MinimumOverThreeByThreeSpreadsTheDarkPixel) {
  const auto src = grid<Tev8u>({{9, 9, 9, 9, 9},  //
                                {9, 9, 9, 9, 9},
                                {9, 9, 9, 1, 9},
                                {9, 9, 9, 9, 9},
                                {5, 9, 9, 9, 9}});
  Image<Tev8u> dst(5, 5);
  int size = 0;
  ASSERT_EQ(teviFilterMinGetBufferSize_8u_C1R(5, 3, 3, &size), tevStatusOk);
  const Buffer buffer(size);
  ASSERT_EQ(teviFilterMinBorderReplicate_8u_C1R(src.data(), 5, dst.data(), 5, {5, 5}, {3, 3}, {1, 1}, buffer.data()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{9, 9, 9, 9, 9},  //
                                      {9, 9, 1, 1, 1},
                                      {9, 9, 1, 1, 1},
                                      {5, 5, 1, 1, 1},
                                      {5, 5, 9, 9, 9}}));
  ASSERT_EQ(teviFilterMaxBorderReplicate_8u_C1R(dst.data(), 5, Image<Tev8u>(5, 5).data(), 5, {5, 5}, {3, 3}, {1, 1},
                                                buffer.data()),
            tevStatusOk);
}

TEST(SeparableExample, TheAnchorMovesTheWindow) {
  const auto src = grid<Tev8u>({{1, 2, 3, 4, 5, 6}});
  Image<Tev8u> dst(6, 1);
  const Buffer buffer(16 * 2 * 4 + 2 * (6 + 32) + 32);
  ASSERT_EQ(teviFilterMaxBorderReplicate_8u_C1R(src.data(), 6, dst.data(), 6, {6, 1}, {3, 1}, {0, 0}, buffer.data()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{3, 4, 5, 6, 6, 6}}));
  ASSERT_EQ(teviFilterMaxBorderReplicate_8u_C1R(src.data(), 6, dst.data(), 6, {6, 1}, {3, 1}, {2, 0}, buffer.data()),
            tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{1, 2, 3, 4, 5, 6}}));
}

TYPED_TEST(Separable, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 120; ++trial) {
    const int width = random.between(1, 40), height = random.between(1, 24);
    const auto src = random.image<typename TypeParam::T, TypeParam::channels>(width, height);
    const TevSize mask = {random.between(1, 2 + trial % 40), random.between(1, 2 + trial % 23)};
    ASSERT_NO_FATAL_FAILURE(
        expectDefinition(src, mask, {random.between(0, mask.width - 1), random.between(0, mask.height - 1)}, random));
  }
}

TYPED_TEST(Separable, EqualsTheDefinitionForEveryMaskSizeOnWideImages) {
  // Wide and tall enough for the workers of one length, in images on both sides of the small images' limit.
  Random random;
  for (int n = 1; n <= 17; ++n) {
    const int width = 2 * n + 70, height = 2 * std::min(n, 7) + 3 + (n % 3 == 0 ? 30 : 0);
    const auto src = random.image<typename TypeParam::T, TypeParam::channels>(width, height);
    const TevSize mask = {n, std::min(n, 7)};
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, mask, {n / 2, mask.height / 2}, random));
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, mask, {n - 1, mask.height - 1}, random));
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, mask, {0, 0}, random));
  }
}

TYPED_TEST(Separable, OfOnePixelMasksIsACopy) {
  Random random;
  for (const TevSize size : {TevSize{1, 1}, TevSize{33, 1}, TevSize{1, 9}, TevSize{50, 7}})
    ASSERT_NO_FATAL_FAILURE(expectDefinition(
        random.image<typename TypeParam::T, TypeParam::channels>(size.width, size.height), {1, 1}, {0, 0}, random));
}

TYPED_TEST(Separable, OfAWindowLargerThanTheImageTakesAllThatClampingReaches) {
  Random random;
  for (const TevSize size : {TevSize{1, 1}, TevSize{7, 5}, TevSize{12, 1}, TevSize{1, 12}}) {
    const auto src = random.image<typename TypeParam::T, TypeParam::channels>(size.width, size.height);
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, {41, 31}, {20, 15}, random));
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, {41, 31}, {40, 30}, random));
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, {41, 31}, {0, 0}, random));
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, {9, 6}, {8, 5}, random));
  }
}

TYPED_TEST(Separable, WidensWindowsLongerThanTheRowWorkersBlock) {
  Random random;
  const auto src = random.image<typename TypeParam::T, TypeParam::channels>(300, 3);
  for (const int length : {63, 64, 65, 127, 150, 260})
    for (const int anchor : {0, length / 2, length - 1})
      ASSERT_NO_FATAL_FAILURE(expectDefinition(src, {length, 2}, {anchor, 1}, random));
}

TYPED_TEST(Separable, OnSmallImagesTakesLongWindowsByShortWorkers) {
  Random random;
  const auto src = random.image<typename TypeParam::T, TypeParam::channels>(130, 4);
  for (int length = 8; length <= 65; ++length)
    for (const int anchor : {0, length / 3, length - 1})
      ASSERT_NO_FATAL_FAILURE(expectDefinition(src, {length, 1}, {anchor, 0}, random));
}

TYPED_TEST(Separable, FiltersTallColumnsOfEveryHeight) {
  Random random;
  const auto src = random.image<typename TypeParam::T, TypeParam::channels>(3, 61);
  for (int length = 1; length <= 70; ++length)
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, {1, length}, {0, random.between(0, length - 1)}, random));
}

TEST(SeparableFloats, KeepTheFirstZeroInRowOrderAndInfinities) {
  constexpr float inf = std::numeric_limits<float>::infinity();
  Random random;
  for (int trial = 0; trial < 60; ++trial) {
    const auto src = random.image<Tev32f>(random.between(1, 50), random.between(1, 12), [&] {
      constexpr float values[] = {0.0F, -0.0F, inf, -inf, 1.0F, std::numeric_limits<float>::denorm_min()};
      return values[random.between(0, trial % 2 ? 1 : 5)];
    });
    const TevSize mask = {random.between(1, 20), random.between(1, 8)};
    ASSERT_NO_FATAL_FAILURE(
        expectDefinition(src, mask, {random.between(0, mask.width - 1), random.between(0, mask.height - 1)}, random));
  }
}

TEST(SeparableFloats, GiveAnElementOfTheWindowWhereOneIsNan) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  Random random;
  for (int trial = 0; trial < 100; ++trial) {
    const auto src = random.image<Tev32f>(random.between(1, 60), random.between(1, 9),
                                          [&] { return random.oneIn(3) ? nan : random.value<Tev32f>(); });
    const TevSize mask = {random.between(1, 40), random.between(1, 7)};
    const TevPoint anchor = {random.between(0, mask.width - 1), random.between(0, mask.height - 1)};
    int size = 0;
    ASSERT_EQ(teviFilterMinGetBufferSize_32f_C1R(src.width(), mask.width, mask.height, &size), tevStatusOk);
    const Buffer buffer(size);
    Image<Tev32f> dst(src.width(), src.height());
    ASSERT_EQ(teviFilterMinBorderReplicate_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), mask,
                                                   anchor, buffer.data()),
              tevStatusOk);
    for (int y = 0; y < src.height(); ++y)
      for (int x = 0; x < src.width(); ++x) {
        bool found = false;
        for (int j = 0; j < mask.height; ++j)
          for (int i = 0; i < mask.width; ++i)
            found |= kit::sameBits(dst.at(x, y), src.at(std::clamp(x - anchor.x + i, 0, src.width() - 1),
                                                        std::clamp(y - anchor.y + j, 0, src.height() - 1)));
        ASSERT_TRUE(found) << "at " << x << ", " << y;
      }
  }
}

TYPED_TEST(Separable, TellsTheBufferToTheByte) {
  using M = Members<typename TypeParam::T, TypeParam::channels>;
  constexpr int pixelBytes = TypeParam::channels * int{sizeof(typename TypeParam::T)}, pointers = 4 * sizeof(void*);
  for (const SizeQuery query : {M::minSize, M::maxSize}) {
    int size = -1;
    EXPECT_EQ(query(1, 1, 1, &size), tevStatusOk);
    EXPECT_EQ(size, pointers + 2 * (pixelBytes + 32) + 32);
    EXPECT_EQ(query(1920, 500, 15, &size), tevStatusOk);
    EXPECT_EQ(size, pointers * 15 + 30 * (1920 * pixelBytes + 32) + 32);
    EXPECT_EQ(query(std::numeric_limits<int>::max(), 1, std::numeric_limits<int>::max(), &size), tevStatusOk);
    EXPECT_EQ(size, std::numeric_limits<int>::max());
    size = 77;
    EXPECT_EQ(query(0, 0, 0, nullptr), tevStatusNullPtr);
    EXPECT_FAILS(tevStatusBadSize, query(0, 0, 0, &size), size);
    EXPECT_FAILS(tevStatusBadMaskSize, query(1, 0, 1, &size), size);
    EXPECT_FAILS(tevStatusBadMaskSize, query(1, 1, -3, &size), size);
  }
}

TYPED_TEST(Separable, ChecksPointersSizeMaskAnchorAndThenEachImage) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels, row = 8 * channels * int{sizeof(T)};
  const Image<T, channels> src(8, 4, 8);
  Image<T, channels> dst(8, 4, 8);
  const Buffer buffer(10000);
  T* const null = nullptr;
  for (const Filter<T> f : {Filter<T>{Members<T, channels>::min}, Filter<T>{Members<T, channels>::max}}) {
    const T* const s = src.data();
    T* const d = dst.data();
    Tev8u* const b = buffer.data();
    const int step = src.step();
    EXPECT_FAILS(tevStatusNullPtr, f(null, 0, d, 0, {0, 0}, {0, 0}, {9, 9}, b), dst);
    EXPECT_FAILS(tevStatusNullPtr, f(s, step, null, step, {8, 4}, {3, 3}, {1, 1}, b), dst);
    EXPECT_FAILS(tevStatusNullPtr, f(s, step, d, step, {8, 4}, {3, 3}, {1, 1}, nullptr), dst);
    EXPECT_FAILS(tevStatusBadSize, f(s, 0, d, 0, {0, 4}, {0, 3}, {9, 9}, b), dst);
    EXPECT_FAILS(tevStatusBadSize, f(s, 0, d, 0, {8, 0}, {0, 3}, {9, 9}, b), dst);
    EXPECT_FAILS(tevStatusBadMaskSize, f(s, 0, d, 0, {8, 4}, {0, 3}, {9, 9}, b), dst);
    EXPECT_FAILS(tevStatusBadMaskSize, f(s, 0, d, 0, {8, 4}, {3, -1}, {9, 9}, b), dst);
    for (const TevPoint anchor : {TevPoint{-1, 0}, TevPoint{3, 0}, TevPoint{0, -1}, TevPoint{0, 3}})
      EXPECT_FAILS(tevStatusBadAnchor, f(s, 0, d, 0, {8, 4}, {3, 3}, anchor, b), dst);
    EXPECT_FAILS(tevStatusBadStep, f(s, row - 1, d, step, {8, 4}, {3, 3}, {1, 1}, b), dst);
    EXPECT_FAILS(tevStatusBadStep, f(s, step, d, row - 1, {8, 4}, {3, 3}, {1, 1}, b), dst);
    EXPECT_FAILS(tevStatusBadStep, f(s, step, d, step, {1 << 30, 4}, {3, 3}, {1, 1}, b), dst);
    if (sizeof(T) == 1) {
      EXPECT_EQ(f(s, row + 1, d, row + 1, {8, 4}, {3, 3}, {1, 1}, b), tevStatusOk);
    } else {
      // The source is tested for both its faults before the destination is looked at.
      EXPECT_FAILS(tevStatusStepNotAligned, f(s, row + 1, d, row - 1, {8, 4}, {3, 3}, {1, 1}, b), dst);
      EXPECT_FAILS(tevStatusBadStep, f(s, row, d, row - 1, {8, 4}, {3, 3}, {1, 1}, b), dst);
      EXPECT_FAILS(tevStatusStepNotAligned, f(s, row, d, row + 2, {8, 4}, {3, 3}, {1, 1}, b), dst);
    }
    EXPECT_EQ(f(s, row, d, row, {8, 4}, {3, 3}, {1, 1}, b), tevStatusOk);
  }
}
