/* The views of a running uveld. Each gives a table; all are called on uveld's main thread. */
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <inspection/table.h>

#include "modules.h"

namespace uveld {

using uvel::inspection::Table;
using uvel::inspection::Value;

/* What a view may need of uveld itself. The host and the library are asked directly. */
struct ViewContext {
    const Modules *modules;
    bool has_link;
};

/* A view that cannot answer says why. */
class NoView : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

using View = Table (*)(const ViewContext &context, const std::vector<std::string> &arguments);

struct NamedView {
    View view;
    std::string help; /* one line */
};

/* All views by name. */
const std::map<std::string, NamedView> &Views();

/* The name of the module that a module id belongs to, or the id in hexadecimal. */
std::string OwnerOf(const ViewContext &context, uint32_t mid);

/* The name of a function: its symbol, or file and offset where it has none; empty for null. */
std::string FunctionName(const void *function);

Table ShowCallbacks(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowQueues(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowMemory(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowHooks(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowSettings(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowPools(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowModules(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowModule(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowViews(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowDevice(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowInterfaces(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowVlans(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowPorts(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowTrunks(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowVrfs(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowBoards(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowListeners(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowDatabase(const ViewContext &context, const std::vector<std::string> &arguments);
Table ShowStandby(const ViewContext &context, const std::vector<std::string> &arguments);

} // namespace uveld
