#include <limits>

#include "features/corner.h"

using namespace corner_test;
using kit::Buffer;
using kit::Image;
using kit::Random;

namespace {

TevStatus query(const Image<Tev8u>& s, const Setting& k, int* size) {
  return teviEigenValsVecsGetBufferSize_8u32f_C1R(s.size(), k.aperture, k.window, size);
}
TevStatus query(const Image<Tev32f>& s, const Setting& k, int* size) {
  return teviEigenValsVecsGetBufferSize_32f_C1R(s.size(), k.aperture, k.window, size);
}
TevStatus measure(const Tev8u* s, int ss, Tev32f* d, int ds, TevSize roi, const Setting& k, Tev8u* buffer) {
  return teviEigenValsVecs_8u32f_C1R(s, ss, d, ds, roi, k.kernel, k.aperture, k.window, buffer);
}
TevStatus measure(const Tev32f* s, int ss, Tev32f* d, int ds, TevSize roi, const Setting& k, Tev8u* buffer) {
  return teviEigenValsVecs_32f_C1R(s, ss, d, ds, roi, k.kernel, k.aperture, k.window, buffer);
}

// Six results of one pixel, and which of the three ways it went.
enum Way { none, axes, turned };
Way oraclePixel(long double aPlane, long double bPlane, long double cPlane, const Setting& k, Tev32f out[6]) {
  const long double s = scaleOf(k), a = aPlane * s, b = bPlane * s, c = cPlane * s;
  const long double t = 0.01 * std::max(a, c);
  const auto d = static_cast<Tev32f>(a * c - b * b);
  const long double r = std::sqrt(4 * b * b + (a - c) * (a - c));
  const auto l1 = static_cast<Tev32f>((a + c + r) * 0.5L);
  const long double l2 = (a + c - r) * 0.5L;
  std::fill_n(out, 6, 0.0F);
  if (std::min(a, c) < t || d < t) return none;
  out[0] = l1;
  out[1] = static_cast<Tev32f>(l2);
  if (std::fabs(b) < t) {
    out[2] = out[5] = 1;
    return axes;
  }
  const long double vx = b * (k.kernel == tevCornerKernelSobel ? -1 : 1), y1 = l1 - a, y2 = l2 - a;
  const long double n1 = std::max(std::sqrt(y1 * y1 + vx * vx), 1.1920929e-7L),
                    n2 = std::max(std::sqrt(y2 * y2 + vx * vx), 1.1920929e-7L);
  out[2] = static_cast<Tev32f>(vx / n1);
  out[3] = static_cast<Tev32f>(y1 / n1);
  out[4] = static_cast<Tev32f>(vx / n2);
  out[5] = static_cast<Tev32f>(y2 / n2);
  return turned;
}

template <class T>
void expectMeasure(Random& random, const Image<T>& src, const Setting& k, int (&ways)[3]) {
  int size = 0;
  ASSERT_EQ(query(src, k, &size), tevStatusOk);
  const Buffer buffer(size, random.between(0, 63));
  Image<Tev32f, 6> dst(src.width(), src.height(), 4 * random.between(0, 2), random.between(0, 5)),
      expected(src.width(), src.height());
  ASSERT_EQ(measure(src.data(), src.step(), dst.data(), dst.step(), src.size(), k, buffer.data()), tevStatusOk);
  const auto p = averagedProducts(src, k);
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x) {
      Tev32f six[6];
      ++ways[oraclePixel(p.a.at(x, y), p.b.at(x, y), p.c.at(x, y), k, six)];
      for (int i = 0; i < 6; ++i) expected.set(6 * x + i, y, six[i]);
    }
  ASSERT_SAME_IMAGE(dst, expected) << "kernel " << k.kernel << " aperture " << k.aperture << " window " << k.window;
}

template <class T>
class EigenValsVecs : public testing::Test {};
using Types = testing::Types<Tev8u, Tev32f>;
TYPED_TEST_SUITE(EigenValsVecs, Types);

}  // namespace

TYPED_TEST(EigenValsVecs, EqualTheClosedFormOverDirectWindowSums) {
  Random random;
  int ways[3] = {};
  for (int trial = 0; trial < 30; ++trial)
    for (const Setting& k : settings)
      expectMeasure(random, picture<TypeParam>(random, random.between(1, 90), random.between(1, 12)), k, ways);
  EXPECT_GT(ways[none], 100);
  EXPECT_GT(ways[axes], 100);
  EXPECT_GT(ways[turned], 100);
}

TYPED_TEST(EigenValsVecs, AreTheSameAtEveryThreadCountOnBothSidesOfTheFiltersGates) {
  Random random;
  int ways[3] = {};
  const auto src = picture<TypeParam>(random, 260, 300);
  for (int count : kit::threadCounts) {
    kit::Threads threads(count);
    expectMeasure(random, src, settings[count % 6], ways);
  }
}

TEST(EigenValsVecsFloat, ExtremeMagnitudesAndNan) {
  Random random;
  int ways[3] = {};
  for (int trial = 0; trial < 60; ++trial) {
    const int exponent = random.between(-70, 60);
    auto src = random.image<Tev32f>(random.between(3, 70), random.between(3, 6),
                                    [&] { return std::ldexp(random.real(1), exponent); });
    if (trial % 4 == 0) src.set(1, 1, std::numeric_limits<float>::quiet_NaN());
    if (trial % 4 == 1) src.set(1, 1, std::numeric_limits<float>::infinity());
    expectMeasure(random, src, settings[trial % 6], ways);
  }
}

TEST(EigenValsVecsFloat, PixelsOfAllKindsSideBySide) {
  // Flat ground with equal and with very unequal eigenvalues, steps along the axes, weak noise, and what is no number.
  Random random;
  int ways[3] = {};
  for (int trial = 0; trial < 60; ++trial) {
    Image<Tev32f> src(300, 6);
    for (int y = 0; y < src.height(); ++y)
      for (int x = 0; x < src.width(); ++x) {
        const int kind = (x / 20 + trial) % 5;
        src.set(x, y,
                kind == 0   ? 7.0F
                : kind == 1 ? static_cast<Tev32f>(x * 9)
                : kind == 2 ? static_cast<Tev32f>((x + y) % 7 * 30)
                : kind == 3 ? static_cast<Tev32f>(x % 10 < 5 ? 0 : 3000 + random.between(0, 90))
                            : static_cast<Tev32f>(random.real(200)));
      }
    const Tev32f strange[] = {std::numeric_limits<Tev32f>::quiet_NaN(), std::numeric_limits<Tev32f>::infinity(), 1e30F,
                              1e-30F, -0.0F};
    for (int i = 0; i < 3; ++i) src.set(random.between(0, 299), random.between(0, 5), strange[random.between(0, 4)]);
    expectMeasure(random, src, settings[trial % 6], ways);
  }
  EXPECT_GT(ways[none], 1000);
  EXPECT_GT(ways[axes], 100);
  EXPECT_GT(ways[turned], 1000);
}

TEST(EigenValsVecsBytes, RoundAsDefinedInPicturesOfManyPixels) {
  // So many that some results come as close to a rounding tie as the faster path lets pass.
  Random random;
  int ways[3] = {};
  expectMeasure(random, random.image<Tev8u>(641, 480, [&] { return random.between(0, 255); }), settings[0], ways);
}

TYPED_TEST(EigenValsVecs, OfAFlatImageAreZeros) {
  for (const Setting& k : {settings[0], settings[4]}) {
    Image<TypeParam> src(12, 7);
    src.fill(9);
    int size = 0;
    ASSERT_EQ(query(src, k, &size), tevStatusOk);
    const Buffer buffer(size);
    Image<Tev32f, 6> dst(12, 7);
    ASSERT_EQ(measure(src.data(), src.step(), dst.data(), dst.step(), src.size(), k, buffer.data()), tevStatusOk);
    for (int y = 0; y < 7; ++y)
      for (int i = 0; i < 72; ++i) ASSERT_EQ(dst.get(i, y), 0.0F);
  }
}

TYPED_TEST(EigenValsVecs, AlongAStraightEdgeAreZeros) {
  Image<TypeParam> src(16, 16);
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 16; ++x) src.set(x, y, x < 8 ? 0 : 200);
  int size = 0;
  ASSERT_EQ(query(src, settings[0], &size), tevStatusOk);
  const Buffer buffer(size);
  Image<Tev32f, 6> dst(16, 16);
  ASSERT_EQ(measure(src.data(), src.step(), dst.data(), dst.step(), src.size(), settings[0], buffer.data()),
            tevStatusOk);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(dst.get(6 * 8 + i, 8), 0.0F);
}

TYPED_TEST(EigenValsVecs, ChecksInTheirOrder) {
  using T = TypeParam;
  constexpr int element = sizeof(T);
  Image<T> src(8, 4, element);
  Image<Tev32f, 6> dst(8, 4, 4);
  src.fill(1);
  int size = 0;
  ASSERT_EQ(query(src, settings[3], &size), tevStatusOk);
  const Buffer memory(size);
  Tev8u* const b = memory.data();
  const int s = src.step(), d = dst.step(), least = element == 1 ? 8 * 24 : 8 * 4;
  const TevSize roi = {8, 4};
  const Setting badKernel = {2, 4, 4};
  EXPECT_FAILS(tevStatusNullPtr, measure(static_cast<T*>(nullptr), 0, dst.data(), 0, {0, 0}, badKernel, b), dst);
  EXPECT_FAILS(tevStatusNullPtr, measure(src.data(), s, nullptr, d, roi, settings[0], b), dst);
  EXPECT_FAILS(tevStatusNullPtr, measure(src.data(), s, dst.data(), d, roi, settings[0], nullptr), dst);
  EXPECT_FAILS(tevStatusBadSize, measure(src.data(), 0, dst.data(), 0, {0, 4}, badKernel, b), dst);
  EXPECT_FAILS(tevStatusBadStep, measure(src.data(), 8 * element - 1, dst.data(), d, roi, badKernel, b), dst);
  EXPECT_FAILS(tevStatusBadStep, measure(src.data(), s, dst.data(), least - 1, roi, badKernel, b), dst);
  EXPECT_FAILS(tevStatusStepNotAligned, measure(src.data(), s, dst.data(), least + 1, roi, badKernel, b), dst);
  if (element > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, measure(src.data(), s + 1, dst.data(), d, roi, badKernel, b), dst);
  }
  EXPECT_FAILS(tevStatusBadArg, measure(src.data(), s, dst.data(), d, roi, badKernel, b), dst);
  EXPECT_FAILS(tevStatusBadSize, measure(src.data(), s, dst.data(), d, roi, {0, 4, 4}, b), dst);
  EXPECT_FAILS(tevStatusBadSize, measure(src.data(), s, dst.data(), d, roi, {1, 5, 3}, b), dst);
  EXPECT_FAILS(tevStatusBadSize, measure(src.data(), s, dst.data(), d, roi, {0, 3, 4}, b), dst);
}

TEST(EigenValsVecsFloat, AcceptsAnOutputStepOfFourBytesAPixel) {
  // One row, so that the short step is never walked.
  Image<Tev32f> src(8, 1);
  src.fill(1);
  int size = 0;
  ASSERT_EQ(query(src, settings[0], &size), tevStatusOk);
  const Buffer buffer(size);
  Image<Tev32f, 6> dst(8, 1);
  EXPECT_EQ(measure(src.data(), src.step(), dst.data(), 32, src.size(), settings[0], buffer.data()), tevStatusOk);
}
