// Sums of a share of rows, of the elements and of their squares, for the mean and the standard deviation.
//
// Integers: the sum is exact. Squares are exact within a row and rows are added into a Tev64f. 16-bit elements are
// squared about the middle of their range, which keeps each square in 32 bits; trueSquares() takes the offset back.
//
// Floats: one accumulator a sum, in scan order, held in extended precision over all rows of a share. The order and the
// width are part of the result, so these chains stay chains.
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

template <bool withSquares, class T, int channels, bool masked>
void addIntegerRow(const T* p, const Tev8u* mask, int width, Sums<T>& sums) {
  // Chunks keep the inner sums in 32 bits: 32768 elements below 2^16 in magnitude; squares of bytes likewise. Squares
  // of 16-bit elements take 30 bits each and are added in 64.
  constexpr int chunk = 32768;
  std::int64_t rowSquares = 0;
  for (int first = 0; first < width; first += chunk) {
    const int count = std::min(chunk, width - first);
    const T* const q = p + std::ptrdiff_t{first} * channels;
    const Tev8u* const m = masked ? mask + first : nullptr;
    int sum = 0;
    std::conditional_t<sizeof(T) == 1, std::uint32_t, std::int64_t> squares = 0;
    for (int x = 0; x < count; ++x) {
      const int value = q[std::ptrdiff_t{x} * channels] - squareOffset<T>;
      const int kept = value & keep<masked>(m, x);
      sum += kept;
      if constexpr (withSquares) squares += static_cast<std::uint32_t>(kept * kept);
    }
    const int selected = countSelected<masked>(m, count);
    sums.sum += sum + std::int64_t{squareOffset<T>} * selected;
    sums.count += selected;
    rowSquares += squares;
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
