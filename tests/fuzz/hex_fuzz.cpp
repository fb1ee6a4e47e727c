// Hexadecimal text: each operation against the plainest way to do the same.

#include <algorithm>
#include <cstring>
#include <vector>

#include <uvelcommon_base/kivo_hex.h>

#include "fuzz_input.h"

static int ValueOf(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

static void CheckToData(const std::string &text) {
    const ExactText exact(text);
    std::size_t stop = 0;
    std::vector<uint8_t> expected(text.size() / 2 + 1, 0xEE);
    for (; stop < text.size() && ValueOf(text[stop]) >= 0; ++stop) {
        const int value = ValueOf(text[stop]);
        expected[stop / 2] = static_cast<uint8_t>(stop % 2 == 0 ? value * 16 : expected[stop / 2] + value);
    }
    std::vector<uint8_t> data(expected.size(), 0xEE);
    const std::size_t count = stop != 0 && stop % 2 == 0 ? stop / 2 : stop / 2 + 1;
    REQUIRE(SRVHEX_TransStringToData(exact, data.data()) == count);
    REQUIRE(data == expected);
}

static void CheckFilter(const std::string &text) {
    const ExactText exact(text);
    std::string expected(text.size() + 1, '#');
    std::size_t digits = 0;
    std::size_t all = 0;
    bool clean = true;
    for (const char c : text) {
        all += ValueOf(c) >= 0 ? 1 : 0;
        if (clean && ValueOf(c) >= 0)
            expected[digits++] = c;
        else if (c != ' ')
            clean = false;
    }
    if (clean)
        expected[digits] = '\0';
    std::string dest(text.size() + 1, '#');
    REQUIRE(SRVHEX_FilterBlank(exact, dest.data()) == (clean ? digits : 0));
    REQUIRE(dest == expected);
    REQUIRE(SRVHEX_CalcXdigitNum(exact) == all);
}

/* The first byte says how far the room differs from what the data needs. */
static void CheckToText(const uint8_t *data, std::size_t size) {
    const std::size_t needed = 2 * (size - 1) + 1;
    const std::size_t room = needed + 4 > data[0] % 64u ? needed + 4 - data[0] % 64u : 0;
    const std::vector<uint8_t> bytes(data + 1, data + size);
    const std::size_t pairs = room == 0 ? 0 : std::min(bytes.size(), (room - 1) / 2);
    std::string expected;
    for (std::size_t i = 0; i < pairs; ++i) {
        expected += "0123456789ABCDEF"[bytes[i] / 16];
        expected += "0123456789ABCDEF"[bytes[i] % 16];
    }
    std::unique_ptr<char[]> text(new char[room + 1]);
    text[room] = '#';
    uint32_t length = 99;
    REQUIRE(SRVHEX_TransHexDataToString(bytes.data(), static_cast<uint32_t>(bytes.size()), text.get(),
                                        static_cast<uint32_t>(room), &length) == text.get());
    REQUIRE(length == expected.size());
    REQUIRE(room == 0 || expected == text.get());
    REQUIRE(text[room] == '#');
    CheckToData(expected);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text = TextOf(data, size);
    CheckToData(text);
    CheckFilter(text);
    if (size != 0)
        CheckToText(data, size);
    return 0;
}
