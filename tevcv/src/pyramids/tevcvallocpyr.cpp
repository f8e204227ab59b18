// Pyramid records and layer states: the sizes of the levels, and the kernel between two of them.
//
// Levels shrink by any rate in (1, 10]. The up range of a size m holds every size whose next smaller level is m; these
// ranges follow one another without gap or overlap, so that each size n has exactly one size below it, which the down
// query finds by stepping from n / rate.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "tevcv/memory.h"
#include "tevcv_internal/pyramids.h"

using namespace tevcv;

namespace {

constexpr Tev32f smallestNormal = 1.1754944e-38F;
constexpr int interpolationLinear = 2;

// NaN is no rate either.
TevStatus rateInRange(Tev32f rate) { return failUnless(rate > 1 && rate <= 10, tevStatusBadArg); }

// Sizes are compared in 64 bits, so that the ranges of giant images do not wrap.
struct SizeRange {
  std::int64_t min;
  std::int64_t max;
};

// A product of a size and a rate is rounded to float before it is truncated.
std::int64_t scaled(std::int64_t n, Tev32f rate) {
  return static_cast<std::int64_t>(static_cast<Tev32f>(static_cast<Extended>(n) * rate));
}

// The sizes whose next smaller level has n pixels in this dimension.
SizeRange upRange(std::int64_t n, Tev32f rate) {
  return {n == 1 ? 1 : std::max(n + 1, scaled(n - 1, rate) + 1), std::max(n + 1, scaled(n, rate))};
}

Tev32s downSize(Tev32s n, Tev32f rate) {
  std::int64_t candidate = std::max<std::int64_t>(static_cast<std::int64_t>(Extended{1} * n / rate + Extended{0.5}), 1);
  for (;;) {
    const SizeRange range = upRange(candidate, rate);
    if (n < range.min)
      --candidate;
    else if (n > range.max)
      ++candidate;
    else
      return static_cast<Tev32s>(candidate);
  }
}

// The record's arrays follow it in the order of its fields; the allocation's size leaves room for their alignment.
template <class T>
T* takeArray(Tev8u*& at, int count, std::uintptr_t alignment) {
  at += -reinterpret_cast<std::uintptr_t>(at) & (alignment - 1);
  T* const array = reinterpret_cast<T*>(at);
  at += sizeof(T) * static_cast<std::size_t>(count);
  return array;
}

constexpr std::size_t recordAndArrays(std::size_t level) {
  return sizeof(TevPyramid) + (level + 1) * (sizeof(void*) + sizeof(TevSize) + sizeof(Tev64f) + sizeof(Tev32s)) + 2 * 4;
}
static_assert(recordAndArrays(0) <= 112 && recordAndArrays(1000) <= 1000 * 44 + 112);
static_assert(sizeof(void*) != 4 || sizeof(TevPyramid) == 24);

TevPyramid* allocatePyramid(int level) {
  Tev8u* const block = tevsMalloc_8u(level * 44 + 112);
  if (!block) return nullptr;
  TevPyramid* const pyramid = new (block) TevPyramid;
  Tev8u* at = block + sizeof(TevPyramid);
  pyramid->images = takeArray<void*>(at, level + 1, alignof(void*));
  pyramid->roi = takeArray<TevSize>(at, level + 1, 8);
  pyramid->scale = takeArray<Tev64f>(at, level + 1, 8);
  pyramid->steps = takeArray<Tev32s>(at, level + 1, alignof(Tev32s));
  pyramid->state = nullptr;
  pyramid->level = level;
  return pyramid;
}

// ---- Layer states -------------------------------------------------------------------------------------------------

static_assert(sizeof(void*) != 4 || sizeof(TevPyramidLayerState) == 44);

struct Layer {
  int width;
  int height;
  int kernelSize;
  int channels;
  TevDataType dataType;
};

bool isFloat(const Layer& layer) { return layer.dataType == tevDataType32f; }
int kernelBytes(const Layer& layer) { return isFloat(layer) ? int{sizeof(Tev32f)} : int{sizeof(Tev16s)}; }

constexpr std::int64_t roundUp(std::int64_t n, int multiple) { return (n + multiple - 1) / multiple * multiple; }

// The sizes of both states are part of the interface: programs count on what a state takes from their allocator. They
// are formed in double, where every size that can be allocated is exact and none wraps.
Tev64f upStateBytes(const Layer& layer) {
  const Tev64f k = layer.kernelSize, w = layer.width, h = layer.height, c = layer.channels;
  const Tev64f line = k + std::max(w, h) - 1;
  return ((k + w - 1) * (k + h - 1) + line * (isFloat(layer) ? 1 : 2)) * 4 * c + k * kernelBytes(layer) + 108;
}

Tev64f downStateBytes(const Layer& layer) {
  const Tev64f k = layer.kernelSize, h = layer.height, c = layer.channels;
  const auto p = static_cast<Tev64f>(roundUp(std::int64_t{layer.channels} * layer.width, isFloat(layer) ? 4 : 8));
  const Tev64f v = k * kernelBytes(layer) + std::max(p, h) * c * 4 + (k + h) * (k + p) * 4;
  if (layer.width <= layer.kernelSize || layer.height <= layer.kernelSize) return v + 140;
  const int element = layer.dataType == tevDataType8u ? 1 : layer.dataType == tevDataType16u ? 2 : 4;
  const Tev64f half = layer.kernelSize / 2;
  return k * 20 + (half + k) * k * c * 2 * element + k * 32 + p * 4 * k + v + 240;
}

Tev8u* alignedTo32(Tev8u* p) { return p + (-reinterpret_cast<std::uintptr_t>(p) & 31); }

// A block of `bytes` with the record in front and the kernel and first scratch area placed, or null.
TevPyramidLayerState* allocateLayer(const Layer& layer, Tev64f bytes, Tev32f rate, int mode) {
  if (bytes > std::numeric_limits<Tev32s>::max()) return nullptr;
  Tev8u* const block = tevsMalloc_8u(static_cast<int>(bytes));
  if (!block) return nullptr;
  TevPyramidLayerState* const state = new (block) TevPyramidLayerState;
  Tev8u* const kernel = alignedTo32(block + sizeof(TevPyramidLayerState));
  state->kernel = kernel;
  state->bufferA = alignedTo32(kernel + std::int64_t{layer.kernelSize} * kernelBytes(layer));
  state->kernelSize = layer.kernelSize;
  state->dataType = layer.dataType;
  state->roiWidth = layer.width;
  state->roiHeight = layer.height;
  state->mode = mode;
  state->rate = rate;
  return state;
}

// kernel[mid] + 2 * (kernel[0] + ... + kernel[mid - 1]): the sum that the mirrored kernel will have.
template <class T, class Sum>
Sum mirroredSum(const T* kernel, int kernelSize) {
  Sum half = 0;
  for (int i = 0; i < kernelSize / 2; ++i) half += kernel[i];
  return kernel[kernelSize / 2] + 2 * half;
}

template <class T>
bool differ(T a, T b) {
  if constexpr (std::is_floating_point_v<T>)
    return std::fabs(static_cast<Extended>(a) - b) > smallestNormal;
  else
    return a != b;
}

template <class T>
TevStatus symmetry(const T* kernel, int kernelSize) {
  const int mid = kernelSize / 2;
  for (int i = 1; i <= mid; ++i)
    if (differ(kernel[mid - i], kernel[mid + i])) return tevStatusAsymmetricKernel;
  return tevStatusOk;
}

template <class T, class Normalised>
void storeMirrored(const T* kernel, int kernelSize, T* stored, Normalised normalised) {
  for (int i = 0; i <= kernelSize / 2; ++i) stored[i] = stored[kernelSize - 1 - i] = normalised(kernel[i]);
}

// A kernel that sums to 0 is stored as it is, with its mirror one place off, as programs that print their states know
// it. The first tap's mirror falls behind the kernel, into the scratch; the entry behind the middle keeps what it held.
template <class T>
void storeRaw(const T* kernel, int kernelSize, T* stored) {
  const int mid = kernelSize / 2;
  if constexpr (std::is_floating_point_v<T>)
    stored[mid] = reinterpret_cast<const Tev8u*>(kernel)[mid];
  else
    stored[mid] = kernel[mid];
  for (int i = 0; i < mid; ++i) stored[i] = stored[kernelSize - i] = kernel[i];
}

// The integer layers' taps are 13-bit fractions. Down states truncate them and up states round them; both are part of
// the results.
TevStatus storeDownKernel(const Tev16s* kernel, int kernelSize, Tev16s* stored) {
  // Modulo 2^32, as the sum is kept in 32 bits.
  const auto sum = static_cast<Tev32s>((mirroredSum<Tev16s, std::int64_t>(kernel, kernelSize)));
  if (sum == 0)
    storeRaw(kernel, kernelSize, stored);
  else
    storeMirrored(kernel, kernelSize, stored,
                  [sum](Tev16s v) { return static_cast<Tev16s>(v * (1 << 14) / sum >> 1); });
  return symmetry(kernel, kernelSize);
}

TevStatus storeUpKernel(const Tev16s* kernel, int kernelSize, Tev16s* stored) {
  const auto sum = static_cast<Extended>(mirroredSum<Tev16s, std::int64_t>(kernel, kernelSize));
  if (!(std::fabs(4 * sum) > smallestNormal))
    storeRaw(kernel, kernelSize, stored);
  else
    storeMirrored(kernel, kernelSize, stored, [sum](Tev16s v) {
      const auto fraction14 = static_cast<Tev32s>(Extended{4} * v / (2 * sum) * 8192 + Extended{0.5});
      return static_cast<Tev16s>(static_cast<Tev16s>(fraction14) >> 1);
    });
  return symmetry(kernel, kernelSize);
}

TevStatus storeFloatKernel(const Tev32f* kernel, int kernelSize, Tev32f* stored) {
  const auto sum = mirroredSum<Tev32f, Extended>(kernel, kernelSize);
  if (!(std::fabs(sum) > smallestNormal))
    storeRaw(kernel, kernelSize, stored);
  else
    storeMirrored(kernel, kernelSize, stored, [sum](Tev32f v) { return static_cast<Tev32f>(v / sum); });
  return symmetry(kernel, kernelSize);
}

TevStatus checkLayer(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate, TevDataType dataType, int channels,
                     const void* kernel, int kernelSize, int mode) {
  return firstFailure(notNull(ppState, kernel), region(srcRoi),
                      failUnless(mode == interpolationLinear, tevStatusBadArg), rateInRange(rate),
                      failUnless(kernelSize >= 3 && kernelSize % 2 == 1, tevStatusBadArg),
                      failUnless(channels == 1 || channels == 3, tevStatusBadChannels),
                      failUnless(dataType == tevDataType8u || dataType == tevDataType16u || dataType == tevDataType32f,
                                 tevStatusBadKernel));
}

TevStatus freeLayer(TevPyramidLayerState* state) {
  if (TevStatus s = notNull(state)) return s;
  tevsFree(state);
  return tevStatusOk;
}

}  // namespace

TevStatus teviGetPyramidUpROI(TevSize srcRoi, TevSize* pDstRoiMin, TevSize* pDstRoiMax, Tev32f rate) {
  if (TevStatus s = firstFailure(notNull(pDstRoiMin, pDstRoiMax), region(srcRoi), rateInRange(rate))) return s;
  const SizeRange width = upRange(srcRoi.width, rate), height = upRange(srcRoi.height, rate);
  *pDstRoiMin = {saturate<Tev32s>(width.min), saturate<Tev32s>(height.min)};
  *pDstRoiMax = {saturate<Tev32s>(width.max), saturate<Tev32s>(height.max)};
  return tevStatusOk;
}

TevStatus teviGetPyramidDownROI(TevSize srcRoi, TevSize* pDstRoi, Tev32f rate) {
  if (TevStatus s = firstFailure(notNull(pDstRoi), region(srcRoi), rateInRange(rate))) return s;
  *pDstRoi = {downSize(srcRoi.width, rate), downSize(srcRoi.height, rate)};
  return tevStatusOk;
}

TevStatus teviPyramidInitAlloc(TevPyramid** ppPyramid, int level, TevSize roiSize, Tev32f rate) {
  if (TevStatus s =
          firstFailure(notNull(ppPyramid), region(roiSize), rateInRange(rate), failUnless(level >= 1, tevStatusBadArg)))
    return s;
  // Each level is smaller by at least a pixel in the larger dimension, so this list holds all levels down to 1 x 1.
  const int longest = std::max(roiSize.width, roiSize.height);
  if (longest > std::numeric_limits<Tev32s>::max() / int{sizeof(TevSize)}) return tevStatusNoMemory;
  TevSize* const sizes = reinterpret_cast<TevSize*>(tevsMalloc_8u(longest * int{sizeof(TevSize)}));
  if (!sizes) return tevStatusNoMemory;
  int count = 0;
  sizes[0] = roiSize;
  while (count < level && (sizes[count].width >= 2 || sizes[count].height > 1)) {
    teviGetPyramidDownROI(sizes[count], &sizes[count + 1], rate);
    ++count;
  }
  TevPyramid* const pyramid = allocatePyramid(count);
  if (!pyramid) {
    tevsFree(sizes);
    return tevStatusNoMemory;
  }
  const auto shrink = static_cast<Tev64f>(1 / static_cast<Extended>(rate));
  Extended scale = 1;
  for (int i = 0; i <= count; ++i, scale *= shrink) {
    pyramid->images[i] = nullptr;
    pyramid->roi[i] = sizes[i];
    pyramid->scale[i] = static_cast<Tev64f>(scale);
    pyramid->steps[i] = 0;
  }
  tevsFree(sizes);
  *ppPyramid = pyramid;
  return tevStatusOk;
}

TevStatus teviPyramidFree(TevPyramid* pyramid) {
  if (TevStatus s = notNull(pyramid)) return s;
  tevsFree(pyramid);
  return tevStatusOk;
}

TevStatus ownPyramidLayerDownInitAlloc(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                       TevDataType dataType, int channels, const void* kernel, int kernelSize,
                                       int mode) {
  if (TevStatus s = checkLayer(ppState, srcRoi, rate, dataType, channels, kernel, kernelSize, mode)) return s;
  const Layer layer = {srcRoi.width, srcRoi.height, kernelSize, channels, dataType};
  const Tev64f bytes = downStateBytes(layer);
  TevPyramidLayerState* const state = allocateLayer(layer, bytes, rate, mode);
  if (!state) return tevStatusNoMemory;
  std::fill_n(static_cast<Tev8u*>(state->kernel), static_cast<int>(bytes) - 76, Tev8u{255});
  const std::int64_t row = std::int64_t{channels} * srcRoi.width, k = kernelSize, h = srcRoi.height;
  state->bufferB = alignedTo32(state->bufferA + ((k + h) * (k + row) + std::max(roundUp(row, 4), h)) * 4 + 64);
  *ppState = state;
  return dataType == tevDataType32f
             ? storeFloatKernel(static_cast<const Tev32f*>(kernel), kernelSize, static_cast<Tev32f*>(state->kernel))
             : storeDownKernel(static_cast<const Tev16s*>(kernel), kernelSize, static_cast<Tev16s*>(state->kernel));
}

TevStatus ownPyramidLayerUpInitAlloc(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate, TevDataType dataType,
                                     int channels, const void* kernel, int kernelSize, int mode) {
  if (TevStatus s = checkLayer(ppState, srcRoi, rate, dataType, channels, kernel, kernelSize, mode)) return s;
  const Layer layer = {srcRoi.width, srcRoi.height, kernelSize, channels, dataType};
  TevPyramidLayerState* const state = allocateLayer(layer, upStateBytes(layer), rate, mode);
  if (!state) return tevStatusNoMemory;
  *ppState = state;
  return dataType == tevDataType32f
             ? storeFloatKernel(static_cast<const Tev32f*>(kernel), kernelSize, static_cast<Tev32f*>(state->kernel))
             : storeUpKernel(static_cast<const Tev16s*>(kernel), kernelSize, static_cast<Tev16s*>(state->kernel));
}

TevStatus teviPyramidLayerDownInitAlloc_8u_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                               const Tev16s* kernel, int kernelSize, int mode) {
  return ownPyramidLayerDownInitAlloc(ppState, srcRoi, rate, tevDataType8u, 1, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerDownInitAlloc_8u_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                               const Tev16s* kernel, int kernelSize, int mode) {
  return ownPyramidLayerDownInitAlloc(ppState, srcRoi, rate, tevDataType8u, 3, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerDownInitAlloc_16u_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                const Tev16s* kernel, int kernelSize, int mode) {
  return ownPyramidLayerDownInitAlloc(ppState, srcRoi, rate, tevDataType16u, 1, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerDownInitAlloc_16u_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                const Tev16s* kernel, int kernelSize, int mode) {
  return ownPyramidLayerDownInitAlloc(ppState, srcRoi, rate, tevDataType16u, 3, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerDownInitAlloc_32f_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                const Tev32f* kernel, int kernelSize, int mode) {
  return ownPyramidLayerDownInitAlloc(ppState, srcRoi, rate, tevDataType32f, 1, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerDownInitAlloc_32f_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                                const Tev32f* kernel, int kernelSize, int mode) {
  return ownPyramidLayerDownInitAlloc(ppState, srcRoi, rate, tevDataType32f, 3, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerUpInitAlloc_8u_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                             const Tev16s* kernel, int kernelSize, int mode) {
  return ownPyramidLayerUpInitAlloc(ppState, srcRoi, rate, tevDataType8u, 1, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerUpInitAlloc_8u_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                             const Tev16s* kernel, int kernelSize, int mode) {
  return ownPyramidLayerUpInitAlloc(ppState, srcRoi, rate, tevDataType8u, 3, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerUpInitAlloc_16u_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                              const Tev16s* kernel, int kernelSize, int mode) {
  return ownPyramidLayerUpInitAlloc(ppState, srcRoi, rate, tevDataType16u, 1, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerUpInitAlloc_16u_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                              const Tev16s* kernel, int kernelSize, int mode) {
  return ownPyramidLayerUpInitAlloc(ppState, srcRoi, rate, tevDataType16u, 3, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerUpInitAlloc_32f_C1R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                              const Tev32f* kernel, int kernelSize, int mode) {
  return ownPyramidLayerUpInitAlloc(ppState, srcRoi, rate, tevDataType32f, 1, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerUpInitAlloc_32f_C3R(TevPyramidLayerState** ppState, TevSize srcRoi, Tev32f rate,
                                              const Tev32f* kernel, int kernelSize, int mode) {
  return ownPyramidLayerUpInitAlloc(ppState, srcRoi, rate, tevDataType32f, 3, kernel, kernelSize, mode);
}

TevStatus teviPyramidLayerDownFree(TevPyramidLayerState* pState) { return freeLayer(pState); }
TevStatus teviPyramidLayerUpFree(TevPyramidLayerState* pState) { return freeLayer(pState); }

TevStatus teviPyramidLayerDownFree_8u_C1R(TevPyramidLayerState* pState) { return teviPyramidLayerDownFree(pState); }
TevStatus teviPyramidLayerDownFree_8u_C3R(TevPyramidLayerState* pState) { return teviPyramidLayerDownFree(pState); }
TevStatus teviPyramidLayerDownFree_16u_C1R(TevPyramidLayerState* pState) { return teviPyramidLayerDownFree(pState); }
TevStatus teviPyramidLayerDownFree_16u_C3R(TevPyramidLayerState* pState) { return teviPyramidLayerDownFree(pState); }
TevStatus teviPyramidLayerDownFree_32f_C1R(TevPyramidLayerState* pState) { return teviPyramidLayerDownFree(pState); }
TevStatus teviPyramidLayerDownFree_32f_C3R(TevPyramidLayerState* pState) { return teviPyramidLayerDownFree(pState); }
TevStatus teviPyramidLayerUpFree_8u_C1R(TevPyramidLayerState* pState) { return teviPyramidLayerUpFree(pState); }
TevStatus teviPyramidLayerUpFree_8u_C3R(TevPyramidLayerState* pState) { return teviPyramidLayerUpFree(pState); }
TevStatus teviPyramidLayerUpFree_16u_C1R(TevPyramidLayerState* pState) { return teviPyramidLayerUpFree(pState); }
TevStatus teviPyramidLayerUpFree_16u_C3R(TevPyramidLayerState* pState) { return teviPyramidLayerUpFree(pState); }
TevStatus teviPyramidLayerUpFree_32f_C1R(TevPyramidLayerState* pState) { return teviPyramidLayerUpFree(pState); }
TevStatus teviPyramidLayerUpFree_32f_C3R(TevPyramidLayerState* pState) { return teviPyramidLayerUpFree(pState); }
