/* JSON of what uveld and uvelctl say to each other and to machines. */
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "table.h"

namespace uvel::inspection {

/* A line that is not what it should be. */
class NotUnderstood : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* The other side's reason not to do what it was asked for. */
class Refused : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* {"view": NAME, "arguments": [TEXT, ...]} */
struct Request {
    std::string view;
    std::vector<std::string> arguments;
};

std::string ToJson(const Request &request);

/* Throws NotUnderstood. */
Request ParseRequest(const std::string &line);

/* {"columns": [{"name", "title"}], "rows": [[...]]} */
std::string ToJson(const Table &table);

/* {"error": REASON} */
std::string ErrorToJson(const std::string &reason);

/* The table of an answer. Throws Refused for an error, NotUnderstood for anything else. */
Table ParseAnswer(const std::string &line);

/* {NAME: VALUE, ...} */
std::string ToJson(const std::map<std::string, Value> &members);

/* The same of a table's row, in the order of its columns. */
std::string ToJson(const std::vector<Column> &columns, const Table::Row &row);

/* Whether JSON can hold the text as it is: it is UTF-8. */
bool IsJsonText(const std::string &text);

} // namespace uvel::inspection
