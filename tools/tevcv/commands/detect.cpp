// Faces, found by a cascade of Haar stages at every scale of the picture.
#include "../../../examples/cascade.h"

#include "cli/command.h"
#include "cli/paint.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  double factor = 1.1;
  int votes = 8;
  int least = 0;
  int stages = 0;
  bool all = false;
};

int scaleCount(TevSize size, int window, double factor) {
  int count = 0;
  for (double scale = 1; size.width / scale >= window && size.height / scale >= window; scale *= factor) ++count;
  return count;
}

}  // namespace

void detect(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("detect", "integral", "Faces, by a cascade of Haar stages",
                                     "tevcv detect photo.png -o faces.png --table faces.csv");
  command.option("--factor", o->factor, "From one scale of the picture to the next").check(CLI::Range(1.02, 2.0));
  command.option("--votes", o->votes, "Windows that must agree on a face").check(CLI::Range(1, 10000));
  command.option("--least", o->least, "Smallest face, in pixels").check(CLI::Range(0, 100000));
  command.option("--stages", o->stages, "Stages of the cascade to apply; 0: all of them")
      .check(CLI::Range(0, example::faces::cascade.stageCount));
  command.flag("--all", o->all, "Draw every window that passed too");
  command.withTable().eachPicture([o](const Picture& picture, Result& result) {
    const example::CascadeView& cascade = example::faces::cascade;
    const Image<Tev8u> grey = grey8(picture);
    if (grey.width() < cascade.window || grey.height() < cascade.window)
      throw UserError(picture.name + ": is smaller than the cascade's window of " + std::to_string(cascade.window) +
                      " x " + std::to_string(cascade.window));
    std::vector<example::Hit> hits, faces;
    result.timed([&] {
      std::vector<example::Stage> stages = example::build(cascade);
      if (o->stages > 0) stages.erase(stages.begin() + o->stages, stages.end());
      Progress progress("scales", scaleCount(grey.size, cascade.window, o->factor));
      hits = example::scan(grey.data(), grey.size, stages, cascade.window, o->factor, [&] { progress.step(); });
      std::erase_if(hits, [&](const example::Hit& hit) { return hit.side < o->least; });
      faces = example::strongest(hits, o->votes);
    });
    Image<Tev8u> shown = colour8(picture);
    const auto box = [](const example::Hit& hit) {
      const auto nearest = [](double value) { return static_cast<int>(std::floor(value + 0.5)); };
      return TevRect{nearest(hit.x), nearest(hit.y), nearest(hit.side), nearest(hit.side)};
    };
    if (o->all)
      for (const example::Hit& hit : hits) paintBox(shown, box(hit), blue, 1);
    result.table.columns = {"x", "y", "side", "votes"};
    for (const example::Hit& face : faces) {
      const TevRect rect = box(face);
      paintBox(shown, rect, yellow, 3);
      result.table.add(rect.x, rect.y, rect.width, face.votes);
    }
    result.picture = shown;
  });
}

}  // namespace cli
