/* Changes of addresses: IPv4, IPv6, of virtual routers, and routes to users. */
#include "model/batch.h"

#include <arpa/inet.h>
#include <uvelhost/ip.h>

using namespace uvel::host::model;

namespace {

void NotifyAddr4(Batch &batch, uint32_t event, const MDL_ADDR4_S &addr) {
    batch.notices->Add({.topic = MDL_TOPIC_IP, .event = event, .a = addr.ulIfIndex, .b = htonl(addr.ulAddr)});
}

/* Calls visit(key, node) for the addresses of an interface, while it answers true. */
template <typename Visit>
void VisitAddresses(const Snapshot &snapshot, uint32_t if_index, Visit &&visit) {
    snapshot.addr4.VisitFrom(Pair(if_index, 0), [&](uint64_t key, const Node<Addr4> &node) {
        return First(key) == if_index && visit(key, node);
    });
}

/* Takes the main address's rank away, except from `keep`. */
void DemoteMain(Batch &batch, uint64_t keep) {
    uint64_t main = keep;
    VisitAddresses(*batch.next, First(keep), [&](uint64_t key, const Node<Addr4> &node) {
        if (key != keep && node.value.addr.ulMain != 0)
            main = key;
        return main == keep;
    });
    if (main == keep)
        return;
    const Node<Addr4> &node = *batch.next->addr4.GetNode(main);
    Addr4 demoted = node.value;
    demoted.addr.ulMain = 0;
    batch.next->addr4.Set(batch.draft, main, demoted, node.feeder, node.mark);
}

uint32_t NextAge(const Snapshot &snapshot, uint32_t if_index) {
    uint32_t next = 0;
    VisitAddresses(snapshot, if_index, [&](uint64_t, const Node<Addr4> &node) {
        next = node.value.age >= next ? node.value.age + 1 : next;
        return true;
    });
    return next;
}

RouteKey KeyOf(const MDL_ROUTE_S &route) {
    return {route.ulVrfIndex, route.ulAddr, route.ulPrefixLen, route.ulIfIndex, route.ulNextHop};
}

constexpr uint32_t ADDRESS_ADDED = 16, ADDRESS_REMOVED = 32;

} // namespace

namespace uvel::host::model {

void RemoveAddr4(Batch &batch, uint64_t key) {
    const Addr4 *addr = batch.next->addr4.Get(key);
    if (addr == nullptr)
        return;
    NotifyAddr4(batch, ADDRESS_REMOVED, addr->addr);
    batch.next->addr4.Erase(batch.draft, key);
}

void RemoveAddr6(Batch &batch, const Addr6Key &key) {
    batch.next->addr6.Erase(batch.draft, key);
}

void RemoveVrrp(Batch &batch, uint64_t key) {
    batch.next->vrrp.Erase(batch.draft, key);
}

void RemoveRoute(Batch &batch, const RouteKey &key) {
    batch.next->routes.Erase(batch.draft, key);
}

} // namespace uvel::host::model

uint32_t MDL_PutAddr4(MDL_BATCH *pstBatch, const MDL_ADDR4_S *pstAddr) {
    if (pstAddr == nullptr || !IsIfIndex(pstAddr->ulIfIndex) || pstAddr->ulPrefixLen > 32 || pstAddr->ulMain > 1 ||
        pstAddr->ulFlag < IP_FLAG_CONFIGURED || pstAddr->ulFlag > IP_FLAG_BORROWED)
        return 1;
    return Change(pstBatch, [&] {
        auto &table = pstBatch->next->addr4;
        const uint64_t key = Pair(pstAddr->ulIfIndex, pstAddr->ulAddr);
        const Addr4 *old = table.Get(key);
        const uint32_t age = old != nullptr ? old->age : NextAge(*pstBatch->next, pstAddr->ulIfIndex);
        const bool is_new = old == nullptr;
        if (pstAddr->ulMain != 0)
            DemoteMain(*pstBatch, key);
        Put(*pstBatch, table, key, Addr4{*pstAddr, age});
        if (is_new)
            NotifyAddr4(*pstBatch, ADDRESS_ADDED, *pstAddr);
    });
}

uint32_t MDL_RemoveAddr4(MDL_BATCH *pstBatch, uint32_t ulIfIndex, uint32_t ulAddr) {
    return Change(pstBatch, [&] { RemoveAddr4(*pstBatch, Pair(ulIfIndex, ulAddr)); });
}

uint32_t MDL_PutAddr6(MDL_BATCH *pstBatch, const MDL_ADDR6_S *pstAddr) {
    if (pstAddr == nullptr || !IsIfIndex(pstAddr->ulIfIndex) || pstAddr->ulPrefixLen > 128)
        return 1;
    return Change(pstBatch, [&] {
        const Addr6Key key = {pstAddr->ulIfIndex, std::to_array(pstAddr->aucAddr)};
        Put(*pstBatch, pstBatch->next->addr6, key, *pstAddr);
    });
}

uint32_t MDL_RemoveAddr6(MDL_BATCH *pstBatch, uint32_t ulIfIndex, const uint8_t aucAddr[16]) {
    if (aucAddr == nullptr)
        return 1;
    Addr6Key key = {ulIfIndex, {}};
    std::memcpy(key.addr.data(), aucAddr, key.addr.size());
    return Change(pstBatch, [&] { RemoveAddr6(*pstBatch, key); });
}

uint32_t MDL_PutVrrp(MDL_BATCH *pstBatch, const MDL_VRRP_S *pstVrrp) {
    if (pstVrrp == nullptr || !IsIfIndex(pstVrrp->ulIfIndex) || pstVrrp->ulMaster > 1)
        return 1;
    MDL_VRRP_S vrrp = *pstVrrp;
    std::memset(vrrp.aucReserved, 0, sizeof vrrp.aucReserved);
    return Change(pstBatch, [&] { Put(*pstBatch, pstBatch->next->vrrp, Pair(vrrp.ulIfIndex, vrrp.ulAddr), vrrp); });
}

uint32_t MDL_RemoveVrrp(MDL_BATCH *pstBatch, uint32_t ulIfIndex, uint32_t ulAddr) {
    return Change(pstBatch, [&] { RemoveVrrp(*pstBatch, Pair(ulIfIndex, ulAddr)); });
}

uint32_t MDL_PutRoute(MDL_BATCH *pstBatch, const MDL_ROUTE_S *pstRoute) {
    if (pstRoute == nullptr || !IsIfIndex(pstRoute->ulIfIndex) || pstRoute->ulPrefixLen > 32)
        return 1;
    return Change(pstBatch, [&] { Put(*pstBatch, pstBatch->next->routes, KeyOf(*pstRoute), *pstRoute); });
}

uint32_t MDL_RemoveRoute(MDL_BATCH *pstBatch, const MDL_ROUTE_S *pstRoute) {
    if (pstRoute == nullptr)
        return 1;
    return Change(pstBatch, [&] { RemoveRoute(*pstBatch, KeyOf(*pstRoute)); });
}
