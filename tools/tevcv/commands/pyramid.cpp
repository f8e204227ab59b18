// Pyramids: levels that halve by the Gaussian steps, or shrink at any rate by the general layers; what each level loses
// to the next; each level brought back to the picture's size.
#include "cli/command.h"
#include "cli/montage.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Show { levels, laplace, back };

struct Options {
  Show show = Show::levels;
  int levels = 4;
  double rate = 2;
  std::vector<int> kernel;
  bool split = false;
};

// The members of one element type and number of channels.
template <class T>
struct Steps {
  TevStatus (*down)(const T*, int, T*, int, TevSize, Tev8u*);
  TevStatus (*up)(const T*, int, T*, int, TevSize, Tev8u*);
  TevDataType type;
};
template <class T, class Tap>
struct Layers {
  using Init = TevStatus (*)(TevPyramidLayerState**, TevSize, Tev32f, const Tap*, int, int);
  using Move = TevStatus (*)(const T*, int, TevSize, T*, int, TevSize, TevPyramidLayerState*);
  Init initDown, initUp;
  Move down, up;
};
constexpr Steps<Tev8u> bytes1 = {teviPyrDown_Gauss5x5_8u_C1R, teviPyrUp_Gauss5x5_8u_C1R, tevDataType8u},
                       bytes3 = {teviPyrDown_Gauss5x5_8u_C3R, teviPyrUp_Gauss5x5_8u_C3R, tevDataType8u};
constexpr Steps<Tev32f> floats1 = {teviPyrDown_Gauss5x5_32f_C1R, teviPyrUp_Gauss5x5_32f_C1R, tevDataType32f},
                        floats3 = {teviPyrDown_Gauss5x5_32f_C3R, teviPyrUp_Gauss5x5_32f_C3R, tevDataType32f};
constexpr Layers<Tev8u, Tev16s> byteLayers1 = {teviPyramidLayerDownInitAlloc_8u_C1R, teviPyramidLayerUpInitAlloc_8u_C1R,
                                               teviPyramidLayerDown_8u_C1R, teviPyramidLayerUp_8u_C1R},
                                byteLayers3 = {teviPyramidLayerDownInitAlloc_8u_C3R, teviPyramidLayerUpInitAlloc_8u_C3R,
                                               teviPyramidLayerDown_8u_C3R, teviPyramidLayerUp_8u_C3R};
constexpr Layers<Tev16u, Tev16s> wordLayers1 = {teviPyramidLayerDownInitAlloc_16u_C1R,
                                                teviPyramidLayerUpInitAlloc_16u_C1R, teviPyramidLayerDown_16u_C1R,
                                                teviPyramidLayerUp_16u_C1R},
                                 wordLayers3 = {teviPyramidLayerDownInitAlloc_16u_C3R,
                                                teviPyramidLayerUpInitAlloc_16u_C3R, teviPyramidLayerDown_16u_C3R,
                                                teviPyramidLayerUp_16u_C3R};
constexpr Layers<Tev32f, Tev32f> floatLayers1 = {teviPyramidLayerDownInitAlloc_32f_C1R,
                                                 teviPyramidLayerUpInitAlloc_32f_C1R, teviPyramidLayerDown_32f_C1R,
                                                 teviPyramidLayerUp_32f_C1R},
                                 floatLayers3 = {teviPyramidLayerDownInitAlloc_32f_C3R,
                                                 teviPyramidLayerUpInitAlloc_32f_C3R, teviPyramidLayerDown_32f_C3R,
                                                 teviPyramidLayerUp_32f_C3R};

// Down to half the size, and up to `size`, which has an odd column or row less than double where it must.
template <class T>
struct GaussMover {
  const Steps<T>& steps;

  Image<T> down(const Image<T>& image, TevSize size) const {
    Image<T> smaller(size, image.channels);
    int length = 0;
    TEV_CHECK(teviPyrDownGetBufSize_Gauss5x5, image.width(), steps.type, image.channels, &length);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(length));
    check("teviPyrDown_Gauss5x5",
          steps.down(image.data(), image.step(), smaller.data(), smaller.step(), image.size, buffer.data()));
    return smaller;
  }
  Image<T> up(const Image<T>& image, TevSize size) const {
    Image<T> larger({2 * image.width(), 2 * image.height()}, image.channels), result(size, image.channels);
    int length = 0;
    TEV_CHECK(teviPyrUpGetBufSize_Gauss5x5, image.width(), steps.type, image.channels, &length);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(length));
    check("teviPyrUp_Gauss5x5",
          steps.up(image.data(), image.step(), larger.data(), larger.step(), image.size, buffer.data()));
    for (int y = 0; y < size.height; ++y) std::copy_n(larger.row(y), size.width * image.channels, result.row(y));
    return result;
  }
};

// The same at any rate with any kernel: one state for each direction serves all levels.
template <class T, class Tap>
struct LayerMover {
  using Free = TevStatus (*)(TevPyramidLayerState*);
  using State = std::unique_ptr<TevPyramidLayerState, Free>;
  const Layers<T, Tap>& layers;
  State downState, upState;

  LayerMover(const Layers<T, Tap>& layers_, TevSize size, Tev32f rate, const std::vector<int>& kernel)
      : layers(layers_), downState(nullptr, teviPyramidLayerDownFree), upState(nullptr, teviPyramidLayerUpFree) {
    const std::vector<Tap> taps(kernel.begin(), kernel.end());
    TevPyramidLayerState* state = nullptr;
    check("teviPyramidLayerDownInitAlloc",
          layers.initDown(&state, size, rate, taps.data(), static_cast<int>(taps.size()), 2));
    downState.reset(state);
    check("teviPyramidLayerUpInitAlloc",
          layers.initUp(&state, size, rate, taps.data(), static_cast<int>(taps.size()), 2));
    upState.reset(state);
  }
  Image<T> down(const Image<T>& image, TevSize size) const {
    Image<T> smaller(size, image.channels);
    check("teviPyramidLayerDown",
          layers.down(image.data(), image.step(), image.size, smaller.data(), smaller.step(), size, downState.get()));
    return smaller;
  }
  Image<T> up(const Image<T>& image, TevSize size) const {
    Image<T> larger(size, image.channels);
    check("teviPyramidLayerUp",
          layers.up(image.data(), image.step(), image.size, larger.data(), larger.step(), size, upState.get()));
    return larger;
  }
};

Image<Tev32f> difference(const Image<Tev32f>& image, const Image<Tev32f>& other) {
  Image<Tev32f> result(image.size, image.channels);
  if (image.channels == 1)
    TEV_CHECK(teviSub_32f_C1R, other.data(), other.step(), image.data(), image.step(), result.data(), result.step(),
              image.size);
  else
    TEV_CHECK(teviSub_32f_C3R, other.data(), other.step(), image.data(), image.step(), result.data(), result.step(),
              image.size);
  return result;
}

// The images to show: the levels, what each loses to the next with the last as it is, or each at the picture's size.
template <class T, class Mover>
std::vector<Image<T>> build(const Image<T>& image, const std::vector<TevSize>& sizes, Show show, const Mover& mover) {
  std::vector<Image<T>> levels = {image};
  for (std::size_t i = 1; i < sizes.size(); ++i) levels.push_back(mover.down(levels.back(), sizes[i]));
  if (show == Show::laplace) {
    if constexpr (std::is_same_v<T, Tev32f>)
      for (std::size_t i = 0; i + 1 < sizes.size(); ++i)
        levels[i] = difference(levels[i], mover.up(levels[i + 1], sizes[i]));
  } else if (show == Show::back) {
    for (std::size_t i = 1; i < sizes.size(); ++i)
      for (std::size_t to = i; to-- > 0;) levels[i] = mover.up(levels[i], sizes[to]);
  }
  return levels;
}

// The kernel that reaches over the pixels that one step down skips.
std::vector<int> kernelFor(double rate) {
  if (rate <= 2) return {1, 4, 6, 4, 1};
  const int half = static_cast<int>(std::ceil(rate));
  std::vector<int> taps;
  for (int i = -half; i <= half; ++i) taps.push_back(half + 1 - std::abs(i));
  return taps;
}

template <class T, class Tap>
std::vector<Image<T>> run(const Options& o, const Image<T>& image, const std::vector<TevSize>& sizes,
                          const Layers<T, Tap>& one, const Layers<T, Tap>& three, Result& result) {
  std::vector<Image<T>> images;
  result.timed([&] {
    const LayerMover<T, Tap> mover(image.channels == 1 ? one : three, image.size, static_cast<Tev32f>(o.rate),
                                   o.kernel.empty() ? kernelFor(o.rate) : o.kernel);
    images = build(image, sizes, o.show, mover);
  });
  return images;
}
template <class T>
std::vector<Image<T>> run(const Options& o, const Image<T>& image, const std::vector<TevSize>& sizes,
                          const Steps<T>& one, const Steps<T>& three, Result& result) {
  std::vector<Image<T>> images;
  result.timed([&] { images = build(image, sizes, o.show, GaussMover<T>{image.channels == 1 ? one : three}); });
  return images;
}

template <class T>
void show(const Options& o, const std::vector<Image<T>>& images, Result& result) {
  result.picture = o.show == Show::back ? grid(images) : shelves(images);
  if (!o.split) return;
  for (std::size_t i = 0; i < images.size(); ++i) result.others.emplace_back(std::to_string(i), images[i]);
}

// Floats made visible: levels from 0 to 255; differences about middle grey, each level at a contrast of its own.
template <class T>
std::vector<Image<T>> shades(const std::vector<Image<Tev32f>>& images, Show show) {
  constexpr bool deep = std::is_same_v<T, Tev16u>;
  std::vector<Image<T>> result;
  for (const Image<Tev32f>& image : images) {
    const bool signedOnes = show == Show::laplace && &image != &images.back();
    const double extent = signedOnes ? brightExtent(image, 0.995, 0.5) : 255;
    const Picture picture = view(image, deep, signedOnes ? -extent : 0, extent);
    if constexpr (deep)
      result.push_back(picture.words);
    else
      result.push_back(picture.bytes);
  }
  return result;
}

}  // namespace

void pyramid(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("pyramid", "pyramids", "Levels of falling size, and what each loses to the next",
                                     "tevcv pyramid photo.png --show laplace -o laplace.png");
  command.choice("--show", o->show, {{"levels", Show::levels}, {"laplace", Show::laplace}, {"back", Show::back}},
                 "The levels; the detail that each loses to the next, grey for none; each brought back to full size");
  command.option("--levels", o->levels, "Levels above the picture itself, fewer where one pixel is reached")
      .check(CLI::Range(1, 30));
  command.option("--rate", o->rate, "How much smaller each level is; other than 2 goes by the general layers")
      .check(CLI::Range(1.05, 10.0));
  command.app()
      .add_option("--kernel", o->kernel,
                  "The general layers with this smoothing kernel: an odd number of taps, symmetric, such as 1,2,1")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("TAPS")
      ->check(CLI::Range(0, 1000));
  command.flag("--split", o->split, "Write each level to a file of its own too");
  command.withTable().withDepth().eachPicture([o](const Picture& picture, Result& result) {
    const std::vector<int>& taps = o->kernel;
    if (!taps.empty() && (taps.size() < 3 || taps.size() % 2 == 0 || taps.size() > 63))
      throw UserError("--kernel: has an odd number of taps from 3 to 63");
    if (!std::equal(taps.begin(), taps.end(), taps.rbegin())) throw UserError("--kernel: is not symmetric");
    if (!taps.empty() && std::all_of(taps.begin(), taps.end(), [](int tap) { return tap == 0; }))
      throw UserError("--kernel: has a sum of 0");
    const auto rate = static_cast<Tev32f>(o->rate);
    TevPyramid* record = nullptr;
    TEV_CHECK(teviPyramidInitAlloc, &record, o->levels, picture.size(), rate);
    const std::unique_ptr<TevPyramid, TevStatus (*)(TevPyramid*)> owner(record, teviPyramidFree);
    const std::vector<TevSize> sizes(record->roi, record->roi + record->level + 1);
    result.table.columns = {"level", "width", "height", "scale"};
    for (std::size_t i = 0; i < sizes.size(); ++i)
      result.table.add(static_cast<int>(i), sizes[i].width, sizes[i].height, record->scale[i]);

    const bool layers = o->rate != 2 || !taps.empty();
    if (o->show == Show::laplace || (picture.deep() && !layers) || (result.deep && !picture.deep())) {
      const auto images = layers ? run(*o, anyFloat(picture), sizes, floatLayers1, floatLayers3, result)
                                 : run(*o, anyFloat(picture), sizes, floats1, floats3, result);
      if (picture.deep() || result.deep)
        show(*o, shades<Tev16u>(images, o->show), result);
      else
        show(*o, shades<Tev8u>(images, o->show), result);
    } else if (picture.deep()) {
      show(*o, run(*o, picture.words, sizes, wordLayers1, wordLayers3, result), result);
    } else {
      show(*o,
           layers ? run(*o, picture.bytes, sizes, byteLayers1, byteLayers3, result)
                  : run(*o, picture.bytes, sizes, bytes1, bytes3, result),
           result);
    }
  });
}

}  // namespace cli
