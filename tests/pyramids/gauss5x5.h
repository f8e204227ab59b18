// One overload set over the members of the Gaussian steps, and what both test files do alike.
#pragma once

#include "kit/kit.h"
#include "tevcv_internal/pyramids.h"

namespace gauss {

template <class T, int channels>
struct Members;

#define GAUSS_MEMBERS(T, channels, name)                         \
  template <>                                                    \
  struct Members<T, channels> {                                  \
    using Element = T;                                           \
    static constexpr int channelCount = channels;                \
    static constexpr auto down = teviPyrDown_Gauss5x5_##name##R; \
    static constexpr auto up = teviPyrUp_Gauss5x5_##name##R;     \
  };
GAUSS_MEMBERS(Tev8u, 1, 8u_C1)
GAUSS_MEMBERS(Tev8u, 3, 8u_C3)
GAUSS_MEMBERS(Tev8s, 1, 8s_C1)
GAUSS_MEMBERS(Tev8s, 3, 8s_C3)
GAUSS_MEMBERS(Tev32f, 1, 32f_C1)
GAUSS_MEMBERS(Tev32f, 3, 32f_C3)
#undef GAUSS_MEMBERS

inline int downBufferSize(int width, int channels) {
  int size = -1;
  EXPECT_EQ(teviPyrDownGetBufSize_Gauss5x5(width, tevDataType8u, channels, &size), tevStatusOk);
  return size;
}
inline int upBufferSize(int width, int channels) {
  int size = -1;
  EXPECT_EQ(teviPyrUpGetBufSize_Gauss5x5(width, tevDataType8u, channels, &size), tevStatusOk);
  return size;
}

// Results at a random address, with row padding, out of a buffer of the exact size at a random address.
template <class T, int channels>
kit::Image<T, channels> down(const kit::Image<T, channels>& src, kit::Random& random) {
  auto dst = random.image<T, channels>((src.width() + 1) / 2, (src.height() + 1) / 2);
  const kit::Buffer buffer(downBufferSize(src.width(), channels), random.between(0, 63));
  EXPECT_EQ((Members<T, channels>::down(src.data(), src.step(), dst.data(), dst.step(), src.size(), buffer.data())),
            tevStatusOk);
  return dst;
}
template <class T, int channels>
kit::Image<T, channels> up(const kit::Image<T, channels>& src, kit::Random& random) {
  auto dst = random.image<T, channels>(2 * src.width(), 2 * src.height());
  const kit::Buffer buffer(upBufferSize(src.width(), channels), random.between(0, 63));
  EXPECT_EQ((Members<T, channels>::up(src.data(), src.step(), dst.data(), dst.step(), src.size(), buffer.data())),
            tevStatusOk);
  return dst;
}

// Where a tap falls: reflected about both ends, again and again.
inline int reflected(int i, int n) {
  if (n == 1) return 0;
  while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
  return i;
}
// The expansion's rule: reflected in front, repeated behind.
inline int oneSided(int i, int n) { return i < 0 ? (n == 1 ? 0 : -i) : i >= n ? n - 1 : i; }

inline constexpr int kernel[5] = {1, 4, 6, 4, 1};

template <class Member>
void checksOfDown() {
  using T = typename Member::Element;
  constexpr int channels = Member::channelCount, size = sizeof(T), row = 6 * channels * size, half = row / 2;
  kit::Image<T, channels> src(6, 4, 4 * size), dst(6, 4, 4 * size);
  const kit::Buffer buffer(downBufferSize(6, channels));
  const TevSize roi = {6, 4};
  const auto call = [&](const T* s, int ss, T* d, int ds, TevSize r, bool withBuffer = true) {
    return Member::down(s, ss, d, ds, r, withBuffer ? buffer.data() : nullptr);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, dst.data(), 0, {0, 0}), dst, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), row, nullptr, half, roi), dst, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), row, dst.data(), half, roi, false), dst, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, dst.data(), 0, {0, 4}), dst, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), row, dst.data(), half, {6, 0}), dst, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row - 1, dst.data(), half, roi), dst, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row, dst.data(), half - 1, roi), dst, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row, dst.data(), row, {0x7FFFFFFF, 4}), dst, buffer);
  if (size > 1) {
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), row + 1, dst.data(), half - 1, roi), dst, buffer);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), row + 1, dst.data(), half, roi), dst, buffer);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), row, dst.data(), half + 1, roi), dst, buffer);
  }
  EXPECT_EQ(call(src.fill(0).data(), src.step(), dst.data(), half, roi), tevStatusOk);
}

template <class Member>
void checksOfUp() {
  using T = typename Member::Element;
  constexpr int channels = Member::channelCount, size = sizeof(T), row = 6 * channels * size, twice = row * 2;
  kit::Image<T, channels> src(6, 4, 4 * size), dst(12, 8, 4 * size);
  const kit::Buffer buffer(upBufferSize(6, channels));
  const TevSize roi = {6, 4};
  const auto call = [&](const T* s, int ss, T* d, int ds, TevSize r, bool withBuffer = true) {
    return Member::up(s, ss, d, ds, r, withBuffer ? buffer.data() : nullptr);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, dst.data(), 0, {0, 0}), dst, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), row, nullptr, twice, roi), dst, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), row, dst.data(), twice, roi, false), dst, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, dst.data(), 0, {0, 4}), dst, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), row, dst.data(), twice, {6, -1}), dst, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row - 1, dst.data(), twice, roi), dst, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row, dst.data(), twice - 1, roi), dst, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row, dst.data(), twice, {0x60000000, 4}), dst, buffer);
  // A step that suits the halved image does not suit the doubled one.
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row, dst.data(), row / 2, roi), dst, buffer);
  if (size > 1) {
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), row + 1, dst.data(), twice - 1, roi), dst, buffer);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), row + 1, dst.data(), twice, roi), dst, buffer);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), row, dst.data(), twice + 1, roi), dst, buffer);
  }
  EXPECT_EQ(call(src.fill(0).data(), src.step(), dst.data(), twice, roi), tevStatusOk);
}

}  // namespace gauss
