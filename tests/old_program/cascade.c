/* Object detection: integral tables, the deviation under the window, and two stages of a cascade with one mask. */
#include <math.h>
#include <string.h>

#include "imaging.h"
#include "program.h"

enum {
  width = 120,
  height = 90,
  tableWidth = width + 1,
  tableHeight = height + 1,
  windowWidth = 16,
  windowHeight = 12,
  across = width - windowWidth + 1,
  down = height - windowHeight + 1
};

static unsigned char picture[width * height];
static float sum[tableWidth * tableHeight], norm[across * down];
static double square[tableWidth * tableHeight];

/* Two bright bars at a slant over noise. */
static void draw_picture(void) {
  unsigned seed = 5;
  int x, y;
  for (y = 0; y < height; ++y)
    for (x = 0; x < width; ++x)
      picture[y * width + x] = (unsigned char)(draw(&seed) % 90 + ((x + y / 3) % 31 < 9 ? 150 : 0));
}

static void build_tables(void) {
  const TevSize size = {width, height};
  static double columns[tableWidth], columnSquares[tableWidth];
  int x, y, wrong = 0;
  CHECK(teviSqrIntegral_8u32f64f_C1R(picture, width, sum, tableWidth * 4, square, tableWidth * 8, size, 3.0F, 5.0) ==
        statusOk);
  memset(columns, 0, sizeof columns);
  memset(columnSquares, 0, sizeof columnSquares);
  for (y = 0; y < tableHeight; ++y) {
    double above = 3, aboveSquares = 5;
    for (x = 0; x < tableWidth; ++x) {
      wrong += sum[y * tableWidth + x] != above || square[y * tableWidth + x] != aboveSquares;
      if (x < width) above += columns[x], aboveSquares += columnSquares[x];
    }
    for (x = 0; x < width && y < height; ++x) {
      const double p = picture[y * width + x];
      columns[x] += p;
      columnSquares[x] += p * p;
    }
  }
  CHECK(wrong == 0);
  record(sum, sizeof sum);
  record(square, sizeof square);
}

/* Sum of the pixels, or of their squares, under a rectangle. */
static double under(TevRect r, int squared) {
  double total = 0;
  int x, y;
  for (y = r.y; y < r.y + r.height; ++y)
    for (x = r.x; x < r.x + r.width; ++x) {
      const double p = picture[y * width + x];
      total += squared ? p * p : p;
    }
  return total;
}

static TevRect moved(TevRect r, int x, int y) {
  r.x += x;
  r.y += y;
  return r;
}

static void measure_contrast(void) {
  const TevSize positions = {across, down};
  const TevRect inner = {1, 2, windowWidth - 3, windowHeight - 4};
  const TevRect none = {1, 2, 0, windowHeight};
  int x, y, wrong = 0;
  CHECK(teviRectStdDev_32f_C1R(sum, tableWidth * 4, square, tableWidth * 8, norm, across * 4, positions, inner) ==
        statusOk);
  CHECK(teviRectStdDev_32f_C1R(sum, tableWidth * 4, square, tableWidth * 8, norm, across * 4, positions, none) ==
        statusBadSize);
  for (y = 0; y < down; ++y)
    for (x = 0; x < across; ++x) {
      const long double n = inner.width * inner.height, mean = under(moved(inner, x, y), 0) / n;
      const long double variance = under(moved(inner, x, y), 1) / n - mean * mean;
      wrong += norm[y * across + x] != (float)sqrtl(variance > 0 ? variance : 0);
    }
  CHECK(wrong == 0);
  record(norm, sizeof norm);
}

typedef struct {
  int length, counts[3];
  TevRect features[6];
  float weights[6], thresholds[3], below[3], above[3], threshold;
} Stage;

/* Votes are fractions of powers of two: their sums are exact in any order. */
static const Stage stages[2] = {
    {3,
     {2, 3, 1},
     {{0, 0, 16, 12}, {4, 0, 8, 12}, {0, 0, 15, 12}, {5, 0, 5, 12}, {2, 3, 3, 3}, {1, 1, 4, 9}},
     {-1.0F, 2.125F, -1.0F, 3.0F, 0.375F, 1.0F},
     {4.5F, -30.25F, 60.0F},
     {-0.5F, 0.125F, -0.25F},
     {1.0F, 0.75F, 0.5F},
     0.625F},
    {2,
     {3, 2},
     {{0, 0, 14, 6}, {0, 0, 14, 3}, {6, 6, 2, 2}, {2, 1, 12, 11}, {6, 1, 4, 11}},
     {-1.0F, 2.0F, 1.5F, -1.0F, 3.0F},
     {10.0F, -5.0F},
     {0.25F, -1.0F},
     {1.0F, 0.5F},
     0.75F}};

/* Whether a stage lets a position pass. */
static int passes(const Stage* stage, int x, int y) {
  long double vote = 0;
  int k, i, feature = 0;
  for (k = 0; k < stage->length; ++k) {
    long double weighted = 0;
    for (i = 0; i < stage->counts[k]; ++i, ++feature)
      weighted += (long double)stage->weights[feature] * under(moved(stage->features[feature], x, y), 0);
    vote += (long double)stage->thresholds[k] * norm[y * across + x] <= weighted ? stage->above[k] : stage->below[k];
  }
  return vote >= stage->threshold;
}

static void detect(void) {
  static unsigned char mask[across * down], expected[across * down];
  const TevSize positions = {across, down};
  int s, x, y, i, wrong = 0, left, positive, before = 0;
  for (i = 0; i < across * down; ++i) before += mask[i] = expected[i] = (unsigned char)(i % 11 != 0);
  for (s = 0; s < 2; ++s) {
    const Stage* stage = &stages[s];
    TevHaarClassifierState* state = NULL;
    TevSize window = {0, 0};
    CHECK(teviHaarClassifierInitAlloc_32f(&state, stage->features, stage->weights, stage->thresholds, stage->below,
                                          stage->above, stage->counts, stage->length) == statusOk);
    CHECK(teviGetHaarClassifierSize_32f(state, &window) == statusOk);
    CHECK(window.width == (s == 0 ? 16 : 14) && window.height == 12);
    positive = -1;
    CHECK(teviApplyHaarClassifier_32f_C1R(sum, tableWidth * 4, norm, across * 4, mask, across, positions, &positive,
                                          stage->threshold, state) == statusOk);
    CHECK(teviHaarClassifierFree_32f(state) == statusOk);
    left = 0;
    for (y = 0; y < down; ++y)
      for (x = 0; x < across; ++x) {
        i = y * across + x;
        if (expected[i] && !passes(stage, x, y)) expected[i] = 0;
        left += expected[i];
        wrong += mask[i] != expected[i];
      }
    CHECK(positive == left);
    CHECK(left > 100 && left < before - 100); /* each stage rejects some and keeps some */
    before = left;
    record(mask, sizeof mask);
    record(&positive, sizeof positive);
  }
  CHECK(wrong == 0);
}

void cascade(void) {
  draw_picture();
  build_tables();
  measure_contrast();
  detect();
}
