/* Which changes become which notifications, and in which order. */
#include "model_notices.h"

#include <cstring>
#include <uvelhost/exec.h>

using notices::Take;

namespace {

using HostChanges = NoticedModelTest;

MDL_IF_S UpInterface(uint32_t if_index) {
    MDL_IF_S interface = Interface(if_index);
    interface.ulLineState = interface.ulPhyState = interface.ulIpv6State = IF_STATE_UP;
    return interface;
}

MDL_VLAN_S Vlan(uint32_t vlan) {
    return {vlan, UVELHOST_NONE, 0, UVELHOST_NONE};
}

} // namespace

TEST_F(HostChanges, ANewInterfaceIsToldAndThenWhatItIsBeyondTheUsual) {
    PutIf(Interface(7));
    EXPECT_EQ((Lines{"if 2 7"}), Take());
    MDL_IF_S interface = UpInterface(8);
    interface.ulVrf = 3;
    PutIf(interface);
    EXPECT_EQ((Lines{"if 2 8", "vrf-set 10 8", "ioctl 3 1 8 1", "ioctl 2 1 8 1", "ioctl 7 1 8 1"}), Take());
}

TEST_F(HostChanges, PuttingWhatIsThereTellsNothing) {
    const MDL_IF_S interface = UpInterface(7);
    const MDL_ADDR4_S addr = {7, 0x0A000001, 24, 1, IP_FLAG_CONFIGURED};
    const MDL_VLAN_S vlan = Vlan(20);
    for (int round = 0; round < 2; ++round) {
        InBatch([&](MDL_BATCH *batch) {
            EXPECT_EQ(0u, MDL_PutIf(batch, &interface));
            EXPECT_EQ(0u, MDL_PutAddr4(batch, &addr));
            EXPECT_EQ(0u, MDL_PutVlan(batch, &vlan));
            EXPECT_EQ(0u, MDL_RemoveIf(batch, 99));
        });
        EXPECT_EQ(round == 0 ? 6u : 0u, Take().size());
    }
}

TEST_F(HostChanges, EveryStateHasANotificationOfItsOwn) {
    MDL_IF_S interface = Interface(7);
    PutIf(interface);
    Take();
    interface.ulLineState = IF_STATE_UP;
    PutIf(interface);
    interface.ulPhyState = IF_STATE_UP;
    PutIf(interface);
    interface.ulIpv6State = IF_STATE_UP;
    PutIf(interface);
    EXPECT_EQ((Lines{"ioctl 2 1 7 1", "ioctl 3 1 7 1", "ioctl 7 1 7 1"}), Take());
    IF_INTF_ShutDownInterface(7);
    EXPECT_EQ((Lines{"ioctl 8 0 7 64", "ioctl 3 0 7 64", "ioctl 2 0 7 64", "ioctl 7 0 7 64"}), Take());
    IF_INTF_NoShutDownInterface(7);
    EXPECT_EQ((Lines{"ioctl 8 1 7 65", "ioctl 3 1 7 65", "ioctl 2 1 7 65", "ioctl 7 1 7 65"}), Take());
}

TEST_F(HostChanges, ALayer2SubInterfaceHasALineStateOfItsOwn) {
    MDL_IF_S sub = Interface(8);
    sub.ulMainIfIndex = 7;
    sub.ulLayer = 2;
    PutIf(sub);
    Take();
    sub.ulLineState = IF_STATE_UP;
    PutIf(sub);
    EXPECT_EQ((Lines{"ioctl 12 1 8 1"}), Take());
}

TEST_F(HostChanges, NamePlaceLayerAndVlanOfAnInterfaceAreToldApart) {
    MDL_IF_S interface = Interface(7, "old");
    interface.ulPortIndex = 3;
    PutIf(interface);
    Take();
    interface = Interface(7, "new");
    interface.ulPortIndex = 3;
    PutIf(interface);
    EXPECT_EQ((Lines{"if 3 7"}), Take());
    interface.ulSlot = 4;
    PutIf(interface);
    EXPECT_EQ((Lines{"if 25 7"}), Take());
    interface.ulLayer = 2;
    PutIf(interface);
    EXPECT_EQ((Lines{"l2 209+ 7 null", "l2 209 7 null"}), Take());
    interface.usPvid = 20;
    PutIf(interface);
    EXPECT_EQ((Lines{"l2 241 3 20"}), Take());
    interface.ulLayer = 3;
    PutIf(interface);
    EXPECT_EQ((Lines{"l2 193+ 7 null", "l2 193 7 null"}), Take());
}

TEST_F(HostChanges, AVlanInterfaceGoesUpAndDownAsItsVlan) {
    MDL_IF_S interface = Interface(7);
    interface.ulKind = MDL_IF_VLAN;
    interface.usVlanId = 20;
    PutIf(interface);
    interface.ulLineState = IF_STATE_UP;
    PutIf(interface);
    interface.ulLineState = IF_STATE_DOWN;
    PutIf(interface);
    EXPECT_EQ((Lines{"if 2 7", "ioctl 2 1 7 1", "l2 129 20 null", "ioctl 2 0 7 0", "l2 130 20 null"}), Take());
}

TEST_F(HostChanges, WhatHangsOnAnInterfaceGoesBeforeIt) {
    MDL_IF_S interface = Interface(7);
    interface.ulPortIndex = 3;
    InBatch([&](MDL_BATCH *batch) {
        const MDL_ADDR4_S one = {7, 0x0A000001, 24, 0, IP_FLAG_CONFIGURED}, other = {8, 0x0A000002, 24, 0, 1};
        const MDL_ADDR6_S ipv6 = {7, {0x20}, 64};
        const MDL_VRRP_S vrrp = {7, 0x0A0000FE, 1, {}, {}};
        const MDL_MEMBER_S member = {7, 50, 1};
        EXPECT_EQ(0u, MDL_PutIf(batch, &interface));
        EXPECT_EQ(0u, MDL_PutAddr4(batch, &one));
        EXPECT_EQ(0u, MDL_PutAddr4(batch, &other));
        EXPECT_EQ(0u, MDL_PutAddr6(batch, &ipv6));
        EXPECT_EQ(0u, MDL_PutVrrp(batch, &vrrp));
        EXPECT_EQ(0u, MDL_PutMember(batch, &member));
        EXPECT_EQ(0u, MDL_BindVlans(batch, 3, 20, 21, L2IF_BIND_TAGGED, 0));
    });
    Take();
    InBatch([](MDL_BATCH *batch) { MDL_RemoveIf(batch, 7); });
    EXPECT_EQ((Lines{"ip 7 32 10 0 0 1", "trunk 50 2 7", "trunk 50 7 7", "l2 179 20 21 p3", "if 6 7"}), Take());
    uint8_t mac[6];
    EXPECT_EQ(0u, VRRP4_VrrpIsVIp(7, 0x0A0000FE, mac));
}

TEST_F(HostChanges, AddressesComeAndGoInNetworkOrder) {
    const MDL_ADDR4_S addr = {7, 0xC0000201, 24, 1, IP_FLAG_CONFIGURED};
    InBatch([&](MDL_BATCH *batch) { MDL_PutAddr4(batch, &addr); });
    InBatch([&](MDL_BATCH *batch) { MDL_RemoveAddr4(batch, 7, 0xC0000201); });
    EXPECT_EQ((Lines{"ip 7 16 192 0 2 1", "ip 7 32 192 0 2 1"}), Take());
}

TEST_F(HostChanges, VlansOfABatchShareABitmap) {
    InBatch([](MDL_BATCH *batch) {
        for (uint32_t vlan : {0u, 20u, 4095u}) {
            const MDL_VLAN_S record = Vlan(vlan);
            MDL_PutVlan(batch, &record);
        }
    });
    EXPECT_EQ((Lines{"l2 577 null v0 v20 v4095"}), Take());
    InBatch([](MDL_BATCH *batch) {
        for (uint32_t vlan : {0u, 20u})
            MDL_RemoveVlan(batch, vlan);
    });
    EXPECT_EQ((Lines{"l2 579+ null v0 v20", "l2 579 null v0 v20"}), Take());
}

TEST_F(HostChanges, VlansOfDifferentBatchesDoNot) {
    for (uint32_t vlan : {1u, 2u})
        InBatch([&](MDL_BATCH *batch) {
            const MDL_VLAN_S record = Vlan(vlan);
            MDL_PutVlan(batch, &record);
        });
    EXPECT_EQ((Lines{"l2 577 null v1", "l2 577 null v2"}), Take());
}

TEST_F(HostChanges, AVlanHasItsSuperVlanDomainAndAttribute) {
    MDL_VLAN_S vlan = Vlan(20);
    const auto put = [&] { InBatch([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_PutVlan(batch, &vlan)); }); };
    put();
    Take();
    vlan.ulSuperVlan = 10;
    put();
    vlan.ulSuperVlan = 11;
    put();
    EXPECT_EQ((Lines{"l2 49 10 20", "l2 65 10 20", "l2 49 11 20"}), Take());
    vlan.ulBd = 5000;
    put();
    vlan.ulAttribute = 9;
    put();
    EXPECT_EQ((Lines{"bd 0 5000 20", "l2 81+ 20 9"}), Take());
    InBatch([](MDL_BATCH *batch) { MDL_RemoveVlan(batch, 20); });
    EXPECT_EQ((Lines{"l2 65 11 20", "bd 1 5000 20", "l2 579+ null v20", "l2 579 null v20"}), Take());
}

TEST_F(HostChanges, PortsThatJoinAVlanTogetherShareAList) {
    InBatch([](MDL_BATCH *batch) {
        for (uint32_t port = 0; port < 5; ++port)
            MDL_BindVlans(batch, port, 20, 20, L2IF_BIND_TAGGED, 0);
    });
    EXPECT_EQ((Lines{"l2 161 20 20 p0 p1 p2 p3 p4"}), Take());
}

TEST_F(HostChanges, APortLeavesVlansInRuns) {
    InBatch([](MDL_BATCH *batch) {
        MDL_BindVlans(batch, 3, 10, 13, L2IF_BIND_TAGGED, 0);
        MDL_BindVlans(batch, 3, 20, 20, L2IF_BIND_UNTAGGED, 1);
        MDL_BindVlans(batch, 3, 4095, 4095, L2IF_BIND_UNTAGGED, 1);
    });
    Take();
    InBatch([](MDL_BATCH *batch) { MDL_RemovePortVlans(batch, 3); });
    EXPECT_EQ((Lines{"l2 179 10 13 p3", "l2 177 20 20 p3", "l2 177 4095 4095 p3"}), Take());
}

TEST_F(HostChanges, ChangingHowAPortIsInAVlanIsNoChangeOfTheVlansPorts) {
    InBatch([](MDL_BATCH *batch) { MDL_BindVlans(batch, 3, 10, 10, L2IF_BIND_TAGGED, 0); });
    Take();
    InBatch([](MDL_BATCH *batch) { MDL_BindVlans(batch, 3, 10, 10, L2IF_BIND_UNTAGGED, 0); });
    InBatch([](MDL_BATCH *batch) { MDL_BindVlans(batch, 3, 10, 10, L2IF_BIND_TAGGED, 1); });
    InBatch([](MDL_BATCH *batch) { MDL_BindVlans(batch, 3, 10, 10, L2IF_BIND_NONE, 0); });
    EXPECT_EQ(Lines{}, Take());
    InBatch([](MDL_BATCH *batch) { MDL_BindVlans(batch, 3, 10, 10, L2IF_BIND_NONE, 1); });
    EXPECT_EQ((Lines{"l2 177 10 10 p3"}), Take());
}

TEST_F(HostChanges, APortLeavesAVlanBeforeTheVlanGoes) {
    InBatch([](MDL_BATCH *batch) {
        const MDL_VLAN_S vlan = Vlan(20);
        MDL_PutVlan(batch, &vlan);
        MDL_BindVlans(batch, 3, 20, 21, L2IF_BIND_TAGGED, 0);
    });
    Take();
    InBatch([](MDL_BATCH *batch) { MDL_RemoveVlan(batch, 20); });
    EXPECT_EQ((Lines{"l2 177 20 20 p3", "l2 579+ null v20", "l2 579 null v20"}), Take());
    EXPECT_EQ(0u, L2IF_VP_PortIsInCfgVlan(3, 20));
    EXPECT_EQ(1u, L2IF_VP_PortIsInCfgVlan(3, 21));
}

TEST_F(HostChanges, MembersJoinMoveAndLeaveBeforeTheirTrunkGoes) {
    InBatch([](MDL_BATCH *batch) {
        const MDL_TRUNK_S trunk = {MDL_AUTO, 50, 100};
        MDL_MEMBER_S member = {7, 50, 1};
        MDL_PutTrunk(batch, &trunk);
        MDL_PutMember(batch, &member);
        member.ulActive = 0; /* activity is a matter of the trunk alone */
        MDL_PutMember(batch, &member);
    });
    EXPECT_EQ((Lines{"trunk 50 3 7", "trunk 50 8 7"}), Take());
    InBatch([](MDL_BATCH *batch) {
        const MDL_MEMBER_S member = {7, 60, 1};
        MDL_PutMember(batch, &member);
        const MDL_MEMBER_S other = {8, 50, 1};
        MDL_PutMember(batch, &other);
    });
    EXPECT_EQ((Lines{"trunk 50 2 7", "trunk 50 7 7", "trunk 60 3 7", "trunk 60 8 7", "trunk 50 3 8", "trunk 50 8 8"}),
              Take());
    InBatch([](MDL_BATCH *batch) { MDL_RemoveTrunk(batch, 50); });
    EXPECT_EQ((Lines{"trunk 50 2 8", "trunk 50 7 8", "trunk 50 6 100"}), Take());
}

TEST_F(HostChanges, OnlyVrfsBehindVirtualSystemsAreTold) {
    MDL_VRF_S vrf = {5, 1, 1, 0, "blue"};
    const auto put = [&] { InBatch([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_PutVrf(batch, &vrf)); }); };
    put();
    EXPECT_EQ(Lines{}, Take());
    vrf.ulVsys = 1;
    put();
    std::strcpy(vrf.szName, "red");
    put();
    InBatch([](MDL_BATCH *batch) { MDL_RemoveVrf(batch, 5); });
    EXPECT_EQ((Lines{"vsys 1 5", "vsys 2 5"}), Take());
}

TEST_F(HostChanges, ABoardComesIntoServiceAfterItIsThereAndGoesAfterItLeft) {
    MDL_BOARD_S board = Board(3, MDL_BOARD_LINE);
    const auto put = [&] { InBatch([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_PutBoard(batch, &board)); }); };
    put();
    EXPECT_EQ((Lines{"slot 0 3 1", "slot 2 3 1"}), Take());
    board.ulOnline = 0;
    put();
    board.ulPresent = 0;
    put();
    EXPECT_EQ((Lines{"slot 3 3 1", "slot 1 3 1"}), Take());
    InBatch([](MDL_BATCH *batch) { MDL_RemoveBoard(batch, 3); });
    EXPECT_EQ(Lines{}, Take());
}

TEST_F(HostChanges, AnAbortedBatchTellsAndChangesNothing) {
    PutIf(Interface(7, "old"));
    Take();
    MDL_BATCH *batch = MDL_Begin(FEEDER, 0);
    const MDL_IF_S changed = Interface(7, "new"), added = Interface(8);
    MDL_PutIf(batch, &changed);
    MDL_PutIf(batch, &changed);
    MDL_PutIf(batch, &added);
    MDL_Abort(batch);
    char name[IF_NAME_SIZE];
    EXPECT_EQ(0u, BDS_IfnetGetIfNameByIfIndex(7, name, sizeof name));
    EXPECT_STREQ("old", name);
    EXPECT_EQ(nullptr, IF_GetIfByIndex(8));
    EXPECT_EQ(Lines{}, Take());
    PutIf(Interface(7, "newer"));
    EXPECT_EQ(0u, BDS_IfnetGetIfNameByIfIndex(7, name, sizeof name));
    EXPECT_STREQ("newer", name);
}

TEST_F(HostChanges, AFullMarkAndSweepTellsTheDifferencesOnly) {
    for (uint32_t if_index : {1u, 2u, 3u})
        PutIf(Interface(if_index));
    Take();
    MDL_IF_S changed = Interface(2, "renamed");
    const MDL_IF_S same = Interface(1), added = Interface(4);
    InBatch([&](MDL_BATCH *batch) {
        EXPECT_EQ(0u, MDL_MarkAll(batch));
        EXPECT_EQ(0u, MDL_PutIf(batch, &same));
    });
    InBatch([&](MDL_BATCH *batch) {
        EXPECT_EQ(0u, MDL_PutIf(batch, &added));
        EXPECT_EQ(0u, MDL_PutIf(batch, &changed));
        EXPECT_EQ(0u, MDL_Sweep(batch));
    });
    EXPECT_EQ((Lines{"if 2 4", "if 3 2", "if 6 3"}), Take());
}

TEST_F(HostChanges, ASweepTakesOnlyWhatBelongsToItsFeederAndWasMarked) {
    PutIf(Interface(1));
    InBatch(
        [](MDL_BATCH *batch) {
            const MDL_IF_S other = Interface(2);
            MDL_PutIf(batch, &other);
        },
        FEEDER + 1);
    Take();
    InBatch([](MDL_BATCH *batch) { MDL_Sweep(batch); });
    EXPECT_EQ(Lines{}, Take());
    InBatch([](MDL_BATCH *batch) {
        MDL_MarkAll(batch);
        MDL_Sweep(batch);
    });
    EXPECT_EQ((Lines{"if 6 1"}), Take());
}

TEST_F(HostChanges, AMarkThatWasGivenUpHasMarkedNothing) {
    const MDL_IF_S one = Interface(1), two = Interface(2);
    PutIf(one);
    PutIf(two);
    Take();
    MDL_BATCH *batch = MDL_Begin(FEEDER, 0);
    MDL_MarkAll(batch);
    MDL_PutIf(batch, &one);
    MDL_Abort(batch);
    InBatch([](MDL_BATCH *sweeping) { MDL_Sweep(sweeping); });
    EXPECT_EQ(Lines{}, Take());
    InBatch([&](MDL_BATCH *again) {
        MDL_MarkAll(again);
        MDL_PutIf(again, &two);
        MDL_Sweep(again);
    });
    EXPECT_EQ((Lines{"if 6 1"}), Take());
}

TEST_F(HostChanges, AnAdministrativeChangeLeavesTheInterfaceToItsFeeder) {
    PutIf(Interface(1));
    EXPECT_EQ(0u, IF_INTF_ShutDownInterface(1));
    Take();
    InBatch([](MDL_BATCH *batch) {
        MDL_MarkAll(batch);
        MDL_Sweep(batch);
    });
    EXPECT_EQ((Lines{"if 6 1"}), Take());
}

TEST_F(HostChanges, WrongRecordsAreRefusedAndTheBatchGoesOn) {
    const auto wrong = [](auto change) {
        MDL_IF_S interface = Interface(7);
        change(interface);
        MDL_BATCH *batch = MDL_Begin(FEEDER, 0);
        EXPECT_EQ(1u, MDL_PutIf(batch, &interface));
        EXPECT_EQ(0u, MDL_Commit(batch));
    };
    wrong([](MDL_IF_S &i) { i.ulIfIndex = 0; });
    wrong([](MDL_IF_S &i) { i.ulIfIndex = UVELHOST_NONE; });
    wrong([](MDL_IF_S &i) { i.szName[0] = '\0'; });
    wrong([](MDL_IF_S &i) { std::memset(i.szName, 'x', sizeof i.szName); });
    wrong([](MDL_IF_S &i) { std::memset(i.szShortName, 'x', sizeof i.szShortName); });
    wrong([](MDL_IF_S &i) { i.ulLayer = 4; });
    wrong([](MDL_IF_S &i) { i.ulLineState = 0; });
    wrong([](MDL_IF_S &i) { i.ulAdminDown = 2; });
    wrong([](MDL_IF_S &i) { i.usVlanId = 4096; });
    wrong([](MDL_IF_S &i) { i.ulKind = MDL_IF_VLAN; });
    wrong([](MDL_IF_S &i) { i.ulKind = MDL_IF_VBD; });
    wrong([](MDL_IF_S &i) { i.ulKind = 3; });
    wrong([](MDL_IF_S &i) { i.ulBd = 0x10000; });
    wrong([](MDL_IF_S &i) { i.ulPortIndex = 4096; });
    wrong([](MDL_IF_S &i) { i.ulPortMode = 3; });
    InBatch([](MDL_BATCH *batch) {
        const MDL_VLAN_S vlan = Vlan(4096), super = {1, 4096, 0, UVELHOST_NONE}, domain = {1, UVELHOST_NONE, 0, 65536};
        for (const MDL_VLAN_S &each : {vlan, super, domain})
            EXPECT_EQ(1u, MDL_PutVlan(batch, &each));
        const MDL_ADDR4_S mask = {7, 1, 33, 0, 1}, flag = {7, 1, 32, 0, 0}, nobody = {0, 1, 32, 0, 1};
        for (const MDL_ADDR4_S &each : {mask, flag, nobody})
            EXPECT_EQ(1u, MDL_PutAddr4(batch, &each));
        const MDL_VRF_S nameless = {1, 1, 1, 0, ""}, large = {65536, 1, 1, 1, "x"};
        for (const MDL_VRF_S &each : {nameless, large})
            EXPECT_EQ(1u, MDL_PutVrf(batch, &each));
        EXPECT_EQ(1u, MDL_BindVlans(batch, 1, 5, 4, L2IF_BIND_TAGGED, 0));
        EXPECT_EQ(1u, MDL_BindVlans(batch, 1, 5, 4096, L2IF_BIND_TAGGED, 0));
        EXPECT_EQ(1u, MDL_BindVlans(batch, 65536, 5, 5, L2IF_BIND_TAGGED, 0));
        EXPECT_EQ(1u, MDL_PutIf(batch, nullptr));
        EXPECT_EQ(1u, MDL_PutDevice(batch, nullptr));
    });
    const MDL_IF_S good = Interface(7);
    EXPECT_EQ(1u, MDL_PutIf(nullptr, &good));
    EXPECT_EQ(Lines{}, Take());
}

TEST_F(HostChanges, AThreadHasOneBatchAtATime) {
    MDL_BATCH *batch = MDL_Begin(FEEDER, 0);
    EXPECT_EQ(nullptr, MDL_Begin(FEEDER, 0));
    EXPECT_EQ(1u, MDL_Commit(nullptr));
    EXPECT_EQ(0u, MDL_Commit(batch));
}
