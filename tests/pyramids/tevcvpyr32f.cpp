#include <limits>

#include "pyramids/gauss5x5.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using Real = long double;

// The sum around place 2 * x of a line of n values, term by term as it is written down: where reflection folds taps
// together, their weights add up.
template <class At>
Real lineSum(int x, int n, At at) {
  const int c = 2 * x;
  if (n >= 3 && c == 0) return 6 * at(0) + 8 * at(1) + 2 * at(2);
  if (n >= 3 && c == n - 1) return 6 * at(c) + 8 * at(c - 1) + 2 * at(c - 2);
  if (n >= 3 && c == n - 2) return at(c - 2) + 4 * (at(c - 1) + at(c + 1)) + 7 * at(c);
  const auto tap = [&](int j) { return at(gauss::reflected(c + j, n)); };
  return tap(-2) + 4 * tap(-1) + 6 * tap(0) + 4 * tap(1) + tap(2);
}

// The sum over the rows around row 2 * y of an image: one term for each tap.
template <class At>
Real columnSum(int y, int n, At at) {
  const auto tap = [&](int i) { return Real{at(gauss::reflected(2 * y + i, n))}; };
  return tap(-2) + 4 * tap(-1) + 6 * tap(0) + 4 * tap(1) + tap(2);
}

// Rounded to float behind each direction; images of one or two rows or columns add those first and round once.
template <int channels>
Image<Tev32f, channels> naiveDown(const Image<Tev32f, channels>& src) {
  const int width = src.width(), height = src.height();
  Image<Tev32f, channels> dst((width + 1) / 2, (height + 1) / 2);
  for (int y = 0; y < dst.height(); ++y)
    for (int x = 0; x < dst.width(); ++x)
      for (int c = 0; c < channels; ++c) {
        const auto at = [&](int i, int j) { return Real{src.at(i, j, c)}; };
        Real sum;
        if (height < 3)
          sum = 8 * columnSum(x, width, [&](int i) { return at(i, 0) + at(i, height - 1); });
        else if (width < 3)
          sum = 8 * columnSum(y, height, [&](int j) { return at(0, j) + at(width - 1, j); });
        else
          sum = columnSum(y, height, [&](int j) {
            return static_cast<Tev32f>(lineSum(x, width, [&](int i) { return at(i, j); }));
          });
        dst.set(x * channels + c, y, static_cast<Tev32f>(sum * Real{0.00390625}));
      }
  return dst;
}

template <int channels>
Image<Tev32f, channels> naiveUp(const Image<Tev32f, channels>& src) {
  const int width = src.width(), height = src.height();
  Image<Tev32f, channels> dst(2 * width, 2 * height);
  for (int y = 0; y < dst.height(); ++y)
    for (int x = 0; x < dst.width(); ++x)
      for (int c = 0; c < channels; ++c) {
        const auto line = [&](int i) {
          const auto at = [&](int j) {
            return Real{src.at(gauss::oneSided(x / 2 + j, width), gauss::oneSided(y / 2 + i, height), c)};
          };
          return Real{static_cast<Tev32f>(x % 2 == 0 ? at(-1) + 6 * at(0) + at(1) : 4 * (at(0) + at(1)))};
        };
        const Real sum = y % 2 == 0 ? line(-1) + 6 * line(0) + line(1) : 4 * (line(0) + line(1));
        dst.set(x * channels + c, y, static_cast<Tev32f>(sum * Real{0.015625}));
      }
  return dst;
}

template <class Member>
class GaussianPyramid32f : public testing::Test {};
using AllMembers = testing::Types<gauss::Members<Tev32f, 1>, gauss::Members<Tev32f, 3>>;
TYPED_TEST_SUITE(GaussianPyramid32f, AllMembers);

// Values of ordinary images, values with exponents far apart, values with special ones among them.
float ordinary(Random& random) { return random.real(255.0F); }
float farApart(Random& random) { return std::ldexp(random.real(1.0F), random.between(-60, 60)); }
float special(Random& random) {
  constexpr float inf = std::numeric_limits<float>::infinity();
  constexpr float values[] = {0.0F,          -0.0F,    inf,      -inf,   std::numeric_limits<float>::quiet_NaN(),
                              3.4e38F,       -3.4e38F, 1.4e-45F, 1e-40F, -1.0e-42F,
                              1.1754944e-38F};
  return random.oneIn(4) ? values[random.between(0, 10)] : random.real(2.0F);
}

// Whole numbers on both sides of 2^16, with a fraction here and there.
float whole(Random& random) {
  const int limit = random.oneIn(3) ? 70000 : 65535;
  return static_cast<float>(random.between(-limit, limit)) + (random.oneIn(60) ? 0.5F : 0.0F);
}

template <class Member, class Draw>
void equalsTheDefinition(Draw draw, int trials) {
  Random random;
  for (int trial = 0; trial < trials; ++trial) {
    const auto src = random.image<Tev32f, Member::channelCount>(random.between(1, 40), random.between(1, 9),
                                                                [&] { return draw(random); });
    ASSERT_SAME_IMAGE(gauss::down(src, random), naiveDown(src));
    ASSERT_SAME_IMAGE(gauss::up(src, random), naiveUp(src));
  }
}

}  // namespace

TEST(GaussianPyramid32fExample, HalvesAndDoublesAPoint) {
  Random random;
  const auto src = grid<Tev32f>({{0, 0, 0}, {0, 256, 0}, {0, 0, 0}});
  EXPECT_SAME_IMAGE(gauss::down(src, random), grid<Tev32f>({{64, 64}, {64, 64}}));
  EXPECT_SAME_IMAGE(gauss::up(grid<Tev32f>({{64, 0}, {0, 0}}), random),
                    grid<Tev32f>({{36, 24, 6, 0}, {24, 16, 4, 0}, {6, 4, 1, 0}, {0, 0, 0, 0}}));
}

TYPED_TEST(GaussianPyramid32f, EqualsTheDefinitionOnOrdinaryImages) { equalsTheDefinition<TypeParam>(ordinary, 150); }
TYPED_TEST(GaussianPyramid32f, EqualsTheDefinitionOnWholeNumbers) { equalsTheDefinition<TypeParam>(whole, 150); }
TYPED_TEST(GaussianPyramid32f, EqualsTheDefinitionOnTheBrightestWholeNumbers) {
  equalsTheDefinition<TypeParam>([](Random& random) { return random.oneIn(9) ? 65534.0F : 65535.0F; }, 20);
}
TYPED_TEST(GaussianPyramid32f, EqualsTheDefinitionWhereExponentsLieFarApart) {
  equalsTheDefinition<TypeParam>(farApart, 150);
}
TYPED_TEST(GaussianPyramid32f, EqualsTheDefinitionWithNanInfinitiesZerosAndTinyValues) {
  equalsTheDefinition<TypeParam>(special, 150);
}

// The choice between the two forms is made row by row: exponents that differ by 21 are still summed in double.
TYPED_TEST(GaussianPyramid32f, EqualsTheDefinitionAroundTheLimitOfDouble) {
  for (int spread = 19; spread <= 32; ++spread)
    equalsTheDefinition<TypeParam>(
        [spread](Random& random) {
          return std::ldexp(1.0F + std::fabs(random.real(0.999F)), random.oneIn(2) ? spread : 0) *
                 (random.oneIn(2) ? 1.0F : -1.0F);
        },
        12);
}

TYPED_TEST(GaussianPyramid32f, EqualsTheDefinitionAcrossTheBlocksOfARow) {
  Random random;
  for (int width : {511, 513, 514, 515, 516, 1030}) {
    const auto src = random.image<Tev32f, TypeParam::channelCount>(width, 5);
    ASSERT_SAME_IMAGE(gauss::down(src, random), naiveDown(src)) << width;
    ASSERT_SAME_IMAGE(gauss::up(src, random), naiveUp(src)) << width;
  }
}

TYPED_TEST(GaussianPyramid32f, DownChecksPointersThenSizeThenStepsThenAlignment) { gauss::checksOfDown<TypeParam>(); }
TYPED_TEST(GaussianPyramid32f, UpChecksPointersThenSizeThenStepsThenAlignment) { gauss::checksOfUp<TypeParam>(); }

TEST(GaussianPyramid32fExample, RoundsNarrowAndLowImagesOnce) {
  Random random;
  for (int trial = 0; trial < 50; ++trial)
    for (int thin = 1; thin <= 2; ++thin) {
      const auto low = random.image<Tev32f, 3>(random.between(1, 9), thin);
      auto d = random.image<Tev32f, 3>((low.width() + 1) / 2, 1);
      ownPyrDownG5x5_H2_32f(low.data(), low.step(), d.data(), d.step(), low.size(), 3);
      ASSERT_SAME_IMAGE(d, naiveDown(low));
      const auto narrow = random.image<Tev32f>(thin, random.between(3, 9));
      auto e = random.image<Tev32f>(1, (narrow.height() + 1) / 2);
      ownPyrDownG5x5_W2_32f(narrow.data(), narrow.step(), e.data(), e.step(), narrow.size(), 1);
      ASSERT_SAME_IMAGE(e, naiveDown(narrow));
    }
}
