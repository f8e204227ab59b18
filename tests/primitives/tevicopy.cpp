#include "kit/kit.h"
#include "tevcv/primitives.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

template <class T, int channels, class Copy>
void expectCopies(Copy copy) {
  Random random;
  for (int trial = 0; trial < 60; ++trial) {
    const int width = random.between(1, 40), height = random.between(1, 6);
    const auto src = random.image<T, channels>(width, height);
    auto dst = random.image<T, channels>(width, height);
    ASSERT_EQ(copy(src.data(), src.step(), dst.data(), dst.step(), dst.size()), tevStatusOk);
    ASSERT_SAME_IMAGE(dst, src);
  }
  Image<T, channels> image(3, 3);
  image.fill(1);
  const T* const noSource = nullptr;
  T* const noDestination = nullptr;
  EXPECT_FAILS(tevStatusNullPtr, copy(noSource, 0, image.data(), 0, {0, 3}), image);
  EXPECT_FAILS(tevStatusNullPtr, copy(image.data(), 0, noDestination, 0, {3, 3}), image);
  EXPECT_FAILS(tevStatusBadSize, copy(image.data(), 0, image.data(), 0, {0, 3}), image);
  EXPECT_FAILS(tevStatusBadSize, copy(image.data(), 0, image.data(), 0, {3, -1}), image);
}

}  // namespace

TEST(ImageCopy, MovesPixelsOfEveryLayout) {
  expectCopies<Tev8u, 1>(teviCopy_8u_C1R);
  expectCopies<Tev8u, 3>(teviCopy_8u_C3R);
  expectCopies<Tev8u, 4>(teviCopy_8u_C4R);
  expectCopies<Tev32f, 1>(teviCopy_32f_C1R);
  expectCopies<Tev32f, 3>(teviCopy_32f_C3R);
  expectCopies<Tev32f, 4>(teviCopy_32f_C4R);
}

TEST(ImageCopy, WithAStepShorterThanTheRowOverlapsRowsAsAsked) {
  const auto src = grid<Tev8u>({{1, 2, 3}, {4, 5, 6}});
  Tev8u dst[4] = {};
  EXPECT_EQ(teviCopy_8u_C1R(src.data(), src.step(), dst, 1, {3, 2}), tevStatusOk);
  EXPECT_EQ(std::memcmp(dst, "\1\4\5\6", 4), 0);
}

TEST(ImageCopy, WithAZeroOrNegativeStepRepeatsOrFlips) {
  const auto src = grid<Tev8u>({{1, 2}, {3, 4}});
  Image<Tev8u> dst(2, 2);
  EXPECT_EQ(teviCopy_8u_C1R(src.data(), 0, dst.data(), dst.step(), {2, 2}), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{1, 2}, {1, 2}}));
  EXPECT_EQ(teviCopy_8u_C1R(src.data() + 2, -2, dst.data(), dst.step(), {2, 2}), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev8u>({{3, 4}, {1, 2}}));
}

TEST(ImageCopy, OfFloatsAdvancesByWholeElementsOfAnyStep) {
  const auto src = grid<Tev32f>({{1, 2}, {3, 4}});
  Image<Tev32f> dst(2, 2);
  // 11 and 10 bytes are two whole elements, and so are -8 and -6 upward.
  EXPECT_EQ(teviCopy_32f_C1R(src.data(), 11, dst.data(), 10, {2, 2}), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, src);
  EXPECT_EQ(teviCopy_32f_C1R(src.data() + 2, -6, dst.data(), 9, {2, 2}), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, grid<Tev32f>({{3, 4}, {1, 2}}));
  const Tev32f pixels[] = {1, 2, 3, 4, 5, 6};
  Tev32f copied[6] = {};
  EXPECT_EQ(teviCopy_32f_C3R(pixels, 15, copied, 13, {1, 2}), tevStatusOk);
  EXPECT_EQ(std::memcmp(copied, pixels, sizeof pixels), 0);
}

TEST(ImageCopy, KeepsNanPatterns) {
  const std::uint32_t patterns[] = {0x7F800001, 0xFFC12345};
  Tev32f src[2], dst[2];
  std::memcpy(src, patterns, 8);
  EXPECT_EQ(teviCopy_32f_C1R(src, 8, dst, 8, {2, 1}), tevStatusOk);
  EXPECT_EQ(std::memcmp(dst, patterns, 8), 0);
}

TEST(ImageFill, SetsTheRegionAlone) {
  Random random;
  for (int trial = 0; trial < 60; ++trial) {
    auto image = random.image<Tev8u>(random.between(2, 40), random.between(2, 6));
    const auto before = image.clone();
    const TevSize roi = {image.width() - 1, image.height() - 1};
    ASSERT_EQ(teviSet_8u_C1R(77, image.data(), image.step(), roi), tevStatusOk);
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x)
        ASSERT_EQ(image.at(x, y), x < roi.width && y < roi.height ? 77 : before.at(x, y));
  }
}

TEST(ImageFill, ChecksPointerThenSizeAndNoStep) {
  Image<Tev8u> image(3, 3);
  image.fill(1);
  EXPECT_FAILS(tevStatusNullPtr, teviSet_8u_C1R(1, nullptr, 3, {0, 0}), image);
  EXPECT_FAILS(tevStatusBadSize, teviSet_8u_C1R(2, image.data(), 3, {0, 3}), image);
  EXPECT_FAILS(tevStatusBadSize, teviSet_8u_C1R(2, image.data(), 3, {3, 0}), image);
  EXPECT_EQ(teviSet_8u_C1R(5, image.data() + 6, -3, {3, 3}), tevStatusOk);
  EXPECT_SAME_IMAGE(image, Image<Tev8u>(3, 3).fill(5));
}
