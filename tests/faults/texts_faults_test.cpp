// Failing bounds-checked functions below dates, time stamps, MAC addresses and numbers: none is reported.

#include "securec_faults.h"

#include <uvelcommon_base/kivo_date.h>
#include <uvelcommon_base/kivo_mac.h>
#include <uvelcommon_base/kivo_string.h>
#include <uvelcommon_base/kivo_time.h>

namespace {

TEST(FailingCopy, OfAWeekdayOrMonthIsNotReported) {
    char text[8] = "before";
    kit::Op<strcpy_s>().Returns(162);
    EXPECT_EQ(0u, SRV_WeekToString(1, text, sizeof text));
    EXPECT_EQ(0u, SRV_MonthToString(1, text, sizeof text));
    EXPECT_EQ(2u, kit::Op<strcpy_s>().Calls());
    EXPECT_STREQ("before", text);
}

TEST(FailingCopy, OfTheWeekdayAndTheMonthLeavesBlanksInADate) {
    const SRV_DATE_S date{2024, 3, 7, 9, 5, 0, 1};
    char text[40] = "before";
    kit::Op<strcpy_s>().Returns(162);
    EXPECT_EQ(0u, SRV_DateToString(&date, text, sizeof text));
    EXPECT_STREQ("   , 7     2024 09:05:00", text);
}

TEST(FailingPrint, OfADateIsNotReported) {
    const SRV_DATE_S date{2024, 3, 7, 9, 5, 0, 1};
    char text[40] = "before";
    kit::PrintFault fault(kit::Variadic::SNPRINTF_TRUNCATED_S);
    EXPECT_EQ(0u, SRV_DateToString(&date, text, sizeof text));
    EXPECT_STREQ("before", text);
}

TEST(FailingPrint, OfATimeStampStillReturnsTheBuffer) {
    char text[40] = "before";
    kit::PrintFault fault(kit::Variadic::SNPRINTF_TRUNCATED_S);
    EXPECT_EQ(text, SRV_TmBuildTimeStampStr(0, text, sizeof text));
    EXPECT_STREQ("before", text);
}

TEST(FailingScan, OfAMacAddressGivesTheZeroAddress) {
    uint8_t mac[6] = {1, 2, 3, 4, 5, 6};
    kit::PrintFault fault(kit::Variadic::SSCANF_S);
    EXPECT_EQ(0u, SRV_MacStrToAddr("02:1a:2b:3c:4d:5e", mac));
    EXPECT_EQ(1u, SRV_IsMacAddrZero(mac));
}

TEST(FailingScan, OfANumberIsANumberThatWasNotRead) {
    uint32_t number = 7;
    kit::PrintFault fault(kit::Variadic::SSCANF_S);
    EXPECT_EQ(0xFFFFFFFFu, SRV_Atoul("42", &number));
    EXPECT_EQ(0u, number);
}

/* Numbers of up to nine digits need no scan. */
TEST(FailingScan, OfALongNumberInADateCountsAsZero) {
    SRV_DATE_S date{1, 1, 1, 1, 1, 1, 1};
    kit::PrintFault fault(kit::Variadic::SSCANF_S);
    EXPECT_EQ(0u, SRV_StringToDate("MON, 0000000007 Mar 2024 9:5:1", &date));
    EXPECT_EQ(0, date.ucDay);
    EXPECT_EQ(2024, date.usYear);
}

} // namespace
