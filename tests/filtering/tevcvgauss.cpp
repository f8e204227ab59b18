#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/filtering.h"
#include "tevcv_internal/filtering.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

std::vector<Tev32f> oracleTaps(int k, Tev32f sigma) {
  const auto q = static_cast<Tev32f>((static_cast<long double>(sigma) + sigma) * sigma);
  std::vector<Tev32f> taps;
  long double sum = 0;
  for (int i = 0; i <= k; ++i) {
    const long double d = i - k / 2;
    taps.push_back(static_cast<Tev32f>(std::exp(static_cast<double>(-(d * d) / static_cast<long double>(q)))));
    sum = static_cast<long double>(static_cast<Tev32f>(sum)) + taps.back();
  }
  taps.pop_back();
  for (auto& t : taps) t = static_cast<Tev32f>(t / sum);
  return taps;
}

template <class At>
Tev32f dot(const std::vector<Tev32f>& taps, At at) {
  long double sum = 0;
  for (size_t j = 0; j < taps.size(); ++j) sum += static_cast<long double>(taps[j]) * at(static_cast<int>(j));
  return static_cast<Tev32f>(sum);
}

Image<Tev32f> oracleRows(const Image<Tev32f>& src, const std::vector<Tev32f>& taps) {
  const int half = static_cast<int>(taps.size()) / 2;
  Image<Tev32f> result(src.width(), src.height());
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x)
      result.set(x, y, dot(taps, [&](int j) { return src.at(std::clamp(x + j - half, 0, src.width() - 1), y); }));
  return result;
}

// Rows below the width keep the line as it was staged: shifted down by half a kernel.
Image<Tev32f> oracleColumns(const Image<Tev32f>& src, const std::vector<Tev32f>& taps) {
  const int half = static_cast<int>(taps.size()) / 2;
  Image<Tev32f> result(src.width(), src.height());
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x) {
      const auto staged = [&](int i) { return src.at(x, std::clamp(i - half, 0, src.height() - 1)); };
      result.set(x, y, y < src.width() ? dot(taps, [&](int j) { return staged(y + j); }) : staged(y));
    }
  return result;
}

int bufferSize(TevSize roi, int k) {
  int size = 0;
  EXPECT_EQ(teviFilterGaussGetBufferSize_32f_C1R(roi, k, &size), tevStatusOk);
  return size;
}

TevStatus gauss(const Image<Tev32f>& src, Image<Tev32f>& dst, int k, Tev32f sigma, const Buffer& buffer) {
  return teviFilterGaussBorder_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), k, sigma,
                                       tevBorderRepl, 0, buffer.data());
}

}  // namespace

TEST(GaussFilter, EqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (int trial = 0; trial < 250; ++trial) {
    const int width = random.between(1, trial % 3 ? 24 : 150), height = random.between(1, 24);
    const int k = 1 + 2 * random.between(1, 15);
    const Tev32f sigma = 0.2F + std::fabs(random.real(4));
    const auto src = random.image<Tev32f>(width, height);
    auto dst = random.image<Tev32f>(width, height);
    const Buffer buffer(bufferSize(src.size(), k), random.between(0, 63));
    ASSERT_EQ(gauss(src, dst, k, sigma, buffer), tevStatusOk);
    const auto taps = oracleTaps(k, sigma);
    ASSERT_SAME_IMAGE(dst, oracleColumns(oracleRows(src, taps), taps)) << "kernel " << k << " sigma " << sigma;
    auto inPlace = src.clone();
    ASSERT_EQ(gauss(inPlace, inPlace, k, sigma, buffer), tevStatusOk);
    ASSERT_SAME_IMAGE(inPlace, dst);
  }
}

TEST(GaussFilter, WorkersEqualTheDefinition) {
  Random random;
  for (int trial = 0; trial < 60; ++trial) {
    const int width = random.between(1, 20), height = random.between(1, 20), k = 1 + 2 * random.between(1, 5);
    const auto src = random.image<Tev32f>(width, height);
    auto dst = random.image<Tev32f>(width, height);
    const auto taps = oracleTaps(k, 1.5F);
    const Buffer scratch((std::max(width, height) + k - 1) * 4, 3);
    ownRowConvolution(src.data(), src.step(), dst.data(), dst.step(), width, height, taps.data(), k,
                      scratch.as<Tev32f>());
    ASSERT_SAME_IMAGE(dst, oracleRows(src, taps));
    ownColConvolution(src.data(), src.step(), dst.data(), dst.step(), width, height, taps.data(), k,
                      scratch.as<Tev32f>());
    ASSERT_SAME_IMAGE(dst, oracleColumns(src, taps));
  }
}

TEST(GaussFilter, AConstantComesOutALittleDarkerOnASquareImage) {
  Image<Tev32f> src(5, 5), dst(5, 5);
  src.fill(100);
  const Buffer buffer(bufferSize({5, 5}, 3));
  ASSERT_EQ(gauss(src, dst, 3, 1, buffer), tevStatusOk);
  EXPECT_LT(dst.at(2, 2), 100.0F);
  EXPECT_GT(dst.at(2, 2), 80.0F);
  EXPECT_SAME_IMAGE(dst, Image<Tev32f>(5, 5).fill(dst.at(2, 2)));
}

TEST(GaussFilter, RowsBelowTheWidthAreNotFilteredAlongY) {
  const auto src = grid<Tev32f>({{1, 2}, {30, 40}, {500, 600}, {7000, 8000}});
  Image<Tev32f> dst(2, 4);
  const Buffer buffer(bufferSize({2, 4}, 3));
  ASSERT_EQ(gauss(src, dst, 3, 1, buffer), tevStatusOk);
  const auto rowFiltered = oracleRows(src, oracleTaps(3, 1));
  for (int x = 0; x < 2; ++x) {
    EXPECT_EQ(dst.at(x, 2), rowFiltered.at(x, 1));
    EXPECT_EQ(dst.at(x, 3), rowFiltered.at(x, 2));
    EXPECT_NE(dst.at(x, 1), rowFiltered.at(x, 1));
  }
}

TEST(GaussFilter, SigmaZeroGivesNanEverywhere) {
  Image<Tev32f> src(4, 4), dst(4, 4);
  src.fill(1);
  const Buffer buffer(bufferSize({4, 4}, 3));
  EXPECT_EQ(gauss(src, dst, 3, 0, buffer), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, Image<Tev32f>(4, 4).fill(std::numeric_limits<float>::quiet_NaN()));
}

TEST(GaussFilter, CarriesNanAndInfinityAsFarAsTheKernelReaches) {
  Image<Tev32f> src(9, 9), dst(9, 9);
  src.fill(1);
  src.set(4, 4, std::numeric_limits<float>::infinity());
  const Buffer buffer(bufferSize({9, 9}, 5));
  ASSERT_EQ(gauss(src, dst, 5, 1, buffer), tevStatusOk);
  const auto taps = oracleTaps(5, 1);
  EXPECT_SAME_IMAGE(dst, oracleColumns(oracleRows(src, taps), taps));
}

TEST(GaussFilter, TheBorderArgumentsAreNotRead) {
  Random random;
  const auto src = random.image<Tev32f>(12, 9);
  auto a = random.image<Tev32f>(12, 9), b = random.image<Tev32f>(12, 9);
  const Buffer buffer(bufferSize({12, 9}, 5));
  ASSERT_EQ(gauss(src, a, 5, 1, buffer), tevStatusOk);
  for (TevBorderType type : {-7, 0, 2, 3, 99}) {
    ASSERT_EQ(teviFilterGaussBorder_32f_C1R(src.data(), src.step(), b.data(), b.step(), src.size(), 5, 1, type,
                                            std::numeric_limits<float>::quiet_NaN(), buffer.data()),
              tevStatusOk);
    EXPECT_SAME_IMAGE(a, b);
  }
}

TEST(GaussFilter, AStepOfAQuarterRowPassesAndIsWorkedColumnByColumn) {
  // Rows of 8 floats, 8 bytes apart: row y begins at element 2 y.
  Random random;
  constexpr int width = 8, height = 3, k = 3;
  std::vector<Tev32f> src(width + 2 * (height - 1)), dst(src.size()), expected(src.size());
  for (auto& v : src) v = random.real(10);
  const Buffer buffer(bufferSize({width, height}, k), 1);
  ASSERT_EQ(
      teviFilterGaussBorder_32f_C1R(src.data(), width, dst.data(), width, {width, height}, k, 1, 0, 0, buffer.data()),
      tevStatusOk);
  const auto taps = oracleTaps(k, 1);
  for (int y = 0; y < height; ++y) {
    std::vector<Tev32f> row;
    for (int x = 0; x < width; ++x)
      row.push_back(
          dot(taps, [&](int j) { return src[static_cast<size_t>(2 * y + std::clamp(x + j - 1, 0, width - 1))]; }));
    std::copy(row.begin(), row.end(), expected.begin() + 2 * y);
  }
  for (int x = 0; x < width; ++x) {
    std::vector<Tev32f> column;
    for (int y = 0; y < height; ++y)
      column.push_back(dot(
          taps, [&](int j) { return expected[static_cast<size_t>(2 * std::clamp(y + j - 1, 0, height - 1) + x)]; }));
    for (int y = 0; y < height; ++y) expected[static_cast<size_t>(2 * y + x)] = column[static_cast<size_t>(y)];
  }
  EXPECT_EQ(dst, expected);
}

TEST(GaussFilter, BufferSizesToTheByte) {
  EXPECT_EQ(bufferSize({1, 1}, 3), ((4 + 3) * (1 + 3) + 3) * 4 + 64);
  EXPECT_EQ(bufferSize({4, 7}, 5), ((4 + 5) * (7 + 5) + 5) * 4 + 64);
  EXPECT_EQ(bufferSize({5, 7}, 9), ((8 + 9) * (7 + 9) + 9) * 4 + 64);
}

TEST(GaussFilter, ChecksInTheirOrder) {
  Image<Tev32f> src(8, 4), dst(8, 4);
  src.fill(1);
  const Buffer memory(4096);
  Tev8u* const buffer = memory.data();
  const TevSize roi = {8, 4};
  const auto call = [&](const Tev32f* s, int ss, Tev32f* d, int ds, TevSize size, int k, Tev8u* b) {
    return teviFilterGaussBorder_32f_C1R(s, ss, d, ds, size, k, 1, 0, 0, b);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, dst.data(), 0, {0, 0}, 2, buffer), dst);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 32, nullptr, 32, roi, 3, buffer), dst);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 32, dst.data(), 32, roi, 3, nullptr), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, dst.data(), 0, {0, 4}, 2, buffer), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, dst.data(), 0, {8, 0}, 2, buffer), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), 7, dst.data(), 32, roi, 2, buffer), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), 32, dst.data(), 7, roi, 2, buffer), dst);
  for (int k : {-1, 0, 1, 2, 4})
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), 32, dst.data(), 32, roi, k, buffer), dst);
  int size = 77;
  EXPECT_EQ(teviFilterGaussGetBufferSize_32f_C1R({0, 0}, 2, nullptr), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, teviFilterGaussGetBufferSize_32f_C1R({0, 4}, 2, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviFilterGaussGetBufferSize_32f_C1R({8, 0}, 2, &size), size);
  for (int k : {1, 2, 4, -3}) EXPECT_FAILS(tevStatusBadArg, teviFilterGaussGetBufferSize_32f_C1R(roi, k, &size), size);
}

TEST(SobelKernel, OfLengths1To5) {
  const auto kernel = [](int n, int order, int sign) {
    std::vector<Tev16s> taps(static_cast<size_t>(n), 99);
    EXPECT_EQ(teviGenSobelKernel_16s(taps.data(), n, order, sign), tevStatusOk);
    return taps;
  };
  using V = std::vector<Tev16s>;
  EXPECT_EQ(kernel(1, 0, 1), V({1}));
  EXPECT_EQ(kernel(1, 0, -1), V({-1}));
  EXPECT_EQ(kernel(3, 0, 0), V({1, 2, 1}));
  EXPECT_EQ(kernel(3, 1, 0), V({-1, 0, 1}));
  EXPECT_EQ(kernel(3, 2, 5), V({1, -2, 1}));
  EXPECT_EQ(kernel(3, 1, -1), V({1, 0, -1}));
  EXPECT_EQ(kernel(5, 1, 1), V({-1, -2, 0, 2, 1}));
  EXPECT_EQ(kernel(5, 2, 1), V({1, 0, -2, 0, 1}));
  EXPECT_EQ(kernel(5, 4, 1), V({1, -4, 6, -4, 1}));
}

TEST(SobelKernel, EqualsTheProductOfBinomials) {
  for (int n = 1; n <= 31; n += 2)
    for (int order = 0; order < n; ++order)
      for (int sign : {1, -1}) {
        std::vector<long long> product = {1};
        for (int i = 0; i < n - 1; ++i) {
          product.push_back(0);
          for (size_t j = product.size() - 1; j > 0; --j)
            product[j] = product[j - 1] + (i < order ? -1 : 1) * product[j];
          product[0] *= i < order ? -1 : 1;
        }
        std::vector<Tev16s> taps(product.size());
        std::vector<Tev32f> floats(product.size());
        ASSERT_EQ(teviGenSobelKernel_16s(taps.data(), n, order, sign), tevStatusOk);
        ASSERT_EQ(teviGenSobelKernel_32f(floats.data(), n, order, sign), tevStatusOk);
        for (size_t j = 0; j < product.size(); ++j) {
          ASSERT_EQ(taps[j], static_cast<Tev16s>(sign * product[j]))
              << "length " << n << " order " << order << ": 16 bits wrap";
          if (n <= 25) {
            ASSERT_EQ(floats[j], static_cast<Tev32f>(sign * product[j])) << "length " << n << " order " << order;
          }
        }
      }
}

TEST(SobelKernel, FloatAdditionsRoundOneByOne) {
  constexpr int n = 61;
  std::vector<Tev32f> taps(n), expected(n, 0);
  ASSERT_EQ(teviGenSobelKernel_32f(taps.data(), n, 3, 1), tevStatusOk);
  expected[n - 1] = 1;
  for (int i = 1; i < n; ++i)
    for (int j = n - i - 1; j <= n - 2; ++j) {
      const float next = expected[static_cast<size_t>(j) + 1];
      expected[static_cast<size_t>(j)] += i <= n - 4 ? next : -next;
    }
  EXPECT_EQ(taps, expected);
}

TEST(SobelKernel, ChecksPointerThenLengthAndOrder) {
  Tev16s s[5] = {};
  Tev32f f[5] = {};
  EXPECT_EQ(teviGenSobelKernel_16s(nullptr, 0, 0, 1), tevStatusNullPtr);
  EXPECT_EQ(teviGenSobelKernel_32f(nullptr, 0, 0, 1), tevStatusNullPtr);
  for (int n : {-1, 0, 2, 4}) {
    EXPECT_FAILS(tevStatusBadSize, teviGenSobelKernel_16s(s, n, 0, 1), s);
    EXPECT_FAILS(tevStatusBadSize, teviGenSobelKernel_32f(f, n, 0, 1), f);
  }
  for (int order : {-1, 5, 6}) {
    EXPECT_FAILS(tevStatusBadSize, teviGenSobelKernel_16s(s, 5, order, 1), s);
    EXPECT_FAILS(tevStatusBadSize, teviGenSobelKernel_32f(f, 5, order, 1), f);
  }
}
