// Canny edges from Sobel derivatives.
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/paint.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  float low = 60, high = 140;
  TevMaskSize mask = tevMskSize3x3;
  bool draw = false;
};

Image<Tev8u> canny(const Image<Tev8u>& grey, const Options& options, Result& result) {
  const TevSize roi = grey.size;
  Image<Tev16s> dx(roi), dy(roi);
  Image<Tev8u> found(roi);
  result.timed([&] {
    int size = 0, needed = 0;
    TEV_CHECK(teviFilterSobelNegVertGetBufferSize_8u16s_C1R, roi, options.mask, &size);
    TEV_CHECK(teviFilterSobelHorizGetBufferSize_8u16s_C1R, roi, options.mask, &needed);
    size = std::max(size, needed);
    TEV_CHECK(teviCannyGetSize, roi, &needed);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(std::max(size, needed)));
    TEV_CHECK(teviFilterSobelNegVertBorder_8u16s_C1R, grey.data(), grey.step(), dx.data(), dx.step(), roi, options.mask,
              tevBorderRepl, 0, buffer.data());
    TEV_CHECK(teviFilterSobelHorizBorder_8u16s_C1R, grey.data(), grey.step(), dy.data(), dy.step(), roi, options.mask,
              tevBorderRepl, 0, buffer.data());
    TEV_CHECK(teviCanny_16s8u_C1R, dx.data(), dx.step(), dy.data(), dy.step(), found.data(), found.step(), roi,
              options.low, options.high, buffer.data());
  });
  return found;
}

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
    const Image<Tev8u> found = canny(grey8(picture), *options, result);
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
