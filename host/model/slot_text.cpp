/* Names of slots: "3" in a device of one chassis, "1/3" (chassis and its slot) in one of several. */
#include "model/query.h"

#include <cctype>
#include <charconv>
#include <cstdio>

using namespace uvel::host::model;

namespace {

bool HasSeveralChassis(const Reading &model) {
    uint32_t first = UVELHOST_NONE;
    bool several = false;
    model->boards.VisitFrom(0, [&](uint32_t, const Node<MDL_BOARD_S> &node) {
        first = first == UVELHOST_NONE ? node.value.ulChassis : first;
        several = node.value.ulChassis != first;
        return !several;
    });
    return several;
}

/* The decimal number that a text is, with nothing before, behind or between; false for anything else. */
bool ReadNumber(const char *begin, const char *end, uint32_t &number) {
    const auto [behind, error] = std::from_chars(begin, end, number);
    return error == std::errc() && behind == end && number != UVELHOST_NONE;
}

uint32_t FindSlot(const Reading &model, uint32_t chassis, uint32_t local_slot) {
    uint32_t found = UVELHOST_NONE;
    model->boards.VisitFrom(0, [&](uint32_t slot, const Node<MDL_BOARD_S> &node) {
        if (node.value.ulChassis == chassis && node.value.ulLocalSlot == local_slot)
            found = slot;
        return found == UVELHOST_NONE;
    });
    return found;
}

} // namespace

uint32_t IF_GetSlotStrBySlotId(uint32_t ulSlot, char *pszSlot, uint32_t ulSize) {
    if (ulSlot == UVELHOST_NONE)
        return 1;
    const Reading model;
    char text[32];
    if (!HasSeveralChassis(model)) {
        std::snprintf(text, sizeof text, "%u", ulSlot);
        return WriteText(text, pszSlot, ulSize);
    }
    const MDL_BOARD_S *board = model->boards.Get(ulSlot);
    if (board == nullptr)
        return 1;
    std::snprintf(text, sizeof text, "%u/%u", board->ulChassis, board->ulLocalSlot);
    return WriteText(text, pszSlot, ulSize);
}

uint32_t BDS_IfnetGetSlotIdBySlotStr(const char *pszSlot, uint32_t *pulSlot) {
    if (pszSlot == nullptr || pulSlot == nullptr)
        return 1;
    const Reading model;
    const char *end = pszSlot + std::strlen(pszSlot);
    const char *slash = std::strchr(pszSlot, '/');
    uint32_t chassis = 0, slot = 0;
    if (HasSeveralChassis(model) != (slash != nullptr) ||
        !ReadNumber(slash == nullptr ? pszSlot : slash + 1, end, slot))
        return 1;
    if (slash != nullptr)
        slot = ReadNumber(pszSlot, slash, chassis) ? FindSlot(model, chassis, slot) : UVELHOST_NONE;
    if (slot == UVELHOST_NONE)
        return 1;
    *pulSlot = slot;
    return UVELHOST_OK;
}
