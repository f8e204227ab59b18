// Connected components of a marker image, numbered by repeated flood fill in raster order.
#include <cstddef>
#include <cstring>

#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/primitives.h"
#include "tevcv/segmentation.h"

using namespace tevcv;

namespace {

// A marker that has no label yet; labels end below it.
constexpr Tev8u unlabelled = 255;

// The first unlabelled pixel of a row from x on, or width.
int nextUnlabelled(const Tev8u* row, int x, int width) {
  const void* const found = std::memchr(row + x, unlabelled, static_cast<std::size_t>(width - x));
  return found ? static_cast<int>(static_cast<const Tev8u*>(found) - row) : width;
}

}  // namespace

TevStatus teviLabelMarkersGetBufferSize_8u_C1R(TevSize roiSize, int* bufferSize) {
  if (TevStatus s = firstFailure(notNull(bufferSize), region(roiSize))) return s;
  return teviFloodFillGetSize(roiSize, bufferSize);
}

TevStatus teviLabelMarkers_8u_C1IR(Tev8u* markers, int markerStep, TevSize roiSize, int minLabel, int maxLabel,
                                   int norm, int* markersNum, Tev8u* buffer) {
  if (TevStatus s =
          firstFailure(notNull(markers, buffer, markersNum), region(roiSize), rowFits<Tev8u>(markerStep, roiSize.width),
                       failUnless(minLabel >= 1 && maxLabel < unlabelled && minLabel <= maxLabel, tevStatusBadArg),
                       failUnless(norm == 0 || norm == 1, tevStatusBadArg)))
    return s;
  const auto fill = norm == 0 ? teviFloodFill_8Con_8u_C1IR : teviFloodFill_4Con_8u_C1IR;
  const int width = roiSize.width;
  teviThreshold_GTVal_8u_C1IR(markers, markerStep, roiSize, 0, unlabelled);
  int label = minLabel, count = 0;
  for (int y = 0; y < roiSize.height; ++y) {
    const Tev8u* const row = rows(markers, markerStep)[y];
    for (int x = 0; (x = nextUnlabelled(row, x, width)) < width; ++x) {
      TevConnectedRegion component;
      fill(markers, markerStep, roiSize, {x, y}, static_cast<Tev8u>(label), &component, buffer);
      label = label == maxLabel ? minLabel : label + 1;
      ++count;
    }
  }
  *markersNum = count;
  return tevStatusOk;
}
