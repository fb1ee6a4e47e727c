// The subscription client as the library uses it: connections, subscriptions, endpoints.

#include "confdb_fixtures.h"

#include <atomic>
#include <thread>
#include <uvelhost/epoll.h>
#include <uvelhost/report.h>

using namespace confdb_test;

namespace {

/* Callbacks know nothing but their arguments, so what they heard is kept here. */
struct Heard {
    std::string key, value;
    uint32_t change;
};
std::vector<Heard> g_first, g_second, g_third;
std::vector<std::pair<int32_t, uint32_t>> g_descriptors;

void Hear(std::vector<Heard> &list, const DB_KV_S *kv) {
    const auto *bytes = static_cast<const char *>(kv->pValue);
    EXPECT_EQ(kv->ulValueLength == 0, bytes == nullptr);
    list.push_back({kv->pszKey, std::string(bytes, bytes + kv->ulValueLength), kv->ulChange});
}
void First(const DB_KV_S *kv) {
    Hear(g_first, kv);
}
void Second(const DB_KV_S *kv) {
    Hear(g_second, kv);
}
void Third(const DB_KV_S *kv) {
    Hear(g_third, kv);
}
void OnDescriptor(int32_t descriptor, uint32_t remove) {
    g_descriptors.emplace_back(descriptor, remove);
}

class ConfdbClient : public testing::Test {
  protected:
    ConfdbClient() {
        g_first.clear();
        g_second.clear();
        g_third.clear();
        g_descriptors.clear();
    }

    DB_CONN_S *Connect() {
        DB_CONN_S *connection = nullptr;
        const DB_CONN_DESC_S desc{endpoint.c_str(), "a test", {}};
        EXPECT_EQ(0u, db_create_sub_connect(&desc, OnDescriptor, &connection));
        return connection;
    }
    static uint32_t Subscribe(DB_CONN_S *connection, const char *table, DB_KV_CB callback,
                              uint32_t mask = DB_CHANGE_ALL, bool from_start = true) {
        DB_SUB_DESC_S desc{};
        desc.ulChangeMask = mask;
        desc.pfCallback = callback;
        desc.ucFromStart = from_start;
        uint32_t id = 0;
        EXPECT_EQ(0u, db_sub_kv_with_conn(connection, table, &desc, &id));
        EXPECT_NE(0u, id);
        return id;
    }
    static void HandleUntil(const std::function<bool()> &condition) {
        const int32_t descriptor = g_descriptors.back().first;
        for (const auto end = Clock::now() + 15s; !condition() && Clock::now() < end;) {
            pollfd ready{descriptor, POLLIN, 0};
            if (poll(&ready, 1, 100) > 0) {
                EXPECT_EQ(0u, db_handle_event(descriptor));
            }
        }
        EXPECT_TRUE(condition());
    }

    TempFolder folder;
    const std::string endpoint = "sqlite:" + (folder / "db");
};

TEST_F(ConfdbClient, AConnectionHandsOutADescriptorThatIsReadyWhenThereIsSomethingToDo) {
    DB_CONN_S *connection = Connect();
    ASSERT_EQ(1u, g_descriptors.size());
    EXPECT_EQ(0u, g_descriptors[0].second);
    Store(endpoint).Put("t", "k", "1");
    Subscribe(connection, "t", First);
    EXPECT_TRUE(g_first.empty()) << "a subscription does not call back itself";
    pollfd ready{g_descriptors[0].first, POLLIN, 0};
    EXPECT_EQ(1, poll(&ready, 1, 10000));
    HandleUntil([] { return !g_first.empty(); });
    EXPECT_EQ("k", g_first[0].key);
    EXPECT_EQ("1", g_first[0].value);
    EXPECT_EQ(DB_CHANGE_PRESENT, g_first[0].change);
}

TEST_F(ConfdbClient, WhoCouldNotGoOnAfterOpeningGetsTheSameConnectionAgain) {
    DB_CONN_S *const connection = Connect();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(connection, Connect());
    ASSERT_EQ(11u, g_descriptors.size());
    for (const auto &told : g_descriptors)
        EXPECT_EQ(g_descriptors[0], told) << "it is to be watched again";
    DB_CONN_S *other = nullptr;
    const DB_CONN_DESC_S desc{endpoint.c_str(), "another test", {}};
    EXPECT_EQ(0u, db_create_sub_connect(&desc, OnDescriptor, &other));
    EXPECT_NE(connection, other);

    Subscribe(connection, "t", First);
    DB_CONN_S *const next = Connect();
    EXPECT_NE(connection, next) << "that one is in use";
    EXPECT_EQ(next, Connect());
}

TEST_F(ConfdbClient, EachSubscriptionHearsItsOwnTable) {
    DB_CONN_S *connection = Connect();
    const uint32_t first = Subscribe(connection, "a", First);
    const uint32_t second = Subscribe(connection, "b", Second);
    EXPECT_NE(first, second);
    const Store store(endpoint);
    store.Put("a", "k", "1");
    store.Put("b", "k", "2");
    HandleUntil([] { return !g_first.empty() && !g_second.empty(); });
    EXPECT_EQ("1", g_first[0].value);
    EXPECT_EQ("2", g_second[0].value);
    EXPECT_EQ(1u, g_first.size());
    EXPECT_EQ(1u, g_second.size());
}

TEST_F(ConfdbClient, ALaterSubscriptionStartsWithWhatIsThereThen) {
    DB_CONN_S *connection = Connect();
    Subscribe(connection, "t", First);
    const Store store(endpoint);
    store.Put("t", "k", "1");
    store.Put("t", "k", "2");
    HandleUntil([] { return g_first.size() >= 1 && g_first.back().value == "2"; });
    Subscribe(connection, "t", Second);
    store.Put("t", "k", "3");
    HandleUntil([] { return !g_second.empty() && g_second.back().value == "3" && g_first.back().value == "3"; });
    EXPECT_EQ(DB_CHANGE_PRESENT, g_second.front().change);
}

TEST_F(ConfdbClient, TheMaskChoosesTheChanges) {
    DB_CONN_S *connection = Connect();
    const Store store(endpoint);
    store.Put("t", "old", "1");
    Subscribe(connection, "t", First, DB_CHANGE_DELETED | DB_CHANGE_CREATED);
    Subscribe(connection, "t", Second, DB_CHANGE_CHANGED, false);
    Subscribe(connection, "t", Third);
    HandleUntil([] { return !g_third.empty(); });
    store.Put("t", "new", "1");
    store.Put("t", "old", "2");
    store.Delete("t", "old");
    HandleUntil([] { return g_first.size() == 2 && g_second.size() == 1; });
    EXPECT_EQ(DB_CHANGE_CREATED, g_first[0].change);
    EXPECT_EQ(DB_CHANGE_DELETED, g_first[1].change);
    EXPECT_EQ("", g_first[1].value);
    EXPECT_EQ("2", g_second[0].value);
}

DB_CONN_S *g_connection;

void SubscribeFromInside(const DB_KV_S *kv) {
    First(kv);
    DB_SUB_DESC_S desc{};
    desc.ulChangeMask = DB_CHANGE_ALL;
    desc.pfCallback = Second;
    desc.ucFromStart = 1;
    uint32_t id = 0;
    EXPECT_EQ(0u, db_sub_kv_with_conn(g_connection, "t", &desc, &id));
    EXPECT_NE(0u, db_handle_event(g_descriptors[0].first)) << "it is being handled";
}

TEST_F(ConfdbClient, ACallbackMaySubscribeButNotHandle) {
    g_connection = Connect();
    Subscribe(g_connection, "t", SubscribeFromInside);
    Store(endpoint).Put("t", "k", "1");
    HandleUntil([] { return !g_second.empty(); });
    EXPECT_EQ(1u, g_first.size());
}

TEST_F(ConfdbClient, ManySubscribeWhileOneHandles) {
    DB_CONN_S *connection = Connect();
    Store(endpoint).Put("t", "k", "1");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 10; ++j)
                Subscribe(connection, "t", First);
        });
    }
    HandleUntil([] { return g_first.size() == 40; });
    for (std::thread &thread : threads)
        thread.join();
}

TEST_F(ConfdbClient, UnknownDescriptorsAreNotHandled) {
    Connect();
    EXPECT_NE(0u, db_handle_event(-1));
    EXPECT_NE(0u, db_handle_event(0));
    EXPECT_NE(0u, db_handle_event(99999));
    EXPECT_EQ(0u, db_handle_event(g_descriptors[0].first)) << "nothing to do is no failure";
}

TEST_F(ConfdbClient, MissingArgumentsAreRefused) {
    DB_CONN_S *connection = nullptr;
    DB_CONN_DESC_S desc{endpoint.c_str(), nullptr, {}};
    EXPECT_NE(0u, db_create_sub_connect(nullptr, OnDescriptor, &connection));
    EXPECT_NE(0u, db_create_sub_connect(&desc, nullptr, &connection));
    EXPECT_NE(0u, db_create_sub_connect(&desc, OnDescriptor, nullptr));
    desc.pszEndpoint = nullptr;
    EXPECT_NE(0u, db_create_sub_connect(&desc, OnDescriptor, &connection));
    EXPECT_EQ(nullptr, connection);
    EXPECT_TRUE(g_descriptors.empty());

    connection = Connect();
    DB_SUB_DESC_S subscription{};
    uint32_t id = 7;
    EXPECT_NE(0u, db_sub_kv_with_conn(connection, "t", &subscription, &id)) << "no callback";
    subscription.pfCallback = First;
    EXPECT_NE(0u, db_sub_kv_with_conn(nullptr, "t", &subscription, &id));
    EXPECT_NE(0u, db_sub_kv_with_conn(connection, nullptr, &subscription, &id));
    EXPECT_NE(0u, db_sub_kv_with_conn(connection, "", &subscription, &id));
    EXPECT_NE(0u, db_sub_kv_with_conn(connection, "a/b", &subscription, &id));
    EXPECT_NE(0u, db_sub_kv_with_conn(connection, "t", nullptr, &id));
    EXPECT_NE(0u, db_sub_kv_with_conn(connection, "t", &subscription, nullptr));
    EXPECT_EQ(7u, id);
}

TEST_F(ConfdbClient, TheWriterRefusesMissingArgumentsToo) {
    DB_STORE_S *store = nullptr;
    DB_WATCH_S *watch = nullptr;
    const auto ignore = [](void *, const DB_RECORD_S *) {};
    EXPECT_EQ(DB_FAILED, db_store_open(nullptr, &store));
    EXPECT_EQ(DB_FAILED, db_store_open(endpoint.c_str(), nullptr));
    EXPECT_EQ(DB_FAILED, db_store_put(nullptr, "t", "k", "v", 1, nullptr));
    EXPECT_EQ(DB_FAILED, db_store_delete(nullptr, "t", "k", nullptr));
    EXPECT_EQ(DB_FAILED, db_store_list(nullptr, "t", ignore, nullptr));
    EXPECT_EQ(DB_FAILED, db_watch_open(nullptr, "t", ignore, nullptr, &watch));
    EXPECT_EQ(DB_FAILED, db_watch_open(endpoint.c_str(), "t", nullptr, nullptr, &watch));
    EXPECT_EQ(DB_FAILED, db_watch_open(endpoint.c_str(), "t", ignore, nullptr, nullptr));
    EXPECT_EQ(DB_FAILED, db_watch_open(endpoint.c_str(), "", ignore, nullptr, &watch));
    EXPECT_EQ(DB_FAILED, db_watch_handle(nullptr));
    EXPECT_EQ(-1, db_watch_descriptor(nullptr));
    db_store_close(nullptr);
    db_watch_close(nullptr);

    const Store open(endpoint);
    uint32_t length = 1;
    EXPECT_EQ(DB_FAILED, db_store_put(open.Get(), nullptr, "k", "v", 1, nullptr));
    EXPECT_EQ(DB_FAILED, db_store_put(open.Get(), "t", nullptr, "v", 1, nullptr));
    EXPECT_EQ(DB_FAILED, db_store_put(open.Get(), "t", "", "v", 1, nullptr));
    EXPECT_EQ(DB_FAILED, db_store_put(open.Get(), "t", "k", nullptr, 1, nullptr));
    EXPECT_EQ(DB_FAILED, db_store_get(open.Get(), "t", "k", nullptr, &length));
    EXPECT_EQ(DB_FAILED, db_store_get(open.Get(), "t", "k", &length, nullptr));
    EXPECT_EQ(DB_FAILED, db_store_list(open.Get(), "t", nullptr, nullptr));
    EXPECT_EQ(DB_OK, db_store_put(open.Get(), "t", "k", nullptr, 0, nullptr));
}

TEST_F(ConfdbClient, NamesAreUtf8) {
    const Store store(endpoint);
    for (const char *good : {"k", "\xC3\xA9", "\xE2\x82\xAC", "\xED\x9F\xBF", "\xEF\xBF\xBF", "\xF0\x90\x80\x80",
                             "\xF4\x8F\xBF\xBF", "a b\tc"})
        EXPECT_EQ(DB_OK, db_store_put(store.Get(), "t", good, "v", 1, nullptr)) << good;
    for (const char *bad : {"\x80", "\xC0\x80", "\xC1\xBF", "\xC3", "\xE0\x9F\xBF", "\xE2\x82", "\xED\xA0\x80",
                            "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xC3\xC3"}) {
        EXPECT_EQ(DB_FAILED, db_store_put(store.Get(), "t", bad, "v", 1, nullptr)) << bad;
        EXPECT_EQ(DB_FAILED, db_store_put(store.Get(), bad, "k", "v", 1, nullptr)) << bad;
    }
}

std::vector<std::string> g_reports;

TEST_F(ConfdbClient, SaysWhetherTheDatabaseIsThereAndReportsWhereItIsToldTo) {
    QAL_ReportSetHook([](const char *line) { g_reports.emplace_back(line); });
    DB_CONN_STATE_S state;
    uint32_t number = 0; /* behind those of earlier tests: connections are never closed */
    while (db_get_state(number, &state) == 0)
        ++number;
    DB_CONN_S *connection = Connect();
    EXPECT_EQ(1u, db_get_state(number, nullptr));
    Subscribe(connection, "t", First);
    Store(endpoint).Put("t", "k", "1");
    HandleUntil([] { return !g_first.empty(); });
    ASSERT_EQ(0u, db_get_state(number, &state));
    EXPECT_STREQ("a test", state.szClient);
    EXPECT_STREQ("", state.szTrouble);
    EXPECT_EQ(1u, state.ulSubscriptions);
    EXPECT_EQ(0u, state.ulOutages);

    for (const char *ending : {"", "-wal", "-shm"})
        fs::remove((folder / "db") + ending);
    HandleUntil([] { return !g_reports.empty(); });
    ASSERT_EQ(0u, db_get_state(number, &state));
    EXPECT_EQ((folder / "db") + ": removed", state.szTrouble);
    EXPECT_EQ(1u, state.ulOutages);
    Store(endpoint).Put("t", "k", "2");
    HandleUntil([] { return g_first.back().value == "2"; });
    ASSERT_EQ(0u, db_get_state(number, &state));
    EXPECT_STREQ("", state.szTrouble);
    QAL_ReportSetHook(nullptr);
    EXPECT_EQ((std::vector<std::string>{"configuration database of a test: " + (folder / "db") + ": removed",
                                        "configuration database of a test: back"}),
              g_reports);
}

TEST(ConfdbEndpoint, WhatIsNoneIsRefusedWithWhatIsExpected) {
    struct Row {
        const char *endpoint;
        const char *expected;
    };
    for (const Row &row : {
             Row{"", "sqlite:PATH"},
             Row{"shm:other", "sqlite:PATH"},
             Row{"sqlite:", "path of a file"},
             Row{"etcd://", "HOST:PORT"},
             Row{"etcd://host", "HOST:PORT"},
             Row{"etcd://host:", "HOST:PORT"},
             Row{"etcd://:2379", "HOST:PORT"},
             Row{"etcd://host:0", "HOST:PORT"},
             Row{"etcd://host:65536", "HOST:PORT"},
             Row{"etcd://host:23x", "HOST:PORT"},
             Row{"etcd://a:1,,b:2", "HOST:PORT"},
             Row{"etcd://user@host:1", "HOST:PORT"},
             Row{"etcd://ho st:1", "HOST:PORT"},
             Row{"etcd://host:1?ca=x", "etcds://"},
             Row{"etcds://host:1?ca", "ca=FILE"},
             Row{"etcds://host:1?password=x", "'password' is not one of"},
             Row{"etcds://host:1?cert=x", "cert and key go together"},
             Row{"etcds://host:1?key=x", "cert and key go together"},
         }) {
        DB_STORE_S *store = nullptr;
        EXPECT_EQ(DB_FAILED, db_store_open(row.endpoint, &store)) << row.endpoint;
        EXPECT_NE(nullptr, std::strstr(db_last_error(), row.expected)) << row.endpoint << " -> " << db_last_error();
    }
}

TEST(ConfdbEndpoint, AClusterIsOnlyAskedWhenItIsNeeded) {
    for (const char *endpoint : {"etcd://127.0.0.1:1", "etcd://127.0.0.1:1,[::1]:2/prefix", "etcd://a-b.c_d:65535/a/b/",
                                 "etcds://host:1", "etcds://host:1/p?ca=a&cert=b&key=c"}) {
        DB_STORE_S *store = nullptr;
        EXPECT_EQ(DB_OK, db_store_open(endpoint, &store)) << db_last_error();
        db_store_close(store);
    }
}

TEST(ConfdbEndpoint, TheDevicesOwnDatabaseIsWhatTheEnvironmentSays) {
    const TempFolder folder;
    setenv("UVELHOST_CONFDB", ("sqlite:" + (folder / "made/db")).c_str(), 1);
    Store("shm:unix_emserver").Put("t", "k", "1");
    EXPECT_TRUE(fs::exists(folder / "made/db")) << "with its folder";
    setenv("UVELHOST_CONFDB", "nonsense", 1);
    DB_STORE_S *store = nullptr;
    EXPECT_EQ(DB_FAILED, db_store_open("shm:unix_emserver", &store));
}

} // namespace
