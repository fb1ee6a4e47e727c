#include "ipc_fixtures.h"
#include "sanitizers.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

uint64_t MessagesInUse() {
    return Stats(0).ulBlocks; /* all modules without an account of their own */
}

std::string Text(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

using Message = Device;

TEST_F(Message, IsAccountedToItsModuleUntilItIsFreed) {
    const uint64_t before = MessagesInUse();
    void *message = IPC_AllocMsg_X(MID, 100);
    ASSERT_NE(nullptr, message);
    EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(message) % 16);
    EXPECT_EQ(100u, IPC_GetMsgLen(message));
    EXPECT_EQ(before + 1, MessagesInUse());
    EXPECT_EQ(0u, IPC_FreeMsg(message));
    EXPECT_EQ(before, MessagesInUse());
}

TEST_F(Message, MayHaveNoBody) {
    void *message = IPC_AllocMsg_X(MID, 0);
    ASSERT_NE(nullptr, message);
    EXPECT_EQ(0u, IPC_GetMsgLen(message));
    EXPECT_EQ(0u, IPC_FreeMsg(message));
}

TEST_F(Message, ThatCannotBeIsNull) {
    EXPECT_EQ(nullptr, IPC_AllocMsg_X(MID, 0xFFFFFFFF));
}

TEST_F(Message, NullIsNone) {
    EXPECT_EQ(1u, IPC_FreeMsg(nullptr));
    EXPECT_EQ(0u, IPC_GetMsgLen(nullptr));
    IPC_SetSrcAndDstChannelId(nullptr, 1, 2);
    IPC_SetSrcAndDstNodeId(nullptr, 1, 2);
    EXPECT_EQ(1u, IPC_Send(1, nullptr));
    EXPECT_EQ(1u, IPC_GetStats(nullptr));
}

TEST_F(Message, OfTheConfigurationDatabaseIsCheckedWithinItsLength) {
    EXPECT_EQ(DBI_NO_MESSAGE, DBI_CheckMsg(nullptr));
    auto *message = static_cast<unsigned char *>(IPC_AllocMsg_X(MID, 20));
    DBI_MSG_HEAD_S head = {DBI_MAGIC, DBI_VERSION, 20, 0};
    const auto check = [&] {
        std::memcpy(message, &head, sizeof head);
        return DBI_CheckMsg(message);
    };
    EXPECT_EQ(0u, check());
    head.ulLength = 19;
    EXPECT_EQ(DBI_OTHER_LENGTH, check());
    head.ulLength = 0xFFFFFFFF;
    EXPECT_EQ(DBI_OTHER_LENGTH, check());
    head = {DBI_MAGIC, 2, 20, 0};
    EXPECT_EQ(DBI_OTHER_VERSION, check());
    head = {0x31494244, DBI_VERSION, 20, 0};
    EXPECT_EQ(DBI_NOT_ITS_MAGIC, check());
    IPC_FreeMsg(message);
    for (const uint32_t length : {0u, 1u, 15u}) {
        void *cut = IPC_AllocMsg_X(MID, length);
        EXPECT_EQ(DBI_TOO_SHORT, DBI_CheckMsg(cut));
        IPC_FreeMsg(cut);
    }
}

using Channel = Device;

TEST_F(Channel, WantsAFunctionTheCallbackModeAndANumberThatIsFree) {
    EXPECT_EQ(1u, IPC_Create(7, IPC_MODE_CALLBACK, nullptr));
    EXPECT_EQ(1u, IPC_Create(7, 1, Mailbox::Receive));
    EXPECT_EQ(0u, IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive));
    EXPECT_EQ(1u, IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive));
    EXPECT_EQ(0u, IPC_Create(0xFFFFFFFF, IPC_MODE_CALLBACK, Mailbox::Receive));
}

TEST_F(Channel, ReceivesWhatATaskOfTheProcessSends) {
    ASSERT_EQ(0u, IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive));
    const uint64_t before = MessagesInUse();
    EXPECT_EQ(0u, Send("first", IPC_GetSelfNodeId(), 7, 0xABCD));
    EXPECT_EQ(0u, Send("", IPC_GetSelfNodeId(), 7));
    const std::vector<Mail> mails = Mailbox::Wait(2);
    EXPECT_EQ("first", mails[0].text);
    EXPECT_EQ(0xABCDu, mails[0].type);
    EXPECT_EQ(5u, mails[0].source);
    EXPECT_EQ(7u, mails[0].channel);
    EXPECT_EQ("", mails[1].text);
    EXPECT_EQ(before, MessagesInUse());
}

TEST_F(Channel, ThatIsNotOpenRefusesAndTheMessageStaysTheSenders) {
    ASSERT_EQ(0u, IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive));
    const uint64_t before = MessagesInUse();
    void *message = MessageWith("x", IPC_GetSelfNodeId(), 8);
    EXPECT_EQ(1u, IPC_Send(1, message));
    EXPECT_EQ(before + 1, MessagesInUse());
    EXPECT_EQ(0u, IPC_FreeMsg(message));
    IPC_STATS_S stats = {};
    EXPECT_EQ(0u, IPC_GetStats(&stats));
    EXPECT_EQ(1u, stats.ulRefused);
    EXPECT_EQ(0u, stats.ulSent);
}

TEST_F(Channel, AFolderThatOthersMayWriteIsNotUsed) {
    chmod(folder.c_str(), 0770);
    testing::internal::CaptureStderr();
    EXPECT_EQ(1u, IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("writable for nobody else"));
    chmod(folder.c_str(), 0700);
    EXPECT_EQ(0u, IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive)) << "the failure left nothing behind";
}

std::size_t OpenDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/* While one lives, the process gets so many descriptors and none after them. */
class FewDescriptors {
  public:
    explicit FewDescriptors(std::size_t more) {
        getrlimit(RLIMIT_NOFILE, &before_);
        const int next = dup(0);
        close(next);
        const rlimit few{static_cast<std::size_t>(next) + more, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    FewDescriptors(const FewDescriptors &) = delete;
    FewDescriptors &operator=(const FewDescriptors &) = delete;

  private:
    rlimit before_ = {};
};

TEST_F(Channel, WithoutDescriptorsItIsRefusedAndNoneIsLost) {
    const std::size_t before = OpenDescriptors();
    std::size_t allowed = 0; /* with those that earlier attempts opened and kept */
    for (uint32_t result = 1; result != 0; ++allowed) {
        const std::size_t kept = OpenDescriptors() - before;
        ASSERT_LE(kept, allowed);
        testing::internal::CaptureStderr(); /* the folder's trouble */
        {
            const FewDescriptors few(allowed - kept);
            result = IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive);
        }
        testing::internal::GetCapturedStderr();
        ASSERT_LT(allowed, 20u);
    }
    EXPECT_EQ(6u, allowed) << "0 to 5 were tried";
    EXPECT_EQ(before + 5, OpenDescriptors()) << "folder, file, listening socket, epoll and bell";
    EXPECT_EQ(0u, Send("x", IPC_GetSelfNodeId(), 7));
    EXPECT_EQ("x", Mailbox::Wait(1)[0].text);
}

TEST_F(Channel, AFolderThatCannotBeMadeIsReported) {
    setenv("UVELHOST_RUN_DIR", (folder + "/no/such").c_str(), 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(1u, IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("No such file"));
    setenv("UVELHOST_RUN_DIR", (folder + std::string(150, 'x')).c_str(), 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(1u, IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("too long a path"));
    const std::size_t before = OpenDescriptors();
    EXPECT_EQ(1u, IPC_Create(7, IPC_MODE_CALLBACK, Mailbox::Receive));
    EXPECT_EQ(before, OpenDescriptors()) << "it can be tried for ever";
    std::filesystem::remove_all(folder + std::string(150, 'x'));
}

using Processes = Device;

bool OpenSeven() {
    return IPC_Create(7, IPC_MODE_CALLBACK,
                      [](uint32_t type, uint32_t source, uint32_t, void *message, uint32_t length) {
                          /* back to its sender's channel, with the type one higher */
                          const std::string text(static_cast<const char *>(message), length);
                          IPC_FreeMsg(message);
                          uint32_t nodes[CMNGA_MAX_NODES];
                          uint32_t count = 0;
                          CMNGA_QueryNodeId(MID, 1, UVELHOST_NONE, nodes, &count);
                          if (count == 1)
                              Send(text, nodes[0], source, type + 1);
                      }) == 0;
}

TEST_F(Processes, ExchangeMessagesOfAnyLength) {
    Process echo(OpenSeven);
    ASSERT_EQ(0u, IPC_Create(5, IPC_MODE_CALLBACK, Mailbox::Receive));
    ASSERT_EQ(0u, CMNGA_ModuleRegister(MID, 1));
    const uint64_t before = MessagesInUse();
    const std::vector<std::size_t> sizes = {0, 1, 64, 61439, 61440, 61441, 1000000, 16777216};
    for (const std::size_t size : sizes)
        ASSERT_EQ(0u, Send(Text(size), echo.Node(), 7, 100)) << size;
    const std::vector<Mail> mails = Mailbox::Wait(sizes.size());
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        ASSERT_TRUE(Text(sizes[i]) == mails[i].text) << sizes[i];
        EXPECT_EQ(101u, mails[i].type);
    }
    EXPECT_EQ(before, MessagesInUse());
}

TEST_F(Processes, DoNotTakeMoreThanTheLongestMessage) {
    Process echo(OpenSeven);
    void *message = IPC_AllocMsg_X(MID, IPC_MAX_REMOTE + 1);
    IPC_SetSrcAndDstChannelId(message, 5, 7);
    IPC_SetSrcAndDstNodeId(message, IPC_GetSelfNodeId(), echo.Node());
    EXPECT_EQ(1u, IPC_Send(1, message));
    EXPECT_EQ(0u, IPC_FreeMsg(message));
}

TEST_F(Processes, KeepTheOrderOfASender) {
    Process echo(OpenSeven);
    ASSERT_EQ(0u, IPC_Create(5, IPC_MODE_CALLBACK, Mailbox::Receive));
    ASSERT_EQ(0u, CMNGA_ModuleRegister(MID, 1));
    constexpr std::size_t COUNT = 3000;
    for (std::size_t i = 0; i < COUNT; ++i)
        ASSERT_EQ(0u, Send(std::to_string(i), echo.Node(), 7));
    const std::vector<Mail> mails = Mailbox::Wait(COUNT);
    for (std::size_t i = 0; i < COUNT; ++i)
        ASSERT_EQ(std::to_string(i), mails[i].text);
}

TEST_F(Processes, ThatAreGoneRefuse) {
    uint32_t node;
    {
        Process echo(OpenSeven);
        node = echo.Node();
        EXPECT_EQ(0u, Send("x", node, 7));
    }
    EXPECT_FALSE(std::filesystem::exists(folder + "/" + std::to_string(node) + ".sock")) << "it left the folder";
    EXPECT_EQ(1u, Send("x", node, 7));
    EXPECT_EQ(1u, Send("x", 0xFFFFFFF0, 7));
}

TEST_F(Processes, RefuseAPeerWhosePacketsDoNotAddUp) {
    ASSERT_EQ(0u, IPC_Create(5, IPC_MODE_CALLBACK, Mailbox::Receive));
    const uint64_t before = MessagesInUse();
    /* kind, number, mid, result, type, source, destination, has body, total, offset */
    const std::vector<std::vector<uint32_t>> packets = {
        {},                                         /* nothing */
        {1, 0, 0},                                  /* cut */
        {1, 0, 0, 0, 0, 0, 5, 1, 10, 4, 0xAA},      /* begins in the middle */
        {1, 0, 0, 0, 0, 0, 5, 1, 4, 0, 0xAA, 0xBB}, /* more than it says */
        {1, 0, 0, 0, 0, 0, 5, 1, 0xFFFFFFFF, 0, 1}, /* beyond the longest */
        {1, 0, 0, 0, 0, 0, 5, 0, 4, 0, 0xAA},       /* no body, but bytes */
        {1, 0, 0, 0, 0, 0, 5, 1, 8, 0},             /* no bytes where some are due */
    };
    for (const std::vector<uint32_t> &words : packets) {
        const RawPeer peer;
        ASSERT_TRUE(peer.Connect(folder));
        ASSERT_TRUE(peer.Send(words));
        EXPECT_TRUE(peer.IsLetGo());
    }
    EXPECT_EQ(0u, Send("still there", IPC_GetSelfNodeId(), 5));
    EXPECT_EQ("still there", Mailbox::Wait(1)[0].text);
    EXPECT_EQ(before, MessagesInUse());
}

TEST_F(Processes, OfAnotherUserAreRefused) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    ASSERT_EQ(0u, IPC_Create(5, IPC_MODE_CALLBACK, Mailbox::Receive));
    /* as if the folder had let them in */
    chmod(folder.c_str(), 0755);
    chmod((folder + "/" + std::to_string(IPC_GetSelfNodeId()) + ".sock").c_str(), 0777);
    const uint32_t here = IPC_GetSelfNodeId();
    Process stranger([&] {
        const RawPeer peer;
        return setuid(65534) == 0 && peer.Connect(folder, here) &&
               (!peer.Send({1, 0, 0, 0, 0, 0, 5, 1, 4, 0, 0xAA}) || peer.IsLetGo());
    });
    IPC_STATS_S stats = {};
    EXPECT_EQ(0u, IPC_GetStats(&stats));
    EXPECT_EQ(1u, stats.ulRefusedPeers);
    EXPECT_EQ(0u, stats.ulReceived);
}

std::chrono::nanoseconds ProcessorTime() {
    timespec used = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

TEST_F(Processes, LetAPeerWaitQuietlyUntilThereIsADescriptorForIt) {
    ASSERT_EQ(0u, IPC_Create(5, IPC_MODE_CALLBACK, Mailbox::Receive));
    const RawPeer peer;
    {
        const FewDescriptors none(0);
        ASSERT_TRUE(peer.Connect(folder));
        ASSERT_TRUE(peer.Send({1, 0, 0, 0, 9, 0, 5, 1, 4, 0, 0x636261}));
        const auto before = ProcessorTime();
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        EXPECT_LT(ProcessorTime() - before, std::chrono::milliseconds(30));
        EXPECT_EQ(0u, Send("inside", IPC_GetSelfNodeId(), 5));
        EXPECT_EQ("inside", Mailbox::Wait(1)[0].text) << "the others are served meanwhile";
    }
    EXPECT_STREQ("abc", Mailbox::Wait(2)[1].text.c_str());
}

TEST_F(Processes, CountWhatArrivesForAChannelTheyDoNotHave) {
    if (UNDER_THREAD_SANITIZER)
        GTEST_SKIP() << "it lets no forked child of a threaded process start a thread";
    ASSERT_EQ(0u, IPC_Create(5, IPC_MODE_CALLBACK, Mailbox::Receive));
    const uint32_t here = IPC_GetSelfNodeId();
    Process other([&] { return Send("nobody", here, 6) == 0 && Send("somebody", here, 5) == 0; });
    EXPECT_EQ("somebody", Mailbox::Wait(1)[0].text);
    IPC_STATS_S stats = {};
    EXPECT_EQ(0u, IPC_GetStats(&stats));
    EXPECT_EQ(1u, stats.ulDropped);
    EXPECT_EQ(1u, stats.ulReceived);
}

} // namespace
