// Accumulators over a sequence: mean, deviation, a running mean that forgets, and how frames go with those before them.
#include <cmath>

#include "cli/command.h"
#include "cli/pixels.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Show { mean, deviation, running, covariance };

struct Options {
  Show show = Show::mean;
  double alpha = 0.1, white = 0;
  std::string mask;
};

// The members of one element type. Channels are accumulated side by side: a row of three is a row three times as long.
struct Bytes {
  using Element = Tev8u;
  static constexpr double unit = 1;
  static constexpr auto add = teviAdd_8u32f_C1IR;
  static constexpr auto addSquare = teviAddSquare_8u32f_C1IR;
  static constexpr auto addProduct = teviAddProduct_8u32f_C1IR;
  static constexpr auto addWeighted = teviAddWeighted_8u32f_C1IR;
  static constexpr auto addMasked = teviAdd_8u32f_C1IMR;
  static constexpr auto addSquareMasked = teviAddSquare_8u32f_C1IMR;
  static constexpr auto addProductMasked = teviAddProduct_8u32f_C1IMR;
  static constexpr auto addWeightedMasked = teviAddWeighted_8u32f_C1IMR;
  static const Image<Tev8u>& of(const Picture& picture) { return picture.bytes; }
};
struct Words {
  using Element = Tev16u;
  static constexpr double unit = 257;  // of a grey value from 0 to 255
  static constexpr auto add = teviAdd_16u32f_C1IR;
  static constexpr auto addSquare = teviAddSquare_16u32f_C1IR;
  static constexpr auto addProduct = teviAddProduct_16u32f_C1IR;
  static constexpr auto addWeighted = teviAddWeighted_16u32f_C1IR;
  static constexpr auto addMasked = teviAdd_16u32f_C1IMR;
  static constexpr auto addSquareMasked = teviAddSquare_16u32f_C1IMR;
  static constexpr auto addProductMasked = teviAddProduct_16u32f_C1IMR;
  static constexpr auto addWeightedMasked = teviAddWeighted_16u32f_C1IMR;
  static const Image<Tev16u>& of(const Picture& picture) { return picture.words; }
};

// Images of floats that take up one frame after the other, all of it or where the mask is not 0.
template <class Members>
class Accumulators {
 public:
  using Frame = Image<typename Members::Element>;

  Accumulators(const Frame& like, const Image<Tev8u>& mask, const Options& o)
      : sum(like.size, like.channels),
        squares(like.size, like.channels),
        products(like.size, like.channels),
        mean(like.size, like.channels),
        wide_{like.width() * like.channels, like.height()},
        alpha_(static_cast<Tev32f>(o.alpha)) {
    if (mask.empty()) return;
    mask_ = Image<Tev8u>(wide_);  // an element for each channel
    for (std::size_t i = 0; i < mask_.elements.size(); ++i)
      mask_.elements[i] = mask.elements[i / static_cast<std::size_t>(like.channels)];
  }

  void take(const Frame& frame, const Frame* before, Show show) {
    switch (show) {
      case Show::mean:
        add(frame, sum);
        break;
      case Show::deviation:
        add(frame, sum);
        call("teviAddSquare", Members::addSquare, Members::addSquareMasked, frame, squares);
        break;
      case Show::covariance:
        add(frame, sum);
        if (!before) break;
        if (mask_.empty())
          check("teviAddProduct", Members::addProduct(before->data(), before->step(), frame.data(), frame.step(),
                                                      products.data(), products.step(), wide_));
        else
          check("teviAddProduct",
                Members::addProductMasked(before->data(), before->step(), frame.data(), frame.step(), mask_.data(),
                                          mask_.step(), products.data(), products.step(), wide_));
        break;
      case Show::running:
        if (!before)
          add(frame, mean);
        else if (mask_.empty())
          check("teviAddWeighted",
                Members::addWeighted(frame.data(), frame.step(), mean.data(), mean.step(), wide_, alpha_));
        else
          check("teviAddWeighted", Members::addWeightedMasked(frame.data(), frame.step(), mask_.data(), mask_.step(),
                                                              mean.data(), mean.step(), wide_, alpha_));
        break;
    }
  }

  Image<Tev32f> sum, squares, products, mean;

 private:
  void add(const Frame& frame, Image<Tev32f>& to) { call("teviAdd", Members::add, Members::addMasked, frame, to); }
  template <class Plain, class Masked>
  void call(const char* name, Plain plain, Masked masked, const Frame& frame, Image<Tev32f>& to) {
    if (mask_.empty())
      check(name, plain(frame.data(), frame.step(), to.data(), to.step(), wide_));
    else
      check(name, masked(frame.data(), frame.step(), mask_.data(), mask_.step(), to.data(), to.step(), wide_));
  }

  TevSize wide_;
  Tev32f alpha_;
  Image<Tev8u> mask_;
};

// work(i) for each element.
template <class Work>
Image<Tev32f> made(const Image<Tev32f>& like, Work work) {
  Image<Tev32f> image(like.size, like.channels);
  for (std::size_t i = 0; i < image.elements.size(); ++i) image.elements[i] = static_cast<Tev32f>(work(i));
  return image;
}

template <class Members>
void run(const std::vector<Picture>& frames, const Image<Tev8u>& mask, const Options& o, Result& result) {
  Accumulators<Members> totals(Members::of(frames.front()), mask, o);
  Progress progress("average", static_cast<int>(frames.size()));
  for (std::size_t i = 0; i < frames.size(); ++i) {
    result.timed([&] { totals.take(Members::of(frames[i]), i > 0 ? &Members::of(frames[i - 1]) : nullptr, o.show); });
    progress.step();
  }
  const double count = static_cast<double>(frames.size()), unit = Members::unit;
  const bool deep = result.deep || std::is_same_v<Members, Words>;
  const double white = o.white > 0 ? o.white : 255;
  switch (o.show) {
    case Show::mean:
      result.picture =
          view(made(totals.sum, [&](std::size_t i) { return totals.sum.elements[i] / count / unit; }), deep, 0, white);
      break;
    case Show::running:
      result.picture =
          view(made(totals.mean, [&](std::size_t i) { return totals.mean.elements[i] / unit; }), deep, 0, white);
      break;
    case Show::deviation: {
      const auto image = made(totals.sum, [&](std::size_t i) {
        const double mean = totals.sum.elements[i] / count;
        return std::sqrt(std::max(0.0, totals.squares.elements[i] / count - mean * mean)) / unit;
      });
      result.picture = view(image, deep, 0, o.white > 0 ? o.white : brightExtent(image, 0.995, 1));
      break;
    }
    case Show::covariance: {
      // Means of the frames that have one behind them, and of those that have one before them.
      const auto& first = Members::of(frames.front()).elements;
      const auto& last = Members::of(frames.back()).elements;
      const auto image = made(totals.sum, [&](std::size_t i) {
        const double pairs = count - 1, sum = totals.sum.elements[i];
        if (!(sum > 0)) return 0.0;  // black throughout, or not under the mask
        const double before = (sum - last[i]) / pairs, behind = (sum - first[i]) / pairs;
        return (totals.products.elements[i] / pairs - before * behind) / (unit * unit);
      });
      const double extent = o.white > 0 ? o.white * o.white : brightExtent(image, 0.995, 1);
      result.picture = view(image, deep, -extent, extent);
      break;
    }
  }
}

}  // namespace

void average(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("average", "arithmetic", "Mean, deviation and running mean of a sequence",
                                     "tevcv frames photo.png --count 12 --noise 40 -o shots && "
                                     "tevcv average shots -o calm.png");
  command.choice("--show", o->show,
                 {{"mean", Show::mean},
                  {"deviation", Show::deviation},
                  {"running", Show::running},
                  {"covariance", Show::covariance}},
                 "The mean; the standard deviation; a mean that forgets; how frames go with those before (grey: not)");
  command.option("--alpha", o->alpha, "Weight of a new frame in the running mean").check(CLI::Range(0.0, 1.0));
  command.option("--white", o->white, "Value shown as white, 0: 255, or one that shows deviations well")
      .check(CLI::Range(0.0, 255.0));
  command.app()
      .add_option("--mask", o->mask, "Only pixels that are not black in this picture are added up")
      ->type_name("FILE");
  command.withDepth().sequence(
      [o](const std::vector<Picture>& frames, Result& result) {
        if (o->show == Show::covariance && frames.size() < 2)
          throw UserError("--show covariance: needs at least 2 pictures");
        for (const Picture& frame : frames)
          if (frame.channels() != frames.front().channels() || frame.deep() != frames.front().deep())
            throw UserError(frame.name + ": differs from " + frames.front().name + " in channels or depth");
        Image<Tev8u> mask;
        if (!o->mask.empty()) {
          const Picture selected = readPicture(o->mask);
          requireSameSize(frames.front(), selected);
          mask = grey8(selected);
        }
        if (frames.front().deep())
          run<Words>(frames, mask, *o, result);
        else
          run<Bytes>(frames, mask, *o, result);
      },
      1);
}

}  // namespace cli
