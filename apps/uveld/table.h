/* What an inspector's view answers with: a table that uvelctl can print, and that a machine can read, without knowing
 * the view. */
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace uveld {

class Table {
  public:
    struct Column {
        std::string name;  /* key of the machine's form */
        std::string title; /* head of the column for people */
    };

    explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

    /* One value for each column: texts, numbers, truth values, lists of these, or null for "none". */
    void Add(std::vector<nlohmann::json> row) { rows_.push_back(std::move(row)); }

    /* {"columns": [{"name", "title"}], "rows": [[...]]} */
    nlohmann::json ToJson() const;

  private:
    std::vector<Column> columns_;
    std::vector<std::vector<nlohmann::json>> rows_;
};

} // namespace uveld
