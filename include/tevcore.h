/* The core library that tevcv imports its thread count, cache size and constants from. */
#ifndef TEVCORE_H
#define TEVCORE_H

#include "tevcv/types.h"

/**
 * @defgroup core Core library
 * libtevcv takes these names from whatever library carries the name `libtevcore.so.5.2`. This one answers from the
 * running system; a program may bring its own, with the same eight names (all but tevSetNumThreads()).
 * @{
 */

/** Writes the number of threads that a call may use: at first, the processors that the process may run on.
 *  @return #tevStatusOk, or #tevStatusNullPtr. */
TEV_API TevStatus tevGetNumThreads(int* pNumThreads);

/** Sets the number of threads, 1 to 1024. Buffer sizes can depend on it: size and call must see the same number.
 *  @return #tevStatusOk, or #tevStatusBadArg with nothing changed. */
TEV_API TevStatus tevSetNumThreads(int numThreads);

/** Processor cores on the die, 1 where the system does not tell. */
TEV_API int tevGetNumCoresOnDie(void);

/** Writes the size in bytes of the largest cache, 256 KiB where the system does not tell.
 *  @return #tevStatusOk, or #tevStatusNullPtr. */
TEV_API TevStatus tevGetMaxCacheSizeB(int* pSizeBytes);

/** Number of threads of a parallel region; follows tevSetNumThreads(). */
TEV_API Tev32s threads_omp_of_n_tev;

TEV_API const Tev32f tevConstantOfNAN_32f;
TEV_API const Tev64f tevConstantOfNAN_64f;
TEV_API const Tev64f tevConstantOfINF_64f;
TEV_API const Tev64f tevConstantOfINF_NEG_64f;

/** @} */

#endif
