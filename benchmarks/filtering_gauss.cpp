#include "bench.h"
#include "tevcv/filtering.h"

namespace {

using bench::hd;

const bool gauss = bench::add({.name = "Gauss 7x7 32f", .prepare = [] {
                                 auto a = bench::noise<Tev32f>(), d = bench::noise<Tev32f>();
                                 int size = 0;
                                 teviFilterGaussGetBufferSize_32f_C1R(hd, 7, &size);
                                 auto buffer = std::make_shared<std::vector<Tev8u>>(size);
                                 return [=] {
                                   teviFilterGaussBorder_32f_C1R(a->data(), hd.width * 4, d->data(), hd.width * 4, hd,
                                                                 7, 1.5F, tevBorderRepl, 0, buffer->data());
                                 };
                               }});

template <class T, class Call>
bool addGradient(const char* name, TevNorm norm, Call call) {
  return bench::add({.name = name, .prepare = [=] {
                       auto a = bench::noise<T>(hd, 3), d = bench::noise<T>();
                       constexpr int row = hd.width * int{sizeof(T)};
                       return [=] { call(a->data(), 3 * row, d->data(), row, hd, norm); };
                     }});
}

const bool gradient8u = addGradient<Tev8u>("Colour gradient L2 8u", tevNormL2, teviGradientColorToGray_8u_C3C1R);
const bool gradient16u = addGradient<Tev16u>("Colour gradient L2 16u", tevNormL2, teviGradientColorToGray_16u_C3C1R);
const bool gradientInf = addGradient<Tev8u>("Colour gradient Inf 8u", tevNormInf, teviGradientColorToGray_8u_C3C1R);
const bool gradientL1 = addGradient<Tev32f>("Colour gradient L1 32f", tevNormL1, teviGradientColorToGray_32f_C3C1R);
const bool gradientL2 = addGradient<Tev32f>("Colour gradient L2 32f", tevNormL2, teviGradientColorToGray_32f_C3C1R);

}  // namespace
