// A picture framed: its edge pixels repeated outward, or one shade around it.
#include "cli/command.h"
#include "cli/pixels.h"
#include "cli/points.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Kind { replicate, constant };

struct Options {
  Kind kind = Kind::replicate;
  int all = 32, left = -1, right = -1, top = -1, bottom = -1;
  std::vector<int> colour;
};

struct Frame {
  TevSize size;
  int left, top;
};

// One channel of bytes; 16-bit pixels are pairs of equal bytes where the shade is a byte times 257.
Image<Tev8u> framed(const Image<Tev8u>& plane, const Frame& frame, int shade) {
  Image<Tev8u> made(frame.size);
  TEV_CHECK(teviCopyConstBorder_8u_C1R, plane.data(), plane.step(), plane.size, made.data(), made.step(), made.size,
            frame.top, frame.left, static_cast<Tev8u>(shade));
  return made;
}
Image<Tev16u> framed(const Image<Tev16u>& plane, const Frame& frame, int shade) {
  Image<Tev16u> made(frame.size);
  const auto inBytes = [](TevSize size) { return TevSize{2 * size.width, size.height}; };
  TEV_CHECK(teviCopyConstBorder_8u_C1R, reinterpret_cast<const Tev8u*>(plane.data()), plane.step(), inBytes(plane.size),
            reinterpret_cast<Tev8u*>(made.data()), made.step(), inBytes(made.size), frame.top, 2 * frame.left,
            static_cast<Tev8u>(shade));
  return made;
}

Image<Tev8u> replicated(const Image<Tev8u>& image, const Frame& frame) {
  Image<Tev8u> made(frame.size, image.channels);
  const auto copy = image.channels == 1 ? teviCopyReplicateBorder_8u_C1R : teviCopyReplicateBorder_8u_C3R;
  check("teviCopyReplicateBorder_8u",
        copy(image.data(), image.step(), image.size, made.data(), made.step(), made.size, frame.top, frame.left));
  return made;
}
// Words become ints on their way.
Image<Tev16u> replicated(const Image<Tev16u>& image, const Frame& frame) {
  Image<Tev32s> made(frame.size, image.channels);
  for (int y = 0; y < image.height(); ++y)
    std::copy_n(image.row(y), image.width() * image.channels, &made.at(frame.left, frame.top + y));
  const auto extend = image.channels == 1 ? teviCopyReplicateBorder_32s_C1IR : teviCopyReplicateBorder_32s_C3IR;
  check("teviCopyReplicateBorder_32s",
        extend(&made.at(frame.left, frame.top), made.step(), image.size, made.size, frame.top, frame.left));
  Image<Tev16u> result(frame.size, image.channels);
  std::transform(made.elements.begin(), made.elements.end(), result.elements.begin(),
                 [](Tev32s value) { return static_cast<Tev16u>(value); });
  return result;
}

template <class T>
Image<T> work(const Image<T>& image, const Frame& frame, const Options& o, Result& result) {
  Image<T> made;
  result.timed([&] {
    if (o.kind == Kind::replicate)
      made = replicated(image, frame);
    else
      made = eachPlane(image, [&](const Image<T>& plane, int channel) {
        return framed(plane, frame, o.colour.empty() ? 0 : o.colour[static_cast<std::size_t>(channel)]);
      });
  });
  return made;
}

// A picture of three channels where the border has a colour and the picture has none.
template <class T>
Image<T> coloured(const Image<T>& grey) {
  Image<T> image(grey.size, 3);
  for (int c = 0; c < 3; ++c) setPlane(image, c, grey);
  return image;
}

}  // namespace

void border(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("border", "primitives", "A border around a picture",
                                     "tevcv border photo.png --kind constant --size 16 --colour 40,90,160");
  command.choice("--kind", o->kind, {{"replicate", Kind::replicate}, {"constant", Kind::constant}},
                 "Edge pixels repeated outward, or one colour");
  command.option("--size", o->all, "Pixels on each side").check(CLI::Range(0, 4096));
  const struct {
    const char* name;
    int& value;
  } sides[] = {{"left", o->left}, {"right", o->right}, {"top", o->top}, {"bottom", o->bottom}};
  for (const auto& side : sides)
    command.option(std::string("--") + side.name, side.value, "Pixels on this side instead, -1: --size")
        .check(CLI::Range(-1, 4096));
  tuple(command, "--colour", o->colour, 3, "RED,GREEN,BLUE", "Of the constant border, from 0 to 255 (default: black)");
  command.eachPicture([o](const Picture& picture, Result& result) {
    for (const int shade : o->colour)
      if (shade < 0 || shade > 255) throw UserError("--colour: " + std::to_string(shade) + " is not from 0 to 255");
    if (!o->colour.empty() && o->kind != Kind::constant) throw UserError("--colour: goes with --kind constant");
    const auto or_ = [&](int side) { return side < 0 ? o->all : side; };
    const TevSize size = picture.size();
    const Frame frame = {{or_(o->left) + size.width + or_(o->right), or_(o->top) + size.height + or_(o->bottom)},
                         or_(o->left),
                         or_(o->top)};
    const bool hued = !o->colour.empty() && (o->colour[0] != o->colour[1] || o->colour[1] != o->colour[2]);
    const bool widen = hued && picture.channels() == 1;
    if (picture.deep())
      result.picture = work(widen ? coloured(picture.words) : picture.words, frame, *o, result);
    else
      result.picture = work(widen ? coloured(picture.bytes) : picture.bytes, frame, *o, result);
  });
}

}  // namespace cli
