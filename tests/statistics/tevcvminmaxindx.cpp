#include <cstdlib>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

#include "kit/kit.h"
#include "tevcv/statistics.h"

using kit::AllocatorWatch;
using kit::grid;
using kit::Image;
using kit::Random;
using kit::threadCounts;
using kit::Threads;

namespace {

constexpr float inf = std::numeric_limits<float>::infinity(), quietNan = std::numeric_limits<float>::quiet_NaN();

template <class T>
struct Members {
  TevStatus (*c1)(const T*, int, TevSize, Tev32f*, Tev32f*, TevPoint*, TevPoint*);
  TevStatus (*c3)(const T*, int, TevSize, int, Tev32f*, Tev32f*, TevPoint*, TevPoint*);
  TevStatus (*c1m)(const T*, int, const Tev8u*, int, TevSize, Tev32f*, Tev32f*, TevPoint*, TevPoint*);
  TevStatus (*c3m)(const T*, int, const Tev8u*, int, TevSize, int, Tev32f*, Tev32f*, TevPoint*, TevPoint*);
};
template <class T>
constexpr Members<T> members();
template <>
constexpr Members<Tev8u> members() {
  return {teviMinMaxIndx_8u_C1R, teviMinMaxIndx_8u_C3CR, teviMinMaxIndx_8u_C1MR, teviMinMaxIndx_8u_C3CMR};
}
template <>
constexpr Members<Tev8s> members() {
  return {teviMinMaxIndx_8s_C1R, teviMinMaxIndx_8s_C3CR, teviMinMaxIndx_8s_C1MR, teviMinMaxIndx_8s_C3CMR};
}
template <>
constexpr Members<Tev16u> members() {
  return {teviMinMaxIndx_16u_C1R, teviMinMaxIndx_16u_C3CR, teviMinMaxIndx_16u_C1MR, teviMinMaxIndx_16u_C3CMR};
}
template <>
constexpr Members<Tev32f> members() {
  return {teviMinMaxIndx_32f_C1R, teviMinMaxIndx_32f_C3CR, teviMinMaxIndx_32f_C1MR, teviMinMaxIndx_32f_C3CMR};
}

// Above 32 threads a call keeps a block. While one of these lives it owns such blocks, and frees them at its end.
class KeptBlocks {
 public:
  KeptBlocks() : malloc_(i_malloc) {
    blocks().clear();
    i_malloc = [](size_t size) -> void* {
      blocks().emplace_back(std::malloc(size), size);
      return blocks().back().first;
    };
  }
  ~KeptBlocks() {
    i_malloc = malloc_;
    for (const auto& [block, size] : blocks()) std::free(block);
  }
  KeptBlocks(const KeptBlocks&) = delete;
  KeptBlocks& operator=(const KeptBlocks&) = delete;

  int count() const { return static_cast<int>(blocks().size()); }
  size_t bytes() const {
    size_t sum = 0;
    for (const auto& [block, size] : blocks()) sum += size;
    return sum;
  }

 private:
  static std::vector<std::pair<void*, size_t>>& blocks() {
    static std::vector<std::pair<void*, size_t>> all;
    return all;
  }
  void* (*malloc_)(size_t);
};

struct Result {
  Tev32f min = -77, max = -77;
  TevPoint at = {-7, -7}, to = {-7, -7};
};
bool operator==(const Result& a, const Result& b) {
  return kit::sameBits(a.min, b.min) && kit::sameBits(a.max, b.max) && a.at.x == b.at.x && a.at.y == b.at.y &&
         a.to.x == b.to.x && a.to.y == b.to.y;
}
void PrintTo(const Result& r, std::ostream* out) {
  *out << r.min << " at (" << r.at.x << ", " << r.at.y << "), " << r.max << " at (" << r.to.x << ", " << r.to.y << ")";
}

template <class T>
Result find(const Image<T>& s) {
  Result r;
  EXPECT_EQ(members<T>().c1(s.data(), s.step(), s.size(), &r.min, &r.max, &r.at, &r.to), tevStatusOk);
  return r;
}
template <class T>
Result find(const Image<T, 3>& s, int coi) {
  Result r;
  EXPECT_EQ(members<T>().c3(s.data(), s.step(), s.size(), coi, &r.min, &r.max, &r.at, &r.to), tevStatusOk);
  return r;
}
template <class T>
Result find(const Image<T>& s, const Image<Tev8u>& m) {
  Result r;
  EXPECT_EQ(members<T>().c1m(s.data(), s.step(), m.data(), m.step(), s.size(), &r.min, &r.max, &r.at, &r.to),
            tevStatusOk);
  return r;
}
template <class T>
Result find(const Image<T, 3>& s, const Image<Tev8u>& m, int coi) {
  Result r;
  EXPECT_EQ(members<T>().c3m(s.data(), s.step(), m.data(), m.step(), s.size(), coi, &r.min, &r.max, &r.at, &r.to),
            tevStatusOk);
  return r;
}

// The definition: one scan with strict comparisons from the ends of the range, for the value and its row; then a search
// of that row from the left.
template <class T, int channels>
Result defined(const Image<T, channels>& s, const Image<Tev8u>* mask, int coi = 1) {
  T lo = std::numeric_limits<T>::max(), hi = std::numeric_limits<T>::lowest();
  Result r{0, 0, {0, 0}, {0, 0}};
  bool any = false;
  const auto selected = [&](int x, int y) { return !mask || mask->at(x, y) != 0; };
  for (int y = 0; y < s.height(); ++y)
    for (int x = 0; x < s.width(); ++x) {
      if (!selected(x, y)) continue;
      any = true;
      const T v = s.at(x, y, coi - 1);
      if (v < lo) lo = v, r.at.y = y;
      if (v > hi) hi = v, r.to.y = y;
    }
  if (!any) return r;
  for (int x = s.width() - 1; x >= 0; --x) {
    if (selected(x, r.at.y) && s.at(x, r.at.y, coi - 1) == lo) r.at.x = x;
    if (selected(x, r.to.y) && s.at(x, r.to.y, coi - 1) == hi) r.to.x = x;
  }
  r.min = static_cast<Tev32f>(lo);
  r.max = static_cast<Tev32f>(hi);
  return r;
}

// Values with many ties, some of them at the ends of the range.
template <class T>
T draw(Random& random, int kind) {
  using Limits = std::numeric_limits<T>;
  if (kind == 0) return random.value<T>();
  if (kind == 1) return static_cast<T>(random.between(1, 3));
  if (kind == 2) return Limits::max();
  if (kind == 3) return Limits::lowest();
  if constexpr (std::is_same_v<T, Tev32f>) {
    constexpr float some[] = {0.0F, -0.0F, inf, -inf, quietNan, Limits::max(), Limits::lowest(), quietNan};
    return some[kind == 4 ? random.between(0, 7) : random.between(0, 1)];
  }
  return random.oneIn(3) ? (random.oneIn(2) ? Limits::max() : Limits::lowest()) : random.value<T>();
}

// All four members on one random region.
template <class T>
void compare(Random& random, int width, int height, int kind, int sparsity) {
  const auto s1 = random.image<T>(width, height, [&] { return draw<T>(random, kind); });
  const auto s3 = random.image<T, 3>(width, height, [&] { return draw<T>(random, kind); });
  const auto mask = random.mask(width, height, sparsity);
  const int coi = random.between(1, 3);
  ASSERT_EQ(find(s1), defined(s1, nullptr)) << width << " x " << height;
  ASSERT_EQ(find(s3, coi), defined(s3, nullptr, coi)) << width << " x " << height;
  ASSERT_EQ(find(s1, mask), defined(s1, &mask)) << width << " x " << height;
  ASSERT_EQ(find(s3, mask, coi), defined(s3, &mask, coi)) << width << " x " << height;
}

template <class T>
class MinMaxIndx : public testing::Test {};
using Types = testing::Types<Tev8u, Tev8s, Tev16u, Tev32f>;
TYPED_TEST_SUITE(MinMaxIndx, Types);

}  // namespace

TEST(MinMaxIndxExample, FindsValuesAndPositions) {
  EXPECT_EQ(find(grid<Tev8u>({{5, 6, 7}, {8, 2, 7}, {9, 4, 3}})), (Result{2, 9, {1, 1}, {0, 2}}));
  EXPECT_EQ(find(grid<Tev8s>({{0, -128, 1}, {127, 3, -128}})), (Result{-128, 127, {1, 0}, {0, 1}}));
}

TEST(MinMaxIndxExample, AnImageOfEqualElementsReportsTheFirst) {
  EXPECT_EQ(find(Image<Tev8u>(9, 6).fill(7)), (Result{7, 7, {0, 0}, {0, 0}}));
  EXPECT_EQ(find(Image<Tev8u>(9, 6).fill(255)), (Result{255, 255, {0, 0}, {0, 0}}));
}

TEST(MinMaxIndxExample, OfEqualElementsTheEarlierRowWinsThenTheSmallerColumn) {
  auto s = Image<Tev8u>(9, 6).fill(100).clone();
  s.set(5, 2, 1);
  s.set(1, 3, 1);
  s.set(3, 4, 200);
  s.set(6, 4, 200);
  EXPECT_EQ(find(s), (Result{1, 200, {5, 2}, {3, 4}}));
}

TEST(MinMaxIndxExample, AChannelOfInterestCountsColumnsInPixels) {
  auto s = Image<Tev8u, 3>(8, 2).fill(50).clone();
  s.set(3 * 6 + 2, 1, 90);
  s.set(3 * 4 + 1, 0, 99);
  s.set(3 * 5 + 2, 1, 10);
  EXPECT_EQ(find(s, 3), (Result{10, 90, {5, 1}, {6, 1}}));
  EXPECT_EQ(find(s, 2), (Result{50, 99, {0, 0}, {4, 0}}));
}

TEST(MinMaxIndxExample, AMaskOfOnePixelGivesItForBoth) {
  auto s = Image<Tev8u>(7, 7).fill(3).clone();
  auto m = Image<Tev8u>(7, 7).fill(0).clone();
  s.set(4, 4, 10);
  m.set(4, 4, 2);
  EXPECT_EQ(find(s, m), (Result{10, 10, {4, 4}, {4, 4}}));
}

TEST(MinMaxIndxExample, AnEmptyMaskGivesZeros) {
  const auto m = Image<Tev8u>(7, 7).fill(0).clone();
  EXPECT_EQ(find(Image<Tev8u>(7, 7).fill(9), m), (Result{0, 0, {0, 0}, {0, 0}}));
  EXPECT_EQ(find(Image<Tev32f>(7, 7).fill(quietNan), m), (Result{0, 0, {0, 0}, {0, 0}}));
  EXPECT_EQ(find(Image<Tev16u, 3>(7, 7).fill(9), m, 2), (Result{0, 0, {0, 0}, {0, 0}}));
}

TEST(MinMaxIndxExample, ASelectedElementAtTheEndOfTheRangeDoesNotMoveTheRow) {
  auto s = Image<Tev8u>(5, 5).fill(9).clone();
  auto m = Image<Tev8u>(5, 5).fill(0).clone();
  s.set(2, 3, 255);
  m.set(2, 3, 1);
  EXPECT_EQ(find(s, m), (Result{255, 255, {0, 0}, {2, 3}}));
  s.set(2, 3, 0);
  EXPECT_EQ(find(s, m), (Result{0, 0, {2, 3}, {0, 0}}));
}

TEST(MinMaxIndxExample, NansArePassedOverAndInfinitiesTakePart) {
  const float most = 3.4028235e38F;
  EXPECT_EQ(find(Image<Tev32f>(4, 3).fill(quietNan)), (Result{most, -most, {0, 0}, {0, 0}}));
  EXPECT_EQ(find(grid<Tev32f>({{quietNan, 2, quietNan}, {1, quietNan, 3}})), (Result{1, 3, {0, 1}, {2, 1}}));
  EXPECT_EQ(find(grid<Tev32f>({{1, inf}, {-inf, 3}})), (Result{-inf, inf, {0, 1}, {1, 0}}));
  EXPECT_EQ(find(grid<Tev32f>({{inf, inf}})), (Result{most, inf, {0, 0}, {0, 0}}));
}

TEST(MinMaxIndxExample, TheFirstOfTwoZerosGivesItsSign) {
  EXPECT_EQ(find(grid<Tev32f>({{1, -0.0F, 0.0F}})), (Result{-0.0F, 1, {1, 0}, {0, 0}}));
  EXPECT_EQ(find(grid<Tev32f>({{1, 0.0F, -0.0F}})), (Result{0.0F, 1, {1, 0}, {0, 0}}));
}

TYPED_TEST(MinMaxIndx, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 300; ++trial) {
    const int width = random.oneIn(6) ? 1 : random.between(1, 200), height = random.oneIn(6) ? 1 : random.between(1, 9);
    compare<TypeParam>(random, width, height, trial % 6, trial % 3 == 0 ? 1 : trial % 3 == 1 ? 2 : 100);
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(MinMaxIndx, EqualsTheDefinitionAtEveryThreadCountOnBothSidesOfTheGate) {
  Random random;
  // 16383 pixels stay serial; 16384 are shared, by more threads than rows in the flat regions.
  const TevSize sizes[] = {{127, 129}, {128, 128}, {5461, 3}, {4096, 4}, {16384, 1}, {1, 16384}, {301, 97}};
  for (const TevSize roi : sizes)
    for (const int kind : {0, 1, 2, 4, 5})
      for (const int threads : threadCounts) {
        if (threads > 1 && (kind == 2 || kind == 5) && roi.width != 301) continue;
        const Threads setting(threads);
        const KeptBlocks kept;
        compare<TypeParam>(random, roi.width, roi.height, kind, kind == 1 ? 1000 : 2);
        if (this->HasFatalFailure()) return;
      }
}

TYPED_TEST(MinMaxIndx, LaterThreadsDoNotTakeATieFromEarlierOnes) {
  auto s = Image<TypeParam>(128, 200).fill(50).clone();
  for (const int y : {30, 90, 199}) {
    s.set(127 - y / 2, y, 1);
    s.set(y / 2, y, 99);
  }
  for (const int threads : threadCounts) {
    const Threads setting(threads);
    const KeptBlocks kept;
    EXPECT_EQ(find(s), (Result{1, 99, {112, 30}, {15, 30}})) << threads << " threads";
  }
}

TYPED_TEST(MinMaxIndx, KeepsOneBlockACallAbove32ThreadsAndNoneBelow) {
  const auto s = Image<TypeParam>(128, 128).fill(5).clone(), less = Image<TypeParam>(127, 129).fill(5).clone();
  static int freed;
  for (const int threads : {32, 33, 40}) {
    const Threads setting(threads);
    const KeptBlocks kept;
    freed = 0;
    const auto before = i_free;
    i_free = [](void*) { ++freed; };
    find(less);
    EXPECT_EQ(kept.count(), 0);
    find(s);
    i_free = before;
    EXPECT_EQ(kept.count(), threads > 32 ? 1 : 0);
    EXPECT_EQ(freed, 0);
    if (threads > 32) {
      EXPECT_GE(kept.bytes(), static_cast<size_t>(threads) * 24);
    }
  }
}

TYPED_TEST(MinMaxIndx, WithoutMemoryForItsThreadsFailsUntouched) {
  const auto s = Image<TypeParam>(128, 128).fill(5).clone();
  const auto m = Image<Tev8u>(128, 128).fill(1).clone();
  const Threads setting(40);
  Result r;
  {
    const AllocatorWatch refusing(0);
    EXPECT_FAILS(tevStatusNoMemory, members<TypeParam>().c1(s.data(), s.step(), s.size(), &r.min, &r.max, &r.at, &r.to),
                 r);
  }
  const AllocatorWatch refusing(0);
  EXPECT_FAILS(tevStatusNoMemory,
               members<TypeParam>().c1m(s.data(), s.step(), m.data(), m.step(), s.size(), &r.min, &r.max, &r.at, &r.to),
               r);
}

TYPED_TEST(MinMaxIndx, InsideACallersOwnRegionStillScansAllRows) {
  const Threads setting(4);
  Random random;
  const auto s = random.image<TypeParam>(160, 160);
  const Result expected = defined(s, nullptr);
  Result results[2];
#pragma omp parallel for num_threads(2)
  for (int i = 0; i < 2; ++i) results[i] = find(s);
  EXPECT_EQ(results[0], expected);
  EXPECT_EQ(results[1], expected);
}

TYPED_TEST(MinMaxIndx, ChecksPointersThenSizeThenStepsThenAlignmentThenChannel) {
  using T = TypeParam;
  constexpr auto call = members<T>();
  constexpr int size = sizeof(T);
  const auto s = Image<T>(8, 4, 8).fill(1).clone();
  const auto s3 = Image<T, 3>(8, 4, 8).fill(1).clone();
  const auto m = Image<Tev8u>(8, 4, 8).fill(1).clone();
  const T* const null = nullptr;
  Result r;
  const int full = 8 * size, ms = m.step();
  const TevSize roi = {8, 4}, empty = {0, 4}, flat = {8, 0}, huge = {1 << 30, 1};
  // All four members with the step of one channel, three times as long for three.
  const auto plain = [&](TevStatus status, bool src, int step, int step3, TevSize region, int coi) {
    EXPECT_FAILS(status, call.c3(src ? s3.data() : null, step3, region, coi, &r.min, &r.max, &r.at, &r.to), r);
    if (status == tevStatusBadCoi) return;
    EXPECT_FAILS(status, call.c1(src ? s.data() : null, step, region, &r.min, &r.max, &r.at, &r.to), r);
  };
  const auto masked = [&](TevStatus status, bool src, int step, int step3, const Tev8u* sel, int selStep,
                          TevSize region, int coi) {
    EXPECT_FAILS(status,
                 call.c3m(src ? s3.data() : null, step3, sel, selStep, region, coi, &r.min, &r.max, &r.at, &r.to), r);
    if (status == tevStatusBadCoi) return;
    EXPECT_FAILS(status, call.c1m(src ? s.data() : null, step, sel, selStep, region, &r.min, &r.max, &r.at, &r.to), r);
  };
  plain(tevStatusNullPtr, false, full, 3 * full, empty, 0);
  plain(tevStatusBadSize, true, 0, 0, empty, 0);
  plain(tevStatusBadSize, true, full, 3 * full, flat, 4);
  plain(tevStatusBadStep, true, full - 1, 3 * full - 1, roi, 0);
  plain(tevStatusBadStep, true, full, 3 * full, huge, 1);
  plain(tevStatusBadCoi, true, full, 3 * full, roi, 0);
  plain(tevStatusBadCoi, true, full, 3 * full, roi, 4);
  plain(tevStatusBadCoi, true, full, 3 * full, roi, -1);
  masked(tevStatusNullPtr, false, full, 3 * full, m.data(), ms, empty, 0);
  masked(tevStatusNullPtr, true, full, 3 * full, nullptr, ms, flat, 0);
  masked(tevStatusBadSize, true, 0, 0, m.data(), 0, empty, 0);
  masked(tevStatusBadStep, true, full - 1, 3 * full - 1, m.data(), ms, roi, 0);
  masked(tevStatusBadStep, true, full, 3 * full, m.data(), 7, roi, 0);
  masked(tevStatusBadCoi, true, full, 3 * full, m.data(), ms, roi, 0);
  masked(tevStatusBadCoi, true, full, 3 * full, m.data(), ms, roi, 4);
  if (size > 1) {
    plain(tevStatusStepNotAligned, true, full + 1, 3 * full + 1, roi, 0);
    masked(tevStatusStepNotAligned, true, full + 1, 3 * full + 1, m.data(), ms, roi, 0);
    masked(tevStatusBadStep, true, full + 1, 3 * full + 1, m.data(), 7, roi, 0);
  } else {
    EXPECT_EQ(call.c1(s.data(), 9, roi, &r.min, &r.max, &r.at, &r.to), tevStatusOk);
  }
  EXPECT_EQ(call.c1m(s.data(), full, m.data(), 8, roi, &r.min, &r.max, &r.at, &r.to), tevStatusOk);
}
