#include <algorithm>
#include <cstring>

#include "bench.h"
#include "tevcv/segmentation.h"

namespace {

using bench::hd;

template <class Query>
std::shared_ptr<std::vector<Tev8u>> scratch(Query query) {
  int size = 0;
  query(hd, &size);
  return std::make_shared<std::vector<Tev8u>>(static_cast<size_t>(size));
}

// A fill of the whole image. Each call's new value is the next one's seed, so that every call does the same work.
const bool whole = bench::add(
    {.name = "Flood fill, equality, whole image", .target = 25, .prepare = [] {
       auto image = bench::noise<Tev8u>();
       std::fill(image->begin(), image->end(), Tev8u{1});
       auto buffer = scratch(teviFloodFillGetSize);
       auto value = std::make_shared<Tev8u>(Tev8u{1});
       return [=] {
         TevConnectedRegion region;
         *value ^= 1;
         teviFloodFill_4Con_8u_C1IR(image->data(), hd.width, hd, {960, 540}, *value, &region, buffer->data());
       };
     }});

// The same image with holes in every `period`-th pixel or so: short runs.
template <class Fill>
bool speckled(const char* name, unsigned period, Fill fill) {
  return bench::add({.name = name, .prepare = [=] {
                       auto image = bench::noise<Tev8u>();
                       std::uint32_t state = 1;
                       for (Tev8u& p : *image) {
                         state = state * 1664525U + 1013904223U;
                         p = (state >> 16) % period == 0 ? 9 : 1;
                       }
                       (*image)[size_t{540} * 1920 + 960] = 1;
                       auto buffer = scratch(teviFloodFillGetSize);
                       auto value = std::make_shared<Tev8u>(Tev8u{1});
                       return [=] {
                         TevConnectedRegion region;
                         *value ^= 1;
                         fill(image->data(), hd.width, hd, TevPoint{960, 540}, *value, &region, buffer->data());
                       };
                     }});
}

const bool speckles[] = {
    speckled("Flood fill, equality, a hole in 20 pixels", 20, teviFloodFill_4Con_8u_C1IR),
    speckled("Flood fill, equality, 8 neighbours, a hole in 4", 4, teviFloodFill_8Con_8u_C1IR),
};

const bool range = bench::add({.name = "Flood fill, fixed range, 32f C3", .prepare = [] {
                                 auto image = bench::noise<Tev32f>(hd, 3);
                                 for (Tev32f& p : *image) p = p / 255;
                                 auto buffer = scratch(teviFloodFillGetSize);
                                 auto high = std::make_shared<bool>(false);
                                 return [=] {
                                   TevConnectedRegion region;
                                   *high = !*high;
                                   const Tev32f value[3] = {*high ? 7.0F : 2.0F, 0, 0}, reach[3] = {2, 2, 2};
                                   teviFloodFill_Range4Con_32f_C3IR(image->data(), hd.width * 12, hd, {960, 540}, value,
                                                                    reach, reach, &region, buffer->data());
                                 };
                               }});

const bool floating = bench::add(
    {.name = "Flood fill, floating range, 8u", .prepare = [] {
       auto image = bench::noise<Tev8u>();
       auto work = bench::noise<Tev8u>();
       auto buffer = scratch(teviFloodFillGetSize_Grad);
       return [=] {
         TevConnectedRegion region;
         std::memcpy(work->data(), image->data(), image->size());
         teviFloodFill_Grad4Con_8u_C1IR(work->data(), hd.width, hd, {960, 540}, 0, 40, 40, &region, buffer->data());
       };
     }});

// Edges of a picture: rings of one or two pixels' width in cells of `cell` pixels and stray dots.
std::shared_ptr<std::vector<Tev8u>> edgeMap(int cell) {
  auto image = bench::noise<Tev8u>();
  std::uint32_t state = 7;
  for (int y = 0; y < hd.height; ++y)
    for (int x = 0; x < hd.width; ++x) {
      state = state * 1664525U + 1013904223U;
      const int dx = x % cell - cell / 2, dy = y % cell - cell / 2, r2 = dx * dx + dy * dy, r = cell * 2 / 5;
      const bool ring = (r2 >= r * r && r2 < (r + 1) * (r + 1)) || (r2 >= r * r / 4 && r2 < (r / 2 + 1) * (r / 2 + 1));
      (*image)[static_cast<size_t>(y) * 1920 + static_cast<size_t>(x)] = ring || (state >> 16) % 200 == 0 ? 255 : 0;
    }
  return image;
}

bool labels(const char* name, double target, int cell) {
  return bench::add({.name = name, .target = target, .prepare = [=] {
                       auto image = edgeMap(cell), work = edgeMap(cell);
                       auto buffer = scratch(teviLabelMarkersGetBufferSize_8u_C1R);
                       return [=] {
                         int count = 0;
                         std::memcpy(work->data(), image->data(), image->size());
                         teviLabelMarkers_8u_C1IR(work->data(), hd.width, hd, 1, 254, 0, &count, buffer->data());
                       };
                     }});
}

// About 5 and 14 percent of the pixels are edges.
const bool edges[] = {labels("Label markers on an edge map", 30, 90), labels("Label markers, dense edge map", 0, 24)};

bool bounds(const char* name, int norm) {
  return bench::add({.name = name, .prepare = [=] {
                       auto image = bench::noise<Tev8u>(), work = bench::noise<Tev8u>();
                       for (size_t i = 0; i < image->size(); ++i)
                         (*image)[i] = static_cast<Tev8u>(1 + (i % 1920 / 50 + i / 1920 / 40) % 200);
                       return [=] {
                         std::memcpy(work->data(), image->data(), image->size());
                         teviBoundSegments_8u_C1IR(work->data(), hd.width, hd, 255, norm);
                       };
                     }});
}

const bool segmentBounds[] = {bounds("Segment bounds, 8 neighbours", 0), bounds("Segment bounds, 4 neighbours", 1)};

}  // namespace
