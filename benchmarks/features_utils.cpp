#include "bench.h"
#include "tevcv/features.h"

namespace {

using bench::hd;

const bool arctan =
    bench::add({.name = "Fast arctangent", .target = 16, .prepare = [] {
                  auto y = bench::noise<Tev32f>(), x = bench::noise<Tev32f>(hd, 1, 2), d = bench::noise<Tev32f>();
                  for (auto& v : *y) v -= 100;
                  for (auto& v : *x) v -= 80;
                  return [=] { tevibFastArctan_32f(y->data(), x->data(), d->data(), hd.width * hd.height); };
                }});

const bool peaks = bench::add({.name = "Peaks 32f", .prepare = [] {
                                 auto a = bench::noise<Tev32f>();
                                 int size = 0;
                                 teviFindPeaks3x3GetBufferSize_32f_C1R(hd.width, &size);
                                 auto buffer = std::make_shared<std::vector<Tev8u>>(size);
                                 auto found = std::make_shared<std::vector<TevPoint>>(1000000);
                                 return [=] {
                                   int count = 0;
                                   teviFindPeaks3x3_32f_C1R(a->data(), hd.width * 4, hd, 150, found->data(), 1000000,
                                                            &count, 0, 1, buffer->data());
                                 };
                               }});

}  // namespace
