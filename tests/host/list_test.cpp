#include <uvelhost/list.h>

#include <gtest/gtest.h>
#include <vector>

namespace {

struct Record {
    DLL_NODE_S node;
    int value;
};

class HostList : public testing::Test {
  protected:
    HostList() {
        for (int i = 0; i < 4; ++i)
            records_[i].value = i;
        DLL_Init(&list_);
    }

    DLL_NODE_S *Node(int i) { return &records_[i].node; }
    DLL_NODE_S *Head() { return reinterpret_cast<DLL_NODE_S *>(&list_); }

    void Fill(std::initializer_list<int> values) {
        for (int value : values)
            DLL_Insert(&list_, list_.pstPrev, Node(value));
    }

    std::vector<int> Forward() {
        std::vector<int> values;
        for (DLL_NODE_S *node = list_.pstNext; node != Head(); node = node->pstNext)
            values.push_back(reinterpret_cast<Record *>(node)->value);
        return values;
    }

    std::vector<int> Backward() {
        std::vector<int> values;
        for (DLL_NODE_S *node = list_.pstPrev; node != Head(); node = node->pstPrev)
            values.push_back(reinterpret_cast<Record *>(node)->value);
        return values;
    }

    using Values = std::vector<int>;
    DLL_S list_ = {};
    Record records_[4] = {};
};

} // namespace

TEST_F(HostList, AnEmptyHeadPointsToItself) {
    DLL_S list = {nullptr, nullptr, &list, 7};
    DLL_Init(&list);
    EXPECT_EQ(reinterpret_cast<DLL_NODE_S *>(&list), list.pstNext);
    EXPECT_EQ(reinterpret_cast<DLL_NODE_S *>(&list), list.pstPrev);
    EXPECT_EQ(0u, list.ulCount);
}

TEST_F(HostList, WithoutAPredecessorANodeBecomesTheFirst) {
    DLL_Insert(&list_, nullptr, Node(0));
    DLL_Insert(&list_, nullptr, Node(1));
    EXPECT_EQ((Values{1, 0}), Forward());
    EXPECT_EQ((Values{0, 1}), Backward());
    EXPECT_EQ(2u, list_.ulCount);
}

TEST_F(HostList, TheHeadAsPredecessorMakesANodeTheFirst) {
    DLL_Insert(&list_, Head(), Node(0));
    DLL_Insert(&list_, Head(), Node(1));
    EXPECT_EQ((Values{1, 0}), Forward());
}

TEST_F(HostList, ANodeIsLinkedBehindItsPredecessor) {
    Fill({0, 2});
    DLL_Insert(&list_, Node(0), Node(1));
    DLL_Insert(&list_, Node(2), Node(3));
    EXPECT_EQ((Values{0, 1, 2, 3}), Forward());
    EXPECT_EQ((Values{3, 2, 1, 0}), Backward());
    EXPECT_EQ(4u, list_.ulCount);
}

TEST_F(HostList, AHeadInitialisedByHandWorks) {
    list_.pstNext = list_.pstPrev = Head();
    list_.ulCount = 0;
    Fill({0, 1});
    EXPECT_EQ((Values{0, 1}), Forward());
}

TEST_F(HostList, RemovingTheFirstAMiddleAndTheLastNodeKeepsTheOthers) {
    Fill({0, 1, 2, 3});
    DLL_Delete(&list_, Node(1));
    EXPECT_EQ((Values{0, 2, 3}), Forward());
    DLL_Delete(&list_, Node(0));
    EXPECT_EQ((Values{2, 3}), Forward());
    DLL_Delete(&list_, Node(3));
    EXPECT_EQ((Values{2}), Forward());
    EXPECT_EQ((Values{2}), Backward());
    EXPECT_EQ(1u, list_.ulCount);
}

TEST_F(HostList, RemovingTheOnlyNodeLeavesAnEmptyHead) {
    Fill({0});
    DLL_Delete(&list_, Node(0));
    EXPECT_EQ(Head(), list_.pstNext);
    EXPECT_EQ(Head(), list_.pstPrev);
    EXPECT_EQ(0u, list_.ulCount);
}

TEST_F(HostList, ARemovedNodeHasNoLinksAndCanBeLinkedAgain) {
    Fill({0, 1});
    DLL_Delete(&list_, Node(0));
    EXPECT_EQ(nullptr, Node(0)->pstNext);
    EXPECT_EQ(nullptr, Node(0)->pstPrev);
    DLL_Insert(&list_, Node(1), Node(0));
    EXPECT_EQ((Values{1, 0}), Forward());
}

TEST_F(HostList, RemovingANodeThatIsInNoListChangesNothing) {
    Fill({0, 1});
    DLL_Delete(&list_, Node(0));
    DLL_Delete(&list_, Node(0));
    DLL_Delete(&list_, Node(2));
    EXPECT_EQ((Values{1}), Forward());
    EXPECT_EQ(1u, list_.ulCount);
}

TEST_F(HostList, NullArgumentsChangeNothing) {
    Fill({0});
    DLL_Init(nullptr);
    DLL_Insert(nullptr, nullptr, Node(1));
    DLL_Insert(&list_, nullptr, nullptr);
    DLL_Delete(nullptr, Node(0));
    DLL_Delete(&list_, nullptr);
    EXPECT_EQ((Values{0}), Forward());
    EXPECT_EQ(1u, list_.ulCount);
    EXPECT_EQ(nullptr, Node(1)->pstNext);
}
