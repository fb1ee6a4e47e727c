#include "model/notices.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <tuple>

namespace uvel::host::model {

uint32_t Notices::AddBytes(const void *bytes, std::size_t size) {
    const auto offset = static_cast<uint32_t>(bytes_.size() * 8);
    bytes_.resize(bytes_.size() + size / 8 + 1);
    if (size != 0)
        std::memcpy(bytes_.data() + offset / 8, bytes, size);
    return offset;
}

void Notices::AddEvent(const MDL_EVENT_S &event) {
    Notice notice = {event.ulTopic, event.ulEvent, event.ulA, event.ulB, event.ulC};
    if (event.pKey != nullptr)
        notice.key = AddBytes(event.pKey, event.ulKeySize);
    if (event.pData != nullptr)
        notice.data = AddBytes(event.pData, event.ulDataSize);
    Add(notice);
}

void Notices::AddVlanToBatch(uint32_t vlan, uint32_t event_before, uint32_t event) {
    const uint32_t count = event_before == 0 ? 1 : 2;
    const auto is = [&](uint32_t back, uint32_t number) {
        return Count() >= back && At(Count() - back).open && At(Count() - back).event == number;
    };
    if (!is(1, event) || (count == 2 && !is(2, event_before))) {
        const uint32_t bitmap[L2IF_VLAN_BITMAP_WORDS] = {};
        const uint32_t offset = AddBytes(bitmap);
        if (count == 2)
            Add({.topic = MDL_TOPIC_L2, .event = event_before, .data = offset, .open = true});
        Add({.topic = MDL_TOPIC_L2, .event = event, .data = offset, .open = true});
    }
    static_cast<uint32_t *>(Bytes(notices_.back().data))[vlan / 32] |= 1U << vlan % 32;
}

void Notices::AddPortToList(uint32_t first_vlan, uint32_t last_vlan, uint32_t event, uint32_t port) {
    const uint16_t vlans[2] = {static_cast<uint16_t>(first_vlan), static_cast<uint16_t>(last_vlan)};
    if (Count() != 0 && notices_.back().open && notices_.back().event == event &&
        std::memcmp(Bytes(notices_.back().key), vlans, sizeof vlans) == 0) {
        /* The list is the last thing in the bytes and can grow. */
        const uint32_t offset = notices_.back().data;
        auto *list = static_cast<L2IF_PORT_LIST_S *>(Bytes(offset));
        const std::size_t end = offset / 4 + 2 + list->ulCount;
        if (end / 2 == bytes_.size())
            bytes_.push_back(0);
        list = static_cast<L2IF_PORT_LIST_S *>(Bytes(offset));
        reinterpret_cast<uint32_t *>(list + 1)[list->ulCount++] = port;
        return;
    }
    const uint32_t key = AddBytes(vlans);
    const uint32_t list[3] = {0, 1, port};
    Add({.topic = MDL_TOPIC_L2, .event = event, .key = key, .data = AddBytes(list), .open = true});
}

void Notices::Seal() {
    const auto by_interface = [](const auto &left, const auto &right) {
        return std::tuple(left.value.ulIfIndex, left.until) < std::tuple(right.value.ulIfIndex, right.until);
    };
    std::sort(interfaces_.begin(), interfaces_.end(), by_interface);
    std::sort(trunks_.begin(), trunks_.end(), by_interface);
}

namespace {

/* `going` is ordered by interface and `until`. */
template <typename T>
const T *FindByIf(const std::vector<Going<T>> &going, uint32_t if_index, uint32_t position) {
    const auto found = std::partition_point(going.begin(), going.end(), [&](const Going<T> &each) {
        return std::tuple(each.value.ulIfIndex, each.until) < std::tuple(if_index, position);
    });
    return found != going.end() && found->value.ulIfIndex == if_index ? &found->value : nullptr;
}

template <typename T, typename Is>
const T *FindIf(const std::vector<Going<T>> &going, uint32_t position, Is &&is) {
    const auto found = std::find_if(going.begin(), going.end(),
                                    [&](const Going<T> &each) { return each.until >= position && is(each.value); });
    return found != going.end() ? &found->value : nullptr;
}

} // namespace

const MDL_IF_S *Notices::GoingIf(uint32_t if_index, uint32_t position) const {
    return FindByIf(interfaces_, if_index, position);
}

const MDL_IF_S *Notices::GoingPort(uint32_t port_index, uint32_t position) const {
    return FindIf(interfaces_, position, [&](const MDL_IF_S &each) { return each.ulPortIndex == port_index; });
}

const MDL_TRUNK_S *Notices::GoingTrunk(uint32_t trunk_id, uint32_t position) const {
    return FindIf(trunks_, position, [&](const MDL_TRUNK_S &each) { return each.ulTrunkId == trunk_id; });
}

const MDL_TRUNK_S *Notices::GoingTrunkOfIf(uint32_t if_index, uint32_t position) const {
    return FindByIf(trunks_, if_index, position);
}

/* ---- which events there are */

uint32_t GroupOfL2Event(uint32_t event) {
    switch (event) {
    case 593:
        return 16;
    case 387:
        return 24;
    default:
        return (event & ~L2IF_EVT_NOW) / 16 + 1;
    }
}

bool IsKnownL2Group(uint32_t group) {
    static constexpr uint32_t GROUPS[] = {2, 4, 5, 6, 9, 11, 12, 13, 14, 16, 22, 23, 24, 36, 37, 54};
    return std::find(std::begin(GROUPS), std::end(GROUPS), group) != std::end(GROUPS);
}

bool IsKnownTrunkEvent(uint32_t trunk_class, uint32_t event) {
    switch (trunk_class) {
    case 1:
        return event == 2 || event == TRUNK_EVT_HAS_CFG;
    case 2:
        return event == 3;
    case 3:
        return event >= 6 && event <= 8;
    default:
        return false;
    }
}

bool IsKnownEvent(const MDL_EVENT_S &event) {
    switch (event.ulTopic) {
    case MDL_TOPIC_SLOT:
    case MDL_TOPIC_CARD:
    case MDL_TOPIC_IF:
    case MDL_TOPIC_VRF_SET:
    case MDL_TOPIC_IOCTL:
    case MDL_TOPIC_BD:
    case MDL_TOPIC_NOTIFY:
    case MDL_TOPIC_IP:
    case MDL_TOPIC_CFM_OVER:
        return true;
    case MDL_TOPIC_L2:
        return IsKnownL2Group(GroupOfL2Event(event.ulEvent));
    case MDL_TOPIC_TRUNK:
        return IsKnownTrunkEvent(event.ulC, event.ulEvent);
    case MDL_TOPIC_VRF:
        return event.ulEvent == VRF_EVT_CREATED || event.ulEvent == VRF_EVT_DELETED;
    default:
        return false;
    }
}

} // namespace uvel::host::model
