// The gradient of a colour picture in one channel: the length of each channel's gradient, reduced by a norm. An edge
// between colours of equal brightness stands out here, while the gradient of the grey picture misses it.
#include "cli/command.h"
#include "cli/pixels.h"
#include "cli/separable.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Type { bytes, words, floats };

struct Options {
  TevNorm norm = tevNormL2;
  int size = 3;
  Border border;
  Type type = Type::floats;
  double gain = 0;
  bool grey = false;
};

// The length of each channel's gradient, with 255 for the steepest step from black to white.
Image<Tev32f> lengths(const Image<Tev32f>& image, const Options& o, Result& result) {
  std::vector<Tev32f> smooth(static_cast<std::size_t>(o.size)), derive(smooth.size());
  Image<Tev32f> dx, dy;
  result.timed([&] {
    TEV_CHECK(teviGenSobelKernel_32f, smooth.data(), o.size, 0, 1);
    TEV_CHECK(teviGenSobelKernel_32f, derive.data(), o.size, 1, 1);
    dx = separable(image, derive, smooth, o.border);
    dy = separable(image, smooth, derive, o.border);
  });
  double smoothSum = 0, deriveSum = 0;  // a step meets all of the smoothing and one half of the derivative
  for (const Tev32f tap : smooth) smoothSum += tap;
  for (const Tev32f tap : derive) deriveSum += std::max(tap, 0.0F);
  const double full = smoothSum * deriveSum;
  Image<Tev32f> made(image.size, image.channels);
  for (std::size_t i = 0; i < made.elements.size(); ++i) {
    const double x = dx.elements[i], y = dy.elements[i];
    made.elements[i] = static_cast<Tev32f>(std::sqrt(x * x + y * y) / full);
  }
  return made;
}

template <class T>
Image<T> whole(const Image<Tev32f>& image, double scale, double most) {
  Image<T> result(image.size, image.channels);
  std::transform(image.elements.begin(), image.elements.end(), result.elements.begin(), [&](Tev32f value) {
    return static_cast<T>(std::min(std::floor(static_cast<double>(value) * scale + 0.5), most));
  });
  return result;
}

template <class T, class Reduce>
Picture reduced(const Image<T>& colour, const char* name, Reduce reduce, double unit, const Options& o,
                Result& result) {
  Image<T> grey(colour.size);
  result.timed(
      [&] { check(name, reduce(colour.data(), colour.step(), grey.data(), grey.step(), colour.size, o.norm)); });
  Image<Tev32f> floats(grey.size);
  std::transform(grey.elements.begin(), grey.elements.end(), floats.elements.begin(),
                 [&](T value) { return static_cast<Tev32f>(static_cast<double>(value) / unit); });
  return view(floats, result.deep, 0, o.gain > 0 ? 255 / o.gain : brightExtent(floats));
}

Image<Tev32f> threeChannels(const Picture& picture, bool grey) {
  const Image<Tev32f> image = grey ? greyFloat(picture) : anyFloat(picture);
  if (image.channels == 3) return image;
  Image<Tev32f> result(image.size, 3);
  for (int c = 0; c < 3; ++c) setPlane(result, c, image);
  return result;
}

}  // namespace

void gradient(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("gradient", "filtering", "The gradient of colours as one grey picture",
                                     "tevcv gradient photo.png --norm inf -o gradient.png");
  command.choice("--norm", o->norm, {{"inf", tevNormInf}, {"l1", tevNormL1}, {"l2", tevNormL2}},
                 "How the three channels become one");
  command.option("--size", o->size, "Length of the Sobel kernels, odd").check(CLI::Range(3, 15));
  command.choice("--border", o->border.type, borderWords(), "How the picture goes on outside");
  command.option("--value", o->border.value, "Pixel outside for --border constant").check(CLI::Range(0, 255));
  command.choice("--type", o->type, {{"8u", Type::bytes}, {"16u", Type::words}, {"32f", Type::floats}},
                 "Number type in which the channels are joined");
  command.option("--gain", o->gain, "Brightness; 1 shows a step from black to white as white, 0 suits the picture")
      .check(CLI::Range(0.0, 1e4));
  command.flag("--grey", o->grey, "Take the gradient of the grey picture, to compare");
  command.withDepth().eachPicture([o](const Picture& picture, Result& result) {
    if (o->size % 2 == 0) throw UserError("--size: an odd length is needed");
    const Image<Tev32f> channels = lengths(threeChannels(picture, o->grey), *o, result);
    if (o->type == Type::floats)
      result.picture =
          reduced(channels, "teviGradientColorToGray_32f_C3C1R", teviGradientColorToGray_32f_C3C1R, 1, *o, result);
    else if (o->type == Type::bytes)
      result.picture = reduced(whole<Tev8u>(channels, 1, 255), "teviGradientColorToGray_8u_C3C1R",
                               teviGradientColorToGray_8u_C3C1R, 1, *o, result);
    else  // below 46341, where squares no longer fit the 16-bit form
      result.picture = reduced(whole<Tev16u>(channels, 128, 46340), "teviGradientColorToGray_16u_C3C1R",
                               teviGradientColorToGray_16u_C3C1R, 128, *o, result);
  });
}

}  // namespace cli
