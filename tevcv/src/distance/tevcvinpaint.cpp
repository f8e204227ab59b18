// Inpainting in the order of distance: each pixel of a mask is a weighted mean of the known pixels around it, and known
// to the next ones once it is filled.
//
// A state holds all that depends on the mask, its distances and the radius: the part of the region that can matter (the
// crop), a table of the neighbourhood with weights and the distance from the centre in each image's elements, and the
// order of filling. The order is one array of doubles to sort: floats as doubles leave their low 28 bits free, and
// there stands the pixel's index.
//
// A call takes gradients of the image around the mask, corrected so that no unknown pixel is looked at, and fills pixel
// by pixel. Sums run in extended precision by definition. They are taken in double first: where that leaves no doubt
// about the pixel's value, the definition has the same.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "tevcv/distance.h"
#include "tevcv/memory.h"
#include "tevcv/morphology.h"
#include "tevcv/primitives.h"
#include "tevcv_internal/distance.h"

using namespace tevcv;

namespace {

// --- Building a state -----------------------------------------------------------------------------------------------

constexpr Tev8u cross[] = {0, 1, 0, 1, 1, 1, 0, 1, 0};
constexpr TevSize crossSize = {3, 3};

// From this radius on the square that it spans has more bytes than a block can have.
constexpr Tev32f radiusLimit = 23170;

// From this side on a square is treated as an element of any shape, and its state holds images of its size.
constexpr int generalSide = 256;

constexpr std::int64_t roundUp(std::int64_t n, int boundary) { return (n + (boundary - 1)) & -std::int64_t{boundary}; }

// Scratch that goes back when it is left.
class Scratch {
 public:
  explicit Scratch(int size) : block_(tevsMalloc_8u(size)) {}
  ~Scratch() { tevsFree(block_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  Tev8u* data() const { return block_; }

 private:
  Tev8u* block_;
};

// The box of the mask with a margin, as far as it lies in the region.
TevRect cropAround(TevRect box, int reach, TevSize roi) {
  const std::int64_t margin = std::int64_t{reach} + 1;
  const auto left = std::max<std::int64_t>(box.x - margin, 0), top = std::max<std::int64_t>(box.y - margin, 0);
  const auto right = std::min<std::int64_t>(box.x + box.width + margin, roi.width),
             bottom = std::min<std::int64_t>(box.y + box.height + margin, roi.height);
  return {static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
          static_cast<int>(bottom - top)};
}

// The offsets within the radius, centre left out, in raster order, and their number.
int fillOffsets(TevInpaintOffset* offsets, const TevInpaintState& s, int reach) {
  int count = 0;
  for (int dy = -reach; dy <= reach; ++dy)
    for (int dx = -reach; dx <= reach; ++dx) {
      const Extended squared = dx * dx + dy * dy;
      if (squared > Extended{s.radius} * s.radius || (dx == 0 && dy == 0)) continue;
      const Extended weight = s.flags == tevInpaintGradient ? 1 / (squared * std::sqrt(squared))
                                                            : 1 / (std::sqrt(squared) * (squared * squared + 1));
      offsets[count++] = {-dx,
                          -dy,
                          static_cast<Tev32f>(weight),
                          dy * s.maskStride + dx,
                          dy * (s.distStride / 4) + dx,
                          dx * 2 * s.channels + dy * (s.gradStride / 2),
                          0};
    }
  return count;
}

// An empty mask: nothing but a header. The region is kept for its check.
TevStatus allocateEmpty(TevInpaintState** state, TevSize roi, Tev32f radius, int flags, int channels) {
  auto* const s = reinterpret_cast<TevInpaintState*>(tevsMalloc_8u(sizeof(TevInpaintState)));
  if (s == nullptr) return tevStatusNoMemory;
  *s = {};
  s->width = roi.width;
  s->height = roi.height;
  s->channels = channels;
  s->flags = flags;
  s->radius = radius;
  *state = s;
  return tevStatusOk;
}

// --- Filling one pixel ----------------------------------------------------------------------------------------------

// Below this sum of weights the four neighbours decide.
constexpr Extended leastWeight = 0.0001L;
// What keeps the mean of nothing defined, a gradient of nothing, and the weight of a neighbour across the direction.
constexpr Extended tinyWeight = 1e-30L, tinyGradient = 1e-20L, tinyDirection = 2.5e-25L, tinyAcross = 1e-6L;
// One step of a distance gradient.
constexpr Extended gradientStep = 0x1p-12L;

// The crop of a caller's image and of the state's, for the length of a call.
template <int channels>
struct Crop {
  const TevInpaintState& state;
  Tev8u* image;
  int step;
  int reach;  // whole pixels that the window extends from its centre

  bool isWhole(int x, int y) const {
    return x >= reach && y >= reach && x < state.cropWidth - reach && y < state.cropHeight - reach;
  }
};

// Addresses of one pixel in each image.
struct Place {
  const Tev8u* value;
  const Tev8u* unknown;
  const Tev32f* distance;
  const Tev16s* gradient;
};

template <int channels>
Place placeOf(const Crop<channels>& c, int x, int y) {
  const TevInpaintState& s = c.state;
  return {rows(c.image, c.step)[y] + x * channels, rows(s.workMask, s.maskStride)[y] + x,
          rows(s.distance, s.distStride)[y] + x, rows(s.imageGradient, s.gradStride)[y] + 2 * x * channels};
}

// What a neighbour's distance from the centre makes of its weight: as the table has it, or worked out on the spot.
template <class Real>
struct TableWeight {
  Tev32f value;
  Real gradient() const { return value; }
  Real isophote(Real across, Real magnitude) const {
    return Real{value} * (across != 0 ? across / magnitude : Real{tinyAcross});
  }
};
template <class Real>
struct ClippedWeight {
  Real squared;
  Real gradient() const { return 1 / (squared * std::sqrt(squared)); }
  Real isophote(Real across, Real magnitude) const {
    const Real falloff = 1 / (squared * squared + 1);
    return across != 0 ? across / (std::sqrt(squared) * magnitude) * falloff : Real{tinyAcross} * falloff;
  }
};

// Calls visit(place, -dx, -dy, weight) for each known neighbour. A window that lies in the crop goes by the table; at
// the crop's edge the whole part of the radius alone counts.
template <class Real, int channels, class Visit>
void forEachKnown(const Crop<channels>& c, int x, int y, Visit visit) {
  const TevInpaintState& s = c.state;
  const Place p = placeOf(c, x, y);
  if (c.isWhole(x, y)) {
    const TevInpaintOffset* const end = s.offsets + s.numOffsets;
    for (const TevInpaintOffset* o = s.offsets; o != end; ++o)
      if (p.unknown[o->inMask] == 0)
        visit(Place{p.value + o->inImage, nullptr, p.distance + o->inDistance, p.gradient + o->inGradient}, o->minusDx,
              o->minusDy, TableWeight<Real>{o->weight});
    return;
  }
  for (int ny = std::max(y - c.reach, 0); ny <= std::min(y + c.reach, s.cropHeight - 1); ++ny)
    for (int nx = std::max(x - c.reach, 0); nx <= std::min(x + c.reach, s.cropWidth - 1); ++nx) {
      const int dx = nx - x, dy = ny - y, squared = dx * dx + dy * dy;
      if (squared > c.reach * c.reach || squared == 0) continue;
      const Place n = placeOf(c, nx, ny);
      if (*n.unknown == 0) visit(n, -dx, -dy, ClippedWeight<Real>{static_cast<Real>(squared)});
    }
}

// The sums of one channel. `spread` bounds what cancels in gx and gy.
template <class Real>
struct Sums {
  Real weight = tinyWeight;
  Real value = 0;
  Real gx = 0;
  Real gy = 0;
  Real spread = 0;
  int terms = 0;
};

// Too little weight: the known ones of the four neighbours, which in a whole window replace all that was summed.
template <class Real, int channels>
void averageNeighbours(const Crop<channels>& c, int x, int y, int channel, Sums<Real>& sums) {
  const TevInpaintState& s = c.state;
  int known = 0, value = 0;
  const auto add = [&](int nx, int ny) {
    if (nx < 0 || ny < 0 || nx >= s.cropWidth || ny >= s.cropHeight) return;
    const Place n = placeOf(c, nx, ny);
    known += *n.unknown == 0;
    value += n.value[channel] & ~*n.unknown;
  };
  add(x, y - 1);
  add(x - 1, y);
  add(x + 1, y);
  add(x, y + 1);
  if (c.isWhole(x, y)) {
    sums.value = 255 * value;
    sums.weight += 255 * known;
    sums.gx = sums.gy = sums.spread = 0;
  } else {
    sums.value += value;
    sums.weight += known;
  }
}

template <class Real>
Tev8u toByte(Real v) {
  return static_cast<Tev8u>(!(v >= 1) ? 0 : v >= 255 ? 255 : static_cast<int>(v));
}

// Sums over all known neighbours, by method.
template <class Real, int channels>
void sumByGradient(const Crop<channels>& c, int x, int y, Sums<Real> (&sums)[channels]) {
  const TevInpaintState& s = c.state;
  const Tev16s* const towards = rows(s.distanceGradient, s.distGradStride)[y] + 2 * x;
  const Real distance = rows(s.distance, s.distStride)[y][x];
  forEachKnown<Real>(c, x, y, [&](const Place& n, int minusDx, int minusDy, auto weight) {
    const int along = towards[0] * minusDx + towards[1] * minusDy;
    const Real direction = along != 0 ? static_cast<Real>(along) : Real{tinyDirection};
    const Real level = Real{gradientStep} / (std::fabs(*n.distance - distance) + 1);
    const Real a = std::fabs(direction * level * weight.gradient());
    for (int channel = 0; channel < channels; ++channel) {
      const int gx = n.gradient[2 * channel], gy = n.gradient[2 * channel + 1];
      Sums<Real>& sum = sums[channel];
      sum.value += a * n.value[channel];
      sum.weight += a;
      // Each factor by itself: in a symmetric surrounding all terms cancel, and what rounding leaves gives the sign.
      sum.gx -= a * gx * minusDx;
      sum.gy -= a * gy * minusDy;
      sum.spread += a * (std::abs(gx * minusDx) + std::abs(gy * minusDy));
      ++sum.terms;
    }
  });
}

template <class Real, int channels>
void sumByIsophote(const Crop<channels>& c, int x, int y, Sums<Real> (&sums)[channels]) {
  forEachKnown<Real>(c, x, y, [&](const Place& n, int minusDx, int minusDy, auto weight) {
    for (int channel = 0; channel < channels; ++channel) {
      const int gx = n.gradient[2 * channel], gy = n.gradient[2 * channel + 1];
      const Real across = std::abs(minusDy * gx - minusDx * gy);
      const Real w = weight.isophote(across, std::sqrt(static_cast<Real>(gx * gx + gy * gy)));
      Sums<Real>& sum = sums[channel];
      sum.value += w * n.value[channel];
      sum.weight += w;
      ++sum.terms;
    }
  });
}

// Computes a pixel of all channels. In double the result tells whether all are certain: no rounding in any step, added
// up with as much again to spare, could make another byte of them.
template <class Real, int channels, int method>
bool fillPixel(const Crop<channels>& c, int x, int y, Tev8u (&result)[channels]) {
  constexpr bool guarded = std::is_same_v<Real, Tev64f>;
  Sums<Real> sums[channels];
  if constexpr (method == tevInpaintGradient)
    sumByGradient(c, x, y, sums);
  else
    sumByIsophote(c, x, y, sums);
  for (int channel = 0; channel < channels; ++channel) {
    Sums<Real>& sum = sums[channel];
    const Real relative = (sum.terms + 16) * Real{0x1p-51};
    if (guarded && std::fabs(sum.weight - Real{leastWeight}) <= Real{leastWeight} * relative) return false;
    if (sum.weight < Real{leastWeight}) averageNeighbours(c, x, y, channel, sum);
    Real v = sum.value / sum.weight + Real{0.5}, margin = v * relative;
    if (method == tevInpaintGradient) {
      const Real length = std::sqrt(sum.gx * sum.gx + sum.gy * sum.gy) + Real{tinyGradient};
      v += (sum.gx + sum.gy) / length;
      margin += relative + (sum.spread > 0 ? 8 * sum.spread * relative / length : Real{0});
    }
    result[channel] = toByte(v);
    if (guarded && !(toByte(v - margin) == result[channel] && toByte(v + margin) == result[channel])) return false;
  }
  return true;
}

// --- Filling an image -----------------------------------------------------------------------------------------------

// The gradient workers of one channel count and method.
template <int channels, int method>
struct Gradients;
template <>
struct Gradients<1, tevInpaintGradient> {
  static constexpr auto& all = owncvGradient_8u16s_C1MR;
  static constexpr auto& known = owncvModGradient_8u16s_C1MR;
  static constexpr auto& point = owncvModGradientPoint_8u16s_C1MR;
};
template <>
struct Gradients<3, tevInpaintGradient> {
  static constexpr auto& all = owncvGradient_8u16s_C3MR;
  static constexpr auto& known = owncvModGradient_8u16s_C3MR;
  static constexpr auto& point = owncvModGradientPoint_8u16s_C3MR;
};
template <>
struct Gradients<1, tevInpaintIsophote> {
  static constexpr auto& all = owncvAbsGradient_8u16s_C1MR;
  static constexpr auto& known = owncvModAbsGradient_8u16s_C1MR;
  static constexpr auto& point = owncvModAbsGradientPoint_8u16s_C1MR;
};
template <>
struct Gradients<3, tevInpaintIsophote> {
  static constexpr auto& all = owncvAbsGradient_8u16s_C3MR;
  static constexpr auto& known = owncvModAbsGradient_8u16s_C3MR;
  static constexpr auto& point = owncvModAbsGradientPoint_8u16s_C3MR;
};

// The mask grown by an element, without the mask itself.
void bandAround(const TevInpaintState& s, TevMorphState* element) {
  teviDilateBorderReplicate_8u_C1R(s.mask, s.maskStride, s.workMask, s.maskStride, s.crop, tevBorderRepl, element);
  teviSub_8u_C1IRSfs(s.mask, s.maskStride, s.workMask, s.maskStride, s.crop, 0);
}

template <class T>
void clear(T* image, int stride, int height) {
  std::memset(image, 0, static_cast<std::size_t>(stride) * static_cast<std::size_t>(height));
}

template <int channels, int method>
void inpaint(const TevInpaintState& s, Tev8u* dst, int dstStep) {
  using Gradient = Gradients<channels, method>;
  const Crop<channels> c = {s, rows(dst, dstStep)[s.cropY] + s.cropX * channels, dstStep, static_cast<int>(s.radius)};
  for (TevInpaintOffset* o = s.offsets; o != s.offsets + s.numOffsets; ++o)
    o->inImage = wrapAdd(wrapMul(-o->minusDy, dstStep), -o->minusDx * channels);

  clear(s.imageGradient, s.gradStride, s.cropHeight);
  bandAround(s, s.dilateWide);
  Gradient::all(c.image, c.step, s.workMask, s.maskStride, s.imageGradient, s.gradStride, s.cropWidth, s.cropHeight);
  bandAround(s, s.dilateCross);
  Gradient::known(c.image, c.step, s.workMask, s.maskStride, s.mask, s.maskStride, s.imageGradient, s.gradStride,
                  s.cropWidth, s.cropHeight);
  if (method == tevInpaintGradient) {
    clear(s.distanceGradient, s.distGradStride, s.cropHeight);
    owncvGradient_32f16s_C1MR_Sfs(s.distance, s.distStride, s.mask, s.maskStride, s.distanceGradient, s.distGradStride,
                                  s.cropWidth, s.cropHeight, -12);
  }

  teviCopy_8u_C1R(s.mask, s.maskStride, s.workMask, s.maskStride, s.crop);
  for (int i = 0; i < s.count; ++i) {
    const auto index = static_cast<int>(std::bit_cast<std::uint64_t>(s.order[i]) & 0xFFFFFFF);
    const int x = index % s.cropWidth, y = index / s.cropWidth;
    Tev8u filled[channels];
    if (!fillPixel<Tev64f, channels, method>(c, x, y, filled)) fillPixel<Extended, channels, method>(c, x, y, filled);
    std::copy_n(filled, channels, rows(c.image, c.step)[y] + x * channels);
    rows(s.workMask, s.maskStride)[y][x] = 0;
    // The neighbours that are still unknown get a gradient too, from what stands in the hole; where all around is known
    // by the time they are filled, it stays. Stored results depend on that.
    Gradient::point(c.image, c.step, s.workMask, s.maskStride, s.imageGradient, s.gradStride, s.cropWidth, s.cropHeight,
                    x, y);
  }
}

template <int channels>
TevStatus inpaint(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roi, TevInpaintState* state) {
  if (TevStatus s = firstFailure(notNull(src, dst, state), region(roi))) return s;
  if (TevStatus s =
          firstFailure(failUnless(roi.width == state->width && roi.height == state->height, tevStatusBadSize),
                       rowFits<Tev8u>(srcStep, roi.width, channels), rowFits<Tev8u>(dstStep, roi.width, channels)))
    return s;
  if (channels == 1)
    teviCopy_8u_C1R(src, srcStep, dst, dstStep, roi);
  else
    teviCopy_8u_C3R(src, srcStep, dst, dstStep, roi);
  if (state->count == 0) return tevStatusOk;
  if (state->flags == tevInpaintGradient)
    inpaint<channels, tevInpaintGradient>(*state, dst, dstStep);
  else
    inpaint<channels, tevInpaintIsophote>(*state, dst, dstStep);
  return tevStatusOk;
}

TevStatus freeState(TevInpaintState* state) {
  if (state == nullptr) return tevStatusNullPtr;
  tevsFree(state);
  return tevStatusOk;
}

}  // namespace

TevStatus ownInpaintInitAlloc_8u(TevInpaintState** state, const Tev32f* distances, int distStep, const Tev8u* mask,
                                 int maskStep, TevSize roiSize, Tev32f radius, int flags, int channels) {
  if (TevStatus s = firstFailure(
          notNull(mask, distances, state), region(roiSize), rowFits<Tev8u>(maskStep, roiSize.width),
          rowFits<Tev32f>(distStep, roiSize.width), wholeElements<Tev32f>(distStep),
          failUnless((flags == tevInpaintGradient || flags == tevInpaintIsophote) && radius >= 1, tevStatusBadArg)))
    return s;

  int count;
  TevRect box;
  owncvNoZero_8u(mask, maskStep, roiSize.width, roiSize.height, &count, &box);
  if (count == 0) return allocateEmpty(state, roiSize, radius, flags, channels);
  if (radius >= radiusLimit) return tevStatusNoMemory;
  const int reach = static_cast<int>(radius), side = static_cast<int>(2 * Extended{radius} + 1);
  const TevRect crop = cropAround(box, reach, roiSize);
  if (side >= generalSide &&
      std::int64_t{side} * (2 * (std::int64_t{crop.width} + side + 16) + side) > std::numeric_limits<int>::max() - 128)
    return tevStatusNoMemory;

  const TevSize squareSize = {side, side};
  const Scratch square(side * side);
  if (square.data() == nullptr) return tevStatusNoMemory;
  std::memset(square.data(), 1, static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
  int wideSize = 0, crossBytes = 0;
  if (TevStatus s = firstFailure(teviMorphologyGetSize_8u_C1R(crop.width, square.data(), squareSize, &wideSize),
                                 teviMorphologyGetSize_8u_C1R(crop.width, cross, crossSize, &crossBytes)))
    return s;

  // The block's areas in order; each is a multiple of 64 bytes, and the last 64 move them to a boundary.
  const std::int64_t maskStride = roundUp(crop.width, 64), distStride = roundUp(std::int64_t{crop.width} * 4, 64),
                     gradStride = roundUp(std::int64_t{crop.width} * 4 * channels, 64),
                     distGradStride = flags == tevInpaintGradient ? distStride : 0;
  const std::int64_t headBytes =
      roundUp(roundUp(wideSize, 16) + roundUp(crossBytes, 16) + static_cast<std::int64_t>(sizeof(TevInpaintState)), 64);
  const std::int64_t span = 2 * reach;
  const std::int64_t tableBytes =
      (span * (span * std::int64_t{sizeof(TevInpaintOffset)} + 56) + 91) & ~std::int64_t{63};
  const std::int64_t listBytes = roundUp(std::int64_t{count} * 8, 64);
  const std::int64_t rowBytes = 2 * maskStride + distStride + gradStride + distGradStride;
  const std::int64_t total = headBytes + tableBytes + listBytes + rowBytes * crop.height + 64;
  constexpr int allocatorOverhead = 64;
  if (total > std::numeric_limits<int>::max() - allocatorOverhead) return tevStatusNoMemory;
  Tev8u* const block = tevsMalloc_8u(static_cast<int>(total));
  if (block == nullptr) return tevStatusNoMemory;

  auto& s = *reinterpret_cast<TevInpaintState*>(block);
  s = {};
  Tev8u* next = block + roundUp(sizeof(TevInpaintState), 16);
  s.dilateWide = reinterpret_cast<TevMorphState*>(next);
  next += roundUp(wideSize, 16);
  s.dilateCross = reinterpret_cast<TevMorphState*>(next);
  next = block + headBytes;
  next += -reinterpret_cast<std::uintptr_t>(next) & 63;
  const auto take = [&next](std::int64_t bytes) {
    Tev8u* const area = next;
    next += bytes;
    return area;
  };
  s.offsets = reinterpret_cast<TevInpaintOffset*>(take(tableBytes));
  s.order = reinterpret_cast<Tev64f*>(take(listBytes));
  s.mask = take(maskStride * crop.height);
  s.workMask = take(maskStride * crop.height);
  s.distance = reinterpret_cast<Tev32f*>(take(distStride * crop.height));
  s.imageGradient = reinterpret_cast<Tev16s*>(take(gradStride * crop.height));
  if (flags == tevInpaintGradient) s.distanceGradient = reinterpret_cast<Tev16s*>(take(distGradStride * crop.height));
  s.width = roiSize.width;
  s.height = roiSize.height;
  s.crop = {crop.width, crop.height};
  s.cropX = crop.x;
  s.cropY = crop.y;
  s.cropWidth = crop.width;
  s.cropHeight = crop.height;
  s.channels = channels;
  s.flags = flags;
  s.radius = radius;
  s.maskStride = static_cast<int>(maskStride);
  s.distStride = static_cast<int>(distStride);
  s.gradStride = static_cast<int>(gradStride);
  s.distGradStride = static_cast<int>(distGradStride);

  const TevPoint centre = {reach, reach}, crossCentre = {1, 1};
  TevStatus status =
      firstFailure(teviMorphologyInit_8u_C1R(crop.width, square.data(), squareSize, centre, s.dilateWide),
                   teviMorphologyInit_8u_C1R(crop.width, cross, crossSize, crossCentre, s.dilateCross));
  teviThreshold_GTVal_8u_C1R(rows(mask, maskStep)[crop.y] + crop.x, maskStep, s.mask, s.maskStride, s.crop, 0, 255);
  teviCopy_32f_C1R(rows(distances, distStep)[crop.y] + crop.x, distStep, s.distance, s.distStride, s.crop);
  s.numOffsets = fillOffsets(s.offsets, s, reach);
  // Masked pixels without a distance are not listed, and stay as they are.
  s.count = owncvFillNoZero_32f(s.distance, s.distStride, crop.width, crop.height, s.order, count);
  if (status == tevStatusOk && s.count > 0) status = tevsSortAscend_64f_I(s.order, s.count);
  if (status != tevStatusOk) {
    tevsFree(block);
    return status;
  }
  *state = &s;
  return tevStatusOk;
}

TevStatus teviInpaintInitAlloc_8u_C1R(TevInpaintState** state, const Tev32f* distances, int distStep, const Tev8u* mask,
                                      int maskStep, TevSize roiSize, Tev32f radius, int flags) {
  return ownInpaintInitAlloc_8u(state, distances, distStep, mask, maskStep, roiSize, radius, flags, 1);
}

TevStatus teviInpaintInitAlloc_8u_C3R(TevInpaintState** state, const Tev32f* distances, int distStep, const Tev8u* mask,
                                      int maskStep, TevSize roiSize, Tev32f radius, int flags) {
  return ownInpaintInitAlloc_8u(state, distances, distStep, mask, maskStep, roiSize, radius, flags, 3);
}

TevStatus teviInpaint_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                             TevInpaintState* state) {
  return inpaint<1>(src, srcStep, dst, dstStep, roiSize, state);
}

TevStatus teviInpaint_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                             TevInpaintState* state) {
  return inpaint<3>(src, srcStep, dst, dstStep, roiSize, state);
}

TevStatus teviInpaintFree_8u_C1R(TevInpaintState* state) { return freeState(state); }

TevStatus teviInpaintFree_8u_C3R(TevInpaintState* state) { return freeState(state); }
