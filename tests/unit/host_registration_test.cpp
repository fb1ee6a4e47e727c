// Registration of the adapters with the host.

#include "kit.h"

#include <set>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_vlan_events.h>
#include <uvelcommon_base/kivo_vsys.h>

namespace {

using Calls = std::vector<std::string>;

const Calls ALL{
    "IF_INTF_RegEvtCb(2, 0xFFFFFFFF, KIVO_Adapt_SlotEvtCB, 0xC21E0000, 0xBFFFFFFF)",
    "IF_INTF_RegEvtCb(3, 0xFFFFFFFF, KIVO_Adapt_CardEvtCB, 0xC21E0000, 0xBFFFFFFF)",
    "IF_INTF_RegEvtCb(9, 0xFFFFFFFF, KIVO_Adapt_IOCTLCB, 0xC21E0000, 0xBFFFFFFF)",
    "IF_INTF_RegEvtCb(9, 0xFFFFFFFF, KIVO_Adapt_IOCTLCB_L2SUBIF, 0xC21E0000, 0x3FFFFFFF)",
    "IF_INTF_RegEvtCb(8, 0xFFFFFFFF, KIVO_Adapt_VrfSetCB, 0xC21E0000, 0xBFFFFFFF)",
    "IF_INTF_RegEvtCb(5, 0xFFFFFFFF, KIVO_Adapt_IFEvtCB, 0xC21E0000, 0x3FFFFFFF)",
    "IF_INTF_RegEvtCb(5, 6, KIVO_Adapt_IfLoopDeleteEvtCB, 0xC21E0000, 0xBFFFFFFF)",
    "IF_INTF_RegEvtCb(13, 0, KIVO_Adapt_BdEvtCB, 0xC21E0000, 0xBFFFFFFF)",
    "IF_INTF_RegEvtCb(13, 1, KIVO_Adapt_BdEvtCB, 0xC21E0000, 0xBFFFFFFF)",
    "IF_RegNotifyFunc(0xC21E0000, KIVO_Adapt_IFNotifyEvtCB)",
    "IP_EventNotifyFuncRegister(\"KIVO_Adapt_IPEvtCB\", 6, KIVO_Adapt_IPEvtCB)",
    "CFM_OverNotifyModuleRegister(0xC21E0000, 0, 0, 0, KIVO_Adapt_CfmRecoveOverCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_VlanBatchEvtCB\", 36, 228, KIVO_Adapt_VlanBatchEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_VlanBatchEvtCB\", 37, 228, KIVO_Adapt_VlanBatchEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_QinQEvtCB\", 22, 228, KIVO_Adapt_QinQEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_QinQEvtCB\", 23, 228, KIVO_Adapt_QinQEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_SubVlanEvtCB\", 4, 228, KIVO_Adapt_SubVlanEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_SubVlanEvtCB\", 5, 228, KIVO_Adapt_SubVlanEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_VlanAddDelPortEvtCB\", 11, 228, KIVO_Adapt_VlanAddDelPortEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_VlanAddDelPortEvtCB\", 12, 228, KIVO_Adapt_VlanAddDelPortEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_PortChgEvtCB\", 16, 228, KIVO_Adapt_PortChgEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_L2IFVlanIOCtrEvt\", 9, 228, KIVO_Adapt_L2ifVlanUpDownEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_PortSwitchEvtCB\", 13, 228, KIVO_Adapt_PortSwitchEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_PortSwitchEvtCB\", 14, 228, KIVO_Adapt_PortSwitchEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_PortHasCfgEvtCB\", 54, 228, KIVO_Adapt_PortHasCfgEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"KIVO_Adapt_VlanSetAttrEvtCB\", 6, 228, KIVO_Adapt_VlanSetAttrEvtCB)",
    "Trunk_EventNotifyFuncRegister(\"KIVO_Adapt_TrkMemChgEvtCB\", 1, 2, 100, KIVO_Adapt_TrkMemChgEvtCB)",
    "Trunk_EventNotifyFuncRegister(\"KIVO_Adapt_TrkMemHasCfgEvtCB\", 1, 11, 100, KIVO_Adapt_TrkMemHasCfgEvtCB)",
    "Trunk_EventNotifyFuncRegister(\"KIVO_Adapt_TrkMemChgEvtCB\", 3, 7, 100, KIVO_Adapt_TrkMemChgEvtCB)",
    "Trunk_EventNotifyFuncRegister(\"KIVO_Adapt_TrkMemChgEvtCB\", 3, 8, 100, KIVO_Adapt_TrkMemChgEvtCB)",
    "Trunk_EventNotifyFuncRegister(\"KIVO_Adapt_TrkMemChgEvtCB\", 2, 3, 100, KIVO_Adapt_TrkMemChgEvtCB)",
    "Trunk_EventNotifyFuncRegister(\"KIVO_TrunkDelEvtCB\", 3, 6, 100, KIVO_Adapt_TrunkDelEvtCB)",
    "L2IF_SH_EvtCbFuncReg(\"UVEL\", 24, 128, UVEL_Vlan_BuildRun)",
    "VPNBASE_VRFMGM_RegisterCb(0xC21E0000, 1, KIVO_VsysNotifyCallBack)",
    "VPNBASE_VRFMGM_RegisterCb(0xC21E0000, 2, KIVO_VsysNotifyCallBack)",
};

/* Which of the registrations above fail. */
void FailRegistrations(const std::function<bool(std::size_t)> &fails) {
    static std::size_t call;
    call = 0;
    auto next = [fails](auto...) { return fails(call++) ? 9U : 0U; };
    kit::Op<IF_INTF_RegEvtCb>().Does(next);
    kit::Op<IF_RegNotifyFunc>().Does(next);
    kit::Op<IP_EventNotifyFuncRegister>().Does(next);
    kit::Op<CFM_OverNotifyModuleRegister>().Does(next);
    kit::Op<L2IF_SH_EvtCbFuncReg>().Does(next);
    kit::Op<Trunk_EventNotifyFuncRegister>().Does(next);
    kit::Op<VPNBASE_VRFMGM_RegisterCb>().Does(next);
}

class HostRegistration : public testing::Test {
  protected:
    HostRegistration() {
        FailRegistrations([](std::size_t) { return false; });
    }
};

TEST_F(HostRegistration, MakesAllRegistrationsInTheirOrder) {
    kit::InFreshProcess([] {
        kit::Recorder recorder;
        KIVO_RegEventCallBack();
        EXPECT_EQ(ALL, recorder.Calls());
    });
}

TEST_F(HostRegistration, HappensOncePerProcess) {
    kit::InFreshProcess([] {
        KIVO_RegEventCallBack();
        kit::Recorder recorder;
        KIVO_RegEventCallBack();
        EXPECT_EQ(Calls{}, recorder.Calls());
        KIVO_RegEventCallBackIf();
        EXPECT_EQ(ALL, recorder.Calls()) << "the body has no guard";
    });
    kit::InFreshProcess([] {
        KIVO_RegEventCallBackIf();
        kit::Recorder recorder;
        KIVO_RegEventCallBack();
        EXPECT_EQ(ALL, recorder.Calls()) << "the body does not set the guard";
    });
}

TEST_F(HostRegistration, IsMarkedAsDoneBeforeItBegins) {
    kit::InFreshProcess([] {
        kit::Op<IF_INTF_RegEvtCb>().Does([](uint32_t, uint32_t, UVELHOST_CALLBACK, uint32_t, uint32_t) {
            KIVO_RegEventCallBack();
            return 0U;
        });
        kit::Recorder recorder;
        KIVO_RegEventCallBack();
        EXPECT_EQ(ALL, recorder.Calls());
    });
}

/* Failures of interface types, of the recovery's end, of the display and of virtual systems are not asserted. */
TEST_F(HostRegistration, AssertsWhereTheHostMustNotFailAndGoesOn) {
    for (std::size_t failing = 0; failing < ALL.size(); ++failing) {
        FailRegistrations([failing](std::size_t call) { return call == failing; });
        kit::Recorder recorder;
        KIVO_RegEventCallBackIf();
        EXPECT_EQ(ALL.size(), [&] {
            std::size_t registrations = 0;
            for (const std::string &call : recorder.Calls())
                registrations += call.starts_with("qal_assert") ? 0 : 1;
            return registrations;
        }()) << failing;
        const bool asserted = failing == 9 || failing == 10 || (failing >= 12 && failing <= 31);
        EXPECT_EQ(asserted ? kit::Sources{"src/common_adp/src/kivo_oxm"} : kit::Sources{}, kit::TakeAsserts())
            << ALL[failing];
    }
}

TEST_F(HostRegistration, GoesOnWhenEverythingFails) {
    FailRegistrations([](std::size_t) { return true; });
    kit::InFreshProcess([] {
        std::set<uint32_t> lines;
        kit::Op<qal_assert>().Does([&](const char *source, uint32_t line) {
            EXPECT_STREQ("src/common_adp/src/kivo_oxm", source);
            EXPECT_TRUE(lines.insert(line).second) << "every registration has its own line: " << line;
        });
        KIVO_RegEventCallBack();
        EXPECT_EQ(22u, lines.size());
        kit::Recorder recorder;
        KIVO_RegEventCallBack();
        EXPECT_EQ(Calls{}, recorder.Calls()) << "not tried again";
    });
}

} // namespace
