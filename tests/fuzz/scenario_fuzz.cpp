// Scenarios that people write: refused with a place and a reason, or taken, and then tried on the model.

#include <cstring>

#include <uvelhost/scenario.h>

#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const ExactText text(TextOf(data, size));
    char error[256] = "";
    SCN_SCENARIO *scenario = SCN_LoadText(text, "scenario", error, sizeof error);
    if (scenario == nullptr) {
        REQUIRE(error[0] != '\0' && std::memchr(error, '\0', sizeof error) != nullptr);
        return 0;
    }
    REQUIRE(error[0] == '\0');
    SCN_Free(scenario);
    return 0;
}
