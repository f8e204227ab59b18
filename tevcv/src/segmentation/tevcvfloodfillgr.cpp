// Flood fill with a floating range: a pixel joins if it lies in a range around a neighbour that has been accepted.
//
// Which pixels are reached first decides which are reached at all, so the order of the walk is part of the result. A
// mask of one byte a pixel, with a border of ones, tells what is accepted; a span is written when it leaves the stack,
// so that all comparisons see the old values.
#include <cmath>
#include <cstring>

#include "frame/arithmetic.h"
#include "segmentation/floodfill.h"

using namespace tevcv;

namespace {

// b - lower <= c <= b + upper, as one unsigned comparison.
struct SimilarBytes {
  unsigned lower, width;

  SimilarBytes(Tev8u lowerDiff, Tev8u upperDiff) : lower(lowerDiff), width(unsigned{lowerDiff} + upperDiff) {}
  bool operator()(Tev8u c, Tev8u b) const { return c + lower - b <= width; }
};

// The same as the distance from the middle of the range, with both halves rounded to float. A NaN is similar.
struct SimilarFloats {
  Tev32f shift, half;

  SimilarFloats(Tev32f lowerDiff, Tev32f upperDiff)
      : shift(static_cast<Tev32f>((Extended{lowerDiff} - Extended{upperDiff}) * 0.5L)),
        half(static_cast<Tev32f>((Extended{lowerDiff} + Extended{upperDiff}) * 0.5L)) {}
  bool operator()(Tev32f c, Tev32f b) const {
    return !(std::fabs(Extended{c} + Extended{shift} - Extended{b}) > Extended{half});
  }
};

SimilarBytes similarity(Tev8u lowerDiff, Tev8u upperDiff) { return {lowerDiff, upperDiff}; }
SimilarFloats similarity(Tev32f lowerDiff, Tev32f upperDiff) { return {lowerDiff, upperDiff}; }

// Similar in every channel.
template <class T, int channels>
class Similar {
  using Channel = decltype(similarity(T{}, T{}));

 public:
  Similar(const T* lowerDiff, const T* upperDiff)
      : Similar(lowerDiff, upperDiff, std::make_index_sequence<channels>{}) {}
  bool operator()(const T* c, const T* b) const {
    for (int i = 0; i < channels; ++i)
      if (!channel_[i](c[i], b[i])) return false;
    return true;
  }

 private:
  template <std::size_t... c>
  Similar(const T* lowerDiff, const T* upperDiff, std::index_sequence<c...>)
      : channel_{similarity(lowerDiff[c], upperDiff[c])...} {}
  Channel channel_[channels];
};

template <int connectivity, int channels, class T>
class FloatingFill {
  static constexpr int reach = connectivity == 8 ? 1 : 0;

 public:
  FloatingFill(T* image, int imageStep, TevSize roi, const T* lowerDiff, const T* upperDiff, Tev8u* buffer)
      : rows_(image, imageStep),
        mask_(buffer + roi.width + 3, std::ptrdiff_t{roi.width} + 2),
        roi_(roi),
        similar_(lowerDiff, upperDiff),
        stack_(buffer + (std::ptrdiff_t{roi.width} + 2) * (std::ptrdiff_t{roi.height} + 2), roi) {
    const auto pitch = static_cast<std::size_t>(roi.width) + 2;
    std::memset(mask_[-1] - 1, 1, pitch);
    for (int y = 0; y < roi.height; ++y) {
      mask_[y][-1] = mask_[y][roi.width] = 1;
      std::memset(mask_[y], 0, pitch - 2);
    }
    std::memset(mask_[roi.height] - 1, 1, pitch);
  }

  FilledArea run(TevPoint seed, const T* value) {
    FloodSpan span = seedSpan(seed);
    FilledArea filled(span);
    stack_.push(span);
    while (!stack_.empty()) {
      span = stack_.pop();
      filled.widen(span);
      scan(span, span.row - span.direction, span.direction);
      scan(span, span.row + span.direction, -span.direction);
      write(span, value);
      filled.area += span.right - span.left + 1;
    }
    return filled;
  }

 private:
  const T* pixel(const T* row, int x) const { return row + std::ptrdiff_t{x} * channels; }

  // The right side goes first, and each pixel is compared with the one just accepted.
  FloodSpan seedSpan(TevPoint seed) {
    Tev8u* const mask = mask_[seed.y];
    const T* const row = rows_[seed.y];
    int left = seed.x, right = seed.x;
    mask[seed.x] = 1;
    while (!mask[right + 1] && similar_(pixel(row, right + 1), pixel(row, right))) mask[++right] = 1;
    while (!mask[left - 1] && similar_(pixel(row, left - 1), pixel(row, left))) mask[--left] = 1;
    return {seed.y, left, right, right + 1, right, 1};
  }

  // A pixel similar to one of the popped span's that it touches.
  bool connected(const T* candidate, const T* spanRow, const FloodSpan& span, int x) const {
    for (int n = std::max(x - reach, span.left); n <= std::min(x + reach, span.right); ++n)
      if (similar_(candidate, pixel(spanRow, n))) return true;
    return false;
  }

  // Looks in row y for pixels not yet accepted that are similar to the popped span's. The back row is looked at along
  // the whole span: what the parent covers is accepted already.
  void scan(const FloodSpan& span, int y, int direction) {
    if (y < 0 || y >= roi_.height) return;
    Tev8u* const mask = mask_[y];
    const T* const row = rows_[y];
    const T* const spanRow = rows_[span.row];
    for (int x = span.left - reach; x <= span.right + reach; ++x) {
      if (mask[x] || !connected(pixel(row, x), spanRow, span, x)) continue;
      mask[x] = 1;
      // To the left a pixel has to be similar to its neighbour in the run. To the right it may be similar to the popped
      // span instead. The two sides differ on purpose: results depend on it.
      int left = x, right = x;
      while (!mask[left - 1] && similar_(pixel(row, left - 1), pixel(row, left))) mask[--left] = 1;
      while (!mask[right + 1] && (similar_(pixel(row, right + 1), pixel(row, right)) ||
                                  connected(pixel(row, right + 1), spanRow, span, right + 1)))
        mask[++right] = 1;
      stack_.push({y, left, right, span.left, span.right, direction});
      x = right + 1;
    }
  }

  void write(const FloodSpan& span, const T* value) {
    T* p = rows_[span.row] + std::ptrdiff_t{span.left} * channels;
    for (int x = span.left; x <= span.right; ++x)
      for (int c = 0; c < channels; ++c) *p++ = value[c];
  }

  Rows<T> rows_;
  Rows<Tev8u> mask_;
  TevSize roi_;
  Similar<T, channels> similar_;
  SpanStack stack_;
};

template <int channels>
TevStatus notNegative(const Tev32f* lowerDiff, const Tev32f* upperDiff) {
  for (int c = 0; c < channels; ++c)
    if (!(lowerDiff[c] >= 0) || !(upperDiff[c] >= 0)) return tevStatusBadPoint;
  return tevStatusOk;
}
template <int channels>
TevStatus notNegative(const Tev8u*, const Tev8u*) {
  return tevStatusOk;
}

template <int connectivity, int channels, class T>
TevStatus fillChecked(T* image, int imageStep, TevSize roi, TevPoint seed, const T* value, const T* lowerDiff,
                      const T* upperDiff, TevConnectedRegion* region, Tev8u* buffer) {
  FloatingFill<connectivity, channels, T> fill(image, imageStep, roi, lowerDiff, upperDiff, buffer);
  fill.run(seed, value).store(region, value, channels);
  return tevStatusOk;
}

template <int connectivity, int channels, class T>
TevStatus fill(T* image, int imageStep, TevSize roi, TevPoint seed, const T* value, const T* lowerDiff,
               const T* upperDiff, TevConnectedRegion* region, Tev8u* buffer) {
  if (TevStatus s =
          fillArguments(image, imageStep, roi, seed, int{sizeof(T)} - 1, region, buffer, value, lowerDiff, upperDiff))
    return s;
  if (TevStatus s = notNegative<channels>(lowerDiff, upperDiff)) return s;
  return fillChecked<connectivity, channels>(image, imageStep, roi, seed, value, lowerDiff, upperDiff, region, buffer);
}

}  // namespace

TevStatus teviFloodFillGetSize_Grad(TevSize roiSize, int* bufferSize) {
  if (TevStatus s = firstFailure(notNull(bufferSize), region(roiSize))) return s;
  const auto width = static_cast<unsigned>(roiSize.width), height = static_cast<unsigned>(roiSize.height);
  *bufferSize = static_cast<int>((width + 2) * (height + 2) + 6U * width * height + 32U);
  return tevStatusOk;
}

TevStatus teviFloodFill_Grad4Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed, Tev8u newValue,
                                         Tev8u lowerDiff, Tev8u upperDiff, TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 1>(image, imageStep, roiSize, seed, &newValue, &lowerDiff, &upperDiff, region, buffer);
}

TevStatus teviFloodFill_Grad4Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                         const Tev8u* newValue, const Tev8u* lowerDiff, const Tev8u* upperDiff,
                                         TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 3>(image, imageStep, roiSize, seed, newValue, lowerDiff, upperDiff, region, buffer);
}

TevStatus teviFloodFill_Grad4Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed, Tev32f newValue,
                                          Tev32f lowerDiff, Tev32f upperDiff, TevConnectedRegion* region,
                                          Tev8u* buffer) {
  return fill<4, 1>(image, imageStep, roiSize, seed, &newValue, &lowerDiff, &upperDiff, region, buffer);
}

TevStatus teviFloodFill_Grad4Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                          const Tev32f* newValue, const Tev32f* lowerDiff, const Tev32f* upperDiff,
                                          TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 3>(image, imageStep, roiSize, seed, newValue, lowerDiff, upperDiff, region, buffer);
}

TevStatus teviFloodFill_Grad8Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed, Tev8u newValue,
                                         Tev8u lowerDiff, Tev8u upperDiff, TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 1>(image, imageStep, roiSize, seed, &newValue, &lowerDiff, &upperDiff, region, buffer);
}

// This member alone leaves the three value pointers untested; callers see a bad size or step reported before them.
TevStatus teviFloodFill_Grad8Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                         const Tev8u* newValue, const Tev8u* lowerDiff, const Tev8u* upperDiff,
                                         TevConnectedRegion* region, Tev8u* buffer) {
  if (TevStatus s = fillArguments(image, imageStep, roiSize, seed, 0, region, buffer)) return s;
  return fillChecked<8, 3>(image, imageStep, roiSize, seed, newValue, lowerDiff, upperDiff, region, buffer);
}

TevStatus teviFloodFill_Grad8Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed, Tev32f newValue,
                                          Tev32f lowerDiff, Tev32f upperDiff, TevConnectedRegion* region,
                                          Tev8u* buffer) {
  return fill<8, 1>(image, imageStep, roiSize, seed, &newValue, &lowerDiff, &upperDiff, region, buffer);
}

TevStatus teviFloodFill_Grad8Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                          const Tev32f* newValue, const Tev32f* lowerDiff, const Tev32f* upperDiff,
                                          TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 3>(image, imageStep, roiSize, seed, newValue, lowerDiff, upperDiff, region, buffer);
}
