// Small pictures for the pages and the README.
#pragma once

#include <string>
#include <vector>

#include "cli/picture.h"

namespace cli {

// Pictures side by side at one height, `width` pixels together.
Image<Tev8u> sideBySide(const std::vector<std::string>& files, int width);
// Squares from the pictures' middles, each `side` x `side`.
Image<Tev8u> stripOf(const std::vector<std::string>& files, int side);

// An indexed PNG of at most 64 colours: what a small picture needs and no more.
void writeSmall(const std::string& file, const Image<Tev8u>& image);

}  // namespace cli
