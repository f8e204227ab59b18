// The templates of exercise.h that make, fill and record images.
#pragma once

#include <cmath>
#include <cstring>

namespace exercise {

namespace detail {

enum class Style { noise, few, extremes, ramp, constant };

// Element i of row y in a style; each element's own noise in `bits`.
template <class T>
T element(Style style, Values values, int i, int y, std::uint64_t bits, std::uint64_t base) {
  if (values == Values::mask) return static_cast<T>(style == Style::constant || bits % 3 ? 1 + bits % 200 % 127 : 0);
  if (values == Values::labels) return static_cast<T>((i / 5 + y / 4 * 3 + base % 5) % 8);
  if constexpr (std::is_integral_v<T>) {
    const auto reach = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
    const std::uint64_t limit = values == Values::unit ? (reach < 255 ? reach : 255) : ~std::uint64_t{0};
    std::uint64_t word = bits;
    switch (style) {
      case Style::noise:
        break;
      case Style::few:
        word = base + bits % 4;
        break;
      case Style::extremes: {
        if (values == Values::unit) return static_cast<T>(bits % 2 ? limit : 0);
        const T ends[] = {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), 0, static_cast<T>(-1), 1};
        return ends[bits % 5];
      }
      case Style::ramp:
        word = base + static_cast<std::uint64_t>(3 * i + 5 * y);
        break;
      case Style::constant:
        word = base;
        break;
    }
    if (limit == ~std::uint64_t{0}) return static_cast<T>(word);
    return static_cast<T>(word % (limit + 1));
  } else {
    constexpr double scale = 1.0 / (1 << 24);
    if (values == Values::unit) {
      switch (style) {
        case Style::few:
          return static_cast<T>((base + bits) % 4 * 0.25);
        case Style::extremes:
          return static_cast<T>(bits % 2);
        case Style::ramp:
          return static_cast<T>((base % 64 + static_cast<unsigned>(3 * i + 5 * y)) % 256 / 256.0);
        case Style::constant:
          return static_cast<T>(base % 256 / 256.0);
        default:
          return static_cast<T>(static_cast<double>(bits >> 40) * scale);
      }
    }
    const double noise = (static_cast<double>(bits >> 40) - (1 << 23)) * scale * 2;  // -1 to 1
    switch (style) {
      case Style::few:
        return static_cast<T>(static_cast<int>((base + bits) % 4) - 1);
      case Style::extremes: {
        if (bits % 16 == 0 && values == Values::any) {
          const T odd[] = {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity(),
                           -std::numeric_limits<T>::infinity(), static_cast<T>(-0.0)};
          return odd[bits / 16 % 4];
        }
        return static_cast<T>(std::ldexp(noise, static_cast<int>(bits % 61) - 30));
      }
      case Style::ramp:
        return static_cast<T>(static_cast<int>(base % 200) - 100 + 0.375 * i - 0.25 * y);
      case Style::constant:
        return static_cast<T>(static_cast<int>(base % 2000) - 1000) / 8;
      default:
        return static_cast<T>(1000 * noise);
    }
  }
}

}  // namespace detail

template <class T>
Image<T> Exercise::image(TevSize size, int channels, Values values, Role role, bool drawn) {
  const int row = size.width * channels * static_cast<int>(sizeof(T));
  const int step = size.height > 1 && draw.oneIn(2) ? row + draw.between(1, 3) * static_cast<int>(sizeof(T)) : row;
  auto* const bytes = static_cast<unsigned char*>(
      block(static_cast<std::size_t>(step) * static_cast<std::size_t>(size.height - 1) + static_cast<std::size_t>(row),
            role));
  std::memset(bytes, 0xCD, blocks_.back().size);
  Block& made = blocks_.back();
  made.recorder = recordImage<T>;
  made.region = size;
  made.channels = channels;
  made.step = step;
  if constexpr (std::is_arithmetic_v<T>) {
    if (drawn) {
      using detail::Style;
      const auto style = draw.anyOf({Style::noise, Style::few, Style::extremes, Style::ramp, Style::constant});
      const std::uint64_t base = draw.seed();
      Draw noise(base);
      for (int y = 0; y < size.height; ++y)
        for (int i = 0; i < size.width * channels; ++i) {
          const T value = detail::element<T>(style, values, i, y, noise.seed() ^ noise.seed() >> 29, base);
          std::memcpy(bytes + static_cast<std::ptrdiff_t>(y) * step + static_cast<std::ptrdiff_t>(i) * int{sizeof(T)},
                      &value, sizeof value);
        }
    }
  }
  return {reinterpret_cast<T*>(bytes), step, size, channels};
}

// Elements with every NaN made the same one, then the bytes between the rows as they are.
template <class T>
void Exercise::recordImage(Exercise& e, const Block& block) {
  const int elements = block.region.width * block.channels;
  const auto row = static_cast<std::size_t>(elements) * sizeof(T);
  for (int y = 0; y < block.region.height; ++y) {
    const unsigned char* const start = block.data + static_cast<std::ptrdiff_t>(y) * block.step;
    e.record(reinterpret_cast<const T*>(start), static_cast<std::size_t>(elements));
    if (y + 1 < block.region.height) e.record(start + row, static_cast<std::size_t>(block.step) - row);
  }
}

template <class T>
void Exercise::record(const T* values, std::size_t count) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(values);
  if constexpr (std::is_floating_point_v<T>) {
    for (std::size_t i = 0; i < count; ++i) {
      T value;
      std::memcpy(&value, bytes + i * sizeof(T), sizeof(T));
      std::uint64_t word = 0;
      if (value != value)
        word = 0x7FF8000000000001ULL;
      else
        std::memcpy(&word, &value, sizeof(T));
      mix(word);
    }
  } else {
    const std::size_t size = count * sizeof(T);
    std::size_t i = 0;
    for (; i + 8 <= size; i += 8) {
      std::uint64_t word;
      std::memcpy(&word, bytes + i, 8);
      mix(word);
    }
    std::uint64_t rest = size - i;
    for (; i < size; ++i) rest = rest << 8 | bytes[i];
    mix(rest);
  }
}

}  // namespace exercise
