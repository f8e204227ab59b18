#include "cli/table.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace cli {
namespace {

template <class T>
std::string shortest(T value) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string csvText(const std::string& text) {
  if (text.find_first_of(",\"\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

std::string jsonText(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", c);
      quoted += code;
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

}  // namespace

Cell Table::floatCell(float value) {
  if (!std::isfinite(value)) return static_cast<double>(value);
  const std::string text = shortest(value);
  double result = 0;
  std::from_chars(text.data(), text.data() + text.size(), result);
  return result;
}

std::string Table::csv() const {
  std::string text;
  for (std::size_t i = 0; i < columns.size(); ++i) text += (i ? "," : "") + csvText(columns[i]);
  text += '\n';
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (i) text += ',';
      if (const auto* const whole = std::get_if<std::int64_t>(&row[i]))
        text += shortest(*whole);
      else if (const auto* const real = std::get_if<double>(&row[i]))
        text += shortest(*real);
      else
        text += csvText(std::get<std::string>(row[i]));
    }
    text += '\n';
  }
  return text;
}

std::string Table::json() const {
  std::string text = "[";
  for (std::size_t r = 0; r < rows.size(); ++r) {
    text += r ? ",\n {" : "\n {";
    for (std::size_t i = 0; i < rows[r].size(); ++i) {
      text += (i ? ", " : "") + jsonText(columns[i]) + ": ";
      if (const auto* const whole = std::get_if<std::int64_t>(&rows[r][i]))
        text += shortest(*whole);
      else if (const auto* const real = std::get_if<double>(&rows[r][i]))
        text += std::isfinite(*real) ? shortest(*real) : "null";
      else
        text += jsonText(std::get<std::string>(rows[r][i]));
    }
    text += '}';
  }
  return text + (rows.empty() ? "]\n" : "\n]\n");
}

}  // namespace cli
