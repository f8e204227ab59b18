#include "cli/segments.h"

#include <algorithm>

#include "cli/paint.h"
#include "tevcv.h"

namespace cli {

Segments segmentsOf(const Image<Tev8u>& labels, int ground, int boundary, int norm, Result& result) {
  const TevSize roi = labels.size;
  Segments segments;
  segments.numbers = Image<Tev32s>(roi);
  // In floats there is room for any number of segments: the one of number n is filled with -n.
  Image<Tev32f> filled(roi);
  std::copy(labels.elements.begin(), labels.elements.end(), filled.elements.begin());
  const auto fill = norm == 0 ? teviFloodFill_8Con_32f_C1IR : teviFloodFill_4Con_32f_C1IR;
  result.timed([&] {
    int size = 0;
    TEV_CHECK(teviFloodFillGetSize, roi, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < roi.width; ++x) {
        const int label = labels.at(x, y);
        if (filled.at(x, y) < 0 || label == ground || label == boundary) continue;
        TevConnectedRegion region{};
        check("teviFloodFill_32f_C1IR", fill(filled.data(), filled.step(), roi, {x, y},
                                             -static_cast<Tev32f>(segments.list.size() + 1), &region, buffer.data()));
        segments.list.push_back({label, static_cast<std::int64_t>(region.area), region.rect});
      }
  });
  for (std::size_t i = 0; i < filled.elements.size(); ++i)
    segments.numbers.elements[i] = filled.elements[i] < 0           ? static_cast<Tev32s>(-filled.elements[i])
                                   : labels.elements[i] == boundary ? -1
                                                                    : 0;
  return segments;
}

void tabulate(const Segments& segments, Result& result) {
  result.table.columns = {"segment", "label", "area", "x", "y", "width", "height"};
  for (std::size_t i = 0; i < segments.list.size(); ++i) {
    const Segment& s = segments.list[i];
    result.table.add(i + 1, s.label, s.area, s.box.x, s.box.y, s.box.width, s.box.height);
  }
}

Image<Tev8u> showSegments(const Segments& segments, const Picture& picture, Shown shown) {
  const Image<Tev32s>& numbers = segments.numbers;
  if (shown == Shown::labels) return viewLabels(numbers);
  Image<Tev8u> image = colour8(picture);
  if (shown == Shown::boxes) {
    for (const Segment& s : segments.list) paintBox(image, s.box, red, 1);
    return image;
  }
  if (shown == Shown::mosaic) {
    std::vector<std::int64_t> sums(4 * (segments.list.size() + 2));  // red, green, blue, count from number -1
    const auto slot = [&](int x, int y) { return 4 * static_cast<std::size_t>(numbers.at(x, y) + 1); };
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) {
        for (int c = 0; c < 3; ++c) sums[slot(x, y) + static_cast<std::size_t>(c)] += image.at(x, y, c);
        ++sums[slot(x, y) + 3];
      }
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x)
        for (int c = 0; c < 3; ++c) {
          const std::int64_t count = sums[slot(x, y) + 3];
          image.at(x, y, c) = static_cast<Tev8u>((sums[slot(x, y) + static_cast<std::size_t>(c)] + count / 2) / count);
        }
    return image;
  }
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) {
      const int here = numbers.at(x, y);
      const bool edge = (x + 1 < image.width() && numbers.at(x + 1, y) != here) ||
                        (y + 1 < image.height() && numbers.at(x, y + 1) != here);
      if (here == -1 || edge) paintPoint(image, x, y, yellow);
    }
  return image;
}

}  // namespace cli
