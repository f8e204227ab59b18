// Running sums along source rows, for several rows at once and in registers.
//
// This is the one place of the subsystem that spells vectors out: a running sum carries from element to element, and no
// compiler of today turns the plain loop into vectors. The vectors are those of GCC and Clang (`vector_size`,
// `__builtin_shufflevector`), which both compile to whatever the processor of the build has.
//
// A vector is cut into lanes of 128 bits, and each lane belongs to one source row: shuffles inside lanes are cheap on
// every processor, and several rows go through the same instructions. Of each row,
//
//     window[x] = the sum of four neighbours that ends at x      two shifts and two additions
//     running[x] = running[x - 4] + window[x]                    one addition for four pixels
//
// so that nothing steps from pixel to pixel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "tevcv/types.h"

// All of it is inlined: no vector is ever passed as the warning fears.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace tevcv {

template <class T, int bytes>
struct VectorOf {
  typedef T Type __attribute__((vector_size(bytes)));
};
template <class T, int count>
using Vector = typename VectorOf<T, count* int{sizeof(T)}>::Type;
template <class T, int rows>
using Lanes = typename VectorOf<T, 16 * rows>::Type;

template <class V>
V load(const void* from) {
  V v;
  std::memcpy(&v, from, sizeof v);
  return v;
}
template <class V>
void store(void* to, V v) {
  std::memcpy(to, &v, sizeof v);
}

template <class V>
using ElementOf = std::remove_cvref_t<decltype(std::declval<V>()[0])>;
template <class V>
inline constexpr int elementsOf = int{sizeof(V)} / int{sizeof(ElementOf<V>)};
template <class V>
inline constexpr int elementsOfLane = 16 / int{sizeof(ElementOf<V>)};

// A vector whose element i is the element Index::template of<V>(i) of `a` followed by `b`.
template <class Index, int count, class V>
auto shuffled(V a, V b) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    return __builtin_shufflevector(a, b, Index::template of<V>(i)...);
  }
  (std::make_integer_sequence<int, count>{});
}

// Element x - 1 of the row at element x. In front of `v` its lane held `before`.
struct OneBack {
  template <class V>
  static constexpr int of(int i) {
    constexpr int n = elementsOfLane<V>;
    return i % n == 0 ? i + n - 1 : elementsOf<V> + i - 1;
  }
};
template <class V>
V oneBack(V before, V v) {
#if defined(__SSSE3__)
  return shuffled<OneBack, elementsOf<V>>(before, v);
#else
  const V zero = {};
  return shuffled<OneBack, elementsOf<V>>(zero, v) | shuffled<OneBack, elementsOf<V>>(before, zero);
#endif
}
// The same over two elements, as one of twice the size.
template <class V>
V twoBack(V before, V v) {
  using Pairs = Vector<std::conditional_t<sizeof(ElementOf<V>) == 2, std::uint32_t, std::uint64_t>, elementsOf<V> / 2>;
  return reinterpret_cast<V>(oneBack(reinterpret_cast<Pairs>(before), reinterpret_cast<Pairs>(v)));
}

// The first or the second half of each lane, its elements widened by interleaving them with zeros.
template <int half>
struct HalfOfLane {
  template <class V>
  static constexpr int of(int i) {
    constexpr int n = elementsOfLane<V>;
    return i / n * n + half * (n / 2) + i % n / 2 + i % 2 * elementsOf<V>;
  }
};
template <int half, class Wide, class V>
Wide widened(V v) {
  return reinterpret_cast<Wide>(shuffled<HalfOfLane<half>, elementsOf<V>>(v, V{}));
}

// Lane `row` of `a` followed by lane `row` of `b`.
template <int row>
struct LanesOfRow {
  template <class V>
  static constexpr int of(int i) {
    constexpr int n = elementsOfLane<V>;
    return i / n * elementsOf<V> + row * n + i % n;
  }
};

// Sixteen pixels of each row.
template <int rows>
Lanes<Tev8u, rows> sixteenPixels(const Tev8u* pixels, std::ptrdiff_t step) {
  if constexpr (rows == 1) {
    return load<Lanes<Tev8u, 1>>(pixels);
  } else {
    // Joined as words, which compilers do in one instruction.
    using Half = Lanes<std::uint64_t, rows / 2>;
    const auto a = reinterpret_cast<Half>(sixteenPixels<rows / 2>(pixels, step));
    const auto b = reinterpret_cast<Half>(sixteenPixels<rows / 2>(pixels + rows / 2 * step, step));
    return [&]<int... i>(std::integer_sequence<int, i...>) {
      return reinterpret_cast<Lanes<Tev8u, rows>>(__builtin_shufflevector(a, b, i...));
    }
    (std::make_integer_sequence<int, 2 * rows>{});
  }
}

// How many rows go together: as many as the widest vector has lanes.
#if defined(__AVX512BW__)
inline constexpr int rowsTogether = 4;
#elif defined(__AVX2__)
inline constexpr int rowsTogether = 2;
#else
inline constexpr int rowsTogether = 1;
#endif

// What is summed: the pixels, or their squares.
struct Pixels {
  static constexpr int largest = 255;
  static Tev32s of(Tev8u pixel) { return pixel; }
};
struct Squares {
  static constexpr int largest = 255 * 255;
  static Tev32s of(Tev8u pixel) { return pixel * pixel; }
};

// The sums of windows of four terms along each row. The sums of four terms are small: as signed words they are added to
// each other before they meet the running sums, and the compiler keeps that order, which shortens the way from one
// running sum to the next.
template <class Terms, int rows>
class Windows;

template <int rows>
class Windows<Pixels, rows> {
 public:
  // Eight pixels of each row: the windows that end at the first four, and at the others.
  void next(Lanes<Tev16u, rows> pixels, Lanes<Tev32s, rows>& first, Lanes<Tev32s, rows>& second) {
    const auto two = pixels + oneBack(pixels_, pixels), four = two + twoBack(two_, two);
    pixels_ = pixels;
    two_ = two;
    first = widened<0, Lanes<Tev32s, rows>>(four);
    second = widened<1, Lanes<Tev32s, rows>>(four);
  }

 private:
  Lanes<Tev16u, rows> pixels_ = {}, two_ = {};
};

template <int rows>
class Windows<Squares, rows> {
 public:
  void next(Lanes<Tev16u, rows> pixels, Lanes<Tev32s, rows>& first, Lanes<Tev32s, rows>& second) {
    const auto squares = pixels * pixels;
    const auto a = widened<0, Lanes<Tev32s, rows>>(squares), b = widened<1, Lanes<Tev32s, rows>>(squares);
    const auto twoA = a + oneBack(squares_, a), twoB = b + oneBack(a, b);
    first = twoA + twoBack(two_, twoA);
    second = twoB + twoBack(twoA, twoB);
    squares_ = b;
    two_ = twoB;
  }

 private:
  Lanes<Tev32s, rows> squares_ = {}, two_ = {};
};

// The running sums along `rows` source rows, from their first pixels on: unsigned words where they may wrap, signed
// ones where they are to become floats.
template <class Terms, class Word, int rows>
class RunningSums {
 public:
  using Sums = Lanes<Word, rows>;

  // Goes on by sixteen pixels of each row. take(i, first, second) receives the sums of pixels i to i + 3 and i + 4 to
  // i + 7 of these: lane r holds those of row r.
  template <class Take>
  void next(const Tev8u* pixels, std::ptrdiff_t step, Take take) {
    const auto bytes = sixteenPixels<rows>(pixels, step);
    nextEight(widened<0, Lanes<Tev16u, rows>>(bytes), 0, take);
    nextEight(widened<1, Lanes<Tev16u, rows>>(bytes), 8, take);
  }

 private:
  template <class Take>
  void nextEight(Lanes<Tev16u, rows> pixels, int i, Take take) {
    Lanes<Tev32s, rows> first, second;
    windows_.next(pixels, first, second);
    second += first;
    const Sums before = running_;
    running_ = before + reinterpret_cast<Sums>(second);
    take(i, before + reinterpret_cast<Sums>(first), running_);
  }

  Windows<Terms, rows> windows_;
  Sums running_ = {};
};

// Running sums as the numbers of a table of T, to be added to its elements, eight in one vector where a row's eight
// make one, else in two parts of four: here part `part` of row `row`.
template <class T, int rows>
inline constexpr int partsOfEight = rows == 1 || sizeof(T) == 8 ? 2 : 1;

template <class T, int row, int part, class Sums>
auto asNumbers(Sums first, Sums second) {
  constexpr int count = 8 / partsOfEight<T, int{sizeof(Sums)} / 16>;
  const auto sums = shuffled<LanesOfRow<row>, count>(part == 0 ? first : second, second);
  if constexpr (std::is_same_v<T, Tev64f>)  // element by element: compilers make one conversion of it
    return Vector<Tev64f, 4>{static_cast<Tev64f>(sums[0]), static_cast<Tev64f>(sums[1]), static_cast<Tev64f>(sums[2]),
                             static_cast<Tev64f>(sums[3])};
  else
    return __builtin_convertvector(sums, Vector<T, count>);
}

}  // namespace tevcv
