// Exercises of the segmentation: flood fill, watershed, gradient segmentation, labelling and bounds.
#include <algorithm>
#include <cstring>

#include "exercise/exercise.h"

namespace exercise {

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

TevPoint pointIn(Exercise& e, TevSize size) {
  return {e.draw.between(0, size.width - 1), e.draw.between(0, size.height - 1)};
}

// ---- Flood fill ----

// How a pixel joins: what the call needs follows from it.
enum class Rule { equal, range, gradient };

// An image with areas to fill, and where and with what.
template <class T, int channels, Rule rule>
struct Fill {
  explicit Fill(Exercise& e)
      : roi(e.size(1)),
        image(e.inout<T>(roi, channels, e.draw.anyOf({Values::labels, Values::labels, Values::mask, Values::any}))),
        step(image.step),
        seed(pointIn(e, roi)) {
    if constexpr (std::is_same_v<T, Tev32f>) {
      // Rows advance by whole floats: what is left over of a step counts in the check of its parity alone.
      if (rule != Rule::gradient && e.draw.oneIn(6)) step += 2;
    } else {
      // The step is held against one byte a pixel: rows of three channels may share memory.
      if (channels == 3 && e.draw.oneIn(16)) step = e.draw.between(roi.width, 3 * roi.width);
    }
    if (e.draw.oneIn(3)) scatter(Draw(e.draw.seed()));
    newValue = values(e, 9);
    lowerDiff = values(e, 2);
    upperDiff = values(e, 2);
    // A new value inside the range, most likely: pixels that were filled would join again.
    if (rule == Rule::range && e.draw.oneIn(4)) {
      const int rowStep = std::is_same_v<T, Tev32f> ? step - step % int{sizeof(T)} : step;
      std::memcpy(newValue,
                  reinterpret_cast<const char*>(image.data) + std::ptrdiff_t{seed.y} * rowStep +
                      std::ptrdiff_t{seed.x} * channels * int{sizeof(T)},
                  channels * sizeof(T));
      T first;
      std::memcpy(&first, newValue, sizeof first);
      first = static_cast<T>(first + T{1});
      std::memcpy(newValue, &first, sizeof first);
    }
    int size = 0;
    if (rule == Rule::gradient)
      CALL(e, teviFloodFillGetSize_Grad, roi, &size);
    else
      CALL(e, teviFloodFillGetSize, roi, &size);
    region = e.outValue<TevConnectedRegion>();
    buffer = e.buffer(size);
  }

  // Two values, thin walls and winding areas.
  void scatter(Draw noise) {
    for (int y = 0; y < roi.height; ++y)
      for (int x = 0; x < roi.width; ++x) {
        T pixel[channels];
        for (T& value : pixel) value = static_cast<T>(1);
        if (noise.oneIn(3)) pixel[channels - 1] = static_cast<T>(6);
        std::memcpy(reinterpret_cast<char*>(image.data) + std::ptrdiff_t{y} * image.step + x * int{sizeof pixel}, pixel,
                    sizeof pixel);
      }
  }

  // Mostly small numbers; differences of a floating range must not be negative.
  static T* values(Exercise& e, int limit) {
    T* const made = e.inArray<T>(channels);
    for (int c = 0; c < channels; ++c) {
      T value = static_cast<T>(e.draw.between(0, limit));
      if constexpr (std::is_same_v<T, Tev32f>) {
        if (e.draw.oneIn(3)) value = e.draw.real(0, 4);
        if (e.draw.oneIn(12)) value = std::numeric_limits<T>::infinity();
        if ((rule != Rule::gradient || limit > 2) && e.draw.oneIn(12)) value = e.draw.anyOf({notANumber, -1.0F, -0.0F});
      } else {
        if (e.draw.oneIn(3)) value = static_cast<T>(e.draw.between(0, 255));
      }
      std::memcpy(made + c, &value, sizeof value);
    }
    return made;
  }

  TevSize roi;
  Image<T> image;
  int step;
  TevPoint seed;
  T *newValue, *lowerDiff, *upperDiff;
  TevConnectedRegion* region;
  Tev8u* buffer;
};

template <class T>
T at(const T* pointer) {
  T value;
  std::memcpy(&value, pointer, sizeof value);
  return value;
}

template <Rule rule, class T>
void fill(Exercise& e, const char* name,
          TevStatus (*function)(T*, int, TevSize, TevPoint, T, TevConnectedRegion*, Tev8u*)) {
  const Fill<T, 1, rule> f(e);
  e.call(name, function, f.image.data, f.step, f.roi, f.seed, at(f.newValue), f.region, f.buffer);
}

template <Rule rule, class T>
void fill(Exercise& e, const char* name,
          TevStatus (*function)(T*, int, TevSize, TevPoint, const T*, TevConnectedRegion*, Tev8u*)) {
  const Fill<T, 3, rule> f(e);
  e.call(name, function, f.image.data, f.step, f.roi, f.seed, f.newValue, f.region, f.buffer);
}

template <Rule rule, class T>
void fill(Exercise& e, const char* name,
          TevStatus (*function)(T*, int, TevSize, TevPoint, T, T, T, TevConnectedRegion*, Tev8u*)) {
  const Fill<T, 1, rule> f(e);
  e.call(name, function, f.image.data, f.step, f.roi, f.seed, at(f.newValue), at(f.lowerDiff), at(f.upperDiff),
         f.region, f.buffer);
}

template <Rule rule, class T>
void fill(Exercise& e, const char* name,
          TevStatus (*function)(T*, int, TevSize, TevPoint, const T*, const T*, const T*, TevConnectedRegion*,
                                Tev8u*)) {
  const Fill<T, 3, rule> f(e);
  e.call(name, function, f.image.data, f.step, f.roi, f.seed, f.newValue, f.lowerDiff, f.upperDiff, f.region, f.buffer);
}

// This member alone does not test the pointers to its values.
void fillUntested(Exercise& e) {
  const Fill<Tev8u, 3, Rule::gradient> f(e);
  CALL(e, teviFloodFill_Grad8Con_8u_C3IR, f.image.data, f.step, f.roi, f.seed, keep(f.newValue), keep(f.lowerDiff),
       keep(f.upperDiff), f.region, f.buffer);
}

// ---- Watershed and gradient segmentation ----

// Springs: some single pixels, or areas with gaps, or anything; labels up to `greatest`.
Image<Tev8u> markersOf(Exercise& e, TevSize roi, int greatest) {
  const int kind = e.draw.between(0, 3);
  const auto markers = e.inout<Tev8u>(roi, 1, kind == 3 ? Values::any : Values::labels);
  for (int y = 0; y < roi.height; ++y) {
    Tev8u* const row = markers.data + std::ptrdiff_t{y} * markers.step;
    if (kind < 2) std::memset(row, 0, static_cast<std::size_t>(roi.width));
    for (int x = 0; x < roi.width; ++x) {
      if (kind == 2 && (x + 3 * y) % 7 > 1) row[x] = 0;
      row[x] = static_cast<Tev8u>(std::min<int>(row[x], greatest));
    }
  }
  if (kind < 2)
    for (int i = e.draw.between(0, 6); i > 0; --i) {
      const TevPoint at = pointIn(e, roi);
      markers.data[std::ptrdiff_t{at.y} * markers.step + at.x] = static_cast<Tev8u>(e.draw.between(1, greatest));
    }
  return markers;
}

void watershed(Exercise& e) {
  const TevSize roi = e.size(1, 1, e.draw.oneIn(4) ? 40 : 20);
  const auto src = e.in<Tev8u>(roi);
  const auto markers = markersOf(e, roi, 255);
  const bool queue = e.draw.oneIn(2);
  const tevWatershedNorm norm = e.draw.between(0, queue ? 1 : 3);
  const auto bounds =
      e.draw.anyOf<uint32_t>({0, 0, tevWatershedBound4, tevWatershedBound8, tevWatershedBound4 | tevWatershedBound8});
  const uint32_t method = !queue            ? tevWatershedSweep
                          : e.draw.oneIn(3) ? tevWatershedQueue | tevWatershedSweep
                                            : tevWatershedQueue;
  int size = 0;
  CALL(e, teviSegmentWatershedGetBufferSize_8u_C1R, roi, &size);
  Tev8u* buffer;
  if (!queue && bounds != 0) {  // the one case that wants a multiple of 32
    buffer = e.buffer(size + 31);
    buffer += -reinterpret_cast<std::uintptr_t>(buffer) % 32;
  } else {
    buffer = e.buffer(size);
  }
  CALL(e, teviSegmentWatershed_8u_C1IR, src.data, src.step, markers.data, markers.step, roi, norm, method | bounds,
       buffer);
}

template <int channels>
void gradient(Exercise& e, const char* queryName, TevStatus (*query)(TevSize, int*), const char* name,
              TevStatus (*segment)(const Tev8u*, int, Tev8u*, int, TevSize, int, uint32_t, Tev8u*)) {
  const TevSize roi = e.size(1);
  const auto src = e.in<Tev8u>(roi, channels);
  const auto markers = markersOf(e, roi, 253);
  const auto flags =
      e.draw.anyOf<uint32_t>({0, tevWatershedBound4, tevWatershedBound8, tevWatershedBound4 | tevWatershedBound8});
  int size = 0;
  e.call(queryName, query, roi, &size);
  e.call(name, segment, src.data, src.step, markers.data, markers.step, roi, e.draw.between(0, 1), flags,
         e.buffer(size));
}

// ---- Labelling and bounds ----

void labelMarkers(Exercise& e) {
  const TevSize roi = e.size(1);
  const auto markers = e.inout<Tev8u>(roi, 1, e.draw.anyOf({Values::mask, Values::labels, Values::any}));
  const int minLabel = e.draw.oneIn(2) ? 1 : e.draw.between(1, 254);
  const int maxLabel = e.draw.oneIn(2) ? 254 : e.draw.between(minLabel, 254);
  int size = 0;
  CALL(e, teviLabelMarkersGetBufferSize_8u_C1R, roi, &size);
  CALL(e, teviLabelMarkers_8u_C1IR, markers.data, markers.step, roi, minLabel, maxLabel, e.draw.between(0, 1),
       e.outValue<int>(), e.buffer(size));
}

void boundSegments(Exercise& e) {
  const TevSize roi = e.size(1);
  const auto markers = e.inout<Tev8u>(roi, 1, e.draw.anyOf({Values::mask, Values::labels, Values::any}));
  const auto boundary = static_cast<Tev8u>(e.draw.oneIn(2) ? e.draw.between(0, 8) : e.draw.between(0, 255));
  CALL(e, teviBoundSegments_8u_C1IR, markers.data, markers.step, roi, boundary, e.draw.between(0, 1));
}

}  // namespace

#define FILL(function, rule)                                                  \
  {                                                                           \
#function, [](Exercise & e) { fill<Rule::rule>(e, #function, function); } \
  }
#define GRADIENT(query, function, channels)                                                    \
  {                                                                                            \
#function, [](Exercise & e) { gradient<channels>(e, #query, query, #function, function); } \
  }

std::vector<Entry> segmentation() {
  return {
      FILL(teviFloodFill_4Con_8u_C1IR, equal),
      FILL(teviFloodFill_4Con_8u_C3IR, equal),
      FILL(teviFloodFill_4Con_32f_C1IR, equal),
      FILL(teviFloodFill_4Con_32f_C3IR, equal),
      FILL(teviFloodFill_8Con_8u_C1IR, equal),
      FILL(teviFloodFill_8Con_8u_C3IR, equal),
      FILL(teviFloodFill_8Con_32f_C1IR, equal),
      FILL(teviFloodFill_8Con_32f_C3IR, equal),
      FILL(teviFloodFill_Range4Con_8u_C1IR, range),
      FILL(teviFloodFill_Range4Con_8u_C3IR, range),
      FILL(teviFloodFill_Range4Con_32f_C1IR, range),
      FILL(teviFloodFill_Range4Con_32f_C3IR, range),
      FILL(teviFloodFill_Range8Con_8u_C1IR, range),
      FILL(teviFloodFill_Range8Con_8u_C3IR, range),
      FILL(teviFloodFill_Range8Con_32f_C1IR, range),
      FILL(teviFloodFill_Range8Con_32f_C3IR, range),
      FILL(teviFloodFill_Grad4Con_8u_C1IR, gradient),
      FILL(teviFloodFill_Grad4Con_8u_C3IR, gradient),
      FILL(teviFloodFill_Grad4Con_32f_C1IR, gradient),
      FILL(teviFloodFill_Grad4Con_32f_C3IR, gradient),
      FILL(teviFloodFill_Grad8Con_8u_C1IR, gradient),
      {"teviFloodFill_Grad8Con_8u_C3IR", fillUntested},
      FILL(teviFloodFill_Grad8Con_32f_C1IR, gradient),
      FILL(teviFloodFill_Grad8Con_32f_C3IR, gradient),

      {"teviSegmentWatershed_8u_C1IR", watershed},
      GRADIENT(teviSegmentGradientGetBufferSize_8u_C1R, teviSegmentGradient_8u_C1IR, 1),
      GRADIENT(teviSegmentGradientGetBufferSize_8u_C3R, teviSegmentGradient_8u_C3IR, 3),

      {"teviLabelMarkers_8u_C1IR", labelMarkers},
      {"teviBoundSegments_8u_C1IR", boundSegments},
  };
}

}  // namespace exercise
