#include "confdb/etcd_messages.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "confdb/base64.h"

namespace uvel::host::confdb::etcd {

namespace {

using Json = nlohmann::json;

[[noreturn]] void NoSense(const char *what) {
    throw StoreError(std::string("an answer makes no sense: ") + what);
}

const Json &Field(const Json &object, const char *name) {
    static const Json none;
    const auto found = object.find(name);
    return found == object.end() ? none : *found;
}

/* A missing number is 0: that is how zeros are written. */
uint64_t NumberIn(const Json &object, const char *name) {
    const Json &field = Field(object, name);
    if (field.is_null())
        return 0;
    if (field.is_number_unsigned())
        return field.get<uint64_t>();
    uint64_t number = 0;
    if (field.is_string()) {
        const auto &text = field.get_ref<const std::string &>();
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error == std::errc() && end == text.data() + text.size() && !text.empty())
            return number;
    }
    NoSense(name);
}

bool FlagIn(const Json &object, const char *name) {
    const Json &field = Field(object, name);
    return field.is_boolean() && field.get<bool>();
}

std::string TextIn(const Json &object, const char *name) {
    const Json &field = Field(object, name);
    return field.is_string() ? field.get<std::string>() : "";
}

std::string BytesIn(const Json &object, const char *name) {
    const auto bytes = FromBase64(TextIn(object, name));
    if (!bytes)
        NoSense(name);
    return *bytes;
}

/* The members of a list; none when it is missing. */
const Json &ListIn(const Json &object, const char *name) {
    static const Json none = Json::array();
    const Json &field = Field(object, name);
    if (field.is_null())
        return none;
    if (!field.is_array())
        NoSense(name);
    return field;
}

Json Parse(std::string_view text) {
    Json parsed = Json::parse(text, nullptr, false);
    if (!parsed.is_object())
        NoSense("no JSON object");
    const Json &error = Field(parsed, "error");
    if (error.is_null())
        return parsed;
    throw StoreError(error.is_object() ? TextIn(error, "message") : TextIn(parsed, "error"));
}

const Json &Header(const Json &object) {
    const Json &header = Field(object, "header");
    if (!header.is_object())
        NoSense("header");
    return header;
}

std::optional<Name> NameOfKey(std::string_view key, const std::string &prefix) {
    if (!key.starts_with(prefix) || key.find('\0') != key.npos)
        return std::nullopt;
    key.remove_prefix(prefix.size());
    const std::size_t slash = key.find('/');
    if (slash == key.npos || slash == 0 || slash + 1 == key.size())
        return std::nullopt;
    return Name{std::string(key.substr(0, slash)), std::string(key.substr(slash + 1))};
}

void AddItem(std::vector<Item> &items, const Json &kv, bool deleted, const std::string &prefix) {
    if (!kv.is_object())
        NoSense("kv");
    if (auto name = NameOfKey(BytesIn(kv, "key"), prefix))
        items.push_back({*std::move(name), BytesIn(kv, "value"), NumberIn(kv, "mod_revision"), deleted});
}

/* The first key that does not begin like this; '/' at the end has a successor in any case. */
std::string EndOfPrefix(std::string prefix) {
    ++prefix.back();
    return prefix;
}

Json KeyFields(const KeyRange &range) {
    Json fields = {{"key", ToBase64(range.first)}};
    if (!range.end.empty())
        fields["range_end"] = ToBase64(range.end);
    return fields;
}

} // namespace

KeyRange RangeOfTable(const std::string &prefix, const std::string &table) {
    const std::string first = table.empty() ? prefix : prefix + table + "/";
    return {first, EndOfPrefix(first)};
}

KeyRange RangeOfKey(const std::string &prefix, const Name &name) {
    return {prefix + name.table + "/" + name.key, ""};
}

std::string RangeRequest(const KeyRange &range, uint64_t revision, unsigned limit) {
    Json request = KeyFields(range);
    request["limit"] = std::to_string(limit);
    request["revision"] = std::to_string(revision);
    return request.dump();
}

RangeReply ReadRange(std::string_view text, const std::string &prefix) {
    const Json json = Parse(text);
    RangeReply reply;
    reply.revision = NumberIn(Header(json), "revision");
    reply.cluster = NumberIn(Header(json), "cluster_id");
    const Json &kvs = ListIn(json, "kvs");
    for (const Json &kv : kvs)
        AddItem(reply.items, kv, false, prefix);
    reply.is_last = !FlagIn(json, "more") || kvs.empty();
    if (!kvs.empty())
        reply.last_key = BytesIn(kvs.back(), "key");
    if (!reply.is_last && reply.last_key.empty()) /* the next page would be this one again, without end */
        NoSense("more");
    return reply;
}

std::string WriteRequest(const KeyRange &key, std::optional<std::string_view> value, uint64_t unchanged_since) {
    const std::string name = ToBase64(key.first);
    const Json compare = {
        {"key", name}, {"target", "MOD"}, {"result", "EQUAL"}, {"mod_revision", std::to_string(unchanged_since)}};
    const Json operation = value ? Json{{"request_put", {{"key", name}, {"value", ToBase64(*value)}}}}
                                 : Json{{"request_delete_range", {{"key", name}}}};
    return Json{{"compare", Json::array({compare})}, {"success", Json::array({operation})}}.dump();
}

WriteReply ReadWrite(std::string_view text) {
    const Json json = Parse(text);
    return {FlagIn(json, "succeeded"), NumberIn(Header(json), "revision")};
}

std::string WatchRequest(const KeyRange &range, uint64_t from_revision) {
    Json request = KeyFields(range);
    request["start_revision"] = std::to_string(from_revision);
    request["progress_notify"] = true;
    return Json{{"create_request", request}}.dump();
}

WatchReply ReadWatchLine(std::string_view line, const std::string &prefix) {
    const Json json = Parse(line);
    const Json &result = Field(json, "result");
    if (!result.is_object())
        NoSense("result");
    WatchReply reply;
    reply.revision = NumberIn(Header(result), "revision");
    reply.cluster = NumberIn(Header(result), "cluster_id");
    reply.is_compacted = NumberIn(result, "compact_revision") != 0;
    if (FlagIn(result, "canceled") && !reply.is_compacted)
        throw StoreError("the watch was ended: " + TextIn(result, "cancel_reason"));
    reply.is_created = FlagIn(result, "created");
    const Json &events = ListIn(result, "events");
    for (const Json &event : events)
        AddItem(reply.changes, Field(event, "kv"), TextIn(event, "type") == "DELETE", prefix);
    reply.is_progress = events.empty() && !reply.is_created && !reply.is_compacted;
    return reply;
}

} // namespace uvel::host::confdb::etcd
