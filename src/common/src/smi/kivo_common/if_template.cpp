/* Interface templates: lists of interface-type names that belong to their callers. */
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_settings.h>

#include <cstddef>
#include <cstring>
#include <securec.h>
#include <uvelhost/assert.h>

static constexpr char SOURCE[] = "src/common/src/smi/kivo_common";

static_assert(sizeof(KIVO_IF_TEMPLET_ENTRY_S) == 16);
static_assert(offsetof(KIVO_IF_TEMPLET_ENTRY_S, ulIfType) == 0);
static_assert(offsetof(KIVO_IF_TEMPLET_ENTRY_S, pszName) == 8);
static_assert(sizeof(KIVO_IF_TEMPLET_S) == 16);
static_assert(offsetof(KIVO_IF_TEMPLET_S, pstEntries) == 0);
static_assert(offsetof(KIVO_IF_TEMPLET_S, ulCapacity) == 8);
static_assert(offsetof(KIVO_IF_TEMPLET_S, ulCount) == 12);

/* A zeroed block; null also for a size that the memory service cannot express. */
static void *AllocZeroed(uint32_t ulMid, uint64_t ullSize) {
    if (ullSize > UINT32_MAX)
        return nullptr;
    void *pBlock = KIVO_MemAlloc(ulMid, static_cast<uint32_t>(ullSize));
    if (pBlock != nullptr)
        memset(pBlock, 0, ullSize);
    return pBlock;
}

uint32_t KIVO_InitIfTemplet(KIVO_IF_TEMPLET_S *pstTemplet, uint32_t ulMid) {
    if (pstTemplet == nullptr || ulMid == KIVO_NONE) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }

    if (pstTemplet->ulCapacity == 0)
        pstTemplet->ulCapacity = KIVO_IF_TEMPLET_DEFAULT_CAPACITY;
    const uint64_t ullSize = uint64_t{pstTemplet->ulCapacity} * sizeof(KIVO_IF_TEMPLET_ENTRY_S);
    pstTemplet->pstEntries = static_cast<KIVO_IF_TEMPLET_ENTRY_S *>(AllocZeroed(ulMid, ullSize));
    if (pstTemplet->pstEntries == nullptr)
        return KIVO_FAIL;
    pstTemplet->ulCount = 0;
    return KIVO_OK;
}

static bool IsKnown(const KIVO_IF_TEMPLET_S *pstTemplet, uint32_t ulIfType, const char *pszName) {
    for (uint32_t i = 0; i < pstTemplet->ulCount; ++i) {
        const KIVO_IF_TEMPLET_ENTRY_S *pstEntry = &pstTemplet->pstEntries[i];
        if (pstEntry->ulIfType == ulIfType || strcmp(pstEntry->pszName, pszName) == 0)
            return true;
    }
    return false;
}

uint32_t KIVO_SetIfTemplet(KIVO_IF_TEMPLET_S *pstTemplet, uint32_t ulIfType, const char *pszName, uint32_t ulMid) {
    if (pstTemplet == nullptr || pszName == nullptr || pszName[0] == '\0') {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    /* A template whose initialisation failed has no entries, whatever its capacity says. */
    if (pstTemplet->ulCount >= pstTemplet->ulCapacity || pstTemplet->pstEntries == nullptr || ulMid == KIVO_NONE) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    if (IsKnown(pstTemplet, ulIfType, pszName)) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }

    const uint64_t ullSize = strlen(pszName) + 1;
    KIVO_IF_TEMPLET_ENTRY_S *pstEntry = &pstTemplet->pstEntries[pstTemplet->ulCount];
    pstEntry->pszName = static_cast<char *>(AllocZeroed(ulMid, ullSize));
    if (pstEntry->pszName == nullptr)
        return KIVO_FAIL;

    /* On purpose the type counts even when the copy failed, then with an empty name. */
    if (strcpy_s(pstEntry->pszName, ullSize, pszName) != EOK)
        qal_assert(SOURCE, __LINE__);
    pstEntry->ulIfType = ulIfType;
    ++pstTemplet->ulCount;
    return KIVO_OK;
}
