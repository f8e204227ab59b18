/* The aligned allocator, its hooks and the version record. */
#ifndef TEVCV_MEMORY_H
#define TEVCV_MEMORY_H

#include <stddef.h>

#include "tevcv/types.h"

/**
 * @defgroup memory Memory and version
 * @{
 */

/**
 * @name Allocator hooks
 * All memory of the library comes from `i_malloc` and goes back through `i_free`; `i_calloc` and `i_realloc` are there
 * for programs that look them up. A program may overwrite the words before its first call that allocates, and must not
 * change them while calls run. At load they point to the system's allocator.
 * @{
 */
TEV_API void* (*i_malloc)(size_t size);
TEV_API void* (*i_calloc)(size_t count, size_t size);
TEV_API void* (*i_realloc)(void* block, size_t size);
TEV_API void (*i_free)(void* block);
/** @} */

/**
 * @name Aligned blocks
 * `tevsMalloc_*` returns `len` elements, not cleared, at a multiple of 32 bytes, or null where `len` is below 1 (the
 * hook is not called) or the hook gave null. The word (one pointer) in front of the block holds the address that the
 * hook returned. The byte count is formed in 32 bits, as old programs expect: the caller keeps `len` times the element
 * size below 2^31. `tevsFree` takes a block of any type, or null.
 * @{
 */
TEV_API Tev8u* tevsMalloc_8u(int len);
TEV_API Tev8s* tevsMalloc_8s(int len);
TEV_API Tev16u* tevsMalloc_16u(int len);
TEV_API Tev32s* tevsMalloc_32s(int len);
TEV_API Tev32f* tevsMalloc_32f(int len);
TEV_API Tev64f* tevsMalloc_64f(int len);
TEV_API void tevsFree(void* block);
/** @} */

/** What build of the library this is. */
typedef struct TevLibraryVersion {
  Tev32s majorVersion;     /**< 5 */
  Tev32s minorVersion;     /**< 2 */
  Tev32s buildMajor;       /**< 108 */
  Tev32s buildNumber;      /**< 398 */
  char cpuTag[4];          /**< "px": the generic build */
  const char* libraryName; /**< file name of the library */
  const char* versionText; /**< "5.2" */
  const char* buildDate;   /**< date of the interface that this library keeps */
} TevLibraryVersion;

/** The version record: one constant for the whole process, not to be freed. Cannot fail. */
TEV_API const TevLibraryVersion* tevcvGetLibVersion(void);

/** @} */

#endif
