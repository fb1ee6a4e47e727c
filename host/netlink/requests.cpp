#include "netlink/requests.h"

#include <cerrno>
#include <cstring>
#include <linux/if.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <mutex>
#include <uvelhost/ip.h>
#include <uvelhost/model.h>

#include "netlink/socket.h"

namespace uvel::host::netlink {

namespace {

constexpr std::size_t REQUEST_BYTES = 256;

/* The model calls plain functions, so there is one of these. */
std::mutex g_mutex;
std::unique_ptr<Socket> g_socket;
uint32_t g_sequence = 0;

template <typename Head>
Head *Begin(std::byte (&buffer)[REQUEST_BYTES], uint16_t type, uint16_t flags) {
    nlmsghdr *request = mnl_nlmsg_put_header(buffer);
    request->nlmsg_type = type;
    request->nlmsg_flags = flags;
    return static_cast<Head *>(mnl_nlmsg_put_extra_header(request, sizeof(Head)));
}

int SendRequest(std::byte (&buffer)[REQUEST_BYTES]) {
    const std::lock_guard lock(g_mutex);
    if (g_socket == nullptr)
        return ENOTCONN;
    auto *request = reinterpret_cast<nlmsghdr *>(buffer);
    request->nlmsg_seq = ++g_sequence;
    return Ask(*g_socket, request);
}

uint32_t ShutDown(uint32_t if_index, uint32_t down) {
    alignas(nlmsghdr) std::byte buffer[REQUEST_BYTES];
    auto *head = Begin<ifinfomsg>(buffer, RTM_NEWLINK, 0);
    head->ifi_family = AF_UNSPEC;
    head->ifi_index = static_cast<int>(if_index);
    head->ifi_change = IFF_UP;
    head->ifi_flags = down != 0 ? 0 : IFF_UP;
    return SendRequest(buffer) == 0 ? UVELHOST_OK : 1;
}

void PutAddress(nlmsghdr *request, uint16_t type, uint32_t address) {
    mnl_attr_put_u32(request, type, __builtin_bswap32(address));
}

uint32_t Route(uint32_t operation, const MDL_ROUTE_S *route) {
    const bool add = operation == RM_UNR_ADD;
    alignas(nlmsghdr) std::byte buffer[REQUEST_BYTES];
    auto *head = Begin<rtmsg>(buffer, add ? RTM_NEWROUTE : RTM_DELROUTE, add ? NLM_F_CREATE | NLM_F_REPLACE : 0);
    head->rtm_family = AF_INET;
    head->rtm_dst_len = static_cast<uint8_t>(route->ulPrefixLen);
    head->rtm_protocol = RTPROT_STATIC;
    head->rtm_scope = route->ulNextHop != 0 ? RT_SCOPE_UNIVERSE : RT_SCOPE_LINK;
    head->rtm_type = RTN_UNICAST;
    auto *request = reinterpret_cast<nlmsghdr *>(buffer);
    mnl_attr_put_u32(request, RTA_TABLE, route->ulVrfIndex != 0 ? route->ulVrfIndex : uint32_t{RT_TABLE_MAIN});
    PutAddress(request, RTA_DST, route->ulAddr);
    mnl_attr_put_u32(request, RTA_OIF, route->ulIfIndex);
    if (route->ulNextHop != 0)
        PutAddress(request, RTA_GATEWAY, route->ulNextHop);
    const int error = SendRequest(buffer);
    const bool gone = !add && (error == ESRCH || error == ENODEV);
    return error == 0 || gone ? UVELHOST_OK : 1;
}

constexpr MDL_ACTUATOR_S ACTUATOR = {ShutDown, Route};

} // namespace

bool BeginRequests() {
    auto socket = std::make_unique<Socket>();
    if (!socket->Open(0))
        return false;
    {
        const std::lock_guard lock(g_mutex);
        g_socket = std::move(socket);
    }
    MDL_SetActuator(&ACTUATOR);
    return true;
}

void EndRequests() {
    MDL_SetActuator(nullptr);
    const std::lock_guard lock(g_mutex);
    g_socket.reset();
}

} // namespace uvel::host::netlink
