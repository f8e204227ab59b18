// Flood fill: the pixels around a seed that are alike.
#include "cli/command.h"
#include "cli/paint.h"
#include "cli/pixels.h"
#include "cli/seeds.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Mode { exact, range, gradient };
enum class View { region, filled };

struct Options {
  std::vector<TevPoint> seeds;
  Mode mode = Mode::range;
  bool eight = true;
  int lower = 25, upper = 25, value = 255;
  View shown = View::region;
};

// The six kinds of one element type, for one channel and for three.
template <class T>
struct Members {
  TevStatus (*exact[2])(T*, int, TevSize, TevPoint, T, TevConnectedRegion*, Tev8u*);
  TevStatus (*exactC3[2])(T*, int, TevSize, TevPoint, const T*, TevConnectedRegion*, Tev8u*);
  using Ranged = TevStatus (*)(T*, int, TevSize, TevPoint, T, T, T, TevConnectedRegion*, Tev8u*);
  using RangedC3 = TevStatus (*)(T*, int, TevSize, TevPoint, const T*, const T*, const T*, TevConnectedRegion*, Tev8u*);
  Ranged range[2];
  RangedC3 rangeC3[2];
  Ranged gradient[2];
  RangedC3 gradientC3[2];
};
#define TEV_MEMBERS(type)                                                               \
  {                                                                                     \
    {teviFloodFill_4Con_##type##_C1IR, teviFloodFill_8Con_##type##_C1IR},               \
        {teviFloodFill_4Con_##type##_C3IR, teviFloodFill_8Con_##type##_C3IR},           \
        {teviFloodFill_Range4Con_##type##_C1IR, teviFloodFill_Range8Con_##type##_C1IR}, \
        {teviFloodFill_Range4Con_##type##_C3IR, teviFloodFill_Range8Con_##type##_C3IR}, \
        {teviFloodFill_Grad4Con_##type##_C1IR, teviFloodFill_Grad8Con_##type##_C1IR}, { \
      teviFloodFill_Grad4Con_##type##_C3IR, teviFloodFill_Grad8Con_##type##_C3IR        \
    }                                                                                   \
  }
constexpr Members<Tev8u> bytes = TEV_MEMBERS(8u);
constexpr Members<Tev32f> floats = TEV_MEMBERS(32f);
#undef TEV_MEMBERS

template <class T>
TevConnectedRegion flood(const Members<T>& members, Image<T>& image, TevPoint seed, T value, const Options& o,
                         Result& result) {
  const auto lower = static_cast<T>(o.lower), upper = static_cast<T>(o.upper);
  const T values[] = {value, value, value}, lowers[] = {lower, lower, lower}, uppers[] = {upper, upper, upper};
  const bool grey = image.channels == 1, eight = o.eight;
  TevConnectedRegion region{};
  result.timed([&] {
    int size = 0;
    if (o.mode == Mode::gradient)
      TEV_CHECK(teviFloodFillGetSize_Grad, image.size, &size);
    else
      TEV_CHECK(teviFloodFillGetSize, image.size, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    T* const data = image.data();
    TevStatus status;
    if (o.mode == Mode::exact)
      status = grey ? members.exact[eight](data, image.step(), image.size, seed, value, &region, buffer.data())
                    : members.exactC3[eight](data, image.step(), image.size, seed, values, &region, buffer.data());
    else if (grey)
      status = (o.mode == Mode::range ? members.range : members.gradient)[eight](
          data, image.step(), image.size, seed, value, lower, upper, &region, buffer.data());
    else
      status = (o.mode == Mode::range ? members.rangeC3 : members.gradientC3)[eight](
          data, image.step(), image.size, seed, values, lowers, uppers, &region, buffer.data());
    check("teviFloodFill", status);
  });
  return region;
}

}  // namespace

void fill(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("fill", "segmentation", "Flood fill from seeds",
                                     "tevcv fill photo.png --seed 100,80 --lower 20 --upper 20 -o region.png");
  seedsOption(command, o->seeds, "Where to start; may be given many times (default: the middle)");
  command.choice("--mode", o->mode, {{"exact", Mode::exact}, {"range", Mode::range}, {"gradient", Mode::gradient}},
                 "Alike: equal to the seed, within a range around it, or around the neighbour");
  command.choice("--neighbours", o->eight, {{"8", true}, {"4", false}}, "Across which it spreads");
  command.option("--lower", o->lower, "How far below").check(CLI::Range(0, 255));
  command.option("--upper", o->upper, "How far above").check(CLI::Range(0, 255));
  command.option("--value", o->value, "New value with --show filled").check(CLI::Range(0, 255));
  command.choice("--show", o->shown, {{"region", View::region}, {"filled", View::filled}},
                 "The regions over the picture, or the picture as filled");
  command.withTable().eachPicture([o](const Picture& picture, Result& result) {
    std::vector<TevPoint> seeds = o->seeds;
    if (seeds.empty()) seeds.push_back({picture.size().width / 2, picture.size().height / 2});
    for (const TevPoint& seed : seeds) requireInside(picture, seed);
    result.table.columns = {"seed x", "seed y", "area", "x", "y", "width", "height"};
    const auto tell = [&](TevPoint seed, const TevConnectedRegion& region) {
      result.table.add(seed.x, seed.y, region.area, region.rect.x, region.rect.y, region.rect.width,
                       region.rect.height);
    };
    if (o->shown == View::region) {
      // In floats -1 lies outside of every picture, and so tells what was filled.
      const Colour colours[] = {red, green, blue, yellow};
      Image<Tev8u> shown = colour8(picture);
      const Image<Tev32f> image = anyFloat(picture);
      for (std::size_t i = 0; i < seeds.size(); ++i) {
        Image<Tev32f> filled = image;
        tell(seeds[i], flood(floats, filled, seeds[i], -1.0F, *o, result));
        const Image<Tev32f> first = plane(filled, 0);
        Image<Tev8u> mask(picture.size());
        for (std::size_t p = 0; p < mask.elements.size(); ++p) mask.elements[p] = first.elements[p] == -1.0F;
        paintMask(shown, mask, colours[i % 4]);
        paintCross(shown, seeds[i].x, seeds[i].y, 4, white);
      }
      result.picture = shown;
    } else if (picture.deep()) {
      Image<Tev32f> image = anyFloat(picture);
      for (const TevPoint& seed : seeds)
        tell(seed, flood(floats, image, seed, static_cast<Tev32f>(o->value), *o, result));
      result.picture = view(image, true, 0, 255);
    } else {
      Image<Tev8u> image = picture.bytes;
      for (const TevPoint& seed : seeds)
        tell(seed, flood(bytes, image, seed, static_cast<Tev8u>(o->value), *o, result));
      result.picture = image;
    }
  });
}

}  // namespace cli
