/* Packed addresses to text. */
#include <uvelcommon_base/kivo_inet.h>

#include <bit>
#include <cstring>
#include <uvelhost/assert.h>

static constexpr char SOURCE[] = "src/common_adp/src/kivo_oxm_adapt";
static constexpr uint32_t WORDS = 8;

char *oxm_inet_ntop(int16_t sFamily, const void *pAddr, char *szBuffer, uint32_t ulSize) {
    if (pAddr == nullptr || szBuffer == nullptr)
        return nullptr;
    if (sFamily == KIVO_INET_V4)
        return kivo_inet_ntop4(static_cast<const uint8_t *>(pAddr), szBuffer, ulSize);
    if (sFamily == KIVO_INET_V6)
        return kivo_inet_ntop6(static_cast<const uint8_t *>(pAddr), szBuffer, ulSize);
    return nullptr;
}

char *KIVO_oxm_inet_ntop(int16_t sFamily, const void *pAddr, char *szBuffer, uint32_t ulSize) {
    return oxm_inet_ntop(sFamily, pAddr, szBuffer, ulSize);
}

/* Decimal text of every byte value with a '.' behind it, and the length of both. */
struct OCTET_TEXTS_S {
    char aacText[256][4];
    uint8_t aucLen[256];
};

static constexpr OCTET_TEXTS_S MakeOctetTexts() {
    OCTET_TEXTS_S stTexts{};
    for (unsigned i = 0; i < 256; ++i) {
        uint8_t ucLen = 0;
        if (i >= 100)
            stTexts.aacText[i][ucLen++] = static_cast<char>('0' + i / 100);
        if (i >= 10)
            stTexts.aacText[i][ucLen++] = static_cast<char>('0' + i / 10 % 10);
        stTexts.aacText[i][ucLen++] = static_cast<char>('0' + i % 10);
        stTexts.aacText[i][ucLen++] = '.';
        stTexts.aucLen[i] = ucLen;
    }
    return stTexts;
}

static constexpr OCTET_TEXTS_S OCTETS = MakeOctetTexts();

/* Writes an octet and a '.'. Four characters are written; what is too much is covered by the next octet. */
static inline char *WriteOctet(uint8_t ucOctet, char *pszText) {
    memcpy(pszText, OCTETS.aacText[ucOctet], 4);
    return pszText + OCTETS.aucLen[ucOctet];
}

/* Writes an octet and the terminator and nothing behind it: two characters, the last digit (once more, when there are
 * not three) and the terminator. Returns the terminator. */
static inline char *WriteLastOctet(uint8_t ucOctet, char *pszText) {
    const char *pszOctet = OCTETS.aacText[ucOctet];
    const uint32_t ulDigits = OCTETS.aucLen[ucOctet] - 1U;
    memcpy(pszText, pszOctet, 2);
    pszText[ulDigits - 1] = pszOctet[ulDigits - 1];
    pszText[ulDigits] = '\0';
    return pszText + ulDigits;
}

/* Writes an address and returns its terminator. */
static inline char *WriteIpv4(const uint8_t *pucAddr, char *pszText) {
    uint8_t aucAddr[KIVO_INET_V4_SIZE];
    memcpy(aucAddr, pucAddr, sizeof(aucAddr)); /* text and address may share their place */
    pszText = WriteOctet(aucAddr[0], pszText);
    pszText = WriteOctet(aucAddr[1], pszText);
    pszText = WriteOctet(aucAddr[2], pszText);
    return WriteLastOctet(aucAddr[3], pszText);
}

char *kivo_inet_ntop4(const uint8_t *pucAddr, char *szBuffer, uint32_t ulSize) {
    if (ulSize < KIVO_INET_V4_ROOM)
        return nullptr;
    (void)WriteIpv4(pucAddr, szBuffer);
    return szBuffer;
}

/* The run of zero words that becomes "::", for every set of zero words (the first word in bit 7). ucEnd is the first
 * word behind it, 0 when there is no run. */
struct ZERO_RUN_S {
    uint8_t ucStart;
    uint8_t ucEnd;
};

struct ZERO_RUNS_S {
    ZERO_RUN_S astRun[256];
};

static constexpr ZERO_RUNS_S MakeZeroRuns() {
    ZERO_RUNS_S stRuns{};
    for (unsigned ulSet = 0; ulSet < 256; ++ulSet) {
        uint8_t ucBest = 1; /* a single zero word is written as it is */
        for (uint8_t i = 0; i < WORDS; ++i) {
            uint8_t ucEnd = i;
            while (ucEnd < WORDS && (ulSet >> (WORDS - 1 - ucEnd) & 1) != 0)
                ++ucEnd;
            if (ucEnd - i > ucBest) { /* of equal runs the first one stays */
                stRuns.astRun[ulSet] = {i, ucEnd};
                ucBest = static_cast<uint8_t>(ucEnd - i);
            }
        }
    }
    return stRuns;
}

static constexpr ZERO_RUNS_S ZERO_RUNS = MakeZeroRuns();

/* An address taken apart for writing. */
struct IPV6_PIECES_S {
    uint8_t aucAddr[KIVO_INET_V6_SIZE];
    char aacDigits[WORDS][4];
    uint16_t ausLeading[WORDS]; /* zeros before the first digit that is written */
    uint32_t ulZeroWords;       /* the first word in bit 7 */
};

/* All words are taken apart at once: these compile to the vector instructions that every processor of a kind has. */
typedef uint8_t BYTES_S __attribute__((vector_size(16)));
typedef int8_t SIGNED_BYTES_S __attribute__((vector_size(16))); /* which compare faster on x86 */
typedef uint16_t WORDS_S __attribute__((vector_size(16)));

static inline BYTES_S HexDigits(BYTES_S stNibbles) {
    const auto stLetters = reinterpret_cast<BYTES_S>(reinterpret_cast<SIGNED_BYTES_S>(stNibbles) > 9);
    return stNibbles + '0' + (stLetters & ('A' - '9' - 1));
}

static inline uint32_t Sum(WORDS_S stWords) {
    stWords += __builtin_shufflevector(stWords, stWords, 4, 5, 6, 7, 0, 1, 2, 3);
    stWords += __builtin_shufflevector(stWords, stWords, 2, 3, 0, 1, 6, 7, 4, 5);
    return static_cast<uint32_t>(stWords[0] + stWords[1]);
}

static inline void TakeApart(const uint8_t *pucAddr, IPV6_PIECES_S &stPieces) {
    BYTES_S stBytes;
    memcpy(&stBytes, pucAddr, sizeof(stBytes));
    memcpy(stPieces.aucAddr, &stBytes, sizeof(stBytes));

    const BYTES_S stHigh = stBytes >> 4;
    const BYTES_S stLow = stBytes & 15;
    const BYTES_S stFirst =
        HexDigits(__builtin_shufflevector(stHigh, stLow, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
    const BYTES_S stSecond =
        HexDigits(__builtin_shufflevector(stHigh, stLow, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
    memcpy(stPieces.aacDigits[0], &stFirst, sizeof(stFirst));
    memcpy(stPieces.aacDigits[4], &stSecond, sizeof(stSecond));

    WORDS_S stWords;
    memcpy(&stWords, pucAddr, sizeof(stWords));
    if constexpr (std::endian::native == std::endian::little)
        stWords = stWords << 8 | stWords >> 8;
    /* Comparisons give all ones, that is -1, for true. */
    const auto stZero = static_cast<WORDS_S>(stWords == 0);
    const WORDS_S stLeading =
        -(static_cast<WORDS_S>((stWords & 0xFFF0) == 0) + static_cast<WORDS_S>((stWords & 0xFF00) == 0) +
          static_cast<WORDS_S>((stWords & 0xF000) == 0));
    memcpy(stPieces.ausLeading, &stLeading, sizeof(stLeading));
    stPieces.ulZeroWords = Sum(stZero & WORDS_S{128, 64, 32, 16, 8, 4, 2, 1});
}

/* Writes word i without leading zeros and a ':' behind it. Four digits are written; what is too much is covered by what
 * follows: two characters at least and the terminator. */
static inline char *WriteWord(const IPV6_PIECES_S &stPieces, uint32_t i, char *pszText) {
    const uint32_t ulLeading = stPieces.ausLeading[i];
    uint32_t ulText;
    memcpy(&ulText, stPieces.aacDigits[i], sizeof(ulText));
    if constexpr (std::endian::native == std::endian::little)
        ulText >>= ulLeading * 8;
    else
        ulText <<= ulLeading * 8;
    memcpy(pszText, &ulText, sizeof(ulText));
    pszText[4 - ulLeading] = ':';
    return pszText + 5 - ulLeading;
}

/* Writes the last word and the terminator and nothing behind it: the outer digits, then the inner ones, which are the
 * same when there are fewer than four. Returns the terminator. */
static inline char *WriteLastWord(const IPV6_PIECES_S &stPieces, char *pszText) {
    const uint32_t ulLeading = stPieces.ausLeading[WORDS - 1];
    const char *pcDigits = stPieces.aacDigits[WORDS - 1] + ulLeading;
    const uint32_t ulDigits = 4 - ulLeading;
    pszText[0] = pcDigits[0];
    pszText[ulDigits - 1] = pcDigits[ulDigits - 1];
    pszText[ulDigits / 2] = pcDigits[ulDigits / 2];
    pszText[(ulDigits - 1) / 2] = pcDigits[(ulDigits - 1) / 2];
    pszText[ulDigits] = '\0';
    return pszText + ulDigits;
}

/* Writes the text to pszText, which has room for KIVO_INET_V6_ROOM characters, and returns its terminator. */
static char *WriteIpv6(const uint8_t *pucAddr, char *pszText) {
    IPV6_PIECES_S stPieces;
    TakeApart(pucAddr, stPieces);
    const ZERO_RUN_S stRun = ZERO_RUNS.astRun[stPieces.ulZeroWords];
    uint32_t i = 0;
    if (stRun.ucEnd != 0) {
        for (; i < stRun.ucStart; ++i)
            pszText = WriteWord(stPieces, i, pszText);
        *pszText++ = ':';
        if (i == 0)
            *pszText++ = ':';
        i = stRun.ucEnd;
        if (stRun.ucStart == 0 && i == 6)
            return WriteIpv4(stPieces.aucAddr + 12, pszText);
        if (stRun.ucStart == 0 && i == 5 && stPieces.aucAddr[10] == 0xFF && stPieces.aucAddr[11] == 0xFF)
            return WriteIpv4(stPieces.aucAddr + 12, WriteWord(stPieces, 5, pszText));
        if (i == WORDS) {
            *pszText = '\0';
            return pszText;
        }
    }
    for (; i < WORDS - 1; ++i)
        pszText = WriteWord(stPieces, i, pszText);
    return WriteLastWord(stPieces, pszText);
}

char *kivo_inet_ntop6(const uint8_t *pucAddr, char *szBuffer, uint32_t ulSize) {
    if (ulSize >= KIVO_INET_V6_ROOM && szBuffer != nullptr) {
        (void)WriteIpv6(pucAddr, szBuffer);
        return szBuffer;
    }
    char szText[KIVO_INET_V6_ROOM];
    const size_t ulLen = static_cast<size_t>(WriteIpv6(pucAddr, szText) - szText) + 1;
    if (ulLen > ulSize)
        return nullptr;
    if (szBuffer == nullptr)
        qal_assert(SOURCE, __LINE__);
    else
        memcpy(szBuffer, szText, ulLen);
    return szBuffer;
}
