#include "statistics/moments.h"
#include "tevcore.h"
#include "tevcv/statistics.h"
#include "tevcv_internal/frame.h"

using namespace moments;
using kit::AllocatorWatch;
using kit::grid;
using kit::Image;
using kit::Random;
using kit::Threads;

namespace {

constexpr float inf = std::numeric_limits<float>::infinity(), quietNan = std::numeric_limits<float>::quiet_NaN();

template <class T>
struct Members {
  TevStatus (*c1)(const T*, int, TevSize, Tev64f*, Tev64f*);
  TevStatus (*c3)(const T*, int, TevSize, int, Tev64f*, Tev64f*);
  TevStatus (*c1m)(const T*, int, const Tev8u*, int, TevSize, Tev64f*, Tev64f*);
  TevStatus (*c3m)(const T*, int, const Tev8u*, int, TevSize, int, Tev64f*, Tev64f*);
};
template <class T>
constexpr Members<T> members();
template <>
constexpr Members<Tev8u> members() {
  return {teviMean_StdDev_8u_C1R, teviMean_StdDev_8u_C3CR, teviMean_StdDev_8u_C1MR, teviMean_StdDev_8u_C3CMR};
}
template <>
constexpr Members<Tev8s> members() {
  return {teviMean_StdDev_8s_C1R, teviMean_StdDev_8s_C3CR, teviMean_StdDev_8s_C1MR, teviMean_StdDev_8s_C3CMR};
}
template <>
constexpr Members<Tev16u> members() {
  return {teviMean_StdDev_16u_C1R, teviMean_StdDev_16u_C3CR, teviMean_StdDev_16u_C1MR, teviMean_StdDev_16u_C3CMR};
}
template <>
constexpr Members<Tev32f> members() {
  return {teviMean_StdDev_32f_C1R, teviMean_StdDev_32f_C3CR, teviMean_StdDev_32f_C1MR, teviMean_StdDev_32f_C3CMR};
}

template <class T>
Moments of(const Image<T>& s) {
  Moments r;
  EXPECT_EQ(members<T>().c1(s.data(), s.step(), s.size(), &r.mean, &r.deviation), tevStatusOk);
  return r;
}
template <class T>
Moments of(const Image<T, 3>& s, int coi) {
  Moments r;
  EXPECT_EQ(members<T>().c3(s.data(), s.step(), s.size(), coi, &r.mean, &r.deviation), tevStatusOk);
  return r;
}
template <class T>
Moments of(const Image<T>& s, const Image<Tev8u>& m) {
  Moments r;
  EXPECT_EQ(members<T>().c1m(s.data(), s.step(), m.data(), m.step(), s.size(), &r.mean, &r.deviation), tevStatusOk);
  return r;
}
template <class T>
Moments of(const Image<T, 3>& s, const Image<Tev8u>& m, int coi) {
  Moments r;
  EXPECT_EQ(members<T>().c3m(s.data(), s.step(), m.data(), m.step(), s.size(), coi, &r.mean, &r.deviation),
            tevStatusOk);
  return r;
}

// Threads of a reading, 0 where it is serial.
int shared(TevSize roi, int threads, int pixelsPerThread) {
  return std::int64_t{roi.width} * roi.height >= std::int64_t{threads} * pixelsPerThread ? threads : 0;
}

// All four members against the definition, with each member's gate.
template <class T>
void compare(Random& random, TevSize roi, int threads, int kind, int sparsity = 2) {
  constexpr bool floats = std::is_same_v<T, Tev32f>;
  const int usual = shared(roi, threads, 131072), ofFloats = shared(roi, threads, 65536);
  const int coi = random.between(1, 3);
  const auto s1 = random.image<T>(roi.width, roi.height, [&] { return draw<T>(random, kind); });
  const auto s3 = random.image<T, 3>(roi.width, roi.height, [&] { return draw<T>(random, kind); });
  const auto m = random.mask(roi.width, roi.height, sparsity);
  ASSERT_EQ(of(s1), defined(s1, nullptr, 1, floats ? ofFloats : usual, ofFloats)) << roi.width << " x " << roi.height;
  ASSERT_EQ(of(s3, coi), defined(s3, nullptr, coi, floats ? 0 : usual, 0)) << roi.width << " x " << roi.height;
  ASSERT_EQ(of(s1, m), defined(s1, &m, 1, usual, 0)) << roi.width << " x " << roi.height;
  ASSERT_EQ(of(s3, m, coi), defined(s3, &m, coi, usual, 0)) << roi.width << " x " << roi.height;
}

template <class T>
class MeanStdDev : public testing::Test {};
using Types = testing::Types<Tev8u, Tev8s, Tev16u, Tev32f>;
TYPED_TEST_SUITE(MeanStdDev, Types);

}  // namespace

TEST(MeanStdDevExample, MeasuresMeanAndPopulationDeviation) {
  EXPECT_EQ(of(grid<Tev8u>({{2, 4, 4, 4}, {5, 5, 7, 9}})), (Moments{5, 2}));
  EXPECT_EQ(of(grid<Tev8u>({{2, 200, 4, 6}}), grid<Tev8u>({{1, 0, 255, 2}})), (Moments{4, std::sqrt(8.0 / 3)}));
  EXPECT_EQ(of(grid<Tev8s>({{-128, -126}})), (Moments{-127, 1}));
  EXPECT_EQ(of(grid<Tev16u, 3>({{1, 65535, 9, 5, 65533, 7}}), 2), (Moments{65534, 1}));
}

TEST(MeanStdDevExample, OnePixelAmongEqualOnesKeepsItsDigits) {
  // sqrt(n - 1) / n for n pixels of which one differs by 1.
  auto s = Image<Tev8u>(997, 991).fill(255).clone();
  s.set(500, 500, 254);
  const double n = 997.0 * 991.0;
  EXPECT_NEAR(of(s).deviation, std::sqrt(n - 1) / n, 2e-12);
}

TEST(MeanStdDevExample, ACoreLibraryThatLeavesItsThreadWordAtZeroMeansOneThread) {
  const Threads setting(2);
  const auto s = Image<Tev8u>(600, 600).fill(9).clone();
  threads_omp_of_n_tev = 0;
  const Moments r = of(s);
  threads_omp_of_n_tev = 2;
  EXPECT_EQ(r, (Moments{9, 0}));
}

TYPED_TEST(MeanStdDev, OfAnEmptyMaskIsZero) {
  const auto m = Image<Tev8u>(17, 5).fill(0).clone();
  EXPECT_EQ(of(Image<TypeParam>(17, 5).fill(9), m), (Moments{0, 0}));
  EXPECT_EQ(of(Image<TypeParam, 3>(17, 5).fill(9), m, 3), (Moments{0, 0}));
}

TYPED_TEST(MeanStdDev, OfAConstantImageIsZero) {
  EXPECT_EQ(of(Image<TypeParam>(61, 13).fill(101)), (Moments{101, 0}));
  EXPECT_EQ(of(Image<TypeParam, 3>(61, 13).fill(101), 1), (Moments{101, 0}));
}

TEST(MeanStdDevExample, LongRowsOfTheLargestElementsDoNotOverflow) {
  const auto m = Image<Tev8u>(100000, 1).fill(255).clone();
  EXPECT_EQ(of(Image<Tev8u>(100000, 1).fill(255)), (Moments{255, 0}));
  EXPECT_EQ(of(Image<Tev8u>(100000, 1).fill(255), m), (Moments{255, 0}));
  EXPECT_EQ(of(Image<Tev8u, 3>(100000, 1).fill(255), m, 3), (Moments{255, 0}));
  EXPECT_EQ(of(Image<Tev8s>(100000, 1).fill(-128)), (Moments{-128, 0}));
  EXPECT_EQ(of(Image<Tev8s, 3>(100000, 1).fill(-128), 2), (Moments{-128, 0}));
  EXPECT_EQ(of(Image<Tev16u>(100000, 1).fill(0), m), (Moments{0, 0}));
}

TEST(MeanStdDevExample, TheOffsetOf16uLosesNothing) {
  EXPECT_EQ(of(Image<Tev16u>(257, 101).fill(65535)), (Moments{65535, 0}));
  EXPECT_EQ(of(Image<Tev16u>(257, 101).fill(0)), (Moments{0, 0}));
  // Squares that sum to more than 2^53.
  EXPECT_EQ(of(Image<Tev16u>(2003, 1501).fill(65535)), (Moments{65535, 0}));
  const Threads setting(3);
  EXPECT_EQ(of(Image<Tev16u>(2003, 1501).fill(65535)), (Moments{65535, 0}));
}

TEST(MeanStdDevExample, FloatsOfSmallSpreadAreReadTwice) {
  EXPECT_EQ(of(Image<Tev32f>(37, 11).fill(1000.5F)), (Moments{1000.5, 0}));
  // One pass has no digits left here: the mean square and the squared mean agree to 2^-53.
  const auto s = grid<Tev32f>({{16777214, 16777216, 16777214, 16777216}});
  EXPECT_EQ(of(s), (Moments{16777215, 1}));
}

TEST(MeanStdDevExample, ANanOfThePlainFormIsANanAndUnderAMaskHasNoEffect) {
  const auto s = grid<Tev32f>({{quietNan, 1, inf, 3}});
  const Moments plain = of(s);
  EXPECT_TRUE(std::isnan(plain.mean) && std::isnan(plain.deviation));
  EXPECT_EQ(of(s, grid<Tev8u>({{0, 1, 0, 1}})), (Moments{2, 1}));
  const auto narrow = grid<Tev32f>({{quietNan, 1001, -inf, 1003}});  // read twice
  EXPECT_EQ(of(narrow, grid<Tev8u>({{0, 1, 0, 1}})), (Moments{1002, 1}));
}

TYPED_TEST(MeanStdDev, EitherResultMayBeNull) {
  constexpr auto call = members<TypeParam>();
  const auto s = Image<TypeParam>(9, 4).fill(3).clone();
  const auto s3 = Image<TypeParam, 3>(9, 4).fill(3).clone();
  const auto m = Image<Tev8u>(9, 4).fill(1).clone();
  const TevSize roi = {9, 4};
  for (const bool wantMean : {false, true})
    for (const bool wantDeviation : {false, true}) {
      Moments r[4];
      const auto mean = [&](int i) { return wantMean ? &r[i].mean : nullptr; };
      const auto deviation = [&](int i) { return wantDeviation ? &r[i].deviation : nullptr; };
      EXPECT_EQ(call.c1(s.data(), s.step(), roi, mean(0), deviation(0)), tevStatusOk);
      EXPECT_EQ(call.c3(s3.data(), s3.step(), roi, 1, mean(1), deviation(1)), tevStatusOk);
      EXPECT_EQ(call.c1m(s.data(), s.step(), m.data(), m.step(), roi, mean(2), deviation(2)), tevStatusOk);
      EXPECT_EQ(call.c3m(s3.data(), s3.step(), m.data(), m.step(), roi, 1, mean(3), deviation(3)), tevStatusOk);
      for (const Moments& each : r) {
        EXPECT_EQ(each.mean, wantMean ? 3 : -7);
        EXPECT_EQ(each.deviation, wantDeviation ? 0 : -7);
      }
    }
}

TYPED_TEST(MeanStdDev, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 300; ++trial) {
    const TevSize roi = {random.oneIn(6) ? 1 : random.between(1, 150), random.oneIn(6) ? 1 : random.between(1, 9)};
    compare<TypeParam>(random, roi, 1, trial % 4, trial % 5 == 0 ? 1 : 2);
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(MeanStdDev, EqualsTheDefinitionOfEveryThreadCountOnBothSidesOfTheGates) {
  Random random;
  // 65536 and 131072 pixels a thread, and one less; few rows among many threads.
  const struct {
    TevSize roi;
    int threads;
  } cases[] = {{{65535, 1}, 1}, {{256, 256}, 1}, {{131071, 1}, 1}, {{512, 256}, 1}, {{131071, 1}, 2},
               {{512, 257}, 2}, {{512, 512}, 2}, {{601, 701}, 3},  {{349, 569}, 3}, {{1024, 513}, 8}};
  for (const auto& [roi, threads] : cases) {
    const Threads setting(threads);
    compare<TypeParam>(random, roi, threads, sizeof(TypeParam) == 4 ? 2 + threads % 2 : 0);
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(MeanStdDev, Above32ThreadsTakesOneBlockAReadingAndReturnsIt) {
  using T = TypeParam;
  constexpr int threads = 33, width = 2048, height = 33 * 64;
  const Threads setting(threads);
  Image<T> s(width, height);
  Image<Tev8u> m(width, height);
  Random random;
  for (int x = 0; x < width; ++x) s.set(x, 0, static_cast<T>(100 + random.between(0, 9)));
  for (int y = 1; y < height; ++y) std::memcpy(s.data() + std::ptrdiff_t{y} * width, s.data(), sizeof(T) * width);
  std::memset(m.data(), 1, static_cast<size_t>(width) * height);
  // Every row is the same, and all sums are whole numbers: the moments are those of one row.
  Image<T> row(width, 1);
  std::memcpy(row.data(), s.data(), sizeof(T) * width);
  const Moments expected = defined(row, nullptr, 1, 0, 0);
  const auto close = [&](const Moments& r) {
    EXPECT_EQ(r.mean, expected.mean);
    EXPECT_NEAR(r.deviation, expected.deviation, 1e-9);
  };
  constexpr size_t frame = 32 + sizeof(void*), element = sizeof(Tev64f);
  {
    const AllocatorWatch watch;
    close(of(s));
    const int readings = std::is_same_v<T, Tev32f> ? 2 : 1;
    const bool parallel = !std::is_same_v<T, Tev8u> || runomp() != 0;
    EXPECT_EQ(watch.requests(), parallel ? readings : 0);
    EXPECT_EQ(watch.blocksHeld(), 0);
    if (parallel) {
      EXPECT_EQ(watch.bytes(), 2 * threads * element + frame + (readings - 1) * (threads * element + frame));
    }
  }
  {
    const AllocatorWatch watch;
    close(of(s, m));
    EXPECT_EQ(watch.requests(), 1);
    EXPECT_EQ(watch.blocksHeld(), 0);
    EXPECT_EQ(watch.bytes(), 3 * threads * element + frame);
  }
  Moments r;
  const AllocatorWatch refusing(0);
  EXPECT_FAILS(tevStatusNoMemory,
               members<T>().c1m(s.data(), s.step(), m.data(), m.step(), s.size(), &r.mean, &r.deviation), r);
}

TYPED_TEST(MeanStdDev, ChecksPointersThenSizeThenStepsThenAlignmentThenChannel) {
  using T = TypeParam;
  constexpr auto call = members<T>();
  constexpr int size = sizeof(T), full = 8 * size;
  const auto s = Image<T>(8, 4, 8).fill(1).clone();
  const auto s3 = Image<T, 3>(8, 4, 8).fill(1).clone();
  const auto m = Image<Tev8u>(8, 4, 8).fill(1).clone();
  const T* const null = nullptr;
  Moments r;
  const int ms = m.step();
  const TevSize roi = {8, 4}, empty = {0, 4}, flat = {8, 0}, huge = {1 << 30, 1};
  const auto plain = [&](TevStatus status, bool src, int step, int step3, TevSize region, int coi) {
    EXPECT_FAILS(status, call.c3(src ? s3.data() : null, step3, region, coi, &r.mean, &r.deviation), r);
    if (status == tevStatusBadCoi) return;
    EXPECT_FAILS(status, call.c1(src ? s.data() : null, step, region, &r.mean, &r.deviation), r);
  };
  const auto masked = [&](TevStatus status, bool src, int step, int step3, const Tev8u* sel, int selStep,
                          TevSize region, int coi) {
    EXPECT_FAILS(status, call.c3m(src ? s3.data() : null, step3, sel, selStep, region, coi, &r.mean, &r.deviation), r);
    if (status == tevStatusBadCoi) return;
    EXPECT_FAILS(status, call.c1m(src ? s.data() : null, step, sel, selStep, region, &r.mean, &r.deviation), r);
  };
  plain(tevStatusNullPtr, false, full, 3 * full, empty, 0);
  plain(tevStatusBadSize, true, 0, 0, empty, 0);
  plain(tevStatusBadSize, true, full, 3 * full, flat, 4);
  plain(tevStatusBadStep, true, full - 1, 3 * full - 1, roi, 0);
  plain(tevStatusBadStep, true, full, 3 * full, huge, 1);
  for (const int coi : {-1, 0, 4}) plain(tevStatusBadCoi, true, full, 3 * full, roi, coi);
  masked(tevStatusNullPtr, false, full, 3 * full, m.data(), ms, empty, 0);
  masked(tevStatusNullPtr, true, full, 3 * full, nullptr, ms, flat, 0);
  masked(tevStatusBadSize, true, 0, 0, m.data(), 0, empty, 0);
  masked(tevStatusBadStep, true, full - 1, 3 * full - 1, m.data(), ms, roi, 0);
  masked(tevStatusBadStep, true, full, 3 * full, m.data(), 7, roi, 0);
  for (const int coi : {-1, 0, 4}) masked(tevStatusBadCoi, true, full, 3 * full, m.data(), ms, roi, coi);
  if (size > 1) {
    plain(tevStatusStepNotAligned, true, full + 1, 3 * full + 1, roi, 0);
    masked(tevStatusStepNotAligned, true, full + 1, 3 * full + 1, m.data(), ms, roi, 0);
    masked(tevStatusBadStep, true, full + 1, 3 * full + 1, m.data(), 7, roi, 0);
  }
  EXPECT_EQ(call.c1m(s.data(), full, m.data(), 8, roi, &r.mean, &r.deviation), tevStatusOk);
}
