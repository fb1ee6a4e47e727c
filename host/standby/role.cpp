#include "standby/role.h"

#include <uvelhost/standby_link.h>

namespace uvel::host::standby {

/* Two devices that leave it to the pair. Who is active stays so; of two that took over while they did not see each
 * other the later one does. */
static bool AutoActive(const RoleInfo &own, const RoleInfo &peer, std::string_view own_name,
                       std::string_view peer_name) {
    if (own.active != peer.active)
        return own.active > peer.active;
    if (own.active != 0 && own.term != peer.term)
        return own.term > peer.term;
    if (own.priority != peer.priority)
        return own.priority > peer.priority;
    return own_name < peer_name;
}

Verdict DecideRole(const RoleInfo &own, const RoleInfo &peer, std::string_view own_name, std::string_view peer_name) {
    if (own.configured == YSB_LINK_ROLE_ACTIVE)
        return peer.configured == YSB_LINK_ROLE_ACTIVE ? Verdict::CONFLICT : Verdict::ACTIVE;
    if (own.configured == YSB_LINK_ROLE_STANDBY || peer.configured == YSB_LINK_ROLE_ACTIVE)
        return Verdict::STANDBY;
    if (peer.configured == YSB_LINK_ROLE_STANDBY)
        return Verdict::ACTIVE;
    return AutoActive(own, peer, own_name, peer_name) ? Verdict::ACTIVE : Verdict::STANDBY;
}

} // namespace uvel::host::standby
