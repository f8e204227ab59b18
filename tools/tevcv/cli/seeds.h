// Seeds: pixels of the picture given on the command line, --seed X,Y as often as wanted.
#pragma once

#include <string>
#include <vector>

#include "cli/command.h"

namespace cli {

void seedsOption(Command& command, std::vector<TevPoint>& seeds, const std::string& text);
// Throws UserError for a seed outside of the picture.
void requireInside(const Picture& picture, TevPoint seed);

}  // namespace cli
