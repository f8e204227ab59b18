// Images for tests: row padding, any address, an unmapped page right behind the last pixel; literal grids; comparison
// to the bit with both grids printed side by side on failure.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "kit/memory.h"
#include "tevcv/types.h"

namespace kit {

// `width` x `height` pixels of `channels` interleaved elements. `padding` bytes follow each row but the last, whose
// last element ends `tail` bytes before an unmapped page. Elements are read and written by memcpy: the address may be
// odd.
template <class T, int channels = 1>
class Image {
 public:
  static constexpr int channelCount = channels;

  explicit Image(int width, int height, int padding = 0, int tail = 0)
      : width_(width),
        height_(height),
        step_(width * channels * int{sizeof(T)} + padding),
        memory_(static_cast<std::size_t>(step_) * (static_cast<std::size_t>(height) - 1) +
                    static_cast<std::size_t>(width) * channels * sizeof(T),
                static_cast<std::size_t>(tail)) {
    std::memset(memory_.data(), 0xCD, memory_.size());
  }

  Image clone() const {
    Image copy(width_, height_, step_ - width_ * channels * int{sizeof(T)});
    std::memcpy(copy.memory_.data(), memory_.data(), memory_.size());
    return copy;
  }

  int width() const { return width_; }
  int height() const { return height_; }
  TevSize size() const { return {width_, height_}; }
  int step() const { return step_; }
  T* data() const { return reinterpret_cast<T*>(memory_.data()); }
  // All bytes, row padding included.
  std::vector<unsigned char> bytes() const { return {memory_.data(), memory_.data() + memory_.size()}; }

  // Element i of row y; i counts elements, not pixels.
  T get(int i, int y) const {
    T value;
    std::memcpy(&value, address(i, y), sizeof(T));
    return value;
  }
  void set(int i, int y, T value) { std::memcpy(address(i, y), &value, sizeof(T)); }
  // Channel c of pixel (x, y).
  T at(int x, int y, int c = 0) const { return get(x * channels + c, y); }

  Image& fill(T value) {
    for (int y = 0; y < height_; ++y)
      for (int i = 0; i < width_ * channels; ++i) set(i, y, value);
    return *this;
  }

 private:
  unsigned char* address(int i, int y) const {
    return memory_.data() + static_cast<std::ptrdiff_t>(y) * step_ + static_cast<std::ptrdiff_t>(i) * int{sizeof(T)};
  }

  int width_;
  int height_;
  int step_;
  GuardedMemory memory_;
};

// An image from a literal grid of numbers, a row of elements in each pair of braces.
template <class T, int channels = 1>
Image<T, channels> grid(std::initializer_list<std::initializer_list<T>> lines) {
  Image<T, channels> image(static_cast<int>(lines.begin()->size()) / channels, static_cast<int>(lines.size()));
  int y = 0;
  for (const auto& line : lines) {
    int i = 0;
    for (T value : line) image.set(i++, y, value);
    ++y;
  }
  return image;
}

// Equal as the bits stand: -0.0 differs from 0.0. Any NaN equals any other, since no NaN's payload is promised.
template <class T>
bool sameBits(T a, T b) {
  if constexpr (std::is_floating_point_v<T>)
    if (a != a && b != b) return true;
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

template <class T, int channels>
bool operator==(const Image<T, channels>& a, const Image<T, channels>& b) {
  if (a.width() != b.width() || a.height() != b.height()) return false;
  for (int y = 0; y < a.height(); ++y)
    for (int i = 0; i < a.width() * channels; ++i)
      if (!sameBits(a.get(i, y), b.get(i, y))) return false;
  return true;
}

namespace detail {
template <class T, int channels>
std::string cell(const Image<T, channels>& image, int i, int y) {
  std::ostringstream text;
  text << std::setprecision(9) << +image.get(i, y);
  return text.str();
}
}  // namespace detail

// Both grids, side by side, around the first difference; differing elements carry a star.
template <class T, int channels>
testing::AssertionResult sameImages(const Image<T, channels>& actual, const Image<T, channels>& expected) {
  if (actual == expected) return testing::AssertionSuccess();
  auto failure = testing::AssertionFailure();
  if (actual.width() != expected.width() || actual.height() != expected.height())
    return failure << "sizes differ: " << actual.width() << " x " << actual.height() << ", expected "
                   << expected.width() << " x " << expected.height();
  int differences = 0, firstX = 0, firstY = -1;
  for (int y = 0; y < actual.height(); ++y)
    for (int i = 0; i < actual.width() * channels; ++i)
      if (!sameBits(actual.get(i, y), expected.get(i, y))) {
        if (firstY < 0) firstX = i, firstY = y;
        ++differences;
      }
  failure << differences << " elements differ, first at element " << firstX << " of row " << firstY << "; "
          << actual.width() << " x " << actual.height() << " pixels of " << channels << "\n";
  constexpr int columns = 12, lines = 12;
  const int left = firstX > columns / 2 ? firstX - columns / 2 : 0, top = firstY > lines / 2 ? firstY - lines / 2 : 0;
  const int right = std::min(actual.width() * channels, left + columns),
            bottom = std::min(actual.height(), top + lines);
  for (int y = top; y < bottom; ++y) {
    std::ostringstream line;
    for (int i = left; i < right; ++i)
      line << std::setw(8) << detail::cell(actual, i, y)
           << (sameBits(actual.get(i, y), expected.get(i, y)) ? ' ' : '*');
    line << "   expected ";
    for (int i = left; i < right; ++i) line << std::setw(8) << detail::cell(expected, i, y) << ' ';
    failure << line.str() << "\n";
  }
  return failure;
}

template <class T, int channels>
void PrintTo(const Image<T, channels>& image, std::ostream* out) {
  *out << image.width() << " x " << image.height() << " pixels";
  for (int y = 0; y < std::min(image.height(), 16); ++y) {
    *out << "\n";
    for (int i = 0; i < std::min(image.width() * channels, 24); ++i) *out << std::setw(8) << detail::cell(image, i, y);
  }
}

}  // namespace kit

// Compares two images to the bit and prints them side by side where they differ.
#define EXPECT_SAME_IMAGE(actual, expected) EXPECT_TRUE(kit::sameImages(actual, expected))
#define ASSERT_SAME_IMAGE(actual, expected) ASSERT_TRUE(kit::sameImages(actual, expected))
