#include <uvelhost/cli.h>

#include "model/query.h"
#include <charconv>
#include <cstdio>
#include <mutex>
#include <new>
#include <vector>

using namespace uvel::host::model;

namespace {

struct Texts {
    uint32_t mid;
    const CLI_TEXT_S *texts;
    uint32_t count;
};

constinit std::mutex g_lock; /* of the registered texts */

/* Never destroyed, as the texts in it. */
std::vector<Texts> &Registered() {
    static auto *const registered = new std::vector<Texts>;
    return *registered;
}

bool AreWhole(const CLI_TEXT_S *texts, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        if (texts[i].pszText == nullptr || texts[i].pszChinese == nullptr)
            return false;
    return true;
}

bool IsServiceBoard(const MDL_BOARD_S &board) {
    return board.ulRole == MDL_BOARD_SERVICE && board.ulPresent != 0 && board.ulCpuCount != 0;
}

} // namespace

uint32_t CLI_RegistChinese(uint32_t ulMid, const CLI_TEXT_S *pstTexts, uint32_t ulCount) {
    if (pstTexts == nullptr || !AreWhole(pstTexts, ulCount))
        return 1;
    std::lock_guard lock(g_lock);
    try {
        Registered().push_back({ulMid, pstTexts, ulCount});
        return UVELHOST_OK;
    } catch (const std::bad_alloc &) {
        return 1;
    }
}

const char *MDL_GetChinese(uint32_t ulMid, const char *pszText) {
    if (pszText == nullptr)
        return nullptr;
    std::lock_guard lock(g_lock);
    const auto &registered = Registered();
    for (auto each = registered.rbegin(); each != registered.rend(); ++each)
        for (uint32_t i = each->count; each->mid == ulMid && i-- > 0;)
            if (std::strcmp(each->texts[i].pszText, pszText) == 0)
                return each->texts[i].pszChinese;
    return nullptr;
}

uint32_t SPU_CpuHelp(char *pszHelp, uint32_t ulSize) {
    uint32_t lowest = UVELHOST_NONE, highest = 0, most_cpus = 0;
    const Reading model;
    model->boards.VisitFrom(0, [&](uint32_t slot, const Node<MDL_BOARD_S> &node) {
        if (!IsServiceBoard(node.value))
            return true;
        lowest = lowest == UVELHOST_NONE ? slot : lowest;
        highest = slot;
        most_cpus = node.value.ulCpuCount > most_cpus ? node.value.ulCpuCount : most_cpus;
        return true;
    });
    if (most_cpus == 0)
        return 1;
    char help[64];
    std::snprintf(help, sizeof help, "slot/cpu: <%u-%u>/<0-%u>", lowest, highest, most_cpus - 1);
    return WriteText(help, pszHelp, ulSize);
}

uint32_t SPU_CpuCheck(const char *pszArgument, uint32_t *pulSlot, uint32_t *pulCpu) {
    const char *slash = pszArgument == nullptr ? nullptr : std::strchr(pszArgument, '/');
    if (slash == nullptr || pulSlot == nullptr || pulCpu == nullptr)
        return 1;
    const char *end = slash + std::strlen(slash);
    uint32_t slot = 0, cpu = 0;
    const auto [slot_end, slot_error] = std::from_chars(pszArgument, slash, slot);
    const auto [cpu_end, cpu_error] = std::from_chars(slash + 1, end, cpu);
    if (slot_error != std::errc() || cpu_error != std::errc() || slot_end != slash || cpu_end != end)
        return 1;
    const Reading model;
    const MDL_BOARD_S *board = model->boards.Get(slot);
    if (board == nullptr || !IsServiceBoard(*board) || cpu >= board->ulCpuCount)
        return 1;
    *pulSlot = slot;
    *pulCpu = cpu;
    return UVELHOST_OK;
}
