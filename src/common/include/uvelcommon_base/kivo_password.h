/* Stored passwords: brings a password that may be clear or a cipher text to both forms.
 *
 * The host does the cryptography and knows a cipher text by its look. Of its formats 8 and 9 are old: such texts are
 * decrypted and encrypted afresh; 10 and 11 are current: such texts are kept.
 *
 * Usage:
 *     SRV_CRYPT_PASSWORD_S stPwd = {};
 *     stPwd.pszInput = szTyped;            stPwd.ulInputLen = (uint32_t)strlen(szTyped);
 *     stPwd.pszClear = szClear;            stPwd.ulClearSize = sizeof(szClear);
 *     stPwd.pszCipher = szCipher;          stPwd.ulCipherSize = sizeof(szCipher);
 *     stPwd.ulMaxClearLen = 128;
 *     if (SRV_CRYPT_GetClearAndCipherPassword(&stPwd) != KIVO_OK) ...
 *
 * Ownership: everything is the caller's; the library keeps no copy. Wipe the clear text when it is used.
 * Threads: any, as far as the host's cipher allows.
 * Errors: 0 or 1. A text that does not fit raises an assertion. */
#ifndef UVELCOMMON_BASE_KIVO_PASSWORD_H
#define UVELCOMMON_BASE_KIVO_PASSWORD_H

#include "kivo_types.h"

#define SRV_CRYPT_BLOCK_SIZE 32U  /* bytes of aucBlock */
#define SRV_CRYPT_RESULT_SIZE 32U /* bytes of aucResult */

/* A password in both forms, and where they are to be written. All of it is the caller's. */
typedef struct SRV_CRYPT_PASSWORD_S {
    const char *pszInput;                     /* clear text or cipher text */
    uint32_t ulInputLen;                      /* its characters */
    char *pszClear;                           /* receives the clear text */
    uint32_t ulClearSize;                     /* bytes at pszClear */
    char *pszCipher;                          /* receives the cipher text */
    uint32_t ulCipherSize;                    /* bytes at pszCipher */
    uint32_t ulEncryptParam;                  /* for the host's encryption, as it is */
    uint32_t ulMaxClearLen;                   /* most characters of an input that is a clear text */
    uint8_t ucAcceptUndecryptable;            /* 1: what looks like a cipher text and cannot be decrypted is clear */
    uint8_t aucBlock[SRV_CRYPT_BLOCK_SIZE];   /* for the host's cipher, both ways */
    uint8_t aucResult[SRV_CRYPT_RESULT_SIZE]; /* for the host's encryption to write */
} SRV_CRYPT_PASSWORD_S;

/* Decrypts pszCipher into ulClearSize bytes at pszClear, which are cleared before. pucBlock has SRV_CRYPT_BLOCK_SIZE
 * bytes. 1 for a null argument or a text that is no cipher text (pszClear is untouched), or when the host cannot
 * decrypt it. */
UVEL_API uint32_t SRV_CRYPT_GetClearPassword(const char *pszCipher, char *pszClear, uint32_t ulClearSize,
                                             uint32_t ulParam, uint8_t *pucBlock);

/* Fills pszClear and pszCipher from pszInput.
 *
 *     input                          pszClear       pszCipher             result
 *     clear text                     the input      encrypted             0
 *     clear text beyond the limit    untouched      untouched             1
 *     cipher text, formats 1 to 7    untouched      untouched             0
 *     cipher text, formats 8, 9      decrypted      encrypted afresh      0
 *     cipher text, formats 10, 11    decrypted      the input             0
 *     cipher text, other formats     untouched      untouched             1
 *
 * A cipher text that cannot be decrypted fails with 1; with ucAcceptUndecryptable set to 1 it counts as a clear text,
 * unless it has more than ulMaxClearLen characters. 1 for a null argument or pointer. Whether the host could encrypt is
 * not reported: an empty pszCipher says that it could not. */
UVEL_API uint32_t SRV_CRYPT_GetClearAndCipherPassword(SRV_CRYPT_PASSWORD_S *pstPassword);

#endif
