// Fills by definition, for the tests of the families: the walk over spans written out step by step, and the members in
// one overload set.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "kit/kit.h"
#include "tevcv/segmentation.h"

namespace fills {

using kit::Image;

struct Span {
  int row, left, right, parentLeft, parentRight, direction;
};

// What a walk did. `deepest` is the greatest number of spans on the stack; a walk that goes on for ever is stopped.
struct Result {
  TevConnectedRegion region = {};
  std::size_t deepest = 0;
  bool ended = true;
};

template <class T, int channels>
std::vector<T> pixelAt(const Image<T, channels>& image, int x, int y) {
  std::vector<T> p(channels);
  for (int c = 0; c < channels; ++c) p[static_cast<std::size_t>(c)] = image.at(x, y, c);
  return p;
}

template <class T, int channels>
void setPixel(Image<T, channels>& image, int x, int y, const std::vector<T>& value) {
  for (int c = 0; c < channels; ++c) image.set(x * channels + c, y, value[static_cast<std::size_t>(c)]);
}

// The walk that keeps its progress in the image. passes(x, y) looks at the image as it stands; take(x, y) fills. The
// seed is known to differ from the new value.
template <class Passes, class Take>
Result walk(TevSize size, TevPoint seed, int connectivity, Passes passes, Take take) {
  Result result;
  TevRect& r = result.region.rect;
  std::vector<Span> stack;
  const int reach = connectivity == 8 ? 1 : 0;
  const auto run = [&](int x, int y) {
    int left = x, right = x;
    take(x, y);
    while (left > 0 && passes(left - 1, y)) take(--left, y);
    while (right < size.width - 1 && passes(right + 1, y)) take(++right, y);
    result.region.area += right - left + 1;
    return Span{y, left, right, 0, 0, 0};
  };
  Span s = run(seed.x, seed.y);
  int left = s.left, right = s.right, top = seed.y, bottom = seed.y;
  if (size.height > 1) {
    stack.push_back({seed.y, s.left, s.right, s.right + 1, s.right, seed.y == size.height - 1 ? -1 : 1});
    result.deepest = 1;
  }
  while (!stack.empty()) {
    if (result.region.area > 64.0 * size.width * size.height) {
      result.ended = false;
      break;
    }
    s = stack.back();
    stack.pop_back();
    left = std::min(left, s.left);
    right = std::max(right, s.right);
    top = std::min(top, s.row);
    bottom = std::max(bottom, s.row);
    const auto scan = [&](int y, int from, int end, int direction) {
      for (int x = from; x < end;) {
        if (!passes(x, y)) {
          ++x;
          continue;
        }
        const Span found = run(x, y);
        stack.push_back({y, found.left, found.right, s.left, s.right, direction});
        result.deepest = std::max(result.deepest, stack.size());
        x = found.right + 2;
      }
    };
    const int from = std::max(s.left - reach, 0), end = std::min(s.right + 1 + reach, size.width);
    const int forward = s.row - s.direction, back = s.row + s.direction;
    if (forward >= 0 && forward < size.height) scan(forward, from, end, s.direction);
    scan(back, from, s.parentLeft, -s.direction);
    scan(back, s.parentRight + 1, end, -s.direction);
  }
  r = {left, top, right - left + 1, bottom - top + 1};
  return result;
}

// The pixels that a breadth-first search reaches from the seed, one mark a pixel.
template <class Passes>
std::vector<char> reached(TevSize size, TevPoint seed, int connectivity, Passes passes) {
  const auto index = [&](int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) + static_cast<std::size_t>(x);
  };
  std::vector<char> mark(index(0, size.height));
  std::vector<TevPoint> queue = {seed};
  mark[index(seed.x, seed.y)] = 1;
  for (std::size_t i = 0; i < queue.size(); ++i) {
    const TevPoint p = queue[i];
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) {
        const int x = p.x + dx, y = p.y + dy;
        if (connectivity == 4 && dx != 0 && dy != 0) continue;
        if (x < 0 || y < 0 || x >= size.width || y >= size.height) continue;
        if (mark[index(x, y)] || !passes(x, y)) continue;
        mark[index(x, y)] = 1;
        queue.push_back({x, y});
      }
  }
  return mark;
}

template <class T>
void describe(TevConnectedRegion& region, const std::vector<T>& value) {
  for (std::size_t c = 0; c < 3; ++c) region.value[c] = c < value.size() ? static_cast<double>(value[c]) : 0.0;
}

inline testing::AssertionResult sameRegions(const TevConnectedRegion& a, const TevConnectedRegion& b) {
  if (std::memcmp(&a, &b, sizeof a) == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "area " << a.area << ", value " << a.value[0] << " " << a.value[1] << " "
                                     << a.value[2] << ", rect " << a.rect.x << " " << a.rect.y << " " << a.rect.width
                                     << " " << a.rect.height << "; expected area " << b.area << ", value " << b.value[0]
                                     << " " << b.value[1] << " " << b.value[2] << ", rect " << b.rect.x << " "
                                     << b.rect.y << " " << b.rect.width << " " << b.rect.height;
}

// A region record of recognisable contents.
inline TevConnectedRegion untouchedRegion() { return {-1, {-2, -3, -4}, {-5, -6, -7, -8}}; }

// A picture drawn as text: '#' is 1, anything else 0.
inline Image<Tev8u> picture(std::initializer_list<const char*> lines) {
  Image<Tev8u> image(static_cast<int>(std::strlen(*lines.begin())), static_cast<int>(lines.size()));
  int y = 0;
  for (const char* line : lines) {
    for (int x = 0; x < image.width(); ++x) image.set(x, y, line[x] == '#' ? 1 : 0);
    ++y;
  }
  return image;
}

}  // namespace fills

namespace fills {

// A value as a member takes it: by value for one channel, as a pointer for three.
template <class T, int channels>
auto passed(const std::vector<T>& value) {
  if constexpr (channels == 1)
    return value[0];
  else
    return value.data();
}

// One of four members, by element type and channels.
template <class T, int channels, class A, class B, class C, class D>
constexpr auto member(A c1Of8u, B c3Of8u, C c1Of32f, D c3Of32f) {
  if constexpr (sizeof(T) == 1 && channels == 1)
    return c1Of8u;
  else if constexpr (sizeof(T) == 1)
    return c3Of8u;
  else if constexpr (channels == 1)
    return c1Of32f;
  else
    return c3Of32f;
}

}  // namespace fills
