/* Registration of the adapters with the host. */
#include "kivo_oxm/arguments.h"

#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_vsys.h>
#include <uvelcommon_base/nac_log.h>
#include <uvelhost/vrf.h>

static constexpr uint32_t LAYER2_PRIORITY = 228;
static constexpr uint32_t TRUNK_PRIORITY = 100;
static constexpr uint32_t BUILDRUN_GROUP = 24;
static constexpr uint32_t BUILDRUN_PRIORITY = 128;

static uint32_t g_ulRegistered = 0;

/* An adapter as the host takes it. The type is named at every use, so that an adapter of another one is refused. */
template <typename HostType>
static UVELHOST_CALLBACK Untyped(HostType pfAdapter) {
    return reinterpret_cast<UVELHOST_CALLBACK>(pfAdapter);
}

/* The line is that of the registration: of failures at one place only the first is printed. */
static void AssertDone(uint32_t ulResult, uint32_t ulLine) {
    if (ulResult != UVELHOST_OK)
        qal_assert(oxm::SOURCE, ulLine);
}

/* The host knows all these types; what it answers is not looked at. */
static void RegisterInterfaces() {
    const struct {
        uint32_t ulType;
        uint32_t ulSubType;
        UVELHOST_CALLBACK pfAdapter;
        uint32_t ulMask;
    } astRegistrations[] = {
        {IF_EVT_SLOT, IF_EVT_ALL_SUB, Untyped<IF_SLOT_EVT_CB>(KIVO_Adapt_SlotEvtCB), IF_EVT_MASK_ALL},
        {IF_EVT_CARD, IF_EVT_ALL_SUB, Untyped<IF_CARD_EVT_CB>(KIVO_Adapt_CardEvtCB), IF_EVT_MASK_ALL},
        {IF_EVT_IOCTL, IF_EVT_ALL_SUB, Untyped<IF_IOCTL_EVT_CB>(KIVO_Adapt_IOCTLCB), IF_EVT_MASK_ALL},
        {IF_EVT_IOCTL, IF_EVT_ALL_SUB, Untyped<IF_IOCTL_EVT_CB>(KIVO_Adapt_IOCTLCB_L2SUBIF), IF_EVT_MASK_PART},
        {IF_EVT_VRF_SET, IF_EVT_ALL_SUB, Untyped<IF_VRF_SET_EVT_CB>(KIVO_Adapt_VrfSetCB), IF_EVT_MASK_ALL},
        {IF_EVT_IF, IF_EVT_ALL_SUB, Untyped<IF_IF_EVT_CB>(KIVO_Adapt_IFEvtCB), IF_EVT_MASK_PART},
        {IF_EVT_IF, oxm::IF_DELETED, Untyped<IF_IF_EVT_CB>(KIVO_Adapt_IfLoopDeleteEvtCB), IF_EVT_MASK_ALL},
        {IF_EVT_BD, 0, Untyped<IF_BD_EVT_CB>(KIVO_Adapt_BdEvtCB), IF_EVT_MASK_ALL},
        {IF_EVT_BD, 1, Untyped<IF_BD_EVT_CB>(KIVO_Adapt_BdEvtCB), IF_EVT_MASK_ALL},
    };
    for (const auto &st : astRegistrations)
        (void)IF_INTF_RegEvtCb(st.ulType, st.ulSubType, st.pfAdapter, KIVO_LIB_MID, st.ulMask);
}

static void RegisterRecovery() {
    const uint32_t ulResult = CFM_OverNotifyModuleRegister(KIVO_LIB_MID, 0, 0, 0, KIVO_Adapt_CfmRecoveOverCB);
    if (ulResult != UVELHOST_OK)
        NAC_Utils_PvtLog(1, "[KIVO_RegEvent_CallBackIf]CFM_Over_Notify_Module_Register res:%u.", ulResult);
}

static void RegisterLayer2() {
    static constexpr struct {
        const char *pszName;
        uint32_t ulGroup;
        L2IF_EVT_CB pfAdapter;
        uint32_t ulLine;
    } REGISTRATIONS[] = {
        {"KIVO_Adapt_VlanBatchEvtCB", 36, KIVO_Adapt_VlanBatchEvtCB, __LINE__},
        {"KIVO_Adapt_VlanBatchEvtCB", 37, KIVO_Adapt_VlanBatchEvtCB, __LINE__},
        {"KIVO_Adapt_QinQEvtCB", 22, KIVO_Adapt_QinQEvtCB, __LINE__},
        {"KIVO_Adapt_QinQEvtCB", 23, KIVO_Adapt_QinQEvtCB, __LINE__},
        {"KIVO_Adapt_SubVlanEvtCB", 4, KIVO_Adapt_SubVlanEvtCB, __LINE__},
        {"KIVO_Adapt_SubVlanEvtCB", 5, KIVO_Adapt_SubVlanEvtCB, __LINE__},
        {"KIVO_Adapt_VlanAddDelPortEvtCB", 11, KIVO_Adapt_VlanAddDelPortEvtCB, __LINE__},
        {"KIVO_Adapt_VlanAddDelPortEvtCB", 12, KIVO_Adapt_VlanAddDelPortEvtCB, __LINE__},
        {"KIVO_Adapt_PortChgEvtCB", 16, KIVO_Adapt_PortChgEvtCB, __LINE__},
        {"KIVO_L2IFVlanIOCtrEvt", 9, KIVO_Adapt_L2ifVlanUpDownEvtCB, __LINE__},
        {"KIVO_Adapt_PortSwitchEvtCB", 13, KIVO_Adapt_PortSwitchEvtCB, __LINE__},
        {"KIVO_Adapt_PortSwitchEvtCB", 14, KIVO_Adapt_PortSwitchEvtCB, __LINE__},
        {"KIVO_Adapt_PortHasCfgEvtCB", 54, KIVO_Adapt_PortHasCfgEvtCB, __LINE__},
        {"KIVO_Adapt_VlanSetAttrEvtCB", 6, KIVO_Adapt_VlanSetAttrEvtCB, __LINE__},
    };
    for (const auto &st : REGISTRATIONS)
        AssertDone(L2IF_SH_EvtCbFuncReg(st.pszName, st.ulGroup, LAYER2_PRIORITY, st.pfAdapter), st.ulLine);
}

static void RegisterTrunks() {
    const UVELHOST_CALLBACK pfMember = Untyped<TRUNK_EVT_CB>(KIVO_Adapt_TrkMemChgEvtCB);
    const struct {
        const char *pszName;
        uint32_t ulClass;
        uint32_t ulEvent;
        UVELHOST_CALLBACK pfAdapter;
        uint32_t ulLine;
    } astRegistrations[] = {
        {"KIVO_Adapt_TrkMemChgEvtCB", 1, 2, pfMember, __LINE__},
        {"KIVO_Adapt_TrkMemHasCfgEvtCB", 1, TRUNK_EVT_HAS_CFG, Untyped<TRUNK_HAS_CFG_CB>(KIVO_Adapt_TrkMemHasCfgEvtCB),
         __LINE__},
        {"KIVO_Adapt_TrkMemChgEvtCB", 3, 7, pfMember, __LINE__},
        {"KIVO_Adapt_TrkMemChgEvtCB", 3, 8, pfMember, __LINE__},
        {"KIVO_Adapt_TrkMemChgEvtCB", 2, 3, pfMember, __LINE__},
        {"KIVO_TrunkDelEvtCB", 3, 6, Untyped<TRUNK_EVT_CB>(KIVO_Adapt_TrunkDelEvtCB), __LINE__},
    };
    for (const auto &st : astRegistrations)
        AssertDone(Trunk_EventNotifyFuncRegister(st.pszName, st.ulClass, st.ulEvent, TRUNK_PRIORITY, st.pfAdapter),
                   st.ulLine);
}

void KIVO_RegEventCallBackIf(void) {
    RegisterInterfaces();
    AssertDone(IF_RegNotifyFunc(KIVO_LIB_MID, KIVO_Adapt_IFNotifyEvtCB), __LINE__);
    AssertDone(IP_EventNotifyFuncRegister("KIVO_Adapt_IPEvtCB", IP_EVT_CLASS_ADDR, KIVO_Adapt_IPEvtCB), __LINE__);
    RegisterRecovery();
    RegisterLayer2();
    RegisterTrunks();
    (void)L2IF_SH_EvtCbFuncReg("UVEL", BUILDRUN_GROUP, BUILDRUN_PRIORITY, UVEL_Vlan_BuildRun);
    (void)VPNBASE_VRFMGM_RegisterCb(KIVO_LIB_MID, VRF_EVT_CREATED, KIVO_VsysNotifyCallBack);
    (void)VPNBASE_VRFMGM_RegisterCb(KIVO_LIB_MID, VRF_EVT_DELETED, KIVO_VsysNotifyCallBack);
}

void KIVO_RegEventCallBack(void) {
    if (g_ulRegistered == 1)
        return;
    g_ulRegistered = 1; /* before the work: the host may call back while it registers */
    KIVO_RegEventCallBackIf();
}
