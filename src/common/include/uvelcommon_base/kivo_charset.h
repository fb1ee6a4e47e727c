/* Character classes: does a user's name or key hold only the characters that its kind allows?
 *
 * Usage:
 *     (void)SRV_InitCharSet();                                                   // once, before threads check
 *     if (SRV_CheckValidCharFlat(pucName, ulLen, SRV_CHARSET_NAME) != KIVO_OK) ...  // refuse the name
 *
 * Ownership: the table is the library's; read it, do not write it.
 * Threads: any once the table is built. The first check builds it when nobody did; another thread that checks in that
 * moment may find characters not allowed that are.
 * Errors: 1 for every text that is not allowed, and for bad arguments. */
#ifndef UVELCOMMON_BASE_KIVO_CHARSET_H
#define UVELCOMMON_BASE_KIVO_CHARSET_H

#include "kivo_types.h"

/* Classes. No class allows space, control characters or bytes above 126. */
#define SRV_CHARSET_NAME 0U    /* '!' to '~' without " % ' * / : < > ? @ \ | */
#define SRV_CHARSET_TEXT 1U    /* '!' to '~' without ' ? */
#define SRV_CHARSET_WORD 2U    /* letters, digits, '_', '-', '.' */
#define SRV_CHARSET_NOQUOTE 3U /* '!' to '~' without ' */
#define SRV_CHARSET_NUM 4U

#define SRV_CHARSET_ROW_SIZE 256U    /* bytes of a class's row: one for each byte value */
#define SRV_CHARSET_TABLE_SIZE 1024U /* bytes of all rows */

/* One row of 256 bytes for each class: not 0 where the class allows the byte. All 0 until the table is built. */
UVEL_DATA uint8_t g_pstUVELSrvCharSet[SRV_CHARSET_TABLE_SIZE];

/* Builds the table, also when it stands already. Always 0. */
UVEL_API uint32_t SRV_InitCharSet(void);

/* 0 when class ucClass allows each of the ulLen bytes of pucText; an empty text is allowed. 1 when it does not, for a
 * null text or a class above 3, and for the texts "-" and "--" in every class: they stand for "no value". */
UVEL_API uint32_t SRV_CheckValidCharFlat(const uint8_t *pucText, uint32_t ulLen, uint8_t ucClass);

#endif
