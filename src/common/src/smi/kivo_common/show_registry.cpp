#include <uvelcommon_base/kivo_show.h>

#include <cstddef>
#include <cstring>
#include <uvelcommon_base/kivo_mem.h>

DLL_S g_stDllShowFeatureTbl;
DLL_S g_stDllShowModuleTbl;

static bool g_bShowFeatureTblReady;
static bool g_bShowModuleTblReady;

static_assert(sizeof(UVEL_SHOW_NODE_S) == 40);
static_assert(offsetof(UVEL_SHOW_NODE_S, stNode) == 0);
static_assert(offsetof(UVEL_SHOW_NODE_S, ulMid) == 24);
static_assert(offsetof(UVEL_SHOW_NODE_S, pfShow) == 32);

/* The head as the end mark of its circle of nodes. */
static DLL_NODE_S *EndOf(DLL_S &stList) {
    return reinterpret_cast<DLL_NODE_S *>(&stList);
}

static void InitOnce(DLL_S &stList, bool &bReady) {
    if (bReady)
        return;
    bReady = true;
    stList = DLL_S{EndOf(stList), EndOf(stList), nullptr, 0};
}

/* A list that was never used is all zero, hence the look at the count before the links. */
static UVEL_SHOW_NODE_S *Find(DLL_S &stList, uint32_t ulMid, UVEL_SHOW_FUNC pfShow) {
    if (stList.ulCount == 0)
        return nullptr;
    for (DLL_NODE_S *pstNode = stList.pstNext; pstNode != EndOf(stList); pstNode = pstNode->pstNext) {
        UVEL_SHOW_NODE_S *pstShow = reinterpret_cast<UVEL_SHOW_NODE_S *>(pstNode);
        if (pstShow->ulMid == ulMid && pstShow->pfShow == pfShow)
            return pstShow;
    }
    return nullptr;
}

static uint32_t Register(DLL_S &stList, bool &bReady, uint32_t ulMid, UVEL_SHOW_FUNC pfShow) {
    if (pfShow == nullptr)
        return KIVO_FAIL;
    InitOnce(stList, bReady);
    if (Find(stList, ulMid, pfShow) != nullptr)
        return KIVO_OK;

    UVEL_SHOW_NODE_S *pstShow = static_cast<UVEL_SHOW_NODE_S *>(KIVO_MemAlloc(ulMid, sizeof(*pstShow)));
    if (pstShow == nullptr)
        return KIVO_FAIL;
    memset(pstShow, 0, sizeof(*pstShow));
    pstShow->ulMid = ulMid;
    pstShow->pfShow = pfShow;
    DLL_Insert(&stList, stList.pstPrev, &pstShow->stNode);
    return KIVO_OK;
}

/* Answers the module id where there is nothing to remove: an old habit that callers ignore, kept as it is. */
static uint32_t Unregister(DLL_S &stList, uint32_t ulMid, UVEL_SHOW_FUNC pfShow) {
    UVEL_SHOW_NODE_S *pstShow = Find(stList, ulMid, pfShow);
    if (pstShow == nullptr)
        return ulMid;
    DLL_Delete(&stList, &pstShow->stNode);
    return KIVO_MemFree(pstShow);
}

void UVEL_RegShowFeatureTbl_Init(void) {
    InitOnce(g_stDllShowFeatureTbl, g_bShowFeatureTblReady);
}

void UVEL_RegShowModuleTbl_Init(void) {
    InitOnce(g_stDllShowModuleTbl, g_bShowModuleTblReady);
}

uint32_t UVEL_FuncRegShowFeature(uint32_t ulMid, UVEL_SHOW_FUNC pfShow) {
    return Register(g_stDllShowFeatureTbl, g_bShowFeatureTblReady, ulMid, pfShow);
}

uint32_t UVEL_FuncRegShowModuleID(uint32_t ulMid, UVEL_SHOW_FUNC pfShow) {
    return Register(g_stDllShowModuleTbl, g_bShowModuleTblReady, ulMid, pfShow);
}

uint32_t UVEL_FuncUnRegShowFeature(uint32_t ulMid, UVEL_SHOW_FUNC pfShow) {
    return Unregister(g_stDllShowFeatureTbl, ulMid, pfShow);
}

uint32_t UVEL_FuncUnRegShowModule(uint32_t ulMid, UVEL_SHOW_FUNC pfShow) {
    return Unregister(g_stDllShowModuleTbl, ulMid, pfShow);
}
