// The lines that failures of the capability set leave.

#define UVEL_CapSetInit ProbedCapSetInit
#define UVEL_CapSetDestroy ProbedCapSetDestroy
#define UVEL_GetSpecsByDescr ProbedGetSpecsByDescr
#define UVEL_IsSupportWlan ProbedIsSupportWlan
#define UVEL_IsSupportPortal ProbedIsSupportPortal
#define NAC_Utils_PvtLog ProbedCapsetLog
#include "../../src/common_adp/src/kivo_pdtadapt/capability_set.cpp"

#include "probed_log.h"

namespace {

TEST(CapabilityLog, NamesTheHostsResult) {
    kit::Op<capset_init>().Returns(4294967295);
    kit::Op<capset_destroy>().Returns(7);
    EXPECT_EQ(1u, UVEL_CapSetInit());
    EXPECT_EQ(Lines{"0 UVEL CapSetInit fail, ulRet:4294967295 \n"}, TakeLines());
    EXPECT_EQ(1u, UVEL_CapSetDestroy());
    EXPECT_EQ(Lines{"0 UVEL capset_destroy fail, ulRet:7 \n"}, TakeLines());
}

TEST(CapabilityLog, NamesTheItemAndWhatTheQueryLeft) {
    kit::Op<capset_query_with_itemname>().Does([](const char *, void *out, uint32_t *) {
        *static_cast<uint32_t *>(out) = 12;
        return 9U;
    });
    uint32_t value = 0;
    EXPECT_EQ(9u, UVEL_GetSpecsByDescr("SRV_SPEC", &value));
    EXPECT_EQ(Lines{"0 [UVEL_GetSpecsByDescr] pcDescr:SRV_SPEC, ulValue:12, ulRet:9 \n"}, TakeLines());
}

TEST(CapabilityLog, TellsANullArgument) {
    kit::Op<capset_query_with_itemname>().Returns(9);
    uint32_t value = 0;
    const Lines expected = {"0 [UVEL_GetSpecsByDescr] Input parameter is null.\n"};
    EXPECT_EQ(1u, UVEL_GetSpecsByDescr(nullptr, &value));
    EXPECT_EQ(expected, TakeLines());
    EXPECT_EQ(1u, UVEL_GetSpecsByDescr("SRV_SPEC", nullptr));
    EXPECT_EQ(expected, TakeLines());
}

TEST(CapabilityLog, IsSilentOtherwise) {
    kit::Op<capset_init>().Returns(0);
    kit::Op<capset_destroy>().Returns(0);
    kit::Op<capset_query_with_itemname>().Returns(0);
    uint32_t value = 0;
    (void)UVEL_CapSetInit();
    (void)UVEL_GetSpecsByDescr("SRV_SPEC", &value);
    (void)UVEL_GetSpecsByDescr(nullptr, &value);
    (void)UVEL_CapSetDestroy();
    kit::Op<capset_query_with_itemname>().Returns(1);
    (void)UVEL_IsSupportWlan();
    (void)UVEL_IsSupportPortal();
    EXPECT_EQ(Lines{}, TakeLines());
}

} // namespace
