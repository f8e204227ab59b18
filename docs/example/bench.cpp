#include "example.h"

//! [bench]
#include "bench.h"

namespace {

using bench::hd;

const bool meanAbsDiff8u =
    bench::add({.name = "MeanAbsDiff 8u", .target = 2, .prepare = [] {
                  auto a = bench::noise<Tev8u>(), b = bench::noise<Tev8u>(hd, 1, 2);
                  auto mean = std::make_shared<Tev64f>();
                  return [=] { teviMeanAbsDiff_8u_C1R(a->data(), hd.width, b->data(), hd.width, hd, mean.get()); };
                }});

}  // namespace
//! [bench]
