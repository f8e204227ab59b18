// Pixels rearranged: planes of a colour picture, other element types, and the extent that shows them well.
#pragma once

#include <algorithm>
#include <cmath>

#include "cli/picture.h"

namespace cli {

// One channel of an image by itself, and back.
template <class T>
Image<T> plane(const Image<T>& image, int channel) {
  Image<T> result(image.size);
  for (std::size_t i = 0; i < result.elements.size(); ++i)
    result.elements[i] =
        image.elements[i * static_cast<std::size_t>(image.channels) + static_cast<std::size_t>(channel)];
  return result;
}
template <class T>
void setPlane(Image<T>& image, int channel, const Image<T>& plane) {
  for (std::size_t i = 0; i < plane.elements.size(); ++i)
    image.elements[i * static_cast<std::size_t>(image.channels) + static_cast<std::size_t>(channel)] =
        plane.elements[i];
}
// work(plane, channel) for each channel; what it returns becomes the channels of the result.
template <class T, class Work>
auto eachPlane(const Image<T>& image, Work work) {
  auto first = work(plane(image, 0), 0);
  if (image.channels == 1) return first;
  decltype(first) result(first.size, image.channels);
  setPlane(result, 0, first);
  for (int c = 1; c < image.channels; ++c) setPlane(result, c, work(plane(image, c), c));
  return result;
}

// The channels that a picture has, from 0 to 255 in floats; 16 bits keep their fractions (word / 257).
inline Image<Tev32f> anyFloat(const Picture& picture) {
  Image<Tev32f> result(picture.size(), picture.channels());
  if (picture.deep())
    std::transform(picture.words.elements.begin(), picture.words.elements.end(), result.elements.begin(),
                   [](Tev16u value) { return static_cast<Tev32f>(value) / 257.0F; });
  else
    std::copy(picture.bytes.elements.begin(), picture.bytes.elements.end(), result.elements.begin());
  return result;
}

// The magnitude that all but a few strong pixels stay below: white for derivatives, of which most are small. At least
// `least`.
inline double brightExtent(const Image<Tev32f>& image, double share = 0.995, double least = 1e-3) {
  std::vector<Tev32f> magnitudes;
  magnitudes.reserve(image.elements.size());
  for (const Tev32f value : image.elements)
    if (std::isfinite(value)) magnitudes.push_back(std::fabs(value));
  if (magnitudes.empty()) return least;
  const auto middle =
      magnitudes.begin() + static_cast<std::ptrdiff_t>(static_cast<double>(magnitudes.size() - 1) * share);
  std::nth_element(magnitudes.begin(), middle, magnitudes.end());
  return std::max<double>(*middle, least);
}

}  // namespace cli
