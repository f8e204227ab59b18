// Both background models before a simulated camera: what passes is found, what stays is not.
#include "kit/kit.h"
#include "motion/camera.h"

using kit::Image;

namespace {

// Soft waves with sharp edged tiles on them, as a wall has them.
template <int channels>
Image<Tev8u, channels> wall(int width, int height) {
  Image<Tev8u, channels> picture(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < channels; ++c) {
        const double wave = 110 + 20 * std::sin(0.11 * x + 0.05 * y + c) + 15 * std::cos(0.07 * y - 0.13 * x);
        picture.set(x * channels + c, y, static_cast<Tev8u>(wave + ((x / 9 + y / 7) % 2 ? 25 : 0)));
      }
  return picture;
}

// Bright with dark stripes.
template <int channels>
Image<Tev8u, channels> passer(int width, int height) {
  Image<Tev8u, channels> picture(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < channels; ++c)
        picture.set(x * channels + c, y, static_cast<Tev8u>((x + y) % 11 < 4 ? 25 + 8 * c : 240 - 10 * c));
  return picture;
}

constexpr camera::Setting still = {.view = {80, 60}, .learning = 100, .passing = 40};
constexpr camera::Setting swaying = {.view = {80, 60}, .sway = 1, .light = 2, .learning = 100, .passing = 40};

template <class T>
class SimulatedCamera : public testing::Test {};
using Channels = testing::Types<std::integral_constant<int, 1>, std::integral_constant<int, 3>>;
TYPED_TEST_SUITE(SimulatedCamera, Channels);

}  // namespace

// Of a mode's own normal noise 1.2 % lies outside 2.5 standard deviations: a false alarm at about each eightieth pixel
// of one channel, which weighs on the precision for something that covers an eighth of the frame.
TYPED_TEST(SimulatedCamera, TheGaussianModelFindsWhatPasses) {
  constexpr int channels = TypeParam::value;
  const auto picture = wall<channels>(90, 70);
  const auto thing = passer<channels>(60, 40);
  for (const auto& setting : {still, swaying}) {
    const auto score = camera::watchGaussian(setting, picture, thing);
    EXPECT_GT(score.precision(), channels == 1 ? 0.75 : 0.9);
    EXPECT_GT(score.recall(), 0.9);
  }
}

TYPED_TEST(SimulatedCamera, TheHistogramModelFindsWhatPasses) {
  constexpr int channels = TypeParam::value;
  const auto picture = wall<channels>(90, 70);
  const auto thing = passer<channels>(60, 40);
  for (const auto& setting : {still, swaying}) {
    const auto score = camera::watchHistogram(setting, picture, thing);
    EXPECT_GT(score.precision(), 0.85);
    EXPECT_GT(score.recall(), 0.9);
  }
}
