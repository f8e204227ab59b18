#include <limits>
#include <type_traits>

#include "kit/kit.h"
#include "tevcv/integral.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

// One overload for each member: upright and tilted, without and with a table of squares.
TevStatus run(std::false_type, const Tev8u* s, int ss, Tev32s* d, int ds, TevSize roi, Tev32s v) {
  return teviIntegral_8u32s_C1R(s, ss, d, ds, roi, v);
}
TevStatus run(std::false_type, const Tev8u* s, int ss, Tev32f* d, int ds, TevSize roi, Tev32f v) {
  return teviIntegral_8u32f_C1R(s, ss, d, ds, roi, v);
}
TevStatus run(std::true_type, const Tev8u* s, int ss, Tev32s* d, int ds, TevSize roi, Tev32s v) {
  return teviTiltedIntegral_8u32s_C1R(s, ss, d, ds, roi, v);
}
TevStatus run(std::true_type, const Tev8u* s, int ss, Tev32f* d, int ds, TevSize roi, Tev32f v) {
  return teviTiltedIntegral_8u32f_C1R(s, ss, d, ds, roi, v);
}
TevStatus run(std::false_type, const Tev8u* s, int ss, Tev32s* d, int ds, Tev32s* q, int qs, TevSize roi, Tev32s v,
              Tev32s vq) {
  return teviSqrIntegral_8u32s_C1R(s, ss, d, ds, q, qs, roi, v, vq);
}
TevStatus run(std::false_type, const Tev8u* s, int ss, Tev32s* d, int ds, Tev64f* q, int qs, TevSize roi, Tev32s v,
              Tev64f vq) {
  return teviSqrIntegral_8u32s64f_C1R(s, ss, d, ds, q, qs, roi, v, vq);
}
TevStatus run(std::false_type, const Tev8u* s, int ss, Tev32f* d, int ds, Tev64f* q, int qs, TevSize roi, Tev32f v,
              Tev64f vq) {
  return teviSqrIntegral_8u32f64f_C1R(s, ss, d, ds, q, qs, roi, v, vq);
}
TevStatus run(std::true_type, const Tev8u* s, int ss, Tev32s* d, int ds, Tev32s* q, int qs, TevSize roi, Tev32s v,
              Tev32s vq) {
  return teviTiltedSqrIntegral_8u32s_C1R(s, ss, d, ds, q, qs, roi, v, vq);
}
TevStatus run(std::true_type, const Tev8u* s, int ss, Tev32s* d, int ds, Tev64f* q, int qs, TevSize roi, Tev32s v,
              Tev64f vq) {
  return teviTiltedSqrIntegral_8u32s64f_C1R(s, ss, d, ds, q, qs, roi, v, vq);
}
TevStatus run(std::true_type, const Tev8u* s, int ss, Tev32f* d, int ds, Tev64f* q, int qs, TevSize roi, Tev32f v,
              Tev64f vq) {
  return teviTiltedSqrIntegral_8u32f64f_C1R(s, ss, d, ds, q, qs, roi, v, vq);
}

// A sum as a table element: wrapped, or rounded once.
Tev32s stored(std::int64_t sum, Tev32s) { return static_cast<Tev32s>(static_cast<std::uint32_t>(sum)); }
Tev32f stored(long double sum, Tev32f) { return static_cast<Tev32f>(sum); }
Tev64f stored(long double sum, Tev64f) { return static_cast<Tev64f>(sum); }
template <class T>
using Wide = std::conditional_t<std::is_same_v<T, Tev32s>, std::int64_t, long double>;

int power(Tev8u pixel, int exponent) { return exponent == 1 ? pixel : pixel * pixel; }

template <class T>
Image<T> uprightTable(const Image<Tev8u>& src, T value, int exponent) {
  Image<T> t(src.width() + 1, src.height() + 1);
  t.fill(value);
  for (int y = 0; y < src.height(); ++y) {
    std::int64_t row = 0;
    for (int x = 0; x < src.width(); ++x) {
      row += power(src.at(x, y), exponent);
      t.set(x + 1, y + 1, stored(static_cast<Wide<T>>(t.at(x + 1, y)) + static_cast<Wide<T>>(row), T{}));
    }
  }
  return t;
}

template <class T>
Image<T> tiltedTable(const Image<Tev8u>& src, T value, int exponent) {
  using W = Wide<T>;
  const int width = src.width();
  Image<T> t(width + 2, src.height() + 2);
  t.fill(value);
  for (int j = 0; j < src.height(); ++j) {
    const auto s = [&](int x) { return static_cast<W>(power(src.at(x, j), exponent)); };
    const auto r0 = [&](int x) { return static_cast<W>(t.at(x, j)); };
    const auto r1 = [&](int x) { return static_cast<W>(t.at(x, j + 1)); };
    t.set(0, j + 2, t.at(1, j + 1));
    for (int x = 1; x < width; ++x) t.set(x, j + 2, stored(s(x - 1) + s(x) + r1(x - 1) + r1(x + 1) - r0(x), T{}));
    t.set(width, j + 2, stored(s(width - 1) + r1(width - 1) + r1(width + 1) - r0(width), T{}));
    t.set(width + 1, j + 2, t.at(width, j + 1));
  }
  return t;
}

template <bool tilted, class T>
Image<T> expectedTable(const Image<Tev8u>& src, T value, int exponent) {
  return tilted ? tiltedTable(src, value, exponent) : uprightTable(src, value, exponent);
}

// A member pair: with the table of squares, and without where there is such a member (squares of Tev32s and of floats).
template <class Sum, class Square, bool isTilted>
struct Member {
  using T = Sum;
  using Sqr = Square;
  static constexpr bool tilted = isTilted;
  static constexpr int border = isTilted ? 2 : 1;
};

template <class M>
class IntegralImages : public testing::Test {};
using Members =
    testing::Types<Member<Tev32s, Tev32s, false>, Member<Tev32s, Tev64f, false>, Member<Tev32f, Tev64f, false>,
                   Member<Tev32s, Tev32s, true>, Member<Tev32s, Tev64f, true>, Member<Tev32f, Tev64f, true>>;
TYPED_TEST_SUITE(IntegralImages, Members);

template <class M>
void expectTables(const Image<Tev8u>& src, typename M::T value, typename M::Sqr valueSqr, int padding, int tail) {
  using T = typename M::T;
  using Sqr = typename M::Sqr;
  constexpr auto tilt = std::bool_constant<M::tilted>{};
  const int w = src.width() + M::border, h = src.height() + M::border;
  Image<T> alone(w, h, padding * int{sizeof(T)}, tail), sum(w, h, padding * int{sizeof(T)}, tail);
  Image<Sqr> sqr(w, h, padding * int{sizeof(Sqr)}, tail);
  ASSERT_EQ(run(tilt, src.data(), src.step(), alone.data(), alone.step(), src.size(), value), tevStatusOk);
  ASSERT_EQ(
      run(tilt, src.data(), src.step(), sum.data(), sum.step(), sqr.data(), sqr.step(), src.size(), value, valueSqr),
      tevStatusOk);
  const auto expected = expectedTable<M::tilted>(src, value, 1);
  ASSERT_SAME_IMAGE(alone, expected);
  ASSERT_SAME_IMAGE(sum, expected);
  ASSERT_SAME_IMAGE(sqr, (expectedTable<M::tilted>(src, valueSqr, 2)));
}

}  // namespace

TEST(IntegralExample, SumsWhatLiesAboveAndToTheLeft) {
  const auto src = grid<Tev8u>({{1, 2, 3}, {4, 5, 6}});
  Image<Tev32s> sum(4, 3), sqr(4, 3);
  EXPECT_EQ(teviSqrIntegral_8u32s_C1R(src.data(), src.step(), sum.data(), sum.step(), sqr.data(), sqr.step(),
                                      src.size(), 0, 100),
            tevStatusOk);
  EXPECT_SAME_IMAGE(sum, grid<Tev32s>({{0, 0, 0, 0}, {0, 1, 3, 6}, {0, 5, 12, 21}}));
  EXPECT_SAME_IMAGE(sqr, grid<Tev32s>({{100, 100, 100, 100}, {100, 101, 105, 114}, {100, 117, 146, 191}}));
}

TEST(IntegralExample, OnePixelOfFiveOnSeven) {
  const auto src = grid<Tev8u>({{5}});
  Image<Tev32s> sum(2, 2);
  EXPECT_EQ(teviIntegral_8u32s_C1R(src.data(), src.step(), sum.data(), sum.step(), src.size(), 7), tevStatusOk);
  EXPECT_SAME_IMAGE(sum, grid<Tev32s>({{7, 7}, {7, 12}}));
}

TEST(IntegralExample, TiltedTableHoldsTheConeAboveAPoint) {
  const auto src = grid<Tev8u>({{0, 1, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}});
  Image<Tev32s> sum(6, 5);
  EXPECT_EQ(teviTiltedIntegral_8u32s_C1R(src.data(), src.step(), sum.data(), sum.step(), src.size(), 0), tevStatusOk);
  EXPECT_SAME_IMAGE(
      sum, grid<Tev32s>(
               {{0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}, {0, 1, 1, 0, 0, 0}, {1, 1, 1, 1, 0, 0}, {1, 1, 1, 1, 1, 0}}));
}

TEST(IntegralExample, TiltedTableOfWidthOneRunsWithoutInnerColumns) {
  const auto src = grid<Tev8u>({{3}, {5}});
  Image<Tev32s> sum(3, 4);
  EXPECT_EQ(teviTiltedIntegral_8u32s_C1R(src.data(), src.step(), sum.data(), sum.step(), src.size(), 10), tevStatusOk);
  EXPECT_SAME_IMAGE(sum, grid<Tev32s>({{10, 10, 10}, {10, 10, 10}, {10, 13, 10}, {13, 15, 13}}));
}

TYPED_TEST(IntegralImages, EqualTheDefinitionOnRandomRegions) {
  using T = typename TypeParam::T;
  using Sqr = typename TypeParam::Sqr;
  Random random;
  for (int trial = 0; trial < 150; ++trial) {
    const int width = trial < 20 ? trial % 5 + 1 : random.between(1, 100), height = random.between(1, 12);
    const auto src = random.image<Tev8u>(width, height);
    // Whole starts, starts with a fraction, and starts that leave no exact bits at all.
    const T value = trial % 3 == 0   ? T{0}
                    : trial % 3 == 1 ? static_cast<T>(random.between(-1000, 1000))
                                     : random.value<T>();
    const Sqr valueSqr = trial % 4 == 0   ? Sqr{0}
                         : trial % 4 == 1 ? static_cast<Sqr>(0.1)
                         : trial % 4 == 2 ? static_cast<Sqr>(random.between(-1000, 1000))
                                          : random.value<Sqr>();
    ASSERT_NO_FATAL_FAILURE(expectTables<TypeParam>(src, value, valueSqr, random.between(0, 3), random.between(0, 7)));
  }
}

TYPED_TEST(IntegralImages, EqualTheDefinitionOnWideRows) {
  Random random(1);
  for (const int width : {1023, 1024, 1025, 2049, 5000}) {
    const auto src = random.image<Tev8u>(width, 3, [&] { return random.between(200, 255); });
    ASSERT_NO_FATAL_FAILURE(expectTables<TypeParam>(src, 5, 6, 1, 3));
    ASSERT_NO_FATAL_FAILURE(expectTables<TypeParam>(src, static_cast<typename TypeParam::T>(0.3),
                                                    static_cast<typename TypeParam::Sqr>(0.3), 0, 0));
  }
}

// Rows go through vectors of sixteen pixels, several rows at a time, and what is left goes through them by itself.
TYPED_TEST(IntegralImages, EqualTheDefinitionAtEverySizeAroundTheirVectors) {
  Random random(3);
  for (int width = 1; width <= 34; ++width)
    for (int height = 1; height <= 9; ++height) {
      const auto src = random.image<Tev8u>(width, height);
      ASSERT_NO_FATAL_FAILURE(expectTables<TypeParam>(src, 3, 4, width % 2, height % 8));
    }
}

// A row of 33025 white pixels has the last sum of squares below 2^31, one of 65793 the last sum within 24 bits, and one
// of 66052 a sum of squares beyond 32 bits.
TYPED_TEST(IntegralImages, EqualTheDefinitionWhereTheSumsOfARowOutgrowTheirWords) {
  if constexpr (!TypeParam::tilted)
    for (const int width : {33025, 33026, 65793, 65794, 66052}) {
      Image<Tev8u> src(width, 5);
      src.fill(255);
      src.set(width / 2, 2, 254);
      ASSERT_NO_FATAL_FAILURE(expectTables<TypeParam>(src, 1, 2, 0, 0));
    }
}

TYPED_TEST(IntegralImages, OfBlackAreTheStartingValueEverywhere) {
  using T = typename TypeParam::T;
  using Sqr = typename TypeParam::Sqr;
  Image<Tev8u> src(19, 7);
  src.fill(0);
  Image<T> sum(19 + TypeParam::border, 7 + TypeParam::border);
  Image<Sqr> sqr(sum.width(), sum.height());
  ASSERT_EQ(run(std::bool_constant<TypeParam::tilted>{}, src.data(), src.step(), sum.data(), sum.step(), sqr.data(),
                sqr.step(), src.size(), T{-3}, Sqr{17}),
            tevStatusOk);
  EXPECT_SAME_IMAGE(sum, Image<T>(sum.width(), sum.height()).fill(-3));
  EXPECT_SAME_IMAGE(sqr, Image<Sqr>(sum.width(), sum.height()).fill(17));
}

TYPED_TEST(IntegralImages, StartFromInfinityNanAndHugeValues) {
  using T = typename TypeParam::T;
  using Sqr = typename TypeParam::Sqr;
  Random random(2);
  const auto src = random.image<Tev8u>(37, 9);
  constexpr double infinity = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  for (const double start : {infinity, nan, 0.5, -0.0, 1e7, 16777215.0, 3e9, 1e15, 9007199254740991.0,
                             4503599627370497.0, 1e16, 1e30, -1e-30}) {
    SCOPED_TRACE(start);
    const T value = std::is_integral_v<T> ? T{1} : static_cast<T>(start);
    const Sqr valueSqr = std::is_integral_v<Sqr> ? Sqr{1} : static_cast<Sqr>(start);
    ASSERT_NO_FATAL_FAILURE(expectTables<TypeParam>(src, value, valueSqr, 0, 0));
  }
}

TEST(Integral, WrapsOverALargeWhiteImageWithoutAStatus) {
  const int n = 4096;
  Image<Tev8u> src(n, n);
  src.fill(255);
  Image<Tev32s> sum(n + 1, n + 1);
  ASSERT_EQ(teviIntegral_8u32s_C1R(src.data(), src.step(), sum.data(), sum.step(), src.size(), 0), tevStatusOk);
  for (const int y : {1, 2055, 2057, 4095, 4096})
    for (const int x : {1, 4095, 4096})
      EXPECT_EQ(sum.at(x, y), static_cast<Tev32s>(static_cast<std::uint32_t>(std::int64_t{255} * x * y)));
  EXPECT_LT(sum.at(n, n), 0);
}

TEST(Integral, OfFloatsRoundsTheTableButNotTheSumAlongARow) {
  // 66000 white pixels a row: the row's sum passes 2^24, so a sum kept as a float would lose its low bits.
  Image<Tev8u> src(66000, 3);
  src.fill(255);
  src.set(7, 0, 254);
  Image<Tev32f> sum(66001, 4);
  ASSERT_EQ(teviIntegral_8u32f_C1R(src.data(), src.step(), sum.data(), sum.step(), src.size(), 0), tevStatusOk);
  EXPECT_SAME_IMAGE(sum, uprightTable<Tev32f>(src, 0, 1));
  EXPECT_EQ(sum.at(66000, 1), static_cast<float>(66000 * 255 - 1));
}

TEST(Integral, OfFloatsLosesLowBitsAbove24Bits) {
  const auto src = grid<Tev8u>({{1}, {1}, {1}});
  Image<Tev32f> sum(2, 4);
  ASSERT_EQ(teviIntegral_8u32f_C1R(src.data(), src.step(), sum.data(), sum.step(), src.size(), 16777216.0F),
            tevStatusOk);
  EXPECT_EQ(sum.at(1, 3), 16777216.0F);
}

TEST(Integral, OfSquaresIsAddedInExtendedPrecision) {
  // The exact sum lies just above the middle of two doubles. Extended precision rounds it to the middle, and the tie
  // goes to the even neighbour below; a single rounding would go above.
  const auto src = grid<Tev8u>({{255}});
  Image<Tev32s> sum(2, 2);
  Image<Tev64f> sqr(2, 2);
  ASSERT_EQ(teviSqrIntegral_8u32s64f_C1R(src.data(), src.step(), sum.data(), sum.step(), sqr.data(), sqr.step(),
                                         src.size(), 0, 0x1p-38 + 0x1p-52),
            tevStatusOk);
  EXPECT_EQ(sqr.at(1, 1), 65025.0);
}

TYPED_TEST(IntegralImages, CheckPointersThenSizeThenStepsThenAlignment) {
  using T = typename TypeParam::T;
  using Sqr = typename TypeParam::Sqr;
  constexpr auto tilt = std::bool_constant<TypeParam::tilted>{};
  constexpr int b = TypeParam::border, row = (8 + b) * sizeof(T), sqrRow = (8 + b) * sizeof(Sqr);
  Image<Tev8u> src(8, 3);
  src.fill(1);
  Image<T> d(8 + b, 3 + b, 2 * sizeof(T));
  Image<Sqr> q(8 + b, 3 + b, 2 * sizeof(Sqr));
  const Tev8u* const s = src.data();
  const int ds = d.step(), qs = q.step();
  const TevSize roi = {8, 3};
  const auto one = [&](const Tev8u* src1, int srcStep, T* dst, int dstStep, TevSize size) {
    return run(tilt, src1, srcStep, dst, dstStep, size, T{0});
  };
  const auto two = [&](const Tev8u* src1, int srcStep, T* dst, int dstStep, Sqr* sqr, int sqrStep, TevSize size) {
    return run(tilt, src1, srcStep, dst, dstStep, sqr, sqrStep, size, T{0}, Sqr{0});
  };
  EXPECT_FAILS(tevStatusNullPtr, one(nullptr, 8, d.data(), ds, {0, 3}), d);
  EXPECT_FAILS(tevStatusNullPtr, one(s, 8, nullptr, ds, roi), d);
  EXPECT_FAILS(tevStatusBadSize, one(s, 7, d.data(), ds, {0, 3}), d);
  EXPECT_FAILS(tevStatusBadSize, one(s, 7, d.data(), ds, {8, 0}), d);
  EXPECT_FAILS(tevStatusBadSize, one(s, 7, d.data(), ds, {-1, 3}), d);
  EXPECT_FAILS(tevStatusBadStep, one(s, 7, d.data(), ds, roi), d);
  EXPECT_FAILS(tevStatusBadStep, one(s, 8, d.data(), row - 1, roi), d);
  EXPECT_FAILS(tevStatusBadStep, one(s, 7, d.data(), row + 2, roi), d);
  EXPECT_FAILS(tevStatusStepNotAligned, one(s, 8, d.data(), row + 2, roi), d);
  EXPECT_FAILS(tevStatusBadStep,
               one(s, std::numeric_limits<int>::max(), d.data(), ds, {std::numeric_limits<int>::max(), 3}), d);
  EXPECT_EQ(one(s, 8, d.data(), row, roi), tevStatusOk);

  EXPECT_FAILS(tevStatusNullPtr, two(nullptr, 8, d.data(), ds, q.data(), qs, {0, 3}), d, q);
  EXPECT_FAILS(tevStatusNullPtr, two(s, 8, nullptr, ds, q.data(), qs, roi), d, q);
  EXPECT_FAILS(tevStatusNullPtr, two(s, 8, d.data(), ds, nullptr, qs, roi), d, q);
  EXPECT_FAILS(tevStatusBadSize, two(s, 7, d.data(), ds, q.data(), qs, {0, 3}), d, q);
  EXPECT_FAILS(tevStatusBadStep, two(s, 7, d.data(), ds, q.data(), qs, roi), d, q);
  EXPECT_FAILS(tevStatusBadStep, two(s, 8, d.data(), row - 1, q.data(), qs, roi), d, q);
  EXPECT_FAILS(tevStatusBadStep, two(s, 8, d.data(), row + 2, q.data(), sqrRow - 1, roi), d, q);
  EXPECT_FAILS(tevStatusStepNotAligned, two(s, 8, d.data(), row + 2, q.data(), qs, roi), d, q);
  EXPECT_FAILS(tevStatusStepNotAligned, two(s, 8, d.data(), ds, q.data(), sqrRow + int{sizeof(Sqr)} / 2, roi), d, q);
  EXPECT_EQ(two(s, 8, d.data(), row, q.data(), sqrRow, roi), tevStatusOk);
}
