// The gallery's page: one file of HTML that fetches nothing but the pictures beside it.
#pragma once

#include <string>
#include <vector>

#include "gallery/cards.h"

namespace cli {

// A card whose lines were run: all names are files as seen from the page.
struct ShownCard {
  Card card;
  double seconds = 0;  // in the library, of the last line
};

struct ShownSection {
  const Section* section;
  std::vector<ShownCard> cards;
};

struct PageFacts {
  std::string library, variant;
  int threads = 1;
  bool drawn = false;  // some photographs are missing: the program drew others
  bool own = false;    // the user's picture
};

std::string galleryPage(const std::vector<ShownSection>& sections, const PageFacts& facts);

}  // namespace cli
