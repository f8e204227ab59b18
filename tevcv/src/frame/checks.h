// Argument checks. Each gives a status; firstFailure takes them in the order in which they stand.
#pragma once

#include <cstdint>

#include "tevcv/types.h"

namespace tevcv {

// The first status that is not tevStatusOk, or tevStatusOk.
template <class... Status>
constexpr TevStatus firstFailure(Status... statuses) {
  TevStatus first = tevStatusOk;
  (void)(((first = statuses) != tevStatusOk) || ...);
  return first;
}

constexpr TevStatus failUnless(bool holds, TevStatus failure) { return holds ? TevStatus{tevStatusOk} : failure; }

template <class... Pointer>
constexpr TevStatus notNull(Pointer... pointers) {
  return failUnless(((pointers != nullptr) && ...), tevStatusNullPtr);
}

constexpr TevStatus length(int len) { return failUnless(len >= 1, tevStatusBadSize); }

constexpr TevStatus region(TevSize roi) { return failUnless(roi.width >= 1 && roi.height >= 1, tevStatusBadSize); }

// A row of `width` pixels of `channels` elements fits the step. The product is formed in 64 bits: no width wraps it.
template <class T>
constexpr TevStatus rowFits(int step, int width, int channels = 1) {
  return failUnless(step >= std::int64_t{width} * channels * std::int64_t{sizeof(T)}, tevStatusBadStep);
}

constexpr TevStatus positiveStep(int step) { return failUnless(step >= 1, tevStatusBadStep); }

template <class T>
constexpr TevStatus wholeElements(int step) {
  return failUnless(step % int{sizeof(T)} == 0, tevStatusStepNotAligned);
}

// A channel of interest counts from 1.
constexpr TevStatus channelOfInterest(int coi) { return failUnless(coi >= 1 && coi <= 3, tevStatusBadCoi); }

}  // namespace tevcv
