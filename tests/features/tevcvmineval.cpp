#include "features/corner.h"

using namespace corner_test;
using kit::Buffer;
using kit::Image;
using kit::Random;

namespace {

TevStatus query(const Image<Tev8u>& s, const Setting& k, int* size) {
  return teviMinEigenValGetBufferSize_8u32f_C1R(s.size(), k.aperture, k.window, size);
}
TevStatus query(const Image<Tev32f>& s, const Setting& k, int* size) {
  return teviMinEigenValGetBufferSize_32f_C1R(s.size(), k.aperture, k.window, size);
}
TevStatus measure(const Tev8u* s, int ss, Tev32f* d, int ds, TevSize roi, const Setting& k, Tev8u* buffer) {
  return teviMinEigenVal_8u32f_C1R(s, ss, d, ds, roi, k.kernel, k.aperture, k.window, buffer);
}
TevStatus measure(const Tev32f* s, int ss, Tev32f* d, int ds, TevSize roi, const Setting& k, Tev8u* buffer) {
  return teviMinEigenVal_32f_C1R(s, ss, d, ds, roi, k.kernel, k.aperture, k.window, buffer);
}

template <class T>
Image<Tev32f> oracle(const Image<T>& src, const Setting& k) {
  const auto p = averagedProducts(src, k);
  Image<Tev32f> result(src.width(), src.height());
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x) {
      const long double a = p.a.at(x, y), b = p.b.at(x, y), c = p.c.at(x, y);
      result.set(x, y, static_cast<Tev32f>(((c + a) - std::sqrt((a - c) * (a - c) + 4 * b * b)) * scaleOf(k) * 0.5L));
    }
  return result;
}

template <class T>
void expectMeasure(Random& random, const Image<T>& src, const Setting& k) {
  int size = 0;
  ASSERT_EQ(query(src, k, &size), tevStatusOk);
  const Buffer buffer(size, random.between(0, 63));
  auto dst = random.image<Tev32f>(src.width(), src.height());
  ASSERT_EQ(measure(src.data(), src.step(), dst.data(), dst.step(), src.size(), k, buffer.data()), tevStatusOk);
  ASSERT_SAME_IMAGE(dst, oracle(src, k)) << "kernel " << k.kernel << " aperture " << k.aperture << " window "
                                         << k.window;
}

template <class T>
class MinEigenVal : public testing::Test {};
using Types = testing::Types<Tev8u, Tev32f>;
TYPED_TEST_SUITE(MinEigenVal, Types);

}  // namespace

TYPED_TEST(MinEigenVal, EqualsDirectWindowSumsOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 25; ++trial)
    for (const Setting& k : settings)
      expectMeasure(random, picture<TypeParam>(random, random.between(1, 90), random.between(1, 12)), k);
}

TYPED_TEST(MinEigenVal, IsTheSameAtEveryThreadCountOnBothSidesOfTheFiltersGates) {
  Random random;
  const auto src = picture<TypeParam>(random, 260, 300);
  for (const Setting& k : {settings[0], settings[3], settings[5]})
    for (int count : kit::threadCounts) {
      kit::Threads threads(count);
      expectMeasure(random, src, k);
    }
}

TYPED_TEST(MinEigenVal, IsLargeAtACornerAndNoneAlongAnEdge) {
  Image<TypeParam> src(20, 20);
  for (int y = 0; y < 20; ++y)
    for (int x = 0; x < 20; ++x) src.set(x, y, x >= 10 && y >= 10 ? 255 : 0);
  int size = 0;
  ASSERT_EQ(query(src, settings[0], &size), tevStatusOk);
  const Buffer buffer(size);
  Image<Tev32f> dst(20, 20);
  ASSERT_EQ(measure(src.data(), src.step(), dst.data(), dst.step(), src.size(), settings[0], buffer.data()),
            tevStatusOk);
  EXPECT_GT(dst.at(10, 10), 1.0F);
  EXPECT_EQ(dst.at(10, 17), 0.0F);
  EXPECT_EQ(dst.at(2, 2), 0.0F);
}

TYPED_TEST(MinEigenVal, ChecksInTheirOrder) {
  using T = TypeParam;
  constexpr int element = sizeof(T);
  Image<T> src(8, 4, element);
  Image<Tev32f> dst(8, 4, 4);
  src.fill(1);
  int size = 0;
  ASSERT_EQ(query(src, settings[3], &size), tevStatusOk);
  const Buffer memory(size);
  Tev8u* const b = memory.data();
  const int s = src.step(), d = dst.step();
  const TevSize roi = {8, 4};
  const Setting ok = settings[0], badKernel = {2, 4, 4}, badAperture = {0, 4, 4}, badWindow = {0, 3, 4};
  EXPECT_FAILS(tevStatusNullPtr, measure(static_cast<T*>(nullptr), 0, dst.data(), 0, {0, 0}, badKernel, b), dst);
  EXPECT_FAILS(tevStatusNullPtr, measure(src.data(), s, nullptr, d, roi, ok, b), dst);
  EXPECT_FAILS(tevStatusNullPtr, measure(src.data(), s, dst.data(), d, roi, ok, nullptr), dst);
  EXPECT_FAILS(tevStatusBadSize, measure(src.data(), 0, dst.data(), 0, {0, 4}, badKernel, b), dst);
  EXPECT_FAILS(tevStatusBadSize, measure(src.data(), 0, dst.data(), 0, {8, 0}, badKernel, b), dst);
  EXPECT_FAILS(tevStatusBadStep, measure(src.data(), 8 * element - 1, dst.data(), d, roi, badKernel, b), dst);
  EXPECT_FAILS(tevStatusBadStep, measure(src.data(), s, dst.data(), 31, roi, badKernel, b), dst);
  EXPECT_FAILS(tevStatusStepNotAligned, measure(src.data(), s, dst.data(), 33, roi, badKernel, b), dst);
  if (element > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, measure(src.data(), s + 1, dst.data(), d, roi, badKernel, b), dst);
  }
  EXPECT_FAILS(tevStatusBadArg, measure(src.data(), s, dst.data(), d, roi, badKernel, b), dst);
  EXPECT_FAILS(tevStatusBadArg, measure(src.data(), s, dst.data(), d, roi, {-1, 3, 3}, b), dst);
  EXPECT_FAILS(tevStatusBadSize, measure(src.data(), s, dst.data(), d, roi, badAperture, b), dst);
  EXPECT_FAILS(tevStatusBadSize, measure(src.data(), s, dst.data(), d, roi, {1, 5, 3}, b), dst);
  EXPECT_FAILS(tevStatusBadSize, measure(src.data(), s, dst.data(), d, roi, badWindow, b), dst);
  EXPECT_EQ(measure(src.data(), s, dst.data(), d, roi, ok, b), tevStatusOk);
}
