// How far two pictures lie apart: norms of their difference, norms relative to the first, peak signal to noise ratio.
#include <cmath>

#include "cli/command.h"
#include "tevcv.h"

namespace cli {
namespace {

template <class T>
using Norm = TevStatus (*)(const T*, int, const T*, int, const Tev8u*, int, TevSize, Tev64f*);
template <class T>
using NormC = TevStatus (*)(const T*, int, const T*, int, const Tev8u*, int, TevSize, int, Tev64f*);

// Infinity, L1 and L2, of the difference and relative to the second picture.
template <class T>
struct Norms {
  Norm<T> grey[6];
  NormC<T> colour[6];
};
constexpr Norms<Tev8u> bytes = {{teviNormDiff_Inf_8u_C1MR, teviNormDiff_L1_8u_C1MR, teviNormDiff_L2_8u_C1MR,
                                 teviNormRel_Inf_8u_C1MR, teviNormRel_L1_8u_C1MR, teviNormRel_L2_8u_C1MR},
                                {teviNormDiff_Inf_8u_C3CMR, teviNormDiff_L1_8u_C3CMR, teviNormDiff_L2_8u_C3CMR,
                                 teviNormRel_Inf_8u_C3CMR, teviNormRel_L1_8u_C3CMR, teviNormRel_L2_8u_C3CMR}};
constexpr Norms<Tev16u> words = {{teviNormDiff_Inf_16u_C1MR, teviNormDiff_L1_16u_C1MR, teviNormDiff_L2_16u_C1MR,
                                  teviNormRel_Inf_16u_C1MR, teviNormRel_L1_16u_C1MR, teviNormRel_L2_16u_C1MR},
                                 {teviNormDiff_Inf_16u_C3CMR, teviNormDiff_L1_16u_C3CMR, teviNormDiff_L2_16u_C3CMR,
                                  teviNormRel_Inf_16u_C3CMR, teviNormRel_L1_16u_C3CMR, teviNormRel_L2_16u_C3CMR}};

template <class T>
void measure(const Norms<T>& norms, const Image<T>& a, const Image<T>& b, const Image<Tev8u>& mask, Result& result) {
  const char* const names[] = {"red", "green", "blue"};
  double count = 0;
  for (const Tev8u selected : mask.elements) count += selected != 0;
  for (int channel = 1; channel <= a.channels; ++channel) {
    Tev64f values[6] = {};
    result.timed([&] {
      for (int i = 0; i < 6; ++i)
        check("the norm", a.channels == 1 ? norms.grey[i](a.data(), a.step(), b.data(), b.step(), mask.data(),
                                                          mask.step(), a.size, &values[i])
                                          : norms.colour[i](a.data(), a.step(), b.data(), b.step(), mask.data(),
                                                            mask.step(), a.size, channel, &values[i]));
    });
    const double peak = std::numeric_limits<T>::max(), meanSquare = count > 0 ? values[2] * values[2] / count : 0;
    // A logarithm's last digits are not the same everywhere; a thousandth of a decibel is more than anybody hears.
    const double ratio =
        meanSquare > 0 ? std::floor(10000 * std::log10(peak * peak / meanSquare) + 0.5) / 1000 : INFINITY;
    result.table.add(a.channels == 1 ? "grey" : names[channel - 1], values[0], values[1], values[2], values[3],
                     values[4], values[5], ratio);
  }
}

}  // namespace

void compare(Program& program) {
  auto maskFile = std::make_shared<std::string>();
  Command& command = program.command("compare", "statistics", "Norms of the difference of two pictures",
                                     "tevcv compare photo.png other.png --table distance.json");
  command.numbersOnly();
  command.app()
      .add_option("--mask", *maskFile, "Only pixels that are not black in this picture count")
      ->type_name("FILE");
  command.twoPictures([maskFile](const Picture& first, const Picture& second, Result& result) {
    requireSameSize(first, second);
    Image<Tev8u> mask(first.size(), 1, 255);
    if (!maskFile->empty()) {
      const Picture selected = readPicture(*maskFile);
      requireSameSize(first, selected);
      mask = grey8(selected);
    }
    result.table.columns = {"channel", "inf", "l1", "l2", "relative inf", "relative l1", "relative l2", "psnr dB"};
    const bool colour = first.channels() == 3 && second.channels() == 3;
    if (first.deep() && second.deep() && first.channels() == second.channels())
      measure(words, first.words, second.words, mask, result);
    else if (colour)
      measure(bytes, any8(first), any8(second), mask, result);
    else  // what they have in common
      measure(bytes, grey8(first), grey8(second), mask, result);
  });
}

}  // namespace cli
