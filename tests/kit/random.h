// Random test data from one printed seed. TEVCV_SEED chooses it; without it every run uses the same.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>

#include "kit/image.h"

namespace kit {

inline unsigned seed() {
  static const unsigned value = [] {
    const char* const text = std::getenv("TEVCV_SEED");
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : 20070711U;
  }();
  return value;
}

// A small generator of its own (SplitMix64), so that every build draws the same numbers.
class Random {
 public:
  explicit Random(std::uint64_t stream = 0) : state_(seed() + stream * 0x9E3779B97F4A7C15ULL) {}

  std::uint64_t bits() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }

  // An integer from low to high, both included.
  int between(int low, int high) {
    const auto span = static_cast<std::uint64_t>(std::int64_t{high} - low + 1);
    return static_cast<int>(low + static_cast<std::int64_t>(bits() % span));
  }
  bool oneIn(int n) { return between(1, n) == 1; }
  // A float from -limit to limit, of 24 random bits.
  float real(float limit) {
    return limit * static_cast<float>(between(-(1 << 23), 1 << 23)) / static_cast<float>(1 << 23);
  }

  // Any value of an integer type, a float of mixed magnitude.
  template <class T>
  T value() {
    if constexpr (std::is_integral_v<T>)
      return static_cast<T>(bits());
    else
      return static_cast<T>(real(1000.0F)) / static_cast<T>(1 << between(0, 10));
  }

  // An image with every element random, random row padding and, unless told otherwise, a random odd address.
  template <class T, int channels = 1>
  Image<T, channels> image(int width, int height) {
    return image<T, channels>(width, height, [this] { return value<T>(); });
  }
  template <class T, int channels = 1, class Draw>
  Image<T, channels> image(int width, int height, Draw draw) {
    Image<T, channels> result(width, height, between(0, 3) * int{sizeof(T)}, between(0, 7));
    for (int y = 0; y < height; ++y)
      for (int i = 0; i < width * channels; ++i) result.set(i, y, static_cast<T>(draw()));
    return result;
  }
  // A mask: 0 in about one element of `sparsity`, any other value elsewhere.
  Image<Tev8u> mask(int width, int height, int sparsity = 2) {
    return image<Tev8u>(width, height, [&] { return oneIn(sparsity) ? 0 : between(1, 255); });
  }

 private:
  std::uint64_t state_;
};

}  // namespace kit
