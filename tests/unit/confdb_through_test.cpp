// From a writer through the host's database and the connection's task to the queries, with nothing replaced.

#include "kit.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <uvelcommon_base/kivo_confdb.h>
#include <uvelhost/confdb_writer.h>

namespace {

using Mac = std::array<uint8_t, 6>;

class ConfdbThrough : public testing::Test {
  protected:
    ConfdbThrough() {
        std::string name = (std::filesystem::temp_directory_path() / "confdb-XXXXXX").string();
        EXPECT_NE(nullptr, mkdtemp(name.data()));
        folder_ = name;
        good = "sqlite:" + name + "/run/db";
        setenv("UVELHOST_CONFDB", good.c_str(), 1);
        EXPECT_EQ(0u, db_store_open("shm:unix_emserver", &store_)) << db_last_error();
    }
    ~ConfdbThrough() override {
        db_store_close(store_);
        std::filesystem::remove_all(folder_);
    }

    void Put(const char *table, const char *key, const std::string &value) {
        EXPECT_EQ(0u, db_store_put(store_, table, key, value.data(), static_cast<uint32_t>(value.size()), nullptr))
            << db_last_error();
    }

    /* The task delivers in its own time. */
    static bool Eventually(const std::function<bool()> &condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
    static std::string HostName() {
        char name[300];
        EXPECT_EQ(0u, KIVO_Adapt_Gethostname(name, sizeof name));
        return name;
    }
    static Mac BridgeMac() {
        Mac mac{};
        EXPECT_EQ(0u, UVEL_GetSysMacAddr(mac.data()));
        return mac;
    }

    std::string good;

  private:
    std::filesystem::path folder_;
    DB_STORE_S *store_ = nullptr;
};

TEST_F(ConfdbThrough, WhatIsThereAndWhatComesLaterArrives) {
    Put("system_info", "sys_name", "first");
    Put("devm_global", "system_mac", "\x02\x01\x02\x03\x04\x05");
    EXPECT_TRUE(Eventually([] { return HostName() == "first"; }));
    BridgeMac();
    EXPECT_TRUE(Eventually([] { return BridgeMac() == Mac{2, 1, 2, 3, 4, 5}; }));
    Put("system_info", "sys_name", "2nd");
    Put("devm_global", "system_mac", "\x02\x09\x09\x09\x09\x09");
    EXPECT_TRUE(Eventually([] { return HostName() == "2nd" && BridgeMac() == Mac{2, 9, 9, 9, 9, 9}; }));
    EXPECT_EQ(1u, kit::Op<QAL_CreateTask>().Calls());
}

TEST_F(ConfdbThrough, AValueLongerThanItsDestinationLeavesWhatIsKnown) {
    Put("system_info", "sys_name", "known");
    EXPECT_TRUE(Eventually([] { return HostName() == "known"; }));
    Put("system_info", "sys_name", std::string(257, 'x'));
    Put("devm_global", "system_mac", "12345678");
    BridgeMac();
    Put("devm_global", "system_mac", "\x02\x01\x02\x03\x04\x05");
    EXPECT_TRUE(Eventually([] { return BridgeMac() == Mac{2, 1, 2, 3, 4, 5}; }));
    EXPECT_EQ("known", HostName());
}

TEST_F(ConfdbThrough, ADatabaseThatCannotBeUsedIsTriedAgainByTheNextQuery) {
    setenv("UVELHOST_CONFDB", "nonsense", 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ("", HostName());
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("nonsense"));
    setenv("UVELHOST_CONFDB", good.c_str(), 1);
    EXPECT_EQ("", HostName());
    EXPECT_EQ(1u, kit::Op<QAL_CreateTask>().Calls());
    EXPECT_EQ(1u, kit::Op<MESH_Close>().Calls());
}

} // namespace
