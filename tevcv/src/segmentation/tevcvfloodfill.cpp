// Flood fill of the pixels that equal the seed, and the size of the buffer.
#include "segmentation/floodfill.h"

using namespace tevcv;

namespace {

// Equal to the seed in every channel. NaN equals everything.
template <class T, int channels>
struct EqualToSeed {
  T seed[channels];

  explicit EqualToSeed(const T* pixel) { std::copy_n(pixel, channels, seed); }
  bool operator()(const T* p) const {
    bool equal = true;
    for (int c = 0; c < channels; ++c) equal &= alike(p[c], seed[c]);
    return equal;
  }
};

template <int connectivity, int channels, class T>
TevStatus fill(T* image, int imageStep, TevSize roi, TevPoint seed, const T* value, TevConnectedRegion* region,
               Tev8u* buffer) {
  if (TevStatus s = fillArguments(image, imageStep, roi, seed, evenStep<T>, region, buffer, value)) return s;
  const T* const pixel = wholeElementRows(image, imageStep)[seed.y] + std::ptrdiff_t{seed.x} * channels;
  if (alikeInAllChannels<T, channels>(pixel, value)) return tevStatusOk;
  fillByRule<connectivity, channels>(image, imageStep, roi, seed, EqualToSeed<T, channels>(pixel), value, region,
                                     buffer);
  return tevStatusOk;
}

}  // namespace

// Both queries are defined modulo 2^32, as the 32-bit result holds them.
TevStatus teviFloodFillGetSize(TevSize roiSize, int* bufferSize) {
  if (TevStatus s = firstFailure(notNull(bufferSize), region(roiSize))) return s;
  *bufferSize =
      static_cast<int>(6U * static_cast<unsigned>(roiSize.width) * static_cast<unsigned>(roiSize.height) + 32U);
  return tevStatusOk;
}

TevStatus teviFloodFill_4Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed, Tev8u newValue,
                                     TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 1>(image, imageStep, roiSize, seed, &newValue, region, buffer);
}

TevStatus teviFloodFill_4Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed, const Tev8u* newValue,
                                     TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 3>(image, imageStep, roiSize, seed, newValue, region, buffer);
}

TevStatus teviFloodFill_4Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed, Tev32f newValue,
                                      TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 1>(image, imageStep, roiSize, seed, &newValue, region, buffer);
}

TevStatus teviFloodFill_4Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                      const Tev32f* newValue, TevConnectedRegion* region, Tev8u* buffer) {
  return fill<4, 3>(image, imageStep, roiSize, seed, newValue, region, buffer);
}

TevStatus teviFloodFill_8Con_8u_C1IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed, Tev8u newValue,
                                     TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 1>(image, imageStep, roiSize, seed, &newValue, region, buffer);
}

TevStatus teviFloodFill_8Con_8u_C3IR(Tev8u* image, int imageStep, TevSize roiSize, TevPoint seed, const Tev8u* newValue,
                                     TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 3>(image, imageStep, roiSize, seed, newValue, region, buffer);
}

TevStatus teviFloodFill_8Con_32f_C1IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed, Tev32f newValue,
                                      TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 1>(image, imageStep, roiSize, seed, &newValue, region, buffer);
}

TevStatus teviFloodFill_8Con_32f_C3IR(Tev32f* image, int imageStep, TevSize roiSize, TevPoint seed,
                                      const Tev32f* newValue, TevConnectedRegion* region, Tev8u* buffer) {
  return fill<8, 3>(image, imageStep, roiSize, seed, newValue, region, buffer);
}
