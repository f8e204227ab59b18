/* What the parts of the program share: checks, results, the counting allocator. */
#ifndef PROGRAM_H
#define PROGRAM_H

#include <stddef.h>

/* Prints and counts a failed check; the program's exit status tells whether there was one. */
void check(int holds, const char* what, const char* file, int line);
#define CHECK(condition) check((condition) != 0, #condition, __FILE__, __LINE__)

/* Adds results to the digest of the run. Every run, at each thread count and stack address, must give the same one. */
void record(const void* bytes, size_t size);

/* Random numbers, the same on every machine, from a seed of the caller's. */
unsigned draw(unsigned* seed);

/* Scratch memory of exactly the given length at an odd address; `returned` checks the bytes on both sides. */
unsigned char* scratch(int bytes);
void returned(unsigned char* block, int bytes);

/* The allocator that the program gives the library: calls, the last request's size and address, blocks not yet freed,
 * and the number of calls until one fails (below 0: none does). */
typedef struct {
  int calls;
  size_t lastSize;
  void* lastBlock;
  int held;
  int strangers;
  int failIn;
} Allocator;
extern Allocator allocator;

void filters(void);
void cascade(void);
void flow(void);
void memory(void);

#endif
