/* What the gallery's snippets are tried with: a small picture, and room for results. TRY(call) makes the trial of the
 * source that it stands in; its value is the status. */
#ifndef SNIPPET_H
#define SNIPPET_H

#include <tevcv.h>

enum { STEP = 64, ROWS = 48, PIXELS = STEP * ROWS };

typedef union {
  Tev8u bytes[PIXELS * 16];
  Tev16s words[PIXELS * 8];
  Tev32s ints[PIXELS * 4];
  Tev32f floats[PIXELS * 4];
  Tev64f doubles[PIXELS * 2];
  TevPoint points[PIXELS * 2];
  TevPolarLine lines[PIXELS * 2];
} Room;

extern const TevSize size;       /* STEP x ROWS, without padding */
extern Tev8u grey[PIXELS];       /* rising to the right and downwards, with a brighter square on it */
extern Tev8u colour[PIXELS * 3]; /* the same in three channels */
extern Tev32f floats[PIXELS];    /* the same in floats */
extern Tev8u ones[PIXELS], nothing[PIXELS];
extern Room room, second, third; /* a snippet writes its result to `room` */

Tev8u* copyOfGrey(void); /* in `room` */
Tev8u* seeds(void);      /* in `room`: 0 but for two markers */

#define JOINED(a, b) a##b
#define NAMED(a, b) JOINED(a, b)
#define TRY(call) \
  TevStatus NAMED(try_, SNIPPET)(void) { return call; }

#endif
