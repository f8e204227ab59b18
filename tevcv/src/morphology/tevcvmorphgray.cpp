// Grey-scale dilation and erosion: the extremum of source + kernel over all cells of a kernel of values.
//
// A row of results is folded by the kernel's cells in row-major order, straight in the destination, eight cells in one
// pass over a stretch of the row. Where no cell reaches over the region's sides the source is read directly, in the
// margins through small copies that go on with the edge pixels.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "morphology/blocks.h"
#include "morphology/extremum.h"
#include "tevcv/memory.h"
#include "tevcv/morphology.h"
#include "tevcv_internal/morphology.h"

using namespace tevcv;

namespace {

// Adds a cell's value to a pixel.
//
// Bytes: the sum is kept within 0..255. Clamping does not change an order, so each sum may be clamped instead of the
// extremum, and everything fits in bytes: the pixel is limited to what the sum leaves in range, then the addition is
// exact modulo 256. Values beyond +-255 act as these do.
class CellSum8u {
 public:
  CellSum8u() = default;
  explicit CellSum8u(Tev32s value) {
    const int k = std::clamp(value, -255, 255);
    least_ = static_cast<Tev8u>(std::max(0, -k));
    greatest_ = static_cast<Tev8u>(std::min(255, 255 - k));
    value_ = static_cast<Tev8u>(k);
  }
  Tev8u operator()(Tev8u pixel) const {
    const Tev8u raised = pixel < least_ ? least_ : pixel;
    const Tev8u limited = raised > greatest_ ? greatest_ : raised;
    return static_cast<Tev8u>(limited + value_);
  }

 private:
  Tev8u least_, greatest_, value_;
};

// Floats: the sum is defined in extended precision and rounded where the extremum is stored. Rounding keeps the order,
// and the sum of two floats rounded once is float addition, so the extremum of float sums is the same.
class CellSum32f {
 public:
  CellSum32f() = default;
  explicit CellSum32f(Tev32f value) : value_(value) {}
  Tev32f operator()(Tev32f pixel) const { return pixel + value_; }

 private:
  Tev32f value_;
};

// What the element type decides.
template <class T>
struct Gray;
template <>
struct Gray<Tev8u> {
  using Cell = Tev32s;
  using CellSum = CellSum8u;
};
template <>
struct Gray<Tev32f> {
  using Cell = Tev32f;
  using CellSum = CellSum32f;
};

// What a fold starts from. It takes over strictly better sums alone, so a NaN never.
template <class Best, class T>
constexpr T start = std::is_same_v<Best, Greatest> ? std::numeric_limits<T>::lowest() : std::numeric_limits<T>::max();

// One cell of the kernel over one row: `pixels` is what the row's first result reads through it.
template <class T>
struct Tap {
  const T* pixels;
  typename Gray<T>::CellSum sum;
};

// dst[x] = the extremum of what stands there, or of the start value for the first cells, and `count` cells.
template <class Best, int count, bool first, class T>
void foldTaps(const Tap<T>* taps, T* dst, int from, int to) {
  Tap<T> tap[count];
  for (int k = 0; k < count; ++k) tap[k] = taps[k];
#pragma GCC ivdep
  for (int x = from; x < to; ++x) {
    T best = first ? start<Best, T> : dst[x];
#pragma GCC unroll 8
    for (int k = 0; k < count; ++k) best = Best::of(best, tap[k].sum(tap[k].pixels[x]));
    dst[x] = best;
  }
}

// Cells on their way into a stretch of a row, eight at a time.
template <class Best, class T>
class Fold {
 public:
  Fold(T* dst, int from, int to) : dst_(dst), from_(from), to_(to) {}

  void add(const T* pixels, typename Gray<T>::Cell value) {
    taps_[count_++] = {pixels, typename Gray<T>::CellSum(value)};
    if (count_ == group) run<group>();
  }
  // Has to be called before the pixels that were added change, and at the end.
  void finish() {
    if (count_ == 1) {  // what a square of odd side leaves
      run<1>();
    } else if (count_ > 1) {
      // The last cell stands in for the missing ones: it is no better than itself.
      std::fill(taps_ + count_, taps_ + group, taps_[count_ - 1]);
      run<group>();
    }
  }

 private:
  static constexpr int group = 8;

  template <int count>
  void run() {
    if (first_)
      foldTaps<Best, count, true>(taps_, dst_, from_, to_);
    else
      foldTaps<Best, count, false>(taps_, dst_, from_, to_);
    first_ = false;
    count_ = 0;
  }

  Tap<T> taps_[group];
  int count_ = 0;
  bool first_ = true;
  T* dst_;
  int from_, to_;
};

// The source row under row i of the kernel for results of row y. The sum is formed wide: a kernel may be taller than
// any image.
template <class T>
const T* rowUnder(Rows<const T> src, int height, const TevMorphGrayState& state, int y, int i) {
  const auto row = std::clamp<std::int64_t>(std::int64_t{y} + i - state.anchorY, 0, height - 1);
  return src[static_cast<std::ptrdiff_t>(row)];
}

template <class T>
const auto* kernelRow(const TevMorphGrayState& state, int i) {
  return static_cast<const typename Gray<T>::Cell*>(state.kernel) + std::ptrdiff_t{i} * state.width;
}

// A stretch of a row whose results reach over neither side.
template <class Best, class T>
void foldInside(Rows<const T> src, int height, const TevMorphGrayState& state, int y, T* dst, int from, int to) {
  Fold<Best, T> fold(dst, from, to);
  for (int i = 0; i < state.height; ++i) {
    const T* const pixels = rowUnder(src, height, state, y, i) - state.anchorX;
    const auto* const cells = kernelRow<T>(state, i);
    for (int j = 0; j < state.width; ++j) fold.add(pixels + j, cells[j]);
  }
  fold.finish();
}

// dst[k] = row[start + k], going on with the edge pixels on both sides.
template <class T>
void copyClamped(const T* row, int width, std::int64_t start, T* dst, int count) {
  const int left = static_cast<int>(std::clamp<std::int64_t>(-start, 0, count));
  const int inside = static_cast<int>(std::clamp<std::int64_t>(width - start, left, count));
  std::fill(dst, dst + left, row[0]);
  if (left < inside) std::copy_n(row + static_cast<std::ptrdiff_t>(start + left), inside - left, dst + left);
  std::fill(dst + inside, dst + count, row[width - 1]);
}

// A stretch of a row that reads through copies of pieces of the source rows. Whole vectors are done, into a copy as
// well: margins are short, and most of one would be left to single pixels.
template <class Best, class T>
void foldMargin(Rows<const T> src, TevSize roi, const TevMorphGrayState& state, int y, T* dst, int from, int to) {
  constexpr int piece = 256, vector = 32 / int{sizeof(T)};
  T pixels[8 * piece], results[piece];
  for (int x = from; x < to; x += piece) {
    const int count = std::min(piece, to - x), folded = roundUp(count, vector);
    Fold<Best, T> fold(results, 0, folded);
    T* copy = pixels;
    for (int i = 0; i < state.height; ++i) {
      const auto* const cells = kernelRow<T>(state, i);
      for (int j = 0; j < state.width; j += piece) {
        const int columns = std::min(piece, state.width - j), length = folded + columns - 1;
        if (length > std::end(pixels) - copy) {
          fold.finish();
          copy = pixels;
        }
        copyClamped(rowUnder(src, roi.height, state, y, i), roi.width, std::int64_t{x} + j - state.anchorX, copy,
                    length);
        for (int k = 0; k < columns; ++k) fold.add(copy + k, cells[j + k]);
        copy += length;
      }
    }
    fold.finish();
    std::copy_n(results, count, dst + x);
  }
}

template <class Best, class T>
void filter(Rows<const T> src, Rows<T> dst, TevSize roi, const TevMorphGrayState& state) {
  constexpr int stretch = 2048 / int{sizeof(T)};  // what a kernel's rows need of it stays in the nearest cache
  int left = std::min(state.anchorX, roi.width), right = roi.width - (state.width - 1 - state.anchorX);
  if (right <= left) left = right = roi.width;
  for (int y = 0; y < roi.height; ++y) {
    foldMargin<Best>(src, roi, state, y, dst[y], 0, left);
    for (int x = left; x < right; x += stretch)
      foldInside<Best>(src, roi.height, state, y, dst[y], x, std::min(right, x + stretch));
    foldMargin<Best>(src, roi, state, y, dst[y], right, roi.width);
  }
}

template <class Best, class T>
TevStatus gray(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, TevBorderType borderType,
               const TevMorphGrayState* state) {
  if (TevStatus s = firstFailure(notNull(src, dst, state), region(roi), rowFits<T>(srcStep, roi.width),
                                 rowFits<T>(dstStep, roi.width), wholeElements<T>(srcStep), wholeElements<T>(dstStep),
                                 failUnless(borderType == tevBorderRepl, tevStatusBadArg)))
    return s;
  if (roi.width > state->maxRoiWidth || roi.height > state->maxRoiHeight) return tevStatusBadSize;
  filter<Best>(rows(src, srcStep), rows(dst, dstStep), roi, *state);
  return tevStatusOk;
}

// Bytes of a state; the largest size stands for all that cannot be had.
int stateBytes(TevSize maskSize) {
  constexpr int cellBytes = 4;
  const auto cells = std::int64_t{maskSize.width} * maskSize.height;
  if (cells > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
  return saturate<int>(cells * cellBytes + int{sizeof(TevMorphGrayState)});
}

TevStatus getSize(TevSize roi, const void* mask, TevSize maskSize, int* size) {
  if (TevStatus s = firstFailure(notNull(mask, size), region(roi), region(maskSize))) return s;
  *size = stateBytes(maskSize);
  return tevStatusOk;
}

TevStatus anchorInside(TevSize maskSize, TevPoint anchor) {
  return failUnless(anchor.x >= 0 && anchor.x < maskSize.width && anchor.y >= 0 && anchor.y < maskSize.height,
                    tevStatusBadAnchor);
}

template <class Cell>
TevStatus init(TevMorphGrayState* state, TevSize roi, const Cell* mask, TevSize maskSize, TevPoint anchor) {
  if (TevStatus s = firstFailure(notNull(mask, state), region(roi), region(maskSize), anchorInside(maskSize, anchor)))
    return s;
  Cell* const kernel = reinterpret_cast<Cell*>(state + 1);
  std::copy_n(mask, std::ptrdiff_t{maskSize.width} * maskSize.height, kernel);
  *state = {kernel, maskSize.width, maskSize.height, anchor.x, anchor.y, roi.width, roi.height};
  return tevStatusOk;
}

template <class Cell>
TevStatus initAlloc(TevMorphGrayState** holder, TevSize roi, const Cell* mask, TevSize maskSize, TevPoint anchor) {
  if (TevStatus s = firstFailure(notNull(mask, holder), region(roi), region(maskSize), anchorInside(maskSize, anchor)))
    return s;
  const int size = stateBytes(maskSize);
  if (size == std::numeric_limits<int>::max()) return tevStatusNoMemory;
  auto* const state = reinterpret_cast<TevMorphGrayState*>(tevsMalloc_8u(size));
  if (!state) return tevStatusNoMemory;
  *holder = state;
  return init(state, roi, mask, maskSize, anchor);
}

TevStatus release(TevMorphGrayState* state) {
  if (TevStatus s = notNull(state)) return s;
  tevsFree(state);
  return tevStatusOk;
}

}  // namespace

TevStatus teviMorphGrayGetSize_8u_C1R(TevSize roiSize, const Tev32s* mask, TevSize maskSize, int* size) {
  return getSize(roiSize, mask, maskSize, size);
}

TevStatus teviMorphGrayGetSize_32f_C1R(TevSize roiSize, const Tev32f* mask, TevSize maskSize, int* size) {
  return getSize(roiSize, mask, maskSize, size);
}

TevStatus teviMorphGrayInit_8u_C1R(TevMorphGrayState* state, TevSize roiSize, const Tev32s* mask, TevSize maskSize,
                                   TevPoint anchor) {
  return init(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphGrayInit_32f_C1R(TevMorphGrayState* state, TevSize roiSize, const Tev32f* mask, TevSize maskSize,
                                    TevPoint anchor) {
  return init(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphGrayInitAlloc_8u_C1R(TevMorphGrayState** state, TevSize roiSize, const Tev32s* mask,
                                        TevSize maskSize, TevPoint anchor) {
  return initAlloc(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphGrayInitAlloc_32f_C1R(TevMorphGrayState** state, TevSize roiSize, const Tev32f* mask,
                                         TevSize maskSize, TevPoint anchor) {
  return initAlloc(state, roiSize, mask, maskSize, anchor);
}

TevStatus teviMorphGrayFree_8u_C1R(TevMorphGrayState* state) { return release(state); }

TevStatus teviMorphGrayFree_32f_C1R(TevMorphGrayState* state) { return release(state); }

TevStatus teviGrayDilateBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                      TevBorderType borderType, TevMorphGrayState* state) {
  return gray<Greatest>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviGrayErodeBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                     TevBorderType borderType, TevMorphGrayState* state) {
  return gray<Least>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviGrayDilateBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                       TevBorderType borderType, TevMorphGrayState* state) {
  return gray<Greatest>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}

TevStatus teviGrayErodeBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                      TevBorderType borderType, TevMorphGrayState* state) {
  return gray<Least>(src, srcStep, dst, dstStep, roiSize, borderType, state);
}
