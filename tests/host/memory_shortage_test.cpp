// What the host does when memory is short.

#include "confdb_fixtures.h"

#include "memory_shortage.h"

#include <string>
#include <vector>

using namespace confdb_test;
using memory_shortage::Shortage;

namespace {

/* Too long to be held without an allocation, as all texts of these tests. */
constexpr char TABLE[] = "a table with a long name";
constexpr char CLIENT[] = "a client whose name is long";
constexpr char VALUE[] = "a value that takes a block of its own";

std::map<std::string, std::string> g_told;
std::vector<int32_t> g_descriptors;

void OnDescriptor(int32_t descriptor, uint32_t) {
    g_descriptors.push_back(descriptor);
}

void OnValue(const DB_KV_S *kv) {
    const memory_shortage::Exempt exempt;
    g_told[kv->pszKey] = std::string(static_cast<const char *>(kv->pValue), kv->ulValueLength);
}

uint32_t Open(const std::string &endpoint, DB_CONN_S **connection) {
    const DB_CONN_DESC_S desc{endpoint.c_str(), CLIENT, {}};
    return db_create_sub_connect(&desc, OnDescriptor, connection);
}

uint32_t Subscribe(DB_CONN_S *connection) {
    DB_SUB_DESC_S desc{};
    desc.ulChangeMask = DB_CHANGE_ALL;
    desc.pfCallback = OnValue;
    desc.ucFromStart = 1;
    uint32_t id = 0;
    return db_sub_kv_with_conn(connection, TABLE, &desc, &id);
}

/* Connections, those of earlier tests among them. */
uint32_t Listed() {
    DB_CONN_STATE_S state;
    uint32_t number = 0;
    while (db_get_state(number, &state) == 0)
        ++number;
    return number;
}

TEST(ConfdbWithoutMemory, AConnectionIsOpenedWholeOrNotAtAll) {
    const TempFolder folder;
    const std::string endpoint = "sqlite:" + (folder / "db");
    const Store store(endpoint);
    store.Put(TABLE, "the only key of this table", VALUE);
    const uint32_t before = Listed();
    DB_CONN_S *connection = nullptr;
    g_descriptors.reserve(g_descriptors.size() + 1);
    int allocations = 0;
    for (uint32_t result = 1; result != 0; ++allocations) {
        ASSERT_LT(allocations, 1000);
        {
            const Shortage shortage(allocations);
            ASSERT_NO_THROW(result = Open(endpoint, &connection)) << allocations;
        }
        EXPECT_EQ(result != 0, Shortage::WasFelt());
        EXPECT_EQ(before + (result == 0 ? 1 : 0), Listed()) << "those that did not come about are listed nowhere";
    }
    EXPECT_GT(allocations, 10);
    EXPECT_EQ(0u, Subscribe(connection));
    EXPECT_EQ(0u, db_handle_event(g_descriptors.back()));
    EXPECT_EQ(0u, db_handle_event(g_descriptors.back()));
    EXPECT_EQ(VALUE, g_told["the only key of this table"]);
}

TEST(ConfdbWithoutMemory, ASubscriptionIsMadeOrRefused) {
    const TempFolder folder;
    DB_CONN_S *connection = nullptr;
    ASSERT_EQ(0u, Open("sqlite:" + (folder / "db"), &connection));
    int allocations = 0;
    for (uint32_t result = 1; result != 0; ++allocations) {
        ASSERT_LT(allocations, 100);
        const Shortage shortage(allocations);
        ASSERT_NO_THROW(result = Subscribe(connection)) << allocations;
    }
    EXPECT_GT(allocations, 2);
}

/* A connection for each number of allocations, so that all of them wait at the same time for their next attempt. */
TEST(ConfdbWithoutMemory, WhatCouldNotBeReadIsReadWhenThereIsMemoryAgain) {
    constexpr int MOST = 30;
    const TempFolder folder;
    std::vector<int32_t> descriptors;
    g_told.clear();
    int felt = 0;
    for (int allocations = 0; allocations < MOST; ++allocations) {
        const std::string name = "the connection with " + std::to_string(allocations);
        const std::string endpoint = "sqlite:" + (folder / name);
        const Store store(endpoint);
        store.Put(TABLE, name, VALUE);
        DB_CONN_S *connection = nullptr;
        ASSERT_EQ(0u, Open(endpoint, &connection));
        ASSERT_EQ(0u, Subscribe(connection));
        descriptors.push_back(g_descriptors.back());
        const Shortage shortage(allocations);
        for (int turn = 0; turn < 3; ++turn)
            ASSERT_NO_THROW(EXPECT_EQ(0u, db_handle_event(descriptors.back()))) << allocations;
        felt += Shortage::WasFelt() ? 1 : 0;
    }
    EXPECT_GT(felt, 10);
    for (const auto end = Clock::now() + 15s; g_told.size() < MOST && Clock::now() < end;) {
        std::this_thread::sleep_for(20ms);
        for (const int32_t descriptor : descriptors)
            EXPECT_EQ(0u, db_handle_event(descriptor));
    }
    EXPECT_EQ(MOST, static_cast<int>(g_told.size()));
}

} // namespace
