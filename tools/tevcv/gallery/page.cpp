#include "gallery/page.h"

#include <cstdio>
#include <fstream>
#include <string_view>

#include "gallery_snippets.h"

namespace cli {
namespace {

constexpr const char* head = R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>tevcv gallery</title>
<style>
:root { color-scheme: light dark; --ground: #f6f6f4; --card: #fff; --ink: #1d2126; --soft: #5c6570; --rule: #dcdfe3; --code: #f0f1f3; --accent: #0a62b5; }
@media (prefers-color-scheme: dark) {
  :root { --ground: #14171a; --card: #1d2125; --ink: #e6e8ea; --soft: #9ba5af; --rule: #343a41; --code: #14171a; --accent: #6db3f8; }
}
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 76rem; padding: 1.5rem 1rem 4rem; background: var(--ground); color: var(--ink); font: 1rem/1.5 system-ui, sans-serif; }
h1 { margin: 0; font-size: 1.9rem; }
h2 { margin: 3rem 0 0; font-size: 1.45rem; }
h3 { margin: 0; font-size: 1.1rem; }
p { margin: .25rem 0 .75rem; }
.soft { color: var(--soft); }
nav { display: flex; flex-wrap: wrap; gap: .35rem 1rem; margin: 1rem 0; }
a { color: var(--accent); text-decoration: none; }
a:hover { text-decoration: underline; }
article { margin: 1rem 0 1.5rem; padding: 1.1rem 1.2rem; background: var(--card); border: 1px solid var(--rule); border-radius: .6rem; }
.pictures { display: flex; flex-wrap: wrap; gap: 1rem; align-items: flex-start; }
figure { flex: 1 1 20rem; margin: 0; max-width: 34rem; min-width: 0; }
img { display: block; max-width: 100%; height: auto; border: 1px solid var(--rule); background: #fff; }
figcaption { font-size: .82rem; color: var(--soft); }
pre { margin: .6rem 0 0; padding: .7rem .9rem; overflow-x: auto; background: var(--code); border: 1px solid var(--rule); border-radius: .4rem; font: .83rem/1.5 ui-monospace, monospace; }
.time { margin: .6rem 0 0; font-size: .85rem; color: var(--soft); }
.numbers { flex: 1 1 20rem; min-width: 0; overflow-x: auto; }
table { border-collapse: collapse; font-size: .9rem; font-variant-numeric: tabular-nums; }
th, td { padding: .2rem .8rem .2rem 0; border-bottom: 1px solid var(--rule); text-align: right; }
th:first-child, td:first-child { text-align: left; }
</style>
</head>
<body>
)";

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  return result;
}

std::string snippet(const std::string& name) {
  for (const auto& [card, code] : snippets)
    if (name == card) return code;
  return "";
}

std::string figure(const std::string& file, const std::string& what) {
  return "<figure><a href=\"" + escaped(file) + "\"><img src=\"" + escaped(file) + "\" alt=\"" + escaped(what) +
         "\"></a><figcaption>" + escaped(what) + ": " + escaped(file) + "</figcaption></figure>\n";
}

// A few columns stand as they are; more are turned, so that names stand above each other.
std::string tableOf(const std::string& file) {
  std::vector<std::vector<std::string>> rows;
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    std::vector<std::string> cells(1);
    for (const char c : line)
      if (c == ',')
        cells.emplace_back();
      else if (c != '"')
        cells.back() += c;
    rows.push_back(cells);
  }
  if (rows.empty()) return "";
  const bool turned = rows.size() < 4 && rows.front().size() > rows.size();
  const std::size_t height = turned ? rows.front().size() : rows.size(),
                    width = turned ? rows.size() : rows.front().size();
  std::string html = "<div class=\"numbers\"><table>\n";
  for (std::size_t y = 0; y < height; ++y) {
    html += "<tr>";
    for (std::size_t x = 0; x < width; ++x) {
      const std::vector<std::string>& row = rows[turned ? x : y];
      const std::size_t at = turned ? y : x;
      const char* const kind = (turned ? x : y) == 0 ? "th" : "td";
      html += std::string("<") + kind + ">" + escaped(at < row.size() ? row[at] : "") + "</" + kind + ">";
    }
    html += "</tr>\n";
  }
  return html + "</table></div>\n";
}

std::string milliseconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, seconds < 0.01 ? "%.2f" : seconds < 0.1 ? "%.1f" : "%.0f", seconds * 1e3);
  return text;
}

std::string cardOf(const ShownCard& shown, const PageFacts& facts) {
  const Card& card = shown.card;
  std::string html = "<article id=\"" + card.name + "\">\n<h3>" + escaped(card.title) + "</h3>\n<p>" +
                     escaped(card.caption) + "</p>\n<div class=\"pictures\">\n";
  for (const std::string& file : card.inputs) html += figure(file, "Input");
  for (const std::string& file : card.results) html += figure(file, "Result");
  if (!card.table.empty()) html += tableOf(card.table);
  html += "</div>\n<pre>";
  for (const std::string& line : card.lines) html += escaped(line) + "\n";
  html += "</pre>\n<pre>" + escaped(snippet(card.name)) + "</pre>\n";
  return html + "<p class=\"time\">" + milliseconds(shown.seconds) + " ms in the library, variant " +
         escaped(facts.variant) + "</p>\n</article>\n";
}

}  // namespace

std::string galleryPage(const std::vector<ShownSection>& sections, const PageFacts& facts) {
  std::string html = head;
  html += "<header>\n<h1>tevcv gallery</h1>\n<p class=\"soft\">Every subsystem at work, by " + escaped(facts.library) +
          ", variant " + escaped(facts.variant) + ", with " + std::to_string(facts.threads) +
          (facts.threads == 1 ? " thread" : " threads") +
          ". Each shell line was run in the folder of this page, and the C code is what it comes down to.</p>\n";
  if (facts.own)
    html += "<p class=\"soft\">The input is your own picture; the captions tell what to expect of a photograph.</p>\n";
  else if (facts.drawn)
    html +=
        "<p class=\"soft\">Photographs were not at hand, so the program drew pictures that stand in for them.</p>\n";
  html += "<nav>";
  for (const ShownSection& shown : sections)
    html += "<a href=\"#" + shown.section->name + "\">" + escaped(shown.section->title) + "</a>\n";
  html += "</nav>\n</header>\n<main>\n";
  for (const ShownSection& shown : sections) {
    html += "<section>\n<h2 id=\"" + shown.section->name + "\">" + escaped(shown.section->title) +
            "</h2>\n<p class=\"soft\">" + escaped(shown.section->text) + " Declared in <code>tevcv/" +
            shown.section->name + ".h</code>.</p>\n";
    for (const ShownCard& card : shown.cards) html += cardOf(card, facts);
    html += "</section>\n";
  }
  return html + "</main>\n</body>\n</html>\n";
}

}  // namespace cli
