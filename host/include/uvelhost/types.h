/* Common vocabulary of the host interface: export macros and the numbers that all families share.
 *
 * The headers of this folder are the whole contract between the library and the platform below it. A product with a
 * platform of its own ships a library of the same name that provides these operations, or defines single operations in
 * its executable, where the dynamic linker finds them first.
 *
 * Unless an operation says otherwise: 0 is success and any other result a failure; an out-parameter is written only on
 * success; texts are NUL-terminated and only read during the call; any thread may call. */
#ifndef UVELHOST_TYPES_H
#define UVELHOST_TYPES_H

#include <stdint.h>

/* Names as in C, in both languages. */
#ifdef __cplusplus
#define UVELHOST_EXTERN_C extern "C"
#else
#define UVELHOST_EXTERN_C extern
#endif

/* A compiler that cannot be asked has no such attribute. */
#ifndef __has_attribute
#define __has_attribute(x) 0
#endif

/* A host operation. Its declaration starts a line with this macro, the name and its parenthesis stand on that line:
 * the list of operations is read from here by the build. */
#define UVELHOST_API UVELHOST_EXTERN_C __attribute__((visibility("default")))

/* A published object; always reached through the global offset table, so that there is one copy of it. */
#if __has_attribute(nodirect_extern_access)
#define UVELHOST_DATA UVELHOST_EXTERN_C __attribute__((visibility("default"), nodirect_extern_access))
#else
#define UVELHOST_DATA UVELHOST_EXTERN_C __attribute__((visibility("default")))
#endif

/* Proves a size or an offset at compile time, in C and in C++. */
#ifdef __cplusplus
#define UVELHOST_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define UVELHOST_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

#define UVELHOST_OK 0U                    /* done */
#define UVELHOST_NONE 0xFFFFFFFFU         /* no such index, handle or identifier */
#define UVELHOST_WAIT_FOREVER 0xFFFFFFFFU /* time limit of waiting operations */

#endif
