// Pyramidal optical flow: the window around each point is moved over the second image by Newton steps, level by level
// from the coarsest to the finest.
//
// Small levels share gradient images of the whole level, sampled for each point (the precomputed route). Larger ones,
// which the state has no room for, take gradients from each point's own patch (the per-patch route). A point's status
// says which level it waits for: l + 1 on entry to level l.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "tevcv/filtering.h"
#include "tevcv/motion.h"
#include "tevcv/primitives.h"
#include "tevcv_internal/geometry.h"
#include "tevcv_internal/motion.h"

using namespace tevcv;

struct TevOptFlowPyrLKState {
  Tev32s roiWidth, roiHeight;  // levels smaller than this have their gradients precomputed
  Tev32s threads;              // at creation: the number of scratch areas
  Tev32s dataType;
  Tev32s filterScratch;  // bytes that a Scharr filter asked for at creation
  Tev32s hint;
  Tev32s windowSize;
  Tev8u* buffer;
};
static_assert(offsetof(TevOptFlowPyrLKState, windowSize) == 24);
static_assert(sizeof(void*) != 4 || sizeof(TevOptFlowPyrLKState) == 32);

namespace {

// --- The scratch block ---

template <class T>
struct Kind;

// Bytes: patches in 16 bits, pixels times 128; gradients times 128 too, so that both have one scale.
template <>
struct Kind<Tev8u> {
  using Patch = Tev16u;
  using Gradient = Tev16s;
  using Work = Tev32s;
  using Sum = std::int64_t;
  static constexpr int dataType = tevDataType8u, imagesPerLevel = 2;
  static constexpr int samplerScale = -7;
  static constexpr Tev32f errorScale = 0.0078125F;
};
struct FloatKind {
  using Patch = Tev32f;
  using Gradient = Tev32f;
  using Work = Tev32f;
  using Sum = Extended;
  static constexpr Tev32f errorScale = 1;
};
template <>
struct Kind<Tev16u> : FloatKind {
  static constexpr int dataType = tevDataType16u, imagesPerLevel = 3;  // the third is the level itself, as floats
};
template <>
struct Kind<Tev32f> : FloatKind {
  static constexpr int dataType = tevDataType32f, imagesPerLevel = 2;
};

// Sizes that the block is laid out by, in 64 bits. The total is what callers' memory budgets have always been based on;
// it holds more than is used.
struct BlockSizes {
  std::int64_t image;    // elements of one gradient image
  std::int64_t shared;   // bytes of gradient images and filter scratch
  std::int64_t perTeam;  // bytes of one thread's patches and work arrays
  std::int64_t total;
};

BlockSizes blockSizes(int width, int height, int dataType, int windowSize, std::int64_t filterScratch, int threads) {
  const std::int64_t image = (std::int64_t{width} + 5) * (std::int64_t{height} + 5);
  const std::int64_t w3 = std::int64_t{windowSize} + 3, k = w3 * w3, t = threads;
  if (dataType == tevDataType8u) {
    const std::int64_t shared = (filterScratch + image * 2) * 2;
    return {image, shared, k * 40 + 52,
            shared + k * 8 + (std::int64_t{windowSize} * 2 + 6) * w3 * 16 + t * (k * 24 + 52) + k * t * 16 + 10};
  }
  const std::int64_t q = (std::int64_t{windowSize} * 4 + 12) * w3 * 2 + k * 4;
  const std::int64_t shared = (filterScratch + image * (dataType == tevDataType16u ? 3 : 2)) * 4;
  return {image, shared, q * 4 + k * 16 + 44, q * 4 + shared + (q * 4 + 4) * t + t * 40 + k * t * 16 + 4};
}

constexpr std::int64_t alignedUp(std::int64_t offset) { return (offset + 31) & ~std::int64_t{31}; }
constexpr std::int64_t alignedDown(std::int64_t offset) { return offset & ~std::int64_t{31}; }

// What the Scharr filters ask for, in both directions.
TevStatus filterScratchSize(TevSize roi, bool bytes, int* size) {
  int horizontal = 0, vertical = 0;
  const TevStatus s = bytes ? firstFailure(teviFilterScharrHorizGetBufferSize_8u16s_C1R(roi, &horizontal),
                                           teviFilterScharrVertGetBufferSize_8u16s_C1R(roi, &vertical))
                            : firstFailure(teviFilterScharrHorizGetBufferSize_32f_C1R(roi, &horizontal),
                                           teviFilterScharrVertGetBufferSize_32f_C1R(roi, &vertical));
  *size = std::max(horizontal, vertical);
  return s;
}

// One thread's patches, `pitch` elements from row to row. The window's own patches start one row and one column in from
// the corner of the larger patch of the first image.
template <class T>
struct Patches {
  using K = Kind<T>;
  int pitch;
  typename K::Patch *corner, *first, *second;
  typename K::Gradient *gradX, *gradY;
  typename K::Work *workX, *workY;

  Patches(Tev8u* area, int windowSize)
      : pitch(std::is_same_v<T, Tev8u> ? (windowSize + 2 + 15) & ~15 : windowSize + 2) {
    const std::ptrdiff_t patch = std::ptrdiff_t{pitch} * (windowSize + 2), inner = pitch + 1;
    std::memset(area, 0, static_cast<std::size_t>(4 * patch) * sizeof(typename K::Patch));
    corner = reinterpret_cast<typename K::Patch*>(area);
    first = corner + inner;
    second = corner + patch + inner;
    gradX = reinterpret_cast<typename K::Gradient*>(corner + 2 * patch) + inner;
    gradY = gradX + patch;
    workX = reinterpret_cast<typename K::Work*>(corner + 4 * patch);
    workY = workX + std::ptrdiff_t{windowSize + 2} * (2 * windowSize + 6);
    gradientBytes_ = static_cast<std::size_t>(patch) * sizeof(typename K::Gradient) * 2;
  }

  void clearGradients() { std::memset(gradX - pitch - 1, 0, gradientBytes_); }

 private:
  std::size_t gradientBytes_;
};

// --- The samplers of each type ---

TevStatus sampleFirst(const Tev8u* src, int srcStep, TevSize roi, Tev16u* dst, int dstStep, TevSize size, Tev32f x,
                      Tev32f y, TevPoint* low, TevPoint* high) {
  return teviCopySubpixIntersect_8u16u_C1R_Sfs(src, srcStep, roi, dst, dstStep, size, x, y, low, high,
                                               Kind<Tev8u>::samplerScale);
}
TevStatus sampleFirst(const Tev16u* src, int srcStep, TevSize roi, Tev32f* dst, int dstStep, TevSize size, Tev32f x,
                      Tev32f y, TevPoint* low, TevPoint* high) {
  return teviCopySubpixIntersect_16u32f_C1R(src, srcStep, roi, dst, dstStep, size, x, y, low, high);
}
TevStatus sampleFirst(const Tev32f* src, int srcStep, TevSize roi, Tev32f* dst, int dstStep, TevSize size, Tev32f x,
                      Tev32f y, TevPoint* low, TevPoint* high) {
  return teviCopySubpixIntersect_32f_C1R(src, srcStep, roi, dst, dstStep, size, x, y, low, high);
}
TevStatus sampleSecond(const Tev8u* src, int srcStep, TevSize roi, Tev16u* dst, int dstStep, TevSize size, Tev32f x,
                       Tev32f y, TevPoint* low, TevPoint* high) {
  return ownGetRectSubpix_8u16u_C1R_Sfs(src, srcStep, roi, dst, dstStep, size, x, y, low, high,
                                        Kind<Tev8u>::samplerScale);
}
TevStatus sampleSecond(const Tev16u* src, int srcStep, TevSize roi, Tev32f* dst, int dstStep, TevSize size, Tev32f x,
                       Tev32f y, TevPoint* low, TevPoint* high) {
  return ownGetRectSubpix_16u32f_C1R(src, srcStep, roi, dst, dstStep, size, x, y, low, high);
}
TevStatus sampleSecond(const Tev32f* src, int srcStep, TevSize roi, Tev32f* dst, int dstStep, TevSize size, Tev32f x,
                       Tev32f y, TevPoint* low, TevPoint* high) {
  return ownGetRectSubpix_32f_C1R(src, srcStep, roi, dst, dstStep, size, x, y, low, high);
}

void convolvePatch(const Tev16u* src, int step, Tev16s* gx, Tev16s* gy, int width, int height, Tev32s* a, Tev32s* b) {
  ownOptConvolution_16s_C1R(reinterpret_cast<const Tev16s*>(src), step, gx, gy, step, width, height, a, b);
}
void convolvePatch(const Tev32f* src, int step, Tev32f* gx, Tev32f* gy, int width, int height, Tev32f* a, Tev32f* b) {
  ownOptConvolution_32f_C1R(src, step, gx, gy, step, width, height, a, b);
}

// --- One point on one level ---

struct Point {
  Tev32f x, y;
};

// A range of columns and rows of the window, both ends included.
struct Window {
  int x0, y0, x1, y1;

  bool empty() const { return x1 < x0 || y1 < y0; }
  friend bool operator==(const Window&, const Window&) = default;
};

template <class T>
struct Level {
  const T *first, *second;
  int firstStep, secondStep;
  TevSize roi;
  Tev32f scale;
};

template <class G>
struct GradientImages {
  G *x, *y;
  int step;
};

template <class Sum>
struct NormalMatrix {
  Sum xx, xy, yy;
};
template <class Sum>
struct Mismatch {
  Sum x, y;
};

// Row sums of 16-bit products in 32-bit words, which wrap; rows are added exactly. Gradients are 0 outside the part of
// the window that they were taken for: a sum over that part may run over whole rows, in vectors without a rest.
struct Columns {
  int from, end;
};
Columns columnsOf(const Patches<Tev8u>& p, const Window& w, const Window& gradients) {
  return w == gradients ? Columns{0, p.pitch & -16} : Columns{w.x0, w.x1 + 1};
}
NormalMatrix<std::int64_t> normalMatrix(const Patches<Tev8u>& p, const Window& w, const Window& gradients) {
  const Columns columns = columnsOf(p, w, gradients);
  NormalMatrix<std::int64_t> g = {};
  for (int y = w.y0; y <= w.y1; ++y) {
    const Tev16s *const gx = p.gradX + std::ptrdiff_t{y} * p.pitch, *const gy = p.gradY + std::ptrdiff_t{y} * p.pitch;
    unsigned xx = 0, xy = 0, yy = 0;
    for (int x = columns.from; x < columns.end; ++x) {
      xx += static_cast<unsigned>(gx[x] * gx[x]);
      xy += static_cast<unsigned>(gx[x] * gy[x]);
      yy += static_cast<unsigned>(gy[x] * gy[x]);
    }
    g.xx += static_cast<Tev32s>(xx), g.xy += static_cast<Tev32s>(xy), g.yy += static_cast<Tev32s>(yy);
  }
  return g;
}
Mismatch<std::int64_t> mismatch(const Patches<Tev8u>& p, const Window& w, const Window& gradients) {
  const Columns columns = columnsOf(p, w, gradients);
  Mismatch<std::int64_t> v = {};
  for (int y = w.y0; y <= w.y1; ++y) {
    const std::ptrdiff_t row = std::ptrdiff_t{y} * p.pitch;
    const Tev16s *const gx = p.gradX + row, *const gy = p.gradY + row;
    const Tev16u *const i = p.first + row, *const j = p.second + row;
    unsigned vx = 0, vy = 0;
    for (int x = columns.from; x < columns.end; ++x) {
      const auto d = static_cast<Tev16s>(i[x] - j[x]);  // pixels times 128 differ by less than 32768
      vx += static_cast<unsigned>(gx[x] * d);
      vy += static_cast<unsigned>(gy[x] * d);
    }
    v.x += static_cast<Tev32s>(vx), v.y += static_cast<Tev32s>(vy);
  }
  return v;
}

// Floats: every product is added in extended precision.
template <class T>
NormalMatrix<Extended> normalMatrix(const Patches<T>& p, const Window& w, const Window& /*gradients*/) {
  NormalMatrix<Extended> g = {};
  for (int y = w.y0; y <= w.y1; ++y) {
    const Tev32f *const gx = p.gradX + std::ptrdiff_t{y} * p.pitch, *const gy = p.gradY + std::ptrdiff_t{y} * p.pitch;
    for (int x = w.x0; x <= w.x1; ++x) {
      g.xx += Extended{gx[x]} * gx[x];
      g.xy += Extended{gx[x]} * gy[x];
      g.yy += Extended{gy[x]} * gy[x];
    }
  }
  return g;
}
template <class T>
Mismatch<Extended> mismatch(const Patches<T>& p, const Window& w, const Window& /*gradients*/) {
  Mismatch<Extended> v = {};
  for (int y = w.y0; y <= w.y1; ++y) {
    const std::ptrdiff_t row = std::ptrdiff_t{y} * p.pitch;
    for (int x = w.x0; x <= w.x1; ++x) {
      const Extended d = Extended{p.first[row + x]} - p.second[row + x];
      v.x += p.gradX[row + x] * d;
      v.y += p.gradY[row + x] * d;
    }
  }
  return v;
}

// The sum of squared differences in a float, rounded at each addition.
Tev32f squaredError(const Patches<Tev8u>& p, const Window& w) {
  // As long as the sum stays below 2^24 no addition rounds, and they may come in any order.
  std::uint64_t exact = 0;
  for (int y = w.y0; y < w.y1; ++y) {
    const std::ptrdiff_t row = std::ptrdiff_t{y} * p.pitch;
    std::uint64_t sum = 0;
    for (int x = w.x0; x < w.x1; ++x) {
      const int d = p.first[row + x] - p.second[row + x];
      sum += static_cast<unsigned>(d * d);
    }
    exact += sum;
  }
  if (exact <= 1U << 24) return static_cast<Tev32f>(exact);
  Tev32f e = 0;
  for (int y = w.y0; y < w.y1; ++y) {
    const std::ptrdiff_t row = std::ptrdiff_t{y} * p.pitch;
    for (int x = w.x0; x < w.x1; ++x) {
      const int d = p.first[row + x] - p.second[row + x];
      e = static_cast<Tev32f>(static_cast<Tev64f>(e) + d * d);  // exact in double: 31 bits and a sum of whole numbers
    }
  }
  return e;
}
template <class T>
Tev32f squaredError(const Patches<T>& p, const Window& w) {
  Tev32f e = 0;
  for (int y = w.y0; y < w.y1; ++y) {
    const std::ptrdiff_t row = std::ptrdiff_t{y} * p.pitch;
    for (int x = w.x0; x < w.x1; ++x) {
      const Extended d = Extended{p.first[row + x]} - p.second[row + x];
      e = static_cast<Tev32f>(e + d * d);
    }
  }
  return e;
}

// The root mean square over the window without its last column and row, at the position before the last step.
template <class T>
Tev32f windowError(const Patches<T>& p, const Window& w) {
  if (w.empty()) return 0;
  const Tev32f e = squaredError(p, w);
  if (!(e > 0)) return 0;
  const Extended count = static_cast<Extended>(std::int64_t{w.x1 - w.x0} * (w.y1 - w.y0));
  return static_cast<Tev32f>(std::sqrt(e / count) * Kind<T>::errorScale);
}

enum class Outcome {
  tracked,
  unreadable,  // the first image cannot be sampled
  lost,
  leftImage  // lost, and the position it left with counts
};

template <class T>
class PointTracker {
 public:
  using K = Kind<T>;
  using Images = GradientImages<typename K::Gradient>;

  PointTracker(Tev8u* area, int windowSize, int maxIterations, Tev32f thresholdSquared)
      : patches_(area, windowSize),
        windowSize_(windowSize),
        maxIterations_(maxIterations),
        thresholdSquared_(thresholdSquared) {}

  // Forgets the window of the point before.
  void startPoint() { window_ = {0, 0, -1, -1}; }

  // Moves the guess of the window around `point` on one level. Gradients come from `images`, or from the patch where
  // there are none.
  Outcome track(const Level<T>& level, Point point, Point& guess, const Images* images) {
    TevPoint low, high;
    const int patchSize = windowSize_ + 2, step = patches_.pitch * int{sizeof(typename K::Patch)};
    if (sampleFirst(level.first, level.firstStep, level.roi, patches_.corner, step, {patchSize, patchSize}, point.x,
                    point.y, &low, &high) != tevStatusOk)
      return Outcome::unreadable;
    const auto start = [](int from) { return from > 0 ? from - 1 : from; };
    const auto end = [this](int to) { return to > windowSize_ ? to - 2 : to - 1; };
    const Window inner = {start(low.x), start(low.y), end(high.x), end(high.y)};
    if (!inner.empty()) takeGradients(inner, point, images);
    return iterate(level, inner, guess);
  }

  Tev32f error() const { return windowError(patches_, window_); }

 private:
  void takeGradients(const Window& w, Point point, const Images* images) {
    const std::ptrdiff_t at = std::ptrdiff_t{w.y0} * patches_.pitch + w.x0;
    const int width = w.x1 - w.x0 + 1, height = w.y1 - w.y0 + 1;
    const int step = patches_.pitch * int{sizeof(typename K::Gradient)};
    typename K::Gradient *const gx = patches_.gradX + at, *const gy = patches_.gradY + at;
    if (width < windowSize_ || height < windowSize_) patches_.clearGradients();
    if (images == nullptr) {
      convolvePatch(patches_.corner + at, step, gx, gy, width + 2, height + 2, patches_.workX, patches_.workY);
      return;
    }
    const Extended half = (windowSize_ + 1) * Extended{0.5};
    const auto from = [half](Tev32f center) {
      const Extended corner = center - half;
      return corner < 0 ? 0 : static_cast<int>(corner) + 1;
    };
    const int cx = from(point.x), cy = from(point.y), patchSize = windowSize_ + 2;
    for (const auto& [image, patch] : {std::pair{images->x, gx}, {images->y, gy}}) {
      const auto* const src = rows(image, images->step)[cy] + cx;
      if constexpr (std::is_same_v<T, Tev8u>)
        ownModifiedConvolution_16s_C1R(src, images->step, patch, step, width + 2, height + 2, patchSize, patchSize,
                                       width, height, point.x, point.y, 0);
      else
        teviCopySubpix_32f_C1R(src, images->step, patch, step, {width, height}, static_cast<Tev32f>(point.x - half),
                               static_cast<Tev32f>(point.y - half));
    }
  }

  Outcome iterate(const Level<T>& level, const Window& inner, Point& guess) {
    if (level.second == nullptr) return Outcome::lost;
    const int step = patches_.pitch * int{sizeof(typename K::Patch)};
    NormalMatrix<typename K::Sum> sums = {};
    Extended lastX = static_cast<Extended>(level.roi.width) + level.roi.height, lastY = lastX;  // no step is near
    for (int k = 0; k < maxIterations_; ++k) {
      TevPoint low, high;
      sampleSecond(level.second, level.secondStep, level.roi, patches_.second, step, {windowSize_, windowSize_},
                   guess.x, guess.y, &low, &high);
      const Window w = {std::max(inner.x0, low.x), std::max(inner.y0, low.y), std::min(inner.x1, high.x),
                        std::min(inner.y1, high.y)};
      const bool same = k > 0 && w == window_;
      window_ = w;
      if (w.empty()) return Outcome::leftImage;
      // The matrix depends on the window alone; only the mismatch depends on the position.
      if (!same) sums = normalMatrix(patches_, w, inner);
      const auto mismatches = mismatch(patches_, w, inner);
      const Extended xx = sums.xx, xy = sums.xy, yy = sums.yy, vx = mismatches.x, vy = mismatches.y;
      const Extended determinant = xx * yy - xy * xy;
      if (determinant < 2.220446049250313e-16) return Outcome::lost;
      const Extended dx = (yy * vx - xy * vy) / determinant, dy = (xx * vy - xy * vx) / determinant;
      if (dx * dx + dy * dy < thresholdSquared_) {
        move(guess, dx, dy);
        return Outcome::tracked;
      }
      constexpr Tev32f undone = 0.0003452669770922512F;  // the square root of the float epsilon
      if (std::fabs(lastX + dx) < undone && std::fabs(lastY + dy) < undone) {
        move(guess, dx * 0.5, dy * 0.5);
        return Outcome::tracked;
      }
      move(guess, dx, dy);
      lastX = dx, lastY = dy;
    }
    return Outcome::tracked;
  }

  static void move(Point& p, Extended dx, Extended dy) {
    p.x = static_cast<Tev32f>(p.x + dx);
    p.y = static_cast<Tev32f>(p.y + dy);
  }

  Patches<T> patches_;
  int windowSize_, maxIterations_;
  Tev32f thresholdSquared_;
  Window window_ = {0, 0, -1, -1};  // of the last iteration
};

// --- The gradients of a level ---

// One row of both Scharr derivatives, times 4 for bytes, with the edge pixels repeated on both sides. Bytes need no
// more than this one pass. Floats are rounded behind each of the two stages, as the filters do it.
template <class P, class G>
void scharrRow(const P* above, const P* here, const P* below, G* __restrict gx, G* __restrict gy, int width) {
  const auto store = [=](int l, int c, int r) {
    if constexpr (std::is_integral_v<P>) {
      const auto difference = [=](const P* p) { return p[r] - p[l]; };
      const auto smooth = [=](const P* p) { return 3 * (p[l] + p[r]) + 10 * p[c]; };
      gx[c] = static_cast<G>(4 * (3 * (difference(above) + difference(below)) + 10 * difference(here)));
      gy[c] = static_cast<G>(4 * (smooth(below) - smooth(above)));
    } else {
      const auto smooth = [](Extended p, Extended q, Extended s) {
        return static_cast<Tev32f>(3 * p + 10 * q + 3 * s);
      };
      gx[c] = smooth(above[r] - above[l], here[r] - here[l], below[r] - below[l]);
      gy[c] = smooth(below[l], below[c], below[r]) - smooth(above[l], above[c], above[r]);
    }
  };
  store(0, 0, std::min(1, width - 1));
  for (int x = 1; x < width - 1; ++x) store(x - 1, x, x + 1);
  if (width > 1) store(width - 2, width - 1, width - 1);
}

// --- All points ---

template <class T>
class FlowCall {
 public:
  using K = Kind<T>;
  using Gradient = typename K::Gradient;

  FlowCall(const TevPyramid& pyramid1, const TevPyramid& pyramid2, const Tev32f* prevPoints, Tev32f* nextPoints,
           Tev8s* status, Tev32f* error, int pointCount, int maxLevel, int maxIterations, Tev32f threshold,
           const TevOptFlowPyrLKState& state)
      : pyramid1_(pyramid1),
        pyramid2_(pyramid2),
        prev_(prevPoints),
        next_(nextPoints),
        status_(status),
        error_(error),
        count_(pointCount),
        maxLevel_(maxLevel),
        maxIterations_(maxIterations),
        thresholdSquared_(threshold * threshold),
        state_(state),
        sizes_(blockSizes(state.roiWidth, state.roiHeight, K::dataType, state.windowSize, state.filterScratch,
                          state.threads)),
        shares_(std::min(owncvGetNumThreads(), state.threads)) {}

  void run() {
    tevsSet_8u(static_cast<Tev8u>(maxLevel_ + 1), reinterpret_cast<Tev8u*>(status_), count_);
    const int lowest = lowestPrecomputed();
    int widest = 0;
    for (int l = lowest; l <= maxLevel_; ++l) widest = std::max(widest, pyramid1_.roi[l].width);
    for (int l = maxLevel_; l >= lowest; --l) runPrecomputed(l, widest + 5);
    if (lowest > 0) runPerPatch(lowest);
  }

 private:
  // The last level, from the coarsest down, whose gradients have room in the state.
  int lowestPrecomputed() const {
    int lowest = maxLevel_ + 1;
    while (lowest > 0 && pyramid1_.roi[lowest - 1].width < state_.roiWidth &&
           pyramid1_.roi[lowest - 1].height < state_.roiHeight)
      --lowest;
    return lowest;
  }

  Level<T> levelAt(int l) const {
    return {static_cast<const T*>(pyramid1_.images[l]),
            static_cast<const T*>(pyramid2_.images[l]),
            pyramid1_.steps[l],
            pyramid2_.steps[l],
            pyramid1_.roi[l],
            static_cast<Tev32f>(pyramid1_.scale[l])};
  }

  Point prev(int i, Tev32f scale) const { return {prev_[2 * i] * scale, prev_[2 * i + 1] * scale}; }
  Point next(int i) const { return {next_[2 * i], next_[2 * i + 1]}; }
  void setNext(int i, Point p) { next_[2 * i] = p.x, next_[2 * i + 1] = p.y; }
  void setNext(int i, Point p, Tev32f scale) { setNext(i, {p.x / scale, p.y / scale}); }
  bool waitsFor(int i, int level) const { return status_[i] == static_cast<Tev8s>(level + 1); }

  template <class Work>
  void forEachShareOfPoints(Work work) {
    Tev8u* const areas = state_.buffer + alignedUp(sizes_.shared);
    forEachShare(count_, shares_, [&](Share share) {
      PointTracker<T> tracker(areas + alignedDown(sizes_.perTeam) * share.index, state_.windowSize, maxIterations_,
                              thresholdSquared_);
      work(share, tracker);
    });
  }

  void runPrecomputed(int l, int stride) {
    const Level<T> level = levelAt(l);
    const GradientImages<Gradient> images = gradientImages(level, stride);
    forEachShareOfPoints([&](Share share, PointTracker<T>& tracker) {
      for (int i = share.firstRow; i < share.endRow(); ++i) {
        if (!waitsFor(i, l)) continue;
        status_[i] = static_cast<Tev8s>(l);
        tracker.startPoint();
        Point guess = next(i);
        guess = {guess.x * level.scale, guess.y * level.scale};
        const Outcome outcome = tracker.track(level, prev(i, level.scale), guess, &images);
        if (outcome == Outcome::unreadable) return;  // the share's other points wait for a level that never comes
        if (outcome == Outcome::tracked && l == 0)
          setNext(i, guess);
        else if (outcome != Outcome::lost)
          setNext(i, guess, level.scale);
        if (outcome != Outcome::tracked) status_[i] = static_cast<Tev8s>(l + 1);
        error_[i] = tracker.error();
      }
    });
  }

  void runPerPatch(int lowest) {
    // One level up makes `ratio` pixels of a pixel. With level 1 as the coarsest it stays 1, and a guess goes from
    // level 1 to level 0 unscaled; results that callers have stored depend on it.
    const Tev64f ratio = maxLevel_ > 1 ? static_cast<Tev64f>(Extended{1} / pyramid1_.scale[1]) : 1.0;
    const Extended entry = pyramid1_.scale[lowest - 1];
    forEachShareOfPoints([&](Share share, PointTracker<T>& tracker) {
      for (int i = share.firstRow; i < share.endRow(); ++i) {
        if (!waitsFor(i, lowest - 1)) continue;
        tracker.startPoint();
        Point guess = scaled(next(i), entry);
        for (int l = lowest - 1; l >= 0; --l) {
          const Level<T> level = levelAt(l);
          status_[i] = static_cast<Tev8s>(l);
          const Outcome outcome = tracker.track(level, prev(i, level.scale), guess, nullptr);
          if (outcome == Outcome::unreadable) break;
          if (outcome == Outcome::leftImage) setNext(i, guess, level.scale);
          if (outcome != Outcome::tracked) {
            status_[i] = static_cast<Tev8s>(l + 1);
            break;
          }
          if (l == 0)
            setNext(i, guess);
          else
            guess = scaled(guess, ratio);
        }
        error_[i] = tracker.error();
      }
    });
  }
  static Point scaled(Point p, Extended factor) {
    return {static_cast<Tev32f>(p.x * factor), static_cast<Tev32f>(p.y * factor)};
  }

  // The gradients of a whole level, `stride` elements from row to row, at the scale of a patch's.
  GradientImages<Gradient> gradientImages(const Level<T>& level, int stride) {
    const auto images = reinterpret_cast<Gradient*>(state_.buffer);
    const int step = stride * int{sizeof(Gradient)};
    const GradientImages<Gradient> result = {images, images + sizes_.image, step};
    const TevSize roi = level.roi;
    // Where the level cannot be read no point gets as far as its gradients.
    if (firstFailure(notNull(level.first), region(roi), rowFits<T>(level.firstStep, roi.width),
                     wholeElements<T>(level.firstStep)) != tevStatusOk)
      return result;
    const auto forEachRow = [&](auto work) {
      forEachShare(roi.height, shares_, [&](Share share) {
        for (int y = share.firstRow; y < share.endRow(); ++y) work(y);
      });
    };
    const auto gx = rows(result.x, step), gy = rows(result.y, step);
    const auto fillFrom = [&](auto source) {
      forEachRow([&](int y) {
        scharrRow(source[std::max(y - 1, 0)], source[y], source[std::min(y + 1, roi.height - 1)], gx[y], gy[y],
                  roi.width);
      });
    };
    if constexpr (std::is_same_v<T, Tev8u>) {
      fillFrom(rows(level.first, level.firstStep));
    } else {
      const Tev32f* source;
      int sourceStep = level.firstStep;
      if constexpr (std::is_same_v<T, Tev16u>) {
        const auto from = rows(level.first, level.firstStep);
        const auto to = rows(images + 2 * sizes_.image, step);
        forEachRow([&](int y) {
          tevsConvert_16u32f(from[y], to[y], roi.width);
          tevsMulC_32f_I(0.03125F, to[y], roi.width);
        });
        source = to[0];
        sourceStep = step;
      } else {
        source = level.first;
      }
      // The filters' scratch grows with the thread setting, and may have outgrown the state since its creation.
      int needed = 0;
      Tev8u* const scratch = reinterpret_cast<Tev8u*>(images + K::imagesPerLevel * sizes_.image);
      if (filterScratchSize(roi, false, &needed) == tevStatusOk && needed <= std::int64_t{state_.filterScratch} * 4) {
        teviFilterScharrHorizBorder_32f_C1R(source, sourceStep, result.y, step, roi, tevBorderRepl, 0, scratch);
        teviFilterScharrVertBorder_32f_C1R(source, sourceStep, result.x, step, roi, tevBorderRepl, 0, scratch);
      } else {
        fillFrom(rows(source, sourceStep));
      }
      if constexpr (std::is_same_v<T, Tev32f>)
        forEachRow([&](int y) {
          tevsMulC_32f_I(0.03125F, gx[y], roi.width);
          tevsMulC_32f_I(0.03125F, gy[y], roi.width);
        });
    }
    return result;
  }

  const TevPyramid &pyramid1_, &pyramid2_;
  const Tev32f* prev_;
  Tev32f* next_;
  Tev8s* status_;
  Tev32f* error_;
  int count_, maxLevel_, maxIterations_;
  Tev32f thresholdSquared_;
  const TevOptFlowPyrLKState& state_;
  BlockSizes sizes_;
  int shares_;
};

template <class T>
TevStatus opticalFlow(const TevPyramid* pyramid1, const TevPyramid* pyramid2, const Tev32f* prevPoints,
                      Tev32f* nextPoints, Tev8s* status, Tev32f* error, int pointCount, int windowSize, int maxLevel,
                      int maxIterations, Tev32f threshold, TevOptFlowPyrLKState* pState) {
  if (TevStatus s = notNull(pyramid1, pyramid2, pState, prevPoints, nextPoints, status, error)) return s;
  if (TevStatus s = firstFailure(length(pointCount), length(windowSize),
                                 failUnless(windowSize == pState->windowSize, tevStatusBadSize),
                                 failUnless(maxLevel >= 0 && maxIterations >= 1, tevStatusBadArg),
                                 failUnless(!(threshold < 0), tevStatusBadArg)))
    return s;
  FlowCall<T>(*pyramid1, *pyramid2, prevPoints, nextPoints, status, error, pointCount, maxLevel, maxIterations,
              threshold, *pState)
      .run();
  return tevStatusOk;
}

TevStatus freeState(TevOptFlowPyrLKState* state) {
  if (TevStatus s = notNull(state)) return s;
  tevsFree(state->buffer);
  tevsFree(state);
  return tevStatusOk;
}

}  // namespace

TevStatus ownOpticalFlowPyrLKInitAlloc(TevOptFlowPyrLKState** ppState, int width, int height, int dataType,
                                       int windowSize, int hint) {
  if (TevStatus s = firstFailure(notNull(ppState), length(windowSize), region({width, height}))) return s;
  auto* const state = reinterpret_cast<TevOptFlowPyrLKState*>(tevsMalloc_8u(int{sizeof(TevOptFlowPyrLKState)}));
  if (state == nullptr) return tevStatusNoMemory;
  const int threads = owncvGetNumThreads();
  constexpr int greatest = std::numeric_limits<int>::max();
  int filterScratch = 0;
  const bool countable =
      width <= greatest - 5 && height <= greatest - 5 && windowSize <= (1 << 24) &&
      filterScratchSize({width + 5, height + 5}, dataType == tevDataType8u, &filterScratch) == tevStatusOk &&
      filterScratch >= 0;
  const std::int64_t total =
      countable ? blockSizes(width, height, dataType, windowSize, filterScratch, threads).total : -1;
  Tev8u* const buffer = total > 0 && total <= greatest ? tevsMalloc_8u(static_cast<int>(total)) : nullptr;
  if (buffer == nullptr) {
    tevsFree(state);
    return tevStatusNoMemory;
  }
  *state = {width, height, threads, dataType, filterScratch, hint, windowSize, buffer};
  *ppState = state;
  return tevStatusOk;
}

void ownOptConvolution_16s_C1R(const Tev16s* src, int srcStep, Tev16s* dstX, Tev16s* dstY, int dstStep, int width,
                               int height, Tev32s* workX, Tev32s* workY) {
  const int w = width - 2, h = height - 2;
  for (int y = 0; y < height; ++y) {
    const Tev16s* const s = rows(src, srcStep)[y];
    Tev32s *const a = workX + std::ptrdiff_t{y} * w, *const b = workY + std::ptrdiff_t{y} * w;
#pragma GCC ivdep
    for (int x = 0; x < w; ++x) {
      a[x] = s[x + 2] - s[x];
      b[x] = 3 * s[x] + 10 * s[x + 1] + 3 * s[x + 2];
    }
  }
  for (int y = 0; y < h; ++y) {
    const Tev32s *const a = workX + std::ptrdiff_t{y} * w, *const b = workY + std::ptrdiff_t{y} * w;
    Tev16s *const gx = rows(dstX, dstStep)[y], *const gy = rows(dstY, dstStep)[y];
#pragma GCC ivdep
    for (int x = 0; x < w; ++x) {
      gy[x] = saturate<Tev16s>((b[x + 2 * w] - b[x] + 16) >> 5);
      gx[x] = saturate<Tev16s>((3 * a[x] + 10 * a[x + w] + 3 * a[x + 2 * w] + 16) >> 5);
    }
  }
}

void ownOptConvolution_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dstX, Tev32f* dstY, int dstStep, int width,
                               int height, Tev32f* workX, Tev32f* workY) {
  const int w = width - 2, h = height - 2;
  const auto smooth = [](Tev32f p, Tev32f q, Tev32f r) {
    return static_cast<Tev32f>(Extended{0.09375} * p + Extended{0.3125} * q + Extended{0.09375} * r);
  };
  for (int y = 0; y < height; ++y) {
    const Tev32f* const s = rows(src, srcStep)[y];
    Tev32f *const a = workX + std::ptrdiff_t{y} * w, *const b = workY + std::ptrdiff_t{y} * w;
    for (int x = 0; x < w; ++x) {
      a[x] = s[x + 2] - s[x];
      b[x] = smooth(s[x], s[x + 1], s[x + 2]);
    }
  }
  for (int y = 0; y < h; ++y) {
    const Tev32f *const a = workX + std::ptrdiff_t{y} * w, *const b = workY + std::ptrdiff_t{y} * w;
    Tev32f *const gx = rows(dstX, dstStep)[y], *const gy = rows(dstY, dstStep)[y];
    for (int x = 0; x < w; ++x) {
      gy[x] = b[x + 2 * w] - b[x];
      gx[x] = smooth(a[x], a[x + w], a[x + 2 * w]);
    }
  }
}

void ownModifiedConvolution_16s_C1R(const Tev16s* src, int srcStep, Tev16s* dst, int dstStep, int width, int height,
                                    int patchWidth, int patchHeight, int /*validWidth*/, int /*validHeight*/, Tev32f x,
                                    Tev32f y, int scale) {
  const auto weight = [](Tev32f center, int size) {
    const Extended corner = center - (size - 1) * Extended{0.5};
    Extended fraction = corner - std::trunc(corner);
    if (fraction < 0) fraction += 1;
    return fraction == fraction ? static_cast<unsigned>(fraction * 32768 + 0.5L) & 65535 : 0U;
  };
  const auto product = [](unsigned a, unsigned b) { return static_cast<int>(((a * b + 16384) >> 15) & 65535); };
  const unsigned ax = weight(x, patchWidth), ay = weight(y, patchHeight);
  const unsigned cx = (32768 - ax) & 65535, cy = (32768 - ay) & 65535;
  const int w00 = product(cx, cy), w10 = product(ax, cy), w01 = product(cx, ay), w11 = product(ax, ay);
  const unsigned shift = (static_cast<unsigned>(scale) + 15) & 31, half = (static_cast<unsigned>(scale) + 14) & 31;
  const int rounding = static_cast<int>(1U << half);
  for (int v = 0; v < height - 2; ++v) {
    const Tev16s *const p = rows(src, srcStep)[v], *const q = rows(src, srcStep)[v + 1];
    Tev16s* const d = rows(dst, dstStep)[v];
#pragma GCC ivdep
    for (int u = 0; u < width - 2; ++u)
      d[u] = saturate<Tev16s>((p[u] * w00 + p[u + 1] * w10 + q[u] * w01 + q[u + 1] * w11 + rounding) >> shift);
  }
}

TevStatus teviOpticalFlowPyrLKInitAlloc_8u_C1R(TevOptFlowPyrLKState** ppState, TevSize roiSize, int windowSize,
                                               int hint) {
  return ownOpticalFlowPyrLKInitAlloc(ppState, roiSize.width, roiSize.height, tevDataType8u, windowSize, hint);
}

TevStatus teviOpticalFlowPyrLKInitAlloc_16u_C1R(TevOptFlowPyrLKState** ppState, TevSize roiSize, int windowSize,
                                                int hint) {
  return ownOpticalFlowPyrLKInitAlloc(ppState, roiSize.width, roiSize.height, tevDataType16u, windowSize, hint);
}

TevStatus teviOpticalFlowPyrLKInitAlloc_32f_C1R(TevOptFlowPyrLKState** ppState, TevSize roiSize, int windowSize,
                                                int hint) {
  return ownOpticalFlowPyrLKInitAlloc(ppState, roiSize.width, roiSize.height, tevDataType32f, windowSize, hint);
}

TevStatus teviOpticalFlowPyrLKFree_8u_C1R(TevOptFlowPyrLKState* pState) { return freeState(pState); }

TevStatus teviOpticalFlowPyrLKFree_16u_C1R(TevOptFlowPyrLKState* pState) { return freeState(pState); }

TevStatus teviOpticalFlowPyrLKFree_32f_C1R(TevOptFlowPyrLKState* pState) { return freeState(pState); }

TevStatus teviOpticalFlowPyrLK_8u_C1R(const TevPyramid* pyramid1, const TevPyramid* pyramid2, const Tev32f* prevPoints,
                                      Tev32f* nextPoints, Tev8s* status, Tev32f* error, int pointCount, int windowSize,
                                      int maxLevel, int maxIterations, Tev32f threshold, TevOptFlowPyrLKState* pState) {
  return opticalFlow<Tev8u>(pyramid1, pyramid2, prevPoints, nextPoints, status, error, pointCount, windowSize, maxLevel,
                            maxIterations, threshold, pState);
}

TevStatus teviOpticalFlowPyrLK_16u_C1R(const TevPyramid* pyramid1, const TevPyramid* pyramid2, const Tev32f* prevPoints,
                                       Tev32f* nextPoints, Tev8s* status, Tev32f* error, int pointCount, int windowSize,
                                       int maxLevel, int maxIterations, Tev32f threshold,
                                       TevOptFlowPyrLKState* pState) {
  return opticalFlow<Tev16u>(pyramid1, pyramid2, prevPoints, nextPoints, status, error, pointCount, windowSize,
                             maxLevel, maxIterations, threshold, pState);
}

TevStatus teviOpticalFlowPyrLK_32f_C1R(const TevPyramid* pyramid1, const TevPyramid* pyramid2, const Tev32f* prevPoints,
                                       Tev32f* nextPoints, Tev8s* status, Tev32f* error, int pointCount, int windowSize,
                                       int maxLevel, int maxIterations, Tev32f threshold,
                                       TevOptFlowPyrLKState* pState) {
  return opticalFlow<Tev32f>(pyramid1, pyramid2, prevPoints, nextPoints, status, error, pointCount, windowSize,
                             maxLevel, maxIterations, threshold, pState);
}
