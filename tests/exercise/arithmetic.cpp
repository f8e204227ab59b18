// Absolute differences and accumulators.
#include "exercise/exercise.h"

#include <cmath>

namespace exercise {
namespace {

// The destination may be one of the sources.
template <class T>
void absDiff(Exercise& e, const char* name, TevStatus (*function)(const T*, int, const T*, int, T*, int, TevSize)) {
  const TevSize roi = e.size();
  const auto b = e.in<T>(roi);
  if (e.draw.oneIn(4)) {
    const auto a = e.inout<T>(roi);
    if (e.draw.oneIn(2))
      e.call(name, function, a.data, a.step, b.data, b.step, a.data, a.step, roi);
    else
      e.call(name, function, b.data, b.step, a.data, a.step, a.data, a.step, roi);
    return;
  }
  const auto a = e.in<T>(roi);
  const auto d = e.out<T>(roi);
  e.call(name, function, a.data, a.step, b.data, b.step, d.data, d.step, roi);
}

template <class T, class C>
void absDiffC(Exercise& e, const char* name, TevStatus (*function)(const T*, int, T*, int, TevSize, C)) {
  const TevSize roi = e.size();
  C value;
  if constexpr (std::is_same_v<C, int>)
    value = e.draw.anyOf({e.draw.between(-10, 300), e.draw.between(-10, 70000), INT32_MIN, INT32_MAX});
  else
    value = e.draw.anyOf({e.draw.real(-1000, 1000), 0.0F, -0.0F, INFINITY, NAN});
  if (e.draw.oneIn(4)) {
    const auto a = e.inout<T>(roi);
    e.call(name, function, a.data, a.step, a.data, a.step, roi, value);
    return;
  }
  const auto a = e.in<T>(roi);
  const auto d = e.out<T>(roi);
  e.call(name, function, a.data, a.step, d.data, d.step, roi, value);
}

Image<Tev32f> accumulator(Exercise& e, TevSize roi) { return e.inout<Tev32f>(roi); }

float forgetting(Exercise& e) {
  return e.draw.anyOf({e.draw.real(0, 1), 0.0F, 1.0F, 0.05F, e.draw.real(-2, 2), 1e20F, INFINITY, NAN});
}

template <class T>
void add(Exercise& e, const char* name, TevStatus (*function)(const T*, int, Tev32f*, int, TevSize)) {
  const TevSize roi = e.size();
  const auto s = e.in<T>(roi);
  const auto a = accumulator(e, roi);
  e.call(name, function, s.data, s.step, a.data, a.step, roi);
}

template <class T>
void addMasked(Exercise& e, const char* name,
               TevStatus (*function)(const T*, int, const Tev8u*, int, Tev32f*, int, TevSize)) {
  const TevSize roi = e.size();
  const auto s = e.in<T>(roi);
  const auto mask = e.in<Tev8u>(roi, 1, Values::mask);
  const auto a = accumulator(e, roi);
  e.call(name, function, s.data, s.step, mask.data, mask.step, a.data, a.step, roi);
}

template <class T>
void addProduct(Exercise& e, const char* name,
                TevStatus (*function)(const T*, int, const T*, int, Tev32f*, int, TevSize)) {
  const TevSize roi = e.size();
  const auto s = e.in<T>(roi);
  const auto t = e.draw.oneIn(6) ? s : e.in<T>(roi);
  const auto a = accumulator(e, roi);
  e.call(name, function, s.data, s.step, t.data, t.step, a.data, a.step, roi);
}

template <class T>
void addProductMasked(Exercise& e, const char* name,
                      TevStatus (*function)(const T*, int, const T*, int, const Tev8u*, int, Tev32f*, int, TevSize)) {
  const TevSize roi = e.size();
  const auto s = e.in<T>(roi), t = e.in<T>(roi);
  const auto mask = e.in<Tev8u>(roi, 1, Values::mask);
  const auto a = accumulator(e, roi);
  e.call(name, function, s.data, s.step, t.data, t.step, mask.data, mask.step, a.data, a.step, roi);
}

template <class T>
void addWeighted(Exercise& e, const char* name, TevStatus (*function)(const T*, int, Tev32f*, int, TevSize, Tev32f)) {
  const TevSize roi = e.size();
  const float alpha = forgetting(e);
  const auto s = e.in<T>(roi);
  const auto a = accumulator(e, roi);
  e.call(name, function, s.data, s.step, a.data, a.step, roi, alpha);
}

template <class T>
void addWeightedMasked(Exercise& e, const char* name,
                       TevStatus (*function)(const T*, int, const Tev8u*, int, Tev32f*, int, TevSize, Tev32f)) {
  const TevSize roi = e.size();
  const float alpha = forgetting(e);
  const auto s = e.in<T>(roi);
  const auto mask = e.in<Tev8u>(roi, 1, Values::mask);
  const auto a = accumulator(e, roi);
  e.call(name, function, s.data, s.step, mask.data, mask.step, a.data, a.step, roi, alpha);
}

}  // namespace

#define ENTRY(function, exercise)                                     \
  {                                                                   \
#function, [](Exercise & e) { exercise(e, #function, function); } \
  }

std::vector<Entry> arithmetic() {
  return {
      ENTRY(teviAbsDiff_8u_C1R, absDiff),
      ENTRY(teviAbsDiff_16u_C1R, absDiff),
      ENTRY(teviAbsDiff_32f_C1R, absDiff),
      ENTRY(teviAbsDiffC_8u_C1R, absDiffC),
      ENTRY(teviAbsDiffC_16u_C1R, absDiffC),
      ENTRY(teviAbsDiffC_32f_C1R, absDiffC),
      ENTRY(teviAdd_8u32f_C1IR, add),
      ENTRY(teviAdd_8s32f_C1IR, add),
      ENTRY(teviAdd_16u32f_C1IR, add),
      ENTRY(teviAddSquare_8u32f_C1IR, add),
      ENTRY(teviAddSquare_8s32f_C1IR, add),
      ENTRY(teviAddSquare_16u32f_C1IR, add),
      ENTRY(teviAddSquare_32f_C1IR, add),
      ENTRY(teviAddProduct_8u32f_C1IR, addProduct),
      ENTRY(teviAddProduct_8s32f_C1IR, addProduct),
      ENTRY(teviAddProduct_16u32f_C1IR, addProduct),
      ENTRY(teviAddProduct_32f_C1IR, addProduct),
      ENTRY(teviAddWeighted_8u32f_C1IR, addWeighted),
      ENTRY(teviAddWeighted_8s32f_C1IR, addWeighted),
      ENTRY(teviAddWeighted_16u32f_C1IR, addWeighted),
      ENTRY(teviAddWeighted_32f_C1IR, addWeighted),
      ENTRY(teviAdd_8u32f_C1IMR, addMasked),
      ENTRY(teviAdd_8s32f_C1IMR, addMasked),
      ENTRY(teviAdd_16u32f_C1IMR, addMasked),
      ENTRY(teviAdd_32f_C1IMR, addMasked),
      ENTRY(teviAddSquare_8u32f_C1IMR, addMasked),
      ENTRY(teviAddSquare_8s32f_C1IMR, addMasked),
      ENTRY(teviAddSquare_16u32f_C1IMR, addMasked),
      ENTRY(teviAddSquare_32f_C1IMR, addMasked),
      ENTRY(teviAddProduct_8u32f_C1IMR, addProductMasked),
      ENTRY(teviAddProduct_8s32f_C1IMR, addProductMasked),
      ENTRY(teviAddProduct_16u32f_C1IMR, addProductMasked),
      ENTRY(teviAddProduct_32f_C1IMR, addProductMasked),
      ENTRY(teviAddWeighted_8u32f_C1IMR, addWeightedMasked),
      ENTRY(teviAddWeighted_8s32f_C1IMR, addWeightedMasked),
      ENTRY(teviAddWeighted_16u32f_C1IMR, addWeightedMasked),
      ENTRY(teviAddWeighted_32f_C1IMR, addWeightedMasked),
  };
}

}  // namespace exercise
