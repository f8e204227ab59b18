#include <algorithm>
#include <cstring>

#include "kit/kit.h"
#include "tevcv/primitives.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

template <class T, int channels>
Image<T, channels> framed(const Image<T, channels>& src, TevSize frame, int top, int left) {
  Image<T, channels> expected(frame.width, frame.height);
  for (int y = 0; y < frame.height; ++y)
    for (int x = 0; x < frame.width; ++x)
      for (int c = 0; c < channels; ++c)
        expected.set(x * channels + c, y,
                     src.at(std::clamp(x - left, 0, src.width() - 1), std::clamp(y - top, 0, src.height() - 1), c));
  return expected;
}

template <class T, int channels, class Copy, class CopyInPlace>
void expectFrames(Copy copy, CopyInPlace copyInPlace) {
  Random random;
  for (int trial = 0; trial < 100; ++trial) {
    const auto src = random.image<T, channels>(random.between(1, 20), random.between(1, 5));
    const int top = random.between(0, 3), left = random.between(0, 20);
    const TevSize frame = {left + src.width() + random.between(0, 20), top + src.height() + random.between(0, 3)};
    auto dst = random.image<T, channels>(frame.width, frame.height);
    ASSERT_EQ(copy(src.data(), src.step(), src.size(), dst.data(), dst.step(), frame, top, left), tevStatusOk);
    const auto expected = framed(src, frame, top, left);
    ASSERT_SAME_IMAGE(dst, expected);
    // In place: the interior stands already, everything else is noise.
    auto inside = random.image<T, channels>(frame.width, frame.height);
    for (int y = 0; y < src.height(); ++y)
      for (int i = 0; i < src.width() * channels; ++i) inside.set(left * channels + i, top + y, src.get(i, y));
    T* const interior =
        reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(inside.data()) + top * inside.step()) + left * channels;
    ASSERT_EQ(copyInPlace(interior, inside.step(), src.size(), frame, top, left), tevStatusOk);
    ASSERT_SAME_IMAGE(inside, expected);
  }
  // Checks, in their order.
  std::vector<T> data(static_cast<size_t>(100 * channels), T{1});
  T* const p = data.data();
  const T* const none = nullptr;
  const int step = 10 * channels * int{sizeof(T)};
  const TevSize two = {2, 2}, ten = {10, 10}, empty = {0, 2}, flat = {2, 0};
  EXPECT_EQ(copy(none, 0, empty, p, 0, ten, -1, -1), tevStatusNullPtr);
  EXPECT_EQ(copy(p, step, two, nullptr, step, ten, 1, 1), tevStatusNullPtr);
  EXPECT_EQ(copy(p, 0, empty, p, step, ten, 1, 1), tevStatusBadStep);
  EXPECT_EQ(copy(p, step, empty, p, -1, ten, 1, 1), tevStatusBadStep);
  for (TevSize bad : {empty, flat}) {
    EXPECT_EQ(copy(p, step, bad, p, step, ten, 1, 1), tevStatusBadSize);
    EXPECT_EQ(copy(p, step, two, p, step, bad, 0, 0), tevStatusBadSize);
    EXPECT_EQ(copyInPlace(p, step, bad, ten, 1, 1), tevStatusBadSize);
  }
  EXPECT_EQ(copy(p, step, two, p, step, ten, -1, 1), tevStatusBadSize);
  EXPECT_EQ(copy(p, step, two, p, step, ten, 1, -1), tevStatusBadSize);
  EXPECT_EQ(copy(p, step, two, p, step, ten, 9, 1), tevStatusBadSize);
  EXPECT_EQ(copy(p, step, two, p, step, ten, 1, 9), tevStatusBadSize);
  EXPECT_EQ(copy(p, step, two, p, step, ten, 2147483647, 1), tevStatusBadSize);
  EXPECT_EQ(copy(p, step, two, p, step, ten, 1, 2147483647), tevStatusBadSize);
  EXPECT_EQ(copyInPlace(static_cast<T*>(nullptr), 0, two, ten, 1, 1), tevStatusNullPtr);
  EXPECT_EQ(copyInPlace(p, 0, empty, ten, 1, 1), tevStatusBadStep);
  EXPECT_EQ(copyInPlace(p, step, two, ten, -1, 1), tevStatusBadSize);
  EXPECT_EQ(copyInPlace(p, step, two, ten, 9, 0), tevStatusBadSize);
  EXPECT_EQ(data, std::vector<T>(data.size(), T{1}));
}

}  // namespace

TEST(ReplicateBorder, EqualsTheClampedImageInEveryLayout) {
  expectFrames<Tev8u, 1>(teviCopyReplicateBorder_8u_C1R, teviCopyReplicateBorder_8u_C1IR);
  expectFrames<Tev8u, 3>(teviCopyReplicateBorder_8u_C3R, teviCopyReplicateBorder_8u_C3IR);
  expectFrames<Tev8u, 4>(teviCopyReplicateBorder_8u_C4R, teviCopyReplicateBorder_8u_C4IR);
  expectFrames<Tev32s, 1>(teviCopyReplicateBorder_32s_C1R, teviCopyReplicateBorder_32s_C1IR);
  expectFrames<Tev32s, 3>(teviCopyReplicateBorder_32s_C3R, teviCopyReplicateBorder_32s_C3IR);
  expectFrames<Tev32s, 4>(teviCopyReplicateBorder_32s_C4R, teviCopyReplicateBorder_32s_C4IR);
}

TEST(ReplicateBorder, FramesASmallImage) {
  const auto src = grid<Tev8u>({{1, 2}, {3, 4}});
  Image<Tev8u> dst(5, 4);
  EXPECT_EQ(teviCopyReplicateBorder_8u_C1R(src.data(), 2, {2, 2}, dst.data(), 5, {5, 4}, 1, 2), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{1, 1, 1, 2, 2}, {1, 1, 1, 2, 2}, {3, 3, 3, 4, 4}, {3, 3, 3, 4, 4}}));
}

TEST(ReplicateBorder, WithoutABorderIsACopy) {
  Random random;
  const auto src = random.image<Tev32s>(9, 4);
  auto dst = random.image<Tev32s>(9, 4);
  EXPECT_EQ(teviCopyReplicateBorder_32s_C1R(src.data(), src.step(), {9, 4}, dst.data(), dst.step(), {9, 4}, 0, 0),
            tevStatusOk);
  EXPECT_SAME_IMAGE(dst, src);
}

TEST(ReplicateBorder, TheRightMarginMayBeEmpty) {
  const auto src = grid<Tev8u>({{7, 8}});
  Image<Tev8u> dst(5, 1);
  EXPECT_EQ(teviCopyReplicateBorder_8u_C1R(src.data(), 2, {2, 1}, dst.data(), 5, {5, 1}, 0, 3), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{7, 7, 7, 7, 8}}));
}

TEST(ReplicateBorder, OnePixelFillsTheWholeFrame) {
  const auto src = grid<Tev32s, 3>({{-1, 0, 70000}});
  Image<Tev32s, 3> dst(4, 3);
  EXPECT_EQ(teviCopyReplicateBorder_32s_C3R(src.data(), src.step(), {1, 1}, dst.data(), dst.step(), {4, 3}, 1, 2),
            tevStatusOk);
  EXPECT_SAME_IMAGE(dst, framed(src, {4, 3}, 1, 2));
}

TEST(ReplicateBorder, OfWordsAdvancesByWholeElementsOfAnyStep) {
  // 7 and 18 bytes are one and four whole elements, 15 and 27 three and six.
  const Tev32s src[] = {1, 2}, expected[] = {1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2};
  Tev32s dst[12] = {};
  EXPECT_EQ(teviCopyReplicateBorder_32s_C1R(src, 7, {1, 2}, dst, 18, {4, 3}, 1, 1), tevStatusOk);
  EXPECT_EQ(std::memcmp(dst, expected, sizeof dst), 0);
  Tev32s inside[12] = {0, 0, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0};
  EXPECT_EQ(teviCopyReplicateBorder_32s_C1IR(inside + 5, 18, {1, 2}, {4, 3}, 1, 1), tevStatusOk);
  EXPECT_EQ(std::memcmp(inside, expected, sizeof inside), 0);
  const Tev32s pixels[] = {1, 2, 3, 4, 5, 6}, framedPixels[] = {1, 2, 3, 1, 2, 3, 4, 5, 6, 4, 5, 6};
  Tev32s frame[12] = {};
  EXPECT_EQ(teviCopyReplicateBorder_32s_C3R(pixels, 15, {1, 2}, frame, 27, {2, 2}, 0, 1), tevStatusOk);
  EXPECT_EQ(std::memcmp(frame, framedPixels, sizeof frame), 0);
}

TEST(ConstBorder, SurroundsTheImageWithAValue) {
  Random random;
  for (int trial = 0; trial < 100; ++trial) {
    const auto src = random.image<Tev8u>(random.between(1, 20), random.between(1, 5));
    const int top = random.between(0, 3), left = random.between(0, 20);
    const TevSize frame = {left + src.width() + random.between(0, 20), top + src.height() + random.between(0, 3)};
    auto dst = random.image<Tev8u>(frame.width, frame.height);
    Image<Tev8u> expected(frame.width, frame.height);
    expected.fill(42);
    for (int y = 0; y < src.height(); ++y)
      for (int x = 0; x < src.width(); ++x) expected.set(left + x, top + y, src.at(x, y));
    ASSERT_EQ(
        teviCopyConstBorder_8u_C1R(src.data(), src.step(), src.size(), dst.data(), dst.step(), frame, top, left, 42),
        tevStatusOk);
    ASSERT_SAME_IMAGE(dst, expected);
  }
}

TEST(ConstBorder, ChecksPointersThenStepsThenSizes) {
  Tev8u p[100] = {};
  const TevSize two = {2, 2}, ten = {10, 10};
  EXPECT_FAILS(tevStatusNullPtr, teviCopyConstBorder_8u_C1R(nullptr, 0, two, p, 10, ten, 1, 1, 5), p);
  EXPECT_FAILS(tevStatusNullPtr, teviCopyConstBorder_8u_C1R(p, 10, two, nullptr, 10, ten, 1, 1, 5), p);
  EXPECT_FAILS(tevStatusBadStep, teviCopyConstBorder_8u_C1R(p, 0, {0, 0}, p, 10, ten, 1, 1, 5), p);
  EXPECT_FAILS(tevStatusBadStep, teviCopyConstBorder_8u_C1R(p, 10, {0, 0}, p, 0, ten, 1, 1, 5), p);
  EXPECT_FAILS(tevStatusBadSize, teviCopyConstBorder_8u_C1R(p, 10, {0, 2}, p, 10, ten, 1, 1, 5), p);
  EXPECT_FAILS(tevStatusBadSize, teviCopyConstBorder_8u_C1R(p, 10, two, p, 10, {10, 0}, 1, 1, 5), p);
  EXPECT_FAILS(tevStatusBadSize, teviCopyConstBorder_8u_C1R(p, 10, two, p, 10, ten, -1, 1, 5), p);
  EXPECT_FAILS(tevStatusBadSize, teviCopyConstBorder_8u_C1R(p, 10, two, p, 10, ten, 1, -1, 5), p);
  EXPECT_FAILS(tevStatusBadSize, teviCopyConstBorder_8u_C1R(p, 10, two, p, 10, ten, 9, 1, 5), p);
  EXPECT_FAILS(tevStatusBadSize, teviCopyConstBorder_8u_C1R(p, 10, two, p, 10, ten, 1, 9, 5), p);
}
