// The packets of the hot-standby link put together, with memory that is short in between.

#include "kit.h"

#include <cstring>
#include <standby_hooks.h>
#include <string>
#include <uvelcommon_base/kivo_startup.h>

namespace {

constexpr uint32_t HEADER = 48;

class Assembler : public testing::Test {
  protected:
    Assembler() {
        (void)UVEL_GlobalVarInit();
        KIVO_VirtualToHook();
    }

    /* A packet as the link delivers it: the message's header with the fragment's number, then its part of the text. */
    uint32_t Take(const std::string &text, std::size_t at, std::size_t size, uint32_t fragment) {
        YSB_SMBUF_S *packet = YSB_Adapt_Smbuf_Create(0, HEADER + static_cast<uint32_t>(size));
        auto *bytes = static_cast<uint8_t *>(YSB_Adapt_Smbuf_M2D(packet));
        std::memset(bytes, 0, HEADER);
        const auto total = static_cast<uint32_t>(text.size());
        std::memcpy(bytes + 32, &total, sizeof total);
        std::memcpy(bytes + 44, &fragment, sizeof fragment);
        text.copy(reinterpret_cast<char *>(bytes) + HEADER, size, at);
        void *message = nullptr;
        const uint32_t result = assembler.Take(packet, HEADER + static_cast<uint32_t>(size), &message);
        if (message != nullptr) {
            CHI_MSG_INFO_S info{};
            EXPECT_EQ(KIVO_OK, CHI_GetMsgInfo(CHI_BACK_YSB, message, &info));
            messages.emplace_back(static_cast<const char *>(CBUF_C2D(CHI_BACK_YSB, message)), info.ulTotalLength);
            CBUF_Free(CHI_BACK_YSB, message);
        }
        return result;
    }

    uvel::apps::MessageAssembler assembler;
    std::vector<std::string> messages;
};

TEST_F(Assembler, PutsTogetherWhatWasCutAndPassesOnWhatWasNot) {
    EXPECT_EQ(0u, Take("whole", 0, 5, 0));
    EXPECT_EQ(0u, Take("in three", 0, 3, 0));
    EXPECT_EQ(0u, Take("in three", 3, 3, 1));
    EXPECT_EQ(std::vector<std::string>{"whole"}, messages);
    EXPECT_EQ(0u, Take("in three", 6, 2, 2));
    EXPECT_EQ((std::vector<std::string>{"whole", "in three"}), messages);
}

TEST_F(Assembler, APacketForWhichThereIsNoMemoryHasToComeAgainAndThenCompletesItsMessage) {
    kit::Op<YSB_Adapt_Smbuf_Create>().FailsOn(2); /* the first one is the packet itself */
    EXPECT_NE(0u, Take("in two", 0, 3, 0));
    EXPECT_EQ(0u, Take("in two", 0, 3, 0));
    EXPECT_EQ(0u, Take("in two", 3, 3, 1));
    EXPECT_EQ(0u, Take("next", 0, 2, 0));
    EXPECT_EQ(0u, Take("next", 2, 2, 1));
    EXPECT_EQ((std::vector<std::string>{"in two", "next"}), messages);
}

TEST_F(Assembler, APacketThatCannotBelongToItsMessageIsTakenForItWouldNeverFit) {
    EXPECT_EQ(0u, Take("broken", 0, 3, 0));
    EXPECT_EQ(0u, Take("broken", 3, 3, 2)) << "one is missing before it";
    EXPECT_EQ(0u, Take("next", 0, 2, 0));
    EXPECT_EQ(0u, Take("next", 2, 2, 1));
    EXPECT_EQ(std::vector<std::string>{"next"}, messages);
}

TEST_F(Assembler, AfterAResetTheRestOfAMessageIsNotWaitedFor) {
    EXPECT_EQ(0u, Take("old stream", 0, 3, 0));
    assembler.Reset();
    EXPECT_EQ(0u, Take("new stream", 0, 5, 0));
    EXPECT_EQ(0u, Take("new stream", 5, 5, 1));
    EXPECT_EQ(std::vector<std::string>{"new stream"}, messages);
}

} // namespace
