// Minimum and maximum with their positions, in two stages: each row's extremes against the running ones, which names
// the row of either without keeping positions in the inner loop; then a search of that row for the column.
//
// The comparisons are strict at both levels, so the first of equal elements wins, by row and then by column; and the
// running extremes start from the ends of the type's range, so an element of such a value never moves the row from 0.
// Under a mask this shows: where all selected elements are at an end of the range and row 0 holds none of them, the
// position reads (0, 0), a pixel that the mask leaves out. Callers see the same at every thread count.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "tevcv/statistics.h"

using namespace tevcv;

namespace {

// Where the running extremes start. For floats these are the largest finite values: an infinity can only be a maximum
// (or, negative, a minimum), and a NaN, which fails every comparison, is passed over.
template <class T>
constexpr T initMin = std::numeric_limits<T>::max();
template <class T>
constexpr T initMax = std::numeric_limits<T>::lowest();

// The elements that are looked at: `channels` apart, those whose mask element is not 0 where there is one.
template <class T, int channels, bool masked>
struct Elements {
  Rows<const T> image;
  Rows<const Tev8u> mask;
  TevSize roi;
};

template <class T>
struct Extremes {
  T min = initMin<T>, max = initMax<T>;
  int minRow = 0, maxRow = 0;
  bool found = false;  // whether the mask selects a pixel

  void minimum(T value, int y) {
    if (value < min) min = value, minRow = y;
  }
  void maximum(T value, int y) {
    if (value > max) max = value, maxRow = y;
  }
};

// What element x offers as a minimum (`start` is initMin) or as a maximum (initMax): itself, or `start` where the mask
// leaves it out. It is read in any case, which lets the loops run in vectors.
template <class T, int channels, bool masked>
T offer(const T* p, const Tev8u* mask, int x, T start) {
  const T value = p[std::ptrdiff_t{x} * channels];
  if constexpr (!masked) {
    return value;
  } else if constexpr (std::is_integral_v<T>) {
    const T keep = static_cast<T>(-int{mask[x] != 0});
    return static_cast<T>((value & keep) | (start & ~keep));
  } else {
    return mask[x] != 0 ? value : start;
  }
}

// `a < b ? a : b` is what a processor's minimum computes, NaN included.
template <class T, int channels, bool masked>
void take(const T* p, const Tev8u* mask, int x, T& lo, T& hi) {
  const T low = offer<T, channels, masked>(p, mask, x, initMin<T>);
  const T high = offer<T, channels, masked>(p, mask, x, initMax<T>);
  lo = low < lo ? low : lo;
  hi = high > hi ? high : hi;
}

// Extremes of the rows from `first` to `end`, their rows counted from `first`. A few dozen columns run side by side;
// which of them meets a value first does not matter, as positions are found later. (Sixteen or fewer would be unrolled
// to scalars.)
template <class T, int channels, bool masked>
Extremes<T> scanRows(const Elements<T, channels, masked>& e, int first, int end) {
  constexpr int lanes = sizeof(T) == 1 ? 64 : 32;
  Extremes<T> extremes;
  Tev8u anySelected = 0;
  for (int y = first; y < end; ++y) {
    const T* const p = e.image[y];
    const Tev8u* const mask = masked ? e.mask[y] : nullptr;
    T lo[lanes], hi[lanes];
    std::fill_n(lo, lanes, extremes.min);
    std::fill_n(hi, lanes, extremes.max);
    int x = 0;
    for (; x + lanes <= e.roi.width; x += lanes)
      for (int i = 0; i < lanes; ++i) take<T, channels, masked>(p, mask, x + i, lo[i], hi[i]);
    if (x > 0)
      for (int i = 1; i < lanes; ++i) {
        lo[0] = lo[i] < lo[0] ? lo[i] : lo[0];
        hi[0] = hi[i] > hi[0] ? hi[i] : hi[0];
      }
    for (; x < e.roi.width; ++x) take<T, channels, masked>(p, mask, x, lo[0], hi[0]);
    extremes.minimum(lo[0], y - first);
    extremes.maximum(hi[0], y - first);
    if constexpr (masked)
      for (int i = 0; i < e.roi.width; ++i) anySelected |= mask[i];
  }
  extremes.found = !masked || anySelected != 0;
  return extremes;
}

// What a share of rows hands over, in 32-bit words whatever the type.
template <class T>
struct Slot {
  std::conditional_t<std::is_integral_v<T>, Tev32s, Tev32f> min, max;
  Tev32s minRow, maxRow, found, unused;
};
static_assert(sizeof(Slot<Tev8u>) == 6 * 4 && sizeof(Slot<Tev32f>) == 6 * 4);

// The same by shares of rows. Merged in thread order by strict comparison, the shares give what one scan gives. False
// where the slots' memory fails.
template <class T, int channels, bool masked>
bool scanShares(const Elements<T, channels, masked>& e, Extremes<T>& extremes) {
  constexpr int stackSlots = 32;
  Slot<T> onStack[stackSlots];
  const int threads = owncvGetNumThreads();
  // Above 32 threads the slots come from the allocator, six 32-bit words a thread whatever the type. The block is never
  // given back: that is this family's known behaviour, and programs with hooks of their own reckon with it.
  auto* const slots = threads <= stackSlots ? onStack : reinterpret_cast<Slot<T>*>(tevsMalloc_32s(6 * threads));
  if (!slots) return false;
  forEachShare(e.roi.height, threads, [&](Share share) {
    const Extremes<T> own = scanRows(e, share.firstRow, share.endRow());
    slots[share.index] = {own.min, own.max, own.minRow, own.maxRow, own.found, 0};
  });
  for (int t = 0; t < threads; ++t) {
    const int firstRow = shareOfRows(e.roi.height, threads, t).firstRow;
    extremes.minimum(static_cast<T>(slots[t].min), firstRow + slots[t].minRow);
    extremes.maximum(static_cast<T>(slots[t].max), firstRow + slots[t].maxRow);
    extremes.found |= slots[t].found != 0;
  }
  return true;
}

struct Outputs {
  Tev32f *minVal, *maxVal;
  TevPoint *minIndex, *maxIndex;
};

// The first element of row y that equals `value`. Of two zeros that compare equal the first one's sign is the result's,
// so the element found replaces the value; where none is found the column is 0 and the value stays.
template <class T, int channels, bool masked>
int findColumn(const Elements<T, channels, masked>& e, int y, T& value) {
  const T* const p = e.image[y];
  for (int x = 0; x < e.roi.width; ++x) {
    const T element = p[std::ptrdiff_t{x} * channels];
    if (element == value && (!masked || e.mask[y][x] != 0)) {
      value = element;
      return x;
    }
  }
  return 0;
}

template <class T, int channels, bool masked>
TevStatus minMaxIndx(const Elements<T, channels, masked>& e, const Outputs& out) {
  Extremes<T> extremes;
  if (std::int64_t{e.roi.width} * e.roi.height < 16384)
    extremes = scanRows(e, 0, e.roi.height);
  else if (!scanShares(e, extremes))
    return tevStatusNoMemory;
  if (!extremes.found) {
    *out.minVal = *out.maxVal = 0;
    *out.minIndex = *out.maxIndex = {0, 0};
    return tevStatusOk;
  }
  const int minColumn = findColumn(e, extremes.minRow, extremes.min);
  const int maxColumn = findColumn(e, extremes.maxRow, extremes.max);
  *out.minIndex = {minColumn, extremes.minRow};
  *out.maxIndex = {maxColumn, extremes.maxRow};
  *out.minVal = static_cast<Tev32f>(extremes.min);
  *out.maxVal = static_cast<Tev32f>(extremes.max);
  return tevStatusOk;
}

template <int channels, class T>
TevStatus plain(const T* src, int srcStep, TevSize roi, int coi, const Outputs& out) {
  if (TevStatus s = firstFailure(notNull(src), region(roi), rowFits<T>(srcStep, roi.width, channels),
                                 wholeElements<T>(srcStep), channelOfInterest(coi)))
    return s;
  return minMaxIndx(Elements<T, channels, false>{rows(src + (coi - 1), srcStep), {nullptr, 0}, roi}, out);
}

template <int channels, class T>
TevStatus masked(const T* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roi, int coi, const Outputs& out) {
  if (TevStatus s =
          firstFailure(notNull(src, mask), region(roi), rowFits<T>(srcStep, roi.width, channels),
                       rowFits<Tev8u>(maskStep, roi.width), wholeElements<T>(srcStep), channelOfInterest(coi)))
    return s;
  return minMaxIndx(Elements<T, channels, true>{rows(src + (coi - 1), srcStep), rows(mask, maskStep), roi}, out);
}

}  // namespace

TevStatus teviMinMaxIndx_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev32f* pMinVal, Tev32f* pMaxVal,
                                TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return plain<1>(src, srcStep, roiSize, 1, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_8s_C1R(const Tev8s* src, int srcStep, TevSize roiSize, Tev32f* pMinVal, Tev32f* pMaxVal,
                                TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return plain<1>(src, srcStep, roiSize, 1, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_16u_C1R(const Tev16u* src, int srcStep, TevSize roiSize, Tev32f* pMinVal, Tev32f* pMaxVal,
                                 TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return plain<1>(src, srcStep, roiSize, 1, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_32f_C1R(const Tev32f* src, int srcStep, TevSize roiSize, Tev32f* pMinVal, Tev32f* pMaxVal,
                                 TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return plain<1>(src, srcStep, roiSize, 1, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_8u_C3CR(const Tev8u* src, int srcStep, TevSize roiSize, int coi, Tev32f* pMinVal,
                                 Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return plain<3>(src, srcStep, roiSize, coi, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_8s_C3CR(const Tev8s* src, int srcStep, TevSize roiSize, int coi, Tev32f* pMinVal,
                                 Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return plain<3>(src, srcStep, roiSize, coi, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_16u_C3CR(const Tev16u* src, int srcStep, TevSize roiSize, int coi, Tev32f* pMinVal,
                                  Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return plain<3>(src, srcStep, roiSize, coi, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_32f_C3CR(const Tev32f* src, int srcStep, TevSize roiSize, int coi, Tev32f* pMinVal,
                                  Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return plain<3>(src, srcStep, roiSize, coi, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                 Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return masked<1>(src, srcStep, mask, maskStep, roiSize, 1, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                 Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return masked<1>(src, srcStep, mask, maskStep, roiSize, 1, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                  Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return masked<1>(src, srcStep, mask, maskStep, roiSize, 1, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                  Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return masked<1>(src, srcStep, mask, maskStep, roiSize, 1, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                  int coi, Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return masked<3>(src, srcStep, mask, maskStep, roiSize, coi, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                  int coi, Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex, TevPoint* pMaxIndex) {
  return masked<3>(src, srcStep, mask, maskStep, roiSize, coi, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                   int coi, Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex,
                                   TevPoint* pMaxIndex) {
  return masked<3>(src, srcStep, mask, maskStep, roiSize, coi, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}

TevStatus teviMinMaxIndx_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                   int coi, Tev32f* pMinVal, Tev32f* pMaxVal, TevPoint* pMinIndex,
                                   TevPoint* pMaxIndex) {
  return masked<3>(src, srcStep, mask, maskStep, roiSize, coi, {pMinVal, pMaxVal, pMinIndex, pMaxIndex});
}
