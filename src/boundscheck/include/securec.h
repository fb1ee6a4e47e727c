/* Bounds-checked functions: copies, prints and scans that know the room of their destination.
 *
 * A call either does what its plain counterpart does or fails with a code and leaves the destination in a defined
 * state: untouched when its room is unknown, else reset so that nothing half done can be read by mistake.
 *
 * Usage:
 *     if (strcpy_s(szName, sizeof(szName), pszText) != EOK) ...          // szName is "" now
 *     iLen = snprintf_truncated_s(szLine, sizeof(szLine), "%s: %u", szName, ulId);
 *     if (sscanf_s(pszText, "%u %s", &ulId, szName, (unsigned int)sizeof(szName)) == 2) ...
 *
 * Ownership: nothing is allocated or kept.
 * Threads: any; the functions hold no state. errno is never set and nothing is printed.
 * Errors: errno_t codes below, 0 for success; prints and scans return -1. A destMax of 0 or above the limits (which are
 * inclusive) and a null destination leave everything untouched; checks come in the order in which they are listed. */
#ifndef SECUREC_H
#define SECUREC_H

#include <errno.h>
#include <stdarg.h>
#include <stddef.h>

/* This header belongs to the bundled module, not to an installed library. */
#define SECUREC_BUNDLED 1

typedef int errno_t;

#ifndef EOK
#define EOK 0
#endif
#define EINVAL_AND_RESET 150
#define ERANGE_AND_RESET 162
#define EOVERLAP_AND_RESET 182

#define SECUREC_MEM_MAX_LEN 0x7fffffffUL
#define SECUREC_STRING_MAX_LEN 0x7fffffffUL

#if defined(__GNUC__)
#define SECUREC_PRINTF(index, first) __attribute__((__format__(__printf__, index, first)))
#else
#define SECUREC_PRINTF(index, first)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Copies count bytes. ERANGE: bad destMax. EINVAL: dest is null. The others zero the whole destMax bytes:
 * EINVAL_AND_RESET: src is null, even for count 0. ERANGE_AND_RESET: count exceeds destMax. EOVERLAP_AND_RESET: the
 * count bytes at dest and src overlap without being the same. */
errno_t memcpy_s(void *dest, size_t destMax, const void *src, size_t count);

/* As memcpy_s, for ranges that may overlap. */
errno_t memmove_s(void *dest, size_t destMax, const void *src, size_t count);

/* Sets count bytes to c; never optimised away. ERANGE: bad destMax, but 0 bytes into 0 bytes are fine. EINVAL: dest is
 * null. ERANGE_AND_RESET: count exceeds destMax; the whole destMax bytes are set to c. */
errno_t memset_s(void *dest, size_t destMax, int c, size_t count);

/* Copies a text and its terminator; reads at most destMax bytes of src. ERANGE: bad destMax. EINVAL: dest is null. The
 * others set dest[0] to 0: EINVAL_AND_RESET: src is null. ERANGE_AND_RESET: no room. EOVERLAP_AND_RESET: the length + 1
 * bytes at dest and src overlap without being the same. */
errno_t strcpy_s(char *dest, size_t destMax, const char *src);

/* Appends a text; errors as with strcpy_s. A destination without terminator has no room. */
errno_t strcat_s(char *dest, size_t destMax, const char *src);

/* Copies at most count characters of a text and terminates them; nothing is padded. Reads at most min(count, destMax)
 * bytes of src. Errors as with strcpy_s; a text that count shortens to fit is none, a count above the limit is
 * ERANGE_AND_RESET. */
errno_t strncpy_s(char *dest, size_t destMax, const char *src, size_t count);

/* Prints a text and returns its length. -1, with dest[0] set to 0 where dest and destMax are good: format is null or
 * holds %n or something that is no conversion of standard C, a floating-point number has a width or precision above
 * 65535, or the text exceeds destMax - 1. %s of null prints "(null)". */
int sprintf_s(char *dest, size_t destMax, const char *format, ...) SECUREC_PRINTF(3, 4);
int vsprintf_s(char *dest, size_t destMax, const char *format, va_list arguments) SECUREC_PRINTF(3, 0);

/* As sprintf_s, for a text of at most count characters. A longer one gives -1: for count below destMax its first count
 * characters stay in dest, terminated. A count above 0x7ffffffe is an error even when the text fits. */
int snprintf_s(char *dest, size_t destMax, size_t count, const char *format, ...) SECUREC_PRINTF(4, 5);
int vsnprintf_s(char *dest, size_t destMax, size_t count, const char *format, va_list arguments) SECUREC_PRINTF(4, 0);

/* As sprintf_s, but a text that is too long is cut: the result is then destMax - 1. */
int snprintf_truncated_s(char *dest, size_t destMax, const char *format, ...) SECUREC_PRINTF(3, 4);
int vsnprintf_truncated_s(char *dest, size_t destMax, const char *format, va_list arguments) SECUREC_PRINTF(3, 0);

/* Reads items from a text as sscanf does, except that %s, %c and %[ take an unsigned int behind the pointer: the room
 * in bytes. Returns the number of items assigned; -1 for an empty text, a null argument or a text that ends before the
 * first item; 0 when the first item does not match. An item that its room cannot hold ends the scan with its first byte
 * set to 0. A number outside its type's range is cut to the type, never reported. Wide characters are not read.
 * Fractions are read with '.' and right in locales that write them so. */
int sscanf_s(const char *buffer, const char *format, ...);
int vsscanf_s(const char *buffer, const char *format, va_list arguments);

#ifdef __cplusplus
}
#endif

#endif
