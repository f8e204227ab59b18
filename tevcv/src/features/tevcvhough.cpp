// Straight lines by the standard Hough transform: every point votes, for each angle theta, for the line through it at
// the distance rho = x cos(theta) + y sin(theta), and the lines with locally most votes are kept in a sorted list.
//
// The accumulator never exists as a whole. Angles are taken one after the other with three rows of votes: as soon as a
// row's successor is complete, its peaks are found. The points are packed into lists of columns first.
//
// rho is defined in extended precision. For nearly all angles the mantissas of sine and cosine lie so close together
// that double holds every product and sum exactly, and its vectors give the same votes.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using namespace tevcv;

static_assert(sizeof(TevPolarLine) == 8 && sizeof(HoughPeak) == 16);

namespace {

constexpr Tev64f pi = 3.141592653589793;

// Half away from zero. A value that 32 bits do not hold gives the most negative number, as the processor's own
// conversion does.
Tev32s truncated(Extended value) {
  return value > -2147483649.0L && value < 2147483648.0L ? static_cast<Tev32s>(value) : INT32_MIN;
}
Tev32s rounded(Extended value) { return truncated(value <= 0 ? value - 0.5L : value + 0.5L); }

// The accumulator's extent.
struct Grid {
  Tev32s thetaCount;  // angles, less one
  Tev32s rhoCount;
  Tev32s rhoOffset;  // index of the distance 0

  Grid(TevSize roi, Tev32f rhoStep, Tev32f thetaStep)
      : thetaCount(truncated(Extended{pi} / thetaStep)),
        rhoCount(truncated(static_cast<Extended>((std::int64_t{roi.width} + roi.height) * 2 + 1) / rhoStep)),
        rhoOffset((rhoCount < 1 ? rhoCount : rhoCount - 1) >> 1) {}
};

// Bytes from one packed row to the next: four words and the columns, a multiple of 16.
std::size_t packedPitch(int width) { return (static_cast<std::size_t>(width) * 4 + 31) & ~std::size_t{15}; }

Tev8u* alignedTo(std::size_t alignment, void* p) {
  auto* const bytes = static_cast<Tev8u*>(p);
  return bytes + (-reinterpret_cast<std::uintptr_t>(p) & (alignment - 1));
}

// The caller's buffer.
struct Scratch {
  Tev32s* votes[3];  // rhoCount slots each from index 1 on, and a zero on either side
  HoughPeak* peaks;
  Tev32f* sine;
  Tev32f* cosine;
  Tev32s* flags;
  Tev32s* packed;

  Scratch(Tev8u* buffer, const Grid& grid, int maxLineCount) {
    const auto slots = static_cast<std::size_t>(grid.rhoCount) + 2,
               angles = static_cast<std::size_t>(grid.thetaCount) + 1;
    votes[0] = reinterpret_cast<Tev32s*>(alignedTo(32, buffer));
    votes[1] = votes[0] + slots;
    votes[2] = votes[1] + slots;
    peaks = reinterpret_cast<HoughPeak*>(votes[2] + slots);
    sine = reinterpret_cast<Tev32f*>(peaks + maxLineCount);
    cosine = sine + angles;
    flags = reinterpret_cast<Tev32s*>(cosine + angles);
    packed = reinterpret_cast<Tev32s*>(alignedTo(16, flags + slots - 1));
    std::memset(votes[0], 0, 3 * slots * sizeof(Tev32s));
    std::memset(peaks, 0, static_cast<std::size_t>(maxLineCount) * sizeof(HoughPeak));
  }
};

bool isZero8(const Tev8u* p) {
  std::uint64_t word;
  std::memcpy(&word, p, sizeof word);
  return word == 0;
}

// Sine and cosine in units of rhoStep. The angle grows by one float addition a step.
void fillTables(Tev32f* sine, Tev32f* cosine, int thetaCount, Tev32f rhoStep, Tev32f thetaStep) {
  const Extended inverse = 1.0L / rhoStep;
  Tev32f angle = 0;
  for (int i = 0; i <= thetaCount; ++i, angle += thetaStep) {
    ownSinCos(angle, &sine[i], &cosine[i]);
    sine[i] = static_cast<Tev32f>(sine[i] * inverse);
    cosine[i] = static_cast<Tev32f>(cosine[i] * inverse);
  }
}

// True if double holds all x cos, y sin, their sums and those plus a half: multiples of 2^lowest below 2^(lowest + 53).
bool exactInDouble(TevSize roi, Tev32f sine, Tev32f cosine) {
  int lowest = -1;
  for (Tev32f f : {sine, cosine})
    if (f != 0) lowest = std::min(lowest, std::max(std::ilogb(f) - 23, -149));
  const Tev64f bound = Tev64f{std::fabs(sine)} * roi.height + Tev64f{std::fabs(cosine)} * roi.width + 1;
  return bound < std::ldexp(1.0, lowest + 53);  // false for NaN
}

// One row of votes under construction. Slots are counted from distance 0.
struct Ballot {
  Tev32s* slots;
  Tev32s first;  // the slots that exist
  Tev32s last;
  Tev32s lowest;  // the slots that have votes
  Tev32s highest;

  void touch(Tev32s a, Tev32s b) {
    lowest = std::min(lowest, std::min(a, b));
    highest = std::max(highest, std::max(a, b));
  }
};

// With a coarse rhoStep a distance can fall beside the row; such a vote is dropped.
void voteByDefinition(Ballot& ballot, const Tev32s* columns, int count, Extended cosine, Extended ySine) {
  const auto indexOf = [=](Tev32s x) { return rounded(x * cosine + ySine); };
  const auto exists = [&](Tev32s k) { return k >= ballot.first && k <= ballot.last; };
  // The distance rises or falls along a row: where both ends vote for one slot, so do all points.
  const Tev32s k = indexOf(columns[0]);
  if (exists(k) && k == indexOf(columns[count - 1])) {
    ballot.slots[k] += count;
    ballot.touch(k, k);
    return;
  }
  for (int i = 0; i < count; ++i)
    if (const Tev32s slot = indexOf(columns[i]); exists(slot)) {
      ++ballot.slots[slot];
      ballot.touch(slot, slot);
    }
}

// The rows that have points, one right behind the other: a header of count and row number, and the columns in whole
// groups, the last one repeated. A pass over them stays in few pages of memory.
struct PointRows {
  static constexpr int header = 4, group = 4;

  const Tev32s* begin;
  const Tev32s* end;

  static int padded(Tev32s count) { return (count + group - 1) & ~(group - 1); }

  // Moves the records of the packed image together, in place.
  PointRows(Tev32s* packed, TevSize roi) : begin(packed) {
    const auto records = Rows<const Tev32s>(packed, static_cast<std::ptrdiff_t>(packedPitch(roi.width)));
    Tev32s* to = packed;
    for (int y = 0; y < roi.height; ++y) {
      const Tev32s count = records[y][0];
      if (count == 0) continue;
      Tev32s* const columns = to + header;
      std::memmove(columns, records[y] + header, static_cast<std::size_t>(count) * sizeof(Tev32s));
      std::fill(columns + count, columns + padded(count), columns[count - 1]);
      to[0] = count;
      to[1] = y;
      to = columns + padded(count);
    }
    end = to;
  }

  // castRow(columns, count, y)
  template <class CastRow>
  void forEach(CastRow castRow) const {
    for (const Tev32s* row = begin; row != end; row += header + padded(row[0])) castRow(row + header, row[0], row[1]);
  }
};

// Votes of an angle whose distances double holds exactly. Slots are gathered over rows of few points and cast together.
class ExactVote {
 public:
  ExactVote(Ballot& ballot, Tev32f sine, Tev32f cosine) : ballot_(ballot), sine_(sine), cosine_(cosine) {}

  void row(const Tev32s* columns, int count, int y) {
    for (int begin = 0; begin < count; begin += gathered) {
      const int length = std::min(gathered, count - begin);
      const Tev64f ySine = y * sine_;
      Tev32s* const slot = slots_ + count_;
      for (int i = 0; i < length; i += PointRows::group)
        for (int j = i; j < i + PointRows::group; ++j) {
          const Tev64f r = columns[begin + j] * cosine_ + ySine;
          slot[j] = static_cast<Tev32s>(r + std::copysign(0.5, r));
        }
      // Where the ends vote inside the accumulator, all points do.
      const auto [low, high] = std::minmax(slot[0], slot[length - 1]);
      if (low < ballot_.first || high > ballot_.last) {
        voteByDefinition(ballot_, columns + begin, length, cosine_, ySine);
        continue;
      }
      ballot_.touch(low, high);
      count_ += length;
      if (count_ >= gathered) cast();
    }
  }

  // Neighbours often share a slot, and each would wait for the other's store: points from four places take turns.
  void cast() {
    const int quarter = count_ / 4;
    for (int i = 0; i < quarter; ++i) {
      ++ballot_.slots[slots_[i]];
      ++ballot_.slots[slots_[i + quarter]];
      ++ballot_.slots[slots_[i + 2 * quarter]];
      ++ballot_.slots[slots_[i + 3 * quarter]];
    }
    for (int i = 4 * quarter; i < count_; ++i) ++ballot_.slots[slots_[i]];
    count_ = 0;
  }

 private:
  static constexpr int gathered = 1024;

  Ballot& ballot_;
  Tev64f sine_, cosine_;
  int count_ = 0;
  Tev32s slots_[2 * gathered];
};

// All points vote for one angle.
void vote(Ballot& ballot, const PointRows& points, TevSize roi, Tev32f sine, Tev32f cosine) {
  if (exactInDouble(roi, sine, cosine)) {
    ExactVote exact(ballot, sine, cosine);
    points.forEach([&](const Tev32s* columns, Tev32s count, Tev32s y) { exact.row(columns, count, y); });
    exact.cast();
  } else {
    points.forEach([&](const Tev32s* columns, Tev32s count, Tev32s y) {
      voteByDefinition(ballot, columns, count, cosine, y * Extended{sine});
    });
  }
}

// Keeps the list sorted by descending votes; among equal ones the first found stays first.
void insert(const HoughPeak& peak, HoughPeak* peaks, int maxLineCount, int* count, Tev32s* listMinimum) {
  if (*count < maxLineCount)
    ++*count;
  else
    *listMinimum = peaks[*count - 1].votes;
  HoughPeak* const end = peaks + *count;
  HoughPeak* const place =
      std::upper_bound(peaks, end, peak, [](const HoughPeak& a, const HoughPeak& b) { return a.votes > b.votes; });
  if (place == end) return;
  std::copy_backward(place, end - 1, end);
  *place = peak;
}

}  // namespace

void ownHoughLineRound(const Tev32f* in, Tev32s* out) {
  for (int i = 0; i < 4; ++i) out[i] = rounded(in[i]);
}

long double ownTan(Tev32f x) {
  const Extended square = Extended{x} * x;
  Extended fraction = 15;
  for (int odd = 13; odd >= 1; odd -= 2) fraction = odd - square / fraction;
  return x / fraction;
}

void ownSinCos(Tev32f angle, Tev32f* sine, Tev32f* cosine) {
  const Extended t = ownTan(angle * 0.5F), square = t * t;
  *sine = static_cast<Tev32f>(2 * t / (1 + square));
  *cosine = static_cast<Tev32f>((1 - square) / (1 + square));
}

void ownHoughLineImgPack(const Tev8u* src, int srcStep, int width, int height, Tev32s* packed) {
  const auto records = Rows<Tev32s>(packed, static_cast<std::ptrdiff_t>(packedPitch(width)));
  for (int y = 0; y < height; ++y) {
    const Tev8u* const row = rows(src, srcStep)[y];
    Tev32s* const columns = records[y] + 4;
    Tev32s count = 0;
    // A column is always written and counted where the pixel is set: no branch follows the points of a group.
    for (int begin = 0; begin < width; begin += 8) {
      const int end = std::min(begin + 8, width);
      if (end - begin == 8 && isZero8(row + begin)) continue;
      for (int x = begin; x < end; ++x) {
        columns[count] = x;
        count += row[x] != 0;
      }
    }
    records[y][0] = count;
  }
}

void ownHoughLineFindPeak(const Tev32s* previous, const Tev32s* current, const Tev32s* next, int lowest, int highest,
                          int thetaIndex, int threshold, HoughPeak* peaks, int maxLineCount, int* count,
                          Tev32s* listMinimum, Tev32s* flags) {
  const Tev32s bar = *listMinimum;
  Tev32s any = 0;
#pragma GCC ivdep
  for (int k = lowest & ~3; k <= highest; ++k) {
    const Tev32s v = current[k + 1];
    const Tev32s peak = (v > threshold) & (v >= bar) & (v > current[k]) & (v >= current[k + 2]) &
                        (v > previous[k + 1]) & (v >= next[k + 1]);
    flags[k] = peak;
    any |= peak;
  }
  if (any == 0) return;
  for (int k = lowest & ~3; k <= highest; ++k)
    if (flags[k] != 0) insert({k, thetaIndex, current[k + 1], 0}, peaks, maxLineCount, count, listMinimum);
}

TevStatus teviHoughLineGetSize_8u_C1R(TevSize roiSize, Tev32f rhoStep, Tev32f thetaStep, int maxLineCount,
                                      int* bufferSize) {
  if (TevStatus s = firstFailure(notNull(bufferSize), region(roiSize), failUnless(rhoStep > 0, tevStatusBadArg),
                                 failUnless(thetaStep > 0, tevStatusBadArg)))
    return s;
  const Grid grid(roiSize, rhoStep, thetaStep);
  using Word = std::uint32_t;  // the sum wraps in 32 bits
  const Word r = static_cast<Word>(grid.rhoCount) * 4 + 4, t = static_cast<Word>(grid.thetaCount) * 8,
             q = (static_cast<Word>(roiSize.width) * 4 + 32) * static_cast<Word>(roiSize.height),
             size = static_cast<Word>(maxLineCount) * 16 + 3 * r + 132 + t + 8 + q + r + 36;
  *bufferSize = static_cast<int>(size);
  return size > 2147483647U ? tevStatusSizeWarning : tevStatusOk;
}

TevStatus teviHoughLine_8u32f_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev32f rhoStep, Tev32f thetaStep,
                                  int threshold, TevPolarLine* lines, int maxLineCount, int* lineCount, Tev8u* buffer) {
  if (TevStatus s = firstFailure(
          notNull(src, lines, lineCount, buffer), positiveStep(srcStep), region(roiSize), length(maxLineCount),
          failUnless(rhoStep > 0, tevStatusBadArg),
          failUnless(static_cast<Extended>(std::int64_t{roiSize.width} + roiSize.height) >= rhoStep, tevStatusBadArg),
          failUnless(thetaStep > 0, tevStatusBadArg), failUnless(thetaStep <= pi, tevStatusBadArg),
          failUnless(threshold >= 1, tevStatusBadArg)))
    return s;
  const Grid grid(roiSize, rhoStep, thetaStep);
  *lineCount = 0;
  // Steps so fine that their number passes 32 bits leave no accumulator.
  if (grid.rhoCount < 1 || grid.thetaCount < 1) return tevStatusOk;

  const Scratch scratch(buffer, grid, maxLineCount);
  fillTables(scratch.sine, scratch.cosine, grid.thetaCount, rhoStep, thetaStep);
  ownHoughLineImgPack(src, srcStep, roiSize.width, roiSize.height, scratch.packed);
  const PointRows points(scratch.packed, roiSize);

  int count = 0;
  Tev32s listMinimum = 0;
  const auto votesOf = [&](int thetaIndex) { return scratch.votes[(thetaIndex + 3) % 3]; };
  const auto findPeaks = [&](int thetaIndex, int lowest, int highest) {
    ownHoughLineFindPeak(votesOf(thetaIndex - 1), votesOf(thetaIndex), votesOf(thetaIndex + 1), lowest, highest,
                         thetaIndex, threshold, scratch.peaks, maxLineCount, &count, &listMinimum, scratch.flags);
  };
  int lowest = 0, highest = -1;
  for (int i = 0; i <= grid.thetaCount; ++i) {
    std::fill_n(votesOf(i), static_cast<std::size_t>(grid.rhoCount) + 1, 0);
    const Tev32s first = -grid.rhoOffset, last = first + grid.rhoCount - 1;
    Ballot ballot = {votesOf(i) + 1 + grid.rhoOffset, first, last, last, first};
    vote(ballot, points, roiSize, scratch.sine[i], scratch.cosine[i]);
    if (i > 0) findPeaks(i - 1, lowest, highest);
    lowest = ballot.lowest + grid.rhoOffset;
    highest = ballot.highest + grid.rhoOffset;
  }
  std::fill_n(votesOf(grid.thetaCount + 1), static_cast<std::size_t>(grid.rhoCount) + 1, 0);
  findPeaks(grid.thetaCount, lowest, highest);

  const int kept = std::min(count, maxLineCount);
  for (int i = 0; i < kept; ++i) {
    const HoughPeak& peak = scratch.peaks[i];
    lines[i] = {static_cast<Tev32f>(Extended{rhoStep} * (peak.rhoIndex - grid.rhoOffset)),
                static_cast<Tev32f>(Extended{thetaStep} * peak.thetaIndex)};
  }
  *lineCount = kept;
  return count > maxLineCount ? tevStatusMoreLinesWarning : tevStatusOk;
}
