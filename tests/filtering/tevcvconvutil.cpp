// The stages of the fixed filters by name and index, and the drivers that run them over whole images and strips.
#include <algorithm>
#include <limits>
#include <type_traits>

#include "kit/kit.h"
#include "tevcv_internal/filtering.h"

using kit::Buffer;
using kit::Image;
using kit::Random;
using kit::Threads;

namespace {

using Extended = long double;
using Taps = std::vector<int>;

const Taps rowTaps[] = {{-1, 0, 1},       {3, 10, 3}, {1, 0, -1},      {1, 2, 0, -2, -1}, {1, -2, 1},
                        {1, 0, -2, 0, 1}, {1, 2, 1},  {1, 4, 6, 4, 1}, {1, 1, 1},         {1, 1, 1, 1, 1}};
constexpr int pairedRow = 10;

// Column kernels by index; 7 is the paired Laplacian, 8 adds to the destination.
const Taps columnTaps[] = {
    {3, 10, 3},          {-1, 0, 1}, {1, 2, 1},       {1, 4, 6, 4, 1}, {-1, -2, 0, 2, 1},    {1, -2, 1},
    {1, 0, -2, 0, 1},    {},         {1, 4, 6, 4, 1}, {-1, -2, -1},    {-1, -4, -6, -4, -1}, {-1, -2, -1},
    {-1, -4, -6, -4, -1}};
constexpr int pairedColumn = 7, addingColumn = 8;

template <class T>
constexpr int partLength(int width) {
  constexpr int group = 16 / int{sizeof(T)};
  return (width + group - 1) / group * group;
}

int borderAt(int i, int n, TevBorderType type) {
  while (i < 0 || i >= n) {
    if (type == tevBorderConst) return -1;
    if (type == tevBorderRepl) return i < 0 ? 0 : n - 1;
    if (type == tevBorderWrap) i += i < 0 ? n : -n;
    if (type == tevBorderMirror) i = n == 1 ? 0 : i < 0 ? -i : 2 * (n - 1) - i;
    if (type == tevBorderMirrorR) i = i < 0 ? -1 - i : 2 * n - 1 - i;
  }
  return i;
}

template <class T>
std::vector<T*> rowPointers(const Image<T>& image) {
  std::vector<T*> rows;
  for (int y = 0; y < image.height(); ++y)
    rows.push_back(reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(image.data()) + y * image.step()));
  return rows;
}

// Any 16-bit value, so that sums wrap, or what a row stage leaves of bytes.
Tev16s any16s(Random& random, int style) {
  return style == 0 ? random.value<Tev16s>() : static_cast<Tev16s>(random.between(-300, 1275));
}

Tev16s wrapped(std::int64_t sum) { return static_cast<Tev16s>(static_cast<std::uint16_t>(sum)); }

std::int64_t columnSum(int index, const Image<Tev16s>& rows, int x, int y) {
  if (index == pairedColumn)
    return (std::int64_t{rows.at(x, y)} + rows.at(x, y + 2)) * 2 -
           rows.at(partLength<Tev16s>(rows.width() / 2) + x, y + 1);
  std::int64_t sum = 0;
  for (std::size_t j = 0; j < columnTaps[index].size(); ++j)
    sum += columnTaps[index][j] * rows.at(x, y + static_cast<int>(j));
  return sum;
}

int columnLength(int index) { return index == pairedColumn ? 3 : static_cast<int>(columnTaps[index].size()); }

template <class Src, class Mid, class Stage>
void expectRowStages(Stage* const (&table)[11], int trials) {
  Random random;
  for (int index = 0; index <= pairedRow; ++index)
    for (int trial = 0; trial < trials; ++trial) {
      const int width = random.between(1, trial % 2 ? 9 : 200), rows = random.between(1, 4);
      const int k = index == pairedRow ? 3 : static_cast<int>(rowTaps[index].size());
      const auto src = random.image<Src>(width, rows);
      const TevBorderType type = trial % 5;
      const auto value = random.value<Src>();
      const int part = partLength<Mid>(width);
      Image<Mid> dst(index == pairedRow ? part + width : width, rows);
      dst.fill(0);
      auto pointers = rowPointers(dst);
      ASSERT_EQ(table[index](src.data(), pointers.data(), nullptr, src.step() / int{sizeof(Src)}, k / 2, width, rows,
                             type, value),
                tevStatusOk);
      Image<Mid> expected(dst.width(), rows);
      expected.fill(0);
      using Sum = std::conditional_t<std::is_same_v<Src, Tev32f>, Extended, int>;
      for (int y = 0; y < rows; ++y)
        for (int x = 0; x < width; ++x) {
          const auto e = [&](int i) {
            const int at = borderAt(i, width, type);
            return static_cast<Sum>(at < 0 ? value : src.at(at, y));
          };
          if (index == pairedRow) {
            expected.set(x, y, static_cast<Mid>(e(x - 1) + e(x + 1)));
            expected.set(part + x, y, static_cast<Mid>(e(x) * 8));
          } else {
            Sum sum = 0;
            for (int j = 0; j < k; ++j) sum += rowTaps[index][static_cast<std::size_t>(j)] * e(x - k / 2 + j);
            expected.set(x, y, static_cast<Mid>(sum));
          }
        }
      ASSERT_SAME_IMAGE(dst, expected) << "index " << index << " border " << type;
    }
}

}  // namespace

TEST(FixedKernels, HoldTheTapsInOrderInBothTypes) {
  const auto expectTaps = [](const Taps& taps, const Tev16s* integers, const Tev32f* floats) {
    for (std::size_t j = 0; j < taps.size(); ++j) {
      EXPECT_EQ(integers[j], taps[j]);
      EXPECT_EQ(floats[j], static_cast<Tev32f>(taps[j]));
    }
  };
  expectTaps({3, 10, 3}, kerScharr_3_16s, kerScharr_3_32f);
  expectTaps({-1, 0, 1}, kerDx_3_16s, kerDx_3_32f);
  expectTaps({-1, -2, 0, 2, 1}, kerDx_5_16s, kerDx_5_32f);
  expectTaps({1, 0, -1}, kerDxNeg_3_16s, kerDxNeg_3_32f);
  expectTaps({1, 2, 0, -2, -1}, kerDxNeg_5_16s, kerDxNeg_5_32f);
  expectTaps({1, -2, 1}, kerD2x_3_16s, kerD2x_3_32f);
  expectTaps({1, 0, -2, 0, 1}, kerD2x_5_16s, kerD2x_5_32f);
  expectTaps({1, 2, 1}, kerSobel_3_16s, kerSobel_3_32f);
  expectTaps({1, 4, 6, 4, 1}, kerSobel_5_16s, kerSobel_5_32f);
  expectTaps({1, 1, 1}, kerAvr_3_16s, kerAvr_3_32f);
  expectTaps({1, 1, 1, 1, 1}, kerAvr_5_16s, kerAvr_5_32f);
  expectTaps({1, 0, 1}, kerLap_3_16s, kerLap_3_32f);
}

TEST(FixedStages, StandInTheTablesByName) {
  EXPECT_EQ(owntabRow_8u16s[0], ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx);
  EXPECT_EQ(owntabRow_8u16s[5], ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2);
  EXPECT_EQ(owntabRow_8u16s[10], ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian);
  EXPECT_EQ(owntabRow_32f[1], ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr);
  EXPECT_EQ(owntabRow_32f[9], ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr);
  EXPECT_EQ(owntabColumn_8u16s[8], ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian);
  EXPECT_EQ(owntabColumn_8u16s[9], owntabColumn_8u16s[11]);
  EXPECT_EQ(owntabColumn_8u16s[10], owntabColumn_8u16s[12]);
  EXPECT_EQ(owntabColumn_8u16s[12], ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg);
  EXPECT_EQ(owntabColumn_32f[9], ownFilterColumnPipeline_32f_C1R_3x3_kerAvr);
  EXPECT_EQ(owntabColumn_32f[10], ownFilterColumnPipeline_32f_C1R_5x5_kerAvr);
  EXPECT_EQ(owntabColumn_32f[11], ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg);
  EXPECT_EQ(owntabColumn_8u[0], ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr);
  EXPECT_EQ(owntabColumn_8u[1], ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr);
}

TEST(FixedStages, Index8To8sRepeatsThe3x3Laplacian) {
  EXPECT_EQ(owntabColumn_8u8s[8], ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian);
  EXPECT_EQ(owntabColumn_8u8s[7], owntabColumn_8u8s[8]);
}

TEST(FixedStages, RowsOfBytesEqualTheDotProductOfTheExtendedRow) {
  expectRowStages<Tev8u, Tev16s>(owntabRow_8u16s, 30);
}

TEST(FixedStages, RowsOfFloatsEqualTheDotProductOfTheExtendedRow) {
  expectRowStages<Tev32f, Tev32f>(owntabRow_32f, 30);
}

TEST(FixedStages, ANullRowPointerEndsARowStageAndLeavesTheRowsAboveItWritten) {
  Random random;
  const auto src = random.image<Tev8u>(20, 3);
  Image<Tev16s> dst(20, 3);
  dst.fill(-1);
  auto pointers = rowPointers(dst);
  pointers[1] = nullptr;
  EXPECT_EQ(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr(src.data(), pointers.data(), nullptr, src.step(), 1, 20, 3,
                                                            tevBorderRepl, 0),
            tevStatusNullPtr);
  EXPECT_EQ(dst.at(5, 0), src.at(4, 0) + src.at(5, 0) + src.at(6, 0));
  EXPECT_EQ(dst.at(5, 2), -1);
}

TEST(FixedStages, ColumnsTo16sWrap) {
  Random random;
  for (int index = 0; index < 13; ++index)
    for (int style = 0; style < 2; ++style) {
      const int width = random.between(1, 70), rows = random.between(1, 5), k = columnLength(index);
      const auto src =
          random.image<Tev16s>(partLength<Tev16s>(width) * 2, rows + k - 1, [&] { return any16s(random, style); });
      auto dst = random.image<Tev16s>(width, rows);
      Image<Tev16s> expected(width, rows);
      for (int y = 0; y < rows; ++y)
        for (int x = 0; x < width; ++x)
          expected.set(x, y, wrapped(columnSum(index, src, x, y) + (index == addingColumn ? dst.at(x, y) : Tev16s{0})));
      const auto pointers = rowPointers(src);
      owntabColumn_8u16s[index](pointers.data(), dst.data(), dst.step() / 2, width, rows);
      ASSERT_SAME_IMAGE(dst, expected) << "index " << index;
    }
}

TEST(FixedStages, ColumnsTo8sWrapTo16BitsThenScaleInExtendedPrecision) {
  Random random;
  for (int index = 0; index < 13; ++index)
    for (int divisor : {1, -1, 3, 41, -45, 255, 300, 8191, -32767, 32768, 1 << 30, std::numeric_limits<int>::min()}) {
      const int kernel = index == 8 ? 7 : index;
      const int width = random.between(1, 70), rows = random.between(1, 4), k = columnLength(kernel);
      const auto src = random.image<Tev16s>(partLength<Tev16s>(width) * 2, rows + k - 1,
                                            [&] { return any16s(random, divisor % 2 == 0); });
      Image<Tev8s> dst(width, rows), expected(width, rows);
      for (int y = 0; y < rows; ++y)
        for (int x = 0; x < width; ++x) {
          const Extended scaled = wrapped(columnSum(kernel, src, x, y)) * (Extended{1} / divisor);
          expected.set(x, y, static_cast<Tev8s>(std::clamp<Extended>(scaled, -128, 127)));
        }
      const auto pointers = rowPointers(src);
      owntabColumn_8u8s[index](pointers.data(), dst.data(), dst.step(), width, rows, divisor);
      ASSERT_SAME_IMAGE(dst, expected) << "index " << index << " divisor " << divisor;
    }
}

// Every 16-bit value by every small divisor: exact quotients and what lies just beside them.
TEST(FixedStages, DivisionTo8sEqualsTheExtendedProductOfEveryValue) {
  Image<Tev16s> value(65536, 1), zero(65536, 1);
  zero.fill(0);
  for (int v = 0; v < 65536; ++v) value.set(v, 0, static_cast<Tev16s>(v - 32768));
  const Tev16s* const rows[] = {zero.data(), zero.data(), value.data()};
  Image<Tev8s> dst(65536, 1);
  for (int divisor : {1, 2, 3, 5, 7, 41, 61, 99, -253, 1000, 30000}) {
    ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx(rows, dst.data(), 65536, 65536, 1, divisor);
    int wrong = 0;
    for (int v = 0; v < 65536; ++v) {
      const Extended scaled = value.at(v, 0) * (Extended{1} / divisor);
      wrong += dst.at(v, 0) != static_cast<Tev8s>(std::clamp<Extended>(scaled, -128, 127));
    }
    EXPECT_EQ(wrong, 0) << "divisor " << divisor;
  }
}

TEST(FixedStages, AveragesTo8uClampSumsOfAnySize) {
  Random random;
  for (int index = 0; index < 2; ++index)
    for (int style = 0; style < 3; ++style) {
      const int k = index == 0 ? 3 : 5, width = 150, rows = 4;
      const auto src = random.image<Tev16s>(width, rows + k - 1, [&] {
        return style == 2 ? static_cast<Tev16s>(random.between(0, k * 255)) : any16s(random, style);
      });
      Image<Tev8u> dst(width, rows), expected(width, rows);
      for (int y = 0; y < rows; ++y)
        for (int x = 0; x < width; ++x) {
          int t = 0;
          for (int j = 0; j < k; ++j) t += src.at(x, y + j);
          expected.set(x, y, static_cast<Tev8u>(std::clamp((k == 3 ? t * 7280 + 36400 : t * 2621) >> 16, 0, 255)));
        }
      const auto pointers = rowPointers(src);
      owntabColumn_8u[index](pointers.data(), dst.data(), dst.step(), width, rows);
      ASSERT_SAME_IMAGE(dst, expected) << "index " << index << " style " << style;
    }
}

TEST(FixedStages, ColumnsOfFloatsAreSummedInExtendedPrecisionAndRoundedOnce) {
  Random random;
  for (int index = 0; index < 13; ++index)
    for (int style = 0; style < 4; ++style) {
      const bool isAverage = index == 9 || index == 10;
      const Taps taps = isAverage ? Taps(index == 9 ? 3 : 5, 1) : columnTaps[index];
      const int k = index == pairedColumn ? 3 : static_cast<int>(taps.size());
      const int width = random.between(1, 200), rows = random.between(1, 5), part = partLength<Tev32f>(width);
      const auto draw = [&]() -> Tev32f {
        if (style == 0) return static_cast<Tev32f>(random.between(-4000, 4000));
        if (style == 1) return random.real(255);
        if (style == 2) return std::ldexp(random.real(1), random.between(-60, 60));
        return random.oneIn(2) ? -0.0F : std::ldexp(1.0F, random.between(-149, 100));
      };
      const auto src = random.image<Tev32f>(part * 2, rows + k - 1, draw);
      auto dst = random.image<Tev32f>(width, rows, draw);
      Image<Tev32f> expected(width, rows);
      for (int y = 0; y < rows; ++y)
        for (int x = 0; x < width; ++x) {
          Extended sum = 0;
          if (index == pairedColumn)
            sum = (Extended{src.at(x, y)} + src.at(x, y + 2)) * 2 - src.at(part + x, y + 1);
          else
            for (int j = 0; j < k; ++j) sum += Extended(taps[static_cast<std::size_t>(j)]) * src.at(x, y + j);
          if (isAverage) sum *= k == 3 ? 0.11111111F : 0.04F;
          if (index == addingColumn) sum += dst.at(x, y);
          expected.set(x, y, static_cast<Tev32f>(sum));
        }
      const auto pointers = rowPointers(src);
      owntabColumn_32f[index](pointers.data(), dst.data(), dst.step() / 4, width, rows);
      ASSERT_SAME_IMAGE(dst, expected) << "index " << index << " style " << style;
    }
}

TEST(FixedDrivers, StripsOfAnImageMeetWithoutASeam) {
  Random random;
  const Threads threads(1);
  for (TevBorderType type = tevBorderConst; type <= tevBorderMirrorR; ++type)
    for (int height : {5, 6, 21, 22, 60}) {
      const int width = 33, top = 2;
      const auto src = random.image<Tev8u>(width, height);
      int size = 0;
      ASSERT_EQ(teviFilterSobelHorizGetBufferSize_8u16s_C1R({width, height}, tevMskSize5x5, &size), tevStatusOk);
      const Buffer buffer(size, 3);
      Image<Tev16s> whole(width, height), strips(width, height);
      ASSERT_EQ(ownFilterConvolution_8u16s_C1R(src.data(), src.step(), whole.data(), whole.step(), width, height,
                                               kerSobel_5_16s, 5, kerDx_5_16s, 5, type, 9, buffer.data(), 7, 4),
                tevStatusOk);
      const auto strip = [&](int first, int rows, int phase) {
        ASSERT_EQ(ownFilterConvolution_8u16s_C1R_omp(src.data() + first * src.step(), src.step(),
                                                     rowPointers(strips)[static_cast<std::size_t>(first)],
                                                     strips.step(), width, rows, kerSobel_5_16s, 5, kerDx_5_16s, 5,
                                                     type, 9, buffer.data(), 7, 4, src.data(), {width, height}, phase),
                  tevStatusOk);
      };
      strip(0, top, 1);
      const int middle = height - 2 * top, half = middle / 2;
      if (half > 0) strip(top, half, 2);
      strip(top + half, middle - half, 2);
      strip(height - top, top, 4);
      ASSERT_SAME_IMAGE(strips, whole) << "border " << type << " height " << height;
    }
}

TEST(FixedDrivers, OfAllFourTypesAreWhatTheFiltersRun) {
  Random random;
  const Threads threads(1);
  const int w = 40, h = 30;
  const Buffer buffer(1 << 20);
  const auto bytes = random.image<Tev8u>(w, h);
  const auto floats = random.image<Tev32f>(w, h);
  Image<Tev8s> a8s(w, h), b8s(w, h), c8s(w, h);
  ownFilterConvolution_8u8s_C1R(bytes.data(), bytes.step(), a8s.data(), a8s.step(), w, h, kerDx_3_16s, 3,
                                kerScharr_3_16s, 3, tevBorderWrap, 0, buffer.data(), 0, 0, 7);
  ownFilterConvolution_8u8s_C1R_omp(bytes.data(), bytes.step(), b8s.data(), b8s.step(), w, h, kerDx_3_16s, 3,
                                    kerScharr_3_16s, 3, tevBorderWrap, 0, buffer.data(), 0, 0, 7, bytes.data(), {w, h},
                                    7);
  teviFilterScharrVertBorder_8u8s_C1R(bytes.data(), bytes.step(), c8s.data(), c8s.step(), {w, h}, tevBorderWrap, 0, 7,
                                      buffer.data());
  EXPECT_SAME_IMAGE(a8s, c8s);
  EXPECT_SAME_IMAGE(b8s, c8s);
  Image<Tev8u> a8u(w, h), b8u(w, h), c8u(w, h);
  ownFilterConvolution_8u_C1R(bytes.data(), bytes.step(), a8u.data(), a8u.step(), w, h, kerAvr_5_16s, 5, kerAvr_5_16s,
                              5, tevBorderConst, 3, buffer.data(), 9, 1);
  ownFilterConvolution_8u_C1R_omp(bytes.data(), bytes.step(), b8u.data(), b8u.step(), w, h, kerAvr_5_16s, 5,
                                  kerAvr_5_16s, 5, tevBorderConst, 3, buffer.data(), 9, 1, bytes.data(), {w, h}, 7);
  teviFilterLowpassBorder_8u_C1R(bytes.data(), bytes.step(), c8u.data(), c8u.step(), {w, h}, tevMskSize5x5,
                                 tevBorderConst, 3, buffer.data());
  EXPECT_SAME_IMAGE(a8u, c8u);
  EXPECT_SAME_IMAGE(b8u, c8u);
  Image<Tev32f> a32f(w, h), b32f(w, h), c32f(w, h);
  ownFilterConvolution_32f_C1R(floats.data(), floats.step(), a32f.data(), a32f.step(), w, h, kerLap_3_32f, 3,
                               kerLap_3_32f, 3, tevBorderConst, 0.5F, buffer.data(), 10, 7);
  ownFilterConvolution_32f_C1R_omp(floats.data(), floats.step(), b32f.data(), b32f.step(), w, h, kerLap_3_32f, 3,
                                   kerLap_3_32f, 3, tevBorderConst, 0.5F, buffer.data(), 10, 7, floats.data(), {w, h},
                                   7);
  teviFilterLaplacianBorder_32f_C1R(floats.data(), floats.step(), c32f.data(), c32f.step(), {w, h}, tevMskSize3x3,
                                    tevBorderConst, 0.5F, buffer.data());
  EXPECT_SAME_IMAGE(a32f, c32f);
  EXPECT_SAME_IMAGE(b32f, c32f);
}
