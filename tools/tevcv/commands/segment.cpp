// Gradient segmentation: regions grow from markers through smooth areas and stop at edges.
#include "cli/command.h"
#include "cli/seeds.h"
#include "cli/segments.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  std::vector<TevPoint> seeds;
  int grid = 0, norm = 0, bounds = 0;
  Shown shown = Shown::mosaic;
};
constexpr int mostLabels = 253, boundary = 254, rim = 255;

// A margin of one pixel repeats the picture's edge: the segmentation leaves the outermost rows and columns alone.
Image<Tev8u> framed(const Image<Tev8u>& image) {
  Image<Tev8u> result({image.width() + 2, image.height() + 2}, image.channels);
  check("teviCopyReplicateBorder_8u",
        (image.channels == 1 ? teviCopyReplicateBorder_8u_C1R : teviCopyReplicateBorder_8u_C3R)(
            image.data(), image.step(), image.size, result.data(), result.step(), result.size, 1, 1));
  return result;
}

}  // namespace

void segment(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("segment", "segmentation", "Regions that end at edges, grown from markers",
                                     "tevcv segment photo.png --grid 24 --show mosaic -o mosaic.png");
  seedsOption(command, o->seeds, "Marker of a region; may be given many times (default: a grid of them)");
  command.option("--grid", o->grid, "From marker to marker, in pixels; 0: so that there are about 200")
      .check(CLI::Range(0, 10000));
  command.choice("--neighbours", o->norm, {{"8", 0}, {"4", 1}}, "Into which a region grows");
  command.choice("--bounds", o->bounds, {{"none", 0}, {"4", int{tevWatershedBound4}}, {"8", int{tevWatershedBound8}}},
                 "Mark the pixels between regions");
  command.choice(
      "--show", o->shown,
      {{"labels", Shown::labels}, {"borders", Shown::borders}, {"boxes", Shown::boxes}, {"mosaic", Shown::mosaic}},
      "Labels as colours, borders or boxes over the picture, or mean colours");
  command.withTable().eachPicture([o](const Picture& picture, Result& result) {
    const TevSize roi = picture.size();
    Image<Tev8u> labels({roi.width + 2, roi.height + 2});
    int count = 0;
    if (!o->seeds.empty()) {
      if (o->seeds.size() > static_cast<std::size_t>(mostLabels))
        throw UserError("--seed: at most " + std::to_string(mostLabels) + " are possible");
      for (const TevPoint& seed : o->seeds) {
        requireInside(picture, seed);
        labels.at(seed.x + 1, seed.y + 1) = static_cast<Tev8u>(++count);
      }
    } else {
      const auto across = [](int extent, int pitch) { return std::max(1, (extent + pitch / 2) / pitch); };
      const auto markers = [&](int pitch) {
        return static_cast<long long>(across(roi.width, pitch)) * across(roi.height, pitch);
      };
      int pitch = o->grid;
      if (pitch == 0)
        for (pitch = 2; markers(pitch) > 200;) ++pitch;
      if (markers(pitch) > mostLabels)
        throw UserError("--grid: gives " + std::to_string(markers(pitch)) + " markers on " + picture.name +
                        ", at most " + std::to_string(mostLabels) + " are possible");
      const int columns = across(roi.width, pitch), rows = across(roi.height, pitch);
      for (int j = 0; j < rows; ++j)
        for (int i = 0; i < columns; ++i)
          labels.at((2 * i + 1) * roi.width / (2 * columns) + 1, (2 * j + 1) * roi.height / (2 * rows) + 1) =
              static_cast<Tev8u>(++count);
    }
    const Image<Tev8u> image = framed(any8(picture));
    result.timed([&] {
      const bool grey = image.channels == 1;
      int size = 0;
      check("teviSegmentGradientGetBufferSize_8u", (grey ? teviSegmentGradientGetBufferSize_8u_C1R
                                                         : teviSegmentGradientGetBufferSize_8u_C3R)(image.size, &size));
      std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
      check("teviSegmentGradient_8u", (grey ? teviSegmentGradient_8u_C1IR : teviSegmentGradient_8u_C3IR)(
                                          image.data(), image.step(), labels.data(), labels.step(), image.size, o->norm,
                                          static_cast<std::uint32_t>(o->bounds), buffer.data()));
    });
    Image<Tev8u> inner(roi);
    for (int y = 0; y < roi.height; ++y) std::copy_n(labels.row(y + 1) + 1, roi.width, inner.row(y));
    const Segments segments = segmentsOf(inner, rim, boundary, o->norm, result);
    tabulate(segments, result);
    result.picture = showSegments(segments, picture, o->shown);
  });
}

}  // namespace cli
