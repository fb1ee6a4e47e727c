/* The family list.h. */

#include <uvelhost/list.h>

static DLL_NODE_S *HeadOf(DLL_S *pstList) {
    return reinterpret_cast<DLL_NODE_S *>(pstList);
}

void DLL_Init(DLL_S *pstList) {
    if (pstList != nullptr)
        *pstList = {HeadOf(pstList), HeadOf(pstList), nullptr, 0};
}

void DLL_Insert(DLL_S *pstList, DLL_NODE_S *pstPrev, DLL_NODE_S *pstNode) {
    if (pstList == nullptr || pstNode == nullptr)
        return;
    DLL_NODE_S *pstBefore = pstPrev != nullptr ? pstPrev : HeadOf(pstList);
    DLL_NODE_S *pstAfter = pstBefore->pstNext;
    pstNode->pstPrev = pstBefore;
    pstNode->pstNext = pstAfter;
    pstBefore->pstNext = pstAfter->pstPrev = pstNode;
    ++pstList->ulCount;
}

void DLL_Delete(DLL_S *pstList, DLL_NODE_S *pstNode) {
    if (pstList == nullptr || pstNode == nullptr || pstNode->pstNext == nullptr || pstNode->pstPrev == nullptr)
        return;
    pstNode->pstPrev->pstNext = pstNode->pstNext;
    pstNode->pstNext->pstPrev = pstNode->pstPrev;
    pstNode->pstNext = pstNode->pstPrev = nullptr;
    --pstList->ulCount;
}
