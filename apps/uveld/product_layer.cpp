#include "product_layer.h"

#include <standby_hooks.h>
#include <stdexcept>
#include <uvelcommon_base/kivo_chi.h>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelcommon_base/uvel_event.h>
#include <uvelhost/exec.h>
#include <uvelhost/task.h>

namespace uveld {

namespace {

constexpr uint32_t HANDSHAKE_TIMEOUT_MS = 10'000;

/* The event task's hooks take no context. */
ProcessConfiguration g_process;

uint32_t IfMainProcess() {
    return g_process.main_process ? 1 : 0;
}

uint32_t SelfComponentType() {
    return g_process.component_type;
}

void ApplySettings(const Configuration &configuration) {
    for (const auto &[index, value] : configuration.specifications)
        KIVO_SetKivoCommonSpec(index, value);
    for (const auto &[index, value] : configuration.switches)
        KIVO_SetPdtOxmCfgSwitch(index, value);
    g_ulUVELCommMid = configuration.process.module_id;
}

void SetUpEventTask(const ProcessConfiguration &process) {
    g_process = process;
    const UVEL_EVENT_ADP_HOOK_S hooks = {IfMainProcess, nullptr, KIVO_RegEventCallBack, SelfComponentType};
    UVEL_EVENT_Api_SetGlobalVariable(process.module_id, process.io_module_id, process.channel);
    UVEL_EVENT_Api_SetSpecs(UVEL_EVENT_SPEC_QUEUE_DEPTH, process.event_queue_depth);
    UVEL_EVENT_Api_SetAdpHook(&hooks);
}

} // namespace

void BringLibraryUp(const Configuration &configuration) {
    if (UVEL_GlobalVarInit() != KIVO_OK)
        throw std::runtime_error("the library's global tables are initialised already");
    KIVO_VirtualToHook();
    if (configuration.standby.has_value())
        uvel::apps::InstallStandbyHooks();
    ApplySettings(configuration);
    SetUpEventTask(configuration.process);
}

void StartEventTask() {
    OXM_SetTaskFollowMe(QAL_TaskGetSelf());
    if (UVEL_EVENT_Api_RegApp() != KIVO_OK)
        throw std::runtime_error("the host does not accept this application");
    if (SYS_StartApp("EVNT", UVEL_EVENT_TaskEntry) != UVELHOST_OK)
        throw std::runtime_error("the event task cannot be started");
    const uint32_t task = g_eventdpAppInfo.ulTaskId;
    if (QAL_EventWrite(task, UVEL_EVENT_START_BIT) != UVELHOST_OK ||
        QAL_EventRead(UVEL_EVENT_START_BIT, QAL_EVENT_ALL, HANDSHAKE_TIMEOUT_MS, nullptr) != UVELHOST_OK ||
        QAL_EventWrite(task, UVEL_EVENT_START_BIT) != UVELHOST_OK)
        throw std::runtime_error("the event task does not answer");
}

} // namespace uveld
