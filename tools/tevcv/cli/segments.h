// Pictures of labels: their connected segments, found and measured by flood fills.
#pragma once

#include <cstdint>
#include <vector>

#include "cli/command.h"

namespace cli {

struct Segment {
  int label;          // as in the picture of labels
  std::int64_t area;  // pixels
  TevRect box;
};
struct Segments {
  Image<Tev32s> numbers;  // of the segment at each pixel, from 1; 0 for the ground, -1 for boundaries
  std::vector<Segment> list;
};

// Segments are pixels of one label that touch by 8 neighbours or, with `norm` 1, by 4. They are numbered in the order
// of their first pixels.
Segments segmentsOf(const Image<Tev8u>& labels, int ground, int boundary, int norm, Result& result);

// Columns number, label, area, x, y, width, height.
void tabulate(const Segments& segments, Result& result);

enum class Shown { labels, borders, boxes, mosaic };
// Colours; or borders (where numbers differ) or boxes over the picture; or each segment in its mean colour.
Image<Tev8u> showSegments(const Segments& segments, const Picture& picture, Shown shown);

}  // namespace cli
