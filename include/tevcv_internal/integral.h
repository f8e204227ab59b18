// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include <cstddef>

#include "tevcv/integral.h"
#include "tevcv_internal/export.h"

// ---- Standard deviation in a window ----

// Deviations of the upright rectangle `rect` over the whole of `roiSize`.
TEV_WORKER TevStatus ownRectStdDev_32f_C1R_PX(const Tev32f* src, int srcStep, const Tev64f* sqr, int sqrStep,
                                              Tev32f* dst, int dstStep, TevSize roiSize, TevRect rect);

// ---- Haar classifiers ----
//
// A stage is one block: this header, then the classifiers, then the features.

// A value of a stage is a float in the `32f` functions and an integer in the `32s` ones.
union TevHaarValue {
  Tev32f f;
  Tev32s s;
};

// A rectangle: its corners as column and row offsets into a table. The sum is T[A] - T[B] - T[C] + T[D].
struct TevHaarFeature {
  Tev32s colA, rowA;
  Tev32s colB, rowB;
  Tev32s colC, rowC;
  Tev32s colD, rowD;
  TevHaarValue weight;
};

struct TevHaarClassifier {
  Tev32s count;              // its features, at least 1
  TevHaarFeature* features;  // the first of them
  TevHaarValue threshold;    // of the weighted sum, as a multiple of the norm
  TevHaarValue belowValue;   // the vote below the threshold
  TevHaarValue aboveValue;   // the vote at or above it
  Tev32s indexAndTilt;       // position in the caller's arrays times 256, plus 1 when tilted
};

struct TevHaarClassifierState {
  Tev32s classifierCount;
  Tev32s featureCount;
  TevHaarClassifier* classifiers;
  Tev32s boundX, boundY, boundWidth, boundHeight;
  Tev32s flags;                   // bit 0: features have been tilted
  Tev32s twoFeatureCount;         // classifiers of two features; they come first
  Tev32s twoOrThreeFeatureCount;  // classifiers of two or three; those of three come next
  Tev32s totalFeatures;
  Tev32s allFirstWeightsMinusOne;  // upright forms only; the tilted ones leave it unset
};

static_assert(sizeof(TevHaarFeature) == 36 && offsetof(TevHaarFeature, weight) == 32);
#if defined(__i386__)
static_assert(sizeof(TevHaarClassifier) == 24 && offsetof(TevHaarClassifier, indexAndTilt) == 20);
static_assert(sizeof(TevHaarClassifierState) == 48 && offsetof(TevHaarClassifierState, boundX) == 12 &&
              offsetof(TevHaarClassifierState, flags) == 28);
#endif

// One stage over the whole of `roiSize`, on the calling thread. tevStatusNoMemory never comes back: without memory for
// its table of corners it works the corners out at each read.
TEV_WORKER TevStatus ownApplyHaarClassifier_32f_C1R(const Tev32f* src, int srcStep, const Tev32f* norm, int normStep,
                                                    Tev8u* mask, int maskStep, TevSize roiSize, Tev32s* pPositive,
                                                    Tev32f threshold, const TevHaarClassifierState* state);
