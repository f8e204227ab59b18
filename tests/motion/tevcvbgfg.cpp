#include <cstddef>
#include <cstring>
#include <utility>

#include "kit/kit.h"
#include "motion/scene.h"
#include "tevcv/memory.h"
#include "tevcv/motion.h"

using kit::AllocatorWatch;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using State = TevForegroundGaussianState;

// The members of one channel count under one name.
template <int channels>
struct Members;
template <>
struct Members<1> {
  static constexpr auto init = teviForegroundGaussianInitAlloc_8u_C1R;
  static constexpr auto update = teviForegroundGaussian_8u_C1R;
  static constexpr auto release = teviForegroundGaussianFree_8u_C1R;
};
template <>
struct Members<3> {
  static constexpr auto init = teviForegroundGaussianInitAlloc_8u_C3R;
  static constexpr auto update = teviForegroundGaussian_8u_C3R;
  static constexpr auto release = teviForegroundGaussianFree_8u_C3R;
};

template <class T>
class ForegroundGaussian : public testing::Test {};
using Channels = testing::Types<std::integral_constant<int, 1>, std::integral_constant<int, 3>>;
TYPED_TEST_SUITE(ForegroundGaussian, Channels);

Tev8u unusedByte;

// A model that is freed to the last byte.
template <int channels>
class Model {
 public:
  explicit Model(const Image<Tev8u, channels>& first) {
    EXPECT_EQ(Members<channels>::init(first.data(), first.step(), first.size(), &unusedByte, &state_), tevStatusOk);
  }
  ~Model() {
    void* const modes = state_->pixels[0];
    EXPECT_EQ(Members<channels>::release(state_), tevStatusOk);
    tevsFree(modes);
    tevsFree(state_);
  }
  Image<Tev8u> update(const Image<Tev8u, channels>& frame) {
    Image<Tev8u> mask(frame.width(), frame.height(), 3);
    EXPECT_EQ(Members<channels>::update(frame.data(), frame.step(), &unusedByte, 0, mask.data(), mask.step(),
                                        frame.size(), state_),
              tevStatusOk);
    return mask;
  }
  State* state() { return state_; }
  State* operator->() { return state_; }

 private:
  State* state_ = nullptr;
};

// A mode as the record holds it, byte after byte.
template <int channels>
struct Mode {
  int count = 0;
  double weight = 0, variance[channels] = {}, mean[channels] = {};
};

template <int channels>
Mode<channels> modeOf(const State* state, int pixel, int k) {
  constexpr int bytes = 12 + 16 * channels;
  const auto* const record = static_cast<unsigned char*>(state->pixels[pixel]) + k * bytes;
  Mode<channels> mode;
  std::memcpy(&mode.count, record, 4);
  std::memcpy(&mode.weight, record + 4, 8);
  std::memcpy(mode.variance, record + 12, 8 * channels);
  std::memcpy(mode.mean, record + 12 + 8 * channels, 8 * channels);
  return mode;
}

template <int channels>
bool sameMode(const Mode<channels>& a, const Mode<channels>& b) {
  return a.count == b.count && kit::sameBits(a.weight, b.weight) &&
         std::memcmp(a.variance, b.variance, sizeof a.variance) == 0 && std::memcmp(a.mean, b.mean, sizeof a.mean) == 0;
}

// The model by its definition, one pixel.
template <int channels>
struct Oracle {
  Mode<channels> modes[5];
  Tev8u background[channels];

  void create(const Tev8u* x) {
    for (int k = 0; k < 5; ++k) {
      modes[k].count = k == 0;
      modes[k].weight = k == 0;
      for (int c = 0; c < channels; ++c) modes[k].variance[c] = 12.5, modes[k].mean[c] = k == 0 ? x[c] : 0;
    }
  }

  Tev8u update(const Tev8u* x, int frameCount) {
    using L = long double;
    int match[5] = {};
    bool any = false;
    for (int k = 0; k < 5 && !any; ++k) {
      L variance = 0, distance = 0;
      for (int c = 0; c < channels; ++c) {
        variance += modes[k].variance[c];
        distance += (L{modes[k].mean[c]} - x[c]) * (L{modes[k].mean[c]} - x[c]);
      }
      if (variance * 6.25L > distance) match[k] = 1, any = true;
    }

    const bool fixedWindow = frameCount == 200;
    L sum = 0;
    for (const auto& m : modes) sum += m.count;
    const L rate = fixedWindow ? 1 / L{200} : 1 / (sum + 1);
    for (int k = 0; k < 5; ++k) {
      auto& m = modes[k];
      if (!fixedWindow) m.count += match[k];
      m.weight = static_cast<double>(m.weight + (match[k] - L{m.weight}) * rate);
      if (!match[k]) continue;
      const L rho = 1 / (200 * L{m.weight});
      for (int c = 0; c < channels; ++c) {
        const L d = x[c] - L{m.mean[c]}, v = d * d - L{m.variance[c]};
        m.mean[c] = static_cast<double>(m.mean[c] + (fixedWindow ? d * rho : d / m.count));
        m.variance[c] = static_cast<double>(m.variance[c] + (fixedWindow ? v * rho : v / m.count));
      }
    }
    if (!any) {
      modes[4].count = 1;
      for (int c = 0; c < channels; ++c) modes[4].variance[c] = 900, modes[4].mean[c] = x[c];
      sum = 0;
      for (const auto& m : modes) sum += m.count;
      for (int k = 0; k < 5; ++k) {
        if (!fixedWindow)
          modes[k].weight = static_cast<double>(modes[k].count / sum);
        else if (k < 4)
          modes[k].weight = static_cast<double>(modes[k].weight * (1 - 1 / L{200}));
        else
          modes[k].weight = static_cast<double>(1 / sum);
      }
    }

    const auto key = [](const Mode<channels>& m) {
      L variance = 0;
      for (double v : m.variance) variance += v;
      return m.count > 0 ? m.weight / std::sqrt(variance) : L{0};
    };
    for (int k = 1; k < 5; ++k)
      for (int i = k; i > 0 && key(modes[i - 1]) < key(modes[i]); --i) std::swap(modes[i - 1], modes[i]);
    for (int c = 0; c < channels; ++c) background[c] = static_cast<Tev8u>(std::floor(modes[0].mean[c] + 0.5L));

    L cumulated = 0;
    for (int k = 0; k < 5; ++k) {
      cumulated += modes[k].weight;
      if (match[k]) return 0;
      if (cumulated > 0.7) return 255;
    }
    return 255;
  }
};

template <int channels>
Image<Tev8u, channels> uniform(int width, int height, Tev8u value) {
  Image<Tev8u, channels> image(width, height);
  image.fill(value);
  return image;
}

// One pixel's masks for a row of values after a first one.
std::vector<int> masksOf(int first, std::initializer_list<int> values) {
  Model<1> model(grid<Tev8u>({{static_cast<Tev8u>(first)}}));
  std::vector<int> masks;
  for (int v : values) masks.push_back(model.update(grid<Tev8u>({{static_cast<Tev8u>(v)}})).at(0, 0));
  return masks;
}

}  // namespace

TYPED_TEST(ForegroundGaussian, EqualsTheDefinitionOver250FramesAcrossTheWindow) {
  constexpr int channels = TypeParam::value;
  Random random;
  const int width = 32, height = 7;
  const auto first = scene::frame<channels>(0, width, height, random);
  Model<channels> model(first);
  std::vector<Oracle<channels>> oracles(width * height);
  for (int i = 0; i < width * height; ++i) {
    Tev8u x[channels];
    for (int c = 0; c < channels; ++c) x[c] = first.at(i % width, i / width, c);
    oracles[i].create(x);
  }
  for (int f = 1; f <= 250; ++f) {
    const auto frame = scene::frame<channels>(f, width, height, random);
    Image<Tev8u> expected(width, height);
    const auto mask = model.update(frame);
    ASSERT_EQ(model->frameCount, f);
    for (int i = 0; i < width * height; ++i) {
      const int px = i % width, py = i / width;
      Tev8u x[channels];
      for (int c = 0; c < channels; ++c) x[c] = frame.at(px, py, c);
      expected.set(px, py, oracles[i].update(x, f));
      for (int k = 0; k < 5; ++k)
        ASSERT_TRUE(sameMode(modeOf<channels>(model.state(), i, k), oracles[i].modes[k]))
            << "frame " << f << ", pixel " << px << ", " << py << ", mode " << k;
      for (int c = 0; c < channels; ++c)
        ASSERT_EQ(model->backgroundImage[py * model->backgroundStep + px * channels + c], oracles[i].background[c]);
      ASSERT_EQ(model->foregroundImage[py * model->foregroundStep + px], expected.at(px, py));
    }
    ASSERT_SAME_IMAGE(mask, expected) << "frame " << f;
  }
}

TYPED_TEST(ForegroundGaussian, StartsFromOneModeOfTheFirstFrame) {
  constexpr int channels = TypeParam::value;
  Random random;
  const auto first = random.image<Tev8u, channels>(5, 3);
  Model<channels> model(first);
  EXPECT_EQ(model->backgroundStep, 5 * channels);
  EXPECT_EQ(model->foregroundStep, 5);
  EXPECT_EQ(model->window, 200);
  EXPECT_EQ(model->numModes, 5);
  EXPECT_EQ(model->backgroundRatio, 0.7);
  EXPECT_EQ(model->matchThreshold, 2.5);
  EXPECT_EQ(model->unused[0], 15.0);
  EXPECT_EQ(model->unused[1], 0.05);
  EXPECT_EQ(model->initVariance, 900.0);
  EXPECT_EQ(model->frameCount, 0);
  for (int i = 0; i < 15; ++i) {
    EXPECT_EQ(static_cast<char*>(model->pixels[i]), static_cast<char*>(model->pixels[0]) + i * (60 + 80 * channels));
    for (int k = 0; k < 5; ++k) {
      Mode<channels> expected;
      expected.count = expected.weight = k == 0;
      for (int c = 0; c < channels; ++c) {
        expected.variance[c] = 12.5;
        expected.mean[c] = k == 0 ? first.at(i % 5, i / 5, c) : 0;
      }
      EXPECT_TRUE(sameMode(modeOf<channels>(model.state(), i, k), expected)) << "pixel " << i << ", mode " << k;
    }
  }
}

TYPED_TEST(ForegroundGaussian, TheFirstFrameAgainIsAllBackground) {
  constexpr int channels = TypeParam::value;
  Random random;
  const auto first = random.image<Tev8u, channels>(9, 4);
  Model<channels> model(first);
  EXPECT_SAME_IMAGE(model.update(first), Image<Tev8u>(9, 4).fill(0));
  for (int i = 0; i < 36; ++i) {
    const auto best = modeOf<channels>(model.state(), i, 0);
    EXPECT_EQ(best.count, 2);
    EXPECT_EQ(best.weight, 1.0);
    EXPECT_EQ(best.variance[0], 6.25);
  }
  for (int c = 0; c < channels; ++c) EXPECT_EQ(model->backgroundImage[c], first.at(0, 0, c));
}

TEST(ForegroundGaussianExample, AValueTwentyLevelsFromANarrowModeReplacesTheWorstMode) {
  Model<1> model(grid<Tev8u>({{100}}));
  EXPECT_EQ(model.update(grid<Tev8u>({{120}})).at(0, 0), 255);
  const auto best = modeOf<1>(model.state(), 0, 0), fresh = modeOf<1>(model.state(), 0, 1);
  EXPECT_EQ(best.mean[0], 100);
  EXPECT_EQ(best.weight, 0.5);
  EXPECT_EQ(fresh.count, 1);
  EXPECT_EQ(fresh.weight, 0.5);  // 1 over the sum of the counts
  EXPECT_EQ(fresh.variance[0], 900);
  EXPECT_EQ(fresh.mean[0], 120);
}

TEST(ForegroundGaussianExample, AValueExactlyAtTheThresholdDoesNotMatch) {
  // The first mode is set to variance 16: 2.5 standard deviations are 10 levels.
  for (int distance : {9, 10}) {
    Model<1> model(grid<Tev8u>({{100}}));
    const double variance = 16;
    std::memcpy(static_cast<char*>(model->pixels[0]) + 12, &variance, 8);
    EXPECT_EQ(model.update(grid<Tev8u>({{static_cast<Tev8u>(100 + distance)}})).at(0, 0), distance == 10 ? 255 : 0);
  }
}

TEST(ForegroundGaussianExample, TheSearchEndsAtTheFirstModeThatMatches) {
  Model<1> model(grid<Tev8u>({{4}}));  // near the modes that were never used, too
  model.update(grid<Tev8u>({{4}}));
  EXPECT_EQ(modeOf<1>(model.state(), 0, 0).count, 2);
  EXPECT_EQ(modeOf<1>(model.state(), 0, 1).count, 0);
}

TEST(ForegroundGaussianExample, ModesThatWereNeverUsedMatchDarkValues) {
  Model<1> model(grid<Tev8u>({{100}}));
  EXPECT_EQ(model.update(grid<Tev8u>({{5}})).at(0, 0), 0);
  const auto dark = modeOf<1>(model.state(), 0, 1);
  EXPECT_EQ(dark.count, 1);
  EXPECT_EQ(dark.weight, 0.5);
  EXPECT_EQ(dark.mean[0], 5);
  EXPECT_EQ(dark.variance[0], 25);
}

TEST(ForegroundGaussianExample, AModeOfNoSamplesRanksBehindAllOthers) {
  Model<1> model(grid<Tev8u>({{100}}));
  for (int v : {180, 30}) model.update(grid<Tev8u>({{static_cast<Tev8u>(v)}}));
  EXPECT_EQ(modeOf<1>(model.state(), 0, 2).mean[0], 30);
  EXPECT_EQ(modeOf<1>(model.state(), 0, 3).count, 0);
}

TEST(ForegroundGaussianExample, EqualKeysKeepTheirOrder) {
  Model<1> model(grid<Tev8u>({{100}}));
  model.update(grid<Tev8u>({{180}}));
  model.update(grid<Tev8u>({{30}}));  // as wide and as heavy as the mode at 180
  EXPECT_EQ(modeOf<1>(model.state(), 0, 1).mean[0], 180);
  EXPECT_EQ(modeOf<1>(model.state(), 0, 2).mean[0], 30);
}

// The mode at 200 has weights 1/2, 2/3, 3/4, 4/5 behind the mode at 100. With the fifth sample it takes the first place
// with 5/6 of the weight, but the match counts for the second: one frame of foreground.
TEST(ForegroundGaussianExample, TheMatchCountsForThePositionThatTheModeHadBeforeRanking) {
  EXPECT_EQ(masksOf(100, {200, 200, 200, 200, 200, 200}), (std::vector<int>{255, 0, 0, 0, 255, 0}));
}

TEST(ForegroundGaussianExample, Call200AloneForgetsByTheWindow) {
  Model<1> model(grid<Tev8u>({{100}}));
  for (int f = 1; f <= 198; ++f) model.update(grid<Tev8u>({{100}}));
  const auto sees = [&](int value) {
    model.update(grid<Tev8u>({{static_cast<Tev8u>(value)}}));
    return modeOf<1>(model.state(), 0, 0);
  };
  auto before = modeOf<1>(model.state(), 0, 0);
  auto after = sees(100);  // call 199
  EXPECT_EQ(after.count, 200);
  EXPECT_DOUBLE_EQ(after.variance[0], before.variance[0] * (1 - 1 / 200.0));
  before = after;
  after = sees(100);  // call 200: as by the 199 others, but nothing is counted
  EXPECT_EQ(after.count, 200);
  EXPECT_DOUBLE_EQ(after.variance[0], before.variance[0] * (1 - 1 / 200.0));
  before = after;
  after = sees(100);  // call 201
  EXPECT_EQ(after.count, 201);
  EXPECT_DOUBLE_EQ(after.variance[0], before.variance[0] * (1 - 1 / 201.0));
}

TEST(ForegroundGaussianExample, AValueThatNothingMatchesOnCall200TakesAWeightByItsCount) {
  Model<1> model(grid<Tev8u>({{100}}));
  for (int f = 1; f <= 199; ++f) model.update(grid<Tev8u>({{100}}));
  EXPECT_EQ(model.update(grid<Tev8u>({{200}})).at(0, 0), 255);
  const auto old = modeOf<1>(model.state(), 0, 0), fresh = modeOf<1>(model.state(), 0, 1);
  EXPECT_EQ(old.count, 200);
  EXPECT_DOUBLE_EQ(old.weight, (1 - 1 / 200.0) * (1 - 1 / 200.0));
  EXPECT_EQ(fresh.count, 1);
  EXPECT_DOUBLE_EQ(fresh.weight, 1 / 201.0);
  EXPECT_EQ(fresh.variance[0], 900);
}

TYPED_TEST(ForegroundGaussian, TakesFiveBlocksOfTheSizesThatProgramsCountOn) {
  constexpr int channels = TypeParam::value, pointer = sizeof(void*);
  const auto first = uniform<channels>(64, 48, 7);
  const size_t pixels = 64 * 48, overhead = 32 + pointer;
  AllocatorWatch watch;
  {
    Model<channels> model(first);
    EXPECT_EQ(watch.requests(), 5);
    const size_t modes = channels == 1 ? pixels * 140 + 17920 : pixels * 300 + 38400;
    EXPECT_EQ(watch.bytesHeld(),
              sizeof(State) + (pixels * pointer + 1024) + pixels * channels + pixels + modes + 5 * overhead);
    model.update(first);
    EXPECT_EQ(watch.requests(), 5);
  }
  EXPECT_EQ(watch.blocksHeld(), 0);
}

TEST(ForegroundGaussianRecord, HasItsFieldsWhereProgramsReadThem) {
  const std::vector<size_t> offsets = {
      offsetof(State, backgroundImage), offsetof(State, backgroundStep), offsetof(State, foregroundImage),
      offsetof(State, foregroundStep),  offsetof(State, window),         offsetof(State, numModes),
      offsetof(State, backgroundRatio), offsetof(State, matchThreshold), offsetof(State, unused),
      offsetof(State, initVariance),    offsetof(State, pixels),         offsetof(State, frameCount)};
  const std::vector<size_t> of32Bits = {0, 4, 8, 12, 16, 20, 24, 32, 40, 56, 64, 68};
  const std::vector<size_t> of64Bits = {0, 8, 16, 24, 28, 32, 40, 48, 56, 72, 80, 88};
  EXPECT_EQ(offsets, sizeof(void*) == 4 ? of32Bits : of64Bits);
  EXPECT_EQ(sizeof(State), sizeof(void*) == 4 ? 72U : 96U);
}

TYPED_TEST(ForegroundGaussian, FreeLeavesTheModesAndTheRecord) {
  constexpr int channels = TypeParam::value;
  AllocatorWatch watch;
  const auto first = uniform<channels>(4, 4, 50);
  State* state = nullptr;
  ASSERT_EQ(Members<channels>::init(first.data(), first.step(), first.size(), &unusedByte, &state), tevStatusOk);
  void* const modes = state->pixels[0];
  ASSERT_EQ(Members<channels>::release(state), tevStatusOk);
  EXPECT_EQ(watch.blocksHeld(), 2);
  EXPECT_EQ(state->numModes, 5);
  int count = 0;
  std::memcpy(&count, modes, sizeof count);
  EXPECT_EQ(count, 1);
  tevsFree(modes);
  tevsFree(state);
  EXPECT_EQ(watch.blocksHeld(), 0);
  EXPECT_EQ(watch.strangersFreed(), 0);
}

TYPED_TEST(ForegroundGaussian, FreesWhatItHasWhenAnAllocationFails) {
  constexpr int channels = TypeParam::value;
  const auto first = uniform<channels>(6, 5, 50);
  State* state = nullptr;
  for (int failAt = 0; failAt < 5; ++failAt) {
    AllocatorWatch watch(failAt);
    EXPECT_FAILS(tevStatusNoMemory,
                 Members<channels>::init(first.data(), first.step(), first.size(), &unusedByte, &state), state);
    EXPECT_EQ(watch.requests(), failAt + 1);
    EXPECT_EQ(watch.blocksHeld(), 0);
    EXPECT_EQ(watch.strangersFreed(), 0);
  }
}

TYPED_TEST(ForegroundGaussian, AModelTooLargeForTheAllocatorIsNoMemory) {
  constexpr int channels = TypeParam::value;
  const auto first = uniform<channels>(6, 5, 50);
  State* state = nullptr;
  AllocatorWatch watch;
  for (const TevSize roi : {TevSize{1 << 15, 1 << 16}, TevSize{1 << 29, 1 << 29}, TevSize{1 << 15, 1 << 15}})
    EXPECT_FAILS(tevStatusNoMemory,
                 Members<channels>::init(first.data(), roi.width * channels, roi, &unusedByte, &state), state);
  EXPECT_EQ(watch.blocksHeld(), 0);
}

// What a region smaller than the model gives is that of the model's top left part, and the rest stays as it is.
TYPED_TEST(ForegroundGaussian, ASmallerRegionUsesTheTopLeftPartOfTheModel) {
  constexpr int channels = TypeParam::value;
  Random random;
  const auto first = scene::frame<channels>(0, 16, 9, random);
  Model<channels> model(first), whole(first);
  for (int f = 1; f < 30; ++f) {
    const auto frame = scene::frame<channels>(f, 16, 9, random);
    const TevSize part = {11, 6};
    Image<Tev8u> mask(11, 6);
    const auto expected = whole.update(frame);
    ASSERT_EQ(Members<channels>::update(frame.data(), frame.step(), &unusedByte, 0, mask.data(), mask.step(), part,
                                        model.state()),
              tevStatusOk);
    for (int i = 0; i < 16 * 9; ++i) {
      const int x = i % 16, y = i / 16;
      const bool inside = x < part.width && y < part.height;
      const auto mode = modeOf<channels>(model.state(), i, 0);
      if (inside) {
        ASSERT_EQ(mask.at(x, y), expected.at(x, y));
        ASSERT_TRUE(sameMode(mode, modeOf<channels>(whole.state(), i, 0)));
      } else {
        ASSERT_EQ(mode.count, 1);
      }
    }
  }
}

TYPED_TEST(ForegroundGaussian, WorksOnASinglePixelAndOnSingleLines) {
  constexpr int channels = TypeParam::value;
  Random random;
  for (const TevSize size : {TevSize{1, 1}, TevSize{1, 13}, TevSize{13, 1}}) {
    const auto first = random.image<Tev8u, channels>(size.width, size.height);
    Model<channels> model(first);
    EXPECT_SAME_IMAGE(model.update(first), Image<Tev8u>(size.width, size.height).fill(0));
  }
}

TYPED_TEST(ForegroundGaussian, ChecksPointersThenSizeThenTheStepOfTheFrame) {
  constexpr int channels = TypeParam::value;
  using M = Members<channels>;
  const auto a = uniform<channels>(6, 4, 9);
  Image<Tev8u> d(6, 4);
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
  EXPECT_FAILS(tevStatusNullPtr, M::update(nullptr, 0, ref, 0, d.data(), 6, {0, 4}, &m), d, m);
  EXPECT_FAILS(tevStatusNullPtr, M::update(a.data(), s, nullptr, 0, d.data(), 6, {6, 4}, &m), d, m);
  EXPECT_FAILS(tevStatusNullPtr, M::update(a.data(), s, ref, 0, nullptr, 6, {6, 4}, &m), d, m);
  EXPECT_FAILS(tevStatusNullPtr, M::update(a.data(), s, ref, 0, d.data(), 6, {6, 4}, nullptr), d, m);
  EXPECT_FAILS(tevStatusBadSize, M::update(a.data(), 0, ref, 0, d.data(), 6, {0, 4}, &m), d, m);
  EXPECT_FAILS(tevStatusBadSize, M::update(a.data(), 0, ref, 0, d.data(), 6, {6, 0}, &m), d, m);
  EXPECT_FAILS(tevStatusBadStep, M::update(a.data(), s - 1, ref, 0, d.data(), 6, {6, 4}, &m), d, m);
  EXPECT_EQ(M::update(a.data(), s, ref, -1, d.data(), 6, {6, 4}, &m), tevStatusOk);
  EXPECT_EQ(unusedByte, 0);
  EXPECT_EQ(M::release(nullptr), tevStatusNullPtr);
}
