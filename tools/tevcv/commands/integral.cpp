// Integral tables made visible, and what they are for: the sum under any rectangle by four reads.
#include "cli/command.h"
#include "cli/paint.h"
#include "cli/pixels.h"
#include "cli/points.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Show { sum, squares, tilted, tiltedSquares, average };
enum class Type { words, floats };

struct Options {
  Show show = Show::sum;
  Type type = Type::words;
  int contours = 16, box = 15;
  std::vector<int> rect;
};

template <class T>
Image<Tev64f> doubles(const Image<T>& image) {
  Image<Tev64f> result(image.size);
  std::copy(image.elements.begin(), image.elements.end(), result.elements.begin());
  return result;
}

// The tables of sums and squares of one kind.
struct Tables {
  Image<Tev64f> sums, squares;
};

template <class Sum, class Integral>
Tables run(const Image<Tev8u>& grey, int extra, const char* name, Integral integral, Result& result) {
  const TevSize cells = {grey.width() + extra, grey.height() + extra};
  Image<Sum> sums(cells);
  Tables tables = {{}, Image<Tev64f>(cells)};
  result.timed([&] {
    check(name, integral(grey.data(), grey.step(), sums.data(), sums.step(), tables.squares.data(),
                         tables.squares.step(), grey.size, 0, 0));
  });
  tables.sums = doubles(sums);
  return tables;
}

Tables tablesOf(const Image<Tev8u>& grey, bool tilted, Type type, Result& result) {
  if (type == Type::floats)
    return tilted
               ? run<Tev32f>(grey, 2, "teviTiltedSqrIntegral_8u32f64f_C1R", teviTiltedSqrIntegral_8u32f64f_C1R, result)
               : run<Tev32f>(grey, 1, "teviSqrIntegral_8u32f64f_C1R", teviSqrIntegral_8u32f64f_C1R, result);
  return tilted ? run<Tev32s>(grey, 2, "teviTiltedSqrIntegral_8u32s64f_C1R", teviTiltedSqrIntegral_8u32s64f_C1R, result)
                : run<Tev32s>(grey, 1, "teviSqrIntegral_8u32s64f_C1R", teviSqrIntegral_8u32s64f_C1R, result);
}

double under(const Image<Tev64f>& table, const TevRect& r) {
  return table.at(r.x + r.width, r.y + r.height) - table.at(r.x, r.y + r.height) - table.at(r.x + r.width, r.y) +
         table.at(r.x, r.y);
}

// The mean of the box around each pixel, as far as it lies inside the picture.
Image<Tev32f> averages(const Image<Tev8u>& grey, int side, Result& result) {
  Image<Tev32s> table({grey.width() + 1, grey.height() + 1});
  Image<Tev32f> mean(grey.size);
  result.timed(
      [&] { TEV_CHECK(teviIntegral_8u32s_C1R, grey.data(), grey.step(), table.data(), table.step(), grey.size, 0); });
  for (int y = 0; y < grey.height(); ++y)
    for (int x = 0; x < grey.width(); ++x) {
      const int left = std::max(0, x - side / 2), right = std::min(grey.width(), x + side / 2 + 1);
      const int top = std::max(0, y - side / 2), bottom = std::min(grey.height(), y + side / 2 + 1);
      // Sums of 32 bits may wrap in a large picture; the difference is right all the same.
      const auto cell = [&](int column, int row) { return static_cast<std::uint32_t>(table.at(column, row)); };
      const std::uint32_t sum = cell(right, bottom) - cell(left, bottom) - cell(right, top) + cell(left, top);
      mean.at(x, y) = static_cast<Tev32f>(static_cast<double>(sum) / ((right - left) * (bottom - top)));
    }
  return mean;
}

// The table as grey, with a line wherever it passes another one of `count` equal levels.
Picture withContours(const Image<Tev64f>& table, int count, bool deep) {
  if (count == 0) return view(table, deep);
  Image<Tev8u> shown = colour8(view(table));
  const auto [least, most] = std::minmax_element(table.elements.begin(), table.elements.end());
  const double low = *least, step = (*most - low) / count;
  if (!(step > 0)) return shown;
  const auto level = [&](int x, int y) { return static_cast<int>((table.at(x, y) - low) / step); };
  for (int y = 0; y + 1 < table.height(); ++y)
    for (int x = 0; x + 1 < table.width(); ++x)
      if (level(x, y) != level(x + 1, y) || level(x, y) != level(x, y + 1)) paintPoint(shown, x, y, yellow);
  return shown;
}

}  // namespace

void integral(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("integral", "integral", "Integral tables made visible, and averages by them",
                                     "tevcv integral photo.png --show tilted -o tilted.png");
  command.choice("--show", o->show,
                 {{"sum", Show::sum},
                  {"squares", Show::squares},
                  {"tilted", Show::tilted},
                  {"tilted-squares", Show::tiltedSquares},
                  {"average", Show::average}},
                 "A table, or the averages in boxes by the table of sums");
  command.choice("--type", o->type, {{"32s", Type::words}, {"32f", Type::floats}}, "Number type of the sums");
  command.option("--contours", o->contours, "Lines drawn at this many equal levels of a table; 0: none")
      .check(CLI::Range(0, 1000));
  command.option("--box", o->box, "Side of the box for averages, odd").check(CLI::Range(1, 9999));
  tuple(command, "--rect", o->rect, 4, "X,Y,W,H", "Rectangle whose sum goes to the table (default: the whole picture)");
  command.withTable().withDepth().eachPicture([o](const Picture& picture, Result& result) {
    if (o->box % 2 == 0) throw UserError("--box: an odd side is needed");
    const Image<Tev8u> grey = grey8(picture);
    const TevRect rect = o->rect.empty() ? TevRect{0, 0, grey.width(), grey.height()}
                                         : TevRect{o->rect[0], o->rect[1], o->rect[2], o->rect[3]};
    if (rect.x < 0 || rect.y < 0 || rect.width < 1 || rect.height < 1 || rect.x > grey.width() - rect.width ||
        rect.y > grey.height() - rect.height)
      throw UserError("--rect: does not lie inside of the picture");
    const Tables upright = tablesOf(grey, false, o->type, result);
    const double sum = under(upright.sums, rect), squares = under(upright.squares, rect),
                 area = static_cast<double>(rect.width) * rect.height, mean = sum / area;
    const auto rounded = [](double value) { return std::floor(value * 1e6 + 0.5) / 1e6; };
    result.table.columns = {"x", "y", "width", "height", "sum", "squares", "mean", "deviation"};
    result.table.add(rect.x, rect.y, rect.width, rect.height, sum, squares, rounded(mean),
                     rounded(std::sqrt(std::max(0.0, squares / area - mean * mean))));
    switch (o->show) {
      case Show::sum:
        result.picture = withContours(upright.sums, o->contours, result.deep);
        break;
      case Show::squares:
        result.picture = withContours(upright.squares, o->contours, result.deep);
        break;
      case Show::average:
        result.picture = view(averages(grey, o->box, result), result.deep, 0, 255);
        break;
      default: {
        const Tables tilted = tablesOf(grey, true, o->type, result);
        result.picture = withContours(o->show == Show::tilted ? tilted.sums : tilted.squares, o->contours, result.deep);
      }
    }
  });
}

}  // namespace cli
