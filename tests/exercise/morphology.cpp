// Exercises of the morphology: rectangles, structuring elements, what is composed of them, grey kernels,
// reconstruction.
#include <algorithm>
#include <cstdlib>

#include "exercise/exercise.h"

namespace exercise {

namespace {

template <class T, int channelCount>
struct Member {
  using Element = T;
  static constexpr int channels = channelCount;
};

constexpr TevBorderType replicate = tevBorderRepl;

TevPoint pointIn(Exercise& e, TevSize size) {
  return {e.draw.between(0, size.width - 1), e.draw.between(0, size.height - 1)};
}

// ---- Minimum and maximum over a rectangle ----

// Mostly masks smaller than the region, whose lengths below 16 have loops of their own; at times far larger ones.
TevSize rectangleSize(Exercise& e) {
  const auto length = [&] { return e.draw.oneIn(8) ? e.draw.between(1, 300) : e.draw.between(1, 20); };
  return {length(), length()};
}

template <int channels, class T>
void extremum(Exercise& e, const char* queryName, TevStatus (*query)(int, int, int, int*), const char* name,
              TevStatus (*filter)(const T*, int, T*, int, TevSize, TevSize, TevPoint, Tev8u*)) {
  const TevSize roi = e.size(1);
  const TevSize mask = rectangleSize(e);
  const TevPoint anchor = pointIn(e, mask);
  int size = 0;
  e.call(queryName, query, roi.width, mask.width, mask.height, &size);
  const auto src = e.in<T>(roi, channels);
  const auto dst = e.out<T>(roi, channels);
  e.call(name, filter, src.data, src.step, dst.data, dst.step, roi, mask, anchor, e.buffer(size));
}

// ---- Structuring elements ----

struct Element {
  Tev8u* mask;
  TevSize size;
  TevPoint anchor;
};

// Each way of applying an element gets its share: rectangles on the anchor and off it, runs through the anchor's
// column, no cell, anything. An element of 256 rows counts as anything.
Element element(Exercise& e) {
  enum { rectangle, cell, diamond, bars, nothing, noise, tall };
  const auto kind = e.draw.anyOf({rectangle, rectangle, cell, diamond, diamond, bars, noise, noise, nothing, tall});
  const int limit = e.draw.oneIn(6) ? 36 : kind == noise ? 6 : 12;
  Element made{nullptr, {e.draw.between(1, limit), e.draw.between(1, limit)}, {}};
  if (kind == tall) made.size = {e.draw.between(1, 2), e.draw.oneIn(2) ? 255 : 256};
  made.anchor = e.draw.oneIn(2) ? TevPoint{made.size.width / 2, made.size.height / 2} : pointIn(e, made.size);
  made.mask = e.inArray<Tev8u>(made.size.width * made.size.height, Values::mask);
  const TevPoint first = pointIn(e, made.size);
  const TevPoint last = {e.draw.between(first.x, made.size.width - 1), e.draw.between(first.y, made.size.height - 1)};
  for (int y = 0; y < made.size.height; ++y)
    for (int x = 0; x < made.size.width; ++x) {
      Tev8u& at = made.mask[y * made.size.width + x];
      const int dx = std::abs(x - made.anchor.x), dy = std::abs(y - made.anchor.y);
      const auto set = static_cast<Tev8u>(1 + x);
      switch (kind) {
        case rectangle:
          at = x >= first.x && x <= last.x && y >= first.y && y <= last.y ? set : 0;
          break;
        case cell:
          at = x == first.x && y == first.y ? set : 0;
          break;
        case diamond:
          at = dx + dy <= std::max(first.x, first.y) ? set : 0;
          break;
        case bars:  // one column, with rows left out
          at = x == made.anchor.x && (dy % 2 == 0 || y == first.y) ? set : 0;
          break;
        case nothing:
          at = 0;
          break;
        case noise:
          break;
        case tall:
          if (first.x == 0) at = set;
          break;
      }
    }
  return made;
}

// The builders of each member, overloaded by its type.
#define BUILDERS(member, T, channels)                                        \
  template <class... A>                                                      \
  void plainSize(Exercise& e, Member<T, channels>, A... arguments) {         \
    CALL(e, teviMorphologyGetSize_##member, arguments...);                   \
  }                                                                          \
  template <class... A>                                                      \
  void plainInit(Exercise& e, Member<T, channels>, A... arguments) {         \
    CALL(e, teviMorphologyInit_##member, arguments...);                      \
  }                                                                          \
  template <class... A>                                                      \
  void plainInitAlloc(Exercise& e, Member<T, channels>, A... arguments) {    \
    CALL(e, teviMorphologyInitAlloc_##member, arguments...);                 \
  }                                                                          \
  template <class... A>                                                      \
  void composedSize(Exercise& e, Member<T, channels>, A... arguments) {      \
    CALL(e, teviMorphAdvGetSize_##member, arguments...);                     \
  }                                                                          \
  template <class... A>                                                      \
  void composedInit(Exercise& e, Member<T, channels>, A... arguments) {      \
    CALL(e, teviMorphAdvInit_##member, arguments...);                        \
  }                                                                          \
  template <class... A>                                                      \
  void composedInitAlloc(Exercise& e, Member<T, channels>, A... arguments) { \
    CALL(e, teviMorphAdvInitAlloc_##member, arguments...);                   \
  }

BUILDERS(8u_C1R, Tev8u, 1)
BUILDERS(8u_C3R, Tev8u, 3)
BUILDERS(8u_C4R, Tev8u, 4)
BUILDERS(32f_C1R, Tev32f, 1)
BUILDERS(32f_C3R, Tev32f, 3)
BUILDERS(32f_C4R, Tev32f, 4)

template <int channels, class T>
void flat(Exercise& e, const char* name,
          TevStatus (*operation)(const T*, int, T*, int, TevSize, TevBorderType, TevMorphState*)) {
  constexpr Member<T, channels> member;
  const TevSize roi = e.size(1);
  const int roiWidth = roi.width + (e.draw.oneIn(2) ? e.draw.between(0, 20) : 0);
  Element b = element(e);
  Resource<TevMorphState, teviMorphologyFree> owned;
  TevMorphState* state;
  if (e.draw.oneIn(2)) {
    b.anchor = {b.size.width / 2, b.size.height / 2};  // the anchor that the query has in mind
    int size = 0;
    plainSize(e, member, roiWidth, b.mask, b.size, &size);
    state = reinterpret_cast<TevMorphState*>(e.buffer(size));
    plainInit(e, member, roiWidth, b.mask, b.size, b.anchor, state);
  } else {
    plainInitAlloc(e, member, roiWidth, b.mask, b.size, b.anchor, &owned.pointer);
    state = owned.pointer;
  }
  const auto src = e.in<T>(roi, channels);
  const auto dst = e.out<T>(roi, channels);
  e.call(name, operation, src.data, src.step, dst.data, dst.step, roi, replicate, state);
  if (owned.pointer) {
    CALL(e, teviMorphologyFree, owned.pointer);
    owned.pointer = nullptr;
  }
}

// ---- Opening, closing, top-hat, black-hat and gradient ----

enum class InPlace { never, allowed };

template <int channels, InPlace inPlace, class T>
void composed(Exercise& e, const char* name,
              TevStatus (*operation)(const T*, int, T*, int, TevSize, TevBorderType, TevMorphAdvState*)) {
  constexpr Member<T, channels> member;
  const TevSize stateRoi = e.size(1);
  const Element b = element(e);
  Resource<TevMorphAdvState, teviMorphAdvFree> owned;
  TevMorphAdvState* state;
  if (e.draw.oneIn(2)) {
    int size = 0;
    composedSize(e, member, stateRoi, b.mask, b.size, &size);
    state = reinterpret_cast<TevMorphAdvState*>(e.buffer(size));
    composedInit(e, member, state, stateRoi, b.mask, b.size, b.anchor);
  } else {
    composedInitAlloc(e, member, &owned.pointer, stateRoi, b.mask, b.size, b.anchor);
    state = owned.pointer;
  }
  // A region may be narrower than the state's if it is as much taller.
  TevSize roi = stateRoi;
  if (e.draw.oneIn(2)) {
    const auto stride = [](int width) { return (width * channels * int{sizeof(T)} + 31) / 32 * 32; };
    roi.width = e.draw.between((stateRoi.width + 1) / 2, stateRoi.width);
    roi.height =
        (stride(stateRoi.width) * stateRoi.height + stride(roi.width) - 1) / stride(roi.width) + e.draw.between(0, 5);
  }
  if (inPlace == InPlace::allowed && e.draw.oneIn(3)) {
    const auto image = e.inout<T>(roi, channels);
    const T* src = image.data;
    e.call(name, operation, src, image.step, image.data, image.step, roi, replicate, state);
  } else {
    const auto src = e.in<T>(roi, channels);
    const auto dst = e.out<T>(roi, channels);
    e.call(name, operation, src.data, src.step, dst.data, dst.step, roi, replicate, state);
  }
  if (owned.pointer) {
    CALL(e, teviMorphAdvFree, owned.pointer);
    owned.pointer = nullptr;
  }
}

// ---- Grey-scale morphology ----

struct GreyBytes {
  using Kernel = Tev32s;
  static constexpr auto release = teviMorphGrayFree_8u_C1R;
  template <class... A>
  static void size(Exercise& e, A... arguments) {
    CALL(e, teviMorphGrayGetSize_8u_C1R, arguments...);
  }
  template <class... A>
  static void init(Exercise& e, A... arguments) {
    CALL(e, teviMorphGrayInit_8u_C1R, arguments...);
  }
  template <class... A>
  static void initAlloc(Exercise& e, A... arguments) {
    CALL(e, teviMorphGrayInitAlloc_8u_C1R, arguments...);
  }
  static void free(Exercise& e, TevMorphGrayState* state) { CALL(e, teviMorphGrayFree_8u_C1R, state); }
};

struct GreyFloats {
  using Kernel = Tev32f;
  static constexpr auto release = teviMorphGrayFree_32f_C1R;
  template <class... A>
  static void size(Exercise& e, A... arguments) {
    CALL(e, teviMorphGrayGetSize_32f_C1R, arguments...);
  }
  template <class... A>
  static void init(Exercise& e, A... arguments) {
    CALL(e, teviMorphGrayInit_32f_C1R, arguments...);
  }
  template <class... A>
  static void initAlloc(Exercise& e, A... arguments) {
    CALL(e, teviMorphGrayInitAlloc_32f_C1R, arguments...);
  }
  static void free(Exercise& e, TevMorphGrayState* state) { CALL(e, teviMorphGrayFree_32f_C1R, state); }
};

template <class Grey, class T>
void grey(Exercise& e, const char* name,
          TevStatus (*operation)(const T*, int, T*, int, TevSize, TevBorderType, TevMorphGrayState*)) {
  const TevSize roi = e.size(1);
  const TevSize stateRoi = {roi.width + (e.draw.oneIn(3) ? 7 : 0), roi.height + (e.draw.oneIn(3) ? 3 : 0)};
  const int limit = e.draw.oneIn(8) ? 50 : 6;
  const TevSize maskSize = {e.draw.between(1, limit), e.draw.between(1, limit > 6 ? 3 : limit)};
  const TevPoint anchor = pointIn(e, maskSize);
  const auto* const mask =
      e.inArray<typename Grey::Kernel>(maskSize.width * maskSize.height, e.draw.oneIn(2) ? Values::any : Values::unit);
  Resource<TevMorphGrayState, Grey::release> owned;
  TevMorphGrayState* state;
  if (e.draw.oneIn(2)) {
    int size = 0;
    Grey::size(e, stateRoi, mask, maskSize, &size);
    state = reinterpret_cast<TevMorphGrayState*>(e.buffer(size));
    Grey::init(e, state, stateRoi, mask, maskSize, anchor);
  } else {
    Grey::initAlloc(e, &owned.pointer, stateRoi, mask, maskSize, anchor);
    state = owned.pointer;
  }
  const auto src = e.in<T>(roi);
  const auto dst = e.out<T>(roi);
  e.call(name, operation, src.data, src.step, dst.data, dst.step, roi, replicate, state);
  if (owned.pointer) {
    Grey::free(e, owned.pointer);
    owned.pointer = nullptr;
  }
}

// ---- Reconstruction ----

template <class T>
void reconstruct(Exercise& e, const char* queryName, TevStatus (*query)(TevSize, int*), const char* name,
                 TevStatus (*operation)(const T*, int, T*, int, TevSize, Tev8u*, TevNorm)) {
  // Two threads meet many times in regions of 11 x 11 pixels and more: that takes long on a busy machine.
  const TevSize roi = e.size(3000, 1, e.draw.oneIn(6) ? 40 : 12);
  int size = 0;
  e.call(queryName, query, roi, &size);
  const auto src = e.in<T>(roi);
  const auto srcDst = e.inout<T>(roi, 1, e.draw.oneIn(3) ? Values::mask : Values::any);
  const TevNorm norm = e.draw.anyOf<TevNorm>({tevNormInf, tevNormL1});
  e.call(name, operation, src.data, src.step, srcDst.data, srcDst.step, roi, e.buffer(size), norm);
}

}  // namespace

#define ENTRY(function, ...)                                             \
  {                                                                      \
#function, [](Exercise & e) { __VA_ARGS__(e, #function, function); } \
  }
#define ENTRY_WITH_QUERY(query, function, ...)                                          \
  {                                                                                     \
#function, [](Exercise & e) { __VA_ARGS__(e, #query, query, #function, function); } \
  }

std::vector<Entry> morphology() {
  return {
      ENTRY_WITH_QUERY(teviFilterMinGetBufferSize_8u_C1R, teviFilterMinBorderReplicate_8u_C1R, extremum<1>),
      ENTRY_WITH_QUERY(teviFilterMinGetBufferSize_8u_C3R, teviFilterMinBorderReplicate_8u_C3R, extremum<3>),
      ENTRY_WITH_QUERY(teviFilterMinGetBufferSize_8u_C4R, teviFilterMinBorderReplicate_8u_C4R, extremum<4>),
      ENTRY_WITH_QUERY(teviFilterMinGetBufferSize_32f_C1R, teviFilterMinBorderReplicate_32f_C1R, extremum<1>),
      ENTRY_WITH_QUERY(teviFilterMinGetBufferSize_32f_C3R, teviFilterMinBorderReplicate_32f_C3R, extremum<3>),
      ENTRY_WITH_QUERY(teviFilterMinGetBufferSize_32f_C4R, teviFilterMinBorderReplicate_32f_C4R, extremum<4>),
      ENTRY_WITH_QUERY(teviFilterMaxGetBufferSize_8u_C1R, teviFilterMaxBorderReplicate_8u_C1R, extremum<1>),
      ENTRY_WITH_QUERY(teviFilterMaxGetBufferSize_8u_C3R, teviFilterMaxBorderReplicate_8u_C3R, extremum<3>),
      ENTRY_WITH_QUERY(teviFilterMaxGetBufferSize_8u_C4R, teviFilterMaxBorderReplicate_8u_C4R, extremum<4>),
      ENTRY_WITH_QUERY(teviFilterMaxGetBufferSize_32f_C1R, teviFilterMaxBorderReplicate_32f_C1R, extremum<1>),
      ENTRY_WITH_QUERY(teviFilterMaxGetBufferSize_32f_C3R, teviFilterMaxBorderReplicate_32f_C3R, extremum<3>),
      ENTRY_WITH_QUERY(teviFilterMaxGetBufferSize_32f_C4R, teviFilterMaxBorderReplicate_32f_C4R, extremum<4>),

      ENTRY(teviErodeBorderReplicate_8u_C1R, flat<1>),
      ENTRY(teviErodeBorderReplicate_8u_C3R, flat<3>),
      ENTRY(teviErodeBorderReplicate_8u_C4R, flat<4>),
      ENTRY(teviErodeBorderReplicate_32f_C1R, flat<1>),
      ENTRY(teviErodeBorderReplicate_32f_C3R, flat<3>),
      ENTRY(teviErodeBorderReplicate_32f_C4R, flat<4>),
      ENTRY(teviDilateBorderReplicate_8u_C1R, flat<1>),
      ENTRY(teviDilateBorderReplicate_8u_C3R, flat<3>),
      ENTRY(teviDilateBorderReplicate_8u_C4R, flat<4>),
      ENTRY(teviDilateBorderReplicate_32f_C1R, flat<1>),
      ENTRY(teviDilateBorderReplicate_32f_C3R, flat<3>),
      ENTRY(teviDilateBorderReplicate_32f_C4R, flat<4>),

      ENTRY(teviMorphOpenBorder_8u_C1R, composed<1, InPlace::allowed>),
      ENTRY(teviMorphOpenBorder_8u_C3R, composed<3, InPlace::allowed>),
      ENTRY(teviMorphOpenBorder_8u_C4R, composed<4, InPlace::allowed>),
      ENTRY(teviMorphOpenBorder_32f_C1R, composed<1, InPlace::allowed>),
      ENTRY(teviMorphOpenBorder_32f_C3R, composed<3, InPlace::allowed>),
      ENTRY(teviMorphOpenBorder_32f_C4R, composed<4, InPlace::allowed>),
      ENTRY(teviMorphCloseBorder_8u_C1R, composed<1, InPlace::allowed>),
      ENTRY(teviMorphCloseBorder_8u_C3R, composed<3, InPlace::allowed>),
      ENTRY(teviMorphCloseBorder_8u_C4R, composed<4, InPlace::allowed>),
      ENTRY(teviMorphCloseBorder_32f_C1R, composed<1, InPlace::allowed>),
      ENTRY(teviMorphCloseBorder_32f_C3R, composed<3, InPlace::allowed>),
      ENTRY(teviMorphCloseBorder_32f_C4R, composed<4, InPlace::allowed>),
      ENTRY(teviMorphTophatBorder_8u_C1R, composed<1, InPlace::never>),
      ENTRY(teviMorphTophatBorder_8u_C3R, composed<3, InPlace::never>),
      ENTRY(teviMorphTophatBorder_8u_C4R, composed<4, InPlace::never>),
      ENTRY(teviMorphTophatBorder_32f_C1R, composed<1, InPlace::never>),
      ENTRY(teviMorphTophatBorder_32f_C3R, composed<3, InPlace::never>),
      ENTRY(teviMorphTophatBorder_32f_C4R, composed<4, InPlace::never>),
      ENTRY(teviMorphBlackhatBorder_8u_C1R, composed<1, InPlace::never>),
      ENTRY(teviMorphBlackhatBorder_8u_C3R, composed<3, InPlace::never>),
      ENTRY(teviMorphBlackhatBorder_8u_C4R, composed<4, InPlace::never>),
      ENTRY(teviMorphBlackhatBorder_32f_C1R, composed<1, InPlace::never>),
      ENTRY(teviMorphBlackhatBorder_32f_C3R, composed<3, InPlace::never>),
      ENTRY(teviMorphBlackhatBorder_32f_C4R, composed<4, InPlace::never>),
      ENTRY(teviMorphGradientBorder_8u_C1R, composed<1, InPlace::never>),
      ENTRY(teviMorphGradientBorder_8u_C3R, composed<3, InPlace::never>),
      ENTRY(teviMorphGradientBorder_8u_C4R, composed<4, InPlace::never>),
      ENTRY(teviMorphGradientBorder_32f_C1R, composed<1, InPlace::never>),
      ENTRY(teviMorphGradientBorder_32f_C3R, composed<3, InPlace::never>),
      ENTRY(teviMorphGradientBorder_32f_C4R, composed<4, InPlace::never>),

      ENTRY(teviGrayDilateBorder_8u_C1R, grey<GreyBytes>),
      ENTRY(teviGrayErodeBorder_8u_C1R, grey<GreyBytes>),
      ENTRY(teviGrayDilateBorder_32f_C1R, grey<GreyFloats>),
      ENTRY(teviGrayErodeBorder_32f_C1R, grey<GreyFloats>),

      ENTRY_WITH_QUERY(teviMorphReconstructGetBufferSize_8u_C1, teviMorphReconstructDilate_8u_C1IR, reconstruct),
      ENTRY_WITH_QUERY(teviMorphReconstructGetBufferSize_8u_C1, teviMorphReconstructErode_8u_C1IR, reconstruct),
      ENTRY_WITH_QUERY(teviMorphReconstructGetBufferSize_32f_C1, teviMorphReconstructDilate_32f_C1IR, reconstruct),
      ENTRY_WITH_QUERY(teviMorphReconstructGetBufferSize_32f_C1, teviMorphReconstructErode_32f_C1IR, reconstruct),
  };
}

}  // namespace exercise
