// The linear filters: derivatives and averages with fixed kernels, the Gaussian, and separable kernels of the user's
// own.
#include "cli/command.h"
#include "cli/pixels.h"
#include "cli/separable.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Kind {
  sobel,
  sobelHoriz,
  sobelVert,
  sobelNegVert,
  sobelHorizSecond,
  sobelVertSecond,
  sobelCross,
  scharr,
  scharrHoriz,
  scharrVert,
  laplacian,
  highpass,
  lowpass,
  gauss,
  box,
  kernel
};
enum class Type { automatic, to8s, to16s, float32 };

struct Options {
  Kind kind = Kind::sobel;
  TevMaskSize mask = tevMskSize3x3;
  Border border;
  Type type = Type::automatic;
  TevNorm norm = tevNormL2;
  int divisor = 4;
  double sigma = 2;
  int size = 0;
  std::vector<double> row, column;
  double white = 0;
  bool magnitude = false;
};

// A derivative filter in its three members.
struct Derivative {
  const char* name;
  TevStatus (*size8s)(TevSize, TevMaskSize, int*);
  TevStatus (*size16s)(TevSize, TevMaskSize, int*);
  TevStatus (*sizeFloat)(TevSize, TevMaskSize, int*);
  TevStatus (*to8s)(const Tev8u*, int, Tev8s*, int, TevSize, TevMaskSize, TevBorderType, Tev8u, int, Tev8u*);
  TevStatus (*to16s)(const Tev8u*, int, Tev16s*, int, TevSize, TevMaskSize, TevBorderType, Tev8u, Tev8u*);
  TevStatus (*floats)(const Tev32f*, int, Tev32f*, int, TevSize, TevMaskSize, TevBorderType, Tev32f, Tev8u*);
};

#define DERIVATIVE(NAME)                                                                                              \
  Derivative {                                                                                                        \
    "teviFilter" #NAME "Border", teviFilter##NAME##GetBufferSize_8u8s_C1R, teviFilter##NAME##GetBufferSize_8u16s_C1R, \
        teviFilter##NAME##GetBufferSize_32f_C1R, teviFilter##NAME##Border_8u8s_C1R,                                   \
        teviFilter##NAME##Border_8u16s_C1R, teviFilter##NAME##Border_32f_C1R                                          \
  }
// The Scharr filters have one mask and are not told it.
#define DERIVATIVE_3X3(NAME)                                                                                       \
  Derivative {                                                                                                     \
    "teviFilter" #NAME "Border",                                                                                   \
        [](TevSize roi, TevMaskSize, int* size) { return teviFilter##NAME##GetBufferSize_8u8s_C1R(roi, size); },   \
        [](TevSize roi, TevMaskSize, int* size) { return teviFilter##NAME##GetBufferSize_8u16s_C1R(roi, size); },  \
        [](TevSize roi, TevMaskSize, int* size) { return teviFilter##NAME##GetBufferSize_32f_C1R(roi, size); },    \
        [](const Tev8u* src, int srcStep, Tev8s* dst, int dstStep, TevSize roi, TevMaskSize, TevBorderType type,   \
           Tev8u value, int divisor, Tev8u* buffer) {                                                              \
          return teviFilter##NAME##Border_8u8s_C1R(src, srcStep, dst, dstStep, roi, type, value, divisor, buffer); \
        },                                                                                                         \
        [](const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roi, TevMaskSize, TevBorderType type,  \
           Tev8u value, Tev8u* buffer) {                                                                           \
          return teviFilter##NAME##Border_8u16s_C1R(src, srcStep, dst, dstStep, roi, type, value, buffer);         \
        },                                                                                                         \
        [](const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi, TevMaskSize, TevBorderType type, \
           Tev32f value, Tev8u* buffer) {                                                                          \
          return teviFilter##NAME##Border_32f_C1R(src, srcStep, dst, dstStep, roi, type, value, buffer);           \
        }                                                                                                          \
  }

Derivative derivativeOf(Kind kind) {
  switch (kind) {
    case Kind::sobelHoriz:
      return DERIVATIVE(SobelHoriz);
    case Kind::sobelVert:
      return DERIVATIVE(SobelVert);
    case Kind::sobelHorizSecond:
      return DERIVATIVE(SobelHorizSecond);
    case Kind::sobelVertSecond:
      return DERIVATIVE(SobelVertSecond);
    case Kind::sobelCross:
      return DERIVATIVE(SobelCross);
    case Kind::scharrHoriz:
      return DERIVATIVE_3X3(ScharrHoriz);
    case Kind::scharrVert:
      return DERIVATIVE_3X3(ScharrVert);
    case Kind::laplacian:
      return DERIVATIVE(Laplacian);
    default:
      return DERIVATIVE(SobelNegVert);
  }
}

template <class T>
Image<Tev32f> floats(const Image<T>& image) {
  Image<Tev32f> result(image.size, image.channels);
  std::copy(image.elements.begin(), image.elements.end(), result.elements.begin());
  return result;
}

Image<Tev32f> derive(const Picture& picture, Kind kind, const Options& o, Result& result) {
  const Derivative filter = derivativeOf(kind);
  const TevSize roi = picture.size();
  const auto value = static_cast<Tev8u>(o.border.value);
  const Type type = o.type != Type::automatic ? o.type : picture.deep() ? Type::float32 : Type::to16s;
  const auto run = [&](auto getSize, auto call) {
    result.timed([&] {
      int size = 0;
      check(filter.name, getSize(roi, o.mask, &size));
      std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
      check(filter.name, call(buffer.data()));
    });
  };
  if (type == Type::float32) {
    const Image<Tev32f> src = greyFloat(picture);
    Image<Tev32f> dst(roi);
    run(filter.sizeFloat, [&](Tev8u* buffer) {
      return filter.floats(src.data(), src.step(), dst.data(), dst.step(), roi, o.mask, o.border.type, value, buffer);
    });
    return dst;
  }
  const Image<Tev8u> src = grey8(picture);
  if (type == Type::to8s) {
    Image<Tev8s> dst(roi);
    run(filter.size8s, [&](Tev8u* buffer) {
      return filter.to8s(src.data(), src.step(), dst.data(), dst.step(), roi, o.mask, o.border.type, value, o.divisor,
                         buffer);
    });
    return floats(dst);
  }
  Image<Tev16s> dst(roi);
  run(filter.size16s, [&](Tev8u* buffer) {
    return filter.to16s(src.data(), src.step(), dst.data(), dst.step(), roi, o.mask, o.border.type, value, buffer);
  });
  return floats(dst);
}

// The length of the gradient: both derivatives as two channels of three, reduced to grey by a norm.
Image<Tev32f> gradientLength(const Picture& picture, Kind across, Kind down, const Options& o, Result& result) {
  Image<Tev32f> both(picture.size(), 3), length(picture.size());
  setPlane(both, 0, derive(picture, across, o, result));
  setPlane(both, 1, derive(picture, down, o, result));
  result.timed([&] {
    TEV_CHECK(teviGradientColorToGray_32f_C3C1R, both.data(), both.step(), length.data(), length.step(), both.size,
              o.norm);
  });
  return length;
}

template <class T>
Image<T> lowpass(const Image<T>& src, const Options& o, Result& result) {
  Image<T> dst(src.size);
  result.timed([&] {
    int size = 0;
    if constexpr (sizeof(T) == 1) {
      TEV_CHECK(teviFilterLowpassGetBufferSize_8u_C1R, src.size, o.mask, &size);
      std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
      TEV_CHECK(teviFilterLowpassBorder_8u_C1R, src.data(), src.step(), dst.data(), dst.step(), src.size, o.mask,
                o.border.type, static_cast<Tev8u>(o.border.value), buffer.data());
    } else {
      TEV_CHECK(teviFilterLowpassGetBufferSize_32f_C1R, src.size, o.mask, &size);
      std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
      TEV_CHECK(teviFilterLowpassBorder_32f_C1R, src.data(), src.step(), dst.data(), dst.step(), src.size, o.mask,
                o.border.type, static_cast<Tev32f>(o.border.value), buffer.data());
    }
  });
  return dst;
}

Image<Tev32f> gauss(const Image<Tev32f>& plane, const Options& o, Result& result) {
  // The filter computes as many rows as the image is wide: a picture that is higher is continued to the right.
  Image<Tev32f> image({std::max(plane.width(), plane.height()), plane.height()});
  for (int y = 0; y < plane.height(); ++y) {
    std::copy_n(plane.row(y), plane.width(), image.row(y));
    std::fill(image.row(y) + plane.width(), image.row(y) + image.width(), plane.at(plane.width() - 1, y));
  }
  const int taps = o.size > 0 ? o.size : 2 * static_cast<int>(std::ceil(3 * o.sigma)) + 1;
  result.timed([&] {
    int size = 0;
    TEV_CHECK(teviFilterGaussGetBufferSize_32f_C1R, image.size, taps, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFilterGaussBorder_32f_C1R, image.data(), image.step(), image.data(), image.step(), image.size, taps,
              static_cast<Tev32f>(o.sigma), tevBorderRepl, 0, buffer.data());
  });
  Image<Tev32f> shown(plane.size);
  for (int y = 0; y < plane.height(); ++y) std::copy_n(image.row(y), plane.width(), shown.row(y));
  return shown;
}

double sum(const std::vector<double>& taps) {
  double total = 0;
  for (const double tap : taps) total += tap;
  return total;
}

// The taps divided by their sum, so that grey stays grey; as they are where they add up to nothing.
std::vector<Tev32f> normalized(const std::vector<double>& taps) {
  const double total = std::fabs(sum(taps)) < 1e-9 ? 1 : sum(taps);
  std::vector<Tev32f> result;
  for (const double tap : taps) result.push_back(static_cast<Tev32f>(tap / total));
  return result;
}

// Numbers of either sign with grey for 0, or their magnitudes on black.
Picture viewSigned(Image<Tev32f> image, const Options& o, const Result& result) {
  const double white = o.white > 0 ? o.white : brightExtent(image);
  if (!o.magnitude) return view(image, result.deep, -white, white);
  for (Tev32f& value : image.elements) value = std::fabs(value);
  return view(image, result.deep, 0, white);
}

Picture filtered(const Picture& picture, const Options& o, Result& result) {
  const bool floating = picture.deep() || result.deep || o.type == Type::float32;
  switch (o.kind) {
    case Kind::sobel:
    case Kind::scharr: {
      const bool scharr = o.kind == Kind::scharr;
      const Image<Tev32f> length = gradientLength(picture, scharr ? Kind::scharrVert : Kind::sobelNegVert,
                                                  scharr ? Kind::scharrHoriz : Kind::sobelHoriz, o, result);
      return view(length, result.deep, 0, o.white > 0 ? o.white : brightExtent(length));
    }
    case Kind::highpass: {
      const Image<Tev32f> src = greyFloat(picture), low = lowpass(src, o, result);
      Image<Tev32f> rest(src.size);
      result.timed([&] {
        TEV_CHECK(teviSub_32f_C1R, low.data(), low.step(), src.data(), src.step(), rest.data(), rest.step(), src.size);
      });
      return viewSigned(rest, o, result);
    }
    case Kind::lowpass:
      if (floating)
        return view(eachPlane(anyFloat(picture), [&](const auto& p, int) { return lowpass(p, o, result); }),
                    result.deep, 0, 255);
      return eachPlane(picture.bytes, [&](const auto& p, int) { return lowpass(p, o, result); });
    case Kind::gauss:
      return view(eachPlane(anyFloat(picture), [&](const auto& p, int) { return gauss(p, o, result); }), result.deep, 0,
                  255);
    case Kind::box: {
      const int side = o.size > 0 ? o.size : 9;
      if (floating) {
        const std::vector<Tev32f> taps = normalized(std::vector<double>(static_cast<std::size_t>(side), 1.0));
        Image<Tev32f> mean;
        result.timed([&] { mean = separable(anyFloat(picture), taps, taps, o.border); });
        return view(mean, result.deep, 0, 255);
      }
      Image<Tev8u> mean;
      result.timed([&] { mean = boxMean(picture.bytes, side, o.border); });
      return mean;
    }
    case Kind::kernel: {
      Image<Tev32f> made;
      result.timed([&] { made = separable(anyFloat(picture), normalized(o.row), normalized(o.column), o.border); });
      if (std::fabs(sum(o.row) * sum(o.column)) < 1e-9) return viewSigned(std::move(made), o, result);
      return view(made, result.deep, 0, o.white > 0 ? o.white : 255);
    }
    default:
      return viewSigned(derive(picture, o.kind, o, result), o, result);
  }
}

void requireOdd(const char* name, std::size_t taps) {
  if (taps % 2 == 0) throw UserError(std::string(name) + ": an odd number of taps is needed");
}

}  // namespace

void filter(Program& program) {
  auto o = std::make_shared<Options>();
  o->row = {-1, 0, 1};
  o->column = {1, 2, 1};
  Command& command = program.command("filter", "filtering", "Derivatives, averages and separable kernels",
                                     "tevcv filter photo.png --kind laplacian -o edges.png");
  command.choice("--kind", o->kind,
                 {{"sobel", Kind::sobel},
                  {"sobel-horiz", Kind::sobelHoriz},
                  {"sobel-vert", Kind::sobelVert},
                  {"sobel-neg-vert", Kind::sobelNegVert},
                  {"sobel-horiz-second", Kind::sobelHorizSecond},
                  {"sobel-vert-second", Kind::sobelVertSecond},
                  {"sobel-cross", Kind::sobelCross},
                  {"scharr", Kind::scharr},
                  {"scharr-horiz", Kind::scharrHoriz},
                  {"scharr-vert", Kind::scharrVert},
                  {"laplacian", Kind::laplacian},
                  {"highpass", Kind::highpass},
                  {"lowpass", Kind::lowpass},
                  {"gauss", Kind::gauss},
                  {"box", Kind::box},
                  {"kernel", Kind::kernel}},
                 "The filter; sobel and scharr alone are the length of the gradient");
  command.choice("--mask", o->mask, {{"3x3", tevMskSize3x3}, {"5x5", tevMskSize5x5}},
                 "Kernel of the Sobel filters, laplacian, lowpass and highpass");
  command.choice("--border", o->border.type, borderWords(), "How the picture goes on outside (gauss: replicate)");
  command.option("--value", o->border.value, "Pixel outside for --border constant").check(CLI::Range(0, 255));
  command.choice("--type", o->type,
                 {{"auto", Type::automatic}, {"8s", Type::to8s}, {"16s", Type::to16s}, {"32f", Type::float32}},
                 "Number type of derivatives; 32f for averages too");
  command.option("--divisor", o->divisor, "Divides derivatives of --type 8s").check(CLI::Range(1, 1 << 20));
  command.choice("--norm", o->norm, {{"inf", tevNormInf}, {"l1", tevNormL1}, {"l2", tevNormL2}},
                 "What sobel and scharr make of both derivatives");
  command.option("--sigma", o->sigma, "Width of gauss, in pixels").check(CLI::Range(0.1, 50.0));
  command.option("--size", o->size, "Side of box (default 9) or gauss (default by sigma), odd; 0: default")
      .check(CLI::Range(0, 301));
  for (const auto& [name, taps] : {std::pair{"--row", &o->row}, std::pair{"--column", &o->column}})
    command.option(name, *taps, "Taps of kernel, an odd number of them: -1,0,1")
        .delimiter(',')
        ->allow_extra_args(false);
  command.option("--white", o->white, "Value shown as white; 0: by the picture").check(CLI::Range(0.0, 1e6));
  command.flag("--magnitude", o->magnitude, "Show derivatives without their sign, black for 0");
  command.withDepth().eachPicture([o](const Picture& picture, Result& result) {
    if (o->size > 0) requireOdd("--size", static_cast<std::size_t>(o->size));
    if (o->kind == Kind::gauss && o->size == 1) throw UserError("--size: gauss has 3 taps at least");
    if (o->kind == Kind::box && o->size > 127) throw UserError("--size: box has 127 taps at most");
    requireOdd("--row", o->row.size());
    requireOdd("--column", o->column.size());
    result.picture = filtered(picture, *o, result);
  });
}

}  // namespace cli
