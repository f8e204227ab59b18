#include "tevcv/distance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "kit/kit.h"
#include "tevcv/morphology.h"
#include "tevcv_internal/distance.h"

using kit::AllocatorWatch;
using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using Wide = long double;

template <int channels>
TevStatus init(TevInpaintState** state, const Image<Tev32f>& t, const Image<Tev8u>& mask, Tev32f radius, int flags) {
  return (channels == 1 ? teviInpaintInitAlloc_8u_C1R : teviInpaintInitAlloc_8u_C3R)(
      state, t.data(), t.step(), mask.data(), mask.step(), mask.size(), radius, flags);
}

template <int channels>
TevStatus apply(const Image<Tev8u, channels>& src, const Image<Tev8u, channels>& dst, TevInpaintState* state) {
  return (channels == 1 ? teviInpaint_8u_C1R : teviInpaint_8u_C3R)(src.data(), src.step(), dst.data(), dst.step(),
                                                                   src.size(), state);
}

// Builds a state, applies it once, and frees it.
template <int channels>
Image<Tev8u, channels> inpainted(const Image<Tev8u, channels>& src, const Image<Tev32f>& t, const Image<Tev8u>& mask,
                                 Tev32f radius, int flags) {
  Image<Tev8u, channels> dst(src.width(), src.height(), 3, 1);
  TevInpaintState* state = nullptr;
  EXPECT_EQ(init<channels>(&state, t, mask, radius, flags), tevStatusOk);
  EXPECT_EQ(apply(src, dst, state), tevStatusOk);
  EXPECT_EQ((channels == 1 ? teviInpaintFree_8u_C1R : teviInpaintFree_8u_C3R)(state), tevStatusOk);
  return dst;
}

Image<Tev32f> distancesOf(const Image<Tev8u>& mask) {
  Image<Tev32f> t(mask.width(), mask.height(), 4, 3);
  int size = 0;
  teviFastMarchingGetBufferSize_8u32f_C1R(mask.size(), &size);
  const Buffer buffer(size);
  EXPECT_EQ(teviFastMarching_8u32f_C1R(mask.data(), mask.step(), t.data(), t.step(), t.size(), 0, buffer.data()),
            tevStatusOk);
  return t;
}

// The filling once more, straight from its definition: no crop's tables, all sums in extended precision.
template <int channels>
class SlowInpaint {
 public:
  SlowInpaint(const Image<Tev8u, channels>& src, const Image<Tev32f>& t, const Image<Tev8u>& mask, Tev32f radius,
              int flags)
      : image_(src.clone()), t_(t), radius_(radius), reach_(static_cast<int>(radius)), flags_(flags) {
    int left = 1 << 30, right = -1, top = 1 << 30, bottom = -1, count = 0;
    for (int y = 0; y < mask.height(); ++y)
      for (int x = 0; x < mask.width(); ++x)
        if (mask.at(x, y)) {
          left = std::min(left, x), right = std::max(right, x), top = std::min(top, y), bottom = std::max(bottom, y);
          ++count;
        }
    if (count == 0) return;
    x0_ = std::max(left - reach_ - 1, 0), y0_ = std::max(top - reach_ - 1, 0);
    w_ = std::min(right + reach_ + 2, mask.width()) - x0_, h_ = std::min(bottom + reach_ + 2, mask.height()) - y0_;
    const size_t pixels = size_t(w_) * h_;
    masked_.resize(pixels), unknown_.resize(pixels), towards_.resize(pixels), gradient_.resize(pixels * channels);
    for (int y = 0; y < h_; ++y)
      for (int x = 0; x < w_; ++x) masked_[at(x, y)] = unknown_[at(x, y)] = mask.at(x0_ + x, y0_ + y) != 0;

    const int side = static_cast<int>(2 * Wide{radius} + 1);
    for (int y = 0; y < h_; ++y)
      for (int x = 0; x < w_; ++x) {
        if (masked_[at(x, y)]) towards_[at(x, y)] = {distanceStep(x, y, 1, 0), distanceStep(x, y, 0, 1)};
        bool near = false;
        for (int v = -reach_; v < side - reach_; ++v)
          for (int u = -reach_; u < side - reach_; ++u) near |= isUnknown(clampX(x + u), clampY(y + v));
        const bool touches = isUnknown(clampX(x - 1), y) || isUnknown(clampX(x + 1), y) ||
                             isUnknown(x, clampY(y - 1)) || isUnknown(x, clampY(y + 1));
        if (near && !masked_[at(x, y)])
          for (int c = 0; c < channels; ++c) gradient(x, y, c) = {plainStep(x, y, c, 1, 0), plainStep(x, y, c, 0, 1)};
        if (touches && !masked_[at(x, y)]) correct(x, y);
      }

    struct Entry {
      float t;
      int index;
    };
    std::vector<Entry> order;
    for (int y = 0; y < h_; ++y)
      for (int x = 0; x < w_; ++x)
        if (time(x, y) > 0 && int(order.size()) < count) order.push_back({time(x, y), y * w_ + x});
    std::sort(order.begin(), order.end(),
              [](const Entry& a, const Entry& b) { return a.t != b.t ? a.t < b.t : a.index < b.index; });
    for (const Entry& e : order) {
      const int x = e.index % w_, y = e.index / w_;
      std::array<int, channels> filled;
      for (int c = 0; c < channels; ++c) filled[size_t(c)] = flags == 0 ? byGradient(x, y, c) : byIsophote(x, y, c);
      for (int c = 0; c < channels; ++c)
        image_.set((x0_ + x) * channels + c, y0_ + y, static_cast<Tev8u>(filled[size_t(c)]));
      unknown_[at(x, y)] = false;
      correct(x, y), correct(x - 1, y), correct(x + 1, y), correct(x, y - 1), correct(x, y + 1);
    }
  }

  const Image<Tev8u, channels>& image() const { return image_; }

 private:
  struct Pair {
    int x = 0, y = 0;
  };

  size_t at(int x, int y) const { return size_t(y) * w_ + x; }
  int clampX(int x) const { return std::clamp(x, 0, w_ - 1); }
  int clampY(int y) const { return std::clamp(y, 0, h_ - 1); }
  bool isInside(int x, int y) const { return x >= 0 && y >= 0 && x < w_ && y < h_; }
  bool isUnknown(int x, int y) const { return !isInside(x, y) || unknown_[at(x, y)]; }
  int value(int x, int y, int c) const { return image_.at(x0_ + x, y0_ + y, c); }
  Tev32f time(int x, int y) const { return t_.at(x0_ + x, y0_ + y); }
  Pair& gradient(int x, int y, int c) { return gradient_[at(x, y) * channels + c]; }

  int distanceStep(int x, int y, int dx, int dy) const {
    const bool edge = !isInside(x - dx, y - dy) || !isInside(x + dx, y + dy);
    const Wide upper = time(clampX(x + dx), clampY(y + dy)), lower = time(clampX(x - dx), clampY(y - dy));
    return static_cast<Tev16s>(static_cast<int>((upper - lower) * (edge ? 4096 : 2048)));
  }
  int plainStep(int x, int y, int c, int dx, int dy) const {
    const bool hasLower = isInside(x - dx, y - dy), hasUpper = isInside(x + dx, y + dy);
    const int here = value(x, y, c), lower = hasLower ? value(x - dx, y - dy, c) : here,
              upper = hasUpper ? value(x + dx, y + dy, c) : here;
    if (hasLower && hasUpper)
      return flags_ == 0 ? 2 * (upper - lower) : std::abs(upper - here) + std::abs(here - lower);
    return flags_ == 0 ? upper - lower : 2 * std::abs(upper - lower);
  }
  void correct(int x, int y) {
    if (!isInside(x, y)) return;
    for (int c = 0; c < channels; ++c) {
      knownStep(x, y, c, 1, 0, gradient(x, y, c).x);
      knownStep(x, y, c, 0, 1, gradient(x, y, c).y);
    }
  }
  void knownStep(int x, int y, int c, int dx, int dy, int& step) const {
    const bool lower = isUnknown(x - dx, y - dy), upper = isUnknown(x + dx, y + dy);
    if (!lower && !upper) return;
    const int difference = lower && upper ? 0
                           : lower        ? value(x + dx, y + dy, c) - value(x, y, c)
                                          : value(x, y, c) - value(x - dx, y - dy, c);
    step = flags_ == 0 ? difference : 2 * std::abs(difference);
  }

  bool isWhole(int x, int y) const { return x - reach_ >= 0 && y - reach_ >= 0 && x + reach_ < w_ && y + reach_ < h_; }
  // Calls visit(x + dx, y + dy, dx, dy, squared distance) for the known neighbours within reach.
  template <class Visit>
  void forEachKnown(int x, int y, Visit visit) const {
    for (int dy = -reach_; dy <= reach_; ++dy)
      for (int dx = -reach_; dx <= reach_; ++dx) {
        const Wide squared = dx * dx + dy * dy;
        const Wide bound = isWhole(x, y) ? Wide{radius_} * radius_ : Wide(reach_ * reach_);
        if (squared == 0 || squared > bound || isUnknown(x + dx, y + dy)) continue;
        visit(x + dx, y + dy, dx, dy, squared);
      }
  }
  void fallBack(int x, int y, int c, Wide& sumV, Wide& sumW, Wide& gx, Wide& gy) const {
    if (!(sumW < 0.0001L)) return;
    int sum = 0, known = 0;
    for (const auto& [nx, ny] : {std::pair{x - 1, y}, {x + 1, y}, {x, y - 1}, {x, y + 1}})
      if (!isUnknown(nx, ny)) sum += value(nx, ny, c), ++known;
    if (isWhole(x, y)) {
      sumV = 255 * sum, sumW += 255 * known;
      gx = gy = 0;
    } else {
      sumV += sum, sumW += known;
    }
  }

  int byIsophote(int x, int y, int c) {
    Wide sumW = 1e-30L, sumV = 0, none = 0;
    const bool whole = isWhole(x, y);
    forEachKnown(x, y, [&](int nx, int ny, int dx, int dy, Wide squared) {
      const Pair g = gradient(nx, ny, c);
      const int cross = std::abs(-dy * g.x + dx * g.y);
      const Wide length = std::sqrt(Wide(g.x * g.x + g.y * g.y));
      Wide w;
      if (whole)
        w = Wide{static_cast<Tev32f>(1 / (std::sqrt(squared) * (squared * squared + 1)))} *
            (cross ? cross / length : 1e-6L);
      else
        w = (cross ? cross / (std::sqrt(squared) * length) : 1e-6L) * (1 / (squared * squared + 1));
      sumW += w;
      sumV += w * value(nx, ny, c);
    });
    fallBack(x, y, c, sumV, sumW, none, none);
    return static_cast<int>(sumV / sumW + 0.5L);
  }

  int byGradient(int x, int y, int c) {
    Wide sumW = 1e-30L, sumV = 0, gx = 0, gy = 0;
    const bool whole = isWhole(x, y);
    forEachKnown(x, y, [&](int nx, int ny, int dx, int dy, Wide squared) {
      Wide weight = 1 / (squared * std::sqrt(squared));
      if (whole) weight = static_cast<Tev32f>(weight);
      Wide dir = towards_[at(x, y)].x * -dx + towards_[at(x, y)].y * -dy;
      if (std::fabs(dir) < 2.5e-25L) dir = 2.5e-25L;
      const Wide lev = 0x1p-12L / (std::fabs(Wide{time(nx, ny)} - time(x, y)) + 1);
      const Wide a = std::fabs(dir * lev * weight);
      sumV += a * value(nx, ny, c);
      sumW += a;
      gx -= a * gradient(nx, ny, c).x * -dx;
      gy -= a * gradient(nx, ny, c).y * -dy;
    });
    fallBack(x, y, c, sumV, sumW, gx, gy);
    const Wide v = sumV / sumW + 0.5L + (gx + gy) / (std::sqrt(gx * gx + gy * gy) + 1e-20L);
    return v < 1 ? 0 : v >= 255 ? 255 : static_cast<int>(v);
  }

  Image<Tev8u, channels> image_;
  const Image<Tev32f>& t_;
  Tev32f radius_;
  int reach_, flags_;
  int x0_ = 0, y0_ = 0, w_ = 0, h_ = 0;
  std::vector<char> masked_, unknown_;
  std::vector<Pair> towards_, gradient_;
};

// Blobs and strokes anywhere in the region, its edges included.
Image<Tev8u> anyMask(Random& random, int width, int height) {
  Image<Tev8u> mask(width, height, random.between(0, 3), random.between(0, 3));
  mask.fill(0);
  for (int i = random.between(1, 3); i > 0; --i) {
    const int w = random.between(1, std::max(1, width / 2)), h = random.between(1, std::max(1, height / 2));
    const int left = random.between(0, width - 1), top = random.between(0, height - 1);
    const bool stroke = random.oneIn(3);
    for (int y = top; y < std::min(top + h, height); ++y)
      for (int x = left; x < std::min(left + w, width); ++x)
        if (!stroke || (x - left) * h / w == y - top) mask.set(x, y, random.between(1, 255));
  }
  return mask;
}

// Pictures with edges, slopes and flat parts.
template <int channels>
Image<Tev8u, channels> picture(Random& random, int width, int height) {
  const int kind = random.between(0, 3), edge = random.between(0, width), step = random.between(1, 9);
  Image<Tev8u, channels> image(width, height, random.between(0, 5), random.between(0, 3));
  for (int y = 0; y < height; ++y)
    for (int i = 0; i < width * channels; ++i) {
      const int x = i / channels, c = i % channels;
      const int value = kind == 0   ? random.between(0, 255)
                        : kind == 1 ? x * step + y * (c + 1)
                        : kind == 2 ? (x + c < edge ? 200 : 30)
                                    : 77 + c;
      image.set(i, y, static_cast<Tev8u>(std::min(value, 255)));
    }
  return image;
}

int allocatorOverhead() {
  AllocatorWatch watch;
  tevsFree(tevsMalloc_8u(100));
  return static_cast<int>(watch.bytes()) - 100;
}

struct Setting {
  int width, height;
  Image<Tev8u> mask;
  Image<Tev32f> t;
};

// A region with a hole in its middle.
Setting holeSetting(int width = 30, int height = 20) {
  Setting s{width, height, Image<Tev8u>(width, height), Image<Tev32f>(1, 1)};
  s.mask.fill(0);
  for (int y = 8; y < 12; ++y)
    for (int x = 10; x < 17; ++x) s.mask.set(x, y, 1);
  s.t = distancesOf(s.mask);
  return s;
}

template <class Channels>
class Inpaint : public testing::Test {};
using ChannelCounts = testing::Types<std::integral_constant<int, 1>, std::integral_constant<int, 3>>;
TYPED_TEST_SUITE(Inpaint, ChannelCounts);

}  // namespace

TEST(InpaintExample, ContinuesAnEdgeThroughAHole) {
  Image<Tev8u> src(9, 9), mask(9, 9);
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 9; ++x) {
      const bool hole = x >= 3 && x < 6 && y >= 3 && y < 6;
      mask.set(x, y, hole);
      src.set(x, y, hole ? 7 : y < 5 ? 20 : 220);
    }
  const auto t = distancesOf(mask);
  for (int method : {tevInpaintGradient, tevInpaintIsophote}) {
    const auto d = inpainted(src, t, mask, 3, method);
    for (int x = 3; x < 6; ++x) {
      EXPECT_LT(d.at(x, 3), 100) << "method " << method;
      EXPECT_GT(d.at(x, 5), 130) << "method " << method;
    }
    for (int y = 0; y < 9; ++y)
      for (int x = 0; x < 9; ++x)
        if (mask.at(x, y) == 0) {
          EXPECT_EQ(d.at(x, y), src.at(x, y));
        }
  }
}

TYPED_TEST(Inpaint, EqualsTheDefinitionOnRandomRegions) {
  constexpr int channels = TypeParam::value;
  Random random(channels);
  for (int trial = 0; trial < 150; ++trial) {
    const int width = random.between(1, 40), height = random.between(1, 40);
    const auto mask = anyMask(random, width, height);
    const auto src = picture<channels>(random, width, height);
    auto t = distancesOf(mask);
    if (random.oneIn(4))  // any positive distances will do
      for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
          if (mask.at(x, y)) t.set(x, y, 0.25F * static_cast<Tev32f>(random.between(1, 40)));
    const Tev32f radius = random.oneIn(2) ? static_cast<Tev32f>(random.between(1, 6)) : 1 + std::fabs(random.real(6));
    const int method = trial % 2;
    const SlowInpaint<channels> expected(src, t, mask, radius, method);
    ASSERT_SAME_IMAGE(inpainted(src, t, mask, radius, method), expected.image())
        << "trial " << trial << ", radius " << radius << ", method " << method;
  }
}

TYPED_TEST(Inpaint, FillsAHoleLargerThanAnyWindow) {
  constexpr int channels = TypeParam::value;
  Random random;
  Image<Tev8u> mask(90, 70);
  mask.fill(0);
  for (int y = 15; y < 55; ++y)
    for (int x = 20; x < 75; ++x) mask.set(x, y, 255);
  const auto t = distancesOf(mask);
  const auto src = picture<channels>(random, 90, 70);
  for (int method : {0, 1}) {
    const SlowInpaint<channels> expected(src, t, mask, 3.5F, method);
    EXPECT_SAME_IMAGE(inpainted(src, t, mask, 3.5F, method), expected.image());
  }
}

TYPED_TEST(Inpaint, EqualsTheDefinitionInEvenSlopes) {
  // Around a hole in an even slope the sums are often a level exactly, where any rounding tells.
  constexpr int channels = TypeParam::value;
  Random random;
  for (int trial = 0; trial < 80; ++trial) {
    const int width = random.between(7, 12), height = random.between(24, 38);
    const auto mask = anyMask(random, width, height);
    Image<Tev8u, channels> src(width, height);
    for (int y = 0; y < height; ++y)
      for (int i = 0; i < width * channels; ++i) src.set(i, y, static_cast<Tev8u>(5 * (i / channels) + y));
    const auto t = distancesOf(mask);
    const Tev32f radius = 4 + std::fabs(random.real(4));
    const SlowInpaint<channels> expected(src, t, mask, radius, tevInpaintGradient);
    ASSERT_SAME_IMAGE(inpainted(src, t, mask, radius, tevInpaintGradient), expected.image()) << "trial " << trial;
  }
}

TYPED_TEST(Inpaint, ServesManyImagesWithOneState) {
  constexpr int channels = TypeParam::value;
  Random random;
  const auto mask = anyMask(random, 35, 28);
  const auto t = distancesOf(mask);
  for (int method : {0, 1}) {
    TevInpaintState* state = nullptr;
    ASSERT_EQ(init<channels>(&state, t, mask, 4, method), tevStatusOk);
    for (int i = 0; i < 5; ++i) {
      const auto src = picture<channels>(random, 35, 28);
      Image<Tev8u, channels> dst(35, 28, i);
      ASSERT_EQ(apply(src, dst, state), tevStatusOk);
      EXPECT_SAME_IMAGE(dst, inpainted(src, t, mask, 4, method));
    }
    teviInpaintFree_8u_C1R(state);
  }
}

TYPED_TEST(Inpaint, WorksInPlace) {
  constexpr int channels = TypeParam::value;
  Random random;
  const auto mask = anyMask(random, 35, 28);
  const auto t = distancesOf(mask);
  for (int method : {0, 1}) {
    const auto src = picture<channels>(random, 35, 28);
    const auto expected = inpainted(src, t, mask, 3, method);
    TevInpaintState* state = nullptr;
    ASSERT_EQ(init<channels>(&state, t, mask, 3, method), tevStatusOk);
    ASSERT_EQ(apply(src, src, state), tevStatusOk);
    EXPECT_SAME_IMAGE(src, expected);
    teviInpaintFree_8u_C3R(state);
  }
}

TYPED_TEST(Inpaint, CopiesTheImageWhereTheMaskIsEmpty) {
  constexpr int channels = TypeParam::value;
  Random random;
  Image<Tev8u> mask(17, 9);
  mask.fill(0);
  Image<Tev32f> t(17, 9);
  t.fill(1);
  const auto src = random.image<Tev8u, channels>(17, 9);
  Image<Tev8u, channels> dst(17, 9, 5);
  const int overhead = allocatorOverhead();
  AllocatorWatch watch;
  TevInpaintState* state = nullptr;
  ASSERT_EQ(init<channels>(&state, t, mask, 1e30F, 0), tevStatusOk);
  EXPECT_EQ(watch.requests(), 1);
  EXPECT_EQ(static_cast<int>(watch.bytesHeld()), static_cast<int>(sizeof(TevInpaintState)) + overhead);
  EXPECT_EQ(state->count, 0);
  EXPECT_EQ(state->mask, nullptr);
  EXPECT_EQ(state->dilateWide, nullptr);
  EXPECT_EQ(state->cropWidth, 0);
  EXPECT_EQ(apply(src, dst, state), tevStatusOk);
  EXPECT_SAME_IMAGE(dst, src);
  Image<Tev8u, channels> smaller(16, 9);
  EXPECT_FAILS(tevStatusBadSize, apply(smaller, dst, state), dst);
  EXPECT_EQ(teviInpaintFree_8u_C1R(state), tevStatusOk);
}

TYPED_TEST(Inpaint, OfAMaskThatFillsTheRegionStartsFromZero) {
  constexpr int channels = TypeParam::value;
  for (int size : {1, 4, 30}) {
    Image<Tev8u> mask(size, size);
    mask.fill(1);
    Image<Tev32f> t(size, size);
    for (int y = 0; y < size; ++y)
      for (int x = 0; x < size; ++x) t.set(x, y, static_cast<Tev32f>(1 + (x * 7 + y * 3) % 11));
    Image<Tev8u, channels> src(size, size);
    src.fill(200);
    for (int method : {0, 1}) {
      const auto d = inpainted(src, t, mask, 2, method);
      for (int c = 0; c < channels; ++c) EXPECT_EQ(d.at(0, 0, c), 0);
      EXPECT_SAME_IMAGE(d, (SlowInpaint<channels>(src, t, mask, 2, method).image()));
    }
  }
}

TYPED_TEST(Inpaint, FillsAFlatSurroundingWithItsValue) {
  // The isophotes do so whatever stands in the hole before.
  constexpr int channels = TypeParam::value;
  const auto s = holeSetting();
  for (int value : {0, 1, 128, 254, 255}) {
    Image<Tev8u, channels> src(s.width, s.height), flat(s.width, s.height);
    src.fill(static_cast<Tev8u>(value));
    flat.fill(static_cast<Tev8u>(value));
    EXPECT_SAME_IMAGE(inpainted(src, s.t, s.mask, 3, tevInpaintGradient), flat) << value;
    for (int y = 8; y < 12; ++y)
      for (int i = 10 * channels; i < 17 * channels; ++i) src.set(i, y, static_cast<Tev8u>(99 + i));
    EXPECT_SAME_IMAGE(inpainted(src, s.t, s.mask, 3, tevInpaintIsophote), flat) << value;
  }
}

TYPED_TEST(Inpaint, LeavesMaskedPixelsWithoutADistanceAsTheyAre) {
  constexpr int channels = TypeParam::value;
  constexpr Tev32f inf = std::numeric_limits<Tev32f>::infinity(), nan = std::numeric_limits<Tev32f>::quiet_NaN();
  Random random;
  for (int method : {0, 1}) {
    auto s = holeSetting();
    s.t.set(12, 9, 0);
    s.t.set(13, 9, -3);
    s.t.set(14, 9, nan);
    const auto src = picture<channels>(random, s.width, s.height);
    const auto d = inpainted(src, s.t, s.mask, 3, method);
    for (int c = 0; c < channels; ++c)
      for (int x = 12; x < 15; ++x) EXPECT_EQ(d.at(x, 9, c), src.at(x, 9, c));

    // No distance at all; more distances than masked pixels; distances past all bounds: nothing leaves the state.
    Image<Tev32f> none(s.width, s.height), all(s.width, s.height), far(s.width, s.height);
    none.fill(0);
    all.fill(2);
    far.fill(3e38F);
    for (int x = 0; x < s.width; x += 3) far.set(x, 9, inf), far.set(x, 10, nan);
    EXPECT_SAME_IMAGE(inpainted(src, none, s.mask, 3, method), src);
    const SlowInpaint<channels> expected(src, all, s.mask, 3, method);
    EXPECT_SAME_IMAGE(inpainted(src, all, s.mask, 3, method), expected.image());
    inpainted(src, far, s.mask, 3, method);
  }
}

TEST(InpaintExample, LeavesOffsetsOfAFractionalRadiusOutAtTheCropsEdge) {
  // (2, 1) lies within 2.5 pixels, not within 2. A whole window sees it; one that the region's edge clips does not, and
  // the two radii come to the same.
  Random random;
  for (const bool whole : {true, false}) {
    Image<Tev8u> mask(17, 17);
    mask.fill(0).set(whole ? 8 : 1, 8, 1);
    const auto t = distancesOf(mask);
    int differences = 0;
    for (int i = 0; i < 8; ++i) {
      const auto src = random.image<Tev8u>(17, 17);
      differences +=
          !(inpainted(src, t, mask, 2.5F, tevInpaintIsophote) == inpainted(src, t, mask, 2, tevInpaintIsophote));
    }
    EXPECT_EQ(differences > 0, whole);
  }
}

TEST(InpaintInitAlloc, AllocatesOneBlockOfTheStatedSize) {
  const auto s = holeSetting(60, 50);
  const int overhead = allocatorOverhead();
  const auto a16 = [](int n) { return (n + 15) & ~15; };
  const auto a64 = [](int n) { return (n + 63) & ~63; };
  for (Tev32f radius : {1.0F, 2.5F, 3.0F, 6.4F})
    for (int method : {0, 1})
      for (int channels : {1, 3}) {
        const int reach = static_cast<int>(radius), side = static_cast<int>(2 * radius + 1);
        const int left = std::max(10 - reach - 1, 0), top = std::max(8 - reach - 1, 0);
        const int width = 17 + reach + 1 - left, height = 12 + reach + 1 - top;
        std::vector<Tev8u> square(size_t(side) * side, 1);
        const Tev8u cross[] = {0, 1, 0, 1, 1, 1, 0, 1, 0};
        int size1 = 0, size2 = 0;
        teviMorphologyGetSize_8u_C1R(width, square.data(), {side, side}, &size1);
        teviMorphologyGetSize_8u_C1R(width, cross, {3, 3}, &size2);
        // 104 bytes of header where pointers have four.
        const int header = sizeof(void*) == 4 ? 104 : static_cast<int>(sizeof(TevInpaintState));
        const int total = ((a16(size1) + a16(size2) + header + 63) & ~63) +
                          ((2 * reach * (2 * reach * 28 + 56) + 91) & ~63) + a64(28 * 8) + 2 * height * a64(width) +
                          a64(width * 4) * height + a64(width * 4 * channels) * height +
                          (method == 0 ? a64(width * 4) * height : 0) + 64;
        AllocatorWatch watch;
        TevInpaintState* state = nullptr;
        ASSERT_EQ(
            channels == 1 ? init<1>(&state, s.t, s.mask, radius, method) : init<3>(&state, s.t, s.mask, radius, method),
            tevStatusOk);
        EXPECT_EQ(watch.blocksHeld(), 1);
        EXPECT_EQ(static_cast<int>(watch.bytesHeld()) - overhead, total) << radius << ", method " << method;
        EXPECT_EQ(state->count, 28);
        EXPECT_EQ(state->cropX, left);
        EXPECT_EQ(state->cropY, top);
        EXPECT_EQ(state->cropWidth, width);
        EXPECT_EQ(state->cropHeight, height);
        EXPECT_EQ(state->maskStride, a64(width));
        EXPECT_EQ(state->gradStride, a64(width * 4 * channels));
        teviInpaintFree_8u_C1R(state);
        EXPECT_EQ(watch.blocksHeld(), 0);
        EXPECT_EQ(watch.strangersFreed(), 0);
      }
}

TEST(InpaintInitAlloc, ListsTheNeighbourhoodInRasterOrderAndThePixelsByDistance) {
  const auto s = holeSetting();
  TevInpaintState* state = nullptr;
  ASSERT_EQ(init<1>(&state, s.t, s.mask, 2.5F, tevInpaintGradient), tevStatusOk);
  // All of 5 x 5 but the corners (their squared distance, 8, is above 6.25) and the centre.
  ASSERT_EQ(state->numOffsets, 20);
  const TevInpaintOffset& first = state->offsets[0];
  EXPECT_EQ(first.minusDx, 1);
  EXPECT_EQ(first.minusDy, 2);
  EXPECT_EQ(first.weight, static_cast<Tev32f>(1 / (5 * std::sqrt(5.0L))));
  EXPECT_EQ(first.inMask, -2 * state->maskStride - 1);
  EXPECT_EQ(first.inDistance, -2 * (state->distStride / 4) - 1);
  EXPECT_EQ(first.inGradient, -2 - 2 * (state->gradStride / 2));
  EXPECT_EQ(state->offsets[19].minusDx, -1);
  for (int i = 1; i < state->count; ++i) EXPECT_LT(state->order[i - 1], state->order[i]);
  for (int y = 0; y < state->cropHeight; ++y)
    for (int x = 0; x < state->cropWidth; ++x)
      EXPECT_EQ(state->mask[y * state->maskStride + x], s.mask.at(state->cropX + x, state->cropY + y) ? 255 : 0);
  teviInpaintFree_8u_C1R(state);
  ASSERT_EQ(init<3>(&state, s.t, s.mask, 1, tevInpaintIsophote), tevStatusOk);
  ASSERT_EQ(state->numOffsets, 4);
  EXPECT_EQ(state->offsets[0].weight, 0.5F);
  EXPECT_EQ(state->offsets[1].inGradient, -6);
  EXPECT_EQ(state->distanceGradient, nullptr);
  teviInpaintFree_8u_C3R(state);
}

TEST(InpaintInitAlloc, ReportsEachFailedAllocationAndKeepsNothing) {
  const auto s = holeSetting();
  int requests;
  {
    AllocatorWatch watch;
    TevInpaintState* state = nullptr;
    ASSERT_EQ(init<1>(&state, s.t, s.mask, 3, 0), tevStatusOk);
    requests = watch.requests();
    teviInpaintFree_8u_C1R(state);
  }
  for (int i = 0; i < requests; ++i) {
    AllocatorWatch watch(i);
    TevInpaintState* state = nullptr;
    EXPECT_FAILS(tevStatusNoMemory, init<1>(&state, s.t, s.mask, 3, 0), state);
    EXPECT_EQ(watch.blocksHeld(), 0);
  }
  Image<Tev8u> empty(s.width, s.height);
  empty.fill(0);
  AllocatorWatch watch(0);
  TevInpaintState* state = nullptr;
  EXPECT_FAILS(tevStatusNoMemory, init<1>(&state, s.t, empty, 3, 0), state);
}

TEST(InpaintInitAlloc, RefusesARadiusThatNoBlockHolds) {
  const auto s = holeSetting();
  for (Tev32f radius : {15000.0F, 23169.0F, 23170.0F, 1e9F, 3e38F, std::numeric_limits<Tev32f>::infinity()}) {
    TevInpaintState* state = nullptr;
    EXPECT_FAILS(tevStatusNoMemory, init<1>(&state, s.t, s.mask, radius, 0), state) << radius;
  }
}

TEST(InpaintInitAlloc, TakesARadiusBeyondTheRegion) {
  // The square of this radius has more than 255 rows.
  Random random;
  const auto s = holeSetting();
  const auto src = picture<1>(random, s.width, s.height);
  for (Tev32f radius : {60.0F, 130.0F})
    EXPECT_SAME_IMAGE(inpainted(src, s.t, s.mask, radius, 1), (SlowInpaint<1>(src, s.t, s.mask, radius, 1).image()));
}

TYPED_TEST(Inpaint, ChecksTheStatesArgumentsInOrder) {
  constexpr int channels = TypeParam::value;
  const Image<Tev8u> mask(8, 4, 3);
  const Image<Tev32f> t(8, 4, 8);
  TevInpaintState* state = nullptr;
  constexpr Tev32f nan = std::numeric_limits<Tev32f>::quiet_NaN();
  const auto call = [&](TevInpaintState** out, const Tev32f* d, int dStep, const Tev8u* m, int mStep, TevSize roi,
                        Tev32f radius, int flags) {
    return (channels == 1 ? teviInpaintInitAlloc_8u_C1R : teviInpaintInitAlloc_8u_C3R)(out, d, dStep, m, mStep, roi,
                                                                                       radius, flags);
  };
  const Tev32f* const d = t.data();
  const Tev8u* const m = mask.data();
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, d, 32, m, 8, {0, 4}, 3, 0), state);
  EXPECT_FAILS(tevStatusNullPtr, call(&state, nullptr, 32, m, 8, {8, 4}, 3, 0), state);
  EXPECT_FAILS(tevStatusNullPtr, call(&state, d, 32, nullptr, 8, {8, 4}, 3, 0), state);
  EXPECT_FAILS(tevStatusBadSize, call(&state, d, 3, m, 8, {0, 4}, 3, 0), state);
  EXPECT_FAILS(tevStatusBadSize, call(&state, d, 32, m, 7, {8, 0}, 3, 0), state);
  EXPECT_FAILS(tevStatusBadStep, call(&state, d, 33, m, 7, {8, 4}, 3, 0), state);
  EXPECT_FAILS(tevStatusBadStep, call(&state, d, 31, m, 8, {8, 4}, 3, 2), state);
  EXPECT_FAILS(tevStatusStepNotAligned, call(&state, d, 33, m, 8, {8, 4}, 3, 2), state);
  EXPECT_FAILS(tevStatusBadArg, call(&state, d, 32, m, 8, {8, 4}, 3, 2), state);
  EXPECT_FAILS(tevStatusBadArg, call(&state, d, 32, m, 8, {8, 4}, 3, -1), state);
  EXPECT_FAILS(tevStatusBadArg, call(&state, d, 32, m, 8, {8, 4}, 0.5F, 0), state);
  EXPECT_FAILS(tevStatusBadArg, call(&state, d, 32, m, 8, {8, 4}, nan, 1), state);
  EXPECT_EQ(teviInpaintFree_8u_C1R(nullptr), tevStatusNullPtr);
  EXPECT_EQ(teviInpaintFree_8u_C3R(nullptr), tevStatusNullPtr);
}

TYPED_TEST(Inpaint, ChecksPointersThenSizeThenSteps) {
  constexpr int channels = TypeParam::value;
  const auto s = holeSetting();
  TevInpaintState* state = nullptr;
  ASSERT_EQ(init<channels>(&state, s.t, s.mask, 3, 0), tevStatusOk);
  const Image<Tev8u, channels> src(30, 20);
  Image<Tev8u, channels> dst(30, 20);
  const int step = 30 * channels;
  const auto call = [&](const Tev8u* from, int fromStep, Tev8u* to, int toStep, TevSize roi, TevInpaintState* with) {
    return (channels == 1 ? teviInpaint_8u_C1R : teviInpaint_8u_C3R)(from, fromStep, to, toStep, roi, with);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, step, dst.data(), step, {0, 20}, state), dst);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), step, nullptr, step, {30, 20}, state), dst);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), step, dst.data(), step, {0, 20}, nullptr), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 0, dst.data(), step, {0, 20}, state), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), step, dst.data(), 0, {30, -1}, state), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), step, dst.data(), 0, {29, 20}, state), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), step, dst.data(), 0, {30, 19}, state), dst);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), step, dst.data(), step, {31, 20}, state), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), step - 1, dst.data(), step, {30, 20}, state), dst);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), step, dst.data(), step - 1, {30, 20}, state), dst);
  EXPECT_EQ(call(src.data(), step, dst.data(), step, {30, 20}, state), tevStatusOk);
  teviInpaintFree_8u_C1R(state);
}
