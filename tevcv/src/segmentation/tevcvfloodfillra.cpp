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
// Where a walk on the image ends, the runs form no ring, and the result is the same.
namespace plane {

enum : Tev8u { outside = 0, passing = 1, taken = 2 };

struct IsPassing {
  bool operator()(const Tev8u* p) const { return *p == passing; }
};

}  // namespace plane

// The plane leaves 5 * width * height + 25 bytes for spans of 8, and the deepest stack takes 8 / 3 of (width + 1) *
// height + 2 (two spans if the width is 1).
template <int connectivity, int channels, class T, class Rule>
void fillOnPlane(T* image, int imageStep, TevSize roi, TevPoint seed, const Rule& rule, const T* value,
                 TevConnectedRegion* region, Tev8u* buffer) {
  const auto pixels = wholeElementRows(image, imageStep);
  const auto marks = rows(buffer, roi.width);
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x)
      marks[y][x] = rule(pixels[y] + std::ptrdiff_t{x} * channels) ? plane::passing : plane::outside;

  const Tev8u taken = plane::taken;
  FillImage<Tev8u, 1, plane::IsPassing> runs(buffer, roi.width, roi, plane::IsPassing{}, &taken);
  SpanStack stack(buffer + std::ptrdiff_t{roi.width} * roi.height, roi);
  const FilledArea filled = walkSpans<connectivity>(runs, seed, stack);

  for (int y = filled.top; y <= filled.bottom; ++y)
    for (int x = filled.left; x <= filled.right; ++x)
      if (marks[y][x] == plane::taken) std::copy_n(value, channels, pixels[y] + std::ptrdiff_t{x} * channels);
  filled.store(region, value, channels);
}

// Callers pass steps of floats that are merely even: rows advance by whole elements.
template <class T>
constexpr int stepMask = sizeof(T) == 1 ? 0 : 1;

template <int connectivity, int channels, class T>
TevStatus fill(T* image, int imageStep, TevSize roi, TevPoint seed, const T* value, const T* lowerDiff,
               const T* upperDiff, TevConnectedRegion* region, Tev8u* buffer) {
  if (TevStatus s =
          fillArguments(image, imageStep, roi, seed, stepMask<T>, region, buffer, value, lowerDiff, upperDiff))
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
