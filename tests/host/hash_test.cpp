#include <uvelhost/hash.h>

#include <cstddef>
#include <gtest/gtest.h>
#include <uvelhost/memory.h>

namespace {

struct Node {
    uint32_t key;
    uint32_t value;
    std::max_align_t anything;
};

uint32_t KeyHash(const void *node) {
    return static_cast<const Node *>(node)->key & 7;
}

uint32_t SameKey(const void *a, const void *b) {
    return static_cast<const Node *>(a)->key == static_cast<const Node *>(b)->key ? 1 : 0;
}

uint32_t HandleOf(const char *name) {
    uint32_t handle = UVELHOST_NONE;
    EXPECT_EQ(0u, QAL_HandleInitialize(name, &handle));
    return handle;
}

class HostHash : public testing::Test {
  protected:
    ~HostHash() override {
        LITE_HASH_Destroy(table_);
        EXPECT_EQ(0u, Blocks()) << "memory left over";
    }

    LITE_HASH_S *Create(uint32_t max_nodes = LITE_HASH_UNLIMITED, uint32_t buckets = 4) {
        return table_ = LITE_HASH_CreateWithListCurr(max_nodes, sizeof(Node), buckets, KeyHash, SameKey, handle_);
    }

    Node *Add(uint32_t key, uint32_t value = 0) {
        auto *node = static_cast<Node *>(LITE_HASH_NewData(table_));
        node->key = key;
        node->value = value;
        EXPECT_EQ(0u, LITE_HASH_AddNode(table_, node));
        return node;
    }

    Node *Find(uint32_t key) {
        Node wanted = {};
        wanted.key = key;
        return static_cast<Node *>(LITE_HASH_FindElmtFromFirst(table_, &wanted));
    }

    uint32_t Remove(uint32_t key) {
        Node wanted = {};
        wanted.key = key;
        return LITE_HASH_RemoveElmtByKey(table_, &wanted);
    }

    uint64_t Blocks() const {
        QAL_MEM_STATS_S stats = {};
        EXPECT_EQ(0u, QAL_MemGetStats(handle_, &stats));
        return stats.ulBlocks;
    }

    const uint32_t handle_ = HandleOf("hash-test");
    LITE_HASH_S *table_ = nullptr;
};

} // namespace

TEST_F(HostHash, ATableIsRefusedWithoutFunctionsOrSizes) {
    EXPECT_EQ(nullptr, LITE_HASH_CreateWithListCurr(0, sizeof(Node), 4, KeyHash, SameKey, handle_));
    EXPECT_EQ(nullptr, LITE_HASH_CreateWithListCurr(9, 0, 4, KeyHash, SameKey, handle_));
    EXPECT_EQ(nullptr, LITE_HASH_CreateWithListCurr(9, sizeof(Node), 0, KeyHash, SameKey, handle_));
    EXPECT_EQ(nullptr, LITE_HASH_CreateWithListCurr(9, sizeof(Node), 4, nullptr, SameKey, handle_));
    EXPECT_EQ(nullptr, LITE_HASH_CreateWithListCurr(9, sizeof(Node), 4, KeyHash, nullptr, handle_));
}

TEST_F(HostHash, ATableIsRefusedOnAnUnknownHandle) {
    EXPECT_EQ(nullptr, LITE_HASH_CreateWithListCurr(9, sizeof(Node), 4, KeyHash, SameKey, UVELHOST_NONE));
}

TEST_F(HostHash, SizesThatDoNotFitAreRefusedAndDoNotWrap) {
    EXPECT_EQ(nullptr, LITE_HASH_CreateWithListCurr(9, 0xFFFFFFFF, 4, KeyHash, SameKey, handle_));
    EXPECT_EQ(nullptr, LITE_HASH_CreateWithListCurr(9, sizeof(Node), 0xFFFFFFFF, KeyHash, SameKey, handle_));
    EXPECT_EQ(nullptr, LITE_HASH_CreateWithListCurr(9, sizeof(Node), 0x10000000, KeyHash, SameKey, handle_));
}

TEST_F(HostHash, TableAndNodesAreChargedToTheHandle) {
    ASSERT_NE(nullptr, Create());
    EXPECT_EQ(1u, Blocks());
    Add(1);
    Add(2);
    EXPECT_EQ(3u, Blocks());
}

TEST_F(HostHash, ANewNodeIsZeroedAndAlignedForAnyObject) {
    Create();
    for (int round = 0; round < 2; ++round) {
        auto *node = static_cast<Node *>(LITE_HASH_NewData(table_));
        ASSERT_NE(nullptr, node);
        EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(node) % alignof(std::max_align_t));
        EXPECT_EQ(0u, node->key);
        EXPECT_EQ(0u, node->value);
        node->key = node->value = 0xFFFFFFFF;
        LITE_HASH_FreeData(table_, node);
    }
}

TEST_F(HostHash, ANodeIsFoundOnceItIsLinked) {
    Create();
    auto *node = static_cast<Node *>(LITE_HASH_NewData(table_));
    node->key = 11;
    EXPECT_EQ(nullptr, Find(11));
    EXPECT_EQ(0u, LITE_HASH_GetCount(table_));
    EXPECT_EQ(0u, LITE_HASH_AddNode(table_, node));
    EXPECT_EQ(node, Find(11));
    EXPECT_EQ(1u, LITE_HASH_GetCount(table_));
    EXPECT_EQ(nullptr, Find(3)); /* same hash value, other key */
    EXPECT_EQ(nullptr, Find(12));
}

TEST_F(HostHash, ManyNodesInOneChainAreAllFound) {
    Create(LITE_HASH_UNLIMITED, 1);
    Node *nodes[100];
    for (uint32_t key = 0; key < 100; ++key)
        nodes[key] = Add(key);
    for (uint32_t key = 0; key < 100; ++key)
        EXPECT_EQ(nodes[key], Find(key));
    EXPECT_EQ(100u, LITE_HASH_GetCount(table_));
}

TEST_F(HostHash, OfEqualKeysTheOldestIsFoundAndRemovedFirst) {
    Create();
    Node *first = Add(5, 1);
    Node *second = Add(5, 2);
    Node *third = Add(5, 3);
    EXPECT_EQ(first, Find(5));
    EXPECT_EQ(0u, Remove(5));
    EXPECT_EQ(second, Find(5));
    EXPECT_EQ(0u, Remove(5));
    EXPECT_EQ(third, Find(5));
    LITE_HASH_FreeData(table_, first);
    LITE_HASH_FreeData(table_, second);
}

TEST_F(HostHash, ANodeRemovedFromTheEndOfItsChainLeavesTheEndUsable) {
    Create(LITE_HASH_UNLIMITED, 1);
    Node *first = Add(1);
    Node *second = Add(2);
    EXPECT_EQ(0u, Remove(2));
    Node *third = Add(3);
    EXPECT_EQ(first, Find(1));
    EXPECT_EQ(nullptr, Find(2));
    EXPECT_EQ(third, Find(3));
    LITE_HASH_FreeData(table_, second);
}

TEST_F(HostHash, AChainThatBecameEmptyIsUsableAgain) {
    Create(LITE_HASH_UNLIMITED, 1);
    Node *node = Add(1);
    EXPECT_EQ(0u, Remove(1));
    EXPECT_EQ(0u, LITE_HASH_GetCount(table_));
    EXPECT_EQ(0u, LITE_HASH_AddNode(table_, node));
    EXPECT_EQ(node, Find(1));
}

TEST_F(HostHash, RemovingLeavesTheMemoryToTheCaller) {
    Create();
    Node *node = Add(5, 77);
    EXPECT_EQ(0u, Remove(5));
    EXPECT_EQ(77u, node->value);
    EXPECT_EQ(2u, Blocks());
    LITE_HASH_FreeData(table_, node);
    EXPECT_EQ(1u, Blocks());
}

TEST_F(HostHash, RemovingAnUnknownKeyFails) {
    Create();
    Node *node = Add(5);
    EXPECT_EQ(1u, Remove(6));
    EXPECT_EQ(1u, Remove(13));
    EXPECT_EQ(node, Find(5));
    EXPECT_EQ(1u, LITE_HASH_GetCount(table_));
}

TEST_F(HostHash, ANodeIsLinkedOnlyOnce) {
    Create();
    Node *node = Add(5);
    EXPECT_EQ(1u, LITE_HASH_AddNode(table_, node));
    EXPECT_EQ(1u, LITE_HASH_GetCount(table_));
}

TEST_F(HostHash, ALinkedNodeIsNotReleased) {
    Create();
    Node *node = Add(5);
    LITE_HASH_FreeData(table_, node);
    EXPECT_EQ(node, Find(5));
    EXPECT_EQ(2u, Blocks());
}

TEST_F(HostHash, ANodeOfAnotherTableIsNeitherLinkedNorReleased) {
    Create();
    LITE_HASH_S *other = LITE_HASH_CreateWithListCurr(9, sizeof(Node), 4, KeyHash, SameKey, handle_);
    void *node = LITE_HASH_NewData(other);
    EXPECT_EQ(1u, LITE_HASH_AddNode(table_, node));
    LITE_HASH_FreeData(table_, node);
    EXPECT_EQ(3u, Blocks());
    LITE_HASH_FreeData(other, node);
    LITE_HASH_Destroy(other);
}

TEST_F(HostHash, TheLimitCountsEveryNodeThatExists) {
    Create(2);
    Node *first = Add(1);
    void *second = LITE_HASH_NewData(table_);
    ASSERT_NE(nullptr, second);
    EXPECT_EQ(nullptr, LITE_HASH_NewData(table_));
    EXPECT_EQ(0u, Remove(1));
    EXPECT_EQ(nullptr, LITE_HASH_NewData(table_)) << "a removed node still exists";
    LITE_HASH_FreeData(table_, first);
    void *third = LITE_HASH_NewData(table_);
    EXPECT_NE(nullptr, third);
    LITE_HASH_FreeData(table_, second);
    LITE_HASH_FreeData(table_, third);
}

TEST_F(HostHash, DestroyingReleasesEveryLinkedNode) {
    Create();
    for (uint32_t key = 0; key < 20; ++key)
        Add(key);
    LITE_HASH_Destroy(table_);
    table_ = nullptr;
    EXPECT_EQ(0u, Blocks());
}

TEST_F(HostHash, NullArgumentsAreRefused) {
    Create();
    Node node = {};
    LITE_HASH_Destroy(nullptr);
    EXPECT_EQ(nullptr, LITE_HASH_FindElmtFromFirst(nullptr, &node));
    EXPECT_EQ(nullptr, LITE_HASH_FindElmtFromFirst(table_, nullptr));
    EXPECT_EQ(nullptr, LITE_HASH_NewData(nullptr));
    EXPECT_EQ(1u, LITE_HASH_AddNode(nullptr, &node));
    EXPECT_EQ(1u, LITE_HASH_AddNode(table_, nullptr));
    EXPECT_EQ(1u, LITE_HASH_RemoveElmtByKey(nullptr, &node));
    EXPECT_EQ(1u, LITE_HASH_RemoveElmtByKey(table_, nullptr));
    LITE_HASH_FreeData(nullptr, &node);
    LITE_HASH_FreeData(table_, nullptr);
    EXPECT_EQ(0u, LITE_HASH_GetCount(nullptr));
}
