#include "confdb/etcd_store.h"

#include <thread>

namespace uvel::host::confdb {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto PATIENCE = 10s;
constexpr auto BETWEEN_NODES = 20ms;

} // namespace

/* A node that cannot be trusted may be the only one of its kind: the others are tried once. */
void EtcdStore::UseNextNode(Deadline deadline) {
    if (Clock::now() + BETWEEN_NODES >= deadline || distrusted_ >= endpoint_.urls.size())
        throw;
    node_ = (node_ + 1) % endpoint_.urls.size();
    std::this_thread::sleep_for(BETWEEN_NODES);
}

std::string EtcdStore::AskNode(const char *path, const std::string &body) {
    request_.Prepare(endpoint_, endpoint_.urls[node_] + path, body, HttpRequest::Patience::WHILE_IT_FLOWS);
    try {
        request_.Perform();
        distrusted_ = 0;
    } catch (const TrustError &) {
        ++distrusted_;
        throw;
    }
    return std::move(request_.Received());
}

etcd::RangeReply EtcdStore::ReadPage(const etcd::KeyRange &range, uint64_t revision, Deadline deadline) {
    const std::string body = etcd::RangeRequest(range, revision, etcd::PAGE);
    for (;;) {
        try {
            return etcd::ReadRange(AskNode("/v3/kv/range", body), endpoint_.prefix);
        } catch (const StoreError &) {
            UseNextNode(deadline);
        }
    }
}

std::optional<uint64_t> EtcdStore::Write(const Name &name, std::optional<std::string_view> value) {
    const auto deadline = Clock::now() + PATIENCE;
    const etcd::KeyRange key = etcd::RangeOfKey(endpoint_.prefix, name);
    std::optional<uint64_t> doubtful; /* what a write was conditional on that may or may not have been done */
    do {
        const etcd::RangeReply before = ReadPage(key, 0, deadline);
        const uint64_t revision = before.items.empty() ? 0 : before.items.front().revision;
        /* The key has changed since: either that was the doubtful write, or it came too late and never will be done,
           which is as if it had been done just before the other one. */
        if (doubtful && *doubtful != revision)
            return before.revision;
        if (!value && revision == 0)
            return std::nullopt;
        try {
            const std::string body = etcd::WriteRequest(key, value, revision);
            const auto reply = etcd::ReadWrite(AskNode("/v3/kv/txn", body));
            if (reply.is_done)
                return reply.revision;
            if (request_.MayHaveBeenRepeated()) /* who was first may have been this very write */
                doubtful = revision;
        } catch (const NotSent &) {
            UseNextNode(deadline);
        } catch (const StoreError &) {
            doubtful = revision;
            UseNextNode(deadline);
        }
    } while (Clock::now() < deadline);
    throw StoreError("others write the same key all the time");
}

uint64_t EtcdStore::Put(const Name &name, std::string_view value) {
    return *Write(name, value);
}

std::optional<uint64_t> EtcdStore::Delete(const Name &name) {
    return Write(name, std::nullopt);
}

std::optional<Item> EtcdStore::Get(const Name &name) {
    etcd::RangeReply reply = ReadPage(etcd::RangeOfKey(endpoint_.prefix, name), 0, Clock::now() + PATIENCE);
    if (reply.items.empty())
        return std::nullopt;
    return std::move(reply.items.front());
}

/* All pages are read at the revision of the first one. */
Snapshot EtcdStore::List(const std::string &table) {
    const auto deadline = Clock::now() + PATIENCE;
    etcd::KeyRange range = etcd::RangeOfTable(endpoint_.prefix, table);
    Snapshot snapshot;
    for (;;) {
        etcd::RangeReply page = ReadPage(range, snapshot.revision, deadline);
        if (snapshot.revision == 0)
            snapshot.revision = page.revision;
        snapshot.items.insert(snapshot.items.end(), std::make_move_iterator(page.items.begin()),
                              std::make_move_iterator(page.items.end()));
        if (page.is_last)
            return snapshot;
        range.first = page.last_key + '\0';
    }
}

} // namespace uvel::host::confdb
