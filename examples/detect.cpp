// Finds faces in a photograph with a cascade of Haar stages, and draws a frame around each.
//   example_detect IN.png OUT.png
//
// At every scale: tables of sums and squares, upright and tilted; the deviation in each window as its norm; then one
// call for each stage, all with the same mask, which each stage thins. What is left at all scales is gathered where it
// crowds. The cascade in cascade.h was learned by tools/train.
#include <algorithm>
#include <cstdio>

#include "cascade.h"
#include "detector.h"
#include "picture.h"

namespace {

// A face answers at many neighbouring places and scales, chance at a few.
constexpr int leastVotes = 8;

// A white frame of two pixels with a black rim.
void drawFrame(example::Picture& picture, const example::Hit& hit) {
  const int left = int(hit.x), top = int(hit.y), side = int(hit.side);
  for (int y = top; y < top + side; ++y)
    for (int x = left; x < left + side; ++x) {
      const int depth = std::min(std::min(x - left, left + side - 1 - x), std::min(y - top, top + side - 1 - y));
      if (depth < 4 && x >= 0 && y >= 0 && x < picture.size.width && y < picture.size.height)
        picture.pixels[static_cast<size_t>(y * picture.step() + x)] = depth == 0 || depth == 3 ? 0 : 255;
    }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s IN.png OUT.png\n", argv[0]);
    return 2;
  }
  example::Picture picture = example::readPicture(argv[1], 1);
  if (picture.pixels.empty()) return 2;

  const example::CascadeView& cascade = example::faces::cascade;
  const auto hits = example::scan(picture.data(), picture.size, example::build(cascade), cascade.window);
  const auto faces = example::strongest(hits, leastVotes);
  for (const example::Hit& face : faces) {
    std::printf("face at (%.0f, %.0f), %.0f pixels wide, seen %d times\n", face.x, face.y, face.side, face.votes);
    drawFrame(picture, face);
  }
  std::printf("faces found: %zu\n", faces.size());
  return example::writePicture(argv[2], picture) ? 0 : 2;
}
