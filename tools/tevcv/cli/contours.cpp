#include "cli/contours.h"

#include <algorithm>
#include <cmath>

namespace cli {
namespace {

constexpr Colour palette[] = {{0, 0, 4},     {40, 11, 84},   {101, 21, 110}, {159, 42, 99},
                              {212, 72, 66}, {245, 125, 21}, {250, 193, 39}, {252, 255, 164}};
constexpr int spans = sizeof palette / sizeof palette[0] - 1;

// A gap between `a` and `b` that is a multiple of the step.
bool parted(Tev32f a, Tev32f b, double step) { return std::floor(a / step) != std::floor(b / step); }

}  // namespace

Image<Tev8u> heat(const Image<Tev32f>& values, double low, double high) {
  Image<Tev8u> result(values.size, 3);
  const double scale = high > low ? spans / (high - low) : 0;
  for (std::size_t i = 0; i < values.elements.size(); ++i) {
    const double place = (values.elements[i] - low) * scale;
    const double position = place > 0 ? std::min<double>(place, spans) : 0;  // NaN falls to 0
    const int span = std::min(static_cast<int>(position), spans - 1);
    const double share = position - span;
    const Colour a = palette[span], b = palette[span + 1];
    const auto mix = [share](int from, int to) {
      return static_cast<Tev8u>(std::floor(from + (to - from) * share + 0.5));
    };
    result.elements[3 * i] = mix(a.red, b.red);
    result.elements[3 * i + 1] = mix(a.green, b.green);
    result.elements[3 * i + 2] = mix(a.blue, b.blue);
  }
  return result;
}

void paintIsolines(Image<Tev8u>& image, const Image<Tev32f>& values, double step, Colour colour) {
  for (int y = 0; y < values.height(); ++y)
    for (int x = 0; x < values.width(); ++x) {
      const Tev32f here = values.at(x, y);
      if ((x + 1 < values.width() && parted(here, values.at(x + 1, y), step)) ||
          (y + 1 < values.height() && parted(here, values.at(x, y + 1), step)))
        paintPoint(image, x, y, colour);
    }
}

void addContourOptions(Command& command, ContourOptions& options) {
  command.choice("--show", options.show,
                 {{"grey", Show::grey}, {"heat", Show::heat}, {"contours", Show::contours}, {"overlay", Show::overlay}},
                 "Grey, colours, colours with lines of equal value, or the lines over the picture");
  command.option("--step", options.step, "From line to line").check(CLI::Range(0.001, 1e6));
}

void showContours(const Image<Tev32f>& values, const Picture& picture, const ContourOptions& options, Result& result) {
  double low = 0, high = 0;
  for (const Tev32f value : values.elements) low = std::min<double>(low, value), high = std::max<double>(high, value);
  if (options.show == Show::grey) {
    result.picture = view(values, result.deep, low, high > low ? high : low + 1);
    return;
  }
  Image<Tev8u> shown = options.show == Show::overlay ? colour8(picture) : heat(values, low, high);
  if (options.show == Show::contours) paintIsolines(shown, values, options.step, white);
  if (options.show == Show::overlay) paintIsolines(shown, values, options.step, yellow);
  result.picture = shown;
}

}  // namespace cli
