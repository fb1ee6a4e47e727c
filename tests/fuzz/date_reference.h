/* A second reader of date texts, written straight from the rules and in no hurry: one step a paragraph, a real token
 * buffer, numbers in 64 bits. What the library's reader does is compared with it. */
#ifndef UVEL_TESTS_FUZZ_DATE_REFERENCE_H
#define UVEL_TESTS_FUZZ_DATE_REFERENCE_H

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <uvelcommon_base/kivo_date.h>

class DateReference {
  public:
    /* What SRV_StringToDate must return for `text` and make of `date`. Numbers that do not fit 32 bits are cut to their
     * low 32 bits; `huge` tells of numbers beyond 64 bits, where a field may be anything. */
    static uint32_t Read(const std::string &text, SRV_DATE_S &date, bool &huge) {
        DateReference reader(text);
        const uint32_t result = text.size() > 80 ? 1 : reader.Steps(date);
        huge = reader.huge_;
        return result;
    }

  private:
    explicit DateReference(const std::string &text) : text_(text) {}

    bool AtEnd() const { return at_ == text_.size(); }
    bool AtOneOf(const char *set) const { return !AtEnd() && std::string(set).find(text_[at_]) != std::string::npos; }

    /* True when the text goes on behind the skipped characters. */
    bool SkipOver(const char *set) {
        while (AtOneOf(set))
            ++at_;
        return !AtEnd();
    }

    std::string Word() {
        std::string word;
        while (!AtEnd() && !AtOneOf(ALL)) {
            const char c = text_[at_++];
            word += c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
        }
        return word;
    }

    /* A token of digits up to one of `ends` or the end of the text. */
    bool Digits(const char *ends, uint32_t &value) {
        std::string digits;
        if (!AtOneOf(DIGITS))
            return false;
        while (!AtEnd() && !AtOneOf(ends)) {
            if (!AtOneOf(DIGITS))
                return false;
            digits += text_[at_++];
        }
        const std::size_t leading = digits.find_first_not_of('0');
        if (leading != std::string::npos && digits.size() - leading > 19)
            huge_ = true;
        value = static_cast<uint32_t>(std::strtoull(digits.c_str(), nullptr, 10));
        return true;
    }

    static uint8_t WeekDay(const std::string &word) {
        static const char *const names[][2] = {{"MON", "MONDAY"},   {"TUE", "TUESDAY"}, {"WED", "WEDNESDAY"},
                                               {"THU", "THURSDAY"}, {"FRI", "FRIDAY"},  {"SAT", "SATURDAY"}};
        for (uint8_t i = 0; i < 6; ++i) {
            if (word == names[i][0] || word == names[i][1])
                return static_cast<uint8_t>(i + 1);
        }
        return 0;
    }

    static uint8_t Month(const std::string &word) {
        static const std::string names = "JAN FEB MAR APR MAY JUN JUL AUG SEP OCT NOV DEC";
        const std::size_t at = word.size() == 3 ? names.find(word) : std::string::npos;
        return at == std::string::npos || at % 4 != 0 ? 0 : static_cast<uint8_t>(at / 4 + 1);
    }

    uint32_t Steps(SRV_DATE_S &date) {
        uint32_t value = 0;

        (void)SkipOver(NARROW);
        date.ucWeekDay = WeekDay(Word());
        if (AtEnd() || !SkipOver(ALL))
            return 1;

        if (!Digits(ALL, value))
            return 1;
        date.ucDay = static_cast<uint8_t>(value);
        if (AtEnd() || !SkipOver(ALL))
            return 1;

        date.ucMonth = Month(Word());
        if (AtEnd() || !SkipOver(NARROW))
            return 1;

        value = 0;
        if (!AtOneOf("-") && !Digits(ALL, value))
            return 1;
        date.usYear = static_cast<uint16_t>(value < 1000 ? value + 2000 : value);
        if (AtEnd() || !SkipOver(ALL))
            return 1;

        if (!Digits(ALL, value))
            return 1;
        date.ucHour = static_cast<uint8_t>(value);
        if (AtEnd() || !SkipOver(ALL))
            return 1;

        if (!Digits(ALL, value))
            return 1;
        date.ucMinute = static_cast<uint8_t>(value);
        if (AtEnd() || !SkipOver(ALL))
            return 1;

        if (!Digits(NARROW, value))
            return 1;
        date.ucSecond = static_cast<uint8_t>(value);
        return 0;
    }

    static constexpr const char *NARROW = " \t:,";
    static constexpr const char *ALL = " \t:,-";
    static constexpr const char *DIGITS = "0123456789";

    const std::string text_;
    std::size_t at_ = 0;
    bool huge_ = false;
};

#endif
