/* The sessions of this device, in the library's containers.
 *
 * A sorted link table costs one copy of its array per change, so many sessions need many small tables: one bucket for
 * each value of a hash of the MAC address. Lookups, additions and removals stay short whatever the number of sessions;
 * what concerns a whole interface, which happens rarely, looks at all of them.
 *
 * Threads: none of it locks; the module holds one mutex around it. */
#pragma once

#include <vector>

#include <uvelcommon_base/kivo_link_table.h>

#include "session.h"

namespace session_table {

struct Digest {
    uint32_t count = 0;
    uint64_t sum = 0; /* of all fingerprints: the same for the same sessions in any order */

    bool operator==(const Digest &) const = default;
};

class Store {
  public:
    static constexpr uint32_t ANY_VLAN = 0xFFFFFFFF;

    /* Memory is charged to the module `mid`. */
    Store(uint32_t mid, uint32_t max_sessions);
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    enum class Result { OK, FULL, PRESENT, NO_MEMORY };

    Result Add(const Session &session);

    /* Adds, or puts in place of what stands under the MAC address. */
    Result Put(const Session &session);

    /* True, and *removed (may be null) filled, when there was one. */
    bool Remove(const Mac &mac, Session *removed);

    const Session *Find(const Mac &mac) const;

    /* Removes all sessions of an interface, in one VLAN or (ANY_VLAN) in all, and gives what was removed. */
    std::vector<Session> RemoveOnInterface(uint32_t ifindex, uint32_t vlan);

    Digest GetDigest() const { return digest_; }

    /* Walking in pieces: copies of the sessions in a bucket, 0 to BucketCount() - 1. */
    static uint32_t BucketCount();
    std::vector<Session> InBucket(uint32_t bucket) const;

    /* Marks all sessions; those put afterwards lose the mark. */
    void MarkAll() { ++generation_; }

    /* Removes what is still marked, and gives what was removed. */
    std::vector<Session> RemoveMarked();

  private:
    struct Entry; /* a session and its generation */

    Result Insert(const Session &session);
    SRVSTL_TBL_S *BucketOf(const Mac &mac) const;
    template <typename Condition>
    std::vector<Session> RemoveWhere(Condition condition);

    uint32_t mid_;
    uint32_t max_sessions_;
    uint32_t generation_ = 0;
    Digest digest_;
    std::vector<SRVSTL_TBL_S *> buckets_;
};

} // namespace session_table
