/* Runs each snippet of the gallery once: it succeeds, and something is written. */
#include <stdio.h>
#include <string.h>

#include "snippet.h"

const TevSize size = {STEP, ROWS};
Tev8u grey[PIXELS], colour[PIXELS * 3], ones[PIXELS], nothing[PIXELS];
Tev32f floats[PIXELS];
Room room, second, third;
static Room before;

Tev8u* copyOfGrey(void) {
  memcpy(room.bytes, grey, sizeof grey);
  memcpy(before.bytes, grey, sizeof grey);
  return room.bytes;
}

Tev8u* seeds(void) {
  memset(room.bytes, 0, PIXELS);
  room.bytes[3 * STEP + 3] = 1;
  room.bytes[40 * STEP + 50] = 2;
  memcpy(before.bytes, room.bytes, PIXELS);
  return room.bytes;
}

#define SNIPPET_OF(name) TevStatus try_##name(void);
#include "snippets.inc"
#undef SNIPPET_OF

static const struct {
  const char* name;
  TevStatus (*call)(void);
} all[] = {
#define SNIPPET_OF(name) {#name, try_##name},
#include "snippets.inc"
};

int main(void) {
  unsigned i, failed = 0;
  for (i = 0; i < PIXELS; ++i) {
    const unsigned x = i % STEP, y = i / STEP;
    grey[i] = (Tev8u)(2 * x + y + (x >= 20 && x < 40 && y >= 12 && y < 32 ? 80 : 0));
    colour[3 * i] = colour[3 * i + 1] = colour[3 * i + 2] = grey[i];
    floats[i] = grey[i];
    ones[i] = 1;
  }
  for (i = 0; i < sizeof all / sizeof *all; ++i) {
    TevStatus status;
    memset(&room, 0, sizeof room);
    memset(&before, 0, sizeof before);
    status = all[i].call();
    if (status != tevStatusOk || memcmp(&room, &before, sizeof room) == 0) {
      printf("%s: status %d%s\n", all[i].name, (int)status, status == tevStatusOk ? ", nothing written" : "");
      ++failed;
    }
  }
  printf("%u snippets, %u failed\n", (unsigned)(sizeof all / sizeof *all), failed);
  return failed > 0;
}
