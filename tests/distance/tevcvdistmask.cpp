#include <vector>

#include "kit/kit.h"
#include "tevcv/distance.h"

namespace {

template <class W>
struct Row {
  int kernelSize, norm;
  std::vector<W> weights;
};
const Row<Tev32s> integers[] = {{3, 0, {1, 1}},    {3, 1, {1, 2}},    {3, 2, {2, 3}},
                                {5, 0, {1, 1, 2}}, {5, 1, {1, 2, 3}}, {5, 2, {5, 7, 11}}};
const Row<Tev32f> floats[] = {{3, 0, {1.0F, 1.0F}},       {3, 1, {1.0F, 2.0F}},       {3, 2, {0.955F, 1.3693F}},
                              {5, 0, {1.0F, 1.0F, 2.0F}}, {5, 1, {1.0F, 2.0F, 3.0F}}, {5, 2, {1.0F, 1.4F, 2.1969F}}};

}  // namespace

TEST(DistanceMask, GivesTheWeightsOfEachNormAndNoMoreThanTheMaskHas) {
  for (const auto& row : integers) {
    kit::Buffer metrics(int(row.weights.size() * sizeof(Tev32s)));
    ASSERT_EQ(teviGetDistanceTransformMask_32s(row.kernelSize, row.norm, metrics.as<Tev32s>()), tevStatusOk);
    EXPECT_EQ(std::vector<Tev32s>(metrics.as<Tev32s>(), metrics.as<Tev32s>() + row.weights.size()), row.weights);
  }
  for (const auto& row : floats) {
    kit::Buffer metrics(int(row.weights.size() * sizeof(Tev32f)));
    ASSERT_EQ(teviGetDistanceTransformMask_32f(row.kernelSize, row.norm, metrics.as<Tev32f>()), tevStatusOk);
    EXPECT_EQ(std::vector<Tev32f>(metrics.as<Tev32f>(), metrics.as<Tev32f>() + row.weights.size()), row.weights);
  }
}

TEST(DistanceMask, TakesSizeAndNormInOneNumber) {
  for (const auto& row : floats) {
    kit::Buffer metrics(int(row.weights.size() * sizeof(Tev32f)));
    ASSERT_EQ(teviGetDistanceTransformMask(10 * row.kernelSize + row.norm, metrics.as<Tev32f>()), tevStatusOk);
    EXPECT_EQ(std::vector<Tev32f>(metrics.as<Tev32f>(), metrics.as<Tev32f>() + row.weights.size()), row.weights);
  }
}

TEST(DistanceMask, ChecksPointerThenSizeThenNorm) {
  Tev32s w[3] = {};
  Tev32f f[3] = {};
  EXPECT_FAILS(tevStatusNullPtr, teviGetDistanceTransformMask_32s(4, 7, nullptr));
  EXPECT_FAILS(tevStatusNullPtr, teviGetDistanceTransformMask_32f(4, 7, nullptr));
  for (int size : {-3, 0, 1, 2, 4, 6, 7}) {
    EXPECT_FAILS(tevStatusBadSize, teviGetDistanceTransformMask_32s(size, 7, w), w);
    EXPECT_FAILS(tevStatusBadSize, teviGetDistanceTransformMask_32f(size, 7, f), f);
  }
  for (int norm : {-1, 3, 4, 100})
    for (int size : {3, 5}) {
      EXPECT_FAILS(tevStatusBadArg, teviGetDistanceTransformMask_32s(size, norm, w), w);
      EXPECT_FAILS(tevStatusBadArg, teviGetDistanceTransformMask_32f(size, norm, f), f);
    }
}

TEST(DistanceMask, InOneNumberRefusesTheNormFirst) {
  Tev32f f[3] = {};
  for (int type : {33, 59, 43, -31, -1}) {
    EXPECT_FAILS(tevStatusBadArg, teviGetDistanceTransformMask(type, nullptr));
    EXPECT_FAILS(tevStatusBadArg, teviGetDistanceTransformMask(type, f), f);
  }
  EXPECT_FAILS(tevStatusNullPtr, teviGetDistanceTransformMask(40, nullptr));
  EXPECT_FAILS(tevStatusNullPtr, teviGetDistanceTransformMask(30, nullptr));
  for (int type : {0, 2, 40, 41, 70, -30, -50})
    EXPECT_FAILS(tevStatusBadSize, teviGetDistanceTransformMask(type, f), f);
}
