/* Tables for people and for machines. */
#pragma once

#include <inspection/table.h>
#include <string>

#include "options.h"

namespace uvelctl {

using uvel::inspection::Table;
using uvel::inspection::Value;

/* Columns under their titles; numbers stand at the right of theirs, "-" stands for none. */
std::string RenderText(const Table &table);

/* A list of objects, one for each row, on lines of their own. */
std::string RenderJson(const Table &table);

/* The one that the options ask for. */
std::string Render(const Options &options, const Table &table);

} // namespace uvelctl
