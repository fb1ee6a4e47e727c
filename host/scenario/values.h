/* Values that stand in scenarios in a form of their own. */
#ifndef UVEL_HOST_SCENARIO_VALUES_H
#define UVEL_HOST_SCENARIO_VALUES_H

#include <array>
#include <cstdint>
#include <utility>
#include <uvelhost/model.h>
#include <vector>

#include "yaml/document.h"

namespace uvel::host::scenario {

/* Any 32-bit number. */
uint32_t ReadU32(const yaml::Node &node);

/* An interface index: not 0 and not 0xFFFFFFFF. */
uint32_t ReadIfIndex(const yaml::Node &node);

/* "none" or a number from 0 to `max`. */
uint32_t ReadOrNone(const yaml::Node &node, uint32_t max);

/* "00:11:22:aa:bb:cc" */
std::array<uint8_t, 6> ReadMac(const yaml::Node &node);

/* "192.0.2.1", in host order. */
uint32_t ReadIpv4(const yaml::Node &node);

/* "192.0.2.1/24" or "2001:db8::1/64". */
struct Prefix {
    bool is_ipv6;
    uint32_t ipv4; /* host order */
    std::array<uint8_t, 16> ipv6;
    uint32_t length;
};
Prefix ReadPrefix(const yaml::Node &node);

/* destination, interface; next-hop, vrf */
MDL_ROUTE_S ReadRoute(const yaml::Node &node);

/* "20" or "100-199": first and last, 0 to 4095. */
std::pair<uint32_t, uint32_t> ReadVlans(const yaml::Node &node);

/* Pairs of hexadecimal digits: "00ff10". */
std::vector<uint8_t> ReadBytes(const yaml::Node &node);

} // namespace uvel::host::scenario

#endif
