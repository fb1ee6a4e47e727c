/* Settings, versions and the private log when a bounds-checked function fails. */
#include <securec_faults.h>

#include <cstring>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_version.h>
#include <uvelcommon_base/nac_log.h>

namespace {

const kit::Sources kCommonAssert = {"src/common/src/smi/kivo_common"};
const kit::Sources kVersionAssert = {"src/common/src/smi/kivo_version"};

TEST(IfTemplateFaults, ANameThatCannotBeCopiedIsReportedAndCountsAsEmpty) {
    KIVO_IF_TEMPLET_S templet{nullptr, 2, 0};
    ASSERT_EQ(0u, KIVO_InitIfTemplet(&templet, 1));
    kit::Op<strcpy_s>().FailsOn(1, EINVAL);
    EXPECT_EQ(0u, KIVO_SetIfTemplet(&templet, 5, "Eth", 1));
    EXPECT_EQ(kCommonAssert, kit::TakeAsserts());
    ASSERT_EQ(1u, templet.ulCount);
    EXPECT_EQ(5u, templet.pstEntries[0].ulIfType);
    EXPECT_STREQ("", templet.pstEntries[0].pszName);

    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 5, "Vlanif", 1));
    EXPECT_EQ(kCommonAssert, kit::TakeAsserts());
    EXPECT_EQ(0u, KIVO_SetIfTemplet(&templet, 6, "Eth", 1));
    EXPECT_STREQ("Eth", templet.pstEntries[1].pszName);
    KIVO_MemFree(templet.pstEntries[0].pszName);
    KIVO_MemFree(templet.pstEntries[1].pszName);
    KIVO_MemFree(templet.pstEntries);
}

TEST(VersionFaults, AVersionThatCannotBeWrittenIsReportedAndTheBufferStillEnds) {
    char buffer[32];
    memset(buffer, '#', sizeof buffer);
    kit::PrintFault fault(kit::Variadic::SNPRINTF_S);
    EXPECT_EQ(buffer, UVEL_TransVerNoToStr(1, buffer));
    EXPECT_EQ(kVersionAssert, kit::TakeAsserts());
    EXPECT_EQ(std::string(31, '#'), std::string(buffer));
}

TEST(VersionFaults, ABannerWithoutAVersionTextHasAnEmptyOne) {
    char output[512];
    kit::PrintFault fault(kit::Variadic::SNPRINTF_S);
    EXPECT_EQ(output, UVEL_VersionInfo(output));
    EXPECT_EQ(kVersionAssert, kit::TakeAsserts());
    EXPECT_STREQ("\r\n\r\nuVEL (R) Software, Version ", output);
}

TEST(VersionFaults, ABannerThatCannotBeWrittenIsReportedOnce) {
    char output[512] = "as it was";
    kit::PrintFault fault(kit::Variadic::SNPRINTF_TRUNCATED_S);
    EXPECT_EQ(output, UVEL_VersionInfoFmt(output, "P", "V1", "T"));
    EXPECT_EQ(kVersionAssert, kit::TakeAsserts());
    EXPECT_STREQ("as it was", output);
}

TEST(VersionFaults, ABannerWhoseSecondLineCannotBeWrittenIsReportedAndHasTheFirst) {
    char output[512];
    kit::SecondPrintFault fault;
    EXPECT_EQ(output, UVEL_VersionInfoFmt(output, "P", "V1", "T"));
    EXPECT_EQ(kVersionAssert, kit::TakeAsserts());
    EXPECT_STREQ("\r\n\r\nP Software, Version V1", output);
}

TEST(PrivateLogFaults, ATimeThatCannotBeWrittenIsSilent) {
    char buffer[64] = "as it was";
    kit::PrintFault fault(kit::Variadic::SPRINTF_S);
    EXPECT_EQ(0u, NAC_Utils_GetPvLogTime(buffer, sizeof buffer));
    EXPECT_STREQ("as it was", buffer);
}

} // namespace
