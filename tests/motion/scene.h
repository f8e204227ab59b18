// Video for the tests of background models: still, noisy, flickering, dark and crossed by things that move.
#pragma once

#include <algorithm>

#include "kit/kit.h"

namespace scene {

// One frame of `width` x `height` pixels. Each quarter of the columns behaves in its own way, row by row in its own
// colours; a bright bar crosses all of them now and then.
template <int channels>
kit::Image<Tev8u, channels> frame(int number, int width, int height, kit::Random& random) {
  kit::Image<Tev8u, channels> image(width, height, random.between(0, 3), random.between(0, 7));
  const int bar = number % 50 < 25 ? number % 25 * width / 25 : -10;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < channels; ++c) {
        const int base = (37 * x + 91 * y + 53 * c) % 200;
        int value = 0;
        switch (x * 4 / width) {
          case 0:
            value = y % 3 == 0 ? 0 : base;  // still, some of it black
            break;
          case 1:
            value = base + random.between(-9, 9);
            break;
          case 2:
            value = base + (number / (1 + y % 3) % 2 ? 60 : 0) + random.between(-2, 2);
            if (y % 2)
              value = x % 3 == 0 ? 90 + 60 * (number % 2) : x % 3 == 1 ? 90 : 4;  // a lamp between still things
            break;
          default:
            value = random.oneIn(6) ? random.between(0, 255) : base / 16;  // near the modes that were never used
        }
        if (x >= bar && x < bar + 3) value = 250 - random.between(0, 5);
        image.set(x * channels + c, y, static_cast<Tev8u>(std::clamp(value, 0, 255)));
      }
  return image;
}

}  // namespace scene
