// Corners: places where the smaller eigenvalue of the gradient covariance (or Harris's response) has a peak.
#include "cli/command.h"
#include "cli/features.h"
#include "cli/paint.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Measure { minEigen, harris };
enum class Show { points, axes, measure };

struct Options {
  Measure measure = Measure::minEigen;
  TevCornerKernel kernel = tevCornerKernelSobel;
  int aperture = 3, window = 3;
  double quality = 0.05;
  int most = 300, distance = 6, border = 2;
  int norm = 0;
  Show show = Show::points;
};

// Of `parts` floats a pixel: the smaller eigenvalue alone, or both with their vectors.
Image<Tev32f> eigen(const Picture& picture, int parts, const Options& o, Result& result) {
  const TevSize roi = picture.size();
  Image<Tev32f> measured({paddedWidth(roi.width), roi.height}, parts);
  const auto run = [&](auto getSize, auto call, const auto& grey, const char* name) {
    result.timed([&] {
      int size = 0;
      check(name, getSize(roi, o.aperture, o.window, &size));
      std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
      check(name, call(grey.data(), grey.step(), measured.data(), measured.step(), roi, o.kernel, o.aperture, o.window,
                       buffer.data()));
    });
  };
  if (parts == 1 && picture.deep())
    run(teviMinEigenValGetBufferSize_32f_C1R, teviMinEigenVal_32f_C1R, greyFloat(picture), "teviMinEigenVal_32f_C1R");
  else if (parts == 1)
    run(teviMinEigenValGetBufferSize_8u32f_C1R, teviMinEigenVal_8u32f_C1R, grey8(picture), "teviMinEigenVal_8u32f_C1R");
  else if (picture.deep())
    run(teviEigenValsVecsGetBufferSize_32f_C1R, teviEigenValsVecs_32f_C1R, greyFloat(picture),
        "teviEigenValsVecs_32f_C1R");
  else
    run(teviEigenValsVecsGetBufferSize_8u32f_C1R, teviEigenValsVecs_8u32f_C1R, grey8(picture),
        "teviEigenValsVecs_8u32f_C1R");
  return measured;
}

// Product of the eigenvalues less 0.04 times their squared sum: high where both are large.
Image<Tev32f> harris(const Image<Tev32f>& vectors) {
  Image<Tev32f> response(vectors.size);
  for (std::size_t i = 0; i < response.elements.size(); ++i) {
    const double large = vectors.elements[6 * i], small = vectors.elements[6 * i + 1];
    response.elements[i] = static_cast<Tev32f>(large * small - 0.04 * (large + small) * (large + small));
  }
  return response;
}

}  // namespace

void corners(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("corners", "features", "Corners by the eigenvalues of the gradient",
                                     "tevcv corners photo.png --most 100 -o corners.png --table corners.csv");
  command.choice("--measure", o->measure, {{"min-eigen", Measure::minEigen}, {"harris", Measure::harris}},
                 "What makes a corner: the smaller eigenvalue, or Harris's response");
  command.choice("--kernel", o->kernel, {{"sobel", tevCornerKernelSobel}, {"scharr", tevCornerKernelScharr}},
                 "Derivative");
  command.option("--aperture", o->aperture, "Side of the derivative's kernel").check(CLI::IsMember({3, 5}));
  command.option("--window", o->window, "Side of the averaging window").check(CLI::IsMember({3, 5}));
  command.option("--quality", o->quality, "Least strength, as a share of the strongest").check(CLI::Range(0.0, 1.0));
  command.option("--most", o->most, "How many to keep").check(CLI::Range(1, 1000000));
  command.option("--distance", o->distance, "Least distance from a stronger one, in pixels").check(CLI::Range(1, 1000));
  command.option("--border", o->border, "Rows and columns at the edge that are not searched")
      .check(CLI::Range(1, 10000));
  command.choice("--neighbours", o->norm, {{"8", 0}, {"4", 1}}, "Which neighbours a peak is held against");
  command.choice("--show", o->show, {{"points", Show::points}, {"axes", Show::axes}, {"measure", Show::measure}},
                 "Circles, lines across the edges by the eigenvectors, or the measure as grey");
  command.withTable().withDepth().eachPicture([o](const Picture& picture, Result& result) {
    const TevSize roi = picture.size();
    if (std::min(roi.width, roi.height) < 2 * o->border + 1)
      throw UserError(picture.name + ": is too small for corners with --border " + std::to_string(o->border));
    if (o->kernel == tevCornerKernelScharr && o->aperture != 3) throw UserError("--aperture: Scharr has 3 alone");
    const Image<Tev32f> vectors = eigen(picture, 6, *o, result);
    const Image<Tev32f> measured = o->measure == Measure::harris ? harris(vectors) : eigen(picture, 1, *o, result);
    const std::vector<TevPoint> found = strongestPeaks(
        measured, roi,
        {static_cast<Tev32f>(strongest(measured, roi) * o->quality), o->most, o->distance, o->norm, o->border}, result);

    result.table.columns = {"x", "y", "strength", "larger", "smaller", "axis_x", "axis_y"};
    for (const TevPoint& c : found) {
      const Tev32f* const e = vectors.row(c.y) + 6 * c.x;
      result.table.add(c.x, c.y, measured.at(c.x, c.y), e[0], e[1], e[2], e[3]);
    }
    if (o->show == Show::measure) {
      Image<Tev32f> shown(roi);
      for (int y = 0; y < roi.height; ++y) std::copy_n(measured.row(y), roi.width, shown.row(y));
      result.picture = view(shown, result.deep, 0, brightExtent(shown, 0.995, 1e-12));
      return;
    }
    Image<Tev8u> shown = colour8(picture);
    for (const TevPoint& c : found) {
      if (o->show == Show::points) {
        paintCircle(shown, c.x, c.y, 4, yellow);
        paintPoint(shown, c.x, c.y, red, 2);
      } else {
        const Tev32f* const e = vectors.row(c.y) + 6 * c.x;
        const double lengths[] = {8, e[0] > 0 ? 8 * std::sqrt(static_cast<double>(e[1]) / e[0]) : 0};
        const Colour colours[] = {yellow, green};
        for (int i = 0; i < 2; ++i) {
          const double dx = lengths[i] * e[2 + 2 * i], dy = lengths[i] * e[3 + 2 * i];
          paintLine(shown, c.x - dx, c.y - dy, c.x + dx, c.y + dy, colours[i]);
        }
      }
    }
    result.picture = shown;
  });
}

}  // namespace cli
