// What inpainting is made of: the box of a mask, the list of its pixels, and gradients that look at known pixels alone.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "frame/arithmetic.h"
#include "frame/rows.h"
#include "tevcv_internal/distance.h"

using namespace tevcv;

namespace {

// The gradient along one axis, from a pixel and its neighbours before and behind it. On an edge there is but one
// difference: it stands as it is among twice the central ones, and twice among sums of two magnitudes.
enum class Gradient { signedDifference, magnitude };

template <Gradient kind>
Tev16s oneSided(int lower, int upper) {
  return static_cast<Tev16s>(kind == Gradient::magnitude ? 2 * std::abs(upper - lower) : upper - lower);
}

template <Gradient kind>
Tev16s alongAxis(int lower, int here, int upper, bool hasLower, bool hasUpper) {
  if (!hasLower || !hasUpper) return oneSided<kind>(hasLower ? lower : here, hasUpper ? upper : here);
  if (kind == Gradient::magnitude) return static_cast<Tev16s>(std::abs(upper - here) + std::abs(here - lower));
  return static_cast<Tev16s>(2 * (upper - lower));
}

template <Gradient kind, int channels>
void gradients(Rows<const Tev8u> src, Rows<const Tev8u> mask, Rows<Tev16s> dst, int width, int height) {
  for (int y = 0; y < height; ++y) {
    const bool above = y > 0, below = y < height - 1;
    const Tev8u *const row = src[y], *const rowAbove = src[above ? y - 1 : y], *const rowBelow = src[below ? y + 1 : y];
    const Tev8u* const selected = mask[y];
    Tev16s* const gradient = dst[y];
    for (int x = 0; x < width; ++x) {
      if (selected[x] == 0) continue;
      const int left = x > 0 ? channels : 0, right = x < width - 1 ? channels : 0;
      for (int i = x * channels; i < (x + 1) * channels; ++i) {
        gradient[2 * i] = alongAxis<kind>(row[i - left], row[i], row[i + right], left != 0, right != 0);
        gradient[2 * i + 1] = alongAxis<kind>(rowAbove[i], row[i], rowBelow[i], above, below);
      }
    }
  }
}

// Corrects one pixel's gradient along one axis, `stride` elements from neighbour to neighbour.
template <Gradient kind, int channels>
void leaveOutUnknown(const Tev8u* here, std::ptrdiff_t stride, bool lowerUnknown, bool upperUnknown, Tev16s* gradient) {
  if (!lowerUnknown && !upperUnknown) return;
  for (int c = 0; c < channels; ++c)
    gradient[2 * c] = oneSided<kind>(here[lowerUnknown ? c : c - stride], here[upperUnknown ? c : c + stride]);
}

// The pixels outside the image are unknown.
template <Gradient kind, int channels>
void correctPixel(Rows<const Tev8u> src, Rows<const Tev8u> unknown, Rows<Tev16s> dst, int width, int height, int x,
                  int y) {
  const Tev8u *const here = src[y] + x * channels, *const row = unknown[y];
  Tev16s* const gradient = dst[y] + 2 * x * channels;
  leaveOutUnknown<kind, channels>(here, channels, x == 0 || row[x - 1] != 0, x == width - 1 || row[x + 1] != 0,
                                  gradient);
  leaveOutUnknown<kind, channels>(here, src.step(), y == 0 || unknown[y - 1][x] != 0,
                                  y == height - 1 || unknown[y + 1][x] != 0, gradient + 1);
}

template <Gradient kind, int channels>
void correctAll(Rows<const Tev8u> src, Rows<const Tev8u> mask, Rows<const Tev8u> unknown, Rows<Tev16s> dst, int width,
                int height) {
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (mask[y][x] != 0) correctPixel<kind, channels>(src, unknown, dst, width, height, x, y);
}

template <Gradient kind, int channels>
void correctAround(Rows<const Tev8u> src, Rows<const Tev8u> unknown, Rows<Tev16s> dst, int width, int height, int x,
                   int y) {
  correctPixel<kind, channels>(src, unknown, dst, width, height, x, y);
  if (x > 0) correctPixel<kind, channels>(src, unknown, dst, width, height, x - 1, y);
  if (x < width - 1) correctPixel<kind, channels>(src, unknown, dst, width, height, x + 1, y);
  if (y > 0) correctPixel<kind, channels>(src, unknown, dst, width, height, x, y - 1);
  if (y < height - 1) correctPixel<kind, channels>(src, unknown, dst, width, height, x, y + 1);
}

// Toward zero, in the low 16 bits; distances that no mask gives may leave their range, and then 32 bits too.
Tev16s truncateTo16(Extended value) {
  if (!(std::fabs(value) < 0x1p31L)) return 0;
  return static_cast<Tev16s>(static_cast<std::uint16_t>(static_cast<Tev32s>(value)));
}

// The low bits of a listed distance that hold the pixel's index. A distance is a float, so that they are 0 before.
constexpr std::uint64_t indexBits = (std::uint64_t{1} << 28) - 1;

}  // namespace

void owncvNoZero_8u(const Tev8u* mask, int step, int width, int height, int* count, TevRect* bounds) {
  const auto m = rows(mask, step);
  int found = 0, left = width, right = -1, top = -1, bottom = -1;
  for (int y = 0; y < height; ++y) {
    const Tev8u* const row = m[y];
    int inRow = 0;
    for (int x = 0; x < width; ++x) inRow += row[x] != 0;
    if (inRow == 0) continue;
    found += inRow;
    if (top < 0) top = y;
    bottom = y;
    int x = 0;
    while (row[x] == 0) ++x;
    left = std::min(left, x);
    for (x = width - 1; row[x] == 0;) --x;
    right = std::max(right, x);
  }
  *count = found;
  *bounds = found == 0 ? TevRect{-1, -1, 0, 0} : TevRect{left, top, right - left + 1, bottom - top + 1};
}

int owncvFillNoZero_32f(const Tev32f* distance, int step, int width, int height, Tev64f* list, int count) {
  const auto d = rows(distance, step);
  int written = 0;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      if (!(d[y][x] > 0)) continue;
      if (written == count) return written;
      const auto index = static_cast<std::uint64_t>(y) * static_cast<unsigned>(width) + static_cast<unsigned>(x);
      const auto bits = std::bit_cast<std::uint64_t>(Tev64f{d[y][x]});
      list[written++] = std::bit_cast<Tev64f>((bits & ~indexBits) | (index & indexBits));
    }
  return written;
}

void owncvGradient_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev16s* dst, int dstStep,
                              int width, int height) {
  gradients<Gradient::signedDifference, 1>(rows(src, srcStep), rows(mask, maskStep), rows(dst, dstStep), width, height);
}

void owncvGradient_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev16s* dst, int dstStep,
                              int width, int height) {
  gradients<Gradient::signedDifference, 3>(rows(src, srcStep), rows(mask, maskStep), rows(dst, dstStep), width, height);
}

void owncvAbsGradient_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev16s* dst,
                                 int dstStep, int width, int height) {
  gradients<Gradient::magnitude, 1>(rows(src, srcStep), rows(mask, maskStep), rows(dst, dstStep), width, height);
}

void owncvAbsGradient_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, Tev16s* dst,
                                 int dstStep, int width, int height) {
  gradients<Gradient::magnitude, 3>(rows(src, srcStep), rows(mask, maskStep), rows(dst, dstStep), width, height);
}

void owncvGradient_32f16s_C1MR_Sfs(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, Tev16s* dst,
                                   int dstStep, int width, int height, int scaleFactor) {
  const auto s = rows(src, srcStep);
  const Extended scale = std::ldexp(Extended{1}, -scaleFactor);
  const auto alongFloats = [scale](Tev32f lower, Tev32f upper, bool edge) {
    return truncateTo16((Extended{upper} - lower) * (edge ? scale : scale / 2));
  };
  for (int y = 0; y < height; ++y) {
    const Tev32f *const row = s[y], *const above = s[std::max(y - 1, 0)], *const below = s[std::min(y + 1, height - 1)];
    const Tev8u* const selected = rows(mask, maskStep)[y];
    Tev16s* const gradient = rows(dst, dstStep)[y];
    for (int x = 0; x < width; ++x) {
      if (selected[x] == 0) continue;
      gradient[2 * x] = alongFloats(row[std::max(x - 1, 0)], row[std::min(x + 1, width - 1)], x == 0 || x == width - 1);
      gradient[2 * x + 1] = alongFloats(above[x], below[x], y == 0 || y == height - 1);
    }
  }
}

void owncvModGradient_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, const Tev8u* unknown,
                                 int unknownStep, Tev16s* dst, int dstStep, int width, int height) {
  correctAll<Gradient::signedDifference, 1>(rows(src, srcStep), rows(mask, maskStep), rows(unknown, unknownStep),
                                            rows(dst, dstStep), width, height);
}

void owncvModGradient_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, const Tev8u* unknown,
                                 int unknownStep, Tev16s* dst, int dstStep, int width, int height) {
  correctAll<Gradient::signedDifference, 3>(rows(src, srcStep), rows(mask, maskStep), rows(unknown, unknownStep),
                                            rows(dst, dstStep), width, height);
}

void owncvModAbsGradient_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                    const Tev8u* unknown, int unknownStep, Tev16s* dst, int dstStep, int width,
                                    int height) {
  correctAll<Gradient::magnitude, 1>(rows(src, srcStep), rows(mask, maskStep), rows(unknown, unknownStep),
                                     rows(dst, dstStep), width, height);
}

void owncvModAbsGradient_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                    const Tev8u* unknown, int unknownStep, Tev16s* dst, int dstStep, int width,
                                    int height) {
  correctAll<Gradient::magnitude, 3>(rows(src, srcStep), rows(mask, maskStep), rows(unknown, unknownStep),
                                     rows(dst, dstStep), width, height);
}

void owncvModGradientPoint_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* unknown, int unknownStep, Tev16s* dst,
                                      int dstStep, int width, int height, int x, int y) {
  correctAround<Gradient::signedDifference, 1>(rows(src, srcStep), rows(unknown, unknownStep), rows(dst, dstStep),
                                               width, height, x, y);
}

void owncvModGradientPoint_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* unknown, int unknownStep, Tev16s* dst,
                                      int dstStep, int width, int height, int x, int y) {
  correctAround<Gradient::signedDifference, 3>(rows(src, srcStep), rows(unknown, unknownStep), rows(dst, dstStep),
                                               width, height, x, y);
}

void owncvModAbsGradientPoint_8u16s_C1MR(const Tev8u* src, int srcStep, const Tev8u* unknown, int unknownStep,
                                         Tev16s* dst, int dstStep, int width, int height, int x, int y) {
  correctAround<Gradient::magnitude, 1>(rows(src, srcStep), rows(unknown, unknownStep), rows(dst, dstStep), width,
                                        height, x, y);
}

void owncvModAbsGradientPoint_8u16s_C3MR(const Tev8u* src, int srcStep, const Tev8u* unknown, int unknownStep,
                                         Tev16s* dst, int dstStep, int width, int height, int x, int y) {
  correctAround<Gradient::magnitude, 3>(rows(src, srcStep), rows(unknown, unknownStep), rows(dst, dstStep), width,
                                        height, x, y);
}
