// Failing bounds-checked functions below the private log, the dialogue and the XML readers.

#include "securec_faults.h"

#include <cstring>

#include <uvelcommon_base/nac_log.h>
#include <uvelcommon_base/nac_yang_xml.h>

namespace {

TEST(FailingPrint, OfTheLogsTimeIsNotReported) {
    char text[64] = "before";
    kit::PrintFault fault(kit::Variadic::SPRINTF_S);
    EXPECT_EQ(0u, NAC_Utils_GetPvLogTime(text, sizeof text));
    EXPECT_STREQ("before", text);
}

TEST(FailingPrint, OfADialogueTextDropsIt) {
    static int calls;
    NAC_Utils_RegDiaLogHook([](uint32_t, const char *) { ++calls; });
    {
        kit::PrintFault fault(kit::Variadic::VSPRINTF_S);
        NAC_Utils_Dialog(7, "a%s", "b");
    }
    EXPECT_EQ(0, calls);
    NAC_Utils_Dialog(7, "a%s", "b");
    EXPECT_EQ(1, calls);
    NAC_Utils_RegDiaLogHook(nullptr);
}

TEST(FailingCopy, OfAnElementsTextIsAFailureOfEveryReader) {
    const NAC_YANG_REQUEST_S request = {"<r><a>5</a></r>"};
    struct _xmlNode *root = NAC_YANG_XmlNewRoot(&request, "");
    ASSERT_NE(nullptr, root);
    kit::Op<strcpy_s>().Returns(162);
    char text[8] = "before";
    uint32_t number = 7;
    EXPECT_EQ(1u, NAC_YANG_XmlGetStr(root, "a", text, sizeof text));
    EXPECT_EQ(1u, NAC_YANG_XmlGetU32(root, "a", &number));
    EXPECT_EQ(2u, kit::Op<strcpy_s>().Calls());
    EXPECT_STREQ("before", text);
    EXPECT_EQ(7u, number);
    NAC_YANG_XmlDelRoot(root);
}

} // namespace
