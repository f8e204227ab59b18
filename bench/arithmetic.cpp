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

}  // namespace
