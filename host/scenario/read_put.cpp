/* What a scenario puts into the model, apart from interfaces. What a key names is changed, the rest stays as it is. */
#include "scenario/scenario.h"

#include "scenario/values.h"
#include <algorithm>
#include <cstring>
#include <uvelhost/ha.h>
#include <uvelhost/model_view.h>

namespace uvel::host::scenario {

namespace {

using yaml::Fields;
using yaml::Node;

/* Calls set(record) with the value read, where the key stands; the calls are kept for later. */
template <typename Record>
class Changes {
  public:
    explicit Changes(const Fields &fields) : fields_(fields) {}

    template <typename Field, typename Read>
    Changes &Take(std::string_view key, Field Record::*field, Read &&read) {
        if (const auto node = fields_.Optional(key))
            sets_.push_back([field, value = static_cast<Field>(read(*node))](Record &each) { each.*field = value; });
        return *this;
    }

    Changes &Add(std::function<void(Record &)> set) {
        sets_.push_back(std::move(set));
        return *this;
    }

    void Apply(Record &record) const {
        for (const auto &set : sets_)
            set(record);
    }

  private:
    Fields fields_;
    std::vector<std::function<void(Record &)>> sets_;
};

uint32_t ReadFlag(const Node &node) {
    return node.Flag();
}

auto UpTo(uint32_t max) {
    return [max](const Node &node) { return node.NumberOf<uint32_t>(0, max); };
}

auto NoneOrUpTo(uint32_t max) {
    return [max](const Node &node) { return ReadOrNone(node, max); };
}

void ReadDeviceKeys(const Node &put, const Fields &fields, Operations &operations) {
    Changes<MDL_DEVICE_S> changes(fields);
    changes.Take("self-slot", &MDL_DEVICE_S::ulSelfSlot, NoneOrUpTo(0xFFFE))
        .Take("self-cpu", &MDL_DEVICE_S::ulSelfCpu, UpTo(MDL_MAX_CPUS - 1))
        .Take("lan-switch", &MDL_DEVICE_S::ulOnlyLsw, ReadFlag)
        .Take("max-ports", &MDL_DEVICE_S::ulMaxSwitchPorts,
              [](const Node &node) { return node.Number(1, MDL_MAX_SWITCH_PORTS); });
    if (const auto node = fields.Optional("mac"))
        changes.Add([mac = ReadMac(*node)](MDL_DEVICE_S &each) {
            each.ulHasMac = 1;
            std::memcpy(each.aucMac, mac.data(), mac.size());
        });
    if (const auto node = fields.Optional("name"))
        changes.Add([name = node->Text(0, MDL_NAME_SIZE - 1)](MDL_DEVICE_S &each) {
            each.ulHasName = 1;
            std::memset(each.szName, 0, sizeof each.szName);
            std::memcpy(each.szName, name.data(), name.size());
        });
    operations.Add(put, "a device", [changes](MDL_BATCH *batch) {
        MDL_DEVICE_S device;
        MDL_GetDevice(&device);
        changes.Apply(device);
        return MDL_PutDevice(batch, &device);
    });
}

void ReadBoard(const Node &node, Operations &operations) {
    const Fields fields(node, {"slot", "chassis", "local-slot", "physical-slot", "role", "present", "registered",
                               "online", "cpus", "main-cpu", "first-cpu", "addresses"});
    const uint32_t slot = fields.Required("slot").NumberOf<uint32_t>(0, 0xFFFE);
    Changes<MDL_BOARD_S> changes(fields);
    changes.Take("chassis", &MDL_BOARD_S::ulChassis, ReadU32)
        .Take("local-slot", &MDL_BOARD_S::ulLocalSlot, ReadU32)
        .Take("physical-slot", &MDL_BOARD_S::ulPhySlot, ReadU32)
        .Take("role", &MDL_BOARD_S::ulRole,
              [](const Node &each) {
                  return each.OneOf<uint32_t>(
                      {{"main", MDL_BOARD_MAIN}, {"line", MDL_BOARD_LINE}, {"service", MDL_BOARD_SERVICE}});
              })
        .Take("present", &MDL_BOARD_S::ulPresent, ReadFlag)
        .Take("registered", &MDL_BOARD_S::ulRegistered, ReadFlag)
        .Take("online", &MDL_BOARD_S::ulOnline, ReadFlag)
        .Take("cpus", &MDL_BOARD_S::ulCpuCount, UpTo(MDL_MAX_CPUS))
        .Take("main-cpu", &MDL_BOARD_S::ulMainCpu, UpTo(MDL_MAX_CPUS - 1))
        .Take("first-cpu", &MDL_BOARD_S::ulFirstCpu, ReadU32);
    if (const auto list = fields.Optional("addresses")) {
        const std::vector<Node> items = list->Items();
        if (items.size() > MDL_MAX_CPUS)
            list->Complain("expected at most one address for each processor");
        for (std::size_t i = 0; i < items.size(); ++i)
            changes.Add([i, addr = ReadIpv4(items[i])](MDL_BOARD_S &each) { each.aulAddr[i] = addr; });
    }
    operations.Add(node, "a board whose main-cpu is below its cpus", [slot, changes](MDL_BATCH *batch) {
        MDL_BOARD_S board = {};
        if (MDL_GetBoard(slot, &board) != UVELHOST_OK) {
            board.ulSlot = board.ulLocalSlot = board.ulPhySlot = slot;
            board.ulRole = MDL_BOARD_LINE;
            board.ulPresent = board.ulRegistered = board.ulOnline = board.ulCpuCount = 1;
            board.ulFirstCpu = slot * MDL_MAX_CPUS;
        }
        changes.Apply(board);
        return MDL_PutBoard(batch, &board);
    });
}

void ReadVlan(const Node &node, Operations &operations) {
    const Fields fields(node, {"id", "super", "attribute", "bridge-domain"});
    const auto [first, last] = ReadVlans(fields.Required("id"));
    Changes<MDL_VLAN_S> changes(fields);
    changes.Take("super", &MDL_VLAN_S::ulSuperVlan, NoneOrUpTo(4095))
        .Take("attribute", &MDL_VLAN_S::ulAttribute, ReadU32)
        .Take("bridge-domain", &MDL_VLAN_S::ulBd, NoneOrUpTo(0xFFFF));
    for (uint32_t vlan = first; vlan <= last; ++vlan)
        operations.Add(node, "a VLAN", [vlan, changes](MDL_BATCH *batch) {
            MDL_VLAN_S record = {vlan, UVELHOST_NONE, 0, UVELHOST_NONE};
            MDL_GetVlan(vlan, &record);
            changes.Apply(record);
            return MDL_PutVlan(batch, &record);
        });
}

void ReadMember(const Node &node, uint32_t trunk_id, Operations &operations) {
    MDL_MEMBER_S member = {0, trunk_id, 1};
    if (node.IsMap()) {
        const Fields fields(node, {"interface", "active"});
        member.ulIfIndex = ReadIfIndex(fields.Required("interface"));
        if (const auto active = fields.Optional("active"))
            member.ulActive = active->Flag();
    } else {
        member.ulIfIndex = ReadIfIndex(node);
    }
    operations.Add(node, "a member of a trunk", [member](MDL_BATCH *batch) { return MDL_PutMember(batch, &member); });
}

void ReadTrunk(const Node &node, Operations &operations) {
    const Fields fields(node, {"id", "interface", "index", "members"});
    const uint32_t id = fields.Required("id").NumberOf<uint32_t>(0, UINT32_MAX - 1);
    Changes<MDL_TRUNK_S> changes(fields);
    changes.Take("interface", &MDL_TRUNK_S::ulIfIndex, ReadIfIndex)
        .Take("index", &MDL_TRUNK_S::ulTrunkIndex, UpTo(MDL_AUTO - 1));
    operations.Add(node, "a trunk with an interface and an index that are no other trunk's",
                   [id, changes](MDL_BATCH *batch) {
                       MDL_TRUNK_S trunk = {MDL_AUTO, id, 0}, each;
                       for (uint32_t i = 0; MDL_NextTrunk(i, &each) == UVELHOST_OK; i = each.ulTrunkIndex + 1)
                           if (each.ulTrunkId == id)
                               trunk = each;
                       changes.Apply(trunk);
                       return MDL_PutTrunk(batch, &trunk);
                   });
    if (const auto members = fields.Optional("members"))
        for (const Node &member : members->Items())
            ReadMember(member, id, operations);
}

void ReadVrf(const Node &node, Operations &operations) {
    const Fields fields(node, {"index", "name", "ipv4", "ipv6", "system"});
    const uint32_t index = fields.Required("index").NumberOf<uint32_t>(0, UINT32_MAX - 1);
    Changes<MDL_VRF_S> changes(fields);
    changes.Take("ipv4", &MDL_VRF_S::ulIpv4, ReadFlag)
        .Take("ipv6", &MDL_VRF_S::ulIpv6, ReadFlag)
        .Take("system", &MDL_VRF_S::ulVsys, ReadFlag);
    if (const auto name = fields.Optional("name"))
        changes.Add([text = name->Text(1, VRF_NAME_SIZE - 1)](MDL_VRF_S &each) {
            std::memset(each.szName, 0, sizeof each.szName);
            std::memcpy(each.szName, text.data(), text.size());
        });
    operations.Add(node, "a VRF with a name, its index below 65536 when it backs a virtual system",
                   [index, changes](MDL_BATCH *batch) {
                       MDL_VRF_S vrf = {index, 1, 1, 0, {}};
                       MDL_GetVrf(index, &vrf);
                       changes.Apply(vrf);
                       return MDL_PutVrf(batch, &vrf);
                   });
}

void ReadVrrp(const Node &node, Operations &operations) {
    const Fields fields(node, {"interface", "address", "mac", "master"});
    MDL_VRRP_S vrrp = {ReadIfIndex(fields.Required("interface")), ReadIpv4(fields.Required("address")), 0, {}, {}};
    const auto mac = ReadMac(fields.Required("mac"));
    std::memcpy(vrrp.aucMac, mac.data(), mac.size());
    if (const auto master = fields.Optional("master"))
        vrrp.ulMaster = master->Flag();
    operations.Add(node, "a virtual router", [vrrp](MDL_BATCH *batch) { return MDL_PutVrrp(batch, &vrrp); });
}

void ReadNewRoute(const Node &node, Operations &operations) {
    operations.Add(node, "a route",
                   [route = ReadRoute(node)](MDL_BATCH *batch) { return MDL_PutRoute(batch, &route); });
}

void ReadRole(const Node &node, Operations &operations) {
    const Fields fields(node, {"role", "master", "slave", "state", "ready"});
    MDL_HA_S role = {HA_BOARD_MASTER, UVELHOST_NONE, UVELHOST_NONE, HA_STATE_ALONE, 0};
    role.ulBoardType =
        fields.Required("role").OneOf<uint32_t>({{"master", HA_BOARD_MASTER}, {"slave", HA_BOARD_SLAVE}});
    if (const auto master = fields.Optional("master"))
        role.ulMasterBoard = ReadOrNone(*master, 0xFFFE);
    if (const auto slave = fields.Optional("slave"))
        role.ulSlaveBoard = ReadOrNone(*slave, 0xFFFE);
    if (const auto state = fields.Optional("state"))
        role.ulState = state->OneOf<uint32_t>({{"alone", HA_STATE_ALONE},
                                               {"wait", HA_STATE_WAIT},
                                               {"batch", HA_STATE_BATCH},
                                               {"realtime", HA_STATE_REALTIME}});
    if (const auto ready = fields.Optional("ready"))
        role.ulSlaveReady = ready->Flag();
    operations.AddRole(role);
}

} // namespace

void ReadPut(const Node &put, Operations &operations) {
    const Fields fields(put, {"name", "mac", "self-slot", "self-cpu", "lan-switch", "max-ports", "boards", "vrfs",
                              "vlans", "interfaces", "trunks", "vrrp", "routes", "availability"});
    const auto each = [&](std::string_view key, void (*read)(const Node &, Operations &)) {
        if (const auto list = fields.Optional(key))
            for (const Node &node : list->Items())
                read(node, operations);
    };
    ReadDeviceKeys(put, fields, operations);
    each("boards", ReadBoard);
    each("vrfs", ReadVrf);
    each("vlans", ReadVlan);
    each("interfaces", ReadInterface);
    each("trunks", ReadTrunk);
    each("vrrp", ReadVrrp);
    each("routes", ReadNewRoute);
    if (const auto role = fields.Optional("availability"))
        ReadRole(*role, operations);
}

} // namespace uvel::host::scenario
