// Vectors, copies, subtraction, thresholds, border copies; the allocator and the version record.
#include "exercise/exercise.h"

#include <cmath>
#include <cstring>

namespace exercise {
namespace {

// --- Vectors --------------------------------------------------------------------------------------------------------

int length(Exercise& e) { return e.draw.oneIn(6) ? 1 : e.draw.between(1, e.large() ? 3000 : 200); }

template <class S, class D>
void from(Exercise& e, const char* name, TevStatus (*function)(const S*, D*, int)) {
  const int len = length(e);
  const S* const src = e.inArray<S>(len);
  D* const dst = e.outArray<D>(len);
  e.call(name, function, src, dst, len);
}

template <class T>
void everyInPlace(Exercise& e, const char* name, TevStatus (*function)(const T*, T*, int)) {
  const int len = length(e);
  const T* const src = e.inArray<T>(len);
  T* const place = e.inout<T>({len, 1}).data;
  e.call(name, function, src, place, len);
}

template <class T>
void every(Exercise& e, const char* name, void (*function)(const T*, const T*, T*, int)) {
  const int len = length(e);
  const T *const a = e.inArray<T>(len), *const b = e.inArray<T>(len);
  T* const d = e.outArray<T>(len);
  const int count = e.draw.oneIn(8) ? e.draw.between(-3, 0) : len;
  e.call(name, function, a, b, d, count);
  e.record(d, static_cast<std::size_t>(len));
  T* const place = e.inout<T>({len, 1}).data;
  e.call(name, function, a, place, place, len);
  e.record(place, static_cast<std::size_t>(len));
}

template <class T>
void set(Exercise& e, const char* name, TevStatus (*function)(T, T*, int)) {
  const int len = length(e);
  const T value = *e.inArray<T>(1);
  T* const dst = e.outArray<T>(len);
  e.call(name, function, value, dst, len);
}

template <class T>
void change(Exercise& e, const char* name, TevStatus (*function)(T*, int)) {
  const int len = length(e);
  e.call(name, function, e.inout<T>({len, 1}).data, len);
}

int scale(Exercise& e) { return e.draw.anyOf({0, e.draw.between(-18, 34), 1, -1, 8, INT32_MIN, INT32_MAX}); }

void mulScaled(Exercise& e) {
  const int len = length(e);
  const auto value = static_cast<Tev16s>(e.draw.between(-32768, 32767));
  const int scaleFactor = scale(e);
  CALL(e, tevsMulC_16s_ISfs, value, e.inout<Tev16s>({len, 1}).data, len, scaleFactor);
}

void mulFloat(Exercise& e) {
  const int len = length(e);
  const float value = e.draw.anyOf({e.draw.real(-4, 4), 0.0F, 1.0F, -0.0F, INFINITY, NAN});
  CALL(e, tevsMulC_32f_I, value, e.inout<Tev32f>({len, 1}).data, len);
}

void squareRoots(Exercise& e) {
  const int len = length(e);
  const Tev32s* const src = e.inArray<Tev32s>(len);
  const int scaleFactor = scale(e);
  CALL(e, tevsSqrt_32s16s_Sfs, src, e.outArray<Tev16s>(len), len, scaleFactor);
}

// --- Images ---------------------------------------------------------------------------------------------------------

// Copies and differences take steps as they stand: negative ones run upwards, and rows of words advance by whole
// elements.
template <class T>
int untidy(Exercise& e, int step) {
  return step + e.draw.between(0, int{sizeof(T)} - 1);
}

template <class T>
struct Rows {
  T* data;
  int step;
};
template <class T>
Rows<T> rowsOf(Exercise& e, const Image<T>& image) {
  if (!e.draw.oneIn(5)) return {image.data, untidy<T>(e, image.step)};
  return {reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(image.data) +
                               static_cast<std::ptrdiff_t>(image.step) * (image.size.height - 1)),
          -image.step};
}
template <class T>
Rows<T> sourceRows(Exercise& e, const Image<T>& image) {
  if (e.draw.oneIn(10)) return {image.data, 0};  // the first row for all of them
  return rowsOf(e, image);
}

template <int channels, class T>
void copy(Exercise& e, const char* name, TevStatus (*function)(const T*, int, T*, int, TevSize)) {
  const TevSize roi = e.size();
  const auto s = sourceRows(e, e.in<T>(roi, channels));
  const auto d = rowsOf(e, e.out<T>(roi, channels));
  e.call(name, function, s.data, keep(s.step), d.data, keep(d.step), roi);
}

void fill(Exercise& e) {
  const TevSize roi = e.size();
  const auto value = static_cast<Tev8u>(e.draw.between(0, 255));
  const auto d = rowsOf(e, e.out<Tev8u>(roi));
  CALL(e, teviSet_8u_C1R, value, d.data, keep(d.step), roi);
}

template <int channels>
void sub(Exercise& e, const char* name,
         TevStatus (*function)(const Tev32f*, int, const Tev32f*, int, Tev32f*, int, TevSize)) {
  const TevSize roi = e.size();
  const auto a = sourceRows(e, e.in<Tev32f>(roi, channels));
  const auto b = sourceRows(e, e.in<Tev32f>(roi, channels));
  const auto d = rowsOf(e, e.out<Tev32f>(roi, channels));
  e.call(name, function, a.data, keep(a.step), b.data, keep(b.step), d.data, keep(d.step), roi);
}

template <int channels>
void subInPlace(Exercise& e, const char* name, TevStatus (*function)(const Tev32f*, int, Tev32f*, int, TevSize)) {
  const TevSize roi = e.size();
  const auto a = sourceRows(e, e.in<Tev32f>(roi, channels));
  const auto d = rowsOf(e, e.inout<Tev32f>(roi, channels));
  e.call(name, function, a.data, keep(a.step), d.data, keep(d.step), roi);
}

template <int channels>
void subScaled(Exercise& e, const char* name,
               TevStatus (*function)(const Tev8u*, int, const Tev8u*, int, Tev8u*, int, TevSize, int)) {
  const TevSize roi = e.size();
  const int scaleFactor = scale(e);
  const auto a = sourceRows(e, e.in<Tev8u>(roi, channels)), b = sourceRows(e, e.in<Tev8u>(roi, channels));
  const auto d = rowsOf(e, e.out<Tev8u>(roi, channels));
  e.call(name, function, a.data, keep(a.step), b.data, keep(b.step), d.data, keep(d.step), roi, scaleFactor);
}

template <int channels>
void subScaledInPlace(Exercise& e, const char* name,
                      TevStatus (*function)(const Tev8u*, int, Tev8u*, int, TevSize, int)) {
  const TevSize roi = e.size();
  const int scaleFactor = scale(e);
  const auto a = sourceRows(e, e.in<Tev8u>(roi, channels));
  const auto d = rowsOf(e, e.inout<Tev8u>(roi, channels));
  e.call(name, function, a.data, keep(a.step), d.data, keep(d.step), roi, scaleFactor);
}

// --- Thresholds -----------------------------------------------------------------------------------------------------

template <class T>
T level(Exercise& e) {
  if (e.draw.oneIn(3)) {
    if constexpr (std::is_floating_point_v<T>) return e.draw.anyOf<T>({0, -0.0F, 1, -1, INFINITY, -INFINITY, NAN});
    return static_cast<T>(e.draw.anyOf({0, 255}));
  }
  return *e.inArray<T>(1);
}

// Calls `function(source, step, destination, step, region)`; the destination may be the source.
template <class T, class Call>
void mapped(Exercise& e, Call&& function) {
  const TevSize roi = e.size();
  if (e.draw.oneIn(4)) {
    const auto a = e.inout<T>(roi);
    function(a.data, a.step, a.data, a.step, roi);
    return;
  }
  const auto s = e.in<T>(roi);
  const auto d = e.out<T>(roi);
  function(static_cast<const T*>(s.data), s.step, d.data, d.step, roi);
}

TevCmpOp comparison(Exercise& e) { return e.draw.anyOf<TevCmpOp>({tevCmpGreater, tevCmpLess}); }

template <class T>
void thresholdValue(Exercise& e, const char* name,
                    TevStatus (*function)(const T*, int, T*, int, TevSize, T, T, TevCmpOp)) {
  const T threshold = level<T>(e), value = level<T>(e);
  const TevCmpOp op = comparison(e);
  mapped<T>(e, [&](auto... image) { e.call(name, function, image..., threshold, value, op); });
}
void clip(Exercise& e) {
  const float threshold = level<Tev32f>(e);
  const TevCmpOp op = comparison(e);
  mapped<Tev32f>(e, [&](auto... image) { CALL(e, teviThreshold_32f_C1R, image..., threshold, op); });
}
void thresholdAbove(Exercise& e) {
  const auto threshold = level<Tev8u>(e), value = level<Tev8u>(e);
  mapped<Tev8u>(e, [&](auto... image) { CALL(e, teviThreshold_GTVal_8u_C1R, image..., threshold, value); });
}
void thresholdAboveInPlace(Exercise& e) {
  const auto threshold = level<Tev8u>(e), value = level<Tev8u>(e);
  const TevSize roi = e.size();
  const auto a = e.inout<Tev8u>(roi);
  CALL(e, teviThreshold_GTVal_8u_C1IR, a.data, a.step, roi, threshold, value);
}
void clipBelow(Exercise& e) {
  const float threshold = level<Tev32f>(e);
  mapped<Tev32f>(e, [&](auto... image) { CALL(e, teviThreshold_LT_32f_C1R, image..., threshold); });
}
void clipBelowInPlace(Exercise& e) {
  const float threshold = level<Tev32f>(e);
  const TevSize roi = e.size();
  const auto a = e.inout<Tev32f>(roi);
  CALL(e, teviThreshold_LT_32f_C1IR, a.data, a.step, roi, threshold);
}

// --- Border copies --------------------------------------------------------------------------------------------------

struct Framing {
  TevSize image, frame;
  int top, left;
};
Framing framing(Exercise& e) {
  const TevSize image = e.size();
  const int top = e.draw.between(0, 9), left = e.draw.between(0, 9);
  return {image, {image.width + left + e.draw.between(0, 9), image.height + top + e.draw.between(0, 9)}, top, left};
}

template <int channels, class T>
void replicate(Exercise& e, const char* name,
               TevStatus (*function)(const T*, int, TevSize, T*, int, TevSize, int, int)) {
  const Framing f = framing(e);
  const auto s = e.in<T>(f.image, channels);
  const auto d = e.out<T>(f.frame, channels);
  const int sourceStep = untidy<T>(e, s.step), frameStep = untidy<T>(e, d.step);
  e.call(name, function, s.data, sourceStep, f.image, d.data, frameStep, f.frame, f.top, f.left);
}

// A smaller border would move the frame, so these two stay as they are.
template <int channels, class T>
void replicateInPlace(Exercise& e, const char* name, TevStatus (*function)(T*, int, TevSize, TevSize, int, int)) {
  const Framing f = framing(e);
  const auto d = e.inout<T>(f.frame, channels);
  T* const image =
      reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(d.data) + static_cast<std::ptrdiff_t>(d.step) * f.top) +
      static_cast<std::ptrdiff_t>(f.left) * channels;
  const int step = untidy<T>(e, d.step);
  e.call(name, function, image, step, f.image, f.frame, keep(f.top), keep(f.left));
}

void constant(Exercise& e) {
  const Framing f = framing(e);
  const auto s = e.in<Tev8u>(f.image);
  const auto d = e.out<Tev8u>(f.frame);
  const auto value = static_cast<Tev8u>(e.draw.between(0, 255));
  CALL(e, teviCopyConstBorder_8u_C1R, s.data, s.step, f.image, d.data, d.step, f.frame, f.top, f.left, value);
}

// --- Memory and version ---------------------------------------------------------------------------------------------

template <class T>
void allocate(Exercise& e, const char* name, T* (*function)(int)) {
  const int len = e.draw.anyOf({e.draw.between(1, 1000), e.draw.between(-2, 1), INT32_MIN});
  T* const block = e.call(name, function, len);
  if (!block) {
    CALL(e, tevsFree, nullptr);
    if (len > 0) throw Exercise::Stop{tevStatusNoMemory};
    return;
  }
  e.record(reinterpret_cast<std::uintptr_t>(block) % 32 == 0);
  e.record((reinterpret_cast<void**>(block)[-1]) != nullptr);
  std::memset(block, 0x5A, static_cast<std::size_t>(len) * sizeof(T));
  CALL(e, tevsFree, block);
}

void hooks(Exercise& e) {
  const auto size = static_cast<std::size_t>(e.draw.between(1, 100));
  void* block = e.call("i_malloc", i_malloc, size);
  if (!block) throw Exercise::Stop{tevStatusNoMemory};
  std::memset(block, 1, size);
  e.call("i_free", i_free, block);
  block = e.call("i_calloc", i_calloc, size, std::size_t{3});
  if (!block) throw Exercise::Stop{tevStatusNoMemory};
  e.record(static_cast<const unsigned char*>(block), 3 * size);
  void* const larger = e.call("i_realloc", i_realloc, block, 4 * size);
  if (larger) e.record(static_cast<const unsigned char*>(larger), 3 * size);
  i_free(larger ? larger : block);
  if (!larger) throw Exercise::Stop{tevStatusNoMemory};
}

void version(Exercise& e) {
  const TevLibraryVersion& v = *e.call("tevcvGetLibVersion", &tevcvGetLibVersion);
  for (int number : {v.majorVersion, v.minorVersion, v.buildMajor, v.buildNumber}) e.record(number);
  for (const char* text : {v.libraryName, v.versionText, v.buildDate}) e.record(text, std::strlen(text));
  e.record(v.cpuTag, sizeof v.cpuTag);
}

}  // namespace

#define ENTRY(function, exercise)                                     \
  {                                                                   \
#function, [](Exercise & e) { exercise(e, #function, function); } \
  }

std::vector<Entry> primitives() {
  return {
      ENTRY(tevsCopy_8u, from),
      ENTRY(tevsCopy_32f, from),
      ENTRY(tevsSet_8u, set),
      ENTRY(tevsSet_32f, set),
      ENTRY(tevsZero_8u, change),
      ENTRY(tevsZero_16s, change),
      ENTRY(tevsZero_32s, change),
      ENTRY(tevsZero_32f, change),
      ENTRY(tevsConvert_16u32f, from),
      ENTRY(tevsMaxEvery_8u, every),
      ENTRY(tevsMaxEvery_32f, every),
      ENTRY(tevsMinEvery_8u, every),
      ENTRY(tevsMinEvery_32f, every),
      ENTRY(tevsMaxEvery_8u_I, everyInPlace),
      ENTRY(tevsMaxEvery_32f_I, everyInPlace),
      ENTRY(tevsMinEvery_8u_I, everyInPlace),
      ENTRY(tevsMinEvery_32f_I, everyInPlace),
      {"tevsMulC_16s_ISfs", mulScaled},
      {"tevsMulC_32f_I", mulFloat},
      ENTRY(tevsSortAscend_64f_I, change),
      ENTRY(tevsSqrt_32f_I, change),
      {"tevsSqrt_32s16s_Sfs", squareRoots},

      ENTRY(teviCopy_8u_C1R, copy<1>),
      ENTRY(teviCopy_8u_C3R, copy<3>),
      ENTRY(teviCopy_8u_C4R, copy<4>),
      ENTRY(teviCopy_32f_C1R, copy<1>),
      ENTRY(teviCopy_32f_C3R, copy<3>),
      ENTRY(teviCopy_32f_C4R, copy<4>),
      {"teviSet_8u_C1R", fill},
      ENTRY(teviSub_32f_C1R, sub<1>),
      ENTRY(teviSub_32f_C3R, sub<3>),
      ENTRY(teviSub_32f_C4R, sub<4>),
      ENTRY(teviSub_32f_C1IR, subInPlace<1>),
      ENTRY(teviSub_32f_C3IR, subInPlace<3>),
      ENTRY(teviSub_32f_C4IR, subInPlace<4>),
      ENTRY(teviSub_8u_C1RSfs, subScaled<1>),
      ENTRY(teviSub_8u_C3RSfs, subScaled<3>),
      ENTRY(teviSub_8u_C4RSfs, subScaled<4>),
      ENTRY(teviSub_8u_C1IRSfs, subScaledInPlace<1>),
      ENTRY(teviSub_8u_C3IRSfs, subScaledInPlace<3>),
      ENTRY(teviSub_8u_C4IRSfs, subScaledInPlace<4>),

      ENTRY(teviThreshold_Val_8u_C1R, thresholdValue),
      ENTRY(teviThreshold_Val_32f_C1R, thresholdValue),
      {"teviThreshold_32f_C1R", clip},
      {"teviThreshold_GTVal_8u_C1R", thresholdAbove},
      {"teviThreshold_GTVal_8u_C1IR", thresholdAboveInPlace},
      {"teviThreshold_LT_32f_C1R", clipBelow},
      {"teviThreshold_LT_32f_C1IR", clipBelowInPlace},

      ENTRY(teviCopyReplicateBorder_8u_C1R, replicate<1>),
      ENTRY(teviCopyReplicateBorder_8u_C3R, replicate<3>),
      ENTRY(teviCopyReplicateBorder_8u_C4R, replicate<4>),
      ENTRY(teviCopyReplicateBorder_32s_C1R, replicate<1>),
      ENTRY(teviCopyReplicateBorder_32s_C3R, replicate<3>),
      ENTRY(teviCopyReplicateBorder_32s_C4R, replicate<4>),
      ENTRY(teviCopyReplicateBorder_8u_C1IR, replicateInPlace<1>),
      ENTRY(teviCopyReplicateBorder_8u_C3IR, replicateInPlace<3>),
      ENTRY(teviCopyReplicateBorder_8u_C4IR, replicateInPlace<4>),
      ENTRY(teviCopyReplicateBorder_32s_C1IR, replicateInPlace<1>),
      ENTRY(teviCopyReplicateBorder_32s_C3IR, replicateInPlace<3>),
      ENTRY(teviCopyReplicateBorder_32s_C4IR, replicateInPlace<4>),
      {"teviCopyConstBorder_8u_C1R", constant},

      ENTRY(tevsMalloc_8u, allocate),
      ENTRY(tevsMalloc_8s, allocate),
      ENTRY(tevsMalloc_16u, allocate),
      ENTRY(tevsMalloc_32s, allocate),
      ENTRY(tevsMalloc_32f, allocate),
      ENTRY(tevsMalloc_64f, allocate),
      {"i_malloc", hooks},
      {"tevcvGetLibVersion", version},
  };
}

}  // namespace exercise
