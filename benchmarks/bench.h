// The benchmarks' one idea: every entry is a call, measured in copies, the time of memcpy of a 1920 x 1080 byte image
// between warm buffers in the same run.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tevcv/types.h"

namespace bench {

inline constexpr TevSize hd = {1920, 1080};

struct Entry {
  std::string name;
  double target = 0;                               // in copies; 0 where none is set
  TevSize roi = hd;                                // for the figure a pixel
  int threads = 1;                                 // the library's thread setting during the call
  std::function<std::function<void()>()> prepare;  // makes the data and returns the call
};

// Adds an entry; call it from the initialiser of a namespace-scope object in benchmarks/<subsystem>.cpp.
bool add(Entry entry);

// Contiguous images of repeatable noise (a smooth picture with noise on top), one channel unless told otherwise.
template <class T>
std::shared_ptr<std::vector<T>> noise(TevSize roi = hd, int channels = 1, unsigned seed = 1) {
  auto image = std::make_shared<std::vector<T>>(static_cast<size_t>(roi.width) * channels * roi.height);
  std::uint32_t state = seed * 2654435761U + 1;
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width * channels; ++x) {
      state = state * 1664525U + 1013904223U;
      const int smooth = ((x >> 3) ^ (y >> 4)) & 127;
      (*image)[static_cast<size_t>(y) * roi.width * channels + x] = static_cast<T>((smooth + (state >> 26)) & 255);
    }
  return image;
}

}  // namespace bench
