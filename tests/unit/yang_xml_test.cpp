#include <uvelcommon_base/nac_yang_xml.h>

#include <array>
#include <cstring>

#include "guarded_text.h"
#include "kit.h"
#include "yang_xml_texts.h"

using namespace yang_xml_texts;

namespace {

/* Cutting out a subtree. */

TEST(YangNewRoot, CopiesTheElementBelowTheRoot) {
    const Tree tree("<config><acl><id>5</id><name>web</name></acl></config>", "acl");
    EXPECT_EQ("<acl><id>5</id><name>web</name></acl>", TextOf(tree));
}

TEST(YangNewRoot, DoesNotTakeTheNameOfTheRootItself) {
    EXPECT_EQ("(none)", TextOf(Tree("<config><acl/></config>", "config")));
    EXPECT_EQ("(none)", TextOf(Tree("<config><acl/></config>", "config/acl")));
    EXPECT_EQ("<config>1</config>", TextOf(Tree("<config><config>1</config></config>", "config")));
}

TEST(YangNewRoot, CopiesTheRootForAnEmptyOrNullPath) {
    EXPECT_EQ("<config><acl/></config>", TextOf(Tree("<config><acl/></config>", "")));
    EXPECT_EQ("<config><acl/></config>", TextOf(Tree("<config><acl/></config>", nullptr)));
}

TEST(YangNewRoot, CopiesWithAttributesNamespacesAndEverythingInside) {
    const std::string xml =
        "<c xmlns=\"urn:x\" xmlns:p=\"urn:y\"><p:a p:k=\"1\" l=\"&lt;2\"><!--n--><?pi d?><![CDATA[<]]>t&amp;</p:a></c>";
    EXPECT_EQ("<p:a xmlns:p=\"urn:y\" p:k=\"1\" l=\"&lt;2\"><!--n--><?pi d?><![CDATA[<]]>t&amp;</p:a>",
              TextOf(Tree(xml, "a")));
}

TEST(YangNewRoot, GivesATreeOfItsOwn) {
    const NAC_YANG_REQUEST_S request = {"<c><a><b>1</b></a></c>"};
    xmlNode *first = NAC_YANG_XmlNewRoot(&request, "a");
    xmlNode *second = NAC_YANG_XmlNewRoot(&request, "a");
    ASSERT_NE(nullptr, first);
    ASSERT_NE(nullptr, second);
    EXPECT_NE(first, second);
    EXPECT_EQ(nullptr, first->parent);
    EXPECT_EQ(nullptr, first->doc);
    EXPECT_EQ(nullptr, first->next);
    NAC_YANG_XmlDelRoot(first);
    EXPECT_EQ("<a><b>1</b></a>", TextOf(second));
    NAC_YANG_XmlDelRoot(second);
}

TEST(YangNewRoot, CopiesTheElementWithoutItsSiblings) {
    EXPECT_EQ("<b>1</b>", TextOf(Tree("<c><a/><b>1</b><d/></c>", "b")));
}

TEST(YangNewRoot, DropsBlanksBetweenElementsAndKeepsThemInTexts) {
    EXPECT_EQ("<a><b> x </b><d/></a>", TextOf(Tree("<c>\n  <a>\n    <b> x </b>\r\n\t<d/>\n  </a>\n</c>\n", "a")));
}

TEST(YangNewRoot, ReadsNoXmlButWellFormed) {
    for (const char *xml : {"",
                            " ",
                            "x",
                            "<",
                            "<a",
                            "<a>",
                            "<a></b>",
                            "<a><b></a></b>",
                            "<a/><b/>",
                            "<a>&nbsp;</a>",
                            "<a>&#0;</a>",
                            "<a b=c/>",
                            "<a b='1' b='2'/>",
                            "<a>\x01</a>",
                            "<a>\xC3</a>",
                            "<a>\xFF\xFE</a>",
                            "<a><![CDATA[</a>",
                            "<a><!-- -- --></a>",
                            "<?xml version='1.0'?>",
                            " <?xml version='1.0'?><a/>",
                            "<a/>x",
                            "<1a/>",
                            "<a/>\xEF\xBB\xBF",
                            "text<a/>"})
        EXPECT_EQ("(none)", TextOf(Tree(xml))) << xml;
}

TEST(YangNewRoot, ReadsUtf8WhateverTheDeclarationSays) {
    EXPECT_EQ("\xC3\xA9", StrAt(Tree("<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC3\xA9</a>"), ""));
    EXPECT_EQ("\xC3\xA9", StrAt(Tree("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xC3\xA9</a>"), ""));
    EXPECT_EQ("\xC3\xA9", StrAt(Tree("\xEF\xBB\xBF<a>\xC3\xA9</a>"), ""));
    EXPECT_EQ("(none)", StrAt(Tree("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>"), ""));
    /* No other encoding can hide markup: this is no "<b/>". */
    EXPECT_EQ("+ADw-b/+AD4-", StrAt(Tree("<?xml version=\"1.0\" encoding=\"UTF-7\"?><a>+ADw-b/+AD4-</a>"), ""));
}

TEST(YangNewRoot, NeedsARequestWithAText) {
    EXPECT_EQ(nullptr, NAC_YANG_XmlNewRoot(nullptr, "a"));
    const NAC_YANG_REQUEST_S empty = {nullptr};
    EXPECT_EQ(nullptr, NAC_YANG_XmlNewRoot(&empty, "a"));
}

TEST(YangNewRoot, ReadsTheTextPointerOfTheRequestOnly) {
    const GuardedText record("\0\0\0\0\0\0\0", sizeof(char *));
    const char *xml = "<c><a/></c>";
    std::memcpy(record.Get(), &xml, sizeof xml);
    xmlNode *root = NAC_YANG_XmlNewRoot(reinterpret_cast<const NAC_YANG_REQUEST_S *>(record.Get()), "a");
    EXPECT_EQ("<a/>", TextOf(root));
    NAC_YANG_XmlDelRoot(root);
}

TEST(YangNewRoot, ReadsNothingBehindTheTerminator) {
    for (const char *xml : {"<c><a/></c>", "<c><a/></c", "<c><!--", "<c>&", "<c>\xC3", "<", ""}) {
        const GuardedText text(xml);
        const NAC_YANG_REQUEST_S request = {text};
        xmlNode *root = NAC_YANG_XmlNewRoot(&request, "a");
        EXPECT_EQ(std::strcmp(xml, "<c><a/></c>") == 0, root != nullptr) << xml;
        NAC_YANG_XmlDelRoot(root);
    }
}

TEST(YangDelRoot, IgnoresNull) {
    NAC_YANG_XmlDelRoot(nullptr);
}

/* Walking a path. */

class YangPath : public testing::Test {
  protected:
    /* The "n" attribute of the node at the path. */
    std::string At(const char *path) const { return NameOf(NAC_YANG_XmlGetChild(tree_, path)); }

    static std::string NameOf(xmlNode *node) {
        if (node == nullptr)
            return "(none)";
        xmlChar *name = xmlGetProp(node, reinterpret_cast<const xmlChar *>("n"));
        const std::string result = name == nullptr ? "" : reinterpret_cast<char *>(name);
        xmlFree(name);
        return result;
    }

    const Tree tree_{
        "<r n='root'><a n='1'><b n='2'><c n='3'/></b><b n='4'><d n='5'/></b><ab n='6'/></a><a n='7'><x n='8'/>"
        "</a></r>"};
};

TEST_F(YangPath, LeadsFromChildToChild) {
    EXPECT_EQ("1", At("a"));
    EXPECT_EQ("2", At("a/b"));
    EXPECT_EQ("3", At("a/b/c"));
    EXPECT_EQ("6", At("a/ab"));
}

TEST_F(YangPath, MayEndWithASlash) {
    EXPECT_EQ("1", At("a/"));
    EXPECT_EQ("2", At("a/b/"));
    EXPECT_EQ("3", At("a/b/c/"));
}

TEST_F(YangPath, OfNothingIsTheNodeItself) {
    EXPECT_EQ(tree_, NAC_YANG_XmlGetChild(tree_, ""));
    EXPECT_EQ(tree_, NAC_YANG_XmlGetChild(tree_, nullptr));
}

TEST_F(YangPath, ReachesTheFirstOfSeveralChildrenOnly) {
    EXPECT_EQ("2", At("a/b"));
    EXPECT_EQ("(none)", At("a/b/d"));
    EXPECT_EQ("(none)", At("a/x"));
}

TEST_F(YangPath, ComparesWholeNames) {
    for (const char *path : {"A", "aa", "a/a", "a/bb", "a/b/cc", "r", "b", "c", " a", "a ", "a\\b", "a/b/c/d"})
        EXPECT_EQ("(none)", At(path)) << path;
}

TEST_F(YangPath, DoesNotSkipEmptyNames) {
    for (const char *path : {"/", "//", "/a", "//a", "a//", "a//b", "a/b//", "a/b/c//"})
        EXPECT_EQ("(none)", At(path)) << path;
}

TEST_F(YangPath, FromNoNodeLeadsNowhere) {
    EXPECT_EQ(nullptr, NAC_YANG_XmlGetChild(nullptr, "a"));
    EXPECT_EQ(nullptr, NAC_YANG_XmlGetChild(nullptr, ""));
    EXPECT_EQ(nullptr, NAC_YANG_XmlGetChild(nullptr, nullptr));
}

TEST_F(YangPath, IsReadToItsTerminatorOnly) {
    for (const char *path : {"a", "a/", "a/b", "", "zzz", "a/zzz"}) {
        const GuardedText guarded(path);
        EXPECT_EQ(NAC_YANG_XmlGetChild(tree_, path), NAC_YANG_XmlGetChild(tree_, guarded)) << path;
    }
}

TEST_F(YangPath, ExistsOrNot) {
    EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree_, "a/b/c"));
    EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree_, "a/b/"));
    EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree_, ""));
    EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree_, nullptr));
    EXPECT_EQ(0u, NAC_YANG_XmlChildExist(tree_, "a/b/d"));
    EXPECT_EQ(0u, NAC_YANG_XmlChildExist(nullptr, "a"));
    EXPECT_EQ(0u, NAC_YANG_XmlChildExist(nullptr, nullptr));
}

TEST(YangNames, AreComparedWithoutTheirPrefix) {
    const Tree tree("<r xmlns='urn:1' xmlns:p='urn:2'><p:a>1</p:a><a>2</a><b xmlns='urn:3'>3</b></r>");
    EXPECT_EQ("1", StrAt(tree, "a"));
    EXPECT_EQ("3", StrAt(tree, "b"));
    EXPECT_EQ("(none)", StrAt(tree, "p:a"));
}

TEST(YangNames, KeepAPrefixThatStandsForNoNamespace) {
    const Tree tree("<r><p:a>1</p:a></r>");
    EXPECT_EQ("1", StrAt(tree, "p:a"));
    EXPECT_EQ("(none)", StrAt(tree, "a"));
}

TEST(YangNames, OfOtherKindsOfNodesCountToo) {
    const Tree tree("<r><!--first--><?target data?>words<a>1</a></r>");
    EXPECT_EQ("words", StrAt(tree, "text"));
    EXPECT_EQ("first", StrAt(tree, "comment"));
    EXPECT_EQ("data", StrAt(tree, "target"));
    EXPECT_EQ("1", StrAt(tree, "a"));
    EXPECT_EQ("(none)", StrAt(tree, "text/text"));
}

TEST(YangNames, MayBeMissing) {
    /* A CDATA section has no name: it is stepped over, and no empty name finds it. */
    const Tree tree("<r><![CDATA[x]]><a>1</a></r>");
    EXPECT_EQ("1", StrAt(tree, "a"));
    EXPECT_EQ("(none)", StrAt(tree, "/"));
}

TEST(YangNames, MayBeLongAndInAnyScript) {
    const std::string name(5000, 'n');
    const Tree tree("<r><" + name + ">1</" + name + "><\xE5\x90\x8D>2</\xE5\x90\x8D></r>");
    EXPECT_EQ("1", StrAt(tree, name.c_str()));
    EXPECT_EQ("(none)", StrAt(tree, name.substr(1).c_str()));
    EXPECT_EQ("(none)", StrAt(tree, (name + "n").c_str()));
    EXPECT_EQ("2", StrAt(tree, "\xE5\x90\x8D"));
    EXPECT_EQ("(none)", StrAt(tree, "\xE5\x90"));
}

TEST(YangNames, AreFoundBetweenCommentsAndInstructions) {
    const Tree tree("<r>\n<!-- a --><?x?>\n<a><!-- b --><?y z?> <b>1</b><!-- c --></a>\n<?w?></r>");
    EXPECT_EQ("1", StrAt(tree, "a/b"));
}

TEST(YangPathDepth, HasNoLimitOfItsOwn) {
    std::string open, close, path;
    for (int level = 0; level < 250; ++level) {
        open += "<e>";
        close += "</e>";
        path += "e/";
    }
    const Tree tree("<r>" + open + "deep" + close + "</r>");
    EXPECT_EQ("deep", StrAt(tree, path.c_str()));
    EXPECT_EQ("(none)", StrAt(tree, (path + "e").c_str()));
}

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
    const Tree tree("<r><a64>" + std::string(64, '1') + "</a64></r>");
    Ipv6 address{7};
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
