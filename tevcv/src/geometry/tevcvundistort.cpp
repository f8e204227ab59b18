// Removal of lens distortion: a warp that samples the distorted image, and the two coordinate maps for a caller's own.
//
// A camera model gives, for each pixel of the result, the position in the distorted image. What depends only on the
// column is kept as three values a column, either in a float table in the caller's buffer or computed when needed; what
// depends only on the row is computed once a row.
//
// Positions are defined in extended precision. Both functions estimate them in double, strip by strip of columns, with
// a bound on how far each may be off; where the bound leaves the result open (a position next to a whole number, a
// value next to the middle between two numbers), that pixel is computed by the definition.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "geometry/guarded.h"
#include "tevcv/geometry.h"

using namespace tevcv;

namespace {

template <class F>
struct Position {
  F x, y;
};
struct Camera {
  Tev32f fx, fy, cx, cy, k1, k2, p1, p2;
};

// The values of one column, in the order of the table.
template <class F>
using Column = std::array<F, 3>;

// Radial distortion. D is split so that each pixel costs one product of a column's and a row's part.
class RadialModel {
 public:
  explicit RadialModel(const Camera& camera)
      : cx_(camera.cx),
        cy_(camera.cy),
        inverseFx2_(1 / (Extended{camera.fx} * camera.fx)),
        fy2_(Extended{camera.fy} * camera.fy),
        k1_(camera.k1),
        k2_(camera.k2) {}

  Column<Extended> column(int x) const {
    const Extended u = x - cx_, a = u * u * inverseFx2_;
    return {a, a * (k2_ * a + k1_), u};
  }

  template <class F>
  struct Row {
    F y, v, mixed, own;
  };
  Row<Extended> row(int y) const {
    const Extended v = y - cy_, b = v * v / fy2_;
    return {static_cast<Extended>(y), v, 2 * k2_ * b, b * (k1_ + k2_ * b)};
  }
  static Row<Tev64f> rounded(const Row<Extended>& r) {
    return {static_cast<Tev64f>(r.y), static_cast<Tev64f>(r.v), static_cast<Tev64f>(r.mixed),
            static_cast<Tev64f>(r.own)};
  }

  static Position<Extended> position(const Column<Extended>& c, const Row<Extended>& r, int x) {
    const Extended d = c[0] * r.mixed + (c[1] + r.own);
    return {x + c[2] * d, r.y + r.v * d};
  }
  static Position<Tev64f> estimate(const Column<Tev64f>& c, const Row<Tev64f>& r, Tev64f x) {
    const Tev64f d = c[0] * r.mixed + (c[1] + r.own);
    return {x + c[2] * d, r.y + r.v * d};
  }
  // With every operand and every step rounded to double, D is off by less than 4 * 2^-53 of its terms' magnitudes and a
  // position by less than 7 of its own; 8 leaves room. Where all terms are 0 the positions are exact.
  static Position<Tev64f> bound(const Column<Tev64f>& greatest, const Row<Tev64f>& r, Tev64f lastX) {
    const Tev64f d = greatest[0] * std::fabs(r.mixed) + (greatest[1] + std::fabs(r.own));
    if (d == 0) return {0, 0};
    return {0x1p-50 * (lastX + greatest[2] * d), 0x1p-50 * (r.y + std::fabs(r.v) * d)};
  }

 private:
  Extended cx_, cy_, inverseFx2_, fy2_, k1_, k2_;
};

// Radial and tangential distortion.
class TangentialModel {
 public:
  explicit TangentialModel(const Camera& camera)
      : cx_(camera.cx),
        cy_(camera.cy),
        fx_(camera.fx),
        fy_(camera.fy),
        k1_(camera.k1),
        k2_(camera.k2),
        p1_(camera.p1),
        p2_(camera.p2) {}

  Column<Extended> column(int x) const {
    const Extended u = x - cx_, xn = 1 / fx_ * u;
    return {xn, xn * xn, u};
  }

  template <class F>
  struct Row {
    F y, v, yn, yn2, k1, k2, p1, p2, fx, fy;
  };
  Row<Extended> row(int y) const {
    const Extended v = y - cy_, yn = v / fy_;
    return {static_cast<Extended>(y), v, yn, yn * yn, k1_, k2_, p1_, p2_, fx_, fy_};
  }
  static Row<Tev64f> rounded(const Row<Extended>& r) {
    return {static_cast<Tev64f>(r.y),  static_cast<Tev64f>(r.v),  static_cast<Tev64f>(r.yn), static_cast<Tev64f>(r.yn2),
            static_cast<Tev64f>(r.k1), static_cast<Tev64f>(r.k2), static_cast<Tev64f>(r.p1), static_cast<Tev64f>(r.p2),
            static_cast<Tev64f>(r.fx), static_cast<Tev64f>(r.fy)};
  }

  static Position<Extended> position(const Column<Extended>& c, const Row<Extended>& r, int x) {
    const Extended r2 = c[1] + r.yn2;
    const Extended d = c[0] * 2 * r.p2 + r.yn * 2 * r.p1 + (r.k2 * r2 + r.k1) * r2;
    return {r.fx * r.p2 * r2 + x + c[2] * d, r2 * r.fy * r.p1 + r.y + r.v * d};
  }
  static Position<Tev64f> estimate(const Column<Tev64f>& c, const Row<Tev64f>& r, Tev64f x) {
    const Tev64f r2 = c[1] + r.yn2;
    const Tev64f d = c[0] * 2 * r.p2 + r.yn * 2 * r.p1 + (r.k2 * r2 + r.k1) * r2;
    return {r.fx * r.p2 * r2 + x + c[2] * d, r2 * r.fy * r.p1 + r.y + r.v * d};
  }
  // No result of twelve rounded steps is off by as much as 16 * 2^-53 of its terms' magnitudes.
  static Position<Tev64f> bound(const Column<Tev64f>& greatest, const Row<Tev64f>& r, Tev64f lastX) {
    const Tev64f r2 = greatest[1] + r.yn2;
    const Tev64f d = greatest[0] * 2 * std::fabs(r.p2) + std::fabs(r.yn) * 2 * std::fabs(r.p1) +
                     (std::fabs(r.k2) * r2 + std::fabs(r.k1)) * r2;
    return {0x1p-49 * (std::fabs(r.fx * r.p2) * r2 + lastX + greatest[2] * d),
            0x1p-49 * (std::fabs(r.fy * r.p1) * r2 + r.y + std::fabs(r.v) * d)};
  }

 private:
  Extended cx_, cy_, fx_, fy_, k1_, k2_, p1_, p2_;
};

// The columns of a model: from a float table in the caller's buffer, or by the formula where there is no buffer.
template <class Model>
class Columns {
 public:
  Columns(const Model& model, int width, Tev8u* buffer) : model_(model), table_(aligned(buffer)) {
    if (table_ != nullptr)
      for (int x = 0; x < width; ++x) {
        const Column<Extended> c = model_.column(x);
        for (int i = 0; i < 3; ++i) table_[3 * x + i] = static_cast<Tev32f>(c[i]);
      }
  }

  Column<Extended> operator[](int x) const {
    if (table_ == nullptr) return model_.column(x);
    return {table_[3 * x], table_[3 * x + 1], table_[3 * x + 2]};
  }
  const Model& model() const { return model_; }

 private:
  static Tev32f* aligned(Tev8u* buffer) {
    return reinterpret_cast<Tev32f*>((reinterpret_cast<std::uintptr_t>(buffer) + 31) & ~std::uintptr_t{31});
  }

  const Model& model_;
  Tev32f* table_;
};

constexpr int stripWidth = 128;

// Up to stripWidth columns, and the estimated positions of one row over them.
template <class Model>
class Strip {
 public:
  Strip(const Columns<Model>& columns, int firstColumn, int columnCount)
      : first(firstColumn), count(columnCount), columns_(columns) {
    for (int i = 0; i < count; ++i) {
      const Column<Extended> c = columns_[first + i];
      for (int k = 0; k < 3; ++k) values_[k][i] = static_cast<Tev64f>(c[k]);
    }
    for (int k = 0; k < 3; ++k) {
      Tev64f greatest = 0, finite = 0;  // `finite` becomes NaN where a value is not, and takes the bounds with it
      for (int i = 0; i < count; ++i) {
        greatest = std::max(greatest, std::fabs(values_[k][i]));
        finite += 0 * values_[k][i];
      }
      greatest_[k] = greatest + finite;
    }
  }

  void startRow(int y) {
    row_ = columns_.model().row(y);
    const auto r = Model::rounded(row_);
    for (int i = 0; i < count; ++i) {
      const Position<Tev64f> at = Model::estimate({values_[0][i], values_[1][i], values_[2][i]}, r, first + i);
      sx[i] = at.x, sy[i] = at.y;
    }
    bound = Model::bound(greatest_, r, first + count - 1);
  }
  // The position of pixel i of the row by the definition.
  Position<Extended> exact(int i) const { return Model::position(columns_[first + i], row_, first + i); }

  int first, count;
  Tev64f sx[stripWidth], sy[stripWidth];
  Position<Tev64f> bound;  // how far any estimate of this row may be off

 private:
  const Columns<Model>& columns_;
  typename Model::template Row<Extended> row_;
  Tev64f values_[3][stripWidth];
  Column<Tev64f> greatest_;
};

template <class Model, class Work>
void forEachStripRow(const Model& model, TevSize roi, Tev8u* buffer, Work work) {
  const Columns<Model> columns(model, roi.width, buffer);
  for (int first = 0; first < roi.width; first += stripWidth) {
    Strip<Model> strip(columns, first, std::min(stripWidth, roi.width - first));
    for (int y = 0; y < roi.height; ++y) {
      strip.startRow(y);
      work(strip, y);
    }
  }
}

// --- The warp ---

template <class T, int channels>
class Sampler {
 public:
  Sampler(const T* src, int srcStep, TevSize roi) : src_(src, srcStep), lastX_(roi.width - 1), lastY_(roi.height - 1) {}

  // One row of a strip: `dst` is its first pixel.
  void sampleRow(const Strip<RadialModel>& strip, int y, T* dst) {
    if (strip.bound.x == 0 && strip.bound.y == 0) return copyRow(strip, y, dst);
    locate(strip);
    for (int c = 0; c < channels; ++c) {
      gather(strip.count, c);
      blend(strip, result_[c]);
    }
    int special = 0;
    for (int i = 0; i < strip.count; ++i) special |= code_[i];
    if (special == 0) {
      for (int i = 0; i < strip.count; ++i) store(i, dst);
      return;
    }
    for (int i = 0; i < strip.count; ++i)
      if (code_[i] == 0)
        store(i, dst);
      else if ((code_[i] & outside) == 0)
        sampleByDefinition(strip.exact(i), dst + i * channels);
  }

 private:
  static constexpr int outside = 1, openX = 2, openY = 4, openValue = 8;
  static constexpr bool isFloat = std::is_floating_point_v<T>;
  using Value = std::conditional_t<isFloat, Tev32f, int>;
  // Fractions and weights of bytes fit floats: the few results that float leaves open cost less than double.
  using Fraction = std::conditional_t<std::is_same_v<T, Tev8u>, Tev32f, Tev64f>;
  static constexpr Fraction fractionUnit = std::is_same_v<T, Tev8u> ? Fraction(0x1p-20) : 0;
  static constexpr Fraction blendUnit = std::is_same_v<T, Tev8u> ? Fraction(0x1p-19) : Fraction(0x1p-48);

  void store(int i, T* dst) const {
    for (int c = 0; c < channels; ++c) dst[i * channels + c] = static_cast<T>(result_[c][i]);
  }

  // Without distortion each pixel comes from its own position, the fractions are 0, and no position of the last column
  // or row has four pixels around it.
  void copyRow(const Strip<RadialModel>& strip, int y, T* dst) const {
    if (y >= lastY_) return;
    const T *const p = src_[y] + static_cast<std::ptrdiff_t>(strip.first) * channels, *const q =
                                                                                          src_[y + 1] +
                                                                                          static_cast<std::ptrdiff_t>(
                                                                                              strip.first) *
                                                                                              channels;
    const int count = (std::min(strip.first + strip.count, lastX_) - strip.first) * channels;
    for (int i = 0; i < count; ++i)
      if constexpr (isFloat)
        dst[i] = mix<T>(0, 0, p[i], p[i + channels], q[i], q[i + channels]);  // infinities times 0 count
      else
        dst[i] = p[i];
  }

  // A pixel whose position lies outside stays as it was.
  void sampleByDefinition(Position<Extended> at, T* dst) const {
    if (!(at.x >= 0 && at.y >= 0 && at.x < lastX_ && at.y < lastY_)) return;
    const int ix = static_cast<int>(at.x), iy = static_cast<int>(at.y);
    const Extended a = at.x - ix, b = at.y - iy;
    const T *const p = pixel(ix, iy), *const q = pixel(ix, iy + 1);
    for (int c = 0; c < channels; ++c) {
      const Extended value = mix<Extended>(a, b, p[c], p[c + channels], q[c], q[c + channels]);
      if constexpr (isFloat)
        dst[c] = static_cast<T>(value);
      else
        dst[c] = static_cast<T>(addHalfAndTruncate(value));
    }
  }

  // The pixel to the right takes the vertical fraction and the pixel below the horizontal one. Callers depend on these
  // crossed weights; the plain bilinear rule would change every image they have stored.
  template <class F>
  static F mix(F a, F b, F here, F right, F below, F opposite) {
    return a * b * opposite + b * (1 - a) * right + (1 - a) * (1 - b) * here + a * (1 - b) * below;
  }

  // As plain selections, which the compiler turns into vectors. A NaN in front gives the second operand.
  static Tev64f lesser(Tev64f p, Tev64f q) { return p < q ? p : q; }
  static Tev64f greater(Tev64f p, Tev64f q) { return p > q ? p : q; }

  // Splits each position into its pixel and its fractions, and tells where the estimate cannot: next to a whole number,
  // where the pixel or the edge of the image is open. Positions outside get a pixel inside, so that it can be read.
  void locate(const Strip<RadialModel>& strip) {
    const Tev64f lastX = lastX_, lastY = lastY_;
    const auto ex = static_cast<Fraction>(2 * strip.bound.x) + fractionUnit,
               ey = static_cast<Fraction>(2 * strip.bound.y) + fractionUnit;
    const int count = strip.count;
    // A loop of its own: otherwise the compiler converts the limits outside, and branches inside.
    for (int i = 0; i < count; ++i) {
      nearestX_[i] = greater(lesser(strip.sx[i], lastX - 1), 0);
      nearestY_[i] = greater(lesser(strip.sy[i], lastY - 1), 0);
    }
    for (int i = 0; i < count; ++i) {
      const Tev64f x = strip.sx[i], y = strip.sy[i];
      const int ix = static_cast<int>(nearestX_[i]), iy = static_cast<int>(nearestY_[i]);
      const auto a = static_cast<Fraction>(x - ix), b = static_cast<Fraction>(y - iy);
      const auto farX = static_cast<Fraction>(greater(-x, x - lastX)),
                 farY = static_cast<Fraction>(greater(-y, y - lastY));
      const Fraction nearX = a < 1 - a ? a : 1 - a, nearY = b < 1 - b ? b : 1 - b;
      ix_[i] = ix, iy_[i] = iy;
      a_[i] = a, b_[i] = b;
      code_[i] =
          (farX > ex ? outside : 0) | (farY > ey ? outside : 0) | (nearX > ex ? 0 : openX) | (nearY > ey ? 0 : openY);
    }
  }

  const T* pixel(int x, int y) const { return src_[y] + static_cast<std::ptrdiff_t>(x) * channels; }

  void gather(int count, int channel) {
    for (int i = 0; i < count; ++i) {
      const T *const p = pixel(ix_[i], iy_[i]) + channel, *const q = reinterpret_cast<const T*>(
                                                              reinterpret_cast<const Tev8u*>(p) + src_.step());
      here_[i] = p[0], right_[i] = p[channels], below_[i] = q[0], opposite_[i] = q[channels];
    }
  }

  void blend(const Strip<RadialModel>& strip, Value* result) {
    // Each weight is off by no more than both fractions are, and by the rounding of a few steps.
    const auto weights = static_cast<Fraction>(2 * (strip.bound.x + strip.bound.y));
    const int count = strip.count;
    for (int i = 0; i < count; ++i) {
      const Fraction a = a_[i], b = b_[i];
      const auto here = static_cast<Fraction>(here_[i]), right = static_cast<Fraction>(right_[i]),
                 below = static_cast<Fraction>(below_[i]), opposite = static_cast<Fraction>(opposite_[i]);
      const Fraction value = mix<Fraction>(a, b, here, right, below, opposite);
      if constexpr (isFloat) {
        const Tev64f magnitude = std::fabs(here) + std::fabs(right) + std::fabs(below) + std::fabs(opposite);
        const Tev64f bound = magnitude * weights + blendUnit * mix<Tev64f>(a, b, std::fabs(here), std::fabs(right),
                                                                           std::fabs(below), std::fabs(opposite));
        const auto low = static_cast<Tev32f>(value - bound), high = static_cast<Tev32f>(value + bound);
        const bool open = (std::bit_cast<std::uint32_t>(low) != std::bit_cast<std::uint32_t>(high)) |
                          !(bound <= std::numeric_limits<Tev64f>::max());
        result[i] = high;
        code_[i] |= open ? openValue : 0;
      } else {
        constexpr Fraction brightest = std::numeric_limits<T>::max();
        const Fraction bound = brightest * (4 * weights + blendUnit), rounded = value + Fraction{0.5};
        const int whole = static_cast<int>((rounded >= 0) & (rounded < brightest + 1) ? rounded : 0);
        const Fraction rest = rounded - static_cast<Fraction>(whole);
        result[i] = whole;
        code_[i] |= (rest > bound ? 0 : openValue) | (rest < 1 - bound ? 0 : openValue);
      }
    }
  }

  Rows<const T> src_;
  int lastX_, lastY_;
  Tev64f nearestX_[stripWidth], nearestY_[stripWidth];
  int ix_[stripWidth], iy_[stripWidth], code_[stripWidth];
  Fraction a_[stripWidth], b_[stripWidth];
  Value here_[stripWidth], right_[stripWidth], below_[stripWidth], opposite_[stripWidth];
  Value result_[channels][stripWidth];
};

constexpr TevStatus focalLength(Tev32f f) { return failUnless(f < 0 || f > 0, tevStatusBadArg); }

template <class T, int channels>
TevStatus undistort(const T* src, int srcStep, T* dst, int dstStep, TevSize roi, const Camera& camera, Tev8u* buffer) {
  if (TevStatus s = firstFailure(notNull(src, dst), region(roi), rowFits<T>(srcStep, roi.width, channels),
                                 rowFits<T>(dstStep, roi.width, channels), wholeElements<T>(srcStep),
                                 wholeElements<T>(dstStep), focalLength(camera.fx), focalLength(camera.fy)))
    return s;
  if (roi.width == 1 || roi.height == 1) return tevStatusOk;  // no position has four pixels around it
  Sampler<T, channels> sampler(src, srcStep, roi);
  const auto d = rows(dst, dstStep);
  forEachStripRow(RadialModel(camera), roi, buffer, [&](const Strip<RadialModel>& strip, int y) {
    sampler.sampleRow(strip, y, d[y] + static_cast<std::ptrdiff_t>(strip.first) * channels);
  });
  return tevStatusOk;
}

// --- The maps ---

template <class Model>
void fillMaps(const Model& model, Rows<Tev32f> xMap, Rows<Tev32f> yMap, TevSize roi, Tev8u* buffer) {
  forEachStripRow(model, roi, buffer, [&](const Strip<Model>& strip, int y) {
    storeGuarded(
        xMap[y] + strip.first, strip.count,
        [&](int i) {
          return Guarded{strip.sx[i], strip.bound.x};
        },
        [&](int i) { return static_cast<Tev32f>(strip.exact(i).x); });
    storeGuarded(
        yMap[y] + strip.first, strip.count,
        [&](int i) {
          return Guarded{strip.sy[i], strip.bound.y};
        },
        [&](int i) { return static_cast<Tev32f>(strip.exact(i).y); });
  });
}

}  // namespace

TevStatus teviUndistortGetSize(TevSize roiSize, int* bufferSize) {
  if (TevStatus s = firstFailure(notNull(bufferSize), region(roiSize))) return s;
  // Twice what the table fills; callers have allocated by this formula all along.
  *bufferSize = static_cast<int>(((static_cast<unsigned>(roiSize.width) + 3) & ~3U) * 24 + 32);
  return tevStatusOk;
}

TevStatus teviUndistortRadial_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize, Tev32f fx,
                                     Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2, Tev8u* buffer) {
  return undistort<Tev8u, 1>(src, srcStep, dst, dstStep, roiSize, {fx, fy, cx, cy, k1, k2, 0, 0}, buffer);
}

TevStatus teviUndistortRadial_16u_C1R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                      Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2, Tev8u* buffer) {
  return undistort<Tev16u, 1>(src, srcStep, dst, dstStep, roiSize, {fx, fy, cx, cy, k1, k2, 0, 0}, buffer);
}

TevStatus teviUndistortRadial_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                      Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2, Tev8u* buffer) {
  return undistort<Tev32f, 1>(src, srcStep, dst, dstStep, roiSize, {fx, fy, cx, cy, k1, k2, 0, 0}, buffer);
}

TevStatus teviUndistortRadial_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize, Tev32f fx,
                                     Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2, Tev8u* buffer) {
  return undistort<Tev8u, 3>(src, srcStep, dst, dstStep, roiSize, {fx, fy, cx, cy, k1, k2, 0, 0}, buffer);
}

TevStatus teviUndistortRadial_16u_C3R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                      Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2, Tev8u* buffer) {
  return undistort<Tev16u, 3>(src, srcStep, dst, dstStep, roiSize, {fx, fy, cx, cy, k1, k2, 0, 0}, buffer);
}

TevStatus teviUndistortRadial_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                      Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2, Tev8u* buffer) {
  return undistort<Tev32f, 3>(src, srcStep, dst, dstStep, roiSize, {fx, fy, cx, cy, k1, k2, 0, 0}, buffer);
}

TevStatus teviCreateMapCameraUndistort_32f_C1R(Tev32f* xMap, int xMapStep, Tev32f* yMap, int yMapStep, TevSize roiSize,
                                               Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2,
                                               Tev32f p1, Tev32f p2, Tev8u* buffer) {
  if (TevStatus s = firstFailure(notNull(xMap, yMap), region(roiSize), rowFits<Tev32f>(xMapStep, roiSize.width),
                                 rowFits<Tev32f>(yMapStep, roiSize.width), wholeElements<Tev32f>(xMapStep),
                                 wholeElements<Tev32f>(yMapStep), focalLength(fx), focalLength(fy)))
    return s;
  const Camera camera = {fx, fy, cx, cy, k1, k2, p1, p2};
  const auto xs = rows(xMap, xMapStep), ys = rows(yMap, yMapStep);
  const auto absent = [](Tev32f p) { return !(p < 0 || p > 0); };  // 0 or NaN
  if (absent(p1) && absent(p2))
    fillMaps(RadialModel(camera), xs, ys, roiSize, buffer);
  else
    fillMaps(TangentialModel(camera), xs, ys, roiSize, buffer);
  return tevStatusOk;
}
