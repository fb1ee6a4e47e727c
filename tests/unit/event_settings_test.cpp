#include "kit.h"

#include <uvelcommon_base/uvel_event.h>

namespace {

const kit::Sources DEPFUNC{"src/event/src/srv/event_depfunc"};

TEST(EventSettings, SpecificationsHaveDefaultsAndTheThirdIsOutOfReach) {
    EXPECT_EQ(10240u, UVEL_EVENT_Api_GetSpecs(0));
    EXPECT_EQ(2048u, UVEL_EVENT_Api_GetSpecs(1));
    g_eventSpecs[2] = 5;
    EXPECT_EQ(0u, UVEL_EVENT_Api_GetSpecs(2));
    EXPECT_EQ(0u, UVEL_EVENT_Api_GetSpecs(0xFFFFFFFF));
    UVEL_EVENT_Api_SetSpecs(0, 7);
    UVEL_EVENT_Api_SetSpecs(1, 8);
    UVEL_EVENT_Api_SetSpecs(2, 9);
    UVEL_EVENT_Api_SetSpecs(0xFFFFFFFF, 9);
    EXPECT_EQ(7u, UVEL_EVENT_Api_GetSpecs(0));
    EXPECT_EQ(8u, UVEL_EVENT_Api_GetSpecs(1));
    EXPECT_EQ(5u, g_eventSpecs[2]);
}

TEST(EventSettings, IdentifiersGoWhereTheTaskLooksForThem) {
    UVEL_EVENT_Api_SetGlobalVariable(1, 2, 3);
    EXPECT_EQ(1u, g_eventdpAppInfo.ulMid);
    EXPECT_EQ(0u, g_eventSelfPubModuleID) << "taken from the record when the task starts";
    EXPECT_EQ(2u, g_eventIoPubModuleID);
    EXPECT_EQ(3u, g_eventSelfPubIpcTID);
}

TEST(EventSettings, TheApplicationIsPublishedOnce) {
    kit::Op<SYS_RegAppInfo>().Does([](SYS_APP_INFO_S *info) {
        EXPECT_EQ(&g_eventdpAppInfo, info);
        EXPECT_EQ(85u, info->ulPriority);
        return 6u;
    });
    EXPECT_EQ(6u, UVEL_EVENT_Api_RegApp());
    g_eventdpAppInfo.ulPriority = 7;
    EXPECT_EQ(0u, UVEL_EVENT_Api_RegApp()) << "also after a failure";
    EXPECT_EQ(7u, g_eventdpAppInfo.ulPriority);
    EXPECT_EQ(1u, kit::Op<SYS_RegAppInfo>().Calls());
}

/* ---- hooks ---- */

int g_registered = 0;

UVEL_EVENT_ADP_HOOK_S SomeHooks() {
    return {[] { return 11u; }, [] { return 12u; }, [] { ++g_registered; }, [] { return 14u; }};
}

TEST(EventHooks, EmptySlotsAnswerAsTheyShould) {
    void *reply = nullptr;
    EXPECT_EQ(1u, UVEL_EVENT_Hook_IfMainProcess());
    EXPECT_EQ(0u, UVEL_EVENT_Hook_InitDeadloopMon());
    UVEL_EVENT_Hook_RegEventCallBack();
    EXPECT_EQ(0u, UVEL_EVENT_Hook_Umi_CmdSendMsg(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_EQ(0u, UVEL_EVENT_Hook_Umi_AppendSetDebugMsg(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_EQ(0u, UVEL_EVENT_Hook_CmdInit());
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
    EXPECT_EQ(0u, UVEL_EVENT_Hook_GetSelfComTypeId());
    EXPECT_EQ(DEPFUNC, kit::TakeAsserts());
    EXPECT_EQ(1u, UVEL_EVENT_Hook_Dbm_ProcEntry(nullptr, 0, nullptr, &reply));
    EXPECT_EQ(DEPFUNC, kit::TakeAsserts());
}

TEST(EventHooks, InstalledHooksAnswer) {
    const UVEL_EVENT_ADP_HOOK_S hooks = SomeHooks();
    UVEL_EVENT_Api_SetAdpHook(&hooks);
    EXPECT_EQ(11u, UVEL_EVENT_Hook_IfMainProcess());
    EXPECT_EQ(12u, UVEL_EVENT_Hook_InitDeadloopMon());
    UVEL_EVENT_Hook_RegEventCallBack();
    EXPECT_EQ(1, g_registered);
    EXPECT_EQ(14u, UVEL_EVENT_Hook_GetSelfComTypeId());
    EXPECT_EQ(reinterpret_cast<KIVO_HOOK>(hooks.pfIfMainProcess), g_eventAdpHookFunc[0]);
    EXPECT_EQ(reinterpret_cast<KIVO_HOOK>(hooks.pfInitDeadloopMon), g_eventAdpHookFunc[1]);
    EXPECT_EQ(hooks.pfRegEventCallBack, g_eventAdpHookFunc[2]);
    EXPECT_EQ(reinterpret_cast<KIVO_HOOK>(hooks.pfGetSelfComTypeId), g_eventAdpHookFunc[3]);
}

TEST(EventHooks, WhoInstallsFirstStaysAndEmptySlotsAreFilledLater) {
    const UVEL_EVENT_ADP_HOOK_S first = {[] { return 21u; }, nullptr, nullptr, nullptr};
    const UVEL_EVENT_ADP_HOOK_S second = SomeHooks();
    const UVEL_EVENT_ADP_HOOK_S third = {[] { return 31u; }, [] { return 32u; }, [] { g_registered += 100; },
                                         [] { return 34u; }};
    UVEL_EVENT_Api_SetAdpHook(nullptr);
    UVEL_EVENT_Api_SetAdpHook(&first);
    EXPECT_EQ(0u, UVEL_EVENT_Hook_InitDeadloopMon());
    UVEL_EVENT_Api_SetAdpHook(&second);
    UVEL_EVENT_Api_SetAdpHook(&third);
    EXPECT_EQ(21u, UVEL_EVENT_Hook_IfMainProcess());
    EXPECT_EQ(12u, UVEL_EVENT_Hook_InitDeadloopMon());
    UVEL_EVENT_Hook_RegEventCallBack();
    EXPECT_EQ(1, g_registered);
    EXPECT_EQ(14u, UVEL_EVENT_Hook_GetSelfComTypeId());
}

TEST(EventHooks, AllWordsReachTheInterfaceHooks) {
    using Words = uint32_t (*)(uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t);
    const Words digits = [](uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t d, uintptr_t e, uintptr_t f, uintptr_t g,
                            uintptr_t h) {
        uintptr_t number = 0;
        for (const uintptr_t digit : {a, b, c, d, e, f, g, h})
            number = number * 10 + digit;
        return static_cast<uint32_t>(number);
    };
    const Words negated = [](uintptr_t a, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t,
                             uintptr_t h) { return static_cast<uint32_t>(h - a); };
    g_eventUmiFunc[0] = reinterpret_cast<KIVO_HOOK>(digits);
    g_eventUmiFunc[1] = reinterpret_cast<KIVO_HOOK>(negated);
    EXPECT_EQ(12345678u, UVEL_EVENT_Hook_Umi_CmdSendMsg(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_EQ(7u, UVEL_EVENT_Hook_Umi_AppendSetDebugMsg(1, 2, 3, 4, 5, 6, 7, 8));
    uint32_t (*init)(void) = [] { return 41u; };
    g_eventRegOmFunc[0] = reinterpret_cast<KIVO_HOOK>(init);
    EXPECT_EQ(41u, UVEL_EVENT_Hook_CmdInit());
}

TEST(EventHooks, DebugOutputIsSilent) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    UVEL_EVENT_DbgOutput(1, "\r\n%u %s", 5, "text");
    UVEL_EVENT_DbgOutput(0, nullptr);
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

} // namespace
