#include "confdb/subscription.h"

#include <set>

namespace uvel::host::confdb {

void Subscription::Tell(const Item &item, uint32_t change) const {
    if ((wish_.changes & change) != 0)
        notify_(item, change);
}

void Subscription::Put(const Item &item) {
    auto [place, is_new] = known_.insert_or_assign(item.name, Known{item.value, item.revision});
    Tell(item, is_new ? DB_CHANGE_CREATED : DB_CHANGE_CHANGED);
}

/* A key that was made and deleted while nobody looked is no news. */
void Subscription::Delete(const Item &item) {
    if (known_.erase(item.name) != 0)
        Tell(item, DB_CHANGE_DELETED);
}

void Subscription::Apply(const std::vector<Item> &changes) {
    const uint64_t held = revision_;
    for (const Item &item : changes) {
        if (item.revision <= held || (!wish_.table.empty() && item.name.table != wish_.table))
            continue;
        if (item.deleted)
            Delete(item);
        else
            Put(item);
        revision_ = std::max(revision_, item.revision);
    }
}

void Subscription::Replace(const Snapshot &now) {
    std::set<Name> present;
    for (const Item &item : now.items)
        present.insert(item.name);
    std::vector<Item> gone;
    for (const auto &[name, known] : known_) {
        if (!present.contains(name))
            gone.push_back({name, "", now.revision, true});
    }
    for (const Item &item : gone)
        Delete(item);

    for (const Item &item : now.items) {
        const auto known = known_.find(item.name);
        if (!was_filled_) {
            known_.insert_or_assign(item.name, Known{item.value, item.revision});
            if (wish_.from_start)
                Tell(item, DB_CHANGE_PRESENT);
        } else if (known == known_.end() || known->second.revision != item.revision ||
                   known->second.value != item.value) {
            Put(item);
        }
    }
    /* A database that was put back to an older state counts from there. */
    revision_ = now.revision;
    is_filled_ = was_filled_ = true;
}

} // namespace uvel::host::confdb
