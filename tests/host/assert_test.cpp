#include <uvelhost/assert.h>

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Seen {
    std::string source;
    uint32_t line;
    uint64_t count;
};

std::vector<Seen> g_seen;

void Remember(const char *source, uint32_t line, uint64_t count) {
    g_seen.push_back({source, line, count});
}
void RememberFatal(const char *source, uint32_t line) {
    g_seen.push_back({source, line, 0});
}
void Ignore(const char *, uint32_t, uint64_t) {}

class HostAssert : public testing::Test {
  protected:
    HostAssert() { g_seen.clear(); }
    ~HostAssert() override {
        QAL_AssertSetHook(nullptr);
        QAL_FatalSetHook(nullptr);
    }

    static std::string Reported(const char *source, uint32_t line) {
        testing::internal::CaptureStderr();
        qal_assert(source, line);
        return testing::internal::GetCapturedStderr();
    }
};

} // namespace

TEST_F(HostAssert, TheFirstFailureAtAPlaceIsReportedOnOneLineThatNamesIt) {
    std::string text = Reported("src/first/report", 4711);
    EXPECT_NE(std::string::npos, text.find("src/first/report")) << text;
    EXPECT_NE(std::string::npos, text.find("4711")) << text;
    EXPECT_EQ(text.size() - 1, text.find('\n'));
}

TEST_F(HostAssert, FurtherFailuresAtAPlaceAreOnlyCounted) {
    EXPECT_NE("", Reported("src/counted", 1));
    EXPECT_EQ("", Reported("src/counted", 1));
    EXPECT_EQ("", Reported("src/counted", 1));
    EXPECT_EQ(3u, QAL_AssertGetCount("src/counted", 1));
}

TEST_F(HostAssert, LinesAndTextsMakeDifferentPlaces) {
    EXPECT_NE("", Reported("src/places/a", 1));
    EXPECT_NE("", Reported("src/places/a", 2));
    EXPECT_NE("", Reported("src/places/b", 1));
    EXPECT_EQ(1u, QAL_AssertGetCount("src/places/a", 1));
    EXPECT_EQ(1u, QAL_AssertGetCount("src/places/a", 2));
    EXPECT_EQ(1u, QAL_AssertGetCount("src/places/b", 1));
    EXPECT_EQ(0u, QAL_AssertGetCount("src/places/b", 2));
}

TEST_F(HostAssert, EqualTextsAtDifferentAddressesAreOnePlace) {
    QAL_AssertSetHook(Ignore);
    std::string a = "src/same/text", b = a;
    qal_assert(a.c_str(), 9);
    qal_assert(b.c_str(), 9);
    EXPECT_EQ(2u, QAL_AssertGetCount("src/same/text", 9));
}

TEST_F(HostAssert, WithoutATextTheFailuresOfAllPlacesAreCounted) {
    QAL_AssertSetHook(Ignore);
    uint64_t before = QAL_AssertGetCount(nullptr, 0);
    qal_assert("src/total/a", 1);
    qal_assert("src/total/b", 1);
    qal_assert("src/total/b", 1);
    EXPECT_EQ(before + 3, QAL_AssertGetCount(nullptr, 0));
    EXPECT_EQ(before + 3, QAL_AssertGetCount(nullptr, 77));
}

TEST_F(HostAssert, ANullTextIsReportedAndCounted) {
    uint64_t before = QAL_AssertGetCount(nullptr, 0);
    EXPECT_NE(std::string::npos, Reported(nullptr, 815).find("815"));
    EXPECT_EQ(before + 1, QAL_AssertGetCount(nullptr, 0));
}

TEST_F(HostAssert, AVeryLongTextIsReportedOnOneLine) {
    std::string text = Reported(std::string(5000, 'x').c_str(), 33);
    EXPECT_NE(std::string::npos, text.find("xxxxxxxxxxxxxxxx"));
    EXPECT_EQ(text.size() - 1, text.find('\n'));
}

TEST_F(HostAssert, AHookIsCalledEveryTimeInPlaceOfTheReport) {
    QAL_AssertSetHook(Remember);
    EXPECT_EQ("", Reported("src/hook", 5));
    EXPECT_EQ("", Reported("src/hook", 5));
    ASSERT_EQ(2u, g_seen.size());
    EXPECT_EQ("src/hook", g_seen[0].source);
    EXPECT_EQ(5u, g_seen[0].line);
    EXPECT_EQ(1u, g_seen[0].count);
    EXPECT_EQ(2u, g_seen[1].count);
}

TEST_F(HostAssert, WithoutTheHookReportsGoToStandardErrorAgain) {
    QAL_AssertSetHook(Remember);
    QAL_AssertSetHook(nullptr);
    EXPECT_NE("", Reported("src/hook/gone", 5));
    EXPECT_TRUE(g_seen.empty());
}

TEST_F(HostAssert, NoFailureIsLostAmongThreads) {
    QAL_AssertSetHook(Ignore);
    uint64_t before = QAL_AssertGetCount(nullptr, 0);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (uint32_t k = 0; k < 10000; ++k)
                qal_assert("src/threads", k % 50);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(before + 40000, QAL_AssertGetCount(nullptr, 0));
    for (uint32_t line = 0; line < 50; ++line)
        EXPECT_EQ(800u, QAL_AssertGetCount("src/threads", line));
}

static void FailAtMorePlacesThanTheHostTellsApart() {
    uint64_t before = QAL_AssertGetCount(nullptr, 0);
    for (int round = 0; round < 2; ++round)
        for (uint32_t line = 0; line < 5000; ++line)
            qal_assert("src/many", line);
    bool all_counted = QAL_AssertGetCount(nullptr, 0) == before + 10000;
    bool early_places_known = QAL_AssertGetCount("src/many", 0) == 2 && QAL_AssertGetCount("src/many", 900) == 2;
    std::_Exit(all_counted && early_places_known ? 0 : 1);
}

TEST_F(HostAssert, PlacesBeyondTheTableAreCountedTogether) {
    EXPECT_EXIT(FailAtMorePlacesThanTheHostTellsApart(), testing::ExitedWithCode(0), "");
}

TEST_F(HostAssert, AFatalErrorReportsThePlaceAndAborts) {
    EXPECT_EXIT(QALFatalError_X("src/fatal/place", 1234), testing::KilledBySignal(SIGABRT), "src/fatal/place.*1234");
    EXPECT_EXIT(QALFatalError_X(nullptr, 1234), testing::KilledBySignal(SIGABRT), "1234");
}

TEST_F(HostAssert, AFatalHookIsCalledInPlaceOfTheEnd) {
    QAL_FatalSetHook(RememberFatal);
    testing::internal::CaptureStderr();
    QALFatalError_X("src/fatal/hook", 12);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    ASSERT_EQ(1u, g_seen.size());
    EXPECT_EQ("src/fatal/hook", g_seen[0].source);
    EXPECT_EQ(12u, g_seen[0].line);
}
