/* The module's requests: one text line each, answered by one line.
 *
 *     logon MAC NAME IFINDEX VLAN [IPV4|-] [IPV6|-]    ok | error REASON
 *     logoff MAC                                       ok | error REASON
 *     show MAC                                         session ... | error REASON
 *     digest                                           digest COUNT SUM
 *
 * MAC addresses as 021a-2b3c-4d5e; VLAN 0 for none. */
#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <string_view>

#include "sessions.h"

namespace session_table {

constexpr size_t MAX_LINE_BYTES = 512;
constexpr char DONE[] = "ok"; /* answer to a change that was made */

/* The answer to a line, without its end. `now` is the start time of a session that logs on. */
std::string Answer(Sessions *sessions, std::string_view line, uint32_t now);

/* What became of a file of requests. */
struct FileResult {
    uint32_t done = 0;
    uint32_t refused = 0;
    std::string first_refused; /* "LINE: REASON" */
};

/* Carries out the requests of a file, one a line; empty lines and lines that begin with # mean nothing. */
FileResult CarryOut(Sessions *sessions, std::istream *file, uint32_t now);

} // namespace session_table
