// Reconstruction: markers grow inside the picture and stop at its edges, so that objects come back whole or not at all.
#include "cli/binary.h"
#include "cli/command.h"
#include "cli/element.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Mode { open, close, fillHoles, clearBorder, domes, basins, dilate, erode };
enum class Part { result, removed };

struct Options {
  Mode mode = Mode::open;
  ElementOptions element;
  int height = 40;
  TevNorm norm = tevNormInf;
  std::string marker;
  bool binary = false;
  BinaryOptions threshold;
  Part part = Part::result;

  Options() { element.size = {15, 15}; }
};

// The members of one element type.
struct Bytes {
  static constexpr auto init = teviMorphologyInitAlloc_8u_C1R;
  static constexpr auto shrink = teviErodeBorderReplicate_8u_C1R;
  static constexpr auto grow = teviDilateBorderReplicate_8u_C1R;
  static constexpr auto bufferSize = teviMorphReconstructGetBufferSize_8u_C1;
  static constexpr auto dilate = teviMorphReconstructDilate_8u_C1IR;
  static constexpr auto erode = teviMorphReconstructErode_8u_C1IR;
};
struct Floats {
  static constexpr auto init = teviMorphologyInitAlloc_32f_C1R;
  static constexpr auto shrink = teviErodeBorderReplicate_32f_C1R;
  static constexpr auto grow = teviDilateBorderReplicate_32f_C1R;
  static constexpr auto bufferSize = teviMorphReconstructGetBufferSize_32f_C1;
  static constexpr auto dilate = teviMorphReconstructDilate_32f_C1IR;
  static constexpr auto erode = teviMorphReconstructErode_32f_C1IR;
};

bool growing(Mode mode) {
  return mode == Mode::open || mode == Mode::clearBorder || mode == Mode::domes || mode == Mode::dilate;
}

// Where the growth starts. `given` is the marker picture, `white` the greatest value, `height` that of the domes.
template <class Members, class T>
Image<T> markerOf(const Image<T>& image, const Image<T>& given, const Element& element, T white, T height,
                  const Options& o) {
  switch (o.mode) {
    case Mode::open:
    case Mode::close: {
      Image<T> marker(image.size);
      TevMorphState* state = nullptr;
      check("teviMorphologyInitAlloc",
            Members::init(image.width(), element.cells.data(), element.size, element.anchor, &state));
      const TevStatus status = (o.mode == Mode::open ? Members::shrink : Members::grow)(
          image.data(), image.step(), marker.data(), marker.step(), image.size, tevBorderRepl, state);
      teviMorphologyFree(state);
      check("erosion or dilation", status);
      return marker;
    }
    case Mode::fillHoles:
    case Mode::clearBorder: {  // the picture along its edge, as far off as can be within
      Image<T> marker = image;
      const T inside = o.mode == Mode::fillHoles ? white : T{0};
      for (int y = 1; y + 1 < image.height(); ++y)
        for (int x = 1; x + 1 < image.width(); ++x) marker.at(x, y) = inside;
      return marker;
    }
    case Mode::domes:
    case Mode::basins: {
      Image<T> marker = image;
      for (T& value : marker.elements)
        value = o.mode == Mode::domes ? static_cast<T>(value > height ? value - height : 0)
                                      : static_cast<T>(value < white - height ? value + height : white);
      return marker;
    }
    case Mode::dilate:
    case Mode::erode:
      break;
  }
  return given;
}

template <class Members, class T>
Image<T> run(const Image<T>& image, const Image<T>& given, const Element& element, T white, T height, const Options& o,
             Result& result) {
  Image<T> grown;
  result.timed([&] {
    grown = markerOf<Members>(image, given, element, white, height, o);
    int size = 0;
    check("teviMorphReconstructGetBufferSize", Members::bufferSize(image.size, &size));
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    check("teviMorphReconstruct",
          (growing(o.mode) ? Members::dilate : Members::erode)(image.data(), image.step(), grown.data(), grown.step(),
                                                               image.size, buffer.data(), o.norm));
  });
  // Domes, basins and objects at the border are what reconstruction leaves out; in the other modes --part tells.
  const bool rest = o.mode == Mode::domes || o.mode == Mode::basins || o.mode == Mode::clearBorder;
  if (rest != (o.part == Part::removed))
    for (std::size_t i = 0; i < grown.elements.size(); ++i) {
      const T a = image.elements[i], b = grown.elements[i];
      grown.elements[i] = static_cast<T>(a > b ? a - b : b - a);
    }
  return grown;
}

Image<Tev32f> wordsAsFloats(const Image<Tev16u>& words) {
  Image<Tev32f> result(words.size, words.channels);
  std::copy(words.elements.begin(), words.elements.end(), result.elements.begin());
  return result;
}

}  // namespace

void reconstruct(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("reconstruct", "morphology", "Objects come back whole from markers, or not at all",
                                     "tevcv reconstruct photo.png --mode open --size 15 -o objects.png");
  command.choice("--mode", o->mode,
                 {{"open", Mode::open},
                  {"close", Mode::close},
                  {"fill-holes", Mode::fillHoles},
                  {"clear-border", Mode::clearBorder},
                  {"domes", Mode::domes},
                  {"basins", Mode::basins},
                  {"dilate", Mode::dilate},
                  {"erode", Mode::erode}},
                 "Opening and closing by reconstruction, ..., or from a marker picture");
  addElementOptions(command, o->element);
  command.option("--height", o->height, "Of domes and basins, in grey levels").check(CLI::Range(1, 255));
  command.choice("--neighbours", o->norm, {{"8", tevNormInf}, {"4", tevNormL1}}, "Into which a marker grows");
  command.app()
      .add_option("--marker", o->marker, "Picture to start from, with --mode dilate and erode")
      ->type_name("FILE");
  command.flag("--binary", o->binary, "Make the picture black and white first");
  addBinaryOptions(command, o->threshold);
  command.choice("--part", o->part, {{"result", Part::result}, {"removed", Part::removed}},
                 "The result, or its difference from the picture, made visible");
  command.eachPicture([o](const Picture& given, Result& result) {
    const bool marked = o->mode == Mode::dilate || o->mode == Mode::erode;
    if (marked == o->marker.empty())
      throw UserError(marked ? "--marker: --mode dilate and erode start from a picture"
                             : "--marker: goes with --mode dilate and erode alone");
    Picture picture = given;
    if (o->binary) {
      picture = binary(grey8(given), o->threshold, result);
      picture.name = given.name;
    }
    Picture marker;
    if (marked) {
      marker = readPicture(o->marker);
      requireSameSize(picture, marker);
    }
    const Element element = makeElement(o->element);
    // What is left out is mostly dim.
    const bool dim = o->part == Part::removed || o->mode == Mode::domes || o->mode == Mode::basins;
    const bool stretched = dim && !o->binary;
    if (picture.deep()) {
      const Image<Tev32f> image = wordsAsFloats(picture.words);
      Image<Tev32f> from(picture.size());
      if (marked) from = wordsAsFloats(grey16(marker));
      const Image<Tev32f> made = eachPlane(image, [&](const Image<Tev32f>& plane, int) {
        return run<Floats>(plane, from, element, 65535.0F, static_cast<Tev32f>(o->height * 257), *o, result);
      });
      result.picture = stretched ? view(made, true) : view(made, true, 0, 65535);
    } else {
      Image<Tev8u> from(picture.size());
      if (marked) from = grey8(marker);
      const Image<Tev8u> made = eachPlane(picture.bytes, [&](const Image<Tev8u>& plane, int) {
        return run<Bytes>(plane, from, element, Tev8u{255}, static_cast<Tev8u>(o->height), *o, result);
      });
      result.picture = stretched ? view(made) : Picture(made);
    }
  });
}

}  // namespace cli
