#include <uvelhost/interface.h>

#include <cstdio>
#include <cstring>

uint32_t IF_GetSlotStrBySlotId(uint32_t ulSlot, char *pszSlot, uint32_t ulSize) {
    char text[16];
    const int length = std::snprintf(text, sizeof text, "%u", ulSlot);
    if (pszSlot == nullptr || ulSlot == UVELHOST_NONE || static_cast<uint32_t>(length) >= ulSize)
        return 1;
    std::memcpy(pszSlot, text, static_cast<size_t>(length) + 1);
    return 0;
}
