// IPv6 texts: the library's reader against a second one, and back from what the writer makes of the address. The input
// serves as a text and as an address with a room for its text.

#include <algorithm>
#include <cstring>

#include <uvelcommon_base/kivo_inet.h>

#include "fuzz_input.h"
#include "inet_reference.h"

using inet_reference::Packed6;

static constexpr std::size_t ROOM = KIVO_INET_V6_ROOM;

/* Writes the address into a room of this size and reads the text again. */
static void CheckWriter(const Packed6 &packed, std::size_t room) {
    const std::string expected = inet_reference::Write6(packed);
    const std::unique_ptr<char[]> text(new char[room + 1]);
    std::memset(text.get(), '#', room + 1);
    const char *written = kivo_inet_ntop6(packed.data(), text.get(), static_cast<uint32_t>(room));
    const std::size_t used = written == nullptr ? 0 : expected.size() + 1;
    REQUIRE((written != nullptr) == (expected.size() < room));
    REQUIRE(written == nullptr || (written == text.get() && expected == written));
    REQUIRE(std::count(text.get() + used, text.get() + room + 1, '#') == static_cast<std::ptrdiff_t>(room + 1 - used));

    Packed6 back;
    REQUIRE(kivo_inet_pton6(ExactText(expected), back.data()) == 1);
    REQUIRE(back == packed);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text = TextOf(data, size);
    const ExactText exact(text);

    Packed6 packed;
    packed.fill(0xEE);
    const Packed6 untouched = packed;
    const std::optional<Packed6> expected = inet_reference::Read6(text);
    REQUIRE(kivo_inet_pton6(exact, packed.data()) == (expected ? 1 : 0));
    REQUIRE(packed == expected.value_or(untouched));
    if (expected)
        CheckWriter(packed, ROOM);

    Packed6 raw{};
    std::copy_n(data, std::min(size, raw.size()), raw.begin());
    CheckWriter(raw, size > raw.size() ? data[raw.size()] % (2 * ROOM) : ROOM);
    return 0;
}
