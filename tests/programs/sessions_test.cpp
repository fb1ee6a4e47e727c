#include "sessions.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sstream>
#include <uvelhost/model.h>

#include "commands.h"

using namespace session_table;

namespace {

constexpr uint32_t PORT = 7;
constexpr uint32_t DOWN_PORT = 8;

Session SessionOf(uint32_t number, uint32_t ifindex = PORT, uint16_t vlan = 0) {
    Session session;
    session.mac = {2,
                   0,
                   static_cast<uint8_t>(number >> 24),
                   static_cast<uint8_t>(number >> 16),
                   static_cast<uint8_t>(number >> 8),
                   static_cast<uint8_t>(number)};
    session.ifindex = ifindex;
    session.vlan = vlan;
    session.start = 1000 + number;
    session.ipv4 = 0x0A000000 + number;
    std::snprintf(session.name, sizeof session.name, "user%u", number);
    return session;
}

/* A device with one port that is up and one that is down. */
class SessionTable : public testing::Test {
  protected:
    void SetUp() override {
        MDL_BATCH *batch = MDL_Begin(1, 0);
        MDL_IF_S interface;
        MDL_InitIf(&interface, PORT, "port7");
        interface.ulPhyState = interface.ulLineState = IF_STATE_UP;
        ASSERT_EQ(0u, MDL_PutIf(batch, &interface));
        MDL_InitIf(&interface, DOWN_PORT, "port8");
        ASSERT_EQ(0u, MDL_PutIf(batch, &interface));
        ASSERT_EQ(0u, MDL_Commit(batch));
    }

    std::string Say(const std::string &line) { return Answer(&sessions_, line, 4711); }

    Settings settings_;
    Sessions sessions_{0xC2400000, settings_};
};

TEST(SessionMessage, IsReadAsItWasWritten) {
    Session session = SessionOf(9, 5, 100);
    session.ipv6 = {0x20, 0x01, 0x0d, 0xb8};
    uint8_t bytes[MESSAGE_SIZE];
    WriteMessage(Change::REMOVED, session, bytes);
    Change change{};
    Session read;
    ASSERT_TRUE(ReadMessage(bytes, sizeof bytes, &change, &read));
    EXPECT_EQ(Change::REMOVED, change);
    EXPECT_EQ(session.mac, read.mac);
    EXPECT_EQ(100u, read.vlan);
    EXPECT_EQ(5u, read.ifindex);
    EXPECT_EQ(session.ipv6, read.ipv6);
    EXPECT_STREQ("user9", read.name);
    EXPECT_EQ(Fingerprint(session), Fingerprint(read));
}

TEST(SessionMessage, LooksTheSameOnEveryDevice) {
    uint8_t bytes[MESSAGE_SIZE];
    WriteMessage(Change::ADDED, SessionOf(0x01020304, 5, 100), bytes);
    const uint8_t expected[] = {1, 1, 0, 0, 2, 0, 1, 2, 3, 4, 0, 100, 0, 0, 0, 5, 1, 2, 6, 0xEC, 0x0B, 2, 3, 4};
    EXPECT_EQ(0, std::memcmp(expected, bytes, sizeof expected));
}

TEST(SessionMessage, ThatIsNoneIsRefused) {
    uint8_t bytes[MESSAGE_SIZE];
    Change change{};
    Session session;
    WriteMessage(Change::ADDED, SessionOf(1), bytes);
    EXPECT_FALSE(ReadMessage(bytes, MESSAGE_SIZE - 1, &change, &session));
    EXPECT_FALSE(ReadMessage(bytes, MESSAGE_SIZE + 1, &change, &session));
    bytes[0] = 2;
    EXPECT_FALSE(ReadMessage(bytes, MESSAGE_SIZE, &change, &session));
    bytes[0] = 1;
    bytes[1] = 3;
    EXPECT_FALSE(ReadMessage(bytes, MESSAGE_SIZE, &change, &session));
    bytes[1] = 1;
    std::memset(bytes + MESSAGE_SIZE - NAME_SIZE, 'x', NAME_SIZE);
    EXPECT_FALSE(ReadMessage(bytes, MESSAGE_SIZE, &change, &session));
}

TEST_F(SessionTable, AddsFindsAndRemovesByLine) {
    EXPECT_EQ("ok", Say("logon 021a-2b3c-4d5e anna 7 0 10.1.2.3 2001:db8::1"));
    EXPECT_EQ("session 021a-2b3c-4d5e anna 7 0 10.1.2.3 2001:DB8::1 4711", Say("show 021A-2B3C-4D5E"));
    EXPECT_EQ("error there is a session of this MAC address", Say("logon 021a-2b3c-4d5e bert 7 0"));
    EXPECT_EQ("digest 1 ", Say("digest").substr(0, 9));
    EXPECT_EQ("ok", Say("logoff 021a-2b3c-4d5e"));
    EXPECT_EQ("error there is no session of this MAC address", Say("logoff 021a-2b3c-4d5e"));
    EXPECT_EQ("digest 0 0000000000000000", Say("digest"));
}

TEST_F(SessionTable, RefusesWhatIsNoRequest) {
    const std::pair<const char *, const char *> rows[] = {
        {"", "error the line is empty"},
        {"   ", "error the line is empty"},
        {"hello", "error logon, logoff, show and digest are known, \"hello\" is not"},
        {"logon", "error logon takes MAC NAME IFINDEX VLAN [IPV4] [IPV6]"},
        {"logon a b c d e f g", "error logon takes MAC NAME IFINDEX VLAN [IPV4] [IPV6]"},
        {"logon 021a2b3c4d5e a 7 0", "error \"021a2b3c4d5e\" is no MAC address as 021a-2b3c-4d5e"},
        {"logon 021a-2b3c-4d5x a 7 0", "error \"021a-2b3c-4d5x\" is no MAC address as 021a-2b3c-4d5e"},
        {"logon 0000-0000-0000 a 7 0", "error \"0000-0000-0000\" is no MAC address as 021a-2b3c-4d5e"},
        {"logon 021a-2b3c-4d5e a/b 7 0", "error the user name has a character that is not allowed"},
        {"logon 021a-2b3c-4d5e a seven 0", "error \"seven\" is no interface index"},
        {"logon 021a-2b3c-4d5e a 7 4095", "error \"4095\" is no VLAN"},
        {"logon 021a-2b3c-4d5e a 7 0 10.1.2", "error \"10.1.2\" is no IPv4 address of a host"},
        {"logon 021a-2b3c-4d5e a 7 0 224.0.0.1", "error \"224.0.0.1\" is no IPv4 address of a host"},
        {"logon 021a-2b3c-4d5e a 7 0 - 2001::db8::1", "error \"2001::db8::1\" is no IPv6 address"},
        {"logon 021a-2b3c-4d5e a 99 0", "error there is no such interface"},
        {"logon 021a-2b3c-4d5e a 8 0", "error the interface is down"},
        {"logoff", "error logoff takes MAC"},
        {"show x y", "error show takes MAC"},
    };
    for (const auto &[line, answer] : rows)
        EXPECT_EQ(answer, Say(line)) << line;
    EXPECT_EQ("error \"\?[2J\?\?\" is no MAC address as 021a-2b3c-4d5e", Say("logoff \x1b[2J\xc3\xa4"))
        << "nothing that is shown changes a screen";
    EXPECT_EQ("error \"" + std::string(48, 'm') + "\" is no MAC address as 021a-2b3c-4d5e",
              Say("logoff " + std::string(200, 'm')));
    EXPECT_EQ("error a line is text", Say(std::string("logoff\0x", 8)));
    EXPECT_EQ("error the user name must have 1 to 32 characters",
              Say("logon 021a-2b3c-4d5e " + std::string(33, 'n') + " 7 0"));
    EXPECT_EQ("digest 0 0000000000000000", Say("digest"));
}

TEST_F(SessionTable, EndsTheSessionsOfAnInterface) {
    for (uint32_t i = 1; i <= 50; ++i)
        ASSERT_EQ("", sessions_.LogOn(SessionOf(i)));
    std::vector<std::string> told;
    sessions_.SetListener([&](Change change, const Session &session) {
        told.push_back((change == Change::REMOVED ? "-" : "+") + std::string(session.name));
    });
    EXPECT_EQ(0u, sessions_.InterfaceDown(99));
    EXPECT_EQ(50u, sessions_.InterfaceDown(PORT));
    EXPECT_EQ(50u, told.size());
    EXPECT_EQ(Digest(), sessions_.GetDigest());
}

TEST_F(SessionTable, EndsOnlyTheSessionsOfTheVlanThatAPortLeft) {
    ASSERT_EQ("", sessions_.LogOn(SessionOf(1, PORT, 10)));
    ASSERT_EQ("", sessions_.LogOn(SessionOf(2, PORT, 20)));
    EXPECT_EQ(1u, sessions_.PortLeftVlan(PORT, 10));
    EXPECT_EQ(1u, sessions_.GetDigest().count);
}

TEST_F(SessionTable, IsEqualAfterABatchWhateverWasThereBefore) {
    Sessions other(0xC2400000, settings_);
    other.SetActive(false);
    for (uint32_t i = 1; i <= 20; ++i)
        ASSERT_EQ("", sessions_.LogOn(SessionOf(i)));
    for (uint32_t i = 10; i <= 40; ++i)
        other.Apply(Change::ADDED, SessionOf(i));
    EXPECT_NE(sessions_.GetDigest(), other.GetDigest());
    other.BeginBatch();
    sessions_.TellAll([&](Change change, const Session &session) { other.Apply(change, session); });
    EXPECT_EQ(20u, other.EndOfBatch());
    EXPECT_EQ(sessions_.GetDigest(), other.GetDigest());
}

TEST_F(SessionTable, OnStandbyFollowsItsPeerAlone) {
    ASSERT_EQ("ok", Say("logon 021a-2b3c-4d5e anna 7 0"));
    sessions_.Apply(Change::ADDED, SessionOf(1));
    EXPECT_EQ(1u, sessions_.GetDigest().count) << "the active one is not told what it has";
    sessions_.SetActive(false);
    EXPECT_EQ("error this device is on standby", Say("logon 021a-2b3c-4d5f bert 7 0"));
    EXPECT_EQ("error this device is on standby", Say("logoff 021a-2b3c-4d5e"));
    EXPECT_EQ(0u, sessions_.InterfaceDown(PORT)) << "its peer's port is another one";
    sessions_.Apply(Change::ADDED, SessionOf(1));
    EXPECT_EQ(2u, sessions_.GetDigest().count);
    sessions_.SetActive(true);
    EXPECT_EQ(2u, sessions_.InterfaceDown(PORT));
}

TEST_F(SessionTable, TellsASessionThatChangesWhileItIsToldAgain) {
    for (uint32_t i = 1; i <= 3; ++i)
        ASSERT_EQ("", sessions_.LogOn(SessionOf(i)));
    std::map<std::string, bool> peer;
    bool is_first = true;
    sessions_.TellAll([&](Change change, const Session &session) {
        if (std::exchange(is_first, false)) {
            EXPECT_EQ("", sessions_.LogOff(session.mac)) << "not locked";
        }
        peer[session.name] = change == Change::ADDED;
    });
    EXPECT_EQ(3u, peer.size());
    EXPECT_EQ(2, std::count_if(peer.begin(), peer.end(), [](const auto &entry) { return entry.second; }));
}

TEST_F(SessionTable, CarriesOutAFileOfRequests) {
    std::istringstream file("# who is always there\nlogon 021a-2b3c-4d5e anna 7 0\n\nlogon 021a-2b3c-4d5f bert 8 0\n" +
                            std::string(600, 'x') + "\nlogon 021a-2b3c-4d60 carl 7 0");
    const FileResult result = CarryOut(&sessions_, &file, 4711);
    EXPECT_EQ(2u, result.done);
    EXPECT_EQ(2u, result.refused);
    EXPECT_EQ("4: the interface is down", result.first_refused);
    EXPECT_EQ(2u, sessions_.GetDigest().count);
}

TEST_F(SessionTable, IsFullAtItsLimit) {
    settings_.max_sessions = 2;
    Sessions small(0xC2400000, settings_);
    EXPECT_EQ("", small.LogOn(SessionOf(1)));
    EXPECT_EQ("", small.LogOn(SessionOf(2)));
    EXPECT_EQ("there are 2 sessions, more are not allowed", small.LogOn(SessionOf(3)));
    EXPECT_EQ("", small.LogOff(SessionOf(1).mac));
    EXPECT_EQ("", small.LogOn(SessionOf(3)));
}

TEST_F(SessionTable, KeepsADigestThatDoesNotDependOnTheOrder) {
    Sessions other(0xC2400000, settings_);
    std::vector<uint32_t> numbers(500);
    for (uint32_t i = 0; i < numbers.size(); ++i)
        numbers[i] = i + 1;
    for (const uint32_t i : numbers)
        ASSERT_EQ("", sessions_.LogOn(SessionOf(i)));
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    for (const uint32_t i : numbers)
        ASSERT_EQ("", other.LogOn(SessionOf(i)));
    EXPECT_EQ(sessions_.GetDigest(), other.GetDigest());
    EXPECT_EQ("", other.LogOff(SessionOf(3).mac));
    EXPECT_NE(sessions_.GetDigest(), other.GetDigest());
}

TEST(SessionSettings, AreReadFromADocument) {
    Settings settings;
    std::string reason;
    ASSERT_TRUE(ReadSettings("<session-table xmlns='urn:uvel:session-table'><max-sessions>5</max-sessions>"
                             "<vlan-check>true</vlan-check><user-name><class>name</class>"
                             "<max-length>8</max-length></user-name></session-table>",
                             &settings, &reason))
        << reason;
    EXPECT_EQ(5u, settings.max_sessions);
    EXPECT_TRUE(settings.vlan_check);
    EXPECT_EQ(SRV_CHARSET_NAME, settings.name_class);
    EXPECT_EQ(8u, settings.name_max);
}

TEST(SessionSettings, ThatAreWrongChangeNothing) {
    const std::pair<const char *, const char *> rows[] = {
        {"<a>", "the text is no XML document"},
        {"<a><max-sessions>0</max-sessions></a>", "max-sessions is no number from 1 to 10000000"},
        {"<a><max-sessions>many</max-sessions></a>", "max-sessions is no number from 1 to 10000000"},
        {"<a><vlan-check>perhaps</vlan-check></a>", "vlan-check is neither true nor false"},
        {"<a><vlan-check/></a>", "vlan-check is neither true nor false"},
        {"<a><user-name><class>odd</class></user-name></a>", "user-name/class is none of name, text, word, noquote"},
        {"<a><user-name><max-length>64</max-length></user-name></a>", "user-name/max-length is no number from 1 to 63"},
    };
    for (const auto &[document, expected] : rows) {
        Settings settings;
        std::string reason;
        EXPECT_FALSE(ReadSettings(document, &settings, &reason)) << document;
        EXPECT_EQ(expected, reason);
        EXPECT_EQ(200'000u, settings.max_sessions);
    }
}

} // namespace
