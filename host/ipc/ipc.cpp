/* The operations on channels, calls and components. */

#include <uvelhost/ipc.h>

#include "ipc/exchange.h"
#include <algorithm>
#include <exception>
#include <uvelhost/component.h>
#include <uvelhost/device.h>

using namespace uvel::host;

/* No exception (memory is short) leaves the host. */
template <typename Action>
static uint32_t Result(Action action) {
    try {
        return action() ? UVELHOST_OK : 1;
    } catch (const std::exception &) {
        return 1;
    }
}

uint32_t IPC_Create(uint32_t ulChannel, uint32_t ulMode, IPC_RECV_CB pfReceive) {
    if (ulMode != IPC_MODE_CALLBACK || pfReceive == nullptr)
        return 1;
    return Result([&] { return Exchange::The().OpenChannel(ulChannel, pfReceive); });
}

uint32_t IPC_Send(uint32_t ulMsgType, void *pMsg) {
    if (pMsg == nullptr)
        return 1;
    MessageOf(pMsg)->type = ulMsgType;
    return Result([&] { return Exchange::The().SendMessage(pMsg); });
}

uint32_t IPC_GetStats(IPC_STATS_S *pstStats) {
    if (pstStats == nullptr)
        return 1;
    return Result([&] {
        *pstStats = Exchange::The().Stats();
        return true;
    });
}

uint32_t IPC_RPC_RegisterEx(uint32_t ulMid, uint32_t ulMode, uint32_t ulType, IPC_RPC_CB pfCall) {
    if (ulMode != IPC_RPC_MODE_DIRECT || ulType != IPC_RPC_TYPE_SYNC || pfCall == nullptr)
        return 1;
    return Result([&] { return Exchange::The().OfferModule(ulMid, pfCall); });
}

uint32_t IPC_RPC_Call(uint32_t ulNode, uint32_t ulMid, void *pMsg, uint32_t ulTimeoutMs, uint32_t *pulResult,
                      void **ppReply) {
    if (pMsg == nullptr || pulResult == nullptr || ppReply == nullptr)
        return 1;
    return Result([&] { return Exchange::The().Call(ulNode, ulMid, pMsg, ulTimeoutMs, pulResult, ppReply); });
}

/* Slot of this board; none while the device is not known, which stands for any in a question. */
static uint32_t OwnSlot() {
    uint32_t slot = UVELHOST_NONE;
    (void)DEVM_DB_GetSelfSlotId(&slot);
    return slot;
}

uint32_t CMNGA_ModuleRegister(uint32_t ulMid, uint32_t ulComTypeId) {
    return Result([&] { return Exchange::The().RegisterComponent(ulMid, ulComTypeId, OwnSlot()); });
}

uint32_t CMNGA_QueryNodeId(uint32_t ulMid, uint32_t ulComTypeId, uint32_t ulSlot, uint32_t *pulNode,
                           uint32_t *pulCount) {
    if (pulNode == nullptr || pulCount == nullptr)
        return 1;
    const auto matches = [](uint32_t wanted, uint32_t value) { return wanted == UVELHOST_NONE || wanted == value; };
    return Result([&] {
        std::vector<Component> components;
        if (!Exchange::The().Components(components))
            return false;
        std::vector<uint32_t> nodes;
        for (const Component &component : components)
            if (component.mid == ulMid && matches(ulComTypeId, component.type) && matches(ulSlot, component.slot))
                nodes.push_back(component.node);
        nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
        nodes.resize(std::min<std::size_t>(nodes.size(), CMNGA_MAX_NODES));
        std::copy(nodes.begin(), nodes.end(), pulNode);
        *pulCount = static_cast<uint32_t>(nodes.size());
        return true;
    });
}

uint32_t CMNGA_QueryCompProcByMid(uint32_t ulMid, uint32_t *pulProcessId) {
    if (pulProcessId == nullptr)
        return 1;
    uint32_t nodes[CMNGA_MAX_NODES];
    uint32_t count = 0;
    if (CMNGA_QueryNodeId(ulMid, UVELHOST_NONE, OwnSlot(), nodes, &count) != UVELHOST_OK || count == 0)
        return 1;
    *pulProcessId = nodes[0];
    return UVELHOST_OK;
}
