#include "cli/binary.h"

#include <algorithm>
#include <cstdint>

#include "tevcv.h"

namespace cli {
namespace {

// What black cannot be reached from the picture's edge becomes white.
Image<Tev8u> filled(const Image<Tev8u>& found, Result& result) {
  Image<Tev8u> grown = found;
  for (int y = 1; y + 1 < found.height(); ++y)
    for (int x = 1; x + 1 < found.width(); ++x) grown.at(x, y) = 255;
  result.timed([&] {
    int size = 0;
    TEV_CHECK(teviMorphReconstructGetBufferSize_8u_C1, found.size, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviMorphReconstructErode_8u_C1IR, found.data(), found.step(), grown.data(), grown.step(), found.size,
              buffer.data(), tevNormL1);
  });
  return grown;
}

}  // namespace

void addBinaryOptions(Command& command, BinaryOptions& options) {
  command.app()
      .add_option("--threshold", options.threshold,
                  "Objects are brighter than this (default: the level that parts the picture best)")
      ->check(CLI::Range(0, 255))
      ->type_name("LEVEL");
  command.flag("--dark", options.dark, "Objects are darker than their surroundings");
  command.flag("--fill-holes", options.fill, "Holes in objects belong to them");
  command
      .option("--background", options.background,
              "Compare with the surroundings of this many pixels (uneven light); 0: with the whole picture")
      .check(CLI::Range(0, 1023));
}

int otsu(const Image<Tev8u>& grey) {
  std::int64_t histogram[256] = {}, sum = 0, below = 0, belowSum = 0;
  for (const Tev8u value : grey.elements) ++histogram[value], sum += value;
  const auto count = static_cast<std::int64_t>(grey.elements.size());
  int best = grey.elements.front();
  double greatest = 0;
  for (int level = 0; level < 255; ++level) {
    below += histogram[level];
    belowSum += level * histogram[level];
    if (below == 0 || below == count) continue;
    const double low = static_cast<double>(belowSum) / static_cast<double>(below);
    const double high = static_cast<double>(sum - belowSum) / static_cast<double>(count - below);
    const double between =
        (high - low) * (high - low) * static_cast<double>(below) * static_cast<double>(count - below);
    if (between > greatest) greatest = between, best = level;
  }
  return best;
}

Image<Tev8u> binary(const Image<Tev8u>& grey, const BinaryOptions& options, Result& result) {
  const TevSize roi = grey.size;
  Image<Tev8u> found = grey;
  bool dark = options.dark;
  if (options.background > 0) {
    const int side = std::min(options.background, 2 * std::max(roi.width, roi.height) + 1);
    const std::vector<Tev8u> cells(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 1);
    result.timed([&] {
      TevMorphAdvState* state = nullptr;
      TEV_CHECK(teviMorphAdvInitAlloc_8u_C1R, &state, roi, cells.data(), TevSize{side, side},
                TevPoint{side / 2, side / 2});
      const auto hat = dark ? teviMorphBlackhatBorder_8u_C1R : teviMorphTophatBorder_8u_C1R;
      const TevStatus status = hat(grey.data(), grey.step(), found.data(), found.step(), roi, tevBorderRepl, state);
      teviMorphAdvFree(state);
      check("teviMorphTophatBorder_8u_C1R", status);
    });
    dark = false;  // either hat is bright where an object is
  }
  const int threshold = options.threshold >= 0 ? options.threshold : otsu(found);
  result.timed([&] {
    TEV_CHECK(teviThreshold_GTVal_8u_C1IR, found.data(), found.step(), roi, static_cast<Tev8u>(threshold), Tev8u{255});
    TEV_CHECK(teviThreshold_Val_8u_C1R, found.data(), found.step(), found.data(), found.step(), roi, Tev8u{255},
              Tev8u{0}, tevCmpLess);
  });
  // With the threshold at 255 nothing is above it, and what is 255 itself stayed.
  if (threshold == 255) std::fill(found.elements.begin(), found.elements.end(), Tev8u{0});
  if (dark) found = inverted(std::move(found));
  return options.fill ? filled(found, result) : found;
}

}  // namespace cli
