#include "bench.h"
#include "tevcv/statistics.h"

namespace {

using bench::hd;

// Calls of one-image members and of two-image members. The mask leaves out about half of the pixels, at random.
template <class T>
using OneImage = TevStatus (*)(const T*, int, const Tev8u*, int, TevSize, Tev64f*);
template <class T>
using OneImageCoi = TevStatus (*)(const T*, int, const Tev8u*, int, TevSize, int, Tev64f*);
template <class T>
using TwoImages = TevStatus (*)(const T*, int, const T*, int, const Tev8u*, int, TevSize, Tev64f*);

std::shared_ptr<std::vector<Tev8u>> randomMask(TevSize roi) {
  auto mask = bench::noise<Tev8u>(roi, 1, 7);
  std::uint32_t state = 1;
  for (auto& element : *mask) {
    state = state * 1664525U + 1013904223U;
    element = static_cast<Tev8u>(state >> 31 ? 255 : 0);
  }
  return mask;
}

template <class T>
bool add(std::string name, OneImage<T> norm, double target = 0, TevSize roi = hd, int threads = 1) {
  return bench::add({.name = std::move(name), .target = target, .roi = roi, .threads = threads, .prepare = [=] {
                       auto a = bench::noise<T>(roi);
                       auto mask = randomMask(roi);
                       return [=] {
                         Tev64f value;
                         norm(a->data(), roi.width * int{sizeof(T)}, mask->data(), roi.width, roi, &value);
                       };
                     }});
}

template <class T>
bool add(std::string name, OneImageCoi<T> norm) {
  return bench::add({.name = std::move(name), .prepare = [=] {
                       auto a = bench::noise<T>(hd, 3);
                       auto mask = randomMask(hd);
                       return [=] {
                         Tev64f value;
                         norm(a->data(), hd.width * 3 * int{sizeof(T)}, mask->data(), hd.width, hd, 2, &value);
                       };
                     }});
}

template <class T>
bool add(std::string name, TwoImages<T> norm, double target = 0, TevSize roi = hd, int threads = 1) {
  return bench::add({.name = std::move(name), .target = target, .roi = roi, .threads = threads, .prepare = [=] {
                       auto a = bench::noise<T>(roi), b = bench::noise<T>(roi, 1, 2);
                       auto mask = randomMask(roi);
                       const int step = roi.width * int{sizeof(T)};
                       return [=] {
                         Tev64f value;
                         norm(a->data(), step, b->data(), step, mask->data(), roi.width, roi, &value);
                       };
                     }});
}

const bool oneImage =
    add<Tev8u>("Norm L1 8u masked", teviNorm_L1_8u_C1MR, 4) &
    add<Tev32f>("Norm L2 32f masked", teviNorm_L2_32f_C1MR, 60) &
    add<Tev8u>("Norm Inf 8u masked", teviNorm_Inf_8u_C1MR) & add<Tev8s>("Norm Inf 8s masked", teviNorm_Inf_8s_C1MR) &
    add<Tev16u>("Norm Inf 16u masked", teviNorm_Inf_16u_C1MR) &
    add<Tev32f>("Norm Inf 32f masked", teviNorm_Inf_32f_C1MR) & add<Tev8s>("Norm L1 8s masked", teviNorm_L1_8s_C1MR) &
    add<Tev16u>("Norm L1 16u masked", teviNorm_L1_16u_C1MR) & add<Tev32f>("Norm L1 32f masked", teviNorm_L1_32f_C1MR) &
    add<Tev8u>("Norm L2 8u masked", teviNorm_L2_8u_C1MR) & add<Tev8s>("Norm L2 8s masked", teviNorm_L2_8s_C1MR) &
    add<Tev16u>("Norm L2 16u masked", teviNorm_L2_16u_C1MR) & add<Tev8u>("Norm L1 8u C3 masked", teviNorm_L1_8u_C3CMR) &
    add<Tev16u>("Norm L1 16u C3 masked", teviNorm_L1_16u_C3CMR) &
    add<Tev32f>("Norm Inf 32f C3 masked", teviNorm_Inf_32f_C3CMR);

const bool twoImages = add<Tev8u>("NormDiff L2 8u masked", teviNormDiff_L2_8u_C1MR, 6) &
                       add<Tev8u>("NormDiff L1 8u masked", teviNormDiff_L1_8u_C1MR) &
                       add<Tev8s>("NormDiff L1 8s masked", teviNormDiff_L1_8s_C1MR) &
                       add<Tev8s>("NormDiff L2 8s masked", teviNormDiff_L2_8s_C1MR) &
                       add<Tev8u>("NormDiff Inf 8u masked", teviNormDiff_Inf_8u_C1MR) &
                       add<Tev16u>("NormDiff L2 16u masked", teviNormDiff_L2_16u_C1MR) &
                       add<Tev32f>("NormDiff Inf 32f masked", teviNormDiff_Inf_32f_C1MR) &
                       add<Tev32f>("NormDiff L1 32f masked", teviNormDiff_L1_32f_C1MR) &
                       add<Tev32f>("NormDiff L2 32f masked", teviNormDiff_L2_32f_C1MR) &
                       add<Tev8u>("NormRel L2 8u masked", teviNormRel_L2_8u_C1MR) &
                       add<Tev32f>("NormRel L1 32f masked", teviNormRel_L1_32f_C1MR) &
                       add<Tev32f>("NormRel L2 32f masked", teviNormRel_L2_32f_C1MR);

// Just above the gate of two threads, serial and forked.
constexpr TevSize gate524288 = {1024, 1025}, gate131072 = {512, 514};
const bool forked = add<Tev8u>("Norm Inf 8u at its gate, 1 thread", teviNorm_Inf_8u_C1MR, 0, gate524288, 1) &
                    add<Tev8u>("Norm Inf 8u at its gate, 2 threads", teviNorm_Inf_8u_C1MR, 0, gate524288, 2) &
                    add<Tev8u>("Norm L1 8u at its gate, 1 thread", teviNorm_L1_8u_C1MR, 0, gate131072, 1) &
                    add<Tev8u>("Norm L1 8u at its gate, 2 threads", teviNorm_L1_8u_C1MR, 0, gate131072, 2) &
                    add<Tev32f>("Norm L2 32f at its gate, 1 thread", teviNorm_L2_32f_C1MR, 0, gate131072, 1) &
                    add<Tev32f>("Norm L2 32f at its gate, 2 threads", teviNorm_L2_32f_C1MR, 0, gate131072, 2) &
                    add<Tev8u>("NormDiff L2 8u at its gate, 1 thread", teviNormDiff_L2_8u_C1MR, 0, gate131072, 1) &
                    add<Tev8u>("NormDiff L2 8u at its gate, 2 threads", teviNormDiff_L2_8u_C1MR, 0, gate131072, 2);

}  // namespace
