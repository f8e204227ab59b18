// Canny edges from derivative images: non-maximum suppression of the gradient's magnitude along one of four directions,
// then hysteresis with two thresholds.
//
// The image streams through four rotating rows of magnitudes, |dx| + |dy| or 0 where that does not pass the low
// threshold. Each row is worked in three steps that run in vectors: the direction of each gradient, the comparison with
// the two neighbours in that direction, and the search for strong pixels, from which the edges then grow.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "features/nonzero.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using namespace tevcv;

namespace {

// Stack entries are pairs of 16-bit words where both coordinates fit them.
constexpr bool fitsShortEntries(TevSize roi) { return roi.width < 65533 && roi.height < 65533; }

template <class T>
struct MagnitudeOf;
template <>
struct MagnitudeOf<Tev16s> {
  using type = Tev32s;
};
template <>
struct MagnitudeOf<Tev32f> {
  using type = Tev32f;
};
template <class T>
using Magnitude = typename MagnitudeOf<T>::type;

// The low threshold in the magnitude's type. An integer one loses its fraction; beyond the largest magnitude of 16-bit
// derivatives it makes no difference any more.
Tev32s lowLevel(Tev32s, Tev32f threshold) { return static_cast<Tev32s>(std::fmin(threshold, 65536.0F)); }
Tev32f lowLevel(Tev32f, Tev32f threshold) { return threshold; }

void magnitudeRow(const Tev16s* dx, const Tev16s* dy, Tev32s* magnitude, int width, Tev32s low) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    const Tev32s a = dx[x], b = dy[x], sum = (a < 0 ? -a : a) + (b < 0 ? -b : b);
    magnitude[x] = sum <= low ? 0 : sum;
  }
}

// One sum of two floats, rounded once.
void magnitudeRow(const Tev32f* dx, const Tev32f* dy, Tev32f* magnitude, int width, Tev32f low) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    const Tev32f sum = std::fabs(dx[x]) + std::fabs(dy[x]);
    magnitude[x] = sum <= low ? 0.0F : sum;
  }
}

// Where the gradient points, to the nearest eighth of the circle. Rows run downward.
enum Direction : Tev8u {
  alongRow,     // towards left and right
  alongColumn,  // up and down
  falling,      // above left and below right: dx and dy have one sign
  rising        // above right and below left
};

constexpr Tev8u direction(bool straight, bool steep, bool signsDiffer) {
  const int axis = alongRow + steep, diagonal = falling + signsDiffer;
  return static_cast<Tev8u>(straight ? axis : diagonal);
}

// A direction is straight where |dy| > (1 + sqrt 2) |dx|, the tangent of 67.5 degrees, or |dy| < (sqrt 2 - 1) |dx|; as
// the factors are each other's inverse, both read larger > (1 + sqrt 2) smaller. The definition multiplies in extended
// precision by 2.414213562373095 and 0.41421356237309503, as double constants.
//
// With integers up to 2^15 the products stay further from every integer than these constants are from the irrational
// factors, so that the comparison may be squared: larger - smaller > sqrt 2 smaller.
void directionRow(const Tev16s* dx, const Tev16s* dy, Tev8u* directions, int width) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    const Tev32s p = dx[x], q = dy[x], a = p < 0 ? -p : p, b = q < 0 ? -q : q;
    const Tev32s smaller = a < b ? a : b, difference = (a < b ? b : a) - smaller;
    directions[x] = direction(difference * difference - smaller * smaller > smaller * smaller, b > a, (p ^ q) < 0);
  }
}

// No quotient of two floats comes nearer to 1 + sqrt 2, or its inverse, than 2^-51 of it: double, whose product is off
// by 2^-53 at most, decides as extended precision does. The two never compare equal but for two zeros or infinities,
// which are diagonal either way.
void directionRow(const Tev32f* dx, const Tev32f* dy, Tev8u* directions, int width) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    const Tev32f a = std::fabs(dx[x]), b = std::fabs(dy[x]);
    const Tev32f smaller = a < b ? a : b, larger = a < b ? b : a;
    const bool straight = Tev64f{larger} > 2.414213562373095 * Tev64f{smaller};
    directions[x] = direction(straight, b > a, (std::bit_cast<Tev32s>(dx[x]) ^ std::bit_cast<Tev32s>(dy[x])) < 0);
  }
}

// A row is worked in blocks, and most blocks of most pictures hold nothing above the low threshold.
constexpr int block = 64;

template <class M>
bool anyNonZero(const M* magnitudes, int length) {
  Tev32s bits = 0;
  for (int x = 0; x < length; ++x) bits |= std::bit_cast<Tev32s>(magnitudes[x]);
  return bits != 0;
}

// Turns the row's directions into candidates, 128 at a local maximum and 0 elsewhere, and marks the strong ones in
// `dst`. A plateau keeps its first pixel from the top or left in the straight directions and none in the diagonal ones:
// callers have edge maps stored that were thinned by this asymmetric rule. No magnitude is negative, so that a pixel
// below the low threshold, whose magnitude is 0, is above no neighbour.
template <class M>
void thinRow(const M* above, const M* row, const M* below, Tev8u* map, Tev8u* dst, int width, Tev32f high) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    const Tev32s d = map[x];
    const M m = row[x];
    const M left = row[x - 1], right = row[x + 1], top = above[x], bottom = below[x];
    const M topLeft = above[x - 1], topRight = above[x + 1], bottomLeft = below[x - 1], bottomRight = below[x + 1];
    const M straightMinus = d == alongRow ? left : top, straightPlus = d == alongRow ? right : bottom;
    const M diagonalMinus = d == falling ? topLeft : topRight, diagonalPlus = d == falling ? bottomRight : bottomLeft;
    const M minus = d <= alongColumn ? straightMinus : diagonalMinus;
    const M plus = d <= alongColumn ? straightPlus : diagonalPlus;
    const Tev32s higher = m > plus ? -1 : 0, equal = m == plus ? -1 : 0, straight = d <= alongColumn ? -1 : 0;
    const Tev32s maximum = (m > minus ? -1 : 0) & (higher | (equal & straight));
    const Tev32s strong = maximum & (static_cast<Tev32f>(m) > high ? -1 : 0);
    map[x] = static_cast<Tev8u>(maximum & 128);
    dst[x] = static_cast<Tev8u>(strong);
  }
}

// The edges grow from the strong pixels over all candidates that touch them. The map's border of zeros keeps them
// inside the image.
template <class Word>
void grow(const Tev8u* edgeMap, Word* stack, int words, int width, Tev8u* dst, int dstStep) {
  constexpr TevPoint neighbours[] = {{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {1, 0}, {-1, 1}, {0, 1}, {1, 1}};
  const auto map = Rows<const Tev8u>(edgeMap, std::ptrdiff_t{width} + 2).from(1);
  const auto edges = rows(dst, dstStep);
  std::ptrdiff_t top = words;
  while (top > 0) {
    const std::ptrdiff_t x = stack[--top], y = stack[--top];
    // Few neighbours are candidates: they are found without a branch, and only they are visited.
    unsigned candidates = 0;
    for (unsigned i = 0; i < 8; ++i)
      candidates |= static_cast<unsigned>(map[y + neighbours[i].y][x + neighbours[i].x + 1] >> 7) << i;
    for (; candidates != 0; candidates &= candidates - 1) {
      const TevPoint n = neighbours[std::countr_zero(candidates)];
      if (edges[y + n.y][x + n.x] != 0) continue;
      stack[top++] = static_cast<Word>(y + n.y);
      stack[top++] = static_cast<Word>(x + n.x);
      edges[y + n.y][x + n.x] = 255;
    }
  }
}

Tev8u* alignedTo32(Tev8u* p) { return p + (-reinterpret_cast<std::uintptr_t>(p) & 31); }

// What lies in the caller's buffer: the map of candidates with its border, four rows of magnitudes with a zero on
// either side, the stack.
template <class M>
struct Scratch {
  Tev8u* map;
  M* magnitudes;
  void* stack;

  Scratch(Tev8u* buffer, TevSize roi) {
    const std::size_t pitch = std::size_t{2} + static_cast<std::size_t>(roi.width),
                      mapSize = pitch * (static_cast<std::size_t>(roi.height) + 2);
    map = alignedTo32(buffer);
    magnitudes = reinterpret_cast<M*>(alignedTo32(map + mapSize) + 12);
    stack = magnitudes + 4 * pitch;
    std::memset(map, 0, mapSize);
    std::memset(magnitudes, 0, 4 * pitch * sizeof(M));
  }
};

// Marks candidates in the map and strong pixels in `dst`, and stacks the latter. Returns the number of words stacked.
template <class Word, class T>
int thin(Rows<const T> dx, Rows<const T> dy, Rows<Tev8u> dst, TevSize roi, Tev32f lowThreshold, Tev32f high,
         const Scratch<Magnitude<T>>& scratch) {
  using M = Magnitude<T>;
  const std::ptrdiff_t pitch = std::ptrdiff_t{roi.width} + 2;
  const M low = lowLevel(M{}, lowThreshold);
  // Image row y stands in rotating row (y + 1) mod 4. The first one stays zero for the row above the image.
  const auto magnitudes = [&](int y) { return scratch.magnitudes + ((y + 1) & 3) * pitch + 1; };
  const auto load = [&](int y) {
    if (y < roi.height)
      magnitudeRow(dx[y], dy[y], magnitudes(y), roi.width, low);
    else
      std::memset(magnitudes(y) - 1, 0, static_cast<std::size_t>(pitch) * sizeof(M));
  };
  auto* const stack = static_cast<Word*>(scratch.stack);
  std::ptrdiff_t words = 0;
  load(0);
  load(1);
  for (int y = 0; y < roi.height; ++y) {
    if (y + 2 <= roi.height) load(y + 2);
    Tev8u* const map = scratch.map + (y + 1) * pitch + 1;
    Tev8u* const edges = dst[y];
    const M *const above = magnitudes(y - 1), *const row = magnitudes(y), *const below = magnitudes(y + 1);
    for (int x = 0; x < roi.width; x += block) {
      const int length = std::min(block, roi.width - x);
      if (!anyNonZero(row + x, length)) continue;
      directionRow(dx[y] + x, dy[y] + x, map + x, length);
      thinRow(above + x, row + x, below + x, map + x, edges + x, length, high);
      forEachNonZero(edges + x, length, [&](int i) {
        stack[words++] = static_cast<Word>(y);
        stack[words++] = static_cast<Word>(x + i);
      });
    }
  }
  return static_cast<int>(words);
}

template <class T>
TevStatus canny(const T* dx, int dxStep, const T* dy, int dyStep, Tev8u* dst, int dstStep, TevSize roi,
                Tev32f lowThreshold, Tev32f highThreshold, Tev8u* buffer) {
  if (TevStatus s = firstFailure(
          notNull(dx, dy, dst, buffer), region(roi), rowFits<T>(dxStep, roi.width), rowFits<T>(dyStep, roi.width),
          rowFits<Tev8u>(dstStep, roi.width), wholeElements<T>(dxStep), wholeElements<T>(dyStep),
          failUnless(lowThreshold >= 0, tevStatusBadArg), failUnless(highThreshold >= lowThreshold, tevStatusBadArg)))
    return s;
  // Whole steps are cleared, the bytes behind the last row's pixels included.
  std::memset(dst, 0, static_cast<std::size_t>(roi.height) * static_cast<std::size_t>(dstStep));
  const Scratch<Magnitude<T>> scratch(buffer, roi);
  const auto gradientX = rows(dx, dxStep), gradientY = rows(dy, dyStep);
  const auto edges = rows(dst, dstStep);
  if (fitsShortEntries(roi)) {
    const int words = thin<Tev16u>(gradientX, gradientY, edges, roi, lowThreshold, highThreshold, scratch);
    ownHysteresisThresholding_16u(scratch.map, static_cast<Tev16u*>(scratch.stack), words, 0, roi.width, roi.height, 0,
                                  0, dst, dstStep);
  } else {
    const int words = thin<Tev32s>(gradientX, gradientY, edges, roi, lowThreshold, highThreshold, scratch);
    ownHysteresisThresholding_32s(scratch.map, static_cast<Tev32s*>(scratch.stack), words, 0, roi.width, roi.height, 0,
                                  0, dst, dstStep);
  }
  return tevStatusOk;
}

}  // namespace

void ownHysteresisThresholding_16u(const Tev8u* edgeMap, Tev16u* stack, int words, int, int width, int, int, int,
                                   Tev8u* dst, int dstStep) {
  grow(edgeMap, stack, words, width, dst, dstStep);
}

void ownHysteresisThresholding_32s(const Tev8u* edgeMap, Tev32s* stack, int words, int, int width, int, int, int,
                                   Tev8u* dst, int dstStep) {
  grow(edgeMap, stack, words, width, dst, dstStep);
}

TevStatus teviCannyGetSize(TevSize roiSize, int* bufferSize) {
  if (TevStatus s = firstFailure(notNull(bufferSize), region(roiSize))) return s;
  // A byte and a stack entry for each pixel of the bordered map, and the magnitudes. Sizes wrap in 32 bits.
  const auto width = static_cast<std::uint32_t>(roiSize.width), height = static_cast<std::uint32_t>(roiSize.height);
  const std::uint32_t base = (width * 4 + 24) * 4 + 64, entry = fitsShortEntries(roiSize) ? 4 : 8;
  *bufferSize = static_cast<int>((height + 2) * (width + 2) * (1 + entry) + base);
  return tevStatusOk;
}

TevStatus teviCanny_16s8u_C1R(const Tev16s* dx, int dxStep, const Tev16s* dy, int dyStep, Tev8u* dst, int dstStep,
                              TevSize roiSize, Tev32f lowThreshold, Tev32f highThreshold, Tev8u* buffer) {
  return canny(dx, dxStep, dy, dyStep, dst, dstStep, roiSize, lowThreshold, highThreshold, buffer);
}

TevStatus teviCanny_32f8u_C1R(const Tev32f* dx, int dxStep, const Tev32f* dy, int dyStep, Tev8u* dst, int dstStep,
                              TevSize roiSize, Tev32f lowThreshold, Tev32f highThreshold, Tev8u* buffer) {
  return canny(dx, dxStep, dy, dyStep, dst, dstStep, roiSize, lowThreshold, highThreshold, buffer);
}
