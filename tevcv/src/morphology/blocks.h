// Where things lie in the blocks and buffers of this subsystem. Boundaries are those of the absolute address. Sizes are
// formed in 64 bits and told saturated: the largest size stands for all that cannot be had.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "tevcv/types.h"

namespace tevcv {

// `boundary` is a power of two.
template <class N>
constexpr N roundUp(N count, N boundary) {
  return (count + boundary - 1) & ~(boundary - 1);
}

inline Tev8u* nextBoundary(void* p, std::uintptr_t boundary) {
  return reinterpret_cast<Tev8u*>(roundUp(reinterpret_cast<std::uintptr_t>(p), boundary));
}

// Bytes from one line to the next where lines begin on 32-byte boundaries.
template <class T>
constexpr std::ptrdiff_t lineStride(int width, int channels) {
  return roundUp(std::ptrdiff_t{width} * channels * std::ptrdiff_t{sizeof(T)}, std::ptrdiff_t{32});
}

// The buffer of the separable filters: a ring of 4 * maskHeight pointers, padding, two blocks of maskHeight lines. A
// line is capped where no buffer could hold it: the product with the height stays in 64 bits.
constexpr std::uint64_t separableBufferBytes(int roiWidth, int pixelBytes, int maskHeight) {
  const std::uint64_t height = static_cast<unsigned>(maskHeight);
  const std::uint64_t line = std::min(static_cast<std::uint64_t>(roiWidth) * pixelBytes, std::uint64_t{1} << 31);
  return 4 * sizeof(void*) * height + 2 * height * (line + 32) + 32;
}

}  // namespace tevcv
