#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "kit/kit.h"
#include "motion/scene.h"
#include "tevcv/memory.h"
#include "tevcv/motion.h"

using kit::AllocatorWatch;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using State = TevForegroundHistogramState;

// The members of one channel count under one name.
template <int channels>
struct Members;
template <>
struct Members<1> {
  static constexpr auto init = teviForegroundHistogramInitAlloc_8u_C1R;
  static constexpr auto detect = teviForegroundHistogram_8u_C1R;
  static constexpr auto update = teviForegroundHistogramUpdate_8u_C1R;
  static constexpr auto release = teviForegroundHistogramFree_8u_C1R;
};
template <>
struct Members<3> {
  static constexpr auto init = teviForegroundHistogramInitAlloc_8u_C3R;
  static constexpr auto detect = teviForegroundHistogram_8u_C3R;
  static constexpr auto update = teviForegroundHistogramUpdate_8u_C3R;
  static constexpr auto release = teviForegroundHistogramFree_8u_C3R;
};

template <class T>
class ForegroundHistogram : public testing::Test {};
using Channels = testing::Types<std::integral_constant<int, 1>, std::integral_constant<int, 3>>;
TYPED_TEST_SUITE(ForegroundHistogram, Channels);

Tev8u unusedByte;

// Records as they lie in a model's memory.
struct Color {
  float prob, backgroundProb;
  Tev8u color[4];
};
struct Pair {
  float prob, backgroundProb;
  Tev8u colors[8];
};
struct Record {
  float colorBackgroundProb, pairBackgroundProb;
  Color* colorTable;
  Pair* pairTable;
  Tev8u colorLearned, pairLearned;
};
static_assert(sizeof(Color) == 12 && sizeof(Pair) == 16 && (sizeof(void*) != 4 || sizeof(Record) == 20));

template <int channels>
class Model {
 public:
  explicit Model(const Image<Tev8u, channels>& first) {
    EXPECT_EQ(Members<channels>::init(first.data(), first.step(), first.size(), &unusedByte, &state_), tevStatusOk);
  }
  ~Model() { EXPECT_EQ(Members<channels>::release(state_), tevStatusOk); }
  Image<Tev8u> detect(const Image<Tev8u, channels>& frame) {
    Image<Tev8u> mask(frame.width(), frame.height(), 2);
    EXPECT_EQ(Members<channels>::detect(frame.data(), frame.step(), mask.data(), mask.step(), frame.size(), state_),
              tevStatusOk);
    return mask;
  }
  void update(const Image<Tev8u, channels>& frame, const Image<Tev8u>& mask) {
    EXPECT_EQ(Members<channels>::update(frame.data(), frame.step(), mask.data(), mask.step(), &unusedByte, 0,
                                        frame.size(), state_),
              tevStatusOk);
  }
  // A whole step of the model's use.
  Image<Tev8u> see(const Image<Tev8u, channels>& frame) {
    auto mask = detect(frame);
    update(frame, mask);
    return mask;
  }
  State* state() { return state_; }
  State* operator->() { return state_; }
  Record& record(int pixel) { return static_cast<Record*>(state_->pixels)[pixel]; }

 private:
  State* state_ = nullptr;
};

using Wide = long double;

float rounded(Wide v) { return static_cast<float>(v); }

// The model by its definition.
template <int channels>
class Oracle {
 public:
  struct Cell {
    float colorP = 0, pairP = 0;
    bool colorLearned = false, pairLearned = false;
    std::array<Color, 25> colors = {};
    std::array<Pair, 40> pairs = {};
  };
  std::vector<Cell> cells;
  std::vector<int> background, previous;  // channel by channel
  Image<Tev8u> change, difference;
  int judged[2][2] = {};  // pairs, colours; by outcome: how often tables decided
  int turned[2] = {};     // how often tables were turned to the other hypothesis

  explicit Oracle(const Image<Tev8u, channels>& first)
      : cells(first.width() * first.height()),
        change(first.width(), first.height()),
        difference(first.width(), first.height()) {
    background = previous = values(first);
  }

  Image<Tev8u> detect(const Image<Tev8u, channels>& frame) {
    mark(frame, previous, change);
    mark(frame, background, difference);
    Image<Tev8u> mask(frame.width(), frame.height());
    for (int y = 0; y < frame.height(); ++y)
      for (int x = 0; x < frame.width(); ++x) mask.set(x, y, decide(frame, x, y));
    return mask;
  }

  void update(const Image<Tev8u, channels>& frame, const Image<Tev8u>& mask) {
    const auto now = values(frame);
    for (int i = 0; i < static_cast<int>(cells.size()); ++i) {
      const int x = i % frame.width(), y = i / frame.width();
      const bool foreground = mask.at(x, y) != 0;
      learnPair(cells[i], &previous[i * channels], &now[i * channels], change.at(x, y) != 0, foreground);
      if (change.at(x, y) == 0) learnColor(cells[i], &now[i * channels], foreground);
      if (foreground) continue;
      for (int c = 0; c < channels; ++c) {
        int& b = background[i * channels + c];
        const int v = now[i * channels + c];
        b = change.at(x, y) || difference.at(x, y) ? v : static_cast<int>((1 - Wide{0.1F}) * b + Wide{0.1F} * v);
      }
    }
    previous = now;
  }

 private:
  static std::vector<int> values(const Image<Tev8u, channels>& image) {
    std::vector<int> all;
    for (int y = 0; y < image.height(); ++y)
      for (int i = 0; i < image.width() * channels; ++i) all.push_back(image.get(i, y));
    return all;
  }

  static void mark(const Image<Tev8u, channels>& frame, const std::vector<int>& other, Image<Tev8u>& mask) {
    const auto now = values(frame);
    double histogram[256] = {};
    for (size_t i = 0; i < now.size(); ++i) ++histogram[std::abs(now[i] - other[i])];
    Wide threshold = 10;
    for (int t = 254; t >= 0; --t) {
      Wide sum = 0, squares = 0;
      int count = 0;
      for (int i = t; i < 256; ++i) {
        count = static_cast<int>(count + histogram[i]);
        sum += i * histogram[i];
        squares += i * i * histogram[i];
      }
      if (count == 0) count = 1;
      const Wide sd = std::sqrt(squares / count - sum / count * (sum / count));
      if (sd > threshold) threshold = sd;
    }
    for (int i = 0; i < frame.width() * frame.height(); ++i) {
      bool differs = false;
      for (int c = 0; c < channels; ++c)
        differs |= std::abs(now[i * channels + c] - other[i * channels + c]) > threshold;
      mask.set(i % frame.width(), i / frame.width(), differs ? 255 : 0);
    }
  }

  Tev8u decide(const Image<Tev8u, channels>& frame, int x, int y) {
    const Cell& cell = cells[y * frame.width() + x];
    Wide p = 0, pb = 0;
    if (change.at(x, y)) {
      if (!cell.pairLearned) return 255;
      const auto memory = frame.bytes();
      for (int i = 0; i < 25 && cell.pairs[i].prob > 0.005F; ++i) {
        bool matches = true;
        for (int k = 0; k < 3; ++k) {
          const size_t at = static_cast<size_t>(y) * frame.step() + x * channels + k;
          matches &= std::abs(cell.pairs[i].colors[k] - memory[std::min(at, memory.size() - 1)]) <= 8;
        }
        if (matches) p += cell.pairs[i].prob, pb += cell.pairs[i].backgroundProb;
      }
      const bool foreground = 2 * pb * cell.pairP <= p;
      ++judged[0][foreground];
      return foreground ? 255 : 0;
    }
    if (!difference.at(x, y) || !cell.colorLearned) return 0;
    for (int i = 0; i < 15 && cell.colors[i].prob > 0.005F; ++i) {
      bool matches = true;
      for (int c = 0; c < channels; ++c) matches &= std::abs(cell.colors[i].color[c] - frame.at(x, y, c)) <= 4;
      if (matches) p += cell.colors[i].prob, pb += cell.colors[i].backgroundProb;
    }
    const bool foreground = 2 * pb * cell.colorP <= p;
    ++judged[1][foreground];
    return foreground ? 255 : 0;
  }

  void learnPair(Cell& cell, const int* before, const int* after, bool changed, bool foreground) {
    if (!changed && cell.pairLearned) return;
    const float a = cell.pairLearned ? 0.005F : 0.1F;
    const Wide om = 1 - Wide{a};
    cell.pairP = rounded(cell.pairP * om);
    if (!foreground) cell.pairP = rounded(Wide{cell.pairP} + a);
    auto& t = cell.pairs;
    for (int i = 0; i < 40; ++i) {
      if (t[i].prob == 0) break;
      t[i].prob = rounded(t[i].prob * om);
      t[i].backgroundProb = rounded(t[i].backgroundProb * om);
      if (t[i].prob < 1e-10) {
        t[i].prob = t[i].backgroundProb = 0;
        continue;
      }
      bool near = true;
      for (int c = 0; c < channels; ++c)
        near &= std::abs(t[i].colors[c] - before[c]) <= 8 && std::abs(t[i].colors[channels + c] - after[c]) <= 8;
      if (!near) break;
    }
    t[39].prob = t[39].backgroundProb = a;
    for (int c = 0; c < channels; ++c) {
      t[39].colors[c] = static_cast<Tev8u>(before[c]);
      t[39].colors[channels + c] = static_cast<Tev8u>(after[c]);
    }
    settle(t, 25, a, cell.pairLearned, cell.pairP, 0);
  }

  void learnColor(Cell& cell, const int* now, bool foreground) {
    const float a = cell.colorLearned ? 0.005F : 0.1F;
    const Wide om = 1 - Wide{a};
    cell.colorP = rounded(cell.colorP * om);
    if (!foreground) cell.colorP = rounded(Wide{cell.colorP} + a);
    auto& t = cell.colors;
    for (int i = 0; i < 25; ++i) {
      t[i].prob = rounded(t[i].prob * om);
      t[i].backgroundProb = rounded(t[i].backgroundProb * om);
      if (t[i].prob < 1e-10) {
        t[i].prob = t[i].backgroundProb = 0;
        continue;
      }
      bool near = true;
      for (int c = 0; c < channels; ++c) near &= std::abs(t[i].color[c] - now[c]) <= 4;
      if (!near) break;
    }
    t[24].prob = t[24].backgroundProb = a;
    for (int c = 0; c < channels; ++c) t[24].color[c] = static_cast<Tev8u>(now[c]);
    if (settle(t, 15, a, cell.colorLearned, cell.colorP, 1)) cell.colorP = rounded(1 - Wide{cell.colorP});
  }

  // Sorts the new last entry in, and looks at what the first `peek` entries add up to.
  template <class Table>
  bool settle(Table& t, int peek, float a, bool& learned, float p0, int kind) {
    const auto last = t.back();
    for (size_t i = 0; i < t.size(); ++i)
      if (a >= t[i].prob) {
        for (size_t k = t.size() - 1; k > i; --k) t[k] = t[k - 1];
        t[i] = last;
        break;
      }
    Wide p = 0, pb = 0;
    for (int i = 0; i < peek && t[i].prob != 0; ++i) p += t[i].prob, pb += t[i].backgroundProb;
    if (0.9F < p) learned = true;
    if (!(0.9F < p - pb * p0)) return false;
    ++turned[kind];
    for (int i = 0; i < peek && t[i].prob != 0; ++i)
      t[i].backgroundProb = rounded((t[i].prob - Wide{t[i].backgroundProb} * p0) / (1 - Wide{p0}));
    return true;
  }
};

template <class E>
bool sameEntries(const E* a, const E* b, int count, int bytes) {
  for (int i = 0; i < count; ++i)
    if (!kit::sameBits(a[i].prob, b[i].prob) || !kit::sameBits(a[i].backgroundProb, b[i].backgroundProb) ||
        std::memcmp(reinterpret_cast<const char*>(a + i) + 8, reinterpret_cast<const char*>(b + i) + 8, bytes) != 0)
      return false;
  return true;
}

Image<Tev8u> uniform(int width, int height, int value) {
  Image<Tev8u> image(width, height);
  image.fill(static_cast<Tev8u>(value));
  return image;
}

}  // namespace

TYPED_TEST(ForegroundHistogram, EqualsTheDefinitionOver250Frames) {
  constexpr int channels = TypeParam::value;
  Random random;
  const int width = 32, height = 6;
  const auto first = scene::frame<channels>(0, width, height, random);
  Model<channels> model(first);
  Oracle<channels> oracle(first);
  for (int f = 1; f <= 250; ++f) {
    const auto frame = scene::frame<channels>(f, width, height, random);
    auto mask = model.detect(frame);
    const auto expected = oracle.detect(frame);
    for (int i = 0; i < width * height; ++i) {
      ASSERT_EQ(model->changeMask[i], oracle.change.at(i % width, i / width));
      ASSERT_EQ(model->backgroundDiffMask[i], oracle.difference.at(i % width, i / width));
    }
    ASSERT_SAME_IMAGE(mask, expected) << "frame " << f;
    // The caller cleans the mask: what flickers is background, the first columns are something that has come to stay,
    // and here and there a pixel is set right or wrong.
    for (int i = 0; i < width * height; ++i) {
      if (i % width * 4 / width == 2) mask.set(i % width, i / width, 0);
      if (i % width < 3) mask.set(i % width, i / width, 255);
      if (random.oneIn(20)) mask.set(i % width, i / width, static_cast<Tev8u>(random.between(0, 2)));
    }
    model.update(frame, mask);
    oracle.update(frame, mask);
    for (int i = 0; i < width * height; ++i) {
      const Record& record = model.record(i);
      const auto& cell = oracle.cells[i];
      ASSERT_TRUE(kit::sameBits(record.colorBackgroundProb, cell.colorP)) << "frame " << f << ", pixel " << i;
      ASSERT_TRUE(kit::sameBits(record.pairBackgroundProb, cell.pairP)) << "frame " << f << ", pixel " << i;
      ASSERT_EQ(record.colorLearned, cell.colorLearned) << "frame " << f << ", pixel " << i;
      ASSERT_EQ(record.pairLearned, cell.pairLearned) << "frame " << f << ", pixel " << i;
      ASSERT_TRUE(sameEntries(record.colorTable, cell.colors.data(), 25, 3)) << "frame " << f << ", pixel " << i;
      ASSERT_TRUE(sameEntries(record.pairTable, cell.pairs.data(), 40, 6)) << "frame " << f << ", pixel " << i;
      for (int c = 0; c < channels; ++c) {
        ASSERT_EQ(model->background[i * channels + c], oracle.background[i * channels + c]);
        ASSERT_EQ(model->previous[i * channels + c], frame.at(i % width, i / width, c));
      }
    }
  }
  // The scene takes the model through all of its decisions.
  EXPECT_GT(oracle.judged[0][0], 0) << "pairs that are background";
  EXPECT_GT(oracle.judged[0][1], 0) << "pairs that are foreground";
  EXPECT_GT(oracle.judged[1][0], 0) << "colours that are background";
  EXPECT_GT(oracle.judged[1][1], 0) << "colours that are foreground";
  EXPECT_GT(oracle.turned[0], 0) << "pairs turned to the other hypothesis";
  EXPECT_GT(oracle.turned[1], 0) << "colours turned to the other hypothesis";
}

TYPED_TEST(ForegroundHistogram, StartsFromTheFirstFrameAndKnowsNothing) {
  constexpr int channels = TypeParam::value;
  Random random;
  const auto first = random.image<Tev8u, channels>(5, 3);
  Model<channels> model(first);
  EXPECT_EQ(model->backgroundStep, 5 * channels);
  EXPECT_EQ(model->changeStep, 5);
  EXPECT_EQ(model->backgroundDiffStep, 5);
  EXPECT_EQ(model->previousStep, 5 * channels);
  EXPECT_EQ(model->colorLevels, 128);
  EXPECT_EQ(model->colorPeek, 15);
  EXPECT_EQ(model->colorEntries, 25);
  EXPECT_EQ(model->pairLevels, 64);
  EXPECT_EQ(model->pairPeek, 25);
  EXPECT_EQ(model->pairEntries, 40);
  EXPECT_EQ(model->unusedFlags[0] + model->unusedFlags[1], 2);
  EXPECT_EQ(model->backgroundAlpha, 0.1F);
  EXPECT_EQ(model->slowAlpha, 0.005F);
  EXPECT_EQ(model->fastAlpha, 0.1F);
  EXPECT_EQ(model->delta, 2.0F);
  EXPECT_EQ(model->learnedThreshold, 0.9F);
  EXPECT_EQ(model->unusedFactor, 0.0F);
  for (int i = 0; i < 15; ++i) {
    EXPECT_EQ(model.record(i).colorTable, model.record(0).colorTable + 25 * i);
    EXPECT_EQ(model.record(i).pairTable, model.record(0).pairTable + 40 * i);
    EXPECT_EQ(model.record(i).colorTable[0].prob, 0);
    EXPECT_EQ(model.record(i).colorLearned + model.record(i).pairLearned, 0);
    for (int c = 0; c < channels; ++c) {
      EXPECT_EQ(model->background[i * channels + c], first.at(i % 5, i / 5, c));
      EXPECT_EQ(model->previous[i * channels + c], first.at(i % 5, i / 5, c));
    }
  }
}

TYPED_TEST(ForegroundHistogram, AFrameEqualToThePreviousOneAndTheBackgroundIsAllBackground) {
  constexpr int channels = TypeParam::value;
  Random random;
  const auto frame = random.image<Tev8u, channels>(9, 4);
  Model<channels> model(frame);
  EXPECT_SAME_IMAGE(model.detect(frame), uniform(9, 4, 0));
}

// All differences but one are 0: the threshold is 10.
TEST(ForegroundHistogramExample, ADifferenceOfTenIsNoise) {
  Model<1> model(uniform(40, 10, 100));
  auto frame = uniform(40, 10, 100);
  frame.set(3, 3, 110);
  frame.set(4, 4, 89);
  auto expected = uniform(40, 10, 0);
  expected.set(4, 4, 255);
  EXPECT_SAME_IMAGE(model.detect(frame), expected);
}

// Half of the pixels differ by 24: the standard deviation of all differences is 12, and of 13 it is less.
TEST(ForegroundHistogramExample, TheThresholdFollowsTheSpreadOfTheDifferences) {
  for (int step : {24, 26}) {
    Model<1> model(uniform(4, 1, 100));
    const auto frame = grid<Tev8u>({{100, 100, static_cast<Tev8u>(100 + step), static_cast<Tev8u>(100 - step)}});
    EXPECT_SAME_IMAGE(model.detect(frame), grid<Tev8u>({{0, 0, 255, 255}}));
  }
  Model<1> model(uniform(8, 1, 100));
  EXPECT_SAME_IMAGE(model.detect(grid<Tev8u>({{100, 100, 100, 100, 200, 200, 200, 149}})),
                    grid<Tev8u>({{0, 0, 0, 0, 255, 255, 255, 255}}));
  EXPECT_SAME_IMAGE(model.detect(grid<Tev8u>({{100, 100, 100, 100, 200, 200, 200, 145}})),
                    grid<Tev8u>({{0, 0, 0, 0, 255, 255, 255, 0}}));
}

TEST(ForegroundHistogramExample, AChangedPixelIsForegroundUntilItsPairsAreLearned) {
  Model<1> model(uniform(8, 8, 100));
  auto frame = uniform(8, 8, 100);
  frame.set(2, 5, 200);
  EXPECT_EQ(model.see(frame).at(2, 5), 255);
  EXPECT_EQ(model.see(uniform(8, 8, 100)).at(2, 5), 255);
}

TEST(ForegroundHistogramExample, APixelThatOnlyDiffersFromTheBackgroundIsBackgroundUntilItsColoursAreLearned) {
  Model<1> model(uniform(8, 8, 100));
  auto frame = uniform(8, 8, 100);
  frame.set(2, 5, 200);
  EXPECT_EQ(model.see(frame).at(2, 5), 255);  // changed
  EXPECT_EQ(model.see(frame).at(2, 5), 0);
  EXPECT_EQ(model->backgroundDiffMask[5 * 8 + 2], 255);
}

TEST(ForegroundHistogramExample, ProbabilitiesOfSlowAlphaAndLessAreNotCounted) {
  for (const float prob : {0.005F, 0.0051F}) {
    Model<1> model(uniform(8, 8, 100));
    auto frame = uniform(8, 8, 100);
    frame.set(0, 0, 200);
    model.see(frame);
    Record& record = model.record(0);
    record.colorLearned = 1;
    record.colorBackgroundProb = 1;
    record.colorTable[0] = {prob, prob, {200, 0, 0, 0}};
    EXPECT_EQ(model.detect(frame).at(0, 0), prob == 0.005F ? 255 : 0);
  }
}

TEST(ForegroundHistogramExample, AnEntryOfEqualProbabilityGoesInFront) {
  Model<1> model(uniform(1, 1, 100));
  Record& record = model.record(0);
  record.colorLearned = record.pairLearned = 1;
  record.colorTable[0] = {0.5F, 0.5F, {10, 0, 0, 0}};
  record.colorTable[1] = {0.005F, 0.1F, {20, 0, 0, 0}};
  record.colorTable[24] = {0.001F, 0.1F, {30, 0, 0, 0}};
  model.see(uniform(1, 1, 100));
  EXPECT_EQ(record.colorTable[1].color[0], 100);
  EXPECT_EQ(record.colorTable[1].prob, 0.005F);
  EXPECT_EQ(record.colorTable[2].color[0], 20);
  EXPECT_EQ(record.colorTable[24].prob, 0);  // the former last entry is lost, the one before it was free
}

TEST(ForegroundHistogramExample, OnlyTheEntriesUpToTheFirstOtherColourFade) {
  Model<1> model(uniform(1, 1, 100));
  Record& record = model.record(0);
  record.colorLearned = record.pairLearned = 1;
  record.colorTable[0] = {0.25F, 0.25F, {96, 0, 0, 0}};
  record.colorTable[1] = {0.25F, 0.25F, {105, 0, 0, 0}};
  record.colorTable[2] = {0.25F, 0.25F, {100, 0, 0, 0}};
  model.see(uniform(1, 1, 100));
  EXPECT_LT(record.colorTable[0].prob, 0.25F);
  EXPECT_LT(record.colorTable[1].prob, 0.25F);
  EXPECT_EQ(record.colorTable[2].prob, 0.25F);
}

// A free place ends the walk over pairs, not the one over colours.
TEST(ForegroundHistogramExample, TheWalkOverColoursPassesFreePlaces) {
  Model<1> model(uniform(1, 1, 100));
  Record& record = model.record(0);
  record.colorTable[1] = {0.5F, 0.5F, {100, 0, 0, 0}};
  record.pairTable[1] = {0.5F, 0.5F, {100, 100}};
  model.see(uniform(1, 1, 100));
  EXPECT_EQ(record.colorTable[0].prob, 0.1F);  // a = 0.1 goes in front of the free place
  EXPECT_EQ(record.colorTable[2].prob, 0.45F);
  EXPECT_EQ(record.pairTable[2].prob, 0.5F);
}

TEST(ForegroundHistogramExample, ProbabilitiesBelowTenToTheMinusTenBecomeZero) {
  Model<1> model(uniform(1, 1, 100));
  Record& record = model.record(0);
  record.colorTable[0] = {1.05e-10F, 0.5F, {100, 0, 0, 0}};
  record.colorTable[1] = {1.2e-10F, 0.5F, {100, 0, 0, 0}};
  model.see(uniform(1, 1, 100));
  EXPECT_EQ(record.colorTable[1].prob, 0);
  EXPECT_EQ(record.colorTable[1].backgroundProb, 0);
  EXPECT_GT(record.colorTable[2].prob, 1e-10F);
}

TEST(ForegroundHistogramExample, OnlyColoursTurnThePixelsShareOfBackground) {
  Model<1> model(uniform(1, 1, 100));
  Record& record = model.record(0);
  record.colorTable[0] = {1, 0.25F, {0, 0, 0, 0}};
  record.pairTable[0] = {1, 0.25F, {0, 0}};
  record.colorBackgroundProb = record.pairBackgroundProb = 0.25F;
  const auto foreground = uniform(1, 1, 255);
  model.detect(uniform(1, 1, 100));
  model.update(uniform(1, 1, 100), foreground);
  const float faded = static_cast<float>(0.25L * (1 - Wide{0.1F}));
  EXPECT_EQ(record.pairBackgroundProb, faded);
  EXPECT_EQ(record.colorBackgroundProb, 1 - faded);
  EXPECT_EQ(record.colorLearned, 1);
  EXPECT_GT(record.colorTable[0].backgroundProb, 0.9F);
  EXPECT_EQ(record.colorTable[0].backgroundProb, record.pairTable[0].backgroundProb);
}

TEST(ForegroundHistogramExample, ABackgroundThatStaysTheSameDoesNotFade) {
  Image<Tev8u> ramp(256, 1);
  for (int x = 0; x < 256; ++x) ramp.set(x, 0, static_cast<Tev8u>(x));
  Model<1> model(ramp);
  for (int f = 0; f < 20; ++f) model.see(ramp);
  for (int x = 0; x < 256; ++x) EXPECT_EQ(model->background[x], x);
}

TEST(ForegroundHistogramExample, TheBackgroundFollowsByATenthAndJumpsWhereSomethingChanged) {
  Model<1> model(uniform(3, 1, 100));
  const auto frame = grid<Tev8u>({{109, 200, 200}});
  model.detect(frame);
  model.update(frame, grid<Tev8u>({{0, 0, 1}}));
  EXPECT_EQ(model->background[0], 100);  // 100.9, cut off
  EXPECT_EQ(model->background[1], 200);
  EXPECT_EQ(model->background[2], 100);
}

// With one channel a pair is compared with the pixel's byte and the two behind it in the row: an entry of colours 200
// (before) and 50 (after) matches where the row reads 200, 50, 0. Past the region's end its last byte is read again.
TEST(ForegroundHistogramExample, OneChannelPairsAreComparedWithThreeBytesOfTheRow) {
  const int width = 30;
  for (const bool atTheEnd : {false, true}) {
    const int x = atTheEnd ? width - 2 : 20;
    Model<1> model(uniform(width, 2, 0));
    Image<Tev8u> frame = uniform(width, 2, 0);
    frame.set(x, 1, 200);
    frame.set(x + 1, 1, 50);
    Record& record = model.record(width + x);
    record.pairLearned = 1;
    record.pairBackgroundProb = 1;
    record.pairTable[0] = {0.9F, 0.9F, {200, 50, 0}};
    EXPECT_EQ(model.detect(frame).at(x, 1), atTheEnd ? 255 : 0);
    record.pairTable[0].colors[2] = 50;
    EXPECT_EQ(model.detect(frame).at(x, 1), atTheEnd ? 0 : 255);
  }
}

TYPED_TEST(ForegroundHistogram, StaysInsideASinglePixelAndSingleLines) {
  constexpr int channels = TypeParam::value;
  Random random;
  for (const TevSize size : {TevSize{1, 1}, TevSize{2, 1}, TevSize{1, 9}, TevSize{9, 1}}) {
    const auto draw = [&] {
      Image<Tev8u, channels> image(size.width, size.height);
      for (int y = 0; y < size.height; ++y)
        for (int i = 0; i < size.width * channels; ++i) image.set(i, y, random.value<Tev8u>());
      return image;
    };
    const auto first = draw();
    Model<channels> model(first);
    Oracle<channels> oracle(first);
    for (int f = 0; f < 60; ++f) {
      const auto frame = draw();
      const auto mask = model.detect(frame);
      ASSERT_SAME_IMAGE(mask, oracle.detect(frame));
      model.update(frame, mask);
      oracle.update(frame, mask);
    }
  }
}

TYPED_TEST(ForegroundHistogram, TakesEightBlocksOfTheSizesThatProgramsCountOn) {
  constexpr int channels = TypeParam::value;
  const Image<Tev8u, channels> first(64, 48);
  const size_t pixels = 64 * 48, overhead = 32 + sizeof(void*);
  AllocatorWatch watch;
  {
    Model<channels> model(first);
    EXPECT_EQ(watch.requests(), 8);
    EXPECT_EQ(watch.bytesHeld(),
              sizeof(State) + pixels * (sizeof(Record) + 300 + 640 + 2 * channels + 2) + 8 * overhead);
    model.see(first);
    EXPECT_EQ(watch.requests(), 8);
  }
  EXPECT_EQ(watch.blocksHeld(), 0);
  EXPECT_EQ(watch.strangersFreed(), 0);
}

TEST(ForegroundHistogramRecord, HasItsFieldsWhereProgramsReadThem) {
  const std::vector<size_t> offsets = {
      offsetof(State, background),  offsetof(State, backgroundStep),     offsetof(State, changeMask),
      offsetof(State, changeStep),  offsetof(State, backgroundDiffMask), offsetof(State, backgroundDiffStep),
      offsetof(State, previous),    offsetof(State, previousStep),       offsetof(State, unusedWords),
      offsetof(State, pixels),      offsetof(State, colorLevels),        offsetof(State, pairEntries),
      offsetof(State, unusedFlags), offsetof(State, backgroundAlpha),    offsetof(State, learnedThreshold),
      offsetof(State, unusedFactor)};
  const std::vector<size_t> of32Bits = {0, 4, 8, 12, 16, 20, 24, 28, 32, 40, 44, 64, 68, 76, 92, 96};
  const std::vector<size_t> of64Bits = {0, 8, 16, 24, 32, 40, 48, 56, 60, 72, 80, 100, 104, 112, 128, 132};
  EXPECT_EQ(offsets, sizeof(void*) == 4 ? of32Bits : of64Bits);
  EXPECT_EQ(sizeof(State), sizeof(void*) == 4 ? 100U : 136U);
}

TYPED_TEST(ForegroundHistogram, FreesWhatItHasWhenAnAllocationFails) {
  constexpr int channels = TypeParam::value;
  const Image<Tev8u, channels> first(6, 5);
  State* state = nullptr;
  for (int failAt = 0; failAt < 8; ++failAt) {
    AllocatorWatch watch(failAt);
    EXPECT_FAILS(tevStatusNoMemory,
                 Members<channels>::init(first.data(), first.step(), first.size(), &unusedByte, &state), state);
    EXPECT_EQ(watch.requests(), failAt + 1);
    EXPECT_EQ(watch.blocksHeld(), 0);
    EXPECT_EQ(watch.strangersFreed(), 0);
  }
}

TYPED_TEST(ForegroundHistogram, AModelTooLargeForTheAllocatorIsNoMemory) {
  constexpr int channels = TypeParam::value;
  const Image<Tev8u, channels> first(6, 5);
  State* state = nullptr;
  AllocatorWatch watch;
  for (const TevSize roi : {TevSize{1 << 15, 1 << 16}, TevSize{1 << 29, 1 << 29}, TevSize{1 << 14, 1 << 14}})
    EXPECT_FAILS(tevStatusNoMemory,
                 Members<channels>::init(first.data(), roi.width * channels, roi, &unusedByte, &state), state);
  EXPECT_EQ(watch.blocksHeld(), 0);
}

// A region smaller than the model is its top left part; the rest stays as it is.
TYPED_TEST(ForegroundHistogram, ASmallerRegionUsesTheTopLeftPartOfTheModel) {
  constexpr int channels = TypeParam::value;
  Random random;
  const int width = 16, height = 9;
  const TevSize part = {11, 6};
  const auto first = random.image<Tev8u, channels>(width, height);
  Image<Tev8u, channels> firstPart(part.width, part.height);
  for (int y = 0; y < part.height; ++y)
    for (int i = 0; i < part.width * channels; ++i) firstPart.set(i, y, first.get(i, y));
  Model<channels> model(first);
  Oracle<channels> oracle(firstPart);
  for (int f = 1; f < 40; ++f) {
    const auto frame = scene::frame<channels>(f, part.width, part.height, random);
    const auto mask = model.see(frame);
    ASSERT_SAME_IMAGE(mask, oracle.detect(frame));
    oracle.update(frame, mask);
    for (int i = 0; i < width * height; ++i) {
      const int x = i % width, y = i / width;
      if (x < part.width && y < part.height) {
        const auto& cell = oracle.cells[y * part.width + x];
        ASSERT_TRUE(sameEntries(model.record(i).pairTable, cell.pairs.data(), 40, 6));
      } else {
        ASSERT_EQ(model.record(i).pairTable[0].prob, 0);
        for (int c = 0; c < channels; ++c) ASSERT_EQ(model->previous[i * channels + c], first.at(x, y, c));
      }
    }
  }
}

TYPED_TEST(ForegroundHistogram, ChecksPointersThenSizeThenTheStepOfTheFrame) {
  constexpr int channels = TypeParam::value;
  using M = Members<channels>;
  Image<Tev8u, channels> a(6, 4);
  a.fill(9);
  Image<Tev8u> d(6, 4);
  d.fill(0);
  const int s = a.step();
  Tev8u* const ref = &unusedByte;
  State* state = nullptr;
  EXPECT_FAILS(tevStatusNullPtr, M::init(nullptr, 0, {0, 4}, ref, &state), state);
  EXPECT_FAILS(tevStatusNullPtr, M::init(a.data(), s, {6, 0}, nullptr, &state), state);
  EXPECT_FAILS(tevStatusNullPtr, M::init(a.data(), s, {6, 4}, ref, nullptr), state);
  EXPECT_FAILS(tevStatusBadSize, M::init(a.data(), 0, {0, 4}, ref, &state), state);
  EXPECT_FAILS(tevStatusBadSize, M::init(a.data(), s, {6, -1}, ref, &state), state);
  EXPECT_FAILS(tevStatusBadStep, M::init(a.data(), s - 1, {6, 4}, ref, &state), state);
  EXPECT_FAILS(tevStatusBadStep, M::init(a.data(), s, {0x7fffffff, 4}, ref, &state), state);

  Model<channels> model(a);
  State& m = *model.state();
  Record& r = model.record(0);
  EXPECT_FAILS(tevStatusNullPtr, M::detect(nullptr, 0, d.data(), 6, {0, 4}, &m), d, m);
  EXPECT_FAILS(tevStatusNullPtr, M::detect(a.data(), s, nullptr, 6, {6, 0}, &m), d, m);
  EXPECT_FAILS(tevStatusNullPtr, M::detect(a.data(), s, d.data(), 6, {6, 4}, nullptr), d);
  EXPECT_FAILS(tevStatusBadSize, M::detect(a.data(), 0, d.data(), 6, {0, 4}, &m), d, m);
  EXPECT_FAILS(tevStatusBadSize, M::detect(a.data(), 0, d.data(), 6, {6, 0}, &m), d, m);
  EXPECT_FAILS(tevStatusBadStep, M::detect(a.data(), s - 1, d.data(), 6, {6, 4}, &m), d, m);

  EXPECT_FAILS(tevStatusNullPtr, M::update(nullptr, 0, d.data(), 6, ref, 0, {0, 4}, &m), m, r);
  EXPECT_FAILS(tevStatusNullPtr, M::update(a.data(), s, nullptr, 6, ref, 0, {6, 4}, &m), m, r);
  EXPECT_FAILS(tevStatusNullPtr, M::update(a.data(), s, d.data(), 6, nullptr, 0, {6, 4}, &m), m, r);
  EXPECT_FAILS(tevStatusNullPtr, M::update(a.data(), s, d.data(), 6, ref, 0, {6, 4}, nullptr), m, r);
  EXPECT_FAILS(tevStatusBadSize, M::update(a.data(), 0, d.data(), 6, ref, 0, {0, 4}, &m), m, r);
  EXPECT_FAILS(tevStatusBadSize, M::update(a.data(), 0, d.data(), 6, ref, 0, {6, -2}, &m), m, r);
  EXPECT_FAILS(tevStatusBadStep, M::update(a.data(), s - 1, d.data(), 6, ref, 0, {6, 4}, &m), m, r);
  EXPECT_EQ(M::update(a.data(), s, d.data(), 6, ref, -1, {6, 4}, &m), tevStatusOk);
  EXPECT_EQ(unusedByte, 0);
  EXPECT_EQ(M::release(nullptr), tevStatusNullPtr);
}
