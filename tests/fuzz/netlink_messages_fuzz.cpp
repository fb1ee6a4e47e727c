// What a netlink socket may deliver: nothing outside the messages is read, and what was understood makes sense.

#include <cstring>

#include "../../host/netlink/messages.h"
#include "fuzz_input.h"

using namespace uvel::host::netlink;

static void Read(const nlmsghdr *message) {
    Link link;
    if (ReadLink(message, link)) {
        REQUIRE(link.index != 0);
        REQUIRE(!link.name.empty() && link.name.find('\0') == std::string::npos);
        REQUIRE(link.lower != link.index);
    }
    Address address;
    if (ReadAddress(message, address))
        REQUIRE(address.if_index != 0 && (address.family == 2 || address.family == 10));
    ReadVlans(message, [](const VlanRange &range) {
        REQUIRE(range.first >= 1 && range.first <= range.last && range.last <= 4095);
    });
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    /* Whatever its address, a message stands where words may stand. */
    const std::unique_ptr<uint32_t[]> words(new uint32_t[(size + 3) / 4]());
    const std::size_t whole = size / 4 * 4;
    if (whole != 0)
        std::memcpy(words.get(), data, whole);
    for (const nlmsghdr *message : Messages(std::as_bytes(std::span(words.get(), whole / 4))))
        Read(message);
    return 0;
}
