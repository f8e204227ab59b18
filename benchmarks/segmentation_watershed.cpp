#include <algorithm>

#include "bench.h"
#include "tevcv/segmentation.h"

namespace {

using bench::hd;

// Three springs far apart, laid anew before each call: the call overwrites them.
template <class Segment>
std::function<void()> fromThreeMarkers(int bufferSize, Segment segment) {
  auto markers = std::make_shared<std::vector<Tev8u>>(size_t(hd.width) * hd.height);
  auto buffer = std::make_shared<std::vector<Tev8u>>(size_t(bufferSize) + 64);
  Tev8u* const aligned = buffer->data() + (-reinterpret_cast<uintptr_t>(buffer->data()) & 63);
  return [=, keep = buffer] {
    std::fill(markers->begin(), markers->end(), Tev8u{0});
    int label = 0;
    for (const TevPoint p : {TevPoint{200, 150}, TevPoint{1700, 300}, TevPoint{900, 900}})
      (*markers)[size_t(p.y) * hd.width + p.x] = Tev8u(++label);
    segment(markers->data(), aligned);
  };
}

bool watershed(const char* name, double target, int norm, uint32_t flags) {
  return bench::add({.name = name, .target = target, .prepare = [=] {
                       int size = 0;
                       teviSegmentWatershedGetBufferSize_8u_C1R(hd, &size);
                       return fromThreeMarkers(size, [=, src = bench::noise<Tev8u>()](Tev8u* markers, Tev8u* buffer) {
                         teviSegmentWatershed_8u_C1IR(src->data(), hd.width, markers, hd.width, hd, norm, flags,
                                                      buffer);
                       });
                     }});
}

const bool watersheds[] = {
    watershed("Watershed, flooding, 3 markers", 1200, tevWatershedNormChess, tevWatershedQueue),
    watershed("Watershed, flooding, 4 neighbours", 0, tevWatershedNormCity, tevWatershedQueue),
    watershed("Watershed, flooding, boundaries", 0, tevWatershedNormChess, tevWatershedQueue | tevWatershedBound8),
    watershed("Watershed, sweeping, chess", 0, tevWatershedNormChess, tevWatershedSweep),
    watershed("Watershed, sweeping, city", 0, tevWatershedNormCity, tevWatershedSweep),
    watershed("Watershed, sweeping, chamfer", 0, tevWatershedNormChamfer, tevWatershedSweep),
    watershed("Watershed, sweeping, eikonal", 0, tevWatershedNormEikonal, tevWatershedSweep | tevWatershedBound4),
};

const bool gradient =
    bench::add({.name = "Gradient segmentation, 3 markers", .prepare = [] {
                  int size = 0;
                  teviSegmentGradientGetBufferSize_8u_C1R(hd, &size);
                  return fromThreeMarkers(size, [src = bench::noise<Tev8u>()](Tev8u* markers, Tev8u* buffer) {
                    teviSegmentGradient_8u_C1IR(src->data(), hd.width, markers, hd.width, hd, 0, 0, buffer);
                  });
                }});

const bool colour = bench::add(
    {.name = "Gradient segmentation, colour, boundaries", .prepare = [] {
       int size = 0;
       teviSegmentGradientGetBufferSize_8u_C3R(hd, &size);
       return fromThreeMarkers(size, [src = bench::noise<Tev8u>(hd, 3)](Tev8u* markers, Tev8u* buffer) {
         teviSegmentGradient_8u_C3IR(src->data(), hd.width * 3, markers, hd.width, hd, 0, tevWatershedBound8, buffer);
       });
     }});

}  // namespace
