// MAC addresses: the reader against the C library's scan, every layout of the writer against its printing.

#include <array>
#include <cctype>
#include <cstring>

#include <uvelcommon_base/kivo_mac.h>

#include "fuzz_input.h"

using Mac = std::array<uint8_t, 6>;

/* How many fields both scans read alike. From one on that begins with "0x" they differ: the C library takes the two
 * characters for a zero. */
static unsigned Comparable(const char *text) {
    for (unsigned field = 0; field < 6; ++field) {
        if ((field == 2 || field == 4) && *text++ != '-')
            break;
        while (std::isspace(static_cast<unsigned char>(*text)))
            ++text;
        if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
            return field;
        unsigned value;
        int read;
        if (std::sscanf(text, "%2x%n", &value, &read) != 1)
            break;
        text += read;
    }
    return 6;
}

static void CheckReader(const std::string &text) {
    const ExactText exact(text);
    Mac mac;
    mac.fill(0xEE);
    REQUIRE(SRV_MacStrToAddr(exact, mac.data()) == 0);
    unsigned fields[6] = {};
    (void)std::sscanf(exact, "%02x%02x-%02x%02x-%02x%02x", &fields[0], &fields[1], &fields[2], &fields[3], &fields[4],
                      &fields[5]);
    for (unsigned i = 0; i < Comparable(exact); ++i)
        REQUIRE(mac[i] == (fields[i] & 0xFF));
}

static std::string Layout(const Mac &mac, bool grouped, bool perByte, bool upper, bool colon) {
    std::string text;
    for (unsigned i = 0; i < 6; ++i) {
        if (i != 0 && grouped && (perByte || i % 2 == 0))
            text += colon ? ':' : '-';
        char pair[3];
        std::snprintf(pair, sizeof pair, upper ? "%02X" : "%02x", mac[i]);
        text += pair;
    }
    return text;
}

static void CheckWriter(const Mac &mac, const uint8_t *flags) {
    char text[18];
    const bool grouped = flags[0] == 1;
    const bool perByte = flags[1] == 1;
    const bool upper = flags[2] == 1;
    const bool colon = flags[3] == 1;
    std::memset(text, '#', sizeof text);
    REQUIRE(SRV_MacAddrToStrPswWithType(mac.data(), text, flags[0], flags[1], flags[2], flags[3]) == text);
    const std::string expected = Layout(mac, grouped, perByte, upper, colon);
    REQUIRE(std::string(text, 18) == expected + std::string(18 - expected.size(), '\0'));

    REQUIRE(Layout(mac, true, false, false, false) == SRV_MacAddrToStr(mac.data(), text));
    Mac back{};
    REQUIRE(SRV_MacStrToAddr(text, back.data()) == 0 && back == mac);
    REQUIRE(Layout(mac, true, true, false, false) == SRV_MacAddrtoStrByteSplit(mac.data()));
    REQUIRE(SRV_IsMacAddrZero(mac.data()) == (mac == Mac{} ? 1 : 0));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    CheckReader(TextOf(data, size));
    if (size >= 10) {
        Mac mac;
        std::memcpy(mac.data(), data, 6);
        CheckWriter(mac, data + 6);
    }
    return 0;
}
