// Mean, deviation, extrema with their places, and norms of each channel.
#include "cli/command.h"
#include "tevcv.h"

namespace cli {
namespace {

// The members of one element type.
struct Bytes {
  using Element = Tev8u;
  static constexpr auto meanStdDevC1 = teviMean_StdDev_8u_C1MR;
  static constexpr auto meanStdDevC3 = teviMean_StdDev_8u_C3CMR;
  static constexpr auto minMaxC1 = teviMinMaxIndx_8u_C1MR;
  static constexpr auto minMaxC3 = teviMinMaxIndx_8u_C3CMR;
  static constexpr auto l2C1 = teviNorm_L2_8u_C1MR;
  static constexpr auto l2C3 = teviNorm_L2_8u_C3CMR;
};
struct Words {
  using Element = Tev16u;
  static constexpr auto meanStdDevC1 = teviMean_StdDev_16u_C1MR;
  static constexpr auto meanStdDevC3 = teviMean_StdDev_16u_C3CMR;
  static constexpr auto minMaxC1 = teviMinMaxIndx_16u_C1MR;
  static constexpr auto minMaxC3 = teviMinMaxIndx_16u_C3CMR;
  static constexpr auto l2C1 = teviNorm_L2_16u_C1MR;
  static constexpr auto l2C3 = teviNorm_L2_16u_C3CMR;
};

template <class Members>
void measure(const Image<typename Members::Element>& image, const Image<Tev8u>& mask, Result& result) {
  const char* const names[] = {"red", "green", "blue"};
  for (int channel = 1; channel <= image.channels; ++channel) {
    Tev64f mean = 0, deviation = 0, l2 = 0;
    Tev32f low = 0, high = 0;
    TevPoint lowest{}, highest{};
    result.timed([&] {
      const auto* const pixels = image.data();
      const Tev8u* const selected = mask.data();
      if (image.channels == 1) {
        TEV_CHECK(Members::meanStdDevC1, pixels, image.step(), selected, mask.step(), image.size, &mean, &deviation);
        TEV_CHECK(Members::minMaxC1, pixels, image.step(), selected, mask.step(), image.size, &low, &high, &lowest,
                  &highest);
        TEV_CHECK(Members::l2C1, pixels, image.step(), selected, mask.step(), image.size, &l2);
      } else {
        TEV_CHECK(Members::meanStdDevC3, pixels, image.step(), selected, mask.step(), image.size, channel, &mean,
                  &deviation);
        TEV_CHECK(Members::minMaxC3, pixels, image.step(), selected, mask.step(), image.size, channel, &low, &high,
                  &lowest, &highest);
        TEV_CHECK(Members::l2C3, pixels, image.step(), selected, mask.step(), image.size, channel, &l2);
      }
    });
    result.table.add(image.channels == 1 ? "grey" : names[channel - 1], mean, deviation, low, lowest.x, lowest.y, high,
                     highest.x, highest.y, l2);
  }
}

}  // namespace

void stats(Program& program) {
  auto maskFile = std::make_shared<std::string>();
  Command& command = program.command("stats", "statistics", "Mean, deviation, extrema and their places, norm",
                                     "tevcv stats photo.png --table stats.csv");
  command.numbersOnly();
  command.app()
      .add_option("--mask", *maskFile, "Only pixels that are not black in this picture count")
      ->type_name("FILE");
  command.eachPicture([maskFile](const Picture& picture, Result& result) {
    Image<Tev8u> mask(picture.size(), 1, 255);
    if (!maskFile->empty()) {
      const Picture selected = readPicture(*maskFile);
      requireSameSize(picture, selected);
      mask = grey8(selected);
    }
    result.table.columns = {"channel",  "mean",    "deviation", "lowest",    "lowest x",
                            "lowest y", "highest", "highest x", "highest y", "l2 norm"};
    if (picture.deep())
      measure<Words>(picture.words, mask, result);
    else
      measure<Bytes>(picture.bytes, mask, result);
  });
}

}  // namespace cli
