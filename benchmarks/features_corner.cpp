#include "bench.h"
#include "tevcv/features.h"

namespace {

using bench::hd;

const bool minEigen = bench::add({.name = "MinEigenVal 8u 3x3 3x3", .target = 200, .prepare = [] {
                                    auto a = bench::noise<Tev8u>();
                                    auto d = bench::noise<Tev32f>();
                                    int size = 0;
                                    teviMinEigenValGetBufferSize_8u32f_C1R(hd, 3, 3, &size);
                                    auto buffer = std::make_shared<std::vector<Tev8u>>(size);
                                    return [=] {
                                      teviMinEigenVal_8u32f_C1R(a->data(), hd.width, d->data(), hd.width * 4, hd,
                                                                tevCornerKernelSobel, 3, 3, buffer->data());
                                    };
                                  }});

const bool eigen = bench::add({.name = "EigenValsVecs 8u 3x3 3x3", .target = 300, .prepare = [] {
                                 auto a = bench::noise<Tev8u>();
                                 auto d = bench::noise<Tev32f>(hd, 6);
                                 int size = 0;
                                 teviEigenValsVecsGetBufferSize_8u32f_C1R(hd, 3, 3, &size);
                                 auto buffer = std::make_shared<std::vector<Tev8u>>(size);
                                 return [=] {
                                   teviEigenValsVecs_8u32f_C1R(a->data(), hd.width, d->data(), hd.width * 24, hd,
                                                               tevCornerKernelSobel, 3, 3, buffer->data());
                                 };
                               }});

}  // namespace
