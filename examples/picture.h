// Grey and colour pictures for the examples, by libpng.
#pragma once

#include <png.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "tevcv/types.h"

namespace example {

// 8-bit pixels of one or three channels, rows without padding.
struct Picture {
  TevSize size{};
  int channels = 1;
  std::vector<Tev8u> pixels;

  int step() const { return size.width * channels; }
  Tev8u* data() { return pixels.data(); }
  const Tev8u* data() const { return pixels.data(); }
};

inline Picture makePicture(TevSize size, int channels) {
  Picture picture;
  picture.size = size;
  picture.channels = channels;
  picture.pixels.resize(static_cast<size_t>(picture.step()) * static_cast<size_t>(size.height));
  return picture;
}

// Reads a PNG file of any depth as `channels` 8-bit channels (1 or 3). An empty picture on failure, the reason on
// stderr.
inline Picture readPicture(const char* path, int channels) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  Picture picture;
  if (!png_image_begin_read_from_file(&image, path)) {
    std::fprintf(stderr, "%s: %s\n", path, image.message);
    return picture;
  }
  image.format = channels == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
  picture = makePicture({static_cast<int>(image.width), static_cast<int>(image.height)}, channels);
  const png_color background{};
  if (!png_image_finish_read(&image, &background, picture.data(), picture.step(), nullptr)) {
    std::fprintf(stderr, "%s: %s\n", path, image.message);
    return {};
  }
  return picture;
}

inline bool writePicture(const char* path, const Picture& picture) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.size.width);
  image.height = static_cast<png_uint_32>(picture.size.height);
  image.format = picture.channels == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
  if (png_image_write_to_file(&image, path, 0, picture.data(), picture.step(), nullptr)) return true;
  std::fprintf(stderr, "%s: %s\n", path, image.message);
  return false;
}

}  // namespace example
