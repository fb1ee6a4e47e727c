/* Private log and dialogue: diagnostics that work without the host's logging.
 *
 * The private log appends lines to "/opt/oxmv8/home/nacutils.log" once it is switched on; it is meant for rare
 * failures. A line reads "[2024-03-07 09:05:00][NACUTILS][ERROR]the message" and ends with carriage return and line
 * feed. The dialogue hands formatted texts to a function that somebody registered.
 *
 * Usage:
 *     NAC_SetUtilsPvtLogGlobalSwitch();
 *     NAC_Utils_PvtLog(NAC_PVTLOG_ERROR, "port %u lost", ulPort);
 *
 * The file grows until somebody removes it; the folder must exist. Messages and dialogue texts have at most 511
 * characters.
 *
 * Threads: any. Each line is written whole, also when several processes append; the order is arbitrary. Register the
 * dialogue function when nobody is about to call through it.
 * Errors: silent. A text that is too long or cannot be formatted, and a line that cannot be written, is dropped. */
#ifndef UVELCOMMON_BASE_NAC_LOG_H
#define UVELCOMMON_BASE_NAC_LOG_H

#include <uvelcommon_base/kivo_types.h>

#define NAC_PVTLOG_ERROR 2U /* the only level that is written */

/* Receives a dialogue text, which is valid during the call. It may register another function and start dialogues. */
typedef void (*NAC_DIALOG_FUNC)(uint32_t ulCode, const char *pszText);

/* Switches the log on and gives the address of the switch. No operation switches it off. */
UVEL_API uint32_t *NAC_SetUtilsPvtLogGlobalSwitch(void);

/* The switch: 0 at load, 1 once switched on. */
UVEL_API uint32_t NAC_GetUtilsPvtLogGlobalSwitch(void);

/* Writes the local time of now as "2024-03-07 09:05:00" (the year in at least four places, padded with spaces) into
 * ulSize bytes; a buffer that is too small receives an empty text. Zeros stand for a time that the host does not know.
 * Always 0. */
UVEL_API uint32_t NAC_Utils_GetPvLogTime(char *pszBuffer, uint32_t ulSize);

/* Appends one line when the log is on and ulLevel is NAC_PVTLOG_ERROR; does nothing for any other level. */
UVEL_API void NAC_Utils_PvtLog(uint32_t ulLevel, const char *pszFormat, ...) __attribute__((format(printf, 2, 3)));

/* Registers the function that receives dialogue texts, in place of any other; null for none. */
UVEL_API void NAC_Utils_RegDiaLogHook(NAC_DIALOG_FUNC pfDialog);

/* Hands ulCode and the formatted text to the registered function. Null formats are dropped. */
UVEL_API void NAC_Utils_Dialog(uint32_t ulCode, const char *pszFormat, ...) __attribute__((format(printf, 2, 3)));

#endif
