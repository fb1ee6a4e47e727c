#include <uvelhost/strings.h>

#include <cstring>

/* Value of a digit in any base up to 36; 36 for every other character. */
static uint32_t DigitValue(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<uint32_t>(c - '0');
    if (c >= 'a' && c <= 'z')
        return static_cast<uint32_t>(c - 'a') + 10;
    if (c >= 'A' && c <= 'Z')
        return static_cast<uint32_t>(c - 'A') + 10;
    return 36;
}

static bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/* Steps over "0x" and settles base 0. A prefix without a hexadecimal digit behind it is the number 0. */
static const char *TakePrefix(const char *p, uint32_t &base) {
    bool hex = p[0] == '0' && (p[1] == 'x' || p[1] == 'X') && DigitValue(p[2]) < 16;
    if (base == 0)
        base = hex ? 16 : (p[0] == '0' ? 8 : 10);
    return base == 16 && hex ? p + 2 : p;
}

uint32_t QAL_StrLen(const char *pszText) {
    return pszText == nullptr ? 0 : static_cast<uint32_t>(std::strlen(pszText));
}

int32_t QAL_MemCmp(const void *pA, const void *pB, uint32_t ulLen) {
    return ulLen == 0 ? 0 : std::memcmp(pA, pB, ulLen);
}

/* Not the C library's: its unsigned long has 64 bits here, so "-1" and the limit would come out differently. */
uint32_t QAL_strtoul(const char *pszText, char **ppszEnd, uint32_t ulBase) {
    if (pszText == nullptr)
        return 0;
    if (ppszEnd != nullptr)
        *ppszEnd = const_cast<char *>(pszText);
    if (ulBase == 1 || ulBase > 36)
        return 0;

    const char *p = pszText;
    while (IsSpace(*p))
        ++p;
    bool negative = *p == '-';
    if (*p == '-' || *p == '+')
        ++p;
    p = TakePrefix(p, ulBase);

    uint64_t value = 0;
    bool overflow = false;
    const char *first = p;
    for (uint32_t digit; (digit = DigitValue(*p)) < ulBase; ++p) {
        value = value * ulBase + digit;
        overflow = overflow || value > UINT32_MAX;
        value &= UINT32_MAX;
    }
    if (p == first)
        return 0;
    if (ppszEnd != nullptr)
        *ppszEnd = const_cast<char *>(p);
    if (overflow)
        return UINT32_MAX;
    return negative ? 0U - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
}

uint32_t QAL_StrToIpAddr(const char *pszText, uint32_t *pulAddr) {
    if (pszText == nullptr || pulAddr == nullptr)
        return 1;
    uint32_t address = 0;
    const char *p = pszText;
    for (int octet = 0; octet < 4; ++octet) {
        if (octet > 0 && *p++ != '.')
            return 1;
        uint32_t value = 0;
        int digits = 0;
        for (; digits < 3 && *p >= '0' && *p <= '9'; ++digits, ++p)
            value = value * 10 + static_cast<uint32_t>(*p - '0');
        if (digits == 0 || value > 255)
            return 1;
        address = address << 8 | value;
    }
    if (*p != '\0')
        return 1;
    *pulAddr = address;
    return UVELHOST_OK;
}
