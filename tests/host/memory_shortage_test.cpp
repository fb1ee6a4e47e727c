// What the host does when memory is short.

#include "confdb_fixtures.h"
#include "ipc_fixtures.h"

#include "memory_shortage.h"

#include <string>
#include <vector>

using namespace confdb_test;
using memory_shortage::g_left;
using memory_shortage::Shortage;
using memory_shortage::t_is_short;

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

/* ---- messages ---- */

using IpcWithoutMemory = Device;

/* Carries an action out with more and more memory until it is done; how often it was not. */
int FailuresOf(const std::function<uint32_t()> &action) {
    int failures = 0;
    for (uint32_t result = 1; failures < 100; ++failures) {
        const Shortage shortage(failures);
        EXPECT_NO_THROW(result = action()) << failures;
        EXPECT_EQ(result != 0, Shortage::WasFelt());
        if (result == 0)
            break;
    }
    return failures;
}

IPC_STATS_S Counters() {
    IPC_STATS_S stats = {};
    EXPECT_EQ(0u, IPC_GetStats(&stats));
    return stats;
}

TEST_F(IpcWithoutMemory, WhatFailedIsDoneWhenThereIsMemoryAgain) {
    const Process other([] { return IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive) == 0; });
    EXPECT_GT(FailuresOf([] {
                  IPC_STATS_S stats;
                  return IPC_GetStats(&stats);
              }),
              0);
    EXPECT_GT(FailuresOf([] { return IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive); }), 3);
    EXPECT_GT(FailuresOf([] { return CMNGA_ModuleRegister(MID, 3); }), 0);
    uint32_t nodes[CMNGA_MAX_NODES];
    uint32_t count = 0;
    EXPECT_GT(FailuresOf([&] { return CMNGA_QueryNodeId(MID, 3, UVELHOST_NONE, nodes, &count); }), 0);
    EXPECT_EQ(1u, count);
    EXPECT_EQ(IPC_GetSelfNodeId(), nodes[0]);
    const int refused = FailuresOf([&] { return ::Send("x", other.Node(), 7); });
    EXPECT_GT(refused, 2);
    EXPECT_EQ(static_cast<uint64_t>(refused), Counters().ulRefused);
    ASSERT_EQ(0u, ::Send("it works", IPC_GetSelfNodeId(), 7));
    EXPECT_EQ("it works", Mailbox::Wait(1)[0].text);
}

constexpr uint32_t FROM_NOW_ON_SHORT = 1;
constexpr uint32_t SHORT_NO_MORE = 2;

/* Receives with the memory that there should be. */
void ReceiveOrder(uint32_t type, uint32_t source, uint32_t channel, void *message, uint32_t length) {
    {
        const memory_shortage::Exempt exempt;
        Mailbox::Receive(type, source, channel, message, length);
    }
    if (type == FROM_NOW_ON_SHORT || type == SHORT_NO_MORE)
        t_is_short = type == FROM_NOW_ON_SHORT;
}

TEST_F(IpcWithoutMemory, TheReceivingThreadServesWhomItCan) {
    const uint32_t here = IPC_GetSelfNodeId();
    ASSERT_EQ(0u, IPC_Create(7, IPC_MODE_CALLBACK, ReceiveOrder));
    ASSERT_EQ(0u, ::Send("order", here, 7, FROM_NOW_ON_SHORT));
    Mailbox::Wait(1);
    uint64_t refused = 0;
    for (bool received = false; !received; refused += received ? 0 : 1) {
        ASSERT_LT(refused, 20u);
        g_left = static_cast<int>(refused);
        const RawPeer peer;
        ASSERT_TRUE(peer.Connect(folder));
        (void)peer.Send({1, 0, 0, 0, 9, 0, 7, 1, 4, 0, 0x636261});
        ASSERT_EQ(0u, ::Send("inside", here, 7));
        Mailbox::Wait(2 + refused); /* what needs no memory goes on */
        while (!received && Counters().ulRefusedPeers == refused) {
            std::this_thread::sleep_for(1ms);
            received = Counters().ulReceived == 3 + refused;
        }
        EXPECT_TRUE(received || peer.IsLetGo());
    }
    EXPECT_GT(refused, 2u) << "connections, with each number of allocations that does not suffice";
    const std::vector<Mail> mails = Mailbox::Wait(3 + refused);
    EXPECT_EQ(1, std::count_if(mails.begin(), mails.end(), [](const Mail &mail) { return mail.text[0] == 'a'; }));
    ASSERT_EQ(0u, ::Send("order", here, 7, SHORT_NO_MORE));
    Mailbox::Wait(4 + refused);
    g_left = -1;
}

} // namespace
