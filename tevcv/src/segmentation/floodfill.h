// What all fills share: the span, the stack of spans in the caller's buffer, the result record, and the walk of the
// fills that keep their progress in the image itself.
//
// A fill takes a seed's row run, a span, writes it, and puts it on a stack; each span popped looks for runs that touch
// it in the two rows beside its own. The caller's buffer has 6 * width * height + 32 bytes for the stack.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/segmentation.h"

namespace tevcv {

// A run of filled pixels and the span that it was found from, both with their last column included. The parent lies in
// row + direction, the back row; row - direction is the forward row, at which nobody has looked from here.
struct FloodSpan {
  Tev32s row;
  Tev32s left, right;
  Tev32s parentLeft, parentRight;
  Tev32s direction;
};
static_assert(sizeof(FloodSpan) == 24);

inline Tev8u* alignedTo8(Tev8u* p) {
  return reinterpret_cast<Tev8u*>((reinterpret_cast<std::uintptr_t>(p) + 7) & ~std::uintptr_t{7});
}

// Spans without their parents, 8 bytes each. The deepest stack is what decides the size. Let the spans popped so far
// hold N pixels in P runs. A popped span of n pixels finds at most
//
//   n     new spans where runs of a row never touch and 4 neighbours count,
//   n + 2 where 8 neighbours count,
//   n + 3 where runs may touch (floating ranges, 8 neighbours),
//
// and leaves the stack itself; the seed, without a parent, finds one more. With a pixel of gap behind each run, a stack
// of S spans takes N + P + 2 S <= (width + 1) * height in the first two cases, so S <= ((width + 1) * height + 2) / 3.
// In the last one N + S <= width * height, so S <= (3 * width * height + 1) / 4. With 8 bytes a span both fit every
// buffer, at any address.
//
// The buffer's size counts a quarter of all pixels and records of 24 bytes. That is too little for a row filled whole
// between two combs, which leaves a third of all pixels on the stack (4 spans, 96 of 86 bytes, in a region of 3 x 3;
// 1.33 times the buffer at 2000 x 3) and for some square regions (24 spans, 576 of 518 bytes, at 9 x 9).
//
// Without a parent the whole back row is looked at again. That finds the same spans in the same order: the parent's
// pixels are filled and do not pass.
class SpanStack {
 public:
  static constexpr bool keepsParents = false;

  SpanStack(Tev8u* buffer, TevSize roi)
      : bottom_(reinterpret_cast<std::uint64_t*>(alignedTo8(buffer))),
        top_(bottom_),
        columnBits_(std::bit_width(static_cast<unsigned>(roi.width - 1))) {}

  bool empty() const { return top_ == bottom_; }

  // Row, left, right and direction fit 64 bits for every region of less than 2^31 pixels.
  void push(const FloodSpan& s) {
    const auto row = static_cast<std::uint64_t>(s.row), left = static_cast<std::uint64_t>(s.left),
               right = static_cast<std::uint64_t>(s.right);
    *top_++ = ((((row << columnBits_) | left) << columnBits_) | right) << 1 | (s.direction > 0 ? 1 : 0);
  }

  FloodSpan pop() {
    std::uint64_t word = *--top_;
    const auto mask = (std::uint64_t{1} << columnBits_) - 1;
    FloodSpan s = {};
    s.direction = word & 1 ? 1 : -1;
    word >>= 1;
    s.right = static_cast<Tev32s>(word & mask);
    word >>= columnBits_;
    s.left = static_cast<Tev32s>(word & mask);
    s.row = static_cast<Tev32s>(word >> columnBits_);
    return s;
  }

 private:
  std::uint64_t* bottom_;
  std::uint64_t* top_;
  int columnBits_;
};

// Whole records, for regions whose rows overlap in memory: there a parent's pixels may have changed since, and only the
// walk that leaves them out gives the result that callers have seen. No bound holds for such a region; spans beyond the
// buffer's end are dropped.
class SpanRecordStack {
 public:
  static constexpr bool keepsParents = true;

  SpanRecordStack(Tev8u* buffer, TevSize roi)
      : bottom_(reinterpret_cast<FloodSpan*>(alignedTo8(buffer))), top_(bottom_) {
    const auto bytes = std::int64_t{6} * roi.width * roi.height + 32 - (alignedTo8(buffer) - buffer);
    end_ = bottom_ + bytes / int{sizeof(FloodSpan)};
  }

  bool empty() const { return top_ == bottom_; }
  void push(const FloodSpan& s) {
    if (top_ != end_) *top_++ = s;
  }
  FloodSpan pop() { return *--top_; }

 private:
  FloodSpan* bottom_;
  FloodSpan* top_;
  FloodSpan* end_;
};

// Area and bounds of what is filled so far.
struct FilledArea {
  Tev64f area = 0;
  int left, top, right, bottom;

  explicit FilledArea(const FloodSpan& seed) : left(seed.left), top(seed.row), right(seed.right), bottom(seed.row) {}

  void widen(const FloodSpan& s) {
    left = std::min(left, s.left);
    right = std::max(right, s.right);
    top = std::min(top, s.row);
    bottom = std::max(bottom, s.row);
  }

  template <class T>
  void store(TevConnectedRegion* region, const T* value, int channels) const {
    region->area = area;
    for (int c = 0; c < 3; ++c) region->value[c] = c < channels ? static_cast<Tev64f>(value[c]) : 0.0;
    region->rect = {left, top, right - left + 1, bottom - top + 1};
  }
};

// The arguments that all fills have in common, checked in their fixed order. A row's step is measured against one
// element a pixel, for three channels too, and the step of floats by `stepMask` alone: callers pass such steps.
template <class T, class... Pointer>
TevStatus fillArguments(const T* image, int imageStep, TevSize roi, TevPoint seed, int stepMask, Pointer... pointers) {
  return firstFailure(
      notNull(image, pointers...), region(roi), rowFits<T>(imageStep, roi.width),
      failUnless((imageStep & stepMask) == 0, tevStatusStepNotAligned),
      failUnless(seed.x >= 0 && seed.x < roi.width && seed.y >= 0 && seed.y < roi.height, tevStatusBadPoint));
}

// Steps of floats that are merely even pass in the fills that know no floating range: rows advance by whole elements.
template <class T>
constexpr int evenStep = sizeof(T) == 1 ? 0 : 1;

// True unless one of two floats is less or greater: NaN is like everything.
template <class T>
constexpr bool alike(T a, T b) {
  return !(a < b) & !(a > b);
}

// A value in every channel of the seed.
template <class T, int channels>
bool alikeInAllChannels(const T* a, const T* b) {
  for (int c = 0; c < channels; ++c)
    if (!alike(a[c], b[c])) return false;
  return true;
}

// An image that is filled, where the rule, a test of one pixel, decides which pixels are taken. A filled pixel must not
// pass. The first pixels of a run are looked at one by one, the next ones in blocks of two sizes, in vectors.
template <class T, int channels, class Rule>
class FillImage {
 public:
  FillImage(T* image, int imageStep, TevSize roi, const Rule& rule, const T* value)
      : rows_(wholeElementRows(image, imageStep)), width_(roi.width), height_(roi.height), rule_(rule) {
    std::copy_n(value, channels, value_);
  }

  int width() const { return width_; }
  int height() const { return height_; }

  // The first column from x to end - 1 that passes, or end.
  int firstPassing(int y, int x, int end) const {
    const T* const row = rows_[y];
    for (const int few = x + std::min(single, end - x); x < few; ++x)
      if (passes(row, x)) return x;
    while (end - x >= block && !anyPasses<block>(row, x)) x += block;
    while (end - x >= smallBlock && !anyPasses<smallBlock>(row, x)) x += smallBlock;
    while (x < end && !passes(row, x)) ++x;
    return x;
  }

  // Fills the run of passing pixels around x, which is filled without a test. The left side goes first.
  FloodSpan takeRun(int y, int x) {
    T* const row = rows_[y];
    write(row, x);
    const int left = takeLeft(row, x - 1) + 1;
    return {y, left, takeRight(row, x + 1) - 1, 0, 0, 0};
  }

 private:
  static constexpr int single = 16;
  static constexpr int smallBlock = 16;
  static constexpr int block = 64;

  bool passes(const T* row, int x) const { return rule_(row + std::ptrdiff_t{x} * channels); }
  void write(T* row, int x) const {
    for (int c = 0; c < channels; ++c) row[std::ptrdiff_t{x} * channels + c] = value_[c];
  }

  // Over `count` pixels from x on, without a branch. The flag is as wide as an element, which suits the vectors best.
  using Flag = std::conditional_t<sizeof(T) == 1, Tev8u, Tev32s>;
  template <int count>
  bool anyPasses(const T* row, int x) const {
    const T* const p = row + std::ptrdiff_t{x} * channels;
    Flag any = 0;
    for (int i = 0; i < count; ++i) any |= rule_(p + i * channels) ? Flag{1} : Flag{0};
    return any != 0;
  }
  template <int count>
  bool allPass(const T* row, int x) const {
    const T* const p = row + std::ptrdiff_t{x} * channels;
    Flag fails = 0;
    for (int i = 0; i < count; ++i) fails |= rule_(p + i * channels) ? Flag{0} : Flag{1};
    return fails == 0;
  }
  template <int count>
  void writeBlock(T* row, int x) const {
    for (int i = 0; i < count; ++i) write(row, x + i);
  }

  // Fills from x rightward, and leftward, while pixels pass; returns the first column that is not taken.
  int takeRight(T* row, int x) const {
    for (const int few = x + std::min(single, width_ - x); x < few; ++x) {
      if (!passes(row, x)) return x;
      write(row, x);
    }
    for (; width_ - x >= block && allPass<block>(row, x); x += block) writeBlock<block>(row, x);
    for (; width_ - x >= smallBlock && allPass<smallBlock>(row, x); x += smallBlock) writeBlock<smallBlock>(row, x);
    for (; x < width_ && passes(row, x); ++x) write(row, x);
    return x;
  }
  int takeLeft(T* row, int x) const {
    for (const int few = std::max(-1, x - single); x > few; --x) {
      if (!passes(row, x)) return x;
      write(row, x);
    }
    for (; x + 1 >= block && allPass<block>(row, x + 1 - block); x -= block) writeBlock<block>(row, x + 1 - block);
    for (; x + 1 >= smallBlock && allPass<smallBlock>(row, x + 1 - smallBlock); x -= smallBlock)
      writeBlock<smallBlock>(row, x + 1 - smallBlock);
    for (; x >= 0 && passes(row, x); --x) write(row, x);
    return x;
  }

  Rows<T> rows_;
  int width_;
  int height_;
  Rule rule_;
  T value_[channels];
};

// The walk of the fills whose progress is kept in the image: what is filled does not pass again.
template <int connectivity, class Image, class Stack>
FilledArea walkSpans(Image& image, TevPoint seed, Stack& stack) {
  constexpr int reach = connectivity == 8 ? 1 : 0;
  FloodSpan span = image.takeRun(seed.y, seed.x);
  FilledArea filled(span);
  filled.area = span.right - span.left + 1;
  if (image.height() == 1) return filled;

  // The seed has no parent: its back row, which has to lie in the image, is looked at along the whole span.
  span.parentLeft = span.right + 1;
  span.parentRight = span.right;
  span.direction = seed.y == image.height() - 1 ? -1 : 1;
  stack.push(span);

  // Takes the runs that touch `from` in row y at columns x to end - 1. Behind a run stands a pixel that does not pass.
  const auto scan = [&](int y, int x, int end, const FloodSpan& from, int direction) {
    while ((x = image.firstPassing(y, x, end)) < end) {
      FloodSpan run = image.takeRun(y, x);
      run.parentLeft = from.left;
      run.parentRight = from.right;
      run.direction = direction;
      stack.push(run);
      filled.area += run.right - run.left + 1;
      x = run.right + 2;
    }
  };

  while (!stack.empty()) {
    span = stack.pop();
    filled.widen(span);
    const int first = std::max(span.left - reach, 0), end = std::min(span.right + 1 + reach, image.width());
    const int forward = span.row - span.direction, back = span.row + span.direction;
    if (forward >= 0 && forward < image.height()) scan(forward, first, end, span, span.direction);
    if constexpr (Stack::keepsParents) {
      scan(back, first, span.parentLeft, span, -span.direction);
      scan(back, span.parentRight + 1, end, span, -span.direction);
    } else {
      scan(back, first, end, span, -span.direction);
    }
  }
  return filled;
}

// Fills by a rule that the filled pixels do not pass.
template <int connectivity, int channels, class T, class Rule>
void fillByRule(T* image, int imageStep, TevSize roi, TevPoint seed, const Rule& rule, const T* value,
                TevConnectedRegion* region, Tev8u* buffer) {
  FillImage<T, channels, Rule> pixels(image, imageStep, roi, rule, value);
  if constexpr (channels > 1)
    if (imageStep < std::int64_t{roi.width} * channels * int{sizeof(T)}) {
      SpanRecordStack stack(buffer, roi);
      walkSpans<connectivity>(pixels, seed, stack).store(region, value, channels);
      return;
    }
  SpanStack stack(buffer, roi);
  walkSpans<connectivity>(pixels, seed, stack).store(region, value, channels);
}

}  // namespace tevcv
