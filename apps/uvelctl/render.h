/* Tables for people and for machines. */
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace uvelctl {

/* Columns under their titles; numbers stand at the right of theirs, "-" stands for none. */
std::string RenderText(const nlohmann::json &table);

/* A list of objects, one for each row, on lines of their own. */
std::string RenderJson(const nlohmann::json &table);

} // namespace uvelctl
