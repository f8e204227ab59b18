#include "tevcv/pyramids.h"

#include "bench.h"

namespace {

using bench::hd;

// One Gaussian step of an image of `channels` channels.
template <class T, class Step, class BufSize>
std::function<std::function<void()>()> gaussian(Step step, BufSize bufSize, int channels, bool up) {
  return [=] {
    int size = 0;
    bufSize(hd.width, tevDataType8u, channels, &size);
    auto src = bench::noise<T>(hd, channels);
    auto dst = bench::noise<T>(up ? TevSize{2 * hd.width, 2 * hd.height} : hd, channels, 2);
    auto buffer = std::make_shared<std::vector<Tev8u>>(size);
    const int row = hd.width * channels * int{sizeof(T)};
    return [=] { step(src->data(), row, dst->data(), up ? 2 * row : row, hd, buffer->data()); };
  };
}

const bool down8u =
    bench::add({.name = "PyrDown 8u",
                .target = 7,
                .prepare = gaussian<Tev8u>(teviPyrDown_Gauss5x5_8u_C1R, teviPyrDownGetBufSize_Gauss5x5, 1, false)});
const bool down8uC3 =
    bench::add({.name = "PyrDown 8u C3",
                .target = 25,
                .prepare = gaussian<Tev8u>(teviPyrDown_Gauss5x5_8u_C3R, teviPyrDownGetBufSize_Gauss5x5, 3, false)});
const bool down32f =
    bench::add({.name = "PyrDown 32f",
                .target = 12,
                .prepare = gaussian<Tev32f>(teviPyrDown_Gauss5x5_32f_C1R, teviPyrDownGetBufSize_Gauss5x5, 1, false)});
const bool up8u =
    bench::add({.name = "PyrUp 8u",
                .target = 20,
                .prepare = gaussian<Tev8u>(teviPyrUp_Gauss5x5_8u_C1R, teviPyrUpGetBufSize_Gauss5x5, 1, true)});
const bool up8uC3 =
    bench::add({.name = "PyrUp 8u C3",
                .prepare = gaussian<Tev8u>(teviPyrUp_Gauss5x5_8u_C3R, teviPyrUpGetBufSize_Gauss5x5, 3, true)});
const bool up32f =
    bench::add({.name = "PyrUp 32f",
                .prepare = gaussian<Tev32f>(teviPyrUp_Gauss5x5_32f_C1R, teviPyrUpGetBufSize_Gauss5x5, 1, true)});

}  // namespace
