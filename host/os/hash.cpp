#include <uvelhost/hash.h>

#include "os/accounts.h"
#include <cstddef>
#include <cstring>

using namespace uvel::host;

/* Lies in front of every node; its size keeps the node aligned for any object. */
struct Link {
    LITE_HASH_S *table;
    Link *next;
    uint32_t hash;
    bool linked;
};

struct Chain {
    Link *first;
    Link **last; /* where the next node is linked */
};

struct LITE_HASH {
    LITE_HASH_KEY_FUNC key;
    LITE_HASH_COMPARE_FUNC compare;
    uint32_t account;
    uint32_t node_size;
    uint32_t max_nodes;
    uint32_t handed_out; /* nodes that exist, linked or not */
    uint32_t linked;
    uint32_t buckets;
    Chain chains[];
};

static constexpr std::size_t LINK_SIZE =
    (sizeof(Link) + alignof(std::max_align_t) - 1) / alignof(std::max_align_t) * alignof(std::max_align_t);

static void *NodeOf(Link *link) {
    return reinterpret_cast<char *>(link) + LINK_SIZE;
}
static Link *LinkOf(void *node) {
    return reinterpret_cast<Link *>(static_cast<char *>(node) - LINK_SIZE);
}

/* Where the oldest node with the key is linked, or null. */
static Link **Find(LITE_HASH_S *table, const void *key_node) {
    uint32_t hash = table->key(key_node);
    for (Link **at = &table->chains[hash % table->buckets].first; *at != nullptr; at = &(*at)->next)
        if ((*at)->hash == hash && table->compare(NodeOf(*at), key_node) == 1)
            return at;
    return nullptr;
}

LITE_HASH_S *LITE_HASH_CreateWithListCurr(uint32_t ulMaxNodes, uint32_t ulNodeSize, uint32_t ulBuckets,
                                          LITE_HASH_KEY_FUNC pfKey, LITE_HASH_COMPARE_FUNC pfCompare,
                                          uint32_t ulMemHandle) {
    if (ulMaxNodes == 0 || ulNodeSize == 0 || ulBuckets == 0 || pfKey == nullptr || pfCompare == nullptr)
        return nullptr;
    uint64_t size = sizeof(LITE_HASH_S) + uint64_t{ulBuckets} * sizeof(Chain);
    if (size > UINT32_MAX || ulNodeSize + uint64_t{LINK_SIZE} > UINT32_MAX)
        return nullptr;
    auto *table = static_cast<LITE_HASH_S *>(Allocate(ulMemHandle, static_cast<uint32_t>(size)));
    if (table == nullptr)
        return nullptr;
    *table = {pfKey, pfCompare, ulMemHandle, ulNodeSize, ulMaxNodes, 0, 0, ulBuckets};
    for (uint32_t i = 0; i < ulBuckets; ++i)
        table->chains[i] = {nullptr, &table->chains[i].first};
    return table;
}

void LITE_HASH_Destroy(LITE_HASH_S *pstHash) {
    if (pstHash == nullptr)
        return;
    for (uint32_t i = 0; i < pstHash->buckets; ++i) {
        for (Link *link = pstHash->chains[i].first; link != nullptr;) {
            Link *next = link->next;
            Release(link);
            link = next;
        }
    }
    Release(pstHash);
}

void *LITE_HASH_FindElmtFromFirst(LITE_HASH_S *pstHash, const void *pKeyNode) {
    if (pstHash == nullptr || pKeyNode == nullptr)
        return nullptr;
    Link **at = Find(pstHash, pKeyNode);
    return at == nullptr ? nullptr : NodeOf(*at);
}

void *LITE_HASH_NewData(LITE_HASH_S *pstHash) {
    if (pstHash == nullptr || pstHash->handed_out >= pstHash->max_nodes)
        return nullptr;
    auto *link = static_cast<Link *>(Allocate(pstHash->account, pstHash->node_size + uint32_t{LINK_SIZE}));
    if (link == nullptr)
        return nullptr;
    std::memset(static_cast<void *>(link), 0, LINK_SIZE + pstHash->node_size);
    link->table = pstHash;
    ++pstHash->handed_out;
    return NodeOf(link);
}

uint32_t LITE_HASH_AddNode(LITE_HASH_S *pstHash, void *pNode) {
    if (pstHash == nullptr || pNode == nullptr)
        return 1;
    Link *link = LinkOf(pNode);
    if (link->table != pstHash || link->linked)
        return 1;
    link->hash = pstHash->key(pNode);
    link->next = nullptr;
    link->linked = true;
    Chain &chain = pstHash->chains[link->hash % pstHash->buckets];
    *chain.last = link;
    chain.last = &link->next;
    ++pstHash->linked;
    return UVELHOST_OK;
}

uint32_t LITE_HASH_RemoveElmtByKey(LITE_HASH_S *pstHash, const void *pKeyNode) {
    if (pstHash == nullptr || pKeyNode == nullptr)
        return 1;
    Link **at = Find(pstHash, pKeyNode);
    if (at == nullptr)
        return 1;
    Link *link = *at;
    *at = link->next;
    if (link->next == nullptr)
        pstHash->chains[link->hash % pstHash->buckets].last = at;
    link->next = nullptr;
    link->linked = false;
    --pstHash->linked;
    return UVELHOST_OK;
}

void LITE_HASH_FreeData(LITE_HASH_S *pstHash, void *pNode) {
    if (pstHash == nullptr || pNode == nullptr)
        return;
    Link *link = LinkOf(pNode);
    if (link->table != pstHash || link->linked)
        return;
    --pstHash->handed_out;
    Release(link);
}

uint32_t LITE_HASH_GetCount(const LITE_HASH_S *pstHash) {
    return pstHash == nullptr ? 0 : pstHash->linked;
}
