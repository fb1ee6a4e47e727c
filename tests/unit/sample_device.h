/* A small router in the device model: two main boards, a line card, and an interface of every kind. */
#ifndef UVEL_TESTS_UNIT_SAMPLE_DEVICE_H
#define UVEL_TESTS_UNIT_SAMPLE_DEVICE_H

#include "kit.h"

#include <cstdio>
#include <cstring>
#include <uvelhost/model.h>

namespace sample {

enum : uint32_t {
    ACCESS_PORT = 5, /* GigabitEthernet1/0/1: switch port 0, untagged in VLAN 12 */
    UPLINK = 6,      /* GigabitEthernet1/0/2: routed, 10.1.2.3/24, VRF "blue", VRRP 10.1.2.254 */
    SUB_INTERFACE = 7,
    SECOND_SUB = 17,
    MEMBER_UP = 8,
    MEMBER_DOWN = 9,
    TRUNK = 20,
    VLANIF = 12,
    VBDIF = 30,
    NOBODY = 99,
    BLUE = 42,
    MASTER_SLOT = 9,
    STANDBY_SLOT = 10,
};

constexpr uint8_t UPLINK_MAC[6] = {0x02, 0, 0, 0, 0, 6};
constexpr uint8_t VIRTUAL_MAC[6] = {0, 0, 0x5E, 0, 1, 7};

template <typename Change>
void InBatch(Change change) {
    MDL_BATCH *batch = MDL_Begin(1, 0);
    ASSERT_NE(nullptr, batch);
    change(batch);
    ASSERT_EQ(0u, MDL_Commit(batch));
}

inline MDL_IF_S Interface(uint32_t index, const char *name, uint32_t layer, uint32_t state = IF_STATE_UP) {
    MDL_IF_S interface;
    MDL_InitIf(&interface, index, name);
    interface.ulLayer = layer;
    interface.ulPhyState = interface.ulLineState = interface.ulIpv6State = state;
    interface.ulPortType = 1;
    interface.ulPhyType = 3;
    interface.aucMac[0] = 2;
    interface.aucMac[5] = static_cast<uint8_t>(index);
    return interface;
}

inline MDL_IF_S OnCard(MDL_IF_S interface, uint32_t port) {
    interface.ulSlot = 1;
    interface.ulCard = 0;
    interface.ulPort = port;
    std::snprintf(interface.szShortName, sizeof interface.szShortName, "GE1/0/%u", port);
    return interface;
}

inline void Put(MDL_BATCH *batch, const MDL_IF_S &interface) {
    ASSERT_EQ(0u, MDL_PutIf(batch, &interface)) << interface.szName;
}

inline void PutBoard(MDL_BATCH *batch, uint32_t slot, uint32_t role, bool present) {
    MDL_BOARD_S board = {};
    board.ulSlot = slot;
    board.ulChassis = 1;
    board.ulLocalSlot = slot;
    board.ulPhySlot = slot + 100;
    board.ulRole = role;
    board.ulPresent = board.ulRegistered = board.ulOnline = present ? 1 : 0;
    board.ulCpuCount = present ? 2 : 0;
    board.ulMainCpu = present ? 1 : 0;
    board.ulFirstCpu = slot * 4;
    board.aulAddr[0] = 0x7F000000 + slot;
    ASSERT_EQ(0u, MDL_PutBoard(batch, &board));
}

inline void PutBoards(MDL_BATCH *batch) {
    MDL_DEVICE_S device;
    MDL_InitDevice(&device);
    device.ulSelfSlot = MASTER_SLOT;
    device.ulSelfCpu = 1;
    device.ulMaxSwitchPorts = 48;
    ASSERT_EQ(0u, MDL_PutDevice(batch, &device));
    PutBoard(batch, MASTER_SLOT, MDL_BOARD_MAIN, true);
    PutBoard(batch, STANDBY_SLOT, MDL_BOARD_MAIN, true);
    PutBoard(batch, 1, MDL_BOARD_LINE, true);
    PutBoard(batch, 2, MDL_BOARD_LINE, false);
}

inline void PutVlans(MDL_BATCH *batch) {
    for (const uint32_t id : {12u, 13u}) {
        const MDL_VLAN_S vlan = {id, UVELHOST_NONE, 0, id == 13 ? 500 : UVELHOST_NONE};
        ASSERT_EQ(0u, MDL_PutVlan(batch, &vlan));
    }
    MDL_IF_S port = OnCard(Interface(ACCESS_PORT, "GigabitEthernet1/0/1", 2), 1);
    port.ulPortIndex = 0;
    port.usPvid = 12;
    Put(batch, port);
    ASSERT_EQ(0u, MDL_BindVlans(batch, 0, 12, 12, L2IF_BIND_UNTAGGED, 0));
    ASSERT_EQ(0u, MDL_BindVlans(batch, 0, 13, 13, L2IF_BIND_TAGGED, 1));
    MDL_IF_S vlanif = Interface(VLANIF, "Vlanif12", 3);
    vlanif.ulKind = MDL_IF_VLAN;
    vlanif.usVlanId = 12;
    Put(batch, vlanif);
    MDL_IF_S vbdif = Interface(VBDIF, "Vbdif500", 3);
    vbdif.ulKind = MDL_IF_VBD;
    vbdif.ulBd = 500;
    Put(batch, vbdif);
}

inline void PutUplink(MDL_BATCH *batch) {
    MDL_VRF_S vrf = {BLUE, 1, 1, 1, "blue"};
    ASSERT_EQ(0u, MDL_PutVrf(batch, &vrf));
    MDL_IF_S uplink = OnCard(Interface(UPLINK, "GigabitEthernet1/0/2", 3), 2);
    uplink.ulVrf = BLUE;
    Put(batch, uplink);
    const MDL_ADDR4_S second = {UPLINK, 0x0A010309, 16, 0, IP_FLAG_CONFIGURED};
    const MDL_ADDR4_S main = {UPLINK, 0x0A010203, 24, 1, IP_FLAG_CONFIGURED};
    ASSERT_EQ(0u, MDL_PutAddr4(batch, &second));
    ASSERT_EQ(0u, MDL_PutAddr4(batch, &main));
    MDL_VRRP_S vrrp = {UPLINK, 0x0A0102FE, 1, {}, {}};
    std::memcpy(vrrp.aucMac, VIRTUAL_MAC, sizeof vrrp.aucMac);
    ASSERT_EQ(0u, MDL_PutVrrp(batch, &vrrp));
    for (const uint32_t index : {SUB_INTERFACE, SECOND_SUB}) {
        char name[64];
        std::snprintf(name, sizeof name, "GigabitEthernet1/0/2.%u", index);
        MDL_IF_S sub = OnCard(Interface(index, name, 3), 2);
        sub.ulMainIfIndex = UPLINK;
        sub.usVlanId = static_cast<uint16_t>(100 + index);
        Put(batch, sub);
    }
}

inline void PutTrunk(MDL_BATCH *batch) {
    Put(batch, Interface(TRUNK, "Eth-Trunk3", 3));
    Put(batch, OnCard(Interface(MEMBER_UP, "GigabitEthernet1/0/3", 3), 3));
    Put(batch, OnCard(Interface(MEMBER_DOWN, "GigabitEthernet1/0/4", 3, IF_STATE_DOWN), 4));
    const MDL_TRUNK_S trunk = {2, 3, TRUNK};
    ASSERT_EQ(0u, MDL_PutTrunk(batch, &trunk));
    for (const uint32_t index : {MEMBER_UP, MEMBER_DOWN}) {
        const MDL_MEMBER_S member = {index, 3, index == MEMBER_UP ? 1u : 0u};
        ASSERT_EQ(0u, MDL_PutMember(batch, &member));
    }
}

/* The whole device in place of what the model held. */
inline void Load() {
    InBatch([](MDL_BATCH *batch) {
        ASSERT_EQ(0u, MDL_RemoveAll(batch));
        PutBoards(batch);
        PutVlans(batch);
        PutUplink(batch);
        PutTrunk(batch);
    });
    const MDL_HA_S ha = {0, MASTER_SLOT, STANDBY_SLOT, 2, 1};
    ASSERT_EQ(0u, MDL_SetHa(&ha));
}

} // namespace sample

#endif
