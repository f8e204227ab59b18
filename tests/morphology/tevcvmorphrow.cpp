#include <algorithm>
#include <limits>
#include <vector>

#include "kit/kit.h"
#include "tevcv_internal/morphology.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

template <class T>
using Row = void (*)(const T* src, T* dst, int width, int length, int offset);

// The workers of one direction and layout, in the order of `builtFor`.
constexpr int builtFor[] = {1, 2, 3, 4, 5, 6, 7, 9, 11, 13, 15, 0};
template <class T, int channels, bool least>
struct Workers;
#define WORKERS(T, channels, least, ...)                              \
  template <>                                                         \
  struct Workers<T, channels, least> {                                \
    static constexpr Row<T> all[std::size(builtFor)] = {__VA_ARGS__}; \
  };

WORKERS(Tev8u, 1, true, ownFilterMinRow01_8u_C1R, ownFilterMinRow02_8u_C1R, ownFilterMinRow03_8u_C1R,
        ownFilterMinRow04_8u_C1R, ownFilterMinRow05_8u_C1R, ownFilterMinRow06_8u_C1R, ownFilterMinRow07_8u_C1R,
        ownFilterMinRow09_8u_C1R, ownFilterMinRow11_8u_C1R, ownFilterMinRow13_8u_C1R, ownFilterMinRow15_8u_C1R,
        ownFilterMinRowVH_8u_C1R)
WORKERS(Tev8u, 3, true, ownFilterMinRow01_8u_C3R, ownFilterMinRow02_8u_C3R, ownFilterMinRow03_8u_C3R,
        ownFilterMinRow04_8u_C3R, ownFilterMinRow05_8u_C3R, ownFilterMinRow06_8u_C3R, ownFilterMinRow07_8u_C3R,
        ownFilterMinRow09_8u_C3R, ownFilterMinRow11_8u_C3R, ownFilterMinRow13_8u_C3R, ownFilterMinRow15_8u_C3R,
        ownFilterMinRowVH_8u_C3R)
WORKERS(Tev8u, 4, true, ownFilterMinRow01_8u_C4R, ownFilterMinRow02_8u_C4R, ownFilterMinRow03_8u_C4R,
        ownFilterMinRow04_8u_C4R, ownFilterMinRow05_8u_C4R, ownFilterMinRow06_8u_C4R, ownFilterMinRow07_8u_C4R,
        ownFilterMinRow09_8u_C4R, ownFilterMinRow11_8u_C4R, ownFilterMinRow13_8u_C4R, ownFilterMinRow15_8u_C4R,
        ownFilterMinRowVH_8u_C4R)
WORKERS(Tev32f, 1, true, ownFilterMinRow01_32f_C1R, ownFilterMinRow02_32f_C1R, ownFilterMinRow03_32f_C1R,
        ownFilterMinRow04_32f_C1R, ownFilterMinRow05_32f_C1R, ownFilterMinRow06_32f_C1R, ownFilterMinRow07_32f_C1R,
        ownFilterMinRow09_32f_C1R, ownFilterMinRow11_32f_C1R, ownFilterMinRow13_32f_C1R, ownFilterMinRow15_32f_C1R,
        ownFilterMinRowVH_32f_C1R)
WORKERS(Tev32f, 3, true, ownFilterMinRow01_32f_C3R, ownFilterMinRow02_32f_C3R, ownFilterMinRow03_32f_C3R,
        ownFilterMinRow04_32f_C3R, ownFilterMinRow05_32f_C3R, ownFilterMinRow06_32f_C3R, ownFilterMinRow07_32f_C3R,
        ownFilterMinRow09_32f_C3R, ownFilterMinRow11_32f_C3R, ownFilterMinRow13_32f_C3R, ownFilterMinRow15_32f_C3R,
        ownFilterMinRowVH_32f_C3R)
WORKERS(Tev32f, 4, true, ownFilterMinRow01_32f_C4R, ownFilterMinRow02_32f_C4R, ownFilterMinRow03_32f_C4R,
        ownFilterMinRow04_32f_C4R, ownFilterMinRow05_32f_C4R, ownFilterMinRow06_32f_C4R, ownFilterMinRow07_32f_C4R,
        ownFilterMinRow09_32f_C4R, ownFilterMinRow11_32f_C4R, ownFilterMinRow13_32f_C4R, ownFilterMinRow15_32f_C4R,
        ownFilterMinRowVH_32f_C4R)
WORKERS(Tev8u, 1, false, ownFilterMaxRow01_8u_C1R, ownFilterMaxRow02_8u_C1R, ownFilterMaxRow03_8u_C1R,
        ownFilterMaxRow04_8u_C1R, ownFilterMaxRow05_8u_C1R, ownFilterMaxRow06_8u_C1R, ownFilterMaxRow07_8u_C1R,
        ownFilterMaxRow09_8u_C1R, ownFilterMaxRow11_8u_C1R, ownFilterMaxRow13_8u_C1R, ownFilterMaxRow15_8u_C1R,
        ownFilterMaxRowVH_8u_C1R)
WORKERS(Tev8u, 3, false, ownFilterMaxRow01_8u_C3R, ownFilterMaxRow02_8u_C3R, ownFilterMaxRow03_8u_C3R,
        ownFilterMaxRow04_8u_C3R, ownFilterMaxRow05_8u_C3R, ownFilterMaxRow06_8u_C3R, ownFilterMaxRow07_8u_C3R,
        ownFilterMaxRow09_8u_C3R, ownFilterMaxRow11_8u_C3R, ownFilterMaxRow13_8u_C3R, ownFilterMaxRow15_8u_C3R,
        ownFilterMaxRowVH_8u_C3R)
WORKERS(Tev8u, 4, false, ownFilterMaxRow01_8u_C4R, ownFilterMaxRow02_8u_C4R, ownFilterMaxRow03_8u_C4R,
        ownFilterMaxRow04_8u_C4R, ownFilterMaxRow05_8u_C4R, ownFilterMaxRow06_8u_C4R, ownFilterMaxRow07_8u_C4R,
        ownFilterMaxRow09_8u_C4R, ownFilterMaxRow11_8u_C4R, ownFilterMaxRow13_8u_C4R, ownFilterMaxRow15_8u_C4R,
        ownFilterMaxRowVH_8u_C4R)
WORKERS(Tev32f, 1, false, ownFilterMaxRow01_32f_C1R, ownFilterMaxRow02_32f_C1R, ownFilterMaxRow03_32f_C1R,
        ownFilterMaxRow04_32f_C1R, ownFilterMaxRow05_32f_C1R, ownFilterMaxRow06_32f_C1R, ownFilterMaxRow07_32f_C1R,
        ownFilterMaxRow09_32f_C1R, ownFilterMaxRow11_32f_C1R, ownFilterMaxRow13_32f_C1R, ownFilterMaxRow15_32f_C1R,
        ownFilterMaxRowVH_32f_C1R)
WORKERS(Tev32f, 3, false, ownFilterMaxRow01_32f_C3R, ownFilterMaxRow02_32f_C3R, ownFilterMaxRow03_32f_C3R,
        ownFilterMaxRow04_32f_C3R, ownFilterMaxRow05_32f_C3R, ownFilterMaxRow06_32f_C3R, ownFilterMaxRow07_32f_C3R,
        ownFilterMaxRow09_32f_C3R, ownFilterMaxRow11_32f_C3R, ownFilterMaxRow13_32f_C3R, ownFilterMaxRow15_32f_C3R,
        ownFilterMaxRowVH_32f_C3R)
WORKERS(Tev32f, 4, false, ownFilterMaxRow01_32f_C4R, ownFilterMaxRow02_32f_C4R, ownFilterMaxRow03_32f_C4R,
        ownFilterMaxRow04_32f_C4R, ownFilterMaxRow05_32f_C4R, ownFilterMaxRow06_32f_C4R, ownFilterMaxRow07_32f_C4R,
        ownFilterMaxRow09_32f_C4R, ownFilterMaxRow11_32f_C4R, ownFilterMaxRow13_32f_C4R, ownFilterMaxRow15_32f_C4R,
        ownFilterMaxRowVH_32f_C4R)

// One direction and layout.
template <class Element, int count, bool minimum>
struct Form {
  using T = Element;
  static constexpr int channels = count;
  static constexpr bool least = minimum;
  static constexpr const auto& workers = Workers<T, channels, least>::all;
};
template <class F>
class RowWorkers : public testing::Test {};
using Forms =
    testing::Types<Form<Tev8u, 1, true>, Form<Tev8u, 3, true>, Form<Tev8u, 4, true>, Form<Tev32f, 1, true>,
                   Form<Tev32f, 3, true>, Form<Tev32f, 4, true>, Form<Tev8u, 1, false>, Form<Tev8u, 3, false>,
                   Form<Tev8u, 4, false>, Form<Tev32f, 1, false>, Form<Tev32f, 3, false>, Form<Tev32f, 4, false>>;
TYPED_TEST_SUITE(RowWorkers, Forms);

// The extrema of every stretch [begin, end) of a row, each channel on its own: the definition, for all windows at once.
template <class F>
class Stretches {
 public:
  using T = typename F::T;

  explicit Stretches(const Image<T, F::channels>& row) : width_(row.width()) {
    best_.resize(static_cast<size_t>(width_) * (width_ + 1) * F::channels);
    for (int begin = 0; begin < width_; ++begin)
      for (int c = 0; c < F::channels; ++c) {
        T best = row.at(begin, 0, c);
        for (int end = begin + 1; end <= width_; ++end) {
          const T value = row.at(end - 1, 0, c);
          if (F::least ? value < best : value > best) best = value;
          best_[index(begin, end) + static_cast<size_t>(c)] = best;
        }
      }
  }

  // The pixel that a window gives at column x.
  const T* window(int x, int length, int offset) const {
    return &best_[index(std::max(0, x - offset), std::min(width_, x - offset + length))];
  }

 private:
  size_t index(int begin, int end) const {
    return (static_cast<size_t>(begin) * (static_cast<size_t>(width_) + 1) + static_cast<size_t>(end)) * F::channels;
  }

  int width_;
  std::vector<T> best_;
};

template <class F>
testing::AssertionResult equalsTheDefinition(Row<typename F::T> worker, const Image<typename F::T, F::channels>& src,
                                             const Stretches<F>& stretches, Image<typename F::T, F::channels>& dst,
                                             int length, int offset) {
  worker(src.data(), dst.data(), src.width(), length, offset);
  for (int x = 0; x < src.width(); ++x) {
    const typename F::T* const expected = stretches.window(x, length, offset);
    for (int c = 0; c < F::channels; ++c)
      if (!kit::sameBits(dst.at(x, 0, c), expected[c]))
        return testing::AssertionFailure()
               << "width " << src.width() << ", length " << length << ", offset " << offset << ": column " << x
               << ", channel " << c << " is " << +dst.at(x, 0, c) << ", expected " << +expected[c];
  }
  return testing::AssertionSuccess();
}

}  // namespace

TEST(RowWorkerExample, AWindowOfThreeAboutItsCentre) {
  const auto src = grid<Tev8u>({{5, 3, 9, 8, 7, 1, 6}});
  Image<Tev8u> dst(7, 1);
  ownFilterMinRow03_8u_C1R(src.data(), dst.data(), 7, 3, 1);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{3, 3, 3, 7, 1, 1, 1}}));
  ownFilterMaxRow03_8u_C1R(src.data(), dst.data(), 7, 3, 1);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{5, 9, 9, 9, 8, 7, 6}}));
}

TEST(RowWorkerExample, ChannelsDoNotMix) {
  const auto src = grid<Tev8u, 3>({{1, 20, 3, 4, 5, 60, 7, 80, 9}});
  Image<Tev8u, 3> dst(3, 1);
  ownFilterMaxRow02_8u_C3R(src.data(), dst.data(), 3, 2, 0);
  EXPECT_SAME_IMAGE(dst, (grid<Tev8u, 3>({{4, 20, 60, 7, 80, 60, 7, 80, 9}})));
}

TYPED_TEST(RowWorkers, GiveTheExtremumOfEveryWindowUpToTwoHundred) {
  // Every worker takes every length and offset, on rows of one pixel, shorter than the window and longer.
  Random random;
  for (const int width : {1, 6, 41}) {
    const auto src = random.image<typename TypeParam::T, TypeParam::channels>(width, 1);
    const Stretches<TypeParam> stretches(src);
    Image<typename TypeParam::T, TypeParam::channels> dst(width, 1);
    for (const Row<typename TypeParam::T> worker : TypeParam::workers)
      for (int length = 1; length <= (width == 41 ? 200 : 70); ++length)
        for (int offset = 0; offset<length; offset += length> 66 ? 3 : 1)
          ASSERT_TRUE(equalsTheDefinition<TypeParam>(worker, src, stretches, dst, length, offset));
  }
}

TYPED_TEST(RowWorkers, GiveTheExtremumOnLongRows) {
  Random random;
  for (const int width : {300, 1100}) {
    const auto src = random.image<typename TypeParam::T, TypeParam::channels>(width, 1);
    const Stretches<TypeParam> stretches(src);
    auto dst = random.image<typename TypeParam::T, TypeParam::channels>(width, 1);
    for (size_t i = 0; i < std::size(builtFor); ++i)
      for (const int length : {builtFor[i] ? builtFor[i] : 40, 16, 63, 64, 65, 127, 128, 129, 255, 1000, 2500})
        for (const int offset : {0, length / 2, length - 1})
          ASSERT_TRUE(equalsTheDefinition<TypeParam>(TypeParam::workers[i], src, stretches, dst, length, offset));
  }
}

TYPED_TEST(RowWorkers, NeverShowANeutralValue) {
  // A row whose elements are all the worst there is.
  using T = typename TypeParam::T;
  constexpr T worst = TypeParam::least ? (std::numeric_limits<T>::has_infinity ? std::numeric_limits<T>::infinity()
                                                                               : std::numeric_limits<T>::max())
                                       : (std::numeric_limits<T>::has_infinity ? -std::numeric_limits<T>::infinity()
                                                                               : std::numeric_limits<T>::lowest());
  Image<T, TypeParam::channels> src(40, 1), dst(40, 1);
  src.fill(worst);
  for (const Row<T> worker : TypeParam::workers)
    for (int length = 1; length <= 70; ++length)
      for (const int offset : {0, length - 1}) {
        worker(src.data(), dst.data(), 40, length, offset);
        ASSERT_SAME_IMAGE(dst, src);
      }
}

TYPED_TEST(RowWorkers, KeepTheFirstOfEqualZeros) {
  if constexpr (std::is_floating_point_v<typename TypeParam::T>) {
    Random random;
    const auto src = random.image<Tev32f, TypeParam::channels>(50, 1, [&] { return random.oneIn(2) ? 0.0F : -0.0F; });
    const Stretches<TypeParam> stretches(src);
    Image<Tev32f, TypeParam::channels> dst(50, 1);
    for (const Row<Tev32f> worker : TypeParam::workers)
      for (int length = 1; length <= 80; ++length)
        for (const int offset : {0, length / 2, length - 1})
          ASSERT_TRUE(equalsTheDefinition<TypeParam>(worker, src, stretches, dst, length, offset));
  }
}

TYPED_TEST(RowWorkers, TouchNothingOutsideTheRow) {
  // The images end at an unmapped page; here the bytes in front of the row are watched.
  using T = typename TypeParam::T;
  Random random;
  constexpr int channels = TypeParam::channels;
  const auto src = random.image<T, channels>(90, 1);
  for (const Row<T> worker : TypeParam::workers)
    for (const int length : {1, 2, 8, 16, 17, 63, 64, 90, 170}) {
      Image<T, channels> dst(92, 1);
      const auto before = dst.bytes();
      worker(src.data(), dst.data() + channels, 90, length, length / 2);
      const auto after = dst.bytes();
      ASSERT_TRUE(std::equal(before.begin(), before.begin() + channels * sizeof(T), after.begin()));
      ASSERT_TRUE(std::equal(before.end() - channels * sizeof(T), before.end(), after.end() - channels * sizeof(T)));
    }
}

// --- Tables

TEST(RowTables, MinimumHasAWorkerForEachLengthThatHasOneAndTheAnyLengthWorkerElsewhere) {
  const TevFilterRow_8u t8u_C1[16] = {
      ownFilterMinRowVH_8u_C1R, ownFilterMinRow01_8u_C1R, ownFilterMinRow02_8u_C1R, ownFilterMinRow03_8u_C1R,
      ownFilterMinRow04_8u_C1R, ownFilterMinRow05_8u_C1R, ownFilterMinRow06_8u_C1R, ownFilterMinRow07_8u_C1R,
      ownFilterMinRowVH_8u_C1R, ownFilterMinRow09_8u_C1R, ownFilterMinRowVH_8u_C1R, ownFilterMinRow11_8u_C1R,
      ownFilterMinRowVH_8u_C1R, ownFilterMinRow13_8u_C1R, ownFilterMinRowVH_8u_C1R, ownFilterMinRow15_8u_C1R};
  EXPECT_TRUE(std::equal(t8u_C1, t8u_C1 + 16, owntablFilterMinRow_8u_C1));
  const TevFilterRow_8u t8u_C3[16] = {
      ownFilterMinRowVH_8u_C3R, ownFilterMinRow01_8u_C3R, ownFilterMinRow02_8u_C3R, ownFilterMinRow03_8u_C3R,
      ownFilterMinRow04_8u_C3R, ownFilterMinRow05_8u_C3R, ownFilterMinRow06_8u_C3R, ownFilterMinRow07_8u_C3R,
      ownFilterMinRowVH_8u_C3R, ownFilterMinRow09_8u_C3R, ownFilterMinRowVH_8u_C3R, ownFilterMinRow11_8u_C3R,
      ownFilterMinRowVH_8u_C3R, ownFilterMinRow13_8u_C3R, ownFilterMinRowVH_8u_C3R, ownFilterMinRow15_8u_C3R};
  EXPECT_TRUE(std::equal(t8u_C3, t8u_C3 + 16, owntablFilterMinRow_8u_C3));
  const TevFilterRow_8u t8u_C4[16] = {
      ownFilterMinRowVH_8u_C4R, ownFilterMinRow01_8u_C4R, ownFilterMinRow02_8u_C4R, ownFilterMinRow03_8u_C4R,
      ownFilterMinRow04_8u_C4R, ownFilterMinRow05_8u_C4R, ownFilterMinRow06_8u_C4R, ownFilterMinRow07_8u_C4R,
      ownFilterMinRowVH_8u_C4R, ownFilterMinRow09_8u_C4R, ownFilterMinRowVH_8u_C4R, ownFilterMinRow11_8u_C4R,
      ownFilterMinRowVH_8u_C4R, ownFilterMinRow13_8u_C4R, ownFilterMinRowVH_8u_C4R, ownFilterMinRow15_8u_C4R};
  EXPECT_TRUE(std::equal(t8u_C4, t8u_C4 + 16, owntablFilterMinRow_8u_C4));
  const TevFilterRow_32f t32f_C1[16] = {
      ownFilterMinRowVH_32f_C1R, ownFilterMinRow01_32f_C1R, ownFilterMinRow02_32f_C1R, ownFilterMinRow03_32f_C1R,
      ownFilterMinRow04_32f_C1R, ownFilterMinRow05_32f_C1R, ownFilterMinRow06_32f_C1R, ownFilterMinRow07_32f_C1R,
      ownFilterMinRowVH_32f_C1R, ownFilterMinRow09_32f_C1R, ownFilterMinRowVH_32f_C1R, ownFilterMinRow11_32f_C1R,
      ownFilterMinRowVH_32f_C1R, ownFilterMinRow13_32f_C1R, ownFilterMinRowVH_32f_C1R, ownFilterMinRow15_32f_C1R};
  EXPECT_TRUE(std::equal(t32f_C1, t32f_C1 + 16, owntablFilterMinRow_32f_C1));
  const TevFilterRow_32f t32f_C3[16] = {
      ownFilterMinRowVH_32f_C3R, ownFilterMinRow01_32f_C3R, ownFilterMinRow02_32f_C3R, ownFilterMinRow03_32f_C3R,
      ownFilterMinRow04_32f_C3R, ownFilterMinRow05_32f_C3R, ownFilterMinRow06_32f_C3R, ownFilterMinRow07_32f_C3R,
      ownFilterMinRowVH_32f_C3R, ownFilterMinRow09_32f_C3R, ownFilterMinRowVH_32f_C3R, ownFilterMinRow11_32f_C3R,
      ownFilterMinRowVH_32f_C3R, ownFilterMinRow13_32f_C3R, ownFilterMinRowVH_32f_C3R, ownFilterMinRow15_32f_C3R};
  EXPECT_TRUE(std::equal(t32f_C3, t32f_C3 + 16, owntablFilterMinRow_32f_C3));
  const TevFilterRow_32f t32f_C4[16] = {
      ownFilterMinRowVH_32f_C4R, ownFilterMinRow01_32f_C4R, ownFilterMinRow02_32f_C4R, ownFilterMinRow03_32f_C4R,
      ownFilterMinRow04_32f_C4R, ownFilterMinRow05_32f_C4R, ownFilterMinRow06_32f_C4R, ownFilterMinRow07_32f_C4R,
      ownFilterMinRowVH_32f_C4R, ownFilterMinRow09_32f_C4R, ownFilterMinRowVH_32f_C4R, ownFilterMinRow11_32f_C4R,
      ownFilterMinRowVH_32f_C4R, ownFilterMinRow13_32f_C4R, ownFilterMinRowVH_32f_C4R, ownFilterMinRow15_32f_C4R};
  EXPECT_TRUE(std::equal(t32f_C4, t32f_C4 + 16, owntablFilterMinRow_32f_C4));
}

TEST(RowTables, SmallMinimumTakesTheNextShorterWorker) {
  const TevFilterRow_8u t8u_C4[16] = {
      ownFilterMinRowVH_8u_C4R, ownFilterMinRow01_8u_C4R, ownFilterMinRow02_8u_C4R, ownFilterMinRow03_8u_C4R,
      ownFilterMinRow04_8u_C4R, ownFilterMinRow05_8u_C4R, ownFilterMinRow06_8u_C4R, ownFilterMinRow07_8u_C4R,
      ownFilterMinRow07_8u_C4R, ownFilterMinRow09_8u_C4R, ownFilterMinRow09_8u_C4R, ownFilterMinRow11_8u_C4R,
      ownFilterMinRow11_8u_C4R, ownFilterMinRow13_8u_C4R, ownFilterMinRow13_8u_C4R, ownFilterMinRow15_8u_C4R};
  EXPECT_TRUE(std::equal(t8u_C4, t8u_C4 + 16, owntablFilterMinRow_8u_C4_Small));
  const TevFilterRow_32f t32f_C1[16] = {
      ownFilterMinRowVH_32f_C1R, ownFilterMinRow01_32f_C1R, ownFilterMinRow02_32f_C1R, ownFilterMinRow03_32f_C1R,
      ownFilterMinRow04_32f_C1R, ownFilterMinRow05_32f_C1R, ownFilterMinRow06_32f_C1R, ownFilterMinRow07_32f_C1R,
      ownFilterMinRow07_32f_C1R, ownFilterMinRow09_32f_C1R, ownFilterMinRow09_32f_C1R, ownFilterMinRow11_32f_C1R,
      ownFilterMinRow11_32f_C1R, ownFilterMinRow13_32f_C1R, ownFilterMinRow13_32f_C1R, ownFilterMinRow15_32f_C1R};
  EXPECT_TRUE(std::equal(t32f_C1, t32f_C1 + 16, owntablFilterMinRow_32f_C1_Small));
}

TEST(RowTables, MaximumHasAWorkerForEachLengthThatHasOneAndTheAnyLengthWorkerElsewhere) {
  const TevFilterRow_8u t8u_C1[16] = {
      ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow01_8u_C1R, ownFilterMaxRow02_8u_C1R, ownFilterMaxRow03_8u_C1R,
      ownFilterMaxRow04_8u_C1R, ownFilterMaxRow05_8u_C1R, ownFilterMaxRow06_8u_C1R, ownFilterMaxRow07_8u_C1R,
      ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow09_8u_C1R, ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow11_8u_C1R,
      ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow13_8u_C1R, ownFilterMaxRowVH_8u_C1R, ownFilterMaxRow15_8u_C1R};
  EXPECT_TRUE(std::equal(t8u_C1, t8u_C1 + 16, owntablFilterMaxRow_8u_C1));
  const TevFilterRow_8u t8u_C3[16] = {
      ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow01_8u_C3R, ownFilterMaxRow02_8u_C3R, ownFilterMaxRow03_8u_C3R,
      ownFilterMaxRow04_8u_C3R, ownFilterMaxRow05_8u_C3R, ownFilterMaxRow06_8u_C3R, ownFilterMaxRow07_8u_C3R,
      ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow09_8u_C3R, ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow11_8u_C3R,
      ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow13_8u_C3R, ownFilterMaxRowVH_8u_C3R, ownFilterMaxRow15_8u_C3R};
  EXPECT_TRUE(std::equal(t8u_C3, t8u_C3 + 16, owntablFilterMaxRow_8u_C3));
  const TevFilterRow_8u t8u_C4[16] = {
      ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow01_8u_C4R, ownFilterMaxRow02_8u_C4R, ownFilterMaxRow03_8u_C4R,
      ownFilterMaxRow04_8u_C4R, ownFilterMaxRow05_8u_C4R, ownFilterMaxRow06_8u_C4R, ownFilterMaxRow07_8u_C4R,
      ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow09_8u_C4R, ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow11_8u_C4R,
      ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow13_8u_C4R, ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow15_8u_C4R};
  EXPECT_TRUE(std::equal(t8u_C4, t8u_C4 + 16, owntablFilterMaxRow_8u_C4));
  const TevFilterRow_32f t32f_C1[16] = {
      ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow01_32f_C1R, ownFilterMaxRow02_32f_C1R, ownFilterMaxRow03_32f_C1R,
      ownFilterMaxRow04_32f_C1R, ownFilterMaxRow05_32f_C1R, ownFilterMaxRow06_32f_C1R, ownFilterMaxRow07_32f_C1R,
      ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow09_32f_C1R, ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow11_32f_C1R,
      ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow13_32f_C1R, ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow15_32f_C1R};
  EXPECT_TRUE(std::equal(t32f_C1, t32f_C1 + 16, owntablFilterMaxRow_32f_C1));
  const TevFilterRow_32f t32f_C3[16] = {
      ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow01_32f_C3R, ownFilterMaxRow02_32f_C3R, ownFilterMaxRow03_32f_C3R,
      ownFilterMaxRow04_32f_C3R, ownFilterMaxRow05_32f_C3R, ownFilterMaxRow06_32f_C3R, ownFilterMaxRow07_32f_C3R,
      ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow09_32f_C3R, ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow11_32f_C3R,
      ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow13_32f_C3R, ownFilterMaxRowVH_32f_C3R, ownFilterMaxRow15_32f_C3R};
  EXPECT_TRUE(std::equal(t32f_C3, t32f_C3 + 16, owntablFilterMaxRow_32f_C3));
  const TevFilterRow_32f t32f_C4[16] = {
      ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow01_32f_C4R, ownFilterMaxRow02_32f_C4R, ownFilterMaxRow03_32f_C4R,
      ownFilterMaxRow04_32f_C4R, ownFilterMaxRow05_32f_C4R, ownFilterMaxRow06_32f_C4R, ownFilterMaxRow07_32f_C4R,
      ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow09_32f_C4R, ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow11_32f_C4R,
      ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow13_32f_C4R, ownFilterMaxRowVH_32f_C4R, ownFilterMaxRow15_32f_C4R};
  EXPECT_TRUE(std::equal(t32f_C4, t32f_C4 + 16, owntablFilterMaxRow_32f_C4));
}

TEST(RowTables, SmallMaximumTakesTheNextShorterWorker) {
  const TevFilterRow_8u t8u_C4[16] = {
      ownFilterMaxRowVH_8u_C4R, ownFilterMaxRow01_8u_C4R, ownFilterMaxRow02_8u_C4R, ownFilterMaxRow03_8u_C4R,
      ownFilterMaxRow04_8u_C4R, ownFilterMaxRow05_8u_C4R, ownFilterMaxRow06_8u_C4R, ownFilterMaxRow07_8u_C4R,
      ownFilterMaxRow07_8u_C4R, ownFilterMaxRow09_8u_C4R, ownFilterMaxRow09_8u_C4R, ownFilterMaxRow11_8u_C4R,
      ownFilterMaxRow11_8u_C4R, ownFilterMaxRow13_8u_C4R, ownFilterMaxRow13_8u_C4R, ownFilterMaxRow15_8u_C4R};
  EXPECT_TRUE(std::equal(t8u_C4, t8u_C4 + 16, owntablFilterMaxRow_8u_C4_Small));
  const TevFilterRow_32f t32f_C1[16] = {
      ownFilterMaxRowVH_32f_C1R, ownFilterMaxRow01_32f_C1R, ownFilterMaxRow02_32f_C1R, ownFilterMaxRow03_32f_C1R,
      ownFilterMaxRow04_32f_C1R, ownFilterMaxRow05_32f_C1R, ownFilterMaxRow06_32f_C1R, ownFilterMaxRow07_32f_C1R,
      ownFilterMaxRow07_32f_C1R, ownFilterMaxRow09_32f_C1R, ownFilterMaxRow09_32f_C1R, ownFilterMaxRow11_32f_C1R,
      ownFilterMaxRow11_32f_C1R, ownFilterMaxRow13_32f_C1R, ownFilterMaxRow13_32f_C1R, ownFilterMaxRow15_32f_C1R};
  EXPECT_TRUE(std::equal(t32f_C1, t32f_C1 + 16, owntablFilterMaxRow_32f_C1_Small));
}
