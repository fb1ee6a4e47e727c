/* Reading and writing an etcd cluster. */
#ifndef UVEL_HOST_CONFDB_ETCD_STORE_H
#define UVEL_HOST_CONFDB_ETCD_STORE_H

#include "confdb/etcd_messages.h"
#include "confdb/http.h"
#include "confdb/store.h"

namespace uvel::host::confdb {

/* Reads are those of the majority. A write is made on condition that the key is as it was read just before: when a node
 * takes a write and dies or freezes, nobody knows whether it was done, and repeating it must not undo what others wrote
 * meanwhile - nor may the first one do so when it comes late. */
class EtcdStore : public Store {
  public:
    explicit EtcdStore(const EtcdEndpoint &endpoint) : endpoint_(endpoint) {}

    uint64_t Put(const Name &name, std::string_view value) override;
    std::optional<uint64_t> Delete(const Name &name) override;
    std::optional<Item> Get(const Name &name) override;
    Snapshot List(const std::string &table) override;

  private:
    using Deadline = std::chrono::steady_clock::time_point;

    std::string AskNode(const char *path, const std::string &body);

    /* Of any node; goes on to the next one until the deadline. */
    etcd::RangeReply ReadPage(const etcd::KeyRange &range, uint64_t revision, Deadline deadline);

    std::optional<uint64_t> Write(const Name &name, std::optional<std::string_view> value);

    /* Called while an exception is handled, which is thrown on when there is no point in going on. */
    void UseNextNode(Deadline deadline);

    EtcdEndpoint endpoint_;
    HttpRequest request_;
    std::size_t node_ = 0;
    std::size_t distrusted_ = 0; /* nodes in a row whose certificates do not fit */
};

} // namespace uvel::host::confdb

#endif
