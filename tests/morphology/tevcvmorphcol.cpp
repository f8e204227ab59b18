#include <algorithm>
#include <vector>

#include "kit/kit.h"
#include "tevcv_internal/morphology.h"

using kit::Image;
using kit::Random;

namespace {

template <class T>
using Row = void (*)(const T* src, T* dst, int width, int length, int offset);
template <class T>
using Column = void (*)(const T* src, int srcStep, T* dst, int dstStep, int width, int height, int channels, int maskW,
                        int maskH, int ax, int ay, Row<T> rowFunction, T** ring);

// Workers for a height of 1, 3, 5 and for any, and a row worker to go with them.
template <class T, bool least>
struct Workers;
#define WORKERS(T, least, rowWorker, ...)             \
  template <>                                         \
  struct Workers<T, least> {                          \
    static constexpr Row<T> row = rowWorker;          \
    static constexpr Column<T> all[] = {__VA_ARGS__}; \
  };
WORKERS(Tev8u, true, ownFilterMinRowVH_8u_C1R, ownFilterMinColumn01_8u_C1R, ownFilterMinColumn03_8u_C1R,
        ownFilterMinColumn05_8u_C1R, ownFilterMinColumnVH_8u_C1R)
WORKERS(Tev32f, true, ownFilterMinRowVH_32f_C1R, ownFilterMinColumn01_32f_C1R, ownFilterMinColumn03_32f_C1R,
        ownFilterMinColumn05_32f_C1R, ownFilterMinColumnVH_32f_C1R)
WORKERS(Tev8u, false, ownFilterMaxRowVH_8u_C1R, ownFilterMaxColumn01_8u_C1R, ownFilterMaxColumn03_8u_C1R,
        ownFilterMaxColumn05_8u_C1R, ownFilterMaxColumnVH_8u_C1R)
WORKERS(Tev32f, false, ownFilterMaxRowVH_32f_C1R, ownFilterMaxColumn01_32f_C1R, ownFilterMaxColumn03_32f_C1R,
        ownFilterMaxColumn05_32f_C1R, ownFilterMaxColumnVH_32f_C1R)

template <class Element, bool minimum>
struct Form {
  using T = Element;
  static constexpr bool least = minimum;
  static constexpr auto row = Workers<T, least>::row;
  static constexpr const auto& workers = Workers<T, least>::all;
};
template <class F>
class ColumnWorkers : public testing::Test {};
using Forms = testing::Types<Form<Tev8u, true>, Form<Tev8u, false>, Form<Tev32f, true>, Form<Tev32f, false>>;
TYPED_TEST_SUITE(ColumnWorkers, Forms);

template <class F>
Image<typename F::T> definition(const Image<typename F::T>& src, int maskW, int maskH, int ax, int ay) {
  Image<typename F::T> result(src.width(), src.height());
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x) {
      const int x0 = std::max(0, x - ax), x1 = std::min(src.width(), x - ax + maskW);
      const int y0 = std::max(0, y - ay), y1 = std::min(src.height(), y - ay + maskH);
      auto best = src.at(x0, y0);
      for (int j = y0; j < y1; ++j)
        for (int i = x0; i < x1; ++i)
          if (F::least ? src.at(i, j) < best : src.at(i, j) > best) best = src.at(i, j);
      result.set(x, y, best);
    }
  return result;
}

// A ring as the filters lay it out: `lines` lines, entered again and again.
template <class T>
class Ring {
 public:
  Ring(int lines, int width, int entries) : lines_(width, lines) {
    for (int i = 0; i < entries; ++i)
      entries_.push_back(reinterpret_cast<T*>(reinterpret_cast<Tev8u*>(lines_.data()) + lines_.step() * (i % lines)));
  }
  T** entries() { return entries_.data(); }

 private:
  Image<T> lines_;
  std::vector<T*> entries_;
};

template <class F>
void expectDefinition(Column<typename F::T> worker, int lines, const Image<typename F::T>& src, int maskW, int maskH,
                      int ax, int ay, Random& random) {
  SCOPED_TRACE(testing::Message() << src.width() << " x " << src.height() << ", mask " << maskW << " x " << maskH
                                  << ", anchor " << ax << ", " << ay);
  Ring<typename F::T> ring(lines, src.width(), 4 * maskH);
  auto dst = random.image<typename F::T>(src.width(), src.height());
  worker(src.data(), src.step(), dst.data(), dst.step(), src.width(), src.height(), 1, maskW, maskH, ax, ay, F::row,
         ring.entries());
  ASSERT_SAME_IMAGE(dst, definition<F>(src, maskW, maskH, ax, ay));
}

}  // namespace

TYPED_TEST(ColumnWorkers, OfOneHeightGiveTheExtremumOnImagesOfEveryHeight) {
  Random random;
  for (const int i : {0, 1, 2}) {
    const int maskH = 2 * i + 1;
    for (int height = 1; height <= 14; ++height)
      for (int ay = 0; ay < maskH; ++ay)
        ASSERT_NO_FATAL_FAILURE(expectDefinition<TypeParam>(
            TypeParam::workers[i], maskH + 1, random.image<typename TypeParam::T>(random.between(1, 40), height), 4,
            maskH, random.between(0, 3), ay, random));
  }
}

TYPED_TEST(ColumnWorkers, OfAnyHeightGiveTheExtremumForEveryHeightAndAnchor) {
  // Masks lower than the image, as high, and higher than any clamping reaches.
  Random random;
  for (const int height : {1, 2, 3, 7, 12, 25}) {
    const auto src = random.image<typename TypeParam::T>(5, height);
    for (int maskH = 1; maskH <= 2 * height + 4; ++maskH)
      for (int ay = 0; ay < maskH; ++ay)
        ASSERT_NO_FATAL_FAILURE(
            expectDefinition<TypeParam>(TypeParam::workers[3], 2 * maskH, src, 2, maskH, 1, ay, random));
  }
}

TYPED_TEST(ColumnWorkers, FilterEachSourceRowOnce) {
  static int calls;
  const auto counting = [](const typename TypeParam::T* src, typename TypeParam::T* dst, int width, int length,
                           int offset) {
    ++calls;
    TypeParam::row(src, dst, width, length, offset);
  };
  Random random;
  const auto src = random.image<typename TypeParam::T>(4, 50);
  auto dst = random.image<typename TypeParam::T>(4, 50);
  const int heights[] = {1, 3, 5, 9};
  for (int i = 0; i < 4; ++i) {
    Ring<typename TypeParam::T> ring(2 * heights[i], 4, 4 * heights[i]);
    Ring<typename TypeParam::T> fixedRing(heights[i] + 1, 4, 4 * heights[i]);
    calls = 0;
    TypeParam::workers[i](src.data(), src.step(), dst.data(), dst.step(), 4, 50, 1, 3, heights[i], 1, heights[i] / 2,
                          counting, i == 3 ? ring.entries() : fixedRing.entries());
    EXPECT_EQ(calls, 50);
  }
}

TEST(ColumnWorkersOnPixels, SeeChannelsAsAFlatLine) {
  Random random;
  const auto src = random.image<Tev8u, 3>(11, 20);
  auto dst = random.image<Tev8u, 3>(11, 20);
  Ring<Tev8u> ring(2 * 7, 33, 4 * 7);
  ownFilterMaxColumnVH_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), 11, 20, 3, 1, 7, 0, 3,
                              ownFilterMaxRow01_8u_C3R, ring.entries());
  for (int y = 0; y < 20; ++y)
    for (int i = 0; i < 33; ++i) {
      Tev8u best = 0;
      for (int j = std::max(0, y - 3); j < std::min(20, y + 4); ++j) best = std::max(best, src.get(i, j));
      ASSERT_EQ(dst.get(i, y), best);
    }
}

// --- Tables

TEST(ColumnTables, MinimumHasWorkersForHeightsOfOneThreeAndFive) {
  const TevFilterColumn_8u t8u[8] = {ownFilterMinColumnVH_8u_C1R, ownFilterMinColumn01_8u_C1R,
                                     ownFilterMinColumnVH_8u_C1R, ownFilterMinColumn03_8u_C1R,
                                     ownFilterMinColumnVH_8u_C1R, ownFilterMinColumn05_8u_C1R,
                                     ownFilterMinColumnVH_8u_C1R, ownFilterMinColumnVH_8u_C1R};
  EXPECT_TRUE(std::equal(t8u, t8u + 8, owntablFilterMinColumn_8u_C1));
  const TevFilterColumn_32f t32f[8] = {ownFilterMinColumnVH_32f_C1R, ownFilterMinColumn01_32f_C1R,
                                       ownFilterMinColumnVH_32f_C1R, ownFilterMinColumn03_32f_C1R,
                                       ownFilterMinColumnVH_32f_C1R, ownFilterMinColumn05_32f_C1R,
                                       ownFilterMinColumnVH_32f_C1R, ownFilterMinColumnVH_32f_C1R};
  EXPECT_TRUE(std::equal(t32f, t32f + 8, owntablFilterMinColumn_32f_C1));
}

TEST(ColumnTables, MaximumHasWorkersForHeightsOfOneThreeAndFive) {
  const TevFilterColumn_8u t8u[8] = {ownFilterMaxColumnVH_8u_C1R, ownFilterMaxColumn01_8u_C1R,
                                     ownFilterMaxColumnVH_8u_C1R, ownFilterMaxColumn03_8u_C1R,
                                     ownFilterMaxColumnVH_8u_C1R, ownFilterMaxColumn05_8u_C1R,
                                     ownFilterMaxColumnVH_8u_C1R, ownFilterMaxColumnVH_8u_C1R};
  EXPECT_TRUE(std::equal(t8u, t8u + 8, owntablFilterMaxColumn_8u_C1));
  const TevFilterColumn_32f t32f[8] = {ownFilterMaxColumnVH_32f_C1R, ownFilterMaxColumn01_32f_C1R,
                                       ownFilterMaxColumnVH_32f_C1R, ownFilterMaxColumn03_32f_C1R,
                                       ownFilterMaxColumnVH_32f_C1R, ownFilterMaxColumn05_32f_C1R,
                                       ownFilterMaxColumnVH_32f_C1R, ownFilterMaxColumnVH_32f_C1R};
  EXPECT_TRUE(std::equal(t32f, t32f + 8, owntablFilterMaxColumn_32f_C1));
}
