/* Tracking: two pyramids of a scene that moves, and points followed from one to the other. */
#include <math.h>
#include <string.h>

#include "imaging.h"
#include "program.h"

enum {
  width = 160,
  height = 128,
  margin = 16,
  sceneWidth = width + 2 * margin,
  sceneHeight = height + 2 * margin,
  levels = 2,
  window = 9,
  pointCount = 21,
  moveX = 3,
  moveY = -2
};

static unsigned char scene[sceneHeight][sceneWidth];
static unsigned char frames[2][levels + 1][width * height];

/* Smooth noise around a flat square. */
static void draw_scene(void) {
  static int blurred[sceneHeight][sceneWidth], wide[sceneHeight][sceneWidth];
  unsigned seed = 11;
  int pass, x, y, i;
  for (y = 0; y < sceneHeight; ++y)
    for (x = 0; x < sceneWidth; ++x) blurred[y][x] = (int)(draw(&seed) % 256) * 256;
  for (pass = 0; pass < 3; ++pass) {
    for (y = 0; y < sceneHeight; ++y)
      for (x = 0; x < sceneWidth; ++x)
        for (i = -2, wide[y][x] = 0; i <= 2; ++i) wide[y][x] += blurred[y][(x + i + sceneWidth) % sceneWidth];
    for (y = 0; y < sceneHeight; ++y)
      for (x = 0; x < sceneWidth; ++x) {
        for (i = -2, blurred[y][x] = 0; i <= 2; ++i) blurred[y][x] += wide[(y + i + sceneHeight) % sceneHeight][x];
        blurred[y][x] /= 25;
      }
  }
  for (y = 0; y < sceneHeight; ++y)
    for (x = 0; x < sceneWidth; ++x) {
      const int grey = 128 + (blurred[y][x] / 256 - 128) * 5;
      scene[y][x] = (unsigned char)(grey < 0 ? 0 : grey > 255 ? 255 : grey);
      if (x >= 100 && x < 170 && y >= 80 && y < 150) scene[y][x] = 60;
    }
  for (y = 0; y < height; ++y) {
    memcpy(frames[0][0] + y * width, &scene[y + margin][margin], width);
    memcpy(frames[1][0] + y * width, &scene[y + margin - moveY][margin - moveX], width);
  }
}

static int mirror(int i, int n) { return i < 0 ? -i : i >= n ? 2 * n - 2 - i : i; }

/* Each level from the one below it, against the kernel 1 4 6 4 1 in both directions. */
static void build_pyramid(int f, TevPyramid* pyramid) {
  static const int taps[] = {1, 4, 6, 4, 1};
  int level, x, y, i, j, bytes = 0, wrong = 0;
  for (level = 0; level <= levels; ++level) {
    const int w = width >> level, h = height >> level;
    CHECK(pyramid->roi[level].width == w && pyramid->roi[level].height == h);
    CHECK(pyramid->scale[level] == 1.0 / (1 << level));
    CHECK(pyramid->images[level] == NULL && pyramid->steps[level] == 0);
    pyramid->images[level] = frames[f][level];
    pyramid->steps[level] = w;
    if (level > 0) {
      const unsigned char* src = frames[f][level - 1];
      unsigned char *dst = frames[f][level], *buffer;
      CHECK(teviPyrDownGetBufSize_Gauss5x5(2 * w, dataType8u, 1, &bytes) == statusOk);
      buffer = scratch(bytes);
      CHECK(teviPyrDown_Gauss5x5_8u_C1R(src, 2 * w, dst, w, pyramid->roi[level - 1], buffer) == statusOk);
      returned(buffer, bytes);
      for (y = 0; y < h; ++y)
        for (x = 0; x < w; ++x) {
          int sum = 128;
          for (j = 0; j < 5; ++j)
            for (i = 0; i < 5; ++i)
              sum += taps[j] * taps[i] * src[mirror(2 * y + j - 2, 2 * h) * 2 * w + mirror(2 * x + i - 2, 2 * w)];
          wrong += dst[y * w + x] != sum >> 8;
        }
    }
  }
  CHECK(wrong == 0);
  record(frames[f], sizeof frames[f]);
}

/* The whole-pixel motion of the window around a point, by trying all of them. */
static void search(int x, int y, int* bestX, int* bestY) {
  const int r = window / 2, reach = 6;
  long best = -1;
  int dx, dy, i, j;
  for (dy = -reach; dy <= reach; ++dy)
    for (dx = -reach; dx <= reach; ++dx) {
      long squares = 0;
      for (j = -r; j <= r; ++j)
        for (i = -r; i <= r; ++i) {
          const int d = frames[0][0][(y + j) * width + x + i] - frames[1][0][(y + dy + j) * width + x + dx + i];
          squares += (long)d * d;
        }
      if (best < 0 || squares < best) best = squares, *bestX = dx, *bestY = dy;
    }
}

void flow(void) {
  const TevSize size = {width, height}, limit = {100, 100};
  TevPyramid *first = NULL, *second = NULL;
  TevOptFlowPyrLKState* state = NULL;
  float previous[2 * pointCount], next[2 * pointCount], error[pointCount];
  signed char status[pointCount];
  int i, dx = 0, dy = 0;
  draw_scene();
  CHECK(teviPyramidInitAlloc(&first, levels, size, 2.0F) == statusOk && first->level == levels);
  CHECK(teviPyramidInitAlloc(&second, levels, size, 2.0F) == statusOk && second->level == levels);
  build_pyramid(0, first);
  build_pyramid(1, second);

  /* A grid of points in the upper part, and one in the middle of the flat square. */
  for (i = 0; i < pointCount - 1; ++i) {
    previous[2 * i] = 14.25F + (float)(i % 5) * 32.5F;
    previous[2 * i + 1] = 14.5F + (float)(i / 5) * 11.125F;
  }
  previous[2 * i] = 119.0F;
  previous[2 * i + 1] = 99.0F;
  memcpy(next, previous, sizeof next);

  /* Levels below the limit share their gradients, the level above it computes them for each window. */
  CHECK(teviOpticalFlowPyrLKInitAlloc_8u_C1R(&state, limit, window, 0) == statusOk);
  i = allocator.calls;
  CHECK(teviOpticalFlowPyrLK_8u_C1R(first, second, previous, next, status, error, pointCount, window, levels, 25, 0.01F,
                                    state) == statusOk);
  CHECK(allocator.calls == i); /* tracking allocates nothing */
  record(next, sizeof next);
  record(status, sizeof status);
  record(error, sizeof error);
  for (i = 0; i < pointCount - 1; ++i) {
    search((int)previous[2 * i], (int)previous[2 * i + 1], &dx, &dy);
    CHECK(dx == moveX && dy == moveY);
    CHECK(status[i] == 0);
    CHECK(fabs(next[2 * i] - previous[2 * i] - dx) < 0.02);
    CHECK(fabs(next[2 * i + 1] - previous[2 * i + 1] - dy) < 0.02);
    CHECK(error[i] < 0.5F);
  }
  /* Nothing to hold on to: given up on the coarsest level, the guess as it was. */
  CHECK(status[i] == levels + 1 && next[2 * i] == 119.0F && next[2 * i + 1] == 99.0F);

  /* From an image to itself nothing moves and nothing differs. */
  memcpy(next, previous, sizeof next);
  CHECK(teviOpticalFlowPyrLK_8u_C1R(first, first, previous, next, status, error, pointCount, window, levels, 25, 0.01F,
                                    state) == statusOk);
  for (i = 0; i < pointCount - 1; ++i)
    CHECK(status[i] == 0 && error[i] == 0 && next[2 * i] == previous[2 * i] && next[2 * i + 1] == previous[2 * i + 1]);

  CHECK(teviOpticalFlowPyrLKFree_8u_C1R(state) == statusOk);
  CHECK(teviPyramidFree(first) == statusOk);
  CHECK(teviPyramidFree(second) == statusOk);
}
