// Flat erosion and dilation with any structuring element: the state and its four classes, then the operations.
//
// Most elements have a shape that makes them cheap. One solid rectangle is a separable minimum or maximum. Runs that
// all pass through the anchor's column, one a row, as discs and diamonds have, need each source row filtered once for
// every different run length, and then one line combined for each row of the element. No cell at all is a copy. What is
// left is evaluated cell by cell, a vector of output pixels at a time. Every way gives the same pixels: the extremum of
// the cells' pixels, with positions clamped to the region.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "morphology/blocks.h"
#include "morphology/extremum.h"
#include "tevcv/memory.h"
#include "tevcv/morphology.h"
#include "tevcv/primitives.h"
#include "tevcv_internal/morphology.h"

using namespace tevcv;

// --- Structuring elements -------------------------------------------------------------------------------------------

namespace {

// Rows of an element that are analysed at most; a taller one is general however regular it is.
constexpr int tallestAnalysed = 255;

// The six arrays of the scratch that a shape of runs points into: what is known of each row, and the list of lengths.
struct RunScratch {
  Tev32s* rowIndex;
  Tev32s* rowLenIndex;
  Tev32s* length;
  Tev32s* offset;  // from the run's first column to the anchor's
  Tev32s* runLength;
  Tev32s* runOffset;

  RunScratch(Tev32s* p, int rows)
      : rowIndex(p),
        rowLenIndex(p + rows),
        length(p + 2 * rows),
        offset(p + 3 * rows),
        runLength(p + 4 * rows),
        runOffset(p + 5 * rows) {}
};

// Puts the row's length into the descending list of `lengths` entries, unless it is there. False where it is there with
// another offset: one line for each length would not do then.
bool listRun(const RunScratch& runs, int& lengths, int length, int offset) {
  int at = 0;
  while (at < lengths && runs.runLength[at] > length) ++at;
  if (at < lengths && runs.runLength[at] == length) return runs.runOffset[at] == offset;
  std::move_backward(runs.runLength + at, runs.runLength + lengths, runs.runLength + lengths + 1);
  std::move_backward(runs.runOffset + at, runs.runOffset + lengths, runs.runOffset + lengths + 1);
  runs.runLength[at] = length;
  runs.runOffset[at] = offset;
  ++lengths;
  return true;
}

TevMorphKernelClass classify(const Tev8u* mask, int width, int height, int anchorX, int anchorY, TevMorphShape& shape,
                             Tev32s* scratch, int irregular) {
  shape = {};
  if (height < 1 || std::all_of(mask, mask + std::ptrdiff_t{width} * height, [](Tev8u cell) { return cell == 0; })) {
    shape.width = shape.height = 1;
    return tevMorphKernelEmpty;
  }
  if (height > tallestAnalysed) return tevMorphKernelGeneral;

  const RunScratch runs(scratch, height);
  int count = 0, left = width, right = 0;
  for (int y = 0; y < height; ++y) {
    const Tev8u *const row = mask + std::ptrdiff_t{y} * width, *const rowEnd = row + width;
    const auto isSet = [](Tev8u cell) { return cell != 0; };
    const Tev8u* const begin = std::find_if(row, rowEnd, isSet);
    if (begin == rowEnd) continue;
    const Tev8u* const end = std::find(begin, rowEnd, Tev8u{0});
    if (std::any_of(end, rowEnd, isSet)) return tevMorphKernelGeneral;
    const int first = static_cast<int>(begin - row), past = static_cast<int>(end - row);
    if (anchorX < first || anchorX >= past) ++irregular;
    runs.rowIndex[count] = y;
    runs.length[count] = past - first;
    runs.offset[count] = anchorX - first;
    left = std::min(left, first);
    right = std::max(right, past);
    ++count;
  }
  const int top = runs.rowIndex[0], bottom = runs.rowIndex[count - 1];  // NOLINT: a kernel without runs ended above
  if (anchorY < top || anchorY > bottom) ++irregular;
  shape.width = right - left;
  shape.height = bottom - top + 1;
  shape.anchorX = anchorX - left;
  shape.anchorY = anchorY - top;

  const auto all = [count](const Tev32s* values) {
    return std::all_of(values, values + count, [values](Tev32s v) { return v == values[0]; });
  };
  // The anchor may lie anywhere about a rectangle: no irregularity counts here.
  if (shape.height == count && all(runs.length) && all(runs.offset)) return tevMorphKernelRect;
  if (irregular != 0) return tevMorphKernelGeneral;

  int lengths = 0;
  for (int i = 0; i < count; ++i) {
    runs.rowIndex[i] -= top;
    if (!listRun(runs, lengths, runs.length[i], runs.offset[i])) return tevMorphKernelGeneral;
  }
  for (int i = 0; i < count; ++i)
    runs.rowLenIndex[i] =
        static_cast<int>(std::find(runs.runLength, runs.runLength + lengths, runs.length[i]) - runs.runLength);
  shape.numRows = count;
  shape.numLens = lengths;
  shape.rowIndex = runs.rowIndex;
  shape.rowLenIndex = runs.rowLenIndex;
  shape.runLength = runs.runLength;
  shape.runOffset = runs.runOffset;
  return tevMorphKernelEllipse;
}

constexpr int elementBytes(TevDataType dataType) { return dataType == tevDataType8u ? 1 : 4; }

// Function pointers and ring (5 * height pointers), padding, and for each row of the element a line for each length.
// The lines span the region: the element's width plays no part.
std::uint64_t ellipseBufferBytes(int roiWidth, int height, int lengths, int pixelBytes) {
  const std::uint64_t lines = static_cast<std::uint64_t>(height) * lengths;
  return (lines + 1) * (static_cast<std::uint64_t>(roiWidth) * pixelBytes + 32) +
         (5 * static_cast<std::uint64_t>(height) + 1) * sizeof(void*) + 32;
}

// All that the size and the contents of a block follow from.
struct Plan {
  TevDataType dataType;
  int channels;
  int roiWidth;
  const Tev8u* mask;
  TevSize maskSize;
  TevPoint anchor;
  TevMorphKernelClass kernelClass;
  TevMorphShape shape;

  int pixelBytes() const { return elementBytes(dataType) * channels; }
  std::uint64_t maskBytes() const { return static_cast<std::uint64_t>(maskSize.width) * maskSize.height; }
  std::uint64_t maskArea() const { return roundUp(maskBytes(), std::uint64_t{16}); }
  // Of the general class. Capped where no block could hold two rows: the product with the height stays in 64 bits.
  std::uint64_t rowStride() const {
    const std::uint64_t pixels = static_cast<std::uint64_t>(roiWidth) + maskSize.width;
    return std::min(roundUp(pixels * pixelBytes(), std::uint64_t{16}), std::uint64_t{1} << 32);
  }

  std::uint64_t totalSize() const {
    constexpr std::uint64_t header = sizeof(TevMorphState), record = sizeof(TevMorphShape);
    switch (kernelClass) {
      case tevMorphKernelRect:
        return header + record + maskArea() + separableBufferBytes(roiWidth, pixelBytes(), shape.height);
      case tevMorphKernelEllipse:
        return header + record + static_cast<std::uint64_t>(shape.numRows + shape.numLens) * 8 + maskArea() +
               ellipseBufferBytes(roiWidth, shape.height, shape.numLens, pixelBytes()) + 16;
      case tevMorphKernelEmpty:
        return header + maskArea() + 8;
      default:
        return header + maskArea() + 2 * rowStride() * maskSize.height + 24;
    }
  }
};

// The words of a shape's array go to `at`, the array's pointer with them; returns what follows.
Tev8u* moveArray(Tev32s*& array, int count, Tev8u* at) {
  const size_t bytes = static_cast<size_t>(count) * sizeof(Tev32s);
  std::memcpy(at, array, bytes);
  array = reinterpret_cast<Tev32s*>(at);
  return at + bytes;
}

void build(const Plan& plan, TevMorphState& state) {
  state = {};
  Tev8u* at = reinterpret_cast<Tev8u*>(&state + 1);
  const bool shaped = plan.kernelClass == tevMorphKernelRect || plan.kernelClass == tevMorphKernelEllipse;
  if (shaped) {
    TevMorphShape shape = plan.shape;
    state.shape = reinterpret_cast<TevMorphShape*>(at);
    at += sizeof shape;
    if (plan.kernelClass == tevMorphKernelEllipse) {
      at = moveArray(shape.rowIndex, shape.numRows, at);
      at = moveArray(shape.rowLenIndex, shape.numRows, at);
      at = moveArray(shape.runLength, shape.numLens, at);
      at = moveArray(shape.runOffset, shape.numLens, at);
    }
    std::memcpy(state.shape, &shape, sizeof shape);
    state.width = shape.width;
    state.height = shape.height;
    state.anchorX = shape.anchorX;
    state.anchorY = shape.anchorY;
  } else {
    state.width = plan.maskSize.width;
    state.height = plan.maskSize.height;
  }
  if (plan.kernelClass == tevMorphKernelGeneral) {
    at = nextBoundary(at, 16);
    state.kernelErode = state.kernelDilate = at;
    state.anchorX = plan.anchor.x;
    state.anchorY = plan.anchor.y;
    state.rightExtent = state.width - state.anchorX - 1;
    state.bottomExtent = state.height - state.anchorY - 1;
    state.rowStride = static_cast<int>(plan.rowStride());
  }
  state.kernel = at;
  if (plan.kernelClass == tevMorphKernelEmpty) {
    std::memset(at, 0, static_cast<size_t>(plan.maskArea()));
    state.shape = reinterpret_cast<TevMorphShape*>(at);
  } else {
    std::memcpy(at, plan.mask, static_cast<size_t>(plan.maskBytes()));
    state.work = at + plan.maskArea();
  }
  state.totalSize = static_cast<int>(plan.totalSize());
  state.dataType = plan.dataType;
  state.channels = plan.channels;
  state.maxRoiWidth = plan.roiWidth;
  state.reserved = -1;
  state.kernelClass = plan.kernelClass;
}

}  // namespace

void ownCheckKernel(const Tev8u* mask, int maskWidth, int maskHeight, int anchorX, int anchorY,
                    TevMorphKernelClass* classOut, TevMorphShape* shapeOut, Tev32s* scratch, int extraIrregular) {
  *classOut = classify(mask, maskWidth, maskHeight, anchorX, anchorY, *shapeOut, scratch, extraIrregular);
}

TevStatus ownMorphEllipseGetBufferSize(int roiWidth, int, int height, int numLens, TevDataType dataType, int channels,
                                       int* size) {
  *size = saturate<int>(ellipseBufferBytes(roiWidth, height, numLens, elementBytes(dataType) * channels));
  return tevStatusOk;
}

TevStatus ownMorphologyInitAlloc(TevDataType dataType, int channels, int roiWidth, const Tev8u* mask, int maskWidth,
                                 int maskHeight, int anchorX, int anchorY, TevMorphState** stateHolder, int* sizeOut,
                                 int mode, int extraIrregular) {
  if (TevStatus s = firstFailure(
          notNull(mask), failUnless(roiWidth >= 1 && maskWidth >= 1 && maskHeight >= 1, tevStatusBadSize),
          failUnless(anchorX >= 0 && anchorX < maskWidth && anchorY >= 0 && anchorY < maskHeight, tevStatusBadAnchor)))
    return s;
  Tev32s scratch[6 * tallestAnalysed];
  Plan plan = {dataType, channels, roiWidth, mask, {maskWidth, maskHeight}, {anchorX, anchorY}, tevMorphKernelGeneral,
               {}};
  ownCheckKernel(mask, maskWidth, maskHeight, anchorX, anchorY, &plan.kernelClass, &plan.shape, scratch,
                 extraIrregular);
  if (mode == tevMorphBuildSizeOnly) {
    if (TevStatus s = notNull(sizeOut)) return s;
    *sizeOut = saturate<int>(plan.totalSize());
    return tevStatusOk;
  }
  if (TevStatus s = notNull(stateHolder)) return s;
  TevMorphState* state = *stateHolder;
  if (mode == tevMorphBuildInPlace) {
    if (TevStatus s = notNull(state)) return s;
  } else {
    if (plan.totalSize() > std::uint64_t{std::numeric_limits<int>::max()}) return tevStatusNoMemory;
    state = reinterpret_cast<TevMorphState*>(tevsMalloc_8u(static_cast<int>(plan.totalSize())));
    if (!state) return tevStatusNoMemory;
  }
  build(plan, *state);
  *stateHolder = state;
  return tevStatusOk;
}

TevStatus teviMorphologyGetSize_8u_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size) {
  return ownMorphologyInitAlloc(tevDataType8u, 1, roiWidth, mask, maskSize.width, maskSize.height, maskSize.width >> 1,
                                maskSize.height >> 1, nullptr, size, tevMorphBuildSizeOnly, 0);
}

TevStatus teviMorphologyGetSize_8u_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size) {
  return ownMorphologyInitAlloc(tevDataType8u, 3, roiWidth, mask, maskSize.width, maskSize.height, maskSize.width >> 1,
                                maskSize.height >> 1, nullptr, size, tevMorphBuildSizeOnly, 0);
}

TevStatus teviMorphologyGetSize_8u_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size) {
  return ownMorphologyInitAlloc(tevDataType8u, 4, roiWidth, mask, maskSize.width, maskSize.height, maskSize.width >> 1,
                                maskSize.height >> 1, nullptr, size, tevMorphBuildSizeOnly, 0);
}

TevStatus teviMorphologyGetSize_32f_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size) {
  return ownMorphologyInitAlloc(tevDataType32f, 1, roiWidth, mask, maskSize.width, maskSize.height, maskSize.width >> 1,
                                maskSize.height >> 1, nullptr, size, tevMorphBuildSizeOnly, 0);
}

TevStatus teviMorphologyGetSize_32f_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size) {
  return ownMorphologyInitAlloc(tevDataType32f, 3, roiWidth, mask, maskSize.width, maskSize.height, maskSize.width >> 1,
                                maskSize.height >> 1, nullptr, size, tevMorphBuildSizeOnly, 0);
}

TevStatus teviMorphologyGetSize_32f_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, int* size) {
  return ownMorphologyInitAlloc(tevDataType32f, 4, roiWidth, mask, maskSize.width, maskSize.height, maskSize.width >> 1,
                                maskSize.height >> 1, nullptr, size, tevMorphBuildSizeOnly, 0);
}

TevStatus teviMorphologyInit_8u_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                    TevMorphState* state) {
  return ownMorphologyInitAlloc(tevDataType8u, 1, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                &state, nullptr, tevMorphBuildInPlace, 0);
}

TevStatus teviMorphologyInit_8u_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                    TevMorphState* state) {
  return ownMorphologyInitAlloc(tevDataType8u, 3, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                &state, nullptr, tevMorphBuildInPlace, 0);
}

TevStatus teviMorphologyInit_8u_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                    TevMorphState* state) {
  return ownMorphologyInitAlloc(tevDataType8u, 4, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                &state, nullptr, tevMorphBuildInPlace, 0);
}

TevStatus teviMorphologyInit_32f_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                     TevMorphState* state) {
  return ownMorphologyInitAlloc(tevDataType32f, 1, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                &state, nullptr, tevMorphBuildInPlace, 0);
}

TevStatus teviMorphologyInit_32f_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                     TevMorphState* state) {
  return ownMorphologyInitAlloc(tevDataType32f, 3, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                &state, nullptr, tevMorphBuildInPlace, 0);
}

TevStatus teviMorphologyInit_32f_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                     TevMorphState* state) {
  return ownMorphologyInitAlloc(tevDataType32f, 4, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                &state, nullptr, tevMorphBuildInPlace, 0);
}

TevStatus teviMorphologyInitAlloc_8u_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                         TevMorphState** state) {
  return ownMorphologyInitAlloc(tevDataType8u, 1, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                state, nullptr, tevMorphBuildAllocated, 0);
}

TevStatus teviMorphologyInitAlloc_8u_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                         TevMorphState** state) {
  return ownMorphologyInitAlloc(tevDataType8u, 3, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                state, nullptr, tevMorphBuildAllocated, 0);
}

TevStatus teviMorphologyInitAlloc_8u_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                         TevMorphState** state) {
  return ownMorphologyInitAlloc(tevDataType8u, 4, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                state, nullptr, tevMorphBuildAllocated, 0);
}

TevStatus teviMorphologyInitAlloc_32f_C1R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                          TevMorphState** state) {
  return ownMorphologyInitAlloc(tevDataType32f, 1, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                state, nullptr, tevMorphBuildAllocated, 0);
}

TevStatus teviMorphologyInitAlloc_32f_C3R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                          TevMorphState** state) {
  return ownMorphologyInitAlloc(tevDataType32f, 3, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                state, nullptr, tevMorphBuildAllocated, 0);
}

TevStatus teviMorphologyInitAlloc_32f_C4R(int roiWidth, const Tev8u* mask, TevSize maskSize, TevPoint anchor,
                                          TevMorphState** state) {
  return ownMorphologyInitAlloc(tevDataType32f, 4, roiWidth, mask, maskSize.width, maskSize.height, anchor.x, anchor.y,
                                state, nullptr, tevMorphBuildAllocated, 0);
}

TevStatus teviMorphologyFree(TevMorphState* state) {
  if (TevStatus s = notNull(state)) return s;
  tevsFree(state);
  return tevStatusOk;
}

// --- The general class ----------------------------------------------------------------------------------------------

namespace {

// The folds of direct evaluation. They differ from the other classes' extrema where floats tie or are not numbers, and
// callers depend on it: an erosion takes over whatever is not greater, a NaN too, and loses it again to the next value;
// a dilation takes over what is greater or equal, and never a NaN.
struct Erosion {
  using Best = Least;
  template <class T>
  static constexpr T neutral = std::numeric_limits<T>::max();
  template <class T>
  static T of(T accumulated, T value) {
    return value > accumulated ? accumulated : value;
  }
  static const Tev8u* kernel(const TevMorphState& state) { return state.kernelErode; }
};

struct Dilation {
  using Best = Greatest;
  template <class T>
  static constexpr T neutral = std::numeric_limits<T>::lowest();
  template <class T>
  static T of(T accumulated, T value) {
    return value >= accumulated ? value : accumulated;
  }
  static const Tev8u* kernel(const TevMorphState& state) { return state.kernelDilate; }
};

// Folds `cells` shifted rows into dst, in their order.
template <class Fold, int cells, class T>
void foldCells(const T* const* cell, T* dst, int len) {
  const T* p[cells];
  for (int k = 0; k < cells; ++k) p[k] = cell[k];
#pragma GCC ivdep
  for (int i = 0; i < len; ++i) {
    T accumulated = dst[i];
#pragma GCC unroll 4
    for (int k = 0; k < cells; ++k) accumulated = Fold::of(accumulated, p[k][i]);
    dst[i] = accumulated;
  }
}

// dst[k] = the fold of cellAt(i, j)[k] over the set cells (column j of row i), in row order of the element. Several
// cells at a time, so that dst is read and written once for all of them.
template <class Fold, class T, class CellAt>
void foldElement(const Tev8u* kernel, int kernelWidth, int kernelHeight, T* dst, int len, CellAt cellAt) {
  constexpr int together = 4;
  const T* cells[together];
  int held = 0;
  std::fill_n(dst, len, Fold::template neutral<T>);
  for (int i = 0; i < kernelHeight; ++i)
    for (int j = 0; j < kernelWidth; ++j) {
      if (*kernel++ == 0) continue;
      cells[held++] = cellAt(i, j);
      if (held == together) {
        foldCells<Fold, together>(cells, dst, len);
        held = 0;
      }
    }
  for (int k = 0; k < held; ++k) foldCells<Fold, 1>(cells + k, dst, len);
}

// One row of outputs, in blocks that stay in the cache while cell after cell is folded in.
template <class Fold, int channels, class T>
void directRow(const T* src, int srcStep, T* dst, int width, const Tev8u* kernel, int kernelWidth, int kernelHeight) {
  constexpr int blockLength = 4096 / sizeof(T);
  const auto image = rows(src, srcStep);
  const int len = width * channels;
  for (int begin = 0; begin < len; begin += blockLength)
    foldElement<Fold>(kernel, kernelWidth, kernelHeight, dst + begin, std::min(blockLength, len - begin),
                      [=](int i, int j) { return image[i] + begin + j * channels; });
}

template <class Fold, int channels, class T>
void directRows(const T* src, int srcStep, T* dst, int dstStep, int width, int height, const Tev8u* kernel,
                int kernelWidth, int kernelHeight) {
  for (int y = 0; y < height; ++y)
    directRow<Fold, channels>(rows(src, srcStep)[y], srcStep, rows(dst, dstStep)[y], width, kernel, kernelWidth,
                              kernelHeight);
}

}  // namespace

#define DIRECT_ROWS(name, Fold, T, channels)                                                                  \
  void name(const T* src, int srcStep, T* dst, int dstStep, int width, int height, const Tev8u* kernel,       \
            int kernelWidth, int kernelHeight) {                                                              \
    directRows<Fold, channels>(src, srcStep, dst, dstStep, width, height, kernel, kernelWidth, kernelHeight); \
  }
#define DIRECT_ROW(name, Fold, T, channels)                                                                         \
  void name(const T* src, int srcStep, T* dst, int width, const Tev8u* kernel, int kernelWidth, int kernelHeight) { \
    directRow<Fold, channels>(src, srcStep, dst, width, kernel, kernelWidth, kernelHeight);                         \
  }

DIRECT_ROWS(Erode_8u_C1R, Erosion, Tev8u, 1)
DIRECT_ROW(Erode_8u_C1S, Erosion, Tev8u, 1)
DIRECT_ROWS(Erode_8u_C3R, Erosion, Tev8u, 3)
DIRECT_ROW(Erode_8u_C3S, Erosion, Tev8u, 3)
DIRECT_ROWS(Erode_8u_C4R, Erosion, Tev8u, 4)
DIRECT_ROW(Erode_8u_C4S, Erosion, Tev8u, 4)
DIRECT_ROWS(Erode_32f_C1R, Erosion, Tev32f, 1)
DIRECT_ROW(Erode_32f_C1S, Erosion, Tev32f, 1)
DIRECT_ROWS(Erode_32f_C3R, Erosion, Tev32f, 3)
DIRECT_ROW(Erode_32f_C3S, Erosion, Tev32f, 3)
DIRECT_ROWS(Erode_32f_C4R, Erosion, Tev32f, 4)
DIRECT_ROW(Erode_32f_C4S, Erosion, Tev32f, 4)

DIRECT_ROWS(Dilate_8u_C1R, Dilation, Tev8u, 1)
DIRECT_ROW(Dilate_8u_C1S, Dilation, Tev8u, 1)
DIRECT_ROWS(Dilate_8u_C3R, Dilation, Tev8u, 3)
DIRECT_ROW(Dilate_8u_C3S, Dilation, Tev8u, 3)
DIRECT_ROWS(Dilate_8u_C4R, Dilation, Tev8u, 4)
DIRECT_ROW(Dilate_8u_C4S, Dilation, Tev8u, 4)
DIRECT_ROWS(Dilate_32f_C1R, Dilation, Tev32f, 1)
DIRECT_ROW(Dilate_32f_C1S, Dilation, Tev32f, 1)
DIRECT_ROWS(Dilate_32f_C3R, Dilation, Tev32f, 3)
DIRECT_ROW(Dilate_32f_C3S, Dilation, Tev32f, 3)
DIRECT_ROWS(Dilate_32f_C4R, Dilation, Tev32f, 4)
DIRECT_ROW(Dilate_32f_C4S, Dilation, Tev32f, 4)

namespace {

// The image primitives of a layout. Framed copies of floats move their bit patterns.
template <class T, int channels>
struct Layout;

#define LAYOUT(T, channels, copyMember, frameMember, frameInPlaceMember) \
  template <>                                                            \
  struct Layout<T, channels> {                                           \
    static constexpr auto copy = copyMember;                             \
    static constexpr auto frame = frameMember;                           \
    static constexpr auto frameInPlace = frameInPlaceMember;             \
  };

LAYOUT(Tev8u, 1, teviCopy_8u_C1R, teviCopyReplicateBorder_8u_C1R, teviCopyReplicateBorder_8u_C1IR)
LAYOUT(Tev8u, 3, teviCopy_8u_C3R, teviCopyReplicateBorder_8u_C3R, teviCopyReplicateBorder_8u_C3IR)
LAYOUT(Tev8u, 4, teviCopy_8u_C4R, teviCopyReplicateBorder_8u_C4R, teviCopyReplicateBorder_8u_C4IR)
LAYOUT(Tev32f, 1, teviCopy_32f_C1R, teviCopyReplicateBorder_32s_C1R, teviCopyReplicateBorder_32s_C1IR)
LAYOUT(Tev32f, 3, teviCopy_32f_C3R, teviCopyReplicateBorder_32s_C3R, teviCopyReplicateBorder_32s_C3IR)
LAYOUT(Tev32f, 4, teviCopy_32f_C4R, teviCopyReplicateBorder_32s_C4R, teviCopyReplicateBorder_32s_C4IR)
#undef LAYOUT

template <class T>
using FrameWord = std::conditional_t<std::is_same_v<T, Tev8u>, Tev8u, Tev32s>;

template <class Fold, int channels, class T>
class General {
 public:
  General(Rows<const T> src, Rows<T> dst, TevSize roi, const TevMorphState& state)
      : src_(src), dst_(dst), roi_(roi), state_(state), kernel_(Fold::kernel(state)) {}

  void run() const {
    const int w = state_.width, h = state_.height, above = state_.anchorY, below = state_.bottomExtent;
    if (roi_.height < h) {
      framed(0, roi_.height, above, 0, roi_.height);
    } else if (roi_.width < w) {
      for (int y = 0; y < roi_.height; y += h) {
        const int outputs = std::min(h, roi_.height - y), first = y == 0 ? 0 : y - above, top = y == 0 ? above : 0;
        framed(first, std::min(roi_.height - first, outputs + h - 1 - top), top, y, outputs);
      }
    } else {
      framed(0, h - 1, above, 0, above);
      framed(roi_.height - (h - 1), h - 1, 0, roi_.height - below, below);
      margin(0, state_.anchorX);
      margin(roi_.width - state_.rightExtent, roi_.width);
      directRows<Fold, channels>(src_[0], step(src_), dst_[above] + state_.anchorX * channels, step(dst_),
                                 roi_.width - w + 1, roi_.height - h + 1, kernel_, w, h);
    }
  }

 private:
  template <class View>
  static int step(View view) {
    return static_cast<int>(view.step());
  }

  // Frames source rows by their nearest pixels in the work area, `top` rows above them, and evaluates `outputs` rows
  // there.
  void framed(int firstSource, int sources, int top, int firstOutput, int outputs) const {
    if (outputs == 0) return;
    using Word = FrameWord<T>;
    const int w = state_.width, h = state_.height;
    Layout<T, channels>::frame(reinterpret_cast<const Word*>(src_[firstSource]), step(src_), {roi_.width, sources},
                               reinterpret_cast<Word*>(state_.work), state_.rowStride,
                               {roi_.width + w - 1, outputs + h - 1}, top, state_.anchorX);
    directRows<Fold, channels>(reinterpret_cast<const T*>(state_.work), state_.rowStride, dst_[firstOutput], step(dst_),
                               roi_.width, outputs, kernel_, w, h);
  }

  // Output columns x0 to x1, a margin, of the rows whose windows lie between top and bottom. Margins are narrow, so the
  // vectors run down: source columns are turned into lines of the work area, in strips of rows that fit there. Cells
  // outside the image see the edge column; for the folds it is the same whether a row of the element sees it once or
  // several times in turn.
  void margin(int x0, int x1) const {
    if (x0 == x1) return;
    const int w = state_.width, h = state_.height, last = roi_.width - 1;
    const int leftmost = std::max(0, x0 - state_.anchorX), rightmost = std::min(last, x1 - 1 + state_.rightExtent);
    const int lines = (rightmost - leftmost + 1) * channels;
    constexpr std::int64_t longestLine = 2048;
    const std::int64_t workElements = std::int64_t{2} * h * state_.rowStride / std::int64_t{sizeof(T)};
    const int lineLength = static_cast<int>(std::min(workElements / (lines + 1), longestLine + h));
    const auto work = rows(reinterpret_cast<T*>(state_.work), lineLength * int{sizeof(T)});
    T* const out = work[lines];
    const int end = roi_.height - state_.bottomExtent;
    for (int y = state_.anchorY, outputs; y < end; y += outputs) {
      outputs = std::min(lineLength - (h - 1), end - y);
      for (int r = 0; r < outputs + h - 1; ++r) {
        const T* const row = src_[y - state_.anchorY + r] + leftmost * channels;
        for (int i = 0; i < lines; ++i) work[i][r] = row[i];
      }
      for (int x = x0; x < x1; ++x)
        for (int c = 0; c < channels; ++c) {
          foldElement<Fold>(kernel_, w, h, out, outputs, [=, this](int i, int j) {
            const int column = std::clamp(x - state_.anchorX + j, 0, last);
            return work[(column - leftmost) * channels + c] + i;
          });
          for (int k = 0; k < outputs; ++k) dst_[y + k][x * channels + c] = out[k];
        }
    }
  }

  Rows<const T> src_;
  Rows<T> dst_;
  TevSize roi_;
  const TevMorphState& state_;
  const Tev8u* kernel_;
};

// --- The ellipse class ----------------------------------------------------------------------------------------------

template <class T>
using RowFunction = void (*)(const T* src, T* dst, int width, int length, int offset);

// One source row after another is filtered once for each run length into the next block of the ring; an output row is
// the extremum of a line for each row of the element. The ring's entries are blocks of lines, written from height - 1
// on; those before stand for the rows above the image and all point to the first row's block. Each is entered once more
// `height` further up, so that the window of the last `height` entries never wraps.
template <class Best, class T>
void sweepRuns(const T* src, int srcStep, T* dst, int dstStep, int width, int height, int channels,
               const TevMorphShape& shape, const RowFunction<T>* rowFunctions, T** ring, int stride) {
  const auto image = rows(src, srcStep);
  const auto out = rows(dst, dstStep);
  const int len = width * channels, h = shape.height, lead = h - shape.anchorY - 1;
  const auto line = [&](int entry, int k) {
    return reinterpret_cast<T*>(reinterpret_cast<Tev8u*>(ring[entry]) + std::ptrdiff_t{k} * stride);
  };
  int p = h - 1;
  const auto filterRow = [&](int y) {
    for (int k = 0; k < shape.numLens; ++k)
      rowFunctions[k](image[y], line(p, k), width, shape.runLength[k], shape.runOffset[k]);
    ++p;
  };
  // Several lines at a time: the output row is read and written once for all of them.
  const auto combine = [&](int y) {
    const auto kernelRow = [&](int i) -> const T* { return line(p - h + shape.rowIndex[i], shape.rowLenIndex[i]); };
    T* const best = out[y];
    Best::ofEach(kernelRow(0), kernelRow(1), best, len);
    const auto take = [&]<int... k>(int i, std::integer_sequence<int, k...>) {
      const T* const lines[] = {best, kernelRow(i + k)...};
      bestOfLines<Best, 1 + sizeof...(k)>(lines, best, len);
    };
    int i = 2;
    for (; i + 4 <= shape.numRows; i += 4) take(i, std::make_integer_sequence<int, 4>());
    if (const int left = shape.numRows - i; left == 3)
      take(i, std::make_integer_sequence<int, 3>());
    else if (left == 2)
      take(i, std::make_integer_sequence<int, 2>());
    else if (left == 1)
      take(i, std::make_integer_sequence<int, 1>());
  };

  // The rows before the one that completes the first window. An image that ends among them repeats its last row.
  for (int y = 0; y < lead; ++y) filterRow(std::min(y, height - 1));
  int done = 0;
  for (int y = lead; y < height; ++y) {
    filterRow(y);
    combine(done++);
    if (p == 3 * h - 1) p -= h;
  }
  // The last row stands in for all rows below it.
  for (; done < height; ++done) {
    ring[p] = ring[p - 1];
    ++p;
    combine(done);
  }
}

// Lays out the work area (row functions, ring, blocks of lines) and sweeps.
template <int channels, class T, class Sweep>
void ellipse(const T* src, int srcStep, T* dst, int dstStep, int width, int height, const TevMorphShape& shape,
             Tev8u* work, const RowFunction<T>* table, Sweep sweep) {
  RowFunction<T>* const rowFunctions = reinterpret_cast<RowFunction<T>*>(work);
  const int h = shape.height;
  for (int k = 0; k < shape.numLens; ++k) {
    const int runLength = shape.runLength[k];
    rowFunctions[k] = table[runLength < 16 && runLength <= width / 2 ? runLength : 0];
  }
  T** const ring = reinterpret_cast<T**>(nextBoundary(rowFunctions + h, 4));
  Tev8u* const lines = nextBoundary(ring + 4 * h, 32);
  const std::ptrdiff_t stride = lineStride<T>(width, channels), block = stride * shape.numLens;
  for (int i = 0; i < h - 1; ++i) ring[i] = reinterpret_cast<T*>(lines);
  for (int i = 0; i < h; ++i) ring[h - 1 + i] = ring[2 * h - 1 + i] = reinterpret_cast<T*>(lines + block * i);
  sweep(src, srcStep, dst, dstStep, width, height, channels, &shape, rowFunctions, ring, static_cast<int>(stride));
}

}  // namespace

void ownMinEllipse_8u_C1(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height, int channels,
                         const TevMorphShape* shape, const TevFilterRow_8u* rowFunctions, Tev8u** ring, int stride) {
  sweepRuns<Least>(src, srcStep, dst, dstStep, width, height, channels, *shape, rowFunctions, ring, stride);
}

void ownMinEllipse_32f_C1(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height, int channels,
                          const TevMorphShape* shape, const TevFilterRow_32f* rowFunctions, Tev32f** ring, int stride) {
  sweepRuns<Least>(src, srcStep, dst, dstStep, width, height, channels, *shape, rowFunctions, ring, stride);
}

void ownMaxEllipse_8u_C1(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width, int height, int channels,
                         const TevMorphShape* shape, const TevFilterRow_8u* rowFunctions, Tev8u** ring, int stride) {
  sweepRuns<Greatest>(src, srcStep, dst, dstStep, width, height, channels, *shape, rowFunctions, ring, stride);
}

void ownMaxEllipse_32f_C1(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height, int channels,
                          const TevMorphShape* shape, const TevFilterRow_32f* rowFunctions, Tev32f** ring, int stride) {
  sweepRuns<Greatest>(src, srcStep, dst, dstStep, width, height, channels, *shape, rowFunctions, ring, stride);
}

void ownErodeEllipseBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                           int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<1>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMinRow_8u_C1, ownMinEllipse_8u_C1);
}

void ownErodeEllipseBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                           int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<3>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMinRow_8u_C3, ownMinEllipse_8u_C1);
}

void ownErodeEllipseBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                           int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<4>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMinRow_8u_C4, ownMinEllipse_8u_C1);
}

void ownErodeEllipseBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width,
                                            int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<1>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMinRow_32f_C1, ownMinEllipse_32f_C1);
}

void ownErodeEllipseBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width,
                                            int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<3>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMinRow_32f_C3, ownMinEllipse_32f_C1);
}

void ownErodeEllipseBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width,
                                            int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<4>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMinRow_32f_C4, ownMinEllipse_32f_C1);
}

void ownDilateEllipseBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                            int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<1>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMaxRow_8u_C1, ownMaxEllipse_8u_C1);
}

void ownDilateEllipseBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                            int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<3>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMaxRow_8u_C3, ownMaxEllipse_8u_C1);
}

void ownDilateEllipseBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, int width,
                                            int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<4>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMaxRow_8u_C4, ownMaxEllipse_8u_C1);
}

void ownDilateEllipseBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width,
                                             int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<1>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMaxRow_32f_C1, ownMaxEllipse_32f_C1);
}

void ownDilateEllipseBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width,
                                             int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<3>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMaxRow_32f_C3, ownMaxEllipse_32f_C1);
}

void ownDilateEllipseBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width,
                                             int height, const TevMorphShape* shape, Tev8u* work) {
  ellipse<4>(src, srcStep, dst, dstStep, width, height, *shape, work, owntablFilterMaxRow_32f_C4, ownMaxEllipse_32f_C1);
}

// --- Erosion and dilation -------------------------------------------------------------------------------------------

namespace {

template <class T>
using RectFilter = TevStatus (*)(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevSize mask,
                                 TevPoint anchor, Tev8u* buffer);
template <class T>
using EllipseFilter = void (*)(const T* src, int srcStep, T* dst, int dstStep, int width, int height,
                               const TevMorphShape* shape, Tev8u* work);

// One axis after the anchor has been brought onto the element: how far the source and the output move on, and how many
// outputs are left to compute. Those beyond them see the edge pixels alone and repeat the nearest computed one.
struct Axis {
  int sourceShift;
  int outputShift;
  int length;
  int anchor;
};

Axis ontoElement(int anchor, int elementLength, int length) {
  if (anchor < 0) {
    const int shift = std::min(-anchor, length - 1);
    return {shift, 0, length - shift, 0};
  }
  if (anchor >= elementLength) {
    const int shift = std::min(anchor - elementLength + 1, length - 1);
    return {0, shift, length - shift, elementLength - 1};
  }
  return {0, 0, length, anchor};
}

template <class Fold, int channels, class T>
TevStatus operate(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevBorderType borderType,
                  const TevMorphState* state, RectFilter<T> rectFilter, EllipseFilter<T> ellipseFilter) {
  if (TevStatus s = firstFailure(notNull(src, dst, state), region(roi), rowFits<T>(srcStep, roi.width, channels),
                                 rowFits<T>(dstStep, roi.width, channels), wholeElements<T>(srcStep),
                                 wholeElements<T>(dstStep), failUnless(borderType == tevBorderRepl, tevStatusBadArg)))
    return s;
  if (roi.width > state->maxRoiWidth) return tevStatusBadSize;

  const Axis across = ontoElement(state->anchorX, state->width, roi.width);
  const Axis down = ontoElement(state->anchorY, state->height, roi.height);
  const T* const from = rows(src, srcStep)[down.sourceShift] + across.sourceShift * channels;
  T* const to = rows(dst, dstStep)[down.outputShift] + across.outputShift * channels;
  const TevSize computed = {across.length, down.length};

  switch (state->kernelClass) {
    case tevMorphKernelRect:
      if (TevStatus s = rectFilter(from, srcStep, to, dstStep, computed, {state->width, state->height},
                                   {across.anchor, down.anchor}, state->work))
        return s;
      break;
    case tevMorphKernelEllipse:
      ellipseFilter(src, srcStep, dst, dstStep, roi.width, roi.height, state->shape, state->work);
      break;
    case tevMorphKernelEmpty:
      Layout<T, channels>::copy(from, srcStep, to, dstStep, computed);
      break;
    default:
      General<Fold, channels, T>(rows(from, srcStep), rows(to, dstStep), computed, *state).run();
  }
  if (computed.width < roi.width || computed.height < roi.height)
    return Layout<T, channels>::frameInPlace(reinterpret_cast<FrameWord<T>*>(to), dstStep, computed, roi,
                                             down.outputShift, across.outputShift);
  return tevStatusOk;
}

}  // namespace

TevStatus teviErodeBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                          TevBorderType borderType, TevMorphState* state) {
  return operate<Erosion, 1>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                             teviFilterMinBorderReplicate_8u_C1R, ownErodeEllipseBorderReplicate_8u_C1R);
}

TevStatus teviErodeBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                          TevBorderType borderType, TevMorphState* state) {
  return operate<Erosion, 3>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                             teviFilterMinBorderReplicate_8u_C3R, ownErodeEllipseBorderReplicate_8u_C3R);
}

TevStatus teviErodeBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                          TevBorderType borderType, TevMorphState* state) {
  return operate<Erosion, 4>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                             teviFilterMinBorderReplicate_8u_C4R, ownErodeEllipseBorderReplicate_8u_C4R);
}

TevStatus teviErodeBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                           TevBorderType borderType, TevMorphState* state) {
  return operate<Erosion, 1>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                             teviFilterMinBorderReplicate_32f_C1R, ownErodeEllipseBorderReplicate_32f_C1R);
}

TevStatus teviErodeBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                           TevBorderType borderType, TevMorphState* state) {
  return operate<Erosion, 3>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                             teviFilterMinBorderReplicate_32f_C3R, ownErodeEllipseBorderReplicate_32f_C3R);
}

TevStatus teviErodeBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                           TevBorderType borderType, TevMorphState* state) {
  return operate<Erosion, 4>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                             teviFilterMinBorderReplicate_32f_C4R, ownErodeEllipseBorderReplicate_32f_C4R);
}

TevStatus teviDilateBorderReplicate_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                           TevBorderType borderType, TevMorphState* state) {
  return operate<Dilation, 1>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                              teviFilterMaxBorderReplicate_8u_C1R, ownDilateEllipseBorderReplicate_8u_C1R);
}

TevStatus teviDilateBorderReplicate_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                           TevBorderType borderType, TevMorphState* state) {
  return operate<Dilation, 3>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                              teviFilterMaxBorderReplicate_8u_C3R, ownDilateEllipseBorderReplicate_8u_C3R);
}

TevStatus teviDilateBorderReplicate_8u_C4R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                           TevBorderType borderType, TevMorphState* state) {
  return operate<Dilation, 4>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                              teviFilterMaxBorderReplicate_8u_C4R, ownDilateEllipseBorderReplicate_8u_C4R);
}

TevStatus teviDilateBorderReplicate_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                            TevBorderType borderType, TevMorphState* state) {
  return operate<Dilation, 1>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                              teviFilterMaxBorderReplicate_32f_C1R, ownDilateEllipseBorderReplicate_32f_C1R);
}

TevStatus teviDilateBorderReplicate_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                            TevBorderType borderType, TevMorphState* state) {
  return operate<Dilation, 3>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                              teviFilterMaxBorderReplicate_32f_C3R, ownDilateEllipseBorderReplicate_32f_C3R);
}

TevStatus teviDilateBorderReplicate_32f_C4R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                            TevBorderType borderType, TevMorphState* state) {
  return operate<Dilation, 4>(src, srcStep, dst, dstStep, roiSize, borderType, state,
                              teviFilterMaxBorderReplicate_32f_C4R, ownDilateEllipseBorderReplicate_32f_C4R);
}
