/* The allocator hooks: every request arrives in the program's functions, a refused one ends the call with the stated
 * status and nothing kept, and everything comes back. */
#include <string.h>

#include "imaging.h"
#include "program.h"

static void blocks(void) {
  int calls = allocator.calls;
  unsigned char* bytes;
  double* doubles;
  float* floats;
  CHECK(tevsMalloc_8u(0) == NULL && tevsMalloc_8u(-1) == NULL && tevsMalloc_64f(0) == NULL);
  tevsFree(NULL);
  CHECK(allocator.calls == calls);

  bytes = tevsMalloc_8u(1);
  CHECK(allocator.calls == calls + 1 && allocator.held == 1);
  CHECK(((void**)bytes)[-1] == allocator.lastBlock); /* the word in front leads to the block itself */
  if (sizeof(void*) == 4) CHECK(allocator.lastSize == 1 + 36);
  floats = tevsMalloc_32f(7);
  if (sizeof(void*) == 4) CHECK(allocator.lastSize == 28 + 36);
  doubles = tevsMalloc_64f(1000);
  if (sizeof(void*) == 4) CHECK(allocator.lastSize == 8000 + 36);
  CHECK((unsigned long)bytes % 32 == 0 && (unsigned long)floats % 32 == 0 && (unsigned long)doubles % 32 == 0);
  memset(doubles, 1, 8000);
  memset(floats, 2, 28);
  *bytes = 3;
  tevsFree(floats);
  tevsFree(bytes);
  tevsFree(doubles);
  CHECK(allocator.held == 0);

  allocator.failIn = 0;
  CHECK(tevsMalloc_8u(10) == NULL);
  allocator.failIn = -1;
}

static const unsigned char picture[16 * 12];
static void* made;

/* Objects that calls make, each with what frees it. */
static int make_morphology(void) {
  static const unsigned char cross[9] = {0, 1, 0, 1, 1, 1, 0, 1, 0};
  const TevSize size = {3, 3};
  const TevPoint centre = {1, 1};
  return teviMorphologyInitAlloc_8u_C1R(100, cross, size, centre, (TevMorphState**)&made);
}
static void free_morphology(void) { CHECK(teviMorphologyFree(made) == statusOk); }

static int make_stage(void) {
  static const TevRect feature = {0, 0, 4, 4};
  static const float one = 1.0F;
  static const int count = 1;
  return teviHaarClassifierInitAlloc_32f((TevHaarClassifierState**)&made, &feature, &one, &one, &one, &one, &count, 1);
}
static void free_stage(void) { CHECK(teviHaarClassifierFree_32f(made) == statusOk); }

static int make_pyramid(void) {
  const TevSize size = {64, 48};
  return teviPyramidInitAlloc((TevPyramid**)&made, 3, size, 2.0F);
}
static void free_pyramid(void) { CHECK(teviPyramidFree(made) == statusOk); }

static int make_tracker(void) {
  const TevSize size = {64, 48};
  return teviOpticalFlowPyrLKInitAlloc_8u_C1R((TevOptFlowPyrLKState**)&made, size, 7, 0);
}
static void free_tracker(void) { CHECK(teviOpticalFlowPyrLKFree_8u_C1R(made) == statusOk); }

static int make_background(void) {
  const TevSize size = {16, 12};
  unsigned char ref[16 * 12];
  return teviForegroundGaussianInitAlloc_8u_C1R(picture, 16, size, ref, (TevForegroundGaussianState**)&made);
}
/* Two blocks of this model outlive its end by design; a program that wants them back takes them by the record. */
static void free_background(void) {
  TevForegroundGaussianState* model = made;
  void* modes = model->pixels[0];
  CHECK(model->window == 200 && model->numModes == 5 && model->backgroundRatio == 0.7);
  CHECK(model->matchThreshold == 2.5 && model->initVariance == 900.0 && model->frameCount == 0);
  CHECK(teviForegroundGaussianFree_8u_C1R(model) == statusOk);
  CHECK(allocator.held == 2);
  tevsFree(modes);
  tevsFree(model);
}

static const struct {
  int (*make)(void);
  void (*release)(void);
  int allocations;
} objects[] = {{make_morphology, free_morphology, 1},
               {make_stage, free_stage, 1},
               {make_pyramid, free_pyramid, 2},
               {make_tracker, free_tracker, 2},
               {make_background, free_background, 5}};

static void refusals(void) {
  unsigned i;
  int calls, failed;
  for (i = 0; i < sizeof objects / sizeof objects[0]; ++i) {
    made = NULL;
    calls = allocator.calls;
    CHECK(objects[i].make() == statusOk && made);
    CHECK(allocator.calls - calls == objects[i].allocations);
    objects[i].release();
    CHECK(allocator.held == 0);
    for (failed = 0; failed < objects[i].allocations; ++failed) {
      made = NULL;
      allocator.failIn = failed;
      CHECK(objects[i].make() == statusNoMemory);
      CHECK(allocator.held == 0 && made == NULL);
      allocator.failIn = -1;
    }
    CHECK(objects[i].make() == statusOk);
    objects[i].release();
  }
}

/* Beyond 32 threads a parallel sum takes its slots from the allocator. */
static void many_threads(void) {
  enum { w = 1024, h = 5120 };
  static unsigned char image[w * h];
  const TevSize size = {w, h};
  const int threads = threads_omp_of_n_tev, calls = allocator.calls;
  double mean = 0;
  memset(image, 9, sizeof image);
  threads_omp_of_n_tev = 40;
  CHECK(teviMean_StdDev_8u_C1R(image, w, size, &mean, NULL) == statusOk && mean == 9.0);
  CHECK(allocator.calls > calls && allocator.held == 0);
  threads_omp_of_n_tev = threads;
}

void memory(void) {
  blocks();
  refusals();
  many_threads();
}
