/* Random numbers from the host's generator, with the report that FIPS mode asks for when it fails.
 *
 * Usage:
 *     ulNonce = KIVO_GenerateRand("PORTAL");                                     // 0 also after a failure
 *     if (KIVO_CRYPT_random(aucKey, sizeof(aucKey), "PORTAL") != KIVO_OK) ...    // keys: always look at the result
 *
 * The module name is what the host's report names. Without one nothing can be reported; a line of the private log takes
 * its place.
 *
 * Threads: any. */
#ifndef UVELCOMMON_BASE_KIVO_RANDOM_H
#define UVELCOMMON_BASE_KIVO_RANDOM_H

#include <uvelcommon_base/kivo_types.h>

/* A random u32; 0 after a failure. */
UVEL_API uint32_t KIVO_GenerateRand(const char *pszModule);

/* Fills ulLen bytes; the host's result: 0, or a failure after which the buffer must not be used. */
UVEL_API uint32_t KIVO_CRYPT_random(uint8_t *pucBuffer, uint32_t ulLen, const char *pszModule);

#endif
