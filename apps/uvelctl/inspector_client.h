/* Asks a running uveld through its socket. */
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "options.h"

namespace uvelctl {

class InspectorClient {
  public:
    /* Connects to the uveld of the run directory. Throws Failure. */
    explicit InspectorClient(const Options &options);
    ~InspectorClient();
    InspectorClient(const InspectorClient &) = delete;
    InspectorClient &operator=(const InspectorClient &) = delete;

    /* The table of a view: {"columns": [{"name", "title"}], "rows": [[...]]}. Throws Failure with uveld's reason. */
    nlohmann::json Ask(const std::string &view, const std::vector<std::string> &arguments);

  private:
    std::string path_;
    int descriptor_;
    std::string received_;
};

} // namespace uvelctl
