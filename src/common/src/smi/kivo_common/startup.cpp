#include <uvelcommon_base/kivo_startup.h>

#include <cstring>

#include "kivo_adaptfunc/hook_table.h"
#include <uvelcommon_base/kivo_chi.h>
#include <uvelcommon_base/kivo_index.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelhost/assert.h>

static constexpr char SOURCE[] = "src/common/src/smi/kivo_common";

static constexpr uint32_t FIRST_INDEX_TABLES = 30;
static_assert(FIRST_INDEX_TABLES * sizeof(KIVO_TABLE_INDEX_S) == 960);

static bool g_bGlobalVarInitDone = false;

template <typename Table>
static void Fill(Table &table, int iByte) {
    std::memset(&table, iByte, sizeof table);
}

uint32_t UVEL_GlobalVarInit(void) {
    if (g_bGlobalVarInitDone)
        return KIVO_FAIL;
    g_bGlobalVarInitDone = true; /* before the work: a failed start is not tried again */

    Fill(g_stKIVOCliTemplet, 0);
    Fill(g_stKIVOPubHookHere, 0);
    Fill(g_szKIVOPdtMacroDefineCfg, 0);
    Fill(g_stKIVOPdtOxmCfg, 0);
    Fill(g_aulKivoTid, 0xFF);
    g_aulKivoTaskPriority[0] = KIVO_TASK_PRIORITY_DEFAULT;

    void *pTables = KIVO_MemAlloc(KIVO_LIB_MID, FIRST_INDEX_TABLES * sizeof(KIVO_TABLE_INDEX_S));
    if (pTables == nullptr) {
        QALFatalError_X(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    g_stTableIndex = static_cast<KIVO_TABLE_INDEX_S *>(pTables);
    std::memset(g_stTableIndex, 0, FIRST_INDEX_TABLES * sizeof(KIVO_TABLE_INDEX_S));
    g_ulTotalTableNum = FIRST_INDEX_TABLES;

    Fill(g_KivoModuleIDs, 0xFF);
    return CHI_Init();
}
