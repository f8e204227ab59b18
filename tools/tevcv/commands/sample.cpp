// Pictures that the program draws itself, for trying things where no photograph is at hand. Whole numbers throughout,
// so that they are the same everywhere.
#include <algorithm>
#include <cstdint>

#include "cli/command.h"
#include "cli/paint.h"

namespace cli {
namespace {

// Noise from -range to range that depends on the place alone.
int noise(int x, int y, int range, std::uint32_t seed = 0) {
  std::uint32_t h = static_cast<std::uint32_t>(x) * 0x85EBCA6BU ^ static_cast<std::uint32_t>(y) * 0xC2B2AE35U ^ seed;
  h ^= h >> 15;
  h *= 0x2C1B3C6DU;
  h ^= h >> 12;
  h *= 0x297A2D39U;
  h ^= h >> 15;
  return static_cast<int>(h % static_cast<std::uint32_t>(2 * range + 1)) - range;
}

// Noise in cells of `cell` pixels, linear between their corners.
int smoothNoise(int x, int y, int cell, int range, std::uint32_t seed) {
  const int cx = x / cell, cy = y / cell, fx = x % cell, fy = y % cell;
  const int top = noise(cx, cy, range, seed) * (cell - fx) + noise(cx + 1, cy, range, seed) * fx;
  const int bottom = noise(cx, cy + 1, range, seed) * (cell - fx) + noise(cx + 1, cy + 1, range, seed) * fx;
  return (top * (cell - fy) + bottom * fy) / (cell * cell);
}

Tev8u shade(int value) { return static_cast<Tev8u>(std::clamp(value, 0, 255)); }

// Round pieces of different brightness and size, with a relief, on ground that is lit from one side.
Image<Tev8u> coins(TevSize size) {
  Image<Tev8u> image(size);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x)
      image.at(x, y) =
          shade(40 + 45 * x / size.width + 20 * y / size.height + noise(x, y, 7) + smoothNoise(x, y, 16, 8, 1));
  const int pitch = std::max(12, std::min(size.width, size.height) / 5);
  int count = 0;
  for (int cy = pitch * 2 / 3; cy < size.height - pitch / 3; cy += pitch)
    for (int cx = pitch * 2 / 3; cx < size.width - pitch / 3; cx += pitch, ++count) {
      const int radius = pitch * (30 + noise(cx, cy, 8, 2)) / 100;
      const int x0 = cx + noise(cx, cy, pitch / 16, 3), y0 = cy + noise(cx, cy, pitch / 16, 4);
      const int metal = 135 + noise(cx, cy, 30, 5);
      for (int y = std::max(0, y0 - radius); y <= std::min(size.height - 1, y0 + radius); ++y)
        for (int x = std::max(0, x0 - radius); x <= std::min(size.width - 1, x0 + radius); ++x) {
          const int square = (x - x0) * (x - x0) + (y - y0) * (y - y0), limit = radius * radius;
          if (square > limit) continue;
          const bool rim = square > limit * 3 / 4,
                     relief = square < limit / 3 && ((x - x0) / 3 + (y - y0) / 4 + count) % 3 == 0;
          image.at(x, y) =
              shade(metal + (rim ? 25 : 0) - (relief ? 30 : 0) + (y0 - y) * 20 / (radius + 1) + noise(x, y, 6, 6));
        }
    }
  return image;
}

// Lines of marks like writing, under uneven light, with a ruled frame.
Image<Tev8u> page(TevSize size) {
  Image<Tev8u> image(size);
  const int height = std::max(8, size.height / 14), width = height * 2 / 3, margin = height;
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      int value = 215 - 70 * x / size.width - 25 * y / size.height + smoothNoise(x, y, 32, 10, 7) + noise(x, y, 4, 8);
      const int line = (y - margin) / height, column = (x - margin) / width;
      const int lx = (x - margin) % width, ly = (y - margin) % height;
      const bool inside = x >= margin && y >= margin && x < size.width - margin && y < size.height - margin;
      const bool letter = inside && line % 2 == 0 && noise(column, line, 9, 9) < 7;
      if (letter && lx > width / 6 && lx < width * 5 / 6 && ly > height / 6 && ly < height * 5 / 6) {
        const int strokes = noise(column, line, 500, 10) + 500;
        const int sx = (lx - width / 6) * 3 / std::max(1, width * 2 / 3),
                  sy = (ly - height / 6) * 3 / std::max(1, height * 2 / 3);
        if ((strokes >> (sy * 3 + sx) & 1) || sx == (strokes & 1) * 2) value -= 95;
      }
      image.at(x, y) = shade(value);
    }
  return image;
}

// A field under a sky, a house with straight edges, a sun, a path.
Image<Tev8u> scene(TevSize size) {
  Image<Tev8u> image(size, 3);
  const int w = size.width, h = size.height;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const int hill = h * 55 / 100 + smoothNoise(x, 0, std::max(2, w / 6), h / 12, 11);
      int r, g, b;
      if (y < hill) {
        const int cloud = std::max(
            0, smoothNoise(x, y * 2, std::max(2, w / 8), 60, 12) + smoothNoise(x, y, std::max(2, w / 24), 25, 13));
        r = 90 + 80 * y / h + cloud, g = 140 + 60 * y / h + cloud, b = 215 + cloud / 2;
        const int dx = x - w * 4 / 5, dy = y - h / 5;
        if (dx * dx + dy * dy < h * h / 300) r = 255, g = 240, b = 170;
      } else {
        const int grass = smoothNoise(x, y, std::max(2, w / 64), 18, 14) + noise(x, y, 14, 15);
        r = 80 + 40 * (y - hill) / h + grass, g = 120 + 30 * (y - hill) / h + grass, b = 55 + grass / 2;
        const int middle = w * 3 / 10 + (y - hill) * w / (4 * h), half = w / 60 + (y - hill) * w / (10 * h);
        if (std::abs(x - middle) < half) r = 170 + grass, g = 150 + grass, b = 120 + grass;
      }
      image.at(x, y, 0) = shade(r), image.at(x, y, 1) = shade(g), image.at(x, y, 2) = shade(b);
    }
  const auto box = [&](int left, int top, int right, int bottom, Colour colour) {  // in hundredths
    for (int y = top * h / 100; y < bottom * h / 100; ++y)
      for (int x = left * w / 100; x < right * w / 100; ++x) {
        const int grain = noise(x, y, 6, 16);
        image.at(x, y, 0) = shade(colour.red + grain), image.at(x, y, 1) = shade(colour.green + grain);
        image.at(x, y, 2) = shade(colour.blue + grain);
      }
  };
  box(50, 42, 80, 72, {205, 185, 160});
  for (int i = 0; i < 14; ++i) box(47 + i, 42 - i, 83 - i, 43 - i, {150, 60, 45});
  box(61, 56, 68, 72, {80, 50, 35});
  for (const int left : {53, 71}) {
    box(left, 49, left + 6, 58, {60, 75, 95});
    box(left + 3, 49, left + 4, 58, {225, 220, 210});
    box(left, 53, left + 6, 54, {225, 220, 210});
  }
  return image;
}

// Squares of a chessboard inside a frame of thin lines: shows every bend of a lens.
Image<Tev8u> board(TevSize size) {
  Image<Tev8u> image(size);
  const int cell = std::max(2, std::min(size.width, size.height) / 12);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const bool line = x % cell == 0 || y % cell == 0, dark = (x / cell + y / cell) % 2 == 0;
      image.at(x, y) = static_cast<Tev8u>(line ? 20 : dark ? 90 : 225);
    }
  return image;
}

}  // namespace

void sample(Program& program) {
  struct Options {
    Image<Tev8u> (*draw)(TevSize) = scene;
    int width = 512, height = 384;
  };
  auto options = std::make_shared<Options>();
  Command& command = program.command("sample", "pictures", "A picture that the program draws itself",
                                     "tevcv sample --picture coins --width 384 --height 304 -o coins.png");
  command.choice("--picture", options->draw, {{"scene", scene}, {"coins", coins}, {"page", page}, {"board", board}},
                 "What to draw");
  command.option("--width", options->width, "Pixels in a row").check(CLI::Range(1, 8192));
  command.option("--height", options->height, "Rows").check(CLI::Range(1, 8192));
  command.alone([options](Result& result) { result.picture = options->draw({options->width, options->height}); });
}

}  // namespace cli
