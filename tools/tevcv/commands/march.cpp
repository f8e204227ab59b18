// Fast marching: a front leaves its seeds at one pixel a unit of time; when it comes by every other pixel.
#include "cli/binary.h"
#include "cli/command.h"
#include "cli/contours.h"
#include "cli/features.h"
#include "cli/element.h"
#include "cli/seeds.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class From { objects, edges };

struct Options {
  std::vector<TevPoint> seeds;
  From from = From::objects;
  std::string mask;
  BinaryOptions binary;
  float low = 60, high = 140, radius = 0;
  ContourOptions contours;
};

}  // namespace

void march(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("march", "distance", "Arrival times of a front from seeds, objects or edges",
                                     "tevcv march photo.png --seed 100,80 --seed 250,200 -o times.png");
  seedsOption(command, o->seeds, "Pixel where the front starts; may be given many times");
  command.choice("--from", o->from, {{"objects", From::objects}, {"edges", From::edges}},
                 "Without a seed: from bright objects or Canny's edges");
  command.app()
      .add_option("--mask", o->mask, "Start from all pixels that are not black in this picture")
      ->type_name("FILE");
  addBinaryOptions(command, o->binary);
  command.option("--low", o->low, "Gradient that goes on an edge").check(CLI::Range(0.0F, 1e6F));
  command.option("--high", o->high, "Gradient that starts an edge").check(CLI::Range(0.0F, 1e6F));
  command.option("--radius", o->radius, "Times below 0 inside the start, down to this many pixels from its rim")
      .check(CLI::Range(0.0F, 1e4F));
  addContourOptions(command, o->contours);
  command.withTable().withDepth().eachPicture([o](const Picture& picture, Result& result) {
    if (o->low > o->high) throw UserError("--low: is above --high");
    if (!o->mask.empty() && !o->seeds.empty()) throw UserError("--mask: or --seed, not both");
    const TevSize roi = picture.size();
    Image<Tev8u> start(roi);
    if (!o->seeds.empty()) {
      for (const TevPoint& seed : o->seeds) {
        requireInside(picture, seed);
        start.at(seed.x, seed.y) = 255;
      }
    } else if (!o->mask.empty()) {
      const Picture mask = readPicture(o->mask);
      requireSameSize(picture, mask);
      start = grey8(mask);
    } else {
      const Image<Tev8u> grey = grey8(picture);
      start = o->from == From::edges ? edgeMap(grey, o->low, o->high, result) : binary(grey, o->binary, result);
    }
    Image<Tev8u> ahead(roi);  // zero where the front starts
    bool any = false;
    for (std::size_t i = 0; i < start.elements.size(); ++i) {
      ahead.elements[i] = start.elements[i] ? 0 : 255;
      any = any || start.elements[i];
    }
    if (!any) throw UserError(picture.name + ": there is nothing to start from; try --seed or --threshold");
    Image<Tev32f> times(roi);
    Tev32f least = 0, greatest = 0;
    TevPoint where{}, last{};
    result.timed([&] {
      int size = 0;
      TEV_CHECK(teviFastMarchingGetBufferSize_8u32f_C1R, roi, &size);
      std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
      TEV_CHECK(teviFastMarching_8u32f_C1R, ahead.data(), ahead.step(), times.data(), times.step(), roi, o->radius,
                buffer.data());
      TEV_CHECK(teviMinMaxIndx_32f_C1R, times.data(), times.step(), roi, &least, &greatest, &where, &last);
    });
    result.table.columns = {"last", "x", "y"};
    result.table.add(greatest, last.x, last.y);
    showContours(times, picture, o->contours, result);
  });
}

}  // namespace cli
