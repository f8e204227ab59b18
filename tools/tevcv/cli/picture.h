// Picture files: PNG and JPEG in, PNG and JPEG out, and what commands make of their pixels.
#pragma once

#include <filesystem>
#include <string>

#include "cli/image.h"

namespace cli {

// A picture as a file holds it: grey or red-green-blue, 8 or 16 bits. One of the two images is empty.
struct Picture {
  Image<Tev8u> bytes;
  Image<Tev16u> words;
  std::string name;  // the file's name, for messages

  Picture() = default;
  Picture(Image<Tev8u> image) : bytes(std::move(image)) {}
  Picture(Image<Tev16u> image) : words(std::move(image)) {}

  bool deep() const { return !words.empty(); }  // 16 bits
  TevSize size() const { return deep() ? words.size : bytes.size; }
  int channels() const { return deep() ? words.channels : bytes.channels; }
};

// Reads a PNG or JPEG file, told apart by their first bytes. Alpha is laid over black, palettes are looked up, fewer
// than 8 bits are spread. Throws UserError with the file's name.
Picture readPicture(const std::filesystem::path& file);

// Writes by the ending of the name: .png (8 or 16 bits), .jpg or .jpeg (8 bits, quality 92). The file appears whole or
// not at all. Throws UserError.
void writePicture(const std::filesystem::path& file, const Picture& picture);

// Whether `file` ends in .png, .jpg or .jpeg, in any case.
bool isPictureName(const std::filesystem::path& file);

// Writes `text` to a file that appears whole or not at all; "-" is standard output.
void writeText(const std::filesystem::path& file, const std::string& text);

// The pixels in the form that a command works on. Colour becomes grey by weights 299, 587 and 114 of 1000, rounded;
// grey becomes three equal channels; 16 bits become 8 by their upper byte, 8 become 16 times 257.
Image<Tev8u> grey8(const Picture& picture);
Image<Tev8u> colour8(const Picture& picture);
Image<Tev8u> any8(const Picture& picture);  // the channels that it has
Image<Tev16u> grey16(const Picture& picture);
// Grey from 0 to 255, in floats; a 16-bit picture keeps its fractions (word / 257).
Image<Tev32f> greyFloat(const Picture& picture);

// Numbers made visible: `low` becomes black, `high` white, in between linearly; NaN black. With low == high the image's
// own extent is taken. `deep` gives 16 bits.
template <class T>
Picture view(const Image<T>& image, bool deep = false, double low = 0, double high = 0);
extern template Picture view(const Image<Tev8u>&, bool, double, double);
extern template Picture view(const Image<Tev16u>&, bool, double, double);
extern template Picture view(const Image<Tev16s>&, bool, double, double);
extern template Picture view(const Image<Tev32s>&, bool, double, double);
extern template Picture view(const Image<Tev32f>&, bool, double, double);
extern template Picture view(const Image<Tev64f>&, bool, double, double);

// Each label its own colour, 0 black, -1 (a border) white.
Image<Tev8u> viewLabels(const Image<Tev32s>& labels);

// Throws UserError unless both have one size.
void requireSameSize(const Picture& a, const Picture& b);

// A number that tells pictures of different pixels apart (FNV-1a of size, depth and pixels), as 16 hexadecimal digits.
std::string checksum(const Picture& picture);

}  // namespace cli
