#include <uvelcommon_base/nac_yang_xml.h>

#include <array>
#include <cstring>

#include "kit.h"
#include "yang_xml_texts.h"

using namespace yang_xml_texts;

namespace {

/* Texts. */

TEST(YangStr, IsAllTextInTheElement) {
    const Tree tree("<r><a>one<b>two<c>three</c></b>four</a></r>");
    EXPECT_EQ("onetwothreefour", StrAt(tree, "a"));
    EXPECT_EQ("twothree", StrAt(tree, "a/b"));
}

TEST(YangStr, OfTheNodeItselfIsReadWithAnEmptyPath) {
    const Tree tree("<r>text</r>");
    EXPECT_EQ("text", StrAt(tree, ""));
    EXPECT_EQ("text", StrAt(tree, nullptr));
}

TEST(YangStr, ResolvesTheEntitiesOfXmlAndTakesCdataAsItIs) {
    const Tree tree("<r><a>&lt;&gt;&amp;&apos;&quot;&#65;&#x42;</a><b>x<![CDATA[<&amp;>]]>y</b></r>");
    EXPECT_EQ("<>&'\"AB", StrAt(tree, "a"));
    EXPECT_EQ("x<&amp;>y", StrAt(tree, "b"));
}

TEST(YangStr, LeavesOutCommentsAndInstructions) {
    const Tree tree("<r><a>1<!-- 2 -->3<?pi 4?>5</a></r>");
    EXPECT_EQ("135", StrAt(tree, "a"));
}

TEST(YangStr, OfAnEmptyElementIsEmpty) {
    const Tree tree("<r><a/><b></b><c> </c><d><!-- x --></d></r>");
    EXPECT_EQ("", StrAt(tree, "a"));
    EXPECT_EQ("", StrAt(tree, "b"));
    EXPECT_EQ(" ", StrAt(tree, "c"));
    EXPECT_EQ("", StrAt(tree, "d"));
}

TEST(YangStr, FitsWithItsTerminatorOrIsNotCopied) {
    const Tree tree("<r><a>12345</a></r>");
    for (uint32_t size = 0; size <= 7; ++size) {
        char buffer[9] = "########";
        EXPECT_EQ(size >= 6 ? 0u : 1u, NAC_YANG_XmlGetStr(tree, "a", buffer, size)) << size;
        EXPECT_EQ(size >= 6 ? std::string("12345\0##", 8) : "########", std::string(buffer, 8)) << size;
    }
}

TEST(YangStr, IsMeasuredInBytes) {
    const Tree tree("<r><a>\xC3\xA9\xC3\xA9</a></r>");
    char buffer[5] = "####";
    EXPECT_EQ(1u, NAC_YANG_XmlGetStr(tree, "a", buffer, 4));
    EXPECT_STREQ("####", buffer);
    EXPECT_EQ(0u, NAC_YANG_XmlGetStr(tree, "a", buffer, 5));
    EXPECT_STREQ("\xC3\xA9\xC3\xA9", buffer);
}

TEST(YangStr, IsUntouchedWithoutSuchAnElement) {
    const Tree tree("<r><a>1</a></r>");
    char buffer[4] = "###";
    EXPECT_EQ(1u, NAC_YANG_XmlGetStr(tree, "b", buffer, sizeof buffer));
    EXPECT_EQ(1u, NAC_YANG_XmlGetStr(tree, "a/b", buffer, sizeof buffer));
    EXPECT_EQ(1u, NAC_YANG_XmlGetStr(nullptr, "a", buffer, sizeof buffer));
    EXPECT_STREQ("###", buffer);
}

TEST(YangStr, NeedsABuffer) {
    const Tree tree("<r><a>1</a></r>");
    EXPECT_EQ(1u, NAC_YANG_XmlGetStr(tree, "a", nullptr, 10));
    EXPECT_EQ(1u, NAC_YANG_XmlGetStr(tree, "a", nullptr, 0));
}

/* Numbers. */

struct NumberRow {
    const char *text;
    uint32_t u32;
    uint16_t u16;
    uint8_t u8;
};

class YangNumber : public testing::TestWithParam<NumberRow> {};

TEST_P(YangNumber, IsReadFromTheBeginningOfTheTextAndKeepsItsLowBits) {
    const Tree tree(std::string("<r><n>") + GetParam().text + "</n></r>");
    uint32_t u32 = 0xDEADBEEF;
    uint16_t u16 = 0xDEAD;
    uint8_t u8 = 0xDE;
    EXPECT_EQ(0u, NAC_YANG_XmlGetU32(tree, "n", &u32));
    EXPECT_EQ(0u, NAC_YANG_XmlGetU16(tree, "n", &u16));
    EXPECT_EQ(0u, NAC_YANG_XmlGetU8(tree, "n", &u8));
    EXPECT_EQ(GetParam().u32, u32);
    EXPECT_EQ(GetParam().u16, u16);
    EXPECT_EQ(GetParam().u8, u8);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, YangNumber,
    testing::Values(NumberRow{"0", 0, 0, 0}, NumberRow{"300", 300, 300, 44}, NumberRow{"70000", 70000, 4464, 112},
                    NumberRow{"4294967295", 4294967295, 65535, 255}, NumberRow{"4294967296", 4294967295, 65535, 255},
                    NumberRow{"-1", 4294967295, 65535, 255}, NumberRow{"-0", 0, 0, 0}, NumberRow{"  42  ", 42, 42, 42},
                    NumberRow{"\n7\n", 7, 7, 7}, NumberRow{"+9", 9, 9, 9}, NumberRow{"12ab", 12, 12, 12},
                    NumberRow{"0x10", 0, 0, 0}, NumberRow{"010", 10, 10, 10}, NumberRow{"", 0, 0, 0},
                    NumberRow{"none", 0, 0, 0}, NumberRow{"true", 0, 0, 0}, NumberRow{"1<!---->2", 12, 12, 12},
                    NumberRow{"&#49;", 1, 1, 1}, NumberRow{"000000000000005", 5, 5, 5}));

TEST(YangNumbers, HaveAtMostFifteenCharacters) {
    const Tree tree("<r><n15>000000000000005</n15><n16>0000000000000005</n16></r>");
    uint32_t u32 = 1;
    uint16_t u16 = 2;
    uint8_t u8 = 3;
    EXPECT_EQ(1u, NAC_YANG_XmlGetU32(tree, "n16", &u32));
    EXPECT_EQ(1u, NAC_YANG_XmlGetU16(tree, "n16", &u16));
    EXPECT_EQ(1u, NAC_YANG_XmlGetU8(tree, "n16", &u8));
    EXPECT_EQ(1u, u32);
    EXPECT_EQ(2u, u16);
    EXPECT_EQ(3u, u8);
    EXPECT_EQ(0u, NAC_YANG_XmlGetU32(tree, "n15", &u32));
    EXPECT_EQ(5u, u32);
}

TEST(YangNumbers, AreConvertedByTheHostInBaseTen) {
    const Tree tree("<r><n>17</n></r>");
    kit::Op<QAL_strtoul>().Does([](const char *text, char **, uint32_t base) {
        EXPECT_STREQ("17", text);
        EXPECT_EQ(10u, base);
        return 0xABCD1234U;
    });
    uint32_t u32 = 0;
    uint16_t u16 = 0;
    uint8_t u8 = 0;
    EXPECT_EQ(0u, NAC_YANG_XmlGetU32(tree, "n", &u32));
    EXPECT_EQ(0u, NAC_YANG_XmlGetU16(tree, "n", &u16));
    EXPECT_EQ(0u, NAC_YANG_XmlGetU8(tree, "n", &u8));
    EXPECT_EQ(0xABCD1234u, u32);
    EXPECT_EQ(0x1234u, u16);
    EXPECT_EQ(0x34u, u8);
    EXPECT_EQ(3u, kit::Op<QAL_strtoul>().Calls());
}

/* Truth values and empty leaves. */

TEST(YangBool, IsTrueForExactlyOneText) {
    const std::pair<const char *, uint32_t> rows[] = {
        {"true", 1},  {"false", 0}, {"1", 0},   {"0", 0}, {"True", 0}, {"TRUE", 0},        {" true", 0},
        {"true ", 0}, {"truee", 0}, {"tru", 0}, {"", 0},  {"yes", 0},  {"tr<!---->ue", 1}, {"<![CDATA[true]]>", 1}};
    for (const auto &[text, expected] : rows) {
        const Tree tree(std::string("<r><b>") + text + "</b></r>");
        uint32_t value = 77;
        EXPECT_EQ(0u, NAC_YANG_XmlGetBool(tree, "b", &value)) << text;
        EXPECT_EQ(expected, value) << text;
    }
}

TEST(YangBool, HasAtMostFifteenCharacters) {
    const Tree tree("<r><b15>true12345678901</b15><b16>true123456789012</b16></r>");
    uint32_t value = 77;
    EXPECT_EQ(1u, NAC_YANG_XmlGetBool(tree, "b16", &value));
    EXPECT_EQ(77u, value);
    EXPECT_EQ(0u, NAC_YANG_XmlGetBool(tree, "b15", &value));
    EXPECT_EQ(0u, value);
}

TEST(YangEmpty, TellsWhetherTheElementExists) {
    const Tree tree("<r><e/><f>text</f></r>");
    uint32_t exists = 77;
    EXPECT_EQ(0u, NAC_YANG_XmlGetEmpty(tree, "e", &exists));
    EXPECT_EQ(1u, exists);
    EXPECT_EQ(1u, NAC_YANG_XmlGetEmpty(tree, "g", &exists));
    EXPECT_EQ(0u, exists);
    EXPECT_EQ(0u, NAC_YANG_XmlGetEmpty(tree, "f", &exists));
    EXPECT_EQ(1u, exists);
    EXPECT_EQ(1u, NAC_YANG_XmlGetEmpty(nullptr, "e", &exists));
    EXPECT_EQ(0u, exists);
}

TEST(YangEmpty, TellsItByTheResultAlone) {
    const Tree tree("<r><e/></r>");
    EXPECT_EQ(0u, NAC_YANG_XmlGetEmpty(tree, "e", nullptr));
    EXPECT_EQ(1u, NAC_YANG_XmlGetEmpty(tree, "g", nullptr));
}

/* Addresses. */

using Mac = std::array<uint8_t, 6>;
using Ipv6 = std::array<uint8_t, 16>;

TEST(YangMac, IsReadLeniently) {
    const std::pair<const char *, Mac> rows[] = {
        {"021a-2b3c-4d5e", {0x02, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E}},
        {"02:1a:2b:3c:4d:5e", {0x02}},
        {"zz", {}},
        {"", {}},
    };
    for (const auto &[text, expected] : rows) {
        const Tree tree(std::string("<r><m>") + text + "</m></r>");
        Mac mac;
        mac.fill(0xEE);
        EXPECT_EQ(0u, NAC_YANG_XmlGetMac(tree, "m", mac.data())) << text;
        EXPECT_EQ(expected, mac) << text;
    }
}

TEST(YangMac, HasAtMostThirtyOneCharacters) {
    const std::string address = "021a-2b3c-4d5e";
    const Tree tree("<r><m31>" + address + std::string(17, 'x') + "</m31><m32>" + address + std::string(18, 'x') +
                    "</m32></r>");
    Mac mac{9, 9, 9, 9, 9, 9};
    EXPECT_EQ(1u, NAC_YANG_XmlGetMac(tree, "m32", mac.data()));
    EXPECT_EQ((Mac{9, 9, 9, 9, 9, 9}), mac);
    EXPECT_EQ(0u, NAC_YANG_XmlGetMac(tree, "m31", mac.data()));
    EXPECT_EQ((Mac{0x02, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E}), mac);
}

TEST(YangIpv4, IsReadInHostOrder) {
    const Tree tree("<r><a>10.1.2.3</a></r>");
    uint32_t address = 0;
    EXPECT_EQ(0u, NAC_YANG_XmlGetIpv4(tree, "a", &address));
    EXPECT_EQ(0x0A010203u, address);
}

TEST(YangIpv4, IsUntouchedByABadText) {
    for (const char *text :
         {"", "10.1.2", "10.1.2.256", "10.1.2.3.4", " 10.1.2.3", "10.1.2.3 ", "a.b.c.d", "::1", "10.1.2.3/24"}) {
        const Tree tree(std::string("<r><a>") + text + "</a></r>");
        uint32_t address = 0xDEADBEEF;
        EXPECT_EQ(1u, NAC_YANG_XmlGetIpv4(tree, "a", &address)) << text;
        EXPECT_EQ(0xDEADBEEFu, address) << text;
    }
}

TEST(YangIpv4, GivesTheParsersResultAndHasAtMostThirtyOneCharacters) {
    const Tree tree("<r><a31>" + std::string(31, '1') + "</a31><a32>" + std::string(32, '1') + "</a32></r>");
    kit::Op<QAL_StrToIpAddr>().Does([](const char *, uint32_t *address) {
        *address = 0x01020304; /* half done */
        return 5U;
    });
    uint32_t address = 0xDEADBEEF;
    EXPECT_EQ(5u, NAC_YANG_XmlGetIpv4(tree, "a31", &address));
    EXPECT_EQ(1u, NAC_YANG_XmlGetIpv4(tree, "a32", &address));
    EXPECT_EQ(0xDEADBEEFu, address);
    EXPECT_EQ(1u, kit::Op<QAL_StrToIpAddr>().Calls());
}

TEST(YangIpv6, IsReadInNetworkOrder) {
    const Tree tree("<r><a>2001:db8::1:2</a></r>");
    Ipv6 address{};
    EXPECT_EQ(0u, NAC_YANG_XmlGetIpv6(tree, "a", address.data()));
    EXPECT_EQ((Ipv6{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 2}), address);
}

TEST(YangIpv6, IsUntouchedByABadText) {
    Ipv6 before;
    before.fill(0xEE);
    for (const char *text : {"", ":", "1:2:3", "2001:db8::1::2", "10.1.2.3", "x", "2001:db8::1 "}) {
        const Tree tree(std::string("<r><a>") + text + "</a></r>");
        Ipv6 address = before;
        EXPECT_EQ(1u, NAC_YANG_XmlGetIpv6(tree, "a", address.data())) << text;
        EXPECT_EQ(before, address) << text;
    }
}

TEST(YangIpv6, HasAtMostSixtyThreeCharacters) {
    const std::string longest = "1:2:3:4:5:6:7:" + std::string(48, '0') + "8";
    const Tree tree("<r><a63>" + longest + "</a63><a64>0" + longest + "</a64></r>");
    Ipv6 address{};
    EXPECT_EQ(0u, NAC_YANG_XmlGetIpv6(tree, "a63", address.data()));
    EXPECT_EQ((Ipv6{0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}), address);
    address = Ipv6{7};
    EXPECT_EQ(1u, NAC_YANG_XmlGetIpv6(tree, "a64", address.data()));
    EXPECT_EQ(Ipv6{7}, address);
}

/* What all readers share. */

TEST(YangReaders, NeedAPlaceForTheValue) {
    const Tree tree("<r><n>1</n></r>");
    EXPECT_EQ(1u, NAC_YANG_XmlGetU32(tree, "n", nullptr));
    EXPECT_EQ(1u, NAC_YANG_XmlGetU16(tree, "n", nullptr));
    EXPECT_EQ(1u, NAC_YANG_XmlGetU8(tree, "n", nullptr));
    EXPECT_EQ(1u, NAC_YANG_XmlGetBool(tree, "n", nullptr));
    EXPECT_EQ(1u, NAC_YANG_XmlGetMac(tree, "n", nullptr));
    EXPECT_EQ(1u, NAC_YANG_XmlGetIpv4(tree, "n", nullptr));
    EXPECT_EQ(1u, NAC_YANG_XmlGetIpv6(tree, "n", nullptr));
}

TEST(YangReaders, LeaveTheValueAloneWithoutSuchAnElement) {
    const Tree tree("<r><n>1</n></r>");
    for (xmlNode *node : {static_cast<xmlNode *>(tree), static_cast<xmlNode *>(nullptr)}) {
        uint32_t u32 = 0xDEADBEEF;
        uint16_t u16 = 0xDEAD;
        uint8_t u8 = 0xDE;
        uint32_t truth = 77;
        uint32_t ipv4 = 0xDEADBEEF;
        Mac mac{7};
        Ipv6 ipv6{7};
        EXPECT_EQ(1u, NAC_YANG_XmlGetU32(node, "x", &u32));
        EXPECT_EQ(1u, NAC_YANG_XmlGetU16(node, "x", &u16));
        EXPECT_EQ(1u, NAC_YANG_XmlGetU8(node, "x", &u8));
        EXPECT_EQ(1u, NAC_YANG_XmlGetBool(node, "x", &truth));
        EXPECT_EQ(1u, NAC_YANG_XmlGetMac(node, "x", mac.data()));
        EXPECT_EQ(1u, NAC_YANG_XmlGetIpv4(node, "x", &ipv4));
        EXPECT_EQ(1u, NAC_YANG_XmlGetIpv6(node, "x", ipv6.data()));
        EXPECT_EQ(0xDEADBEEFu, u32);
        EXPECT_EQ(0xDEADu, u16);
        EXPECT_EQ(0xDEu, u8);
        EXPECT_EQ(77u, truth);
        EXPECT_EQ(0xDEADBEEFu, ipv4);
        EXPECT_EQ(Mac{7}, mac);
        EXPECT_EQ(Ipv6{7}, ipv6);
    }
}

TEST(YangReaders, WorkOnTreesOfTheirCallersToo) {
    const std::string xml = "<r><n>5</n></r>";
    xmlDoc *document = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr, 0);
    ASSERT_NE(nullptr, document);
    uint32_t value = 0;
    EXPECT_EQ(0u, NAC_YANG_XmlGetU32(xmlDocGetRootElement(document), "n", &value));
    EXPECT_EQ(5u, value);
    EXPECT_EQ(0u, NAC_YANG_XmlGetU32(reinterpret_cast<xmlNode *>(document), "r/n", &value));
    xmlFreeDoc(document);
}

} // namespace
