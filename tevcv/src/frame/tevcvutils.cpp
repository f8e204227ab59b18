// Scale factors and products of derivative planes. No function of the library calls them: programs do.
#include <algorithm>

#include "tevcv_internal/frame.h"

Tev32f owncvGetScale_32s32f(int scaleFactor) {
  // Clamped before the sign is changed: the lowest int has no opposite.
  const int exponent = -std::clamp(scaleFactor, -128, 150);
  return intfTable[128 - exponent];
}

Tev64f owncvGetScale_32s64f(int scaleFactor) {
  const int exponent = -std::clamp(scaleFactor, -1024, 1087);
  const int k = 1087 - exponent;
  return Tev64f{intfTable[128 + (k & 63)]} * intdTable[k >> 6];
}

void owncvMulDBuffers_32f(int width, int height, Tev32f* bufX, Tev32f* bufXY, Tev32f* bufY) {
  for (int y = 0; y < height; ++y, bufX += width, bufXY += width, bufY += width) {
    for (int i = 0; i < width; ++i) {
      const Tev32f dx = bufX[i], dy = bufY[i];
      bufX[i] = dx * dx;
      bufXY[i] = dx * dy;
      bufY[i] = dy * dy;
    }
  }
}

void owncvMulDBuffers_16s32f(int width, int height, Tev32f* bufX, Tev32f* bufXY, Tev32f* bufY) {
  for (int y = 0; y < height; ++y, bufX += width, bufXY += width, bufY += width) {
    // Backwards: the float at i takes the place of the 16-bit values 2 i and 2 i + 1, which have been read by then.
    for (int i = width - 1; i >= 0; --i) {
      Tev16s dx, dy;
      __builtin_memcpy(&dx, reinterpret_cast<const char*>(bufX) + i * sizeof dx, sizeof dx);
      __builtin_memcpy(&dy, reinterpret_cast<const char*>(bufY) + i * sizeof dy, sizeof dy);
      bufX[i] = static_cast<Tev32f>(dx * dx);
      bufXY[i] = static_cast<Tev32f>(dx * dy);
      bufY[i] = static_cast<Tev32f>(dy * dy);
    }
  }
}
