#include "json_text.h"

#include <nlohmann/json.hpp>

namespace uvel::inspection {

namespace {

using Json = nlohmann::ordered_json;

/* Texts come from everywhere; what is no UTF-8 in them must not keep the rest from being told. */
std::string Dump(const Json &json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json ToValue(const Value &value) {
    return std::visit(
        [](const auto &held) -> Json {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>) {
                return nullptr;
            } else if constexpr (std::is_same_v<Held, Value::List>) {
                Json list = Json::array();
                for (const Value &item : held)
                    list.push_back(ToValue(item));
                return list;
            } else {
                return held;
            }
        },
        value.Get());
}

Value FromJson(const Json &json) {
    switch (json.type()) {
    case Json::value_t::boolean:
        return json.get<bool>();
    case Json::value_t::number_unsigned:
        return json.get<uint64_t>();
    case Json::value_t::number_integer:
        return json.get<int64_t>();
    case Json::value_t::number_float:
        return json.get<double>();
    case Json::value_t::string:
        return json.get<std::string>();
    case Json::value_t::array: {
        Value::List list;
        for (const Json &item : json)
            list.push_back(FromJson(item));
        return list;
    }
    case Json::value_t::null:
        return {};
    default:
        return Dump(json);
    }
}

} // namespace

std::string ToJson(const Request &request) {
    return Dump({{"view", request.view}, {"arguments", request.arguments}});
}

Request ParseRequest(const std::string &line) {
    try {
        const Json json = Json::parse(line);
        return {json.at("view").get<std::string>(), json.value("arguments", std::vector<std::string>())};
    } catch (const Json::exception &error) {
        throw NotUnderstood(error.what());
    }
}

std::string ToJson(const Table &table) {
    Json columns = Json::array();
    for (const Column &column : table.columns)
        columns.push_back({{"name", column.name}, {"title", column.title}});
    Json rows = Json::array();
    for (const Table::Row &row : table.rows)
        rows.push_back(ToValue(row));
    return Dump({{"columns", std::move(columns)}, {"rows", std::move(rows)}});
}

std::string ErrorToJson(const std::string &reason) {
    return Dump({{"error", reason}});
}

Table ParseAnswer(const std::string &line) {
    try {
        const Json json = Json::parse(line);
        if (json.contains("error"))
            throw Refused(json["error"].get<std::string>());
        Table table({});
        for (const Json &column : json.at("columns"))
            table.columns.push_back({column.at("name").get<std::string>(), column.at("title").get<std::string>()});
        for (const Json &row : json.at("rows")) {
            Table::Row values;
            for (const Json &value : row)
                values.push_back(FromJson(value));
            table.Add(std::move(values));
        }
        return table;
    } catch (const Json::exception &error) {
        throw NotUnderstood(error.what());
    }
}

std::string ToJson(const std::map<std::string, Value> &members) {
    Json object = Json::object();
    for (const auto &[name, value] : members)
        object[name] = ToValue(value);
    return Dump(object);
}

std::string ToJson(const std::vector<Column> &columns, const Table::Row &row) {
    Json object = Json::object();
    for (size_t i = 0; i < columns.size() && i < row.size(); ++i)
        object[columns[i].name] = ToValue(row[i]);
    return Dump(object);
}

bool IsJsonText(const std::string &text) {
    try {
        (void)Json(text).dump();
        return true;
    } catch (const Json::exception &) {
        return false;
    }
}

} // namespace uvel::inspection
