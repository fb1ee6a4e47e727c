#include "render.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace uvelctl {

namespace {

std::string TextOf(const nlohmann::json &value) {
    if (value.is_null())
        return "-";
    if (value.is_boolean())
        return value.get<bool>() ? "yes" : "no";
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number_float()) {
        char text[32];
        std::snprintf(text, sizeof text, "%.3f", value.get<double>());
        return text;
    }
    if (value.is_array()) {
        std::string list;
        for (const auto &item : value)
            list += (list.empty() ? "" : ",") + TextOf(item);
        return list.empty() ? "-" : list;
    }
    return value.dump();
}

struct Column {
    size_t width = 0;
    bool is_number = true; /* every value in it is a number or none */
};

std::string Padded(const std::string &text, const Column &column) {
    const std::string padding(column.width - std::min(column.width, text.size()), ' ');
    return column.is_number ? padding + text : text + padding;
}

} // namespace

std::string RenderText(const nlohmann::json &table) {
    std::vector<std::vector<std::string>> lines(1);
    std::vector<Column> columns;
    for (const auto &column : table["columns"]) {
        lines[0].push_back(column["title"].get<std::string>());
        columns.push_back({lines[0].back().size(), true});
    }
    for (const auto &row : table["rows"]) {
        std::vector<std::string> line;
        for (size_t i = 0; i < columns.size() && i < row.size(); ++i) {
            line.push_back(TextOf(row[i]));
            columns[i].width = std::max(columns[i].width, line.back().size());
            columns[i].is_number = columns[i].is_number && (row[i].is_number() || row[i].is_null());
        }
        lines.push_back(std::move(line));
    }
    std::string text;
    for (const auto &line : lines) {
        std::string shown;
        for (size_t i = 0; i < line.size(); ++i)
            shown += (i == 0 ? "" : "  ") + Padded(line[i], columns[i]);
        shown.erase(shown.find_last_not_of(' ') + 1);
        text += shown + "\n";
    }
    return text;
}

std::string RenderJson(const nlohmann::json &table) {
    std::string text = "[";
    const char *separator = "\n";
    for (const auto &row : table["rows"]) {
        nlohmann::ordered_json object;
        for (size_t i = 0; i < table["columns"].size() && i < row.size(); ++i)
            object[table["columns"][i]["name"].get<std::string>()] = row[i];
        text += separator + object.dump();
        separator = ",\n";
    }
    return text + "\n]\n";
}

} // namespace uvelctl
