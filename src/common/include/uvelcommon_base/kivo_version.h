/* Versions: fixed texts of the platform and the service layer, and the banner that programs print.
 *
 * Usage:
 *     char szBanner[UVEL_BANNER_SIZE];
 *     puts(UVEL_VersionInfo(szBanner));   // "\r\n\r\nuVEL (R) Software, Version V300R021C10B517"
 *
 * Ownership: texts are written into the caller's buffer, which is also the result; KIVO_GetVerion and
 * KIVO_GetCompileTime give constant texts.
 * Threads: any.
 * Errors: a null buffer is reported with an assertion and gives null. A banner that does not fit is cut to 511
 * characters. */
#ifndef UVELCOMMON_BASE_KIVO_VERSION_H
#define UVELCOMMON_BASE_KIVO_VERSION_H

#include "kivo_types.h"

#define UVEL_VERSION_SIZE 32U /* bytes of a version buffer */
#define UVEL_BANNER_SIZE 512U /* bytes of a banner buffer */

/* Writes the platform's version text and sets the last byte of the 32 to 0. The number is accepted for the sake of old
 * callers; the text does not depend on it. */
UVEL_API char *UVEL_TransVerNoToStr(uint32_t ulVersion, char *pszBuffer);

/* The platform's version text, in 32 bytes. */
UVEL_API char *UVEL_GetVersion(char *pszBuffer);

/* Banner of two lines in 512 bytes: product and version, then compile time and product again. */
UVEL_API char *UVEL_VersionInfoFmt(char *pszOutput, const char *pszProduct, const char *pszVersion,
                                   const char *pszCompileTime);

/* The first line of that banner, in 512 bytes. */
UVEL_API char *UVEL_VersionInfoWithoutCompileTime(char *pszOutput, const char *pszProduct, const char *pszVersion);

/* The first line for this platform, in 512 bytes. */
UVEL_API char *UVEL_VersionInfo(char *pszOutput);

/* The service layer's version text. (The name has lost a letter; programs link to it as it is.) */
UVEL_API const char *KIVO_GetVerion(void);

/* When the platform was compiled: month, day in two places, year and time. */
UVEL_API const char *KIVO_GetCompileTime(void);

#endif
