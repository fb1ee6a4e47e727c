// Lines on the control socket of uveld: each is answered by one line of JSON.

#include <nlohmann/json.hpp>

#include "fuzz_input.h"
#include "inspector.h"

static void Ask(const std::string &line) {
    static const uveld::Modules modules;
    const std::string answer = uveld::AnswerRequest({&modules, false}, line);
    REQUIRE(!answer.empty() && answer.find('\n') == answer.size() - 1);
    const auto parsed = nlohmann::json::parse(answer, nullptr, false);
    REQUIRE(parsed.is_object() && (parsed.contains("error") != parsed.contains("rows")));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    for (std::size_t begin = 0; begin <= bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', begin), bytes.size());
        Ask(bytes.substr(begin, end - begin));
        begin = end + 1;
    }
    return 0;
}
