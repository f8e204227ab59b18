// Foreground of a video by a mixture of Gaussian modes at each pixel.
//
// A pixel's five modes are clusters of the values seen there, ranked by weight over standard deviation: what is seen
// often and varies little is background. A new value joins the first mode within 2.5 standard deviations, or takes the
// place of the worst one. The pixel is background where the value's mode belongs to those that together hold 70 % of
// the weight.
//
// Records are packed and their fields are doubles; what happens between two fields runs in extended precision.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "motion/allocation.h"
#include "tevcv/memory.h"
#include "tevcv/motion.h"
#include "tevcv/primitives.h"

using namespace tevcv;

namespace {

using State = TevForegroundGaussianState;

constexpr int modesPerPixel = 5;

template <int channels>
struct [[gnu::packed]] Mode {
  Tev32s count;  // values that the mode has taken in
  Tev64f weight;
  Tev64f variance[channels];
  Tev64f mean[channels];
};
static_assert(sizeof(Mode<1>) == 28 && sizeof(Mode<3>) == 60);
static_assert(sizeof(void*) != 4 || sizeof(State) == 72);

constexpr Tev64f firstVariance = 12.5;

// Room behind the modes and the pointers to them that old programs count on.
constexpr int spareModes = 128 * modesPerPixel, sparePointerBytes = 1024;

// ---- Creation and release ----

// What was allocated of the state; null pointers are passed over.
void releaseImages(State* state) {
  tevsFree(state->pixels);
  tevsFree(state->backgroundImage);
  tevsFree(state->foregroundImage);
}

template <int channels>
State* allocate(TevSize roi) {
  auto* const state = reinterpret_cast<State*>(tevsMalloc_8u(int{sizeof(State)}));
  if (!state) return nullptr;
  std::memset(state, 0, sizeof(State));
  constexpr int modeBytes = int{sizeof(Mode<channels>)};
  Tev8u* modes = nullptr;
  if ((state->pixels = reinterpret_cast<void**>(allocateForPixels(roi, int{sizeof(void*)}, sparePointerBytes))) &&
      (state->backgroundImage = allocateForPixels(roi, channels)) &&
      (state->foregroundImage = allocateForPixels(roi, 1)) &&
      (modes = allocateForPixels(roi, modesPerPixel * modeBytes, spareModes * modeBytes))) {
    const int pixels = roi.width * roi.height;
    for (int i = 0; i < pixels; ++i) state->pixels[i] = modes + std::ptrdiff_t{i} * modesPerPixel * modeBytes;
    return state;
  }
  releaseImages(state);
  tevsFree(state);
  return nullptr;
}

template <int channels>
TevStatus initAlloc(const Tev8u* src, int srcStep, TevSize roi, const Tev8u* ref, State** result) {
  if (TevStatus s = firstFailure(notNull(src, ref, result), region(roi), rowFits<Tev8u>(srcStep, roi.width, channels)))
    return s;
  State* const state = allocate<channels>(roi);
  if (!state) return tevStatusNoMemory;
  state->backgroundStep = roi.width * channels;
  state->foregroundStep = roi.width;
  state->window = 200;
  state->numModes = modesPerPixel;
  state->backgroundRatio = 0.7;
  state->matchThreshold = 2.5;
  state->unused[0] = 15.0;
  state->unused[1] = 0.05;
  state->initVariance = 900.0;

  void** pixel = state->pixels;
  for (int y = 0; y < roi.height; ++y) {
    const Tev8u* const row = rows(src, srcStep)[y];
    for (int x = 0; x < roi.width; ++x, ++pixel) {
      auto* const modes = static_cast<Mode<channels>*>(*pixel);
      for (int k = 0; k < modesPerPixel; ++k) {
        const bool seen = k == 0;
        modes[k].count = seen ? 1 : 0;
        modes[k].weight = seen ? 1.0 : 0.0;
        for (int c = 0; c < channels; ++c) {
          modes[k].variance[c] = firstVariance;
          modes[k].mean[c] = seen ? row[x * channels + c] : 0.0;
        }
      }
    }
  }
  *result = state;
  return tevStatusOk;
}

// The modes and the record itself stay: programs that were built against this library go on reading them.
TevStatus release(State* state) {
  if (TevStatus s = notNull(state)) return s;
  releaseImages(state);
  return tevStatusOk;
}

// ---- One pixel ----

constexpr int none = -1;

// The first mode whose mean lies strictly within `matchThreshold` standard deviations of the value, or none.
template <int channels>
int matchingMode(const Mode<channels>* modes, int numModes, const Tev8u* value, Extended squaredThreshold) {
  for (int k = 0; k < numModes; ++k) {
    Extended variance = 0, distance = 0;
    for (int c = 0; c < channels; ++c) {
      const Extended d = Extended{modes[k].mean[c]} - value[c];
      variance += modes[k].variance[c];
      distance += d * d;
    }
    if (variance * squaredThreshold > distance) return k;
  }
  return none;
}

// Moves a mode towards a value; share(v) is the part of v by which mean and variance move.
template <int channels, class ShareOf>
void absorb(Mode<channels>& mode, const Tev8u* value, ShareOf share) {
  for (int c = 0; c < channels; ++c) {
    const Extended d = value[c] - Extended{mode.mean[c]}, variance = mode.variance[c];
    mode.mean[c] = static_cast<Tev64f>(mode.mean[c] + share(d));
    mode.variance[c] = static_cast<Tev64f>(variance + share(d * d - variance));
  }
}

// Moves all weights towards 1 for the matched mode and 0 for the others.
template <int channels>
void moveWeights(Mode<channels>* modes, int numModes, int matched, Extended rate) {
  for (int k = 0; k < numModes; ++k) {
    const Extended weight = modes[k].weight;
    modes[k].weight = static_cast<Tev64f>(weight + ((k == matched ? 1 : 0) - weight) * rate);
  }
}

template <int channels>
Extended samplesOf(const Mode<channels>* modes, int numModes) {
  std::int64_t samples = 0;
  for (int k = 0; k < numModes; ++k) samples += modes[k].count;
  return static_cast<Extended>(samples);
}

// The worst mode starts again from a value that no mode matches. Its weight is left to the caller.
template <int channels>
void restart(Mode<channels>& mode, const Tev8u* value, Tev64f variance) {
  mode.count = 1;
  for (int c = 0; c < channels; ++c) {
    mode.variance[c] = variance;
    mode.mean[c] = value[c];
  }
}

// The rule of all calls but one: every value counts the same, so that weights are relative frequencies.
template <int channels>
void learnFromAllSamples(Mode<channels>* modes, int matched, const Tev8u* value, const State& state) {
  const int numModes = state.numModes;
  moveWeights(modes, numModes, matched, 1 / (samplesOf(modes, numModes) + 1));
  if (matched != none) {
    Mode<channels>& mode = modes[matched];
    mode.count = wrapAdd(Tev32s{mode.count}, 1);
    if (const Extended count = mode.count; count > 0) absorb(mode, value, [=](Extended v) { return v / count; });
  } else {
    restart(modes[numModes - 1], value, state.initVariance);
    const Extended samples = samplesOf(modes, numModes);
    for (int k = 0; k < numModes; ++k) modes[k].weight = static_cast<Tev64f>(modes[k].count / samples);
  }
}

// The rule of the call that completes the window, and of that call alone: samples older than the window fade. The
// matched mode's count stays. Callers have recorded sequences across this call, so it must not become the rule of all
// later calls, tempting as that looks.
template <int channels>
void learnFromWindow(Mode<channels>* modes, int matched, const Tev8u* value, const State& state) {
  const int numModes = state.numModes;
  const Extended window = state.window, rate = 1 / window;
  moveWeights(modes, numModes, matched, rate);
  if (matched != none) {
    const Extended rho = 1 / (window * modes[matched].weight);
    absorb(modes[matched], value, [=](Extended v) { return v * rho; });
  } else {
    Mode<channels>& worst = modes[numModes - 1];
    restart(worst, value, state.initVariance);
    worst.weight = static_cast<Tev64f>(1 / samplesOf(modes, numModes));
    for (int k = 0; k < numModes - 1; ++k) modes[k].weight = static_cast<Tev64f>(modes[k].weight * (1 - rate));
  }
}

template <int channels>
Extended varianceOf(const Mode<channels>& mode) {
  Extended sum = 0;
  for (int c = 0; c < channels; ++c) sum += mode.variance[c];
  return sum;
}

template <int channels>
Extended rankKey(const Mode<channels>& mode) {
  return mode.count > 0 ? mode.weight / std::sqrt(varianceOf(mode)) : Extended{0};
}

// Whether the key of `a` is at least that of `b`, by a look at their squares in double. False where they are too close
// to tell: each side is off by less than a hundredth of the margin.
template <int channels>
bool surelyAhead(const Mode<channels>& a, const Mode<channels>& b) {
  if (b.count <= 0) return true;
  Tev64f varianceA = 0, varianceB = 0;
  for (int c = 0; c < channels; ++c) {
    varianceA += a.variance[c];
    varianceB += b.variance[c];
  }
  const Tev64f left = a.weight * a.weight * varianceB, right = b.weight * b.weight * varianceA;
  return a.count > 0 && left > right * (1 + 1e-12) && left > 1e-200;
}

// Insertion sort, best mode first; modes of equal keys keep their order. Mostly they stand in order already, and no
// root needs to be taken.
template <int channels>
void rank(Mode<channels>* modes, int numModes) {
  int ordered = 1;
  while (ordered < numModes && surelyAhead(modes[ordered - 1], modes[ordered])) ++ordered;
  if (ordered == numModes) return;
  Extended keys[modesPerPixel];
  for (int k = 0; k < numModes; ++k) {
    keys[k] = rankKey(modes[k]);
    for (int i = k; i > 0 && keys[i - 1] < keys[i]; --i) {
      std::swap(keys[i - 1], keys[i]);
      std::swap(modes[i - 1], modes[i]);
    }
  }
}

// 0 where the mode at the matched position is one of the best that together exceed the background's share of weight.
// The position is the one before ranking, whichever mode stands there now: callers depend on masks made so.
template <int channels>
Tev8u decide(const Mode<channels>* modes, const State& state, int matched) {
  Extended weight = 0;
  for (int k = 0; k < state.numModes; ++k) {
    if (k == matched) return 0;
    weight += modes[k].weight;
    if (weight > state.backgroundRatio) break;
  }
  return 255;
}

template <int channels, bool windowComplete>
void updateRow(void** pixels, const Tev8u* src, Tev8u* background, Tev8u* foreground, int width, const State& state) {
  const Extended squaredThreshold = Extended{state.matchThreshold} * state.matchThreshold;
  for (int x = 0; x < width; ++x, src += channels, background += channels) {
    auto* const modes = static_cast<Mode<channels>*>(pixels[x]);
    const int matched = matchingMode(modes, state.numModes, src, squaredThreshold);
    if constexpr (windowComplete)
      learnFromWindow(modes, matched, src, state);
    else
      learnFromAllSamples(modes, matched, src, state);
    rank(modes, state.numModes);
    for (int c = 0; c < channels; ++c)
      background[c] = static_cast<Tev8u>(addHalfAndTruncate(Extended{modes[0].mean[c]}));
    foreground[x] = decide(modes, state, matched);
  }
}

template <int channels>
TevStatus update(const Tev8u* src, int srcStep, const Tev8u* ref, Tev8u* dst, int dstStep, TevSize roi, State* state) {
  if (TevStatus s =
          firstFailure(notNull(src, ref, dst, state), region(roi), rowFits<Tev8u>(srcStep, roi.width, channels)))
    return s;
  state->frameCount = wrapAdd(state->frameCount, 1);
  const auto updateRows = state->frameCount == state->window ? updateRow<channels, true> : updateRow<channels, false>;
  for (int y = 0; y < roi.height; ++y)
    updateRows(state->pixels + std::ptrdiff_t{y} * state->foregroundStep, rows(src, srcStep)[y],
               rows(state->backgroundImage, state->backgroundStep)[y],
               rows(state->foregroundImage, state->foregroundStep)[y], roi.width, *state);
  return teviCopy_8u_C1R(state->foregroundImage, state->foregroundStep, dst, dstStep, roi);
}

}  // namespace

TevStatus teviForegroundGaussianInitAlloc_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* ref,
                                                 TevForegroundGaussianState** state) {
  return initAlloc<1>(src, srcStep, roiSize, ref, state);
}

TevStatus teviForegroundGaussianInitAlloc_8u_C3R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* ref,
                                                 TevForegroundGaussianState** state) {
  return initAlloc<3>(src, srcStep, roiSize, ref, state);
}

TevStatus teviForegroundGaussian_8u_C1R(const Tev8u* src, int srcStep, Tev8u* ref, int, Tev8u* dst, int dstStep,
                                        TevSize roiSize, TevForegroundGaussianState* state) {
  return update<1>(src, srcStep, ref, dst, dstStep, roiSize, state);
}

TevStatus teviForegroundGaussian_8u_C3R(const Tev8u* src, int srcStep, Tev8u* ref, int, Tev8u* dst, int dstStep,
                                        TevSize roiSize, TevForegroundGaussianState* state) {
  return update<3>(src, srcStep, ref, dst, dstStep, roiSize, state);
}

TevStatus teviForegroundGaussianFree_8u_C1R(TevForegroundGaussianState* state) { return release(state); }
TevStatus teviForegroundGaussianFree_8u_C3R(TevForegroundGaussianState* state) { return release(state); }
