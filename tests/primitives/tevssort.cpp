#include <algorithm>
#include <cmath>
#include <limits>

#include "kit/kit.h"
#include "tevcv/primitives.h"

using kit::Random;

namespace {

void expectSorted(std::vector<Tev64f> values) {
  kit::Image<Tev64f> image(static_cast<int>(values.size()), 1, 0, 5);
  for (size_t i = 0; i < values.size(); ++i) image.set(static_cast<int>(i), 0, values[i]);
  ASSERT_EQ(tevsSortAscend_64f_I(image.data(), image.width()), tevStatusOk);
  std::sort(values.begin(), values.end());
  for (size_t i = 0; i < values.size(); ++i) ASSERT_EQ(image.at(static_cast<int>(i), 0), values[i]) << i;
}

}  // namespace

TEST(Sort, OneElementStays) {
  Tev64f v[] = {3.5};
  EXPECT_EQ(tevsSortAscend_64f_I(v, 1), tevStatusOk);
  EXPECT_EQ(v[0], 3.5);
}

TEST(Sort, EveryOrderOfUpToSevenElements) {
  for (int n = 1; n <= 7; ++n) {
    std::vector<Tev64f> v;
    for (int i = 0; i < n; ++i) v.push_back(i);
    do expectSorted(v);
    while (std::next_permutation(v.begin(), v.end()));
  }
}

TEST(Sort, LengthsAroundTheShortSegmentAndLong) {
  Random random;
  for (int n : {8, 9, 10, 11, 12, 19, 20, 50, 100, 1000, 20000})
    for (int distinct : {1, 2, 3, 10, 1000000}) {
      std::vector<Tev64f> v;
      for (int i = 0; i < n; ++i) v.push_back(random.between(-distinct, distinct));
      expectSorted(v);
    }
}

TEST(Sort, RunsInOrderInReverseAndInOrganPipes) {
  constexpr int n = 3000;
  std::vector<Tev64f> up, down, pipes, saw;
  for (int i = 0; i < n; ++i) {
    up.push_back(i);
    down.push_back(n - i);
    pipes.push_back(std::min(i, n - i));
    saw.push_back(i % 17);
  }
  for (const auto& v : {up, down, pipes, saw}) expectSorted(v);
}

TEST(Sort, InfinitiesGoToTheEnds) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  std::vector<Tev64f> v(40, 1.0);
  v[3] = v[20] = inf;
  v[7] = v[30] = -inf;
  expectSorted(v);
}

TEST(Sort, WithNanEndsInsideTheArrayWithTheSameElements) {
  Random random;
  for (int trial = 0; trial < 200; ++trial) {
    const int n = random.between(1, 300);
    kit::Image<Tev64f> v(n, 1);
    int nans = 0;
    double sum = 0;
    for (int i = 0; i < n; ++i) {
      const bool isNan = random.oneIn(4);
      nans += isNan;
      v.set(i, 0, isNan ? std::numeric_limits<double>::quiet_NaN() : random.between(0, 1000));
      if (!isNan) sum += v.at(i, 0);
    }
    ASSERT_EQ(tevsSortAscend_64f_I(v.data(), n), tevStatusOk);
    for (int i = 0; i < n; ++i) {
      if (std::isnan(v.at(i, 0)))
        --nans;
      else
        sum -= v.at(i, 0);
    }
    ASSERT_EQ(nans, 0);
    ASSERT_EQ(sum, 0);
  }
}

TEST(Sort, ChecksPointerThenLength) {
  Tev64f v[] = {2, 1};
  EXPECT_EQ(tevsSortAscend_64f_I(nullptr, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsSortAscend_64f_I(v, 0), v);
}
