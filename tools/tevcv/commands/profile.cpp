// The pixels along a line: drawn as a chart below the picture, and as a table.
#include "cli/command.h"
#include "cli/paint.h"
#include "cli/pixels.h"
#include "cli/points.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  std::vector<int> from, to;
  int height = 160;
};

template <class T>
TevStatus sample(const Image<T>& image, T* values, TevPoint a, TevPoint b) {
  if constexpr (sizeof(T) == 1)
    return (image.channels == 1 ? teviSampleLine_8u_C1R : teviSampleLine_8u_C3R)(image.data(), image.step(), image.size,
                                                                                 values, a, b);
  else if constexpr (sizeof(T) == 2)
    return (image.channels == 1 ? teviSampleLine_16u_C1R : teviSampleLine_16u_C3R)(image.data(), image.step(),
                                                                                   image.size, values, a, b);
  else
    return (image.channels == 1 ? teviSampleLine_32f_C1R : teviSampleLine_32f_C3R)(image.data(), image.step(),
                                                                                   image.size, values, a, b);
}

TevPoint pointOf(const char* name, const std::vector<int>& given, TevPoint otherwise, TevSize size) {
  const TevPoint point = given.empty() ? otherwise : TevPoint{given[0], given[1]};
  if (point.x < 0 || point.y < 0 || point.x >= size.width || point.y >= size.height)
    throw UserError(std::string(name) + ": lies outside of the picture, which is " + std::to_string(size.width) +
                    " x " + std::to_string(size.height));
  return point;
}

// A chart of values from 0 to `white`, one curve for each channel, as wide as the picture.
template <class T>
Image<Tev8u> chart(const std::vector<T>& values, int channels, double white, TevSize size) {
  Image<Tev8u> image(size, 3, 24);
  const int count = static_cast<int>(values.size()) / channels;
  for (int quarter = 1; quarter < 4; ++quarter)
    paintLine(image, 0, size.height * quarter / 4, size.width - 1, size.height * quarter / 4, {64, 64, 64});
  const auto x = [&](int i) { return count > 1 ? static_cast<double>(i) * (size.width - 1) / (count - 1) : 0.0; };
  const Colour colours[] = {red, green, blue};
  for (int c = 0; c < channels; ++c) {
    const auto y = [&](int i) {
      return (size.height - 3) * (1 - values[static_cast<std::size_t>(i * channels + c)] / white) + 1;
    };
    const Colour colour = channels == 1 ? yellow : colours[c];
    if (count == 1) paintLine(image, 0, y(0), size.width - 1, y(0), colour);
    for (int i = 1; i < count; ++i) paintLine(image, x(i - 1), y(i - 1), x(i), y(i), colour);
  }
  return image;
}

template <class T>
void profileOf(const Picture& picture, const Image<T>& image, const Options& o, Result& result) {
  const TevSize size = image.size;
  const TevPoint a = pointOf("--from", o.from, {0, size.height / 2}, size),
                 b = pointOf("--to", o.to, {size.width - 1, size.height / 2}, size);
  const int count = std::max(std::abs(b.x - a.x), std::abs(b.y - a.y)) + 1;
  std::vector<T> values(static_cast<std::size_t>(count * image.channels));
  result.timed([&] { check("teviSampleLine", sample(image, values.data(), a, b)); });

  // Which pixels these are: the same line through an image of the positions.
  Image<Tev32f> positions(size, 3);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      positions.at(x, y, 0) = static_cast<Tev32f>(x);
      positions.at(x, y, 1) = static_cast<Tev32f>(y);
    }
  std::vector<Tev32f> places(static_cast<std::size_t>(count) * 3);
  check("teviSampleLine_32f_C3R", sample(positions, places.data(), a, b));

  Image<Tev8u> shown = colour8(picture);
  result.table.columns = {"step", "x", "y"};
  for (const char* const name : {"red", "green", "blue"})
    result.table.columns.emplace_back(image.channels == 1 ? "grey" : name);
  result.table.columns.resize(static_cast<std::size_t>(3 + image.channels));
  for (int i = 0; i < count; ++i) {
    const int x = static_cast<int>(places[static_cast<std::size_t>(3 * i)]),
              y = static_cast<int>(places[static_cast<std::size_t>(3 * i + 1)]);
    const T* const v = &values[static_cast<std::size_t>(i * image.channels)];
    if (image.channels == 1)
      result.table.add(i, x, y, v[0]);
    else
      result.table.add(i, x, y, v[0], v[1], v[2]);
    paintPoint(shown, x, y, yellow, 2);
  }
  paintCircle(shown, a.x, a.y, 4, yellow, 2);  // where it begins
  result.picture =
      o.height == 0 ? shown
                    : below(shown, chart(values, image.channels, sizeof(T) == 1 ? 255 : 65535, {size.width, o.height}));
}

}  // namespace

void profile(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("profile", "features", "The pixels along a line, as a chart and a table",
                                     "tevcv profile photo.png --from 10,10 --to 60,40 -o profile.png --table -");
  tuple(command, "--from", o->from, 2, "X,Y", "Where the line begins (default: the middle of the left edge)");
  tuple(command, "--to", o->to, 2, "X,Y", "Where it ends (default: the middle of the right edge)");
  command.option("--height", o->height, "Height of the chart below the picture; 0: none").check(CLI::Range(0, 4000));
  command.withTable().eachPicture([o](const Picture& picture, Result& result) {
    if (picture.deep())
      profileOf(picture, picture.words, *o, result);
    else
      profileOf(picture, picture.bytes, *o, result);
  });
}

}  // namespace cli
