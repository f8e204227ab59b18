#include "cli/features.h"

#include <algorithm>

#include "tevcv.h"

namespace cli {

Image<Tev8u> edgeMap(const Image<Tev8u>& grey, float low, float high, Result& result, TevMaskSize mask) {
  const TevSize roi = grey.size;
  Image<Tev16s> dx(roi), dy(roi);
  Image<Tev8u> found(roi);
  result.timed([&] {
    int sizes[3] = {};
    TEV_CHECK(teviFilterSobelNegVertGetBufferSize_8u16s_C1R, roi, mask, &sizes[0]);
    TEV_CHECK(teviFilterSobelHorizGetBufferSize_8u16s_C1R, roi, mask, &sizes[1]);
    TEV_CHECK(teviCannyGetSize, roi, &sizes[2]);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(*std::max_element(sizes, sizes + 3)));
    TEV_CHECK(teviFilterSobelNegVertBorder_8u16s_C1R, grey.data(), grey.step(), dx.data(), dx.step(), roi, mask,
              tevBorderRepl, 0, buffer.data());
    TEV_CHECK(teviFilterSobelHorizBorder_8u16s_C1R, grey.data(), grey.step(), dy.data(), dy.step(), roi, mask,
              tevBorderRepl, 0, buffer.data());
    TEV_CHECK(teviCanny_16s8u_C1R, dx.data(), dx.step(), dy.data(), dy.step(), found.data(), found.step(), roi, low,
              high, buffer.data());
  });
  return found;
}

std::vector<TevPoint> strongestPeaks(const Image<Tev32f>& measured, TevSize roi, const PeakOptions& options,
                                     Result& result) {
  std::vector<TevPoint> found(static_cast<std::size_t>(roi.width) * static_cast<std::size_t>(roi.height));
  int count = 0;
  result.timed([&] {
    int size = 0;
    TEV_CHECK(teviFindPeaks3x3GetBufferSize_32f_C1R, roi.width, &size);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
    TEV_CHECK(teviFindPeaks3x3_32f_C1R, measured.data(), measured.step(), roi, options.threshold, found.data(),
              static_cast<int>(found.size()), &count, options.norm, options.border, buffer.data());
  });
  found.resize(static_cast<std::size_t>(count));
  std::erase_if(found, [&](const TevPoint& p) { return !(measured.at(p.x, p.y) > 0); });  // no minima
  std::stable_sort(found.begin(), found.end(),
                   [&](const TevPoint& a, const TevPoint& b) { return measured.at(a.x, a.y) > measured.at(b.x, b.y); });
  std::vector<TevPoint> kept;
  Image<Tev8u> taken(roi);  // within the distance of one that is kept
  const int reach = options.distance - 1;
  for (const TevPoint& p : found) {
    if (taken.at(p.x, p.y)) continue;
    if (static_cast<int>(kept.size()) == options.most) break;
    kept.push_back(p);
    for (int y = std::max(0, p.y - reach); y <= std::min(roi.height - 1, p.y + reach); ++y)
      for (int x = std::max(0, p.x - reach); x <= std::min(roi.width - 1, p.x + reach); ++x)
        if ((x - p.x) * (x - p.x) + (y - p.y) * (y - p.y) < options.distance * options.distance) taken.at(x, y) = 1;
  }
  return kept;
}

Tev32f strongest(const Image<Tev32f>& measured, TevSize roi) {
  Tev32f most = 0;
  for (int y = 0; y < roi.height; ++y)
    most = std::max(most, *std::max_element(measured.row(y), measured.row(y) + roi.width));
  return most;
}

}  // namespace cli
