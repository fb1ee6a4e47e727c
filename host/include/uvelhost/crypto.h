/* Random numbers, FIPS mode, and the cipher for stored passwords. */
#ifndef UVELHOST_CRYPTO_H
#define UVELHOST_CRYPTO_H

#include "types.h"

/* ---- random numbers ---- */

/* Fills ulLen bytes with random numbers fit for keys; length 0 is a success. Fails for null, with length 0 too, and
 * when the generator is not to be trusted; what the buffer then holds must not be used. Callers report a failure in
 * FIPS mode (below). */
UVELHOST_API uint32_t CRYPT_random(uint8_t *pucBuffer, uint32_t ulLen);

/* 1 when the process works in FIPS mode, otherwise 0. */
UVELHOST_API uint32_t FIPSIsEnable(void);

/* Takes the report of a module that the continuous test of the random numbers failed for it. The host logs it; what
 * follows for the device is its decision. Never null. */
UVELHOST_API void FIPS_SecTestContinuousRandomNumberError(const char *pszModule);

/* ---- passwords ----
 * A password is stored as a cipher text, which is printable and tells its format by itself. On Linux the cipher is
 * AES-256-GCM, or what UVELHOST_PASSWORD_CIPHER names ("aes-256-gcm", "chacha20-poly1305"), under a key of the device
 * in the file that UVELHOST_KEY_FILE names, by default /var/lib/uvelhost/password.key. The first encryption makes the
 * file with mode 0600. A file that others may read, that is somebody else's or has another size is refused. */

#define PSSP_BLOCK_SIZE 32U  /* bytes of a parameter block */
#define PSSP_RESULT_SIZE 32U /* most bytes that the host writes to a result block */
#define PSSP_CLEAR_MAX 4096U /* most characters of a clear text */

/* Bytes for the cipher text of ulLen characters, its terminator included. */
#define PSSP_CIPHER_SIZE(ulLen) (8U + (((ulLen) / 16U * 16U + 44U) * 4U + 2U) / 3U)

/* Formats that PSSP_CryptIsCipher tells apart. */
#define PSSP_FORMAT_CLEAR 0U /* no cipher text */
#define PSSP_FORMAT_OLD_A 8U /* older formats: callers decrypt and encrypt afresh */
#define PSSP_FORMAT_OLD_B 9U
#define PSSP_FORMAT_CURRENT_A 10U /* current formats: callers keep the text as it is */
#define PSSP_FORMAT_CURRENT_B 11U

/* Format of a text: PSSP_FORMAT_CLEAR for one that is no cipher text and for null, a number above PSSP_FORMAT_CURRENT_B
 * for a format of the future. The text is not decrypted: it may look like a cipher text and not be one. Never waits. */
UVELHOST_API uint32_t PSSP_CryptIsCipher(const char *pszText);

/* Writes the clear text of a cipher text of ulCipherLen characters, terminated, into ulClearSize bytes. ulParam is the
 * product's and has no meaning on Linux. pucBlock (PSSP_BLOCK_SIZE bytes) must be what the text was encrypted with.
 * Fails for null arguments, for what cannot be decrypted (another key, another block, a changed or cut text) and when
 * the clear text does not fit; the ulClearSize bytes are then all 0. */
UVELHOST_API uint32_t PSSP_DecryptSec(const char *pszCipher, uint32_t ulCipherLen, char *pszClear, uint32_t ulClearSize,
                                      uint32_t ulParam, const uint8_t *pucBlock);

/* Writes the cipher text, in a current format and terminated, of ulClearLen characters into ulCipherSize bytes; two
 * cipher texts of one password differ. Nothing behind a terminator is read: a text shorter than ulClearLen fails.
 * ulParam and pucBlock as above. pucResult receives what the host has to say about the cipher text, at most
 * PSSP_RESULT_SIZE bytes; on Linux that is nothing, and it may be null. Fails for other null arguments, without a key,
 * for more than PSSP_CLEAR_MAX characters and when the cipher text does not fit; the buffer then holds an empty text.
 * Callers do not look at the result. */
UVELHOST_API uint32_t PSSP_EncryptSec(const char *pszClear, uint32_t ulClearLen, char *pszCipher, uint32_t ulCipherSize,
                                      uint32_t ulParam, const uint8_t *pucBlock, uint8_t *pucResult);

#endif
