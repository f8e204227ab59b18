// Morphology: what grows, shrinks or vanishes under a structuring element, flat or with a height of its own.
#include <cmath>

#include "cli/command.h"
#include "cli/element.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Operation { erode, dilate, open, close, topHat, blackHat, gradient };
enum class Method { element, minMax };
enum class Profile { flat, ball, cone };

struct Options {
  Operation operation = Operation::gradient;
  ElementOptions element;
  Method method = Method::element;
  Profile profile = Profile::flat;
  int height = 40;
  TevBorderType border = tevBorderRepl;
  int value = 0;
  bool stretch = false;

  Options() { element.size = {5, 5}; }
};

// The members of one element type and channel count.
template <class T>
struct Members {
  TevStatus (*init)(int, const Tev8u*, TevSize, TevPoint, TevMorphState**);
  using Plain = TevStatus (*)(const T*, int, T*, int, TevSize, TevBorderType, TevMorphState*);
  Plain erode, dilate;
  TevStatus (*advancedInit)(TevMorphAdvState**, TevSize, const Tev8u*, TevSize, TevPoint);
  using Advanced = TevStatus (*)(const T*, int, T*, int, TevSize, TevBorderType, TevMorphAdvState*);
  Advanced open, close, topHat, blackHat, gradient;
  using GetSize = TevStatus (*)(int, int, int, int*);
  using Filter = TevStatus (*)(const T*, int, T*, int, TevSize, TevSize, TevPoint, Tev8u*);
  GetSize minSize, maxSize;
  Filter min, max;
};
#define TEV_MEMBERS(type)                                                                                          \
  {                                                                                                                \
    teviMorphologyInitAlloc_##type, teviErodeBorderReplicate_##type, teviDilateBorderReplicate_##type,             \
        teviMorphAdvInitAlloc_##type, teviMorphOpenBorder_##type, teviMorphCloseBorder_##type,                     \
        teviMorphTophatBorder_##type, teviMorphBlackhatBorder_##type, teviMorphGradientBorder_##type,              \
        teviFilterMinGetBufferSize_##type, teviFilterMaxGetBufferSize_##type, teviFilterMinBorderReplicate_##type, \
        teviFilterMaxBorderReplicate_##type                                                                        \
  }
constexpr Members<Tev8u> bytes[] = {TEV_MEMBERS(8u_C1R), TEV_MEMBERS(8u_C3R)};
constexpr Members<Tev32f> floats[] = {TEV_MEMBERS(32f_C1R), TEV_MEMBERS(32f_C3R)};
#undef TEV_MEMBERS
const Members<Tev8u>& membersOf(const Image<Tev8u>& image) { return bytes[image.channels == 3]; }
const Members<Tev32f>& membersOf(const Image<Tev32f>& image) { return floats[image.channels == 3]; }

// The grey-scale members.
struct GreyBytes {
  using Value = Tev32s;
  static constexpr auto init = teviMorphGrayInitAlloc_8u_C1R;
  static constexpr auto release = teviMorphGrayFree_8u_C1R;
  static constexpr auto dilate = teviGrayDilateBorder_8u_C1R;
  static constexpr auto erode = teviGrayErodeBorder_8u_C1R;
};
struct GreyFloats {
  using Value = Tev32f;
  static constexpr auto init = teviMorphGrayInitAlloc_32f_C1R;
  static constexpr auto release = teviMorphGrayFree_32f_C1R;
  static constexpr auto dilate = teviGrayDilateBorder_32f_C1R;
  static constexpr auto erode = teviGrayErodeBorder_32f_C1R;
};

template <class T>
Image<T> flat(const Image<T>& image, Operation operation, const Element& element) {
  Image<T> out(image.size, image.channels);
  const Members<T>& members = membersOf(image);
  if (operation == Operation::erode || operation == Operation::dilate) {
    TevMorphState* state = nullptr;
    check("teviMorphologyInitAlloc",
          members.init(image.width(), element.cells.data(), element.size, element.anchor, &state));
    const auto call = operation == Operation::erode ? members.erode : members.dilate;
    const TevStatus status = call(image.data(), image.step(), out.data(), out.step(), image.size, tevBorderRepl, state);
    teviMorphologyFree(state);
    check("erosion or dilation", status);
    return out;
  }
  TevMorphAdvState* state = nullptr;
  check("teviMorphAdvInitAlloc",
        members.advancedInit(&state, image.size, element.cells.data(), element.size, element.anchor));
  const auto call = operation == Operation::open       ? members.open
                    : operation == Operation::close    ? members.close
                    : operation == Operation::topHat   ? members.topHat
                    : operation == Operation::blackHat ? members.blackHat
                                                       : members.gradient;
  const TevStatus status = call(image.data(), image.step(), out.data(), out.step(), image.size, tevBorderRepl, state);
  teviMorphAdvFree(state);
  check("a composed operation", status);
  return out;
}

// a - b, at least 0.
template <class T>
Image<T> excess(Image<T> a, const Image<T>& b) {
  for (std::size_t i = 0; i < a.elements.size(); ++i)
    a.elements[i] = a.elements[i] > b.elements[i] ? static_cast<T>(a.elements[i] - b.elements[i]) : T{0};
  return a;
}

// Every operation from an erosion and a dilation: work(image, erode, turned), turned being the element by 180 degrees.
template <class T, class Work>
Image<T> compose(const Image<T>& image, Operation operation, Work work) {
  constexpr bool erode = true, dilate = false;
  switch (operation) {
    case Operation::erode:
      return work(image, erode, false);
    case Operation::dilate:
      return work(image, dilate, false);
    case Operation::open:
      return work(work(image, erode, false), dilate, true);
    case Operation::close:
      return work(work(image, dilate, false), erode, true);
    case Operation::topHat:
      return excess(image, compose(image, Operation::open, work));
    case Operation::blackHat:
      return excess(compose(image, Operation::close, work), image);
    case Operation::gradient:
      break;
  }
  return excess(work(image, dilate, false), work(image, erode, false));
}

// By the minimum and maximum filters.
template <class T>
Image<T> boxes(const Image<T>& image, Operation operation, const Element& element) {
  const Element turned = reflected(element);
  return compose(image, operation, [&](const Image<T>& from, bool erode, bool turn) {
    const Members<T>& members = membersOf(from);
    Image<T> to(from.size, from.channels);
    int size = 0;
    check("teviFilterMinGetBufferSize",
          (erode ? members.minSize : members.maxSize)(from.width(), element.size.width, element.size.height, &size));
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    check("teviFilterMinBorderReplicate",
          (erode ? members.min : members.max)(from.data(), from.step(), to.data(), to.step(), from.size, element.size,
                                              turn ? turned.anchor : element.anchor, buffer.data()));
    return to;
  });
}

// Heights of the element's cells, 0 in its middle, falling to -height at its rim; far below all pixels outside.
std::vector<double> heights(const Element& element, Profile profile, double height) {
  const double w = element.size.width, h = element.size.height;
  std::vector<double> result;
  for (int y = 0; y < element.size.height; ++y)
    for (int x = 0; x < element.size.width; ++x) {
      const double u = (2 * x - w + 1) / w, v = (2 * y - h + 1) / h, square = u * u + v * v;
      const bool belongs = element.cells[result.size()] != 0 && square <= 1;
      const double fall = profile == Profile::ball ? 1 - std::sqrt(std::max(0.0, 1 - square)) : std::sqrt(square);
      result.push_back(belongs ? -std::floor(height * fall + 0.5) : -1e6);
    }
  return result;
}

// With heights. Dilation adds them, erosion takes them away.
template <class Grey, class T>
Image<T> grey(const Image<T>& image, Operation operation, const Element& element, Profile profile, double height) {
  const std::vector<double> up = heights(element, profile, height);
  const Element turned = reflected(element);
  return compose(image, operation, [&](const Image<T>& from, bool erode, bool turn) {
    std::vector<typename Grey::Value> kernel;
    for (const double value : up) kernel.push_back(static_cast<typename Grey::Value>(erode ? -value : value));
    if (turn) std::reverse(kernel.begin(), kernel.end());
    Image<T> to(from.size);
    TevMorphGrayState* state = nullptr;
    check("teviMorphGrayInitAlloc",
          Grey::init(&state, from.size, kernel.data(), element.size, turn ? turned.anchor : element.anchor));
    const TevStatus status = (erode ? Grey::erode : Grey::dilate)(from.data(), from.step(), to.data(), to.step(),
                                                                  from.size, tevBorderRepl, state);
    Grey::release(state);
    check("grey-scale morphology", status);
    return to;
  });
}

template <class Grey, class T>
Image<T> apply(const Image<T>& image, const Element& element, const Options& o, double levels) {
  if (o.profile != Profile::flat)
    return eachPlane(image, [&](const Image<T>& plane, int) {
      return grey<Grey>(plane, o.operation, element, o.profile, o.height * levels);
    });
  return o.method == Method::minMax ? boxes(image, o.operation, element) : flat(image, o.operation, element);
}

// The picture on a ground of one value, which reaches as far as the operation looks.
template <class Grey, class T>
Image<T> bordered(const Image<T>& image, const Element& element, const Options& o, double levels) {
  if (o.border == tevBorderRepl) return apply<Grey>(image, element, o, levels);
  const int rows = 2 * element.size.height, columns = 2 * element.size.width;
  Image<T> framed({image.width() + 2 * columns, image.height() + 2 * rows}, image.channels,
                  static_cast<T>(o.value * levels));
  const int row = image.width() * image.channels, left = columns * image.channels;
  for (int y = 0; y < image.height(); ++y) std::copy_n(image.row(y), row, framed.row(y + rows) + left);
  framed = apply<Grey>(framed, element, o, levels);
  Image<T> result(image.size, image.channels);
  for (int y = 0; y < image.height(); ++y) std::copy_n(framed.row(y + rows) + left, row, result.row(y));
  return result;
}

}  // namespace

void morph(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("morph", "morphology", "Erosion, dilation and what is composed of them",
                                     "tevcv morph photo.png --operation open --shape disc --size 11 -o open.png");
  command.choice("--operation", o->operation,
                 {{"erode", Operation::erode},
                  {"dilate", Operation::dilate},
                  {"open", Operation::open},
                  {"close", Operation::close},
                  {"top-hat", Operation::topHat},
                  {"black-hat", Operation::blackHat},
                  {"gradient", Operation::gradient}},
                 "What to do");
  addElementOptions(command, o->element);
  command.choice("--method", o->method, {{"element", Method::element}, {"min-max", Method::minMax}},
                 "Structuring element, or minimum and maximum filters (rectangles alone)");
  command.choice("--profile", o->profile, {{"flat", Profile::flat}, {"ball", Profile::ball}, {"cone", Profile::cone}},
                 "Heights of the element's cells: none, or falling from the middle to the rim");
  command.option("--height", o->height, "How far a ball or cone falls, in grey levels").check(CLI::Range(0, 255));
  command.choice("--border", o->border, {{"replicate", tevBorderRepl}, {"constant", tevBorderConst}},
                 "Pixels outside of the picture");
  command.option("--border-value", o->value, "Their value when constant").check(CLI::Range(0, 255));
  command.flag("--stretch", o->stretch, "Spread the result's values from black to white");
  command.eachPicture([o](const Picture& picture, Result& result) {
    const Element element = makeElement(o->element);
    if (o->method == Method::minMax && (o->element.shape != Shape::rectangle || !o->element.file.empty()))
      throw UserError("--method: min-max takes --shape rectangle alone");
    if (o->profile != Profile::flat) {
      if (o->method == Method::minMax) throw UserError("--method: min-max takes --profile flat alone");
      if (std::max(element.size.width, element.size.height) > 101)
        throw UserError("--size: is at most 101 with --profile ball or cone");
    }
    if (picture.deep()) {  // words are exact as floats
      Image<Tev32f> image(picture.size(), picture.channels());
      std::copy(picture.words.elements.begin(), picture.words.elements.end(), image.elements.begin());
      result.timed([&] { image = bordered<GreyFloats>(image, element, *o, 257); });
      result.picture = o->stretch ? view(image, true) : view(image, true, 0, 65535);
    } else {
      Image<Tev8u> image = picture.bytes;
      result.timed([&] { image = bordered<GreyBytes>(image, element, *o, 1); });
      result.picture = o->stretch ? view(image) : Picture(image);
    }
  });
}

}  // namespace cli
