// Straight lines: Hough's transform of Canny's edges.
#include "cli/command.h"
#include "cli/features.h"
#include "cli/paint.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

constexpr double pi = 3.14159265358979323846;

struct Options {
  float low = 100, high = 300;
  TevMaskSize mask = tevMskSize3x3;
  double rhoStep = 1, degrees = 1;
  int votes = 0, most = 20, apart = 12;
  bool edges = false;
};

struct Line {
  TevPolarLine polar;
  double x0, y0, x1, y1;  // where it leaves the picture
};

// Sine by its series, so that every build of the program draws the same pixels.
double sine(double angle) {
  double term = angle, sum = angle;
  for (int n = 2; n < 40; n += 2) sum += term *= -angle * angle / (n * (n + 1));
  return sum;
}
double cosine(double angle) { return sine(pi / 2 - angle); }

std::vector<TevPolarLine> hough(const Image<Tev8u>& edges, int votes, const Options& o, Result& result) {
  const auto rhoStep = static_cast<Tev32f>(o.rhoStep), thetaStep = static_cast<Tev32f>(o.degrees * (pi / 180));
  if (rhoStep > static_cast<Tev32f>(edges.width() + edges.height()))
    throw UserError("--rho-step: is larger than the picture");
  std::vector<TevPolarLine> lines(5000);
  int count = 0;
  result.timed([&] {
    int size = 0;
    if (TEV_CHECK(teviHoughLineGetSize_8u_C1R, edges.size, rhoStep, thetaStep, static_cast<int>(lines.size()), &size) ==
        tevStatusSizeWarning)
      throw UserError("--theta-step: is too fine for a picture of this size");
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviHoughLine_8u32f_C1R, edges.data(), edges.step(), edges.size, rhoStep, thetaStep, votes, lines.data(),
              static_cast<int>(lines.size()), &count, buffer.data());
  });
  lines.resize(static_cast<std::size_t>(count));
  return lines;
}

// The part of a line inside of the picture; false where it only touches a corner or less.
bool clip(Line& line, TevSize size) {
  const double c = cosine(line.polar.theta), s = sine(line.polar.theta), rho = line.polar.rho;
  const double right = size.width - 1, bottom = size.height - 1;
  // The point nearest to the origin, and how far the line runs from there to each edge.
  const double x = rho * c, y = rho * s;
  double from = -1e9, to = 1e9;
  const auto within = [&](double start, double direction, double most) {
    if (std::fabs(direction) < 1e-12) {
      if (start < -0.5 || start > most + 0.5) to = from;
      return;
    }
    const double a = (0 - start) / direction, b = (most - start) / direction;
    from = std::max(from, std::min(a, b));
    to = std::min(to, std::max(a, b));
  };
  within(x, -s, right);
  within(y, c, bottom);
  if (!(to - from >= 1)) return false;
  const auto rounded = [](double value) { return std::floor(value * 100 + 0.5) / 100; };
  line.x0 = rounded(x - from * s), line.y0 = rounded(y + from * c);
  line.x1 = rounded(x - to * s), line.y1 = rounded(y + to * c);
  return true;
}

// Whether both ends of one line lie within `apart` of the other line, and the other way round.
bool near(const Line& a, const Line& b, double apart) {
  const auto distance = [](const Line& line, double x, double y) {
    return std::fabs(x * cosine(line.polar.theta) + y * sine(line.polar.theta) - line.polar.rho);
  };
  return (distance(a, b.x0, b.y0) < apart && distance(a, b.x1, b.y1) < apart) ||
         (distance(b, a.x0, a.y0) < apart && distance(b, a.x1, a.y1) < apart);
}

}  // namespace

void lines(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("lines", "features", "Straight lines by Hough's transform of Canny's edges",
                                     "tevcv lines photo.png --most 10 -o lines.png --table lines.csv");
  command.option("--low", o->low, "Gradient that goes on an edge").check(CLI::Range(0.0F, 1e6F));
  command.option("--high", o->high, "Gradient that starts an edge").check(CLI::Range(0.0F, 1e6F));
  command.choice("--mask", o->mask, {{"3x3", tevMskSize3x3}, {"5x5", tevMskSize5x5}}, "Sobel kernel");
  command.option("--rho-step", o->rhoStep, "Step of the distance, in pixels").check(CLI::Range(0.1, 100.0));
  command.option("--theta-step", o->degrees, "Step of the angle, in degrees").check(CLI::Range(0.05, 45.0));
  command.option("--votes", o->votes, "Edge pixels that a line passes at least; 0: a quarter of the shorter side")
      .check(CLI::Range(0, 1000000));
  command.option("--most", o->most, "How many lines to keep").check(CLI::Range(1, 5000));
  command.option("--apart", o->apart, "Lines that run this near to a stronger one are left out; 0 keeps all")
      .check(CLI::Range(0, 1000));
  command.flag("--edges", o->edges, "Draw over the edges instead of the picture");
  command.withTable().eachPicture([o](const Picture& picture, Result& result) {
    if (o->low > o->high) throw UserError("--low: is above --high");
    const TevSize size = picture.size();
    const Image<Tev8u> edges = edgeMap(grey8(picture), o->low, o->high, result, o->mask);
    const int votes = o->votes > 0 ? o->votes : std::max(2, std::min(size.width, size.height) / 4);
    std::vector<Line> kept;
    for (const TevPolarLine& polar : hough(edges, votes, *o, result)) {
      if (static_cast<int>(kept.size()) == o->most) break;
      Line line = {polar, 0, 0, 0, 0};
      if (!clip(line, size)) continue;
      if (std::none_of(kept.begin(), kept.end(), [&](const Line& k) { return near(k, line, o->apart); }))
        kept.push_back(line);
    }
    Image<Tev8u> shown = colour8(o->edges ? Picture(edges) : picture);
    result.table.columns = {"rho", "theta", "degrees", "x0", "y0", "x1", "y1"};
    for (const Line& line : kept) {
      const double degrees = std::floor(line.polar.theta * (180 / pi) * 100 + 0.5) / 100;
      result.table.add(line.polar.rho, line.polar.theta, degrees, line.x0, line.y0, line.x1, line.y1);
      paintLine(shown, line.x0, line.y0, line.x1, line.y1, red, 2);
    }
    result.picture = shown;
  });
}

}  // namespace cli
