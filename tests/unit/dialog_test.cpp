#include <kit.h>

#include <uvelcommon_base/nac_log.h>

namespace {

struct Heard {
    uint32_t code;
    std::string text;
    bool operator==(const Heard &) const = default;
};

std::vector<Heard> g_heard;

void Listen(uint32_t code, const char *text) {
    g_heard.push_back({code, text});
}
void ListenToo(uint32_t code, const char *text) {
    g_heard.push_back({code + 1000, text});
}

class Dialog : public testing::Test {
  protected:
    Dialog() { g_heard.clear(); }
    ~Dialog() override { NAC_Utils_RegDiaLogHook(nullptr); }
};

TEST_F(Dialog, WithoutAFunctionNothingHappens) {
    NAC_Utils_Dialog(7, "a%s", "b");
    EXPECT_TRUE(g_heard.empty());
}

TEST_F(Dialog, TheFunctionReceivesCodeAndFormattedText) {
    NAC_Utils_RegDiaLogHook(Listen);
    NAC_Utils_Dialog(7, "a%s", "b");
    NAC_Utils_Dialog(0xFFFFFFFFU, "%08x|%-4d|%c|%s", 0xBEEFU, -5, 'z', "end");
    EXPECT_EQ((std::vector<Heard>{{7, "ab"}, {0xFFFFFFFFU, "0000beef|-5  |z|end"}}), g_heard);
}

TEST_F(Dialog, AnEmptyTextIsHandedOver) {
    NAC_Utils_RegDiaLogHook(Listen);
    NAC_Utils_Dialog(0, "%s", "");
    EXPECT_EQ((std::vector<Heard>{{0, ""}}), g_heard);
}

TEST_F(Dialog, ALaterFunctionReplacesTheEarlier) {
    NAC_Utils_RegDiaLogHook(Listen);
    NAC_Utils_RegDiaLogHook(ListenToo);
    NAC_Utils_Dialog(1, "x");
    EXPECT_EQ((std::vector<Heard>{{1001, "x"}}), g_heard);
}

TEST_F(Dialog, RegisteringNullEndsTheDialogue) {
    NAC_Utils_RegDiaLogHook(Listen);
    NAC_Utils_RegDiaLogHook(nullptr);
    NAC_Utils_Dialog(1, "x");
    EXPECT_TRUE(g_heard.empty());
}

TEST_F(Dialog, ANullFormatIsDropped) {
    const char *volatile format = nullptr;
    NAC_Utils_RegDiaLogHook(Listen);
    NAC_Utils_Dialog(1, format, 0);
    EXPECT_TRUE(g_heard.empty());
}

TEST_F(Dialog, AFormatThatCannotBePrintedIsDropped) {
    const char *volatile format = "%s %n";
    int count = 0;
    NAC_Utils_RegDiaLogHook(Listen);
    NAC_Utils_Dialog(1, format, "x", &count);
    EXPECT_TRUE(g_heard.empty());
    EXPECT_EQ(0, count);
}

TEST_F(Dialog, ATextOf511CharactersArrivesWhole) {
    const std::string text(511, 't');
    NAC_Utils_RegDiaLogHook(Listen);
    NAC_Utils_Dialog(1, "%s", text.c_str());
    EXPECT_EQ((std::vector<Heard>{{1, text}}), g_heard);
}

TEST_F(Dialog, ALongerTextIsDroppedNotCut) {
    NAC_Utils_RegDiaLogHook(Listen);
    NAC_Utils_Dialog(1, "%s", std::string(512, 't').c_str());
    NAC_Utils_Dialog(1, "%s", std::string(5000, 't').c_str());
    EXPECT_TRUE(g_heard.empty());
}

TEST_F(Dialog, TheFunctionMayStartADialogueOfItsOwn) {
    NAC_Utils_RegDiaLogHook([](uint32_t code, const char *text) {
        if (code > 0)
            NAC_Utils_Dialog(code - 1, "%s<%u>", text, code);
        g_heard.push_back({code, text});
    });
    NAC_Utils_Dialog(2, "x");
    EXPECT_EQ((std::vector<Heard>{{0, "x<2><1>"}, {1, "x<2>"}, {2, "x"}}), g_heard);
}

TEST_F(Dialog, TheFunctionMayUnregisterItself) {
    NAC_Utils_RegDiaLogHook([](uint32_t code, const char *text) {
        NAC_Utils_RegDiaLogHook(nullptr);
        g_heard.push_back({code, text});
    });
    NAC_Utils_Dialog(1, "first");
    NAC_Utils_Dialog(2, "second");
    EXPECT_EQ((std::vector<Heard>{{1, "first"}}), g_heard);
}

TEST_F(Dialog, TheDialogueAsksTheHostForNothing) {
    NAC_Utils_RegDiaLogHook(Listen);
    kit::Recorder recorder;
    NAC_Utils_Dialog(1, "%d", 5);
    EXPECT_EQ(std::vector<std::string>{}, recorder.Calls());
}

} // namespace
