#include "cli/element.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace cli {
namespace {

constexpr int mostCells = 255;  // a side

bool inside(Shape shape, TevSize size, int x, int y) {
  const std::int64_t w = size.width, h = size.height;
  const std::int64_t u = 2 * x - w + 1, v = 2 * y - h + 1;  // from the middle, in halves
  switch (shape) {
    case Shape::disc:
      return u * u * h * h + v * v * w * w <= w * w * h * h;
    case Shape::cross:
      return x == size.width / 2 || y == size.height / 2;
    case Shape::line:
    case Shape::rising: {  // along the longer side, one cell a step
      if (shape == Shape::rising) y = size.height - 1 - y;
      const int steps = std::max(size.width, size.height) - 1;
      if (steps == 0) return true;
      const int along = size.width >= size.height ? x : y;
      return x == (2 * along * (size.width - 1) + steps) / (2 * steps) &&
             y == (2 * along * (size.height - 1) + steps) / (2 * steps);
    }
    case Shape::rectangle:
      break;
  }
  return true;
}

}  // namespace

bool parsePair(const std::string& text, char between, int& a, int& b) {
  const char* const end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, a);
  if (first.ec != std::errc{} || first.ptr == end || *first.ptr != between) return false;
  const auto second = std::from_chars(first.ptr + 1, end, b);
  return second.ec == std::errc{} && second.ptr == end;
}

void pointOption(Command& command, const std::string& name, TevPoint& point, const std::string& text) {
  command.app()
      .add_option_function<std::string>(
          name,
          [&point, name](const std::string& given) {
            if (!parsePair(given, ',', point.x, point.y)) throw CLI::ValidationError(name, given + " is not X,Y");
          },
          text)
      ->type_name("X,Y");
}

void sizeOption(Command& command, const std::string& name, TevSize& size, int most, const std::string& text) {
  std::string current = std::to_string(size.width);
  if (size.width != size.height) current += "x" + std::to_string(size.height);
  command.app()
      .add_option_function<std::string>(
          name,
          [&size, most, name](const std::string& given) {
            if (!parsePair(given, 'x', size.width, size.height)) {
              if (!parsePair(given + ",0", ',', size.width, size.height))
                throw CLI::ValidationError(name, given + " is not N or WxH");
              size.height = size.width;
            }
            if (std::min(size.width, size.height) < 1 || std::max(size.width, size.height) > most)
              throw CLI::ValidationError(name, given + " is not between 1 and " + std::to_string(most));
          },
          text)
      ->type_name("N|WxH")
      ->default_str(current);
}

void addElementOptions(Command& command, ElementOptions& options) {
  command.choice("--shape", options.shape,
                 {{"rectangle", Shape::rectangle},
                  {"disc", Shape::disc},
                  {"cross", Shape::cross},
                  {"line", Shape::line},
                  {"rising-line", Shape::rising}},
                 "The element; a line goes from corner to corner of its size");
  sizeOption(command, "--size", options.size, mostCells, "Width and height of the element");
  pointOption(command, "--anchor", options.anchor, "The element's cell on the pixel (default: its middle)");
  command.app()
      .add_option("--element", options.file, "Take the element from this picture: all pixels that are not black")
      ->type_name("FILE");
}

Element makeElement(const ElementOptions& options) {
  Element element;
  if (options.file.empty()) {
    element.size = options.size;
    for (int y = 0; y < options.size.height; ++y)
      for (int x = 0; x < options.size.width; ++x)
        element.cells.push_back(inside(options.shape, options.size, x, y) ? 1 : 0);
  } else {
    const Image<Tev8u> image = grey8(readPicture(options.file));
    if (std::max(image.width(), image.height()) > mostCells)
      throw UserError(options.file + ": an element has at most " + std::to_string(mostCells) + " cells a side");
    element.size = image.size;
    element.cells = image.elements;
  }
  element.anchor = options.anchor;
  if (element.anchor.x == -1 && element.anchor.y == -1)
    element.anchor = {element.size.width / 2, element.size.height / 2};
  if (element.anchor.x < 0 || element.anchor.y < 0 || element.anchor.x >= element.size.width ||
      element.anchor.y >= element.size.height)
    throw UserError("--anchor: " + std::to_string(element.anchor.x) + "," + std::to_string(element.anchor.y) +
                    " is outside of the element of " + std::to_string(element.size.width) + " x " +
                    std::to_string(element.size.height));
  return element;
}

Element reflected(const Element& element) {
  Element turned = element;
  turned.anchor = {element.size.width - 1 - element.anchor.x, element.size.height - 1 - element.anchor.y};
  std::reverse(turned.cells.begin(), turned.cells.end());
  return turned;
}

}  // namespace cli
