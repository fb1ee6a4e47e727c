/* Access sessions as a product module: who is logged on where, kept on two devices.
 *
 * Settings: document (path of the YANG XML document, optional), socket (name of the socket in the run directory,
 * "sessions.sock" unless set), requests (path of a file of requests that are carried out when this device first is the
 * active one, optional). */

#include <uveld/module.h>

#include <atomic>
#include <fstream>
#include <memory>
#include <string>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelcommon_base/kivo_show.h>
#include <uvelcommon_base/kivo_time.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uvelhost/l2if.h>
#include <uvelhost/task.h>

#include "backup.h"
#include "commands.h"
#include "server.h"

namespace session_table {

namespace {

constexpr uint32_t MID = 0xC2400000;
constexpr uint32_t MESSAGE_VERSION = 1;
constexpr uint8_t PRIORITY = 10;
constexpr uint32_t LINE_STATE = 27; /* sub-events of the state event and of the interface event */
constexpr uint32_t INTERFACE_GOES = 1;

/* The module of this process: the library's callbacks know no context. */
struct Module {
    const UVELD_CONTEXT_S *uveld;
    Sessions sessions;
    Backup backup;
    Server server;
    bool has_link = false;

    Module(const UVELD_CONTEXT_S *context, const Settings &settings)
        : uveld(context), sessions(MID, settings), backup(&sessions, KIVO_Ysb_MOID_Get(MID, 0, 0, 0, 0, 0, 0, 0)),
          server([this](const std::string &line) { return AnswerTo(line); }, Backup::IsKept, MAX_LINE_BYTES) {
        sessions.SetListener([this](Change change, const Session &session) { backup.Send(change, session); });
    }

    /* A device that has a peer promises no change before it is on both. */
    Reply AnswerTo(const std::string &line) {
        std::string answer = Answer(&sessions, line, SRV_GmTmNowInSec());
        return has_link && answer == DONE ? Backup::Promise() : Reply(std::move(answer));
    }

    void Log(uint32_t level, const std::string &text) const { uveld->pfLog(uveld->pModule, level, text.c_str()); }
    void LogEnd(uint32_t count, const std::string &why) const {
        if (count != 0)
            Log(UVELD_LOG_INFO, std::to_string(count) + " sessions ended: " + why);
    }
};

std::unique_ptr<Module> g_module;

/* ---- a file of requests ---- */

void CarryOutFile() {
    const std::string path = g_module->uveld->pfSetting(g_module->uveld->pModule, "requests");
    std::ifstream file(path);
    if (!file) {
        g_module->Log(UVELD_LOG_ERROR, path + " cannot be read: none of its requests is carried out");
        return;
    }
    const FileResult result = CarryOut(&g_module->sessions, &file, SRV_GmTmNowInSec());
    g_module->Log(UVELD_LOG_INFO, path + ": " + std::to_string(result.done) + " requests carried out");
    if (result.refused != 0)
        g_module->Log(UVELD_LOG_WARNING, path + ": " + std::to_string(result.refused) +
                                             " requests refused, the first in line " + result.first_refused);
}

/* On a task of its own: the thread that tells of the role must not be held up, and modules run before they serve. */
void CarryOutFileOnce() {
    static std::atomic_flag is_done;
    uint32_t task = 0;
    if (g_module->uveld->pfSetting(g_module->uveld->pModule, "requests") != nullptr && !is_done.test_and_set() &&
        QAL_CreateTask("sessfile", &task, CarryOutFile, 85, 0, nullptr) != UVELHOST_OK)
        g_module->Log(UVELD_LOG_ERROR, "no task for the file of requests: none of them is carried out");
}

/* ---- events ---- */

uint32_t OnLineState(uint32_t, void *data) {
    const auto *state = static_cast<const KIVO_EVT_IF_STATE_S *>(data);
    if (state->ulState == KIVO_EVT_STATE_DOWN)
        g_module->LogEnd(g_module->sessions.InterfaceDown(state->ulIfIndex),
                         "interface " + std::to_string(state->ulIfIndex) + " went down");
    return KIVO_OK;
}

uint32_t OnInterfaceGoes(uint32_t, void *data) {
    const uint32_t ifindex = static_cast<const KIVO_EVT_IF_S *>(data)->ulIfIndex;
    g_module->LogEnd(g_module->sessions.InterfaceDown(ifindex), "interface " + std::to_string(ifindex) + " is gone");
    return KIVO_OK;
}

uint32_t OnPortsLeaveVlans(uint32_t, void *data) {
    const auto *ports = static_cast<const KIVO_EVT_VLAN_PORTS_S *>(data);
    const auto *entries = reinterpret_cast<const uint32_t *>(ports + 1);
    for (uint32_t i = 0; i < ports->ulCount; ++i) {
        uint32_t ifindex = 0;
        if (BDS_L2IF_PORT_GetIfIndex(entries[i], &ifindex) != UVELHOST_OK)
            continue;
        for (uint32_t vlan = ports->usFirstVlan; vlan <= ports->usLastVlan; ++vlan)
            g_module->LogEnd(g_module->sessions.PortLeftVlan(ifindex, vlan),
                             "interface " + std::to_string(ifindex) + " left VLAN " + std::to_string(vlan));
    }
    return KIVO_OK;
}

bool RegisterForEvents() {
    const struct {
        uint32_t event;
        uint32_t value;
        UVEL_EVENT_CALLBACK callback;
    } callbacks[] = {
        {KIVO_EVT_IF_STATE, LINE_STATE, OnLineState},
        {KIVO_EVT_IF, INTERFACE_GOES, OnInterfaceGoes},
        {KIVO_EVT_VLAN_PORTS_177, UVEL_EVENT_ANY_VALUE, OnPortsLeaveVlans},
        {KIVO_EVT_VLAN_RANGE_PORTS_179, UVEL_EVENT_ANY_VALUE, OnPortsLeaveVlans},
    };
    for (const auto &[event, value, callback] : callbacks) {
        if (UVEL_EventCallBackReg(MID, event, value, PRIORITY, 1, 0, callback) != KIVO_OK)
            return false;
    }
    return true;
}

/* ---- standby ---- */

void OnRole(uint32_t active) {
    g_module->sessions.SetActive(active == 1);
    const Digest digest = g_module->sessions.GetDigest();
    g_module->Log(UVELD_LOG_INFO, std::string("this device is ") + (active == 1 ? "the active one" : "on standby") +
                                      " with " + std::to_string(digest.count) + " sessions");
    if (active == 1)
        CarryOutFileOnce();
}

void TakePartInStandby(const UVELD_CONTEXT_S *context) {
    UVELD_STANDBY_S standby{};
    standby.ulModId = KIVO_Ysb_MOID_Get(MID, 0, 0, 0, 0, 0, 0, 0);
    standby.pfMessage = [](void *message) { g_module->backup.Receive(message); };
    standby.pfBatch = [] { g_module->backup.SendAll(); };
    standby.pfPeerBatch = [](uint32_t begins) { g_module->backup.PeerBatch(begins == 1); };
    standby.pfRole = OnRole;
    standby.pfProgress = [] { g_module->server.LookAgain(); };
    if (context->pfStandby(context->pModule, &standby) != 0)
        return; /* without a link this device is all there is */
    g_module->has_link = true;
    g_module->sessions.SetActive(false); /* until the pair has found its roles */
    KIVO_Ysb_LocalVersion_Register(standby.ulModId, MESSAGE_VERSION, 1, 0, 0, 0, 0, 0);
}

/* ---- life ---- */

uint32_t Show() {
    const Digest digest = g_module->sessions.GetDigest();
    g_module->uveld->pfPrint(g_module->uveld->pModule, ("sessions: " + std::to_string(digest.count)).c_str());
    g_module->uveld->pfPrint(
        g_module->uveld->pModule,
        ("malformed messages of the peer: " + std::to_string(g_module->backup.MalformedMessages())).c_str());
    return KIVO_OK;
}

uint32_t Start(const UVELD_CONTEXT_S *context) {
    Settings settings;
    std::string reason;
    const char *document = context->pfSetting(context->pModule, "document");
    if (document != nullptr && !LoadSettings(document, &settings, &reason)) {
        context->pfLog(context->pModule, UVELD_LOG_ERROR, reason.c_str());
        return KIVO_FAIL;
    }
    g_module = std::make_unique<Module>(context, settings);
    const char *socket = context->pfSetting(context->pModule, "socket");
    const std::string path = std::string(context->pszRunDirectory) + "/" + (socket ? socket : "sessions.sock");
    if (!g_module->server.Open(path, &reason)) {
        g_module->Log(UVELD_LOG_ERROR, reason);
        return KIVO_FAIL;
    }
    TakePartInStandby(context);
    (void)UVEL_FuncRegShowModuleID(MID, Show);
    return RegisterForEvents() ? KIVO_OK : KIVO_FAIL;
}

void Run() {
    uint32_t task = 0;
    if (QAL_CreateTask(
            "sessions", &task, [] { g_module->server.Run(); }, 85, 0, nullptr) != UVELHOST_OK)
        g_module->Log(UVELD_LOG_ERROR, "no task for the socket: nobody can log on");
    if (!g_module->has_link)
        CarryOutFileOnce();
}

void Stop() {
    g_module->server.Stop();
}

} // namespace

} // namespace session_table

const UVELD_MODULE_S *UveldModule(void) {
    static const UVELD_MODULE_S module = {UVELD_MODULE_VERSION, "sessions",         session_table::MID,
                                          session_table::Start, session_table::Run, session_table::Stop};
    return &module;
}
