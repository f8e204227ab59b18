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

// One layer of rate 1.5 with a kernel of five taps; up starts from the image that down leads to.
template <class T, class Tap, class Init, class Layer>
std::function<std::function<void()>()> layer(Init init, Layer step, bool up) {
  return [=] {
    const Tap kernel[] = {1, 4, 6, 4, 1};
    TevSize smaller;
    teviGetPyramidDownROI(hd, &smaller, 1.5F);
    const TevSize from = up ? smaller : hd, to = up ? hd : smaller;
    TevPyramidLayerState* made = nullptr;
    init(&made, from, 1.5F, kernel, 5, 2);
    const std::shared_ptr<TevPyramidLayerState> state(made, teviPyramidLayerDownFree);
    auto src = bench::noise<T>(from), dst = bench::noise<T>(to);
    return [=] {
      step(src->data(), from.width * int{sizeof(T)}, from, dst->data(), to.width * int{sizeof(T)}, to, state.get());
    };
  };
}

const bool layerDown8u = bench::add(
    {.name = "PyramidLayerDown 8u, rate 1.5",
     .prepare = layer<Tev8u, Tev16s>(teviPyramidLayerDownInitAlloc_8u_C1R, teviPyramidLayerDown_8u_C1R, false)});
const bool layerDown16u = bench::add(
    {.name = "PyramidLayerDown 16u, rate 1.5",
     .prepare = layer<Tev16u, Tev16s>(teviPyramidLayerDownInitAlloc_16u_C1R, teviPyramidLayerDown_16u_C1R, false)});
const bool layerDown32f = bench::add(
    {.name = "PyramidLayerDown 32f, rate 1.5",
     .prepare = layer<Tev32f, Tev32f>(teviPyramidLayerDownInitAlloc_32f_C1R, teviPyramidLayerDown_32f_C1R, false)});
const bool layerUp8u =
    bench::add({.name = "PyramidLayerUp 8u, rate 1.5",
                .prepare = layer<Tev8u, Tev16s>(teviPyramidLayerUpInitAlloc_8u_C1R, teviPyramidLayerUp_8u_C1R, true)});
const bool layerUp16u = bench::add(
    {.name = "PyramidLayerUp 16u, rate 1.5",
     .prepare = layer<Tev16u, Tev16s>(teviPyramidLayerUpInitAlloc_16u_C1R, teviPyramidLayerUp_16u_C1R, true)});
const bool layerUp32f = bench::add(
    {.name = "PyramidLayerUp 32f, rate 1.5",
     .prepare = layer<Tev32f, Tev32f>(teviPyramidLayerUpInitAlloc_32f_C1R, teviPyramidLayerUp_32f_C1R, true)});

}  // namespace
