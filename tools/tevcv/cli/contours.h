// Distances and times made visible: colours from black over red to light yellow, and lines of equal value.
#pragma once

#include <memory>

#include "cli/command.h"
#include "cli/paint.h"

namespace cli {

Image<Tev8u> heat(const Image<Tev32f>& values, double low, double high);
// A line between pixels on two sides of a multiple of `step`.
void paintIsolines(Image<Tev8u>& image, const Image<Tev32f>& values, double step, Colour colour);

enum class Show { grey, heat, contours, overlay };
struct ContourOptions {
  Show show = Show::contours;
  double step = 10;
};
// --show, --step
void addContourOptions(Command& command, ContourOptions& options);
// The values as told, into the result: `picture` is what an overlay lies on.
void showContours(const Image<Tev32f>& values, const Picture& picture, const ContourOptions& options, Result& result);

}  // namespace cli
