#include "cli/separable.h"

#include <algorithm>

#include "cli/errors.h"
#include "tevcv.h"

namespace cli {
namespace {

// Pointers to the rows of an image, `reach` more above and below by the border's rule. `constant` is the row that
// stands outside for a constant border.
template <class T>
std::vector<const T*> borderedRows(const Image<T>& image, int reach, TevBorderType type, const Image<T>& constant) {
  std::vector<const T*> rows;
  for (int y = -reach; y < image.height() + reach; ++y) {
    const int from = borderRow(y, image.height(), type);
    rows.push_back(from < 0 ? constant.data() : image.row(from));
  }
  return rows;
}

template <class T>
std::vector<T*> plainRows(Image<T>& image) {
  std::vector<T*> rows;
  for (int y = 0; y < image.height(); ++y) rows.push_back(image.row(y));
  return rows;
}

Image<Tev32f> filterRows(const Image<Tev32f>& image, const std::vector<Tev32f>& kernel, const Border& border) {
  Image<Tev32f> result(image.size, image.channels);
  const std::vector<Tev32f*> rows = plainRows(result);
  const int taps = static_cast<int>(kernel.size());
  const auto outside = static_cast<Tev32f>(border.value);
  const Tev32f outsides[] = {outside, outside, outside};
  int size = 0;
  if (image.channels == 1) {
    TEV_CHECK(teviFilterRowBorderPipelineGetBufferSize_32f_C1R, image.size, taps, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFilterRowBorderPipeline_32f_C1R, image.data(), image.step(), const_cast<Tev32f**>(rows.data()),
              image.size, kernel.data(), taps, taps / 2, border.type, outside, buffer.data());
  } else {
    TEV_CHECK(teviFilterRowBorderPipelineGetBufferSize_32f_C3R, image.size, taps, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFilterRowBorderPipeline_32f_C3R, image.data(), image.step(), const_cast<Tev32f**>(rows.data()),
              image.size, kernel.data(), taps, taps / 2, border.type, outsides, buffer.data());
  }
  return result;
}

Image<Tev16s> sumRows(const Image<Tev8u>& image, const std::vector<Tev16s>& kernel, const Border& border) {
  Image<Tev16s> result(image.size, image.channels);
  const std::vector<Tev16s*> rows = plainRows(result);
  const int taps = static_cast<int>(kernel.size());
  const auto outside = static_cast<Tev8u>(border.value);
  const Tev8u outsides[] = {outside, outside, outside};
  int size = 0;
  if (image.channels == 1) {
    TEV_CHECK(teviFilterRowBorderPipelineGetBufferSize_8u16s_C1R, image.size, taps, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFilterRowBorderPipeline_8u16s_C1R, image.data(), image.step(), const_cast<Tev16s**>(rows.data()),
              image.size, kernel.data(), taps, taps / 2, border.type, outside, 1, buffer.data());
  } else {
    TEV_CHECK(teviFilterRowBorderPipelineGetBufferSize_8u16s_C3R, image.size, taps, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFilterRowBorderPipeline_8u16s_C3R, image.data(), image.step(), const_cast<Tev16s**>(rows.data()),
              image.size, kernel.data(), taps, taps / 2, border.type, outsides, 1, buffer.data());
  }
  return result;
}

}  // namespace

int borderRow(int y, int height, TevBorderType type) {
  if (y >= 0 && y < height) return y;
  const auto modulo = [](int a, int n) { return (a % n + n) % n; };
  switch (type) {
    case tevBorderConst:
      return -1;
    case tevBorderRepl:
      return std::clamp(y, 0, height - 1);
    case tevBorderWrap:
      return modulo(y, height);
    case tevBorderMirror: {
      if (height == 1) return 0;
      const int phase = modulo(y, 2 * height - 2);
      return phase < height ? phase : 2 * height - 2 - phase;
    }
    default: {
      const int phase = modulo(y, 2 * height);
      return phase < height ? phase : 2 * height - 1 - phase;
    }
  }
}

Image<Tev32f> separable(const Image<Tev32f>& image, const std::vector<Tev32f>& row, const std::vector<Tev32f>& column,
                        const Border& border) {
  const Image<Tev32f> between = filterRows(image, row, border);
  // What the row kernel makes of an endless row of the constant.
  const Image<Tev32f> constant = filterRows(
      Image<Tev32f>({image.width(), 1}, image.channels, static_cast<Tev32f>(border.value)), row, {tevBorderRepl, 0});
  const int taps = static_cast<int>(column.size());
  auto rows = borderedRows(between, taps / 2, border.type, constant);
  Image<Tev32f> result(image.size, image.channels);
  int size = 0;
  if (image.channels == 1) {
    TEV_CHECK(teviFilterColumnPipelineGetBufferSize_32f_C1R, image.size, taps, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFilterColumnPipeline_32f_C1R, rows.data(), result.data(), result.step(), image.size, column.data(),
              taps, buffer.data());
  } else {
    TEV_CHECK(teviFilterColumnPipelineGetBufferSize_32f_C3R, image.size, taps, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFilterColumnPipeline_32f_C3R, rows.data(), result.data(), result.step(), image.size, column.data(),
              taps, buffer.data());
  }
  return result;
}

Image<Tev8u> boxMean(const Image<Tev8u>& image, int side, const Border& border) {
  const std::vector<Tev16s> ones(static_cast<std::size_t>(side), 1);
  const Image<Tev16s> sums = sumRows(image, ones, border);
  const Image<Tev16s> constant =
      sumRows(Image<Tev8u>({image.width(), 1}, image.channels, static_cast<Tev8u>(border.value)), ones, {});
  auto rows = borderedRows(sums, side / 2, border.type, constant);
  Image<Tev8u> result(image.size, image.channels);
  int size = 0;
  if (image.channels == 1) {
    TEV_CHECK(teviFilterColumnPipelineGetBufferSize_16s8u_C1R, image.size, side, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFilterColumnPipeline_16s8u_C1R, rows.data(), result.data(), result.step(), image.size, ones.data(),
              side, side * side, buffer.data());
  } else {
    TEV_CHECK(teviFilterColumnPipelineGetBufferSize_16s8u_C3R, image.size, side, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFilterColumnPipeline_16s8u_C3R, rows.data(), result.data(), result.step(), image.size, ones.data(),
              side, side * side, buffer.data());
  }
  return result;
}

}  // namespace cli
