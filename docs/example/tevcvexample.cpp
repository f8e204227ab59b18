//! [top]
// Mean absolute difference of two images: a reduction. Each share of rows gives one sum, sums are added in thread
// order.
#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "example.h"
#include "example_internal.h"
#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"

using namespace tevcv;

namespace {
//! [top]

//! [share]
// The sum over one share of rows. Bytes: a whole number, exact as a double below 2^53. Floats: a chain of extended
// additions in scan order, rounded once at its end.
template <class T>
Tev64f sumShare(Rows<const T> a, Rows<const T> b, int width, Share share) {
  if constexpr (std::is_integral_v<T>) {
    std::uint64_t sum = 0;
    for (int y = share.firstRow; y < share.endRow(); ++y) sum += ownSumAbsDiff_8u(a[y], b[y], width);
    return static_cast<Tev64f>(sum);
  } else {
    Extended sum = 0;
    for (int y = share.firstRow; y < share.endRow(); ++y)
      for (int x = 0; x < width; ++x) sum += std::fabs(Extended{a[y][x]} - Extended{b[y][x]});
    return static_cast<Tev64f>(sum);
  }
}
//! [share]

//! [call]
// A thread is worth its while from this many pixels on.
constexpr std::int64_t pixelsPerThread = 65536;

template <class T>
TevStatus meanAbsDiff(const T* src1, int src1Step, const T* src2, int src2Step, TevSize roi, Tev64f* pMean) {
  if (TevStatus s =
          firstFailure(notNull(src1, src2, pMean), region(roi), rowFits<T>(src1Step, roi.width),
                       rowFits<T>(src2Step, roi.width), wholeElements<T>(src1Step), wholeElements<T>(src2Step)))
    return s;
  const auto a = rows(src1, src1Step), b = rows(src2, src2Step);
  const std::int64_t pixels = std::int64_t{roi.width} * roi.height;

  const int threads = owncvGetMaxNumThreads();
  const int count = pixels < threads * pixelsPerThread ? 1 : threads;
  Slots<Tev64f> sums(count);
  if (!sums) return tevStatusNoMemory;
  const auto sum = [&](Share share) { sums[share.index] = sumShare(a, b, roi.width, share); };
  if (count == 1)
    sum(shareOfRows(roi.height, 1, 0));
  else
    forEachShare(roi.height, count, sum);

  Tev64f total = 0;
  for (int t = 0; t < count; ++t) total += sums[t];
  *pMean = total / static_cast<Tev64f>(pixels);
  return tevStatusOk;
}

}  // namespace
//! [call]

//! [exported]
// In runs whose sum fits 32 bits, so that the inner loop adds words of one size.
std::uint64_t ownSumAbsDiff_8u(const Tev8u* a, const Tev8u* b, int width) {
  constexpr int run = 1 << 16;
  std::uint64_t sum = 0;
  for (int first = 0; first < width; first += run) {
    const int end = first + std::min(run, width - first);
    std::uint32_t part = 0;
    for (int x = first; x < end; ++x) part += static_cast<std::uint32_t>(a[x] > b[x] ? a[x] - b[x] : b[x] - a[x]);
    sum += part;
  }
  return sum;
}

TevStatus teviMeanAbsDiff_8u_C1R(const Tev8u* src1, int src1Step, const Tev8u* src2, int src2Step, TevSize roiSize,
                                 Tev64f* pMean) {
  return meanAbsDiff(src1, src1Step, src2, src2Step, roiSize, pMean);
}

TevStatus teviMeanAbsDiff_32f_C1R(const Tev32f* src1, int src1Step, const Tev32f* src2, int src2Step, TevSize roiSize,
                                  Tev64f* pMean) {
  return meanAbsDiff(src1, src1Step, src2, src2Step, roiSize, pMean);
}
//! [exported]
