#include "cli/picture.h"

#include <png.h>
#include <stdio.h>  // before jpeglib.h, which needs FILE

#include <jpeglib.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

#include "cli/errors.h"

namespace cli {
namespace {

constexpr std::uint64_t mostPixels = std::uint64_t{1} << 28;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string lowerEnding(const std::filesystem::path& file) {
  std::string ending = file.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  return ending;
}

void requirePixels(std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) throw UserError("the picture is empty");
  if (width > mostPixels || height > mostPixels || width * height > mostPixels)
    throw UserError("the picture has more than 2^28 pixels");
}

// libpng and libjpeg leave through longjmp on an error. Nothing with a destructor may be made between setjmp and the
// library's last call, so images are sized and rows listed by the callers of these steps.

struct PngReader {
  png_structp png = nullptr;
  png_infop info = nullptr;
  char message[200] = "";

  PngReader() {
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, fail, [](png_structp, png_const_charp) {});
    if (png) info = png_create_info_struct(png);
    if (!info) throw std::bad_alloc();
  }
  ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }

  static void fail(png_structp png, png_const_charp text) {
    auto* const self = static_cast<PngReader*>(png_get_error_ptr(png));
    std::snprintf(self->message, sizeof self->message, "%s", text);
    std::longjmp(png_jmpbuf(png), 1);
  }

  bool readHeader(std::FILE* file) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_init_io(png, file);
    png_set_user_limits(png, 1 << 28, 1 << 28);
    png_read_info(png, info);
    const int depth = png_get_bit_depth(png, info), colour = png_get_color_type(png, info);
    if (colour == PNG_COLOR_TYPE_PALETTE || depth < 8) png_set_expand(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS)) png_set_tRNS_to_alpha(png);
    if (depth == 16) png_set_swap(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    return true;
  }
  bool readRows(png_bytepp rows) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_read_image(png, rows);
    png_read_end(png, nullptr);
    return true;
  }
};

// Lays alpha over black: a pixel times its alpha, rounded.
template <class T>
Image<T> withoutAlpha(const Image<T>& image) {
  if (image.channels % 2 == 1) return image;
  constexpr std::uint64_t one = std::numeric_limits<T>::max();
  const int kept = image.channels - 1;
  Image<T> result(image.size, kept);
  for (std::size_t i = 0, o = 0; i < image.elements.size(); i += static_cast<std::size_t>(image.channels))
    for (int c = 0; c < kept; ++c)
      result.elements[o++] = static_cast<T>((image.elements[i + static_cast<std::size_t>(c)] *
                                                 std::uint64_t{image.elements[i + static_cast<std::size_t>(kept)]} +
                                             one / 2) /
                                            one);
  return result;
}

template <class T>
Image<T> pngRows(PngReader& reader, TevSize size, int channels) {
  Image<T> image(size, channels);
  std::vector<png_bytep> rows(static_cast<std::size_t>(size.height));
  for (int y = 0; y < size.height; ++y) rows[static_cast<std::size_t>(y)] = reinterpret_cast<png_bytep>(image.row(y));
  if (!reader.readRows(rows.data())) throw UserError(std::string("not a whole PNG picture: ") + reader.message);
  return withoutAlpha(image);
}

Picture readPng(std::FILE* file) {
  PngReader reader;
  if (!reader.readHeader(file)) throw UserError(std::string("not a PNG picture: ") + reader.message);
  const auto width = png_get_image_width(reader.png, reader.info),
             height = png_get_image_height(reader.png, reader.info);
  requirePixels(width, height);
  const TevSize size = {static_cast<int>(width), static_cast<int>(height)};
  const int channels = png_get_channels(reader.png, reader.info);
  if (png_get_bit_depth(reader.png, reader.info) == 16) return pngRows<Tev16u>(reader, size, channels);
  return pngRows<Tev8u>(reader, size, channels);
}

struct JpegError {
  jpeg_error_mgr manager;  // first, so that libjpeg's pointer to it is one to this
  std::jmp_buf jump;
  char message[JMSG_LENGTH_MAX] = "";

  static void fail(j_common_ptr common) {
    auto* const self = reinterpret_cast<JpegError*>(common->err);
    self->manager.format_message(common, self->message);
    std::longjmp(self->jump, 1);
  }
  jpeg_error_mgr* prepare() {
    jpeg_error_mgr* const made = jpeg_std_error(&manager);
    made->error_exit = fail;
    made->output_message = [](j_common_ptr) {};
    return made;
  }
};

struct JpegReader {
  JpegError error;
  jpeg_decompress_struct jpeg{};
  bool readHeader(std::FILE* file) {
    jpeg.err = error.prepare();
    if (setjmp(error.jump)) return false;
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file);
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = jpeg.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg.dct_method = JDCT_ISLOW;
    jpeg_calc_output_dimensions(&jpeg);
    return true;
  }
  bool readRows(JSAMPARRAY rows) {
    if (setjmp(error.jump)) return false;
    jpeg_start_decompress(&jpeg);
    while (jpeg.output_scanline < jpeg.output_height)
      jpeg_read_scanlines(&jpeg, rows + jpeg.output_scanline, jpeg.output_height - jpeg.output_scanline);
    jpeg_finish_decompress(&jpeg);
    return jpeg.err->num_warnings == 0;  // a file that ends early is filled with grey and a warning
  }
  ~JpegReader() { jpeg_destroy_decompress(&jpeg); }
};

Picture readJpeg(std::FILE* file) {
  JpegReader reader;
  if (!reader.readHeader(file)) throw UserError(std::string("not a JPEG picture: ") + reader.error.message);
  requirePixels(reader.jpeg.output_width, reader.jpeg.output_height);
  Image<Tev8u> image({static_cast<int>(reader.jpeg.output_width), static_cast<int>(reader.jpeg.output_height)},
                     reader.jpeg.out_color_space == JCS_GRAYSCALE ? 1 : 3);
  std::vector<JSAMPROW> rows(static_cast<std::size_t>(image.height()));
  for (int y = 0; y < image.height(); ++y) rows[static_cast<std::size_t>(y)] = image.row(y);
  if (!reader.readRows(rows.data()))
    throw UserError(std::string("not a whole JPEG picture") + (reader.error.message[0] ? ": " : "") +
                    reader.error.message);
  return image;
}

// A file under a passing name beside the wanted one; commit() gives it its name, everything else removes it.
class PendingFile {
 public:
  explicit PendingFile(const std::filesystem::path& target)
      : target_(target), path_(target.string() + ".part" + std::to_string(getpid())) {
    file_.reset(std::fopen(path_.c_str(), "wb"));
    if (!file_) throw UserError(target_.string() + ": cannot be written: " + std::strerror(errno));
  }
  ~PendingFile() {
    file_.reset();
    if (!committed_) std::remove(path_.c_str());
  }
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  std::FILE* get() { return file_.get(); }
  void commit() {
    const bool written = !std::ferror(file_.get()) && std::fflush(file_.get()) == 0;
    if (!written || std::fclose(file_.release()) != 0 || std::rename(path_.c_str(), target_.c_str()) != 0)
      throw UserError(target_.string() + ": cannot be written: " + std::strerror(errno));
    committed_ = true;
  }

 private:
  std::filesystem::path target_;
  std::string path_;
  File file_;
  bool committed_ = false;
};

bool encodePng(std::FILE* file, const Picture& picture, png_bytepp rows) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!info) return false;
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.size().width),
               static_cast<png_uint_32>(picture.size().height), picture.deep() ? 16 : 8,
               picture.channels() == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  if (picture.deep()) png_set_swap(png);
  png_write_image(png, rows);
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return true;
}

bool encodeJpeg(std::FILE* file, const Picture& picture, JSAMPARRAY rows) {
  JpegError error;
  jpeg_compress_struct jpeg{};
  jpeg.err = error.prepare();
  if (setjmp(error.jump)) {
    jpeg_destroy_compress(&jpeg);
    return false;
  }
  jpeg_create_compress(&jpeg);
  jpeg_stdio_dest(&jpeg, file);
  jpeg.image_width = static_cast<JDIMENSION>(picture.size().width);
  jpeg.image_height = static_cast<JDIMENSION>(picture.size().height);
  jpeg.input_components = picture.channels();
  jpeg.in_color_space = picture.channels() == 3 ? JCS_RGB : JCS_GRAYSCALE;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, 92, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  while (jpeg.next_scanline < jpeg.image_height)
    jpeg_write_scanlines(&jpeg, rows + jpeg.next_scanline, jpeg.image_height - jpeg.next_scanline);
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  return true;
}

int luma(int red, int green, int blue) { return (299 * red + 587 * green + 114 * blue + 500) / 1000; }

template <class T>
Image<T> toGrey(const Image<T>& image) {
  if (image.channels == 1) return image;
  Image<T> result(image.size);
  const T* pixel = image.data();
  for (T& value : result.elements) {
    value = static_cast<T>(luma(pixel[0], pixel[1], pixel[2]));
    pixel += 3;
  }
  return result;
}

Image<Tev8u> upperBytes(const Image<Tev16u>& image) {
  Image<Tev8u> result(image.size, image.channels);
  std::transform(image.elements.begin(), image.elements.end(), result.elements.begin(),
                 [](Tev16u value) { return static_cast<Tev8u>(value >> 8); });
  return result;
}

}  // namespace

bool isPictureName(const std::filesystem::path& file) {
  const std::string ending = lowerEnding(file);
  return ending == ".png" || ending == ".jpg" || ending == ".jpeg";
}

Picture readPicture(const std::filesystem::path& path) {
  try {
    std::error_code code;
    if (std::filesystem::is_directory(path, code)) throw UserError("is a folder");
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file) throw UserError(errno == ENOENT ? "no such file" : std::strerror(errno));
    unsigned char start[8] = {};
    const std::size_t got = std::fread(start, 1, sizeof start, file.get());
    std::rewind(file.get());
    Picture picture;
    if (got == 8 && png_sig_cmp(start, 0, 8) == 0)
      picture = readPng(file.get());
    else if (got >= 3 && start[0] == 0xFF && start[1] == 0xD8 && start[2] == 0xFF)
      picture = readJpeg(file.get());
    else
      throw UserError("neither a PNG nor a JPEG picture");
    picture.name = path.string();
    return picture;
  } catch (const UserError& error) {
    throw UserError(path.string() + ": " + error.what());
  }
}

void writePicture(const std::filesystem::path& path, const Picture& picture) {
  const std::string ending = lowerEnding(path);
  if (!isPictureName(path)) throw UserError(path.string() + ": a picture's name ends in .png, .jpg or .jpeg");
  if (ending != ".png" && picture.deep()) return writePicture(path, Picture(upperBytes(picture.words)));
  std::vector<png_bytep> rows(static_cast<std::size_t>(picture.size().height));
  const std::size_t step = static_cast<std::size_t>(picture.deep() ? picture.words.step() : picture.bytes.step());
  auto* const first = const_cast<png_bytep>(
      picture.deep() ? reinterpret_cast<const unsigned char*>(picture.words.data()) : picture.bytes.data());
  for (std::size_t y = 0; y < rows.size(); ++y) rows[y] = first + y * step;
  PendingFile file(path);
  if (!(ending == ".png" ? encodePng : encodeJpeg)(file.get(), picture, rows.data()))
    throw UserError(path.string() + ": cannot be written");
  file.commit();
}

void writeText(const std::filesystem::path& path, const std::string& text) {
  if (path == "-") {
    std::fwrite(text.data(), 1, text.size(), stdout);
    return;
  }
  PendingFile file(path);
  std::fwrite(text.data(), 1, text.size(), file.get());
  file.commit();
}

Image<Tev8u> any8(const Picture& picture) { return picture.deep() ? upperBytes(picture.words) : picture.bytes; }

Image<Tev8u> grey8(const Picture& picture) {
  return picture.deep() ? upperBytes(toGrey(picture.words)) : toGrey(picture.bytes);
}

Image<Tev8u> colour8(const Picture& picture) {
  Image<Tev8u> image = any8(picture);
  if (image.channels == 3) return image;
  Image<Tev8u> result(image.size, 3);
  for (std::size_t i = 0; i < image.elements.size(); ++i)
    result.elements[3 * i] = result.elements[3 * i + 1] = result.elements[3 * i + 2] = image.elements[i];
  return result;
}

Image<Tev16u> grey16(const Picture& picture) {
  if (picture.deep()) return toGrey(picture.words);
  const Image<Tev8u> bytes = toGrey(picture.bytes);
  Image<Tev16u> result(bytes.size);
  std::transform(bytes.elements.begin(), bytes.elements.end(), result.elements.begin(),
                 [](Tev8u value) { return static_cast<Tev16u>(value * 257); });
  return result;
}

Image<Tev32f> greyFloat(const Picture& picture) {
  Image<Tev32f> result(picture.size());
  if (picture.deep()) {
    const Image<Tev16u> words = toGrey(picture.words);
    std::transform(words.elements.begin(), words.elements.end(), result.elements.begin(),
                   [](Tev16u value) { return static_cast<Tev32f>(value) / 257.0F; });
  } else {
    const Image<Tev8u> bytes = toGrey(picture.bytes);
    std::copy(bytes.elements.begin(), bytes.elements.end(), result.elements.begin());
  }
  return result;
}

template <class T>
Picture view(const Image<T>& image, bool deep, double low, double high) {
  if (low == high) {
    low = std::numeric_limits<double>::infinity(), high = -low;
    for (const T value : image.elements) {
      const auto number = static_cast<double>(value);
      if (!std::isfinite(number)) continue;
      low = std::min(low, number);
      high = std::max(high, number);
    }
    if (!(low < high)) low = std::isfinite(low) ? low - 1 : 0, high = low + 2;  // one value throughout: middle grey
  }
  const double white = deep ? 65535 : 255, scale = white / (high - low);
  const auto shade = [&](T value) {
    const double number = (static_cast<double>(value) - low) * scale;
    return number > 0 ? std::floor(std::min(number, white) + 0.5) : 0.0;  // NaN falls to 0
  };
  if (deep) {
    Image<Tev16u> result(image.size, image.channels);
    std::transform(image.elements.begin(), image.elements.end(), result.elements.begin(),
                   [&](T value) { return static_cast<Tev16u>(shade(value)); });
    return result;
  }
  Image<Tev8u> result(image.size, image.channels);
  std::transform(image.elements.begin(), image.elements.end(), result.elements.begin(),
                 [&](T value) { return static_cast<Tev8u>(shade(value)); });
  return result;
}
template Picture view(const Image<Tev8u>&, bool, double, double);
template Picture view(const Image<Tev16u>&, bool, double, double);
template Picture view(const Image<Tev16s>&, bool, double, double);
template Picture view(const Image<Tev32s>&, bool, double, double);
template Picture view(const Image<Tev32f>&, bool, double, double);
template Picture view(const Image<Tev64f>&, bool, double, double);

Image<Tev8u> viewLabels(const Image<Tev32s>& labels) {
  Image<Tev8u> result(labels.size, 3);
  for (std::size_t i = 0; i < labels.elements.size(); ++i) {
    const Tev32s label = labels.elements[i];
    std::uint32_t hash = static_cast<std::uint32_t>(label) * 0x9E3779B1U;
    hash ^= hash >> 15;
    for (std::size_t c = 0; c < 3; ++c) {
      const auto shade = static_cast<Tev8u>(64 + (hash >> (8 * c)) % 192);
      result.elements[3 * i + c] = label == 0 ? Tev8u{0} : label < 0 ? Tev8u{255} : shade;
    }
  }
  return result;
}

void requireSameSize(const Picture& a, const Picture& b) {
  if (a.size() != b.size())
    throw UserError(b.name + ": is " + std::to_string(b.size().width) + " x " + std::to_string(b.size().height) +
                    ", but " + a.name + " is " + std::to_string(a.size().width) + " x " +
                    std::to_string(a.size().height));
}

std::string checksum(const Picture& picture) {
  std::uint64_t hash = 0xCBF29CE484222325ULL;
  const auto add = [&](std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) hash = (hash ^ (value >> (8 * i) & 255U)) * 0x100000001B3ULL;
  };
  add(static_cast<std::uint32_t>(picture.size().width), 4);
  add(static_cast<std::uint32_t>(picture.size().height), 4);
  add(static_cast<std::uint32_t>(picture.channels()), 1);
  add(picture.deep() ? 16 : 8, 1);
  for (const Tev8u value : picture.bytes.elements) add(value, 1);
  for (const Tev16u value : picture.words.elements) add(value, 2);
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
  return text;
}

}  // namespace cli
