/* Notifications that a scenario raises. */
#include "scenario/scenario.h"

#include "scenario/values.h"
#include <arpa/inet.h>
#include <cstring>
#include <optional>

namespace uvel::host::scenario {

namespace {

using yaml::Fields;
using yaml::Node;

/* A notification with what its pointers lead to. */
struct Event {
    uint32_t topic = 0, event = 0, a = 0, b = 0, c = 0;
    std::optional<std::vector<uint8_t>> key, data;
};

template <typename T>
void Append(std::optional<std::vector<uint8_t>> &bytes, const T &value) {
    if (!bytes.has_value())
        bytes.emplace();
    const auto *begin = reinterpret_cast<const uint8_t *>(&value);
    bytes->insert(bytes->end(), begin, begin + sizeof value);
}

uint32_t Number(const Fields &fields, std::string_view key) {
    return ReadU32(fields.Required(key));
}

uint16_t Vlan(const Fields &fields, std::string_view key) {
    return fields.Required(key).NumberOf<uint16_t>(0, 4095);
}

Event ReadSlot(const Node &node) {
    const Fields fields(node, {"kind", "a", "b"});
    return {MDL_TOPIC_SLOT, Number(fields, "kind"), Number(fields, "a"), Number(fields, "b"), 0, {}, {}};
}

Event ReadCard(const Node &node) {
    const Fields fields(node, {"kind", "a", "b", "c"});
    return {
        MDL_TOPIC_CARD, Number(fields, "kind"), Number(fields, "a"), Number(fields, "b"), Number(fields, "c"), {}, {}};
}

Event ReadInterfaceEvent(const Node &node) {
    const Fields fields(node, {"event", "interface"});
    return {MDL_TOPIC_IF, Number(fields, "event"), Number(fields, "interface"), 0, 0, {}, {}};
}

Event ReadVrfSet(const Node &node) {
    const Fields fields(node, {"event", "value"});
    return {MDL_TOPIC_VRF_SET, Number(fields, "event"), Number(fields, "value"), 0, 0, {}, {}};
}

Event ReadIoctl(const Node &node) {
    const Fields fields(node, {"command", "state", "interface", "flags"});
    Event event = {
        MDL_TOPIC_IOCTL, Number(fields, "command"), Number(fields, "state"), Number(fields, "interface"), 0, {}, {}};
    if (const auto flags = fields.Optional("flags"))
        Append(event.data, ReadU32(*flags));
    return event;
}

Event ReadBd(const Node &node) {
    const Fields fields(node, {"sub-type", "a", "b"});
    return {MDL_TOPIC_BD,
            Number(fields, "sub-type"),
            Number(fields, "a"),
            fields.Required("b").NumberOf<uint32_t>(0, 65535),
            0,
            {},
            {}};
}

Event ReadNotify(const Node &node) {
    const Fields fields(node, {"interface", "command", "param", "extra"});
    return {MDL_TOPIC_NOTIFY,
            Number(fields, "command"),
            Number(fields, "interface"),
            Number(fields, "param"),
            Number(fields, "extra"),
            {},
            {}};
}

Event ReadAddressEvent(const Node &node) {
    const Fields fields(node, {"event", "interface", "address"});
    return {MDL_TOPIC_IP,
            Number(fields, "event"),
            Number(fields, "interface"),
            htonl(ReadIpv4(fields.Required("address"))),
            0,
            {},
            {}};
}

Event ReadRecovered(const Node &node) {
    if (!node.IsNothing() && !node.Flag())
        node.Refuse("true");
    return {MDL_TOPIC_CFM_OVER, 0, 0, 0, 0, {}, {}};
}

Event ReadTrunkEvent(const Node &node) {
    const Fields fields(node, {"class", "event", "trunk", "value", "data"});
    Event event = {
        MDL_TOPIC_TRUNK, Number(fields, "event"), Number(fields, "trunk"), 0, Number(fields, "class"), {}, {}};
    if (const auto value = fields.Optional("value"))
        event.b = ReadU32(*value);
    if (const auto data = fields.Optional("data"))
        event.data = ReadBytes(*data);
    return event;
}

Event ReadSystem(const Node &node) {
    const Fields fields(node, {"kind", "id"});
    return {MDL_TOPIC_VRF,
            fields.Required("kind").OneOf<uint32_t>({{"created", VRF_EVT_CREATED}, {"deleted", VRF_EVT_DELETED}}),
            fields.Required("id").NumberOf<uint32_t>(0, 65535),
            0,
            0,
            {},
            {}};
}

/* ---- layer 2: what stands under the keys becomes the event's key and data, in the order of this table */

void AppendPorts(std::optional<std::vector<uint8_t>> &bytes, const Node &list) {
    const std::vector<Node> items = list.Items();
    Append(bytes, L2IF_PORT_LIST_S{0, static_cast<uint32_t>(items.size())});
    for (const Node &item : items)
        Append(bytes, ReadU32(item));
}

void AppendBitmap(std::optional<std::vector<uint8_t>> &bytes, const Node &list) {
    std::array<uint32_t, L2IF_VLAN_BITMAP_WORDS> bitmap = {};
    for (const Node &item : list.Items()) {
        const auto [first, last] = ReadVlans(item);
        for (uint32_t vlan = first; vlan <= last; ++vlan)
            bitmap[vlan / 32] |= 1U << vlan % 32;
    }
    Append(bytes, bitmap);
}

void AppendVlanList(Event &event, const Node &list) {
    const std::vector<Node> items = list.Items();
    event.key.emplace();
    for (const Node &item : items)
        Append(event.key, item.NumberOf<uint16_t>(0, 4095));
    Append(event.data, static_cast<uint32_t>(items.size()));
}

void AppendQinq(std::optional<std::vector<uint8_t>> &bytes, const Node &list) {
    L2IF_QINQ_DATA_S qinq = {};
    const std::vector<Node> items = list.Items();
    if (items.size() != std::size(qinq.ausWord))
        list.Complain("expected 10 words, found " + std::to_string(items.size()));
    for (std::size_t i = 0; i < items.size(); ++i)
        qinq.ausWord[i] = items[i].NumberOf<uint16_t>(0, 65535);
    Append(bytes, qinq);
}

Event ReadL2(const Node &node) {
    const Fields fields(node, {"event", "now", "vlan", "last", "super", "sub", "attribute", "ports", "interface",
                               "port", "value", "words", "vlans", "vlan-list", "context", "key", "data"});
    Event event = {MDL_TOPIC_L2, Number(fields, "event"), 0, 0, 0, {}, {}};
    if (const auto now = fields.Optional("now"); now && now->Flag())
        event.event |= L2IF_EVT_NOW;
    for (const char *vlan : {"super", "vlan"})
        if (fields.Has(vlan))
            Append(event.key, Vlan(fields, vlan));
    if (fields.Has("vlan"))
        Append(event.key, Vlan(fields, fields.Has("last") ? "last" : "vlan"));
    for (const char *index : {"interface", "port"})
        if (fields.Has(index))
            Append(event.key, Number(fields, index));
    if (fields.Has("sub"))
        Append(event.data, Vlan(fields, "sub"));
    if (fields.Has("attribute"))
        Append(event.data, Number(fields, "attribute"));
    if (const auto value = fields.Optional("value"))
        Append(event.data, value->NumberOf<uint16_t>(0, 65535));
    if (const auto ports = fields.Optional("ports"))
        AppendPorts(event.data, *ports);
    if (const auto words = fields.Optional("words"))
        AppendQinq(event.data, *words);
    if (const auto vlans = fields.Optional("vlans"))
        AppendBitmap(event.data, *vlans);
    if (const auto list = fields.Optional("vlan-list"))
        AppendVlanList(event, *list);
    if (const auto context = fields.Optional("context"))
        Append(event.data, static_cast<uint64_t>(context->Number(0, INT64_MAX)));
    if (const auto key = fields.Optional("key"))
        event.key = ReadBytes(*key);
    if (const auto data = fields.Optional("data"))
        event.data = ReadBytes(*data);
    return event;
}

using Reader = Event (*)(const Node &);

uint32_t CountIn(const std::vector<uint8_t> &bytes) {
    uint32_t count;
    std::memcpy(&count, bytes.data(), sizeof count);
    return count;
}

/* What a callback reads without asking how much there is: a scenario must not let it read beyond. */
bool IsWhole(const Event &event) {
    const std::size_t key = event.key ? event.key->size() : 0, data = event.data ? event.data->size() : 0;
    if (event.topic != MDL_TOPIC_L2)
        return true;
    switch (event.event & ~L2IF_EVT_NOW) {
    case 17:
        return data >= 4 && key / 2 >= CountIn(*event.data);
    case 49:
    case 65:
        return key >= 2 && data >= 2;
    case 81:
        return key >= 2 && data >= 4;
    case 129:
    case 130:
        return key >= 2;
    case 161:
    case 177:
    case 179:
        return key >= 4 && data >= sizeof(L2IF_PORT_LIST_S);
    case 193:
    case 209:
    case 210:
        return key >= 4;
    case 241:
    case 593:
        return key >= 4 && data >= 2;
    case 337:
    case 353:
        return key >= 4 && data >= sizeof(L2IF_QINQ_DATA_S);
    case 368:
    case 387:
        return key >= 2;
    case 577:
    case 578:
    case 579:
    case 580:
    case 582:
        return data >= L2IF_VLAN_BITMAP_WORDS * 4;
    default:
        return true;
    }
}

void AddEvent(const Node &place, const Event &event, Operations &operations) {
    if (!IsWhole(event))
        place.Complain("expected the keys that this layer-2 event needs (vlan, super and sub, attribute, ports, "
                       "interface, port and value, words, vlans, vlan-list)");
    operations.Add(place, "an event of layer 2 or of a trunk that the host knows", [event](MDL_BATCH *batch) {
        const auto data = [](const std::optional<std::vector<uint8_t>> &bytes) -> const void * {
            static constexpr uint8_t NOTHING = 0;
            return !bytes ? nullptr : bytes->empty() ? &NOTHING : bytes->data();
        };
        const auto size = [](const auto &bytes) { return static_cast<uint32_t>(bytes ? bytes->size() : 0); };
        const MDL_EVENT_S raised = {event.topic,     event.event,      event.a,         event.b,         event.c,
                                    size(event.key), size(event.data), data(event.key), data(event.data)};
        return MDL_Raise(batch, &raised);
    });
}

} // namespace

void ReadRaise(const Node &raise, Operations &operations) {
    static const std::vector<std::pair<std::string_view, Reader>> READERS = {{"slot", ReadSlot},
                                                                             {"card", ReadCard},
                                                                             {"interface", ReadInterfaceEvent},
                                                                             {"vrf-set", ReadVrfSet},
                                                                             {"ioctl", ReadIoctl},
                                                                             {"bridge-domain", ReadBd},
                                                                             {"notify", ReadNotify},
                                                                             {"address", ReadAddressEvent},
                                                                             {"recovered", ReadRecovered},
                                                                             {"layer2", ReadL2},
                                                                             {"trunk", ReadTrunkEvent},
                                                                             {"system", ReadSystem}};
    for (const Node &item : raise.Items())
        for (const auto &[key, value] : item.Entries())
            AddEvent(key, key.OneOf(READERS)(value), operations);
}

} // namespace uvel::host::scenario
