#include <algorithm>
#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/geometry.h"
#include "tevcv_internal/geometry.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using Extended = long double;

// One member of the family: its types, its fixed-point bits (0 for floats) and its three functions.
template <class S, class D, int fixedBits, int innerFixedBits = fixedBits>
struct Member {
  using Source = S;
  using Destination = D;
  static constexpr int bits = fixedBits, innerBits = innerFixedBits;
  static constexpr bool scales = false, hasInner = true;
};
struct M8u : Member<Tev8u, Tev8u, 14, 15> {
  static TevStatus shift(const Tev8u* s, int ss, Tev8u* d, int ds, TevSize roi, float dx, float dy, int) {
    return teviCopySubpix_8u_C1R(s, ss, d, ds, roi, dx, dy);
  }
  static TevStatus rect(const Tev8u* s, int ss, TevSize sr, Tev8u* d, int ds, TevSize dr, float x, float y, TevPoint* a,
                        TevPoint* b, int) {
    return teviCopySubpixIntersect_8u_C1R(s, ss, sr, d, ds, dr, x, y, a, b);
  }
  static void inner(const Tev8u* s, int ss, TevSize sr, Tev8u* d, int ds, TevSize dr, float x, float y, TevPoint* a,
                    TevPoint* b, int) {
    ownGetRectSubpix_8u_C1R(s, ss, sr, d, ds, dr, x, y, a, b);
  }
};
struct M8u16u : Member<Tev8u, Tev16u, 14> {
  static constexpr bool scales = true;
  static TevStatus shift(const Tev8u* s, int ss, Tev16u* d, int ds, TevSize roi, float dx, float dy, int scale) {
    return teviCopySubpix_8u16u_C1R_Sfs(s, ss, d, ds, roi, dx, dy, scale);
  }
  static TevStatus rect(const Tev8u* s, int ss, TevSize sr, Tev16u* d, int ds, TevSize dr, float x, float y,
                        TevPoint* a, TevPoint* b, int scale) {
    return teviCopySubpixIntersect_8u16u_C1R_Sfs(s, ss, sr, d, ds, dr, x, y, a, b, scale);
  }
  static void inner(const Tev8u* s, int ss, TevSize sr, Tev16u* d, int ds, TevSize dr, float x, float y, TevPoint* a,
                    TevPoint* b, int scale) {
    ownGetRectSubpix_8u16u_C1R_Sfs(s, ss, sr, d, ds, dr, x, y, a, b, scale);
  }
};
struct M16u : Member<Tev16u, Tev16u, 15> {
  static TevStatus shift(const Tev16u* s, int ss, Tev16u* d, int ds, TevSize roi, float dx, float dy, int) {
    return teviCopySubpix_16u_C1R(s, ss, d, ds, roi, dx, dy);
  }
  static TevStatus rect(const Tev16u* s, int ss, TevSize sr, Tev16u* d, int ds, TevSize dr, float x, float y,
                        TevPoint* a, TevPoint* b, int) {
    return teviCopySubpixIntersect_16u_C1R(s, ss, sr, d, ds, dr, x, y, a, b);
  }
  static void inner(const Tev16u* s, int ss, TevSize sr, Tev16u* d, int ds, TevSize dr, float x, float y, TevPoint* a,
                    TevPoint* b, int) {
    ownGetRectSubpix_16u_C1R(s, ss, sr, d, ds, dr, x, y, a, b);
  }
};
struct M8u32f : Member<Tev8u, Tev32f, 0> {
  static constexpr bool hasInner = false;
  static TevStatus shift(const Tev8u* s, int ss, Tev32f* d, int ds, TevSize roi, float dx, float dy, int) {
    return teviCopySubpix_8u32f_C1R(s, ss, d, ds, roi, dx, dy);
  }
  static TevStatus rect(const Tev8u* s, int ss, TevSize sr, Tev32f* d, int ds, TevSize dr, float x, float y,
                        TevPoint* a, TevPoint* b, int) {
    return teviCopySubpixIntersect_8u32f_C1R(s, ss, sr, d, ds, dr, x, y, a, b);
  }
};
struct M16u32f : Member<Tev16u, Tev32f, 0> {
  static TevStatus shift(const Tev16u* s, int ss, Tev32f* d, int ds, TevSize roi, float dx, float dy, int) {
    return teviCopySubpix_16u32f_C1R(s, ss, d, ds, roi, dx, dy);
  }
  static TevStatus rect(const Tev16u* s, int ss, TevSize sr, Tev32f* d, int ds, TevSize dr, float x, float y,
                        TevPoint* a, TevPoint* b, int) {
    return teviCopySubpixIntersect_16u32f_C1R(s, ss, sr, d, ds, dr, x, y, a, b);
  }
  static void inner(const Tev16u* s, int ss, TevSize sr, Tev32f* d, int ds, TevSize dr, float x, float y, TevPoint* a,
                    TevPoint* b, int) {
    ownGetRectSubpix_16u32f_C1R(s, ss, sr, d, ds, dr, x, y, a, b);
  }
};
struct M32f : Member<Tev32f, Tev32f, 0> {
  static TevStatus shift(const Tev32f* s, int ss, Tev32f* d, int ds, TevSize roi, float dx, float dy, int) {
    return teviCopySubpix_32f_C1R(s, ss, d, ds, roi, dx, dy);
  }
  static TevStatus rect(const Tev32f* s, int ss, TevSize sr, Tev32f* d, int ds, TevSize dr, float x, float y,
                        TevPoint* a, TevPoint* b, int) {
    return teviCopySubpixIntersect_32f_C1R(s, ss, sr, d, ds, dr, x, y, a, b);
  }
  static void inner(const Tev32f* s, int ss, TevSize sr, Tev32f* d, int ds, TevSize dr, float x, float y, TevPoint* a,
                    TevPoint* b, int) {
    ownGetRectSubpix_32f_C1R(s, ss, sr, d, ds, dr, x, y, a, b);
  }
};

Extended fraction(float offset) {
  const Extended f = Extended{offset} - std::trunc(Extended{offset});
  return f < 0 ? f + 1 : f;
}

// The definition's weights and stores, in 64-bit integers.
template <class D>
struct Fixed {
  Fixed(int fixedBits, Extended fx, Extended fy, int scaleFactor, bool saturates16)
      : bits(fixedBits), scale(scaleFactor), saturates(saturates16) {
    const std::int64_t one = std::int64_t{1} << bits;
    wx = static_cast<Tev16u>(static_cast<int>(std::trunc(fx * one + 0.5L)));
    wy = static_cast<Tev16u>(static_cast<int>(std::trunc(fy * one + 0.5L)));
    ix = one - wx, iy = one - wy;
  }
  std::int64_t weight(std::int64_t a, std::int64_t b) const { return static_cast<Tev16u>((a * b + 16384) >> bits); }
  D store(std::int64_t sum) const {
    const unsigned shift = static_cast<unsigned>(scale + bits) % 32,
                   half = static_cast<unsigned>(scale + bits - 1) % 32;
    const std::int64_t value = ((sum + (std::int64_t{1} << half)) & 0xFFFFFFFF) >> shift;
    return static_cast<D>(saturates ? std::min<std::int64_t>(value, 65535) : value);
  }
  template <class S>
  D full(S p00, S p01, S p10, S p11) const {
    return store(weight(ix, iy) * p00 + weight(wx, iy) * p01 + weight(ix, wy) * p10 + weight(wx, wy) * p11);
  }
  template <class S>
  D across(S p0, S p1) const {
    return store(p1 * wx + p0 * ix);
  }
  template <class S>
  D down(S p, S q) const {
    return store(p * iy + q * wy);
  }
  template <class S>
  D flat(S p) const {
    return store(p * (wx + ix));
  }
  int bits, scale;
  bool saturates;
  std::int64_t wx, wy, ix, iy;
};
struct Float {
  Float(int, Extended x, Extended y, int, bool) : fx(x), fy(y), gx(1 - x), gy(1 - y) {}
  Tev32f full(Extended p00, Extended p01, Extended p10, Extended p11) const {
    const auto a = static_cast<Tev32f>(fx * gy);
    return static_cast<Tev32f>(p01 * a + p00 * gx * gy + p10 * gx * fy + p11 * fx * fy);
  }
  Tev32f across(Extended p0, Extended p1) const { return static_cast<Tev32f>(p1 * fx + p0 * gx); }
  Tev32f down(Extended p, Extended q) const { return static_cast<Tev32f>(p * gy + q * fy); }
  Tev32f flat(Extended p) const { return static_cast<Tev32f>(p * (fx + gx)); }
  Extended fx, fy, gx, gy;
};
template <class M>
using Mix = std::conditional_t<M::bits == 0, Float, Fixed<typename M::Destination>>;
template <class M>
constexpr bool saturates16 = std::is_same_v<M, M16u>;

template <class M>
Image<typename M::Destination> shiftByDefinition(const Image<typename M::Source>& src, TevSize roi, float dx, float dy,
                                                 int scale) {
  Image<typename M::Destination> d(roi.width, roi.height);
  if constexpr (M::bits != 0) {
    const Mix<M> mix(M::bits, fraction(dx), fraction(dy), scale, saturates16<M>);
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < roi.width; ++x)
        d.set(x, y, mix.full(src.at(x, y), src.at(x + 1, y), src.at(x, y + 1), src.at(x + 1, y + 1)));
  } else {
    Extended fx = fraction(dx);
    if (fx < 1e-6) fx = 1e-6;
    const Extended fy = fraction(dy), gx = 1 - fx, gy = 1 - fy;
    for (int y = 0; y < roi.height; ++y) {
      Extended left = src.at(0, y) * gx * gy + src.at(0, y + 1) * gx * fy;
      for (int x = 0; x < roi.width; ++x) {
        const Extended right = src.at(x + 1, y) * fx * gy + src.at(x + 1, y + 1) * fx * fy;
        d.set(x, y, static_cast<Tev32f>(left + right));
        left = right * (gx / fx);
      }
    }
  }
  return d;
}

struct Axis {
  int start, min, max;
  Extended f;
};
Axis axisOf(float center, int srcLength, int dstLength) {
  const Extended left = center - (dstLength - 1) * 0.5L;
  const int X = static_cast<int>(std::trunc(dstLength + left));
  int x0 = X - dstLength;
  Axis axis{0, 0, 0, left - x0};
  axis.min = std::min(std::max(-x0, 0), dstLength);
  axis.max = X - 1 > srcLength - 2 ? srcLength - X + dstLength - 2 : dstLength - 1;
  axis.start = std::max(x0, 0);
  if (x0 >= srcLength) axis.min = 0, axis.max = -1, axis.start = srcLength - 1;
  return axis;
}

// The whole rectangle in its bands, or with innerOnly the interpolated middle alone.
template <class M>
void rectByDefinition(const Image<typename M::Source>& src, Image<typename M::Destination>& d, float centerX,
                      float centerY, int scale, bool innerOnly) {
  const Axis ax = axisOf(centerX, src.width(), d.width()), ay = axisOf(centerY, src.height(), d.height());
  const Mix<M> mix(innerOnly ? M::innerBits : M::bits, ax.f, ay.f, scale, saturates16<M>);
  const int a = ax.min, b = ax.max;
  int row = ay.start;
  for (int y = 0; y < d.height(); ++y) {
    const bool above = y < ay.min, inside = !above && y <= ay.max;
    const auto p = [&](int x) { return src.at(std::max(ax.start + x, 0), row); };
    const auto q = [&](int x) { return src.at(ax.start + x, row + 1); };
    for (int x = 0; x < d.width(); ++x) {
      if (inside) {
        if (x >= a && x <= b)
          d.set(x, y, mix.full(p(x - a), p(x - a + 1), q(x - a), q(x - a + 1)));
        else if (!innerOnly)
          d.set(x, y, x < a ? mix.down(p(0), q(0)) : mix.down(p(b - a + 1), q(b - a + 1)));
      } else if (!innerOnly) {
        if (x < a)
          d.set(x, y, mix.flat(p(0)));
        else if (x <= b)
          d.set(x, y, mix.across(p(x - a), p(x - a + 1)));
        else
          d.set(x, y, mix.flat(above ? p(b - a) : p(b - a + 1)));
      }
    }
    if (inside) ++row;
  }
}

// Offsets and centres worth meeting often: whole, half, a hair beside a whole number, anything.
float position(Random& random, float low, float high) {
  const float value = low + (high - low) * static_cast<float>(random.between(0, 1 << 20)) / (1 << 20);
  switch (random.between(0, 4)) {
    case 0:
      return std::round(value);
    case 1:
      return std::round(value) + 0.5F;
    case 2:
      return std::nextafter(std::round(value), random.oneIn(2) ? 1e9F : -1e9F);
    default:
      return value;
  }
}

template <class T>
T pixel(Random& random) {
  if (random.oneIn(4)) return std::is_integral_v<T> ? std::numeric_limits<T>::max() : T{0};
  return random.value<T>();
}

template <class M>
class CopySubpix : public testing::Test {};
using Members = testing::Types<M8u, M8u16u, M16u, M8u32f, M16u32f, M32f>;
TYPED_TEST_SUITE(CopySubpix, Members);

}  // namespace

TYPED_TEST(CopySubpix, EqualsTheDefinitionOnRandomRegions) {
  using M = TypeParam;
  using S = typename M::Source;
  Random random;
  for (int trial = 0; trial < 150; ++trial) {
    const int width = random.between(1, random.oneIn(4) ? 200 : 20), height = random.between(1, 9);
    const auto src = random.image<S>(width + 1, height + 1, [&] { return pixel<S>(random); });
    Image<typename M::Destination> d(width, height, random.between(0, 2) * int{sizeof(typename M::Destination)},
                                     random.between(0, 7));
    const float dx = position(random, -3, 3), dy = position(random, -3, 3);
    const int scale = M::scales ? random.between(-8, 3) : 0;
    ASSERT_EQ(M::shift(src.data(), src.step(), d.data(), d.step(), d.size(), dx, dy, scale), tevStatusOk);
    ASSERT_SAME_IMAGE(d, shiftByDefinition<M>(src, d.size(), dx, dy, scale)) << dx << ' ' << dy << ' ' << scale;
  }
}

TYPED_TEST(CopySubpix, FillsRectanglesByTheDefinitionInsideAndOut) {
  using M = TypeParam;
  using S = typename M::Source;
  using D = typename M::Destination;
  Random random(1);
  for (int trial = 0; trial < 400; ++trial) {
    const int width = random.between(1, random.oneIn(4) ? 90 : 9), height = random.between(1, 9);
    const auto src = random.image<S>(width, height, [&] { return pixel<S>(random); });
    Image<D> d(random.between(1, random.oneIn(4) ? 90 : 15), random.between(1, 15),
               random.between(0, 2) * int{sizeof(D)}, random.between(0, 7));
    const float x = position(random, -20.0F, static_cast<float>(width) + 20),
                y = position(random, -20.0F, static_cast<float>(height) + 20);
    const int scale = M::scales ? random.between(-8, 3) : 0;
    TevPoint low, high;
    ASSERT_EQ(M::rect(src.data(), src.step(), src.size(), d.data(), d.step(), d.size(), x, y, &low, &high, scale),
              tevStatusOk);
    Image<D> expected(d.width(), d.height());
    rectByDefinition<M>(src, expected, x, y, scale, false);
    ASSERT_SAME_IMAGE(d, expected) << src.width() << 'x' << src.height() << " at " << x << ' ' << y << ' ' << scale;
    const Axis across = axisOf(x, src.width(), d.width()), down = axisOf(y, src.height(), d.height());
    EXPECT_EQ(low.x, across.min);
    EXPECT_EQ(low.y, down.min);
    EXPECT_EQ(high.x, across.max);
    EXPECT_EQ(high.y, down.max);
  }
}

TYPED_TEST(CopySubpix, WorkerWritesTheInnerPartAlone) {
  using M = TypeParam;
  if constexpr (M::hasInner) {
    using D = typename M::Destination;
    Random random(2);
    for (int trial = 0; trial < 200; ++trial) {
      const int width = random.between(1, 30), height = random.between(1, 9);
      const auto src = random.image<typename M::Source>(width, height);
      auto d = random.image<D>(random.between(1, 25), random.between(1, 12));
      auto expected = d.clone();
      const float x = position(random, -15.0F, static_cast<float>(width) + 15),
                  y = position(random, -8.0F, static_cast<float>(height) + 8);
      const int scale = M::scales ? -7 : 0;
      TevPoint low, high;
      M::inner(src.data(), src.step(), src.size(), d.data(), d.step(), d.size(), x, y, &low, &high, scale);
      rectByDefinition<M>(src, expected, x, y, scale, true);
      ASSERT_SAME_IMAGE(d, expected) << width << 'x' << height << " at " << x << ' ' << y;
      ASSERT_EQ(d.bytes(), expected.bytes());  // row padding too
      EXPECT_EQ(low.x, axisOf(x, width, d.width()).min);
      EXPECT_EQ(high.y, axisOf(y, height, d.height()).max);
    }
  }
}

TYPED_TEST(CopySubpix, ChecksPointersThenSizesThenStepsThenAlignment) {
  using M = TypeParam;
  using S = typename M::Source;
  using D = typename M::Destination;
  constexpr int size = sizeof(S), dstSize = sizeof(D);
  Image<S> s(9, 5, 2 * size);
  Image<D> d(8, 4, 2 * dstSize);
  s.fill(0);
  const int ss = s.step(), ds = d.step(), row = 8 * size, dstRow = 8 * dstSize;
  const TevSize roi = {8, 4};
  const S* const noSource = nullptr;
  D* const noDestination = nullptr;
  EXPECT_FAILS(tevStatusNullPtr, M::shift(noSource, 0, d.data(), ds, {0, 4}, 0, 0, 0), d);
  EXPECT_FAILS(tevStatusNullPtr, M::shift(s.data(), ss, noDestination, ds, roi, 0, 0, 0), d);
  EXPECT_FAILS(tevStatusBadSize, M::shift(s.data(), 0, d.data(), ds, {0, 4}, 0, 0, 0), d);
  EXPECT_FAILS(tevStatusBadSize, M::shift(s.data(), ss, d.data(), ds, {8, 0}, 0, 0, 0), d);
  EXPECT_FAILS(tevStatusBadStep, M::shift(s.data(), row - 1, d.data(), ds, roi, 0, 0, 0), d);
  EXPECT_FAILS(tevStatusBadStep, M::shift(s.data(), ss, d.data(), dstRow - 1, roi, 0, 0, 0), d);
  EXPECT_FAILS(tevStatusBadStep, M::shift(s.data(), ss, d.data(), ds, {1 << 30, 4}, 0, 0, 0), d);

  TevPoint a = {7, 7}, b = {7, 7};
  const TevSize full = {8, 4}, whole = {9, 5};
  EXPECT_FAILS(tevStatusNullPtr, M::rect(noSource, 0, {0, 0}, d.data(), 0, full, 1, 1, &a, &b, 0), d, a, b);
  EXPECT_FAILS(tevStatusNullPtr, M::rect(s.data(), ss, whole, noDestination, ds, full, 1, 1, &a, &b, 0), d, a, b);
  EXPECT_FAILS(tevStatusNullPtr, M::rect(s.data(), ss, whole, d.data(), ds, {0, 1}, 1, 1, nullptr, &b, 0), d, a, b);
  EXPECT_FAILS(tevStatusNullPtr, M::rect(s.data(), ss, whole, d.data(), ds, full, 1, 1, &a, nullptr, 0), d, a, b);
  EXPECT_FAILS(tevStatusBadSize, M::rect(s.data(), 0, {0, 5}, d.data(), ds, full, 1, 1, &a, &b, 0), d, a, b);
  EXPECT_FAILS(tevStatusBadSize, M::rect(s.data(), ss, {9, 0}, d.data(), ds, full, 1, 1, &a, &b, 0), d, a, b);
  EXPECT_FAILS(tevStatusBadSize, M::rect(s.data(), 0, whole, d.data(), ds, {0, 4}, 1, 1, &a, &b, 0), d, a, b);
  EXPECT_FAILS(tevStatusBadSize, M::rect(s.data(), ss, whole, d.data(), ds, {8, -1}, 1, 1, &a, &b, 0), d, a, b);
  EXPECT_FAILS(tevStatusBadStep, M::rect(s.data(), 9 * size - 1, whole, d.data(), ds, full, 1, 1, &a, &b, 0), d, a, b);
  EXPECT_FAILS(tevStatusBadStep, M::rect(s.data(), ss, whole, d.data(), dstRow - 1, full, 1, 1, &a, &b, 0), d, a, b);
  EXPECT_EQ(M::rect(s.data(), 9 * size, whole, d.data(), dstRow, full, 1, 1, &a, &b, 0), tevStatusOk);
  if (size > 1) {
    EXPECT_FAILS(tevStatusBadStep, M::shift(s.data(), row + 1, d.data(), dstRow - 1, roi, 0, 0, 0), d);
    EXPECT_FAILS(tevStatusStepNotAligned, M::shift(s.data(), row + 1, d.data(), ds, roi, 0, 0, 0), d);
    EXPECT_FAILS(tevStatusStepNotAligned, M::rect(s.data(), ss + 1, whole, d.data(), ds, full, 1, 1, &a, &b, 0), d, a);
  }
  if (dstSize > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, M::shift(s.data(), ss, d.data(), dstRow + 1, roi, 0, 0, 0), d);
    EXPECT_FAILS(tevStatusStepNotAligned, M::rect(s.data(), ss, whole, d.data(), ds + 1, full, 1, 1, &a, &b, 0), d, a);
  }
}

TEST(CopySubpixExample, InterpolatesBetweenFourPixels) {
  const auto src = grid<Tev8u>({{0, 100, 200}, {40, 140, 240}});
  Image<Tev8u> d(2, 1);
  ASSERT_EQ(teviCopySubpix_8u_C1R(src.data(), src.step(), d.data(), d.step(), d.size(), 0.5F, 0.25F), tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev8u>({{60, 160}}));
  Image<Tev16u> times128(2, 1);
  ASSERT_EQ(
      teviCopySubpix_8u16u_C1R_Sfs(src.data(), src.step(), times128.data(), times128.step(), d.size(), 0.5F, 0.25F, -7),
      tevStatusOk);
  EXPECT_SAME_IMAGE(times128, grid<Tev16u>({{7682, 20485}}));  // not 7680 and 20480: the weights add up to 16388
}

TEST(CopySubpixExample, WholeOffsetsReproduceBytes) {
  Random random(3);
  const auto src = random.image<Tev8u>(41, 8);
  for (const float offset : {0.0F, -0.0F, 1.0F, -7.0F, 123456.0F, 3e9F}) {
    Image<Tev8u> d(40, 7);
    ASSERT_EQ(teviCopySubpix_8u_C1R(src.data(), src.step(), d.data(), d.step(), d.size(), offset, offset), tevStatusOk);
    for (int y = 0; y < 7; ++y)
      for (int x = 0; x < 40; ++x) ASSERT_EQ(d.at(x, y), src.at(x, y));
  }
}

TEST(CopySubpixExample, WholePartsPlayNoRoleAndMinusAQuarterHasTheFractionThreeQuarters) {
  const auto src = grid<Tev8u>({{0, 100}, {0, 100}});
  Image<Tev8u> d(1, 1);
  for (const float dx : {-0.25F, 0.75F, -5.25F, 1000.75F}) {
    ASSERT_EQ(teviCopySubpix_8u_C1R(src.data(), src.step(), d.data(), d.step(), d.size(), dx, 0), tevStatusOk);
    EXPECT_EQ(d.at(0, 0), 75) << dx;
  }
}

TEST(CopySubpixExample, FractionThatRoundsToOneTakesTheNextPixel) {
  const auto src = grid<Tev16u>({{0, 65535}, {0, 65535}});
  Image<Tev16u> d(1, 1);
  for (const float dx : {0.99999F, -1e-12F}) {
    ASSERT_EQ(teviCopySubpix_16u_C1R(src.data(), src.step(), d.data(), d.step(), d.size(), dx, 0), tevStatusOk);
    EXPECT_EQ(d.at(0, 0), 65535) << dx;
  }
}

TEST(CopySubpixExample, SaturatesWhereTheWeightsOf16uAddUpToMoreThanOne) {
  Image<Tev16u> src(2, 2), d(1, 1);
  src.fill(65535);
  int beyond = 0;
  for (int i = 1; i < 400; ++i) {
    const float f = static_cast<float>(i) / 32768, g = static_cast<float>(i * 7 % 997) / 32768;
    ASSERT_EQ(teviCopySubpix_16u_C1R(src.data(), src.step(), d.data(), d.step(), d.size(), f, g), tevStatusOk);
    beyond += d.at(0, 0) == 65535;
    ASSERT_GE(d.at(0, 0), 65535 - 4);
  }
  EXPECT_GT(beyond, 50);
}

TEST(CopySubpixExample, ShiftsByTheScaleFactorModulo32WithoutSaturation) {
  const auto src = grid<Tev8u>({{255, 255}, {255, 255}});
  Image<Tev16u> d(1, 1);
  for (const int scale : {-14, -13, -9, -8, -1, 0, 1, 7, 8, 17, 18, 19, 32, -32, 1000, std::numeric_limits<int>::max(),
                          std::numeric_limits<int>::min()}) {
    ASSERT_EQ(teviCopySubpix_8u16u_C1R_Sfs(src.data(), src.step(), d.data(), d.step(), d.size(), 0, 0, scale),
              tevStatusOk);
    const unsigned sum = 255U * (16385 + 3), shift = (static_cast<unsigned>(scale) + 14) % 32,
                   half = (static_cast<unsigned>(scale) + 13) % 32;
    EXPECT_EQ(d.at(0, 0), static_cast<Tev16u>((sum + (1U << half)) >> shift)) << scale;
  }
}

TEST(CopySubpixExample, OffsetsThatAreNoNumbersAreTakenAsWholeByIntegersAndCarriedByFloats) {
  const auto src = grid<Tev8u>({{10, 20}, {30, 40}});
  Image<Tev8u> d(1, 1);
  Image<Tev32f> f(1, 1);
  for (const float dx : {std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::infinity()}) {
    ASSERT_EQ(teviCopySubpix_8u_C1R(src.data(), src.step(), d.data(), d.step(), d.size(), dx, dx), tevStatusOk);
    EXPECT_EQ(d.at(0, 0), 10);
    ASSERT_EQ(teviCopySubpix_8u32f_C1R(src.data(), src.step(), f.data(), f.step(), f.size(), dx, 0), tevStatusOk);
    EXPECT_TRUE(std::isnan(f.at(0, 0)));
  }
}

TEST(CopySubpixExample, FloatsCarryNanInfinitiesAndNegativeZeros) {
  constexpr float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  Random random(4);
  for (int trial = 0; trial < 40; ++trial) {
    const auto src = random.image<Tev32f>(140, 4, [&] {
      constexpr float specials[] = {nan, inf, -inf, -0.0F, 0.0F, 1e-45F, 3e38F};
      return random.oneIn(40) ? specials[random.between(0, 6)] : random.oneIn(2) ? -0.0F : random.real(1);
    });
    const float dx = position(random, 0, 1), dy = position(random, 0, 1);
    Image<Tev32f> d(139, 3);
    ASSERT_EQ(teviCopySubpix_32f_C1R(src.data(), src.step(), d.data(), d.step(), d.size(), dx, dy), tevStatusOk);
    ASSERT_SAME_IMAGE(d, shiftByDefinition<M32f>(src, d.size(), dx, dy, 0)) << dx << ' ' << dy;
    TevPoint low, high;
    Image<Tev32f> r(150, 9), expected(150, 9);
    ASSERT_EQ(teviCopySubpixIntersect_32f_C1R(src.data(), src.step(), src.size(), r.data(), r.step(), r.size(), 60 + dx,
                                              1 + dy, &low, &high),
              tevStatusOk);
    rectByDefinition<M32f>(src, expected, 60 + dx, 1 + dy, 0, false);
    ASSERT_SAME_IMAGE(r, expected);
  }
}

TEST(CopySubpixIntersectExample, SurroundsASmallSourceWithItsEdgesInAllBands) {
  const auto src = grid<Tev8u>({{10, 20, 30}, {40, 50, 60}, {70, 80, 90}});
  Image<Tev8u> d(7, 7);
  TevPoint low, high;
  ASSERT_EQ(teviCopySubpixIntersect_8u_C1R(src.data(), src.step(), src.size(), d.data(), d.step(), d.size(), 1, 1, &low,
                                           &high),
            tevStatusOk);
  EXPECT_EQ(low.x, 2);
  EXPECT_EQ(low.y, 2);
  EXPECT_EQ(high.x, 3);
  EXPECT_EQ(high.y, 3);
  // Above the source the right columns repeat 20, one column short of the edge.
  EXPECT_SAME_IMAGE(d, grid<Tev8u>({{10, 10, 10, 20, 20, 20, 20},
                                    {10, 10, 10, 20, 20, 20, 20},
                                    {10, 10, 10, 20, 30, 30, 30},
                                    {40, 40, 40, 50, 60, 60, 60},
                                    {70, 70, 70, 80, 90, 90, 90},
                                    {70, 70, 70, 80, 90, 90, 90},
                                    {70, 70, 70, 80, 90, 90, 90}}));
}

TEST(CopySubpixIntersectExample, AboveAndRightOfTheSourceTakesThePixelBeforeTheCorner) {
  const auto src = grid<Tev8u>({{10, 20, 30}, {40, 50, 60}});
  Image<Tev8u> d(2, 2);
  TevPoint low, high;
  ASSERT_EQ(teviCopySubpixIntersect_8u_C1R(src.data(), src.step(), src.size(), d.data(), d.step(), d.size(), 90, -40,
                                           &low, &high),
            tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev8u>({{20, 20}, {20, 20}}));
  ASSERT_EQ(teviCopySubpixIntersect_8u_C1R(src.data(), src.step(), src.size(), d.data(), d.step(), d.size(), 90, 40,
                                           &low, &high),
            tevStatusOk);
  EXPECT_EQ(low.x, 0);
  EXPECT_EQ(high.x, -1);
  EXPECT_EQ(high.y, -1);
  EXPECT_SAME_IMAGE(d, grid<Tev8u>({{60, 60}, {60, 60}}));
}

TEST(CopySubpixIntersectExample, FarLeftOfTheSourceRepeatsItsFirstColumnWhateverTheFraction) {
  const auto src = grid<Tev8u>({{10, 20, 30}, {40, 50, 60}});
  TevPoint low, high;
  for (const float x : {-3.0F, -7.3F, -100.9F, -1e20F}) {
    Image<Tev8u> d(3, 2);
    ASSERT_EQ(teviCopySubpixIntersect_8u_C1R(src.data(), src.step(), src.size(), d.data(), d.step(), d.size(), x, -9.7F,
                                             &low, &high),
              tevStatusOk);
    EXPECT_SAME_IMAGE(d, grid<Tev8u>({{10, 10, 10}, {10, 10, 10}}));
    EXPECT_EQ(low.x, 3);
    EXPECT_EQ(high.x, 2);
  }
}

TEST(CopySubpixIntersectExample, WholeCentreWithAnOddSizeCopiesPixels) {
  Random random(5);
  const auto src = random.image<Tev16u>(9, 9);
  Image<Tev16u> d(5, 3);
  TevPoint low, high;
  ASSERT_EQ(teviCopySubpixIntersect_16u_C1R(src.data(), src.step(), src.size(), d.data(), d.step(), d.size(), 4, 5,
                                            &low, &high),
            tevStatusOk);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 5; ++x) EXPECT_EQ(d.at(x, y), src.at(2 + x, 4 + y));
}

TEST(CopySubpixIntersectExample, CentresBeyondAnyImageAreOutside) {
  const auto src = grid<Tev8u>({{10, 20}, {30, 40}});
  constexpr float inf = std::numeric_limits<float>::infinity();
  TevPoint low, high;
  for (const float centre : {1e30F, inf}) {
    Image<Tev8u> d(2, 2);
    ASSERT_EQ(teviCopySubpixIntersect_8u_C1R(src.data(), src.step(), src.size(), d.data(), d.step(), d.size(), centre,
                                             centre, &low, &high),
              tevStatusOk);
    EXPECT_SAME_IMAGE(d, grid<Tev8u>({{40, 40}, {40, 40}}));
  }
  for (const float centre : {-1e30F, -inf, std::numeric_limits<float>::quiet_NaN()}) {
    Image<Tev32f> d(2, 2);
    ASSERT_EQ(teviCopySubpixIntersect_8u32f_C1R(src.data(), src.step(), src.size(), d.data(), d.step(), d.size(),
                                                centre, centre, &low, &high),
              tevStatusOk);
    EXPECT_SAME_IMAGE(d, grid<Tev32f>({{10, 10}, {10, 10}}));
  }
}

TEST(CopySubpixTable, HoldsEachByteAsAFloat) {
  for (int i = 0; i < 256; ++i) EXPECT_EQ(own8u32fTab[i], static_cast<float>(i));
}
