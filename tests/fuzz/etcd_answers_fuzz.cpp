// What an etcd server may say, or who poses as one: it is refused with a reason, or holds nothing but proper names.

#include <string_view>

#include "../../host/confdb/etcd_messages.h"
#include "fuzz_input.h"

using namespace uvel::host::confdb;

static void RequireProperNames(const std::vector<Item> &items) {
    for (const Item &item : items) {
        REQUIRE(!item.name.table.empty() && item.name.table.find('/') == std::string::npos);
        REQUIRE(!item.name.key.empty());
        REQUIRE((item.name.table + item.name.key).find('\0') == std::string::npos);
    }
}

template <typename Read>
static void Try(Read read) {
    try {
        read();
    } catch (const StoreError &) {
        /* refused */
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    Try([&] {
        const etcd::RangeReply reply = etcd::ReadRange(text, "/uvel/");
        RequireProperNames(reply.items);
        REQUIRE(reply.is_last || !reply.last_key.empty());
    });
    Try([&] {
        const etcd::WatchReply reply = etcd::ReadWatchLine(text, "/uvel/");
        RequireProperNames(reply.changes);
        REQUIRE(!reply.is_progress || reply.changes.empty());
    });
    Try([&] { (void)etcd::ReadWrite(text); });
    return 0;
}
