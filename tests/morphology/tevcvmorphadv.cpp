#include <algorithm>
#include <array>
#include <initializer_list>
#include <limits>
#include <vector>

#include "kit/kit.h"
#include "tevcv/memory.h"
#include "tevcv/morphology.h"
#include "tevcv/primitives.h"
#include "tevcv_internal/morphology.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

template <class T>
using Operation = TevStatus (*)(const T*, int, T*, int, TevSize, TevBorderType, TevMorphAdvState*);
enum Kind { opening, closing, topHat, blackHat, gradient, kinds };

template <class T, int channels>
struct Members;
#define MEMBERS(T, channels, sizeMember, initMember, allocMember, plainSizeMember, plainAllocMember, erodeMember, \
                dilateMember, ...)                                                                                \
  template <>                                                                                                     \
  struct Members<T, channels> {                                                                                   \
    static constexpr auto getSize = sizeMember;                                                                   \
    static constexpr auto init = initMember;                                                                      \
    static constexpr auto initAlloc = allocMember;                                                                \
    static constexpr auto plainSize = plainSizeMember;                                                            \
    static constexpr auto plainAlloc = plainAllocMember;                                                          \
    static constexpr auto erode = erodeMember;                                                                    \
    static constexpr auto dilate = dilateMember;                                                                  \
    static constexpr Operation<T> operation[kinds] = {__VA_ARGS__};                                               \
  };
MEMBERS(Tev8u, 1, teviMorphAdvGetSize_8u_C1R, teviMorphAdvInit_8u_C1R, teviMorphAdvInitAlloc_8u_C1R,
        teviMorphologyGetSize_8u_C1R, teviMorphologyInitAlloc_8u_C1R, teviErodeBorderReplicate_8u_C1R,
        teviDilateBorderReplicate_8u_C1R, teviMorphOpenBorder_8u_C1R, teviMorphCloseBorder_8u_C1R,
        teviMorphTophatBorder_8u_C1R, teviMorphBlackhatBorder_8u_C1R, teviMorphGradientBorder_8u_C1R)
MEMBERS(Tev8u, 3, teviMorphAdvGetSize_8u_C3R, teviMorphAdvInit_8u_C3R, teviMorphAdvInitAlloc_8u_C3R,
        teviMorphologyGetSize_8u_C3R, teviMorphologyInitAlloc_8u_C3R, teviErodeBorderReplicate_8u_C3R,
        teviDilateBorderReplicate_8u_C3R, teviMorphOpenBorder_8u_C3R, teviMorphCloseBorder_8u_C3R,
        teviMorphTophatBorder_8u_C3R, teviMorphBlackhatBorder_8u_C3R, teviMorphGradientBorder_8u_C3R)
MEMBERS(Tev8u, 4, teviMorphAdvGetSize_8u_C4R, teviMorphAdvInit_8u_C4R, teviMorphAdvInitAlloc_8u_C4R,
        teviMorphologyGetSize_8u_C4R, teviMorphologyInitAlloc_8u_C4R, teviErodeBorderReplicate_8u_C4R,
        teviDilateBorderReplicate_8u_C4R, teviMorphOpenBorder_8u_C4R, teviMorphCloseBorder_8u_C4R,
        teviMorphTophatBorder_8u_C4R, teviMorphBlackhatBorder_8u_C4R, teviMorphGradientBorder_8u_C4R)
MEMBERS(Tev32f, 1, teviMorphAdvGetSize_32f_C1R, teviMorphAdvInit_32f_C1R, teviMorphAdvInitAlloc_32f_C1R,
        teviMorphologyGetSize_32f_C1R, teviMorphologyInitAlloc_32f_C1R, teviErodeBorderReplicate_32f_C1R,
        teviDilateBorderReplicate_32f_C1R, teviMorphOpenBorder_32f_C1R, teviMorphCloseBorder_32f_C1R,
        teviMorphTophatBorder_32f_C1R, teviMorphBlackhatBorder_32f_C1R, teviMorphGradientBorder_32f_C1R)
MEMBERS(Tev32f, 3, teviMorphAdvGetSize_32f_C3R, teviMorphAdvInit_32f_C3R, teviMorphAdvInitAlloc_32f_C3R,
        teviMorphologyGetSize_32f_C3R, teviMorphologyInitAlloc_32f_C3R, teviErodeBorderReplicate_32f_C3R,
        teviDilateBorderReplicate_32f_C3R, teviMorphOpenBorder_32f_C3R, teviMorphCloseBorder_32f_C3R,
        teviMorphTophatBorder_32f_C3R, teviMorphBlackhatBorder_32f_C3R, teviMorphGradientBorder_32f_C3R)
MEMBERS(Tev32f, 4, teviMorphAdvGetSize_32f_C4R, teviMorphAdvInit_32f_C4R, teviMorphAdvInitAlloc_32f_C4R,
        teviMorphologyGetSize_32f_C4R, teviMorphologyInitAlloc_32f_C4R, teviErodeBorderReplicate_32f_C4R,
        teviDilateBorderReplicate_32f_C4R, teviMorphOpenBorder_32f_C4R, teviMorphCloseBorder_32f_C4R,
        teviMorphTophatBorder_32f_C4R, teviMorphBlackhatBorder_32f_C4R, teviMorphGradientBorder_32f_C4R)

template <class Element, int count>
struct Layout {
  using T = Element;
  static constexpr int channels = count, pixelBytes = count * int{sizeof(Element)};
};
template <class L>
class Composed : public testing::Test {};
using Layouts = testing::Types<Layout<Tev8u, 1>, Layout<Tev8u, 3>, Layout<Tev8u, 4>, Layout<Tev32f, 1>,
                               Layout<Tev32f, 3>, Layout<Tev32f, 4>>;
TYPED_TEST_SUITE(Composed, Layouts);

struct Element {
  TevSize size;
  TevPoint anchor;
  std::vector<Tev8u> cells;

  Element turned() const {
    return {size, {size.width - 1 - anchor.x, size.height - 1 - anchor.y}, {cells.rbegin(), cells.rend()}};
  }
};

Element solid(int width, int height, TevPoint anchor) {
  return {{width, height}, anchor, std::vector<Tev8u>(static_cast<size_t>(width) * height, Tev8u{1})};
}

const Element diamond = {{3, 3}, {1, 1}, {0, 1, 0, 1, 1, 1, 0, 1, 0}};

Element randomElement(Random& random) {
  const int w = random.between(1, 6), h = random.between(1, 6);
  Element e = solid(w, h, {random.between(0, w - 1), random.between(0, h - 1)});
  const int kind = random.between(0, 3);
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i) {
      Tev8u& cell = e.cells[static_cast<size_t>(j * w + i)];
      cell = static_cast<Tev8u>(random.between(1, 255));
      if (kind == 0 || (kind == 1 && random.oneIn(2)) || (kind == 2 && i >= (w + 1) / 2)) cell = 0;
    }
  return e;
}

template <class T, int channels>
class State {
 public:
  State(TevSize roi, const Element& e, int misalignment = 0) {
    int size = 0;
    EXPECT_EQ((Members<T, channels>::getSize(roi, e.cells.data(), e.size, &size)), tevStatusOk);
    memory_ = Buffer(size, misalignment);
    EXPECT_EQ((Members<T, channels>::init(get(), roi, e.cells.data(), e.size, e.anchor)), tevStatusOk);
  }
  TevMorphAdvState* get() const { return memory_.template as<TevMorphAdvState>(); }
  TevMorphAdvState* operator->() const { return get(); }

 private:
  Buffer memory_ = Buffer(1);
};

// One plain erosion or dilation; both have tests of their own.
template <class T, int channels>
Image<T, channels> plain(const Image<T, channels>& src, const Element& e, bool erode) {
  Image<T, channels> dst(src.width(), src.height());
  TevMorphState* state = nullptr;
  EXPECT_EQ((Members<T, channels>::plainAlloc(src.width(), e.cells.data(), e.size, e.anchor, &state)), tevStatusOk);
  EXPECT_EQ((erode ? Members<T, channels>::erode : Members<T, channels>::dilate)(
                src.data(), src.step(), dst.data(), dst.step(), src.size(), tevBorderRepl, state),
            tevStatusOk);
  teviMorphologyFree(state);
  return dst;
}

template <class T, int channels>
Image<T, channels> minus(const Image<T, channels>& a, const Image<T, channels>& b) {
  Image<T, channels> result(a.width(), a.height());
  for (int y = 0; y < a.height(); ++y)
    for (int i = 0; i < a.width() * channels; ++i)
      result.set(i, y, a.get(i, y) > b.get(i, y) ? static_cast<T>(a.get(i, y) - b.get(i, y)) : T{0});
  return result;
}

template <class T, int channels>
Image<T, channels> definition(Kind kind, const Image<T, channels>& src, const Element& e) {
  const auto erode = [](const Image<T, channels>& image, const Element& k) { return plain(image, k, true); };
  const auto dilate = [](const Image<T, channels>& image, const Element& k) { return plain(image, k, false); };
  switch (kind) {
    case opening:
      return dilate(erode(src, e), e.turned());
    case closing:
      return erode(dilate(src, e), e.turned());
    case topHat:
      return minus(src, dilate(erode(src, e), e.turned()));
    case blackHat:
      return minus(erode(dilate(src, e), e.turned()), src);
    default:
      return minus(dilate(src, e), erode(src, e));
  }
}

template <class T, int channels>
TevStatus run(Kind kind, const Image<T, channels>& src, const Image<T, channels>& dst, TevMorphAdvState* state) {
  return Members<T, channels>::operation[kind](src.data(), src.step(), dst.data(), dst.step(), src.size(),
                                               tevBorderRepl, state);
}

}  // namespace

TEST(ComposedExample, AnOpeningRemovesWhatIsSmallerThanTheElement) {
  const auto src = grid<Tev8u>({{0, 0, 0, 0, 0, 0, 7},  //
                                {0, 9, 0, 0, 5, 5, 0},
                                {0, 0, 0, 0, 5, 5, 0},
                                {0, 0, 8, 0, 0, 0, 0}});
  const State<Tev8u, 1> state(src.size(), solid(2, 2, {0, 0}));
  Image<Tev8u> dst(7, 4);
  ASSERT_EQ(run(opening, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{0, 0, 0, 0, 0, 0, 0},  //
                                      {0, 0, 0, 0, 5, 5, 0},
                                      {0, 0, 0, 0, 5, 5, 0},
                                      {0, 0, 0, 0, 0, 0, 0}}));
  ASSERT_EQ(run(topHat, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{0, 0, 0, 0, 0, 0, 7},  //
                                      {0, 9, 0, 0, 0, 0, 0},
                                      {0, 0, 0, 0, 0, 0, 0},
                                      {0, 0, 8, 0, 0, 0, 0}}));
}

TEST(ComposedExample, AClosingFillsHolesAndABlackHatShowsThem) {
  const auto src = grid<Tev8u>({{9, 9, 9, 9, 9},  //
                                {9, 2, 9, 9, 9},
                                {9, 9, 9, 9, 9}});
  const State<Tev8u, 1> state(src.size(), diamond);
  Image<Tev8u> dst(5, 3);
  ASSERT_EQ(run(closing, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, Image<Tev8u>(5, 3).fill(9));
  ASSERT_EQ(run(blackHat, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{0, 0, 0, 0, 0}, {0, 7, 0, 0, 0}, {0, 0, 0, 0, 0}}));
}

TEST(ComposedExample, AGradientShowsEdges) {
  const auto src = grid<Tev8u>({{1, 1, 1, 6, 6, 6}});
  const State<Tev8u, 1> state(src.size(), solid(3, 1, {1, 0}));
  Image<Tev8u> dst(6, 1);
  ASSERT_EQ(run(gradient, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{0, 0, 5, 5, 0, 0}}));
}

TYPED_TEST(Composed, EqualsItsDefinitionOnRandomRegionsAndElements) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  Random random;
  for (int trial = 0; trial < 150; ++trial) {
    const auto src = random.image<T, channels>(random.between(1, 20), random.between(1, 15));
    const Element e = randomElement(random);
    const State<T, channels> state(src.size(), e, random.between(0, 40));
    for (int k = 0; k < kinds; ++k) {
      const Kind kind = static_cast<Kind>(k);
      auto dst = random.image<T, channels>(src.width(), src.height());
      ASSERT_EQ(run(kind, src, dst, state.get()), tevStatusOk);
      ASSERT_TRUE(kit::sameImages(dst, definition(kind, src, e)))
          << "operation " << k << ", mask " << e.size.width << " x " << e.size.height << ", anchor " << e.anchor.x
          << ", " << e.anchor.y;
    }
  }
}

TYPED_TEST(Composed, AnOpeningNeverExceedsAndAClosingNeverFallsBelowItsSourceInside) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  Random random;
  const Element corner = {{3, 2}, {0, 1}, {1, 0, 1, 1, 1, 0}};
  const auto src = random.image<T, channels>(30, 20);
  const State<T, channels> state(src.size(), corner);
  Image<T, channels> opened(30, 20), closed(30, 20);
  ASSERT_EQ(run(opening, src, opened, state.get()), tevStatusOk);
  ASSERT_EQ(run(closing, src, closed, state.get()), tevStatusOk);
  for (int y = 3; y < 17; ++y)
    for (int i = 4 * channels; i < 26 * channels; ++i) {
      ASSERT_LE(opened.get(i, y), src.get(i, y));
      ASSERT_GE(closed.get(i, y), src.get(i, y));
    }
}

TYPED_TEST(Composed, OfAConstantImageChangesNothingAndFindsNothing) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  Image<T, channels> src(9, 7), dst(9, 7), zero(9, 7);
  src.fill(5);
  zero.fill(0);
  for (const Element& e : {diamond, solid(3, 3, {1, 1})}) {
    const State<T, channels> state(src.size(), e);
    for (int k = 0; k < kinds; ++k) {
      ASSERT_EQ(run(static_cast<Kind>(k), src, dst, state.get()), tevStatusOk);
      EXPECT_SAME_IMAGE(dst, k == opening || k == closing ? src : zero);
    }
  }
}

TYPED_TEST(Composed, OpeningAndClosingWorkInPlace) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  Random random;
  const State<T, channels> state({21, 9}, diamond);
  for (const Kind kind : {opening, closing}) {
    const auto src = random.image<T, channels>(21, 9);
    const auto both = src.clone();
    ASSERT_EQ(run(kind, both, both, state.get()), tevStatusOk);
    EXPECT_SAME_IMAGE(both, definition(kind, src, diamond));
  }
}

TEST(ComposedFloats, DifferencesBelowZeroBecomeZero) {
  // A single cell off the anchor: opening shifts there and back, and the borders repeat what was lost.
  const auto src = grid<Tev32f>({{1, -5, 3, 9}});
  const Element shift = {{2, 1}, {0, 0}, {0, 1}};
  const State<Tev32f, 1> state(src.size(), shift);
  Image<Tev32f> dst(4, 1);
  ASSERT_EQ(run(opening, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{-5, -5, 3, 9}}));
  ASSERT_EQ(run(topHat, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{6, 0, 0, 0}}));
  ASSERT_EQ(run(blackHat, src, dst, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{0, 0, 0, 0}}));
}

// --- States

TYPED_TEST(Composed, TellsTheStatesSizeToTheByte) {
  using M = Members<typename TypeParam::T, TypeParam::channels>;
  constexpr int pixelBytes = TypeParam::pixelBytes, header = 3 * static_cast<int>(sizeof(void*)) + 8;
  static_assert(sizeof(void*) != 4 || header + 64 == 84);
  int plain = 0, size = 0;
  const Element rect = solid(5, 3, {0, 0}), general = {{3, 1}, {1, 0}, {1, 0, 1}};
  for (const Element& e : {rect, general}) {
    ASSERT_EQ(M::plainSize(37, e.cells.data(), e.size, &plain), tevStatusOk);
    ASSERT_EQ(M::getSize({37, 11}, e.cells.data(), e.size, &size), tevStatusOk);
    EXPECT_EQ(size, ((37 * pixelBytes + 31) & ~31) * 11 + 2 * plain + header + 64);
  }
  // A diamond counts as general here: its plain state is that of a general element of its size.
  Element cross = diamond;
  cross.cells[4] = 0;
  ASSERT_EQ(M::plainSize(37, cross.cells.data(), cross.size, &plain), tevStatusOk);
  ASSERT_EQ(M::getSize({37, 11}, diamond.cells.data(), diamond.size, &size), tevStatusOk);
  EXPECT_EQ(size, ((37 * pixelBytes + 31) & ~31) * 11 + 2 * plain + header + 64);
}

TYPED_TEST(Composed, HoldsTheElementAndItsReflection) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  for (int misalignment = 0; misalignment < 33; ++misalignment) {
    const Element corner = {{3, 2}, {0, 1}, {1, 0, 1, 1, 2, 0}}, turned = corner.turned();
    const State<T, channels> state({17, 5}, corner, misalignment);
    EXPECT_EQ(reinterpret_cast<Tev8u*>(state->direct), reinterpret_cast<Tev8u*>(state.get() + 1));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state->reflected) % 32, 0U);
    EXPECT_LT(reinterpret_cast<Tev8u*>(state->reflected) - reinterpret_cast<Tev8u*>(state->direct),
              state->direct->totalSize + 32);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state->scratch) % 32, 0U);
    EXPECT_LT(state->scratch - reinterpret_cast<Tev8u*>(state->reflected), state->reflected->totalSize + 32);
    EXPECT_EQ(state->scratchSize, ((17 * TypeParam::pixelBytes + 31) & ~31) * 5);
    EXPECT_EQ(state->zero, 0);
    EXPECT_TRUE(std::equal(corner.cells.begin(), corner.cells.end(), state->direct->kernel));
    EXPECT_TRUE(std::equal(turned.cells.begin(), turned.cells.end(), state->reflected->kernel));
    EXPECT_EQ(state->reflected->anchorX, 2);
    EXPECT_EQ(state->reflected->anchorY, 0);
  }
}

TEST(ComposedState, TurnsTheAnchorWithTheElement) {
  Element e = solid(4, 4, {1, 1});
  e.cells[5] = 0;
  const State<Tev8u, 1> state({9, 9}, e);
  EXPECT_EQ(state->direct->anchorX, 1);
  EXPECT_EQ(state->direct->anchorY, 1);
  EXPECT_EQ(state->reflected->anchorX, 2);
  EXPECT_EQ(state->reflected->anchorY, 2);
}

TEST(ComposedState, OfASymmetricElementHoldsTheSameTwice) {
  const State<Tev8u, 1> state({9, 9}, diamond);
  EXPECT_TRUE(std::equal(state->direct->kernel, state->direct->kernel + 9, state->reflected->kernel));
  EXPECT_EQ(state->direct->anchorX, state->reflected->anchorX);
  EXPECT_EQ(state->direct->anchorY, state->reflected->anchorY);
}

TEST(ComposedState, LeavesRunsToTheGeneralClass) {
  const State<Tev8u, 1> state({9, 9}, diamond);
  EXPECT_EQ(state->direct->kernelClass, tevMorphKernelGeneral);
  EXPECT_EQ(state->reflected->kernelClass, tevMorphKernelGeneral);
  const State<Tev8u, 1> rect({9, 9}, solid(3, 2, {0, 1}));
  EXPECT_EQ(rect->direct->kernelClass, tevMorphKernelRect);
  EXPECT_EQ(rect->reflected->kernelClass, tevMorphKernelRect);
  const Element none = {{2, 2}, {0, 0}, {0, 0, 0, 0}};
  const State<Tev8u, 1> empty({9, 9}, none);
  EXPECT_EQ(empty->direct->kernelClass, tevMorphKernelEmpty);
}

TYPED_TEST(Composed, BuildersCheckTheHeightBeforePointers) {
  using M = Members<typename TypeParam::T, TypeParam::channels>;
  const Tev8u* const mask = diamond.cells.data();
  int size = -7;
  EXPECT_EQ(M::getSize({5, 0}, nullptr, {3, 3}, nullptr), tevStatusBadSize);
  EXPECT_EQ(M::getSize({0, 5}, nullptr, {3, 3}, nullptr), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusNullPtr, M::getSize({0, 5}, nullptr, {0, 3}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, M::getSize({0, 5}, mask, {3, 3}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, M::getSize({5, 5}, mask, {3, 0}, &size), size);
  EXPECT_EQ(M::getSize({1 << 30, 1 << 30}, mask, {3, 3}, &size), tevStatusOk);
  EXPECT_EQ(size, std::numeric_limits<int>::max());

  const Buffer memory(4000);
  TevMorphAdvState* const at = memory.as<TevMorphAdvState>();
  EXPECT_FAILS(tevStatusBadSize, M::init(nullptr, {5, 0}, nullptr, {3, 3}, {1, 1}), memory);
  EXPECT_FAILS(tevStatusNullPtr, M::init(nullptr, {5, 5}, mask, {3, 3}, {1, 1}), memory);
  EXPECT_FAILS(tevStatusNullPtr, M::init(at, {0, 5}, nullptr, {3, 3}, {9, 1}), memory);
  EXPECT_FAILS(tevStatusBadSize, M::init(at, {0, 5}, mask, {3, 3}, {9, 1}), memory);
  EXPECT_FAILS(tevStatusBadSize, M::init(at, {5, 5}, mask, {-3, 3}, {9, 1}), memory);
  EXPECT_FAILS(tevStatusBadAnchor, M::init(at, {5, 5}, mask, {3, 3}, {3, 1}), memory);

  TevMorphAdvState* state = at;
  EXPECT_EQ(M::initAlloc(nullptr, {5, 0}, nullptr, {3, 3}, {1, 1}), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, M::initAlloc(&state, {5, 0}, nullptr, {3, 3}, {1, 1}), state);
  EXPECT_FAILS(tevStatusNullPtr, M::initAlloc(&state, {5, 5}, nullptr, {3, 3}, {1, 1}), state);
  {
    kit::AllocatorWatch watch;
    EXPECT_FAILS(tevStatusBadAnchor, M::initAlloc(&state, {5, 5}, mask, {3, 3}, {1, -1}), state);
    EXPECT_FAILS(tevStatusNoMemory, M::initAlloc(&state, {70000, 70000}, mask, {3, 3}, {1, 1}), state);
    EXPECT_EQ(watch.blocksHeld(), 0);
    EXPECT_EQ(M::initAlloc(&state, {5, 5}, mask, {3, 3}, {1, 1}), tevStatusOk);
    EXPECT_EQ(watch.blocksHeld(), 1);
    EXPECT_EQ(teviMorphAdvFree(state), tevStatusOk);
    EXPECT_EQ(watch.blocksHeld(), 0);
  }
  state = at;
  kit::AllocatorWatch watch(0);
  EXPECT_FAILS(tevStatusNoMemory, M::initAlloc(&state, {5, 5}, mask, {3, 3}, {1, 1}), state);
  EXPECT_EQ(watch.blocksHeld(), 0);
  EXPECT_EQ(teviMorphAdvFree(nullptr), tevStatusNullPtr);
}

TYPED_TEST(Composed, TheMaskOfTheCallerIsOnlyRead) {
  using M = Members<typename TypeParam::T, TypeParam::channels>;
  const Element corner = {{3, 2}, {0, 1}, {1, 0, 1, 1, 2, 0}};
  const Element before = corner;
  TevMorphAdvState* state = nullptr;
  ASSERT_EQ(M::initAlloc(&state, {5, 5}, corner.cells.data(), corner.size, corner.anchor), tevStatusOk);
  EXPECT_EQ(corner.cells, before.cells);
  EXPECT_EQ(teviMorphAdvFree(state), tevStatusOk);
}

// --- Which regions a state serves

TYPED_TEST(Composed, RefusesARegionWhoseScratchIsSmallerThanTheStates) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  const State<T, channels> state({64, 8}, diamond);
  const Image<T, channels> src(65, 8);
  Image<T, channels> dst(65, 8);
  for (const Operation<T> f : Members<T, channels>::operation) {
    const auto call = [&](TevSize roi) {
      return f(src.data(), src.step(), dst.data(), dst.step(), roi, 1, state.get());
    };
    EXPECT_FAILS(tevStatusBadSize, call({65, 8}), dst);  // wider than the state's
    EXPECT_FAILS(tevStatusBadSize, call({64, 7}), dst);  // lower
    EXPECT_FAILS(tevStatusBadSize, call({31, 8}), dst);  // shorter rows
    EXPECT_EQ(call({64, 8}), tevStatusOk);
    // A narrower one passes where its rows round up to the same length.
    const bool sameStride = (63 * TypeParam::pixelBytes + 31) / 32 == (64 * TypeParam::pixelBytes + 31) / 32;
    EXPECT_EQ(call({63, 8}), sameStride ? tevStatusOk : tevStatusBadSize);
  }
}

TYPED_TEST(Composed, ServesTallerRegionsWithAScratchOfTheirOwn) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  Random random;
  const State<T, channels> state({20, 4}, diamond);
  const auto src = random.image<T, channels>(20, 300);
  for (int k = 0; k < kinds; ++k) {
    Image<T, channels> dst(20, 300);
    {
      kit::AllocatorWatch watch;
      ASSERT_EQ(run(static_cast<Kind>(k), src, dst, state.get()), tevStatusOk);
      EXPECT_EQ(watch.requests(), 1);
      EXPECT_EQ(watch.blocksHeld(), 0);
    }
    ASSERT_SAME_IMAGE(dst, definition(static_cast<Kind>(k), src, diamond));
    kit::AllocatorWatch watch(0);
    EXPECT_FAILS(tevStatusNoMemory, run(static_cast<Kind>(k), src, dst, state.get()), dst);
  }
}

TYPED_TEST(Composed, ServesNarrowerTallRegionsToo) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  Random random;
  const State<T, channels> state({20, 4}, diamond);
  const auto src = random.image<T, channels>(3, 300);
  for (int k = 0; k < kinds; ++k) {
    Image<T, channels> dst(3, 300);
    ASSERT_EQ(run(static_cast<Kind>(k), src, dst, state.get()), tevStatusOk);
    ASSERT_SAME_IMAGE(dst, definition(static_cast<Kind>(k), src, diamond));
  }
}

TYPED_TEST(Composed, OperationsCheckPointersSizeStepsAlignmentBorderAndThenTheState) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels, row = 8 * TypeParam::pixelBytes;
  const State<T, channels> state({8, 4}, diamond);
  const Image<T, channels> src(9, 4, 8);
  Image<T, channels> dst(9, 4, 8);
  T* const null = nullptr;
  const T* const s = src.data();
  T* const d = dst.data();
  TevMorphAdvState* const st = state.get();
  for (const Operation<T> f : Members<T, channels>::operation) {
    EXPECT_FAILS(tevStatusNullPtr, f(null, 0, d, 0, {0, 0}, 0, st), dst);
    EXPECT_FAILS(tevStatusNullPtr, f(s, row, null, row, {8, 4}, 1, st), dst);
    EXPECT_FAILS(tevStatusNullPtr, f(s, row, d, row, {8, 4}, 1, nullptr), dst);
    EXPECT_FAILS(tevStatusBadSize, f(s, 0, d, 0, {0, 4}, 0, st), dst);
    EXPECT_FAILS(tevStatusBadSize, f(s, 0, d, 0, {8, 0}, 0, st), dst);
    EXPECT_FAILS(tevStatusBadStep, f(s, row - 1, d, row, {8, 4}, 0, st), dst);
    EXPECT_FAILS(tevStatusBadStep, f(s, row, d, row - 1, {8, 4}, 0, st), dst);
    if (sizeof(T) == 4) {
      EXPECT_FAILS(tevStatusBadStep, f(s, row + 1, d, row - 1, {8, 4}, 0, st), dst);
      EXPECT_FAILS(tevStatusStepNotAligned, f(s, row + 1, d, row, {8, 4}, 0, st), dst);
      EXPECT_FAILS(tevStatusStepNotAligned, f(s, row, d, row + 2, {8, 4}, 0, st), dst);
    }
    for (const int border : {0, 2, 3, 4}) EXPECT_FAILS(tevStatusBadArg, f(s, row, d, row, {8, 3}, border, st), dst);
    EXPECT_FAILS(tevStatusBadSize, f(s, row, d, row, {8, 3}, 1, st), dst);
    EXPECT_EQ(f(s, row, d, row, {8, 4}, 1, st), tevStatusOk);
  }
}
