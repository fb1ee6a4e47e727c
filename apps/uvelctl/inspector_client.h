/* Asks a running uveld through its socket. */
#pragma once

#include <inspection/json_text.h>
#include <string>

#include "options.h"

namespace uvelctl {

class InspectorClient {
  public:
    /* Connects to the uveld of the run directory. Throws Failure. */
    explicit InspectorClient(const Options &options);
    ~InspectorClient();
    InspectorClient(const InspectorClient &) = delete;
    InspectorClient &operator=(const InspectorClient &) = delete;

    /* The table of a view. Throws Failure, with uveld's reason where it gave one. */
    uvel::inspection::Table Ask(const uvel::inspection::Request &request);

  private:
    std::string path_;
    int descriptor_;
    std::string received_;
};

} // namespace uvelctl
