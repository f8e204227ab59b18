// Takes a lens's distortion out of a picture, or puts it in.
#include "cli/command.h"
#include "cli/paint.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  float k1 = -0.3F, k2 = 0, p1 = 0, p2 = 0;
  float fx = 0, fy = 0, cx = -1, cy = -1;
  bool distort = false, maps = false, noTable = false;
  int grid = 0;
};

struct Lens {
  Tev32f fx, fy, cx, cy, k1, k2, p1, p2;
};

Lens lensFor(TevSize size, const Options& o) {
  const float sign = o.distort ? -1.0F : 1.0F;
  const float focal = static_cast<float>(size.width);
  return {o.fx > 0 ? o.fx : focal,
          o.fy > 0   ? o.fy
          : o.fx > 0 ? o.fx
                     : focal,
          o.cx >= 0 ? o.cx : static_cast<float>(size.width - 1) / 2,
          o.cy >= 0 ? o.cy : static_cast<float>(size.height - 1) / 2,
          sign * o.k1,
          sign * o.k2,
          sign * o.p1,
          sign * o.p2};
}

template <class T, class Warp>
Image<T> warped(const Image<T>& src, const Lens& lens, bool table, const char* name, Warp warp, Result& result) {
  Image<T> dst(src.size, src.channels);  // black where nothing is written
  result.timed([&] {
    int size = 0;
    TEV_CHECK(teviUndistortGetSize, src.size, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    check(name, warp(src.data(), src.step(), dst.data(), dst.step(), src.size, lens.fx, lens.fy, lens.cx, lens.cy,
                     lens.k1, lens.k2, table ? buffer.data() : nullptr));
  });
  return dst;
}

Image<Tev8u> radial(const Image<Tev8u>& src, const Lens& lens, bool table, Result& result) {
  return src.channels == 1 ? warped(src, lens, table, "teviUndistortRadial_8u_C1R", teviUndistortRadial_8u_C1R, result)
                           : warped(src, lens, table, "teviUndistortRadial_8u_C3R", teviUndistortRadial_8u_C3R, result);
}
Image<Tev16u> radial(const Image<Tev16u>& src, const Lens& lens, bool table, Result& result) {
  return src.channels == 1
             ? warped(src, lens, table, "teviUndistortRadial_16u_C1R", teviUndistortRadial_16u_C1R, result)
             : warped(src, lens, table, "teviUndistortRadial_16u_C3R", teviUndistortRadial_16u_C3R, result);
}

struct Maps {
  Image<Tev32f> x, y;
};

Maps mapsOf(TevSize size, const Lens& l, Result& result) {
  Maps maps = {Image<Tev32f>(size), Image<Tev32f>(size)};
  result.timed([&] {
    int needed = 0;
    TEV_CHECK(teviUndistortGetSize, size, &needed);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(needed));
    TEV_CHECK(teviCreateMapCameraUndistort_32f_C1R, maps.x.data(), maps.x.step(), maps.y.data(), maps.y.step(), size,
              l.fx, l.fy, l.cx, l.cy, l.k1, l.k2, l.p1, l.p2, buffer.data());
  });
  return maps;
}

// The picture taken at the positions of the maps: for tangential distortion, which the radial warp leaves out.
template <class T>
Image<T> remapped(const Image<T>& src, const Maps& maps) {
  Image<T> dst(src.size, src.channels);
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x) {
      const double sx = maps.x.at(x, y), sy = maps.y.at(x, y);
      if (!(sx >= 0 && sy >= 0 && sx < src.width() - 1 && sy < src.height() - 1)) continue;
      const int left = static_cast<int>(sx), top = static_cast<int>(sy);
      const double a = sx - left, b = sy - top;
      for (int c = 0; c < src.channels; ++c) {
        const double upper = src.at(left, top, c) * (1 - a) + src.at(left + 1, top, c) * a;
        const double lower = src.at(left, top + 1, c) * (1 - a) + src.at(left + 1, top + 1, c) * a;
        dst.at(x, y, c) = static_cast<T>(upper * (1 - b) + lower * b + 0.5);
      }
    }
  return dst;
}

// Every line of a lattice, in white: straight lines show best what a lens does.
template <class T>
void paintGrid(Image<T>& image, int spacing) {
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (x % spacing == spacing / 2 || y % spacing == spacing / 2)
        for (int c = 0; c < image.channels; ++c) image.at(x, y, c) = static_cast<T>(~T{0});
}

template <class T>
Image<T> undistorted(Image<T> src, const Options& o, Result& result) {
  if (o.grid > 0) paintGrid(src, o.grid);
  const Lens lens = lensFor(src.size, o);
  const bool tangential = lens.p1 != 0 || lens.p2 != 0;
  if (!tangential && !o.maps) return radial(src, lens, !o.noTable, result);
  Maps maps = mapsOf(src.size, lens, result);
  const Image<T> dst = tangential ? remapped(src, maps) : radial(src, lens, !o.noTable, result);
  if (o.maps) {
    // How far each pixel moves, on one scale.
    for (int y = 0; y < src.height(); ++y)
      for (int x = 0; x < src.width(); ++x) {
        maps.x.at(x, y) -= static_cast<Tev32f>(x);
        maps.y.at(x, y) -= static_cast<Tev32f>(y);
      }
    const double most = std::max(brightExtent(maps.x, 1), brightExtent(maps.y, 1));
    result.others.emplace_back("map-x", view(maps.x, result.deep, -most, most));
    result.others.emplace_back("map-y", view(maps.y, result.deep, -most, most));
  }
  return dst;
}

}  // namespace

void undistort(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("undistort", "geometry", "Takes a lens's distortion out of a picture",
                                     "tevcv undistort photo.png --k1 -0.3 --grid 16 -o straight.png");
  command.option("--k1", o->k1, "Radial distortion by the square of the distance from the centre")
      .check(CLI::Range(-10.0F, 10.0F));
  command.option("--k2", o->k2, "Radial distortion by its fourth power").check(CLI::Range(-10.0F, 10.0F));
  command.option("--p1", o->p1, "Tangential distortion along y").check(CLI::Range(-1.0F, 1.0F));
  command.option("--p2", o->p2, "Tangential distortion along x").check(CLI::Range(-1.0F, 1.0F));
  command.option("--fx", o->fx, "Focal length in pixels; 0: the picture's width").check(CLI::Range(0.0F, 1e6F));
  command.option("--fy", o->fy, "Focal length along y; 0: as --fx").check(CLI::Range(0.0F, 1e6F));
  command.option("--cx", o->cx, "Centre in pixels; -1: the picture's").check(CLI::Range(-1.0F, 1e6F));
  command.option("--cy", o->cy, "Centre in pixels; -1: the picture's").check(CLI::Range(-1.0F, 1e6F));
  command.flag("--distort", o->distort, "The other way round: all coefficients negated");
  command.option("--grid", o->grid, "Draw a lattice over the picture first, lines this far apart; 0: none")
      .check(CLI::Range(0, 10000));
  command.flag("--maps", o->maps, "Write the maps of both coordinates too, as shifts with grey for none");
  command.flag("--no-buffer", o->noTable, "Compute without a table of the columns");
  command.withDepth().eachPicture([o](const Picture& picture, Result& result) {
    result.picture =
        picture.deep() ? Picture(undistorted(picture.words, *o, result)) : undistorted(picture.bytes, *o, result);
  });
}

}  // namespace cli
