/* What any configuration database can do for those who read and write it. */
#ifndef UVEL_HOST_CONFDB_STORE_H
#define UVEL_HOST_CONFDB_STORE_H

#include <memory>
#include <optional>
#include <string_view>

#include "confdb/endpoint.h"
#include "confdb/item.h"

namespace uvel::host::confdb {

/* One caller at a time. Everything throws StoreError. */
class Store {
  public:
    virtual ~Store() = default;

    /* Both give the revision of the change; deleting what is not there gives none. */
    virtual uint64_t Put(const Name &name, std::string_view value) = 0;
    virtual std::optional<uint64_t> Delete(const Name &name) = 0;

    virtual std::optional<Item> Get(const Name &name) = 0;

    /* A table, or all of them when its name is empty, ordered by name. */
    virtual Snapshot List(const std::string &table) = 0;
};

std::unique_ptr<Store> OpenStore(const Endpoint &endpoint);

} // namespace uvel::host::confdb

#endif
