// Mean and population standard deviation: sums of the elements and of their squares in one reading, shared among
// threads for a large region. Floats whose spread is small beside their mean are read again, for the squares of the
// deviations: there the difference of the mean square and the squared mean has lost its digits.
#include "statistics/moments.h"
#include "tevcv/statistics.h"

using namespace tevcv;
using namespace tevcv::moments;

namespace {

struct PlainShare {
  Tev64f sum, squares;
};
struct MaskedShare {
  Tev64f sum, squares, count;
};

// The squares of 16-bit elements about 0 from those about the middle, n and the sum. The first two terms are exact in
// 64-bit words; extended precision loses nothing of the third, and so a constant image has a deviation of exactly 0.
template <class T>
Extended trueSquares(Extended sum, Extended squares, std::int64_t count) {
  if constexpr (squareOffset<T> == 0) {
    return squares;
  } else {
    constexpr std::int64_t twice = 2 * std::int64_t{squareOffset<T>}, square = twice / 2 * (twice / 2);
    const auto whole = static_cast<std::int64_t>(std::llrint(static_cast<Tev64f>(sum)));
    return static_cast<Extended>(wrapSub(wrapMul(whole, twice), wrapMul(count, square))) + squares;
  }
}

// The sum of the squared deviations from m, in scan order like the first sums.
template <int channels, bool masked>
Extended sumDeviations(const Elements<Tev32f, channels, masked>& e, Tev64f m, int first, int end) {
  Extended squares = 0;
  for (int y = first; y < end; ++y) {
    const Tev32f* const p = e.image[y];
    const Tev8u* const mask = masked ? e.mask[y] : nullptr;
    for (int x = 0; x < e.roi.width; ++x) {
      // A NaN under the mask stays out: the deviation is formed from 0, and then dropped.
      const Extended deviation = selected<masked>(p[std::ptrdiff_t{x} * channels], mask, x) - Extended{m};
      const Extended square = deviation * deviation;
      if constexpr (masked)
        squares += mask[x] != 0 ? square : Extended{0};
      else
        squares += square;
    }
  }
  return squares;
}

struct Gate {
  bool first, second;  // whether the first and the second reading are shared among threads
};

// Results may be null.
template <class T, int channels, bool masked>
TevStatus meanStdDev(const Elements<T, channels, masked>& e, Gate shared, Tev64f* pMean, Tev64f* pStdDev) {
  Extended sum = 0, squares = 0;
  std::int64_t count = 0;
  if (!shared.first) {
    const Sums<T> sums = sumRows<true>(e, 0, e.roi.height);
    sum = static_cast<Extended>(sums.sum);
    squares = sums.squares;
    count = sums.count;
  } else {
    const int threads = std::max(1, threads_omp_of_n_tev);
    Slots<std::conditional_t<masked, MaskedShare, PlainShare>> slots(threads);
    if (!slots) return tevStatusNoMemory;
    forEachShare(e.roi.height, threads, [&](Share share) {
      const Sums<T> sums = sumRows<true>(e, share.firstRow, share.endRow());
      auto& slot = slots[share.index];
      slot.sum = static_cast<Tev64f>(sums.sum);
      slot.squares = static_cast<Tev64f>(sums.squares);
      if constexpr (masked) slot.count = static_cast<Tev64f>(sums.count);
    });
    Extended selectedPixels = 0;
    for (int t = 0; t < threads; ++t) {
      sum += slots[t].sum;
      squares += slots[t].squares;
      if constexpr (masked) selectedPixels += slots[t].count;
    }
    count = masked ? static_cast<std::int64_t>(selectedPixels) : std::int64_t{e.roi.width} * e.roi.height;
  }

  Tev64f mean = 0, deviation = 0;
  if (count != 0) {
    const auto n = static_cast<Extended>(count);
    // The mean keeps its digits until it is squared: among nearly equal pixels little is left of the difference.
    const Extended m = sum / n, variance = trueSquares<T>(sum, squares, count) / n - m * m;
    mean = static_cast<Tev64f>(m);
    deviation = std::sqrt(static_cast<Tev64f>(std::fabs(variance)));
    if constexpr (std::is_same_v<T, Tev32f>) {
      if (Extended{deviation} * deviation < Extended{0.05} * mean * mean) {
        Extended squaredDeviations = 0;
        if (!shared.second) {
          squaredDeviations = sumDeviations(e, mean, 0, e.roi.height);
        } else {
          const int threads = std::max(1, threads_omp_of_n_tev);
          Slots<Tev64f> slots(threads);
          if (!slots) return tevStatusNoMemory;
          forEachShare(e.roi.height, threads, [&](Share share) {
            slots[share.index] = static_cast<Tev64f>(sumDeviations(e, mean, share.firstRow, share.endRow()));
          });
          for (int t = 0; t < threads; ++t) squaredDeviations += slots[t];
        }
        deviation = std::sqrt(static_cast<Tev64f>(squaredDeviations / n));
      }
    }
  }
  if (pMean) *pMean = mean;
  if (pStdDev) *pStdDev = deviation;
  return tevStatusOk;
}

// The gates differ by member. The 8-bit plain form alone stays serial on a single-core die; the plain form of floats is
// shared from half as many pixels on, in both readings, and that of one channel of three never is.
template <class T, int channels, bool masked>
Gate gate(TevSize roi) {
  if constexpr (std::is_same_v<T, Tev32f> && !masked) {
    const bool shared = channels == 1 && worthSharing(roi, 65536);
    return {shared, shared};
  } else if constexpr (std::is_same_v<T, Tev8u> && !masked && channels == 1) {
    return {worthSharing(roi, 131072) && runomp() != 0, false};
  } else {
    return {worthSharing(roi, 131072), false};
  }
}

template <int channels, class T>
TevStatus plain(const T* src, int srcStep, TevSize roi, int coi, Tev64f* pMean, Tev64f* pStdDev) {
  if (TevStatus s = firstFailure(notNull(src), region(roi), rowFits<T>(srcStep, roi.width, channels),
                                 wholeElements<T>(srcStep), channelOfInterest(coi)))
    return s;
  return meanStdDev(elements<T, channels>(src, srcStep, roi, coi), gate<T, channels, false>(roi), pMean, pStdDev);
}

template <int channels, class T>
TevStatus masked(const T* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roi, int coi, Tev64f* pMean,
                 Tev64f* pStdDev) {
  if (TevStatus s =
          firstFailure(notNull(src, mask), region(roi), rowFits<T>(srcStep, roi.width, channels),
                       rowFits<Tev8u>(maskStep, roi.width), wholeElements<T>(srcStep), channelOfInterest(coi)))
    return s;
  return meanStdDev(elements<T, channels>(src, srcStep, mask, maskStep, roi, coi), gate<T, channels, true>(roi), pMean,
                    pStdDev);
}

}  // namespace

TevStatus teviMean_StdDev_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev64f* pMean, Tev64f* pStdDev) {
  return plain<1>(src, srcStep, roiSize, 1, pMean, pStdDev);
}

TevStatus teviMean_StdDev_8s_C1R(const Tev8s* src, int srcStep, TevSize roiSize, Tev64f* pMean, Tev64f* pStdDev) {
  return plain<1>(src, srcStep, roiSize, 1, pMean, pStdDev);
}

TevStatus teviMean_StdDev_16u_C1R(const Tev16u* src, int srcStep, TevSize roiSize, Tev64f* pMean, Tev64f* pStdDev) {
  return plain<1>(src, srcStep, roiSize, 1, pMean, pStdDev);
}

TevStatus teviMean_StdDev_32f_C1R(const Tev32f* src, int srcStep, TevSize roiSize, Tev64f* pMean, Tev64f* pStdDev) {
  return plain<1>(src, srcStep, roiSize, 1, pMean, pStdDev);
}

TevStatus teviMean_StdDev_8u_C3CR(const Tev8u* src, int srcStep, TevSize roiSize, int coi, Tev64f* pMean,
                                  Tev64f* pStdDev) {
  return plain<3>(src, srcStep, roiSize, coi, pMean, pStdDev);
}

TevStatus teviMean_StdDev_8s_C3CR(const Tev8s* src, int srcStep, TevSize roiSize, int coi, Tev64f* pMean,
                                  Tev64f* pStdDev) {
  return plain<3>(src, srcStep, roiSize, coi, pMean, pStdDev);
}

TevStatus teviMean_StdDev_16u_C3CR(const Tev16u* src, int srcStep, TevSize roiSize, int coi, Tev64f* pMean,
                                   Tev64f* pStdDev) {
  return plain<3>(src, srcStep, roiSize, coi, pMean, pStdDev);
}

TevStatus teviMean_StdDev_32f_C3CR(const Tev32f* src, int srcStep, TevSize roiSize, int coi, Tev64f* pMean,
                                   Tev64f* pStdDev) {
  return plain<3>(src, srcStep, roiSize, coi, pMean, pStdDev);
}

TevStatus teviMean_StdDev_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                  Tev64f* pMean, Tev64f* pStdDev) {
  return masked<1>(src, srcStep, mask, maskStep, roiSize, 1, pMean, pStdDev);
}

TevStatus teviMean_StdDev_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                  Tev64f* pMean, Tev64f* pStdDev) {
  return masked<1>(src, srcStep, mask, maskStep, roiSize, 1, pMean, pStdDev);
}

TevStatus teviMean_StdDev_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                   Tev64f* pMean, Tev64f* pStdDev) {
  return masked<1>(src, srcStep, mask, maskStep, roiSize, 1, pMean, pStdDev);
}

TevStatus teviMean_StdDev_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                   Tev64f* pMean, Tev64f* pStdDev) {
  return masked<1>(src, srcStep, mask, maskStep, roiSize, 1, pMean, pStdDev);
}

TevStatus teviMean_StdDev_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                   int coi, Tev64f* pMean, Tev64f* pStdDev) {
  return masked<3>(src, srcStep, mask, maskStep, roiSize, coi, pMean, pStdDev);
}

TevStatus teviMean_StdDev_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                   int coi, Tev64f* pMean, Tev64f* pStdDev) {
  return masked<3>(src, srcStep, mask, maskStep, roiSize, coi, pMean, pStdDev);
}

TevStatus teviMean_StdDev_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                    int coi, Tev64f* pMean, Tev64f* pStdDev) {
  return masked<3>(src, srcStep, mask, maskStep, roiSize, coi, pMean, pStdDev);
}

TevStatus teviMean_StdDev_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                                    int coi, Tev64f* pMean, Tev64f* pStdDev) {
  return masked<3>(src, srcStep, mask, maskStep, roiSize, coi, pMean, pStdDev);
}
