/* A chain of filters: frame the picture, take its derivatives, find edges, thicken and thin them, measure the distance
 * to them. */
#include <math.h>
#include <stdlib.h>

#include "imaging.h"
#include "program.h"

enum {
  width = 297,
  height = 401,
  framedWidth = width + 4,
  framedHeight = height + 4,
  area = framedWidth * framedHeight
};

static int clamp(int i, int n) { return i < 0 ? 0 : i >= n ? n - 1 : i; }
static int mirror(int i, int n) { return i < 0 ? -i : i >= n ? 2 * n - 2 - i : i; }

static unsigned char picture[width * height], framed[area], edges[framedHeight][framedWidth + 5];
static unsigned char thick[area], thin[area], expected[area];
static short dx[area], dy[area], derivative[area];
static unsigned short distance[area], nearest[area];

/* Discs and boxes of several greys over noise. */
static void draw_picture(void) {
  unsigned seed = 1;
  int i, x, y;
  for (i = 0; i < width * height; ++i) picture[i] = (unsigned char)(90 + draw(&seed) % 13);
  for (i = 0; i < 40; ++i) {
    const int cx = draw(&seed) % width, cy = draw(&seed) % height, r = 6 + draw(&seed) % 20, grey = draw(&seed) % 256;
    for (y = 0; y < height; ++y)
      for (x = 0; x < width; ++x)
        if (i % 2 ? (x - cx) * (x - cx) + (y - cy) * (y - cy) < r * r : abs(x - cx) < r && abs(y - cy) < r / 2)
          picture[y * width + x] = (unsigned char)grey;
  }
}

static void frame(void) {
  const TevSize inner = {width, height}, outer = {framedWidth, framedHeight};
  int x, y, wrong = 0;
  CHECK(teviCopyReplicateBorder_8u_C1R(picture, width, inner, framed, framedWidth, outer, 2, 2) == statusOk);
  for (y = 0; y < framedHeight; ++y)
    for (x = 0; x < framedWidth; ++x)
      wrong += framed[y * framedWidth + x] != picture[clamp(y - 2, height) * width + clamp(x - 2, width)];
  CHECK(wrong == 0);
  record(framed, sizeof framed);
}

/* The correlation of the framed picture with `rowTaps` along x and `columnTaps` along y. */
static int correlate(int x, int y, const int* rowTaps, const int* columnTaps, int taps, int border, int value) {
  int i, j, sum = 0;
  for (j = 0; j < taps; ++j)
    for (i = 0; i < taps; ++i) {
      const int px = x + i - taps / 2, py = y + j - taps / 2;
      const int inside = px >= 0 && py >= 0 && px < framedWidth && py < framedHeight;
      const int ex = border == borderMirror ? mirror(px, framedWidth) : clamp(px, framedWidth);
      const int ey = border == borderMirror ? mirror(py, framedHeight) : clamp(py, framedHeight);
      sum += rowTaps[i] * columnTaps[j] * (border == borderConst && !inside ? value : framed[ey * framedWidth + ex]);
    }
  return sum;
}

static void differentiate(void) {
  static const int smooth3[] = {1, 2, 1}, rise3[] = {-1, 0, 1}, fall3[] = {1, 0, -1};
  static const int smooth5[] = {1, 4, 6, 4, 1}, rise5[] = {-1, -2, 0, 2, 1};
  const TevSize size = {framedWidth, framedHeight};
  int bytes = 0, x, y, wrong = 0;
  unsigned char* buffer;

  CHECK(teviFilterSobelHorizGetBufferSize_8u16s_C1R(size, mask3x3, &bytes) == statusOk);
  buffer = scratch(bytes);
  CHECK(teviFilterSobelHorizBorder_8u16s_C1R(framed, framedWidth, dy, framedWidth * 2, size, mask3x3, borderMirror, 0,
                                             buffer) == statusOk);
  returned(buffer, bytes);

  CHECK(teviFilterSobelVertGetBufferSize_8u16s_C1R(size, mask3x3, &bytes) == statusOk);
  buffer = scratch(bytes);
  CHECK(teviFilterSobelVertBorder_8u16s_C1R(framed, framedWidth, dx, framedWidth * 2, size, mask3x3, borderReplicate, 0,
                                            buffer) == statusOk);
  CHECK(teviFilterSobelVertBorder_8u16s_C1R(framed, framedWidth, dx, framedWidth * 2 - 1, size, mask3x3,
                                            borderReplicate, 0, buffer) == statusBadStep);
  returned(buffer, bytes);

  CHECK(teviFilterSobelHorizGetBufferSize_8u16s_C1R(size, mask5x5, &bytes) == statusOk);
  buffer = scratch(bytes);
  CHECK(teviFilterSobelHorizBorder_8u16s_C1R(framed, framedWidth, derivative, framedWidth * 2, size, mask5x5,
                                             borderConst, 200, buffer) == statusOk);
  returned(buffer, bytes);

  for (y = 0; y < framedHeight; ++y)
    for (x = 0; x < framedWidth; ++x) {
      const int i = y * framedWidth + x;
      wrong += dy[i] != correlate(x, y, smooth3, rise3, 3, borderMirror, 0);
      wrong += dx[i] != correlate(x, y, fall3, smooth3, 3, borderReplicate, 0);
      wrong += derivative[i] != correlate(x, y, smooth5, rise5, 5, borderConst, 200);
    }
  CHECK(wrong == 0);
  record(dx, sizeof dx);
  record(dy, sizeof dy);
  record(derivative, sizeof derivative);
}

/* |dx| + |dy| where it is above the low threshold, 0 elsewhere and outside. */
static int magnitude(int x, int y, int low) {
  int i, m;
  if (x < 0 || y < 0 || x >= framedWidth || y >= framedHeight) return 0;
  i = y * framedWidth + x;
  m = abs(dx[i]) + abs(dy[i]);
  return m > low ? m : 0;
}

/* Whether a pixel is higher than its neighbours along the gradient. */
static int is_ridge(int x, int y, int low) {
  const int i = y * framedWidth + x, m = magnitude(x, y, low);
  const long double a = abs(dx[i]), b = abs(dy[i]);
  if (m == 0) return 0;
  if (b > 2.414213562373095 * a) return m > magnitude(x, y - 1, low) && m >= magnitude(x, y + 1, low);
  if (b < 0.41421356237309503 * a) return m > magnitude(x - 1, y, low) && m >= magnitude(x + 1, y, low);
  if ((dx[i] ^ dy[i]) < 0) return m > magnitude(x + 1, y - 1, low) && m > magnitude(x - 1, y + 1, low);
  return m > magnitude(x - 1, y - 1, low) && m > magnitude(x + 1, y + 1, low);
}

static void find_edges(void) {
  const TevSize size = {framedWidth, framedHeight};
  int bytes = 0, x, y, i, j, wrong = 0, found = 0, grown = 1;
  unsigned char* buffer;
  for (y = 0; y < framedHeight; ++y)
    for (x = 0; x < framedWidth + 5; ++x) edges[y][x] = 77;
  CHECK(teviCannyGetSize(size, &bytes) == statusOk);
  buffer = scratch(bytes);
  CHECK(teviCanny_16s8u_C1R(dx, framedWidth * 2, dy, framedWidth * 2, edges[0], framedWidth + 5, size, 80.75F, 300.5F,
                            buffer) == statusOk);
  returned(buffer, bytes);

  /* 1: a ridge, 2: an edge. Edges start where a ridge is above the high threshold and grow along ridges. */
  for (y = 0; y < framedHeight; ++y)
    for (x = 0; x < framedWidth; ++x)
      expected[y * framedWidth + x] = (unsigned char)(is_ridge(x, y, 80) ? 1 + (magnitude(x, y, 80) > 300.5) : 0);
  while (grown) {
    grown = 0;
    for (y = 0; y < framedHeight; ++y)
      for (x = 0; x < framedWidth; ++x)
        if (expected[y * framedWidth + x] == 1)
          for (j = -1; j <= 1; ++j)
            for (i = -1; i <= 1; ++i)
              if (x + i >= 0 && y + j >= 0 && x + i < framedWidth && y + j < framedHeight &&
                  expected[(y + j) * framedWidth + x + i] == 2 && expected[y * framedWidth + x] == 1)
                expected[y * framedWidth + x] = 2, grown = 1;
  }
  for (y = 0; y < framedHeight; ++y) {
    for (x = 0; x < framedWidth; ++x) {
      wrong += edges[y][x] != (expected[y * framedWidth + x] == 2 ? 255 : 0);
      found += edges[y][x] == 255;
    }
    for (; x < framedWidth + 5; ++x) wrong += y < framedHeight && edges[y][x] != 0; /* the step's bytes are cleared */
  }
  CHECK(wrong == 0);
  CHECK(found > 500 && found < area / 4);
  record(edges, sizeof edges);
}

/* The largest or smallest pixel under the set cells of a kernel. */
static int extremum(const unsigned char* image, int step, int x, int y, const unsigned char* kernel, int w, int h,
                    TevPoint anchor, int largest) {
  int i, j, best = largest ? 0 : 255;
  for (j = 0; j < h; ++j)
    for (i = 0; i < w; ++i)
      if (kernel[j * w + i]) {
        const int v = image[clamp(y + j - anchor.y, framedHeight) * step + clamp(x + i - anchor.x, framedWidth)];
        if (largest ? v > best : v < best) best = v;
      }
  return best;
}

static void thicken_and_thin(void) {
  static const unsigned char diamond[25] = {0, 0, 1, 0, 0, 0, 1, 1, 1, 0, 1, 1, 1, 1, 1, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0};
  static const unsigned char box[12] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  const TevSize size = {framedWidth, framedHeight}, diamondSize = {5, 5}, boxSize = {4, 3};
  const TevPoint centre = {2, 2}, side = {0, 1};
  TevMorphState* state = NULL;
  unsigned char* memory;
  int bytes = 0, x, y, wrong = 0;

  /* One state in memory of the program's own, one that the library allocates. */
  CHECK(teviMorphologyGetSize_8u_C1R(framedWidth, diamond, diamondSize, &bytes) == statusOk);
  memory = malloc(bytes);
  CHECK(teviMorphologyInit_8u_C1R(framedWidth, diamond, diamondSize, centre, (TevMorphState*)memory) == statusOk);
  CHECK(teviDilateBorderReplicate_8u_C1R(edges[0], framedWidth + 5, thick, framedWidth, size, borderReplicate,
                                         (TevMorphState*)memory) == statusOk);
  free(memory);

  CHECK(teviMorphologyInitAlloc_8u_C1R(framedWidth, box, boxSize, side, &state) == statusOk);
  CHECK(allocator.held == 1);
  CHECK(teviErodeBorderReplicate_8u_C1R(thick, framedWidth, thin, framedWidth, size, borderReplicate, state) ==
        statusOk);
  CHECK(teviMorphologyFree(state) == statusOk);

  for (y = 0; y < framedHeight; ++y)
    for (x = 0; x < framedWidth; ++x) {
      const int i = y * framedWidth + x;
      wrong += thick[i] != extremum(edges[0], framedWidth + 5, x, y, diamond, 5, 5, centre, 1);
      wrong += thin[i] != extremum(thick, framedWidth, x, y, box, 4, 3, side, 0);
    }
  CHECK(wrong == 0);
  record(thick, sizeof thick);
  record(thin, sizeof thin);
}

static void measure_distances(void) {
  const TevSize size = {framedWidth, framedHeight};
  int metrics[2] = {0, 0}, x, y, i, j, wrong = 0, changed = 1;
  CHECK(teviGetDistanceTransformMask_32s(3, normL2, metrics) == statusOk);
  CHECK(metrics[0] == 2 && metrics[1] == 3);
  for (i = 0; i < area; ++i) expected[i] = thin[i] ? 0 : 1;
  CHECK(teviDistanceTransform_3x3_8u16u_C1R(expected, framedWidth, distance, framedWidth * 2, size, metrics) ==
        statusOk);

  /* The shortest paths, by going over the image until nothing changes. */
  for (i = 0; i < area; ++i) nearest[i] = expected[i] ? 65535 : 0;
  while (changed) {
    changed = 0;
    for (y = 0; y < framedHeight; ++y)
      for (x = 0; x < framedWidth; ++x)
        for (j = -1; j <= 1; ++j)
          for (i = -1; i <= 1; ++i)
            if (x + i >= 0 && y + j >= 0 && x + i < framedWidth && y + j < framedHeight) {
              const int through = nearest[(y + j) * framedWidth + x + i] + metrics[i != 0 && j != 0];
              if (through < nearest[y * framedWidth + x] && (i != 0 || j != 0))
                nearest[y * framedWidth + x] = (unsigned short)through, changed = 1;
            }
  }
  for (i = 0; i < area; ++i) wrong += distance[i] != nearest[i];
  CHECK(wrong == 0);
  record(distance, sizeof distance);
}

/* Large enough for three threads. */
static void average(void) {
  enum { w = 768, h = 515 };
  static unsigned char image[w * h];
  const TevSize size = {w, h};
  double mean = -1, deviation = -1, sum = 0, squares = 0;
  volatile double exactMean; /* stored, so that the x87 unit rounds it */
  unsigned seed = 3;
  int i;
  for (i = 0; i < w * h; ++i) {
    image[i] = (unsigned char)(draw(&seed) % 200 + i % 50);
    sum += image[i];
    squares += (double)image[i] * image[i];
  }
  CHECK(teviMean_StdDev_8u_C1R(image, w, size, &mean, &deviation) == statusOk);
  exactMean = sum / (w * h);
  CHECK(mean == exactMean);
  CHECK(fabs(deviation - sqrt(squares / (w * h) - exactMean * exactMean)) < 1e-9);
  record(&mean, sizeof mean);
  record(&deviation, sizeof deviation);
  CHECK(teviMean_StdDev_8u_C1R(image, w, size, &mean, NULL) == statusOk);
}

void filters(void) {
  draw_picture();
  frame();
  differentiate();
  find_edges();
  thicken_and_thin();
  measure_distances();
  average();
}
