/* Requests to etcd's HTTP gateway and its answers: JSON with 64-bit numbers as text and bytes in base64.
 *
 * A table's key is kept under PREFIX + table + '/' + key; what does not look like that below the prefix is not ours and
 * is passed over. Reading throws StoreError for an answer that reports an error and for one that makes no sense. */
#ifndef UVEL_HOST_CONFDB_ETCD_MESSAGES_H
#define UVEL_HOST_CONFDB_ETCD_MESSAGES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "confdb/item.h"

namespace uvel::host::confdb::etcd {

/* Keys from first (included) to end (not included); without an end only the first. */
struct KeyRange {
    std::string first;
    std::string end;
};

KeyRange RangeOfTable(const std::string &prefix, const std::string &table); /* empty table: all */
KeyRange RangeOfKey(const std::string &prefix, const Name &name);

/* Keys in a page: the longest values of that many still make an answer of bearable size. */
inline constexpr unsigned PAGE = 100;

/* A page of at most `limit` keys as they were at a revision (0: now). */
std::string RangeRequest(const KeyRange &range, uint64_t revision, unsigned limit);

struct RangeReply {
    std::vector<Item> items;
    uint64_t revision = 0; /* of the whole store */
    uint64_t cluster = 0;
    bool is_last = true;  /* no page follows */
    std::string last_key; /* of this page, with the prefix */
};
RangeReply ReadRange(std::string_view text, const std::string &prefix);

/* Writes or (no value) deletes a key if its latest change is still that of a revision (0: it is not there). */
std::string WriteRequest(const KeyRange &key, std::optional<std::string_view> value, uint64_t unchanged_since);

struct WriteReply {
    bool is_done = false; /* false: somebody else was first */
    uint64_t revision = 0;
};
WriteReply ReadWrite(std::string_view text);

/* All changes from a revision on. */
std::string WatchRequest(const KeyRange &range, uint64_t from_revision);

struct WatchReply {
    std::vector<Item> changes; /* whole revisions, in their order */
    uint64_t revision = 0;     /* of the store when the answer was written */
    uint64_t cluster = 0;
    bool is_created = false;   /* the watch begins */
    bool is_progress = false;  /* nothing has changed up to `revision` */
    bool is_compacted = false; /* the watch ends: what it asked for is no longer kept */
};
WatchReply ReadWatchLine(std::string_view line, const std::string &prefix);

} // namespace uvel::host::confdb::etcd

#endif
