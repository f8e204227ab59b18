// Marker labelling: the objects of a picture numbered and measured, and the bounds between them drawn.
#include "cli/binary.h"
#include "cli/command.h"
#include "cli/segments.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  BinaryOptions binary;
  int norm = 0, minLabel = 1, maxLabel = 254, least = 1;
  bool bounds = false;
  Shown shown = Shown::boxes;
};

}  // namespace

void label(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command =
      program.command("label", "segmentation", "Objects numbered, with their areas and boxes",
                      "tevcv label photo.png --fill-holes --least 50 -o objects.png --table objects.csv");
  addBinaryOptions(command, o->binary);
  command.choice("--neighbours", o->norm, {{"8", 0}, {"4", 1}}, "By which the pixels of an object touch");
  command.option("--least", o->least, "Pixels of the smallest object that is kept").check(CLI::Range(1, 100000000));
  command.option("--min-label", o->minLabel, "First label").check(CLI::Range(1, 254));
  command.option("--max-label", o->maxLabel, "Last label; then they start again").check(CLI::Range(1, 254));
  command.flag("--bounds", o->bounds, "Draw the objects' bounds with the library, as label 255");
  command.choice(
      "--show", o->shown,
      {{"labels", Shown::labels}, {"borders", Shown::borders}, {"boxes", Shown::boxes}, {"mosaic", Shown::mosaic}},
      "Labels as colours, borders or boxes over the picture, or mean colours");
  command.withTable().eachPicture([o](const Picture& picture, Result& result) {
    if (o->maxLabel < o->minLabel) throw UserError("--max-label: is below --min-label");
    const TevSize roi = picture.size();
    Image<Tev8u> markers = binary(grey8(picture), o->binary, result);
    int size = 0, count = 0;
    result.timed([&] { TEV_CHECK(teviLabelMarkersGetBufferSize_8u_C1R, roi, &size); });
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    const auto number = [&] {
      result.timed([&] {
        TEV_CHECK(teviLabelMarkers_8u_C1IR, markers.data(), markers.step(), roi, o->minLabel, o->maxLabel, o->norm,
                  &count, buffer.data());
      });
    };
    number();
    if (o->least > 1) {  // without the small ones, numbered once more
      const Segments all = segmentsOf(markers, 0, -1, o->norm, result);
      for (std::size_t i = 0; i < markers.elements.size(); ++i) {
        const Tev32s at = all.numbers.elements[i];
        if (at > 0 && all.list[static_cast<std::size_t>(at - 1)].area < o->least) markers.elements[i] = 0;
      }
      number();
    }
    if (o->bounds)
      result.timed(
          [&] { TEV_CHECK(teviBoundSegments_8u_C1IR, markers.data(), markers.step(), roi, Tev8u{255}, o->norm); });
    const Segments segments = segmentsOf(markers, 0, 255, o->norm, result);
    tabulate(segments, result);
    result.picture = showSegments(segments, picture, o->shown);
  });
}

}  // namespace cli
