// Configuration files of uveld: refused with a place and a reason, or within the limits that the documents name.

#include <cstring>
#include <string_view>

#include <uvelcommon_base/kivo_settings.h>
#include <yaml/document.h>

#include "configuration.h"
#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    try {
        const uveld::Configuration read = uveld::ParseConfiguration(text, "uveld.yaml", "/nowhere");
        REQUIRE(!read.run_directory.empty());
        REQUIRE(read.process.event_queue_depth != 0);
        REQUIRE(read.feeder.speed != 0);
        REQUIRE(!read.standby || !(read.standby->listen.empty() && read.standby->peer.empty()));
    } catch (const uvel::yaml::WrongDocument &wrong) {
        REQUIRE(std::string_view(wrong.what()).starts_with("uveld.yaml:"));
    }
    return 0;
}
