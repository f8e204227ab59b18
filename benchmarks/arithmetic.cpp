#include "tevcv/arithmetic.h"

#include "bench.h"

namespace {

using bench::hd;

const bool absDiff8u =
    bench::add({.name = "AbsDiff 8u", .target = 2, .prepare = [] {
                  auto a = bench::noise<Tev8u>(), b = bench::noise<Tev8u>(hd, 1, 2), d = bench::noise<Tev8u>();
                  return [=] { teviAbsDiff_8u_C1R(a->data(), hd.width, b->data(), hd.width, d->data(), hd.width, hd); };
                }});

const bool absDiff32f =
    bench::add({.name = "AbsDiff 32f", .target = 8, .prepare = [] {
                  auto a = bench::noise<Tev32f>(), b = bench::noise<Tev32f>(hd, 1, 2), d = bench::noise<Tev32f>();
                  return [=] {
                    teviAbsDiff_32f_C1R(a->data(), hd.width * 4, b->data(), hd.width * 4, d->data(), hd.width * 4, hd);
                  };
                }});

// Every second pixel, roughly.
std::shared_ptr<std::vector<Tev8u>> halfMask() {
  auto mask = bench::noise<Tev8u>(hd, 1, 3);
  for (Tev8u& m : *mask) m = m & 1;
  return mask;
}

// An accumulator as it looks after some frames: fractions, not whole numbers.
std::shared_ptr<std::vector<Tev32f>> accumulator() {
  auto sums = bench::noise<Tev32f>(hd, 1, 2);
  for (Tev32f& a : *sums) a *= 0.8123F;
  return sums;
}

template <class S>
bool addPlain(const char* name, double target, TevStatus (*call)(const S*, int, Tev32f*, int, TevSize)) {
  return bench::add({.name = name, .target = target, .prepare = [=] {
                       auto s = bench::noise<S>();
                       auto a = accumulator();
                       return [=] { call(s->data(), hd.width * int{sizeof(S)}, a->data(), hd.width * 4, hd); };
                     }});
}

template <class S>
bool addMasked(const char* name, double target,
               TevStatus (*call)(const S*, int, const Tev8u*, int, Tev32f*, int, TevSize)) {
  return bench::add({.name = name, .target = target, .prepare = [=] {
                       auto s = bench::noise<S>();
                       auto a = accumulator();
                       auto mask = halfMask();
                       return [=] {
                         call(s->data(), hd.width * int{sizeof(S)}, mask->data(), hd.width, a->data(), hd.width * 4,
                              hd);
                       };
                     }});
}

template <class S>
bool addWeighted(const char* name, double target, Tev32f alpha,
                 TevStatus (*call)(const S*, int, Tev32f*, int, TevSize, Tev32f)) {
  return bench::add({.name = name, .target = target, .prepare = [=] {
                       auto s = bench::noise<S>();
                       auto a = accumulator();
                       return [=] { call(s->data(), hd.width * int{sizeof(S)}, a->data(), hd.width * 4, hd, alpha); };
                     }});
}

const bool accumulators[] = {
    addPlain("Add 8u32f", 3.6, teviAdd_8u32f_C1IR),
    addMasked("Add 8u32f masked", 0, teviAdd_8u32f_C1IMR),
    addMasked("AddSquare 8u32f masked", 4, teviAddSquare_8u32f_C1IMR),
    addPlain("AddSquare 16u32f", 0, teviAddSquare_16u32f_C1IR),
    addPlain("AddSquare 32f", 0, teviAddSquare_32f_C1IR),
    addMasked("AddSquare 32f masked", 0, teviAddSquare_32f_C1IMR),
    addWeighted("AddWeighted 8u32f", 3.6, 0.05F, teviAddWeighted_8u32f_C1IR),
    addWeighted("AddWeighted 8u32f alpha 1/2", 0, 0.5F, teviAddWeighted_8u32f_C1IR),
    addWeighted("AddWeighted 32f", 0, 0.05F, teviAddWeighted_32f_C1IR),
};

}  // namespace
