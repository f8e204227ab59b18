// Pictures in black and white: what stands out by its brightness, or edges. White is 255.
#pragma once

#include "cli/command.h"

namespace cli {

struct BinaryOptions {
  int threshold = -1;  // -1: the one that parts the grey levels best
  bool dark = false;   // the objects are dark
  bool fill = false;   // holes in objects belong to them
  int background = 0;  // objects stand out from their surroundings of this many pixels; 0: from the whole picture
};
// --threshold, --dark, --fill-holes, --background
void addBinaryOptions(Command& command, BinaryOptions& options);

// White where an object is.
Image<Tev8u> binary(const Image<Tev8u>& grey, const BinaryOptions& options, Result& result);

// The threshold with the greatest variance between the grey levels on its two sides (N. Otsu, "A threshold selection
// method from gray-level histograms", 1979).
int otsu(const Image<Tev8u>& grey);

inline Image<Tev8u> inverted(Image<Tev8u> image) {
  for (Tev8u& value : image.elements) value = static_cast<Tev8u>(255 - value);
  return image;
}

}  // namespace cli
