/* Compiled into a library that is built with -finstrument-functions: when the process ends, the offsets of all functions
 * it has entered are appended to the file that UVEL_TRACE names. */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

extern const char __ehdr_start __attribute__((visibility("hidden")));
static uint8_t g_aucSeen[1 << 23];

void __cyg_profile_func_enter(void *pFunction, void *pCaller);
void __cyg_profile_func_exit(void *pFunction, void *pCaller);

void __cyg_profile_func_enter(void *pFunction, void *pCaller) {
    const uintptr_t ulOffset = (uintptr_t)pFunction - (uintptr_t)&__ehdr_start;
    (void)pCaller;
    if (ulOffset < sizeof(g_aucSeen))
        g_aucSeen[ulOffset] = 1;
}

void __cyg_profile_func_exit(void *pFunction, void *pCaller) {
    (void)pFunction;
    (void)pCaller;
}

__attribute__((destructor)) static void Write(void) {
    const char *pszPath = getenv("UVEL_TRACE");
    FILE *pstFile = pszPath != NULL ? fopen(pszPath, "a") : NULL;
    if (pstFile == NULL)
        return;
    for (size_t i = 0; i < sizeof(g_aucSeen); i++)
        if (g_aucSeen[i])
            fprintf(pstFile, "%zx\n", i);
    fclose(pstFile);
}
