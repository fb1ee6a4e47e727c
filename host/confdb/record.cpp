#include "confdb/record.h"

#include <algorithm>
#include <cstring>

namespace uvel::host::confdb {

/* As RFC 3629 has it: neither overlong nor beyond the last character, no surrogates. */
static bool IsUtf8(const char *text) {
    const auto *at = reinterpret_cast<const unsigned char *>(text);
    while (*at != '\0') {
        const unsigned lead = *at++;
        if (lead < 0x80)
            continue;
        if (lead < 0xC2 || lead > 0xF4)
            return false;
        const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        if (*at < lowest || *at > highest)
            return false;
        /* The terminator is no continuation, so this stops at it. */
        const auto *end = at + more;
        for (++at; at < end; ++at) {
            if ((*at & 0xC0) != 0x80)
                return false;
        }
    }
    return true;
}

std::string CheckedTable(const char *table) {
    if (table == nullptr || *table == '\0' || std::strlen(table) > DB_TABLE_SIZE ||
        std::strchr(table, '/') != nullptr || !IsUtf8(table))
        throw StoreError("the name of a table has 1 to 64 bytes of UTF-8 without '/'");
    return table;
}

std::string CheckedKey(const char *key) {
    if (key == nullptr || *key == '\0' || std::strlen(key) > DB_KEY_SIZE || !IsUtf8(key))
        throw StoreError("a key has 1 to 1024 bytes of UTF-8");
    return key;
}

} // namespace uvel::host::confdb
