#include "tevcv/distance.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "kit/kit.h"
#include "tevcv_internal/distance.h"

using kit::Buffer;
using kit::grid;
using kit::Image;
using kit::Random;

namespace {

using Wide = long double;

int bufferSize(TevSize roi) {
  int size = 0;
  EXPECT_EQ(teviFastMarchingGetBufferSize_8u32f_C1R(roi, &size), tevStatusOk);
  return size;
}

Image<Tev32f> march(const Image<Tev8u>& src, Tev32f radius = 0, int threads = 1, int misalignment = 0) {
  kit::Threads setting(threads);
  Image<Tev32f> dst(src.width(), src.height(), 4 * (misalignment & 1), misalignment);
  const Buffer buffer(bufferSize(src.size()), misalignment);
  EXPECT_EQ(
      teviFastMarching_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), dst.size(), radius, buffer.data()),
      tevStatusOk);
  return dst;
}

// The sweeps once more, pixel by pixel and step by step, with every time in extended precision.
class SlowMarch {
 public:
  SlowMarch(const Image<Tev8u>& src, Tev32f radius)
      : src_(src),
        w_(src.width()),
        h_(src.height()),
        banded_(radius > 0),
        reach_(Wide{radius} + 1e-5F),
        t_(static_cast<size_t>(w_) * h_),
        flags_((static_cast<size_t>(h_) + 2) * w_),
        active_(static_cast<size_t>(h_) + 2) {}

  Image<Tev32f> alone() {
    first(0, h_);
    activity(h_ - 1) = 0;
    if (second(h_ - 2, -1, false))
      for (;;) {
        activity(0) = 0;
        if (!third(1, h_, false)) break;
        activity(h_ - 1) = 0;
        if (!third(h_ - 2, -1, false)) break;
      }
    return image();
  }

  // The same by two threads, one after the other.
  Image<Tev32f> inTwo() {
    std::vector<int> counts(size_t(h_), 0);
    int total = 0, sum = 0, s = h_;
    for (int y = 0; y < h_; ++y)
      for (int x = 0; x < w_; ++x) counts[size_t(y)] += inside(x, y);
    for (int c : counts) total += c;
    for (int y = 0; y < h_ && s == h_; ++y)
      if ((sum += counts[size_t(y)]) > total >> 1 && y > 0) s = y;
    s = std::min(std::max(s, 3), h_ - 3);
    first(0, s);
    first(h_ - 1, s - 1);
    if (banded_) activity(s) = activity(s - 1) = 1;
    bool seam = second(s - 1, s - 2, false);
    seam |= second(s, s + 1, false);
    bool sides = second(s - 2, -1, true);
    sides |= second(s + 1, h_, true);
    while (seam || sides) {
      activity(0) = activity(h_ - 1) = 0;
      sides = third(1, s - 1, false);
      sides |= third(h_ - 2, s, false);
      seam = third(s - 1, s + 1, true);
      seam |= third(s, s - 2, true);
      if (!seam && !sides) break;
      sides = third(s - 2, -1, false);
      sides |= third(s + 1, h_, false);
    }
    return image();
  }

 private:
  Image<Tev32f> image() {
    Image<Tev32f> times(w_, h_);
    for (int y = 0; y < h_; ++y)
      for (int x = 0; x < w_; ++x) times.set(x, y, time(x, y));
    return times;
  }

  Tev32f& time(int x, int y) { return t_[static_cast<size_t>(y) * w_ + x]; }
  unsigned char& flag(int x, int y) { return flags_[(static_cast<size_t>(y) + 1) * w_ + x]; }
  unsigned char& activity(int y) { return active_[static_cast<size_t>(y) + 1]; }
  bool inside(int x, int y) const { return src_.at(x, y) != 0; }

  static Wide solve(Wide a, Wide b) {
    return std::fabs(a - b) < 1 ? 0.5L * (a + b + std::sqrt(2 - (a - b) * (a - b))) : std::min(a, b) + 1;
  }

  // The candidate of (x, y) from row `from` and, where there is one, column `side`. 0 on the zero side: none.
  Wide candidate(int x, int y, int from, int side) {
    const bool hasSide = side >= 0 && side < w_;
    Wide a = time(x, from), b = hasSide ? time(side, y) : 0;
    if (inside(x, y)) {
      if (banded_) a = std::max<Wide>(a, 0), b = std::max<Wide>(b, 0);
      return hasSide ? solve(a, b) : a + 1;
    }
    return band(a, b);
  }
  static Wide band(Wide a, Wide b) {
    if (a > 0 || b > 0) return -1e-10F;
    if (a == 0 && b == 0) return 0;
    if (a == 0 || b == 0) return std::min(a, b) - 1;
    return std::fabs(a - b) < 1 ? 0.5L * ((a + b) - std::sqrt(2 - (a - b) * (a - b))) : std::max(a, b) - 1;
  }
  bool accept(bool in, Wide c, Tev32f& stored) const {
    if (in ? !(c < stored) : !banded_ || c == 0 || c < -reach_ || (stored != 0 && c <= stored)) return false;
    stored = static_cast<Tev32f>(c);
    return true;
  }

  void first(int start, int stop) {
    const int step = start < stop ? 1 : -1;
    for (int x = 0; x < w_; ++x) {
      Wide c = 0;
      if (inside(x, start))
        c = x == 0 ? 999999.0L : (banded_ ? std::max<Wide>(time(x - 1, start), 0) : Wide{time(x - 1, start)}) + 1;
      else if (banded_ && x > 0)
        c = band(0, time(x - 1, start));
      time(x, start) = !inside(x, start) && c < -reach_ ? 0 : static_cast<Tev32f>(c);
    }
    for (int x = w_ - 2; x >= 0; --x) {
      const Tev32f b = time(x + 1, start);
      accept(inside(x, start), inside(x, start) ? Wide{banded_ ? std::max(b, 0.0F) : b} + 1 : band(0, b),
             time(x, start));
    }
    activity(start) = 1;
    for (int y = start + step; y != stop; y += step) {
      bool changed = false;
      for (int x = 0; x < w_; ++x) {
        const Wide c = inside(x, y) || banded_ ? candidate(x, y, y - step, x - 1) : 0;
        time(x, y) = !inside(x, y) && c < -reach_ ? 0 : static_cast<Tev32f>(c);
        changed |= inside(x, y);
      }
      for (int x = w_ - 1; x >= 0; --x) accept(inside(x, y), candidate(x, y, y - step, x + 1), time(x, y));
      activity(y) |= changed;
      activity(y - 1) |= changed;
      activity(y + 1) |= changed;
    }
  }

  bool second(int start, int stop, bool keep) { return later(start, stop, keep, true); }
  bool third(int start, int stop, bool keep) { return later(start, stop, keep, false); }

  bool later(int start, int stop, bool keep, bool all) {
    const int step = start < stop ? 1 : -1;
    const int forwardLeft = step > 0 ? 1 : 4, forwardRight = 2 * forwardLeft;
    const int reverseLeft = step > 0 ? 4 : 1, reverseRight = 2 * reverseLeft;
    bool any = false, carry = false;
    for (int y = start; y != stop; y += step) {
      if (!activity(y)) continue;
      bool changed = false;
      for (int way : {1, -1})
        for (int x = way > 0 ? 0 : w_ - 1; x >= 0 && x < w_; x += way) {
          const int forward = way > 0 ? forwardLeft : forwardRight;
          if (!all) {
            if (!(flag(x, y) & forward) && !carry) continue;
            flag(x, y) = static_cast<unsigned char>(flag(x, y) & ~forward);
          }
          Wide c = candidate(x, y, y - step, x - way);
          if (!all) c = static_cast<Tev32f>(c);
          carry = accept(inside(x, y), c, time(x, y));
          if (!carry) continue;
          changed = true;
          if (x > 0) flag(x - 1, y) |= reverseRight;
          if (x < w_ - 1) flag(x + 1, y) |= reverseLeft;
          flag(x, y - step) |= reverseLeft | reverseRight;
          if (!all) flag(x, y + step) |= forwardLeft | forwardRight;
        }
      activity(y) = static_cast<unsigned char>((keep && activity(y)) || changed);
      activity(y - 1) |= changed;
      activity(y + 1) |= changed;
      any |= changed;
    }
    return any;
  }

  const Image<Tev8u>& src_;
  int w_, h_;
  bool banded_;
  Wide reach_;
  std::vector<Tev32f> t_;
  std::vector<unsigned char> flags_, active_;
};

// The solution of the upwind equation itself: every pixel is solved from its smaller neighbours of either direction
// until nothing falls any more.
std::vector<double> fixedPoint(const Image<Tev8u>& src) {
  const int w = src.width(), h = src.height();
  std::vector<double> t(static_cast<size_t>(w) * h);
  const auto at = [&](int x, int y) { return x < 0 || y < 0 || x >= w || y >= h ? 1e9 : t[size_t(y) * w + x]; };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) t[size_t(y) * w + x] = src.at(x, y) ? 1e9 : 0;
  for (bool falls = true; falls;) {
    falls = false;
    for (int i = 0; i < 2 * w * h; ++i) {
      const int p = i < w * h ? i : 2 * w * h - 1 - i, x = p % w, y = p / w;
      if (src.at(x, y) == 0) continue;
      const double a = std::min(at(x, y - 1), at(x, y + 1)), b = std::min(at(x - 1, y), at(x + 1, y));
      const double c = std::fabs(a - b) < 1 ? (a + b + std::sqrt(2 - (a - b) * (a - b))) / 2 : std::min(a, b) + 1;
      if (c < t[size_t(p)] - 1e-9) t[size_t(p)] = c, falls = true;
    }
  }
  return t;
}

double farthest(const Image<Tev32f>& times, const std::vector<double>& expected) {
  double worst = 0;
  for (int y = 0; y < times.height(); ++y)
    for (int x = 0; x < times.width(); ++x)
      worst = std::max(worst, std::fabs(times.at(x, y) - expected[size_t(y) * times.width() + x]));
  return worst;
}

double farthest(const Image<Tev32f>& a, const Image<Tev32f>& b) {
  double worst = 0;
  for (int y = 0; y < a.height(); ++y)
    for (int x = 0; x < a.width(); ++x) worst = std::max<double>(worst, std::fabs(a.at(x, y) - b.at(x, y)));
  return worst;
}

Image<Tev8u> filled(int width, int height, Tev8u value, int padding = 0) {
  Image<Tev8u> image(width, height, padding);
  image.fill(value);
  return image;
}

// Masks of every kind: noise of any density, blobs, thin lines, single points.
Image<Tev8u> anyMask(Random& random, int width, int height) {
  Image<Tev8u> mask(width, height, random.between(0, 5), random.between(0, 3));
  const bool background = random.oneIn(2);
  mask.fill(background ? 1 : 0);
  const int kind = random.between(0, 3);
  if (kind == 0) {
    const int sparsity = random.between(1, 60);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        if (random.oneIn(sparsity)) mask.set(x, y, background ? 0 : random.between(1, 255));
  } else {
    const int count = random.between(1, 6);
    for (int i = 0; i < count; ++i) {
      double x = random.between(0, width - 1), y = random.between(0, height - 1);
      const double dx = random.real(1), dy = random.real(1);
      const int size = kind == 1 ? random.between(1, 8) : 1, length = kind == 3 ? 1 : random.between(2, 40);
      for (int s = 0; s < length; ++s, x += dx, y += dy)
        for (int v = 0; v < size; ++v)
          for (int u = 0; u < size; ++u) {
            const int px = static_cast<int>(x) + u, py = static_cast<int>(y) + v;
            if (px >= 0 && py >= 0 && px < width && py < height) mask.set(px, py, background ? 0 : 255);
          }
    }
  }
  return mask;
}

bool hasZero(const Image<Tev8u>& mask) {
  for (int y = 0; y < mask.height(); ++y)
    for (int x = 0; x < mask.width(); ++x)
      if (mask.at(x, y) == 0) return true;
  return false;
}

}  // namespace

TEST(FastMarching, TimesRiseByOneAlongTheAxesAndByTheUpwindSolutionDiagonally) {
  const auto src = grid<Tev8u>({{1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 0, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}});
  const auto t = march(src);
  constexpr Tev32f d = 1.70710678F, e = 2.54532886F, f = 3.25243568F;
  EXPECT_SAME_IMAGE(
      t, grid<Tev32f>({{f, e, 2, e, f}, {e, d, 1, d, e}, {2, 1, 0, 1, 2}, {e, d, 1, d, e}, {f, e, 2, e, f}}));
}

TEST(FastMarching, IsZeroOnAMaskWithoutPixelsToSolve) {
  const Image<Tev8u> src = filled(37, 20, 0);
  for (int threads : {1, 2})
    for (Tev32f radius : {0.0F, 3.0F}) EXPECT_SAME_IMAGE(march(src, radius, threads), Image<Tev32f>(37, 20).fill(0));
}

TEST(FastMarching, CountsUpFromAConstantWithoutAFront) {
  const auto t = march(grid<Tev8u>({{1, 1, 1}, {1, 1, 1}}));
  // Floats of this size stand a sixteenth apart.
  EXPECT_SAME_IMAGE(t, grid<Tev32f>({{999999, 1000000, 1000001}, {1000000, 1000000.6875F, 1000001.5625F}}));
}

TEST(FastMarching, MarksTheFrontAndFallsBelowZeroOutToTheRadius) {
  const auto src = grid<Tev8u>({{0, 0, 0, 0, 1, 1, 0, 0, 0, 0}});
  constexpr Tev32f m = -1e-10F;
  EXPECT_SAME_IMAGE(march(src, 1e-30F), grid<Tev32f>({{0, 0, 0, m, 1, 1, m, 0, 0, 0}}));
  EXPECT_SAME_IMAGE(march(src, 1), grid<Tev32f>({{0, 0, -1, m, 1, 1, m, -1, 0, 0}}));
  EXPECT_SAME_IMAGE(march(src, 2.5F), grid<Tev32f>({{0, -2, -1, m, 1, 1, m, -1, -2, 0}}));
}

TEST(FastMarching, GivesTheInsideTheSameTimesWithABandAndWithout) {
  Random random;
  for (int trial = 0; trial < 40; ++trial) {
    const auto src = anyMask(random, random.between(1, 40), random.between(1, 40));
    const auto plain = march(src), banded = march(src, 4);
    for (int y = 0; y < src.height(); ++y)
      for (int x = 0; x < src.width(); ++x) {
        if (src.at(x, y) != 0)
          ASSERT_NEAR(plain.at(x, y), banded.at(x, y), plain.at(x, y) > 9e5F ? 1 : 1e-4F);
        else
          ASSERT_TRUE(banded.at(x, y) <= 0 && banded.at(x, y) >= -4.001F);
      }
  }
}

TEST(FastMarching, MirrorsTheTimesOfThePixelsOnTheOtherSideOfAStraightFront) {
  Image<Tev8u> src(20, 20);
  for (int y = 0; y < 20; ++y)
    for (int x = 0; x < 20; ++x) src.set(x, y, y >= 10);
  const auto t = march(src, 5);
  for (int x = 0; x < 20; ++x) {
    EXPECT_EQ(t.at(x, 9), -1e-10F);
    EXPECT_EQ(t.at(x, 3), 0);
    EXPECT_NEAR(t.at(x, 5), -4, 1e-5);
  }
}

TEST(FastMarching, EqualsTheSweepsStepByStepToTheBit) {
  Random random;
  for (int trial = 0; trial < 250; ++trial) {
    const auto src = anyMask(random, random.between(1, trial % 10 == 0 ? 150 : 45), random.between(1, 45));
    ASSERT_SAME_IMAGE(march(src, 0, 1, trial % 8), SlowMarch(src, 0).alone()) << "trial " << trial;
    const Tev32f radius = random.oneIn(3) ? 1e-20F : 0.1F * static_cast<Tev32f>(random.between(1, 150));
    ASSERT_SAME_IMAGE(march(src, radius, 1, trial % 8), SlowMarch(src, radius).alone())
        << "trial " << trial << ", radius " << radius;
  }
}

TEST(FastMarching, EqualsTheSweepsOnALargeMaskOfFewFronts) {
  Random random;
  Image<Tev8u> src = filled(300, 220, 9);
  for (int i = 0; i < 12; ++i) src.set(random.between(0, 299), random.between(0, 219), 0);
  EXPECT_SAME_IMAGE(march(src), SlowMarch(src, 0).alone());
  EXPECT_SAME_IMAGE(march(src, 6), SlowMarch(src, 6).alone());
}

TEST(FastMarching, SolvesTheUpwindEquation) {
  Random random;
  for (int trial = 0; trial < 120; ++trial) {
    const auto src = anyMask(random, random.between(1, 60), random.between(1, 60));
    if (!hasZero(src)) continue;
    const auto expected = fixedPoint(src);
    ASSERT_LT(farthest(march(src), expected), 1e-4) << "trial " << trial;
    if (trial % 4 == 0) {
      ASSERT_LT(farthest(march(src, 0, 2), expected), 1e-4) << "trial " << trial;
    }
  }
}

TEST(FastMarching, OfTwoThreadsIsThatOfOneButForTheLastBits) {
  Random random;
  for (int trial = 0; trial < 24; ++trial) {
    const auto src = anyMask(random, random.between(13, 90), random.between(13, 90));
    if (!hasZero(src)) continue;
    for (Tev32f radius : {0.0F, 5.5F}) {
      const auto one = march(src, radius), two = march(src, radius, 2);
      ASSERT_LT(farthest(one, two), 1e-4) << "trial " << trial << ", radius " << radius;
      // No more than two threads ever march.
      if (trial % 6 != 0) continue;
      for (int threads : {3, 8, 40}) ASSERT_SAME_IMAGE(march(src, radius, threads), two);
    }
  }
}

TEST(FastMarching, OfTwoThreadsEqualsTheSweepsOfBothHalvesStepByStep) {
  Random random;
  for (int trial = 0; trial < 40; ++trial) {
    const bool large = trial % 4 == 0;
    const auto src = anyMask(random, random.between(13, large ? 80 : 20), random.between(13, large ? 80 : 20));
    const Tev32f radius = trial % 2 == 0 ? 0.0F : 4.5F;
    ASSERT_SAME_IMAGE(march(src, radius, 2), SlowMarch(src, radius).inTwo())
        << "trial " << trial << ", radius " << radius;
  }
}

TEST(FastMarching, OfThirteenRowsAndColumnsIsSharedAndOfTwelveIsNot) {
  // The counts of pixels in each row, by which two threads share the work, stand in the buffer behind the flags.
  kit::Threads setting(2);
  for (const TevSize roi : {TevSize{13, 13}, TevSize{12, 13}, TevSize{13, 12}}) {
    auto src = filled(roi.width, roi.height, 0);
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < y; ++x) src.set(x, y, 1);
    Image<Tev32f> dst(roi.width, roi.height);
    const Buffer buffer(bufferSize(roi));
    const auto before = kit::bytesOf(buffer);
    ASSERT_EQ(teviFastMarching_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), roi, 0, buffer.data()),
              tevStatusOk);
    const size_t counters =
        size_t(-reinterpret_cast<std::uintptr_t>(buffer.data()) & 31) + (size_t(roi.height) + 2) * 32;
    for (int y = 0; y < roi.height; ++y) {
      Tev32s count, untouched;
      std::memcpy(&count, buffer.data() + counters + 4 * size_t(y), 4);
      std::memcpy(&untouched, before.data() + counters + 4 * size_t(y), 4);
      EXPECT_EQ(count, roi.width == 13 && roi.height == 13 ? y : untouched);
    }
  }
}

TEST(FastMarching, OfUpToTwelveRowsOrColumnsIsMarchedByOneThread) {
  Random random;
  for (int trial = 0; trial < 40; ++trial) {
    const bool flat = random.oneIn(2);
    const int width = flat ? random.between(1, 60) : random.between(1, 12),
              height = flat ? random.between(1, 12) : random.between(1, 60);
    const auto src = anyMask(random, width, height);
    ASSERT_SAME_IMAGE(march(src, 3, 2), march(src, 3, 1));
  }
}

TEST(FastMarching, SplitsAtLeastThreeRowsFromEitherEnd) {
  // All work in the first rows, and all in the last: both threads still have rows of their own.
  for (int top : {0, 11}) {
    Image<Tev8u> src = filled(30, 13, 0);
    for (int y = top; y < top + 2; ++y)
      for (int x = 3; x < 27; ++x) src.set(x, y, 1);
    EXPECT_LT(farthest(march(src, 0, 2), march(src)), 1e-5);
    EXPECT_LT(farthest(march(src, 4, 2), march(src, 4)), 1e-5);
  }
}

TEST(FastMarching, CalledFromTheCallersOwnThreadsDoesAllRows) {
  Random random;
  const auto src = anyMask(random, 70, 50);
  const auto expected = march(src, 2, 2);
  kit::Threads setting(2);
  Image<Tev32f> dst[3] = {Image<Tev32f>(70, 50), Image<Tev32f>(70, 50), Image<Tev32f>(70, 50)};
  const int size = bufferSize(src.size());
#pragma omp parallel for num_threads(3)
  for (int i = 0; i < 3; ++i) {
    const Buffer buffer(size, i);
    teviFastMarching_8u32f_C1R(src.data(), src.step(), dst[i].data(), dst[i].step(), src.size(), 2, buffer.data());
  }
  for (const auto& d : dst) EXPECT_SAME_IMAGE(d, expected);
}

TEST(FastMarching, FollowsAFrontAroundASpiral) {
  // The zero pixels are the front, however they wind: a spiral of them gives each corridor the times of its walls.
  Image<Tev8u> src = filled(101, 101, 1);
  double angle = 0;
  for (; angle < 60; angle += 0.005) {
    const int x = static_cast<int>(50 + 0.8 * angle * std::cos(angle)),
              y = static_cast<int>(50 + 0.8 * angle * std::sin(angle));
    src.set(x, y, 0);
  }
  const auto expected = fixedPoint(src);
  EXPECT_LT(farthest(march(src), expected), 1e-4);
  EXPECT_LT(farthest(march(src, 0, 2), expected), 1e-4);
}

TEST(FastMarchingGetBufferSize, IsFiveBytesARowAndAFlagAPixelInRowsOfMultiplesOf32) {
  EXPECT_EQ(bufferSize({1, 1}), 5 + 10 + 3 * 32 + 40);
  EXPECT_EQ(bufferSize({32, 7}), 35 + 10 + 9 * 32 + 40);
  EXPECT_EQ(bufferSize({33, 7}), 35 + 10 + 9 * 64 + 40);
  EXPECT_EQ(bufferSize({640, 480}), 2400 + 10 + 482 * 640 + 40);
  int size = 7;
  EXPECT_FAILS(tevStatusNullPtr, teviFastMarchingGetBufferSize_8u32f_C1R({0, 1}, nullptr));
  EXPECT_FAILS(tevStatusBadSize, teviFastMarchingGetBufferSize_8u32f_C1R({0, 1}, &size), size);
  EXPECT_FAILS(tevStatusBadSize, teviFastMarchingGetBufferSize_8u32f_C1R({1, 0}, &size), size);
}

TEST(FastMarching, ChecksPointersThenSizeThenStepsThenAlignmentThenRadius) {
  const Image<Tev8u> src = filled(8, 4, 1, 3);
  Image<Tev32f> dst(8, 4, 8);
  const Buffer buffer(bufferSize({8, 4}));
  constexpr Tev32f nan = std::numeric_limits<Tev32f>::quiet_NaN();
  const auto call = [&](const Tev8u* s, int sStep, Tev32f* d, int dStep, TevSize roi, Tev32f radius, Tev8u* b) {
    return teviFastMarching_8u32f_C1R(s, sStep, d, dStep, roi, radius, b);
  };
  EXPECT_FAILS(tevStatusNullPtr, call(nullptr, 8, dst.data(), 32, {0, 4}, 0, buffer.data()), dst, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 8, nullptr, 32, {8, 4}, 0, buffer.data()), dst, buffer);
  EXPECT_FAILS(tevStatusNullPtr, call(src.data(), 8, dst.data(), 32, {8, 4}, 0, nullptr), dst, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), -1, dst.data(), 32, {0, 4}, 0, buffer.data()), dst, buffer);
  EXPECT_FAILS(tevStatusBadSize, call(src.data(), 8, dst.data(), 31, {8, 0}, 0, buffer.data()), dst, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), 7, dst.data(), 33, {8, 4}, 0, buffer.data()), dst, buffer);
  EXPECT_FAILS(tevStatusBadStep, call(src.data(), 8, dst.data(), 31, {8, 4}, -1, buffer.data()), dst, buffer);
  EXPECT_FAILS(tevStatusStepNotAligned, call(src.data(), 8, dst.data(), 33, {8, 4}, -1, buffer.data()), dst, buffer);
  EXPECT_FAILS(tevStatusBadArg, call(src.data(), 8, dst.data(), 32, {8, 4}, -1e-30F, buffer.data()), dst, buffer);
  EXPECT_FAILS(tevStatusBadArg, call(src.data(), 8, dst.data(), 32, {8, 4}, nan, buffer.data()), dst, buffer);
  EXPECT_EQ(call(src.data(), 8, dst.data(), 32, {8, 4}, 0, buffer.data()), tevStatusOk);
  EXPECT_EQ(call(src.data(), 8, dst.data(), 32, {8, 4}, std::numeric_limits<Tev32f>::infinity(), buffer.data()),
            tevStatusOk);
}

TEST(FastMarchingWorkers, SweepTheRowsThatTheyAreGiven) {
  Random random;
  for (Tev32f radius : {0.0F, 2.0F}) {
    const auto src = anyMask(random, 40, 30);
    const int stride = 64;
    Image<Tev32f> dst(40, 30);
    std::vector<Tev8u> flagArea(32 * stride), activityArea(32);
    Tev8u *const flags = flagArea.data() + stride, *const activity = activityArea.data() + 1;
    const auto first = [&](int a, int b) {
      return radius > 0
                 ? ownFMMFirstExt(src.data(), src.step(), dst.data(), dst.step(), 40, flags, stride, activity, a, b,
                                  radius)
                 : ownFMMFirst(src.data(), src.step(), dst.data(), dst.step(), 40, flags, stride, activity, a, b);
    };
    const auto second = [&](int a, int b, int keep) {
      return radius > 0 ? ownFMMSecondExt(src.data(), src.step(), dst.data(), dst.step(), 40, flags, stride, activity,
                                          a, b, keep, radius)
                        : ownFMMSecond(src.data(), src.step(), dst.data(), dst.step(), 40, flags, stride, activity, a,
                                       b, keep);
    };
    const auto third = [&](int a, int b, int keep) {
      return radius > 0
                 ? ownFMMThirdExt(src.data(), src.step(), dst.data(), dst.step(), 40, flags, stride, activity, a, b,
                                  keep, radius)
                 : ownFMMThird(src.data(), src.step(), dst.data(), dst.step(), 40, flags, stride, activity, a, b, keep);
    };
    EXPECT_NE(first(0, 30), 0);
    activity[29] = 0;
    if (second(28, -1, 0))
      for (int pass = 0;; ++pass) {
        activity[pass % 2 ? 29 : 0] = 0;
        if (!(pass % 2 ? third(28, -1, 0) : third(1, 30, 0))) break;
      }
    EXPECT_SAME_IMAGE(dst, march(src, radius));
    EXPECT_EQ(second(28, -1, 0) | third(1, 30, 1), 0);  // nothing is left to do
  }
}

TEST(FastMarchingWorkers, DriveTwoThreads) {
  Random random;
  const auto src = anyMask(random, 40, 30);
  kit::Threads setting(2);
  for (Tev32f radius : {0.0F, 2.0F}) {
    Image<Tev32f> dst(40, 30);
    std::vector<Tev8u> flags(32 * 64), activity(32);
    std::vector<Tev32s> counters(30);
    if (radius > 0)
      ownFastMarching_r_omp(src.data(), src.step(), dst.data(), dst.step(), 40, 30, flags.data() + 64, 64,
                            activity.data() + 1, counters.data(), radius);
    else
      ownFastMarching_0_omp(src.data(), src.step(), dst.data(), dst.step(), 40, 30, flags.data() + 64, 64,
                            activity.data() + 1, counters.data());
    EXPECT_SAME_IMAGE(dst, march(src, radius, 2));
  }
}
