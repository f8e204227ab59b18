// Peaks: pixels beyond a threshold that are the extreme of their 3 x 3 neighbourhood.
//
// Row maxima and row minima of three go through a ring of four rows each, so that every image row is filtered once; the
// extreme over a neighbourhood is that over three rows of the ring.
#include <cmath>
#include <cstdint>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/features.h"
#include "tevcv_internal/features.h"

using namespace tevcv;

namespace {

enum Neighbourhood { square = 0, cross = 1 };

template <class T>
T larger(T a, T b) {
  return a > b ? a : b;
}

template <class T>
T smaller(T a, T b) {
  return a < b ? a : b;
}

template <class T>
void maxRow(const T* in, T* out, int n) {
  for (int i = 0; i < n - 2; ++i) out[i] = larger(in[i], larger(in[i + 1], in[i + 2]));
}

template <class T>
void minRow(const T* in, T* out, int n) {
  for (int i = 0; i < n - 2; ++i) out[i] = smaller(in[i], smaller(in[i + 1], in[i + 2]));
}

void filterRow(const Tev32f* in, Tev32f* maxima, Tev32f* minima, int n) {
  ownSiftFilterMaxRow03_32f_C1R(in, maxima, n);
  ownSiftFilterMinRow03_32f_C1R(in, minima, n);
}
void filterRow(const Tev32s* in, Tev32s* maxima, Tev32s* minima, int n) {
  ownSiftFilterMaxRow03_32s_C1R(in, maxima, n);
  ownSiftFilterMinRow03_32s_C1R(in, minima, n);
}

bool beyond(Tev32f p, Tev32f threshold) { return std::fabs(p) > threshold; }
bool beyond(Tev32s p, Tev32s threshold) { return threshold < (p < 0 ? -std::int64_t{p} : std::int64_t{p}); }

// Floats within the smallest normal number of each other count as equal.
bool isExtreme(Tev32f p, Tev32f extreme) { return std::fabs(p - extreme) <= 1.1754944e-38F; }
bool isExtreme(Tev32s p, Tev32s extreme) { return p == extreme; }

template <class T>
TevStatus findPeaks(const T* src, int srcStep, TevSize roi, T threshold, TevPoint* peaks, int maxPeakCount,
                    int* peakCount, int norm, int border, Tev8u* buffer) {
  const int width = roi.width, height = roi.height;
  if (TevStatus s =
          firstFailure(notNull(src, peaks, peakCount, buffer),
                       failUnless(height >= 1 && width >= 1 && maxPeakCount >= 1 && border >= 1, tevStatusBadSize),
                       failUnless(width * 0.5 >= border && height * 0.5 >= border, tevStatusBadSize),
                       failUnless((srcStep >> 2) >= width, tevStatusBadStep),
                       failUnless(((srcStep >> 2) & 3) == 0, tevStatusStepNotAligned),
                       failUnless(norm == square || norm == cross, tevStatusBadArg)))
    return s;
  *peakCount = 0;
  const auto image = wholeElementRows(src, srcStep);
  const std::ptrdiff_t rowLength = (std::ptrdiff_t{width} + 3) & ~std::ptrdiff_t{3};
  T* const ring = reinterpret_cast<T*>((reinterpret_cast<std::uintptr_t>(buffer) + 31) & ~std::uintptr_t{31});
  const auto maxima = [=](int y) { return ring + (y & 3) * rowLength; };
  const auto minima = [=](int y) { return ring + (4 + (y & 3)) * rowLength; };
  const int columns = width - 2 * border, lastRow = height - border - 1;
  if (columns < 1 || lastRow < border) return tevStatusOk;
  const auto filter = [&](int y) { filterRow(image[y] + border - 1, maxima(y), minima(y), columns + 2); };
  filter(border - 1);
  filter(border);
  int count = 0;
  for (int y = border; y <= lastRow; ++y) {
    filter(y + 1);
    const T *above = image[y - 1] + border, *here = image[y] + border, *below = image[y + 1] + border;
    const T *maxAbove = maxima(y - 1), *maxHere = maxima(y), *maxBelow = maxima(y + 1);
    const T *minAbove = minima(y - 1), *minHere = minima(y), *minBelow = minima(y + 1);
    if (norm == cross) maxAbove = minAbove = above, maxBelow = minBelow = below;
    for (int i = 0; i < columns; ++i) {
      const T p = here[i];
      if (!beyond(p, threshold)) continue;
      const T extreme = p <= T{0} ? smaller(minHere[i], smaller(minAbove[i], minBelow[i]))
                                  : larger(maxHere[i], larger(maxAbove[i], maxBelow[i]));
      if (!isExtreme(p, extreme)) continue;
      peaks[count] = {border + i, y};
      *peakCount = ++count;
      if (count == maxPeakCount) return tevStatusOk;
    }
  }
  return tevStatusOk;
}

TevStatus bufferSize(int width, int* pSize) {
  if (TevStatus s = firstFailure(notNull(pSize), length(width))) return s;
  // Eight rows of the width rounded up to four elements, and room for alignment. Wraps beyond what an int holds.
  *pSize = static_cast<int>((((static_cast<unsigned>(width) + 5) >> 2) << 7) | 32);
  return tevStatusOk;
}

}  // namespace

void ownSiftFilterMaxRow03_32f_C1R(const Tev32f* in, Tev32f* out, int n) { maxRow(in, out, n); }
void ownSiftFilterMinRow03_32f_C1R(const Tev32f* in, Tev32f* out, int n) { minRow(in, out, n); }
void ownSiftFilterMaxRow03_32s_C1R(const Tev32s* in, Tev32s* out, int n) { maxRow(in, out, n); }
void ownSiftFilterMinRow03_32s_C1R(const Tev32s* in, Tev32s* out, int n) { minRow(in, out, n); }

TevStatus teviFindPeaks3x3GetBufferSize_32f_C1R(int width, int* pSize) { return bufferSize(width, pSize); }
TevStatus teviFindPeaks3x3GetBufferSize_32s_C1R(int width, int* pSize) { return bufferSize(width, pSize); }

TevStatus teviFindPeaks3x3_32f_C1R(const Tev32f* src, int srcStep, TevSize roiSize, Tev32f threshold, TevPoint* peaks,
                                   int maxPeakCount, int* peakCount, int norm, int border, Tev8u* buffer) {
  return findPeaks(src, srcStep, roiSize, threshold, peaks, maxPeakCount, peakCount, norm, border, buffer);
}

TevStatus teviFindPeaks3x3_32s_C1R(const Tev32s* src, int srcStep, TevSize roiSize, Tev32s threshold, TevPoint* peaks,
                                   int maxPeakCount, int* peakCount, int norm, int border, Tev8u* buffer) {
  return findPeaks(src, srcStep, roiSize, threshold, peaks, maxPeakCount, peakCount, norm, border, buffer);
}
