#include <uvelhost/confdb_writer.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "confdb/etcd_store.h"
#include "confdb/last_error.h"
#include "confdb/record.h"
#include "confdb/sqlite_database.h"
#include "confdb/store.h"

using namespace uvel::host::confdb;

struct DB_STORE {
    std::unique_ptr<Store> store;
};

namespace uvel::host::confdb {

/* Room for the reason and a few names; allocating could fail just when there is something to say. */
static thread_local char t_lastError[512];

void SetLastError(const char *text) noexcept {
    std::snprintf(t_lastError, sizeof t_lastError, "%s", text);
}

std::unique_ptr<Store> OpenStore(const Endpoint &endpoint) {
    if (const auto *sqlite = std::get_if<SqliteEndpoint>(&endpoint))
        return std::make_unique<SqliteDatabase>(*sqlite, SqliteDatabase::WhenBusy::WAIT);
    return std::make_unique<EtcdStore>(std::get<EtcdEndpoint>(endpoint));
}

} // namespace uvel::host::confdb

namespace {

Store &StoreOf(DB_STORE_S *handle) {
    if (handle == nullptr)
        throw StoreError("no store");
    return *handle->store;
}

Name NameOf(const char *table, const char *key) {
    return {CheckedTable(table), CheckedKey(key)};
}

void WriteRevision(uint64_t *out, uint64_t revision) {
    if (out != nullptr)
        *out = revision;
}

} // namespace

const char *db_last_error(void) {
    return t_lastError;
}

uint32_t db_store_open(const char *pszEndpoint, DB_STORE_S **ppstStore) {
    return Guarded([&] {
        if (pszEndpoint == nullptr || ppstStore == nullptr)
            throw StoreError("an endpoint and room for the store are needed");
        auto made = std::make_unique<DB_STORE>();
        made->store = OpenStore(ParseEndpoint(pszEndpoint));
        *ppstStore = made.release();
        return DB_OK;
    });
}

void db_store_close(DB_STORE_S *pstStore) {
    delete pstStore;
}

uint32_t db_store_put(DB_STORE_S *pstStore, const char *pszTable, const char *pszKey, const void *pValue,
                      uint32_t ulLength, uint64_t *pullRevision) {
    return Guarded([&] {
        const Name name = NameOf(pszTable, pszKey);
        if (ulLength > DB_VALUE_SIZE || (pValue == nullptr && ulLength != 0))
            throw StoreError("a value has 0 to 1048576 bytes");
        const auto *bytes = static_cast<const char *>(pValue);
        WriteRevision(pullRevision, StoreOf(pstStore).Put(name, std::string_view(bytes, ulLength)));
        return DB_OK;
    });
}

uint32_t db_store_delete(DB_STORE_S *pstStore, const char *pszTable, const char *pszKey, uint64_t *pullRevision) {
    return Guarded([&] {
        const auto revision = StoreOf(pstStore).Delete(NameOf(pszTable, pszKey));
        if (!revision) {
            SetLastError("no such key");
            return DB_NOT_FOUND;
        }
        WriteRevision(pullRevision, *revision);
        return DB_OK;
    });
}

uint32_t db_store_get(DB_STORE_S *pstStore, const char *pszTable, const char *pszKey, void *pBuffer,
                      uint32_t *pulLength) {
    return Guarded([&] {
        if (pulLength == nullptr || (pBuffer == nullptr && *pulLength != 0))
            throw StoreError("room for the value and its length are needed");
        const auto item = StoreOf(pstStore).Get(NameOf(pszTable, pszKey));
        if (!item) {
            SetLastError("no such key");
            return DB_NOT_FOUND;
        }
        const uint32_t room = *pulLength;
        *pulLength = static_cast<uint32_t>(item->value.size());
        if (*pulLength > room) {
            SetLastError("the value is longer than the buffer");
            return DB_NO_ROOM;
        }
        if (*pulLength != 0)
            std::memcpy(pBuffer, item->value.data(), *pulLength);
        return DB_OK;
    });
}

uint32_t db_store_list(DB_STORE_S *pstStore, const char *pszTable, DB_RECORD_CB pfRecord, void *pContext) {
    return Guarded([&] {
        if (pfRecord == nullptr)
            throw StoreError("a callback is needed");
        const Snapshot all = StoreOf(pstStore).List(pszTable == nullptr ? "" : CheckedTable(pszTable));
        for (const Item &item : all.items) {
            const DB_RECORD_S record = RecordOf(item, DB_CHANGE_PRESENT);
            pfRecord(pContext, &record);
        }
        return DB_OK;
    });
}
