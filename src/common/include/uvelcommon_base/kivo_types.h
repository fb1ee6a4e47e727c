/* Common vocabulary of the library: export macros, result codes, fixed numbers.
 *
 * Every header of this folder includes it; a program rarely needs to include it by itself. */
#ifndef UVELCOMMON_BASE_KIVO_TYPES_H
#define UVELCOMMON_BASE_KIVO_TYPES_H

#include <stdint.h>

/* Names as in C, in both languages. */
#ifdef __cplusplus
#define UVEL_EXTERN_C extern "C"
#else
#define UVEL_EXTERN_C extern
#endif

/* A compiler that cannot be asked has no such attribute. */
#ifndef __has_attribute
#define __has_attribute(x) 0
#endif

/* An exported function. */
#define UVEL_API UVEL_EXTERN_C __attribute__((visibility("default")))

/* An exported object. A program must reach it through its global offset table: a copy of the object in the executable
 * (what compilers make of direct access) would not be the one that the library reads. Where a compiler cannot be told
 * so, the linker refuses the copy; compile such a program with -fPIC. */
#if defined(UVEL_BUILDING_LIBRARY)
#define UVEL_DATA UVEL_EXTERN_C __attribute__((visibility("protected")))
#elif __has_attribute(nodirect_extern_access)
#define UVEL_DATA UVEL_EXTERN_C __attribute__((visibility("default"), nodirect_extern_access))
#else
#define UVEL_DATA UVEL_EXTERN_C __attribute__((visibility("default")))
#endif

/* Result codes. Each operation says which of them it uses. */
#define KIVO_OK 0U        /* done */
#define KIVO_FAIL 1U      /* bad argument, or a failure without a code of its own */
#define KIVO_NO_MEMORY 2U /* allocation failed, nothing changed */
#define KIVO_FULL 3U      /* the container holds as much as its specification allows */
#define KIVO_EXISTS 4U    /* the key is there already */
#define KIVO_NOT_FOUND 5U /* no such element */

/* "None" of look-ups that yield an index or an identifier. */
#define KIVO_NONE 0xFFFFFFFFU

/* Module id of the library itself: what it allocates and registers with the host carries this id. */
#define KIVO_LIB_MID 0xC21E0000U

#endif
