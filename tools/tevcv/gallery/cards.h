// What the gallery shows: a section for each subsystem, of cards. {astronaut}, {camera}, {coins} and {page} in lines
// and names stand for the photographs, wherever they lie.
#pragma once

#include <string>
#include <vector>

namespace cli {

struct Card {
  std::string name;  // of its code in snippets/
  std::string title;
  std::string caption;
  std::vector<std::string> lines;            // run one after the other; the last is timed
  std::vector<std::string> inputs, results;  // pictures
  std::string table;                         // a .csv file among the results
};

struct Section {
  std::string name;  // of the header
  std::string title, text;
  std::vector<std::string> picture;  // side by side, for the pages
  std::vector<Card> cards;
};

const std::vector<Section>& gallerySections();

// Side by side in the strip of the README.
const std::vector<std::string>& galleryStrip();

}  // namespace cli
