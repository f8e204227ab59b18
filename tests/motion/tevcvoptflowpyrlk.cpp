#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "kit/kit.h"
#include "tevcv/filtering.h"
#include "tevcv/geometry.h"
#include "tevcv/motion.h"
#include "tevcv_internal/geometry.h"
#include "tevcv_internal/motion.h"

using kit::AllocatorWatch;
using kit::Image;
using kit::Random;
using kit::Threads;

namespace {

using Extended = long double;

// The three members of the family, and how each of them samples.
struct Bytes {
  using Pixel = Tev8u;
  using Patch = Tev16u;
  using Gradient = Tev16s;
  static constexpr bool fixed = true;
  static constexpr auto init = teviOpticalFlowPyrLKInitAlloc_8u_C1R;
  static constexpr auto track = teviOpticalFlowPyrLK_8u_C1R;
  static constexpr auto release = teviOpticalFlowPyrLKFree_8u_C1R;
  static TevStatus first(const Tev8u* s, int ss, TevSize sr, Tev16u* d, int ds, TevSize dr, float x, float y,
                         TevPoint* a, TevPoint* b) {
    return teviCopySubpixIntersect_8u16u_C1R_Sfs(s, ss, sr, d, ds, dr, x, y, a, b, -7);
  }
  static void second(const Tev8u* s, int ss, TevSize sr, Tev16u* d, int ds, TevSize dr, float x, float y, TevPoint* a,
                     TevPoint* b) {
    ownGetRectSubpix_8u16u_C1R_Sfs(s, ss, sr, d, ds, dr, x, y, a, b, -7);
  }
};
struct Words {
  using Pixel = Tev16u;
  using Patch = Tev32f;
  using Gradient = Tev32f;
  static constexpr bool fixed = false;
  static constexpr auto init = teviOpticalFlowPyrLKInitAlloc_16u_C1R;
  static constexpr auto track = teviOpticalFlowPyrLK_16u_C1R;
  static constexpr auto release = teviOpticalFlowPyrLKFree_16u_C1R;
  static constexpr auto first = teviCopySubpixIntersect_16u32f_C1R;
  static constexpr auto second = ownGetRectSubpix_16u32f_C1R;
};
struct Floats {
  using Pixel = Tev32f;
  using Patch = Tev32f;
  using Gradient = Tev32f;
  static constexpr bool fixed = false;
  static constexpr auto init = teviOpticalFlowPyrLKInitAlloc_32f_C1R;
  static constexpr auto track = teviOpticalFlowPyrLK_32f_C1R;
  static constexpr auto release = teviOpticalFlowPyrLKFree_32f_C1R;
  static constexpr auto first = teviCopySubpixIntersect_32f_C1R;
  static constexpr auto second = ownGetRectSubpix_32f_C1R;
};

// A smooth texture of waves, the same in every run.
struct Texture {
  explicit Texture(unsigned stream, float frequency = 0.7F) {
    std::uint32_t state = stream * 2654435761U + 12345;
    const auto real = [&state](float limit) {
      state = state * 1664525U + 1013904223U;
      return limit * (static_cast<float>(state >> 8) / (1 << 23) - 1);
    };
    for (auto& w : waves) {
      w[0] = real(frequency), w[1] = real(frequency), w[2] = real(3.1F);
      w[3] = 15 + std::fabs(real(20));
    }
  }
  double at(double x, double y) const {
    double sum = 128;
    for (const auto& w : waves) sum += w[3] / 3 * std::sin(w[0] * x + w[1] * y + w[2]);
    return std::clamp(sum, 0.0, 255.0);
  }
  std::array<std::array<float, 4>, 12> waves;
};

// A pyramid record over images of its own: each level samples the texture at its own scale.
template <class K>
class Pyramid {
 public:
  using T = typename K::Pixel;
  Pyramid(const Texture& texture, int width, int height, int maxLevel, double dx, double dy, double rate = 2) {
    double scale = 1;
    for (int l = 0; l <= maxLevel; ++l) {
      auto image = std::make_unique<Image<T>>(std::max(1, width), std::max(1, height), l % 3 * int{sizeof(T)}, l % 2);
      for (int y = 0; y < image->height(); ++y)
        for (int x = 0; x < image->width(); ++x) {
          const double value = texture.at(x / scale - dx, y / scale - dy);
          image->set(x, y,
                     static_cast<T>(std::is_same_v<T, Tev32f>   ? value
                                    : std::is_same_v<T, Tev16u> ? value * 200
                                                                : value + 0.5));
        }
      add(std::move(image), scale);
      width = static_cast<int>(width / rate), height = static_cast<int>(height / rate);
      scale *= 1 / rate;
    }
  }
  void add(std::unique_ptr<Image<T>> image, double scale) {
    images.push_back(image->data());
    roi.push_back(image->size());
    steps.push_back(image->step());
    scales.push_back(scale);
    levels.push_back(std::move(image));
  }
  TevPyramid record() {
    return {images.data(), roi.data(), scales.data(), steps.data(), nullptr, static_cast<int>(images.size()) - 1};
  }

  std::vector<void*> images;
  std::vector<TevSize> roi;
  std::vector<double> scales;
  std::vector<int> steps;
  std::vector<std::unique_ptr<Image<T>>> levels;
};

struct Points {
  std::vector<float> prev, next;
  std::vector<Tev8s> status;
  std::vector<float> error;
  int count() const { return static_cast<int>(status.size()); }
  void add(float x, float y, float guessX, float guessY) {
    prev.insert(prev.end(), {x, y});
    next.insert(next.end(), {guessX, guessY});
    status.push_back(-77);
    error.push_back(-1);
  }
};

Points grid(int count, int width, int height, Random& random, float guessError = 0) {
  Points p;
  for (int i = 0; i < count; ++i) {
    const float x = static_cast<float>(width) * (0.5F + random.real(0.5F)),
                y = static_cast<float>(height) * (0.5F + random.real(0.5F));
    p.add(x, y, x + random.real(guessError), y + random.real(guessError));
  }
  return p;
}

void expectSame(const Points& actual, const Points& expected) {
  for (int i = 0; i < actual.count(); ++i) {
    const auto at = static_cast<size_t>(i);
    ASSERT_EQ(actual.status[at], expected.status[at]) << "point " << i;
    ASSERT_TRUE(kit::sameBits(actual.next[2 * at], expected.next[2 * at]) &&
                kit::sameBits(actual.next[2 * at + 1], expected.next[2 * at + 1]) &&
                kit::sameBits(actual.error[at], expected.error[at]))
        << "point " << i << " at " << actual.next[2 * at] << ' ' << actual.next[2 * at + 1] << " error "
        << actual.error[at] << ", expected " << expected.next[2 * at] << ' ' << expected.next[2 * at + 1] << ' '
        << expected.error[at];
  }
}

struct Settings {
  int windowSize = 7, maxLevel = 2, maxIterations = 10;
  float threshold = 0.01F;
  TevSize roi = {40, 40};
};

template <class K>
Points flow(Pyramid<K>& a, Pyramid<K>& b, const Points& points, const Settings& s) {
  TevOptFlowPyrLKState* state = nullptr;
  EXPECT_EQ(K::init(&state, s.roi, s.windowSize, 0), tevStatusOk);
  Points result = points;
  const TevPyramid first = a.record(), second = b.record();
  EXPECT_EQ(K::track(&first, &second, result.prev.data(), result.next.data(), result.status.data(), result.error.data(),
                     result.count(), s.windowSize, s.maxLevel, s.maxIterations, s.threshold, state),
            tevStatusOk);
  EXPECT_EQ(K::release(state), tevStatusOk);
  EXPECT_EQ(result.prev, points.prev);
  return result;
}

// --- The definition ---

template <class K>
struct Gradients {
  Image<typename K::Gradient> x, y;
};

template <class K>
Gradients<K> levelGradients(const Image<typename K::Pixel>& level) {
  using G = typename K::Gradient;
  const TevSize roi = level.size();
  Gradients<K> g{Image<G>(roi.width, roi.height), Image<G>(roi.width, roi.height)};
  int size = 0, other = 0;
  if constexpr (K::fixed) {
    teviFilterScharrHorizGetBufferSize_8u16s_C1R(roi, &size);
    teviFilterScharrVertGetBufferSize_8u16s_C1R(roi, &other);
    std::vector<Tev8u> buffer(static_cast<size_t>(std::max(size, other)));
    teviFilterScharrHorizBorder_8u16s_C1R(level.data(), level.step(), g.y.data(), g.y.step(), roi, tevBorderRepl, 0,
                                          buffer.data());
    teviFilterScharrVertBorder_8u16s_C1R(level.data(), level.step(), g.x.data(), g.x.step(), roi, tevBorderRepl, 0,
                                         buffer.data());
  } else {
    Image<Tev32f> source(roi.width, roi.height);
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < roi.width; ++x)
        source.set(x, y, static_cast<float>(level.at(x, y)) * (std::is_same_v<K, Words> ? 0.03125F : 1.0F));
    teviFilterScharrHorizGetBufferSize_32f_C1R(roi, &size);
    teviFilterScharrVertGetBufferSize_32f_C1R(roi, &other);
    std::vector<Tev8u> buffer(static_cast<size_t>(std::max(size, other)));
    teviFilterScharrHorizBorder_32f_C1R(source.data(), source.step(), g.y.data(), g.y.step(), roi, tevBorderRepl, 0,
                                        buffer.data());
    teviFilterScharrVertBorder_32f_C1R(source.data(), source.step(), g.x.data(), g.x.step(), roi, tevBorderRepl, 0,
                                       buffer.data());
  }
  for (auto* image : {&g.x, &g.y})
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < roi.width; ++x)
        if (K::fixed)
          image->set(x, y, static_cast<G>(image->at(x, y) * 4));
        else if (std::is_same_v<K, Floats>)
          image->set(x, y, static_cast<G>(image->at(x, y) * 0.03125F));
  return g;
}

int clamp16(int v) { return std::clamp(v, -32768, 32767); }

// Everything about one point that outlives a level.
struct Tracked {
  int ax = 0, ay = 0, bx = -1, by = -1;
  Extended squares = 0;  // of the last iteration's window, added in float
};

enum class End { tracked, lost, left };

template <class K>
End pointStep(const Image<typename K::Pixel>& first, const Image<typename K::Pixel>& second, float px, float py,
              float& gx, float& gy, const Settings& s, const Gradients<K>* images, Tracked& t) {
  using G = typename K::Gradient;
  const int ws = s.windowSize, W = ws + 2;
  Image<typename K::Patch> I(W, W), J(ws, ws);
  Image<G> Ix(ws, ws), Iy(ws, ws);
  TevPoint low, high;
  K::first(first.data(), first.step(), first.size(), I.data(), I.step(), I.size(), px, py, &low, &high);
  const int x0 = low.x > 0 ? low.x - 1 : low.x, y0 = low.y > 0 ? low.y - 1 : low.y;
  const int x1 = high.x - 1 - (high.x > ws), y1 = high.y - 1 - (high.y > ws);
  const Extended cornerX = px - (ws + 1) * 0.5L, cornerY = py - (ws + 1) * 0.5L;
  const int cx = cornerX < 0 ? 0 : static_cast<int>(cornerX) + 1, cy = cornerY < 0 ? 0 : static_cast<int>(cornerY) + 1;
  if (images == nullptr || K::fixed) {
    for (int y = y0; y <= y1; ++y)
      for (int x = x0; x <= x1; ++x)
        if (images != nullptr) {
          const auto part = [](Extended v) {
            Extended f = v - std::trunc(v);
            if (f < 0) f += 1;
            return static_cast<Tev16u>(static_cast<int>(f * 32768 + 0.5L));
          };
          const long long ax = part(cornerX), ay = part(cornerY), bx = 32768 - ax, by = 32768 - ay;
          for (auto [from, to] : {std::pair{&images->x, &Ix}, {&images->y, &Iy}}) {
            const auto at = [&, f = from](int u, int v) -> long long {
              return f->at(cx + x - x0 + u, cy + y - y0 + v);
            };
            const auto w = [](long long a, long long b) { return (a * b + 16384) >> 15; };
            to->set(x, y,
                    static_cast<G>((at(0, 0) * w(bx, by) + at(1, 0) * w(ax, by) + at(0, 1) * w(bx, ay) +
                                    at(1, 1) * w(ax, ay) + 16384) >>
                                   15));
          }
        } else if constexpr (K::fixed) {
          int a[3], b[3];
          for (int k = 0; k < 3; ++k) {
            const int l = I.at(x, y + k), c = I.at(x + 1, y + k), r = I.at(x + 2, y + k);
            a[k] = r - l, b[k] = 3 * l + 10 * c + 3 * r;
          }
          Ix.set(x, y, static_cast<G>(clamp16((3 * a[0] + 10 * a[1] + 3 * a[2] + 16) >> 5)));
          Iy.set(x, y, static_cast<G>(clamp16((b[2] - b[0] + 16) >> 5)));
        } else {
          float a[3], b[3];
          for (int k = 0; k < 3; ++k) {
            const Extended l = I.at(x, y + k), c = I.at(x + 1, y + k), r = I.at(x + 2, y + k);
            a[k] = static_cast<float>(r - l), b[k] = static_cast<float>(0.09375L * l + 0.3125L * c + 0.09375L * r);
          }
          Ix.set(x, y, static_cast<float>(0.09375L * a[0] + 0.3125L * a[1] + 0.09375L * a[2]));
          Iy.set(x, y, static_cast<float>(Extended{b[2]} - b[0]));
        }
  } else if (x1 >= x0 && y1 >= y0) {
    if constexpr (!K::fixed)
      for (auto [from, to] : {std::pair{&images->x, &Ix}, {&images->y, &Iy}}) {
        Image<Tev32f> part(x1 - x0 + 1, y1 - y0 + 1);
        teviCopySubpix_32f_C1R(from->data() + cy * (from->step() / 4) + cx, from->step(), part.data(), part.step(),
                               part.size(), static_cast<float>(cornerX), static_cast<float>(cornerY));
        for (int y = y0; y <= y1; ++y)
          for (int x = x0; x <= x1; ++x) to->set(x, y, part.at(x - x0, y - y0));
      }
  }
  Extended qx = first.width() + first.height(), qy = qx;
  for (int k = 0; k < s.maxIterations; ++k) {
    K::second(second.data(), second.step(), second.size(), J.data(), J.step(), J.size(), gx, gy, &low, &high);
    t.ax = std::max(x0, low.x), t.ay = std::max(y0, low.y), t.bx = std::min(x1, high.x), t.by = std::min(y1, high.y);
    const auto d = [&](int x, int y) { return static_cast<Extended>(I.at(x + 1, y + 1)) - J.at(x, y); };
    float squares = 0;
    for (int y = t.ay; y < t.by; ++y)
      for (int x = t.ax; x < t.bx; ++x) squares = static_cast<float>(squares + d(x, y) * d(x, y));
    t.squares = squares;
    if (t.bx < t.ax || t.by < t.ay) return End::left;
    Extended sums[5] = {};  // xx, xy, yy, vx, vy
    for (int y = t.ay; y <= t.by; ++y) {
      std::uint32_t row[5] = {};
      for (int x = t.ax; x <= t.bx; ++x) {
        const Extended ix = Ix.at(x, y), iy = Iy.at(x, y);
        const Extended products[5] = {ix * ix, ix * iy, iy * iy, ix * d(x, y), iy * d(x, y)};
        for (int i = 0; i < 5; ++i)
          if (K::fixed)
            row[i] += static_cast<std::uint32_t>(static_cast<long long>(products[i]));
          else
            sums[i] += products[i];
      }
      if (K::fixed)
        for (int i = 0; i < 5; ++i) sums[i] += static_cast<Tev32s>(row[i]);
    }
    const auto [xx, xy, yy, vx, vy] = sums;
    const Extended D = xx * yy - xy * xy;
    if (D < 2.220446049250313e-16) return End::lost;
    const Extended dx = (yy * vx - xy * vy) / D, dy = (xx * vy - xy * vx) / D;
    const float thresholdSquared = s.threshold * s.threshold;
    const auto move = [&](Extended by) {
      gx = static_cast<float>(gx + dx * by), gy = static_cast<float>(gy + dy * by);
      return End::tracked;
    };
    if (dx * dx + dy * dy < thresholdSquared) return move(1);
    if (std::fabs(qx + dx) < 0.0003452669770922512F && std::fabs(qy + dy) < 0.0003452669770922512F) return move(0.5L);
    move(1);
    qx = dx, qy = dy;
  }
  return End::tracked;
}

template <class K>
float errorOf(const Tracked& t) {
  if (!(t.squares > 0)) return 0;
  return static_cast<float>(std::sqrt(t.squares / (Extended(t.bx - t.ax) * (t.by - t.ay))) *
                            (K::fixed ? 0.0078125L : 1.0L));
}

template <class K>
Points flowByDefinition(Pyramid<K>& a, Pyramid<K>& b, Points p, const Settings& s) {
  int L0 = s.maxLevel + 1;
  for (int l = s.maxLevel; l >= 0; --l) {
    if (a.roi[static_cast<size_t>(l)].width >= s.roi.width || a.roi[static_cast<size_t>(l)].height >= s.roi.height)
      break;
    L0 = l;
  }
  const double ratio = s.maxLevel > 1 ? 1 / a.scales[1] : 1.0;
  for (auto& status : p.status) status = static_cast<Tev8s>(s.maxLevel + 1);
  for (int l = s.maxLevel; l >= L0; --l) {
    const auto at = static_cast<size_t>(l);
    const float scale = static_cast<float>(a.scales[at]);
    const Gradients<K> g = levelGradients<K>(*a.levels[at]);
    for (size_t i = 0; i < p.status.size(); ++i) {
      if (p.status[i] != l + 1) continue;
      float gx = p.next[2 * i] * scale, gy = p.next[2 * i + 1] * scale;
      Tracked t;
      const End end = pointStep<K>(*a.levels[at], *b.levels[at], p.prev[2 * i] * scale, p.prev[2 * i + 1] * scale, gx,
                                   gy, s, &g, t);
      p.status[i] = static_cast<Tev8s>(end == End::tracked ? l : l + 1);
      if (end != End::lost) p.next[2 * i] = gx / scale, p.next[2 * i + 1] = gy / scale;
      p.error[i] = errorOf<K>(t);
    }
  }
  for (size_t i = 0; i < p.status.size() && L0 > 0; ++i) {
    if (p.status[i] != L0) continue;
    const Extended entry = a.scales[static_cast<size_t>(L0) - 1];
    float gx = static_cast<float>(p.next[2 * i] * entry), gy = static_cast<float>(p.next[2 * i + 1] * entry);
    Tracked t;
    for (int l = L0 - 1; l >= 0; --l) {
      const auto at = static_cast<size_t>(l);
      const float scale = static_cast<float>(a.scales[at]);
      const End end = pointStep<K>(*a.levels[at], *b.levels[at], p.prev[2 * i] * scale, p.prev[2 * i + 1] * scale, gx,
                                   gy, s, nullptr, t);
      p.status[i] = static_cast<Tev8s>(end == End::tracked ? l : l + 1);
      if (end == End::left) p.next[2 * i] = gx / scale, p.next[2 * i + 1] = gy / scale;
      if (end != End::tracked) break;
      if (l == 0)
        p.next[2 * i] = gx, p.next[2 * i + 1] = gy;
      else
        gx = static_cast<float>(gx * Extended{ratio}), gy = static_cast<float>(gy * Extended{ratio});
    }
    p.error[i] = errorOf<K>(t);
  }
  return p;
}

template <class K>
class OpticalFlow : public testing::Test {};
using Kinds = testing::Types<Bytes, Words, Floats>;
TYPED_TEST_SUITE(OpticalFlow, Kinds);

constexpr TevSize everyLevelPrecomputed = {1000, 1000}, noLevelPrecomputed = {1, 1};

}  // namespace

TYPED_TEST(OpticalFlow, EqualsTheDefinitionOnBothRoutesAndBetweenThem) {
  using K = TypeParam;
  Random random;
  for (int trial = 0; trial < 40; ++trial) {
    Settings s;
    s.windowSize = random.between(1, random.oneIn(4) ? 31 : 12);
    s.maxLevel = random.between(0, 3);
    s.maxIterations = random.between(1, 8);
    s.threshold = random.oneIn(3) ? 0.0F : 0.02F;
    const int width = random.between(1, 90), height = random.between(1, 70);
    s.roi = {random.between(1, 100), random.between(1, 100)};
    const Texture texture(static_cast<unsigned>(trial));
    const double rate = random.oneIn(3) ? 1.5 : 2, dx = random.real(4), dy = random.real(4);
    Pyramid<K> a(texture, width, height, s.maxLevel, 0, 0, rate), b(texture, width, height, s.maxLevel, dx, dy, rate);
    Points points = grid(10, width, height, random, random.oneIn(2) ? 3.0F : 0.0F);
    for (int i = 0; i < 6; ++i)  // near and beyond the edges
      points.add(random.real(120), random.real(120), random.real(120), random.real(120));
    expectSame(flow<K>(a, b, points, s), flowByDefinition<K>(a, b, points, s));
    if (this->HasFailure()) return;
  }
}

TYPED_TEST(OpticalFlow, FollowsAFractionalShift) {
  using K = TypeParam;
  const Texture texture(17, 0.5F);  // no finer than bilinear interpolation follows
  Pyramid<K> a(texture, 96, 80, 2, 0, 0), b(texture, 96, 80, 2, 0.3, -0.7);
  Points points;
  for (int i = 0; i < 40; ++i) {
    const float x = 16.4F + 9 * static_cast<float>(i % 8), y = 16.7F + 12 * static_cast<float>(i / 8);
    points.add(x, y, x, y);
  }
  for (const TevSize roi : {everyLevelPrecomputed, TevSize{60, 60}, noLevelPrecomputed}) {
    const Points p = flow<K>(a, b, points, {21, 2, 50, 0.001F, roi});
    for (size_t i = 0; i < p.status.size(); ++i) {
      EXPECT_EQ(p.status[i], 0);
      EXPECT_NEAR(p.next[2 * i], points.prev[2 * i] + 0.3, 0.02);
      EXPECT_NEAR(p.next[2 * i + 1], points.prev[2 * i + 1] - 0.7, 0.02);
    }
  }
}

TYPED_TEST(OpticalFlow, GivesTheSameBitsWithAnyNumberOfThreads) {
  using K = TypeParam;
  const Texture texture(4);
  Pyramid<K> a(texture, 90, 70, 2, 0, 0), b(texture, 90, 70, 2, 1.7, -2.4);
  Random random(2);
  for (const int count : {1, 2, 7, 41, 100}) {
    const Points points = grid(count, 90, 70, random);
    const Settings s = {9, 2, 8, 0.01F, {50, 50}};
    Points expected;
    for (const int threads : kit::threadCounts) {
      const Threads setting(threads);
      const Points result = flow<K>(a, b, points, s);
      if (threads == 1) expected = result;
      expectSame(result, expected);
    }
  }
}

TYPED_TEST(OpticalFlow, StateOutlivesAChangeOfTheThreadSetting) {
  using K = TypeParam;
  const Texture texture(5);
  const int width = 400, height = 300;  // large enough for the filters to share their work
  Pyramid<K> a(texture, width, height, 0, 0, 0), b(texture, width, height, 0, 0.5, 0.5);
  Random random(3);
  const Points points = grid(20, width, height, random);
  const Points expected = flow<K>(a, b, points, {7, 0, 5, 0.01F, {401, 301}});
  for (const int created : {1, 2, 8}) {
    TevOptFlowPyrLKState* state = nullptr;
    {
      const Threads setting(created);
      ASSERT_EQ(K::init(&state, {401, 301}, 7, 0), tevStatusOk);
    }
    for (const int threads : kit::threadCounts) {
      const Threads setting(threads);
      Points p = points;
      const TevPyramid first = a.record(), second = b.record();
      ASSERT_EQ(K::track(&first, &second, p.prev.data(), p.next.data(), p.status.data(), p.error.data(), p.count(), 7,
                         0, 5, 0.01F, state),
                tevStatusOk);
      expectSame(p, expected);
    }
    ASSERT_EQ(K::release(state), tevStatusOk);
  }
}

TYPED_TEST(OpticalFlow, TrackingAllocatesNothing) {
  using K = TypeParam;
  const Texture texture(6);
  Pyramid<K> a(texture, 80, 60, 2, 0, 0), b(texture, 80, 60, 2, 1, 1);
  const TevPyramid first = a.record(), second = b.record();
  Random random(4);
  for (const int threads : {1, 3, 40}) {
    const Threads setting(threads);
    AllocatorWatch watch;
    TevOptFlowPyrLKState* state = nullptr;
    ASSERT_EQ(K::init(&state, {50, 50}, 9, 0), tevStatusOk);
    EXPECT_EQ(watch.requests(), 2);
    Points p = grid(50, 80, 60, random);
    ASSERT_EQ(K::track(&first, &second, p.prev.data(), p.next.data(), p.status.data(), p.error.data(), p.count(), 9, 2,
                       5, 0.01F, state),
              tevStatusOk);
    EXPECT_EQ(watch.requests(), 2);
    ASSERT_EQ(K::release(state), tevStatusOk);
    EXPECT_EQ(watch.blocksHeld(), 0);
    EXPECT_EQ(watch.strangersFreed(), 0);
  }
}

TYPED_TEST(OpticalFlow, IdenticalImagesTrackWithoutErrorAtTheFirstStep) {
  using K = TypeParam;
  const Texture texture(7);
  Pyramid<K> a(texture, 60, 60, 2, 0, 0);
  Points points;
  points.add(30, 30, 30, 30);
  for (const TevSize roi : {everyLevelPrecomputed, noLevelPrecomputed}) {
    const Points p = flow<K>(a, a, points, {7, 2, 10, 0.001F, roi});
    EXPECT_EQ(p.status[0], 0);
    EXPECT_EQ(p.error[0], 0);
    EXPECT_EQ(p.next, points.next);
  }
}

TYPED_TEST(OpticalFlow, ThresholdZeroEndsByOscillationOrByTheCountOfIterations) {
  using K = TypeParam;
  const Texture texture(8);
  Pyramid<K> a(texture, 60, 60, 1, 0, 0), b(texture, 60, 60, 1, 0.4, 0.2);
  Points points;
  points.add(30, 30, 30, 30);
  const Settings s = {9, 1, 200, 0, everyLevelPrecomputed};
  const Points p = flow<K>(a, b, points, s);
  EXPECT_EQ(p.status[0], 0);
  EXPECT_NEAR(p.next[0], 30.4, 0.05);
  expectSame(p, flowByDefinition<K>(a, b, points, s));
}

TYPED_TEST(OpticalFlow, FlatImageLosesThePointOnTheCoarsestLevelAndKeepsTheGuess) {
  using K = TypeParam;
  const Texture texture(9);
  Pyramid<K> a(texture, 80, 80, 2, 0, 0);
  for (auto& level : a.levels) level->fill(100);
  Points points;
  points.add(40, 40, 41, 42);
  for (const TevSize roi : {everyLevelPrecomputed, noLevelPrecomputed}) {
    const Points p = flow<K>(a, a, points, {7, 2, 10, 0.001F, roi});
    EXPECT_EQ(p.status[0], 3);
    EXPECT_EQ(p.error[0], 0);
    EXPECT_EQ(p.next, points.next);
  }
}

TYPED_TEST(OpticalFlow, WindowThatLeavesTheImageShrinksAndOneBeyondItIsLost) {
  using K = TypeParam;
  const Texture texture(10);
  Pyramid<K> a(texture, 60, 50, 1, 0, 0), b(texture, 60, 50, 1, 0.5, 0.25);
  Points points;
  points.add(2, 3, 2, 3);
  points.add(58, 48, 58, 48);
  points.add(-40, 20, -40, 20);
  points.add(30, 300, 30, 300);
  points.add(30, 30, std::numeric_limits<float>::quiet_NaN(), 30);
  for (const TevSize roi : {everyLevelPrecomputed, noLevelPrecomputed}) {
    const Settings s = {11, 1, 20, 0.01F, roi};
    const Points p = flow<K>(a, b, points, s);
    EXPECT_EQ(p.status, (std::vector<Tev8s>{0, 0, 2, 2, 2}));
    EXPECT_NEAR(p.next[0], 2.5, 0.1);
    EXPECT_EQ(p.next[4], -40);
    EXPECT_EQ(p.next[7], 300);
    EXPECT_EQ(p.error[3], 0);
  }
}

TYPED_TEST(OpticalFlow, LevelAsLargeAsTheStateTakesThePatchRoute) {
  using K = TypeParam;
  const Texture texture(11);
  Pyramid<K> a(texture, 50, 40, 0, 0, 0), b(texture, 50, 40, 0, 0.6, -0.3);
  Random random(5);
  const Points points = grid(150, 50, 40, random);
  const auto with = [&](TevSize roi) { return flow<K>(a, b, points, {7, 0, 3, 0, roi}); };
  const Points perPatch = with(noLevelPrecomputed);
  expectSame(with({50, 40}), perPatch);
  expectSame(with({51, 40}), perPatch);
  expectSame(with({50, 41}), perPatch);
  EXPECT_NE(with({51, 41}).next, perPatch.next);  // the last bits tell the routes apart
}

TYPED_TEST(OpticalFlow, MaximumLevelOneOnThePatchRouteHandsTheGuessOnUnscaled) {
  using K = TypeParam;
  const Texture texture(12);
  Pyramid<K> a(texture, 120, 120, 2, 0, 0), b(texture, 120, 120, 2, 0, 0);
  Points points;
  points.add(60, 60, 60, 60);
  EXPECT_NEAR(flow<K>(a, b, points, {7, 2, 5, 0.01F, noLevelPrecomputed}).next[0], 60, 1e-3);
  // From (30, 30) on level 1 to (30, 30) on level 0, far from the point.
  const Points p = flow<K>(a, b, points, {7, 1, 1, 0, noLevelPrecomputed});
  EXPECT_LT(p.next[0], 50);
  EXPECT_NEAR(flow<K>(a, b, points, {7, 1, 5, 0.01F, everyLevelPrecomputed}).next[0], 60, 1e-3);
}

TYPED_TEST(OpticalFlow, UnreadableFirstImageMakesTheSharesOtherPointsWait) {
  using K = TypeParam;
  const Threads setting(1);
  const Texture texture(13);
  Pyramid<K> a(texture, 40, 40, 1, 0, 0), b(texture, 40, 40, 1, 0, 0);
  a.images[1] = nullptr;
  Points points;
  for (int i = 0; i < 3; ++i) points.add(20, 20, 20, 20);
  // On level 1 the first point fails and goes on to level 0; the others stay as they were.
  const Points p = flow<K>(a, b, points, {7, 1, 5, 0.01F, everyLevelPrecomputed});
  EXPECT_EQ(p.status, (std::vector<Tev8s>{0, 2, 2}));
  EXPECT_EQ(p.error, (std::vector<float>{0, -1, -1}));
  // Patch by patch each point stops on its own, at the level that it cannot read.
  const Points q = flow<K>(a, b, points, {7, 1, 5, 0.01F, noLevelPrecomputed});
  EXPECT_EQ(q.status, (std::vector<Tev8s>{1, 1, 1}));
  EXPECT_EQ(q.error, (std::vector<float>{0, 0, 0}));
}

TYPED_TEST(OpticalFlow, CreationChecksThePointerThenTheSizesAndSurvivesFailingAllocations) {
  using K = TypeParam;
  TevOptFlowPyrLKState* state = nullptr;
  EXPECT_FAILS(tevStatusNullPtr, K::init(nullptr, {0, 0}, 0, 0), state);
  EXPECT_FAILS(tevStatusBadSize, K::init(&state, {10, 10}, 0, 0), state);
  EXPECT_FAILS(tevStatusBadSize, K::init(&state, {0, 10}, 5, 0), state);
  EXPECT_FAILS(tevStatusBadSize, K::init(&state, {10, -1}, 5, 0), state);
  for (const int failAt : {0, 1}) {
    AllocatorWatch watch(failAt);
    EXPECT_FAILS(tevStatusNoMemory, K::init(&state, {10, 10}, 5, 0), state);
    EXPECT_EQ(watch.blocksHeld(), 0);
  }
  AllocatorWatch watch;
  EXPECT_FAILS(tevStatusNoMemory, K::init(&state, {60000, 60000}, 5, 0), state);
  EXPECT_FAILS(tevStatusNoMemory, K::init(&state, {std::numeric_limits<int>::max(), 1}, 5, 0), state);
  EXPECT_FAILS(tevStatusNoMemory, K::init(&state, {10, 10}, std::numeric_limits<int>::max(), 0), state);
  EXPECT_EQ(watch.blocksHeld(), 0);
  EXPECT_EQ(K::release(nullptr), tevStatusNullPtr);
}

TYPED_TEST(OpticalFlow, StateTakesExactlyTheMemoryThatItsFormulaTells) {
  using K = TypeParam;
  for (const int threads : {1, 2, 40})
    for (const int ws : {1, 2, 3, 15, 21}) {
      const Threads setting(threads);
      const TevSize roi = {37, 23}, filtered = {42, 28};
      int horizontal = 0, vertical = 0;
      if (K::fixed) {
        teviFilterScharrHorizGetBufferSize_8u16s_C1R(filtered, &horizontal);
        teviFilterScharrVertGetBufferSize_8u16s_C1R(filtered, &vertical);
      } else {
        teviFilterScharrHorizGetBufferSize_32f_C1R(filtered, &horizontal);
        teviFilterScharrVertGetBufferSize_32f_C1R(filtered, &vertical);
      }
      const int G = std::max(horizontal, vertical), A = 42 * 28, B = (ws + 3) * (ws + 3), T = threads;
      const int Q = (ws * 4 + 12) * (ws + 3) * 2 + B * 4, images = std::is_same_v<K, Words> ? 3 : 2;
      const int block =
          K::fixed ? (G + A * 2) * 2 + B * 8 + (ws * 2 + 6) * (ws + 3) * 16 + T * (B * 24 + 52) + B * T * 16 + 10
                   : (Q + G + A * images) * 4 + (Q * 4 + 4) * T + T * 40 + B * T * 16 + 4;
      AllocatorWatch watch;
      TevOptFlowPyrLKState* state = nullptr;
      ASSERT_EQ(K::init(&state, roi, ws, 0), tevStatusOk);
      const size_t header = 32 + sizeof(void*), record = sizeof(void*) == 4 ? 32 : 40;
      EXPECT_EQ(watch.bytes(), static_cast<size_t>(block) + record + 2 * header) << ws << ' ' << threads;
      ASSERT_EQ(K::release(state), tevStatusOk);
    }
}

TYPED_TEST(OpticalFlow, TrackingChecksPointersThenSizesThenArguments) {
  using K = TypeParam;
  const Texture texture(14);
  Pyramid<K> a(texture, 20, 20, 0, 0, 0);
  const TevPyramid p = a.record();
  const TevPyramid* const none = nullptr;
  TevOptFlowPyrLKState* state = nullptr;
  ASSERT_EQ(K::init(&state, {30, 30}, 5, 0), tevStatusOk);
  std::array<float, 2> prev = {10, 10}, next = {10, 10}, error = {-1, -1};
  std::array<Tev8s, 2> status = {-77, -77};
  const auto call = [&](const TevPyramid* p1, const TevPyramid* p2, const float* pp, float* np, Tev8s* st, float* er,
                        int count, int window, int level, int iterations, float threshold, TevOptFlowPyrLKState* with) {
    return K::track(p1, p2, pp, np, st, er, count, window, level, iterations, threshold, with);
  };
  float *n = next.data(), *e = error.data();
  Tev8s* s = status.data();
  const float* q = prev.data();
  EXPECT_FAILS(tevStatusNullPtr, call(none, &p, q, n, s, e, 0, 5, 0, 1, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusNullPtr, call(&p, none, q, n, s, e, 1, 5, 0, 1, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusNullPtr, call(&p, &p, nullptr, n, s, e, 1, 0, 0, 1, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusNullPtr, call(&p, &p, q, nullptr, s, e, 1, 5, -1, 1, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusNullPtr, call(&p, &p, q, n, nullptr, e, 1, 5, 0, 1, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusNullPtr, call(&p, &p, q, n, s, nullptr, 1, 5, 0, 1, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusNullPtr, call(&p, &p, q, n, s, e, 1, 5, 0, 1, 0, nullptr), next, status, error);
  EXPECT_FAILS(tevStatusBadSize, call(&p, &p, q, n, s, e, 0, 5, -1, 1, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusBadSize, call(&p, &p, q, n, s, e, 1, 0, 0, 0, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusBadSize, call(&p, &p, q, n, s, e, 1, 7, 0, 1, -1, state), next, status, error);
  EXPECT_FAILS(tevStatusBadArg, call(&p, &p, q, n, s, e, 1, 5, -1, 1, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusBadArg, call(&p, &p, q, n, s, e, 1, 5, 0, 0, 0, state), next, status, error);
  EXPECT_FAILS(tevStatusBadArg, call(&p, &p, q, n, s, e, 1, 5, 0, 1, -0.5F, state), next, status, error);
  EXPECT_EQ(call(&p, &p, q, n, s, e, 1, 5, 0, 1, 0, state), tevStatusOk);
  EXPECT_EQ(status[1], -77);
  EXPECT_EQ(K::release(state), tevStatusOk);
}

TEST(OpticalFlowBytes, SumsOfARowWrapAt32Bits) {
  // Hard bars: 31 squared gradients of 16320 go far beyond 2^31.
  const Texture texture(15);
  Pyramid<Bytes> a(texture, 64, 48, 0, 0, 0), b(texture, 64, 48, 0, 0, 0);
  Random random(9);
  for (int y = 0; y < 48; ++y)
    for (int x = 0; x < 64; ++x) {
      const auto bar = static_cast<Tev8u>(x % 4 < 2 ? random.between(0, 20) : random.between(235, 255));
      a.levels[0]->set(x, y, bar);
      b.levels[0]->set(x, y, random.oneIn(3) ? static_cast<Tev8u>(255 - bar) : bar);
    }
  Points points;
  for (int i = 0; i < 8; ++i) points.add(32 + random.real(20), 24 + random.real(12), 32, 24);
  for (const TevSize roi : {everyLevelPrecomputed, noLevelPrecomputed}) {
    const Settings s = {31, 0, 6, 0.01F, roi};
    expectSame(flow<Bytes>(a, b, points, s), flowByDefinition<Bytes>(a, b, points, s));
  }
}

TEST(OpticalFlowWorkers, ConvolutionOfWordsIsTheRoundedScharrGradient) {
  Random random(6);
  for (int trial = 0; trial < 50; ++trial) {
    const int width = random.between(3, 40), height = random.between(3, 12);
    const auto s = random.image<Tev16s>(width, height);
    Image<Tev16s> gx(width - 2, height - 2, 4), gy(width - 2, height - 2, 4), ex(width - 2, height - 2),
        ey(width - 2, height - 2);
    std::vector<Tev32s> a(static_cast<size_t>((width - 2) * height)), b = a;
    ownOptConvolution_16s_C1R(s.data(), s.step(), gx.data(), gy.data(), gx.step(), width, height, a.data(), b.data());
    for (int y = 0; y < height - 2; ++y)
      for (int x = 0; x < width - 2; ++x) {
        const auto dx = [&](int v) { return s.at(x + 2, v) - s.at(x, v); };
        const auto smooth = [&](int v) { return 3 * s.at(x, v) + 10 * s.at(x + 1, v) + 3 * s.at(x + 2, v); };
        ex.set(x, y, static_cast<Tev16s>(clamp16((3 * dx(y) + 10 * dx(y + 1) + 3 * dx(y + 2) + 16) >> 5)));
        ey.set(x, y, static_cast<Tev16s>(clamp16((smooth(y + 2) - smooth(y) + 16) >> 5)));
      }
    ASSERT_SAME_IMAGE(gx, ex);
    ASSERT_SAME_IMAGE(gy, ey);
  }
}

TEST(OpticalFlowWorkers, ConvolutionOfFloatsRoundsItsRowsAndItsColumns) {
  Random random(7);
  for (int trial = 0; trial < 50; ++trial) {
    const int width = random.between(3, 90), height = random.between(3, 12);
    const auto s = random.image<Tev32f>(width, height);
    Image<Tev32f> gx(width - 2, height - 2, 4), gy(width - 2, height - 2, 4), ex(width - 2, height - 2),
        ey(width - 2, height - 2);
    std::vector<Tev32f> a(static_cast<size_t>((width - 2) * height)), b = a;
    ownOptConvolution_32f_C1R(s.data(), s.step(), gx.data(), gy.data(), gx.step(), width, height, a.data(), b.data());
    for (int y = 0; y < height - 2; ++y)
      for (int x = 0; x < width - 2; ++x) {
        const auto smooth = [](Extended p, Extended q, Extended r) {
          return static_cast<float>(0.09375L * p + 0.3125L * q + 0.09375L * r);
        };
        const auto dx = [&](int v) { return static_cast<float>(Extended{s.at(x + 2, v)} - s.at(x, v)); };
        const auto row = [&](int v) { return smooth(s.at(x, v), s.at(x + 1, v), s.at(x + 2, v)); };
        ex.set(x, y, smooth(dx(y), dx(y + 1), dx(y + 2)));
        ey.set(x, y, static_cast<float>(Extended{row(y + 2)} - row(y)));
      }
    ASSERT_SAME_IMAGE(gx, ex);
    ASSERT_SAME_IMAGE(gy, ey);
  }
}

TEST(OpticalFlowWorkers, ModifiedConvolutionInterpolatesWithFractionsOf15Bits) {
  Random random(8);
  for (int trial = 0; trial < 100; ++trial) {
    const int width = random.between(3, 40), height = random.between(3, 9), patch = random.between(3, 30);
    const auto s = random.image<Tev16s>(width - 1, height - 1);
    Image<Tev16s> d(width - 2, height - 2, 6), expected(width - 2, height - 2);
    const float x = random.oneIn(4) ? std::round(random.real(50)) : random.real(50), y = random.real(50);
    const int scale = random.oneIn(3) ? random.between(0, 4) : 0;
    ownModifiedConvolution_16s_C1R(s.data(), s.step(), d.data(), d.step(), width, height, patch, patch, width - 2,
                                   height - 2, x, y, scale);
    const auto part = [&](float centre) {
      const Extended corner = centre - (patch - 1) * 0.5L;
      Extended f = corner - std::trunc(corner);
      if (f < 0) f += 1;
      return static_cast<std::int64_t>(f * 32768 + 0.5L);
    };
    const std::int64_t ax = part(x), ay = part(y), cx = 32768 - ax, cy = 32768 - ay;
    const auto w = [](std::int64_t a, std::int64_t b) { return (a * b + 16384) >> 15; };
    for (int v = 0; v < height - 2; ++v)
      for (int u = 0; u < width - 2; ++u) {
        const std::int64_t sum = s.at(u, v) * w(cx, cy) + s.at(u + 1, v) * w(ax, cy) + s.at(u, v + 1) * w(cx, ay) +
                                 s.at(u + 1, v + 1) * w(ax, ay);
        expected.set(u, v,
                     static_cast<Tev16s>(std::clamp<std::int64_t>(
                         (sum + (std::int64_t{16384} << scale)) >> (15 + scale), -32768, 32767)));
      }
    ASSERT_SAME_IMAGE(d, expected) << x << ' ' << y;
  }
}

TEST(OpticalFlowWorkers, BlocksWithoutAnInnerElementDoNothing) {
  Tev16s word = 7;
  Tev32s work = 9;
  Tev32f real = 5;
  for (const int size : {-3, 0, 1, 2}) {
    ownModifiedConvolution_16s_C1R(&word, 2, &word, 2, size, size, 5, 5, 1, 1, 2.3F, 2.3F, 0);
    ownOptConvolution_16s_C1R(&word, 2, &word, &word, 2, size, size, &work, &work);
    ownOptConvolution_32f_C1R(&real, 4, &real, &real, 4, size, size, &real, &real);
  }
  EXPECT_EQ(word, 7);
  EXPECT_EQ(work, 9);
  EXPECT_EQ(real, 5);
}
