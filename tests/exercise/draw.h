// Numbers from a seed, or from the bytes that a fuzzer proposes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <type_traits>

namespace exercise {

class Draw {
 public:
  explicit Draw(std::uint64_t seed) : state_(seed) {}
  // The bytes decide, first to last; after them every draw is 0, the plainest choice.
  Draw(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), end_(bytes + size), fromBytes_(true) {}

  // One of `count` choices, the first one where the bytes are used up. Takes as few bytes as do.
  std::uint32_t choice(std::uint32_t count) {
    if (count < 2) return 0;
    if (!fromBytes_) return static_cast<std::uint32_t>(next() % count);
    std::uint32_t value = 0;
    for (std::uint32_t reach = count - 1; reach > 0; reach >>= 8) value = value << 8 | (bytes_ < end_ ? *bytes_++ : 0U);
    return value % count;
  }
  // An integer from low to high, both included.
  int between(int low, int high) {
    const auto span = static_cast<std::uint32_t>(high) - static_cast<std::uint32_t>(low);
    return static_cast<int>(static_cast<std::uint32_t>(low) + (span == 0xFFFFFFFFU ? seed32() : choice(span + 1)));
  }
  bool oneIn(int n) { return choice(static_cast<std::uint32_t>(n)) == static_cast<std::uint32_t>(n - 1); }
  template <class T>
  T anyOf(std::initializer_list<T> values) {
    return values.begin()[choice(static_cast<std::uint32_t>(values.size()))];
  }
  // From 0 to 1 in 2^-16 steps.
  double unit() { return between(0, 65536) / 65536.0; }
  // A float from low to high: low plus a multiple of the 2^16th part.
  float real(float low, float high) { return static_cast<float>(low + (high - low) * unit()); }
  // The seed of another stream, for the many elements of one image.
  std::uint64_t seed() { return (static_cast<std::uint64_t>(seed32()) << 32) + 0x9E3779B97F4A7C15ULL; }

 private:
  std::uint32_t seed32() {
    if (!fromBytes_) return static_cast<std::uint32_t>(next());
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | (bytes_ < end_ ? *bytes_++ : 0U);
    return value;
  }
  std::uint64_t next() {  // SplitMix64
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }

  std::uint64_t state_ = 0;
  const std::uint8_t* bytes_ = nullptr;
  const std::uint8_t* end_ = nullptr;
  bool fromBytes_ = false;
};

}  // namespace exercise
