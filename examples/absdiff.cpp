// What changes when a picture moves by one pixel to the right and down: its edges.
//   example_absdiff IN.png OUT.png
#include <cstdio>
#include <numeric>

#include "picture.h"
#include "tevcv.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s IN.png OUT.png\n", argv[0]);
    return 2;
  }
  const example::Picture picture = example::readPicture(argv[1], 1);
  if (picture.pixels.empty()) return 2;
  if (picture.size.width < 2 || picture.size.height < 2) {
    std::fprintf(stderr, "%s: smaller than 2 x 2 pixels\n", argv[1]);
    return 2;
  }
  const TevSize roi = {picture.size.width - 1, picture.size.height - 1};
  example::Picture change = example::makePicture(roi, 1);
  // Both sources are the same picture, seen through pointers one row and one pixel apart.
  const Tev8u* const moved = picture.data() + picture.step() + 1;
  if (teviAbsDiff_8u_C1R(picture.data(), picture.step(), moved, picture.step(), change.data(), change.step(), roi) !=
      tevStatusOk)
    return 1;
  const double sum = std::accumulate(change.pixels.begin(), change.pixels.end(), 0.0);
  std::printf("%d x %d pixels, mean change %.2f\n", roi.width, roi.height, sum / double(change.pixels.size()));
  return example::writePicture(argv[2], change) ? 0 : 2;
}
