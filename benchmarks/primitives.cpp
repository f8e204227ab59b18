#include "tevcv/primitives.h"

#include "bench.h"

namespace {

using bench::hd;

const bool threshold =
    bench::add({.name = "Threshold 8u", .target = 1, .prepare = [] {
                  auto a = bench::noise<Tev8u>(), d = bench::noise<Tev8u>();
                  return [=] { teviThreshold_GTVal_8u_C1R(a->data(), hd.width, d->data(), hd.width, hd, 100, 7); };
                }});

const bool threshold32f =
    bench::add({.name = "Threshold 32f", .prepare = [] {
                  auto a = bench::noise<Tev32f>(), d = bench::noise<Tev32f>();
                  return [=] { teviThreshold_LT_32f_C1R(a->data(), hd.width * 4, d->data(), hd.width * 4, hd, 100); };
                }});

const bool border = bench::add(
    {.name = "Replicate border 8u", .target = 1.2, .prepare = [] {
       const TevSize inner = {hd.width - 16, hd.height - 16};
       auto a = bench::noise<Tev8u>(), d = bench::noise<Tev8u>();
       return [=] { teviCopyReplicateBorder_8u_C1R(a->data(), hd.width, inner, d->data(), hd.width, hd, 8, 8); };
     }});

const bool subtraction = bench::add(
    {.name = "Sub 8u scaled", .prepare = [] {
       auto a = bench::noise<Tev8u>(), b = bench::noise<Tev8u>(hd, 1, 2), d = bench::noise<Tev8u>();
       return [=] { teviSub_8u_C1RSfs(a->data(), hd.width, b->data(), hd.width, d->data(), hd.width, hd, 1); };
     }});

}  // namespace
