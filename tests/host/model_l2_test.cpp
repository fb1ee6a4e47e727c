#include "model_fixtures.h"

#include <array>
#include <vector>

namespace {

using HostVlan = ModelTest;
using HostTrunk = ModelTest;

void PutVlan(uint32_t vlan, uint32_t bd = UVELHOST_NONE) {
    InBatch([&](MDL_BATCH *batch) {
        const MDL_VLAN_S record = {vlan, UVELHOST_NONE, 0, bd};
        ASSERT_EQ(0u, MDL_PutVlan(batch, &record));
    });
}

MDL_IF_S Port(uint32_t if_index, uint32_t port_index) {
    MDL_IF_S port = Interface(if_index);
    port.ulLayer = 2;
    port.ulPortIndex = port_index;
    return port;
}

void Bind(uint32_t port, uint32_t first, uint32_t last, uint32_t bind, uint32_t dynamic) {
    InBatch([&](MDL_BATCH *batch) { ASSERT_EQ(0u, MDL_BindVlans(batch, port, first, last, bind, dynamic)); });
}

void PutTrunk(uint32_t id, uint32_t if_index, const std::vector<uint32_t> &members) {
    InBatch([&](MDL_BATCH *batch) {
        const MDL_TRUNK_S trunk = {MDL_AUTO, id, if_index};
        ASSERT_EQ(0u, MDL_PutTrunk(batch, &trunk));
        for (uint32_t each : members) {
            const MDL_MEMBER_S member = {each, id, 1};
            ASSERT_EQ(0u, MDL_PutMember(batch, &member));
        }
    });
}

using List = std::vector<uint32_t>;

/* The numbers that a query writes into an array with room for `room`. */
template <typename Query>
List Ask(Query &&query, uint32_t room = 16) {
    List numbers(room, UNTOUCHED);
    uint32_t count = room;
    EXPECT_EQ(0u, query(numbers.data(), &count));
    numbers.resize(count);
    return numbers;
}

} // namespace

/* ---- VLANs */

TEST_F(HostVlan, ExistsOnceItWasPut) {
    for (const uint16_t vlan : std::initializer_list<uint16_t>{0, 1, 4095}) {
        EXPECT_EQ(0u, BDS_L2IF_VLAN_IsUsed(vlan));
        PutVlan(vlan);
        EXPECT_EQ(1u, BDS_L2IF_VLAN_IsUsed(vlan));
    }
    EXPECT_EQ(0u, BDS_L2IF_VLAN_IsUsed(4096));
    EXPECT_EQ(0u, BDS_L2IF_VLAN_IsUsed(65535));
}

TEST_F(HostVlan, ItsInterfaceIsAnsweredAlikeByAllThree) {
    MDL_IF_S interface = Interface(70);
    interface.ulKind = MDL_IF_VLAN;
    interface.usVlanId = 20;
    PutIf(interface);
    for (auto query : {BDS_L2IF_VLAN_GetIfIndexByVlanId, BDS_L2IF_VLAN_GetVlanIfIndex, BDS_L2_VlanGetIfIndex}) {
        uint32_t if_index = UNTOUCHED;
        EXPECT_NE(0u, query(19, &if_index));
        EXPECT_NE(0u, query(21, &if_index));
        EXPECT_EQ(UNTOUCHED, if_index);
        EXPECT_NE(0u, query(20, nullptr));
        EXPECT_EQ(0u, query(20, &if_index));
        EXPECT_EQ(70u, if_index);
    }
}

TEST_F(HostVlan, BridgedIntoADomainItHasTheInterfaceOfThatDomain) {
    uint32_t if_index = UNTOUCHED;
    PutVlan(20);
    EXPECT_NE(0u, BDS_L2_VlanGetVbdIfIndex(20, &if_index));
    PutVlan(20, 5000);
    EXPECT_NE(0u, BDS_L2_VlanGetVbdIfIndex(20, &if_index));
    MDL_IF_S interface = Interface(71);
    interface.ulKind = MDL_IF_VBD;
    interface.ulBd = 5000;
    PutIf(interface);
    EXPECT_NE(0u, BDS_L2_VlanGetVbdIfIndex(20, nullptr));
    EXPECT_NE(0u, BDS_L2_VlanGetVbdIfIndex(21, &if_index));
    EXPECT_EQ(UNTOUCHED, if_index);
    EXPECT_EQ(0u, BDS_L2_VlanGetVbdIfIndex(20, &if_index));
    EXPECT_EQ(71u, if_index);
}

TEST_F(HostVlan, OfAnInterfaceIsWhatItStandsForElseThatOfUntaggedFramesElseNone) {
    MDL_IF_S port = Port(7, 3), sub = Interface(8), domain = Interface(9), bare = Interface(10);
    port.usPvid = 20;
    sub.usVlanId = 0;
    domain.usVlanId = 30;
    domain.ulBd = 5000;
    bare.usPvid = 40; /* no switch port */
    for (const MDL_IF_S &each : {port, sub, domain, bare})
        PutIf(each);
    const auto ask = [](uint32_t if_index, uint32_t option) {
        uint32_t id = UNTOUCHED;
        EXPECT_EQ(0u, BDS_L2_VlanGetIdByIfIndex(if_index, option, &id));
        return id;
    };
    EXPECT_EQ(20u, ask(7, L2IF_ID_VLAN));
    EXPECT_EQ(20u, ask(7, L2IF_ID_VLAN_OR_BD));
    EXPECT_EQ(0u, ask(8, L2IF_ID_VLAN));
    EXPECT_EQ(30u, ask(9, L2IF_ID_VLAN));
    EXPECT_EQ(5000u, ask(9, L2IF_ID_VLAN_OR_BD));
    uint32_t id = UNTOUCHED;
    EXPECT_NE(0u, BDS_L2_VlanGetIdByIfIndex(10, L2IF_ID_VLAN, &id));
    EXPECT_NE(0u, BDS_L2_VlanGetIdByIfIndex(7, 2, &id));
    EXPECT_NE(0u, BDS_L2_VlanGetIdByIfIndex(11, L2IF_ID_VLAN, &id));
    EXPECT_NE(0u, BDS_L2_VlanGetIdByIfIndex(7, L2IF_ID_VLAN, nullptr));
    EXPECT_EQ(UNTOUCHED, id);
}

TEST_F(HostVlan, PortsAndInterfacesNameEachOther) {
    PutIf(Port(7, 0));
    PutIf(Interface(8));
    uint32_t value = UNTOUCHED;
    EXPECT_EQ(1u, BDS_L2IF_PORT_IsUsed(0));
    EXPECT_EQ(0u, BDS_L2IF_PORT_IsUsed(1));
    EXPECT_NE(0u, BDS_L2IF_PORT_GetIfIndex(1, &value));
    EXPECT_NE(0u, BDS_L2IF_PORT_GetIfIndex(0, nullptr));
    EXPECT_NE(0u, BDS_L2IF_SH_PORT_GetIndexByIfIndex(8, &value));
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_EQ(0u, BDS_L2IF_PORT_GetIfIndex(0, &value));
    EXPECT_EQ(7u, value);
    EXPECT_EQ(0u, BDS_L2IF_SH_PORT_GetIndexByIfIndex(7, &value));
    EXPECT_EQ(0u, value);
}

TEST_F(HostVlan, EveryPortIndexIsBelowTheDevicesNumberOfPorts) {
    MDL_DEVICE_S device;
    MDL_InitDevice(&device);
    device.ulMaxSwitchPorts = 4;
    InBatch([&](MDL_BATCH *batch) {
        ASSERT_EQ(0u, MDL_PutDevice(batch, &device));
        const MDL_IF_S last = Port(7, 3), above = Port(8, 4);
        EXPECT_EQ(0u, MDL_PutIf(batch, &last));
        EXPECT_EQ(1u, MDL_PutIf(batch, &above));
    });
    EXPECT_EQ(4u, BDS_L2IF_SH_GetMaxSwitchPortNum());
}

TEST_F(HostVlan, AnAutomaticPortIndexIsTheLowestFreeOneAndStays) {
    for (uint32_t if_index : {7u, 8u, 9u})
        PutIf(Port(if_index, MDL_AUTO));
    InBatch([](MDL_BATCH *batch) { MDL_RemoveIf(batch, 8); });
    PutIf(Port(10, MDL_AUTO));
    PutIf(Port(9, MDL_AUTO));
    const List expected = {7, 10, 9};
    for (uint32_t port = 0; port < 3; ++port) {
        uint32_t if_index = UNTOUCHED;
        EXPECT_EQ(0u, BDS_L2IF_PORT_GetIfIndex(port, &if_index));
        EXPECT_EQ(expected[port], if_index);
    }
}

TEST_F(HostVlan, OfAModeIsToldForThatModeOnly) {
    MDL_IF_S port = Port(7, 3);
    port.ulPortMode = L2IF_MODE_HYBRID;
    PutIf(port);
    uint16_t vlan = 4711;
    EXPECT_NE(0u, BDS_L2IF_SH_GetVlanIdFromMode(3, L2IF_MODE_HYBRID, &vlan));
    port.usPvid = 20;
    PutIf(port);
    for (uint32_t mode : {L2IF_MODE_ACCESS, L2IF_MODE_TRUNK, 3u})
        EXPECT_NE(0u, BDS_L2IF_SH_GetVlanIdFromMode(3, mode, &vlan));
    EXPECT_NE(0u, BDS_L2IF_SH_GetVlanIdFromMode(4, L2IF_MODE_HYBRID, &vlan));
    EXPECT_NE(0u, BDS_L2IF_SH_GetVlanIdFromMode(3, L2IF_MODE_HYBRID, nullptr));
    EXPECT_EQ(4711, vlan);
    EXPECT_EQ(0u, BDS_L2IF_SH_GetVlanIdFromMode(3, L2IF_MODE_HYBRID, &vlan));
    EXPECT_EQ(20, vlan);
}

TEST_F(HostVlan, BindingsByConfigurationAndWithoutAreTwoThings) {
    PutVlan(20);
    PutVlan(31);
    PutIf(Port(7, 3));
    PutIf(Port(8, 4));
    Bind(3, 20, 20, L2IF_BIND_UNTAGGED, 0);
    Bind(3, 31, 32, L2IF_BIND_TAGGED, 1);
    Bind(4, 31, 31, L2IF_BIND_UNTAGGED, 1);
    EXPECT_EQ(1u, L2IF_VP_PortIsInCfgVlan(3, 20));
    EXPECT_EQ(0u, L2IF_VP_PortIsInCfgVlan(3, 31));
    EXPECT_EQ(0u, L2IF_VP_PortIsInCfgVlan(3, 4096));
    EXPECT_EQ(0u, L2IF_VP_PortIsInCfgVlan(4, 20));
    uint32_t bitmap[L2IF_VLAN_BITMAP_WORDS];
    EXPECT_EQ(0u, BDS_L2IF_SH_DYNVP_GetVlanListByPort(3, bitmap));
    EXPECT_EQ(0x80000000u, bitmap[0]);
    EXPECT_EQ(1u, bitmap[1]);
    const auto mode = [](uint16_t vlan, uint32_t port) {
        uint32_t value = UNTOUCHED;
        EXPECT_EQ(0u, BDS_L2IF_SH_DYNVP_GetVlanPortBindMode(vlan, port, &value));
        return value;
    };
    EXPECT_EQ(L2IF_BIND_TAGGED, mode(31, 3));
    EXPECT_EQ(L2IF_BIND_UNTAGGED, mode(31, 4));
    EXPECT_EQ(L2IF_BIND_NONE, mode(20, 3));
    const auto ports = [](uint32_t *port, uint32_t *count) {
        return BDS_L2IF_SH_DYNVP_GetPortListByVlan(31, port, count);
    };
    EXPECT_EQ((List{3, 4}), Ask(ports));
    EXPECT_EQ((List{3, 4}), Ask(ports, 2));
    uint32_t port = UNTOUCHED, room = 1;
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetPortListByVlan(31, &port, &room));
    EXPECT_EQ(UNTOUCHED, port);
    EXPECT_EQ(1u, room);
}

TEST_F(HostVlan, APortWithoutVlansIsInNoneAndAnUnknownOneIsAFailure) {
    PutVlan(20);
    PutIf(Port(7, 3));
    uint32_t bitmap[L2IF_VLAN_BITMAP_WORDS], value = UNTOUCHED, count = 1;
    std::fill(std::begin(bitmap), std::end(bitmap), UNTOUCHED);
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetVlanListByPort(4, bitmap));
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetVlanListByPort(3, nullptr));
    EXPECT_EQ(UNTOUCHED, bitmap[127]);
    EXPECT_EQ(0u, BDS_L2IF_SH_DYNVP_GetVlanListByPort(3, bitmap));
    EXPECT_EQ(0u, bitmap[0] | bitmap[127]);
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetVlanPortBindMode(20, 4, &value));
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetVlanPortBindMode(21, 3, &value));
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetVlanPortBindMode(4096, 3, &value));
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetVlanPortBindMode(20, 3, nullptr));
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetPortListByVlan(21, &value, &count));
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetPortListByVlan(20, nullptr, &count));
    EXPECT_NE(0u, BDS_L2IF_SH_DYNVP_GetPortListByVlan(20, &value, nullptr));
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_EQ(0u, BDS_L2IF_SH_DYNVP_GetPortListByVlan(20, &value, &count));
    EXPECT_EQ(0u, count);
}

/* ---- trunks */

TEST_F(HostTrunk, AndItsMembersAreKnownByTheirInterfaces) {
    for (uint32_t if_index : {7u, 8u, 9u, 100u})
        PutIf(Interface(if_index));
    PutTrunk(50, 100, {8, 7});
    const auto answers = [](uint32_t if_index) {
        return std::array{Trunk_IF_IsTrunk(if_index), BDS_TrunkIsPortInTrunk(if_index)};
    };
    EXPECT_EQ((std::array{1u, 0u}), answers(100));
    EXPECT_EQ((std::array{0u, 1u}), answers(7));
    EXPECT_EQ((std::array{0u, 0u}), answers(9));
    EXPECT_EQ((std::array{0u, 0u}), answers(0));
    for (uint32_t if_index : {100u, 7u}) {
        uint32_t is_trunk = UNTOUCHED, index = UNTOUCHED;
        EXPECT_EQ(0u, BDS_TrunkGetTrunkIndex(if_index, &is_trunk, &index));
        EXPECT_EQ(1u, is_trunk);
        EXPECT_EQ(0u, index);
    }
    uint32_t is_trunk = UNTOUCHED, index = UNTOUCHED;
    EXPECT_EQ(0u, BDS_TrunkGetTrunkIndex(9, &is_trunk, &index));
    EXPECT_EQ(0u, is_trunk);
    EXPECT_EQ(UNTOUCHED, index);
    is_trunk = UNTOUCHED;
    EXPECT_NE(0u, BDS_TrunkGetTrunkIndex(10, &is_trunk, &index));
    EXPECT_NE(0u, BDS_TrunkGetTrunkIndex(100, nullptr, &index));
    EXPECT_NE(0u, BDS_TrunkGetTrunkIndex(100, &is_trunk, nullptr));
    EXPECT_EQ(UNTOUCHED, is_trunk);
}

TEST_F(HostTrunk, IsFoundByMemberAndByIdentifier) {
    PutTrunk(50, 100, {7});
    PutTrunk(60, 101, {});
    uint32_t value = UNTOUCHED;
    EXPECT_NE(0u, BDS_TrunkGetTrunkIfIndexByPort(100, &value));
    EXPECT_NE(0u, BDS_TrunkGetTrunkIfIndexByPort(7, nullptr));
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_EQ(0u, BDS_TrunkGetTrunkIfIndexByPort(7, &value));
    EXPECT_EQ(100u, value);
    EXPECT_EQ(0u, Trunk_GetIndexByTrunkID(50));
    EXPECT_EQ(1u, Trunk_GetIndexByTrunkID(60));
    EXPECT_EQ(UVELHOST_NONE, Trunk_GetIndexByTrunkID(70));
}

TEST_F(HostTrunk, ListsItsMembersAndTheirBoardsAscending) {
    for (auto [if_index, slot] : {std::pair{7u, 4u}, {8u, 2u}, {9u, 4u}, {10u, UVELHOST_NONE}}) {
        MDL_IF_S interface = Interface(if_index);
        interface.ulSlot = slot;
        PutIf(interface);
    }
    PutTrunk(50, 100, {10, 9, 8, 7, 11}); /* 11 is no interface yet */
    const auto members = [](uint32_t *out, uint32_t *count) { return BDS_TrunkGetTrunkMem(0, out, count); };
    const auto boards = [](uint32_t *out, uint32_t *count) { return BDS_TrunkGetAllBoard(0, out, count); };
    EXPECT_EQ((List{7, 8, 9, 10, 11}), Ask(members, 5));
    EXPECT_EQ((List{2, 4}), Ask(boards, 2));
    EXPECT_EQ(2u, BDS_TRUNK_GetMemCountOnSlot(100, 4));
    EXPECT_EQ(1u, BDS_TRUNK_GetMemCountOnSlot(100, 2));
    for (auto [trunk, slot] : {std::pair{100u, 3u}, {100u, UVELHOST_NONE}, {7u, 4u}, {0u, 4u}})
        EXPECT_EQ(0u, BDS_TRUNK_GetMemCountOnSlot(trunk, slot));
    for (auto query : {BDS_TrunkGetTrunkMem, BDS_TrunkGetAllBoard}) {
        uint32_t value[4] = {UNTOUCHED}, room = 1;
        EXPECT_NE(0u, query(0, value, &room));
        EXPECT_NE(0u, query(1, value, &room));
        EXPECT_NE(0u, query(0, nullptr, &room));
        EXPECT_NE(0u, query(0, value, nullptr));
        EXPECT_EQ(UNTOUCHED, value[0]);
        EXPECT_EQ(1u, room);
    }
}

TEST_F(HostTrunk, SelectsTheFirstMemberThatIsUp) {
    for (uint32_t if_index : {7u, 8u, 9u}) {
        MDL_IF_S interface = Interface(if_index);
        interface.ulPhyState = if_index == 7 ? IF_STATE_DOWN : IF_STATE_UP;
        PutIf(interface);
    }
    PutTrunk(50, 100, {9, 8, 7});
    PutTrunk(51, 101, {});
    uint32_t value = UNTOUCHED;
    EXPECT_NE(0u, BDS_TrunkSelectFirstUpPort(1, &value));
    EXPECT_NE(0u, BDS_TrunkSelectFirstUpPort(2, &value));
    EXPECT_NE(0u, BDS_TrunkSelectFirstUpPort(0, nullptr));
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_EQ(0u, BDS_TrunkSelectFirstUpPort(0, &value));
    EXPECT_EQ(8u, value);
    EXPECT_EQ(0u, IF_INTF_ShutDownInterface(8));
    EXPECT_EQ(0u, BDS_TrunkSelectFirstUpPort(0, &value));
    EXPECT_EQ(9u, value);
}

TEST_F(HostTrunk, SpreadsHashesOverItsActiveMembersInOrder) {
    PutTrunk(50, 100, {9, 8, 7});
    InBatch([](MDL_BATCH *batch) {
        const MDL_MEMBER_S passive = {8, 50, 0};
        ASSERT_EQ(0u, MDL_PutMember(batch, &passive));
    });
    for (auto [hash, member] : {std::pair{0u, 7u}, {1u, 9u}, {2u, 7u}, {0xFFFFFFFFu, 9u}}) {
        uint32_t value = UNTOUCHED;
        EXPECT_EQ(0u, BDS_TrunkActiveIfIndexByTrunkIfIndex(100, hash, &value));
        EXPECT_EQ(member, value) << hash;
    }
    InBatch([](MDL_BATCH *batch) {
        for (uint32_t if_index : {7u, 9u})
            ASSERT_EQ(0u, MDL_RemoveMember(batch, if_index));
    });
    uint32_t value = UNTOUCHED;
    EXPECT_NE(0u, BDS_TrunkActiveIfIndexByTrunkIfIndex(100, 0, &value));
    EXPECT_NE(0u, BDS_TrunkActiveIfIndexByTrunkIfIndex(7, 0, &value));
    EXPECT_NE(0u, BDS_TrunkActiveIfIndexByTrunkIfIndex(100, 0, nullptr));
    EXPECT_EQ(UNTOUCHED, value);
}

TEST_F(HostTrunk, IdentifierIndexAndInterfaceBelongToOneTrunkEach) {
    PutTrunk(50, 100, {});
    InBatch([](MDL_BATCH *batch) {
        for (const MDL_TRUNK_S &wrong : {MDL_TRUNK_S{0, 51, 101}, MDL_TRUNK_S{1, 50, 101}, MDL_TRUNK_S{1, 51, 100},
                                         MDL_TRUNK_S{MDL_AUTO, 51, 0}, MDL_TRUNK_S{UVELHOST_NONE, 51, 101}})
            EXPECT_EQ(1u, MDL_PutTrunk(batch, &wrong));
        const MDL_TRUNK_S moved = {MDL_AUTO, 50, 102};
        EXPECT_EQ(0u, MDL_PutTrunk(batch, &moved));
    });
    EXPECT_EQ(0u, Trunk_IF_IsTrunk(100));
    EXPECT_EQ(1u, Trunk_IF_IsTrunk(102));
}
