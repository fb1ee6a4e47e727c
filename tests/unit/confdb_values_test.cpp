// System name and MAC address: what the table callbacks take over and the queries give.

#include "kit.h"

#include <cstring>
#include <uvelcommon_base/kivo_confdb.h>
#include <uvelcommon_base/nac_log.h>

namespace {

using Mac = std::array<uint8_t, 6>;

DB_KV_S Notification(const char *key, const std::string &value, uint32_t change = DB_CHANGE_CHANGED) {
    return {key, value.empty() ? nullptr : value.data(), static_cast<uint32_t>(value.size()), change};
}

void Name(const std::string &value, const char *key = "sys_name") {
    const DB_KV_S notification = Notification(key, value);
    KIVO_SysNameCallback(&notification);
}

void Global(const char *key, const std::string &value) {
    const DB_KV_S notification = Notification(key, value);
    KIVO_SysMacCallback(&notification);
}

class ConfdbValues : public testing::Test {
  protected:
    ConfdbValues() {
        kit::Op<MESH_EpollCreate>().Returns(-1);
        kit::Op<DEV_GetSystemName>().Returns(1);
        kit::Op<DEVM_DB_GetSysMac>().Returns(1);
    }

    static std::string HostName() {
        char text[300];
        std::memset(text, 'x', sizeof text);
        EXPECT_EQ(0u, KIVO_Adapt_Gethostname(text, sizeof text));
        EXPECT_EQ('\0', text[sizeof text - 1]);
        return text;
    }

    static Mac BridgeMac() {
        Mac mac{9, 9, 9, 9, 9, 9};
        EXPECT_EQ(0u, EAPADP_GetBridgeMac(mac.data()));
        return mac;
    }
};

TEST_F(ConfdbValues, AreNotKnownAtLoad) {
    EXPECT_EQ("", HostName());
    EXPECT_EQ(Mac(), BridgeMac());
}

/* ---- the system's name */

TEST_F(ConfdbValues, TheNameIsTakenFromItsKey) {
    Name("edge-1");
    EXPECT_EQ("edge-1", HostName());
    EXPECT_EQ(0u, kit::Op<MESH_EpollCreate>().Calls()) << "a name that is known needs no connection";
    EXPECT_EQ(0u, kit::Op<DEV_GetSystemName>().Calls());
}

TEST_F(ConfdbValues, OtherKeysAndEmptyNamesAndNothingAtAllLeaveTheName) {
    Name("edge-1");
    Name("other", "sys_nam");
    Name("other", "sys_name2");
    Name("other", "SYS_NAME");
    Name("other", "");
    Name("other", nullptr);
    Name("");
    KIVO_SysNameCallback(nullptr);
    EXPECT_EQ("edge-1", HostName());
}

TEST_F(ConfdbValues, AShorterNameReplacesALongerOneWhole) {
    Name("a-long-name");
    Name("short");
    EXPECT_EQ("short", HostName());
    Name(std::string("with-terminator", 16));
    EXPECT_EQ("with-terminator", HostName());
}

TEST_F(ConfdbValues, ANameOfFullLengthIsTakenAndALongerOneRefused) {
    const std::string longest(256, 'n');
    Name(longest);
    EXPECT_EQ(longest, HostName());
    Name(std::string(257, 'm'));
    EXPECT_EQ(longest, HostName());
    DB_KV_S huge = Notification("sys_name", "x");
    huge.ulValueLength = 0xFFFFFFFF;
    KIVO_SysNameCallback(&huge);
    EXPECT_EQ(longest, HostName());
}

TEST_F(ConfdbValues, AValueThatIsMissingIsRefused) {
    Name("edge-1");
    const DB_KV_S missing{"sys_name", nullptr, 4, DB_CHANGE_CHANGED};
    KIVO_SysNameCallback(&missing);
    EXPECT_EQ("edge-1", HostName());
}

TEST_F(ConfdbValues, ANameThatIsNotKnownOpensTheConnectionAndIsAskedForDirectly) {
    bool opened = false;
    kit::Op<DEV_GetSystemName>().Does([&](char *name, uint32_t size) {
        EXPECT_EQ(256u, size);
        opened = kit::Op<MESH_EpollCreate>().Calls() == 1;
        std::strcpy(name, "direct");
        return 0U;
    });
    EXPECT_EQ("direct", HostName());
    EXPECT_TRUE(opened) << "before it was asked";
    EXPECT_EQ("direct", HostName());
    EXPECT_EQ(1u, kit::Op<MESH_EpollCreate>().Calls());
    EXPECT_EQ(1u, kit::Op<DEV_GetSystemName>().Calls()) << "once it is known it is not asked for again";
}

TEST_F(ConfdbValues, ANameThatComesWhileTheHostIsAskedIsTheNewerOne) {
    kit::Op<DEV_GetSystemName>().Does([](char *name, uint32_t) {
        Name("told meanwhile");
        std::strcpy(name, "direct");
        return 0U;
    });
    EXPECT_EQ("told meanwhile", HostName());
    EXPECT_EQ("told meanwhile", HostName());
}

TEST_F(ConfdbValues, ANameThatNobodyKnowsIsAskedForEveryTime) {
    EXPECT_EQ("", HostName());
    EXPECT_EQ("", HostName());
    EXPECT_EQ(2u, kit::Op<DEV_GetSystemName>().Calls());
    EXPECT_EQ(2u, kit::Op<MESH_EpollCreate>().Calls());
}

TEST_F(ConfdbValues, TheHostNameIsCutToItsBuffer) {
    Name("edge-1");
    struct Row {
        uint32_t size;
        const char *expected;
    };
    for (const Row &row : {Row{1, ""}, Row{2, "e"}, Row{6, "edge-"}, Row{7, "edge-1"}, Row{8, "edge-1"}}) {
        char text[10] = "~~~~~~~~~";
        EXPECT_EQ(0u, KIVO_Adapt_Gethostname(text, row.size));
        EXPECT_STREQ(row.expected, text) << row.size;
        EXPECT_EQ('\0', text[row.size - 1]);
        EXPECT_EQ('~', text[row.size]) << row.size;
    }
}

TEST_F(ConfdbValues, AroundTheLongestNameNothingIsLostOrWrittenBeyond) {
    const std::string longest(256, 'n');
    Name(longest);
    for (const uint32_t size : {256U, 257U, 258U, 259U, 400U}) {
        std::string text(500, '~');
        EXPECT_EQ(0u, KIVO_Adapt_Gethostname(text.data(), size));
        EXPECT_EQ(longest.substr(0, size - 1), text.c_str()) << size;
        EXPECT_EQ('\0', text[size - 1]);
        EXPECT_EQ(std::string(500 - size, '~'), text.substr(size)) << size;
    }
}

TEST_F(ConfdbValues, WithoutABufferNothingIsWritten) {
    Name("edge-1");
    char text[] = "~~~";
    EXPECT_EQ(0u, KIVO_Adapt_Gethostname(text, 0));
    EXPECT_STREQ("~~~", text);
    EXPECT_EQ(0u, KIVO_Adapt_Gethostname(nullptr, 0));
    EXPECT_EQ(0u, KIVO_Adapt_Gethostname(nullptr, 10));
}

/* ---- the system's MAC address */

TEST_F(ConfdbValues, TheMacIsReadOnceFromTheDeviceAndThenKept) {
    kit::Op<DEVM_DB_GetSysMac>().Does([](uint8_t mac[6]) {
        const uint8_t read[6] = {2, 0, 0, 0xAA, 0xBB, 0xCC};
        std::memcpy(mac, read, 6);
        return 0U;
    });
    const kit::Recorder recorder({"MESH_", "DEV"});
    EXPECT_EQ((Mac{2, 0, 0, 0xAA, 0xBB, 0xCC}), BridgeMac());
    EXPECT_EQ((Mac{2, 0, 0, 0xAA, 0xBB, 0xCC}), BridgeMac());
    EXPECT_EQ((std::vector<std::string>{"MESH_EpollCreate()", "DEVM_DB_GetSysMac(ptr)"}), recorder.Calls());
}

TEST_F(ConfdbValues, AMacThatCannotBeReadIsNotReadAgain) {
    EXPECT_EQ(Mac(), BridgeMac());
    EXPECT_EQ(Mac(), BridgeMac());
    EXPECT_EQ(1u, kit::Op<DEVM_DB_GetSysMac>().Calls());
}

TEST_F(ConfdbValues, TheMacOfTheDatabaseReplacesTheOneThatWasRead) {
    BridgeMac();
    Global("system_mac", "\x02\x01\x02\x03\x04\x05");
    EXPECT_EQ((Mac{2, 1, 2, 3, 4, 5}), BridgeMac());
}

TEST_F(ConfdbValues, TheMacThatIsReadReplacesAnOlderOneOfTheDatabaseButNotOneThatComesMeanwhile) {
    kit::InFreshProcess([] {
        Global("system_mac", "\x02\x01\x02\x03\x04\x05");
        kit::Op<DEVM_DB_GetSysMac>().Does([](uint8_t mac[6]) {
            std::memcpy(mac, "\x02\x0A\x0A\x0A\x0A\x0A", 6);
            return 0U;
        });
        EXPECT_EQ((Mac{2, 10, 10, 10, 10, 10}), BridgeMac());
    });
    kit::Op<DEVM_DB_GetSysMac>().Does([](uint8_t mac[6]) {
        Global("system_mac", "\x02\x01\x02\x03\x04\x05");
        std::memcpy(mac, "\x02\x0A\x0A\x0A\x0A\x0A", 6);
        return 0U;
    });
    EXPECT_EQ((Mac{2, 1, 2, 3, 4, 5}), BridgeMac());
}

TEST_F(ConfdbValues, AMacThatIsTooLongLeavesTheOneThatIsKnown) {
    BridgeMac();
    Global("system_mac", "\x02\x01\x02\x03\x04\x05");
    Global("system_mac", "12345678");
    Global("system_mac", "1234567");
    EXPECT_EQ((Mac{2, 1, 2, 3, 4, 5}), BridgeMac());
}

TEST_F(ConfdbValues, AShorterMacReplacesTheFirstBytes) {
    BridgeMac();
    Global("system_mac", "\x02\x01\x02\x03\x04\x05");
    Global("system_mac", "\x0A\x0B");
    EXPECT_EQ((Mac{10, 11, 2, 3, 4, 5}), BridgeMac());
}

TEST_F(ConfdbValues, OtherKeysAndEmptyValuesAndNothingAtAllLeaveTheMac) {
    BridgeMac();
    Global("system_mac", "\x02\x01\x02\x03\x04\x05");
    Global("system_mac", "");
    Global("system_macs", "abcdef");
    Global("sys_name", "abcdef");
    Global("system_mac_number", std::string("\x10\0\0\0", 4));
    Global("system_mac_number", "");
    Global("system_mac_number", "12345");
    Global(nullptr, "abcdef");
    KIVO_SysMacCallback(nullptr);
    EXPECT_EQ((Mac{2, 1, 2, 3, 4, 5}), BridgeMac());
}

TEST_F(ConfdbValues, TheOtherQueriesGiveTheSameMac) {
    BridgeMac();
    Global("system_mac", "\x02\x01\x02\x03\x04\x05");
    Mac mac{};
    EXPECT_EQ(0u, UVEL_DevGetSysMac(mac.data()));
    EXPECT_EQ((Mac{2, 1, 2, 3, 4, 5}), mac);
    mac = {};
    EXPECT_EQ(0u, UVEL_GetSysMacAddr(mac.data()));
    EXPECT_EQ((Mac{2, 1, 2, 3, 4, 5}), mac);
}

TEST_F(ConfdbValues, WithoutRoomForAMacNothingIsAsked) {
    EXPECT_EQ(1u, EAPADP_GetBridgeMac(nullptr));
    EXPECT_EQ(1u, UVEL_DevGetSysMac(nullptr));
    EXPECT_EQ(1u, UVEL_GetSysMacAddr(nullptr));
    EXPECT_EQ(0u, kit::Op<MESH_EpollCreate>().Calls());
    EXPECT_EQ(0u, kit::Op<DEVM_DB_GetSysMac>().Calls());
}

} // namespace
