// Separable kernels through the row and column pipelines, and the words for borders.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cli/image.h"

namespace cli {

struct Border {
  TevBorderType type = tevBorderRepl;
  int value = 0;  // outside of the picture for tevBorderConst
};

inline const std::vector<std::pair<std::string, TevBorderType>>& borderWords() {
  static const std::vector<std::pair<std::string, TevBorderType>> words = {{"replicate", tevBorderRepl},
                                                                           {"constant", tevBorderConst},
                                                                           {"wrap", tevBorderWrap},
                                                                           {"mirror", tevBorderMirror},
                                                                           {"mirror-edge", tevBorderMirrorR}};
  return words;
}

// The picture's row that stands at row y, which may lie outside; -1 for a row of the constant.
int borderRow(int y, int height, TevBorderType type);

// Correlates with the product of a row kernel and a column kernel, their middle taps as anchors. One or three channels.
Image<Tev32f> separable(const Image<Tev32f>& image, const std::vector<Tev32f>& row, const std::vector<Tev32f>& column,
                        const Border& border);
// The mean of `side` x `side` pixels in whole numbers; `side` is odd and at most 127.
Image<Tev8u> boxMean(const Image<Tev8u>& image, int side, const Border& border);

}  // namespace cli
