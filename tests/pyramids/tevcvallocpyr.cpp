#include <algorithm>
#include <cstring>
#include <limits>

#include "kit/kit.h"
#include "tevcv/memory.h"
#include "tevcv_internal/pyramids.h"

using kit::AllocatorWatch;

namespace {

constexpr bool is32Bit = sizeof(void*) == 4;

TevSize downSize(TevSize roi, float rate) {
  TevSize size = {-1, -1};
  EXPECT_EQ(teviGetPyramidDownROI(roi, &size, rate), tevStatusOk);
  return size;
}
struct Range {
  TevSize min = {-1, -1}, max = {-1, -1};
};
Range upRange(TevSize roi, float rate) {
  Range range;
  EXPECT_EQ(teviGetPyramidUpROI(roi, &range.min, &range.max, rate), tevStatusOk);
  return range;
}

// Any state's entry, with its kernel given as plain numbers.
using Maker = TevStatus (*)(TevPyramidLayerState**, TevSize, Tev32f, const void*, int, int);
struct Entry {
  const char* name;
  Maker make;
  TevStatus (*release)(TevPyramidLayerState*);
  bool isDown;
  TevDataType type;
  int channels;
};

#define LAYER_ENTRY(direction, name, T, type, channels)                                                       \
  {                                                                                                           \
#direction " " #name,                                                                                       \
        [](TevPyramidLayerState** state, TevSize roi, Tev32f rate, const void* kernel, int size, int mode) {    \
          return teviPyramidLayer##direction##InitAlloc_##name##R(state, roi, rate,                             \
                                                                  static_cast<const T*>(kernel), size, mode);   \
        },                                                                                                      \
        teviPyramidLayer##direction##Free_##name##R, std::strcmp(#direction, "Down") == 0, type, channels \
  }
const Entry entries[] = {
    LAYER_ENTRY(Down, 8u_C1, Tev16s, tevDataType8u, 1),   LAYER_ENTRY(Down, 8u_C3, Tev16s, tevDataType8u, 3),
    LAYER_ENTRY(Down, 16u_C1, Tev16s, tevDataType16u, 1), LAYER_ENTRY(Down, 16u_C3, Tev16s, tevDataType16u, 3),
    LAYER_ENTRY(Down, 32f_C1, Tev32f, tevDataType32f, 1), LAYER_ENTRY(Down, 32f_C3, Tev32f, tevDataType32f, 3),
    LAYER_ENTRY(Up, 8u_C1, Tev16s, tevDataType8u, 1),     LAYER_ENTRY(Up, 8u_C3, Tev16s, tevDataType8u, 3),
    LAYER_ENTRY(Up, 16u_C1, Tev16s, tevDataType16u, 1),   LAYER_ENTRY(Up, 16u_C3, Tev16s, tevDataType16u, 3),
    LAYER_ENTRY(Up, 32f_C1, Tev32f, tevDataType32f, 1),   LAYER_ENTRY(Up, 32f_C3, Tev32f, tevDataType32f, 3),
};
#undef LAYER_ENTRY

// The kernel in the entry's element type.
std::vector<unsigned char> kernelFor(const Entry& entry, const std::vector<int>& taps) {
  std::vector<unsigned char> bytes;
  for (int tap : taps) {
    const auto real = static_cast<Tev32f>(tap);
    const auto whole = static_cast<Tev16s>(tap);
    const auto* const from = entry.type == tevDataType32f ? reinterpret_cast<const unsigned char*>(&real)
                                                          : reinterpret_cast<const unsigned char*>(&whole);
    bytes.insert(bytes.end(), from, from + (entry.type == tevDataType32f ? 4 : 2));
  }
  return bytes;
}

const Entry& entryOf(bool isDown, TevDataType type) {
  return *std::find_if(std::begin(entries), std::end(entries),
                       [=](const Entry& e) { return e.isDown == isDown && e.type == type; });
}

// The taps that a state keeps of a kernel.
std::vector<double> stored(bool isDown, TevDataType type, const std::vector<int>& taps, TevStatus expected) {
  const Entry& entry = entryOf(isDown, type);
  TevPyramidLayerState* state = nullptr;
  EXPECT_EQ(entry.make(&state, {20, 20}, 2.0F, kernelFor(entry, taps).data(), static_cast<int>(taps.size()), 2),
            expected);
  std::vector<double> result;
  for (size_t i = 0; i < taps.size(); ++i)
    result.push_back(type == tevDataType32f ? static_cast<const Tev32f*>(state->kernel)[i]
                                            : static_cast<const Tev16s*>(state->kernel)[i]);
  EXPECT_EQ(entry.release(state), tevStatusOk);
  return result;
}

long long roundedUp(long long n, int multiple) { return (n + multiple - 1) / multiple * multiple; }

long long stateBytes(const Entry& e, long long w, long long h, long long k) {
  const long long c = e.channels;
  const bool real = e.type == tevDataType32f;
  if (!e.isDown)
    return real ? ((k + w - 1) * (k + h - 1) + k + std::max(w, h) - 1) * 4 * c + k * 4 + 108
                : ((k + w - 1) * (k + h - 1) + (k + std::max(w, h) - 1) * 2) * 4 * c + k * 2 + 108;
  const long long p = roundedUp(c * w, real ? 4 : 8), m = std::max(p, h);
  const long long v = k * (real ? 4 : 2) + m * c * 4 + (k + h) * (k + p) * 4;
  if (w > k && h > k)
    return k * 20 +
           (k / 2 + k) * k * c * 2 *
               (e.type == tevDataType8u    ? 1
                : e.type == tevDataType16u ? 2
                                           : 4) +
           k * 32 + p * 4 * k + v + 240;
  return v + 140;
}

// What one allocation of so many bytes asks of the hook.
size_t requested(long long bytes) {
  AllocatorWatch watch;
  tevsFree(tevsMalloc_8u(static_cast<int>(bytes)));
  return watch.bytes();
}

}  // namespace

TEST(PyramidSizes, HalveAFiveByThreeImageToThreeByTwo) {
  const TevSize down = downSize({5, 3}, 2.0F);
  EXPECT_EQ(down.width, 3);
  EXPECT_EQ(down.height, 2);
  const Range up = upRange({3, 2}, 2.0F);
  EXPECT_EQ(up.min.width, 5);
  EXPECT_EQ(up.max.width, 6);
  EXPECT_EQ(up.min.height, 3);
  EXPECT_EQ(up.max.height, 4);
}

TEST(PyramidSizes, OfOnePixelReachFromOneToTheRate) {
  for (float rate : {1.1F, 2.0F, 2.9F, 3.0F, 10.0F}) {
    const Range up = upRange({1, 1}, rate);
    EXPECT_EQ(up.min.width, 1);
    EXPECT_EQ(up.max.width, std::max(2, static_cast<int>(rate)));
    EXPECT_EQ(up.min.height, 1);
    EXPECT_EQ(up.max.height, up.max.width);
  }
}

// The ranges of neighbouring sizes touch and do not overlap, and each size's next smaller one has it in its range.
TEST(PyramidSizes, DownAndUpInvertEachOther) {
  for (float rate = 1.0F + 1.0F / 64; rate <= 10.0F; rate += rate < 3 ? 1.0F / 64 : 0.37F) {
    int previousMax = 0;
    for (int m = 1; m <= 200; ++m) {
      const Range range = upRange({m, 1}, rate);
      ASSERT_EQ(range.min.width, previousMax + 1) << "rate " << rate << ", size " << m;
      ASSERT_GE(range.max.width, range.min.width);
      previousMax = range.max.width;
      for (int n : {range.min.width, (range.min.width + range.max.width) / 2, range.max.width}) {
        ASSERT_EQ(downSize({n, 7}, rate).width, m) << "rate " << rate << ", size " << n;
        ASSERT_EQ(downSize({3, n}, rate).height, m) << "rate " << rate << ", size " << n;
      }
    }
  }
}

TEST(PyramidSizes, OfEveryPairUpTo200AgreeInBothDimensions) {
  for (float rate : {1.1F, 1.5F, 1.99999F, 2.0F, 2.00003F, 3.7F, 10.0F})
    for (int w = 1; w <= 200; ++w)
      for (int h = 1; h <= 200; ++h) {
        const TevSize down = downSize({w, h}, rate);
        const Range up = upRange(down, rate);
        ASSERT_TRUE(w >= up.min.width && w <= up.max.width && h >= up.min.height && h <= up.max.height)
            << "rate " << rate << ", " << w << " x " << h;
      }
}

TEST(PyramidSizes, OfGiantImagesDoNotWrap) {
  constexpr int giant = std::numeric_limits<int>::max();
  const Range up = upRange({giant, 1}, 10.0F);
  EXPECT_EQ(up.min.width, giant);
  EXPECT_EQ(up.max.width, giant);
  EXPECT_NEAR(downSize({giant, 1}, 2.0F).width, giant / 2 + 1, 128);
}

TEST(PyramidSizes, AreCheckedPointersThenSizeThenRate) {
  TevSize size = {-1, -2}, other = {-3, -4};
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_FAILS(tevStatusNullPtr, teviGetPyramidDownROI({0, 0}, nullptr, 0), size);
  EXPECT_FAILS(tevStatusBadSize, teviGetPyramidDownROI({0, 1}, &size, 0), size);
  EXPECT_FAILS(tevStatusBadSize, teviGetPyramidDownROI({1, -1}, &size, 2), size);
  EXPECT_FAILS(tevStatusNullPtr, teviGetPyramidUpROI({0, 0}, nullptr, &other, 0), other);
  EXPECT_FAILS(tevStatusNullPtr, teviGetPyramidUpROI({0, 0}, &size, nullptr, 0), size);
  EXPECT_FAILS(tevStatusBadSize, teviGetPyramidUpROI({0, 1}, &size, &other, 0), size, other);
  EXPECT_FAILS(tevStatusBadSize, teviGetPyramidUpROI({1, 0}, &size, &other, 2), size, other);
  for (float rate : {1.0F, 0.0F, -2.0F, std::nextafter(10.0F, 11.0F), nan}) {
    EXPECT_FAILS(tevStatusBadArg, teviGetPyramidDownROI({5, 5}, &size, rate), size);
    EXPECT_FAILS(tevStatusBadArg, teviGetPyramidUpROI({5, 5}, &size, &other, rate), size, other);
  }
  for (float rate : {std::nextafter(1.0F, 2.0F), 10.0F}) {
    EXPECT_EQ(teviGetPyramidDownROI({5, 5}, &size, rate), tevStatusOk);
    EXPECT_EQ(teviGetPyramidUpROI({5, 5}, &size, &other, rate), tevStatusOk);
  }
}

TEST(Pyramid, OfOnePixelHasOneLevel) {
  TevPyramid* pyramid = nullptr;
  ASSERT_EQ(teviPyramidInitAlloc(&pyramid, 5, {1, 1}, 2.0F), tevStatusOk);
  EXPECT_EQ(pyramid->level, 0);
  EXPECT_EQ(pyramid->roi[0].width, 1);
  EXPECT_EQ(pyramid->scale[0], 1.0);
  EXPECT_EQ(teviPyramidFree(pyramid), tevStatusOk);
}

TEST(Pyramid, ListsTheLevelsSizesAndScalesWithNoImages) {
  for (float rate : {1.25F, 2.0F, 3.0F, 10.0F})
    for (int level : {1, 2, 3, 100}) {
      TevPyramid* pyramid = nullptr;
      ASSERT_EQ(teviPyramidInitAlloc(&pyramid, level, {37, 90}, rate), tevStatusOk);
      TevSize size = {37, 90};
      long double scale = 1;
      int i = 0;
      for (;; ++i) {
        EXPECT_EQ(pyramid->images[i], nullptr);
        EXPECT_EQ(pyramid->steps[i], 0);
        EXPECT_EQ(pyramid->roi[i].width, size.width);
        EXPECT_EQ(pyramid->roi[i].height, size.height);
        EXPECT_EQ(pyramid->scale[i], static_cast<double>(scale));
        if (i == level || (size.width == 1 && size.height == 1)) break;
        size = downSize(size, rate);
        scale *= static_cast<double>(1 / static_cast<long double>(rate));
      }
      EXPECT_EQ(pyramid->level, i);
      EXPECT_EQ(pyramid->state, nullptr);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(pyramid->roi) % 8, 0U);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(pyramid->scale) % 8, 0U);
      EXPECT_EQ(teviPyramidFree(pyramid), tevStatusOk);
    }
}

TEST(Pyramid, TakesOneBlockOfTheSizeThatItsLevelsGive) {
  for (int level : {1, 3, 6}) {
    const size_t expected = requested(level * 44 + 112);
    AllocatorWatch watch;
    TevPyramid* pyramid = nullptr;
    ASSERT_EQ(teviPyramidInitAlloc(&pyramid, level, {64, 40}, 2.0F), tevStatusOk);
    EXPECT_EQ(watch.blocksHeld(), 1);
    EXPECT_EQ(watch.bytesHeld(), expected);
    // All arrays lie inside the block.
    const auto* const end = reinterpret_cast<const char*>(pyramid) + level * 44 + 112;
    EXPECT_LE(reinterpret_cast<const char*>(pyramid->steps + level + 1), end);
    EXPECT_LE(reinterpret_cast<const char*>(pyramid->scale + level + 1), end);
    EXPECT_EQ(teviPyramidFree(pyramid), tevStatusOk);
    EXPECT_EQ(watch.blocksHeld(), 0);
  }
  if (is32Bit) {
    EXPECT_EQ(requested(44 + 112), 44U + 112 + 36);
  }
}

TEST(Pyramid, FreesWhatItTookWhenMemoryFails) {
  for (int failing : {0, 1}) {
    AllocatorWatch watch(failing);
    TevPyramid* pyramid = reinterpret_cast<TevPyramid*>(&watch);
    EXPECT_FAILS(tevStatusNoMemory, teviPyramidInitAlloc(&pyramid, 3, {64, 40}, 2.0F), pyramid);
    EXPECT_EQ(watch.blocksHeld(), 0);
    EXPECT_EQ(watch.requests(), failing + 1);
  }
}

TEST(Pyramid, IsCheckedPointerThenSizeThenRateThenLevel) {
  TevPyramid* pyramid = nullptr;
  EXPECT_EQ(teviPyramidInitAlloc(nullptr, 0, {0, 0}, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, teviPyramidInitAlloc(&pyramid, 0, {0, 3}, 0), pyramid);
  EXPECT_FAILS(tevStatusBadSize, teviPyramidInitAlloc(&pyramid, 1, {3, 0}, 2), pyramid);
  EXPECT_FAILS(tevStatusBadArg, teviPyramidInitAlloc(&pyramid, 1, {3, 3}, 1.0F), pyramid);
  EXPECT_FAILS(tevStatusBadArg, teviPyramidInitAlloc(&pyramid, 1, {3, 3}, 10.001F), pyramid);
  EXPECT_FAILS(tevStatusBadArg, teviPyramidInitAlloc(&pyramid, 0, {3, 3}, 2.0F), pyramid);
  EXPECT_EQ(teviPyramidInitAlloc(&pyramid, 1, {3, 3}, 10.0F), tevStatusOk);
  EXPECT_EQ(teviPyramidFree(pyramid), tevStatusOk);
  EXPECT_EQ(teviPyramidFree(nullptr), tevStatusNullPtr);
}

TEST(PyramidLayerState, TakesTheBytesThatItsFormulaGives) {
  for (const Entry& entry : entries)
    for (int k : {3, 5, 9})
      for (TevSize roi : {TevSize{1, 1}, {3, 3}, {4, 4}, {5, 30}, {30, 5}, {9, 9}, {10, 10}, {101, 57}}) {
        const size_t expected = requested(stateBytes(entry, roi.width, roi.height, k));
        AllocatorWatch watch;
        TevPyramidLayerState* state = nullptr;
        ASSERT_EQ(entry.make(&state, roi, 2.0F, kernelFor(entry, std::vector<int>(k, 1)).data(), k, 2), tevStatusOk);
        EXPECT_EQ(watch.bytesHeld(), expected) << entry.name << " " << roi.width << " x " << roi.height << ", " << k;
        EXPECT_EQ(entry.release(state), tevStatusOk);
        EXPECT_EQ(watch.blocksHeld(), 0);
      }
}

TEST(PyramidLayerState, HasItsRecordInFrontAndItsAreasOn32ByteBoundaries) {
  if (is32Bit) {
    EXPECT_EQ(sizeof(TevPyramidLayerState), 44U);
  }
  for (const Entry& entry : entries) {
    TevPyramidLayerState* state = nullptr;
    ASSERT_EQ(entry.make(&state, {21, 13}, 1.5F, kernelFor(entry, {1, 2, 1}).data(), 3, 2), tevStatusOk);
    auto* const block = reinterpret_cast<Tev8u*>(state);
    EXPECT_EQ(state->kernel, block + 64);
    EXPECT_EQ(state->bufferA, block + 96);
    if (entry.isDown) {
      const long long row = 21LL * entry.channels;
      EXPECT_EQ(state->bufferB - state->bufferA,
                roundedUp(((3 + 13) * (3 + row) + std::max(roundedUp(row, 4), 13LL)) * 4 + 64, 32));
    }
    EXPECT_EQ(state->kernelSize, 3);
    EXPECT_EQ(state->dataType, entry.type);
    EXPECT_EQ(state->roiWidth, 21);
    EXPECT_EQ(state->roiHeight, 13);
    EXPECT_EQ(state->mode, 2);
    EXPECT_EQ(state->rate, 1.5F);
    entry.release(state);
  }
}

TEST(PyramidLayerState, OfADownLayerIsFilledWith255BehindItsKernel) {
  for (const Entry& entry : entries) {
    if (!entry.isDown) continue;
    TevPyramidLayerState* state = nullptr;
    ASSERT_EQ(entry.make(&state, {21, 13}, 1.5F, kernelFor(entry, {1, 2, 1}).data(), 3, 2), tevStatusOk);
    const auto* const kernel = static_cast<const Tev8u*>(state->kernel);
    const long long filled = stateBytes(entry, 21, 13, 3) - 76;
    for (long long i = 3 * (entry.type == tevDataType32f ? 4 : 2); i < filled; ++i) ASSERT_EQ(kernel[i], 255) << i;
    entry.release(state);
  }
}

TEST(PyramidLayerKernel, IsDividedByItsSum) {
  using Taps = std::vector<double>;
  EXPECT_EQ(stored(true, tevDataType8u, {1, 2, 1}, tevStatusOk), (Taps{2048, 4096, 2048}));
  EXPECT_EQ(stored(false, tevDataType16u, {1, 2, 1}, tevStatusOk), (Taps{2048, 4096, 2048}));
  EXPECT_EQ(stored(true, tevDataType32f, {1, 2, 1}, tevStatusOk), (Taps{0.25, 0.5, 0.25}));
  EXPECT_EQ(stored(false, tevDataType32f, {1, 6, 1}, tevStatusOk), (Taps{0.125, 0.75, 0.125}));
}

TEST(PyramidLayerKernel, IsTruncatedDownAndRoundedUp) {
  using Taps = std::vector<double>;
  // 2 / 6 of 2^14 is 5461.33, a half of which is 2730; 1 / 7 is 2340.57 and 1170 either way, 5 / 7 is 11702.86: 5851.
  EXPECT_EQ(stored(true, tevDataType8u, {2, 2, 2}, tevStatusOk), (Taps{2730, 2730, 2730}));
  EXPECT_EQ(stored(false, tevDataType8u, {2, 2, 2}, tevStatusOk), (Taps{2730, 2730, 2730}));
  EXPECT_EQ(stored(true, tevDataType8u, {1, 9, 1}, tevStatusOk), (Taps{744, 6702, 744}));
  // 1 / 11 is 1489.45 and 9 / 11 is 13405.09. 4 / 13 is 5041.23 and 5 / 13 is 6301.54: 3150 against 3151.
  EXPECT_EQ(stored(true, tevDataType16u, {4, 5, 4}, tevStatusOk), (Taps{2520, 3150, 2520}));
  EXPECT_EQ(stored(false, tevDataType16u, {4, 5, 4}, tevStatusOk), (Taps{2520, 3151, 2520}));
  // Negative taps: -1 / 6 is -2730.67. Truncated to -2730, then shifted to -1365; with 0.5 added to -2730 as well.
  EXPECT_EQ(stored(true, tevDataType8u, {-1, 8, -1}, tevStatusOk), (Taps{-1365, 10922, -1365}));
}

TEST(PyramidLayerKernel, OfLargeTapsWrapsTo16BitsInAnUpLayer) {
  // 5 / 1 of 2^14 is 81920: its low 16 bits are 16384, half of which is 8192. A down layer keeps the low bits of half.
  EXPECT_EQ(stored(false, tevDataType8u, {-2, 5, -2}, tevStatusOk), (std::vector<double>{-16384, 8192, -16384}));
  EXPECT_EQ(stored(true, tevDataType8u, {-2, 5, -2}, tevStatusOk), (std::vector<double>{-16384, -24576, -16384}));
}

TEST(PyramidLayerKernel, CountsOnlyItsLeftHalfAndWarnsOfTheRight) {
  for (bool isDown : {true, false}) {
    EXPECT_EQ(stored(isDown, tevDataType8u, {1, 2, 4}, tevStatusAsymmetricKernel),
              (std::vector<double>{2048, 4096, 2048}));
    EXPECT_EQ(stored(isDown, tevDataType32f, {1, 2, 4}, tevStatusAsymmetricKernel),
              (std::vector<double>{0.25, 0.5, 0.25}));
    EXPECT_EQ(stored(isDown, tevDataType16u, {1, 3, 8, 3, 2}, tevStatusAsymmetricKernel),
              (std::vector<double>{512, 1536, 4096, 1536, 512}));
  }
}

TEST(PyramidLayerKernel, ThatSumsToZeroIsStoredRawWithItsMirrorOnePlaceOff) {
  for (const TevDataType type : {tevDataType8u, tevDataType16u}) {
    const Entry& entry = entryOf(true, type);
    TevPyramidLayerState* state = nullptr;
    ASSERT_EQ(entry.make(&state, {20, 20}, 2.0F, kernelFor(entry, {1, -2, 1}).data(), 3, 2), tevStatusOk);
    const auto* const kernel = static_cast<const Tev16s*>(state->kernel);
    // Entry 2 keeps what the state was filled with; the mirror of entry 0 lies behind the kernel.
    EXPECT_EQ(kernel[0], 1);
    EXPECT_EQ(kernel[1], -2);
    EXPECT_EQ(kernel[2], -1);
    EXPECT_EQ(kernel[3], 1);
    entry.release(state);
  }
  const Entry& up = entryOf(false, tevDataType8u);
  TevPyramidLayerState* state = nullptr;
  ASSERT_EQ(up.make(&state, {20, 20}, 2.0F, kernelFor(up, {3, 1, -8, 1, 4}).data(), 5, 2), tevStatusAsymmetricKernel);
  const auto* const kernel = static_cast<const Tev16s*>(state->kernel);
  EXPECT_EQ(kernel[0], 3);
  EXPECT_EQ(kernel[1], 1);
  EXPECT_EQ(kernel[2], -8);
  EXPECT_EQ(kernel[4], 1);
  EXPECT_EQ(kernel[5], 3);
  up.release(state);
}

TEST(PyramidLayerKernel, OfFloatsThatSumToZeroTakesAByteOfTheCallersForItsMiddle) {
  for (bool isDown : {true, false}) {
    const Entry& entry = entryOf(isDown, tevDataType32f);
    const auto taps = kernelFor(entry, {3, 1, -8, 1, 3});
    TevPyramidLayerState* state = nullptr;
    ASSERT_EQ(entry.make(&state, {20, 20}, 2.0F, taps.data(), 5, 2), tevStatusOk);
    const auto* const kernel = static_cast<const Tev32f*>(state->kernel);
    EXPECT_EQ(kernel[0], 3.0F);
    EXPECT_EQ(kernel[1], 1.0F);
    EXPECT_EQ(kernel[2], static_cast<float>(taps[2]));  // 0x40400000: byte 2 is 64
    EXPECT_EQ(kernel[2], 64.0F);
    EXPECT_EQ(kernel[4], 1.0F);
    EXPECT_EQ(kernel[5], 3.0F);
    entry.release(state);
  }
}

TEST(PyramidLayerState, IsCheckedInOrder) {
  for (const Entry& entry : entries) {
    const auto taps = kernelFor(entry, {1, 2, 1, 2, 1});
    TevPyramidLayerState* state = nullptr;
    const auto call = [&](TevSize roi, float rate, int size, int mode) {
      return entry.make(&state, roi, rate, taps.data(), size, mode);
    };
    EXPECT_EQ(entry.make(nullptr, {0, 0}, 0, taps.data(), 0, 0), tevStatusNullPtr) << entry.name;
    EXPECT_FAILS(tevStatusNullPtr, entry.make(&state, {0, 0}, 0, nullptr, 0, 0), state);
    EXPECT_FAILS(tevStatusBadSize, call({0, 1}, 0, 0, 0), state);
    EXPECT_FAILS(tevStatusBadSize, call({1, 0}, 2, 3, 2), state);
    for (int mode : {0, 1, 3, 4}) EXPECT_FAILS(tevStatusBadArg, call({5, 5}, 2, 3, mode), state);
    for (float rate : {1.0F, 10.5F}) EXPECT_FAILS(tevStatusBadArg, call({5, 5}, rate, 3, 2), state);
    for (int size : {1, 2, 4, 0, -3}) EXPECT_FAILS(tevStatusBadArg, call({5, 5}, 2, size, 2), state);
    AllocatorWatch watch(0);
    EXPECT_FAILS(tevStatusNoMemory, call({5, 5}, 2, 3, 2), state);
    EXPECT_FAILS(tevStatusNoMemory, call({0x7FFFFFFF, 0x7FFFFFFF}, 2, 3, 2), state);
  }
}

TEST(PyramidLayerState, WorkersCheckChannelsAndTypeLast) {
  const Tev16s taps[] = {1, 2, 1};
  TevPyramidLayerState* state = nullptr;
  for (const auto make : {ownPyramidLayerDownInitAlloc, ownPyramidLayerUpInitAlloc}) {
    for (int channels : {0, 2, 4}) {
      EXPECT_FAILS(tevStatusBadChannels, make(&state, {5, 5}, 2.0F, 0, channels, taps, 3, 2), state);
      EXPECT_FAILS(tevStatusBadArg, make(&state, {5, 5}, 2.0F, 0, channels, taps, 4, 2), state);
    }
    for (int type : {0, 3, 4, 12})
      EXPECT_FAILS(tevStatusBadKernel, make(&state, {5, 5}, 2.0F, type, 3, taps, 3, 2), state);
  }
}

TEST(PyramidLayerState, IsFreedByTheEntriesOfAnyType) {
  const Entry& entry = entryOf(true, tevDataType8u);
  for (const Entry& other : entries) {
    AllocatorWatch watch;
    TevPyramidLayerState* state = nullptr;
    ASSERT_EQ(entry.make(&state, {5, 5}, 2.0F, kernelFor(entry, {1, 2, 1}).data(), 3, 2), tevStatusOk);
    EXPECT_EQ(other.release(state), tevStatusOk);
    EXPECT_EQ(watch.blocksHeld(), 0);
    EXPECT_EQ(other.release(nullptr), tevStatusNullPtr);
  }
  EXPECT_EQ(teviPyramidLayerDownFree(nullptr), tevStatusNullPtr);
  EXPECT_EQ(teviPyramidLayerUpFree(nullptr), tevStatusNullPtr);
}
