#include "store.h"

#include <cstring>
#include <uvelcommon_base/kivo_mem.h>

namespace session_table {

struct Store::Entry {
    Session session;
    uint32_t generation;
};

namespace {

constexpr uint32_t BUCKETS = 4096;
constexpr uint32_t NO_LIMIT = 0xFFFFFFFF;

int32_t CompareMac(const void *entry, const void *mac) {
    return std::memcmp(entry, mac, sizeof(Mac)); /* the MAC address is an entry's first member */
}

uint32_t HashOf(const Mac &mac) {
    uint32_t hash = 2166136261;
    for (const uint8_t byte : mac)
        hash = (hash ^ byte) * 16777619;
    return (hash ^ hash >> 16) % BUCKETS;
}

} // namespace

Store::Store(uint32_t mid, uint32_t max_sessions) : mid_(mid), max_sessions_(max_sessions), buckets_(BUCKETS) {
    for (SRVSTL_TBL_S *&bucket : buckets_)
        bucket = SRVSTL_CreateNew(mid, NO_LIMIT, CompareMac);
}

Store::~Store() {
    for (SRVSTL_TBL_S *&bucket : buckets_)
        SRVSTL_DeleteSTbl(&bucket, [](void *entry) { KIVO_MemFree(entry); });
}

SRVSTL_TBL_S *Store::BucketOf(const Mac &mac) const {
    return buckets_[HashOf(mac)];
}

Store::Result Store::Insert(const Session &session) {
    auto *entry = static_cast<Entry *>(KIVO_MemAlloc(mid_, sizeof(Entry)));
    if (entry == nullptr)
        return Result::NO_MEMORY;
    *entry = {session, generation_};
    if (SRVSTL_SetLink(BucketOf(session.mac), session.mac.data(), entry) != KIVO_OK) {
        KIVO_MemFree(entry);
        return Result::NO_MEMORY;
    }
    ++digest_.count;
    digest_.sum += Fingerprint(session);
    return Result::OK;
}

Store::Result Store::Add(const Session &session) {
    if (Find(session.mac) != nullptr)
        return Result::PRESENT;
    if (digest_.count >= max_sessions_)
        return Result::FULL;
    return Insert(session);
}

Store::Result Store::Put(const Session &session) {
    Remove(session.mac, nullptr);
    return Insert(session);
}

bool Store::Remove(const Mac &mac, Session *removed) {
    SRVSTL_TBL_S *bucket = BucketOf(mac);
    auto *entry = static_cast<Entry *>(SRVSTL_FindLink(bucket, mac.data()));
    if (entry == nullptr)
        return false;
    SRVSTL_RemoveLink(bucket, mac.data());
    --digest_.count;
    digest_.sum -= Fingerprint(entry->session);
    if (removed != nullptr)
        *removed = entry->session;
    KIVO_MemFree(entry);
    return true;
}

const Session *Store::Find(const Mac &mac) const {
    const auto *entry = static_cast<const Entry *>(SRVSTL_FindLink(BucketOf(mac), mac.data()));
    return entry == nullptr ? nullptr : &entry->session;
}

uint32_t Store::BucketCount() {
    return BUCKETS;
}

std::vector<Session> Store::InBucket(uint32_t bucket) const {
    std::vector<Session> sessions;
    const SRVSTL_TBL_S *table = buckets_[bucket];
    sessions.reserve(SRVSTL_GetLinkCount(table));
    for (uint32_t i = 0; i < SRVSTL_GetLinkCount(table); ++i)
        sessions.push_back(static_cast<const Entry *>(SRVSTL_GetLink(table, i))->session);
    return sessions;
}

template <typename Condition>
std::vector<Session> Store::RemoveWhere(Condition condition) {
    std::vector<Session> removed;
    for (SRVSTL_TBL_S *bucket : buckets_) {
        for (uint32_t i = SRVSTL_GetLinkCount(bucket); i-- > 0;) {
            const auto *entry = static_cast<const Entry *>(SRVSTL_GetLink(bucket, i));
            if (!condition(*entry))
                continue;
            removed.push_back(entry->session);
            Remove(removed.back().mac, nullptr);
        }
    }
    return removed;
}

std::vector<Session> Store::RemoveOnInterface(uint32_t ifindex, uint32_t vlan) {
    return RemoveWhere([=](const Entry &entry) {
        return entry.session.ifindex == ifindex && (vlan == ANY_VLAN || entry.session.vlan == vlan);
    });
}

std::vector<Session> Store::RemoveMarked() {
    return RemoveWhere([this](const Entry &entry) { return entry.generation != generation_; });
}

} // namespace session_table
