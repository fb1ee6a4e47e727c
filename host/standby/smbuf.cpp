#include "standby/smbuf.h"

#include "os/accounts.h"
#include <uvelhost/memory.h>

using namespace uvel::host;
using namespace uvel::host::standby;

YSB_SMBUF_S *YSB_Adapt_Smbuf_Create(uint32_t ulMid, uint32_t ulSize) {
    if (ulSize > LARGEST_SMBUF)
        return nullptr;
    const uint32_t bytes = static_cast<uint32_t>(sizeof(YSB_SMBUF_S)) + ulSize;
    auto *smbuf = static_cast<YSB_SMBUF_S *>(Allocate(QAL_ConverMIDTOHandle(ulMid), bytes));
    if (smbuf != nullptr)
        smbuf->size = ulSize;
    return smbuf;
}

void YSB_Adapt_Smbuf_Destroy(YSB_SMBUF_S *pstSmbuf) {
    if (pstSmbuf != nullptr)
        Release(pstSmbuf);
}

void *YSB_Adapt_Smbuf_M2D(YSB_SMBUF_S *pstSmbuf) {
    return pstSmbuf == nullptr || pstSmbuf->size == 0 ? nullptr : DataOf(pstSmbuf);
}
