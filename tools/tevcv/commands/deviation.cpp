// How much the pixels vary in a window around each place: the standard deviation from integral tables, in upright
// windows or in ones that stand on a corner.
#include "cli/command.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Type { mixed, floats, whole };

struct Options {
  int size = 9;
  bool tilted = false;
  Type type = Type::mixed;
  double white = 0;
};

// 32-bit sums with 64-bit squares, both in floats, or both in 32-bit words.
template <class Sum, class Square, class Output>
Image<Output> deviations(const Image<Tev8u>& bordered, TevSize roi, int pad, const Options& o) {
  constexpr bool whole = std::is_same_v<Square, Tev32s>, floats = std::is_same_v<Sum, Tev32f>;
  const int extra = o.tilted ? 2 : 1;
  const TevSize cells = {bordered.width() + extra, bordered.height() + extra};
  Image<Sum> sums(cells);
  Image<Square> squares(cells);
  const auto tables = [&](const char* name, auto integral) {
    check(name, integral(bordered.data(), bordered.step(), sums.data(), sums.step(), squares.data(), squares.step(),
                         bordered.size, 0, 0));
  };
  if constexpr (whole)
    o.tilted ? tables("teviTiltedSqrIntegral_8u32s_C1R", teviTiltedSqrIntegral_8u32s_C1R)
             : tables("teviSqrIntegral_8u32s_C1R", teviSqrIntegral_8u32s_C1R);
  else if constexpr (floats)
    o.tilted ? tables("teviTiltedSqrIntegral_8u32f64f_C1R", teviTiltedSqrIntegral_8u32f64f_C1R)
             : tables("teviSqrIntegral_8u32f64f_C1R", teviSqrIntegral_8u32f64f_C1R);
  else
    o.tilted ? tables("teviTiltedSqrIntegral_8u32s64f_C1R", teviTiltedSqrIntegral_8u32s64f_C1R)
             : tables("teviSqrIntegral_8u32s64f_C1R", teviSqrIntegral_8u32s64f_C1R);

  // The tables begin where the window of the first pixel does. A tilted window hangs from its top corner, which lies
  // half its height above the pixel; its row of the table is one further down.
  const int half = o.size / 2;
  const int column = o.tilted ? pad : pad - half, row = o.tilted ? pad - o.size + 1 : pad - half;
  const TevRect rect = {0, 0, o.size, o.size};
  Image<Output> dst(roi);
  const auto deviate = [&](const char* name, auto deviation, auto... scale) {
    check(name, deviation(&sums.at(column, row), sums.step(), &squares.at(column, row), squares.step(), dst.data(),
                          dst.step(), roi, rect, scale...));
  };
  if constexpr (whole)  // in sixteenths
    o.tilted ? deviate("teviTiltedRectStdDev_32s_C1RSfs", teviTiltedRectStdDev_32s_C1RSfs, -4)
             : deviate("teviRectStdDev_32s_C1RSfs", teviRectStdDev_32s_C1RSfs, -4);
  else if constexpr (floats)
    o.tilted ? deviate("teviTiltedRectStdDev_32f_C1R", teviTiltedRectStdDev_32f_C1R)
             : deviate("teviRectStdDev_32f_C1R", teviRectStdDev_32f_C1R);
  else
    o.tilted ? deviate("teviTiltedRectStdDev_32s32f_C1R", teviTiltedRectStdDev_32s32f_C1R)
             : deviate("teviRectStdDev_32s32f_C1R", teviRectStdDev_32s32f_C1R);
  return dst;
}

}  // namespace

void deviation(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("deviation", "integral", "How much the pixels vary around each place",
                                     "tevcv deviation photo.png --size 9 -o deviation.png");
  command.option("--size", o->size, "Side of the window, odd").check(CLI::Range(1, 127));
  command.flag("--tilted", o->tilted, "A window that stands on its corner");
  command.choice("--type", o->type, {{"32s32f", Type::mixed}, {"32f", Type::floats}, {"32s", Type::whole}},
                 "Number types: whole tables and float results, floats alone, or whole numbers alone");
  command.option("--white", o->white, "Deviation shown as white; 0: by the picture").check(CLI::Range(0.0, 128.0));
  command.withDepth().eachPicture([o](const Picture& picture, Result& result) {
    if (o->size % 2 == 0) throw UserError("--size: an odd side is needed");
    const Image<Tev8u> grey = grey8(picture);
    // The edge's pixels go on as far as the windows reach.
    const int pad = o->tilted ? o->size + 1 : o->size / 2;
    Image<Tev8u> bordered({grey.width() + 2 * pad, grey.height() + 2 * pad});
    Image<Tev32f> shown(grey.size);
    result.timed([&] {
      TEV_CHECK(teviCopyReplicateBorder_8u_C1R, grey.data(), grey.step(), grey.size, bordered.data(), bordered.step(),
                bordered.size, pad, pad);
      if (o->type == Type::whole) {
        const Image<Tev32s> sixteenths = deviations<Tev32s, Tev32s, Tev32s>(bordered, grey.size, pad, *o);
        std::transform(sixteenths.elements.begin(), sixteenths.elements.end(), shown.elements.begin(),
                       [](Tev32s value) { return static_cast<Tev32f>(value) / 16; });
      } else if (o->type == Type::floats) {
        shown = deviations<Tev32f, Tev64f, Tev32f>(bordered, grey.size, pad, *o);
      } else {
        shown = deviations<Tev32s, Tev64f, Tev32f>(bordered, grey.size, pad, *o);
      }
    });
    result.picture = view(shown, result.deep, 0, o->white > 0 ? o->white : brightExtent(shown));
  });
}

}  // namespace cli
