/* Items as callers see them. */
#ifndef UVEL_HOST_CONFDB_RECORD_H
#define UVEL_HOST_CONFDB_RECORD_H

#include <uvelhost/confdb_writer.h>

#include "confdb/item.h"

namespace uvel::host::confdb {

/* Valid as long as the item. */
inline DB_KV_S KeyAndValueOf(const Item &item, uint32_t change) {
    DB_KV_S kv{};
    kv.pszKey = item.name.key.c_str();
    kv.ulValueLength = item.deleted ? 0 : static_cast<uint32_t>(item.value.size());
    kv.pValue = kv.ulValueLength == 0 ? nullptr : item.value.data();
    kv.ulChange = change;
    return kv;
}

inline DB_RECORD_S RecordOf(const Item &item, uint32_t change) {
    return {item.name.table.c_str(), KeyAndValueOf(item, change), item.revision};
}

/* Names from callers; both throw StoreError for one that no table or key can have. */
std::string CheckedTable(const char *table);
std::string CheckedKey(const char *key);

} // namespace uvel::host::confdb

#endif
