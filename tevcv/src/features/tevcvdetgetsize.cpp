// Buffer sizes of the corner measures: derivative planes, product and average planes, and the largest scratch of the
// filters that a call runs.
#include "corner.h"
#include "tevcv_internal/frame.h"

using namespace tevcv;
using namespace tevcv::corner;

namespace {

using Query = TevStatus (*)(TevSize, TevMaskSize, int*);
using MasklessQuery = TevStatus (*)(TevSize, int*);

struct FilterQueries {
  Query sobelVert, sobelHoriz;
  MasklessQuery scharrVert, scharrHoriz;
};

constexpr FilterQueries queries8u = {
    teviFilterSobelVertGetBufferSize_8u16s_C1R, teviFilterSobelHorizGetBufferSize_8u16s_C1R,
    teviFilterScharrVertGetBufferSize_8u16s_C1R, teviFilterScharrHorizGetBufferSize_8u16s_C1R};
constexpr FilterQueries queries32f = {
    teviFilterSobelVertGetBufferSize_32f_C1R, teviFilterSobelHorizGetBufferSize_32f_C1R,
    teviFilterScharrVertGetBufferSize_32f_C1R, teviFilterScharrHorizGetBufferSize_32f_C1R};

// The Scharr filters are asked for by the averaging window, not the aperture: sizes that callers have stored hold that.
TevStatus filterScratch(const FilterQueries& query, TevSize roi, int apertureSize, int avgWindow, int* largest) {
  *largest = 0;
  int size = 0;
  const auto keep = [&](TevStatus status) {
    *largest = std::max(*largest, size);
    return status;
  };
  if (TevStatus s = keep(query.sobelVert(roi, maskOf(apertureSize), &size))) return s;
  if (TevStatus s = keep(query.sobelHoriz(roi, maskOf(apertureSize), &size))) return s;
  if (avgWindow == 3) {
    if (TevStatus s = keep(query.scharrVert(roi, &size))) return s;
    if (TevStatus s = keep(query.scharrHoriz(roi, &size))) return s;
  }
  return keep(teviFilterLowpassGetBufferSize_32f_C1R(roi, maskOf(avgWindow), &size));
}

bool oneOfTheWindows(int size) { return size == 3 || size == 5; }

TevStatus bufferSize(const FilterQueries& query, TevSize roi, int apertureSize, int avgWindow, int* pSize,
                     unsigned planes, unsigned derivativeBytes) {
  if (TevStatus s =
          firstFailure(notNull(pSize), region(roi),
                       failUnless(oneOfTheWindows(apertureSize) && oneOfTheWindows(avgWindow), tevStatusBadSize)))
    return s;
  int scratch = 0;
  if (TevStatus s = filterScratch(query, roi, apertureSize, avgWindow, &scratch)) return s;
  // Words wrap beyond what an int holds, as the callers' own products do.
  const auto width = static_cast<unsigned>(roi.width), height = static_cast<unsigned>(roi.height);
  const unsigned pitch = (width + 15U) & ~15U;
  *pSize = static_cast<int>((pitch * height * 4U + 32U) * planes + width * height * derivativeBytes +
                            static_cast<unsigned>(scratch) + 64U);
  return tevStatusOk;
}

// Both derivatives of bytes take four bytes a pixel, and are counted so; those of floats as two planes.
TevStatus bufferSize8u(TevSize roi, int apertureSize, int avgWindow, int* pSize) {
  return bufferSize(queries8u, roi, apertureSize, avgWindow, pSize, owncvGetMaxNumThreads() < 2 ? 3 : 6, 4);
}

TevStatus bufferSize32f(TevSize roi, int apertureSize, int avgWindow, int* pSize) {
  return bufferSize(queries32f, roi, apertureSize, avgWindow, pSize, owncvGetMaxNumThreads() < 2 ? 5 : 8, 0);
}

}  // namespace

TevStatus teviMinEigenValGetBufferSize_8u32f_C1R(TevSize roiSize, int apertureSize, int avgWindow, int* pSize) {
  return bufferSize8u(roiSize, apertureSize, avgWindow, pSize);
}

TevStatus teviMinEigenValGetBufferSize_32f_C1R(TevSize roiSize, int apertureSize, int avgWindow, int* pSize) {
  return bufferSize32f(roiSize, apertureSize, avgWindow, pSize);
}

TevStatus teviEigenValsVecsGetBufferSize_8u32f_C1R(TevSize roiSize, int apertureSize, int avgWindow, int* pSize) {
  return bufferSize8u(roiSize, apertureSize, avgWindow, pSize);
}

TevStatus teviEigenValsVecsGetBufferSize_32f_C1R(TevSize roiSize, int apertureSize, int avgWindow, int* pSize) {
  return bufferSize32f(roiSize, apertureSize, avgWindow, pSize);
}
