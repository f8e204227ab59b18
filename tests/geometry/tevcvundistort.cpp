#include <array>
#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/geometry.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using Extended = long double;
constexpr float quietNan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();

struct Lens {
  float fx, fy, cx, cy, k1, k2, p1 = 0, p2 = 0;
};

// One member of the warp.
template <class T, int c>
struct Member {
  using Element = T;
  static constexpr int channels = c;
  using Call = TevStatus (*)(const T*, int, T*, int, TevSize, float, float, float, float, float, float, Tev8u*);
};
struct M8uC1 : Member<Tev8u, 1> {
  static constexpr Call call = teviUndistortRadial_8u_C1R;
};
struct M16uC1 : Member<Tev16u, 1> {
  static constexpr Call call = teviUndistortRadial_16u_C1R;
};
struct M32fC1 : Member<Tev32f, 1> {
  static constexpr Call call = teviUndistortRadial_32f_C1R;
};
struct M8uC3 : Member<Tev8u, 3> {
  static constexpr Call call = teviUndistortRadial_8u_C3R;
};
struct M16uC3 : Member<Tev16u, 3> {
  static constexpr Call call = teviUndistortRadial_16u_C3R;
};
struct M32fC3 : Member<Tev32f, 3> {
  static constexpr Call call = teviUndistortRadial_32f_C3R;
};

template <class M>
using Picture = Image<typename M::Element, M::channels>;

template <class M>
TevStatus undistort(const Picture<M>& src, const Picture<M>& dst, const Lens& l, Tev8u* buffer) {
  return M::call(src.data(), src.step(), dst.data(), dst.step(), dst.size(), l.fx, l.fy, l.cx, l.cy, l.k1, l.k2,
                 buffer);
}

int bufferSize(TevSize roi) {
  int size = -1;
  EXPECT_EQ(teviUndistortGetSize(roi, &size), tevStatusOk);
  return size;
}

// A float where the values of the column stand in a table, extended where they do not.
Extended kept(Extended value, bool table) { return table ? static_cast<float>(value) : value; }

std::array<Extended, 2> radialPosition(const Lens& l, int x, int y, bool table) {
  const Extended u = Extended(x) - l.cx, v = Extended(y) - l.cy, k1 = l.k1, k2 = l.k2;
  const Extended a = u * u * (1 / (Extended(l.fx) * l.fx)), b = v * v / (Extended(l.fy) * l.fy);
  const Extended ta = kept(a, table), tk = kept(a * (k2 * a + k1), table), tu = kept(u, table);
  const Extended D = ta * (2 * k2 * b) + (tk + b * (k1 + k2 * b));
  return {x + tu * D, y + v * D};
}

std::array<Extended, 2> tangentialPosition(const Lens& l, int x, int y, bool table) {
  const Extended u = Extended(x) - l.cx, v = Extended(y) - l.cy;
  const Extended xn = 1 / Extended(l.fx) * u, yn = v / l.fy;
  const Extended tx = kept(xn, table), tx2 = kept(xn * xn, table), tu = kept(u, table);
  const Extended r2 = tx2 + yn * yn;
  const Extended D = tx * 2 * l.p2 + yn * 2 * l.p1 + (l.k2 * r2 + l.k1) * r2;
  return {Extended(l.fx) * l.p2 * r2 + x + tu * D, r2 * l.fy * l.p1 + y + v * D};
}

template <class M>
Picture<M> undistortByDefinition(const Picture<M>& src, const Picture<M>& before, const Lens& l, bool table) {
  using T = typename M::Element;
  Picture<M> d = before.clone();
  for (int y = 0; y < d.height(); ++y)
    for (int x = 0; x < d.width(); ++x) {
      const auto [sx, sy] = radialPosition(l, x, y, table);
      if (!(sx >= 0 && sy >= 0 && sx < d.width() - 1 && sy < d.height() - 1)) continue;
      const int ix = static_cast<int>(sx), iy = static_cast<int>(sy);
      const Extended fx = sx - ix, fy = sy - iy;
      for (int c = 0; c < M::channels; ++c) {
        const Extended sum = fx * fy * src.at(ix + 1, iy + 1, c) + fy * (1 - fx) * src.at(ix + 1, iy, c) +
                             (1 - fx) * (1 - fy) * src.at(ix, iy, c) + fx * (1 - fy) * src.at(ix, iy + 1, c);
        if constexpr (std::is_floating_point_v<T>)
          d.set(x * M::channels + c, y, static_cast<T>(sum));
        else
          d.set(x * M::channels + c, y, static_cast<T>(sum + 0.5L));
      }
    }
  return d;
}

Lens anyLens(Random& random, int width, int height) {
  const float size = static_cast<float>(std::max(width, height));
  const float strength = random.oneIn(5) ? 20.0F : 0.5F;
  Lens l = {size * (0.6F + std::fabs(random.real(1))),
            size * (0.6F + std::fabs(random.real(1))),
            static_cast<float>(width) / 2 + random.real(9),
            static_cast<float>(height) / 2 + random.real(9),
            random.real(strength),
            random.real(strength)};
  if (random.oneIn(4)) l.cx = std::round(l.cx), l.cy = std::round(l.cy);  // whole positions along a column and a row
  if (random.oneIn(6)) l.fx = -l.fx;
  if (random.oneIn(6)) l.k1 = 0;
  if (random.oneIn(4)) l.k2 = 0;
  return l;
}

template <class T>
T pixel(Random& random) {
  if (random.oneIn(3)) return std::is_integral_v<T> ? std::numeric_limits<T>::max() : static_cast<T>(-1);
  return random.value<T>();
}

template <class M>
class UndistortRadial : public testing::Test {};
using Members = testing::Types<M8uC1, M16uC1, M32fC1, M8uC3, M16uC3, M32fC3>;
TYPED_TEST_SUITE(UndistortRadial, Members);

}  // namespace

TYPED_TEST(UndistortRadial, EqualsTheDefinitionWithAndWithoutATable) {
  using M = TypeParam;
  using T = typename M::Element;
  Random random;
  for (int trial = 0; trial < 60; ++trial) {
    const int width = random.between(1, random.oneIn(5) ? 300 : 40), height = random.between(1, 30);
    const auto src = random.image<T, M::channels>(width, height, [&] { return pixel<T>(random); });
    const auto before = random.image<T, M::channels>(width, height);
    const Lens lens = anyLens(random, width, height);
    auto d = before.clone();
    ASSERT_EQ(undistort<M>(src, d, lens, nullptr), tevStatusOk);
    ASSERT_SAME_IMAGE(d, undistortByDefinition<M>(src, before, lens, false)) << lens.k1 << ' ' << lens.k2;
    const Buffer buffer(bufferSize(src.size()), random.between(0, 35));
    d = before.clone();
    ASSERT_EQ(undistort<M>(src, d, lens, buffer.data()), tevStatusOk);
    ASSERT_SAME_IMAGE(d, undistortByDefinition<M>(src, before, lens, true)) << lens.k1 << ' ' << lens.k2;
  }
}

TYPED_TEST(UndistortRadial, LeavesRowPaddingAlone) {
  using M = TypeParam;
  Random random(1);
  const auto src = random.image<typename M::Element, M::channels>(30, 20);
  Picture<M> d(30, 20, 8 * int{sizeof(typename M::Element)});
  auto expected = d.bytes();
  ASSERT_EQ(undistort<M>(src, d, {40, 40, 15, 10, 0.1F, 0}, nullptr), tevStatusOk);
  const auto bytes = d.bytes();
  const int row = 30 * M::channels * int{sizeof(typename M::Element)};
  for (int y = 0; y < 19; ++y)
    for (int i = row; i < d.step(); ++i) {
      const auto at = static_cast<size_t>(y) * static_cast<size_t>(d.step()) + static_cast<size_t>(i);
      ASSERT_EQ(bytes[at], expected[at]);
    }
}

TYPED_TEST(UndistortRadial, WithoutDistortionCopiesAllButTheLastColumnAndRow) {
  using M = TypeParam;
  Random random(2);
  for (const TevSize size : {TevSize{7, 5}, TevSize{140, 3}, TevSize{128, 2}, TevSize{129, 2}}) {
    const auto src = random.image<typename M::Element, M::channels>(size.width, size.height);
    const auto before = random.image<typename M::Element, M::channels>(size.width, size.height);
    auto d = before.clone();
    ASSERT_EQ(undistort<M>(src, d, {3, -4, 2.5F, 1.25F, 0, 0}, nullptr), tevStatusOk);
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x)
        for (int c = 0; c < M::channels; ++c)
          ASSERT_EQ(d.at(x, y, c), (x < size.width - 1 && y < size.height - 1 ? src : before).at(x, y, c));
  }
}

TYPED_TEST(UndistortRadial, ImagesOnePixelWideOrHighStayUntouched) {
  using M = TypeParam;
  Random random(3);
  for (const TevSize size : {TevSize{1, 1}, TevSize{1, 9}, TevSize{9, 1}}) {
    const auto src = random.image<typename M::Element, M::channels>(size.width, size.height);
    auto d = random.image<typename M::Element, M::channels>(size.width, size.height);
    const auto before = d.bytes();
    ASSERT_EQ(undistort<M>(src, d, {5, 5, 0, 0, -0.1F, 0}, nullptr), tevStatusOk);
    EXPECT_EQ(d.bytes(), before);
  }
}

TYPED_TEST(UndistortRadial, CamerasBeyondReasonFollowTheDefinitionToo) {
  using M = TypeParam;
  Random random(4);
  const auto src = random.image<typename M::Element, M::channels>(20, 6);
  const auto before = random.image<typename M::Element, M::channels>(20, 6);
  const Lens lenses[] = {
      {1e-30F, 1, 3, 3, 1, 1},     {1, 1e-30F, 3, 3, 1, 0},      {inf, inf, 3, 3, 0.1F, 0.1F},
      {1e30F, -1e30F, 4, 2, 1, 1}, {5, 5, quietNan, 2, 0.1F, 0}, {5, 5, 4, -inf, 0.1F, 0},
      {5, 5, 4, 2, quietNan, 0},   {5, 5, 4, 2, 0, inf},         {1e-40F, 1e-40F, 4, 2, 3e38F, 3e38F},
      {5, 5, 1e-30F, 2, 0.01F, 0}, {5, 5, 4, 2, 1e-30F, 0},      {5, 5, 4, 2, -1e-12F, 1e-40F},
      {5, 5, 3e9F, 2, 1e-20F, 0},  {1e30F, 1e30F, 4, 2, 1, 0},   {5, 5, 4, 2, 1e-40F, -1e-45F}};
  for (const Lens& lens : lenses)
    for (const bool table : {false, true}) {
      const Buffer buffer(bufferSize(src.size()));
      auto d = before.clone();
      ASSERT_EQ(undistort<M>(src, d, lens, table ? buffer.data() : nullptr), tevStatusOk);
      ASSERT_SAME_IMAGE(d, undistortByDefinition<M>(src, before, lens, table))
          << "lens " << &lens - lenses << " table " << table;
    }
}

TYPED_TEST(UndistortRadial, ChecksPointersSizeStepsAlignmentAndFocalLengths) {
  using M = TypeParam;
  using T = typename M::Element;
  constexpr int size = sizeof(T), row = 8 * M::channels * size;
  Picture<M> s(8, 4, 2 * size), d(8, 4, 2 * size);
  s.fill(0);
  const int step = s.step();
  const T* const noSource = nullptr;
  T* const noDestination = nullptr;
  const auto call = [&](const T* a, int as, T* b, int bs, TevSize roi, float fx, float fy) {
    return M::call(a, as, b, bs, roi, fx, fy, 1, 1, 0.1F, 0, nullptr);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(noSource, 0, d.data(), step, {0, 4}, 0, 1), d);
  EXPECT_FAILS(tevStatusNullPtr, call(s.data(), step, noDestination, step, {8, 4}, 1, 1), d);
  EXPECT_FAILS(tevStatusBadSize, call(s.data(), 0, d.data(), step, {0, 4}, 1, 1), d);
  EXPECT_FAILS(tevStatusBadSize, call(s.data(), step, d.data(), step, {8, 0}, 1, 1), d);
  EXPECT_FAILS(tevStatusBadStep, call(s.data(), row - 1, d.data(), step, {8, 4}, 0, 1), d);
  EXPECT_FAILS(tevStatusBadStep, call(s.data(), step, d.data(), row - 1, {8, 4}, 1, 1), d);
  EXPECT_FAILS(tevStatusBadStep, call(s.data(), step, d.data(), step, {1 << 30, 4}, 1, 1), d);
  if (size > 1) {
    EXPECT_FAILS(tevStatusBadStep, call(s.data(), row + 1, d.data(), row - 1, {8, 4}, 1, 1), d);
    EXPECT_FAILS(tevStatusStepNotAligned, call(s.data(), row + 1, d.data(), step, {8, 4}, 0, 1), d);
    EXPECT_FAILS(tevStatusStepNotAligned, call(s.data(), step, d.data(), row + 1, {8, 4}, 1, 1), d);
  }
  for (const float f : {0.0F, -0.0F, quietNan}) {
    EXPECT_FAILS(tevStatusBadArg, call(s.data(), step, d.data(), step, {8, 4}, f, 1), d);
    EXPECT_FAILS(tevStatusBadArg, call(s.data(), step, d.data(), step, {8, 4}, 1, f), d);
  }
  EXPECT_EQ(call(s.data(), row, d.data(), row, {8, 4}, -1, 1), tevStatusOk);
}

TEST(UndistortRadialExample, RightPixelTakesTheVerticalFractionAndThePixelBelowTheHorizontalOne) {
  // (1, 1) comes from (1.25, 1.5): u = 0.5, v = 1 and D = k1 * (0.25 + 1) = 0.5.
  auto src = grid<Tev32f>({{0, 0, 0, 0}, {0, 0, 100, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}});
  Image<Tev32f> d(4, 4);
  d.fill(-1);
  ASSERT_EQ(teviUndistortRadial_32f_C1R(src.data(), src.step(), d.data(), d.step(), d.size(), 1, 1, 0.5F, 0, 0.4F, 0,
                                        nullptr),
            tevStatusOk);
  EXPECT_NEAR(d.at(1, 1), 100 * 0.5 * (1 - 0.25), 1e-4);  // the plain rule would give 100 * 0.25 * 0.5
  src.set(2, 1, 0);
  src.set(1, 2, 100);
  ASSERT_EQ(teviUndistortRadial_32f_C1R(src.data(), src.step(), d.data(), d.step(), d.size(), 1, 1, 0.5F, 0, 0.4F, 0,
                                        nullptr),
            tevStatusOk);
  EXPECT_NEAR(d.at(1, 1), 100 * 0.25 * (1 - 0.5), 1e-4);
}

TEST(UndistortRadialExample, FloatsCarryNanInfinitiesAndNegativeZeros) {
  Random random(5);
  for (int trial = 0; trial < 40; ++trial) {
    const auto src = random.image<Tev32f>(60, 20, [&] {
      const float specials[] = {quietNan, inf, -inf, 0.0F, 1e-45F, 3e38F};
      return random.oneIn(30) ? specials[random.between(0, 5)] : random.oneIn(2) ? -0.0F : random.real(1);
    });
    Image<Tev32f> d(60, 20);
    Lens lens = anyLens(random, 60, 20);
    if (trial % 4 == 0) lens.k1 = lens.k2 = 0;
    const auto before = d.clone();
    ASSERT_EQ(undistort<M32fC1>(src, d, lens, nullptr), tevStatusOk);
    ASSERT_SAME_IMAGE(d, undistortByDefinition<M32fC1>(src, before, lens, false));
  }
}

TEST(UndistortRadialExample, TableAndFormulaDifferByNoMoreThanOne) {
  Random random(6);
  const auto src = random.image<Tev8u>(200, 100);
  Image<Tev8u> with(200, 100), without(200, 100);
  with.fill(0), without.fill(0);
  const Lens lens = {180.3F, 178.9F, 101.2F, 49.1F, -0.2F, 0.05F};
  const Buffer buffer(bufferSize(src.size()));
  ASSERT_EQ(undistort<M8uC1>(src, with, lens, buffer.data()), tevStatusOk);
  ASSERT_EQ(undistort<M8uC1>(src, without, lens, nullptr), tevStatusOk);
  for (int y = 0; y < 100; ++y)
    for (int x = 0; x < 200; ++x) ASSERT_LE(std::abs(with.at(x, y) - without.at(x, y)), 1);
}

TEST(UndistortGetSize, IsTwiceTheTableOfWholeQuadsOfColumns) {
  for (const auto& [width, size] : {std::pair{1, 128}, {4, 128}, {5, 224}, {1920, 46112}, {80000000, 1920000032}})
    EXPECT_EQ(bufferSize({width, 3}), size);
}

TEST(UndistortGetSize, ChecksThePointerThenTheSize) {
  int size = 77;
  EXPECT_FAILS(tevStatusNullPtr, teviUndistortGetSize({0, 4}, nullptr), size);
  EXPECT_FAILS(tevStatusBadSize, teviUndistortGetSize({0, 4}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviUndistortGetSize({4, -1}, &size), size);
}

namespace {

TevStatus createMaps(const Image<Tev32f>& x, const Image<Tev32f>& y, const Lens& l, Tev8u* buffer) {
  return teviCreateMapCameraUndistort_32f_C1R(x.data(), x.step(), y.data(), y.step(), x.size(), l.fx, l.fy, l.cx, l.cy,
                                              l.k1, l.k2, l.p1, l.p2, buffer);
}

void expectMaps(const Lens& lens, int width, int height, bool radial, int misalignment) {
  for (const bool table : {false, true}) {
    Image<Tev32f> x(width, height, 8, 3), y(width, height, 4), ex(width, height), ey(width, height);
    const Buffer buffer(bufferSize(x.size()), misalignment);
    ASSERT_EQ(createMaps(x, y, lens, table ? buffer.data() : nullptr), tevStatusOk);
    for (int v = 0; v < height; ++v)
      for (int u = 0; u < width; ++u) {
        const auto at = radial ? radialPosition(lens, u, v, table) : tangentialPosition(lens, u, v, table);
        ex.set(u, v, static_cast<float>(at[0]));
        ey.set(u, v, static_cast<float>(at[1]));
      }
    ASSERT_SAME_IMAGE(x, ex);
    ASSERT_SAME_IMAGE(y, ey);
  }
}

}  // namespace

TEST(CreateMapCameraUndistort, EqualsTheDefinitionWithAndWithoutTangentialTerms) {
  Random random(7);
  for (int trial = 0; trial < 60; ++trial) {
    const int width = random.between(1, random.oneIn(3) ? 300 : 30), height = random.between(1, 12);
    Lens lens = anyLens(random, width, height);
    expectMaps(lens, width, height, true, random.between(0, 33));
    lens.p1 = random.oneIn(3) ? 0 : random.real(0.1F);
    lens.p2 = lens.p1 == 0 ? 0.01F : random.real(0.1F);
    expectMaps(lens, width, height, false, random.between(0, 33));
  }
}

TEST(CreateMapCameraUndistort, CoefficientsThatAreZeroOrNanMakeARadialModel) {
  const Lens lens = {30, 31, 9, 7, -0.2F, 0.1F};
  for (const float p1 : {0.0F, -0.0F, quietNan})
    for (const float p2 : {0.0F, quietNan}) {
      Lens l = lens;
      l.p1 = p1, l.p2 = p2;
      expectMaps(l, 20, 15, true, 0);
    }
}

TEST(CreateMapCameraUndistort, OneNanAmongTheCoefficientsSpreads) {
  const Lens lens = {30, 31, 9, 7, -0.2F, 0.1F, quietNan, 0.01F};
  Image<Tev32f> x(5, 5), y(5, 5);
  ASSERT_EQ(createMaps(x, y, lens, nullptr), tevStatusOk);
  EXPECT_TRUE(std::isnan(x.at(0, 0)));
  EXPECT_TRUE(std::isnan(y.at(0, 0)));
}

TEST(CreateMapCameraUndistort, CamerasBeyondReasonFollowTheDefinitionToo) {
  for (const float p : {0.0F, 0.1F})
    for (const Lens& lens :
         {Lens{1e-30F, 1, 3, 3, 1, 1, p, p}, Lens{inf, -inf, 3, 3, 0.1F, 0.1F, p, p},
          Lens{5, 5, quietNan, 2, 0.1F, 0, p, p}, Lens{5, 5, 4, 2, inf, 0, p, p}, Lens{5, 5, 4, 2, 3e38F, -3e38F, p, p},
          Lens{1e-40F, 1e-40F, 4, 2, 3e38F, 3e38F, p, p}, Lens{5, 5, 0, 0, 1e-30F, 0, p, p}})
      expectMaps(lens, 9, 5, p == 0, 0);
}

TEST(CreateMapCameraUndistort, WithoutTangentialTermsGivesThePositionsThatTheWarpTakes) {
  // A ramp sampled by the crossed rule: where the fractions are equal the rule is the plain one, and shows its
  // position.
  const Lens lens = {20, 20, 8, 8, -0.1F, 0.02F};
  Image<Tev32f> ramp(17, 17), warped(17, 17), x(17, 17), y(17, 17);
  for (int v = 0; v < 17; ++v)
    for (int u = 0; u < 17; ++u) ramp.set(u, v, static_cast<float>(u + v));
  warped.fill(-1);
  ASSERT_EQ(undistort<M32fC1>(ramp, warped, lens, nullptr), tevStatusOk);
  ASSERT_EQ(createMaps(x, y, lens, nullptr), tevStatusOk);
  for (int i = 1; i < 16; ++i) EXPECT_NEAR(warped.at(i, i), x.at(i, i) + y.at(i, i), 1e-5);
}

TEST(CreateMapCameraUndistort, ChecksPointersSizeStepsAlignmentAndFocalLengths) {
  Image<Tev32f> x(8, 4, 8), y(8, 4, 8);
  const int step = x.step();
  const auto call = [&](Tev32f* a, int as, Tev32f* b, int bs, TevSize roi, float fx, float fy) {
    return teviCreateMapCameraUndistort_32f_C1R(a, as, b, bs, roi, fx, fy, 1, 1, 0.1F, 0, 0, 0.1F, nullptr);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, y.data(), step, {0, 4}, 0, 1), x, y);
  EXPECT_FAILS(tevStatusNullPtr, call(x.data(), step, nullptr, step, {8, 4}, 1, 1), x, y);
  EXPECT_FAILS(tevStatusBadSize, call(x.data(), 0, y.data(), step, {0, 4}, 1, 1), x, y);
  EXPECT_FAILS(tevStatusBadSize, call(x.data(), step, y.data(), step, {8, -4}, 1, 1), x, y);
  EXPECT_FAILS(tevStatusBadStep, call(x.data(), 31, y.data(), step, {8, 4}, 0, 1), x, y);
  EXPECT_FAILS(tevStatusBadStep, call(x.data(), 33, y.data(), 31, {8, 4}, 1, 1), x, y);
  EXPECT_FAILS(tevStatusStepNotAligned, call(x.data(), 33, y.data(), step, {8, 4}, 0, 1), x, y);
  EXPECT_FAILS(tevStatusStepNotAligned, call(x.data(), step, y.data(), 34, {8, 4}, 1, 1), x, y);
  for (const float f : {0.0F, quietNan}) {
    EXPECT_FAILS(tevStatusBadArg, call(x.data(), step, y.data(), step, {8, 4}, f, 1), x, y);
    EXPECT_FAILS(tevStatusBadArg, call(x.data(), step, y.data(), step, {8, 4}, 1, f), x, y);
  }
  EXPECT_EQ(call(x.data(), 32, y.data(), 32, {8, 4}, -1, 1), tevStatusOk);
}
