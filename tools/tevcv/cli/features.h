// Edges and peaks, as several commands want them.
#pragma once

#include "cli/command.h"

namespace cli {

// Canny's edges in white, from Sobel derivatives.
Image<Tev8u> edgeMap(const Image<Tev8u>& grey, float low, float high, Result& result, TevMaskSize mask = tevMskSize3x3);

struct PeakOptions {
  Tev32f threshold = 0;
  int most = 300;    // how many to keep
  int distance = 8;  // least distance from a stronger one, in pixels
  int norm = 0;      // 0: against eight neighbours, 1: against four
  int border = 1;    // rows and columns at the edge that are not searched
};

// Rows of whole groups of four floats, as the search for peaks wants them.
inline int paddedWidth(int width) { return (width + 3) / 4 * 4; }

// The positive peaks of `measured` within `roi`, strongest first. Its rows are paddedWidth() wide.
std::vector<TevPoint> strongestPeaks(const Image<Tev32f>& measured, TevSize roi, const PeakOptions& options,
                                     Result& result);

// The largest number within `roi`, at least 0.
Tev32f strongest(const Image<Tev32f>& measured, TevSize roi);

}  // namespace cli
