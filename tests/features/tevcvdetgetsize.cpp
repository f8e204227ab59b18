#include "kit/kit.h"
#include "tevcv/features.h"
#include "tevcv/filtering.h"

namespace {

using Query = TevStatus (*)(TevSize, int, int, int*);

struct Member {
  Query query;
  bool bytes;
};
constexpr Member members[] = {{teviMinEigenValGetBufferSize_8u32f_C1R, true},
                              {teviMinEigenValGetBufferSize_32f_C1R, false},
                              {teviEigenValsVecsGetBufferSize_8u32f_C1R, true},
                              {teviEigenValsVecsGetBufferSize_32f_C1R, false}};

int filterScratch(bool bytes, TevSize roi, int aperture, int window) {
  int most = 0, size = 0;
  const auto keep = [&](TevStatus status) {
    EXPECT_EQ(status, tevStatusOk);
    most = std::max(most, size);
  };
  if (bytes) {
    keep(teviFilterSobelVertGetBufferSize_8u16s_C1R(roi, aperture * 11, &size));
    keep(teviFilterSobelHorizGetBufferSize_8u16s_C1R(roi, aperture * 11, &size));
    if (window == 3) keep(teviFilterScharrVertGetBufferSize_8u16s_C1R(roi, &size));
    if (window == 3) keep(teviFilterScharrHorizGetBufferSize_8u16s_C1R(roi, &size));
  } else {
    keep(teviFilterSobelVertGetBufferSize_32f_C1R(roi, aperture * 11, &size));
    keep(teviFilterSobelHorizGetBufferSize_32f_C1R(roi, aperture * 11, &size));
    if (window == 3) keep(teviFilterScharrVertGetBufferSize_32f_C1R(roi, &size));
    if (window == 3) keep(teviFilterScharrHorizGetBufferSize_32f_C1R(roi, &size));
  }
  keep(teviFilterLowpassGetBufferSize_32f_C1R(roi, window * 11, &size));
  return most;
}

}  // namespace

TEST(CornerBufferSizes, CountPlanesByThreadsToTheByte) {
  for (int count : {1, 2, 8, 40}) {
    kit::Threads threads(count);
    for (TevSize roi : {TevSize{1, 1}, TevSize{16, 5}, TevSize{17, 9}, TevSize{640, 480}})
      for (int aperture : {3, 5})
        for (int window : {3, 5})
          for (const Member& m : members) {
            int size = 0;
            ASSERT_EQ(m.query(roi, aperture, window, &size), tevStatusOk);
            const int plane = (roi.width + 15) / 16 * 16 * roi.height * 4 + 32;
            const int planes = m.bytes ? (count < 2 ? 3 : 6) : (count < 2 ? 5 : 8);
            const int derivatives = m.bytes ? roi.width * roi.height * 4 : 0;
            ASSERT_EQ(size, plane * planes + derivatives + filterScratch(m.bytes, roi, aperture, window) + 64)
                << roi.width << " x " << roi.height << " at " << count << " threads";
          }
  }
}

TEST(CornerBufferSizes, CheckThePointerThenTheSizes) {
  int size = 77;
  for (const Member& m : members) {
    EXPECT_EQ(m.query({0, 0}, 4, 4, nullptr), tevStatusNullPtr);
    EXPECT_FAILS(tevStatusBadSize, m.query({0, 4}, 3, 3, &size), size);
    EXPECT_FAILS(tevStatusBadSize, m.query({4, 0}, 3, 3, &size), size);
    EXPECT_FAILS(tevStatusBadSize, m.query({4, 4}, 4, 3, &size), size);
    EXPECT_FAILS(tevStatusBadSize, m.query({4, 4}, 3, 7, &size), size);
  }
}
