#include "ipc_fixtures.h"
#include "sanitizers.h"

namespace {

/* Answers with the request doubled; the result is the length of the request. "silent" is not answered with a message. */
uint32_t Double(uint32_t, void *message, uint32_t length, void *context, void **reply) {
    EXPECT_NE(nullptr, context);
    EXPECT_EQ(nullptr, *reply);
    const std::string text(static_cast<const char *>(message), length);
    if (text != "silent") {
        *reply = IPC_AllocMsg_X(MID, 2 * length);
        std::memcpy(*reply, (text + text).data(), 2 * length);
    }
    return length;
}

bool Offer() {
    return IPC_RPC_RegisterEx(MID, IPC_RPC_MODE_DIRECT, IPC_RPC_TYPE_SYNC, Double) == 0;
}

struct Answer {
    uint32_t result;
    std::string text;
};

/* Calls and checks that it was answered. */
Answer Ask(uint32_t node, const std::string &text) {
    void *message = MessageWith(text, node, 0);
    void *reply = nullptr;
    uint32_t result = 0;
    EXPECT_EQ(0u, IPC_RPC_Call(node, MID, message, 20000, &result, &reply));
    EXPECT_EQ(0u, IPC_FreeMsg(message)) << "it stays the caller's";
    Answer answer = {result, "(none)"};
    if (reply != nullptr) {
        answer.text.assign(static_cast<const char *>(reply), IPC_GetMsgLen(reply));
        EXPECT_EQ(0u, IPC_FreeMsg(reply));
    }
    return answer;
}

using Rpc = Device;

TEST_F(Rpc, AnOfferWantsAFunctionItsModeAndAModuleThatIsFree) {
    EXPECT_EQ(1u, IPC_RPC_RegisterEx(MID, IPC_RPC_MODE_DIRECT, IPC_RPC_TYPE_SYNC, nullptr));
    EXPECT_EQ(1u, IPC_RPC_RegisterEx(MID, 1, IPC_RPC_TYPE_SYNC, Double));
    EXPECT_EQ(1u, IPC_RPC_RegisterEx(MID, IPC_RPC_MODE_DIRECT, 1, Double));
    EXPECT_TRUE(Offer());
    EXPECT_FALSE(Offer());
}

TEST_F(Rpc, AnotherProcessAnswers) {
    Process server(Offer);
    const uint64_t before = Stats(0).ulBlocks;
    EXPECT_EQ("abcabc", Ask(server.Node(), "abc").text);
    EXPECT_EQ(3u, Ask(server.Node(), "abc").result);
    EXPECT_EQ("", Ask(server.Node(), "").text) << "a message without a body is a message";
    EXPECT_EQ("(none)", Ask(server.Node(), "silent").text);
    EXPECT_EQ(6u, Ask(server.Node(), "silent").result);
    EXPECT_EQ(400000u, Ask(server.Node(), std::string(200000, 'x')).text.size());
    EXPECT_EQ(before, Stats(0).ulBlocks);
}

TEST_F(Rpc, TheOwnProcessAnswersToo) {
    ASSERT_TRUE(Offer());
    const uint64_t before = Stats(0).ulBlocks;
    EXPECT_EQ("abcabc", Ask(IPC_GetSelfNodeId(), "abc").text);
    EXPECT_EQ(before, Stats(0).ulBlocks);
}

TEST_F(Rpc, AModuleThatNobodyServesIsAnsweredSo) {
    Process server([] { return IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive) == 0; });
    EXPECT_EQ(IPC_RPC_NOBODY, Ask(server.Node(), "abc").result);
}

TEST_F(Rpc, ANodeThatIsNotThereFails) {
    void *message = MessageWith("abc", 0, 0);
    void *reply = nullptr;
    uint32_t result = 7;
    EXPECT_EQ(1u, IPC_RPC_Call(IPC_GetSelfNodeId(), MID, message, 20000, &result, &reply)) << "nothing was opened here";
    EXPECT_EQ(1u, IPC_RPC_Call(0xFFFFFFF0, MID, message, 20000, &result, &reply));
    EXPECT_EQ(1u, IPC_RPC_Call(1, MID, nullptr, 20000, &result, &reply));
    EXPECT_EQ(1u, IPC_RPC_Call(1, MID, message, 20000, nullptr, &reply));
    EXPECT_EQ(1u, IPC_RPC_Call(1, MID, message, 20000, &result, nullptr));
    EXPECT_EQ(7u, result);
    EXPECT_EQ(0u, IPC_FreeMsg(message));
}

bool OfferSilence() {
    return IPC_RPC_RegisterEx(MID, IPC_RPC_MODE_DIRECT, IPC_RPC_TYPE_SYNC,
                              [](uint32_t, void *, uint32_t, void *, void **) {
                                  pause();
                                  return 0u;
                              }) == 0;
}

TEST_F(Rpc, ACallThatIsNotAnsweredInTimeFails) {
    Process server(OfferSilence);
    void *message = MessageWith("abc", 0, 0);
    void *reply = nullptr;
    uint32_t result = 7;
    EXPECT_EQ(1u, IPC_RPC_Call(server.Node(), MID, message, 20, &result, &reply));
    EXPECT_EQ(0u, IPC_FreeMsg(message));
}

TEST_F(Rpc, ACallWhoseServerDiesFailsAtOnce) {
    Process server(OfferSilence);
    void *message = MessageWith("abc", 0, 0);
    void *reply = nullptr;
    uint32_t result = 7;
    Process killer([&] { return usleep(50000) == 0 && kill(static_cast<pid_t>(server.Node()), SIGKILL) == 0; });
    EXPECT_EQ(1u, IPC_RPC_Call(server.Node(), MID, message, UVELHOST_WAIT_FOREVER, &result, &reply));
    EXPECT_EQ(0u, IPC_FreeMsg(message));
    server.Kill();
}

TEST_F(Rpc, TheReceivingThreadMustNotWaitForItself) {
    static uint32_t s_result;
    ASSERT_TRUE(Offer());
    ASSERT_EQ(0u, IPC_Create(7, IPC_MODE_CALLBACK,
                             [](uint32_t type, uint32_t source, uint32_t channel, void *message, uint32_t length) {
                                 void *reply = nullptr;
                                 uint32_t result = 0;
                                 s_result = IPC_RPC_Call(IPC_GetSelfNodeId(), MID, message, UVELHOST_WAIT_FOREVER,
                                                         &result, &reply);
                                 Mailbox::Receive(type, source, channel, message, length);
                             }));
    EXPECT_EQ(0u, Send("x", IPC_GetSelfNodeId(), 7));
    Mailbox::Wait(1);
    EXPECT_EQ(1u, s_result);
}

using Components = Device;

std::vector<uint32_t> NodesOf(uint32_t mid, uint32_t type = UVELHOST_NONE, uint32_t slot = UVELHOST_NONE) {
    uint32_t nodes[CMNGA_MAX_NODES] = {};
    uint32_t count = 99;
    EXPECT_EQ(0u, CMNGA_QueryNodeId(mid, type, slot, nodes, &count));
    return {nodes, nodes + count};
}

TEST_F(Components, NobodyServesAModuleAtFirst) {
    EXPECT_EQ(std::vector<uint32_t>{}, NodesOf(MID));
    uint32_t process = 7;
    EXPECT_EQ(1u, CMNGA_QueryCompProcByMid(MID, &process));
    EXPECT_EQ(7u, process);
}

TEST_F(Components, AProcessServesAModuleUnderOneType) {
    EXPECT_EQ(0u, CMNGA_ModuleRegister(MID, 3));
    EXPECT_EQ(0u, CMNGA_ModuleRegister(MID, 3));
    EXPECT_EQ(1u, CMNGA_ModuleRegister(MID, 4));
    EXPECT_EQ(0u, CMNGA_ModuleRegister(MID + 1, 4));
    const std::vector<uint32_t> here = {IPC_GetSelfNodeId()};
    EXPECT_EQ(here, NodesOf(MID));
    EXPECT_EQ(here, NodesOf(MID, 3));
    EXPECT_EQ(std::vector<uint32_t>{}, NodesOf(MID, 4));
    EXPECT_EQ(here, NodesOf(MID + 1));
    EXPECT_EQ(std::vector<uint32_t>{}, NodesOf(MID, 3, 77)) << "another slot";
    uint32_t process = 0;
    EXPECT_EQ(0u, CMNGA_QueryCompProcByMid(MID, &process));
    EXPECT_EQ(here[0], process);
}

TEST_F(Components, AllProcessesThatServeAModuleAreFound) {
    Process first([] { return CMNGA_ModuleRegister(MID, 3) == 0; });
    Process second([] { return CMNGA_ModuleRegister(MID, 4) == 0; });
    std::vector<uint32_t> nodes = NodesOf(MID);
    EXPECT_EQ(2u, nodes.size());
    EXPECT_EQ(std::vector<uint32_t>{second.Node()}, NodesOf(MID, 4));
    first.End();
    EXPECT_EQ(std::vector<uint32_t>{second.Node()}, NodesOf(MID));
}

TEST_F(Components, WhatAKilledProcessLeavesBehindIsSweptAway) {
    Process victim([] { return CMNGA_ModuleRegister(MID, 3) == 0; });
    EXPECT_EQ(1u, NodesOf(MID).size());
    victim.Kill();
    EXPECT_EQ(std::vector<uint32_t>{}, NodesOf(MID));
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(Components, AForkedChildIsAProcessOfItsOwn) {
    if (UNDER_THREAD_SANITIZER)
        GTEST_SKIP() << "it lets no forked child of a threaded process start a thread";
    ASSERT_EQ(0u, CMNGA_ModuleRegister(MID, 3));
    const uint32_t parent = IPC_GetSelfNodeId();
    Process child([&] {
        EXPECT_NE(parent, IPC_GetSelfNodeId());
        EXPECT_EQ(std::vector<uint32_t>{parent}, NodesOf(MID));
        return CMNGA_ModuleRegister(MID, 3) == 0;
    });
    EXPECT_EQ(2u, NodesOf(MID).size());
    child.End();
    EXPECT_EQ(std::vector<uint32_t>{parent}, NodesOf(MID)) << "its end did not take the parent's place away";
}

TEST_F(Components, NullArgumentsAreRefused) {
    uint32_t node = 0;
    EXPECT_EQ(1u, CMNGA_QueryNodeId(MID, 0, 0, nullptr, &node));
    EXPECT_EQ(1u, CMNGA_QueryNodeId(MID, 0, 0, &node, nullptr));
    EXPECT_EQ(1u, CMNGA_QueryCompProcByMid(MID, nullptr));
}

} // namespace
