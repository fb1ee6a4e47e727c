// Views of the device model.

#include "views.h"

#include <arpa/inet.h>
#include <cstdio>
#include <uvelcommon_base/kivo_board_query.h>
#include <uvelcommon_base/kivo_confdb.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_hook_process.h>
#include <uvelhost/model_events.h>
#include <uvelhost/model_view.h>

namespace uveld {

namespace {

Value NumberOrNone(uint32_t value) {
    return value == UVELHOST_NONE ? Value() : Value(value);
}

Value VlanOrNone(uint16_t vlan) {
    return vlan == MDL_NO_VLAN ? Value() : Value(vlan);
}

const char *StateText(const MDL_IF_S &interface, uint32_t state) {
    if (interface.ulAdminDown == 1)
        return "admin down";
    return state == IF_STATE_UP ? "up" : "down";
}

std::string MacText(const uint8_t *mac) {
    char text[16];
    std::snprintf(text, sizeof text, "%02x%02x-%02x%02x-%02x%02x", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    return text;
}

std::string AddressText(const MDL_ADDR4_S &address) {
    char text[24];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u/%u", address.ulAddr >> 24, address.ulAddr >> 16 & 255,
                  address.ulAddr >> 8 & 255, address.ulAddr & 255, address.ulPrefixLen);
    return text;
}

std::string AddressText(const MDL_ADDR6_S &address) {
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(AF_INET6, address.aucAddr, text, sizeof text);
    return std::string(text) + "/" + std::to_string(address.ulPrefixLen);
}

/* Addresses of both families; the main one first. */
Value::List AddressesOf(uint32_t ifindex) {
    Value::List list;
    MDL_ADDR4_S four;
    for (uint32_t next = 0; MDL_NextAddr4(ifindex, next, &four) == UVELHOST_OK && four.ulIfIndex == ifindex;
         next = four.ulAddr + 1) {
        if (four.ulMain == 1)
            list.insert(list.begin(), AddressText(four));
        else
            list.push_back(AddressText(four));
        if (four.ulAddr == UINT32_MAX)
            break;
    }
    MDL_ADDR6_S six{};
    while (MDL_NextAddr6(ifindex, six.aucAddr, &six) == UVELHOST_OK && six.ulIfIndex == ifindex) {
        list.push_back(AddressText(six));
        int byte = 15; /* the next address */
        while (byte >= 0 && ++six.aucAddr[byte] == 0)
            --byte;
        if (byte < 0)
            break;
    }
    return list;
}

/* "1,5-9": the VLANs of a bitmap. */
std::string RangesOf(const uint32_t *bitmap) {
    const auto has = [bitmap](uint32_t vlan) { return vlan < 4096 && (bitmap[vlan / 32] >> vlan % 32 & 1) != 0; };
    std::string text;
    for (uint32_t first = 0; first < 4096; ++first) {
        if (!has(first))
            continue;
        uint32_t last = first;
        while (has(last + 1))
            ++last;
        text += (text.empty() ? "" : ",") + std::to_string(first) + (last == first ? "" : "-" + std::to_string(last));
        first = last;
    }
    return text.empty() ? "-" : text;
}

/* Names of the ports of a VLAN; a port that has no interface goes by its number. */
Value::List PortsOf(uint32_t vlan) {
    uint32_t count = MDL_MAX_SWITCH_PORTS;
    std::vector<uint32_t> ports(count);
    if (MDL_GetVlanPorts(vlan, ports.data(), &count) != UVELHOST_OK)
        return {};
    Value::List list;
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t ifindex = 0;
        MDL_IF_S interface;
        if (BDS_L2IF_PORT_GetIfIndex(ports[i], &ifindex) == UVELHOST_OK &&
            MDL_GetIf(ifindex, &interface) == UVELHOST_OK)
            list.push_back(interface.szName);
        else
            list.push_back(ports[i]);
    }
    return list;
}

} // namespace

Table ShowDevice(const ViewContext &, const std::vector<std::string> &) {
    char name[KIVO_SYS_NAME_SIZE + 1] = "";
    uint8_t mac[6] = {};
    (void)KIVO_Gethostname(name, sizeof name);
    (void)UVEL_GetSysMacAddr(mac);
    MDL_NOTICE_STATS_S notices;
    MDL_GetNoticeStats(&notices);
    Table table({{"name", "Device"}, {"value", "Value"}});
    table.Add({"name", name});
    table.Add({"mac", MacText(mac)});
    table.Add({"board", Kivo_GetSelfBoardId()});
    table.Add({"master", UVEL_IsMasterBoard() == 1});
    table.Add({"notifications_delivered", notices.ulDelivered});
    table.Add({"notifications_waiting", notices.ulQueued - notices.ulDelivered});
    return table;
}

Table ShowInterfaces(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"index", "Index"},
                 {"name", "Interface"},
                 {"physical", "Physical"},
                 {"line", "Line"},
                 {"layer", "Layer"},
                 {"mac", "MAC"},
                 {"vlan", "VLAN"},
                 {"vrf", "VRF"},
                 {"main", "Main"},
                 {"addresses", "Addresses"}});
    MDL_IF_S interface;
    for (uint32_t next = 0; MDL_NextIf(next, &interface) == UVELHOST_OK; next = interface.ulIfIndex + 1) {
        const bool is_sub = interface.ulMainIfIndex != 0 && interface.ulMainIfIndex != interface.ulIfIndex;
        table.Add({interface.ulIfIndex, interface.szName, StateText(interface, interface.ulPhyState),
                   StateText(interface, interface.ulLineState), interface.ulLayer, MacText(interface.aucMac),
                   VlanOrNone(interface.usVlanId), interface.ulVrf == 0 ? Value() : Value(interface.ulVrf),
                   is_sub ? Value(interface.ulMainIfIndex) : Value(), AddressesOf(interface.ulIfIndex)});
    }
    return table;
}

Table ShowVlans(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"vlan", "VLAN"}, {"super", "Super-VLAN"}, {"bridge_domain", "Bridge domain"}, {"ports", "Ports"}});
    MDL_VLAN_S vlan;
    for (uint32_t next = 0; MDL_NextVlan(next, &vlan) == UVELHOST_OK; next = vlan.ulVlanId + 1)
        table.Add({vlan.ulVlanId, NumberOrNone(vlan.ulSuperVlan), NumberOrNone(vlan.ulBd), PortsOf(vlan.ulVlanId)});
    return table;
}

Table ShowPorts(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"port", "Port"}, {"untagged", "Untagged"}, {"tagged", "Tagged"}});
    MDL_PORT_VLANS_S vlans;
    for (uint32_t next = 0; MDL_NextPortVlans(next, &vlans) == UVELHOST_OK; next = vlans.ulPortIndex + 1)
        table.Add({vlans.ulPortIndex, RangesOf(vlans.aulUntagged), RangesOf(vlans.aulTagged)});
    return table;
}

Table ShowTrunks(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"index", "Index"},
                 {"trunk", "Trunk"},
                 {"interface", "Interface"},
                 {"members", "Members"},
                 {"active", "Active"}});
    MDL_TRUNK_S trunk;
    for (uint32_t next = 0; MDL_NextTrunk(next, &trunk) == UVELHOST_OK; next = trunk.ulTrunkIndex + 1) {
        Value::List members;
        Value::List active;
        MDL_MEMBER_S member;
        for (uint32_t port = 0; MDL_NextMember(port, &member) == UVELHOST_OK; port = member.ulIfIndex + 1) {
            if (member.ulTrunkId != trunk.ulTrunkId)
                continue;
            members.push_back(member.ulIfIndex);
            if (member.ulActive == 1)
                active.push_back(member.ulIfIndex);
        }
        table.Add({trunk.ulTrunkIndex, trunk.ulTrunkId, trunk.ulIfIndex, members, active});
    }
    return table;
}

Table ShowVrfs(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"index", "Index"},
                 {"name", "VRF"},
                 {"ipv4", "IPv4"},
                 {"ipv6", "IPv6"},
                 {"virtual_system", "Virtual system"}});
    MDL_VRF_S vrf;
    for (uint32_t next = 0; MDL_NextVrf(next, &vrf) == UVELHOST_OK; next = vrf.ulVrfIndex + 1)
        table.Add({vrf.ulVrfIndex, vrf.szName, vrf.ulIpv4 == 1, vrf.ulIpv6 == 1, vrf.ulVsys == 1});
    return table;
}

Table ShowBoards(const ViewContext &, const std::vector<std::string> &) {
    static constexpr const char *ROLES[] = {"main", "line", "service"};
    Table table({{"slot", "Slot"},
                 {"chassis", "Chassis"},
                 {"role", "Role"},
                 {"present", "Present"},
                 {"registered", "Registered"},
                 {"online", "Online"},
                 {"cpus", "CPUs"}});
    MDL_BOARD_S board;
    for (uint32_t next = 0; MDL_NextBoard(next, &board) == UVELHOST_OK; next = board.ulSlot + 1)
        table.Add({board.ulSlot, board.ulChassis, ROLES[board.ulRole], board.ulPresent == 1, board.ulRegistered == 1,
                   board.ulOnline == 1, board.ulCpuCount});
    return table;
}

Table ShowListeners(const ViewContext &context, const std::vector<std::string> &) {
    Table table({{"topic", "Topic"},
                 {"selector", "Selector"},
                 {"name", "Name"},
                 {"owner", "Owner"},
                 {"priority", "Priority"},
                 {"calls", "Calls"},
                 {"failures", "Failures"}});
    MDL_LISTENER_S listener;
    for (uint32_t number = 0; MDL_GetListener(number, &listener) == UVELHOST_OK; ++number)
        table.Add({listener.ulTopic, NumberOrNone(listener.ulSelector), listener.szName,
                   OwnerOf(context, listener.ulMid), listener.ulPriority, listener.ulCalls, listener.ulFailures});
    return table;
}

} // namespace uveld
