// Filters with fixed masks against their definition: the image goes on by the border rule on all four sides, the row
// kernel and the column kernel are taken as sums.
#include <algorithm>
#include <limits>
#include <type_traits>

#include "kit/kit.h"
#include "tevcv/filtering.h"
#include "tevcv_internal/frame.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;
using kit::Threads;

namespace {

using Extended = long double;

struct Kernel {
  std::vector<int> taps3, taps5;
  const std::vector<int>& taps(int k) const { return k == 3 ? taps3 : taps5; }
};
const Kernel scharr = {{3, 10, 3}, {}};
const Kernel dx = {{-1, 0, 1}, {-1, -2, 0, 2, 1}};
const Kernel dxNeg = {{1, 0, -1}, {1, 2, 0, -2, -1}};
const Kernel d2x = {{1, -2, 1}, {1, 0, -2, 0, 1}};
const Kernel sobel = {{1, 2, 1}, {1, 4, 6, 4, 1}};
const Kernel sobelNeg = {{-1, -2, -1}, {-1, -4, -6, -4, -1}};
const Kernel avr = {{1, 1, 1}, {1, 1, 1, 1, 1}};

enum class Kind { separable, lowpass, laplacian };

// One filter with its size query, behind one signature for all members.
template <class Src, class Dst>
struct Member {
  const char* name;
  Kind kind;
  const Kernel *row, *column;
  bool has5x5;
  TevStatus (*filter)(const Src*, int, Dst*, int, TevSize, TevMaskSize, TevBorderType, Src, int divisor, Tev8u*);
  TevStatus (*size)(TevSize, TevMaskSize, int*);
};

template <auto call, class Src, class Dst>
TevStatus callFilter(const Src* s, int ss, Dst* d, int ds, TevSize roi, TevMaskSize mask, TevBorderType type, Src value,
                     int divisor, Tev8u* buffer) {
  using F = decltype(call);
  if constexpr (std::is_same_v<Dst, Tev8s>) {
    if constexpr (std::is_invocable_v<F, const Src*, int, Dst*, int, TevSize, int, int, Src, int, Tev8u*>)
      return call(s, ss, d, ds, roi, mask, type, value, divisor, buffer);
    else
      return call(s, ss, d, ds, roi, type, value, divisor, buffer);
  } else {
    if constexpr (std::is_invocable_v<F, const Src*, int, Dst*, int, TevSize, int, int, Src, Tev8u*>)
      return call(s, ss, d, ds, roi, mask, type, value, buffer);
    else
      return call(s, ss, d, ds, roi, type, value, buffer);
  }
}

template <auto query>
TevStatus callSize(TevSize roi, TevMaskSize mask, int* size) {
  if constexpr (std::is_invocable_v<decltype(query), TevSize, int, int*>)
    return query(roi, mask, size);
  else
    return query(roi, size);
}

template <auto call, auto query, class Src, class Dst>
Member<Src, Dst> member(const char* name, Kind kind, const Kernel& row, const Kernel& column, bool has5x5) {
  return {name, kind, &row, &column, has5x5, callFilter<call, Src, Dst>, callSize<query>};
}

#define MEMBER(call, query, Src, Dst, ...) member<call, query, Src, Dst>(#call, __VA_ARGS__)

template <class Src, class Dst>
const std::vector<Member<Src, Dst>>& members();

template <>
const std::vector<Member<Tev8u, Tev16s>>& members() {
  static const std::vector<Member<Tev8u, Tev16s>> list = {
      MEMBER(teviFilterScharrHorizBorder_8u16s_C1R, teviFilterScharrHorizGetBufferSize_8u16s_C1R, Tev8u, Tev16s,
             Kind::separable, scharr, dx, false),
      MEMBER(teviFilterScharrVertBorder_8u16s_C1R, teviFilterScharrVertGetBufferSize_8u16s_C1R, Tev8u, Tev16s,
             Kind::separable, dx, scharr, false),
      MEMBER(teviFilterSobelHorizBorder_8u16s_C1R, teviFilterSobelHorizGetBufferSize_8u16s_C1R, Tev8u, Tev16s,
             Kind::separable, sobel, dx, true),
      MEMBER(teviFilterSobelVertBorder_8u16s_C1R, teviFilterSobelVertGetBufferSize_8u16s_C1R, Tev8u, Tev16s,
             Kind::separable, dxNeg, sobel, true),
      MEMBER(teviFilterSobelNegVertBorder_8u16s_C1R, teviFilterSobelNegVertGetBufferSize_8u16s_C1R, Tev8u, Tev16s,
             Kind::separable, dxNeg, sobelNeg, true),
      MEMBER(teviFilterSobelHorizSecondBorder_8u16s_C1R, teviFilterSobelHorizSecondGetBufferSize_8u16s_C1R, Tev8u,
             Tev16s, Kind::separable, sobel, d2x, true),
      MEMBER(teviFilterSobelVertSecondBorder_8u16s_C1R, teviFilterSobelVertSecondGetBufferSize_8u16s_C1R, Tev8u, Tev16s,
             Kind::separable, d2x, sobel, true),
      MEMBER(teviFilterSobelCrossBorder_8u16s_C1R, teviFilterSobelCrossGetBufferSize_8u16s_C1R, Tev8u, Tev16s,
             Kind::separable, dxNeg, dx, true),
      MEMBER(teviFilterLaplacianBorder_8u16s_C1R, teviFilterLaplacianGetBufferSize_8u16s_C1R, Tev8u, Tev16s,
             Kind::laplacian, sobel, d2x, true)};
  return list;
}

template <>
const std::vector<Member<Tev8u, Tev8s>>& members() {
  static const std::vector<Member<Tev8u, Tev8s>> list = {
      MEMBER(teviFilterScharrHorizBorder_8u8s_C1R, teviFilterScharrHorizGetBufferSize_8u8s_C1R, Tev8u, Tev8s,
             Kind::separable, scharr, dx, false),
      MEMBER(teviFilterScharrVertBorder_8u8s_C1R, teviFilterScharrVertGetBufferSize_8u8s_C1R, Tev8u, Tev8s,
             Kind::separable, dx, scharr, false),
      MEMBER(teviFilterSobelHorizBorder_8u8s_C1R, teviFilterSobelHorizGetBufferSize_8u8s_C1R, Tev8u, Tev8s,
             Kind::separable, sobel, dx, true),
      MEMBER(teviFilterSobelVertBorder_8u8s_C1R, teviFilterSobelVertGetBufferSize_8u8s_C1R, Tev8u, Tev8s,
             Kind::separable, dxNeg, sobel, true),
      MEMBER(teviFilterSobelNegVertBorder_8u8s_C1R, teviFilterSobelNegVertGetBufferSize_8u8s_C1R, Tev8u, Tev8s,
             Kind::separable, dxNeg, sobelNeg, true),
      MEMBER(teviFilterSobelHorizSecondBorder_8u8s_C1R, teviFilterSobelHorizSecondGetBufferSize_8u8s_C1R, Tev8u, Tev8s,
             Kind::separable, sobel, d2x, true),
      MEMBER(teviFilterSobelVertSecondBorder_8u8s_C1R, teviFilterSobelVertSecondGetBufferSize_8u8s_C1R, Tev8u, Tev8s,
             Kind::separable, d2x, sobel, true),
      MEMBER(teviFilterSobelCrossBorder_8u8s_C1R, teviFilterSobelCrossGetBufferSize_8u8s_C1R, Tev8u, Tev8s,
             Kind::separable, dxNeg, dx, true),
      MEMBER(teviFilterLaplacianBorder_8u8s_C1R, teviFilterLaplacianGetBufferSize_8u8s_C1R, Tev8u, Tev8s,
             Kind::laplacian, sobel, d2x, true)};
  return list;
}

template <>
const std::vector<Member<Tev8u, Tev8u>>& members() {
  static const std::vector<Member<Tev8u, Tev8u>> list = {MEMBER(teviFilterLowpassBorder_8u_C1R,
                                                                teviFilterLowpassGetBufferSize_8u_C1R, Tev8u, Tev8u,
                                                                Kind::lowpass, avr, avr, true)};
  return list;
}

template <>
const std::vector<Member<Tev32f, Tev32f>>& members() {
  static const std::vector<Member<Tev32f, Tev32f>> list = {
      MEMBER(teviFilterScharrHorizBorder_32f_C1R, teviFilterScharrHorizGetBufferSize_32f_C1R, Tev32f, Tev32f,
             Kind::separable, scharr, dx, false),
      MEMBER(teviFilterScharrVertBorder_32f_C1R, teviFilterScharrVertGetBufferSize_32f_C1R, Tev32f, Tev32f,
             Kind::separable, dx, scharr, false),
      MEMBER(teviFilterSobelHorizBorder_32f_C1R, teviFilterSobelHorizGetBufferSize_32f_C1R, Tev32f, Tev32f,
             Kind::separable, sobel, dx, true),
      MEMBER(teviFilterSobelVertBorder_32f_C1R, teviFilterSobelVertGetBufferSize_32f_C1R, Tev32f, Tev32f,
             Kind::separable, dxNeg, sobel, true),
      MEMBER(teviFilterSobelNegVertBorder_32f_C1R, teviFilterSobelNegVertGetBufferSize_32f_C1R, Tev32f, Tev32f,
             Kind::separable, dxNeg, sobelNeg, true),
      MEMBER(teviFilterSobelHorizSecondBorder_32f_C1R, teviFilterSobelHorizSecondGetBufferSize_32f_C1R, Tev32f, Tev32f,
             Kind::separable, sobel, d2x, true),
      MEMBER(teviFilterSobelVertSecondBorder_32f_C1R, teviFilterSobelVertSecondGetBufferSize_32f_C1R, Tev32f, Tev32f,
             Kind::separable, d2x, sobel, true),
      MEMBER(teviFilterSobelCrossBorder_32f_C1R, teviFilterSobelCrossGetBufferSize_32f_C1R, Tev32f, Tev32f,
             Kind::separable, dxNeg, dx, true),
      MEMBER(teviFilterLaplacianBorder_32f_C1R, teviFilterLaplacianGetBufferSize_32f_C1R, Tev32f, Tev32f,
             Kind::laplacian, sobel, d2x, true),
      MEMBER(teviFilterLowpassBorder_32f_C1R, teviFilterLowpassGetBufferSize_32f_C1R, Tev32f, Tev32f, Kind::lowpass,
             avr, avr, true)};
  return list;
}

// ---- The definition ----

// The index that stands for i, found by walking: -1 for the constant border.
int outsideIndex(int i, int n, TevBorderType type) {
  while (i < 0 || i >= n) {
    if (type == tevBorderConst) return -1;
    if (type == tevBorderRepl) return i < 0 ? 0 : n - 1;
    if (type == tevBorderWrap) i += i < 0 ? n : -n;
    if (type == tevBorderMirror) i = n == 1 ? 0 : i < 0 ? -i : 2 * (n - 1) - i;
    if (type == tevBorderMirrorR) i = i < 0 ? -1 - i : 2 * n - 1 - i;
  }
  return i;
}

template <class Src>
using Mid = std::conditional_t<std::is_same_v<Src, Tev32f>, Tev32f, Tev16s>;
template <class Src>
using Sum = std::conditional_t<std::is_same_v<Src, Tev32f>, Extended, int>;

template <class Src>
struct Source {
  const Image<Src>& image;
  TevBorderType type;
  Src value;

  Src pixel(int x, int y) const {
    const int i = outsideIndex(x, image.width(), type);
    return i < 0 ? value : image.at(i, y);
  }

  // The row sum at (x, y), where row y may lie outside; there a constant border has its own sum along x.
  Mid<Src> rowSum(int x, int y, const std::vector<int>& taps) const {
    const int row = outsideIndex(y, image.height(), type), k = static_cast<int>(taps.size());
    Sum<Src> sum = 0;
    if (row < 0) {
      for (int tap : taps) sum += tap;
      return static_cast<Mid<Src>>(sum * value);
    }
    for (int j = 0; j < k; ++j) sum += static_cast<Sum<Src>>(taps[j]) * pixel(x + j - k / 2, row);
    return static_cast<Mid<Src>>(sum);
  }

  Sum<Src> columnSum(int x, int y, const std::vector<int>& row, const std::vector<int>& column) const {
    const int k = static_cast<int>(column.size());
    Sum<Src> sum = 0;
    for (int j = 0; j < k; ++j) sum += static_cast<Sum<Src>>(column[j]) * rowSum(x, y + j - k / 2, row);
    return sum;
  }

  Sum<Src> laplacian3(int x, int y) const {
    const auto outer = [&](int row) {
      const int i = outsideIndex(row, image.height(), type);
      return i < 0 ? static_cast<Mid<Src>>(2 * static_cast<Sum<Src>>(value))
                   : static_cast<Mid<Src>>(static_cast<Sum<Src>>(pixel(x - 1, i)) + pixel(x + 1, i));
    };
    return (static_cast<Sum<Src>>(outer(y - 1)) + outer(y + 1)) * 2 -
           static_cast<Mid<Src>>(static_cast<Sum<Src>>(image.at(x, y)) * 8);
  }

  Sum<Src> laplacian5(int x, int y) const {
    const auto first = static_cast<Mid<Src>>(columnSum(x, y, sobel.taps5, d2x.taps5));
    return columnSum(x, y, d2x.taps5, sobel.taps5) + first;
  }
};

Tev8s truncated8s(Extended v) { return static_cast<Tev8s>(std::min<Extended>(std::max<Extended>(v, -128), 127)); }

template <class Src, class Dst>
Dst definition(const Member<Src, Dst>& m, const Source<Src>& source, int x, int y, int k, int divisor) {
  if (m.kind == Kind::lowpass) {
    const auto sum = source.columnSum(x, y, avr.taps(k), avr.taps(k));
    if constexpr (std::is_same_v<Dst, Tev8u>)
      return static_cast<Tev8u>(std::clamp((k == 3 ? sum * 7280 + 36400 : sum * 2621) >> 16, 0, 255));
    else
      return static_cast<Dst>(sum * Sum<Src>(k == 3 ? 0.11111111F : 0.04F));
  }
  const auto sum = m.kind == Kind::separable ? source.columnSum(x, y, m.row->taps(k), m.column->taps(k))
                   : k == 3                  ? source.laplacian3(x, y)
                                             : source.laplacian5(x, y);
  if constexpr (std::is_same_v<Dst, Tev8s>) {
    if (m.kind == Kind::laplacian && k == 5)
      return truncated8s(static_cast<Extended>(sum) * static_cast<Tev32f>(1.0 / divisor));
    return truncated8s(sum * (Extended{1} / divisor));
  } else {
    return static_cast<Dst>(sum);
  }
}

// ---- Calls ----

template <class Src, class Dst>
int bufferSize(const Member<Src, Dst>& m, TevSize roi, TevMaskSize mask) {
  int size = -1;
  EXPECT_EQ(m.size(roi, mask, &size), tevStatusOk);
  return size;
}

struct Options {
  TevMaskSize mask = tevMskSize3x3;
  TevBorderType type = tevBorderRepl;
  double value = 0;
  int divisor = 1;
  int misalignment = 0;
};

// Filters with a buffer of exactly the promised size.
template <class Src, class Dst>
void run(const Member<Src, Dst>& m, const Image<Src>& src, Image<Dst>& dst, const Options& o) {
  const Buffer buffer(bufferSize(m, src.size(), o.mask), o.misalignment);
  ASSERT_EQ(m.filter(src.data(), src.step(), dst.data(), dst.step(), src.size(), o.mask, o.type,
                     static_cast<Src>(o.value), o.divisor, buffer.data()),
            tevStatusOk)
      << m.name;
}

template <class Src, class Dst>
Image<Dst> expected(const Member<Src, Dst>& m, const Image<Src>& src, const Options& o) {
  Image<Dst> result(src.width(), src.height());
  const Source<Src> source = {src, o.type, static_cast<Src>(o.value)};
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x) result.set(x, y, definition(m, source, x, y, o.mask / 11, o.divisor));
  return result;
}

template <class Src, class Dst>
std::vector<TevMaskSize> masksOf(const Member<Src, Dst>& m) {
  return m.has5x5 ? std::vector<TevMaskSize>{tevMskSize3x3, tevMskSize5x5} : std::vector<TevMaskSize>{tevMskSize3x3};
}

// Bytes of extremes and noise; floats of mixed magnitude, or whole numbers that make ties and zeros.
template <class Src>
Image<Src> randomSource(Random& random, int width, int height) {
  const int style = random.between(0, 2);
  return random.image<Src>(width, height, [&]() -> Src {
    if (style == 0) return static_cast<Src>(random.between(0, 1) * 255);
    if (style == 1) return static_cast<Src>(random.between(0, 255));
    return random.value<Src>();
  });
}

constexpr TevBorderType borderTypes[] = {tevBorderConst, tevBorderRepl, tevBorderWrap, tevBorderMirror,
                                         tevBorderMirrorR};
constexpr int divisors[] = {1, -1, 2, 3, -7, 16, 41, 45, 99, 255, 20000, std::numeric_limits<int>::min()};

template <class Src, class Dst>
struct Types {
  using src = Src;
  using dst = Dst;
};
template <class T>
class FixedFilter : public testing::Test {};
using AllTypes = testing::Types<Types<Tev8u, Tev16s>, Types<Tev8u, Tev8s>, Types<Tev8u, Tev8u>, Types<Tev32f, Tev32f>>;
TYPED_TEST_SUITE(FixedFilter, AllTypes);

// The only member of a name in lists of one type.
template <class Src, class Dst>
const Member<Src, Dst>& named(const char* name) {
  for (const auto& m : members<Src, Dst>())
    if (std::string(m.name) == name) return m;
  ADD_FAILURE() << "no member " << name;
  return members<Src, Dst>().front();
}

template <class Dst>
Image<Dst> filtered(const char* name, const Image<Tev8u>& src, const Options& o) {
  Image<Dst> dst(src.width(), src.height());
  run(named<Tev8u, Dst>(name), src, dst, o);
  return dst;
}

// Good arguments of a call, to be spoilt one by one.
template <class Src, class Dst>
struct Arguments {
  bool src = true, dst = true, buffer = true;
  TevSize roi = {8, 6};
  int srcStep = 8 * int{sizeof(Src)}, dstStep = 8 * int{sizeof(Dst)};
  TevMaskSize mask = tevMskSize3x3;
  TevBorderType type = tevBorderRepl;
  int divisor = 1;
};

}  // namespace

TEST(FixedFilterExample, SobelHorizAnswersToAnEdgeBetweenRows) {
  const auto src = grid<Tev8u>({{0, 0, 0, 0}, {0, 0, 0, 0}, {9, 9, 9, 9}, {9, 9, 9, 9}});
  EXPECT_SAME_IMAGE(filtered<Tev16s>("teviFilterSobelHorizBorder_8u16s_C1R", src, {}),
                    grid<Tev16s>({{0, 0, 0, 0}, {36, 36, 36, 36}, {36, 36, 36, 36}, {0, 0, 0, 0}}));
}

TEST(FixedFilterExample, SobelVertIsTheLeftMinusTheRightAndSobelNegVertItsOpposite) {
  const auto src = grid<Tev8u>({{0, 0, 9, 9}, {0, 0, 9, 9}, {0, 0, 9, 9}});
  EXPECT_SAME_IMAGE(filtered<Tev16s>("teviFilterSobelVertBorder_8u16s_C1R", src, {}),
                    grid<Tev16s>({{0, -36, -36, 0}, {0, -36, -36, 0}, {0, -36, -36, 0}}));
  EXPECT_SAME_IMAGE(filtered<Tev16s>("teviFilterSobelNegVertBorder_8u16s_C1R", src, {}),
                    grid<Tev16s>({{0, 36, 36, 0}, {0, 36, 36, 0}, {0, 36, 36, 0}}));
}

TEST(FixedFilterExample, FiltersOfAPointShowTheirMasksReflected) {
  const auto src = grid<Tev8u>({{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}});
  EXPECT_SAME_IMAGE(
      filtered<Tev16s>("teviFilterLaplacianBorder_8u16s_C1R", src, {}),
      grid<Tev16s>({{0, 0, 0, 0, 0}, {0, 2, 0, 2, 0}, {0, 0, -8, 0, 0}, {0, 2, 0, 2, 0}, {0, 0, 0, 0, 0}}));
  EXPECT_SAME_IMAGE(
      filtered<Tev16s>("teviFilterLaplacianBorder_8u16s_C1R", src, {.mask = tevMskSize5x5}),
      grid<Tev16s>({{2, 4, 4, 4, 2}, {4, 0, -8, 0, 4}, {4, -8, -24, -8, 4}, {4, 0, -8, 0, 4}, {2, 4, 4, 4, 2}}));
  EXPECT_SAME_IMAGE(
      filtered<Tev16s>("teviFilterScharrHorizBorder_8u16s_C1R", src, {}),
      grid<Tev16s>({{0, 0, 0, 0, 0}, {0, 3, 10, 3, 0}, {0, 0, 0, 0, 0}, {0, -3, -10, -3, 0}, {0, 0, 0, 0, 0}}));
  EXPECT_SAME_IMAGE(
      filtered<Tev16s>("teviFilterSobelCrossBorder_8u16s_C1R", src, {}),
      grid<Tev16s>({{0, 0, 0, 0, 0}, {0, -1, 0, 1, 0}, {0, 0, 0, 0, 0}, {0, 1, 0, -1, 0}, {0, 0, 0, 0, 0}}));
}

TEST(FixedFilterExample, AConstantBorderOfTheImagesColourHasNoEdge) {
  Image<Tev8u> src(9, 7);
  src.fill(10);
  for (TevMaskSize mask : {tevMskSize3x3, tevMskSize5x5}) {
    const Options o = {.mask = mask, .type = tevBorderConst, .value = 10};
    EXPECT_SAME_IMAGE(filtered<Tev16s>("teviFilterSobelHorizBorder_8u16s_C1R", src, o), Image<Tev16s>(9, 7).fill(0));
    EXPECT_SAME_IMAGE(filtered<Tev16s>("teviFilterSobelVertBorder_8u16s_C1R", src, o), Image<Tev16s>(9, 7).fill(0));
    EXPECT_SAME_IMAGE(filtered<Tev16s>("teviFilterLaplacianBorder_8u16s_C1R", src, o), Image<Tev16s>(9, 7).fill(0));
  }
}

TEST(FixedFilterExample, ABlackBorderIsAnEdgeOfAWhiteImage) {
  Image<Tev8u> src(6, 5);
  src.fill(255);
  const auto d = filtered<Tev16s>("teviFilterSobelHorizBorder_8u16s_C1R", src, {.type = tevBorderConst});
  EXPECT_EQ(d.at(2, 0), 4 * 255);
  EXPECT_EQ(d.at(2, 2), 0);
  EXPECT_EQ(d.at(2, 4), -4 * 255);
}

TEST(FixedFilterExample, TheTwoLowpassMasksRoundDifferently) {
  Image<Tev8u> white(7, 6);
  white.fill(255);
  EXPECT_SAME_IMAGE(filtered<Tev8u>("teviFilterLowpassBorder_8u_C1R", white, {}), white);
  EXPECT_SAME_IMAGE(filtered<Tev8u>("teviFilterLowpassBorder_8u_C1R", white, {.mask = tevMskSize5x5}),
                    Image<Tev8u>(7, 6).fill(254));
}

TEST(FixedFilterExample, OneRowMirroredIsAllOfItsBorder) {
  const auto src = grid<Tev8u>({{1, 2, 4, 8, 16}});
  EXPECT_SAME_IMAGE(
      filtered<Tev16s>("teviFilterSobelHorizBorder_8u16s_C1R", src, {.mask = tevMskSize5x5, .type = tevBorderMirror}),
      Image<Tev16s>(5, 1).fill(0));
  EXPECT_SAME_IMAGE(filtered<Tev8u>("teviFilterLowpassBorder_8u_C1R", grid<Tev8u>({{9, 9, 9}}),
                                    {.mask = tevMskSize5x5, .type = tevBorderMirror}),
                    grid<Tev8u>({{8, 8, 8}}));
}

TEST(FixedFilterExample, TwoRowsWrappedAlternateUnderA5x5Mask) {
  // Rows a b a b a around row a: the second derivative 1 0 -2 0 1 sees row a alone.
  const auto src = grid<Tev8u>({{1, 1, 1, 1}, {9, 9, 9, 9}});
  EXPECT_SAME_IMAGE(filtered<Tev16s>("teviFilterSobelHorizSecondBorder_8u16s_C1R", src,
                                     {.mask = tevMskSize5x5, .type = tevBorderWrap}),
                    Image<Tev16s>(4, 2).fill(0));
  EXPECT_SAME_IMAGE(filtered<Tev16s>("teviFilterSobelHorizSecondBorder_8u16s_C1R", src,
                                     {.mask = tevMskSize3x3, .type = tevBorderWrap}),
                    grid<Tev16s>({{64, 64, 64, 64}, {-64, -64, -64, -64}}));
}

TEST(FixedFilterExample, AnExactQuotientCanFallShortByOne) {
  // The reciprocal of 41 in extended precision is a little too small. 2 * 41 times it stays below 2 when rounded and is
  // truncated to 1, while 3 * 41 times it is rounded to 3.
  const auto src = grid<Tev8u>({{0, 0, 82, 0, 0, 123, 0, 0}, {0, 0, 82, 0, 0, 123, 0, 0}});
  const auto d = filtered<Tev8s>("teviFilterScharrVertBorder_8u8s_C1R", src, {.divisor = 41 * 16});
  EXPECT_SAME_IMAGE(d, grid<Tev8s>({{0, 1, 0, -1, 3, 0, -3, 0}, {0, 1, 0, -1, 3, 0, -3, 0}}));
}

TYPED_TEST(FixedFilter, EqualsTheDefinitionOnRandomRegions) {
  using Src = typename TypeParam::src;
  using Dst = typename TypeParam::dst;
  Random random;
  const Threads threads(1);
  int trial = 0;
  for (const auto& m : members<Src, Dst>())
    for (TevMaskSize mask : masksOf(m))
      for (TevBorderType type : borderTypes)
        for (int i = 0; i < 6; ++i, ++trial) {
          const bool isTiny = i < 2;
          const auto src =
              randomSource<Src>(random, random.between(1, isTiny ? 6 : 90), random.between(1, isTiny ? 6 : 45));
          auto dst = random.image<Dst>(src.width(), src.height());
          const Options o = {mask, type, static_cast<double>(random.between(0, 255)),
                             divisors[trial % std::size(divisors)], trial % 33};
          ASSERT_NO_FATAL_FAILURE(run(m, src, dst, o));
          ASSERT_SAME_IMAGE(dst, expected(m, src, o))
              << m.name << " mask " << mask << " border " << type << " divisor " << o.divisor;
        }
}

// All heights around the blocks of 16 rows, and widths around the kernel's.
TYPED_TEST(FixedFilter, EqualsTheDefinitionAtEveryHeightAndSmallWidth) {
  using Src = typename TypeParam::src;
  using Dst = typename TypeParam::dst;
  Random random;
  const Threads threads(1);
  const auto& m = members<Src, Dst>().back();
  for (TevMaskSize mask : masksOf(m))
    for (TevBorderType type : borderTypes)
      for (int height = 1; height <= 40; ++height) {
        const auto src = randomSource<Src>(random, 1 + height % 7, height);
        auto dst = random.image<Dst>(src.width(), src.height());
        const Options o = {mask, type, 77, 3, height % 33};
        ASSERT_NO_FATAL_FAILURE(run(m, src, dst, o));
        ASSERT_SAME_IMAGE(dst, expected(m, src, o)) << m.name << " mask " << mask << " border " << type;
      }
}

TYPED_TEST(FixedFilter, GivesTheSameImageAtEveryThreadCount) {
  using Src = typename TypeParam::src;
  using Dst = typename TypeParam::dst;
  Random random;
  int trial = 0;
  for (const auto& m : members<Src, Dst>())
    for (TevMaskSize mask : masksOf(m))
      for (int count : {2, 3, 8}) {
        // One row below and right at 128 rows a thread, and well above 256; a row or two less than a whole share too.
        const int rowsEach = trial % 3 == 0 ? 128 : 256;
        const auto src = randomSource<Src>(random, 256 + trial % 5, count * rowsEach + trial % 7 - (trial % 4 == 0));
        const Options o = {mask, borderTypes[trial % 5], 50, divisors[trial % std::size(divisors)], trial % 33};
        ++trial;
        auto serial = random.image<Dst>(src.width(), src.height()), parallel = serial.clone();
        {
          const Threads threads(1);
          ASSERT_NO_FATAL_FAILURE(run(m, src, serial, o));
        }
        {
          const Threads threads(count);
          ASSERT_NO_FATAL_FAILURE(run(m, src, parallel, o));
        }
        ASSERT_TRUE(parallel == serial) << m.name << " mask " << mask << " border " << o.type << " threads " << count;
      }
}

TYPED_TEST(FixedFilter, GivesTheSameImageWithFortyThreads) {
  using Src = typename TypeParam::src;
  using Dst = typename TypeParam::dst;
  Random random;
  const auto& m = members<Src, Dst>().back();
  const Options o = {masksOf(m).back(), tevBorderWrap, 0, 5, 1};
  const auto src = randomSource<Src>(random, 256, 40 * 256 + 1);
  Image<Dst> serial(256, src.height()), parallel(256, src.height());
  {
    const Threads threads(1);
    run(m, src, serial, o);
  }
  {
    const Threads threads(40);
    run(m, src, parallel, o);
  }
  EXPECT_TRUE(parallel == serial) << m.name;
}

// A caller's own parallel region grants a call no team: one thread does all shares.
TYPED_TEST(FixedFilter, DoesAllRowsInsideACallersOwnParallelRegion) {
  using Src = typename TypeParam::src;
  using Dst = typename TypeParam::dst;
  Random random;
  const auto& m = members<Src, Dst>().back();
  const Options o = {masksOf(m).back(), tevBorderMirror, 0, 5, 1};
  const auto src = randomSource<Src>(random, 257, 1030);
  Image<Dst> serial(257, 1030), inside(257, 1030);
  {
    const Threads threads(1);
    run(m, src, serial, o);
  }
  const Threads threads(4);
#pragma omp parallel num_threads(2)
#pragma omp single
  run(m, src, inside, o);
  EXPECT_TRUE(inside == serial) << m.name;
}

TYPED_TEST(FixedFilter, ChecksPointersSizeStepsAlignmentBorderDivisorAndMaskInThatOrder) {
  using Src = typename TypeParam::src;
  using Dst = typename TypeParam::dst;
  using A = Arguments<Src, Dst>;
  Image<Src> src(8, 6);
  src.fill(1);
  Image<Dst> dst(8, 6);
  for (const auto& m : members<Src, Dst>()) {
    const Buffer buffer(bufferSize(m, {8, 6}, tevMskSize5x5));
    const auto fails = [&](TevStatus status, const A& a) {
      EXPECT_FAILS(status,
                   m.filter(a.src ? src.data() : nullptr, a.srcStep, a.dst ? dst.data() : nullptr, a.dstStep, a.roi,
                            a.mask, a.type, Src{0}, a.divisor, a.buffer ? buffer.data() : nullptr),
                   dst, buffer)
          << m.name;
    };
    const int ss = 8 * int{sizeof(Src)}, ds = 8 * int{sizeof(Dst)};
    fails(tevStatusNullPtr, {.src = false, .roi = {0, 6}});
    fails(tevStatusNullPtr, {.dst = false, .roi = {8, 0}});
    fails(tevStatusNullPtr, {.buffer = false, .roi = {0, 0}, .type = 5});
    fails(tevStatusBadSize, {.roi = {0, 6}, .srcStep = -1});
    fails(tevStatusBadSize, {.roi = {8, 0}, .dstStep = 0});
    fails(tevStatusBadSize, {.roi = {-8, -6}});
    fails(tevStatusBadStep, {.srcStep = ss - 1, .type = 5});
    fails(tevStatusBadStep, {.dstStep = ds - 1, .mask = 0});
    fails(tevStatusBadStep, {.roi = {1 << 30, 6}});
    fails(tevStatusBadArg, {.mask = 34, .type = -1});
    fails(tevStatusBadArg, {.mask = 34, .type = 5});
    if constexpr (sizeof(Src) == 4) {
      fails(tevStatusStepNotAligned, {.srcStep = ss + 2, .type = 9});
      fails(tevStatusBadStep, {.srcStep = ss + 2, .dstStep = ds - 4});
    } else {
      EXPECT_EQ(m.filter(src.data(), ss, dst.data(), ds, {8, 6}, tevMskSize3x3, tevBorderWrap, 0, 1, buffer.data()),
                tevStatusOk);
    }
    if constexpr (sizeof(Dst) > 1) {
      fails(tevStatusStepNotAligned, {.dstStep = ds + 1, .type = 9});
      fails(tevStatusBadStep, {.srcStep = ss - 1, .dstStep = ds + 1});
    }
    if constexpr (std::is_same_v<Dst, Tev8s>) fails(tevStatusBadArg, {.mask = 34, .divisor = 0});
    if (m.has5x5)
      for (TevMaskSize mask : {0, 3, 35, 53, 77, -33}) fails(tevStatusBadMaskSize, {.mask = mask});
  }
}

TYPED_TEST(FixedFilter, SizeQueriesCheckPointerSizeAndMask) {
  using Src = typename TypeParam::src;
  using Dst = typename TypeParam::dst;
  for (const auto& m : members<Src, Dst>()) {
    int size = 7;
    EXPECT_EQ(m.size({0, 0}, 0, nullptr), tevStatusNullPtr);
    EXPECT_FAILS(tevStatusBadSize, m.size({0, 5}, 0, &size), size);
    EXPECT_FAILS(tevStatusBadSize, m.size({5, 0}, 0, &size), size);
    EXPECT_FAILS(tevStatusBadSize, m.size({5, -1}, tevMskSize3x3, &size), size);
    if (!m.has5x5) continue;
    for (TevMaskSize mask : {0, 3, 34, 44, 66}) EXPECT_FAILS(tevStatusBadMaskSize, m.size({5, 5}, mask, &size), size);
  }
}

// The formulas, written out; a pointer has 4 bytes on the 32-bit build.
TYPED_TEST(FixedFilter, BuffersHaveThePromisedSizeToTheByte) {
  using Src = typename TypeParam::src;
  using Dst = typename TypeParam::dst;
  constexpr bool isFloat = std::is_same_v<Src, Tev32f>;
  constexpr int p = sizeof(void*);
  for (int T : kit::threadCounts) {
    const Threads threads(T);
    for (const auto& m : members<Src, Dst>())
      for (TevMaskSize mask : masksOf(m))
        for (int w : {1, 4, 5, 15, 16, 17, 1920})
          for (int h : {1, 16, 1080}) {
            const int k = mask / 11, p16 = (w + 15) / 16 * 16, p4 = (w + 3) / 4 * 4;
            const int rowSize = T * 32 + T * (h + k) * p + T * (isFloat ? 16 * k + 32 : 4 * k + 32);
            const int columnSize = T * 32 + T * (h + k) * p + T * (isFloat ? 0 : 4 * k + 32);
            int z = isFloat ? p4 * 4 * (2 * k + 15) + p * (3 * k + 30) + 64
                            : p16 * 2 * (2 * k + 15) + p * (3 * k + 30) + 64;
            if (m.kind == Kind::laplacian) z = p16 * (isFloat ? 8 : 4) * (2 * k + 15) + 2 * p * (3 * k + 30) + 96;
            if (m.kind == Kind::laplacian && std::is_same_v<Dst, Tev8s> && k == 5) z += p16 * h * 2 + 32;
            const int size = T * (z + rowSize + columnSize + 32);
            ASSERT_EQ(bufferSize(m, {w, h}, mask), size) << m.name << " " << w << " x " << h << " mask " << mask;
          }
  }
}

#ifdef __i386__
TEST(FixedFilterSizes, OfTheScharrFiltersAreThoseOfA32BitBuild) {
  const Threads threads(1);
  int size = 0;
  // 16 * 42 + 220 + (32 + 13 * 4 + 44) * 2 + 32
  ASSERT_EQ(teviFilterScharrHorizGetBufferSize_8u16s_C1R({10, 10}, &size), tevStatusOk);
  EXPECT_EQ(size, 1180);
  // 12 * 84 + 220 + (32 + 13 * 4 + 80) + (32 + 13 * 4) + 32
  ASSERT_EQ(teviFilterScharrVertGetBufferSize_32f_C1R({10, 10}, &size), tevStatusOk);
  EXPECT_EQ(size, 1508);
}
#endif

// Float sums: ties and cancellations that double precision alone would round the wrong way, and what is no number.
TEST(FixedFilterFloats, AreRoundedOnceFromExtendedPrecision) {
  Random random;
  const Threads threads(1);
  for (const auto& m : members<Tev32f, Tev32f>())
    for (TevMaskSize mask : masksOf(m))
      for (int style = 0; style < 5; ++style) {
        auto src = random.image<Tev32f>(150, 9, [&]() -> Tev32f {
          const auto power = [](int exponent) { return std::ldexp(1.0F, exponent); };
          switch (style) {
            case 0:  // far apart: small terms decide ties of large ones
              return static_cast<Tev32f>(random.between(-3, 3)) * power(random.between(-60, 60));
            case 1:  // the whole range of floats, where sums overflow
              return random.real(1.0F) * power(random.between(-120, 127)) * 1.9F;
            case 2:  // denormals
              return static_cast<Tev32f>(random.between(-9, 9)) * power(-149);
            case 3:  // zeros of both signs
              return random.oneIn(3) ? 1.0F : random.oneIn(2) ? -0.0F : 0.0F;
            default:
              return random.real(255);
          }
        });
        Image<Tev32f> dst(150, 9);
        const Options o = {mask, borderTypes[style], 0.1, 1, 0};
        ASSERT_NO_FATAL_FAILURE(run(m, src, dst, o));
        ASSERT_SAME_IMAGE(dst, expected(m, src, o)) << m.name << " mask " << mask << " style " << style;
      }
}

TEST(FixedFilterFloats, CarryNanAndInfinityUnderEveryTap) {
  Random random;
  const Threads threads(1);
  constexpr float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  for (const auto& m : members<Tev32f, Tev32f>())
    for (TevMaskSize mask : masksOf(m))
      for (float special : {nan, inf, -inf}) {
        auto src = random.image<Tev32f>(100, 12);
        src.set(50, 5, special);
        src.set(3, 0, special);
        Image<Tev32f> dst(100, 12);
        const Options o = {mask, tevBorderRepl, 0, 1, 0};
        ASSERT_NO_FATAL_FAILURE(run(m, src, dst, o));
        ASSERT_SAME_IMAGE(dst, expected(m, src, o)) << m.name << " mask " << mask << " with " << special;
      }
}

TEST(FixedFilterFloats, TakeAConstantBorderThatIsNoByte) {
  Random random;
  const Threads threads(1);
  for (const auto& m : members<Tev32f, Tev32f>())
    for (double value : {-0.3, 1e30, -0.0}) {
      const auto src = random.image<Tev32f>(20, 8);
      Image<Tev32f> dst(20, 8);
      const Options o = {masksOf(m).back(), tevBorderConst, value, 1, 0};
      ASSERT_NO_FATAL_FAILURE(run(m, src, dst, o));
      ASSERT_SAME_IMAGE(dst, expected(m, src, o)) << m.name << " border " << value;
    }
}

TEST(FixedFilterDivision, EqualsTheExtendedProductForManyDivisors) {
  Random random;
  const Threads threads(1);
  const auto src = randomSource<Tev8u>(random, 64, 20);
  Image<Tev8s> dst(64, 20);
  for (const char* name : {"teviFilterSobelHorizBorder_8u8s_C1R", "teviFilterLaplacianBorder_8u8s_C1R"}) {
    const auto& m = named<Tev8u, Tev8s>(name);
    for (TevMaskSize mask : masksOf(m))
      for (int i = 1; i <= 130; ++i) {
        const Options o = {mask, tevBorderRepl, 0, i % 2 ? i : -i, 0};
        ASSERT_NO_FATAL_FAILURE(run(m, src, dst, o));
        ASSERT_SAME_IMAGE(dst, expected(m, src, o)) << m.name << " divisor " << o.divisor;
      }
  }
}

TEST(FixedFilterMemory, ASerial8uLowpassWorksInPlace) {
  Random random;
  const Threads threads(1);
  const auto& m = members<Tev8u, Tev8u>().front();
  for (TevBorderType type : borderTypes) {
    auto image = randomSource<Tev8u>(random, 70, 50);
    const Options o = {tevMskSize5x5, type, 9, 1, 0};
    const auto wanted = expected(m, image, o);
    ASSERT_NO_FATAL_FAILURE(run(m, image, image, o));
    EXPECT_SAME_IMAGE(image, wanted);
  }
}

TYPED_TEST(FixedFilter, AllocatesNothing) {
  using Src = typename TypeParam::src;
  using Dst = typename TypeParam::dst;
  const Threads threads(40);
  Image<Src> src(3, 40 * 128);
  src.fill(1);
  Image<Dst> dst(3, 40 * 128);
  const auto& m = members<Src, Dst>().front();
  const kit::AllocatorWatch watch;
  run(m, src, dst, {});
  EXPECT_EQ(watch.requests(), 0);
}
