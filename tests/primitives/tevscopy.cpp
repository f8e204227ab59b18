#include <bit>
#include <limits>

#include "kit/kit.h"
#include "tevcv_internal/primitives.h"

using kit::Image;
using kit::Random;

namespace {

// A vector at any address with an unmapped page behind it.
template <class T>
Image<T> vectorOf(Random& random, int len) {
  return random.image<T>(len, 1);
}

}  // namespace

TEST(VectorCopy, CopiesEveryLengthFromAndToAnyAddress) {
  Random random;
  for (int len = 1; len <= 100; ++len) {
    const auto bytes = vectorOf<Tev8u>(random, len);
    auto copied = vectorOf<Tev8u>(random, len);
    ASSERT_EQ(tevsCopy_8u(bytes.data(), copied.data(), len), tevStatusOk);
    ASSERT_SAME_IMAGE(copied, bytes);
    auto worked = vectorOf<Tev8u>(random, len);
    ownsCopy_8u(bytes.data(), worked.data(), len);
    ASSERT_SAME_IMAGE(worked, bytes);
    const auto floats = vectorOf<Tev32f>(random, len);
    auto copiedFloats = vectorOf<Tev32f>(random, len);
    ASSERT_EQ(tevsCopy_32f(floats.data(), copiedFloats.data(), len), tevStatusOk);
    ASSERT_SAME_IMAGE(copiedFloats, floats);
  }
}

TEST(VectorCopy, KeepsTheBitsOfASignallingNan) {
  const std::uint32_t pattern = 0x7F800001;
  std::uint32_t copy = 0;
  Tev32f buffer[1];
  std::memcpy(buffer, &pattern, 4);
  Tev32f out[1];
  EXPECT_EQ(tevsCopy_32f(buffer, out, 1), tevStatusOk);
  std::memcpy(&copy, out, 4);
  EXPECT_EQ(copy, pattern);
}

TEST(VectorCopy, RunsForwardSoADestinationBelowTheSourceMayOverlap) {
  Tev8u data[] = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(tevsCopy_8u(data + 2, data, 4), tevStatusOk);
  EXPECT_EQ(std::memcmp(data, "\3\4\5\6\5\6", 6), 0);
  ownsCopy_8u(data + 1, data, 5);
  EXPECT_EQ(std::memcmp(data, "\4\5\6\5\6\6", 6), 0);
}

TEST(VectorCopy, OfLengthZeroIsRefusedOrDoesNothing) {
  Tev8u src[] = {1}, dst[] = {2};
  EXPECT_FAILS(tevStatusBadSize, tevsCopy_8u(src, dst, 0), dst[0]);
  ownsCopy_8u(src, dst, 0);
  ownsCopy_8u(src, dst, -3);
  EXPECT_EQ(dst[0], 2);
}

TEST(VectorFill, SetsEveryLengthAtAnyAddress) {
  Random random;
  for (int len = 1; len <= 100; ++len) {
    auto bytes = vectorOf<Tev8u>(random, len), workerBytes = vectorOf<Tev8u>(random, len);
    ASSERT_EQ(tevsSet_8u(200, bytes.data(), len), tevStatusOk);
    ownsSet_8u(200, workerBytes.data(), len);
    ASSERT_SAME_IMAGE(bytes, Image<Tev8u>(len, 1).fill(200));
    ASSERT_SAME_IMAGE(workerBytes, bytes);
    auto floats = vectorOf<Tev32f>(random, len);
    ASSERT_EQ(tevsSet_32f(-0.0F, floats.data(), len), tevStatusOk);
    ASSERT_SAME_IMAGE(floats, Image<Tev32f>(len, 1).fill(-0.0F));
    auto words = vectorOf<Tev32s>(random, len);
    ownsSet_32s(-123456789, words.data(), len);
    ASSERT_SAME_IMAGE(words, Image<Tev32s>(len, 1).fill(-123456789));
  }
}

TEST(VectorZero, ClearsEveryLengthAtAnyAddress) {
  Random random;
  for (int len = 1; len <= 70; ++len) {
    auto a = vectorOf<Tev8u>(random, len), worker = vectorOf<Tev8u>(random, len);
    auto b = vectorOf<Tev16s>(random, len);
    auto c = vectorOf<Tev32s>(random, len);
    auto d = vectorOf<Tev32f>(random, len);
    ASSERT_EQ(tevsZero_8u(a.data(), len), tevStatusOk);
    ASSERT_EQ(tevsZero_16s(b.data(), len), tevStatusOk);
    ASSERT_EQ(tevsZero_32s(c.data(), len), tevStatusOk);
    ASSERT_EQ(tevsZero_32f(d.data(), len), tevStatusOk);
    ownsZero_8u(worker.data(), len);
    ASSERT_SAME_IMAGE(a, Image<Tev8u>(len, 1).fill(0));
    ASSERT_SAME_IMAGE(worker, a);
    ASSERT_SAME_IMAGE(b, Image<Tev16s>(len, 1).fill(0));
    ASSERT_SAME_IMAGE(c, Image<Tev32s>(len, 1).fill(0));
    ASSERT_SAME_IMAGE(d, Image<Tev32f>(len, 1).fill(0));
  }
}

TEST(VectorWorkers, IgnoreLengthsBelowOne) {
  Tev8u byte = 9;
  Tev32s word = 9;
  for (int len : {0, -1}) {
    ownsSet_8u(1, &byte, len);
    ownsZero_8u(&byte, len);
    ownsSet_32s(1, &word, len);
  }
  EXPECT_EQ(byte, 9);
  EXPECT_EQ(word, 9);
}

TEST(VectorConvert, Of16uToFloatIsExactForEveryValue) {
  Image<Tev16u> all(65536, 1, 0, 3);
  for (int v = 0; v < 65536; ++v) all.set(v, 0, static_cast<Tev16u>(v));
  Image<Tev32f> converted(65536, 1, 0, 1);
  ASSERT_EQ(tevsConvert_16u32f(all.data(), converted.data(), 65536), tevStatusOk);
  for (int v = 0; v < 65536; ++v) ASSERT_EQ(converted.at(v, 0), static_cast<Tev32f>(v));
}

TEST(VectorCopy, ChecksPointersThenLength) {
  Tev8u b[4] = {};
  Tev16s s[4] = {};
  Tev16u u[4] = {};
  Tev32s w[4] = {};
  Tev32f f[4] = {};
  EXPECT_EQ(tevsCopy_8u(nullptr, b, 0), tevStatusNullPtr);
  EXPECT_EQ(tevsCopy_8u(b, nullptr, 4), tevStatusNullPtr);
  EXPECT_EQ(tevsCopy_32f(nullptr, f, 0), tevStatusNullPtr);
  EXPECT_EQ(tevsCopy_32f(f, nullptr, 1), tevStatusNullPtr);
  EXPECT_EQ(tevsCopy_32f(f, f, -1), tevStatusBadSize);
  EXPECT_EQ(tevsSet_8u(1, nullptr, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsSet_8u(1, b, 0), b);
  EXPECT_EQ(tevsSet_32f(1, nullptr, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsSet_32f(1, f, 0), f);
  EXPECT_EQ(tevsZero_8u(nullptr, 0), tevStatusNullPtr);
  EXPECT_EQ(tevsZero_8u(b, 0), tevStatusBadSize);
  EXPECT_EQ(tevsZero_16s(nullptr, 0), tevStatusNullPtr);
  EXPECT_EQ(tevsZero_16s(s, 0), tevStatusBadSize);
  EXPECT_EQ(tevsZero_32s(nullptr, 0), tevStatusNullPtr);
  EXPECT_EQ(tevsZero_32s(w, -5), tevStatusBadSize);
  EXPECT_EQ(tevsZero_32f(nullptr, 0), tevStatusNullPtr);
  EXPECT_EQ(tevsZero_32f(f, 0), tevStatusBadSize);
  EXPECT_EQ(tevsConvert_16u32f(nullptr, f, 0), tevStatusNullPtr);
  EXPECT_EQ(tevsConvert_16u32f(u, nullptr, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsConvert_16u32f(u, f, 0), f);
}
