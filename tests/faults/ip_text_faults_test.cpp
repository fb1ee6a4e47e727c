/* Address texts when a bounds-checked function fails. */
#include <securec_faults.h>

#include <uvelcommon_base/kivo_ip.h>

namespace {

TEST(IpTextFaults, AnAddressThatCannotBePrintedIsReportedAndTheBufferStillReturned) {
    const char *const before = SRV_IpAddrtoStr(0x0A010203);
    for (int i = 0; i < 7; ++i)
        (void)SRV_IpAddrtoStr(0);
    {
        kit::PrintFault fault(kit::Variadic::SPRINTF_S);
        EXPECT_EQ(before, SRV_IpAddrtoStr(0xFFFFFFFF));
    }
    EXPECT_EQ(kit::Sources{"src/common/src/smi/kivo_ipcommon"}, kit::TakeAsserts());
    EXPECT_STREQ("10.1.2.3", before);
}

TEST(IpTextFaults, ASubnetThatCannotBePrintedGivesThePrintsResult) {
    char text[32] = "as it was";
    kit::PrintFault fault(kit::Variadic::SPRINTF_S);
    EXPECT_EQ(-1, SRV_SubnettoStr(0x0A010000, 16, text, sizeof text));
    EXPECT_STREQ("as it was", text);
}

} // namespace
