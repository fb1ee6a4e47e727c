/* Who registered for which notifications. The table only grows, so the notifying thread reads it without a lock. */
#include "model/delivery.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <uvelhost/vrf.h>

using namespace uvel::host::model;

namespace {

constexpr uint32_t MAX_LISTENERS = 1024;

struct Listener {
    MDL_LISTENER_S facts; /* without the counters */
    UVELHOST_CALLBACK callback;
    uint64_t since; /* number of the first notification that it hears */
    bool told;      /* of the recovered configuration; the notifying thread's */
    std::atomic<uint64_t> calls;
    std::atomic<uint64_t> failures;
};

constinit Listener g_listeners[MAX_LISTENERS] = {};
constinit std::atomic<uint32_t> g_count = 0;
constinit std::mutex g_registration;
constinit std::atomic<bool> g_recovered = false;

uint32_t Register(const MDL_LISTENER_S &facts, const char *name, UVELHOST_CALLBACK callback) {
    if (callback == nullptr || !StartNotifying())
        return 1;
    std::lock_guard lock(g_registration);
    const uint32_t count = g_count.load(std::memory_order_relaxed);
    if (count == MAX_LISTENERS)
        return 1;
    Listener &listener = g_listeners[count];
    listener.facts = facts;
    std::memcpy(listener.facts.szName, name, strnlen(name, sizeof facts.szName - 1));
    listener.callback = callback;
    listener.since = NextNoticeNumber();
    g_count.store(count + 1, std::memory_order_seq_cst);
    return UVELHOST_OK;
}

bool Concerns(const Listener &listener, const Notice &notice, uint64_t number) {
    const MDL_LISTENER_S &facts = listener.facts;
    if (facts.ulTopic != notice.topic)
        return false;
    switch (notice.topic) {
    case MDL_TOPIC_CFM_OVER:
        return !listener.told;
    case MDL_TOPIC_NOTIFY:
    case MDL_TOPIC_IP:
        return number >= listener.since;
    case MDL_TOPIC_L2:
        return number >= listener.since && facts.ulSelector == GroupOfL2Event(notice.event);
    case MDL_TOPIC_TRUNK:
        return number >= listener.since && facts.ulSelector == notice.c && facts.ulEvent == notice.event;
    default:
        return number >= listener.since && (facts.ulSelector == IF_EVT_ALL_SUB || facts.ulSelector == notice.event);
    }
}

template <typename Type, typename... Arguments>
uint32_t CallAs(UVELHOST_CALLBACK callback, Arguments... arguments) {
    return reinterpret_cast<Type>(callback)(arguments...);
}

uint32_t Call(UVELHOST_CALLBACK callback, const Notice &notice, Notices &notices) {
    void *data = notices.Bytes(notice.data);
    auto vsys = static_cast<uint16_t>(notice.a);
    switch (notice.topic) {
    case MDL_TOPIC_SLOT:
        return CallAs<IF_SLOT_EVT_CB>(callback, notice.event, notice.a, notice.b);
    case MDL_TOPIC_CARD:
        return CallAs<IF_CARD_EVT_CB>(callback, notice.event, notice.a, notice.b, notice.c);
    case MDL_TOPIC_IF:
        return CallAs<IF_IF_EVT_CB>(callback, notice.event, notice.a);
    case MDL_TOPIC_VRF_SET:
        return CallAs<IF_VRF_SET_EVT_CB>(callback, notice.event, notice.a);
    case MDL_TOPIC_IOCTL:
        return CallAs<IF_IOCTL_EVT_CB>(callback, notice.event, notice.a, notice.b, static_cast<const uint32_t *>(data));
    case MDL_TOPIC_BD:
        return CallAs<IF_BD_EVT_CB>(callback, notice.event, notice.a, static_cast<uint16_t>(notice.b));
    case MDL_TOPIC_NOTIFY:
        return CallAs<IF_NOTIFY_CB>(callback, notice.a, notice.event, notice.b, notice.c);
    case MDL_TOPIC_IP:
        return CallAs<IP_EVT_CB>(callback, &notice.a, notice.event, &notice.b);
    case MDL_TOPIC_CFM_OVER:
        return CallAs<CFM_OVER_CB>(callback);
    case MDL_TOPIC_L2:
        return CallAs<L2IF_EVT_CB>(callback, static_cast<const void *>(notices.Bytes(notice.key)), notice.event, data);
    case MDL_TOPIC_TRUNK:
        if (notice.c == 1 && notice.event == TRUNK_EVT_HAS_CFG)
            return CallAs<TRUNK_HAS_CFG_CB>(callback, notice.a, notice.event, data);
        return CallAs<TRUNK_EVT_CB>(callback, notice.a, notice.event, notice.b);
    default:
        return CallAs<VRF_EVT_CB>(callback, notice.event, &vsys);
    }
}

} // namespace

uint64_t uvel::host::model::CallListeners(Notices &notices, uint32_t position) {
    const Notice &notice = notices.At(position);
    if (notice.topic == MDL_TOPIC_CFM_OVER)
        g_recovered.store(true, std::memory_order_seq_cst);
    std::array<uint16_t, MAX_LISTENERS> concerned;
    uint32_t count = 0;
    const uint32_t all = g_count.load(std::memory_order_seq_cst);
    for (uint32_t i = 0; i < all; ++i)
        if (Concerns(g_listeners[i], notice, notices.first_number + position))
            concerned[count++] = static_cast<uint16_t>(i);
    std::stable_sort(concerned.begin(), concerned.begin() + count, [](uint16_t left, uint16_t right) {
        return g_listeners[left].facts.ulPriority > g_listeners[right].facts.ulPriority;
    });
    uint64_t failures = 0;
    for (uint32_t i = 0; i < count; ++i) {
        Listener &listener = g_listeners[concerned[i]];
        listener.told = listener.told || notice.topic == MDL_TOPIC_CFM_OVER;
        const bool failed = Call(listener.callback, notice, notices) != 0;
        listener.calls.fetch_add(1, std::memory_order_relaxed);
        listener.failures.fetch_add(failed, std::memory_order_relaxed);
        failures += failed;
    }
    return failures;
}

uint32_t IF_INTF_RegEvtCb(uint32_t ulType, uint32_t ulSubType, UVELHOST_CALLBACK pfCallback, uint32_t ulMid,
                          uint32_t ulMask) {
    switch (ulType) {
    case IF_EVT_SLOT:
    case IF_EVT_CARD:
    case IF_EVT_IF:
    case IF_EVT_VRF_SET:
    case IF_EVT_IOCTL:
    case IF_EVT_BD:
        return Register({ulType, ulSubType, UVELHOST_NONE, 0, ulMid, ulMask, 0, 0, {}}, "", pfCallback);
    default:
        return 1;
    }
}

uint32_t IF_RegNotifyFunc(uint32_t ulMid, IF_NOTIFY_CB pfCallback) {
    return Register({MDL_TOPIC_NOTIFY, UVELHOST_NONE, UVELHOST_NONE, 0, ulMid, 0, 0, 0, {}}, "",
                    reinterpret_cast<UVELHOST_CALLBACK>(pfCallback));
}

uint32_t IP_EventNotifyFuncRegister(const char *pszName, uint32_t ulClass, IP_EVT_CB pfCallback) {
    if (pszName == nullptr || ulClass != IP_EVT_CLASS_ADDR)
        return 1;
    return Register({MDL_TOPIC_IP, ulClass, UVELHOST_NONE, 0, 0, 0, 0, 0, {}}, pszName,
                    reinterpret_cast<UVELHOST_CALLBACK>(pfCallback));
}

uint32_t CFM_OverNotifyModuleRegister(uint32_t ulMid, uint32_t ulReserved1, uint32_t ulReserved2, uint32_t ulReserved3,
                                      CFM_OVER_CB pfCallback) {
    if (ulReserved1 != 0 || ulReserved2 != 0 || ulReserved3 != 0)
        return 1;
    if (Register({MDL_TOPIC_CFM_OVER, UVELHOST_NONE, UVELHOST_NONE, 0, ulMid, 0, 0, 0, {}}, "",
                 reinterpret_cast<UVELHOST_CALLBACK>(pfCallback)) != UVELHOST_OK)
        return 1;
    /* Told once more: only those who have not heard of it yet are called. */
    const MDL_EVENT_S over = {MDL_TOPIC_CFM_OVER, 0, 0, 0, 0, 0, 0, nullptr, nullptr};
    return g_recovered.load(std::memory_order_seq_cst) ? MDL_Raise(nullptr, &over) : UVELHOST_OK;
}

uint32_t L2IF_SH_EvtCbFuncReg(const char *pszName, uint32_t ulGroup, uint32_t ulPriority, L2IF_EVT_CB pfCallback) {
    if (pszName == nullptr || !IsKnownL2Group(ulGroup))
        return 1;
    return Register({MDL_TOPIC_L2, ulGroup, UVELHOST_NONE, ulPriority, 0, 0, 0, 0, {}}, pszName,
                    reinterpret_cast<UVELHOST_CALLBACK>(pfCallback));
}

uint32_t Trunk_EventNotifyFuncRegister(const char *pszName, uint32_t ulClass, uint32_t ulEvent, uint32_t ulPriority,
                                       UVELHOST_CALLBACK pfCallback) {
    if (pszName == nullptr || !IsKnownTrunkEvent(ulClass, ulEvent))
        return 1;
    return Register({MDL_TOPIC_TRUNK, ulClass, ulEvent, ulPriority, 0, 0, 0, 0, {}}, pszName, pfCallback);
}

uint32_t VPNBASE_VRFMGM_RegisterCb(uint32_t ulMid, uint32_t ulKind, VRF_EVT_CB pfCallback) {
    if (ulKind != VRF_EVT_CREATED && ulKind != VRF_EVT_DELETED)
        return 1;
    return Register({MDL_TOPIC_VRF, ulKind, UVELHOST_NONE, 0, ulMid, 0, 0, 0, {}}, "",
                    reinterpret_cast<UVELHOST_CALLBACK>(pfCallback));
}

uint32_t MDL_GetListener(uint32_t ulNumber, MDL_LISTENER_S *pstListener) {
    if (pstListener == nullptr || ulNumber >= g_count.load(std::memory_order_acquire))
        return 1;
    const Listener &listener = g_listeners[ulNumber];
    *pstListener = listener.facts;
    pstListener->ulCalls = listener.calls.load(std::memory_order_relaxed);
    pstListener->ulFailures = listener.failures.load(std::memory_order_relaxed);
    return UVELHOST_OK;
}
