#include "ipc/exchange.h"

#include <algorithm>

namespace uvel::host {

bool Exchange::RegisterComponent(uint32_t mid, uint32_t type, uint32_t slot) {
    if (!Join())
        return false;
    std::lock_guard lock(lock_);
    const auto known =
        std::find_if(components_.begin(), components_.end(), [&](const Component &c) { return c.mid == mid; });
    if (known != components_.end())
        return known->type == type;
    components_.push_back({SelfNode(), mid, type, slot});
    if (folder_.Publish(components_.back()))
        return true;
    components_.pop_back();
    return false;
}

bool Exchange::Components(std::vector<Component> &components) {
    std::lock_guard lock(lock_);
    if (!folder_.Open())
        return false;
    components = folder_.Components();
    return true;
}

} // namespace uvel::host
