// The lenient reader of IPv6 groups: the library's against a second one, into buffers of every size around 16.

#include <cstring>

#include <uvelcommon_base/kivo_inet.h>
#include <uvelcommon_base/kivo_ip.h>

#include "fuzz_input.h"
#include "inet_reference.h"

using inet_reference::Packed6;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text = TextOf(data, size);
    const ExactText exact(text);

    for (const uint32_t room : {0u, 1u, 15u, 16u, 17u, 64u}) {
        const inet_reference::GroupsOnly expected = inet_reference::ReadGroupsOnly(text, room);
        const std::unique_ptr<uint8_t[]> buffer(new uint8_t[room]);
        std::memset(buffer.get(), 0xEE, room);
        REQUIRE(SRV_StrToIPv6(exact, buffer.get(), room) == expected.result);
        for (uint32_t i = 0; i < room; ++i)
            REQUIRE(buffer[i] == (expected.packed && i < 16 ? (*expected.packed)[i] : 0xEE));
    }

    /* What it reads is what the strict reader reads. */
    Packed6 lenient;
    Packed6 strict;
    lenient.fill(0xEE);
    strict = lenient;
    if (SRV_StrToIPv6(exact, lenient.data(), 16) == 0 && SRV_StrtoIpv6Addr(exact, strict.data()) == 0)
        REQUIRE(lenient == strict || text.find('.') != std::string::npos);
    return 0;
}
