// Numbers as results: rows under named columns, written as CSV or JSON.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace cli {

using Cell = std::variant<std::int64_t, double, std::string>;

struct Table {
  std::vector<std::string> columns;
  std::vector<std::vector<Cell>> rows;

  bool empty() const { return columns.empty(); }
  // Cells of any integer or floating type, or text.
  template <class... T>
  void add(const T&... cells) {
    rows.push_back({cell(cells)...});
  }

  // Floats in the shortest form that reads back as the same value.
  std::string csv() const;
  std::string json() const;  // a list of objects

 private:
  template <class T>
  static Cell cell(const T& value) {
    if constexpr (std::is_integral_v<T>)
      return static_cast<std::int64_t>(value);
    else if constexpr (std::is_same_v<T, float>)
      return floatCell(value);
    else if constexpr (std::is_floating_point_v<T>)
      return static_cast<double>(value);
    else
      return std::string(value);
  }
  static Cell floatCell(float value);  // the double whose shortest form is the float's
};

}  // namespace cli
