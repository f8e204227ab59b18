#include "bench.h"
#include "tevcv/filtering.h"

namespace {

using bench::hd;

// A call of one filter over noise, with its buffer: filter(src, srcStep, dst, dstStep, buffer).
template <class Src, class Dst, class Size, class Filter>
bool add(std::string name, double target, Size size, Filter filter, int threads = 1, Src scale = 1) {
  return bench::add({.name = std::move(name), .target = target, .threads = threads, .prepare = [=] {
                       int bytes = 0;
                       size(&bytes);
                       auto src = bench::noise<Src>();
                       for (Src& pixel : *src) pixel = static_cast<Src>(pixel * scale);
                       auto dst = bench::noise<Dst>(hd, 1, 2);
                       auto buffer = std::make_shared<std::vector<Tev8u>>(bytes);
                       return [=] {
                         filter(src->data(), hd.width * int{sizeof(Src)}, dst->data(), hd.width * int{sizeof(Dst)},
                                buffer->data());
                       };
                     }});
}

#define TEV_BENCH_MASK_FILTER(entry, name, target, Src, Dst, filter, size, mask, threads)                          \
  const bool entry = add<Src, Dst>(                                                                                \
      name, target, [](int* bytes) { size(hd, mask, bytes); },                                                     \
      [](const Src* s, int ss, Dst* d, int ds, Tev8u* b) { filter(s, ss, d, ds, hd, mask, tevBorderRepl, 0, b); }, \
      threads)

TEV_BENCH_MASK_FILTER(sobel3, "Sobel 3x3 8u16s", 8, Tev8u, Tev16s, teviFilterSobelHorizBorder_8u16s_C1R,
                      teviFilterSobelHorizGetBufferSize_8u16s_C1R, tevMskSize3x3, 1);
TEV_BENCH_MASK_FILTER(sobel3two, "Sobel 3x3 8u16s, two threads", 0, Tev8u, Tev16s, teviFilterSobelHorizBorder_8u16s_C1R,
                      teviFilterSobelHorizGetBufferSize_8u16s_C1R, tevMskSize3x3, 2);
TEV_BENCH_MASK_FILTER(sobel5, "Sobel 5x5 8u16s", 15, Tev8u, Tev16s, teviFilterSobelHorizBorder_8u16s_C1R,
                      teviFilterSobelHorizGetBufferSize_8u16s_C1R, tevMskSize5x5, 1);
TEV_BENCH_MASK_FILTER(laplacian3, "Laplacian 3x3 8u16s", 12, Tev8u, Tev16s, teviFilterLaplacianBorder_8u16s_C1R,
                      teviFilterLaplacianGetBufferSize_8u16s_C1R, tevMskSize3x3, 1);
TEV_BENCH_MASK_FILTER(laplacian5, "Laplacian 5x5 8u16s", 0, Tev8u, Tev16s, teviFilterLaplacianBorder_8u16s_C1R,
                      teviFilterLaplacianGetBufferSize_8u16s_C1R, tevMskSize5x5, 1);
TEV_BENCH_MASK_FILTER(sobel32f, "Sobel 3x3 32f", 25, Tev32f, Tev32f, teviFilterSobelVertBorder_32f_C1R,
                      teviFilterSobelVertGetBufferSize_32f_C1R, tevMskSize3x3, 1);
TEV_BENCH_MASK_FILTER(sobel32fTwo, "Sobel 3x3 32f, two threads", 0, Tev32f, Tev32f, teviFilterSobelVertBorder_32f_C1R,
                      teviFilterSobelVertGetBufferSize_32f_C1R, tevMskSize3x3, 2);
TEV_BENCH_MASK_FILTER(sobel532f, "Sobel 5x5 32f", 0, Tev32f, Tev32f, teviFilterSobelHorizBorder_32f_C1R,
                      teviFilterSobelHorizGetBufferSize_32f_C1R, tevMskSize5x5, 1);
TEV_BENCH_MASK_FILTER(laplacian32f, "Laplacian 3x3 32f", 0, Tev32f, Tev32f, teviFilterLaplacianBorder_32f_C1R,
                      teviFilterLaplacianGetBufferSize_32f_C1R, tevMskSize3x3, 1);
TEV_BENCH_MASK_FILTER(lowpass3, "Lowpass 3x3 8u", 8, Tev8u, Tev8u, teviFilterLowpassBorder_8u_C1R,
                      teviFilterLowpassGetBufferSize_8u_C1R, tevMskSize3x3, 1);
TEV_BENCH_MASK_FILTER(lowpass5, "Lowpass 5x5 8u", 0, Tev8u, Tev8u, teviFilterLowpassBorder_8u_C1R,
                      teviFilterLowpassGetBufferSize_8u_C1R, tevMskSize5x5, 1);
TEV_BENCH_MASK_FILTER(lowpass532f, "Lowpass 5x5 32f", 40, Tev32f, Tev32f, teviFilterLowpassBorder_32f_C1R,
                      teviFilterLowpassGetBufferSize_32f_C1R, tevMskSize5x5, 1);

// Pixels with 24 significant bits, whose sums are not exact in float.
const bool sobel32fFractions = add<Tev32f, Tev32f>(
    "Sobel 3x3 32f, fractions", 0,
    [](int* bytes) { teviFilterSobelVertGetBufferSize_32f_C1R(hd, tevMskSize3x3, bytes); },
    [](const Tev32f* s, int ss, Tev32f* d, int ds, Tev8u* b) {
      teviFilterSobelVertBorder_32f_C1R(s, ss, d, ds, hd, tevMskSize3x3, tevBorderRepl, 0, b);
    },
    1, 1 / 255.0F);
const bool lowpass32fFractions = add<Tev32f, Tev32f>(
    "Lowpass 5x5 32f, fractions", 0,
    [](int* bytes) { teviFilterLowpassGetBufferSize_32f_C1R(hd, tevMskSize5x5, bytes); },
    [](const Tev32f* s, int ss, Tev32f* d, int ds, Tev8u* b) {
      teviFilterLowpassBorder_32f_C1R(s, ss, d, ds, hd, tevMskSize5x5, tevBorderRepl, 0, b);
    },
    1, 1 / 255.0F);

const bool scharr = add<Tev8u, Tev16s>(
    "Scharr 8u16s", 8, [](int* bytes) { teviFilterScharrVertGetBufferSize_8u16s_C1R(hd, bytes); },
    [](const Tev8u* s, int ss, Tev16s* d, int ds, Tev8u* b) {
      teviFilterScharrVertBorder_8u16s_C1R(s, ss, d, ds, hd, tevBorderRepl, 0, b);
    });
const bool scharr32f = add<Tev32f, Tev32f>(
    "Scharr 32f", 0, [](int* bytes) { teviFilterScharrVertGetBufferSize_32f_C1R(hd, bytes); },
    [](const Tev32f* s, int ss, Tev32f* d, int ds, Tev8u* b) {
      teviFilterScharrVertBorder_32f_C1R(s, ss, d, ds, hd, tevBorderRepl, 0, b);
    });

// A divisor whose quotients are whole, and one whose reciprocal leaves some of them short.
template <int divisor>
bool addSobel8s(const char* name) {
  return add<Tev8u, Tev8s>(
      name, 0, [](int* bytes) { teviFilterSobelHorizGetBufferSize_8u8s_C1R(hd, tevMskSize3x3, bytes); },
      [](const Tev8u* s, int ss, Tev8s* d, int ds, Tev8u* b) {
        teviFilterSobelHorizBorder_8u8s_C1R(s, ss, d, ds, hd, tevMskSize3x3, tevBorderRepl, 0, divisor, b);
      });
}
const bool sobel8s = addSobel8s<8>("Sobel 3x3 8u8s, divisor 8");
const bool sobel8sShort = addSobel8s<41>("Sobel 3x3 8u8s, divisor 41");

}  // namespace
