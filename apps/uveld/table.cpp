#include "table.h"

namespace uveld {

nlohmann::json Table::ToJson() const {
    nlohmann::json columns = nlohmann::json::array();
    for (const Column &column : columns_)
        columns.push_back({{"name", column.name}, {"title", column.title}});
    return {{"columns", std::move(columns)}, {"rows", rows_}};
}

} // namespace uveld
