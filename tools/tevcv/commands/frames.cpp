// A sequence made from one picture: the camera pans or draws near, a piece moves across, the light changes, noise.
#include <algorithm>
#include <cstdint>

#include "cli/command.h"

namespace cli {
namespace {

struct Options {
  int count = 24, width = 0, height = 0;
  double panX = 0, panY = 0, zoom = 0;  // pixels a frame, per cent a frame
  bool object = true;
  int objectSize = 0, light = 0, noise = 3;
};

constexpr int fraction = 1 << 12;

std::uint32_t hash(std::uint32_t a, std::uint32_t b) {
  std::uint32_t h = a * 0x9E3779B1U ^ b * 0x85EBCA6BU;
  h ^= h >> 15;
  h *= 0x2C1B3C6DU;
  h ^= h >> 13;
  return h;
}

int wholeFractions(double value) { return static_cast<int>(value * fraction + (value < 0 ? -0.5 : 0.5)); }

// The picture between its pixels, linear, edge pixels repeated; positions in 1/4096 pixel.
int between(const Image<Tev8u>& image, std::int64_t x, std::int64_t y, int c) {
  const auto clampX = [&](std::int64_t i) {
    return static_cast<int>(std::clamp<std::int64_t>(i, 0, image.width() - 1));
  };
  const auto clampY = [&](std::int64_t i) {
    return static_cast<int>(std::clamp<std::int64_t>(i, 0, image.height() - 1));
  };
  const std::int64_t ix = x >> 12, iy = y >> 12;
  const int fx = static_cast<int>(x & (fraction - 1)), fy = static_cast<int>(y & (fraction - 1));
  const int x0 = clampX(ix), x1 = clampX(ix + 1), y0 = clampY(iy), y1 = clampY(iy + 1);
  const int top = image.at(x0, y0, c) * (fraction - fx) + image.at(x1, y0, c) * fx;
  const int bottom = image.at(x0, y1, c) * (fraction - fx) + image.at(x1, y1, c) * fx;
  return static_cast<int>((std::int64_t{top} * (fraction - fy) + std::int64_t{bottom} * fy + (1 << 23)) >> 24);
}

Image<Tev8u> frame(const Image<Tev8u>& picture, int index, const Options& o) {
  const TevSize size = {o.width > 0 ? o.width : picture.width(), o.height > 0 ? o.height : picture.height()};
  Image<Tev8u> result(size, picture.channels);
  // The view's centre starts in the picture's centre; a pixel of the view is `scale` of the picture.
  const std::int64_t scale = std::max(fraction / 8, fraction - index * wholeFractions(o.zoom) / 100);
  const std::int64_t left = (std::int64_t{picture.width() - 1} * fraction - (size.width - 1) * scale) / 2 +
                            std::int64_t{index} * wholeFractions(o.panX);
  const std::int64_t top = (std::int64_t{picture.height() - 1} * fraction - (size.height - 1) * scale) / 2 +
                           std::int64_t{index} * wholeFractions(o.panY);
  // The moving piece is a disc with stripes; it crosses the view once in `count` frames.
  const int radius = o.objectSize > 0 ? o.objectSize / 2 : std::max(2, std::min(size.width, size.height) / 9);
  const int cx = (2 * index + 1) * size.width / (2 * o.count),
            cy = size.height * 6 / 10 - size.height * index / (8 * o.count);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const int dx = x - cx, dy = y - cy;
      const bool piece = o.object && dx * dx + dy * dy <= radius * radius;
      const std::uint32_t grain =
          hash(static_cast<std::uint32_t>(y * size.width + x), static_cast<std::uint32_t>(index));
      for (int c = 0; c < picture.channels; ++c) {
        int value = between(picture, left + x * scale, top + y * scale, c);
        if (piece) value = ((dx + dy + 4 * radius) / std::max(1, radius / 3)) % 2 ? 235 - 70 * c : 40 + 80 * c;
        value += o.light * index / o.count;
        if (o.noise > 0)
          value += static_cast<int>((grain >> (8 * c)) % static_cast<std::uint32_t>(2 * o.noise + 1)) - o.noise;
        result.at(x, y, c) = static_cast<Tev8u>(std::clamp(value, 0, 255));
      }
    }
  return result;
}

}  // namespace

void frames(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command =
      program.command("frames", "pictures", "A sequence made from one picture, for the commands on motion",
                      "tevcv frames photo.png --count 24 --pan-x 1.5 -o frames/");
  command.option("--count", o->count, "Frames").check(CLI::Range(1, 9999));
  command.option("--pan-x", o->panX, "Pixels a frame by which the view goes right").check(CLI::Range(-100.0, 100.0));
  command.option("--pan-y", o->panY, "Pixels a frame by which the view goes down").check(CLI::Range(-100.0, 100.0));
  command.option("--zoom", o->zoom, "Per cent a frame by which it draws near").check(CLI::Range(-10.0, 10.0));
  command.app().add_flag("!--no-object", o->object, "Nothing moves across");
  command.option("--object", o->objectSize, "Diameter of what moves across, 0: a part of the view")
      .check(CLI::Range(0, 4096));
  command.option("--light", o->light, "Brightness gained until the last frame").check(CLI::Range(-255, 255));
  command.option("--noise", o->noise, "Largest noise of a pixel").check(CLI::Range(0, 100));
  command.option("--width", o->width, "Width of the frames, 0: the picture's").check(CLI::Range(0, 8192));
  command.option("--height", o->height, "Height of the frames, 0: the picture's").check(CLI::Range(0, 8192));
  auto input = std::make_shared<std::string>(), output = std::make_shared<std::string>();
  command.app().add_option("picture", *input, "A picture (PNG, JPEG)")->required()->type_name("FILE");
  command.app()
      .add_option("-o,--output", *output, "A folder for NAME-0000.png and so on (default: NAME-frames here)")
      ->type_name("FOLDER");
  command.app().callback([o, input, output] {
    const Picture picture = readPicture(*input);
    const Image<Tev8u> pixels = any8(picture);
    const std::filesystem::path name = std::filesystem::path(*input).stem();
    const std::filesystem::path folder = output->empty() ? name.string() + "-frames" : *output;
    std::filesystem::create_directories(folder);
    Progress progress("frames", o->count);
    for (int i = 0; i < o->count; ++i) {
      char number[16];
      std::snprintf(number, sizeof number, "-%04d.png", i);
      writePicture(folder / (name.string() + number), frame(pixels, i, *o));
      progress.step();
    }
  });
}

}  // namespace cli
