#include <uvelhost/ip.h>

#include "model/query.h"
#include <arpa/inet.h>

using namespace uvel::host::model;

namespace {

constexpr uint32_t MaskOf(uint32_t prefix_len) {
    return prefix_len == 0 ? 0 : 0xFFFFFFFFU << (32 - prefix_len);
}

/* The main address, without it the oldest; null without an address. Those of an interface that goes went before it. */
const MDL_ADDR4_S *FirstAddress(const Reading &model, uint32_t if_index) {
    if (GoingIf(if_index) != nullptr)
        return nullptr;
    const Addr4 *first = nullptr;
    model->addr4.VisitFrom(Pair(if_index, 0), [&](uint64_t key, const Node<Addr4> &node) {
        const Addr4 &each = node.value;
        if (First(key) != if_index)
            return false;
        if (first == nullptr || each.addr.ulMain > first->addr.ulMain ||
            (each.addr.ulMain == first->addr.ulMain && each.age < first->age))
            first = &each;
        return true;
    });
    return first == nullptr ? nullptr : &first->addr;
}

const MDL_ADDR4_S *AddressOfInterface(const Reading &model, uint32_t if_index) {
    return FindIf(model, if_index) == nullptr ? nullptr : FirstAddress(model, if_index);
}

} // namespace

uint32_t BDS_IPGetFirstIpByIfIndex(uint32_t ulIfIndex, uint32_t *pulAddrNet) {
    const Reading model;
    return Write(AddressOfInterface(model, ulIfIndex), pulAddrNet,
                 [](const MDL_ADDR4_S &each) { return htonl(each.ulAddr); });
}

uint32_t BDS_IPGetMainIpByIfIndex(uint32_t ulIfIndex, uint32_t *pulAddr, uint32_t *pulPrefixLen) {
    const Reading model;
    const MDL_ADDR4_S *addr = AddressOfInterface(model, ulIfIndex);
    if (addr == nullptr || pulAddr == nullptr || pulPrefixLen == nullptr)
        return 1;
    *pulAddr = addr->ulAddr;
    *pulPrefixLen = addr->ulPrefixLen;
    return UVELHOST_OK;
}

uint32_t BDS_IPIFGetThisIfIpAddr(uint32_t ulIfIndex, uint32_t *pulAddr) {
    const Reading model;
    return Write(AddressOfInterface(model, ulIfIndex), pulAddr, [](const MDL_ADDR4_S &each) { return each.ulAddr; });
}

uint32_t BDS_IPGetIpFlagByIfIndex(uint32_t ulIfIndex, uint32_t *pulFlag) {
    const Reading model;
    if (pulFlag == nullptr || FindIf(model, ulIfIndex) == nullptr)
        return 1;
    const MDL_ADDR4_S *addr = FirstAddress(model, ulIfIndex);
    *pulFlag = addr == nullptr ? IP_FLAG_NONE : addr->ulFlag;
    return UVELHOST_OK;
}

uint32_t IP_GetMask(uint32_t ulIfIndex, uint32_t *pulMask) {
    const Reading model;
    return Write(AddressOfInterface(model, ulIfIndex), pulMask,
                 [](const MDL_ADDR4_S &each) { return MaskOf(each.ulPrefixLen); });
}

/* ---- virtual router addresses */

uint32_t VRRP4_VrrpIsVIp(uint32_t ulIfIndex, uint32_t ulAddr, uint8_t aucMac[6]) {
    const Reading model;
    const MDL_VRRP_S *vrrp = model->vrrp.Get(Pair(ulIfIndex, ulAddr));
    if (vrrp == nullptr)
        return 0;
    if (aucMac != nullptr)
        std::memcpy(aucMac, vrrp->aucMac, sizeof vrrp->aucMac);
    return 1;
}

uint32_t VRRP_IsIfMasterByVMac(uint32_t ulIfIndex, const uint8_t aucMac[6]) {
    const Reading model;
    bool master = false;
    if (aucMac != nullptr)
        model->vrrp.VisitFrom(Pair(ulIfIndex, 0), [&](uint64_t key, const Node<MDL_VRRP_S> &node) {
            const MDL_VRRP_S &each = node.value;
            master = First(key) == ulIfIndex && each.ulMaster != 0 &&
                     std::memcmp(each.aucMac, aucMac, sizeof each.aucMac) == 0;
            return First(key) == ulIfIndex && !master;
        });
    return master;
}

/* ---- helpers */

uint32_t IP_NetmaskIsContinue(uint32_t ulMask) {
    const uint32_t zeros = ~ulMask;
    return (zeros & (zeros + 1)) == 0;
}

uint16_t INET_Cksum(const void *pData, uint32_t ulLen) {
    if (pData == nullptr)
        return 0xFFFF;
    const auto *bytes = static_cast<const unsigned char *>(pData);
    uint64_t sum = 0;
    uint32_t i = 0;
    for (; i + 1 < ulLen; i += 2) {
        uint16_t word;
        std::memcpy(&word, bytes + i, sizeof word);
        sum += word;
    }
    if (i < ulLen) {
        uint16_t word = 0;
        std::memcpy(&word, bytes + i, 1);
        sum += word;
    }
    while (sum >> 16 != 0)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<uint16_t>(~sum);
}
