// Canny edges from Sobel derivatives.
#include "cli/command.h"
#include "cli/features.h"
#include "cli/paint.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  float low = 60, high = 140;
  TevMaskSize mask = tevMskSize3x3;
  bool draw = false;
};

}  // namespace

void edges(Program& program) {
  auto options = std::make_shared<Options>();
  Command& command =
      program.command("edges", "features", "Canny's edges", "tevcv edges photo.png --low 60 --high 140 -o edges.png");
  command.option("--low", options->low, "Gradient that goes on an edge").check(CLI::Range(0.0F, 1e6F));
  command.option("--high", options->high, "Gradient that starts an edge").check(CLI::Range(0.0F, 1e6F));
  command.choice("--mask", options->mask, {{"3x3", tevMskSize3x3}, {"5x5", tevMskSize5x5}}, "Sobel kernel");
  command.flag("--draw", options->draw, "Draw the edges over the picture");
  command.eachPicture([options](const Picture& picture, Result& result) {
    if (options->low > options->high) throw UserError("--low: is above --high");
    const Image<Tev8u> found = edgeMap(grey8(picture), options->low, options->high, result, options->mask);
    if (options->draw) {
      Image<Tev8u> shown = colour8(picture);
      paintMask(shown, found, red);
      result.picture = shown;
    } else {
      result.picture = found;
    }
  });
}

}  // namespace cli
