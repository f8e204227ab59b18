// Many images on one canvas.
#pragma once

#include <algorithm>
#include <limits>
#include <vector>

#include "cli/image.h"

namespace cli {

template <class T>
void pasteInto(Image<T>& canvas, const Image<T>& image, int left, int top) {
  for (int y = 0; y < image.height(); ++y)
    std::copy_n(image.row(y), image.width() * image.channels, canvas.row(top + y) + left * canvas.channels);
}

// Images of one size in rows of `columns`, 0: about as wide as high. White between them.
template <class T>
Image<T> grid(const std::vector<Image<T>>& images, int columns = 0, int gap = 4) {
  const int count = static_cast<int>(images.size());
  const TevSize tile = images.front().size;
  const auto rowsOf = [&](int across) { return (count + across - 1) / across; };
  if (columns == 0) {
    columns = 1;
    while (columns < count && columns * tile.width < rowsOf(columns) * tile.height) ++columns;
  }
  columns = std::min(columns, count);
  Image<T> canvas({columns * (tile.width + gap) - gap, rowsOf(columns) * (tile.height + gap) - gap},
                  images.front().channels, std::numeric_limits<T>::max());
  for (int i = 0; i < count; ++i)
    pasteInto(canvas, images[static_cast<std::size_t>(i)], i % columns * (tile.width + gap),
              i / columns * (tile.height + gap));
  return canvas;
}

// Images one below the other while they fit beside the first, then in a new column. White around them.
template <class T>
Image<T> shelves(const std::vector<Image<T>>& images, int gap = 4) {
  std::vector<TevPoint> places;
  int left = 0, top = 0, width = 0;  // of the column at hand
  for (const Image<T>& image : images) {
    if (top > 0 && (places.size() == 1 || top + image.height() > images.front().height())) {
      left += width + gap;
      top = width = 0;
    }
    places.push_back({left, top});
    top += image.height() + gap;
    width = std::max(width, image.width());
  }
  Image<T> canvas({left + width, images.front().height()}, images.front().channels, std::numeric_limits<T>::max());
  for (std::size_t i = 0; i < images.size(); ++i) pasteInto(canvas, images[i], places[i].x, places[i].y);
  return canvas;
}

}  // namespace cli
