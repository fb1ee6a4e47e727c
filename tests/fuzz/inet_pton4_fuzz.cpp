// IPv4 texts: the library's reader against a second one, and back from what the writer makes of the address.

#include <uvelcommon_base/kivo_inet.h>
#include <uvelcommon_base/kivo_ip.h>

#include "fuzz_input.h"
#include "inet_reference.h"

using inet_reference::Packed4;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text = TextOf(data, size);
    const ExactText exact(text);

    Packed4 packed = {0xEE, 0xEE, 0xEE, 0xEE};
    const std::optional<Packed4> expected = inet_reference::Read4(text);
    REQUIRE(kivo_inet_pton4(exact, packed.data()) == (expected ? 1 : 0));
    REQUIRE(packed == expected.value_or(Packed4{0xEE, 0xEE, 0xEE, 0xEE}));

    /* The host's reader accepts less, but nothing else. */
    uint32_t number = 0;
    if (SRV_StrToIpAddr(exact, &number) == 0) {
        REQUIRE(expected.has_value());
        uint32_t same = 0;
        for (const uint8_t byte : *expected)
            same = same << 8 | byte;
        REQUIRE(number == same);
    }
    if (!expected)
        return 0;

    char written[16];
    Packed4 back;
    REQUIRE(kivo_inet_ntop4(packed.data(), written, sizeof written) == written);
    REQUIRE(inet_reference::Write4(packed.data()) == written);
    REQUIRE(kivo_inet_pton4(written, back.data()) == 1);
    REQUIRE(back == packed);
    return 0;
}
