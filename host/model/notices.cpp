#include "model/notices.h"

#include "model/snapshot.h"
#include <algorithm>
#include <cstring>
#include <iterator>

namespace uvel::host::model {

void GoingIndex::Sort() {
    std::sort(entries_.begin(), entries_.end(), [](const Entry &left, const Entry &right) {
        return Pair(left.number, left.until) < Pair(right.number, right.until);
    });
}

uint32_t GoingIndex::Find(uint32_t number, uint32_t position) const {
    const auto found = std::partition_point(entries_.begin(), entries_.end(), [&](const Entry &each) {
        return Pair(each.number, each.until) < Pair(number, position);
    });
    return found != entries_.end() && found->number == number ? found->place : NO_PLACE;
}

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

void Notices::AddGoing(const MDL_IF_S &interface) {
    const auto place = static_cast<uint32_t>(interfaces_.size());
    interfaces_.push_back(interface);
    by_interface_.Add(interface.ulIfIndex, Last(), place);
    if (interface.ulPortIndex != UVELHOST_NONE)
        by_port_.Add(interface.ulPortIndex, Last(), place);
}

void Notices::AddGoing(const MDL_TRUNK_S &trunk) {
    const auto place = static_cast<uint32_t>(trunks_.size());
    trunks_.push_back(trunk);
    trunk_by_id_.Add(trunk.ulTrunkId, Last(), place);
    trunk_by_interface_.Add(trunk.ulIfIndex, Last(), place);
}

void Notices::Seal() {
    for (GoingIndex *index : {&by_interface_, &by_port_, &trunk_by_id_, &trunk_by_interface_})
        index->Sort();
}

namespace {

template <typename T>
const T *OrNull(const std::vector<T> &going, uint32_t place) {
    return place == GoingIndex::NO_PLACE ? nullptr : &going[place];
}

} // namespace

const MDL_IF_S *Notices::GoingIf(uint32_t if_index, uint32_t position) const {
    return OrNull(interfaces_, by_interface_.Find(if_index, position));
}

const MDL_IF_S *Notices::GoingPort(uint32_t port_index, uint32_t position) const {
    return OrNull(interfaces_, by_port_.Find(port_index, position));
}

const MDL_TRUNK_S *Notices::GoingTrunk(uint32_t trunk_id, uint32_t position) const {
    return OrNull(trunks_, trunk_by_id_.Find(trunk_id, position));
}

const MDL_TRUNK_S *Notices::GoingTrunkOfIf(uint32_t if_index, uint32_t position) const {
    return OrNull(trunks_, trunk_by_interface_.Find(if_index, position));
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
