// Motion history: each pixel holds the time of the last motion seen there, for as long as that is not too long ago.
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/motion.h"

using namespace tevcv;

namespace {

// Orders the bits of floats as numbers, in integers: -0.0 comes just below +0.0, NaN beyond the infinities.
constexpr Tev32s orderedKey(Tev32s bits) { return (bits & 0x7fffffff) ^ (bits >> 31); }

template <class T, class KeyOf>
void updateRow(const T* silhouette, Tev32s* history, int width, Tev32s now, Tev32s limit, KeyOf key) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    const Tev32s kept = key(history[x]) < limit ? 0 : history[x];
    history[x] = silhouette[x] != 0 ? now : kept;
  }
}

// The oldest time that stays, as a key.
Tev32s limitKey(Tev32f timestamp, Tev32f duration) {
  const auto bits = std::bit_cast<Tev32s>(timestamp - duration);
  // Without a known duration every earlier time is too old: the limit is above all numbers, whatever the NaN's sign.
  return orderedKey(std::isnan(duration) ? bits & 0x7fffffff : bits);
}

// Members with integer silhouettes work on the bits of the times.
template <class T>
TevStatus update(const T* silhouette, int silhouetteStep, Tev32f* mhi, int mhiStep, TevSize roi, Tev32f timestamp,
                 Tev32f duration) {
  if (TevStatus s = firstFailure(notNull(silhouette, mhi), region(roi), rowFits<T>(silhouetteStep, roi.width),
                                 rowFits<Tev32f>(mhiStep, roi.width), wholeElements<T>(silhouetteStep),
                                 wholeElements<Tev32f>(mhiStep), failUnless(!(duration < 0), tevStatusBadPoint)))
    return s;
  const auto now = std::bit_cast<Tev32s>(timestamp);
  const Tev32s limit = limitKey(timestamp, duration);
  const auto history = rows(reinterpret_cast<Tev32s*>(mhi), mhiStep);
  for (int y = 0; y < roi.height; ++y) {
    const T* const moving = rows(silhouette, silhouetteStep)[y];
    // Against a positive limit the bits themselves compare like their keys: what is negative lies below either way.
    if (limit > 0)
      updateRow(moving, history[y], roi.width, now, limit, [](Tev32s bits) { return bits; });
    else
      updateRow(moving, history[y], roi.width, now, limit, orderedKey);
  }
  return tevStatusOk;
}

// The least float that is not below the limit. Comparing a float with it is comparing it with the limit, which is a
// difference in extended precision; NaN stays NaN.
Tev32f leastKept(Tev32f timestamp, Tev32f duration) {
  const Extended limit = Extended{timestamp} - duration;
  const auto rounded = static_cast<Tev32f>(limit);
  return rounded < limit ? std::nextafter(rounded, std::numeric_limits<Tev32f>::infinity()) : rounded;
}

// The silhouette counts as moving where it is below or above 0: -0.0 and NaN do not. A NaN in the history is not known
// to be recent and is cleared.
void updateRow(const Tev32f* silhouette, Tev32f* history, int width, Tev32f timestamp, Tev32f limit) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    const Tev32f kept = history[x] >= limit ? history[x] : 0.0F;
    const bool moving = (silhouette[x] < 0) | (silhouette[x] > 0);
    history[x] = moving ? timestamp : kept;
  }
}

}  // namespace

TevStatus teviUpdateMotionHistory_8u32f_C1IR(const Tev8u* silhouette, int silhouetteStep, Tev32f* mhi, int mhiStep,
                                             TevSize roiSize, Tev32f timestamp, Tev32f mhiDuration) {
  return update(silhouette, silhouetteStep, mhi, mhiStep, roiSize, timestamp, mhiDuration);
}

TevStatus teviUpdateMotionHistory_16u32f_C1IR(const Tev16u* silhouette, int silhouetteStep, Tev32f* mhi, int mhiStep,
                                              TevSize roiSize, Tev32f timestamp, Tev32f mhiDuration) {
  return update(silhouette, silhouetteStep, mhi, mhiStep, roiSize, timestamp, mhiDuration);
}

TevStatus teviUpdateMotionHistory_32f_C1IR(const Tev32f* silhouette, int silhouetteStep, Tev32f* mhi, int mhiStep,
                                           TevSize roiSize, Tev32f timestamp, Tev32f mhiDuration) {
  // A NaN duration fails here, unlike in the members with integer silhouettes.
  if (TevStatus s =
          firstFailure(notNull(silhouette, mhi), region(roiSize), rowFits<Tev32f>(silhouetteStep, roiSize.width),
                       rowFits<Tev32f>(mhiStep, roiSize.width), wholeElements<Tev32f>(silhouetteStep),
                       wholeElements<Tev32f>(mhiStep), failUnless(mhiDuration >= 0, tevStatusBadPoint)))
    return s;
  const Tev32f limit = leastKept(timestamp, mhiDuration);
  for (int y = 0; y < roiSize.height; ++y)
    updateRow(rows(silhouette, silhouetteStep)[y], rows(mhi, mhiStep)[y], roiSize.width, timestamp, limit);
  return tevStatusOk;
}
