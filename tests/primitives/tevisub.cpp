#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/primitives.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

// max(b - a, 0) * 2^-s, ties to even, saturated.
int oracle(int a, int b, int s) {
  const int d = std::max(b - a, 0);
  if (s > 8) return 0;
  if (s < -7) return d > 0 ? 255 : 0;
  return static_cast<int>(std::min(255.0, std::nearbyint(std::ldexp(d, -s))));
}

template <int channels, class Sub, class SubInPlace>
void expectScaledDifferences(Sub sub, SubInPlace subInPlace) {
  Random random;
  for (int s = -10; s <= 10; ++s)
    for (int trial = 0; trial < 6; ++trial) {
      const int width = random.between(1, 40), height = random.between(1, 4);
      const auto a = random.image<Tev8u, channels>(width, height), b = random.image<Tev8u, channels>(width, height);
      auto d = random.image<Tev8u, channels>(width, height), inPlace = b.clone();
      Image<Tev8u, channels> expected(width, height);
      for (int y = 0; y < height; ++y)
        for (int i = 0; i < width * channels; ++i)
          expected.set(i, y, static_cast<Tev8u>(oracle(a.get(i, y), b.get(i, y), s)));
      ASSERT_EQ(sub(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), d.size(), s), tevStatusOk);
      ASSERT_SAME_IMAGE(d, expected) << "scale " << s;
      ASSERT_EQ(subInPlace(a.data(), a.step(), inPlace.data(), inPlace.step(), d.size(), s), tevStatusOk);
      ASSERT_SAME_IMAGE(inPlace, expected) << "scale " << s;
    }
}

template <int channels, class Sub, class SubInPlace>
void expectDifferences(Sub sub, SubInPlace subInPlace) {
  Random random;
  const float specials[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), -0.0F, 0};
  const auto draw = [&] { return random.oneIn(8) ? specials[random.between(0, 3)] : random.value<Tev32f>(); };
  for (int trial = 0; trial < 40; ++trial) {
    const int width = random.between(1, 40), height = random.between(1, 4);
    const auto a = random.image<Tev32f, channels>(width, height, draw),
               b = random.image<Tev32f, channels>(width, height, draw);
    auto d = random.image<Tev32f, channels>(width, height), inPlace = b.clone();
    Image<Tev32f, channels> expected(width, height);
    for (int y = 0; y < height; ++y)
      for (int i = 0; i < width * channels; ++i)
        expected.set(
            i, y, static_cast<Tev32f>(static_cast<long double>(b.get(i, y)) - static_cast<long double>(a.get(i, y))));
    ASSERT_EQ(sub(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), d.size()), tevStatusOk);
    ASSERT_SAME_IMAGE(d, expected);
    ASSERT_EQ(subInPlace(a.data(), a.step(), inPlace.data(), inPlace.step(), d.size()), tevStatusOk);
    ASSERT_SAME_IMAGE(inPlace, expected);
  }
}

// The one-channel form looks at pointers first, the others at the width first.
template <class T, class Call>
void expectChecks(int channels, Call call) {
  std::vector<T> image(static_cast<size_t>(9 * channels), T{1});
  T* const p = image.data();
  const TevSize roi = {3, 3}, noWidth = {0, 3}, noHeight = {3, 0};
  EXPECT_EQ(call(nullptr, p, p, noWidth), channels == 1 ? tevStatusNullPtr : tevStatusBadSize);
  EXPECT_EQ(call(nullptr, p, p, noHeight), tevStatusNullPtr);
  EXPECT_EQ(call(nullptr, p, p, roi), tevStatusNullPtr);
  EXPECT_EQ(call(p, p, nullptr, roi), tevStatusNullPtr);
  if (channels > 1) {  // more elements than an int counts
    const TevSize tooWide = {std::numeric_limits<int>::max() / 2, 3};
    EXPECT_EQ(call(nullptr, p, p, tooWide), tevStatusNullPtr);
    EXPECT_EQ(call(p, p, p, tooWide), tevStatusBadSize);
  }
  EXPECT_EQ(call(p, p, p, noWidth), tevStatusBadSize);
  EXPECT_EQ(call(p, p, p, noHeight), tevStatusBadSize);
  EXPECT_EQ(image, std::vector<T>(image.size(), T{1}));
}

}  // namespace

TEST(Subtract, TheFirstImageIsTheOneTakenAway) {
  const auto a = grid<Tev8u>({{10, 3}}), b = grid<Tev8u>({{5, 10}});
  Image<Tev8u> d(2, 1);
  EXPECT_EQ(teviSub_8u_C1RSfs(a.data(), 2, b.data(), 2, d.data(), 2, {2, 1}, 0), tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev8u>({{0, 7}}));
}

TEST(Subtract, BytesEqualTheScaleRule) {
  expectScaledDifferences<1>(teviSub_8u_C1RSfs, teviSub_8u_C1IRSfs);
  expectScaledDifferences<3>(teviSub_8u_C3RSfs, teviSub_8u_C3IRSfs);
  expectScaledDifferences<4>(teviSub_8u_C4RSfs, teviSub_8u_C4IRSfs);
}

TEST(Subtract, EveryDifferenceAtEveryScale) {
  Image<Tev8u> a(256, 1), b(256, 1), d(256, 1);
  a.fill(0);
  for (int v = 0; v < 256; ++v) b.set(v, 0, static_cast<Tev8u>(v));
  for (int s = -9; s <= 9; ++s) {
    ASSERT_EQ(teviSub_8u_C1RSfs(a.data(), 256, b.data(), 256, d.data(), 256, {256, 1}, s), tevStatusOk);
    for (int v = 0; v < 256; ++v) ASSERT_EQ(d.at(v, 0), oracle(0, v, s)) << v << " scale " << s;
  }
  EXPECT_EQ(oracle(0, 255, 8), 1);
  EXPECT_EQ(oracle(0, 255, 9), 0);
}

TEST(Subtract, AboveScale8ClearsWithoutReadingTheSources) {
  // Sources that end long before the region does.
  Image<Tev8u> tiny(1, 1), d(50, 50);
  EXPECT_EQ(teviSub_8u_C1RSfs(tiny.data(), 1000000, tiny.data(), 1000000, d.data(), d.step(), d.size(), 9),
            tevStatusOk);
  EXPECT_SAME_IMAGE(d, Image<Tev8u>(50, 50).fill(0));
}

TEST(Subtract, FloatsRoundOnce) {
  expectDifferences<1>(teviSub_32f_C1R, teviSub_32f_C1IR);
  expectDifferences<3>(teviSub_32f_C3R, teviSub_32f_C3IR);
  expectDifferences<4>(teviSub_32f_C4R, teviSub_32f_C4IR);
}

TEST(Subtract, FloatRowsAdvanceByWholeElementsOfAnyStep) {
  const auto a = grid<Tev32f>({{1, 2}, {3, 4}}), b = grid<Tev32f>({{10, 20}, {30, 40}});
  Image<Tev32f> d(2, 2);
  // 11 bytes are two whole elements; a zero step stays on the first row; a negative one goes up.
  EXPECT_EQ(teviSub_32f_C1R(a.data(), 0, b.data(), 11, d.data(), 10, {2, 2}), tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev32f>({{9, 18}, {29, 38}}));
  EXPECT_EQ(teviSub_32f_C1R(a.data() + 2, -8, b.data(), 8, d.data(), 8, {2, 2}), tevStatusOk);
  EXPECT_SAME_IMAGE(d, grid<Tev32f>({{7, 16}, {29, 38}}));
}

TEST(Subtract, ChecksPointersThenSizeOrTheWidthFirstWithSeveralChannels) {
  using Bytes = TevStatus (*)(const Tev8u*, int, const Tev8u*, int, Tev8u*, int, TevSize, int);
  using Floats = TevStatus (*)(const Tev32f*, int, const Tev32f*, int, Tev32f*, int, TevSize);
  int channels[] = {1, 3, 4}, k = 0;
  for (Bytes f : {teviSub_8u_C1RSfs, teviSub_8u_C3RSfs, teviSub_8u_C4RSfs})
    expectChecks<Tev8u>(channels[k++], [f](const Tev8u* a, const Tev8u* b, Tev8u* d, TevSize roi) {
      return f(a, 12, b, 12, d, 12, roi, 0);
    });
  k = 0;
  for (Floats f : {teviSub_32f_C1R, teviSub_32f_C3R, teviSub_32f_C4R})
    expectChecks<Tev32f>(channels[k++], [f](const Tev32f* a, const Tev32f* b, Tev32f* d, TevSize roi) {
      return f(a, 48, b, 48, d, 48, roi);
    });
  using BytesInPlace = TevStatus (*)(const Tev8u*, int, Tev8u*, int, TevSize, int);
  using FloatsInPlace = TevStatus (*)(const Tev32f*, int, Tev32f*, int, TevSize);
  k = 0;
  for (BytesInPlace f : {teviSub_8u_C1IRSfs, teviSub_8u_C3IRSfs, teviSub_8u_C4IRSfs})
    expectChecks<Tev8u>(channels[k++],
                        [f](const Tev8u* a, const Tev8u*, Tev8u* d, TevSize roi) { return f(a, 12, d, 12, roi, 0); });
  k = 0;
  for (FloatsInPlace f : {teviSub_32f_C1IR, teviSub_32f_C3IR, teviSub_32f_C4IR})
    expectChecks<Tev32f>(channels[k++],
                         [f](const Tev32f* a, const Tev32f*, Tev32f* d, TevSize roi) { return f(a, 48, d, 48, roi); });
}
