// Fixed thresholds: two shades, or one side of the level replaced or clipped.
#include <cmath>

#include "cli/command.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Method { binary, clip, replace };

struct Options {
  Method method = Method::binary;
  TevCmpOp side = tevCmpGreater;
  double level = -1;
  int value = 0;
  bool grey = false;
};

// All channels alike: a row of three is a row three times as long.
TevSize wide(TevSize size, int channels) { return {size.width * channels, size.height}; }

Tev64f meanOf(const Image<Tev8u>& image) {
  const TevSize size = wide(image.size, image.channels);
  const Image<Tev8u> everywhere(size, 1, 255);
  Tev64f mean = 0, deviation = 0;
  TEV_CHECK(teviMean_StdDev_8u_C1MR, image.data(), size.width, everywhere.data(), everywhere.step(), size, &mean,
            &deviation);
  return mean;
}

Image<Tev8u> cut(const Image<Tev8u>& image, Tev8u level, const Options& o) {
  Image<Tev8u> made(image.size, image.channels);
  const TevSize size = wide(image.size, image.channels);
  switch (o.method) {
    case Method::binary:
      // What is above becomes white, then what is not white becomes black. Nothing lies above 255.
      if (level == 255) {
        TEV_CHECK(teviSet_8u_C1R, 0, made.data(), made.step(), size);
      } else {
        TEV_CHECK(teviThreshold_GTVal_8u_C1R, image.data(), image.step(), made.data(), made.step(), size, level, 255);
        TEV_CHECK(teviThreshold_Val_8u_C1R, made.data(), made.step(), made.data(), made.step(), size, 255, 0,
                  tevCmpLess);
      }
      if (o.side == tevCmpLess) {
        const Image<Tev8u> above = made;
        TEV_CHECK(teviAbsDiffC_8u_C1R, above.data(), above.step(), made.data(), made.step(), size, 255);
      }
      break;
    case Method::clip:
      TEV_CHECK(teviThreshold_Val_8u_C1R, image.data(), image.step(), made.data(), made.step(), size, level, level,
                o.side);
      break;
    case Method::replace:
      if (o.side == tevCmpGreater)
        TEV_CHECK(teviThreshold_GTVal_8u_C1R, image.data(), image.step(), made.data(), made.step(), size, level,
                  static_cast<Tev8u>(o.value));
      else
        TEV_CHECK(teviThreshold_Val_8u_C1R, image.data(), image.step(), made.data(), made.step(), size, level,
                  static_cast<Tev8u>(o.value), tevCmpLess);
      break;
  }
  return made;
}

// In floats from 0 to 255, in place; fractions count.
Image<Tev32f> cut(Image<Tev32f> image, Tev32f level, const Options& o) {
  const TevSize size = wide(image.size, image.channels);
  Tev32f* const pixels = image.data();
  const int step = image.step();
  switch (o.method) {
    case Method::binary: {
      // The shades are first put out of the pixels' range, where no second comparison takes them for pixels.
      const bool up = o.side == tevCmpGreater;
      TEV_CHECK(teviThreshold_Val_32f_C1R, pixels, step, pixels, step, size, level, 1000, tevCmpGreater);
      TEV_CHECK(teviThreshold_Val_32f_C1R, pixels, step, pixels, step, size, 1000, up ? 0.0F : 255.0F, tevCmpLess);
      TEV_CHECK(teviThreshold_Val_32f_C1R, pixels, step, pixels, step, size, 999, up ? 255.0F : 0.0F, tevCmpGreater);
      break;
    }
    case Method::clip:
      if (o.side == tevCmpLess)
        TEV_CHECK(teviThreshold_LT_32f_C1IR, pixels, step, size, level);
      else
        TEV_CHECK(teviThreshold_32f_C1R, pixels, step, pixels, step, size, level, tevCmpGreater);
      break;
    case Method::replace:
      TEV_CHECK(teviThreshold_Val_32f_C1R, pixels, step, pixels, step, size, level, static_cast<Tev32f>(o.value),
                o.side);
      break;
  }
  return image;
}

}  // namespace

void threshold(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("threshold", "primitives", "What lies above or below a level",
                                     "tevcv threshold photo.png --level 128 -o bright.png");
  command.choice("--method", o->method,
                 {{"binary", Method::binary}, {"clip", Method::clip}, {"replace", Method::replace}},
                 "White and black; one side cut off at the level; or set to --value");
  command.choice("--side", o->side, {{"above", tevCmpGreater}, {"below", tevCmpLess}},
                 "The side that becomes white, is cut off or replaced; binary: equal pixels count as below");
  command.option("--level", o->level, "From 0 to 255, fractions count for 16-bit pictures; -1: the picture's mean")
      .check(CLI::Range(-1.0, 255.0));
  command.option("--value", o->value, "What replaced pixels become").check(CLI::Range(0, 255));
  command.flag("--grey", o->grey, "Take a colour picture as grey");
  command.eachPicture([o](const Picture& picture, Result& result) {
    if (o->level < 0 && o->level != -1) throw UserError("--level: is from 0 to 255, or -1 for the mean");
    const Image<Tev8u> bytes = o->grey ? grey8(picture) : any8(picture);
    double level = o->level;
    if (level < 0) result.timed([&] { level = meanOf(bytes); });
    if (picture.deep()) {
      Image<Tev32f> floats = o->grey ? greyFloat(picture) : anyFloat(picture);
      result.timed([&] { floats = cut(std::move(floats), static_cast<Tev32f>(level), *o); });
      result.picture = view(floats, true, 0, 255);
    } else {
      // Whole pixels are above a level where they are above its whole part.
      const bool roundUp = o->side == tevCmpLess && o->method != Method::binary;
      const auto whole = static_cast<Tev8u>(roundUp ? std::ceil(level) : std::floor(level));
      Image<Tev8u> made;
      result.timed([&] { made = cut(bytes, whole, *o); });
      result.picture = made;
    }
  });
}

}  // namespace cli
