// Structuring elements on the command line: their shape, size and anchor.
#pragma once

#include <string>
#include <vector>

#include "cli/command.h"

namespace cli {

enum class Shape { rectangle, disc, cross, line, rising };

struct ElementOptions {
  Shape shape = Shape::disc;
  TevSize size{9, 9};
  TevPoint anchor{-1, -1};  // the middle
  std::string file;         // a picture of the element instead of a shape
};

// Cells row by row, not 0 where they belong to the element.
struct Element {
  TevSize size{};
  TevPoint anchor{};
  std::vector<Tev8u> cells;
};

void addElementOptions(Command& command, ElementOptions& options);
Element makeElement(const ElementOptions& options);
// Turned by 180 degrees.
Element reflected(const Element& element);

// Two whole numbers with `between` between them, and nothing else.
bool parsePair(const std::string& text, char between, int& a, int& b);
// --name X,Y
void pointOption(Command& command, const std::string& name, TevPoint& point, const std::string& text);
// --name W or WxH, each from 1 to `most`.
void sizeOption(Command& command, const std::string& name, TevSize& size, int most, const std::string& text);

}  // namespace cli
