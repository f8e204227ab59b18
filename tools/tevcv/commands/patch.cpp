// A small rectangle around a point between the pixels, enlarged so that one sees each of its pixels.
#include "cli/command.h"
#include "cli/paint.h"
#include "cli/pixels.h"
#include "cli/points.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Method { intersect, inside };
enum class Type { same, wide, floats };

struct Options {
  std::vector<double> at;
  std::vector<int> size;
  int zoom = 8;
  Method method = Method::intersect;
  Type type = Type::same;
  bool draw = false;
};

struct Patch {
  TevSize size;
  Tev32f x, y;           // its centre
  int left, top;         // the pixel left of and above its first one
  TevPoint least, most;  // its columns and rows that lie wholly inside, filled in
};

// Both members for one pair of types, by one name.
struct Copies {
  template <class S, class D, class Whole, class Cut>
  static Image<D> run(const Image<S>& src, Patch& patch, const Options& o, Whole whole, Cut cut) {
    Image<D> dst(patch.size);
    if (o.method == Method::inside)
      check("teviCopySubpix", whole(src.row(patch.top) + patch.left, src.step(), dst.data(), dst.step(), patch.size));
    else
      check("teviCopySubpixIntersect", cut(src.data(), src.step(), src.size, dst.data(), dst.step(), patch.size));
    return dst;
  }
};

#define COPY(SRC, DST, SUFFIX, ...)                                                                              \
  Copies::run<SRC, DST>(                                                                                         \
      src, patch, o,                                                                                             \
      [&](const SRC* s, int step, DST* d, int dstStep, TevSize size) {                                           \
        return teviCopySubpix_##SUFFIX(                                                                          \
            s, step, d, dstStep, size, patch.x - 0.5F * static_cast<Tev32f>(size.width - 1),                     \
            patch.y - 0.5F * static_cast<Tev32f>(size.height - 1) __VA_OPT__(, ) __VA_ARGS__);                   \
      },                                                                                                         \
      [&](const SRC* s, int step, TevSize from, DST* d, int dstStep, TevSize size) {                             \
        return teviCopySubpixIntersect_##SUFFIX(s, step, from, d, dstStep, size, patch.x, patch.y, &patch.least, \
                                                &patch.most __VA_OPT__(, ) __VA_ARGS__);                         \
      })

Picture copied(const Picture& picture, Patch& patch, const Options& o, Result& result) {
  const auto timed = [&](auto copy) {
    return [&result, copy](const auto& plane, int) {
      decltype(copy(plane)) made;
      result.timed([&] { made = copy(plane); });
      return made;
    };
  };
  if (picture.deep()) {
    if (o.type == Type::floats) {
      const Image<Tev32f> made =
          eachPlane(picture.words, timed([&](const Image<Tev16u>& src) { return COPY(Tev16u, Tev32f, 16u32f_C1R); }));
      return view(made, true, 0, 65535);
    }
    return eachPlane(picture.words, timed([&](const Image<Tev16u>& src) { return COPY(Tev16u, Tev16u, 16u_C1R); }));
  }
  if (o.type == Type::floats) {
    const Image<Tev32f> made =
        eachPlane(picture.bytes, timed([&](const Image<Tev8u>& src) { return COPY(Tev8u, Tev32f, 8u32f_C1R); }));
    return view(made, true, 0, 255);
  }
  if (o.type == Type::wide) {  // pixels times 128
    const Image<Tev16u> made = eachPlane(
        picture.bytes, timed([&](const Image<Tev8u>& src) { return COPY(Tev8u, Tev16u, 8u16u_C1R_Sfs, -7); }));
    return view(made, true, 0, 255 * 128);
  }
  return eachPlane(picture.bytes, timed([&](const Image<Tev8u>& src) { return COPY(Tev8u, Tev8u, 8u_C1R); }));
}

template <class T>
Image<T> enlarged(const Image<T>& image, int zoom) {
  Image<T> result({image.width() * zoom, image.height() * zoom}, image.channels);
  for (int y = 0; y < result.height(); ++y)
    for (int x = 0; x < result.width(); ++x)
      for (int c = 0; c < image.channels; ++c) result.at(x, y, c) = image.at(x / zoom, y / zoom, c);
  return result;
}

}  // namespace

void patch(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("patch", "geometry", "A rectangle around a point between pixels, enlarged",
                                     "tevcv patch photo.png --at 30.25,20.5 --size 24,16 -o patch.png");
  tuple(command, "--at", o->at, 2, "X,Y", "Its centre, with fractions (default: the picture's)");
  tuple(command, "--size", o->size, 2, "W,H", "Its size in pixels (default: 48,48)");
  command.option("--zoom", o->zoom, "How many times each pixel is repeated").check(CLI::Range(1, 64));
  command.choice("--method", o->method, {{"intersect", Method::intersect}, {"inside", Method::inside}},
                 "Whether the rectangle may reach over the edge, where the edge's pixels go on");
  command.choice("--type", o->type, {{"same", Type::same}, {"16u", Type::wide}, {"32f", Type::floats}},
                 "Number type of the result; all but same write 16 bits, 16u is for pictures of 8");
  command.flag("--draw", o->draw, "Write the whole picture too, with the rectangle drawn");
  command.withTable().eachPicture([o](const Picture& picture, Result& result) {
    const TevSize whole = picture.size();
    if (o->type == Type::wide && picture.deep()) throw UserError(picture.name + ": --type 16u is for 8 bits");
    Patch patch{};
    patch.size = o->size.empty() ? TevSize{48, 48} : TevSize{o->size[0], o->size[1]};
    if (patch.size.width < 1 || patch.size.height < 1 || patch.size.width > 4096 || patch.size.height > 4096)
      throw UserError("--size: is not between 1 and 4096");
    if (std::int64_t{patch.size.width} * patch.size.height * o->zoom * o->zoom > 1 << 28)
      throw UserError("--zoom: makes more than 2^28 pixels");
    patch.x = static_cast<Tev32f>(o->at.empty() ? (whole.width - 1) / 2.0 : o->at[0]);
    patch.y = static_cast<Tev32f>(o->at.empty() ? (whole.height - 1) / 2.0 : o->at[1]);
    if (!(patch.x >= 0 && patch.y >= 0 && patch.x <= static_cast<Tev32f>(whole.width - 1) &&
          patch.y <= static_cast<Tev32f>(whole.height - 1)))
      throw UserError("--at: lies outside of the picture");
    patch.left = static_cast<int>(std::floor(patch.x - 0.5F * static_cast<Tev32f>(patch.size.width - 1)));
    patch.top = static_cast<int>(std::floor(patch.y - 0.5F * static_cast<Tev32f>(patch.size.height - 1)));
    patch.most = {patch.size.width - 1, patch.size.height - 1};
    if (o->method == Method::inside &&
        (patch.left < 0 || patch.top < 0 || patch.left + patch.size.width >= whole.width ||
         patch.top + patch.size.height >= whole.height))
      throw UserError("--size: the rectangle does not lie inside of the picture");
    const Picture small = copied(picture, patch, *o, result);
    result.picture = small.deep() ? Picture(enlarged(small.words, o->zoom)) : enlarged(small.bytes, o->zoom);
    result.table.columns = {"x", "y", "width", "height", "first_column", "first_row", "last_column", "last_row"};
    result.table.add(patch.x, patch.y, patch.size.width, patch.size.height, patch.least.x, patch.least.y, patch.most.x,
                     patch.most.y);
    if (o->draw) {
      Image<Tev8u> shown = colour8(picture);
      paintBox(shown, {patch.left, patch.top, patch.size.width, patch.size.height}, yellow, 1);
      result.others.emplace_back("place", shown);
    }
  });
}

}  // namespace cli
