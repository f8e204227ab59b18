// Opening, closing, top-hat, black-hat and gradient: an erosion and a dilation in turn, the second with the structuring
// element turned by 180 degrees, so that an opening never exceeds its source and a closing never falls below it.
#include <cstdint>
#include <limits>
#include <algorithm>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "morphology/blocks.h"
#include "tevcv/memory.h"
#include "tevcv/morphology.h"
#include "tevcv/primitives.h"
#include "tevcv_internal/morphology.h"

using namespace tevcv;

namespace {

template <class T>
constexpr TevDataType dataTypeOf = std::is_same_v<T, Tev8u> ? tevDataType8u : tevDataType32f;

// Elements made of runs are left to the general class: an operation then takes the same way for both states.
constexpr int extraIrregular = 1;

// The image primitives and the two plain operations of a layout.
template <class T, int channels>
struct Layout;

#define LAYOUT(T, channels, erodeMember, dilateMember, subMember, subInPlaceMember) \
  template <>                                                                       \
  struct Layout<T, channels> {                                                      \
    static constexpr auto erode = erodeMember;                                      \
    static constexpr auto dilate = dilateMember;                                    \
    static constexpr auto sub = subMember;                                          \
    static constexpr auto subInPlace = subInPlaceMember;                            \
  };

LAYOUT(Tev8u, 1, teviErodeBorderReplicate_8u_C1R, teviDilateBorderReplicate_8u_C1R, teviSub_8u_C1RSfs,
       teviSub_8u_C1IRSfs)
LAYOUT(Tev8u, 3, teviErodeBorderReplicate_8u_C3R, teviDilateBorderReplicate_8u_C3R, teviSub_8u_C3RSfs,
       teviSub_8u_C3IRSfs)
LAYOUT(Tev8u, 4, teviErodeBorderReplicate_8u_C4R, teviDilateBorderReplicate_8u_C4R, teviSub_8u_C4RSfs,
       teviSub_8u_C4IRSfs)
LAYOUT(Tev32f, 1, teviErodeBorderReplicate_32f_C1R, teviDilateBorderReplicate_32f_C1R, teviSub_32f_C1R,
       teviSub_32f_C1IR)
LAYOUT(Tev32f, 3, teviErodeBorderReplicate_32f_C3R, teviDilateBorderReplicate_32f_C3R, teviSub_32f_C3R,
       teviSub_32f_C3IR)
LAYOUT(Tev32f, 4, teviErodeBorderReplicate_32f_C4R, teviDilateBorderReplicate_32f_C4R, teviSub_32f_C4R,
       teviSub_32f_C4IR)
#undef LAYOUT

// Bytes from row to row of the scratch image, for a region of this width.
template <class T, int channels>
std::int64_t scratchStride(int width) {
  return roundUp(std::int64_t{width} * channels * std::int64_t{sizeof(T)}, std::int64_t{32});
}

template <class T, int channels>
TevStatus getSize(TevSize roi, const Tev8u* mask, TevSize maskSize, int* size) {
  if (TevStatus s = firstFailure(length(roi.height), notNull(size))) return s;
  int stateSize = 0;
  if (TevStatus s = ownMorphologyInitAlloc(dataTypeOf<T>, channels, roi.width, mask, maskSize.width, maskSize.height,
                                           maskSize.width >> 1, maskSize.height >> 1, nullptr, &stateSize,
                                           tevMorphBuildSizeOnly, extraIrregular))
    return s;
  // Behind the header and between the three areas, padding to the next 32-byte boundary: 2 * 31 bytes at most.
  constexpr int headerAndPadding = sizeof(TevMorphAdvState) + 64;
  // The cap of a row keeps the product with the height in 64 bits.
  const std::int64_t stride = std::min(scratchStride<T, channels>(roi.width), std::int64_t{1} << 31);
  *size = saturate<int>(stride * roi.height + 2 * std::int64_t{stateSize} + headerAndPadding);
  return tevStatusOk;
}

template <class T, int channels>
TevStatus init(TevMorphAdvState* state, TevSize roi, const Tev8u* mask, TevSize maskSize, TevPoint anchor) {
  if (TevStatus s = firstFailure(length(roi.height), notNull(state))) return s;
  TevMorphState* direct = reinterpret_cast<TevMorphState*>(state + 1);
  if (TevStatus s = ownMorphologyInitAlloc(dataTypeOf<T>, channels, roi.width, mask, maskSize.width, maskSize.height,
                                           anchor.x, anchor.y, &direct, nullptr, tevMorphBuildInPlace, extraIrregular))
    return s;
  // The element turned by 180 degrees is its bytes in reverse. They are reversed in the copy that the first state
  // holds, and put back: the caller's mask is only read.
  Tev8u *const kernel = direct->kernel, *const kernelEnd = kernel + std::ptrdiff_t{maskSize.width} * maskSize.height;
  TevMorphState* reflected =
      reinterpret_cast<TevMorphState*>(nextBoundary(reinterpret_cast<Tev8u*>(direct) + direct->totalSize, 32));
  std::reverse(kernel, kernelEnd);
  const TevStatus built = ownMorphologyInitAlloc(
      dataTypeOf<T>, channels, roi.width, kernel, maskSize.width, maskSize.height, maskSize.width - anchor.x - 1,
      maskSize.height - anchor.y - 1, &reflected, nullptr, tevMorphBuildInPlace, extraIrregular);
  std::reverse(kernel, kernelEnd);
  if (built != tevStatusOk) return built;
  state->direct = direct;
  state->reflected = reflected;
  state->scratch = nextBoundary(reinterpret_cast<Tev8u*>(reflected) + reflected->totalSize, 32);
  state->scratchSize = static_cast<int>(scratchStride<T, channels>(roi.width) * roi.height);
  state->zero = 0;
  return tevStatusOk;
}

template <class T, int channels>
TevStatus initAlloc(TevMorphAdvState** holder, TevSize roi, const Tev8u* mask, TevSize maskSize, TevPoint anchor) {
  if (TevStatus s = notNull(holder)) return s;
  int size = 0;
  if (TevStatus s = getSize<T, channels>(roi, mask, maskSize, &size)) return s;
  if (size == std::numeric_limits<int>::max()) return tevStatusNoMemory;
  TevMorphAdvState* const state = reinterpret_cast<TevMorphAdvState*>(tevsMalloc_8u(size));
  if (!state) return tevStatusNoMemory;
  if (TevStatus s = init<T, channels>(state, roi, mask, maskSize, anchor)) {
    tevsFree(state);
    return s;
  }
  *holder = state;
  return tevStatusOk;
}

// The scratch image of one call: the state's, or for a region taller than the state's a block of the call's own.
class Scratch {
 public:
  Scratch(const TevMorphAdvState& state, std::int64_t bytes)
      : own_(bytes > state.scratchSize && bytes <= std::numeric_limits<int>::max()
                 ? tevsMalloc_8u(static_cast<int>(bytes))
                 : nullptr),
        image_(bytes > state.scratchSize ? own_ : state.scratch) {}
  ~Scratch() { tevsFree(own_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  Tev8u* image() const { return image_; }

 private:
  Tev8u* own_;
  Tev8u* image_;
};

// Checks, and runs steps(scratch, scratchStep).
template <class T, int channels, class Steps>
TevStatus compose(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevBorderType borderType,
                  const TevMorphAdvState* state, Steps steps) {
  if (TevStatus s = firstFailure(notNull(src, dst, state), region(roi), rowFits<T>(srcStep, roi.width, channels),
                                 rowFits<T>(dstStep, roi.width, channels), wholeElements<T>(srcStep),
                                 wholeElements<T>(dstStep), failUnless(borderType == tevBorderRepl, tevStatusBadArg)))
    return s;
  // The scratch comparison refuses regions that would fit with room to spare. Callers rely on it to find out that a
  // state was made for another size; a taller region than the state's passes.
  const std::int64_t stride = scratchStride<T, channels>(roi.width), bytes = stride * roi.height;
  if (roi.width > state->direct->maxRoiWidth || bytes < state->scratchSize) return tevStatusBadSize;
  const Scratch scratch(*state, bytes);
  if (!scratch.image()) return tevStatusNoMemory;
  return steps(reinterpret_cast<T*>(scratch.image()), static_cast<int>(stride));
}

// dst = minuend - subtrahend, at least 0.
template <int channels>
void difference(const Tev8u* subtrahend, int subtrahendStep, const Tev8u* minuend, int minuendStep, Tev8u* dst,
                int dstStep, TevSize roi) {
  if (minuend == dst)
    Layout<Tev8u, channels>::subInPlace(subtrahend, subtrahendStep, dst, dstStep, roi, 0);
  else
    Layout<Tev8u, channels>::sub(subtrahend, subtrahendStep, minuend, minuendStep, dst, dstStep, roi, 0);
}

template <int channels>
void difference(const Tev32f* subtrahend, int subtrahendStep, const Tev32f* minuend, int minuendStep, Tev32f* dst,
                int dstStep, TevSize roi) {
  if (minuend == dst)
    Layout<Tev32f, channels>::subInPlace(subtrahend, subtrahendStep, dst, dstStep, roi);
  else
    Layout<Tev32f, channels>::sub(subtrahend, subtrahendStep, minuend, minuendStep, dst, dstStep, roi);
  teviThreshold_LT_32f_C1IR(dst, dstStep, {roi.width * channels, roi.height}, 0.0F);
}

template <int channels, class T>
TevStatus opening(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevBorderType borderType,
                  const TevMorphAdvState* state) {
  using L = Layout<T, channels>;
  return compose<T, channels>(src, srcStep, dst, dstStep, roi, borderType, state, [&](T* scratch, int step) {
    if (TevStatus s = L::erode(src, srcStep, scratch, step, roi, borderType, state->direct)) return s;
    return L::dilate(scratch, step, dst, dstStep, roi, borderType, state->reflected);
  });
}

template <int channels, class T>
TevStatus closing(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevBorderType borderType,
                  const TevMorphAdvState* state) {
  using L = Layout<T, channels>;
  return compose<T, channels>(src, srcStep, dst, dstStep, roi, borderType, state, [&](T* scratch, int step) {
    if (TevStatus s = L::dilate(src, srcStep, scratch, step, roi, borderType, state->direct)) return s;
    return L::erode(scratch, step, dst, dstStep, roi, borderType, state->reflected);
  });
}

template <int channels, class T>
TevStatus topHat(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevBorderType borderType,
                 const TevMorphAdvState* state) {
  using L = Layout<T, channels>;
  return compose<T, channels>(src, srcStep, dst, dstStep, roi, borderType, state, [&](T* scratch, int step) {
    if (TevStatus s = L::erode(src, srcStep, dst, dstStep, roi, borderType, state->direct)) return s;
    if (TevStatus s = L::dilate(dst, dstStep, scratch, step, roi, borderType, state->reflected)) return s;
    difference<channels>(scratch, step, src, srcStep, dst, dstStep, roi);
    return TevStatus{tevStatusOk};
  });
}

template <int channels, class T>
TevStatus blackHat(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevBorderType borderType,
                   const TevMorphAdvState* state) {
  using L = Layout<T, channels>;
  return compose<T, channels>(src, srcStep, dst, dstStep, roi, borderType, state, [&](T* scratch, int step) {
    if (TevStatus s = L::dilate(src, srcStep, scratch, step, roi, borderType, state->direct)) return s;
    if (TevStatus s = L::erode(scratch, step, dst, dstStep, roi, borderType, state->reflected)) return s;
    difference<channels>(src, srcStep, dst, dstStep, dst, dstStep, roi);
    return TevStatus{tevStatusOk};
  });
}

template <int channels, class T>
TevStatus gradient(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevBorderType borderType,
                   const TevMorphAdvState* state) {
  using L = Layout<T, channels>;
  return compose<T, channels>(src, srcStep, dst, dstStep, roi, borderType, state, [&](T* scratch, int step) {
    if (TevStatus s = L::dilate(src, srcStep, dst, dstStep, roi, borderType, state->direct)) return s;
    if (TevStatus s = L::erode(src, srcStep, scratch, step, roi, borderType, state->direct)) return s;
    difference<channels>(scratch, step, dst, dstStep, dst, dstStep, roi);
    return TevStatus{tevStatusOk};
  });
}

}  // namespace

TevStatus teviMorphAdvGetSize_8u_C1R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size) {
  return getSize<Tev8u, 1>(roiSize, mask, maskSize, size);
}

TevStatus teviMorphAdvGetSize_8u_C3R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size) {
  return getSize<Tev8u, 3>(roiSize, mask, maskSize, size);
}

TevStatus teviMorphAdvGetSize_8u_C4R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size) {
  return getSize<Tev8u, 4>(roiSize, mask, maskSize, size);
}

TevStatus teviMorphAdvGetSize_32f_C1R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size) {
  return getSize<Tev32f, 1>(roiSize, mask, maskSize, size);
}

TevStatus teviMorphAdvGetSize_32f_C3R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size) {
  return getSize<Tev32f, 3>(roiSize, mask, maskSize, size);
}

TevStatus teviMorphAdvGetSize_32f_C4R(TevSize roiSize, const Tev8u* mask, TevSize maskSize, int* size) {
  return getSize<Tev32f, 4>(roiSize, mask, maskSize, size);
}

TevStatus teviMorphAdvInit_8u_C1R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                  TevPoint anchor) {
  return init<Tev8u, 1>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInit_8u_C3R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                  TevPoint anchor) {
  return init<Tev8u, 3>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInit_8u_C4R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                  TevPoint anchor) {
  return init<Tev8u, 4>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInit_32f_C1R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                   TevPoint anchor) {
  return init<Tev32f, 1>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInit_32f_C3R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                   TevPoint anchor) {
  return init<Tev32f, 3>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInit_32f_C4R(TevMorphAdvState* state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                   TevPoint anchor) {
  return init<Tev32f, 4>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInitAlloc_8u_C1R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                       TevPoint anchor) {
  return initAlloc<Tev8u, 1>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInitAlloc_8u_C3R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                       TevPoint anchor) {
  return initAlloc<Tev8u, 3>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInitAlloc_8u_C4R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                       TevPoint anchor) {
  return initAlloc<Tev8u, 4>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInitAlloc_32f_C1R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                        TevPoint anchor) {
  return initAlloc<Tev32f, 1>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInitAlloc_32f_C3R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                        TevPoint anchor) {
  return initAlloc<Tev32f, 3>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvInitAlloc_32f_C4R(TevMorphAdvState** state, TevSize roiSize, const Tev8u* mask, TevSize maskSize,
                                        TevPoint anchor) {
  return initAlloc<Tev32f, 4>(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphAdvFree(TevMorphAdvState* state) {
  if (TevStatus s = notNull(state)) return s;
  tevsFree(state);
  return tevStatusOk;
}

TevStatus teviMorphOpenBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                     TevBorderType borderType, TevMorphAdvState* state) {
  return opening<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphOpenBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                     TevBorderType borderType, TevMorphAdvState* state) {
  return opening<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphOpenBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                     TevBorderType borderType, TevMorphAdvState* state) {
  return opening<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphOpenBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                      TevBorderType borderType, TevMorphAdvState* state) {
  return opening<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphOpenBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                      TevBorderType borderType, TevMorphAdvState* state) {
  return opening<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphOpenBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                      TevBorderType borderType, TevMorphAdvState* state) {
  return opening<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphCloseBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                      TevBorderType borderType, TevMorphAdvState* state) {
  return closing<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphCloseBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                      TevBorderType borderType, TevMorphAdvState* state) {
  return closing<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphCloseBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                      TevBorderType borderType, TevMorphAdvState* state) {
  return closing<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphCloseBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                       TevBorderType borderType, TevMorphAdvState* state) {
  return closing<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphCloseBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                       TevBorderType borderType, TevMorphAdvState* state) {
  return closing<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphCloseBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                       TevBorderType borderType, TevMorphAdvState* state) {
  return closing<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphTophatBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                       TevBorderType borderType, TevMorphAdvState* state) {
  return topHat<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphTophatBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                       TevBorderType borderType, TevMorphAdvState* state) {
  return topHat<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphTophatBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                       TevBorderType borderType, TevMorphAdvState* state) {
  return topHat<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphTophatBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                        TevBorderType borderType, TevMorphAdvState* state) {
  return topHat<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphTophatBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                        TevBorderType borderType, TevMorphAdvState* state) {
  return topHat<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphTophatBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                        TevBorderType borderType, TevMorphAdvState* state) {
  return topHat<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphBlackhatBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                         TevBorderType borderType, TevMorphAdvState* state) {
  return blackHat<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphBlackhatBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                         TevBorderType borderType, TevMorphAdvState* state) {
  return blackHat<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphBlackhatBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                         TevBorderType borderType, TevMorphAdvState* state) {
  return blackHat<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphBlackhatBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                          TevBorderType borderType, TevMorphAdvState* state) {
  return blackHat<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphBlackhatBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                          TevBorderType borderType, TevMorphAdvState* state) {
  return blackHat<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphBlackhatBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                          TevBorderType borderType, TevMorphAdvState* state) {
  return blackHat<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphGradientBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                         TevBorderType borderType, TevMorphAdvState* state) {
  return gradient<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphGradientBorder_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                         TevBorderType borderType, TevMorphAdvState* state) {
  return gradient<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphGradientBorder_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                         TevBorderType borderType, TevMorphAdvState* state) {
  return gradient<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphGradientBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                          TevBorderType borderType, TevMorphAdvState* state) {
  return gradient<1>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphGradientBorder_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                          TevBorderType borderType, TevMorphAdvState* state) {
  return gradient<3>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviMorphGradientBorder_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                          TevBorderType borderType, TevMorphAdvState* state) {
  return gradient<4>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}
