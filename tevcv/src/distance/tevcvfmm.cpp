// Fast marching by sweeps: the eikonal equation without a heap (after H. Zhao, "A fast sweeping method for Eikonal
// equations", 2005).
//
// A pass runs over the rows, down or up, and over each row from the left and then from the right. A pixel is solved
// from its neighbour in the row that the pass has just left and from the one on the side where the sweep comes from;
// four kinds of sweep see each pair of neighbours. The first pass writes every time, the second runs against it over
// all rows that hold something to solve, and the later ones alternate until one changes nothing. They look at flagged
// pixels of active rows alone: a time that falls flags the neighbours that may fall with it, a bit for each kind of
// sweep, and a run of falling times along a row needs no flags.
//
// With a radius the zero side of the front gets times below 0, which rise towards 0 from pass to pass; there 0 stands
// both for the front before it is reached and for what lies beyond the radius.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "tevcv/distance.h"
#include "tevcv_internal/distance.h"

using namespace tevcv;

namespace {

// The first pixel of a start row that does not lie on the front, before anything is known.
constexpr Tev32f unreached = 999999.0F;
// A zero pixel beside the inside: below 0, and nothing to its neighbours' times.
constexpr Tev32f besideInside = -1e-10F;
// What the radius is widened by.
constexpr Tev32f slack = 1e-5F;

// Regions of up to so many rows or columns are marched by one thread.
constexpr int aloneUpTo = 12;

// Flags of a pixel: the kinds of sweep that are to solve it again.
constexpr Tev8u downFromLeft = 1, downFromRight = 2, upFromLeft = 4, upFromRight = 8;

// Images and areas of one call.
struct Field {
  Rows<const Tev8u> src;
  Rows<Tev32f> dst;
  Rows<Tev8u> flags;  // rows -1 to height
  Tev8u* activity;    // bytes -1 to height
  int width;
  Extended reach;  // how far below 0 times may fall
};

// --- One pixel ------------------------------------------------------------------------------------------------------

// The time of a pixel whose smaller neighbours are a and b, by definition.
Extended upwind(Tev32f a, Tev32f b) {
  const Extended d = Extended{a} - b;
  if (std::fabs(d) < 1) return Extended{0.5} * (Extended{a} + b + std::sqrt(2 - d * d));
  return Extended{std::min(a, b)} + 1;
}

// The same rounded to float, found in double. Times are 0 or at least 0.7, so that a - b and a + b are exact; the other
// steps are off by less than the margin, and where both its ends round alike so does the definition.
Tev32f upwindRounded(Tev32f a, Tev32f b) {
  const Tev64f d = Tev64f{a} - b;
  if (!(std::fabs(d) < 1)) return std::min(a, b) + 1;  // one operation on floats
  const Tev64f t = 0.5 * (Tev64f{a} + b + std::sqrt(2 - d * d)), margin = t * 0x1p-50;
  const auto low = static_cast<Tev32f>(t - margin), high = static_cast<Tev32f>(t + margin);
  return low == high ? high : static_cast<Tev32f>(upwind(a, b));
}

// A candidate is compared with a stored time as it is, or rounded first: later passes round, so that they come to an
// end.
enum class Compare { asIs, rounded };

template <Compare compare>
bool lowersByOne(Tev32f neighbour, Tev32f& stored) {
  const Tev64f t = compare == Compare::rounded ? neighbour + 1 : Tev64f{neighbour} + 1;
  if (!(t < stored)) return false;
  stored = static_cast<Tev32f>(t);
  return true;
}

// Stores the time from a and b if that is below the stored one, and tells whether it is.
template <Compare compare>
bool lowers(Tev32f a, Tev32f b, Tev32f& stored) {
  const Tev64f d = Tev64f{a} - b;
  if (!(std::fabs(d) < 1)) return lowersByOne<compare>(std::min(a, b), stored);
  if (stored <= std::max(a, b)) return false;  // the time lies above both neighbours
  const Tev32f t = upwindRounded(a, b);
  if (t < stored) {
    stored = t;
    return true;
  }
  // Equal once rounded: only the definition tells which is the smaller. What is stored stays.
  return compare == Compare::asIs && t == stored && upwind(a, b) < stored;
}

// The candidate for a zero pixel from its neighbours; 0 where both are 0, which is none.
Extended bandCandidate(Tev32f a, Tev32f b) {
  if (a > 0 || b > 0) return besideInside;
  if (a == 0 && b == 0) return 0;
  if (a == 0 || b == 0) return Extended{std::min(a, b)} - 1;
  const Extended d = Extended{a} - b;
  if (std::fabs(d) < 1) return Extended{0.5} * ((Extended{a} + b) - std::sqrt(2 - d * d));
  return Extended{std::max(a, b)} - 1;
}

template <Compare compare>
bool raisesBand(Extended candidate, Extended reach, Tev32f& stored) {
  if (compare == Compare::rounded) candidate = static_cast<Tev32f>(candidate);
  if (candidate == 0 || candidate < -reach || !(stored == 0 || stored < candidate)) return false;
  stored = static_cast<Tev32f>(candidate);
  return true;
}

// Times below 0 never feed the inside.
template <bool banded>
Tev32f fromOutside(Tev32f time) {
  return banded ? std::max(time, 0.0F) : time;
}

// The first time of a pixel, from two neighbours or from the only one.
template <bool banded>
Tev32f firstTime(bool inside, Tev32f a, Tev32f b, Extended reach) {
  if (inside) return upwindRounded(fromOutside<banded>(a), fromOutside<banded>(b));
  if (!banded) return 0;
  const Extended candidate = bandCandidate(a, b);
  return candidate < -reach ? 0 : static_cast<Tev32f>(candidate);
}
template <bool banded>
Tev32f firstTime(bool inside, Tev32f only, Extended reach) {
  return inside ? fromOutside<banded>(only) + 1 : firstTime<banded>(false, only, 0, reach);
}

// A better time for a pixel, from two neighbours or from the only one; tells whether the pixel changed.
template <bool banded, Compare compare>
bool relax(bool inside, Tev32f a, Tev32f b, Extended reach, Tev32f& stored) {
  if (inside) return lowers<compare>(fromOutside<banded>(a), fromOutside<banded>(b), stored);
  return banded && raisesBand<compare>(bandCandidate(a, b), reach, stored);
}
template <bool banded, Compare compare>
bool relax(bool inside, Tev32f only, Extended reach, Tev32f& stored) {
  if (inside) return lowersByOne<compare>(fromOutside<banded>(only), stored);
  return banded && raisesBand<compare>(bandCandidate(only, 0), reach, stored);
}

// --- One row --------------------------------------------------------------------------------------------------------

// Pixels that are looked at together where nothing is to be done.
constexpr int block = 8;

bool noneSet(const Tev8u* p) {
  std::uint64_t word;
  std::memcpy(&word, p, sizeof word);
  return word == 0;
}

bool allZero(const Tev32f* p) {
  std::uint64_t words[block / 2];
  std::memcpy(words, p, sizeof words);
  return (words[0] | words[1] | words[2] | words[3]) == 0;
}

enum class From { left, right };

// The block that begins at x and goes the sweep's way: its lowest column, or -1 where the row ends within.
template <From from>
int blockAt(int x, int width) {
  if (from == From::left) return x + block <= width ? x : -1;
  return x - (block - 1);
}

// Writes a row's first times from the row before and tells whether it holds a pixel of the inside.
template <bool banded>
bool writeRow(const Tev8u* src, const Tev32f* before, Tev32f* dst, int width, Extended reach) {
  bool inside = src[0] != 0;
  Tev32f side = dst[0] = firstTime<banded>(inside, before[0], reach);
  for (int x = 1; x < width;) {
    if (src[x] == 0 && x + block <= width && noneSet(src + x) && (!banded || (side == 0 && allZero(before + x)))) {
      std::fill_n(dst + x, block, Tev32f{0});
      side = 0;
      x += block;
      continue;
    }
    inside |= src[x] != 0;
    side = dst[x] = firstTime<banded>(src[x] != 0, before[x], side, reach);
    ++x;
  }
  return inside;
}

// Solves all pixels of a row again; changed(x) is called for each one that changes.
template <bool banded, From from, class Changed>
void relaxRow(const Tev8u* src, const Tev32f* before, Tev32f* dst, int width, Extended reach, Changed changed) {
  constexpr int way = from == From::left ? 1 : -1;
  int x = from == From::left ? 0 : width - 1;
  if (relax<banded, Compare::asIs>(src[x] != 0, before[x], reach, dst[x])) changed(x);
  Tev32f side = dst[x];
  for (x += way; x >= 0 && x < width;) {
    if (src[x] == 0) {
      const int first = blockAt<from>(x, width);
      if (first >= 0 && noneSet(src + first) &&
          (!banded || (side == 0 && allZero(before + first) && allZero(dst + first)))) {
        side = 0;
        x += way * block;
        continue;
      }
    }
    Tev32f time = dst[x];
    if (relax<banded, Compare::asIs>(src[x] != 0, before[x], side, reach, time)) {
      dst[x] = time;
      changed(x);
    }
    side = time;
    x += way;
  }
}

// Solves the flagged pixels of a row again, and those behind a pixel that changed: `carry` is true where the pixel
// before did.
template <bool banded, From from, class Changed>
void relaxFlagged(const Tev8u* src, const Tev32f* before, Tev32f* dst, Tev8u* flags, Tev8u flag, int width,
                  Extended reach, bool& carry, Changed changed) {
  constexpr int way = from == From::left ? 1 : -1;
  constexpr std::uint64_t everyByte = 0x0101010101010101;
  const int begin = from == From::left ? 0 : width - 1;
  for (int x = begin; x >= 0 && x < width;) {
    if (!carry && (flags[x] & flag) == 0) {
      const int first = blockAt<from>(x, width);
      if (first >= 0) {
        std::uint64_t word;
        std::memcpy(&word, flags + first, sizeof word);
        if ((word & (everyByte * flag)) == 0) {
          x += way * block;
          continue;
        }
      }
      x += way;
      continue;
    }
    flags[x] &= static_cast<Tev8u>(~flag);
    const bool inside = src[x] != 0;
    carry = x == begin ? relax<banded, Compare::rounded>(inside, before[x], reach, dst[x])
                       : relax<banded, Compare::rounded>(inside, before[x], dst[x - way], reach, dst[x]);
    if (carry) changed(x);
    x += way;
  }
}

// --- Passes ---------------------------------------------------------------------------------------------------------

// A pass from startRow towards stopRow, downwards where that is the greater, and the flags of its two sweeps and of the
// two that run against it.
struct Pass {
  int step;
  Tev8u fromLeft, fromRight;
  Tev8u againstFromLeft, againstFromRight;

  Pass(int startRow, int stopRow) : step(startRow <= stopRow ? 1 : -1) {
    const bool down = step > 0;
    fromLeft = down ? downFromLeft : upFromLeft;
    fromRight = down ? downFromRight : upFromRight;
    againstFromLeft = down ? upFromLeft : downFromLeft;
    againstFromRight = down ? upFromRight : downFromRight;
  }

  // What a change at (x, y) asks of the passes that run against this one.
  void flagAgainst(const Field& f, int x, int y) const {
    Tev8u* const row = f.flags[y];
    if (x > 0) row[x - 1] |= againstFromRight;
    if (x < f.width - 1) row[x + 1] |= againstFromLeft;
    f.flags[y - step][x] |= againstFromLeft | againstFromRight;
  }
};

void markActive(const Field& f, int y, bool changed, bool keep) {
  f.activity[y] = static_cast<Tev8u>((keep ? f.activity[y] : 0) | changed);
  f.activity[y - 1] |= changed;
  f.activity[y + 1] |= changed;
}

// The first row has no row before it: times grow along it.
template <bool banded>
void writeStartRow(const Tev8u* src, Tev32f* dst, int width, Extended reach) {
  dst[0] = src[0] != 0 ? unreached : 0;
  for (int x = 1; x < width; ++x) dst[x] = firstTime<banded>(src[x] != 0, dst[x - 1], reach);
  for (int x = width - 2; x >= 0; --x) relax<banded, Compare::asIs>(src[x] != 0, dst[x + 1], reach, dst[x]);
}

// The first pass writes all its rows. With markStop it marks the row behind them as well, where another thread may be
// at work.
template <bool banded>
bool firstPass(const Field& f, int startRow, int stopRow, bool markStop = true) {
  const Pass pass(startRow, stopRow);
  writeStartRow<banded>(f.src[startRow], f.dst[startRow], f.width, f.reach);
  f.activity[startRow] = 1;
  for (int y = startRow + pass.step; y != stopRow; y += pass.step) {
    const Tev8u* const src = f.src[y];
    const Tev32f* const before = f.dst[y - pass.step];
    const bool changed = writeRow<banded>(src, before, f.dst[y], f.width, f.reach);
    relaxRow<banded, From::right>(src, before, f.dst[y], f.width, f.reach, [](int) {});
    f.activity[y] |= changed;
    f.activity[y - pass.step] |= changed;
    if (markStop || y + pass.step != stopRow) f.activity[y + pass.step] |= changed;
  }
  return true;
}

// The second pass solves all pixels of active rows.
template <bool banded>
bool secondPass(const Field& f, int startRow, int stopRow, bool keep) {
  const Pass pass(startRow, stopRow);
  bool any = false;
  for (int y = startRow; y != stopRow; y += pass.step) {
    if (f.activity[y] == 0) continue;
    bool changed = false;
    const auto flag = [&](int x) {
      changed = true;
      pass.flagAgainst(f, x, y);
    };
    const Tev32f* const before = f.dst[y - pass.step];
    relaxRow<banded, From::left>(f.src[y], before, f.dst[y], f.width, f.reach, flag);
    relaxRow<banded, From::right>(f.src[y], before, f.dst[y], f.width, f.reach, flag);
    markActive(f, y, changed, keep);
    any |= changed;
  }
  return any;
}

// All later passes solve what is flagged. A run of changes carries on from the left sweep into the right one, and from
// row to row.
template <bool banded>
bool thirdPass(const Field& f, int startRow, int stopRow, bool keep) {
  const Pass pass(startRow, stopRow);
  bool any = false, carry = false;
  for (int y = startRow; y != stopRow; y += pass.step) {
    if (f.activity[y] == 0) continue;
    bool changed = false;
    const auto flag = [&](int x) {
      changed = true;
      pass.flagAgainst(f, x, y);
      f.flags[y + pass.step][x] |= pass.fromLeft | pass.fromRight;
    };
    const Tev32f* const before = f.dst[y - pass.step];
    relaxFlagged<banded, From::left>(f.src[y], before, f.dst[y], f.flags[y], pass.fromLeft, f.width, f.reach, carry,
                                     flag);
    relaxFlagged<banded, From::right>(f.src[y], before, f.dst[y], f.flags[y], pass.fromRight, f.width, f.reach, carry,
                                      flag);
    markActive(f, y, changed, keep);
    any |= changed;
  }
  return any;
}

// --- Drivers --------------------------------------------------------------------------------------------------------

template <bool banded>
void marchAlone(const Field& f, int height) {
  firstPass<banded>(f, 0, height);
  f.activity[height - 1] = 0;
  bool changed = secondPass<banded>(f, height - 2, -1, false);
  for (bool down = true; changed; down = !down) {
    f.activity[down ? 0 : height - 1] = 0;
    changed = down ? thirdPass<banded>(f, 1, height, false) : thirdPass<banded>(f, height - 2, -1, false);
  }
}

int countSet(const Tev8u* src, int width) {
  int count = 0;
  for (int x = 0; x < width; ++x) count += src[x] != 0;
  return count;
}

// The row at which half of the pixels to solve lie above, with some rows on either side. `counters` receives their
// number for each row.
int splitRow(const Field& f, int height, Tev32s* counters) {
  std::int64_t total = 0;
  for (int y = 0; y < height; ++y) total += counters[y] = countSet(f.src[y], f.width);
  int split = 1;
  for (std::int64_t sum = std::int64_t{counters[0]} + counters[1]; split < height && sum <= total >> 1;)
    if (++split < height) sum += counters[split];
  return std::clamp(split, 3, height - 3);
}

// Two threads march from both ends to the split row and back. What passes over the seam, the last row of the one and
// the first of the other, is settled by one thread while the other waits; a change there counts like any other, so that
// the times are those of one thread but for the last bits.
template <bool banded>
void marchInTwo(const Field& f, int height, Tev32s* counters) {
  const int split = splitRow(f, height, counters);
  bool changedAt[2];
  const auto changed = [&](auto upper, auto lower) {
    forEachShare(height, 2, [&](const Share& t) { changedAt[t.index] = t.isFirst() ? upper() : lower(); });
    return changedAt[0] || changedAt[1];
  };

  changed([&] { return firstPass<banded>(f, 0, split, false); },
          [&] { return firstPass<banded>(f, height - 1, split - 1, false); });
  f.activity[split] |= banded || counters[split - 1] != 0;
  f.activity[split - 1] |= banded || counters[split] != 0;
  const bool seamAbove = secondPass<banded>(f, split - 1, split - 2, false);
  const bool seamBelow = secondPass<banded>(f, split, split + 1, false);
  const bool sides = changed([&] { return secondPass<banded>(f, split - 2, -1, true); },
                             [&] { return secondPass<banded>(f, split + 1, height, true); });
  if (!(seamAbove || seamBelow || sides)) return;

  for (;;) {
    f.activity[0] = f.activity[height - 1] = 0;
    const bool inwards = changed([&] { return thirdPass<banded>(f, 1, split - 1, false); },
                                 [&] { return thirdPass<banded>(f, height - 2, split, false); });
    const bool down = thirdPass<banded>(f, split - 1, split + 1, true);
    const bool up = thirdPass<banded>(f, split, split - 2, true);
    if (!(inwards || down || up)) return;
    const bool outwards = changed([&] { return thirdPass<banded>(f, split - 2, -1, false); },
                                  [&] { return thirdPass<banded>(f, split + 1, height, false); });
    if (!(outwards || down || up)) return;
  }
}

Field fieldOf(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags, int flagsStep,
              Tev8u* activity, Tev32f radius = 0) {
  return {rows(src, srcStep), rows(dst, dstStep), rows(flags, flagsStep), activity, width, Extended{radius} + slack};
}

// The caller's buffer: padding to a boundary, flags, counters, activity.
constexpr int boundary = 32;

int flagStride(int width) { return (width + (boundary - 1)) & -boundary; }

}  // namespace

TevStatus teviFastMarchingGetBufferSize_8u32f_C1R(TevSize roiSize, int* size) {
  if (TevStatus s = firstFailure(notNull(size), region(roiSize))) return s;
  const auto width = static_cast<unsigned>(roiSize.width), height = static_cast<unsigned>(roiSize.height);
  *size = static_cast<int>(5 * height + 10 + (height + 2) * ((width + 31) & ~31U) + 40);
  return tevStatusOk;
}

TevStatus teviFastMarching_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                     Tev32f radius, Tev8u* buffer) {
  if (TevStatus s = firstFailure(notNull(src, dst, buffer), region(roiSize), rowFits<Tev8u>(srcStep, roiSize.width),
                                 rowFits<Tev32f>(dstStep, roiSize.width), wholeElements<Tev32f>(dstStep),
                                 failUnless(radius >= 0, tevStatusBadArg)))
    return s;
  const int width = roiSize.width, height = roiSize.height, stride = flagStride(width);
  const auto address = reinterpret_cast<std::uintptr_t>(buffer);
  Tev8u* const flagArea = buffer + (-address & (boundary - 1));
  const std::size_t flagBytes = (static_cast<std::size_t>(height) + 2) * static_cast<std::size_t>(stride);
  auto* const counters = reinterpret_cast<Tev32s*>(flagArea + flagBytes);
  auto* const activityArea = reinterpret_cast<Tev8u*>(counters + height);
  std::memset(flagArea, 0, flagBytes);
  std::memset(activityArea, 0, static_cast<std::size_t>(height) + 2);

  Tev8u *const flags = flagArea + stride, *const activity = activityArea + 1;
  if (height <= aloneUpTo || width <= aloneUpTo || threads_omp_of_n_tev <= 1) {
    const Field field = fieldOf(src, srcStep, dst, dstStep, width, flags, stride, activity, radius);
    if (radius > 0)
      marchAlone<true>(field, height);
    else
      marchAlone<false>(field, height);
  } else if (radius > 0) {
    ownFastMarching_r_omp(src, srcStep, dst, dstStep, width, height, flags, stride, activity, counters, radius);
  } else {
    ownFastMarching_0_omp(src, srcStep, dst, dstStep, width, height, flags, stride, activity, counters);
  }
  return tevStatusOk;
}

int ownFMMFirst(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags, int flagsStep,
                Tev8u* activity, int startRow, int stopRow) {
  return firstPass<false>(fieldOf(src, srcStep, dst, dstStep, width, flags, flagsStep, activity), startRow, stopRow);
}

int ownFMMSecond(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags, int flagsStep,
                 Tev8u* activity, int startRow, int stopRow, int keep) {
  return secondPass<false>(fieldOf(src, srcStep, dst, dstStep, width, flags, flagsStep, activity), startRow, stopRow,
                           keep != 0);
}

int ownFMMThird(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags, int flagsStep,
                Tev8u* activity, int startRow, int stopRow, int keep) {
  return thirdPass<false>(fieldOf(src, srcStep, dst, dstStep, width, flags, flagsStep, activity), startRow, stopRow,
                          keep != 0);
}

int ownFMMFirstExt(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags, int flagsStep,
                   Tev8u* activity, int startRow, int stopRow, Tev32f radius) {
  return firstPass<true>(fieldOf(src, srcStep, dst, dstStep, width, flags, flagsStep, activity, radius), startRow,
                         stopRow);
}

int ownFMMSecondExt(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags, int flagsStep,
                    Tev8u* activity, int startRow, int stopRow, int keep, Tev32f radius) {
  return secondPass<true>(fieldOf(src, srcStep, dst, dstStep, width, flags, flagsStep, activity, radius), startRow,
                          stopRow, keep != 0);
}

int ownFMMThirdExt(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, Tev8u* flags, int flagsStep,
                   Tev8u* activity, int startRow, int stopRow, int keep, Tev32f radius) {
  return thirdPass<true>(fieldOf(src, srcStep, dst, dstStep, width, flags, flagsStep, activity, radius), startRow,
                         stopRow, keep != 0);
}

void ownFastMarching_0_omp(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, int height, Tev8u* flags,
                           int flagsStep, Tev8u* activity, Tev32s* counters) {
  marchInTwo<false>(fieldOf(src, srcStep, dst, dstStep, width, flags, flagsStep, activity), height, counters);
}

void ownFastMarching_r_omp(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, int width, int height, Tev8u* flags,
                           int flagsStep, Tev8u* activity, Tev32s* counters, Tev32f radius) {
  marchInTwo<true>(fieldOf(src, srcStep, dst, dstStep, width, flags, flagsStep, activity, radius), height, counters);
}
