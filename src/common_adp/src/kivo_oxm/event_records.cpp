/* Layouts of the event records: modules were compiled with them. */
#include <cstddef>
#include <uvelcommon_base/kivo_event_records.h>

static_assert(sizeof(KIVO_EVT_IF_S) == 28);
static_assert(offsetof(KIVO_EVT_IF_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_IF_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_IF_S, ulReserved1) == 8);
static_assert(offsetof(KIVO_EVT_IF_S, ulParam) == 12);
static_assert(offsetof(KIVO_EVT_IF_S, ulReserved2) == 16);
static_assert(offsetof(KIVO_EVT_IF_S, ulReserved3) == 20);
static_assert(offsetof(KIVO_EVT_IF_S, ulIfIndex) == 24);

static_assert(sizeof(KIVO_EVT_SLOT_S) == 16);
static_assert(offsetof(KIVO_EVT_SLOT_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_SLOT_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_SLOT_S, aulHost) == 8);

static_assert(sizeof(KIVO_EVT_CARD_S) == 20);
static_assert(offsetof(KIVO_EVT_CARD_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_CARD_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_CARD_S, aulHost) == 8);

static_assert(sizeof(KIVO_EVT_IF_STATE_S) == 20);
static_assert(offsetof(KIVO_EVT_IF_STATE_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_IF_STATE_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_IF_STATE_S, ulIfIndex) == 8);
static_assert(offsetof(KIVO_EVT_IF_STATE_S, ulState) == 12);
static_assert(offsetof(KIVO_EVT_IF_STATE_S, ulFlags) == 16);

static_assert(sizeof(KIVO_EVT_IP_S) == 16);
static_assert(offsetof(KIVO_EVT_IP_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_IP_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_IP_S, ulIfIndex) == 8);
static_assert(offsetof(KIVO_EVT_IP_S, ulAddr) == 12);

static_assert(sizeof(KIVO_EVT_VRF_SET_S) == 8);
static_assert(offsetof(KIVO_EVT_VRF_SET_S, ulUserId) == 0);
static_assert(offsetof(KIVO_EVT_VRF_SET_S, ulHost) == 4);

static_assert(sizeof(KIVO_EVT_BD_S) == 8);
static_assert(offsetof(KIVO_EVT_BD_S, ulHost1) == 0);
static_assert(offsetof(KIVO_EVT_BD_S, usHost2) == 4);
static_assert(offsetof(KIVO_EVT_BD_S, usReserved) == 6);

static_assert(sizeof(KIVO_EVT_PORT_S) == 12);
static_assert(offsetof(KIVO_EVT_PORT_S, ulUserId) == 0);
static_assert(offsetof(KIVO_EVT_PORT_S, ulPortIndex) == 4);
static_assert(offsetof(KIVO_EVT_PORT_S, usValue) == 8);
static_assert(offsetof(KIVO_EVT_PORT_S, usReserved) == 10);

static_assert(sizeof(KIVO_EVT_PORT_SWITCH_S) == 12);
static_assert(offsetof(KIVO_EVT_PORT_SWITCH_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_PORT_SWITCH_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_PORT_SWITCH_S, ulIfIndex) == 8);

static_assert(sizeof(KIVO_EVT_QINQ_S) == 20);
static_assert(offsetof(KIVO_EVT_QINQ_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_QINQ_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_QINQ_S, ulIfIndex) == 8);
static_assert(offsetof(KIVO_EVT_QINQ_S, usWord6) == 12);
static_assert(offsetof(KIVO_EVT_QINQ_S, usWord8) == 14);
static_assert(offsetof(KIVO_EVT_QINQ_S, usWord9) == 16);
static_assert(offsetof(KIVO_EVT_QINQ_S, usReserved) == 18);

static_assert(sizeof(KIVO_EVT_HYBRID_S) == 16);
static_assert(offsetof(KIVO_EVT_HYBRID_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_HYBRID_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_HYBRID_S, ulPort) == 8);
static_assert(offsetof(KIVO_EVT_HYBRID_S, usFirstVlan) == 12);
static_assert(offsetof(KIVO_EVT_HYBRID_S, usLastVlan) == 14);

static_assert(sizeof(KIVO_EVT_VLANS_S) == 520);
static_assert(offsetof(KIVO_EVT_VLANS_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_VLANS_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_VLANS_S, aulBitmap) == 8);

static_assert(sizeof(KIVO_EVT_VLAN_PORTS_S) == 12, "the entries begin at offset 12");
static_assert(offsetof(KIVO_EVT_VLAN_PORTS_S, ulUserId) == 0);
static_assert(offsetof(KIVO_EVT_VLAN_PORTS_S, usFirstVlan) == 4);
static_assert(offsetof(KIVO_EVT_VLAN_PORTS_S, usLastVlan) == 6);
static_assert(offsetof(KIVO_EVT_VLAN_PORTS_S, ulCount) == 8);

static_assert(sizeof(KIVO_EVT_SUB_VLAN_S) == 12);
static_assert(offsetof(KIVO_EVT_SUB_VLAN_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_SUB_VLAN_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_SUB_VLAN_S, usSuperVlan) == 8);
static_assert(offsetof(KIVO_EVT_SUB_VLAN_S, usSubVlan) == 10);

static_assert(sizeof(KIVO_EVT_VLAN_ATTR_S) == 16);
static_assert(offsetof(KIVO_EVT_VLAN_ATTR_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_VLAN_ATTR_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_VLAN_ATTR_S, ulAttr) == 8);
static_assert(offsetof(KIVO_EVT_VLAN_ATTR_S, usVlan) == 12);
static_assert(offsetof(KIVO_EVT_VLAN_ATTR_S, usReserved) == 14);

static_assert(sizeof(KIVO_EVT_VLAN_STATE_S) == 12);
static_assert(offsetof(KIVO_EVT_VLAN_STATE_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_VLAN_STATE_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_VLAN_STATE_S, usVlan) == 8);
static_assert(offsetof(KIVO_EVT_VLAN_STATE_S, usReserved) == 10);

static_assert(sizeof(KIVO_EVT_BUILDRUN_S) == 24);
static_assert(offsetof(KIVO_EVT_BUILDRUN_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_BUILDRUN_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_BUILDRUN_S, ullContext) == 8);
static_assert(offsetof(KIVO_EVT_BUILDRUN_S, usVlan) == 16);
static_assert(offsetof(KIVO_EVT_BUILDRUN_S, ausReserved) == 18);

static_assert(sizeof(KIVO_EVT_TRUNK_MEMBER_S) == 16);
static_assert(offsetof(KIVO_EVT_TRUNK_MEMBER_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_TRUNK_MEMBER_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_TRUNK_MEMBER_S, ulMember) == 8);
static_assert(offsetof(KIVO_EVT_TRUNK_MEMBER_S, ulTrunkIndex) == 12);

static_assert(sizeof(KIVO_EVT_TRUNK_DEL_S) == 16);
static_assert(offsetof(KIVO_EVT_TRUNK_DEL_S, ulLen) == 0);
static_assert(offsetof(KIVO_EVT_TRUNK_DEL_S, ulUserId) == 4);
static_assert(offsetof(KIVO_EVT_TRUNK_DEL_S, aulHost) == 8);

static_assert(sizeof(KIVO_EVT_VSYS_S) == 36);
static_assert(offsetof(KIVO_EVT_VSYS_S, ulVrfIndex) == 0);
static_assert(offsetof(KIVO_EVT_VSYS_S, szVrfName) == 4);
