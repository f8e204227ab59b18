#include "cli/paint.h"

#include <algorithm>
#include <cmath>

namespace cli {
namespace {

void copyInto(Image<Tev8u>& target, const Image<Tev8u>& source, int left, int top) {
  for (int y = 0; y < source.height(); ++y)
    std::copy_n(source.row(y), source.width() * source.channels, target.row(top + y) + left * source.channels);
}

int nearest(double value) { return static_cast<int>(std::floor(std::clamp(value, -1e6, 1e6) + 0.5)); }

}  // namespace

void paintPoint(Image<Tev8u>& image, int x, int y, Colour colour, int pen) {
  for (int dy = -(pen - 1) / 2; dy <= pen / 2; ++dy)
    for (int dx = -(pen - 1) / 2; dx <= pen / 2; ++dx) {
      const int px = x + dx, py = y + dy;
      if (px < 0 || py < 0 || px >= image.width() || py >= image.height()) continue;
      image.at(px, py, 0) = colour.red;
      image.at(px, py, 1) = colour.green;
      image.at(px, py, 2) = colour.blue;
    }
}

void paintLine(Image<Tev8u>& image, double x0, double y0, double x1, double y1, Colour colour, int pen) {
  // Bresenham between the nearest pixels.
  int x = nearest(x0), y = nearest(y0);
  const int endX = nearest(x1), endY = nearest(y1);
  const int dx = std::abs(endX - x), dy = -std::abs(endY - y);
  const int sx = x < endX ? 1 : -1, sy = y < endY ? 1 : -1;
  int error = dx + dy;
  for (;;) {
    paintPoint(image, x, y, colour, pen);
    if (x == endX && y == endY) return;
    const int twice = 2 * error;
    if (twice >= dy) error += dy, x += sx;
    if (twice <= dx) error += dx, y += sy;
  }
}

void paintArrow(Image<Tev8u>& image, double x0, double y0, double x1, double y1, Colour colour, int pen) {
  paintLine(image, x0, y0, x1, y1, colour, pen);
  const double dx = x1 - x0, dy = y1 - y0, length = std::sqrt(dx * dx + dy * dy);
  if (length < 2) return;
  // Barbs of a third of the shaft, at most 6 pixels, at 30 degrees.
  const double barb = std::min(6.0, length / 3) / length, c = 0.8660254037844386, s = 0.5;
  paintLine(image, x1, y1, x1 - barb * (c * dx - s * dy), y1 - barb * (s * dx + c * dy), colour, pen);
  paintLine(image, x1, y1, x1 - barb * (c * dx + s * dy), y1 - barb * (c * dy - s * dx), colour, pen);
}

void paintBox(Image<Tev8u>& image, TevRect box, Colour colour, int pen) {
  const int right = box.x + box.width - 1, bottom = box.y + box.height - 1;
  paintLine(image, box.x, box.y, right, box.y, colour, pen);
  paintLine(image, right, box.y, right, bottom, colour, pen);
  paintLine(image, right, bottom, box.x, bottom, colour, pen);
  paintLine(image, box.x, bottom, box.x, box.y, colour, pen);
}

void paintCircle(Image<Tev8u>& image, double x, double y, double radius, Colour colour, int pen) {
  // Every pixel whose distance from the centre rounds to the radius.
  const int reach = nearest(radius) + 1, cx = nearest(x), cy = nearest(y);
  for (int dy = -reach; dy <= reach; ++dy)
    for (int dx = -reach; dx <= reach; ++dx)
      if (std::fabs(std::sqrt(static_cast<double>(dx * dx + dy * dy)) - radius) < 0.5)
        paintPoint(image, cx + dx, cy + dy, colour, pen);
}

void paintCross(Image<Tev8u>& image, int x, int y, int arm, Colour colour, int pen) {
  paintLine(image, x - arm, y, x + arm, y, colour, pen);
  paintLine(image, x, y - arm, x, y + arm, colour, pen);
}

void paintMask(Image<Tev8u>& image, const Image<Tev8u>& mask, Colour colour) {
  const Tev8u shades[] = {colour.red, colour.green, colour.blue};
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (mask.at(x, y))
        for (int c = 0; c < 3; ++c) image.at(x, y, c) = static_cast<Tev8u>((image.at(x, y, c) + shades[c] + 1) / 2);
}

Image<Tev8u> beside(const Image<Tev8u>& left, const Image<Tev8u>& right, int gap) {
  Image<Tev8u> result({left.width() + gap + right.width(), std::max(left.height(), right.height())}, left.channels,
                      255);
  copyInto(result, left, 0, 0);
  copyInto(result, right, left.width() + gap, 0);
  return result;
}

Image<Tev8u> below(const Image<Tev8u>& top, const Image<Tev8u>& bottom, int gap) {
  Image<Tev8u> result({std::max(top.width(), bottom.width()), top.height() + gap + bottom.height()}, top.channels, 255);
  copyInto(result, top, 0, 0);
  copyInto(result, bottom, 0, top.height() + gap);
  return result;
}

}  // namespace cli
