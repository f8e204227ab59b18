// Foreground of a video by what has been seen at each pixel, and how often of that as background.
//
// A pixel keeps two tables of features with their probabilities. While it does not change from frame to frame its
// feature is its colour; while it changes, the pair of its colours before and after, which tells waving leaves from a
// passer-by. A feature F is background where P(F | background) P(background) is more than half of P(F), by Bayes' rule.
// Detection classifies a frame; a separate call learns from it, so that the caller may clean the mask between the two.
//
// Probabilities are kept as floats; what happens between two stores runs in extended precision.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "motion/allocation.h"
#include "tevcv/memory.h"
#include "tevcv/motion.h"
#include "tevcv/primitives.h"

using namespace tevcv;

namespace {

using State = TevForegroundHistogramState;

// A colour, or a colour before and a colour after. Unused bytes stay 0. Tables descend by `prob`; 0 is a free place.
template <int capacity>
struct Entry {
  Tev32f prob;
  Tev32f backgroundProb;
  Tev8u feature[capacity];
};
using ColorEntry = Entry<3>;
using PairEntry = Entry<6>;

struct Pixel {
  Tev32f colorBackgroundProb;
  Tev32f pairBackgroundProb;
  ColorEntry* colorTable;
  PairEntry* pairTable;
  Tev8u colorLearned;
  Tev8u pairLearned;
};

constexpr int colorEntries = 25, pairEntries = 40;
static_assert(sizeof(ColorEntry) * colorEntries == 300 && sizeof(PairEntry) * pairEntries == 640);
static_assert(sizeof(void*) != 4 || (sizeof(Pixel) == 20 && sizeof(State) == 100));

// ---- Creation and release ----

// Everything that was allocated; null pointers are passed over.
void releaseAll(State* state, ColorEntry* colorTables, PairEntry* pairTables) {
  tevsFree(colorTables);
  tevsFree(pairTables);
  tevsFree(state->pixels);
  tevsFree(state->background);
  tevsFree(state->changeMask);
  tevsFree(state->backgroundDiffMask);
  tevsFree(state->previous);
  tevsFree(state);
}

// Zeroed memory: nothing learned, no probability.
template <class T>
T* allocateZeroed(TevSize roi, int count = 1) {
  const int bytesPerPixel = count * int{sizeof(T)};
  Tev8u* const block = allocateForPixels(roi, bytesPerPixel);
  if (block) std::memset(block, 0, static_cast<std::size_t>(roi.width) * roi.height * bytesPerPixel);
  return reinterpret_cast<T*>(block);
}

State* allocate(TevSize roi, int channels) {
  State* const state = allocateZeroed<State>({1, 1});
  if (!state) return nullptr;
  ColorEntry* colorTables = nullptr;
  PairEntry* pairTables = nullptr;
  auto* const pixels = allocateZeroed<Pixel>(roi);
  state->pixels = pixels;
  if (pixels && (colorTables = allocateZeroed<ColorEntry>(roi, colorEntries)) &&
      (pairTables = allocateZeroed<PairEntry>(roi, pairEntries)) &&
      (state->background = allocateForPixels(roi, channels)) && (state->changeMask = allocateZeroed<Tev8u>(roi)) &&
      (state->backgroundDiffMask = allocateZeroed<Tev8u>(roi)) &&
      (state->previous = allocateForPixels(roi, channels))) {
    const int count = roi.width * roi.height;
    for (int i = 0; i < count; ++i) {
      pixels[i].colorTable = colorTables + std::ptrdiff_t{i} * colorEntries;
      pixels[i].pairTable = pairTables + std::ptrdiff_t{i} * pairEntries;
    }
    return state;
  }
  releaseAll(state, colorTables, pairTables);
  return nullptr;
}

template <int channels>
void copyImage(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roi) {
  if constexpr (channels == 1)
    teviCopy_8u_C1R(src, srcStep, dst, dstStep, roi);
  else
    teviCopy_8u_C3R(src, srcStep, dst, dstStep, roi);
}

template <int channels>
TevStatus initAlloc(const Tev8u* src, int srcStep, TevSize roi, const Tev8u* ref, State** result) {
  if (TevStatus s = firstFailure(notNull(src, ref, result), region(roi), rowFits<Tev8u>(srcStep, roi.width, channels)))
    return s;
  State* const state = allocate(roi, channels);
  if (!state) return tevStatusNoMemory;
  state->backgroundStep = state->previousStep = roi.width * channels;
  state->changeStep = state->backgroundDiffStep = roi.width;
  state->colorLevels = 128;
  state->colorPeek = 15;
  state->colorEntries = colorEntries;
  state->pairLevels = 64;
  state->pairPeek = 25;
  state->pairEntries = pairEntries;
  state->unusedFlags[0] = state->unusedFlags[1] = 1;
  state->backgroundAlpha = 0.1F;
  state->slowAlpha = 0.005F;
  state->fastAlpha = 0.1F;
  state->delta = 2.0F;
  state->learnedThreshold = 0.9F;
  copyImage<channels>(src, srcStep, state->background, state->backgroundStep, roi);
  copyImage<channels>(src, srcStep, state->previous, state->previousStep, roi);
  *result = state;
  return tevStatusOk;
}

TevStatus release(State* state) {
  if (TevStatus s = notNull(state)) return s;
  const auto* const first = static_cast<Pixel*>(state->pixels);
  releaseAll(state, first->colorTable, first->pairTable);
  return tevStatusOk;
}

// How far two colours may lie apart and still be the same feature.
int toleranceOf(Tev32f delta, int levels) { return static_cast<int>(Extended{delta} * 256 / levels); }

template <int length, class E>
bool isFeature(const E& entry, const Tev8u* feature, int tolerance) {
  for (int i = 0; i < length; ++i)
    if (std::abs(entry.feature[i] - feature[i]) > tolerance) return false;
  return true;
}

// ---- Detection ----

// Counts of the absolute differences 0..255 of two rows, added up over rows. Four counters for each difference take
// turns: equal neighbours, which are the rule, need not wait for each other.
struct DifferenceCounts {
  std::uint32_t counts[4][256] = {};

  void addRow(const Tev8u* a, const Tev8u* b, int length) {
    for (int i = 0; i < length; ++i) ++counts[i & 3][std::abs(a[i] - b[i])];
  }
  std::int64_t operator[](int difference) const {
    std::int64_t sum = 0;
    for (const auto& part : counts) sum += part[difference];
    return sum;
  }
};

// The greatest standard deviation of the differences from some t to 255, and at least 10: what noise can do, which
// adapts to the light. Differences are whole, so the threshold's whole part does its work.
int noiseThreshold(const DifferenceCounts& counts) {
  Extended greatest = 10;
  std::int64_t count = counts[255], sum = 255 * count, sumOfSquares = 255 * sum;
  for (int t = 254; t >= 0; --t) {
    const std::int64_t h = counts[t];
    count += h, sum += t * h, sumOfSquares += t * t * h;
    const auto n = static_cast<Extended>(count == 0 ? 1 : count);
    const Extended mean = static_cast<Extended>(sum) / n, meanSquare = static_cast<Extended>(sumOfSquares) / n;
    if (const Extended deviation = std::sqrt(meanSquare - mean * mean); deviation > greatest) greatest = deviation;
  }
  return static_cast<int>(greatest);
}

template <int channels>
void markDifferences(const Tev8u* a, const Tev8u* b, Tev8u* mask, int width, int threshold) {
  for (int x = 0; x < width; ++x) {
    int difference = 0;
    for (int c = 0; c < channels; ++c)
      difference = std::max(difference, std::abs(a[x * channels + c] - b[x * channels + c]));
    mask[x] = difference > threshold ? 255 : 0;
  }
}

template <int channels>
void findDifferences(Rows<const Tev8u> src, Rows<Tev8u> reference, Rows<Tev8u> mask, TevSize roi) {
  DifferenceCounts counts;
  for (int y = 0; y < roi.height; ++y) counts.addRow(src[y], reference[y], roi.width * channels);
  const int threshold = noiseThreshold(counts);
  for (int y = 0; y < roi.height; ++y) markDifferences<channels>(src[y], reference[y], mask[y], roi.width, threshold);
}

// 255 unless the features seen like this one were mostly background. Rare features are not asked.
template <int length, class E>
Tev8u judge(const E* table, int peek, const Tev8u* feature, int tolerance, Tev32f rare, Tev32f backgroundProb) {
  Extended p = 0, pb = 0;
  for (int i = 0; i < peek && table[i].prob > rare; ++i)
    if (isFeature<length>(table[i], feature, tolerance)) {
      p += table[i].prob;
      pb += table[i].backgroundProb;
    }
  return 2 * pb * backgroundProb <= p ? 255 : 0;
}

template <int channels>
TevStatus detect(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roi, const State* state) {
  if (TevStatus s = firstFailure(notNull(src, dst, state), region(roi), rowFits<Tev8u>(srcStep, roi.width, channels)))
    return s;
  const auto frame = rows(src, srcStep);
  const auto change = rows(state->changeMask, state->changeStep);
  const auto backgroundDiff = rows(state->backgroundDiffMask, state->backgroundDiffStep);
  findDifferences<channels>(frame, rows(state->previous, state->previousStep), change, roi);
  findDifferences<channels>(frame, rows(state->background, state->backgroundStep), backgroundDiff, roi);

  const int colorTolerance = toleranceOf(state->delta, state->colorLevels);
  const int pairTolerance = toleranceOf(state->delta, state->pairLevels);
  const Tev8u* const last = frame[roi.height - 1] + std::ptrdiff_t{roi.width} * channels - 1;
  for (int y = 0; y < roi.height; ++y) {
    const auto* const pixels = static_cast<const Pixel*>(state->pixels) + std::ptrdiff_t{y} * state->changeStep;
    for (int x = 0; x < roi.width; ++x) {
      const Pixel& pixel = pixels[x];
      const Tev8u* const value = frame[y] + std::ptrdiff_t{x} * channels;
      Tev8u foreground = 0;
      if (change[y][x]) {
        // A pair is judged by its first three bytes against the pixel's byte and the two behind it. With one channel
        // those are the colour before, the colour after and 0 against three neighbours in memory, on which callers'
        // masks depend. Past the region's end its last byte is taken again.
        const Tev8u run[3] = {value[0], *std::min(value + 1, last), *std::min(value + 2, last)};
        foreground = !pixel.pairLearned ? 255
                                        : judge<3>(pixel.pairTable, state->pairPeek, run, pairTolerance,
                                                   state->slowAlpha, pixel.pairBackgroundProb);
      } else if (backgroundDiff[y][x] && pixel.colorLearned) {
        foreground = judge<channels>(pixel.colorTable, state->colorPeek, value, colorTolerance, state->slowAlpha,
                                     pixel.colorBackgroundProb);
      }
      rows(dst, dstStep)[y][x] = foreground;
    }
  }
  return tevStatusOk;
}

// ---- Learning ----

// Forgets by the factor `keep`. True where that leaves the entry a probability worth keeping.
template <class E>
bool decay(E& entry, Extended keep) {
  entry.prob = static_cast<Tev32f>(entry.prob * keep);
  entry.backgroundProb = static_cast<Tev32f>(entry.backgroundProb * keep);
  if (!(entry.prob < 1e-10)) return true;
  entry.prob = entry.backgroundProb = 0;
  return false;
}

// The walks go on over entries that are near the feature and end at the first that is not; what lies behind is not
// decayed, and no entry is reinforced. Programs have tuned their thresholds to models that learn in just this way.
// Over pairs a walk ends at a free place too; over colours it does not.
template <int length>
void decayTable(PairEntry* table, int entries, const Tev8u* feature, int tolerance, Extended keep) {
  for (int i = 0; i < entries && table[i].prob != 0; ++i)
    if (decay(table[i], keep) && !isFeature<length>(table[i], feature, tolerance)) return;
}
template <int length>
void decayTable(ColorEntry* table, int entries, const Tev8u* feature, int tolerance, Extended keep) {
  for (int i = 0; i < entries; ++i)
    if (decay(table[i], keep) && !isFeature<length>(table[i], feature, tolerance)) return;
}

// The last entry makes room for the feature, which goes in front of the first entry that is not more probable.
template <int length, class E>
void insert(E* table, int entries, const Tev8u* feature, Tev32f prob) {
  E entry = table[entries - 1];
  entry.prob = entry.backgroundProb = prob;
  std::copy_n(feature, length, entry.feature);
  int place = 0;
  while (place < entries - 1 && !(prob >= table[place].prob)) ++place;
  std::memmove(table + place + 1, table + place, static_cast<std::size_t>(entries - 1 - place) * sizeof(E));
  table[place] = entry;
}

// One table takes in a feature. Returns true where the feature's table was found to explain the pixel without the
// background: its probabilities have been turned to the other hypothesis then.
template <int length, class E>
bool learn(E* table, int entries, int peek, const Tev8u* feature, int tolerance, bool background, const State& state,
           Tev8u& learned, Tev32f& pixelBackgroundProb) {
  const Tev32f alpha = learned ? state.slowAlpha : state.fastAlpha;
  const Extended keep = 1 - Extended{alpha};
  pixelBackgroundProb = static_cast<Tev32f>(pixelBackgroundProb * keep);
  if (background) pixelBackgroundProb = static_cast<Tev32f>(Extended{pixelBackgroundProb} + alpha);
  decayTable<length>(table, entries, feature, tolerance, keep);
  insert<length>(table, entries, feature, alpha);

  Extended p = 0, pb = 0;
  int used = 0;
  for (; used < peek && table[used].prob != 0; ++used) {
    p += table[used].prob;
    pb += table[used].backgroundProb;
  }
  if (state.learnedThreshold < p) learned = 1;
  const Extended prior = pixelBackgroundProb;
  if (!(state.learnedThreshold < p - pb * prior)) return false;
  for (int i = 0; i < used; ++i)
    table[i].backgroundProb = static_cast<Tev32f>((table[i].prob - table[i].backgroundProb * prior) / (1 - prior));
  return true;
}

template <int channels>
TevStatus update(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep, const Tev8u* ref, TevSize roi,
                 State* state) {
  if (TevStatus s =
          firstFailure(notNull(src, mask, ref, state), region(roi), rowFits<Tev8u>(srcStep, roi.width, channels)))
    return s;
  const int colorTolerance = toleranceOf(state->delta, state->colorLevels);
  const int pairTolerance = toleranceOf(state->delta, state->pairLevels);
  const Extended alpha = state->backgroundAlpha;
  for (int y = 0; y < roi.height; ++y) {
    auto* const pixels = static_cast<Pixel*>(state->pixels) + std::ptrdiff_t{y} * state->changeStep;
    const Tev8u* current = rows(src, srcStep)[y];
    const Tev8u* previous = rows(state->previous, state->previousStep)[y];
    Tev8u* known = rows(state->background, state->backgroundStep)[y];
    const Tev8u* const foreground = rows(mask, maskStep)[y];
    const Tev8u* const change = rows(state->changeMask, state->changeStep)[y];
    const Tev8u* const backgroundDiff = rows(state->backgroundDiffMask, state->backgroundDiffStep)[y];
    for (int x = 0; x < roi.width; ++x, current += channels, previous += channels, known += channels) {
      Pixel& pixel = pixels[x];
      const bool background = foreground[x] == 0;
      if (change[x] || !pixel.pairLearned) {
        Tev8u pair[2 * channels];
        std::copy_n(previous, channels, pair);
        std::copy_n(current, channels, pair + channels);
        learn<2 * channels>(pixel.pairTable, state->pairEntries, state->pairPeek, pair, pairTolerance, background,
                            *state, pixel.pairLearned, pixel.pairBackgroundProb);
      }
      // Where the colours turn, the pixel's share of background turns with them; that of pairs does not.
      if (!change[x] &&
          learn<channels>(pixel.colorTable, state->colorEntries, state->colorPeek, current, colorTolerance, background,
                          *state, pixel.colorLearned, pixel.colorBackgroundProb))
        pixel.colorBackgroundProb = static_cast<Tev32f>(1 - Extended{pixel.colorBackgroundProb});
      if (!background) continue;
      // 1 - alpha is not rounded to a float: with that, a background that stays the same would fade.
      const bool still = !change[x] && !backgroundDiff[x];
      for (int c = 0; c < channels; ++c)
        known[c] = still ? static_cast<Tev8u>((1 - alpha) * known[c] + alpha * current[c]) : current[c];
    }
  }
  copyImage<channels>(src, srcStep, state->previous, state->previousStep, roi);
  return tevStatusOk;
}

}  // namespace

TevStatus teviForegroundHistogramInitAlloc_8u_C1R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* ref,
                                                  TevForegroundHistogramState** state) {
  return initAlloc<1>(src, srcStep, roiSize, ref, state);
}

TevStatus teviForegroundHistogramInitAlloc_8u_C3R(const Tev8u* src, int srcStep, TevSize roiSize, Tev8u* ref,
                                                  TevForegroundHistogramState** state) {
  return initAlloc<3>(src, srcStep, roiSize, ref, state);
}

TevStatus teviForegroundHistogram_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                         TevForegroundHistogramState* state) {
  return detect<1>(src, srcStep, dst, dstStep, roiSize, state);
}

TevStatus teviForegroundHistogram_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                         TevForegroundHistogramState* state) {
  return detect<3>(src, srcStep, dst, dstStep, roiSize, state);
}

TevStatus teviForegroundHistogramUpdate_8u_C1R(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                               Tev8u* ref, int, TevSize roiSize, TevForegroundHistogramState* state) {
  return update<1>(src, srcStep, mask, maskStep, ref, roiSize, state);
}

TevStatus teviForegroundHistogramUpdate_8u_C3R(const Tev8u* src, int srcStep, const Tev8u* mask, int maskStep,
                                               Tev8u* ref, int, TevSize roiSize, TevForegroundHistogramState* state) {
  return update<3>(src, srcStep, mask, maskStep, ref, roiSize, state);
}

TevStatus teviForegroundHistogramFree_8u_C1R(TevForegroundHistogramState* state) { return release(state); }
TevStatus teviForegroundHistogramFree_8u_C3R(TevForegroundHistogramState* state) { return release(state); }
