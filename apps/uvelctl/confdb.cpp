// uvelctl confdb get|put|del|watch: the configuration database.

#include <charconv>
#include <chrono>
#include <cstring>
#include <fstream>
#include <inspection/json_text.h>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <poll.h>
#include <uvelhost/confdb_writer.h>

#include "commands.h"
#include "render.h"
#include "value_text.h"

namespace uvelctl {

namespace {

using Members = std::map<std::string, Value>; /* of the machine's form */

struct Closer {
    void operator()(DB_STORE_S *store) const { db_store_close(store); }
    void operator()(DB_WATCH_S *watch) const { db_watch_close(watch); }
};

using Store = std::unique_ptr<DB_STORE_S, Closer>;

void Check(uint32_t result) {
    if (result != DB_OK)
        throw Failure(db_last_error());
}

Store OpenStore(const DatabaseRequest &request) {
    DB_STORE_S *store = nullptr;
    Check(db_store_open(request.endpoint.c_str(), &store));
    return Store(store);
}

Members MembersOf(const std::string &table, const std::string &key, const std::string &value) {
    if (IsText(value))
        return {{"table", table}, {"key", key}, {"value", value}};
    return {{"table", table}, {"key", key}, {"hex", ToHex(value)}};
}

std::string ValueOf(const DB_RECORD_S &record) {
    const auto *bytes = static_cast<const char *>(record.stKv.pValue);
    return {bytes, bytes + record.stKv.ulValueLength};
}

/* Out as soon as it is said: a watch may be read by a program. */
void Write(const std::string &bytes) {
    if (!(std::cout << bytes << std::flush))
        throw Failure("the output cannot be written");
}

void Write(const Options &options, const std::string &line, const Members &members) {
    Write((options.json ? ToJson(members) : line) + "\n");
}

/* ---- get */

void GetOne(const Options &options, const DatabaseRequest &request) {
    std::string value(DB_VALUE_SIZE, '\0');
    uint32_t length = DB_VALUE_SIZE;
    const Store store = OpenStore(request);
    Check(db_store_get(store.get(), request.table.c_str(), request.key.c_str(), value.data(), &length));
    value.resize(length);
    if (request.is_raw)
        Write(value);
    else
        Write(options, Readable(value), MembersOf(request.table, request.key, value));
}

void GetTable(const Options &options, const DatabaseRequest &request) {
    Table found({{"table", "Table"}, {"key", "Key"}, {"revision", "Revision"}, {"value", "Value"}});
    const Store store = OpenStore(request);
    Check(db_store_list(
        store.get(), request.table.empty() ? nullptr : request.table.c_str(),
        [](void *context, const DB_RECORD_S *record) {
            static_cast<Table *>(context)->Add(
                {record->pszTable, record->stKv.pszKey, record->ullRevision, Readable(ValueOf(*record))});
        },
        &found));
    Write(Render(options, found));
}

} // namespace

void GetFromDatabase(const Options &options, const DatabaseRequest &request) {
    request.key.empty() ? GetTable(options, request) : GetOne(options, request);
}

/* ---- put */

namespace {

std::string ReadAll(const std::string &name) {
    std::ifstream file;
    if (name != "-")
        file.open(name, std::ios::binary);
    std::istream &stream = name == "-" ? std::cin : file;
    std::string bytes(std::istreambuf_iterator<char>(stream), {});
    if (!stream)
        throw Failure(name + " cannot be read");
    return bytes;
}

std::string ValueToPut(const DatabaseRequest &request) {
    if (request.is_file)
        return ReadAll(request.value);
    if (request.is_hex) {
        if (const auto bytes = FromHex(request.value))
            return *bytes;
        throw Failure("'" + request.value + "': pairs of hexadecimal digits are expected");
    }
    if (!request.is_u32)
        return request.value;
    uint32_t number = 0;
    const char *end = request.value.data() + request.value.size();
    const auto [stop, error] = std::from_chars(request.value.data(), end, number);
    if (error != std::errc() || stop != end)
        throw Failure("'" + request.value + "': a number from 0 to 4294967295 is expected");
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

} // namespace

void PutIntoDatabase(const Options &options, const DatabaseRequest &request) {
    const std::string value = ValueToPut(request);
    if (value.size() > DB_VALUE_SIZE)
        throw Failure("a value has at most 1048576 bytes");
    uint64_t revision = 0;
    const Store store = OpenStore(request);
    Check(db_store_put(store.get(), request.table.c_str(), request.key.c_str(), value.data(),
                       static_cast<uint32_t>(value.size()), &revision));
    Write(options, "revision " + std::to_string(revision), {{"revision", revision}});
}

void DeleteFromDatabase(const Options &options, const DatabaseRequest &request) {
    uint64_t revision = 0;
    const Store store = OpenStore(request);
    Check(db_store_delete(store.get(), request.table.c_str(), request.key.c_str(), &revision));
    Write(options, "revision " + std::to_string(revision), {{"revision", revision}});
}

/* ---- watch */

namespace {

const char *NameOf(uint32_t change) {
    switch (change) {
    case DB_CHANGE_PRESENT:
        return "present";
    case DB_CHANGE_CREATED:
        return "created";
    case DB_CHANGE_CHANGED:
        return "changed";
    default:
        return "deleted";
    }
}

struct Watcher {
    const Options &options;
    uint64_t events = 0;
    std::exception_ptr failure; /* not to be thrown through the database client */

    static void OnRecord(void *context, const DB_RECORD_S *record) {
        auto &self = *static_cast<Watcher *>(context);
        try {
            self.Show(*record);
        } catch (const Failure &) {
            self.failure = std::current_exception();
        }
    }

  private:
    void Show(const DB_RECORD_S &record) {
        const bool is_gone = record.stKv.ulChange == DB_CHANGE_DELETED;
        const std::string change = NameOf(record.stKv.ulChange);
        const std::string value = ValueOf(record);
        Members members = MembersOf(record.pszTable, record.stKv.pszKey, value);
        if (is_gone)
            members.erase("value");
        members["change"] = change;
        members["revision"] = record.ullRevision;
        Write(options,
              change + " " + record.pszTable + "/" + record.stKv.pszKey + (is_gone ? "" : " = " + Readable(value)),
              members);
        ++events;
    }
};

} // namespace

void WatchDatabase(const Options &options, const DatabaseRequest &request) {
    using Clock = std::chrono::steady_clock;
    const auto limit =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(request.most_seconds));
    const auto end = Clock::now() + limit;
    Watcher watcher{options, 0, nullptr};
    DB_WATCH_S *opened = nullptr;
    Check(db_watch_open(request.endpoint.c_str(), request.table.empty() ? nullptr : request.table.c_str(),
                        &Watcher::OnRecord, &watcher, &opened));
    const std::unique_ptr<DB_WATCH_S, Closer> watch(opened);
    while (request.most_events == 0 || watcher.events < request.most_events) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        if (limit.count() > 0 && left <= 0)
            return;
        pollfd ready{db_watch_descriptor(watch.get()), POLLIN, 0};
        if (poll(&ready, 1, limit.count() > 0 ? static_cast<int>(left) : -1) > 0)
            Check(db_watch_handle(watch.get()));
        if (watcher.failure)
            std::rethrow_exception(watcher.failure);
    }
}

} // namespace uvelctl
