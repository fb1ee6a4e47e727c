/* One subscriber's view of a table: what it was told so far, and what it has to be told next. */
#ifndef UVEL_HOST_CONFDB_SUBSCRIPTION_H
#define UVEL_HOST_CONFDB_SUBSCRIPTION_H

#include <algorithm>
#include <functional>
#include <map>
#include <uvelhost/confdb.h>

#include "confdb/item.h"

namespace uvel::host::confdb {

/* Remembers the table as the subscriber knows it. Single changes and whole tables may come in any mixture, as long as
 * none is missing between them: each is turned into what is new to the subscriber. */
class Subscription {
  public:
    struct Wish {
        std::string table; /* empty: all tables */
        uint32_t changes;  /* sum of DB_CHANGE_* */
        bool from_start;   /* what is there at first is told too */
    };
    using Notify = std::function<void(const Item &item, uint32_t change)>;

    Subscription(Wish wish, Notify notify) : wish_(std::move(wish)), notify_(std::move(notify)) {}

    const std::string &Table() const { return wish_.table; }

    /* The last revision that this view holds; 0 before the first table. */
    uint64_t Revision() const { return revision_; }

    /* Whether a whole table must come before any change can. */
    bool NeedsSnapshot() const { return !is_filled_; }
    void AskForSnapshot() { is_filled_ = false; }

    /* The table as it is now: what differs from the view is told, deleted keys first. */
    void Replace(const Snapshot &now);

    /* Changes in their order, whole revisions; those that the view holds already, and other tables', are passed over. */
    void Apply(const std::vector<Item> &changes);

    /* Nothing of this table has changed up to `revision`. */
    void PassTo(uint64_t revision) { revision_ = std::max(revision_, revision); }

  private:
    struct Known {
        std::string value;
        uint64_t revision;
    };

    void Put(const Item &item);
    void Delete(const Item &item);
    void Tell(const Item &item, uint32_t change) const;

    Wish wish_;
    Notify notify_;
    std::map<Name, Known> known_;
    uint64_t revision_ = 0;
    bool is_filled_ = false;
    bool was_filled_ = false;
};

} // namespace uvel::host::confdb

#endif
