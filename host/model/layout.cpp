/* Sizes and offsets that callers were compiled with: a change of one is a change of the interface. */
#include <cstddef>
#include <uvelhost/device.h>
#include <uvelhost/events.h>
#include <uvelhost/interface.h>
#include <uvelhost/model.h>
#include <uvelhost/model_events.h>

static_assert(sizeof(DEVM_CPU_INFO_S) == 16);
static_assert(offsetof(DEVM_CPU_INFO_S, ulPresent) == 0);
static_assert(offsetof(DEVM_CPU_INFO_S, ulLocalCpuId) == 4);
static_assert(offsetof(DEVM_CPU_INFO_S, ulCpuCount) == 8);
static_assert(offsetof(DEVM_CPU_INFO_S, ulReserved) == 12);

static_assert(sizeof(L2IF_PORT_LIST_S) == 8);
static_assert(offsetof(L2IF_PORT_LIST_S, ulReserved) == 0);
static_assert(offsetof(L2IF_PORT_LIST_S, ulCount) == 4);

static_assert(sizeof(L2IF_VLAN_LIST_S) == 4);
static_assert(offsetof(L2IF_VLAN_LIST_S, ulCount) == 0);

static_assert(sizeof(L2IF_QINQ_DATA_S) == 20);
static_assert(offsetof(L2IF_QINQ_DATA_S, ausWord) == 0);

static_assert(sizeof(IF_IFNET_S) == 96);
static_assert(offsetof(IF_IFNET_S, ulIfIndex) == 0);
static_assert(offsetof(IF_IFNET_S, ulMainIfIndex) == 4);
static_assert(offsetof(IF_IFNET_S, ulPortType) == 8);
static_assert(offsetof(IF_IFNET_S, ulPhyType) == 12);
static_assert(offsetof(IF_IFNET_S, ulLineState) == 16);
static_assert(offsetof(IF_IFNET_S, ulPhyState) == 20);
static_assert(offsetof(IF_IFNET_S, usVlanId) == 24);
static_assert(offsetof(IF_IFNET_S, aucMac) == 26);
static_assert(offsetof(IF_IFNET_S, szName) == 32);

static_assert(sizeof(MDL_DEVICE_S) == 96);
static_assert(offsetof(MDL_DEVICE_S, ulSelfSlot) == 0);
static_assert(offsetof(MDL_DEVICE_S, ulSelfCpu) == 4);
static_assert(offsetof(MDL_DEVICE_S, ulOnlyLsw) == 8);
static_assert(offsetof(MDL_DEVICE_S, ulMaxSwitchPorts) == 12);
static_assert(offsetof(MDL_DEVICE_S, ulHasMac) == 16);
static_assert(offsetof(MDL_DEVICE_S, aucMac) == 20);
static_assert(offsetof(MDL_DEVICE_S, aucReserved) == 26);
static_assert(offsetof(MDL_DEVICE_S, ulHasName) == 28);
static_assert(offsetof(MDL_DEVICE_S, szName) == 32);

static_assert(sizeof(MDL_BOARD_S) == 108);
static_assert(offsetof(MDL_BOARD_S, ulSlot) == 0);
static_assert(offsetof(MDL_BOARD_S, ulChassis) == 4);
static_assert(offsetof(MDL_BOARD_S, ulLocalSlot) == 8);
static_assert(offsetof(MDL_BOARD_S, ulPhySlot) == 12);
static_assert(offsetof(MDL_BOARD_S, ulRole) == 16);
static_assert(offsetof(MDL_BOARD_S, ulPresent) == 20);
static_assert(offsetof(MDL_BOARD_S, ulRegistered) == 24);
static_assert(offsetof(MDL_BOARD_S, ulOnline) == 28);
static_assert(offsetof(MDL_BOARD_S, ulCpuCount) == 32);
static_assert(offsetof(MDL_BOARD_S, ulMainCpu) == 36);
static_assert(offsetof(MDL_BOARD_S, ulFirstCpu) == 40);
static_assert(offsetof(MDL_BOARD_S, aulAddr) == 44);

static_assert(sizeof(MDL_IF_S) == 220);
static_assert(offsetof(MDL_IF_S, ulIfIndex) == 0);
static_assert(offsetof(MDL_IF_S, ulMainIfIndex) == 4);
static_assert(offsetof(MDL_IF_S, ulPortType) == 8);
static_assert(offsetof(MDL_IF_S, ulPhyType) == 12);
static_assert(offsetof(MDL_IF_S, ulLayer) == 16);
static_assert(offsetof(MDL_IF_S, ulLineState) == 20);
static_assert(offsetof(MDL_IF_S, ulIpv6State) == 24);
static_assert(offsetof(MDL_IF_S, ulPhyState) == 28);
static_assert(offsetof(MDL_IF_S, ulAdminDown) == 32);
static_assert(offsetof(MDL_IF_S, ulVrf) == 36);
static_assert(offsetof(MDL_IF_S, ulIpv6Vrf) == 40);
static_assert(offsetof(MDL_IF_S, ulKind) == 44);
static_assert(offsetof(MDL_IF_S, ulFlags) == 48);
static_assert(offsetof(MDL_IF_S, ulSlot) == 52);
static_assert(offsetof(MDL_IF_S, ulCard) == 56);
static_assert(offsetof(MDL_IF_S, ulPort) == 60);
static_assert(offsetof(MDL_IF_S, ulPortIndex) == 64);
static_assert(offsetof(MDL_IF_S, ulPortMode) == 68);
static_assert(offsetof(MDL_IF_S, ulBd) == 72);
static_assert(offsetof(MDL_IF_S, ulVap) == 76);
static_assert(offsetof(MDL_IF_S, usVlanId) == 80);
static_assert(offsetof(MDL_IF_S, usPvid) == 82);
static_assert(offsetof(MDL_IF_S, aucMac) == 84);
static_assert(offsetof(MDL_IF_S, aucReserved) == 90);
static_assert(offsetof(MDL_IF_S, szName) == 92);
static_assert(offsetof(MDL_IF_S, szShortName) == 156);

static_assert(sizeof(MDL_ADDR4_S) == 20);
static_assert(offsetof(MDL_ADDR4_S, ulIfIndex) == 0);
static_assert(offsetof(MDL_ADDR4_S, ulAddr) == 4);
static_assert(offsetof(MDL_ADDR4_S, ulPrefixLen) == 8);
static_assert(offsetof(MDL_ADDR4_S, ulMain) == 12);
static_assert(offsetof(MDL_ADDR4_S, ulFlag) == 16);

static_assert(sizeof(MDL_ADDR6_S) == 24);
static_assert(offsetof(MDL_ADDR6_S, ulIfIndex) == 0);
static_assert(offsetof(MDL_ADDR6_S, aucAddr) == 4);
static_assert(offsetof(MDL_ADDR6_S, ulPrefixLen) == 20);

static_assert(sizeof(MDL_VLAN_S) == 16);
static_assert(offsetof(MDL_VLAN_S, ulVlanId) == 0);
static_assert(offsetof(MDL_VLAN_S, ulSuperVlan) == 4);
static_assert(offsetof(MDL_VLAN_S, ulAttribute) == 8);
static_assert(offsetof(MDL_VLAN_S, ulBd) == 12);

static_assert(sizeof(MDL_PORT_VLANS_S) == 2052);
static_assert(offsetof(MDL_PORT_VLANS_S, ulPortIndex) == 0);
static_assert(offsetof(MDL_PORT_VLANS_S, aulUntagged) == 4);
static_assert(offsetof(MDL_PORT_VLANS_S, aulTagged) == 516);
static_assert(offsetof(MDL_PORT_VLANS_S, aulDynUntagged) == 1028);
static_assert(offsetof(MDL_PORT_VLANS_S, aulDynTagged) == 1540);

static_assert(sizeof(MDL_TRUNK_S) == 12);
static_assert(offsetof(MDL_TRUNK_S, ulTrunkIndex) == 0);
static_assert(offsetof(MDL_TRUNK_S, ulTrunkId) == 4);
static_assert(offsetof(MDL_TRUNK_S, ulIfIndex) == 8);

static_assert(sizeof(MDL_MEMBER_S) == 12);
static_assert(offsetof(MDL_MEMBER_S, ulIfIndex) == 0);
static_assert(offsetof(MDL_MEMBER_S, ulTrunkId) == 4);
static_assert(offsetof(MDL_MEMBER_S, ulActive) == 8);

static_assert(sizeof(MDL_VRF_S) == 48);
static_assert(offsetof(MDL_VRF_S, ulVrfIndex) == 0);
static_assert(offsetof(MDL_VRF_S, ulIpv4) == 4);
static_assert(offsetof(MDL_VRF_S, ulIpv6) == 8);
static_assert(offsetof(MDL_VRF_S, ulVsys) == 12);
static_assert(offsetof(MDL_VRF_S, szName) == 16);

static_assert(sizeof(MDL_VRRP_S) == 20);
static_assert(offsetof(MDL_VRRP_S, ulIfIndex) == 0);
static_assert(offsetof(MDL_VRRP_S, ulAddr) == 4);
static_assert(offsetof(MDL_VRRP_S, ulMaster) == 8);
static_assert(offsetof(MDL_VRRP_S, aucMac) == 12);
static_assert(offsetof(MDL_VRRP_S, aucReserved) == 18);

static_assert(sizeof(MDL_ROUTE_S) == 20);
static_assert(offsetof(MDL_ROUTE_S, ulVrfIndex) == 0);
static_assert(offsetof(MDL_ROUTE_S, ulAddr) == 4);
static_assert(offsetof(MDL_ROUTE_S, ulPrefixLen) == 8);
static_assert(offsetof(MDL_ROUTE_S, ulIfIndex) == 12);
static_assert(offsetof(MDL_ROUTE_S, ulNextHop) == 16);

static_assert(sizeof(MDL_HA_S) == 20);
static_assert(offsetof(MDL_HA_S, ulBoardType) == 0);
static_assert(offsetof(MDL_HA_S, ulMasterBoard) == 4);
static_assert(offsetof(MDL_HA_S, ulSlaveBoard) == 8);
static_assert(offsetof(MDL_HA_S, ulState) == 12);
static_assert(offsetof(MDL_HA_S, ulSlaveReady) == 16);

static_assert(sizeof(MDL_ACTUATOR_S) == 16);
static_assert(offsetof(MDL_ACTUATOR_S, pfShutDown) == 0);
static_assert(offsetof(MDL_ACTUATOR_S, pfRoute) == 8);

static_assert(sizeof(MDL_EVENT_S) == 48);
static_assert(offsetof(MDL_EVENT_S, ulTopic) == 0);
static_assert(offsetof(MDL_EVENT_S, ulEvent) == 4);
static_assert(offsetof(MDL_EVENT_S, ulA) == 8);
static_assert(offsetof(MDL_EVENT_S, ulB) == 12);
static_assert(offsetof(MDL_EVENT_S, ulC) == 16);
static_assert(offsetof(MDL_EVENT_S, ulKeySize) == 20);
static_assert(offsetof(MDL_EVENT_S, ulDataSize) == 24);
static_assert(offsetof(MDL_EVENT_S, pKey) == 32);
static_assert(offsetof(MDL_EVENT_S, pData) == 40);

static_assert(sizeof(MDL_LISTENER_S) == 72);
static_assert(offsetof(MDL_LISTENER_S, ulTopic) == 0);
static_assert(offsetof(MDL_LISTENER_S, ulSelector) == 4);
static_assert(offsetof(MDL_LISTENER_S, ulEvent) == 8);
static_assert(offsetof(MDL_LISTENER_S, ulPriority) == 12);
static_assert(offsetof(MDL_LISTENER_S, ulMid) == 16);
static_assert(offsetof(MDL_LISTENER_S, ulMask) == 20);
static_assert(offsetof(MDL_LISTENER_S, ulCalls) == 24);
static_assert(offsetof(MDL_LISTENER_S, ulFailures) == 32);
static_assert(offsetof(MDL_LISTENER_S, szName) == 40);

static_assert(sizeof(MDL_NOTICE_STATS_S) == 32);
static_assert(offsetof(MDL_NOTICE_STATS_S, ulQueued) == 0);
static_assert(offsetof(MDL_NOTICE_STATS_S, ulDelivered) == 8);
static_assert(offsetof(MDL_NOTICE_STATS_S, ulHighWater) == 16);
static_assert(offsetof(MDL_NOTICE_STATS_S, ulFailures) == 24);
