// The direction in which a picture gets brighter, pixel by pixel: the fast arctangent of both Sobel derivatives.
#include "cli/command.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Show { wheel, hue, grey };

struct Options {
  Show show = Show::wheel;
  TevMaskSize mask = tevMskSize3x3;
  bool axial = false, noLegend = false;
  int bins = 36;
};

// Hue of an angle in degrees, `shade` from 0 to 1.
void paintHue(Tev8u* pixel, double angle, double shade) {
  const double sector = angle / 60;
  for (int c = 0; c < 3; ++c) {
    double away = std::fabs(sector - 2 * c);
    away = std::min(away, 6 - away);  // 0 at the channel's own hue, 3 on the other side
    pixel[c] = static_cast<Tev8u>(std::floor(std::clamp(2 - away, 0.0, 1.0) * shade * 255 + 0.5));
  }
}

// Degrees from 0 up to 360, or to 180 for directions without a sense.
double reducedAngle(Tev32f angle, bool axial) {
  const double turn = axial ? 180 : 360;
  double a = angle;
  while (a < 0) a += turn;
  while (a >= turn) a -= turn;
  return a;
}

Image<Tev32f> angles(const Image<Tev32f>& dy, const Image<Tev32f>& dx) {
  Image<Tev32f> result(dx.size);
  TEV_CHECK(tevibFastArctan_32f, dy.data(), dx.data(), result.data(), static_cast<int>(result.elements.size()));
  return result;
}

// A small wheel in the corner that shows what the hues mean.
void paintLegend(Image<Tev8u>& image, bool axial) {
  const int radius = std::min({24, image.width() / 8, image.height() / 8});
  if (radius < 5) return;
  const int side = 2 * radius + 1;
  Image<Tev32f> dx({side, side}), dy({side, side});
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x) {
      dx.at(x, y) = static_cast<Tev32f>(x - radius);
      dy.at(x, y) = static_cast<Tev32f>(y - radius);
    }
  const Image<Tev32f> angle = angles(dy, dx);
  const int left = image.width() - side - radius / 4 - 1, top = image.height() - side - radius / 4 - 1;
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x) {
      const int far = (x - radius) * (x - radius) + (y - radius) * (y - radius);
      Tev8u* const pixel = &image.at(left + x, top + y);
      if (far <= (radius - 2) * (radius - 2))
        paintHue(pixel, reducedAngle(angle.at(x, y), axial) * (axial ? 2 : 1), 1);
      else if (far <= radius * radius)
        std::fill_n(pixel, 3, Tev8u{255});
    }
}

}  // namespace

void orientation(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("orientation", "features", "The direction of the gradient as colour or grey",
                                     "tevcv orientation photo.png -o orientation.png");
  command.choice("--show", o->show, {{"wheel", Show::wheel}, {"hue", Show::hue}, {"grey", Show::grey}},
                 "Hue by direction and brightness by strength, hue alone, or 0 to 360 degrees as grey");
  command.choice("--mask", o->mask, {{"3x3", tevMskSize3x3}, {"5x5", tevMskSize5x5}}, "Sobel kernel");
  command.flag("--axial", o->axial, "Opposite directions are one: 180 degrees make the circle");
  command.flag("--no-legend", o->noLegend, "Leave out the small wheel in the corner");
  command.option("--bins", o->bins, "Rows of the table, a histogram of directions by strength")
      .check(CLI::Range(2, 360));
  command.withTable().withDepth().eachPicture([o](const Picture& picture, Result& result) {
    const Image<Tev32f> grey = greyFloat(picture);
    const TevSize roi = grey.size;
    Image<Tev32f> dx(roi), dy(roi), angle;
    result.timed([&] {
      int across = 0, down = 0;
      TEV_CHECK(teviFilterSobelNegVertGetBufferSize_32f_C1R, roi, o->mask, &across);
      TEV_CHECK(teviFilterSobelHorizGetBufferSize_32f_C1R, roi, o->mask, &down);
      std::vector<Tev8u> buffer(static_cast<std::size_t>(std::max(across, down)));
      TEV_CHECK(teviFilterSobelNegVertBorder_32f_C1R, grey.data(), grey.step(), dx.data(), dx.step(), roi, o->mask,
                tevBorderRepl, 0, buffer.data());
      TEV_CHECK(teviFilterSobelHorizBorder_32f_C1R, grey.data(), grey.step(), dy.data(), dy.step(), roi, o->mask,
                tevBorderRepl, 0, buffer.data());
      angle = angles(dy, dx);
    });
    Image<Tev32f> strength(roi);
    for (std::size_t i = 0; i < strength.elements.size(); ++i) {
      const double x = dx.elements[i], y = dy.elements[i];
      strength.elements[i] = static_cast<Tev32f>(std::sqrt(x * x + y * y));
      angle.elements[i] = static_cast<Tev32f>(reducedAngle(angle.elements[i], o->axial));
    }

    const double turn = o->axial ? 180 : 360;
    std::vector<double> histogram(static_cast<std::size_t>(o->bins));
    double total = 0;
    for (std::size_t i = 0; i < strength.elements.size(); ++i) {
      const int bin = std::min(static_cast<int>(angle.elements[i] / turn * o->bins), o->bins - 1);
      histogram[static_cast<std::size_t>(bin)] += strength.elements[i];
      total += strength.elements[i];
    }
    result.table.columns = {"from", "to", "share"};
    for (int bin = 0; bin < o->bins; ++bin) {
      const double share = total > 0 ? histogram[static_cast<std::size_t>(bin)] / total : 0;
      result.table.add(bin * turn / o->bins, (bin + 1) * turn / o->bins, std::floor(share * 1e6 + 0.5) / 1e6);
    }

    if (o->show == Show::grey) {
      result.picture = view(angle, result.deep, 0, turn);
      return;
    }
    const double full = brightExtent(strength);
    Image<Tev8u> shown(roi, 3);
    for (std::size_t i = 0; i < angle.elements.size(); ++i) {
      const bool flat = strength.elements[i] == 0;  // no direction
      const double shade = flat ? 0 : o->show == Show::hue ? 1 : std::min(1.0, strength.elements[i] / full);
      paintHue(shown.data() + 3 * i, angle.elements[i] * (o->axial ? 2 : 1), shade);
    }
    if (!o->noLegend) paintLegend(shown, o->axial);
    result.picture = shown;
  });
}

}  // namespace cli
