/* Reader of dates. What it accepts is a contract down to its oddities: stored and received texts are read with it. */
#include <uvelcommon_base/kivo_date.h>

#include <cstddef>
#include <cstring>
#include <uvelcommon_base/kivo_string.h>

/* Character classes; every '\0' is an end, so no step looks behind it. */
static constexpr uint8_t NARROW = 1; /* blank, tab, ':' and ',': separate everywhere */
static constexpr uint8_t HYPHEN = 2; /* separates in most places */
static constexpr uint8_t END = 4;
static constexpr uint8_t SEPARATOR = NARROW | HYPHEN;

struct DATE_CLASSES_S {
    uint8_t aucClass[256];
};

static constexpr DATE_CLASSES_S CLASSES = [] {
    DATE_CLASSES_S stClasses{};
    constexpr char acNarrow[] = {' ', '\t', ':', ','};
    for (const char cNarrow : acNarrow)
        stClasses.aucClass[static_cast<uint8_t>(cNarrow)] = NARROW;
    stClasses.aucClass[static_cast<uint8_t>('-')] = HYPHEN;
    stClasses.aucClass[0] = END;
    return stClasses;
}();

static inline bool Is(char cText, unsigned ulClasses) {
    return (CLASSES.aucClass[static_cast<uint8_t>(cText)] & ulClasses) != 0;
}

/* 0 to 9, or more for what is no digit. */
static inline uint32_t DigitOf(char cText) {
    return static_cast<uint32_t>(static_cast<uint8_t>(cText)) - '0';
}

static inline const char *Skip(const char *pszText, unsigned ulClasses) {
    while (Is(*pszText, ulClasses))
        ++pszText;
    return pszText;
}

static inline const char *TokenEnd(const char *pszText) {
    while (!Is(*pszText, SEPARATOR | END))
        ++pszText;
    return pszText;
}

/* Three letters as one number, whatever their case. No other character becomes a letter by losing this bit. */
static constexpr uint32_t LetterKey(const char *pszName) {
    constexpr uint32_t CASE = 0x202020;
    return (static_cast<uint32_t>(static_cast<uint8_t>(pszName[0])) << 16 |
            static_cast<uint32_t>(static_cast<uint8_t>(pszName[1])) << 8 | static_cast<uint8_t>(pszName[2])) &
           ~CASE;
}

/* Names by a slot that is theirs alone, so that a look-up is one comparison. */
struct DATE_NAMES_S {
    uint32_t aulKey[16];
    uint8_t aucNumber[16];
};

/* One multiplication that sends all months to different slots, and all weekdays to different slots. */
static constexpr uint32_t SlotOf(uint32_t ulKey) {
    return ulKey * 151 >> 7 & 15;
}

template <size_t COUNT, size_t ROOM>
static constexpr DATE_NAMES_S MakeNames(const char (&aszNames)[COUNT][ROOM]) {
    DATE_NAMES_S stNames{};
    for (size_t i = 0; i < COUNT; ++i) {
        const uint32_t ulKey = LetterKey(aszNames[i]);
        stNames.aulKey[SlotOf(ulKey)] = ulKey;
        stNames.aucNumber[SlotOf(ulKey)] = static_cast<uint8_t>(i + 1);
    }
    return stNames;
}

/* Number of the name that begins with these three letters, from 1; 0 when there is none. */
static constexpr uint8_t Find(const DATE_NAMES_S &stNames, uint32_t ulKey) {
    return stNames.aulKey[SlotOf(ulKey)] == ulKey ? stNames.aucNumber[SlotOf(ulKey)] : 0;
}

template <size_t COUNT, size_t ROOM>
static constexpr bool FindsAll(const DATE_NAMES_S &stNames, const char (&aszNames)[COUNT][ROOM]) {
    for (size_t i = 0; i < COUNT; ++i) {
        if (Find(stNames, LetterKey(aszNames[i])) != i + 1)
            return false;
    }
    return true;
}

/* Monday to Saturday: Sunday is what everything else counts as. */
static constexpr char WEEK_DAYS[6][10] = {"MONDAY", "TUESDAY", "WEDNESDAY", "THURSDAY", "FRIDAY", "SATURDAY"};
static constexpr char MONTHS[12][4] = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                       "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};

static constexpr DATE_NAMES_S WEEK_DAY_NAMES = MakeNames(WEEK_DAYS);
static constexpr DATE_NAMES_S MONTH_NAMES = MakeNames(MONTHS);
static_assert(FindsAll(WEEK_DAY_NAMES, WEEK_DAYS) && FindsAll(MONTH_NAMES, MONTHS), "two names share a slot");

static bool IsWord(const char *pszText, size_t length, const char *pszUpperCase) {
    for (size_t i = 0; i < length; ++i) {
        if (pszUpperCase[i] == '\0' || (pszText[i] & ~0x20) != pszUpperCase[i])
            return false;
    }
    return pszUpperCase[length] == '\0';
}

static inline uint8_t WeekDayOf(const char *pszText, size_t length) {
    if (length < 3)
        return 0;
    const uint8_t ucWeekDay = Find(WEEK_DAY_NAMES, LetterKey(pszText));
    if (length == 3 || ucWeekDay == 0)
        return ucWeekDay;
    return IsWord(pszText, length, WEEK_DAYS[ucWeekDay - 1]) ? ucWeekDay : 0;
}

static inline uint8_t MonthOf(const char *pszText, size_t length) {
    return length == 3 ? Find(MONTH_NAMES, LetterKey(pszText)) : 0;
}

/* Value of a run of digits of any length: what does not fit 32 bits gives what SRV_Atoul makes of it. */
static uint32_t LongNumber(const char *pszDigits, size_t length) {
    char szToken[SRV_DATE_TEXT_MAX + 1];
    uint32_t ulValue = 0;
    memcpy(szToken, pszDigits, length);
    szToken[length] = '\0';
    (void)SRV_Atoul(szToken, &ulValue);
    return ulValue;
}

/* Reads digits up to a character of ulEnds and moves the cursor there. False when there are none, or something else
 * follows them. */
static inline bool ReadNumber(const char **ppszCursor, unsigned ulEnds, uint32_t *pulValue) {
    const char *const pszDigits = *ppszCursor;
    const char *pszEnd = pszDigits;
    uint32_t ulValue = 0;
    for (uint32_t ulDigit = DigitOf(*pszEnd); ulDigit <= 9; ulDigit = DigitOf(*++pszEnd))
        ulValue = ulValue * 10 + ulDigit;
    if (pszEnd == pszDigits || !Is(*pszEnd, ulEnds))
        return false;
    *ppszCursor = pszEnd;
    const size_t length = static_cast<size_t>(pszEnd - pszDigits);
    *pulValue = length <= 9 ? ulValue : LongNumber(pszDigits, length);
    return true;
}

/* Skips separators, reads a number up to a character of ulEnds and stores its low byte. */
static inline bool ReadField(const char **ppszCursor, unsigned ulEnds, uint8_t *pucField) {
    uint32_t ulNumber = 0;
    *ppszCursor = Skip(*ppszCursor, SEPARATOR);
    if (!ReadNumber(ppszCursor, ulEnds, &ulNumber))
        return false;
    *pucField = static_cast<uint8_t>(ulNumber);
    return true;
}

/* A text that ends early fails where the next digit or letter is missing; what was read until then stays stored. */
uint32_t SRV_StringToDate(const char *pszText, SRV_DATE_S *pstDate) {
    if (pszText == nullptr || pstDate == nullptr || strnlen(pszText, SRV_DATE_TEXT_MAX + 1) > SRV_DATE_TEXT_MAX)
        return KIVO_FAIL;

    const char *pszToken = Skip(pszText, NARROW);
    const char *pszCursor = TokenEnd(pszToken);
    pstDate->ucWeekDay = WeekDayOf(pszToken, static_cast<size_t>(pszCursor - pszToken));

    if (!ReadField(&pszCursor, SEPARATOR | END, &pstDate->ucDay))
        return KIVO_FAIL;

    pszToken = Skip(pszCursor, SEPARATOR);
    if (*pszToken == '\0')
        return KIVO_FAIL;
    pszCursor = TokenEnd(pszToken);
    pstDate->ucMonth = MonthOf(pszToken, static_cast<size_t>(pszCursor - pszToken));

    /* Only here '-' is no separator: it stands for an empty year, so that dashed dates read as they always did. */
    uint32_t ulYear = 0;
    pszCursor = Skip(pszCursor, NARROW);
    if (*pszCursor != '-' && !ReadNumber(&pszCursor, SEPARATOR | END, &ulYear))
        return KIVO_FAIL;
    pstDate->usYear = static_cast<uint16_t>(ulYear < 1000 ? ulYear + 2000 : ulYear);

    if (!ReadField(&pszCursor, SEPARATOR | END, &pstDate->ucHour) ||
        !ReadField(&pszCursor, SEPARATOR | END, &pstDate->ucMinute) ||
        !ReadField(&pszCursor, NARROW | END, &pstDate->ucSecond))
        return KIVO_FAIL;
    return KIVO_OK;
}
