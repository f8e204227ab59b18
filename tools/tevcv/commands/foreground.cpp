// What moves in front of a background that the model learns from the frames.
#include "cli/command.h"
#include "cli/montage.h"
#include "cli/paint.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Model { gaussian, histogram };
enum class Show { overlay, mask, background, steps, sheet };

struct Options {
  Model model = Model::gaussian;
  Show show = Show::steps;
  int frame = -1, clean = 3, tiles = 9;
  bool grey = false;
};

// A foreground model: what it says of a frame, before it learns from it or while it does.
class Foreground {
 public:
  virtual ~Foreground() = default;
  virtual void take(const Image<Tev8u>& frame, Image<Tev8u>& mask, int clean) = 0;
  virtual Image<Tev8u> background() const = 0;
};

// Opens and closes a mask with a square of `side` pixels: lone pixels go, small holes are filled.
void cleanMask(Image<Tev8u>& mask, int side) {
  if (side < 2) return;
  const std::vector<Tev8u> square(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 1);
  TevMorphState* made = nullptr;
  TEV_CHECK(teviMorphologyInitAlloc_8u_C1R, mask.width(), square.data(), TevSize{side, side},
            TevPoint{side / 2, side / 2}, &made);
  const std::unique_ptr<TevMorphState, TevStatus (*)(TevMorphState*)> state(made, teviMorphologyFree);
  Image<Tev8u> other(mask.size);
  const auto erode = [&](const Image<Tev8u>& from, Image<Tev8u>& to) {
    TEV_CHECK(teviErodeBorderReplicate_8u_C1R, from.data(), from.step(), to.data(), to.step(), from.size, tevBorderRepl,
              state.get());
  };
  const auto dilate = [&](const Image<Tev8u>& from, Image<Tev8u>& to) {
    TEV_CHECK(teviDilateBorderReplicate_8u_C1R, from.data(), from.step(), to.data(), to.step(), from.size,
              tevBorderRepl, state.get());
  };
  erode(mask, other);
  dilate(other, mask);
  dilate(mask, other);
  erode(other, mask);
}

// A status of InitAlloc: too little memory for the pictures is for the user to know.
void checkModel(const char* name, TevStatus status) {
  if (status == tevStatusNoMemory) throw UserError("there is not enough memory for a model of pictures of this size");
  check(name, status);
}

class GaussianForeground : public Foreground {
 public:
  explicit GaussianForeground(const Image<Tev8u>& first) : colour_(first.channels == 3), size_(first.size) {
    const auto make = colour_ ? teviForegroundGaussianInitAlloc_8u_C3R : teviForegroundGaussianInitAlloc_8u_C1R;
    checkModel("teviForegroundGaussianInitAlloc", make(first.data(), first.step(), first.size, &unused_, &state_));
  }
  ~GaussianForeground() override {
    // Freeing a model leaves its modes and its record to the caller.
    void* const modes = state_->pixels[0];
    (colour_ ? teviForegroundGaussianFree_8u_C3R : teviForegroundGaussianFree_8u_C1R)(state_);
    tevsFree(modes);
    tevsFree(state_);
  }
  GaussianForeground(const GaussianForeground&) = delete;
  GaussianForeground& operator=(const GaussianForeground&) = delete;

  void take(const Image<Tev8u>& frame, Image<Tev8u>& mask, int clean) override {
    const auto work = colour_ ? teviForegroundGaussian_8u_C3R : teviForegroundGaussian_8u_C1R;
    check("teviForegroundGaussian",
          work(frame.data(), frame.step(), &unused_, 1, mask.data(), mask.step(), frame.size, state_));
    cleanMask(mask, clean);
  }
  Image<Tev8u> background() const override {
    Image<Tev8u> image(size_, colour_ ? 3 : 1);
    (colour_ ? teviCopy_8u_C3R : teviCopy_8u_C1R)(state_->backgroundImage, state_->backgroundStep, image.data(),
                                                  image.step(), size_);
    return image;
  }

 private:
  bool colour_;
  TevSize size_;
  TevForegroundGaussianState* state_ = nullptr;
  Tev8u unused_ = 0;
};

class HistogramForeground : public Foreground {
 public:
  explicit HistogramForeground(const Image<Tev8u>& first) : colour_(first.channels == 3), size_(first.size) {
    const auto make = colour_ ? teviForegroundHistogramInitAlloc_8u_C3R : teviForegroundHistogramInitAlloc_8u_C1R;
    checkModel("teviForegroundHistogramInitAlloc", make(first.data(), first.step(), first.size, &unused_, &state_));
  }
  ~HistogramForeground() override {
    (colour_ ? teviForegroundHistogramFree_8u_C3R : teviForegroundHistogramFree_8u_C1R)(state_);
  }
  HistogramForeground(const HistogramForeground&) = delete;
  HistogramForeground& operator=(const HistogramForeground&) = delete;

  void take(const Image<Tev8u>& frame, Image<Tev8u>& mask, int clean) override {
    const auto detect = colour_ ? teviForegroundHistogram_8u_C3R : teviForegroundHistogram_8u_C1R;
    const auto learn = colour_ ? teviForegroundHistogramUpdate_8u_C3R : teviForegroundHistogramUpdate_8u_C1R;
    check("teviForegroundHistogram", detect(frame.data(), frame.step(), mask.data(), mask.step(), frame.size, state_));
    cleanMask(mask, clean);  // it learns from the clean mask
    check("teviForegroundHistogramUpdate",
          learn(frame.data(), frame.step(), mask.data(), mask.step(), &unused_, 1, frame.size, state_));
  }
  Image<Tev8u> background() const override {
    Image<Tev8u> image(size_, colour_ ? 3 : 1);
    (colour_ ? teviCopy_8u_C3R : teviCopy_8u_C1R)(state_->background, state_->backgroundStep, image.data(),
                                                  image.step(), size_);
    return image;
  }

 private:
  bool colour_;
  TevSize size_;
  TevForegroundHistogramState* state_ = nullptr;
  Tev8u unused_ = 0;
};

Image<Tev8u> painted(const Picture& frame, const Image<Tev8u>& mask) {
  Image<Tev8u> image = colour8(frame);
  paintMask(image, mask, red);
  return image;
}

}  // namespace

void foreground(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("foreground", "motion", "What moves in front of a background that is learned",
                                     "tevcv frames photo.png --count 12 -o shots && "
                                     "tevcv foreground shots --frame 8 -o moving.png");
  command.choice("--model", o->model, {{"gaussian", Model::gaussian}, {"histogram", Model::histogram}},
                 "Gaussian modes of each pixel, or histograms of what was seen there");
  command.option("--frame", o->frame, "The frame to show, from 0; -1: the last").check(CLI::Range(-1, 1000000));
  command.choice("--show", o->show,
                 {{"steps", Show::steps},
                  {"overlay", Show::overlay},
                  {"mask", Show::mask},
                  {"background", Show::background},
                  {"sheet", Show::sheet}},
                 "The frame, the mask over it, the mask and the background; one of them; or many frames on a sheet");
  command.option("--clean", o->clean, "Side of the square that masks are opened and closed with, 1: not at all")
      .check(CLI::Range(1, 63));
  command.option("--tiles", o->tiles, "Frames on a sheet").check(CLI::Range(1, 1000));
  command.flag("--grey", o->grey, "Take colour frames as grey");
  command.withTable().sequence([o](const std::vector<Picture>& frames, Result& result) {
    const int count = static_cast<int>(frames.size());
    if (o->frame >= count)
      throw UserError("--frame: there are " + std::to_string(count) + " frames, the last is " +
                      std::to_string(count - 1));
    const int chosen = o->frame < 0 ? count - 1 : o->frame;
    const bool colour = !o->grey && std::all_of(frames.begin(), frames.end(),
                                                [](const Picture& frame) { return frame.channels() == 3; });
    const TevSize size = frames.front().size();
    // A model is one block of at most 2147483647 bytes; so many go to a pixel.
    const long long most = std::numeric_limits<int>::max() / (o->model == Model::histogram ? 972 : 300);
    if (static_cast<long long>(size.width) * size.height + 128 > most)
      throw UserError(frames.front().name + ": is too large for this model, which takes up to " +
                      std::to_string(most / 100000 * 100000) + " pixels");
    const auto pixels = [&](const Picture& frame) { return colour ? any8(frame) : grey8(frame); };

    const Image<Tev8u> first = pixels(frames.front());
    std::unique_ptr<Foreground> model;
    result.timed([&] {
      if (o->model == Model::gaussian)
        model = std::make_unique<GaussianForeground>(first);
      else
        model = std::make_unique<HistogramForeground>(first);
    });
    result.table.columns = {"frame", "picture", "foreground", "share"};
    Image<Tev8u> mask(size), shownMask, background;
    std::vector<Image<Tev8u>> tiles;
    const int tileCount = std::min(o->tiles, count);
    const int last = o->show == Show::sheet ? count - 1 : chosen;
    Progress progress("foreground", last + 1);
    for (int i = 0; i <= last; ++i) {
      const Picture& frame = frames[static_cast<std::size_t>(i)];
      const Image<Tev8u> image = pixels(frame);
      result.timed([&] { model->take(image, mask, o->clean); });
      const auto moving = std::count(mask.elements.begin(), mask.elements.end(), 255);
      result.table.add(i, frame.name, static_cast<std::int64_t>(moving),
                       static_cast<double>(moving) / static_cast<double>(mask.elements.size()));
      if (i == chosen) {
        shownMask = mask;
        background = model->background();
      }
      // Spread evenly, the last frame among them.
      const auto tilesUntil = [&](int frames_) { return static_cast<long long>(tileCount) * frames_ / count; };
      if (o->show == Show::sheet && tilesUntil(i + 1) > tilesUntil(i)) tiles.push_back(painted(frame, mask));
      progress.step();
    }
    const Picture& frame = frames[static_cast<std::size_t>(chosen)];
    switch (o->show) {
      case Show::mask:
        result.picture = shownMask;
        break;
      case Show::overlay:
        result.picture = painted(frame, shownMask);
        break;
      case Show::background:
        result.picture = background;
        break;
      case Show::sheet:
        result.picture = grid(tiles);
        break;
      case Show::steps:
        result.picture = grid(std::vector<Image<Tev8u>>{colour8(frame), painted(frame, shownMask), colour8(shownMask),
                                                        colour8(background)});
        break;
    }
  });
}

}  // namespace cli
