#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "kit/kit.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

constexpr float inf = std::numeric_limits<float>::infinity(), notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr double pi = 3.141592653589793;
constexpr float degree = static_cast<float>(pi / 180);

struct Setting {
  float rhoStep = 1;
  float thetaStep = degree;
  int threshold = 1;
  int maxLineCount = 100;
};

struct Line {
  float rho, theta;
  bool operator==(const Line&) const = default;
};
void PrintTo(const Line& line, std::ostream* out) { *out << "rho " << line.rho << " theta " << line.theta; }

std::vector<Line> find(const Image<Tev8u>& src, const Setting& k, int misalignment = 0) {
  int size = 0, count = -1;
  EXPECT_EQ(teviHoughLineGetSize_8u_C1R(src.size(), k.rhoStep, k.thetaStep, k.maxLineCount, &size), tevStatusOk);
  const Buffer buffer(size, misalignment), memory(k.maxLineCount * int{sizeof(TevPolarLine)});
  const auto* const lines = memory.as<TevPolarLine>();
  EXPECT_EQ(teviHoughLine_8u32f_C1R(src.data(), src.step(), src.size(), k.rhoStep, k.thetaStep, k.threshold,
                                    memory.as<TevPolarLine>(), k.maxLineCount, &count, buffer.data()),
            tevStatusOk);
  std::vector<Line> found;
  for (int i = 0; i < count; ++i) found.push_back({lines[i].rho, lines[i].theta});
  return found;
}

// The definition, with a whole accumulator.
std::vector<Line> definition(const Image<Tev8u>& src, const Setting& k) {
  const auto thetaCount = static_cast<int>(static_cast<long double>(pi) / k.thetaStep);
  const auto rhoCount = static_cast<int>(((src.width() + src.height()) * 2 + 1) / static_cast<long double>(k.rhoStep));
  const int rhoOffset = (rhoCount - 1 + (rhoCount < 1 ? 1 : 0)) >> 1;
  const auto tangent = [](long double x) {
    const long double q = x * x;
    return x / (1 - q / (3 - q / (5 - q / (7 - q / (9 - q / (11 - q / (13 - q / 15)))))));
  };
  std::vector<std::vector<int>> votes;
  float angle = 0;
  for (int i = 0; i <= thetaCount; ++i, angle += k.thetaStep) {
    const long double t = tangent(angle * 0.5L), inverse = 1 / static_cast<long double>(k.rhoStep);
    const auto sine = static_cast<float>(static_cast<float>(2 * t / (1 + t * t)) * inverse),
               cosine = static_cast<float>(static_cast<float>((1 - t * t) / (1 + t * t)) * inverse);
    std::vector<int> row(static_cast<std::size_t>(rhoCount));
    for (int y = 0; y < src.height(); ++y)
      for (int x = 0; x < src.width(); ++x)
        if (src.at(x, y) != 0) {
          const long double r = x * static_cast<long double>(cosine) + y * static_cast<long double>(sine);
          const int slot = rhoOffset + static_cast<int>(r <= 0 ? r - 0.5L : r + 0.5L);
          if (slot >= 0 && slot < rhoCount) ++row[static_cast<std::size_t>(slot)];
        }
    votes.push_back(row);
  }
  const auto at = [&](int theta, int rho) {
    return theta < 0 || theta > thetaCount || rho < 0 || rho >= rhoCount
               ? 0
               : votes[static_cast<std::size_t>(theta)][static_cast<std::size_t>(rho)];
  };
  struct Peak {
    int votes, theta, rho;
  };
  std::vector<Peak> peaks;
  for (int t = 0; t <= thetaCount; ++t)
    for (int r = 0; r < rhoCount; ++r)
      if (const int v = at(t, r);
          v > k.threshold && v > at(t, r - 1) && v >= at(t, r + 1) && v > at(t - 1, r) && v >= at(t + 1, r))
        peaks.push_back({v, t, r});
  std::stable_sort(peaks.begin(), peaks.end(), [](const Peak& a, const Peak& b) { return a.votes > b.votes; });
  if (peaks.size() > static_cast<std::size_t>(k.maxLineCount)) peaks.resize(static_cast<std::size_t>(k.maxLineCount));
  std::vector<Line> lines;
  for (const Peak& p : peaks)
    lines.push_back({static_cast<float>((p.rho - rhoOffset) * static_cast<long double>(k.rhoStep)),
                     static_cast<float>(p.theta * static_cast<long double>(k.thetaStep))});
  return lines;
}

// Draws the line of given rho and theta through an image.
void draw(Image<Tev8u>& image, double rho, double theta) {
  const double c = std::cos(theta), s = std::sin(theta);
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (std::fabs(x * c + y * s - rho) <= 0.5 * std::max(std::fabs(c), std::fabs(s))) image.set(x, y, 255);
}

Image<Tev8u> blank(int width, int height) {
  Image<Tev8u> image(width, height);
  image.fill(0);
  return image;
}

}  // namespace

TEST(HoughExample, ARowAndAColumnOfPoints) {
  const auto src = grid<Tev8u>({{0, 0, 1, 0, 0, 0},  //
                                {0, 0, 1, 0, 0, 0},
                                {9, 9, 9, 9, 9, 9},
                                {0, 0, 1, 0, 0, 0}});
  const auto quarter = static_cast<float>(pi / 4);
  const auto lines = find(src, {.thetaStep = quarter, .threshold = 3});
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], (Line{2, 2 * quarter}));   // y = 2
  EXPECT_EQ(lines[1], (Line{2, 0}));             // x = 2
  EXPECT_EQ(lines[2], (Line{-1, 3 * quarter}));  // four points beside y = x - 1.4
}

TEST(Hough, EqualsAWholeAccumulatorOnRandomPoints) {
  Random random;
  std::size_t found = 0;
  constexpr float rhoSteps[] = {1, 0.5F, 2, 0.7F, 3.3F, 8, 0.01F}, thetaSteps[] = {degree, 0.02F, 0.1F, 0.75F, 2.5F};
  for (int trial = 0; trial < 90; ++trial) {
    const int width = random.between(1, trial % 5 ? 40 : 300), height = random.between(1, trial % 7 ? 30 : 2);
    const auto src = random.mask(width, height, random.between(2, 12) > 6 ? 2 : 1 + trial % 3);
    Setting k = {rhoSteps[trial % 7], thetaSteps[random.between(0, 4)], random.between(1, 6), random.between(1, 60)};
    if (k.rhoStep > static_cast<float>(width + height)) k.rhoStep = 1;
    const auto lines = find(src, k, random.between(0, 40));
    ASSERT_EQ(lines, definition(src, k)) << width << " x " << height << ", steps " << k.rhoStep << " " << k.thetaStep;
    found += lines.size();
  }
  EXPECT_GT(found, 1000U);
}

TEST(Hough, EqualsAWholeAccumulatorOnWideImagesWithFineAndCoarseSteps) {
  Random random;
  for (int trial = 0; trial < 12; ++trial) {
    const auto src = random.image<Tev8u>(random.between(1500, 3000), random.between(1, 6),
                                         [&] { return trial % 4 == 0 || random.oneIn(12) ? 255 : 0; });
    const Setting k = {trial % 2 ? 0.3F : 1.0F, trial % 3 ? 0.05F : 0.013F, 2, 200};
    ASSERT_EQ(find(src, k, trial), definition(src, k));
  }
}

// A step of a hair around 0 and pi / 2 makes one of sine and cosine tiny, which double does not add exactly.
TEST(Hough, EqualsAWholeAccumulatorWhereSineOrCosineIsTiny) {
  Random random;
  for (float thetaStep : {1.57079632F, 1.5707964F, 1.5707961F, 3.1415925F, 3.14159F, 0.78539816F})
    for (float rhoStep : {1.0F, 2.0F, 1e-3F, 0.33333334F}) {
      const auto src = random.mask(200, 40, 3);
      const Setting k = {rhoStep, thetaStep, 1, 50};
      ASSERT_EQ(find(src, k), definition(src, k)) << rhoStep << " " << thetaStep;
    }
}

TEST(Hough, FindsDrawnLinesWithinOneStep) {
  for (int rhoDegrees = 0; rhoDegrees < 6; ++rhoDegrees)
    for (int thetaDegrees = 3; thetaDegrees < 178; thetaDegrees += 25) {
      auto src = blank(320, 240);
      const double theta = thetaDegrees * pi / 180;
      // Through a point of the middle, so that it is long.
      const double rho = (120 + 13 * rhoDegrees) * std::cos(theta) + (90 + 9 * rhoDegrees) * std::sin(theta);
      draw(src, rho, theta);
      const auto lines = find(src, {.threshold = 60, .maxLineCount = 1});
      ASSERT_EQ(lines.size(), 1U) << rho << " " << theta;
      EXPECT_NEAR(lines[0].rho, rho, 1.001);
      EXPECT_NEAR(lines[0].theta, theta, degree * 1.001);
    }
}

TEST(Hough, FindsEachOfThreeDrawnLinesAmongNoise) {
  Random random;
  auto src = blank(400, 300);
  for (int i = 0; i < 1500; ++i) src.set(random.between(0, 399), random.between(0, 299), 1);
  const double truth[3][2] = {{150, 0.5}, {-60, 2.2}, {220, 1.4}};
  for (const auto& [rho, theta] : truth) draw(src, rho, theta);
  const auto lines = find(src, {.threshold = 100, .maxLineCount = 3});
  ASSERT_EQ(lines.size(), 3U);
  for (const auto& [rho, theta] : truth)
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(),
                            [r = rho, t = theta](const Line& line) {
                              return std::fabs(line.rho - r) <= 1.001 && std::fabs(line.theta - t) <= degree * 1.001;
                            }))
        << rho << " " << theta;
}

TEST(Hough, AnEmptyImageHasNoLines) { EXPECT_TRUE(find(blank(50, 40), {}).empty()); }

TEST(Hough, AThresholdThatNoLineReachesFindsNone) {
  auto src = blank(50, 40);
  draw(src, 20, 0.5 * pi);
  EXPECT_TRUE(find(src, {.threshold = 50}).empty());
  EXPECT_EQ(find(src, {.threshold = 49}).size(), 1U);
}

TEST(Hough, AThetaStepJustBelowPiExaminesTwoAngles) {
  auto src = blank(9, 12);
  draw(src, 4, 0);
  const float thetaStep = std::nextafter(static_cast<float>(pi), 0.0F);
  const auto lines = find(src, {.thetaStep = thetaStep, .threshold = 5});
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0], (Line{4, 0}));
  EXPECT_EQ(lines[1], (Line{-4, thetaStep}));
}

TEST(Hough, ALineNearTheFirstAngleIsFoundAtTheLastOneToo) {
  auto src = blank(60, 80);
  draw(src, 31, 0);
  const auto lines = find(src, {.threshold = 79});
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0], (Line{31, 0}));
  EXPECT_EQ(lines[1], (Line{-31, 180 * degree}));
}

TEST(Hough, ALineOnTheFarSideOfTheOriginHasANegativeRho) {
  auto src = blank(120, 90);
  draw(src, -40, 2.6);
  const auto lines = find(src, {.threshold = 20, .maxLineCount = 1});
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_LT(lines[0].rho, 0);
}

TEST(Hough, OneLineKeepsTheFirstOfEqualPeaks) {
  auto src = blank(30, 30);
  for (int i = 0; i < 30; ++i) src.set(i, 7, 1), src.set(i, 20, 1);
  const auto both = find(src, {.threshold = 29});
  ASSERT_EQ(both.size(), 2U);
  EXPECT_EQ(both[0].rho, 7);
  EXPECT_EQ(both[1].rho, 20);
  EXPECT_EQ(find(src, {.threshold = 29, .maxLineCount = 1}), std::vector<Line>{both[0]});
  src.set(29, 7, 0);
  const auto stronger = find(src, {.threshold = 20, .maxLineCount = 1});
  ASSERT_EQ(stronger.size(), 1U);
  EXPECT_EQ(stronger[0].rho, 20);
}

TEST(Hough, DropsVotesBesideTheRowOfACoarseStep) {
  auto src = blank(10, 1);
  src.fill(1);
  const Setting k = {.rhoStep = 8, .thetaStep = 3, .threshold = 1};
  EXPECT_EQ(find(src, k), definition(src, k));
  for (int width = 1; width < 40; ++width)
    for (int height : {1, 2, 5})
      for (float part : {1.0F, 0.9F, 0.5F, 0.4F, 0.3F}) {
        auto all = blank(width, height);
        all.fill(1);
        const Setting coarse = {.rhoStep = part * static_cast<float>(width + height), .thetaStep = 0.4F};
        ASSERT_EQ(find(all, coarse, width), definition(all, coarse)) << width << " x " << height << " " << part;
      }
}

TEST(Hough, RowsMayOverlapWithAStepBelowTheWidth) {
  Random random;
  const auto memory = random.mask(64, 1, 3);
  auto src = blank(40, 9);
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 40; ++x) src.set(x, y, memory.at(3 * y + x, 0));
  const Setting k = {.threshold = 3};
  int size = 0, count = 0;
  ASSERT_EQ(teviHoughLineGetSize_8u_C1R({40, 9}, 1, degree, 100, &size), tevStatusOk);
  const Buffer buffer(size, 1);
  std::vector<TevPolarLine> lines(100);
  ASSERT_EQ(teviHoughLine_8u32f_C1R(memory.data(), 3, {40, 9}, 1, degree, 3, lines.data(), 100, &count, buffer.data()),
            tevStatusOk);
  const auto expected = definition(src, k);
  ASSERT_EQ(static_cast<std::size_t>(count), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(lines[i].rho, expected[i].rho);
    EXPECT_EQ(lines[i].theta, expected[i].theta);
  }
}

TEST(Hough, StepsTooFineToCountFindNoLines) {
  auto src = blank(5, 4);
  src.fill(1);
  EXPECT_TRUE(find(src, {.rhoStep = 1e-30F}).empty());
  EXPECT_TRUE(find(src, {.thetaStep = 1e-30F}).empty());
}

TEST(HoughGetSize, CountsTheRowsThePeaksTheTablesTheFlagsAndThePoints) {
  int size = 0;
  // 2203 distances, 180 angles.
  ASSERT_EQ(teviHoughLineGetSize_8u_C1R({640, 480}, 1, degree, 50, &size), tevStatusOk);
  constexpr int r = 2241 * 4 + 4;
  EXPECT_EQ(size, 50 * 16 + 3 * r + 132 + 180 * 8 + 8 + (640 * 4 + 32) * 480 + r + 36);
  ASSERT_EQ(teviHoughLineGetSize_8u_C1R({1, 1}, inf, inf, 0, &size), tevStatusOk);
  EXPECT_EQ(size, 12 + 132 + 8 + 36 + 4 + 36);
  ASSERT_EQ(teviHoughLineGetSize_8u_C1R({1, 1}, 0.5F, 0.5F, 1, &size), tevStatusOk);
  EXPECT_EQ(size, 16 + 3 * 44 + 132 + 48 + 8 + 36 + 44 + 36);
}

TEST(HoughGetSize, WarnsBeyond31BitsAndStoresTheSizeAllTheSame) {
  int size = 0;
  EXPECT_EQ(teviHoughLineGetSize_8u_C1R({30000, 30000}, 1, degree, 10, &size), tevStatusSizeWarning);
  constexpr std::int64_t r = 120001 * 4 + 4, sum = 160 + 4 * r + 132 + 1440 + 8 + std::int64_t{120032} * 30000 + 36;
  static_assert(sum > INT32_MAX && sum < std::int64_t{1} << 32);
  EXPECT_EQ(static_cast<std::uint32_t>(size), sum);
  // Steps that fill the last bytes: 16 bytes a line.
  int base = 0;
  ASSERT_EQ(teviHoughLineGetSize_8u_C1R({1, 1}, 1, 1, 0, &base), tevStatusOk);
  const int lines = (INT32_MAX - base) / 16;
  EXPECT_EQ(teviHoughLineGetSize_8u_C1R({1, 1}, 1, 1, lines, &size), tevStatusOk);
  EXPECT_EQ(size, base + 16 * lines);
  EXPECT_EQ(teviHoughLineGetSize_8u_C1R({1, 1}, 1, 1, lines + 1, &size), tevStatusSizeWarning);
  EXPECT_EQ(static_cast<std::uint32_t>(size), static_cast<std::uint32_t>(base + 16 * lines) + 16U);
}

TEST(HoughGetSize, ChecksInTheirOrder) {
  int size = 77;
  EXPECT_FAILS(tevStatusNullPtr, teviHoughLineGetSize_8u_C1R({0, 1}, 1, 1, 1, nullptr));
  EXPECT_FAILS(tevStatusBadSize, teviHoughLineGetSize_8u_C1R({0, 1}, -1, 1, 1, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviHoughLineGetSize_8u_C1R({1, -1}, 1, 1, 1, &size), size);
  for (float bad : {0.0F, -0.0F, -1.0F, notANumber, -inf}) {
    EXPECT_FAILS(tevStatusBadArg, teviHoughLineGetSize_8u_C1R({1, 1}, bad, 1, 1, &size), size);
    EXPECT_FAILS(tevStatusBadArg, teviHoughLineGetSize_8u_C1R({1, 1}, 1, bad, 1, &size), size);
  }
}

TEST(Hough, ChecksInTheirOrder) {
  const auto src = blank(8, 4);
  TevPolarLine lines[2] = {{7, 7}, {7, 7}};
  int count = 77;
  const Buffer buffer(10000);
  const auto call = [&](const Tev8u* s, int step, TevSize roi, float rho, float theta, int threshold, int maxLines) {
    return teviHoughLine_8u32f_C1R(s, step, roi, rho, theta, threshold, lines, maxLines, &count, buffer.data());
  };
  const Tev8u* const s = src.data();
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, {8, 4}, 1, 1, 1, 2), lines[0], count, buffer);
  EXPECT_FAILS(tevStatusNullPtr, teviHoughLine_8u32f_C1R(s, 0, {8, 4}, 1, 1, 1, nullptr, 2, &count, buffer.data()),
               count, buffer);
  EXPECT_FAILS(tevStatusNullPtr, teviHoughLine_8u32f_C1R(s, 0, {8, 4}, 1, 1, 1, lines, 2, nullptr, buffer.data()),
               lines[0], buffer);
  EXPECT_FAILS(tevStatusNullPtr, teviHoughLine_8u32f_C1R(s, 0, {8, 4}, 1, 1, 1, lines, 2, &count, nullptr), lines[0],
               count);
  EXPECT_FAILS(tevStatusBadStep, call(s, 0, {0, 4}, 1, 1, 1, 2), lines[0], count, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(s, -8, {8, 4}, 1, 1, 1, 2), lines[0], count, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(s, 8, {0, 4}, 0, 1, 1, 2), lines[0], count, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(s, 8, {8, 0}, 0, 1, 1, 2), lines[0], count, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(s, 8, {8, 4}, 0, 1, 1, 0), lines[0], count, buffer);
  for (float bad : {0.0F, -1.0F, notANumber, 12.001F, inf})
    EXPECT_FAILS(tevStatusBadArg, call(s, 8, {8, 4}, bad, 1, 1, 2), lines[0], count, buffer);
  for (float bad : {0.0F, -1.0F, notANumber, static_cast<float>(pi), inf})
    EXPECT_FAILS(tevStatusBadArg, call(s, 8, {8, 4}, 1, bad, 1, 2), lines[0], count, buffer);
  EXPECT_FAILS(tevStatusBadArg, call(s, 8, {8, 4}, 1, 1, 0, 2), lines[0], count, buffer);
  EXPECT_EQ(call(s, 8, {8, 4}, 12, 1, 1, 2), tevStatusOk);
  EXPECT_EQ(count, 0);
}

TEST(Hough, AsksTheAllocatorForNothing) {
  kit::AllocatorWatch watch(0);
  auto src = blank(50, 40);
  draw(src, 20, 1);
  EXPECT_FALSE(find(src, {.threshold = 20}).empty());
  EXPECT_EQ(watch.requests(), 0);
}

TEST(HoughWorkers, RoundHalvesAwayFromZero) {
  const Tev32f in[] = {0.5F, -0.5F, 0.49999997F, -0.0F, 2.5F, -2.5F, 8388609.0F, -1.4999999F};
  const Tev32s expected[] = {1, -1, 0, 0, 3, -3, 8388609, -1};
  Tev32s out[8];
  ownHoughLineRound(in, out);
  ownHoughLineRound(in + 4, out + 4);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(out[i], expected[i]) << in[i];
}

TEST(HoughWorkers, PackTheColumnsOfPoints) {
  const auto src = grid<Tev8u>({{0, 1, 0, 255, 128}, {0, 0, 0, 0, 0}, {7, 0, 0, 0, 0}});
  constexpr int pitch = (5 * 4 + 31) / 16 * 16;
  const Buffer memory(3 * pitch);
  auto* const packed = memory.as<Tev32s>();
  ownHoughLineImgPack(src.data(), src.step(), 5, 3, packed);
  EXPECT_EQ(packed[0], 3);
  EXPECT_EQ(packed[4], 1);
  EXPECT_EQ(packed[5], 3);
  EXPECT_EQ(packed[6], 4);
  EXPECT_EQ(packed[pitch / 4], 0);
  EXPECT_EQ(packed[2 * pitch / 4], 1);
  EXPECT_EQ(packed[2 * pitch / 4 + 4], 0);
}

TEST(HoughWorkers, PackRowsOfAnyWidthToTheirLastByte) {
  Random random;
  for (int width = 1; width < 70; ++width) {
    const auto src = random.mask(width, 2, 3);
    const int pitch = (width * 4 + 31) / 16 * 16;
    const Buffer memory(pitch + 16 + 4 * width);
    ownHoughLineImgPack(src.data(), src.step(), width, 2, memory.as<Tev32s>());
    for (int y = 0; y < 2; ++y) {
      const Tev32s* const record = memory.as<Tev32s>() + y * pitch / 4;
      int n = 0;
      for (int x = 0; x < width; ++x)
        if (src.at(x, y) != 0) {
          ASSERT_EQ(record[4 + n], x);
          ++n;
        }
      ASSERT_EQ(record[0], n);
    }
  }
}

TEST(HoughWorkers, TakeSineAndCosineFromTheTangentOfHalfTheAngle) {
  for (int i = 0; i <= 314; ++i) {
    const float angle = 0.01F * static_cast<float>(i);
    Tev32f sine = 0, cosine = 0;
    ownSinCos(angle, &sine, &cosine);
    EXPECT_NEAR(sine, std::sin(angle), 1e-6);
    EXPECT_NEAR(cosine, std::cos(angle), 1e-6);
    EXPECT_NEAR(static_cast<double>(ownTan(angle / 4)), std::tan(angle / 4.0), 1e-9);
  }
}

TEST(HoughWorkers, FindPeaksAndKeepTheListSorted) {
  const Tev32s previous[] = {0, 0, 5, 0, 0, 0, 0, 0}, current[] = {0, 4, 5, 5, 0, 9, 7, 0},
               next[] = {0, 0, 5, 0, 0, 9, 0, 0}, zero[8] = {};
  HoughPeak peaks[2] = {{77, 77, 6, 0}, {}};
  int count = 1;
  Tev32s bar = 0, flags[8];
  ownHoughLineFindPeak(zero, current, next, 1, 5, 3, 4, peaks, 2, &count, &bar, flags);
  ASSERT_EQ(count, 2);
  EXPECT_EQ(peaks[0].rhoIndex, 4);
  EXPECT_EQ(peaks[0].thetaIndex, 3);
  EXPECT_EQ(peaks[0].votes, 9);
  EXPECT_EQ(peaks[1].votes, 6);
  EXPECT_EQ(bar, 5);  // the last entry's votes when the list was full first
  // Equal votes in the angle before are in the way, and so is the bar.
  peaks[0] = peaks[1] = {};
  count = 0;
  bar = 0;
  ownHoughLineFindPeak(previous, current, zero, 0, 5, 3, 4, peaks, 2, &count, &bar, flags);
  ASSERT_EQ(count, 1);
  bar = 10;
  ownHoughLineFindPeak(zero, current, zero, 0, 5, 3, 4, peaks, 2, &count, &bar, flags);
  EXPECT_EQ(count, 1);
}
