#include <algorithm>
#include <initializer_list>
#include <limits>
#include <string>
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

constexpr int pointerBytes = sizeof(void*);

template <class T>
using Operation = TevStatus (*)(const T*, int, T*, int, TevSize, TevBorderType, TevMorphState*);

template <class T, int channels>
struct Members;
#define MEMBERS(T, count, sizeMember, initMember, allocMember, erodeMember, dilateMember, rectBuffer, row, eroded, \
                dilated)                                                                                           \
  template <>                                                                                                      \
  struct Members<T, count> {                                                                                       \
    static constexpr auto getSize = sizeMember;                                                                    \
    static constexpr auto init = initMember;                                                                       \
    static constexpr auto initAlloc = allocMember;                                                                 \
    static constexpr Operation<T> operation[2] = {erodeMember, dilateMember};                                      \
    static constexpr auto rectangleBuffer = rectBuffer;                                                            \
    static constexpr auto directRow = row;                                                                         \
    static constexpr auto directRows = eroded;                                                                     \
    static constexpr auto dilatedEllipse = dilated;                                                                \
  };
MEMBERS(Tev8u, 1, teviMorphologyGetSize_8u_C1R, teviMorphologyInit_8u_C1R, teviMorphologyInitAlloc_8u_C1R,
        teviErodeBorderReplicate_8u_C1R, teviDilateBorderReplicate_8u_C1R, teviFilterMaxGetBufferSize_8u_C1R,
        Dilate_8u_C1S, Erode_8u_C1R, ownDilateEllipseBorderReplicate_8u_C1R)
MEMBERS(Tev8u, 3, teviMorphologyGetSize_8u_C3R, teviMorphologyInit_8u_C3R, teviMorphologyInitAlloc_8u_C3R,
        teviErodeBorderReplicate_8u_C3R, teviDilateBorderReplicate_8u_C3R, teviFilterMaxGetBufferSize_8u_C3R,
        Dilate_8u_C3S, Erode_8u_C3R, ownDilateEllipseBorderReplicate_8u_C3R)
MEMBERS(Tev8u, 4, teviMorphologyGetSize_8u_C4R, teviMorphologyInit_8u_C4R, teviMorphologyInitAlloc_8u_C4R,
        teviErodeBorderReplicate_8u_C4R, teviDilateBorderReplicate_8u_C4R, teviFilterMaxGetBufferSize_8u_C4R,
        Dilate_8u_C4S, Erode_8u_C4R, ownDilateEllipseBorderReplicate_8u_C4R)
MEMBERS(Tev32f, 1, teviMorphologyGetSize_32f_C1R, teviMorphologyInit_32f_C1R, teviMorphologyInitAlloc_32f_C1R,
        teviErodeBorderReplicate_32f_C1R, teviDilateBorderReplicate_32f_C1R, teviFilterMaxGetBufferSize_32f_C1R,
        Dilate_32f_C1S, Erode_32f_C1R, ownDilateEllipseBorderReplicate_32f_C1R)
MEMBERS(Tev32f, 3, teviMorphologyGetSize_32f_C3R, teviMorphologyInit_32f_C3R, teviMorphologyInitAlloc_32f_C3R,
        teviErodeBorderReplicate_32f_C3R, teviDilateBorderReplicate_32f_C3R, teviFilterMaxGetBufferSize_32f_C3R,
        Dilate_32f_C3S, Erode_32f_C3R, ownDilateEllipseBorderReplicate_32f_C3R)
MEMBERS(Tev32f, 4, teviMorphologyGetSize_32f_C4R, teviMorphologyInit_32f_C4R, teviMorphologyInitAlloc_32f_C4R,
        teviErodeBorderReplicate_32f_C4R, teviDilateBorderReplicate_32f_C4R, teviFilterMaxGetBufferSize_32f_C4R,
        Dilate_32f_C4S, Erode_32f_C4R, ownDilateEllipseBorderReplicate_32f_C4R)

template <class Element, int count>
struct Layout {
  using T = Element;
  static constexpr int channels = count, pixelBytes = count * int{sizeof(Element)};
};
template <class L>
class Morphology : public testing::Test {};
using Layouts = testing::Types<Layout<Tev8u, 1>, Layout<Tev8u, 3>, Layout<Tev8u, 4>, Layout<Tev32f, 1>,
                               Layout<Tev32f, 3>, Layout<Tev32f, 4>>;
TYPED_TEST_SUITE(Morphology, Layouts);

// A structuring element: its bytes and its anchor.
struct Element {
  TevSize size;
  TevPoint anchor;
  std::vector<Tev8u> cells;

  bool isSet(int i, int j) const { return cells[static_cast<size_t>(j * size.width + i)] != 0; }
  void set(int i, int j, Tev8u cell = 1) { cells[static_cast<size_t>(j * size.width + i)] = cell; }
};

Element blank(int width, int height, TevPoint anchor) {
  return {{width, height}, anchor, std::vector<Tev8u>(static_cast<size_t>(width) * height)};
}

// From a picture; 'o' and 'O' mark the anchor, on a cell that is not set and on one that is.
Element picture(std::initializer_list<std::string> lines) {
  Element e = blank(static_cast<int>(lines.begin()->size()), static_cast<int>(lines.size()), {0, 0});
  int y = 0;
  for (const std::string& line : lines) {
    for (int x = 0; x < e.size.width; ++x) {
      const char mark = line[static_cast<size_t>(x)];
      if (mark == '#' || mark == 'O') e.set(x, y);
      if (mark == 'o' || mark == 'O') e.anchor = {x, y};
    }
    ++y;
  }
  return e;
}

Element rectangle(int width, int height, TevPoint anchor) {
  Element e = blank(width, height, anchor);
  std::fill(e.cells.begin(), e.cells.end(), Tev8u{1});
  return e;
}

Element disc(int diameter) {
  Element e = blank(diameter, diameter, {diameter / 2, diameter / 2});
  const int r = diameter / 2;
  for (int y = 0; y < diameter; ++y)
    for (int x = 0; x < diameter; ++x) e.set(x, y, (x - r) * (x - r) + (y - r) * (y - r) <= r * r + r / 2);
  return e;
}

// Elements of every class and every way to belong to it.
Element randomElement(Random& random) {
  const int w = random.between(1, 9), h = random.between(1, 9);
  Element e = blank(w, h, {random.between(0, w - 1), random.between(0, h - 1)});
  const auto any = [&] { return static_cast<Tev8u>(random.between(1, 255)); };
  switch (random.between(0, 5)) {
    case 0: {  // a rectangle anywhere in the mask
      const int x0 = random.between(0, w - 1), y0 = random.between(0, h - 1);
      const int x1 = random.between(x0, w - 1), y1 = random.between(y0, h - 1);
      for (int y = y0; y <= y1; ++y)
        for (int x = x0; x <= x1; ++x) e.set(x, y, any());
      break;
    }
    case 1:  // runs through the anchor, some rows blank; equal lengths start alike
      for (int y = 0; y < h; ++y) {
        if (random.oneIn(4)) continue;
        const int reach = random.between(0, w - 1), left = std::max(0, e.anchor.x - reach / 2);
        for (int x = left; x <= std::min(w - 1, e.anchor.x + (reach + 1) / 2); ++x) e.set(x, y, any());
      }
      break;
    case 2:  // nothing
      break;
    case 3:
      e = disc(w | 1);
      break;
    default:
      for (Tev8u& cell : e.cells) cell = random.oneIn(2) ? any() : 0;
  }
  return e;
}

TevMorphKernelClass classOf(const Element& e, int extraIrregular = 0, TevMorphShape* shape = nullptr) {
  std::vector<Tev32s> scratch(static_cast<size_t>(6) * e.size.height);
  TevMorphKernelClass result = -1;
  TevMorphShape ignored;
  ownCheckKernel(e.cells.data(), e.size.width, e.size.height, e.anchor.x, e.anchor.y, &result, shape ? shape : &ignored,
                 scratch.data(), extraIrregular);
  return result;
}

// The definition, folded in row order of the element. The general class has folds of its own for floats.
template <class T, int channels>
Image<T, channels> definition(const Image<T, channels>& src, const Element& e, bool erode) {
  const TevMorphKernelClass kernelClass = classOf(e);
  if (kernelClass == tevMorphKernelEmpty) return src.clone();
  Image<T, channels> result(src.width(), src.height());
  const auto edge = [](int v, int length) { return std::clamp(v, 0, length - 1); };
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width() * channels; ++x) {
      T best = erode ? std::numeric_limits<T>::max() : std::numeric_limits<T>::lowest();
      bool first = kernelClass != tevMorphKernelGeneral;
      for (int j = 0; j < e.size.height; ++j)
        for (int i = 0; i < e.size.width; ++i) {
          if (!e.isSet(i, j)) continue;
          const T value = src.at(edge(x / channels + i - e.anchor.x, src.width()),
                                 edge(y + j - e.anchor.y, src.height()), x % channels);
          if (kernelClass == tevMorphKernelGeneral ? (erode ? !(value > best) : value >= best)
                                                   : first || (erode ? value < best : value > best))
            best = value;
          first = false;
        }
      result.set(x, y, best);
    }
  return result;
}

// A state in caller memory of exactly its size, at any address.
template <class T, int channels>
class State {
 public:
  State(int roiWidth, const Element& e, int misalignment = 0) {
    TevMorphState* probe = nullptr;
    EXPECT_EQ((Members<T, channels>::initAlloc(roiWidth, e.cells.data(), e.size, e.anchor, &probe)), tevStatusOk);
    memory_ = Buffer(probe->totalSize, misalignment);
    EXPECT_EQ(teviMorphologyFree(probe), tevStatusOk);
    EXPECT_EQ((Members<T, channels>::init(roiWidth, e.cells.data(), e.size, e.anchor, get())), tevStatusOk);
  }
  TevMorphState* get() const { return memory_.template as<TevMorphState>(); }
  TevMorphState* operator->() const { return get(); }

 private:
  Buffer memory_ = Buffer(1);
};

template <class T, int channels>
void expectDefinition(const Image<T, channels>& src, const Element& e, Random& random, int spareWidth = 0) {
  const State<T, channels> state(src.width() + spareWidth, e, random.between(0, 40));
  SCOPED_TRACE(testing::Message() << src.width() << " x " << src.height() << ", class " << state->kernelClass
                                  << ", mask " << e.size.width << " x " << e.size.height << ", anchor " << e.anchor.x
                                  << ", " << e.anchor.y);
  for (const bool erode : {true, false}) {
    auto dst = random.image<T, channels>(src.width(), src.height());
    ASSERT_EQ((Members<T, channels>::operation[!erode](src.data(), src.step(), dst.data(), dst.step(), src.size(),
                                                       tevBorderRepl, state.get())),
              tevStatusOk);
    ASSERT_SAME_IMAGE(dst, definition(src, e, erode));
  }
}

Image<Tev8u> apply(Operation<Tev8u> operation, const Image<Tev8u>& src, const Element& e) {
  Image<Tev8u> dst(src.width(), src.height());
  const State<Tev8u, 1> state(src.width(), e);
  EXPECT_EQ(operation(src.data(), src.step(), dst.data(), dst.step(), src.size(), tevBorderRepl, state.get()),
            tevStatusOk);
  return dst;
}
Image<Tev8u> erode(const Image<Tev8u>& src, const Element& e) { return apply(teviErodeBorderReplicate_8u_C1R, src, e); }
Image<Tev8u> dilate(const Image<Tev8u>& src, const Element& e) {
  return apply(teviDilateBorderReplicate_8u_C1R, src, e);
}

}  // namespace

// --- Pictures

TEST(MorphologyExample, ACrossGrowsAPointIntoACross) {
  const auto src = grid<Tev8u>({{0, 0, 0, 0, 0},  //
                                {0, 0, 0, 0, 0},
                                {0, 0, 9, 0, 0},
                                {0, 0, 0, 0, 0},
                                {0, 0, 0, 0, 7}});
  EXPECT_SAME_IMAGE(dilate(src, picture({".#.", "#O#", ".#."})), grid<Tev8u>({{0, 0, 0, 0, 0},  //
                                                                              {0, 0, 9, 0, 0},
                                                                              {0, 9, 9, 9, 0},
                                                                              {0, 0, 9, 0, 7},
                                                                              {0, 0, 0, 7, 7}}));
}

TEST(MorphologyExample, ErosionBySeparateCellsNeedsThemAll) {
  const auto src = grid<Tev8u>({{9, 1, 9, 9, 9}, {9, 9, 9, 9, 1}});
  EXPECT_SAME_IMAGE(erode(src, picture({"#o#"})), grid<Tev8u>({{1, 9, 1, 9, 9}, {9, 9, 9, 1, 1}}));
}

TEST(MorphologyExample, ASingleCellShiftsTheImage) {
  const auto src = grid<Tev8u>({{1, 2, 3, 4}, {5, 6, 7, 8}});
  EXPECT_EQ(classOf(picture({"o.#"})), tevMorphKernelRect);
  EXPECT_SAME_IMAGE(erode(src, picture({"o.#"})), grid<Tev8u>({{3, 4, 4, 4}, {7, 8, 8, 8}}));
  EXPECT_SAME_IMAGE(dilate(src, picture({"#.o"})), grid<Tev8u>({{1, 1, 1, 2}, {5, 5, 5, 6}}));
  EXPECT_SAME_IMAGE(erode(src, picture({"o", "#"})), grid<Tev8u>({{5, 6, 7, 8}, {5, 6, 7, 8}}));
}

TEST(MorphologyExample, TheRightColumnAloneLooksToTheRightOfTheOutput) {
  const auto src = grid<Tev8u>({{1, 2, 3, 9, 4}, {8, 2, 3, 4, 5}});
  EXPECT_SAME_IMAGE(dilate(src, picture({"..#", "o.#"})), grid<Tev8u>({{3, 9, 4, 4, 4}, {3, 9, 5, 5, 5}}));
}

TEST(MorphologyExample, AnElementWithoutCellsCopies) {
  const auto src = grid<Tev8u>({{1, 2, 3}, {4, 5, 6}});
  EXPECT_SAME_IMAGE(erode(src, picture({"...", ".o.", "..."})), src);
  EXPECT_SAME_IMAGE(dilate(src, picture({"o"})), src);
}

// --- Classes

TEST(MorphologyClass, OneSolidRectangleWhereverTheAnchor) {
  EXPECT_EQ(classOf(rectangle(3, 3, {1, 1})), tevMorphKernelRect);
  TevMorphShape shape;
  EXPECT_EQ(classOf(picture({"o....", "..##.", "..##."}), 0, &shape), tevMorphKernelRect);
  EXPECT_EQ(shape.width, 2);
  EXPECT_EQ(shape.height, 2);
  EXPECT_EQ(shape.anchorX, -2);
  EXPECT_EQ(shape.anchorY, -1);
  EXPECT_EQ(classOf(picture({"##...", "##...", "....o"}), 0, &shape), tevMorphKernelRect);
  EXPECT_EQ(shape.anchorX, 4);
  EXPECT_EQ(shape.anchorY, 2);
  EXPECT_EQ(classOf(picture({"o.#"}), 7), tevMorphKernelRect);  // whatever else is irregular
}

TEST(MorphologyClass, RunsThroughTheAnchorsColumn) {
  TevMorphShape shape;
  EXPECT_EQ(classOf(picture({"..#..", ".###.", "##O##", ".....", ".###."}), 0, &shape), tevMorphKernelEllipse);
  EXPECT_EQ(shape.width, 5);
  EXPECT_EQ(shape.height, 5);
  EXPECT_EQ(shape.anchorX, 2);
  EXPECT_EQ(shape.anchorY, 2);
  EXPECT_EQ(shape.numRows, 4);
  EXPECT_EQ(shape.numLens, 3);
}

TEST(MorphologyClass, ListsRunLengthsDescendingWithTheirOffsets) {
  const Element e = picture({"......", "..#...", ".#####", "..O...", ".##...", "......"});
  std::vector<Tev32s> scratch(6 * 6);
  TevMorphShape shape;
  TevMorphKernelClass kernelClass;
  ownCheckKernel(e.cells.data(), 6, 6, 2, 3, &kernelClass, &shape, scratch.data(), 0);
  ASSERT_EQ(kernelClass, tevMorphKernelEllipse);
  const auto values = [](const Tev32s* p, int n) { return std::vector<Tev32s>(p, p + n); };
  EXPECT_EQ(values(shape.rowIndex, shape.numRows), (std::vector<Tev32s>{0, 1, 2, 3}));
  EXPECT_EQ(values(shape.runLength, shape.numLens), (std::vector<Tev32s>{5, 2, 1}));
  EXPECT_EQ(values(shape.runOffset, shape.numLens), (std::vector<Tev32s>{1, 1, 0}));
  EXPECT_EQ(values(shape.rowLenIndex, shape.numRows), (std::vector<Tev32s>{2, 0, 2, 1}));
  EXPECT_EQ(shape.width, 5);
  EXPECT_EQ(shape.height, 4);
  EXPECT_EQ(shape.anchorX, 1);
  EXPECT_EQ(shape.anchorY, 2);
}

TEST(MorphologyClass, ASolidRectangleWithABlankRowIsMadeOfRuns) {
  EXPECT_EQ(classOf(picture({"###", ".o.", "###"})), tevMorphKernelEllipse);
  EXPECT_EQ(classOf(picture({"###.", "...o", "###."})), tevMorphKernelGeneral);
}

TEST(MorphologyClass, TwoRunsInOneRowAreGeneral) {
  EXPECT_EQ(classOf(picture({"###", "#o#", "###"})), tevMorphKernelGeneral);
  EXPECT_EQ(classOf(picture({"#O.#"})), tevMorphKernelGeneral);
}

TEST(MorphologyClass, EqualRunsWithDifferentStartsAreGeneral) {
  EXPECT_EQ(classOf(picture({"##.", ".O#"})), tevMorphKernelGeneral);
  EXPECT_EQ(classOf(picture({"##.", "###", ".O#"})), tevMorphKernelGeneral);
}

TEST(MorphologyClass, RunsOffTheAnchorAreGeneral) {
  EXPECT_EQ(classOf(picture({".#.", "O##", "..."})), tevMorphKernelGeneral);
  EXPECT_EQ(classOf(picture({"...", ".o.", ".#.", "###"})), tevMorphKernelGeneral);  // the anchor above all rows
  EXPECT_EQ(classOf(picture({".#.", "###", "...", ".o."})), tevMorphKernelGeneral);  // and below
}

TEST(MorphologyClass, ExtraIrregularityLeavesRunsToTheGeneralClass) {
  EXPECT_EQ(classOf(disc(5)), tevMorphKernelEllipse);
  EXPECT_EQ(classOf(disc(5), 1), tevMorphKernelGeneral);
  EXPECT_EQ(classOf(blank(5, 5, {0, 0}), 1), tevMorphKernelEmpty);
}

TEST(MorphologyClass, TwoHundredFiftySixRowsAreGeneralHoweverRegular) {
  EXPECT_EQ(classOf(rectangle(2, 255, {0, 7})), tevMorphKernelRect);
  EXPECT_EQ(classOf(rectangle(2, 256, {0, 7})), tevMorphKernelGeneral);
  EXPECT_EQ(classOf(blank(2, 300, {0, 7})), tevMorphKernelEmpty);
}

TEST(MorphologyClass, NoRowsAreEmpty) {
  TevMorphShape shape;
  TevMorphKernelClass kernelClass = -1;
  ownCheckKernel(nullptr, 3, 0, 0, 0, &kernelClass, &shape, nullptr, 0);
  EXPECT_EQ(kernelClass, tevMorphKernelEmpty);
  EXPECT_EQ(shape.width, 1);
  EXPECT_EQ(shape.height, 1);
  EXPECT_EQ(shape.anchorX, 0);
  EXPECT_EQ(shape.anchorY, 0);
}

TEST(MorphologyClass, EveryNonZeroByteCountsAsSet) {
  Element e = disc(7), f = e;
  for (Tev8u& cell : f.cells) cell = static_cast<Tev8u>(cell * 200);
  EXPECT_EQ(classOf(f), classOf(e));
}

// --- States

TYPED_TEST(Morphology, TellsTheStatesSizeToTheByte) {
  constexpr int pixelBytes = TypeParam::pixelBytes;
  using M = Members<typename TypeParam::T, TypeParam::channels>;
  constexpr int header = 5 * pointerBytes + 13 * 4 + (pointerBytes == 8 ? 4 : 0), record = 6 * 4 + 4 * pointerBytes;
  static_assert(pointerBytes != 4 || (header + 24 == 96 && header + record == 112));
  const auto align16 = [](int n) { return (n + 15) & ~15; };
  const auto sizeOf = [](int roiWidth, const Element& e) {
    int size = -1;
    EXPECT_EQ(M::getSize(roiWidth, e.cells.data(), e.size, &size), tevStatusOk);
    return size;
  };
  const Element general = picture({"#.#", ".O.", "###", "..."});
  EXPECT_EQ(sizeOf(101, general), 16 + 2 * 4 * align16((101 + 3) * pixelBytes) + header + 24);
  const Element rect = picture({".....", ".###.", ".#O#.", "....."});
  int rectBuffer = 0;
  ASSERT_EQ(M::rectangleBuffer(101, 3, 2, &rectBuffer), tevStatusOk);
  EXPECT_EQ(sizeOf(101, rect), align16(20) + rectBuffer + header + record);
  const Element runs = picture({".....", ".###.", "##O##", ".###.", "..#.."});
  const int ring = (4 * 3 + 1) * (101 * pixelBytes + 32) + (5 * 4 + 1) * pointerBytes + 32;
  int ringTold = 0;
  EXPECT_EQ(
      ownMorphEllipseGetBufferSize(101, 5, 4, 3, sizeof(typename TypeParam::T) == 1 ? tevDataType8u : tevDataType32f,
                                   TypeParam::channels, &ringTold),
      tevStatusOk);
  EXPECT_EQ(ringTold, ring);
  EXPECT_EQ(sizeOf(101, runs), ring + (4 + 3) * 8 + align16(25) + header + record + 16);
  EXPECT_EQ(sizeOf(101, blank(5, 7, {0, 0})), align16(35) + header + 8);
}

TEST(MorphologyState, TakesTheCentreAnchorForItsSizeAndTheGivenOneForItsClass) {
  // Made of runs about the centre, general about the corner: the two need blocks of different sizes.
  Element e = disc(5);
  int size = 0;
  ASSERT_EQ(teviMorphologyGetSize_8u_C1R(64, e.cells.data(), e.size, &size), tevStatusOk);
  e.anchor = {0, 0};
  TevMorphState* state = nullptr;
  ASSERT_EQ(teviMorphologyInitAlloc_8u_C1R(64, e.cells.data(), e.size, e.anchor, &state), tevStatusOk);
  EXPECT_EQ(state->kernelClass, tevMorphKernelGeneral);
  EXPECT_NE(state->totalSize, size);
  EXPECT_EQ(teviMorphologyFree(state), tevStatusOk);
}

TYPED_TEST(Morphology, HeaderTellsTheKernelAndWhatTheStateServes) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  const Element general = picture({"#.#.", ".O..", "###.", "...."});
  const State<T, channels> g(33, general, 3);
  EXPECT_EQ(g->kernelClass, tevMorphKernelGeneral);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(g->kernel) % 16, 0U);
  EXPECT_EQ(g->kernelErode, g->kernel);
  EXPECT_EQ(g->kernelDilate, g->kernel);
  EXPECT_EQ(g->work, g->kernel + 16);
  EXPECT_EQ(g->shape, nullptr);
  EXPECT_TRUE(std::equal(general.cells.begin(), general.cells.end(), g->kernel));
  EXPECT_EQ(
      std::vector<int>({g->width, g->height, g->anchorX, g->anchorY, g->rightExtent, g->bottomExtent, g->rowStride}),
      std::vector<int>({4, 4, 1, 1, 2, 2, (37 * TypeParam::pixelBytes + 15) & ~15}));
  EXPECT_EQ(std::vector<int>({g->dataType, g->channels, g->maxRoiWidth, g->reserved}),
            std::vector<int>({sizeof(T) == 1 ? 1 : 13, channels, 33, -1}));

  const State<T, channels> r(33, picture({"o....", "..##."}));
  EXPECT_EQ(r->kernelClass, tevMorphKernelRect);
  EXPECT_EQ(reinterpret_cast<Tev8u*>(r->shape), reinterpret_cast<Tev8u*>(r.get() + 1));
  EXPECT_EQ(r->kernel, reinterpret_cast<Tev8u*>(r->shape + 1));
  EXPECT_EQ(r->work, r->kernel + 16);
  EXPECT_EQ(std::vector<int>({r->width, r->height, r->anchorX, r->anchorY}), std::vector<int>({2, 1, -2, -1}));
  EXPECT_EQ(r->kernelErode, nullptr);

  const State<T, channels> s(33, disc(5));
  EXPECT_EQ(s->kernelClass, tevMorphKernelEllipse);
  EXPECT_EQ(reinterpret_cast<Tev8u*>(s->shape->rowIndex), reinterpret_cast<Tev8u*>(s->shape + 1));
  EXPECT_EQ(s->shape->rowLenIndex, s->shape->rowIndex + s->shape->numRows);
  EXPECT_EQ(s->shape->runLength, s->shape->rowLenIndex + s->shape->numRows);
  EXPECT_EQ(s->shape->runOffset, s->shape->runLength + s->shape->numLens);
  EXPECT_EQ(s->kernel, reinterpret_cast<Tev8u*>(s->shape->runOffset + s->shape->numLens));
  EXPECT_EQ(s->work, s->kernel + 32);

  const State<T, channels> n(33, blank(7, 3, {6, 2}));
  EXPECT_EQ(n->kernelClass, tevMorphKernelEmpty);
  EXPECT_EQ(n->work, nullptr);
  EXPECT_EQ(reinterpret_cast<Tev8u*>(n->shape), n->kernel);
  EXPECT_TRUE(std::all_of(n->kernel, n->kernel + 32, [](Tev8u v) { return v == 0; }));
  EXPECT_EQ(std::vector<int>({n->width, n->height, n->anchorX, n->anchorY}), std::vector<int>({7, 3, 0, 0}));
}

TYPED_TEST(Morphology, BuilderChecksMaskThenSizesThenAnchorThenWhereTheResultGoes) {
  using M = Members<typename TypeParam::T, TypeParam::channels>;
  const Element e = rectangle(3, 3, {1, 1});
  const Tev8u* const mask = e.cells.data();
  int size = -7;
  EXPECT_FAILS(tevStatusNullPtr, M::getSize(0, nullptr, {0, 0}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, M::getSize(0, mask, {3, 3}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, M::getSize(5, mask, {0, 3}, &size), size);
  EXPECT_EQ(M::getSize(5, mask, {3, 0}, nullptr), tevStatusBadSize);
  EXPECT_EQ(M::getSize(5, mask, {3, 3}, nullptr), tevStatusNullPtr);

  const Buffer memory(4000);
  TevMorphState* const at = memory.as<TevMorphState>();
  EXPECT_FAILS(tevStatusNullPtr, M::init(0, nullptr, {0, 0}, {9, 9}, at), memory);
  EXPECT_FAILS(tevStatusBadSize, M::init(5, mask, {3, -1}, {9, 9}, at), memory);
  for (const TevPoint anchor : {TevPoint{-1, 1}, TevPoint{3, 1}, TevPoint{1, -1}, TevPoint{1, 3}}) {
    EXPECT_FAILS(tevStatusBadAnchor, M::init(5, mask, {3, 3}, anchor, at), memory);
    EXPECT_EQ(M::init(5, mask, {3, 3}, anchor, nullptr), tevStatusBadAnchor);
  }
  EXPECT_EQ(M::init(5, mask, {3, 3}, {1, 1}, nullptr), tevStatusNullPtr);

  TevMorphState* state = at;
  EXPECT_FAILS(tevStatusNullPtr, M::initAlloc(5, nullptr, {3, 3}, {1, 1}, &state), state);
  EXPECT_FAILS(tevStatusBadSize, M::initAlloc(-5, mask, {3, 3}, {1, 1}, &state), state);
  EXPECT_FAILS(tevStatusBadAnchor, M::initAlloc(5, mask, {3, 3}, {1, 3}, &state), state);
  EXPECT_EQ(M::initAlloc(5, mask, {3, 3}, {1, 1}, nullptr), tevStatusNullPtr);
  {
    kit::AllocatorWatch watch(0);
    EXPECT_FAILS(tevStatusNoMemory, M::initAlloc(5, mask, {3, 3}, {1, 1}, &state), state);
    EXPECT_EQ(watch.blocksHeld(), 0);
  }
  {
    kit::AllocatorWatch watch;
    EXPECT_FAILS(tevStatusNoMemory, M::initAlloc(std::numeric_limits<int>::max(), mask, {3, 3}, {1, 1}, &state), state);
    EXPECT_EQ(watch.requests(), 0);
    EXPECT_EQ(M::initAlloc(5, mask, {3, 3}, {1, 1}, &state), tevStatusOk);
    EXPECT_EQ(watch.requests(), 1);
    EXPECT_EQ(teviMorphologyFree(state), tevStatusOk);
    EXPECT_EQ(watch.blocksHeld(), 0);
  }
  EXPECT_EQ(teviMorphologyFree(nullptr), tevStatusNullPtr);
}

// --- Operations

TYPED_TEST(Morphology, EqualsTheDefinitionOnRandomRegionsAndElements) {
  Random random;
  for (int trial = 0; trial < 1500; ++trial) {
    const auto src =
        random.image<typename TypeParam::T, TypeParam::channels>(random.between(1, 24), random.between(1, 20));
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, randomElement(random), random, random.between(0, 9)));
  }
}

TYPED_TEST(Morphology, EqualsTheDefinitionForDiscsOfManySizes) {
  Random random;
  for (const int diameter : {3, 5, 9, 15, 21, 35}) {
    ASSERT_NO_FATAL_FAILURE(
        expectDefinition(random.image<typename TypeParam::T, TypeParam::channels>(50, 23), disc(diameter), random));
    ASSERT_NO_FATAL_FAILURE(
        expectDefinition(random.image<typename TypeParam::T, TypeParam::channels>(9, 41), disc(diameter), random));
  }
}

TYPED_TEST(Morphology, OfOnePixelGivesThatPixel) {
  Random random;
  const auto src = random.image<typename TypeParam::T, TypeParam::channels>(1, 1);
  for (const Element& e : {disc(7), rectangle(4, 4, {0, 3}), picture({"#.#", ".o."}), blank(3, 3, {1, 1})})
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, e, random));
}

TYPED_TEST(Morphology, EqualsTheDefinitionOnRegionsSmallerThanTheElement) {
  Random random;
  const Element holed = picture({"##.####", "#.#####", "######.", "...O..#", "#######", "#.#.#.#"});
  for (int width = 1; width <= 9; ++width)
    for (int height = 1; height <= 13; ++height)
      ASSERT_NO_FATAL_FAILURE(
          expectDefinition(random.image<typename TypeParam::T, TypeParam::channels>(width, height), holed, random, 3));
}

TYPED_TEST(Morphology, ShiftsByRectanglesFarOffTheAnchor) {
  Random random;
  for (const int width : {1, 5, 20})
    for (const int height : {1, 4, 15})
      for (const TevPoint at : {TevPoint{0, 0}, TevPoint{10, 0}, TevPoint{0, 8}, TevPoint{10, 8}}) {
        Element e = blank(12, 10, {at.x == 0 ? 11 : 0, at.y == 0 ? 9 : 0});
        for (int j = 0; j < 2; ++j)
          for (int i = 0; i < 2; ++i) e.set(at.x + i, at.y + j);
        ASSERT_EQ(classOf(e), tevMorphKernelRect);
        ASSERT_NO_FATAL_FAILURE(
            expectDefinition(random.image<typename TypeParam::T, TypeParam::channels>(width, height), e, random));
      }
}

TEST(MorphologyTall, EqualsTheDefinitionAtTheTallestAnalysedHeight) {
  Random random;
  const auto src = random.image<Tev8u>(7, 300);
  for (const int height : {255, 256}) {
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, rectangle(2, height, {1, 100}), random));
    Element wedge = blank(5, height, {0, 20});
    for (int y = 0; y < height; ++y)
      for (int x = 0; x <= y % 5; ++x) wedge.set(x, y);
    EXPECT_EQ(classOf(wedge), height == 255 ? tevMorphKernelEllipse : tevMorphKernelGeneral);
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, wedge, random));
  }
}

TEST(MorphologyFloats, GeneralErosionTakesOverNanAndLosesItAgain) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
  const auto src = grid<Tev32f>({{5, 6, nan, 3, 8, 9, inf, inf, inf}});
  Image<Tev32f> dst(9, 1);
  const Element e = picture({"#o#"});
  const State<Tev32f, 1> state(9, e);
  ASSERT_EQ(teviErodeBorderReplicate_32f_C1R(src.data(), 36, dst.data(), 36, {9, 1}, 1, state.get()), tevStatusOk);
  constexpr float most = std::numeric_limits<float>::max();
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{5, nan, 3, 8, 3, 8, 9, most, most}}));
  ASSERT_EQ(teviDilateBorderReplicate_32f_C1R(src.data(), 36, dst.data(), 36, {9, 1}, 1, state.get()), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{6, 5, 6, 8, 9, inf, inf, inf, inf}}));
}

TEST(MorphologyFloats, GeneralClassFoldsNanInfinitiesAndZerosInRowOrder) {
  constexpr float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  Random random;
  for (int trial = 0; trial < 200; ++trial) {
    const auto src = random.image<Tev32f, 3>(random.between(1, 20), random.between(1, 14), [&] {
      constexpr float values[] = {nan, 0.0F, -0.0F, inf, -inf, 1.0F};
      return values[random.between(0, 5)];
    });
    Element e = randomElement(random);
    if (classOf(e) != tevMorphKernelGeneral) continue;
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, e, random));
  }
}

TEST(MorphologyFloats, RectanglesAndRunsKeepTheFirstZeroInRowOrder) {
  Random random;
  const auto zeros = [&] { return random.oneIn(2) ? 0.0F : -0.0F; };
  for (int trial = 0; trial < 60; ++trial) {
    const auto src = random.image<Tev32f>(random.between(1, 40), random.between(1, 14), zeros);
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, disc(random.between(0, 4) * 2 + 1), random));
    ASSERT_NO_FATAL_FAILURE(expectDefinition(src, rectangle(random.between(1, 18), 4, {0, 2}), random));
  }
}

TYPED_TEST(Morphology, RefusesWiderRegionsThanTheStatesAndServesTallerOnes) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  Random random;
  for (const Element& e : {disc(5), rectangle(3, 3, {1, 1}), picture({"#o#"}), blank(2, 2, {0, 0})}) {
    const State<T, channels> state(10, e);
    auto src = random.image<T, channels>(11, 90), dst = random.image<T, channels>(11, 90);
    for (const Operation<T> f : Members<T, channels>::operation) {
      EXPECT_FAILS(tevStatusBadSize, f(src.data(), src.step(), dst.data(), dst.step(), {11, 1}, 1, state.get()), dst);
      EXPECT_EQ(f(src.data(), src.step(), dst.data(), dst.step(), {10, 90}, 1, state.get()), tevStatusOk);
      EXPECT_EQ(f(src.data(), src.step(), dst.data(), dst.step(), {3, 90}, 1, state.get()), tevStatusOk);
    }
  }
}

TYPED_TEST(Morphology, ChecksPointersSizeStepsAlignmentBorderAndThenTheStatesWidth) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels, row = 8 * TypeParam::pixelBytes;
  const State<T, channels> state(8, rectangle(3, 3, {1, 1}));
  const Image<T, channels> src(9, 4, 8);
  Image<T, channels> dst(9, 4, 8);
  T* const null = nullptr;
  const T* const s = src.data();
  T* const d = dst.data();
  TevMorphState* const st = state.get();
  for (const Operation<T> f : Members<T, channels>::operation) {
    EXPECT_FAILS(tevStatusNullPtr, f(null, 0, d, 0, {0, 0}, 0, st), dst);
    EXPECT_FAILS(tevStatusNullPtr, f(s, row, null, row, {8, 4}, 1, st), dst);
    EXPECT_FAILS(tevStatusNullPtr, f(s, row, d, row, {8, 4}, 1, nullptr), dst);
    EXPECT_FAILS(tevStatusBadSize, f(s, 0, d, 0, {0, 4}, 0, st), dst);
    EXPECT_FAILS(tevStatusBadSize, f(s, 0, d, 0, {8, -1}, 0, st), dst);
    EXPECT_FAILS(tevStatusBadStep, f(s, row - 1, d, row, {8, 4}, 0, st), dst);
    EXPECT_FAILS(tevStatusBadStep, f(s, row, d, row - 1, {8, 4}, 0, st), dst);
    EXPECT_FAILS(tevStatusBadStep, f(s, row, d, row, {1 << 30, 4}, 0, st), dst);
    if (sizeof(T) == 4) {
      EXPECT_FAILS(tevStatusBadStep, f(s, row + 1, d, row - 1, {8, 4}, 0, st), dst);
      EXPECT_FAILS(tevStatusStepNotAligned, f(s, row + 1, d, row, {8, 4}, 0, st), dst);
      EXPECT_FAILS(tevStatusStepNotAligned, f(s, row, d, row + 2, {8, 4}, 0, st), dst);
    }
    for (const int border : {0, 2, 3, 4, -1})
      EXPECT_FAILS(tevStatusBadArg, f(s, src.step(), d, dst.step(), {9, 4}, border, st), dst);
    EXPECT_FAILS(tevStatusBadSize, f(s, src.step(), d, dst.step(), {9, 4}, 1, st), dst);
    EXPECT_EQ(f(s, row, d, row, {8, 4}, 1, st), tevStatusOk);
  }
}

// --- Workers

TYPED_TEST(Morphology, DirectWorkersReadWholeWindowsFromTheTopLeft) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  Random random;
  const Element e = picture({"##.", "..#"});
  const auto src = random.image<T, channels>(12, 6);
  auto row = random.image<T, channels>(10, 1), rows = random.image<T, channels>(10, 5);
  Members<T, channels>::directRow(src.data(), src.step(), row.data(), 10, e.cells.data(), 3, 2);
  Members<T, channels>::directRows(src.data(), src.step(), rows.data(), rows.step(), 10, 5, e.cells.data(), 3, 2);
  for (int x = 0; x < 10; ++x)
    for (int c = 0; c < channels; ++c) {
      ASSERT_EQ(row.at(x, 0, c), std::max({src.at(x, 0, c), src.at(x + 1, 0, c), src.at(x + 2, 1, c)}));
      for (int y = 0; y < 5; ++y)
        ASSERT_EQ(rows.at(x, y, c), std::min({src.at(x, y, c), src.at(x + 1, y, c), src.at(x + 2, y + 1, c)}));
    }
}

TYPED_TEST(Morphology, EllipseWorkersNeedTheShapeAndTheRingAlone) {
  using T = typename TypeParam::T;
  constexpr int channels = TypeParam::channels;
  Random random;
  const Element e = disc(9);
  std::vector<Tev32s> scratch(6 * 9);
  TevMorphShape shape;
  TevMorphKernelClass kernelClass;
  ownCheckKernel(e.cells.data(), 9, 9, 4, 4, &kernelClass, &shape, scratch.data(), 0);
  ASSERT_EQ(kernelClass, tevMorphKernelEllipse);
  int size = 0;
  ownMorphEllipseGetBufferSize(30, shape.width, shape.height, shape.numLens,
                               sizeof(T) == 1 ? tevDataType8u : tevDataType32f, channels, &size);
  const auto src = random.image<T, channels>(30, 21);
  for (int misalignment = 0; misalignment < 33; ++misalignment) {
    const Buffer work(size, misalignment);
    auto dst = random.image<T, channels>(30, 21);
    Members<T, channels>::dilatedEllipse(src.data(), src.step(), dst.data(), dst.step(), 30, 21, &shape, work.data());
    ASSERT_SAME_IMAGE(dst, definition(src, e, false));
  }
}
