// uvelctl confdb get|put|del|watch: the configuration database.

#include <charconv>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <uvelhost/confdb_writer.h>

#include "commands.h"
#include "render.h"
#include "value_text.h"

namespace uvelctl {

namespace {

using nlohmann::json;

struct Closer {
    void operator()(DB_STORE_S *store) const { db_store_close(store); }
    void operator()(DB_WATCH_S *watch) const { db_watch_close(watch); }
};

using Store = std::unique_ptr<DB_STORE_S, Closer>;

struct Arguments {
    std::string endpoint = "shm:unix_emserver";
    std::string table, key, value;
    bool is_hex = false, is_u32 = false, is_file = false, is_raw = false;
    uint64_t most_events = 0;
    double most_seconds = 0;
};

void Check(uint32_t result) {
    if (result != DB_OK)
        throw Failure(db_last_error());
}

Store OpenStore(const Arguments &arguments) {
    DB_STORE_S *store = nullptr;
    Check(db_store_open(arguments.endpoint.c_str(), &store));
    return Store(store);
}

json ObjectOf(const std::string &table, const std::string &key, const std::string &value) {
    json object = {{"table", table}, {"key", key}};
    if (IsText(value))
        object["value"] = value;
    else
        object["hex"] = ToHex(value);
    return object;
}

std::string LowerCase(std::string text) {
    for (char &c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
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

void Write(const Options &options, const std::string &line, const json &object) {
    Write((options.json ? object.dump() : line) + "\n");
}

/* ---- get */

void GetOne(const Arguments &arguments, const Options &options) {
    std::string value(DB_VALUE_SIZE, '\0');
    uint32_t length = DB_VALUE_SIZE;
    const Store store = OpenStore(arguments);
    Check(db_store_get(store.get(), arguments.table.c_str(), arguments.key.c_str(), value.data(), &length));
    value.resize(length);
    if (arguments.is_raw)
        Write(value);
    else
        Write(options, Readable(value), ObjectOf(arguments.table, arguments.key, value));
}

void GetTable(const Arguments &arguments, const Options &options) {
    json found = {{"columns", json::array()}, {"rows", json::array()}};
    for (const char *title : {"Table", "Key", "Revision", "Value"})
        found["columns"].push_back({{"title", title}, {"name", LowerCase(title)}});
    const Store store = OpenStore(arguments);
    Check(db_store_list(
        store.get(), arguments.table.empty() ? nullptr : arguments.table.c_str(),
        [](void *context, const DB_RECORD_S *record) {
            (*static_cast<json *>(context))["rows"].push_back(
                {record->pszTable, record->stKv.pszKey, record->ullRevision, Readable(ValueOf(*record))});
        },
        &found));
    Write(options.json ? RenderJson(found) : RenderText(found));
}

/* ---- put */

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

std::string ValueToPut(const Arguments &arguments) {
    if (arguments.is_file)
        return ReadAll(arguments.value);
    if (arguments.is_hex) {
        if (const auto bytes = FromHex(arguments.value))
            return *bytes;
        throw Failure("'" + arguments.value + "': pairs of hexadecimal digits are expected");
    }
    if (!arguments.is_u32)
        return arguments.value;
    uint32_t number = 0;
    const char *end = arguments.value.data() + arguments.value.size();
    const auto [stop, error] = std::from_chars(arguments.value.data(), end, number);
    if (error != std::errc() || stop != end)
        throw Failure("'" + arguments.value + "': a number from 0 to 4294967295 is expected");
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

void Put(const Arguments &arguments, const Options &options) {
    const std::string value = ValueToPut(arguments);
    if (value.size() > DB_VALUE_SIZE)
        throw Failure("a value has at most 1048576 bytes");
    uint64_t revision = 0;
    const Store store = OpenStore(arguments);
    Check(db_store_put(store.get(), arguments.table.c_str(), arguments.key.c_str(), value.data(),
                       static_cast<uint32_t>(value.size()), &revision));
    Write(options, "revision " + std::to_string(revision), {{"revision", revision}});
}

void Delete(const Arguments &arguments, const Options &options) {
    uint64_t revision = 0;
    const Store store = OpenStore(arguments);
    Check(db_store_delete(store.get(), arguments.table.c_str(), arguments.key.c_str(), &revision));
    Write(options, "revision " + std::to_string(revision), {{"revision", revision}});
}

/* ---- watch */

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
        json object = ObjectOf(record.pszTable, record.stKv.pszKey, value);
        if (is_gone)
            object.erase("value");
        object["change"] = change;
        object["revision"] = record.ullRevision;
        Write(options,
              change + " " + record.pszTable + "/" + record.stKv.pszKey + (is_gone ? "" : " = " + Readable(value)),
              object);
        ++events;
    }
};

void WatchTable(const Arguments &arguments, const Options &options) {
    using Clock = std::chrono::steady_clock;
    const auto limit =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(arguments.most_seconds));
    const auto end = Clock::now() + limit;
    Watcher watcher{options, 0, nullptr};
    DB_WATCH_S *opened = nullptr;
    Check(db_watch_open(arguments.endpoint.c_str(), arguments.table.empty() ? nullptr : arguments.table.c_str(),
                        &Watcher::OnRecord, &watcher, &opened));
    const std::unique_ptr<DB_WATCH_S, Closer> watch(opened);
    while (arguments.most_events == 0 || watcher.events < arguments.most_events) {
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

} // namespace

void AddConfdb(CLI::App *app, const Options *options) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *confdb = app->add_subcommand("confdb", "The configuration database");
    confdb->require_subcommand(1);
    confdb
        ->add_option("-e,--endpoint", arguments->endpoint,
                     "sqlite:PATH, etcd://HOST:PORT,..., etcds://HOST:PORT,...?ca=FILE&cert=FILE&key=FILE "
                     "(default: the device's own, or what UVELHOST_CONFDB says)")
        ->option_text("ENDPOINT");
    const auto add = [&](const char *name, const char *about, auto run) {
        CLI::App *command = confdb->add_subcommand(name, about);
        command->fallthrough();
        command->callback([=] { run(*arguments, *options); });
        return command;
    };

    CLI::App *get = add("get", "A value, a table or everything", [](const Arguments &given, const Options &out) {
        given.key.empty() ? GetTable(given, out) : GetOne(given, out);
    });
    get->add_option("TABLE", arguments->table);
    get->add_option("KEY", arguments->key);
    get->add_flag("--raw", arguments->is_raw, "Write the bytes of the value and nothing else");

    CLI::App *put = add("put", "Write a value", Put);
    put->add_option("TABLE", arguments->table)->required();
    put->add_option("KEY", arguments->key)->required();
    put->add_option("VALUE", arguments->value)->required();
    CLI::Option *hex = put->add_flag("--hex", arguments->is_hex, "VALUE is hexadecimal: 02:1a:2b:3c:4d:5e");
    CLI::Option *u32 = put->add_flag("--u32", arguments->is_u32, "VALUE is a number, stored as 4 bytes");
    put->add_flag("--file", arguments->is_file, "VALUE is the name of a file (-: standard input)")
        ->excludes(hex)
        ->excludes(u32);
    u32->excludes(hex);

    CLI::App *del = add("del", "Delete a key", Delete);
    del->add_option("TABLE", arguments->table)->required();
    del->add_option("KEY", arguments->key)->required();

    CLI::App *watch = add("watch", "What is there, then every change as it comes", WatchTable);
    watch->add_option("TABLE", arguments->table);
    watch->add_option("--count", arguments->most_events, "End after so many lines")->option_text("N");
    watch->add_option("--time", arguments->most_seconds, "End after so many seconds")
        ->check(CLI::Range(0.001, 1e6))
        ->option_text("SECONDS");
}

} // namespace uvelctl
