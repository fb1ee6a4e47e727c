/* Nodes, processes, virtual systems and the command line. */
#include <uvelcommon_base/kivo_process_query.h>

#include <securec.h>

#include "host_read.h"
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_vsys.h>
#include <uvelhost/assert.h>
#include <uvelhost/component.h>
#include <uvelhost/device.h>
#include <uvelhost/vrf.h>

static constexpr char SOURCE[] = "src/common_adp/src/kivo_pdtadapt";

uint32_t g_uveldMainNodeID;

uint32_t KIVO_Adapt_IPC_GetMainNodeID(void) {
    return g_uveldMainNodeID;
}

uint32_t KIVO_Adapt_IPC_GetNodeID(uint32_t ulMid, uint32_t ulComTypeId, uint32_t ulSlot, uint32_t *pulNode,
                                  uint32_t *pulCount) {
    if (pulNode == nullptr || pulCount == nullptr)
        return KIVO_FAIL;
    return CMNGA_QueryNodeId(ulMid, ulComTypeId, ulSlot, pulNode, pulCount) == KIVO_OK ? KIVO_OK : KIVO_FAIL;
}

uint32_t KIVO_Adapt_GetProcessIdByMid(uint32_t ulMid, uint32_t *pulProcessId) {
    return pulProcessId != nullptr && CMNGA_QueryCompProcByMid(ulMid, pulProcessId) == KIVO_OK ? KIVO_OK : KIVO_FAIL;
}

uint32_t KIVO_Adapt_GetInstanceNameByNodeID(uint32_t, uint32_t ulInstance, char *pszName, uint32_t ulSize) {
    if (pszName == nullptr) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    (void)sprintf_s(pszName, ulSize, "process %2u", ulInstance >> 12 & 0xFF);
    return KIVO_OK;
}

uint32_t KIVO_Adapt_GetInstanceNameMaxLen(uint32_t *pulLen) {
    if (pulLen == nullptr)
        return KIVO_FAIL;
    *pulLen = KIVO_INSTANCE_NAME_SIZE;
    return KIVO_OK;
}

uint32_t KIVO_Adapt_CFG_GetVsysID(void) {
    return CFG_GetVsysID();
}

uint32_t KIVO_Adapt_GetVsysIDByIfFullName(const char *pszName) {
    const uint32_t ulId = ReadOr<BDS_l3vpnName2VrfIdQueryByName>(0U, pszName);
    return ulId < KIVO_GetKivoCommonSpec(KIVO_SPEC_VSYS_LIMIT) ? ulId : 0;
}

uint32_t KIVO_Adapt_SupportOnlyLsw(void) {
    return DEV_SupportOnlyLsw();
}

uint32_t KIVO_Adapt_RegistChineseCLI(uint32_t ulMid, const CLI_TEXT_S *pstTexts, uint32_t ulCount) {
    return CLI_RegistChinese(ulMid, pstTexts, ulCount);
}

uint32_t KIVO_Adapt_SpuCpuHelp(char *pszHelp, uint32_t ulSize) {
    return SPU_CpuHelp(pszHelp, ulSize);
}

uint32_t KIVO_Adapt_SpuCpuCheck(const char *pszArgument, uint32_t *pulSlot, uint32_t *pulCpu) {
    return SPU_CpuCheck(pszArgument, pulSlot, pulCpu);
}
