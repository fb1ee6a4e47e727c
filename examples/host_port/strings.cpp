/* The family strings.h, on a C library whose unsigned long has 64 bits. */

#include <uvelhost/strings.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

uint32_t QAL_StrLen(const char *pszText) {
    return pszText != nullptr ? static_cast<uint32_t>(std::strlen(pszText)) : 0;
}

int32_t QAL_MemCmp(const void *pA, const void *pB, uint32_t ulLen) {
    return ulLen != 0 ? std::memcmp(pA, pB, ulLen) : 0;
}

/* The limit is that of 32 bits, and a negative number wraps there. */
uint32_t QAL_strtoul(const char *pszText, char **ppszEnd, uint32_t ulBase) {
    if (pszText == nullptr)
        return 0;
    char *pszIgnored;
    char **ppszRead = ppszEnd != nullptr ? ppszEnd : &pszIgnored;
    *ppszRead = const_cast<char *>(pszText);
    if (ulBase == 1 || ulBase > 36)
        return 0;
    errno = 0;
    const unsigned long ulValue = std::strtoul(pszText, ppszRead, static_cast<int>(ulBase));
    const bool bNegative = std::memchr(pszText, '-', static_cast<size_t>(*ppszRead - pszText)) != nullptr;
    const unsigned long ulAmount = bNegative ? 0 - ulValue : ulValue;
    return errno == ERANGE || ulAmount > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(ulValue);
}

uint32_t QAL_StrToIpAddr(const char *pszText, uint32_t *pulAddr) {
    if (pszText == nullptr || pulAddr == nullptr)
        return 1;
    unsigned auOctet[4];
    int iLength = 0;
    if (std::strspn(pszText, "0123456789.") != std::strlen(pszText) ||
        std::sscanf(pszText, "%3u.%3u.%3u.%3u%n", &auOctet[0], &auOctet[1], &auOctet[2], &auOctet[3], &iLength) != 4 ||
        pszText[iLength] != '\0')
        return 1;
    uint32_t ulAddr = 0;
    for (const unsigned uOctet : auOctet) {
        if (uOctet > 255)
            return 1;
        ulAddr = ulAddr << 8 | uOctet;
    }
    *pulAddr = ulAddr;
    return UVELHOST_OK;
}
