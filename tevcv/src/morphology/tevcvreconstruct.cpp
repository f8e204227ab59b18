// Reconstruction: a marker grows inside a mask until stable.
//
// Values travel along rows by sweeps and from row to row by passes down and up the image. The first pass each way
// settles most pixels. The passes after them skip quiet rows by a flag a row and end when a full pair changes nothing.
// Of two threads each works from its end of the image to the seam row in the middle, and back from it.
//
// The order of visits does not matter to the result: it is the one smallest image above the marker (min(marker, mask))
// that no sweep and no neighbour changes. Erosion is dilation with minimum and maximum exchanged; names here are those
// of dilation.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "morphology/blocks.h"
#include "morphology/extremum.h"
#include "tevcv/morphology.h"
#include "tevcv_internal/frame.h"
#include "tevcv_internal/morphology.h"

using namespace tevcv;

namespace {

template <class T>
constexpr T lowest = -std::numeric_limits<T>::infinity();
template <>
constexpr Tev8u lowest<Tev8u> = 0;
template <class T>
constexpr T highest = std::numeric_limits<T>::infinity();
template <>
constexpr Tev8u highest<Tev8u> = 255;

// The two reconstructions: values grow by one extremum and are held by the other. least and most are the ends of the
// scale in this direction.
struct Dilation {
  using Grow = Greatest;
  using Hold = Least;
  template <class T>
  static constexpr T least = lowest<T>;
  template <class T>
  static constexpr T most = highest<T>;
};
struct Erosion {
  using Grow = Least;
  using Hold = Greatest;
  template <class T>
  static constexpr T least = highest<T>;
  template <class T>
  static constexpr T most = lowest<T>;
};

template <class T>
using Bits = std::conditional_t<sizeof(T) == 1, Tev8u, std::uint32_t>;

// --- Sweeps ---------------------------------------------------------------------------------------------------------
//
// A sweep is run = min(mask[x], max(row[x], run)) from pixel to pixel: with low = min(row[x], mask[x]) and high =
// mask[x] each pixel limits the run to low..high. Two such limits in turn are one limit again, whose ends are those of
// the first put through the second. That lets a long row be done in vectors: first every pixel gets the limit of a
// window of pixels that ends with it, by doubling; then the run goes on a window at a time, all lanes at once. Taking
// the same side on a tie everywhere makes this equal to the pixel by pixel form to the bit, signed zeros and NaN masks
// included.

template <class D, class T>
T limited(T run, T low, T high) {
  return D::Hold::of(high, D::Grow::of(low, run));
}

// The definition: pixels `from`, `from + direction`, ... up to the one before `to`. Returns the run at the end.
template <class D, int direction, class T>
T sweepSerially(const T* mask, const T* values, T* row, std::ptrdiff_t from, std::ptrdiff_t to, T run,
                Bits<T>& changed) {
  for (std::ptrdiff_t x = from; x != to; x += direction) {
    run = D::Hold::of(mask[x], D::Grow::of(values[x], run));
    changed |= std::bit_cast<Bits<T>>(run) ^ std::bit_cast<Bits<T>>(row[x]);
    row[x] = run;
  }
  return run;
}

template <class T>
constexpr int lanes = 32 / int{sizeof(T)};
constexpr int blockPixels = 512;

// One block of a row, `count` pixels, a multiple of the lanes.
template <class D, int direction, class T>
T sweepBlock(const T* mask, const T* values, T* row, int count, T run, Bits<T>& changed) {
  constexpr int n = lanes<T>;
  // Limits by window length in turn, with a neutral window before the block's first pixel (behind it, going left).
  T low[2][blockPixels + n], high[2][blockPixels + n];
  constexpr int first = direction > 0 ? n : 0;
  for (int side = 0; side < 2; ++side) {
    T *const lowEnd = low[side] + (direction > 0 ? 0 : count), *const highEnd =
                                                                   high[side] + (direction > 0 ? 0 : count);
    std::fill_n(lowEnd, n, D::template least<T>);
    std::fill_n(highEnd, n, D::template most<T>);
  }
  // Windows of two pixels, but one at the block's first.
  const int alone = direction > 0 ? 0 : count - 1;
  T *const low2 = low[0] + first, *const high2 = high[0] + first;
  for (int x = direction > 0; x < count - (direction < 0); ++x) {
    const T h = mask[x], l = D::Hold::of(h, values[x]);
    const T hBefore = mask[x - direction], lBefore = D::Hold::of(hBefore, values[x - direction]);
    low2[x] = limited<D>(lBefore, l, h);
    high2[x] = limited<D>(hBefore, l, h);
  }
  low2[alone] = D::Hold::of(mask[alone], values[alone]);
  high2[alone] = mask[alone];
  int side = 0;
  for (int length = 2; length < n; length *= 2, side ^= 1) {
    const T *const fromLow = low[side] + first, *const fromHigh = high[side] + first;
    T *const toLow = low[side ^ 1] + first, *const toHigh = high[side ^ 1] + first;
    const int before = -direction * length;
#pragma GCC ivdep
    for (int x = 0; x < count; ++x) {
      const T l = fromLow[x], h = fromHigh[x];
      toLow[x] = limited<D>(fromLow[x + before], l, h);
      toHigh[x] = limited<D>(fromHigh[x + before], l, h);
    }
  }
  T runs[n];
  Bits<T> differ[n] = {};
  std::fill_n(runs, n, run);
  for (int done = 0; done < count; done += n) {
    const int x = direction > 0 ? done : count - n - done;
    const T *const l = low[side] + first + x, *const h = high[side] + first + x;
    // One vector, or two: unrolled to single lanes it would stay that way.
#pragma GCC unroll 1
#pragma GCC ivdep
    for (int k = 0; k < n; ++k) {
      const T value = limited<D>(runs[k], l[k], h[k]);
      differ[k] |= std::bit_cast<Bits<T>>(value) ^ std::bit_cast<Bits<T>>(row[x + k]);
      row[x + k] = runs[k] = value;
    }
  }
  for (int k = 0; k < n; ++k) changed |= differ[k];
  return runs[direction > 0 ? n - 1 : 0];
}

// Sweeps `values` (which may be the row itself) into the row. Tells whether the row changed.
template <class D, int direction, class T>
bool sweep(const T* mask, const T* values, T* row, int width) {
  Bits<T> changed = 0;
  const int inBlocks = width >= 4 * lanes<T> ? width / lanes<T> * lanes<T> : 0;
  T run = D::template least<T>;
  if constexpr (direction > 0) {
    for (int x = 0; x < inBlocks; x += blockPixels)
      run = sweepBlock<D, 1>(mask + x, values + x, row + x, std::min(blockPixels, inBlocks - x), run, changed);
    sweepSerially<D, 1>(mask, values, row, inBlocks, width, run, changed);
  } else {
    for (int end = width; end > width - inBlocks; end -= blockPixels) {
      const int count = std::min(blockPixels, end - (width - inBlocks)), x = end - count;
      run = sweepBlock<D, -1>(mask + x, values + x, row + x, count, run, changed);
    }
    sweepSerially<D, -1>(mask, values, row, std::ptrdiff_t{width} - inBlocks - 1, -1, run, changed);
  }
  return changed != 0;
}

template <class D, class T>
bool sweepForward(const T* mask, const T* values, T* row, int width) {
  return sweep<D, 1>(mask, values, row, width);
}

template <class D, class T>
bool sweepBothWays(const T* mask, const T* values, T* row, int width) {
  const bool forward = sweep<D, 1>(mask, values, row, width);
  const bool backward = sweep<D, -1>(mask, static_cast<const T*>(row), row, width);
  return forward || backward;
}

// --- Passes ---------------------------------------------------------------------------------------------------------

enum Neighbours { four, eight };

// What the pixels of a row offer to those above and below: themselves, or with the diagonals the 3-wide extremum.
template <class D, Neighbours neighbours, class T>
const T* offered(const T* row, int width, T* line) {
  if constexpr (neighbours == four) {
    return row;
  } else {
    constexpr bool bytes = std::is_same_v<T, Tev8u>, dilation = std::is_same_v<D, Dilation>;
    constexpr auto pick = []([[maybe_unused]] auto max8u, [[maybe_unused]] auto min8u, [[maybe_unused]] auto max32f,
                             [[maybe_unused]] auto min32f) {
      if constexpr (bytes)
        return dilation ? max8u : min8u;
      else
        return dilation ? max32f : min32f;
    };
    // The 3-wide routine is meant for rows longer than its window.
    constexpr int shortest = 4;
    const auto spread = width < shortest ? pick(ownFilterMaxRowVH_8u_C1R, ownFilterMinRowVH_8u_C1R,
                                                ownFilterMaxRowVH_32f_C1R, ownFilterMinRowVH_32f_C1R)
                                         : pick(ownFilterMaxRow03_8u_C1R, ownFilterMinRow03_8u_C1R,
                                                ownFilterMaxRow03_32f_C1R, ownFilterMinRow03_32f_C1R);
    spread(row, line, width, 3, 1);
    return line;
  }
}

// `direction` is 1 for a pass down and -1 for a pass up.
template <class D, Neighbours neighbours, int direction, class T>
void plainPass(const T* mask, int maskStep, T* row, int rowStep, int width, int from, int to, int first, T* buffer) {
  const auto masks = rows(mask, maskStep);
  const auto values = rows(row, rowStep);
  int y = from;
  if (first && y != to) {
    sweepBothWays<D>(masks[y], static_cast<const T*>(values[y]), values[y], width);
    y += direction;
  }
  for (; y != to; y += direction) {
    T* const line = values[y];
    D::Grow::ofEach(line, offered<D, neighbours>(static_cast<const T*>(values[y - direction]), width, buffer), line,
                    width);
    sweepBothWays<D>(masks[y], static_cast<const T*>(line), line, width);
  }
}

template <class D, Neighbours neighbours, int direction, class T>
int checkPass(const T* mask, int maskStep, T* row, int rowStep, int width, int from, int to, int mode, Tev8u* flags,
              T* buffer, T* scratch) {
  const auto masks = rows(mask, maskStep);
  const auto values = rows(row, rowStep);
  const bool forwardOnly = mode >= 1;
  const auto sweepRow = forwardOnly ? sweepForward<D, T> : sweepBothWays<D, T>;
  int y = from, count = 0;
  // A row's flag tells that it has to be looked at in the next pass: because it has changed, or because the row that
  // this pass came from has to take in what changed here.
  const auto note = [&](bool changed) {
    flags[y] = changed;
    if (changed) flags[y - direction] = 1;
    count += changed;
    return changed;
  };
  if (y == to) return 0;
  bool previousChanged;
  if (mode % 2 != 0) {
    previousChanged = flags[y - direction] != 0;
  } else {
    const bool sweeps = forwardOnly ? flags[y] != 0 : mode == 0;
    previousChanged = sweeps && note(sweepRow(masks[y], values[y], values[y], width));
    y += direction;
  }
  for (; y != to; y += direction) {
    if (!previousChanged && !flags[y]) continue;
    D::Grow::ofEach(values[y], offered<D, neighbours>(static_cast<const T*>(values[y - direction]), width, buffer),
                    scratch, width);
    previousChanged = note(sweepRow(masks[y], scratch, values[y], width));
  }
  return count;
}

// The row between the two halves takes in both of its neighbours. Tells whether it changed.
template <class D, Neighbours neighbours, class T>
bool settleSeam(Rows<const T> masks, Rows<T> values, int width, int seam, T* buffer, T* scratch) {
  D::Grow::ofEach(values[seam], offered<D, neighbours>(static_cast<const T*>(values[seam - 1]), width, buffer), scratch,
                  width);
  D::Grow::ofEach(scratch, offered<D, neighbours>(static_cast<const T*>(values[seam + 1]), width, buffer), scratch,
                  width);
  return sweepBothWays<D>(masks[seam], static_cast<const T*>(scratch), values[seam], width);
}

// --- Drivers --------------------------------------------------------------------------------------------------------

// The passes of one operation, by the tables.
template <class D, class T>
struct Passes;
#define PASSES(Direction, T, down, up, downCheck, upCheck)                      \
  template <>                                                                   \
  struct Passes<Direction, T> {                                                 \
    static constexpr auto &downTable = down, &upTable = up;                     \
    static constexpr auto &downCheckTable = downCheck, &upCheckTable = upCheck; \
  };
PASSES(Dilation, Tev8u, tabDilateDown_8u_C1R, tabDilateUp_8u_C1R, tabDilateDownCheck_8u_C1R, tabDilateUpCheck_8u_C1R)
PASSES(Dilation, Tev32f, tabDilateDown_32f_C1R, tabDilateUp_32f_C1R, tabDilateDownCheck_32f_C1R,
       tabDilateUpCheck_32f_C1R)
PASSES(Erosion, Tev8u, tabErodeDown_8u_C1R, tabErodeUp_8u_C1R, tabErodeDownCheck_8u_C1R, tabErodeUpCheck_8u_C1R)
PASSES(Erosion, Tev32f, tabErodeDown_32f_C1R, tabErodeUp_32f_C1R, tabErodeDownCheck_32f_C1R, tabErodeUpCheck_32f_C1R)
#undef PASSES

// One call's images and how its buffer is laid out: four lines on 32-byte boundaries, two for each thread, and the
// flags of the rows. Flags reach from row -1 to one behind the last, and one byte further: the lower half keeps its
// flags a byte later than the upper one, so that each half has its own for the seam and no byte is written by two
// threads.
template <class T>
struct Work {
  Work(const T* src, int srcStep, T* srcDst, int srcDstStep, TevSize size, Tev8u* buffer)
      : mask(src), maskStep(srcStep), row(srcDst), rowStep(srcDstStep), roi(size) {
    Tev8u* end = buffer;
    for (T*& start : line) {
      start = reinterpret_cast<T*>(nextBoundary(end, 32));
      end = reinterpret_cast<Tev8u*>(start + size.width);
    }
    flags = end + 1;
  }
  void flagAllRows() const { std::fill(flags - 1, flags + roi.height + 2, Tev8u{1}); }

  const T* mask;
  int maskStep;
  T* row;
  int rowStep;
  TevSize roi;
  T* line[4];
  Tev8u* flags;
};

// Pairs of check passes until the image is stable. A pass gets the mode and about how many rows it will find to do, and
// gives its count of rows changed.
//
// Forward sweeps alone are cheaper, but where they no longer shrink the work they give way to both. They can also come
// to rest too early: after a quiet pass it is the end only if all rows have been swept both ways since they last
// changed.
template <class T, class FirstPass, class SecondPass>
void settle(const Work<T>& work, FirstPass firstPass, SecondPass secondPass) {
  int mode = 2;
  int rowsAhead = work.roi.height;
  bool halfSwept = false;  // forward sweeps alone have changed rows
  work.flagAllRows();
  for (;;) {
    const int first = firstPass(mode, rowsAhead);
    const int second = first == 0 ? 0 : secondPass(mode, first);
    rowsAhead = second;
    halfSwept |= mode > 0 && first > 0;
    const bool quiet = second == 0, hardlyShrinks = std::int64_t{10} * second > std::int64_t{9} * first;
    if (quiet && !halfSwept) return;
    // Mode 0 is for one pair, the first with both sweeps: it goes over the image's first row in any case.
    if (!quiet && !hardlyShrinks && mode != 0) continue;
    if (mode > 0) {
      work.flagAllRows();
      rowsAhead = work.roi.height;
      halfSwept = false;
    }
    mode = std::max(mode - 2, -2);
  }
}

template <class D, class T>
void reconstructAlone(const Work<T>& w, int neighbours) {
  using P = Passes<D, T>;
  const int width = w.roi.width, height = w.roi.height;
  P::downTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, 0, height, 1, w.line[0]);
  P::upTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, height - 2, -1, 0, w.line[0]);
  settle(
      w,
      [&](int mode, int) {
        return P::downCheckTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, 0, height, mode, w.flags,
                                             w.line[0], w.line[1]);
      },
      [&](int mode, int) {
        return P::upCheckTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, height - 1, -1, mode, w.flags,
                                           w.line[0], w.line[1]);
      });
}

// Both halves of the image at once, the seam row between them by the calling thread while they rest.
template <class D, class T>
void reconstructInHalves(const Work<T>& w, int neighbours) {
  using P = Passes<D, T>;
  const int width = w.roi.width, height = w.roi.height, seam = height / 2;
  Tev8u *const upperFlags = w.flags, *const lowerFlags = w.flags + 1;
  const auto inHalves = [&](auto upper, auto lower) {
    forEachShare(height, 2, [&](Share half) { half.isFirst() ? upper() : lower(); });
  };
  // A late pass finds little to do: fewer pixels than this are done sooner than a team of threads has met.
  constexpr int fewPixels = 1 << 15;
  const auto checkInHalves = [&](int rowsAhead, auto upper, auto lower) {
    if (std::int64_t{rowsAhead} * width >= fewPixels) return inHalves(upper, lower);
    upper();
    lower();
  };
  const auto seamChanges = [&] {
    const auto settleIt = neighbours == four ? settleSeam<D, four, T> : settleSeam<D, eight, T>;
    return settleIt(rows(w.mask, w.maskStep), rows(w.row, w.rowStep), width, seam, w.line[0], w.line[1]);
  };

  inHalves(
      [&] { P::downTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, 0, seam, 1, w.line[0]); },
      [&] { P::upTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, height - 1, seam, 1, w.line[2]); });
  seamChanges();
  inHalves(
      [&] { P::upTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, seam - 1, -1, 0, w.line[0]); },
      [&] { P::downTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, seam + 1, height, 0, w.line[2]); });

  int upperCount = 0, lowerCount = 0;
  settle(
      w,
      [&](int mode, int rowsAhead) {
        checkInHalves(
            rowsAhead,
            [&] {
              upperCount = P::downCheckTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, 0, seam, mode,
                                                         upperFlags, w.line[0], w.line[1]);
            },
            [&] {
              lowerCount = P::upCheckTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, height - 1, seam,
                                                       mode, lowerFlags, w.line[2], w.line[3]);
            });
        const bool changed = seamChanges();
        upperFlags[seam] = lowerFlags[seam] = changed;
        return upperCount + lowerCount + changed;
      },
      // An odd mode: the halves now start beside the seam, and take it in if it has changed.
      [&](int mode, int rowsAhead) {
        checkInHalves(
            rowsAhead,
            [&] {
              upperCount = P::upCheckTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, seam - 1, -1,
                                                       mode - 1, upperFlags, w.line[0], w.line[1]);
            },
            [&] {
              lowerCount = P::downCheckTable[neighbours](w.mask, w.maskStep, w.row, w.rowStep, width, seam + 1, height,
                                                         mode - 1, lowerFlags, w.line[2], w.line[3]);
            });
        return upperCount + lowerCount;
      });
}

template <class D, class T>
TevStatus reconstruct(const T* src, int srcStep, T* srcDst, int srcDstStep, TevSize roi, Tev8u* buffer, TevNorm norm) {
  if (TevStatus s =
          firstFailure(notNull(src, srcDst, buffer), region(roi), rowFits<T>(srcStep, roi.width),
                       rowFits<T>(srcDstStep, roi.width), wholeElements<T>(srcStep), wholeElements<T>(srcDstStep),
                       failUnless(norm == tevNormInf || norm == tevNormL1, tevStatusBadArg)))
    return s;
  constexpr int leastForHalves = 11;
  const Work<T> work(src, srcStep, srcDst, srcDstStep, roi, buffer);
  const int neighbours = norm == tevNormL1 ? four : eight;
  if (roi.width >= leastForHalves && roi.height >= leastForHalves && owncvGetNumThreads() >= 2)
    reconstructInHalves<D>(work, neighbours);
  else
    reconstructAlone<D>(work, neighbours);
  return tevStatusOk;
}

// The padding in front of four lines and the bytes beside the flags come to 130 at most.
template <class T>
TevStatus getBufferSize(TevSize roi, int* size) {
  if (TevStatus s = firstFailure(notNull(size), region(roi))) return s;
  *size = saturate<int>(roi.height + std::int64_t{4} * sizeof(T) * roi.width + 130);
  return tevStatusOk;
}

}  // namespace

void ownDilateForwardRev02_8u_C1R(const Tev8u* mask, Tev8u* row, int width) {
  sweepBothWays<Dilation, Tev8u>(mask, row, row, width);
}

int ownDilateForwardCheckRev02_8u_C1R(const Tev8u* mask, Tev8u* row, int width) {
  return sweepBothWays<Dilation, Tev8u>(mask, row, row, width);
}

int ownDilateForwardCheck02_8u_C1R(const Tev8u* mask, Tev8u* row, int width) {
  return sweep<Dilation, 1, Tev8u>(mask, row, row, width);
}

int ownDilateBackwardCheck02_8u_C1R(const Tev8u* mask, Tev8u* row, int width) {
  return sweep<Dilation, -1, Tev8u>(mask, row, row, width);
}

void ownDilateForwardRev02_32f_C1R(const Tev32f* mask, Tev32f* row, int width) {
  sweepBothWays<Dilation, Tev32f>(mask, row, row, width);
}

int ownDilateForwardCheckRev02_32f_C1R(const Tev32f* mask, Tev32f* row, int width) {
  return sweepBothWays<Dilation, Tev32f>(mask, row, row, width);
}

int ownDilateForwardCheck02_32f_C1R(const Tev32f* mask, Tev32f* row, int width) {
  return sweep<Dilation, 1, Tev32f>(mask, row, row, width);
}

int ownDilateBackwardCheck02_32f_C1R(const Tev32f* mask, Tev32f* row, int width) {
  return sweep<Dilation, -1, Tev32f>(mask, row, row, width);
}

void ownErodeForwardRev02_8u_C1R(const Tev8u* mask, Tev8u* row, int width) {
  sweepBothWays<Erosion, Tev8u>(mask, row, row, width);
}

int ownErodeForwardCheckRev02_8u_C1R(const Tev8u* mask, Tev8u* row, int width) {
  return sweepBothWays<Erosion, Tev8u>(mask, row, row, width);
}

int ownErodeForwardCheck02_8u_C1R(const Tev8u* mask, Tev8u* row, int width) {
  return sweep<Erosion, 1, Tev8u>(mask, row, row, width);
}

int ownErodeBackwardCheck02_8u_C1R(const Tev8u* mask, Tev8u* row, int width) {
  return sweep<Erosion, -1, Tev8u>(mask, row, row, width);
}

void ownErodeForwardRev02_32f_C1R(const Tev32f* mask, Tev32f* row, int width) {
  sweepBothWays<Erosion, Tev32f>(mask, row, row, width);
}

int ownErodeForwardCheckRev02_32f_C1R(const Tev32f* mask, Tev32f* row, int width) {
  return sweepBothWays<Erosion, Tev32f>(mask, row, row, width);
}

int ownErodeForwardCheck02_32f_C1R(const Tev32f* mask, Tev32f* row, int width) {
  return sweep<Erosion, 1, Tev32f>(mask, row, row, width);
}

int ownErodeBackwardCheck02_32f_C1R(const Tev32f* mask, Tev32f* row, int width) {
  return sweep<Erosion, -1, Tev32f>(mask, row, row, width);
}

#define PLAIN_PASS(name, T, Direction, neighbours, step)                                                           \
  void name(const T* mask, int maskStep, T* row, int rowStep, int width, int from, int to, int first, T* buffer) { \
    plainPass<Direction, neighbours, step>(mask, maskStep, row, rowStep, width, from, to, first, buffer);          \
  }
#define CHECK_PASS(name, T, Direction, neighbours, step)                                                              \
  int name(const T* mask, int maskStep, T* row, int rowStep, int width, int from, int to, int mode, Tev8u* flags,     \
           T* buffer, T* scratch) {                                                                                   \
    return checkPass<Direction, neighbours, step>(mask, maskStep, row, rowStep, width, from, to, mode, flags, buffer, \
                                                  scratch);                                                           \
  }
PLAIN_PASS(ownDilateDown_8u_C1R, Tev8u, Dilation, four, 1)
PLAIN_PASS(ownDilateDown_8u_C1RInf, Tev8u, Dilation, eight, 1)
PLAIN_PASS(ownDilateUp_8u_C1R, Tev8u, Dilation, four, -1)
PLAIN_PASS(ownDilateUp_8u_C1RInf, Tev8u, Dilation, eight, -1)
PLAIN_PASS(ownDilateDown_32f_C1R, Tev32f, Dilation, four, 1)
PLAIN_PASS(ownDilateDown_32f_C1RInf, Tev32f, Dilation, eight, 1)
PLAIN_PASS(ownDilateUp_32f_C1R, Tev32f, Dilation, four, -1)
PLAIN_PASS(ownDilateUp_32f_C1RInf, Tev32f, Dilation, eight, -1)
PLAIN_PASS(ownErodeDown_8u_C1R, Tev8u, Erosion, four, 1)
PLAIN_PASS(ownErodeDown_8u_C1RInf, Tev8u, Erosion, eight, 1)
PLAIN_PASS(ownErodeUp_8u_C1R, Tev8u, Erosion, four, -1)
PLAIN_PASS(ownErodeUp_8u_C1RInf, Tev8u, Erosion, eight, -1)
PLAIN_PASS(ownErodeDown_32f_C1R, Tev32f, Erosion, four, 1)
PLAIN_PASS(ownErodeDown_32f_C1RInf, Tev32f, Erosion, eight, 1)
PLAIN_PASS(ownErodeUp_32f_C1R, Tev32f, Erosion, four, -1)
PLAIN_PASS(ownErodeUp_32f_C1RInf, Tev32f, Erosion, eight, -1)
CHECK_PASS(ownDilateDownCheck_8u_C1R, Tev8u, Dilation, four, 1)
CHECK_PASS(ownDilateDownCheck_8u_C1RInf, Tev8u, Dilation, eight, 1)
CHECK_PASS(ownDilateUpCheck_8u_C1R, Tev8u, Dilation, four, -1)
CHECK_PASS(ownDilateUpCheck_8u_C1RInf, Tev8u, Dilation, eight, -1)
CHECK_PASS(ownDilateDownCheck_32f_C1R, Tev32f, Dilation, four, 1)
CHECK_PASS(ownDilateDownCheck_32f_C1RInf, Tev32f, Dilation, eight, 1)
CHECK_PASS(ownDilateUpCheck_32f_C1R, Tev32f, Dilation, four, -1)
CHECK_PASS(ownDilateUpCheck_32f_C1RInf, Tev32f, Dilation, eight, -1)
CHECK_PASS(ownErodeDownCheck_8u_C1R, Tev8u, Erosion, four, 1)
CHECK_PASS(ownErodeDownCheck_8u_C1RInf, Tev8u, Erosion, eight, 1)
CHECK_PASS(ownErodeUpCheck_8u_C1R, Tev8u, Erosion, four, -1)
CHECK_PASS(ownErodeUpCheck_8u_C1RInf, Tev8u, Erosion, eight, -1)
CHECK_PASS(ownErodeDownCheck_32f_C1R, Tev32f, Erosion, four, 1)
CHECK_PASS(ownErodeDownCheck_32f_C1RInf, Tev32f, Erosion, eight, 1)
CHECK_PASS(ownErodeUpCheck_32f_C1R, Tev32f, Erosion, four, -1)
CHECK_PASS(ownErodeUpCheck_32f_C1RInf, Tev32f, Erosion, eight, -1)
#undef PLAIN_PASS
#undef CHECK_PASS

const TevReconstructPass_8u tabDilateDown_8u_C1R[2] = {ownDilateDown_8u_C1R, ownDilateDown_8u_C1RInf};
const TevReconstructPass_8u tabDilateUp_8u_C1R[2] = {ownDilateUp_8u_C1R, ownDilateUp_8u_C1RInf};
const TevReconstructCheck_8u tabDilateDownCheck_8u_C1R[2] = {ownDilateDownCheck_8u_C1R, ownDilateDownCheck_8u_C1RInf};
const TevReconstructCheck_8u tabDilateUpCheck_8u_C1R[2] = {ownDilateUpCheck_8u_C1R, ownDilateUpCheck_8u_C1RInf};
const TevReconstructPass_32f tabDilateDown_32f_C1R[2] = {ownDilateDown_32f_C1R, ownDilateDown_32f_C1RInf};
const TevReconstructPass_32f tabDilateUp_32f_C1R[2] = {ownDilateUp_32f_C1R, ownDilateUp_32f_C1RInf};
const TevReconstructCheck_32f tabDilateDownCheck_32f_C1R[2] = {ownDilateDownCheck_32f_C1R,
                                                               ownDilateDownCheck_32f_C1RInf};
const TevReconstructCheck_32f tabDilateUpCheck_32f_C1R[2] = {ownDilateUpCheck_32f_C1R, ownDilateUpCheck_32f_C1RInf};
const TevReconstructPass_8u tabErodeDown_8u_C1R[2] = {ownErodeDown_8u_C1R, ownErodeDown_8u_C1RInf};
const TevReconstructPass_8u tabErodeUp_8u_C1R[2] = {ownErodeUp_8u_C1R, ownErodeUp_8u_C1RInf};
const TevReconstructCheck_8u tabErodeDownCheck_8u_C1R[2] = {ownErodeDownCheck_8u_C1R, ownErodeDownCheck_8u_C1RInf};
const TevReconstructCheck_8u tabErodeUpCheck_8u_C1R[2] = {ownErodeUpCheck_8u_C1R, ownErodeUpCheck_8u_C1RInf};
const TevReconstructPass_32f tabErodeDown_32f_C1R[2] = {ownErodeDown_32f_C1R, ownErodeDown_32f_C1RInf};
const TevReconstructPass_32f tabErodeUp_32f_C1R[2] = {ownErodeUp_32f_C1R, ownErodeUp_32f_C1RInf};
const TevReconstructCheck_32f tabErodeDownCheck_32f_C1R[2] = {ownErodeDownCheck_32f_C1R, ownErodeDownCheck_32f_C1RInf};
const TevReconstructCheck_32f tabErodeUpCheck_32f_C1R[2] = {ownErodeUpCheck_32f_C1R, ownErodeUpCheck_32f_C1RInf};

TevStatus teviMorphReconstructGetBufferSize_8u_C1(TevSize roiSize, int* size) {
  return getBufferSize<Tev8u>(roiSize, size);
}

TevStatus teviMorphReconstructGetBufferSize_32f_C1(TevSize roiSize, int* size) {
  return getBufferSize<Tev32f>(roiSize, size);
}

TevStatus teviMorphReconstructDilate_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep,
                                             TevSize roiSize, Tev8u* buffer, TevNorm norm) {
  return reconstruct<Dilation>(src, srcStep, srcDst, srcDstStep, roiSize, buffer, norm);
}

TevStatus teviMorphReconstructErode_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* srcDst, int srcDstStep,
                                            TevSize roiSize, Tev8u* buffer, TevNorm norm) {
  return reconstruct<Erosion>(src, srcStep, srcDst, srcDstStep, roiSize, buffer, norm);
}

TevStatus teviMorphReconstructDilate_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                              TevSize roiSize, Tev8u* buffer, TevNorm norm) {
  return reconstruct<Dilation>(src, srcStep, srcDst, srcDstStep, roiSize, buffer, norm);
}

TevStatus teviMorphReconstructErode_32f_C1IR(const Tev32f* src, int srcStep, Tev32f* srcDst, int srcDstStep,
                                             TevSize roiSize, Tev8u* buffer, TevNorm norm) {
  return reconstruct<Erosion>(src, srcStep, srcDst, srcDstStep, roiSize, buffer, norm);
}
