#include "tevcv/morphology.h"

#include <memory>
#include <string>
#include <vector>

#include "bench.h"

namespace {

using bench::hd;

// A square of ones, or a disc: cells within half the side of the centre.
std::vector<Tev8u> square(int side) { return std::vector<Tev8u>(static_cast<size_t>(side) * side, Tev8u{1}); }

std::vector<Tev8u> disc(int side) {
  std::vector<Tev8u> cells;
  const int r = side / 2;
  for (int y = -r; y <= r; ++y)
    for (int x = -r; x <= r; ++x) cells.push_back(x * x + y * y <= r * r + r / 2);
  return cells;
}

// The square without its centre: a general element.
std::vector<Tev8u> frame(int side) {
  auto cells = square(side);
  cells[cells.size() / 2] = 0;
  return cells;
}

template <class T, class InitAlloc, class Operation>
std::function<void()> operation(InitAlloc initAlloc, Operation run, int channels, const std::vector<Tev8u>& mask,
                                int side) {
  auto src = bench::noise<T>(hd, channels), dst = bench::noise<T>(hd, channels);
  TevMorphState* made = nullptr;
  initAlloc(hd.width, mask.data(), {side, side}, {side / 2, side / 2}, &made);
  const std::shared_ptr<TevMorphState> state(made, [](TevMorphState* p) { teviMorphologyFree(p); });
  const int step = hd.width * channels * static_cast<int>(sizeof(T));
  return [=] { run(src->data(), step, dst->data(), step, hd, tevBorderRepl, state.get()); };
}

bool erode8u(const char* name, double target, std::vector<Tev8u> (*shape)(int), int side) {
  return bench::add({.name = name, .target = target, .prepare = [=] {
                       return operation<Tev8u>(teviMorphologyInitAlloc_8u_C1R, teviErodeBorderReplicate_8u_C1R, 1,
                                               shape(side), side);
                     }});
}

const bool rectangles[] = {
    erode8u("Erode rectangle 3x3 8u", 3.4, square, 3),     erode8u("Erode rectangle 15x15 8u", 9, square, 15),
    erode8u("Erode rectangle 16x16 8u", 0, square, 16),    erode8u("Erode rectangle 63x63 8u", 0, square, 63),
    erode8u("Erode rectangle 255x255 8u", 0, square, 255),
};

const bool rectangle32f = bench::add({.name = "Erode rectangle 15x15 32f", .target = 40, .prepare = [] {
                                        return operation<Tev32f>(teviMorphologyInitAlloc_32f_C1R,
                                                                 teviErodeBorderReplicate_32f_C1R, 1, square(15), 15);
                                      }});

const bool rectangleC3 = bench::add({.name = "Erode rectangle 15x15 8u C3", .target = 30, .prepare = [] {
                                       return operation<Tev8u>(teviMorphologyInitAlloc_8u_C3R,
                                                               teviErodeBorderReplicate_8u_C3R, 3, square(15), 15);
                                     }});

const bool discs[] = {
    erode8u("Erode disc 5x5 8u", 7, disc, 5),
    erode8u("Erode disc 15x15 8u", 45, disc, 15),
    erode8u("Erode disc 31x31 8u", 0, disc, 31),
};

const bool general[] = {
    erode8u("Erode general 3x3 8u", 0, frame, 3),
    erode8u("Erode general 15x15 8u", 0, frame, 15),
};

const bool general32f = bench::add({.name = "Erode general 15x15 32f", .prepare = [] {
                                      return operation<Tev32f>(teviMorphologyInitAlloc_32f_C1R,
                                                               teviErodeBorderReplicate_32f_C1R, 1, frame(15), 15);
                                    }});

template <class Operation>
bool composed8u(const char* name, double target, Operation run) {
  return bench::add(
      {.name = name, .target = target, .prepare = [=] {
         auto src = bench::noise<Tev8u>(), dst = bench::noise<Tev8u>();
         const auto mask = square(15);
         TevMorphAdvState* made = nullptr;
         teviMorphAdvInitAlloc_8u_C1R(&made, hd, mask.data(), {15, 15}, {7, 7});
         const std::shared_ptr<TevMorphAdvState> state(made, [](TevMorphAdvState* p) { teviMorphAdvFree(p); });
         return [=] { run(src->data(), hd.width, dst->data(), hd.width, hd, tevBorderRepl, state.get()); };
       }});
}

const bool opening = composed8u("Open 15x15 8u", 18, teviMorphOpenBorder_8u_C1R);
const bool gradient = composed8u("Gradient 15x15 8u", 0, teviMorphGradientBorder_8u_C1R);

}  // namespace
