/* A program as it was built in 2007, over the library of today. It keeps 4-byte stack alignment, passes records by
 * value, brings its own core library, puts its allocator into the library's hooks before the first allocation, and
 * knows both libraries by the names that it was linked against. It compares what it gets with plain computations.
 *
 * usage: old_program filters|cascade|flow|memory */
#include "program.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "imaging.h"

static int failures;
static unsigned digest;

void check(int holds, const char* what, const char* file, int line) {
  if (holds) return;
  if (failures < 20) printf("%s:%d: %s\n", file, line, what);
  ++failures;
}

void record(const void* bytes, size_t size) {
  const unsigned char* p = bytes;
  while (size-- > 0) digest = (digest ^ *p++) * 16777619u;
}

unsigned draw(unsigned* seed) {
  *seed = *seed * 1664525u + 1013904223u;
  return *seed >> 8;
}

enum { fence = 31 };

unsigned char* scratch(int bytes) {
  unsigned char* raw = malloc(bytes + 2 * fence);
  memset(raw, 0xA5, bytes + 2 * fence);
  return raw + fence;
}

void returned(unsigned char* block, int bytes) {
  int i;
  for (i = 1; i <= fence; ++i) CHECK(block[-i] == 0xA5 && block[bytes + i - 1] == 0xA5);
  free(block - fence);
}

Allocator allocator = {0, 0, NULL, 0, 0, -1};

/* Blocks in the library's hands. */
static void* blocks[256];

static void* count_malloc(size_t size) {
  int i;
  void* block;
  ++allocator.calls;
  allocator.lastSize = size;
  if (allocator.failIn == 0) return NULL;
  if (allocator.failIn > 0) --allocator.failIn;
  block = malloc(size);
  for (i = 0; i < 256 && blocks[i]; ++i) continue;
  CHECK(i < 256);
  if (i < 256) blocks[i] = block;
  ++allocator.held;
  allocator.lastBlock = block;
  return block;
}

static void count_free(void* block) {
  int i;
  for (i = 0; i < 256 && blocks[i] != block; ++i) continue;
  if (i == 256 || !block) {
    ++allocator.strangers;
    return;
  }
  blocks[i] = NULL;
  --allocator.held;
  free(block);
}

/* The hooks as the loader leaves them lead to the system's allocator. */
static void take_over_the_hooks(void) {
  char* block = i_calloc(3, 4);
  CHECK(block && block[0] == 0 && block[11] == 0);
  block = i_realloc(block, 4000);
  CHECK(block && block[0] == 0 && block[11] == 0);
  i_free(block);
  block = i_malloc(100);
  CHECK(block);
  free(block);
  i_malloc = count_malloc;
  i_free = count_free;
}

static void version(void) {
  const TevLibraryVersion* v = tevcvGetLibVersion();
  CHECK(v && v == tevcvGetLibVersion());
  CHECK(v->majorVersion == 5 && v->minorVersion == 2 && v->buildMajor == 108 && v->buildNumber == 398);
  CHECK(memcmp(v->cpuTag, "px\0\0", 4) == 0);
  CHECK(strcmp(v->libraryName, "libtevcvpx.so.5.2") == 0);
  CHECK(strcmp(v->versionText, "5.2") == 0);
  CHECK(strcmp(v->buildDate, "Jul 11 2007") == 0);
}

static const struct {
  const char* name;
  void (*run)(void);
} parts[] = {{"filters", filters}, {"cascade", cascade}, {"flow", flow}, {"memory", memory}};

static void (*part)(void);

#if defined(__i386__)
/* Calls `body` with the stack pointer `offset` bytes below a multiple of 16. stack_offset gives that offset back, plus
 * what lies between. */
void call_with_stack_at(void (*body)(void), int offset);
int stack_offset(void);
__asm__(
    ".text\n"
    ".globl call_with_stack_at\n"
    "call_with_stack_at:\n"
    "  pushl %ebp\n"
    "  movl %esp, %ebp\n"
    "  andl $-16, %esp\n"
    "  subl 12(%ebp), %esp\n"
    "  call *8(%ebp)\n"
    "  leave\n"
    "  ret\n"
    ".globl stack_offset\n"
    "stack_offset:\n"
    "  movl %esp, %eax\n"
    "  negl %eax\n"
    "  andl $15, %eax\n"
    "  ret\n");
enum { stackStep = 4 };
#else
static void call_with_stack_at(void (*body)(void), int offset) {
  (void)offset;
  body();
}
static int stack_offset(void) { return 0; }
enum { stackStep = 16 };
#endif

static unsigned offsetsSeen;

static void at_this_stack(void) {
  offsetsSeen |= 1u << stack_offset();
  part();
}

int main(int argc, char** argv) {
  unsigned i, first = 0, runs = 0;
  int threads, offset, count;
  for (i = 0; i < sizeof parts / sizeof parts[0]; ++i)
    if (argc == 2 && strcmp(argv[1], parts[i].name) == 0) part = parts[i].run;
  if (!part) {
    printf("usage: old_program filters|cascade|flow|memory\n");
    return 2;
  }
  take_over_the_hooks();
  version();
  for (threads = 1; threads <= 3; ++threads) {
    threads_omp_of_n_tev = threads;
    tevGetNumThreads(&count);
    CHECK(count == threads);
    CHECK(tevGetNumCoresOnDie() > 1); /* or nothing would run in parallel */
    for (offset = 0; offset < 16; offset += stackStep) {
      digest = 2166136261u;
      call_with_stack_at(at_this_stack, offset);
      if (runs++ == 0) first = digest;
      CHECK(digest == first);
      CHECK(allocator.held == 0 && allocator.strangers == 0);
    }
  }
  /* Calls came from all four places between two multiples of 16. */
  if (stackStep == 4) CHECK(offsetsSeen == 0x1111u);
  printf("%s: %u runs, digest %08x, %d checks failed\n", argv[1], runs, first, failures);
  return failures != 0;
}
