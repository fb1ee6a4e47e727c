// Writing, reading and watching, whatever keeps the database.

#include "confdb_fixtures.h"
#include "etcd_fixtures.h"

#include <thread>

using namespace confdb_test;

namespace {

enum class Kind { SQLITE, ETCD };

class Confdb : public testing::TestWithParam<Kind> {
  protected:
    void SetUp() override {
        if (GetParam() == Kind::SQLITE) {
            endpoint = "sqlite:" + (folder_ / "db");
        } else if (HasEtcd()) {
            etcd_ = std::make_unique<Etcd>();
            endpoint = etcd_->Endpoint();
        } else {
            GTEST_SKIP() << "etcd-server and etcd-client are not installed";
        }
    }

    std::string endpoint;

  private:
    TempFolder folder_;
    std::unique_ptr<Etcd> etcd_;
};

using Contents = Store::Contents;

TEST_P(Confdb, AValueIsReadAsItWasWritten) {
    const Store store(endpoint);
    std::string every_byte;
    for (int i = 0; i < 256; ++i)
        every_byte += static_cast<char>(i);
    for (const std::string &value : {std::string("edge-1"), std::string(), std::string("\0", 1), every_byte}) {
        store.Put("system_info", "sys_name", value);
        EXPECT_EQ(value, store.Value("system_info", "sys_name"));
    }
}

TEST_P(Confdb, RevisionsGrow) {
    const Store store(endpoint);
    const uint64_t first = store.Put("t", "k", "1");
    const uint64_t second = store.Put("t", "k", "1");
    const uint64_t third = store.Delete("t", "k");
    EXPECT_LT(0u, first);
    EXPECT_LT(first, second);
    EXPECT_LT(second, third);
}

TEST_P(Confdb, WhatIsNotThereIsNotFound) {
    const Store store(endpoint);
    char value[4] = "abc";
    uint32_t length = sizeof value;
    uint64_t revision = 7;
    EXPECT_EQ(DB_NOT_FOUND, db_store_get(store.Get(), "t", "k", value, &length));
    EXPECT_EQ(DB_NOT_FOUND, db_store_delete(store.Get(), "t", "k", &revision));
    EXPECT_STREQ("no such key", db_last_error());
    EXPECT_STREQ("abc", value);
    EXPECT_EQ(4u, length);
    EXPECT_EQ(7u, revision);
    EXPECT_EQ(Contents(), store.All());
}

TEST_P(Confdb, AValueLongerThanItsRoomIsNotCut) {
    const Store store(endpoint);
    store.Put("t", "k", "12345678");
    char value[9] = "........";
    uint32_t length = 7;
    EXPECT_EQ(DB_NO_ROOM, db_store_get(store.Get(), "t", "k", value, &length));
    EXPECT_EQ(8u, length);
    EXPECT_STREQ("........", value);
    EXPECT_EQ(DB_OK, db_store_get(store.Get(), "t", "k", value, &length));
    EXPECT_STREQ("12345678", value);
    length = 0;
    EXPECT_EQ(DB_NO_ROOM, db_store_get(store.Get(), "t", "k", nullptr, &length));
    EXPECT_EQ(8u, length);
}

TEST_P(Confdb, AListIsOfOneTableOrOfAll) {
    const Store store(endpoint);
    store.Put("b", "k", "1");
    store.Put("a", "z", "2");
    store.Put("a", "k/with/slashes", "3");
    store.Put("ab", "k", "4");
    EXPECT_EQ((Contents{{"a/k/with/slashes", "3"}, {"a/z", "2"}}), store.All("a"));
    EXPECT_EQ((Contents{{"a/k/with/slashes", "3"}, {"a/z", "2"}, {"ab/k", "4"}, {"b/k", "1"}}), store.All());
    EXPECT_EQ(Contents(), store.All("none"));
}

/* More keys than a cluster is asked for at once, from several writers at the same time. */
TEST_P(Confdb, AListOfManyKeysIsWhole) {
    constexpr int WRITERS = 8;
    const int count = GetParam() == Kind::ETCD ? 1203 : 203;
    Contents expected;
    for (int i = 0; i < count; ++i)
        expected["t/k" + std::to_string(i)] = std::to_string(i);
    std::vector<std::thread> writers;
    for (int writer = 0; writer < WRITERS; ++writer) {
        writers.emplace_back([&, writer] {
            const Store store(endpoint);
            for (int i = writer; i < count; i += WRITERS)
                store.Put("t", "k" + std::to_string(i), std::to_string(i));
        });
    }
    for (std::thread &writer : writers)
        writer.join();
    EXPECT_EQ(expected, Store(endpoint).All("t"));
    Watch watch(endpoint, "t");
    EXPECT_TRUE(watch.Until([&] { return watch.state == expected; }));
}

TEST_P(Confdb, TheLongestNamesAndValuesAreTakenAndLongerOnesRefused) {
    const Store store(endpoint);
    const std::string table(64, 't');
    const std::string key(1024, 'k');
    const std::string value(1024 * 1024, 'v');
    store.Put(table, key, value);
    EXPECT_EQ(value, store.Value(table, key));
    EXPECT_EQ(DB_FAILED, db_store_put(store.Get(), (table + "t").c_str(), "k", "v", 1, nullptr));
    EXPECT_EQ(DB_FAILED, db_store_put(store.Get(), "t", (key + "k").c_str(), "v", 1, nullptr));
    EXPECT_EQ(DB_FAILED, db_store_put(store.Get(), "t", "k", value.data(), DB_VALUE_SIZE + 1, nullptr));
    EXPECT_EQ(1u, store.All().size());
}

TEST_P(Confdb, AWatchTellsFirstWhatIsThereAndThenEveryChange) {
    const Store store(endpoint);
    store.Put("t", "old", "1");
    store.Put("other", "old", "1");
    Watch watch(endpoint, "t");
    ASSERT_TRUE(watch.UntilValue("t/old", "1"));
    store.Put("t", "new", "2");
    store.Put("t", "new", "3");
    store.Put("other", "new", "2");
    store.Delete("t", "old");
    const uint64_t last = store.Put("t", "new", "");
    ASSERT_TRUE(watch.UntilValue("t/new", ""));
    ASSERT_EQ(5u, watch.events.size());
    const std::vector<std::pair<std::string, uint32_t>> expected{{"t/old", DB_CHANGE_PRESENT},
                                                                 {"t/new", DB_CHANGE_CREATED},
                                                                 {"t/new", DB_CHANGE_CHANGED},
                                                                 {"t/old", DB_CHANGE_DELETED},
                                                                 {"t/new", DB_CHANGE_CHANGED}};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i].first, watch.events[i].name) << i;
        EXPECT_EQ(expected[i].second, watch.events[i].change) << i;
    }
    EXPECT_EQ("3", watch.events[2].value);
    EXPECT_EQ(last, watch.events[4].revision);
}

TEST_P(Confdb, AWatchOfAllTablesTellsThemApart) {
    const Store store(endpoint);
    store.Put("a", "b", "1");
    Watch watch(endpoint);
    ASSERT_TRUE(watch.UntilValue("a/b", "1"));
    store.Put("c", "b", "2");
    store.Delete("a", "b");
    ASSERT_TRUE(watch.UntilGone("a/b"));
    EXPECT_EQ((Contents{{"c/b", "2"}}), watch.state);
}

TEST_P(Confdb, TheSameValueAgainIsAChange) {
    const Store store(endpoint);
    Watch watch(endpoint, "t");
    store.Put("t", "k", "1");
    ASSERT_TRUE(watch.UntilValue("t/k", "1"));
    store.Put("t", "k", "1");
    EXPECT_TRUE(watch.Until([&] { return watch.events.size() == 2; }));
    EXPECT_EQ(DB_CHANGE_CHANGED, watch.events.back().change);
}

INSTANTIATE_TEST_SUITE_P(Of, Confdb, testing::Values(Kind::SQLITE, Kind::ETCD),
                         [](const auto &kind) { return kind.param == Kind::SQLITE ? "Sqlite" : "Etcd"; });

} // namespace
