#include "render.h"

#include <algorithm>
#include <concepts>
#include <cstdio>
#include <inspection/json_text.h>
#include <vector>

namespace uvelctl {

namespace {

struct TextMaker {
    std::string operator()(std::monostate) const { return "-"; }
    std::string operator()(bool truth) const { return truth ? "yes" : "no"; }
    std::string operator()(std::integral auto number) const { return std::to_string(number); }
    std::string operator()(const std::string &text) const { return text; }
    std::string operator()(double number) const {
        char text[32];
        std::snprintf(text, sizeof text, "%.3f", number);
        return text;
    }
    std::string operator()(const Value::List &values) const {
        std::string list;
        for (const Value &value : values)
            list += (list.empty() ? "" : ",") + std::visit(*this, value.Get());
        return list.empty() ? "-" : list;
    }
};

struct Width {
    size_t characters = 0;
    bool is_number = true; /* every value in it is a number or none */
};

std::string Padded(const std::string &text, const Width &width) {
    const std::string padding(width.characters - std::min(width.characters, text.size()), ' ');
    return width.is_number ? padding + text : text + padding;
}

} // namespace

std::string RenderText(const Table &table) {
    std::vector<std::vector<std::string>> lines(1);
    std::vector<Width> widths;
    for (const uvel::inspection::Column &column : table.columns) {
        lines[0].push_back(column.title);
        widths.push_back({column.title.size(), true});
    }
    for (const Table::Row &row : table.rows) {
        std::vector<std::string> line;
        for (size_t i = 0; i < widths.size() && i < row.size(); ++i) {
            line.push_back(std::visit(TextMaker(), row[i].Get()));
            widths[i].characters = std::max(widths[i].characters, line.back().size());
            widths[i].is_number = widths[i].is_number && (row[i].IsNumber() || row[i].IsNone());
        }
        lines.push_back(std::move(line));
    }
    std::string text;
    for (const auto &line : lines) {
        std::string shown;
        for (size_t i = 0; i < line.size(); ++i)
            shown += (i == 0 ? "" : "  ") + Padded(line[i], widths[i]);
        shown.erase(shown.find_last_not_of(' ') + 1);
        text += shown + "\n";
    }
    return text;
}

std::string RenderJson(const Table &table) {
    std::string text = "[";
    const char *separator = "\n";
    for (const Table::Row &row : table.rows) {
        text += separator + ToJson(table.columns, row);
        separator = ",\n";
    }
    return text + "\n]\n";
}

std::string Render(const Options &options, const Table &table) {
    return options.json ? RenderJson(table) : RenderText(table);
}

} // namespace uvelctl
