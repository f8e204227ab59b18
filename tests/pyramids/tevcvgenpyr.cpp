#include <algorithm>
#include <limits>
#include <memory>
#include <type_traits>

#include "kit/kit.h"
#include "tevcv/memory.h"
#include "tevcv_internal/pyramids.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using Real = long double;
using Freed = std::unique_ptr<TevPyramidLayerState, void (*)(TevPyramidLayerState*)>;

template <class T, int channels>
struct Members;

#define LAYER_MEMBERS(T, TapType, channels, name)                             \
  template <>                                                                 \
  struct Members<T, channels> {                                               \
    using Element = T;                                                        \
    using Tap = TapType;                                                      \
    static constexpr int channelCount = channels;                             \
    static constexpr auto down = teviPyramidLayerDown_##name##R;              \
    static constexpr auto up = teviPyramidLayerUp_##name##R;                  \
    static constexpr auto downInit = teviPyramidLayerDownInitAlloc_##name##R; \
    static constexpr auto upInit = teviPyramidLayerUpInitAlloc_##name##R;     \
  };
LAYER_MEMBERS(Tev8u, Tev16s, 1, 8u_C1)
LAYER_MEMBERS(Tev8u, Tev16s, 3, 8u_C3)
LAYER_MEMBERS(Tev16u, Tev16s, 1, 16u_C1)
LAYER_MEMBERS(Tev16u, Tev16s, 3, 16u_C3)
LAYER_MEMBERS(Tev32f, Tev32f, 1, 32f_C1)
LAYER_MEMBERS(Tev32f, Tev32f, 3, 32f_C3)
#undef LAYER_MEMBERS

template <class Member>
using Kernel = std::vector<typename Member::Tap>;

template <class Member>
Freed downState(TevSize roi, float rate, const Kernel<Member>& kernel) {
  TevPyramidLayerState* state = nullptr;
  EXPECT_GE(Member::downInit(&state, roi, rate, kernel.data(), static_cast<int>(kernel.size()), 2), 0);
  return {state, [](TevPyramidLayerState* s) { teviPyramidLayerDownFree(s); }};
}
template <class Member>
Freed upState(TevSize roi, float rate, const Kernel<Member>& kernel) {
  TevPyramidLayerState* state = nullptr;
  EXPECT_GE(Member::upInit(&state, roi, rate, kernel.data(), static_cast<int>(kernel.size()), 2), 0);
  return {state, [](TevPyramidLayerState* s) { teviPyramidLayerUpFree(s); }};
}

int reflected(int i, int n) {
  if (n == 1) return 0;
  while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
  return i;
}

template <class T>
constexpr bool isFloat = std::is_same_v<T, Tev32f>;
template <class T>
constexpr int rowShift = std::is_same_v<T, Tev8u> ? 8 : 10;
template <class T>
constexpr int scale = std::is_same_v<T, Tev8u> ? 15 : 13;

template <class T>
T clampTo(long long v) {
  return static_cast<T>(std::clamp<long long>(v, std::numeric_limits<T>::lowest(), std::numeric_limits<T>::max()));
}

// Down by the definition, one channel at a time, on whole arrays.
template <class T, class Tap>
class NaiveDown {
 public:
  using Middle = std::conditional_t<isFloat<T>, float, std::conditional_t<std::is_same_v<T, Tev8u>, Tev16s, Tev32s>>;

  template <int channels>
  static void run(const Image<T, channels>& src, Image<T, channels>& dst, int c, const Tap* kernel, int size,
                  float rate) {
    const int w = src.width(), h = src.height(), m = size / 2;
    const bool small = size >= w || size >= h;
    std::vector<Middle> middle(static_cast<size_t>(w) * h);
    // Rows first, each filtered once; sums over the filtered rows of each column then.
    std::vector<Real> filtered(static_cast<size_t>(w) * h);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        Real real = 0;
        long long whole = 0;
        for (int j = 0; j < size; ++j) {
          const T pixel = src.at(reflected(x + j - m, w), y, c);
          if constexpr (isFloat<T>)
            real += Real{kernel[j]} * pixel;
          else
            whole += small ? (static_cast<long long>(kernel[j]) * pixel) >> rowShift<T>
                           : static_cast<long long>(kernel[j]) * pixel;
        }
        if constexpr (isFloat<T>)
          filtered[y * w + x] = small ? real : Real{static_cast<float>(real)};
        else
          filtered[y * w + x] = static_cast<Real>(small ? whole : whole >> rowShift<T>);
      }
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        Real sum = 0;
        for (int i = 0; i < size; ++i) sum += kernel[i] * filtered[reflected(y + i - m, h) * w + x];
        if constexpr (isFloat<T>)
          middle[y * w + x] = static_cast<float>(sum);
        else
          middle[y * w + x] = clampTo<Middle>((static_cast<long long>(sum) + (1 << (scale<T> - 1))) >> scale<T>);
      }
    if (rate >= 1.99998F && rate <= 2.00002F) {
      for (int y = 0; y < dst.height(); ++y)
        for (int x = 0; x < dst.width(); ++x)
          dst.set(x * channels + c, y, pixel(middle[std::min(2 * y, h - 1) * w + std::min(2 * x, w - 1)]));
      return;
    }
    std::vector<Middle> narrow(static_cast<size_t>(dst.width()) * h);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < dst.width(); ++x)
        narrow[y * dst.width() + x] = sample(x, w, rate, [&](int i) { return middle[y * w + i]; });
    for (int y = 0; y < dst.height(); ++y)
      for (int x = 0; x < dst.width(); ++x)
        dst.set(x * channels + c, y, pixel(sample(y, h, rate, [&](int i) { return narrow[i * dst.width() + x]; })));
  }

 private:
  template <class At>
  static Middle sample(int x, int n, float rate, At at) {
    const float p = static_cast<float>(static_cast<Real>(x) * rate);
    const int i = static_cast<int>(p);
    const float f = p - static_cast<float>(i);
    if (i + 1 >= n) return at(i);
    const Real v = static_cast<Real>(at(i)) * (1 - static_cast<Real>(f)) + static_cast<Real>(at(i + 1)) * f;
    return isFloat<T> ? static_cast<Middle>(v) : static_cast<Middle>(static_cast<long long>(v + Real{0.5}));
  }
  static T pixel(Middle v) {
    if constexpr (isFloat<T>)
      return v;
    else
      return clampTo<T>((static_cast<long long>(v) + 4) >> 3);
  }
};

// Up by the definition: weights, spreading along the rows, spreading along the columns.
template <class T, class Tap>
class NaiveUp {
 public:
  template <int channels>
  static void run(const Image<T, channels>& src, Image<T, channels>& dst, int c, const Tap* kernel, int size,
                  float rate) {
    const NaiveUp up(kernel, size, rate, std::max(dst.width(), dst.height()));
    const int m = size / 2, h = src.height();
    std::vector<std::vector<Real>> filtered;  // from row -m on
    for (int y = -m; y < h + m; ++y) {
      std::vector<Real> line = up.spread(src.width(), dst.width(), [&](int x) {
        return Real{static_cast<Real>(src.at(reflected(x, src.width()), reflected(y, h), c))};
      });
      for (int x = 0; x < dst.width(); ++x) {
        const Real scaled = line[x] * up.reciprocals_[x];
        if constexpr (isFloat<T>)
          line[x] = static_cast<float>(scaled);
        else if constexpr (std::is_same_v<T, Tev8u>)
          line[x] = static_cast<Real>(static_cast<long long>(scaled + 128) >> 8);
        else
          line[x] = static_cast<Real>(static_cast<long long>(scaled + 512) >> 10);
      }
      filtered.push_back(line);
    }
    for (int x = 0; x < dst.width(); ++x) {
      const auto column = up.spread(h, dst.height(), [&](int y) { return filtered[y + m][x]; });
      for (int y = 0; y < dst.height(); ++y) {
        const Real scaled = column[y] * up.reciprocals_[y];
        T value;
        if constexpr (isFloat<T>)
          value = static_cast<float>(scaled);
        else if constexpr (std::is_same_v<T, Tev8u>)
          value = clampTo<T>(static_cast<long long>(scaled + 2097152) >> 22);
        else
          value = clampTo<T>((static_cast<long long>(scaled) + 524288) >> 20);
        dst.set(x * channels + c, y, value);
      }
    }
  }

 private:
  NaiveUp(const Tap* kernel, int size, float rate, int longest)
      : kernel_(kernel), m_(size / 2), rate_(rate), reciprocals_(longest) {
    const int reach = static_cast<int>(Real{0.5} + static_cast<Real>(m_) / rate);
    for (int i = -reach; i < longest + reach; ++i)
      forEachTap(i, longest,
                 [&](int at, Real tap, bool) { reciprocals_[at] = static_cast<float>(reciprocals_[at] + tap); });
    for (float& w : reciprocals_)
      if (std::fabs(w) > 1.1754944e-38F) w = static_cast<float>((isFloat<T> ? Real{1} : Real{32768}) / w);
  }

  template <class Use>
  void forEachTap(int i, int n, Use use) const {
    const float p = static_cast<float>(static_cast<Real>(i) * rate_);
    const int index = static_cast<int>(std::floor(p));
    const float f = p - static_cast<float>(index);
    const bool onGrid = !(std::fabs(f) > 1.1754944e-38F);
    const int m2 = kernel_[0] == 0 ? m_ - 1 : m_;
    for (int j = onGrid ? -m2 : 1 - m_; j <= (onGrid ? m2 : m_); ++j) {
      if (index + j < 0 || index + j >= n) continue;
      const Real tap = onGrid
                           ? Real{kernel_[m_ + j] * Real{1}}
                           : kernel_[m_ + j] * (1 - static_cast<Real>(f)) + kernel_[m_ + j - 1] * static_cast<Real>(f);
      use(index + j, tap, onGrid);
    }
  }

  template <class At>
  std::vector<Real> spread(int srcSize, int dstSize, At at) const {
    std::vector<Real> sums(dstSize);
    for (int i = -m_; i < srcSize + m_; ++i)
      forEachTap(i, dstSize, [&](int to, Real tap, bool onGrid) {
        if constexpr (isFloat<T>)
          sums[to] = static_cast<float>(sums[to] + at(i) * tap);
        else
          sums[to] += onGrid ? at(i) * tap : static_cast<Real>(static_cast<long long>(at(i) * tap + Real{0.5}));
      });
    return sums;
  }

  const Tap* kernel_;
  int m_;
  float rate_;
  std::vector<float> reciprocals_;
};

template <class Member>
auto down(const Image<typename Member::Element, Member::channelCount>& src, float rate, const Kernel<Member>& kernel,
          Random& random) {
  TevSize size = {};
  EXPECT_EQ(teviGetPyramidDownROI(src.size(), &size, rate), tevStatusOk);
  auto dst = random.image<typename Member::Element, Member::channelCount>(size.width, size.height);
  const Freed state = downState<Member>(src.size(), rate, kernel);
  EXPECT_EQ(Member::down(src.data(), src.step(), src.size(), dst.data(), dst.step(), size, state.get()), tevStatusOk);
  return dst;
}

template <class Member>
auto naiveDown(const Image<typename Member::Element, Member::channelCount>& src, float rate,
               const Kernel<Member>& kernel) {
  TevSize size = {};
  teviGetPyramidDownROI(src.size(), &size, rate);
  Image<typename Member::Element, Member::channelCount> dst(size.width, size.height);
  const Freed state = downState<Member>(src.size(), rate, kernel);
  for (int c = 0; c < Member::channelCount; ++c)
    NaiveDown<typename Member::Element, typename Member::Tap>::run(
        src, dst, c, static_cast<const typename Member::Tap*>(state->kernel), static_cast<int>(kernel.size()), rate);
  return dst;
}

template <class Member>
auto up(const Image<typename Member::Element, Member::channelCount>& src, TevSize size, float rate,
        const Kernel<Member>& kernel, Random& random) {
  auto dst = random.image<typename Member::Element, Member::channelCount>(size.width, size.height);
  const Freed state = upState<Member>(src.size(), rate, kernel);
  EXPECT_EQ(Member::up(src.data(), src.step(), src.size(), dst.data(), dst.step(), size, state.get()), tevStatusOk);
  return dst;
}

template <class Member>
auto naiveUp(const Image<typename Member::Element, Member::channelCount>& src, TevSize size, float rate,
             const Kernel<Member>& kernel) {
  Image<typename Member::Element, Member::channelCount> dst(size.width, size.height);
  const Freed state = upState<Member>(src.size(), rate, kernel);
  for (int c = 0; c < Member::channelCount; ++c)
    NaiveUp<typename Member::Element, typename Member::Tap>::run(
        src, dst, c, static_cast<const typename Member::Tap*>(state->kernel), static_cast<int>(kernel.size()), rate);
  return dst;
}

constexpr float rates[] = {1.1F, 1.5F, 1.99998F, 1.99999F, 2.0F, 2.00002F, 2.00003F, 3.7F, 10.0F};

// Binomial-like kernels, one that ends in zeros, one with negative lobes.
template <class Member>
Kernel<Member> smoothing(int size, Random& random) {
  using Tap = typename Member::Tap;
  Kernel<Member> kernel(size);
  const int mid = size / 2, kind = random.between(0, 3);
  for (int i = 0; i <= mid; ++i) {
    const int v = kind == 0   ? 1 << i
                  : kind == 1 ? i * (i + 1)
                  : kind == 2 ? random.between(1, 100)
                              : (i == mid ? 400 : random.between(-20, 60));
    kernel[i] = kernel[size - 1 - i] = static_cast<Tap>(isFloat<Tap> ? static_cast<Tap>(v) / Tap(3) : Tap(v));
  }
  return kernel;
}

template <class Member>
class PyramidLayer : public testing::Test {
 protected:
  using T = typename Member::Element;
  static constexpr int channels = Member::channelCount;
  static T pixel(Random& random) {
    if constexpr (isFloat<T>)
      return random.value<T>();
    else
      return random.oneIn(4) ? std::numeric_limits<T>::max() : random.value<T>();
  }
  static Image<T, channels> picture(int width, int height, Random& random) {
    return random.image<T, channels>(width, height, [&] { return pixel(random); });
  }
};
using AllMembers = testing::Types<Members<Tev8u, 1>, Members<Tev8u, 3>, Members<Tev16u, 1>, Members<Tev16u, 3>,
                                  Members<Tev32f, 1>, Members<Tev32f, 3>>;
TYPED_TEST_SUITE(PyramidLayer, AllMembers);

}  // namespace

TYPED_TEST(PyramidLayer, DownEqualsTheDefinitionOnRandomRegions) {
  Random random;
  for (float rate : rates)
    for (int trial = 0; trial < 14; ++trial) {
      const auto kernel = smoothing<TypeParam>(2 * random.between(1, 4) + 1, random);
      const auto src = this->picture(random.between(1, trial < 7 ? 10 : 40), random.between(1, 14), random);
      ASSERT_SAME_IMAGE(down<TypeParam>(src, rate, kernel, random), naiveDown<TypeParam>(src, rate, kernel))
          << "rate " << rate << ", " << src.width() << " x " << src.height() << ", kernel " << kernel.size();
    }
}

TYPED_TEST(PyramidLayer, DownEqualsTheDefinitionAcrossTheBlocksOfARow) {
  Random random;
  for (int width : {128, 135, 263}) {
    const auto kernel = smoothing<TypeParam>(7, random);
    const auto src = this->picture(width, 9, random);
    ASSERT_SAME_IMAGE(down<TypeParam>(src, 1.3F, kernel, random), naiveDown<TypeParam>(src, 1.3F, kernel));
  }
}

TYPED_TEST(PyramidLayer, UpEqualsTheDefinitionOnRandomRegionsOfEverySizeInTheRange) {
  Random random;
  for (float rate : rates)
    for (int trial = 0; trial < 14; ++trial) {
      const auto kernel = smoothing<TypeParam>(2 * random.between(1, 4) + 1, random);
      const auto src = this->picture(random.between(1, trial < 7 ? 4 : 15), random.between(1, 6), random);
      TevSize min, max;
      ASSERT_EQ(teviGetPyramidUpROI(src.size(), &min, &max, rate), tevStatusOk);
      const TevSize size = {random.between(min.width, max.width), random.between(min.height, max.height)};
      ASSERT_SAME_IMAGE(up<TypeParam>(src, size, rate, kernel, random), naiveUp<TypeParam>(src, size, rate, kernel))
          << "rate " << rate << ", " << src.width() << " x " << src.height() << ", kernel " << kernel.size();
    }
}

TYPED_TEST(PyramidLayer, UpOfAConstantImageIsThatConstant) {
  using T = typename TypeParam::Element;
  Random random;
  const Kernel<TypeParam> kernel = {1, 4, 6, 4, 1};
  for (float rate : rates) {
    if (rate > 4) continue;  // beyond, there are gaps between the footprints
    for (const T value : {T(1), T(77), isFloat<T> ? T(1000) : std::numeric_limits<T>::max()}) {
      Image<T, TypeParam::channelCount> src(7, 5);
      src.fill(value);
      TevSize min, max;
      ASSERT_EQ(teviGetPyramidUpROI(src.size(), &min, &max, rate), tevStatusOk);
      const auto dst = up<TypeParam>(src, max, rate, kernel, random);
      for (int y = 0; y < dst.height(); ++y)
        for (int x = 0; x < dst.width(); ++x)
          ASSERT_LE(std::fabs(static_cast<double>(dst.at(x, y)) - static_cast<double>(value)), isFloat<T> ? 1e-3 : 0)
              << "rate " << rate << " at " << x << ", " << y;
    }
  }
}

TYPED_TEST(PyramidLayer, DownOfAConstantImageIsThatConstant) {
  using T = typename TypeParam::Element;
  Random random;
  const Kernel<TypeParam> kernel = {1, 2, 1};
  for (float rate : rates)
    for (const T value : {T(0), T(77), isFloat<T> ? T(1024) : std::numeric_limits<T>::max()}) {
      Image<T, TypeParam::channelCount> src(21, 17);
      src.fill(value);
      auto dst = down<TypeParam>(src, rate, kernel, random);
      ASSERT_SAME_IMAGE(dst, dst.clone().fill(value));
    }
}

// Far from the nearest footprint a destination pixel gets nothing.
TYPED_TEST(PyramidLayer, UpStoresZeroWhereNoWeightReaches) {
  using T = typename TypeParam::Element;
  Random random;
  Image<T, TypeParam::channelCount> src(3, 1);
  src.fill(T(100));
  const auto dst = up<TypeParam>(src, {25, 5}, 10.0F, {1, 2, 1}, random);
  for (int x = 0; x < 25; ++x) EXPECT_EQ(dst.at(x, 0), T(x % 10 <= 1 || x % 10 == 9 ? 100 : 0)) << x;
  for (int x = 0; x < 25; ++x) EXPECT_EQ(dst.at(x, 4), T(0));
}

TYPED_TEST(PyramidLayer, DownChecksInOrder) {
  using T = typename TypeParam::Element;
  constexpr int channels = TypeParam::channelCount, size = sizeof(T);
  const Freed state = downState<TypeParam>({8, 6}, 2.0F, {1, 2, 1});
  Image<T, channels> src(8, 6, 8), dst(4, 3, 8);
  src.fill(T(1));
  const int ss = src.step(), ds = dst.step(), row = 8 * channels * size, half = row / 2;
  const TevSize roi = {8, 6}, to = {4, 3};
  const auto call = TypeParam::down;
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, {0, 0}, dst.data(), ds, to, state.get()), dst);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), ss, roi, nullptr, ds, to, state.get()), dst);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), ss, roi, dst.data(), ds, to, nullptr), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, {0, 6}, dst.data(), 0, to, state.get()), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), ss, {8, -1}, dst.data(), ds, to, state.get()), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row - 1, roi, dst.data(), ds, {5, 3}, state.get()), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), ss, roi, dst.data(), half - 1, to, state.get()), dst);
  if (size > 1) {
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), row + 1, roi, dst.data(), half - 1, to, state.get()), dst);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), row + 1, roi, dst.data(), ds, {3, 3}, state.get()), dst);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), ss, roi, dst.data(), half + 1, to, state.get()), dst);
  }
  for (float rate : {1.0F, 0.5F, 10.5F, std::numeric_limits<float>::quiet_NaN()}) {
    state->rate = rate;
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), ss, roi, dst.data(), ds, {3, 3}, state.get()), dst);
  }
  state->rate = 2.0F;
  for (TevSize wrong : {TevSize{3, 3}, {4, 2}, {4, 4}, {0, 3}, {4, -3}})
    EXPECT_FAILS(tevStatusBadSize, call(src.data(), ss, roi, dst.data(), ds, wrong, state.get()), dst);
  EXPECT_EQ(call(src.data(), ss, roi, dst.data(), half + 8, to, state.get()), tevStatusOk);
}

TYPED_TEST(PyramidLayer, UpChecksInOrder) {
  using T = typename TypeParam::Element;
  constexpr int channels = TypeParam::channelCount, size = sizeof(T);
  const Freed state = upState<TypeParam>({4, 3}, 2.0F, {1, 2, 1});
  Image<T, channels> src(4, 3, 8), dst(8, 6, 8);
  src.fill(T(1));
  const int ss = src.step(), ds = dst.step(), row = 4 * channels * size, twice = row * 2;
  const TevSize roi = {4, 3}, to = {8, 6};
  const auto call = TypeParam::up;
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 0, {0, 0}, dst.data(), ds, to, state.get()), dst);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), ss, roi, nullptr, ds, to, state.get()), dst);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), ss, roi, dst.data(), ds, to, nullptr), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, {4, 0}, dst.data(), 0, to, state.get()), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), row - 1, roi, dst.data(), ds, {9, 6}, state.get()), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), ss, roi, dst.data(), twice - 1, to, state.get()), dst);
  if (size > 1) {
    EXPECT_FAILS(tevStatusBadStep, call(src.data(), row + 1, roi, dst.data(), twice - 1, to, state.get()), dst);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), row + 1, roi, dst.data(), ds, {3, 3}, state.get()), dst);
    EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), ss, roi, dst.data(), twice + 1, to, state.get()), dst);
  }
  for (float rate : {1.0F, 10.5F}) {
    state->rate = rate;
    EXPECT_FAILS(tevStatusBadArg, call(src.data(), ss, roi, dst.data(), ds, {3, 3}, state.get()), dst);
  }
  state->rate = 2.0F;
  for (TevSize wrong : {TevSize{6, 6}, {8, 4}, {8, 7}, {0, 6}, {8, -6}})
    EXPECT_FAILS(tevStatusBadSize, call(src.data(), ss, roi, dst.data(), ds, wrong, state.get()), dst);
  // Every size in the range, which is 7 to 8 by 5 to 6.
  for (int w : {7, 8})
    for (int h : {5, 6}) EXPECT_EQ(call(src.data(), ss, roi, dst.data(), ds, {w, h}, state.get()), tevStatusOk);
}

TYPED_TEST(PyramidLayer, UpAllocatesOneBlockAndFreesItAndReportsAFailure) {
  using T = typename TypeParam::Element;
  const Freed state = upState<TypeParam>({4, 3}, 2.0F, {1, 2, 1});
  Image<T, TypeParam::channelCount> src(4, 3), dst(8, 6);
  src.fill(T(1));
  const auto call = [&] {
    return TypeParam::up(src.data(), src.step(), src.size(), dst.data(), dst.step(), dst.size(), state.get());
  };
  {
    kit::AllocatorWatch watch(0);
    EXPECT_FAILS(tevStatusNoMemory, call(), dst);
    EXPECT_EQ(watch.blocksHeld(), 0);
  }
  kit::AllocatorWatch watch;
  EXPECT_EQ(call(), tevStatusOk);
  EXPECT_EQ(watch.requests(), 1);
  EXPECT_EQ(watch.blocksHeld(), 0);
}

TYPED_TEST(PyramidLayer, DownAllocatesNothingAndStaysInsideTheStatesBlock) {
  Random random;
  for (int trial = 0; trial < 60; ++trial) {
    const int kernelSize = 2 * random.between(1, 5) + 1;
    const auto kernel = smoothing<TypeParam>(kernelSize, random);
    // At and around the boundary between the two forms, where the state's size formula changes.
    const auto src = this->picture(std::max(1, kernelSize + random.between(-3, 3)),
                                   std::max(1, kernelSize + random.between(-3, 3)), random);
    // The library's allocator hands out a block that ends at an unmapped page.
    static std::unique_ptr<kit::GuardedMemory> memory;
    const auto mallocBefore = i_malloc;
    const auto freeBefore = i_free;
    i_malloc = [](size_t n) -> void* {
      memory = std::make_unique<kit::GuardedMemory>(n);
      return memory->data();
    };
    i_free = [](void*) {};
    const float rate = rates[random.between(0, 8)];
    const auto actual = down<TypeParam>(src, rate, kernel, random);
    i_malloc = mallocBefore;
    i_free = freeBefore;
    memory.reset();
    ASSERT_SAME_IMAGE(actual, naiveDown<TypeParam>(src, rate, kernel));
  }
}

TEST(PyramidLayerExample, SmallFormShiftsEachProductAndTheLargeOneTheirSum) {
  // Kernel 1 2 1 normalises to 2048 4096 2048. A row of ones: each product shifted is 8, 16, 8; no difference. Kernel
  // 1 1 1 gives 2730 each: 10 + 10 + 10 against 8190 >> 8 = 31.
  const Tev16s taps[] = {2730, 2730, 2730};
  const auto src = grid<Tev8u>({{1, 1, 1, 1}, {1, 1, 1, 1}, {1, 1, 1, 1}, {1, 1, 1, 1}});
  Image<Tev16s> large(4, 4), small(4, 4);
  const kit::Buffer buffer(3 * 4 * 4);
  ownPyramidConvolution_8u16s_C1R(src.data(), src.step(), large.data(), large.step(), src.size(), taps, 3, 3,
                                  buffer.data());
  ownPyramidConvolution_sm_8u16s_C1R(src.data(), src.step(), small.data(), small.step(), src.size(), taps, 3, 3);
  EXPECT_EQ(large.at(1, 1), (3 * 2730 * 31 + 4) >> 3);
  EXPECT_EQ(small.at(1, 1), (3 * 2730 * 30 + 4) >> 3);
}

TEST(PyramidLayerExample, DecimatesAtTwoAndInterpolatesElsewhereUpToTheLastPixel) {
  Random random;
  // A kernel that keeps the pixel: what remains is the resampling.
  const std::vector<Tev16s> keep = {0, 1, 0};
  const auto src = grid<Tev8u>({{0, 50, 100, 150, 200},
                                {0, 50, 100, 150, 200},
                                {0, 50, 100, 150, 200},
                                {0, 50, 100, 150, 200},
                                {0, 50, 100, 150, 200}});
  using M = Members<Tev8u, 1>;
  EXPECT_SAME_IMAGE(down<M>(src, 2.0F, keep, random), grid<Tev8u>({{0, 100, 200}, {0, 100, 200}, {0, 100, 200}}));
  EXPECT_SAME_IMAGE(down<M>(src, 1.5F, keep, random),
                    grid<Tev8u>({{0, 75, 150, 200}, {0, 75, 150, 200}, {0, 75, 150, 200}, {0, 75, 150, 200}}));
}

TEST(PyramidLayerWorkers, CopyWithBorderExtendsByEveryBorderType) {
  const auto src = grid<Tev8u>({{1, 2, 3}, {4, 5, 6}});
  const Tev8u expected[5][8] = {{9, 9, 1, 2, 3, 9, 9, 9},
                                {1, 1, 1, 2, 3, 3, 3, 3},
                                {2, 3, 1, 2, 3, 1, 2, 3},
                                {3, 2, 1, 2, 3, 2, 1, 2},
                                {2, 1, 1, 2, 3, 3, 2, 1}};
  for (int type = 0; type <= 4; ++type) {
    Tev8u* const copy = ownCopyWithBorder_8u_C1R(src.data(), src.step(), 3, 2, type, 9, 1, 1, 2, 3);
    ASSERT_NE(copy, nullptr);
    for (int x = 0; x < 8; ++x) EXPECT_EQ(copy[8 + x], expected[type][x]) << "type " << type << ", column " << x;
    const Tev8u above[] = {9, 1, 4, 4, 1}, below[] = {9, 4, 1, 1, 4};
    EXPECT_EQ(copy[2], above[type]);
    EXPECT_EQ(copy[24 + 2], below[type]);
    tevsFree(copy);
  }
  const auto colour = grid<Tev16u, 3>({{1, 2, 3}});
  Tev16u* const copy =
      ownCopyWithBorder_16u_C3R(colour.data(), colour.step(), 1, 1, tevBorderConst, 7, 8, 9, 0, 0, 1, 0);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(copy[i], (i < 3 ? 7 + i : i - 2));
  tevsFree(copy);
}

TEST(PyramidLayer32f, EqualsTheDefinitionWhereExponentsLieFarApartAndWithNan) {
  using M = Members<Tev32f, 1>;
  Random random;
  for (int trial = 0; trial < 80; ++trial) {
    const auto kernel = smoothing<M>(5, random);
    const auto src = random.image<Tev32f>(random.between(6, 200), random.between(6, 9), [&] {
      return trial % 4 == 3 && random.oneIn(30) ? std::numeric_limits<float>::quiet_NaN()
                                                : std::ldexp(random.real(1.0F), random.between(-30, 30));
    });
    ASSERT_SAME_IMAGE(down<M>(src, 1.7F, kernel, random), naiveDown<M>(src, 1.7F, kernel));
  }
}
