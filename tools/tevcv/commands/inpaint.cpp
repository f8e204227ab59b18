// Inpainting: damaged places are filled from their surroundings, from the rim inward.
#include <cctype>
#include <cmath>
#include <cstdint>

#include "cli/command.h"
#include "tevcore.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  std::string mask, text;
  bool scratch = false;
  int method = tevInpaintIsophote;
  float radius = 5;
};

// Letters of 5 x 7 cells, one byte a column, the lowest bit on top.
struct Letter {
  char name;
  Tev8u columns[5];
};
constexpr Letter letters[] = {{'A', {0x7E, 0x11, 0x11, 0x11, 0x7E}}, {'B', {0x7F, 0x49, 0x49, 0x49, 0x36}},
                              {'C', {0x3E, 0x41, 0x41, 0x41, 0x22}}, {'D', {0x7F, 0x41, 0x41, 0x22, 0x1C}},
                              {'E', {0x7F, 0x49, 0x49, 0x49, 0x41}}, {'F', {0x7F, 0x09, 0x09, 0x09, 0x01}},
                              {'G', {0x3E, 0x41, 0x49, 0x49, 0x7A}}, {'H', {0x7F, 0x08, 0x08, 0x08, 0x7F}},
                              {'I', {0x00, 0x41, 0x7F, 0x41, 0x00}}, {'J', {0x20, 0x40, 0x41, 0x3F, 0x01}},
                              {'K', {0x7F, 0x08, 0x14, 0x22, 0x41}}, {'L', {0x7F, 0x40, 0x40, 0x40, 0x40}},
                              {'M', {0x7F, 0x02, 0x0C, 0x02, 0x7F}}, {'N', {0x7F, 0x04, 0x08, 0x10, 0x7F}},
                              {'O', {0x3E, 0x41, 0x41, 0x41, 0x3E}}, {'P', {0x7F, 0x09, 0x09, 0x09, 0x06}},
                              {'Q', {0x3E, 0x41, 0x51, 0x21, 0x5E}}, {'R', {0x7F, 0x09, 0x19, 0x29, 0x46}},
                              {'S', {0x46, 0x49, 0x49, 0x49, 0x31}}, {'T', {0x01, 0x01, 0x7F, 0x01, 0x01}},
                              {'U', {0x3F, 0x40, 0x40, 0x40, 0x3F}}, {'V', {0x1F, 0x20, 0x40, 0x20, 0x1F}},
                              {'W', {0x3F, 0x40, 0x38, 0x40, 0x3F}}, {'X', {0x63, 0x14, 0x08, 0x14, 0x63}},
                              {'Y', {0x07, 0x08, 0x70, 0x08, 0x07}}, {'Z', {0x61, 0x51, 0x49, 0x45, 0x43}},
                              {'0', {0x3E, 0x51, 0x49, 0x45, 0x3E}}, {'1', {0x00, 0x42, 0x7F, 0x40, 0x00}},
                              {'2', {0x42, 0x61, 0x51, 0x49, 0x46}}, {'3', {0x21, 0x41, 0x45, 0x4B, 0x31}},
                              {'4', {0x18, 0x14, 0x12, 0x7F, 0x10}}, {'5', {0x27, 0x45, 0x45, 0x45, 0x39}},
                              {'6', {0x3C, 0x4A, 0x49, 0x49, 0x30}}, {'7', {0x01, 0x71, 0x09, 0x05, 0x03}},
                              {'8', {0x36, 0x49, 0x49, 0x49, 0x36}}, {'9', {0x06, 0x49, 0x49, 0x29, 0x1E}},
                              {' ', {0x00, 0x00, 0x00, 0x00, 0x00}}, {'.', {0x00, 0x60, 0x60, 0x00, 0x00}},
                              {'-', {0x08, 0x08, 0x08, 0x08, 0x08}}};

const Letter* letterOf(char given) {
  for (const Letter& letter : letters)
    if (letter.name == std::toupper(static_cast<unsigned char>(given))) return &letter;
  return nullptr;
}

void paintSquare(Image<Tev8u>& mask, int left, int top, int side) {
  for (int y = std::max(0, top); y < std::min(mask.height(), top + side); ++y)
    for (int x = std::max(0, left); x < std::min(mask.width(), left + side); ++x) mask.at(x, y) = 255;
}

// The text over and over, in rows across the picture.
void write(Image<Tev8u>& mask, const std::string& text) {
  const int cell = std::max(1, std::min(mask.width(), mask.height()) / 128);
  const int pitch = 14 * cell;
  for (int row = 0, top = 3 * cell; top < mask.height(); ++row, top += pitch) {
    std::size_t at = static_cast<std::size_t>(row) * 5 % text.size();
    for (int left = 2 * cell; left < mask.width(); left += 6 * cell, at = (at + 1) % text.size())
      for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 7; ++j)
          if (letterOf(text[at])->columns[i] >> j & 1) paintSquare(mask, left + i * cell, top + j * cell, cell);
  }
}

// Scratches from side to side, bent a little, and some specks.
void scratch(Image<Tev8u>& mask) {
  const int w = mask.width(), h = mask.height(), pen = std::max(1, std::min(w, h) / 100);
  const struct {
    int x0, y0, x1, y1, bend;  // hundredths of the picture
  } strokes[] = {{5, 10, 90, 95, 6},  {95, 5, 10, 80, -5}, {30, 0, 45, 100, 4}, {0, 55, 100, 40, -7},
                 {70, 0, 60, 100, 3}, {0, 25, 60, 12, 4},  {55, 85, 100, 70, 3}};
  for (const auto& s : strokes) {
    const int steps = 2 * std::max(w, h);
    for (int i = 0; i <= steps; ++i) {
      const auto at = [&](int from, int to, int bend, int extent) {  // of hundredths, bent most in the middle
        const std::int64_t bow = std::int64_t{4} * bend * i * (steps - i) / steps;
        const std::int64_t place = std::int64_t{from} * steps + std::int64_t{to - from} * i + bow;
        return static_cast<int>(place * extent / (std::int64_t{100} * steps));
      };
      const int x = at(s.x0, s.x1, s.bend, w), y = at(s.y0, s.y1, -s.bend, h);
      paintSquare(mask, x - pen / 2, y - pen / 2, pen);
    }
  }
  for (int i = 0; i < 12; ++i) paintSquare(mask, (i * 37 + 11) % 100 * w / 100, (i * 59 + 7) % 100 * h / 100, 3 * pen);
}

Image<Tev8u> repaired(const Image<Tev8u>& image, const Image<Tev8u>& mask, const Options& o, Result& result) {
  const TevSize roi = image.size;
  Image<Tev32f> distances(roi);
  Image<Tev8u> out(roi, image.channels);
  result.timed([&] {
    int size = 0, threads = 1;
    TEV_CHECK(teviFastMarchingGetBufferSize_8u32f_C1R, roi, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    // The order in which pixels are filled hangs on the last bits of their distances, and those on the team's size.
    tevGetNumThreads(&threads);
    tevSetNumThreads(1);
    const TevStatus marched = teviFastMarching_8u32f_C1R(mask.data(), mask.step(), distances.data(), distances.step(),
                                                         roi, o.radius, buffer.data());
    tevSetNumThreads(threads);
    check("teviFastMarching_8u32f_C1R", marched);
    const bool grey = image.channels == 1;
    TevInpaintState* state = nullptr;
    check("teviInpaintInitAlloc",
          (grey ? teviInpaintInitAlloc_8u_C1R : teviInpaintInitAlloc_8u_C3R)(
              &state, distances.data(), distances.step(), mask.data(), mask.step(), roi, o.radius, o.method));
    const TevStatus status = (grey ? teviInpaint_8u_C1R : teviInpaint_8u_C3R)(image.data(), image.step(), out.data(),
                                                                              out.step(), roi, state);
    (grey ? teviInpaintFree_8u_C1R : teviInpaintFree_8u_C3R)(state);
    check("teviInpaint_8u", status);
  });
  return out;
}

}  // namespace

void inpaint(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("inpaint", "distance", "Damaged places filled from their surroundings",
                                     "tevcv inpaint photo.png --text \"LOST AND FOUND\" -o repaired.png");
  command.app().add_option("--mask", o->mask, "Damaged is what is not black in this picture")->type_name("FILE");
  command.flag("--scratch", o->scratch, "Damage the picture by scratches first (so without --mask and --text)");
  command.app().add_option("--text", o->text, "Damage the picture by writing this all over it first");
  command.choice("--method", o->method, {{"gradient", tevInpaintGradient}, {"isophote", tevInpaintIsophote}},
                 "How known neighbours are weighed: by the distance's direction or along the picture's edges");
  command.option("--radius", o->radius, "Known pixels within this distance count").check(CLI::Range(1.0F, 100.0F));
  command.withTable().eachPicture([o](const Picture& picture, Result& result) {
    if (!o->mask.empty() + !o->text.empty() + o->scratch > 1)
      throw UserError("--mask: only one of --mask, --scratch and --text");
    const Image<Tev8u> image = any8(picture);
    Image<Tev8u> mask(image.size);
    if (!o->mask.empty()) {
      const Picture given = readPicture(o->mask);
      requireSameSize(picture, given);
      mask = grey8(given);
    } else if (!o->text.empty()) {
      for (const char letter : o->text)
        if (!letterOf(letter)) throw UserError("--text: has letters, digits, blanks, points and dashes alone");
      write(mask, o->text + "  ");
    } else {
      scratch(mask);
    }
    std::int64_t count = 0;
    for (const Tev8u value : mask.elements) count += value != 0;
    if (count == static_cast<std::int64_t>(mask.elements.size()))
      throw UserError(picture.name + ": nothing of the picture is left to fill it from");

    Image<Tev8u> damaged = image;
    for (std::size_t i = 0; i < mask.elements.size(); ++i)
      if (mask.elements[i])
        for (int c = 0; c < image.channels; ++c)
          damaged.elements[i * static_cast<std::size_t>(image.channels) + static_cast<std::size_t>(c)] = 255;
    const Image<Tev8u> out = count > 0 ? repaired(damaged, mask, *o, result) : damaged;

    // How near the fill comes to the picture given, over the damaged pixels.
    result.table.columns = {"channel", "damaged pixels", "mean error", "root mean square error"};
    const char* const names[] = {"red", "green", "blue"};
    for (int c = 1; c <= image.channels; ++c) {
      Tev64f sum = 0, root = 0;
      if (image.channels == 1) {
        TEV_CHECK(teviNormDiff_L1_8u_C1MR, image.data(), image.step(), out.data(), out.step(), mask.data(), mask.step(),
                  image.size, &sum);
        TEV_CHECK(teviNormDiff_L2_8u_C1MR, image.data(), image.step(), out.data(), out.step(), mask.data(), mask.step(),
                  image.size, &root);
      } else {
        TEV_CHECK(teviNormDiff_L1_8u_C3CMR, image.data(), image.step(), out.data(), out.step(), mask.data(),
                  mask.step(), image.size, c, &sum);
        TEV_CHECK(teviNormDiff_L2_8u_C3CMR, image.data(), image.step(), out.data(), out.step(), mask.data(),
                  mask.step(), image.size, c, &root);
      }
      const double pixels = count > 0 ? static_cast<double>(count) : 1;
      result.table.add(image.channels == 1 ? "grey" : names[c - 1], count, sum / pixels,
                       std::sqrt(root * root / pixels));
    }
    result.picture = out;
    result.others.emplace_back("damaged", damaged);
  });
}

}  // namespace cli
