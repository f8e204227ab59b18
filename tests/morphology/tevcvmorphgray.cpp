#include <algorithm>
#include <limits>
#include <vector>

#include "kit/kit.h"
#include "tevcv/memory.h"
#include "tevcv/morphology.h"
#include "tevcv_internal/morphology.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

template <class T>
struct Members;
template <>
struct Members<Tev8u> {
  using Cell = Tev32s;
  static constexpr auto getSize = teviMorphGrayGetSize_8u_C1R;
  static constexpr auto init = teviMorphGrayInit_8u_C1R;
  static constexpr auto initAlloc = teviMorphGrayInitAlloc_8u_C1R;
  static constexpr auto free = teviMorphGrayFree_8u_C1R;
  static constexpr auto dilate = teviGrayDilateBorder_8u_C1R;
  static constexpr auto erode = teviGrayErodeBorder_8u_C1R;
};
template <>
struct Members<Tev32f> {
  using Cell = Tev32f;
  static constexpr auto getSize = teviMorphGrayGetSize_32f_C1R;
  static constexpr auto init = teviMorphGrayInit_32f_C1R;
  static constexpr auto initAlloc = teviMorphGrayInitAlloc_32f_C1R;
  static constexpr auto free = teviMorphGrayFree_32f_C1R;
  static constexpr auto dilate = teviGrayDilateBorder_32f_C1R;
  static constexpr auto erode = teviGrayErodeBorder_32f_C1R;
};

template <class T>
struct Kernel {
  using Cell = typename Members<T>::Cell;
  TevSize size;
  TevPoint anchor;
  std::vector<Cell> cells;
};

// A state in memory of exactly the size told, at any address that a pointer may have.
template <class T>
class State {
 public:
  State(TevSize roi, const Kernel<T>& kernel, int misalignment = 0) {
    int size = 0;
    EXPECT_EQ(Members<T>::getSize(roi, kernel.cells.data(), kernel.size, &size), tevStatusOk);
    memory_ = Buffer(size, misalignment);
    EXPECT_EQ(Members<T>::init(get(), roi, kernel.cells.data(), kernel.size, kernel.anchor), tevStatusOk);
  }
  TevMorphGrayState* get() const { return memory_.template as<TevMorphGrayState>(); }

 private:
  Buffer memory_ = Buffer(1);
};

enum Kind { dilation, erosion };

// The plain definition: sums in 64 bits or extended precision, compared before they are rounded.
template <class T>
Image<T> definition(Kind kind, const Image<T>& src, const Kernel<T>& kernel) {
  Image<T> dst(src.width(), src.height());
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x) {
      constexpr bool bytes = std::is_same_v<T, Tev8u>;
      long double best = bytes              ? (kind == dilation ? 0.0L : 255.0L)
                         : kind == dilation ? -3.4028234663852886e38L
                                            : 3.4028234663852886e38L;
      for (int i = 0; i < kernel.size.height; ++i)
        for (int j = 0; j < kernel.size.width; ++j) {
          const int sx = std::clamp(x + j - kernel.anchor.x, 0, src.width() - 1);
          const int sy = std::clamp(y + i - kernel.anchor.y, 0, src.height() - 1);
          const long double sum =
              static_cast<long double>(src.at(sx, sy)) +
              static_cast<long double>(kernel.cells[static_cast<size_t>(i * kernel.size.width + j)]);
          if (kind == dilation ? sum > best : sum < best) best = sum;
        }
      if (bytes) best = std::clamp(best, 0.0L, 255.0L);
      dst.set(x, y, static_cast<T>(best));
    }
  return dst;
}

template <class T>
TevStatus run(Kind kind, const Image<T>& src, const Image<T>& dst, TevMorphGrayState* state) {
  return (kind == dilation ? Members<T>::dilate : Members<T>::erode)(src.data(), src.step(), dst.data(), dst.step(),
                                                                     src.size(), tevBorderRepl, state);
}

template <class T>
void expectDefinition(const Image<T>& src, const Kernel<T>& kernel, Random& random) {
  const State<T> state(src.size(), kernel, random.between(0, 7) * int{sizeof(void*)});
  for (Kind kind : {dilation, erosion}) {
    auto dst = random.image<T>(src.width(), src.height());
    ASSERT_EQ(run(kind, src, dst, state.get()), tevStatusOk);
    ASSERT_SAME_IMAGE(dst, definition(kind, src, kernel));
  }
}

template <class T, class Draw>
Kernel<T> randomKernel(Random& random, int widest, int tallest, Draw draw) {
  Kernel<T> kernel;
  kernel.size = {random.between(1, widest), random.between(1, tallest)};
  kernel.anchor = {random.between(0, kernel.size.width - 1), random.between(0, kernel.size.height - 1)};
  for (int i = 0; i < kernel.size.width * kernel.size.height; ++i)
    kernel.cells.push_back(static_cast<typename Members<T>::Cell>(draw()));
  return kernel;
}

template <class T>
Kernel<T> zeros(int width, int height, TevPoint anchor) {
  using Cell = typename Members<T>::Cell;
  return {{width, height}, anchor, std::vector<Cell>(static_cast<size_t>(width) * height, Cell{0})};
}

template <class T>
class GrayMorphology : public testing::Test {};
using Types = testing::Types<Tev8u, Tev32f>;
TYPED_TEST_SUITE(GrayMorphology, Types);

constexpr float endless = std::numeric_limits<float>::infinity(), undefined = std::numeric_limits<float>::quiet_NaN();

}  // namespace

TEST(GrayMorphologyExample, DilationPaintsTheKernelAroundAPoint) {
  const auto src = grid<Tev8u>({{0, 0, 0, 0, 0}, {0, 0, 9, 0, 0}, {0, 0, 0, 0, 0}});
  // The kernel is not reflected: what lies right of the anchor reads the pixel to the right.
  const Kernel<Tev8u> kernel = {{3, 1}, {1, 0}, {1, 5, 3}};
  const State<Tev8u> state(src.size(), kernel);
  Image<Tev8u> dst(5, 3);
  ASSERT_EQ(run(dilation, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{5, 5, 5, 5, 5}, {5, 12, 14, 10, 5}, {5, 5, 5, 5, 5}}));
}

TEST(GrayMorphologyExample, ErosionAddsTheKernelToo) {
  const auto src = grid<Tev8u>({{50, 50, 20, 50, 50}});
  const Kernel<Tev8u> kernel = {{3, 1}, {1, 0}, {10, 0, 100}};
  const State<Tev8u> state(src.size(), kernel);
  Image<Tev8u> dst(5, 1);
  ASSERT_EQ(run(erosion, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{50, 50, 20, 30, 50}}));
}

TYPED_TEST(GrayMorphology, EqualsTheDefinitionOnRandomRegionsAndKernels) {
  using T = TypeParam;
  Random random;
  for (int trial = 0; trial < 250; ++trial) {
    const int spread = random.oneIn(2) ? 40 : 400;
    const auto kernel = randomKernel<T>(random, 9, 7, [&] { return random.between(-spread, spread); });
    const auto src = random.image<T>(random.between(1, trial % 4 == 0 ? 90 : 16), random.between(1, 12));
    expectDefinition(src, kernel, random);
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(GrayMorphology, EqualsTheDefinitionOnRowsOfSeveralStretches) {
  using T = TypeParam;
  Random random;
  for (int width : {2047, 2048, 2049, 4200}) {
    const auto kernel = randomKernel<T>(random, 5, 3, [&] { return random.between(-90, 90); });
    expectDefinition(random.image<T>(width, 3), kernel, random);
  }
}

TYPED_TEST(GrayMorphology, TakesKernelsLargerThanTheImage) {
  using T = TypeParam;
  Random random;
  for (int trial = 0; trial < 40; ++trial) {
    const auto kernel = randomKernel<T>(random, 40, 20, [&] { return random.between(-90, 90); });
    expectDefinition(random.image<T>(random.between(1, 5), random.between(1, 5)), kernel, random);
  }
}

TYPED_TEST(GrayMorphology, TakesMarginsOfHundredsOfPixels) {
  using T = TypeParam;
  Random random;
  for (const TevSize size : {TevSize{700, 2}, TevSize{257, 3}}) {
    auto kernel = zeros<T>(size.width, size.height, {random.between(0, size.width - 1), 1});
    for (auto& cell : kernel.cells) cell = static_cast<typename Members<T>::Cell>(random.between(-90, 90));
    for (int width : {1, 300, 900}) expectDefinition(random.image<T>(width, 2), kernel, random);
  }
}

TYPED_TEST(GrayMorphology, OneCellAddsItsValue) {
  using T = TypeParam;
  Random random;
  const auto src = random.image<T>(37, 5);
  for (int c : {-300, -255, -100, -1, 0, 1, 100, 255, 300}) {
    const Kernel<T> kernel = {{1, 1}, {0, 0}, {static_cast<typename Members<T>::Cell>(c)}};
    const State<T> state(src.size(), kernel);
    for (Kind kind : {dilation, erosion}) {
      Image<T> dst(37, 5), expected(37, 5);
      ASSERT_EQ(run(kind, src, dst, state.get()), tevStatusOk);
      for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 37; ++x)
          expected.set(x, y,
                       std::is_same_v<T, Tev8u> ? static_cast<T>(std::clamp(static_cast<int>(src.at(x, y)) + c, 0, 255))
                                                : static_cast<T>(static_cast<long double>(src.at(x, y)) + c));
      ASSERT_SAME_IMAGE(dst, expected);
    }
  }
}

TYPED_TEST(GrayMorphology, AKernelOfZerosIsTheFlatRectangle) {
  using T = TypeParam;
  Random random;
  const auto src = random.image<T>(29, 14);
  const auto kernel = zeros<T>(5, 3, {1, 2});
  const State<T> state(src.size(), kernel);
  for (Kind kind : {dilation, erosion}) {
    Image<T> dst(29, 14), flat(29, 14);
    ASSERT_EQ(run(kind, src, dst, state.get()), tevStatusOk);
    int size = 0;
    if constexpr (std::is_same_v<T, Tev8u>) {
      ASSERT_EQ(teviFilterMaxGetBufferSize_8u_C1R(29, 5, 3, &size), tevStatusOk);
      const Buffer buffer(size);
      (kind == dilation ? teviFilterMaxBorderReplicate_8u_C1R : teviFilterMinBorderReplicate_8u_C1R)(
          src.data(), src.step(), flat.data(), flat.step(), src.size(), kernel.size, kernel.anchor, buffer.data());
    } else {
      ASSERT_EQ(teviFilterMaxGetBufferSize_32f_C1R(29, 5, 3, &size), tevStatusOk);
      const Buffer buffer(size);
      (kind == dilation ? teviFilterMaxBorderReplicate_32f_C1R : teviFilterMinBorderReplicate_32f_C1R)(
          src.data(), src.step(), flat.data(), flat.step(), src.size(), kernel.size, kernel.anchor, buffer.data());
    }
    EXPECT_SAME_IMAGE(dst, flat);
  }
}

TEST(GrayMorphology8u, LargeNegativeKernelsGiveZeroAndLargePositiveOnes255) {
  Random random;
  const auto src = random.image<Tev8u>(20, 6);
  for (int c : {-256, -1000, std::numeric_limits<int>::min()}) {
    const Kernel<Tev8u> kernel = {{3, 3}, {1, 1}, std::vector<Tev32s>(9, c)};
    const State<Tev8u> state(src.size(), kernel);
    Image<Tev8u> dst(20, 6);
    ASSERT_EQ(run(dilation, src, dst, state.get()), tevStatusOk);
    EXPECT_SAME_IMAGE(dst, Image<Tev8u>(20, 6).fill(0));
    ASSERT_EQ(run(erosion, src, dst, state.get()), tevStatusOk);
    EXPECT_SAME_IMAGE(dst, Image<Tev8u>(20, 6).fill(0));
  }
  // Sums beyond 32 bits saturate.
  for (int c : {255, 1000, std::numeric_limits<int>::max()}) {
    const Kernel<Tev8u> kernel = {{3, 3}, {1, 1}, std::vector<Tev32s>(9, c)};
    const State<Tev8u> state(src.size(), kernel);
    Image<Tev8u> dst(20, 6);
    ASSERT_EQ(run(dilation, src, dst, state.get()), tevStatusOk);
    EXPECT_SAME_IMAGE(dst, Image<Tev8u>(20, 6).fill(255));
    ASSERT_EQ(run(erosion, src, dst, state.get()), tevStatusOk);
    EXPECT_SAME_IMAGE(dst, Image<Tev8u>(20, 6).fill(255));
  }
}

TEST(GrayMorphology32f, NeverTakesANanAndStartsFromTheEndsOfTheScale) {
  const Kernel<Tev32f> kernel = {{3, 1}, {1, 0}, {0, 0, 0}};
  const auto src = grid<Tev32f>(
      {{undefined, undefined, undefined, 2, undefined, -endless, -endless, -endless, endless, endless, endless}});
  const State<Tev32f> state(src.size(), kernel);
  constexpr float max = std::numeric_limits<float>::max();
  Image<Tev32f> dst(11, 1);
  ASSERT_EQ(run(dilation, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{-max, -max, 2, 2, 2, -max, -max, endless, endless, endless, endless}}));
  ASSERT_EQ(run(erosion, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{max, max, 2, 2, -endless, -endless, -endless, -endless, -endless, max, max}}));
}

TEST(GrayMorphology32f, OddValuesFollowTheDefinition) {
  Random random;
  const float odd[] = {undefined,      endless, -endless, 0.0F, -0.0F,      3.4028234e38F,
                       -3.4028234e38F, 1e-45F,  -1e-45F,  1.0F, 16777216.0F};
  const auto draw = [&] { return odd[random.between(0, 10)]; };
  for (int trial = 0; trial < 300; ++trial) {
    const auto kernel = randomKernel<Tev32f>(random, 4, 3, draw);
    const auto src = random.image<Tev32f>(random.between(1, 40), random.between(1, 5), draw);
    expectDefinition(src, kernel, random);
    if (HasFatalFailure()) return;
  }
}

TYPED_TEST(GrayMorphology, TellsTheSizeOfAStateAndFillsItsFields) {
  using T = TypeParam;
  constexpr int header = sizeof(void*) + 24;
  static_assert(sizeof(void*) != 4 || header == 28);
  const auto kernel = zeros<T>(5, 3, {4, 1});
  int size = 0;
  ASSERT_EQ(Members<T>::getSize({100, 50}, kernel.cells.data(), kernel.size, &size), tevStatusOk);
  EXPECT_EQ(size, 5 * 3 * 4 + header);
  const State<T> state({100, 50}, kernel);
  EXPECT_EQ(state.get()->kernel, state.get() + 1);
  EXPECT_EQ(state.get()->width, 5);
  EXPECT_EQ(state.get()->height, 3);
  EXPECT_EQ(state.get()->anchorX, 4);
  EXPECT_EQ(state.get()->anchorY, 1);
  EXPECT_EQ(state.get()->maxRoiWidth, 100);
  EXPECT_EQ(state.get()->maxRoiHeight, 50);
  // A kernel that no memory holds: the largest size.
  ASSERT_EQ(Members<T>::getSize({1, 1}, kernel.cells.data(), {1 << 20, 1 << 20}, &size), tevStatusOk);
  EXPECT_EQ(size, std::numeric_limits<int>::max());
}

TYPED_TEST(GrayMorphology, AllocatesExactlyTheSizeToldAndFreesIt) {
  using T = TypeParam;
  const auto kernel = zeros<T>(3, 2, {1, 1});
  int size = 0;
  ASSERT_EQ(Members<T>::getSize({10, 10}, kernel.cells.data(), kernel.size, &size), tevStatusOk);
  size_t expected = 0;
  {
    const kit::AllocatorWatch watch;
    tevsFree(tevsMalloc_8u(size));
    expected = watch.bytes();
  }
  const kit::AllocatorWatch watch;
  TevMorphGrayState* state = nullptr;
  ASSERT_EQ(Members<T>::initAlloc(&state, {10, 10}, kernel.cells.data(), kernel.size, kernel.anchor), tevStatusOk);
  EXPECT_EQ(watch.bytes(), expected);
  const auto src = grid<T>({{1, 2, 3}});
  Image<T> dst(3, 1);
  EXPECT_EQ(run(dilation, src, dst, state), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<T>({{2, 3, 3}}));
  EXPECT_EQ(watch.requests(), 1);
  EXPECT_EQ(Members<T>::free(state), tevStatusOk);
  EXPECT_EQ(watch.blocksHeld(), 0);
}

TYPED_TEST(GrayMorphology, AFailedAllocationLeavesTheHolder) {
  using T = TypeParam;
  const auto kernel = zeros<T>(3, 2, {1, 1});
  TevMorphGrayState* state = nullptr;
  const kit::AllocatorWatch watch(0);
  EXPECT_FAILS(tevStatusNoMemory,
               Members<T>::initAlloc(&state, {10, 10}, kernel.cells.data(), kernel.size, kernel.anchor), state);
  EXPECT_FAILS(tevStatusNoMemory,
               Members<T>::initAlloc(&state, {10, 10}, kernel.cells.data(), {1 << 16, 1 << 16}, kernel.anchor), state);
  EXPECT_EQ(watch.requests(), 1);
}

TYPED_TEST(GrayMorphology, ChecksWhatAStateIsBuiltFrom) {
  using T = TypeParam;
  using M = Members<T>;
  const auto kernel = zeros<T>(3, 2, {1, 1});
  const auto* const cells = kernel.cells.data();
  const TevSize mask = kernel.size;
  int size = -7;
  EXPECT_FAILS(tevStatusNullPtr, M::getSize({0, 4}, nullptr, mask, &size), size);
  EXPECT_FAILS(tevStatusNullPtr, M::getSize({0, 4}, cells, mask, nullptr), size);
  for (const TevSize bad : {TevSize{0, 4}, TevSize{4, 0}, TevSize{-1, -1}}) {
    EXPECT_FAILS(tevStatusBadSize, M::getSize(bad, cells, mask, &size), size);
    EXPECT_FAILS(tevStatusBadSize, M::getSize({4, 4}, cells, bad, &size), size);
  }
  const Buffer memory(400);
  auto* const state = memory.as<TevMorphGrayState>();
  TevMorphGrayState* holder = nullptr;
  EXPECT_FAILS(tevStatusNullPtr, M::init(state, {0, 4}, nullptr, mask, {9, 9}), memory);
  EXPECT_FAILS(tevStatusNullPtr, M::init(nullptr, {0, 4}, cells, mask, {9, 9}), memory);
  EXPECT_FAILS(tevStatusNullPtr, M::initAlloc(&holder, {0, 4}, nullptr, mask, {9, 9}), holder);
  EXPECT_FAILS(tevStatusNullPtr, M::initAlloc(nullptr, {0, 4}, cells, mask, {9, 9}), holder);
  for (const TevSize bad : {TevSize{0, 4}, TevSize{4, 0}, TevSize{-1, -1}}) {
    EXPECT_FAILS(tevStatusBadSize, M::init(state, bad, cells, mask, {9, 9}), memory);
    EXPECT_FAILS(tevStatusBadSize, M::init(state, {4, 4}, cells, bad, {9, 9}), memory);
    EXPECT_FAILS(tevStatusBadSize, M::initAlloc(&holder, bad, cells, mask, {9, 9}), holder);
    EXPECT_FAILS(tevStatusBadSize, M::initAlloc(&holder, {4, 4}, cells, bad, {9, 9}), holder);
  }
  for (const TevPoint bad : {TevPoint{-1, 0}, TevPoint{3, 0}, TevPoint{0, -1}, TevPoint{0, 2}}) {
    EXPECT_FAILS(tevStatusBadAnchor, M::init(state, {4, 4}, cells, mask, bad), memory);
    EXPECT_FAILS(tevStatusBadAnchor, M::initAlloc(&holder, {4, 4}, cells, mask, bad), holder);
  }
  EXPECT_EQ(M::free(nullptr), tevStatusNullPtr);
}

TYPED_TEST(GrayMorphology, ChecksPointersThenSizeThenStepsThenBorderThenTheState) {
  using T = TypeParam;
  constexpr int element = sizeof(T), full = 8 * element;
  const Image<T> src(8, 4, 2 * element);
  Image<T> dst(8, 4, 2 * element);
  const State<T> built({8, 4}, zeros<T>(3, 3, {1, 1}));
  TevMorphGrayState* const state = built.get();
  const int s = src.step();
  for (const auto call : {Members<T>::dilate, Members<T>::erode}) {
    const TevSize roi = {8, 4};
    EXPECT_FAILS(tevStatusNullPtr, call(nullptr, s, dst.data(), s, {0, 4}, 1, state), dst);
    EXPECT_FAILS(tevStatusNullPtr, call(src.data(), s, nullptr, s, {0, 4}, 1, state), dst);
    EXPECT_FAILS(tevStatusNullPtr, call(src.data(), s, dst.data(), s, {0, 4}, 1, nullptr), dst);
    EXPECT_FAILS(tevStatusBadSize, call(src.data(), 1, dst.data(), s, {0, 4}, 1, state), dst);
    EXPECT_FAILS(tevStatusBadSize, call(src.data(), s, dst.data(), 1, {8, 0}, 1, state), dst);
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), full - 1, dst.data(), s, roi, 0, state), dst);
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), s, dst.data(), full - 1, roi, 0, state), dst);
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), s, dst.data(), s, {9, 4}, 0, state), dst);
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), s, dst.data(), s, {8, 5}, 2, state), dst);
    EXPECT_FAILS(tevStatusBadSize, call(src.data(), s, dst.data(), s, {9, 4}, 1, state), dst);
    EXPECT_FAILS(tevStatusBadSize, call(src.data(), s, dst.data(), s, {8, 5}, 1, state), dst);
    EXPECT_EQ(call(src.data(), s, dst.data(), s, {7, 3}, 1, state), tevStatusOk);
    EXPECT_EQ(call(src.data(), full, dst.data(), full, roi, 1, state), tevStatusOk);
    if (element == 1) continue;
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), full + 1, dst.data(), full - 1, roi, 1, state), dst);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), full + 1, dst.data(), s, roi, 0, state), dst);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), s, dst.data(), full + 1, roi, 0, state), dst);
  }
}
