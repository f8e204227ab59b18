// Flood fill of the pixels that lie in a range fixed around the seed.
#include <cmath>
#include <limits>

#include "frame/arithmetic.h"
#include "segmentation/floodfill.h"

using namespace tevcv;

namespace {

// The least float that is not below a bound, and the greatest that is not above: a float passes against these just as
// against the bound itself, which is kept in extended precision. A NaN stays one, and nothing passes it.
Tev32f leastNotBelow(Extended bound) {
  const auto nearest = static_cast<Tev32f>(bound);
  return nearest < bound ? std::nextafter(nearest, std::numeric_limits<Tev32f>::infinity()) : nearest;
}
Tev32f greatestNotAbove(Extended bound) {
  const auto nearest = static_cast<Tev32f>(bound);
  return nearest > bound ? std::nextafter(nearest, -std::numeric_limits<Tev32f>::infinity()) : nearest;
}

Tev32f lowerBound(Tev32f seed, Tev32f difference) { return leastNotBelow(Extended{seed} - Extended{difference}); }
Tev32f upperBound(Tev32f seed, Tev32f difference) { return greatestNotAbove(Extended{seed} + Extended{difference}); }
Tev8u lowerBound(Tev8u seed, Tev8u difference) { return saturate<Tev8u>(seed - difference); }
Tev8u upperBound(Tev8u seed, Tev8u difference) { return saturate<Tev8u>(seed + difference); }

// low <= pixel <= high in every channel. A NaN fails.
template <class T, int channels>
struct InRange {
  T low[channels], high[channels];

  InRange(const T* seed, const T* lowerDiff, const T* upperDiff) {
    for (int c = 0; c < channels; ++c) {
      low[c] = lowerBound(seed[c], lowerDiff[c]);
      high[c] = upperBound(seed[c], upperDiff[c]);
    }
  }
  bool operator()(const T* p) const {
    bool inside = true;
    for (int c = 0; c < channels; ++c) inside &= (p[c] >= low[c]) & (p[c] <= high[c]);
    return inside;
  }
};

// Where the new value passes its own rule, the image cannot tell what is filled, and a walk around a hole would never
// end. The fill runs on a plane in front of the stack instead, one byte a pixel, so that each pixel is taken once.
class MarkPlane {
  enum : Tev8u { outside = 0, passing = 1, taken = 2, takenAgain = 3 };

  template <Tev8u mark>
  struct Is {
    bool operator()(const Tev8u* p) const { return *p == mark; }
  };

 public:
  // The plane leaves 5 * width * height + 25 bytes for spans of 8, and the deepest stack takes 8 / 3 of (width + 1) *
  // height + 2 (two spans if the width is 1).
  MarkPlane(Tev8u* buffer, TevSize roi)
      : marks_(rows(buffer, roi.width)), roi_(roi), stackBuffer_(buffer + std::ptrdiff_t{roi.width} * roi.height) {}

  void set(int x, int y, bool passes) { marks_[y][x] = passes ? passing : outside; }
  bool isTaken(int x, int y) const {
    return x >= 0 && x < roi_.width && y >= 0 && y < roi_.height && marks_[y][x] == taken;
  }

  template <int connectivity>
  FilledArea fill(TevPoint seed) {
    return fillMarks<connectivity, passing, taken>(seed);
  }

  // Pixels that the walk on the image counts twice and still ends. With 8 neighbours the seed's back row is looked at
  // up to the seed span's last column and once more in the column behind it, so a run that lies in both is found twice,
  // with all that hangs on it. Where the runs form a ring that walk has no end, and nothing counts twice. Clears the
  // seed span's marks.
  Tev64f countedTwice(TevPoint seed, const FilledArea& filled) {
    const int back = seed.y == roi_.height - 1 ? seed.y - 1 : seed.y + 1;
    int left = seed.x, right = seed.x;
    while (isTaken(left - 1, seed.y)) --left;
    while (isTaken(right + 1, seed.y)) ++right;
    if (!isTaken(right, back) || !isTaken(right + 1, back) || hasHoles(filled)) return 0;
    std::fill(marks_[seed.y] + left, marks_[seed.y] + right + 1, outside);
    return fillMarks<8, taken, takenAgain>({right, back}).area;
  }

 private:
  template <int connectivity, Tev8u from, Tev8u to>
  FilledArea fillMarks(TevPoint seed) {
    const Tev8u value = to;
    FillImage<Tev8u, 1, Is<from>> image(marks_[0], roi_.width, roi_, Is<from>{}, &value);
    SpanStack stack(stackBuffer_, roi_);
    return walkSpans<connectivity>(image, seed, stack);
  }

  // The Euler number of an 8-connected figure, components less holes, from its 2 x 2 neighbourhoods (S. B. Gray, "Local
  // properties of binary images in two dimensions", 1971).
  bool hasHoles(const FilledArea& filled) const {
    std::int64_t fourfold = 0;
    for (int y = filled.top - 1; y <= filled.bottom; ++y)
      for (int x = filled.left - 1; x <= filled.right; ++x) {
        const bool a = isTaken(x, y), b = isTaken(x + 1, y), c = isTaken(x, y + 1), d = isTaken(x + 1, y + 1);
        const int count = a + b + c + d;
        fourfold += count == 1 ? 1 : count == 3 ? -1 : count == 2 && a == d ? -2 : 0;
      }
    return fourfold != 4;
  }

  Rows<Tev8u> marks_;
  TevSize roi_;
  Tev8u* stackBuffer_;
};

template <int connectivity, int channels, class T, class Rule>
void fillOnPlane(T* image, int imageStep, TevSize roi, TevPoint seed, const Rule& rule, const T* value,
                 TevConnectedRegion* region, Tev8u* buffer) {
  const auto pixels = wholeElementRows(image, imageStep);
  MarkPlane plane(buffer, roi);
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) plane.set(x, y, rule(pixels[y] + std::ptrdiff_t{x} * channels));

  FilledArea filled = plane.fill<connectivity>(seed);
  for (int y = filled.top; y <= filled.bottom; ++y)
    for (int x = filled.left; x <= filled.right; ++x)
      if (plane.isTaken(x, y)) std::copy_n(value, channels, pixels[y] + std::ptrdiff_t{x} * channels);
  if (connectivity == 8 && roi.height > 1) filled.area += plane.countedTwice(seed, filled);
  filled.store(region, value, channels);
}

template <int connectivity, int channels, class T>
TevStatus fill(T* image, int imageStep, TevSize roi, TevPoint seed, const T* value, const T* lowerDiff,
               const T* upperDiff, TevConnectedRegion* region, Tev8u* buffer) {
  if (TevStatus s =
          fillArguments(image, imageStep, roi, seed, evenStep<T>, region, buffer, value, lowerDiff, upperDiff))
    return s;
  const T* const pixel = wholeElementRows(image, imageStep)[seed.y] + std::ptrdiff_t{seed.x} * channels;
  if (alikeInAllChannels<T, channels>(pixel, value)) return tevStatusOk;
  const InRange<T, channels> rule(pixel, lowerDiff, upperDiff);
  if (rule(value))
    fillOnPlane<connectivity, channels>(image, imageStep, roi, seed, rule, value, region, buffer);
  else
    fillByRule<connectivity, channels>(image, imageStep, roi, seed, rule, value, region, buffer);
  return tevStatusOk;
}

}  // namespace

TevStatus teviFloodFill_Range4Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed, Tev8u newValue,
                                          Tev8u lowerDiff, Tev8u upperDiff, TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 1>(image, imageStep, roiSize, seed, &newValue, &lowerDiff, &upperDiff, region, buffer);
}

TevStatus teviFloodFill_Range4Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                          const Tev8u* newValue, const Tev8u* lowerDiff, const Tev8u* upperDiff,
                                          TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 3>(image, imageStep, roiSize, seed, newValue, lowerDiff, upperDiff, region, buffer);
}

TevStatus teviFloodFill_Range4Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                           Tev32f newValue, Tev32f lowerDiff, Tev32f upperDiff,
                                           TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 1>(image, imageStep, roiSize, seed, &newValue, &lowerDiff, &upperDiff, region, buffer);
}

TevStatus teviFloodFill_Range4Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                           const Tev32f* newValue, const Tev32f* lowerDiff, const Tev32f* upperDiff,
                                           TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 3>(image, imageStep, roiSize, seed, newValue, lowerDiff, upperDiff, region, buffer);
}

TevStatus teviFloodFill_Range8Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed, Tev8u newValue,
                                          Tev8u lowerDiff, Tev8u upperDiff, TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 1>(image, imageStep, roiSize, seed, &newValue, &lowerDiff, &upperDiff, region, buffer);
}

TevStatus teviFloodFill_Range8Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed,
                                          const Tev8u* newValue, const Tev8u* lowerDiff, const Tev8u* upperDiff,
                                          TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 3>(image, imageStep, roiSize, seed, newValue, lowerDiff, upperDiff, region, buffer);
}

TevStatus teviFloodFill_Range8Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                           Tev32f newValue, Tev32f lowerDiff, Tev32f upperDiff,
                                           TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 1>(image, imageStep, roiSize, seed, &newValue, &lowerDiff, &upperDiff, region, buffer);
}

TevStatus teviFloodFill_Range8Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                           const Tev32f* newValue, const Tev32f* lowerDiff, const Tev32f* upperDiff,
                                           TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 3>(image, imageStep, roiSize, seed, newValue, lowerDiff, upperDiff, region, buffer);
}
