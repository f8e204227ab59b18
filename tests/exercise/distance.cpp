// Exercises of the distances: chamfer weights and transforms, the true distance, fast marching, inpainting.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "exercise/exercise.h"

namespace exercise {

namespace {

// A large region is wide enough for the widest gate (257 columns) and has `rows` rows at least.
TevSize regionOf(Exercise& e, int rows) {
  TevSize roi = e.size(1);
  if (e.large()) {
    roi.width += 60;
    roi.height += rows;
  }
  return roi;
}

// Few zero pixels, many, or none.
void thinOut(Exercise& e, Image<Tev8u> image) {
  if (!e.draw.oneIn(3)) return;
  const int period = e.draw.between(5, 200);
  for (int y = 0, i = 0; y < image.size.height; ++y)
    for (int x = 0; x < image.size.width; ++x, ++i) {
      Tev8u& at = image.data[std::ptrdiff_t{y} * image.step + x];
      at = static_cast<Tev8u>(i % period == period / 2 ? 0 : at | 1);
    }
}

// ---- Weights ----

template <class T>
void weights(Exercise& e, const char* name, TevStatus (*function)(int, int, T*)) {
  const int kernelSize = e.draw.anyOf({3, 5});
  const TevNorm norm = e.draw.anyOf<TevNorm>({tevNormInf, tevNormL1, tevNormL2});
  e.call(name, function, kernelSize, norm, e.outArray<T>(kernelSize == 3 ? 2 : 3));
}

void weights(Exercise& e, const char* name, TevStatus (*function)(int, Tev32f*)) {
  const int maskType = e.draw.anyOf({30, 31, 32, 50, 51, 52});
  e.call(name, function, maskType, e.outArray<Tev32f>(maskType < 50 ? 2 : 3));
}

// ---- Chamfer transforms ----

// The weights of a norm, or such as grow with the length of their moves (which the two threads' pass wants), or any
// positive ones, however little they make sense.
template <class T>
const T* metricsOf(Exercise& e, int size) {
  constexpr bool integers = std::is_same_v<T, Tev32s>;
  const int count = size == 3 ? 2 : 3;
  auto* const metrics = e.inArray<T>(count);
  T values[3]{};
  const auto weight = [&](int limit) {
    if constexpr (integers)
      return e.draw.between(1, limit);
    else
      return e.draw.real(0.01F, static_cast<float>(limit) / 4);
  };
  switch (e.draw.between(0, 4)) {
    case 0: {
      const TevNorm norm = e.draw.anyOf<TevNorm>({tevNormInf, tevNormL1, tevNormL2});
      if constexpr (integers)
        CALL(e, teviGetDistanceTransformMask_32s, size, norm, values);
      else
        CALL(e, teviGetDistanceTransformMask_32f, size, norm, values);
      break;
    }
    case 1:
    case 2:
      values[0] = weight(e.draw.oneIn(3) ? 300 : 12);
      values[1] = values[0] + weight(4);
      values[2] = std::max(2 * values[0], 2 * values[1] - values[1] / 2) + weight(2);
      break;
    case 3:
      for (T& value : values) value = weight(e.draw.oneIn(2) ? 12 : 400);
      break;
    default:
      for (T& value : values)
        if constexpr (integers)
          value = e.draw.between(1, INT32_MAX);
        else
          value = e.draw.anyOf({1e-40F, 1e-30F, 1e30F, 3e38F, std::numeric_limits<float>::infinity()});
      break;
  }
  std::memcpy(metrics, values, static_cast<std::size_t>(count) * sizeof(T));
  return metrics;
}

template <int mask, class T, class M>
void chamfer(Exercise& e, const char* name, TevStatus (*transform)(const Tev8u*, int, T*, int, TevSize, const M*)) {
  const TevSize roi = regionOf(e, 64);
  const auto src = e.in<Tev8u>(roi, 1, e.draw.oneIn(3) ? Values::any : Values::mask);
  thinOut(e, src);
  const auto dst = e.out<T>(roi);
  const M* const metrics = metricsOf<M>(e, mask);
  e.call(name, transform, src.data, src.step, dst.data, dst.step, roi, metrics);
}

template <int mask>
void chamfer(Exercise& e, const char* name, TevStatus (*transform)(Tev8u*, int, TevSize, const Tev32s*)) {
  const TevSize roi = regionOf(e, 64);
  const auto srcDst = e.inout<Tev8u>(roi, 1, e.draw.oneIn(3) ? Values::any : Values::mask);
  thinOut(e, srcDst);
  const Tev32s* const metrics = metricsOf<Tev32s>(e, mask);
  e.call(name, transform, srcDst.data, srcDst.step, roi, metrics);
}

// ---- True distance ----

// Shared from 256 columns and 256 rows for all threads together.
void trueDistance(Exercise& e, const char* queryName, TevStatus (*query)(TevSize, int*), const char* name,
                  TevStatus (*transform)(const Tev8u*, int, Tev32f*, int, TevSize, Tev8u*)) {
  const TevSize roi = regionOf(e, 128);
  const auto src = e.in<Tev8u>(roi, 1, Values::mask);
  thinOut(e, src);
  const auto dst = e.out<Tev32f>(roi);
  int size = 0;
  e.call(queryName, query, roi, &size);
  e.call(name, transform, src.data, src.step, dst.data, dst.step, roi, e.buffer(size));
}

void trueDistance(Exercise& e, const char* queryName, TevStatus (*query)(TevSize, int*), const char* name,
                  TevStatus (*transform)(const Tev8u*, int, Tev16u*, int, TevSize, int, Tev8u*)) {
  const TevSize roi = regionOf(e, 128);
  const auto src = e.in<Tev8u>(roi, 1, Values::mask);
  thinOut(e, src);
  const auto dst = e.out<Tev16u>(roi);
  const int scaleFactor =
      e.draw.oneIn(6) ? e.draw.anyOf({-100, -31, 16, 17, 40, INT32_MAX, INT32_MIN}) : e.draw.between(-10, 6);
  int size = 0;
  e.call(queryName, query, roi, &size);
  e.call(name, transform, src.data, src.step, dst.data, dst.step, roi, scaleFactor, e.buffer(size));
}

// ---- Fast marching ----

Tev32f bandOf(Exercise& e) {
  return e.draw.oneIn(3) ? 0 : e.draw.oneIn(8) ? e.draw.anyOf({1e-3F, 1e30F}) : e.draw.real(0, 12);
}

void march(Exercise& e, Image<Tev8u> mask, Image<Tev32f> distances, Tev32f radius) {
  int size = 0;
  CALL(e, teviFastMarchingGetBufferSize_8u32f_C1R, mask.size, &size);
  CALL(e, teviFastMarching_8u32f_C1R, mask.data, mask.step, distances.data, distances.step, mask.size, radius,
       e.buffer(size));
}

void fastMarching(Exercise& e) {
  const TevSize roi = e.size(6000, 1, e.draw.oneIn(4) ? 40 : 14);
  const auto src = e.in<Tev8u>(roi, 1, Values::mask);
  thinOut(e, src);
  march(e, src, e.out<Tev32f>(roi), bandOf(e));
}

// ---- Inpainting ----

template <int channels, auto release>
void inpaint(Exercise& e, const char* name,
             TevStatus (*fill)(const Tev8u*, int, Tev8u*, int, TevSize, TevInpaintState*), const char* initName,
             TevStatus (*init)(TevInpaintState**, const Tev32f*, int, const Tev8u*, int, TevSize, Tev32f, int),
             const char* freeName) {
  const TevSize roi = e.size(6000, 1, 16);
  const auto mask = e.in<Tev8u>(roi, 1, Values::mask);
  // Mostly a few spots and scratches.
  if (!e.draw.oneIn(4)) {
    const TevPoint first = {e.draw.between(0, roi.width - 1), e.draw.between(0, roi.height - 1)};
    const int reach = e.draw.between(0, 4);
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < roi.width; ++x) {
        Tev8u& at = mask.data[std::ptrdiff_t{y} * mask.step + x];
        const bool spot = std::abs(x % 40 - first.x % 40) + std::abs(y % 40 - first.y % 40) <= reach;
        const bool scratch = (x + y) % 37 == first.x % 37;
        at = static_cast<Tev8u>(spot || scratch ? at | 1 : 0);
      }
  }
  // The mask's distances; at times other numbers, which leave pixels out or take others in.
  const auto distances = e.inout<Tev32f>(roi);
  if (!e.draw.oneIn(6)) march(e, mask, distances, bandOf(e));
  const Tev32f radius = e.draw.oneIn(8) && !e.large() ? e.draw.real(1, 15) : e.draw.real(1, 4);
  const int flags = e.draw.anyOf<int>({tevInpaintGradient, tevInpaintIsophote});
  Resource<TevInpaintState, release> state;
  e.call(initName, init, &state.pointer, distances.data, distances.step, mask.data, mask.step, roi, radius, flags);
  const int images = e.draw.between(1, 2);
  for (int i = 0; i < images; ++i) {
    if (e.draw.oneIn(2)) {
      const auto image = e.inout<Tev8u>(roi, channels);
      e.call(name, fill, image.data, image.step, image.data, image.step, roi, state.pointer);
    } else {
      const auto src = e.in<Tev8u>(roi, channels);
      const auto dst = e.out<Tev8u>(roi, channels);
      e.call(name, fill, src.data, src.step, dst.data, dst.step, roi, state.pointer);
    }
  }
  e.call(freeName, release, state.pointer);
  state.pointer = nullptr;
}

}  // namespace

#define ENTRY(function, ...)                                             \
  {                                                                      \
#function, [](Exercise & e) { __VA_ARGS__(e, #function, function); } \
  }
#define TRUE_DISTANCE(query, function)                                                   \
  {                                                                                      \
#function, [](Exercise & e) { trueDistance(e, #query, query, #function, function); } \
  }
#define INPAINT(function, init, free, channels)                                                          \
  {                                                                                                      \
#function, [](Exercise & e) { inpaint<channels, free>(e, #function, function, #init, init, #free); } \
  }

std::vector<Entry> distance() {
  return {
      ENTRY(teviGetDistanceTransformMask_32s, weights),
      ENTRY(teviGetDistanceTransformMask_32f, weights),
      ENTRY(teviGetDistanceTransformMask, weights),

      ENTRY(teviDistanceTransform_3x3_8u_C1R, chamfer<3>),
      ENTRY(teviDistanceTransform_5x5_8u_C1R, chamfer<5>),
      ENTRY(teviDistanceTransform_3x3_8u_C1IR, chamfer<3>),
      ENTRY(teviDistanceTransform_5x5_8u_C1IR, chamfer<5>),
      ENTRY(teviDistanceTransform_3x3_8u16u_C1R, chamfer<3>),
      ENTRY(teviDistanceTransform_5x5_8u16u_C1R, chamfer<5>),
      ENTRY(teviDistanceTransform_3x3_8u32f_C1R, chamfer<3>),
      ENTRY(teviDistanceTransform_5x5_8u32f_C1R, chamfer<5>),

      TRUE_DISTANCE(teviTrueDistanceTransformGetBufferSize_8u32f_C1R, teviTrueDistanceTransform_8u32f_C1R),
      TRUE_DISTANCE(teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs, teviTrueDistanceTransform_8u16u_C1RSfs),

      {"teviFastMarching_8u32f_C1R", fastMarching},

      INPAINT(teviInpaint_8u_C1R, teviInpaintInitAlloc_8u_C1R, teviInpaintFree_8u_C1R, 1),
      INPAINT(teviInpaint_8u_C3R, teviInpaintInitAlloc_8u_C3R, teviInpaintFree_8u_C3R, 3),
  };
}

}  // namespace exercise
