/* Step 5: two devices count together. */

#include <arpa/inet.h>
#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <uvelcommon_base/kivo_chi.h>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelcommon_base/kivo_if_query.h>
#include <uvelcommon_base/kivo_ordered_table.h>
#include <uvelcommon_base/kivo_show.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uveld/module.h>
#include <uvelhost/standby_link.h>
#include <vector>

namespace {

constexpr uint32_t MID = 0xC2500000;
constexpr uint32_t MOST_INTERFACES = 10'000;
constexpr uint32_t LINE_STATE = 27;  /* sub-event of KIVO_EVT_IF_STATE */
constexpr uint32_t MESSAGE_TYPE = 2; /* of the channel: a change of a table */
constexpr uint32_t MESSAGE_VERSION = 1;

/* How often a line went down. */
struct Flaps {
    char name[IF_NAME_SIZE];
    uint32_t count;
};

const UVELD_CONTEXT_S *g_uveld = nullptr;
std::mutex g_lock; /* the table is asked and changed on several threads */
SRVOT_TBL_S *g_flaps = nullptr;
std::string g_uplink;
uint32_t (*g_is_wan)(uint32_t ifindex) = nullptr; /* what answered before */
uint32_t g_channel = KIVO_NONE;                   /* this module's id on the link; none without a link */
std::atomic<uint32_t> g_message_id = 0;           /* messages are sent by two threads */

void Log(uint32_t level, const std::string &text) {
    g_uveld->pfLog(g_uveld->pModule, level, text.c_str());
}

int32_t CompareName(const void *element, const void *key) {
    return std::strcmp(static_cast<const Flaps *>(element)->name, static_cast<const char *>(key));
}

/* One more for the interface of this name: how many that makes. 0: there is no room for it. */
uint32_t CountOne(const Flaps &fresh) {
    const std::lock_guard lock(g_lock);
    auto *flaps = static_cast<Flaps *>(SRVOT_FindElmt(g_flaps, fresh.name));
    if (flaps == nullptr && SRVOT_AddElmt(g_flaps, fresh.name, &fresh) == KIVO_OK)
        flaps = static_cast<Flaps *>(SRVOT_GetCurrElmt(g_flaps));
    return flaps == nullptr ? 0 : ++flaps->count;
}

/* A message is a record with its count in network order. */
void Send(Flaps flaps) {
    void *buffer = nullptr;
    if (CBUF_Alloc(CHI_BACK_YSB, &buffer, sizeof flaps) != KIVO_OK) {
        YSB_Link_StartBatch(); /* what cannot be said now is said again with all the rest */
        return;
    }
    flaps.count = htonl(flaps.count);
    std::memcpy(CBUF_C2D(CHI_BACK_YSB, buffer), &flaps, sizeof flaps);
    CHI_MSG_INFO_S info{};
    info.ulTotalLength = sizeof flaps;
    info.ulMsgType = MESSAGE_TYPE;
    info.ulMsgId = ++g_message_id;
    if (CHI_SetMsgInfo(CHI_BACK_YSB, buffer, &info) != KIVO_OK) {
        CBUF_Free(CHI_BACK_YSB, buffer);
        return;
    }
    const uint32_t length = CHI_GetMsgHeadLen(CHI_BACK_YSB) + sizeof flaps;
    CHI_YSB_OutputPacket(g_channel, reinterpret_cast<uintptr_t>(buffer), CHI_ANY_CHANNEL, length);
}

/* Counts only grow: the larger one is right, whatever came first. */
void Merge(const Flaps &theirs) {
    const std::lock_guard lock(g_lock);
    auto *ours = static_cast<Flaps *>(SRVOT_FindElmt(g_flaps, theirs.name));
    if (ours == nullptr)
        (void)SRVOT_AddElmt(g_flaps, theirs.name, &theirs);
    else if (theirs.count > ours->count)
        ours->count = theirs.count;
}

/* A message of the peer, ours to free. What comes from outside is checked: its length, and that the name ends. */
void Receive(void *message) {
    CHI_MSG_INFO_S info{};
    Flaps theirs;
    if (CHI_GetMsgInfo(CHI_BACK_YSB, message, &info) == KIVO_OK && info.ulTotalLength == sizeof theirs) {
        std::memcpy(&theirs, CBUF_C2D(CHI_BACK_YSB, message), sizeof theirs);
        theirs.count = ntohl(theirs.count);
        if (std::memchr(theirs.name, '\0', sizeof theirs.name) != nullptr)
            Merge(theirs);
    }
    CBUF_Free(CHI_BACK_YSB, message);
}

/* Sending waits for the peer: a copy is sent, so that nobody waits for the lock meanwhile. */
void SendAll() {
    std::vector<Flaps> all;
    {
        const std::lock_guard lock(g_lock);
        for (uint32_t i = 0; i < SRVOT_GetCount(g_flaps); ++i)
            all.push_back(*static_cast<const Flaps *>(SRVOT_GetElmt(g_flaps, i)));
    }
    for (const Flaps &flaps : all)
        Send(flaps);
}

void TakePartInStandby() {
    UVELD_STANDBY_S standby{};
    standby.ulModId = KIVO_Ysb_MOID_Get(MID, 0, 0, 0, 0, 0, 0, 0);
    standby.pfMessage = Receive;
    standby.pfBatch = SendAll;
    if (g_uveld->pfStandby(g_uveld->pModule, &standby) == 0) {
        KIVO_Ysb_LocalVersion_Register(standby.ulModId, MESSAGE_VERSION, 1, 0, 0, 0, 0, 0);
        g_channel = standby.ulModId;
    }
}

/* The uplink is on the wide-area side, whatever kind of port it is. */
uint32_t IsWan(uint32_t ifindex) {
    char name[IF_NAME_SIZE];
    if (IF_GetIfNameByIfIndex(ifindex, name, sizeof name) == KIVO_OK && g_uplink == name)
        return 1;
    return g_is_wan != nullptr ? g_is_wan(ifindex) : 0;
}

void InstallHook() {
    const auto hook = reinterpret_cast<KIVO_HOOK>(IsWan);
    g_is_wan = reinterpret_cast<uint32_t (*)(uint32_t)>(KIVOShell_GetHookFunc(KIVO_HOOK_IS_WAN_INTERFACE));
    KIVOShell_SetHookFunc(KIVO_HOOK_IS_WAN_INTERFACE, &hook);
}

uint32_t OnLineState(uint32_t, void *data) {
    const auto *state = static_cast<const KIVO_EVT_IF_STATE_S *>(data);
    Flaps flaps{};
    if (state->ulState != KIVO_EVT_STATE_DOWN ||
        IF_GetIfNameByIfIndex(state->ulIfIndex, flaps.name, sizeof flaps.name) != KIVO_OK)
        return KIVO_OK;
    flaps.count = CountOne(flaps);
    if (flaps.count == 0)
        return KIVO_FAIL;
    const uint32_t level = KIVO_IsWANInterface(state->ulIfIndex) == 1 ? UVELD_LOG_WARNING : UVELD_LOG_INFO;
    Log(level, std::string(flaps.name) + " went down, flaps: " + std::to_string(flaps.count));
    if (g_channel != KIVO_NONE)
        Send(flaps);
    return KIVO_OK;
}

uint32_t Show() {
    const std::lock_guard lock(g_lock);
    for (uint32_t i = 0; i < SRVOT_GetCount(g_flaps); ++i) {
        const auto *flaps = static_cast<const Flaps *>(SRVOT_GetElmt(g_flaps, i));
        const std::string line = std::string(flaps->name) + ": " + std::to_string(flaps->count);
        g_uveld->pfPrint(g_uveld->pModule, line.c_str());
    }
    return KIVO_OK;
}

uint32_t Start(const UVELD_CONTEXT_S *context) {
    g_uveld = context;
    g_flaps = SRVOT_CreateNew(MID, sizeof(Flaps), MOST_INTERFACES, CompareName);
    if (g_flaps == nullptr)
        return KIVO_FAIL;
    if (const char *uplink = context->pfSetting(context->pModule, "uplink")) {
        g_uplink = uplink;
        InstallHook();
    }
    if (UVEL_FuncRegShowModuleID(MID, Show) != KIVO_OK)
        return KIVO_FAIL;
    TakePartInStandby();
    Log(UVELD_LOG_INFO, "watches the lines");
    return UVEL_EventCallBackReg(MID, KIVO_EVT_IF_STATE, LINE_STATE, 10, 1, 0, OnLineState);
}

} // namespace

const UVELD_MODULE_S *UveldModule(void) {
    static const UVELD_MODULE_S module = {UVELD_MODULE_VERSION, "flaps", MID, Start, nullptr, nullptr};
    return &module;
}
