#include "inspector.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <uvelhost/memory.h>
#include <uvelhost/queue.h>

#include "temporary_folder.h"

using namespace uveld;
using nlohmann::json;

namespace {

const Modules NO_MODULES;
const ViewContext CONTEXT = {&NO_MODULES, false};

json Ask(const std::string &line) {
    const std::string answer = AnswerRequest(CONTEXT, line);
    EXPECT_EQ('\n', answer.back());
    EXPECT_EQ(answer.size() - 1, answer.find('\n'));
    return json::parse(answer);
}

TEST(InspectorRequest, ForAnUnknownViewIsAnError) {
    EXPECT_EQ(json({{"error", "there is no view \"weather\""}}), Ask(R"({"view": "weather"})"));
}

TEST(InspectorRequest, ThatIsNoneIsAnError) {
    for (const char *line : {"", "show", "{", "[]", "{}", R"({"view": 1})", R"({"view": "queues", "arguments": 1})",
                             R"({"view": "queues", "arguments": [1]})", "\xff\xfe"})
        EXPECT_EQ(0u, Ask(line)["error"].get<std::string>().find("not a request: ")) << line;
}

TEST(InspectorViews, AllAnswerWithTablesWhoseRowsFitTheirColumns) {
    for (const auto &[name, view] : Views()) {
        const json answer = Ask(json{{"view", name}}.dump());
        if (name == "standby" || name == "module" || name == "database") {
            EXPECT_TRUE(answer.contains("error")) << name;
            continue;
        }
        ASSERT_TRUE(answer.contains("rows")) << name << ": " << answer.dump();
        for (const json &row : answer["rows"])
            EXPECT_EQ(answer["columns"].size(), row.size()) << name;
    }
}

TEST(InspectorViews, ShowQueuesAndMemoryAsTheHostCountsThem) {
    uint32_t queue = 0;
    uint32_t handle = 0;
    ASSERT_EQ(0u, QAL_QueueCreate("inspected", 4, 8, &queue));
    ASSERT_EQ(0u, QAL_HandleInitialize("inspected", &handle));
    void *block = QAL_MemAlloc(handle, 0, 100);
    const uint64_t element = 1;
    ASSERT_EQ(0u, QAL_QueueAsyWrite(queue, &element, sizeof element));
    const json queues = Ask(R"({"view": "queues"})")["rows"];
    EXPECT_EQ(json({queue, "inspected", 4, 8, 1, 1, 1, 0, 0}), queues.back());
    const json memory = Ask(R"({"view": "memory"})")["rows"][handle];
    EXPECT_EQ(json({handle, "inspected", 1, 100, 100, 1, 0, 0, 0}), memory);
    QAL_MemFree(handle, block);
    QAL_QueueDelete(queue);
}

TEST(InspectorViews, ShowHooksByNameAndWhatIsInstalled) {
    const json all = Ask(R"({"view": "hooks"})")["rows"];
    ASSERT_EQ(95u, all.size());
    EXPECT_EQ("IF_IS_L2IF", all[5][1]);
    EXPECT_EQ(95u, Ask(R"({"view": "hooks", "arguments": ["empty"]})")["rows"].size());
    EXPECT_EQ(0u, Ask(R"({"view": "hooks", "arguments": ["installed"]})")["rows"].size());
    EXPECT_EQ("\"odd\" is neither installed nor empty", Ask(R"({"view": "hooks", "arguments": ["odd"]})")["error"]);
}

TEST(InspectorViews, RefuseAnEventThatIsNone) {
    for (const char *event : {"2000", "x", "-1", "", "1 "})
        EXPECT_TRUE(Ask(json{{"view", "callbacks"}, {"arguments", {event}}}.dump()).contains("error")) << event;
}

/* A served socket. */
class InspectorSocket : public testing::Test {
  protected:
    void SetUp() override {
        inspector_ = std::make_unique<Inspector>(&loop_, Path(), CONTEXT);
        ASSERT_EQ(0, pipe(stop_));
        loop_.Watch(stop_[0], 1 /* EPOLLIN */, [this](uint32_t) { loop_.Stop(); });
        thread_ = std::thread([this] { loop_.Run(); });
    }
    void TearDown() override {
        ASSERT_EQ(1, write(stop_[1], "x", 1));
        thread_.join();
        inspector_.reset();
        close(stop_[0]);
        close(stop_[1]);
    }

    std::string Path() const { return folder_.File("uveld.sock"); }

    int Connect() const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        Path().copy(address.sun_path, sizeof address.sun_path - 1);
        const int client = socket(AF_UNIX, SOCK_STREAM, 0);
        EXPECT_EQ(0, connect(client, reinterpret_cast<sockaddr *>(&address), sizeof address));
        return client;
    }

    static std::string ReadLine(int client) {
        std::string line;
        for (char byte; read(client, &byte, 1) == 1 && byte != '\n';)
            line += byte;
        return line;
    }

    TemporaryFolder folder_;
    EventLoop loop_;
    std::unique_ptr<Inspector> inspector_;
    std::thread thread_;
    int stop_[2]{};
};

TEST_F(InspectorSocket, IsForItsOwnerAlone) {
    struct stat status {};
    ASSERT_EQ(0, stat(Path().c_str(), &status));
    EXPECT_EQ(0600u, status.st_mode & 0777);
}

TEST_F(InspectorSocket, AnswersRequestsInOrderWhoeverElseIsConnected) {
    const int silent = Connect();
    const int client = Connect();
    const std::string requests = "{\"view\": \"hooks\"}\n{\"view\": \"weather\"}\n";
    ASSERT_EQ(static_cast<ssize_t>(requests.size()), write(client, requests.data(), requests.size()));
    EXPECT_EQ(95u, json::parse(ReadLine(client))["rows"].size());
    EXPECT_EQ(json({{"error", "there is no view \"weather\""}}), json::parse(ReadLine(client)));
    close(client);
    close(silent);
}

TEST_F(InspectorSocket, EndsAConnectionWhoseRequestHasNoEnd) {
    const int client = Connect();
    const std::string flood(200'000, 'x');
    (void)!send(client, flood.data(), flood.size(), MSG_NOSIGNAL);
    EXPECT_EQ("", ReadLine(client));
    close(client);
    const int next = Connect();
    ASSERT_EQ(17, write(next, "{\"view\": \"pools\"}\n", 17 + 1) - 1);
    EXPECT_EQ("rows", json::parse(ReadLine(next)).contains("rows") ? "rows" : "");
    close(next);
}

} // namespace
