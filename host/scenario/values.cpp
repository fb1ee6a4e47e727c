#include "scenario/values.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <cstring>
#include <string>
#include <uvelhost/types.h>

namespace uvel::host::scenario {

namespace {

/* All of a text as a number of the base, at most `max`. */
bool Parse(std::string_view text, int base, uint32_t max, uint32_t &number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return !text.empty() && error == std::errc() && end == text.data() + text.size() && number <= max;
}

std::string Scalar(const yaml::Node &node) {
    return node.IsScalar() ? node.Text() : std::string();
}

} // namespace

uint32_t ReadU32(const yaml::Node &node) {
    return node.NumberOf<uint32_t>(0, UINT32_MAX);
}

uint32_t ReadIfIndex(const yaml::Node &node) {
    return node.NumberOf<uint32_t>(1, UINT32_MAX - 1);
}

uint32_t ReadOrNone(const yaml::Node &node, uint32_t max) {
    uint32_t number = 0;
    const std::string text = Scalar(node);
    if (text == "none")
        return UVELHOST_NONE;
    if (!Parse(text, 10, max, number))
        node.Refuse("none or a number from 0 to " + std::to_string(max));
    return number;
}

std::array<uint8_t, 6> ReadMac(const yaml::Node &node) {
    std::array<uint8_t, 6> mac = {};
    const std::string text = Scalar(node);
    bool good = text.size() == 17;
    for (std::size_t i = 0; good && i < mac.size(); ++i) {
        uint32_t byte = 0;
        good = Parse(std::string_view(text).substr(i * 3, 2), 16, 255, byte) && (i == 5 || text[i * 3 + 2] == ':');
        mac[i] = static_cast<uint8_t>(byte);
    }
    if (!good)
        node.Refuse("a MAC address as 00:11:22:aa:bb:cc");
    return mac;
}

uint32_t ReadIpv4(const yaml::Node &node) {
    in_addr addr;
    if (inet_pton(AF_INET, Scalar(node).c_str(), &addr) != 1)
        node.Refuse("an IPv4 address as 192.0.2.1");
    return ntohl(addr.s_addr);
}

Prefix ReadPrefix(const yaml::Node &node) {
    Prefix prefix = {};
    const std::string text = Scalar(node);
    const std::size_t slash = text.find('/');
    const std::string addr = text.substr(0, slash);
    in_addr ipv4 = {};
    prefix.is_ipv6 = addr.find(':') != std::string::npos;
    const bool good = slash != std::string::npos &&
                      Parse(std::string_view(text).substr(slash + 1), 10, prefix.is_ipv6 ? 128 : 32, prefix.length) &&
                      (prefix.is_ipv6 ? inet_pton(AF_INET6, addr.c_str(), prefix.ipv6.data())
                                      : inet_pton(AF_INET, addr.c_str(), &ipv4)) == 1;
    if (!good)
        node.Refuse("an address and its prefix length as 192.0.2.1/24 or 2001:db8::1/64");
    prefix.ipv4 = ntohl(ipv4.s_addr);
    return prefix;
}

MDL_ROUTE_S ReadRoute(const yaml::Node &node) {
    const yaml::Fields fields(node, {"destination", "interface", "next-hop", "vrf"});
    const yaml::Node destination = fields.Required("destination");
    const Prefix prefix = ReadPrefix(destination);
    if (prefix.is_ipv6)
        destination.Refuse("an IPv4 prefix such as 192.0.2.0/24");
    MDL_ROUTE_S route = {0, prefix.ipv4, prefix.length, ReadIfIndex(fields.Required("interface")), 0};
    if (const auto next_hop = fields.Optional("next-hop"))
        route.ulNextHop = ReadIpv4(*next_hop);
    if (const auto vrf = fields.Optional("vrf"))
        route.ulVrfIndex = ReadU32(*vrf);
    return route;
}

std::pair<uint32_t, uint32_t> ReadVlans(const yaml::Node &node) {
    uint32_t first = 0, last = 0;
    const std::string text = Scalar(node);
    const std::size_t dash = std::min(text.find('-'), text.size());
    const std::string_view view = text;
    const bool good = Parse(view.substr(0, dash), 10, 4095, first) &&
                      Parse(dash == text.size() ? view : view.substr(dash + 1), 10, 4095, last) && first <= last;
    if (!good)
        node.Refuse("a VLAN or a range of VLANs from 0 to 4095 as 20 or 100-199");
    return {first, last};
}

std::vector<uint8_t> ReadBytes(const yaml::Node &node) {
    const std::string text = Scalar(node);
    std::vector<uint8_t> bytes(text.size() / 2);
    bool good = text.size() % 2 == 0 && bytes.size() <= 65536;
    for (std::size_t i = 0; good && i < bytes.size(); ++i) {
        uint32_t byte = 0;
        good = Parse(std::string_view(text).substr(i * 2, 2), 16, 255, byte);
        bytes[i] = static_cast<uint8_t>(byte);
    }
    if (!good)
        node.Refuse("bytes as pairs of hexadecimal digits");
    return bytes;
}

} // namespace uvel::host::scenario
