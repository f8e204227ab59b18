#include "tevcv/statistics.h"

#include "bench.h"

namespace {

using bench::hd;

// Every second pixel, roughly.
std::shared_ptr<std::vector<Tev8u>> halfMask(TevSize roi = hd) {
  auto mask = bench::noise<Tev8u>(roi, 1, 3);
  for (Tev8u& m : *mask) m = m & 1;
  return mask;
}

template <class T>
bool plain(const char* name, double target, TevStatus (*call)(const T*, int, TevSize, Tev64f*, Tev64f*),
           TevSize roi = hd, int threads = 1) {
  return bench::add({.name = name, .target = target, .roi = roi, .threads = threads, .prepare = [=] {
                       auto s = bench::noise<T>(roi);
                       return [=] {
                         Tev64f mean, deviation;
                         call(s->data(), roi.width * int{sizeof(T)}, roi, &mean, &deviation);
                       };
                     }});
}

template <class T>
bool masked(const char* name, double target,
            TevStatus (*call)(const T*, int, const Tev8u*, int, TevSize, Tev64f*, Tev64f*)) {
  return bench::add({.name = name, .target = target, .prepare = [=] {
                       auto s = bench::noise<T>();
                       auto mask = halfMask();
                       return [=] {
                         Tev64f mean, deviation;
                         call(s->data(), hd.width * int{sizeof(T)}, mask->data(), hd.width, hd, &mean, &deviation);
                       };
                     }});
}

template <class T>
bool meanOnly(const char* name, TevStatus (*call)(const T*, int, const Tev8u*, int, TevSize, Tev64f*), TevSize roi = hd,
              int threads = 1) {
  return bench::add({.name = name, .roi = roi, .threads = threads, .prepare = [=] {
                       auto s = bench::noise<T>(roi);
                       auto mask = halfMask(roi);
                       return [=] {
                         Tev64f mean;
                         call(s->data(), roi.width * int{sizeof(T)}, mask->data(), roi.width, roi, &mean);
                       };
                     }});
}

template <class T>
bool extremes(const char* name, double target,
              TevStatus (*call)(const T*, int, TevSize, Tev32f*, Tev32f*, TevPoint*, TevPoint*), TevSize roi = hd,
              int threads = 1) {
  return bench::add({.name = name, .target = target, .roi = roi, .threads = threads, .prepare = [=] {
                       auto s = bench::noise<T>(roi);
                       return [=] {
                         Tev32f lo, hi;
                         TevPoint at, to;
                         call(s->data(), roi.width * int{sizeof(T)}, roi, &lo, &hi, &at, &to);
                       };
                     }});
}

template <class T>
bool extremesMasked(const char* name, double target,
                    TevStatus (*call)(const T*, int, const Tev8u*, int, TevSize, Tev32f*, Tev32f*, TevPoint*,
                                      TevPoint*)) {
  return bench::add({.name = name, .target = target, .prepare = [=] {
                       auto s = bench::noise<T>();
                       auto mask = halfMask();
                       return [=] {
                         Tev32f lo, hi;
                         TevPoint at, to;
                         call(s->data(), hd.width * int{sizeof(T)}, mask->data(), hd.width, hd, &lo, &hi, &at, &to);
                       };
                     }});
}

// Just above the gates of two threads.
constexpr TevSize twoShares = {512, 512}, halfShares = {512, 256}, smallShares = {128, 128};

const bool entries[] = {
    plain("Mean_StdDev 8u", 1.8, teviMean_StdDev_8u_C1R),
    masked("Mean_StdDev 8u masked", 4, teviMean_StdDev_8u_C1MR),
    plain("Mean_StdDev 8s", 0, teviMean_StdDev_8s_C1R),
    plain("Mean_StdDev 16u", 0, teviMean_StdDev_16u_C1R),
    masked("Mean_StdDev 16u masked", 0, teviMean_StdDev_16u_C1MR),
    plain("Mean_StdDev 32f", 90, teviMean_StdDev_32f_C1R),
    masked("Mean_StdDev 32f masked", 0, teviMean_StdDev_32f_C1MR),
    meanOnly("Mean 8u masked", teviMean_8u_C1MR),
    meanOnly("Mean 32f masked", teviMean_32f_C1MR),
    extremes("MinMaxIndx 8u", 3, teviMinMaxIndx_8u_C1R),
    extremes("MinMaxIndx 32f", 0, teviMinMaxIndx_32f_C1R),
    extremesMasked("MinMaxIndx 8u masked", 0, teviMinMaxIndx_8u_C1MR),
    extremesMasked("MinMaxIndx 32f masked", 10, teviMinMaxIndx_32f_C1MR),
    plain("Mean_StdDev 8u 512x512, 1 thread", 0, teviMean_StdDev_8u_C1R, twoShares),
    plain("Mean_StdDev 8u 512x512, 2 threads", 0, teviMean_StdDev_8u_C1R, twoShares, 2),
    plain("Mean_StdDev 32f 512x256, 1 thread", 0, teviMean_StdDev_32f_C1R, halfShares),
    plain("Mean_StdDev 32f 512x256, 2 threads", 0, teviMean_StdDev_32f_C1R, halfShares, 2),
    meanOnly("Mean 8u masked 512x512, 1 thread", teviMean_8u_C1MR, twoShares),
    meanOnly("Mean 8u masked 512x512, 2 threads", teviMean_8u_C1MR, twoShares, 2),
    extremes("MinMaxIndx 8u 128x128, 1 thread", 0, teviMinMaxIndx_8u_C1R, smallShares),
    extremes("MinMaxIndx 8u 128x128, 2 threads", 0, teviMinMaxIndx_8u_C1R, smallShares, 2),
    extremes("MinMaxIndx 8u, 2 threads", 0, teviMinMaxIndx_8u_C1R, hd, 2),
    extremes("MinMaxIndx 32f, 2 threads", 0, teviMinMaxIndx_32f_C1R, hd, 2),
};

}  // namespace
