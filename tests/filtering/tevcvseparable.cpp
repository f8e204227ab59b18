#include "tevcv/filtering.h"

#include <algorithm>
#include <limits>

#include "kit/kit.h"
#include "tevcv_internal/filtering.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using Extended = long double;

// How a member brings its sum to the destination, as the definition tells it.
enum Scaling {
  byFloat,      // sum * (float)(1 / divisor), clamped
  byExtended,   // sum * (1 / divisor), clamped
  scaledTaps,   // sum of (float)(tap * (1 / divisor)), clamped
  byFraction,   // (sum * trunc(16384 / divisor)) >> 14 in wrapping words, low half
  lowFloat,     // wrapping sum * (float)(1 / divisor), low half
  lowExtended,  // wrapping sum * (1 / divisor), low half
  unscaled      // float
};

template <class D>
D clampedAndTruncated(Extended v) {
  const Extended lowest = std::numeric_limits<D>::lowest(), highest = std::numeric_limits<D>::max();
  return static_cast<D>(static_cast<int>(v < lowest ? lowest : v > highest ? highest : v));
}

Tev16s lowHalf(std::int64_t v) { return static_cast<Tev16s>(static_cast<std::uint16_t>(v)); }

// One output by the plain definition; value(j) is the pixel under tap j.
template <class D, class K, class Value>
D output(Scaling scaling, const std::vector<K>& kernel, int divisor, Value value) {
  const Extended reciprocal = 1 / static_cast<Extended>(divisor);
  const int length = static_cast<int>(kernel.size());
  if (scaling == unscaled || scaling == scaledTaps) {
    Extended sum = 0;
    for (int j = 0; j < length; ++j) {
      const Extended tap =
          scaling == unscaled ? static_cast<Extended>(kernel[j]) : static_cast<float>(kernel[j] * reciprocal);
      sum += tap * value(j);
    }
    if constexpr (std::is_floating_point_v<D>)
      return static_cast<D>(sum);
    else
      return clampedAndTruncated<D>(sum);
  }
  std::int64_t sum = 0;
  for (int j = 0; j < length; ++j) sum += static_cast<std::int64_t>(kernel[j]) * static_cast<std::int64_t>(value(j));
  const auto word = static_cast<std::int32_t>(static_cast<std::uint32_t>(sum));
  const Extended rounded = static_cast<float>(reciprocal);
  switch (scaling) {
    case byFloat:
      return clampedAndTruncated<D>(sum * rounded);
    case byExtended:
      return clampedAndTruncated<D>(sum * reciprocal);
    case byFraction: {
      const auto q = static_cast<Tev16s>(16384 / divisor);
      const auto product = static_cast<std::int32_t>(static_cast<std::uint32_t>(std::int64_t{word} * q));
      return static_cast<D>(lowHalf(product >> 14));
    }
    case lowFloat:
      return static_cast<D>(lowHalf(static_cast<std::int64_t>(word * rounded)));
    default:
      return static_cast<D>(lowHalf(static_cast<std::int64_t>(word * reciprocal)));
  }
}

// The pixel index that stands for i, by walking: no closed formula to share a mistake with. -1: the constant.
int walkedIndex(int i, int width, TevBorderType type) {
  while (i < 0 || i >= width) switch (type) {
      case tevBorderConst:
        return -1;
      case tevBorderRepl:
        i = i < 0 ? 0 : width - 1;
        break;
      case tevBorderWrap:
        i += i < 0 ? width : -width;
        break;
      case tevBorderMirror:
        i = width == 1 ? 0 : i < 0 ? -i : 2 * (width - 1) - i;
        break;
      default:
        i = i < 0 ? -1 - i : 2 * width - 1 - i;
    }
  return i;
}

template <class T>
std::vector<T*> rowPointers(const Image<T>& image) {
  std::vector<T*> pointers;
  for (int y = 0; y < image.height(); ++y)
    pointers.push_back(reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(image.data()) + y * image.step()));
  return pointers;
}

// A row member: its names, its scaling by kernel length, its scratch.
template <class Source, class Destination, int channelCount>
struct RowTypes {
  using T = Source;
  using D = Destination;
  using K = std::conditional_t<std::is_same_v<Source, Tev32f>, Tev32f, Tev16s>;
  static constexpr int channels = channelCount;
};

#define ROW_MEMBER(Member, T_, D_, channels_, query_, call_, perTap_, fixed_, scalingOf)                        \
  struct Member : RowTypes<T_, D_, channels_> {                                                                 \
    static constexpr int perTap = perTap_, fixed = fixed_;                                                      \
    static Scaling scaling(int length) { return scalingOf; }                                                    \
    static TevStatus query(TevSize roi, int length, int* size) { return query_(roi, length, size); }            \
    static TevStatus call(const T* src, int step, D** pp, TevSize roi, const K* kernel, int length, int anchor, \
                          TevBorderType type, const T* value, int divisor, Tev8u* buffer) {                     \
      return filter(call_, src, step, pp, roi, kernel, length, anchor, type, value, divisor, buffer);           \
    }                                                                                                           \
  };

// The four signatures of row stages.
template <class T, class D, class K>
TevStatus filter(TevStatus (*f)(const T*, int, D**, TevSize, const K*, int, int, TevBorderType, T, int, Tev8u*),
                 const T* src, int step, D** pp, TevSize roi, const K* kernel, int length, int anchor,
                 TevBorderType type, const T* value, int divisor, Tev8u* buffer) {
  return f(src, step, pp, roi, kernel, length, anchor, type, value ? *value : T{}, divisor, buffer);
}
template <class T, class D, class K>
TevStatus filter(TevStatus (*f)(const T*, int, D**, TevSize, const K*, int, int, TevBorderType, const T*, int, Tev8u*),
                 const T* src, int step, D** pp, TevSize roi, const K* kernel, int length, int anchor,
                 TevBorderType type, const T* value, int divisor, Tev8u* buffer) {
  return f(src, step, pp, roi, kernel, length, anchor, type, value, divisor, buffer);
}
template <class T>
TevStatus filter(TevStatus (*f)(const T*, int, T**, TevSize, const T*, int, int, TevBorderType, T, Tev8u*),
                 const T* src, int step, T** pp, TevSize roi, const T* kernel, int length, int anchor,
                 TevBorderType type, const T* value, int, Tev8u* buffer) {
  return f(src, step, pp, roi, kernel, length, anchor, type, value ? *value : T{}, buffer);
}
template <class T>
TevStatus filter(TevStatus (*f)(const T*, int, T**, TevSize, const T*, int, int, TevBorderType, const T*, Tev8u*),
                 const T* src, int step, T** pp, TevSize roi, const T* kernel, int length, int anchor,
                 TevBorderType type, const T* value, int, Tev8u* buffer) {
  return f(src, step, pp, roi, kernel, length, anchor, type, value, buffer);
}

ROW_MEMBER(Row8u16sC1, Tev8u, Tev16s, 1, teviFilterRowBorderPipelineGetBufferSize_8u16s_C1R,
           teviFilterRowBorderPipeline_8u16s_C1R, 4, 32, ((void)length, byFloat))
ROW_MEMBER(Row8u16sC3, Tev8u, Tev16s, 3, teviFilterRowBorderPipelineGetBufferSize_8u16s_C3R,
           teviFilterRowBorderPipeline_8u16s_C3R, 12, 32, ((void)length, byExtended))
ROW_MEMBER(Row16sC1, Tev16s, Tev16s, 1, teviFilterRowBorderPipelineGetBufferSize_16s_C1R,
           teviFilterRowBorderPipeline_16s_C1R, 48, 80, length == 3 || length == 5 ? byFloat : scaledTaps)
ROW_MEMBER(Row16sC3, Tev16s, Tev16s, 3, teviFilterRowBorderPipelineGetBufferSize_16s_C3R,
           teviFilterRowBorderPipeline_16s_C3R, 28, 32, length == 5 ? byFloat : byExtended)
ROW_MEMBER(RowLow16sC1, Tev16s, Tev16s, 1, teviFilterRowBorderPipelineGetBufferSize_Low_16s_C1R,
           teviFilterRowBorderPipeline_Low_16s_C1R, 24, 64, length == 5 ? lowFloat : byFraction)
ROW_MEMBER(RowLow16sC3, Tev16s, Tev16s, 3, teviFilterRowBorderPipelineGetBufferSize_Low_16s_C3R,
           teviFilterRowBorderPipeline_Low_16s_C3R, 208, 64, ((void)length, byFraction))
ROW_MEMBER(Row32fC1, Tev32f, Tev32f, 1, teviFilterRowBorderPipelineGetBufferSize_32f_C1R,
           teviFilterRowBorderPipeline_32f_C1R, 16, 32, ((void)length, unscaled))
ROW_MEMBER(Row32fC3, Tev32f, Tev32f, 3, teviFilterRowBorderPipelineGetBufferSize_32f_C3R,
           teviFilterRowBorderPipeline_32f_C3R, 192, 32, ((void)length, unscaled))

template <class T, class D, class K>
TevStatus filter(TevStatus (*f)(const T**, D*, int, TevSize, const K*, int, int, Tev8u*), const T** pp, D* dst,
                 int step, TevSize roi, const K* kernel, int length, int divisor, Tev8u* buffer) {
  return f(pp, dst, step, roi, kernel, length, divisor, buffer);
}
TevStatus filter(TevStatus (*f)(const Tev32f**, Tev32f*, int, TevSize, const Tev32f*, int, Tev8u*), const Tev32f** pp,
                 Tev32f* dst, int step, TevSize roi, const Tev32f* kernel, int length, int, Tev8u* buffer) {
  return f(pp, dst, step, roi, kernel, length, buffer);
}

#define COLUMN_MEMBER(Member, T_, D_, channels_, query_, call_, perTap_, fixed_, scaling_)                       \
  struct Member : RowTypes<T_, D_, channels_> {                                                                  \
    static constexpr int perTap = perTap_, fixed = fixed_;                                                       \
    static Scaling scaling(int) { return scaling_; }                                                             \
    static TevStatus query(TevSize roi, int length, int* size) { return query_(roi, length, size); }             \
    static TevStatus call(const T** pp, D* dst, int step, TevSize roi, const K* kernel, int length, int divisor, \
                          Tev8u* buffer) {                                                                       \
      return filter(call_, pp, dst, step, roi, kernel, length, divisor, buffer);                                 \
    }                                                                                                            \
  };

COLUMN_MEMBER(Column16sC1, Tev16s, Tev16s, 1, teviFilterColumnPipelineGetBufferSize_16s_C1R,
              teviFilterColumnPipeline_16s_C1R, 4, 32, byExtended)
COLUMN_MEMBER(Column16sC3, Tev16s, Tev16s, 3, teviFilterColumnPipelineGetBufferSize_16s_C3R,
              teviFilterColumnPipeline_16s_C3R, 4, 32, byExtended)
COLUMN_MEMBER(ColumnLow16sC1, Tev16s, Tev16s, 1, teviFilterColumnPipelineGetBufferSize_Low_16s_C1R,
              teviFilterColumnPipeline_Low_16s_C1R, 0, 32, lowExtended)
COLUMN_MEMBER(ColumnLow16sC3, Tev16s, Tev16s, 3, teviFilterColumnPipelineGetBufferSize_Low_16s_C3R,
              teviFilterColumnPipeline_Low_16s_C3R, 0, 32, lowExtended)
COLUMN_MEMBER(Column16s8uC1, Tev16s, Tev8u, 1, teviFilterColumnPipelineGetBufferSize_16s8u_C1R,
              teviFilterColumnPipeline_16s8u_C1R, 4, 32, byExtended)
COLUMN_MEMBER(Column16s8uC3, Tev16s, Tev8u, 3, teviFilterColumnPipelineGetBufferSize_16s8u_C3R,
              teviFilterColumnPipeline_16s8u_C3R, 4, 32, byExtended)
COLUMN_MEMBER(Column16s8sC1, Tev16s, Tev8s, 1, teviFilterColumnPipelineGetBufferSize_16s8s_C1R,
              teviFilterColumnPipeline_16s8s_C1R, 4, 32, byExtended)
COLUMN_MEMBER(Column16s8sC3, Tev16s, Tev8s, 3, teviFilterColumnPipelineGetBufferSize_16s8s_C3R,
              teviFilterColumnPipeline_16s8s_C3R, 4, 32, byExtended)
COLUMN_MEMBER(Column32fC1, Tev32f, Tev32f, 1, teviFilterColumnPipelineGetBufferSize_32f_C1R,
              teviFilterColumnPipeline_32f_C1R, 0, 0, unscaled)
COLUMN_MEMBER(Column32fC3, Tev32f, Tev32f, 3, teviFilterColumnPipelineGetBufferSize_32f_C3R,
              teviFilterColumnPipeline_32f_C3R, 0, 0, unscaled)

template <class Member>
Buffer bufferFor(TevSize roi, int length, int misalignment) {
  int size = 0;
  EXPECT_EQ(Member::query(roi, length, &size), tevStatusOk);
  return Buffer(size, misalignment);
}

// Images are taken as single elements, `width` pixels of `channels` in a row; C3 is a matter of the index.
template <class M>
Image<typename M::D> filteredRows(const Image<typename M::T>& src, const std::vector<typename M::K>& kernel, int anchor,
                                  TevBorderType type, const typename M::T* value, int divisor, int misalignment = 0) {
  const int width = src.width() / M::channels;
  Image<typename M::D> d(src.width(), src.height());
  auto pointers = rowPointers(d);
  const int length = static_cast<int>(kernel.size());
  const Buffer buffer = bufferFor<M>({width, src.height()}, length, misalignment);
  EXPECT_EQ(M::call(src.data(), src.step(), pointers.data(), {width, src.height()}, kernel.data(), length, anchor, type,
                    value, divisor, buffer.data()),
            tevStatusOk);
  return d;
}

template <class M>
Image<typename M::D> definedRows(const Image<typename M::T>& src, const std::vector<typename M::K>& kernel, int anchor,
                                 TevBorderType type, const typename M::T* value, int divisor) {
  constexpr int channels = M::channels;
  const int width = src.width() / channels;
  Image<typename M::D> d(src.width(), src.height());
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < channels; ++c)
        d.set(x * channels + c, y,
              output<typename M::D>(M::scaling(static_cast<int>(kernel.size())), kernel, divisor, [&](int j) {
                const int at = walkedIndex(x - anchor + j, width, type);
                return at < 0 ? value[c] : src.get(at * channels + c, y);
              }));
  return d;
}

// The rows of `src` are the caller's rows; the image has kernel - 1 rows less.
template <class M>
Image<typename M::D> filteredColumns(const Image<typename M::T>& src, const std::vector<typename M::K>& kernel,
                                     int divisor, int misalignment = 0) {
  const int length = static_cast<int>(kernel.size());
  const TevSize roi = {src.width() / M::channels, src.height() - length + 1};
  Image<typename M::D> d(src.width(), roi.height, 4, misalignment & 3);
  const auto pointers = rowPointers(src);
  std::vector<const typename M::T*> pp(pointers.begin(), pointers.end());
  const Buffer buffer = bufferFor<M>(roi, length, misalignment);
  EXPECT_EQ(M::call(pp.data(), d.data(), d.step(), roi, kernel.data(), length, divisor, buffer.data()), tevStatusOk);
  return d;
}

template <class M>
Image<typename M::D> definedColumns(const Image<typename M::T>& src, const std::vector<typename M::K>& kernel,
                                    int divisor) {
  const int length = static_cast<int>(kernel.size());
  Image<typename M::D> d(src.width(), src.height() - length + 1);
  for (int y = 0; y < d.height(); ++y)
    for (int i = 0; i < d.width(); ++i)
      d.set(i, y, output<typename M::D>(M::scaling(length), kernel, divisor, [&](int j) { return src.get(i, y + j); }));
  return d;
}

constexpr int divisors[] = {1, -1, 2, 3, 7, 16, 41, 49, 255, -255, 1000, 16384, 20000, 65537, -2147483647 - 1};
constexpr int lengths[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 31};

template <class T>
std::vector<T> randomKernel(Random& random, int length) {
  std::vector<T> kernel;
  // Small taps as filters have them, and taps that overflow everything.
  const int limit = random.oneIn(2) ? 20 : 32767;
  for (int j = 0; j < length; ++j)
    if constexpr (std::is_integral_v<T>)
      kernel.push_back(static_cast<T>(random.oneIn(8) ? -32768 * (limit > 20) : random.between(-limit, limit)));
    else
      kernel.push_back(limit == 20 ? static_cast<T>(random.between(-20, 20)) : random.value<T>());
  return kernel;
}

template <class T>
Image<T> randomSource(Random& random, int width, int height) {
  const int kind = random.between(0, 3);
  return random.image<T>(width, height, [&]() -> T {
    if (kind == 0) return static_cast<T>(random.between(0, 12));
    if constexpr (std::is_integral_v<T>) {
      if (kind == 1) return random.oneIn(2) ? std::numeric_limits<T>::max() : std::numeric_limits<T>::lowest();
    } else {
      if (kind == 1) {
        constexpr float special[] = {0.0F,
                                     -0.0F,
                                     1e-45F,
                                     -1e-45F,
                                     1e38F,
                                     -1e38F,
                                     1.0F,
                                     1e-10F,
                                     std::numeric_limits<float>::infinity(),
                                     std::numeric_limits<float>::quiet_NaN()};
        return special[random.between(0, random.oneIn(20) ? 9 : 7)];
      }
    }
    return random.value<T>();
  });
}

template <class M>
class RowStage : public testing::Test {};
using RowMembers =
    testing::Types<Row8u16sC1, Row8u16sC3, Row16sC1, Row16sC3, RowLow16sC1, RowLow16sC3, Row32fC1, Row32fC3>;
TYPED_TEST_SUITE(RowStage, RowMembers);

template <class M>
class ColumnStage : public testing::Test {};
using ColumnMembers = testing::Types<Column16sC1, Column16sC3, ColumnLow16sC1, ColumnLow16sC3, Column16s8uC1,
                                     Column16s8uC3, Column16s8sC1, Column16s8sC3, Column32fC1, Column32fC3>;
TYPED_TEST_SUITE(ColumnStage, ColumnMembers);

}  // namespace

TYPED_TEST(RowStage, EqualsTheDefinitionOnRandomRegions) {
  using M = TypeParam;
  using T = typename M::T;
  Random random;
  for (int length : lengths)
    for (int divisor : divisors)
      for (int type = 0; type < 5; ++type) {
        const int width = random.oneIn(2) ? random.between(1, 12) : random.between(1, 150);
        const auto src = randomSource<T>(random, width * M::channels, random.between(1, 3));
        const auto kernel = randomKernel<typename M::K>(random, length);
        const int anchors[] = {0, length / 2, length - 1};
        const int anchor = anchors[random.between(0, 2)];
        const T value[3] = {random.value<T>(), random.value<T>(), random.value<T>()};
        ASSERT_SAME_IMAGE(filteredRows<M>(src, kernel, anchor, type, value, divisor, random.between(0, 31)),
                          definedRows<M>(src, kernel, anchor, type, value, divisor))
            << "length " << length << ", anchor " << anchor << ", border " << type << ", divisor " << divisor;
      }
}

TYPED_TEST(ColumnStage, EqualsTheDefinitionOnRandomRegions) {
  using M = TypeParam;
  Random random;
  for (int length : lengths)
    for (int divisor : divisors)
      for (int trial = 0; trial < 3; ++trial) {
        const auto src = randomSource<typename M::T>(random, random.between(1, 100) * M::channels,
                                                     length - 1 + random.between(1, 4));
        const auto kernel = randomKernel<typename M::K>(random, length);
        ASSERT_SAME_IMAGE(filteredColumns<M>(src, kernel, divisor, random.between(0, 31)),
                          definedColumns<M>(src, kernel, divisor))
            << "length " << length << ", divisor " << divisor;
      }
}

TYPED_TEST(ColumnStage, TruncatesTheRoundedProductOfEveryMultipleOfManyDivisors) {
  // Sums that are multiples of the divisor are where the rounded reciprocal may fall short by one.
  using M = TypeParam;
  if constexpr (std::is_same_v<typename M::K, Tev16s>) {
    for (int divisor = 1; divisor < 1200; divisor += 1) {
      Image<Tev16s> src(160 * M::channels, 1);
      for (int i = 0; i < src.width(); ++i) src.set(i, 0, static_cast<Tev16s>(i - 80));
      const std::vector<Tev16s> kernel = {static_cast<Tev16s>(divisor)};
      ASSERT_SAME_IMAGE(filteredColumns<M>(src, kernel, divisor), definedColumns<M>(src, kernel, divisor)) << divisor;
    }
  }
}

TYPED_TEST(RowStage, GivesTheSameRowsAtEveryThreadCount) {
  using M = TypeParam;
  using T = typename M::T;
  Random random;
  for (int length : {3, 5, 7}) {
    const auto kernel = randomKernel<typename M::K>(random, length);
    const T value[3] = {1, 2, 3};
    for (int height : {2, 61}) {
      const auto src = random.image<T>(height == 2 ? 33000 * 3 : 4500, height);
      const kit::Threads one(1);
      const auto expected = filteredRows<M>(src, kernel, length - 1, tevBorderMirror, value, 9);
      for (int threads : kit::threadCounts) {
        const kit::Threads setting(threads);
        ASSERT_SAME_IMAGE(filteredRows<M>(src, kernel, length - 1, tevBorderMirror, value, 9, threads), expected);
      }
    }
  }
}

TYPED_TEST(ColumnStage, GivesTheSameRowsAtEveryThreadCount) {
  using M = TypeParam;
  Random random;
  for (int length : {3, 5, 7}) {
    const auto kernel = randomKernel<typename M::K>(random, length);
    for (int height : {2, 61}) {
      const auto src = random.image<typename M::T>(height == 2 ? 33000 * 3 : 4500, height + length - 1);
      const kit::Threads one(1);
      const auto expected = filteredColumns<M>(src, kernel, 9);
      for (int threads : kit::threadCounts) {
        const kit::Threads setting(threads);
        ASSERT_SAME_IMAGE(filteredColumns<M>(src, kernel, 9, threads), expected);
      }
    }
  }
}

// Forty threads fork from 40 x 32768 pixels on: one row a share and a remainder, and fewer rows than shares.
constexpr TevSize aboveTheGateOfForty[] = {{31969, 41}, {327681, 4}};

TYPED_TEST(RowStage, GivesTheSameRowsWithFortyThreadsAboveTheirGate) {
  using M = TypeParam;
  using T = typename M::T;
  Random random;
  for (int length : {4, 5})
    for (TevSize roi : aboveTheGateOfForty) {
      const auto kernel = randomKernel<typename M::K>(random, length);
      const T value[3] = {1, 2, 3};
      Image<T> src(roi.width * M::channels, roi.height);
      for (int y = 0; y < roi.height; ++y)
        for (int i = 0; i < src.width(); ++i) src.set(i, y, static_cast<T>((i * 7 + y * 13) % 101 - 20));
      const kit::Threads one(1);
      const auto expected = filteredRows<M>(src, kernel, 1, tevBorderWrap, value, 9);
      const kit::Threads forty(40);
      ASSERT_SAME_IMAGE(filteredRows<M>(src, kernel, 1, tevBorderWrap, value, 9, 5), expected);
    }
}

TYPED_TEST(ColumnStage, GivesTheSameRowsWithFortyThreadsAboveTheirGate) {
  using M = TypeParam;
  using T = typename M::T;
  Random random;
  for (int length : {4, 5})
    for (TevSize roi : aboveTheGateOfForty) {
      const auto kernel = randomKernel<typename M::K>(random, length);
      Image<T> src(roi.width * M::channels, roi.height + length - 1);
      for (int y = 0; y < src.height(); ++y)
        for (int i = 0; i < src.width(); ++i) src.set(i, y, static_cast<T>((i * 7 + y * 13) % 101 - 20));
      const kit::Threads one(1);
      const auto expected = filteredColumns<M>(src, kernel, 9);
      const kit::Threads forty(40);
      ASSERT_SAME_IMAGE(filteredColumns<M>(src, kernel, 9, 5), expected);
    }
}

TYPED_TEST(RowStage, ANullPointerStopsItsShareAloneWhenThreadsFork) {
  using M = TypeParam;
  using T = typename M::T;
  const kit::Threads eight(8);
  constexpr int width = 4096 + 8, height = 64, missing = 21;
  Image<T> src(width * M::channels, height);
  src.fill(3);
  Image<typename M::D> d(width * M::channels, height);
  d.fill(9);
  auto pointers = rowPointers(d);
  pointers[missing] = nullptr;
  const std::vector<typename M::K> kernel = {1, 0, 0, 1};
  const Buffer buffer = bufferFor<M>({width, height}, 4, 1);
  EXPECT_EQ(M::call(src.data(), src.step(), pointers.data(), {width, height}, kernel.data(), 4, 1, tevBorderRepl,
                    src.data(), 1, buffer.data()),
            tevStatusNullPtr);
  // Shares of eight rows: 16 to 23 is the one that stops.
  for (int y = 0; y < height; ++y)
    for (int i = 0; i < d.width(); i += 100) ASSERT_EQ(d.get(i, y), y < missing || y > 23 ? 6 : 9) << y;
}

TYPED_TEST(RowStage, WorksInShareOfOneRowOrNoneWhenThreadsOutnumberRows) {
  using M = TypeParam;
  using T = typename M::T;
  Random random;
  const auto kernel = randomKernel<typename M::K>(random, 7);
  const auto src = random.image<T>(1400000 * M::channels / 3 / M::channels * M::channels, 3);
  const T value[3] = {1, 2, 3};
  const kit::Threads eight(8);
  const auto actual = filteredRows<M>(src, kernel, 3, tevBorderConst, value, 3, 5);
  const kit::Threads one(1);
  EXPECT_SAME_IMAGE(actual, filteredRows<M>(src, kernel, 3, tevBorderConst, value, 3));
}

TYPED_TEST(RowStage, SizesItsBufferToTheByte) {
  using M = TypeParam;
  for (int threads : kit::threadCounts) {
    const kit::Threads setting(threads);
    for (int k : {1, 3, 5, 8, 31}) {
      int size = 0, wide = 0;
      EXPECT_EQ(M::query({1, 17}, k, &size), tevStatusOk);
      EXPECT_EQ(M::query({100000, 17}, k, &wide), tevStatusOk);
      EXPECT_EQ(size, threads * 32 + threads * (17 + k) * int{sizeof(void*)} + threads * (M::perTap * k + M::fixed));
      EXPECT_EQ(wide, size);
    }
  }
  int size = 77;
  EXPECT_FAILS(tevStatusNullPtr, M::query({0, 0}, 0, nullptr), size);
  EXPECT_FAILS(tevStatusBadSize, M::query({0, 4}, 3, &size), size);
  EXPECT_FAILS(tevStatusBadSize, M::query({4, 0}, 3, &size), size);
  EXPECT_FAILS(tevStatusBadSize, M::query({4, 4}, 0, &size), size);
}

TYPED_TEST(ColumnStage, SizesItsBufferToTheByte) {
  using M = TypeParam;
  for (int threads : kit::threadCounts) {
    const kit::Threads setting(threads);
    for (int k : {1, 3, 5, 8, 31}) {
      int size = 0;
      EXPECT_EQ(M::query({5, 17}, k, &size), tevStatusOk);
      EXPECT_EQ(size, threads * 32 + threads * (17 + k) * int{sizeof(void*)} + threads * (M::perTap * k + M::fixed));
    }
  }
  int size = 77;
  EXPECT_FAILS(tevStatusNullPtr, M::query({0, 0}, 0, nullptr), size);
  EXPECT_FAILS(tevStatusBadSize, M::query({0, 4}, 3, &size), size);
  EXPECT_FAILS(tevStatusBadSize, M::query({4, 0}, 3, &size), size);
  EXPECT_FAILS(tevStatusBadSize, M::query({4, 4}, 0, &size), size);
}

TYPED_TEST(RowStage, ChecksItsArgumentsInOrder) {
  using M = TypeParam;
  using T = typename M::T;
  Image<T> src(8 * M::channels, 4, 16);
  Image<typename M::D> d(8 * M::channels, 4);
  auto pointers = rowPointers(d);
  const std::vector<typename M::K> kernel = {1, 2, 1};
  const T value[3] = {};
  const TevSize roi = {8, 4};
  const Buffer buffer = bufferFor<M>(roi, 3, 0);
  const auto call = [&](const T* s, int step, bool pp, TevSize size, bool taps, int length, int anchor, int type,
                        const T* v, int divisor, bool scratch) {
    return M::call(s, step, pp ? pointers.data() : nullptr, size, taps ? kernel.data() : nullptr, length, anchor, type,
                   v, divisor, scratch ? buffer.data() : nullptr);
  };
  const int full = 8 * M::channels * int{sizeof(T)}, step = src.step();
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, true, {0, 0}, true, 0, -1, 9, value, 0, true), d);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 0, false, {0, 0}, true, 0, -1, 9, value, 0, true), d);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 0, true, {0, 0}, false, 0, -1, 9, value, 0, true), d);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 0, true, {0, 0}, true, 0, -1, 9, value, 0, false), d);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, true, {0, 4}, true, 3, -1, 9, value, 0, true), d);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, true, {8, 0}, true, 3, -1, 9, value, 0, true), d);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, true, roi, true, 0, -1, 9, value, 0, true), d);
  EXPECT_FAILS(tevStatusBadAnchor, call(src.data(), 0, true, roi, true, 3, -1, 9, value, 0, true), d);
  EXPECT_FAILS(tevStatusBadAnchor, call(src.data(), 0, true, roi, true, 3, 3, 9, value, 0, true), d);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), full - 1, true, roi, true, 3, 1, 9, value, 0, true), d);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), step, true, {1 << 30, 4}, true, 3, 1, 9, value, 0, true), d);
  if (sizeof(T) > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), full + 1, true, roi, true, 3, 1, 9, value, 0, true), d);
  }
  EXPECT_FAILS(tevStatusBadArg, call(src.data(), step, true, roi, true, 3, 1, 5, value, 1, true), d);
  EXPECT_FAILS(tevStatusBadArg, call(src.data(), step, true, roi, true, 3, 1, -1, value, 1, true), d);
  if (M::channels == 3) {
    EXPECT_FAILS(tevStatusNullPtr, call(src.data(), step, true, roi, true, 3, 1, 0, nullptr, 0, true), d);
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), step, true, roi, true, 3, 1, 5, nullptr, 0, true), d);
    EXPECT_EQ(call(src.data(), step, true, roi, true, 3, 1, tevBorderRepl, nullptr, 1, true), tevStatusOk);
  }
  if (std::is_same_v<typename M::K, Tev16s>) {
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), step, true, roi, true, 3, 1, 0, value, 0, true), d);
  }
  EXPECT_EQ(call(src.data(), full, true, roi, true, 3, 1, 0, value, 1, true), tevStatusOk);
}

TYPED_TEST(ColumnStage, ChecksItsArgumentsInOrder) {
  using M = TypeParam;
  using T = typename M::T;
  using D = typename M::D;
  Image<T> src(8 * M::channels, 6);
  src.fill(1);
  Image<D> d(8 * M::channels, 4, 16);
  const auto all = rowPointers(src);
  std::vector<const T*> pp(all.begin(), all.end());
  const std::vector<typename M::K> kernel = {1, 2, 1};
  const TevSize roi = {8, 4};
  const Buffer buffer = bufferFor<M>(roi, 3, 0);
  const auto call = [&](bool source, D* dst, int step, TevSize size, bool taps, int length, int divisor, bool scratch) {
    return M::call(source ? pp.data() : nullptr, dst, step, size, taps ? kernel.data() : nullptr, length, divisor,
                   scratch ? buffer.data() : nullptr);
  };
  const int full = 8 * M::channels * int{sizeof(D)}, step = d.step();
  EXPECT_FAILS(tevStatusNullPtr, call(false, d.data(), 0, {0, 0}, true, 0, 0, true), d);
  EXPECT_FAILS(tevStatusNullPtr, call(true, nullptr, 0, {0, 0}, true, 0, 0, true), d);
  EXPECT_FAILS(tevStatusNullPtr, call(true, d.data(), 0, {0, 0}, false, 0, 0, true), d);
  EXPECT_FAILS(tevStatusBadSize, call(true, d.data(), 0, {0, 4}, true, 3, 0, false), d);
  EXPECT_FAILS(tevStatusBadSize, call(true, d.data(), 0, {8, -1}, true, 3, 0, false), d);
  EXPECT_FAILS(tevStatusBadSize, call(true, d.data(), 0, roi, true, 0, 0, false), d);
  EXPECT_FAILS(tevStatusBadStep, call(true, d.data(), full - 1, roi, true, 3, 0, false), d);
  if (sizeof(D) > 1) {
    EXPECT_FAILS(tevStatusStepNotAligned, call(true, d.data(), full + 1, roi, true, 3, 0, false), d);
  } else {
    EXPECT_FAILS(tevStatusNullPtr, call(true, d.data(), full + 1, roi, true, 3, 0, false), d);
  }
  EXPECT_FAILS(tevStatusNullPtr, call(true, d.data(), step, roi, true, 3, 0, false), d);
  for (const T*& row : pp) {
    const T* const kept = std::exchange(row, nullptr);
    if (std::is_same_v<typename M::K, Tev16s>) {
      EXPECT_FAILS(tevStatusBadArg, call(true, d.data(), step, roi, true, 3, 0, true), d);
    }
    EXPECT_FAILS(tevStatusNullPtr, call(true, d.data(), step, roi, true, 3, 1, true), d);
    row = kept;
  }
  EXPECT_EQ(call(true, d.data(), full, roi, true, 3, 1, true), tevStatusOk);
}

TYPED_TEST(RowStage, LeavesTheRowsAboveANullPointerWritten) {
  using M = TypeParam;
  using T = typename M::T;
  Image<T> src(6 * M::channels, 4);
  src.fill(3);
  Image<typename M::D> d(6 * M::channels, 4);
  d.fill(9);
  auto pointers = rowPointers(d);
  pointers[2] = nullptr;
  const std::vector<typename M::K> kernel = {1, 1, 0};
  const Buffer buffer = bufferFor<M>({6, 4}, 3, 1);
  EXPECT_EQ(M::call(src.data(), src.step(), pointers.data(), {6, 4}, kernel.data(), 3, 1, tevBorderRepl, src.data(), 1,
                    buffer.data()),
            tevStatusNullPtr);
  for (int y = 0; y < 4; ++y)
    for (int i = 0; i < d.width(); ++i) EXPECT_EQ(d.get(i, y), y < 2 ? 6 : 9);
}

TEST(RowPipelineExample, MirrorOfTwoPixelsGoesOnBouncing) {
  // A tap alone picks out the extended row: a b a b a.
  const auto src = grid<Tev16s>({{10, 20}});
  const std::vector<Tev16s> first = {1, 0, 0, 0, 0}, last = {0, 0, 0, 0, 1};
  EXPECT_SAME_IMAGE(
      filteredRows<Row16sC3>(grid<Tev16s>({{10, 11, 12, 20, 21, 22}}), first, 4, tevBorderMirror, nullptr, 1),
      grid<Tev16s>({{10, 11, 12, 20, 21, 22}}));
  EXPECT_SAME_IMAGE(filteredRows<Row16sC1>(src, first, 4, tevBorderMirror, nullptr, 1), grid<Tev16s>({{10, 20}}));
  EXPECT_SAME_IMAGE(filteredRows<Row16sC1>(src, first, 3, tevBorderMirror, nullptr, 1), grid<Tev16s>({{20, 10}}));
  EXPECT_SAME_IMAGE(filteredRows<Row16sC1>(src, last, 0, tevBorderWrap, nullptr, 1), grid<Tev16s>({{10, 20}}));
  EXPECT_SAME_IMAGE(filteredRows<Row16sC1>(grid<Tev16s>({{7}}), last, 0, tevBorderMirror, nullptr, 1),
                    grid<Tev16s>({{7}}));
}

TEST(RowPipelineExample, OneTapCopiesScaledAndUsesNoBorder) {
  const auto src = grid<Tev16s>({{10, 21, -7}});
  const Tev16s border = 1000;
  EXPECT_SAME_IMAGE(filteredRows<Row16sC1>(src, {1}, 0, tevBorderConst, &border, 2), grid<Tev16s>({{5, 10, -3}}));
}

TEST(RowPipelineExample, DivisorOfMinusOneNegates) {
  const auto src = grid<Tev8u>({{1, 2, 255}});
  EXPECT_SAME_IMAGE(filteredRows<Row8u16sC1>(src, {1}, 0, tevBorderRepl, nullptr, -1), grid<Tev16s>({{-1, -2, -255}}));
}

TEST(RowPipelineExample, LowStageUnderstatesAndLosesLargeDivisors) {
  const auto src = grid<Tev16s>({{1, 1, 1}});
  EXPECT_SAME_IMAGE(filteredRows<RowLow16sC1>(src, {1, 1, 1}, 1, tevBorderRepl, nullptr, 3), grid<Tev16s>({{0, 0, 0}}));
  EXPECT_SAME_IMAGE(
      filteredRows<RowLow16sC1>(grid<Tev16s>({{32767, 32767, 32767}}), {1, 1, 1}, 1, tevBorderRepl, nullptr, 16385),
      grid<Tev16s>({{0, 0, 0}}));
}

TEST(RowPipelineExample, SaturatesWhereTheLowStageWraps) {
  const auto src = grid<Tev16s>({{30000, 30000, 30000}});
  const std::vector<Tev16s> kernel = {1, 1, 1};
  EXPECT_SAME_IMAGE(filteredRows<Row16sC1>(src, kernel, 1, tevBorderRepl, nullptr, 1),
                    grid<Tev16s>({{32767, 32767, 32767}}));
  EXPECT_SAME_IMAGE(filteredRows<RowLow16sC1>(src, kernel, 1, tevBorderRepl, nullptr, 1),
                    grid<Tev16s>({{24464, 24464, 24464}}));
}
