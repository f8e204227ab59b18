// Mean of the pixels that a mask selects: one sum over whole rows, shared among threads for a large region.
#include "statistics/moments.h"
#include "tevcv/statistics.h"

using namespace tevcv;
using namespace tevcv::moments;

namespace {

// Padded to two Tev64f on every ABI.
struct alignas(8) ShareOfMean {
  Tev64f sum;
  Tev32s count;
};
static_assert(sizeof(ShareOfMean) == 2 * sizeof(Tev64f));

template <class T, int channels>
TevStatus mean(const Elements<T, channels, true>& e, Tev64f* pMean) {
  Extended sum = 0;
  std::int64_t count = 0;
  if (!worthSharing(e.roi, 131072)) {
    const Sums<T> sums = sumRows<false>(e, 0, e.roi.height);
    sum = static_cast<Extended>(sums.sum);
    count = sums.count;
  } else {
    const int threads = owncvGetNumThreads();
    Slots<ShareOfMean> slots(threads);
    if (!slots) return tevStatusNoMemory;
    forEachShare(e.roi.height, threads, [&](Share share) {
      const Sums<T> sums = sumRows<false>(e, share.firstRow, share.endRow());
      slots[share.index] = {static_cast<Tev64f>(sums.sum), static_cast<Tev32s>(sums.count)};
    });
    for (int t = 0; t < threads; ++t) {
      sum += slots[t].sum;
      count += slots[t].count;
    }
  }
  *pMean = count == 0 ? 0 : static_cast<Tev64f>(sum / static_cast<Extended>(count));
  return tevStatusOk;
}

template <class T>
TevStatus meanC1M(const T* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roi, Tev64f* pMean) {
  const TevStatus source = rowFits<T>(srcStep, roi.width), select = rowFits<Tev8u>(maskStep, roi.width),
                  whole = wholeElements<T>(srcStep);
  // The 16-bit member alone looks at its source's alignment before the mask's step.
  const bool sourceFirst = std::is_same_v<T, Tev16u>;
  if (TevStatus s = firstFailure(notNull(src, mask, pMean), region(roi), source, sourceFirst ? whole : select,
                                 sourceFirst ? select : whole))
    return s;
  return mean(elements<T, 1>(src, srcStep, mask, maskStep, roi), pMean);
}

template <class T>
TevStatus meanC3CM(const T* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roi, int coi, Tev64f* pMean) {
  if (TevStatus s =
          firstFailure(notNull(src, mask, pMean), region(roi), rowFits<T>(srcStep, roi.width, 3),
                       rowFits<Tev8u>(maskStep, roi.width), wholeElements<T>(srcStep), channelOfInterest(coi)))
    return s;
  return mean(elements<T, 3>(src, srcStep, mask, maskStep, roi, coi), pMean);
}

}  // namespace

TevStatus teviMean_8u_C1MR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                           Tev64f* pMean) {
  return meanC1M(src, srcStep, mask, maskStep, roiSize, pMean);
}

TevStatus teviMean_8s_C1MR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                           Tev64f* pMean) {
  return meanC1M(src, srcStep, mask, maskStep, roiSize, pMean);
}

TevStatus teviMean_16u_C1MR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                            Tev64f* pMean) {
  return meanC1M(src, srcStep, mask, maskStep, roiSize, pMean);
}

TevStatus teviMean_32f_C1MR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize,
                            Tev64f* pMean) {
  return meanC1M(src, srcStep, mask, maskStep, roiSize, pMean);
}

TevStatus teviMean_8u_C3CMR(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize, int coi,
                            Tev64f* pMean) {
  return meanC3CM(src, srcStep, mask, maskStep, roiSize, coi, pMean);
}

TevStatus teviMean_8s_C3CMR(const Tev8s* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize, int coi,
                            Tev64f* pMean) {
  return meanC3CM(src, srcStep, mask, maskStep, roiSize, coi, pMean);
}

TevStatus teviMean_16u_C3CMR(const Tev16u* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize, int coi,
                             Tev64f* pMean) {
  return meanC3CM(src, srcStep, mask, maskStep, roiSize, coi, pMean);
}

TevStatus teviMean_32f_C3CMR(const Tev32f* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roiSize, int coi,
                             Tev64f* pMean) {
  return meanC3CM(src, srcStep, mask, maskStep, roiSize, coi, pMean);
}
