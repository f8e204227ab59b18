#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "bench.h"
#include "tevcv/morphology.h"

namespace {

using bench::hd;

// A paraboloid of values, `side` cells wide: the rolling ball of background subtraction.
template <class Cell>
std::vector<Cell> ball(int side) {
  std::vector<Cell> cells;
  const int r = side / 2;
  for (int y = -r; y <= r; ++y)
    for (int x = -r; x <= r; ++x) cells.push_back(static_cast<Cell>(-(x * x + y * y)));
  return cells;
}

template <class T, class Cell, class InitAlloc, class Free, class Operation>
bool gray(const char* name, InitAlloc initAlloc, Free release, Operation run, int side) {
  return bench::add({.name = name, .prepare = [=] {
                       auto src = bench::noise<T>(), dst = bench::noise<T>();
                       const auto kernel = ball<Cell>(side);
                       TevMorphGrayState* made = nullptr;
                       initAlloc(&made, hd, kernel.data(), {side, side}, {side / 2, side / 2});
                       const std::shared_ptr<TevMorphGrayState> state(made, [=](TevMorphGrayState* p) { release(p); });
                       const int step = hd.width * static_cast<int>(sizeof(T));
                       return [=] { run(src->data(), step, dst->data(), step, hd, tevBorderRepl, state.get()); };
                     }});
}

bool dilate8u(const char* name, int side) {
  return gray<Tev8u, Tev32s>(name, teviMorphGrayInitAlloc_8u_C1R, teviMorphGrayFree_8u_C1R, teviGrayDilateBorder_8u_C1R,
                             side);
}
bool dilate32f(const char* name, int side) {
  return gray<Tev32f, Tev32f>(name, teviMorphGrayInitAlloc_32f_C1R, teviMorphGrayFree_32f_C1R,
                              teviGrayDilateBorder_32f_C1R, side);
}

const bool grays[] = {
    dilate8u("Gray dilate 3x3 8u", 3),   dilate8u("Gray dilate 5x5 8u", 5),   dilate8u("Gray dilate 15x15 8u", 15),
    dilate32f("Gray dilate 3x3 32f", 3), dilate32f("Gray dilate 5x5 32f", 5), dilate32f("Gray dilate 15x15 32f", 15),
};

enum Marker {
  lowered,  // the mask less 40: domes up to that height, values travel a few pixels
  framed    // the mask on the image's frame and nothing inside: values travel across the image
};

// The marker is laid anew for each call: the figures hold one copy (four for floats) for that.
template <class T, class GetBufferSize, class Operation>
bool reconstruction(const char* name, GetBufferSize getBufferSize, Operation run, Marker kind, TevNorm norm,
                    int threads) {
  return bench::add({.name = name, .threads = threads, .prepare = [=] {
                       auto mask = bench::noise<T>(), marker = bench::noise<T>(), work = bench::noise<T>();
                       for (int y = 0; y < hd.height; ++y)
                         for (int x = 0; x < hd.width; ++x) {
                           T& value = (*marker)[static_cast<size_t>(y) * hd.width + x];
                           const bool inside = x > 0 && y > 0 && x < hd.width - 1 && y < hd.height - 1;
                           if (kind == lowered)
                             value = value > 40 ? static_cast<T>(value - 40) : T{0};
                           else if (inside)
                             value = 0;
                         }
                       int size = 0;
                       getBufferSize(hd, &size);
                       const auto buffer = std::make_shared<std::vector<Tev8u>>(static_cast<size_t>(size));
                       const int step = hd.width * static_cast<int>(sizeof(T));
                       return [=] {
                         std::copy(marker->begin(), marker->end(), work->begin());
                         run(mask->data(), step, work->data(), step, hd, buffer->data(), norm);
                       };
                     }});
}

bool reconstruct8u(const char* name, Marker kind, TevNorm norm, int threads) {
  return reconstruction<Tev8u>(name, teviMorphReconstructGetBufferSize_8u_C1, teviMorphReconstructDilate_8u_C1IR, kind,
                               norm, threads);
}
bool reconstruct32f(const char* name, Marker kind, TevNorm norm, int threads) {
  return reconstruction<Tev32f>(name, teviMorphReconstructGetBufferSize_32f_C1, teviMorphReconstructDilate_32f_C1IR,
                                kind, norm, threads);
}

const bool reconstructions[] = {
    reconstruct8u("Reconstruct domes 8u, 4 neighbours", lowered, tevNormL1, 1),
    reconstruct8u("Reconstruct domes 8u, 8 neighbours", lowered, tevNormInf, 1),
    reconstruct8u("Reconstruct domes 8u, 8 neighbours, 2 threads", lowered, tevNormInf, 2),
    reconstruct8u("Reconstruct from frame 8u, 4 neighbours", framed, tevNormL1, 1),
    reconstruct8u("Reconstruct from frame 8u, 4, 2 threads", framed, tevNormL1, 2),
    reconstruct32f("Reconstruct domes 32f, 8 neighbours", lowered, tevNormInf, 1),
    reconstruct32f("Reconstruct from frame 32f, 4 neighbours", framed, tevNormL1, 1),
    reconstruct32f("Reconstruct from frame 32f, 4, 2 threads", framed, tevNormL1, 2),
};

}  // namespace
