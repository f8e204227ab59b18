// Bilinear copies at a fractional position: of a region, and of a rectangle around a point that may reach outside the
// source.
//
// Where the pixels p00 p01 / p10 p11 meet, with the fractions fx to the right and fy down, the value is
//     p00 * gx * gy + p01 * fx * gy + p10 * gx * fy + p11 * fx * fy,    gx = 1 - fx, gy = 1 - fy.
// Integer members weigh in fixed point (FixedMix), float members in extended precision (FloatMix). A mix knows the
// weights of one call and offers the four blends that a rectangle needs; copyRectangle below lays them out in bands.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "geometry/guarded.h"
#include "tevcv/geometry.h"
#include "tevcv_internal/geometry.h"

using namespace tevcv;

namespace {

// The fraction of an offset, from 0 up to 1. Only NaN comes of an offset that is not finite.
Extended fractionOf(Tev32f offset) {
  const Extended fraction = Extended{offset} - std::trunc(offset);
  return fraction < 0 ? fraction + 1 : fraction;
}

// Fixed-point weights with `bits` fractional bits: 14 or 15.
template <class S, class D, int bits>
class FixedMix {
 public:
  using Source = S;
  using Destination = D;

  // The scale factor moves the final shift, and the rounding bit with it.
  FixedMix(Extended fractionX, Extended fractionY, int scaleFactor = 0)
      : right_(weight(fractionX)),
        left_(one - right_),
        below_(weight(fractionY)),
        above_(one - below_),
        w00_(product(left_, above_)),
        w01_(product(right_, above_)),
        w10_(product(left_, below_)),
        w11_(product(right_, below_)),
        shift_((static_cast<unsigned>(scaleFactor) + bits) & 31),
        half_(1U << ((static_cast<unsigned>(scaleFactor) + bits - 1) & 31)) {}

  D flat(S p) const { return round(p * (left_ + right_)); }
  D vertical(S p, S q) const { return round(p * above_ + q * below_); }

  void horizontalRow(const S* p, D* d, int width) const {
    for (int x = 0; x < width; ++x) d[x] = round(p[x + 1] * right_ + p[x] * left_);
  }
  void fullRow(const S* p, const S* q, D* d, int width) const {
    const FixedMix mix = *this;
#pragma GCC ivdep
    for (int x = 0; x < width; ++x) d[x] = mix.full(p[x], p[x + 1], q[x], q[x + 1]);
  }

 private:
  static constexpr unsigned one = 1U << bits;

  // The fraction may be negative far left of a source. Only right + left = one counts there, and the complement keeps
  // that whatever the 16 bits hold.
  static unsigned weight(Extended fraction) {
    const Extended scaled = fraction * one + 0.5L;
    return static_cast<Tev16u>(scaled == scaled ? static_cast<int>(scaled) : 0);
  }
  // The rounding term is half a unit with 15 bits, but a whole unit with 14: the four weights may add up to a little
  // more than one, and whole offsets leave a trace of the neighbours. Stored images depend on it.
  static Tev16u product(unsigned a, unsigned b) { return static_cast<Tev16u>((a * b + 16384) >> bits); }

  D full(S p00, S p01, S p10, S p11) const {
    return round(unsigned{w00_} * p00 + unsigned{w01_} * p01 + unsigned{w10_} * p10 + unsigned{w11_} * p11);
  }
  D round(unsigned sum) const {
    const unsigned value = (sum + half_) >> shift_;
    // Weights beyond one could carry the brightest 16-bit pixels past the range.
    if constexpr (std::is_same_v<S, Tev16u>)
      return static_cast<D>(std::min(value, 65535U));
    else
      return static_cast<D>(value);
  }

  unsigned right_, left_, below_, above_;
  Tev16u w00_, w01_, w10_, w11_;
  unsigned shift_, half_;
};

// A sum of four products of a pixel and at most two weights, every step rounded to double, is off by less than this
// part of the sum of the terms' magnitudes.
constexpr Tev64f unit = 0x1p-49;

template <class S>
class FloatMix {
 public:
  using Source = S;
  using Destination = Tev32f;

  FloatMix(Extended fractionX, Extended fractionY)
      : fx_(fractionX), fy_(fractionY), gx_(1 - fractionX), gy_(1 - fractionY), w01_(static_cast<Tev32f>(fx_ * gy_)) {}

  Tev32f flat(S p) const { return static_cast<Tev32f>(p * (fx_ + gx_)); }
  Tev32f vertical(S p, S q) const { return static_cast<Tev32f>(p * gy_ + q * fy_); }

  void horizontalRow(const S* p, Tev32f* d, int width) const {
    for (int x = 0; x < width; ++x) d[x] = static_cast<Tev32f>(p[x + 1] * fx_ + p[x] * gx_);
  }
  void fullRow(const S* p, const S* q, Tev32f* d, int width) const {
    const auto w00 = static_cast<Tev64f>(gx_ * gy_), w10 = static_cast<Tev64f>(gx_ * fy_),
               w11 = static_cast<Tev64f>(fx_ * fy_);
    const Tev64f w01 = w01_;
    storeGuarded(
        d, width,
        [=](int x) {
          const Tev64f a = p[x + 1] * w01, b = p[x] * w00, c = q[x] * w10, e = q[x + 1] * w11;
          return Guarded{a + b + c + e, unit * (std::fabs(a) + std::fabs(b) + std::fabs(c) + std::fabs(e))};
        },
        [=, this](int x) {
          return static_cast<Tev32f>(p[x + 1] * Extended{w01_} + p[x] * gx_ * gy_ + q[x] * gx_ * fy_ +
                                     q[x + 1] * fx_ * fy_);
        });
  }

 private:
  Extended fx_, fy_, gx_, gy_;
  Tev32f w01_;
};

// --- Regions at a fractional offset ---

template <class Mix>
void shift(const typename Mix::Source* src, int srcStep, typename Mix::Destination* dst, int dstStep, TevSize roi,
           const Mix& mix) {
  const auto s = rows(src, srcStep);
  const auto d = rows(dst, dstStep);
  for (int y = 0; y < roi.height; ++y) mix.fullRow(s[y], s[y + 1], d[y], roi.width);
}

// The left half of a pixel is the right half of the one before it, times gx / fx, and no fresh sum: the rounding of the
// results depends on it, and it is why fx has a lower bound.
template <class S>
void shiftFloat(const S* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi, Tev32f dx, Tev32f dy) {
  Extended fx = fractionOf(dx);
  if (fx < 1e-6) fx = 1e-6;
  const Extended fy = fractionOf(dy), gx = 1 - fx, gy = 1 - fy, ratio = gx / fx;
  const auto above = static_cast<Tev64f>(fx * gy), below = static_cast<Tev64f>(fx * fy),
             leftward = static_cast<Tev64f>(ratio);
  for (int y = 0; y < roi.height; ++y) {
    const S* const p = rows(src, srcStep)[y];
    const S* const q = rows(src, srcStep)[y + 1];
    Tev32f* const d = rows(dst, dstStep)[y];
    const auto right = [=](int x) { return p[x + 1] * fx * gy + q[x + 1] * fx * fy; };
    d[0] = static_cast<Tev32f>(p[0] * gx * gy + q[0] * gx * fy + right(0));
    storeGuarded(
        d + 1, roi.width - 1,
        [=](int x) {
          const Tev64f a = p[x + 1] * above * leftward, b = q[x + 1] * below * leftward, c = p[x + 2] * above,
                       e = q[x + 2] * below;
          return Guarded{a + b + c + e, unit * (std::fabs(a) + std::fabs(b) + std::fabs(c) + std::fabs(e))};
        },
        [=](int x) { return static_cast<Tev32f>(right(x) * ratio + right(x + 1)); });
  }
}

template <class S, class D>
TevStatus checkShift(const S* src, int srcStep, const D* dst, int dstStep, TevSize roi) {
  return firstFailure(notNull(src, dst), region(roi), rowFits<S>(srcStep, roi.width), rowFits<D>(dstStep, roi.width),
                      wholeElements<S>(srcStep), wholeElements<D>(dstStep));
}

template <class Mix, class... Scale>
TevStatus copyShifted(const typename Mix::Source* src, int srcStep, typename Mix::Destination* dst, int dstStep,
                      TevSize roi, Tev32f dx, Tev32f dy, Scale... scaleFactor) {
  if (TevStatus s = checkShift(src, srcStep, dst, dstStep, roi)) return s;
  shift(src, srcStep, dst, dstStep, roi, Mix(fractionOf(dx), fractionOf(dy), scaleFactor...));
  return tevStatusOk;
}

template <class S>
TevStatus copyShiftedFloat(const S* src, int srcStep, Tev32f* dst, int dstStep, TevSize roi, Tev32f dx, Tev32f dy) {
  if (TevStatus s = checkShift(src, srcStep, dst, dstStep, roi)) return s;
  shiftFloat(src, srcStep, dst, dstStep, roi, dx, dy);
  return tevStatusOk;
}

// --- Rectangles around a point ---

// One axis of a rectangle: where it starts in the source, the fraction there, and the destination's elements `first` to
// `last` whose two source elements both exist. last >= first - 1.
struct Span {
  int start;
  int first, last;
  Extended fraction;
};

Span spanAround(Tev32f center, int srcLength, int dstLength) {
  const Extended corner = center - (dstLength - 1) * Extended{0.5};
  const Extended end = dstLength + corner;
  // The truncation is a floor for every corner above -dstLength; below, all elements lie left of the source, and the
  // fraction plays no role. A centre beyond any image, or NaN, counts as far out on that side.
  constexpr std::int64_t far = std::int64_t{1} << 40;
  const bool inReach = end > -far && end < far;
  const std::int64_t x1 = inReach ? static_cast<std::int64_t>(end) : end >= far ? far : -far;
  const std::int64_t x0 = x1 - dstLength;
  if (x0 >= srcLength) return {srcLength - 1, 0, -1, inReach ? corner - x0 : 0};
  const std::int64_t first = std::min<std::int64_t>(std::max<std::int64_t>(-x0, 0), dstLength);
  const std::int64_t last = x1 - 1 > srcLength - 2 ? srcLength - x1 + dstLength - 2 : dstLength - 1;
  return {static_cast<int>(std::max<std::int64_t>(x0, 0)), static_cast<int>(first), static_cast<int>(last),
          inReach ? corner - x0 : 0};
}

// The part of the rectangle that lies inside the source.
template <class Mix>
void copyInside(const typename Mix::Source* src, int srcStep, typename Mix::Destination* dst, int dstStep,
                const Span& across, const Span& down, const Mix& mix) {
  const auto s = rows(src + across.start, srcStep);
  const auto d = rows(dst + across.first, dstStep);
  const int inside = across.last - across.first + 1, lines = down.last - down.first + 1;
  for (int y = 0; y < lines; ++y) mix.fullRow(s[down.start + y], s[down.start + y + 1], d[down.first + y], inside);
}

// The whole rectangle, in three bands of rows, each in three bands of columns. Above and below the source only x is
// interpolated, beside it only y, in the corners nothing.
template <class Mix>
void copyRectangle(const typename Mix::Source* src, int srcStep, typename Mix::Destination* dst, int dstStep,
                   TevSize dstRoi, const Span& across, const Span& down, const Mix& mix) {
  const int inside = across.last - across.first + 1;
  const auto s = rows(src, srcStep);
  const auto d = rows(dst, dstStep);
  // The last column of the inner band has its right neighbour at `lastX`.
  const int firstX = across.start, lastX = across.start + inside;

  const auto outerRow = [&](int y, int sourceY, int rightX) {
    const auto* const p = s[sourceY];
    auto* const out = d[y];
    std::fill(out, out + across.first, mix.flat(p[firstX]));
    mix.horizontalRow(p + firstX, out + across.first, inside);
    std::fill(out + across.last + 1, out + dstRoi.width, mix.flat(p[rightX]));
  };

  // Above, the columns right of the source take the pixel before the last one; beside and below they take the last one.
  // Callers depend on this difference of one column. A source one pixel wide has no such pixel.
  const int beforeLastX = std::max(lastX - 1, 0);
  for (int y = 0; y < down.first; ++y) outerRow(y, down.start, beforeLastX);

  for (int y = down.first; y <= down.last; ++y) {
    const auto* const p = s[down.start + y - down.first];
    const auto* const q = s[down.start + y - down.first + 1];
    auto* const out = d[y];
    std::fill(out, out + across.first, mix.vertical(p[firstX], q[firstX]));
    mix.fullRow(p + firstX, q + firstX, out + across.first, inside);
    std::fill(out + across.last + 1, out + dstRoi.width, mix.vertical(p[lastX], q[lastX]));
  }

  const int lastY = down.start + down.last - down.first + 1;
  for (int y = down.last + 1; y < dstRoi.height; ++y) outerRow(y, lastY, lastX);
}

template <class Mix, class... Scale>
TevStatus copyIntersection(const typename Mix::Source* src, int srcStep, TevSize srcRoi, typename Mix::Destination* dst,
                           int dstStep, TevSize dstRoi, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                           TevPoint* maxPoint, Scale... scaleFactor) {
  using S = typename Mix::Source;
  using D = typename Mix::Destination;
  if (TevStatus s = firstFailure(notNull(src, dst, minPoint, maxPoint), region(srcRoi), region(dstRoi),
                                 rowFits<S>(srcStep, srcRoi.width), rowFits<D>(dstStep, dstRoi.width),
                                 wholeElements<S>(srcStep), wholeElements<D>(dstStep)))
    return s;
  const Span across = spanAround(centerX, srcRoi.width, dstRoi.width);
  const Span down = spanAround(centerY, srcRoi.height, dstRoi.height);
  *minPoint = {across.first, down.first};
  *maxPoint = {across.last, down.last};
  copyRectangle(src, srcStep, dst, dstStep, dstRoi, across, down, Mix(across.fraction, down.fraction, scaleFactor...));
  return tevStatusOk;
}

template <class Mix, class... Scale>
TevStatus copyInner(const typename Mix::Source* src, int srcStep, TevSize srcRoi, typename Mix::Destination* dst,
                    int dstStep, TevSize dstRoi, Tev32f centerX, Tev32f centerY, TevPoint* minPoint, TevPoint* maxPoint,
                    Scale... scaleFactor) {
  const Span across = spanAround(centerX, srcRoi.width, dstRoi.width);
  const Span down = spanAround(centerY, srcRoi.height, dstRoi.height);
  *minPoint = {across.first, down.first};
  *maxPoint = {across.last, down.last};
  copyInside(src, srcStep, dst, dstStep, across, down, Mix(across.fraction, down.fraction, scaleFactor...));
  return tevStatusOk;
}

}  // namespace

const Tev32f own8u32fTab[256] = {
    0,   1,   2,   3,   4,   5,   6,   7,   8,   9,   10,  11,  12,  13,  14,  15,  16,  17,  18,  19,  20,  21,
    22,  23,  24,  25,  26,  27,  28,  29,  30,  31,  32,  33,  34,  35,  36,  37,  38,  39,  40,  41,  42,  43,
    44,  45,  46,  47,  48,  49,  50,  51,  52,  53,  54,  55,  56,  57,  58,  59,  60,  61,  62,  63,  64,  65,
    66,  67,  68,  69,  70,  71,  72,  73,  74,  75,  76,  77,  78,  79,  80,  81,  82,  83,  84,  85,  86,  87,
    88,  89,  90,  91,  92,  93,  94,  95,  96,  97,  98,  99,  100, 101, 102, 103, 104, 105, 106, 107, 108, 109,
    110, 111, 112, 113, 114, 115, 116, 117, 118, 119, 120, 121, 122, 123, 124, 125, 126, 127, 128, 129, 130, 131,
    132, 133, 134, 135, 136, 137, 138, 139, 140, 141, 142, 143, 144, 145, 146, 147, 148, 149, 150, 151, 152, 153,
    154, 155, 156, 157, 158, 159, 160, 161, 162, 163, 164, 165, 166, 167, 168, 169, 170, 171, 172, 173, 174, 175,
    176, 177, 178, 179, 180, 181, 182, 183, 184, 185, 186, 187, 188, 189, 190, 191, 192, 193, 194, 195, 196, 197,
    198, 199, 200, 201, 202, 203, 204, 205, 206, 207, 208, 209, 210, 211, 212, 213, 214, 215, 216, 217, 218, 219,
    220, 221, 222, 223, 224, 225, 226, 227, 228, 229, 230, 231, 232, 233, 234, 235, 236, 237, 238, 239, 240, 241,
    242, 243, 244, 245, 246, 247, 248, 249, 250, 251, 252, 253, 254, 255,
};

TevStatus teviCopySubpix_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize, Tev32f dx,
                                Tev32f dy) {
  return copyShifted<FixedMix<Tev8u, Tev8u, 14>>(src, srcStep, dst, dstStep, roiSize, dx, dy);
}

TevStatus teviCopySubpix_8u16u_C1R_Sfs(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                       Tev32f dx, Tev32f dy, int scaleFactor) {
  return copyShifted<FixedMix<Tev8u, Tev16u, 14>>(src, srcStep, dst, dstStep, roiSize, dx, dy, scaleFactor);
}

TevStatus teviCopySubpix_16u_C1R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize, Tev32f dx,
                                 Tev32f dy) {
  return copyShifted<FixedMix<Tev16u, Tev16u, 15>>(src, srcStep, dst, dstStep, roiSize, dx, dy);
}

TevStatus teviCopySubpix_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize, Tev32f dx,
                                   Tev32f dy) {
  return copyShiftedFloat(src, srcStep, dst, dstStep, roiSize, dx, dy);
}

TevStatus teviCopySubpix_16u32f_C1R(const Tev16u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                    Tev32f dx, Tev32f dy) {
  return copyShiftedFloat(src, srcStep, dst, dstStep, roiSize, dx, dy);
}

TevStatus teviCopySubpix_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize, Tev32f dx,
                                 Tev32f dy) {
  return copyShiftedFloat(src, srcStep, dst, dstStep, roiSize, dx, dy);
}

TevStatus teviCopySubpixIntersect_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst, int dstStep,
                                         TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                         TevPoint* maxPoint) {
  return copyIntersection<FixedMix<Tev8u, Tev8u, 14>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX,
                                                      centerY, minPoint, maxPoint);
}

TevStatus teviCopySubpixIntersect_8u16u_C1R_Sfs(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev16u* dst,
                                                int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                                TevPoint* minPoint, TevPoint* maxPoint, int scaleFactor) {
  return copyIntersection<FixedMix<Tev8u, Tev16u, 14>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX,
                                                       centerY, minPoint, maxPoint, scaleFactor);
}

TevStatus teviCopySubpixIntersect_16u_C1R(const Tev16u* src, int srcStep, TevSize srcRoiSize, Tev16u* dst, int dstStep,
                                          TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                          TevPoint* maxPoint) {
  return copyIntersection<FixedMix<Tev16u, Tev16u, 15>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX,
                                                        centerY, minPoint, maxPoint);
}

TevStatus teviCopySubpixIntersect_8u32f_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev32f* dst, int dstStep,
                                            TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                            TevPoint* maxPoint) {
  return copyIntersection<FloatMix<Tev8u>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX, centerY,
                                           minPoint, maxPoint);
}

TevStatus teviCopySubpixIntersect_16u32f_C1R(const Tev16u* src, int srcStep, TevSize srcRoiSize, Tev32f* dst,
                                             int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                             TevPoint* minPoint, TevPoint* maxPoint) {
  return copyIntersection<FloatMix<Tev16u>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX, centerY,
                                            minPoint, maxPoint);
}

TevStatus teviCopySubpixIntersect_32f_C1R(const Tev32f* src, int srcStep, TevSize srcRoiSize, Tev32f* dst, int dstStep,
                                          TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                          TevPoint* maxPoint) {
  return copyIntersection<FloatMix<Tev32f>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX, centerY,
                                            minPoint, maxPoint);
}

TevStatus ownGetRectSubpix_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst, int dstStep,
                                  TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                  TevPoint* maxPoint) {
  return copyInner<FixedMix<Tev8u, Tev8u, 15>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX, centerY,
                                               minPoint, maxPoint);
}

TevStatus ownGetRectSubpix_8u16u_C1R_Sfs(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev16u* dst, int dstStep,
                                         TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                         TevPoint* maxPoint, int scaleFactor) {
  return copyInner<FixedMix<Tev8u, Tev16u, 14>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX, centerY,
                                                minPoint, maxPoint, scaleFactor);
}

TevStatus ownGetRectSubpix_16u_C1R(const Tev16u* src, int srcStep, TevSize srcRoiSize, Tev16u* dst, int dstStep,
                                   TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                   TevPoint* maxPoint) {
  return copyInner<FixedMix<Tev16u, Tev16u, 15>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX, centerY,
                                                 minPoint, maxPoint);
}

TevStatus ownGetRectSubpix_16u32f_C1R(const Tev16u* src, int srcStep, TevSize srcRoiSize, Tev32f* dst, int dstStep,
                                      TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                      TevPoint* maxPoint) {
  return copyInner<FloatMix<Tev16u>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX, centerY, minPoint,
                                     maxPoint);
}

TevStatus ownGetRectSubpix_32f_C1R(const Tev32f* src, int srcStep, TevSize srcRoiSize, Tev32f* dst, int dstStep,
                                   TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                   TevPoint* maxPoint) {
  return copyInner<FloatMix<Tev32f>>(src, srcStep, srcRoiSize, dst, dstStep, dstRoiSize, centerX, centerY, minPoint,
                                     maxPoint);
}
