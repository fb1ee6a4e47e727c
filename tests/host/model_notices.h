/* Everything that is notified, as lines of text in the order of delivery. */
#ifndef UVEL_TESTS_HOST_MODEL_NOTICES_H
#define UVEL_TESTS_HOST_MODEL_NOTICES_H

#include "model_fixtures.h"
#include <mutex>
#include <string>
#include <uvelhost/events.h>
#include <vector>

namespace notices {

inline std::mutex lock;
inline std::vector<std::string> lines;

inline uint32_t Line(std::string line) {
    std::lock_guard guard(lock);
    lines.push_back(std::move(line));
    return 0;
}

template <typename... Numbers>
std::string Join(const char *name, Numbers... numbers) {
    std::string text = name;
    ((text += " " + std::to_string(numbers)), ...);
    return text;
}

inline uint32_t OnSlot(uint32_t kind, uint32_t a, uint32_t b) {
    return Line(Join("slot", kind, a, b));
}
inline uint32_t OnCard(uint32_t kind, uint32_t a, uint32_t b, uint32_t c) {
    return Line(Join("card", kind, a, b, c));
}
inline uint32_t OnIf(uint32_t event, uint32_t if_index) {
    return Line(Join("if", event, if_index));
}
inline uint32_t OnVrfSet(uint32_t event, uint32_t value) {
    return Line(Join("vrf-set", event, value));
}
inline uint32_t OnIoctl(uint32_t command, uint32_t state, uint32_t if_index, const uint32_t *flags) {
    return Line(Join("ioctl", command, state, if_index) + (flags == nullptr ? " null" : " " + std::to_string(*flags)));
}
inline uint32_t OnBd(uint32_t sub_type, uint32_t a, uint16_t b) {
    return Line(Join("bd", sub_type, a, b));
}
inline uint32_t OnNotify(uint32_t if_index, uint32_t command, uint32_t param, uint32_t extra) {
    return Line(Join("notify", if_index, command, param, extra));
}
inline uint32_t OnIp(const uint32_t *if_index, uint32_t event, const uint32_t *addr_net) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(addr_net);
    return Line(Join("ip", *if_index, event, bytes[0], bytes[1], bytes[2], bytes[3]));
}

/* The single bits of a bitmap, or a list of ports, or a number, by what the event carries. */
inline std::string Data(uint32_t event, const void *data) {
    if (data == nullptr)
        return " null";
    std::string text;
    const auto *words = static_cast<const uint32_t *>(data);
    const uint32_t number = event & ~L2IF_EVT_NOW;
    if (number >= 577 && number <= 582) {
        for (uint32_t vlan = 0; vlan < 4096; ++vlan)
            if ((words[vlan / 32] >> vlan % 32 & 1) != 0)
                text += " v" + std::to_string(vlan);
    } else if (number == 161 || number == 177 || number == 179) {
        for (uint32_t i = 0; i < words[1]; ++i)
            text += " p" + std::to_string(words[2 + i]);
    } else if (number == 81) {
        text += " " + std::to_string(words[0]);
    } else {
        text += " " + std::to_string(*static_cast<const uint16_t *>(data));
    }
    return text;
}

inline std::string Key(uint32_t event, const void *key) {
    if (key == nullptr)
        return " null";
    const uint32_t number = event & ~L2IF_EVT_NOW;
    const auto *halves = static_cast<const uint16_t *>(key);
    if (number == 179 || number == 161 || number == 177)
        return Join("", halves[0], halves[1]);
    if ((number >= 193 && number <= 353) || number == 593)
        return Join("", *static_cast<const uint32_t *>(key));
    return Join("", halves[0]);
}

inline uint32_t OnL2(const void *key, uint32_t event, void *data) {
    const std::string number = std::to_string(event & ~L2IF_EVT_NOW) + ((event & L2IF_EVT_NOW) != 0 ? "+" : "");
    return Line("l2 " + number + Key(event, key) + Data(event, data));
}
inline uint32_t OnTrunk(uint32_t trunk, uint32_t event, uint32_t value) {
    return Line(Join("trunk", trunk, event, value));
}
inline uint32_t OnTrunkConfiguration(uint32_t trunk, uint32_t event, const void *data) {
    const auto *bytes = static_cast<const uint8_t *>(data);
    return Line(Join("trunk-cfg", trunk, event, bytes[0], bytes[1], bytes[2]));
}
inline uint32_t OnRecovered() {
    return Line("recovered");
}
inline uint32_t OnVrf(uint32_t kind, uint16_t *vsys) {
    return Line(Join("vsys", kind, *vsys));
}

/* Registers for everything, once in a process. */
inline void Listen() {
    static const bool listening = [] {
        const auto as = [](auto callback) { return reinterpret_cast<UVELHOST_CALLBACK>(callback); };
        uint32_t bad = IF_INTF_RegEvtCb(IF_EVT_SLOT, IF_EVT_ALL_SUB, as(OnSlot), 1, IF_EVT_MASK_ALL);
        bad |= IF_INTF_RegEvtCb(IF_EVT_CARD, IF_EVT_ALL_SUB, as(OnCard), 1, IF_EVT_MASK_ALL);
        bad |= IF_INTF_RegEvtCb(IF_EVT_IF, IF_EVT_ALL_SUB, as(OnIf), 1, IF_EVT_MASK_ALL);
        bad |= IF_INTF_RegEvtCb(IF_EVT_VRF_SET, IF_EVT_ALL_SUB, as(OnVrfSet), 1, IF_EVT_MASK_ALL);
        bad |= IF_INTF_RegEvtCb(IF_EVT_IOCTL, IF_EVT_ALL_SUB, as(OnIoctl), 1, IF_EVT_MASK_ALL);
        bad |= IF_INTF_RegEvtCb(IF_EVT_BD, IF_EVT_ALL_SUB, as(OnBd), 1, IF_EVT_MASK_ALL);
        bad |= IF_RegNotifyFunc(1, OnNotify);
        bad |= IP_EventNotifyFuncRegister("test", IP_EVT_CLASS_ADDR, OnIp);
        for (uint32_t group : {2U, 4U, 5U, 6U, 9U, 11U, 12U, 13U, 14U, 16U, 22U, 23U, 24U, 36U, 37U, 54U})
            bad |= L2IF_SH_EvtCbFuncReg("test", group, 1, OnL2);
        for (auto [trunk_class, event] : {std::pair{1u, 2u}, {2u, 3u}, {3u, 6u}, {3u, 7u}, {3u, 8u}})
            bad |= Trunk_EventNotifyFuncRegister("test", trunk_class, event, 1, as(OnTrunk));
        bad |= Trunk_EventNotifyFuncRegister("test", 1, TRUNK_EVT_HAS_CFG, 1, as(OnTrunkConfiguration));
        bad |= CFM_OverNotifyModuleRegister(1, 0, 0, 0, OnRecovered);
        for (uint32_t kind : {VRF_EVT_CREATED, VRF_EVT_DELETED})
            bad |= VPNBASE_VRFMGM_RegisterCb(1, kind, OnVrf);
        return bad == 0;
    }();
    ASSERT_TRUE(listening);
}

/* What has been told since the last call. */
inline std::vector<std::string> Take() {
    EXPECT_EQ(0u, MDL_Drain(10000));
    std::lock_guard guard(lock);
    return std::exchange(lines, {});
}

} // namespace notices

/* A model whose notifications are heard. */
class NoticedModelTest : public ModelTest {
  protected:
    void SetUp() override {
        ModelTest::SetUp();
        notices::Listen();
        notices::Take();
    }
};

using Lines = std::vector<std::string>;

#endif
