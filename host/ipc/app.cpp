/* The process as the platform knows it: its application record, its task, and the task to tell at start-up. */

#include <atomic>
#include <uvelhost/component.h>
#include <uvelhost/exec.h>
#include <uvelhost/task.h>

namespace {

std::atomic<SYS_APP_INFO_S *> g_app_info{nullptr};
std::atomic<uint32_t> g_follow_me{UVELHOST_NONE};

} // namespace

uint32_t SYS_RegAppInfo(SYS_APP_INFO_S *pstInfo) {
    if (pstInfo == nullptr)
        return 1;
    SYS_APP_INFO_S *published = nullptr;
    return g_app_info.compare_exchange_strong(published, pstInfo) || published == pstInfo ? UVELHOST_OK : 1;
}

uint32_t SYS_StartApp(const char *pszName, void (*pfEntry)(void)) {
    SYS_APP_INFO_S *info = g_app_info.load();
    return info == nullptr ? 1 : QAL_CreateTask(pszName, &info->ulTaskId, pfEntry, info->ulPriority, 0, nullptr);
}

uint32_t OXM_GetTaskFollowMe(void) {
    return g_follow_me.load();
}

void OXM_SetTaskFollowMe(uint32_t ulTask) {
    g_follow_me.store(ulTask);
}
