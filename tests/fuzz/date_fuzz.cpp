// Dates: the library's reader against a second one, and back from what the writer makes of the result.

#include <cstring>

#include "date_reference.h"
#include "fuzz_input.h"

static bool Same(const SRV_DATE_S &a, const SRV_DATE_S &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text = TextOf(data, size);
    const ExactText exact(text);

    SRV_DATE_S expected;
    SRV_DATE_S date;
    std::memset(&expected, 0xEE, sizeof expected);
    date = expected;
    bool huge = false;
    const uint32_t result = DateReference::Read(text, expected, huge);
    REQUIRE(SRV_StringToDate(exact, &date) == result);
    REQUIRE(huge || Same(date, expected));
    if (result != 0)
        return 0;

    /* Whatever was read can be written, if it has a month, and reads back as it was, if its year is one of today. */
    char written[40];
    REQUIRE(SRV_DateToString(&date, written, sizeof written) == (date.ucMonth == 0 ? 1 : 0));
    if (date.ucMonth == 0 || date.usYear < 1000)
        return 0;
    SRV_DATE_S back;
    std::memset(&back, 0x11, sizeof back);
    REQUIRE(SRV_StringToDate(written, &back) == 0);
    REQUIRE(Same(date, back));
    return 0;
}
