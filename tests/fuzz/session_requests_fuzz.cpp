// Lines on the socket of the session module: each is answered by one line, and the digest counts what was answered
// with ok.

#include <algorithm>
#include <uvelcommon_base/kivo_types.h>

#include "commands.h"
#include "fuzz_input.h"

using session_table::Sessions;

/* Answers every line and keeps count of the sessions by the answers alone. */
static void AnswerAll(const std::string &bytes) {
    session_table::Settings settings;
    settings.max_sessions = 8;
    Sessions sessions(KIVO_LIB_MID, settings);
    uint32_t count = 0;
    for (std::size_t begin = 0; begin <= bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', begin), bytes.size());
        const std::string line = bytes.substr(begin, end - begin);
        const std::string answer = session_table::Answer(&sessions, line, 5);
        REQUIRE(!answer.empty() && answer.find('\n') == std::string::npos);
        if (answer == session_table::DONE)
            count += line.find("logon") < line.find("logoff") ? 1 : UINT32_MAX;
        REQUIRE(sessions.GetDigest().count == count && count <= 8);
        begin = end + 1;
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    AnswerAll(std::string(reinterpret_cast<const char *>(data), size));
    return 0;
}
