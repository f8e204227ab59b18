// Absolute difference: of two pictures, of one and a constant, of one and itself moved.
#include "cli/command.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  std::string from;
  int value = -1, moveX = 1, moveY = 1, gain = 1;
};

// `a` and `b` are the upper left pixels of two regions of `size`; a pixel of three channels is three elements in a row.
template <class T, class Function>
Image<T> difference(const char* name, Function function, const T* a, int aStep, const T* b, int bStep, TevSize size,
                    int channels, Result& result) {
  Image<T> changed(size, channels);
  result.timed([&] {
    check(name, function(a, aStep, b, bStep, changed.data(), changed.step(), {size.width * channels, size.height}));
  });
  return changed;
}

template <class T>
Image<T> amplified(Image<T> image, int gain) {
  for (T& value : image.elements) value = static_cast<T>(std::min<int>(value * gain, std::numeric_limits<T>::max()));
  return image;
}

template <class T, class Differ, class DifferC>
Image<T> work(const Options& o, const Image<T>& image, const Image<T>& other, Differ differ, DifferC differC,
              Result& result) {
  if (!other.empty())
    return difference("teviAbsDiff", differ, image.data(), image.step(), other.data(), other.step(), image.size,
                      image.channels, result);
  if (o.value >= 0) {
    Image<T> changed(image.size, image.channels);
    result.timed([&] {
      check("teviAbsDiffC", differC(image.data(), image.step(), changed.data(), changed.step(),
                                    {image.width() * image.channels, image.height()}, o.value));
    });
    return changed;
  }
  const int dx = std::abs(o.moveX), dy = std::abs(o.moveY);
  if (dx >= image.width() || dy >= image.height()) throw UserError("--move-x, --move-y: the picture is smaller");
  // Both sources are the same picture, seen from two of its pixels.
  const T* const a = &image.at(o.moveX < 0 ? dx : 0, o.moveY < 0 ? dy : 0);
  const T* const b = &image.at(o.moveX > 0 ? dx : 0, o.moveY > 0 ? dy : 0);
  return difference("teviAbsDiff", differ, a, image.step(), b, image.step(), {image.width() - dx, image.height() - dy},
                    image.channels, result);
}

}  // namespace

void difference(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command =
      program.command("difference", "arithmetic", "Absolute difference to another picture, a value, or itself moved",
                      "tevcv difference photo.png --move-x 1 --move-y 1 --gain 4");
  command.app().add_option("--from", o->from, "Another picture of the same size")->type_name("FILE");
  command.option("--value", o->value, "A grey value instead; -1: none").check(CLI::Range(-1, 65535));
  command.option("--move-x", o->moveX, "Else the picture itself, moved right").check(CLI::Range(-10000, 10000));
  command.option("--move-y", o->moveY, "... and down").check(CLI::Range(-10000, 10000));
  command.option("--gain", o->gain, "Factor that makes small differences visible").check(CLI::Range(1, 255));
  command.eachPicture([o](const Picture& picture, Result& result) {
    Picture other;
    if (!o->from.empty()) {
      if (o->value >= 0) throw UserError("--from, --value: only one of them");
      other = readPicture(o->from);
      requireSameSize(picture, other);
      if (other.channels() != picture.channels() || other.deep() != picture.deep())
        throw UserError(other.name + ": differs from " + picture.name + " in channels or depth");
    }
    if (picture.deep())
      result.picture =
          amplified(work(*o, picture.words, other.words, teviAbsDiff_16u_C1R, teviAbsDiffC_16u_C1R, result), o->gain);
    else
      result.picture =
          amplified(work(*o, picture.bytes, other.bytes, teviAbsDiff_8u_C1R, teviAbsDiffC_8u_C1R, result), o->gain);
  });
}

}  // namespace cli
