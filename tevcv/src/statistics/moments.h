// Sums of a share of rows, of the elements and of their squares, for the mean and the standard deviation.
//
// Integers: the sum is exact. Squares are exact within a row and rows are added into a Tev64f. 16-bit elements are
// squared about the middle of their range, which keeps each square in 32 bits; trueSquares() takes the offset back.
//
// Floats: one accumulator a sum, in scan order, held in extended precision over all rows of a share; it becomes a
// Tev64f only where a thread's share is stored in its slot. The order and the width are part of the result, so these
// chains stay chains.
//
// A mask costs no branch: a pixel that it leaves out is read, its bits are anded to 0, and 0 is added.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"

namespace tevcv::moments {

// The elements of a region that are looked at: `channels` apart, those whose mask element is not 0 where there is one.
template <class T, int channels, bool masked>
struct Elements {
  Rows<const T> image;
  Rows<const Tev8u> mask;
  TevSize roi;
};

template <class T, int channels>
Elements<T, channels, false> elements(const T* src, int srcStep, TevSize roi, int coi = 1) {
  return {rows(src + (coi - 1), srcStep), {nullptr, 0}, roi};
}
template <class T, int channels>
Elements<T, channels, true> elements(const T* src, int srcStep, const Tev8u* mask, int maskStep, TevSize roi,
                                     int coi = 1) {
  return {rows(src + (coi - 1), srcStep), rows(mask, maskStep), roi};
}

template <class T>
inline constexpr int squareOffset = std::is_same_v<T, Tev16u> ? 32768 : 0;

// What one share of rows adds up to. An integer sum is exact in any order; it is kept as a word until it is stored.
template <class T>
struct Sums {
  std::conditional_t<std::is_integral_v<T>, std::int64_t, Extended> sum = 0;
  std::conditional_t<std::is_integral_v<T>, Tev64f, Extended> squares = 0;  // about squareOffset<T>
  std::int64_t count = 0;                                                   // of the selected pixels
};

// The mask's element as a word of all ones or zeros; all ones where there is no mask.
template <bool masked, class Word = std::int32_t>
Word keep(const Tev8u* mask, int x) {
  if constexpr (masked)
    return static_cast<Word>(-Word{mask[x] != 0});
  else
    return static_cast<Word>(-1);
}

template <bool masked>
int countSelected(const Tev8u* mask, int width) {
  if constexpr (!masked) return width;
  int count = 0;
  for (int x = 0; x < width; ++x) count += mask[x] != 0;
  return count;
}

// Sums of a run of elements that is short enough for 32-bit words: 32640 * 65025 is below 2^31.
inline constexpr int longestRun = 32640;
template <class T>
struct RunSums {
  int sum = 0, selected = 0;
  std::conditional_t<sizeof(T) == 1, int, std::int64_t> squares = 0;  // about squareOffset<T>
};

template <bool withSquares, class T, int channels, bool masked>
void addRun(const T* p, const Tev8u* mask, int count, RunSums<T>& sums) {
  int sum = 0;
  decltype(sums.squares) squares = 0;
  for (int x = 0; x < count; ++x) {
    const int kept = (p[std::ptrdiff_t{x} * channels] - squareOffset<T>)&keep<masked>(mask, x);
    sum += kept;
    if constexpr (withSquares) squares += kept * kept;
  }
  const int selected = countSelected<masked>(mask, count);
  sums.sum += sum + squareOffset<T> * selected;
  sums.squares += squares;
  sums.selected += selected;
}

// The same for a block of adjacent bytes, in the forms that vector units have: squares as products of 16-bit words, the
// sum as distances of unsigned bytes from what the mask leaves out of them. The bytes are x + 128 for signed x and 255
// - x for unsigned x (x itself would let the compiler see through the distances and leave them).
//
// A block is a few vectors, and more of those of 64 bytes, so that fewer sums go across one. The count under a mask is
// a byte.
#ifdef __AVX512BW__
inline constexpr int longBlock = 512, shortBlock = 128;
#else
inline constexpr int longBlock = 128, shortBlock = 128;
#endif

template <int blockLength, bool withSquares, bool masked, class T>
void addBlock(const T* p, const Tev8u* mask, RunSums<T>& sums) {
  constexpr Tev8u flip = std::is_signed_v<T> ? 128 : 255;
  Tev16s kept[blockLength];
  Tev8u all[blockLength], left[blockLength];
  for (int x = 0; x < blockLength; ++x) {
    all[x] = static_cast<Tev8u>(p[x] ^ flip);
    left[x] = static_cast<Tev8u>((p[x] ^ flip) & ~keep<masked, Tev8s>(mask, x));
  }
  int sum = 0, squares = 0;
  for (int x = 0; x < blockLength; ++x) sum += std::abs(all[x] - left[x]);
  if constexpr (withSquares) {
    for (int x = 0; x < blockLength; ++x) kept[x] = static_cast<Tev16s>(p[x] & keep<masked, Tev16s>(mask, x));
    for (int x = 0; x < blockLength; ++x) squares += kept[x] * kept[x];
  }
  std::conditional_t<masked, Tev8u, int> selected = masked ? 0 : blockLength;
  if constexpr (masked)
    for (int x = 0; x < blockLength; ++x) selected = static_cast<Tev8u>(selected + (mask[x] != 0));
  sums.sum += std::is_signed_v<T> ? sum - flip * selected : flip * selected - sum;
  sums.squares += squares;
  sums.selected += selected;
}

template <bool withSquares, class T, int channels, bool masked>
void addIntegerRow(const T* p, const Tev8u* mask, int width, Sums<T>& sums) {
  std::int64_t rowSquares = 0;
  for (int first = 0; first < width; first += longestRun) {
    const int end = std::min(longestRun, width - first) + first;
    RunSums<T> run;
    int x = first;
    if constexpr (sizeof(T) == 1 && channels == 1 && !masked)
      for (; x + longBlock <= end; x += longBlock) addBlock<longBlock, withSquares, masked>(p + x, nullptr, run);
    if constexpr (sizeof(T) == 1 && channels == 1)
      for (; x + shortBlock <= end; x += shortBlock)
        addBlock<shortBlock, withSquares, masked>(p + x, masked ? mask + x : nullptr, run);
    addRun<withSquares, T, channels, masked>(p + std::ptrdiff_t{x} * channels, masked ? mask + x : nullptr, end - x,
                                             run);
    sums.sum += run.sum;
    sums.count += run.selected;
    rowSquares += run.squares;
  }
  sums.squares += static_cast<Tev64f>(rowSquares);
}

template <bool masked>
Tev32f selected(Tev32f value, const Tev8u* mask, int x) {
  return std::bit_cast<Tev32f>(std::bit_cast<std::int32_t>(value) & keep<masked>(mask, x));
}

template <bool withSquares, int channels, bool masked>
void addFloatRow(const Tev32f* p, const Tev8u* mask, int width, Sums<Tev32f>& sums) {
  Extended sum = sums.sum, squares = sums.squares;
  for (int x = 0; x < width; ++x) {
    const Extended value = selected<masked>(p[std::ptrdiff_t{x} * channels], mask, x);
    sum += value;
    if constexpr (withSquares) squares += value * value;
  }
  sums.sum = sum;
  sums.squares = squares;
  sums.count += countSelected<masked>(mask, width);
}

// The sums of the rows from `first` to `end`.
template <bool withSquares, class T, int channels, bool masked>
Sums<T> sumRows(const Elements<T, channels, masked>& e, int first, int end) {
  Sums<T> sums;
  for (int y = first; y < end; ++y) {
    const Tev8u* const mask = masked ? e.mask[y] : nullptr;
    if constexpr (std::is_integral_v<T>)
      addIntegerRow<withSquares, T, channels, masked>(e.image[y], mask, e.roi.width, sums);
    else
      addFloatRow<withSquares, channels, masked>(e.image[y], mask, e.roi.width, sums);
  }
  return sums;
}

// Whether a region has enough pixels for each thread to share it out.
inline bool worthSharing(TevSize roi, int pixelsPerThread) {
  return std::int64_t{roi.width} * roi.height >= std::int64_t{owncvGetMaxNumThreads()} * pixelsPerThread;
}

}  // namespace tevcv::moments
