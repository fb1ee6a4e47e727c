#include <uvelcommon_base/kivo_mem.h>

#include <uvelhost/memory.h>

void *g_stPfKivoMemFunc = nullptr;

static uint32_t g_kivoMemMallocHandle = KIVO_NONE; /* not opened yet */

/* True when the account is open. Not locked: the host gives a second registration the same handle. */
static bool OpenAccount() {
    return g_kivoMemMallocHandle != KIVO_NONE || QAL_HandleInitialize("nac-util", &g_kivoMemMallocHandle) == 0;
}

void *KIVO_MemAlloc(uint32_t, uint32_t ulSize) {
    if (!OpenAccount())
        return nullptr;
    return QAL_MemAlloc(g_kivoMemMallocHandle, g_ucSysMemPtNo, ulSize);
}

void *KIVO_MemAlloc_F(uint32_t, uint32_t ulSize, const char *pszFile, uint32_t ulLine) {
    if (!OpenAccount())
        return nullptr;
    return QAL_MemAlloc_F(g_kivoMemMallocHandle, g_ucSysMemPtNo, ulSize, pszFile, ulLine);
}

void *KIVO_MemReAlloc(void *pBlock, uint32_t ulSize) {
    if (!OpenAccount())
        return nullptr;
    return QAL_MemReAlloc(g_kivoMemMallocHandle, g_ucSysMemPtNo, pBlock, ulSize);
}

/* The host finds the account of a block by itself: frees pass 0, not the handle. */
uint32_t KIVO_MemFree(void *pBlock) {
    return pBlock == nullptr ? KIVO_OK : QAL_MemFree(0, pBlock);
}

uint32_t KIVO_MemFree_F(void *pBlock, const char *pszFile, uint32_t ulLine) {
    return pBlock == nullptr ? KIVO_OK : QAL_MemFree_F(0, pBlock, pszFile, ulLine);
}
