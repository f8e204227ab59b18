// Gaussian smoothing of any odd length, its taps computed at each call, and derivative kernels of any odd length.
//
// The Gaussian runs rows first and columns second, both through a line of scratch that holds the image's line with its
// end pixels repeated. Two of its habits are older than this library and callers have images that hold them: the tap
// sum counts one tap more than there are, and the column pass computes as many outputs as the image is wide.
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "filtering/float_run.h"
#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/filtering.h"
#include "tevcv_internal/filtering.h"

using namespace tevcv;
using namespace tevcv::pipeline;

namespace {

TevStatus oddLength(int kernelSize) { return failUnless(kernelSize >= 3 && kernelSize % 2 == 1, tevStatusBadArg); }

// kernelSize taps and one more behind them, which takes part in the sum that the taps are divided by: they add up to a
// little less than 1. A sigma of 0 gives NaN throughout.
void gaussianTaps(Tev32f* taps, int kernelSize, Tev32f sigma) {
  const auto q = static_cast<Tev32f>((Extended{sigma} + Extended{sigma}) * Extended{sigma});
  Extended sum = 0;
  for (int i = 0; i <= kernelSize; ++i) {
    const auto distance = static_cast<Extended>(i - kernelSize / 2);
    taps[i] = static_cast<Tev32f>(std::exp(static_cast<Tev64f>(-(distance * distance) / Extended{q})));
    sum = Extended{static_cast<Tev32f>(sum)} + Extended{taps[i]};
  }
  for (int i = 0; i < kernelSize; ++i) taps[i] = static_cast<Tev32f>(Extended{taps[i]} / sum);
}

// dst[x] = sum of taps[j] * line[x + j * pitch], accumulated from 0 in extended precision and rounded once. The
// destination lies apart from the lines.
void correlate(const Tev32f* line, int pitch, Tev32f* dst, int count, const Tev32f* taps, int kernelSize) {
  FloatRun<0>{taps, kernelSize}(AlongRow<Tev32f>{line, pitch}, dst, count);
}

}  // namespace

void ownRowConvolution(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                       const Tev32f* taps, int kernelSize, Tev32f* scratch) {
  const int half = kernelSize / 2;
  for (int y = 0; y < height; ++y) {
    const Tev32f* const from = wholeElementRows(src, srcStep)[y];
    std::fill_n(scratch, half, from[0]);
    std::copy_n(from, width, scratch + half);
    std::fill_n(scratch + half + width, half, from[width - 1]);
    correlate(scratch, 1, wholeElementRows(dst, dstStep)[y], width, taps, kernelSize);
  }
}

void ownColConvolution(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, int width, int height,
                       const Tev32f* taps, int kernelSize, Tev32f* scratch) {
  const int half = kernelSize / 2;
  const auto from = wholeElementRows(src, srcStep);
  const auto to = wholeElementRows(dst, dstStep);
  for (int x = 0; x < width; ++x) {
    std::fill_n(scratch, half, from[0][x]);
    for (int y = 0; y < height; ++y) scratch[half + y] = from[y][x];
    std::fill_n(scratch + half + height, half, from[height - 1][x]);
    // As many outputs as the image is wide: rows below that get what the scratch holds, shifted down by half a kernel.
    Tev32f outputs[blockLength];
    for (int first = 0; first < height; first += blockLength) {
      const int filtered = std::clamp(width - first, 0, std::min(blockLength, height - first));
      correlate(scratch + first, 1, outputs, filtered, taps, kernelSize);
      for (int i = 0; i < std::min(blockLength, height - first); ++i)
        to[first + i][x] = i < filtered ? outputs[i] : scratch[first + i];
    }
  }
}

namespace {

// The column pass in place over all columns at once, row by row: for images whose rows lie apart. The scratch holds the
// whole image with its first and last row repeated.
void convolveColumnsTogether(Rows<Tev32f> image, TevSize roi, const Tev32f* taps, int kernelSize, Tev32f* scratch) {
  const int half = kernelSize / 2;
  const int pitch = roi.width;
  for (int i = 0; i < roi.height + 2 * half; ++i)
    std::copy_n(image[std::clamp(i - half, 0, roi.height - 1)], roi.width, scratch + std::ptrdiff_t{i} * pitch);
  for (int y = 0; y < roi.height; ++y)
    if (y < roi.width)
      correlate(scratch + std::ptrdiff_t{y} * pitch, pitch, image[y], roi.width, taps, kernelSize);
    else
      std::copy_n(scratch + std::ptrdiff_t{y} * pitch, roi.width, image[y]);
}

}  // namespace

TevStatus teviFilterGaussGetBufferSize_32f_C1R(TevSize roiSize, int kernelSize, int* pSize) {
  if (TevStatus s = firstFailure(notNull(pSize), region(roiSize), oddLength(kernelSize))) return s;
  // Taps and a copy of the image with a line of kernelSize pixels more each way. Wraps like the callers' own products.
  const unsigned width = (static_cast<unsigned>(roiSize.width) + 3U) & ~3U,
                 height = static_cast<unsigned>(roiSize.height);
  const unsigned taps = static_cast<unsigned>(kernelSize);
  *pSize = static_cast<int>(((width + taps) * (height + taps) + taps) * 4U + 64U);
  return tevStatusOk;
}

TevStatus teviFilterGaussBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                        int kernelSize, Tev32f sigma, TevBorderType /*borderType*/,
                                        Tev32f /*borderValue*/, Tev8u* buffer) {
  // Steps in bytes are held against the width in elements: a step of a quarter of a row passes, and callers use that to
  // filter overlapping rows.
  if (TevStatus s = firstFailure(notNull(src, dst, buffer), region(roiSize),
                                 failUnless(srcStep >= roiSize.width && dstStep >= roiSize.width, tevStatusBadStep),
                                 oddLength(kernelSize)))
    return s;
  Tev32f* const taps = reinterpret_cast<Tev32f*>(buffer);
  Tev32f* const scratch = taps + kernelSize;
  gaussianTaps(taps, kernelSize, sigma);
  ownRowConvolution(src, srcStep, dst, dstStep, roiSize.width, roiSize.height, taps, kernelSize, scratch);
  const auto image = wholeElementRows(dst, dstStep);
  if (image.step() >= static_cast<std::ptrdiff_t>(roiSize.width) * std::ptrdiff_t{sizeof(Tev32f)})
    convolveColumnsTogether(image, roiSize, taps, kernelSize, scratch);
  else
    ownColConvolution(dst, dstStep, dst, dstStep, roiSize.width, roiSize.height, taps, kernelSize, scratch);
  return tevStatusOk;
}

namespace {

template <class T>
T negated(T value) {
  if constexpr (std::is_integral_v<T>)
    return wrapSub(T{0}, value);
  else
    return -value;
}

template <class T>
T sum(T a, T b) {
  if constexpr (std::is_integral_v<T>)
    return wrapAdd(a, b);
  else
    return a + b;
}

// The coefficients of (1 + z)^(n - 1 - order) * (1 - z)^order, one factor at a time from the array's end.
template <class T>
TevStatus sobelKernel(T* kernel, int n, int order, int sign) {
  if (TevStatus s =
          firstFailure(notNull(kernel), failUnless(n >= 1 && n % 2 == 1 && order >= 0 && order < n, tevStatusBadSize)))
    return s;
  std::fill_n(kernel, n - 1, T{0});
  kernel[n - 1] = T{1};
  const int smoothings = n - order - 1;
  for (int i = 1; i < n; ++i)
    for (int j = n - i - 1; j <= n - 2; ++j)
      kernel[j] = sum(kernel[j], i <= smoothings ? kernel[j + 1] : negated(kernel[j + 1]));
  if (sign < 0)
    for (int j = 0; j < n; ++j) kernel[j] = negated(kernel[j]);
  return tevStatusOk;
}

}  // namespace

TevStatus teviGenSobelKernel_16s(Tev16s* kernel, int kernelSize, int derivativeOrder, int sign) {
  return sobelKernel(kernel, kernelSize, derivativeOrder, sign);
}

TevStatus teviGenSobelKernel_32f(Tev32f* kernel, int kernelSize, int derivativeOrder, int sign) {
  return sobelKernel(kernel, kernelSize, derivativeOrder, sign);
}
