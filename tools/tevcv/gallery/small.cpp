#include "gallery/small.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <numeric>

#include "cli/errors.h"
#include "cli/montage.h"

namespace cli {
namespace {

constexpr int gap = 6;

// Means over the rectangle of the source that each pixel covers.
Image<Tev8u> resized(const Image<Tev8u>& image, TevSize size) {
  const double sx = static_cast<double>(image.width()) / size.width,
               sy = static_cast<double>(image.height()) / size.height;
  Image<Tev8u> result(size, image.channels);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x)
      for (int c = 0; c < image.channels; ++c) {
        double sum = 0, weight = 0;
        for (int v = static_cast<int>(y * sy); v < std::min<double>((y + 1) * sy, image.height()); ++v)
          for (int u = static_cast<int>(x * sx); u < std::min<double>((x + 1) * sx, image.width()); ++u) {
            const double w = (std::min<double>(u + 1, (x + 1) * sx) - std::max<double>(u, x * sx)) *
                             (std::min<double>(v + 1, (y + 1) * sy) - std::max<double>(v, y * sy));
            sum += w * image.at(u, v, c);
            weight += w;
          }
        result.at(x, y, c) = static_cast<Tev8u>(sum / weight + 0.5);
      }
  return result;
}

Image<Tev8u> middleSquare(const Image<Tev8u>& image) {
  const int side = std::min(image.width(), image.height());
  Image<Tev8u> result({side, side}, image.channels);
  const int left = (image.width() - side) / 2, top = (image.height() - side) / 2;
  for (int y = 0; y < side; ++y)
    std::copy_n(image.row(top + y) + left * image.channels, side * image.channels, result.row(y));
  return result;
}

struct Colours {
  std::vector<std::array<Tev8u, 3>> palette;
  std::vector<Tev8u> indices;
};

// Median cut: the box of colours whose pixels spread most, in its widest channel, is cut at its median until there are
// enough (P. Heckbert, "Color Image Quantization for Frame Buffer Display", 1982).
Colours quantised(const Image<Tev8u>& image, std::size_t most) {
  const std::size_t count = image.elements.size() / 3;
  std::vector<std::size_t> pixels(count);
  std::iota(pixels.begin(), pixels.end(), std::size_t{0});
  const auto value = [&](std::size_t pixel, std::size_t channel) { return image.elements[3 * pixel + channel]; };
  struct Box {
    std::size_t first, last, channel;
    double spread;
  };
  const auto box = [&](std::size_t first, std::size_t last) {
    Box result{first, last, 0, 0};
    for (std::size_t c = 0; c < 3; ++c) {
      double sum = 0, squares = 0;
      for (std::size_t i = first; i < last; ++i) {
        const double v = value(pixels[i], c);
        sum += v;
        squares += v * v;
      }
      const double spread = squares - sum * sum / static_cast<double>(last - first);
      if (spread > result.spread) result.spread = spread, result.channel = c;
    }
    return result;
  };
  std::vector<Box> boxes{box(0, count)};
  while (boxes.size() < most) {
    const auto widest =
        std::max_element(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) { return a.spread < b.spread; });
    if (widest->spread < 1) break;
    const Box cut = *widest;
    const auto begin = pixels.begin();
    const auto at = [&](std::size_t i) { return begin + static_cast<std::ptrdiff_t>(i); };
    double sum = 0;
    for (std::size_t i = cut.first; i < cut.last; ++i) sum += value(pixels[i], cut.channel);
    const double mean = sum / static_cast<double>(cut.last - cut.first);
    const auto middle = std::partition(at(cut.first), at(cut.last),
                                       [&](std::size_t pixel) { return value(pixel, cut.channel) <= mean; });
    const std::size_t split = static_cast<std::size_t>(middle - begin);
    if (split == cut.first || split == cut.last) {
      widest->spread = 0;
      continue;
    }
    *widest = box(cut.first, split);
    boxes.push_back(box(split, cut.last));
  }
  Colours result;
  result.indices.resize(count);
  for (const Box& one : boxes) {
    std::array<double, 3> sums{};
    for (std::size_t i = one.first; i < one.last; ++i)
      for (std::size_t c = 0; c < 3; ++c) sums[c] += value(pixels[i], c);
    std::array<Tev8u, 3> colour{};
    for (std::size_t c = 0; c < 3; ++c)
      colour[c] = static_cast<Tev8u>(sums[c] / static_cast<double>(one.last - one.first) + 0.5);
    for (std::size_t i = one.first; i < one.last; ++i)
      result.indices[pixels[i]] = static_cast<Tev8u>(result.palette.size());
    result.palette.push_back(colour);
  }
  return result;
}

Image<Tev8u> joined(const std::vector<Image<Tev8u>>& images) {
  int width = -gap;
  for (const Image<Tev8u>& image : images) width += image.width() + gap;
  Image<Tev8u> canvas({width, images.front().height()}, 3, 255);
  int left = 0;
  for (const Image<Tev8u>& image : images) {
    pasteInto(canvas, image, left, 0);
    left += image.width() + gap;
  }
  return canvas;
}

}  // namespace

Image<Tev8u> sideBySide(const std::vector<std::string>& files, int width) {
  std::vector<Image<Tev8u>> images;
  double aspects = 0;
  for (const std::string& file : files) {
    images.push_back(colour8(readPicture(file)));
    aspects += static_cast<double>(images.back().width()) / images.back().height();
  }
  const int inner = width - gap * (static_cast<int>(files.size()) - 1);
  const int height = std::max(1, static_cast<int>(inner / aspects + 0.5));
  int left = inner;
  for (std::size_t i = 0; i < images.size(); ++i) {
    const bool last = i + 1 == images.size();
    const double aspect = static_cast<double>(images[i].width()) / images[i].height();
    const int own = std::max(1, last ? left : static_cast<int>(height * aspect + 0.5));
    images[i] = resized(images[i], {own, height});
    left -= own;
  }
  return joined(images);
}

Image<Tev8u> stripOf(const std::vector<std::string>& files, int side) {
  std::vector<Image<Tev8u>> images;
  for (const std::string& file : files)
    images.push_back(resized(middleSquare(colour8(readPicture(file))), {side, side}));
  return joined(images);
}

void writeSmall(const std::string& file, const Image<Tev8u>& image) {
  const Colours colours = quantised(image, 64);
  std::vector<Tev8u> map;
  for (const auto& colour : colours.palette) map.insert(map.end(), colour.begin(), colour.end());
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(image.width());
  png.height = static_cast<png_uint_32>(image.height());
  png.format = PNG_FORMAT_RGB_COLORMAP;
  png.colormap_entries = static_cast<png_uint_32>(colours.palette.size());
  const std::string part = file + ".part";
  if (!png_image_write_to_file(&png, part.c_str(), 0, colours.indices.data(), image.width(), map.data())) {
    std::remove(part.c_str());
    throw UserError(file + ": cannot be written");
  }
  std::filesystem::rename(part, file);
}

}  // namespace cli
