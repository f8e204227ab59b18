// Watershed: objects that touch are parted where the water from their markers meets.
#include <cstdint>

#include "cli/binary.h"
#include "cli/command.h"
#include "cli/seeds.h"
#include "cli/segments.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Landscape { gradient, distance, grey };

struct Options {
  std::vector<TevPoint> seeds;
  BinaryOptions binary;
  int depth = 2, close = 7;
  Landscape landscape = Landscape::distance;
  std::uint32_t method = tevWatershedQueue, bounds = 0;
  tevWatershedNorm norm = tevWatershedNormChess;
  Shown shown = Shown::borders;
};
constexpr int mostLabels = 253, groundLabel = 254, boundary = 255;

using Operation = decltype(&teviMorphCloseBorder_8u_C1R);

// A closing or gradient by a square.
Image<Tev8u> morphed(const Image<Tev8u>& grey, Operation operation, int side, Result& result) {
  Image<Tev8u> out(grey.size);
  const std::vector<Tev8u> cells(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 1);
  result.timed([&] {
    TevMorphAdvState* state = nullptr;
    TEV_CHECK(teviMorphAdvInitAlloc_8u_C1R, &state, grey.size, cells.data(), TevSize{side, side},
              TevPoint{side / 2, side / 2});
    const TevStatus status =
        operation(grey.data(), grey.step(), out.data(), out.step(), grey.size, tevBorderRepl, state);
    teviMorphAdvFree(state);
    check("teviMorphCloseBorder_8u_C1R", status);
  });
  return out;
}

Image<Tev32f> distancesIn(const Image<Tev8u>& objects, Result& result) {
  Image<Tev32f> far(objects.size);
  result.timed([&] {
    int size = 0;
    TEV_CHECK(teviTrueDistanceTransformGetBufferSize_8u32f_C1R, far.size, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviTrueDistanceTransform_8u32f_C1R, objects.data(), objects.step(), far.data(), far.step(), far.size,
              buffer.data());
  });
  return far;
}

// The image less `depth`, grown again under the image: peaks are cut off by as much.
Image<Tev32f> cut(const Image<Tev32f>& image, Tev32f depth, Result& result) {
  Image<Tev32f> low = image;
  for (Tev32f& value : low.elements) value -= depth;
  result.timed([&] {
    int size = 0;
    TEV_CHECK(teviMorphReconstructGetBufferSize_32f_C1, image.size, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviMorphReconstructDilate_32f_C1IR, image.data(), image.step(), low.data(), low.step(), image.size,
              buffer.data(), tevNormInf);
  });
  return low;
}

// One marker on each peak of the distances that stands out by `depth`, and one on the ground away from all objects.
Image<Tev8u> markersFrom(const Image<Tev8u>& objects, const Image<Tev32f>& far, int depth, Result& result) {
  const TevSize roi = objects.size;
  const Image<Tev32f> tops = cut(far, static_cast<Tev32f>(depth), result);
  const Image<Tev32f> below = cut(tops, 0.0625F, result);
  Image<Tev8u> markers(roi);
  for (std::size_t i = 0; i < markers.elements.size(); ++i)
    markers.elements[i] = objects.elements[i] && tops.elements[i] > below.elements[i] ? 255 : 0;
  const Image<Tev32f> away = distancesIn(inverted(objects), result);
  result.timed([&] {
    int size = 0, count = 0;
    TEV_CHECK(teviLabelMarkersGetBufferSize_8u_C1R, roi, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviLabelMarkers_8u_C1IR, markers.data(), markers.step(), roi, 1, mostLabels, 0, &count, buffer.data());
  });
  for (std::size_t i = 0; i < markers.elements.size(); ++i)
    if (away.elements[i] > 3) markers.elements[i] = groundLabel;
  return markers;
}

}  // namespace

void watershed(Program& program) {
  auto o = std::make_shared<Options>();
  o->binary.background = 91;
  Command& command = program.command("watershed", "segmentation", "Objects parted from each other, with their areas",
                                     "tevcv watershed photo.png -o objects.png --table objects.csv");
  seedsOption(command, o->seeds, "Marker of a segment; two or more replace those found from the distances");
  addBinaryOptions(command, o->binary);
  command.option("--depth", o->depth, "How far a peak of the distances must stand out to be a marker")
      .check(CLI::Range(1, 1000));
  command.option("--close", o->close, "Close dark gaps of less than this many pixels first; 1: none")
      .check(CLI::Range(1, 255));
  command.choice("--landscape", o->landscape,
                 {{"gradient", Landscape::gradient}, {"distance", Landscape::distance}, {"grey", Landscape::grey}},
                 "What is flooded: the gradient, the distances turned over, or the grey levels");
  command.choice("--method", o->method,
                 {{"flooding", std::uint32_t{tevWatershedQueue}}, {"sweeping", std::uint32_t{tevWatershedSweep}}},
                 "How");
  command.choice("--norm", o->norm,
                 {{"chess", tevWatershedNormChess},
                  {"city", tevWatershedNormCity},
                  {"chamfer", tevWatershedNormChamfer},
                  {"eikonal", tevWatershedNormEikonal}},
                 "How steps count; the last two for sweeping");
  command.choice(
      "--bounds", o->bounds,
      {{"none", std::uint32_t{0}}, {"4", std::uint32_t{tevWatershedBound4}}, {"8", std::uint32_t{tevWatershedBound8}}},
      "Mark the pixels between segments");
  command.choice(
      "--show", o->shown,
      {{"labels", Shown::labels}, {"borders", Shown::borders}, {"boxes", Shown::boxes}, {"mosaic", Shown::mosaic}},
      "Labels as colours, borders or boxes over the picture, or mean colours");
  command.withTable().eachPicture([o](const Picture& picture, Result& result) {
    if (o->norm > tevWatershedNormCity && o->method == tevWatershedQueue)
      throw UserError("--norm: chamfer and eikonal go with --method sweeping");
    const std::size_t seedCount = o->seeds.size();
    if (seedCount == 1 || seedCount > static_cast<std::size_t>(mostLabels))
      throw UserError("--seed: 2 to " + std::to_string(mostLabels) + " are needed");
    const TevSize roi = picture.size();
    const Operation closing = teviMorphCloseBorder_8u_C1R, gradient = teviMorphGradientBorder_8u_C1R;
    const Image<Tev8u> grey = morphed(grey8(picture), closing, o->close, result);
    BinaryOptions wanted = o->binary;
    wanted.fill = true;
    const Image<Tev8u> objects = binary(grey, wanted, result);
    const Image<Tev32f> far = distancesIn(objects, result);
    Image<Tev8u> markers(roi);
    for (std::size_t i = 0; i < seedCount; ++i) {
      requireInside(picture, o->seeds[i]);
      markers.at(o->seeds[i].x, o->seeds[i].y) = static_cast<Tev8u>(i + 1);
    }
    if (seedCount == 0) markers = markersFrom(objects, far, o->depth, result);
    Image<Tev8u> landscape = grey;
    if (o->landscape == Landscape::gradient) landscape = morphed(grey, gradient, 3, result);
    if (o->landscape == Landscape::distance)
      for (std::size_t i = 0; i < landscape.elements.size(); ++i)
        landscape.elements[i] = static_cast<Tev8u>(255 - std::min(255, static_cast<int>(4 * far.elements[i])));
    result.timed([&] {
      int size = 0;
      TEV_CHECK(teviSegmentWatershedGetBufferSize_8u_C1R, roi, &size);
      std::vector<Tev8u> memory(static_cast<std::size_t>(size) + 31);
      Tev8u* const buffer = memory.data() + (32 - reinterpret_cast<std::uintptr_t>(memory.data()) % 32) % 32;
      TEV_CHECK(teviSegmentWatershed_8u_C1IR, landscape.data(), landscape.step(), markers.data(), markers.step(), roi,
                o->norm, o->method | o->bounds, buffer);
    });
    const int ground = seedCount == 0 ? groundLabel : 0;
    const Segments segments = segmentsOf(markers, ground, boundary, o->norm == tevWatershedNormCity ? 1 : 0, result);
    tabulate(segments, result);
    result.picture = showSegments(segments, picture, o->shown);
  });
}

}  // namespace cli
