// What the tests of the corner measures share: the averaged products by direct window sums, in the arithmetic that is
// promised, and calls by element type.
#pragma once

#include <algorithm>
#include <cmath>

#include "kit/kit.h"
#include "tevcv/features.h"
#include "tevcv/filtering.h"

namespace corner_test {

struct Setting {
  TevCornerKernel kernel;
  int aperture;
  int window;
};
inline constexpr Setting settings[] = {{tevCornerKernelSobel, 3, 3},  {tevCornerKernelSobel, 3, 5},
                                       {tevCornerKernelSobel, 5, 3},  {tevCornerKernelSobel, 5, 5},
                                       {tevCornerKernelScharr, 3, 3}, {tevCornerKernelScharr, 3, 5}};

inline Tev32f scaleOf(const Setting& s) {
  const auto scale = static_cast<Tev32f>(1.0L / (s.aperture == 3 ? 4080.0L : 65280.0L));
  return s.kernel == tevCornerKernelScharr ? static_cast<Tev32f>(static_cast<long double>(scale) * 0.6125F) : scale;
}

// Correlation of a replicated image with a row and a column kernel, each sum in extended precision and rounded to T.
template <class T, class S>
kit::Image<T> separable(const kit::Image<S>& src, const std::vector<int>& row, const std::vector<int>& column) {
  const int half = static_cast<int>(row.size()) / 2;
  const int w = src.width(), h = src.height();
  kit::Image<T> lines(w, h), result(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      long double sum = 0;
      for (size_t i = 0; i < row.size(); ++i)
        sum += static_cast<long double>(row[i]) * src.at(std::clamp(x + static_cast<int>(i) - half, 0, w - 1), y);
      lines.set(x, y, static_cast<T>(sum));
    }
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      long double sum = 0;
      for (size_t j = 0; j < column.size(); ++j)
        sum += static_cast<long double>(column[j]) * lines.at(x, std::clamp(y + static_cast<int>(j) - half, 0, h - 1));
      result.set(x, y, static_cast<T>(sum));
    }
  return result;
}

inline kit::Image<Tev32f> averaged(const kit::Image<Tev32f>& src, int window) {
  const int half = window / 2, w = src.width(), h = src.height();
  kit::Image<Tev32f> lines(w, h), result(w, h);
  const auto weight = static_cast<long double>(window == 3 ? 0.11111111F : 0.04F);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      long double sum = 0;
      for (int i = -half; i <= half; ++i) sum += src.at(std::clamp(x + i, 0, w - 1), y);
      lines.set(x, y, static_cast<Tev32f>(sum));
    }
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      long double sum = 0;
      for (int j = -half; j <= half; ++j) sum += lines.at(x, std::clamp(y + j, 0, h - 1));
      result.set(x, y, static_cast<Tev32f>(sum * weight));
    }
  return result;
}

struct Products {
  kit::Image<Tev32f> a, b, c;
};

template <class T>
Products averagedProducts(const kit::Image<T>& src, const Setting& s) {
  using D = std::conditional_t<std::is_same_v<T, Tev8u>, Tev16s, Tev32f>;
  const bool scharr = s.kernel == tevCornerKernelScharr;
  const std::vector<int> smooth = scharr            ? std::vector<int>{3, 10, 3}
                                  : s.aperture == 3 ? std::vector<int>{1, 2, 1}
                                                    : std::vector<int>{1, 4, 6, 4, 1};
  // Across x the Sobel derivative runs from right to left, the Scharr one from left to right.
  const std::vector<int> across = scharr            ? std::vector<int>{-1, 0, 1}
                                  : s.aperture == 3 ? std::vector<int>{1, 0, -1}
                                                    : std::vector<int>{1, 2, 0, -2, -1};
  const std::vector<int> down = s.aperture == 3 ? std::vector<int>{-1, 0, 1} : std::vector<int>{-1, -2, 0, 2, 1};
  const auto dx = separable<D>(src, across, smooth), dy = separable<D>(src, smooth, down);
  const int w = src.width(), h = src.height();
  kit::Image<Tev32f> a(w, h), b(w, h), c(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const long double u = dx.at(x, y), v = dy.at(x, y);
      a.set(x, y, static_cast<Tev32f>(u * u));
      b.set(x, y, static_cast<Tev32f>(u * v));
      c.set(x, y, static_cast<Tev32f>(v * v));
    }
  return {averaged(a, s.window), averaged(b, s.window), averaged(c, s.window)};
}

// Pictures with flat parts, edges, corners and noise.
template <class T>
kit::Image<T> picture(kit::Random& random, int width, int height) {
  const int style = random.between(0, 3);
  kit::Image<T> image(width, height, random.between(0, 2) * int{sizeof(T)}, random.between(0, 5));
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const int blocks = ((x / 5 + y / 4) & 1) * 200;
      int v = style == 0   ? random.between(0, 255)
              : style == 1 ? blocks
              : style == 2 ? x * 7 % 256
                           : blocks / 2 + random.between(0, 9);
      if constexpr (std::is_same_v<T, Tev32f>)
        image.set(x, y, style == 0 ? random.real(300) : static_cast<T>(v));
      else
        image.set(x, y, static_cast<T>(v));
    }
  return image;
}

}  // namespace corner_test
