/* What services ask for: interfaces taken down and up, routes to users. Carried out by the feeder that knows how, or by
 * the model itself. */
#include <uvelhost/interface.h>
#include <uvelhost/ip.h>

#include "model/batch.h"
#include "model/query.h"

using namespace uvel::host::model;

namespace {

constexpr uint32_t SERVICES = UVELHOST_NONE; /* the feeder that routes of services belong to */

constinit std::atomic<const MDL_ACTUATOR_S *> g_actuator = nullptr;

bool IsThere(uint32_t if_index) {
    const Reading model;
    return FindIf(model, if_index) != nullptr;
}

/* Changes the administrative state; the object stays its feeder's. */
uint32_t SetAdminDown(uint32_t if_index, uint32_t down) {
    Batch *batch = MDL_Begin(SERVICES, t_user);
    if (batch == nullptr)
        return 1;
    const Node<MDL_IF_S> *node = batch->next->interfaces.GetNode(if_index);
    if (node == nullptr) {
        MDL_Abort(batch);
        return 1;
    }
    uint32_t mark = node->mark;
    MDL_IF_S interface = node->value;
    interface.ulAdminDown = down;
    batch->feeder = node->feeder;
    std::swap(batch->mark, mark);
    MDL_PutIf(batch, &interface);
    batch->feeder = SERVICES;
    batch->mark = mark;
    return MDL_Commit(batch);
}

uint32_t Switch(uint32_t if_index, uint32_t down) {
    if (!IsThere(if_index))
        return 1;
    const MDL_ACTUATOR_S *actuator = g_actuator.load(std::memory_order_acquire);
    return actuator != nullptr && actuator->pfShutDown != nullptr ? actuator->pfShutDown(if_index, down)
                                                                  : SetAdminDown(if_index, down);
}

} // namespace

void MDL_SetActuator(const MDL_ACTUATOR_S *pstActuator) {
    g_actuator.store(pstActuator, std::memory_order_release);
}

uint32_t IF_INTF_ShutDownInterface(uint32_t ulIfIndex) {
    return Switch(ulIfIndex, 1);
}

uint32_t IF_INTF_NoShutDownInterface(uint32_t ulIfIndex) {
    return Switch(ulIfIndex, 0);
}

uint32_t RM_SetUnr4Rt(uint32_t ulOperation, uint32_t ulVrfIndex, uint32_t ulAddr, uint32_t ulPrefixLen,
                      uint32_t ulIfIndex, uint32_t ulNextHop) {
    const MDL_ROUTE_S route = {ulVrfIndex, ulAddr, ulPrefixLen, ulIfIndex, ulNextHop};
    const bool add = ulOperation == RM_UNR_ADD;
    if (ulOperation > RM_UNR_ADD || ulPrefixLen > 32 || (add && !IsThere(ulIfIndex)))
        return 1;
    const MDL_ACTUATOR_S *actuator = g_actuator.load(std::memory_order_acquire);
    if (actuator != nullptr && actuator->pfRoute != nullptr && actuator->pfRoute(ulOperation, &route) != UVELHOST_OK)
        return 1;
    Batch *batch = MDL_Begin(SERVICES, t_user);
    if (add)
        MDL_PutRoute(batch, &route);
    else
        MDL_RemoveRoute(batch, &route);
    return MDL_Commit(batch);
}
