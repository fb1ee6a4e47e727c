/* Command line of the device: what the services add to it. */
#ifndef UVELHOST_CLI_H
#define UVELHOST_CLI_H

#include "types.h"

/* Help text of a command element in two languages; all texts are UTF-8. */
typedef struct {
    const char *pszText;    /* the text that the command tree holds */
    const char *pszChinese; /* what is shown in its place to a user of that language */
} CLI_TEXT_S;

/* Adds ulCount Chinese help texts for the commands of the module ulMid. The texts and the array stay the caller's and
 * must live as long as the process. A text that is there already is replaced. Fails for null, and when memory is short;
 * users then see the untranslated texts. */
UVELHOST_API uint32_t CLI_RegistChinese(uint32_t ulMid, const CLI_TEXT_S *pstTexts, uint32_t ulCount);

/* Writes the help for a command argument that names a service processor, "slot/cpu" with the ranges that the device has
 * now, into ulSize bytes. Fails when it does not fit, and when the device has no service processor. */
UVELHOST_API uint32_t SPU_CpuHelp(char *pszHelp, uint32_t ulSize);

/* Reads such an argument. Fails for any other text and for a processor that the device does not have. */
UVELHOST_API uint32_t SPU_CpuCheck(const char *pszArgument, uint32_t *pulSlot, uint32_t *pulCpu);

#endif
