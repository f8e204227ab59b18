// Images as the commands hold them: rows without padding.
#pragma once

#include <cstddef>
#include <vector>

#include "tevcv/types.h"

namespace cli {

template <class T>
struct Image {
  TevSize size{};
  int channels = 1;
  std::vector<T> elements;

  Image() = default;
  explicit Image(TevSize size_, int channels_ = 1, T value = T{})
      : size(size_),
        channels(channels_),
        elements(static_cast<std::size_t>(size_.width) * static_cast<std::size_t>(size_.height) *
                     static_cast<std::size_t>(channels_),
                 value) {}

  int width() const { return size.width; }
  int height() const { return size.height; }
  int step() const { return size.width * channels * static_cast<int>(sizeof(T)); }  // bytes
  bool empty() const { return elements.empty(); }

  T* data() { return elements.data(); }
  const T* data() const { return elements.data(); }
  T* row(int y) { return data() + static_cast<std::ptrdiff_t>(y) * size.width * channels; }
  const T* row(int y) const { return data() + static_cast<std::ptrdiff_t>(y) * size.width * channels; }
  T& at(int x, int y, int c = 0) { return row(y)[x * channels + c]; }
  const T& at(int x, int y, int c = 0) const { return row(y)[x * channels + c]; }
};

inline bool operator==(TevSize a, TevSize b) { return a.width == b.width && a.height == b.height; }
inline bool operator!=(TevSize a, TevSize b) { return !(a == b); }

}  // namespace cli
