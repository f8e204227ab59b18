#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <type_traits>

#include "kit/kit.h"
#include "tevcv/integral.h"
#include "tevcv_internal/integral.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using Upright = std::false_type;
using Tilted = std::true_type;

// One overload for each member; those that store floats take the scale factor and do without it.
TevStatus run(Upright, const Tev32f* s, int ss, const Tev64f* q, int qs, Tev32f* d, int ds, TevSize roi, TevRect r,
              int) {
  return teviRectStdDev_32f_C1R(s, ss, q, qs, d, ds, roi, r);
}
TevStatus run(Upright, const Tev32s* s, int ss, const Tev64f* q, int qs, Tev32f* d, int ds, TevSize roi, TevRect r,
              int) {
  return teviRectStdDev_32s32f_C1R(s, ss, q, qs, d, ds, roi, r);
}
TevStatus run(Upright, const Tev32s* s, int ss, const Tev32s* q, int qs, Tev32s* d, int ds, TevSize roi, TevRect r,
              int scale) {
  return teviRectStdDev_32s_C1RSfs(s, ss, q, qs, d, ds, roi, r, scale);
}
TevStatus run(Tilted, const Tev32f* s, int ss, const Tev64f* q, int qs, Tev32f* d, int ds, TevSize roi, TevRect r,
              int) {
  return teviTiltedRectStdDev_32f_C1R(s, ss, q, qs, d, ds, roi, r);
}
TevStatus run(Tilted, const Tev32s* s, int ss, const Tev64f* q, int qs, Tev32f* d, int ds, TevSize roi, TevRect r,
              int) {
  return teviTiltedRectStdDev_32s32f_C1R(s, ss, q, qs, d, ds, roi, r);
}
TevStatus run(Tilted, const Tev32s* s, int ss, const Tev32s* q, int qs, Tev32s* d, int ds, TevSize roi, TevRect r,
              int scale) {
  return teviTiltedRectStdDev_32s_C1RSfs(s, ss, q, qs, d, ds, roi, r, scale);
}

// The sum of the rectangle for the window at column `left` of the table's row `top`.
template <class T>
long double rectangleSum(const Image<T>& t, int left, int top, TevRect r, bool tilted) {
  const auto cell = [&](int row, int column) {
    if constexpr (std::is_integral_v<T>)
      return static_cast<std::uint32_t>(t.at(left + column, top + row));
    else
      return static_cast<long double>(t.at(left + column, top + row));
  };
  const int x = r.x, y = r.y, w = r.width, h = r.height;
  const auto sum = tilted ? cell(x + y + w + h, x - y + w - h) - cell(x + y + h, x - y - h) -
                                cell(x + y + w, x - y + w) + cell(x + y, x - y)
                          : cell(y + h, x + w) - cell(y, x + w) + cell(y, x) - cell(y + h, x);
  if constexpr (std::is_integral_v<T>)
    return static_cast<T>(sum);
  else
    return sum;
}

long double deviation(long double sum, long double squares, long double area) {
  const long double mean = sum / area, variance = squares / area - mean * mean;
  return variance > 0 ? std::sqrt(variance) : 0;
}

template <class D>
D stored(long double d, int scale) {
  if constexpr (std::is_same_v<D, Tev32f>) {
    return static_cast<Tev32f>(d);
  } else {
    const long double scaled = std::ldexp(d, -scale) + 0.5L;
    return scaled < 2147483648.0L ? static_cast<Tev32s>(scaled) : INT_MIN;
  }
}

template <class Sum, class Square, class Result, bool isTilted>
struct Member {
  using T = Sum;
  using Sqr = Square;
  using D = Result;
  using Shape = std::bool_constant<isTilted>;
};

// Tables, and the window positions that they hold: `left` columns stand in front of the first position, since a tilted
// rectangle reaches to the left.
template <class M>
struct Scene {
  Image<typename M::T> sum;
  Image<typename M::Sqr> sqr;
  TevSize roi;
  TevRect rect;
  int left, top;

  Image<typename M::D> expected(int scale) const {
    using T = typename M::T;
    const bool tilted = M::Shape::value;
    const std::int64_t area = std::int64_t{rect.width} * rect.height * (tilted ? 2 : 1);
    const long double divisor =
        std::is_same_v<T, Tev32f> ? static_cast<long double>(static_cast<float>(area)) : static_cast<long double>(area);
    Image<typename M::D> d(roi.width, roi.height);
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < roi.width; ++x)
        d.set(x, y,
              stored<typename M::D>(deviation(rectangleSum(sum, left + x, top + y, rect, tilted),
                                              rectangleSum(sqr, left + x, top + y, rect, tilted), divisor),
                                    scale));
    return d;
  }
  const typename M::T* sumAt() const {
    return reinterpret_cast<const typename M::T*>(reinterpret_cast<const char*>(sum.data() + left) + top * sum.step());
  }
  const typename M::Sqr* sqrAt() const {
    return reinterpret_cast<const typename M::Sqr*>(reinterpret_cast<const char*>(sqr.data() + left) +
                                                    top * sqr.step());
  }
  TevStatus call(Image<typename M::D>& d, int scale) const {
    return run(typename M::Shape{}, sumAt(), sum.step(), sqrAt(), sqr.step(), d.data(), d.step(), roi, rect, scale);
  }
};

// Tables with arbitrary numbers in them, of exactly the cells that the windows read.
template <class M>
Scene<M> randomScene(Random& random, TevSize roi, bool wild) {
  TevRect r = {random.between(0, 4), random.between(0, 4), random.between(1, 9), random.between(1, 9)};
  const bool tilted = M::Shape::value;
  const int left = tilted ? std::max(0, r.y + r.height - r.x) : 0;
  // The step must also pass the check for a row, which counts more columns than the windows read.
  const int columns = left + roi.width + r.x + r.width + (tilted ? r.y + r.height - 1 : 0);
  const int rows = roi.height + (tilted ? r.x + r.y + r.width + r.height : r.y + r.height);
  using T = typename M::T;
  using Sqr = typename M::Sqr;
  auto sum = random.image<T>(columns, rows,
                             [&] { return wild ? random.value<T>() : static_cast<T>(random.between(0, 5000)); });
  auto sqr = random.image<Sqr>(
      columns, rows, [&] { return wild ? random.value<Sqr>() : static_cast<Sqr>(random.between(0, 9000000)); });
  return {std::move(sum), std::move(sqr), roi, r, left, 0};
}

template <class M>
class RectStdDev : public testing::Test {};
using Members = testing::Types<Member<Tev32f, Tev64f, Tev32f, false>, Member<Tev32s, Tev64f, Tev32f, false>,
                               Member<Tev32s, Tev32s, Tev32s, false>, Member<Tev32f, Tev64f, Tev32f, true>,
                               Member<Tev32s, Tev64f, Tev32f, true>, Member<Tev32s, Tev32s, Tev32s, true>>;
TYPED_TEST_SUITE(RectStdDev, Members);

// The tables of a picture.
struct Tables {
  explicit Tables(const Image<Tev8u>& src)
      : sum(src.width() + 1, src.height() + 1), sqr(src.width() + 1, src.height() + 1) {
    EXPECT_EQ(teviSqrIntegral_8u32s64f_C1R(src.data(), src.step(), sum.data(), sum.step(), sqr.data(), sqr.step(),
                                           src.size(), 0, 0),
              tevStatusOk);
  }
  Image<Tev32s> sum;
  Image<Tev64f> sqr;
};

}  // namespace

TEST(RectStdDevExample, CheckerboardOfZeroAndTwoDeviatesByOne) {
  const Tables t(grid<Tev8u>({{0, 2, 0}, {2, 0, 2}, {0, 2, 0}}));
  Image<Tev32f> d(2, 2);
  EXPECT_EQ(teviRectStdDev_32s32f_C1R(t.sum.data(), t.sum.step(), t.sqr.data(), t.sqr.step(), d.data(), d.step(),
                                      {2, 2}, {0, 0, 2, 2}),
            tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev32f>({{1, 1}, {1, 1}}));
}

TEST(RectStdDevExample, ScaleFactorOfMinusTwoGivesFourTimesTheDeviation) {
  const auto src = grid<Tev8u>({{0, 2, 5}, {2, 0, 5}});
  Image<Tev32s> sum(4, 3), sqr(4, 3), d(2, 1);
  ASSERT_EQ(teviSqrIntegral_8u32s_C1R(src.data(), src.step(), sum.data(), sum.step(), sqr.data(), sqr.step(),
                                      src.size(), 0, 0),
            tevStatusOk);
  const auto scaled = [&](int factor) {
    EXPECT_EQ(teviRectStdDev_32s_C1RSfs(sum.data(), sum.step(), sqr.data(), sqr.step(), d.data(), d.step(), d.size(),
                                        {0, 0, 2, 2}, factor),
              tevStatusOk);
    return d.clone();
  };
  // Deviations 1 and sqrt(4.5) = 2.12.
  EXPECT_SAME_IMAGE(scaled(0), grid<Tev32s>({{1, 2}}));
  EXPECT_SAME_IMAGE(scaled(-2), grid<Tev32s>({{4, 8}}));
  EXPECT_SAME_IMAGE(scaled(1), grid<Tev32s>({{1, 1}}));
  EXPECT_SAME_IMAGE(scaled(2), grid<Tev32s>({{0, 1}}));
  EXPECT_SAME_IMAGE(scaled(31), grid<Tev32s>({{0, 0}}));
  EXPECT_SAME_IMAGE(scaled(INT_MAX), grid<Tev32s>({{0, 0}}));
  EXPECT_SAME_IMAGE(scaled(-29), grid<Tev32s>({{1 << 29, static_cast<Tev32s>(std::sqrt(4.5L) * (1 << 29) + 0.5L)}}));
  EXPECT_SAME_IMAGE(scaled(-31), grid<Tev32s>({{INT_MIN, INT_MIN}}));
  EXPECT_SAME_IMAGE(scaled(INT_MIN), grid<Tev32s>({{INT_MIN, INT_MIN}}));
}

TEST(RectStdDevExample, FlatPictureStaysZeroAtEveryScale) {
  const auto src = grid<Tev8u>({{9, 9, 9}, {9, 9, 9}});
  Image<Tev32s> sum(4, 3), sqr(4, 3), d(2, 1);
  ASSERT_EQ(teviSqrIntegral_8u32s_C1R(src.data(), src.step(), sum.data(), sum.step(), sqr.data(), sqr.step(),
                                      src.size(), 0, 0),
            tevStatusOk);
  for (const int factor : {INT_MIN, -31, -2, 0, 2, INT_MAX}) {
    ASSERT_EQ(teviRectStdDev_32s_C1RSfs(sum.data(), sum.step(), sqr.data(), sqr.step(), d.data(), d.step(), d.size(),
                                        {0, 0, 2, 2}, factor),
              tevStatusOk);
    EXPECT_SAME_IMAGE(d, grid<Tev32s>({{0, 0}}));
  }
}

TEST(RectStdDevExample, TiltedWindowSeesThePixelsOfItsDiamond) {
  // A 1 x 1 tilted rectangle covers two pixels, side by side.
  const auto src = grid<Tev8u>({{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 3, 5, 5}, {0, 0, 0, 0}});
  Image<Tev32s> sum(6, 7);
  Image<Tev64f> sqr(6, 7);
  ASSERT_EQ(teviTiltedSqrIntegral_8u32s64f_C1R(src.data(), src.step(), sum.data(), sum.step(), sqr.data(), sqr.step(),
                                               src.size(), 0, 0),
            tevStatusOk);
  Image<Tev32f> d(1, 1);
  const auto at = [&](int row, int column) {
    EXPECT_EQ(teviTiltedRectStdDev_32s32f_C1R(sum.data() + row * 6 + column, sum.step(), sqr.data() + row * 6 + column,
                                              sqr.step(), d.data(), d.step(), d.size(), {0, 0, 1, 1}),
              tevStatusOk);
    return d.at(0, 0);
  };
  EXPECT_EQ(at(3, 2), 1.0F);  // pixels 3 and 5
  EXPECT_EQ(at(3, 3), 0.0F);  // pixels 5 and 5
}

TYPED_TEST(RectStdDev, EqualsTheDefinitionOnRandomTables) {
  Random random;
  for (int trial = 0; trial < 150; ++trial) {
    const TevSize roi = {random.between(1, 40), random.between(1, 6)};
    const auto scene = randomScene<TypeParam>(random, roi, trial % 2 == 0);
    auto d = random.image<typename TypeParam::D>(roi.width, roi.height);
    const int scale = random.between(-12, 6);
    ASSERT_EQ(scene.call(d, scale), tevStatusOk);
    ASSERT_SAME_IMAGE(d, scene.expected(scale));
  }
}

TYPED_TEST(RectStdDev, TakesNanAndInfinityForNoDeviationUnlessTheSquaresAreInfinite) {
  if constexpr (std::is_floating_point_v<typename TypeParam::Sqr>) {
    constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    Random random(1);
    auto scene = randomScene<TypeParam>(random, {30, 5}, true);
    for (int i = 0; i < 12; ++i) {
      scene.sqr.set(random.between(0, scene.sqr.width() - 1), random.between(0, scene.sqr.height() - 1),
                    i % 3 == 0   ? nan
                    : i % 3 == 1 ? inf
                                 : -inf);
      if constexpr (std::is_floating_point_v<typename TypeParam::T>)
        scene.sum.set(random.between(0, scene.sum.width() - 1), random.between(0, scene.sum.height() - 1),
                      static_cast<float>(i % 2 ? nan : inf));
    }
    Image<Tev32f> d(30, 5);
    ASSERT_EQ(scene.call(d, 0), tevStatusOk);
    EXPECT_SAME_IMAGE(d, scene.expected(0));
  }
}

TYPED_TEST(RectStdDev, IsTheSameWithAnyNumberOfThreads) {
  Random random(2);
  for (const TevSize roi : {TevSize{64, 31}, TevSize{64, 32}, TevSize{64, 33}, TevSize{3000, 2}, TevSize{211, 97}}) {
    const auto scene = randomScene<TypeParam>(random, roi, false);
    const auto expected = scene.expected(0);
    for (const int threads : kit::threadCounts) {
      const kit::Threads setting(threads);
      Image<typename TypeParam::D> d(roi.width, roi.height);
      ASSERT_EQ(scene.call(d, 0), tevStatusOk);
      ASSERT_SAME_IMAGE(d, expected);
    }
  }
}

TEST(RectStdDevWorker, CoversItsWholeRegion) {
  Random random(3);
  const auto scene = randomScene<Member<Tev32f, Tev64f, Tev32f, false>>(random, {70, 50}, false);
  Image<Tev32f> d(70, 50);
  EXPECT_EQ(ownRectStdDev_32f_C1R_PX(scene.sum.data(), scene.sum.step(), scene.sqr.data(), scene.sqr.step(), d.data(),
                                     d.step(), scene.roi, scene.rect),
            tevStatusOk);
  EXPECT_SAME_IMAGE(d, scene.expected(0));
}

TYPED_TEST(RectStdDev, OfAFlatPictureIsZero) {
  if constexpr (!TypeParam::Shape::value && std::is_same_v<typename TypeParam::T, Tev32s>) {
    Image<Tev8u> src(40, 20);
    src.fill(201);
    Image<Tev32s> sum(41, 21);
    Image<typename TypeParam::Sqr> sqr(41, 21);
    Image<typename TypeParam::D> d(30, 10);
    if constexpr (std::is_same_v<typename TypeParam::Sqr, Tev64f>)
      teviSqrIntegral_8u32s64f_C1R(src.data(), src.step(), sum.data(), sum.step(), sqr.data(), sqr.step(), src.size(),
                                   0, 0);
    else
      teviSqrIntegral_8u32s_C1R(src.data(), src.step(), sum.data(), sum.step(), sqr.data(), sqr.step(), src.size(), 0,
                                0);
    ASSERT_EQ(
        run(Upright{}, sum.data(), sum.step(), sqr.data(), sqr.step(), d.data(), d.step(), d.size(), {1, 2, 7, 3}, 0),
        tevStatusOk);
    EXPECT_SAME_IMAGE(d, Image<typename TypeParam::D>(30, 10).fill(0));
  }
}

TYPED_TEST(RectStdDev, ChecksPointersSizeStepsAlignmentAndLastTheRectangle) {
  using T = typename TypeParam::T;
  using Sqr = typename TypeParam::Sqr;
  using D = typename TypeParam::D;
  constexpr bool tilted = TypeParam::Shape::value;
  constexpr TevRect rect = {1, 2, 3, 4};
  constexpr int reach = 8 + 1 + 3 + (tilted ? 2 + 4 - 1 : 0);
  constexpr int ss = reach * sizeof(T), qs = reach * sizeof(Sqr), ds = 8 * sizeof(D);
  Image<T> sum(reach + 12, 16);
  Image<Sqr> sqr(reach + 12, 16);
  sum.fill(0);
  sqr.fill(0);
  const T* const s = sum.data() + 8;
  const Sqr* const q = sqr.data() + 8;
  Image<D> d(8, 2, 2 * sizeof(D));
  const TevSize roi = {8, 2};
  const auto call = [&](const T* src, int srcStep, const Sqr* sqr1, int sqrStep, D* dst, int dstStep, TevSize size,
                        TevRect r) {
    return run(typename TypeParam::Shape{}, src, srcStep, sqr1, sqrStep, dst, dstStep, size, r, 0);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, ss, q, qs, d.data(), ds, {0, 2}, rect), d);
  EXPECT_FAILS(tevStatusNullPtr, call(s, ss, nullptr, qs, d.data(), ds, roi, rect), d);
  EXPECT_FAILS(tevStatusNullPtr, call(s, ss, q, qs, nullptr, ds, roi, rect), d);
  EXPECT_FAILS(tevStatusBadSize, call(s, 0, q, qs, d.data(), ds, {0, 2}, rect), d);
  EXPECT_FAILS(tevStatusBadSize, call(s, 0, q, qs, d.data(), ds, {8, 0}, rect), d);
  EXPECT_FAILS(tevStatusBadStep, call(s, ss - 1, q, qs, d.data(), ds, roi, rect), d);
  EXPECT_FAILS(tevStatusBadStep, call(s, ss + 1, q, qs - 1, d.data(), ds, roi, rect), d);
  EXPECT_FAILS(tevStatusBadStep, call(s, ss + 1, q, qs, d.data(), ds - 1, roi, rect), d);
  EXPECT_FAILS(tevStatusStepNotAligned, call(s, ss + 1, q, qs, d.data(), ds, roi, rect), d);
  EXPECT_FAILS(tevStatusStepNotAligned, call(s, ss, q, qs + int{sizeof(Sqr)} / 2, d.data(), ds, roi, rect), d);
  EXPECT_FAILS(tevStatusStepNotAligned, call(s, ss, q, qs, d.data(), ds + 2, roi, rect), d);
  EXPECT_FAILS(tevStatusBadSize, call(s, ss, q, qs, d.data(), ds, roi, {-1, 2, 3, 4}), d);
  EXPECT_FAILS(tevStatusBadSize, call(s, ss, q, qs, d.data(), ds, roi, {1, -1, 3, 4}), d);
  EXPECT_FAILS(tevStatusBadSize, call(s, ss, q, qs, d.data(), ds, roi, {1, 2, 0, 4}), d);
  EXPECT_FAILS(tevStatusBadSize, call(s, ss, q, qs, d.data(), ds, roi, {1, 2, 3, 0}), d);
  // A rectangle is looked at behind the steps, and a giant one does not wrap their check.
  EXPECT_FAILS(tevStatusBadStep, call(s, 8 * int{sizeof(T)} - 1, q, qs, d.data(), ds, roi, {0, 2, 0, 1}), d);
  EXPECT_FAILS(tevStatusStepNotAligned, call(s, ss + 2, q, qs, d.data(), ds, roi, {1, 2, 0, 4}), d);
  EXPECT_FAILS(tevStatusBadStep, call(s, ss, q, qs, d.data(), ds, roi, {INT_MAX, 2, INT_MAX, 4}), d);
  EXPECT_EQ(call(s, ss, q, qs, d.data(), ds, roi, rect), tevStatusOk);
}
