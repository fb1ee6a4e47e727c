#include "kit.h"
#include "smbuf_fake.h"

#include <cstring>
#include <numeric>
#include <uvelcommon_base/kivo_chi.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_settings.h>

namespace {

const kit::Sources CHI{"src/common/src/smi/kivo_chi"};
constexpr uint32_t NONE = 0xFFFFFFFF;

/* Types */

TEST(ChannelTypes, AreTranslatedForSending) {
    const uint32_t ha[9] = {NONE, 6, 13, 12, NONE, 9, NONE, NONE, NONE};
    const uint32_t hsb[9] = {NONE, 5, 4, 8, NONE, NONE, 10, 9, NONE};
    for (uint32_t type = 0; type < 9; ++type) {
        EXPECT_EQ(ha[type], CHI_MsgC2P(0, type)) << type;
        EXPECT_EQ(hsb[type], CHI_MsgC2P(1, type)) << type;
        EXPECT_EQ(type, CHI_MsgC2P(2, type));
    }
    for (uint32_t back = 0; back < 5; ++back) {
        EXPECT_EQ(NONE, CHI_MsgC2P(back, 9));
        EXPECT_EQ(NONE, CHI_MsgC2P(back, NONE));
    }
}

TEST(ChannelTypes, OfAnUnknownBackTypeAssertAndPassThrough) {
    EXPECT_EQ(7u, CHI_MsgC2P(3, 7));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_EQ(70000u, CHI_MsgP2C(4, 70000));
    EXPECT_EQ(CHI, kit::TakeAsserts());
}

TEST(ChannelTypes, AreTranslatedOnReceipt) {
    EXPECT_EQ(0u, CHI_Init());
    uint32_t ha[60];
    uint32_t hsb[260];
    std::fill(std::begin(ha), std::end(ha), NONE);
    std::fill(std::begin(hsb), std::end(hsb), NONE);
    ha[5] = 0, ha[6] = 1, ha[8] = 4, ha[9] = 5, ha[12] = 3, ha[13] = 2;
    hsb[0] = 8, hsb[3] = 0, hsb[4] = 2, hsb[5] = 1, hsb[8] = 3, hsb[9] = 7, hsb[10] = 6;
    for (uint32_t type = 0; type < 60; ++type)
        EXPECT_EQ(ha[type], CHI_MsgP2C(0, type)) << type;
    for (uint32_t type = 0; type < 260; ++type) {
        EXPECT_EQ(hsb[type], CHI_MsgP2C(1, type)) << type;
        EXPECT_EQ(type, CHI_MsgP2C(2, type));
    }
    EXPECT_EQ(NONE, CHI_MsgP2C(0, NONE));
    EXPECT_EQ(NONE, CHI_MsgP2C(1, NONE));
}

TEST(BackTypes, HaveNamesAndHeaderLengths) {
    EXPECT_STREQ("HA", CHI_GetBackTypeDescr(0));
    EXPECT_STREQ("HSB", CHI_GetBackTypeDescr(1));
    EXPECT_STREQ("YSB", CHI_GetBackTypeDescr(2));
    EXPECT_STREQ("DB", CHI_GetBackTypeDescr(3));
    EXPECT_STREQ("", CHI_GetBackTypeDescr(4));
    EXPECT_STREQ("", CHI_GetBackTypeDescr(NONE));
    const uint32_t lengths[] = {48, 352, 48, 0, 0};
    for (uint32_t back = 0; back < 5; ++back)
        EXPECT_EQ(lengths[back], CHI_GetMsgHeadLen(back));
    EXPECT_EQ(0u, CHI_GetMsgHeadLen(NONE));
}

TEST(FragmentCount, IsJumboSizeByMtuPlusOne) {
    EXPECT_EQ(1u, CHI_GetYsbMsgMaxFragNum()) << "no MTU";
    KIVO_SetKivoCommonSpec(5, 1500);
    KIVO_SetKivoCommonSpec(6, 9000);
    EXPECT_EQ(1500u, CHI_GetYsbMtu());
    EXPECT_EQ(9000u, CHI_GetJumboMsgSize());
    EXPECT_EQ(7u, CHI_GetYsbMsgMaxFragNum());
    KIVO_SetKivoCommonSpec(6, 8999);
    EXPECT_EQ(6u, CHI_GetYsbMsgMaxFragNum());
}

/* Headers */

const CHI_MSG_INFO_S INFO{0xA1A2A3A4, 0xB1B2B3B4, {0xC0C0C0C0, 0xC1C1C1C1, 0xC2C2C2C2, 0xC3C3C3C3},
                          0x00051234, 1,          {1, 2, 3, 4, 5, 6, 7, 8},
                          0xD1D2D3D4, 0xE1E2E3E4};

struct Field {
    uint32_t offset;
    uint32_t width;
    uint64_t value;
};

/* A header of `length` bytes 0x77 with the given fields, little endian. */
std::vector<uint8_t> Header(uint32_t length, const std::vector<Field> &fields) {
    std::vector<uint8_t> bytes(length, 0x77);
    for (const Field &field : fields) {
        for (uint32_t i = 0; i < field.width; ++i)
            bytes[field.offset + i] = static_cast<uint8_t>(field.value >> (8 * i));
    }
    return bytes;
}

std::vector<Field> CommonFields(uint32_t base, uint64_t type, uint32_t offsetOfA) {
    return {{base, 4, 0xC0C0C0C0},  {base + 4, 4, 0xC1C1C1C1}, {base + 8, 4, 0xC2C2C2C2},  {base + 12, 4, 0xC3C3C3C3},
            {base + 16, 2, 0x1234}, {base + 18, 2, type},      {base + 20, 4, 0xB1B2B3B4}, {offsetOfA, 4, 0xA1A2A3A4}};
}

std::vector<uint8_t> Written(uint32_t back, uint32_t length) {
    std::vector<uint8_t> bytes(length, 0x77);
    CHI_MSG_INFO_S info = INFO;
    EXPECT_EQ(0u, CHI_SetMsgInfo(back, bytes.data(), &info));
    return bytes;
}

TEST(ChannelHeader, OfHaIsWrittenAtItsOffsets) {
    EXPECT_EQ(Header(60, CommonFields(12, 6, 44)), Written(0, 60));
}

TEST(ChannelHeader, OfHsbIsWrittenAtItsOffsets) {
    EXPECT_EQ(Header(360, CommonFields(316, 5, 340)), Written(1, 360));
}

TEST(ChannelHeader, OfYsbIsWrittenIntoTheSocketBuffersDataButForTheFragmentNumber) {
    SmbufFake fake;
    std::vector<uint8_t> bytes(60, 0x77);
    FakeSmbuf smbuf{bytes.data(), 60};
    CHI_MSG_INFO_S info = INFO;
    info.ulMsgType = 7;
    EXPECT_EQ(0u, CHI_SetMsgInfo(2, &smbuf, &info));
    std::vector<Field> fields = CommonFields(12, 7, 36);
    fields.push_back({40, 4, 0xD1D2D3D4});
    EXPECT_EQ(Header(60, fields), bytes);
    EXPECT_EQ(7u, info.ulMsgType);
}

TEST(ChannelHeader, LeavesTheServicesTypeInTheRecordOnSuccessOnly) {
    uint8_t bytes[400] = {};
    CHI_MSG_INFO_S info = INFO;
    EXPECT_EQ(0u, CHI_SetMsgInfo(0, bytes, &info));
    EXPECT_EQ(6u, info.ulMsgType);

    info.ulMsgType = 0;
    EXPECT_EQ(1u, CHI_SetMsgInfo(0, bytes, &info)) << "not carried";
    EXPECT_EQ(0u, info.ulMsgType);

    info.ulMsgType = 3;
    EXPECT_EQ(1u, CHI_SetMsgInfo(3, bytes, &info)) << "no buffers";
    EXPECT_EQ(3u, info.ulMsgType);
    EXPECT_EQ(CHI, kit::TakeAsserts());

    SmbufFake fake;
    FakeSmbuf empty{nullptr, 0};
    EXPECT_EQ(1u, CHI_SetMsgInfo(2, &empty, &info)) << "no data";
    EXPECT_EQ(3u, info.ulMsgType);
    EXPECT_EQ(1u, CHI_SetMsgInfo(0, nullptr, &info));
    EXPECT_EQ(1u, CHI_SetMsgInfo(0, bytes, nullptr));
}

TEST(ChannelHeader, IsReadFromItsOffsets) {
    CHI_MSG_INFO_S info;
    for (const uint32_t back : {0u, 1u}) {
        std::vector<uint8_t> bytes =
            back == 0 ? Header(48, CommonFields(12, 0xFFFF, 44)) : Header(352, CommonFields(316, 0xFFFF, 340));
        std::memset(&info, 0x55, sizeof info);
        EXPECT_EQ(0u, CHI_GetMsgInfo(back, bytes.data(), &info));
        EXPECT_EQ(0xA1A2A3A4, info.ulWordA);
        EXPECT_EQ(0xB1B2B3B4, info.ulTotalLength);
        EXPECT_EQ(0xC0C0C0C0, info.aulWordC[0]);
        EXPECT_EQ(0xC3C3C3C3, info.aulWordC[3]);
        EXPECT_EQ(0x1234u, info.ulSubType);
        EXPECT_EQ(0xFFFFu, info.ulMsgType) << "as read, not translated";
        EXPECT_EQ(0x55555555u, info.ulMsgId) << "YSB only";
        EXPECT_EQ(0x55555555u, info.ulFragment);
        EXPECT_EQ(0x55, info.aucReserved[0]);
    }
}

TEST(ChannelHeader, OfYsbIsReadWithMessageIdAndFragmentNumber) {
    SmbufFake fake;
    std::vector<Field> fields = CommonFields(12, 8, 36);
    fields.push_back({40, 4, 0xD1D2D3D4});
    fields.push_back({44, 4, 0xE1E2E3E4});
    std::vector<uint8_t> bytes = Header(48, fields);
    FakeSmbuf smbuf{bytes.data(), 48};
    CHI_MSG_INFO_S info{};
    EXPECT_EQ(0u, CHI_GetMsgInfo(2, &smbuf, &info));
    EXPECT_EQ(0xA1A2A3A4, info.ulWordA);
    EXPECT_EQ(8u, info.ulMsgType);
    EXPECT_EQ(0xD1D2D3D4, info.ulMsgId);
    EXPECT_EQ(0xE1E2E3E4, info.ulFragment);
}

TEST(ChannelHeader, AssertsWhenReadWithBadArguments) {
    uint8_t bytes[48] = {};
    CHI_MSG_INFO_S info{};
    EXPECT_EQ(1u, CHI_GetMsgInfo(0, nullptr, &info));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_EQ(1u, CHI_GetMsgInfo(0, bytes, nullptr));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_EQ(1u, CHI_GetMsgInfo(3, bytes, &info));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    SmbufFake fake;
    FakeSmbuf empty{nullptr, 0};
    EXPECT_EQ(1u, CHI_GetMsgInfo(2, &empty, &info)) << "a socket buffer without data is no misuse";
}

/* Output */

uintptr_t g_output[4];

TEST(ChannelOutput, GoesToThePeerOrToOneOfItsProcessors) {
    EXPECT_EQ(0u, CHI_YSB_OutputPacket(1, 2, 255, 3)) << "without a hook";
    SmbufFake::Install(
        KIVO_HOOK_YSB_OUTPUT_PACKET_SMBUF, +[](uintptr_t a, uintptr_t b, uint32_t length) -> uint32_t {
            g_output[0] = a, g_output[1] = b, g_output[2] = length, g_output[3] = 1000;
            return 1;
        });
    SmbufFake::Install(
        KIVO_HOOK_YSB_ADAPT_OUTPUT_PACKET_SMBUF,
        +[](uintptr_t a, uintptr_t b, uint32_t length, uint8_t channel) -> uint32_t {
            g_output[0] = a, g_output[1] = b, g_output[2] = length, g_output[3] = channel;
            return 1;
        });
    EXPECT_EQ(0u, CHI_YSB_OutputPacket(0x1111111122222222, 0x3333333344444444, 255, 0xFFFFFFFF));
    EXPECT_EQ(0x1111111122222222u, g_output[0]);
    EXPECT_EQ(0x3333333344444444u, g_output[1]);
    EXPECT_EQ(0xFFFFFFFFu, g_output[2]);
    EXPECT_EQ(1000u, g_output[3]);
    for (const uint8_t channel : {uint8_t{0}, uint8_t{254}}) {
        EXPECT_EQ(0u, CHI_YSB_OutputPacket(5, 6, channel, 7));
        EXPECT_EQ(5u, g_output[0]);
        EXPECT_EQ(channel, g_output[3]);
    }
}

/* Buffers */

TEST(ChannelBuffer, OfPlainMemoryHasAClearedHeader) {
    for (const auto &[back, header] : {std::pair{0u, 48u}, {1u, 352u}}) {
        kit::Op<QAL_MemAlloc>().Does([](uint32_t handle, uint8_t partition, uint32_t size) {
            void *block = kit::Op<QAL_MemAlloc>().Real(handle, partition, size);
            std::memset(block, 0xEE, size);
            return block;
        });
        void *buffer = nullptr;
        ASSERT_EQ(0u, CBUF_Alloc(back, &buffer, 10));
        EXPECT_EQ(header + 10, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
        const auto *bytes = static_cast<const uint8_t *>(buffer);
        EXPECT_EQ(0, std::accumulate(bytes, bytes + header, 0));
        EXPECT_EQ(0xEE, bytes[header]) << "the payload stays as it came";
        EXPECT_EQ(bytes + header, CBUF_C2D(back, buffer));
        CBUF_Free(back, buffer);
        EXPECT_EQ(0u, kit::LiveBlocks());
    }
}

TEST(ChannelBuffer, OfYsbIsASocketBufferChargedToTheCommonModule) {
    SmbufFake fake;
    g_ulUVELCommMid = 0x4711;
    void *buffer = nullptr;
    ASSERT_EQ(0u, CBUF_Alloc(2, &buffer, 10));
    EXPECT_EQ(0x4711u, SmbufFake::lastMid);
    const auto *smbuf = static_cast<const FakeSmbuf *>(buffer);
    EXPECT_EQ(58u, smbuf->size);
    EXPECT_EQ(0, std::accumulate(smbuf->data, smbuf->data + 48, 0));
    EXPECT_EQ(0xEE, smbuf->data[48]);
    EXPECT_EQ(smbuf->data + 48, CBUF_C2D(2, buffer));
    CBUF_Free(2, buffer);
    EXPECT_EQ(0, SmbufFake::live);
}

TEST(ChannelBuffer, OfNoPayloadIsTheBareHeader) {
    void *buffer = nullptr;
    ASSERT_EQ(0u, CBUF_Alloc(1, &buffer, 0));
    EXPECT_EQ(static_cast<uint8_t *>(buffer) + 352, CBUF_C2D(1, buffer));
    CBUF_Free(1, buffer);
}

TEST(ChannelBuffer, WithoutDataIsHandedOutAllTheSame) {
    SmbufFake fake;
    SmbufFake::withoutData = true;
    void *buffer = nullptr;
    ASSERT_EQ(0u, CBUF_Alloc(2, &buffer, 10));
    EXPECT_EQ(reinterpret_cast<void *>(48), CBUF_C2D(2, buffer)) << "the distance is added untested";
    CBUF_Free(2, buffer);
}

TEST(ChannelBuffer, IsNotThereWhenMemoryIsShort) {
    void *buffer = &buffer;
    kit::Op<QAL_MemAlloc>().FailsFrom(1);
    EXPECT_EQ(1u, CBUF_Alloc(0, &buffer, 10));
    EXPECT_EQ(1u, CBUF_Alloc(1, &buffer, 10));
    SmbufFake fake;
    SmbufFake::failCreation = true;
    EXPECT_EQ(1u, CBUF_Alloc(2, &buffer, 10));
    EXPECT_EQ(static_cast<void *>(&buffer), buffer) << "untouched";
}

TEST(ChannelBuffer, SizesDoNotWrap) {
    void *buffer = nullptr;
    EXPECT_EQ(1u, CBUF_Alloc(0, &buffer, 0xFFFFFFFF));
    EXPECT_EQ(1u, CBUF_Alloc(1, &buffer, 0xFFFFFFFF - 351));
    EXPECT_EQ(0u, kit::Op<QAL_MemAlloc>().Calls());
    SmbufFake fake;
    EXPECT_EQ(1u, CBUF_Alloc(2, &buffer, 0xFFFFFFFF - 47));
    EXPECT_EQ(0, SmbufFake::created);
}

TEST(ChannelBuffer, MisuseAssertsAndDoesNothing) {
    void *buffer = nullptr;
    uint8_t bytes[400] = {};
    EXPECT_EQ(1u, CBUF_Alloc(0, nullptr, 1));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_EQ(1u, CBUF_Alloc(3, &buffer, 1));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_EQ(nullptr, CBUF_C2D(0, nullptr));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_EQ(nullptr, CBUF_C2D(3, bytes));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    CBUF_Free(0, nullptr);
    EXPECT_EQ(CHI, kit::TakeAsserts());
    CBUF_Free(3, bytes);
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_EQ(0u, kit::Op<QAL_MemFree>().Calls());
}

TEST(ChannelModuleId, IsZeroAtLoad) {
    EXPECT_EQ(0u, g_ulUVELCommMid);
}

} // namespace
