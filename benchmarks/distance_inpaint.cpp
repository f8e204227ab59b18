#include <cmath>

#include "bench.h"
#include "tevcv/distance.h"

namespace {

using bench::hd;

constexpr TevSize vga = {640, 480};

using Mask = std::shared_ptr<std::vector<Tev8u>>;
using Times = std::shared_ptr<std::vector<Tev32f>>;

// A mask with 255 where inside(x, y) holds.
template <class Inside>
Mask mask(TevSize roi, Inside inside) {
  auto m = std::make_shared<std::vector<Tev8u>>(static_cast<size_t>(roi.width) * roi.height);
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) (*m)[static_cast<size_t>(y) * roi.width + x] = inside(x, y) ? 255 : 0;
  return m;
}

bool inHole(int x, int y) { return x >= 300 && x < 330 && y >= 170 && y < 300; }

void march(const Mask& m, const Times& t, TevSize roi, Tev32f radius,
           const std::shared_ptr<std::vector<Tev8u>>& buffer) {
  teviFastMarching_8u32f_C1R(m->data(), roi.width, t->data(), roi.width * 4, roi, radius, buffer->data());
}

std::shared_ptr<std::vector<Tev8u>> bufferFor(TevSize roi) {
  int size = 0;
  teviFastMarchingGetBufferSize_8u32f_C1R(roi, &size);
  return std::make_shared<std::vector<Tev8u>>(size);
}

template <class Inside>
bool addMarch(const char* name, double target, TevSize roi, int threads, Tev32f radius, Inside inside) {
  return bench::add({.name = name, .target = target, .roi = roi, .threads = threads, .prepare = [=] {
                       auto m = mask(roi, inside);
                       auto t = bench::noise<Tev32f>(roi);
                       auto buffer = bufferFor(roi);
                       return [=] { march(m, t, roi, radius, buffer); };
                     }});
}

// About one zero pixel in 40000.
bool fewFronts(int x, int y) {
  return ((static_cast<unsigned>(x) * 7919U + static_cast<unsigned>(y) * 104729U) % 39989U) != 0;
}

constexpr TevSize square = {1024, 1024};

bool inDisc(int x, int y) {
  const int dx = x - 512, dy = y - 512;
  return dx * dx + dy * dy < 166886;  // half of the square
}

// A corridor of 8 pixels that winds outwards, half of the square.
bool inSpiral(int x, int y) {
  const double dx = x - 512, dy = y - 512, r = std::sqrt(dx * dx + dy * dy);
  return std::fmod(r / 16 + std::atan2(dy, dx) / 6.283185307179586 + 1, 1.0) < 0.5;
}

bool inChecker(int x, int y) { return ((x ^ y) & 1) != 0; }

const bool marching[] = {
    addMarch("FastMarching 640x480, hole 30x130", 60, vga, 1, 0, inHole),
    addMarch("FastMarching 640x480, hole 30x130, radius 5", 0, vga, 1, 5, inHole),
    addMarch("FastMarching 640x480, around 30x130", 0, vga, 1, 0, [](int x, int y) { return !inHole(x, y); }),
    addMarch("FastMarching few fronts", 0, hd, 1, 0, fewFronts),
    addMarch("FastMarching few fronts, two threads", 0, hd, 2, 0, fewFronts),
    addMarch("FastMarching few fronts, radius 5", 0, hd, 1, 5, fewFronts),
    addMarch("FastMarching few fronts, radius 5, two threads", 0, hd, 2, 5, fewFronts),
    addMarch("FastMarching 1024x1024, disc", 0, square, 1, 0, inDisc),
    addMarch("FastMarching 1024x1024, spiral", 0, square, 1, 0, inSpiral),
    addMarch("FastMarching 1024x1024, checkerboard", 0, square, 1, 0, inChecker),
    addMarch("FastMarching 1024x1024, disc, radius 5", 0, square, 1, 5, inDisc),
    addMarch("FastMarching 1024x1024, spiral, radius 5", 0, square, 1, 5, inSpiral),
    addMarch("FastMarching 1024x1024, checkerboard, radius 5", 0, square, 1, 5, inChecker),
};

// The whole work for one image: distances, state, filling.
template <int channels>
bool addInpaint(const char* name, double target, TevSize roi, int method, bool (*inside)(int, int), bool wholeWork) {
  return bench::add({.name = name, .target = target, .roi = roi, .prepare = [=] {
                       auto src = bench::noise<Tev8u>(roi, channels), dst = bench::noise<Tev8u>(roi, channels);
                       auto m = mask(roi, inside);
                       auto t = bench::noise<Tev32f>(roi);
                       auto buffer = bufferFor(roi);
                       march(m, t, roi, 0, buffer);
                       const auto init = channels == 1 ? teviInpaintInitAlloc_8u_C1R : teviInpaintInitAlloc_8u_C3R;
                       const auto apply = channels == 1 ? teviInpaint_8u_C1R : teviInpaint_8u_C3R;
                       TevInpaintState* made = nullptr;
                       init(&made, t->data(), roi.width * 4, m->data(), roi.width, roi, 5, method);
                       const std::shared_ptr<TevInpaintState> state(made, teviInpaintFree_8u_C1R);
                       const int step = roi.width * channels;
                       return std::function<void()>([=] {
                         if (!wholeWork) {
                           apply(src->data(), step, dst->data(), step, roi, state.get());
                           return;
                         }
                         march(m, t, roi, 0, buffer);
                         TevInpaintState* fresh = nullptr;
                         init(&fresh, t->data(), roi.width * 4, m->data(), roi.width, roi, 5, method);
                         apply(src->data(), step, dst->data(), step, roi, fresh);
                         teviInpaintFree_8u_C1R(fresh);
                       });
                     }});
}

const bool inpainting[] = {
    addInpaint<1>("Inpaint 640x480, hole 30x130, radius 5", 55, vga, tevInpaintGradient, inHole, false),
    addInpaint<1>("Inpaint 640x480, hole 30x130, radius 5, isophotes", 55, vga, tevInpaintIsophote, inHole, false),
    addInpaint<1>("Inpaint 640x480, hole 30x130, radius 5, distances and state included", 0, vga, tevInpaintGradient,
                  inHole, true),
    addInpaint<3>("Inpaint C3 640x480, hole 30x130, radius 5", 0, vga, tevInpaintGradient, inHole, false),
    addInpaint<3>("Inpaint C3 640x480, hole 30x130, radius 5, isophotes", 0, vga, tevInpaintIsophote, inHole, false),
    addInpaint<1>("Inpaint 1024x1024, disc, radius 5", 0, square, tevInpaintGradient, inDisc, true),
    addInpaint<1>("Inpaint 1024x1024, spiral, radius 5", 0, square, tevInpaintGradient, inSpiral, true),
    addInpaint<1>("Inpaint 1024x1024, checkerboard, radius 5", 0, square, tevInpaintGradient, inChecker, true),
};

}  // namespace
