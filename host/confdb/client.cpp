/* The operations of the subscription client, and of watches: connections by handle and by descriptor. */
#include <uvelhost/confdb.h>
#include <uvelhost/confdb_writer.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "confdb/connection.h"
#include "confdb/last_error.h"
#include "confdb/record.h"
#include "crypto/report.h"

using namespace uvel::host;
using namespace uvel::host::confdb;

struct DB_CONN {
    std::string endpoint;
    std::unique_ptr<Connection> connection;
    std::atomic<uint32_t> subscriptions{0};
};

struct DB_WATCH {
    std::unique_ptr<Connection> connection;
};

namespace {

/* Connections by descriptor. A connection is never closed, so what was found stays valid. The table is not destroyed
 * either: tasks may run while the process ends. */
class Registry {
  public:
    DB_CONN_S *Add(std::unique_ptr<DB_CONN_S> connection) {
        const int descriptor = connection->connection->Descriptor();
        std::unique_lock lock(mutex_);
        in_order_.reserve(in_order_.size() + 1);
        DB_CONN_S *added = connections_.emplace(descriptor, std::move(connection)).first->second.get();
        in_order_.push_back(added);
        latest_failure_.clear();
        return added;
    }
    /* One that was opened for the same endpoint and client and that nothing was subscribed on, or null. */
    DB_CONN_S *FindUnused(const char *endpoint, const char *client) {
        std::shared_lock lock(mutex_);
        const auto unused = [&](const auto &entry) {
            const DB_CONN_S &one = *entry.second;
            return one.subscriptions == 0 && one.endpoint == endpoint && one.connection->Client() == client;
        };
        const auto found = std::find_if(connections_.begin(), connections_.end(), unused);
        return found == connections_.end() ? nullptr : found->second.get();
    }
    const DB_CONN_S *Number(uint32_t number) {
        std::shared_lock lock(mutex_);
        return number < in_order_.size() ? in_order_[number] : nullptr;
    }
    /* Who cannot open a connection tries again: the same reason is told once. */
    bool IsNews(const char *failure) {
        std::unique_lock lock(mutex_);
        return std::exchange(latest_failure_, failure) != failure;
    }
    Connection *Find(int descriptor) {
        std::shared_lock lock(mutex_);
        const auto found = connections_.find(descriptor);
        return found == connections_.end() ? nullptr : found->second->connection.get();
    }

  private:
    std::shared_mutex mutex_;
    std::unordered_map<int, std::unique_ptr<DB_CONN_S>> connections_;
    std::vector<const DB_CONN_S *> in_order_;
    std::string latest_failure_;
};

Registry &TheRegistry() {
    static auto *registry = new Registry;
    return *registry;
}

void ReportFailure(const char *client, const char *failure) noexcept {
    try {
        if (TheRegistry().IsNews(failure))
            ReportText("configuration database of %s: %s", client, failure);
    } catch (const std::bad_alloc &) {
        /* Without memory to tell it, the caller has the result all the same. */
    }
}

} // namespace

uint32_t db_create_sub_connect(const DB_CONN_DESC_S *pstDesc, DB_CONNECT_CB pfConnect, DB_CONN_S **ppstConn) {
    if (pstDesc == nullptr || pstDesc->pszEndpoint == nullptr || pfConnect == nullptr || ppstConn == nullptr)
        return 1;
    const char *client = pstDesc->pszClient == nullptr ? "" : pstDesc->pszClient;
    try {
        DB_CONN_S *connection = TheRegistry().FindUnused(pstDesc->pszEndpoint, client);
        if (connection == nullptr) {
            auto made = std::make_unique<DB_CONN>();
            made->endpoint = pstDesc->pszEndpoint;
            made->connection = OpenConnection(ParseEndpoint(pstDesc->pszEndpoint), client);
            connection = TheRegistry().Add(std::move(made));
        }
        *ppstConn = connection;
    } catch (const std::exception &error) {
        ReportFailure(client, error.what());
        return 1;
    }
    pfConnect((*ppstConn)->connection->Descriptor(), 0);
    return UVELHOST_OK;
}

uint32_t db_sub_kv_with_conn(DB_CONN_S *pstConn, const char *pszTable, const DB_SUB_DESC_S *pstDesc,
                             uint32_t *pulSubId) {
    if (pstConn == nullptr || pstDesc == nullptr || pstDesc->pfCallback == nullptr || pulSubId == nullptr)
        return 1;
    try {
        auto subscription = std::make_unique<Subscription>(
            Subscription::Wish{CheckedTable(pszTable), pstDesc->ulChangeMask, pstDesc->ucFromStart != 0},
            [callback = pstDesc->pfCallback](const Item &item, uint32_t change) {
                const DB_KV_S kv = KeyAndValueOf(item, change);
                callback(&kv);
            });
        pstConn->connection->Add(std::move(subscription));
    } catch (const std::exception &) {
        return 1;
    }
    *pulSubId = pstConn->subscriptions.fetch_add(1) + 1;
    return UVELHOST_OK;
}

uint32_t db_handle_event(int32_t lFd) {
    Connection *connection = TheRegistry().Find(lFd);
    return connection != nullptr && connection->Handle() ? UVELHOST_OK : 1;
}

uint32_t db_get_state(uint32_t ulNumber, DB_CONN_STATE_S *pstState) {
    const DB_CONN_S *found = TheRegistry().Number(ulNumber);
    if (found == nullptr || pstState == nullptr)
        return 1;
    *pstState = {};
    found->connection->Client().copy(pstState->szClient, sizeof pstState->szClient - 1);
    pstState->ulSubscriptions = found->subscriptions.load();
    pstState->ulOutages = found->connection->GetHealth(pstState->szTrouble);
    return UVELHOST_OK;
}

uint32_t db_watch_open(const char *pszEndpoint, const char *pszTable, DB_RECORD_CB pfRecord, void *pContext,
                       DB_WATCH_S **ppstWatch) {
    return Guarded([&] {
        if (pszEndpoint == nullptr || pfRecord == nullptr || ppstWatch == nullptr)
            throw StoreError("an endpoint, a callback and room for the result are needed");
        auto watch = std::make_unique<DB_WATCH>();
        watch->connection = OpenConnection(ParseEndpoint(pszEndpoint), "a watch");
        watch->connection->Add(std::make_unique<Subscription>(
            Subscription::Wish{pszTable == nullptr ? "" : CheckedTable(pszTable), DB_CHANGE_ALL, true},
            [=](const Item &item, uint32_t change) {
                const DB_RECORD_S record = RecordOf(item, change);
                pfRecord(pContext, &record);
            }));
        *ppstWatch = watch.release();
        return DB_OK;
    });
}

int32_t db_watch_descriptor(const DB_WATCH_S *pstWatch) {
    return pstWatch == nullptr ? -1 : pstWatch->connection->Descriptor();
}

uint32_t db_watch_handle(DB_WATCH_S *pstWatch) {
    return Guarded([&] {
        if (pstWatch == nullptr || !pstWatch->connection->Handle())
            throw StoreError("no watch, or it is being handled already");
        return DB_OK;
    });
}

void db_watch_close(DB_WATCH_S *pstWatch) {
    delete pstWatch;
}
