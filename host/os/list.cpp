#include <uvelhost/list.h>

void DLL_Init(DLL_S *pstList) {
    if (pstList == nullptr)
        return;
    auto *head = reinterpret_cast<DLL_NODE_S *>(pstList);
    pstList->pstNext = head;
    pstList->pstPrev = head;
    pstList->pReserved = nullptr;
    pstList->ulCount = 0;
}

void DLL_Insert(DLL_S *pstList, DLL_NODE_S *pstPrev, DLL_NODE_S *pstNode) {
    if (pstList == nullptr || pstNode == nullptr)
        return;
    if (pstPrev == nullptr)
        pstPrev = reinterpret_cast<DLL_NODE_S *>(pstList);
    pstNode->pstPrev = pstPrev;
    pstNode->pstNext = pstPrev->pstNext;
    pstPrev->pstNext->pstPrev = pstNode;
    pstPrev->pstNext = pstNode;
    ++pstList->ulCount;
}

void DLL_Delete(DLL_S *pstList, DLL_NODE_S *pstNode) {
    if (pstList == nullptr || pstNode == nullptr || pstNode->pstNext == nullptr || pstNode->pstPrev == nullptr)
        return;
    pstNode->pstPrev->pstNext = pstNode->pstNext;
    pstNode->pstNext->pstPrev = pstNode->pstPrev;
    pstNode->pstNext = nullptr;
    pstNode->pstPrev = nullptr;
    --pstList->ulCount;
}
